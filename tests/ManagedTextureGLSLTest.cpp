// SPDX-License-Identifier: MIT
//
// The GLSL interface of the texture managers: the header, and the two bodies whose slots are samplers. Judged by
// glslangValidator and by running them; what a manager makes of its program is told by its own tests.

#include "EmbeddedGLSLTestTools.h"
#include "support/GLTest.h"
#include "support/LogCapture.h"
#include "support/TransformFeedback.h"

#include "AutoBinder.h"
#include "GLFunctions.h"
#include "GLSLMacroProcessor.h"
#include "ShaderProgram.h"
#include "Texture.h"

#include <QRegularExpression>

#include <gtest/gtest.h>

#include <memory>
#include <vector>

namespace Harrow::Vrk::Test
{
namespace
{

using Defines = QList<std::pair<const char*, const char*>>;

const QString kFrag = QStringLiteral("frag");
const QString kSimplest = QStringLiteral("src/TextureManager.glslc");
const QString kSampler = QStringLiteral("src/SamplerTextureManager.glslc");

void addDefines(GLSLMacroProcessor& processor, const Defines& defines)
{
    for (const auto& [name, value] : defines)
        processor.addDefine(QLatin1String(name), QLatin1String(value));
}

QString expandedText(const QString& text, const Defines& defines = {})
{
    GLSLMacroProcessor processor;
    addDefines(processor, defines);
    return GLSLMacroProcessor::process(text, &processor);
}

QString expandedFile(const QString& name, const Defines& defines = {})
{
    return expandedText(embedded(name), defines);
}

/// A fragment stage that calls `statements` and writes `result`.
QString caller(const QString& statements, const Defines& defines = {})
{
    return expandedText(QStringLiteral("#version 150\n#include \"TextureManager.glslh\"\n"
                                       "out vec4 o_Color;\nflat in uvec2 vo_Token;\nin vec3 vo_Place;\n"
                                       "void main()\n{\n    vec4 result = vec4(0.0);\n") +
                            statements + QStringLiteral("    o_Color = result;\n}\n"),
                        defines);
}

const QString kCallAll = QStringLiteral("    if (vrkIsValidToken(vo_Token))\n"
                                        "        result += managedTexture(vo_Token, vo_Place.xy);\n"
                                        "    result += managedTextureLod(vo_Token, vo_Place.xy, 1.5);\n"
                                        "    result.xy += managedTextureSize(vo_Token);\n"
                                        "    result += managedTextureCube(vo_Token, vo_Place);\n"
                                        "    result += managedTextureCubeLod(vo_Token, vo_Place, 1.5);\n"
                                        "    result.xy += managedTextureCubeSize(vo_Token);\n"
                                        "    result += textureGetDebug(gl_FragCoord.xy);\n");
const QString kFetch = QStringLiteral("    result += managedTexelFetch(vo_Token, ivec2(1, 2), 0);\n");

/// Whether the two texts link into a fragment stage.
Verdict linked(const QString& body, const QString& calling)
{
    return validate({QStringLiteral("-l")}, {{kFrag, body}, {kFrag, calling}});
}

} // namespace

// ---- The header ----------------------------------------------------------------------------------------------------

TEST(ManagedTextureGLSL, HeaderIsFoundWithoutAMacroProcessor)
{
    const LogCapture log;
    const QString text =
        GLSLMacroProcessor::process(QStringLiteral("#version 150\n#include \"TextureManager.glslh\"\n"), nullptr);
    EXPECT_TRUE(text.contains(QStringLiteral("vec4 managedTexture(in VrkTextureToken token, in vec2 texCoord);")));
    EXPECT_EQ(log.texts(), QStringList());
}

TEST(ManagedTextureGLSL, HeaderHasItsGuardAndMayBeIncludedTwice)
{
    const QString header = embedded(QStringLiteral("include/TextureManager.glslh"));
    EXPECT_TRUE(
        header.contains(QStringLiteral("#ifndef VRK_TEXTUREMANAGER_GLSLH\n#define VRK_TEXTUREMANAGER_GLSLH\n")));
    EXPECT_VALID({}, {kFrag, expandedText(QStringLiteral("#version 150\n#include \"TextureManager.glslh\"\n"
                                                         "#include \"TextureManager.glslh\"\nvoid main() {}\n"))});
}

TEST(ManagedTextureGLSL, HeaderDefinesItsValues)
{
    // Judged by the compiler: an array cannot have a negative size.
    const QString body = QStringLiteral("    float check[MANAGED_TEXTURE_TOKEN_NULL == -1 ? 1 : -1];\n"
                                        "    VrkTextureToken token = uvec2(1u, 2u);\n"
                                        "    const vec4 invalid = VRK_INVALID_TEXEL;\n"
                                        "    float isGreen[invalid == vec4(0.0, 1.0, 0.0, 1.0) ? 1 : -1];\n"
                                        "    const vec4 patch_ = VRK_EMPTY_UDIM_PATCH;\n"
                                        "    float isClear[patch_ == vec4(1.0, 1.0, 1.0, 0.0) ? 1 : -1];\n"
                                        "    const vec2 size = VRK_INVALID_SIZE;\n"
                                        "    float isZero[size == vec2(0.0, 0.0) ? 1 : -1];\n");
    EXPECT_VALID({}, {kFrag, caller(body)});
    QString wrong = body;
    wrong.replace(QStringLiteral("vec4(0.0, 1.0, 0.0, 1.0)"), QStringLiteral("vec4(0.0, 1.0, 0.0, 0.0)"));
    EXPECT_FALSE(validate({}, {{kFrag, caller(wrong)}}).good()) << "the check above checks nothing";
}

TEST(ManagedTextureGLSL, QueryLodIsDeclaredOnDemand)
{
    const QString body = QStringLiteral("    result.xy = managedTextureQueryLod(vo_Token, vo_Place.xy);\n");
    EXPECT_VALID({}, {kFrag, caller(body, {{"TEXTURE_MANAGER_ARRAY2D_SUPPORTS_TEXTURE_QUERY_LOD", "1"}})});
    EXPECT_FALSE(validate({}, {{kFrag, caller(body)}}).good());
}

TEST(ManagedTextureGLSL, UDIMIndexIsDeclaredOnDemand)
{
    const QString body = QStringLiteral("    ivec2 index = managedTextureUDIMIndex(vo_Place.xy);\n");
    EXPECT_VALID({}, {kFrag, caller(body, {{"TEXTURE_MANAGER_SUPPORTS_UDIMS", "1"}})});
    EXPECT_FALSE(validate({}, {{kFrag, caller(body)}}).good());
}

TEST(ManagedTextureGLSL, OffsetFormsAreDisabled)
{
    EXPECT_TRUE(embedded(QStringLiteral("include/TextureManager.glslh"))
                    .contains(QStringLiteral("Disabled due to not supportable")));
    EXPECT_FALSE(validate({}, {{kFrag, caller(QStringLiteral("    result = managedTextureOffset(vo_Token, vo_Place.xy, "
                                                             "ivec2(1));\n"))}})
                     .good());
    EXPECT_FALSE(validate({}, {{kFrag, caller(QStringLiteral("    result = managedTextureCubeOffset(vo_Token, "
                                                             "vo_Place, ivec3(1));\n"))}})
                     .good());
}

// ---- The bodies, by the validator ----------------------------------------------------------------------------------

TEST(ManagedTextureGLSL, SimplestBodyHasEveryFunctionAndEightSlots)
{
    EXPECT_TRUE(embedded(kSimplest).startsWith(QStringLiteral("#version 150\n")));
    EXPECT_TRUE(embedded(kSimplest).contains(QStringLiteral("#define TEXTURE_MANAGER_SLOT_COUNT 8u\n")));
    const Verdict verdict = linked(expandedFile(kSimplest), caller(kCallAll + kFetch));
    EXPECT_TRUE(verdict.good()) << verdict.output.toStdString();
}

TEST(ManagedTextureGLSL, SimplestBodyCompilesForAnyNumberOfSlotsAndWithDebug)
{
    for (const char* const count : {"1", "1u", "8", "15u", "16", "17", "32u"})
        EXPECT_VALID({}, {kFrag, expandedFile(kSimplest, {{"TEXTURE_MANAGER_SLOT_COUNT", count}})});
    EXPECT_VALID({}, {kFrag, expandedFile(kSimplest, {{"DEBUG", "1"}})});
}

TEST(ManagedTextureGLSL, SamplerBodyCompilesForOneEightSixteenAndSeventeenSlots)
{
    for (const char* const count : {"1", "8", "16", "17"})
    {
        const Defines defines = {{"TEXTURE_MANAGER_SAMPLER", "1"}, {"TEXTURE_MANAGER_SLOT_COUNT", count}};
        const Verdict verdict = linked(expandedFile(kSampler, defines), caller(kCallAll));
        EXPECT_TRUE(verdict.good()) << count << verdict.output.toStdString();
        EXPECT_VALID({}, {kFrag, expandedFile(kSampler, Defines(defines) << std::pair{"DEBUG", "1"})});
    }
}

TEST(ManagedTextureGLSL, SamplerBodyHasNoTexelFetch)
{
    const Defines defines = {{"TEXTURE_MANAGER_SAMPLER", "1"}, {"TEXTURE_MANAGER_SLOT_COUNT", "8"}};
    const Verdict verdict = linked(expandedFile(kSampler, defines), caller(kFetch));
    EXPECT_FALSE(verdict.good());
    EXPECT_TRUE(verdict.output.contains(QStringLiteral("managedTexelFetch"))) << verdict.output.toStdString();
}

TEST(ManagedTextureGLSL, SamplerBodyStopsWithoutItsDefines)
{
    EXPECT_TRUE(embedded(kSampler).contains(QStringLiteral("#error Missing TEXTURE_MANAGER_SAMPLER define.\n")));
    EXPECT_TRUE(embedded(kSampler).contains(QStringLiteral("#error Missing TEXTURE_MANAGER_SLOT_COUNT define.\n")));
    const Verdict noSampler = validate({}, {{kFrag, expandedFile(kSampler, {{"TEXTURE_MANAGER_SLOT_COUNT", "8"}})}});
    EXPECT_FALSE(noSampler.good());
    EXPECT_TRUE(noSampler.output.contains(QStringLiteral("Missing TEXTURE_MANAGER_SAMPLER define")));
    const Verdict noCount = validate({}, {{kFrag, expandedFile(kSampler, {{"TEXTURE_MANAGER_SAMPLER", "1"}})}});
    EXPECT_FALSE(noCount.good());
    EXPECT_TRUE(noCount.output.contains(QStringLiteral("Missing TEXTURE_MANAGER_SLOT_COUNT define")));
}

TEST(ManagedTextureGLSL, SamplerBodyIndexesItsSamplersByConstantsAlone)
{
    const QString text =
        expandedFile(kSampler, {{"TEXTURE_MANAGER_SAMPLER", "1"}, {"TEXTURE_MANAGER_SLOT_COUNT", "17"}});
    EXPECT_TRUE(text.contains(QStringLiteral("#define TEXTURE_ARRAY_ARRAY2D_EXPLICIT_ARRAY_ACCESS")));
    const Verdict verdict = validate({QStringLiteral("-E")}, {{kFrag, text}});
    ASSERT_TRUE(verdict.good()) << verdict.output.toStdString();
    // Three chains of 16, from slot 0 to slot 15.
    const QRegularExpression access(
        QStringLiteral("slot == (\\d+)u\\) ?return [^;]*u_ManagedTextureSlots ?\\[(\\d+)\\]"));
    int accesses = 0;
    for (auto it = access.globalMatch(verdict.output); it.hasNext(); ++accesses)
    {
        const QRegularExpressionMatch match = it.next();
        EXPECT_EQ(match.captured(1).toInt(), accesses % 16);
        EXPECT_EQ(match.captured(2).toInt(), accesses % 16);
    }
    EXPECT_EQ(accesses, 3 * 16) << verdict.output.toStdString();
}

// ---- The bodies, by a driver ---------------------------------------------------------------------------------------

namespace
{

/// Looks textures up in a vertex stage, where the numbers come back as they are. Token n is to have slot `slots[n]`;
/// slot n holds a texture of (n + 1) by 2 texels, red n / 16, with a second level that is blue.
class ManagedTextureGLSLGL : public GLTest
{
protected:
    static constexpr int kVertices = 1;

