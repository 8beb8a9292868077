// SPDX-License-Identifier: MIT
// Pictures whose edges are smoothed when they are done, and the wall of screens.
#include "ModelFiles.h"
#include "ViewerRun.h"

#include <gtest/gtest.h>

#include <QRegularExpression>
#include <QSet>

namespace
{

QImage screens(const QStringList& more)
{
    return drawWithViewer(QStringList{"--streamers", "--size", "320x180", "--samples", "1"} + more);
}

QSet<QRgb> colorsIn(const QImage& picture, const QRect& area)
{
    QSet<QRgb> colors;
    for (int y = area.top(); y <= area.bottom(); ++y)
        for (int x = area.left(); x <= area.right(); ++x)
            colors.insert(picture.pixel(x, y));
    return colors;
}

/// Inside of the screen in this column and row of four and two.
QRect screen(int column, int row)
{
    return {30 + 70 * column, 30 + 70 * row, 40, 40};
}

} // namespace

// ---- smoothing -----------------------------------------------------------------------------------------------------

TEST(PostPassTest, SmoothedPicturesAreNearerToOnesOfManySamples)
{
    const ModelFolder folder;
    const QString cube = folder.write("cube.obj", objFile(boxSoup({-1, -1, -1}, {1, 1, 1})));
    const auto draw = [&cube](const QStringList& more) {
        return drawWithViewer(QStringList{cube, "--size", "160x120", "--azimuth", "31", "--elevation", "17"} + more);
    };
    const QImage exact = draw({"--samples", "64"});
    const double rough = difference(draw({"--samples", "1"}), exact).mean;
    const double fxaa = difference(draw({"--aa", "fxaa"}), exact).mean;
    const double smaa = difference(draw({"--aa", "smaa"}), exact).mean;
    std::printf("mean difference from 64 samples: none %.3f, fxaa %.3f, smaa %.3f\n", rough, fxaa, smaa);
    EXPECT_LT(fxaa, 0.75 * rough);
    EXPECT_LT(smaa, 0.75 * rough);
}

TEST(PostPassTest, WhatHasNoEdgesIsNotTouched)
{
    const ModelFolder folder;
    const QString cube = folder.write("cube.obj", objFile(boxSoup({-1, -1, -1}, {1, 1, 1})));
    const QStringList arguments = {cube, "--size", "160x120", "--samples", "1"};
    const QImage plain = drawWithViewer(arguments);
    for (const char* kind : {"fxaa", "smaa"})
    {
        const QImage smoothed = drawWithViewer(arguments + QStringList{"--aa", kind});
        for (const QPoint corner : {QPoint(3, 3), QPoint(156, 3), QPoint(3, 116), QPoint(60, 60)})
            EXPECT_EQ(smoothed.pixel(corner), plain.pixel(corner)) << kind;
    }
}

TEST(PostPassTest, TheyWorkOnSamplesToo)
{
    const ModelFolder folder;
    const QString cube = folder.write("cube.obj", objFile(boxSoup({-1, -1, -1}, {1, 1, 1})));
    const QStringList arguments = {cube, "--size", "160x120", "--samples", "4"};
    const Difference steps =
        difference(drawWithViewer(arguments), drawWithViewer(arguments + QStringList{"--aa", "smaa"}));
    EXPECT_LT(steps.mean, 1.0);
}

// ---- screens -------------------------------------------------------------------------------------------------------

TEST(ScreenWallTest, EachKindOfScreenShowsItsPicture)
{
    const QImage wall = screens({});
    EXPECT_LE(colorsIn(wall, screen(0, 0)).size(), 3) << "one colour, under a highlight";
    EXPECT_GE(colorsIn(wall, screen(1, 0)).size(), 5) << "fields of a dial";
    EXPECT_GE(colorsIn(wall, screen(2, 0)).size(), 100) << "a fractal by the processor";
    EXPECT_GE(colorsIn(wall, screen(3, 0)).size(), 100) << "a fractal by the GPU";
}

TEST(ScreenWallTest, ScreensGoOnFromFrameToFrame)
{
    // With --stats twenty frames are drawn before the picture. The dial has a step in thirty.
    const QImage first = screens({});
    const QImage later = screens({"--stats"});
    for (const int column : {0, 2, 3})
        EXPECT_NE(first.copy(screen(column, 0)), later.copy(screen(column, 0))) << column;
}

TEST(ScreenWallTest, EveryManagerShowsTheSame)
{
    const QImage wall = screens({"--stats"});
    // Array textures have mip levels of their own making.
    EXPECT_LE(difference(screens({"--stats", "--manager", "array2d"}), wall).mean, 1.5);
    for (const char* manager : {"array2d-bindless", "bindless"})
    {
        const ModelFolder folder;
        const ViewerRun run = runViewer({"--streamers", "--size", "320x180", "--samples", "1", "--stats", "--manager",
                                         manager, "--output", folder.path("out.png")});
        if (run.exitCode == 0)
            EXPECT_LE(difference(QImage(folder.path("out.png")), wall).mean, 1.5) << manager;
        else // as on every software driver
            EXPECT_TRUE(run.errors.contains("this driver has no bindless textures")) << run.errors.constData();
    }
}

TEST(ScreenWallTest, WithoutComputeShadersTheProcessorStandsIn)
{
    const QImage wall = screens({});
    const ModelFolder folder;
    const QImage floor =
        drawWithViewer({"--streamers", "--size", "320x180", "--samples", "1"}, {{"MESA_GL_VERSION_OVERRIDE", "3.2"}});
    EXPECT_GE(colorsIn(floor, screen(3, 0)).size(), 100);
    EXPECT_EQ(floor.copy(screen(2, 0)), wall.copy(screen(2, 0)));
}

TEST(ScreenWallTest, ExcludesOtherScenes)
{
    const ViewerRun run = runViewer({"--streamers", "--builtin"});
    EXPECT_EQ(run.exitCode, 1);
    EXPECT_TRUE(run.errors.contains("--streamers and another scene exclude each other")) << run.errors.constData();
}
