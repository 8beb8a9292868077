#version 150
// SPDX-License-Identifier: MIT

#include "Frame.glslh"

in vec3 va_Vertex;

out vec3 vo_Direction;    // from the eye through the pixel, of any length

void main()
{
    mat4 sceneFromClip = inverse(u_ClipFromScene);
    vec4 near = sceneFromClip * vec4(va_Vertex.xy, -1.0, 1.0);
    vec4 far = sceneFromClip * vec4(va_Vertex.xy, 1.0, 1.0);
    vo_Direction = far.xyz / far.w - near.xyz / near.w;
    gl_Position = vec4(va_Vertex.xy, 0.0, 1.0);
}
