// SPDX-License-Identifier: MIT
//
// Fitting at its limits: where projections are written, full lists, points without extent, what the heap gives, and
// input that is none.

#include "ShadowMapManagerCulling.h"

#include "ShadowMapFitting.h"
#include "ShadowMapTestTools.h"
#include "support/HeapCount.h"
#include "support/LogCapture.h"

#include <QVector4D>

#include <gtest/gtest.h>

#include <cmath>
#include <cstddef>
#include <limits>
#include <memory>
#include <optional>
#include <vector>

namespace Harrow::Vrk::Test
{
namespace
{

constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();
constexpr float kInfinity = std::numeric_limits<float>::infinity();
constexpr float kLargest = std::numeric_limits<float>::max();

const SceneBox kScene{{-4, -3, -5}, {4, 3, 5}};

QString noRoom(int count)
{
    return assertionLine(QStringLiteral("index >= 0 && index < room"),
                         QStringLiteral("No room for projection %1 of a light among 32").arg(count));
}

QString noExtent(int count)
{
    return assertionLine(QStringLiteral("isFinite(matrix)"),
                         QStringLiteral("Projection %1 of a light is fitted to points without extent").arg(count));
}

/// Nothing that is not a number, and nothing infinite, is ever stored.
void expectFinite(const RenderData& data)
{
    for (const RenderData::Transform& transform : data.transforms)
        EXPECT_TRUE(isAllFinite(transform.toMatrix()));
}

} // namespace

// ---- writing -------------------------------------------------------------------------------------------------------

TEST(ShadowMapManagerLimitsTest, ProjectionsGoBehindThoseOfTheInfo)
{
    ShadowMapManagerCulling culling = cullingOf(nullptr, &kScene);
    RenderData data;
    const auto light = lightOf(Light::eDirectional, shiningAlong({1, -2, 1}));
    const Processed p = process(culling, data, *light, {2, 5});
    EXPECT_TRUE(p.result);
    EXPECT_EQ(p.info.index, 5);
    EXPECT_EQ(p.info.count, 3);
    for (int i = 0; i < 32; ++i)
        EXPECT_EQ(data.transforms[i] == RenderData().transforms[i].toMatrix(), i != 7) << i;
}

TEST(ShadowMapManagerLimitsTest, ChangesAreFolded)
{
    ShadowMapManagerCulling culling = cullingOf(nullptr, &kScene);
    RenderData data;
    const auto light = lightOf(Light::ePoint, placedAt(1, 1, 1));
    EXPECT_TRUE(process(culling, data, *light).changed);
    EXPECT_FALSE(process(culling, data, *light).changed);
    data.transforms[3] = RenderData::Transform();
    EXPECT_TRUE(process(culling, data, *light).changed) << "one of six";
    bool changed = true;
    RenderData::ProjectorInfo info;
    EXPECT_TRUE(culling.processLightPoint(data, info, light.get(), changed));
    EXPECT_TRUE(changed) << "never taken back";
}

TEST(ShadowMapManagerLimitsTest, TheBlurIsThatOfTheKindOfLight)
{
    ShadowMapManagerCulling culling = cullingOf(nullptr, &kScene);
    RenderData data;
    const auto point = lightOf(Light::ePoint);
    process(culling, data, *point);
    for (int i = 0; i < 6; ++i)
        EXPECT_EQ(data.blurInfos[i].blur, 0.0f);
    const auto directional = lightOf(Light::eDirectional);
    process(culling, data, *directional);
    EXPECT_EQ(data.blurInfos[0].blur, 0.0005f);
    EXPECT_EQ(data.blurInfos[1].blur, 0.0f);
}

// ---- full lists ----------------------------------------------------------------------------------------------------

TEST(ShadowMapManagerLimitsTest, ALightStopsAtTheLastProjection)
{
    const CameraPose camera = cameraAt({0, 0, 20}, {0, 0, 0});
    ShadowMapManagerCulling culling = cullingOf(&camera, &kScene);
    for (const Light::Type type : {Light::ePoint, Light::eDirectional})
    {
        RenderData data;
        const auto light = lightOf(type, QMatrix4x4(), 4);
        const LogCapture log;
        const Processed p = process(culling, data, *light, {0, 30});
        EXPECT_TRUE(p.result);
        EXPECT_TRUE(p.changed);
        EXPECT_EQ(p.info.count, 2);
        EXPECT_EQ(log.messages(), QStringList(noRoom(2))) << "once for the light";
    }
}

TEST(ShadowMapManagerLimitsTest, SixFittedPointLightsTakeThirtyTwoProjections)
{
    RenderData data;
    std::vector<std::unique_ptr<Light>> lights;
    std::vector<Light*> plain;
    for (int i = 0; i < 7; ++i)
    {
        lights.push_back(lightOf(Light::ePoint, placedAt(float(i) * 0.5f, 0.25f, 0.125f)));
        plain.push_back(lights.back().get());
    }
    const LogCapture log;
    EXPECT_TRUE(ShadowMapManager::processLights(listOf(plain), data, nullptr, nullptr, &kScene));
    EXPECT_EQ(data.transformCount, 32);
    EXPECT_EQ(data.projectorInfos[4].count, 6);
    EXPECT_EQ(data.projectorInfos[5].count, 2);
    EXPECT_EQ(data.projectorInfos[5].index, 30);
    EXPECT_EQ(data.projectorInfos[6].count, 0);
    EXPECT_EQ(log.messages(), QStringList(noRoom(2)));
}

TEST(ShadowMapManagerLimitsTest, FortyCascadesTakeThirtyTwoProjections)
{
    RenderData data;
    const CameraPose camera = cameraAt({0, 0, 20}, {0, 0, 0});
    const auto light = lightOf(Light::eDirectional, shiningAlong({1, -2, 1}), 40);
    const LogCapture log;
    EXPECT_TRUE(
        ShadowMapManager::processLights(listOf({light.get()}), data, &camera.projection, &camera.view, &kScene));
    EXPECT_EQ(data.transformCount, 32);
    EXPECT_EQ(data.projectorInfos[0].count, 32);
    EXPECT_EQ(log.messages(), QStringList(noRoom(32)));
}

TEST(ShadowMapManagerLimitsTest, AnInfoThatPointsOutsideIsReported)
{
    ShadowMapManagerCulling culling = cullingOf(nullptr, &kScene);
    constexpr int kMost = std::numeric_limits<int>::max();
    for (const RenderData::ProjectorInfo& info : {RenderData::ProjectorInfo{0, 32}, {0, -1}, {kMost, kMost}, {-1, 0}})
    {
        RenderData data;
        const auto light = lightOf(Light::eDirectional, shiningAlong({1, -2, 1}));
        const LogCapture log;
        const Processed p = process(culling, data, *light, info);
        EXPECT_TRUE(p.result);
        EXPECT_FALSE(p.changed);
        EXPECT_EQ(p.info.count, info.count);
        EXPECT_EQ(log.messages(), QStringList(noRoom(info.count)));
    }
}

TEST(ShadowMapManagerLimitsTest, ShorterListsAreNotOverrun)
{
    RenderData data;
    data.transforms.resize(3);
    data.blurInfos.resize(3);
    data.projectorInfos.resize(2);
    std::vector<std::unique_ptr<Light>> lights;
    std::vector<Light*> plain;
    for (int i = 0; i < 3; ++i)
    {
        lights.push_back(lightOf(Light::ePoint, placedAt(float(i), 0, 0)));
        plain.push_back(lights.back().get());
    }
    const LogCapture log;
    EXPECT_TRUE(ShadowMapManager::processLights(listOf(plain), data));
    EXPECT_EQ(data.transformCount, 3);
    EXPECT_EQ(data.lightCount, 2);
    EXPECT_EQ(log.messages(), QStringList(QStringLiteral("More lights 3 than shadow projection supports 2. Ignoring "
                                                         "top most.")));
    data.transforms.clear();
    EXPECT_FALSE(ShadowMapManager::processLights(listOf(plain), data));
    EXPECT_EQ(data.transformCount, 0);
}

TEST(ShadowMapManagerLimitsTest, FewerBlursThanTransformsAreRoomForSoMany)
{
    const QString noBlur = assertionLine(QStringLiteral("projectorIndex < _data.blurInfos.size()"),
                                         QStringLiteral("No room for the blur of shadow projection 2 among 2"));
    for (const Light::Type type : {Light::ePoint, Light::eSpot, Light::eDirectional})
    {
        for (const SceneBox* const scene : {&kScene, static_cast<const SceneBox*>(nullptr)})
        {
            RenderData data;
            data.blurInfos.resize(2);
            std::vector<std::unique_ptr<Light>> lights;
            std::vector<Light*> plain;
            for (int i = 0; i < 3; ++i)
            {
                lights.push_back(lightOf(type, shiningAlong({1, -2, float(i)}), 0, type == Light::eSpot ? 0.5f : -1));
                plain.push_back(lights.back().get());
            }
            const LogCapture log;
            EXPECT_TRUE(ShadowMapManager::processLights(listOf(plain), data, nullptr, nullptr, scene));
            const bool isFitted = scene && type != Light::eSpot;
            for (const QString& message : log.messages())
                EXPECT_TRUE(message == noBlur ||
                            (isFitted && message.contains(QStringLiteral("No room for projection"))))
                    << message.toStdString();
            EXPECT_EQ(log.messages(QtCriticalMsg).size(), type == Light::ePoint ? 3 : 1) << "once for each light";
            EXPECT_EQ(data.transformCount, 2);
            EXPECT_EQ(data.projectorInfos[2].count, 0);
            for (int i = 0; i < 32; ++i)
                EXPECT_EQ(data.transforms[i] == RenderData().transforms[i].toMatrix(), i >= 2) << i;
        }
    }
}

TEST(ShadowMapManagerLimitsTest, ListsOfOtherSizesThatSufficeAreNotReported)
{
    RenderData data;
    data.transforms.resize(40);
    data.blurInfos.resize(3);
    const auto light = lightOf(Light::eDirectional, shiningAlong({1, -2, 1}));
    const LogCapture log;
    EXPECT_TRUE(ShadowMapManager::processLights(listOf({light.get(), light.get(), light.get()}), data));
    EXPECT_TRUE(ShadowMapManager::processLights(listOf({light.get()}), data, nullptr, nullptr, &kScene));
    EXPECT_EQ(log.texts(), QStringList());
}

TEST(ShadowMapManagerLimitsTest, ANullLightIsReported)
{
    ShadowMapManagerCulling culling = cullingOf(nullptr, &kScene);
    RenderData data;
    RenderData::ProjectorInfo info;
    bool changed = false;
    const LogCapture log;
    EXPECT_FALSE(culling.processLightDirectional(data, info, nullptr, changed));
    EXPECT_FALSE(culling.processLightPoint(data, info, nullptr, changed));
    EXPECT_EQ(log.messages(), QStringList({assertionLine(QStringLiteral("nullptr != light"),
                                                         QStringLiteral("Light is NULL on processLightDirectional")),
                                           assertionLine(QStringLiteral("nullptr != light"),
                                                         QStringLiteral("Light is NULL on processLightPoint"))}));
    EXPECT_FALSE(changed);
    EXPECT_EQ(info.count, 0);
}

// ---- points without extent -----------------------------------------------------------------------------------------

TEST(ShadowMapManagerLimitsTest, AFlatSceneLitFromTheSideIsFitted)
{
    const SceneBox ground{{-4, 0, -5}, {4, 0, 5}};
    ShadowMapManagerCulling culling = cullingOf(nullptr, &ground);
    RenderData data;
    const auto light = lightOf(Light::eDirectional, shiningAlong({1, -2, 1}));
    const auto point = lightOf(Light::ePoint, placedAt(0.3f, 3, 0.2f));
    const LogCapture log;
    EXPECT_EQ(process(culling, data, *light).info.count, 1);
    EXPECT_GE(process(culling, data, *point).info.count, 1);
    EXPECT_EQ(log.texts(), QStringList());
    expectFinite(data);
}

TEST(ShadowMapManagerLimitsTest, ASceneWithoutExtentAlongAnAxisOfTheLightIsReported)
{
    // As seen from the light: without depth, a line, a line, a point.
    const SceneBox kFlat[] = {
        {{-4, -5, -2}, {4, 5, -2}}, {{-4, 1, -3}, {4, 1, 3}}, {{1, -4, -3}, {1, 4, 3}}, {{1, 2, 3}, {1, 2, 3}}};
    for (const SceneBox& flat : kFlat)
    {
        ShadowMapManagerCulling culling = cullingOf(nullptr, &flat);
        RenderData data;
        const auto light = lightOf(Light::eDirectional);
        const LogCapture log;
        const Processed p = process(culling, data, *light);
        EXPECT_TRUE(p.result);
        EXPECT_FALSE(p.changed);
        EXPECT_EQ(p.info.count, 0);
        EXPECT_EQ(log.messages(), QStringList(noExtent(0)));
        expectFinite(data);
    }
}

TEST(ShadowMapManagerLimitsTest, APointIsNothingForAPointLight)
{
    const SceneBox point{{1, 2, -3}, {1, 2, -3}};
    ShadowMapManagerCulling culling = cullingOf(nullptr, &point);
    RenderData data;
    const auto light = lightOf(Light::ePoint);
    const LogCapture log;
    const Processed p = process(culling, data, *light);
    EXPECT_TRUE(p.result);
    EXPECT_EQ(p.info.count, 0);
    EXPECT_EQ(log.texts(), QStringList());
    expectFinite(data);
}

TEST(ShadowMapManagerLimitsTest, PointsBehindOrAtTheLightGiveNoProjection)
{
    const QList<QVector3D> behind = {{-1, -1, 1}, {1, -1, 2}, {1, 1, 3}, {-1, 1, 4}};
    EXPECT_FALSE(fitPointShadow(behind, behind, QMatrix4x4()));
    const QList<QVector3D> at = {{-1, -1, 0}, {1, -1, 0}, {1, 1, -1e-6f}};
    EXPECT_FALSE(fitPointShadow(at, at, QMatrix4x4()));
    EXPECT_FALSE(fitPointShadow({QVector3D(0, 0, 0)}, {}, QMatrix4x4()));
    const QList<QVector3D> alone = {{0.2f, 0.1f, -3}};
    EXPECT_FALSE(fitPointShadow(alone, {}, QMatrix4x4())) << "least and most are the same";
    const QList<QVector3D> line = {{0.2f, -1, -3}, {0.2f, 1, -3}};
    EXPECT_FALSE(fitPointShadow(line, {}, QMatrix4x4()));
}

TEST(ShadowMapManagerLimitsTest, PointsThatAllProjectBehindGiveNoProjection)
{
    // Depth counts with the division by w, the place in the map only where w is above 0. With a w of -1 all around,
    // what is ahead by the one is behind by the other.
    QMatrix4x4 worldFromSide;
    worldFromSide(3, 3) = -1.0f;
    const QList<QVector3D> points = {{-1, -1, 3}, {1, -1, 3}, {1, 1, 4}, {-1, 1, 5}};
    const QMatrix4x4 inverse = worldFromSide.inverted();
    for (const QVector3D& point : points)
    {
        ASSERT_LT(inverse.map(point).z(), -2.9f) << "ahead";
        ASSERT_GT(inverse.map(QVector4D(point, 1.0f)).z(), 2.9f) << "behind, so that w is below 0";
    }
    EXPECT_FALSE(fitPointShadow(points, points, worldFromSide));
    QList<QVector3D> mirrored = points;
    for (QVector3D& point : mirrored)
        point = -point;
    EXPECT_TRUE(fitPointShadow(mirrored, mirrored, QMatrix4x4())) << "nothing else is wrong with them";
}

TEST(ShadowMapManagerLimitsTest, ReceiversBeforeTheCastersGiveNoProjection)
{
    const QList<QVector3D> receivers = {{-1, -1, -3}, {1, -1, -3}, {1, 1, -4}};
    EXPECT_TRUE(fitPointShadow(receivers, {{0, 0, -3.9f}}, QMatrix4x4()));
    EXPECT_FALSE(fitPointShadow(receivers, {{0, 0, -4.0f}}, QMatrix4x4())) << "as near as the farthest receiver";
    EXPECT_FALSE(fitPointShadow(receivers, {{0, 0, -5.0f}}, QMatrix4x4()));
}

// ---- the heap ------------------------------------------------------------------------------------------------------

/// A round of lights under a camera that turns.
class Frames
{
public:
    Frames()
    {
        for (int i = 0; i < 4; ++i)
        {
            _lights.push_back(lightOf(Light::eDirectional, shiningAlong({1, -2, 0.25f * float(i)}), i == 0 ? 4 : 0));
            _lights.push_back(lightOf(Light::ePoint, placedAt(float(i), 1, 0.5f), i == 0 ? 2 : 0, i < 2 ? 0.5f : -1));
            _lights.push_back(lightOf(Light::eSpot, placedAt(float(i), 2, 0), 0, 0.5f));
        }
        std::vector<Light*> plain;
        for (const auto& light : _lights)
            plain.push_back(light.get());
        _list = listOf(plain);
    }

