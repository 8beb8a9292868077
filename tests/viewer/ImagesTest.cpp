// SPDX-License-Identifier: MIT
// Models with pictures on them: each is held against the same model made of plain colours, or against what its
// coordinates say.
#include "ModelFiles.h"
#include "ViewerRun.h"

#include <gtest/gtest.h>

#include <QBuffer>
#include <QFile>
#include <QImage>

#include <cmath>

namespace
{

const QStringList kFront = {"--size", "200x200", "--azimuth", "0", "--elevation", "0", "--samples", "1"};

constexpr QRgb kRed = 0xFFFF0000;
constexpr QRgb kGreen = 0xFF00FF00;
constexpr QRgb kBlue = 0xFF0000FF;
constexpr QRgb kWhite = 0xFFFFFFFF;

/// Red and green above, blue and white below.
QImage quarters()
{
    QImage image(64, 64, QImage::Format_RGB32);
    for (int y = 0; y < 64; ++y)
        for (int x = 0; x < 64; ++x)
            image.setPixel(x, y, y < 32 ? (x < 32 ? kRed : kGreen) : (x < 32 ? kBlue : kWhite));
    return image;
}

QByteArray encoded(const QImage& image, const char* format)
{
    QByteArray bytes;
    QBuffer buffer(&bytes);
    EXPECT_TRUE(buffer.open(QIODevice::WriteOnly) && image.save(&buffer, format, 100));
    return bytes;
}

/// A square from -1 to 1 that faces +z, with texture coordinates from 0 to `repeats`.
QByteArray squareObj(const QByteArray& material, float repeats = 1.0f)
{
    const QByteArray r = QByteArray::number(repeats);
    return "mtllib m.mtl\nv -1 -1 0\nv 1 -1 0\nv 1 1 0\nv -1 1 0\nvt 0 0\nvt " + r + " 0\nvt " + r + " " + r +
           "\nvt 0 " + r + "\nvn 0 0 1\nusemtl " + material + "\nf 1/1/1 2/2/1 3/3/1 4/4/1\n";
}

/// The folder's square with a picture, drawn.
QImage drawSquare(const ModelFolder& folder, const QByteArray& imageName, float repeats = 1.0f,
                  const Environment& environment = {})
{
    folder.write("m.mtl", "newmtl m\nKd 1 1 1\nmap_Kd " + imageName + "\n");
    return drawWithViewer(QStringList{folder.write("square.obj", squareObj("m", repeats))} + kFront, environment);
}

/// The square in one plain colour of 0 and 1 alone, which every encoding leaves as it is.
QImage drawPlainSquare(const QByteArray& diffuse)
{
    const ModelFolder folder;
    folder.write("m.mtl", "newmtl m\nKd " + diffuse + "\n");
    return drawWithViewer(QStringList{folder.write("square.obj", squareObj("m"))} + kFront);
}

struct PlainSquares
{
    QImage red = drawPlainSquare("1 0 0");
    QImage green = drawPlainSquare("0 1 0");
    QImage blue = drawPlainSquare("0 0 1");
    QImage white = drawPlainSquare("1 1 1");

