// SPDX-License-Identifier: MIT
// Each picture of a material does to the drawn picture what its format says, by numbers that are reckoned here.
#include "ModelFiles.h"
#include "PbrFiles.h"
#include "ViewerRun.h"

#include <gtest/gtest.h>

#include <QJsonArray>

#include <cmath>
#include <numbers>

namespace
{

constexpr int kSide = 96;

// What the mean of a white surface is brought to in an environment.
constexpr double kMiddle = 0.42;

QJsonObject texture(int index)
{
    return {{"index", index}};
}

/// Rough, and no metal.
QJsonObject chalk(double grey)
{
    return {{"baseColorFactor", QJsonArray{grey, grey, grey, 1.0}}, {"metallicFactor", 0.0}, {"roughnessFactor", 1.0}};
}

/// A light of 1 from every direction that is on the side of `from`.
QByteArray halfEnvironment(const QVector3D& from)
{
    return environmentFile([from](const QVector3D& direction)
                           { return QVector3D::dotProduct(direction, from) > 0.0f ? 1.0f : 0.0f; });
}

QByteArray evenEnvironment()
{
    return environmentFile([](const QVector3D&) { return 1.0f; });
}

/// Draws from the front, or as `more` says.
QImage draw(const Square& square, const QByteArray& environment, const QStringList& more = {"--camera", "front"})
{
    const ModelFolder folder;
    QStringList arguments{folder.write("square.gltf", gltfFile(square)), "--size", QString("%1x%1").arg(kSide),
                          "--samples", "1"};
    if (!environment.isEmpty())
        arguments << "--env" << folder.write("around.hdr", environment);
    return drawWithViewer(arguments + more);
}

QVector3D lightAt(const QImage& picture, double x, double y)
{
    const QRgb color = picture.pixel(pixelOf(x, y, kSide));
    return QVector3D(float(shownLight(qRed(color))), float(shownLight(qGreen(color))), float(shownLight(qBlue(color))));
}

double greyAt(const QImage& picture, double x = 0.1, double y = 0.1)
{
    return double(lightAt(picture, x, y).y());
}

/// In the light of one half of the world a surface scatters by how far it turns to that half: (1 + cosine) / 2 of all.
/// Rough dielectrics mirror a few hundredths on top; the filter of the environment counts what is near to the poles for
/// a little more than it is.
void expectTurnedTo(double light, double cosine, double grey, const char* what)
{
    EXPECT_GE(light, grey * kMiddle * (1.0 + cosine) - 0.04) << what;
    EXPECT_LE(light, grey * kMiddle * (1.0 + cosine) + 0.05) << what;
}

struct Tilt
{
    QVector3D normal;
    QVector3D light;
    double cosine;
};

const float kHalf = 0.5f;
const float kRest = std::sqrt(0.75f);

} // namespace

TEST(PbrPictureTest, NormalsLeanToTheRightByRedAndUpwardsByGreen)
{
    const Tilt tilts[] = {{{kHalf, 0, kRest}, {1, 0, 0}, 0.5},   {{kHalf, 0, kRest}, {-1, 0, 0}, -0.5},
                          {{kHalf, 0, kRest}, {0, 1, 0}, 0.0},   {{0, kHalf, kRest}, {0, 1, 0}, 0.5},
                          {{0, kHalf, kRest}, {0, -1, 0}, -0.5}, {{0, kHalf, kRest}, {1, 0, 0}, 0.0},
                          {{-kHalf, 0, kRest}, {1, 0, 0}, -0.5}};
    for (const Tilt& tilt : tilts)
    {
        const Square square{.material = {{"pbrMetallicRoughness", chalk(0.6)}, {"normalTexture", texture(0)}},
                            .pictures = {normalPicture(tilt.normal)}};
        const QByteArray what = QString("normal %1 %2, light %3 %4")
                                    .arg(tilt.normal.x())
                                    .arg(tilt.normal.y())
                                    .arg(tilt.light.x())
                                    .arg(tilt.light.y())
                                    .toLatin1();
        expectTurnedTo(greyAt(draw(square, halfEnvironment(tilt.light))), tilt.cosine, 0.6, what);
    }
}