    void TearDown() override
    {
        glUseProgram(0);
        for (const auto& texture : _bound)
            texture->unbind();
        _bound.clear();
        _program.reset();
        glBindVertexArray(0);
        glDeleteVertexArrays(1, &_vertexArray);
        _vertexArray = 0;
        GLTest::TearDown();
    }

    /// A program whose output is `expression`, of a token (u_Token) and a place (u_Place).
    void link(const QString& body, const Defines& defines, const QString& expression)
    {
        GLSLMacroProcessor processor;
        addDefines(processor, defines);
        _program = std::make_unique<ShaderProgram>();
        _program->setMacroProcessor(&processor);
        _program->setTransformFeedbackVaryings({QStringLiteral("result")}, GL_INTERLEAVED_ATTRIBS);
        _program->addShader(GL_VERTEX_SHADER,
                            QStringLiteral("#version 150\n#include \"TextureManager.glslh\"\n"
                                           "uniform uvec2 u_Token;\nuniform vec2 u_Place;\nout vec4 result;\n"
                                           "void main()\n{\n    result = ") +
                                expression + QStringLiteral(";\n    gl_Position = vec4(0.0);\n}\n"));
        _program->addShaderFromFile(GL_VERTEX_SHADER, body);
        _program->addShader(GL_FRAGMENT_SHADER,
                            QStringLiteral("#version 150\nout vec4 o;\nvoid main()\n{\n    o = vec4(1.0);\n}\n"));
        ASSERT_TRUE(_program->link()) << _program->log().toStdString();
        _program->setMacroProcessor(nullptr);
        glGenVertexArrays(1, &_vertexArray);
        glBindVertexArray(_vertexArray);
        _program->bind();
    }