    static const PlainSquares& get()
    {
        static const PlainSquares squares;
        return squares;
    }
    const QImage& of(QRgb color) const
    {
        return color == kRed ? red : color == kGreen ? green : color == kBlue ? blue : white;
    }
};

/// Where a point of the square is in the picture, from -1 to 1: the square fills 86 % of it.
QPoint pixelAt(float x, float y)
{
    return {100 + int(std::lround(86 * x)), 100 - int(std::lround(86 * y))};
}

/// That a point of the picture has the colour that the same point has on a plain square.
void expectColor(const QImage& picture, float x, float y, QRgb color, int tolerance = 1)
{
    const QPoint place = pixelAt(x, y);
    const QRgb actual = picture.pixel(place);
    const QRgb expected = PlainSquares::get().of(color).pixel(place);
    EXPECT_LE(std::abs(qRed(actual) - qRed(expected)), tolerance) << x << " " << y;
    EXPECT_LE(std::abs(qGreen(actual) - qGreen(expected)), tolerance) << x << " " << y;
    EXPECT_LE(std::abs(qBlue(actual) - qBlue(expected)), tolerance) << x << " " << y;
}

void expectQuarters(const QImage& picture, int tolerance = 1)
{
    expectColor(picture, -0.5f, 0.5f, kRed, tolerance);
    expectColor(picture, 0.5f, 0.5f, kGreen, tolerance);
    expectColor(picture, -0.5f, -0.5f, kBlue, tolerance);
    expectColor(picture, 0.5f, -0.5f, kWhite, tolerance);
}

/// A glTF file of the square with `material` and `sampler` as JSON, its picture inside.
QByteArray squareGltf(const QByteArray& material, const QByteArray& sampler, const QByteArray& imageUri, float repeats)
{
    const float vertices[] = {-1, -1, 0, 1, -1, 0, 1, 1, 0, -1, 1, 0};
    // Here the top row of the picture is at 0.
    const float texCoords[] = {0, repeats, repeats, repeats, repeats, 0, 0, 0};
    const quint16 indices[] = {0, 1, 2, 0, 2, 3};
    QByteArray data(reinterpret_cast<const char*>(vertices), sizeof vertices);
    data.append(reinterpret_cast<const char*>(texCoords), sizeof texCoords);
    data.append(reinterpret_cast<const char*>(indices), sizeof indices);
    return R"({"asset":{"version":"2.0"},"scene":0,"scenes":[{"nodes":[0]}],"nodes":[{"mesh":0}],
"meshes":[{"primitives":[{"attributes":{"POSITION":0,"TEXCOORD_0":1},"indices":2,"material":0}]}],
"materials":[)" +
           material + R"(],"textures":[{"source":0,"sampler":0}],"samplers":[)" + sampler + R"(],"images":[{"uri":")" +
           imageUri + R"("}],
"accessors":[{"bufferView":0,"componentType":5126,"count":4,"type":"VEC3","min":[-1,-1,0],"max":[1,1,0]},
{"bufferView":1,"componentType":5126,"count":4,"type":"VEC2"},
{"bufferView":2,"componentType":5123,"count":6,"type":"SCALAR"}],
"bufferViews":[{"buffer":0,"byteOffset":0,"byteLength":48},{"buffer":0,"byteOffset":48,"byteLength":32},
{"buffer":0,"byteOffset":80,"byteLength":12}],
"buffers":[{"byteLength":92,"uri":"data:application/octet-stream;base64,)" +
           data.toBase64() + R"("}]})";
}

const QByteArray kMaterial = R"({"pbrMetallicRoughness":{"baseColorTexture":{"index":0},"metallicFactor":0,
"roughnessFactor":0.6}})";

QByteArray dataUri(const QImage& image)
{
    return "data:image/png;base64," + encoded(image, "PNG").toBase64();
}

QImage drawGltfSquare(const QByteArray& material, const QByteArray& sampler, const QImage& image, float repeats = 1.0f)
{
    const ModelFolder folder;
    return drawWithViewer(
        QStringList{folder.write("square.gltf", squareGltf(material, sampler, dataUri(image), repeats))} + kFront);
}

} // namespace

TEST(ViewerImagesTest, APngLandsWhereTheCoordinatesSay)
{
    const ModelFolder folder;
    folder.write("quarters.png", encoded(quarters(), "PNG"));
    expectQuarters(drawSquare(folder, "quarters.png"));
}

TEST(ViewerImagesTest, AJpegLandsWhereTheCoordinatesSay)
{
    const ModelFolder folder;
    folder.write("quarters.jpg", encoded(quarters(), "JPG"));
    expectQuarters(drawSquare(folder, "quarters.jpg"), 4); // the encoding loses a little
}

