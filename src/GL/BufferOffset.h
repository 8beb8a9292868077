// SPDX-License-Identifier: MIT
#pragma once

/// \file
/// An offset into a bound buffer, as OpenGL takes it: in the place of a pointer. Not installed.

#include <cstddef>
#include <cstdint>

namespace Harrow::Vrk
{

inline const void* bufferOffset(std::size_t bytes)
{
    return reinterpret_cast<const void*>(static_cast<std::uintptr_t>(bytes));
}

} // namespace Harrow::Vrk
