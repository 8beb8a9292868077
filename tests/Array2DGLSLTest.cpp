// SPDX-License-Identifier: MIT
//
// The GLSL of Array2DTextureManager with samplers: what compiles, by glslangValidator, and what each function gives, on
// the real driver in every variant.
#include "Array2DGLSLTestTools.h"

#include <QRegularExpression>

namespace Harrow::Vrk::Test
{
namespace
{

const QString kFrag = QStringLiteral("frag");

/// The expanded file with the defines of a `setup` of a driver of that version.
QString body(const Array2DVariant& variant, const Defines& more = {})
{
    GLSLMacroProcessor processor;
    const auto define = [&processor](const char* name, const QString& value = QStringLiteral("1"))
    { processor.addDefine(QLatin1String(name), value); };
    define("TEXTURE_MANAGER_SUPPORTS_UDIMS");
    define("TEXTURE_MANAGER_ARRAY2D");
    define("TEXTURE_MANAGER_ARRAY2D_NUM_UVEC4S_PER_TOKEN", QStringLiteral("2"));
    define("TEXTURE_MANAGER_ARRAY2D_UNIFORMS_SIZE", QStringLiteral("128"));
    if (variant.slotCount > 0)
        define("TEXTURE_MANAGER_SLOT_COUNT", QString::number(variant.slotCount));
    if (variant.uniforms)
        define("TEXTURE_MANAGER_ARRAY2D_SLOT_MAP_USE_UNIFORMS");
    if (variant.texture)
        define("TEXTURE_MANAGER_ARRAY2D_SLOT_MAP_USE_TEXTURE");
    if (variant.explicitAccess)
        define("TEXTURE_ARRAY_ARRAY2D_EXPLICIT_ARRAY_ACCESS");
    if (!variant.version150)
    {
        define("TEXTURE_MANAGER_ARRAY2D_SUPPORTS_TEXTURE_QUERY_LOD");
        processor.addMacro(QStringLiteral("TEXTURE_MANAGER_ARRAY2D_GLSL_VERSION"), QStringLiteral("#version 400"));
    }
    for (const auto& [name, value] : more)
        define(name, QLatin1String(value));
    return GLSLMacroProcessor::process(embedded(QStringLiteral("src/Array2DTextureManager.glslc")), &processor);
}

/// A fragment stage that calls everything.
QString caller(bool version150)
{
    GLSLMacroProcessor processor;
    processor.addDefine(QStringLiteral("TEXTURE_MANAGER_SUPPORTS_UDIMS"), QStringLiteral("1"));
    QString queryLod;
    if (!version150)
    {
        processor.addDefine(QStringLiteral("TEXTURE_MANAGER_ARRAY2D_SUPPORTS_TEXTURE_QUERY_LOD"), QStringLiteral("1"));
        queryLod = QStringLiteral("    result.xy += managedTextureQueryLod(vo_Token, vo_Place.xy);\n");
    }
    return GLSLMacroProcessor::process(QStringLiteral("#version %1\n#include \"TextureManager.glslh\"\n"
                                                      "out vec4 o_Color;\nflat in uvec2 vo_Token;\nin vec3 vo_Place;\n"
                                                      "void main()\n{\n    vec4 result = vec4(0.0);\n"
                                                      "    if (vrkIsValidToken(vo_Token))\n"
                                                      "        result += managedTexture(vo_Token, vo_Place.xy);\n"
                                                      "    result += managedTextureLod(vo_Token, vo_Place.xy, 1.5);\n"
                                                      "    result.xy += managedTextureSize(vo_Token);\n"
                                                      "    result += managedTexelFetch(vo_Token, ivec2(1, 2), 0);\n"
                                                      "    result += managedTextureCube(vo_Token, vo_Place);\n"
                                                      "    result += managedTextureCubeLod(vo_Token, vo_Place, 1.5);\n"
                                                      "    result.xy += managedTextureCubeSize(vo_Token);\n"
                                                      "    result.xy += vec2(managedTextureUDIMIndex(vo_Place.xy));\n"
                                                      "    result += textureGetDebug(gl_FragCoord.xy);\n")
                                               .arg(version150 ? 150 : 400) +
                                           queryLod + QStringLiteral("    o_Color = result;\n}\n"),
                                       &processor);
}

} // namespace

// ---- what compiles -------------------------------------------------------------------------------------------------

TEST(Array2DGLSL, TheFirstLineChoosesTheVersion)
{
    EXPECT_TRUE(embedded(QStringLiteral("src/Array2DTextureManager.glslc"))
                    .startsWith(QStringLiteral("#macro TEXTURE_MANAGER_ARRAY2D_GLSL_VERSION #version 150\n")));
}

TEST(Array2DGLSL, EveryVariantCompilesAndHasEveryFunction)
{
    for (const int slotCount : {1, 8, 32})
        for (const Array2DVariant& variant : array2DVariants(slotCount))
            for (const Defines& more : {Defines(), Defines({{"DEBUG", "1"}})})
            {
                const Verdict verdict = validate({QStringLiteral("-l")},
                                                 {{kFrag, body(variant, more)}, {kFrag, caller(variant.version150)}});
                EXPECT_TRUE(verdict.good()) << variant.name() << verdict.output.toStdString();
            }
}

TEST(Array2DGLSL, Version150HasExplicitAccessWhateverIsAskedFor)
{
    for (const Array2DVariant& direct : array2DVariants())
    {
        Array2DVariant stated = direct;
        stated.explicitAccess = true;
        stated.version150 = true;
        Array2DVariant silent = stated;
        silent.explicitAccess = false;
        const Verdict first = validate({QStringLiteral("-E")}, {{kFrag, body(stated)}});
        const Verdict second = validate({QStringLiteral("-E")}, {{kFrag, body(silent)}});
        ASSERT_TRUE(first.good() && second.good());
        const auto code = [](const Verdict& verdict)
        { return verdict.output.mid(verdict.output.indexOf(QStringLiteral("uniform sampler2DArray"))).simplified(); };
        EXPECT_EQ(code(first), code(second));
        EXPECT_FALSE(code(first).isEmpty());
    }
}

TEST(Array2DGLSL, WithoutACountThereAreEightSlots)
{
    const Array2DVariant variant{false, true, true, false, 0};
    const Verdict verdict = validate({QStringLiteral("-E")}, {{kFrag, body(variant)}});
    ASSERT_TRUE(verdict.good()) << verdict.output.toStdString();
    EXPECT_TRUE(verdict.output.contains(QRegularExpression(QStringLiteral("u_ManagedTextureSlots ?\\[ ?8 ?\\];"))));
    EXPECT_VALID({}, {kFrag, body(variant)});
}

TEST(Array2DGLSL, WithoutAStoreItDoesNotCompile)
{
    for (const bool version150 : {true, false})
        for (const bool explicitAccess : {true, false})
        {
            const Verdict verdict = validate({}, {{kFrag, body({false, false, explicitAccess, version150})}});
            ASSERT_TRUE(verdict.ran);
            EXPECT_FALSE(verdict.good());
            EXPECT_TRUE(verdict.output.contains(QStringLiteral("internalGetSlotLayerFromIndex")))
                << verdict.output.toStdString();
        }
}

TEST(Array2DGLSL, MoreThan32SlotsAreAnErrorOfExplicitAccess)
{
    for (const bool version150 : {true, false})
    {
        const Verdict verdict = validate({}, {{kFrag, body({false, true, true, version150, 33})}});
        EXPECT_FALSE(verdict.good());
        EXPECT_TRUE(verdict.output.contains(QStringLiteral("'#error' : Unsupported Texture Slot Count")))
            << verdict.output.toStdString();
    }
    EXPECT_VALID({}, {kFrag, body({false, true, false, false, 33})});
    EXPECT_VALID({}, {kFrag, body({false, true, true, false, 32})});
}

TEST(Array2DGLSL, ExplicitAccessIndexesItsSamplersByConstantsAlone)
{
    for (const int slotCount : {1, 8, 32})
    {
        const Verdict verdict =
            validate({QStringLiteral("-E")}, {{kFrag, body({false, true, true, false, slotCount})}});
        ASSERT_TRUE(verdict.good()) << verdict.output.toStdString();
        const QRegularExpression access(
            QStringLiteral("slot ?== ?(\\d+) ?\\) ?(?:return|layersY =)[^;]*u_ManagedTextureSlots ?\\[ ?(\\w+) ?\\]"));
        int accesses = 0;
        for (auto it = access.globalMatch(verdict.output); it.hasNext(); ++accesses)
        {
            const QRegularExpressionMatch match = it.next();
            EXPECT_EQ(match.captured(1).toInt(), accesses % slotCount);
            EXPECT_EQ(match.captured(2), match.captured(1));
        }
        EXPECT_EQ(accesses, 9 * slotCount) << "seven functions, and two chains of the debug view";
        EXPECT_EQ(verdict.output.count(QStringLiteral("u_ManagedTextureSlots")), accesses + 1) << "and no other access";
    }
}

TEST(Array2DGLSL, DirectAccessIndexesItsSamplersByTheSlot)
{
    const Verdict verdict = validate({QStringLiteral("-E")}, {{kFrag, body({false, true, false, false, 32})}});
    ASSERT_TRUE(verdict.good()) << verdict.output.toStdString();
    EXPECT_EQ(verdict.output.count(QRegularExpression(QStringLiteral("u_ManagedTextureSlots ?\\[ ?slot ?\\]"))), 9);
}

TEST(Array2DGLSL, DebugTestsTokensInEveryFunctionButTheTwoThatSampleCubeMaps)
{
    for (const bool debug : {false, true})
    {
        const Verdict verdict =
            validate({QStringLiteral("-E")},
                     {{kFrag, body({false, true, false, false, 2}, debug ? Defines({{"DEBUG", "1"}}) : Defines())}});
        ASSERT_TRUE(verdict.good()) << verdict.output.toStdString();
        for (const char* const tested :
             {"vec4 managedTexture", "vec4 managedTextureLod", "vec2 managedTextureQueryLod", "vec2 managedTextureSize",
              "vec4 managedTexelFetch", "vec2 managedTextureCubeSize"})
            EXPECT_EQ(functionText(verdict.output, tested).count(QStringLiteral("vrkIsValidToken")), debug ? 1 : 0)
                << tested;
        for (const char* const untested : {"vec4 managedTextureCube", "vec4 managedTextureCubeLod"})
            EXPECT_FALSE(functionText(verdict.output, untested).contains(QStringLiteral("vrkIsValidToken")))
                << untested;
    }
}

TEST(Array2DGLSL, LayersAreSampledATenthAboveTheirNumber)
{
    const Verdict verdict = validate({QStringLiteral("-E")}, {{kFrag, body({false, true, false, false, 2})}});
    ASSERT_TRUE(verdict.good()) << verdict.output.toStdString();
    EXPECT_EQ(verdict.output.count(QRegularExpression(QStringLiteral("0\\.1 ?\\+ ?float"))), 4)
        << "two of 2D, cubes, the debug view";
}

// ---- what the functions give ---------------------------------------------------------------------------------------

namespace
{

/// Texture 1 is 8 by 4 in slot 0 with two levels, texture 2 is 8 by 8 in slot 1, texture 3 like 1 in layer 1, texture 4
/// a cube map of 4 by 4 in slot 2, texture 5 an array of two layers in slot 3. The token of white has no place.
class Array2DGLSLGL : public Array2DGLSLFixture
{
protected:
    void place()
    {
        first = tokenOf(texture(1, 8, 4, GL_TEXTURE_2D, 1, 2));
        second = tokenOf(texture(2, 8, 8));
        third = tokenOf(texture(3, 8, 4, GL_TEXTURE_2D, 1, 2));
        cube = tokenOf(texture(4, 4, 4, GL_TEXTURE_CUBE_MAP));
        array = tokenOf(texture(5, 16, 4, GL_TEXTURE_2D_ARRAY, 2));
        Texture* const patch = texture(6, 2, 2);
        tokenOf(patch);
        udim = manager->createUDIMToken();
        manager->addUDIMPatch(udim, {0, 0}, patch);
        announce({first, second, third, cube, array, udim});
    }