/// Of 16 bits a channel; written by hand.
QByteArray farbfeld(const QImage& image)
{
    QByteArray bytes = "farbfeld";
    const auto append = [&bytes](quint32 value, int size)
    {
        for (int byte = size - 1; byte >= 0; --byte)
            bytes.append(char(value >> (8 * byte)));
    };
    append(quint32(image.width()), 4);
    append(quint32(image.height()), 4);
    for (int y = 0; y < image.height(); ++y)
        for (int x = 0; x < image.width(); ++x)
        {
            const QRgb rgb = image.pixel(x, y);
            for (const int channel : {qRed(rgb), qGreen(rgb), qBlue(rgb), qAlpha(rgb)})
                append(quint32(channel * 257), 2);
        }
    return bytes;
}

TEST(ViewerImagesTest, AFormatOfTheViewersOwnIsReadWhateverItsSuffix)
{
    const ModelFolder folder;
    for (const char* const name : {"quarters.ff", "quarters.png"})
    {
        SCOPED_TRACE(name);
        folder.write(name, farbfeld(quarters()));
        expectQuarters(drawSquare(folder, name));
    }
}

TEST(ViewerImagesTest, ATruncatedPictureOfThatFormatIsWhite)
{
    const ModelFolder folder;
    folder.write("quarters.ff", farbfeld(quarters()).chopped(1));
    expectColor(drawSquare(folder, "quarters.ff"), -0.5f, 0.5f, kWhite);
}

TEST(ViewerImagesTest, TheFloorProfileGivesTheSamePicture)
{
    const ModelFolder folder;
    folder.write("quarters.png", encoded(quarters(), "PNG"));
    expectQuarters(drawSquare(folder, "quarters.png", 1.0f,
                              {{"MESA_GL_VERSION_OVERRIDE", "3.2"},
                               {"MESA_EXTENSION_OVERRIDE", "-GL_ARB_base_instance -GL_ARB_shader_draw_parameters "
                                                           "-GL_EXT_texture_filter_anisotropic"}}));
}

TEST(ViewerImagesTest, TheMaterialsColorIsMultiplied)
{
    const ModelFolder folder;
    folder.write("quarters.png", encoded(quarters(), "PNG"));
    folder.write("m.mtl", "newmtl m\nKd 1 0 0\nmap_Kd quarters.png\n");
    const QImage picture = drawWithViewer(QStringList{folder.write("square.obj", squareObj("m"))} + kFront);
    expectColor(picture, -0.5f, 0.5f, kRed);
    expectColor(picture, 0.5f, -0.5f, kRed);
}

TEST(ViewerImagesTest, AMiddleGreyIsDecodedAsSrgb)
{
    const ModelFolder folder;
    QImage grey(8, 8, QImage::Format_RGB32);
    grey.fill(qRgb(128, 128, 128));
    folder.write("grey.png", encoded(grey, "PNG"));
    const QPoint middle = pixelAt(0.0f, 0.0f);
    const int drawn = qGreen(drawSquare(folder, "grey.png").pixel(middle));
    // The plain colour is decoded by the power 2.2, which is close to the curve of sRGB at 128.
    const int plain = qGreen(drawPlainSquare("0.50196 0.50196 0.50196").pixel(middle));
    EXPECT_NEAR(drawn, plain, 2);
    EXPECT_LT(drawn, qGreen(PlainSquares::get().white.pixel(middle)) - 20);
}

TEST(ViewerImagesTest, CoordinatesBeyondOneRepeat)
{
    const ModelFolder folder;
    folder.write("quarters.png", encoded(quarters(), "PNG"));
    const QImage picture = drawSquare(folder, "quarters.png", 2.0f);
    for (const float x : {-0.75f, 0.25f})
        for (const float y : {0.75f, -0.25f})
        {
            expectColor(picture, x, y, kRed);
            expectColor(picture, x + 0.5f, y, kGreen);
            expectColor(picture, x, y - 0.5f, kBlue);
            expectColor(picture, x + 0.5f, y - 0.5f, kWhite);
        }
}

