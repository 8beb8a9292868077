// SPDX-License-Identifier: MIT
#pragma once

/// \file
/// What the suites of prefiltered environment maps on the fake driver share: the calls that each step is made of, and a
/// driver that answers for a source of 16 by 8 texels.

#include "PrefilteredEnvMap.h"

#include "GLNameTools.h"
#include "TextureProcessingTestTools.h"

#include <QRegularExpression>

#include <algorithm>
#include <array>
#include <functional>
#include <iterator>
#include <limits>
#include <memory>
#include <vector>

namespace Harrow::Vrk::Test
{

inline constexpr GLenum kFirstFace = GL_TEXTURE_CUBE_MAP_POSITIVE_X;

/// What the last maps' matrices were.
inline std::vector<std::array<float, 9>>& transforms()
{
    static std::vector<std::array<float, 9>> list;
    return list;
}

inline QString uniform1i(GLint location, int value)
{
    return CallLog::call("glUniform1i", location, value);
}
inline QString uniform1ui(GLint location, unsigned value)
{
    return CallLog::call("glUniform1ui", location, value);
}
inline QString uniform1f(GLint location, double value)
{
    return CallLog::call("glUniform1f", location, value);
}
inline QString framebuffer(GLenum target, GLuint name)
{
    return CallLog::call("glBindFramebuffer", target, name);
}
inline QString storage(GLenum target, int width, int height)
{
    return CallLog::call("glTexImage2D", target, 0, GL_RGBA16F, width, height, 0, GL_RGBA, GL_HALF_FLOAT, nullptr);
}

inline QStringList filters(GLenum target, GLint minification, GLint magnification)
{
    return {parameter(target, GL_TEXTURE_MIN_FILTER, minification),
            parameter(target, GL_TEXTURE_MAG_FILTER, magnification)};
}

inline QStringList queries(bool framebuffers)
{
    QStringList calls = {writes("glGetIntegerv", GL_VIEWPORT)};
    if (framebuffers)
        calls << writes("glGetIntegerv", GL_DRAW_FRAMEBUFFER_BINDING)
              << writes("glGetIntegerv", GL_READ_FRAMEBUFFER_BINDING);
    return calls;
}

/// A framebuffer, and a quad whose position is enabled, both bound.
inline QStringList beginning(GLuint framebufferName)
{
    QStringList calls = {writes("glGenFramebuffers", 1), framebuffer(GL_FRAMEBUFFER, framebufferName)};
    return calls << makingAFullscreenQuad() << vertexArray(1);
}

inline QStringList filterUniforms(int unit, unsigned samples, int levels)
{
    return {uniformQuery(1, "u_SamplerEnvMap"),  uniform1i(5, unit),
            uniformQuery(1, "u_NumSamples"),     uniform1ui(6, samples),
            uniformQuery(1, "u_RoughnessScale"), uniform1f(7, levels)};
}

inline QStringList drawn()
{
    return {CallLog::call("glDrawArrays", GL_TRIANGLES, 0, 6), CallLog::call("glFlush")};
}

inline QStringList depthOn()
{
    return {CallLog::call("glDepthMask", GL_TRUE), CallLog::call("glEnable", GL_DEPTH_TEST)};
}

inline QStringList finished(GLenum target, GLint wrapS, int levels)
{
    return QStringList{activate(3), bindName(2, target)} + filters(target, GL_LINEAR_MIPMAP_LINEAR, GL_LINEAR) +
           QStringList{parameter(target, GL_TEXTURE_WRAP_S, wrapS),
                       parameter(target, GL_TEXTURE_WRAP_T, GL_CLAMP_TO_EDGE), parameter(target, GL_TEXTURE_MIN_LOD, 0),
                       parameter(target, GL_TEXTURE_MAX_LOD, levels - 1),
                       parameter(target, GL_TEXTURE_MAX_LEVEL, levels - 1)};
}

/// Program 1 and the framebuffer, then the quad.
inline QStringList deleted()
{
    return {CallLog::call("glDeleteProgram", 1), writes("glDeleteFramebuffers", 1), writes("glDeleteVertexArrays", 1),
            writes("glDeleteBuffers", 1), writes("glDeleteBuffers", 1)};
}

inline QString viewportRestored()
{
    return CallLog::call("glViewport", 11, 12, 130, 140);
}

inline QStringList framebuffersRestored()
{
    return {framebuffer(GL_DRAW_FRAMEBUFFER, 77), framebuffer(GL_READ_FRAMEBUFFER, 78)};
}

/// Step 2: size and format of the source.
inline QStringList formRead()
{
    return {activate(3),
            bindName(1),
            writes("glGetTexLevelParameteriv", GL_TEXTURE_2D, 0, GL_TEXTURE_WIDTH),
            writes("glGetTexLevelParameteriv", GL_TEXTURE_2D, 0, GL_TEXTURE_HEIGHT),
            writes("glGetTexLevelParameteriv", GL_TEXTURE_2D, 0, GL_TEXTURE_INTERNAL_FORMAT),
            activate(3),
            bindName(0)};
}

class PrefilteredEnvMapFixture : public TextureProcessingFixture
{
protected:
    void SetUp() override
    {
        TextureProcessingFixture::SetUp();
        driver.setInteger(GL_DRAW_FRAMEBUFFER_BINDING, 77);
        driver.setInteger(GL_READ_FRAMEBUFFER_BINDING, 78);
        driver.replace(
            "glGetIntegerv",
            +[](GLenum parameterName, GLint* value)
            {
                const GLint viewport[] = {11, 12, 130, 140};
                if (parameterName == GL_VIEWPORT)
                    std::copy(std::begin(viewport), std::end(viewport), value);
                else
                    *value = FakeDriver::current().integer(parameterName);
            });
        driver.replace(
            "glUniformMatrix3fv",
            +[](GLint, GLsizei, GLboolean, const GLfloat* values)
            {
                auto& matrix = transforms().emplace_back();
                std::copy(values, values + 9, matrix.begin());
            });
        ASSERT_EQ(driver.load(), 1);
        transforms().clear();
        script.attributes = {{"va_Vertex", 0, 1, GL_FLOAT_VEC3}};
        GLint location = 5;
        for (const char* const name :
             {"u_SamplerEnvMap", "u_NumSamples", "u_RoughnessScale", "u_Roughness", "u_Transform", "u_NumLODLevels"})
            driver.setUniformLocation(name, location++);
        ProcessedTextureScript::current().width = 16;
        ProcessedTextureScript::current().height = 8;
        ProcessedTextureScript::current().internalFormat = GL_RGB16F;
    }

