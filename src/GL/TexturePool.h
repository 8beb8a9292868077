// SPDX-License-Identifier: MIT
#pragma once

/// \file
/// Scratch textures, recycled by exact description: taken, perhaps referenced more, released, and kept under their
/// description until they are taken again or the free ones are deleted. Reached through `TextureManager`. Not
/// installed.

#include "TextureFormat.h"

#include <QHash>
#include <QList>

#include <cstddef>
#include <vector>

namespace Harrow::Vrk
{

class Texture;

/// The full description of a pooled texture.
struct TexturePoolKey
{
    TextureFormat format;
    int width;
    int height;
    int depth;
    int samples; ///< After clamping to `GL_MAX_SAMPLES`.

    friend bool operator==(const TexturePoolKey&, const TexturePoolKey&) = default;
};

size_t qHash(const TexturePoolKey& key, size_t seed = 0);

/// Owns every texture that it made, the free ones and those in use. A context must be current. One thread.
class TexturePool
{
public:
    TexturePool() = default;
    /// Deletes all textures, those in use too.
    ~TexturePool();
    TexturePool(const TexturePool&) = delete;
    TexturePool& operator=(const TexturePool&) = delete;

    /// A texture of exactly this description, with one reference: of the free ones the one at the highest address, as
    /// its last user left it, or else a new one. Null, with the warning of `Texture::bind`, when a new one is needed
    /// and no texture unit is free.
    Texture* take(TextureFormat format, int width, int height, int depth, int samples);

    /// Nothing for null, for a texture that is not in use, and for a count below 1.
    void addRef(Texture* texture, int count);

    /// The texture is free when no reference remains. Nothing for null and for a texture that is not in use.
    void release(Texture* texture, int count);

    void deleteUnused();
    void printSummary() const;
    void setFixedSampleLocations(bool fixed);

private:
    friend struct TexturePoolTestAccess;

    /// The free textures of one description. They have an order: each take sorts them by address, and what is released
    /// is put behind them. It is kept without sorting them all for each take.
    class FreeTextures
    {
    public:
        void append(Texture* texture);
        Texture* takeHighest();
        bool isEmpty() const;
        qsizetype size() const;
        QList<Texture*> inOrder() const;

    private:
        std::vector<Texture*> _sorted; ///< A heap: of its order only the highest one matters until it is listed.
        QList<Texture*> _appended;     ///< Since the last take.
    };

    Texture* make(const TexturePoolKey& key) const;
    void specifyImage(const Texture& texture, const TexturePoolKey& key) const;

    QHash<TexturePoolKey, FreeTextures> _freeTextures;
    QHash<Texture*, int> _refCounts;
    QHash<Texture*, TexturePoolKey> _keys;
    bool _fixedSampleLocations = false;
};

} // namespace Harrow::Vrk
