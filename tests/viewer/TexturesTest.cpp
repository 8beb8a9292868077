// SPDX-License-Identifier: MIT
// Textures by the thousand, sets of tiles, and texture files shown by themselves.
#include "ModelFiles.h"
#include "ViewerRun.h"

#include <gtest/gtest.h>

#include <QBuffer>
#include <QImage>
#include <QSet>

#include <cmath>

namespace
{

const QStringList kTiny = {"--size", "200x200", "--samples", "1"};

constexpr QRgb kInvalid = 0xFF00FF00; // what a token samples as that is nowhere

QByteArray png(const QImage& image)
{
    QByteArray bytes;
    QBuffer buffer(&bytes);
    EXPECT_TRUE(buffer.open(QIODevice::WriteOnly) && image.save(&buffer, "PNG"));
    return bytes;
}

QImage plain(QRgb color)
{
    QImage image(16, 16, QImage::Format_RGB32);
    image.fill(color);
    return image;
}

/// A square from -1 to 1 that faces +z, with texture coordinates from 0 to 2.
QByteArray square(const QByteArray& image)
{
    return "mtllib " + image +
           ".mtl\nv -1 -1 0\nv 1 -1 0\nv 1 1 0\nv -1 1 0\nvt 0 0\nvt 2 0\nvt 2 2\nvt 0 2\n"
           "vn 0 0 1\nusemtl m\nf 1/1/1 2/2/1 3/3/1 4/4/1\n";
}

/// The square with a set of three tiles: red, green, and blue above; the fourth place is empty.
QString writeTiles(const ModelFolder& folder)
{
    folder.write("a.1001.png", png(plain(qRgb(255, 0, 0))));
    folder.write("a.1002.png", png(plain(qRgb(0, 255, 0))));
    folder.write("a.1011.png", png(plain(qRgb(0, 0, 255))));
    folder.write("a.10x1.png", png(plain(qRgb(9, 9, 9)))); // no tile
    folder.write("tiles.mtl", "newmtl m\nKd 1 1 1\nmap_Kd a.<UDIM>.png\n");
    return folder.write("tiles.obj", square("tiles"));
}

enum class Hue
{
    Red,
    Green,
    Blue,
    Grey
};

Hue hueAt(const QImage& picture, float x, float y)
{
    const QRgb color = picture.pixel(100 + int(std::lround(86 * x)), 100 - int(std::lround(86 * y)));
    const int most = std::max({qRed(color), qGreen(color), qBlue(color)});
    const int least = std::min({qRed(color), qGreen(color), qBlue(color)});
    if (most - least < 60)
        return Hue::Grey;
    return most == qRed(color) ? Hue::Red : most == qGreen(color) ? Hue::Green : Hue::Blue;
}

QImage drawTexture(const QStringList& arguments)
{
    return drawWithViewer(arguments + kTiny);
}

/// Of little-endian words, as KTX has them.
void append(QByteArray& bytes, std::initializer_list<quint32> words)
{
    for (const quint32 word : words)
        for (int byte = 0; byte < 4; ++byte)
            bytes.append(char(word >> (8 * byte)));
}

/// A KTX file of RGBA8 with a plain colour for each level and face.
QByteArray ktx(int side, int faces, const std::vector<QRgb>& colors)
{
    QByteArray bytes("\xABKTX 11\xBB\r\n\x1A\n");
    const auto levels = quint32(colors.size()) / quint32(faces);
    append(bytes, {0x04030201, 0x1401, 1, 0x1908, 0x8058, 0x1908, quint32(side), quint32(side), 0, 0, quint32(faces),
                   levels, 0});
    for (quint32 level = 0; level < levels; ++level)
    {
        const quint32 texels = quint32(side >> level) * quint32(side >> level);
        append(bytes, {4 * texels});
        for (int face = 0; face < faces; ++face)
        {
            const QRgb color = colors[level * std::size_t(faces) + std::size_t(face)];
            for (quint32 texel = 0; texel < texels; ++texel)
                append(bytes, {quint32(qRed(color)) | quint32(qGreen(color)) << 8 | quint32(qBlue(color)) << 16 |
                               0xFF000000u});
        }
    }
    return bytes;
}

} // namespace

