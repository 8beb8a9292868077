// SPDX-License-Identifier: MIT
// A camera that orbits a target: angles, distance and lens in, matrices out. Pure arithmetic, no OpenGL.
// World space is right-handed with +y up; at azimuth 0 and elevation 0 the eye stands on +z and looks along -z.
#pragma once

#include "Model.h"

#include <QMatrix4x4>
#include <QVector3D>

namespace vrkview
{

class OrbitCamera
{
public:
    static constexpr float kMaxElevation = 90.0f;

    /// Degrees. A growing azimuth moves the eye from +z towards +x, a growing elevation moves it up; elevation is
    /// held within -90 to 90.
    void setAngles(float azimuth, float elevation);

    /// Moves target and eye, keeping the angles, so that the model's extremes sit in the middle of the picture and fill
    /// it but for a margin. `aspect` is width by height. The model must have been measured and not be empty; one
    /// without extent is framed as if its radius were 1.
    void frame(const Model& model, float aspect);

    void orbit(float azimuthDegrees, float elevationDegrees);

    /// Multiplies the distance: below 1 moves closer. Stops short of the target and of infinity.
    void zoom(float factor);

    /// Moves eye and target sideways so that what lies in the target's plane follows the pointer: positive values move
    /// the scene right and up, by fractions of the picture's shorter side.
    void pan(float rightFraction, float upFraction);

    float azimuth() const
    {
        return _azimuth;
    }
    float elevation() const
    {
        return _elevation;
    }
    float distance() const
    {
        return _distance;
    }
    QVector3D target() const
    {
        return _target;
    }
    QVector3D eye() const;

    /// Unit vectors of the camera's frame in world space; `back` points from the target to the eye.
    QVector3D right() const;
    QVector3D up() const;
    QVector3D back() const;

    QMatrix4x4 viewFromWorld() const;

    /// Clip planes enclose the framed bounds as seen from the present eye. `aspect` is width by height; the field of
    /// view spans the shorter side, so that a tall picture shows no less than a wide one.
    QMatrix4x4 clipFromView(float aspect) const;

private:
    float _azimuth = 0.0f;
    float _elevation = 0.0f;
    float _distance = 1.0f;
    QVector3D _target;
    QVector3D _sceneCenter;
    float _sceneRadius = 1.0f;
};

} // namespace vrkview
