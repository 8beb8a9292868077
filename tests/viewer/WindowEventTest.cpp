// SPDX-License-Identifier: MIT
// What mouse, wheel and keys do to the window's camera. Wants a display.
#include "BuiltInScene.h"
#include "Window.h"

#include <gtest/gtest.h>

#include <QElapsedTimer>
#include <QGuiApplication>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QWheelEvent>

using namespace vrkview;

namespace
{

constexpr qint64 kPatienceMilliseconds = 60000;

class WindowEventTest : public testing::Test
{
protected:
    void SetUp() override
    {
        OrbitCamera home;
        home.setAngles(35.0f, 22.0f);
        QString error;
        window.resize(320, 200);
        ASSERT_TRUE(window.create(makeBuiltInScene(), home, 1, RenderSettings(), QString(), error))
            << qPrintable(error);
        window.show();
        waitUntil([this] { return window.isExposed(); });
        ASSERT_TRUE(window.isExposed());
        start = window.camera();
    }

    template <typename Condition> void waitUntil(Condition condition)
    {
        QElapsedTimer time;
        time.start();
        while (!condition() && time.elapsed() < kPatienceMilliseconds)
            QCoreApplication::processEvents(QEventLoop::AllEvents, 20);
    }

    void drag(Qt::MouseButton button, const QPointF& from, const QPointF& to)
    {
        QMouseEvent press(QEvent::MouseButtonPress, from, from, button, button, Qt::NoModifier);
        QMouseEvent move(QEvent::MouseMove, to, to, Qt::NoButton, button, Qt::NoModifier);
        QMouseEvent release(QEvent::MouseButtonRelease, to, to, button, Qt::NoButton, Qt::NoModifier);
        for (QMouseEvent* event : {&press, &move, &release})
            QCoreApplication::sendEvent(&window, event);
    }

    void turnWheel(int notches)
    {
        QWheelEvent event({10, 10}, {10, 10}, QPoint(), {0, 120 * notches}, Qt::NoButton, Qt::NoModifier,
                          Qt::NoScrollPhase, false);
        QCoreApplication::sendEvent(&window, &event);
    }

    void press(int key)
    {
        QKeyEvent event(QEvent::KeyPress, key, Qt::NoModifier);
        QCoreApplication::sendEvent(&window, &event);
    }

    Window window;
    OrbitCamera start;
};

} // namespace

TEST_F(WindowEventTest, LeftDragOrbits)
{
    drag(Qt::LeftButton, {100, 100}, {150, 120});
    EXPECT_NEAR(window.camera().azimuth(), start.azimuth() - 50.0f, 0.01f) << "200 degrees for the shorter side";
    EXPECT_NEAR(window.camera().elevation(), start.elevation() + 20.0f, 0.01f);
    EXPECT_EQ(window.camera().target(), start.target());
    EXPECT_EQ(window.camera().distance(), start.distance());
}

TEST_F(WindowEventTest, RightAndMiddleDragPan)
{
    for (const Qt::MouseButton button : {Qt::RightButton, Qt::MiddleButton})
    {
        const QVector3D before = window.camera().target();
        drag(button, {100, 100}, {150, 120});
        const QVector3D moved = window.camera().target() - before;
        EXPECT_LT(QVector3D::dotProduct(moved, start.right()), 0.0f) << "the scene follows the pointer to the right";
        EXPECT_GT(QVector3D::dotProduct(moved, start.up()), 0.0f);
        EXPECT_EQ(window.camera().azimuth(), start.azimuth());
    }
}

TEST_F(WindowEventTest, MovingWithoutAButtonDoesNothing)
{
    const QPointF place(50, 50);
    QMouseEvent move(QEvent::MouseMove, place, place, Qt::NoButton, Qt::NoButton, Qt::NoModifier);
    QCoreApplication::sendEvent(&window, &move);
    EXPECT_EQ(window.camera().azimuth(), start.azimuth());
    EXPECT_EQ(window.camera().target(), start.target());
}

TEST_F(WindowEventTest, WheelZoomsInAndBackOut)
{
    turnWheel(3);
    EXPECT_LT(window.camera().distance(), start.distance());
    turnWheel(-3);
    EXPECT_NEAR(window.camera().distance(), start.distance(), 1.0e-4f * start.distance());
}

TEST_F(WindowEventTest, RResetsTheView)
{
    drag(Qt::LeftButton, {100, 100}, {150, 120});
    drag(Qt::RightButton, {100, 100}, {150, 120});
    turnWheel(5);
    press(Qt::Key_R);
    EXPECT_EQ(window.camera().azimuth(), start.azimuth());
    EXPECT_EQ(window.camera().elevation(), start.elevation());
    EXPECT_EQ(window.camera().distance(), start.distance());
    EXPECT_EQ(window.camera().target(), start.target());
}

TEST_F(WindowEventTest, ResizingFramesTheModelAnewUntilItWasZoomed)
{
    window.resize(200, 600);
    waitUntil([this] { return window.camera().distance() != start.distance(); });
    const float tall = window.camera().distance();
    EXPECT_NE(tall, start.distance());
    turnWheel(1);
    const float zoomed = window.camera().distance();
    window.resize(320, 200);
    waitUntil([this] { return window.width() == 320; });
    EXPECT_EQ(window.camera().distance(), zoomed);
}

TEST_F(WindowEventTest, EscapeClosesAndTheLastFrameIsKept)
{
    press(Qt::Key_Escape);
    waitUntil([this] { return !window.isVisible(); });
    EXPECT_FALSE(window.isVisible());
    EXPECT_EQ(window.lastFrame().size(), window.size());
    EXPECT_TRUE(window.error().isEmpty());
}

int main(int argc, char** argv)
{
    testing::InitGoogleTest(&argc, argv);
    const QGuiApplication application(argc, argv);
    return RUN_ALL_TESTS();
}
