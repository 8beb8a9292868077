// SPDX-License-Identifier: MIT
#include "ClipperVolume.h"

#include "Diagnostics.h"

#include <QHash>
#include <QSet>
#include <QVarLengthArray>

#include <algorithm>
#include <cmath>
#include <iterator>
#include <utility>

namespace Harrow::Vrk
{

namespace
{

using Polygon = QList<QVector3D>;

/// The corners of each face of a box, by their index.
constexpr int kFaceCorners[6][4] = {
    {0, 1, 3, 2}, // lower z
    {1, 5, 7, 3}, // upper x
    {5, 4, 6, 7}, // upper z
    {4, 0, 2, 6}, // lower x
    {2, 3, 7, 6}, // upper y
    {4, 5, 1, 0}, // lower y
};

/// The planes that meet at each corner of a box, by their index: one of x, one of y, one of z.
constexpr int kCornerPlanes[8][3] = {
    {2, 5, 0}, {4, 5, 0}, {2, 3, 0}, {4, 3, 0}, {2, 5, 1}, {4, 5, 1}, {2, 3, 1}, {4, 3, 1},
};

using Points = QVarLengthArray<QVector3D, 32>;

bool isWhollyInside(const QVector3D* points, qsizetype count, const Plane& plane)
{
    return std::all_of(points, points + count,
                       [&plane](const QVector3D& point) { return plane.DistanceTo(point) <= 0.0f; });
}

/// What of the polygon is inside the plane.
void clipPolygon(const QVector3D* points, qsizetype count, const Plane& plane, Points& clipped)
{
    clipped.clear();
    QVector3D prev = points[count - 1];
    float dp = plane.DistanceTo(prev);
    for (qsizetype i = 0; i < count; ++i)
    {
        const QVector3D& cur = points[i];
        const float dc = plane.DistanceTo(cur);
        if ((dc < 0.0f && dp > 0.0f) || (dc > 0.0f && dp < 0.0f))
        {
            const float t = dc / (dc - dp);
            clipped.append(cur + (prev - cur) * t);
        }
        if (dc <= 0.0f)
            clipped.append(cur);
        prev = cur;
        dp = dc;
    }
}

bool hasNaN(const QVector3D& point)
{
    return std::isnan(point.x()) || std::isnan(point.y()) || std::isnan(point.z());
}

/// A point as the key of a hash. Qt's hash of a float is the same for 0 and -0.
struct PointKey
{
    QVector3D point;

    friend bool operator==(const PointKey& a, const PointKey& b)
    {
        return a.point == b.point;
    }
    friend size_t qHash(const PointKey& key, size_t seed)
    {
        return qHashMulti(seed, key.point.x(), key.point.y(), key.point.z());
    }
};

/// Collects points, each once, in the order of their coming.
class PointCollector
{
public:
    void add(const QVector3D& point)
    {
        if (this->isNew(point))
            this->_points.append(point);
    }
    QList<QVector3D> take()
    {
        return std::move(this->_points);
    }

private:
    /// The common case is a few dozen points, which are looked through faster than they are hashed.
    static constexpr qsizetype kMaxLinear = 32;

    bool isNew(const QVector3D& point)
    {
        // Equal to nothing, itself included; in the hash such points would only make ever longer chains.
        if (hasNaN(point))
            return true;
        if (this->_keys.isEmpty())
        {
            if (this->_points.size() < kMaxLinear)
                return !this->_points.contains(point);
            for (const QVector3D& taken : std::as_const(this->_points))
            {
                if (!hasNaN(taken))
                    this->_keys.insert(PointKey{taken});
            }
        }
        const qsizetype before = this->_keys.size();
        this->_keys.insert(PointKey{point});
        return this->_keys.size() != before;
    }

    QList<QVector3D> _points;
    QSet<PointKey> _keys; // of all points that can be equal to others, once there are many
};

} // namespace

void ClipperVolume::addTriangleFace(const QVector3D& a, const QVector3D& b, const QVector3D& c)
{
    this->faces.append(Polygon{a, b, c});
    this->planes.append(Plane(a, b, c));
}

void ClipperVolume::addQuadFace(const QVector3D& a, const QVector3D& b, const QVector3D& c, const QVector3D& d)
{
    this->faces.append(Polygon{a, b, c, d});
    this->planes.append(Plane(a, b, c));
}

QList<QList<QVector3D>> facesFromCorners(const QList<QVector3D>& corners)
{
    VRK_ASSERT_RETURN(8 <= corners.size(), {}, "Faces need 8 corners, not %lld",
                      static_cast<long long>(corners.size()));
    QList<Polygon> faces;
    faces.reserve(std::size(kFaceCorners));
    for (const auto& face : kFaceCorners)
        faces.append(Polygon{corners[face[0]], corners[face[1]], corners[face[2]], corners[face[3]]});
    return faces;
}

QList<QVector3D> cornersFromPlanes(const QList<Plane>& planes)
{
    VRK_ASSERT_RETURN(6 <= planes.size(), {}, "Corners need 6 planes, not %lld", static_cast<long long>(planes.size()));
    QList<QVector3D> corners;
    corners.reserve(std::size(kCornerPlanes));
    for (const auto& corner : kCornerPlanes)
        corners.append(planeIntersection(planes[corner[0]], planes[corner[1]], planes[corner[2]]));
    return corners;
}

QList<QList<QVector3D>> clipFaces(const QList<Plane>& planes, const QList<QList<QVector3D>>& faces)
{
    // Polygons are clipped independently of each other, each by all planes in turn between two buffers.
    QList<Polygon> result;
    result.reserve(faces.size());
    Points buffers[2];
    for (const Polygon& face : faces)
    {
        const QVector3D* points = face.constData();
        qsizetype count = face.size();
        int next = 0;
        bool isCut = false;
        for (const Plane& plane : planes)
        {
            if (count < 2)
                count = 0;
            if (count == 0)
                break;
            if (isWhollyInside(points, count, plane))
                continue;
            clipPolygon(points, count, plane, buffers[next]);
            points = buffers[next].constData();
            count = buffers[next].size();
            next = 1 - next;
            isCut = true;
        }
        if (!isCut && (count > 0 || planes.isEmpty()))
            result.append(face); // shared, not copied
        else if (count > 0)
            result.append(Polygon(points, points + count));
    }
    return result;
}

QList<QVector3D> uniquePoints(const QList<QList<QVector3D>>& faces)
{
    PointCollector points;
    for (const Polygon& face : faces)
    {
        for (const QVector3D& point : face)
            points.add(point);
    }
    return points.take();
}

ClipperVolume intersectVolumes(const ClipperVolume& a, const ClipperVolume& b)
{
    return ClipperVolume{clipFaces(a.planes, b.faces) + clipFaces(b.planes, a.faces), a.planes + b.planes};
}

} // namespace Harrow::Vrk
