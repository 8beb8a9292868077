// SPDX-License-Identifier: MIT
// The split-sum table for GGX as it was published for real-time shading in 2013, computed on the CPU: what the
// library's table of that model is put beside.
#pragma once

#include <RadianceFile.h>

namespace envmap
{

/// `side` by `side` texels, the top row first: N.V along x, roughness upwards; scale in red, bias in green, and the
/// roughness in blue, as the library's table for one level has it.
vrkview::LightImage publishedSplitSum(int side);

} // namespace envmap
