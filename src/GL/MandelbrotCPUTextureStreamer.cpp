// SPDX-License-Identifier: MIT
#include "MandelbrotCPUTextureStreamer.h"

#include "Diagnostics.h"
#include "GLFunctions.h"
#include "MandelbrotPixels.h"
#include "StreamerTools.h"

#include <limits>
#include <new>

namespace Harrow::Vrk
{
namespace
{

/// Null when there is no memory for as many; a number that cannot even be asked for would throw.
std::unique_ptr<quint32[]> newPixels(std::size_t count)
{
    constexpr std::size_t kMost = std::numeric_limits<std::ptrdiff_t>::max() / sizeof(quint32);
    return std::unique_ptr<quint32[]>(count <= kMost ? new (std::nothrow) quint32[count] : nullptr);
}

} // namespace

MandelbrotCPUTextureStreamer::MandelbrotCPUTextureStreamer(int width, int height, QObject* parent)
    : MandelbrotTextureStreamer(width, height, parent)
{
    if (width < 1 || height < 1)
        return;
    const std::size_t count = static_cast<std::size_t>(width) * static_cast<std::size_t>(height);
    _pixels = newPixels(count);
    VRK_ASSERT(this->_pixels != nullptr, "There is no memory for %d x %d pixels", width, height);
    if (_pixels)
        _pixelCount = count;
}

MandelbrotCPUTextureStreamer::~MandelbrotCPUTextureStreamer() = default;

MandelbrotCPUTextureStreamer* MandelbrotCPUTextureStreamer::make(int width, int height, QObject* parent)
{
    if (!isAtLeastOne(width, "Invalid width") || !isAtLeastOne(height, "Invalid height"))
        return nullptr;
    return new MandelbrotCPUTextureStreamer(width, height, parent);
}

bool MandelbrotCPUTextureStreamer::hasPixelsFor(int width, int height) const
{
    return width >= 0 && height >= 0 &&
           static_cast<std::size_t>(width) * static_cast<std::size_t>(height) <= _pixelCount;
}

bool MandelbrotCPUTextureStreamer::updateTexture()
{
    static const MandelbrotKernel kKernel = bestMandelbrotKernel();
    if (!_dirty)
        return false;
    const ActiveUnitGuard activeUnit;
    if (!bind())
        return false;
    const int w = width(0);
    const int h = height(0);
    const bool fits = hasPixelsFor(w, h);
    VRK_ASSERT(fits, "There are no pixels for a texture of %d x %d texels", w, h);
    if (fits)
    {
        computeMandelbrotPixels(kKernel, {_domainMinX, _domainMinY, _domainMaxX, _domainMaxY}, w, h, _pixels.get());
        glTexSubImage2D(GL_TEXTURE_2D, 0, 0, 0, w, h, GL_RGBA, GL_UNSIGNED_BYTE, _pixels.get());
        _dirty = false;
    }
    unbind();
    return fits;
}

} // namespace Harrow::Vrk
