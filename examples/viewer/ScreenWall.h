// SPDX-License-Identifier: MIT
// A wall of screens, each of which shows a texture that changes from frame to frame.
#pragma once

#include "Model.h"

namespace vrkview
{

/// Of each kind of streamer two screens.
Model makeScreenWall();

} // namespace vrkview
