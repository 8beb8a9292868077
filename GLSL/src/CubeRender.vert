#version 150

// SPDX-License-Identifier: MIT
//
// The vertex stage of the cube map renderers: a quad over one face, and at each of its pixels the direction that the
// face holds there, scaled so that its largest component is 1 or -1.

uniform mat4 u_ZelModelViewProjectionMatrix;
uniform mat3 u_ZelNormalMatrix;

in vec4 zel_Vertex;
in vec3 zel_Normal;

out vec3 it_normal;

void main()
{
    gl_Position = u_ZelModelViewProjectionMatrix * zel_Vertex;
    it_normal = u_ZelNormalMatrix * zel_Normal;
}
