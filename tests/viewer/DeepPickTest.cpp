// SPDX-License-Identifier: MIT
// vrk-deep-pick as a child process: what it prints of known models, and what a person meets who gives it something
// that it can't use.
#include "ModelFiles.h"
#include "ViewerRun.h"

#include <gtest/gtest.h>

#include <QRegularExpression>

#include <algorithm>
#include <cmath>
#include <numeric>
#include <random>

namespace
{

const QString kNumber = QStringLiteral("([-+.0-9a-z]+)");
const QString kPlaces =
    QStringLiteral("\"([^\"]*)\" instance (\\d+) triangle (\\d+) position \\(N, N, N\\) normal \\(N, N, N\\) "
                   "texcoord \\(N, N\\) depth N")
        .replace(QLatin1Char('N'), kNumber);
const QString kDifferences = QStringLiteral(" off by position N of N, normal N of N, texcoord N of N, depth N of N")
                                 .replace(QLatin1Char('N'), kNumber);

struct Surface
{
    int number = 0;
    QString object;
    int instance = 0;
    int triangle = 0;
    QVector3D position;
    QVector3D normal;
    float u = 0.0f;
    float v = 0.0f;
    double depth = 0.0;
    double differences[4] = {}; ///< of the ray: position, normal, texture coordinate, depth
};

struct Picked
{
    ViewerRun run;
    QList<Surface> fragments;
    QList<Surface> rays; ///< of those triangles that have a fragment too
    int atEdges = 0;     ///< triangles that the ray meets at their edge, without a fragment
};

Surface surfaceOf(const QRegularExpressionMatch& match)
{
    const auto number = [&](int group) { return match.captured(group).toFloat(); };
    Surface surface;
    surface.number = match.captured(1).toInt();
    surface.object = match.captured(2);
    surface.instance = match.captured(3).toInt();
    surface.triangle = match.captured(4).toInt();
    surface.position = {number(5), number(6), number(7)};
    surface.normal = {number(8), number(9), number(10)};
    surface.u = number(11);
    surface.v = number(12);
    surface.depth = match.captured(13).toDouble();
    for (int i = 0; i < 4; ++i)
        surface.differences[i] = match.captured(14 + 2 * i).toDouble();
    return surface;
}

ViewerRun runPick(const QStringList& arguments, const Environment& environment = {})
{
    return runProgram(QStringLiteral(VRKDEEPPICK_PROGRAM), arguments, environment);
}

/// Runs to the end and reads what was printed; each line has to be of a known form.
Picked pick(const QStringList& arguments, const Environment& environment = {})
{
    static const QRegularExpression fragment(QStringLiteral("^(\\d+) %1$").arg(kPlaces));
    static const QRegularExpression ray(QStringLiteral("^(\\d+) ray %1%2$").arg(kPlaces, kDifferences));
    static const QRegularExpression edge(QStringLiteral("^(\\d+) ray %1 at its edge, no fragment$").arg(kPlaces));
    Picked picked;
    picked.run = runPick(arguments, environment);
    EXPECT_TRUE(picked.run.ended);
    EXPECT_EQ(picked.run.exitCode, 0) << picked.run.errors.constData() << picked.run.output.constData();
    const QStringList lines = QString::fromUtf8(picked.run.output).split(QLatin1Char('\n'), Qt::SkipEmptyParts);
    for (const QString& line : lines)
    {
        if (const auto match = fragment.match(line); match.hasMatch())
            picked.fragments.append(surfaceOf(match));
        else if (const auto rayMatch = ray.match(line); rayMatch.hasMatch())
            picked.rays.append(surfaceOf(rayMatch));
        else if (edge.match(line).hasMatch())
            ++picked.atEdges;
        else
            ADD_FAILURE() << qPrintable(line);
    }
    return picked;
}

void expectFrontToBack(const QList<Surface>& surfaces)
{
    for (int i = 0; i < surfaces.size(); ++i)
    {
        EXPECT_EQ(surfaces[i].number, i + 1);
        EXPECT_TRUE(surfaces[i].depth >= 0.0 && surfaces[i].depth <= 1.0) << surfaces[i].depth;
        EXPECT_LE(surfaces[qMax(i - 1, 0)].depth, surfaces[i].depth) << i;
    }
}

/// Every fragment has its ray beside it, and `size`, that of the model, says how near they have to be.
void expectChecked(const Picked& picked, double size)
{
    expectFrontToBack(picked.fragments);
    ASSERT_EQ(picked.rays.size(), picked.fragments.size());
    const double most[] = {1e-5 * size, 1e-4, 1e-4, 1e-5};
    for (int i = 0; i < picked.rays.size(); ++i)
    {
        const Surface& fragment = picked.fragments[i];
        const Surface& ray = picked.rays[i];
        EXPECT_EQ(fragment.object, ray.object);
        EXPECT_EQ(fragment.instance, ray.instance);
        EXPECT_EQ(fragment.triangle, ray.triangle);
        for (int k = 0; k < 4; ++k)
            EXPECT_LE(ray.differences[k], most[k]) << i << ": " << k;
        EXPECT_NEAR(double((fragment.position - ray.position).length()), ray.differences[0], 1e-6 * size);
    }
}

void expectNear(const QVector3D& found, const QVector3D& wanted, float tolerance)
{
    EXPECT_LE((found - wanted).length(), tolerance) << found.x() << ", " << found.y() << ", " << found.z() << " for "
                                                    << wanted.x() << ", " << wanted.y() << ", " << wanted.z();
}

/// Its middle is a pixel's middle.
const QStringList kOddSize = {"--size", "301x201", "--pick", "150,100"};
const QStringList kFromFront = {"--azimuth", "0", "--elevation", "0"};

const Environment kFloorWithout = {{"MESA_GL_VERSION_OVERRIDE", "3.2"}};

QString writeBoxes(const ModelFolder& folder, const std::vector<QMatrix4x4>& nodes)
{
    return folder.write("boxes.gltf", gltfFile(boxSoup({-1, -1, -1}, {1, 1, 1}), nodes, {0.5f, 0.5f, 0.5f}, 0.5f));
}

/// Squares from -1 to 1 at each of `places` along z, two objects in turn, with their own corners and a texture that
/// goes from 0 to 1 once in each direction.
QByteArray squaresFile(const std::vector<float>& places)
{
    QByteArray text;
    for (std::size_t i = 0; i < places.size(); ++i)
        for (const auto& [x, y] : {std::pair(-1, -1), std::pair(1, -1), std::pair(1, 1), std::pair(-1, 1)})
            text += QString::asprintf("v %d %d %.9g\nvt %d %d\n", x, y, double(places[i]), (x + 1) / 2, (y + 1) / 2)
                        .toLatin1();
    for (const std::size_t object : {0, 1})
    {
        text += object == 0 ? "o even\n" : "o odd\n";
        for (std::size_t i = object; i < places.size(); i += 2)
        {
            const auto first = int(4 * i + 1);
            text += QString::asprintf("f %d/%d %d/%d %d/%d\nf %d/%d %d/%d %d/%d\n", first, first, first + 1, first + 1,
                                      first + 2, first + 2, first, first, first + 2, first + 2, first + 3, first + 3)
                        .toLatin1();
        }
    }
    return text;
}

/// The run says `words` in one line, fails, prints nothing, and leaves `folder` as it was.
void expectRefused(const ModelFolder& folder, const QStringList& arguments, const QString& words,
                   const Environment& environment = {})
{
    const QStringList before = folder.entries();
    const ViewerRun run = runPick(arguments, environment);
    const std::string command = arguments.join(QLatin1Char(' ')).toStdString();
    EXPECT_TRUE(run.ended) << command;
    EXPECT_EQ(run.exitCode, 1) << command;
    EXPECT_EQ(run.output, QByteArray()) << command;
    EXPECT_EQ(run.errors.count('\n'), 1) << command << " said: " << run.errors.constData();
    EXPECT_TRUE(run.errors.startsWith("vrk-deep-pick: ")) << run.errors.constData();
    EXPECT_TRUE(QString::fromUtf8(run.errors).contains(words)) << command << " said: " << run.errors.constData();
    EXPECT_EQ(folder.entries(), before) << command;
}

} // namespace

