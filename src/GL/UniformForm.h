// SPDX-License-Identifier: MIT
#pragma once

/// \file
/// Which kind of uniform a `QVariant` stands for. A plain function of the value, free of OpenGL. Not installed.

#include "Export.h"

#include <QtGlobal>

QT_FORWARD_DECLARE_CLASS(QVariant)

namespace Harrow::Vrk
{

enum class UniformForm
{
    None, ///< Not a type that a uniform can take.
    Int,
    UInt,
    Float,
    Color,
    Vector2,
    Vector3,
    Vector4,
    Matrix4,
    Matrix3,
    Matrix4x2,
    Matrix2,
    FloatInRange,
    DoubleInRange,
};

VRKGL_EXPORT UniformForm uniformFormOf(const QVariant& value);

} // namespace Harrow::Vrk
