// SPDX-License-Identifier: MIT
#include "OrbitCamera.h"

#include <algorithm>
#include <cmath>

namespace vrkview
{

namespace
{

constexpr float kDegree = 3.14159265358979f / 180.0f;
constexpr float kFieldOfView = 30.0f * kDegree; // of the shorter side: a long lens, so shapes stay undistorted
constexpr float kFill = 0.86f;                  // part of the picture that framed bounds may cover

// Distances, in scene radii, between which zooming stays.
constexpr float kClosest = 1.0e-3f;
constexpr float kFarthest = 1.0e3f;

// Tangents of half the horizontal and half the vertical field of view.
struct HalfExtents
{
    float x;
    float y;
};

HalfExtents halfExtents(float aspect)
{
    const float shorter = std::tan(0.5f * kFieldOfView);
    return aspect >= 1.0f ? HalfExtents{shorter * aspect, shorter} : HalfExtents{shorter, shorter / aspect};
}

} // namespace

void OrbitCamera::setAngles(float azimuth, float elevation)
{
    _azimuth = std::remainder(azimuth, 360.0f);
    _elevation = std::clamp(elevation, -kMaxElevation, kMaxElevation);
}

void OrbitCamera::frame(const Model& model, float aspect)
{
    const float radius = model.bounds.radius();
    _sceneCenter = model.bounds.center();
    _sceneRadius = radius > 0.0f ? radius : 1.0f;

    // With the eye at (ex, ey, ez) of the camera's axes, z towards the eye, a point is inside the picture's right edge
    // if x - ex <= (ez - z) * tangent, that is ex + ez * tangent >= x + z * tangent, and alike at the other edges. So
    // the largest right hand sides of two opposite edges give the eye's place between them and its least distance.
    const HalfExtents half = halfExtents(aspect);
    const float tangentX = kFill * half.x;
    const float tangentY = kFill * half.y;
    float toRight = -Bounds::kHuge;
    float toLeft = -Bounds::kHuge;
    float toTop = -Bounds::kHuge;
    float toBottom = -Bounds::kHuge;
    for (const QVector3D& extreme : model.extremes)
    {
        const QVector3D point = extreme - _sceneCenter;
        const float x = QVector3D::dotProduct(point, right());
        const float y = QVector3D::dotProduct(point, up());
        const float z = QVector3D::dotProduct(point, back());
        toRight = std::max(toRight, x + z * tangentX);
        toLeft = std::max(toLeft, -x + z * tangentX);
        toTop = std::max(toTop, y + z * tangentY);
        toBottom = std::max(toBottom, -y + z * tangentY);
    }
    _distance = std::max((toRight + toLeft) / (2.0f * tangentX), (toTop + toBottom) / (2.0f * tangentY));
    _distance = std::max(_distance, kClosest * _sceneRadius);
    if (radius == 0.0f)
        _distance = _sceneRadius / std::min(tangentX, tangentY);
    _target = _sceneCenter + 0.5f * (toRight - toLeft) * right() + 0.5f * (toTop - toBottom) * up();
}

void OrbitCamera::orbit(float azimuthDegrees, float elevationDegrees)
{
    setAngles(_azimuth + azimuthDegrees, _elevation + elevationDegrees);
}

void OrbitCamera::zoom(float factor)
{
    if (factor > 0.0f)
        _distance = std::clamp(_distance * factor, kClosest * _sceneRadius, kFarthest * _sceneRadius);
}

void OrbitCamera::pan(float rightFraction, float upFraction)
{
    const float shorterSide = 2.0f * std::tan(0.5f * kFieldOfView) * _distance;
    _target -= shorterSide * (rightFraction * right() + upFraction * up());
}

QVector3D OrbitCamera::eye() const
{
    return _target + _distance * back();
}

// The frame is written out from the angles, not built from an up hint, so that it also holds at the poles.

QVector3D OrbitCamera::right() const
{
    const float a = _azimuth * kDegree;
    return {std::cos(a), 0.0f, -std::sin(a)};
}

QVector3D OrbitCamera::up() const
{
    const float a = _azimuth * kDegree;
    const float e = _elevation * kDegree;
    return {-std::sin(a) * std::sin(e), std::cos(e), -std::cos(a) * std::sin(e)};
}

QVector3D OrbitCamera::back() const
{
    const float a = _azimuth * kDegree;
    const float e = _elevation * kDegree;
    return {std::sin(a) * std::cos(e), std::sin(e), std::cos(a) * std::cos(e)};
}

QMatrix4x4 OrbitCamera::viewFromWorld() const
{
    const QVector3D x = right();
    const QVector3D y = up();
    const QVector3D z = back();
    const QVector3D e = eye();
    return {x.x(), x.y(), x.z(), -QVector3D::dotProduct(x, e), //
            y.x(), y.y(), y.z(), -QVector3D::dotProduct(y, e), //
            z.x(), z.y(), z.z(), -QVector3D::dotProduct(z, e), //
            0.0f,  0.0f,  0.0f,  1.0f};
}

QMatrix4x4 OrbitCamera::clipFromView(float aspect) const
{
    // The scene's sphere lies between these depths; the near plane keeps off the eye once the eye is inside.
    const float depth = QVector3D::dotProduct(eye() - _sceneCenter, back());
    const float farPlane = std::max(depth + 1.01f * _sceneRadius, 0.01f * _sceneRadius);
    const float nearPlane = std::max(depth - 1.01f * _sceneRadius, 0.001f * std::min(farPlane, _sceneRadius));

    const HalfExtents half = halfExtents(aspect);
    const float span = farPlane - nearPlane;
    return {1.0f / half.x,
            0.0f,
            0.0f,
            0.0f, //
            0.0f,
            1.0f / half.y,
            0.0f,
            0.0f, //
            0.0f,
            0.0f,
            -(farPlane + nearPlane) / span,
            -2.0f * farPlane * nearPlane / span, //
            0.0f,
            0.0f,
            -1.0f,
            0.0f};
}

} // namespace vrkview
