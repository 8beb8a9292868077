// SPDX-License-Identifier: MIT
//
// Sets of UDIM patches in the GLSL of Array2DTextureManager, and what needs whole areas drawn: levels of detail, the
// debug view, draws whose instances sample different slots.
#include "Array2DGLSLTestTools.h"

#include <limits>

namespace Harrow::Vrk::Test
{
namespace
{

/// Patches at (0, 0), (2, 0) and (0, 1): textures 1, 2 and 3 of 4 by 4, in one slot.
class Array2DPatchGLSLGL : public Array2DGLSLFixture
{
protected:
    void place()
    {
        set = manager->createUDIMToken();
        const QPoint places[] = {{0, 0}, {2, 0}, {0, 1}};
        for (int i = 0; i < 3; ++i)
        {
            Texture* const patch = texture(i + 1, 4, 4);
            tokenOf(patch);
            manager->addUDIMPatch(set, places[i], patch);
        }
        announce({set});
    }

    TextureToken set;
};

} // namespace

TEST_F(Array2DPatchGLSLGL, CoordinatesFindTheirPatchOrNone)
{
    forEachVariant(
        [&]
        {
            const float huge = 1e20f;
            const struct
            {
                float u;
                float v;
                Texel texel;
            } rows[] = {
                {0.0f, 0.0f, knownTexel(1, 0, 0, 0)},
                {0.9f, 0.6f, knownTexel(1, 0, 3, 2)},
                {2.0f, 0.0f, knownTexel(2, 0, 0, 0)},
                {2.6f, 0.9f, knownTexel(2, 0, 2, 3)},
                {0.0f, 1.0f, knownTexel(3, 0, 0, 0)},
                {0.3f, 1.9f, knownTexel(3, 0, 1, 3)},
                // (1, 0) has no texture.
                {1.0f, 0.0f, kEmptyPatch},
                {1.5f, 0.5f, kEmptyPatch},
                {1.99f, 0.99f, kEmptyPatch},
                // Beyond the row.
                {3.0f, 0.0f, kEmptyPatch},
                {3.5f, 0.5f, kEmptyPatch},
                {3.5f, 1.5f, kEmptyPatch},
                // Beyond the highest offset.
                {1.5f, 1.5f, kEmptyPatch},
                {2.5f, 1.5f, kEmptyPatch},
                {0.5f, 2.0f, kEmptyPatch},
                {0.5f, 99.0f, kEmptyPatch},
                // Below 0.
                {-0.01f, 0.5f, kEmptyPatch},
                {0.5f, -0.01f, kEmptyPatch},
                {-1.0f, -1.0f, kEmptyPatch},
                // Where a row number times the width is beyond an integer, and where the coordinate is.
                {0.5f, 720000000.0f, kEmptyPatch},
                {0.5f, 2000000000.0f, kEmptyPatch},
                {huge, 0.5f, kEmptyPatch},
                {0.5f, huge, kEmptyPatch},
                {huge, huge, kEmptyPatch},
                {-huge, huge, kEmptyPatch},
            };
            for (const char* const call :
                 {"managedTexture(vo_Token, vo_Place.xy)", "managedTextureLod(vo_Token, vo_Place.xy, 0.0)"})
            {
                place();
                ASSERT_TRUE(build(variant, QLatin1String(call)));
                std::vector<Lookup> lookups;
                for (const auto& row : rows)
                    lookups.push_back({set, {row.u, row.v, 0, 0}});
                const auto actual = lookUp(lookups);
                for (std::size_t i = 0; i < std::size(rows); ++i)
                    EXPECT_TRUE(texelsAgree(actual[i], rows[i].texel)) << call << " " << rows[i].u << " " << rows[i].v;
                restart();
            }
        });
}

TEST_F(Array2DPatchGLSLGL, APlainTokenTakesCoordinatesAsTheyAre)
{
    forEachVariant(
        [&]
        {
            const TextureToken plain = tokenOf(texture(7, 4, 4)); // clamps to its edge
            announce({plain});
            ASSERT_TRUE(build(variant, QStringLiteral("managedTexture(vo_Token, vo_Place.xy)")));
            EXPECT_TRUE(texelsAgree(lookUpOne(plain, {2.5f, 0.1f, 0, 0}), knownTexel(7, 0, 3, 0)));
            EXPECT_TRUE(texelsAgree(lookUpOne(plain, {-2.5f, 5.0f, 0, 0}), knownTexel(7, 0, 0, 3)));
        });
}

TEST_F(Array2DPatchGLSLGL, TheIndexOfACoordinateIsRoundedDown)
{
    forEachVariant(
        [&]
        {
            place();
            ASSERT_TRUE(build(variant, QStringLiteral("vec4(managedTextureUDIMIndex(vo_Place.xy), 0.0, 0.0) + "
                                                      "0.0 * managedTextureLod(vo_Token, vec2(0.0), 0.0)")));
            const struct
            {
                float u;
                float v;
                float x;
                float y;
            } rows[] = {
                {0, 0, 0, 0}, {0.99f, 1.0f, 0, 1}, {2.5f, 7.25f, 2, 7}, {-0.5f, -1.0f, -1, -1}, {-1.5f, 100, -2, 100}};
            for (const auto& row : rows)
                EXPECT_TRUE(texelsAgree(lookUpOne(set, {row.u, row.v, 0, 0}), {row.x, row.y, 0, 0}))
                    << row.u << " " << row.v;
        });
}

TEST_F(Array2DPatchGLSLGL, ASetThatWasNeverBoundIsInvalid)
{
    forEachVariant(
        [&]
        {
            set = manager->createUDIMToken();
            ASSERT_TRUE(build(variant, QStringLiteral("managedTexture(vo_Token, vo_Place.xy)")));
            EXPECT_TRUE(texelsAgree(lookUpOne(set, {0.5f, 0.5f, 0, 0}), kInvalidTexel));
        });
}

TEST_F(Array2DPatchGLSLGL, APatchWithoutAPlaceIsEmpty)
{
    forEachVariant(
        [&]
        {
            place();
            Texture* const late = texture(4, 4, 4);
            tokenOf(late);
            manager->addUDIMPatch(set, {1, 0}, late);
            announce({set});
            ASSERT_TRUE(build(variant, QStringLiteral("managedTexture(vo_Token, vo_Place.xy)")));
            EXPECT_TRUE(texelsAgree(lookUpOne(set, {1.5f, 0.5f, 0, 0}), kEmptyPatch)) << "it came too late";
        });
}

// ---- areas ---------------------------------------------------------------------------------------------------------

namespace
{

class Array2DAreaGLSLGL : public Array2DGLSLFixture
{
protected:
    /// A program for a whole picture: `expression` of `vo_Place`, which runs from 0 to u_Scale, and of a token that
    /// may differ from instance to instance.
    testing::AssertionResult buildArea(const QString& expression)
    {
        GLSLMacroProcessor processor;
        setUpProcessor(processor, *manager, variant);
        program = std::make_unique<ShaderProgram>();
        program->setMacroProcessor(&processor);
        program->addShader(GL_VERTEX_SHADER, QString::fromLatin1(R"(#version 150
uniform float u_Scale;
uniform int u_Columns;
uniform uvec2 u_Tokens[64];
out vec2 vo_Place;
flat out uvec2 vo_Token;
void main()
{
    vec2 corner = vec2(gl_VertexID % 2, gl_VertexID / 2);
    vo_Place = corner * u_Scale;
    vo_Token = u_Tokens[gl_InstanceID];
    vec2 cell = (vec2(gl_InstanceID % u_Columns, gl_InstanceID / u_Columns) + corner) / float(u_Columns);
    gl_Position = vec4(2.0 * cell - 1.0, 0.0, 1.0);
}
)"));
        program->addShader(GL_FRAGMENT_SHADER,
                           QStringLiteral("#version %1\n#include \"TextureManager.glslh\"\nuniform sampler2D u_Plain;\n"
                                          "flat in uvec2 vo_Token;\nin vec2 vo_Place;\nout vec4 o_Color;\n"
                                          "void main()\n{\n    o_Color = %2;\n}\n")
                               .arg(variant.version150 ? 150 : 400)
                               .arg(expression));
        program->addShaderFromFile(GL_FRAGMENT_SHADER, manager->getShaderFile());
        const bool isLinked = program->link();
        program->setMacroProcessor(nullptr);
        return isLinked ? testing::AssertionSuccess() : testing::AssertionFailure() << program->log().toStdString();
    }

    std::vector<Texel> drawArea(int size, const QList<TextureToken>& list, int columns = 1, float scale = 1.0f,
                                const std::function<void()>& prepare = {})
    {
        return draw(size, size,
                    [&]
                    {
                        std::vector<GLuint> words;
                        for (const TextureToken& token : list)
                            words.insert(words.end(), {GLuint(token.token), GLuint(token.token >> 32)});
                        glUniform2uiv(program->getUniformLocation(QStringLiteral("u_Tokens[0]")), GLsizei(list.size()),
                                      words.data());
                        glUniform1f(program->getUniformLocation(QStringLiteral("u_Scale")), scale);
                        glUniform1i(program->getUniformLocation(QStringLiteral("u_Columns")), columns);
                        if (prepare)
                            prepare();
                        glDrawArraysInstanced(GL_TRIANGLE_STRIP, 0, 4, GLsizei(list.size()));
                    });
    }
};

} // namespace

TEST_F(Array2DAreaGLSLGL, InstancesOfOneDrawSampleDifferentSlots)
{
    forEachVariant(
        [&]
        {
            const TextureToken small = tokenOf(texture(1, 4, 4));
            const TextureToken large = tokenOf(texture(2, 8, 8));
            const TextureToken other = tokenOf(texture(3, 4, 4));
            announce({small, large, other});
            ASSERT_TRUE(buildArea(QStringLiteral("managedTexture(vo_Token, vo_Place)")));
            constexpr int kColumns = 8;
            constexpr int kCell = 8;
            QList<TextureToken> list;
            for (int i = 0; i < kColumns * kColumns; ++i)
                list.append(i % 3 == 0 ? small : i % 3 == 1 ? large : other);
            const auto picture = drawArea(kColumns * kCell, list, kColumns);
            for (int y = 0; y < kColumns * kCell; ++y)
                for (int x = 0; x < kColumns * kCell; ++x)
                {
                    const int kind = (y / kCell * kColumns + x / kCell) % 3;
                    const int texels = kind == 1 ? 8 : 4;
                    ASSERT_TRUE(
                        texelsAgree(picture[std::size_t(y * kColumns * kCell + x)],
                                    knownTexel(kind + 1, 0, x % kCell * texels / kCell, y % kCell * texels / kCell)))
                        << x << " " << y;
                }
        });
}

TEST_F(Array2DAreaGLSLGL, LevelsOfDetailAreThoseOfAnOrdinaryTexture)
{
    forEachVariant(
        [&]
        {
            if (variant.version150)
                return; // see below
            Texture* const mipmapped = texture(1, 64, 64, GL_TEXTURE_2D, 1, 7);
            Texture* const plain = texture(1, 64, 64, GL_TEXTURE_2D, 1, 7);
            const TextureToken token = tokenOf(mipmapped);
            tokenOf(plain); // for its end
            announce({token});
            for (const float scale : {0.1f, 0.25f, 1.0f, 3.0f})
            {
                ASSERT_TRUE(buildArea(QStringLiteral("vec4(managedTextureQueryLod(vo_Token, vo_Place), "
                                                     "textureQueryLod(u_Plain, vo_Place))")));
                const auto picture =
                    drawArea(16, {token}, 1, scale,
                             [&]
                             {
                                 plain->bind();
                                 glUniform1i(program->getUniformLocation(QStringLiteral("u_Plain")), plain->unit());
                             });
                plain->unbind();
                const float expected = std::log2(64.0f / 16.0f * scale);
                for (const Texel& lod : picture)
                {
                    EXPECT_NEAR(lod[1], expected, 0.05f) << scale;
                    EXPECT_FLOAT_EQ(lod[0], lod[2]) << scale;
                    EXPECT_FLOAT_EQ(lod[1], lod[3]) << scale;
                }
            }
        });
}

TEST_F(Array2DAreaGLSLGL, LevelsOfDetailOfNothingAreZero)
{
    forEachVariant(
        [&]
        {
            if (variant.version150)
                return; // see below
            const TextureToken set = manager->createUDIMToken();
            Texture* const patch = texture(1, 64, 64, GL_TEXTURE_2D, 1, 7);
            tokenOf(patch);
            manager->addUDIMPatch(set, {0, 0}, patch);
            announce({set});
            ASSERT_TRUE(buildArea(QStringLiteral("vec4(managedTextureQueryLod(vo_Token, vo_Place), "
                                                 "managedTextureQueryLod(vo_Token, vo_Place + vec2(1.0, 0.0)))")));
            for (const Texel& lod : drawArea(8, {set}, 1, 0.999f))
            {
                EXPECT_NEAR(lod[1], 3.0f, 0.01f) << "of the patch";
                EXPECT_EQ(lod[2], 0.0f) << "beside it";
                EXPECT_EQ(lod[3], 0.0f);
            }
            for (const Texel& lod : drawArea(8, {TextureToken(0)}))
                EXPECT_TRUE(texelsAgree(lod, {0, 0, 0, 0})) << "a token without a place";
        });
}

TEST_F(Array2DAreaGLSLGL, LevelsOfDetailCannotBeAskedForBeforeVersion400)
{
    forEachVariant(
        [&]
        {
            const LogCapture log;
            const bool builds =
                bool(buildArea(QStringLiteral("vec4(managedTextureQueryLod(vo_Token, vo_Place).xyxy)")));
            EXPECT_EQ(builds, !variant.version150);
        });
}

TEST_F(Array2DAreaGLSLGL, TheDebugViewShowsAllSlots)
{
    forEachVariant(
        [&]
        {
            // Slots of 4 by 4 in two layers, 8 by 2 in one, and a cube map of 8 by 8.
            const TextureToken list[] = {tokenOf(texture(1, 4, 4)), tokenOf(texture(2, 8, 2)),
                                         tokenOf(texture(3, 4, 4)), tokenOf(texture(4, 8, 8, GL_TEXTURE_CUBE_MAP))};
            Array2DVariant three = variant;
            three.slotCount = 3;
            manager->setMaxSlots(3);
            announce({list[0], list[1], list[2], list[3]});
            const struct
            {
                int width;
                int height;
                QList<std::pair<int, int>> layers; ///< texture and its layer
            } slotsOfView[] = {
                {4, 4, {{1, 0}, {3, 0}}}, {8, 2, {{2, 0}}}, {8, 8, {{4, 0}, {4, 1}, {4, 2}, {4, 3}, {4, 4}, {4, 5}}}};
            ASSERT_TRUE(build(three, QStringLiteral("textureGetDebug(vo_Place.xy) + 0.0 * managedTextureLod(vo_Token, "
                                                    "vec2(0.0), 0.0)")));

            std::vector<Lookup> lookups;
            std::vector<Texel> expected;
            const auto add = [&](float x, float y, const Texel& texel)
            {
                lookups.push_back({list[0], {x, y, 0, 0}});
                expected.push_back(texel);
            };
            for (const auto& [x, y] :
                 {std::pair(1.0f, 0.5f), {-1.0f, 0.5f}, {7.0f, 0.5f}, {0.5f, 1.01f}, {0.5f, -1.01f}})
                add(x, y, {0, 0, 0, 0});
            for (const float y : {0.0f, 0.019f, -0.5f, -1.0f})
            {
                add(0.2f, y, {0, 0, 0, 1});
                add(0.5f, y, {1.0f / 3.0f, 0, 0, 1});
                add(0.99f, y, {2.0f / 3.0f, 0, 0, 1});
                add(-0.5f, y, {0, 0, 0, 1});
            }
            for (int row = 0; row < 37; ++row)
                for (int column = 0; column < 41; ++column)
                {
                    const double x = (column + 0.43) / 41.0;
                    const double y = 0.02 + 0.98 * (row + 0.37) / 37.0;
                    const int slot = int(x * 3.0);
                    const auto& shown = slotsOfView[slot];
                    const double layersY = y * double(shown.layers.size());
                    const double s = (x * 3.0 - std::floor(x * 3.0)) * shown.width;
                    const double t = (layersY - std::floor(layersY)) * shown.height;
                    const auto isNearEdge = [](double value) { return std::abs(value - std::round(value)) < 1e-3; };
                    if (isNearEdge(s) || isNearEdge(t) || isNearEdge(layersY))
                        continue;
                    const auto [number, layer] = shown.layers[qsizetype(layersY)];
                    Texel texel = knownTexel(number, layer, int(s), int(t));
                    texel[3] = 1.0f;
                    add(float(x), float(y), texel);
                }
            ASSERT_GT(lookups.size(), 1200u);
            const auto actual = lookUp(lookups);
            for (std::size_t i = 0; i < actual.size(); ++i)
                EXPECT_TRUE(texelsAgree(actual[i], expected[i])) << lookups[i].place[0] << " " << lookups[i].place[1];
        });
}

} // namespace Harrow::Vrk::Test
