// SPDX-License-Identifier: MIT
#include "TextureLoader.h"

namespace Harrow::Vrk
{

TextureLoader::~TextureLoader() = default;

TextureLoader2DHelper::~TextureLoader2DHelper() = default;

bool TextureLoader2DHelper::isCompressed() const
{
    return false;
}

bool TextureLoader2DHelper::isArrayTexture() const
{
    return false;
}

bool TextureLoader2DHelper::isCubeMapTexture() const
{
    return false;
}

bool TextureLoader2DHelper::is1DTexture() const
{
    return false;
}

bool TextureLoader2DHelper::is2DTexture() const
{
    return true;
}

bool TextureLoader2DHelper::is3DTexture() const
{
    return false;
}

bool TextureLoader2DHelper::hasMipMaps() const
{
    return false;
}

quint32 TextureLoader2DHelper::depth() const
{
    return 0;
}

quint32 TextureLoader2DHelper::arraySize() const
{
    return 0;
}

quint32 TextureLoader2DHelper::cubeFaces() const
{
    return 1;
}

quint32 TextureLoader2DHelper::mipmapLevels() const
{
    return 1;
}

quint32 TextureLoader2DHelper::numMetadataEntries() const
{
    return 0;
}

QString TextureLoader2DHelper::key(unsigned index) const
{
    return QString::fromUtf8(rawKey(index));
}

QString TextureLoader2DHelper::value(unsigned index) const
{
    return QString::fromUtf8(rawValue(index));
}

const char* TextureLoader2DHelper::rawKey(unsigned /*index*/) const
{
    return nullptr;
}

const char* TextureLoader2DHelper::rawValue(unsigned /*index*/) const
{
    return nullptr;
}

} // namespace Harrow::Vrk
