#version 150
// SPDX-License-Identifier: MIT

#include "VrkUtilities.glslh"
#include "Frame.glslh"
#instancedata "Object"

in vec3 va_Vertex;
in vec3 va_Normal;
in vec2 va_TexCoord;
in vec2 va_MoreTexCoord;

out vec3 vo_Position;
out vec3 vo_Normal;
out vec2 vo_TexCoord;
out vec2 vo_MoreTexCoord;
flat out uint vo_DrawID;

// The record has nine floats, column by column, in the place of a mat4.
mat3 normalMatrix()
{
    mat4 nine = getModelNormalMatrix();
    return mat3(nine[0].xyz, vec3(nine[0].w, nine[1].xy), vec3(nine[1].zw, nine[2].x));
}

void main()
{
    vec4 position = getModelMatrix() * vec4(va_Vertex, 1.0);
    vo_Position = position.xyz;
    vo_Normal = normalMatrix() * va_Normal;
    vo_TexCoord = va_TexCoord;
    vo_MoreTexCoord = va_MoreTexCoord;
    vo_DrawID = getDrawID();
    gl_Position = u_ClipFromScene * position;
}
