// SPDX-License-Identifier: MIT
#include "TextureRecogniser.h"

namespace Harrow::Vrk
{

TextureRecogniser::~TextureRecogniser() = default;

} // namespace Harrow::Vrk
