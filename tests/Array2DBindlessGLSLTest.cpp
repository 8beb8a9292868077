// SPDX-License-Identifier: MIT
//
// The GLSL of Array2DTextureManager with bindless handles as text, judged by glslangValidator. What it draws is told by
// the suite for a driver with bindless textures.
#include "Array2DGLSLTestTools.h"

namespace Harrow::Vrk::Test
{
namespace
{

const QString kFrag = QStringLiteral("frag");

QString file()
{
    return embedded(QStringLiteral("src/Array2DTextureManagerBindless.glslc"));
}

/// The expanded file with the defines of `setup`, and `more`.
QString body(bool uniforms, bool texture, int slotCount = 8, const Defines& more = {})
{
    GLSLMacroProcessor processor;
    const auto define = [&processor](const char* name, const QString& value = QStringLiteral("1"))
    { processor.addDefine(QLatin1String(name), value); };
    define("TEXTURE_MANAGER_SUPPORTS_UDIMS");
    define("TEXTURE_MANAGER_ARRAY2D");
    define("TEXTURE_MANAGER_ARRAY2D_NUM_UVEC4S_PER_TOKEN", QStringLiteral("2"));
    define("TEXTURE_MANAGER_ARRAY2D_UNIFORMS_SIZE", QStringLiteral("128"));
    define("TEXTURE_MANAGER_ARRAY2D_SUPPORTS_TEXTURE_QUERY_LOD");
    if (slotCount > 0)
        define("TEXTURE_MANAGER_SLOT_COUNT", QString::number(slotCount));
    if (uniforms)
        define("TEXTURE_MANAGER_ARRAY2D_SLOT_MAP_USE_UNIFORMS");
    if (texture)
        define("TEXTURE_MANAGER_ARRAY2D_SLOT_MAP_USE_TEXTURE");
    for (const auto& [name, value] : more)
        define(name, QLatin1String(value));
    return GLSLMacroProcessor::process(file(), &processor);
}

QString preprocessed(const QString& text)
{
    const Verdict verdict = validate({QStringLiteral("-E")}, {{kFrag, text}});
    EXPECT_TRUE(verdict.good()) << verdict.output.toStdString();
    return verdict.output;
}

const Defines kDebug = {{"DEBUG", "1"}};

} // namespace

TEST(Array2DBindlessGLSL, TheFileStartsWithItsVersionAndExtension)
{
    EXPECT_TRUE(file().startsWith(QStringLiteral("#version 400\n#extension GL_ARB_bindless_texture : require\n")));
}

TEST(Array2DBindlessGLSL, EveryStoreCompilesAndHasEveryFunction)
{
    GLSLMacroProcessor processor;
    processor.addDefine(QStringLiteral("TEXTURE_MANAGER_SUPPORTS_UDIMS"), QStringLiteral("1"));
    processor.addDefine(QStringLiteral("TEXTURE_MANAGER_ARRAY2D_SUPPORTS_TEXTURE_QUERY_LOD"), QStringLiteral("1"));
    const QString caller = GLSLMacroProcessor::process(
        QStringLiteral("#version 400\n#include \"TextureManager.glslh\"\n"
                       "out vec4 o_Color;\nflat in uvec2 vo_Token;\nin vec3 vo_Place;\n"
                       "void main()\n{\n    vec4 result = vec4(0.0);\n"
                       "    if (vrkIsValidToken(vo_Token))\n"
                       "        result += managedTexture(vo_Token, vo_Place.xy);\n"
                       "    result += managedTextureLod(vo_Token, vo_Place.xy, 1.5);\n"
                       "    result.xy += managedTextureSize(vo_Token);\n"
                       "    result.xy += managedTextureQueryLod(vo_Token, vo_Place.xy);\n"
                       "    result += managedTexelFetch(vo_Token, ivec2(1, 2), 0);\n"
                       "    result += managedTextureCube(vo_Token, vo_Place);\n"
                       "    result += managedTextureCubeLod(vo_Token, vo_Place, 1.5);\n"
                       "    result.xy += managedTextureCubeSize(vo_Token);\n"
                       "    result.xy += vec2(managedTextureUDIMIndex(vo_Place.xy));\n"
                       "    result += textureGetDebug(gl_FragCoord.xy);\n    o_Color = result;\n}\n"),
        &processor);
    for (const auto& [uniforms, texture] : {std::pair(true, false), {false, true}, {true, true}})
        for (const int slotCount : {1, 8, 32, 33, 200})
            for (const Defines& more : {Defines(), kDebug})
            {
                const Verdict verdict = validate({QStringLiteral("-l")},
                                                 {{kFrag, body(uniforms, texture, slotCount, more)}, {kFrag, caller}});
                EXPECT_TRUE(verdict.good()) << uniforms << texture << slotCount << verdict.output.toStdString();
            }
}

TEST(Array2DBindlessGLSL, WithoutAStoreItDoesNotCompile)
{
    const Verdict verdict = validate({}, {{kFrag, body(false, false)}});
    ASSERT_TRUE(verdict.ran);
    EXPECT_FALSE(verdict.good());
    EXPECT_TRUE(verdict.output.contains(QStringLiteral("internalGetSlotLayerHandleFromIndex")))
        << verdict.output.toStdString();
}

TEST(Array2DBindlessGLSL, HandlesAreTwoWordsAndOfThemTheNullHandleNone)
{
    const QString check = QStringLiteral("void check()\n{\n    VrkBindlessTextureHandle handle = uvec2(1u, 2u);\n"
                                         "    const uvec2 none = VRK_BINDLESS_TEXTURE_NULL;\n"
                                         "    float isNone[none == uvec2(%1u, 0u) ? 1 : -1];\n}\n");
    EXPECT_VALID({}, {kFrag, body(false, true) + check.arg(0)});
    EXPECT_FALSE(validate({}, {{kFrag, body(false, true) + check.arg(1)}}).good()) << "the check above checks nothing";
}

TEST(Array2DBindlessGLSL, HandlesTakeThePlaceOfTheSamplers)
{
    const QString text = preprocessed(body(false, true, 5));
    EXPECT_TRUE(
        text.contains(QRegularExpression(QStringLiteral("uniform uvec2 u_ManagedTextureHandles ?\\[ ?5 ?\\];"))));
    EXPECT_FALSE(text.contains(QStringLiteral("u_ManagedTextureSlots")));
    EXPECT_FALSE(text.contains(QStringLiteral("uniform sampler2DArray")));
    EXPECT_TRUE(preprocessed(body(false, true, 0))
                    .contains(QRegularExpression(QStringLiteral("u_ManagedTextureHandles ?\\[ ?8 ?\\];"))));
}

TEST(Array2DBindlessGLSL, TheFunctionsOf2DTakeTheHandleOfTheRecordAndTestNoSlot)
{
    const QString text = preprocessed(body(true, true));
    for (const char* const name : {"vec4 managedTexture", "vec4 managedTextureLod", "vec2 managedTextureQueryLod",
                                   "vec2 managedTextureSize", "vec4 managedTexelFetch"})
    {
        const QString function = functionText(text, name);
        EXPECT_TRUE(function.contains(QRegularExpression(QStringLiteral("\\. ?zw\\b")))) << name;
        EXPECT_TRUE(function.contains(QStringLiteral("== uvec2"))) << name << ": null handles are not sampled";
        EXPECT_FALSE(function.contains(QStringLiteral("u_ManagedTextureHandles"))) << name;
        EXPECT_FALSE(function.contains(QStringLiteral("vrkIsSlot"))) << name;
    }
}

TEST(Array2DBindlessGLSL, TheFunctionsOfCubesAndTheDebugViewTakeTheHandleOfTheSlot)
{
    const QString text = preprocessed(body(true, true));
    for (const char* const name : {"vec4 managedTextureCubeLod", "vec2 managedTextureCubeSize", "vec4 textureGetDebug"})
    {
        const QString function = functionText(text, name);
        EXPECT_TRUE(function.contains(QRegularExpression(QStringLiteral("u_ManagedTextureHandles ?\\[ ?slot ?\\]"))))
            << name;
        EXPECT_TRUE(function.contains(QStringLiteral("vrkIsSlot")) || function.contains(QStringLiteral("clamp")))
            << name;
        EXPECT_TRUE(function.contains(QStringLiteral("== uvec2"))) << name << ": null handles are not sampled";
    }
}

TEST(Array2DBindlessGLSL, DebugTestsTokensInEveryFunctionButTheOneThatCallsAnother)
{
    for (const bool debug : {false, true})
    {
        const QString text = preprocessed(body(false, true, 8, debug ? kDebug : Defines()));
        for (const char* const tested :
             {"vec4 managedTexture", "vec4 managedTextureLod", "vec2 managedTextureQueryLod", "vec2 managedTextureSize",
              "vec4 managedTexelFetch", "vec4 managedTextureCubeLod", "vec2 managedTextureCubeSize"})
            EXPECT_EQ(functionText(text, tested).count(QStringLiteral("vrkIsValidToken")), debug ? 1 : 0) << tested;
        EXPECT_FALSE(functionText(text, "vec4 managedTextureCube").contains(QStringLiteral("vrkIsValidToken")));
    }
}

TEST(Array2DBindlessGLSL, NothingIsReadBehindTheTable)
{
    const char* const fetch = "ivec4 vrkFetchSlotLayerHandle";
    const char* const read = "ivec4 internalGetSlotLayerHandleFromIndex";
    EXPECT_TRUE(functionText(preprocessed(body(true, false)), read).contains(QStringLiteral("index >= uint")));
    EXPECT_TRUE(functionText(preprocessed(body(false, true)), fetch).contains(QStringLiteral("index >= uint")));
    EXPECT_TRUE(functionText(preprocessed(body(true, true)), fetch).contains(QStringLiteral("index >= uint")));
}

TEST(Array2DBindlessGLSL, TheDeclarationsAndCubesAreThoseOfTheFileWithSamplers)
{
    const auto part = [](const QString& text, const char* from, const char* to)
    {
        const qsizetype start = text.indexOf(QLatin1String(from));
        EXPECT_GE(start, 0) << from;
        return text.mid(start, text.indexOf(QLatin1String(to), start) - start);
    };
    const QString samplers = embedded(QStringLiteral("src/Array2DTextureManager.glslc"));
    for (const auto& [from, to] : {std::pair("vec3 vrkCubeToArrayCoord", "// ---- the interface"),
                                   {"bool vrkIsValidToken", "// ---- sets"},
                                   {"ivec2 managedTextureUDIMIndex", "bool vrkTokenToSlotLayer"}})
        EXPECT_EQ(part(file(), from, to), part(samplers, from, to)) << from;
}

} // namespace Harrow::Vrk::Test
