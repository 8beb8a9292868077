// SPDX-License-Identifier: MIT
// A model's pictures as tokens of a texture manager.
#pragma once

#include "Model.h"
#include "ScenePlans.h"

#include <VrkGL/TextureToken.h>

#include <QList>

#include <vector>

namespace Harrow::Vrk
{
class TextureManager;
}

namespace vrkview
{

class Streamers;

/// Loads all pictures at once, so that the first frame does not wait; shows how far it is on a terminal. A picture that
/// is not there or cannot be read comes out white, and the log says which; so do tiles, with a remark, where the
/// manager has none. The textures belong to the manager.
class ModelTextures
{
public:
    /// Pictures that change come from `streamers`.
    ModelTextures(Harrow::Vrk::TextureManager& manager, Streamers& streamers, const Model& model);

    /// With the picture that colours a mesh, or white.
    PicturedMaterial picturedMaterial(std::size_t material, const Mesh& mesh) const;

    /// All of them.
    QList<Harrow::Vrk::TextureToken> tokens() const;

private:
    struct Picture
    {
        Harrow::Vrk::TextureToken token;
        ImageKind kind = ImageKind::Flat;
        std::uint32_t tileWidth = 0;
    };

    Picture pictureOf(const Image& image);
    Picture tilesOf(const Image& image);
    Harrow::Vrk::TextureToken tokenOf(const QString& path, const QImage& pixels);

    Harrow::Vrk::TextureManager& _manager;
    Streamers& _streamers;
    const Model& _model;
    Picture _white;
    std::vector<Picture> _ofImage;
};

} // namespace vrkview
