// SPDX-License-Identifier: MIT
#include "OrbitCamera.h"

#include <gtest/gtest.h>

#include <QVector4D>

#include <cmath>

using namespace vrkview;

namespace
{

void expectNear(const QVector3D& actual, const QVector3D& expected, float tolerance = 1.0e-5f)
{
    for (int axis = 0; axis < 3; ++axis)
        EXPECT_NEAR(actual[axis], expected[axis], tolerance) << "axis " << axis;
}

// A model whose only points are the corners of a box.
Model boxModel(const QVector3D& minimum, const QVector3D& maximum)
{
    Model model;
    model.bounds.add(minimum);
    model.bounds.add(maximum);
    for (int corner = 0; corner < 8; ++corner)
        model.extremes.emplace_back(corner & 1 ? maximum.x() : minimum.x(), corner & 2 ? maximum.y() : minimum.y(),
                                    corner & 4 ? maximum.z() : minimum.z());
    return model;
}

// Extent of the extremes in normalised device coordinates.
struct Footprint
{
    float left = 10.0f;
    float right = -10.0f;
    float bottom = 10.0f;
    float top = -10.0f;
    float nearest = 10.0f;
    float farthest = -10.0f;
};

Footprint footprint(const OrbitCamera& camera, const Model& model, float aspect)
{
    Footprint print;
    const QMatrix4x4 clipFromWorld = camera.clipFromView(aspect) * camera.viewFromWorld();
    for (const QVector3D& extreme : model.extremes)
    {
        const QVector3D ndc = clipFromWorld.map(QVector4D(extreme, 1.0f)).toVector3DAffine();
        print.left = std::min(print.left, ndc.x());
        print.right = std::max(print.right, ndc.x());
        print.bottom = std::min(print.bottom, ndc.y());
        print.top = std::max(print.top, ndc.y());
        print.nearest = std::min(print.nearest, ndc.z());
        print.farthest = std::max(print.farthest, ndc.z());
    }
    return print;
}

} // namespace

TEST(OrbitCameraTest, AnglesOfZeroLookAlongMinusZ)
{
    OrbitCamera camera;
    expectNear(camera.back(), {0.0f, 0.0f, 1.0f});
    expectNear(camera.right(), {1.0f, 0.0f, 0.0f});
    expectNear(camera.up(), {0.0f, 1.0f, 0.0f});
}

TEST(OrbitCameraTest, GrowingAzimuthMovesTheEyeTowardsPlusX)
{
    OrbitCamera camera;
    camera.setAngles(90.0f, 0.0f);
    expectNear(camera.eye(), {1.0f, 0.0f, 0.0f});
    expectNear(camera.right(), {0.0f, 0.0f, -1.0f});
}

TEST(OrbitCameraTest, GrowingElevationMovesTheEyeUp)
{
    OrbitCamera camera;
    camera.setAngles(0.0f, 30.0f);
    expectNear(camera.eye(), {0.0f, 0.5f, std::sqrt(0.75f)});
}

TEST(OrbitCameraTest, FrameOfTheCameraIsRightHandedAndOrthonormalAlsoAtThePoles)
{
    OrbitCamera camera;
    for (const float azimuth : {-170.0f, -35.0f, 0.0f, 77.0f, 180.0f})
    {
        for (const float elevation : {-90.0f, -45.0f, 0.0f, 60.0f, 90.0f})
        {
            camera.setAngles(azimuth, elevation);
            EXPECT_NEAR(camera.right().length(), 1.0f, 1.0e-6f);
            EXPECT_NEAR(camera.up().length(), 1.0f, 1.0e-6f);
            expectNear(QVector3D::crossProduct(camera.right(), camera.up()), camera.back());
        }
    }
}

TEST(OrbitCameraTest, ViewMatrixPutsTheEyeAtTheOriginAndTheTargetInFront)
{
    OrbitCamera camera;
    camera.setAngles(40.0f, 25.0f);
    camera.frame(boxModel({1.0f, 2.0f, 3.0f}, {4.0f, 4.0f, 4.0f}), 1.5f);
    const QMatrix4x4 view = camera.viewFromWorld();
    expectNear(view.map(camera.eye()), QVector3D(), 1.0e-4f);
    expectNear(view.map(camera.target()), {0.0f, 0.0f, -camera.distance()}, 1.0e-4f);
    EXPECT_NEAR(view.determinant(), 1.0, 1.0e-5);
}

TEST(OrbitCameraTest, ElevationStopsAtThePoles)
{
    OrbitCamera camera;
    camera.setAngles(0.0f, 80.0f);
    camera.orbit(10.0f, 50.0f);
    EXPECT_EQ(camera.elevation(), 90.0f);
    camera.orbit(0.0f, -500.0f);
    EXPECT_EQ(camera.elevation(), -90.0f);
    EXPECT_EQ(camera.azimuth(), 10.0f);
}

TEST(OrbitCameraTest, AFullTurnComesBack)
{
    OrbitCamera camera;
    camera.setAngles(20.0f, 10.0f);
    camera.orbit(360.0f, 0.0f);
    EXPECT_NEAR(camera.azimuth(), 20.0f, 1.0e-4f);
}

