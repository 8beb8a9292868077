// SPDX-License-Identifier: MIT
#pragma once

/// \file
/// What a KTX 1.1 file is made of, read out of hostile bytes: its header, the walk over its metadata, and where its
/// levels lie. No OpenGL is called. Not installed.

#include "Export.h"

#include <QList>
#include <QVarLengthArray>
#include <QtGlobal>

#include <optional>

namespace Harrow::Vrk
{

inline constexpr quint64 kKTXIdentifierBytes = 12;
inline constexpr quint64 kKTXHeaderBytes = 64;
/// What `endianness` reads as in a file of this machine's byte order.
inline constexpr quint32 kKTXNativeOrder = 0x04030201;

/// Whether the 12 bytes are the identifier of version 1.1.
VRKGL_EXPORT bool isKTXIdentifier(const void* bytes);

/// The published layout, byte for byte.
struct VRKGL_EXPORT KTXHeader
{
    enum class Shape
    {
        eNone,
        e1D,
        e2D,
        e3D,
        eCube
    };

    /// All zero for null. The bytes may lie at any address.
    static KTXHeader read(const void* bytes);

    /// The shape by width, height and depth alone, so never that of a cube map.
    Shape extent() const;
    /// A cube map if there are six faces, whatever the extent, else the extent.
    Shape shape() const;
    bool isCompressed() const;
    bool isForeignOrder() const;
    /// Levels in the file: one also where the rest is to be generated.
    quint32 storedLevels() const;

    unsigned char identifier[kKTXIdentifierBytes];
    quint32 endianness;
    quint32 glType;
    quint32 glTypeSize;
    quint32 glFormat;
    quint32 glInternalFormat;
    quint32 glBaseInternalFormat;
    quint32 pixelWidth;
    quint32 pixelHeight;
    quint32 pixelDepth;
    quint32 numberOfArrayElements;
    quint32 numberOfFaces;
    quint32 numberOfMipmapLevels;
    quint32 bytesOfKeyValueData;
};
static_assert(sizeof(KTXHeader) == kKTXHeaderBytes, "the header's fields follow each other without gaps");

/// Turns the byte order around and keeps the low four bits of each byte alone. That is on purpose: with whole bytes
/// files would load that are to be refused.
VRKGL_EXPORT quint32 swapKTXWord(quint32 word);
/// In place, at any address: all words of the header; all 16-bit words, whole; all 32-bit words, as `swapKTXWord`.
/// Bytes behind the last whole word stay.
VRKGL_EXPORT void swapKTXHeader(unsigned char* bytes);
VRKGL_EXPORT void swapKTXShorts(unsigned char* bytes, quint64 count);
VRKGL_EXPORT void swapKTXWords(unsigned char* bytes, quint64 count);

/// The first byte behind each entry's size word, and the size words.
struct KTXMetadata
{
    QList<const char*> keys;
    QList<quint32> sizes;
    /// Whether the walk stopped exactly at the end of the block.
    bool endsWithBlock = false;
};

/// Walks from size word to size word, without a step over padding, as long as one begins within the block of `count`
/// bytes. Such a word may end behind the block, and its key begins there, but the walk stops at one that does not lie
/// wholly within `readable` bytes, which are `count` or more.
VRKGL_EXPORT KTXMetadata walkKTXMetadata(const unsigned char* block, quint32 count, quint64 readable);

/// Where the pixels of a level, or of a cube map's first face, lie.
struct KTXLevel
{
    quint64 offset;
    quint32 imageSize;

    /// From one face of a cube map to the next.
    quint64 stride() const
    {
        return (quint64(imageSize) + 3) & ~quint64(3);
    }
};

/// More levels than that no size of 32 bits can have.
inline constexpr quint32 kMaxKTXLevels = 32;
using KTXLevels = QVarLengthArray<KTXLevel, kMaxKTXLevels>;

/// Finds the levels in the `length` bytes behind the metadata. None if there are more than `kMaxKTXLevels`, or if
/// reading their sizes or uploading one of them would read behind the end. What an upload reads is told by `imageSize`
/// for compressed textures alone; for others it is `ktxTransferBytes`.
VRKGL_EXPORT std::optional<KTXLevels> findKTXLevels(const KTXHeader& header, const unsigned char* data, quint64 length);

/// The bytes that OpenGL reads for an image of the header's `glFormat` and `glType` with rows aligned to 4; nothing
/// behind the last row's last texel. The largest number for what does not fit in 64 bits, and more than any texel needs
/// for a format or type that is not known.
VRKGL_EXPORT quint64 ktxTransferBytes(const KTXHeader& header, quint32 width, quint32 height, quint32 depth);

/// The size of the next level in one dimension.
constexpr quint32 nextKTXLevelSize(quint32 size)
{
    return size < 2 ? size : size / 2;
}

} // namespace Harrow::Vrk
