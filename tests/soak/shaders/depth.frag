#version 150
// SPDX-License-Identifier: MIT
// A layer of a shadow map: depth from -1 to 1, and its square for variance maps.

out vec2 o_Depth;

void main()
{
    float depth = 2.0 * gl_FragCoord.z - 1.0 + 0.002;
    o_Depth = vec2(depth, depth * depth);
}
