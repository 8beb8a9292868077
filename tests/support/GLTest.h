// SPDX-License-Identifier: MIT
#pragma once

/// \file
/// Fixture of all suites that need a real driver. Their names end in "GL", and they run in two profiles: with all that
/// the driver offers, and on the floor, an OpenGL 3.2 core profile without any optional entry point.

#include "support/HeadlessContext.h"

#include <gtest/gtest.h>

namespace Harrow::Vrk::Test
{

class GLTest : public testing::Test
{
public:
    /// Whether this run is the floor profile.
    static bool isFloor();

    /// The process's first context, current in every test at its start.
    static HeadlessContext& context();

protected:
    /// Makes the context current and has the function table loaded from the real driver. Fails without a driver.
    void SetUp() override;
    /// Fails when the test left an OpenGL error behind.
    void TearDown() override;
};

/// For the suites of FakeDriver: forgets what the library cached of optional entry points, and the texture units
/// of all contexts.
void resetCachedEntryPoints();

} // namespace Harrow::Vrk::Test
