// SPDX-License-Identifier: MIT
//
// The lights' way into the render data: records, limits, projections that are not fitted, and when something has
// changed.

#include "ShadowMapManager.h"

#include "GLSLMacroProcessor.h"
#include "ShadowMapTestTools.h"
#include "support/LogCapture.h"

#include <QPointer>
#include <QSharedPointer>

#include <gtest/gtest.h>

#include <limits>
#include <memory>
#include <type_traits>

namespace Harrow::Vrk::Test
{
namespace
{

constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();

void expectMatrix(const RenderData::Transform& actual, const Mat& expected, double tolerance, const char* what)
{
    const Mat found = mat(actual.toMatrix());
    for (std::size_t i = 0; i < 16; ++i)
        EXPECT_NEAR(found[i], expected[i], tolerance) << what << ", row " << i / 4 << ", column " << i % 4;
}

/// Rows of the view from the origin along `ahead`, as cross products give them.
Mat viewAlong(const Vec& ahead, const Vec& up)
{
    const Vec side = cross(ahead, up);
    const Vec top = cross(side, ahead);
    return {side.x, side.y, side.z, 0, top.x, top.y, top.z, 0, -ahead.x, -ahead.y, -ahead.z, 0, 0, 0, 0, 1};
}

std::vector<std::unique_ptr<Light>> manyLights(int count, Light::Type type)
{
    std::vector<std::unique_ptr<Light>> lights;
    for (int i = 0; i < count; ++i)
        lights.push_back(lightOf(type, placedAt(float(i), 0, 0), 0, 0.5f));
    return lights;
}

QVariant listOf(const std::vector<std::unique_ptr<Light>>& lights)
{
    std::vector<Light*> plain;
    for (const auto& light : lights)
        plain.push_back(light.get());
    return Test::listOf(plain);
}

void expectInfo(const RenderData& data, int light, int count, int index)
{
    EXPECT_EQ(data.projectorInfos[light].count, count) << "light " << light;
    EXPECT_EQ(data.projectorInfos[light].index, index) << "light " << light;
}

} // namespace

// ---- records -------------------------------------------------------------------------------------------------------

TEST(ShadowMapManagerTest, ALightHasItsDefaults)
{
    QObject parent;
    const auto* const light = new Light(&parent);
    EXPECT_EQ(light->parent(), &parent);
    EXPECT_EQ(light->type(), Light::ePoint);
    EXPECT_TRUE(light->on());
    EXPECT_TRUE(light->shadowCaster());
    EXPECT_EQ(light->csmLevels(), 0);
    EXPECT_EQ(light->spotCutoff(), -1.0f);
    EXPECT_TRUE(light->transform().isIdentity());
    EXPECT_STREQ(light->metaObject()->className(), "Harrow::Vrk::ShadowMapManager::Light");
}

TEST(ShadowMapManagerTest, TheTypesOfLightAreNumbered)
{
    EXPECT_EQ(Light::ePoint, 0);
    EXPECT_EQ(Light::eSpot, 1);
    EXPECT_EQ(Light::eDirectional, 2);
}

TEST(ShadowMapManagerTest, ALightKeepsWhatIsSet)
{
    Light light;
    light.setType(Light::eDirectional);
    light.setOn(false);
    light.setShadowCaster(false);
    light.setCSMLevels(4);
    light.setSpotCutoff(0.25f);
    light.setTransform(placedAt(1, 2, 3));
    EXPECT_EQ(light.type(), Light::eDirectional);
    EXPECT_FALSE(light.on());
    EXPECT_FALSE(light.shadowCaster());
    EXPECT_EQ(light.csmLevels(), 4);
    EXPECT_EQ(light.spotCutoff(), 0.25f);
    EXPECT_EQ(light.transform(), placedAt(1, 2, 3));
}

TEST(ShadowMapManagerTest, RenderDataHasItsListsFromTheStart)
{
    const RenderData data;
    EXPECT_EQ(data.projectionTexture(), nullptr);
    EXPECT_EQ(data.lightCount, 0);
    EXPECT_EQ(data.transformCount, 0);
    ASSERT_EQ(data.transforms.size(), 32);
    ASSERT_EQ(data.projectorInfos.size(), 32);
    ASSERT_EQ(data.blurInfos.size(), 32);
    for (int i = 0; i < 32; ++i)
    {
        for (const float value : data.transforms[i].values)
            EXPECT_EQ(value, 0.0f);
        expectInfo(data, i, 0, 0);
        EXPECT_EQ(data.blurInfos[i].blur, 0.0005f);
    }
    EXPECT_EQ(kShadowMapInfoArraySizeMax, 32);
    EXPECT_EQ(kShadowMapTransformArraySizeMax, 32);
    EXPECT_STREQ(data.metaObject()->className(), "Harrow::Vrk::ShadowMapManager::RenderData");
}

TEST(ShadowMapManagerTest, TheRecordsAreWhatOpenGLReads)
{
    static_assert(sizeof(RenderData::Transform) == 16 * sizeof(float));
    static_assert(sizeof(RenderData::ProjectorInfo) == 2 * sizeof(qint32));
    static_assert(sizeof(RenderData::BlurInfo) == sizeof(float));
    static_assert(offsetof(RenderData::ProjectorInfo, count) == 0);
    static_assert(!std::is_constructible_v<ShadowMapManager>, "static operations alone");
    const QMatrix4x4 m(1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16);
    const RenderData::Transform transform(m);
    for (int column = 0; column < 4; ++column)
        for (int row = 0; row < 4; ++row)
            EXPECT_EQ(transform.values[column * 4 + row], m(row, column));
    RenderData::Transform assigned;
    assigned = m;
    EXPECT_TRUE(assigned == m);
    EXPECT_EQ(assigned.toMatrix(), m);
}

TEST(ShadowMapManagerTest, ATransformEqualsAMatrixInAllItsElements)
{
    QMatrix4x4 m = placedAt(1, 2, 3);
    const RenderData::Transform transform(m);
    EXPECT_TRUE(transform == m);
    for (int i = 0; i < 16; ++i)
    {
        QMatrix4x4 other = m;
        other.data()[i] = std::nextafter(other.data()[i], 10.0f);
        EXPECT_FALSE(transform == other) << i;
        other.data()[i] = kNaN;
        EXPECT_FALSE(transform == other) << i;
        EXPECT_FALSE(RenderData::Transform(other) == other) << "no number equals itself";
    }
}

TEST(ShadowMapManagerTest, SetTransformTellsWhetherSomethingChanged)
{
    RenderData data;
    const QMatrix4x4 m = placedAt(1, 2, 3);
    EXPECT_TRUE(data.setTransform(3, m, 0.0005f));
    EXPECT_FALSE(data.setTransform(3, m, 0.0005f));
    EXPECT_TRUE(data.setTransform(3, m, 0.25f)) << "another blur";
    EXPECT_EQ(data.blurInfos[3].blur, 0.25f);
    EXPECT_TRUE(data.setTransform(3, placedAt(1, 2, 4), 0.25f)) << "another matrix";
    EXPECT_TRUE(data.transforms[3] == placedAt(1, 2, 4));
    EXPECT_FALSE(data.setTransform(5, QMatrix4x4(0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0), 0.0005f))
        << "what is there at the start";
}

TEST(ShadowMapManagerTest, SetTransformBeyondTheListsIsReported)
{
    RenderData data;
    for (const int index : {-1, 32, std::numeric_limits<int>::max()})
    {
        const LogCapture log;
        EXPECT_FALSE(data.setTransform(index, placedAt(1, 2, 3), 0.5f));
        EXPECT_EQ(log.messages(QtCriticalMsg),
                  QStringList(assertionLine(QStringLiteral("index >= 0 && index < this->transforms.size() && index < "
                                                           "this->blurInfos.size()"),
                                            QStringLiteral("There is no shadow projection %1 among 32").arg(index))));
    }
    EXPECT_TRUE(data.setTransform(31, placedAt(1, 2, 3), 0.5f));
}

TEST(ShadowMapManagerTest, SetupGivesTheDefines)
{
    const QString source = QStringLiteral("#version 150\n");
    const auto expanded = [&](int flags)
    {
        GLSLMacroProcessor processor;
        ShadowMapManager::setup(&processor, flags);
        return GLSLMacroProcessor::process(source, &processor).trimmed();
    };
    const QString sizes = QStringLiteral("#version 150\n#define SHADOW_MAP_MANAGER_INFO_ARRAY_SIZE 32\n"
                                         "#define SHADOW_MAP_MANAGER_TRANSFORM_ARRAY_SIZE 32");
    const QString variance = QStringLiteral("\n#define SHADOW_MAP_MANAGER_USE_VARIANCE_MAPS 1");
    EXPECT_EQ(expanded(0), sizes);
    EXPECT_EQ(expanded(1), sizes + variance);
    EXPECT_EQ(expanded(2), sizes) << "bit 0 alone counts";
    EXPECT_EQ(expanded(-1), sizes + variance);
    const LogCapture log;
    ShadowMapManager::setup(nullptr, 1);
    EXPECT_EQ(log.texts(), QStringList());
}

TEST(ShadowMapManagerTest, TheShaderFileHasAName)
{
    EXPECT_EQ(ShadowMapManager::getShaderFile(), QStringLiteral("ShadowMapManager.glslc"));
}

// ---- lists of lights -----------------------------------------------------------------------------------------------

TEST(ShadowMapManagerTest, ANullVariantClearsAll)
{
    RenderData data;
    const auto lights = manyLights(3, Light::eSpot);
    EXPECT_TRUE(ShadowMapManager::processLights(listOf(lights), data));
    EXPECT_EQ(data.lightCount, 3);
    EXPECT_EQ(data.transformCount, 3);
    EXPECT_FALSE(ShadowMapManager::processLights(QVariant(), data));
    EXPECT_EQ(data.lightCount, 0);
    EXPECT_EQ(data.transformCount, 0);
    for (int i = 0; i < 32; ++i)
        expectInfo(data, i, 0, 0);
}

TEST(ShadowMapManagerTest, ANullVariantLooksAtNeitherCameraNorScene)
{
    RenderData data;
    const SceneBox wrong{{1, 0, 0}, {0, 0, 0}};
    const LogCapture log;
    EXPECT_FALSE(ShadowMapManager::processLights(QVariant(), data, nullptr, nullptr, &wrong));
    EXPECT_EQ(log.texts(), QStringList());
}

TEST(ShadowMapManagerTest, AnEmptyListHasNoLights)
{
    RenderData data;
    const auto lights = manyLights(2, Light::eSpot);
    ShadowMapManager::processLights(listOf(lights), data);
    EXPECT_FALSE(ShadowMapManager::processLights(QVariantList(), data)) << "without matrices nothing has changed";
    EXPECT_EQ(data.lightCount, 0);
    EXPECT_EQ(data.transformCount, 0);
    expectInfo(data, 1, 0, 0);
}

TEST(ShadowMapManagerTest, ListsOfOtherTypesAreConverted)
{
    const auto lights = manyLights(2, Light::eSpot);
    RenderData data;
    const QList<QObject*> objects = {lights[0].get(), lights[1].get()};
    EXPECT_TRUE(ShadowMapManager::processLights(QVariant::fromValue(objects), data));
    EXPECT_EQ(data.lightCount, 2);
    RenderData typed;
    const QList<Light*> own = {lights[0].get(), lights[1].get()};
    EXPECT_TRUE(ShadowMapManager::processLights(QVariant::fromValue(own), typed));
    EXPECT_EQ(typed.transformCount, 2);
}

TEST(ShadowMapManagerTest, WhatIsNoListHasNoLights)
{
    Light light;
    for (const QVariant& value : {QVariant(5), QVariant::fromValue<QObject*>(&light)})
    {
        RenderData data;
        EXPECT_FALSE(ShadowMapManager::processLights(value, data)) << value.typeName();
        EXPECT_EQ(data.lightCount, 0);
    }
}

TEST(ShadowMapManagerTest, AnEntryThatIsNoLightIsReported)
{
    QObject other;
    const QVariant kWrong[] = {QVariant(), QVariant(5), QVariant::fromValue<QObject*>(nullptr),
                               QVariant::fromValue<QObject*>(&other), QVariant::fromValue(QPointer<QObject>())};
    for (const QVariant& wrong : kWrong)
    {
        RenderData data;
        const auto first = lightOf(Light::eSpot, QMatrix4x4(), 0, 0.5f);
        const QVariantList list = {QVariant::fromValue<QObject*>(first.get()), wrong,
                                   QVariant::fromValue<QObject*>(first.get())};
        const LogCapture log;
        EXPECT_FALSE(ShadowMapManager::processLights(list, data));
        EXPECT_EQ(log.messages(),
                  QStringList(assertionLine(QStringLiteral("NULL != light"), QStringLiteral("Light 1 is NULL"))));
        EXPECT_EQ(log.messages(QtCriticalMsg).size(), 1);
        expectInfo(data, 0, 1, 0);
        expectInfo(data, 1, 0, 1);
        expectInfo(data, 2, 0, 0);
        EXPECT_EQ(data.lightCount, 0) << "counts stay";
        EXPECT_EQ(data.transformCount, 0);
    }
}

TEST(ShadowMapManagerTest, TheThirtyThirdLightIsIgnored)
{
    RenderData data;
    const auto lights = manyLights(33, Light::eSpot);
    const LogCapture log;
    EXPECT_TRUE(ShadowMapManager::processLights(listOf(lights), data));
    EXPECT_EQ(log.messages(), QStringList(QStringLiteral("More lights 33 than shadow projection supports 32. Ignoring "
                                                         "top most.")));
    EXPECT_EQ(log.messages(QtDebugMsg).size(), 1);
    EXPECT_EQ(data.lightCount, 32);
    EXPECT_EQ(data.transformCount, 32);
    for (int i = 0; i < 32; ++i)
        expectInfo(data, i, 1, i);
}

TEST(ShadowMapManagerTest, ThirtyTwoLightsAreNotTooMany)
{
    RenderData data;
    const auto lights = manyLights(32, Light::eSpot);
    const LogCapture log;
    EXPECT_TRUE(ShadowMapManager::processLights(listOf(lights), data));
    EXPECT_EQ(log.texts(), QStringList());
}

TEST(ShadowMapManagerTest, ALightWithoutShadowsHasNoProjection)
{
    RenderData data;
    const auto lights = manyLights(4, Light::eSpot);
    lights[1]->setShadowCaster(false);
    lights[2]->setOn(false);
    EXPECT_TRUE(ShadowMapManager::processLights(listOf(lights), data));
    expectInfo(data, 0, 1, 0);
    expectInfo(data, 1, 0, 1);
    expectInfo(data, 2, 0, 1);
    expectInfo(data, 3, 1, 1);
    EXPECT_EQ(data.lightCount, 4);
    EXPECT_EQ(data.transformCount, 2);
}

TEST(ShadowMapManagerTest, ALightOfAnotherTypeHasNoProjection)
{
    RenderData data;
    const auto lights = manyLights(2, Light::eSpot);
    lights[0]->setType(static_cast<Light::Type>(3));
    EXPECT_TRUE(ShadowMapManager::processLights(listOf(lights), data));
    expectInfo(data, 0, 0, 0);
    expectInfo(data, 1, 1, 0);
}

TEST(ShadowMapManagerTest, OfSixPointLightsTheSixthKeepsTwoSides)
{
    RenderData data;
    const auto lights = manyLights(6, Light::ePoint);
    const LogCapture log;
    EXPECT_TRUE(ShadowMapManager::processLights(listOf(lights), data));
    for (int i = 0; i < 5; ++i)
        expectInfo(data, i, 6, i * 6);
    expectInfo(data, 5, 2, 30);
    EXPECT_EQ(data.transformCount, 32);
    EXPECT_EQ(data.lightCount, 6);
    EXPECT_EQ(log.texts(), QStringList());
}

TEST(ShadowMapManagerTest, LightsAfterTheLastProjectionHaveNone)
{
    RenderData data;
    auto lights = manyLights(8, Light::ePoint);
    lights[6]->setType(Light::eSpot);
    lights[7]->setType(Light::eDirectional);
    const LogCapture log;
    EXPECT_TRUE(ShadowMapManager::processLights(listOf(lights), data));
    expectInfo(data, 6, 0, 32);
    expectInfo(data, 7, 0, 32);
    EXPECT_EQ(data.transformCount, 32);
    EXPECT_EQ(log.texts(), QStringList());
}

TEST(ShadowMapManagerTest, EntriesBehindTheLastLightAreZero)
{
    RenderData data;
    ShadowMapManager::processLights(listOf(manyLights(5, Light::eSpot)), data);
    expectInfo(data, 4, 1, 4);
    ShadowMapManager::processLights(listOf(manyLights(2, Light::eSpot)), data);
    for (int i = 2; i < 32; ++i)
        expectInfo(data, i, 0, 0);
}

// ---- changes -------------------------------------------------------------------------------------------------------

TEST(ShadowMapManagerTest, TheSameLightsTwiceAreNoChange)
{
    const SceneBox scene{{-5, -5, -5}, {5, 5, 5}};
    const CameraPose camera = cameraAt({0, 0, 8}, {0, 0, 0});
    for (const Light::Type type : {Light::ePoint, Light::eSpot, Light::eDirectional})
    {
        for (const bool fitted : {false, true})
        {
            RenderData data;
            const auto lights = manyLights(3, type);
            const auto process = [&]
            {
                return ShadowMapManager::processLights(listOf(lights), data, fitted ? &camera.projection : nullptr,
                                                       fitted ? &camera.view : nullptr, fitted ? &scene : nullptr);
            };
            EXPECT_TRUE(process()) << type << fitted;
            EXPECT_FALSE(process()) << type << fitted;
            lights[1]->setTransform(placedAt(1.0f, 0.125f, 0.0f));
            EXPECT_TRUE(process()) << type << fitted << ": one has moved";
            EXPECT_FALSE(process()) << type << fitted;
        }
    }
}

TEST(ShadowMapManagerTest, ALightMoreOrLessIsAChange)
{
    RenderData data;
    const auto three = manyLights(3, Light::eSpot);
    const auto two = manyLights(2, Light::eSpot);
    EXPECT_TRUE(ShadowMapManager::processLights(listOf(three), data));
    EXPECT_TRUE(ShadowMapManager::processLights(listOf(two), data)) << "the first two matrices are the same";
    EXPECT_TRUE(ShadowMapManager::processLights(listOf(three), data));
    three[2]->setOn(false);
    EXPECT_TRUE(ShadowMapManager::processLights(listOf(three), data)) << "a matrix less";
    EXPECT_TRUE(ShadowMapManager::processLights(listOf(two), data)) << "as many matrices, but a light less";
    EXPECT_FALSE(ShadowMapManager::processLights(listOf(two), data));
}

TEST(ShadowMapManagerTest, AnotherFirstProjectionIsAChange)
{
    RenderData data;
    const auto lights = manyLights(3, Light::eSpot);
    lights[1]->setOn(false);
    lights[2]->setTransform(lights[1]->transform());
    EXPECT_TRUE(ShadowMapManager::processLights(listOf(lights), data));
    lights[1]->setOn(true);
    lights[2]->setOn(false);
    EXPECT_TRUE(ShadowMapManager::processLights(listOf(lights), data))
        << "the same matrices and counts, but the third light now begins behind the second";
    expectInfo(data, 2, 0, 2);
}

// ---- projections that are not fitted -------------------------------------------------------------------------------

TEST(ShadowMapManagerTest, APointLightLooksToSixSides)
{
    struct Row
    {
        Vec ahead, up;
    };
    const Row kSides[] = {{{-1, 0, 0}, {0, 1, 0}}, {{1, 0, 0}, {0, 1, 0}}, {{0, 1, 0}, {-1, 0, 0}},
                          {{0, -1, 0}, {1, 0, 0}}, {{0, 0, 1}, {0, 1, 0}}, {{0, 0, -1}, {0, 1, 0}}};
    RenderData data;
    QMatrix4x4 place = placedAt(1, 2, 3);
    place.rotate(30, 0, 1, 0);
    const auto light = lightOf(Light::ePoint, place);
    ASSERT_TRUE(ShadowMapManager::processLights(listOf({light.get()}), data));
    expectInfo(data, 0, 6, 0);
    for (int side = 0; side < 6; ++side)
    {
        const Mat expected =
            perspectiveOf(91, 0.1, 100) * viewAlong(kSides[side].ahead, kSides[side].up) * inverse(mat(place));
        expectMatrix(data.transforms[side], expected, 1e-5, "side");
        EXPECT_EQ(data.blurInfos[side].blur, 0.0005f);
    }
}

TEST(ShadowMapManagerTest, TheSixSidesOverlap)
{
    RenderData data;
    const auto light = lightOf(Light::ePoint);
    ASSERT_TRUE(ShadowMapManager::processLights(listOf({light.get()}), data));
    Random random(91);
    for (int i = 0; i < 2000; ++i)
    {
        const Vec p = vec(random.direction() * 10.0f);
        int sides = 0;
        for (int side = 0; side < 6; ++side)
        {
            const Clip clip = mapped(mat(data.transforms[side].toMatrix()), p);
            sides += clip.w > 0 && std::fabs(clip.x) < clip.w && std::fabs(clip.y) < clip.w && clip.z < clip.w;
        }
        EXPECT_GE(sides, 1) << p.x << ", " << p.y << ", " << p.z;
    }
    // Half a degree beyond the edge between -x and -z.
    const Vec edge{-std::cos(45.3 * M_PI / 180.0), 0, -std::sin(45.3 * M_PI / 180.0)};
    int sides = 0;
    for (int side = 0; side < 6; ++side)
    {
        const Clip clip = mapped(mat(data.transforms[side].toMatrix()), edge * 10.0);
        sides += clip.w > 0 && std::fabs(clip.x) < clip.w;
    }
    EXPECT_EQ(sides, 2);
}

TEST(ShadowMapManagerTest, ASpotHasItsCone)
{
    for (const float cutoff : {0.1f, 0.5f, 0.7853982f, 1.2f})
    {
        RenderData data;
        QMatrix4x4 place = placedAt(-4, 2, 0.5f);
        place.rotate(70, 1, 2, 3);
        const auto light = lightOf(Light::eSpot, place, 0, cutoff);
        ASSERT_TRUE(ShadowMapManager::processLights(listOf({light.get()}), data));
        expectInfo(data, 0, 1, 0);
        const Mat expected = perspectiveOf(cutoff * 360.0 / M_PI, 0.1, 100) * inverse(mat(place));
        expectMatrix(data.transforms[0], expected, 1e-4, "spot");
        EXPECT_EQ(data.blurInfos[0].blur, 0.0005f);
    }
}

TEST(ShadowMapManagerTest, ADirectionalLightWithoutASceneHasAFixedBox)
{
    RenderData data;
    QMatrix4x4 place = placedAt(3, -2, 1);
    place.rotate(50, 3, 1, 2);
    const auto light = lightOf(Light::eDirectional, place, 4);
    const CameraPose camera = cameraAt({0, 0, 8}, {0, 0, 0});
    // A camera alone is no scene.
    ASSERT_TRUE(
        ShadowMapManager::processLights(listOf({light.get()}), data, &camera.projection, &camera.view, nullptr));
    expectInfo(data, 0, 1, 0);
    const Mat expected = scaling(0.25, 0.25, 1.0 / 12) * translation(0, 0, 6) * inverse(mat(place));
    expectMatrix(data.transforms[0], expected, 1e-6, "directional");
    EXPECT_EQ(data.blurInfos[0].blur, 0.0005f);
}

TEST(ShadowMapManagerTest, TheBoundsOfASceneMakeFittedProjections)
{
    const SceneBox scene{{-5, -5, -5}, {5, 5, 5}};
    const auto light = lightOf(Light::eDirectional);
    RenderData fixedBox;
    RenderData fitted;
    ASSERT_TRUE(ShadowMapManager::processLights(listOf({light.get()}), fixedBox));
    ASSERT_TRUE(ShadowMapManager::processLights(listOf({light.get()}), fitted, nullptr, nullptr, &scene));
    EXPECT_FALSE(fixedBox.transforms[0] == fitted.transforms[0].toMatrix());
}

TEST(ShadowMapManagerTest, WrongBoundsFallBackToTheFixedBox)
{
    const SceneBox wrong{{-5, 5.5f, -5}, {5, 5, 5}};
    const auto light = lightOf(Light::eDirectional);
    RenderData fixedBox;
    RenderData data;
    ASSERT_TRUE(ShadowMapManager::processLights(listOf({light.get()}), fixedBox));
    const LogCapture log;
    ASSERT_TRUE(ShadowMapManager::processLights(listOf({light.get()}), data, nullptr, nullptr, &wrong));
    EXPECT_EQ(log.messages(QtWarningMsg),
              QStringList(QStringLiteral("ShadowMapManagerCulling::setupScene() INVALID Scene Bounds")));
    EXPECT_TRUE(data.transforms[0] == fixedBox.transforms[0].toMatrix());
}

} // namespace Harrow::Vrk::Test
