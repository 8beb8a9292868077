// SPDX-License-Identifier: MIT
#include "RenderTarget.h"

#include "AntiAliasing.h"

#include <algorithm>
#include <iterator>

namespace vrkview
{

using namespace Harrow::Vrk;

namespace
{

GLint limit(GLenum name)
{
    GLint value = 0;
    glGetIntegerv(name, &value);
    return value;
}

void forgetErrors()
{
    for (int i = 0; i < 16 && glGetError() != GL_NO_ERROR; ++i)
    {
    }
}

} // namespace

RenderTarget::RenderTarget() = default;

RenderTarget::~RenderTarget()
{
    destroy();
}

bool RenderTarget::create(const QSize& size, int samples, AntiAliasingKind antiAliasing, QString& error)
{
    destroy();
    const int largest = largestSide();
    if (size.isEmpty() || size.width() > largest || size.height() > largest)
    {
        error = QStringLiteral("a picture of %1x%2 pixels is too large: this driver draws at most %3x%3")
                    .arg(size.width())
                    .arg(size.height())
                    .arg(largest);
        return false;
    }

    const int driverSamples = std::max(1, limit(GL_MAX_SAMPLES));
    const bool fitsTwice = 2 * std::max(size.width(), size.height()) <= largest;
    const int scale = samples > driverSamples && fitsTwice ? 2 : 1;
    const int wantedSamples = std::clamp(samples / (scale * scale), 1, driverSamples);
    const int drawnSamples = wantedSamples == 1 ? 0 : wantedSamples; // a driver may take 1 for the fewest that it has

    forgetErrors();
    const QSize drawnSize = size * scale;
    const bool made = createLayer(_drawn, drawnSize, drawnSamples, true) &&
                      (scale == 1 || createLayer(_averaged, drawnSize, 0, false)) &&
                      createLayer(_resolved, size, 0, false);
    if (!made || glGetError() != GL_NO_ERROR)
    {
        destroy();
        error = QStringLiteral("the driver has no memory for a picture of %1x%2 pixels with %3 samples each")
                    .arg(size.width())
                    .arg(size.height())
                    .arg(samples);
        return false;
    }
    _size = size;
    _antiAliasing = std::make_unique<AntiAliasing>();
    if (_antiAliasing->create(antiAliasing, size, error))
        return true;
    destroy();
    return false;
}

void RenderTarget::destroy()
{
    destroyLayer(_drawn);
    destroyLayer(_averaged);
    destroyLayer(_resolved);
    _antiAliasing.reset();
    _size = QSize();
}

void RenderTarget::bind()
{
    glBindFramebuffer(GL_FRAMEBUFFER, _drawn.framebuffer);
    glViewport(0, 0, _drawn.size.width(), _drawn.size.height());
}

void RenderTarget::resolve()
{
    // Samples can be averaged only at equal size; what was drawn twice as large then comes down by a linear filter,
    // whose taps fall exactly between four pixels.
    if (_averaged.framebuffer != 0)
    {
        copy(_drawn, _averaged, GL_NEAREST);
        copy(_averaged, _resolved, GL_LINEAR);
    }
    else
        copy(_drawn, _resolved, GL_NEAREST);
    if (_antiAliasing)
        _antiAliasing->apply(_resolved.framebuffer);
}

void RenderTarget::bindResolved()
{
    glBindFramebuffer(GL_FRAMEBUFFER, _resolved.framebuffer);
    glViewport(0, 0, _size.width(), _size.height());
}

QImage RenderTarget::read()
{
    QImage image(_size, QImage::Format_RGBX8888);
    if (image.isNull())
        return image;
    glBindFramebuffer(GL_READ_FRAMEBUFFER, _resolved.framebuffer);
    glPixelStorei(GL_PACK_ALIGNMENT, 4);
    glReadPixels(0, 0, _size.width(), _size.height(), GL_RGBA, GL_UNSIGNED_BYTE, image.bits());
    return image.mirrored(); // OpenGL's first row is the lowest
}

void RenderTarget::show(GLuint framebuffer, const QSize& size)
{
    Layer window;
    window.framebuffer = framebuffer;
    window.size = size;
    copy(_resolved, window, size == _size ? GL_NEAREST : GL_LINEAR);
    glBindFramebuffer(GL_FRAMEBUFFER, framebuffer);
}

int RenderTarget::largestSide()
{
    GLint viewport[2] = {0, 0};
    glGetIntegerv(GL_MAX_VIEWPORT_DIMS, viewport);
    return std::min({limit(GL_MAX_RENDERBUFFER_SIZE), viewport[0], viewport[1]});
}

bool RenderTarget::createLayer(Layer& layer, const QSize& size, int samples, bool withDepth)
{
    layer.size = size;
    glGenFramebuffers(1, &layer.framebuffer);
    glBindFramebuffer(GL_FRAMEBUFFER, layer.framebuffer);

    const auto attach = [&](GLuint& buffer, GLenum format, GLenum attachment)
    {
        glGenRenderbuffers(1, &buffer);
        glBindRenderbuffer(GL_RENDERBUFFER, buffer);
        glRenderbufferStorageMultisample(GL_RENDERBUFFER, samples, format, size.width(), size.height());
        glFramebufferRenderbuffer(GL_FRAMEBUFFER, attachment, GL_RENDERBUFFER, buffer);
    };
    attach(layer.color, GL_RGBA8, GL_COLOR_ATTACHMENT0);
    if (withDepth)
        attach(layer.depth, GL_DEPTH_COMPONENT24, GL_DEPTH_ATTACHMENT);
    return glCheckFramebufferStatus(GL_FRAMEBUFFER) == GL_FRAMEBUFFER_COMPLETE;
}

void RenderTarget::destroyLayer(Layer& layer)
{
    if (layer.framebuffer != 0)
        glDeleteFramebuffers(1, &layer.framebuffer);
    const GLuint buffers[] = {layer.color, layer.depth};
    if (layer.color != 0 || layer.depth != 0)
        glDeleteRenderbuffers(GLsizei(std::size(buffers)), buffers);
    layer = Layer();
}

void RenderTarget::copy(const Layer& from, const Layer& to, GLenum filter)
{
    glBindFramebuffer(GL_READ_FRAMEBUFFER, from.framebuffer);
    glBindFramebuffer(GL_DRAW_FRAMEBUFFER, to.framebuffer);
    glBlitFramebuffer(0, 0, from.size.width(), from.size.height(), 0, 0, to.size.width(), to.size.height(),
                      GL_COLOR_BUFFER_BIT, filter);
}

} // namespace vrkview
