// SPDX-License-Identifier: MIT
//
// The GLSL interface of shadow maps: what compiles and what does not, and on a driver each lookup against a copy of its
// formula, for both kinds of map.

#include "EmbeddedGLSLTestTools.h"
#include "ShadowMapTestTools.h"
#include "support/GLTest.h"
#include "support/LogCapture.h"
#include "support/TransformFeedback.h"

#include "GLFunctions.h"
#include "GLSLMacroProcessor.h"
#include "ShaderProgram.h"
#include "ShadowMapManager.h"
#include "Texture.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <memory>
#include <vector>

namespace Harrow::Vrk::Test
{
namespace
{

const QString kFrag = QStringLiteral("frag");
const QString kHeader = QStringLiteral("include/ShadowMapManager.glslh");
const QString kBody = QStringLiteral("src/ShadowMapManager.glslc");

constexpr int kDepthMaps = 0;
constexpr int kVarianceMaps = 1;

QString expandedBody(int flags)
{
    GLSLMacroProcessor processor;
    ShadowMapManager::setup(&processor, flags);
    return GLSLMacroProcessor::process(embedded(kBody), &processor);
}

/// A stage that calls all four functions.
QString caller(const QString& version = QStringLiteral("150"))
{
    return GLSLMacroProcessor::process(
        QStringLiteral("#version ") + version +
            QStringLiteral("\n#include \"ShadowMapManager.glslh\"\nin vec3 vo_Place;\nout vec4 o_Color;\n"
                           "void main()\n{\n"
                           "    o_Color = shadowMapGetDebug(vo_Place.xy);\n"
                           "    o_Color.r += shadowMapGetVisibility(1u, vo_Place);\n"
                           "    o_Color.g += shadowMapGetVisibilitySingle(2u, vo_Place);\n"
                           "    o_Color.b += shadowMapGetVisibility(3u, vo_Place, vec3(0.0, 1.0, 0.0), vec3(1.0));\n"
                           "}\n"),
        nullptr);
}

} // namespace

// ---- by the validator ----------------------------------------------------------------------------------------------

TEST(ShadowMapGLSL, TheHeaderHasFourFunctionsAndAGuard)
{
    const QString header = embedded(kHeader);
    for (const char* const prototype :
         {"vec4 shadowMapGetDebug(in vec2 fragCoord);", "float shadowMapGetVisibility(uint lightIndex, vec3 pos_WS);",
          "float shadowMapGetVisibilitySingle(uint lightIndex, vec3 pos_WS);",
          "float shadowMapGetVisibility(uint lightIndex, vec3 pos_WS, vec3 norm, vec3 lightDir);"})
        EXPECT_TRUE(header.contains(QLatin1String(prototype))) << prototype;
    EXPECT_TRUE(header.contains(QStringLiteral("#ifndef VRK_SHADOWMAPMANAGER_GLSLH\n#define "
                                               "VRK_SHADOWMAPMANAGER_GLSLH\n")));
    EXPECT_FALSE(header.contains(QStringLiteral("#version")));
}

TEST(ShadowMapGLSL, TheBodyLinksWithItsCallers)
{
    EXPECT_TRUE(embedded(kBody).startsWith(QStringLiteral("#version 150\n")));
    for (const int flags : {kDepthMaps, kVarianceMaps})
    {
        for (const char* const version : {"150", "330", "450"})
        {
            const Verdict verdict = validate({QStringLiteral("-l")},
                                             {{kFrag, expandedBody(flags)}, {kFrag, caller(QLatin1String(version))}});
            EXPECT_TRUE(verdict.good()) << flags << version << verdict.output.toStdString();
        }
        EXPECT_VALID({}, {QStringLiteral("vert"), expandedBody(flags)});
    }
}

TEST(ShadowMapGLSL, TheBodyDeclaresItsUniforms)
{
    const QString body = embedded(kBody);
    for (const char* const declaration :
         {"uniform sampler2DArray u_ShadowMapDepthSampler;",
          "uniform ivec2 u_ShadowMapProjectionInfos[SHADOW_MAP_MANAGER_INFO_ARRAY_SIZE];",
          "uniform mat4 u_ShadowMapProjectionTransforms[SHADOW_MAP_MANAGER_TRANSFORM_ARRAY_SIZE];",
          "uniform float u_VarianceClamp;"})
        EXPECT_TRUE(body.contains(QLatin1String(declaration))) << declaration;
}

TEST(ShadowMapGLSL, TheBodyStopsWithoutItsSizes)
{
    for (const char* const missing : {"SHADOW_MAP_MANAGER_INFO_ARRAY_SIZE", "SHADOW_MAP_MANAGER_TRANSFORM_ARRAY_SIZE"})
    {
        GLSLMacroProcessor processor;
        ShadowMapManager::setup(&processor, kDepthMaps);
        processor.removeDefine(QLatin1String(missing));
        const Verdict verdict = validate({}, {{kFrag, GLSLMacroProcessor::process(embedded(kBody), &processor)}});
        EXPECT_TRUE(verdict.ran);
        EXPECT_FALSE(verdict.good());
        EXPECT_TRUE(verdict.output.contains(QStringLiteral("Missing ") + QLatin1String(missing)))
            << verdict.output.toStdString();
    }
}

// ---- by a driver ---------------------------------------------------------------------------------------------------

namespace
{

constexpr int kLayers = 8;
constexpr int kSide = 4; // texels

struct Texel
{
    float r, g;
};

/// Looks places up in a vertex stage, where the numbers come back as they are, and beside it in the same maps by a copy
/// of the formulas.
class ShadowMapGLSLGL : public GLTest
{
protected:
    void SetUp() override
    {
        GLTest::SetUp();
        makeMaps();
        makeProjections();
        glGenVertexArrays(1, &_vertexArray);
        glBindVertexArray(_vertexArray);
    }

