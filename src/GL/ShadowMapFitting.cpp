// SPDX-License-Identifier: MIT
#include "ShadowMapFitting.h"

#include "Bounds.h"
#include "VectorNormalize.h"

#include <QVector4D>

#include <algorithm>
#include <cmath>
#include <iterator>
#include <limits>
#include <utility>

namespace Harrow::Vrk
{
namespace
{

/// The corners that each plane of a frustum goes through, so turned that its normal points outward.
constexpr int kFrustumPlaneCorners[6][3] = {
    {0, 1, 3}, // near
    {4, 6, 7}, // far
    {6, 4, 0}, // lower x
    {5, 7, 3}, // upper x
    {7, 6, 2}, // upper y
    {4, 5, 1}, // lower y
};

/// Where each plane lies in clip space: the row that equals w there, or -w.
struct ClipRow
{
    int row;
    double sign;
};

constexpr ClipRow kFrustumClipRows[6] = {{2, 1.0}, {2, -1.0}, {0, 1.0}, {0, -1.0}, {1, -1.0}, {1, 1.0}};

// The places of the planes that `Bounds::planes` has the other way round.
constexpr int kFrustumUpperX = 3;
constexpr int kFrustumUpperY = 4;

constexpr int kNear = 0;
constexpr int kFar = 1;

/// Half angles up to which a cone stays in front of the light, and short of its back. In radians.
constexpr float kOneSideCutoff = 0.7853982f;
constexpr float kFiveSideCutoff = 2.3561945f;

/// What is nearer than this to the light, in units of the world, gets no shadow.
constexpr float kLeastDepth = 1e-5f;

/// Toward a directional light from everything.
constexpr float kTowardLight = -1e20f;

/// Without a division by w, whatever the last row is.
QVector3D mapAffine(const QMatrix4x4& m, const QVector3D& p)
{
    return QVector3D(m(0, 0) * p.x() + m(0, 1) * p.y() + m(0, 2) * p.z() + m(0, 3),
                     m(1, 0) * p.x() + m(1, 1) * p.y() + m(1, 2) * p.z() + m(1, 3),
                     m(2, 0) * p.x() + m(2, 1) * p.y() + m(2, 2) * p.z() + m(2, 3));
}

QVector3D placeOf(const QMatrix4x4& worldFromLight)
{
    return worldFromLight.map(QVector3D());
}

Bounds boundsIn(const QMatrix4x4& space, const QList<QVector3D>& points)
{
    QList<QVector3D> mapped;
    mapped.reserve(points.size());
    for (const QVector3D& point : points)
        mapped.append(space.map(point));
    return Bounds(mapped);
}

/// The outward normal of a camera's plane, however close together its corners are.
QVector3D clipPlaneNormal(const ClipRow& at, const QMatrix4x4& projection, const QMatrix4x4& view)
{
    double inView[3];
    for (int i = 0; i < 3; ++i)
        inView[i] = -(double(projection(3, i)) + at.sign * double(projection(at.row, i)));
    double normal[3];
    double length = 0.0;
    for (int i = 0; i < 3; ++i)
    {
        normal[i] = inView[0] * double(view(0, i)) + inView[1] * double(view(1, i)) + inView[2] * double(view(2, i));
        length += normal[i] * normal[i];
    }
    length = std::sqrt(length);
    if (!(length > 0.0))
        return QVector3D();
    return QVector3D(float(normal[0] / length), float(normal[1] / length), float(normal[2] / length));
}

} // namespace

// ---- the camera's frustum ------------------------------------------------------------------------------------------

QList<QVector3D> frustumCorners(const QMatrix4x4& projection, const QMatrix4x4& view)
{
    const QMatrix4x4 viewFromClip = projection.inverted();
    const QMatrix4x4 worldFromView = view.inverted();
    QList<QVector3D> corners = Bounds(QVector3D(-1.0f, -1.0f, -1.0f), QVector3D(1.0f, 1.0f, 1.0f)).corners();
    for (QVector3D& corner : corners)
        corner = mapAffine(worldFromView, viewFromClip.map(corner));
    return corners;
}

QList<Plane> frustumPlanes(const QList<QVector3D>& corners)
{
    QList<Plane> planes;
    planes.reserve(std::size(kFrustumPlaneCorners));
    for (const auto& at : kFrustumPlaneCorners)
        planes.append(Plane(corners[at[0]], corners[at[1]], corners[at[2]]));
    return planes;
}

QList<Plane> solidFrustumPlanes(const QList<Plane>& planes, const QList<QVector3D>& corners,
                                const QMatrix4x4& projection, const QMatrix4x4& view)
{
    QList<Plane> solid = planes;
    for (int i = 0; i < int(std::size(kFrustumPlaneCorners)); ++i)
    {
        if (planes[i].normal.isNull())
            solid[i] =
                Plane(clipPlaneNormal(kFrustumClipRows[i], projection, view), corners[kFrustumPlaneCorners[i][0]]);
    }
    return solid;
}

QList<QVector3D> cornersFromFrustumPlanes(const QList<Plane>& planes)
{
    QList<Plane> ordered = planes;
    std::swap(ordered[kFrustumUpperX], ordered[kFrustumUpperY]);
    return cornersFromPlanes(ordered);
}

bool isFrustum(const QList<QVector3D>& corners, const QList<Plane>& planes)
{
    return std::all_of(corners.cbegin(), corners.cend(), [](const QVector3D& corner) { return isFinite(corner); }) &&
           std::all_of(planes.cbegin(), planes.cend(),
                       [](const Plane& plane)
                       { return isFinite(plane.normal) && std::isfinite(plane.distance) && !plane.normal.isNull(); });
}

// ---- cascades ------------------------------------------------------------------------------------------------------

QVector3D tightenedPoint(const Plane& plane, const Plane& opposite, const QList<QVector3D>& points)
{
    const QVector3D own = plane.normal * plane.distance;
    QVector3D closest = own;
    float best = plane.DistanceTo(opposite.normal * opposite.distance);
    for (const QVector3D& point : points)
    {
        const float distance = plane.DistanceTo(point);
        if (distance >= 0.0f)
            return own;
        if (distance > best)
        {
            best = distance;
            closest = point;
        }
    }
    return closest;
}

QList<Plane> cascadePlanes(const QList<Plane>& planes, const QVector3D& nearPoint, const QVector3D& delta, int level,
                           int levels)
{
    const auto fraction = [levels](int reached)
    {
        const float linear = static_cast<float>(reached) / static_cast<float>(levels);
        return linear * linear;
    };
    QList<Plane> cascade = planes;
    cascade[kNear] = Plane(planes[kNear].normal, nearPoint + delta * fraction(level));
    cascade[kFar] = Plane(planes[kFar].normal, nearPoint + delta * fraction(level + 1));
    return cascade;
}

// ---- the sides of a point light ------------------------------------------------------------------------------------

const QMatrix4x4& pointLightSide(int side)
{
    static const QMatrix4x4 sides[] = {
        QMatrix4x4(),
        QMatrix4x4(0, 0, 1, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 0, 1),
        QMatrix4x4(0, 0, -1, 0, 1, 0, 0, 0, 0, -1, 0, 0, 0, 0, 0, 1),
        QMatrix4x4(0, 1, 0, 0, 0, 0, 1, 0, 1, 0, 0, 0, 0, 0, 0, 1),
        QMatrix4x4(0, -1, 0, 0, 0, 0, -1, 0, 1, 0, 0, 0, 0, 0, 0, 1),
        QMatrix4x4(-1, 0, 0, 0, 0, 1, 0, 0, 0, 0, -1, 0, 0, 0, 0, 1),
    };
    static_assert(std::size(sides) == 6);
    return sides[side];
}

int pointLightSides(float cutoff)
{
    if (!(cutoff > 0.0f))
        return 6;
    if (cutoff <= kOneSideCutoff)
        return 1;
    return cutoff <= kFiveSideCutoff ? 5 : 6;
}

ClipperVolume lightPyramid(const QMatrix4x4& worldFromSide, float cutoff, const QList<QVector3D>& scenePoints)
{
    const QVector3D apex = placeOf(worldFromSide);
    const QVector3D ahead = normalize(worldFromSide.mapVector(QVector3D(0.0f, 0.0f, -1.0f)));

    const Plane front(ahead, apex);
    float range = 0.0f;
    for (const QVector3D& point : scenePoints)
        range = std::max(range, front.DistanceTo(point));

    const float half = range * 1.01f;
    QVector3D right = normalize(worldFromSide.mapVector(QVector3D(1.0f, 0.0f, 0.0f))) * half;
    QVector3D up = normalize(worldFromSide.mapVector(QVector3D(0.0f, 1.0f, 0.0f))) * half;
    if (worldFromSide.determinant() < 0.0) // mirrored: else the faces would turn their inside out
        right = -right;
    if (cutoff > 0.0f && cutoff < kOneSideCutoff)
    {
        right *= std::tan(cutoff);
        up *= std::tan(cutoff);
    }

    const QVector3D centre = apex + ahead * range;
    const QVector3D c00 = centre - right - up;
    const QVector3D c10 = centre + right - up;
    const QVector3D c01 = centre - right + up;
    const QVector3D c11 = centre + right + up;
    ClipperVolume pyramid;
    pyramid.addTriangleFace(apex, c00, c10);
    pyramid.addTriangleFace(apex, c10, c11);
    pyramid.addTriangleFace(apex, c11, c01);
    pyramid.addTriangleFace(apex, c01, c00);
    pyramid.addQuadFace(c00, c01, c11, c10);
    return pyramid;
}

// ---- the matrices --------------------------------------------------------------------------------------------------

namespace
{

/// The lower z of what the box and the column have in common: that of the box around `frustrumClipped`, whose points it
/// takes as they come.
float nearestInTheWay(const Bounds& casters, const Bounds& column)
{
    float nearest = std::numeric_limits<float>::max();
    const auto lookThrough = [&nearest](const QList<QList<QVector3D>>& faces)
    {
        for (const QList<QVector3D>& face : faces)
            for (const QVector3D& point : face)
                nearest = std::min(nearest, point.z());
    };
    lookThrough(clipFaces(column.planes(), facesFromCorners(casters.corners())));
    lookThrough(clipFaces(casters.planes(), facesFromCorners(column.corners())));
    return nearest;
}

} // namespace

QMatrix4x4 fitDirectionalShadow(const QList<QVector3D>& receivers, const QList<QVector3D>& casters,
                                const QMatrix4x4& worldFromLight)
{
    const QMatrix4x4 toLight = worldFromLight.inverted();
    const Bounds seen = boundsIn(toLight, receivers);
    const QVector3D lo = seen.boxLowerBounds();
    const QVector3D hi = seen.boxUpperBounds();

    QMatrix4x4 s;
    if (worldFromLight.determinant() > 0.0)
        s.scale(1.0f, -1.0f, 1.0f);
    s.scale(2.0f / (hi.x() - lo.x()), 2.0f / (hi.y() - lo.y()), 1.0f);
    s.translate(-(lo.x() + hi.x()) / 2.0f, -(lo.y() + hi.y()) / 2.0f, 0.0f);

    // From the receivers up to everything that lies toward the light.
    const Bounds column(QVector3D(lo.x(), lo.y(), kTowardLight), hi);
    const float zlo = nearestInTheWay(boundsIn(toLight, casters), column);

    // The order of the products is interface, with what comes of it: the hundredth is taken off around the origin of
    // the light's space, not around the box.
    s.scale(0.99f, 0.99f, 1.0f / (hi.z() - zlo));
    s.translate(0.0f, 0.0f, -zlo);
    return s * toLight;
}

namespace
{

struct Rectangle
{
    float minX = 1.0f;
    float minY = 1.0f;
    float maxX = -1.0f;
    float maxY = -1.0f;
};

/// Around the points that are in front, after the division by w. That of the light's own place is 0, but for rounding,
/// which would send it anywhere.
Rectangle projectedExtent(const QMatrix4x4& m, const QList<QVector3D>& points, const QVector3D& lightPlace)
{
    Rectangle extent;
    for (const QVector3D& point : points)
    {
        if (point == lightPlace)
            continue;
        const QVector4D projected = m.map(QVector4D(point, 1.0f));
        if (!(projected.w() > 0.0f))
            continue;
        const float x = projected.x() / projected.w();
        const float y = projected.y() / projected.w();
        extent.minX = std::min(extent.minX, x);
        extent.maxX = std::max(extent.maxX, x);
        extent.minY = std::min(extent.minY, y);
        extent.maxY = std::max(extent.maxY, y);
    }
    return extent;
}

} // namespace

std::optional<QMatrix4x4> fitPointShadow(const QList<QVector3D>& receivers, const QList<QVector3D>& casters,
                                         const QMatrix4x4& worldFromSide)
{
    const QMatrix4x4 inverse = worldFromSide.inverted();
    const QMatrix4x4 flip(1, 0, 0, 0, 0, 1, 0, 0, 0, 0, -1, 0, 0, 0, 0, 1);
    const QMatrix4x4 viewSpace = flip * inverse; // depth grows along its z

    const float farthest = boundsIn(viewSpace, receivers).boxUpperBounds().z();
    if (farthest <= kLeastDepth)
        return std::nullopt;
    const Bounds reached = casters.isEmpty() ? Bounds() : boundsIn(viewSpace, casters);
    const float nearest = std::max(reached.boxLowerBounds().z(), std::max(farthest / 100.0f, kLeastDepth));
    if (nearest >= farthest)
        return std::nullopt;

    QMatrix4x4 p;
    p.perspective(91.0f, 1.0f, nearest * 0.475f, farthest * 1.05f);
    if (worldFromSide.determinant() > 0.0)
        p.scale(1.0f, -1.0f, 1.0f);
    const QMatrix4x4 m = p * inverse;

    const Rectangle extent = projectedExtent(m, receivers, placeOf(worldFromSide));
    if (extent.minX >= extent.maxX || extent.minY >= extent.maxY)
        return std::nullopt;

    QMatrix4x4 s;
    s.scale(1.98f / (extent.maxX - extent.minX), 1.98f / (extent.maxY - extent.minY), 1.0f);
    s.translate(-(extent.minX + extent.maxX) / 2.0f, -(extent.minY + extent.maxY) / 2.0f, 0.0f);
    return s * m;
}

bool isFinite(const QVector3D& point)
{
    return std::isfinite(point.x()) && std::isfinite(point.y()) && std::isfinite(point.z());
}

bool isFinite(const QMatrix4x4& matrix)
{
    return std::all_of(matrix.constData(), matrix.constData() + 16, [](float value) { return std::isfinite(value); });
}

} // namespace Harrow::Vrk
