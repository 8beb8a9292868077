// SPDX-License-Identifier: MIT
// The window, on a display of its own: xvfb-run starts one for each run.
#include "ModelFiles.h"
#include "ViewerRun.h"

#include <gtest/gtest.h>

namespace
{

const QStringList kOnADisplay = {"xvfb-run", "-a", "-s", "-screen 0 1280x800x24"};
// A window system's drivers are unloaded before a sanitizer build looks for leaks, so theirs can't be told from ours by
// name; ours are looked for in the runs without a window.
const Environment kPlain = {{"QT_QPA_PLATFORM", QString()},
                            {"WAYLAND_DISPLAY", QString()},
                            {"QT_SCALE_FACTOR", QString()},
                            {"ASAN_OPTIONS", qEnvironmentVariable("ASAN_OPTIONS") + ":detect_leaks=0"}};

} // namespace

TEST(ViewerWindowTest, ShowsFramesAndClosesAndItsLastFrameIsThePicture)
{
    const ModelFolder folder;
    const QString path = folder.path("window.png");
    const ViewerRun run =
        runViewer({"--builtin", "--window", "--size", "400x300", "--frames", "3", "-o", path}, kPlain, kOnADisplay);
    ASSERT_TRUE(run.ended);
    ASSERT_EQ(run.exitCode, 0) << run.errors.constData();
    EXPECT_EQ(run.output, path.toUtf8() + "\n");

    const QImage window = QImage(path).convertToFormat(QImage::Format_RGB32);
    ASSERT_EQ(window.size(), QSize(400, 300));
    const QImage headless = drawWithViewer({"--builtin", "--size", "400x300", "--samples", "4"});
    const Difference steps = difference(window, headless);
    std::printf("window and headless: largest %d, mean %.4f (steps of 255)\n", steps.largest, steps.mean);
    EXPECT_LE(steps.largest, 2);
}

TEST(ViewerWindowTest, HighDensityScreensGetMorePixels)
{
    const ModelFolder folder;
    const QString path = folder.path("window.png");
    Environment environment = kPlain;
    environment.emplaceBack("QT_SCALE_FACTOR", "2");
    const ViewerRun run = runViewer({"--builtin", "--window", "--size", "200x150", "--frames", "2", "-o", path},
                                    environment, kOnADisplay);
    ASSERT_EQ(run.exitCode, 0) << run.errors.constData();
    EXPECT_EQ(QImage(path).size(), QSize(400, 300));
}

TEST(ViewerWindowTest, WithoutOutputNothingIsPrintedOrWritten)
{
    const ViewerRun run =
        runViewer({"--builtin", "--window", "--size", "200x150", "--frames", "1"}, kPlain, kOnADisplay);
    ASSERT_TRUE(run.ended);
    EXPECT_EQ(run.exitCode, 0) << run.errors.constData();
    EXPECT_EQ(run.output, QByteArray());
}
