// SPDX-License-Identifier: MIT
// Draws a model from a camera: a soft background, then every instance with sky and ground light, one key light that
// stays beside the camera, and a rim. Knows nothing of windows and files.
#pragma once

#include "DrawIdCarrier.h"
#include "Model.h"
#include "OrbitCamera.h"

#include <VrkGL/GLSLMacroProcessor.h>

#include <QSharedPointer>
#include <QString>

#include <memory>

namespace Harrow::Vrk
{
class SamplerTextureManager;
class ShaderProgram;
class UniformBufferObject;
} // namespace Harrow::Vrk

namespace vrkview
{

class GpuScene;

/// Made, used and destroyed with the same context current, after `initializeGLFunctions`.
class SceneRenderer
{
public:
    SceneRenderer();
    ~SceneRenderer();
    SceneRenderer(const SceneRenderer&) = delete;
    SceneRenderer& operator=(const SceneRenderer&) = delete;

    /// Builds the programs and uploads `model`, which need not outlive the call. On false `error` says why in one line;
    /// the library has then logged what the shader compiler said.
    bool create(const Model& model, DrawIdCarrier drawIdCarrier, QString& error);
    void destroy();

    /// Draws into the bound framebuffer, over all of its viewport, whose width by height is `aspect`.
    void draw(const OrbitCamera& camera, float aspect);

private:
    using Program = std::unique_ptr<Harrow::Vrk::ShaderProgram>;

    static bool chooseDrawIdCarrier(DrawIdCarrier wanted, QString& error);
    void createTextureManager();
    Program buildProgram(const QString& name, bool drawsScene, QString& error);
    void updateFrame(const OrbitCamera& camera, float aspect);
    void drawBackground();
    void drawScene();

    Harrow::Vrk::GLSLMacroProcessor _macroProcessor; // programs point at it
    Program _backgroundProgram;
    Program _sceneProgram;
    QSharedPointer<Harrow::Vrk::UniformBufferObject> _frame;
    std::unique_ptr<Harrow::Vrk::SamplerTextureManager> _textures;
    std::unique_ptr<GpuScene> _scene;
};

} // namespace vrkview
