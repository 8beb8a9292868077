// SPDX-License-Identifier: MIT
#pragma once

/// \file
/// The optional entry points of `BufferObject`, null where the driver lacks them. Not installed; tests reset it.

#include "Export.h"
#include "GLOptionalFunctions.h"

namespace Harrow::Vrk
{

struct BufferObjectEntryPoints
{
    PFN_glBufferStorage bufferStorage = nullptr;
    PFN_glNamedBufferData namedBufferData = nullptr;
    PFN_glNamedBufferStorage namedBufferStorage = nullptr;
    PFN_glNamedBufferSubData namedBufferSubData = nullptr;
};

VRKGL_EXPORT BufferObjectEntryPoints& bufferObjectEntryPoints();

} // namespace Harrow::Vrk
