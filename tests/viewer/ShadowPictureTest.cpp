// SPDX-License-Identifier: MIT
// Shadows in the viewer's pictures beside those of a ray caster: a floor with a box above it and a sphere on it, for
// each kind of light, both kinds of maps, and more lights than can cast shadows.
#include "ModelFiles.h"
#include "ReferencePicture.h"
#include "ViewerRun.h"

#include <gtest/gtest.h>

#include <QFileInfo>
#include <QRegularExpression>

#include <algorithm>
#include <cmath>
#include <limits>
#include <numbers>
#include <utility>

using namespace reference;

namespace
{

const QSize kSize(240, 160);
constexpr double kElevation = 38.0;

struct Box
{
    Vec minimum;
    Vec maximum;
};

constexpr Box kFloor = {{-1.0, -0.1, -1.0}, {1.0, 0.0, 1.0}};
constexpr Box kBox = {{-0.25, 0.15, -0.2}, {0.15, 0.5, 0.2}};
constexpr Vec kBallCenter = {0.5, 0.2, 0.35};
constexpr double kBallRadius = 0.2;
const Vec kMiddle = {0.0, 0.2, 0.0};
const double kRadius = std::sqrt(1.0 + 0.3 * 0.3 + 1.0);

QVector3D qt(const Vec& v)
{
    return {float(v.x), float(v.y), float(v.z)};
}

std::optional<Hit> boxHit(const Box& box, const Vec& origin, const Vec& direction)
{
    double enter = 0.0;
    double leave = std::numeric_limits<double>::infinity();
    Vec normal;
    const double from[] = {origin.x, origin.y, origin.z};
    const double along[] = {direction.x, direction.y, direction.z};
    const double low[] = {box.minimum.x, box.minimum.y, box.minimum.z};
    const double high[] = {box.maximum.x, box.maximum.y, box.maximum.z};
    for (int axis = 0; axis < 3; ++axis)
    {
        if (along[axis] == 0.0)
        {
            if (from[axis] < low[axis] || from[axis] > high[axis])
                return std::nullopt;
            continue;
        }
        const double first = ((along[axis] > 0.0 ? low[axis] : high[axis]) - from[axis]) / along[axis];
        const double second = ((along[axis] > 0.0 ? high[axis] : low[axis]) - from[axis]) / along[axis];
        if (first > enter)
        {
            enter = first;
            const double side = along[axis] > 0.0 ? -1.0 : 1.0;
            normal = {axis == 0 ? side : 0.0, axis == 1 ? side : 0.0, axis == 2 ? side : 0.0};
        }
        leave = std::min(leave, second);
    }
    if (enter <= 0.0 || enter >= leave)
        return std::nullopt;
    return Hit{enter, normal};
}

std::optional<Hit> ballHit(const Vec& origin, const Vec& direction)
{
    const Vec from = origin - kBallCenter;
    const double b = dot(from, direction);
    const double discriminant = b * b - dot(from, from) + kBallRadius * kBallRadius;
    if (discriminant <= 0.0)
        return std::nullopt;
    const double distance = -b - std::sqrt(discriminant);
    if (distance <= 0.0)
        return std::nullopt;
    return Hit{distance, (1.0 / kBallRadius) * (from + distance * direction)};
}

std::optional<Hit> scene(const Vec& origin, const Vec& direction)
{
    std::optional<Hit> nearest;
    for (const std::optional<Hit>& hit :
         {boxHit(kFloor, origin, direction), boxHit(kBox, origin, direction), ballHit(origin, direction)})
        if (hit && (!nearest || hit->distance < nearest->distance))
            nearest = hit;
    return nearest;
}

QString writeScene(const ModelFolder& folder)
{
    TriangleSoup soup = boxSoup(qt(kFloor.minimum), qt(kFloor.maximum));
    append(soup, boxSoup(qt(kBox.minimum), qt(kBox.maximum)));
    append(soup, sphereSoup(qt(kBallCenter), float(kBallRadius), 120));
    return folder.write("scene.gltf", gltfFile(soup, {QMatrix4x4()}, {0.7f, 0.6f, 0.5f}, 1.0f));
}

Camera cameraAt(double azimuth)
{
    const auto support = [](const Vec& d)
    {
        double most = dot(kBallCenter, d) + kBallRadius * length(d);
        for (const Box& box : {kFloor, kBox})
            most = std::max(most, std::max(d.x * box.minimum.x, d.x * box.maximum.x) +
                                      std::max(d.y * box.minimum.y, d.y * box.maximum.y) +
                                      std::max(d.z * box.minimum.z, d.z * box.maximum.z));
        return most;
    };
    return frame(azimuth, kElevation, double(kSize.width()) / kSize.height(), support, kMiddle);
}

// ---- the viewer's lights, from their definition --------------------------------------------------------------------

Light sun()
{
    return {Light::Kind::Sun, kMiddle, unit({0.55, -0.70, -0.40}), {0.84, 0.75, 0.62}};
}

Light spotAt(const Vec& place, double cutoff, const Vec& color)
{
    const Vec way = -kRadius * place;
    return {Light::Kind::Spot, kMiddle - way, unit(way), color, cutoff, length(way)};
}

Light spot()
{
    return spotAt({0.95, 1.0, 0.75}, 0.42, {0.20, 0.25, 0.34});
}

Light point()
{
    return {Light::Kind::Point, kMiddle + kRadius * Vec{-0.12, 0.12, 0.36}, {}, {0.42, 0.22, 0.09}, 0.0,
            0.35 * kRadius};
}

constexpr int kMostShadows = 32;

std::vector<Light> ring(int count)
{
    std::vector<Light> lights;
    for (int i = 0; i < count; ++i)
    {
        const double angle = 2.0 * std::numbers::pi * i / count;
        const auto wheel = [angle](double turn) { return 0.6 + 0.4 * std::cos(angle - 2.0 * std::numbers::pi * turn); };
        lights.push_back(spotAt({1.05 * std::cos(angle), 0.85, -1.05 * std::sin(angle)}, 0.55,
                                (2.4 / count) * Vec{wheel(0.0), wheel(1.0 / 3.0), wheel(2.0 / 3.0)}));
        lights.back().castsShadow = i < kMostShadows;
    }
    return lights;
}

// ---- comparing -----------------------------------------------------------------------------------------------------

/// Of what is seen, this share may be off: along shadows' edges, which the viewer makes soft.
constexpr double kMostWrong = 0.005;
constexpr double kMostMean = 0.6; // steps of 255

void expectShadows(const QStringList& arguments, const std::vector<Light>& lights, const char* name,
                   double azimuth = 33.0)
{
    const ModelFolder folder;
    const QImage picture = drawWithViewer(
        QStringList{writeScene(folder), "--size", QString("%1x%2").arg(kSize.width()).arg(kSize.height()), "--azimuth",
                    QString::number(azimuth), "--elevation", QString::number(kElevation)} +
        arguments);
    ASSERT_EQ(picture.size(), kSize);
    const Comparison comparison =
        compare(picture, draw(kSize, 4, cameraAt(azimuth), scene, {{0.7, 0.6, 0.5}, 1.0, 0.0}, lights));
    const double wrong = double(comparison.wrongInside) / comparison.inside;
    std::printf("%s: of %d pixels %.2f %% off; mean inside %.3f, of all %.3f (steps of 255)\n", name, comparison.inside,
                100.0 * wrong, comparison.meanInside, comparison.mean);
    EXPECT_LE(wrong, kMostWrong) << name;
    EXPECT_LE(comparison.meanInside, kMostMean) << name;
    EXPECT_GT(comparison.inside, kSize.width() * kSize.height() * 3 / 5) << name;
}

QString errorsOf(const QStringList& arguments)
{
    const ModelFolder folder;
    const ViewerRun run =
        runViewer(arguments + QStringList{"--size", "64x64", "--samples", "1", "--output", folder.path("out.png")});
    EXPECT_EQ(run.exitCode, 0) << run.errors.constData();
    return QString::fromUtf8(run.errors);
}

} // namespace

