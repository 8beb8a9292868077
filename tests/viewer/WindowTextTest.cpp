// SPDX-License-Identifier: MIT
// The texts that the window shows over its picture: help, choices and costs, remarks. Wants a display.
#include "WindowSwitchTools.h"

#include <string>

using namespace vrkview;

namespace
{

class WindowTextTest : public WindowSwitchTest
{
};

} // namespace

TEST_F(WindowTextTest, HelpIsSeenAndGoesAwayAgainExactly)
{
    window->resize(640, 480);
    EXPECT_TRUE(waitUntil([this] { return window->size() == QSize(640, 480); }));
    settle();
    const QImage plain = picture();
    EXPECT_TRUE(isSeen(plain));
    for (const int key : {int(Qt::Key_H), int(Qt::Key_F1), int(Qt::Key_Question)})
    {
        press(key);
        EXPECT_EQ(window->panel(Panel::Help).size(), qsizetype(std::size(kMouse) + std::size(kKeys) + 1));
        EXPECT_TRUE(waitUntil([this, &plain] { return seen() != plain; }));
        EXPECT_EQ(picture(), plain) << "it is no part of the picture";
        settle();
        int changed = 0;
        const QImage helped = seen();
        for (int y = 0; y < plain.height(); ++y)
            for (int x = 0; x < plain.width(); ++x)
                changed += helped.pixel(x, y) != plain.pixel(x, y) ? 1 : 0;
        EXPECT_GT(changed, 640 * 480 / 4);
        EXPECT_EQ(helped.pixel(2, 2), plain.pixel(2, 2));
        press(key);
        EXPECT_TRUE(isSeen(plain));
    }
}

TEST_F(WindowTextTest, StatsTellChoicesAndCostsAndAreDrawnAllTheTime)
{
    const QImage plain = picture();
    EXPECT_TRUE(isSeen(plain));
    const int before = frames();
    press(Qt::Key_S);
    EXPECT_TRUE(waitUntil([this, before] { return frames() > before + 5; })) << "or there would be no rate to tell";
    press(Qt::Key_C);
    settle();
    const auto right = [this](const char* left)
    {
        for (const TextRow& row : window->panel(Panel::Stats))
            if (row.left == QLatin1String(left))
                return row.right.toStdString();
        return std::string("no such row");
    };
    EXPECT_EQ(right("carrier"), "uniform");
    EXPECT_EQ(right("manager"), "sampler");
    EXPECT_EQ(right("draw id"), "auto");
    EXPECT_EQ(right("environment"), "off");
    EXPECT_EQ(right("shadows"), "off");
    EXPECT_EQ(right("debug view"), "none");
    EXPECT_EQ(right("draw calls"), "3 in 3 batches") << "background, floor and boxes, but no texts";
    EXPECT_EQ(right("commands"), "2, 0 culled");
    EXPECT_NE(right("draw"), "no such row");
    EXPECT_NE(right("memory").find("KiB"), std::string::npos);
    EXPECT_EQ(right("OpenGL errors"), "no such row");
    EXPECT_TRUE(waitUntil([&right] { return right("frame").find(" fps") != std::string::npos; }));
    EXPECT_NE(seen(), plain);
    press(Qt::Key_S);
    press(Qt::Key_C, Qt::ShiftModifier);
    EXPECT_TRUE(window->panel(Panel::Stats).isEmpty());
}

TEST_F(WindowTextTest, WhatAFileLacksIsNotToldAgainWhenTheSceneIsBuiltAnew)
{
    closeWindow();
    folder.write("a.mtl", "newmtl floor\nKd 1 1 1\nmap_Kd none.<UDIM>.png\nnewmtl red\nKd 0.8 0.2 0.1\n");
    testing::internal::CaptureStderr();
    RenderSettings settings;
    settings.manager = ManagerKind::Array2D;
    openFile(settings);
    press(Qt::Key_C);
    settle();
    EXPECT_EQ(told(), "record carrier: uniform");
    const std::string heard = testing::internal::GetCapturedStderr();
    const std::size_t first = heard.find("has no tiles");
    ASSERT_NE(first, std::string::npos) << heard;
    EXPECT_EQ(heard.find("has no tiles", first + 1), std::string::npos) << heard;
}

TEST_F(WindowTextTest, TextsAreUploadedOnlyWhenTheyChange)
{
    press(Qt::Key_H);
    settle();
    const int uploads = WindowTestAccess::uploads(*window);
    for (int i = 0; i < 5; ++i)
        settle();
    EXPECT_EQ(WindowTestAccess::uploads(*window), uploads);
    press(Qt::Key_G); // which says so
    settle();
    EXPECT_EQ(WindowTestAccess::uploads(*window), uploads + 1);
}

TEST_F(WindowTextTest, RemarksGoAwayByThemselves)
{
    const QImage plain = picture();
    press(Qt::Key_Space);
    EXPECT_EQ(told(), "nothing moves here");
    EXPECT_TRUE(waitUntil([this] { return told().empty(); }));
    EXPECT_TRUE(isSeen(plain));
}
