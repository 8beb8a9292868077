// SPDX-License-Identifier: MIT
#include "ASTCReader.h"

#include "Diagnostics.h"
#include "GLFunctions.h"
#include "Texture.h"
#include "TextureFileInfo.h"
#include "TextureProcessing.h"

#include <QMessageLogger>

#include <VrkCore/Memory.h>

#include <algorithm>
#include <cstring>
#include <iterator>
#include <limits>

namespace Harrow::Vrk
{

struct ASTCReader::Record
{
    std::unique_ptr<Memory> memory;
    QString name;
    bool valid = false;
    const unsigned char* header = nullptr;
};

namespace
{

/// Of the header, and of each block.
constexpr quint64 kUnitBytes = 16;

/// Where the header has its fields: one byte for each side of a block, three for each of the image.
constexpr size_t kBlockSizes = 4;
constexpr size_t kImageSizes = 7;

struct FormatRow
{
    unsigned char width, height;
    GLenum linear, srgb;
};

constexpr FormatRow kFormats[] = {
    {4, 4, GL_COMPRESSED_RGBA_ASTC_4x4_KHR, GL_COMPRESSED_SRGB8_ALPHA8_ASTC_4x4_KHR},
    {5, 4, GL_COMPRESSED_RGBA_ASTC_5x4_KHR, GL_COMPRESSED_SRGB8_ALPHA8_ASTC_5x4_KHR},
    {5, 5, GL_COMPRESSED_RGBA_ASTC_5x5_KHR, GL_COMPRESSED_SRGB8_ALPHA8_ASTC_5x5_KHR},
    {6, 5, GL_COMPRESSED_RGBA_ASTC_6x5_KHR, GL_COMPRESSED_SRGB8_ALPHA8_ASTC_6x5_KHR},
    {6, 6, GL_COMPRESSED_RGBA_ASTC_6x6_KHR, GL_COMPRESSED_SRGB8_ALPHA8_ASTC_6x6_KHR},
    {8, 5, GL_COMPRESSED_RGBA_ASTC_8x5_KHR, GL_COMPRESSED_SRGB8_ALPHA8_ASTC_8x5_KHR},
    {8, 6, GL_COMPRESSED_RGBA_ASTC_8x6_KHR, GL_COMPRESSED_SRGB8_ALPHA8_ASTC_8x6_KHR},
    {8, 8, GL_COMPRESSED_RGBA_ASTC_8x8_KHR, GL_COMPRESSED_SRGB8_ALPHA8_ASTC_8x8_KHR},
    {10, 5, GL_COMPRESSED_RGBA_ASTC_10x5_KHR, GL_COMPRESSED_SRGB8_ALPHA8_ASTC_10x5_KHR},
    {10, 6, GL_COMPRESSED_RGBA_ASTC_10x6_KHR, GL_COMPRESSED_SRGB8_ALPHA8_ASTC_10x6_KHR},
    {10, 8, GL_COMPRESSED_RGBA_ASTC_10x8_KHR, GL_COMPRESSED_SRGB8_ALPHA8_ASTC_10x8_KHR},
    {10, 10, GL_COMPRESSED_RGBA_ASTC_10x10_KHR, GL_COMPRESSED_SRGB8_ALPHA8_ASTC_10x10_KHR},
    {12, 10, GL_COMPRESSED_RGBA_ASTC_12x10_KHR, GL_COMPRESSED_SRGB8_ALPHA8_ASTC_12x10_KHR},
    {12, 12, GL_COMPRESSED_RGBA_ASTC_12x12_KHR, GL_COMPRESSED_SRGB8_ALPHA8_ASTC_12x12_KHR},
};
static_assert(std::size(kFormats) == 14, "one row for each block size of the OpenGL extension");

quint64 blockSize(const unsigned char* header, size_t axis)
{
    return header[kBlockSizes + axis];
}

quint64 imageSize(const unsigned char* header, size_t axis)
{
    const unsigned char* const bytes = header + kImageSizes + 3 * axis;
    return bytes[0] | quint64(bytes[1]) << 8 | quint64(bytes[2]) << 16;
}

/// Whether a file of `fileBytes` bytes holds the header and exactly the blocks that it tells of.
bool isSizeRight(const unsigned char* header, quint64 fileBytes)
{
    quint64 blocks = 1;
    for (size_t axis = 0; axis < 3; ++axis)
    {
        const quint64 side = blockSize(header, axis);
        if (side == 0)
            return false;
        const quint64 count = (imageSize(header, axis) + side - 1) / side;
        if (count > std::numeric_limits<quint64>::max() / kUnitBytes / (blocks + 1))
            return false; // more than any file has
        blocks *= count;
    }
    return fileBytes == (blocks + 1) * kUnitBytes;
}

/// 0 for a block size that OpenGL has no format for.
GLenum internalFormat(const unsigned char* header, bool srgb)
{
    const auto* const row =
        std::find_if(std::begin(kFormats), std::end(kFormats),
                     [header](const FormatRow& candidate)
                     { return candidate.width == blockSize(header, 0) && candidate.height == blockSize(header, 1); });
    if (row == std::end(kFormats))
        return 0;
    return srgb ? row->srgb : row->linear;
}

/// Null when no texture unit is free. What OpenGL says is not looked at.
std::unique_ptr<Texture> upload(const unsigned char* header, bool srgb, const void* data, GLsizei dataSize)
{
    auto texture = std::make_unique<Texture>(nullptr);
    texture->setTarget(GL_TEXTURE_2D);
    if (!texture->bind())
        return nullptr;
    glCompressedTexImage2D(texture->target(), 0, internalFormat(header, srgb),
                           static_cast<GLsizei>(imageSize(header, 0)), static_cast<GLsizei>(imageSize(header, 1)), 0,
                           dataSize, data);
    glTexParameteri(texture->target(), GL_TEXTURE_MAG_FILTER, GL_NEAREST);
    glTexParameteri(texture->target(), GL_TEXTURE_MIN_FILTER, GL_NEAREST);
    texture->unbind();
    return texture;
}

/// Null when the blocks cannot be had, or not be uploaded.
std::unique_ptr<Texture> loadBlocks(Memory& memory, const unsigned char* header, bool srgb)
{
    const quint64 dataSize = memory.size() - kUnitBytes;
    if (dataSize > quint64(std::numeric_limits<GLsizei>::max()))
        return nullptr;
    void* const data = memory.get(kUnitBytes, dataSize);
    // A picture without texels has no blocks.
    if (!data && dataSize != 0)
        return nullptr;
    std::unique_ptr<Texture> texture = upload(header, srgb, data, static_cast<GLsizei>(dataSize));
    memory.release(data);
    return texture;
}

} // namespace

ASTCReader::ASTCReader(Memory* memory, const QString& name) : _record(std::make_unique<Record>())
{
    _record->memory.reset(memory);
    _record->name = name;
    VRK_ASSERT_RETURN(nullptr != memory, , "Memory is NULL on ASTCReader");
    _record->header = static_cast<const unsigned char*>(memory->get(0, kUnitBytes));
    _record->valid = _record->header && std::memcmp(_record->header, kMagic, sizeof kMagic) == 0 &&
                     isSizeRight(_record->header, memory->size());
}

ASTCReader::~ASTCReader() = default;

bool ASTCReader::valid() const
{
    return _record->valid;
}

bool ASTCReader::isCompressed() const
{
    return true;
}

quint32 ASTCReader::width() const
{
    return _record->header ? static_cast<quint32>(imageSize(_record->header, 0)) : 0;
}

quint32 ASTCReader::height() const
{
    return _record->header ? static_cast<quint32>(imageSize(_record->header, 1)) : 0;
}

Texture* ASTCReader::load(const TextureFileInfo& info)
{
    std::unique_ptr<Texture> loaded;
    if (_record->header)
        loaded = loadBlocks(*_record->memory, _record->header, info.srgb);
    if (!loaded)
    {
        QMessageLogger().warning("Texture %s failed to load.", qPrintable(_record->name));
        return nullptr;
    }
    Texture* texture = loaded.release();
    RemapColorRange(texture, info.lowValue, info.highValue); // may replace it
    return texture;
}

} // namespace Harrow::Vrk