TEST(ViewerImagesTest, ASamplerMayMirrorAndClamp)
{
    const QImage mirrored = drawGltfSquare(kMaterial, R"({"wrapS":33648,"wrapT":33648})", quarters(), 2.0f);
    for (const float x : {-1.0f, 1.0f})
        for (const float y : {-1.0f, 1.0f})
        {
            // Four pictures that meet like in a mirror: red in the corners, white in the middle.
            expectColor(mirrored, 0.75f * x, 0.75f * y, kRed);
            expectColor(mirrored, 0.25f * x, 0.25f * y, kWhite);
            expectColor(mirrored, 0.25f * x, 0.75f * y, kGreen);
            expectColor(mirrored, 0.75f * x, 0.25f * y, kBlue);
        }
    const QImage clamped = drawGltfSquare(kMaterial, R"({"wrapS":33071,"wrapT":33071})", quarters(), 2.0f);
    expectColor(clamped, -0.75f, 0.75f, kRed);
    expectColor(clamped, 0.5f, 0.75f, kGreen);
    expectColor(clamped, -0.75f, -0.5f, kBlue);
    expectColor(clamped, 0.75f, -0.75f, kWhite);
}

TEST(ViewerImagesTest, APictureInsideTheModelIsDrawn)
{
    expectQuarters(drawGltfSquare(kMaterial, "{}", quarters()));
}

TEST(ViewerImagesTest, TexelsBelowTheCutoffAreHoles)
{
    QImage image = quarters().convertToFormat(QImage::Format_ARGB32);
    for (int y = 0; y < 32; ++y)
        for (int x = 0; x < 32; ++x)
            image.setPixelColor(x, y, QColor(255, 0, 0, 60));
    const QByteArray masked = R"({"alphaMode":"MASK","alphaCutoff":0.25,"pbrMetallicRoughness":{
"baseColorTexture":{"index":0},"metallicFactor":0,"roughnessFactor":0.6}})";
    const QImage picture = drawGltfSquare(masked, "{}", image);
    const QPoint hole = pixelAt(-0.5f, 0.5f);
    EXPECT_LT(qRed(picture.pixel(hole)), qRed(PlainSquares::get().red.pixel(hole)) / 2);
    expectColor(picture, 0.5f, 0.5f, kGreen);
    // Below the cutoff only: as opaque material the same texels are drawn.
    expectColor(drawGltfSquare(kMaterial, "{}", image), -0.5f, 0.5f, kRed);
}

TEST(ViewerImagesTest, AMissingPictureIsWhiteAndNamedInTheLog)
{
    const ModelFolder folder;
    folder.write("m.mtl", "newmtl m\nKd 1 1 1\nmap_Kd nowhere.png\n");
    const QString output = folder.path("out.png");
    const ViewerRun run =
        runViewer(QStringList{folder.write("square.obj", squareObj("m")), "--output", output} + kFront);
    EXPECT_EQ(run.exitCode, 0) << run.errors.constData();
    EXPECT_EQ(run.errors.count("Cannot load nowhere.png"), 1) << run.errors.constData();
    EXPECT_EQ(run.errors.count('\n'), 2) << run.errors.constData();
    expectColor(QImage(output), -0.5f, 0.5f, kWhite);
}

TEST(ViewerImagesTest, APictureThatCannotBeReadIsWhiteAndNamedOnce)
{
    const ModelFolder folder;
    folder.write("broken.png", "this is no picture");
    folder.write("m.mtl", "newmtl m\nKd 1 1 1\nmap_Kd broken.png\n");
    const QString output = folder.path("out.png");
    const ViewerRun run =
        runViewer(QStringList{folder.write("square.obj", squareObj("m")), "--output", output} + kFront);
    EXPECT_EQ(run.exitCode, 0) << run.errors.constData();
    EXPECT_EQ(run.errors.count("Failed to load " + folder.path("broken.png").toUtf8()), 1) << run.errors.constData();
    EXPECT_EQ(run.errors.count('\n'), 2) << run.errors.constData();
    expectColor(QImage(output), -0.5f, 0.5f, kWhite);
}

