#version 150
// SPDX-License-Identifier: MIT

in vec3 va_Vertex;
in vec2 va_TexCoord;

out vec2 vo_TexCoord;

void main()
{
    vo_TexCoord = va_TexCoord;
    gl_Position = vec4(va_Vertex.xy, 0.0, 1.0);
}
