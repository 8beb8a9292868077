#version 150
// SPDX-License-Identifier: MIT

#include "VrkUtilities.glslh"
#include "TextureManager.glslh"
#include "Soak.glslh"
#include "DrawId.glslh"
#instancedata "Material"
#if SOAK_SHADOWS
#include "ShadowMapManager.glslh"
#endif

uniform sampler2D u_Environment;

in vec3 vo_Position;
in vec3 vo_Normal;
in vec2 vo_TexCoord;

out vec4 o_Color;

vec3 environment(vec3 direction)
{
    vec2 place = vec2(atan(direction.z, direction.x) / 6.28318531, asin(clamp(direction.y, -1.0, 1.0)) / 3.14159265);
    return textureLod(u_Environment, place + 0.5, 0.0).rgb;
}

void main()
{
    vec3 normal = normalize(vo_Normal);
    vec3 light = u_Ambient.rgb * environment(normal);
    for (int i = 0; i < int(u_Ambient.w); ++i)
    {
        vec3 way = u_LightList[i].place.xyz - vo_Position * u_LightList[i].place.w;
        float towards = max(dot(normal, normalize(way)), 0.0);
        float reach = u_LightList[i].color.w;
        float arriving = mix(1.0, min(reach * reach / max(dot(way, way), 1.0e-6), 4.0), u_LightList[i].place.w);
#if SOAK_SHADOWS
        towards *= shadowMapGetVisibility(uint(i), vo_Position + 0.05 * normal);
#endif
        light += u_LightList[i].color.rgb * (towards * arriving);
    }
    vec4 color = getTint() * managedTexture(getColorMap(), vo_TexCoord);
#if SOAK_LOOK == 1
    color.rgb = 0.5 * normal + 0.5;
#elif SOAK_LOOK == 2
    color.rgb = pow(color.rgb, vec3(1.0 / 2.2));
#endif
    o_Color = vec4(color.rgb * light, 1.0);
}
