// SPDX-License-Identifier: MIT
#include "support/HeadlessContext.h"

#define EGL_NO_X11
#include <EGL/egl.h>
#include <EGL/eglext.h>

#include <QtGlobal>

#include <array>
#include <cstring>

namespace Harrow::Vrk::Test
{
namespace
{

EGLDisplay initialised(EGLenum platform, void* native)
{
    const auto getPlatformDisplay =
        reinterpret_cast<PFNEGLGETPLATFORMDISPLAYEXTPROC>(eglGetProcAddress("eglGetPlatformDisplayEXT"));
    const EGLDisplay made = getPlatformDisplay ? getPlatformDisplay(platform, native, nullptr) : EGL_NO_DISPLAY;
    return made != EGL_NO_DISPLAY && eglInitialize(made, nullptr, nullptr) == EGL_TRUE ? made : EGL_NO_DISPLAY;
}

/// The first GPU that EGL names, without a window system and without Mesa's surfaceless platform.
EGLDisplay displayOfGpu()
{
    const auto queryDevices = reinterpret_cast<PFNEGLQUERYDEVICESEXTPROC>(eglGetProcAddress("eglQueryDevicesEXT"));
    const auto queryString =
        reinterpret_cast<PFNEGLQUERYDEVICESTRINGEXTPROC>(eglGetProcAddress("eglQueryDeviceStringEXT"));
    std::array<EGLDeviceEXT, 16> devices = {};
    EGLint count = 0;
    if (!queryDevices || !queryString || queryDevices(EGLint(devices.size()), devices.data(), &count) != EGL_TRUE)
        return EGL_NO_DISPLAY;
    for (EGLint i = 0; i < count; ++i)
    {
        const char* const extensions = queryString(devices[std::size_t(i)], EGL_EXTENSIONS);
        if (extensions && std::strstr(extensions, "EGL_MESA_device_software"))
            continue;
        if (const EGLDisplay made = initialised(EGL_PLATFORM_DEVICE_EXT, devices[std::size_t(i)]))
            return made;
    }
    return EGL_NO_DISPLAY;
}

EGLDisplay display()
{
    static const EGLDisplay opened = []
    {
        EGLDisplay made = qEnvironmentVariableIsSet("VRK_TEST_GPU") ? displayOfGpu() : EGL_NO_DISPLAY;
        if (made == EGL_NO_DISPLAY)
            made = initialised(EGL_PLATFORM_SURFACELESS_MESA, EGL_DEFAULT_DISPLAY);
        return made != EGL_NO_DISPLAY ? made : displayOfGpu();
    }();
    return opened;
}

EGLenum apiOf(HeadlessContext::Api api)
{
    return api == HeadlessContext::Api::OpenGL ? EGL_OPENGL_API : EGL_OPENGL_ES_API;
}

} // namespace

HeadlessContext::HeadlessContext(HeadlessContext* shareWith, Api api) : _api(api)
{
    if (display() == EGL_NO_DISPLAY || eglBindAPI(apiOf(api)) != EGL_TRUE)
        return;
    const EGLint core[] = {
        EGL_CONTEXT_MAJOR_VERSION,           3,       EGL_CONTEXT_MINOR_VERSION, 2, EGL_CONTEXT_OPENGL_PROFILE_MASK,
        EGL_CONTEXT_OPENGL_CORE_PROFILE_BIT, EGL_NONE};
    const EGLint embedded[] = {EGL_CONTEXT_MAJOR_VERSION, 3, EGL_NONE};
    const EGLContext share = shareWith ? static_cast<EGLContext>(shareWith->_context) : EGL_NO_CONTEXT;
    _context = eglCreateContext(display(), EGL_NO_CONFIG_KHR, share, api == Api::OpenGL ? core : embedded);
}

HeadlessContext::~HeadlessContext()
{
    if (!isValid())
        return;
    if (eglGetCurrentContext() == _context)
        releaseCurrent();
    eglDestroyContext(display(), _context);
}

bool HeadlessContext::isValid() const
{
    return _context != EGL_NO_CONTEXT;
}

bool HeadlessContext::makeCurrent()
{
    // The API is a per-thread setting.
    return isValid() && eglBindAPI(apiOf(_api)) == EGL_TRUE &&
           eglMakeCurrent(display(), EGL_NO_SURFACE, EGL_NO_SURFACE, _context) == EGL_TRUE;
}

void HeadlessContext::releaseCurrent()
{
    // The current context is a per-thread, per-API setting.
    for (const EGLenum api : {EGL_OPENGL_ES_API, EGL_OPENGL_API})
        if (eglBindAPI(api) == EGL_TRUE)
            eglMakeCurrent(display(), EGL_NO_SURFACE, EGL_NO_SURFACE, EGL_NO_CONTEXT);
}

void* HeadlessContext::handle() const
{
    return _context;
}

} // namespace Harrow::Vrk::Test