TEST(PbrPictureTest, NormalsFollowAPictureThatIsMirrored)
{
    Square square{.material = {{"pbrMetallicRoughness", chalk(0.6)}, {"normalTexture", texture(0)}},
                  .pictures = {normalPicture({kHalf, 0, kRest})},
                  .mirroredX = true};
    expectTurnedTo(greyAt(draw(square, halfEnvironment({1, 0, 0}))), -0.5, 0.6, "from right to left");
    square.mirroredX = false;
    square.mirroredY = true;
    expectTurnedTo(greyAt(draw(square, halfEnvironment({1, 0, 0}))), 0.5, 0.6, "on its head, sideways");
    square.pictures = {normalPicture({0, kHalf, kRest})};
    expectTurnedTo(greyAt(draw(square, halfEnvironment({0, 1, 0}))), -0.5, 0.6, "on its head");
}

TEST(PbrPictureTest, NormalsFollowAnInstanceThatMirrors)
{
    const Square square{.material = {{"pbrMetallicRoughness", chalk(0.6)}, {"normalTexture", texture(0)}},
                        .pictures = {normalPicture({kHalf, 0, kRest})},
                        .node = {{"scale", QJsonArray{-1, 1, 1}}}};
    expectTurnedTo(greyAt(draw(square, halfEnvironment({1, 0, 0}))), -0.5, 0.6, "mirrored");
}

TEST(PbrPictureTest, BumpsAreDentsFromBehind)
{
    QJsonObject material{{"pbrMetallicRoughness", chalk(0.6)}, {"normalTexture", texture(0)}, {"doubleSided", true}};
    const Square square{.material = material, .pictures = {normalPicture({kHalf, 0, kRest})}};
    const QStringList behind{"--azimuth", "180", "--elevation", "0"};
    expectTurnedTo(greyAt(draw(square, halfEnvironment({1, 0, 0}), behind), 0, 0), -0.5, 0.6, "from behind");
}

TEST(PbrPictureTest, TheScaleOfNormalsCountsForTheirSlope)
{
    const float steep = std::sqrt(1.0f - 0.0625f);
    const Square square{.material = {{"pbrMetallicRoughness", chalk(0.6)},
                                     {"normalTexture", QJsonObject{{"index", 0}, {"scale", 2.0}}}},
                        .pictures = {normalPicture({0.25f, 0, steep})}};
    const double cosine = 0.5 / std::hypot(0.5, double(steep));
    expectTurnedTo(greyAt(draw(square, halfEnvironment({1, 0, 0}))), cosine, 0.6, "twice the slope");
}

TEST(PbrPictureTest, GreenIsRoughnessAndBlueIsMetal)
{
    // A bright cap in front, down to a cosine of 0.8: a white surface that faces it scatters 0.36 of its light.
    const QByteArray cap =
        environmentFile([](const QVector3D& direction) { return direction.z() > 0.8f ? 1.0f : 0.0f; });
    const auto lightOf = [&](int green, int blue)
    {
        QJsonObject surface = chalk(0.9);
        surface["metallicFactor"] = 1.0;
        surface["metallicRoughnessTexture"] = texture(0);
        const Square square{.material = {{"pbrMetallicRoughness", surface}},
                            .pictures = {plainPicture(255, green, blue)}};
        return greyAt(draw(square, cap, {"--camera", "front", "--exposure", "-3"}), 0.0, 0.0);
    };
    const double mirror = lightOf(0, 255);
    const double shown = mirror / 0.9;
    const double chalky = lightOf(255, 0);
    EXPECT_NEAR(chalky, 0.9 * 0.36 * shown, 0.06) << "rough and no metal";
    EXPECT_NEAR(lightOf(0, 0) - chalky, 0.04 * shown, 0.012) << "smooth and no metal: it mirrors a twenty-fifth";
    const double rough = lightOf(255, 255);
    EXPECT_LT(rough, 0.6 * mirror) << "rough metal spreads what it mirrors";
    EXPECT_GT(rough, 0.01);
}

TEST(PbrPictureTest, FactorsMultiplyWhatThePictureSays)
{
    QJsonObject surface = chalk(0.9);
    surface["metallicRoughnessTexture"] = texture(0);
    surface["metallicFactor"] = 0.0;
    const Square mirror{.material = {{"pbrMetallicRoughness", surface}}, .pictures = {plainPicture(0, 255, 255)}};
    surface.remove("metallicRoughnessTexture");
    const Square plain{.material = {{"pbrMetallicRoughness", surface}}};
    EXPECT_LE(difference(draw(mirror, evenEnvironment()), draw(plain, evenEnvironment())).largest, 1);
}

