// SPDX-License-Identifier: MIT
// The application's side of shadows: it keeps the lights and the depth layers that the library asks for, and renders
// the layers when the library says that a projection has changed. Lighting a surface is the scene's shader's work.
#pragma once

#include "RenderSettings.h"
#include "SceneLights.h"

#include <VrkGL/GLFunctions.h>
#include <VrkGL/ShadowMapManager.h>

#include <QMatrix4x4>
#include <QString>
#include <QVariantList>

#include <functional>
#include <memory>
#include <utility>
#include <vector>

namespace Harrow::Vrk
{
class ShaderProgram;
class Texture;
} // namespace Harrow::Vrk

namespace vrkview
{

/// Made, used and destroyed with the same context current.
class ShadowMaps
{
public:
    /// Draws the depth of what casts shadows. `mirrored`: front faces come out clockwise.
    using DrawDepth = std::function<void(const QMatrix4x4& clipFromScene, bool mirrored)>;

    ShadowMaps();
    ~ShadowMaps();
    ShadowMaps(const ShadowMaps&) = delete;
    ShadowMaps& operator=(const ShadowMaps&) = delete;

    /// Lights and bounds are in the space that the shader's places are in. False, with `error` in one line, where the
    /// driver can't draw into such layers.
    bool create(const std::vector<SceneLight>& lights, const Bounds& bounds, ShadowMapKind kind, QString& error);

    /// Before the frame is drawn; `sceneHasMoved` since the last call. Leaves the framebuffer and the viewport as they
    /// were. Returns the number of layers that had to be rendered.
    int update(const QMatrix4x4& clipFromView, const QMatrix4x4& viewFromScene, bool sceneHasMoved,
               const DrawDepth& draw);

    /// Layers in use.
    int layerCount() const;

    /// Around draws by a bound program that calls the library's lookups.
    void bind(Harrow::Vrk::ShaderProgram& program);
    void unbind(Harrow::Vrk::ShaderProgram& program);

private:
    bool makeLayers(int count);
    bool layersAreDrawable();
    void renderLayers(const DrawDepth& draw);

    std::vector<std::unique_ptr<Harrow::Vrk::ShadowMapManager::Light>> _lights;
    QVariantList _lightList; // the same
    std::pair<QVector3D, QVector3D> _bounds;
    ShadowMapKind _kind = ShadowMapKind::Plain;
    Harrow::Vrk::ShadowMapManager::RenderData _data;
    std::unique_ptr<Harrow::Vrk::Texture> _layers;
    int _madeLayers = 0;
    GLuint _framebuffer = 0;
    GLuint _depth = 0;
};

} // namespace vrkview
