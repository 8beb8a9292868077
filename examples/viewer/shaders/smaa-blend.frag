#version 150
// SPDX-License-Identifier: MIT

#define SMAA_INCLUDE_VS 0
#define SMAA_INCLUDE_PS 1
#include "Smaa.glslh"

uniform sampler2D u_Picture;
uniform sampler2D u_Weights;

in vec2 vo_TexCoord;
in vec4 vo_Offset;

out vec4 o_Color;

void main()
{
    o_Color = vec4(SMAANeighborhoodBlendingPS(vo_TexCoord, vo_Offset, u_Picture, u_Weights).rgb, 1.0);
}
