// SPDX-License-Identifier: MIT
#include "BufferObject.h"

#include "BufferObjectEntryPoints.h"
#include "Diagnostics.h"
#include "GLPlatform.h"
#include "GLUtilities.h"

#include <QSet>

#include <cstdlib>
#include <limits>

namespace Harrow::Vrk
{
namespace
{

int numAlive = 0;
int numAliveManaged = 0;

/// Only atomic counters, on purpose: `setIndexedTarget` complains about uniform buffers and works.
QSet<GLenum> indexedTargets;

void initializeIndexedBufferObjecttargets()
{
    if (indexedTargets.isEmpty())
        indexedTargets.insert(GL_ATOMIC_COUNTER_BUFFER);
}

BufferObjectEntryPoints entryPoints;

/// Once where the driver has direct access; a driver without it is asked again for every new object.
void lookUpEntryPoints()
{
    if (entryPoints.namedBufferData)
        return;
    entryPoints.bufferStorage = reinterpret_cast<PFN_glBufferStorage>(getGLProcAddress("glBufferStorage", true));
    entryPoints.namedBufferData = reinterpret_cast<PFN_glNamedBufferData>(getGLProcAddress("glNamedBufferData", true));
    entryPoints.namedBufferStorage =
        reinterpret_cast<PFN_glNamedBufferStorage>(getGLProcAddress("glNamedBufferStorage", true));
    entryPoints.namedBufferSubData =
        reinterpret_cast<PFN_glNamedBufferSubData>(getGLProcAddress("glNamedBufferSubData", true));
}

GLsizeiptr byteCount(int valueCount, std::size_t valueSize)
{
    return static_cast<GLsizeiptr>(valueCount) * static_cast<GLsizeiptr>(valueSize);
}

/// Whether `byteCount` stays within its type.
bool isCountable(int valueCount, std::size_t valueSize)
{
    constexpr auto limit = static_cast<std::size_t>(std::numeric_limits<GLsizeiptr>::max());
    const auto count = static_cast<std::size_t>(std::abs(static_cast<qint64>(valueCount)));
    return count == 0 || valueSize <= limit / count;
}

} // namespace

BufferObjectEntryPoints& bufferObjectEntryPoints()
{
    return entryPoints;
}

BufferObject::BufferObject(unsigned int bufferId, QObject* parent) : QObject(parent), _bo(bufferId)
{
    lookUpEntryPoints();
    ++numAlive;
}

BufferObject::BufferObject(QObject* parent) : QObject(parent), _managed(true)
{
    lookUpEntryPoints();
    create();
    ++numAlive;
    ++numAliveManaged;
}

BufferObject::~BufferObject()
{
    if (_managed)
    {
        destroy();
        --numAliveManaged;
    }
    --numAlive;
}

bool BufferObject::create()
{
    VRK_ASSERT_RETURN(0u == this->_bo, false, "Buffer Object is not NULL on create");
    VRK_ASSERT_RETURN(0u == this->_boBountTarget, false, "Buffer Object is already bound on create to target %d",
                      this->_boBountTarget);
    glGenBuffers(1, &_bo);
    return true;
}

bool BufferObject::destroy()
{
    VRK_ASSERT_RETURN(0u == this->_boBountTarget, false, "Buffer Object is already bound on destroy to target %d",
                      this->_boBountTarget);
    if (_bo != 0)
    {
        if (!GLPlatform::isProcessEnding())
            glDeleteBuffers(1, &_bo);
        _bo = 0;
    }
    return true;
}

bool BufferObject::bind()
{
    VRK_ASSERT_RETURN(0u != this->_bo, false, "Buffer Object is NULL on bind");
    VRK_ASSERT_RETURN(0u == this->_boBountTarget, false, "Buffer Object is already bound on bind to target %d",
                      this->_boBountTarget);
    VRK_ASSERT_RETURN(0u != this->_target, false, "Buffer Object's target is not set when bind() is called");
    if (_useBindBufferRange)
        glBindBufferRange(_target, _bindIndex, _bo, _bindOffset, _bindSize);
    else
        glBindBuffer(_target, _bo);
    _boBountTarget = _target;
    return true;
}

bool BufferObject::unbind()
{
    VRK_ASSERT_RETURN(0u != this->_bo, false, "Buffer Object is NULL on unbind");
    VRK_ASSERT_RETURN(0u != this->_boBountTarget, false, "Buffer Object is not bound on unbind");
    if (_useBindBufferRange)
        glBindBufferRange(_target, 0, 0, 0, 0); // index 0 whatever _bindIndex is: the call that callers rely on
    else
        glBindBuffer(_target, 0);
    _boBountTarget = 0;
    return true;
}

bool BufferObject::rebind(BufferObject* bufferObjectBound, bool force)
{
    if (!bufferObjectBound)
        return bind();
    if (bufferObjectBound == this && !force)
        return true;
    if (bufferObjectBound != this)
    {
        VRK_ASSERT_RETURN(0u != this->_bo, false, "Buffer Object is NULL on bind");
        VRK_ASSERT_RETURN(0u == this->_boBountTarget, false, "Buffer Object is already bound on bind to target %d",
                          this->_boBountTarget);
        VRK_ASSERT_RETURN(0u != this->_target, false, "Buffer Object's target is not set when bind() is called");
        VRK_ASSERT_RETURN(0u != bufferObjectBound->_boBountTarget, false,
                          "Bound Buffer Object is not already bound to target %d", this->_target);
        VRK_ASSERT_RETURN(this->_target == bufferObjectBound->_boBountTarget, false,
                          "Bound Buffer Object target %d is not the same target %d", bufferObjectBound->_boBountTarget,
                          this->_target);
        VRK_ASSERT_RETURN(this->_useBindBufferRange == bufferObjectBound->_useBindBufferRange, false,
                          "Bound BO useRange does not match the rebind Buffer Object");
    }
    const bool sameBuffer = bufferObjectBound->_bo == _bo;
    bufferObjectBound->_boBountTarget = 0;
    if (_useBindBufferRange)
        glBindBufferRange(_target, _bindIndex, _bo, _bindOffset, _bindSize);
    else if (!sameBuffer || force)
        glBindBuffer(_target, _bo);
    _boBountTarget = _target;
    return true;
}

void BufferObject::setTarget(GLenum target)
{
    initializeIndexedBufferObjecttargets();
    if (indexedTargets.contains(target))
        VRK_LOG_CRITICAL("Cannot use setTarget() for indexed buffer object such as GL_UNIFORM_BUFFER. Use "
                         "setIndexedTarget() instead.");
    _target = target;
    _useBindBufferRange = false;
}

void BufferObject::setIndexedTarget(GLenum target, GLuint index, GLintptr offset, GLsizeiptr size)
{
    initializeIndexedBufferObjecttargets();
    if (!indexedTargets.contains(target))
        VRK_LOG_CRITICAL("Cannot use setIndexedTarget() for non-indexed buffer object such as GL_ARRAY_BUFFER. Use "
                         "setTarget() instead.");
    _target = target;
    _bindIndex = index;
    _bindOffset = offset;
    _bindSize = size;
    _useBindBufferRange = true;
}

bool BufferObject::upload(const float* data, int valueCount, GLenum usage)
{
    return uploadValues(data, valueCount, usage, sizeof(float));
}

bool BufferObject::upload(const QList<float>& values, GLenum usage)
{
    return upload(values.constData(), static_cast<int>(values.size()), usage);
}

bool BufferObject::uploadGLuintData(const GLuint* data, int valueCount, GLenum usage)
{
    return uploadValues(data, valueCount, usage, sizeof(GLuint));
}

bool BufferObject::uploadGLushortData(const GLushort* data, int valueCount, GLenum usage)
{
    return uploadValues(data, valueCount, usage, sizeof(GLushort));
}

bool BufferObject::uploadValues(const void* data, int valueCount, GLenum usage, std::size_t valueSize)
{
    VRK_ASSERT_RETURN(0u != this->_bo, false, "Buffer Object is NULL on upload");
    VRK_ASSERT_RETURN(0 != valueCount, false, "Buffer Object needs more and 0 values during upload");
    return uploadChecked(data, valueCount, usage, valueSize);
}

bool BufferObject::uploadArbitraryData(const void* data, int valueCount, GLenum usage, std::size_t valueSize)
{
    VRK_ASSERT_RETURN(0u != this->_bo, false, "Buffer Object is NULL on upload");
    VRK_ASSERT_RETURN(0 != valueCount, false, "Buffer Object needs more and 0 values during upload");
    VRK_ASSERT_RETURN(0 != valueSize, false, "Buffer Object needs more and 0 value size during upload");
    VRK_ASSERT_RETURN(isCountable(valueCount, valueSize), false, "Buffer Object cannot hold %d values of %zu bytes",
                      valueCount, valueSize);
    if (!_immutableStorage)
        return uploadChecked(data, valueCount, usage, valueSize);
    VRK_ASSERT_RETURN(nullptr != data, false, "Buffer Object needs data on upload into its storage");
    entryPoints.namedBufferSubData(_bo, 0, byteCount(valueCount, valueSize), data);
    _valueCount = valueCount;
    _valueSize = valueSize;
    return true;
}

bool BufferObject::uploadChecked(const void* data, int valueCount, GLenum usage, std::size_t valueSize)
{
    const GLsizeiptr bytes = byteCount(valueCount, valueSize);
    if (entryPoints.namedBufferData && _boBountTarget == 0)
    {
        entryPoints.namedBufferData(_bo, bytes, data, usage);
    }
    else
    {
        VRK_ASSERT_RETURN(0u != this->_boBountTarget, false, "Buffer Object is not bound on upload");
        glBufferData(_boBountTarget, bytes, data, usage);
    }
    _valueCount = valueCount;
    _valueSize = valueSize;
    return true;
}

bool BufferObject::subUpload(const float* data, int valueCount, int offset)
{
    VRK_ASSERT_RETURN(0u != this->_bo, false, "Buffer Object is NULL on upload");
    VRK_ASSERT_RETURN(0u != this->_boBountTarget, false, "Buffer Object is not bound on upload");
    VRK_ASSERT_RETURN(0 != valueCount, false, "Buffer Object needs more and 0 values during upload");
    // In 64 bits: the sum may not wrap into range.
    VRK_ASSERT_RETURN(static_cast<qint64>(offset) + valueCount <= this->_valueCount, false,
                      "Buffer Object is not large enough to hold data");
    VRK_ASSERT_RETURN(nullptr != data, false, "Buffer Object needs data on sub upload");
    // Four bytes a value, whatever _valueSize says; and always through the binding.
    glBufferSubData(_boBountTarget, static_cast<GLintptr>(offset) * 4, static_cast<GLsizeiptr>(valueCount) * 4, data);
    return true;
}

bool BufferObject::subUpload(const QList<float>& values, int offset)
{
    return subUpload(values.constData(), static_cast<int>(values.size()), offset);
}

void BufferObject::useStorageBuffer(int size, int flags)
{
    if (!entryPoints.namedBufferStorage && !entryPoints.bufferStorage)
        return;
    if (!entryPoints.namedBufferSubData)
        return;
    VRK_ASSERT(0u != this->_bo, "Buffer Object is NULL during StorageBuffer setup");
    if (entryPoints.bufferStorage)
    {
        // This target whatever _target is; its binding point is left empty.
        glBindBuffer(GL_UNIFORM_BUFFER, _bo);
        entryPoints.bufferStorage(GL_UNIFORM_BUFFER, size, nullptr, static_cast<GLbitfield>(flags));
        glBindBuffer(GL_UNIFORM_BUFFER, 0);
    }
    else
    {
        entryPoints.namedBufferStorage(_bo, size, nullptr, static_cast<GLbitfield>(flags));
    }
    _immutableStorage = true;
}

void* BufferObject::map(GLenum access)
{
    VRK_ASSERT_RETURN(0u != this->_bo, nullptr, "Buffer Object is NULL on map");
    VRK_ASSERT_RETURN(0u != this->_boBountTarget, nullptr, "Buffer Object is not bound on map");
    VRK_ASSERT_RETURN(0u != this->_target, nullptr, "Buffer Object's Target is not set when map() is called");
    return glMapBuffer(_target, access);
}

void BufferObject::unmap()
{
    VRK_ASSERT(0u != this->_bo, "Buffer Object is NULL on map"); // the words of map(), on purpose
    VRK_ASSERT(0u != this->_boBountTarget, "Buffer Object is not bound on unmap");
    VRK_ASSERT(0u != this->_target, "Buffer Object's target is not set when unmap() is called");
    glUnmapBuffer(_target);
}

bool BufferObject::isBindNeededForUpload() const
{
    if (_immutableStorage)
        return false;
    return !entryPoints.namedBufferData || _useBindBufferRange || _valueCount == 0;
}

GLuint BufferObject::getBO() const
{
    return _bo;
}

GLenum BufferObject::target()
{
    return _target;
}

int BufferObject::valueCount() const
{
    return _valueCount;
}

std::size_t BufferObject::valueSize() const
{
    return _valueSize;
}

std::size_t BufferObject::memoryEstimateCPU() const
{
    return sizeof(BufferObject);
}

std::size_t BufferObject::memoryEstimateGPU() const
{
    return _bo == 0 ? 0 : static_cast<std::size_t>(_valueCount) * _valueSize;
}

int BufferObject::NumAlive()
{
    return numAlive;
}

int BufferObject::NumAliveManaged()
{
    return numAliveManaged;
}

} // namespace Harrow::Vrk
