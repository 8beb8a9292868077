// SPDX-License-Identifier: MIT
//
// The shadow of a point light all around it, drawn and looked up as an application does: what is behind a closed ring
// or a ball is dark without a gap where one side of the light meets the next, and what is beside it is lit.

#include "ShadowMapTestTools.h"
#include "support/GLTest.h"
#include "support/LogCapture.h"
#include "support/Picture.h"

#include "GLFunctions.h"
#include "GLSLMacroProcessor.h"
#include "ShaderProgram.h"
#include "ShadowMapManager.h"
#include "Texture.h"

#include <QImage>
#include <QVariant>

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <memory>
#include <vector>

namespace Harrow::Vrk::Test
{
namespace
{

constexpr int kMapSide = 512; // texels
constexpr int kWidth = 256;   // of the picture, for a whole turn
constexpr int kHeight = 128;  // from the one pole to the other
constexpr float kFarAway = 6.0f;

/// Around the light's place, on the plane across `axis`: so far away, and so far to either side of the plane.
struct Ring
{
    int axis;
    float radius;
    float half;
};

/// Each crosses four edges between the sides of a light that is not turned.
constexpr Ring kRings[] = {{0, 3.5f, 0.85f}, {1, 3.0f, 0.75f}, {2, 2.5f, 0.6f}};
constexpr float kBall = 2.0f;

/// What direction a pixel of the picture looks along.
QVector3D directionOf(int x, int y)
{
    const double turn = (x + 0.5) / kWidth * 2.0 * M_PI;
    const double rise = ((y + 0.5) / kHeight - 0.5) * M_PI;
    return QVector3D(float(std::cos(rise) * std::cos(turn)), float(std::sin(rise)),
                     float(std::cos(rise) * std::sin(turn)));
}

/// How far beside the ring a direction passes, in parts of its half width: below 1 it meets the ring.
float besideRing(const Ring& ring, const QVector3D& d)
{
    const float along = d[ring.axis];
    const float across = std::sqrt(std::max(0.0f, 1.0f - along * along));
    return across == 0.0f ? 1e9f : std::fabs(along) / across * ring.radius / ring.half;
}

std::vector<QVector3D> ringTriangles(const Ring& ring, const QVector3D& place)
{
    constexpr int kPieces = 240;
    std::vector<QVector3D> triangles;
    const auto at = [&](int piece, float side)
    {
        const double angle = piece * 2.0 * M_PI / kPieces;
        QVector3D p;
        p[ring.axis] = side * ring.half;
        p[(ring.axis + 1) % 3] = ring.radius * float(std::cos(angle));
        p[(ring.axis + 2) % 3] = ring.radius * float(std::sin(angle));
        return place + p;
    };
    for (int i = 0; i < kPieces; ++i)
        triangles.insert(triangles.end(), {at(i, -1), at(i + 1, -1), at(i, 1), at(i, 1), at(i + 1, -1), at(i + 1, 1)});
    return triangles;
}

std::vector<QVector3D> ballTriangles(float radius, const QVector3D& place)
{
    constexpr int kTurns = 128;
    constexpr int kRises = 64;
    std::vector<QVector3D> triangles;
    const auto at = [&](int turn, int rise)
    {
        const double a = turn * 2.0 * M_PI / kTurns;
        const double b = (double(rise) / kRises - 0.5) * M_PI;
        return place +
               QVector3D(float(std::cos(b) * std::cos(a)), float(std::sin(b)), float(std::cos(b) * std::sin(a))) *
                   radius;
    };
    for (int i = 0; i < kTurns; ++i)
        for (int j = 0; j < kRises; ++j)
            triangles.insert(triangles.end(),
                             {at(i, j), at(i + 1, j), at(i, j + 1), at(i, j + 1), at(i + 1, j), at(i + 1, j + 1)});
    return triangles;
}

class ShadowMapSeamsGL : public GLTest
{
protected:
    void SetUp() override
    {
        GLTest::SetUp();
        glGenVertexArrays(1, &_vertexArray);
        glBindVertexArray(_vertexArray);
        glGenBuffers(1, &_vertices);
        glBindBuffer(GL_ARRAY_BUFFER, _vertices);
        makeMaps();
        linkDepth();
        linkLit();
    }

