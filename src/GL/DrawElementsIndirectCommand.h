// SPDX-License-Identifier: MIT
#pragma once

/// \file
/// One sub-draw of an indexed geometry: the record of OpenGL's indirect draw calls, as the driver reads it. Its twin in
/// GLSL stands in `DrawElementsIndirectCommand.glslh`.

#include <cstdint>
#include <type_traits>

namespace Harrow::Vrk
{

/// The fields are in OpenGL's order, without gaps.
struct DrawElementsIndirectCommand
{
    std::uint32_t count;         ///< Number of indices.
    std::uint32_t instanceCount; ///< Number of instances.
    std::uint32_t firstIndex;    ///< First index, counted in indices from the start of the index buffer.
    std::uint32_t baseVertex;    ///< Added to each index.
    std::uint32_t baseInstance;  ///< First instance.
};

static_assert(sizeof(DrawElementsIndirectCommand) == 20, "OpenGL reads the five fields without gaps");
static_assert(std::is_trivially_copyable_v<DrawElementsIndirectCommand>);

} // namespace Harrow::Vrk
