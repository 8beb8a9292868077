// SPDX-License-Identifier: MIT
#include "Guide.h"

#include <VrkGL/GLFunctions.h>
#include <VrkGL/GLUtilities.h>

#include <cstdio>
#include <cstdlib>

using namespace Harrow::Vrk;

namespace
{

constexpr int kSamples = 4;
constexpr int kTolerance = 3;

int complaints = 0;

void print(QtMsgType type, const QMessageLogContext&, const QString& text)
{
    if (type != QtDebugMsg && type != QtInfoMsg)
        ++complaints;
    std::fprintf(stderr, "%s\n", qPrintable(text));
}

void attachRenderbuffer(GLenum point, GLenum format, int samples, int width, int height)
{
    GLuint renderbuffer = 0;
    glGenRenderbuffers(1, &renderbuffer);
    glBindRenderbuffer(GL_RENDERBUFFER, renderbuffer);
    glRenderbufferStorageMultisample(GL_RENDERBUFFER, samples, format, width, height);
    glFramebufferRenderbuffer(GL_FRAMEBUFFER, point, GL_RENDERBUFFER, renderbuffer);
}

GLuint newFramebuffer(int samples, int width, int height)
{
    GLuint framebuffer = 0;
    glGenFramebuffers(1, &framebuffer);
    glBindFramebuffer(GL_FRAMEBUFFER, framebuffer);
    attachRenderbuffer(GL_COLOR_ATTACHMENT0, GL_RGBA8, samples, width, height);
    attachRenderbuffer(GL_DEPTH_ATTACHMENT, GL_DEPTH_COMPONENT24, samples, width, height);
    return framebuffer;
}

} // namespace

Guide::Guide(int argc, char** argv, int width, int height)
    : _file(argc > 1 ? argv[1] : nullptr), _width(width), _height(height)
{
    qInstallMessageHandler(&print);
    QString error;
    if (!_context.create(error))
        qCritical("%s", qPrintable(error));
    else if (initializeGLFunctions())
    {
        _framebuffer = newFramebuffer(kSamples, width, height);
        _resolved = newFramebuffer(0, width, height);
        _ready = true;
    }
}

bool Guide::isReady() const
{
    return _ready;
}

void Guide::begin(const QColor& background)
{
    _picture = QImage();
    glBindFramebuffer(GL_FRAMEBUFFER, _framebuffer);
    glViewport(0, 0, _width, _height);
    glClearColor(background.redF(), background.greenF(), background.blueF(), 1.0f);
    glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
}

void Guide::addBox(QList<float>& vertices, const QVector3D& low, const QVector3D& high)
{
    constexpr int kFaces[6][4] = {{0, 2, 3, 1}, {4, 5, 7, 6}, {0, 1, 5, 4}, {2, 6, 7, 3}, {0, 4, 6, 2}, {1, 3, 7, 5}};
    for (const auto& face : kFaces)
        for (const int corner : {face[0], face[1], face[2], face[0], face[2], face[3]})
            vertices << (corner & 1 ? high : low).x() << (corner & 2 ? high : low).y() << (corner & 4 ? high : low).z();
}

/// By way of a framebuffer without samples, which can be read.
const QImage& Guide::picture()
{
    if (_picture.isNull())
    {
        glBindFramebuffer(GL_READ_FRAMEBUFFER, _framebuffer);
        glBindFramebuffer(GL_DRAW_FRAMEBUFFER, _resolved);
        glBlitFramebuffer(0, 0, _width, _height, 0, 0, _width, _height, GL_COLOR_BUFFER_BIT, GL_NEAREST);
        glBindFramebuffer(GL_READ_FRAMEBUFFER, _resolved);
        _picture = QImage(_width, _height, QImage::Format_RGBA8888);
        glReadPixels(0, 0, _width, _height, GL_RGBA, GL_UNSIGNED_BYTE, _picture.bits());
        glBindFramebuffer(GL_FRAMEBUFFER, _framebuffer);
    }
    return _picture;
}

QColor Guide::pixel(int x, int y)
{
    return picture().pixelColor(x, y);
}

void Guide::expect(bool holds, const char* what)
{
    if (holds)
        return;
    ++_failures;
    std::fprintf(stderr, "FAILED: %s\n", what);
}

void Guide::expectColor(const QColor& seen, const QColor& wanted, const char* what)
{
    const auto isNear = [](int a, int b) { return std::abs(a - b) <= kTolerance; };
    const bool holds =
        isNear(seen.red(), wanted.red()) && isNear(seen.green(), wanted.green()) && isNear(seen.blue(), wanted.blue());
    expect(holds, what);
    if (!holds)
        std::fprintf(stderr, "  %s in place of %s\n", qPrintable(seen.name()), qPrintable(wanted.name()));
}

int Guide::finish()
{
    expect(!hasGLError(__FILE__, __LINE__), "there is no error of OpenGL");
    if (_file)
        expect(picture().mirrored().save(QString::fromLocal8Bit(_file)), "the picture could be saved");
    return _failures == 0 && complaints == 0 ? 0 : 1;
}