    void TearDown() override
    {
        _depth.reset();
        _lit.reset();
        _maps.reset();
        glBindBuffer(GL_ARRAY_BUFFER, 0);
        glDeleteBuffers(1, &_vertices);
        glBindVertexArray(0);
        glDeleteVertexArrays(1, &_vertexArray);
        GLTest::TearDown();
    }

    /// Whether each direction is lit, where `triangles` cast shadows: 255 for all of the light.
    QImage pictureOf(Light& light, const std::vector<QVector3D>& triangles, const CameraPose* camera,
                     const SceneBox* scene)
    {
        const LogCapture log;
        EXPECT_TRUE(ShadowMapManager::processLights(listOf({&light}), data, camera ? &camera->projection : nullptr,
                                                    camera ? &camera->view : nullptr, scene));
        drawDepth(triangles);
        const QImage picture = drawLit(light.transform().map(QVector3D()));
        EXPECT_EQ(log.texts(), QStringList());
        return picture;
    }

    RenderData data;

private:
    void makeMaps()
    {
        _maps = std::make_unique<Texture>(nullptr);
        _maps->setTarget(GL_TEXTURE_2D_ARRAY);
        _maps->bind();
        glTexImage3D(GL_TEXTURE_2D_ARRAY, 0, GL_RG32F, kMapSide, kMapSide, 32, 0, GL_RG, GL_FLOAT, nullptr);
        glTexParameteri(GL_TEXTURE_2D_ARRAY, GL_TEXTURE_MIN_FILTER, GL_NEAREST);
        glTexParameteri(GL_TEXTURE_2D_ARRAY, GL_TEXTURE_MAG_FILTER, GL_NEAREST);
        glTexParameteri(GL_TEXTURE_2D_ARRAY, GL_TEXTURE_WRAP_S, GL_CLAMP_TO_BORDER);
        glTexParameteri(GL_TEXTURE_2D_ARRAY, GL_TEXTURE_WRAP_T, GL_CLAMP_TO_BORDER);
        const float border[] = {1, 1, 1, 1};
        glTexParameterfv(GL_TEXTURE_2D_ARRAY, GL_TEXTURE_BORDER_COLOR, border);
        _maps->unbind();
        data.setProjectionTexture(_maps.get());
    }

    void linkDepth()
    {
        _depth = std::make_unique<ShaderProgram>();
        _depth->addShader(GL_VERTEX_SHADER,
                          QStringLiteral("#version 150\nuniform mat4 u_ClipFromWorld;\nin vec3 va_Place;\n"
                                         "void main()\n{\n    gl_Position = u_ClipFromWorld * vec4(va_Place, 1.0);\n}"
                                         "\n"));
        // The form that the lookups compare with: z / w, from -1 to 1.
        _depth->addShader(GL_FRAGMENT_SHADER, QStringLiteral("#version 150\nout vec4 o_Depth;\nvoid main()\n{\n"
                                                             "    float z = gl_FragCoord.z * 2.0 - 1.0;\n"
                                                             "    o_Depth = vec4(z, z * z, 0.0, 0.0);\n}\n"));
        ASSERT_TRUE(_depth->link()) << _depth->log().toStdString();
    }

    void linkLit()
    {
        GLSLMacroProcessor processor;
        ShadowMapManager::setup(&processor, 0);
        _lit = std::make_unique<ShaderProgram>();
        _lit->setMacroProcessor(&processor);
        _lit->addShader(GL_VERTEX_SHADER,
                        QStringLiteral("#version 150\nout vec2 v_Place;\nvoid main()\n{\n"
                                       "    v_Place = vec2(gl_VertexID == 1 ? 2.0 : 0.0, gl_VertexID == 2 ? 2.0 : 0.0);"
                                       "\n    gl_Position = vec4(v_Place * 2.0 - 1.0, 0.0, 1.0);\n}\n"));
        _lit->addShader(GL_FRAGMENT_SHADER,
                        QStringLiteral("#version 150\n#include \"ShadowMapManager.glslh\"\nuniform vec3 u_Center;\n"
                                       "uniform float u_FarAway;\nin vec2 v_Place;\nout vec4 o_Color;\n"
                                       "void main()\n{\n    const float pi = 3.14159265358979;\n"
                                       "    float turn = v_Place.x * 2.0 * pi;\n"
                                       "    float rise = (v_Place.y - 0.5) * pi;\n"
                                       "    vec3 d = vec3(cos(rise) * cos(turn), sin(rise), cos(rise) * sin(turn));\n"
                                       "    float lit = shadowMapGetVisibility(0u, u_Center + d * u_FarAway);\n"
                                       "    o_Color = vec4(lit, lit, lit, 1.0);\n}\n"));
        _lit->addShaderFromFile(GL_FRAGMENT_SHADER, ShadowMapManager::getShaderFile());
        ASSERT_TRUE(_lit->link()) << _lit->log().toStdString();
        _lit->setMacroProcessor(nullptr);
    }

