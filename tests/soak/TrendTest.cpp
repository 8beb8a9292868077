// SPDX-License-Identifier: MIT
#include "Trend.h"
#include "SoakOptions.h"

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
    EXPECT_DOUBLE_EQ(trend.step(), 0.0);
    EXPECT_TRUE(trend.isFlat(0.0));
}

TEST(SoakTrend, ASteadyRiseIsMeasuredAndIsNotFlat)
{
    const Trend trend(row(30, 1000.0, 11.0));
    EXPECT_DOUBLE_EQ(trend.slope, 11.0);
    EXPECT_DOUBLE_EQ(trend.rise(), 220.0);
    EXPECT_DOUBLE_EQ(trend.step(), 110.0);
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
    values[28] = values[29] = 0.0;
    EXPECT_FALSE(Trend(values).isFlat(kLimit));
}

TEST(SoakTrend, AFallIsFlat)
{
    EXPECT_TRUE(Trend(row(30, 10000.0, -50.0)).isFlat(0.0));
}

TEST(SoakOptions, DefaultsJudgeEverythingAndPlantNothing)
{
    QString error;
    const auto options = parseSoakOptions({QStringLiteral("vrk_soak")}, error);
    ASSERT_TRUE(options) << qPrintable(error);
    EXPECT_TRUE(options->judgesMemory);
    EXPECT_EQ(options->plant, Plant::None);
    EXPECT_FALSE(options->manager);
}

TEST(SoakOptions, ArgumentsAreRead)
{
    QString error;
    const auto options = parseSoakOptions(
        {"vrk_soak", "--seconds", "7", "--seed", "12", "--manager", "array2d", "--plant", "token", "--no-memory"},
        error);
    ASSERT_TRUE(options) << qPrintable(error);
    EXPECT_EQ(options->seconds, 7);
    EXPECT_EQ(options->seed, 12u);
    EXPECT_EQ(options->manager, vrkview::ManagerKind::Array2D);
    EXPECT_EQ(options->plant, Plant::Token);
    EXPECT_FALSE(options->judgesMemory);
}

TEST(SoakOptions, WhatMeansNothingIsRefused)
{
    const QStringList wrong[] = {{"vrk_soak", "--seconds", "0"}, {"vrk_soak", "--seed", "x"},
                                 {"vrk_soak", "--manager", "x"}, {"vrk_soak", "--plant", "x"},
                                 {"vrk_soak", "--what"},         {"vrk_soak", "stray"}};
    for (const QStringList& arguments : wrong)
    {
        QString error;
        EXPECT_FALSE(parseSoakOptions(arguments, error)) << qPrintable(arguments.join(' '));
        EXPECT_FALSE(error.isEmpty()) << qPrintable(arguments.join(' '));
    }
}
