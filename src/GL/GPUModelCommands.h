// SPDX-License-Identifier: MIT
#pragma once

/// \file
/// How many commands a drawable has, which the files of GPUModel all ask. Not installed.

#include "DrawBuffers.h"

namespace Harrow::Vrk
{

/// 0 without a draw list.
inline int commandCount(const DrawBuffers* buffers)
{
    return buffers ? buffers->numDrawCommands() : 0;
}

} // namespace Harrow::Vrk
