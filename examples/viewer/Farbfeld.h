// SPDX-License-Identifier: MIT
// Reads farbfeld pictures, a format that neither the library nor Qt knows: "farbfeld", width and height as 32-bit
// numbers, then four 16-bit numbers for each pixel (red, green, blue, alpha), all big-endian, top row first.
#pragma once

#include <VrkGL/TextureRecogniser.h>

namespace vrkview
{

class FarbfeldRecogniser : public Harrow::Vrk::TextureRecogniser
{
public:
    Harrow::Vrk::TextureLoader* recognise(Harrow::Vrk::Memory* memory, const QString& name) const override;
};

} // namespace vrkview
