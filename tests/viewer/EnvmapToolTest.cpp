// SPDX-License-Identifier: MIT
// vrk-envmap from the outside: every layout arrives where it belongs, files are what they are said to be, and bad input
// gives one clear line.
#include "EnvmapRun.h"

#include <gtest/gtest.h>

#include <QDir>
#include <QFileInfo>

#include <algorithm>
#include <cmath>

namespace
{

// A face of the cube that each layout keeps texel by texel, and what a Radiance file may be off.
constexpr int kFace = 8;
constexpr double kRounding = 1.0 / 256.0;

const QStringList kSmall = {"--size", "4", "--samples", "8"};

// Different towards all sides, with a step at each face's middle: a face that is turned or mirrored shows.
Color quadrants(const Vector& direction)
{
    Color color = {};
    for (std::size_t i = 0; i < 3; ++i)
        color[i] = 0.5 + 0.25 * (direction[i] > 0.0 ? 1.0 : -1.0) * (std::abs(direction[i]) > 0.577 ? 1.0 : 0.5);
    return color;
}

struct Cell
{
    int column;
    int row;
    bool isUpsideDown;
};

// Where the faces stand on a cross, in the order +x -x +y -y +z -z.
constexpr Cell kLying[] = {{2, 1, false}, {0, 1, false}, {1, 0, false}, {1, 2, false}, {1, 1, false}, {3, 1, false}};
constexpr Cell kUpright[] = {{2, 1, false}, {0, 1, false}, {1, 0, false}, {1, 2, false}, {1, 1, false}, {1, 3, true}};

QByteArray crossFile(const Cell (&cells)[6], int columns, int rows, const Environment3D& environment)
{
    return plainRadiance(columns * kFace, rows * kFace,
                         [&](int x, int y) -> Color
                         {
                             for (int face = 0; face < 6; ++face)
                             {
                                 const Cell& cell = cells[face];
                                 if (x / kFace != cell.column || y / kFace != cell.row)
                                     continue;
                                 const int s = cell.isUpsideDown ? kFace - 1 - x % kFace : x % kFace;
                                 const int t = cell.isUpsideDown ? kFace - 1 - y % kFace : y % kFace;
                                 return environment(stripDirection(kFace, face * kFace + s, t));
                             }
                             return {0.0, 0.0, 0.0};
                         });
}

QImage plainPng(int width, int height)
{
    QImage image(width, height, QImage::Format_RGB32);
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x)
            image.setPixel(x, y, qRgb(x * 255 / width, y * 255 / height, (x * 7 + y * 13) % 256));
    return image;
}

QString savedPng(const ModelFolder& folder, const QString& name, const QImage& image)
{
    EXPECT_TRUE(image.save(folder.path(name)));
    return folder.path(name);
}

} // namespace

// ---- layouts -------------------------------------------------------------------------------------------------------

TEST(EnvmapToolTest, ALinearStripBecomesItself)
{
    const ModelFolder folder;
    const EnvmapRun run(folder, kSmall + QStringList{folder.write("a.hdr", stripFile(kFace, quadrants))});
    expectStrip(run.hdr("a-cube.hdr"), quadrants, kRounding);
}

TEST(EnvmapToolTest, ALyingCrossBecomesTheStrip)
{
    const ModelFolder folder;
    const EnvmapRun run(folder, kSmall + QStringList{folder.write("a.hdr", crossFile(kLying, 4, 3, quadrants))});
    expectStrip(run.hdr("a-cube.hdr"), quadrants, kRounding);
}

TEST(EnvmapToolTest, AnUprightCrossBecomesTheStrip)
{
    const ModelFolder folder;
    const EnvmapRun run(folder, kSmall + QStringList{folder.write("a.hdr", crossFile(kUpright, 3, 4, quadrants))});
    expectStrip(run.hdr("a-cube.hdr"), quadrants, kRounding);
}

