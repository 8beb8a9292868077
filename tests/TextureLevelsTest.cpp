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

TEST(TextureLevels, BelowTheReachOfSinglePrecisionTheyAreExactButForTwo)
{
    int exact = 0;
    for (int size = 1; size < (1 << 21) - 1; ++size)
    {
        if (size >> (exact + 1))
            ++exact;
        const bool odd = size == 8192 || size == 32768;
        ASSERT_EQ(lastMipLevel(size, 1), odd ? exact - 1 : exact) << size;
    }
}

TEST(TextureLevels, SinglePrecisionIsPartOfTheResult)
{
    struct
    {
        int size, last;
    } const rows[] = {
        // Powers of two whose quotient of logarithms is just below the whole number, and what rounds to them.
        {8192, 12},
        {32768, 14},
        {67108863, 25},
        {67108864, 25},
        {67108868, 25},
        {67108869, 26},
        {1073741823, 29},
        {1073741824, 29},
        {1073741888, 29},
        {1073741889, 30},
        // The sizes just below a power of two that count as that power; the last one before them is exact.
        {1048575, 19},
        {2097150, 20},
        {2097151, 21},
        {4194302, 21},
        {4194303, 22},
        {8388600, 22},
        {8388601, 23},
        {16777200, 23},
        {16777201, 24},
        {33554417, 24},
        {33554418, 25},
        {134217540, 26},
        {134217541, 27},
        {268435208, 27},
        {268435209, 28},
        {536870672, 28},
        {536870673, 29},
        {2147480640, 30},
        {2147480641, 31},
    };
    for (const auto& row : rows)
        EXPECT_EQ(lastMipLevel(row.size, 1), row.last) << row.size;
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
