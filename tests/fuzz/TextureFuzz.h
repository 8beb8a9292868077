// SPDX-License-Identifier: MIT
#pragma once

/// \file
/// What the targets of the texture readers share.

#include "FuzzInput.h"

namespace Harrow::Vrk
{
class TextureLoader;
}

namespace Harrow::Vrk::Test
{

/// Takes every answer that a loader has, that of metadata behind the last entry too, and reads the raw texts to their
/// end.
void askAll(const TextureLoader& loader);

/// Whether a Radiance picture is to be loaded. Not one with a run of bytes beyond its row, which ends the process as
/// it must: its rows are read here, into rooms of exactly their size, to find out. And not one that takes much memory,
/// which says nothing new and takes the time of hundreds of runs. What is no Radiance picture is to be loaded.
bool isLoadable(const FuzzInput& input);

} // namespace Harrow::Vrk::Test