TEST(PbrPictureTest, OcclusionTakesItsShareOfTheLightFromAllAround)
{
    const auto lightOf = [](int red, double strength)
    {
        const Square square{.material = {{"pbrMetallicRoughness", chalk(0.6)},
                                         {"occlusionTexture", QJsonObject{{"index", 0}, {"strength", strength}}}},
                            .pictures = {plainPicture(red, 255, 255)}};
        return greyAt(draw(square, evenEnvironment()));
    };
    const double open = lightOf(255, 1.0);
    EXPECT_NEAR(open, 0.6 * kMiddle, 0.04);
    EXPECT_NEAR(lightOf(128, 1.0) / open, 128.0 / 255.0, 0.02) << "numbers, not colours: gamma would give a fifth";
    EXPECT_NEAR(lightOf(128, 0.5) / open, 0.5 + 64.0 / 255.0, 0.02) << "half of it";
    EXPECT_NEAR(lightOf(0, 1.0), 0.0, 0.002);
}

TEST(PbrPictureTest, EmissionAddsWhereNoLightArrives)
{
    const QJsonObject dark{{"index", 0}};
    Square square{.material = {{"pbrMetallicRoughness", chalk(0.6)},
                               {"occlusionTexture", dark},
                               {"emissiveFactor", QJsonArray{0.4, 0.1, 0.0}}},
                  .pictures = {plainPicture(0, 0, 0), plainPicture(255, 188, 255)}};
    QVector3D light = lightAt(draw(square, evenEnvironment()), 0.1, 0.1);
    EXPECT_NEAR(light.x(), 0.4f, 0.01f);
    EXPECT_NEAR(light.y(), 0.1f, 0.005f);
    EXPECT_NEAR(light.z(), 0.0f, 0.001f);
    square.material["emissiveTexture"] = texture(1);
    square.material["emissiveFactor"] = QJsonArray{0.4, 0.4, 0.0};
    light = lightAt(draw(square, evenEnvironment()), 0.1, 0.1);
    EXPECT_NEAR(light.x(), 0.4f, 0.01f);
    EXPECT_NEAR(light.y(), 0.4f * 0.5029f, 0.01f) << "188 of sRGB are half of the light";
}

TEST(PbrPictureTest, AStrengthOfEmissionMultipliesInBothKindsOfFile)
{
    const Square square{.material = {{"pbrMetallicRoughness", chalk(0.0)},
                                     {"occlusionTexture", texture(0)},
                                     {"emissiveFactor", QJsonArray{0.1, 0.05, 0.0}},
                                     {"extensions", QJsonObject{{"KHR_materials_emissive_strength",
                                                                 QJsonObject{{"emissiveStrength", 5.0}}}}}},
                        .pictures = {plainPicture(0, 0, 0)},
                        .root = {{"extensionsUsed", QJsonArray{"KHR_materials_emissive_strength"}}}};
    const ModelFolder folder;
    for (const QString& path :
         {folder.write("square.gltf", gltfFile(square)), folder.write("square.glb", glbFile(square))})
    {
        const QImage picture = drawWithViewer({path, "--env", folder.write("even.hdr", evenEnvironment()), "--size",
                                               QString("%1x%1").arg(kSide), "--samples", "1", "--camera", "front"});
        EXPECT_NEAR(lightAt(picture, 0.1, 0.1).x(), 0.5f, 0.01f) << path.toStdString();
        EXPECT_NEAR(lightAt(picture, 0.1, 0.1).y(), 0.25f, 0.01f) << path.toStdString();
    }
}

