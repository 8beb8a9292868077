// SPDX-License-Identifier: MIT
// Pictures of the whole program: framed, repeatable, and the same by every road.
#include "ModelFiles.h"
#include "ReferencePicture.h"
#include "ViewerRun.h"

#include <gtest/gtest.h>

#include <QFile>
#include <QFileInfo>
#include <QRect>

#include <cmath>

namespace
{

// What the 3.2 core profile does not have, taken away from a newer driver.
const Environment kFloor = {{"MESA_GL_VERSION_OVERRIDE", "3.2"},
                            {"MESA_EXTENSION_OVERRIDE",
                             "-GL_ARB_base_instance -GL_ARB_shader_draw_parameters -GL_ARB_buffer_storage "
                             "-GL_ARB_shader_storage_buffer_object"}};

struct Object
{
    QRect box; ///< of the pixels that are not background
    int pixels = 0;
};

Object findObject(const QImage& picture)
{
    constexpr double kClear = 8.0; // steps of 255 from the background
    Object object;
    for (int y = 0; y < picture.height(); ++y)
    {
        for (int x = 0; x < picture.width(); ++x)
        {
            const reference::Vec expected =
                reference::backgroundValue((x + 0.5) / picture.width(), 1.0 - (y + 0.5) / picture.height());
            const QRgb rgb = picture.pixel(x, y);
            if (std::abs(qRed(rgb) - expected.x) < kClear && std::abs(qGreen(rgb) - expected.y) < kClear &&
                std::abs(qBlue(rgb) - expected.z) < kClear)
                continue;
            ++object.pixels;
            object.box |= QRect(x, y, 1, 1);
        }
    }
    return object;
}

// In the middle, filling the picture one way but for the margin, and not just a few pixels.
void expectFramed(const QImage& picture)
{
    const Object object = findObject(picture);
    const double width = double(object.box.width()) / picture.width();
    const double height = double(object.box.height()) / picture.height();
    EXPECT_GE(std::max(width, height), 0.82);
    EXPECT_LE(std::max(width, height), 0.90);
    const QPoint off = object.box.center() - picture.rect().center();
    EXPECT_LE(std::abs(off.x()), picture.width() / 12);
    EXPECT_LE(std::abs(off.y()), picture.height() / 12);
    EXPECT_GE(double(object.pixels) / (picture.width() * picture.height()), 0.15);
}

int colorsOf(const QImage& picture)
{
    QSet<QRgb> colors;
    for (int y = 0; y < picture.height(); ++y)
        for (int x = 0; x < picture.width(); ++x)
            colors.insert(picture.pixel(x, y));
    return int(colors.size());
}

QByteArray bytesOf(const QString& path)
{
    QFile file(path);
    EXPECT_TRUE(file.open(QIODevice::ReadOnly));
    return file.readAll();
}

void expectAlike(const QImage& a, const QImage& b, int largest, const char* name)
{
    const Difference steps = difference(a, b);
    std::printf("%s: largest %d, mean %.4f (steps of 255)\n", name, steps.largest, steps.mean);
    EXPECT_LE(steps.largest, largest);
}

// The built-in scene under the plain light, where its own light is not what matters.
const QStringList kPlainScene = {"--builtin", "--no-env", "--no-shadows"};
const QStringList kSmall = {"--size", "320x200"};

// The screens look away: one of them shows what the GPU computes, and the processor where the GPU cannot, which need
// not agree in the last digit.
const QStringList kSceneFromBehind = kPlainScene + QStringList{"--azimuth", "215"};

} // namespace

TEST(ViewerPictureTest, BuiltInSceneIsFramedAndColorful)
{
    const QImage picture = drawWithViewer(QStringList{"--builtin", "--no-env"} + kSmall);
    ASSERT_EQ(picture.size(), QSize(320, 200));
    expectFramed(picture);
    EXPECT_GT(colorsOf(picture), 3000);
}

