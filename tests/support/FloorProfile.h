// SPDX-License-Identifier: MIT
#pragma once

/// \file
/// The floor profile: the driver as an OpenGL 3.2 core profile without any optional entry point, by Mesa's overrides.

namespace Harrow::Vrk::Test
{

/// Whether the environment asks for the floor profile (`VRK_TEST_FLOOR`).
bool isFloorProfile();

/// Sets the driver's overrides when it does. To be called before the driver is loaded.
void applyFloorProfile();

} // namespace Harrow::Vrk::Test
