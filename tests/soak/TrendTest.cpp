// SPDX-License-Identifier: MIT
#include "Trend.h"

#include <gtest/gtest.h>

using namespace vrksoak;

namespace
{

constexpr double kLimit = 100.0;

std::vector<double> row(int count, double start, double perStep)
{
    std::vector<double> values;
    for (int i = 0; i < count; ++i)
        values.push_back(start + perStep * i);
    return values;
}

} // namespace

TEST(SoakTrend, FewMeasurementsSayNothing)
{
    EXPECT_FALSE(Trend(row(8, 1000.0, 0.0)).isKnown);
    EXPECT_FALSE(Trend(row(8, 1000.0, 0.0)).isFlat(kLimit));
    EXPECT_TRUE(Trend(row(9, 1000.0, 0.0)).isKnown);
}

TEST(SoakTrend, AnEvenRowIsFlat)
{
    const Trend trend(row(30, 1000.0, 0.0));
    EXPECT_EQ(trend.count, 20u);
    EXPECT_DOUBLE_EQ(trend.rise(), 0.0);
    EXPECT_DOUBLE_EQ(trend.riseByThirds(), 0.0);
    EXPECT_TRUE(trend.isFlat(0.0));
}

TEST(SoakTrend, ASteadyRiseIsMeasuredAndIsNotFlat)
{
    const Trend trend(row(30, 1000.0, 11.0));
    EXPECT_DOUBLE_EQ(trend.slope, 11.0);
    EXPECT_DOUBLE_EQ(trend.rise(), 220.0);
    EXPECT_DOUBLE_EQ(trend.riseByThirds(), 220.0);
    EXPECT_FALSE(trend.isFlat(kLimit));
}

TEST(SoakTrend, WhatHappensInTheFirstThirdDoesNotCount)
{
    std::vector<double> values = row(30, 2000.0, 0.0);
    for (std::size_t i = 0; i < 10; ++i)
        values[i] = 100.0 * double(i);
    EXPECT_TRUE(Trend(values).isFlat(0.0));
}

TEST(SoakTrend, OutliersDoNotMakeARise)
{
    std::vector<double> values = row(30, 1000.0, 0.0);
    values[25] = values[27] = values[29] = 9000.0;
    EXPECT_TRUE(Trend(values).isFlat(0.0));
}

TEST(SoakTrend, OutliersDoNotHideARise)
{
    std::vector<double> values = row(30, 1000.0, 20.0);
    values[10] = values[12] = values[19] = 9000.0;
    EXPECT_FALSE(Trend(values).isFlat(kLimit));
}

TEST(SoakTrend, WhatIsKeptForAWhileDoesNotMakeARise)
{
    std::vector<double> values = row(30, 1000.0, 0.0);
    for (const std::size_t i : {15, 17, 19})
        values[i] = 1500.0;
    for (const std::size_t i : {20, 21, 22, 23, 24, 25, 27, 28, 29})
        values[i] = 2000.0;
    const Trend trend(values);
    EXPECT_GT(trend.rise(), kLimit) << "so it is for the thirds to say";
    EXPECT_DOUBLE_EQ(trend.riseByThirds(), 0.0);
    EXPECT_TRUE(trend.isFlat(kLimit));
}

TEST(SoakTrend, AFallIsFlat)
{
    EXPECT_TRUE(Trend(row(30, 10000.0, -50.0)).isFlat(0.0));
}
