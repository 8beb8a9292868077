// SPDX-License-Identifier: MIT
#pragma once

/// \file
/// Fits the projections of directional and point lights to what the camera can see of the scene, so that the texels of
/// the shadow maps go where they are looked at. Plain computation that touches no OpenGL.

#include "Bounds.h"
#include "ClipperVolume.h"
#include "Export.h"
#include "Plane.h"
#include "ShadowMapManager.h"

#include <QList>
#include <QMatrix4x4>
#include <QVector3D>

#include <optional>
#include <utility>

namespace Harrow::Vrk
{

/// Made for one round of `ShadowMapManager::processLights`: `setupCameras`, `setupScene` and `setupPost`, in this
/// order, then each light by one of the two others.
///
/// With the bounds of a scene but no camera all of the scene counts as seen. Without bounds there is nothing to fit to.
///
/// A plain value; any thread.
class VRKGL_EXPORT ShadowMapManagerCulling
{
public:
    ShadowMapManagerCulling() = default;

    /// The camera: clip space from view, and view from world. Neither may mirror, as that turns the inside of the
    /// frustum out. False when one of them is null. False, with an assertion, when the frustum has no volume or no end,
    /// as with a far plane at infinity; there is no camera then. A matrix that can't be inverted counts as identity.
    bool setupCameras(const QMatrix4x4* projection, const QMatrix4x4* view);
    /// Lower and upper corner of all that casts or receives shadows, in the world. False when null. Lower above upper
    /// on an axis, or what is not a number: the warning "ShadowMapManagerCulling::setupScene() INVALID Scene Bounds"
    /// and false.
    bool setupScene(const std::pair<QVector3D, QVector3D>* bounds);
    /// Works out what can be seen and what can cast a shadow. False when there is neither scene nor camera.
    bool setupPost();

    /// Append the light's projections to those that `info` counts, in order of cascades, or of sides and, in each, of
    /// cascades. What shows nothing of the scene is left out, so a light may get none. `changed` becomes true when one
    /// differs from what `data` held.
    ///
    /// False, with nothing done, without scene bounds; true otherwise. Assertions: no room in `data` (the rest of the
    /// light is left out), points without extent (that projection is left out), over 1024 cascades (none are made).
    bool processLightDirectional(ShadowMapManager::RenderData& data, ShadowMapManager::RenderData::ProjectorInfo& info,
                                 ShadowMapManager::Light* light, bool& changed);
    bool processLightPoint(ShadowMapManager::RenderData& data, ShadowMapManager::RenderData::ProjectorInfo& info,
                           ShadowMapManager::Light* light, bool& changed);

private:
    friend struct ShadowMapManagerCullingTestAccess;

    /// What one side of a point light reaches of the scene, in view or not.
    struct Reach
    {
        QMatrix4x4 lightWorld;
        float cutoff = -1.0f;
        ClipperVolume volume;
        QList<QVector3D> points;
    };

    /// The cascades of a light.
    struct ProcessCSMData
    {
        bool enabled = false;
        qint32 levels = 1;
        QVector3D nearPoint; ///< where the range that is split begins
        QVector3D farPoint;
        QVector3D delta;         ///< from near to far
        QList<QVector3D> points; ///< of the level in hand
        Bounds bounds;           ///< of the scene

        // Of a point light, what holds for more than one of its sides and levels; made when first asked for.
        ClipperVolume scene;
        QList<ClipperVolume> cameras; ///< by level
        std::optional<Reach> reach;   ///< of the side in hand
    };

    // "Frustrum" is the spelling of these names.
    static QList<QVector3D> getWorldFrustrumPoints(const QMatrix4x4& projection, const QMatrix4x4& view);
    static QList<Plane> getWorldFrustrumPlanes(const QMatrix4x4& projection, const QMatrix4x4& view);
    void setupLightCSMData(ShadowMapManager::Light* light, ProcessCSMData& data) const;
    /// What can be seen of the scene in a level.
    const QList<QVector3D>& getSceneCameraFrustrumPointsCSM(int level, ProcessCSMData& data,
                                                            const QList<Plane>& extraPlanes) const;
    /// What can be seen in a level of what one side of a light reaches; `casterPoints` is all that it reaches.
    const QList<QVector3D>& getSceneCameraFrustrumLightFrustrumPointsCSM(int level, ProcessCSMData& data,
                                                                         const QMatrix4x4& lightWorld, float cutoff,
                                                                         const QList<Plane>& extraPlanes,
                                                                         QList<QVector3D>& casterPoints) const;
    QList<Plane> levelPlanes(int level, const ProcessCSMData& data) const;
    const Reach& reachOf(const QMatrix4x4& lightWorld, float cutoff, ProcessCSMData& data) const;
    const ClipperVolume& cameraVolume(int level, ProcessCSMData& data) const;

    bool _hasCamera = false;
    bool _hasScene = false;
    bool _ready = false;
    QList<QVector3D> _frustumPoints; ///< in the world, in the order of `Bounds::corners`
    QList<Plane> _frustumPlanes;     ///< near, far, lower x, upper x, upper y, lower y
    QList<QVector3D> _scenePoints;
    QList<QVector3D> _visiblePoints; ///< what can receive a shadow that is seen
    QList<QVector3D> _casterPoints;
    QList<Plane> _solidPlanes; ///< those of the frustum, none of them with a zero normal
};

} // namespace Harrow::Vrk
