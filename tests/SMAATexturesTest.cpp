// SPDX-License-Identifier: MIT
//
// The area and the search texture of SMAA, as the generator writes them: what they must have in common, and every kind
// of pattern against areas that are counted and ends of edges that are walked to.

#include "SMAATestTools.h"

#include "Texture.h"
#include "TextureFileInfo.h"
#include "TextureIO.h"

#include <gtest/gtest.h>

#include <cmath>
#include <memory>

namespace Harrow::Vrk::Test
{
namespace
{

constexpr double kByte = 0.5 / 255 + 1e-9; // what rounding to a byte may take

const SMAATables& tables()
{
    return SMAATables::generated();
}

struct Area
{
    double below = 0;
    double above = 0;
};

// ---- beside horizontal edges ---------------------------------------------------------------------------------------

constexpr int kNone = 0, kUp = 1, kDown = 3, kBoth = 4;
constexpr int kCrossings[] = {kNone, kUp, kDown, kBoth};
constexpr double kShifts[] = {0.0, -0.25, 0.25, -0.125, 0.125, -0.375, 0.375};

/// The lines of a pattern: which ends leave the axis, and how.
enum class Shape
{
    Nothing,
    LeftHalf,  // from the left end to the middle
    RightHalf, // from the middle to the right end
    Vee,       // both, to one side
    Slope,     // from end to end
    PlainSlope // the same, for which a shift has no mean with the halves
};

struct Pattern
{
    int left, right;
    Shape shape;
    int leftEnd, rightEnd; // 1 above, -1 below
};

constexpr Pattern kPatterns[] = {
    {kNone, kNone, Shape::Nothing, 0, 0},
    {kDown, kNone, Shape::LeftHalf, -1, 0},
    {kNone, kDown, Shape::RightHalf, 0, -1},
    {kDown, kDown, Shape::Vee, -1, -1},
    {kUp, kNone, Shape::LeftHalf, 1, 0},
    {kBoth, kNone, Shape::Nothing, 0, 0},
    {kUp, kDown, Shape::Slope, 1, -1},
    {kBoth, kDown, Shape::PlainSlope, 1, -1},
    {kNone, kUp, Shape::RightHalf, 0, 1},
    {kDown, kUp, Shape::Slope, -1, 1},
    {kNone, kBoth, Shape::Nothing, 0, 0},
    {kDown, kBoth, Shape::PlainSlope, -1, 1},
    {kUp, kUp, Shape::Vee, 1, 1},
    {kBoth, kUp, Shape::PlainSlope, -1, 1},
    {kUp, kBoth, Shape::PlainSlope, 1, -1},
    {kBoth, kBoth, Shape::Nothing, 0, 0},
};

/// The area under a function over the pixel, in thin stripes.
template <typename Height> Area counted(double pixel, Height height)
{
    constexpr int kStripes = 4000;
    Area area;
    for (int i = 0; i < kStripes; ++i)
    {
        const double h = height(pixel + (i + 0.5) / kStripes);
        (h < 0 ? area.below : area.above) += std::abs(h) / kStripes;
    }
    return area;
}

double roundedOff(double area, double length)
{
    const double t = std::min(length / 32, 1.0);
    return (1 - t) * 0.5 * std::sqrt(2 * area) + t * area;
}

Area expectedArea(const Pattern& pattern, int left, int right, double shift)
{
    const double length = left + right + 1;
    const double l = 0.5 * pattern.leftEnd + shift;
    const double r = 0.5 * pattern.rightEnd + shift;
    const auto leftHalf = [&](double x) { return x < length / 2 ? l * (1 - 2 * x / length) : 0.0; };
    const auto rightHalf = [&](double x) { return x > length / 2 ? r * (2 * x / length - 1) : 0.0; };
    const auto slope = [&](double x) { return l + (r - l) * x / length; };
    switch (pattern.shape)
    {
    case Shape::Nothing:
        return {};
    case Shape::LeftHalf:
        return counted(left, leftHalf);
    case Shape::RightHalf:
        return counted(left, rightHalf);
    case Shape::PlainSlope:
        return counted(left, slope);
    case Shape::Vee:
    {
        const Area a = counted(left, leftHalf);
        const Area b = counted(left, rightHalf);
        return {roundedOff(a.below, length) + roundedOff(b.below, length),
                roundedOff(a.above, length) + roundedOff(b.above, length)};
    }
    case Shape::Slope:
        break;
    }
    const Area whole = counted(left, slope);
    if (shift == 0)
        return whole;
    const Area a = counted(left, leftHalf);
    const Area b = counted(left, rightHalf);
    return {(whole.below + a.below + b.below) / 2, (whole.above + a.above + b.above) / 2};
}

// ---- beside diagonals ----------------------------------------------------------------------------------------------

struct Point
{
    double x, y;
};

struct DiagonalPattern
{
    int left, right;
    Point starts[2], ends[2]; // two lines; the ends as seen from the last corner of the stairs
};

constexpr DiagonalPattern kDiagonalPatterns[] = {
    {0, 0, {{1, 1}, {1, 0}}, {{1, 1}, {1, 0}}}, {1, 0, {{1, 0}, {1, 0}}, {{0, 0}, {1, 0}}},
    {0, 2, {{0, 0}, {1, 0}}, {{1, 0}, {1, 0}}}, {1, 2, {{1, 0}, {1, 0}}, {{1, 0}, {1, 0}}},
    {2, 0, {{1, 1}, {1, 1}}, {{0, 0}, {1, 0}}}, {3, 0, {{1, 1}, {1, 0}}, {{0, 0}, {1, 0}}},
    {2, 2, {{1, 1}, {1, 1}}, {{1, 0}, {1, 0}}}, {3, 2, {{1, 1}, {1, 0}}, {{1, 0}, {1, 0}}},
    {0, 1, {{0, 0}, {1, 0}}, {{1, 1}, {1, 1}}}, {1, 1, {{1, 0}, {1, 0}}, {{1, 1}, {1, 1}}},
    {0, 3, {{0, 0}, {1, 0}}, {{1, 1}, {1, 0}}}, {1, 3, {{1, 0}, {1, 0}}, {{1, 1}, {1, 0}}},
    {2, 1, {{1, 1}, {1, 1}}, {{1, 1}, {1, 1}}}, {3, 1, {{1, 1}, {1, 0}}, {{1, 1}, {1, 1}}},
    {2, 3, {{1, 1}, {1, 1}}, {{1, 1}, {1, 0}}}, {3, 3, {{1, 1}, {1, 0}}, {{1, 1}, {1, 0}}},
};
constexpr Point kDiagonalShifts[] = {{0, 0}, {0.25, -0.25}, {-0.25, 0.25}, {0.125, -0.125}, {-0.125, 0.125}};

/// The part of the pixel's points that lie to the right of the line; those on it count half.
double countedRightOf(Point start, Point end, int pixelX, int pixelY)
{
    constexpr int kPoints = 64;
    if (start.x == end.x && start.y == end.y)
        return 1.0;
    double count = 0;
    for (int j = 0; j < kPoints; ++j)
        for (int i = 0; i < kPoints; ++i)
        {
            const double x = pixelX + (i + 0.5) / kPoints - start.x;
            const double y = pixelY + (j + 0.5) / kPoints - start.y;
            const double side = x * (end.y - start.y) - y * (end.x - start.x);
            count += side > 1e-9 ? 1 : side > -1e-9 ? 0.5 : 0;
        }
    return count / (kPoints * kPoints);
}

Area expectedDiagonalArea(const DiagonalPattern& pattern, int left, int right, Point shift)
{
    const double length = left + right + 1;
    Area area;
    for (int i = 0; i < 2; ++i)
    {
        const double s = pattern.left > 0 ? 1 : 0;
        const double e = pattern.right > 0 ? 1 : 0;
        const Point start = {pattern.starts[i].x + s * shift.x, pattern.starts[i].y + s * shift.y};
        const Point end = {pattern.ends[i].x + length + e * shift.x, pattern.ends[i].y + length + e * shift.y};
        area.below += (1 - countedRightOf(start, end, left + 1, left)) / 2;
        area.above += countedRightOf(start, end, left + 1, left + 1) / 2;
    }
    return area;
}

int bytesThatAreNot0(int left, int top, int width, int height)
{
    int count = 0;
    for (int y = top; y < top + height; ++y)
        for (int x = left; x < left + width; ++x)
            count += tables().areaAt(x, y, 0) > 0 || tables().areaAt(x, y, 1) > 0;
    return count;
}

} // namespace

// ---- the area texture ----------------------------------------------------------------------------------------------

TEST(SMAATextures, TheGeneratorWritesBothTables)
{
    ASSERT_TRUE(tables().isComplete());
}

TEST(SMAATextures, AreasBesideStraightEdgesAreThoseThatStripesCount)
{
    ASSERT_TRUE(tables().isComplete());
    for (int shift = 0; shift < 7; ++shift)
        for (const Pattern& pattern : kPatterns)
            for (const int x : {0, 1, 2, 3, 5, 9, 15})
                for (const int y : {0, 1, 2, 4, 8, 15})
                {
                    const Area area = expectedArea(pattern, x * x, y * y, kShifts[shift]);
                    const int column = 16 * pattern.left + x;
                    const int row = 80 * shift + 16 * pattern.right + y;
                    // The root of an area makes more of its last digits.
                    const double tolerance = pattern.shape == Shape::Vee ? kByte + 2e-4 : kByte + 1e-6;
                    ASSERT_NEAR(tables().areaAt(column, row, 0), area.below, tolerance)
                        << pattern.left << pattern.right << ": " << x << ", " << y << ", shift " << kShifts[shift];
                    ASSERT_NEAR(tables().areaAt(column, row, 1), area.above, tolerance)
                        << pattern.left << pattern.right << ": " << x << ", " << y << ", shift " << kShifts[shift];
                }
}

TEST(SMAATextures, AreasBesideDiagonalsAreThoseThatPointsCount)
{
    ASSERT_TRUE(tables().isComplete());
    for (int shift = 0; shift < 5; ++shift)
        for (const DiagonalPattern& pattern : kDiagonalPatterns)
            for (const int x : {0, 1, 2, 5, 12, 19})
                for (const int y : {0, 1, 3, 7, 19})
                {
                    const Area area = expectedDiagonalArea(pattern, x, y, kDiagonalShifts[shift]);
                    const int column = 80 + 20 * pattern.left + x;
                    const int row = 80 * shift + 20 * pattern.right + y;
                    ASSERT_NEAR(tables().areaAt(column, row, 0), area.below, kByte + 0.002)
                        << pattern.left << pattern.right << ": " << x << ", " << y << ", shift " << shift;
                    ASSERT_NEAR(tables().areaAt(column, row, 1), area.above, kByte + 0.002)
                        << pattern.left << pattern.right << ": " << x << ", " << y << ", shift " << shift;
                }
}

TEST(SMAATextures, WithoutAShiftTheStraightAreasAreMirrored)
{
    ASSERT_TRUE(tables().isComplete());
    const auto flipped = [](int crossing) { return crossing == kUp ? kDown : crossing == kDown ? kUp : crossing; };
    for (const int c1 : kCrossings)
        for (const int c2 : kCrossings)
            for (int y = 0; y < 16; ++y)
                for (int x = 0; x < 16; ++x)
                    for (int channel = 0; channel < 2; ++channel)
                    {
                        const double area = tables().areaAt(16 * c1 + x, 16 * c2 + y, channel);
                        EXPECT_EQ(area, tables().areaAt(16 * c2 + y, 16 * c1 + x, channel));
                        EXPECT_EQ(area, tables().areaAt(16 * flipped(c1) + x, 16 * flipped(c2) + y, 1 - channel));
                        EXPECT_LE(area, 0.505);
                    }
}

// Far from its ends a line hardly leaves the axis.
TEST(SMAATextures, AreasGrowSmallerTowardsTheMiddle)
{
    ASSERT_TRUE(tables().isComplete());
    for (const int c : {kDown, kUp})
        for (int y = 1; y < 16; ++y)
            for (int x = 1; x < y; ++x)
                EXPECT_LE(tables().areaAt(16 * c + x, y, c == kUp), tables().areaAt(16 * c + x - 1, y, c == kUp));
}

TEST(SMAATextures, WhatNoPatternNeedsIsEmpty)
{
    ASSERT_TRUE(tables().isComplete());
    for (int block = 0; block < 7; ++block)
    {
        EXPECT_EQ(bytesThatAreNot0(32, 80 * block, 16, 80), 0) << block;
        EXPECT_EQ(bytesThatAreNot0(0, 80 * block + 32, 80, 16), 0) << block;
        EXPECT_GT(bytesThatAreNot0(0, 80 * block, 80, 80), 1000) << block;
    }
    EXPECT_GT(bytesThatAreNot0(80, 320, 80, 80), 6000);
    EXPECT_EQ(bytesThatAreNot0(80, 400, 80, 160), 0);
}

// ---- the search texture --------------------------------------------------------------------------------------------

// All edges that four pixels can have, fetched as the shader does it and looked up at its place.
TEST(SMAATextures, TheSearchTextureTellsHowFarTheEdgeGoesOn)
{
    ASSERT_TRUE(tables().isComplete());
    const FloatPicture search = tables().searchPicture();
    for (int bits = 0; bits < 256; ++bits)
    {
        // Two columns and two rows; the row of the edge is the second one.
        FloatPicture edges(2, 2);
        for (int i = 0; i < 4; ++i)
            edges.set(i % 2, i / 2, {double(bits >> i & 1), double(bits >> (4 + i) & 1), 0, 0});
        const auto along = [&](int x) { return edges.at(x, 1)[1] > 0; };
        const auto isCrossed = [&](int x) { return edges.at(x, 0)[0] > 0 || edges.at(x, 1)[0] > 0; };
        const auto lookedUp = [&](const Color& e, bool isForward)
        {
            const double x = 32 * e.r + 0.5 + (isForward ? 33 : 0);
            return std::lround(search.sample(x, 32.5 - 32 * e.g).r * 255);
        };
        // To the left the second column is near.
        const int left = !along(1) ? 0 : along(0) && !isCrossed(1) ? 2 : 1;
        EXPECT_EQ(lookedUp(edges.sample(1.25, 1.375), false), 127 * left) << bits;
        const int right = !along(0) || isCrossed(0) ? 0 : along(1) && !isCrossed(1) ? 2 : 1;
        EXPECT_EQ(lookedUp(edges.sample(0.75, 1.375), true), 127 * right) << bits;
    }
}

TEST(SMAATextures, TheSearchTextureIsEmptyWhereNoSumIs)
{
    ASSERT_TRUE(tables().isComplete());
    const auto isSum = [](int sum)
    {
        for (int bits = 0; bits < 16; ++bits)
            if (sum == 1 * (bits & 1) + 3 * (bits >> 1 & 1) + 7 * (bits >> 2 & 1) + 21 * (bits >> 3 & 1))
                return true;
        return false;
    };
    for (int y = 0; y < kSearchHeight; ++y)
        for (int x = 0; x < kSearchWidth; ++x)
            if (!isSum(x % 33) || !isSum(32 - y))
            {
                EXPECT_EQ(tables().search[y * kSearchWidth + x], 0) << x << ", " << y;
            }
}

// ---- the files -----------------------------------------------------------------------------------------------------

namespace
{

class SMAATexturesGL : public GLSLPassTest
{
};

} // namespace

TEST_F(SMAATexturesGL, TheLibraryLoadsTheFiles)
{
    ASSERT_TRUE(tables().isComplete());
    const QTemporaryDir folder;
    ASSERT_TRUE(generateSMAATextures(folder.path()));
    TextureFileInfo info;
    info.preprocessed = true; // neither range nor direction
    const struct
    {
        const char* name;
        int width, height, channels;
        GLenum format, internalFormat;
        const QByteArray& bytes;
    } files[] = {{"smaa-area.ktx", kAreaWidth, kAreaHeight, 2, GL_RG, GL_RG8, tables().area},
                 {"smaa-search.ktx", kSearchWidth, kSearchHeight, 1, GL_RED, GL_R8, tables().search}};
    for (const auto& file : files)
    {
        const std::unique_ptr<Texture> loaded(LoadTextureFromFile(folder.filePath(QLatin1String(file.name)), info));
        ASSERT_TRUE(loaded) << file.name;
        loaded->bind();
        GLint width = 0, height = 0, internalFormat = 0;
        glGetTexLevelParameteriv(GL_TEXTURE_2D, 0, GL_TEXTURE_WIDTH, &width);
        glGetTexLevelParameteriv(GL_TEXTURE_2D, 0, GL_TEXTURE_HEIGHT, &height);
        glGetTexLevelParameteriv(GL_TEXTURE_2D, 0, GL_TEXTURE_INTERNAL_FORMAT, &internalFormat);
        EXPECT_EQ(width, file.width);
        EXPECT_EQ(height, file.height);
        EXPECT_EQ(GLenum(internalFormat), file.internalFormat);
        QByteArray bytes(file.bytes.size(), 0);
        glGetTexImage(GL_TEXTURE_2D, 0, file.format, GL_UNSIGNED_BYTE, bytes.data());
        EXPECT_EQ(bytes, file.bytes) << file.name;
        loaded->unbind();
    }
}

} // namespace Harrow::Vrk::Test