TEST(PbrPictureTest, WhatIsUnlitShowsItsColourInAnyLight)
{
    QJsonObject surface = chalk(1.0);
    surface["baseColorFactor"] = QJsonArray{1.0, 0.5, 0.1, 1.0};
    const Square square{.material = {{"pbrMetallicRoughness", surface},
                                     {"extensions", QJsonObject{{"KHR_materials_unlit", QJsonObject()}}}},
                        .root = {{"extensionsUsed", QJsonArray{"KHR_materials_unlit"}}}};
    for (const QByteArray& environment : {QByteArray(), halfEnvironment({0, 0, -1})})
    {
        const QRgb color = draw(square, environment).pixel(pixelOf(0, 0, kSide));
        EXPECT_NEAR(qRed(color), 255, 1);
        EXPECT_NEAR(qGreen(color), 255 * std::pow(0.5, 1 / 2.2), 1.5);
        EXPECT_NEAR(qBlue(color), 255 * std::pow(0.1, 1 / 2.2), 1.5);
    }
}

// Qt reads a grey file as one byte a texel, and others with 16 bits a channel.
TEST(PbrPictureTest, PicturesInsideOfTheFileShowWhatTheyHoldInWhateverFormTheyAre)
{
    for (const QImage::Format format : {QImage::Format_RGB32, QImage::Format_Grayscale8, QImage::Format_Grayscale16,
                                        QImage::Format_RGBA64, QImage::Format_RGBA8888})
    {
        QJsonObject surface = chalk(1.0);
        surface["baseColorTexture"] = texture(0);
        const Square square{.material = {{"pbrMetallicRoughness", surface},
                                         {"extensions", QJsonObject{{"KHR_materials_unlit", QJsonObject()}}}},
                            .pictures = {plainPicture(128, 128, 128).convertToFormat(format)},
                            .root = {{"extensionsUsed", QJsonArray{"KHR_materials_unlit"}}}};
        const QRgb color = draw(square, {}).pixel(pixelOf(0, 0, kSide));
        for (const int channel : {qRed(color), qGreen(color), qBlue(color)})
            EXPECT_NEAR(channel, 128, 2) << format;
    }
}

TEST(PbrPictureTest, HolesAreWhereColourAndPictureTogetherFallBelowTheCutoff)
{
    const auto isSeen = [](double factor, int alpha)
    {
        QImage picture(4, 4, QImage::Format_ARGB32);
        picture.fill(qRgba(255, 255, 255, alpha));
        QJsonObject surface = chalk(1.0);
        surface["baseColorFactor"] = QJsonArray{1.0, 0.0, 0.0, factor};
        surface["baseColorTexture"] = texture(0);
        const Square square{.material = {{"pbrMetallicRoughness", surface},
                                         {"alphaMode", "MASK"},
                                         {"extensions", QJsonObject{{"KHR_materials_unlit", QJsonObject()}}}},
                            .pictures = {picture},
                            .root = {{"extensionsUsed", QJsonArray{"KHR_materials_unlit"}}}};
        return qRed(draw(square, {}).pixel(pixelOf(0, 0, kSide))) == 255;
    };
    EXPECT_TRUE(isSeen(1.0, 200));
    EXPECT_FALSE(isSeen(0.3, 255)) << "the factor alone";
    EXPECT_FALSE(isSeen(1.0, 100)) << "the picture alone";
    EXPECT_FALSE(isSeen(0.6, 200)) << "0.6 times 0.78";
}

namespace
{

struct Transform
{
    const char* name;
    double offset[2];
    double rotation;
    double scale[2];
};

/// The colour of `quarterPicture` at a place that repeats; y downwards.
QRgb quarterAt(double x, double y)
{
    const bool right = x - std::floor(x) >= 0.5;
    const bool below = y - std::floor(y) >= 0.5;
    return below ? (right ? qRgb(255, 255, 255) : qRgb(0, 0, 255)) : (right ? qRgb(0, 255, 0) : qRgb(255, 0, 0));
}

/// Whether the place is too near to an edge between colours to say.
bool isOnEdge(double x)
{
    const double part = 2.0 * x - std::floor(2.0 * x);
    return part < 0.12 || part > 0.88;
}

} // namespace

