#version 150
#extension GL_ARB_shader_image_load_store : enable
// SPDX-License-Identifier: MIT
//
// Links each pixel's list anew, nearest first, and counts it. Lists are merged bottom up, from runs of one node to runs
// of two, four and so on: no memory but the links, and few steps more than there are nodes, however deep the list is.
// No other pixel touches the nodes of this one.

layout(r32ui) coherent uniform uimage2D u_Heads;
layout(rgba32ui) coherent uniform uimage2D u_Nodes;
uniform int u_NodesWidth;

out uint o_Count;

ivec2 placeOf(uint pointer)
{
    uint width = uint(u_NodesWidth);
    return ivec2((pointer - 1u) % width, (pointer - 1u) / width);
}

// A pointer with its node; 0 has none.
struct Entry
{
    uint pointer;
    uvec4 node;
};

Entry entryAt(uint pointer)
{
    return Entry(pointer, pointer != 0u ? imageLoad(u_Nodes, placeOf(pointer)) : uvec4(0u));
}

// Depths are bits of floats from 0 to 1, which are in the order of their numbers. At one depth the order is that of
// drawing, so that every run of the program gives the same.
bool isBefore(uvec4 a, uvec4 b)
{
    if (a.b != b.b)
        return a.b < b.b;
    if (a.a != b.a)
        return a.a < b.a;
    return a.g <= b.g;
}

uint g_First;
Entry g_Last;

void append(Entry entry)
{
    if (g_Last.pointer == 0u)
        g_First = entry.pointer;
    else
        imageStore(u_Nodes, placeOf(g_Last.pointer), uvec4(entry.pointer, g_Last.node.gba));
    g_Last = entry;
}

// Merges each two neighbouring runs of `run` nodes.
void mergeRuns(uint run)
{
    Entry a = entryAt(g_First);
    g_First = 0u;
    g_Last = entryAt(0u);
    while (a.pointer != 0u)
    {
        uint leftOfA = 0u;
        Entry b = a;
        while (leftOfA < run && b.pointer != 0u)
        {
            ++leftOfA;
            b = entryAt(b.node.r);
        }
        uint leftOfB = run;
        while (leftOfA > 0u || (leftOfB > 0u && b.pointer != 0u))
        {
            bool takesB = leftOfA == 0u || (leftOfB > 0u && b.pointer != 0u && !isBefore(a.node, b.node));
            Entry taken = a;
            if (takesB)
                taken = b;
            // What comes behind it is looked up before its own link changes.
            Entry next = entryAt(taken.node.r);
            append(taken);
            if (takesB)
            {
                b = next;
                --leftOfB;
            }
            else
            {
                a = next;
                --leftOfA;
            }
        }
        a = b;
    }
    append(entryAt(0u)); // the end
}

void main()
{
    ivec2 pixel = ivec2(gl_FragCoord.xy);
    g_First = imageLoad(u_Heads, pixel).r;
    uint count = 0u;
    for (uint pointer = g_First; pointer != 0u; pointer = imageLoad(u_Nodes, placeOf(pointer)).r)
        ++count;
    for (uint run = 1u; run < count; run *= 2u)
        mergeRuns(run);
    imageStore(u_Heads, pixel, uvec4(g_First));
    o_Count = count;
}
