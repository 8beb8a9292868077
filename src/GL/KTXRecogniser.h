// SPDX-License-Identifier: MIT
#pragma once

/// \file
/// Finds KTX 1.1 files by their identifier. Other versions are not claimed.

#include "Export.h"
#include "TextureRecogniser.h"

namespace Harrow::Vrk
{

/// Knows a file by the identifier alone; whether the rest is sound, the reader tells.
class VRKGL_EXPORT KTXRecogniser : public TextureRecogniser
{
public:
    KTXRecogniser();
    ~KTXRecogniser() override;

    /// A `KTXReader`, also where that finds the rest of the file unreadable. Null memory is reported and not claimed.
    TextureLoader* recognise(Memory* memory, const QString& name) const override;
};

} // namespace Harrow::Vrk
