// SPDX-License-Identifier: MIT
#pragma once

/// \file
/// What the suites of shadow maps share: views into the unit, lights, cameras and scenes, and the same geometry once
/// more in double precision with plain arrays, found in other ways than by the library.

#include "ShadowMapManagerCulling.h"

#include "ClipperVolumeTestTools.h"

#include <QMatrix4x4>
#include <QVariant>
#include <QVector3D>

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <memory>
#include <vector>

namespace Harrow::Vrk
{

struct ShadowMapManagerCullingTestAccess
{
    using CSM = ShadowMapManagerCulling::ProcessCSMData;

    static bool hasCamera(const ShadowMapManagerCulling& culling)
    {
        return culling._hasCamera;
    }
    static bool hasScene(const ShadowMapManagerCulling& culling)
    {
        return culling._hasScene;
    }
    static bool ready(const ShadowMapManagerCulling& culling)
    {
        return culling._ready;
    }
    static const QList<QVector3D>& frustumPoints(const ShadowMapManagerCulling& culling)
    {
        return culling._frustumPoints;
    }
    static const QList<Plane>& frustumPlanes(const ShadowMapManagerCulling& culling)
    {
        return culling._frustumPlanes;
    }
    static const QList<QVector3D>& scenePoints(const ShadowMapManagerCulling& culling)
    {
        return culling._scenePoints;
    }
    static const QList<QVector3D>& visiblePoints(const ShadowMapManagerCulling& culling)
    {
        return culling._visiblePoints;
    }
    static const QList<QVector3D>& casterPoints(const ShadowMapManagerCulling& culling)
    {
        return culling._casterPoints;
    }
    static CSM csm(const ShadowMapManagerCulling& culling, ShadowMapManager::Light& light)
    {
        CSM data;
        culling.setupLightCSMData(&light, data);
        return data;
    }
    static QList<QVector3D> cameraPoints(const ShadowMapManagerCulling& culling, int level, CSM& data,
                                         const QList<Plane>& extraPlanes)
    {
        return culling.getSceneCameraFrustrumPointsCSM(level, data, extraPlanes);
    }
    static QList<QVector3D> litPoints(const ShadowMapManagerCulling& culling, int level, CSM& data,
                                      const QMatrix4x4& lightWorld, float cutoff, const QList<Plane>& extraPlanes,
                                      QList<QVector3D>& casters)
    {
        return culling.getSceneCameraFrustrumLightFrustrumPointsCSM(level, data, lightWorld, cutoff, extraPlanes,
                                                                    casters);
    }
};

} // namespace Harrow::Vrk

