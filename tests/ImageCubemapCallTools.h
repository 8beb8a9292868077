// SPDX-License-Identifier: MIT
#pragma once

/// \file
/// What the suites of the cube map conversion on the fake driver share: a driver that answers about sources, remembers
/// the matrices that it is given, and fails on demand; and the calls of a conversion in their order.

#include "ZelImageCubemapUtils.h"

#include "TextureProcessingTestTools.h"
#include "ZelRenderCubemap.h"

#include <array>
#include <memory>
#include <vector>

namespace Harrow::Vrk::Test
{

/// What the scripted driver says of textures and framebuffers, and the values that it was given for matrices.
struct CubemapScript
{
    GLint width = 12;
    GLint height = 2;
    GLint depth = 0; ///< Of the last image that was specified with one.
    GLint internalFormat = GL_RGBA8;
    GLint maxLevel = 1000;
    GLenum framebufferStatus = GL_FRAMEBUFFER_COMPLETE;
    bool levelsShrink = true;

    std::vector<std::array<float, 9>> matrices3;
    std::vector<std::array<float, 8>> matrices4x2;
    std::vector<std::array<float, 16>> matrices4;
    std::vector<std::vector<GLenum>> drawBuffers;

    static CubemapScript& current()
    {
        static CubemapScript script;
        return script;
    }
};

/// A factory without buffers.
class WithoutBuffers final : public OpenGLDeviceContext
{
public:
    using OpenGLDeviceContext::newBuffer;
    QSharedPointer<BufferObject> newBuffer() override
    {
        return {};
    }
};

class ImageCubemapCallFixture : public TextureProcessingFixture
{
protected:
    using Type = ZelImageCubemapSourceType;
    using ColorSpace = ZelImageCubemapColorSpace;

    CubemapScript& cubemap = CubemapScript::current();

    void SetUp() override
    {
        cubemap = CubemapScript();
        TextureProcessingFixture::SetUp();
        scriptQueries();
        scriptMatrices();
        ASSERT_EQ(driver.load(), 1);
        script.attributes = {{"zel_Vertex", 0, 1, GL_FLOAT_VEC4}};
        const std::pair<const char*, GLint> uniforms[] = {{"u_ZelModelViewProjectionMatrix", 20},
                                                          {"u_ZelNormalMatrix", 21},
                                                          {"u_ZelNormalToUvMatrix", 22},
                                                          {"s_texture", 23},
                                                          {"u_Texture", 24},
                                                          {"u_Transform", 25}};
        for (const auto& [name, location] : uniforms)
            driver.setUniformLocation(name, location);
        for (int slot = 0; slot < 8; ++slot)
            driver.setUniformLocation(QStringLiteral("s_blur[%1].value").arg(slot).toLatin1(), 30 + slot);
    }

    /// All but what makes a program, which other suites state.
    static QStringList withoutBuilding(const QStringList& calls)
    {
        static const QStringList building = {
            line("glCreateProgram"), line("glCreateShader"),         line("glShaderSource"),
            line("glCompileShader"), line("glGetShaderiv"),          line("glAttachShader"),
            line("glLinkProgram"),   line("glGetProgramiv"),         line("glGetActiveAttrib"),
            line("glDeleteShader"),  line("glGetAttribLocation"),    line("glGetUniformLocation"),
            line("glDeleteProgram"), line("glBindFragDataLocation"), line("glGetProgramInterfaceiv"),
            line("glDetachShader"),  line("glProgramParameteri"),    line("glGetString"),
            line("glGetStringi"),
        };
        static const QStringList capabilities = {writes("glGetIntegerv", GL_MAJOR_VERSION),
                                                 writes("glGetIntegerv", GL_MINOR_VERSION),
                                                 writes("glGetIntegerv", GL_NUM_EXTENSIONS)};
        QStringList rest;
        for (const QString& call : calls)
            if (!building.contains(call.left(call.indexOf(u'('))) &&
                !capabilities.contains(QString::fromStdString(shown({call}))))
                rest.append(call);
        return rest;
    }

