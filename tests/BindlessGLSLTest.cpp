// SPDX-License-Identifier: MIT
//
// The GLSL of BindlessTextureManager as text, judged by glslangValidator. What it draws is told by the suite for a
// driver with bindless textures.

#include "EmbeddedGLSLTestTools.h"

#include "GLSLMacroProcessor.h"

#include <QRegularExpression>

#include <gtest/gtest.h>

namespace Harrow::Vrk::Test
{
namespace
{

using Defines = QList<std::pair<const char*, const char*>>;

const QString kFrag = QStringLiteral("frag");
const Defines kKind = {{"TEXTURE_MANAGER_BINDLESS", "1"}};
const Defines kSlots = {{"TEXTURE_MANAGER_SLOT_COUNT", "8"}};
const Defines kArb = kKind + kSlots + Defines({{"TEXTURE_MANAGER_BINDLESS_ARB", "1"}});
const Defines kNv = kKind + kSlots + Defines({{"TEXTURE_MANAGER_BINDLESS_NV", "1"}});
const Defines kDebug = {{"DEBUG", "1"}};

QString file()
{
    return embedded(QStringLiteral("src/BindlessTextureManager.glslc"));
}

QString expanded(const QString& text, const Defines& defines)
{
    GLSLMacroProcessor processor;
    for (const auto& [name, value] : defines)
        processor.addDefine(QLatin1String(name), QLatin1String(value));
    return GLSLMacroProcessor::process(text, &processor);
}

QString body(const Defines& defines)
{
    return expanded(file(), defines);
}

/// The body for NV in words that glslangValidator knows: it has neither of that extension's ways to make a sampler of
/// 64 bits, so those bits go into two words again.
QString nvInOtherWords(const Defines& defines)
{
    QString text = body(defines);
    text.replace(QStringLiteral("GL_NV_gpu_shader5"), QStringLiteral("GL_ARB_gpu_shader_int64"));
    text.replace(QStringLiteral("GL_NV_bindless_texture"), QStringLiteral("GL_ARB_bindless_texture"));
    const QString handle = QStringLiteral("vrkTokenToHandle(token)");
    EXPECT_EQ(text.count(handle), 6);
    return text.replace(handle, QStringLiteral("uvec2(uint(vrkTokenToHandle(token)), "
                                               "uint(vrkTokenToHandle(token) >> 32))"));
}

/// A fragment stage of another version that calls what the header declares.
QString caller()
{
    return expanded(QStringLiteral("#version 150\n#include \"TextureManager.glslh\"\n"
                                   "out vec4 o_Color;\nflat in uvec2 vo_Token;\nin vec3 vo_Place;\n"
                                   "void main()\n{\n    vec4 result = vec4(0.0);\n"
                                   "    if (vrkIsValidToken(vo_Token))\n"
                                   "        result += managedTexture(vo_Token, vo_Place.xy);\n"
                                   "    result += managedTextureLod(vo_Token, vo_Place.xy, 1.5);\n"
                                   "    result.xy += managedTextureSize(vo_Token);\n"
                                   "    result += managedTextureCube(vo_Token, vo_Place);\n"
                                   "    result += managedTextureCubeLod(vo_Token, vo_Place, 1.5);\n"
                                   "    result.xy += managedTextureCubeSize(vo_Token);\n"
                                   "    result += textureGetDebug(gl_FragCoord.xy);\n    o_Color = result;\n}\n"),
                    {});
}

Verdict linked(const QString& managerBody)
{
    return validate({QStringLiteral("-l")}, {{kFrag, managerBody}, {kFrag, caller()}});
}

/// The body behind the preprocessor of glslangValidator, from its first function on.
QString functions(const Defines& defines)
{
    const Verdict verdict = validate({QStringLiteral("-E")}, {{kFrag, body(defines)}});
    EXPECT_TRUE(verdict.good()) << verdict.output.toStdString();
    return verdict.output.mid(verdict.output.indexOf(QStringLiteral("u_TextureTokenManagedTextureSlotMap;")));
}

/// Macros of the file, behind a main that uses them on `token`.
QString checking(const QString& condition)
{
    return body(kArb) +
           QStringLiteral("void main()\n{\n    const uvec2 bindless = uvec2(7u, 9u);\n"
                          "    const uvec2 null = uvec2(0u, 0u);\n"
                          "    const uvec2 bound_ = uvec2(7u, 0xFFFFFFFFu);\n"
                          "    float check[") +
           condition + QStringLiteral(" ? 1 : -1];\n}\n");
}

} // namespace

TEST(BindlessGLSL, IsOfVersion400)
{
    EXPECT_TRUE(file().startsWith(QStringLiteral("#version 400\n")));
}

TEST(BindlessGLSL, TheBodyForARBCompilesAndLinksWithAndWithoutDebug)
{
    for (const Defines& defines : {kArb, kArb + kDebug})
    {
        const Verdict verdict = linked(body(defines));
        EXPECT_TRUE(verdict.good()) << verdict.output.toStdString();
    }
}

TEST(BindlessGLSL, TheBodyForNVIsSoundWithAndWithoutDebug)
{
    for (const Defines& defines : {kNv, kNv + kDebug})
    {
        const Verdict verdict = linked(nvInOtherWords(defines));
        EXPECT_TRUE(verdict.good()) << verdict.output.toStdString();
    }
}

TEST(BindlessGLSL, EachExtensionIsRequiredByItsDefine)
{
    const auto extensions = [](const Defines& defines)
    {
        QStringList required;
        bool active = true;
        const QStringList lines = body(defines).split(QLatin1Char('\n'));
        for (const QString& line : lines)
        {
            if (line.startsWith(QStringLiteral("#ifdef ")))
            {
                active = false;
                for (const auto& define : defines)
                    active = active || line.mid(7) == QLatin1String(define.first);
            }
            if (line.startsWith(QStringLiteral("#endif")))
                active = true;
            if (active && line.startsWith(QStringLiteral("#extension ")))
                required.append(line.mid(11));
        }
        return required;
    };
    EXPECT_EQ(extensions(kArb), QStringList({"GL_ARB_bindless_texture : require"}));
    EXPECT_EQ(extensions(kNv), QStringList({"GL_NV_gpu_shader5 : require", "GL_NV_bindless_texture : require"}));
    EXPECT_EQ(extensions(kKind + kSlots), QStringList());
}

TEST(BindlessGLSL, StopsWithoutItsDefines)
{
    for (const auto& [defines, words] : {std::pair(kSlots, "Missing TEXTURE_MANAGER_BINDLESS define"),
                                         std::pair(kKind, "Missing TEXTURE_MANAGER_SLOT_COUNT define"),
                                         std::pair(kKind + kSlots, "No bindless support")})
    {
        const Verdict verdict = validate({}, {{kFrag, body(defines)}});
        EXPECT_TRUE(verdict.ran);
        EXPECT_FALSE(verdict.good()) << words;
        EXPECT_TRUE(verdict.output.contains(QLatin1String(words))) << verdict.output.toStdString();
    }
    EXPECT_TRUE(file().contains(QStringLiteral("#error Missing TEXTURE_MANAGER_BINDLESS define.\n")));
    EXPECT_TRUE(file().contains(QStringLiteral("#error Missing TEXTURE_MANAGER_SLOT_COUNT define.\n")));
    EXPECT_TRUE(file().contains(QStringLiteral("#error No bindless support!\n")));
}

TEST(BindlessGLSL, ItsUniformsAreSlotsAndAnUnsignedMap)
{
    const QString text = body(kArb);
    EXPECT_TRUE(
        text.contains(QStringLiteral("\nuniform sampler2D u_ManagedTextureSlots[TEXTURE_MANAGER_SLOT_COUNT];\n")));
    EXPECT_TRUE(text.contains(QStringLiteral("\nuniform usampler2D u_TextureTokenManagedTextureSlotMap;\n")));
}

TEST(BindlessGLSL, TheMacrosTellTheKindsOfTokenApart)
{
    // Judged by the compiler: an array cannot have a negative size.
    for (const char* const condition :
         {"vrkIsBindlessToken(bindless)", "vrkIsBindlessToken(null)", "!vrkIsBindlessToken(bound_)",
          "vrkIsValidBindlessToken(bindless)", "!vrkIsValidBindlessToken(null)", "vrkTokenToSlotIndex(bound_) == 7u",
          "vrkTokenToHandle(bindless) == bindless"})
    {
        EXPECT_VALID({}, {kFrag, checking(QLatin1String(condition))});
        EXPECT_FALSE(validate({}, {{kFrag, checking(QStringLiteral("!(%1)").arg(QLatin1String(condition)))}}).good())
            << "the check above checks nothing";
    }
}

TEST(BindlessGLSL, TheNVHandleHasTheLowWordFirst)
{
    EXPECT_TRUE(
        file().contains(QStringLiteral("#define vrkTokenToHandle(tok) (uint64_t(tok.x) | (uint64_t(tok.y) << 32))\n")));
}

TEST(BindlessGLSL, BindlessTokensAreSampledByTheirHandles)
{
    const QString text = functions(kArb);
    EXPECT_EQ(text.count(QRegularExpression(QStringLiteral("sampler2D ?\\( ?token ?\\)"))), 3);
    EXPECT_EQ(text.count(QRegularExpression(QStringLiteral("samplerCube ?\\( ?token ?\\)"))), 3);
    EXPECT_EQ(text.count(QRegularExpression(QStringLiteral("u_ManagedTextureSlots ?\\[ ?slot ?\\]"))), 3)
        << "cube maps have no slots";
}

TEST(BindlessGLSL, ValidityIsTestedUnderDebugAlone)
{
    const QRegularExpression test2D(QStringLiteral("if ?\\( ?! ?vrkIsValidToken ?\\( ?token ?\\) ?\\)"));
    const QRegularExpression testCube(QStringLiteral("if ?\\( ?! ?vrkIsValidCubeToken ?\\( ?token ?\\) ?\\)"));
    EXPECT_EQ(functions(kArb).count(test2D), 0);
    EXPECT_EQ(functions(kArb).count(testCube), 0);
    EXPECT_EQ(functions(kArb + kDebug).count(test2D), 3);
    EXPECT_EQ(functions(kArb + kDebug).count(testCube), 3);
}

TEST(BindlessGLSL, HasNoTexelFetchAndNoUDIMs)
{
    EXPECT_FALSE(file().contains(QStringLiteral("managedTexelFetch(")));
    EXPECT_FALSE(body(kArb + Defines({{"TEXTURE_MANAGER_SUPPORTS_UDIMS", "1"}}))
                     .contains(QStringLiteral("managedTextureUDIMIndex(in vec2 texCoord)\n")));
}

} // namespace Harrow::Vrk::Test
