// SPDX-License-Identifier: MIT
// The window, on a display of its own: xvfb-run starts one for each run.
#include "ModelFiles.h"
#include "ViewerRun.h"

#include <gtest/gtest.h>

#include <QDir>
#include <QFileInfo>

namespace
{

const QStringList kOnADisplay = {"xvfb-run", "-a", "-s", "-screen 0 1280x800x24"};
// A window system's drivers are unloaded before a sanitizer build looks for leaks, so theirs can't be told from ours by
// name; ours are looked for in the runs without a window.
const Environment kPlain = {{"QT_QPA_PLATFORM", QString()},
                            {"WAYLAND_DISPLAY", QString()},
                            {"QT_SCALE_FACTOR", QString()},
                            {"ASAN_OPTIONS", qEnvironmentVariable("ASAN_OPTIONS") + ":detect_leaks=0"}};

/// Which nothing moves in.
QString writeCube(const ModelFolder& folder)
{
    return folder.write("cube.obj", objFile(boxSoup({-1, -1, -1}, {1, 1, 1})));
}

} // namespace

TEST(ViewerWindowTest, ShowsFramesAndClosesAndItsLastFrameIsThePicture)
{
    const ModelFolder folder;
    const QString cube = writeCube(folder);
    const QString path = folder.path("window.png");
    const ViewerRun run =
        runViewer({cube, "--window", "--size", "400x300", "--frames", "3", "-o", path}, kPlain, kOnADisplay);
    ASSERT_TRUE(run.ended);
    ASSERT_EQ(run.exitCode, 0) << run.errors.constData();
    EXPECT_EQ(run.output, path.toUtf8() + "\n");

    const QImage window = QImage(path).convertToFormat(QImage::Format_RGB32);
    ASSERT_EQ(window.size(), QSize(400, 300));
    const QImage headless = drawWithViewer({cube, "--size", "400x300", "--samples", "4"});
    const Difference steps = difference(window, headless);
    std::printf("window and headless: largest %d, mean %.4f (steps of 255)\n", steps.largest, steps.mean);
    EXPECT_LE(steps.largest, 2);
}

TEST(ViewerWindowTest, TheBuiltInSceneIsShownToo)
{
    const ModelFolder folder;
    const QString path = folder.path("window.png");
    const ViewerRun run =
        runViewer({"--builtin", "--window", "--size", "200x150", "--samples", "1", "--frames", "2", "-o", path}, kPlain,
                  kOnADisplay);
    ASSERT_TRUE(run.ended);
    EXPECT_EQ(run.exitCode, 0) << run.errors.constData();
    EXPECT_EQ(QImage(path).size(), QSize(200, 150));
}

TEST(ViewerWindowTest, HighDensityScreensGetMorePixels)
{
    const ModelFolder folder;
    const QString path = folder.path("window.png");
    Environment environment = kPlain;
    environment.emplaceBack("QT_SCALE_FACTOR", "2");
    const ViewerRun run =
        runViewer({writeCube(folder), "--window", "--size", "200x150", "--press", "H,S", "--frames", "4", "-o", path},
                  environment, kOnADisplay);
    ASSERT_EQ(run.exitCode, 0) << run.errors.constData();
    EXPECT_EQ(QImage(path).size(), QSize(400, 300));
}

TEST(ViewerWindowTest, WithoutOutputNothingIsPrintedOrWritten)
{
    const ModelFolder folder;
    const ViewerRun run =
        runViewer({writeCube(folder), "--window", "--size", "200x150", "--frames", "1"}, kPlain, kOnADisplay);
    ASSERT_TRUE(run.ended);
    EXPECT_EQ(run.exitCode, 0) << run.errors.constData();
    EXPECT_EQ(run.output, QByteArray());
}

TEST(ViewerWindowTest, TextsAreNoPartOfTheLastFrame)
{
    const ModelFolder folder;
    const QString cube = writeCube(folder);
    const QStringList arguments = {cube, "--window", "--size", "400x300", "--frames", "5", "-o"};
    for (const QStringList& presses : {QStringList(), QStringList{"--press", "S,H,C"}})
    {
        const QString path = folder.path(presses.isEmpty() ? "plain.png" : "pressed.png");
        const ViewerRun run = runViewer(arguments + QStringList{path} + presses, kPlain, kOnADisplay);
        ASSERT_EQ(run.exitCode, 0) << run.errors.constData();
    }
    EXPECT_LE(difference(QImage(folder.path("plain.png")), QImage(folder.path("pressed.png"))).largest, 2);
}

TEST(ViewerWindowTest, EachPictureThatAKeyWritesIsToldInOneLine)
{
    const ModelFolder folder;
    const QString cube = writeCube(folder);
    const ModelFolder pictures;
    const QString former = QDir::currentPath();
    ASSERT_TRUE(QDir::setCurrent(QFileInfo(pictures.path("x")).absolutePath()));
    const ViewerRun run = runViewer({cube, "--window", "--size", "200x150", "--press", "P, Shift+P", "--frames", "3"},
                                    kPlain, kOnADisplay);
    QDir::setCurrent(former);
    ASSERT_EQ(run.exitCode, 0) << run.errors.constData();
    EXPECT_EQ(run.output, QByteArray());
    EXPECT_EQ(run.errors.count('\n'), 3) << "a line that sums up, and two: " << run.errors.constData();
    EXPECT_EQ(run.errors.count("vrkview: wrote "), 2) << run.errors.constData();
    EXPECT_EQ(pictures.entries(), QStringList({"vrkview-001.png", "vrkview-002.png"}));
}

TEST(ViewerWindowTest, AManagerWithoutTilesIsToldOnceForAllPicturesWithThem)
{
    const ModelFolder folder;
    const ViewerRun run = runViewer({writeTiledSquares(folder), "--window", "--size", "200x150", "--manager", "array2d",
                                     "--press", "Shift+M,C,L,M", "--frames", "6"},
                                    kPlain, kOnADisplay);
    ASSERT_EQ(run.exitCode, 0) << run.errors.constData();
    EXPECT_EQ(run.errors.count("vrkview: the tiles of 2 pictures are white: they want --manager array2d\n"), 1)
        << run.errors.constData();
    EXPECT_EQ(run.errors.count('\n'), 2) << "and a line that sums up: " << run.errors.constData();
}

TEST(ViewerWindowTest, EscapeEndsTheProgram)
{
    const ModelFolder folder;
    const ViewerRun run =
        runViewer({writeCube(folder), "--window", "--size", "200x150", "--press", "M,Esc"}, kPlain, kOnADisplay);
    ASSERT_TRUE(run.ended);
    EXPECT_EQ(run.exitCode, 0) << run.errors.constData();
}

TEST(ViewerWindowTest, KeysThatThereAreNoneOfAreRefused)
{
    const ModelFolder folder;
    const ViewerRun run = runViewer({writeCube(folder), "--window", "--press", "Nonesuch"}, kPlain, kOnADisplay);
    EXPECT_EQ(run.exitCode, 1);
    EXPECT_EQ(run.errors, QByteArray("vrkview: --press 'Nonesuch' is no list of keys\n"));
}
