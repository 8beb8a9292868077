#version 150
// SPDX-License-Identifier: MIT

#include "Frame.glslh"

in vec3 va_Vertex;
in vec3 va_Color;

out vec3 vo_Color;

void main()
{
    vo_Color = va_Color;
    gl_Position = u_ClipFromScene * vec4(va_Vertex, 1.0);
}