TEST(EnvmapToolTest, ALatLongPictureBecomesTheStrip)
{
    const ModelFolder folder;
    const EnvmapRun run(folder, kSmall + QStringList{folder.write("a.hdr", latLongFile(256, waves))});
    const RadiancePicture strip = run.hdr("a-cube.hdr");
    EXPECT_EQ(strip.height, 64); // a quarter of the width
    // The nearest pixel is at most half a pixel off to each side, 0.0174 in direction; no wave is steeper than 0.7.
    expectStrip(strip, waves, 0.0174 * 0.7 + kRounding);
}

TEST(EnvmapToolTest, ASphereBecomesTheStrip)
{
    // The same before and behind: a mirror ball knows x and y.
    const auto ball = [](double x, double y) { return Color{0.5 + 0.4 * x, 0.5 + 0.4 * y, 0.3}; };
    const ModelFolder folder;
    const QString file = folder.write(
        "a.hdr",
        plainRadiance(128, 128,
                      [&](int x, int y) { return ball(2.0 * (x + 0.5) / 128 - 1.0, 1.0 - 2.0 * (y + 0.5) / 128); }));
    const EnvmapRun run(folder, kSmall + QStringList{file});
    expectStrip(
        run.hdr("a-cube.hdr"), [&](const Vector& d) { return ball(d[0], d[1]); }, 0.4 / 128 + kRounding);
}

TEST(EnvmapToolTest, TheLayoutThatIsNamedCounts)
{
    // 64 by 32 looks like a lat-long picture, whose faces would be 16 wide.
    const ModelFolder folder;
    const QString file = folder.write("a.hdr", plainRadiance(64, 32, [](int, int) { return Color{0.5, 0.5, 0.5}; }));
    const EnvmapRun run(folder, kSmall + QStringList{"--layout", "linear", file});
    EXPECT_EQ(run.hdr("a-cube.hdr").height, 64 / 6);
}

TEST(EnvmapToolTest, ACrossOfAnotherRatioIsTakenAsItComes)
{
    const ModelFolder folder;
    const QString file = folder.write("a.hdr", plainRadiance(40, 24, [](int, int) { return Color{0.5, 0.5, 0.5}; }));
    const EnvmapRun run(folder, kSmall + QStringList{"--layout", "cross", file});
    EXPECT_EQ(run.hdr("a-cube.hdr").height, 10);
}

TEST(EnvmapToolTest, ALatLongMapHasItsDirections)
{
    // From each kind of source. The first level is what a mirror shows, the environment itself.
    const ModelFolder sources;
    for (const QString& source :
         {sources.write("a.hdr", latLongFile(128, waves)), sources.write("a-strip.hdr", stripFile(32, waves))})
    {
        const ModelFolder folder;
        const EnvmapRun run(folder, {"--lat-long", "64x32", "--samples", "16", source});
        const RadiancePicture map = run.hdr(QFileInfo(source).completeBaseName() + "-latlong-ggx-0.hdr");
        ASSERT_EQ(map.width, 64);
        for (int y = 0; y < 32; ++y)
            for (int x = 0; x < 64; ++x)
                for (std::size_t i = 0; i < 3; ++i)
                    ASSERT_NEAR(map.color(x, y)[i], waves(latLongDirection(64, 32, x, y))[i], 0.01)
                        << source.toStdString() << ' ' << x << ' ' << y;
    }
}

// ---- colours -------------------------------------------------------------------------------------------------------

TEST(EnvmapToolTest, ColorsOfAPngComeBack)
{
    const ModelFolder folder;
    const QImage image = plainPng(6 * kFace, kFace);
    const EnvmapRun run(folder, kSmall + QStringList{"--format", "png", savedPng(folder, "a.png", image)});
    const QImage strip = run.png("a-cube.png").convertToFormat(QImage::Format_RGB32);
    ASSERT_EQ(strip.size(), image.size());
    EXPECT_LE(difference(strip, image).largest, 1);
}

