// SPDX-License-Identifier: MIT
// What mouse, wheel and keys do in the window.
#include "NumberedFile.h"
#include "StatsText.h"
#include "Switches.h"
#include "Terminal.h"
#include "Window.h"

#include <QDir>
#include <QFileInfo>
#include <QMouseEvent>
#include <QWheelEvent>

#include <algorithm>
#include <cmath>

namespace vrkview
{

namespace
{

constexpr float kDegreesPerSide = 200.0f; // orbiting by a drag across the window's shorter side
constexpr float kZoomPerNotch = 0.88f;
constexpr float kUnitsPerNotch = 120.0f; // of QWheelEvent::angleDelta

} // namespace

// ---- mouse ---------------------------------------------------------------------------------------------------------

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
    _fileCamera = -1; // a camera of the file stands still
    requestUpdate();
}

void Window::wheelEvent(QWheelEvent* event)
{
    if (event->angleDelta().y() == 0)
        return; // a wheel that goes sideways
    _camera.zoom(std::pow(kZoomPerNotch, float(event->angleDelta().y()) / kUnitsPerNotch));
    _framed = false;
    _fileCamera = -1;
    requestUpdate();
}

// ---- keys ----------------------------------------------------------------------------------------------------------

void Window::keyPressEvent(QKeyEvent* event)
{
    constexpr Qt::KeyboardModifiers kOfTheSystem = Qt::ControlModifier | Qt::AltModifier | Qt::MetaModifier;
    const KeyRow* const row = rowOf(event->key());
    if (!row || (event->modifiers() & kOfTheSystem))
        QWindow::keyPressEvent(event);
    else if (!event->isAutoRepeat() || row->repeats)
        act(*row, event->modifiers().testFlag(Qt::ShiftModifier));
}

void Window::act(const KeyRow& row, bool shift)
{
    struct Doing
    {
        Action action;
        void (Window::*act)(bool shift);
    };
    constexpr Doing kDoings[] = {{Action::Help, &Window::toggleHelp},
                                 {Action::Stats, &Window::toggleStats},
                                 {Action::NextCamera, &Window::lookThroughNext},
                                 {Action::ResetView, &Window::resetView},
                                 {Action::Pause, &Window::togglePause},
                                 {Action::Picture, &Window::writePicture},
                                 {Action::Fullscreen, &Window::toggleFullscreen},
                                 {Action::Close, &Window::leave}};
    if (!_drawing || !_error.isEmpty())
        return;
    if (isSwitch(row.action))
        return switchSettings(row, shift && row.withShift == WithShift::Backwards ? -1 : 1);
    const Doing* const doing = std::find_if(std::begin(kDoings), std::end(kDoings),
                                            [&row](const Doing& candidate) { return candidate.action == row.action; });
    if (doing == std::end(kDoings))
        return;
    requestUpdate();
    (this->*doing->act)(shift);
}

/// What is refused leaves everything as it is, but for the place where the same key goes on: behind it.
void Window::switchSettings(const KeyRow& row, int step)
{
    const bool goesOn = _refusal && _refusal->action == row.action;
    Switched next = switched(goesOn ? _refusal->settings : _settings, row.action, step, _environmentPath);
    _refusal.reset();
    QString error;
    if (!next.refused && !change(next.settings, error))
    {
        next.refused = true;
        next.text += QStringLiteral(": ") + error;
    }
    const QString& whiteTiles = _drawing->renderer.whiteTiles();
    if (!next.refused && row.action == Action::Manager && !whiteTiles.isEmpty())
    {
        next.text += QStringLiteral(" (tiles are white: array2d has them)");
        remark(whiteTiles);
    }
    if (next.refused && row.withShift == WithShift::Backwards)
        _refusal = Refusal{row.action, next.settings};
    tell(next.text);
}

bool Window::change(const RenderSettings& settings, QString& error)
{
    if (!_context->makeCurrent(this))
    {
        error = QStringLiteral("the window has lost its OpenGL context");
        giveUp(error);
        return false;
    }
    RenderTarget& target = _drawing->target;
    if (settings.antiAliasing != _settings.antiAliasing && !target.size().isEmpty())
    {
        _holdsFrame = false;
        if (!target.create(target.size(), _samples, settings.antiAliasing, error))
            return false; // the next frame makes the former one again
    }
    if (!_drawing->renderer.change(_model, settings, error))
    {
        if (!_drawing->renderer.isCreated())
            giveUp(error);
        return false;
    }
    _settings = settings;
    _jumps = true;
    _follows = false; // the time that this took is not that of a frame
    _statsAreOld = true;
    _sinceStatsText.invalidate();
    return true;
}

/// At the bottom of the window, for a moment from the frame on that shows it. An empty text takes it away.
void Window::tell(const QString& text)
{
    if (!_drawing)
        return;
    _drawing->overlay.show(Panel::Remark, text.isEmpty() ? TextRows() : TextRows{{text, {}}});
    _remarkEnd.stop();
    _remarkIsNew = !text.isEmpty();
    requestUpdate();
}

void Window::toggleHelp(bool)
{
    Overlay& overlay = _drawing->overlay;
    overlay.show(Panel::Help, overlay.rows(Panel::Help).isEmpty() ? helpRows() : TextRows());
}

void Window::toggleStats(bool)
{
    Overlay& overlay = _drawing->overlay;
    const bool shows = overlay.rows(Panel::Stats).isEmpty();
    overlay.show(Panel::Stats, shows ? statsRows({}, _settings, {_driver, {}, 0}) : TextRows());
    _sinceStatsText.invalidate();
}

QString Window::cameraName() const
{
    if (_fileCamera < 0)
        return {};
    const auto index = std::size_t(_fileCamera);
    const QString name = index < _model.cameras.size() ? _model.cameras[index].name : QString();
    return name.isEmpty() ? QString::number(_fileCamera) : name;
}

/// Orbiting comes before the first camera and behind the last one.
void Window::lookThroughNext(bool backwards)
{
    const int count = _drawing->renderer.fileCameraCount();
    if (count == 0)
        return tell(QStringLiteral("camera: the model's file has none"));
    const int places = count + 1;
    _fileCamera = (_fileCamera + 1 + (backwards ? count : 1)) % places - 1;
    tell(QStringLiteral("camera: %1").arg(_fileCamera < 0 ? QStringLiteral("orbiting") : cameraName()));
}

void Window::resetView(bool)
{
    frameModel();
}

void Window::togglePause(bool)
{
    if (!_moves)
        return tell(QStringLiteral("nothing moves here"));
    _paused = !_paused;
    _sinceMove.start(); // the time of the pause does not count
    tell(_paused ? QStringLiteral("paused") : QStringLiteral("going on"));
}

void Window::writePicture(bool withTexts)
{
    QString path;
    QString error;
    if (writeNumberedPicture(withTexts ? pictureWithTexts() : picture(), QDir::currentPath(), path, error))
    {
        remark(QStringLiteral("wrote %1").arg(path));
        tell(QStringLiteral("picture: %1").arg(QFileInfo(path).fileName()));
        return;
    }
    const QString text = QStringLiteral("cannot write a picture into '%1': %2").arg(QDir::currentPath(), error);
    remark(text);
    tell(text);
}

void Window::toggleFullscreen(bool)
{
    setWindowStates(windowStates() ^ Qt::WindowFullScreen);
}

void Window::leave(bool)
{
    close();
}

} // namespace vrkview