// ---- what is found -------------------------------------------------------------------------------------------------

TEST(DeepPickTest, TheMiddleOfTheBuiltInSceneIsPedestalAndFloor)
{
    const Picked picked = pick({"--pick", "480,320", "--check"});
    expectChecked(picked, 6.0);
    ASSERT_EQ(picked.fragments.size(), 4);
    for (const int i : {0, 1})
        EXPECT_EQ(picked.fragments[i].object, QStringLiteral("pedestal"));
    for (const int i : {2, 3})
        EXPECT_EQ(picked.fragments[i].object, QStringLiteral("floor"));
    EXPECT_NEAR(picked.fragments[2].position.y(), 0.36f, 2e-5f);
    expectNear(picked.fragments[2].normal, {0, 1, 0}, 1e-6f);
    EXPECT_NEAR(picked.fragments[3].position.y(), 0.0f, 2e-5f);
    expectNear(picked.fragments[3].normal, {0, -1, 0}, 1e-6f);
}

TEST(DeepPickTest, TheBuiltInSceneAgreesWithTheRayWhereverItIsPicked)
{
    const QStringList views[] = {{"--pick", "210,120"},
                                 {"--pick", "765,325"},
                                 {"--pick", "560,180"},
                                 {"--pick", "385,268", "--azimuth", "35"},
                                 {"--pick", "480,95", "--elevation", "0"},
                                 {"--pick", "300,320", "--azimuth", "-120", "--elevation", "60"},
                                 {"--pick", "480,320", "--elevation", "90"},
                                 {"--pick", "480,320", "--elevation", "-90"},
                                 {"--pick", "90,60", "--size", "150x101"},
                                 {"--pick", "55,300", "--size", "120x600"}};
    int fragments = 0;
    for (const QStringList& view : views)
    {
        const Picked picked = pick(view + QStringList{"--check"});
        SCOPED_TRACE(qPrintable(view.join(QLatin1Char(' '))));
        expectChecked(picked, 6.0);
        fragments += int(picked.fragments.size());
    }
    EXPECT_GT(fragments, 30);
}

