// SPDX-License-Identifier: MIT
// Draws a model from a camera: a soft background, then every instance with sky and ground light, one key light that
// stays beside the camera, and a rim. Knows nothing of windows and files.
#pragma once

#include "FrameStats.h"
#include "Model.h"
#include "OrbitCamera.h"
#include "RenderSettings.h"
#include "Streamers.h"

#include <VrkGL/GLSLMacroProcessor.h>

#include <QSharedPointer>
#include <QString>

#include <memory>
#include <optional>
#include <vector>

namespace Harrow::Vrk
{
class ShaderProgram;
class TextureManager;
class UniformBufferObject;
} // namespace Harrow::Vrk

namespace vrkview
{

class Environment;
class Gizmos;
class Scene;
class ScenePlans;
class ShadowMaps;

/// Where a picture is taken from.
struct View
{
    QMatrix4x4 viewFromScene;
    QMatrix4x4 clipFromView;
};

/// Made, used and destroyed with the same context current, after `initializeGLFunctions`.
class SceneRenderer
{
public:
    SceneRenderer();
    ~SceneRenderer();
    SceneRenderer(const SceneRenderer&) = delete;
    SceneRenderer& operator=(const SceneRenderer&) = delete;

    /// Whether the driver has the roads that `settings` ask for, and whether these can carry the model's pictures. On
    /// false `error` says in one line what is lacking.
    static bool isSupported(const Model& model, const RenderSettings& settings, QString& error);

    /// Builds the programs and uploads `model`, which need not outlive the call. On false `error` says why in one line;
    /// the library has then logged what the shader compiler said.
    bool create(const Model& model, const RenderSettings& settings, QString& error);
    void destroy();

    /// Draws by other settings from now on. `model` is that of `create`. Builds anew what they touch and no more; where
    /// that is the scene, what moves by itself begins anew too. On false `error` says why in one line, and the settings
    /// are the former ones; if those fail now too, nothing is held, and `isCreated` is false.
    bool change(const Model& model, const RenderSettings& settings, QString& error);

    bool isCreated() const
    {
        return _scene != nullptr;
    }

    const RenderSettings& settings() const
    {
        return _settings;
    }

    /// Which tiles are white because the texture manager has none, in one line, or empty.
    const QString& whiteTiles() const
    {
        return _whiteTiles;
    }

    /// The view of one of the file's cameras, or empty if the file has none of that name. A number names the camera
    /// with that index.
    std::optional<View> fileCamera(const QString& name, float aspect) const;

    /// The number of that camera, from 0, or -1.
    int fileCameraIndex(const QString& name) const;
    int fileCameraCount() const;
    View fileCameraView(int index, float aspect) const;
    View viewOf(const OrbitCamera& camera, float aspect) const;

    /// Moves what moves by itself to where it is at this time.
    void animate(double seconds);

    /// Draws into the bound framebuffer, over all of its viewport.
    void draw(const View& view);

    /// Of the last frame.
    const FrameStats& stats() const
    {
        return _stats;
    }

private:
    using Program = std::unique_ptr<Harrow::Vrk::ShaderProgram>;

    bool build(const Model& model, const RenderSettings& settings, QString& error);
    bool rebuild(const Model& model, const RenderSettings& settings, std::unique_ptr<Environment> environment,
                 QString& error);
    bool changeInPlace(const RenderSettings& settings, QString& error);
    void chooseDrawIdCarrier(DrawIdCarrier wanted);
    void createTextureManager(ManagerKind kind);
    Program newProgram(const QString& vertexName, const QString& fragmentName);
    Program newSceneProgram(const QString& fragmentName);
    bool buildPrograms(const RenderSettings& settings, QString& error);
    bool buildDebugProgram(DebugView debugView, QString& error);
    bool createEnvironment(const EnvironmentSettings& settings, QString& error);
    bool createGizmos(QString& error);
    bool createLights(const std::vector<SceneLight>& lights, const Bounds& bounds, ShadowMapKind kind, QString& error);
    void uploadLights(const std::vector<SceneLight>& lights);
    void updateFrame(const QMatrix4x4& clipFromScene, const QMatrix4x4& viewFromScene);
    void drawBackground();
    void drawQuad(Harrow::Vrk::ShaderProgram& program);
    void drawDebugView();
    void drawShadows(const View& view);
    void drawScene(const View& view);
    void bindSceneProgram();
    void unbindSceneProgram();
    void countDraws();

    Harrow::Vrk::GLSLMacroProcessor _macroProcessor; // programs point at it
    Program _backgroundProgram;
    Program _sceneProgram;
    Program _depthProgram; // null without shadows
    Program _debugProgram; // null unless a debug view is what is drawn
    DebugView _debugView = DebugView::None;
    QSharedPointer<Harrow::Vrk::UniformBufferObject> _frame;
    std::optional<double> _advancedAt;                      // the time that they show
    Streamers _streamers;                                   // the manager owns them
    std::shared_ptr<Harrow::Vrk::TextureManager> _textures; // not shared, but it knows how its kind is deleted
    std::unique_ptr<ScenePlans> _plans;
    std::unique_ptr<Scene> _scene;
    QSharedPointer<Harrow::Vrk::UniformBufferObject> _lights; // null without shadows, as is the next
    std::unique_ptr<ShadowMaps> _shadows;
    std::unique_ptr<Environment> _environment; // null without one
    std::unique_ptr<Gizmos> _gizmos;           // null without them
    RenderSettings _settings;
    Bounds _bounds;                       // of all that there ever is in the scene's space
    std::vector<SceneLight> _sceneLights; // none without shadows
    QString _whiteTiles;
    float _shadowRadius = 0.0f;
    bool _byBaseInstance = false;
    FrameStats _stats;
};

} // namespace vrkview
