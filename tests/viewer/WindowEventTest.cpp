// SPDX-License-Identifier: MIT
// What mouse, wheel and the view's keys do to the window's camera, and how windows end. Wants a display.
#include "Crowd.h"
#include "ModelReader.h"
#include "ScreenWall.h"
#include "WindowTools.h"

#include <QGuiApplication>
#include <QRandomGenerator>

using namespace vrkview;

namespace
{

Model cube()
{
    const ModelFolder folder;
    const QString path = folder.write("cube.obj", objFile(boxSoup({-1, -1, -1}, {1, 1, 1})));
    ReadResult result = readModel(path, UpAxis::Y);
    EXPECT_TRUE(result.model.has_value()) << qPrintable(result.error);
    return *result.model;
}

class WindowEventTest : public WindowFixture
{
protected:
    void SetUp() override
    {
        WindowFixture::SetUp();
        open(cube());
        start = window->camera();
    }

    OrbitCamera start;
};

class WindowLifeTest : public WindowFixture
{
};

} // namespace

// ---- the view ------------------------------------------------------------------------------------------------------

TEST_F(WindowEventTest, LeftDragOrbits)
{
    drag(Qt::LeftButton, {100, 100}, {150, 120});
    EXPECT_NEAR(window->camera().azimuth(), start.azimuth() - 50.0f, 0.01f) << "200 degrees for the shorter side";
    EXPECT_NEAR(window->camera().elevation(), start.elevation() + 20.0f, 0.01f);
    EXPECT_EQ(window->camera().target(), start.target());
    EXPECT_EQ(window->camera().distance(), start.distance());
}

TEST_F(WindowEventTest, RightAndMiddleDragPan)
{
    for (const Qt::MouseButton button : {Qt::RightButton, Qt::MiddleButton})
    {
        const QVector3D before = window->camera().target();
        drag(button, {100, 100}, {150, 120});
        const QVector3D moved = window->camera().target() - before;
        EXPECT_LT(QVector3D::dotProduct(moved, start.right()), 0.0f) << "the scene follows the pointer to the right";
        EXPECT_GT(QVector3D::dotProduct(moved, start.up()), 0.0f);
        EXPECT_EQ(window->camera().azimuth(), start.azimuth());
    }
}

TEST_F(WindowEventTest, MovingWithoutAButtonDoesNothing)
{
    const QPointF place(50, 50);
    QMouseEvent move(QEvent::MouseMove, place, place, Qt::NoButton, Qt::NoButton, Qt::NoModifier);
    QCoreApplication::sendEvent(window.get(), &move);
    EXPECT_EQ(window->camera().azimuth(), start.azimuth());
    EXPECT_EQ(window->camera().target(), start.target());
}

TEST_F(WindowEventTest, WheelZoomsInAndBackOut)
{
    turnWheel(3);
    EXPECT_LT(window->camera().distance(), start.distance());
    turnWheel(-3);
    EXPECT_NEAR(window->camera().distance(), start.distance(), 1.0e-4f * start.distance());
}

TEST_F(WindowEventTest, RResetsTheView)
{
    const QImage before = picture();
    drag(Qt::LeftButton, {100, 100}, {150, 120});
    drag(Qt::RightButton, {100, 100}, {150, 120});
    turnWheel(5);
    EXPECT_NE(picture(), before);
    press(Qt::Key_R);
    EXPECT_EQ(window->camera().azimuth(), start.azimuth());
    EXPECT_EQ(window->camera().elevation(), start.elevation());
    EXPECT_EQ(window->camera().distance(), start.distance());
    EXPECT_EQ(window->camera().target(), start.target());
    EXPECT_EQ(picture(), before);
}

TEST_F(WindowEventTest, ResizingFramesTheModelAnewUntilItWasZoomed)
{
    window->resize(200, 600);
    waitUntil([this] { return window->camera().distance() != start.distance(); });
    const float tall = window->camera().distance();
    EXPECT_NE(tall, start.distance());
    turnWheel(1);
    const float zoomed = window->camera().distance();
    window->resize(320, 200);
    waitUntil([this] { return window->width() == 320; });
    EXPECT_EQ(window->camera().distance(), zoomed);
}