    void TearDown() override
    {
        SetPrefilteredSourceWidthMax(std::numeric_limits<int>::max());
        SetPrefilteredSourceHeightMax(std::numeric_limits<int>::max());
        SetPrefilteredTilseSizeMax(1024);
        SetDiffuseImportanceSampling(false);
        TextureProcessingFixture::TearDown();
    }

    /// All calls but those that build the program, which end with its use, and that delete its stages.
    static QStringList withoutBuilding(const QStringList& calls)
    {
        static const QRegularExpression building(
            line("^(glCreate.*|glGetString.*|glGetIntegerv\\((0x821b|0x821c|0x821d),.*)$"));
        const qsizetype start = calls.indexOf(building);
        const qsizetype end = calls.indexOf(CallLog::call("glUseProgram", 1));
        EXPECT_GE(start, 0);
        EXPECT_GT(end, start);
        QStringList others = calls.mid(0, start) + calls.mid(end);
        EXPECT_EQ(others.removeIf([](const QString& call) { return call.startsWith(line("glDeleteShader(")); }), 4);
        return others;
    }

    /// The text of the stage that has `part`; all stages have come out of one build.
    QByteArray stageWith(const char* part) const
    {
        QByteArray found;
        for (const QByteArray& source : script.sources)
            if (source.contains(part))
            {
                EXPECT_TRUE(found.isEmpty()) << part;
                found = source;
            }
        return found;
    }

    static std::unique_ptr<Texture> filteredCube(Texture* source, int size, ShadingModel model)
    {
        return std::unique_ptr<Texture>(CreatePrefilteredCubeEnvMap(source, size, 64, model, RGBA16F));
    }
    static std::unique_ptr<Texture> filteredLatLong(Texture* source, int width, int height, ShadingModel model)
    {
        return std::unique_ptr<Texture>(CreatePrefilteredLatLongEnvMap(source, width, height, 64, model, RGBA16F));
    }
    static std::unique_ptr<Texture> table(ShadingModel model = SHADING_PHYSICALLY_BASED)
    {
        return std::unique_ptr<Texture>(CreatePreintegratedBRDFTable(32, 16, 5, model, RGBA16F));
    }

    /// All three functions, by name.
    struct Maker
    {
        const char* program;
        std::function<std::unique_ptr<Texture>(ShadingModel)> make;
    };
    std::vector<Maker> makers(Texture* cube, Texture* latLong)
    {
        return {{"prefilteredEnvMap", [=](ShadingModel model) { return filteredCube(cube, 4, model); }},
                {"prefilteredEnvMap", [=](ShadingModel model) { return filteredLatLong(latLong, 8, 4, model); }},
                {"preintegratedBRDFTable", [](ShadingModel model) { return table(model); }}};
    }
};

} // namespace Harrow::Vrk::Test
