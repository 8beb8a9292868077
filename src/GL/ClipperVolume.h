// SPDX-License-Identifier: MIT
#pragma once

/// \file
/// Convex volumes of polygon faces and bounding planes, and the clipping of one by another: the shadow maps are fitted
/// to the corners of what a light, a camera and the scene have in common. Plain values that touch no OpenGL; any
/// thread.

#include "Export.h"
#include "Plane.h"

#include <QList>
#include <QVector3D>

namespace Harrow::Vrk
{

/// A convex polyhedron, held redundantly: its faces, and one plane for each, in an order that need not be that of the
/// faces. What two volumes have in common (`intersectVolumes`) keeps all planes of both but only the faces that are
/// left. Both lists are in one space of the caller's choice. The planes alone say what is outside; faces may turn
/// either way.
struct VRKGL_EXPORT ClipperVolume
{
    /// Appends the face and the plane through it, whose normal must point outward: `a`, `b`, `c` turn
    /// counter-clockwise as seen from outside (in a right-handed space).
    void addTriangleFace(const QVector3D& a, const QVector3D& b, const QVector3D& c);
    /// The same for four corners in order around the face. The plane goes through the first three.
    void addQuadFace(const QVector3D& a, const QVector3D& b, const QVector3D& c, const QVector3D& d);

    QList<QList<QVector3D>> faces; ///< one polygon per face
    QList<Plane> planes;           ///< one per face, normals outward
};

/// The six faces of a box or a frustum, four corners each, from its eight corners in the order of `Bounds::corners`;
/// further corners are not looked at. Fewer than eight: an assertion and no face.
VRKGL_EXPORT QList<QList<QVector3D>> facesFromCorners(const QList<QVector3D>& corners);

/// The eight corners of a box or a frustum, in the order of `Bounds::corners`, from its six planes in the order of
/// `Bounds::planes`; further planes are not looked at. The normals have length 1. Fewer than six: an assertion and no
/// corner.
VRKGL_EXPORT QList<QVector3D> cornersFromPlanes(const QList<Plane>& planes);

/// What is left of each polygon inside all planes (Sutherland-Hodgman, plane after plane). A vertex exactly on a plane
/// is kept. The edge that a plane cuts gets a vertex there, in its place in the order; the hole that a plane cuts into
/// a volume gets no face. Polygons of fewer than two points are dropped, as are those of which nothing is left. Without
/// planes the polygons come back as they are.
VRKGL_EXPORT QList<QList<QVector3D>> clipFaces(const QList<Plane>& planes, const QList<QList<QVector3D>>& faces);

/// All vertices of all polygons in order of appearance, each once. Two are the same when they compare equal as floats,
/// without tolerance: 0 equals -0, and what is not a number equals nothing, so that it is kept each time.
VRKGL_EXPORT QList<QVector3D> uniquePoints(const QList<QList<QVector3D>>& faces);

/// What two convex volumes have in common: the faces of `b` inside `a`, then the faces of `a` inside `b`; the planes of
/// `a`, then those of `b`. Where a face of one lies on a face of the other, both are in the result.
VRKGL_EXPORT ClipperVolume intersectVolumes(const ClipperVolume& a, const ClipperVolume& b);

} // namespace Harrow::Vrk

Q_DECLARE_TYPEINFO(Harrow::Vrk::ClipperVolume, Q_RELOCATABLE_TYPE);
