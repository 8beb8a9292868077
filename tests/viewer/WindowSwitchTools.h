// SPDX-License-Identifier: MIT
// A window with a small scene, whose pictures are held against those of the command line, and what the screen shows.
#pragma once

#include "ModelReader.h"
#include "WindowTools.h"

#include <QGuiApplication>
#include <QScreen>

namespace vrkview
{

inline constexpr QSize kSize(160, 100);

/// A floor with a picture on it, and a box and a smaller one.
inline QString writeModel(const ModelFolder& folder)
{
    QImage picture(16, 16, QImage::Format_RGB32);
    for (int y = 0; y < 16; ++y)
        for (int x = 0; x < 16; ++x)
            picture.setPixel(x, y, (x / 4 + y / 4) % 2 ? qRgb(220, 200, 90) : qRgb(40, 90, 160));
    EXPECT_TRUE(picture.save(folder.path("picture.png")));
    folder.write("a.mtl", "newmtl floor\nKd 1 1 1\nmap_Kd picture.png\nnewmtl red\nKd 0.8 0.2 0.1\n");
    const QByteArray lines = "mtllib a.mtl\nvt 0 0\nvt 1 0\nvt 1 1\nvt 0 1\n"
                             "v -2 0 -2\nv 2 0 -2\nv 2 0 2\nv -2 0 2\nvn 0 1 0\n"
                             "usemtl floor\nf -4/1/-1 -1/4/-1 -2/3/-1 -3/2/-1\nusemtl red\n";
    TriangleSoup boxes = boxSoup({-0.7f, 0.2f, -0.7f}, {0.5f, 1.4f, 0.5f});
    append(boxes, boxSoup({0.8f, 0.1f, 0.6f}, {1.4f, 0.6f, 1.2f}));
    return folder.write("a.obj", objFile(boxes, lines));
}

struct Press
{
    int key;
    Qt::KeyboardModifiers modifiers = Qt::NoModifier;
};

class WindowSwitchTest : public WindowFixture
{
protected:
    void SetUp() override
    {
        WindowFixture::SetUp();
        path = writeModel(folder);
        openFile();
    }

    void openFile(const RenderSettings& settings = {})
    {
        ReadResult result = readModel(path, UpAxis::Y);
        ASSERT_TRUE(result.model.has_value()) << qPrintable(result.error);
        open(*result.model, settings, kSize);
    }

    QImage headless(const QStringList& options) const
    {
        return drawWithViewer(
            QStringList{path, "--size", "160x100", "--samples", "1", "--azimuth", "35", "--elevation", "22"} + options);
    }

    /// The picture in the window is the one that these options give.
    void expectAsWith(const QStringList& options)
    {
        const Difference steps = difference(picture(), headless(options));
        EXPECT_LE(steps.largest, 2) << options.join(' ').toStdString() << ": " << told();
        settle(); // and the frames go on
        EXPECT_EQ(window->glErrors(), 0) << options.join(' ').toStdString();
    }

    void pressAll(const std::vector<Press>& presses)
    {
        for (const auto& [key, modifiers] : presses)
            press(key, modifiers);
    }

    /// What is on the screen where the window is.
    QImage seen()
    {
        return QGuiApplication::primaryScreen()
            ->grabWindow(window->winId())
            .toImage()
            .convertToFormat(QImage::Format_RGB32);
    }

    /// The window system takes a moment to show a frame.
    bool isSeen(const QImage& expected)
    {
        return waitUntil(
            [this, &expected]
            {
                QCoreApplication::processEvents();
                return seen() == expected;
            });
    }

    ModelFolder folder;
    QString path;
};

} // namespace vrkview
