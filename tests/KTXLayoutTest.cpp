// SPDX-License-Identifier: MIT
//
// The pure parts of reading KTX files: byte order, and the bytes that OpenGL reads for an image.
#include "KTXLayout.h"

#include <QByteArray>

#include <gtest/gtest.h>

#include <limits>
#include <utility>

namespace Harrow::Vrk::Test
{

// ---- byte order ----------------------------------------------------------------------------------------------------

TEST(KTXLayoutTest, TheSwapKeepsTheLowFourBitsOfEachByte)
{
    const struct
    {
        quint32 word, swapped;
    } rows[] = {
        {0x01020304, 0x04030201}, {0x04030201, 0x01020304}, {0x00000000, 0x00000000}, {0xFFFFFFFF, 0x0F0F0F0F},
        {0x12345678, 0x08060402}, {0x40000000, 0x00000000}, {0x0F000000, 0x0000000F}, {0x000000F0, 0x00000000},
        {0x0000A500, 0x00050000}, {0x00A50000, 0x00000500}, {0x01140000, 0x00000401}, {0x00000007, 0x07000000},
    };
    for (const auto& row : rows)
        EXPECT_EQ(swapKTXWord(row.word), row.swapped) << std::hex << row.word;
}

TEST(KTXLayoutTest, ShortsAreSwappedWhole)
{
    QByteArray bytes("\x12\xF4\xFF\x00\x7A", 5);
    swapKTXShorts(reinterpret_cast<unsigned char*>(bytes.data()), 5);
    EXPECT_EQ(bytes, QByteArray("\xF4\x12\x00\xFF\x7A", 5)) << "the odd byte stays";
}

TEST(KTXLayoutTest, WordsAreSwappedAsTheHeaderIs)
{
    QByteArray bytes("\x12\xF4\xFF\x0C\x01\x02\x03\x04\x55\x66\x77", 11);
    swapKTXWords(reinterpret_cast<unsigned char*>(bytes.data()), 11);
    EXPECT_EQ(bytes, QByteArray("\x0C\x0F\x04\x02\x04\x03\x02\x01\x55\x66\x77", 11));
}

// ---- where the levels lie ------------------------------------------------------------------------------------------

namespace
{

quint64 transferBytes(quint32 format, quint32 type, quint32 width, quint32 height = 0, quint32 depth = 0)
{
    KTXHeader header = {};
    header.glFormat = format;
    header.glType = type;
    return ktxTransferBytes(header, width, height, depth);
}

} // namespace

TEST(KTXLayoutTest, TheBytesOfATexelFollowFromFormatAndType)
{
    const struct
    {
        quint32 format;
        quint64 channels;
    } formats[] = {
        {0x1903, 1}, {0x1904, 1}, {0x1905, 1}, {0x1906, 1}, {0x1909, 1}, {0x1902, 1}, {0x1901, 1}, {0x8D94, 1},
        {0x8D95, 1}, {0x8D96, 1}, {0x8227, 2}, {0x8228, 2}, {0x190A, 2}, {0x84F9, 2}, {0x1907, 3}, {0x80E0, 3},
        {0x8D98, 3}, {0x8D9A, 3}, {0x1908, 4}, {0x80E1, 4}, {0x8D99, 4}, {0x8D9B, 4},
    };
    const struct
    {
        quint32 type;
        quint64 bytes;
    } types[] = {{0x1400, 1}, {0x1401, 1}, {0x1402, 2}, {0x1403, 2},
                 {0x140B, 2}, {0x1404, 4}, {0x1405, 4}, {0x1406, 4}};
    for (const auto& format : formats)
        for (const auto& type : types)
            EXPECT_EQ(transferBytes(format.format, type.type, 1), format.channels * type.bytes)
                << std::hex << format.format << ' ' << type.type;
}

TEST(KTXLayoutTest, PackedTypesAreWholeTexels)
{
    const struct
    {
        quint32 type;
        quint64 bytes;
    } rows[] = {
        {0x8032, 1}, {0x8362, 1}, {0x8363, 2}, {0x8364, 2}, {0x8033, 2}, {0x8365, 2}, {0x8034, 2}, {0x8366, 2},
        {0x8035, 4}, {0x8367, 4}, {0x8036, 4}, {0x8368, 4}, {0x84FA, 4}, {0x8C3B, 4}, {0x8C3E, 4}, {0x8DAD, 8},
    };
    for (const auto& row : rows)
        for (const quint32 format : {0x1908u, 0x1907u, 0x84F9u, 0x1234u})
            EXPECT_EQ(transferBytes(format, row.type, 1), row.bytes) << std::hex << row.type;
}

TEST(KTXLayoutTest, UnknownFormatsAndTypesCountAsMoreThanAnyTexelHas)
{
    EXPECT_EQ(transferBytes(0x1234, 0x1401, 1), 4u);
    EXPECT_EQ(transferBytes(0x1903, 0x1234, 1), 8u);
    EXPECT_EQ(transferBytes(0x1234, 0x1234, 1), 32u);
}

TEST(KTXLayoutTest, RowsButTheLastAreAlignedTo4)
{
    constexpr quint32 kRGB = 0x1907;
    constexpr quint32 kByte = 0x1401;
    EXPECT_EQ(transferBytes(kRGB, kByte, 3), 9u);
    EXPECT_EQ(transferBytes(kRGB, kByte, 3, 1), 9u);
    EXPECT_EQ(transferBytes(kRGB, kByte, 3, 2), 21u);
    EXPECT_EQ(transferBytes(kRGB, kByte, 3, 2, 1), 21u);
    EXPECT_EQ(transferBytes(kRGB, kByte, 3, 2, 3), 5 * 12 + 9u);
    EXPECT_EQ(transferBytes(kRGB, kByte, 4, 3), 36u);
    EXPECT_EQ(transferBytes(kRGB, 0x1403, 1, 2), 8 + 6u); // shorts
}

TEST(KTXLayoutTest, SizesBeyond64BitsAreTheLargestNumber)
{
    constexpr quint64 kMost = std::numeric_limits<quint64>::max();
    EXPECT_EQ(transferBytes(0x1908, 0x1406, 0xFFFFFFFF), 0xFFFFFFFFull * 16);
    EXPECT_EQ(transferBytes(0x1908, 0x1406, 0xFFFFFFFF, 0xFFFFFFFF), kMost);
    EXPECT_EQ(transferBytes(0x1908, 0x1406, 0xFFFFFFFF, 0xFFFFFFFF, 0xFFFFFFFF), kMost);
    EXPECT_EQ(transferBytes(0x1908, 0x1406, 0x10000000, 0x40000000, 4), kMost) << "exactly 2^64";
    EXPECT_EQ(transferBytes(0x1903, 0x1401, 1, 0xFFFFFFFF, 0xFFFFFFFF), kMost);
    EXPECT_EQ(transferBytes(0x1903, 0x1401, 1, 0xFFFFFFFF, 2), 4 * (2 * 0xFFFFFFFFull - 1) + 1);
    EXPECT_EQ(transferBytes(0x1903, 0x1401, 0, 0xFFFFFFFF, 0xFFFFFFFF), 0u);
}

TEST(KTXLayoutTest, TheNextLevelHasHalfTheSizeAndStaysAs1And0)
{
    const std::pair<quint32, quint32> rows[] = {
        {0, 0}, {1, 1}, {2, 1}, {3, 1}, {4, 2}, {7, 3}, {0xFFFFFFFF, 0x7FFFFFFF}};
    for (const auto& [size, next] : rows)
        EXPECT_EQ(nextKTXLevelSize(size), next) << size;
}

} // namespace Harrow::Vrk::Test