    void TearDown() override
    {
        release();
        _texture.reset();
        glBindVertexArray(0);
        glDeleteVertexArrays(1, &_vertexArray);
        ShadowMapManager::setVarianceClamping(0.1f);
        GLTest::TearDown();
    }

    /// A program whose output is `expression`, of a light (u_Light) and a place (place).
    void link(int flags, const QString& expression)
    {
        release();
        GLSLMacroProcessor processor;
        ShadowMapManager::setup(&processor, flags);
        _program = std::make_unique<ShaderProgram>();
        _program->setMacroProcessor(&processor);
        _program->setTransformFeedbackVaryings({QStringLiteral("result")}, GL_INTERLEAVED_ATTRIBS);
        _program->addShader(GL_VERTEX_SHADER,
                            QStringLiteral("#version 150\n#include \"ShadowMapManager.glslh\"\n"
                                           "uniform uint u_Light;\nuniform vec3 u_Places[64];\nout vec4 result;\n"
                                           "void main()\n{\n    vec3 place = u_Places[gl_VertexID];\n    result = ") +
                                expression + QStringLiteral(";\n    gl_Position = vec4(0.0);\n}\n"));
        _program->addShaderFromFile(GL_VERTEX_SHADER, ShadowMapManager::getShaderFile());
        _program->addShader(GL_FRAGMENT_SHADER,
                            QStringLiteral("#version 150\nout vec4 o;\nvoid main()\n{\n    o = vec4(1.0);\n}\n"));
        ASSERT_TRUE(_program->link()) << _program->log().toStdString();
        _program->setMacroProcessor(nullptr);
        _program->bind();
        ASSERT_TRUE(ShadowMapManager::bind(_program.get(), QVariant::fromValue(&data)));
    }

    void release()
    {
        if (!_program)
            return;
        ShadowMapManager::unbind(_program.get(), QVariant::fromValue(&data));
        _program->unbind();
        _program.reset();
    }

    /// The first of the four results for each place.
    std::vector<float> lookUp(unsigned light, const std::vector<QVector3D>& places)
    {
        std::vector<float> results;
        for (const QList<float>& result : lookUpAll(light, places))
            results.push_back(result[0]);
        return results;
    }