// Places are scaled, then turned so that the picture turns clockwise, then moved.
TEST(PbrPictureTest, TransformsMovePicturesAsTheirExtensionSays)
{
    const Transform transforms[] = {{"none", {0, 0}, 0, {1, 1}},
                                    {"moved", {0.5, 0.25}, 0, {1, 1}},
                                    {"scaled", {0, 0}, 0, {0.5, 2}},
                                    {"turned", {0, 0}, 0.5 * std::numbers::pi, {1, 1}},
                                    {"all", {-0.2, -0.1}, 0.3, {1.5, 0.8}}};
    for (const Transform& transform : transforms)
    {
        const QJsonObject words{{"offset", QJsonArray{transform.offset[0], transform.offset[1]}},
                                {"rotation", transform.rotation},
                                {"scale", QJsonArray{transform.scale[0], transform.scale[1]}}};
        QJsonObject surface = chalk(1.0);
        surface["baseColorTexture"] =
            QJsonObject{{"index", 0}, {"extensions", QJsonObject{{"KHR_texture_transform", words}}}};
        const Square square{.material = {{"pbrMetallicRoughness", surface},
                                         {"extensions", QJsonObject{{"KHR_materials_unlit", QJsonObject()}}}},
                            .pictures = {quarterPicture()},
                            .root = {{"extensionsUsed", QJsonArray{"KHR_materials_unlit", "KHR_texture_transform"}}}};
        const QImage picture = draw(square, {});
        int places = 0;
        for (double y = -0.9; y < 1.0; y += 0.2)
            for (double x = -0.9; x < 1.0; x += 0.2)
            {
                const double u = transform.scale[0] * (0.5 + 0.5 * x);
                const double v = transform.scale[1] * (0.5 - 0.5 * y);
                const double c = std::cos(transform.rotation);
                const double s = std::sin(transform.rotation);
                const double right = c * u + s * v + transform.offset[0];
                const double down = -s * u + c * v + transform.offset[1];
                if (isOnEdge(right) || isOnEdge(down))
                    continue;
                ++places;
                EXPECT_EQ(picture.pixel(pixelOf(x, y, kSide)), quarterAt(right, down))
                    << transform.name << " at " << x << " " << y;
            }
        EXPECT_GT(places, 30) << transform.name;
    }
}

TEST(PbrPictureTest, APictureCanLieByTheSecondCoordinates)
{
    QJsonObject surface = chalk(0.0);
    surface["baseColorTexture"] = texture(0);
    const Square square{.material = {{"pbrMetallicRoughness", surface},
                                     {"occlusionTexture", texture(1)},
                                     {"emissiveFactor", QJsonArray{0.5, 0.5, 0.5}},
                                     {"emissiveTexture", QJsonObject{{"index", 2}, {"texCoord", 1}}}},
                        .pictures = {plainPicture(255, 255, 255), plainPicture(0, 0, 0), quarterPicture()}};
    const QImage picture = draw(square, evenEnvironment());
    EXPECT_GT(lightAt(picture, -0.5, 0.5).y(), 0.45f) << "green on the left";
    EXPECT_LT(lightAt(picture, -0.5, 0.5).x(), 0.01f);
    EXPECT_GT(lightAt(picture, 0.5, 0.5).x(), 0.45f) << "red on the right";
    EXPECT_LT(lightAt(picture, 0.5, 0.5).y(), 0.01f);
}

namespace
{

/// Five pictures, none like another.
Square fullSquare()
{
    QJsonObject surface{{"baseColorTexture", texture(0)}, {"metallicRoughnessTexture", texture(2)}};
    QImage bumps(64, 64, QImage::Format_RGB32);
    QImage finish(64, 64, QImage::Format_RGB32);
    for (int y = 0; y < 64; ++y)
        for (int x = 0; x < 64; ++x)
        {
            bumps.setPixel(x, y, qRgb(128 + int(60 * std::sin(0.4 * x)), 128 + int(60 * std::cos(0.3 * y)), 230));
            finish.setPixel(x, y, qRgb(255, 40 + 3 * x, 255 - 3 * y));
        }
    return {.material = {{"pbrMetallicRoughness", surface},
                         {"normalTexture", texture(1)},
                         {"occlusionTexture", QJsonObject{{"index", 3}, {"texCoord", 1}}},
                         {"emissiveTexture", texture(4)},
                         {"emissiveFactor", QJsonArray{0.3, 0.2, 0.1}}},
            .pictures = {quarterPicture(), bumps, finish, plainPicture(200, 0, 0), plainPicture(90, 160, 220)}};
}

} // namespace

