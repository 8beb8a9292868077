// SPDX-License-Identifier: MIT
#include "Bounds.h"

#include "Diagnostics.h"

#include <QMatrix4x4>

#include <iterator>
#include <limits>

namespace Harrow::Vrk
{

namespace
{

/// The planes of a box: the outward normal, and the corner that the plane is put through.
struct PlaneRow
{
    QVector3D normal;
    int corner;
};

constexpr PlaneRow kPlanes[] = {
    {{0.0f, 0.0f, -1.0f}, 3}, // lower z
    {{0.0f, 0.0f, 1.0f}, 7},  // upper z
    {{-1.0f, 0.0f, 0.0f}, 2}, // lower x
    {{0.0f, 1.0f, 0.0f}, 3},  // upper y
    {{1.0f, 0.0f, 0.0f}, 1},  // upper x
    {{0.0f, -1.0f, 0.0f}, 0}, // lower y
};

/// `m` holds the rows of a matrix, one after another.
QVector3D mapByRows(const float* m, const QVector3D& p)
{
    return QVector3D(m[0] * p.x() + m[1] * p.y() + m[2] * p.z() + m[3],
                     m[4] * p.x() + m[5] * p.y() + m[6] * p.z() + m[7],
                     m[8] * p.x() + m[9] * p.y() + m[10] * p.z() + m[11]);
}

} // namespace

Bounds::Bounds(const QList<QVector3D>& points)
{
    constexpr float kLargest = std::numeric_limits<float>::max();
    for (int axis = 0; axis < 3; ++axis)
    {
        this->_lower[axis] = kLargest;
        this->_upper[axis] = -kLargest;
    }
    // No points are no mistake here, though they would be one of the scan's caller.
    if (!points.isEmpty())
        this->scanMinMax(points.constData(), points.size(), points.size());
}

Bounds::Bounds(const QVector3D& lower, const QVector3D& upper)
    : _lower{lower.x(), lower.y(), lower.z()}, _upper{upper.x(), upper.y(), upper.z()}
{
}

QVector3D Bounds::boxLowerBounds() const
{
    return QVector3D(this->_lower[0], this->_lower[1], this->_lower[2]);
}

QVector3D Bounds::boxUpperBounds() const
{
    return QVector3D(this->_upper[0], this->_upper[1], this->_upper[2]);
}

bool Bounds::isNull() const
{
    return this->boxLowerBounds() == this->boxUpperBounds();
}

bool Bounds::isInside(const QVector3D& point) const
{
    for (int axis = 0; axis < 3; ++axis)
    {
        // Asked in this form, what is not a number is outside.
        if (!(this->_lower[axis] <= point[axis] && point[axis] <= this->_upper[axis]))
            return false;
    }
    return true;
}

bool Bounds::isInside(const float* point) const
{
    VRK_ASSERT_RETURN(nullptr != point, false, "Point is NULL on isInside");
    return this->isInside(QVector3D(point[0], point[1], point[2]));
}

QList<QVector3D> Bounds::corners() const
{
    QList<QVector3D> corners;
    corners.reserve(8);
    for (int corner = 0; corner < 8; ++corner)
    {
        corners.append(QVector3D((corner & 1 ? this->_upper : this->_lower)[0],
                                 (corner & 2 ? this->_upper : this->_lower)[1],
                                 (corner & 4 ? this->_upper : this->_lower)[2]));
    }
    return corners;
}

QList<Plane> Bounds::planes() const
{
    const QList<QVector3D> corners = this->corners();
    QList<Plane> planes;
    planes.reserve(std::size(kPlanes));
    for (const PlaneRow& row : kPlanes)
        planes.append(Plane(row.normal, corners[row.corner]));
    return planes;
}

ClipperVolume Bounds::clippingVolume() const
{
    return ClipperVolume{facesFromCorners(this->corners()), this->planes()};
}

Bounds Bounds::transform(const QMatrix4x4& matrix) const
{
    // On purpose two corners only, and the data as rows: who hands matrices over transposed relies on it.
    const float* const m = matrix.constData();
    return Bounds(QList<QVector3D>{mapByRows(m, this->boxLowerBounds()), mapByRows(m, this->boxUpperBounds())});
}

QList<QVector3D> Bounds::frustrumClipped(const QList<Plane>& planes, const QList<QVector3D>& corners,
                                         const QList<Plane>& extraPlanes) const
{
    QList<QVector3D> points = uniquePoints(clipFaces(planes + extraPlanes, facesFromCorners(this->corners())));
    if (!corners.isEmpty())
        points += uniquePoints(clipFaces(this->planes() + extraPlanes, facesFromCorners(corners)));
    return points;
}

void Bounds::scanMinMax(const QVector3D* array, qsizetype size, qsizetype arraySize)
{
    VRK_ASSERT_RETURN(0 < size, , "Size must be geater than 0");
    VRK_ASSERT_RETURN(size <= arraySize, , "Size %lld is beyond the array's %lld", static_cast<long long>(size),
                      static_cast<long long>(arraySize));
    for (qsizetype i = 0; i < size; ++i)
    {
        for (int axis = 0; axis < 3; ++axis)
        {
            const float value = array[i][axis];
            if (value < this->_lower[axis])
                this->_lower[axis] = value;
            if (value > this->_upper[axis])
                this->_upper[axis] = value;
        }
    }
}

} // namespace Harrow::Vrk
