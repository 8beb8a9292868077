// SPDX-License-Identifier: MIT
#pragma once

/// \file
/// What the suites of Array2DTextureManager's GLSL share: textures whose texels are known, programs of all its
/// variants, and look-ups whose results come back as numbers, each one pixel of a floating-point picture.

#include "Array2DTextureManager.h"
#include "EmbeddedGLSLTestTools.h"
#include "GLFunctions.h"
#include "GLSLMacroProcessor.h"
#include "ShaderProgram.h"
#include "Texture.h"
#include "support/GLTest.h"
#include "support/LogCapture.h"

#include <QRegularExpression>

#include <algorithm>
#include <array>
#include <cmath>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace Harrow::Vrk::Test
{

using Texel = std::array<float, 4>;
using Defines = QList<std::pair<const char*, const char*>>;

inline constexpr Texel kInvalidTexel = {0.0f, 1.0f, 0.0f, 1.0f};
inline constexpr Texel kEmptyPatch = {1.0f, 1.0f, 1.0f, 0.0f};

/// The text of a function behind the preprocessor.
inline QString functionText(const QString& preprocessed, const char* signature)
{
    const qsizetype start = preprocessed.indexOf(QRegularExpression(
        QRegularExpression::escape(QLatin1String(signature)) + QStringLiteral(" ?\\([^)]*\\)\\s*\\{")));
    EXPECT_GE(start, 0) << signature;
    return preprocessed.mid(start, preprocessed.indexOf(QStringLiteral("\n}"), start) - start);
}

/// A way of building the manager's GLSL.
struct Array2DVariant
{
    bool uniforms;
    bool texture;
    bool explicitAccess;
    bool version150; ///< Else what the driver has, which is 150 on the floor.
    int slotCount = 8;

    std::string name() const
    {
        return std::string(uniforms && texture ? "Both"
                           : uniforms          ? "Uniforms"
                           : texture           ? "Texture"
                                               : "None") +
               (explicitAccess ? "Explicit" : "Direct") + (version150 ? "150" : "") + "Slots" +
               std::to_string(slotCount);
    }
};

/// Every store with every access and version. Version 150 has explicit access alone, whatever is asked for; on the
/// floor there is no other version.
inline std::vector<Array2DVariant> array2DVariants(int slotCount = 8)
{
    std::vector<Array2DVariant> variants;
    for (const auto& [uniforms, texture] : {std::pair(true, false), {false, true}, {true, true}})
    {
        variants.push_back({uniforms, texture, false, true, slotCount});
        if (GLTest::isFloor())
            continue;
        variants.push_back({uniforms, texture, false, false, slotCount});
        variants.push_back({uniforms, texture, true, false, slotCount});
    }
    return variants;
}

/// The macro processor of a variant's program.
inline void setUpProcessor(GLSLMacroProcessor& processor, Array2DTextureManager& manager, const Array2DVariant& variant,
                           const Defines& more = {})
{
    manager.setMaxSlots(variant.slotCount);
    manager.setUseSlotMapUniforms(variant.uniforms);
    manager.setUseSlotMapTexture(variant.texture);
    manager.setUseExplicitlyArrayAccessInGLSL(variant.explicitAccess);
    manager.setup(&processor);
    if (variant.version150)
    {
        processor.addMacro(QStringLiteral("TEXTURE_MANAGER_ARRAY2D_GLSL_VERSION"), QStringLiteral("#version 150"));
        processor.removeDefine(QStringLiteral("TEXTURE_MANAGER_ARRAY2D_SUPPORTS_TEXTURE_QUERY_LOD"));
    }
    for (const auto& [name, value] : more)
        processor.addDefine(QLatin1String(name), QLatin1String(value));
}

/// What one call of the GLSL is given: a token and four numbers.
struct Lookup
{
    TextureToken token;
    std::array<float, 4> place = {0.0f, 0.0f, 0.0f, 0.0f};
};

/// A texel of a test texture: which texture, layer or face, and where.
inline Texel knownTexel(int texture, int layer, int x, int y)
{
    return {float(texture * 16 + layer) / 255.0f, float(x) / 255.0f, float(y) / 255.0f, 128.0f / 255.0f};
}

inline testing::AssertionResult texelsAgree(const Texel& actual, const Texel& expected, float tolerance = 1e-4f)
{
    for (std::size_t i = 0; i < 4; ++i)
        if (!(std::abs(actual[i] - expected[i]) <= tolerance))
        {
            const auto shown = [](const Texel& texel)
            {
                return "(" + std::to_string(texel[0]) + ", " + std::to_string(texel[1]) + ", " +
                       std::to_string(texel[2]) + ", " + std::to_string(texel[3]) + ")";
            };
            return testing::AssertionFailure() << shown(actual) << " instead of " << shown(expected);
        }
    return testing::AssertionSuccess();
}

/// With a manager whose textures are `knownTexel` everywhere.
class Array2DGLSLFixture : public GLTest
{
protected:
    void SetUp() override
    {
        GLTest::SetUp();
        glGenVertexArrays(1, &_vertexArray);
        glGenBuffers(1, &_buffer);
        glDisable(GL_DEPTH_TEST);
        manager = std::make_unique<Array2DTextureManager>();
    }

    void TearDown() override
    {
        program.reset();
        manager.reset();
        glBindVertexArray(0);
        glBindBuffer(GL_ARRAY_BUFFER, 0);
        glDeleteVertexArrays(1, &_vertexArray);
        glDeleteBuffers(1, &_buffer);
        GLTest::TearDown();
    }

    /// `test` for each variant, which is `variant`, each time with a manager of its own.
    void forEachVariant(const std::function<void()>& test)
    {
        for (const Array2DVariant& each : array2DVariants())
        {
            SCOPED_TRACE(each.name());
            variant = each;
            restart();
            test();
        }
    }

    void restart()
    {
        program.reset();
        manager = std::make_unique<Array2DTextureManager>();
    }

    /// Texture `number` with nearest filters; a cube map's layers are its faces. Level n has the layer number + 8 n.
    Texture* texture(int number, int width, int height, GLenum target = GL_TEXTURE_2D, int layers = 1, int levels = 1,
                     GLint internalFormat = GL_RGBA8)
    {
        auto* const made = new Texture(nullptr); // the manager deletes it
        made->setTarget(target);
        EXPECT_TRUE(made->bind());
        glTexParameteri(target, GL_TEXTURE_MIN_FILTER, levels > 1 ? GL_NEAREST_MIPMAP_NEAREST : GL_NEAREST);
        glTexParameteri(target, GL_TEXTURE_MAG_FILTER, GL_NEAREST);
        glTexParameteri(target, GL_TEXTURE_WRAP_S, GL_CLAMP_TO_EDGE);
        glTexParameteri(target, GL_TEXTURE_WRAP_T, GL_CLAMP_TO_EDGE);
        glTexParameteri(target, GL_TEXTURE_MAX_LEVEL, levels - 1);
        for (int level = 0; level < levels; ++level)
        {
            const int w = std::max(1, width >> level);
            const int h = std::max(1, height >> level);
            std::vector<unsigned char> texels;
            for (int layer = 0; layer < (target == GL_TEXTURE_CUBE_MAP ? 6 : layers); ++layer)
            {
                if (target == GL_TEXTURE_CUBE_MAP)
                    texels.clear();
                for (int y = 0; y < h; ++y)
                    for (int x = 0; x < w; ++x)
                        for (const float value : knownTexel(number, layer + 8 * level, x, y))
                            texels.push_back(static_cast<unsigned char>(std::lround(value * 255.0f)));
                if (target == GL_TEXTURE_CUBE_MAP)
                    glTexImage2D(GLenum(GL_TEXTURE_CUBE_MAP_POSITIVE_X + layer), level, internalFormat, w, h, 0,
                                 GL_RGBA, GL_UNSIGNED_BYTE, texels.data());
            }
            if (target == GL_TEXTURE_2D)
                glTexImage2D(target, level, internalFormat, w, h, 0, GL_RGBA, GL_UNSIGNED_BYTE, texels.data());
            if (target == GL_TEXTURE_2D_ARRAY)
                glTexImage3D(target, level, internalFormat, w, h, layers, 0, GL_RGBA, GL_UNSIGNED_BYTE, texels.data());
        }
        made->unbind();
        return made;
    }

    TextureToken tokenOf(Texture* made)
    {
        return manager->tokenForTexture(made);
    }

    void announce(const QList<TextureToken>& list)
    {
        manager->bind(list);
    }

    /// A program that looks up `expression`, a vec4 of `vo_Token` and `vo_Place`.
    testing::AssertionResult build(const Array2DVariant& built, const QString& expression, const Defines& more = {})
    {
        GLSLMacroProcessor processor;
        setUpProcessor(processor, *manager, built, more);
        program = std::make_unique<ShaderProgram>();
        program->setMacroProcessor(&processor);
        program->addShader(GL_VERTEX_SHADER, QString::fromLatin1(R"(#version 150
in uvec2 va_Token;
in vec4 va_Place;
uniform float u_Count;
flat out uvec2 vo_Token;
flat out vec4 vo_Place;
void main()
{
    vo_Token = va_Token;
    vo_Place = va_Place;
    gl_Position = vec4((2.0 * float(gl_VertexID) + 1.0) / u_Count - 1.0, 0.0, 0.0, 1.0);
}
)"));
        program->addShader(GL_FRAGMENT_SHADER, QStringLiteral("#version 150\n#include \"TextureManager.glslh\"\n"
                                                              "uniform samplerCube u_Cube;\n"
                                                              "flat in uvec2 vo_Token;\nflat in vec4 vo_Place;\n"
                                                              "out vec4 o_Color;\nvoid main()\n{\n    o_Color = ") +
                                                   expression + QStringLiteral(";\n}\n"));
        program->addShaderFromFile(GL_FRAGMENT_SHADER, manager->getShaderFile());
        const bool isLinked = program->link();
        program->setMacroProcessor(nullptr);
        return isLinked ? testing::AssertionSuccess() : testing::AssertionFailure() << program->log().toStdString();
    }

    /// What the program computes for each, all in one draw. `prepare` runs when the program is in use and bound.
    std::vector<Texel> lookUp(const std::vector<Lookup>& lookups, const std::function<void()>& prepare = {})
    {
        struct Vertex
        {
            GLuint token[2];
            float place[4];
        };
        std::vector<Vertex> vertices;
        for (const Lookup& one : lookups)
            vertices.push_back({{GLuint(one.token.token), GLuint(one.token.token >> 32)},
                                {one.place[0], one.place[1], one.place[2], one.place[3]}});
        const auto count = static_cast<GLsizei>(lookups.size());
        return draw(count, 1,
                    [&]
                    {
                        glBindVertexArray(_vertexArray);
                        glBindBuffer(GL_ARRAY_BUFFER, _buffer);
                        glBufferData(GL_ARRAY_BUFFER, GLsizeiptr(vertices.size() * sizeof(Vertex)), vertices.data(),
                                     GL_STREAM_DRAW);
                        const int token = program->getVertexAttributeLocation(QStringLiteral("va_Token"));
                        const int place = program->getVertexAttributeLocation(QStringLiteral("va_Place"));
                        for (GLuint attribute = 0; attribute < 2; ++attribute)
                            glDisableVertexAttribArray(attribute);
                        if (token >= 0) // else the expression has no use for it
                        {
                            glEnableVertexAttribArray(GLuint(token));
                            glVertexAttribIPointer(GLuint(token), 2, GL_UNSIGNED_INT, sizeof(Vertex), nullptr);
                        }
                        if (place >= 0)
                        {
                            glEnableVertexAttribArray(GLuint(place));
                            glVertexAttribPointer(GLuint(place), 4, GL_FLOAT, GL_FALSE, sizeof(Vertex),
                                                  reinterpret_cast<const void*>(offsetof(Vertex, place)));
                        }
                        glUniform1f(program->getUniformLocation(QStringLiteral("u_Count")), float(count));
                        if (prepare)
                            prepare();
                        glDrawArrays(GL_POINTS, 0, count);
                    });
    }

    Texel lookUpOne(const TextureToken& token, std::array<float, 4> place = {0.0f, 0.0f, 0.0f, 0.0f})
    {
        return lookUp({{token, place}}).front();
    }

    /// Draws into a floating-point picture with the program and the manager bound; rows from the bottom up.
    std::vector<Texel> draw(GLsizei width, GLsizei height, const std::function<void()>& drawing)
    {
        GLuint framebuffer = 0;
        GLuint renderbuffer = 0;
        glGenFramebuffers(1, &framebuffer);
        glGenRenderbuffers(1, &renderbuffer);
        glBindFramebuffer(GL_FRAMEBUFFER, framebuffer);
        glBindRenderbuffer(GL_RENDERBUFFER, renderbuffer);
        glRenderbufferStorage(GL_RENDERBUFFER, GL_RGBA32F, width, height);
        glFramebufferRenderbuffer(GL_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, GL_RENDERBUFFER, renderbuffer);
        EXPECT_EQ(glCheckFramebufferStatus(GL_FRAMEBUFFER), GLenum(GL_FRAMEBUFFER_COMPLETE));
        glViewport(0, 0, width, height);
        const GLfloat never[] = {-9.0f, -9.0f, -9.0f, -9.0f};
        glClearBufferfv(GL_COLOR, 0, never);
        EXPECT_TRUE(program->bind());
        manager->bind(program.get());
        glBindVertexArray(_vertexArray);
        drawing();
        std::vector<Texel> result(std::size_t(width) * std::size_t(height));
        glReadPixels(0, 0, width, height, GL_RGBA, GL_FLOAT, result.data());
        manager->unbind(program.get());
        program->unbind();
        glBindFramebuffer(GL_FRAMEBUFFER, 0);
        glDeleteFramebuffers(1, &framebuffer);
        glDeleteRenderbuffers(1, &renderbuffer);
        return result;
    }

    Array2DVariant variant{};
    std::unique_ptr<Array2DTextureManager> manager;
    std::unique_ptr<ShaderProgram> program;

private:
    GLuint _vertexArray = 0;
    GLuint _buffer = 0;
};

} // namespace Harrow::Vrk::Test
