// SPDX-License-Identifier: MIT
#pragma once

/// \file
/// The Mandelbrot set computed by a compute shader, which OpenGL has since 4.3.

#include "MandelbrotTextureStreamer.h"

namespace Harrow::Vrk
{

class ShaderProgram;

/// The first texel of a row lies on the edge of the rectangle, the last one a step inside the other edge. At most 256
/// iterations a texel, in single precision.
class VRKGL_EXPORT MandelbrotGPUTextureStreamer : public MandelbrotTextureStreamer
{
    Q_OBJECT

public:
    /// Sizes in texels, both at least 1, which is reported and not enforced. Builds its program; where that fails, as
    /// it does where the driver has no compute shaders, the program's warnings are all that tells, and the streamer
    /// stays inactive. Use `make`.
    MandelbrotGPUTextureStreamer(int width, int height, QObject* parent);
    ~MandelbrotGPUTextureStreamer() override;

    /// The same, checked: warns "Invalid width" or "Invalid height", whatever the logging switch says, and returns null
    /// for a size below 1. The streamer belongs to the caller or to `parent`.
    static MandelbrotGPUTextureStreamer* make(int width, int height, QObject* parent);

    /// Computes the picture if the rectangle was changed since the last time, and says whether it did. Always false,
    /// with the texture undefined, when the program could not be built; false too when no texture unit is free. Warns
    /// of the OpenGL errors that stand, also of those from before, and clears them (`checkGLError`). Leaves the active
    /// unit as it was, no program bound and image unit 0 empty.
    bool updateTexture() override;

private:
    friend struct MandelbrotTestAccess;

    void setUniforms(int width, int height);

    ShaderProgram* _program;
};

} // namespace Harrow::Vrk
