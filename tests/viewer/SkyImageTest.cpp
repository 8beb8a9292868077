// SPDX-License-Identifier: MIT
// The sky of the examples: light where it is told to be.
#include <SkyImage.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

using namespace vrkview;

namespace
{

constexpr double kPi = 3.14159265358979;

QVector3D directionAt(const LightImage& image, int x, int y)
{
    const double phi = ((x + 0.5) / image.width - 0.5) * 2.0 * kPi;
    const double theta = (0.5 - (y + 0.5) / image.height) * kPi;
    return QVector3D(float(std::cos(phi) * std::cos(theta)), float(std::sin(theta)),
                     float(std::sin(phi) * std::cos(theta)));
}

float largest(const QVector3D& color)
{
    return std::max({color.x(), color.y(), color.z()});
}

} // namespace

TEST(SkyImageTest, SunStandsAgainstItsLight)
{
    const QVector3D light = QVector3D(0.55f, -0.70f, -0.40f).normalized();
    EXPECT_LT((skySunDirection() + light).length(), 1e-6f);
}

TEST(SkyImageTest, BrightestPlaceIsTheSunsAndBelow60)
{
    const LightImage sky = makeSky(256, 128);
    float most = 0.0f;
    QVector3D place;
    for (int y = 0; y < sky.height; ++y)
    {
        for (int x = 0; x < sky.width; ++x)
        {
            const float* const rgb = sky.at(x, y);
            for (int i = 0; i < 3; ++i)
            {
                ASSERT_TRUE(std::isfinite(rgb[i]) && rgb[i] > 0.0f);
                if (rgb[i] > most)
                {
                    most = rgb[i];
                    place = directionAt(sky, x, y);
                }
            }
        }
    }
    EXPECT_GT(most, 10.0f);
    EXPECT_LT(most, 60.0f);
    EXPECT_LT(largest(skyLight(skySunDirection())), 60.0f);
    // A pixel of that picture is 1.4 degrees wide.
    EXPECT_GT(QVector3D::dotProduct(place, skySunDirection()), std::cos(2.0 * kPi / 180.0));
}

TEST(SkyImageTest, BlueAboveWarmBelowBrightBetween)
{
    const QVector3D up = skyLight({0, 1, 0});
    const QVector3D down = skyLight({0, -1, 0});
    const QVector3D side = skyLight(QVector3D(0.7f, 0.02f, -0.7f).normalized());
    EXPECT_GT(up.z(), 1.5f * up.x());
    EXPECT_GT(down.x(), down.z());
    EXPECT_GT(side.y(), up.y());
    EXPECT_GT(side.y(), down.y());
}

TEST(SkyImageTest, PixelsShowTheirDirection)
{
    const LightImage sky = makeSky(64, 32);
    // The ground is smooth enough for a pixel to be close to its middle.
    for (int y = 20; y < sky.height; ++y)
        for (int x = 0; x < sky.width; ++x)
            for (int i = 0; i < 3; ++i)
                ASSERT_NEAR(sky.at(x, y)[i], skyLight(directionAt(sky, x, y))[i], 0.05f) << x << ' ' << y;
}

TEST(SkyImageTest, EdgesMeet)
{
    // No more of a step from the last column to the first than between others.
    const LightImage sky = makeSky(256, 128);
    const auto step = [&sky](int left, int right)
    {
        double sum = 0.0;
        for (int y = 0; y < sky.height; ++y)
            sum += std::abs(double(sky.at(left, y)[2]) - double(sky.at(right, y)[2]));
        return sum / sky.height;
    };
    double most = 0.0;
    for (int x = 0; x + 1 < sky.width; ++x)
        most = std::max(most, step(x, x + 1));
    EXPECT_LE(step(255, 0), most);
}