TEST(DeepPickTest, TheSameRunPrintsTheSame)
{
    const QStringList arguments = {"--pick", "385,268", "--check"};
    const ViewerRun first = runPick(arguments);
    EXPECT_FALSE(first.output.isEmpty());
    EXPECT_EQ(runPick(arguments).output, first.output);
}

TEST(DeepPickTest, ABoxHasAFrontAndABack)
{
    const ModelFolder folder;
    const QString box = writeBoxes(folder, {QMatrix4x4()});
    const Picked picked = pick(QStringList{box} + kOddSize + kFromFront + QStringList{"--check"});
    expectChecked(picked, 2.0);
    ASSERT_EQ(picked.fragments.size(), 2);
    expectNear(picked.fragments[0].position, {0, 0, 1}, 1e-5f);
    expectNear(picked.fragments[0].normal, {0, 0, 1}, 1e-6f);
    expectNear(picked.fragments[1].position, {0, 0, -1}, 1e-5f);
    expectNear(picked.fragments[1].normal, {0, 0, -1}, 1e-6f);
}

TEST(DeepPickTest, InstancesStandWhereTheirMatricesPutThem)
{
    // Behind each other: one turned, one stretched and mirrored, one small.
    const ModelFolder folder;
    std::vector<QMatrix4x4> nodes(3);
    nodes[0].translate(0.0f, 0.0f, -6.0f);
    nodes[0].rotate(90.0f, 0.0f, 1.0f, 0.0f);
    nodes[1].scale(-2.0f, 3.0f, 0.5f);
    nodes[2].translate(0.0f, 0.0f, 4.0f);
    nodes[2].scale(0.25f);
    const Picked picked = pick(QStringList{writeBoxes(folder, nodes)} + kOddSize + kFromFront + QStringList{"--check"});
    expectChecked(picked, 7.0);
    ASSERT_EQ(picked.fragments.size(), 6);
    const int instances[] = {2, 2, 1, 1, 0, 0};
    const float places[] = {4.25f, 3.75f, 0.5f, -0.5f, -5.0f, -7.0f};
    for (int i = 0; i < 6; ++i)
    {
        EXPECT_EQ(picked.fragments[i].instance, instances[i]) << i;
        // The middle of the picture is not quite that of the boxes, since nearer ones look larger.
        EXPECT_NEAR(picked.fragments[i].position.z(), places[i], 1e-4f) << i;
        expectNear(picked.fragments[i].normal, {0, 0, i % 2 == 0 ? 1.0f : -1.0f}, 1e-5f);
    }
}

