// SPDX-License-Identifier: MIT
#include "ModelTextures.h"

#include "LayeredTexture.h"
#include "Streamers.h"
#include "Terminal.h"

#include <VrkGL/AutoBinder.h>
#include <VrkGL/Texture.h>
#include <VrkGL/TextureFileInfo.h>
#include <VrkGL/TextureIO.h>
#include <VrkGL/TextureManager.h>
#include <VrkGL/TextureStreamer.h>

namespace vrkview
{

using namespace Harrow::Vrk;

namespace
{

TextureFileInfo colorInfo()
{
    TextureFileInfo info;
    info.srgb = true;
    return info;
}

int widthOf(Texture* texture)
{
    const AutoBinder bound(texture);
    return texture->width(0);
}

} // namespace

ModelTextures::ModelTextures(TextureManager& manager, Streamers& streamers, const Model& model)
    : _manager(manager), _streamers(streamers), _model(model)
{
    _white.token = manager.tokenForColor(Qt::white);
    ProgressLine progress;
    _ofImage.reserve(model.images.size());
    for (const Image& image : model.images)
    {
        progress.show(QStringLiteral("loading images"), float(_ofImage.size()) / float(model.images.size()));
        const Picture picture = pictureOf(image);
        _ofImage.push_back(picture.token == INVALID_TOKEN ? _white : picture);
    }
}

PicturedMaterial ModelTextures::picturedMaterial(std::size_t index, const Mesh& mesh) const
{
    const Material& material = _model.materials[index];
    const Picture& picture =
        material.baseColorImage && !mesh.texCoords.empty() ? _ofImage[*material.baseColorImage] : _white;
    return {&material, picture.token, picture.kind, picture.tileWidth};
}

QList<TextureToken> ModelTextures::tokens() const
{
    QList<TextureToken> all{_white.token};
    for (const Picture& picture : _ofImage)
        all.append(picture.token);
    return all;
}

ModelTextures::Picture ModelTextures::pictureOf(const Image& image)
{
    if (image.streamer)
        return {_manager.tokenForTexture(_streamers.make(*image.streamer))};
    switch (image.kind)
    {
    case ImageKind::Tiles:
        return tilesOf(image);
    case ImageKind::Cube:
    case ImageKind::Layers:
        return {_manager.tokenForTexture(newLayeredTexture(image)), image.kind};
    case ImageKind::Flat:
        break;
    }
    return {tokenOf(image.path, image.pixels)};
}

TextureToken ModelTextures::tokenOf(const QString& path, const QImage& pixels)
{
    if (pixels.isNull())
    {
        const TextureToken token = _manager.tokenForImage(path, colorInfo());
        // Loads it. Where that fails the manager gives white and tries again each time, so each frame.
        return _manager.findToken(_manager.textureForToken(token));
    }
    if (pixels.format() == QImage::Format_Grayscale8 || pixels.format() == QImage::Format_RGBA64)
        return _manager.tokenForTexture(newPlainTexture(pixels));
    // OpenGL has the bottom row first.
    const QImage flipped = pixels.convertToFormat(QImage::Format_ARGB32).mirrored();
    return _manager.tokenForTexture(QImageToTexture(flipped, false, colorInfo()));
}

/// One token for all tiles. The tiles have tokens of their own before that one is first bound.
ModelTextures::Picture ModelTextures::tilesOf(const Image& image)
{
    const TextureToken token = image.parts.empty() ? INVALID_TOKEN : _manager.createUDIMToken();
    if (token == INVALID_TOKEN)
    {
        remark(image.parts.empty()
                   ? QStringLiteral("'%1' has no tiles").arg(image.path)
                   : QStringLiteral("the tiles of '%1' are white: they want --manager array2d").arg(image.path));
        return _white;
    }
    Picture picture{token, ImageKind::Tiles};
    for (const ImagePart& part : image.parts)
    {
        Texture* const texture = _manager.textureForToken(tokenOf(part.path, part.pixels));
        if (!texture)
            continue;
        _manager.addUDIMPatch(token, part.tile, texture);
        picture.tileWidth = std::max(picture.tileWidth, std::uint32_t(std::max(widthOf(texture), 0)));
    }
    return picture;
}

} // namespace vrkview
