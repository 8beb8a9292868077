// SPDX-License-Identifier: MIT
// Lights of a model's file, on a rough square without light from all around: what arrives is reckoned here.
#include "ModelFiles.h"
#include "PbrFiles.h"
#include "SceneLights.h"
#include "ViewerRun.h"

#include <gtest/gtest.h>

#include <QJsonArray>

#include <cmath>
#include <limits>

using namespace vrkview;

namespace
{

constexpr int kSide = 96;
constexpr double kGrey = 0.4;

// What all lights of a file do together in the middle of the model.
constexpr double kMiddle = 1.2;

/// A light node that shines along -z, towards the square.
Square litSquare(const QJsonObject& light, double distance)
{
    const QJsonObject surface{
        {"baseColorFactor", QJsonArray{kGrey, kGrey, kGrey, 1.0}}, {"metallicFactor", 0.0}, {"roughnessFactor", 1.0}};
    const QJsonObject lights{{"lights", QJsonArray{light}}};
    return {.material = {{"pbrMetallicRoughness", surface}, {"occlusionTexture", QJsonObject{{"index", 0}}}},
            .pictures = {plainPicture(0, 0, 0)},
            .more = {QJsonObject{{"name", "lamp"},
                                 {"translation", QJsonArray{0, 0, distance}},
                                 {"extensions", QJsonObject{{"KHR_lights_punctual", QJsonObject{{"light", 0}}}}}}},
            .root = {{"extensionsUsed", QJsonArray{"KHR_lights_punctual"}},
                     {"extensions", QJsonObject{{"KHR_lights_punctual", lights}}}}};
}

QImage draw(const Square& square, const QStringList& more = {"--shadows"})
{
    const ModelFolder folder;
    return drawWithViewer(QStringList{folder.write("square.gltf", gltfFile(square)), "--camera", "front", "--size",
                                      "96x96", "--samples", "1"} +
                          more);
}

double lightAt(const QImage& picture, double x, double y)
{
    return shownLight(qGreen(picture.pixel(pixelOf(x, y, kSide))));
}

/// What a rough dielectric shows of light of 1 at a right angle: what is left to scatter, and a little that it mirrors.
double shownOf(double light)
{
    return light * (0.96 * kGrey + 0.01);
}

} // namespace

TEST(FileLightsTest, ADirectionalLightIsTheSameEverywhereAndOcclusionDoesNotDarkenIt)
{
    const QImage picture = draw(litSquare({{"type", "directional"}, {"intensity", 3.0}}, 5.0));
    for (const double x : {-0.8, 0.0, 0.8})
        EXPECT_NEAR(lightAt(picture, x, 0.1), shownOf(kMiddle), 0.02) << x;
}

TEST(FileLightsTest, APointFadesWithTheSquareOfTheDistance)
{
    const QImage picture = draw(litSquare({{"type", "point"}, {"intensity", 700.0}}, 1.0));
    for (const double x : {0.05, 0.3, 0.6, 0.9})
    {
        const double squared = 1.0 + x * x;
        EXPECT_NEAR(lightAt(picture, x, 0.0), shownOf(kMiddle / (squared * std::sqrt(squared))), 0.02) << x;
    }
}

TEST(FileLightsTest, ASpotFadesBetweenItsTwoCones)
{
    const QJsonObject cones{{"innerConeAngle", 0.2}, {"outerConeAngle", 0.4}};
    const QImage picture = draw(litSquare({{"type", "spot"}, {"intensity", 10.0}, {"spot", cones}}, 2.0));
    for (const double x : {0.05, 0.3, 0.5, 0.6, 0.7, 0.95})
    {
        const double place = pixelOf(x, 0.0, kSide).x() + 0.5;
        const double across = (2.0 * place / kSide - 1.0) * 3.0 * std::tan(0.4);
        const double cosine = 2.0 / std::hypot(2.0, across);
        const double part = (cosine - std::cos(0.4)) / (std::cos(0.2) - std::cos(0.4));
        const double cone = std::pow(std::min(std::max(part, 0.0), 1.0), 2.0);
        EXPECT_NEAR(lightAt(picture, x, 0.0), shownOf(kMiddle * cone * cosine * cosine * cosine), 0.025) << x;
    }
}

TEST(FileLightsTest, ColoursAreTheirsAndANodesTurnTurnsThem)
{
    Square square = litSquare({{"type", "directional"}, {"intensity", 3.0}, {"color", QJsonArray{1.0, 0.0, 0.0}}}, 5.0);
    QImage picture = draw(square);
    const QRgb color = picture.pixel(pixelOf(0.1, 0.1, kSide));
    EXPECT_GT(qRed(color), 150);
    EXPECT_EQ(qGreen(color), 0);
    square.more[0]["rotation"] = QJsonArray{0.0, 1.0, 0.0, 0.0}; // half a turn: it shines on the other side
    picture = draw(square);
    EXPECT_EQ(qRed(picture.pixel(pixelOf(0.1, 0.1, kSide))), 0);
}