TEST(OrbitCameraTest, FramedModelFillsThePictureToItsMarginAndSitsInTheMiddle)
{
    const Model model = boxModel({-3.0f, 0.0f, -1.0f}, {5.0f, 1.0f, 9.0f});
    for (const float aspect : {0.4f, 1.0f, 1.78f, 4.0f})
    {
        for (const float azimuth : {0.0f, 35.0f, 120.0f, -77.0f})
        {
            for (const float elevation : {-90.0f, -20.0f, 0.0f, 22.0f, 90.0f})
            {
                OrbitCamera camera;
                camera.setAngles(azimuth, elevation);
                camera.frame(model, aspect);
                const Footprint print = footprint(camera, model, aspect);
                const float widest = std::max({print.right, -print.left, print.top, -print.bottom});
                EXPECT_NEAR(widest, 0.86f, 0.002f) << aspect << " " << azimuth << " " << elevation;
                // The way that fills the picture is centred exactly; the other one as far as depth allows.
                const float across = print.left + print.right;
                const float along = print.bottom + print.top;
                EXPECT_NEAR(print.right - print.left > print.top - print.bottom ? across : along, 0.0f, 0.002f);
                EXPECT_NEAR(across, 0.0f, 0.25f);
                EXPECT_NEAR(along, 0.0f, 0.25f);
                EXPECT_GE(print.nearest, -1.0f);
                EXPECT_LE(print.farthest, 1.0f);
            }
        }
    }
}

TEST(OrbitCameraTest, FramingIsTheSameAtEverySizeOfTheModel)
{
    for (const float scale : {1.0e-6f, 1.0f, 1.0e6f, 1.0e12f})
    {
        OrbitCamera camera;
        camera.setAngles(35.0f, 22.0f);
        const Model model = boxModel(QVector3D(-1.0f, -1.0f, -1.0f) * scale, QVector3D(1.0f, 2.0f, 1.0f) * scale);
        camera.frame(model, 1.5f);
        const Footprint print = footprint(camera, model, 1.5f);
        EXPECT_NEAR(std::max({print.right, -print.left, print.top, -print.bottom}), 0.86f, 0.002f) << scale;
    }
}

TEST(OrbitCameraTest, AModelWithoutExtentIsFramedAsIfItsRadiusWereOne)
{
    OrbitCamera camera;
    camera.frame(boxModel({2.0f, 3.0f, 4.0f}, {2.0f, 3.0f, 4.0f}), 2.0f);
    expectNear(camera.target(), {2.0f, 3.0f, 4.0f});
    EXPECT_NEAR(camera.distance(), 1.0f / (0.86f * std::tan(15.0f * 3.14159265f / 180.0f)), 1.0e-4f);
}

TEST(OrbitCameraTest, AFlatModelSeenFromTheSideStillHasADistance)
{
    OrbitCamera camera;
    camera.frame(boxModel({0.0f, 0.0f, 0.0f}, {0.0f, 0.0f, 5.0f}), 1.0f); // a line that points at the eye
    EXPECT_GT(camera.distance(), 0.0f);
    EXPECT_TRUE(std::isfinite(camera.distance()));
}

TEST(OrbitCameraTest, ZoomMultipliesTheDistanceAndStopsAtItsLimits)
{
    OrbitCamera camera;
    camera.frame(boxModel({-1.0f, -1.0f, -1.0f}, {1.0f, 1.0f, 1.0f}), 1.0f);
    const float before = camera.distance();
    camera.zoom(0.5f);
    EXPECT_NEAR(camera.distance(), 0.5f * before, 1.0e-5f);
    for (int i = 0; i < 200; ++i)
        camera.zoom(0.5f);
    EXPECT_GT(camera.distance(), 0.0f);
    for (int i = 0; i < 400; ++i)
        camera.zoom(2.0f);
    EXPECT_TRUE(std::isfinite(camera.distance()));
    const float farthest = camera.distance();
    camera.zoom(0.0f);
    camera.zoom(-1.0f);
    EXPECT_EQ(camera.distance(), farthest) << "a factor that is none changes nothing";
}

TEST(OrbitCameraTest, ClipPlanesStayInOrderFromInsideAndFromFarAway)
{
    OrbitCamera camera;
    camera.frame(boxModel({-1.0f, -1.0f, -1.0f}, {1.0f, 1.0f, 1.0f}), 1.0f);
    const auto expectUsable = [&camera]
    {
        // Points on the near and on the far plane land on -1 and 1; those between lie between, in order.
        const QMatrix4x4 clip = camera.clipFromView(1.0f);
        const double c = double(clip(2, 2));
        const double d = double(clip(2, 3));
        const double nearPlane = d / (c - 1.0);
        const double farPlane = d / (c + 1.0);
        EXPECT_GT(nearPlane, 0.0);
        EXPECT_GT(farPlane, nearPlane);
    };
    expectUsable();
    camera.zoom(1.0e-3f);
    expectUsable();
    camera.zoom(1.0e3f);
    camera.pan(50.0f, 0.0f);
    expectUsable();
}

TEST(OrbitCameraTest, PanMovesTheTargetsPlaneWithThePointer)
{
    const Model model = boxModel({-1.0f, -1.0f, -1.0f}, {1.0f, 1.0f, 1.0f});
    for (const float aspect : {0.5f, 2.0f})
    {
        OrbitCamera camera;
        camera.setAngles(30.0f, 20.0f);
        camera.frame(model, aspect);
        const QVector3D grabbed = camera.target();
        camera.pan(0.25f, -0.1f);
        const QVector3D ndc =
            (camera.clipFromView(aspect) * camera.viewFromWorld()).map(QVector4D(grabbed, 1.0f)).toVector3DAffine();
        const float shorter = std::min(aspect, 1.0f); // in units of the picture's height
        EXPECT_NEAR(0.5f * ndc.x() * aspect / shorter, 0.25f, 1.0e-4f);
        EXPECT_NEAR(0.5f * ndc.y() / shorter, -0.1f, 1.0e-4f);
    }
}
