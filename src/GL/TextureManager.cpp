// SPDX-License-Identifier: MIT
#include "TextureManager.h"

#include "Diagnostics.h"
#include "GLSLMacroProcessor.h"
#include "SamplerTextureManager.h"
#include "Texture.h"
#include "TextureIO.h"
#include "TexturePool.h"
#include "TextureStreamer.h"
#include "TextureTokenTables.h"

#include <QDebug>
#include <QDir>
#include <QFileInfo>

#include <algorithm>
#include <utility>

namespace Harrow::Vrk
{
namespace
{

TextureManager* instance = nullptr;

/// As the messages show a token.
const void* shown(const TextureToken& token)
{
    return reinterpret_cast<const void*>(static_cast<quintptr>(token.token));
}

unsigned long long number(const TextureToken& token)
{
    return token.token;
}

/// What follows the last separator: slashes first, and backslashes only where there is no slash.
QString lastComponent(const QString& path)
{
    qsizetype separator = path.lastIndexOf(QLatin1Char('/'));
    if (separator < 0)
        separator = path.lastIndexOf(QLatin1Char('\\'));
    return path.mid(separator + 1);
}

} // namespace

TextureManager::TextureManager()
    : _freeTokens(std::make_unique<FreeTextureTokens>()),
      _tokenToTexture(std::make_unique<TextureTokenTable<TextureOfToken>>()),
      _texturePool(std::make_unique<TexturePool>())
{
    seed();
}

TextureManager::~TextureManager()
{
    TextureManager::clear();
    if (instance == this)
        instance = nullptr;
}

TextureManager& TextureManager::Instance()
{
    if (!instance)
    {
        qDebug() << "SamplerTextureManager";
        instance = new SamplerTextureManager;
        instance->setMaxSlots(8);
    }
    return *instance;
}

bool TextureManager::setInstance(TextureManager* manager)
{
    instance = manager;
    return true;
}

void TextureManager::clear()
{
    // Out of the tables first, and each looked at again: a texture may take others with it, or call back at its end.
    TextureTokenTable<TextureOfToken> ended = std::exchange(*_tokenToTexture, {});
    _textureToToken.clear();
    ended.forEach(&reportDestroyed);
    ended.forEach([](const TextureToken&, const TextureOfToken& texture) { delete texture.living.data(); });
    _maxToken = TextureToken(0);
    _freeTokens->clear();
    _texturePool->deleteUnused();
    _colorToToken.clear();
    _tokenToColor.clear();
    _pathToToken.clear();
    _tokenToPath.clear();
    seed();
}

void TextureManager::reportDestroyed(const TextureToken& token, const TextureOfToken& texture)
{
    VRK_ASSERT(!texture.isDestroyed(), "Texture of token %llu was destroyed without deleteTexture()", number(token));
}

/// Nothing stands for nothing: spares every look-up a case of its own.
void TextureManager::seed()
{
    _textureToToken.insert(nullptr, INVALID_TOKEN);
}

// ---- from token to texture -----------------------------------------------------------------------------------------

Texture* TextureManager::textureForToken(const TextureToken& token)
{
    if (token == INVALID_TOKEN)
        return nullptr;
    if (const TextureOfToken* const texture = _tokenToTexture->find(token))
    {
        reportDestroyed(token, *texture);
        return texture->living;
    }
    if (const auto path = _tokenToPath.constFind(token); path != _tokenToPath.constEnd())
    {
        if (Texture* const loaded = LoadTextureFromFile(*path, _tokenToFileInfo.value(token)))
            return realise(token, loaded);
        // Nothing is kept of the failure, so that a file that comes later is found. The colour may have been left in
        // its table under a token that a file has now: that would never end.
        VRK_ASSERT_RETURN(token != _colorToToken.value(qRgb(255, 255, 255)), nullptr,
                          "Token %llu of white stands for a file that cannot be loaded", number(token));
        return textureForColor(Qt::white);
    }
    if (const auto color = _tokenToColor.constFind(token); color != _tokenToColor.constEnd())
        return realise(token, MakeColorTexture(*color));
    return nullptr;
}

Texture* TextureManager::realise(const TextureToken& token, Texture* texture)
{
    if (!texture)
        return nullptr;
    texture->setReadOnly();
    _tokenToTexture->entry(token) = TextureOfToken(texture);
    _textureToToken.insert(texture, token);
    return texture;
}

Texture* TextureManager::textureForImage(const QString& path, const TextureFileInfo& info)
{
    return textureForToken(tokenForImage(path, info));
}

Texture* TextureManager::textureForColor(const QColor& color)
{
    return textureForToken(tokenForColor(color));
}

// ---- tokens of textures, files and colours -------------------------------------------------------------------------

TextureToken TextureManager::tokenForTexture(Texture* texture)
{
    if (const auto known = _textureToToken.constFind(texture); known != _textureToToken.constEnd())
    {
        const TextureOfToken* const realised = _tokenToTexture->find(*known);
        if (!realised || !realised->isDestroyed())
            return *known;
        reportDestroyed(*known, *realised);
        deleteTexture(TextureToken(*known)); // another one, which was at the same address
    }
    const TextureToken token = reserveToken();
    _textureToToken.insert(texture, token);
    _tokenToTexture->entry(token) = TextureOfToken(texture);
    addStreamer(texture);
    textureTokenIssued(token);
    return token;
}

TextureToken TextureManager::tokenForImage(const QString& path, const TextureFileInfo& info)
{
    const QString resolved = resolveTexturePath(path);
    if (path.isEmpty() || !QFileInfo(resolved).isFile())
    {
        VRK_LOG_WARNING("Cannot load %s", qPrintable(path));
        return tokenForColor(Qt::white);
    }
    if (const auto known = _pathToToken.constFind(resolved); known != _pathToToken.constEnd())
        return *known;
    const TextureToken token = reserveToken();
    _pathToToken.insert(resolved, token);
    _tokenToPath.insert(token, resolved);
    _tokenToFileInfo.insert(token, info);
    textureTokenIssued(token);
    return token;
}

TextureToken TextureManager::tokenForColor(const QColor& color)
{
    const QRgb rgba = color.rgba();
    if (const auto known = _colorToToken.constFind(rgba); known != _colorToToken.constEnd())
        return *known;
    const TextureToken token = reserveToken();
    _colorToToken.insert(rgba, token);
    _tokenToColor.insert(token, color);
    textureTokenIssued(token);
    return token;
}

void TextureManager::deleteTexture(Texture* texture)
{
    if (!texture)
        return;
    if (const auto known = _textureToToken.constFind(texture); known != _textureToToken.constEnd())
        deleteTexture(TextureToken(*known));
}

void TextureManager::deleteTexture(const TextureToken& token)
{
    if (token == INVALID_TOKEN)
        return;
    textureTokenRevoked(token);
    TextureOfToken* const realised = _tokenToTexture->find(token);
    if (!realised)
    {
        deleteToken(token); // what the tables say of its file or colour stays, as stated
        return;
    }
    const TextureOfToken ended = std::move(*realised);
    const TextureToken revoked = token; // may be an entry of a table
    _tokenToTexture->remove(revoked);
    _textureToToken.remove(ended.texture);
    removeStreamer(ended.texture);
    _pathToToken.remove(_tokenToPath.take(revoked));
    // Keyed by rgba and removed by rgb, on purpose: a translucent colour stays, and where there is no colour at all it
    // is opaque black that goes.
    _colorToToken.remove(_tokenToColor.take(revoked).rgb());
    if (ended.managed)
        delete ended.living.data();
    deleteToken(revoked);
}

TextureToken TextureManager::findToken(Texture* texture)
{
    return _textureToToken.value(texture, INVALID_TOKEN);
}

// ---- what a kind of manager makes its own --------------------------------------------------------------------------

void TextureManager::bind()
{
    bind(static_cast<ShaderProgram*>(nullptr));
}

void TextureManager::bind(const QSet<TextureToken>& tokens)
{
    bind(tokens.values());
}

void TextureManager::unbind()
{
    unbind(static_cast<ShaderProgram*>(nullptr));
}

void TextureManager::dirty(Texture* /*texture*/) {}

void TextureManager::setup(GLSLMacroProcessor* processor)
{
    if (processor && supportsUDIMs())
        processor->addDefine(QStringLiteral("TEXTURE_MANAGER_SUPPORTS_UDIMS"), QStringLiteral("1"));
}

void TextureManager::setMaxSlots(int maxSlots)
{
    _maxSlots = maxSlots;
}

int TextureManager::getMaxSlots() const
{
    return _maxSlots;
}

void TextureManager::setSlotReallocationMethod(SlotReallocationMethod /*method*/) {}

bool TextureManager::supportsUDIMs() const
{
    return false;
}

void TextureManager::textureTokenIssued(const TextureToken& /*token*/) {}

void TextureManager::textureTokenRevoked(const TextureToken& /*token*/) {}

// ---- numbers -------------------------------------------------------------------------------------------------------

TextureToken TextureManager::reserveToken()
{
    return _freeTokens->isEmpty() ? TextureToken(_maxToken.token++) : _freeTokens->takeFirst();
}

TextureToken TextureManager::reserveTokenBlock(int count)
{
    const TextureToken first = _maxToken;
    VRK_ASSERT_RETURN(count >= 0, first, "Reserve a block of %d tokens", count);
    _maxToken.token += static_cast<quint64>(count);
    return first;
}

void TextureManager::deleteToken(const TextureToken& token)
{
    VRK_ASSERT(0 < this->_maxToken.token, "Delete token %3p but none %llu reserved!", shown(token), number(_maxToken));
    VRK_ASSERT(token.token < this->_maxToken.token, "Delete token %3p but only %3p reserved!", shown(token),
               shown(_maxToken));
    _freeTokens->append(token);
    while (_maxToken.token > 0) // the range does not wrap around
    {
        const TextureToken top(_maxToken.token - 1);
        const auto itFind = _freeTokens->find(top);
        if (!itFind)
            return;
        VRK_ASSERT((itFind->token + 1) == this->_maxToken.token, "Did not find the correct token %3p. Found token %3p.",
                   shown(top), shown(*itFind));
        _freeTokens->remove(top);
        _maxToken = top;
    }
}

TextureToken TextureManager::maxToken() const
{
    return _maxToken;
}

const QHash<Texture*, TextureToken>& TextureManager::textureTokenMap() const
{
    return _textureToToken;
}

// ---- sets of UDIM patches ------------------------------------------------------------------------------------------

TextureToken TextureManager::createUDIMToken()
{
    if (!supportsUDIMs())
        return INVALID_TOKEN;
    const TextureToken token = reserveToken();
    textureTokenIssued(token);
    _udimTokenToIndexAndToken.insert(token, {});
    return token;
}

void TextureManager::addUDIMPatch(TextureToken token, const QPoint& index, Texture* texture)
{
    const auto udimIt = _udimTokenToIndexAndToken.find(token);
    VRK_ASSERT_RETURN(this->_udimTokenToIndexAndToken.end() != udimIt, , "Token %p is no UDIM token", shown(token));
    udimIt->insert(index, texture);
}

void TextureManager::removeUDIMPatch(TextureToken token, Texture* texture)
{
    const auto udimIt = _udimTokenToIndexAndToken.find(token);
    if (udimIt == _udimTokenToIndexAndToken.end())
        return;
    const auto patch = std::find(udimIt->cbegin(), udimIt->cend(), texture);
    if (patch != udimIt->cend())
        udimIt->erase(patch);
}

bool TextureManager::deleteUDIM(TextureToken token)
{
    const auto udimIt = _udimTokenToIndexAndToken.constFind(token);
    VRK_ASSERT_RETURN(this->_udimTokenToIndexAndToken.end() != udimIt, false, "Token %p already empty", shown(token));
    _udimTokenToIndexAndToken.erase(udimIt);
    textureTokenRevoked(token);
    deleteToken(token);
    return true;
}

// ---- paths ---------------------------------------------------------------------------------------------------------

QString TextureManager::getTextureRoot() const
{
    return _textureRoot;
}

void TextureManager::setTextureRoot(const QString& directory)
{
    _textureRoot = directory;
}

QString TextureManager::resolveTexturePath(QString path) const
{
    if (QFileInfo::exists(path))
        return path;
    const QDir root(_textureRoot);
    for (const QString& candidate : {path, lastComponent(path)})
        if (const QString absolute = root.absoluteFilePath(candidate); QFileInfo::exists(absolute))
            return absolute;
    qDebug() << "Failed to find file " << path;
    return path;
}

QStringList TextureManager::textureFiles() const
{
    QStringList files = _tokenToPath.values();
    files.sort();
    return files;
}

// ---- streamers -----------------------------------------------------------------------------------------------------

const QList<TextureStreamer*>& TextureManager::getTextureStreamers() const
{
    return _textureStreamers;
}

void TextureManager::addStreamer(Texture* texture)
{
    auto* const streamer = dynamic_cast<TextureStreamer*>(texture);
    if (!streamer)
        return;
    _textureStreamers.append(streamer);
    _livingStreamers.append(streamer);
}

void TextureManager::removeStreamer(const Texture* texture)
{
    if (_textureStreamers.isEmpty())
        return;
    // By address, since it may be gone. The last one: before it there may be one that `clear` has deleted.
    for (qsizetype i = _textureStreamers.size(); i-- > 0;)
    {
        if (static_cast<const Texture*>(_textureStreamers[i]) != texture)
            continue;
        _textureStreamers.removeAt(i);
        _livingStreamers.removeAt(i);
        return;
    }
}

bool TextureManager::updateTextureStreamers()
{
    bool updated = false;
    // Copies, since an update may add streamers and delete others.
    const QList<TextureStreamer*> streamers = _textureStreamers;
    const QList<QPointer<TextureStreamer>> living = _livingStreamers;
    for (qsizetype i = 0; i < streamers.size(); ++i)
    {
        if (living[i])
            updated = living[i]->updateTexture() || updated;
        else
            VRK_ASSERT(!_textureStreamers.contains(streamers[i]),
                       "Texture streamer was destroyed without deleteTexture()");
    }
    return updated;
}

// ---- scratch textures ----------------------------------------------------------------------------------------------

Texture* TextureManager::tempTexture(TextureFormat format, int width, int height, int depth, int samples)
{
    return _texturePool->take(format, width, height, depth, samples);
}

void TextureManager::addTempTextureRef(Texture* texture, int count)
{
    _texturePool->addRef(texture, count);
}

void TextureManager::releaseTempTextureRef(Texture* texture, int count)
{
    _texturePool->release(texture, count);
}

void TextureManager::deleteUnusedTempTextures()
{
    _texturePool->deleteUnused();
}

void TextureManager::printTempTextureSummary()
{
    _texturePool->printSummary();
}

void TextureManager::setTempTextureFixedSampleLocations(bool fixed)
{
    _texturePool->setFixedSampleLocations(fixed);
}

} // namespace Harrow::Vrk