// ---- sets of tiles -------------------------------------------------------------------------------------------------

TEST(ViewerTexturesTest, TilesAreDrawnThroughOneToken)
{
    const ModelFolder folder;
    const QImage picture =
        drawTexture({writeTiles(folder), "--azimuth", "0", "--elevation", "0", "--manager", "array2d"});
    EXPECT_EQ(hueAt(picture, -0.5f, -0.5f), Hue::Red);
    EXPECT_EQ(hueAt(picture, 0.5f, -0.5f), Hue::Green);
    EXPECT_EQ(hueAt(picture, -0.5f, 0.5f), Hue::Blue);
    EXPECT_EQ(hueAt(picture, 0.5f, 0.5f), Hue::Grey) << "there is no tile";
}

TEST(ViewerTexturesTest, WithoutSuchAManagerTilesAreWhiteAndThatIsSaid)
{
    const ModelFolder folder;
    const QString output = folder.path("out.png");
    const ViewerRun run =
        runViewer(QStringList{writeTiles(folder), "--azimuth", "0", "--elevation", "0", "--output", output} + kTiny);
    EXPECT_EQ(run.exitCode, 0);
    EXPECT_TRUE(run.errors.contains("they want --manager array2d")) << run.errors.constData();
    EXPECT_EQ(hueAt(QImage(output), -0.5f, -0.5f), Hue::Grey);
}

TEST(ViewerTexturesTest, ASetWithoutTilesIsWhiteAndThatIsSaid)
{
    const ModelFolder folder;
    folder.write("none.mtl", "newmtl m\nKd 1 1 1\nmap_Kd none.<UDIM>.png\n");
    const ViewerRun run = runViewer(QStringList{folder.write("none.obj", square("none")), "--manager", "array2d",
                                                "--output", folder.path("out.png")} +
                                    kTiny);
    EXPECT_EQ(run.exitCode, 0);
    EXPECT_TRUE(run.errors.contains("has no tiles")) << run.errors.constData();
}

// ---- the wall ------------------------------------------------------------------------------------------------------

TEST(ViewerTexturesTest, EachPanelOfAWallHasAPictureOfItsOwn)
{
    const QImage wall = drawTexture({"--textures", "64"});
    QSet<QRgb> colors;
    for (int y = 0; y < wall.height(); ++y)
        for (int x = 0; x < wall.width(); ++x)
        {
            ASSERT_NE(wall.pixel(x, y), kInvalid) << x << " " << y;
            colors.insert(wall.pixel(x, y));
        }
    EXPECT_GT(colors.size(), 64 * 3);
    EXPECT_GT(difference(wall, drawTexture({"--textures", "65"})).mean, 1.0);
}

TEST(ViewerTexturesTest, FourThousandTexturesAreDrawnWithoutAWord)
{
    const ModelFolder folder;
    const QString output = folder.path("out.png");
    const ViewerRun run = runViewer(QStringList{"--textures", "4000", "--output", output} + kTiny);
    EXPECT_EQ(run.exitCode, 0);
    EXPECT_EQ(run.errors.count('\n'), 1) << "the summary alone: " << run.errors.left(2000).constData();
}

TEST(ViewerTexturesTest, TheSlotsAreShownWithAStripThatTellsThemApart)
{
    const QImage view = drawTexture({"--textures", "40", "--debug", "slots"});
    // Below the lowest fiftieth there is a ramp of red, one step for each of nine slots.
    EXPECT_EQ(view.pixel(2, 198), qRgb(0, 0, 0));
    EXPECT_EQ(qGreen(view.pixel(197, 198)), 0);
    EXPECT_NEAR(qRed(view.pixel(197, 198)), 255 * 8 / 9, 1);
    EXPECT_NE(view.pixel(2, 100), qRgb(0, 0, 0)) << "the first slot is in use";
}

// ---- texture files -------------------------------------------------------------------------------------------------