    static std::unique_ptr<Texture> converted(Texture& source, Type type, GLenum target = GL_TEXTURE_CUBE_MAP,
                                              int maxSize = 0)
    {
        return std::unique_ptr<Texture>(
            ZelImageCubemapUtils::createGLCubemapFromTexture(&source, type, target, ColorSpace::Linear, maxSize));
    }

    static std::unique_ptr<Texture> cosine(Texture& source, GLenum target, int layers, float power = 1.0f)
    {
        return std::unique_ptr<Texture>(
            ZelImageCubemapUtils::createGLCubemapNDotLFromGLCubemap(&source, target, 4, layers, power));
    }

    static std::unique_ptr<Texture> blurred(Texture& source, GLenum target, int layers)
    {
        return std::unique_ptr<Texture>(
            ZelImageCubemapUtils::createGLCubemapBlurFromGLCubemap(&source, target, 4, layers));
    }

    static std::unique_ptr<Texture> strip(Texture& source, int level = 0)
    {
        return std::unique_ptr<Texture>(ZelImageCubemapUtils::createGLCubemapStripFromTexture(&source, level));
    }

    /// The messages without the one about the time, of which there must be `times`.
    static QStringList messagesBeside(const LogCapture& log, int times)
    {
        static const QRegularExpression took(QStringLiteral("^rendercubemap\\(\\) took [0-9]+ ms$"));
        QStringList rest;
        int found = 0;
        for (const QString& message : log.messages())
            if (took.match(message).hasMatch())
                ++found;
            else
                rest.append(message);
        EXPECT_EQ(found, times);
        return rest;
    }

private:
    void scriptQueries()
    {
        driver.replace(
            "glGetTexLevelParameteriv",
            +[](GLenum, GLint level, GLenum name, GLint* value)
            {
                const CubemapScript& s = CubemapScript::current();
                const int halvings = s.levelsShrink ? level : 0;
                if (name == GL_TEXTURE_WIDTH)
                    *value = s.width >> halvings;
                else if (name == GL_TEXTURE_HEIGHT)
                    *value = s.height >> halvings;
                else if (name == GL_TEXTURE_DEPTH)
                    *value = s.depth;
                else if (name == GL_TEXTURE_INTERNAL_FORMAT)
                    *value = s.internalFormat;
            });
        driver.replace(
            "glGetTexParameteriv", +[](GLenum, GLenum name, GLint* value)
                                   { *value = name == GL_TEXTURE_MAX_LEVEL ? CubemapScript::current().maxLevel : -7; });
        driver.replace(
            "glTexImage3D", +[](GLenum, GLint, GLint, GLsizei, GLsizei, GLsizei depth, GLint, GLenum, GLenum,
                                const void*) { CubemapScript::current().depth = depth; });
        driver.replace(
            "glCheckFramebufferStatus", +[](GLenum) { return CubemapScript::current().framebufferStatus; });
        driver.replace(
            "glDrawBuffers", +[](GLsizei count, const GLenum* buffers)
                             { CubemapScript::current().drawBuffers.emplace_back(buffers, buffers + count); });
    }

    template <std::size_t Size> static void keep(std::vector<std::array<float, Size>>& values, const GLfloat* from)
    {
        std::array<float, Size> value;
        std::copy_n(from, Size, value.begin());
        values.push_back(value);
    }

    void scriptMatrices()
    {
        driver.replace(
            "glUniformMatrix3fv",
            +[](GLint, GLsizei, GLboolean, const GLfloat* value) { keep(CubemapScript::current().matrices3, value); });
        driver.replace(
            "glUniformMatrix4x2fv", +[](GLint, GLsizei, GLboolean, const GLfloat* value)
                                    { keep(CubemapScript::current().matrices4x2, value); });
        driver.replace(
            "glUniformMatrix4fv",
            +[](GLint, GLsizei, GLboolean, const GLfloat* value) { keep(CubemapScript::current().matrices4, value); });
    }
};

} // namespace Harrow::Vrk::Test