    std::vector<QList<float>> lookUpAll(unsigned light, const std::vector<QVector3D>& places)
    {
        glUniform1ui(_program->getUniformLocation(QStringLiteral("u_Light")), light);
        std::vector<QList<float>> results;
        for (std::size_t first = 0; first < places.size(); first += 64)
        {
            const auto count = GLsizei(std::min<std::size_t>(64, places.size() - first));
            glUniform3fv(_program->getUniformLocation(QStringLiteral("u_Places[0]")), count,
                         reinterpret_cast<const GLfloat*>(&places[first]));
            TransformFeedback feedback(GL_POINTS);
            glDrawArrays(GL_POINTS, 0, count);
            const QList<float> values = feedback.end<float>(4);
            for (int i = 0; i < count; ++i)
                results.push_back(values.mid(i * 4, 4));
        }
        return results;
    }

    // ---- the copy of the formulas

    /// Nearest texel, with a border of 1.
    Texel sampled(int layer, double u, double v) const
    {
        if (u < 0 || u >= 1 || v < 0 || v >= 1)
            return {1, 1};
        return _texels[std::size_t((layer * kSide + int(v * kSide)) * kSide + int(u * kSide))];
    }

    enum Kind
    {
        Least,
        Slanted,
        Single
    };

    double expected(int flags, Kind kind, unsigned light, const Vec& place, double bias, double clampAt = 0.1) const
    {
        if (light >= 32 || data.projectorInfos[int(light)].count == 0)
            return 1.0;
        const RenderData::ProjectorInfo info = data.projectorInfos[int(light)];
        const int count = kind == Single ? 1 : info.count;
        double visibility = 1.0;
        for (int i = info.index; i < info.index + count; ++i)
        {
            const Clip c = mapped(mat(data.transforms[i].toMatrix()), place);
            if (c.w < 0)
                continue;
            const double z = c.z / c.w;
            const Texel texel = sampled(i, c.x / c.w * 0.5 + 0.5, c.y / c.w * 0.5 + 0.5);
            if (kind != Slanted && (texel.r <= 0 || texel.r >= 1))
                continue;
            double lit = 1.0;
            if (flags == kVarianceMaps)
            {
                const double d = z - texel.r - bias;
                const double variance = double(texel.g) - double(texel.r) * texel.r;
                if (d > 0)
                    lit = variance / (variance + d * d);
                if (d > 0 && kind != Single)
                {
                    const double t = std::clamp((lit - clampAt) / (1 - clampAt), 0.0, 1.0);
                    lit = t * t * (3 - 2 * t);
                }
                lit = std::clamp(lit, 0.0, 1.0);
            }
            else
                lit = bias + texel.r - z < 0 ? 0.0 : 1.0;
            visibility = std::min(visibility, lit);
        }
        return visibility;
    }

    /// Places in front of, behind, beside and above the maps, away from the edges of texels.
    static std::vector<QVector3D> grid()
    {
        std::vector<QVector3D> places;
        for (int x = 0; x < 7; ++x)
            for (int y = 0; y < 7; ++y)
                for (int z = 0; z < 9; ++z)
                    places.emplace_back(-2.13f + float(x) * 0.71f, -2.17f + float(y) * 0.73f,
                                        -1.19f + float(z) * 0.293f);
        return places;
    }

    void compare(int flags, Kind kind, double bias, double clampAt = 0.1)
    {
        const std::vector<QVector3D> places = grid();
        int shadowed = 0;
        int partly = 0;
        for (unsigned light = 0; light < 4; ++light)
        {
            const std::vector<float> found = lookUp(light, places);
            ASSERT_EQ(found.size(), places.size());
            for (std::size_t i = 0; i < places.size(); ++i)
            {
                const double wanted = expected(flags, kind, light, vec(places[i]), bias, clampAt);
                EXPECT_NEAR(found[i], wanted, 2e-4)
                    << "light " << light << ": " << places[i].x() << ", " << places[i].y() << ", " << places[i].z();
                shadowed += wanted == 0;
                partly += wanted > 0 && wanted < 1;
            }
        }
        EXPECT_GT(shadowed + partly, 20);
        EXPECT_EQ(partly > 0, flags == kVarianceMaps);
    }

