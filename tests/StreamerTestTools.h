// SPDX-License-Identifier: MIT
#pragma once

/// \file
/// What the suites of the library's streamers share: on the fake driver the calls of their steps and a texture size by
/// script, on the real one texels that are read back and pictures that a texture manager samples.

#include "AutoBinder.h"
#include "GLFunctions.h"
#include "GLSLMacroProcessor.h"
#include "ShaderProgram.h"
#include "Texture.h"
#include "TextureManager.h"
#include "TextureStreamer.h"
#include "TextureTestTools.h"
#include "support/GLTest.h"
#include "support/Picture.h"

#include <QColor>
#include <QRegularExpression>

#include <array>
#include <memory>
#include <vector>

namespace Harrow::Vrk::Test
{

/// Addresses of the library's own variables show as "*".
inline QStringList anonymous(const QStringList& calls)
{
    static const QRegularExpression address(QStringLiteral("@[0-9a-f]+"));
    QStringList result;
    for (QString call : calls)
        result.append(call.replace(address, QStringLiteral("*")));
    return result;
}

/// A call that ends with such an address.
template <typename... Arguments> QString writing(const char* function, Arguments... arguments)
{
    return CallLog::call(function, arguments...).chopped(1) + QStringLiteral(", *)");
}

/// What the scripted driver says of base levels.
struct BaseLevelScript
{
    GLint width = 64;
    GLint height = 32;
    GLint internalFormat = GL_RGBA8;

    static BaseLevelScript& current()
    {
        static BaseLevelScript script;
        return script;
    }
};

class StreamerFixture : public TextureFixture
{
protected:
    void SetUp() override
    {
        BaseLevelScript::current() = {};
        driver.replace(
            "glGetTexLevelParameteriv",
            +[](GLenum, GLint level, GLenum name, GLint* value)
            {
                const BaseLevelScript& script = BaseLevelScript::current();
                EXPECT_EQ(level, 0);
                *value = name == GL_TEXTURE_WIDTH    ? script.width
                         : name == GL_TEXTURE_HEIGHT ? script.height
                                                     : script.internalFormat;
            });
        driver.setInteger(GL_ACTIVE_TEXTURE, GL_TEXTURE5);
        driver.setInteger(GL_DRAW_FRAMEBUFFER_BINDING, 77);
        TextureFixture::SetUp();
        makeRecord();
        before = Texture::NumAlive();
    }

    void TearDown() override
    {
        EXPECT_EQ(Texture::NumAlive(), before);
        TextureFixture::TearDown();
    }

    static QStringList bound(GLuint name)
    {
        return {activate(kUnits - 1), bindName(name)};
    }
    static QStringList unbound()
    {
        return bound(0);
    }
    static QString asked(GLenum what)
    {
        return writing("glGetTexLevelParameteriv", GL_TEXTURE_2D, 0, what);
    }

    static QStringList sizeQueries()
    {
        return {asked(GL_TEXTURE_WIDTH), asked(GL_TEXTURE_HEIGHT)};
    }

    /// From the new name to the sampling.
    static QStringList making(GLuint name, GLenum internalFormat, int width, int height, GLenum mag, GLenum min,
                              int maxLevel)
    {
        return bound(name) +
               QStringList{parameter(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_NEAREST),
                           parameter(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_NEAREST),
                           CallLog::call("glTexImage2D", GL_TEXTURE_2D, 0, internalFormat, width, height, 0, GL_RGBA,
                                         GL_UNSIGNED_BYTE, nullptr)} +
               unbound() + bound(name) +
               QStringList{parameter(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GLint(mag)),
                           parameter(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GLint(min)),
                           parameter(GL_TEXTURE_2D, GL_TEXTURE_WRAP_S, GL_CLAMP_TO_EDGE),
                           parameter(GL_TEXTURE_2D, GL_TEXTURE_WRAP_T, GL_CLAMP_TO_EDGE),
                           parameter(GL_TEXTURE_2D, GL_TEXTURE_BASE_LEVEL, 0),
                           parameter(GL_TEXTURE_2D, GL_TEXTURE_MAX_LEVEL, maxLevel),
                           CallLog::call("glTexParameterf", GL_TEXTURE_2D, GL_TEXTURE_LOD_BIAS, 0.0f)} +
               unbound();
    }

    static const QStringList& saving()
    {
        static const QStringList calls = {writing("glGetIntegerv", GL_ACTIVE_TEXTURE),
                                          writing("glGetIntegerv", GL_DRAW_FRAMEBUFFER_BINDING)};
        return calls;
    }
    /// Mipmaps, and what the fixture's driver has said before.
    static QStringList ending(GLuint name)
    {
        return bound(name) + QStringList{CallLog::call("glGenerateMipmap", GL_TEXTURE_2D)} + unbound() +
               QStringList{CallLog::call("glBindFramebuffer", GL_FRAMEBUFFER, 77), activate(5)};
    }

