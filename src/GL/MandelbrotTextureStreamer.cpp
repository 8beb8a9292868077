// SPDX-License-Identifier: MIT
#include "MandelbrotTextureStreamer.h"

#include "Diagnostics.h"
#include "GLFunctions.h"
#include "StreamerTools.h"

namespace Harrow::Vrk
{

MandelbrotTextureStreamer::MandelbrotTextureStreamer(int width, int height, QObject* parent) : TextureStreamer(parent)
{
    VRK_ASSERT(width > 0, "Invalid width");
    VRK_ASSERT(height > 0, "Invalid height");
    create2D(GL_TEXTURE_2D, GL_RGBA8, width, height);
    setStreamerSampling(*this, GL_LINEAR, GL_LINEAR_MIPMAP_LINEAR, 0);
}

MandelbrotTextureStreamer::~MandelbrotTextureStreamer() = default;

void MandelbrotTextureStreamer::panDomain(double dx, double dy)
{
    _domainMinX += dx;
    _domainMaxX += dx;
    _domainMinY += dy;
    _domainMaxY += dy;
    _dirty = true;
}

void MandelbrotTextureStreamer::setDomainCenter(double x, double y)
{
    const double halfX = (_domainMaxX - _domainMinX) * 0.5;
    const double halfY = (_domainMaxY - _domainMinY) * 0.5;
    setDomainExtents(x - halfX, y - halfY, x + halfX, y + halfY);
}

void MandelbrotTextureStreamer::setDomainExtents(double minX, double minY, double maxX, double maxY)
{
    _domainMinX = minX;
    _domainMinY = minY;
    _domainMaxX = maxX;
    _domainMaxY = maxY;
    _dirty = true;
}

void MandelbrotTextureStreamer::zoomDomain(float factor)
{
    VRK_ASSERT(factor > 0, "Invalid factor");
    const double centerX = (_domainMinX + _domainMaxX) * 0.5;
    const double centerY = (_domainMinY + _domainMaxY) * 0.5;
    const double halfX = (_domainMaxX - _domainMinX) * 0.5 * static_cast<double>(factor);
    const double halfY = (_domainMaxY - _domainMinY) * 0.5 * static_cast<double>(factor);
    setDomainExtents(centerX - halfX, centerY - halfY, centerX + halfX, centerY + halfY);
}

} // namespace Harrow::Vrk
