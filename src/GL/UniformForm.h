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
    eNone, ///< Not a type that a uniform can take.
    eInt,
    eUInt,
    eFloat,
    eColor,
    eVector2,
    eVector3,
    eVector4,
    eMatrix4,
    eMatrix3,
    eMatrix4x2,
    eMatrix2,
    eFloatInRange,
    eDoubleInRange,
};

VRKGL_EXPORT UniformForm uniformFormOf(const QVariant& value);

} // namespace Harrow::Vrk
