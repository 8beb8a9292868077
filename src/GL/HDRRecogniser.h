// SPDX-License-Identifier: MIT
#pragma once

/// \file
/// Finds Radiance pictures by their first line, "#?RADIANCE". Files that begin "#?RGBE" are not taken.

#include "Export.h"
#include "TextureRecogniser.h"

namespace Harrow::Vrk
{

/// Knows a picture by the identifier alone; whether the rest is sound, the reader tells.
class VRKGL_EXPORT HDRRecogniser : public TextureRecogniser
{
public:
    HDRRecogniser() = default;
    ~HDRRecogniser() override;

    /// A new `HDRReader`. Null memory is reported, and null.
    TextureLoader* recognise(Memory* memory, const QString& name) const override;
};

} // namespace Harrow::Vrk