TEST(EnvmapToolTest, APngIsTakenAsSrgb)
{
    const ModelFolder folder;
    QImage image(6 * kFace, kFace, QImage::Format_RGB32);
    image.fill(qRgb(188, 128, 55));
    const EnvmapRun run(folder, kSmall + QStringList{savedPng(folder, "a.png", image)});
    const Color color = run.hdr("a-cube.hdr").color(3, 3);
    EXPECT_NEAR(color[0], 0.5029, 0.002); // ((188 / 255 + 0.055) / 1.055) ^ 2.4
    EXPECT_NEAR(color[1], 0.2159, 0.002);
    EXPECT_NEAR(color[2], 0.0382, 0.002);
}

TEST(EnvmapToolTest, AStripThatWasWrittenReadsBackTheSame)
{
    const ModelFolder folder;
    const EnvmapRun first(folder, kSmall + QStringList{folder.write("a.hdr", stripFile(kFace, waves))});
    const ModelFolder other;
    const EnvmapRun second(other, kSmall + QStringList{folder.path("out/a-cube.hdr")});
    EXPECT_EQ(second.hdr("a-cube-cube.hdr").pixels, first.hdr("a-cube.hdr").pixels);
}

TEST(EnvmapToolTest, LightAboveOneStaysInHdrAndIsClippedInPng)
{
    const ModelFolder folder;
    const auto bright = [](const Vector&) { return Color{40.0, 2.0, 0.25}; };
    const QString file = folder.write("a.hdr", stripFile(kFace, bright));
    const EnvmapRun hdr(folder, kSmall + QStringList{file});
    expectStrip(hdr.hdr("a-cube.hdr"), bright, 40.0 / 256.0);
    const ModelFolder other;
    const EnvmapRun png(other, kSmall + QStringList{"--format", "png", file});
    EXPECT_EQ(png.png("a-cube.png").pixel(2, 2), qRgb(255, 255, 137)); // 255 * (1.055 * 0.25 ^ (1 / 2.4) - 0.055)
}

TEST(EnvmapToolTest, ExposureBrightensPngsAlone)
{
    const ModelFolder folder;
    const auto dark = [](const Vector&) { return Color{0.0625, 0.0625, 0.0625}; };
    const QString file = folder.write("a.hdr", stripFile(kFace, dark));
    const QStringList twoStops = kSmall + QStringList{"--exposure", "2", file};
    const EnvmapRun hdr(folder, twoStops);
    expectStrip(hdr.hdr("a-cube.hdr"), dark, 1e-6);
    const ModelFolder other;
    const EnvmapRun png(other, twoStops + QStringList{"--format", "png"});
    EXPECT_EQ(png.png("a-cube.png").pixel(2, 2), qRgb(137, 137, 137));
}

// ---- files ---------------------------------------------------------------------------------------------------------

TEST(EnvmapToolTest, ALevelIsAStripOfHalfTheSize)
{
    const ModelFolder folder;
    const EnvmapRun run(folder, {"--size", "16", "--samples", "4", folder.write("a.hdr", stripFile(kFace, waves))});
    EXPECT_EQ(run.files(),
              (QStringList{"a-cube.hdr", "a-ggx-0.hdr", "a-ggx-1.hdr", "a-ggx-2.hdr", "a-ggx-3.hdr", "a-ggx-4.hdr"}));
    for (int level = 0; level < 5; ++level)
    {
        const RadiancePicture strip = run.hdr(QStringLiteral("a-ggx-%1.hdr").arg(level));
        EXPECT_EQ(strip.width, 6 * (16 >> level));
        EXPECT_EQ(strip.height, 16 >> level);
    }
}

TEST(EnvmapToolTest, ALatLongMapHasLevelsUntilItsShorterSideIsOne)
{
    const ModelFolder folder;
    const EnvmapRun run(folder, {"--lat-long", "32x8", "--samples", "4", "--model", "blinn-phong",
                                 folder.write("a.hdr", stripFile(kFace, waves))});
    EXPECT_EQ(run.files(), (QStringList{"a-cube.hdr", "a-latlong-blinn-phong-0.hdr", "a-latlong-blinn-phong-1.hdr",
                                        "a-latlong-blinn-phong-2.hdr", "a-latlong-blinn-phong-3.hdr"}));
    EXPECT_EQ(run.hdr("a-latlong-blinn-phong-3.hdr").width, 4);
    EXPECT_EQ(run.hdr("a-latlong-blinn-phong-3.hdr").height, 1);
}