TEST(DeepPickTest, NormalsOfAStretchedAndMirroredBoxStandOnItsSides)
{
    const ModelFolder folder;
    QMatrix4x4 node;
    node.rotate(30.0f, 1.0f, 2.0f, 3.0f);
    node.scale(-3.0f, 1.0f, 0.4f);
    const Picked picked =
        pick({writeBoxes(folder, {node}), "--size", "301x201", "--pick", "140,95", "--elevation", "40", "--check"});
    expectChecked(picked, 3.2);
    ASSERT_EQ(picked.fragments.size(), 2);
    const QMatrix4x4 boxFromWorld = node.inverted();
    for (const Surface& fragment : picked.fragments)
    {
        EXPECT_NEAR(fragment.normal.length(), 1.0f, 1e-6f);
        // Where it is on the box says which side it is, and so the normal: away from the middle, across the side.
        const QVector3D place = boxFromWorld.map(fragment.position);
        for (int axis = 0; axis < 3; ++axis)
        {
            if (std::abs(std::abs(place[axis]) - 1.0f) > 1e-4f)
                continue;
            for (int other = 0; other < 3; ++other)
            {
                QVector3D along;
                along[other] = 1.0f;
                const float cosine = QVector3D::dotProduct(fragment.normal, node.mapVector(along).normalized());
                EXPECT_NEAR(cosine, other != axis ? 0.0f : place[axis] > 0.0f ? 1.0f : -1.0f, 1e-4f);
            }
        }
    }
}

TEST(DeepPickTest, TextureCoordinatesAndIndicesOfEachObjectAreItsOwn)
{
    const ModelFolder folder;
    const QString squares = folder.write("squares.obj", squaresFile({0.0f, 1.0f, 0.5f, -0.5f}));
    const Picked picked = pick(QStringList{squares, "--size", "300x200", "--pick", "171,62", "--check"} + kFromFront);
    expectChecked(picked, 2.0);
    ASSERT_EQ(picked.fragments.size(), 4);
    const char* const objects[] = {"odd", "even", "even", "odd"};
    const float places[] = {1.0f, 0.5f, 0.0f, -0.5f};
    for (int i = 0; i < 4; ++i)
    {
        const Surface& fragment = picked.fragments[i];
        EXPECT_EQ(fragment.object, QLatin1String(objects[i])) << i;
        EXPECT_NEAR(fragment.position.z(), places[i], 1e-5f);
        EXPECT_GT(fragment.position.x(), 0.05f);
        EXPECT_GT(fragment.position.y(), 0.05f);
        EXPECT_NEAR(fragment.u, 0.5f * (fragment.position.x() + 1.0f), 1e-5f);
        EXPECT_NEAR(std::abs(fragment.v - 0.5f), 0.5f * fragment.position.y(), 1e-5f); // files differ in the way up
    }
}