TEST(ViewerImagesTest, ADamagedPictureInsideTheModelIsWhiteAndNamed)
{
    const ModelFolder folder;
    const QByteArray uri = "data:image/png;base64," + QByteArray("this is no picture").toBase64();
    const QString output = folder.path("out.png");
    const ViewerRun run = runViewer(
        QStringList{folder.write("square.gltf", squareGltf(kMaterial, "{}", uri, 1.0f)), "--output", output} + kFront);
    EXPECT_EQ(run.exitCode, 0) << run.errors.constData();
    EXPECT_EQ(run.errors.count("Cannot load "), 1) << run.errors.constData();
    expectColor(QImage(output), -0.5f, 0.5f, kWhite);
}

TEST(ViewerImagesTest, NamesFromOtherSystemsAreFound)
{
    const ModelFolder folder;
    folder.write("quarters of a square.png", encoded(quarters(), "PNG"));
    for (const char* const name : {"quarters of a square.png", "C:\\models\\quarters of a square.png",
                                   "QUARTERS OF A SQUARE.PNG", "textures/quarters of a square.png"})
    {
        SCOPED_TRACE(name);
        expectQuarters(drawSquare(folder, name));
    }
    const QString model =
        folder.write("square.gltf", squareGltf(kMaterial, "{}", "quarters%20of%20a%20square.png", 1.0f));
    expectQuarters(drawWithViewer(QStringList{model} + kFront));
}

TEST(ViewerImagesTest, MorePicturesThanSlotsAreAllDrawn)
{
    // A row of 12 strips, each with a picture of its own.
    constexpr int kStrips = 12;
    const ModelFolder folder;
    QByteArray materials;
    QByteArray obj = "mtllib m.mtl\nvt 0 0\nvt 1 0\nvt 1 1\nvt 0 1\nvn 0 0 1\n";
    for (int i = 0; i < kStrips; ++i)
    {
        const QByteArray number = QByteArray::number(i);
        QImage image(4, 4, QImage::Format_RGB32);
        image.fill(i % 3 == 0 ? kRed : i % 3 == 1 ? kGreen : kBlue);
        folder.write("image" + number + ".png", encoded(image, "PNG"));
        materials += "newmtl m" + number + "\nKd 1 1 1\nmap_Kd image" + number + ".png\n";
        const QByteArray left = QByteArray::number(-1.0 + 2.0 * i / kStrips);
        const QByteArray right = QByteArray::number(-1.0 + 2.0 * (i + 1) / kStrips);
        obj += "v " + left + " -1 0\nv " + right + " -1 0\nv " + right + " 1 0\nv " + left + " 1 0\nusemtl m" + number +
               "\nf -4/1/1 -3/2/1 -2/3/1 -1/4/1\n";
    }
    folder.write("m.mtl", materials);
    const QImage picture = drawWithViewer(QStringList{folder.write("strips.obj", obj)} + kFront);
    for (int i = 0; i < kStrips; ++i)
        expectColor(picture, float(-1.0 + (2.0 * i + 1.0) / kStrips), 0.3f,
                    i % 3 == 0   ? kRed
                    : i % 3 == 1 ? kGreen
                                 : kBlue);
}

TEST(ViewerImagesTest, AMeshWithoutCoordinatesKeepsItsColor)
{
    const ModelFolder folder;
    folder.write("quarters.png", encoded(quarters(), "PNG"));
    folder.write("m.mtl", "newmtl m\nKd 0 1 0\nmap_Kd quarters.png\n");
    const QByteArray obj = "mtllib m.mtl\nv -1 -1 0\nv 1 -1 0\nv 1 1 0\nv -1 1 0\nvn 0 0 1\nusemtl m\n"
                           "f 1//1 2//1 3//1 4//1\n";
    const QImage picture = drawWithViewer(QStringList{folder.write("square.obj", obj)} + kFront);
    expectColor(picture, -0.5f, 0.5f, kGreen);
    expectColor(picture, 0.5f, -0.5f, kGreen);
}
