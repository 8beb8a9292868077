// SPDX-License-Identifier: MIT
// What the deep buffer gives out.
#pragma once

#include <QVector2D>
#include <QVector3D>

#include <cstdint>

namespace deeppick
{

/// What the GPU says of one surface under a pixel.
struct Fragment
{
    std::uint32_t object = 0;
    std::uint32_t instance = 0;
    std::uint32_t draw = 0;
    std::uint32_t triangle = 0; ///< of the object, from 0
    QVector3D position;         ///< world space
    QVector3D normal;           ///< world space, of length 1, or 0 where the model has none
    QVector2D texCoord;
    float depth = 0.0f; ///< 0 at the near and 1 at the far plane
};

} // namespace deeppick
