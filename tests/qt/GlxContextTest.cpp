// SPDX-License-Identifier: MIT
// The library in an application that makes its context with GLX itself: neither Qt nor EGL knows of it.
#include <VrkGL/GLContextTracker.h>
#include <VrkGL/GLFunctions.h>
#include <VrkGL/GLUtilities.h>

#include <gtest/gtest.h>

#include <X11/Xlib.h>

// After Google Test: X11's macros would change its names.
#include <GL/glx.h>
#undef None
#undef Bool

namespace
{

struct BareGlxContext
{
    BareGlxContext()
    {
        display = XOpenDisplay(nullptr);
        if (!display)
            return;
        const int attributes[] = {GLX_RENDER_TYPE, GLX_RGBA_BIT, GLX_DRAWABLE_TYPE, GLX_PBUFFER_BIT, 0};
        int count = 0;
        GLXFBConfig* const configs = glXChooseFBConfig(display, DefaultScreen(display), attributes, &count);
        if (count < 1)
            return;
        const int pbufferAttributes[] = {GLX_PBUFFER_WIDTH, 4, GLX_PBUFFER_HEIGHT, 4, 0};
        pbuffer = glXCreatePbuffer(display, configs[0], pbufferAttributes);
        const auto createContext = reinterpret_cast<PFNGLXCREATECONTEXTATTRIBSARBPROC>(
            glXGetProcAddress(reinterpret_cast<const unsigned char*>("glXCreateContextAttribsARB")));
        const int version[] = {
            GLX_CONTEXT_MAJOR_VERSION_ARB,    3, GLX_CONTEXT_MINOR_VERSION_ARB, 2, GLX_CONTEXT_PROFILE_MASK_ARB,
            GLX_CONTEXT_CORE_PROFILE_BIT_ARB, 0};
        if (createContext)
            context = createContext(display, configs[0], nullptr, 1, version);
        XFree(configs);
    }
    ~BareGlxContext()
    {
        if (!display)
            return;
        glXMakeContextCurrent(display, 0, 0, nullptr);
        if (context)
            glXDestroyContext(display, context);
        if (pbuffer)
            glXDestroyPbuffer(display, pbuffer);
        XCloseDisplay(display);
    }
    bool makeCurrent() const
    {
        return context && glXMakeContextCurrent(display, pbuffer, pbuffer, context) != 0;
    }

    Display* display = nullptr;
    GLXPbuffer pbuffer = 0;
    GLXContext context = nullptr;
};

} // namespace

TEST(BareGlxContext, IsFoundAndServed)
{
    const BareGlxContext glx;
    ASSERT_NE(glx.display, nullptr) << "no X server";
    EXPECT_EQ(Harrow::Vrk::GLContextTracker::currentContext(), nullptr);
    EXPECT_EQ(getGLProcAddress("glClear", true), nullptr) << "no context, no function";
    ASSERT_TRUE(glx.makeCurrent());
    EXPECT_EQ(Harrow::Vrk::GLContextTracker::currentContext(), glx.context);
    ASSERT_TRUE(initializeGLFunctions());
    EXPECT_TRUE(openGlVersionSupported(3, 2));
    EXPECT_EQ(getGLProcAddress("glFooBar", true), nullptr);
    EXPECT_NE(Harrow::Vrk::glGetString(GL_RENDERER), nullptr);
    Harrow::Vrk::glClearColor(0, 0, 0, 1);
    EXPECT_FALSE(Harrow::Vrk::hasGLError(__FILE__, __LINE__));
}
