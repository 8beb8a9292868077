// SPDX-License-Identifier: MIT
#pragma once

/// \file
/// The library's own words for texel formats, wherever a texture is asked for by kind, and what OpenGL calls each of
/// them. For raw OpenGL formats, as read back from a texture or a file, see `formatFromInternalFormat` and its kin.

#include "Export.h"

namespace Harrow::Vrk
{

/// Numbered from 0 without gaps; the numbers are interface.
enum TextureFormat : int
{
    R,
    RG,
    RGB,
    RGBA,
    SRGB8A8,
    R16F,
    RG16F,
    RGB16F,
    RGBA16F,
    R32F,
    RG32F,
    RGB32F,
    RGBA32F,
    R16I,
    RG16I,
    RGB16I,
    RGBA16I,
    R11FG11FB10F,
    RGBA1010102,
    R32I,
    RG32I,
    RGB32I,
    RGBA32I,
    DEPTH32F,
    DEPTH24_STENCIL8,
    DEPTH32F_STENCIL8
};

/// The internal format to ask for: unsized for `R`, `RG`, `RGB` and `RGBA`, so that the driver chooses, sized for all
/// others. `GL_RGBA` for a value outside the enumeration.
VRKGL_EXPORT int InternalFormat(TextureFormat format);

/// The same, with 8 bits for each channel of `R`, `RG`, `RGB` and `RGBA`. `GL_RGBA8` for a value outside the
/// enumeration.
VRKGL_EXPORT int SizedInternalFormat(TextureFormat format);

/// The pixel-transfer format. `GL_RGBA` for a value outside the enumeration.
VRKGL_EXPORT int ExternalFormat(TextureFormat format);

/// The pixel-transfer type. `GL_FLOAT` for a value outside the enumeration. `DEPTH32F_STENCIL8` says
/// `GL_UNSIGNED_INT_24_8`, and `R11FG11FB10F` the packed type, unlike `typeFromInternalFormat` for the same format.
VRKGL_EXPORT int ExternalType(TextureFormat format);

} // namespace Harrow::Vrk