namespace Harrow::Vrk::Test
{

using Light = ShadowMapManager::Light;
using RenderData = ShadowMapManager::RenderData;
using SceneBox = std::pair<QVector3D, QVector3D>;

// ---- doubles -------------------------------------------------------------------------------------------------------

/// Row after row.
using Mat = std::array<double, 16>;

inline constexpr Mat kIdentity = {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1};

inline Mat mat(const QMatrix4x4& m)
{
    Mat result{};
    for (int row = 0; row < 4; ++row)
        for (int column = 0; column < 4; ++column)
            result[std::size_t(row * 4 + column)] = double(m.constData()[column * 4 + row]);
    return result;
}

inline Mat operator*(const Mat& a, const Mat& b)
{
    Mat result{};
    for (std::size_t row = 0; row < 4; ++row)
        for (std::size_t column = 0; column < 4; ++column)
            for (std::size_t i = 0; i < 4; ++i)
                result[row * 4 + column] += a[row * 4 + i] * b[i * 4 + column];
    return result;
}

/// Gauss and Jordan, with the largest pivots.
inline Mat inverse(Mat m)
{
    Mat result = kIdentity;
    for (std::size_t column = 0; column < 4; ++column)
    {
        std::size_t pivot = column;
        for (std::size_t row = column + 1; row < 4; ++row)
            if (std::fabs(m[row * 4 + column]) > std::fabs(m[pivot * 4 + column]))
                pivot = row;
        for (std::size_t i = 0; i < 4; ++i)
        {
            std::swap(m[pivot * 4 + i], m[column * 4 + i]);
            std::swap(result[pivot * 4 + i], result[column * 4 + i]);
        }
        const double scale = m[column * 4 + column];
        for (std::size_t i = 0; i < 4; ++i)
        {
            m[column * 4 + i] /= scale;
            result[column * 4 + i] /= scale;
        }
        for (std::size_t row = 0; row < 4; ++row)
        {
            const double factor = row == column ? 0.0 : m[row * 4 + column];
            for (std::size_t i = 0; i < 4; ++i)
            {
                m[row * 4 + i] -= factor * m[column * 4 + i];
                result[row * 4 + i] -= factor * result[column * 4 + i];
            }
        }
    }
    return result;
}

/// Of the upper left 3 by 3.
inline double determinant3(const Mat& m)
{
    return m[0] * (m[5] * m[10] - m[6] * m[9]) - m[1] * (m[4] * m[10] - m[6] * m[8]) +
           m[2] * (m[4] * m[9] - m[5] * m[8]);
}

inline Mat scaling(double x, double y, double z)
{
    return {x, 0, 0, 0, 0, y, 0, 0, 0, 0, z, 0, 0, 0, 0, 1};
}

inline Mat translation(double x, double y, double z)
{
    return {1, 0, 0, x, 0, 1, 0, y, 0, 0, 1, z, 0, 0, 0, 1};
}

/// As OpenGL has it: depth from -1 at near to 1 at far. Square.
inline Mat perspectiveOf(double degrees, double near, double far)
{
    const double f = 1.0 / std::tan(degrees * M_PI / 360.0);
    return {f, 0, 0, 0, 0, f, 0, 0, 0, 0, -(far + near) / (far - near), -2 * far * near / (far - near), 0, 0, -1, 0};
}

struct Clip
{
    double x, y, z, w;
};

inline Clip mapped(const Mat& m, const Vec& p)
{
    const auto row = [&](std::size_t r)
    { return m[r * 4] * p.x + m[r * 4 + 1] * p.y + m[r * 4 + 2] * p.z + m[r * 4 + 3]; };
    return {row(0), row(1), row(2), row(3)};
}

/// After the division by w.
inline Vec projected(const Mat& m, const Vec& p)
{
    const Clip c = mapped(m, p);
    return {c.x / c.w, c.y / c.w, c.z / c.w};
}

inline Vec direction(const Mat& m, const Vec& d)
{
    const Vec v{m[0] * d.x + m[1] * d.y + m[2] * d.z, m[4] * d.x + m[5] * d.y + m[6] * d.z,
                m[8] * d.x + m[9] * d.y + m[10] * d.z};
    const double length = std::sqrt(dot(v, v));
    return {v.x / length, v.y / length, v.z / length};
}

inline Vec operator+(const Vec& a, const Vec& b)
{
    return {a.x + b.x, a.y + b.y, a.z + b.z};
}
inline Vec operator*(const Vec& a, double s)
{
    return {a.x * s, a.y * s, a.z * s};
}

/// Outside where `n . p > d`.
struct HalfSpace
{
    Vec n;
    double d = 0;
};

using Volume = std::vector<HalfSpace>;

inline Volume both(Volume a, const Volume& b)
{
    a.insert(a.end(), b.begin(), b.end());
    return a;
}

inline Volume boxVolume(const SceneBox& box)
{
    const auto& [lo, hi] = box;
    return {{{0, 0, -1}, -lo.z()}, {{0, 0, 1}, hi.z()}, {{-1, 0, 0}, -lo.x()},
            {{1, 0, 0}, hi.x()},   {{0, 1, 0}, hi.y()}, {{0, -1, 0}, -lo.y()}};
}

/// The six sums of rows of the matrix: near and far first.
inline Volume frustumVolume(const Mat& clipFromWorld)
{
    Volume volume;
    for (const std::size_t row : {2u, 0u, 1u})
    {
        for (const double sign : {1.0, -1.0})
        {
            const auto at = [&](std::size_t i) { return -(clipFromWorld[12 + i] + sign * clipFromWorld[row * 4 + i]); };
            const Vec n{at(0), at(1), at(2)};
            const double length = std::sqrt(dot(n, n));
            volume.push_back({n * (1.0 / length), -at(3) / length});
        }
    }
    return volume;
}

inline double excess(const HalfSpace& plane, const Vec& p)
{
    return dot(plane.n, p) - plane.d;
}

inline bool isInside(const Volume& volume, const Vec& p, double tolerance)
{
    return std::all_of(volume.begin(), volume.end(), [&](const HalfSpace& h) { return excess(h, p) <= tolerance; });
}

/// The corners of a convex volume: the common points of all triples of planes that are inside the others.
inline std::vector<Vec> cornersOf(const Volume& volume, double tolerance = 1e-9)
{
    std::vector<Vec> corners;
    for (std::size_t i = 0; i < volume.size(); ++i)
    {
        for (std::size_t j = i + 1; j < volume.size(); ++j)
        {
            for (std::size_t k = j + 1; k < volume.size(); ++k)
            {
                const HalfSpace &a = volume[i], &b = volume[j], &c = volume[k];
                const Vec bc = cross(b.n, c.n);
                const double d = dot(a.n, bc);
                if (std::fabs(d) < 1e-12)
                    continue;
                const Vec p = (bc * a.d + cross(c.n, a.n) * b.d + cross(a.n, b.n) * c.d) * (1.0 / d);
                if (isInside(volume, p, tolerance))
                    corners.push_back(p);
            }
        }
    }
    return corners;
}

inline std::vector<Vec> cornersOf(const SceneBox& box)
{
    std::vector<Vec> corners;
    for (int i = 0; i < 8; ++i)
        corners.push_back({(i & 1 ? box.second : box.first).x(), (i & 2 ? box.second : box.first).y(),
                           (i & 4 ? box.second : box.first).z()});
    return corners;
}

struct Extent
{
    Vec lo{1e300, 1e300, 1e300};
    Vec hi{-1e300, -1e300, -1e300};

