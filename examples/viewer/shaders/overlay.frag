#version 150
// SPDX-License-Identifier: MIT
// Texts over the finished picture, a pixel for a texel.

uniform sampler2D u_Text;    // colours times alpha

in vec2 vo_TexCoord;

out vec4 o_Color;

void main()
{
    o_Color = texture(u_Text, vo_TexCoord);
}
