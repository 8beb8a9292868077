// SPDX-License-Identifier: MIT
#pragma once

/// \file
/// What a texture manager keeps by token, flat because tokens are dense: which ones are free, in their order, and which
/// ones have a texture. No OpenGL. Not installed.

#include "Export.h"
#include "TextureToken.h"

#include <QHash>
#include <QList>
#include <QPointer>

#include <optional>
#include <vector>

namespace Harrow::Vrk
{

class Texture;

/// Entries by token. `Entry` is default-constructible to what is not `isPresent`. Tokens far beyond those that a
/// manager issues, as a caller may name them, are kept in a hash.
template <typename Entry> class TextureTokenTable
{
public:
    /// Null if there is none.
    Entry* find(const TextureToken& token)
    {
        if (token.token < _flat.size())
            return _flat[token.token].isPresent() ? &_flat[token.token] : nullptr;
        if (_strays.isEmpty())
            return nullptr;
        const auto stray = _strays.find(token);
        return stray != _strays.end() ? &*stray : nullptr;
    }

    /// The reference holds until the next entry is made.
    Entry& entry(const TextureToken& token)
    {
        if (token.token >= kMaxFlat)
            return _strays[token];
        if (token.token >= _flat.size())
            _flat.resize(token.token + 1);
        return _flat[token.token];
    }

    void remove(const TextureToken& token)
    {
        if (token.token < _flat.size())
            _flat[token.token] = Entry();
        else
            _strays.remove(token);
    }

    void clear()
    {
        _flat.clear();
        _strays.clear();
    }

    /// `visit(token, entry)` for all.
    template <typename Visit> void forEach(Visit visit)
    {
        for (std::size_t i = 0; i < _flat.size(); ++i)
            if (_flat[i].isPresent())
                visit(TextureToken(i), _flat[i]);
        for (auto stray = _strays.begin(); stray != _strays.end(); ++stray)
            visit(stray.key(), *stray);
    }

private:
    static constexpr quint64 kMaxFlat = quint64(1) << 20;

    std::vector<Entry> _flat;
    QHash<TextureToken, Entry> _strays;
};

/// The free tokens, oldest first, each once. Every operation takes the same time, however many there are.
class VRKGL_EXPORT FreeTextureTokens
{
public:
    bool isEmpty() const;
    /// To the end; nothing for one that is there.
    void append(const TextureToken& token);
    /// There must be one.
    TextureToken takeFirst();
    std::optional<TextureToken> find(const TextureToken& token);
    /// Nothing for one that is not there.
    void remove(const TextureToken& token);
    void clear();
    QList<TextureToken> inOrder();

private:
    struct Link
    {
        bool isPresent() const
        {
            return linked;
        }

        std::optional<TextureToken> older;
        std::optional<TextureToken> newer;
        bool linked = false;
    };

    TextureTokenTable<Link> _links;
    std::optional<TextureToken> _oldest;
    std::optional<TextureToken> _newest;
};

/// A texture behind a token. Who owns it may have destroyed it without a word: `living` is null then, and the address
/// is good for comparison alone.
struct VRKGL_EXPORT TextureOfToken
{
    TextureOfToken() = default;
    explicit TextureOfToken(Texture* realised);

    bool isPresent() const
    {
        return texture != nullptr;
    }
    bool isDestroyed() const
    {
        return living.isNull();
    }

    Texture* texture = nullptr;
    QPointer<Texture> living;
    bool managed = false; ///< As the texture has it for good: spares looking at it once more.
};

} // namespace Harrow::Vrk
