// SPDX-License-Identifier: MIT
// Shows a model in a window. What mouse and keys do stands in Keys.h. Draws only when something changed, but for a
// scene that moves by itself, and while it shows what a frame costs.
#pragma once

#include "Keys.h"
#include "OrbitCamera.h"
#include "Overlay.h"
#include "RenderTarget.h"
#include "SceneRenderer.h"

#include <QElapsedTimer>
#include <QImage>
#include <QOpenGLContext>
#include <QPointF>
#include <QTimer>
#include <QWindow>

#include <memory>

namespace vrkview
{

struct WindowTestAccess;

/// Wants a QGuiApplication.
class Window : public QWindow
{
public:
    Window();
    ~Window() override;

    /// Makes the OpenGL context and uploads `model`. On false `error` says why in one line. `home` gives the angles to
    /// start from and to return to. `fileCamera` names the camera to look through, or is empty for orbiting.
    bool create(Model model, const OrbitCamera& home, int samples, const RenderSettings& settings,
                const QString& fileCamera, QString& error);

    /// Closes by itself after this many frames; 0 is never.
    void setFrameLimit(int frames)
    {
        _frameLimit = frames;
    }

    /// Keys that are pressed by themselves, one after each frame.
    void setPresses(const QList<QKeyCombination>& keys)
    {
        _presses = keys;
    }

    /// Of the frames that were drawn since the settings changed, the last few.
    const QList<FrameStats>& stats() const
    {
        return _stats;
    }

    const OrbitCamera& camera() const
    {
        return _camera;
    }

    /// The number of the file's camera that is looked through, or -1.
    int fileCamera() const
    {
        return _fileCamera;
    }

    const RenderSettings& settings() const
    {
        return _settings;
    }

    bool isPaused() const
    {
        return _paused;
    }

    /// What a panel shows; nothing once the window was closed.
    TextRows panel(Panel panel) const
    {
        return _drawing ? _drawing->overlay.rows(panel) : TextRows();
    }

    /// The driver's name and version.
    QString driver() const
    {
        return _driver;
    }

    /// Draws the picture as of now, without the panels and beside the frames of the window. Null if that fails.
    QImage picture();

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

    /// Errors that OpenGL has reported so far. The first is told in the debug log.
    int glErrors() const
    {
        return _glErrors;
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
    friend struct WindowTestAccess;

    /// What belongs to the context.
    struct Drawing
    {
        RenderTarget target;
        SceneRenderer renderer;
        Overlay overlay;
    };

    /// A choice that could not be had, from which its key goes on.
    struct Refusal
    {
        Action action;
        RenderSettings settings;
    };

    bool createDrawing(const QString& fileCamera, QString& error);
    QSize sizeInPixels() const;
    float aspect() const;
    void frameModel();
    void drawFrame();
    bool fitTarget(QString& error);
    void moveOn();
    void drawPicture();
    void drawTexts(const QSize& framebuffer);
    void goOn();
    void keepStats();
    void countErrors();
    void giveUp(const QString& error);
    void release();
    bool change(const RenderSettings& settings, QString& error);
    void tell(const QString& text);
    QString cameraName() const;
    QImage pictureWithTexts();

    // What the keys do.
    void act(const KeyRow& row, bool shift);
    void switchSettings(const KeyRow& row, int step);
    void toggleHelp(bool shift);
    void toggleStats(bool shift);
    void lookThroughNext(bool backwards);
    void resetView(bool shift);
    void togglePause(bool shift);
    void writePicture(bool withTexts);
    void toggleFullscreen(bool shift);
    void leave(bool shift);

    std::unique_ptr<QOpenGLContext> _context;
    std::unique_ptr<Drawing> _drawing; // null before the context is there and after it went
    Model _model;
    RenderSettings _settings;
    std::optional<Refusal> _refusal;
    QString _environmentPath; // what is around when an environment is switched on
    OrbitCamera _camera;
    OrbitCamera _home;
    int _homeFileCamera = -1;
    int _fileCamera = -1;
    QSize _fittedTo;          // the window's size in pixels that the target was made for
    bool _holdsFrame = false; // the target has a picture

    bool _moves = false; // by itself, so that it is drawn all the time
    bool _paused = false;
    bool _jumps = false; // what moves is to be brought to its place, though it is paused
    double _seconds = 0.0;
    QElapsedTimer _sinceMove;

    QList<FrameStats> _stats;
    bool _statsAreOld = false; // they are of other settings
    bool _follows = false;     // the next frame comes at once
    QElapsedTimer _sinceFrame;
    QElapsedTimer _sinceStatsText;
    QTimer _end; // closes the window, but not in the midst of a frame
    QTimer _remarkEnd;
    bool _remarkIsNew = false; // no frame has shown it

    QPointF _pointer; // where the last mouse event was
    QString _driver;
    QString _error;
    QImage _lastFrame;
    QList<QKeyCombination> _presses;
    int _samples = 1;
    int _frameLimit = 0;
    int _framesDrawn = 0;
    int _glErrors = 0;
    bool _framed = true; // neither zoomed nor panned: resizing frames the model anew
};

} // namespace vrkview