TEST(EnvmapToolTest, EveryModelHasItsName)
{
    const ModelFolder folder;
    const QString file = folder.write("a.hdr", stripFile(kFace, waves));
    for (const char* model : {"blinn-phong", "ashikhmin-shirley", "ggx", "lambert", "oren-nayar"})
    {
        const ModelFolder other;
        const EnvmapRun run(other, kSmall + QStringList{"--brdf", "--model", model, file});
        EXPECT_TRUE(run.files().contains(QStringLiteral("a-%1-2.hdr").arg(model)));
        EXPECT_TRUE(run.files().contains(QStringLiteral("brdf-%1.png").arg(model)));
    }
}

TEST(EnvmapToolTest, TheTableNeedsNoPicture)
{
    const ModelFolder folder;
    const EnvmapRun run(folder, {"--brdf"});
    EXPECT_EQ(run.files(), QStringList("brdf-ggx.png"));
    const QImage table = run.png("brdf-ggx.png");
    EXPECT_EQ(table.size(), QSize(256, 256));
    EXPECT_EQ(table.depth(), 64); // 16 bits a channel
    // Roughness grows upwards; blue is it. A mirror that is looked at straight reflects all and adds nothing.
    EXPECT_NEAR(table.pixelColor(9, 0).blueF(), 255.5 / 256.0, 1e-3);
    EXPECT_NEAR(table.pixelColor(200, 255).blueF(), 0.5 / 256.0, 1e-3);
    EXPECT_NEAR(table.pixelColor(255, 255).redF(), 1.0, 0.01);
    EXPECT_NEAR(table.pixelColor(255, 255).greenF(), 0.0, 0.01);
    EXPECT_GT(table.pixelColor(0, 255).greenF(), 0.5);
}

TEST(EnvmapToolTest, LayersAreFilesOfTheirOwn)
{
    const ModelFolder folder;
    const EnvmapRun run(
        folder, kSmall + QStringList{"--blur", "2", "--ndotl", "3", folder.write("a.hdr", stripFile(kFace, waves))});
    for (const char* name : {"a-blur-0.hdr", "a-blur-1.hdr", "a-ndotl-0.hdr", "a-ndotl-1.hdr", "a-ndotl-2.hdr"})
    {
        const RadiancePicture strip = run.hdr(name);
        EXPECT_EQ(strip.width, 24) << name;
        EXPECT_EQ(strip.height, 4) << name;
    }
    EXPECT_EQ(run.files().size(), 1 + 3 + 5);
    // The last power is so high that hardly more than the direction itself counts.
    expectStrip(run.hdr("a-ndotl-2.hdr"), waves, 0.06);
}

TEST(EnvmapToolTest, ABlurThatIsNoneIsTold)
{
    // The library's shader for it does not compile, and its faces keep the colours of the clears.
    const ModelFolder folder;
    const EnvmapRun run(folder, kSmall + QStringList{"--blur", "1", folder.write("a.hdr", stripFile(kFace, waves))});
    EXPECT_EQ(run.run().errors.count('\n'), 1) << run.run().errors.constData();
    EXPECT_TRUE(run.run().errors.contains("these files hold a colour for each face"));
    const Color colors[] = {{1, 0, 0}, {0, 1, 0}, {0, 0, 1}, {1, 1, 0}, {0, 1, 1}, {1, 0, 1}};
    const RadiancePicture strip = run.hdr("a-blur-0.hdr");
    for (int face = 0; face < 6; ++face)
        EXPECT_EQ(strip.color(4 * face + 2, 1), colors[face]) << face;
}

