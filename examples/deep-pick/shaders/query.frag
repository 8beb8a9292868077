#version 150
#extension GL_ARB_shader_image_load_store : enable
// SPDX-License-Identifier: MIT
//
// Writes down what is under one pixel, front to back: four texels for each fragment from number u_First on.

#include "ShaderBitEncoding.glslh"
#include "VrkUtilities.glslh"
#include "VisibilityBuffer.glslh"
#instancedata "InstanceInfo"

layout(rgba32ui) writeonly uniform uimageBuffer u_Result;
uniform usampler2D u_SamplerNodeBuffer; // that of the queries, for the number of the triangle
uniform int u_SamplerNodeBufferWidth;
uniform float u_WorldFromScene;
uniform int u_First;
uniform int u_MostFragments;

in vec2 vo_TexCoord;

uvec4 bits(vec4 numbers)
{
    return uvec4(floatBitsToUint(numbers.x), floatBitsToUint(numbers.y), floatBitsToUint(numbers.z),
                 floatBitsToUint(numbers.w));
}

uint primitiveAt(uint pointer)
{
    uint width = uint(u_SamplerNodeBufferWidth);
    return texelFetch(u_SamplerNodeBuffer, ivec2((pointer - 1u) % width, (pointer - 1u) / width), 0).g - 1u;
}

vec3 worldNormal(vec3 normal)
{
    vec3 world = transpose(inverse(mat3(getModelMatrix()))) * normal;
    float size = max(abs(world.x), max(abs(world.y), abs(world.z)));
    return size > 0.0 ? normalize(world / size) : vec3(0.0);
}

void main()
{
    uint pointer;
    initializeVisibilityBufferQuery(vo_TexCoord, pointer);
    for (int index = 0; index < u_First + u_MostFragments && doesVisibilityBufferHaveFragment(pointer); ++index)
    {
        uint primitive = primitiveAt(pointer);
        vec4 position;
        float depth;
        vec3 normal;
        vec2 texCoord;
        getFragmentInfo(vo_TexCoord, pointer, position, depth, normal, texCoord);
        if (index < u_First)
            continue;
        int texel = 4 * (index - u_First);
        vec3 world = u_WorldFromScene * (getModelMatrix() * position).xyz;
        imageStore(u_Result, texel, bits(vec4(world, depth)));
        imageStore(u_Result, texel + 1, bits(vec4(worldNormal(normal), 0.0)));
        imageStore(u_Result, texel + 2, bits(vec4(texCoord, 0.0, 0.0)));
        imageStore(u_Result, texel + 3, uvec4(getLabel(), getDrawID(), primitive));
    }
}
