// SPDX-License-Identifier: MIT
#pragma once

/// \file
/// Names of texture formats for printing. Not installed.

#include "Export.h"
#include "TextureFormat.h"

namespace Harrow::Vrk
{

/// The name that prints for `format`, or null for a value that has none: the last two, and all outside the enumeration.
/// The table has no row for the packed formats, and is indexed by value, so that from `R11FG11FB10F` on each prints the
/// name of the format two further on. What is printed is interface.
VRKGL_EXPORT const char* textureFormatName(TextureFormat format);

} // namespace Harrow::Vrk
