// SPDX-License-Identifier: MIT
#include "InstanceDataCollection.h"

#include "BufferObject.h"
#include "Diagnostics.h"
#include "GLFunctions.h"
#include "InstanceData.h"
#include "InstanceDataPlan.h"
#include "InstanceDataRegistry.h"
#include "OpenGLDeviceContext.h"
#include "ShaderProgram.h"
#include "Texture.h"
#include "TextureManager.h"
#include "UniformBufferObject.h"

#include <QSet>

#include <algorithm>
#include <cstring>
#include <limits>
#include <vector>

namespace Harrow::Vrk
{
namespace
{

constexpr size_t kOwnBytes = 144;
constexpr size_t kBytesPerToken = 4;
constexpr auto kMaxBytes = static_cast<size_t>(std::numeric_limits<qsizetype>::max());
/// How far the tokens of some records are expected to count. As managers issue them densely, most are below.
constexpr size_t kDenseTokensPerRecord = 32;

/// Which tokens a list has. A bit for each where they are dense, a hash for the others.
class KnownTokens
{
public:
    explicit KnownTokens(size_t denseTokens) : _dense(denseTokens) {}

    /// Whether it is new.
    bool insert(const TextureToken& token)
    {
        if (token.token < _dense.size())
        {
            const bool isNew = !_dense[token.token];
            _dense[token.token] = true;
            return isNew;
        }
        const qsizetype before = _others.size();
        _others.insert(token);
        return _others.size() > before;
    }

private:
    std::vector<bool> _dense;
    QSet<TextureToken> _others;
};

} // namespace

InstanceDataCollection::InstanceDataCollection(const QString& planName)
    : _plan(InstanceDataRegistry::Instance().getPlan(planName)), _usage(GL_STATIC_DRAW)
{
}

InstanceDataCollection::InstanceDataCollection(const QString& planName, const QList<InstanceData>& instanceDataDataList)
    : InstanceDataCollection(planName)
{
    update(instanceDataDataList);
}

InstanceDataCollection::InstanceDataCollection(InstanceDataPlan* plan, const char* bytes, size_t numBytes)
    : _plan(plan), _usage(GL_STATIC_DRAW)
{
    update(bytes, numBytes);
}

InstanceDataCollection::InstanceDataCollection(InstanceDataPlan* plan, size_t numItems)
    : _plan(plan), _usage(GL_STATIC_DRAW)
{
    VRK_ASSERT_RETURN(_plan != NULL, , "collection of %zu items", numItems);
    VRK_ASSERT(numItems <= _plan->arraySize(), "List is too big for plan '%s'", qPrintable(_plan->name()));
    VRK_ASSERT_RETURN(numItems <= kMaxBytes / std::max<size_t>(recordSize(), 1), ,
                      "Plan '%s' cannot have %zu items of %zu bytes", qPrintable(_plan->name()), numItems,
                      recordSize());
    const size_t bytes = numItems * _plan->totalDataSize();
    _data.fill('\0', static_cast<qsizetype>(bytes));
}

InstanceDataCollection::~InstanceDataCollection() = default;

// ---- binding -------------------------------------------------------------------------------------------------------

bool InstanceDataCollection::bind()
{
    return bind(&TextureManager::Instance());
}

bool InstanceDataCollection::bind(TextureManager* textureManager)
{
    return bind(ShaderProgram::currentShaderProgram(), textureManager);
}

bool InstanceDataCollection::bind(ShaderProgram* program, TextureManager* textureManager)
{
    VRK_ASSERT_RETURN(_plan != NULL, false, "collection has no plan on bind");
    return _plan->bind(program, textureManager, this);
}

bool InstanceDataCollection::unbind()
{
    return unbind(&TextureManager::Instance());
}

bool InstanceDataCollection::unbind(TextureManager* textureManager)
{
    return unbind(ShaderProgram::currentShaderProgram(), textureManager);
}

bool InstanceDataCollection::unbind(ShaderProgram* program, TextureManager* textureManager)
{
    VRK_ASSERT_RETURN(_plan != NULL, false, "collection has no plan on unbind");
    return _plan->unbind(program, textureManager, this);
}

void InstanceDataCollection::bindTextureTokens(TextureManager* textureManager)
{
    if (!textureManager)
        return;
    VRK_ASSERT_RETURN(_plan != NULL, , "collection has no plan on bindTextureTokens");
    if (_tokens.isEmpty())
        collectTokens();
    textureManager->bind(_tokens);
}

void InstanceDataCollection::collectTokens()
{
    if (_plan->textureTokenOffsets().isEmpty())
        return;
    const auto step = static_cast<qsizetype>(recordSize());
    // Beside the list, which keeps the order.
    KnownTokens known(kDenseTokensPerRecord * (static_cast<size_t>(size()) + 1));
    for (const int offset : _plan->textureTokenOffsets())
    {
        for (qsizetype position = offset; position < _data.size(); position += step)
        {
            TextureToken token;
            // The last record may be a part of one.
            const bool isWhole = isHeld(position, sizeof token.token);
            VRK_ASSERT(isWhole, "plan '%s': %d bytes end within a token at %d", qPrintable(_plan->name()),
                       static_cast<int>(_data.size()), static_cast<int>(position));
            if (!isWhole)
                break;
            std::memcpy(&token.token, _data.constData() + position, sizeof token.token);
            if (known.insert(token))
                _tokens.append(token);
        }
    }
}

// ---- records -------------------------------------------------------------------------------------------------------

void InstanceDataCollection::update(const QList<InstanceData>& instanceDataDataList)
{
    VRK_ASSERT_RETURN(_plan != NULL, , "collection of %d items", static_cast<int>(instanceDataDataList.size()));
    VRK_ASSERT(size_t(instanceDataDataList.size()) <= _plan->arraySize(), "List %d too big, max %d plan '%s'",
               static_cast<int>(instanceDataDataList.size()), static_cast<int>(_plan->arraySize()),
               qPrintable(_plan->name()));
    _tokens.clear();
    _data.resize(0);
    _data.reserve(instanceDataDataList.size() * static_cast<qsizetype>(recordSize()));
    for (const InstanceData& record : instanceDataDataList)
        _data.append(record.dataArray());
    _dirty = true;
}

void InstanceDataCollection::update(const char* bytes, size_t numBytes)
{
    VRK_ASSERT_RETURN(_plan != NULL, , "collection of %zu bytes", numBytes);
    VRK_ASSERT_RETURN(_plan->totalDataSize() > 0, , "Plan '%s' is empty", qPrintable(_plan->name()));
    VRK_ASSERT((numBytes / _plan->totalDataSize()) <= _plan->arraySize(), "List is too big for plan '%s'",
               qPrintable(_plan->name()));
    VRK_ASSERT_RETURN((nullptr != bytes || numBytes == 0) && numBytes <= kMaxBytes, , "Plan '%s' cannot take %zu bytes",
                      qPrintable(_plan->name()), numBytes);
    _tokens.clear();
    _data = QByteArray(bytes, static_cast<qsizetype>(numBytes)); // they may be its own
    _dirty = true;
}

/// Whether these bytes are there: the last gate in front of memory. Beyond a member, and even a record, is not outside.
bool InstanceDataCollection::isHeld(qsizetype position, size_t size) const
{
    return position >= 0 && position <= _data.size() && size <= static_cast<size_t>(_data.size() - position);
}

/// Where a member of a record begins.
qsizetype InstanceDataCollection::position(int index, const QString& name) const
{
    return index * static_cast<qsizetype>(_plan->totalDataSize()) + _plan->offset(name);
}

/// Whether the record has these bytes, and says so when it hasn't.
bool InstanceDataCollection::isHeld(qsizetype position, size_t size, int index, const QString& name) const
{
    VRK_ASSERT_RETURN(isHeld(position, size), false, "plan '%s' data '%s': item %d of %d has no such bytes",
                      qPrintable(_plan->name()), qPrintable(name), index, this->size());
    return true;
}

void InstanceDataCollection::set(int index, const QString& name, const void* data, size_t size)
{
    VRK_ASSERT_RETURN(_plan != NULL, , "data '%s'", qPrintable(name));
    const qsizetype place = position(index, name);
    if (!isHeld(place, size, index, name))
        return;
    VRK_ASSERT_RETURN(nullptr != data || size == 0, , "plan '%s' data '%s' is NULL", qPrintable(_plan->name()),
                      qPrintable(name));
    if (size > 0)
        std::memmove(_data.data() + place, data, size); // it may be a part of the records
    _dirty = true;
}

void InstanceDataCollection::get(int index, const QString& name, void* out) const
{
    VRK_ASSERT_RETURN(_plan != NULL, , "data '%s'", qPrintable(name));
    const qsizetype place = position(index, name);
    const size_t bytes = _plan->dataSize(name);
    if (!isHeld(place, bytes, index, name))
        return;
    VRK_ASSERT_RETURN(nullptr != out, , "plan '%s' has no place for data '%s'", qPrintable(_plan->name()),
                      qPrintable(name));
    std::memcpy(out, _data.constData() + place, bytes);
}

void InstanceDataCollection::copyInstanceMember(int index, const QString& from, const QString& to)
{
    VRK_ASSERT_RETURN(_plan != NULL, , "data '%s'", qPrintable(from));
    const qsizetype source = position(index, from);
    const qsizetype target = position(index, to);
    const size_t bytes = _plan->dataSize(from);
    if (!isHeld(source, bytes, index, from) || !isHeld(target, bytes, index, to))
        return;
    char* const data = _data.data();
    std::memmove(data + target, data + source, bytes);
    _dirty = true;
}

void InstanceDataCollection::clearDirtyStatus()
{
    _dirty = false;
}

// ---- the buffer ----------------------------------------------------------------------------------------------------

void InstanceDataCollection::setBOUsageFlags(int usage)
{
    _usage = usage;
}

void InstanceDataCollection::useStorageBuffer(int flags)
{
    _storageFlags = flags;
}

QSharedPointer<UniformBufferObject> InstanceDataCollection::getUniformBufferObject()
{
    return getUniformBufferObject(GL_UNIFORM_BUFFER);
}

QSharedPointer<UniformBufferObject> InstanceDataCollection::getUniformBufferObject(unsigned int target)
{
    if (_uniformBufferObject)
        return _uniformBufferObject;
    const QSharedPointer<OpenGLDeviceContext> context = OpenGLDeviceContext::current();
    if (!context)
        return {};
    VRK_ASSERT_RETURN(_plan != NULL, {}, "collection has no plan on getUniformBufferObject");
    const QSharedPointer<BufferObject> buffer = context->newBuffer();
    VRK_ASSERT_RETURN(!buffer.isNull(), {}, "Buffer Object is NULL on getUniformBufferObject");
    buffer->setTarget(target);
    _uniformBufferObject =
        context->newUniformBuffer(QStringLiteral("u_") + _plan->name() + QStringLiteral("Uniform"), buffer);
    if (_storageFlags != 0)
        buffer->useStorageBuffer(static_cast<int>(_data.size()), _storageFlags);
    _dirty = true;
    return _uniformBufferObject;
}

// ---- queries -------------------------------------------------------------------------------------------------------

/// 0 without a plan.
size_t InstanceDataCollection::recordSize() const
{
    return _plan ? _plan->totalDataSize() : 0;
}

int InstanceDataCollection::size() const
{
    const size_t bytes = recordSize();
    return bytes > 0 ? static_cast<int>(static_cast<size_t>(_data.size()) / bytes) : 0;
}

InstanceDataPlan* InstanceDataCollection::plan() const
{
    return _plan;
}

const QByteArray& InstanceDataCollection::dataArray() const
{
    return _data;
}

size_t InstanceDataCollection::memoryEstimateCPU() const
{
    const size_t own =
        static_cast<size_t>(_data.size()) + kOwnBytes + kBytesPerToken * static_cast<size_t>(_tokens.size());
    return own + (_uniformBufferObject ? _uniformBufferObject->memoryEstimateCPU() : 0);
}

size_t InstanceDataCollection::memoryEstimateGPU() const
{
    return _uniformBufferObject ? _uniformBufferObject->memoryEstimateGPU() : 0;
}

} // namespace Harrow::Vrk
