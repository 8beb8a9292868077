// SPDX-License-Identifier: MIT
// A scene made by arithmetic, for machines without a model file: a small round temple with shapes in its court.
// It uses what a file would bring: meshes shared by several instances, scaled and mirrored ones among them.
#pragma once

#include "Model.h"

namespace vrkview
{

Model makeBuiltInScene();

} // namespace vrkview
