#version 150
// SPDX-License-Identifier: MIT

#define SMAA_INCLUDE_VS 0
#define SMAA_INCLUDE_PS 1
#include "Smaa.glslh"

uniform sampler2D u_Picture;

in vec2 vo_TexCoord;
in vec4 vo_Offset[3];

out vec2 o_Edges;

void main()
{
    o_Edges = SMAALumaEdgeDetectionPS(vo_TexCoord, vo_Offset, u_Picture);
}