    /// One layer for each projection: the nearest depth, and 1 where nothing is.
    void drawDepth(const std::vector<QVector3D>& triangles)
    {
        GLuint framebuffer = 0;
        glGenFramebuffers(1, &framebuffer);
        glBindFramebuffer(GL_FRAMEBUFFER, framebuffer);
        glViewport(0, 0, kMapSide, kMapSide);
        glEnable(GL_BLEND);
        glBlendEquation(GL_MIN);
        _depth->bind();
        glBufferData(GL_ARRAY_BUFFER, GLsizeiptr(triangles.size() * sizeof(QVector3D)), triangles.data(),
                     GL_STREAM_DRAW);
        const auto place = GLuint(glGetAttribLocation(_depth->shaderProgramID(), "va_Place"));
        glEnableVertexAttribArray(place);
        glVertexAttribPointer(place, 3, GL_FLOAT, GL_FALSE, 0, nullptr);
        const GLint clipFromWorld = _depth->getUniformLocation(QStringLiteral("u_ClipFromWorld"));
        const float nothing[] = {1, 1, 1, 1};
        for (int layer = 0; layer < data.transformCount; ++layer)
        {
            glFramebufferTextureLayer(GL_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, _maps->textureID(), 0, layer);
            ASSERT_EQ(glCheckFramebufferStatus(GL_FRAMEBUFFER), GLenum(GL_FRAMEBUFFER_COMPLETE));
            glClearBufferfv(GL_COLOR, 0, nothing);
            glUniformMatrix4fv(clipFromWorld, 1, GL_FALSE, data.transforms[layer].values);
            glDrawArrays(GL_TRIANGLES, 0, GLsizei(triangles.size()));
        }
        glDisableVertexAttribArray(place);
        _depth->unbind();
        glBlendEquation(GL_FUNC_ADD);
        glDisable(GL_BLEND);
        glBindFramebuffer(GL_FRAMEBUFFER, 0);
        glDeleteFramebuffers(1, &framebuffer);
    }

    QImage drawLit(const QVector3D& centre)
    {
        const OffscreenTarget target(kWidth, kHeight);
        glViewport(0, 0, kWidth, kHeight);
        _lit->bind();
        EXPECT_TRUE(ShadowMapManager::bind(_lit.get(), QVariant::fromValue(&data)));
        glUniform3f(_lit->getUniformLocation(QStringLiteral("u_Center")), centre.x(), centre.y(), centre.z());
        glUniform1f(_lit->getUniformLocation(QStringLiteral("u_FarAway")), kFarAway);
        glDrawArrays(GL_TRIANGLES, 0, 3);
        EXPECT_TRUE(ShadowMapManager::unbind(_lit.get(), QVariant::fromValue(&data)));
        _lit->unbind();
        return target.read();
    }

