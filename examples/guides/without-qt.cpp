// SPDX-License-Identifier: MIT
// Two contexts of EGL's that share their objects, and no class of Qt's for contexts or windows: one thread fills a
// buffer in the first, and draws from it in both.
#include <VrkGL/AutoBinder.h>
#include <VrkGL/BufferObject.h>
#include <VrkGL/DrawBuffers.h>
#include <VrkGL/GLContextTracker.h>
#include <VrkGL/GLFunctions.h>
#include <VrkGL/GLUtilities.h>
#include <VrkGL/OpenGLDeviceContext.h>
#include <VrkGL/ShaderProgram.h>
#include <VrkGL/VertexArrayObject.h>

#define EGL_NO_X11 // keeps Xlib's macros out
#include <EGL/egl.h>
#include <EGL/eglext.h>

#include <QColor>
#include <QVariant>

#include <cstdio>

using namespace Harrow::Vrk;

constexpr char kVertexShader[] = R"(#version 150
in vec2 va_Vertex;
void main() { gl_Position = vec4(va_Vertex, 0.0, 1.0); })";

constexpr char kFragmentShader[] = R"(#version 150
uniform vec4 u_Color;
out vec4 o_Color;
void main() { o_Color = u_Color; })";

static EGLContext newContext(EGLDisplay display, EGLContext shared)
{
    const EGLint attributes[] = {
        EGL_CONTEXT_MAJOR_VERSION,           3,       EGL_CONTEXT_MINOR_VERSION, 2, EGL_CONTEXT_OPENGL_PROFILE_MASK,
        EGL_CONTEXT_OPENGL_CORE_PROFILE_BIT, EGL_NONE};
    return eglCreateContext(display, EGL_NO_CONFIG_KHR, shared, attributes);
}

static bool makeCurrent(EGLDisplay display, EGLContext context)
{
    return eglMakeCurrent(display, EGL_NO_SURFACE, EGL_NO_SURFACE, context) == EGL_TRUE;
}

/// What OpenGL does not share: the vertex array, which the draw list holds, and a framebuffer. One for each context.
struct View
{
    DrawBuffers triangle{nullptr};
    GLuint framebuffer = 0, color = 0;
    GLContextTracker context;

    /// In the context that is current, which is the view's from now on.
    explicit View(QSharedPointer<BufferObject> vertices)
    {
        context.trackCurrentContext();
        const auto vertexArray = OpenGLDeviceContext::current()->newVAO();
        vertexArray->registerBO("va_Vertex", vertices, 2, GL_FLOAT);
        triangle.setVAO(vertexArray);
        triangle.setPrimitiveType(GL_TRIANGLES);
        triangle.setVertexCount(3);
        glGenRenderbuffers(1, &color);
        glBindRenderbuffer(GL_RENDERBUFFER, color);
        glRenderbufferStorage(GL_RENDERBUFFER, GL_RGBA8, 16, 16);
        glGenFramebuffers(1, &framebuffer);
        glBindFramebuffer(GL_FRAMEBUFFER, framebuffer);
        glFramebufferRenderbuffer(GL_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, GL_RENDERBUFFER, color);
    }

    ~View()
    {
        glDeleteFramebuffers(1, &framebuffer);
        glDeleteRenderbuffers(1, &color);
    }

    bool draw(ShaderProgram& program, const QColor& wanted)
    {
        if (!context.check())
            return false; // another context is current
        glViewport(0, 0, 16, 16);
        {
            const AutoBinder boundProgram(&program), boundTriangle(&triangle);
            program.setUniform("u_Color", QVariant(wanted));
            triangle.VAO()->enableShaderProgramArrays(&program);
            triangle.draw(&program);
        }
        GLubyte seen[4] = {};
        glReadPixels(8, 8, 1, 1, GL_RGBA, GL_UNSIGNED_BYTE, seen);
        return QColor(seen[0], seen[1], seen[2]) == wanted;
    }
};

static bool drawInBoth(EGLDisplay display, EGLContext first, EGLContext second)
{
    // Buffers, textures and programs are shared; what is made here serves in both.
    const auto vertices = OpenGLDeviceContext::current()->newBuffer();
    vertices->setTarget(GL_ARRAY_BUFFER);
    {
        const AutoBinder bound(vertices);
        vertices->upload({-1.0f, -1.0f, 3.0f, -1.0f, -1.0f, 3.0f}, GL_STATIC_DRAW);
    }
    ShaderProgram program;
    program.addShader(GL_VERTEX_SHADER, kVertexShader);
    program.addShader(GL_FRAGMENT_SHADER, kFragmentShader);
    if (!program.link())
        return false;

    bool right;
    {
        View view(vertices);
        right = view.draw(program, Qt::red);
        glFlush(); // the other context is to find all of it done
        if (!makeCurrent(display, second))
            return false;
        {
            View other(vertices);
            right = right && other.draw(program, Qt::green) && !view.context.check();
        } // with its own context current
        if (!makeCurrent(display, first))
            return false;
        right = right && view.draw(program, Qt::blue);
    }
    return right && !hasGLError(__FILE__, __LINE__);
}

int main()
{
    EGLDisplay display = eglGetPlatformDisplay(EGL_PLATFORM_SURFACELESS_MESA, EGL_DEFAULT_DISPLAY, nullptr);
    if (!eglInitialize(display, nullptr, nullptr) || !eglBindAPI(EGL_OPENGL_API))
        return 1;
    EGLContext first = newContext(display, EGL_NO_CONTEXT);
    EGLContext second = newContext(display, first);
    if (!first || !second || !makeCurrent(display, first) || !initializeGLFunctions())
        return 1;
    const bool right = GLContextTracker::currentContext() == first && drawInBoth(display, first, second);
    if (!right)
        std::fprintf(stderr, "FAILED: red and blue in the first context, green in the second\n");

    OpenGLDeviceContext::resetContext(); // lets go of what the library holds itself, while the context is there
    makeCurrent(display, EGL_NO_CONTEXT);
    eglDestroyContext(display, second);
    eglDestroyContext(display, first);
    return right ? 0 : 1;
}
