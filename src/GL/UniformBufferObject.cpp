// SPDX-License-Identifier: MIT
#include "UniformBufferObject.h"

#include "BufferObject.h"
#include "Diagnostics.h"
#include "GLContextTracker.h"
#include "GLUtilities.h"
#include "ShaderProgram.h"
#include "UBOContextData.h"

#include <QBasicMutex>
#include <QMutexLocker>

#include <iterator>
#include <utility>

namespace Harrow::Vrk
{
namespace
{

struct BlockKindRow
{
    GLenum target;
    GLenum maxBindings;
};

// In the order of BlockKind.
constexpr BlockKindRow kBlockKinds[] = {
    {GL_UNIFORM_BUFFER, GL_MAX_UNIFORM_BUFFER_BINDINGS},
    {GL_SHADER_STORAGE_BUFFER, GL_MAX_SHADER_STORAGE_BUFFER_BINDINGS},
};

int numAlive = 0;
QBasicMutex recordsMutex;

template <typename Function> Function entryPoint(const char* name)
{
    return reinterpret_cast<Function>(getGLProcAddress(name, false));
}

QSharedPointer<UBOContextData> newContextData(const BlockKindRow& kind)
{
    GLint maxBindings = 0;
    glGetIntegerv(kind.maxBindings, &maxBindings);
    return QSharedPointer<UBOContextData>::create(kind.target, maxBindings);
}

void fetchEntryPoints(UBOContextData& data)
{
    data._bindBuffersBase = entryPoint<PFN_glBindBuffersBase>("glBindBuffersBase");
    if (data._target == GL_SHADER_STORAGE_BUFFER)
        data._shaderStorageBlockBinding = entryPoint<PFN_glShaderStorageBlockBinding>("glShaderStorageBlockBinding");
}

} // namespace

UniformBufferObject::UniformBufferObject(const QString& blockName, QSharedPointer<BufferObject> buffer, QObject* parent)
    : QObject(parent), _bufferObject(std::move(buffer)), _blockName(blockName)
{
    ++numAlive;
}

UniformBufferObject::~UniformBufferObject()
{
    --numAlive;
}

bool UniformBufferObject::bind()
{
    ShaderProgram* const program = ShaderProgram::currentShaderProgram();
    if (!program)
    {
        VRK_LOG_WARNING("No ShaderProgram is bound");
        return false;
    }
    return bind(program);
}

bool UniformBufferObject::bind(ShaderProgram* program)
{
    VRK_ASSERT_RETURN(!this->_bufferObject.isNull(), false, "m_bufferObject is NULL on bind()");
    UBOContextData& uboContextData = bufferContextData();
    const GLenum target = uboContextData._target;
    const GLuint bufferObjectID = _bufferObject->getBO();
    const int blockIndex = program ? program->getTypeBlockIndex(target, _blockName) : -1;

    int binding = uboContextData.bindingOf(bufferObjectID);
    if (binding >= 0)
    {
        if (blockIndex >= 0)
            program->setTypeBlockBinding(target, blockIndex, binding);
        ++uboContextData._boundUniformBufferObjectCounts[bufferObjectID];
        return true;
    }
    if (uboContextData._freeBindings.isEmpty())
    {
        VRK_LOG_WARNING("There is no available uniformBlockBindings");
        return false;
    }
    // A block that was never given a binding answers all ones, which is -1 here and never free.
    const int present = blockIndex >= 0 ? static_cast<int>(program->getTypeBlockBinding(target, blockIndex)) : -1;
    binding = uboContextData.chooseBinding(present);
    uboContextData.take(bufferObjectID, binding);
    if (uboContextData.isBatching())
    {
        uboContextData.extendBatch(binding);
    }
    else
    {
        VRK_ASSERT(_bufferObject->valueCount() * _bufferObject->valueSize() != 0,
                   "glBindBufferRange() cannot take 0 as a size (%d,%d)", _bufferObject->valueCount(),
                   static_cast<int>(_bufferObject->valueSize()));
        glBindBufferBase(target, binding, bufferObjectID);
    }
    if (blockIndex >= 0)
        program->setTypeBlockBinding(target, blockIndex, binding);
    return true;
}

bool UniformBufferObject::unbind()
{
    ShaderProgram* const program = ShaderProgram::currentShaderProgram();
    if (!program)
    {
        VRK_LOG_WARNING("No ShaderProgram is bound");
        return false;
    }
    return unbind(program);
}

bool UniformBufferObject::unbind(ShaderProgram*)
{
    VRK_ASSERT_RETURN(!this->_bufferObject.isNull(), false, "m_bufferObject is NULL on bind()");
    UBOContextData& uboContextData = bufferContextData();
    const GLuint bufferObjectID = _bufferObject->getBO();
    const int binding = uboContextData.bindingOf(bufferObjectID);
    if (binding < 0)
        return true;
    VRK_ASSERT_RETURN(uboContextData._boundUniformBufferObjectCounts.contains(bufferObjectID), false,
                      "UniformBufferObject has not been bound on unbind");
    if (--uboContextData._boundUniformBufferObjectCounts[bufferObjectID] > 0)
        return true;
    glBindBufferBase(uboContextData._target, binding, 0);
    uboContextData.release(bufferObjectID);
    return true;
}

int UniformBufferObject::uniformBlockBinding() const
{
    VRK_ASSERT_RETURN(!this->_bufferObject.isNull(), 0, "m_bufferObject is NULL on uniformBlockBinding()");
    const UBOContextData& uboContextData = bufferContextData();
    const GLuint bufferObjectID = _bufferObject->getBO();
    VRK_ASSERT_RETURN(uboContextData._uniformBufferObjectToUniformBlockBindingMaps.contains(bufferObjectID), -1,
                      "UniformBufferObject has not been bound on uniformBlockBinding()");
    VRK_ASSERT_RETURN(uboContextData._boundUniformBufferObjectCounts.contains(bufferObjectID), -1,
                      "UniformBufferObject has not been bound on uniformBlockBinding()");
    return uboContextData.bindingOf(bufferObjectID);
}

QSharedPointer<BufferObject> UniformBufferObject::bufferObject() const
{
    return _bufferObject;
}

size_t UniformBufferObject::memoryEstimateCPU() const
{
    return sizeof(*this) + static_cast<size_t>(_blockName.size()) +
           (_bufferObject ? _bufferObject->memoryEstimateCPU() : 0);
}

size_t UniformBufferObject::memoryEstimateGPU() const
{
    return _bufferObject ? _bufferObject->memoryEstimateGPU() : 0;
}

void UniformBufferObject::bindBatchStart()
{
    contextData(BlockKind::eUniform).startBatch();
    contextData(BlockKind::eStorage).startBatch();
}

void UniformBufferObject::bindBatchFlush()
{
    flushBatch(contextData(BlockKind::eUniform));
    flushBatch(contextData(BlockKind::eStorage));
}

void UniformBufferObject::flushBatch(UBOContextData& uboContextData)
{
    const int first = uboContextData._batchFirst;
    const int last = uboContextData._batchLast;
    // Also a batch that has touched nothing is closed, so that the binds that follow are made at once.
    uboContextData.endBatch();
    if (last == -1)
        return;
    // Free points inside the range carry 0 and are cleared.
    const GLuint* const buffers = uboContextData._bindingBuffers.constData();
    if (uboContextData._bindBuffersBase)
    {
        uboContextData._bindBuffersBase(uboContextData._target, first, last - first + 1, buffers + first);
        return;
    }
    for (int binding = first; binding <= last; ++binding)
        glBindBufferBase(uboContextData._target, binding, buffers[binding]);
}

int UniformBufferObject::NumAlive()
{
    return numAlive;
}

UBOContextData& UniformBufferObject::bufferContextData() const
{
    switch (const GLenum target = _bufferObject->target(); target)
    {
    case GL_SHADER_STORAGE_BUFFER:
        return contextData(BlockKind::eStorage);
    default:
        VRK_LOG_DEBUG("Unknown Uniforma b uffer type 0x%X", target);
        [[fallthrough]];
    case GL_UNIFORM_BUFFER:
        return contextData(BlockKind::eUniform);
    }
}

int UniformBufferObject::maxUniformBlockBindings()
{
    return contextData(BlockKind::eUniform)._maxBindings;
}

UniformBufferObject::ContextRecords& UniformBufferObject::contextRecords(BlockKind kind)
{
    // Never destroyed: objects that outlive the library's own statics may still unbind.
    static auto* const records = new ContextRecords[std::size(kBlockKinds)];
    return records[static_cast<size_t>(kind)];
}

UniformBufferObject::LastRecords& UniformBufferObject::lastRecords()
{
    static thread_local LastRecords last = {};
    return last;
}

UBOContextData& UniformBufferObject::contextData(BlockKind kind)
{
    void* const context = GLContextTracker::currentContext();
    LastRecords& last = lastRecords();
    if (last.context != context)
        last = {context, {}};
    const auto number = static_cast<size_t>(kind);
    if (UBOContextData* const known = last.records[number])
        return *known;
    UBOContextData* const record = findOrMakeRecord(kind, context);
    // Whoever handled a message in between may have come here with another context.
    if (last.context == context)
        last.records[number] = record;
    return *record;
}

UBOContextData* UniformBufferObject::findOrMakeRecord(BlockKind kind, void* context)
{
    // Guards the finding and making alone. A record stays where it is, is never removed, and belongs to the thread of
    // its context.
    QMutexLocker lock(&recordsMutex);
    QSharedPointer<UBOContextData>& record = contextRecords(kind)[context];
    UBOContextData* const known = record.data();
    if (known)
        return known;
    record = newContextData(kBlockKinds[static_cast<size_t>(kind)]);
    UBOContextData* const made = record.data();
    // A miss is logged, and whoever handles messages may come here again.
    lock.unlock();
    fetchEntryPoints(*made);
    return made;
}

} // namespace Harrow::Vrk
