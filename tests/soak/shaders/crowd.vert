#version 150
// SPDX-License-Identifier: MIT

#include "VrkUtilities.glslh"
#include "Soak.glslh"
#instancedata "Object"

in vec3 va_Vertex;
in vec3 va_Normal;
in vec2 va_TexCoord;

out vec3 vo_Position;
out vec3 vo_Normal;
out vec2 vo_TexCoord;
flat out uint vo_DrawID;

void main()
{
    vec4 position = getModelMatrix() * vec4(va_Vertex, 1.0);
    vo_Position = position.xyz;
    vo_Normal = mat3(getModelMatrix()) * va_Normal;
    vo_TexCoord = va_TexCoord;
    vo_DrawID = getDrawID();
    gl_Position = u_ClipFromWorld * position;
}
