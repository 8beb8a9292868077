#version 150
// SPDX-License-Identifier: MIT

#include "ShadowMapManager.glslh"

in vec2 vo_TexCoord;

out vec4 o_Color;

void main()
{
    o_Color = vec4(shadowMapGetDebug(vo_TexCoord).rgb, 1.0);
}
