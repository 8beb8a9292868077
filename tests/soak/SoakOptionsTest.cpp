// SPDX-License-Identifier: MIT
#include "SoakOptions.h"

#include <gtest/gtest.h>

using namespace vrksoak;

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
    EXPECT_EQ(options->seed, 12);
    EXPECT_EQ(options->manager, vrkview::ManagerKind::Array2D);
    EXPECT_EQ(options->plant, Plant::Token);
    EXPECT_FALSE(options->judgesMemory);
}

TEST(SoakOptions, WhatMeansNothingIsRefused)
{
    const QStringList wrong[] = {{"vrk_soak", "--seconds", "0"},
                                 {"vrk_soak", "--seed", "x"},
                                 {"vrk_soak", "--manager", "x"},
                                 {"vrk_soak", "--frames", "0"},
                                 {"vrk_soak", "--first-episode", "-1"},
                                 {"vrk_soak", "--report", "0"},
                                 {"vrk_soak", "--plant", "x"},
                                 {"vrk_soak", "--bare", "--plant", "token"},
                                 {"vrk_soak", "--what"},
                                 {"vrk_soak", "stray"}};
    for (const QStringList& arguments : wrong)
    {
        QString error;
        EXPECT_FALSE(parseSoakOptions(arguments, error)) << qPrintable(arguments.join(' '));
        EXPECT_FALSE(error.isEmpty()) << qPrintable(arguments.join(' '));
    }
}
