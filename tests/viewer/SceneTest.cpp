// SPDX-License-Identifier: MIT
// The scene behind the picture: what a frame costs, crowds, the cameras of a file, and what shows through.
#include "ModelFiles.h"
#include "ViewerRun.h"

#include <gtest/gtest.h>

#include <QRegularExpression>

#include <cmath>

namespace
{

const QStringList kTiny = {"--size", "64x64", "--samples", "1"};

QString errorsOf(const QStringList& arguments, const ModelFolder& folder)
{
    const ViewerRun run = runViewer(arguments + kTiny + QStringList{"--output", folder.path("out.png")});
    EXPECT_EQ(run.exitCode, 0) << run.errors.constData();
    return QString::fromUtf8(run.errors);
}

/// The number in front of which `words` stand.
double numberAfter(const QString& text, const QString& words)
{
    const QRegularExpressionMatch match =
        QRegularExpression(QRegularExpression::escape(words) + QStringLiteral(" ([0-9.]+)")).match(text);
    EXPECT_TRUE(match.hasMatch()) << words.toStdString() << " in " << text.toStdString();
    return match.captured(1).toDouble();
}

/// Two sheets that face +z, one behind the other, the front one with this material.
QByteArray twoSheets(const QByteArray& frontMaterial)
{
    return "mtllib m.mtl\nv -1 -1 0\nv 1 -1 0\nv 1 1 0\nv -1 1 0\nv -1 -1 -1\nv 1 -1 -1\nv 1 1 -1\nv -1 1 -1\n"
           "vn 0 0 1\nusemtl back\nf 5//1 6//1 7//1 8//1\nusemtl " +
           frontMaterial + "\nf 1//1 2//1 3//1 4//1\n";
}

} // namespace

TEST(ViewerSceneTest, StatsTellCountsMemoryAndTheTimeOfEachPhase)
{
    const ModelFolder folder;
    const QString text = errorsOf({"--crowd", "300", "--stats"}, folder);
    EXPECT_EQ(numberAfter(text, QStringLiteral("commands")), 300.0);
    EXPECT_EQ(numberAfter(text, QStringLiteral("culled")), 0.0);
    // The background is a draw too.
    EXPECT_EQ(numberAfter(text, QStringLiteral("draw calls")), 301.0);
    EXPECT_EQ(numberAfter(text, QStringLiteral("batches")), 301.0);
    EXPECT_GT(numberAfter(text, QStringLiteral("indices")), 300.0 * 3);
    EXPECT_GT(numberAfter(text, QStringLiteral("CPU")), 10.0);
    EXPECT_GT(numberAfter(text, QStringLiteral("GPU")), 10.0);
    for (const char* phase : {"animate", "update", "cull", "sort", "draw", "finish"})
        EXPECT_GE(numberAfter(text, QLatin1String(phase)), 0.0) << phase;
    EXPECT_EQ(text.count(u'\n'), 4) << "three lines and the summary: " << text.toStdString();
}

TEST(ViewerSceneTest, ByBaseInstanceACrowdIsAFewDrawCalls)
{
    const ModelFolder folder;
    const QString text = errorsOf({"--crowd", "300", "--stats", "--draw-id", "base-instance"}, folder);
    EXPECT_EQ(numberAfter(text, QStringLiteral("commands")), 300.0);
    EXPECT_EQ(numberAfter(text, QStringLiteral("draw calls")), 5.0) << "four meshes and the background";
}

TEST(ViewerSceneTest, WithoutStatsNothingIsToldOfThem)
{
    const ModelFolder folder;
    EXPECT_FALSE(errorsOf({"--crowd", "20"}, folder).contains(QStringLiteral("draw calls")));
}

TEST(ViewerSceneTest, ACrowdIsTheSameEachTime)
{
    EXPECT_EQ(difference(drawWithViewer(QStringList{"--crowd", "50"} + kTiny),
                         drawWithViewer(QStringList{"--crowd", "50"} + kTiny))
                  .largest,
              0);
}

