// SPDX-License-Identifier: MIT
// A wall of pictures, each with a texture of its own, in several sizes, formats and kinds: what a manager of thousands
// of textures is for.
#pragma once

#include "Model.h"

namespace vrkview
{

constexpr int kLargestWall = 8000;

/// `count` panels in a square. The same for the same count.
Model makeTextureWall(int count);

} // namespace vrkview