// ---- sizes ---------------------------------------------------------------------------------------------------------

TEST_F(WindowEventTest, AfterAStormOfSizesThePictureIsThatOfTheLastOne)
{
    const QImage before = picture();
    QRandomGenerator random(7);
    window->setMinimumSize({1, 1});
    for (int i = 0; i < 60; ++i)
    {
        window->resize(random.bounded(1, 500), random.bounded(1, 400));
        QCoreApplication::processEvents();
        if (i % 7 == 0)
            turnWheel(i % 2 ? 1 : -1);
    }
    press(Qt::Key_R);
    window->resize(320, 200);
    // The window system answers late: sizes from before may come once more, and the last one after them.
    EXPECT_TRUE(waitUntil([this, &before] { return picture() == before; }));
    EXPECT_EQ(window->size(), QSize(320, 200));
    EXPECT_EQ(window->error(), QString());
    EXPECT_EQ(window->glErrors(), 0);
}

TEST_F(WindowEventTest, TinyAndNarrowAndWideWindowsAreDrawn)
{
    window->setMinimumSize({1, 1});
    press(Qt::Key_H);
    press(Qt::Key_S);
    for (const QSize size : {QSize(1, 1), QSize(1, 300), QSize(900, 1), QSize(2, 2), QSize(5000, 40), QSize(40, 5000)})
    {
        window->resize(size);
        EXPECT_TRUE(waitUntil([this, size] { return window->size() == size; }));
        settle();
        EXPECT_EQ(window->picture().size(), size);
    }
    EXPECT_EQ(window->error(), QString());
}

TEST_F(WindowEventTest, HidingAndShowingGoesOnWhereItWas)
{
    const QImage before = picture();
    for (int i = 0; i < 4; ++i)
    {
        window->hide();
        EXPECT_TRUE(waitUntil([this] { return !window->isExposed(); }));
        const int drawn = frames();
        press(Qt::Key_G); // on and off again, while nothing is seen
        window->requestUpdate();
        QCoreApplication::processEvents(QEventLoop::AllEvents, 20);
        EXPECT_EQ(frames(), drawn) << "what is not seen is not drawn";
        window->show();
        EXPECT_TRUE(waitUntil([this, drawn] { return window->isExposed() && frames() > drawn; }));
    }
    EXPECT_EQ(picture(), before);
}

// ---- the end -------------------------------------------------------------------------------------------------------

TEST_F(WindowEventTest, EscapeClosesAndTheLastFrameIsKept)
{
    press(Qt::Key_Escape);
    waitUntil([this] { return !window->isVisible(); });
    EXPECT_FALSE(window->isVisible());
    EXPECT_EQ(window->lastFrame().size(), window->size());
    EXPECT_TRUE(window->error().isEmpty());
}

TEST_F(WindowEventTest, KeysAndEventsAfterTheEndDoNothing)
{
    window->close();
    for (const KeyRow& row : kKeys)
        press(row.keys[0]);
    turnWheel(1);
    drag(Qt::LeftButton, {100, 100}, {150, 120});
    window->resize(100, 100);
    QCoreApplication::processEvents();
    EXPECT_TRUE(window->picture().isNull());
    EXPECT_TRUE(window->panel(Panel::Help).isEmpty());
}

TEST_F(WindowEventTest, AClosedWindowHoldsNoObjectAnyMore)
{
    const std::vector<int> open = livingObjects();
    window->close();
    const std::vector<int> closed = livingObjects();
    EXPECT_GT(open[0], closed[0]) << "buffers";
    EXPECT_EQ(closed, std::vector<int>(closed.size())) << "in this process there was nothing before";
}

TEST_F(WindowEventTest, AWindowThatLosesItsSurfaceLetsGoOfEverything)
{
    window->destroy();
    EXPECT_EQ(livingObjects(), std::vector<int>(livingObjects().size()));
    EXPECT_TRUE(window->picture().isNull());
}