TEST(ViewerTexturesTest, ALevelOfATextureIsShownAlone)
{
    const ModelFolder folder;
    const QString path = folder.write("levels.ktx", ktx(4, 1, {qRgb(200, 0, 0), qRgb(0, 200, 0), qRgb(0, 0, 200)}));
    EXPECT_EQ(drawTexture({"--texture", path}).pixel(100, 100), qRgb(200, 0, 0));
    EXPECT_EQ(drawTexture({"--texture", path, "--level", "1"}).pixel(100, 100), qRgb(0, 200, 0));
    EXPECT_EQ(drawTexture({"--texture", path, "--level", "2"}).pixel(100, 100), qRgb(0, 0, 200));
    const ViewerRun run =
        runViewer(QStringList{"--texture", path, "--level", "3", "--output", folder.path("a.png")} + kTiny);
    EXPECT_EQ(run.exitCode, 1);
    EXPECT_TRUE(run.errors.contains("has no level 3")) << run.errors.constData();
}

TEST(ViewerTexturesTest, AllLevelsStandSideBySide)
{
    const ModelFolder folder;
    const QString path = folder.write("levels.ktx", ktx(4, 1, {qRgb(200, 0, 0), qRgb(0, 200, 0), qRgb(0, 0, 200)}));
    const QImage picture = drawTexture({"--texture", path, "--level", "all"});
    // Widths of 4, 2 and 1 with gaps of 0.08, in 92 % of the picture; all hang from the top.
    const double texel = 0.92 * 200 / 7.16;
    const auto at = [&](double x) { return picture.pixel(int(8 + texel * x), int(100 - 2 * texel + 0.5 * texel)); };
    EXPECT_EQ(at(2.0), qRgb(200, 0, 0));
    EXPECT_EQ(at(5.08), qRgb(0, 200, 0));
    EXPECT_EQ(at(6.66), qRgb(0, 0, 200));
}

TEST(ViewerTexturesTest, ACubeMapIsShownAsACross)
{
    const ModelFolder folder;
    const std::vector<QRgb> faces = {qRgb(200, 0, 0),   qRgb(0, 200, 0),   qRgb(0, 0, 200),
                                     qRgb(200, 200, 0), qRgb(0, 200, 200), qRgb(200, 0, 200)};
    const QImage picture = drawTexture({"--texture", folder.write("cube.ktx", ktx(2, 6, faces))});
    const double side = 0.92 * 200 / 4;
    const auto at = [&](int column, int row)
    { return picture.pixel(int(8 + side * (column + 0.5)), int(100 + side * (row - 1.0))); };
    EXPECT_EQ(at(2, 1), faces[0]) << "+x";
    EXPECT_EQ(at(0, 1), faces[1]) << "-x";
    EXPECT_EQ(at(1, 0), faces[2]) << "+y";
    EXPECT_EQ(at(1, 2), faces[3]) << "-y";
    EXPECT_EQ(at(1, 1), faces[4]) << "+z";
    EXPECT_EQ(at(3, 1), faces[5]) << "-z";
}

TEST(ViewerTexturesTest, LightIsExposed)
{
    const ModelFolder folder;
    const QString path = folder.write("grey.hdr", "#?RADIANCE\nFORMAT=32-bit_rle_rgbe\n\n-Y 1 +X 1\n" +
                                                      QByteArray("\x40\x40\x40\x80", 4));
    const auto grey = [&](const char* stops) {
        return qRed(drawTexture({"--texture", path, "--exposure", stops}).pixel(100, 100));
    };
    // A quarter of light, encoded by the power 1 / 2.2.
    EXPECT_NEAR(grey("0"), 255 * std::pow(0.25, 1 / 2.2), 1.5);
    EXPECT_NEAR(grey("1"), 255 * std::pow(0.5, 1 / 2.2), 1.5);
    EXPECT_NEAR(grey("-1"), 255 * std::pow(0.125, 1 / 2.2), 1.5);
    EXPECT_EQ(qRed(drawTexture({"--texture", path}).pixel(100, 100)), grey("0"));
}

TEST(ViewerTexturesTest, APngIsShownAsItIs)
{
    const ModelFolder folder;
    const QString path = folder.write("a.png", png(plain(qRgb(10, 130, 250))));
    EXPECT_EQ(drawTexture({"--texture", path}).pixel(100, 100), qRgb(10, 130, 250));
}
