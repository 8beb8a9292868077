// SPDX-License-Identifier: MIT
//
// Boxes, cameras and lights of the scene.
#include "GPUModelTestTools.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <climits>
#include <cmath>
#include <limits>

namespace Harrow::Vrk
{

inline bool operator==(const GPUModel::BoundingBox& a, const GPUModel::BoundingBox& b)
{
    return a.minX == b.minX && a.minY == b.minY && a.minZ == b.minZ && a.maxX == b.maxX && a.maxY == b.maxY &&
           a.maxZ == b.maxZ;
}

inline std::ostream& operator<<(std::ostream& stream, const GPUModel::BoundingBox& box)
{
    return stream << box.minX << ' ' << box.minY << ' ' << box.minZ << " to " << box.maxX << ' ' << box.maxY << ' '
                  << box.maxZ;
}

} // namespace Harrow::Vrk

namespace Harrow::Vrk::Test
{
namespace
{

using Box = GPUModel::BoundingBox;
using Camera = GPUModel::Camera;

constexpr float kFar = 1.0e20f;
constexpr Box kNothing = {kFar, kFar, kFar, -kFar, -kFar, -kFar};
constexpr Box kBoxes[] = {{-1, -2, -3, 1, 2, 3}, {10, 20, 30, 11, 22, 33}, {-5, 0, 0, 0, 0, 50}};

class GPUModelSceneTest : public GPUModelFixture
{
protected:
    /// A drawable whose commands have these boxes.
    int addBoxed(const QList<int>& boxes)
    {
        const int handle = add(int(boxes.size()));
        for (int command = 0; command < boxes.size(); ++command)
            model.useBoundingBox(handle, command, boxes[command]);
        return handle;
    }

