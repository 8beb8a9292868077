// SPDX-License-Identifier: MIT
#include "KTXLayout.h"

#include "CubemapFaces.h"
#include "GLFunctions.h"

#include <QtEndian>

#include <algorithm>
#include <cstring>
#include <iterator>
#include <limits>

namespace Harrow::Vrk
{
namespace
{

constexpr unsigned char kIdentifier[kKTXIdentifierBytes] = {0xAB, 0x4B, 0x54, 0x58, 0x20, 0x31,
                                                            0x31, 0xBB, 0x0D, 0x0A, 0x1A, 0x0A};

quint32 readWord(const unsigned char* bytes)
{
    return qFromUnaligned<quint32>(bytes);
}

// ---- bytes of a texel ----------------------------------------------------------------------------------------------

struct FormatRow
{
    GLenum format;
    quint64 channels;
};

constexpr FormatRow kFormats[] = {
    {GL_RED, 1},
    {GL_GREEN, 1},
    {GL_BLUE, 1},
    {GL_ALPHA, 1},
    {GL_LUMINANCE, 1},
    {GL_RED_INTEGER, 1},
    {GL_GREEN_INTEGER, 1},
    {GL_BLUE_INTEGER, 1},
    {GL_DEPTH_COMPONENT, 1},
    {GL_STENCIL_INDEX, 1},
    {GL_RG, 2},
    {GL_RG_INTEGER, 2},
    {GL_LUMINANCE_ALPHA, 2},
    {GL_DEPTH_STENCIL, 2},
    {GL_RGB, 3},
    {GL_BGR, 3},
    {GL_RGB_INTEGER, 3},
    {GL_BGR_INTEGER, 3},
    {GL_RGBA, 4},
    {GL_BGRA, 4},
    {GL_RGBA_INTEGER, 4},
    {GL_BGRA_INTEGER, 4},
};

struct TypeRow
{
    GLenum type;
    quint64 bytes;
    bool isPacked; ///< the bytes are those of a whole texel, not of a channel
};

constexpr TypeRow kTypes[] = {
    {GL_UNSIGNED_BYTE, 1, false},
    {GL_BYTE, 1, false},
    {GL_UNSIGNED_SHORT, 2, false},
    {GL_SHORT, 2, false},
    {GL_HALF_FLOAT, 2, false},
    {GL_UNSIGNED_INT, 4, false},
    {GL_INT, 4, false},
    {GL_FLOAT, 4, false},
    {GL_UNSIGNED_BYTE_3_3_2, 1, true},
    {GL_UNSIGNED_BYTE_2_3_3_REV, 1, true},
    {GL_UNSIGNED_SHORT_5_6_5, 2, true},
    {GL_UNSIGNED_SHORT_5_6_5_REV, 2, true},
    {GL_UNSIGNED_SHORT_4_4_4_4, 2, true},
    {GL_UNSIGNED_SHORT_4_4_4_4_REV, 2, true},
    {GL_UNSIGNED_SHORT_5_5_5_1, 2, true},
    {GL_UNSIGNED_SHORT_1_5_5_5_REV, 2, true},
    {GL_UNSIGNED_INT_8_8_8_8, 4, true},
    {GL_UNSIGNED_INT_8_8_8_8_REV, 4, true},
    {GL_UNSIGNED_INT_10_10_10_2, 4, true},
    {GL_UNSIGNED_INT_2_10_10_10_REV, 4, true},
    {GL_UNSIGNED_INT_24_8, 4, true},
    {GL_UNSIGNED_INT_10F_11F_11F_REV, 4, true},
    {GL_UNSIGNED_INT_5_9_9_9_REV, 4, true},
    {GL_FLOAT_32_UNSIGNED_INT_24_8_REV, 8, true},
};

// What OpenGL does not know it refuses without reading. Should it know more than these tables, this is enough.
constexpr quint64 kChannelsOfUnknownFormat = 4;
constexpr TypeRow kUnknownType = {0, 8, false};

quint64 texelBytes(GLenum format, GLenum type)
{
    const auto* const foundType =
        std::find_if(std::begin(kTypes), std::end(kTypes), [type](const TypeRow& row) { return row.type == type; });
    const TypeRow& typeRow = foundType != std::end(kTypes) ? *foundType : kUnknownType;
    if (typeRow.isPacked)
        return typeRow.bytes;
    const auto* const foundFormat = std::find_if(std::begin(kFormats), std::end(kFormats),
                                                 [format](const FormatRow& row) { return row.format == format; });
    return typeRow.bytes * (foundFormat != std::end(kFormats) ? foundFormat->channels : kChannelsOfUnknownFormat);
}

/// What loading a level touches of the file, from the level's first byte on.
quint64 bytesTouched(const KTXHeader& header, const KTXLevel& level, quint32 width, quint32 height, quint32 depth)
{
    const KTXHeader::Shape shape = header.shape();
    const bool isCube = shape == KTXHeader::Shape::eCube;
    quint64 one = header.isForeignOrder() ? level.imageSize : 0; // swapped, whatever becomes of it
    if (shape != KTXHeader::Shape::eNone)
    {
        const quint64 uploaded =
            header.isCompressed() ? level.imageSize : ktxTransferBytes(header, width, height, isCube ? 0 : depth);
        one = std::max(one, uploaded);
    }
    const quint64 otherFaces = isCube ? (kCubemapFaces - 1) * level.stride() : 0;
    return one > std::numeric_limits<quint64>::max() - otherFaces ? one : otherFaces + one;
}

/// From a level's first byte to the next level's size word.
quint64 advance(const KTXHeader& header, const KTXLevel& level)
{
    switch (header.shape())
    {
    case KTXHeader::Shape::eNone:
        return 0;
    case KTXHeader::Shape::eCube:
        return kCubemapFaces * level.stride();
    default:
        return level.stride();
    }
}

} // namespace

bool isKTXIdentifier(const void* bytes)
{
    return std::memcmp(bytes, kIdentifier, sizeof kIdentifier) == 0;
}

// ---- the header ----------------------------------------------------------------------------------------------------

KTXHeader KTXHeader::read(const void* bytes)
{
    KTXHeader header = {};
    if (bytes)
        std::memcpy(&header, bytes, sizeof header);
    return header;
}

KTXHeader::Shape KTXHeader::extent() const
{
    if (pixelWidth == 0 || (pixelHeight == 0 && pixelDepth != 0))
        return Shape::eNone;
    if (pixelHeight == 0)
        return Shape::e1D;
    return pixelDepth == 0 ? Shape::e2D : Shape::e3D;
}

KTXHeader::Shape KTXHeader::shape() const
{
    return numberOfFaces == 6 ? Shape::eCube : extent();
}

bool KTXHeader::isCompressed() const
{
    return glType == 0;
}

bool KTXHeader::isForeignOrder() const
{
    return endianness != kKTXNativeOrder;
}

quint32 KTXHeader::storedLevels() const
{
    return std::max<quint32>(numberOfMipmapLevels, 1);
}

// ---- byte order ----------------------------------------------------------------------------------------------------

quint32 swapKTXWord(quint32 word)
{
    return ((word & 0xF) << 24) | ((word & 0xF00) << 8) | ((word >> 24) & 0xF) | ((word >> 8) & 0xF00);
}

void swapKTXHeader(unsigned char* bytes)
{
    swapKTXWords(bytes + kKTXIdentifierBytes, kKTXHeaderBytes - kKTXIdentifierBytes);
}

void swapKTXShorts(unsigned char* bytes, quint64 count)
{
    for (quint64 i = 0; i + 2 <= count; i += 2)
        std::swap(bytes[i], bytes[i + 1]);
}

void swapKTXWords(unsigned char* bytes, quint64 count)
{
    for (quint64 i = 0; i + 4 <= count; i += 4)
        qToUnaligned(swapKTXWord(readWord(bytes + i)), bytes + i);
}

// ---- metadata ------------------------------------------------------------------------------------------------------

KTXMetadata walkKTXMetadata(const unsigned char* block, quint32 count, quint64 readable)
{
    KTXMetadata metadata;
    const quint64 end = count;
    quint64 cursor = 0;
    while (cursor < end && cursor + sizeof(quint32) <= readable)
    {
        // In the order of this machine, whatever the file's: the header has become that too.
        const quint32 size = readWord(block + cursor);
        cursor += sizeof size;
        metadata.keys.append(reinterpret_cast<const char*>(block + cursor));
        metadata.sizes.append(size);
        cursor += size;
    }
    metadata.endsWithBlock = cursor == end;
    return metadata;
}

// ---- levels --------------------------------------------------------------------------------------------------------

quint64 ktxTransferBytes(const KTXHeader& header, quint32 width, quint32 height, quint32 depth)
{
    constexpr quint64 kMost = std::numeric_limits<quint64>::max();
    const quint64 rowBytes = width * texelBytes(header.glFormat, header.glType);
    if (rowBytes == 0)
        return 0;
    const quint64 rows = std::max<quint64>(height, 1) * std::max<quint64>(depth, 1);
    const quint64 alignedRowBytes = (rowBytes + 3) & ~quint64(3);
    return rows - 1 > (kMost - rowBytes) / alignedRowBytes ? kMost : (rows - 1) * alignedRowBytes + rowBytes;
}

std::optional<KTXLevels> findKTXLevels(const KTXHeader& header, const unsigned char* data, quint64 length)
{
    if (header.storedLevels() > kMaxKTXLevels)
        return std::nullopt;
    KTXLevels levels;
    quint32 width = header.pixelWidth;
    quint32 height = header.pixelHeight;
    quint32 depth = header.pixelDepth;
    quint64 cursor = 0;
    for (quint32 i = 0; i < header.storedLevels(); ++i)
    {
        if (cursor > length || length - cursor < sizeof(quint32))
            return std::nullopt;
        const quint32 stored = readWord(data + cursor);
        const KTXLevel level = {cursor + sizeof stored, header.isForeignOrder() ? swapKTXWord(stored) : stored};
        if (bytesTouched(header, level, width, height, depth) > length - level.offset)
            return std::nullopt;
        levels.append(level);
        cursor = level.offset + advance(header, level);
        width = nextKTXLevelSize(width);
        height = nextKTXLevelSize(height);
        depth = nextKTXLevelSize(depth);
    }
    return levels;
}

} // namespace Harrow::Vrk