    RenderData data;

private:
    /// Depths all over 0 to 1, some of them 0 and 1.
    void makeMaps()
    {
        Random random(8);
        _texels.clear();
        for (int i = 0; i < kLayers * kSide * kSide; ++i)
        {
            const int kind = random.below(8);
            const float depth = kind == 0 ? 0.0f : kind == 1 ? 1.0f : float(random.between(0.05, 0.95));
            _texels.push_back({depth, depth * depth + float(random.between(0.0, 0.05))});
        }
        _texture = std::make_unique<Texture>(nullptr);
        _texture->setTarget(GL_TEXTURE_2D_ARRAY);
        _texture->bind();
        glTexParameteri(GL_TEXTURE_2D_ARRAY, GL_TEXTURE_MIN_FILTER, GL_NEAREST);
        glTexParameteri(GL_TEXTURE_2D_ARRAY, GL_TEXTURE_MAG_FILTER, GL_NEAREST);
        glTexParameteri(GL_TEXTURE_2D_ARRAY, GL_TEXTURE_WRAP_S, GL_CLAMP_TO_BORDER);
        glTexParameteri(GL_TEXTURE_2D_ARRAY, GL_TEXTURE_WRAP_T, GL_CLAMP_TO_BORDER);
        const float border[] = {1, 1, 1, 1};
        glTexParameterfv(GL_TEXTURE_2D_ARRAY, GL_TEXTURE_BORDER_COLOR, border);
        glTexImage3D(GL_TEXTURE_2D_ARRAY, 0, GL_RG32F, kSide, kSide, kLayers, 0, GL_RG, GL_FLOAT, _texels.data());
        _texture->unbind();
        data.setProjectionTexture(_texture.get());
    }

    /// Light 0 has one projection, light 1 none, light 2 three of which two divide by w, light 3 two.
    void makeProjections()
    {
        const auto flat = [](float scale, float turn)
        {
            QMatrix4x4 m;
            m.scale(scale, scale, 0.9f);
            m.rotate(turn, 0, 0, 1);
            return m;
        };
        const auto deep = [](const QVector3D& eye)
        {
            QMatrix4x4 m;
            m.perspective(70, 1, 0.1f, 6);
            m.lookAt(eye, QVector3D(), QVector3D(0, 1, 0));
            return m;
        };
        const QMatrix4x4 matrices[] = {flat(0.7f, 10),           flat(0.5f, -33), deep({0.5f, 0.25f, 3}),
                                       deep({0.125f, 1, -0.7f}), flat(0.9f, 70),  flat(0.4f, 120)};
        for (int i = 0; i < int(std::size(matrices)); ++i)
            data.setTransform(i, matrices[i], 0);
        data.projectorInfos[0] = {1, 0};
        data.projectorInfos[1] = {0, 1};
        data.projectorInfos[2] = {3, 1};
        data.projectorInfos[3] = {2, 4};
    }

