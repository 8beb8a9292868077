// SPDX-License-Identifier: MIT
#pragma once

/// \file
/// The friend seams of vertex arrays, uniform buffers and draw buffers, and the resets of what they cache per process.

#include "DrawBuffers.h"
#include "UBOContextData.h"
#include "UniformBufferObject.h"
#include "VertexArrayObject.h"

namespace Harrow::Vrk
{

struct VertexArrayObjectTestAccess
{
    static QSharedPointer<VertexArrayObject> make()
    {
        return QSharedPointer<VertexArrayObject>(new VertexArrayObject(nullptr));
    }
    static bool create(VertexArrayObject& object)
    {
        return object.create();
    }
    static bool destroy(VertexArrayObject& object)
    {
        return object.destroy();
    }
    static bool enableArray(VertexArrayObject& object, const QString& name, int index)
    {
        return object.enableArray(name, index);
    }
    static QList<QString>& attributeNames(VertexArrayObject& object)
    {
        return object._attributeNames;
    }
    static void setName(VertexArrayObject& object, GLuint name)
    {
        object._vao = name;
    }
};

struct UniformBufferObjectTestAccess
{
    static QSharedPointer<UniformBufferObject> make(const QString& blockName, QSharedPointer<BufferObject> buffer)
    {
        return QSharedPointer<UniformBufferObject>(new UniformBufferObject(blockName, std::move(buffer), nullptr));
    }
    static UBOContextData& uniformRecord()
    {
        return UniformBufferObject::contextData(UniformBufferObject::BlockKind::eUniform);
    }
    static UBOContextData& storageRecord()
    {
        return UniformBufferObject::contextData(UniformBufferObject::BlockKind::eStorage);
    }
    static int maxUniformBlockBindings()
    {
        return UniformBufferObject::maxUniformBlockBindings();
    }
    /// A fake driver's context handle comes again in the next test; its records must not.
    static void forgetContexts()
    {
        UniformBufferObject::contextRecords(UniformBufferObject::BlockKind::eUniform).clear();
        UniformBufferObject::contextRecords(UniformBufferObject::BlockKind::eStorage).clear();
        UniformBufferObject::lastRecords() = {};
    }
};

struct DrawBuffersTestAccess
{
    static void resetEntryPoints()
    {
        DrawBuffers::_drawArraysInstancedBaseInstance = nullptr;
        DrawBuffers::_drawElementsInstancedBaseVertexBaseInstance = nullptr;
    }
    static void resetMode()
    {
        DrawBuffers::useBaseInstanceDrawing(false);
        DrawBuffers::getAndResetTotalDrawCalls();
        DrawBuffers::getAndResetTotalDrawBatches();
        DrawBuffers::getAndResetTotalDrawIndices();
    }
    static void useMultiDrawIndirect(DrawBuffers& object, bool use)
    {
        object._useMultiDrawIndirect = use;
    }
    static void setCommandBuffer(DrawBuffers& object, QSharedPointer<BufferObject> buffer)
    {
        object._boCommands = std::move(buffer);
    }
};

} // namespace Harrow::Vrk