TEST(ViewerPictureTest, BuiltInSceneStandsUnderItsSky)
{
    const QImage picture = drawWithViewer({"--builtin", "--size", "160x100", "--samples", "1", "--elevation", "-5"});
    const QRgb above = picture.pixel(5, 2);
    EXPECT_GT(qBlue(above), qRed(above)) << "the sky is blue";
    EXPECT_GT(qBlue(above), 100);
}

TEST(ViewerPictureTest, TallPicturesAreFramedToo)
{
    expectFramed(drawWithViewer(kPlainScene + QStringList{"--size", "160x320"}));
}

TEST(ViewerPictureTest, WithoutArgumentsAPictureAppearsInTheCurrentFolderAndItsPathIsPrinted)
{
    const ModelFolder folder;
    const QString former = QDir::currentPath();
    ASSERT_TRUE(QDir::setCurrent(QFileInfo(folder.path("x")).absolutePath()));
    const ViewerRun run = runViewer({});
    QDir::setCurrent(former);
    ASSERT_TRUE(run.ended);
    ASSERT_EQ(run.exitCode, 0) << run.errors.constData();
    ASSERT_EQ(run.output.count('\n'), 1);
    const QString path = QString::fromUtf8(run.output.trimmed());
    EXPECT_EQ(QFileInfo(path).canonicalFilePath(), QFileInfo(folder.path("vrkview.png")).canonicalFilePath());
    EXPECT_TRUE(path.startsWith('/')) << path.toStdString();
    EXPECT_EQ(run.errors.count('\n'), 1) << "one line that sums up: " << run.errors.constData();
    const QImage picture = QImage(path).convertToFormat(QImage::Format_RGB32);
    ASSERT_EQ(picture.size(), QSize(1280, 720));
    EXPECT_GT(colorsOf(picture), 1000);
}

TEST(ViewerPictureTest, ARelativeOutputPathIsPrintedAsAbsolute)
{
    const ModelFolder folder;
    const QString model = folder.write("a.obj", objFile(boxSoup({0, 0, 0}, {1, 1, 1})));
    const QString absolute = QFileInfo(folder.path("p.png")).absoluteFilePath();
    const QString relative = QDir::current().relativeFilePath(absolute);
    const ViewerRun run = runViewer({model, "--size", "32x32", "-o", relative});
    EXPECT_EQ(run.exitCode, 0) << run.errors.constData();
    EXPECT_EQ(QFileInfo(QString::fromUtf8(run.output.trimmed())).canonicalFilePath(),
              QFileInfo(absolute).canonicalFilePath());
    EXPECT_TRUE(run.output.startsWith('/')) << run.output.constData();
}

TEST(ViewerPictureTest, TheSameCommandGivesTheSameBytes)
{
    const ModelFolder folder;
    const QStringList command = kPlainScene + kSmall;
    ASSERT_EQ(runViewer(command + QStringList{"-o", folder.path("a.png")}).exitCode, 0);
    ASSERT_EQ(runViewer(command + QStringList{"-o", folder.path("b.png")}).exitCode, 0);
    EXPECT_EQ(bytesOf(folder.path("a.png")), bytesOf(folder.path("b.png")));
}

TEST(ViewerPictureTest, AnOlderPictureIsReplaced)
{
    const ModelFolder folder;
    const QString path = folder.write("a.png", "older");
    ASSERT_EQ(runViewer({"--builtin", "--size", "64x64", "-o", path}).exitCode, 0);
    EXPECT_EQ(QImage(path).size(), QSize(64, 64));
    EXPECT_EQ(folder.entries().size(), 1);
}

TEST(ViewerPictureTest, PicturesAreOpaque)
{
    const ModelFolder folder;
    const QString path = folder.path("a.png");
    ASSERT_EQ(runViewer({"--builtin", "--size", "64x64", "-o", path}).exitCode, 0);
    const QImage picture(path);
    for (int y = 0; y < picture.height(); ++y)
        for (int x = 0; x < picture.width(); ++x)
            ASSERT_EQ(qAlpha(picture.pixel(x, y)), 255);
}

