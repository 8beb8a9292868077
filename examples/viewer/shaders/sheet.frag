#version 150
// SPDX-License-Identifier: MIT

#include "VrkUtilities.glslh"
#include "Output.glslh"

#if defined(SHEET_1D)
uniform sampler1D u_Texture;
#elif defined(SHEET_2D)
uniform sampler2D u_Texture;
#elif defined(SHEET_3D)
uniform sampler3D u_Texture;
#else
uniform samplerCube u_Texture;
#endif
uniform float u_Level;
uniform int u_Part;       // face of a cube, slice of a volume
uniform int u_Slices;
uniform float u_Exposure; // a factor
uniform int u_IsLight;    // or colours as a screen takes them

in vec2 vo_TexCoord;

out vec4 o_Color;

#ifdef SHEET_CUBE
// A place on a face as it lies on the cross, folded back: to the right and upwards from its middle.
vec3 onFace(vec2 place)
{
    if (u_Part == 0)
        return vec3(1.0, place.y, -place.x);
    if (u_Part == 1)
        return vec3(-1.0, place.y, place.x);
    if (u_Part == 2)
        return vec3(place.x, 1.0, -place.y);
    if (u_Part == 3)
        return vec3(place.x, -1.0, place.y);
    if (u_Part == 4)
        return vec3(place.x, place.y, 1.0);
    return vec3(-place.x, place.y, -1.0);
}
#endif

vec4 texel()
{
#ifdef SHEET_TOP_ROW_FIRST
    vec2 place = vec2(vo_TexCoord.x, 1.0 - vo_TexCoord.y);
#else
    vec2 place = vo_TexCoord;
#endif
#if defined(SHEET_1D)
    return textureLod(u_Texture, place.x, u_Level);
#elif defined(SHEET_2D)
    return textureLod(u_Texture, place, u_Level);
#elif defined(SHEET_3D)
    return textureLod(u_Texture, vec3(place, (float(u_Part) + 0.5) / float(u_Slices)), u_Level);
#else
    return textureLod(u_Texture, onFace(2.0 * vo_TexCoord - 1.0), u_Level);
#endif
}

void main()
{
    // What is seen through is grey and white squares.
    float square = mod(floor(gl_FragCoord.x / 8.0) + floor(gl_FragCoord.y / 8.0), 2.0);
    vec4 color = texel();
    vec3 shown = u_IsLight != 0 ? displayed(color.rgb * u_Exposure).rgb : color.rgb;
    o_Color = vec4(mix(vec3(mix(0.5, 0.7, square)), shown, clamp(color.a, 0.0, 1.0)), 1.0);
}
