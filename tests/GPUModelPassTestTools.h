// SPDX-License-Identifier: MIT
#pragma once

/// \file
/// What the suites of the scene's culling and drawing share: a view of its books, and draw lists that only have
/// commands.

#include "DrawBuffers.h"
#include "GPUModel.h"

namespace Harrow::Vrk
{

struct GPUModelTestAccess
{
    /// By position.
    static const GPUModel::Drawable& drawableAt(const GPUModel& model, int position)
    {
        return model._drawables.at(position);
    }
    static GPUModel::Drawable& writableDrawableAt(GPUModel& model, int position)
    {
        return model._drawables[position];
    }
    static const QHash<int, QList<int>>& materialDrawables(const GPUModel& model)
    {
        return model._materialDrawables;
    }
    static bool& isSceneBoundsDirty(GPUModel& model)
    {
        return model._sceneBoundsDirty;
    }
    /// A matrix as an update would leave it.
    static void setWorld(GPUModel& model, int transform, const QMatrix4x4& world)
    {
        model._worldTransforms[transform] = world;
    }
    static void setPrimitiveRestartDone(bool simple, bool isDone)
    {
        GPUModel::primitiveRestartFlag(simple) = isDone;
    }
    static bool isPrimitiveRestartDone(bool simple)
    {
        return GPUModel::primitiveRestartFlag(simple);
    }
};

} // namespace Harrow::Vrk

namespace Harrow::Vrk::Test
{

inline constexpr quint64 kHiddenFlag = quint64(1) << 63;
inline constexpr quint64 kSortFlag = quint64(1) << 62;
inline constexpr quint64 kTwoSidedFlag = quint64(1) << 60;

/// Sub-draws of 3, 6, 9, … indices, so that each is known by its count.
inline void setCommands(DrawBuffers& buffers, int count)
{
    QList<DrawElementsIndirectCommand> commands;
    for (int i = 0; i < count; ++i)
        commands.append({quint32(3 * (i + 1)), 1, 0, 0, 0});
    buffers.setDrawElementsIndirectCommands(commands.constData(), count);
}

/// Belongs to the model that it is added to. Cannot be drawn.
inline DrawBuffers* newDrawList(int commands)
{
    auto* const buffers = new DrawBuffers(nullptr);
    buffers->setIndexedDraw({}, 3, GL_UNSIGNED_SHORT);
    setCommands(*buffers, commands);
    return buffers;
}

inline QMatrix4x4 translation(float x, float y, float z)
{
    QMatrix4x4 matrix;
    matrix.translate(x, y, z);
    return matrix;
}

inline QMatrix4x4 scaling(float x, float y, float z)
{
    QMatrix4x4 matrix;
    matrix.scale(x, y, z);
    return matrix;
}

} // namespace Harrow::Vrk::Test
