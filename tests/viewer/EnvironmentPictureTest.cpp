// SPDX-License-Identifier: MIT
// Models in the light of an environment, whose pictures are written here.
#include "ModelFiles.h"
#include "ViewerRun.h"

#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <numbers>

namespace
{

constexpr int kWidth = 64;
constexpr int kHeight = 32;

// What the mean of a white surface is brought to.
constexpr double kMiddle = 0.42;

/// 255 times what is shown of light.
double displayed(double light)
{
    const double knee = 0.6;
    const double bent = light < knee ? light : knee + (1.0 - knee) * (1.0 - std::exp((knee - light) / (1.0 - knee)));
    return 255.0 * std::pow(bent, 1.0 / 2.2);
}

/// A Radiance picture by latitude and longitude; red, green and blue are bytes, 128 for a light of 1.
QByteArray environment(const std::function<QVector3D(const QVector3D& direction)>& color)
{
    QByteArray bytes = "#?RADIANCE\nFORMAT=32-bit_rle_rgbe\n\n-Y 32 +X 64\n";
    for (int row = 0; row < kHeight; ++row)
        for (int column = 0; column < kWidth; ++column)
        {
            const double phi = 2.0 * std::numbers::pi * ((column + 0.5) / kWidth - 0.5);
            const double theta = std::numbers::pi * (0.5 - (row + 0.5) / kHeight);
            const QVector3D light = color({float(std::cos(phi) * std::cos(theta)), float(std::sin(theta)),
                                           float(std::sin(phi) * std::cos(theta))});
            for (int channel = 0; channel < 3; ++channel)
                bytes.append(char(std::lround(light[channel])));
            bytes.append(char(129));
        }
    return bytes;
}

QVector3D byAxis(const QVector3D& direction)
{
    const QVector3D size(std::abs(direction.x()), std::abs(direction.y()), std::abs(direction.z()));
    if (size.x() > size.y() && size.x() > size.z())
        return direction.x() > 0.0f ? QVector3D(128, 0, 0) : QVector3D(0, 128, 128);
    if (size.y() > size.z())
        return direction.y() > 0.0f ? QVector3D(0, 128, 0) : QVector3D(128, 0, 128);
    return direction.z() > 0.0f ? QVector3D(0, 0, 128) : QVector3D(128, 128, 0);
}

/// Nothing to be seen, but something to frame.
QString writeNothing(const ModelFolder& folder)
{
    TriangleSoup soup;
    for (const float side : {-1.0f, 1.0f})
    {
        const auto index = std::uint32_t(soup.positions.size());
        soup.positions.emplace_back(side, side, side);
        soup.normals.emplace_back(0.0f, 1.0f, 0.0f);
        soup.indices.insert(soup.indices.end(), {index, index, index});
    }
    return folder.write("nothing.gltf", gltfFile(soup, {QMatrix4x4()}, {0.5f, 0.5f, 0.5f}, 1.0f));
}

QString writeSphere(const ModelFolder& folder, float grey)
{
    return folder.write("sphere.gltf",
                        gltfFile(sphereSoup({0, 0, 0}, 1.0f, 60), {QMatrix4x4()}, {grey, grey, grey}, 1.0f));
}

QImage draw(const QString& model, const QString& environment, const QStringList& more = {})
{
    return drawWithViewer(QStringList{model, "--env", environment, "--size", "120x120", "--samples", "1", "--azimuth",
                                      "0", "--elevation", "0"} +
                          more);
}

int brightness(QRgb color)
{
    return qRed(color) + qGreen(color) + qBlue(color);
}

} // namespace

TEST(EnvironmentPictureTest, InAnEvenLightASphereIsEvenByAllModels)
{
    const ModelFolder folder;
    const QString even = folder.write("even.hdr", environment([](const QVector3D&) { return QVector3D(90, 90, 90); }));
    const QString sphere = writeSphere(folder, 0.5f);
    for (const char* specular : {"blinn-phong", "ashikhmin-shirley", "ggx"})
    {
        for (const char* diffuse : {"lambert", "oren-nayar"})
        {
            const QImage picture = draw(sphere, even, {"--specular", specular, "--diffuse", diffuse});
            EXPECT_NEAR(qRed(picture.pixel(2, 2)), displayed(kMiddle), 2.0) << "the sky " << specular << diffuse;
            // Half is scattered; a little is mirrored on top, most of it towards the edge.
            for (const QPoint place : {QPoint(60, 60), QPoint(40, 60), QPoint(60, 85), QPoint(75, 45)})
            {
                const QRgb color = picture.pixel(place);
                EXPECT_GE(qRed(color), displayed(0.5 * kMiddle) - 2.0) << specular << diffuse;
                EXPECT_LE(qRed(color), displayed(0.6 * kMiddle) + 2.0) << specular << diffuse;
                EXPECT_LE(std::max({qRed(color), qGreen(color), qBlue(color)}) -
                              std::min({qRed(color), qGreen(color), qBlue(color)}),
                          2);
            }
        }
    }
}