TEST(ViewerSceneTest, WhatACameraDoesNotSeeIsCulled)
{
    // A row of boxes along x; the camera looks at the first of them from near by.
    const TriangleSoup box = boxSoup({-0.4f, -0.4f, -0.4f}, {0.4f, 0.4f, 0.4f});
    std::vector<QMatrix4x4> nodes;
    for (int i = 0; i < 50; ++i)
    {
        QMatrix4x4 matrix;
        matrix.translate(3.0f * float(i), 0.0f, 0.0f);
        nodes.push_back(matrix);
    }
    const ModelFolder folder;
    const QString path =
        folder.write("row.gltf", withCamera(gltfFile(box, nodes, {0.6f, 0.3f, 0.2f}, 0.5f), "near", {0, 0, 4}));
    const QString text = errorsOf({path, "--stats", "--camera", "near"}, folder);
    EXPECT_EQ(numberAfter(text, QStringLiteral("commands")), 50.0);
    EXPECT_EQ(numberAfter(text, QStringLiteral("culled")), 49.0);
    EXPECT_EQ(numberAfter(text, QStringLiteral("indices")), 36.0) << "of the one box";
    // The library counts all commands of a list that is drawn in part.
    EXPECT_EQ(numberAfter(text, QStringLiteral("draw calls")), 51.0);
}

TEST(ViewerSceneTest, ACameraOfTheFileIsFoundByNameAndByNumber)
{
    const ModelFolder folder;
    const QString path = folder.write(
        "box.gltf", withCamera(gltfFile(boxSoup({-1, -1, -1}, {1, 1, 1}), {QMatrix4x4()}, {0.6f, 0.3f, 0.2f}, 0.5f),
                               "near", {0, 0, 4}));
    const QImage byName = drawWithViewer(QStringList{path, "--camera", "near"} + kTiny);
    // Half a field of view of 0.4 rad shows 1.27 of the plane z = 1, three units away; the box fills 79 % of that.
    int filled = 0;
    for (int x = 0; x < 64; ++x)
        filled += qRed(byName.pixel(x, 32)) > qBlue(byName.pixel(x, 32)) ? 1 : 0;
    EXPECT_NEAR(filled, 64 * 0.79, 2.0);
    EXPECT_EQ(difference(byName, drawWithViewer(QStringList{path, "--camera", "0"} + kTiny)).largest, 0);

    const ViewerRun run = runViewer(QStringList{path, "--camera", "far", "-o", folder.path("a.png")} + kTiny);
    EXPECT_EQ(run.exitCode, 1);
    EXPECT_EQ(run.errors, "vrkview: cannot draw: the model has no camera 'far'\n");
    EXPECT_EQ(runViewer(QStringList{path, "--camera", "1", "-o", folder.path("a.png")} + kTiny).exitCode, 1);
}

TEST(ViewerSceneTest, WhatIsBehindATransparentSheetShowsThrough)
{
    const ModelFolder folder;
    folder.write("m.mtl", "newmtl back\nKd 0 1 0\nnewmtl solid\nKd 1 0 0\nnewmtl glass\nKd 1 0 0\nd 0.5\n");
    const auto middle = [&](const QByteArray& material)
    {
        const QString path = folder.write(material + ".obj", twoSheets(material));
        return drawWithViewer(QStringList{path, "--azimuth", "0", "--elevation", "0"} + kTiny).pixel(32, 32);
    };
    const QRgb solid = middle("solid");
    const QRgb glass = middle("glass");
    EXPECT_GT(qRed(solid), 180);
    EXPECT_LT(qGreen(solid), 100);
    EXPECT_NEAR(qRed(glass), 0.5 * qRed(solid), 40);
    EXPECT_GT(qGreen(glass), qGreen(solid) + 40);
}

TEST(ViewerSceneTest, TransparentSurfacesLeaveThePictureOpaque)
{
    const ModelFolder folder;
    folder.write("m.mtl", "newmtl back\nKd 0 1 0\nnewmtl glass\nKd 1 0 0\nd 0.25\n");
    const QString output = folder.path("out.png");
    const ViewerRun run =
        runViewer(QStringList{folder.write("a.obj", twoSheets("glass")), "--azimuth", "0", "--output", output} + kTiny);
    ASSERT_EQ(run.exitCode, 0) << run.errors.constData();
    const QImage picture = QImage(output).convertToFormat(QImage::Format_ARGB32);
    for (int y = 0; y < picture.height(); ++y)
        for (int x = 0; x < picture.width(); ++x)
            ASSERT_EQ(qAlpha(picture.pixel(x, y)), 255) << x << " " << y;
}

TEST(ViewerSceneTest, StorageBlocksOnADriverWithoutThemAreRefused)
{
    const ModelFolder folder;
    const ViewerRun run = runViewer(
        QStringList{"--builtin", "--carrier", "ssbo", "-o", folder.path("a.png")} + kTiny,
        {{"MESA_GL_VERSION_OVERRIDE", "3.2"}, {"MESA_EXTENSION_OVERRIDE", "-GL_ARB_shader_storage_buffer_object"}});
    EXPECT_EQ(run.exitCode, 1);
    EXPECT_EQ(run.errors, "vrkview: cannot draw: this driver has no storage blocks\n");
}
