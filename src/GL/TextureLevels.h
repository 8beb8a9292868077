// SPDX-License-Identifier: MIT
#pragma once

/// \file
/// Sizes of mip levels, as plain arithmetic. Not installed.

#include <algorithm>
#include <cmath>
#include <limits>

namespace Harrow::Vrk
{

/// Index of the last level of a full chain; depth plays no part. Single precision is part of the result: 2^13, 2^15,
/// 2^26 and 2^30 (with the next sizes above the last two, which round to them) have one level less than they should,
/// and sizes just below each other power of two from 2^21 on count as that power.
inline int lastMipLevel(int width, int height)
{
    const int largest = std::max(width, height);
    // Sizes below 1 have no logarithm and no levels.
    if (largest <= 1)
        return 0;
    return static_cast<int>(std::floor(std::log(static_cast<float>(largest)) / std::log(2.0f)));
}

/// Size of a level in a dimension whose base level has `dimension` texels; 0 beyond `lastLevel`.
inline int mipLevelSize(int dimension, int level, int lastLevel)
{
    if (level == 0)
        return dimension;
    if (level > lastLevel)
        return 0;
    // Only negative levels reach beyond an int. Infinity times nothing is not a number, and counts as 1.
    constexpr double beyond = 4294967296.0;
    const double exact = std::floor(dimension * std::pow(2.0, -static_cast<double>(level)));
    const float size = std::max(1.0f, static_cast<float>(std::min(exact, beyond)));
    return size < beyond / 2 ? static_cast<int>(size) : std::numeric_limits<int>::max();
}

} // namespace Harrow::Vrk
