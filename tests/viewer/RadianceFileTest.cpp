// SPDX-License-Identifier: MIT
// Light in Radiance files, decoded by a reader of the tests' own.
#include "ModelFiles.h"
#include "RadianceDecoder.h"

#include <RadianceFile.h>

#include <gtest/gtest.h>

#include <QFile>

#include <cmath>
#include <limits>
#include <random>

using namespace vrkview;

namespace
{

using Pixel = RadiancePicture::Pixel;

Pixel bytesOf(float r, float g, float b)
{
    LightImage image(1, 1);
    image.rgb = {r, g, b};
    const RadiancePicture picture = decodeRadiance(radianceBytes(image));
    EXPECT_EQ(picture.width, 1);
    return picture.width == 1 ? picture.at(0, 0) : Pixel{};
}

// Colours of many sizes.
LightImage noise(int width, int height)
{
    std::mt19937 random(7);
    LightImage image(width, height);
    for (std::size_t i = 0; i < image.rgb.size(); ++i)
        image.rgb[i] = std::ldexp(float(random() % 4096) / 4096.0f, int(random() % 24) - 12);
    return image;
}

void expectSame(const LightImage& image, const RadiancePicture& picture)
{
    ASSERT_EQ(picture.width, image.width);
    ASSERT_EQ(picture.height, image.height);
    for (int y = 0; y < image.height; ++y)
    {
        for (int x = 0; x < image.width; ++x)
        {
            const float* const rgb = image.at(x, y);
            const double step = std::max({rgb[0], rgb[1], rgb[2]}) / 255.0;
            for (std::size_t i = 0; i < 3; ++i)
                ASSERT_NEAR(picture.color(x, y)[i], rgb[i], step) << x << ' ' << y;
        }
    }
}

} // namespace

TEST(RadianceFileTest, HeaderTellsFormatAndSize)
{
    EXPECT_TRUE(radianceBytes(LightImage(9, 4)).startsWith("#?RADIANCE\nFORMAT=32-bit_rle_rgbe\n\n-Y 4 +X 9\n"));
}

TEST(RadianceFileTest, LargestChannelHasAtLeast128)
{
    EXPECT_EQ(bytesOf(1.0f, 1.0f, 1.0f), (Pixel{128, 128, 128, 129}));
    EXPECT_EQ(bytesOf(0.5f, 0.25f, 0.0f), (Pixel{128, 64, 0, 128}));
    EXPECT_EQ(bytesOf(0.0f, 3.0f, 255.0f), (Pixel{0, 3, 255, 136}));
}

TEST(RadianceFileTest, RoundingUpGoesToTheNextExponent)
{
    EXPECT_EQ(bytesOf(0.9999f, 0.0f, 0.0f), (Pixel{128, 0, 0, 129}));
}

TEST(RadianceFileTest, WhatIsNoLightIsBlack)
{
    const float nan = std::numeric_limits<float>::quiet_NaN();
    EXPECT_EQ(bytesOf(0.0f, 0.0f, 0.0f), (Pixel{0, 0, 0, 0}));
    EXPECT_EQ(bytesOf(-1.0f, nan, -0.0f), (Pixel{0, 0, 0, 0}));
    EXPECT_EQ(bytesOf(-1.0f, nan, 1.0f), (Pixel{0, 0, 128, 129}));
    EXPECT_EQ(bytesOf(1e-42f, 0.0f, 0.0f), (Pixel{0, 0, 0, 0}));
}

TEST(RadianceFileTest, WhatIsTooLargeIsTheLargestColor)
{
    const float infinity = std::numeric_limits<float>::infinity();
    EXPECT_EQ(bytesOf(infinity, 0.0f, 0.0f), (Pixel{255, 0, 0, 255}));
    EXPECT_EQ(bytesOf(std::numeric_limits<float>::max(), 0.0f, 0.0f), (Pixel{255, 0, 0, 255}));
}

TEST(RadianceFileTest, ColorsOfAllSizesComeBack)
{
    const LightImage image = noise(61, 17);
    expectSame(image, decodeRadiance(radianceBytes(image)));
}

TEST(RadianceFileTest, RowsFrom8To32767AreCodedAndOthersPlain)
{
    for (const auto& [width, isCoded] : {std::pair(1, false), std::pair(7, false), std::pair(8, true),
                                         std::pair(32767, true), std::pair(32768, false)})
    {
        const LightImage image = noise(width, 2);
        const RadiancePicture picture = decodeRadiance(radianceBytes(image));
        EXPECT_EQ(picture.codedRows, isCoded ? 2 : 0) << width;
        expectSame(image, picture);
    }
}

TEST(RadianceFileTest, RunsOfEveryLengthComeBack)
{
    // Runs of 1 to 300 equal pixels with single ones between them, so that runs and literals meet in every way.
    LightImage image(47000 / 2, 1);
    int x = 0;
    for (int length = 1; x < image.width; ++length)
    {
        for (int i = 0; i < length % 301 + 1 && x < image.width; ++i, ++x)
            image.at(x, 0)[0] = 1.0f + 0.25f * float(length % 3);
        for (int i = 0; i < length % 5 && x < image.width; ++i, ++x)
            image.at(x, 0)[0] = 2.0f + 0.125f * float(i);
    }
    expectSame(image, decodeRadiance(radianceBytes(image)));
}

TEST(RadianceFileTest, LongLiteralsComeBack)
{
    for (const int width : {127, 128, 129, 130, 255, 256, 257, 258, 400})
    {
        LightImage image(width, 1);
        for (int x = 0; x < width; ++x)
            image.at(x, 0)[1] = 1.0f + float((x * 37) % 101) / 128.0f;
        expectSame(image, decodeRadiance(radianceBytes(image)));
    }
}

TEST(RadianceFileTest, EvenRowsAreShort)
{
    // A row of one colour: four bytes in front, and two for each 127 equal bytes of a channel.
    const LightImage image(1024, 1);
    EXPECT_LE(radianceBytes(image).size(), 64 + 4 + 4 * 9 * 2);
}

TEST(RadianceFileTest, WritesAFileAndReplacesIt)
{
    const ModelFolder folder;
    const QString path = folder.write("a.hdr", "older");
    const LightImage image = noise(20, 3);
    QString error;
    ASSERT_TRUE(writeRadiance(image, path, error)) << error.toStdString();
    expectSame(image, readRadiance(path));
    EXPECT_EQ(folder.entries(), QStringList("a.hdr"));
}

TEST(RadianceFileTest, AFileThatCannotBeMadeIsAFailureInOneLine)
{
    const ModelFolder folder;
    QString error;
    EXPECT_FALSE(writeRadiance(noise(8, 1), folder.path("none/a.hdr"), error));
    EXPECT_FALSE(error.isEmpty());
    EXPECT_FALSE(error.contains('\n'));
    EXPECT_EQ(folder.entries(), QStringList());
}
