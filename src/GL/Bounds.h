// SPDX-License-Identifier: MIT
#pragma once

/// \file
/// An axis-aligned box, its corners, faces and planes, and what it has in common with a frustum. A plain value that
/// touches no OpenGL; any thread.

#include "ClipperVolume.h"
#include "Export.h"
#include "Plane.h"

#include <QList>
#include <QVector3D>
#include <QtGlobal>

class QMatrix4x4;

namespace Harrow::Vrk
{

/// Six floats in one space of the caller's choice, in its unit of length. Lower and upper are kept as they are given:
/// lower above upper makes a box that nothing is inside of.
class VRKGL_EXPORT Bounds
{
public:
    /// All six 0: the box of the origin alone.
    Bounds() = default;
    /// The smallest box around all points; coordinates that are not numbers are passed over. Without points lower is
    /// the largest finite float and upper its negation, on all axes.
    Bounds(const QList<QVector3D>& points);
    Bounds(const QVector3D& lower, const QVector3D& upper);

    /// As they were given: lower above upper is not mended.
    QVector3D boxLowerBounds() const;
    QVector3D boxUpperBounds() const;

    /// Whether the box is a single point: lower equals upper exactly, on all axes.
    bool isNull() const;
    /// Whether lower <= point <= upper on all axes: what is on a side is inside.
    bool isInside(const QVector3D& point) const;
    /// The same for x, y, z in three floats. Null: an assertion and false.
    bool isInside(const float* point) const;

    /// The eight corners, x changing fastest, then y, then z, lower before upper. Whatever takes or gives eight corners
    /// has them in this order, those of a frustum too.
    QList<QVector3D> corners() const;
    /// The six sides, normals outward: lower z, upper z, lower x, upper y, upper x, lower y.
    QList<Plane> planes() const;
    /// The faces (`facesFromCorners`) and planes of the box, each in its own order.
    ClipperVolume clippingVolume() const;

    /// The box of this one's lower and upper corner, each mapped by the sixteen floats of `matrix` as they lie in
    /// memory, read as rows: x' = m[0] x + m[1] y + m[2] z + m[3], y' by m[4] to m[7], z' by m[8] to m[11], without a
    /// division by w. This is on purpose. So `matrix` must be handed over transposed, as a `QMatrix4x4` stores columns,
    /// and the result holds the whole mapped box only where no axis is turned into another, as in scaling and
    /// translation.
    Bounds transform(const QMatrix4x4& matrix) const;

    /// The corners of what this box and a frustum have in common (the spelling is interface). First those of the sides
    /// of the box, clipped by `planes` and `extraPlanes`; then those of the sides of the frustum, clipped by the box
    /// and `extraPlanes`. Each part holds a point once, both together may hold it twice.
    ///
    /// `planes` are the frustum's, normals outward, in any order. `corners` are its eight corners in the order of
    /// `corners()`, or none, which leaves the second part out; one to seven do so too, with an assertion.
    QList<QVector3D> frustrumClipped(const QList<Plane>& planes, const QList<QVector3D>& corners,
                                     const QList<Plane>& extraPlanes) const;

private:
    friend struct BoundsTestAccess;

    /// Widens the box to the first `size` points of an array that holds `arraySize`.
    void scanMinMax(const QVector3D* array, qsizetype size, qsizetype arraySize);

    float _lower[3] = {0.0f, 0.0f, 0.0f};
    float _upper[3] = {0.0f, 0.0f, 0.0f};
};

} // namespace Harrow::Vrk

Q_DECLARE_TYPEINFO(Harrow::Vrk::Bounds, Q_RELOCATABLE_TYPE);
