// SPDX-License-Identifier: MIT
#pragma once

/// \file
/// A picture of the Mandelbrot set over a rectangle of the complex plane that the application moves: texels that cost
/// real work, for trying out streaming. How they are computed is left to two classes.

#include "TextureStreamer.h"

namespace Harrow::Vrk
{

/// The rectangle reaches from -2.5 - i to 1 + i at first. Each change of it, also one that changes nothing, has the
/// picture computed anew at the next `updateTexture`, in the caller's frame. The changes make no OpenGL call.
class VRKGL_EXPORT MandelbrotTextureStreamer : public TextureStreamer
{
    Q_OBJECT

public:
    /// A texture of `width` by `height` texels in `GL_RGBA8`, linear, of one level, clamped to the edge; undefined
    /// until the first update. Sizes below 1 are reported and used.
    MandelbrotTextureStreamer(int width, int height, QObject* parent);
    ~MandelbrotTextureStreamer() override;

    /// Moves the rectangle, by units of the plane.
    void panDomain(double dx, double dy);
    /// Moves its centre to x + iy.
    void setDomainCenter(double x, double y);
    /// Sets its edges. They may be the wrong way round, which turns the picture over.
    void setDomainExtents(double minX, double minY, double maxX, double maxY);
    /// Multiplies its extents about its centre: a factor below 1 zooms in. One that is not above 0 is reported and
    /// used.
    void zoomDomain(float factor);

    bool updateTexture() override = 0;

protected:
    friend struct MandelbrotTestAccess;

    /// The rectangle of the plane, and whether it has changed since the picture was computed.
    double _domainMinX = -2.5;
    double _domainMinY = -1.0;
    double _domainMaxX = 1.0;
    double _domainMaxY = 1.0;
    bool _dirty = true;
};

} // namespace Harrow::Vrk
