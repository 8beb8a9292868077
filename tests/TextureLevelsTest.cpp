// SPDX-License-Identifier: MIT
//
// How many mip levels a size has, and how large each of them is.
#include "TextureLevels.h"

#include <gtest/gtest.h>

#include <climits>

namespace Harrow::Vrk::Test
{
namespace
{

TEST(TextureLevels, TheLastOneIsThatOfTheLargerSide)
{
    struct
    {
        int width, height, last;
    } const rows[] = {{1, 1, 0},       {1, 2, 1},       {2, 1, 1},     {3, 3, 1},     {4, 1, 2},
                      {5, 7, 2},       {8, 8, 3},       {255, 1, 7},   {256, 1, 8},   {640, 480, 9},
                      {1024, 768, 10}, {768, 1024, 10}, {4095, 1, 11}, {4096, 1, 12}, {16384, 1, 14}};
    for (const auto& row : rows)
        EXPECT_EQ(lastMipLevel(row.width, row.height), row.last) << row.width << " x " << row.height;
}

TEST(TextureLevels, SinglePrecisionIsPartOfTheResult)
{
    EXPECT_EQ(lastMipLevel(8192, 1), 12) << "logf(8192) / logf(2) is just below 13";
    EXPECT_EQ(lastMipLevel(32768, 1), 14);
    EXPECT_EQ(lastMipLevel(2097151, 1), 21) << "just below 2^21";
}

TEST(TextureLevels, SizesWithoutALogarithmHaveNone)
{
    EXPECT_EQ(lastMipLevel(0, 0), 0);
    EXPECT_EQ(lastMipLevel(-5, -1), 0);
    EXPECT_EQ(lastMipLevel(INT_MIN, INT_MIN), 0);
    EXPECT_EQ(lastMipLevel(INT_MAX, 1), 31);
}

TEST(TextureLevels, EachIsHalfOfTheOneBeforeRoundedDownAndAtLeastOne)
{
    EXPECT_EQ(mipLevelSize(640, 0, 9), 640);
    EXPECT_EQ(mipLevelSize(640, 1, 9), 320);
    EXPECT_EQ(mipLevelSize(480, 6, 9), 7);
    EXPECT_EQ(mipLevelSize(480, 9, 9), 1) << "at least one";
    EXPECT_EQ(mipLevelSize(0, 1, 9), 1);
    EXPECT_EQ(mipLevelSize(-8, 1, 9), 1);
}

TEST(TextureLevels, BeyondTheLastTheSizeIsNothingAndOfTheFirstItIsAsGiven)
{
    EXPECT_EQ(mipLevelSize(640, 10, 9), 0);
    EXPECT_EQ(mipLevelSize(640, INT_MAX, 9), 0);
    EXPECT_EQ(mipLevelSize(-3, 0, 9), -3);
    EXPECT_EQ(mipLevelSize(640, 0, 0), 640);
    EXPECT_EQ(mipLevelSize(640, 1, 0), 0);
}

TEST(TextureLevels, NegativeOnesGrowAndStayWithinAnInt)
{
    EXPECT_EQ(mipLevelSize(5, -2, 3), 20);
    EXPECT_EQ(mipLevelSize(5, -40, 3), INT_MAX);
    EXPECT_EQ(mipLevelSize(5, INT_MIN, 3), INT_MAX);
    EXPECT_EQ(mipLevelSize(-5, INT_MIN, 3), 1);
    EXPECT_EQ(mipLevelSize(0, INT_MIN, 3), 1);
}

} // namespace
} // namespace Harrow::Vrk::Test
