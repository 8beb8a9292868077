// SPDX-License-Identifier: MIT
//
// Fitting by way of the class: what is set up and what is not, cascades, sides, and what happens at the limits. The
// matrices themselves are told by ShadowMapManagerFitTest.

#include "ShadowMapManagerCulling.h"

#include "ShadowMapFitting.h"
#include "ShadowMapTestTools.h"
#include "support/LogCapture.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace Harrow::Vrk::Test
{
namespace
{

using Access = ShadowMapManagerCullingTestAccess;

constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();
constexpr float kQuarter = 0.7853982f;
constexpr float kThreeQuarters = 2.3561945f;

const SceneBox kScene{{-4, -3, -5}, {4, 3, 5}};

int projections(const CameraPose* camera, const SceneBox* scene, Light& light)
{
    ShadowMapManagerCulling culling = cullingOf(camera, scene);
    RenderData data;
    const Processed p = process(culling, data, light);
    EXPECT_TRUE(p.result);
    return p.info.count;
}

} // namespace

// ---- scenes --------------------------------------------------------------------------------------------------------

TEST(ShadowMapManagerCullingTest, HasNothingAtTheStart)
{
    const ShadowMapManagerCulling culling;
    EXPECT_FALSE(Access::hasCamera(culling));
    EXPECT_FALSE(Access::hasScene(culling));
    EXPECT_FALSE(Access::ready(culling));
    EXPECT_TRUE(Access::visiblePoints(culling).isEmpty());
}

TEST(ShadowMapManagerCullingTest, ASceneIsTheEightCornersOfItsBox)
{
    ShadowMapManagerCulling culling;
    EXPECT_FALSE(culling.setupScene(nullptr));
    EXPECT_FALSE(Access::hasScene(culling));
    EXPECT_TRUE(culling.setupScene(&kScene));
    EXPECT_TRUE(Access::hasScene(culling));
    EXPECT_EQ(Access::scenePoints(culling), Bounds(kScene.first, kScene.second).corners());
}

TEST(ShadowMapManagerCullingTest, LowerAboveUpperOnAnyAxisIsWarnedOf)
{
    for (int axis = 0; axis < 3; ++axis)
    {
        for (const float upper : {std::nextafter(kScene.first[axis], -100.0f), kNaN})
        {
            SceneBox box = kScene;
            box.second[axis] = upper;
            ShadowMapManagerCulling culling;
            const LogCapture log;
            EXPECT_FALSE(culling.setupScene(&box));
            EXPECT_EQ(log.messages(),
                      QStringList(QStringLiteral("ShadowMapManagerCulling::setupScene() INVALID Scene Bounds")));
            EXPECT_EQ(log.lines()[0].type, QtWarningMsg);
            EXPECT_FALSE(Access::hasScene(culling));
            EXPECT_FALSE(culling.setupPost());
        }
    }
}

TEST(ShadowMapManagerCullingTest, AFlatSceneIsValid)
{
    const SceneBox flat{{-4, 0, -5}, {4, 0, 5}};
    ShadowMapManagerCulling culling;
    const LogCapture log;
    EXPECT_TRUE(culling.setupScene(&flat));
    EXPECT_EQ(log.texts(), QStringList());
}

// ---- setting up ----------------------------------------------------------------------------------------------------

TEST(ShadowMapManagerCullingTest, WithSceneAndCameraWhatBothHaveIsVisible)
{
    const CameraPose camera = frontCamera();
    ShadowMapManagerCulling culling;
    culling.setupCameras(&camera.projection, &camera.view);
    culling.setupScene(&kScene);
    EXPECT_TRUE(culling.setupPost());
    EXPECT_TRUE(Access::ready(culling));
    EXPECT_EQ(Access::visiblePoints(culling),
              Bounds(kScene.first, kScene.second)
                  .frustrumClipped(Access::frustumPlanes(culling), Access::frustumPoints(culling), {}));
    EXPECT_EQ(Access::casterPoints(culling), Access::scenePoints(culling));
}

TEST(ShadowMapManagerCullingTest, WithoutACameraAllOfTheSceneIsVisible)
{
    ShadowMapManagerCulling culling;
    culling.setupCameras(nullptr, nullptr);
    culling.setupScene(&kScene);
    EXPECT_TRUE(culling.setupPost());
    EXPECT_TRUE(Access::ready(culling));
    EXPECT_EQ(Access::visiblePoints(culling), Access::scenePoints(culling));
    EXPECT_EQ(Access::casterPoints(culling), Access::scenePoints(culling));
}

TEST(ShadowMapManagerCullingTest, WithoutASceneThereIsNothingToFitTo)
{
    const CameraPose camera = frontCamera();
    ShadowMapManagerCulling culling;
    culling.setupCameras(&camera.projection, &camera.view);
    culling.setupScene(nullptr);
    EXPECT_TRUE(culling.setupPost());
    EXPECT_FALSE(Access::ready(culling));
    EXPECT_EQ(Access::visiblePoints(culling), Access::frustumPoints(culling));
    EXPECT_EQ(Access::casterPoints(culling), Access::frustumPoints(culling));
    for (const Light::Type type : {Light::ePoint, Light::eDirectional})
    {
        RenderData data;
        const auto light = lightOf(type);
        const Processed p = process(culling, data, *light, {0, 3});
        EXPECT_FALSE(p.result);
        EXPECT_FALSE(p.changed);
        EXPECT_EQ(p.info.count, 0);
        EXPECT_EQ(p.info.index, 3);
    }
}

TEST(ShadowMapManagerCullingTest, WithoutBothNothingIsSetUp)
{
    ShadowMapManagerCulling culling;
    EXPECT_FALSE(culling.setupPost());
    EXPECT_FALSE(Access::ready(culling));
    EXPECT_TRUE(Access::visiblePoints(culling).isEmpty());
    RenderData data;
    const auto light = lightOf(Light::eDirectional);
    EXPECT_FALSE(process(culling, data, *light).result);
}

TEST(ShadowMapManagerCullingTest, ACopyFitsAsItsOriginal)
{
    const CameraPose camera = frontCamera();
    ShadowMapManagerCulling culling = cullingOf(&camera, &kScene);
    ShadowMapManagerCulling copy(culling);
    ShadowMapManagerCulling assigned;
    assigned = culling;
    const auto light = lightOf(Light::eDirectional, shiningAlong({1, -2, 1}), 3);
    RenderData data;
    EXPECT_TRUE(process(culling, data, *light).changed);
    EXPECT_FALSE(process(copy, data, *light).changed);
    EXPECT_FALSE(process(assigned, data, *light).changed);
}

// ---- cascades ------------------------------------------------------------------------------------------------------

TEST(ShadowMapManagerCullingTest, CascadesBeginAtTwoLevels)
{
    const CameraPose camera = frontCamera();
    const ShadowMapManagerCulling both = cullingOf(&camera, &kScene);
    for (const int levels : {-5, 0, 1})
    {
        const auto light = lightOf(Light::eDirectional, QMatrix4x4(), levels);
        const Access::CSM csm = Access::csm(both, *light);
        EXPECT_FALSE(csm.enabled);
        EXPECT_EQ(csm.levels, 1);
    }
    const auto light = lightOf(Light::eDirectional, QMatrix4x4(), 2);
    EXPECT_TRUE(Access::csm(both, *light).enabled);
    EXPECT_EQ(Access::csm(both, *light).levels, 2);
    EXPECT_FALSE(Access::csm(cullingOf(nullptr, &kScene), *light).enabled);
    EXPECT_FALSE(Access::csm(cullingOf(&camera, nullptr), *light).enabled);
    EXPECT_FALSE(Access::csm(ShadowMapManagerCulling(), *light).enabled);
}

TEST(ShadowMapManagerCullingTest, TheRangeIsThatOfTheScene)
{
    const CameraPose camera = frontCamera();
    const auto light = lightOf(Light::eDirectional, QMatrix4x4(), 2);
    const Access::CSM csm = Access::csm(cullingOf(&camera, &kScene), *light);
    EXPECT_NEAR(csm.nearPoint.z(), 5.0f, 1e-4f);
    EXPECT_NEAR(csm.farPoint.z(), -5.0f, 1e-4f);
    EXPECT_EQ(csm.delta, csm.farPoint - csm.nearPoint);
    EXPECT_EQ(csm.bounds.corners(), Bounds(kScene.first, kScene.second).corners());
    EXPECT_TRUE(Bounds(kScene.first, kScene.second).corners().contains(csm.nearPoint)) << "a corner of the scene";
}

TEST(ShadowMapManagerCullingTest, ASceneThatReachesAPlaneBeginsOrEndsThere)
{
    const auto light = lightOf(Light::eDirectional, QMatrix4x4(), 2);
    struct Row
    {
        float near, far, expectedNear, expectedFar;
    };
    // The scene is from 15 to 25 away.
    const Row kRows[] = {{1, 40, 15, 25}, {15, 40, 15, 25}, {18, 40, 18, 25},
                         {1, 25, 15, 25}, {1, 21, 15, 21},  {18, 21, 18, 21}};
    for (const Row& row : kRows)
    {
        const CameraPose camera = frontCamera(row.near, row.far);
        const Access::CSM csm = Access::csm(cullingOf(&camera, &kScene), *light);
        EXPECT_NEAR(20.0f - csm.nearPoint.z(), row.expectedNear, 1e-3f) << row.near << row.far;
        EXPECT_NEAR(20.0f - csm.farPoint.z(), row.expectedFar, 1e-3f) << row.near << row.far;
    }
}

TEST(ShadowMapManagerCullingTest, APointOnThePlaneGivesThePlanesOwnPoint)
{
    const Plane nearPlane(QVector3D(0, 0, 1), 4.0f);
    const Plane farPlane(QVector3D(0, 0, -1), 6.0f);
    const QVector3D own(0, 0, 4);
    EXPECT_EQ(tightenedPoint(nearPlane, farPlane, {}), own);
    EXPECT_EQ(tightenedPoint(nearPlane, farPlane, {{3, 3, 2}, {1, 1, 4}}), own) << "on it";
    EXPECT_EQ(tightenedPoint(nearPlane, farPlane, {{3, 3, 2}, {1, 1, 5}}), own) << "before it";
    EXPECT_EQ(tightenedPoint(nearPlane, farPlane, {{3, 3, 1}, {3, 3, 2}, {1, 1, 0}}), QVector3D(3, 3, 2));
    EXPECT_EQ(tightenedPoint(nearPlane, farPlane, {{3, 3, 2}, {5, 5, 2}}), QVector3D(3, 3, 2)) << "the first of two";
    EXPECT_EQ(tightenedPoint(nearPlane, farPlane, {{3, 3, -6}, {3, 3, -9}}), own) << "all of it beyond the far plane";
    EXPECT_EQ(tightenedPoint(farPlane, nearPlane, {{3, 3, 1}, {3, 3, -2}}), QVector3D(3, 3, -2));
    EXPECT_EQ(tightenedPoint(farPlane, nearPlane, {{3, 3, 1}, {3, 3, -6}}), QVector3D(0, 0, -6));
}

TEST(ShadowMapManagerCullingTest, LevelsSplitAtSquares)
{
    const CameraPose camera = frontCamera();
    const ShadowMapManagerCulling culling = cullingOf(&camera, &kScene);
    for (const int levels : {2, 3, 4, 7})
    {
        const auto light = lightOf(Light::eDirectional, QMatrix4x4(), levels);
        Access::CSM csm = Access::csm(culling, *light);
        for (int level = 0; level < levels; ++level)
        {
            const Bounds bounds(Access::cameraPoints(culling, level, csm, {}));
            const double from = double(level * level) / (levels * levels);
            const double to = double((level + 1) * (level + 1)) / (levels * levels);
            EXPECT_NEAR(bounds.boxUpperBounds().z(), 5.0 - 10.0 * from, 1e-3) << level << " of " << levels;
            EXPECT_NEAR(bounds.boxLowerBounds().z(), 5.0 - 10.0 * to, 1e-3) << level << " of " << levels;
        }
    }
}

TEST(ShadowMapManagerCullingTest, OfTwoLevelsTheFirstHasAQuarterOfTheRange)
{
    const QList<Plane> planes = frustumPlanes(frustumCorners(frontCamera().projection, frontCamera().view));
    const QVector3D nearPoint(7, 7, 5);
    const QVector3D delta(1, 2, -10);
    const QList<Plane> first = cascadePlanes(planes, nearPoint, delta, 0, 2);
    const QList<Plane> second = cascadePlanes(planes, nearPoint, delta, 1, 2);
    EXPECT_NEAR(first[0].distance, 5.0f, 1e-4f);
    EXPECT_NEAR(first[1].distance, -2.5f, 1e-4f) << "a quarter of 10 behind 5, seen from the other side";
    EXPECT_NEAR(second[0].distance, 2.5f, 1e-4f);
    EXPECT_NEAR(second[1].distance, 5.0f, 1e-4f);
    for (int plane = 2; plane < 6; ++plane)
    {
        EXPECT_EQ(first[plane].normal, planes[plane].normal);
        EXPECT_EQ(first[plane].distance, planes[plane].distance);
    }
}

TEST(ShadowMapManagerCullingTest, WithoutCascadesALevelIsAllThatIsVisible)
{
    const CameraPose camera = frontCamera();
    const ShadowMapManagerCulling culling = cullingOf(&camera, &kScene);
    const auto light = lightOf(Light::eDirectional);
    Access::CSM csm = Access::csm(culling, *light);
    EXPECT_EQ(Access::cameraPoints(culling, 0, csm, {}), Access::visiblePoints(culling));
}

TEST(ShadowMapManagerCullingTest, ExtraPlanesTakeTheirPart)
{
    const CameraPose camera = frontCamera();
    const ShadowMapManagerCulling culling = cullingOf(&camera, &kScene);
    const auto light = lightOf(Light::ePoint, placedAt(0, 0, 4), 2);
    Access::CSM csm = Access::csm(culling, *light);
    const QList<Plane> extra = {Plane(QVector3D(1, 0, 0), 0.5f)};
    EXPECT_NEAR(Bounds(Access::cameraPoints(culling, 1, csm, extra)).boxUpperBounds().x(), 0.5f, 1e-5f);
    QList<QVector3D> casters;
    const Bounds lit(Access::litPoints(culling, 1, csm, light->transform(), -1, extra, casters));
    EXPECT_NEAR(lit.boxUpperBounds().x(), 0.5f, 1e-5f);
    EXPECT_GT(Bounds(casters).boxUpperBounds().x(), 3.0f) << "casters are not cut";
}

TEST(ShadowMapManagerCullingTest, EachLevelHasAProjection)
{
    const CameraPose camera = frontCamera();
    for (const int levels : {0, 1, 2, 5})
    {
        const auto light = lightOf(Light::eDirectional, shiningAlong({1, -2, -1}), levels);
        EXPECT_EQ(projections(&camera, &kScene, *light), std::max(levels, 1));
    }
    const auto spot = lightOf(Light::ePoint, placedAt(0, 0, 4.5f), 3, 0.5f);
    EXPECT_EQ(projections(&camera, &kScene, *spot), 3);
}

TEST(ShadowMapManagerCullingTest, ALevelWithoutPointsIsLeftOut)
{
    // The scene is to the left of what is seen near; only the last level is wide enough.
    const SceneBox aside{{-30, -1, -40}, {-18, 1, 15}};
    const CameraPose camera = cameraAt({0, 0, 20}, {0, 0, 0}, 60.0f, 1.0f, 80.0f);
    const auto light = lightOf(Light::eDirectional, shiningAlong({1, -2, -1}), 4);
    EXPECT_EQ(projections(&camera, &aside, *light), 2);
}

TEST(ShadowMapManagerCullingTest, MoreThanAThousandCascadesAreReported)
{
    const CameraPose camera = frontCamera();
    const SceneBox aside{{100, 100, 100}, {101, 101, 101}};
    const auto light = lightOf(Light::eDirectional, QMatrix4x4(), std::numeric_limits<int>::max());
    const LogCapture log;
    EXPECT_EQ(projections(&camera, &kScene, *light), 1) << "no cascades";
    EXPECT_EQ(log.messages(QtCriticalMsg),
              QStringList(assertionLine(QStringLiteral("light->csmLevels() <= kMaxCascades"),
                                        QStringLiteral("Light wants 2147483647 cascades, more than 1024"))));
    light->setCSMLevels(1024);
    EXPECT_EQ(projections(&camera, &aside, *light), 0);
    EXPECT_EQ(log.messages(QtCriticalMsg).size(), 1);
}

// ---- sides ---------------------------------------------------------------------------------------------------------

TEST(ShadowMapManagerCullingTest, TheCutoffTellsTheNumberOfSides)
{
    struct Row
    {
        float cutoff;
        int sides;
    };
    const Row kRows[] = {{-1, 6},
                         {0, 6},
                         {0.5f, 1},
                         {kQuarter, 1},
                         {std::nextafter(kQuarter, 1.0f), 5},
                         {1, 5},
                         {kThreeQuarters, 5},
                         {std::nextafter(kThreeQuarters, 3.0f), 6},
                         {3, 6},
                         {kNaN, 6}};
    for (const Row& row : kRows)
    {
        const auto light = lightOf(Light::ePoint, placedAt(0.25f, 0.5f, 0.125f), 0, row.cutoff);
        EXPECT_EQ(projections(nullptr, &kScene, *light), row.sides) << row.cutoff;
    }
}

TEST(ShadowMapManagerCullingTest, SidesLookAlongTheirAxes)
{
    const Vec kAhead[6] = {{0, 0, -1}, {-1, 0, 0}, {1, 0, 0}, {0, -1, 0}, {0, 1, 0}, {0, 0, 1}};
    for (int side = 0; side < 6; ++side)
    {
        const Mat m = mat(pointLightSide(side));
        const Vec ahead = direction(m, {0, 0, -1});
        EXPECT_EQ(dot(ahead, kAhead[side]), 1.0) << side;
        EXPECT_EQ(determinant3(m), 1.0) << "none mirrors";
    }
    const Mat kTurned = {0, 0, 1, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 0, 1};
    EXPECT_EQ(mat(pointLightSide(1)), kTurned);
    const Mat kSecond = {0, 0, -1, 0, 1, 0, 0, 0, 0, -1, 0, 0, 0, 0, 0, 1};
    EXPECT_EQ(mat(pointLightSide(2)), kSecond);
    const Mat kThird = {0, 1, 0, 0, 0, 0, 1, 0, 1, 0, 0, 0, 0, 0, 0, 1};
    EXPECT_EQ(mat(pointLightSide(3)), kThird);
    const Mat kFourth = {0, -1, 0, 0, 0, 0, -1, 0, 1, 0, 0, 0, 0, 0, 0, 1};
    EXPECT_EQ(mat(pointLightSide(4)), kFourth);
    const Mat kBack = {-1, 0, 0, 0, 0, 1, 0, 0, 0, 0, -1, 0, 0, 0, 0, 1};
    EXPECT_EQ(mat(pointLightSide(5)), kBack);
    EXPECT_EQ(mat(pointLightSide(0)), kIdentity);
}

TEST(ShadowMapManagerCullingTest, OfFiveSidesTheOneBehindIsMissing)
{
    ShadowMapManagerCulling culling = cullingOf(nullptr, &kScene);
    RenderData data;
    const auto light = lightOf(Light::ePoint, QMatrix4x4(), 0, 1.0f);
    ASSERT_EQ(process(culling, data, *light).info.count, 5);
    int behind = 0;
    for (int i = 0; i < 5; ++i)
        behind += mapped(mat(data.transforms[i].toMatrix()), {0.1, 0.1, 4}).w > 3.9;
    EXPECT_EQ(behind, 0) << "none looks along +z";
}

TEST(ShadowMapManagerCullingTest, ASideThatSeesNothingHasNoProjection)
{
    // Above the scene: only the sides down and around reach it.
    const auto above = lightOf(Light::ePoint, placedAt(0, 20, 0));
    EXPECT_EQ(projections(nullptr, &kScene, *above), 1);
    const auto corner = lightOf(Light::ePoint, placedAt(5, 4, 6));
    EXPECT_EQ(projections(nullptr, &kScene, *corner), 3);
    const CameraPose away = cameraAt({0, 0, 20}, {0, 0, 40});
    EXPECT_EQ(projections(&away, &kScene, *above), 0);
    const auto directional = lightOf(Light::eDirectional, shiningAlong({1, -2, -1}), 2);
    EXPECT_EQ(projections(&away, &kScene, *directional), 0);
}

TEST(ShadowMapManagerCullingTest, CastersOutOfViewAreKept)
{
    // The camera sees the scene's right end alone, the light is at its left one.
    const CameraPose camera = cameraAt({3, 0, 20}, {3, 0, 0}, 2.0f, 1.0f, 60.0f);
    const ShadowMapManagerCulling culling = cullingOf(&camera, &kScene);
    const auto light = lightOf(Light::ePoint, placedAt(-3.9f, 0, 0));
    Access::CSM csm = Access::csm(culling, *light);
    QList<QVector3D> casters;
    const QMatrix4x4 side = light->transform() * pointLightSide(2);
    const Bounds seen(Access::litPoints(culling, 0, csm, side, -1, {}, casters));
    EXPECT_GT(seen.boxLowerBounds().x(), 2.0f);
    EXPECT_LT(Bounds(casters).boxLowerBounds().x(), -3.8f);
    EXPECT_NEAR(Bounds(casters).boxUpperBounds().x(), 4.0f, 1e-5f);
}

TEST(ShadowMapManagerCullingTest, WhatIsKeptForALightIsWhatItWouldBeAnew)
{
    const CameraPose camera = frontCamera();
    const Plane plane(QVector3D(0.6f, 0.8f, 0), 0.5f);
    for (const CameraPose* const eye : {&camera, static_cast<const CameraPose*>(nullptr)})
    {
        const ShadowMapManagerCulling culling = cullingOf(eye, &kScene);
        const auto light = lightOf(Light::ePoint, placedAt(0.5f, 0.25f, 1), 3);
        Access::CSM kept = Access::csm(culling, *light);
        Random random(45);
        for (int i = 0; i < 300; ++i)
        {
            const QMatrix4x4 side = light->transform() * pointLightSide(random.below(6));
            const int level = random.below(kept.levels);
            const float cutoff = random.below(2) ? -1.0f : 0.5f;
            const QList<Plane> extra = random.below(3) ? QList<Plane>() : QList<Plane>{plane};
            Access::CSM fresh = Access::csm(culling, *light);
            QList<QVector3D> keptCasters;
            QList<QVector3D> freshCasters;
            const QList<QVector3D> found = Access::litPoints(culling, level, kept, side, cutoff, extra, keptCasters);
            EXPECT_TRUE(sameBits(found, Access::litPoints(culling, level, fresh, side, cutoff, extra, freshCasters)));
            EXPECT_TRUE(sameBits(keptCasters, freshCasters));
        }
    }
}

TEST(ShadowMapManagerCullingTest, WithoutACameraTheWholeSceneIsCovered)
{
    const std::vector<Vec> points = cornersOf(kScene);
    const LogCapture log;
    for (const QVector3D& d : {QVector3D(0, -1, 0), QVector3D(1, -2, 1), QVector3D(0, 0, 1), QVector3D(-3, 1, 2)})
    {
        ShadowMapManagerCulling culling = cullingOf(nullptr, &kScene);
        RenderData data;
        const auto light = lightOf(Light::eDirectional, shiningAlong(d), 3);
        ASSERT_EQ(process(culling, data, *light).info.count, 1);
        expectCovers(data, 0, 1, points);
    }
    for (const QVector3D& at : {QVector3D(0.3f, 0.2f, 0.1f), QVector3D(9, 1, 2), QVector3D(-1, 8, 7)})
    {
        ShadowMapManagerCulling culling = cullingOf(nullptr, &kScene);
        RenderData data;
        const auto light = lightOf(Light::ePoint, placedAt(at.x(), at.y(), at.z()));
        const Processed p = process(culling, data, *light);
        ASSERT_GE(p.info.count, 1);
        expectCovers(data, 0, p.info.count, points);
    }
    EXPECT_EQ(log.texts(), QStringList());
}

} // namespace Harrow::Vrk::Test