TEST(DeepPickTest, ADeepPileIsPrintedFrontToBack)
{
    constexpr int kCount = 150;
    std::vector<float> places(kCount);
    std::iota(places.begin(), places.end(), 0.0f);
    for (float& place : places)
        place /= 100.0f;
    std::shuffle(places.begin(), places.end(), std::mt19937(5));
    const ModelFolder folder;
    const QString squares = folder.write("squares.obj", squaresFile(places));
    const Picked picked = pick(QStringList{squares, "--size", "60x40", "--pick", "28,18", "--check"} + kFromFront);
    expectChecked(picked, 2.0);
    ASSERT_EQ(picked.fragments.size(), kCount);
    for (int i = 0; i < kCount; ++i)
        EXPECT_NEAR(picked.fragments[i].position.z(), float(kCount - 1 - i) / 100.0f, 2e-5f);
}

TEST(DeepPickTest, AHundredInstancesAreToldApart)
{
    const ModelFolder folder;
    std::vector<QMatrix4x4> nodes(100);
    for (std::size_t i = 0; i < nodes.size(); ++i)
        nodes[i].translate(0.0f, 0.0f, -3.0f * float(i));
    const Picked picked = pick(QStringList{writeBoxes(folder, nodes)} + kOddSize + kFromFront + QStringList{"--check"});
    expectChecked(picked, 300.0);
    ASSERT_EQ(picked.fragments.size(), 200);
    for (int i = 0; i < 200; ++i)
        EXPECT_EQ(picked.fragments[i].instance, i / 2);
}

TEST(DeepPickTest, AModelOfAnyUnitIsPicked)
{
    for (const float unit : {1e-9f, 1e9f})
    {
        const ModelFolder folder;
        const TriangleSoup soup = boxSoup(QVector3D(-unit, -unit, -unit), QVector3D(unit, unit, unit));
        const QString box = folder.write("box.obj", objFile(soup));
        const Picked picked = pick(QStringList{box} + kOddSize + kFromFront + QStringList{"--check"});
        expectChecked(picked, 2.0 * double(unit));
        ASSERT_EQ(picked.fragments.size(), 2);
        expectNear(picked.fragments[0].position / unit, {0, 0, 1}, 1e-5f);
        expectNear(picked.fragments[1].position / unit, {0, 0, -1}, 1e-5f);
    }
}

TEST(DeepPickTest, UnderTheBackgroundThereIsNothingAndThatIsSaid)
{
    for (const QStringList& more : {QStringList(), QStringList{"--check"}})
    {
        const Picked picked = pick(QStringList{"--pick", "3,4"} + more);
        EXPECT_EQ(picked.run.output, QByteArray());
        EXPECT_TRUE(picked.run.errors.contains("there is nothing under the pixel 3,4\n"))
            << picked.run.errors.constData();
    }
}

TEST(DeepPickTest, TheBufferGrowsToWhatIsThere)
{
    const QStringList arguments = {"--pick", "385,268", "--check"};
    const Picked once = pick(arguments);
    EXPECT_TRUE(once.run.errors.contains("drawn once by")) << once.run.errors.constData();
    for (const char* room : {"1", "1000", "100000"})
    {
        const Picked more = pick(arguments + QStringList{"--room", room});
        EXPECT_TRUE(more.run.errors.contains("drawn 2 times, with more room, by")) << more.run.errors.constData();
        EXPECT_EQ(more.run.output, once.run.output);
    }
}

TEST(DeepPickTest, ThreeExtensionsDoInPlaceOfOpenGL42)
{
    const QStringList arguments = {"--pick", "385,268", "--check"};
    EXPECT_EQ(pick(arguments, kFloorWithout).run.output, pick(arguments).run.output);
}

// ---- the picture ---------------------------------------------------------------------------------------------------

