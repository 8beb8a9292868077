// SPDX-License-Identifier: MIT
#pragma once

/// \file
/// An oriented plane: the side that its normal points to is outside. Convex volumes are what lies inside all of their
/// planes. A plain value that touches no OpenGL; any thread.

#include "Export.h"

#include <QVector3D>
#include <QtGlobal>

namespace Harrow::Vrk
{

/// The points `p` with `dot(normal, p) == distance`. All points and distances are in one space of the caller's choice
/// and in its unit of length; distances are in that unit only as far as the normal has length 1, which nothing here
/// enforces. A default plane has a zero normal and distance 0, and so has every point on it.
struct VRKGL_EXPORT Plane
{
    constexpr Plane() = default;
    /// `distance` is that of the origin, along the normal. The normal is taken as given.
    constexpr Plane(const QVector3D& planeNormal, float planeDistance) : normal(planeNormal), distance(planeDistance) {}
    /// The plane through `point`. The normal is taken as given.
    Plane(const QVector3D& planeNormal, const QVector3D& point);
    /// The plane through three points. Its normal has length 1 and points to where `a`, `b`, `c` are seen to turn
    /// counter-clockwise (in a right-handed space). Three points on a line, or so close together that the cross product
    /// of their edges is no longer than 1e-5, give a default plane.
    Plane(const QVector3D& a, const QVector3D& b, const QVector3D& c);

    /// How far outside `point` is: negative inside, 0 on the plane.
    float DistanceTo(const QVector3D& point) const
    {
        return QVector3D::dotProduct(normal, point) - distance;
    }
    /// -1 inside, 1 outside, 0 for a distance of exactly 0: there is no tolerance. 0 too where the distance is not a
    /// number.
    int WhichSide(const QVector3D& point) const;

    /// As they were given.
    QVector3D normal;
    float distance = 0.0f;
};

/// The point common to three planes whose normals have length 1. Planes that have no single common point, parallel ones
/// for one, give a point that is infinite or not a number; nothing is reported.
VRKGL_EXPORT QVector3D planeIntersection(const Plane& a, const Plane& b, const Plane& c);

} // namespace Harrow::Vrk

Q_DECLARE_TYPEINFO(Harrow::Vrk::Plane, Q_PRIMITIVE_TYPE);