TEST(EnvmapToolTest, ASheetShowsThePicture)
{
    const ModelFolder folder;
    QImage image(6 * kFace, kFace, QImage::Format_RGB32);
    image.fill(qRgb(120, 60, 30));
    const ViewerRun run = runProgram(QStringLiteral(VRKENVMAP_PROGRAM),
                                     kSmall + QStringList{"--sheet", folder.path("sheet.png"), "-o", folder.path("out"),
                                                          savedPng(folder, "a.png", image)});
    EXPECT_EQ(run.exitCode, 0) << run.errors.constData();
    EXPECT_TRUE(run.output.endsWith(folder.path("sheet.png").toUtf8() + "\n"));
    const QImage sheet = QImage(folder.path("sheet.png")).convertToFormat(QImage::Format_RGB32);
    EXPECT_EQ(sheet.width(), 1200);
    int shown = 0;
    int labels = 0;
    for (int y = 0; y < sheet.height(); ++y)
    {
        for (int x = 0; x < sheet.width(); ++x)
        {
            const QRgb pixel = sheet.pixel(x, y);
            shown += std::abs(qRed(pixel) - 120) <= 2 && std::abs(qGreen(pixel) - 60) <= 2;
            labels += qRed(pixel) > 200 && qGreen(pixel) > 200 && qBlue(pixel) > 200;
        }
    }
    EXPECT_GT(shown, 1100 * 190 * 2); // the source and the cube map alone
    EXPECT_GT(labels, 2000);
}

TEST(EnvmapToolTest, FilesFromBeforeAreReplaced)
{
    const ModelFolder folder;
    const QString file = folder.write("a.hdr", stripFile(kFace, waves));
    const EnvmapRun first(folder, kSmall + QStringList{file});
    const EnvmapRun second(folder, kSmall + QStringList{file});
    EXPECT_EQ(first.files(), second.files());
}

TEST(EnvmapToolTest, ASingleLevelIsRemarkedOn)
{
    const ModelFolder folder;
    const EnvmapRun run(folder,
                        {"--size", "1", "--samples", "4", "--compare", folder.write("a.hdr", stripFile(kFace, waves))});
    EXPECT_EQ(run.files(), (QStringList{"a-cube.hdr", "a-ggx-0.hdr"}));
    EXPECT_TRUE(run.run().errors.contains("roughness 0 / 0"));
    EXPECT_TRUE(run.run().errors.contains("not compared"));
}

TEST(EnvmapToolTest, HelpAndVersionGoToStandardOutput)
{
    const ViewerRun help = runProgram(QStringLiteral(VRKENVMAP_PROGRAM), {"--help"});
    EXPECT_EQ(help.exitCode, 0);
    EXPECT_TRUE(help.output.contains("--lat-long"));
    const ViewerRun version = runProgram(QStringLiteral(VRKENVMAP_PROGRAM), {"--version"});
    EXPECT_EQ(version.exitCode, 0);
    EXPECT_TRUE(version.output.startsWith("vrk-envmap "));
}

// ---- bad input -----------------------------------------------------------------------------------------------------

TEST(EnvmapToolTest, NothingToDoIsRefused)
{
    const ModelFolder folder;
    expectEnvmapRefused(folder, {}, "name a picture");
    expectEnvmapRefused(folder, {"--brdf", "--compare"}, "--compare wants a picture");
}

TEST(EnvmapToolTest, WrongOptionsAreRefused)
{
    const ModelFolder folder;
    const QString file = folder.write("a.hdr", stripFile(kFace, waves));
    expectEnvmapRefused(folder, {"--frobnicate", file}, "frobnicate");
    expectEnvmapRefused(folder, {"--model", "phong", file}, "--model 'phong' is not one of blinn-phong");
    expectEnvmapRefused(folder, {"--layout", "Cross", file}, "--layout 'Cross' is not one of");
    expectEnvmapRefused(folder, {"--format", "exr", file}, "--format 'exr'");
    for (const char* size : {"0", "-4", "x", "4097"})
        expectEnvmapRefused(folder, {"--size", size, file}, "a whole number from 1 to 4096");
    expectEnvmapRefused(folder, {"--samples", "0", file}, "--samples '0'");
    expectEnvmapRefused(folder, {"--blur", "65", file}, "--blur '65'");
    expectEnvmapRefused(folder, {"--lat-long", "64", file}, "WIDTHxHEIGHT");
    expectEnvmapRefused(folder, {"--exposure", "nan", file}, "--exposure 'nan'");
    expectEnvmapRefused(folder, {file, file}, "one picture only");
}

