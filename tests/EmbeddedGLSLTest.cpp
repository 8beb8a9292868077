// SPDX-License-Identifier: MIT
//
// The embedded GLSL files: the convention that all of them keep, and what the utilities, the bit casts and the
// indirect commands promise, judged by glslangValidator and, in the suite for a driver, by running them.

#include "EmbeddedGLSLTestTools.h"
#include "support/GLTest.h"
#include "support/LogCapture.h"
#include "support/TransformFeedback.h"

#include "DrawBuffers.h"
#include "GLFunctions.h"
#include "GLOptionalFunctions.h"
#include "GLSLMacroProcessor.h"
#include "GLUtilities.h"

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QRegularExpression>
#include <QScopeGuard>

#include <gtest/gtest.h>

#include <cmath>
#include <string>
#include <utility>

namespace Harrow::Vrk::Test
{
namespace
{

const QString kBaseInstance = QStringLiteral("DRAW_BUFFER_USE_BASE_INSTANCE");

/// The embedded file as the driver gets it, with one define, or none when the name is empty.
QString expanded(const QString& name, const QString& define = QString(), const QString& value = QStringLiteral("1"))
{
    GLSLMacroProcessor processor;
    if (!define.isEmpty())
        processor.addDefine(define, value);
    return GLSLMacroProcessor::process(embedded(name), &processor);
}

/// A text of the application's own: a version line, then `body`, expanded.
QString unit(const QString& body, const QString& define = QString())
{
    GLSLMacroProcessor processor;
    if (!define.isEmpty())
        processor.addDefine(define, QStringLiteral("1"));
    return GLSLMacroProcessor::process(QStringLiteral("#version 150\n") + body, &processor);
}

/// The text after the preprocessor of glslangValidator.
std::string preprocessed(const QString& text)
{
    const Verdict verdict = validate({QStringLiteral("-E")}, {{QStringLiteral("vert"), text}});
    EXPECT_TRUE(verdict.good()) << verdict.output.toStdString();
    return verdict.output.toStdString();
}

const QString kVert = QStringLiteral("vert");
const QString kFrag = QStringLiteral("frag");
const QString kUtilities = QStringLiteral("src/VrkUtilities.glslc");
const QString kUtilitiesVert = QStringLiteral("src/VrkUtilities.vert");
const QString kUtilitiesFrag = QStringLiteral("src/VrkUtilities.frag");
const QString kBitEncoding = QStringLiteral("include/ShaderBitEncoding.glslh");

// glslangValidator knows gl_BaseInstanceARB from this version on only; drivers know it from the extension.
QString raisedTo450(QString text)
{
    return text.replace(QStringLiteral("#version 150"), QStringLiteral("#version 450"));
}

/// The header with the branch for drivers without the extension, wherever the text is compiled.
QString bitEncodingFallback()
{
    return embedded(kBitEncoding).replace(QStringLiteral("GL_ARB_shader_bit_encoding"), QStringLiteral("NOT_OFFERED"));
}

} // namespace

TEST(EmbeddedGLSL, UnitsBeginWithVersionAndHeadersHaveNone)
{
    // A unit may leave the version to a macro whose default is a version line.
    const QRegularExpression unitStart(QStringLiteral("^(#macro \\S+ )?#version "));
    for (QDirIterator it(QStringLiteral(":/GLSL"), QDir::Files, QDirIterator::Subdirectories); it.hasNext();)
    {
        QFile file(it.next());
        ASSERT_TRUE(file.open(QIODevice::ReadOnly)) << file.fileName().toStdString();
        const QString text = QString::fromUtf8(file.readAll());
        if (file.fileName().endsWith(QStringLiteral(".glslh")))
            EXPECT_FALSE(text.contains(QStringLiteral("#version"))) << file.fileName().toStdString();
        else
            EXPECT_TRUE(unitStart.match(text).hasMatch()) << file.fileName().toStdString();
    }
}

TEST(EmbeddedGLSL, ThereAreTheseFilesAndNoOthers)
{
    const QStringList headers = {"DrawElementsIndirectCommand.glslh",
                                 "FXAA.glslh",
                                 "ImportanceSample.glslh",
                                 "SMAA.glslh",
                                 "ShaderBitEncoding.glslh",
                                 "ShadowMapManager.glslh",
                                 "TextureManager.glslh",
                                 "VisibilityBuffer.glslh",
                                 "VrkUtilities.glslh",
                                 "noise2D.glslh"};
    const QStringList units = {"Array2DTextureManager.glslc",
                               "Array2DTextureManagerBindless.glslc",
                               "BindlessTextureManager.glslc",
                               "CubeRender.vert",
                               "CubeRender_Blur.frag",
                               "CubeRender_Color.frag",
                               "CubeRender_Cross.frag",
                               "CubeRender_LatLongSphere.frag",
                               "CubeRender_Linear.frag",
                               "CubeRender_NDotL.frag",
                               "CubeRender_Sphere.frag",
                               "CubeRender_ToLinearFS.glslc",
                               "CubeRender_ToLinearVS.glslc",
                               "FXAA.glslc",
                               "Func_ColorSpace.glslc",
                               "ImportanceSample.glslc",
                               "SamplerTextureManager.glslc",
                               "ShadowMapManager.glslc",
                               "TextureManager.glslc",
                               "VisibilityBuffer.glslc",
                               "VrkUtilities.frag",
                               "VrkUtilities.glslc",
                               "VrkUtilities.vert",
                               "noise2D.glslc",
                               "passthroughVS.glslc",
                               "prefilteredEnvMapCubeFS.glslc",
                               "prefilteredEnvMapCubeVS.glslc",
                               "prefilteredEnvMapFS.glslc",
                               "prefilteredEnvMapVS.glslc",
                               "preintegratedBRDFTableFS.glslc",
                               "preintegratedBRDFTableVS.glslc"};
    const auto filesIn = [](const char* folder)
    { return QDir(QLatin1String(folder)).entryList(QDir::Files, QDir::Name); };
    EXPECT_EQ(filesIn(":/GLSL/include"), headers);
    EXPECT_EQ(filesIn(":/GLSL/src"), units);
    EXPECT_EQ(QDir(":/GLSL").entryList(QDir::AllEntries, QDir::Name), QStringList({"include", "src"}));
}

TEST(EmbeddedGLSL, HeadersHaveTheGuardsThatAreTheirInterface)
{
    const struct
    {
        const char* header;
        const char* guard; // null: none
    } rows[] = {{"VrkUtilities", "VRK_VRKUTILITIES_GLSLH"},
                {"ShaderBitEncoding", "VRK_GLSL_SHADER_BIT_ENCODING_GLSLH"},
                {"noise2D", "VRK_NOISE2D_GLSLH"},
                {"VisibilityBuffer", nullptr},
                {"DrawElementsIndirectCommand", nullptr}};
    for (const auto& row : rows)
    {
        QStringList directives;
        for (const QString& line : embedded(QStringLiteral("include/%1.glslh").arg(row.header)).split('\n'))
            if (line.startsWith(QLatin1Char('#')))
                directives.append(line);
        if (row.guard == nullptr)
        {
            EXPECT_TRUE(directives.filter(QStringLiteral("if")).isEmpty()) << row.header;
            continue;
        }
        ASSERT_GE(directives.size(), 3) << row.header;
        EXPECT_EQ(directives[0], QStringLiteral("#ifndef %1").arg(row.guard));
        EXPECT_EQ(directives[1], QStringLiteral("#define %1").arg(row.guard));
        EXPECT_EQ(directives.last(), QStringLiteral("#endif // %1").arg(row.guard));
    }
}

TEST(EmbeddedGLSL, ColorSpacesAreFiveFunctionsAndNoMore)
{
    const QRegularExpression definition(QStringLiteral("^(\\w+ \\w+\\(.*\\))$"), QRegularExpression::MultilineOption);
    QStringList functions;
    for (auto it = definition.globalMatch(embedded(QStringLiteral("src/Func_ColorSpace.glslc"))); it.hasNext();)
        functions.append(it.next().captured(1));
    EXPECT_EQ(
        functions,
        QStringList({"vec4 zelConvert_Linear_To_Linear(vec4 color)", "vec4 zelConvert_Linear_To_Gamma22(vec4 color)",
                     "vec4 zelConvert_Gamma22_To_Linear(vec4 color)", "vec4 zelConvert_Linear_To_sRGB(vec4 color)",
                     "vec4 zelConvert_sRGB_To_Linear(vec4 color)"}));
}

TEST(EmbeddedGLSL, FilesExpandWithoutWarnings)
{
    for (QDirIterator it(QStringLiteral(":/GLSL"), QDir::Files, QDirIterator::Subdirectories); it.hasNext();)
    {
        QFile file(it.next());
        ASSERT_TRUE(file.open(QIODevice::ReadOnly));
        const LogCapture log;
        GLSLMacroProcessor::process(QString::fromUtf8(file.readAll()), nullptr);
        // Whoever links that one registers the plan first.
        const bool wantsPlan = file.fileName().endsWith(QStringLiteral("VisibilityBuffer.glslc"));
        EXPECT_EQ(log.texts().size(), wantsPlan ? 1 : 0) << file.fileName().toStdString();
        for (const QString& text : log.texts())
            EXPECT_TRUE(text.contains(QStringLiteral("InstanceInfo"))) << text.toStdString();
    }
}

TEST(EmbeddedGLSL, UtilitiesCompileInEveryStage)
{
    for (const QString& define : {QString(), kBaseInstance})
    {
        for (const char* stage : {"vert", "tesc", "tese", "geom", "frag"})
        {
            // Tessellation stages begin at 400.
            QString text = expanded(kUtilities, define);
            if (stage[0] == 't')
                text.replace(QStringLiteral("#version 150"), QStringLiteral("#version 400"));
            EXPECT_VALID({}, {QString::fromLatin1(stage), text});
        }
        EXPECT_VALID({}, {kFrag, expanded(kUtilitiesFrag, define)});
    }
    EXPECT_VALID({}, {kVert, expanded(kUtilitiesVert)});
    EXPECT_VALID({}, {kVert, raisedTo450(expanded(kUtilitiesVert, kBaseInstance))});
}

TEST(EmbeddedGLSL, UtilitiesHeaderDeclaresAllItsFunctionsAndMayBeIncludedTwice)
{
    const QString body = QStringLiteral("#include \"VrkUtilities.glslh\"\n#include \"VrkUtilities.glslh\"\n"
                                        "void main()\n{\n"
                                        "    uint id = getDrawID();\n"
                                        "    vec3 c3 = gammaCorrect(vec3(1.0), 2.2);\n"
                                        "    vec4 c4 = gammaCorrect(vec4(1.0), 2.2);\n"
                                        "    mat3 m = mat3Rotation(mat4(1.0));\n"
                                        "    vec2 d = directionToLatLong(c3) + directionToLatLong_Tarn(c3);\n"
                                        "    gl_Position = vec4(m * c3, float(id)) + c4 + d.xyxy;\n}\n");
    EXPECT_VALID({QStringLiteral("-l")}, {kVert, unit(body)}, {kVert, expanded(kUtilities)},
                 {kVert, expanded(kUtilitiesVert)});
    // With base instances getDrawID comes from the vertex file.
    EXPECT_VALID({QStringLiteral("-l")}, {kVert, raisedTo450(unit(body))},
                 {kVert, raisedTo450(expanded(kUtilities, kBaseInstance))},
                 {kVert, raisedTo450(expanded(kUtilitiesVert, kBaseInstance))});
    EXPECT_TRUE(embedded(QStringLiteral("include/VrkUtilities.glslh"))
                    .contains(QStringLiteral("#ifndef VRK_VRKUTILITIES_GLSLH\n#define VRK_VRKUTILITIES_GLSLH\n")));
}

TEST(EmbeddedGLSL, DrawIDUniformIsThereWithoutBaseInstanceOnly)
{
    const std::string uniform = "uniform uint u_DrawID";
    EXPECT_NE(preprocessed(expanded(kUtilities)).find(uniform), std::string::npos);
    EXPECT_EQ(preprocessed(expanded(kUtilities, kBaseInstance)).find("u_DrawID"), std::string::npos);
    const std::string body = "return uint(gl_BaseInstanceARB + gl_InstanceID)";
    EXPECT_EQ(preprocessed(expanded(kUtilitiesVert)).find("gl_BaseInstanceARB"), std::string::npos);
    EXPECT_NE(preprocessed(expanded(kUtilitiesVert, kBaseInstance)).find(body), std::string::npos);
    for (const QString& define : {QString(), kBaseInstance})
        EXPECT_EQ(preprocessed(expanded(kUtilitiesFrag, define)).find("getDrawID"), std::string::npos);
}

TEST(EmbeddedGLSL, StageFilesAreNeverEmpty)
{
    EXPECT_NE(preprocessed(expanded(kUtilitiesVert)).find("void vrkUtilitiesVertDUMMY(void)"), std::string::npos);
    EXPECT_NE(preprocessed(expanded(kUtilitiesFrag)).find("void vrkUtilitiesFragDUMMY(void)"), std::string::npos);
}

TEST(EmbeddedGLSL, PiDefinedByAnIncluderStaysAndOursGoes)
{
    const QString tail = QStringLiteral("\nconst float a = M_PI;\nconst float b = M_INV_PI;\n"
                                        "#if defined(UNDEF_PI) || defined(UNDEF_INV_PI)\nmarks left\n#endif\n");
    const auto endsWith = [&tail](const QString& define, const QString& value, const char* a, const char* b)
    {
        const std::string text = preprocessed(expanded(kUtilities, define, value) + tail);
        EXPECT_NE(text.find(std::string("const float a = ") + a + ";"), std::string::npos) << text;
        EXPECT_NE(text.find(std::string("const float b = ") + b + ";"), std::string::npos) << text;
        EXPECT_EQ(text.find("marks left"), std::string::npos) << text;
    };
    endsWith(QString(), QString(), "M_PI", "M_INV_PI");
    endsWith(QStringLiteral("M_PI"), QStringLiteral("3.0"), "3.0", "M_INV_PI");
    endsWith(QStringLiteral("M_INV_PI"), QStringLiteral("0.25"), "M_PI", "0.25");
    EXPECT_NE(preprocessed(expanded(kUtilities)).find("0.5 * 3.14159265358979"), std::string::npos);
    EXPECT_NE(preprocessed(expanded(kUtilities)).find("0.31830988618379"), std::string::npos);
}

TEST(EmbeddedGLSL, BitCastsCompileWithAndWithoutTheExtension)
{
    const QString body = QStringLiteral("void main() { gl_Position = vec4(uintBitsToFloat(floatBitsToUint(1.0))); }\n");
    const QString twice =
        QStringLiteral("#include \"ShaderBitEncoding.glslh\"\n#include \"ShaderBitEncoding.glslh\"\n");
    EXPECT_VALID({}, {kVert, unit(twice + body)});
    EXPECT_VALID({}, {kVert, unit(bitEncodingFallback() + body)});
    // Neither is there at this version by itself.
    EXPECT_FALSE(validate({}, {{kVert, unit(body)}}).good());
}

TEST(EmbeddedGLSL, IndirectCommandsTake32BytesEach)
{
    const QString body =
        QStringLiteral("#include \"DrawElementsIndirectCommand.glslh\"\n"
                       "void main()\n{\n"
                       "    DrawElementsIndirectCommand c = u_DrawElementsIndirectCommands[u_DrawID];\n"
                       "    gl_Position = vec4(c.count + c.instanceCount, c.firstIndex,\n"
                       "                       c.baseVertex, c.baseInstance);\n}\n");
    const Verdict verdict = validate({QStringLiteral("-l"), QStringLiteral("-q")}, {{kVert, unit(body)}});
    ASSERT_TRUE(verdict.good()) << verdict.output.toStdString();
    const auto expectMatch = [&verdict](const QString& pattern)
    {
        EXPECT_TRUE(QRegularExpression(pattern).match(verdict.output).hasMatch()) << pattern.toStdString() << "\n"
                                                                                  << verdict.output.toStdString();
    };
    expectMatch(QStringLiteral("u_DrawElementsIndirectCommandsUniform: .*size 3200,"));
    const char* const members[] = {"count", "instanceCount", "firstIndex", "baseVertex", "baseInstance"};
    for (int i = 0; i < 5; ++i)
        expectMatch(QStringLiteral("u_DrawElementsIndirectCommands\\.%1: offset %2,.* topLevelArrayStride 32\\b")
                        .arg(QString::fromLatin1(members[i]))
                        .arg(4 * i));
    expectMatch(QStringLiteral("u_DrawID: offset -1, type 1405,"));
}

// ---- Run by a driver ---------------------------------------------------------------------------------------------

namespace
{

/// Runs vertex shaders and reads back what they put out.
class EmbeddedGLSLGL : public GLTest
{
protected:
    void SetUp() override
    {
        GLTest::SetUp();
        // Drawing wants a complete framebuffer, and this context has none of its own.
        glGenVertexArrays(1, &_vertexArray);
        glBindVertexArray(_vertexArray);
        glGenRenderbuffers(1, &_renderbuffer);
        glBindRenderbuffer(GL_RENDERBUFFER, _renderbuffer);
        glRenderbufferStorage(GL_RENDERBUFFER, GL_RGBA8, 1, 1);
        glGenFramebuffers(1, &_framebuffer);
        glBindFramebuffer(GL_FRAMEBUFFER, _framebuffer);
        glFramebufferRenderbuffer(GL_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, GL_RENDERBUFFER, _renderbuffer);
    }

