// SPDX-License-Identifier: MIT
#pragma once

/// \file
/// What the functions of PrefilteredEnvMap share: the making of their programs, the state that they bring back, and the
/// framebuffer and quad that each of them draws through.

#include "GLFunctions.h"
#include "PrefilteredEnvMap.h"

#include <QSharedPointer>

#include <memory>

namespace Harrow::Vrk
{

class DrawBuffers;
class FramebufferObject;
class ShaderProgram;

namespace Prefilter
{

enum class ProgramKind
{
    eCube,
    eLatLong,
    eTable
};

/// Bound. Null, after a warning, when it does not build, or when the driver's loops are too short for `samples`.
/// `samplesTexels` has each texel of the source taken once.
std::unique_ptr<ShaderProgram> buildProgram(ProgramKind kind, ShadingModel model, unsigned samples,
                                            bool samplesTexels = false);

class SavedViewport
{
public:
    SavedViewport();
    void restore() const;

private:
    GLint _viewport[4] = {};
};

class SavedFramebuffers
{
public:
    SavedFramebuffers();
    void restore() const;

private:
    GLint _drawing = 0;
    GLint _reading = 0;
};

/// A framebuffer and a quad of their own, bound with the program until `unbind`. Deletes program and framebuffer.
class Pass
{
public:
    explicit Pass(std::unique_ptr<ShaderProgram> program);
    ~Pass();
    Pass(const Pass&) = delete;
    Pass& operator=(const Pass&) = delete;

    /// Whether there is a quad to draw. Why not was reported.
    bool isReady() const;
    ShaderProgram& program();
    FramebufferObject& framebuffer();

    /// Draws the quad and hands it to the GPU at once.
    void draw();
    void unbind();

private:
    QSharedPointer<DrawBuffers> _quad;
    std::unique_ptr<FramebufferObject> _framebuffer;
    std::unique_ptr<ShaderProgram> _program; // goes first
};

} // namespace Prefilter
} // namespace Harrow::Vrk
