// SPDX-License-Identifier: MIT
#pragma once

/// \file
/// The books of `Array2DTextureManager`: the layers of a slot, the order in which tokens wait for their copy, and the
/// tokens of each slot. No OpenGL call is made here. Not installed.

#include "Array2DTextureManager.h"
#include "Texture.h"

#include <memory>
#include <vector>

namespace Harrow::Vrk
{

struct VRKGL_EXPORT Array2DTextureManager::SlotData
{
    bool isUsed() const
    {
        return format.internalFormat != 0;
    }

    qint64 area() const
    {
        return qint64(format.width) * format.height;
    }

    /// The whole format but the size, with internal formats alike that have the same channels.
    bool isSimilar(const SlotFormat& other) const;

    /// Takes `count` layers and returns the first one, or -1. Free layers are taken as runs by a distance rule of its
    /// own, which finds the first one of a row of two at the next but one; the last layer of a slot is never given.
    int allocate(int count);
    /// Gives layers back. When none is left the slot is unused, with its old storage.
    void release(int layer, int count);

    /// Makes the slot one of an aligned format whose texels have `bytesPerTexel`, above 0; without layers.
    void initialise(const SlotFormat& aligned, int bytesPerTexel, int maxArrayTextureLayers);

    qint32 allocatedLayers = 0;
    std::unique_ptr<Texture> texture;
    quint64 handle = 0;
    qint32 residentCount = 0;
    SlotFormat format;
    qint32 maxLayers = 0;
    qint32 usedLayers = 0;
    QList<int> freeLayers; // ascending

private:
    int allocateFree(int count);
};

/// How well a slot of one size suits a wanted size: the smaller the better, as an unsigned number.
VRKGL_EXPORT quint32 slotReallocationScore(TextureManager::SlotReallocationMethod method, int slotWidth, int slotHeight,
                                           int width, int height);

inline constexpr quint32 kInvalidSlotScore = 0xFFFFFFFFu;

/// Tokens in the order of their coming, each once. Tokens of a manager are dense.
class VRKGL_EXPORT OrderedTokens
{
public:
    void insert(const TextureToken& token);
    bool contains(const TextureToken& token) const;
    void clear();

    const QList<TextureToken>& inOrder() const
    {
        return _tokens;
    }

    /// Calls `isDone(token)` for each, those that come meanwhile too, and removes the ones for which it is true.
    template <typename IsDone> void removeDone(IsDone isDone)
    {
        qsizetype kept = 0;
        // The list may grow, and be emptied, by what is called.
        for (qsizetype i = 0; i < _tokens.size(); ++i)
        {
            const TextureToken token = _tokens[i];
            const bool done = isDone(token);
            if (i >= _tokens.size() || _tokens[i] != token)
                return;
            if (done)
                _isMember[token.token] = false;
            else
                _tokens[kept++] = token;
        }
        _tokens.resize(kept);
    }

private:
    QList<TextureToken> _tokens;
    std::vector<bool> _isMember; // by token
};

/// Which tokens name a slot in their record. A move takes the same time for any number of tokens. Slots beyond those
/// that there are, as a set of UDIM patches has them in its record, have no list.
class VRKGL_EXPORT TokensOfSlots
{
public:
    void setSlotCount(qsizetype slots);
    /// Forgets all tokens, and the slots.
    void clear();
    void move(qsizetype token, int toSlot);
    /// Ascending.
    std::vector<qsizetype> ofSlot(int slot) const;

private:
    /// Where a token is: its slot, -1 for none, and its place in the list of that.
    struct Entry
    {
        int slot = -1;
        std::size_t place = 0;
    };

    bool hasList(int slot) const
    {
        return slot >= 0 && static_cast<std::size_t>(slot) < _tokens.size();
    }
    void append(qsizetype token);

    std::vector<std::vector<qsizetype>> _tokens;
    std::vector<Entry> _entries; // by token
};

} // namespace Harrow::Vrk
