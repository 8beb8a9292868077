// SPDX-License-Identifier: MIT
// Many instances of a few meshes, each going round in a small circle of its own: something to cull, sort and update.
#pragma once

#include "Model.h"

namespace vrkview
{

constexpr int kLargestCrowd = 100000;

/// `count` instances on a square field. The same for the same count.
Model makeCrowd(int count);

} // namespace vrkview