    const TextureToken white{0};
    TextureToken first, second, third, cube, array, udim;
};

constexpr Texel kNoSize = {0.0f, 0.0f, 3.0f, 5.0f};

} // namespace

TEST_F(Array2DGLSLGL, TexturesAreSampledAtTheirTexels)
{
    forEachVariant(
        [&]
        {
            for (const char* const call :
                 {"managedTexture(vo_Token, vo_Place.xy)", "managedTextureLod(vo_Token, vo_Place.xy, 0.0)",
                  "managedTexelFetch(vo_Token, ivec2(floor(vo_Place.zw)), 0)"})
            {
                place();
                ASSERT_TRUE(build(variant, QLatin1String(call)));
                std::vector<Lookup> lookups;
                std::vector<Texel> expected;
                const struct
                {
                    TextureToken token;
                    int number;
                    int width;
                    int height;
                } rows[] = {{first, 1, 8, 4}, {second, 2, 8, 8}, {third, 3, 8, 4}, {array, 5, 16, 4}};
                for (const auto& row : rows)
                    for (int y = 0; y < row.height; ++y)
                        for (int x = 0; x < row.width; ++x)
                        {
                            const float s = float(x) + 0.5f;
                            const float t = float(y) + 0.5f;
                            lookups.push_back({row.token, {s / float(row.width), t / float(row.height), s, t}});
                            expected.push_back(knownTexel(row.number, 0, x, y));
                        }
                const std::vector<Texel> actual = lookUp(lookups);
                for (std::size_t i = 0; i < actual.size(); ++i)
                    EXPECT_TRUE(texelsAgree(actual[i], expected[i])) << call << " " << i;
                restart();
            }
        });
}

TEST_F(Array2DGLSLGL, TheLevelIsTaken)
{
    forEachVariant(
        [&]
        {
            for (const char* const call : {"managedTextureLod(vo_Token, vo_Place.xy, 1.0)",
                                           "managedTexelFetch(vo_Token, ivec2(floor(vo_Place.zw)), 1)"})
            {
                place();
                ASSERT_TRUE(build(variant, QLatin1String(call)));
                const auto actual =
                    lookUp({{first, {0.1f, 0.1f, 0, 0}}, {first, {0.9f, 0.6f, 3, 1}}, {third, {0.6f, 0.1f, 2, 0}}});
                EXPECT_TRUE(texelsAgree(actual[0], knownTexel(1, 8, 0, 0))) << call;
                EXPECT_TRUE(texelsAgree(actual[1], knownTexel(1, 8, 3, 1))) << call;
                EXPECT_TRUE(texelsAgree(actual[2], knownTexel(3, 8, 2, 0))) << call;
                restart();
            }
        });
}

TEST_F(Array2DGLSLGL, TheHighWordOfATokenIsNotLookedAt)
{
    forEachVariant(
        [&]
        {
            place();
            ASSERT_TRUE(build(variant, QStringLiteral("managedTextureLod(vo_Token, vo_Place.xy, 0.0)")));
            EXPECT_TRUE(
                texelsAgree(lookUpOne(TextureToken(second.token | (quint64(77) << 32))), knownTexel(2, 0, 0, 0)));
        });
}

TEST_F(Array2DGLSLGL, SizesAreThoseOfTheBaseLevelOfTheSlot)
{
    forEachVariant(
        [&]
        {
            for (const char* const call :
                 {"vec4(managedTextureSize(vo_Token), 3.0, 5.0)", "vec4(managedTextureCubeSize(vo_Token), 3.0, 5.0)"})
            {
                place();
                ASSERT_TRUE(build(variant, QLatin1String(call)));
                EXPECT_TRUE(texelsAgree(lookUpOne(first), {8, 4, 3, 5})) << call;
                EXPECT_TRUE(texelsAgree(lookUpOne(second), {8, 8, 3, 5})) << call;
                EXPECT_TRUE(texelsAgree(lookUpOne(cube), {4, 4, 3, 5})) << call;
                EXPECT_TRUE(texelsAgree(lookUpOne(array), {16, 4, 3, 5})) << call;
                EXPECT_TRUE(texelsAgree(lookUpOne(white), kNoSize)) << call << ": no place";
                EXPECT_TRUE(texelsAgree(lookUpOne(udim), kNoSize)) << call << ": a set of patches";
                restart();
            }
        });
}

TEST_F(Array2DGLSLGL, ATokenWithoutAPlaceIsInvalid)
{
    forEachVariant(
        [&]
        {
            for (const char* const call :
                 {"managedTexture(vo_Token, vo_Place.xy)", "managedTextureLod(vo_Token, vo_Place.xy, 0.0)",
                  "managedTexelFetch(vo_Token, ivec2(0), 0)", "managedTextureCube(vo_Token, vec3(1.0, 0.0, 0.0))",
                  "managedTextureCubeLod(vo_Token, vec3(1.0, 0.0, 0.0), 0.0)"})
            {
                place();
                ASSERT_TRUE(build(variant, QLatin1String(call)));
                EXPECT_TRUE(texelsAgree(lookUpOne(white), kInvalidTexel)) << call;
                restart();
            }
        });
}

TEST_F(Array2DGLSLGL, ASetOfPatchesIsInvalidToFetchesAndCubes)
{
    forEachVariant(
        [&]
        {
            for (const char* const call :
                 {"managedTexelFetch(vo_Token, ivec2(0), 0)", "managedTextureCube(vo_Token, vec3(1.0, 0.0, 0.0))",
                  "managedTextureCubeLod(vo_Token, vec3(1.0, 0.0, 0.0), 0.0)"})
            {
                place();
                ASSERT_TRUE(build(variant, QLatin1String(call)));
                EXPECT_TRUE(texelsAgree(lookUpOne(udim), kInvalidTexel)) << call;
                restart();
            }
        });
}

TEST_F(Array2DGLSLGL, ASlotBehindTheLastOfTheProgramIsInvalid)
{
    forEachVariant(
        [&]
        {
            for (const char* const call :
                 {"managedTexture(vo_Token, vo_Place.xy)", "managedTextureLod(vo_Token, vo_Place.xy, 0.0)",
                  "managedTexelFetch(vo_Token, ivec2(0), 0)", "managedTextureCube(vo_Token, vec3(0.1, 0.2, 1.0))",
                  "managedTextureCubeLod(vo_Token, vec3(0.1, 0.2, 1.0), 0.0)",
                  "vec4(managedTextureSize(vo_Token), 3.0, 5.0)", "vec4(managedTextureCubeSize(vo_Token), 3.0, 5.0)"})
            {
                place();
                Array2DVariant one = variant;
                one.slotCount = 1;
                ASSERT_TRUE(build(one, QLatin1String(call)));
                manager->setMaxSlots(8);
                const Texel invalid = QLatin1String(call).contains(QLatin1String("Size")) ? kNoSize : kInvalidTexel;
                EXPECT_TRUE(texelsAgree(lookUpOne(second), invalid)) << call;
                EXPECT_TRUE(texelsAgree(lookUpOne(cube), invalid)) << call;
                EXPECT_FALSE(texelsAgree(lookUpOne(first), invalid)) << call << ": slot 0 there is";
                restart();
            }
        });
}

TEST_F(Array2DGLSLGL, TokensAreValidBelowTheEndOfTheStore)
{
    forEachVariant(
        [&]
        {
            place();
            ASSERT_TRUE(build(variant, QStringLiteral("vec4(vrkIsValidToken(vo_Token) ? 1.0 : 0.0)")));
            // White, five textures, the patch, the set and its block of one.
            const quint64 end = variant.texture ? 9 : 64;
            EXPECT_EQ(lookUpOne(white)[0], 1.0f);
            EXPECT_EQ(lookUpOne(TextureToken(end - 1))[0], 1.0f);
            EXPECT_EQ(lookUpOne(TextureToken(end))[0], 0.0f);
            EXPECT_EQ(lookUpOne(INVALID_TOKEN)[0], 0.0f);
        });
}

TEST_F(Array2DGLSLGL, WithDebugATokenBehindTheStoreIsInvalid)
{
    forEachVariant(
        [&]
        {
            const TextureToken behind(variant.texture ? 9 : 64);
            for (const char* const call :
                 {"managedTexture(vo_Token, vo_Place.xy)", "managedTextureLod(vo_Token, vo_Place.xy, 0.0)",
                  "managedTexelFetch(vo_Token, ivec2(0), 0)", "vec4(managedTextureSize(vo_Token), 3.0, 5.0)",
                  "vec4(managedTextureCubeSize(vo_Token), 3.0, 5.0)"})
            {
                place();
                ASSERT_TRUE(build(variant, QLatin1String(call), {{"DEBUG", "1"}}));
                const Texel invalid = QLatin1String(call).contains(QLatin1String("Size")) ? kNoSize : kInvalidTexel;
                EXPECT_TRUE(texelsAgree(lookUpOne(behind), invalid)) << call;
                EXPECT_TRUE(texelsAgree(lookUpOne(INVALID_TOKEN), invalid)) << call;
                EXPECT_FALSE(texelsAgree(lookUpOne(first), invalid)) << call;
                restart();
            }
        });
}

TEST_F(Array2DGLSLGL, BehindTheUniformArrayAloneNothingIsRead)
{
    forEachVariant(
        [&]
        {
            if (variant.texture)
                return; // the table is whole there
            for (const char* const call :
                 {"managedTexture(vo_Token, vo_Place.xy)", "managedTextureLod(vo_Token, vo_Place.xy, 0.0)",
                  "managedTexelFetch(vo_Token, ivec2(0), 0)",
                  "managedTextureCubeLod(vo_Token, vec3(0.1, 0.2, 1.0), 0.0)",
                  "vec4(managedTextureSize(vo_Token), 3.0, 5.0)"})
            {
                place();
                ASSERT_TRUE(build(variant, QLatin1String(call)));
                const Texel invalid = QLatin1String(call).contains(QLatin1String("Size")) ? kNoSize : kInvalidTexel;
                for (const TextureToken& token : {TextureToken(64), TextureToken(0x7FFFFFFF), INVALID_TOKEN})
                    EXPECT_TRUE(texelsAgree(lookUpOne(token), invalid)) << call << " " << token.token;
                restart();
            }
        });
}

TEST_F(Array2DGLSLGL, ManyLayersOfOneSlotAreToldApart)
{
    forEachVariant(
        [&]
        {
            constexpr int kLayers = 40;
            QList<TextureToken> list;
            for (int layer = 0; layer < kLayers; ++layer)
                list.append(manager->tokenForColor(QColor(5 * layer, 255 - layer, 7)));
            announce(list);
            ASSERT_TRUE(build(variant, QStringLiteral("managedTextureLod(vo_Token, vo_Place.xy, 0.0)")));
            for (int layer = 0; layer < kLayers; ++layer)
                EXPECT_TRUE(texelsAgree(lookUpOne(list[layer], {0.5f, 0.5f, 0, 0}),
                                        {float(5 * layer) / 255.0f, float(255 - layer) / 255.0f, 7.0f / 255.0f, 1.0f}))
                    << layer;
        });
}

TEST_F(Array2DGLSLGL, TheUniformArrayIsAFrontForTheFirst64Tokens)
{
    forEachVariant(
        [&]
        {
            if (!variant.uniforms || !variant.texture)
                return; // there is one store
            place();
            QList<TextureToken> list;
            while (list.size() < 70)
                list.append(manager->tokenForColor(QColor(int(list.size()), 1, 2)));
            announce(list);
            ASSERT_TRUE(build(variant, QStringLiteral("managedTextureLod(vo_Token, vo_Place.xy, 0.0)")));
            const auto falsify = [this]
            {
                // What the array says of every token: slot 1, layer 0.
                std::vector<GLint> words;
                for (int token = 0; token < 64; ++token)
                    words.insert(words.end(), {1, 0, 0, 0, 0, 0, 0, 0});
                glUniform4iv(
                    program->getUniformLocation(QStringLiteral("u_TextureTokenManagedTextureSlotMapUniforms[0]")), 128,
                    words.data());
            };
            const auto honest = lookUp({{TextureToken(63)}, {TextureToken(64)}, {TextureToken(65)}});
            const auto falsified = lookUp({{TextureToken(63)}, {TextureToken(64)}, {TextureToken(65)}}, falsify);
            for (int i = 0; i < 3; ++i)
            {
                const qsizetype color = list.indexOf(TextureToken(quint64(63 + i)));
                ASSERT_GE(color, 0);
                const Texel texel = {float(color) / 255.0f, 1.0f / 255.0f, 2.0f / 255.0f, 1.0f};
                EXPECT_TRUE(texelsAgree(honest[std::size_t(i)], texel)) << 63 + i;
                EXPECT_TRUE(texelsAgree(falsified[std::size_t(i)], i == 0 ? knownTexel(2, 0, 0, 0) : texel))
                    << 63 + i << ": from 64 on out of the texture";
            }
        });
}

// ---- on the driver, aside from the variants ------------------------------------------------------------------------

namespace
{

class Array2DGLSLDriverGL : public Array2DGLSLFixture
{
};

} // namespace

TEST_F(Array2DGLSLDriverGL, OneSlotAndManySlotsLinkAndSample)
{
    for (const int slotCount : {1, 16, 31})
        for (const Array2DVariant& each : array2DVariants(slotCount))
        {
            GLint units = 0;
            glGetIntegerv(GL_MAX_TEXTURE_IMAGE_UNITS, &units);
            ASSERT_GT(units, slotCount);
            manager->setMaxSlots(slotCount);
            QList<TextureToken> list;
            for (int slot = 0; slot < slotCount; ++slot)
                list.append(tokenOf(texture(1 + slot % 15, slot + 1, 1)));
            announce(list);
            ASSERT_TRUE(build(each, QStringLiteral("managedTextureLod(vo_Token, vo_Place.xy, 0.0)"))) << each.name();
            for (int slot = 0; slot < slotCount; ++slot)
            {
                const float last = (float(slot) + 0.5f) / float(slot + 1);
                EXPECT_TRUE(
                    texelsAgree(lookUpOne(list[slot], {last, 0.5f, 0, 0}), knownTexel(1 + slot % 15, 0, slot, 0)))
                    << each.name() << " " << slot;
            }
            restart();
        }
}

TEST_F(Array2DGLSLDriverGL, WithoutAStoreTheProgramDoesNotLink)
{
    const LogCapture log;
    EXPECT_FALSE(build({false, false, false, false}, QStringLiteral("managedTextureLod(vo_Token, vo_Place.xy, 0.0)")));
    const QString texts = log.texts().join(u'\n');
    EXPECT_TRUE(texts.contains(QStringLiteral("internalGetSlotLayerFromIndex"))) << texts.toStdString();
}

TEST_F(Array2DGLSLDriverGL, MoreThan32SlotsOfExplicitAccessDoNotLink)
{
    const LogCapture log;
    EXPECT_FALSE(
        build({false, true, true, false, 33}, QStringLiteral("managedTextureLod(vo_Token, vo_Place.xy, 0.0)")));
    const QString texts = log.texts().join(u'\n');
    EXPECT_TRUE(texts.contains(QStringLiteral("Unsupported Texture Slot Count"))) << texts.toStdString();
}

} // namespace Harrow::Vrk::Test
