// SPDX-License-Identifier: MIT
#include "LayeredTexture.h"

#include "Model.h"

#include <VrkGL/AutoBinder.h>
#include <VrkGL/GLFunctions.h>
#include <VrkGL/Texture.h>

#include <algorithm>
#include <bit>

namespace vrkview
{

using namespace Harrow::Vrk;

namespace
{

struct TexelForm
{
    GLint internalFormat;
    GLenum format;
    GLenum type;
};

TexelForm formOf(const QImage& pixels)
{
    if (pixels.format() == QImage::Format_Grayscale8)
        return {GL_R8, GL_RED, GL_UNSIGNED_BYTE};
    if (pixels.format() == QImage::Format_RGBA64)
        return {GL_RGBA16F, GL_RGBA, GL_UNSIGNED_SHORT};
    return {GL_SRGB8_ALPHA8, GL_RGBA, GL_UNSIGNED_BYTE};
}

QImage converted(const QImage& pixels)
{
    const bool isPlain = pixels.format() == QImage::Format_Grayscale8 || pixels.format() == QImage::Format_RGBA64;
    return isPlain ? pixels : pixels.convertToFormat(QImage::Format_RGBA8888);
}

Texture* newTexture(GLenum target, const QImage& first, int layers)
{
    return new Texture(target, formOf(first).internalFormat, first.width(), first.height(), layers, nullptr);
}

/// Of the bound texture, with `upload` for its base level.
template <typename Upload> void fill(GLenum target, const QImage& first, const Upload& upload)
{
    GLint alignment = 0;
    glGetIntegerv(GL_UNPACK_ALIGNMENT, &alignment);
    glPixelStorei(GL_UNPACK_ALIGNMENT, 4); // as QImage has its rows
    upload();
    glPixelStorei(GL_UNPACK_ALIGNMENT, alignment);
    const int levels = int(std::bit_width(unsigned(std::max(first.width(), first.height()))));
    glTexParameteri(target, GL_TEXTURE_MAX_LEVEL, levels - 1);
    glTexParameteri(target, GL_TEXTURE_MIN_FILTER, GL_LINEAR_MIPMAP_LINEAR);
    glTexParameteri(target, GL_TEXTURE_MAG_FILTER, GL_LINEAR);
    glTexParameteri(target, GL_TEXTURE_WRAP_S, GL_CLAMP_TO_EDGE);
    glTexParameteri(target, GL_TEXTURE_WRAP_T, GL_CLAMP_TO_EDGE);
    glGenerateMipmap(target);
}

} // namespace

Texture* newLayeredTexture(const Image& image)
{
    const bool isCube = image.kind == ImageKind::Cube;
    const GLenum target = isCube ? GL_TEXTURE_CUBE_MAP : GL_TEXTURE_2D_ARRAY;
    const QImage first = converted(image.parts.front().pixels);
    const TexelForm form = formOf(first);
    const auto layers = int(image.parts.size());
    Texture* const texture = newTexture(target, first, isCube ? 1 : layers);
    const AutoBinder bound(texture);
    fill(target, first,
         [&]
         {
             if (!isCube)
                 glTexImage3D(target, 0, form.internalFormat, first.width(), first.height(), layers, 0, form.format,
                              form.type, nullptr);
             for (int layer = 0; layer < layers; ++layer)
             {
                 // OpenGL has the bottom row first, but the faces of a cube top row first.
                 const QImage pixels = converted(image.parts[std::size_t(layer)].pixels).mirrored(false, !isCube);
                 if (isCube)
                     glTexImage2D(GL_TEXTURE_CUBE_MAP_POSITIVE_X + GLenum(layer), 0, form.internalFormat, first.width(),
                                  first.height(), 0, form.format, form.type, pixels.constBits());
                 else
                     glTexSubImage3D(target, 0, 0, 0, layer, first.width(), first.height(), 1, form.format, form.type,
                                     pixels.constBits());
             }
         });
    return texture;
}

Texture* newPlainTexture(const QImage& pixels)
{
    const QImage flipped = pixels.mirrored();
    const TexelForm form = formOf(flipped);
    Texture* const texture = newTexture(GL_TEXTURE_2D, flipped, 1);
    const AutoBinder bound(texture);
    fill(GL_TEXTURE_2D, flipped,
         [&]
         {
             glTexImage2D(GL_TEXTURE_2D, 0, form.internalFormat, flipped.width(), flipped.height(), 0, form.format,
                          form.type, flipped.constBits());
         });
    return texture;
}

} // namespace vrkview
