// SPDX-License-Identifier: MIT
#include "Window.h"

#include "Driver.h"
#include "StatsText.h"
#include "Switches.h"
#include "Terminal.h"

#include <VrkGL/OpenGLDeviceContext.h>

#include <QCoreApplication>
#include <QDebug>
#include <QKeyEvent>

#include <algorithm>
#include <utility>

namespace vrkview
{

namespace
{

constexpr qsizetype kFramesOfStats = 60;
constexpr qint64 kMillisecondsOfStatsText = 250; // what changes faster can't be read
constexpr int kMillisecondsOfRemark = 4000;
constexpr int kLeastSide = 64;  // of the pictures that are tried where there is little memory
constexpr int kMostErrors = 16; // a lost context may have errors without end

} // namespace

// ---- life ----------------------------------------------------------------------------------------------------------

Window::Window()
{
    QSurfaceFormat format;
    format.setVersion(3, 2);
    format.setProfile(QSurfaceFormat::CoreProfile);
    setFormat(format);
    setSurfaceType(QSurface::OpenGLSurface);
    setMinimumSize(QSize(64, 64));
    _remarkEnd.setSingleShot(true);
    connect(&_remarkEnd, &QTimer::timeout, this, [this] { tell(QString()); });
    _end.setSingleShot(true);
    connect(&_end, &QTimer::timeout, this, &QWindow::close);
    connect(this, &QWindow::screenChanged, this, [this] { requestUpdate(); });
}

Window::~Window()
{
    release();
}

bool Window::create(Model model, const OrbitCamera& home, int samples, const RenderSettings& settings,
                    const QString& fileCamera, QString& error)
{
    _model = std::move(model);
    _samples = samples;
    _settings = settings;
    _environmentPath = settings.environment.path.isEmpty() ? QLatin1String(kBuiltInSky) : settings.environment.path;
    const auto changes = [](const Image& image) { return image.streamer.has_value(); };
    _moves = !_model.motions.empty() || std::any_of(_model.images.begin(), _model.images.end(), changes);
    _sinceMove.start();
    _sinceFrame.start();
    _home = home;
    {
        const QuietScope quiet; // a failure is told by the caller
        QWindow::create();
        _context = std::make_unique<QOpenGLContext>();
        _context->setFormat(requestedFormat());
        if (!_context->create() || !_context->makeCurrent(this))
        {
            error = QStringLiteral("the window gets no OpenGL context");
            return false;
        }
    }
    const QSurfaceFormat format = _context->format();
    if (format.version() < qMakePair(3, 2) || format.profile() != QSurfaceFormat::CoreProfile)
    {
        error = QStringLiteral("the driver offers no OpenGL 3.2 core profile");
        return false;
    }
    return startDriver(_driver, error) && createDrawing(fileCamera, error);
}

bool Window::createDrawing(const QString& fileCamera, QString& error)
{
    _drawing = std::make_unique<Drawing>();
    if (!_drawing->overlay.create(error) || !_drawing->renderer.create(_model, _settings, error))
        return false;
    if (!fileCamera.isEmpty())
    {
        _homeFileCamera = _drawing->renderer.fileCameraIndex(fileCamera);
        if (_homeFileCamera < 0)
        {
            error = QStringLiteral("the model has no camera '%1'").arg(fileCamera);
            return false;
        }
    }
    frameModel();
    if (!_drawing->renderer.whiteTiles().isEmpty())
        remark(_drawing->renderer.whiteTiles());
    return true;
}

/// What the members hold belongs to the context, which can be made current as long as the window has its surface.
void Window::release()
{
    if (!_drawing)
        return;
    if (!_context->makeCurrent(this))
    {
        // The objects went with the context. To delete them through another one, or none, would be wrong.
        static_cast<void>(_drawing.release());
        return;
    }
    _drawing.reset();
    Harrow::Vrk::OpenGLDeviceContext::resetContext();
    countErrors();
    _context->doneCurrent();
}

void Window::giveUp(const QString& error)
{
    if (_error.isEmpty())
        _error = error;
    _end.start();
}

// ---- a frame -------------------------------------------------------------------------------------------------------

/// At least one: a window system may give a window none for a moment.
QSize Window::sizeInPixels() const
{
    return (QSizeF(size()) * devicePixelRatio()).toSize().expandedTo(QSize(1, 1));
}

float Window::aspect() const
{
    return float(qMax(1, width())) / float(qMax(1, height()));
}

void Window::frameModel()
{
    _fileCamera = _homeFileCamera;
    _camera = _home;
    _camera.frame(_model, aspect());
    _framed = true;
}

void Window::drawFrame()
{
    if (!isExposed())
        _follows = false; // the time until it is seen again is not that of a frame
    if (!isExposed() || !_drawing || !_error.isEmpty())
        return;
    QString error;
    if (!_context->makeCurrent(this))
        return giveUp(QStringLiteral("the window has lost its OpenGL context"));
    if (!fitTarget(error))
        return giveUp(error);
    moveOn();
    drawPicture();
    const QSize pixels = sizeInPixels();
    _drawing->target.show(_context->defaultFramebufferObject(), pixels);
    keepStats();
    drawTexts(pixels);
    countErrors();
    _context->swapBuffers(this);
    if (std::exchange(_remarkIsNew, false))
        _remarkEnd.start(kMillisecondsOfRemark);
    goOn();
}

/// A window that is larger than what the driver can draw, or has memory for, shows a smaller picture, scaled.
bool Window::fitTarget(QString& error)
{
    const QSize pixels = sizeInPixels();
    if (pixels == _fittedTo && !_drawing->target.size().isEmpty())
        return true;
    const int largest = RenderTarget::largestSide();
    QSize size = pixels.boundedTo(QSize(largest, largest));
    _holdsFrame = false;
    while (!_drawing->target.create(size, _samples, _settings.antiAliasing, error))
    {
        if (std::max(size.width(), size.height()) <= kLeastSide)
            return false;
        size = (size / 2).expandedTo(QSize(1, 1));
    }
    _fittedTo = pixels;
    return true;
}

void Window::moveOn()
{
    if (_moves && !_paused)
        _seconds += double(_sinceMove.nsecsElapsed()) * 1.0e-9;
    _sinceMove.start();
    if (_moves && (!_paused || _jumps))
        _drawing->renderer.animate(_seconds);
    _jumps = false;
}

void Window::drawPicture()
{
    SceneRenderer& renderer = _drawing->renderer;
    _drawing->target.bind();
    renderer.draw(_fileCamera >= 0 ? renderer.fileCameraView(_fileCamera, aspect())
                                   : renderer.viewOf(_camera, aspect()));
    _drawing->target.resolve();
    _holdsFrame = true;
}

void Window::drawTexts(const QSize& framebuffer)
{
    Overlay& overlay = _drawing->overlay;
    const bool isDue = !_sinceStatsText.isValid() || _sinceStatsText.elapsed() >= kMillisecondsOfStatsText;
    if (!overlay.rows(Panel::Stats).isEmpty() && isDue)
    {
        overlay.show(Panel::Stats, statsRows(_stats, _settings, {_driver, cameraName(), _glErrors}));
        _sinceStatsText.start();
    }
    overlay.draw(framebuffer, devicePixelRatio());
}

void Window::keepStats()
{
    if (std::exchange(_statsAreOld, false))
        _stats.clear();
    if (_stats.size() >= kFramesOfStats)
        _stats.removeFirst();
    FrameStats stats = _drawing->renderer.stats();
    stats.sinceLast = _follows ? double(_sinceFrame.nsecsElapsed()) * 1.0e-6 : 0.0;
    _stats.append(stats);
    _sinceFrame.start();
}

void Window::countErrors()
{
    for (int i = 0; i < kMostErrors; ++i)
    {
        const GLenum error = Harrow::Vrk::glGetError();
        if (error == GL_NO_ERROR)
            return;
        if (_glErrors++ == 0)
            qDebug("OpenGL reports the error 0x%04X; further ones are counted", error);
    }
}

/// To the next frame, or to the end.
void Window::goOn()
{
    ++_framesDrawn;
    _follows = true; // but for what a key does
    if (!_presses.isEmpty())
    {
        const QKeyCombination key = _presses.takeFirst();
        QKeyEvent press(QEvent::KeyPress, key.key(), key.keyboardModifiers());
        QCoreApplication::sendEvent(this, &press);
        if (!_drawing)
            return;
    }
    const bool isLast = _frameLimit > 0 && _framesDrawn >= _frameLimit;
    const bool showsStats = !_drawing->overlay.rows(Panel::Stats).isEmpty();
    const bool goesOn = !isLast && (_frameLimit > 0 || (_moves && !_paused) || showsStats);
    _follows = _follows && goesOn;
    if (isLast)
        _end.start();
    else if (goesOn)
        requestUpdate();
}

QImage Window::picture()
{
    QString error;
    if (!_drawing || !_error.isEmpty() || !_context->makeCurrent(this) || !fitTarget(error))
        return {};
    drawPicture();
    return _drawing->target.read();
}

QImage Window::pictureWithTexts()
{
    if (picture().isNull())
        return {};
    RenderTarget& target = _drawing->target;
    target.bindResolved();
    drawTexts(target.size());
    QImage image = target.read();
    target.resolve(); // whoever reads next gets the picture alone
    return image;
}

// ---- events of the window system -----------------------------------------------------------------------------------

bool Window::event(QEvent* event)
{
    if (event->type() == QEvent::UpdateRequest)
    {
        drawFrame();
        return true;
    }
    if (event->type() == QEvent::PlatformSurface && static_cast<QPlatformSurfaceEvent*>(event)->surfaceEventType() ==
                                                        QPlatformSurfaceEvent::SurfaceAboutToBeDestroyed)
        release(); // as when the window was closed: there is no making current afterwards
    return QWindow::event(event);
}

void Window::exposeEvent(QExposeEvent*)
{
    drawFrame();
}

void Window::resizeEvent(QResizeEvent*)
{
    if (_framed)
        _camera.frame(_model, aspect());
    requestUpdate();
}

void Window::closeEvent(QCloseEvent* event)
{
    if (_framesDrawn > 0 && _error.isEmpty() && _drawing && _context->makeCurrent(this))
        _lastFrame = _holdsFrame ? _drawing->target.read() : picture();
    QWindow::closeEvent(event);
}

} // namespace vrkview
