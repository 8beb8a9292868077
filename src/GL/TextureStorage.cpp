// SPDX-License-Identifier: MIT
#include "Texture.h"

#include "AutoBinder.h"
#include "Diagnostics.h"
#include "GLFunctions.h"
#include "GLUtilities.h"
#include "TextureLevels.h"
#include "TextureUpload.h"

#include <cmath>

namespace Harrow::Vrk
{
namespace
{

/// Truncated and wrapped into a byte. What is beyond an int is a multiple of 256, or not a number.
unsigned char toByte(float component)
{
    const float scaled = component * 255.0f;
    return std::abs(scaled) < 2147483648.0f ? static_cast<unsigned char>(static_cast<int>(scaled)) : 0;
}

} // namespace

Texture& Texture::create2D(unsigned target, int internalFormat, int width, int height)
{
    VRK_ASSERT(target == GL_TEXTURE_2D, "Target 0x%X is not allowed.", target);
    setTarget(target);
    const AutoBinder binder(this);
    setNearestFilters();
    setSize(0, internalFormat, width, height, 1);
    const unsigned format = formatFromInternalFormat(static_cast<unsigned>(internalFormat));
    const unsigned type = typeFromInternalFormat(static_cast<unsigned>(internalFormat));
    glTexImage2D(target, 0, internalFormat, width, height, 0, format, type, nullptr);
    return *this;
}

Texture& Texture::create2DMultisample(unsigned target, int internalFormat, int width, int height, int samples)
{
    VRK_ASSERT(target == GL_TEXTURE_2D_MULTISAMPLE, "Target 0x%X is not allowed.", target);
    setTarget(target);
    const AutoBinder binder(this);
    // A multisample texture has no filters; another target, reported above, does.
    if (target != GL_TEXTURE_2D_MULTISAMPLE)
        setNearestFilters();
    glTexImage2DMultisample(target, samples, static_cast<GLenum>(internalFormat), width, height, GL_TRUE);
    return *this;
}

Texture& Texture::create3D(unsigned target, int internalFormat, int width, int height, int depth)
{
    VRK_ASSERT(target == GL_TEXTURE_2D_ARRAY || target == GL_TEXTURE_3D, "Target 0x%X is not allowed.", target);
    setTarget(target);
    const AutoBinder binder(this);
    setNearestFilters();
    setSize(0, internalFormat, width, height, depth);
    const unsigned format = formatFromInternalFormat(static_cast<unsigned>(internalFormat));
    const unsigned type = typeFromInternalFormat(static_cast<unsigned>(internalFormat));
    glTexImage3D(target, 0, internalFormat, width, height, depth, 0, format, type, nullptr);
    return *this;
}

Texture& Texture::create3DMultisample(unsigned target, int internalFormat, int width, int height, int depth,
                                      int samples)
{
    VRK_ASSERT(target == GL_TEXTURE_2D_MULTISAMPLE_ARRAY, "Target 0x%X is not allowed.", target);
    setTarget(target);
    const AutoBinder binder(this);
    if (target != GL_TEXTURE_2D_MULTISAMPLE_ARRAY)
        setNearestFilters();
    glTexImage3DMultisample(target, samples, static_cast<GLenum>(internalFormat), width, height, depth, GL_TRUE);
    return *this;
}

void Texture::setNearestFilters() const
{
    glTexParameteri(_target, GL_TEXTURE_MAG_FILTER, GL_NEAREST);
    glTexParameteri(_target, GL_TEXTURE_MIN_FILTER, GL_NEAREST);
}

void Texture::setSize(int level, int internalFormat, int width, int height, int depth)
{
    VRK_ASSERT(false == _readonly, "Not allowed to change a readonly texture");
    VRK_ASSERT(0 == _internalFormat, "Texture internal format has already been set");
    VRK_ASSERT(0 == _width, "Texture width has already been set");
    VRK_ASSERT(0 == _height, "Texture height has already been set");
    VRK_ASSERT(level == 0, "Only call setSize() for the base LOD of the texture");
    if (level != 0)
        return;
    _internalFormat = internalFormat;
    _width = width;
    _height = height;
    _depth = depth;
    _maxLevel = lastMipLevel(width, height);
}

Texture* SolidColorTexture(float r, float g, float b, float a)
{
    const unsigned char pixel[] = {toByte(r), toByte(g), toByte(b), toByte(a)};
    auto* const texture = new Texture(nullptr);
    texture->setTarget(GL_TEXTURE_2D);
    const AutoBinder binder(texture);

    const UnpackAlignment alignment(1);
    constexpr TextureParameter parameters[] = {
        {GL_TEXTURE_MIN_FILTER, GL_NEAREST}, {GL_TEXTURE_MAG_FILTER, GL_NEAREST}, {GL_TEXTURE_WRAP_S, GL_REPEAT},
        {GL_TEXTURE_WRAP_T, GL_REPEAT},      {GL_TEXTURE_BASE_LEVEL, 0},          {GL_TEXTURE_MAX_LEVEL, 0},
    };
    setTextureParameters(GL_TEXTURE_2D, parameters);
    glTexImage2D(GL_TEXTURE_2D, 0, GL_RGBA, 1, 1, 0, GL_RGBA, GL_UNSIGNED_BYTE, pixel);
    return texture;
}

} // namespace Harrow::Vrk