    void add(const Vec& p)
    {
        lo = {std::min(lo.x, p.x), std::min(lo.y, p.y), std::min(lo.z, p.z)};
        hi = {std::max(hi.x, p.x), std::max(hi.y, p.y), std::max(hi.z, p.z)};
    }
    double least() const
    {
        return std::min({hi.x - lo.x, hi.y - lo.y, hi.z - lo.z});
    }
};

inline Extent extentIn(const Mat& space, const std::vector<Vec>& points)
{
    Extent extent;
    for (const Vec& p : points)
        extent.add(projected(space, p));
    return extent;
}

/// A point somewhere among the corners of a convex volume, and so inside.
inline Vec pointAmong(Random& random, const std::vector<Vec>& corners)
{
    Vec sum;
    double weights = 0;
    for (const Vec& corner : corners)
    {
        const double weight = -std::log(1.0 - random.unit()) + 1e-9;
        sum = sum + corner * weight;
        weights += weight;
    }
    return sum * (1.0 / weights);
}

// ---- lights, cameras and scenes ------------------------------------------------------------------------------------

struct CameraPose
{
    QMatrix4x4 projection;
    QMatrix4x4 view;

    Mat clipFromWorld() const
    {
        return mat(projection) * mat(view);
    }
};

inline CameraPose cameraAt(const QVector3D& eye, const QVector3D& target, float degrees = 60.0f, float near = 0.1f,
                           float far = 100.0f, float aspect = 1.0f)
{
    CameraPose camera;
    camera.projection.perspective(degrees, aspect, near, far);
    const bool isUpright = std::fabs((target - eye).normalized().y()) > 0.99f;
    camera.view.lookAt(eye, target, isUpright ? QVector3D(0, 0, 1) : QVector3D(0, 1, 0));
    return camera;
}

/// Looks along -z from 20, so that depth is 20 - z.
inline CameraPose frontCamera(float near = 1.0f, float far = 40.0f)
{
    return cameraAt({0, 0, 20}, {0, 0, 0}, 90.0f, near, far);
}

inline CameraPose randomCamera(Random& random, double extent)
{
    const QVector3D eye = random.point(extent);
    const float near = random.between(0.2, 2.0);
    return cameraAt(eye, eye + random.direction(), random.between(20.0, 100.0), near, near + random.between(5.0, 80.0),
                    random.between(0.5, 2.0));
}

inline SceneBox randomScene(Random& random, double extent)
{
    const QVector3D centre = random.point(extent);
    const QVector3D half(random.between(0.5, 15.0), random.between(0.5, 15.0), random.between(0.5, 15.0));
    return {centre - half, centre + half};
}

/// Turned anywhere, scaled along its axes, and for half of the lights mirrored.
inline QMatrix4x4 randomLightTransform(Random& random, double extent)
{
    const Axes axes = randomAxes(random);
    const QVector3D place = random.point(extent);
    const float sign = random.below(2) ? 1.0f : -1.0f;
    const QVector3D x = axes.x * (sign * random.between(0.5, 2.0));
    const QVector3D y = axes.y * random.between(0.5, 2.0);
    const QVector3D z = axes.z * random.between(0.5, 2.0);
    return QMatrix4x4(x.x(), y.x(), z.x(), place.x(), x.y(), y.y(), z.y(), place.y(), x.z(), y.z(), z.z(), place.z(), 0,
                      0, 0, 1);
}

inline std::unique_ptr<Light> lightOf(Light::Type type, const QMatrix4x4& transform = QMatrix4x4(), int levels = 0,
                                      float cutoff = -1.0f)
{
    auto light = std::make_unique<Light>();
    light->setType(type);
    light->setTransform(transform);
    light->setCSMLevels(levels);
    light->setSpotCutoff(cutoff);
    return light;
}

inline QMatrix4x4 placedAt(float x, float y, float z)
{
    QMatrix4x4 m;
    m.translate(x, y, z);
    return m;
}

/// Shines along the direction.
inline QMatrix4x4 shiningAlong(const QVector3D& d, const QVector3D& place = QVector3D())
{
    const QVector3D z = d.normalized();
    const QVector3D x =
        QVector3D::crossProduct(std::fabs(z.y()) > 0.9f ? QVector3D(1, 0, 0) : QVector3D(0, 1, 0), z).normalized();
    const QVector3D y = QVector3D::crossProduct(z, x);
    return QMatrix4x4(x.x(), y.x(), z.x(), place.x(), x.y(), y.y(), z.y(), place.y(), x.z(), y.z(), z.z(), place.z(), 0,
                      0, 0, 1);
}

inline QVariant listOf(const std::vector<Light*>& lights)
{
    QVariantList list;
    for (Light* const light : lights)
        list.append(QVariant::fromValue<QObject*>(light));
    return list;
}

inline ShadowMapManagerCulling cullingOf(const CameraPose* camera, const SceneBox* scene)
{
    ShadowMapManagerCulling culling;
    culling.setupCameras(camera ? &camera->projection : nullptr, camera ? &camera->view : nullptr);
    culling.setupScene(scene);
    culling.setupPost();
    return culling;
}

/// What became of one light.
struct Processed
{
    bool result = false;
    bool changed = false;
    RenderData::ProjectorInfo info;
};

inline Processed process(ShadowMapManagerCulling& culling, RenderData& data, Light& light,
                         RenderData::ProjectorInfo info = {})
{
    Processed p;
    p.info = info;
    p.result = light.type() == Light::ePoint ? culling.processLightPoint(data, p.info, &light, p.changed)
                                             : culling.processLightDirectional(data, p.info, &light, p.changed);
    return p;
}

/// Each point is within -1 to 1 across and not behind the far side, in one of the projections.
inline void expectCovers(const RenderData& data, int first, int count, const std::vector<Vec>& points)
{
    for (const Vec& p : points)
    {
        bool covered = false;
        for (int i = first; i < first + count; ++i)
        {
            const Clip c = mapped(mat(data.transforms[i].toMatrix()), p);
            covered |= c.w > 0 && std::fabs(c.x) <= c.w && std::fabs(c.y) <= c.w && c.z <= c.w * 1.00001;
        }
        EXPECT_TRUE(covered) << p.x << ", " << p.y << ", " << p.z;
    }
}

inline bool isAllFinite(const QMatrix4x4& m)
{
    return std::all_of(m.constData(), m.constData() + 16, [](float value) { return std::isfinite(value); });
}

} // namespace Harrow::Vrk::Test
