// SPDX-License-Identifier: MIT
// What the library says, and to whom: each kind of message is provoked once, and caught as an application would.
#include "Guide.h"

#include <VrkGL/BufferObject.h>
#include <VrkGL/Diagnostics.h>
#include <VrkGL/GLFunctions.h>
#include <VrkGL/GLUtilities.h>
#include <VrkGL/OpenGLDeviceContext.h>
#include <VrkGL/ShaderProgram.h>
#include <VrkGL/Texture.h>
#include <VrkGL/TextureFileInfo.h>
#include <VrkGL/TextureIO.h>

#define EGL_NO_X11 // keeps Xlib's macros out
#include <EGL/egl.h>
#include <EGL/eglext.h>

#include <QRegularExpression>
#include <QStringList>

#include <cstdio>
#include <utility>

using namespace Harrow::Vrk;

static QStringList messages;

static void keep(QtMsgType type, const QMessageLogContext&, const QString& text)
{
    constexpr const char* kLevels[] = {"debug", "warning", "critical", "fatal", "info"};
    messages.append(QStringLiteral("%1: %2").arg(QLatin1String(kLevels[type]), text));
    std::printf("%s\n", qPrintable(messages.last()));
}

/// Whether a message matches that came since the last call.
static bool told(const char* pattern)
{
    return !std::exchange(messages, {}).filter(QRegularExpression(QString::fromLatin1(pattern))).isEmpty();
}

/// The caller's mistake: an assertion, which is told and never stops the program. The call has done nothing.
static void misuse(Guide& guide)
{
    const auto buffer = OpenGLDeviceContext::current()->newBuffer();
    guide.expect(!buffer->bind(), "a buffer without a target is not bound");
    guide.expect(told(R"(^critical: \[BufferObject.cpp:\d+\] \[ !! \] Assertion '.*_target' failed: )") ==
                     isLoggingEnabled(),
                 "the assertion names place, condition and reason");
}

/// What the world did: a warning, and the call's own failure value.
static void loseFile(Guide& guide)
{
    guide.expect(!LoadTextureFromFile("no-such-file.png", TextureFileInfo()), "there is no such file");
    guide.expect(told(R"(^warning: \[TextureIO.cpp:\d+\] File no-such-file.png not found$)") == isLoggingEnabled(),
                 "the warning names the file");
}

/// Shaders that do not compile are told in any case, with the driver's words.
static void breakShader(Guide& guide)
{
    ShaderProgram program;
    program.addShader(GL_FRAGMENT_SHADER, "#version 150\nout vec4 o_Color;\nvoid main() { o_Color = colour; }");
    guide.expect(!program.link(), "it does not link");
    guide.expect(told("^warning: .*colour"), "the driver names what it does not know");
}

/// OpenGL's own errors wait until the application asks. The library asks for none.
static void askForErrors(Guide& guide)
{
    glBindBuffer(GL_RGBA, 0);
    guide.expect(hasGLError(__FILE__, __LINE__), "no buffer goes there");
    guide.expect(told(R"(^warning: \[.*messages.cpp:\d+\] glError: 0x500 ')"), "the error is told, with our place");
    guide.expect(!hasGLError(__FILE__, __LINE__), "and told once");
}

/// In a debug context the driver tells the same at the call that did it, and why.
static void haveDriverReport(Guide& guide)
{
    const EGLint attributes[] = {
        EGL_CONTEXT_MAJOR_VERSION, 3, EGL_CONTEXT_MINOR_VERSION, 2, EGL_CONTEXT_OPENGL_DEBUG, EGL_TRUE, EGL_NONE};
    EGLDisplay display = eglGetCurrentDisplay();
    EGLContext before = eglGetCurrentContext();
    EGLContext debug = eglCreateContext(display, EGL_NO_CONFIG_KHR, EGL_NO_CONTEXT, attributes);
    eglMakeCurrent(display, EGL_NO_SURFACE, EGL_NO_SURFACE, debug);
    const bool reports = initializeGLDebugging();
    glBindBuffer(GL_RGBA, 0);
    guide.expect(told("^debug: .*OpenGL message .*source=api, type=error") == (reports && isLoggingEnabled()),
                 "the driver says which call was wrong");
    eglMakeCurrent(display, EGL_NO_SURFACE, EGL_NO_SURFACE, before);
    eglDestroyContext(display, debug);
}

/// Objects are counted, so a leak shows as a number that does not come back.
static void count(Guide& guide)
{
    const int before = Texture::NumAlive();
    {
        const Texture texture(nullptr);
        guide.expect(Texture::NumAlive() == before + 1, "one more");
    }
    guide.expect(Texture::NumAlive() == before, "and one less");
}

int main(int argc, char** argv)
{
    Guide guide(argc, argv, 8, 8);
    if (!guide.isReady())
        return 1;
    qInstallMessageHandler(&keep); // all of the library's messages go through Qt's
    std::printf("logging is %s\n", isLoggingEnabled() ? "on" : "off");
    misuse(guide);
    loseFile(guide);
    breakShader(guide);
    askForErrors(guide);
    haveDriverReport(guide);
    count(guide);
    OpenGLDeviceContext::resetContext();
    return guide.finish();
}