    void process(int frame)
    {
        const float angle = 0.1f * float(frame);
        const CameraPose camera = cameraAt({0, 1, 0}, {std::sin(angle), 0.9f, std::cos(angle)});
        ShadowMapManager::processLights(_list, data, &camera.projection, &camera.view, &kScene);
        EXPECT_GT(data.transformCount, 12);
    }

    RenderData data;

private:
    std::vector<std::unique_ptr<Light>> _lights;
    QVariant _list;
};

TEST(ShadowMapManagerLimitsTest, TheListsOfRenderDataStayWhereTheyAre)
{
    Frames frames;
    const auto* const transforms = frames.data.transforms.constData();
    const auto* const infos = frames.data.projectorInfos.constData();
    const auto* const blurs = frames.data.blurInfos.constData();
    for (int frame = 0; frame < 100; ++frame)
        frames.process(frame);
    EXPECT_EQ(frames.data.transforms.constData(), transforms);
    EXPECT_EQ(frames.data.projectorInfos.constData(), infos);
    EXPECT_EQ(frames.data.blurInfos.constData(), blurs);
}

TEST(ShadowMapManagerLimitsTest, TheSameFrameAllocatesTheSameEachTime)
{
    Frames frames;
    frames.process(0);
    frames.process(0);
    long long first = -1;
    for (int i = 0; i < 20; ++i)
    {
        const HeapCount count;
        frames.process(0);
        const long long allocations = count.soFar();
        if (first < 0)
            first = allocations;
        EXPECT_EQ(allocations, first) << i;
    }
}

TEST(ShadowMapManagerLimitsTest, ProjectionsThatAreNotFittedAllocateNothing)
{
    RenderData data;
    std::vector<std::unique_ptr<Light>> lights;
    std::vector<Light*> plain;
    for (const Light::Type type : {Light::ePoint, Light::eSpot, Light::eDirectional})
    {
        lights.push_back(lightOf(type, placedAt(1, 2, 3), 4, 0.5f));
        plain.push_back(lights.back().get());
    }
    const QVariant list = listOf(plain);
    ShadowMapManager::processLights(list, data);
    const HeapCount count;
    ShadowMapManager::processLights(list, data);
    EXPECT_EQ(count.soFar(), 0);
    EXPECT_EQ(data.transformCount, 8);
}

TEST(ShadowMapManagerLimitsTest, TheHeapDoesNotGrowFromFrameToFrame)
{
    if (!bytesInUse())
        GTEST_SKIP() << "this C library does not tell what is in use";
    Frames frames;
    for (int frame = 0; frame < 200; ++frame)
        frames.process(frame);
    const std::size_t before = *bytesInUse();
    for (int frame = 200; frame < 2200; ++frame)
        frames.process(frame);
    // Eight bytes a frame would be 16,000; what the allocator has put by for itself may be another piece or two.
    EXPECT_LT(double(*bytesInUse()) - double(before), 12'000.0);
}

// ---- awkward input -------------------------------------------------------------------------------------------------

TEST(ShadowMapManagerLimitsTest, AwkwardInputIsNeverStoredAsWhatIsNoNumber)
{
    // Scenes, cameras and lights of zeros, of the smallest and the largest numbers, and of none.
    const float kAwkward[] = {0.0f, 1.0f, -1.0f, 1e-30f, 1e20f, -1e20f, 1e30f, kLargest, -kLargest, kNaN, kInfinity};
    Random random(555);
    const auto awkward = [&] { return kAwkward[random.below(int(std::size(kAwkward)))]; };
    const LogCapture log;
    for (int i = 0; i < 5000; ++i)
    {
        const auto sometimes = [&](float ordinary) { return random.below(4) == 0 ? awkward() : ordinary; };
        const SceneBox scene{{sometimes(-4), sometimes(-3), sometimes(-5)}, {sometimes(4), sometimes(3), sometimes(5)}};
        CameraPose camera = randomCamera(random, 10);
        if (random.below(2))
            camera.projection(random.below(4), random.below(4)) = awkward();
        if (random.below(2))
            camera.view(random.below(4), random.below(4)) = awkward();
        QMatrix4x4 transform = randomLightTransform(random, 10);
        if (random.below(2))
            transform(random.below(4), random.below(4)) = awkward();
        const auto light = lightOf(random.below(2) ? Light::ePoint : Light::eDirectional, transform,
                                   random.below(2) ? 3 : 0, sometimes(-1));
        ShadowMapManagerCulling culling = cullingOf(random.below(4) ? &camera : nullptr, &scene);
        RenderData data;
        const Processed p = process(culling, data, *light);
        EXPECT_LE(p.info.count, 18);
        expectFinite(data);
    }
}

} // namespace Harrow::Vrk::Test
