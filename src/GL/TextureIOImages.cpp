// SPDX-License-Identifier: MIT
// Textures from decoded images.
#include "TextureIO.h"

#include "Diagnostics.h"
#include "GLFunctions.h"
#include "Texture.h"
#include "TextureFileInfo.h"
#include "TextureProcessing.h"
#include "TextureUpload.h"

#include <QColor>
#include <QFileInfo>
#include <QImage>

#include <cstring>
#include <memory>

namespace Harrow::Vrk
{
namespace
{

/// Trilinear, clamped to the edge.
constexpr TextureParameter kImageParameters[] = {
    {GL_TEXTURE_MIN_FILTER, GL_LINEAR_MIPMAP_LINEAR},
    {GL_TEXTURE_MAG_FILTER, GL_LINEAR},
    {GL_TEXTURE_WRAP_S, GL_CLAMP_TO_EDGE},
    {GL_TEXTURE_WRAP_T, GL_CLAMP_TO_EDGE},
    {GL_TEXTURE_BASE_LEVEL, 0},
    {GL_TEXTURE_MAX_LEVEL, 4},
};

/// The image's rows without a gap between them, for an image over memory of somebody else's layout.
QImage withoutGaps(const QImage& image)
{
    return image.bytesPerLine() == qsizetype(image.width()) * 4 ? image : image.copy();
}

/// Whether opening `path` could wait for ever for the other end.
bool isPipeOrDevice(const QString& path)
{
    const QFileInfo file(path);
    return file.exists() && !file.isFile() && !file.isDir();
}

/// Whole rows through a buffer. `QImage::mirrored` swaps pixel by pixel; for pictures with power-of-two sides that was
/// measured to take from as long as this to ten times as long, by where in memory the image lies.
void mirrorVertically(QImage& image)
{
    const auto rowBytes = static_cast<size_t>(image.bytesPerLine());
    unsigned char* upper = image.bits();
    if (!upper)
        return;
    unsigned char* lower = upper + rowBytes * static_cast<size_t>(image.height() - 1);
    const auto row = std::make_unique<unsigned char[]>(rowBytes);
    for (; upper < lower; upper += rowBytes, lower -= rowBytes)
    {
        std::memcpy(row.get(), upper, rowBytes);
        std::memcpy(upper, lower, rowBytes);
        std::memcpy(lower, row.get(), rowBytes);
    }
}

/// The image of a file with its bottom row first, 32 bits per pixel. Null for what Qt cannot decode, and when there is
/// no memory for the conversion.
QImage decode(const QString& path)
{
    QImage image;
    if (isPipeOrDevice(path) || !image.load(path))
        return QImage();
    mirrorVertically(image);
    if (image.depth() != 32)
        image.convertTo(QImage::Format_ARGB32);
    return image;
}

void specifyImage(Texture& texture, const QImage& image, GLint internalFormat, GLenum format, GLenum type)
{
    const QImage pixels = withoutGaps(image);
    texture.setSize(0, internalFormat, pixels.width(), pixels.height(), 1);
    glTexImage2D(GL_TEXTURE_2D, 0, internalFormat, pixels.width(), pixels.height(), 0, format, type,
                 pixels.constBits());
}

} // namespace

Texture* LoadTextureFromQImageFile(const QString& path, const TextureFileInfo& info)
{
    const QImage image = decode(path);
    if (image.isNull())
    {
        VRK_LOG_WARNING("Failed to load %s", qPrintable(path));
        return nullptr;
    }
    return QImageToTexture(image, false, info);
}

Texture* QImageToTexture(const QImage& image, bool asRG16F, const TextureFileInfo& info)
{
    // Either way OpenGL reads four bytes for each pixel.
    VRK_ASSERT_RETURN(32 == image.depth() || image.isNull(), nullptr, "Image has %d bits per pixel, not 32",
                      image.depth());

    auto texture = std::make_unique<Texture>(nullptr);
    texture->setTarget(GL_TEXTURE_2D);
    if (!texture->bind())
        return nullptr;
    const UnpackAlignment alignment(1);
    setTextureParameters(GL_TEXTURE_2D, kImageParameters);
    setTextureAnisotropy(GL_TEXTURE_2D, info.anisotropy);
    if (asRG16F)
    {
        VRK_LOG_DEBUG("Loading image as GL_RG16F...");
        specifyImage(*texture, image, GL_RG16F, GL_RG, GL_HALF_FLOAT);
    }
    else
    {
        specifyImage(*texture, image, info.srgb ? GL_SRGB8_ALPHA8 : GL_RGBA, GL_BGRA, GL_UNSIGNED_BYTE);
    }
    glGenerateMipmap(GL_TEXTURE_2D);
    texture->unbind();

    Texture* result = texture.release();
    if (info.remapColorRange)
        RemapColorRange(result, info.lowValue, info.highValue); // may replace it
    return result;
}

Texture* MakeColorTexture(const QColor& color)
{
    QImage image(1, 1, QImage::Format_ARGB32);
    image.fill(color);
    return QImageToTexture(image, false, TextureFileInfo());
}

} // namespace Harrow::Vrk
