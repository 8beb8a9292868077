// SPDX-License-Identifier: MIT
// Lines that help to find one's way in a scene: a grid on its floor, the axes of the model's space, and where the
// lights stand and shine.
#pragma once

#include "SceneLights.h"

#include <QSharedPointer>
#include <QString>

#include <memory>
#include <vector>

namespace Harrow::Vrk
{
class DrawBuffers;
class GLSLMacroProcessor;
class ShaderProgram;
class UniformBufferObject;
} // namespace Harrow::Vrk

namespace vrkview
{

/// Made, used and destroyed with the same context current.
class Gizmos
{
public:
    Gizmos();
    ~Gizmos();
    Gizmos(const Gizmos&) = delete;
    Gizmos& operator=(const Gizmos&) = delete;

    /// Bounds and lights are in the scene's space. `processor` must outlive the gizmos. On false `error` says why in
    /// one line.
    bool create(const Bounds& bounds, const std::vector<SceneLight>& lights, Harrow::Vrk::GLSLMacroProcessor& processor,
                QString& error);

    /// Behind what is nearer than the lines. `frame` is the block of Frame.glslh.
    void draw(Harrow::Vrk::UniformBufferObject& frame);

private:
    std::unique_ptr<Harrow::Vrk::ShaderProgram> _program;
    std::unique_ptr<Harrow::Vrk::DrawBuffers> _lines;
};

} // namespace vrkview
