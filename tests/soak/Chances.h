// SPDX-License-Identifier: MIT
// What the episodes of the stage and of the viewer draw by chance, out of what this driver has.
#pragma once

#include "RenderSettings.h"

#include <optional>

namespace vrksoak
{

class Random;

/// One that every driver has, unless one is named.
vrkview::ManagerKind chooseManager(Random& random, std::optional<vrkview::ManagerKind> named);

vrkview::RecordCarrier chooseCarrier(Random& random);

/// Whether to draw by base instance.
bool chooseBaseInstance(Random& random);

/// Instances of a crowd that is small enough for many frames.
int chooseCrowd(Random& random);

} // namespace vrksoak
