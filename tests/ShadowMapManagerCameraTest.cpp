// SPDX-License-Identifier: MIT
//
// The camera's frustum: its corners and planes, whatever is seen through it, and near planes close to the eye.

#include "ShadowMapManagerCulling.h"

#include "ShadowMapFitting.h"
#include "ShadowMapTestTools.h"
#include "support/LogCapture.h"

#include <gtest/gtest.h>

#include <limits>

namespace Harrow::Vrk::Test
{
namespace
{

using Access = ShadowMapManagerCullingTestAccess;

constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();

const SceneBox kScene{{-4, -3, -5}, {4, 3, 5}};

} // namespace

TEST(ShadowMapManagerCameraTest, ACameraNeedsBothMatrices)
{
    const CameraPose camera = frontCamera();
    ShadowMapManagerCulling culling;
    const LogCapture log;
    EXPECT_FALSE(culling.setupCameras(nullptr, nullptr));
    EXPECT_FALSE(culling.setupCameras(&camera.projection, nullptr));
    EXPECT_FALSE(culling.setupCameras(nullptr, &camera.view));
    EXPECT_FALSE(Access::hasCamera(culling));
    EXPECT_TRUE(culling.setupCameras(&camera.projection, &camera.view));
    EXPECT_TRUE(Access::hasCamera(culling));
    EXPECT_EQ(log.texts(), QStringList());
}

TEST(ShadowMapManagerCameraTest, TheFrustumHasItsCornersInOrder)
{
    const CameraPose camera = frontCamera(1, 10); // a right angle wide, so as wide as deep on each side
    ShadowMapManagerCulling culling;
    ASSERT_TRUE(culling.setupCameras(&camera.projection, &camera.view));
    const QList<QVector3D>& points = Access::frustumPoints(culling);
    ASSERT_EQ(points.size(), 8);
    for (int i = 0; i < 8; ++i)
    {
        const float depth = i & 4 ? 10.0f : 1.0f;
        const QVector3D expected(i & 1 ? depth : -depth, i & 2 ? depth : -depth, 20.0f - depth);
        EXPECT_LT((points[i] - expected).length(), 1e-4f) << i;
    }
}

TEST(ShadowMapManagerCameraTest, TheFrustumHasItsPlanesInOrderAndOutward)
{
    Random random(920);
    for (int i = 0; i < 500; ++i)
    {
        const CameraPose camera = randomCamera(random, 20);
        ShadowMapManagerCulling culling;
        ASSERT_TRUE(culling.setupCameras(&camera.projection, &camera.view));
        const QList<Plane>& planes = Access::frustumPlanes(culling);
        ASSERT_EQ(planes.size(), 6);
        // In the order of the volume: near, far, lower x, upper x, lower y, upper y.
        const Volume volume = frustumVolume(camera.clipFromWorld());
        const int kOf[6] = {0, 1, 2, 3, 5, 4};
        for (int plane = 0; plane < 6; ++plane)
        {
            const HalfSpace& expected = volume[std::size_t(kOf[plane])];
            EXPECT_NEAR(dot(vec(planes[plane].normal), expected.n), 1.0, 1e-4) << plane;
            EXPECT_NEAR(planes[plane].distance, expected.d, 5e-3) << plane;
        }
    }
}

TEST(ShadowMapManagerCameraTest, ThePlanesAreThoseOfThreeCornersEach)
{
    const int kCorners[6][3] = {{0, 1, 3}, {4, 6, 7}, {6, 4, 0}, {5, 7, 3}, {7, 6, 2}, {4, 5, 1}};
    for (const float near : {1.0f, 0.1f, 0.01f, 0.001f, 0.0001f})
    {
        const CameraPose camera = cameraAt({0, 0, 1}, {0, 0, 0}, 30.0f, near, 40.0f);
        ShadowMapManagerCulling culling;
        ASSERT_TRUE(culling.setupCameras(&camera.projection, &camera.view)) << near;
        const QList<QVector3D>& points = Access::frustumPoints(culling);
        const QList<Plane>& planes = Access::frustumPlanes(culling);
        for (int i = 0; i < 6; ++i)
        {
            const Plane expected(points[kCorners[i][0]], points[kCorners[i][1]], points[kCorners[i][2]]);
            EXPECT_TRUE(sameBits(planes[i], expected)) << near << ", " << i;
        }
        EXPECT_EQ(planes[0].normal.isNull(), near < 0.005f) << "so close together, three corners are a line";
    }
}

TEST(ShadowMapManagerCameraTest, ANearPlaneCloseToTheEyeCutsNothingAway)
{
    // Even where the corners of the near plane are all one in floats.
    for (const float away : {0.0f, 100.0f, 20000.0f})
    {
        for (const float near : {0.001f, 0.0001f, 0.00001f})
        {
            const CameraPose camera = cameraAt({away, 0, 1}, {away, 0, 0}, 30.0f, near, 40.0f);
            const SceneBox scene{{away - 4, -3, -5}, {away + 4, 3, 5}};
            ShadowMapManagerCulling culling;
            const LogCapture log;
            ASSERT_TRUE(culling.setupCameras(&camera.projection, &camera.view)) << away << ", " << near;
            ASSERT_TRUE(culling.setupScene(&scene));
            ASSERT_TRUE(culling.setupPost());
            EXPECT_EQ(log.texts(), QStringList());
            EXPECT_TRUE(Access::frustumPlanes(culling)[0].normal.isNull());
            EXPECT_EQ(Access::visiblePoints(culling),
                      Bounds(scene.first, scene.second)
                          .frustrumClipped(Access::frustumPlanes(culling), Access::frustumPoints(culling), {}));
        }
    }
}

TEST(ShadowMapManagerCameraTest, CascadesHaveANearPlaneHoweverCloseToTheEye)
{
    Random random(921);
    for (const float away : {0.0f, 100.0f, 20000.0f})
    {
        for (const float near : {0.001f, 0.0001f})
        {
            for (int i = 0; i < 50; ++i)
            {
                const QVector3D eye = QVector3D(away, 0, away) + random.point(1.0);
                const CameraPose camera = cameraAt(eye, eye + random.direction() * 10.0f, 60.0f, near, 40.0f);
                const QVector3D ahead = -camera.view.row(2).toVector3D();
                const QVector3D half(50, 50, 50); // the eye is in the midst of it
                const SceneBox scene{eye - half, eye + half};
                const ShadowMapManagerCulling culling = cullingOf(&camera, &scene);
                const auto light = lightOf(Light::eDirectional, shiningAlong({1, -2, 1}, eye), 4);
                const Access::CSM csm = Access::csm(culling, *light);
                ASSERT_TRUE(csm.enabled);
                const float off = 1e-3f + away * 1e-6f;
                EXPECT_NEAR(QVector3D::dotProduct(csm.nearPoint - eye, ahead), near, 10 * off) << away << ", " << near;
                // The matrix does not have the far plane more exactly than this.
                EXPECT_NEAR(QVector3D::dotProduct(csm.farPoint - eye, ahead), 40.0f, 0.2f + 6e-5f * away)
                    << away << ", " << near;
                ShadowMapManagerCulling user(culling);
                RenderData data;
                const LogCapture log;
                ASSERT_EQ(process(user, data, *light).info.count, 4) << away << ", " << near;
                std::vector<Vec> seen;
                for (const float depth : {0.1f, 1.0f, 5.0f, 20.0f, 39.0f})
                    seen.push_back(vec(eye + ahead * depth));
                expectCovers(data, 0, 4, seen);
                const auto lamp = lightOf(Light::ePoint, placedAt(eye.x() + 3, eye.y() + 2, eye.z()));
                expectCovers(data, 0, process(user, data, *lamp).info.count, seen);
                EXPECT_EQ(log.texts(), QStringList());
            }
        }
    }
}

TEST(ShadowMapManagerCameraTest, ACameraWithoutVolumeOrEndIsReported)
{
    const CameraPose good = frontCamera();
    QMatrix4x4 endless = good.projection;
    endless(2, 2) = -1.0f;
    endless(2, 3) = -2.0f;
    QMatrix4x4 flat = good.projection;
    flat.scale(1, 0, 1);
    QMatrix4x4 wrong = good.projection;
    wrong(0, 0) = kNaN;
    for (const QMatrix4x4& projection : {endless, wrong})
    {
        ShadowMapManagerCulling culling;
        const LogCapture log;
        EXPECT_FALSE(culling.setupCameras(&projection, &good.view));
        EXPECT_EQ(log.messages(QtCriticalMsg),
                  QStringList(assertionLine(QStringLiteral("isFrustum(points, solid)"),
                                            QStringLiteral("Camera has a frustum without volume or without end"))));
        EXPECT_FALSE(Access::hasCamera(culling));
        culling.setupScene(&kScene);
        EXPECT_TRUE(culling.setupPost()) << "the scene as a whole";
        EXPECT_EQ(Access::visiblePoints(culling), Access::scenePoints(culling));
    }
    // One that cannot be inverted counts as identity, for a frustum of the cube from -1 to 1 before the eye.
    ShadowMapManagerCulling culling;
    EXPECT_TRUE(culling.setupCameras(&flat, &good.view));
    for (const QVector3D& point : Access::frustumPoints(culling))
        EXPECT_LT((point - QVector3D(0, 0, 20)).length(), 1.8f);
}

TEST(ShadowMapManagerCameraTest, TheCornersOfAFrustumsPlanesAreItsCorners)
{
    Random random(34);
    for (int i = 0; i < 200; ++i)
    {
        const CameraPose camera = randomCamera(random, 10);
        const QList<QVector3D> corners = frustumCorners(camera.projection, camera.view);
        const QList<QVector3D> found = cornersFromFrustumPlanes(frustumPlanes(corners));
        ASSERT_EQ(found.size(), 8);
        for (int corner = 0; corner < 8; ++corner)
            EXPECT_LT((found[corner] - corners[corner]).length(), 0.02f) << corner;
    }
}

} // namespace Harrow::Vrk::Test
