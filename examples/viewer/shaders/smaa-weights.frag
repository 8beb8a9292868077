#version 150
// SPDX-License-Identifier: MIT

#define SMAA_INCLUDE_VS 0
#define SMAA_INCLUDE_PS 1
#include "Smaa.glslh"

uniform sampler2D u_Edges;
uniform sampler2D u_Area;
uniform sampler2D u_Search;

in vec2 vo_TexCoord;
in vec2 vo_Pixel;
in vec4 vo_Offset[3];

out vec4 o_Weights;

void main()
{
    o_Weights =
        SMAABlendingWeightCalculationPS(vo_TexCoord, vo_Pixel, vo_Offset, u_Edges, u_Area, u_Search, vec4(0.0));
}
