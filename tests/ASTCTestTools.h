// SPDX-License-Identifier: MIT
#pragma once

/// \file
/// What the suites of ASTC files share: files written byte by byte, and the formats of OpenGL by their numbers.

#include "HDRTestTools.h"

#include <QByteArray>

namespace Harrow::Vrk::Test
{

/// Sides of a block and of the image.
struct AstcHeader
{
    int blockWidth, blockHeight, blockDepth;
    int width, height, depth;
};

/// A file of that header and so many blocks, each of one solid colour (of 16-bit channels, opaque).
inline QByteArray astcFile(const AstcHeader& header, int blocks)
{
    QByteArray file = bytesOf({0x13, 0xAB, 0xA1, 0x5C, header.blockWidth, header.blockHeight, header.blockDepth});
    for (const int side : {header.width, header.height, header.depth})
        file.append(bytesOf({side & 255, side >> 8 & 255, side >> 16 & 255}));
    for (int block = 0; block < blocks; ++block)
        file.append(bytesOf(
            {0xFC, 0xFD, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0, 0x10 * (block % 16), 0, 0x80, 0, 0x40, 0xFF, 0xFF}));
    return file;
}

/// The block sizes that OpenGL has formats for, in the order of their numbers; those for sRGB-encoded colours are 0x20
/// above.
struct AstcFormat
{
    int width, height;
    unsigned linear;
};
inline constexpr AstcFormat kAstcFormats[] = {{4, 4, 0x93B0},   {5, 4, 0x93B1},  {5, 5, 0x93B2},  {6, 5, 0x93B3},
                                              {6, 6, 0x93B4},   {8, 5, 0x93B5},  {8, 6, 0x93B6},  {8, 8, 0x93B7},
                                              {10, 5, 0x93B8},  {10, 6, 0x93B9}, {10, 8, 0x93BA}, {10, 10, 0x93BB},
                                              {12, 10, 0x93BC}, {12, 12, 0x93BD}};

/// 0 for a block size without one.
inline unsigned astcFormatOf(int width, int height)
{
    for (const AstcFormat& format : kAstcFormats)
    {
        if (format.width == width && format.height == height)
            return format.linear;
    }
    return 0;
}

} // namespace Harrow::Vrk::Test
