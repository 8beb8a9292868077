// SPDX-License-Identifier: MIT
#include "TextureTokenTables.h"

#include "Texture.h"

namespace Harrow::Vrk
{

bool FreeTextureTokens::isEmpty() const
{
    return !_oldest;
}

void FreeTextureTokens::append(const TextureToken& token)
{
    if (_links.find(token))
        return;
    _links.entry(token) = Link{_newest, {}, true};
    if (_newest)
        _links.find(*_newest)->newer = token;
    else
        _oldest = token;
    _newest = token;
}

TextureToken FreeTextureTokens::takeFirst()
{
    const TextureToken first = *_oldest;
    remove(first);
    return first;
}

std::optional<TextureToken> FreeTextureTokens::find(const TextureToken& token)
{
    return _links.find(token) ? std::optional(token) : std::nullopt;
}

void FreeTextureTokens::remove(const TextureToken& token)
{
    const Link* const found = _links.find(token);
    if (!found)
        return;
    const Link link = *found;
    _links.remove(token);
    // Neighbours are in the table themselves. NOLINTBEGIN(clang-analyzer-core.CallAndMessage)
    (link.older ? _links.find(*link.older)->newer : _oldest) = link.newer;
    (link.newer ? _links.find(*link.newer)->older : _newest) = link.older;
    // NOLINTEND(clang-analyzer-core.CallAndMessage)
}

void FreeTextureTokens::clear()
{
    *this = FreeTextureTokens();
}

QList<TextureToken> FreeTextureTokens::inOrder()
{
    QList<TextureToken> tokens;
    for (std::optional<TextureToken> token = _oldest; token; token = _links.find(*token)->newer)
        tokens.append(*token);
    return tokens;
}

TextureOfToken::TextureOfToken(Texture* realised) : texture(realised), living(realised), managed(realised->isManaged())
{
}

} // namespace Harrow::Vrk
