// SPDX-License-Identifier: MIT
//
// Fitted matrices against the same done in double precision with plain arrays: regions by the common points of planes
// instead of by clipping, products written out.

#include "ShadowMapFitting.h"
#include "ShadowMapManagerCulling.h"
#include "ShadowMapTestTools.h"
#include "support/LogCapture.h"

#include <gtest/gtest.h>

#include <cmath>
#include <optional>

namespace Harrow::Vrk::Test
{
namespace
{

constexpr int kCases = 10000;

/// How far float corners of regions may be off, in units of the world, for coordinates of up to a hundred.
constexpr double kOff = 4e-3;

/// Regions thinner than this are found or not found as rounding has it.
constexpr double kThin = 0.05;

QList<QVector3D> floats(const std::vector<Vec>& points)
{
    QList<QVector3D> result;
    for (const Vec& p : points)
        result.append(QVector3D(float(p.x), float(p.y), float(p.z)));
    return result;
}

// ---- the expected matrices -----------------------------------------------------------------------------------------

struct DirectionalFit
{
    Mat clipFromWorld{};
    Mat lightFromWorld{};
    Extent seen; ///< in the light's space
};

DirectionalFit expectedDirectional(const std::vector<Vec>& receivers, const std::vector<Vec>& casters,
                                   const QMatrix4x4& transform)
{
    DirectionalFit fit;
    fit.lightFromWorld = inverse(mat(transform));
    fit.seen = extentIn(fit.lightFromWorld, receivers);
    const Vec lo = fit.seen.lo;
    const Vec hi = fit.seen.hi;
    // Floats cannot tell -1e20 + depth from 0: what casts from in front of the light's place has depth from there.
    const double nearest = std::min(extentIn(fit.lightFromWorld, casters).lo.z, 0.0);
    const double turned = determinant3(mat(transform)) > 0 ? -1 : 1;
    fit.clipFromWorld = scaling(1, turned, 1) * scaling(2 / (hi.x - lo.x), 2 / (hi.y - lo.y), 1) *
                        translation(-(lo.x + hi.x) / 2, -(lo.y + hi.y) / 2, 0) *
                        scaling(0.99, 0.99, 1 / (hi.z - nearest)) * translation(0, 0, -nearest) * fit.lightFromWorld;
    return fit;
}

struct PointFit
{
    Mat clipFromWorld{};
    double nearest = 0; ///< depth at which the range begins, before what is added to it
    bool isSharp = false;
};

/// None where it is not certain that there is one.
std::optional<PointFit> expectedPoint(const std::vector<Vec>& receivers, const std::vector<Vec>& casters,
                                      const Mat& worldFromSide)
{
    PointFit fit;
    const Mat inv = inverse(worldFromSide);
    const Mat depth = scaling(1, 1, -1) * inv;
    const double farthest = extentIn(depth, receivers).hi.z;
    fit.nearest = std::max({extentIn(depth, casters).lo.z, farthest / 100, 1e-5});
    if (!(fit.nearest < 0.98 * farthest))
        return std::nullopt;
    const double turned = determinant3(worldFromSide) > 0 ? -1 : 1;
    const Mat m = perspectiveOf(91, fit.nearest * 0.475, farthest * 1.05) * scaling(1, turned, 1) * inv;
    Extent extent{{1, 1, 0}, {-1, -1, 0}};
    fit.isSharp = true;
    for (const Vec& p : receivers)
    {
        const Clip c = mapped(m, p);
        if (c.w < 1e-7) // the light's own place, and the plane across it
            continue;
        fit.isSharp &= c.w > 0.5;
        extent.add({c.x / c.w, c.y / c.w, 0});
    }
    if (!(extent.lo.x + kThin < extent.hi.x && extent.lo.y + kThin < extent.hi.y))
        return std::nullopt;
    fit.clipFromWorld = scaling(1.98 / (extent.hi.x - extent.lo.x), 1.98 / (extent.hi.y - extent.lo.y), 1) *
                        translation(-(extent.lo.x + extent.hi.x) / 2, -(extent.lo.y + extent.hi.y) / 2, 0) * m;
    return fit;
}

// ---- the expected regions ------------------------------------------------------------------------------------------

/// Most cameras look at some place of the scene.
CameraPose randomCameraAt(Random& random, const SceneBox& scene)
{
    if (random.below(8) == 0)
        return randomCamera(random, 15);
    const QVector3D eye = random.point(20);
    const QVector3D target = floats({pointAmong(random, cornersOf(scene))})[0];
    const float near = random.between(0.2, 2.0);
    return cameraAt(eye, target, random.between(20.0, 100.0), near, near + random.between(5.0, 80.0),
                    random.between(0.5, 2.0));
}

/// The camera's frustum in the level, near and far first.
Volume levelVolume(const CameraPose& camera, const SceneBox& scene, int level, int levels)
{
    Volume volume = frustumVolume(camera.clipFromWorld());
    if (levels < 2)
        return volume;
    // How deep behind the near plane the range begins and ends: where the scene does, but within the frustum.
    double from = 1e300;
    double to = -1e300;
    for (const Vec& corner : cornersOf(scene))
    {
        from = std::min(from, -excess(volume[0], corner));
        to = std::max(to, -excess(volume[0], corner));
    }
    const double depth = volume[0].d + volume[1].d; // as the two planes look away from each other
    from = from <= 0 || from >= depth ? 0 : from;
    to = to <= 0 || to >= depth ? depth : to;
    const auto at = [&](int l) { return from + (to - from) * (double(l) / levels) * (double(l) / levels); };
    const double nearDistance = volume[0].d;
    volume[0].d = nearDistance - at(level);
    volume[1].d = -(nearDistance - at(level + 1));
    return volume;
}

/// The pyramid that a side of a light looks into.
Volume pyramidVolume(const Mat& worldFromSide, double cutoff, const SceneBox& scene)
{
    const Vec place{worldFromSide[3], worldFromSide[7], worldFromSide[11]};
    const Vec ahead = direction(worldFromSide, {0, 0, -1});
    double range = 0;
    for (const Vec& corner : cornersOf(scene))
        range = std::max(range, dot(ahead, corner) - dot(ahead, place));
    const double slope = 1.01 * (cutoff > 0 && cutoff < M_PI / 4 ? std::tan(cutoff) : 1.0);
    Volume volume = {{ahead, dot(ahead, place) + range}};
    for (const Vec& axis : {Vec{1, 0, 0}, Vec{-1, 0, 0}, Vec{0, 1, 0}, Vec{0, -1, 0}})
    {
        const Vec n = (direction(worldFromSide, axis) + ahead * -slope) * (1.0 / std::sqrt(1 + slope * slope));
        volume.push_back({n, dot(n, place)});
    }
    return volume;
}

bool isFat(const Mat& space, const std::vector<Vec>& corners)
{
    return corners.size() >= 4 && extentIn(space, corners).least() > kThin;
}

} // namespace

// ---- by hand -------------------------------------------------------------------------------------------------------

TEST(ShadowMapManagerFitTest, ADirectionalFitInNumbers)
{
    const QList<QVector3D> receivers = {{-2, -1, 0}, {2, 1, 4}};
    const QList<QVector3D> casters = Bounds({-8, -8, -6}, {8, 8, 8}).corners();
    const QMatrix4x4 m = fitDirectionalShadow(receivers, casters, QMatrix4x4());
    const Mat expected = {0.495, 0, 0, 0, 0, -0.99, 0, 0, 0, 0, 0.1, 0.6, 0, 0, 0, 1};
    for (std::size_t i = 0; i < 16; ++i)
        EXPECT_NEAR(mat(m)[i], expected[i], 1e-6) << i;
    QMatrix4x4 mirrored;
    mirrored.scale(1, -1, 1);
    const QMatrix4x4 n = fitDirectionalShadow(receivers, casters, mirrored);
    EXPECT_NEAR(n(1, 1), -0.99, 1e-6) << "the light's y is turned, so that of the map is not";
    mirrored = QMatrix4x4();
    mirrored.scale(-1, 1, 1);
    EXPECT_NEAR(fitDirectionalShadow(receivers, casters, mirrored)(1, 1), 0.99, 1e-6);
}

TEST(ShadowMapManagerFitTest, TheHundredthIsTakenOffAroundTheLightsPlace)
{
    // Receivers from 5 to 10 along x, and from -2 to 2 along y.
    const QList<QVector3D> receivers = {{5, -2, -1}, {10, 2, 1}};
    const QMatrix4x4 m = fitDirectionalShadow(receivers, receivers, QMatrix4x4());
    EXPECT_NEAR(m.map(QVector3D(10, 0, 0)).x(), 0.96, 1e-5);
    EXPECT_NEAR(m.map(QVector3D(5, 0, 0)).x(), -1.02, 1e-5) << "beyond the edge at the side of the light's place";
    EXPECT_NEAR(m.map(QVector3D(5 / 0.99f, 0, 0)).x(), -1.0, 1e-5);
    EXPECT_NEAR(m.map(QVector3D(0, 2, 0)).y(), -0.99, 1e-5);
}

TEST(ShadowMapManagerFitTest, DepthBeginsAtTheLightsPlaceOrBefore)
{
    const QList<QVector3D> receivers = {{-1, -1, 6}, {1, 1, 8}};
    const auto depthOf = [&](float casterDepth, float z)
    {
        const QList<QVector3D> casters = Bounds({-3, -3, casterDepth}, {3, 3, 9}).corners();
        return fitDirectionalShadow(receivers, casters, QMatrix4x4()).map(QVector3D(0, 0, z)).z();
    };
    EXPECT_NEAR(depthOf(-2, -2), 0.0, 1e-6);
    EXPECT_NEAR(depthOf(-2, 8), 1.0, 1e-6);
    EXPECT_NEAR(depthOf(4, 0), 0.0, 1e-6) << "casters behind the light's place";
    EXPECT_NEAR(depthOf(4, 4), 0.5, 1e-6);
    EXPECT_NEAR(depthOf(4, 8), 1.0, 1e-6);
}

TEST(ShadowMapManagerFitTest, CastersBesideTheReceiversDoNotCount)
{
    // A caster's box that is slanted to the light counts by its box in the light's space; one beside not at all.
    const QList<QVector3D> receivers = {{-1, -1, -1}, {1, 1, 1}};
    const QList<QVector3D> beside = Bounds({2, -3, -50}, {3, 3, 9}).corners();
    const QMatrix4x4 m = fitDirectionalShadow(receivers, beside, QMatrix4x4());
    EXPECT_TRUE(isAllFinite(m));
    const QList<QVector3D> wide = Bounds({0.5f, -3, -50}, {3, 3, 9}).corners();
    EXPECT_NEAR(fitDirectionalShadow(receivers, wide, QMatrix4x4()).map(QVector3D(0, 0, -50)).z(), 0.0, 1e-6);
}

TEST(ShadowMapManagerFitTest, APointFitInNumbers)
{
    const QList<QVector3D> receivers = {{-2, -1, -4}, {2, 1, -4}, {0, 0, -8}};
    const QList<QVector3D> casters = {{0, 0, -2}, {0, 0, -8}};
    const auto m = fitPointShadow(receivers, casters, QMatrix4x4());
    ASSERT_TRUE(m);
    const auto at = [&](const Vec& p) { return projected(mat(*m), p); };
    EXPECT_NEAR(at({-2, 1, -4}).x, -0.99, 1e-5);
    EXPECT_NEAR(at({2, 1, -4}).x, 0.99, 1e-5);
    EXPECT_NEAR(at({2, 1, -4}).y, -0.99, 1e-5) << "y is turned around";
    EXPECT_NEAR(at({0, 0, -2 * 0.475}).z, -1, 1e-5);
    EXPECT_NEAR(at({0, 0, -8 * 1.05}).z, 1, 1e-5);
    QMatrix4x4 mirrored;
    mirrored.scale(-1, 1, 1);
    const auto n = fitPointShadow(receivers, casters, mirrored);
    ASSERT_TRUE(n);
    EXPECT_NEAR(projected(mat(*n), {2, 1, -4}).x, -0.99, 1e-5);
    EXPECT_NEAR(projected(mat(*n), {2, 1, -4}).y, 0.99, 1e-5);
}

TEST(ShadowMapManagerFitTest, TheNearSideIsAHundredthOfTheFarOneAtLeast)
{
    const QList<QVector3D> receivers = {{-2, -1, -4}, {2, 1, -4}, {0, 0, -8}};
    for (const QList<QVector3D>& casters : {QList<QVector3D>(), QList<QVector3D>{{0, 0, -0.01f}, {0, 0, 3}}})
    {
        const auto m = fitPointShadow(receivers, casters, QMatrix4x4());
        ASSERT_TRUE(m);
        EXPECT_NEAR(projected(mat(*m), {0, 0, -0.08 * 0.475}).z, -1, 1e-4);
    }
}

TEST(ShadowMapManagerFitTest, TheLightsOwnPlaceDoesNotWidenTheMap)
{
    // Its w is 0 but for rounding, by which it would be anywhere.
    Random random(77);
    for (int i = 0; i < 2000; ++i)
    {
        const QMatrix4x4 transform = randomLightTransform(random, 50);
        QList<QVector3D> receivers;
        for (const QVector3D& p : {QVector3D(-1, -1, -3), QVector3D(1, -1, -3), QVector3D(1, 1, -5)})
            receivers.append(transform.map(p));
        const QList<QVector3D> casters = receivers;
        const auto without = fitPointShadow(receivers, casters, transform);
        receivers.append(transform.map(QVector3D()));
        const auto with = fitPointShadow(receivers, casters, transform);
        ASSERT_TRUE(without && with);
        EXPECT_EQ(*with, *without);
    }
}

TEST(ShadowMapManagerFitTest, PointsBesideTheFieldOfViewStartFromOne)
{
    // Extremes begin at 1 and -1: all to the right of the field reach from 1 on.
    const QList<QVector3D> receivers = {{8, -1, -4}, {9, 1, -4}};
    const auto m = fitPointShadow(receivers, {}, QMatrix4x4());
    ASSERT_TRUE(m);
    const double edge = std::tan(45.5 * M_PI / 180.0) * 4; // where x is 1 before the fit
    EXPECT_NEAR(projected(mat(*m), {edge, 0, -4}).x, -0.99, 1e-4);
    EXPECT_NEAR(projected(mat(*m), {9, 0, -4}).x, 0.99, 1e-4);
}

// ---- at random -----------------------------------------------------------------------------------------------------

TEST(ShadowMapManagerFitTest, DirectionalMatricesAreTheProductsInDouble)
{
    Random random(1);
    for (int i = 0; i < kCases; ++i)
    {
        const SceneBox box = randomScene(random, 20);
        const std::vector<Vec> casters = cornersOf(box);
        std::vector<Vec> receivers;
        for (int k = 4 + random.below(12); k > 0; --k)
            receivers.push_back(vec(floats({pointAmong(random, casters)})[0]));
        const QMatrix4x4 transform = randomLightTransform(random, 20);
        const QMatrix4x4 m = fitDirectionalShadow(floats(receivers), floats(casters), transform);
        ASSERT_TRUE(isAllFinite(m));
        const DirectionalFit fit = expectedDirectional(receivers, casters, transform);
        const double off = 2e-4; // in the light's space
        for (const Vec& p : receivers)
        {
            const Vec found = projected(mat(m), p);
            const Vec expected = projected(fit.clipFromWorld, p);
            ASSERT_NEAR(found.x, expected.x, 2 * off / (fit.seen.hi.x - fit.seen.lo.x)) << i;
            ASSERT_NEAR(found.y, expected.y, 2 * off / (fit.seen.hi.y - fit.seen.lo.y)) << i;
            ASSERT_NEAR(found.z, expected.z, 2 * off / (fit.seen.hi.z - fit.seen.lo.z)) << i;
        }
    }
}

TEST(ShadowMapManagerFitTest, DirectionalLightsCoverWhatIsSeen)
{
    Random random(2);
    int compared = 0;
    int within = 0;
    for (int i = 0; i < kCases; ++i)
    {
        const SceneBox scene = randomScene(random, 15);
        const CameraPose camera = randomCameraAt(random, scene);
        const int levels = random.below(2) ? 1 : 2 + random.below(3);
        QMatrix4x4 transform = randomLightTransform(random, 15);
        const auto region = [&](int level)
        { return cornersOf(both(boxVolume(scene), levelVolume(camera, scene, level, levels))); };
        std::vector<std::vector<Vec>> regions;
        bool areFat = true;
        for (int level = 0; level < levels && areFat; ++level)
        {
            regions.push_back(region(level));
            areFat = isFat(inverse(mat(transform)), regions.back());
        }
        if (random.below(2) && areFat) // the light's place among what is seen
        {
            const Vec place = pointAmong(random, regions[0]);
            transform.setColumn(3, QVector4D(float(place.x), float(place.y), float(place.z), 1));
        }
        const auto light = lightOf(Light::eDirectional, transform, levels);
        ShadowMapManagerCulling culling = cullingOf(&camera, &scene);
        RenderData data;
        const Processed p = process(culling, data, *light);
        ASSERT_TRUE(p.result);
        for (int k = 0; k < p.info.count; ++k)
            ASSERT_TRUE(isAllFinite(data.transforms[k].toMatrix())) << i;
        if (!areFat)
            continue;
        ++compared;
        ASSERT_EQ(p.info.count, levels) << i;
        for (int level = 0; level < levels; ++level)
        {
            const std::vector<Vec>& corners = regions[std::size_t(level)];
            const DirectionalFit fit = expectedDirectional(corners, cornersOf(scene), transform);
            const Mat m = mat(data.transforms[level].toMatrix());
            const Extent& seen = fit.seen;
            const auto checkAxis = [&](double found, double expected, double lo, double hi)
            {
                const double tolerance = 4 * kOff / (hi - lo);
                ASSERT_NEAR(found, expected, tolerance) << i << ", level " << level;
                // Inside with a margin, but for how far the hundredth moves it.
                const double moved = 0.02 * (lo + hi) / 2 / (hi - lo);
                ASSERT_LE(std::fabs(std::fabs(found) - std::fabs(moved)), 0.99 + tolerance) << i;
                if (lo <= 0 && hi >= 0)
                {
                    ++within;
                    ASSERT_LE(std::fabs(found), 1 + tolerance) << i << ", level " << level;
                }
            };
            for (int sample = 0; sample < 12; ++sample)
            {
                const Vec receiver =
                    sample < int(corners.size()) ? corners[std::size_t(sample)] : pointAmong(random, corners);
                const Vec found = projected(m, receiver);
                const Vec expected = projected(fit.clipFromWorld, receiver);
                checkAxis(found.x, expected.x, seen.lo.x, seen.hi.x);
                checkAxis(found.y, expected.y, seen.lo.y, seen.hi.y);
                const double depthTolerance = 4 * kOff / (seen.hi.z - seen.lo.z);
                ASSERT_NEAR(found.z, expected.z, depthTolerance) << i;
                ASSERT_LE(found.z, 1 + depthTolerance) << i;
                ASSERT_GE(found.z, -depthTolerance) << i;
                // Casters: whatever of the scene lies toward the light from there.
                const Vec caster = pointAmong(random, cornersOf(scene));
                const Vec inLight = projected(fit.lightFromWorld, caster);
                if (inLight.x >= seen.lo.x && inLight.x <= seen.hi.x && inLight.y >= seen.lo.y &&
                    inLight.y <= seen.hi.y && inLight.z <= seen.hi.z)
                {
                    const double depth = projected(m, caster).z;
                    ASSERT_LE(depth, 1 + depthTolerance) << i;
                    ASSERT_GE(depth, -depthTolerance) << i;
                }
            }
        }
    }
    EXPECT_GT(compared, kCases / 4);
    EXPECT_GT(within, kCases);
}

TEST(ShadowMapManagerFitTest, PointLightsCoverWhatIsSeen)
{
    Random random(3);
    int compared = 0;
    int matched = 0;
    for (int i = 0; i < kCases; ++i)
    {
        const SceneBox scene = randomScene(random, 15);
        const CameraPose camera = randomCameraAt(random, scene);
        const int levels = random.below(3) ? 1 : 2;
        const float cutoff = random.below(2) ? -1.0f : random.between(0.1, 3.1);
        const QMatrix4x4 transform = randomLightTransform(random, 20);
        const auto light = lightOf(Light::ePoint, transform, levels, cutoff);
        ShadowMapManagerCulling culling = cullingOf(&camera, &scene);
        RenderData data;
        const Processed p = process(culling, data, *light);
        ASSERT_TRUE(p.result);
        for (int k = 0; k < p.info.count; ++k)
            ASSERT_TRUE(isAllFinite(data.transforms[k].toMatrix())) << i;

        const int sides = cutoff <= 0 ? 6 : cutoff <= 0.7853982f ? 1 : cutoff <= 2.3561945f ? 5 : 6;
        int next = 0; // projections come in the order of sides and levels; a thin region may have one or not
        int certain = 0;
        for (int side = 0; side < sides; ++side)
        {
            const Mat worldFromSide = mat(transform) * mat(pointLightSide(side));
            const Volume pyramid = pyramidVolume(worldFromSide, sides == 1 ? cutoff : -1, scene);
            const Volume lit = both(boxVolume(scene), pyramid);
            const std::vector<Vec> casters = cornersOf(lit);
            for (int level = 0; level < levels; ++level)
            {
                const std::vector<Vec> corners = cornersOf(both(lit, levelVolume(camera, scene, level, levels)));
                if (!isFat(inverse(worldFromSide), corners))
                    continue;
                const auto fit = expectedPoint(corners, casters, worldFromSide);
                if (!fit)
                    continue;
                ++certain;
                // The projection of this region is the next one that shows all of its corners.
                const auto shows = [&](int k)
                {
                    return std::all_of(corners.begin(), corners.end(),
                                       [&](const Vec& corner)
                                       {
                                           const Clip c = mapped(mat(data.transforms[k].toMatrix()), corner);
                                           return std::fabs(c.w) < 0.05 || (c.w > 0 && std::fabs(c.x) < 0.9999 * c.w &&
                                                                            std::fabs(c.y) < 0.9999 * c.w && c.z < c.w);
                                       });
                };
                while (next < p.info.count && !shows(next))
                    ++next;
                ASSERT_LT(next, p.info.count) << i << ", side " << side << ", level " << level;
                const Mat m = mat(data.transforms[next].toMatrix());
                for (int sample = 0; sample < 6; ++sample)
                {
                    const Vec receiver = pointAmong(random, corners);
                    const Clip c = mapped(m, receiver);
                    ASSERT_GT(c.w, 0) << i;
                    ASSERT_LE(std::fabs(c.x), c.w) << i;
                    ASSERT_LE(std::fabs(c.y), c.w) << i;
                    const Vec caster = pointAmong(random, casters);
                    const Clip onTheWay = mapped(m, caster);
                    if (onTheWay.w >= fit->nearest && onTheWay.w <= c.w)
                    {
                        ASSERT_LE(std::fabs(onTheWay.z), onTheWay.w * 1.0001) << i;
                    }
                    if (!fit->isSharp)
                        continue;
                    ++compared;
                    const Vec expected = projected(fit->clipFromWorld, receiver);
                    ASSERT_NEAR(c.x / c.w, expected.x, 0.02) << i << ", side " << side;
                    ASSERT_NEAR(c.y / c.w, expected.y, 0.02) << i << ", side " << side;
                    ASSERT_NEAR(c.z / c.w, expected.z, 0.01) << i << ", side " << side;
                }
                ++matched;
                ++next;
            }
        }
        ASSERT_LE(certain, p.info.count) << i;
    }
    EXPECT_GT(matched, kCases);
    EXPECT_GT(compared, kCases);
}

// ---- a turning camera ----------------------------------------------------------------------------------------------

TEST(ShadowMapManagerFitTest, AnyTurnOfTheCameraLeavesEachReceiverInACascade)
{
    const SceneBox scene{{-30, -2, -25}, {25, 6, 30}};
    const QVector3D eye(1, 1.5f, 2);
    Random random(360);
    for (int step = 0; step < 360; ++step)
    {
        const double angle = step * M_PI / 180.0;
        const QVector3D ahead(float(std::sin(angle)), -0.1f, float(-std::cos(angle)));
        const CameraPose camera = cameraAt(eye, eye + ahead, 60, 0.1f, 60, 1.6f);
        ShadowMapManagerCulling culling = cullingOf(&camera, &scene);
        const auto sun = lightOf(Light::eDirectional, shiningAlong({1, -3, 0.5f}, eye + ahead), 4);
        const auto lamp = lightOf(Light::ePoint, placedAt(2, 5, 1), 3);
        for (Light* const light : {sun.get(), lamp.get()})
        {
            RenderData data;
            const LogCapture log;
            const Processed p = process(culling, data, *light);
            EXPECT_GE(p.info.count, light == sun.get() ? 4 : 1);
            EXPECT_EQ(log.texts(), QStringList());
            const std::vector<Vec> corners = cornersOf(both(boxVolume(scene), frustumVolume(camera.clipFromWorld())));
            for (int sample = 0; sample < 100; ++sample)
            {
                const Vec receiver = pointAmong(random, corners);
                bool covered = false;
                for (int k = 0; k < p.info.count; ++k)
                {
                    const Clip c = mapped(mat(data.transforms[k].toMatrix()), receiver);
                    covered |= c.w > 0 && std::fabs(c.x) <= c.w && std::fabs(c.y) <= c.w && c.z <= c.w * 1.0001;
                }
                ASSERT_TRUE(covered) << "step " << step << ": " << receiver.x << ", " << receiver.y << ", "
                                     << receiver.z;
            }
        }
    }
}

} // namespace Harrow::Vrk::Test