TEST(ViewerPictureTest, BothCarriersOfTheDrawIdGiveTheSamePicture)
{
    const QStringList command = kPlainScene + kSmall;
    const QImage byUniform = drawWithViewer(command + QStringList{"--draw-id", "uniform"});
    const QImage byBaseInstance = drawWithViewer(command + QStringList{"--draw-id", "base-instance"});
    expectAlike(byUniform, byBaseInstance, 0, "draw id by uniform and by base instance");
}

TEST(ViewerPictureTest, EveryRoadOfRecordsAndDrawNumbersGivesTheSamePicture)
{
    // Mirrored and turned instances, several meshes, metal and chalk. Tiles are white under one of the managers.
    for (const char* manager : {"sampler", "array2d"})
    {
        const QStringList command = kSceneFromBehind + kSmall + QStringList{"--samples", "4", "--manager", manager};
        const QImage expected = drawWithViewer(command);
        for (const char* carrier : {"ubo", "uniform", "buffer-texture", "texture", "ssbo"})
            for (const char* drawId : {"uniform", "base-instance"})
                expectAlike(
                    expected, drawWithViewer(command + QStringList{"--carrier", carrier, "--draw-id", drawId}), 1,
                    qPrintable(QStringLiteral("%1, %2, %3")
                                   .arg(QLatin1String(carrier), QLatin1String(drawId), QLatin1String(manager))));
    }
}

TEST(ViewerPictureTest, EveryRoadOfRecordsGivesTheSamePictureOnTheFloor)
{
    for (const char* manager : {"sampler", "array2d"})
    {
        const QStringList command = kSceneFromBehind + kSmall + QStringList{"--samples", "4", "--manager", manager};
        const QImage expected = drawWithViewer(command);
        for (const char* carrier : {"ubo", "uniform", "buffer-texture", "texture"})
            expectAlike(expected, drawWithViewer(command + QStringList{"--carrier", carrier}, kFloor), 1,
                        qPrintable(QStringLiteral("%1, %2").arg(QLatin1String(carrier), QLatin1String(manager))));
    }
}

TEST(ViewerPictureTest, ACrowdIsDrawnByEveryRoad)
{
    // More instances of a mesh than one list has records, under some carriers.
    const QStringList command = QStringList{"--crowd", "2000", "--samples", "1"} + kSmall;
    const QImage expected = drawWithViewer(command);
    EXPECT_GT(colorsOf(expected), 500);
    for (const char* carrier : {"ubo", "uniform", "buffer-texture", "texture", "ssbo"})
        for (const char* drawId : {"uniform", "base-instance"})
            expectAlike(expected, drawWithViewer(command + QStringList{"--carrier", carrier, "--draw-id", drawId}), 1,
                        qPrintable(QStringLiteral("%1, %2").arg(QLatin1String(carrier), QLatin1String(drawId))));
}

TEST(ViewerPictureTest, TheFloorProfileGivesTheSamePicture)
{
    const QStringList command = kSceneFromBehind + kSmall;
    expectAlike(drawWithViewer(command), drawWithViewer(command, kFloor), 0, "full and floor profile");
}

TEST(ViewerPictureTest, MoreInstancesThanOneBlockHoldsLookLikeTheSameInOnePiece)
{
    // 1,728 small boxes: a block of 64 KiB holds 256 records.
    const TriangleSoup box = boxSoup({-0.4f, -0.3f, -0.2f}, {0.4f, 0.3f, 0.2f});
    std::vector<QMatrix4x4> nodes;
    TriangleSoup all;
    for (int i = 0; i < 1728; ++i)
    {
        QMatrix4x4 matrix;
        matrix.translate(float(i % 12), float(i / 12 % 12), float(i / 144));
        nodes.push_back(matrix);
        append(all, transformed(box, matrix));
    }
    const ModelFolder folder;
    const QVector3D color(0.3f, 0.6f, 0.2f);
    const QString instanced = folder.write("nodes.gltf", gltfFile(box, nodes, color, 0.6f));
    const QString merged = folder.write("merged.gltf", gltfFile(all, {QMatrix4x4()}, color, 0.6f));
    const QImage picture = drawWithViewer(QStringList{instanced} + kSmall);
    expectFramed(picture);
    for (const char* carrier : {"uniform", "base-instance"})
        expectAlike(drawWithViewer(QStringList{merged} + kSmall),
                    drawWithViewer(QStringList{instanced, "--draw-id", carrier} + kSmall), 1, carrier);
}