TEST_F(WindowLifeTest, ClosingWhileThingsMoveLeavesNothing)
{
    open(makeCrowd(20));
    EXPECT_TRUE(waitUntil([this] { return frames() > 3; })) << "it goes on by itself";
    press(Qt::Key_Escape);
    EXPECT_FALSE(window->isVisible());
    EXPECT_FALSE(window->lastFrame().isNull());
}

TEST_F(WindowLifeTest, ClosingWhileScreensChangeLeavesNothing)
{
    open(makeScreenWall());
    EXPECT_TRUE(waitUntil([this] { return frames() > 3; }));
    press(Qt::Key_S);
    press(Qt::Key_H);
    settle();
    window->close();
    EXPECT_FALSE(window->isVisible());
}

TEST_F(WindowLifeTest, AWindowThatWasNeverShownLeavesNothing)
{
    QString error;
    window = std::make_unique<Window>();
    ASSERT_TRUE(window->create(cube(), home(), 1, RenderSettings(), QString(), error)) << qPrintable(error);
    window.reset();
}

TEST_F(WindowLifeTest, AWindowThatIsDestroyedWhileItIsOpenLeavesNothing)
{
    open(cube());
    window.reset();
}

TEST_F(WindowLifeTest, ACameraThatTheFileHasNotIsRefused)
{
    QString error;
    window = std::make_unique<Window>();
    EXPECT_FALSE(window->create(cube(), home(), 1, RenderSettings(), QStringLiteral("none"), error));
    EXPECT_EQ(error.toStdString(), "the model has no camera 'none'");
}

TEST_F(WindowLifeTest, AnErrorOfOpenGLIsToldOnceAndEachIsCounted)
{
    open(cube());
    static QStringList told;
    told.clear();
    const QtMessageHandler former = qInstallMessageHandler(
        [](QtMsgType type, const QMessageLogContext&, const QString& text)
        {
            if (type == QtDebugMsg)
                told.append(text);
        });
    for (int count = 1; count <= 3; ++count)
    {
        EXPECT_FALSE(window->picture().isNull()); // which makes the context current
        Harrow::Vrk::glEnable(GL_TEXTURE);        // nothing that can be enabled
        settle();
        EXPECT_EQ(window->glErrors(), count);
    }
    qInstallMessageHandler(former);
    EXPECT_EQ(told, QStringList("OpenGL reports the error 0x0500; further ones are counted"));
    window.reset();
}

TEST_F(WindowLifeTest, OneWindowAfterTheOtherShowsTheSame)
{
    open(cube());
    const QImage first = picture();
    closeWindow();
    open(cube());
    EXPECT_EQ(picture(), first);
}

// In a process of its own: what is lost stays lost, and is not deleted through another context.
TEST(WindowContextLossTest, EndsWithOneReasonAndNoCrash)
{
    QString error;
    auto window = std::make_unique<Window>();
    window->resize(200, 150);
    ASSERT_TRUE(window->create(cube(), OrbitCamera(), 1, RenderSettings(), QString(), error)) << qPrintable(error);
    window->show();
    const auto wait = [&window](const auto& condition)
    {
        for (int i = 0; i < 2000 && !condition(); ++i)
            QCoreApplication::processEvents(QEventLoop::AllEvents, 20);
        return condition();
    };
    ASSERT_TRUE(wait([&window] { return WindowTestAccess::framesDrawn(*window) > 0; }));
    WindowTestAccess::context(*window) = std::make_unique<QOpenGLContext>(); // which was never made
    window->requestUpdate();
    EXPECT_TRUE(wait([&window] { return !window->isVisible(); }));
    EXPECT_EQ(window->error().toStdString(), "the window has lost its OpenGL context");
    EXPECT_TRUE(window->lastFrame().isNull());
    window.reset();
}

int main(int argc, char** argv)
{
    testing::InitGoogleTest(&argc, argv);
    const QGuiApplication application(argc, argv);
    QGuiApplication::setQuitOnLastWindowClosed(false);
    return RUN_ALL_TESTS();
}
