// SPDX-License-Identifier: MIT
#include "ShadowMapManagerCulling.h"

#include "Diagnostics.h"
#include "ShadowMapFitting.h"

#include <QMessageLogger>

#include <algorithm>
#include <optional>

namespace Harrow::Vrk
{
namespace
{

using RenderData = ShadowMapManager::RenderData;
using Light = ShadowMapManager::Light;

constexpr float kDirectionalBlur = 0.0005f;
constexpr float kPointBlur = 0.0f;

/// Appends a projection to those of `info`. False when there is no room, so that the light is given up.
bool append(RenderData& data, RenderData::ProjectorInfo& info, const QMatrix4x4& matrix, float blur, bool& changed)
{
    const qint64 index = static_cast<qint64>(info.index) + info.count;
    const qsizetype room = std::min(data.transforms.size(), data.blurInfos.size());
    VRK_ASSERT_RETURN(index >= 0 && index < room, false, "No room for projection %d of a light among %lld", info.count,
                      static_cast<long long>(room));
    if (!isFinite(matrix))
    {
        VRK_ASSERT(isFinite(matrix), "Projection %d of a light is fitted to points without extent", info.count);
        return true;
    }
    changed |= data.setTransform(static_cast<int>(index), matrix, blur);
    ++info.count;
    return true;
}

} // namespace

// ---- setting up ----------------------------------------------------------------------------------------------------

bool ShadowMapManagerCulling::setupCameras(const QMatrix4x4* projection, const QMatrix4x4* view)
{
    if (!projection || !view)
        return false;
    const QList<QVector3D> points = getWorldFrustrumPoints(*projection, *view);
    const QList<Plane> planes = getWorldFrustrumPlanes(*projection, *view);
    const QList<Plane> solid = solidFrustumPlanes(planes, points, *projection, *view);
    VRK_ASSERT_RETURN(isFrustum(points, solid), false, "Camera has a frustum without volume or without end");
    _frustumPlanes = planes;
    _solidPlanes = solid;
    _frustumPoints = points;
    _hasCamera = true;
    return true;
}

bool ShadowMapManagerCulling::setupScene(const std::pair<QVector3D, QVector3D>* bounds)
{
    if (!bounds)
        return false;
    const auto& [lower, upper] = *bounds;
    // In this form, what is not a number is invalid too.
    if (!(lower.x() <= upper.x() && lower.y() <= upper.y() && lower.z() <= upper.z()))
    {
        QMessageLogger().warning("ShadowMapManagerCulling::setupScene() INVALID Scene Bounds");
        return false;
    }
    _scenePoints = Bounds(lower, upper).corners();
    _hasScene = true;
    return true;
}

bool ShadowMapManagerCulling::setupPost()
{
    if (!_hasScene && !_hasCamera)
        return false;
    if (_hasScene && _hasCamera)
        _visiblePoints = Bounds(_scenePoints).frustrumClipped(_frustumPlanes, _frustumPoints, {});
    else
        _visiblePoints = _hasScene ? _scenePoints : _frustumPoints;
    _casterPoints = _hasScene ? _scenePoints : _frustumPoints;
    _ready = _hasScene;
    return true;
}

QList<QVector3D> ShadowMapManagerCulling::getWorldFrustrumPoints(const QMatrix4x4& projection, const QMatrix4x4& view)
{
    return frustumCorners(projection, view);
}

QList<Plane> ShadowMapManagerCulling::getWorldFrustrumPlanes(const QMatrix4x4& projection, const QMatrix4x4& view)
{
    return frustumPlanes(getWorldFrustrumPoints(projection, view));
}

// ---- cascades ------------------------------------------------------------------------------------------------------

void ShadowMapManagerCulling::setupLightCSMData(ShadowMapManager::Light* light, ProcessCSMData& data) const
{
    data.enabled = false;
    data.levels = 1;
    if (light->csmLevels() < 2 || !_hasScene || !_hasCamera)
        return;
    VRK_ASSERT_RETURN(light->csmLevels() <= kMaxCascades, , "Light wants %d cascades, more than %d", light->csmLevels(),
                      kMaxCascades);
    data.enabled = true;
    data.levels = light->csmLevels();
    data.nearPoint = tightenedPoint(_solidPlanes[0], _solidPlanes[1], _scenePoints);
    data.farPoint = tightenedPoint(_solidPlanes[1], _solidPlanes[0], _scenePoints);
    data.delta = data.farPoint - data.nearPoint;
    data.bounds = Bounds(_scenePoints);
}

QList<Plane> ShadowMapManagerCulling::levelPlanes(int level, const ProcessCSMData& data) const
{
    return cascadePlanes(_solidPlanes, data.nearPoint, data.delta, level, data.levels);
}

const QList<QVector3D>& ShadowMapManagerCulling::getSceneCameraFrustrumPointsCSM(int level, ProcessCSMData& data,
                                                                                 const QList<Plane>& extraPlanes) const
{
    if (!data.enabled)
        return _visiblePoints;
    const QList<Plane> planes = levelPlanes(level, data);
    data.points = data.bounds.frustrumClipped(planes, cornersFromFrustumPlanes(planes), extraPlanes);
    return data.points;
}

const QList<QVector3D>& ShadowMapManagerCulling::getSceneCameraFrustrumLightFrustrumPointsCSM(
    int level, ProcessCSMData& data, const QMatrix4x4& lightWorld, float cutoff, const QList<Plane>& extraPlanes,
    QList<QVector3D>& casterPoints) const
{
    const Reach& reach = reachOf(lightWorld, cutoff, data);
    ClipperVolume camera = cameraVolume(level, data);
    if (!extraPlanes.isEmpty())
    {
        camera.faces = clipFaces(extraPlanes, camera.faces);
        camera.planes += extraPlanes;
    }
    const ClipperVolume seen = intersectVolumes(reach.volume, camera);
    data.points = uniquePoints(seen.faces);
    casterPoints = reach.points;
    return data.points;
}

const ShadowMapManagerCulling::Reach& ShadowMapManagerCulling::reachOf(const QMatrix4x4& lightWorld, float cutoff,
                                                                       ProcessCSMData& data) const
{
    if (data.reach && data.reach->lightWorld == lightWorld && data.reach->cutoff == cutoff)
        return *data.reach;
    if (data.scene.planes.isEmpty())
        data.scene = (data.enabled ? data.bounds : Bounds(_scenePoints)).clippingVolume();
    const ClipperVolume pyramid = lightPyramid(lightWorld, cutoff, _scenePoints);
    const ClipperVolume lit = intersectVolumes(data.scene, pyramid);
    data.reach = Reach{lightWorld, cutoff, lit, uniquePoints(lit.faces)};
    return *data.reach;
}

const ClipperVolume& ShadowMapManagerCulling::cameraVolume(int level, ProcessCSMData& data) const
{
    if (data.cameras.size() <= level)
        data.cameras.resize(level + 1);
    ClipperVolume& camera = data.cameras[level];
    // Without a camera this is a volume of no planes, which takes nothing away.
    if (!_hasCamera || !camera.planes.isEmpty())
        return camera;
    const QList<Plane> solid = data.enabled ? levelPlanes(level, data) : _solidPlanes;
    camera.faces = facesFromCorners(cornersFromFrustumPlanes(solid));
    camera.planes = data.enabled ? solid : _frustumPlanes;
    return camera;
}

// ---- lights --------------------------------------------------------------------------------------------------------

bool ShadowMapManagerCulling::processLightDirectional(ShadowMapManager::RenderData& data,
                                                      ShadowMapManager::RenderData::ProjectorInfo& info,
                                                      ShadowMapManager::Light* light, bool& changed)
{
    if (!_ready)
        return false;
    VRK_ASSERT_RETURN(nullptr != light, false, "Light is NULL on processLightDirectional");
    ProcessCSMData csm;
    setupLightCSMData(light, csm);
    for (int level = 0; level < csm.levels; ++level)
    {
        const QList<QVector3D>& points = getSceneCameraFrustrumPointsCSM(level, csm, {});
        if (points.isEmpty())
            continue;
        const QMatrix4x4 matrix = fitDirectionalShadow(points, _casterPoints, light->transform());
        if (!append(data, info, matrix, kDirectionalBlur, changed))
            return true;
    }
    return true;
}

bool ShadowMapManagerCulling::processLightPoint(ShadowMapManager::RenderData& data,
                                                ShadowMapManager::RenderData::ProjectorInfo& info,
                                                ShadowMapManager::Light* light, bool& changed)
{
    if (!_ready)
        return false;
    VRK_ASSERT_RETURN(nullptr != light, false, "Light is NULL on processLightPoint");
    const int sides = pointLightSides(light->spotCutoff());
    const float cutoff = sides == 1 ? light->spotCutoff() : -1.0f;
    ProcessCSMData csm;
    setupLightCSMData(light, csm);
    QList<QVector3D> casters;
    for (int side = 0; side < sides; ++side)
    {
        const QMatrix4x4 lightWorld = light->transform() * pointLightSide(side);
        for (int level = 0; level < csm.levels; ++level)
        {
            const QList<QVector3D>& points =
                getSceneCameraFrustrumLightFrustrumPointsCSM(level, csm, lightWorld, cutoff, {}, casters);
            if (points.isEmpty())
                continue;
            const std::optional<QMatrix4x4> matrix = fitPointShadow(points, casters, lightWorld);
            if (matrix && !append(data, info, *matrix, kPointBlur, changed))
                return true;
        }
    }
    return true;
}

} // namespace Harrow::Vrk
