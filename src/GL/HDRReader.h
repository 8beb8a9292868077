// SPDX-License-Identifier: MIT
#pragma once

/// \file
/// Reads a Radiance picture (".hdr", ".pic") into a floating-point texture. Made by `HDRRecogniser`.

#include "Export.h"
#include "TextureLoader.h"

#include <memory>

namespace Harrow::Vrk
{

class Memory;

/// Takes every picture whose first line is "#?RADIANCE", with or without a line that tells its format; the formats are
/// "32-bit_rle_rgbe" and "32-bit_rle_xyze", and the numbers of the latter are taken as if they were colours. Exposures
/// are read and not applied.
///
/// The resolution line names two axes in any order, and which is which makes no difference: the first size is the
/// height. Its sign alone counts: with "-" the picture's first row becomes the top row of the texture, with "+" the
/// bottom row.
///
/// Each row is coded by itself: plain, run-length coded channel by channel (bytes 2 2 and the width, highest byte
/// first), or in the oldest way (bytes 1 1 1). The oldest way is recognised only in rows that begin with a marker, and
/// there the pixel behind the markers is the one that is repeated. A row of another kind is plain throughout.
class VRKGL_EXPORT HDRReader : public TextureLoader2DHelper
{
public:
    /// Takes `memory` over and reads the header. Null memory is reported, and the reader is not valid.
    HDRReader(Memory* memory, const QString& name);
    ~HDRReader() override;

    bool valid() const override;
    /// The sizes of the resolution line, in pixels.
    quint32 width() const override;
    quint32 height() const override;

    /// Decodes the picture and makes a `GL_TEXTURE_2D` in `GL_RGB16F` of it: one level, linear filtering, clamped to
    /// the edge. With `info.srgb` it goes through `SrgbToLinear`; `RemapColorRange` gives it the range of `info`
    /// whatever `info.remapColorRange` says. Leaves the unpack alignment as it was, and OpenGL's state as those two do;
    /// the rest of the unpack state must be OpenGL's default.
    ///
    /// Null, with the warning "Texture %s failed to load." and nothing left behind, when the bytes end before the
    /// picture does, when it has no pixels, is too large for memory or for the driver, when no texture unit is free,
    /// and when `glGetError` tells of an error, one from before included.
    ///
    /// A row whose own width is another than the picture's gives the warning "HDR format error: bad scanline width" and
    /// stays black, as do all rows behind it, since reading does not go on from there. A run of equal bytes beyond the
    /// end of its row gives "Bad scanline: RLE run starting at %u ends at %u, but width is only %u" and **ends the
    /// process** by `abort`.
    Texture* load(const TextureFileInfo& info) override;

private:
    struct Record;
    std::unique_ptr<Record> _record;
};

} // namespace Harrow::Vrk
