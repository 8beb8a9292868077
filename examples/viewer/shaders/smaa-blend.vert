#version 150
// SPDX-License-Identifier: MIT

#define SMAA_INCLUDE_VS 1
#define SMAA_INCLUDE_PS 0
#include "Smaa.glslh"

in vec3 va_Vertex;
in vec2 va_TexCoord;

out vec2 vo_TexCoord;
out vec4 vo_Offset;

void main()
{
    vo_TexCoord = va_TexCoord;
    SMAANeighborhoodBlendingVS(va_TexCoord, vo_Offset);
    gl_Position = vec4(va_Vertex.xy, 0.0, 1.0);
}