TEST(ShadowPictureTest, TheSunsShadowsLieWhereRaysSaySo)
{
    expectShadows({"--lights", "sun"}, {sun()}, "sun");
}

TEST(ShadowPictureTest, TheSunsShadowsAreTheSameForAnyNumberOfCascades)
{
    for (const char* count : {"1", "2", "8"})
        expectShadows({"--lights", "sun", "--csm", count}, {sun()}, count);
}

TEST(ShadowPictureTest, TheSunsShadowsStayWhereverTheCameraStands)
{
    for (const double azimuth : {0.0, 97.0, 181.0, 263.0})
        expectShadows({"--lights", "sun", "--samples", "4"}, {sun()}, "turned", azimuth);
}

TEST(ShadowPictureTest, ASpotsShadowsLieWhereRaysSaySo)
{
    expectShadows({"--lights", "spot"}, {spot()}, "spot");
}

TEST(ShadowPictureTest, APointsShadowsCrossTheSidesOfItsCubeWithoutAGap)
{
    expectShadows({"--lights", "point"}, {point()}, "point");
    expectShadows({"--lights", "point", "--samples", "4"}, {point()}, "point, from behind", 200.0);
}

TEST(ShadowPictureTest, AllThreeKindsOfLightsTogether)
{
    expectShadows({"--shadows"}, {sun(), spot(), point()}, "all");
}

