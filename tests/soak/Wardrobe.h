// SPDX-License-Identifier: MIT
// The textures that come and go: made here, from images and files, wrapped, streamed, lent by the pool, or tiles of one
// picture. Each has a token of one manager while it is here.
#pragma once

#include "TextureToken.h"

#include <QString>
#include <QTemporaryDir>

#include <functional>
#include <memory>
#include <vector>

namespace Harrow::Vrk
{
class Texture;
class TextureManager;
class TextureStreamer;
} // namespace Harrow::Vrk

namespace vrksoak
{

class Random;

class Wardrobe
{
public:
    /// `copies` for a manager that copies textures into layers, which not every format can be copied from.
    Wardrobe(Harrow::Vrk::TextureManager& manager, bool copies);
    ~Wardrobe();

    /// \name What comes
    /// Each gives the token, or `INVALID_TOKEN` where nothing has come: there is enough of the kind or of all, or the
    /// manager does not know the kind.
    ///@{
    Harrow::Vrk::TextureToken addMade(Random& random);
    Harrow::Vrk::TextureToken addFromImage(Random& random);
    Harrow::Vrk::TextureToken addColor(Random& random);
    Harrow::Vrk::TextureToken addFromFile(Random& random);
    Harrow::Vrk::TextureToken addFromMemory(Random& random);
    Harrow::Vrk::TextureToken addWrapped(Random& random);
    Harrow::Vrk::TextureToken addStreamer(Random& random);
    Harrow::Vrk::TextureToken addTiles(Random& random);
    ///@}

    /// A token that is here, or `INVALID_TOKEN`.
    Harrow::Vrk::TextureToken some(Random& random) const;

    /// \name What happens to them
    ///@{
    /// New texels for one that was made here.
    void repaint(Random& random);
    void lend(Random& random);
    void takeBack(Random& random);
    void advanceStreamers();
    ///@}

    /// \name What goes
    /// Nobody may carry the token any more.
    ///@{
    void remove(Harrow::Vrk::TextureToken token);
    std::vector<Harrow::Vrk::TextureToken> tokens() const;
    /// What the pool has lent, and what it keeps.
    void emptyPool();
    ///@}

private:
    struct Entry
    {
        Harrow::Vrk::TextureToken token;
        Harrow::Vrk::Texture* texture = nullptr; ///< null for tiles
        unsigned wrappedName = 0;
        bool isPaintable = false;
        std::function<void()> step{};               ///< of a streamer
        std::vector<Harrow::Vrk::Texture*> tiles{}; ///< ours
        bool isTiles = false;
    };

    bool holds(const Harrow::Vrk::TextureToken& token) const;
    Harrow::Vrk::TextureToken keep(Entry entry);
    bool isFull() const;

    Harrow::Vrk::TextureManager& _manager;
    bool _copies;
    QTemporaryDir _folder;
    std::vector<QString> _files;
    std::vector<Entry> _entries;
    std::vector<Harrow::Vrk::Texture*> _lent;
};

} // namespace vrksoak