TEST(ViewerPictureTest, AMirroredNodeLooksLikeMirroredGeometry)
{
    // Nothing in this shape is symmetric.
    TriangleSoup soup = boxSoup({0, 0, 0}, {2, 1, 1});
    append(soup, boxSoup({0, 1, 0}, {0.7f, 3, 0.6f}));
    append(soup, sphereSoup({1.5f, 1.6f, 0.4f}, 0.6f, 40));
    QMatrix4x4 mirror;
    mirror.rotate(20.0f, 0.0f, 1.0f, 0.3f);
    mirror.scale(-1.3f, 1.0f, 0.8f);

    const ModelFolder folder;
    const QVector3D color(0.5f, 0.4f, 0.1f);
    const QString byNode = folder.write("node.gltf", gltfFile(soup, {mirror}, color, 0.5f));
    const QString byGeometry =
        folder.write("geometry.gltf", gltfFile(transformed(soup, mirror), {QMatrix4x4()}, color, 0.5f));
    const QImage picture = drawWithViewer(QStringList{byNode} + kSmall);
    expectFramed(picture);
    // Rounding moves an edge over a sample here and there.
    const Difference steps = difference(picture, drawWithViewer(QStringList{byGeometry} + kSmall));
    std::printf("mirrored: largest %d, mean %.4f (steps of 255)\n", steps.largest, steps.mean);
    EXPECT_LE(steps.largest, 40);
    EXPECT_LE(steps.mean, 0.01);
}

TEST(ViewerPictureTest, TrianglesWoundTheOtherWayLookTheSame)
{
    TriangleSoup soup = boxSoup({0, 0, 0}, {2, 1, 1});
    append(soup, sphereSoup({1.0f, 1.5f, 0.5f}, 0.5f, 40));
    TriangleSoup reversed = soup;
    for (std::size_t i = 0; i < reversed.indices.size(); i += 3)
        std::swap(reversed.indices[i + 1], reversed.indices[i + 2]);
    // A kind of file that says nothing of sides.
    const ModelFolder folder;
    expectAlike(drawWithViewer(QStringList{folder.write("a.obj", objFile(soup))} + kSmall),
                drawWithViewer(QStringList{folder.write("b.obj", objFile(reversed))} + kSmall), 1, "winding");
}

TEST(ViewerPictureTest, AOneSidedSheetIsNotSeenFromBehind)
{
    TriangleSoup sheet;
    sheet.positions = {{-1, -1, 0}, {1, -1, 0}, {1, 1, 0}, {-1, 1, 0}};
    sheet.normals = {{0, 0, 1}, {0, 0, 1}, {0, 0, 1}, {0, 0, 1}};
    sheet.indices = {0, 1, 2, 0, 2, 3};
    QMatrix4x4 mirror;
    mirror.scale(-1.0f, 1.0f, 1.0f);
    const ModelFolder folder;
    for (const QMatrix4x4& node : {QMatrix4x4(), mirror})
    {
        const QString path = folder.write("a.gltf", gltfFile(sheet, {node}, {0.5f, 0.4f, 0.1f}, 0.5f));
        for (const char* carrier : {"uniform", "base-instance"})
        {
            const QStringList common = {path, "--size", "64x64", "--elevation", "0", "--draw-id", carrier};
            EXPECT_GT(findObject(drawWithViewer(common + QStringList{"--azimuth", "0"})).pixels, 2000) << carrier;
            EXPECT_EQ(findObject(drawWithViewer(common + QStringList{"--azimuth", "180"})).pixels, 0) << carrier;
        }
    }
}

