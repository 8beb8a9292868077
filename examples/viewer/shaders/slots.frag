#version 150
// SPDX-License-Identifier: MIT

#include "TextureManager.glslh"

in vec2 vo_TexCoord;

out vec4 o_Color;

void main()
{
    o_Color = vec4(textureGetDebug(vo_TexCoord).rgb, 1.0);
}
