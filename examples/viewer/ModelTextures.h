// SPDX-License-Identifier: MIT
// A model's pictures as tokens of a texture manager.
#pragma once

#include "Model.h"
#include "ScenePlans.h"

#include <VrkGL/TextureToken.h>

#include <QList>

#include <set>
#include <vector>

namespace Harrow::Vrk
{
class TextureManager;
}

namespace vrkview
{

class Streamers;

/// Loads all pictures at once, so that the first frame does not wait; shows how far it is on a terminal. A picture of
/// colours that is not there or cannot be read comes out white, and the log says which; so do tiles where the manager
/// has none. Of the other properties it is left out. The textures belong to the manager.
class ModelTextures
{
public:
    /// Pictures that change come from `streamers`.
    ModelTextures(Harrow::Vrk::TextureManager& manager, Streamers& streamers, const Model& model);

    /// The material of this number, with the pictures that a mesh shows of it.
    PicturedMaterial picturedMaterial(std::size_t index, const Mesh& mesh) const;

    /// All of them.
    QList<Harrow::Vrk::TextureToken> tokens() const;

    /// Which tiles are white, or not there where they are no colours, because the manager has none: in one line, or
    /// empty.
    QString whiteTiles() const;

private:
    /// What the texels of a picture are: colours are gamma encoded in files.
    enum class Content
    {
        Colors,
        Numbers
    };

    void load(std::size_t image, Content content);
    Picture pictureOf(const Image& image, Content content);
    Picture tilesOf(const Image& image, Content content);
    Harrow::Vrk::TextureToken tokenOf(const QString& path, const QImage& pixels, Content content);
    MaterialMap mapOf(const std::optional<MaterialImage>& use, const Mesh& mesh, Content content) const;

    Harrow::Vrk::TextureManager& _manager;
    Streamers& _streamers;
    const Model& _model;
    Picture _white;
    std::vector<std::optional<Picture>> _loaded[2]; // of each image, by content; with an invalid token what has failed
    std::set<const Image*> _whiteTiles;             // pictures in tiles, which the manager has not
};

} // namespace vrkview