    /// Takes all units, as long as it lives.
    class NoFreeUnit
    {
    public:
        NoFreeUnit()
        {
            for (int i = 0; i < kUnits; ++i)
            {
                _textures.push_back(std::make_unique<Texture>(500u + unsigned(i), nullptr));
                _textures.back()->setTarget(GL_TEXTURE_2D);
                EXPECT_TRUE(_textures.back()->bind());
            }
        }
        ~NoFreeUnit()
        {
            for (const auto& texture : _textures)
                texture->unbind();
        }

    private:
        std::vector<std::unique_ptr<Texture>> _textures;
    };

    int before = 0;
};

// ---- on the real driver --------------------------------------------------------------------------------------------

using StreamerPixel = std::array<unsigned char, 4>;

/// The texels of a level, bottom row first.
inline std::vector<StreamerPixel> streamerTexels(Texture& texture, int level = 0)
{
    const AutoBinder binder(&texture);
    std::vector<StreamerPixel> texels(std::size_t(texture.width(level)) * std::size_t(texture.height(level)));
    glGetTexImage(GL_TEXTURE_2D, level, GL_RGBA, GL_UNSIGNED_BYTE, texels.data());
    return texels;
}

inline GLint integerOf(GLenum name)
{
    GLint value = -1;
    glGetIntegerv(name, &value);
    return value;
}

class StreamerGLFixture : public GLTest
{
protected:
    void SetUp() override
    {
        GLTest::SetUp();
        before = Texture::NumAlive();
        TextureManager::setInstance(nullptr);
        glGenVertexArrays(1, &_vertexArray);
        glDisable(GL_DEPTH_TEST);
    }

    void TearDown() override
    {
        _program.reset();
        TextureManager::setInstance(nullptr);
        EXPECT_EQ(Texture::NumAlive(), before);
        EXPECT_TRUE(TextureUnits::ofCurrentContext().textureToUnitMaps.isEmpty());
        glBindVertexArray(0);
        glDeleteVertexArrays(1, &_vertexArray);
        GLTest::TearDown();
    }

    /// What the texture behind a token looks like from GLSL, in a picture of its own size and with its first row below.
    QImage sampled(TextureManager& manager, const TextureToken& token, int width, int height)
    {
        manager.bind(QList<TextureToken>{token});
        build(manager);
        const OffscreenTarget target(width, height);
        glViewport(0, 0, width, height);
        glClearColor(0, 0, 0, 0);
        glClear(GL_COLOR_BUFFER_BIT);
        EXPECT_TRUE(_program->bind());
        manager.bind(_program.get());
        glUniform2ui(_program->getUniformLocation("u_Token"), GLuint(token.token), GLuint(token.token >> 32));
        glBindVertexArray(_vertexArray);
        glDrawArrays(GL_TRIANGLE_STRIP, 0, 4);
        glBindVertexArray(0);
        const QImage picture = target.read();
        manager.unbind(_program.get());
        _program->unbind();
        manager.unbind(QList<TextureToken>{token});
        return picture;
    }

    int before = 0;

private:
    void build(TextureManager& manager)
    {
        GLSLMacroProcessor processor;
        manager.setup(&processor);
        _program = std::make_unique<ShaderProgram>();
        _program->setMacroProcessor(&processor);
        _program->addShader(GL_VERTEX_SHADER,
                            QStringLiteral("#version 150\nout vec2 vo_TexCoord;\nvoid main()\n{\n"
                                           "    vo_TexCoord = vec2(gl_VertexID % 2, gl_VertexID / 2);\n"
                                           "    gl_Position = vec4(2.0 * vo_TexCoord - 1.0, 0.0, 1.0);\n}\n"));
        _program->addShader(GL_FRAGMENT_SHADER,
                            QStringLiteral("#version 150\n#include \"TextureManager.glslh\"\nuniform uvec2 u_Token;\n"
                                           "in vec2 vo_TexCoord;\nout vec4 o_Color;\nvoid main()\n{\n"
                                           "    o_Color = managedTexture(u_Token, vo_TexCoord);\n}\n"));
        _program->addShaderFromFile(GL_FRAGMENT_SHADER, manager.getShaderFile());
        ASSERT_TRUE(_program->link()) << _program->log().toStdString();
        _program->setMacroProcessor(nullptr);
    }

    GLuint _vertexArray = 0;
    std::unique_ptr<ShaderProgram> _program;
};

} // namespace Harrow::Vrk::Test
