// SPDX-License-Identifier: MIT
#pragma once

/// \file
/// What the suites of texture processing share: a fake driver whose answers about textures are written down by the
/// test, the calls of which each copy and each pass is made, and factories that refuse.

#include "TextureProcessing.h"

#include "DrawBuffers.h"
#include "FramebufferObject.h"
#include "OpenGLDeviceContext.h"
#include "ShaderProgram.h"
#include "ShaderTestTools.h"
#include "TextureTestTools.h"
#include "VertexArrayObject.h"
#include "support/LogCapture.h"
#include "support/TestAccess.h"

#include <QRegularExpression>

#include <array>
#include <memory>
#include <new>
#include <string>
#include <utility>
#include <vector>

namespace Harrow::Vrk::Test
{

/// What the scripted driver says of textures.
struct ProcessedTextureScript
{
    GLint width = 64;
    GLint height = 32;
    GLint internalFormat = GL_RGBA8;
    GLint compressed = GL_FALSE;

    static ProcessedTextureScript& current()
    {
        static ProcessedTextureScript script;
        return script;
    }
};

/// Of one level; a level above the base one is half as large.
inline void answerLevelParameter(GLenum /*target*/, GLint level, GLenum name, GLint* value)
{
    const ProcessedTextureScript& script = ProcessedTextureScript::current();
    switch (name)
    {
    case GL_TEXTURE_WIDTH:
        *value = script.width >> level;
        break;
    case GL_TEXTURE_HEIGHT:
        *value = script.height >> level;
        break;
    case GL_TEXTURE_INTERNAL_FORMAT:
        *value = script.internalFormat;
        break;
    case GL_TEXTURE_COMPRESSED:
        *value = script.compressed;
        break;
    default:
        *value = -7;
        break;
    }
}

inline constexpr std::array<std::pair<GLenum, GLint>, 6> kParameters = {{
    {GL_TEXTURE_MIN_FILTER, GL_LINEAR_MIPMAP_NEAREST},
    {GL_TEXTURE_MAG_FILTER, GL_NEAREST},
    {GL_TEXTURE_WRAP_S, GL_MIRRORED_REPEAT},
    {GL_TEXTURE_WRAP_T, GL_CLAMP_TO_EDGE},
    {GL_TEXTURE_BASE_LEVEL, 2},
    {GL_TEXTURE_MAX_LEVEL, 5},
}};

inline void answerParameter(GLenum /*target*/, GLenum name, GLint* value)
{
    for (const auto& [parameterName, answer] : kParameters)
        if (parameterName == name)
            *value = answer;
}

/// One call a line; addresses of the library's own variables show as "*".
inline std::string shown(const QStringList& calls)
{
    static const QRegularExpression address(QStringLiteral("@[0-9a-f]+"));
    return calls.join(u'\n').replace(address, QStringLiteral("*")).toStdString();
}

inline QString line(const char* text)
{
    return QString::fromLatin1(text);
}

/// A call that ends with the address to which the driver writes, or from which it reads.
template <typename... Arguments> QString writes(const char* function, Arguments... arguments)
{
    return CallLog::call(function, arguments...).chopped(1) + line(", *)");
}

/// From the bind of the source, texture 1, to the unbind of the copy, texture 2.
inline QStringList copying(int level, GLenum internalFormat, int width, int height, GLenum format, GLenum type,
                           bool asks)
{
    QStringList calls = {activate(3), bindName(1),
                         writes("glGetTexLevelParameteriv", GL_TEXTURE_2D, level, GL_TEXTURE_WIDTH),
                         writes("glGetTexLevelParameteriv", GL_TEXTURE_2D, level, GL_TEXTURE_HEIGHT)};
    if (asks)
        calls << writes("glGetTexLevelParameteriv", GL_TEXTURE_2D, level, GL_TEXTURE_INTERNAL_FORMAT)
              << writes("glGetTexLevelParameteriv", GL_TEXTURE_2D, level, GL_TEXTURE_COMPRESSED);
    for (const auto& [name, value] : kParameters)
        calls << writes("glGetTexParameteriv", GL_TEXTURE_2D, name);
    calls << activate(3) << bindName(0);
    calls << writes("glGenTextures", 1) << activate(3) << bindName(2);
    for (const auto& [name, value] : kParameters)
        calls << parameter(GL_TEXTURE_2D, name, value);
    calls << CallLog::call("glTexImage2D", GL_TEXTURE_2D, level, internalFormat, width, height, 0, format, type,
                           nullptr);
    calls << activate(3) << bindName(0);
    return calls;
}

inline QString arrayBuffer(GLuint name)
{
    return CallLog::call("glBindBuffer", GL_ARRAY_BUFFER, name);
}

inline QString arrayData(int bytes)
{
    return CallLog::call("glBufferData", GL_ARRAY_BUFFER, bytes).chopped(1) + line(", *, 0x88e4)");
}

inline QString vertexArray(GLuint name)
{
    return CallLog::call("glBindVertexArray", name);
}

inline QString uniformQuery(GLuint program, const char* uniform)
{
    return CallLog::call("glGetUniformLocation", program, uniform);
}

/// The quad's two buffers, then its vertex array, which enables the position alone.
inline QStringList makingAFullscreenQuad()
{
    return {writes("glGetIntegerv", GL_MAX_VERTEX_ATTRIBS),
            writes("glGenBuffers", 1),
            writes("glGenBuffers", 1),
            arrayBuffer(1),
            arrayData(18 * 4),
            arrayBuffer(0),
            arrayBuffer(2),
            arrayData(12 * 4),
            arrayBuffer(0),
            writes("glGenVertexArrays", 1),
            vertexArray(1),
            CallLog::call("glEnableVertexAttribArray", 0),
            arrayBuffer(1),
            CallLog::call("glVertexAttribPointer", 0, 3, GL_FLOAT, 0, 0, nullptr),
            arrayBuffer(0),
            vertexArray(0)};
}

/// A pass from texture 1 to texture 2 through program 1, whose only attribute is the position.
inline QStringList pass(const QStringList& uniforms)
{
    QStringList calls = {
        // 1: program and source
        CallLog::call("glUseProgram", 1),
        activate(3),
        bindName(1),
        writes("glGetTexLevelParameteriv", GL_TEXTURE_2D, 0, GL_TEXTURE_WIDTH),
        writes("glGetTexLevelParameteriv", GL_TEXTURE_2D, 0, GL_TEXTURE_HEIGHT),
        // 2: framebuffer
        writes("glGenFramebuffers", 1),
        CallLog::call("glBindFramebuffer", GL_FRAMEBUFFER, 1),
        CallLog::call("glFramebufferTexture2D", GL_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, GL_TEXTURE_2D, 2, 0),
        writes("glDrawBuffers", 1),
    };
    // 3 to 5: a new quad, its arrays, uniforms
    calls << makingAFullscreenQuad() << vertexArray(1) << uniforms;
    calls += {
        uniformQuery(1, "u_Src"),
        CallLog::call("glUniform1i", 5, 3),
        // 6: state
        CallLog::call("glDisable", GL_BLEND),
        CallLog::call("glDisable", GL_DEPTH_TEST),
        CallLog::call("glDepthMask", GL_FALSE),
        CallLog::call("glClearColor", 0, 0, 0, 1),
        CallLog::call("glClear", GL_COLOR_BUFFER_BIT),
        CallLog::call("glViewport", 0, 0, 64, 32),
        // 7: drawing
        writes("glGetIntegerv", GL_CURRENT_PROGRAM),
        uniformQuery(0, "u_DrawID"),
        CallLog::call("glDrawArrays", GL_TRIANGLES, 0, 6),
        // 8
        CallLog::call("glDepthMask", GL_TRUE),
        CallLog::call("glEnable", GL_DEPTH_TEST),
        // 9: letting go
        vertexArray(0),
        CallLog::call("glFramebufferTexture", GL_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, 0, 0),
        CallLog::call("glBindFramebuffer", GL_FRAMEBUFFER, 0),
        writes("glDeleteFramebuffers", 1),
        // 10
        activate(3),
        bindName(0),
        CallLog::call("glUseProgram", 0),
        // 11: mipmaps
        activate(3),
        bindName(2),
        CallLog::call("glGenerateMipmap", GL_TEXTURE_2D),
        activate(3),
        bindName(0),
        // The quad goes with the pass.
        writes("glDeleteVertexArrays", 1),
        writes("glDeleteBuffers", 1),
        writes("glDeleteBuffers", 1),
    };
    return calls;
}

/// A factory that has no vertex arrays to give.
class WithoutVertexArrays final : public OpenGLDeviceContext
{
public:
    QSharedPointer<VertexArrayObject> newVAO() override
    {
        return {};
    }
};

/// A factory whose quads are bare.
class WithBareQuads final : public OpenGLDeviceContext
{
public:
    QSharedPointer<DrawBuffers> newFullscreenQuad() override
    {
        return QSharedPointer<DrawBuffers>(new DrawBuffers(nullptr));
    }
};

/// The process's instance is always one of the library's own making, so the subclass's is built in its place.
template <typename Context> void useFactory()
{
    static_assert(sizeof(Context) == sizeof(OpenGLDeviceContext));
    OpenGLDeviceContext::resetContext();
    const auto context = OpenGLDeviceContext::current();
    std::destroy_at(context.data());
    ::new (context.data()) Context;
}

class TextureProcessingFixture : public ScriptedDriverTest
{
protected:
    void SetUp() override
    {
        driver.setInteger(GL_MAX_TEXTURE_IMAGE_UNITS, kUnits);
        ProcessedTextureScript::current() = ProcessedTextureScript();
        ScriptedDriverTest::SetUp();
        driver.replace("glGetTexLevelParameteriv", &answerLevelParameter);
        driver.replace("glGetTexParameteriv", &answerParameter);
        ASSERT_EQ(driver.load(), 1);
        script.attributes = {{"va_Vertex", 0, 1, GL_FLOAT_VEC3}, {"va_TexCoord", 1, 1, GL_FLOAT_VEC2}};
        script.uniforms = {{"u_Src", 5, 1, GL_SAMPLER_2D},
                           {"u_lowValue", 6, 1, GL_FLOAT},
                           {"u_highValue", 7, 1, GL_FLOAT},
                           {"u_other", 8, 1, GL_FLOAT}};
        for (const auto& uniform : script.uniforms)
            driver.setUniformLocation(uniform.name, uniform.location);
        TextureUnits::ofCurrentContext(); // so that the query of the limit is not among the calls of a test
    }

