// SPDX-License-Identifier: MIT
#include "Window.h"

#include "Driver.h"
#include "Terminal.h"

#include <VrkGL/OpenGLDeviceContext.h>

#include <QMouseEvent>
#include <QTimer>
#include <QWheelEvent>

#include <algorithm>
#include <cmath>

namespace vrkview
{

namespace
{

constexpr float kDegreesPerSide = 200.0f; // orbiting by a drag across the window's shorter side
constexpr float kZoomPerNotch = 0.88f;
constexpr qsizetype kFramesOfStats = 60;
constexpr float kUnitsPerNotch = 120.0f; // of QWheelEvent::angleDelta

} // namespace

Window::Window()
{
    QSurfaceFormat format;
    format.setVersion(3, 2);
    format.setProfile(QSurfaceFormat::CoreProfile);
    setFormat(format);
    setSurfaceType(QSurface::OpenGLSurface);
    setMinimumSize(QSize(64, 64));
}

Window::~Window()
{
    // What the members hold belongs to the context, which goes first.
    if (_context.makeCurrent(this))
    {
        _renderer.destroy();
        _target.destroy();
        Harrow::Vrk::OpenGLDeviceContext::resetContext();
        _context.doneCurrent();
    }
}

bool Window::create(const Model& model, const OrbitCamera& home, int samples, const RenderSettings& settings,
                    const QString& fileCamera, QString& error)
{
    _samples = samples;
    _antiAliasing = settings.antiAliasing;
    _fileCamera = fileCamera;
    const auto changes = [](const Image& image) { return image.streamer.has_value(); };
    _moves = !model.motions.empty() || std::any_of(model.images.begin(), model.images.end(), changes);
    _sinceStart.start();
    _outline.bounds = model.bounds;
    _outline.extremes = model.extremes;
    _home = home;
    {
        const QuietScope quiet; // a failure is told by the caller
        QWindow::create();
        _context.setFormat(requestedFormat());
        if (!_context.create() || !_context.makeCurrent(this))
        {
            error = QStringLiteral("the window gets no OpenGL context");
            return false;
        }
    }
    const QSurfaceFormat format = _context.format();
    if (format.version() < qMakePair(3, 2) || format.profile() != QSurfaceFormat::CoreProfile)
    {
        error = QStringLiteral("the driver offers no OpenGL 3.2 core profile");
        return false;
    }
    if (!startDriver(_driver, error) || !_renderer.create(model, settings, error))
        return false;
    if (!_fileCamera.isEmpty() && !_renderer.fileCamera(_fileCamera, 1.0f))
    {
        error = QStringLiteral("the model has no camera '%1'").arg(_fileCamera);
        return false;
    }
    frameModel();
    return true;
}

QSize Window::sizeInPixels() const
{
    return (QSizeF(size()) * devicePixelRatio()).toSize();
}

float Window::aspect() const
{
    return float(qMax(1, width())) / float(qMax(1, height()));
}

void Window::frameModel()
{
    _camera = _home;
    _camera.frame(_outline, aspect());
    _framed = true;
}

void Window::drawFrame()
{
    if (!isExposed() || !_error.isEmpty() || !_context.makeCurrent(this))
        return;
    const QSize pixels = sizeInPixels();
    if (_target.size() != pixels && !_target.create(pixels, _samples, _antiAliasing, _error))
    {
        QTimer::singleShot(0, this, &QWindow::close);
        return;
    }
    _target.bind();
    if (_moves)
        _renderer.animate(double(_sinceStart.nsecsElapsed()) * 1.0e-9);
    const std::optional<View> fileView = _renderer.fileCamera(_fileCamera, aspect());
    _renderer.draw(fileView && !_fileCamera.isEmpty() ? *fileView : _renderer.viewOf(_camera, aspect()));
    keepStats();
    _target.resolve();
    _target.show(_context.defaultFramebufferObject());
    _context.swapBuffers(this);

    ++_framesDrawn;
    if (_frameLimit > 0 && _framesDrawn >= _frameLimit)
        QTimer::singleShot(0, this, &QWindow::close);
    else if (_frameLimit > 0 || _moves)
        requestUpdate();
}

void Window::keepStats()
{
    if (_stats.size() >= kFramesOfStats)
        _stats.removeFirst();
    _stats.append(_renderer.stats());
}

bool Window::event(QEvent* event)
{
    if (event->type() == QEvent::UpdateRequest)
    {
        drawFrame();
        return true;
    }
    return QWindow::event(event);
}

void Window::exposeEvent(QExposeEvent*)
{
    drawFrame();
}

void Window::resizeEvent(QResizeEvent*)
{
    if (_framed)
        _camera.frame(_outline, aspect());
    requestUpdate();
}

void Window::closeEvent(QCloseEvent* event)
{
    if (_framesDrawn > 0 && _error.isEmpty() && _context.makeCurrent(this))
        _lastFrame = _target.read();
    QWindow::closeEvent(event);
}

void Window::mousePressEvent(QMouseEvent* event)
{
    _pointer = event->position();
}

void Window::mouseMoveEvent(QMouseEvent* event)
{
    const QPointF moved = (event->position() - _pointer) / qMax(1, qMin(width(), height()));
    _pointer = event->position();
    const auto x = float(moved.x());
    const auto y = float(moved.y());
    if (event->buttons() & Qt::LeftButton)
        _camera.orbit(-kDegreesPerSide * x, kDegreesPerSide * y);
    else if (event->buttons() & (Qt::RightButton | Qt::MiddleButton))
    {
        _camera.pan(x, -y);
        _framed = false;
    }
    else
        return;
    requestUpdate();
}

void Window::wheelEvent(QWheelEvent* event)
{
    _camera.zoom(std::pow(kZoomPerNotch, float(event->angleDelta().y()) / kUnitsPerNotch));
    _framed = false;
    requestUpdate();
}

void Window::keyPressEvent(QKeyEvent* event)
{
    if (event->key() == Qt::Key_Escape)
        close();
    else if (event->key() == Qt::Key_R)
    {
        frameModel();
        requestUpdate();
    }
}

} // namespace vrkview