TEST(FileLightsTest, OtherLightsCanBeChosenAndNoShadowsLeavesThemOut)
{
    const Square square = litSquare({{"type", "directional"}, {"color", QJsonArray{1.0, 0.0, 0.0}}}, 5.0);
    EXPECT_GT(qGreen(draw(square, {"--lights", "sun"}).pixel(pixelOf(0.1, 0.1, kSide))), 40) << "the viewer's own sun";
    EXPECT_GT(qGreen(draw(square, {"--no-shadows"}).pixel(pixelOf(0.1, 0.1, kSide))), 40) << "beside the camera";
}

TEST(FileLightsTest, WhatStandsBetweenCastsAShadow)
{
    Square square = litSquare({{"type", "directional"}, {"intensity", 3.0}}, 5.0);
    // A small square on the side of the light and out of the camera's way is not possible; so a slanted light.
    square.more[0]["rotation"] = QJsonArray{0.0, 0.3826834, 0.0, 0.9238795}; // from the right at 45 degrees
    square.more.append(
        QJsonObject{{"mesh", 0}, {"translation", QJsonArray{0.5, 0.0, 0.5}}, {"scale", QJsonArray{0.2, 0.2, 0.2}}});
    const QImage picture = draw(square);
    EXPECT_NEAR(lightAt(picture, 0.0, 0.0), 0.0, 0.01) << "in the shadow of the small square";
    EXPECT_NEAR(lightAt(picture, -0.5, 0.0), shownOf(kMiddle * std::sqrt(0.5)), 0.05) << "beside it";
}

TEST(FileLightsTest, LightsWithoutUsableNumbersAreToldAndLeftOut)
{
    const ModelFolder folder;
    const Square square = litSquare({{"type", "point"}, {"intensity", 1e300}}, 1.0);
    const ViewerRun run = runViewer({folder.write("square.gltf", gltfFile(square)), "--shadows", "--size", "64x64",
                                     "--samples", "1", "--output", folder.path("out.png")});
    EXPECT_EQ(run.exitCode, 0);
    EXPECT_EQ(run.errors.count("lights without usable numbers: 1"), 1) << run.errors.constData();
}

TEST(FileLightsTest, TogetherTheyAreAsBrightAsTheOthersAndKeepTheirRatio)
{
    Model model;
    model.nodes.push_back({"", -1, QMatrix4x4()});
    QMatrix4x4 above;
    above.translate(0.0f, 0.0f, 10.0f);
    model.nodes.push_back({"", 0, above});
    model.lights.push_back({"sun", 0, FileLight::Kind::Directional, {2, 2, 2}});
    model.lights.push_back({"lamp", 1, FileLight::Kind::Point, {100, 100, 100}}); // 1 at a distance of 10
    Bounds bounds;
    bounds.add({-1, -1, -1});
    bounds.add({1, 1, 1});
    const std::vector<SceneLight> lights = fileLights(model, QMatrix4x4(), bounds);
    ASSERT_EQ(lights.size(), 2u);
    EXPECT_NEAR(lights[0].color.x(), 0.8f, 1e-4f);
    EXPECT_NEAR(lights[1].color.x(), 0.4f, 1e-4f);
    EXPECT_NEAR(lights[1].reach, 10.0f, 1e-4f);

    // Everything at twice the size, as the scene may have it, leaves the light what it was.
    QMatrix4x4 twice;
    twice.scale(2.0f);
    Bounds wide;
    wide.add({-2, -2, -2});
    wide.add({2, 2, 2});
    const std::vector<SceneLight> larger = fileLights(model, twice, wide);
    ASSERT_EQ(larger.size(), 2u);
    EXPECT_NEAR(larger[1].color.x(), 0.4f, 1e-4f);
    EXPECT_NEAR(larger[1].reach, 20.0f, 1e-4f);
}

TEST(FileLightsTest, NoMoreThanThereIsRoomFor)
{
    Model model;
    model.nodes.push_back({"", -1, QMatrix4x4()});
    for (int i = 0; i < kMostLights + 5; ++i)
        model.lights.push_back({"sun", 0, FileLight::Kind::Directional, {1, 1, 1}});
    Bounds bounds;
    bounds.add({0, 0, 0});
    bounds.add({1, 1, 1});
    EXPECT_EQ(int(fileLights(model, QMatrix4x4(), bounds).size()), kMostLights);
}

// Once in the life of the program that tells it.
TEST(FileLightsTest, WhatShadowMapsHaveNoLayersForIsLeftOutAndThatIsToldOnce)
{
    Bounds bounds;
    bounds.add({0, 0, 0});
    bounds.add({1, 1, 1});
    SceneLight sun;
    sun.kind = SceneLight::Kind::Sun;
    const std::vector<SceneLight> suns(40, sun);
    const auto heard = [&bounds, &suns](int cascades, std::size_t kept)
    {
        testing::internal::CaptureStderr();
        EXPECT_EQ(makeLights({LightSet::All, 0, cascades}, bounds, suns).size(), kept);
        return testing::internal::GetCapturedStderr();
    };
    const std::string end = " of the file's lights are left out: shadow maps have 32 layers\n";
    EXPECT_EQ(heard(1, 32), "vrkview: 8" + end);
    EXPECT_EQ(heard(1, 32), "") << "as the scene is built anew";
    EXPECT_EQ(heard(4, 8), "vrkview: 32" + end) << "which is something else";
    EXPECT_EQ(heard(4, 8), "");
}
