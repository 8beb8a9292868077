#version 150
// SPDX-License-Identifier: MIT

#include "VrkUtilities.glslh"
#instancedata "InstanceInfo"

uniform mat4 u_ClipFromScene;

in vec3 va_Vertex;

flat out uint vo_DrawID;

void main()
{
    vo_DrawID = getDrawID();
    gl_Position = u_ClipFromScene * (getModelMatrix() * vec4(va_Vertex, 1.0));
}