TEST(EnvironmentPictureTest, TheSkyIsSeenInTheDirectionInWhichItLies)
{
    const ModelFolder folder;
    const QString model = writeNothing(folder);
    const QString sky = folder.write("axes.hdr", environment(byAxis));
    struct Look
    {
        const char* azimuth;
        const char* elevation;
        QVector3D towards;
    };
    const Look looks[] = {{"0", "0", {0, 0, -1}},  {"90", "0", {-1, 0, 0}}, {"180", "0", {0, 0, 1}},
                          {"270", "0", {1, 0, 0}}, {"0", "90", {0, -1, 0}}, {"0", "-90", {0, 1, 0}}};
    for (const Look& look : looks)
    {
        const QImage picture = drawWithViewer({model, "--env", sky, "--size", "64x64", "--samples", "1", "--azimuth",
                                               look.azimuth, "--elevation", look.elevation});
        const QRgb color = picture.pixel(32, 32);
        const QVector3D wanted = byAxis(look.towards);
        const int channels[] = {qRed(color), qGreen(color), qBlue(color)};
        for (int channel = 0; channel < 3; ++channel)
            EXPECT_EQ(channels[channel] > 60, wanted[channel] > 0.0f)
                << look.azimuth << " " << look.elevation << ", channel " << channel << ": " << channels[channel];
    }
}

TEST(EnvironmentPictureTest, ASphereIsBrightOnTheSideOfTheLight)
{
    const ModelFolder folder;
    const QString sphere = writeSphere(folder, 0.8f);
    const auto glow = [&folder](const char* name, const QVector3D& from)
    {
        return folder.write(name, environment(
                                      [from](const QVector3D& direction)
                                      {
                                          const float light =
                                              QVector3D::dotProduct(direction, from) > 0.8f ? 200.0f : 10.0f;
                                          return QVector3D(light, light, light);
                                      }));
    };
    const QImage right = draw(sphere, glow("right.hdr", {1, 0, 0}));
    EXPECT_GT(brightness(right.pixel(90, 60)), brightness(right.pixel(30, 60)) + 60);
    EXPECT_NEAR(brightness(right.pixel(60, 35)), brightness(right.pixel(60, 85)), 12);
    const QImage above = draw(sphere, glow("above.hdr", {0, 1, 0}));
    EXPECT_GT(brightness(above.pixel(60, 30)), brightness(above.pixel(60, 90)) + 60);
    EXPECT_NEAR(brightness(above.pixel(35, 60)), brightness(above.pixel(85, 60)), 12);
    const QImage front = draw(sphere, glow("front.hdr", {0, 0, 1}));
    EXPECT_GT(brightness(front.pixel(60, 60)), brightness(above.pixel(60, 60)) + 40);
}

TEST(EnvironmentPictureTest, RadiancePicturesAreLightAndNotWhatAScreenShows)
{
    const ModelFolder folder;
    const QString halves = folder.write("halves.hdr", environment(
                                                          [](const QVector3D& direction)
                                                          {
                                                              const float light = direction.x() < 0.0f ? 128.0f : 32.0f;
                                                              return QVector3D(light, light, light);
                                                          }));
    const QString model = writeNothing(folder);
    const auto lightTowards = [&](const char* azimuth)
    {
        const QImage picture = drawWithViewer({model, "--env", halves, "--size", "64x64", "--samples", "1", "--azimuth",
                                               azimuth, "--elevation", "0", "--exposure", "-1"});
        return std::pow(qRed(picture.pixel(32, 32)) / 255.0, 2.2);
    };
    EXPECT_NEAR(lightTowards("90") / lightTowards("270"), 4.0, 0.25);
}

TEST(EnvironmentPictureTest, ExposureCountsInStops)
{
    const ModelFolder folder;
    const QString even = folder.write("even.hdr", environment([](const QVector3D&) { return QVector3D(90, 90, 90); }));
    const QImage darker = draw(writeNothing(folder), even, {"--exposure", "-1"});
    EXPECT_NEAR(qRed(darker.pixel(60, 60)), displayed(0.5 * kMiddle), 2.0);
}

TEST(EnvironmentPictureTest, LightsAndTheirShadowsAddToAnEnvironment)
{
    const ModelFolder folder;
    const QString even = folder.write("even.hdr", environment([](const QVector3D&) { return QVector3D(90, 90, 90); }));
    const QString sphere = writeSphere(folder, 0.5f);
    const QImage picture = draw(sphere, even, {"--lights", "sun"});
    EXPECT_GT(brightness(picture.pixel(45, 45)), brightness(picture.pixel(75, 85)) + 60)
        << "the sun stands on the left";
}

TEST(EnvironmentPictureTest, AnEnvironmentThatIsNoneIsOneLineAndAFailure)
{
    const ModelFolder folder;
    const QString model = writeNothing(folder);
    const QString broken = folder.write("broken.hdr", "#?RADIANCE\nnothing");
    const QByteArray overlong("#?RADIANCE\nFORMAT=32-bit_rle_rgbe\n\n-Y 1 +X 64\n\x02\x02\x00\x40\xE4\x01", 52);
    const QString run = folder.write("run.hdr", overlong);
    for (const auto& [path, words] :
         {std::pair{folder.path("none.hdr"), "there is no file"}, std::pair{broken, "is no picture of an environment"}})
    {
        const ViewerRun ended =
            runViewer({model, "--env", path, "--size", "64x64", "--output", folder.path("out.png")});
        EXPECT_EQ(ended.exitCode, 1);
        EXPECT_TRUE(ended.errors.contains(words)) << ended.errors.constData();
    }
}