    void setSlots(const std::vector<GLint>& slotOfToken, int slotCount)
    {
        auto map = std::make_unique<Texture>(nullptr);
        map->setTarget(GL_TEXTURE_2D);
        map->bind();
        nearest();
        glTexImage2D(GL_TEXTURE_2D, 0, GL_R32I, GLsizei(slotOfToken.size()), 1, 0, GL_RED_INTEGER, GL_INT,
                     slotOfToken.data());
        glUniform1i(_program->getUniformLocation(QStringLiteral("u_TextureTokenManagedTextureSlotMap")), map->unit());
        _bound.push_back(std::move(map));
        for (int slot = 0; slot < slotCount; ++slot)
            setSlot(slot);
    }

    QList<float> lookUp(unsigned low, unsigned high = 0, float s = 0.0f, float t = 0.0f)
    {
        glUniform2ui(_program->getUniformLocation(QStringLiteral("u_Token")), low, high);
        glUniform2f(_program->getUniformLocation(QStringLiteral("u_Place")), s, t);
        TransformFeedback feedback(GL_POINTS);
        glDrawArrays(GL_POINTS, 0, kVertices);
        return feedback.end<float>(4);
    }

private:
    static void nearest()
    {
        glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_NEAREST);
        glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_NEAREST);
    }

