#version 150

// SPDX-License-Identifier: MIT
//
// The direction itself as a colour, -1 to 1 shown as 0 to 1: to look at what the faces of a cube map hold.

in vec3 it_normal;

out vec4 o_ZelFragData[1];

void main()
{
    o_ZelFragData[0] = vec4(0.5 * normalize(it_normal) + 0.5, 1.0);
}
