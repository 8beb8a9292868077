// SPDX-License-Identifier: MIT
// Textures of other kinds than the library makes from images: cube maps, arrays, other formats.
#pragma once

namespace Harrow::Vrk
{
class Texture;
}

class QImage;

namespace vrkview
{

struct Image;

/// A cube map or an array of the parts, trilinear and clamped, with all levels. Without parent. The parts have one
/// size.
Harrow::Vrk::Texture* newLayeredTexture(const Image& image);

/// The same for one picture of one byte of red, or of four channels of 16 bits.
Harrow::Vrk::Texture* newPlainTexture(const QImage& pixels);

} // namespace vrkview
