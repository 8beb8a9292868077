// SPDX-License-Identifier: MIT
// Small shadow maps for some lights of any kind. As many layers as the library asks for.
#pragma once

#include "Model.h"

#include "ShadowMapManager.h"

#include <QMatrix4x4>
#include <QString>
#include <QVariantList>
#include <QVector3D>

#include <functional>
#include <memory>
#include <utility>
#include <vector>

namespace Harrow::Vrk
{
class FramebufferObject;
class ShaderProgram;
class Texture;
} // namespace Harrow::Vrk

namespace vrksoak
{

struct ShadowLight
{
    Harrow::Vrk::ShadowMapManager::Light::Type type;
    QVector3D place;
    QVector3D along; ///< unit vector, the way it shines
    float cutoff;    ///< of a spot
    int cascades;    ///< of a sun, or of each side of a point light
};

class ShadowLayers
{
public:
    using DrawDepth = std::function<void(const QMatrix4x4& clipFromWorld)>;

    /// What is rendered is depth, or depth and its square.
    ShadowLayers(const std::vector<ShadowLight>& lights, const vrkview::Bounds& bounds, bool isVariance);
    ~ShadowLayers();

    /// Renders the layers if a projection has changed, or the scene. Leaves the default framebuffer bound. False, with
    /// `error` in one line, when a layer cannot be drawn into.
    bool update(const QMatrix4x4& clipFromView, const QMatrix4x4& viewFromWorld, bool sceneHasMoved,
                const DrawDepth& draw, QString& error);

    /// Around draws by a bound program.
    void bind(Harrow::Vrk::ShaderProgram& program);
    void unbind(Harrow::Vrk::ShaderProgram& program);

private:
    void makeLayers(int count);

    bool _isVariance;
    std::pair<QVector3D, QVector3D> _bounds;
    std::vector<std::unique_ptr<Harrow::Vrk::ShadowMapManager::Light>> _lights;
    QVariantList _lightList; // the same
    Harrow::Vrk::ShadowMapManager::RenderData _data;
    std::unique_ptr<Harrow::Vrk::Texture> _layers;
    std::unique_ptr<Harrow::Vrk::Texture> _depth;
    std::unique_ptr<Harrow::Vrk::FramebufferObject> _framebuffer;
    int _madeLayers = 0;
};

} // namespace vrksoak
