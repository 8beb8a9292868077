// SPDX-License-Identifier: MIT
// The smallest program that draws with VrkGL: context, buffer, vertex array, program, DrawBuffers, picture.
#include <VrkGL/AutoBinder.h>
#include <VrkGL/BufferObject.h>
#include <VrkGL/DrawBuffers.h>
#include <VrkGL/GLFunctions.h>
#include <VrkGL/GLUtilities.h>
#include <VrkGL/OpenGLDeviceContext.h>
#include <VrkGL/ShaderProgram.h>
#include <VrkGL/VertexArrayObject.h>

#include <QImage>

#include <EGL/egl.h>
#include <EGL/eglext.h>

using namespace Harrow::Vrk;

constexpr char kVertexShader[] = R"(#version 150
#include "VrkUtilities.glslh"
in vec2 va_Vertex;
out vec3 vo_Color;
void main()
{
    float turn = 6.2831853 * float(getDrawID()) / 12.0;
    vo_Color = 0.5 + 0.5 * cos(turn - vec3(0.0, 2.1, 4.2) - 1.5 * length(va_Vertex));
    gl_Position = vec4(mat2(cos(turn), sin(turn), -sin(turn), cos(turn)) * va_Vertex, 0.0, 1.0);
})";

constexpr char kFragmentShader[] = R"(#version 150
in vec3 vo_Color;
out vec4 o_Color;
void main() { o_Color = vec4(vo_Color, 1.0); })";

static bool makeContextCurrent() // any OpenGL 3.2 core context will do; with Qt, a QOpenGLContext
{
    const EGLint attributes[] = {EGL_CONTEXT_MAJOR_VERSION, 3, EGL_CONTEXT_MINOR_VERSION, 2, EGL_NONE};
    EGLDisplay display = eglGetPlatformDisplay(EGL_PLATFORM_SURFACELESS_MESA, EGL_DEFAULT_DISPLAY, nullptr);
    if (!eglInitialize(display, nullptr, nullptr) || !eglBindAPI(EGL_OPENGL_API))
        return false;
    EGLContext context = eglCreateContext(display, EGL_NO_CONFIG_KHR, EGL_NO_CONTEXT, attributes);
    return eglMakeCurrent(display, EGL_NO_SURFACE, EGL_NO_SURFACE, context);
}

static GLuint newFramebuffer(int size, int samples)
{
    GLuint framebuffer = 0, color = 0;
    glGenFramebuffers(1, &framebuffer);
    glBindFramebuffer(GL_FRAMEBUFFER, framebuffer);
    glGenRenderbuffers(1, &color);
    glBindRenderbuffer(GL_RENDERBUFFER, color);
    glRenderbufferStorageMultisample(GL_RENDERBUFFER, samples, GL_RGBA8, size, size);
    glFramebufferRenderbuffer(GL_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, GL_RENDERBUFFER, color);
    return framebuffer;
}

int main()
{
    if (!makeContextCurrent() || !initializeGLFunctions())
        return 1;

    // One triangle in a buffer, which feeds the shader attribute "va_Vertex".
    auto buffer = OpenGLDeviceContext::current()->newBuffer();
    buffer->setTarget(GL_ARRAY_BUFFER);
    auto vertexArray = OpenGLDeviceContext::current()->newVAO();
    vertexArray->upload("va_Vertex", buffer, {0.1f, 0.0f, 0.9f, -0.2f, 0.9f, 0.2f}, 2, GL_STATIC_DRAW);

    DrawBuffers petals(nullptr);
    petals.setVAO(vertexArray);
    petals.setPrimitiveType(GL_TRIANGLES);
    petals.setVertexCount(3);
    petals.setInstanceCount(12); // getDrawID() tells the shader which of the twelve it draws

    ShaderProgram program(nullptr);
    program.addShader(GL_VERTEX_SHADER, kVertexShader, QString());
    program.addShader(GL_FRAGMENT_SHADER, kFragmentShader, QString());
    program.addShaderFromFile(GL_VERTEX_SHADER, "VrkUtilities.glslc"); // the library's getDrawID()
    if (!program.link())
        return 1;

    const int size = 512;
    const GLuint smooth = newFramebuffer(size, 4), resolved = newFramebuffer(size, 0);
    glBindFramebuffer(GL_FRAMEBUFFER, smooth);
    glViewport(0, 0, size, size);
    glClearColor(0.1f, 0.11f, 0.13f, 1.0f);
    glClear(GL_COLOR_BUFFER_BIT);
    {
        const AutoBinder boundProgram(&program), boundPetals(&petals);
        vertexArray->enableShaderProgramArrays(&program);
        petals.draw(&program);
    }
    glBindFramebuffer(GL_DRAW_FRAMEBUFFER, resolved);
    glBlitFramebuffer(0, 0, size, size, 0, 0, size, size, GL_COLOR_BUFFER_BIT, GL_NEAREST);
    glBindFramebuffer(GL_READ_FRAMEBUFFER, resolved);
    QImage picture(size, size, QImage::Format_RGBA8888);
    glReadPixels(0, 0, size, size, GL_RGBA, GL_UNSIGNED_BYTE, picture.bits());
    return picture.mirrored().save("vrkminimal.png") ? 0 : 1;
}