    void cull(int handle, const QList<bool>& culled)
    {
        GPUModel::Drawable& drawable = Pass::writableDrawableAt(model, handle);
        drawable.culled = culled;
        drawable.culledCount = int(culled.count(true));
        Pass::isSceneBoundsDirty(model) = true;
    }
};

// -- boxes --

TEST_F(GPUModelSceneTest, LoadedBoxesReplaceAllThatThereWere)
{
    EXPECT_FALSE(model.isValidBoundingBox(0));
    model.loadBoundingBoxes(kBoxes, 3);
    for (int i = 0; i < 3; ++i)
    {
        EXPECT_TRUE(model.isValidBoundingBox(i));
        EXPECT_EQ(model.getBoundingBox(i), kBoxes[i]);
    }
    EXPECT_FALSE(model.isValidBoundingBox(3));
    EXPECT_FALSE(model.isValidBoundingBox(-1));
    model.loadBoundingBoxes(kBoxes + 1, 1);
    EXPECT_EQ(model.getBoundingBox(0), kBoxes[1]);
    EXPECT_FALSE(model.isValidBoundingBox(1));
    for (const int count : {0, -1, INT_MIN})
    {
        model.loadBoundingBoxes(kBoxes, 3);
        model.loadBoundingBoxes(kBoxes, count);
        EXPECT_FALSE(model.isValidBoundingBox(0)) << count;
    }
    model.loadBoundingBoxes(kBoxes, 3);
    LogCapture log;
    model.loadBoundingBoxes(nullptr, 0);
    EXPECT_FALSE(model.isValidBoundingBox(0));
    EXPECT_EQ(log.messages(), QStringList());
}

TEST_F(GPUModelSceneTest, LoadingBoxesLeavesTheBoundsAsTheyWereComputed)
{
    model.loadBoundingBoxes(kBoxes, 1);
    addBoxed({0});
    ASSERT_EQ(model.sceneBounds(), kBoxes[0]);
    model.loadBoundingBoxes(kBoxes + 1, 1);
    EXPECT_EQ(model.sceneBounds(), kBoxes[0]);
    Pass::isSceneBoundsDirty(model) = true;
    EXPECT_EQ(model.sceneBounds(), kBoxes[1]);
}

TEST_F(GPUModelSceneTest, ACommandRefersToAnyBox)
{
    const int handle = add(3);
    model.useBoundingBox(handle, 1, 7);
    model.useBoundingBox(handle, 2, -5);
    EXPECT_EQ(Pass::drawableAt(model, handle).boundingBoxRefs, QList<int>({-1, 7, -5}));
    model.useBoundingBox(handle, 1, -1);
    EXPECT_EQ(Pass::drawableAt(model, handle).boundingBoxRefs, QList<int>({-1, -1, -5}));
}

TEST_F(GPUModelSceneTest, TheBoundsOfAnEmptyModelAreTurnedInsideOut)
{
    EXPECT_EQ(model.sceneBounds(), kNothing);
    EXPECT_EQ(model.sceneBounds(), kNothing);
    model.clear();
    EXPECT_EQ(model.sceneBounds(), kNothing);
}

TEST_F(GPUModelSceneTest, TheBoundsAreAroundTheBoxesOfAllCommands)
{
    model.loadBoundingBoxes(kBoxes, 3);
    addBoxed({0, 2});
    EXPECT_EQ(model.sceneBounds(), Box({-5, -2, -3, 1, 2, 50}));
    addBoxed({1});
    EXPECT_EQ(model.sceneBounds(), Box({-5, -2, -3, 11, 22, 50}));
}

TEST_F(GPUModelSceneTest, TheBoundsKnowNoTransforms)
{
    model.loadBoundingBoxes(kBoxes, 1);
    const int transform = model.addTransform(-1, translation(100, 100, 100));
    const int handle = addBoxed({0});
    model.useTransform(handle, 0, transform);
    model.updateTransforms();
    EXPECT_EQ(model.sceneBounds(), kBoxes[0]);
}

TEST_F(GPUModelSceneTest, CommandsWithoutABoxAddNothingToTheBounds)
{
    model.loadBoundingBoxes(kBoxes, 3);
    addBoxed({-1, 3, INT_MAX, INT_MIN});
    add(2);
    EXPECT_EQ(model.sceneBounds(), kNothing);
    addBoxed({-1, 1});
    EXPECT_EQ(model.sceneBounds(), kBoxes[1]);
}

TEST_F(GPUModelSceneTest, CulledCommandsAddNothingToTheBounds)
{
    model.loadBoundingBoxes(kBoxes, 3);
    const int handle = addBoxed({0, 1, 2});
    cull(handle, {true, false, true});
    EXPECT_EQ(model.sceneBounds(), kBoxes[1]);
    cull(handle, {true, true, true});
    EXPECT_EQ(model.sceneBounds(), kNothing);
    model.resetCulling();
    EXPECT_EQ(model.sceneBounds(), Box({-5, -2, -3, 11, 22, 50}));
}

TEST_F(GPUModelSceneTest, ADrawableWithAsManyMarksAsCommandsIsNotLookedAt)
{
    model.loadBoundingBoxes(kBoxes, 3);
    const int handle = addBoxed({0, 1});
    cull(handle, {false, false});
    Pass::writableDrawableAt(model, handle).culledCount = 2;
    EXPECT_EQ(model.sceneBounds(), kNothing);
}

TEST_F(GPUModelSceneTest, TheBoundsAreKeptUntilTheyAreStale)
{
    model.loadBoundingBoxes(kBoxes, 3);
    const int handle = addBoxed({0});
    ASSERT_EQ(model.sceneBounds(), kBoxes[0]);
    EXPECT_FALSE(Pass::isSceneBoundsDirty(model));
    model.useBoundingBox(handle, 0, 1); // does not say so
    EXPECT_EQ(model.sceneBounds(), kBoxes[0]);
    addBoxed({});
    EXPECT_EQ(model.sceneBounds(), kBoxes[1]);
}

TEST_F(GPUModelSceneTest, SimpleDrawablesAndChangedDrawListsAreNotReadBeyondWhatIsKnown)
{
    model.loadBoundingBoxes(kBoxes, 3);
    model.addSimple(newDrawList(3), 0, nullptr, nullptr, 0);
    EXPECT_EQ(model.sceneBounds(), kNothing);
    const int handle = addBoxed({0, 1});
    setCommands(*model.drawBuffers(handle), 9);
    EXPECT_EQ(model.sceneBounds(), Box({-1, -2, -3, 11, 22, 33}));
    setCommands(*model.drawBuffers(handle), 1);
    Pass::isSceneBoundsDirty(model) = true;
    EXPECT_EQ(model.sceneBounds(), kBoxes[0]) << "commands that there are no more";
}

TEST_F(GPUModelSceneTest, BadBoxesAndCommandsAreReported)
{
    model.loadBoundingBoxes(kBoxes, 3);
    const int handle = add(1);
    LogCapture log;
    const auto message = [](int index)
    { return assertion("this->isValidBoundingBox(index)", QStringLiteral("There is no bounding box %1").arg(index)); };
    EXPECT_EQ(model.getBoundingBox(3), Box());
    EXPECT_EQ(model.getBoundingBox(-1), Box());
    EXPECT_EQ(log.messages(), QStringList({message(3), message(-1)}));
    log.clear();
    model.useBoundingBox(handle, 1, 0);
    model.useBoundingBox(handle, -1, 0);
    const QString noCommand = QStringLiteral("There is no command %1 in drawable 0");
    const char* const condition = "command >= 0 && command < drawable->boundingBoxRefs.size()";
    EXPECT_EQ(log.messages(),
              QStringList({assertion(condition, noCommand.arg(1)), assertion(condition, noCommand.arg(-1))}));
    EXPECT_EQ(Pass::drawableAt(model, handle).boundingBoxRefs, QList<int>({-1}));
    log.clear();
    model.loadBoundingBoxes(nullptr, 2);
    EXPECT_EQ(log.messages(), QStringList({assertion("nullptr != boxes || count <= 0",
                                                     QStringLiteral("There are no 2 bounding boxes"))}));
    EXPECT_TRUE(model.isValidBoundingBox(2)) << "the old ones stay";
}

// -- cameras --

/// The matrix of a camera in double, from the lengths alone.
struct Frustum
{
    double left, right, bottom, top, nearClip, farClip;