    std::vector<Texel> _texels;
    std::unique_ptr<Texture> _texture;
    std::unique_ptr<ShaderProgram> _program;
    GLuint _vertexArray = 0;
};

const QString kVisibility = QStringLiteral("vec4(shadowMapGetVisibility(u_Light, place))");
const QString kSingle = QStringLiteral("vec4(shadowMapGetVisibilitySingle(u_Light, place))");
const QString kSlanted =
    QStringLiteral("vec4(shadowMapGetVisibility(u_Light, place, vec3(0.0, 0.0, 1.0), vec3(0.8, 0.0, 0.6)))");
const QString kDebug = QStringLiteral("shadowMapGetDebug(place.xy)");

} // namespace

TEST_F(ShadowMapGLSLGL, TheVisibilityIsTheLeastOfAllProjections)
{
    link(kDepthMaps, kVisibility);
    compare(kDepthMaps, Least, 0.00001);
}

TEST_F(ShadowMapGLSLGL, WithVarianceMapsTheVisibilityIsABound)
{
    link(kVarianceMaps, kVisibility);
    compare(kVarianceMaps, Least, 0.00001);
}

TEST_F(ShadowMapGLSLGL, TheClampCountsInVarianceMaps)
{
    ShadowMapManager::setVarianceClamping(0.4f);
    link(kVarianceMaps, kVisibility);
    compare(kVarianceMaps, Least, 0.00001, 0.4f);
}

TEST_F(ShadowMapGLSLGL, TheBiasGrowsWithTheSlant)
{
    link(kDepthMaps, kSlanted);
    compare(kDepthMaps, Slanted, 0.05 * 0.4);
    link(kVarianceMaps, kSlanted);
    compare(kVarianceMaps, Slanted, 0.05 * 0.4);
}

TEST_F(ShadowMapGLSLGL, ANormalTowardTheLightHasNoBias)
{
    link(kDepthMaps, QStringLiteral("vec4(shadowMapGetVisibility(u_Light, place, vec3(0.0, 0.0, 2.0), "
                                    "vec3(0.0, 0.0, 1.0)))"));
    compare(kDepthMaps, Slanted, 0.0);
}

TEST_F(ShadowMapGLSLGL, TheSingleFormTakesTheFirstProjectionWithoutBias)
{
    link(kDepthMaps, kSingle);
    compare(kDepthMaps, Single, 0.0);
    link(kVarianceMaps, kSingle);
    compare(kVarianceMaps, Single, 0.0);
}

TEST_F(ShadowMapGLSLGL, ALightPastTheArrayIsVisible)
{
    for (const int flags : {kDepthMaps, kVarianceMaps})
    {
        for (const QString& expression : {kVisibility, kSlanted, kSingle})
        {
            link(flags, expression);
            for (const unsigned light : {32u, 33u, 1000000u, 0xFFFFFFFFu})
                for (const float visibility : lookUp(light, grid()))
                    ASSERT_EQ(visibility, 1.0f) << light;
        }
    }
}

TEST_F(ShadowMapGLSLGL, ALightWithoutProjectionsIsVisible)
{
    data.projectorInfos[5] = {0, 32}; // as `processLights` leaves it when all are taken
    for (const QString& expression : {kVisibility, kSlanted, kSingle})
    {
        link(kDepthMaps, expression);
        for (const unsigned light : {1u, 5u, 31u})
            for (const float visibility : lookUp(light, grid()))
                ASSERT_EQ(visibility, 1.0f) << light;
    }
}

TEST_F(ShadowMapGLSLGL, ProjectionsPastTheArrayAreNotRead)
{
    data.projectorInfos[0] = {3, 31};
    data.projectorInfos[1] = {2, 40};
    data.projectorInfos[2] = {2, -2};
    for (const QString& expression : {kVisibility, kSlanted, kSingle})
    {
        link(kDepthMaps, expression);
        for (const unsigned light : {0u, 1u, 2u})
            for (const float visibility : lookUp(light, grid()))
                ASSERT_EQ(visibility, 1.0f) << light; // 31 is a matrix of zeros, which projects nothing
    }
}

TEST_F(ShadowMapGLSLGL, TheDebugViewIsEmptyOutside)
{
    link(kDepthMaps, kDebug);
    for (const QList<float>& color :
         lookUpAll(0, {{-0.01f, 0.5f, 0}, {1.01f, 0.5f, 0}, {0.5f, -0.01f, 0}, {0.5f, 1.01f, 0}}))
        EXPECT_EQ(color, (QList<float>{0, 0, 0, 0}));
}

TEST_F(ShadowMapGLSLGL, TheDebugViewHasAStripOfLights)
{
    link(kDepthMaps, kDebug);
    for (int light = 0; light < 32; ++light)
    {
        const QList<float> color = lookUpAll(0, {{(float(light) + 0.5f) / 32.0f, 0.01f, 0}})[0];
        const RenderData::ProjectorInfo info = data.projectorInfos[light];
        EXPECT_EQ(color, (QList<float>{float(light) / 32, float(info.count) / 32, float(info.index) / 32, 1})) << light;
    }
}

TEST_F(ShadowMapGLSLGL, TheDebugViewHasAGridOfLayers)
{
    link(kDepthMaps, kDebug);
    // Eight layers in three columns.
    for (int cell = 0; cell < 9; ++cell)
    {
        for (int texel = 0; texel < kSide * kSide; ++texel)
        {
            const double u = (texel % kSide + 0.5) / kSide;
            const double v = (texel / kSide + 0.5) / kSide;
            const QList<float> color = lookUpAll(0, {{float((cell % 3 + u) / 3), float((cell / 3 + v) / 3), 0}})[0];
            const Texel wanted = cell < kLayers ? sampled(cell, u, v) : Texel{0, 0};
            EXPECT_EQ(color[0], wanted.r) << cell << ", " << texel;
            EXPECT_EQ(color[1], wanted.g) << cell << ", " << texel;
        }
    }
}

} // namespace Harrow::Vrk::Test
