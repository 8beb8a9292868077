// SPDX-License-Identifier: MIT
#pragma once

/// \file
/// The arithmetic of the Mandelbrot set on the processor, without OpenGL: how fast each point of a rectangle of the
/// complex plane escapes, and the colour of that. Not installed.

#include "Export.h"

#include <QtGlobal>

#include <array>

namespace Harrow::Vrk
{

struct MandelbrotDomain
{
    double minX;
    double minY;
    double maxX;
    double maxY;
};

constexpr int kMandelbrotColors = 256;

/// Red, green, blue, 0 to 255 for as many entries as a point can reach: 0 and 127 are black, between them are the
/// colours of the points that escape, by their count. Those above 128 are never read.
using MandelbrotPalette = std::array<std::array<float, 3>, kMandelbrotColors>;
VRKGL_EXPORT const MandelbrotPalette& mandelbrotPalette();

/// The ways of following the points. All give the same bits.
enum class MandelbrotKernel
{
    ePlain,       ///< One point after the other.
    eVectors,     ///< Several at once, by the compiler's vectors of two doubles.
    eWideVectors, ///< The same by vectors of four, on a processor with AVX2.
};

VRKGL_EXPORT bool isMandelbrotKernelSupported(MandelbrotKernel kernel);
/// The fastest that this processor has.
VRKGL_EXPORT MandelbrotKernel bestMandelbrotKernel();

/// Writes `width` * `height` pixels, the row of `minY` first: red in the lowest byte, then green, blue and 255. The
/// first and the last column and row lie on the edges of the rectangle. One of a width or height of 1 lies on the lower
/// edge. The kernel must be supported.
VRKGL_EXPORT void computeMandelbrotPixels(MandelbrotKernel kernel, const MandelbrotDomain& domain, int width,
                                          int height, quint32* pixels);

} // namespace Harrow::Vrk
