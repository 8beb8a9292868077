// SPDX-License-Identifier: MIT
#pragma once

/// \file
/// The reader of one texture file or block of memory: what its header says, and the texture itself. Made by a
/// `TextureRecogniser`.

#include "Export.h"

#include <QString>

namespace Harrow::Vrk
{

class Texture;
struct TextureFileInfo;

/// Owns the memory that it reads. The order of the virtual operations is interface. Its life: made by a recogniser,
/// asked `valid`, asked `load` once, deleted by whoever asked. Only `load` needs a current context.
class VRKGL_EXPORT TextureLoader
{
public:
    TextureLoader() = default;
    virtual ~TextureLoader();
    TextureLoader(const TextureLoader&) = delete;
    TextureLoader& operator=(const TextureLoader&) = delete;

    /// Whether the header was read and accepted. The other answers count only if so.
    virtual bool valid() const = 0;

    /// What the header tells of the texture.
    virtual bool isCompressed() const = 0;
    virtual bool isArrayTexture() const = 0;
    virtual bool isCubeMapTexture() const = 0;
    virtual bool is1DTexture() const = 0;
    virtual bool is2DTexture() const = 0;
    virtual bool is3DTexture() const = 0;
    virtual bool hasMipMaps() const = 0;

    /// In texels of the base level; 0 for a dimension that the texture does not have.
    virtual quint32 width() const = 0;
    virtual quint32 height() const = 0;
    virtual quint32 depth() const = 0;
    /// Number of layers, 0 for a texture that is no array.
    virtual quint32 arraySize() const = 0;
    /// 6 for a cube map, else 1.
    virtual quint32 cubeFaces() const = 0;
    virtual quint32 mipmapLevels() const = 0;

    /// Key and value pairs of the file, counted from 0. The raw texts belong to the loader; null behind the last.
    virtual quint32 numMetadataEntries() const = 0;
    virtual QString key(unsigned index) const = 0;
    virtual QString value(unsigned index) const = 0;
    virtual const char* rawKey(unsigned index) const = 0;
    virtual const char* rawValue(unsigned index) const = 0;

    /// Makes the texture, which belongs to the caller. Null on failure, with nothing left behind.
    virtual Texture* load(const TextureFileInfo& info) = 0;
};

/// The answers of a single plain 2D image. A reader of one adds `valid`, `width`, `height` and `load`.
class VRKGL_EXPORT TextureLoader2DHelper : public TextureLoader
{
public:
    ~TextureLoader2DHelper() override;

    bool isCompressed() const override;
    bool isArrayTexture() const override;
    bool isCubeMapTexture() const override;
    bool is1DTexture() const override;
    bool is2DTexture() const override;
    bool is3DTexture() const override;
    bool hasMipMaps() const override;
    quint32 depth() const override;
    quint32 arraySize() const override;
    quint32 cubeFaces() const override;
    quint32 mipmapLevels() const override;
    quint32 numMetadataEntries() const override;
    /// `rawKey` and `rawValue` as UTF-8 text; empty for null.
    QString key(unsigned index) const override;
    QString value(unsigned index) const override;
    const char* rawKey(unsigned index) const override;
    const char* rawValue(unsigned index) const override;
};

} // namespace Harrow::Vrk
