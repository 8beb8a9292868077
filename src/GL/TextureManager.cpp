// SPDX-License-Identifier: MIT
#include "TextureManager.h"

#include "BindlessTextureManager.h"
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
    if (instance)
        return *instance;
    if (BindlessTextureManager::isSupported())
    {
        qDebug() << "BindlessTextureManager";
        instance = new BindlessTextureManager;
    }
    else
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
    VRK_ASSERT(!texture.isDestroyed(), "Texture of token %llu was destroyed without deleteTexture()", token.token);
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
    if (_tokenToTexture->find(token))
        return knownTexture(token);
    if (const auto path = _tokenToPath.constFind(token); path != _tokenToPath.constEnd())
    {
        if (Texture* const loaded = LoadTextureFromFile(*path, _tokenToFileInfo.value(token)))
            return realise(token, loaded);
        // Nothing is kept of the failure, so that a file that comes later is found. The colour may have been left in
        // its table under a token that a file has now: that would never end.
        VRK_ASSERT_RETURN(token != _colorToToken.value(qRgb(255, 255, 255)), nullptr,
                          "Token %llu of white stands for a file that cannot be loaded", token.token);
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
    setTextureOfToken(token, texture);
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
    if (const auto known = knownToken(texture))
        return *known;
    const TextureToken token = reserveToken();
    setTextureOfToken(token, texture);
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
    if (const auto known = knownToken(resolved))
        return *known;
    const TextureToken token = reserveToken();
    setFileOfToken(token, resolved, info);
    textureTokenIssued(token);
    return token;
}

TextureToken TextureManager::tokenForColor(const QColor& color)
{
    if (const auto known = knownToken(color))
        return *known;
    const TextureToken token = reserveToken();
    setColorOfToken(token, color);
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
    const TextureToken revoked = token; // may be an entry of a table
    textureTokenRevoked(revoked);
    forgetTextureOfToken(revoked); // without a texture, what the tables say of its file or colour stays, as stated
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
    VRK_ASSERT(0 < this->_maxToken.token, "Delete token %3p but none %llu reserved!", shown(token), _maxToken.token);
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

// ---- the tables ----------------------------------------------------------------------------------------------------

const TextureManager::UDIMPatches* TextureManager::udimPatches(const TextureToken& token) const
{
    const auto found = _udimTokenToIndexAndToken.constFind(token);
    return found != _udimTokenToIndexAndToken.constEnd() ? &*found : nullptr;
}

std::optional<TextureToken> TextureManager::knownToken(Texture* texture)
{
    const auto known = _textureToToken.constFind(texture);
    if (known == _textureToToken.constEnd())
        return std::nullopt;
    const TextureOfToken* const realised = _tokenToTexture->find(*known);
    if (!realised || !realised->isDestroyed())
        return *known;
    reportDestroyed(*known, *realised);
    deleteTexture(TextureToken(*known)); // another one, which was at the same address
    return std::nullopt;
}

std::optional<TextureToken> TextureManager::knownToken(const QString& resolvedPath) const
{
    const auto known = _pathToToken.constFind(resolvedPath);
    return known != _pathToToken.constEnd() ? std::optional(*known) : std::nullopt;
}

std::optional<TextureToken> TextureManager::knownToken(const QColor& color) const
{
    const auto known = _colorToToken.constFind(color.rgba());
    return known != _colorToToken.constEnd() ? std::optional(*known) : std::nullopt;
}

Texture* TextureManager::knownTexture(const TextureToken& token) const
{
    const TextureOfToken* const realised = _tokenToTexture->find(token);
    if (!realised)
        return nullptr;
    reportDestroyed(token, *realised);
    return realised->living;
}

void TextureManager::setTextureOfToken(const TextureToken& token, Texture* texture)
{
    TextureOfToken& entry = _tokenToTexture->entry(token);
    if (entry.isPresent() && entry.isDestroyed()) // a handle of the driver comes again
    {
        reportDestroyed(token, entry);
        _textureToToken.remove(entry.texture);
    }
    _textureToToken.insert(texture, token);
    entry = TextureOfToken(texture);
    addStreamer(texture);
}

void TextureManager::setFileOfToken(const TextureToken& token, const QString& resolvedPath, const TextureFileInfo& info)
{
    _pathToToken.insert(resolvedPath, token);
    _tokenToPath.insert(token, resolvedPath);
    _tokenToFileInfo.insert(token, info);
}

void TextureManager::setColorOfToken(const TextureToken& token, const QColor& color)
{
    _colorToToken.insert(color.rgba(), token);
    _tokenToColor.insert(token, color);
}

bool TextureManager::forgetTextureOfToken(TextureToken token)
{
    TextureOfToken* const realised = _tokenToTexture->find(token);
    if (!realised)
        return false;
    const TextureOfToken ended = std::move(*realised);
    _tokenToTexture->remove(token);
    _textureToToken.remove(ended.texture);
    removeStreamer(ended.texture);
    _pathToToken.remove(_tokenToPath.take(token));
    // Keyed by rgba and removed by rgb, on purpose: a translucent colour stays, and where there is no colour at all it
    // is opaque black that goes.
    _colorToToken.remove(_tokenToColor.take(token).rgb());
    if (ended.managed)
        delete ended.living.data();
    return true;
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
        if (QString absolute = root.absoluteFilePath(candidate); QFileInfo::exists(absolute))
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
    return updateStreamers([](TextureStreamer*) {});
}

bool TextureManager::updateStreamers(const std::function<void(TextureStreamer*)>& changed)
{
    bool updated = false;
    // Copies, since an update may add streamers and delete others.
    const QList<TextureStreamer*> streamers = _textureStreamers;
    const QList<QPointer<TextureStreamer>> living = _livingStreamers;
    for (qsizetype i = 0; i < streamers.size(); ++i)
    {
        if (!living[i])
        {
            VRK_ASSERT(!_textureStreamers.contains(streamers[i]),
                       "Texture streamer was destroyed without deleteTexture()");
            continue;
        }
        if (!living[i]->updateTexture())
            continue;
        updated = true;
        if (living[i]) // it may have ended by its own update
            changed(living[i]);
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
