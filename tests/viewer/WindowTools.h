// SPDX-License-Identifier: MIT
// A window in the process of the test, on a display: events go in, pictures and state come out.
#pragma once

#include "ModelFiles.h"
#include "ViewerRun.h"
#include "Window.h"

#include <VrkGL/BufferObject.h>
#include <VrkGL/DrawBuffers.h>
#include <VrkGL/FramebufferObject.h>
#include <VrkGL/Texture.h>
#include <VrkGL/UniformBufferObject.h>
#include <VrkGL/VertexArrayObject.h>

#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QImage>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QWheelEvent>

#include <array>
#include <memory>
#include <vector>

namespace vrkview
{

struct WindowTestAccess
{
    static std::unique_ptr<QOpenGLContext>& context(Window& window)
    {
        return window._context;
    }
    static int uploads(const Window& window)
    {
        return window._drawing->overlay.uploads();
    }
    static double seconds(const Window& window)
    {
        return window._seconds;
    }
    static int framesDrawn(const Window& window)
    {
        return window._framesDrawn;
    }
};

} // namespace vrkview

/// Living objects of the library, by kind.
inline std::vector<int> livingObjects()
{
    using namespace Harrow::Vrk;
    return {BufferObject::NumAlive(),     BufferObject::NumAliveManaged(),
            DrawBuffers::NumAlive(),      FramebufferObject::NumAlive(),
            Texture::NumAlive(),          UniformBufferObject::NumAlive(),
            VertexArrayObject::NumAlive()};
}

/// Names of OpenGL objects that exist in the current context, by kind.
inline std::vector<int> livingNames()
{
    namespace gl = Harrow::Vrk;        // Qt's headers declare functions of the same names
    constexpr GLuint kLastName = 4000; // far beyond what a window has made
    std::vector<int> counts(7);
    for (GLuint name = 1; name <= kLastName; ++name)
    {
        const GLboolean exists[] = {gl::glIsTexture(name),      gl::glIsBuffer(name),  gl::glIsFramebuffer(name),
                                    gl::glIsRenderbuffer(name), gl::glIsProgram(name), gl::glIsShader(name),
                                    gl::glIsVertexArray(name)};
        for (std::size_t kind = 0; kind < counts.size(); ++kind)
            counts[kind] += exists[kind] ? 1 : 0;
    }
    return counts;
}

/// Opens and closes windows; at the end no object may be left, and OpenGL may not have reported anything.
class WindowFixture : public testing::Test
{
protected:
    void SetUp() override
    {
        _before = livingObjects();
    }

    void TearDown() override
    {
        closeWindow();
        EXPECT_EQ(livingObjects(), _before)
            << "buffers, managed ones, draw lists, framebuffers, textures, blocks, arrays";
    }

    static vrkview::OrbitCamera home()
    {
        vrkview::OrbitCamera camera;
        camera.setAngles(35.0f, 22.0f);
        return camera;
    }

    void open(vrkview::Model model, const vrkview::RenderSettings& settings = {}, const QSize& size = {320, 200})
    {
        QString error;
        window = std::make_unique<vrkview::Window>();
        window->resize(size);
        ASSERT_TRUE(window->create(std::move(model), home(), 1, settings, QString(), error)) << qPrintable(error);
        window->show();
        waitUntil([this] { return window->isExposed() && frames() > 0; });
        ASSERT_TRUE(window->isExposed());
    }

    void closeWindow()
    {
        if (!window)
            return;
        window->close();
        EXPECT_EQ(window->glErrors(), 0);
        window.reset();
    }

    int frames() const
    {
        return vrkview::WindowTestAccess::framesDrawn(*window);
    }

    template <typename Condition> static bool waitUntil(Condition condition)
    {
        constexpr qint64 kPatienceMilliseconds = 60000;
        QElapsedTimer time;
        time.start();
        while (!condition() && time.elapsed() < kPatienceMilliseconds)
            QCoreApplication::processEvents(QEventLoop::AllEvents, 20);
        return condition();
    }

    /// Until the window has shown all that was asked of it so far.
    void settle()
    {
        const int before = frames();
        window->requestUpdate();
        EXPECT_TRUE(waitUntil([this, before] { return frames() > before; }));
    }

    void press(int key, Qt::KeyboardModifiers modifiers = Qt::NoModifier, bool repeated = false)
    {
        QKeyEvent event(QEvent::KeyPress, key, modifiers, QString(), repeated);
        QCoreApplication::sendEvent(window.get(), &event);
    }

    void drag(Qt::MouseButton button, const QPointF& from, const QPointF& to)
    {
        QMouseEvent press(QEvent::MouseButtonPress, from, from, button, button, Qt::NoModifier);
        QMouseEvent move(QEvent::MouseMove, to, to, Qt::NoButton, button, Qt::NoModifier);
        QMouseEvent release(QEvent::MouseButtonRelease, to, to, button, Qt::NoButton, Qt::NoModifier);
        for (QMouseEvent* event : {&press, &move, &release})
            QCoreApplication::sendEvent(window.get(), event);
    }

    void turnWheel(int notches)
    {
        QWheelEvent event({10, 10}, {10, 10}, QPoint(), {0, 120 * notches}, Qt::NoButton, Qt::NoModifier,
                          Qt::NoScrollPhase, false);
        QCoreApplication::sendEvent(window.get(), &event);
    }

    QImage picture()
    {
        const QImage image = window->picture();
        EXPECT_FALSE(image.isNull());
        return image.convertToFormat(QImage::Format_RGB32);
    }

    /// What the window says at its bottom.
    std::string told() const
    {
        const vrkview::TextRows rows = window->panel(vrkview::Panel::Remark);
        return rows.isEmpty() ? std::string() : rows.constFirst().left.toStdString();
    }

    std::unique_ptr<vrkview::Window> window;

private:
    std::vector<int> _before;
};