TEST(DeepPickTest, ThePictureShowsDepthAndMarksThePixel)
{
    const ModelFolder folder;
    const QString path = folder.path("picture.png");
    // Two squares that cover each other, and a single one beside them.
    const QString more = folder.write("more.obj", squaresFile({0.0f, 0.001f}) + "v 1 -1 0\nv 3 -1 0\nv 3 1 0\nv 1 1 0\n"
                                                                                "o single\nf 9 10 11\nf 9 11 12\n");
    const Picked picked = pick(QStringList{more, "--size", "200x100", "--pick", "60,50", "-o", path} + kFromFront);
    EXPECT_EQ(picked.fragments.size(), 2);
    const QImage picture(path);
    ASSERT_EQ(picture.size(), QSize(200, 100));
    const QColor two = picture.pixelColor(80, 40);
    const QColor one = picture.pixelColor(150, 40);
    const QColor none = picture.pixelColor(2, 2);
    EXPECT_GT(two.red(), two.blue() + 50) << "the deepest is red";
    EXPECT_GT(one.blue(), one.red() + 50) << "a single surface is blue";
    EXPECT_EQ(none, QColor(26, 28, 33));
    EXPECT_EQ(picture.pixelColor(66, 50), QColor(Qt::white));
    EXPECT_EQ(picture.pixelColor(60, 44), QColor(Qt::white));
    EXPECT_EQ(picture.pixelColor(66, 51), QColor(Qt::black));
    const QColor pixel = picture.pixelColor(60, 50);
    EXPECT_GT(pixel.red(), pixel.blue() + 50) << "the pixel itself is left free";
}

TEST(DeepPickTest, AMarkAtTheCornerStaysInThePicture)
{
    const ModelFolder folder;
    const QString path = folder.path("picture.png");
    const ViewerRun run = runPick({"--size", "40x30", "--pick", "39,29", "--output", path});
    EXPECT_EQ(run.exitCode, 0) << run.errors.constData();
    const QImage picture(path);
    ASSERT_EQ(picture.size(), QSize(40, 30));
    EXPECT_EQ(picture.pixelColor(33, 29), QColor(Qt::white));
    EXPECT_EQ(picture.pixelColor(39, 23), QColor(Qt::white));
}

// ---- what can't be used --------------------------------------------------------------------------------------------

TEST(DeepPickTest, APixelThatIsNoneIsRefused)
{
    const ModelFolder folder;
    expectRefused(folder, {}, QStringLiteral("--pick is missing"));
    for (const char* pixel : {"", "5", "5,", "a,b", "-1,5", "1.5,2", "1,2,3", "1x2", "99999999999,1", "1, 2"})
        expectRefused(folder, {"--pick", pixel}, QStringLiteral("is not the X,Y of a pixel"));
    expectRefused(folder, {"--pick", "1,2", "--pick", "3,4"}, QStringLiteral("more than once"));
}

TEST(DeepPickTest, APixelOutsideOfThePictureIsRefused)
{
    const ModelFolder folder;
    expectRefused(folder, {"--pick", "960,5"}, QStringLiteral("the pixel 960,5 is outside of the picture"));
    expectRefused(folder, {"--pick", "5,640"}, QStringLiteral("which has 960x640 pixels"));
    expectRefused(folder, {"--pick", "20,5", "--size", "20x10"}, QStringLiteral("which has 20x10 pixels"));
}

TEST(DeepPickTest, NumbersThatAreNoneAreRefused)
{
    const ModelFolder folder;
    const QStringList pixel = {"--pick", "1,1"};
    for (const char* size : {"0x5", "5", "axb", "-5x5", "40000x5", "5,5"})
        expectRefused(folder, pixel + QStringList{"--size", size}, QStringLiteral("is not WIDTHxHEIGHT in pixels"));
    for (const char* angle : {"x", "nan", "1e9", ""})
        expectRefused(folder, pixel + QStringList{"--azimuth", angle}, QStringLiteral("a number from -3600 to 3600"));
    expectRefused(folder, pixel + QStringList{"--elevation", "91"}, QStringLiteral("a number from -90 to 90"));
    expectRefused(folder, pixel + QStringList{"--up", "x"}, QStringLiteral("one of y, z"));
    for (const char* room : {"0", "-1", "x", "99999999999"})
        expectRefused(folder, pixel + QStringList{"--room", room}, QStringLiteral("a whole number from 1"));
    expectRefused(folder, pixel + QStringList{"--frobnicate"}, QStringLiteral("frobnicate"));
}

