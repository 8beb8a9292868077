// SPDX-License-Identifier: MIT
#pragma once

/// \file
/// How one texture file is to be loaded.

#include <QtGlobal>

namespace Harrow::Vrk
{

/// A plain record, copied by value. A default one leaves the pixels of a file as they are.
struct TextureFileInfo
{
    /// The range that colours are brought to: `lowValue` + colour * (`highValue` - `lowValue`). 0 and 1 change nothing.
    float lowValue = 0.0f;
    float highValue = 1.0f;
    /// Whether plain images are brought to that range.
    bool remapColorRange = true;
    /// The pixels are sRGB-encoded.
    bool srgb = false;
    /// KTX files come ready: neither range nor direction is changed.
    bool preprocessed = false;
    /// Anisotropy to ask for, at most what the driver has; 0 and below for none.
    qint32 anisotropy = 0;
    /// Bits per channel, for applications that bake textures. Nothing in the library reads it.
    qint32 bakeDepth = 8;
};

} // namespace Harrow::Vrk