    void TearDown() override
    {
        glUseProgram(0);
        glDeleteProgram(_program);
        glBindFramebuffer(GL_FRAMEBUFFER, 0);
        glDeleteFramebuffers(1, &_framebuffer);
        glDeleteRenderbuffers(1, &_renderbuffer);
        glBindVertexArray(0);
        glDeleteVertexArrays(1, &_vertexArray);
        GLTest::TearDown();
    }

    /// Links the texts, and a fragment stage that writes white, into the current program. Its output is "result".
    void link(const QList<QString>& vertexTexts, const QList<QString>& fragmentTexts = {})
    {
        _program = glCreateProgram();
        for (const QString& text : vertexTexts)
            attach(GL_VERTEX_SHADER, text);
        attach(GL_FRAGMENT_SHADER, unit(QStringLiteral("out vec4 o; void main() { o = vec4(1.0); }\n")));
        for (const QString& text : fragmentTexts)
            attach(GL_FRAGMENT_SHADER, text);
        const char* const output = "result";
        glTransformFeedbackVaryings(_program, 1, &output, GL_INTERLEAVED_ATTRIBS);
        glLinkProgram(_program);
        GLint linked = 0;
        glGetProgramiv(_program, GL_LINK_STATUS, &linked);
        char log[2048] = {};
        glGetProgramInfoLog(_program, sizeof log, nullptr, log);
        ASSERT_TRUE(linked) << log;
        glUseProgram(_program);
    }

