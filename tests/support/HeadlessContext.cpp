// SPDX-License-Identifier: MIT
#include "support/HeadlessContext.h"

#define EGL_NO_X11
#include <EGL/egl.h>
#include <EGL/eglext.h>

namespace Harrow::Vrk::Test
{
namespace
{

EGLDisplay display()
{
    static const EGLDisplay opened = []
    {
        const auto getPlatformDisplay =
            reinterpret_cast<PFNEGLGETPLATFORMDISPLAYEXTPROC>(eglGetProcAddress("eglGetPlatformDisplayEXT"));
        EGLDisplay made = getPlatformDisplay
                              ? getPlatformDisplay(EGL_PLATFORM_SURFACELESS_MESA, EGL_DEFAULT_DISPLAY, nullptr)
                              : EGL_NO_DISPLAY;
        if (made != EGL_NO_DISPLAY && eglInitialize(made, nullptr, nullptr) == EGL_TRUE)
            return made;
        return EGLDisplay(EGL_NO_DISPLAY);
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
