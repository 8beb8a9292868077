// SPDX-License-Identifier: MIT
#pragma once

/// \file
/// The arithmetic of fitted shadow projections: corners and planes of frusta, the split into cascades, the volume that
/// a light reaches, and the matrices. Plain functions of values. Not installed.

#include "ClipperVolume.h"
#include "Export.h"
#include "Plane.h"

#include <QList>
#include <QMatrix4x4>
#include <QVector3D>

#include <optional>

namespace Harrow::Vrk
{

/// More than a thousand cascades are a mistake, and the time that two thousand million take is for ever.
inline constexpr int kMaxCascades = 1024;

// ---- the camera's frustum ------------------------------------------------------------------------------------------

/// The eight corners of what a camera sees, in the world and in the order of `Bounds::corners`, near before far.
VRKGL_EXPORT QList<QVector3D> frustumCorners(const QMatrix4x4& projection, const QMatrix4x4& view);

/// Its planes, outward for a camera that does not mirror: near, far, lower x, upper x, upper y, lower y. So not in the
/// order of `Bounds::planes`. A plane through corners that `Plane` takes for a line has a zero normal, and cuts nothing
/// away: that of a near plane close to the eye.
VRKGL_EXPORT QList<Plane> frustumPlanes(const QList<QVector3D>& corners);

/// The same, where none has a zero normal: in place of such a one, that of the matrices. To be split into levels and to
/// have corners a frustum needs all of its planes.
VRKGL_EXPORT QList<Plane> solidFrustumPlanes(const QList<Plane>& planes, const QList<QVector3D>& corners,
                                             const QMatrix4x4& projection, const QMatrix4x4& view);

/// The eight corners of planes in the order of `frustumPlanes`, none with a zero normal.
VRKGL_EXPORT QList<QVector3D> cornersFromFrustumPlanes(const QList<Plane>& planes);

/// Whether the frustum has corners that are numbers, and planes that are planes.
VRKGL_EXPORT bool isFrustum(const QList<QVector3D>& corners, const QList<Plane>& planes);

// ---- cascades ------------------------------------------------------------------------------------------------------

/// Where the range that is split begins, for `plane` near and `opposite` far, or ends, the other way round: the point
/// of `points` that is closest to `plane` from inside, if none reaches it. If one does, or none is before `opposite`, a
/// point of `plane` itself.
VRKGL_EXPORT QVector3D tightenedPoint(const Plane& plane, const Plane& opposite, const QList<QVector3D>& points);

/// The frustum of one level: `planes` with near and far put where the level begins and ends. Levels grow with the
/// square of their number.
VRKGL_EXPORT QList<Plane> cascadePlanes(const QList<Plane>& planes, const QVector3D& nearPoint, const QVector3D& delta,
                                        int level, int levels);

// ---- the sides of a point light ------------------------------------------------------------------------------------

/// To a light's space from that of side 0 to 5, each of which looks along its own -z. Side 0 is the light's space.
VRKGL_EXPORT const QMatrix4x4& pointLightSide(int side);

/// How many sides, from the first one on, a cone of this half angle in radians reaches; not above 0 stands for no cone.
VRKGL_EXPORT int pointLightSides(float cutoff);

/// The pyramid that a side looks into, as deep as the farthest of `scenePoints`. Reaches 45 degrees to
/// each side and a little more, or for a `cutoff` between 0 and that as far as it says, in radians. In the world.
VRKGL_EXPORT ClipperVolume lightPyramid(const QMatrix4x4& worldFromSide, float cutoff,
                                        const QList<QVector3D>& scenePoints);

// ---- the matrices --------------------------------------------------------------------------------------------------

/// To clip space from the world, for a light that shines along the +z of its space. Across, -1 to 1 is the box around
/// `receivers` in the light's space, larger by 1 / 0.99 around the origin of that space; so all receivers are within if
/// the origin is. Along, 0 is the nearest of `casters` in their way, or the origin if that is nearer, and 1 the
/// farthest receiver. The list of receivers is not empty. Not finite when they have no extent.
VRKGL_EXPORT QMatrix4x4 fitDirectionalShadow(const QList<QVector3D>& receivers, const QList<QVector3D>& casters,
                                             const QMatrix4x4& worldFromLight);

/// To clip space from the world, for one side of a point light: around `receivers`, whose list is not empty; in depth
/// from the nearest of `casters` to the farthest receiver, and a little more. None when nothing is left to see: all
/// behind the light, before the casters, or in a line.
VRKGL_EXPORT std::optional<QMatrix4x4> fitPointShadow(const QList<QVector3D>& receivers,
                                                      const QList<QVector3D>& casters, const QMatrix4x4& worldFromSide);

VRKGL_EXPORT bool isFinite(const QVector3D& point);
VRKGL_EXPORT bool isFinite(const QMatrix4x4& matrix);

} // namespace Harrow::Vrk