TEST(ViewerPictureTest, BothSidesOfASheetAreLit)
{
    // Seen from behind, the sheet shows the side that its normal turns away from.
    const ModelFolder folder;
    const QString path = folder.write("a.obj", "v -1 0 -1\nv 1 0 -1\nv 1 0 1\nv -1 0 1\nf 4 3 2 1\n");
    const auto middle = [&](const char* elevation)
    {
        const QImage picture = drawWithViewer({path, "--size", "64x64", "--azimuth", "0", "--elevation", elevation});
        return qGreen(picture.pixel(32, 32));
    };
    const int above = middle("60");
    const int below = middle("-60");
    EXPECT_GT(above, 120);
    EXPECT_GT(below, 120) << "the key light stands beside the camera, so this side gets it as well";
    EXPECT_GT(above, below) << "the sky is brighter than the ground";
}

TEST(ViewerPictureTest, MoreSamplesSmoothEdgesAndChangeNothingElse)
{
    const ModelFolder folder;
    const QString path = folder.write("a.obj", objFile(boxSoup({0, 0, 0}, {2, 1, 1})));
    const QImage one = drawWithViewer(QStringList{path, "--samples", "1"} + kSmall);
    const QImage many = drawWithViewer(QStringList{path, "--samples", "16"} + kSmall);
    EXPECT_GT(colorsOf(many), colorsOf(one));
    EXPECT_LE(difference(one, many).mean, 1.5);
}

TEST(ViewerPictureTest, AnglesChangeTheView)
{
    const QStringList command = kPlainScene + kSmall;
    const QImage front = drawWithViewer(command + QStringList{"--azimuth", "0"});
    const QImage back = drawWithViewer(command + QStringList{"--azimuth", "180"});
    expectFramed(front);
    expectFramed(back);
    EXPECT_GT(difference(front, back).mean, 5.0);
}

TEST(ViewerPictureTest, AFullTurnGivesTheSamePicture)
{
    // The angles round differently, which shows along the joints of the floor.
    const QStringList command = kPlainScene + QStringList{"--elevation", "10"} + kSmall;
    EXPECT_LE(difference(drawWithViewer(command + QStringList{"--azimuth", "30"}),
                         drawWithViewer(command + QStringList{"--azimuth", "390"}))
                  .largest,
              4);
}

TEST(ViewerPictureTest, TheUnitOfAModelDoesNotMatter)
{
    // Without normals, so that making them is part of it. Powers of two keep the shape to the bit.
    const ModelFolder folder;
    const auto drawn = [&folder](int exponent)
    {
        const float scale = std::ldexp(1.0f, exponent);
        TriangleSoup soup = boxSoup(QVector3D(0, 0, 0) * scale, QVector3D(3, 2, 1) * scale);
        soup.normals.clear();
        return drawWithViewer(QStringList{folder.write("a.obj", objFile(soup))} + kSmall);
    };
    const QImage picture = drawn(0);
    expectFramed(picture);
    for (const int exponent : {-45, -20, 20, 45})
        expectAlike(picture, drawn(exponent), 1, qPrintable(QString::number(exponent)));
}

TEST(ViewerPictureTest, UpAxisZTurnsTheModel)
{
    // A pole along z: seen from the front it is a dot as it is, and upright when z points up.
    const ModelFolder folder;
    const QString path = folder.write("a.obj", objFile(boxSoup({0, 0, 0}, {1, 1, 20})));
    const QStringList command = {path, "--size", "200x200", "--azimuth", "0", "--elevation", "0"};
    const QRect lying = findObject(drawWithViewer(command)).box;
    const QRect upright = findObject(drawWithViewer(command + QStringList{"--up", "z"})).box;
    EXPECT_NEAR(lying.width(), lying.height(), 2);
    EXPECT_GT(upright.height(), 10 * upright.width());
}

TEST(ViewerPictureTest, APictureOfOnePixelIsDrawn)
{
    EXPECT_EQ(drawWithViewer({"--builtin", "--size", "1x1"}).size(), QSize(1, 1));
}
