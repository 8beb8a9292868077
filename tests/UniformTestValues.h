// SPDX-License-Identifier: MIT
#pragma once

/// \file
/// Values for uniforms that the suites of `ShaderProgram::setUniform` share, ranged numbers under their alias among
/// them.

#include "RangedDataType.h"

#include <QImage>
#include <QMatrix4x4>
#include <QMetaType>
#include <QVariant>

#include <memory>
#include <vector>

namespace Harrow::Vrk::Test
{

/// A meta-type with the look of T under another name, as a binding made at run time reports it. `id` 0 lets Qt resolve
/// the name.
template <typename T> QMetaType namedType(const char* name, int id = 0)
{
    const QtPrivate::QMetaTypeInterface* const like = QMetaType::fromType<T>().iface();
    // They live as long as the process, as Qt keeps hold of them.
    static auto* const made = new std::vector<std::unique_ptr<QtPrivate::QMetaTypeInterface>>;
    made->emplace_back(new QtPrivate::QMetaTypeInterface{
        like->revision, like->alignment, like->size, like->flags, QBasicAtomicInt{id}, like->metaObjectFn, name,
        like->defaultCtr, like->copyCtr, like->moveCtr, like->dtor, like->equals, like->lessThan, like->debugStream,
        like->dataStreamOut, like->dataStreamIn, like->legacyRegisterOp});
    return QMetaType(made->back().get());
}

inline QMetaType rangedFloatByAlias()
{
    static const QMetaType type = namedType<RangedFloat>("Harrow::Vrk::RangedFloat");
    return type;
}

inline QMetaType rangedDoubleByAlias()
{
    static const QMetaType type = namedType<RangedDouble>("Harrow::Vrk::RangedDouble");
    return type;
}

inline QVariant rangedFloat(float value)
{
    const RangedFloat ranged{value, -100.0f, 100.0f};
    return QVariant(rangedFloatByAlias(), &ranged);
}

inline QVariant rangedDouble(double value)
{
    const RangedDouble ranged{value, -100.0, 100.0};
    return QVariant(rangedDoubleByAlias(), &ranged);
}

inline QImage someImage()
{
    return QImage(3, 2, QImage::Format_RGB32);
}

template <typename Matrix> Matrix countingMatrix()
{
    Matrix matrix;
    const int count = static_cast<int>(sizeof(Matrix) / sizeof(float));
    for (int i = 0; i < count; ++i)
        matrix.data()[i] = static_cast<float>(i + 1);
    return matrix;
}

inline QMatrix4x4 countingMatrix4()
{
    QMatrix4x4 matrix;
    for (int i = 0; i < 16; ++i)
        matrix.data()[i] = static_cast<float>(i + 1);
    return matrix;
}

} // namespace Harrow::Vrk::Test
