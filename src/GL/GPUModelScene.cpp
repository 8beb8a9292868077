// SPDX-License-Identifier: MIT
// Boxes, cameras and lights.
#include "Diagnostics.h"
#include "DrawBuffers.h"
#include "GPUModel.h"

#include <algorithm>

namespace Harrow::Vrk
{
namespace
{

constexpr float kFarAway = 1.0e20f;

} // namespace

// ---- boxes ---------------------------------------------------------------------------------------------------------

void GPUModel::loadBoundingBoxes(const BoundingBox* boxes, int count)
{
    VRK_ASSERT_RETURN(nullptr != boxes || count <= 0, , "There are no %d bounding boxes", count);
    if (count > 0)
        _boundingBoxes = QList<BoundingBox>(boxes, boxes + count); // they may be its own
    else
        _boundingBoxes.clear();
}

bool GPUModel::isValidBoundingBox(int index) const
{
    return 0 <= index && index < _boundingBoxes.size();
}

GPUModel::BoundingBox GPUModel::getBoundingBox(int index) const
{
    VRK_ASSERT_RETURN(this->isValidBoundingBox(index), BoundingBox(), "There is no bounding box %d", index);
    return _boundingBoxes.at(index);
}

void GPUModel::useBoundingBox(int handle, int command, int box)
{
    Drawable* const drawable = find(handle);
    if (!drawable)
        return;
    VRK_ASSERT_RETURN(command >= 0 && command < drawable->boundingBoxRefs.size(), ,
                      "There is no command %d in drawable %d", command, handle);
    drawable->boundingBoxRefs[command] = box;
}

GPUModel::BoundingBox GPUModel::sceneBounds()
{
    if (!_sceneBoundsDirty)
        return _sceneBounds;
    _sceneBounds = {kFarAway, kFarAway, kFarAway, -kFarAway, -kFarAway, -kFarAway};
    for (const Drawable& drawable : std::as_const(_drawables))
        if (drawable.drawBuffers && drawable.culledCount < drawable.drawBuffers->numDrawCommands())
            widenSceneBounds(drawable);
    _sceneBoundsDirty = false;
    return _sceneBounds;
}

/// By the boxes as they are: each is in its own space.
void GPUModel::widenSceneBounds(const Drawable& drawable)
{
    const auto ofBuffers = static_cast<qsizetype>(drawable.drawBuffers->numDrawCommands());
    const qsizetype commands = std::min({ofBuffers, drawable.culled.size(), drawable.boundingBoxRefs.size()});
    for (qsizetype command = 0; command < commands; ++command)
    {
        const int ref = drawable.boundingBoxRefs.at(command);
        if (drawable.culled.at(command) || !isValidBoundingBox(ref))
            continue;
        const BoundingBox& box = _boundingBoxes.at(ref);
        _sceneBounds.minX = std::min(_sceneBounds.minX, box.minX);
        _sceneBounds.minY = std::min(_sceneBounds.minY, box.minY);
        _sceneBounds.minZ = std::min(_sceneBounds.minZ, box.minZ);
        _sceneBounds.maxX = std::max(_sceneBounds.maxX, box.maxX);
        _sceneBounds.maxY = std::max(_sceneBounds.maxY, box.maxY);
        _sceneBounds.maxZ = std::max(_sceneBounds.maxZ, box.maxZ);
    }
}

// ---- cameras -------------------------------------------------------------------------------------------------------

int GPUModel::addCamera(const Camera& camera, const QString& name)
{
    _cameras.append(camera);
    _cameraNames.append(name);
    return static_cast<int>(_cameras.size()) - 1;
}

bool GPUModel::setCamera(int index, const Camera& camera)
{
    if (index >= _cameras.size())
        return false;
    VRK_ASSERT_RETURN(index >= 0, false, "There is no camera %d", index);
    _cameras[index] = camera;
    return true;
}

GPUModel::Camera GPUModel::getCamera(int index) const
{
    VRK_ASSERT_RETURN(0 <= index && index < _cameras.size(), Camera(), "There is no camera %d", index);
    return _cameras.at(index);
}

int GPUModel::getCameraCount() const
{
    return static_cast<int>(_cameras.size());
}

int GPUModel::getCameraIndex(const QString& name) const
{
    return static_cast<int>(_cameraNames.indexOf(name));
}

const QList<QString>& GPUModel::getCameraNames() const
{
    return _cameraNames;
}

QMatrix4x4 GPUModel::getCameraProjectionMatrix(int index, float aspect) const
{
    Camera camera;
    if (index < 0)
    {
        camera.horizontalAperture = 0.036f;
        camera.verticalAperture = 0.024f;
        camera.focalLength = 0.05f;
    }
    else
    {
        VRK_ASSERT_RETURN(index < _cameras.size(), QMatrix4x4(), "There is no camera %d", index);
        camera = _cameras.at(index);
    }
    const float nearClip = camera.nearClip == 0.0f ? _defaultNearClip : camera.nearClip;
    const float farClip = camera.farClip == 0.0f ? _defaultFarClip : camera.farClip;
    const float scale = (camera.projection == 0 ? nearClip : camera.projectionDistance) / camera.focalLength;
    const float offsetX = camera.horizontalOffset * scale;
    const float offsetY = camera.verticalOffset * scale;
    const float fit = std::max(camera.horizontalAperture / camera.verticalAperture, aspect);
    const float halfWidth = camera.horizontalAperture * 0.5f * scale * aspect / fit;
    const float halfHeight = halfWidth / aspect;

    QMatrix4x4 projection;
    if (camera.projection == 1)
        projection.ortho(offsetX - halfWidth, offsetX + halfWidth, offsetY - halfHeight, offsetY + halfHeight, nearClip,
                         farClip);
    else
        projection.frustum(offsetX - halfWidth, offsetX + halfWidth, offsetY - halfHeight, offsetY + halfHeight,
                           nearClip, farClip);
    return projection;
}

QMatrix4x4 GPUModel::getCameraWorldSpaceMatrix(int index) const
{
    VRK_ASSERT_RETURN(0 <= index && index < _cameras.size(), QMatrix4x4(), "There is no camera %d", index);
    return worldTransform(_cameras.at(index).transform).inverted();
}

void GPUModel::setClipPlaneDefaults(float nearClip, float farClip)
{
    _defaultNearClip = nearClip;
    _defaultFarClip = farClip;
}

// ---- lights --------------------------------------------------------------------------------------------------------

int GPUModel::addLight(const Light& light, const QString& name)
{
    _lights.append(light);
    _lightNames.append(name);
    return static_cast<int>(_lights.size()) - 1;
}

void GPUModel::getLight(int index, Light& light) const
{
    VRK_ASSERT_RETURN(0 <= index && index < _lights.size(), , "There is no light %d", index);
    light = _lights.at(index);
}

int GPUModel::lightCount()
{
    return static_cast<int>(_lights.size());
}

// ---- for the application -------------------------------------------------------------------------------------------

bool GPUModel::containsReflectedTransparency() const
{
    return _containsReflectedTransparency;
}

void GPUModel::setContainsReflectedTransparency(bool contains)
{
    _containsReflectedTransparency = contains;
}

} // namespace Harrow::Vrk
