// SPDX-License-Identifier: MIT
// The framebuffer that pictures are drawn into: multisampled, with depth, averaged down to single pixels for reading
// back or for showing. Plain OpenGL through the library's function table.
#pragma once

#include "RenderSettings.h"

#include <VrkGL/GLFunctions.h>

#include <QImage>
#include <QSize>
#include <QString>

#include <memory>

namespace vrkview
{

class AntiAliasing;

class RenderTarget
{
public:
    RenderTarget();
    ~RenderTarget();
    RenderTarget(const RenderTarget&) = delete;
    RenderTarget& operator=(const RenderTarget&) = delete;

    /// Makes framebuffers for a picture of `size` pixels with about `samples` samples a pixel. Where the driver has
    /// fewer, drawing is done twice as large in each direction, if the driver's limits allow. On false `error` says in
    /// one line why it can't be, such as a size beyond the driver's limit, and nothing is held. All operations want the
    /// same context current; so does the destructor. `antiAliasing` works on what the samples gave.
    bool create(const QSize& size, int samples, AntiAliasingKind antiAliasing, QString& error);
    void destroy();

    QSize size() const
    {
        return _size;
    }

    /// Directs drawing into this target and sets the viewport to all of it.
    void bind();

    /// Averages the samples down, and smooths what comes of it. Between the last draw and `read` or `show`.
    void resolve();

    /// Directs drawing onto the resolved picture, for what is to be smoothed no more.
    void bindResolved();

    /// The resolved picture, top row first, opaque.
    QImage read();

    /// Copies the resolved picture into all of `framebuffer`, the window's, which has `size` pixels; another size than
    /// the picture's scales it. Leaves that framebuffer bound.
    void show(GLuint framebuffer, const QSize& size);

    /// The largest side that a picture can have.
    static int largestSide();

private:
    struct Layer
    {
        GLuint framebuffer = 0;
        GLuint color = 0;
        GLuint depth = 0;
        QSize size;
    };

    static bool createLayer(Layer& layer, const QSize& size, int samples, bool withDepth);
    static void destroyLayer(Layer& layer);
    static void copy(const Layer& from, const Layer& to, GLenum filter);

    QSize _size;
    Layer _drawn;    // multisampled, perhaps twice as large
    Layer _averaged; // as large as _drawn; absent where that is no larger than the picture
    Layer _resolved; // as large as the picture
    std::unique_ptr<AntiAliasing> _antiAliasing;
};

} // namespace vrkview