TEST(ShadowPictureTest, VarianceMapsThrowTheSameShadowsWithSofterEdges)
{
    expectShadows({"--lights", "sun", "--shadow-maps", "variance"}, {sun()}, "variance, sun");
    expectShadows({"--lights", "spot", "--shadow-maps", "variance"}, {spot()}, "variance, spot");
}

TEST(ShadowPictureTest, OfThirtyThreeLightsTheLastCastsNoShadow)
{
    expectShadows({"--lights", "33"}, ring(33), "33 lights");
    std::vector<Light> allShadowed = ring(33);
    allShadowed.back().castsShadow = true;
    const auto withLast = draw(kSize, 1, cameraAt(33.0), scene, {{0.7, 0.6, 0.5}, 1.0, 0.0}, allShadowed);
    const auto withoutLast = draw(kSize, 1, cameraAt(33.0), scene, {{0.7, 0.6, 0.5}, 1.0, 0.0}, ring(33));
    double largest = 0.0;
    for (std::size_t i = 0; i < withLast.size(); ++i)
        largest = std::max(largest, withoutLast[i].value.x - withLast[i].value.x);
    EXPECT_GT(largest, 1.0) << "or the picture would not tell";
}

TEST(ShadowPictureTest, LayersOfAStillSceneAreRenderedOnce)
{
    const QString text = errorsOf({"--builtin", "--stats"});
    EXPECT_TRUE(text.contains(QRegularExpression(QStringLiteral("shadow maps: [0-9]+ layers, 0 drawn;"))))
        << text.toStdString();
}

TEST(ShadowPictureTest, LayersOfAMovingCrowdAreRenderedInEachFrame)
{
    const QString text = errorsOf({"--crowd", "20", "--shadows", "--stats"});
    const QRegularExpressionMatch match =
        QRegularExpression(QStringLiteral("shadow maps: ([0-9]+) layers, ([0-9]+) drawn;")).match(text);
    ASSERT_TRUE(match.hasMatch()) << text.toStdString();
    EXPECT_EQ(match.captured(1), match.captured(2));
    EXPECT_GE(match.captured(1).toInt(), 5) << "the sun, the spot and sides of the point";
}

TEST(ShadowPictureTest, WithoutShadowsNothingIsToldOfThem)
{
    EXPECT_FALSE(errorsOf({"--builtin", "--no-shadows", "--stats"}).contains(QStringLiteral("shadow maps")));
    const ModelFolder folder;
    EXPECT_FALSE(errorsOf({writeScene(folder), "--stats"}).contains(QStringLiteral("shadow maps")));
}

TEST(ShadowPictureTest, TheDebugViewShowsTheLayersOverAStripForTheLights)
{
    const ModelFolder folder;
    const QImage view = drawWithViewer(
        {writeScene(folder), "--debug", "shadows", "--lights", "spot", "--size", "320x200", "--samples", "1"});
    // One layer: the grid is one cell, with the depth in red. The strip has a 32nd for each light, the spot's first.
    EXPECT_GT(qRed(view.pixel(160, 100)), 128);
    EXPECT_EQ(qGreen(view.pixel(160, 100)), 0);
    EXPECT_EQ(view.pixel(4, 198), qRgb(0, 8, 0)) << "one layer of 32 from the first on";
    EXPECT_EQ(view.pixel(315, 198), qRgb(247, 0, 0)) << "the last light has none";
}

TEST(ShadowPictureTest, ShadowsAreAlikeByAllRoadsOfTheRecords)
{
    const ModelFolder folder;
    constexpr int kAlike = 3; // steps of 255: by base instance the compiler orders the sums in another way
    const QStringList arguments = {writeScene(folder), "--shadows", "--size", "160x120", "--samples", "1"};
    const QImage expected = drawWithViewer(arguments);
    for (const QStringList& road : {QStringList{"--draw-id", "base-instance"}, QStringList{"--carrier", "uniform"},
                                    QStringList{"--manager", "array2d"}})
        EXPECT_LE(difference(drawWithViewer(arguments + road), expected).largest, kAlike) << road[1].toStdString();
}
