// SPDX-License-Identifier: MIT
#pragma once

/// \file
/// The texture file formats that the library knows by itself. Not installed.

#include "Export.h"

namespace Harrow::Vrk
{

/// Registers a new recogniser for each, with its suffix: "hdr", "ktx", "astc". No OpenGL.
VRKGL_EXPORT void registerTextureFileFormats();

} // namespace Harrow::Vrk
