// SPDX-License-Identifier: MIT
#include "Array2DTextureManager.h"

#include "Array2DSlots.h"
#include "BindlessTextureFunctions.h"
#include "Diagnostics.h"
#include "GLFunctions.h"
#include "GLSLMacroProcessor.h"
#include "GLUtilities.h"
#include "Texture.h"
#include "TextureStreamer.h"

#include <QMessageLogger>

#include <algorithm>
#include <utility>

namespace Harrow::Vrk
{
namespace
{

constexpr qsizetype kReservedSlots = 32;

/// Token numbers from here on come of a caller who made them up: a table for them would fill the memory.
constexpr quint64 kMaxTokens = quint64(1) << 24;

} // namespace

Array2DTextureManager::Array2DTextureManager()
    : _pendingTokens(std::make_unique<OrderedTokens>()),
      _bindless(std::make_unique<BindlessTextureFunctions>()),
      _tokensOfSlots(std::make_unique<TokensOfSlots>())
{
    TextureManager::tokenForColor(Qt::white);
    readLimits();
    resetTables();
    if (isBindlessSupported())
        _bindless->resolve("ARB");
}

Array2DTextureManager::~Array2DTextureManager()
{
    deleteSlots();
}

void Array2DTextureManager::readLimits()
{
    GLint maxSize = 0;
    glGetIntegerv(GL_MAX_TEXTURE_SIZE, &maxSize);
    _maxTextureSize = std::max(maxSize, kLeastMaxTextureSize);
    GLint max3DSize = 0;
    glGetIntegerv(GL_MAX_3D_TEXTURE_SIZE, &max3DSize);
    _maxSlotWidth = std::min({_maxSlotWidth, maxSize, max3DSize / 2});
    _maxSlotHeight = std::min({_maxSlotHeight, maxSize, max3DSize / 2});
    _anisotropySupported =
        hasGLExtension("GL_ARB_texture_filter_anisotropic") || hasGLExtension("GL_EXT_texture_filter_anisotropic");
    if (_anisotropySupported)
        glGetFloatv(GL_MAX_TEXTURE_MAX_ANISOTROPY, &_maxAnisotropy);
}

/// One entry each, for the token of white.
void Array2DTextureManager::resetTables()
{
    _slotUnits.reserve(kReservedSlots);
    _slotHandles.reserve(kReservedSlots);
    _textureTokenToSlotLayerData = {SlotLayerData()};
    _tokenLayerCounts = {1};
}

void Array2DTextureManager::clear()
{
    _pendingTokens->clear();
    _tokensOfSlots->clear();
    _retiredSlots += std::exchange(_slots, {});
    _slotUnits.clear();
    _slotHandles.clear();
    _textureTokenToSlotLayerData.clear();
    _tokenLayerCounts.clear();
    tokenForColor(Qt::white);
    resetTables();
}

bool Array2DTextureManager::isBindlessSupported()
{
    return hasGLExtension("GL_ARB_bindless_texture");
}

bool Array2DTextureManager::supportsUDIMs() const
{
    return true;
}

void Array2DTextureManager::setBindMode(BindMode mode)
{
    _bindMode = mode;
}

void Array2DTextureManager::setUseSlotMapTexture(bool use)
{
    _useSlotMapTexture = use;
}

void Array2DTextureManager::setUseSlotMapUniforms(bool use)
{
    _useSlotMapUniforms = use;
}

void Array2DTextureManager::setUseExplicitlyArrayAccessInGLSL(bool use)
{
    _useExplicitlyArrayAccessInGLSL = use;
}

void Array2DTextureManager::setSlotReallocationMethod(SlotReallocationMethod method)
{
    const auto value = static_cast<unsigned>(method);
    if (value < 2u)
        _slotReallocationMethod = method;
    else
        QMessageLogger().warning("Unsupported slot reallocation method request %d ignored!", static_cast<int>(value));
}

// ---- GLSL ----------------------------------------------------------------------------------------------------------

QString Array2DTextureManager::getShaderFile()
{
    return _bindMode == BindBindless ? QStringLiteral("Array2DTextureManagerBindless.glslc")
                                     : QStringLiteral("Array2DTextureManager.glslc");
}

void Array2DTextureManager::setup(GLSLMacroProcessor* processor)
{
    TextureManager::setup(processor);
    if (!processor)
        return;
    const QString on = QStringLiteral("1");
    processor->addDefine(QStringLiteral("TEXTURE_MANAGER_ARRAY2D"), on);
    processor->addDefine(QStringLiteral("TEXTURE_MANAGER_SLOT_COUNT"), QString::number(getMaxSlots()));
    processor->addDefine(QStringLiteral("TEXTURE_MANAGER_ARRAY2D_UNIFORMS_SIZE"), QString::number(_maxSlotMapUniforms));
    if (_useSlotMapUniforms)
        processor->addDefine(QStringLiteral("TEXTURE_MANAGER_ARRAY2D_SLOT_MAP_USE_UNIFORMS"), on);
    if (_useSlotMapTexture)
        processor->addDefine(QStringLiteral("TEXTURE_MANAGER_ARRAY2D_SLOT_MAP_USE_TEXTURE"), on);
    if (_useExplicitlyArrayAccessInGLSL)
        processor->addDefine(QStringLiteral("TEXTURE_ARRAY_ARRAY2D_EXPLICIT_ARRAY_ACCESS"), on);
    if (openGlVersionSupported(4, 0))
    {
        processor->addDefine(QStringLiteral("TEXTURE_MANAGER_ARRAY2D_SUPPORTS_TEXTURE_QUERY_LOD"), on);
        processor->addMacro(QStringLiteral("TEXTURE_MANAGER_ARRAY2D_GLSL_VERSION"), QStringLiteral("#version 400"));
    }
    processor->addDefine(QStringLiteral("TEXTURE_MANAGER_ARRAY2D_NUM_UVEC4S_PER_TOKEN"),
                         QString::number(kVectorsPerToken));
}

// ---- the table of tokens -------------------------------------------------------------------------------------------

bool Array2DTextureManager::hasRecord(const TextureToken& token) const
{
    return token.token < static_cast<quint64>(_textureTokenToSlotLayerData.size());
}

void Array2DTextureManager::setRecord(qsizetype token, const SlotLayerData& record)
{
    SlotLayerData& present = _textureTokenToSlotLayerData[token];
    _tokensOfSlots->move(token, record.slot);
    present = record;
}

/// Gives the layers of a placed token back to its slot.
void Array2DTextureManager::releaseLayers(qsizetype token)
{
    const SlotLayerData& record = _textureTokenToSlotLayerData[token];
    if (hasSlot(record.slot))
        _slots[record.slot]->release(record.layer, _tokenLayerCounts[token]);
}

void Array2DTextureManager::textureTokenIssued(const TextureToken& token)
{
    VRK_ASSERT_RETURN(token.token < kMaxTokens, , "Token %llu is too large for a table", token.token);
    _pendingTokens->insert(token);
    if (hasRecord(token))
        return;
    while (!hasRecord(token))
    {
        _textureTokenToSlotLayerData.append(SlotLayerData());
        _tokenLayerCounts.append(1);
    }
    _slotMapDirty = true;
}

void Array2DTextureManager::textureTokenRevoked(const TextureToken& token)
{
    textureTokenRevoked(token, false);
}

void Array2DTextureManager::textureTokenRevoked(const TextureToken& token, bool skipLayerRelease)
{
    if (!hasRecord(token))
        return;
    const auto index = static_cast<qsizetype>(token.token);
    const SlotLayerData record = _textureTokenToSlotLayerData[index];
    _patchTokenToSourceToken.remove(token);
    const bool isUDIM = record.udimWidth != 0;
    if (isUDIM)
        setRecord(index, SlotLayerData()); // before its patches: its own token may have come among them
    for (int k = 0; isUDIM && k <= record.udimMaxPatch; ++k)
    {
        // Patch tokens share the layers of the textures that own them.
        const TextureToken patch(static_cast<quint64>(record.slot) + static_cast<quint64>(k));
        textureTokenRevoked(patch, true);
        deleteToken(patch);
    }
    if (record.slot == -1)
        return;
    if (!skipLayerRelease && record.udimWidth <= 0)
        releaseLayers(index);
    setRecord(index, SlotLayerData());
    _slotMapDirty = true;
}

void Array2DTextureManager::dirty(Texture* texture)
{
    if (!texture)
        return;
    const TextureToken token = tokenForTexture(texture);
    if (token == INVALID_TOKEN || !hasRecord(token))
        return;
    const auto index = static_cast<qsizetype>(token.token);
    const int slot = _textureTokenToSlotLayerData[index].slot;
    if (!hasSlot(slot) || !_slots[slot]->isUsed())
        return;
    releaseLayers(index);
    setRecord(index, SlotLayerData());
}

bool Array2DTextureManager::updateTextureStreamers()
{
    return updateStreamers(
        [this](TextureStreamer* streamer)
        {
            const TextureToken token = tokenForTexture(streamer);
            if (isPlaced(token))
                _pendingTokens->insert(token);
        });
}

// ---- placing -------------------------------------------------------------------------------------------------------

void Array2DTextureManager::bind(const QList<TextureToken>& tokens)
{
    bindTokens(tokens);
}

void Array2DTextureManager::bind(const QSet<TextureToken>& tokens)
{
    bindTokens(tokens);
}

template <typename Tokens> void Array2DTextureManager::bindTokens(const Tokens& tokens)
{
    if (tokens.isEmpty())
        return;
    setupSlots();
    for (const TextureToken& token : tokens)
        if (!isPlaced(token)) // most are
            bindTextureToken(token);
}

bool Array2DTextureManager::isPlaced(const TextureToken& token) const
{
    return hasRecord(token) && _textureTokenToSlotLayerData[static_cast<qsizetype>(token.token)].slot != -1;
}

void Array2DTextureManager::unbind(const QList<TextureToken>& /*tokens*/) {}

void Array2DTextureManager::bindTextureToken(TextureToken token)
{
    if (token == INVALID_TOKEN)
        return;
    VRK_ASSERT_RETURN(token.token < quint64(_textureTokenToSlotLayerData.size()), , "Token %llu is not in array %d.",
                      token.token, static_cast<int>(_textureTokenToSlotLayerData.size()));
    const auto index = static_cast<qsizetype>(token.token);
    if (isPlaced(token))
        return;
    if (Texture* const texture = textureForToken(token))
    {
        checkTarget(*texture, token);
        SlotLayerData record = _textureTokenToSlotLayerData[index];
        determineSlotLayerDataForTexture(texture, token, record);
        setRecord(index, record);
    }
    else if (const UDIMPatches* const patches = udimPatches(token))
    {
        bindUDIMToken(token, UDIMPatches(*patches));
    }
}

/// A run of tokens, row by row: a patch that has a texture with a token has the place of that, the others none.
void Array2DTextureManager::bindUDIMToken(TextureToken token, const UDIMPatches& patches)
{
    if (patches.isEmpty())
        return; // the next bind may find some
    qint64 width = 0;
    for (auto patch = patches.cbegin(); patch != patches.cend(); ++patch)
        width = std::max(width, qint64(patch.key().x()) + 1);
    qint64 maxOffset = 0;
    bool isInside = true;
    for (auto patch = patches.cbegin(); patch != patches.cend(); ++patch)
    {
        isInside = isInside && patch.key().x() >= 0 && patch.key().y() >= 0;
        maxOffset = std::max(maxOffset, patch.key().y() * width + patch.key().x());
    }
    const quint64 last = maxToken().token + static_cast<quint64>(maxOffset);
    VRK_ASSERT_RETURN(isInside && last < kMaxTokens, , "UDIM token %llu has patches that no table has room for",
                      token.token);

    const TextureToken base = reserveTokenBlock(static_cast<int>(maxOffset) + 1);
    for (qint64 offset = 0; offset <= maxOffset; ++offset)
        textureTokenIssued(TextureToken(base.token + static_cast<quint64>(offset)));
    const auto index = static_cast<qsizetype>(token.token);
    if (SlotLayerData record = _textureTokenToSlotLayerData[index]; record.slot == -1)
    {
        record.slot = static_cast<qint32>(base.token);
        record.udimWidth = static_cast<qint32>(width);
        record.udimMaxPatch = static_cast<qint32>(maxOffset);
        setRecord(index, record);
    }
    for (auto patch = patches.cbegin(); patch != patches.cend(); ++patch)
    {
        const TextureToken patchToken = findToken(patch.value());
        VRK_ASSERT(INVALID_TOKEN == patchToken || patchToken.token < quint64(_textureTokenToSlotLayerData.size()),
                   "Token %llu is not in array %d.", patchToken.token,
                   static_cast<int>(_textureTokenToSlotLayerData.size()));
        if (patchToken == INVALID_TOKEN || !hasRecord(patchToken))
            continue;
        bindTextureToken(patchToken);
        const TextureToken place(base.token + static_cast<quint64>(patch.key().y() * width + patch.key().x()));
        setRecord(static_cast<qsizetype>(place.token),
                  _textureTokenToSlotLayerData[static_cast<qsizetype>(patchToken.token)]);
        _patchTokenToSourceToken.insert(place, patchToken);
    }
}

} // namespace Harrow::Vrk
