#version 150
// SPDX-License-Identifier: MIT
//
// The scene by how many surfaces lie under each pixel, shaded as the nearest one faces the eye, so that shapes show.

#include "VrkUtilities.glslh"
#include "VisibilityBuffer.glslh"
#instancedata "InstanceInfo"

uniform usampler2D u_Counts;
uniform mat4 u_ViewFromScene;
uniform uint u_Deepest;

in vec2 vo_TexCoord;

out vec4 o_Color;

const vec3 kBackground = vec3(0.10, 0.11, 0.13);
const vec3 kRamp[5] = vec3[5](vec3(0.23, 0.32, 0.75), vec3(0.15, 0.65, 0.75), vec3(0.35, 0.75, 0.30),
                              vec3(0.95, 0.80, 0.25), vec3(0.85, 0.20, 0.15));

// From one surface to the most that there are under a pixel.
vec3 colorOf(uint count)
{
    float place = 4.0 * float(count - 1u) / float(max(u_Deepest, 2u) - 1u);
    int step = min(int(place), 3);
    return mix(kRamp[step], kRamp[step + 1], place - float(step));
}

// From 0 to 1: how much the nearest surface faces the eye.
float facing()
{
    uint pointer;
    initializeVisibilityBufferQuery(vo_TexCoord, pointer);
    vec4 position;
    float depth;
    vec3 normal;
    vec2 texCoord;
    getFragmentInfo(vo_TexCoord, pointer, position, depth, normal, texCoord);
    mat4 viewFromMesh = u_ViewFromScene * getModelMatrix();
    vec3 toSurface = normalize((viewFromMesh * position).xyz);
    vec3 viewNormal = transpose(inverse(mat3(viewFromMesh))) * normal;
    float size = length(viewNormal);
    return size > 0.0 ? abs(dot(viewNormal / size, toSurface)) : 1.0;
}

void main()
{
    uint count = texelFetch(u_Counts, ivec2(gl_FragCoord.xy), 0).r;
    o_Color = vec4(count == 0u ? kBackground : colorOf(count) * mix(0.35, 1.0, facing()), 1.0);
}
