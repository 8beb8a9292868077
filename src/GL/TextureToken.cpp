// SPDX-License-Identifier: MIT
#include "TextureToken.h"

#include <QHashFunctions>

#include <algorithm>

namespace Harrow::Vrk
{

QList<TextureToken>::iterator TextureToken::find(QList<TextureToken>& list, const TextureToken& token)
{
    return std::find(list.begin(), list.end(), token);
}

QList<TextureToken>::iterator TextureToken::insert(QList<TextureToken>& list, const TextureToken& token)
{
    if (const auto found = find(list, token); found != list.end())
        return found;
    const TextureToken added = token; // may be an element of the list that moves
    list.append(added);
    return list.end() - 1;
}

QList<TextureToken>& TextureToken::unite(QList<TextureToken>& list, const QList<TextureToken>& other)
{
    // It may be the list itself. NOLINTNEXTLINE(performance-unnecessary-copy-initialization)
    const QList<TextureToken> added = other;
    for (const TextureToken& token : added)
        insert(list, token);
    return list;
}

unsigned int qHash(const TextureToken& token)
{
    const auto hash = static_cast<quint64>(::qHash(token.token, size_t(0)));
    return static_cast<quint32>(hash >> 32) ^ static_cast<quint32>(hash);
}

} // namespace Harrow::Vrk