    /// What `draw` makes the program put out: four floats for each point.
    template <class Draw> QList<float> results(Draw draw)
    {
        TransformFeedback feedback(GL_POINTS);
        draw();
        return feedback.end<float>(4);
    }

    QList<float> results(int vertices)
    {
        return results([vertices] { glDrawArrays(GL_POINTS, 0, vertices); });
    }

    GLuint _program = 0;

private:
    void attach(GLenum stage, const QString& text)
    {
        const GLuint shader = glCreateShader(stage);
        const QByteArray bytes = text.toLatin1();
        const char* const data = bytes.constData();
        glShaderSource(shader, 1, &data, nullptr);
        glCompileShader(shader);
        GLint compiled = 0;
        glGetShaderiv(shader, GL_COMPILE_STATUS, &compiled);
        char log[2048] = {};
        glGetShaderInfoLog(shader, sizeof log, nullptr, log);
        EXPECT_TRUE(compiled) << log << text.toStdString();
        glAttachShader(_program, shader);
        glDeleteShader(shader);
    }

    GLuint _vertexArray = 0;
    GLuint _renderbuffer = 0;
    GLuint _framebuffer = 0;
};

/// A vertex shader with the utilities' header that puts out `expression`.
QString puttingOut(const QString& expression)
{
    return unit(
        QStringLiteral("#include \"VrkUtilities.glslh\"\nout vec4 result;\n"
                       "void main()\n{\n    vec3 axes[6] = vec3[6](vec3(0, 0, -1), vec3(0, 0, 1), vec3(-1, 0, 0),\n"
                       "        vec3(1, 0, 0), vec3(0, 1, 0), vec3(0, -1, 0));\n"
                       "    vec3 axis = axes[gl_VertexID % 6];\n    result = ") +
        expression + QStringLiteral(";\n    gl_Position = vec4(0.0);\n}\n"));
}

// Places in a map that wraps around in x.
void expectSamePlace(float actual, float expected, const char* what)
{
    EXPECT_NEAR(std::remainder(actual - expected, 1.0f), 0.0f, 1e-5f) << what << " " << actual;
}

} // namespace

TEST_F(EmbeddedGLSLGL, DirectionToLatLongPlacesTheAxes)
{
    ASSERT_NO_FATAL_FAILURE(
        link({puttingOut(QStringLiteral("vec4(directionToLatLong(axis), directionToLatLong_Tarn(axis))")),
              expanded(kUtilities), expanded(kUtilitiesVert)},
             {expanded(kUtilities), expanded(kUtilitiesFrag)}));
    const QList<float> r = results(6);
    ASSERT_EQ(r.size(), 24);
    // The x of the two poles is anything.
    const struct
    {
        const char* name;
        float x, xTarn, y;
    } rows[] = {{"forward", 0.25f, 0.0f, 0.5f}, {"back", 0.75f, 0.5f, 0.5f}, {"left", 0.0f, 0.25f, 0.5f},
                {"right", 0.5f, 0.75f, 0.5f},   {"up", -1.0f, -1.0f, 1.0f},  {"down", -1.0f, -1.0f, 0.0f}};
    for (int i = 0; i < 6; ++i)
    {
        EXPECT_NEAR(r[4 * i + 1], rows[i].y, 1e-5f) << rows[i].name;
        EXPECT_NEAR(r[4 * i + 3], rows[i].y, 1e-5f) << rows[i].name;
        if (rows[i].x < 0.0f)
            continue;
        expectSamePlace(r[4 * i], rows[i].x, rows[i].name);
        expectSamePlace(r[4 * i + 2], rows[i].xTarn, rows[i].name);
    }
}

TEST_F(EmbeddedGLSLGL, UpIsTheTopOfTheMap)
{
    ASSERT_NO_FATAL_FAILURE(link({puttingOut(QStringLiteral("directionToLatLong(vec3(0, 1, 0)).xyyy")),
                                  expanded(kUtilities), expanded(kUtilitiesVert)}));
    EXPECT_FLOAT_EQ(results(1).value(1), 1.0f);
}

TEST_F(EmbeddedGLSLGL, GammaLeavesAlpha)
{
    ASSERT_NO_FATAL_FAILURE(
        link({puttingOut(QStringLiteral("gl_VertexID == 0 ? gammaCorrect(vec4(0.5, 0.25, 1.0, 0.3), 2.2)"
                                        " : vec4(gammaCorrect(vec3(0.5, 0.25, 1.0), 2.2), 7.0)")),
              expanded(kUtilities), expanded(kUtilitiesVert)}));
    const QList<float> r = results(2);
    ASSERT_EQ(r.size(), 8);
    const float expected[] = {0.72974005f, 0.53252052f, 1.0f, 0.3f, 0.72974005f, 0.53252052f, 1.0f, 7.0f};
    for (int i = 0; i < 8; ++i)
        EXPECT_NEAR(r[i], expected[i], 1e-5f) << i;
}

TEST_F(EmbeddedGLSLGL, RotationOfAMatrixTakesNormals)
{
    // Stretched threefold in x and moved: the plane with the normal (1, 1, 0) gets the normal (1/3, 1, 0).
    ASSERT_NO_FATAL_FAILURE(
        link({puttingOut(QStringLiteral("vec4(mat3Rotation(mat4(3, 0, 0, 0, 0, 1, 0, 0, 0, 0, 2, 0, 5, 6, 7, 1))"
                                        " * vec3(1, 1, 1), mat3Rotation(mat4(1, 2, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0,"
                                        " 0, 0, 0, 1))[1][0])")),
              expanded(kUtilities), expanded(kUtilitiesVert)}));
    const QList<float> r = results(1);
    ASSERT_EQ(r.size(), 4);
    // The last is of the shear y += 2 x, whose transposed inverse has -2 in the second column.
    const float expected[] = {1.0f / 3.0f, 1.0f, 0.5f, -2.0f};
    for (int i = 0; i < 4; ++i)
        EXPECT_NEAR(r[i], expected[i], 1e-5f) << i;
}

TEST_F(EmbeddedGLSLGL, DrawIDIsTheUniform)
{
    ASSERT_NO_FATAL_FAILURE(
        link({puttingOut(QStringLiteral("vec4(getDrawID())")), expanded(kUtilities), expanded(kUtilitiesVert)}));
    const GLint location = glGetUniformLocation(_program, "u_DrawID");
    ASSERT_GE(location, 0);
    glUniform1ui(location, 41);
    EXPECT_EQ(results(1).value(0), 41.0f);
}

// What an application does: it asks, chooses, and has the processor set up.
TEST_F(EmbeddedGLSLGL, BaseInstanceIsDefinedWhereItIsSupportedOnly)
{
    const bool supported = DrawBuffers::isBaseInstanceDrawingSupported();
    EXPECT_FALSE(isFloor() && supported);
    const auto restore = qScopeGuard([] { DrawBuffers::useBaseInstanceDrawing(false); });
    DrawBuffers::useBaseInstanceDrawing(supported);
    GLSLMacroProcessor processor;
    DrawBuffers::setup(&processor);
    EXPECT_EQ(GLSLMacroProcessor::process(QStringLiteral("#version 150"), &processor).toStdString(),
              supported ? "#version 150\n#define DRAW_BUFFER_USE_BASE_INSTANCE 1\n" : "#version 150\n");
}

TEST_F(EmbeddedGLSLGL, DrawIDIsBaseInstancePlusInstance)
{
    const auto draw = reinterpret_cast<PFN_glDrawArraysInstancedBaseInstance>(
        hasGLExtension("GL_ARB_shader_draw_parameters") ? getGLProcAddress("glDrawArraysInstancedBaseInstance", true)
                                                        : nullptr);
    if (nullptr == draw)
    {
        EXPECT_TRUE(isFloor());
        // Then the library does not set the define either, so that getDrawID is the one of the uniform.
        EXPECT_FALSE(DrawBuffers::isBaseInstanceDrawingSupported());
        GLSLMacroProcessor processor;
        DrawBuffers::setup(&processor);
        EXPECT_EQ(GLSLMacroProcessor::process(QStringLiteral("#version 150"), &processor).toStdString(),
                  "#version 150\n");
        return;
    }
    ASSERT_NO_FATAL_FAILURE(link({puttingOut(QStringLiteral("vec4(getDrawID())")), expanded(kUtilities, kBaseInstance),
                                  expanded(kUtilitiesVert, kBaseInstance)},
                                 {expanded(kUtilities, kBaseInstance), expanded(kUtilitiesFrag, kBaseInstance)}));
    EXPECT_EQ(glGetUniformLocation(_program, "u_DrawID"), -1);
    const QList<float> r = results([draw] { draw(GL_POINTS, 0, 1, 3, 7); });
    ASSERT_EQ(r.size(), 12);
    EXPECT_EQ(r[0], 7.0f);
    EXPECT_EQ(r[4], 8.0f);
    EXPECT_EQ(r[8], 9.0f);
}

TEST_F(EmbeddedGLSLGL, BitCastsGiveBackWhatTheyTook)
{
    const QString body =
        QStringLiteral("out vec4 result;\nvoid main()\n{\n    float v = 0.1 + 0.37 * float(gl_VertexID);\n"
                       "    result = vec4(v, uintBitsToFloat(floatBitsToUint(v)), 0.0, 0.0);\n"
                       "    gl_Position = vec4(0.0);\n}\n");
    ASSERT_NO_FATAL_FAILURE(link({unit(QStringLiteral("#include \"ShaderBitEncoding.glslh\"\n") + body)}));
    QList<float> r = results(20);
    ASSERT_EQ(r.size(), 80);
    for (int i = 0; i < 20; ++i)
        EXPECT_EQ(r[4 * i + 1], r[4 * i]);
    glDeleteProgram(_program);

    // The fallback gives the magnitude the other sign. It sums up to a float near 2^30, whose steps of 64 are steps
    // of 1.5e-5 of the mantissa.
    ASSERT_NO_FATAL_FAILURE(link({unit(bitEncodingFallback() + body)}));
    r = results(20);
    ASSERT_EQ(r.size(), 80);
    for (int i = 0; i < 20; ++i)
        EXPECT_NEAR(r[4 * i + 1] / r[4 * i], -1.0f, 2e-5f) << r[4 * i];
}

// Numbers of the form that the fallback has: sign * 2^31 + (127 + exponent) * 2^23 + mantissa * 2^22, the mantissa
// between 1 and 2, so that 1 is not the 1065353216 of IEEE 754.
TEST_F(EmbeddedGLSLGL, BitCastFallbackWritesAndReadsItsOwnForm)
{
    // A uniform keeps the compiler from working the numbers out.
    const QString body = QStringLiteral("uniform float u_Value;\nout vec4 result;\nvoid main()\n{\n"
                                        "    uint u = floatBitsToUint(u_Value);\n"
                                        "    result = vec4(float(u >> 16u), float(u & 0xffffu), uintBitsToFloat(u),\n"
                                        "                  uintBitsToFloat(uint(u_Value)));\n"
                                        "    gl_Position = vec4(0.0);\n}\n");
    ASSERT_NO_FATAL_FAILURE(link({unit(bitEncodingFallback() + body)}));
    const GLint location = glGetUniformLocation(_program, "u_Value");
    ASSERT_GE(location, 0);
    const struct
    {
        float value;
        double number;
        float readBack;
    } rows[] = {{1.0f, 1069547520.0, -1.0f},
                {-1.0f, 3217031168.0, 1.0f},
                {2.5f, 1078984704.0, -2.5f},
                {-2.5f, 3226468352.0, 2.5f},
                {0.375f, 1054867456.0, -0.375f}};
    for (const auto& row : rows)
    {
        glUniform1f(location, row.value);
        const QList<float> r = results(1);
        ASSERT_EQ(r.size(), 4);
        // Drivers take the powers and logarithms of two as they please.
        const double number = double(r[0]) * 65536.0 + double(r[1]);
        EXPECT_NEAR(number, row.number, 512.0) << row.value;
        EXPECT_NEAR(r[2], row.readBack, 2e-4f) << row.value;
    }
    // Read by itself, from a number that the other function has no part in.
    glUniform1f(location, 1069547520.0f);
    EXPECT_NEAR(results(1).value(3), -1.0f, 1e-5f);
}

} // namespace Harrow::Vrk::Test