    void setSlot(int slot)
    {
        const int location = _program->getUniformLocation(QStringLiteral("u_ManagedTextureSlots[%1]").arg(slot));
        auto texture = std::make_unique<Texture>(nullptr);
        texture->setTarget(GL_TEXTURE_2D);
        texture->bind();
        glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_NEAREST_MIPMAP_NEAREST);
        glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_NEAREST);
        glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAX_LEVEL, 1);
        const int width = slot + 1;
        std::vector<float> texels;
        for (int texel = 0; texel < width * 2; ++texel)
            texels.insert(texels.end(), {float(slot) / 16.0f, float(texel), 0.0f, 1.0f});
        glTexImage2D(GL_TEXTURE_2D, 0, GL_RGBA32F, width, 2, 0, GL_RGBA, GL_FLOAT, texels.data());
        const int half = std::max(1, width / 2);
        std::vector<float> blue;
        for (int texel = 0; texel < half; ++texel)
            blue.insert(blue.end(), {float(slot) / 16.0f, 0.0f, 1.0f, 1.0f});
        glTexImage2D(GL_TEXTURE_2D, 1, GL_RGBA32F, half, 1, 0, GL_RGBA, GL_FLOAT, blue.data());
        if (location >= 0)
            glUniform1i(location, texture->unit());
        _bound.push_back(std::move(texture));
    }

    std::unique_ptr<ShaderProgram> _program;
    std::vector<std::unique_ptr<Texture>> _bound;
    GLuint _vertexArray = 0;
};

const QList<float> kGreen = {0.0f, 1.0f, 0.0f, 1.0f};

struct Body
{
    const char* file;
    Defines defines;
};
const Body kBodies[] = {
    {"TextureManager.glslc", {}},
    {"SamplerTextureManager.glslc", {{"TEXTURE_MANAGER_SAMPLER", "1"}, {"TEXTURE_MANAGER_SLOT_COUNT", "8"}}}};

} // namespace

