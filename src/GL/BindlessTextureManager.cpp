// SPDX-License-Identifier: MIT
#include "BindlessTextureManager.h"

#include "BindlessHandles.h"
#include "Diagnostics.h"
#include "GLFunctions.h"
#include "GLSLMacroProcessor.h"
#include "SamplerSlots.h"
#include "Texture.h"
#include "TextureIO.h"
#include "TextureStreamer.h"

namespace Harrow::Vrk
{
namespace
{

constexpr SamplerSlots::MapFormat kMapFormat = {GL_RGBA32UI, GL_RGBA_INTEGER, GL_UNSIGNED_INT};

constexpr quint32 kBoundWord = 0xFFFFFFFFu;

constexpr std::array<quint32, 4> kFreshRecord = {0xFFFFFFFFu, 0, 0, 0};

TextureToken boundToken(const TextureToken& issued)
{
    return TextureToken((quint64(kBoundWord) << 32) | issued.token);
}

/// The ordinary token that a bound one was made from.
TextureToken issuedToken(const TextureToken& bound)
{
    return TextureToken(bound.token & 0xFFFFFFFFu);
}

} // namespace

bool BindlessTextureManager::isSupported()
{
    return BindlessHandles::isSupported();
}

BindlessTextureManager::BindlessTextureManager()
    : _handles(std::make_unique<BindlessHandles>()), _slots(std::make_unique<SamplerSlots>(kMapFormat))
{
    BindlessTextureManager::tokenForColor(Qt::white);
}

BindlessTextureManager::~BindlessTextureManager()
{
    _handles->allTexturesEnd();
}

bool BindlessTextureManager::isBindlessToken(const TextureToken& token) const
{
    return (token.token >> 32) < kBoundWord;
}

QString BindlessTextureManager::getShaderFile()
{
    return QStringLiteral("BindlessTextureManager.glslc");
}

void BindlessTextureManager::setup(GLSLMacroProcessor* processor)
{
    TextureManager::setup(processor);
    if (!processor)
        return;
    processor->addDefine(QStringLiteral("TEXTURE_MANAGER_BINDLESS"), QStringLiteral("1"));
    processor->addDefine(QStringLiteral("TEXTURE_MANAGER_SLOT_COUNT"), QString::number(getMaxSlots()));
    if (_handles->isNv())
        processor->addDefine(QStringLiteral("TEXTURE_MANAGER_BINDLESS_NV"), QStringLiteral("1"));
    else if (_handles->isArb())
        processor->addDefine(QStringLiteral("TEXTURE_MANAGER_BINDLESS_ARB"), QStringLiteral("1"));
    _slots->setMapDirty();
}

void BindlessTextureManager::clear()
{
    _tokenSlotRecords.clear();
    _slots->clear();
    tokenForColor(Qt::white);
    _handles->allTexturesEnd();
    TextureManager::clear();
}

// ---- tokens --------------------------------------------------------------------------------------------------------

Texture* BindlessTextureManager::textureForToken(const TextureToken& token)
{
    return knownTexture(token);
}

TextureToken BindlessTextureManager::tokenForTexture(Texture* texture)
{
    if (const auto known = knownToken(texture))
        return *known;
    const TextureToken token = tokenToIssue(*texture);
    if (token == INVALID_TOKEN)
        return token;
    if (dynamic_cast<TextureStreamer*>(texture))
        VRK_LOG_DEBUG("Detected TextureStreamer");
    setTextureOfToken(token, texture);
    textureTokenIssued(token);
    return token;
}

TextureToken BindlessTextureManager::tokenToIssue(const Texture& texture)
{
    return texture.isReadOnly() ? handleToken(texture) : boundToken(reserveToken());
}

/// `INVALID_TOKEN`, after a report, where the driver gives no handle, or one that would pass for another kind of token.
TextureToken BindlessTextureManager::handleToken(const Texture& texture) const
{
    const TextureToken handle(_handles->handleOf(texture.textureID()));
    VRK_ASSERT_RETURN(0u != handle.token && isBindlessToken(handle), INVALID_TOKEN,
                      "Texture %u has the handle %llu, which is no bindless token", texture.textureID(), handle.token);
    return handle;
}

/// The handle of a texture that was made here, which is null where that has failed. One that gets no handle is deleted.
TextureToken BindlessTextureManager::adoptReadOnly(Texture* texture)
{
    if (!texture)
        return INVALID_TOKEN;
    texture->setReadOnly();
    const TextureToken token = handleToken(*texture);
    if (token == INVALID_TOKEN)
        delete texture;
    return token;
}

TextureToken BindlessTextureManager::tokenForColor(const QColor& color)
{
    if (const auto known = knownToken(color))
        return *known;
    Texture* const texture = MakeColorTexture(color);
    const TextureToken token = adoptReadOnly(texture);
    if (token == INVALID_TOKEN)
        return token;
    setColorOfToken(token, color);
    // Adopting destroys it only where there is no token. NOLINTNEXTLINE(clang-analyzer-cplusplus.NewDelete)
    setTextureOfToken(token, texture);
    // The constructor, which makes white, means its own. NOLINTNEXTLINE(clang-analyzer-optin.cplusplus.VirtualCall)
    textureTokenIssued(token);
    return token;
}

TextureToken BindlessTextureManager::tokenForImage(const QString& path, const TextureFileInfo& info)
{
    if (const auto known = knownToken(path))
        return *known;
    const QString resolved = resolveTexturePath(path);
    if (const auto known = knownToken(resolved))
        return *known;
    // Not put off until it is wanted: a handle needs a finished texture.
    Texture* const texture = LoadTextureFromFile(resolved, info);
    const TextureToken token = adoptReadOnly(texture);
    if (token == INVALID_TOKEN)
        return tokenForColor(Qt::white);
    setFileOfToken(token, resolved, info);
    // Adopting destroys it only where there is no token. NOLINTNEXTLINE(clang-analyzer-cplusplus.NewDelete)
    setTextureOfToken(token, texture);
    textureTokenIssued(token);
    return token;
}

void BindlessTextureManager::deleteTexture(const TextureToken& token)
{
    if (token == INVALID_TOKEN)
        return;
    const TextureToken revoked = token; // may be an entry of a table
    textureTokenRevoked(revoked);
    _handles->textureEnds(revoked.token);
    forgetTextureOfToken(revoked);
    if (!isBindlessToken(revoked))
        deleteToken(issuedToken(revoked));
}

void BindlessTextureManager::textureTokenIssued(const TextureToken& token)
{
    if (isBindlessToken(token))
        return;
    _slots->discardMap(); // its width is the number of ordinary tokens
    growSlotRecords();
}

void BindlessTextureManager::growSlotRecords()
{
    const qsizetype missing = static_cast<qsizetype>(maxToken().token) - _tokenSlotRecords.size();
    if (missing > 0)
        _tokenSlotRecords.insert(_tokenSlotRecords.size(), missing, kFreshRecord);
}

// ---- textures of a draw --------------------------------------------------------------------------------------------

void BindlessTextureManager::bind(const QList<TextureToken>& tokens)
{
    const TextureUnits* units = nullptr;
    for (const TextureToken& token : tokens)
    {
        Texture* const texture = textureForToken(token);
        if (!texture)
            continue;
        if (isBindlessToken(token))
            _handles->makeResident(token.token, texture);
        else
            setTokenSlot(texture, _slots->bind(*texture, units));
    }
}

void BindlessTextureManager::setTokenSlot(const Texture* texture, int slot)
{
    const auto own = textureTokenMap().constFind(const_cast<Texture*>(texture));
    if (own == textureTokenMap().constEnd())
        return;
    const quint64 index = issuedToken(*own).token;
    VRK_ASSERT_RETURN(index < static_cast<quint64>(this->_tokenSlotRecords.size()), ,
                      "Token %llu has no entry in the slot map", own->token);
    const SlotRecord record = {static_cast<quint32>(slot), 0, 0, 0};
    SlotRecord& kept = _tokenSlotRecords[static_cast<qsizetype>(index)];
    if (kept == record)
        return;
    kept = record;
    _slots->setMapDirty();
}

void BindlessTextureManager::unbind(const QList<TextureToken>& tokens)
{
    const TextureUnits* units = nullptr;
    for (const TextureToken& token : tokens)
    {
        Texture* const texture = textureForToken(token);
        if (!texture)
            continue;
        if (isBindlessToken(token))
            _handles->makeNonResident(token.token);
        else
            _slots->unbind(token, *texture, units);
    }
}

// ---- the program ---------------------------------------------------------------------------------------------------

void BindlessTextureManager::bind(ShaderProgram* program)
{
    growSlotRecords(); // by tokens that were reserved without being issued
    _slots->bind(program, getMaxSlots(), {static_cast<int>(maxToken().token), _tokenSlotRecords.constData()});
}

void BindlessTextureManager::unbind(ShaderProgram* /*program*/)
{
    _slots->unbind();
}

} // namespace Harrow::Vrk
