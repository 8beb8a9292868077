#version 150
// SPDX-License-Identifier: MIT

in vec3 vo_Color;

out vec4 o_Color;

void main()
{
    o_Color = vec4(vo_Color, 1.0);
}
