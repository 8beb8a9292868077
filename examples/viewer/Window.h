// SPDX-License-Identifier: MIT
// Shows a model in a window: drag orbits, wheel zooms, right or middle drag pans, R resets, Escape closes. Draws only
// when something changed, but for a scene that moves by itself.
#pragma once

#include "OrbitCamera.h"
#include "RenderTarget.h"
#include "SceneRenderer.h"

#include <QElapsedTimer>
#include <QImage>
#include <QOpenGLContext>
#include <QPointF>
#include <QWindow>

namespace vrkview
{

/// Wants a QGuiApplication.
class Window : public QWindow
{
public:
    Window();
    ~Window() override;

    /// Makes the OpenGL context and uploads `model`, which need not outlive the call. On false `error` says why in one
    /// line. `home` gives the angles to start from and to return to.
    /// `fileCamera` names the camera to look through, or is empty for orbiting.
    bool create(const Model& model, const OrbitCamera& home, int samples, const RenderSettings& settings,
                const QString& fileCamera, QString& error);

    /// Closes by itself after this many frames; 0 is never.
    void setFrameLimit(int frames)
    {
        _frameLimit = frames;
    }

    /// Of the frames that were drawn, the last few.
    const QList<FrameStats>& stats() const
    {
        return _stats;
    }

    const OrbitCamera& camera() const
    {
        return _camera;
    }

    /// The driver's name and version.
    QString driver() const
    {
        return _driver;
    }

    /// The last frame, once the window was closed; null if there was none.
    QImage lastFrame() const
    {
        return _lastFrame;
    }

    /// Why the window closed on its own account, or empty.
    QString error() const
    {
        return _error;
    }

protected:
    bool event(QEvent* event) override;
    void exposeEvent(QExposeEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void closeEvent(QCloseEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;

private:
    QSize sizeInPixels() const;
    float aspect() const;
    void frameModel();
    void drawFrame();
    void keepStats();

    QOpenGLContext _context;
    RenderTarget _target;
    SceneRenderer _renderer;
    OrbitCamera _camera;
    OrbitCamera _home;
    Model _outline; // measures only, to frame by
    QString _fileCamera;
    QElapsedTimer _sinceStart;
    QList<FrameStats> _stats;
    bool _moves = false; // by itself, so that it is drawn all the time
    QPointF _pointer;    // where the last mouse event was
    QString _driver;
    QString _error;
    QImage _lastFrame;
    int _samples = 1;
    AntiAliasingKind _antiAliasing = AntiAliasingKind::None;
    int _frameLimit = 0;
    int _framesDrawn = 0;
    bool _framed = true; // neither zoomed nor panned: resizing frames the model anew
};

} // namespace vrkview
