// SPDX-License-Identifier: MIT
#include "InstanceData.h"

#include "Diagnostics.h"
#include "InstanceDataPlan.h"
#include "InstanceDataRegistry.h"
#include "TextureFileInfo.h"
#include "TextureManager.h"

#include <cstring>

namespace Harrow::Vrk
{
namespace
{

constexpr size_t kOwnBytes = 56;
constexpr size_t kBytesPerToken = 4;

} // namespace

InstanceData::InstanceData() = default;

InstanceData::InstanceData(const QString& planName) : _plan(InstanceDataRegistry::Instance().getPlan(planName))
{
    VRK_ASSERT_RETURN(_plan != NULL, , "plan '%s'", qPrintable(planName));
    clear();
}

// ---- the gates -----------------------------------------------------------------------------------------------------

/// Whether these bytes lie in the record, and says so when they don't.
bool InstanceData::isWithin(int offset, size_t size) const
{
    const auto start = static_cast<size_t>(offset);
    const auto bytes = static_cast<size_t>(_data.size());
    VRK_ASSERT_RETURN(offset >= 0 && start <= bytes && size <= bytes - start, false, "plan '%s' has no %zu bytes at %d",
                      qPrintable(name()), size, offset);
    return true;
}

/// The last gate in front of memory, for every form. `data` may be a part of the record itself.
void InstanceData::write(int offset, const void* data, size_t size)
{
    if (!isWithin(offset, size) || size == 0)
        return;
    VRK_ASSERT_RETURN(nullptr != data, , "plan '%s' data at %d is NULL", qPrintable(name()), offset);
    std::memmove(_data.data() + offset, data, size);
}

void InstanceData::reportNoPlan(const QString& dataName) const
{
    VRK_LOG_CRITICAL("InstanceData::set() : There is no associated instanceData plan. set() should not be called on "
                     "such InstanceData");
    VRK_ASSERT(_plan != NULL, "data '%s'", qPrintable(dataName));
}

// ---- values --------------------------------------------------------------------------------------------------------

void InstanceData::set(const QString& dataName, const void* data, size_t dataSize)
{
    if (!_plan)
        return reportNoPlan(dataName);
    const InstanceDataPlan::DataType type = _plan->dataType(dataName);
    const int offset = _plan->offset(dataName);
    // Tokens, unknown names among them, and what does not fit: few look-ups for all others.
    if (InstanceDataPlan::eTexture == type || offset >= _data.size() || dataSize > _plan->dataSize(type))
        reportMisuse(dataName, offset, dataSize);
    write(offset, data, dataSize);
}

/// Nothing of this stops a write.
void InstanceData::reportMisuse(const QString& dataName, int offset, size_t dataSize) const
{
    VRK_ASSERT(_plan->contains(dataName), "plan '%s' data '%s'", qPrintable(name()), qPrintable(dataName));
    VRK_ASSERT(offset >= 0 && offset < _data.size(), "plan '%s' data '%s'", qPrintable(name()), qPrintable(dataName));
    VRK_ASSERT(dataSize <= _plan->dataSize(dataName), "plan '%s' data '%s'", qPrintable(name()), qPrintable(dataName));
    VRK_ASSERT(InstanceDataPlan::eTexture != _plan->dataType(dataName), "InstanceData::set( '%s') call on data type %d",
               qPrintable(dataName), static_cast<int>(_plan->dataType(dataName)));
}

void InstanceData::set(int offset, const void* data, size_t dataSize)
{
    if (!_plan)
        return reportNoPlan(QString::number(offset));
    write(offset, data, dataSize);
}

void InstanceData::get(const QString& dataName, void* out, size_t outSize) const
{
    VRK_ASSERT_RETURN(_plan != NULL, , "data '%s'", qPrintable(dataName));
    get(_plan->offset(dataName), _plan->dataSize(dataName), out, outSize);
}

void InstanceData::get(int offset, size_t dataSize, void* out, size_t /*outSize*/) const
{
    if (!isWithin(offset, dataSize) || dataSize == 0)
        return;
    VRK_ASSERT_RETURN(nullptr != out, , "plan '%s' has no place for data at %d", qPrintable(name()), offset);
    std::memcpy(out, _data.constData() + offset, dataSize);
}

// ---- tokens --------------------------------------------------------------------------------------------------------

void InstanceData::setTexture(const QString& dataName, const QString& imagePath)
{
    VRK_ASSERT_RETURN(_plan != NULL, , "data '%s'", qPrintable(dataName));
    setToken(dataName, TextureManager::Instance().tokenForImage(imagePath, TextureFileInfo()));
}

void InstanceData::setTexture(const QString& dataName, Texture* texture)
{
    VRK_ASSERT_RETURN(_plan != NULL, , "data '%s'", qPrintable(dataName));
    setTexture(dataName, texture, &TextureManager::Instance());
}

void InstanceData::setTexture(const QString& dataName, Texture* texture, TextureManager* textureManager)
{
    VRK_ASSERT_RETURN(_plan != NULL, , "data '%s'", qPrintable(dataName));
    VRK_ASSERT_RETURN(nullptr != textureManager, , "TextureManager is NULL for data '%s'", qPrintable(dataName));
    setToken(dataName, textureManager->tokenForTexture(texture));
}

void InstanceData::setToken(const QString& dataName, TextureToken token)
{
    VRK_ASSERT(InstanceDataPlan::eTexture == _plan->dataType(dataName),
               "InstanceData::setTexture( '%s') call on data type %d", qPrintable(dataName),
               static_cast<int>(_plan->dataType(dataName)));
    const size_t bytes = _plan->dataSize(dataName);
    if (bytes <= sizeof token.token) // a token has no more to give
        insertToken(_plan->offset(dataName), token, bytes);
}

void InstanceData::insertToken(int offset, TextureToken token, size_t size)
{
    if (!isWithin(offset, size))
        return;
    TextureToken::insert(_tokens, token);
    write(offset, &token.token, size);
}

void InstanceData::setTexture(int offset, Texture* texture)
{
    setTexture(offset, texture, &TextureManager::Instance());
}

void InstanceData::setTexture(int offset, Texture* texture, TextureManager* textureManager)
{
    VRK_ASSERT_RETURN(nullptr != textureManager, , "TextureManager is NULL for data at %d", offset);
    setTextureToken(offset, textureManager->tokenForTexture(texture));
}

void InstanceData::setTextureToken(int offset, TextureToken token)
{
    insertToken(offset, token, sizeof token.token);
}

QList<TextureToken>& InstanceData::getTextureTokens()
{
    return _tokens;
}

// ---- the record ----------------------------------------------------------------------------------------------------

void InstanceData::clear()
{
    _data.fill('\0', _plan ? static_cast<qsizetype>(_plan->totalDataSize()) : 0);
    clearTextures();
}

void InstanceData::clearTextures()
{
    _tokens.clear();
}

const QByteArray& InstanceData::dataArray() const
{
    return _data;
}

QString InstanceData::name() const
{
    return _plan ? _plan->name() : QString();
}

size_t InstanceData::memoryEstimateCPU() const
{
    return static_cast<size_t>(_data.size()) + kOwnBytes + kBytesPerToken * static_cast<size_t>(_tokens.size());
}

} // namespace Harrow::Vrk
