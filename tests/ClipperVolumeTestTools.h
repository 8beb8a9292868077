// SPDX-License-Identifier: MIT
#pragma once

/// \file
/// Random numbers that are the same everywhere, random convex volumes, and the corners of convex volumes found in
/// another way than by clipping: the common points of all triples of planes that lie inside all planes.

#include "ClipperVolume.h"

#include <QList>
#include <QVector3D>

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <iterator>
#include <limits>
#include <random>

namespace Harrow::Vrk::Test
{

/// The standard fixes what the engine gives, but not what its distributions make of it.
class Random
{
public:
    explicit Random(quint32 seed) : _engine(seed) {}

    double unit()
    {
        return double(_engine()) / 4294967296.0;
    }
    float between(double lower, double upper)
    {
        return float(lower + (upper - lower) * unit());
    }
    int below(int count)
    {
        return int(unit() * count);
    }
    QVector3D point(double extent)
    {
        const float x = between(-extent, extent);
        const float y = between(-extent, extent);
        return QVector3D(x, y, between(-extent, extent));
    }
    /// A vector of length 1 to within rounding.
    QVector3D direction()
    {
        while (true)
        {
            const QVector3D p = point(1.0);
            const double length = std::sqrt(double(p.x()) * p.x() + double(p.y()) * p.y() + double(p.z()) * p.z());
            if (length > 0.1 && length < 1.0)
                return QVector3D(float(p.x() / length), float(p.y() / length), float(p.z() / length));
        }
    }

private:
    std::mt19937 _engine;
};

/// Whether two points have the same bits, so that 0 and -0 differ; any two that are not numbers count as the same.
inline bool sameBits(const QVector3D& a, const QVector3D& b)
{
    for (int axis = 0; axis < 3; ++axis)
    {
        const float x = a[axis];
        const float y = b[axis];
        if (std::isnan(x) && std::isnan(y))
            continue;
        if (std::memcmp(&x, &y, sizeof x) != 0)
            return false;
    }
    return true;
}

inline bool sameBits(const QList<QVector3D>& a, const QList<QVector3D>& b)
{
    return std::equal(a.cbegin(), a.cend(), b.cbegin(), b.cend(),
                      [](const QVector3D& p, const QVector3D& q) { return sameBits(p, q); });
}

inline bool sameBits(const QList<QList<QVector3D>>& a, const QList<QList<QVector3D>>& b)
{
    return std::equal(a.cbegin(), a.cend(), b.cbegin(), b.cend(),
                      [](const QList<QVector3D>& p, const QList<QVector3D>& q) { return sameBits(p, q); });
}

inline bool sameBits(const Plane& a, const Plane& b)
{
    return sameBits(a.normal, b.normal) && sameBits(QVector3D(a.distance, 0, 0), QVector3D(b.distance, 0, 0));
}

// ---- corners by enumeration ----------------------------------------------------------------------------------------

struct Vec
{
    double x = 0, y = 0, z = 0;
};

inline Vec vec(const QVector3D& p)
{
    return {p.x(), p.y(), p.z()};
}
inline double dot(const Vec& a, const Vec& b)
{
    return a.x * b.x + a.y * b.y + a.z * b.z;
}
inline Vec cross(const Vec& a, const Vec& b)
{
    return {a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x};
}
inline double distanceBetween(const Vec& a, const Vec& b)
{
    const Vec d{a.x - b.x, a.y - b.y, a.z - b.z};
    return std::sqrt(dot(d, d));
}
inline double residual(const Plane& plane, const Vec& p)
{
    return dot(vec(plane.normal), p) - double(plane.distance);
}

struct Corner
{
    Vec point;
    double determinant = 0; ///< of the three normals: how sharply the planes meet
    std::array<int, 3> planes{};
};

/// Cramer's rule.
inline Corner commonPoint(const QList<Plane>& planes, int i, int j, int k)
{
    const Vec a = vec(planes[i].normal);
    const Vec b = vec(planes[j].normal);
    const Vec c = vec(planes[k].normal);
    const Vec bc = cross(b, c);
    const Vec ca = cross(c, a);
    const Vec ab = cross(a, b);
    const double d = dot(a, bc);
    const double da = planes[i].distance;
    const double db = planes[j].distance;
    const double dc = planes[k].distance;
    return {{(bc.x * da + ca.x * db + ab.x * dc) / d, (bc.y * da + ca.y * db + ab.y * dc) / d,
             (bc.z * da + ca.z * db + ab.z * dc) / d},
            d,
            {i, j, k}};
}

/// Rounding of the library's floats for coordinates of about 10, as a distance from a plane.
inline constexpr double kRounding = 2e-5;

/// The corners that must be found: triples of planes that meet sharply enough for floats, in a point that is inside all
/// other planes by more than rounding could take away.
inline QList<Corner> certainCorners(const QList<Plane>& planes)
{
    QList<Corner> corners;
    const int count = int(planes.size());
    for (int i = 0; i < count; ++i)
    {
        for (int j = i + 1; j < count; ++j)
        {
            for (int k = j + 1; k < count; ++k)
            {
                const Corner corner = commonPoint(planes, i, j, k);
                if (!(std::fabs(corner.determinant) > 0.02))
                    continue;
                const double margin = 3.0 * kRounding / std::fabs(corner.determinant);
                bool inside = true;
                for (int other = 0; other < count && inside; ++other)
                {
                    if (other != i && other != j && other != k)
                        inside = residual(planes[other], corner.point) < -margin;
                }
                if (inside)
                    corners.append(corner);
            }
        }
    }
    return corners;
}

/// Each certain corner is among `points`, and each of `points` is a corner: inside all planes and on three. `skip`
/// tells corners that are not asked for. Gives the number of corners that were looked for.
template <typename Skip> int expectCorners(const QList<Plane>& planes, const QList<QVector3D>& points, const Skip& skip)
{
    int looked = 0;
    for (const Corner& corner : certainCorners(planes))
    {
        if (skip(corner))
            continue;
        ++looked;
        const double tolerance = 2.0 * kRounding / std::fabs(corner.determinant);
        const bool found =
            std::any_of(points.cbegin(), points.cend(),
                        [&](const QVector3D& p) { return distanceBetween(vec(p), corner.point) <= tolerance; });
        EXPECT_TRUE(found) << "missing " << corner.point.x << ", " << corner.point.y << ", " << corner.point.z;
    }
    for (const QVector3D& point : points)
    {
        int on = 0;
        for (const Plane& plane : planes)
        {
            const double d = residual(plane, vec(point));
            EXPECT_LE(d, kRounding) << "outside: " << point.x() << ", " << point.y() << ", " << point.z();
            on += std::fabs(d) <= kRounding;
        }
        EXPECT_GE(on, 3) << "no corner: " << point.x() << ", " << point.y() << ", " << point.z();
    }
    return looked;
}

inline int expectCorners(const QList<Plane>& planes, const QList<QVector3D>& points)
{
    return expectCorners(planes, points, [](const Corner&) { return false; });
}

// ---- random convex volumes -----------------------------------------------------------------------------------------

struct Axes
{
    QVector3D x, y, z;
};

inline Axes randomAxes(Random& random)
{
    const QVector3D x = random.direction();
    QVector3D y;
    do
    {
        y = QVector3D::crossProduct(x, random.direction());
    } while (y.length() < 0.3f);
    y.normalize();
    return {x, y, QVector3D::crossProduct(x, y)};
}

/// The plane through three points, turned so that `inside` is inside.
inline Plane planeAwayFrom(const QVector3D& inside, const QVector3D& a, const QVector3D& b, const QVector3D& c)
{
    const Plane plane(a, b, c);
    return plane.DistanceTo(inside) < 0.0f ? plane : Plane(a, c, b);
}

/// The planes of a box or frustum by its corners, in the order of `Bounds::planes`.
inline QList<Plane> planesOfCorners(const QList<QVector3D>& c)
{
    QVector3D centre;
    for (const QVector3D& corner : c)
        centre += corner / 8.0f;
    return {planeAwayFrom(centre, c[0], c[1], c[3]), planeAwayFrom(centre, c[4], c[5], c[7]),
            planeAwayFrom(centre, c[0], c[2], c[6]), planeAwayFrom(centre, c[2], c[3], c[7]),
            planeAwayFrom(centre, c[1], c[3], c[7]), planeAwayFrom(centre, c[0], c[1], c[5])};
}

inline QList<QVector3D> randomBoxCorners(Random& random)
{
    const Axes axes = randomAxes(random);
    const QVector3D centre = random.point(2.0);
    const float hx = random.between(0.5, 4.0);
    const float hy = random.between(0.5, 4.0);
    const float hz = random.between(0.5, 4.0);
    QList<QVector3D> corners;
    for (int i = 0; i < 8; ++i)
    {
        corners.append(centre + axes.x * (i & 1 ? hx : -hx) + axes.y * (i & 2 ? hy : -hy) +
                       axes.z * (i & 4 ? hz : -hz));
    }
    return corners;
}

/// A pyramid without its top, as a camera sees the world: the lower z is near.
inline QList<QVector3D> randomFrustumCorners(Random& random)
{
    const Axes axes = randomAxes(random);
    const QVector3D eye = random.point(5.0);
    const float nearDistance = random.between(0.5, 2.0);
    const float farDistance = nearDistance + random.between(1.0, 6.0);
    const float width = random.between(0.3, 1.2);
    const float height = random.between(0.3, 1.2);
    QList<QVector3D> corners;
    for (int i = 0; i < 8; ++i)
    {
        const float d = i & 4 ? farDistance : nearDistance;
        corners.append(eye + axes.x * (i & 1 ? d * width : -d * width) + axes.y * (i & 2 ? d * height : -d * height) +
                       axes.z * d);
    }
    return corners;
}

inline ClipperVolume volumeOfCorners(const QList<QVector3D>& corners)
{
    ClipperVolume volume;
    volume.faces = facesFromCorners(corners);
    volume.planes = planesOfCorners(corners);
    return volume;
}

inline void addTriangleAwayFrom(ClipperVolume& volume, const QVector3D& inside, const QVector3D& a, const QVector3D& b,
                                const QVector3D& c)
{
    if (Plane(a, b, c).DistanceTo(inside) < 0.0f)
        volume.addTriangleFace(a, b, c);
    else
        volume.addTriangleFace(a, c, b);
}

inline ClipperVolume randomPyramid(Random& random)
{
    const Axes axes = randomAxes(random);
    const QVector3D apex = random.point(4.0);
    const float height = random.between(1.0, 7.0);
    const QVector3D right = axes.x * (height * random.between(0.3, 1.2));
    const QVector3D up = axes.y * (height * random.between(0.3, 1.2));
    const QVector3D centre = apex + axes.z * height;
    const QVector3D inside = apex + axes.z * (height / 2.0f);
    const QVector3D base[4] = {centre - right - up, centre + right - up, centre + right + up, centre - right + up};
    ClipperVolume volume;
    for (int i = 0; i < 4; ++i)
        addTriangleAwayFrom(volume, inside, apex, base[i], base[(i + 1) % 4]);
    if (Plane(base[0], base[1], base[2]).DistanceTo(inside) < 0.0f)
        volume.addQuadFace(base[0], base[1], base[2], base[3]);
    else
        volume.addQuadFace(base[0], base[3], base[2], base[1]);
    return volume;
}

/// The convex hull of points, by asking of each triple whether all others lie on one side.
inline ClipperVolume randomHull(Random& random, int points)
{
    QList<QVector3D> cloud;
    QVector3D centre;
    for (int i = 0; i < points; ++i)
    {
        cloud.append(random.point(5.0));
        centre += cloud.last() / float(points);
    }
    ClipperVolume volume;
    for (int i = 0; i < points; ++i)
    {
        for (int j = i + 1; j < points; ++j)
        {
            for (int k = j + 1; k < points; ++k)
            {
                const Plane plane = planeAwayFrom(centre, cloud[i], cloud[j], cloud[k]);
                bool outermost = true;
                for (int other = 0; other < points && outermost; ++other)
                {
                    if (other != i && other != j && other != k)
                        outermost = plane.DistanceTo(cloud[other]) < 0.0f;
                }
                if (outermost)
                    addTriangleAwayFrom(volume, centre, cloud[i], cloud[j], cloud[k]);
            }
        }
    }
    return volume;
}

/// Whether the vertices lie on the planes well within rounding: slivers, whose planes floats cannot tell, do not.
inline bool isWellFormed(const ClipperVolume& volume)
{
    for (const QList<QVector3D>& face : volume.faces)
    {
        for (const QVector3D& point : face)
        {
            int on = 0;
            for (const Plane& plane : volume.planes)
            {
                const double d = residual(plane, vec(point));
                if (d > kRounding / 4.0)
                    return false;
                on += std::fabs(d) <= kRounding / 4.0;
            }
            if (on < 3)
                return false;
        }
    }
    return volume.faces.size() >= 4;
}

inline ClipperVolume randomVolume(Random& random)
{
    while (true)
    {
        ClipperVolume volume;
        switch (random.below(4))
        {
        case 0:
            volume = volumeOfCorners(randomBoxCorners(random));
            break;
        case 1:
            volume = volumeOfCorners(randomFrustumCorners(random));
            break;
        case 2:
            volume = randomPyramid(random);
            break;
        default:
            volume = randomHull(random, 4 + random.below(6));
            break;
        }
        if (isWellFormed(volume))
            return volume;
    }
}

/// A float from a bag of the awkward ones and of small whole numbers, so that points coincide and planes are met
/// exactly.
inline float awkwardFloat(Random& random)
{
    static const float kAwkward[] = {0.0f,
                                     -0.0f,
                                     std::numeric_limits<float>::infinity(),
                                     -std::numeric_limits<float>::infinity(),
                                     std::numeric_limits<float>::quiet_NaN(),
                                     std::numeric_limits<float>::max(),
                                     -std::numeric_limits<float>::max(),
                                     std::numeric_limits<float>::denorm_min(),
                                     -std::numeric_limits<float>::denorm_min(),
                                     1e-20f};
    if (random.below(3) == 0)
        return kAwkward[random.below(int(std::size(kAwkward)))];
    return float(random.below(7) - 3);
}

inline QVector3D awkwardPoint(Random& random)
{
    const float x = awkwardFloat(random);
    const float y = awkwardFloat(random);
    return QVector3D(x, y, awkwardFloat(random));
}

} // namespace Harrow::Vrk::Test
