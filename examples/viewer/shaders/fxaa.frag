#version 150
#include "FXAA.glslh"
// SPDX-License-Identifier: MIT

uniform sampler2D u_Picture;
uniform vec4 u_Metrics;    // 1 / width, 1 / height, width, height

in vec2 vo_TexCoord;

out vec4 o_Color;

// How much of what is smaller than a pixel is smoothed away, which contrast is an edge, and below which light it is not
// looked for: as published, the middle way.
const float kSubpixel = 0.75;
const float kEdgeThreshold = 0.166;
const float kEdgeThresholdMin = 0.0833;

void main()
{
    vec4 unused = vec4(0.0);
    vec4 color = FxaaPixelShader(vo_TexCoord, unused, u_Picture, u_Picture, u_Picture, u_Metrics.xy, unused, unused,
                                 unused, kSubpixel, kEdgeThreshold, kEdgeThresholdMin, 0.0, 0.0, 0.0, unused);
    o_Color = vec4(color.rgb, 1.0);
}
