// SPDX-License-Identifier: MIT
#include "ModelTextures.h"

#include "Terminal.h"

#include <VrkGL/TextureFileInfo.h>
#include <VrkGL/TextureIO.h>
#include <VrkGL/TextureManager.h>

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

TextureToken tokenOfImage(TextureManager& manager, const Image& image)
{
    if (image.pixels.isNull())
    {
        const TextureToken token = manager.tokenForImage(image.path, colorInfo());
        // Loads it. Where that fails the manager gives white and tries again each time, so each frame.
        return manager.findToken(manager.textureForToken(token));
    }
    // OpenGL has the bottom row first.
    const QImage pixels = image.pixels.convertToFormat(QImage::Format_ARGB32).mirrored();
    return manager.tokenForTexture(QImageToTexture(pixels, false, colorInfo()));
}

} // namespace

ModelTextures::ModelTextures(TextureManager& manager, const Model& model)
    : _model(model), _white(manager.tokenForColor(Qt::white))
{
    ProgressLine progress;
    _ofImage.reserve(model.images.size());
    for (const Image& image : model.images)
    {
        progress.show(QStringLiteral("loading images"), float(_ofImage.size()) / float(model.images.size()));
        const TextureToken token = tokenOfImage(manager, image);
        _ofImage.push_back(token == INVALID_TOKEN ? _white : token);
    }
}

TextureToken ModelTextures::tokenOf(const Mesh& mesh) const
{
    const Material& material = _model.materials[mesh.material];
    return material.baseColorImage && !mesh.texCoords.empty() ? _ofImage[*material.baseColorImage] : _white;
}

} // namespace vrkview
