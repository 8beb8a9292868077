// SPDX-License-Identifier: MIT
// Main program of the test binaries.
#include "support/FloorProfile.h"
#include "support/RecordingPlatform.h"

#include <QCoreApplication>

#include <gtest/gtest.h>

int main(int argc, char** argv)
{
    Harrow::Vrk::Test::applyFloorProfile();
    testing::InitGoogleTest(&argc, argv);
    Harrow::Vrk::Test::RecordingPlatform::instance();
    const QCoreApplication application(argc, argv);
    return RUN_ALL_TESTS();
}