    static Frustum of(const Camera& camera, double aspect, double defaultNear, double defaultFar)
    {
        const double nearClip = camera.nearClip != 0 ? double(camera.nearClip) : defaultNear;
        const double farClip = camera.farClip != 0 ? double(camera.farClip) : defaultFar;
        const double distance = camera.projection == 0 ? nearClip : double(camera.projectionDistance);
        const double scale = distance / double(camera.focalLength);
        const double film = double(camera.horizontalAperture) / double(camera.verticalAperture);
        // A picture that is wider than the film shows all of its width, another one is cut to its height.
        const double width = double(camera.horizontalAperture) * scale * (aspect > film ? 1.0 : aspect / film);
        const double height = width / aspect;
        const double x = double(camera.horizontalOffset) * scale;
        const double y = double(camera.verticalOffset) * scale;
        return {x - width / 2, x + width / 2, y - height / 2, y + height / 2, nearClip, farClip};
    }

    /// By row.
    std::array<double, 16> perspective() const
    {
        const double w = right - left, h = top - bottom, d = farClip - nearClip;
        return {2 * nearClip / w,
                0,
                (right + left) / w,
                0, //
                0,
                2 * nearClip / h,
                (top + bottom) / h,
                0, //
                0,
                0,
                -(farClip + nearClip) / d,
                -2 * farClip * nearClip / d, //
                0,
                0,
                -1,
                0};
    }

