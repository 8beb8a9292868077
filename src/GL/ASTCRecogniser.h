// SPDX-License-Identifier: MIT
#pragma once

/// \file
/// Finds files of the ASTC encoder by their first four bytes, 13 AB A1 5C.

#include "Export.h"
#include "TextureRecogniser.h"

namespace Harrow::Vrk
{

/// Knows a file by the identifier alone; whether the rest is sound, the reader tells.
class VRKGL_EXPORT ASTCRecogniser : public TextureRecogniser
{
public:
    ASTCRecogniser() = default;
    ~ASTCRecogniser() override;

    /// A new `ASTCReader`. Null memory is reported, and null.
    TextureLoader* recognise(Memory* memory, const QString& name) const override;
};

} // namespace Harrow::Vrk