TEST_F(ManagedTextureGLSLGL, ATokenReachesTheTextureOfItsSlot)
{
    for (const Body& body : kBodies)
    {
        link(QLatin1String(body.file), body.defines, QStringLiteral("managedTextureLod(u_Token, u_Place, 0.0)"));
        setSlots({3, 0, 7, 1, 2, 4, 5, 6}, 8);
        EXPECT_EQ(lookUp(0), (QList<float>{3.0f / 16.0f, 0.0f, 0.0f, 1.0f})) << body.file;
        EXPECT_EQ(lookUp(1), (QList<float>{0.0f, 0.0f, 0.0f, 1.0f})) << body.file;
        EXPECT_EQ(lookUp(2), (QList<float>{7.0f / 16.0f, 0.0f, 0.0f, 1.0f})) << body.file;
        // Texel (3, 1) of 8 by 2 is number 11.
        EXPECT_EQ(lookUp(2, 0, 3.5f / 8.0f, 0.75f), (QList<float>{7.0f / 16.0f, 11.0f, 0.0f, 1.0f})) << body.file;
        for (unsigned token = 3; token < 8; ++token)
            EXPECT_EQ(lookUp(token)[0], (token < 5 ? token - 2.0f : token - 1.0f) / 16.0f) << body.file << token;
        TearDown();
        SetUp();
    }
}

TEST_F(ManagedTextureGLSLGL, TheHighWordOfATokenIsNotLookedAt)
{
    link(QStringLiteral("TextureManager.glslc"), {}, QStringLiteral("managedTextureLod(u_Token, u_Place, 0.0)"));
    setSlots({3, 5}, 8);
    EXPECT_EQ(lookUp(1, 77)[0], 5.0f / 16.0f);
}

TEST_F(ManagedTextureGLSLGL, TheLevelOfDetailIsTaken)
{
    for (const Body& body : kBodies)
    {
        link(QLatin1String(body.file), body.defines, QStringLiteral("managedTextureLod(u_Token, u_Place, 1.0)"));
        setSlots({6}, 8);
        EXPECT_EQ(lookUp(0), (QList<float>{6.0f / 16.0f, 0.0f, 1.0f, 1.0f})) << body.file;
        TearDown();
        SetUp();
    }
}

TEST_F(ManagedTextureGLSLGL, WithoutALevelTheBaseLevelIsSampledInAVertexStage)
{
    for (const Body& body : kBodies)
    {
        link(QLatin1String(body.file), body.defines, QStringLiteral("managedTexture(u_Token, u_Place)"));
        setSlots({1, 5}, 8);
        EXPECT_EQ(lookUp(1), (QList<float>{5.0f / 16.0f, 0.0f, 0.0f, 1.0f})) << body.file;
        TearDown();
        SetUp();
    }
}

TEST_F(ManagedTextureGLSLGL, TheSizeIsThatOfTheBaseLevel)
{
    for (const Body& body : kBodies)
    {
        link(QLatin1String(body.file), body.defines, QStringLiteral("vec4(managedTextureSize(u_Token), 0.0, 0.0)"));
        setSlots({6, 2}, 8);
        EXPECT_EQ(lookUp(0), (QList<float>{7.0f, 2.0f, 0.0f, 0.0f})) << body.file;
        EXPECT_EQ(lookUp(1), (QList<float>{3.0f, 2.0f, 0.0f, 0.0f})) << body.file;
        TearDown();
        SetUp();
    }
}

TEST_F(ManagedTextureGLSLGL, TheSimplestBodyFetchesTexels)
{
    link(QStringLiteral("TextureManager.glslc"), {},
         QStringLiteral("managedTexelFetch(u_Token, ivec2(u_Place), u_Place.y > 1.5 ? 1 : 0)"));
    setSlots({4, 9}, 8);
    EXPECT_EQ(lookUp(0, 0, 3.0f, 1.0f), (QList<float>{4.0f / 16.0f, 8.0f, 0.0f, 1.0f}));
    EXPECT_EQ(lookUp(1), kGreen) << "a slot that there is not";
}

TEST_F(ManagedTextureGLSLGL, ASlotBehindTheLastGivesTheInvalidValues)
{
    for (const Body& body : kBodies)
    {
        for (const char* const call : {"managedTexture(u_Token, u_Place)", "managedTextureLod(u_Token, u_Place, 0.0)"})
        {
            link(QLatin1String(body.file), body.defines, QLatin1String(call));
            setSlots({8, 100000, 7, -1}, 8);
            EXPECT_EQ(lookUp(0), kGreen) << body.file << call;
            EXPECT_EQ(lookUp(1), kGreen) << body.file << call;
            EXPECT_EQ(lookUp(3), kGreen) << body.file << call;
            EXPECT_EQ(lookUp(2)[0], 7.0f / 16.0f) << body.file << call;
            TearDown();
            SetUp();
        }
        link(QLatin1String(body.file), body.defines, QStringLiteral("vec4(managedTextureSize(u_Token), 3.0, 3.0)"));
        setSlots({8}, 8);
        EXPECT_EQ(lookUp(0), (QList<float>{0.0f, 0.0f, 3.0f, 3.0f})) << body.file;
        TearDown();
        SetUp();
    }
}

