// SPDX-License-Identifier: MIT
#pragma once

/// \file
/// Counts what a stretch of code allocates, the library's share and the driver's: HeapCount.cpp counts for the whole
/// program, what the containers of Qt take from C included.

#include <cstddef>
#include <optional>

namespace Harrow::Vrk::Test
{

/// Allocations of this thread since its construction.
class HeapCount
{
public:
    HeapCount();

    long long soFar() const;

private:
    long long _start;
};

/// What the whole program has taken from the heap and not given back; nothing where the C library does not tell.
std::optional<std::size_t> bytesInUse();

} // namespace Harrow::Vrk::Test
