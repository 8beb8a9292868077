// SPDX-License-Identifier: MIT
#pragma once

/// \file
/// Unit vectors, with one rule for what counts as unit and as zero: planes and the scene's transforms must agree on it.
/// Not installed.

#include <QVector3D>

#include <cmath>

namespace Harrow::Vrk
{

/// `vector` as it is when its length is 1 to within 1e-5, so that a unit vector keeps its bits; the zero vector when
/// its length is at most 1e-5; otherwise `vector` divided by its length. What is not a number stays so.
inline QVector3D normalize(const QVector3D& vector)
{
    constexpr double kTolerance = 1e-5;
    // In double, as the squares of large and small floats leave the range of float. Not by QVector3D's own operators:
    // its length can be 0 for what is not a number, and its division asserts that it is not.
    const double x = vector.x();
    const double y = vector.y();
    const double z = vector.z();
    const double length = std::sqrt(x * x + y * y + z * z);
    if (std::fabs(length - 1.0) <= kTolerance)
        return vector;
    if (length <= kTolerance)
        return QVector3D();
    return QVector3D(static_cast<float>(x / length), static_cast<float>(y / length), static_cast<float>(z / length));
}

} // namespace Harrow::Vrk