    std::array<double, 16> orthographic() const
    {
        const double w = right - left, h = top - bottom, d = farClip - nearClip;
        return {2 / w, 0,     0,      -(right + left) / w,       //
                0,     2 / h, 0,      -(top + bottom) / h,       //
                0,     0,     -2 / d, -(farClip + nearClip) / d, //
                0,     0,     0,      1};
    }
};

void expectNear(const QMatrix4x4& matrix, const std::array<double, 16>& expected)
{
    for (int row = 0; row < 4; ++row)
        for (int column = 0; column < 4; ++column)
        {
            const double value = expected[size_t(4 * row + column)];
            EXPECT_NEAR(double(matrix(row, column)), value, 1e-5 * std::max(1.0, std::abs(value)))
                << "row " << row << " column " << column;
        }
}

Camera filmCamera()
{
    Camera camera;
    camera.horizontalAperture = 36.0f;
    camera.verticalAperture = 24.0f;
    camera.horizontalOffset = 3.0f;
    camera.verticalOffset = -2.0f;
    camera.focalLength = 35.0f;
    camera.projectionDistance = 7.0f;
    camera.nearClip = 0.5f;
    camera.farClip = 90.0f;
    return camera;
}

constexpr float kAspects[] = {0.5f, 1.0f, 1.5f, 16.0f / 9.0f, 3.0f};

TEST_F(GPUModelSceneTest, CamerasAreKeptWithTheirNames)
{
    EXPECT_EQ(model.getCameraCount(), 0);
    Camera camera = filmCamera();
    camera.spare[1] = 77;
    EXPECT_EQ(model.addCamera(camera, QStringLiteral("main")), 0);
    EXPECT_EQ(model.addCamera({}, QStringLiteral("side")), 1);
    EXPECT_EQ(model.addCamera({}, QStringLiteral("main")), 2);
    EXPECT_EQ(model.getCameraCount(), 3);
    EXPECT_EQ(model.getCamera(0).focalLength, 35.0f);
    EXPECT_EQ(model.getCamera(0).spare[1], 77u);
    EXPECT_EQ(model.getCamera(1).focalLength, 0.0f);
    EXPECT_EQ(model.getCameraNames(),
              QStringList({QStringLiteral("main"), QStringLiteral("side"), QStringLiteral("main")}));
    EXPECT_EQ(model.getCameraIndex(QStringLiteral("main")), 0) << "the first";
    EXPECT_EQ(model.getCameraIndex(QStringLiteral("side")), 1);
    EXPECT_EQ(model.getCameraIndex(QStringLiteral("top")), -1);
}

TEST_F(GPUModelSceneTest, ACameraIsReplacedUpToTheirNumber)
{
    EXPECT_FALSE(model.setCamera(0, filmCamera()));
    model.addCamera({}, QStringLiteral("main"));
    LogCapture log;
    EXPECT_TRUE(model.setCamera(0, filmCamera()));
    EXPECT_EQ(model.getCamera(0).focalLength, 35.0f);
    EXPECT_FALSE(model.setCamera(1, {}));
    EXPECT_FALSE(model.setCamera(INT_MAX, {}));
    EXPECT_EQ(log.messages(), QStringList());
    EXPECT_EQ(model.getCameraCount(), 1);
    EXPECT_EQ(model.getCamera(0).focalLength, 35.0f);
}

TEST_F(GPUModelSceneTest, APerspectiveCameraScalesItsFilmToTheNearPlane)
{
    model.addCamera(filmCamera(), {});
    for (const float aspect : kAspects)
    {
        SCOPED_TRACE(aspect);
        const Frustum frustum = Frustum::of(filmCamera(), double(aspect), 0.1, 200.0);
        EXPECT_DOUBLE_EQ(frustum.nearClip, 0.5);
        expectNear(model.getCameraProjectionMatrix(0, aspect), frustum.perspective());
    }
}

TEST_F(GPUModelSceneTest, AnOrthographicCameraScalesItsFilmAtTheProjectionDistance)
{
    Camera camera = filmCamera();
    camera.projection = 1;
    model.addCamera(camera, {});
    for (const float aspect : kAspects)
    {
        SCOPED_TRACE(aspect);
        expectNear(model.getCameraProjectionMatrix(0, aspect),
                   Frustum::of(camera, double(aspect), 0.1, 200.0).orthographic());
    }
}

TEST_F(GPUModelSceneTest, AnyOtherProjectionIsAFrustumScaledAtTheProjectionDistance)
{
    for (const int projection : {2, -1})
    {
        Camera camera = filmCamera();
        camera.projection = projection;
        const int index = model.addCamera(camera, {});
        expectNear(model.getCameraProjectionMatrix(index, 1.0f), Frustum::of(camera, 1.0, 0.1, 200.0).perspective());
    }
}

TEST_F(GPUModelSceneTest, APictureAsWideAsTheFilmShowsAllOfIt)
{
    Camera camera = filmCamera();
    camera.horizontalOffset = camera.verticalOffset = 0.0f;
    model.addCamera(camera, {});
    const QMatrix4x4 matrix = model.getCameraProjectionMatrix(0, 1.5f);
    // Half of 36 by 24 at 35.
    EXPECT_FLOAT_EQ(matrix(0, 0), 35.0f / 18.0f);
    EXPECT_FLOAT_EQ(matrix(1, 1), 35.0f / 12.0f);
    EXPECT_FLOAT_EQ(model.getCameraProjectionMatrix(0, 3.0f)(0, 0), 35.0f / 18.0f) << "wider: all of the width";
    EXPECT_FLOAT_EQ(model.getCameraProjectionMatrix(0, 3.0f)(1, 1), 35.0f / 6.0f);
    EXPECT_FLOAT_EQ(model.getCameraProjectionMatrix(0, 0.75f)(0, 0), 35.0f / 9.0f);
    EXPECT_FLOAT_EQ(model.getCameraProjectionMatrix(0, 0.75f)(1, 1), 35.0f / 12.0f) << "narrower: all of the height";
}

TEST_F(GPUModelSceneTest, TheDefaultCameraHasAFilmOf36By24AtAFocalLengthOf50)
{
    Camera camera;
    camera.horizontalAperture = 36.0f;
    camera.verticalAperture = 24.0f;
    camera.focalLength = 50.0f;
    for (const int index : {-1, -2, INT_MIN})
        for (const float aspect : kAspects)
            expectNear(model.getCameraProjectionMatrix(index, aspect),
                       Frustum::of(camera, double(aspect), 0.1, 200.0).perspective());
    model.setClipPlaneDefaults(2.0f, 30.0f);
    expectNear(model.getCameraProjectionMatrix(-1, 1.5f), Frustum::of(camera, 1.5, 2.0, 30.0).perspective());
}

TEST_F(GPUModelSceneTest, AClipPlaneOf0IsTheModels)
{
    for (const auto& [nearClip, farClip] : {std::pair(0.0f, 50.0f), {0.25f, 0.0f}, {0.0f, 0.0f}, {-0.0f, 50.0f}})
    {
        Camera camera = filmCamera();
        camera.nearClip = nearClip;
        camera.farClip = farClip;
        const int index = model.addCamera(camera, {});
        model.setClipPlaneDefaults(0.1f, 200.0f);
        expectNear(model.getCameraProjectionMatrix(index, 1.0f),
                   Frustum::of(camera, 1.0, double(0.1f), 200.0).perspective());
        model.setClipPlaneDefaults(1.0f, 9.0f);
        expectNear(model.getCameraProjectionMatrix(index, 1.0f), Frustum::of(camera, 1.0, 1.0, 9.0).perspective());
    }
}

TEST_F(GPUModelSceneTest, ACamerasMatrixTakesTheWorldToItsTransform)
{
    const int root = model.addTransform(-1, translation(1, 2, 3));
    const int transform = model.addTransform(root, scaling(2, 2, 2));
    Camera camera = filmCamera();
    camera.transform = transform;
    model.addCamera(camera, {});
    EXPECT_EQ(model.getCameraWorldSpaceMatrix(0), identity) << "not updated yet";
    model.updateTransforms();
    EXPECT_EQ(model.getCameraWorldSpaceMatrix(0), scaling(0.5f, 0.5f, 0.5f) * translation(-1, -2, -3));
}

TEST_F(GPUModelSceneTest, BadCamerasAreReported)
{
    Camera camera = filmCamera();
    camera.transform = 4;
    model.addCamera(camera, {});
    const auto message = [](const char* condition, int index)
    { return assertion(condition, QStringLiteral("There is no camera %1").arg(index)); };
    const char* const range = "0 <= index && index < _cameras.size()";
    LogCapture log;
    EXPECT_EQ(model.getCamera(1).focalLength, 0.0f);
    EXPECT_EQ(model.getCamera(-1).focalLength, 0.0f);
    EXPECT_EQ(model.getCameraWorldSpaceMatrix(1), identity);
    EXPECT_EQ(model.getCameraWorldSpaceMatrix(-1), identity);
    EXPECT_EQ(log.messages(),
              QStringList({message(range, 1), message(range, -1), message(range, 1), message(range, -1)}));
    log.clear();
    EXPECT_EQ(model.getCameraProjectionMatrix(1, 1.0f), identity);
    EXPECT_FALSE(model.setCamera(-1, {}));
    EXPECT_EQ(model.getCameraWorldSpaceMatrix(0), identity);
    EXPECT_EQ(log.messages(),
              QStringList({message("index < _cameras.size()", 1), message("index >= 0", -1), noTransform(4)}));
}

TEST_F(GPUModelSceneTest, ACameraOfNoSizeHarmsNobody)
{
    model.addCamera({}, {});
    const float none = std::numeric_limits<float>::quiet_NaN();
    for (const float aspect : {0.0f, -1.0f, 1.0f, none})
        model.getCameraProjectionMatrix(0, aspect); // no number, but an end
    model.getCameraProjectionMatrix(-1, 0.0f);
    EXPECT_EQ(model.getCameraCount(), 1);
}

// -- lights and the rest --

TEST_F(GPUModelSceneTest, LightsAreGivenBackUnread)
{
    EXPECT_EQ(model.lightCount(), 0);
    Light light;
    for (unsigned i = 0; i < 15; ++i)
        light.payload[i] = 0xA0000000u + i;
    light.bits = (quint64(5) << 61) | 0x123456789u;
    EXPECT_EQ(model.addLight({}, QStringLiteral("sun")), 0);
    EXPECT_EQ(model.addLight(light, QStringLiteral("lamp")), 1);
    EXPECT_EQ(model.lightCount(), 2);
    Light found;
    model.getLight(1, found);
    EXPECT_TRUE(std::equal(std::begin(found.payload), std::end(found.payload), std::begin(light.payload)));
    EXPECT_EQ(found.bits, light.bits);
    model.getLight(0, found);
    EXPECT_EQ(found.bits, 0u);
    Light moved;
    moved = std::move(light);
    EXPECT_EQ(moved.payload[14], 0xA000000Eu);
}

TEST_F(GPUModelSceneTest, TheTypeOfALightStandsInTheTopThreeBits)
{
    Light light;
    for (unsigned type = 0; type < 8; ++type)
    {
        light.bits = (quint64(type) << 61) | (~quint64(0) >> 3);
        EXPECT_EQ(light.getLightType(), type);
    }
    light.bits = ~quint64(0) >> 3;
    EXPECT_EQ(light.getLightType(), 0u);
}

TEST_F(GPUModelSceneTest, ABadLightIsReportedAndNothingIsWritten)
{
    model.addLight({}, {});
    Light light;
    light.bits = 7;
    LogCapture log;
    model.getLight(1, light);
    model.getLight(-1, light);
    const QString message = QStringLiteral("There is no light %1");
    const char* const condition = "0 <= index && index < _lights.size()";
    EXPECT_EQ(log.messages(),
              QStringList({assertion(condition, message.arg(1)), assertion(condition, message.arg(-1))}));
    EXPECT_EQ(light.bits, 7u);
}

TEST_F(GPUModelSceneTest, ReflectedTransparencyIsKeptForTheApplication)
{
    EXPECT_FALSE(model.containsReflectedTransparency());
    model.setContainsReflectedTransparency(true);
    EXPECT_TRUE(model.containsReflectedTransparency());
    model.setContainsReflectedTransparency(false);
    EXPECT_FALSE(model.containsReflectedTransparency());
}

} // namespace
} // namespace Harrow::Vrk::Test