    std::unique_ptr<Texture> _maps;
    std::unique_ptr<ShaderProgram> _depth;
    std::unique_ptr<ShaderProgram> _lit;
    GLuint _vertexArray = 0;
    GLuint _vertices = 0;
};

/// How a light is placed, and what its projections are fitted to.
struct Way
{
    const char* name;
    float turned; ///< degrees
    bool mirrored;
    bool hasScene;
    bool hasCamera;
    int levels;
};

constexpr Way kWays[] = {
    {"no scene", 0, false, false, false, 0},        {"no scene, turned", 40, false, false, false, 0},
    {"fitted", 0, false, true, false, 0},           {"fitted, turned", 40, false, true, false, 0},
    {"fitted, mirrored", 40, true, true, false, 0}, {"fitted to a view", 0, false, true, true, 0},
    {"cascades", 0, false, true, true, 3},          {"cascades, turned", 25, false, true, true, 2},
};

const QVector3D kPlace(1.0f, -2.0f, 0.5f);

std::unique_ptr<Light> lightOf(const Way& way)
{
    QMatrix4x4 transform;
    transform.translate(kPlace);
    transform.rotate(way.turned, 1, 2, -1);
    if (way.mirrored)
        transform.scale(-1, 1, 1);
    return Test::lightOf(Light::ePoint, transform, way.levels);
}

CameraPose viewOf(const QVector3D& at)
{
    return cameraAt(kPlace + QVector3D(-9, 4, -11), at, 90.0f, 0.1f, 40.0f);
}

bool isInView(const Mat& clipFromWorld, const QVector3D& p)
{
    const Clip c = mapped(clipFromWorld, vec(p));
    return c.w > 0 && std::fabs(c.x) < 0.99 * c.w && std::fabs(c.y) < 0.99 * c.w && std::fabs(c.z) < 0.999 * c.w;
}

/// A scene around all that is looked up.
const SceneBox kAll{kPlace - QVector3D(7, 7, 7), kPlace + QVector3D(7, 7, 7)};

} // namespace

TEST_F(ShadowMapSeamsGL, ABallAroundTheLightLeavesNothingLit)
{
    for (const Way& way : kWays)
    {
        const auto light = lightOf(way);
        const CameraPose camera = viewOf(kPlace);
        const Mat clipFromWorld = camera.clipFromWorld();
        const QImage picture = pictureOf(*light, ballTriangles(kBall, kPlace), way.hasCamera ? &camera : nullptr,
                                         way.hasScene ? &kAll : nullptr);
        int looked = 0;
        int lit = 0;
        for (int y = 0; y < kHeight; ++y)
        {
            for (int x = 0; x < kWidth; ++x)
            {
                const QVector3D d = directionOf(x, y);
                if (way.hasCamera && !isInView(clipFromWorld, kPlace + d * kFarAway))
                    continue;
                ++looked;
                lit += qRed(picture.pixel(x, kHeight - 1 - y)) != 0;
            }
        }
        EXPECT_GT(looked, kWidth * kHeight / 2) << way.name;
        EXPECT_EQ(lit, 0) << way.name;
    }
}

TEST_F(ShadowMapSeamsGL, RingsCastShadowsWithoutAGapFromSideToSide)
{
    std::vector<QVector3D> triangles;
    for (const Ring& ring : kRings)
    {
        const std::vector<QVector3D> one = ringTriangles(ring, kPlace);
        triangles.insert(triangles.end(), one.begin(), one.end());
    }
    for (const Way& way : kWays)
    {
        const auto light = lightOf(way);
        const CameraPose camera = viewOf(kPlace);
        const Mat clipFromWorld = camera.clipFromWorld();
        const QImage picture =
            pictureOf(*light, triangles, way.hasCamera ? &camera : nullptr, way.hasScene ? &kAll : nullptr);
        int dark = 0;
        int bright = 0;
        int wrong = 0;
        for (int y = 0; y < kHeight; ++y)
        {
            for (int x = 0; x < kWidth; ++x)
            {
                const QVector3D d = directionOf(x, y);
                if (way.hasCamera && !isInView(clipFromWorld, kPlace + d * kFarAway))
                    continue;
                float beside = 1e9f;
                for (const Ring& ring : kRings)
                    beside = std::min(beside, besideRing(ring, d));
                // The rim is as sharp as the texels of the maps.
                if (std::fabs(beside - 1.0f) < 0.08f)
                    continue;
                const int expected = beside < 1.0f ? 0 : 255;
                ++(expected ? bright : dark);
                wrong += qRed(picture.pixel(x, kHeight - 1 - y)) != expected;
            }
        }
        EXPECT_GT(dark, kWidth * kHeight / 6) << way.name;
        EXPECT_GT(bright, kWidth * kHeight / 6) << way.name;
        EXPECT_EQ(wrong, 0) << way.name;
    }
}

} // namespace Harrow::Vrk::Test
