// SPDX-License-Identifier: MIT
//
// Rows of Radiance pictures, byte by byte: each way of coding them, the colours, and bytes that are wrong or too few.
#include "RadianceRows.h"

#include "HDRTestTools.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <memory>
#include <random>

namespace Harrow::Vrk::Test
{
namespace
{

/// One row read from bytes of exactly their size.
struct ReadRow
{
    ReadRow(const QByteArray& file, quint32 width) : floats(size_t(width) * 3, kUntouched)
    {
        const ExactBytes bytes(file);
        const std::unique_ptr<unsigned char[]> rgbe(new unsigned char[size_t(width) * 4]);
        RadianceRowReader rows(bytes.begin(), bytes.end(), width);
        result = rows.read(floats.data(), rgbe.get());
        taken = rows.next() - bytes.begin();
        runStart = rows.runStart();
        runEnd = rows.runEnd();
    }

    static constexpr float kUntouched = -7.0f;

    RadianceRow result;
    Floats floats;
    std::ptrdiff_t taken;
    quint32 runStart, runEnd;
};

void expectRow(const QByteArray& file, const Rgbes& expected)
{
    const ReadRow row(file, quint32(expected.size()));
    EXPECT_EQ(row.result, RadianceRow::eRead);
    EXPECT_EQ(row.floats, colorsOf(expected));
    EXPECT_EQ(row.taken, file.size());
    // What follows belongs to the next row.
    EXPECT_EQ(ReadRow(file + "more", quint32(expected.size())).taken, file.size());
}

void expectNoData(const QByteArray& file, quint32 width)
{
    EXPECT_EQ(ReadRow(file, width).result, RadianceRow::eNoData) << file.toHex(' ').toStdString() << ", " << width;
}

/// Pixels that differ in each channel, none of which could be taken for a marker.
Rgbes differentPixels(int count)
{
    Rgbes pixels;
    for (int i = 0; i < count; ++i)
        pixels.push_back({3 + i % 250, 3 + i * 7 % 250, 3 + i * 13 % 250, 100 + i * 3 % 60});
    return pixels;
}

constexpr Rgbe kRed = {200, 10, 20, 130};
constexpr Rgbe kBlue = {5, 60, 250, 120};
constexpr Rgbe kGrey = {128, 128, 128, 128};

QByteArray pixel(const Rgbe& value)
{
    return plainRow({value});
}

} // namespace

// ---- colours -------------------------------------------------------------------------------------------------------

TEST(RadianceRowsTest, AllFactorsAreTheBitsOfLdexp)
{
    for (int exponent = 0; exponent < 256; ++exponent)
    {
        const float expected = exponent == 0 ? 0.0f : float(std::ldexp(1.0, exponent - 136));
        const float factor = radianceFactor(static_cast<unsigned char>(exponent));
        EXPECT_EQ(std::memcmp(&factor, &expected, sizeof factor), 0) << exponent;
    }
}

TEST(RadianceRowsTest, AllBytesWithAllExponentsAreTheBitsOfLdexp)
{
    for (int exponent = 0; exponent < 256; ++exponent)
    {
        Rgbes pixels;
        for (int value = 0; value < 256; ++value)
            pixels.push_back({value, 255 - value, value ^ 85, exponent});
        const Floats expected = colorsOf(pixels);
        // In front stands a colour that can be taken for nothing else.
        pixels.insert(pixels.begin(), kRed);
        const ReadRow plain(plainRow(pixels), 257);
        const ReadRow runs(literalRow(pixels), 257);
        ASSERT_EQ(plain.result, RadianceRow::eRead);
        ASSERT_EQ(runs.result, RadianceRow::eRead);
        EXPECT_EQ(std::memcmp(plain.floats.data() + 3, expected.data(), expected.size() * sizeof(float)), 0)
            << exponent;
        EXPECT_EQ(std::memcmp(runs.floats.data() + 3, expected.data(), expected.size() * sizeof(float)), 0) << exponent;
    }
}

TEST(RadianceRowsTest, ExponentZeroIsBlackWhateverTheColour)
{
    const Rgbes pixels = {{255, 128, 1, 0}, {0, 0, 0, 0}, {1, 2, 3, 0}};
    const Floats black(9, 0.0f);
    for (const QByteArray& row : {plainRow(pixels), literalRow(pixels)})
    {
        const ReadRow read(row, 3);
        EXPECT_EQ(std::memcmp(read.floats.data(), black.data(), sizeof(float) * 9), 0);
    }
}

// ---- plain rows ----------------------------------------------------------------------------------------------------

TEST(RadianceRowsTest, APlainRow)
{
    expectRow(pixel(kRed), {kRed});
    expectRow(plainRow(differentPixels(300)), differentPixels(300));
}

TEST(RadianceRowsTest, ARowThatBeginsWithAPixelIsPlainThroughout)
{
    const Rgbes row = {kRed, {1, 1, 1, 5}, {2, 2, 0, 4}, kBlue};
    expectRow(plainRow(row), row);
}

TEST(RadianceRowsTest, TheFirstBytesTellTheKindOfARow)
{
    for (const Rgbe& first : {Rgbe{1, 1, 2, 5}, Rgbe{1, 2, 1, 5}, Rgbe{2, 1, 0, 2}, Rgbe{2, 3, 0, 2}, Rgbe{0, 0, 0, 0}})
        expectRow(plainRow({first, kRed}), {first, kRed});
}

// ---- rows coded channel by channel ---------------------------------------------------------------------------------

TEST(RadianceRowsTest, LiteralBytes)
{
    for (const int width : {1, 2, 7, 8, 127, 128, 129, 1000})
        for (const int most : {1, 127, 128})
            expectRow(literalRow(differentPixels(width), most), differentPixels(width));
}

TEST(RadianceRowsTest, RunsOfOneByte)
{
    const QByteArray row =
        runsRowStart(4) + bytesOf({132, 200}) + bytesOf({132, 10}) + bytesOf({132, 20}) + bytesOf({132, 130});
    expectRow(row, Rgbes(4, kRed));
}

TEST(RadianceRowsTest, RunsAndLiteralBytesMixed)
{
    const QByteArray row = runsRowStart(5) + bytesOf({130, 9, 3, 7, 8, 7}) + bytesOf({5, 1, 2, 3, 4, 5}) +
                           bytesOf({1, 6, 131, 4, 129, 3}) + bytesOf({133, 128});
    expectRow(row, {{9, 1, 6, 128}, {9, 2, 4, 128}, {7, 3, 4, 128}, {8, 4, 4, 128}, {7, 5, 3, 128}});
}

TEST(RadianceRowsTest, TheLimitsOfTheCodes)
{
    // 255 is a run of 127, 128 is literal bytes, 129 is a run of one.
    QByteArray literal = bytesOf({128});
    Rgbes expected;
    for (int x = 0; x < 128; ++x)
    {
        literal.append(static_cast<char>(x));
        expected.push_back({x, x == 127 ? 8 : 7, 9, 128});
    }
    const QByteArray runs = bytesOf({255, 7, 129, 8});
    const QByteArray row =
        runsRowStart(128) + literal + runs + bytesOf({255, 9, 129, 9}) + bytesOf({192, 128, 192, 128});
    expectRow(row, expected);
}

TEST(RadianceRowsTest, ACountOfZeroIsPassedOver)
{
    const QByteArray row =
        runsRowStart(2) + bytesOf({0, 0, 2, 5, 6}) + bytesOf({130, 7}) + bytesOf({1, 8, 0, 1, 9}) + bytesOf({130, 128});
    expectRow(row, {{5, 7, 8, 128}, {6, 7, 9, 128}});
    expectNoData(runsRowStart(2) + QByteArray(1000, '\0'), 2);
}

TEST(RadianceRowsTest, AnotherWidthLeavesTheRowAndDoesNotAdvance)
{
    for (const int width : {0, 3, 5, 4 + 256, 4 * 256})
    {
        const ReadRow row(runsRowStart(width) + QByteArray(64, '\x01'), 4);
        EXPECT_EQ(row.result, RadianceRow::eBadWidth) << width;
        EXPECT_EQ(row.taken, 0);
        EXPECT_EQ(row.floats, Floats(12, ReadRow::kUntouched));
    }
    // The count has 16 bits.
    EXPECT_EQ(ReadRow(runsRowStart(0) + QByteArray(64, '\x01'), 65536).result, RadianceRow::eBadWidth);
}

TEST(RadianceRowsTest, TheWidthIsBigEndianOf16Bits)
{
    QByteArray row = bytesOf({2, 2, 255, 255});
    for (const int value : {10, 20, 30, 128})
    {
        for (int run = 0; run < 516; ++run)
            row.append(bytesOf({255, value}));
        row.append(bytesOf({131, value})); // 516 * 127 + 3
    }
    const ReadRow read(row, 65535);
    EXPECT_EQ(read.result, RadianceRow::eRead);
    EXPECT_EQ(read.taken, row.size());
    EXPECT_EQ(read.floats, colorsOf(Rgbes(65535, {10, 20, 30, 128})));
}

TEST(RadianceRowsTest, ARunBeyondTheRowIsToldWithItsPlace)
{
    const ReadRow first(runsRowStart(4) + bytesOf({133, 9}), 4);
    EXPECT_EQ(first.result, RadianceRow::eOverlongRun);
    EXPECT_EQ(first.runStart, 0u);
    EXPECT_EQ(first.runEnd, 5u);
    const ReadRow third(runsRowStart(4) + bytesOf({132, 9}) + bytesOf({132, 9}) + bytesOf({3, 1, 2, 3, 255, 9}), 4);
    EXPECT_EQ(third.result, RadianceRow::eOverlongRun);
    EXPECT_EQ(third.runStart, 3u);
    EXPECT_EQ(third.runEnd, 130u);
}

TEST(RadianceRowsTest, LiteralBytesBeyondTheRowEndIt)
{
    expectNoData(runsRowStart(4) + bytesOf({5, 1, 2, 3, 4, 5}) + QByteArray(64, '\x01'), 4);
    expectNoData(runsRowStart(4) + bytesOf({130, 9, 128}) + QByteArray(200, '\x01'), 4);
}

// ---- the oldest rows -----------------------------------------------------------------------------------------------

TEST(RadianceRowsTest, ThePixelBehindAMarkerIsRepeated)
{
    expectRow(oldMarker(3) + pixel(kRed), Rgbes(3, kRed));
    expectRow(oldMarker(1) + pixel(kRed), {kRed});
    expectRow(oldMarker(255) + pixel(kBlue), Rgbes(255, kBlue));
}

TEST(RadianceRowsTest, APixelWithoutAMarkerIsStoredOnce)
{
    expectRow(oldMarker(2) + pixel(kRed) + pixel(kBlue) + pixel(kGrey), {kRed, kRed, kBlue, kGrey});
    expectRow(oldMarker(1) + pixel(kRed) + pixel(kBlue) + oldMarker(2) + pixel(kGrey), {kRed, kBlue, kGrey, kGrey});
}

TEST(RadianceRowsTest, EachFurtherMarkerCountsEightBitsHigher)
{
    expectRow(oldMarker(2) + oldMarker(1) + pixel(kRed), Rgbes(258, kRed));
    expectRow(oldMarker(0) + oldMarker(1) + pixel(kRed), Rgbes(256, kRed));
    expectRow(oldMarker(1) + oldMarker(0) + oldMarker(1) + pixel(kRed), Rgbes(65537, kRed));
    expectRow(oldMarker(1) + oldMarker(0) + oldMarker(0) + oldMarker(0) + oldMarker(0) + pixel(kRed), {kRed});
    // The next pixel's markers begin anew.
    expectRow(oldMarker(2) + oldMarker(1) + pixel(kRed) + oldMarker(3) + pixel(kBlue),
              []
              {
                  Rgbes row(258, kRed);
                  row.insert(row.end(), 3, kBlue);
                  return row;
              }());
}

TEST(RadianceRowsTest, ACountOfZeroStoresNothing)
{
    expectRow(oldMarker(0) + pixel(kRed) + pixel(kBlue), {kBlue});
}

TEST(RadianceRowsTest, APixelBehindMarkersMayLookLikeARowOfRuns)
{
    expectRow(oldMarker(2) + bytesOf({2, 2, 0, 128}), Rgbes(2, {2, 2, 0, 128}));
}

TEST(RadianceRowsTest, ARepetitionBeyondTheRowEndsIt)
{
    expectNoData(oldMarker(4) + pixel(kRed), 3);
    expectNoData(oldMarker(2) + pixel(kRed) + oldMarker(2) + pixel(kRed), 3);
    expectNoData(oldMarker(255) + oldMarker(255) + oldMarker(255) + oldMarker(255) + pixel(kRed), 3);
    expectNoData(oldMarker(3) + oldMarker(0) + oldMarker(0) + oldMarker(0) + oldMarker(1) + pixel(kRed), 3);
    QByteArray markers;
    for (int i = 0; i < 100; ++i)
        markers += oldMarker(0);
    expectNoData(oldMarker(3) + markers + oldMarker(1) + pixel(kRed), 3);
    expectNoData(markers, 3);
}

// ---- bytes that end early ------------------------------------------------------------------------------------------

TEST(RadianceRowsTest, NoRowThatIsCutShortIsRead)
{
    const struct
    {
        QByteArray bytes;
        quint32 width;
    } rows[] = {
        {plainRow(differentPixels(5)), 5},
        {literalRow(differentPixels(5)), 5},
        {runsRowStart(4) + bytesOf({132, 200, 132, 10, 132, 20, 132, 130}), 4},
        {oldMarker(2) + oldMarker(1) + pixel(kRed) + oldMarker(3) + pixel(kBlue), 261},
    };
    for (const auto& row : rows)
    {
        ASSERT_EQ(ReadRow(row.bytes, row.width).result, RadianceRow::eRead);
        for (qsizetype length = 0; length < row.bytes.size(); ++length)
            expectNoData(row.bytes.left(length), row.width);
    }
}

TEST(RadianceRowsTest, TheFewestBytesOfARow)
{
    const struct
    {
        quint32 width;
        quint64 bytes;
    } rows[] = {{0, 0},      {1, 4},      {2, 8},         {3, 8},         {255, 8},        {256, 12},
                {65535, 12}, {65536, 16}, {16777215, 16}, {16777216, 20}, {4294967295, 20}};
    for (const auto& row : rows)
        EXPECT_EQ(RadianceRowReader::leastBytes(row.width), row.bytes) << row.width;
}

TEST(RadianceRowsTest, NoRowIsReadFromFewerBytesThanTheFewest)
{
    for (const quint32 width : {1u, 2u, 255u, 256u, 65535u, 65536u})
    {
        QByteArray shortest;
        for (quint32 rest = width; width > 1 && rest != 0; rest /= 256)
            shortest += oldMarker(int(rest % 256));
        shortest += pixel(kRed);
        EXPECT_EQ(RadianceRowReader::leastBytes(width), quint64(shortest.size()));
        expectRow(shortest, Rgbes(width, kRed));
        EXPECT_GE(quint64(literalRow(Rgbes(std::min(width, 65535u), kRed)).size()), quint64(shortest.size()));
    }
}

TEST(RadianceRowsTest, AnyBytesAreReadWithinTheirBounds)
{
    std::minstd_rand random(3);
    int results[4] = {};
    for (int round = 0; round < 60000; ++round)
    {
        const quint32 width = 1 + random() % 40;
        QByteArray bytes;
        if (const auto kind = random() % 4; kind == 0)
            bytes = oldMarker(int(random() % 30));
        else if (kind < 3)
            bytes = runsRowStart(int(random() % 8 == 0 ? width + 1 : width));
        const auto length = random() % 200;
        for (unsigned i = 0; i < length; ++i)
        {
            // Few different bytes, so that counts fit now and then.
            const auto value = random() % 8;
            bytes.append(static_cast<char>(value < 3 ? value : value < 6 ? random() % 40 : 128 + random() % 40));
        }
        const ReadRow row(bytes, width);
        ++results[size_t(row.result)];
        EXPECT_GE(row.taken, 0);
        EXPECT_LE(row.taken, bytes.size());
        if (row.result == RadianceRow::eRead)
        {
            EXPECT_GE(quint64(row.taken), RadianceRowReader::leastBytes(width));
            EXPECT_EQ(std::count(row.floats.begin(), row.floats.end(), ReadRow::kUntouched), 0);
        }
        if (row.result == RadianceRow::eOverlongRun)
        {
            EXPECT_LT(row.runStart, width);
            EXPECT_GT(row.runEnd, width);
        }
    }
    for (const int count : results)
        EXPECT_GT(count, 500) << "the bytes were not varied enough";
}

} // namespace Harrow::Vrk::Test