TEST_F(ManagedTextureGLSLGL, SlotsAboveSixteenAreOutOfReach)
{
    for (const Body& body : kBodies)
    {
        Defines defines = {{"TEXTURE_MANAGER_SAMPLER", "1"}, {"TEXTURE_MANAGER_SLOT_COUNT", "17"}};
        GLint samplers = 0;
        glGetIntegerv(GL_MAX_VERTEX_TEXTURE_IMAGE_UNITS, &samplers);
        ASSERT_GE(samplers, 18);
        link(QLatin1String(body.file), defines, QStringLiteral("managedTexture(u_Token, u_Place)"));
        setSlots({15, 16}, 17);
        EXPECT_EQ(lookUp(0)[0], 15.0f / 16.0f) << body.file;
        EXPECT_EQ(lookUp(1), kGreen) << body.file;
        TearDown();
        SetUp();
    }
}

TEST_F(ManagedTextureGLSLGL, ATokenIsValidBelowTheWidthOfTheSlotMap)
{
    for (const Body& body : kBodies)
    {
        link(QLatin1String(body.file), body.defines, QStringLiteral("vec4(vrkIsValidToken(u_Token) ? 1.0 : 0.0)"));
        setSlots({0, 0, 0}, 1);
        EXPECT_EQ(lookUp(0)[0], 1.0f) << body.file;
        EXPECT_EQ(lookUp(2)[0], 1.0f) << body.file;
        EXPECT_EQ(lookUp(3)[0], 0.0f) << body.file;
        EXPECT_EQ(lookUp(0xFFFFFFFFu, 0xFFFFFFFFu)[0], 0.0f) << body.file;
        TearDown();
        SetUp();
    }
}

TEST_F(ManagedTextureGLSLGL, WithDebugABadTokenGivesTheInvalidValues)
{
    for (const Body& body : kBodies)
    {
        const Defines defines = Defines(body.defines) << std::pair{"DEBUG", "1"};
        for (const char* const call : {"managedTexture(u_Token, u_Place)", "managedTextureLod(u_Token, u_Place, 0.0)"})
        {
            link(QLatin1String(body.file), defines, QLatin1String(call));
            setSlots({2, 3}, 8);
            EXPECT_EQ(lookUp(1)[0], 3.0f / 16.0f) << body.file << call;
            EXPECT_EQ(lookUp(2), kGreen) << body.file << call;
            EXPECT_EQ(lookUp(0xFFFFFFFFu, 0xFFFFFFFFu), kGreen) << body.file << call;
            TearDown();
            SetUp();
        }
        link(QLatin1String(body.file), defines, QStringLiteral("vec4(managedTextureSize(u_Token), 0.0, 0.0)"));
        setSlots({2, 3}, 8);
        EXPECT_EQ(lookUp(1)[0], 4.0f) << body.file;
        EXPECT_EQ(lookUp(2)[0], 0.0f) << body.file;
        TearDown();
        SetUp();
    }
}

TEST_F(ManagedTextureGLSLGL, CubeFormsAndTheDebugViewAreConstants)
{
    for (const Body& body : kBodies)
    {
        link(QLatin1String(body.file), body.defines, QStringLiteral("managedTextureCube(u_Token, vec3(1.0))"));
        setSlots({0}, 1);
        EXPECT_EQ(lookUp(0), kGreen) << body.file;
        TearDown();
        SetUp();
        link(QLatin1String(body.file), body.defines, QStringLiteral("managedTextureCubeLod(u_Token, vec3(1.0), 0.0)"));
        setSlots({0}, 1);
        EXPECT_EQ(lookUp(0), kGreen) << body.file;
        TearDown();
        SetUp();
        link(QLatin1String(body.file), body.defines,
             QStringLiteral("vec4(managedTextureCubeSize(u_Token), 5.0, 5.0) + textureGetDebug(u_Place)"));
        setSlots({0}, 1);
        EXPECT_EQ(lookUp(0), (QList<float>{0.0f, 0.0f, 5.0f, 5.0f})) << body.file;
        TearDown();
        SetUp();
    }
}

} // namespace Harrow::Vrk::Test