    void TearDown() override
    {
        OpenGLDeviceContext::resetContext();
        EXPECT_EQ(Texture::NumAlive(), 0);
        EXPECT_EQ(FramebufferObject::NumAlive(), _framebuffers);
        EXPECT_EQ(FramebufferObject::NumActiveFBOTextures(), _attachments);
        EXPECT_EQ(DrawBuffers::NumAlive(), 0);
        EXPECT_EQ(VertexArrayObject::NumAlive(), 0);
    }

private:
    // Other suites of the process leave these counts where they were led to.
    int _framebuffers = FramebufferObject::NumAlive();
    int _attachments = FramebufferObject::NumActiveFBOTextures();

protected:
    static std::unique_ptr<Texture> newTexture(GLenum target = GL_TEXTURE_2D)
    {
        auto texture = std::make_unique<Texture>(nullptr);
        texture->setTarget(target);
        return texture;
    }

    static std::unique_ptr<ShaderProgram> newProgram()
    {
        return std::unique_ptr<ShaderProgram>(MakeTextureShaderFromString(line("a fragment stage")));
    }

    /// Textures that hold units until they go.
    static std::vector<std::unique_ptr<Texture>> takeUnits(int count)
    {
        std::vector<std::unique_ptr<Texture>> holders;
        for (int i = 0; i < count; ++i)
        {
            holders.push_back(newTexture());
            EXPECT_TRUE(holders.back()->bind());
        }
        return holders;
    }

    static QStringList ownWarnings(const LogCapture& log)
    {
        return log.messages(QtWarningMsg).filter(line("shader program failed"));
    }
};

} // namespace Harrow::Vrk::Test
