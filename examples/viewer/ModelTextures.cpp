// SPDX-License-Identifier: MIT
#include "ModelTextures.h"

#include "LayeredTexture.h"
#include "Streamers.h"
#include "Terminal.h"

#include <VrkGL/AutoBinder.h>
#include <VrkGL/BindlessTextureManager.h>
#include <VrkGL/GLFunctions.h>
#include <VrkGL/Texture.h>
#include <VrkGL/TextureFileInfo.h>
#include <VrkGL/TextureIO.h>
#include <VrkGL/TextureManager.h>
#include <VrkGL/TextureStreamer.h>

#include <QSize>

namespace vrkview
{

using namespace Harrow::Vrk;

namespace
{

TextureFileInfo infoOf(bool isGammaEncoded)
{
    TextureFileInfo info;
    info.srgb = isGammaEncoded;
    return info;
}

QSize sizeOf(Texture* texture)
{
    const AutoBinder bound(texture);
    return {texture->width(0), texture->height(0)};
}

/// Shaders wrap coordinates themselves, and each material in its own way; textures of KTX and ASTC files repeat of
/// themselves.
void clampToEdges(Texture* texture)
{
    const AutoBinder bound(texture);
    for (const GLenum wrap : {GL_TEXTURE_WRAP_S, GL_TEXTURE_WRAP_T})
        glTexParameteri(texture->target(), wrap, GL_CLAMP_TO_EDGE);
}

/// Those that hold no colours.
constexpr std::optional<MaterialImage> Material::*kNumberImages[] = {&Material::normalImage, &Material::surfaceImage,
                                                                     &Material::occlusionImage};

} // namespace

ModelTextures::ModelTextures(TextureManager& manager, Streamers& streamers, const Model& model)
    : _manager(manager), _streamers(streamers), _model(model)
{
    _white.token = manager.tokenForColor(Qt::white);
    for (auto& loaded : _loaded)
        loaded.resize(model.images.size());
    ProgressLine progress;
    std::size_t done = 0;
    for (const Material& material : model.materials)
    {
        progress.show(QStringLiteral("loading images"), float(done++) / float(model.materials.size()));
        if (material.baseColorImage)
            load(*material.baseColorImage, Content::Colors);
        if (material.emissionImage)
            load(material.emissionImage->image, Content::Colors);
        for (const auto image : kNumberImages)
            if (material.*image)
                load((material.*image)->image, Content::Numbers);
    }
}

void ModelTextures::load(std::size_t image, Content content)
{
    std::optional<Picture>& loaded = _loaded[int(content)][image];
    if (!loaded)
        loaded = pictureOf(_model.images[image], content);
}

PicturedMaterial ModelTextures::picturedMaterial(std::size_t index, const Mesh& mesh) const
{
    const Material& material = _model.materials[index];
    PicturedMaterial result;
    result.material = &material;
    result.baseColor = _white;
    if (material.baseColorImage && !mesh.texCoords.empty())
    {
        const std::optional<Picture>& loaded = _loaded[int(Content::Colors)][*material.baseColorImage];
        if (loaded && loaded->token != INVALID_TOKEN)
            result.baseColor = *loaded;
    }
    result.normal = mapOf(material.normalImage, mesh, Content::Numbers);
    result.surface = mapOf(material.surfaceImage, mesh, Content::Numbers);
    result.occlusion = mapOf(material.occlusionImage, mesh, Content::Numbers);
    result.emission = mapOf(material.emissionImage, mesh, Content::Colors);
    return result;
}

MaterialMap ModelTextures::mapOf(const std::optional<MaterialImage>& use, const Mesh& mesh, Content content) const
{
    if (!use || mesh.texCoords.empty())
        return {};
    const std::optional<Picture>& loaded = _loaded[int(content)][use->image];
    if (!loaded || loaded->token == INVALID_TOKEN)
        return {};
    return {&*use, *loaded};
}

QList<TextureToken> ModelTextures::tokens() const
{
    QList<TextureToken> all{_white.token};
    for (const auto& loaded : _loaded)
        for (const std::optional<Picture>& picture : loaded)
            if (picture && picture->token != INVALID_TOKEN)
                all.append(picture->token);
    return all;
}

QString ModelTextures::whiteTiles() const
{
    if (_whiteTiles.empty())
        return {};
    const QString which = _whiteTiles.size() == 1 ? QStringLiteral("'%1'").arg((*_whiteTiles.begin())->path)
                                                  : QStringLiteral("%1 pictures").arg(_whiteTiles.size());
    return QStringLiteral("the tiles of %1 are white: they want --manager array2d").arg(which);
}

Picture ModelTextures::pictureOf(const Image& image, Content content)
{
    if (image.streamer)
        return {_manager.tokenForTexture(_streamers.make(*image.streamer))};
    switch (image.kind)
    {
    case ImageKind::Tiles:
        return tilesOf(image, content);
    case ImageKind::Cube:
    case ImageKind::Layers:
        return {_manager.tokenForTexture(newLayeredTexture(image)), image.kind};
    case ImageKind::Flat:
        break;
    }
    return {tokenOf(image.path, image.pixels, content)};
}

TextureToken ModelTextures::tokenOf(const QString& path, const QImage& pixels, Content content)
{
    const TextureFileInfo info = infoOf(content == Content::Colors);
    if (pixels.isNull() && content == Content::Colors)
    {
        // Loads it. Where that fails the manager gives white and tries again each time, so each frame.
        Texture* const texture = _manager.textureForToken(_manager.tokenForImage(path, info));
        // The bindless manager has made a handle of it, and OpenGL changes nothing of such a texture any more.
        if (texture && !dynamic_cast<BindlessTextureManager*>(&_manager))
            clampToEdges(texture);
        return _manager.findToken(texture);
    }
    if (pixels.isNull())
    {
        // Not by its path, by which the manager knows the same picture as one of colours.
        Texture* const texture = LoadTextureFromFile(path, info);
        if (!texture)
            return INVALID_TOKEN;
        clampToEdges(texture);
        return _manager.tokenForTexture(texture);
    }
    if (pixels.format() == QImage::Format_Grayscale8 || pixels.format() == QImage::Format_RGBA64)
        return _manager.tokenForTexture(newPlainTexture(pixels));
    // OpenGL has the bottom row first.
    const QImage flipped = pixels.convertToFormat(QImage::Format_ARGB32).mirrored();
    return _manager.tokenForTexture(QImageToTexture(flipped, false, info));
}

/// One token for all tiles. The tiles have tokens of their own before that one is first bound.
Picture ModelTextures::tilesOf(const Image& image, Content content)
{
    if (image.parts.empty())
    {
        remarkOnce(QStringLiteral("'%1' has no tiles").arg(image.path));
        return {INVALID_TOKEN};
    }
    const TextureToken token = _manager.createUDIMToken();
    if (token == INVALID_TOKEN)
    {
        _whiteTiles.insert(&image);
        return {INVALID_TOKEN};
    }
    Picture picture{token, ImageKind::Tiles};
    for (const ImagePart& part : image.parts)
    {
        const TextureToken partToken = tokenOf(part.path, part.pixels, content);
        Texture* const texture = partToken == INVALID_TOKEN ? nullptr : _manager.textureForToken(partToken);
        if (!texture)
            continue;
        _manager.addUDIMPatch(token, part.tile, texture);
        const QSize size = sizeOf(texture);
        picture.tileWidth = std::max(picture.tileWidth, std::uint32_t(std::max(size.width(), 0)));
        picture.tileHeight = std::max(picture.tileHeight, std::uint32_t(std::max(size.height(), 0)));
    }
    return picture;
}

} // namespace vrkview
