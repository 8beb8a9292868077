// SPDX-License-Identifier: MIT
#include "BareEpisode.h"

#include "Random.h"

#include "GLFunctions.h"
#include "support/HeadlessContext.h"

#include <QByteArray>

#include <vector>

namespace vrksoak
{

using namespace Harrow::Vrk;

namespace
{

constexpr int kWidth = 320;
constexpr int kHeight = 180;
constexpr int kFramesOfProgram = 25;
constexpr int kFramesOfContext = 120;

constexpr char kVertex[] = R"(#version 150
in vec2 place;
out vec2 texCoord;
void main()
{
    texCoord = place;
    gl_Position = vec4(place, 0.0, 1.0);
}
)";

/// With a number of its own, so that no cache has it.
QByteArray fragmentText(Random& random)
{
    return "#version 150\nuniform sampler2D map;\nin vec2 texCoord;\nout vec4 color;\n"
           "void main()\n{\n    color = texture(map, texCoord) + vec4(" +
           QByteArray::number(double(random.unit()), 'f', 6) + ");\n}\n";
}

GLuint compile(GLenum type, const char* text)
{
    const GLuint shader = glCreateShader(type);
    glShaderSource(shader, 1, &text, nullptr);
    glCompileShader(shader);
    return shader;
}

GLuint newProgram(Random& random)
{
    const GLuint vertex = compile(GL_VERTEX_SHADER, kVertex);
    const GLuint fragment = compile(GL_FRAGMENT_SHADER, fragmentText(random).constData());
    const GLuint program = glCreateProgram();
    glAttachShader(program, vertex);
    glAttachShader(program, fragment);
    glBindAttribLocation(program, 0, "place");
    glLinkProgram(program);
    glDeleteShader(vertex);
    glDeleteShader(fragment);
    return program;
}

GLuint newTexture(GLint internalFormat, int width, int height)
{
    GLuint texture = 0;
    glGenTextures(1, &texture);
    glBindTexture(GL_TEXTURE_2D, texture);
    const std::vector<GLubyte> texels(std::size_t(4 * width * height), 100);
    glTexImage2D(GL_TEXTURE_2D, 0, internalFormat, width, height, 0, GL_RGBA, GL_UNSIGNED_BYTE, texels.data());
    glGenerateMipmap(GL_TEXTURE_2D);
    return texture;
}

/// All that it makes is deleted at its end.
void drawFrame(Random& random, GLuint program)
{
    const GLuint target = newTexture(GL_RGBA8, kWidth, kHeight);
    const GLuint map = newTexture(random.oneIn(2) ? GL_RGBA8 : GL_RGBA16F, 16 << random.below(3), 32);
    GLuint framebuffer = 0;
    GLuint vertexArray = 0;
    GLuint buffer = 0;
    glGenFramebuffers(1, &framebuffer);
    glGenVertexArrays(1, &vertexArray);
    glGenBuffers(1, &buffer);

    glBindFramebuffer(GL_FRAMEBUFFER, framebuffer);
    glFramebufferTexture2D(GL_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, GL_TEXTURE_2D, target, 0);
    glViewport(0, 0, kWidth, kHeight);
    glClear(GL_COLOR_BUFFER_BIT);
    constexpr GLfloat kCorners[] = {-1.0f, -1.0f, 3.0f, -1.0f, -1.0f, 3.0f};
    glBindVertexArray(vertexArray);
    glBindBuffer(GL_ARRAY_BUFFER, buffer);
    glBufferData(GL_ARRAY_BUFFER, sizeof kCorners, kCorners, GL_STATIC_DRAW);
    glEnableVertexAttribArray(0);
    glVertexAttribPointer(0, 2, GL_FLOAT, GL_FALSE, 0, nullptr);
    glUseProgram(program);
    glDrawArrays(GL_TRIANGLES, 0, 3);

    glUseProgram(0);
    glBindVertexArray(0);
    glBindBuffer(GL_ARRAY_BUFFER, 0);
    glBindFramebuffer(GL_FRAMEBUFFER, 0);
    glBindTexture(GL_TEXTURE_2D, 0);
    glDeleteFramebuffers(1, &framebuffer);
    glDeleteVertexArrays(1, &vertexArray);
    glDeleteBuffers(1, &buffer);
    glDeleteTextures(1, &target);
    glDeleteTextures(1, &map);
}

void drawInSecondContext(Random& random, Test::HeadlessContext& first)
{
    Test::HeadlessContext second(&first);
    if (second.makeCurrent())
    {
        const GLuint program = newProgram(random);
        drawFrame(random, program);
        glDeleteProgram(program);
    }
    first.makeCurrent();
}

} // namespace

QString playBare(Random& random, Test::HeadlessContext& context, int frames,
                 const std::function<void(int frame)>& afterFrame)
{
    GLuint program = 0;
    for (int frame = 0; frame < frames; ++frame)
    {
        if (frame % kFramesOfProgram == 0)
        {
            glDeleteProgram(program);
            program = newProgram(random);
        }
        drawFrame(random, program);
        if (frame % kFramesOfContext == 0)
            drawInSecondContext(random, context);
        afterFrame(frame);
    }
    glDeleteProgram(program);
    return QStringLiteral("bare OpenGL");
}

void settleDriver()
{
    Random random(0, 0);
    const GLuint program = newProgram(random);
    drawFrame(random, program);
    glDeleteProgram(program);
    glFinish();
}

} // namespace vrksoak