TEST(EnvmapToolTest, OptionsThatExcludeEachOtherAreRefused)
{
    const ModelFolder folder;
    const QString file = folder.write("a.hdr", stripFile(kFace, waves));
    expectEnvmapRefused(folder, {"--lat-long", "8x4", "--size", "4", file}, "exclude each other");
    expectEnvmapRefused(folder, {"--every-texel", "--model", "lambert", file}, "--every-texel wants --lat-long");
    expectEnvmapRefused(folder, {"--every-texel", "--lat-long", "8x4", file}, "a diffuse model");
}

TEST(EnvmapToolTest, WhatIsNoPictureIsRefused)
{
    const ModelFolder folder;
    const QStringList out = {"-o", folder.path("out")};
    expectEnvmapRefused(folder, out + QStringList{folder.path("none.hdr")}, "no such file");
    expectEnvmapRefused(folder, out + QStringList{folder.path("")}, "it is a directory");
    expectEnvmapRefused(folder, out + QStringList{folder.write("a.txt", "no picture\n")}, "not a picture");
    expectEnvmapRefused(folder, out + QStringList{folder.write("b.hdr", QByteArray())}, "not a picture");
    const QByteArray whole = stripFile(kFace, waves);
    expectEnvmapRefused(folder, out + QStringList{folder.write("c.hdr", whole.left(whole.size() - 40))},
                        "not a picture");
}

TEST(EnvmapToolTest, APictureThatEndsTheReaderIsRefused)
{
    // A run of 120 equal bytes in a row of 8.
    const ModelFolder folder;
    const QByteArray broken = QByteArray("#?RADIANCE\nFORMAT=32-bit_rle_rgbe\n\n-Y 1 +X 8\n") +
                              QByteArray("\x02\x02\x00\x08\xf8\x01", 6) + QByteArray(64, '\x01');
    expectEnvmapRefused(folder, {"-o", folder.path("out"), folder.write("a.hdr", broken)}, "the picture is broken");
}

TEST(EnvmapToolTest, ASquareAsCrossIsRefused)
{
    const ModelFolder folder;
    const QString file = savedPng(folder, "a.png", plainPng(16, 16));
    expectEnvmapRefused(folder, {"--layout", "cross", "-o", folder.path("out"), file}, "a square is no cross");
}

TEST(EnvmapToolTest, ARatioThatTellsNoLayoutIsRefused)
{
    const ModelFolder folder;
    const QString file = savedPng(folder, "a.png", plainPng(50, 20));
    expectEnvmapRefused(folder, {"-o", folder.path("out"), file}, "50 by 20 pixels, which tells no layout");
}

TEST(EnvmapToolTest, APictureWithoutAFaceIsRefused)
{
    const ModelFolder folder;
    const QString file = savedPng(folder, "a.png", plainPng(2, 1));
    expectEnvmapRefused(folder, {"-o", folder.path("out"), file}, "too small");
}

TEST(EnvmapToolTest, FoldersThatCannotBeWrittenAreRefused)
{
    const ModelFolder folder;
    const QString file = folder.write("a.hdr", stripFile(kFace, waves));
    expectEnvmapRefused(folder, {"-o", folder.path("none/out"), file}, "there is no folder");
    expectEnvmapRefused(folder, {"-o", file, file}, "it is not a folder");
#ifdef Q_OS_LINUX
    // Nobody can make anything there, not even root.
    expectEnvmapRefused(folder, {"-o", "/proc/out", file}, "cannot write to '/proc/out'");
    expectEnvmapRefused(folder, {"-o", "/proc", file}, "cannot write to '/proc'");
#endif
}