TEST(PbrPictureTest, ThePictureIsTheSameByEveryManagerAndCarrier)
{
    const ModelFolder folder;
    const QString model = folder.write("square.gltf", gltfFile(fullSquare()));
    const QString around = folder.write("around.hdr", halfEnvironment({0.6f, 0.8f, 0}));
    const QStringList common{model,   "--env",     around, "--shadows", "--size",
                             "96x96", "--samples", "1",    "--camera",  "front"};
    const QImage wanted = drawWithViewer(common);
    ASSERT_FALSE(wanted.isNull());
    int drawn = 0;
    for (const char* manager : {"sampler", "array2d", "array2d-bindless", "bindless"})
        for (const char* carrier : {"ubo", "uniform", "buffer-texture", "texture", "ssbo"})
        {
            const QStringList roads{"--manager", manager, "--carrier", carrier, "--output", folder.path("out.png")};
            const ViewerRun run = runViewer(common + roads);
            ASSERT_TRUE(run.ended);
            if (run.exitCode != 0)
            {
                EXPECT_TRUE(run.errors.contains("this driver has no")) << manager << carrier << run.errors.constData();
                continue;
            }
            ++drawn;
            EXPECT_FALSE(run.errors.contains("Rendering will be incorrect")) << run.errors.constData();
            const QImage picture = QImage(folder.path("out.png")).convertToFormat(QImage::Format_RGB32);
            EXPECT_LE(difference(picture, wanted).largest, 2) << manager << " " << carrier;
        }
    EXPECT_GE(drawn, 8) << "the sampler and array managers with four carriers are there on every driver";
}

TEST(PbrPictureTest, APictureThatIsMissingIsToldAndLeftOut)
{
    for (const char* slot : {"normalTexture", "occlusionTexture", "emissiveTexture", "metallicRoughnessTexture"})
    {
        const ModelFolder folder;
        QJsonObject surface = chalk(0.6);
        QJsonObject material{{"pbrMetallicRoughness", surface}};
        const Square plain{.material = material};
        if (QByteArray(slot) == "metallicRoughnessTexture")
            surface[slot] = texture(0);
        else
            material[slot] = texture(0);
        material["pbrMetallicRoughness"] = surface;
        const Square square{.material = material,
                            .pictures = {plainPicture(0, 0, 0)},
                            .root = {{"images", QJsonArray{QJsonObject{{"uri", "nowhere.png"}}}}}};
        const QString path = folder.write("square.gltf", gltfFile(square));
        const ViewerRun run = runViewer(
            {path, "--size", "96x96", "--samples", "1", "--camera", "front", "--output", folder.path("out.png")});
        EXPECT_EQ(run.exitCode, 0) << run.errors.constData();
        EXPECT_EQ(run.errors.count("nowhere.png"), 1) << slot << ": " << run.errors.constData();
        const QImage picture = QImage(folder.path("out.png")).convertToFormat(QImage::Format_RGB32);
        EXPECT_LE(difference(picture, draw(plain, {})).largest, 1) << slot;
    }
}

TEST(PbrPictureTest, ATextureThatIsNotThereIsOneLineAndAFailure)
{
    const ModelFolder folder;
    for (const char* slot : {"normalTexture", "occlusionTexture", "emissiveTexture"})
    {
        const Square square{.material = {{"pbrMetallicRoughness", chalk(0.6)}, {slot, texture(7)}},
                            .pictures = {plainPicture(0, 0, 0)}};
        const ViewerRun run =
            runViewer({folder.write("square.gltf", gltfFile(square)), "--output", folder.path("out.png")});
        EXPECT_EQ(run.exitCode, 1) << slot;
        EXPECT_EQ(run.errors.count('\n'), 1) << run.errors.constData();
    }
}

TEST(PbrPictureTest, FactorsThatAreNoNumbersCountAsNone)
{
    const QJsonObject material{{"pbrMetallicRoughness", chalk(0.6)},
                               {"normalTexture", QJsonObject{{"index", 0}, {"scale", 1e300}}},
                               {"emissiveFactor", QJsonArray{1e300, -1.0, 0.0}}};
    const Square square{.material = material, .pictures = {normalPicture({0, 0, 1})}};
    const Square plain{.material = {{"pbrMetallicRoughness", chalk(0.6)}}};
    EXPECT_LE(difference(draw(square, evenEnvironment()), draw(plain, evenEnvironment())).largest, 3);
}
