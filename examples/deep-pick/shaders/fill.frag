#version 150
#extension GL_ARB_shader_image_load_store : enable
#extension GL_ARB_shader_atomic_counters : enable
// SPDX-License-Identifier: MIT
//
// Puts each fragment in front of its pixel's list, in whatever order fragments come.

#include "ShaderBitEncoding.glslh"

layout(r32ui) coherent uniform uimage2D u_Heads;
layout(rgba32ui) writeonly uniform uimage2D u_Nodes;
layout(binding = 0, offset = 0) uniform atomic_uint u_Used;
uniform uint u_Room;
uniform int u_NodesWidth;

flat in uint vo_DrawID;

void main()
{
    // Without room the fragment is only counted: all is drawn again with as much room as that says.
    uint place = atomicCounterIncrement(u_Used);
    if (place >= u_Room)
        return;
    uint next = imageAtomicExchange(u_Heads, ivec2(gl_FragCoord.xy), place + 1u);
    uint width = uint(u_NodesWidth);
    imageStore(u_Nodes, ivec2(place % width, place / width),
               uvec4(next, uint(gl_PrimitiveID) + 1u, floatBitsToUint(gl_FragCoord.z), vo_DrawID));
}