TEST(EnvmapToolTest, ASheetThatCannotBeWrittenIsRefused)
{
    const ModelFolder folder;
    const QString file = folder.write("a.hdr", stripFile(kFace, waves));
    expectEnvmapRefused(folder, {"--sheet", folder.path("a.jpg"), file}, ".png");
    expectEnvmapRefused(folder, {"--sheet", folder.path("none/a.png"), file}, "there is no folder");
}

TEST(EnvmapToolTest, NoEglDriverIsRefused)
{
    const ModelFolder folder;
    const QString file = folder.write("a.hdr", stripFile(kFace, waves));
    expectEnvmapRefused(folder, {"-o", folder.path("out"), file}, "EGL",
                        {{"__EGL_VENDOR_LIBRARY_FILENAMES", "/nonexistent"}});
    expectEnvmapRefused(folder, {"-o", folder.path("out"), file}, "OpenGL 3.2", {{"MESA_GL_VERSION_OVERRIDE", "3.1"}});
}

TEST(EnvmapToolTest, LayersOnADriverWithoutCubeMapArraysAreRefused)
{
    const ModelFolder folder;
    const QString file = folder.write("a.hdr", stripFile(kFace, waves));
    for (const char* option : {"--blur", "--ndotl"})
        expectEnvmapRefused(
            folder, {option, "2", "-o", folder.path("out"), file}, "no cube-map arrays",
            {{"MESA_GL_VERSION_OVERRIDE", "3.2"}, {"MESA_EXTENSION_OVERRIDE", "-GL_ARB_texture_cube_map_array"}});
}

TEST(EnvmapToolTest, WorksOnTheLowestVersion)
{
    const ModelFolder folder;
    const EnvmapRun run(
        folder, kSmall + QStringList{folder.write("a.hdr", stripFile(kFace, waves))},
        {{"MESA_GL_VERSION_OVERRIDE", "3.2"}, {"MESA_EXTENSION_OVERRIDE", "-GL_ARB_texture_cube_map_array"}});
    expectStrip(run.hdr("a-cube.hdr"), waves, kRounding);
}

// ---- vrk-sky -------------------------------------------------------------------------------------------------------

TEST(SkyToolTest, WritesASkyOfTheSizeThatIsAskedFor)
{
    const ModelFolder folder;
    const ViewerRun run = runProgram(QStringLiteral(VRKSKY_PROGRAM), {folder.path("sky.hdr"), "--size", "64x32"});
    EXPECT_EQ(run.exitCode, 0) << run.errors.constData();
    EXPECT_EQ(run.output, folder.path("sky.hdr").toUtf8() + "\n");
    const RadiancePicture sky = readRadiance(folder.path("sky.hdr"));
    EXPECT_EQ(sky.width, 64);
    EXPECT_EQ(sky.height, 32);
    EXPECT_GT(sky.color(5, 0)[2], sky.color(5, 0)[0]); // blue above
}

TEST(SkyToolTest, BadInputIsRefusedInOneLine)
{
    const ModelFolder folder;
    const QList<QStringList> commands = {{},
                                         {folder.path("none/a.hdr")},
                                         {folder.path("a.hdr"), folder.path("b.hdr")},
                                         {folder.path("a.hdr"), "--size", "0x5"},
                                         {folder.path("a.hdr"), "--frobnicate"}};
    for (const QStringList& command : commands)
    {
        const ViewerRun run = runProgram(QStringLiteral(VRKSKY_PROGRAM), command);
        EXPECT_EQ(run.exitCode, 1) << command.join(' ').toStdString();
        EXPECT_EQ(run.errors.count('\n'), 1) << run.errors.constData();
        EXPECT_TRUE(run.errors.startsWith("vrk-sky: ")) << run.errors.constData();
    }
    EXPECT_EQ(folder.entries(), QStringList());
}