TEST(DeepPickTest, WhatIsNoModelIsRefused)
{
    const ModelFolder folder;
    const QStringList pixel = {"--pick", "1,1"};
    const QString text = folder.write("a.txt", "no model\n");
    expectRefused(folder, pixel + QStringList{folder.path("none.obj")}, QStringLiteral("no such file"));
    expectRefused(folder, pixel + QStringList{folder.path("")}, QStringLiteral("it is a directory"));
    expectRefused(folder, pixel + QStringList{text}, QStringLiteral("not a model"));
    expectRefused(folder, pixel + QStringList{""}, QStringLiteral("file name is empty"));
    expectRefused(folder, pixel + QStringList{text, text}, QStringLiteral("more than one model"));
    expectRefused(folder, pixel + QStringList{folder.path("a\nb.obj")}, QStringLiteral("no such file"));
}

TEST(DeepPickTest, MoreInstancesThanTheBlockHoldsAreRefused)
{
    const ModelFolder folder;
    const QString boxes = writeBoxes(folder, std::vector<QMatrix4x4>(101));
    expectRefused(folder, {boxes, "--pick", "1,1"}, QStringLiteral("it has 101 instances of meshes; at most 100"));
}

TEST(DeepPickTest, AnOutputThatCannotBeWrittenIsRefused)
{
    const ModelFolder folder;
    const QStringList pixel = {"--pick", "1,1", "-o"};
    expectRefused(folder, pixel + QStringList{folder.path("a.jpg")}, QStringLiteral(".png"));
    expectRefused(folder, pixel + QStringList{folder.path("none/a.png")}, QStringLiteral("there is no folder"));
    expectRefused(folder, pixel + QStringList{""}, QStringLiteral("a file name"));
}

TEST(DeepPickTest, APictureBeyondTheDriverIsRefused)
{
    const ModelFolder folder;
    expectRefused(folder, {"--pick", "1,0", "--size", "32768x1"},
                  QStringLiteral("too large: this driver draws at most"));
}

TEST(DeepPickTest, MoreFragmentsThanCanBeHeldAreRefused)
{
    const ModelFolder folder;
    const QString squares = folder.write("squares.obj", squaresFile(std::vector<float>(400, 0.0f)));
    expectRefused(folder, QStringList{squares, "--pick", "1,1", "--size", "500x500"} + kFromFront,
                  QStringLiteral("that can be held; a smaller --size has fewer"));
}

TEST(DeepPickTest, ADriverWithoutImagesOrCountersIsRefused)
{
    const ModelFolder folder;
    for (const char* extension : {"GL_ARB_shader_image_load_store", "GL_ARB_shader_atomic_counters"})
    {
        Environment environment = kFloorWithout;
        environment.emplaceBack("MESA_EXTENSION_OVERRIDE", QStringLiteral("-%1").arg(QLatin1String(extension)));
        expectRefused(folder, {"--pick", "1,1"},
                      QStringLiteral("OpenGL 4.2 or %1 is needed").arg(QLatin1String(extension)), environment);
    }
    expectRefused(folder, {"--pick", "1,1"}, QStringLiteral("EGL"),
                  {{"__EGL_VENDOR_LIBRARY_FILENAMES", "/nonexistent"}});
}

TEST(DeepPickTest, HelpTellsTheOptions)
{
    const ViewerRun run = runPick({"--help"});
    EXPECT_EQ(run.exitCode, 0);
    for (const char* option : {"--pick", "--size", "--azimuth", "--elevation", "--up", "--check", "--output", "--room"})
        EXPECT_TRUE(run.output.contains(option)) << option;
}
