// SPDX-License-Identifier: MIT
#include "HeadlessContext.h"

#define EGL_NO_X11 // keeps Xlib's macros out
#include <EGL/egl.h>
#include <EGL/eglext.h>

#include <QByteArray>
#include <QByteArrayList>

#include <vector>

namespace vrkview
{

namespace
{

constexpr EGLint kMajorVersion = 3;
constexpr EGLint kMinorVersion = 2;

bool offers(EGLDisplay display, const char* extension)
{
    const char* all = eglQueryString(display, EGL_EXTENSIONS);
    return all && QByteArray(all).split(' ').contains(extension);
}

template <typename Function> Function entryPoint(const char* name)
{
    return reinterpret_cast<Function>(eglGetProcAddress(name));
}

// Every display worth trying, those that need no display server first.
std::vector<EGLDisplay> candidateDisplays()
{
    std::vector<EGLDisplay> displays;
    const auto getPlatformDisplay = entryPoint<PFNEGLGETPLATFORMDISPLAYEXTPROC>("eglGetPlatformDisplayEXT");
    const bool hasPlatforms = getPlatformDisplay && offers(EGL_NO_DISPLAY, "EGL_EXT_platform_base");

    if (hasPlatforms && offers(EGL_NO_DISPLAY, "EGL_MESA_platform_surfaceless"))
        displays.push_back(getPlatformDisplay(EGL_PLATFORM_SURFACELESS_MESA, EGL_DEFAULT_DISPLAY, nullptr));

    const auto queryDevices = entryPoint<PFNEGLQUERYDEVICESEXTPROC>("eglQueryDevicesEXT");
    if (hasPlatforms && queryDevices && offers(EGL_NO_DISPLAY, "EGL_EXT_platform_device"))
    {
        EGLDeviceEXT devices[16];
        EGLint count = 0;
        if (queryDevices(16, devices, &count))
            for (EGLint i = 0; i < count; ++i)
                displays.push_back(getPlatformDisplay(EGL_PLATFORM_DEVICE_EXT, devices[i], nullptr));
    }

    displays.push_back(eglGetDisplay(EGL_DEFAULT_DISPLAY));
    std::erase(displays, EGL_NO_DISPLAY);
    return displays;
}

} // namespace

HeadlessContext::~HeadlessContext()
{
    destroy();
}

bool HeadlessContext::create(QString& error)
{
    // Mesa writes its own complaints to standard error; ours says it once.
    if (!qEnvironmentVariableIsSet("EGL_LOG_LEVEL"))
        qputenv("EGL_LOG_LEVEL", "fatal");

    // Of several failures the one that got farthest tells most.
    error = QStringLiteral("EGL offers no display");
    bool anyStarted = false;
    for (EGLDisplay display : candidateDisplays())
    {
        QString fault;
        if (start(display, fault) && createContext(fault))
        {
            error.clear();
            return true;
        }
        if (_display || !anyStarted)
            error = fault;
        anyStarted = anyStarted || _display;
        destroy();
    }
    return false;
}

bool HeadlessContext::start(void* display, QString& error)
{
    if (!eglInitialize(display, nullptr, nullptr))
    {
        error = QStringLiteral("EGL could not be started (error 0x%1)").arg(eglGetError(), 0, 16);
        return false;
    }
    _display = display;
    return true;
}

bool HeadlessContext::createContext(QString& error)
{
    // Without a surface where that is allowed, else with one of a single pixel: the picture has its own framebuffer.
    const bool surfaceless = offers(_display, "EGL_KHR_surfaceless_context");
    const EGLint configAttributes[] = {EGL_RENDERABLE_TYPE, EGL_OPENGL_BIT, EGL_SURFACE_TYPE,
                                       surfaceless ? 0 : EGL_PBUFFER_BIT, EGL_NONE};
    const EGLint contextAttributes[] = {EGL_CONTEXT_MAJOR_VERSION,
                                        kMajorVersion,
                                        EGL_CONTEXT_MINOR_VERSION,
                                        kMinorVersion,
                                        EGL_CONTEXT_OPENGL_PROFILE_MASK,
                                        EGL_CONTEXT_OPENGL_CORE_PROFILE_BIT,
                                        EGL_NONE};
    const EGLint surfaceAttributes[] = {EGL_WIDTH, 1, EGL_HEIGHT, 1, EGL_NONE};

    EGLConfig config = nullptr;
    EGLint configCount = 0;
    if (!eglBindAPI(EGL_OPENGL_API) || !eglChooseConfig(_display, configAttributes, &config, 1, &configCount) ||
        configCount < 1)
    {
        error = QStringLiteral("EGL offers no OpenGL");
        return false;
    }
    _context = eglCreateContext(_display, config, EGL_NO_CONTEXT, contextAttributes);
    if (_context == EGL_NO_CONTEXT)
    {
        error = QStringLiteral("the driver offers no OpenGL %1.%2 core profile").arg(kMajorVersion).arg(kMinorVersion);
        return false;
    }
    if (!surfaceless)
        _surface = eglCreatePbufferSurface(_display, config, surfaceAttributes);
    if (!eglMakeCurrent(_display, _surface, _surface, _context))
    {
        error = QStringLiteral("the OpenGL context could not be made current (error 0x%1)").arg(eglGetError(), 0, 16);
        return false;
    }
    return true;
}

void HeadlessContext::destroy()
{
    if (!_display)
        return;
    eglMakeCurrent(_display, EGL_NO_SURFACE, EGL_NO_SURFACE, EGL_NO_CONTEXT);
    if (_surface)
        eglDestroySurface(_display, _surface);
    if (_context)
        eglDestroyContext(_display, _context);
    // Not terminated: a display belongs to the whole process, so others may be using this one.
    _display = nullptr;
    _context = nullptr;
    _surface = nullptr;
}

} // namespace vrkview
