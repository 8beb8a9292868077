// SPDX-License-Identifier: MIT
#pragma once

/// \file
/// The Mandelbrot set computed by the processor, on the thread that asks for it.

#include "MandelbrotTextureStreamer.h"

#include <cstddef>
#include <memory>

namespace Harrow::Vrk
{

/// The outermost texels lie on the edges of the rectangle. At most 127 iterations a texel, in double precision; the
/// set itself is black, and so is what escapes within the first steps, beyond the colours' table: what lies far
/// outside. The points are followed to the same bits on all processors; the colours of those that escape also take the
/// C library's logarithm, whose last bit may differ among processors.
class VRKGL_EXPORT MandelbrotCPUTextureStreamer : public MandelbrotTextureStreamer
{
    Q_OBJECT

public:
    /// Sizes in texels, both at least 1, which is reported and not enforced. Without memory for four bytes a texel that
    /// is reported, and the streamer does nothing. Use `make`.
    MandelbrotCPUTextureStreamer(int width, int height, QObject* parent);
    ~MandelbrotCPUTextureStreamer() override;

    /// The same, checked: warns "Invalid width" or "Invalid height", whatever the logging switch says, and returns null
    /// for a size below 1. The streamer belongs to the caller or to `parent`.
    static MandelbrotCPUTextureStreamer* make(int width, int height, QObject* parent);

    /// Computes and uploads the picture if the rectangle was changed since the last time, and says whether it did.
    /// False too when no texture unit is free. Leaves the active unit as it was.
    bool updateTexture() override;

private:
    friend struct MandelbrotTestAccess;

    bool hasPixelsFor(int width, int height) const;

    std::unique_ptr<quint32[]> _pixels;
    std::size_t _pixelCount = 0;
};

} // namespace Harrow::Vrk
