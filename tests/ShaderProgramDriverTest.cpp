// SPDX-License-Identifier: MIT
#include "ShaderProgram.h"

#include "Shader.h"
#include "ShaderTestTools.h"
#include "support/CallLog.h"
#include "support/GLTest.h"
#include "support/LogCapture.h"
#include "support/TestAccess.h"

#include <thread>

using namespace Harrow::Vrk;
using namespace Harrow::Vrk::Test;

namespace
{

using Access = ShaderProgramTestAccess;

class ShaderProgramGL : public GLTest
{
protected:
    static QString vertexSource()
    {
        return QStringLiteral("#version 150\nin vec3 va_Vertex;\nout vec3 vo_Color;\n"
                              "void main() { vo_Color = va_Vertex; gl_Position = vec4(va_Vertex, 1.0); }\n");
    }
    static QString fragmentSource()
    {
        return QStringLiteral("#version 150\nin vec3 vo_Color;\nout vec4 o_Color;\n"
                              "void main() { o_Color = vec4(vo_Color, 1.0); }\n");
    }
    static void addStages(ShaderProgram& program)
    {
        program.addShader(GL_VERTEX_SHADER, vertexSource());
        program.addShader(GL_FRAGMENT_SHADER, fragmentSource());
    }
};

} // namespace

// ---- on a real driver ----------------------------------------------------------------------------------------------

TEST_F(ShaderProgramGL, Links)
{
    ShaderProgram program(nullptr);
    addStages(program);
    const LogCapture log;
    EXPECT_TRUE(program.compile());
    EXPECT_TRUE(program.link());
    EXPECT_TRUE(program.validate());
    EXPECT_TRUE(log.lines().isEmpty()) << log.texts().join(u'\n').toStdString();
    EXPECT_TRUE(glIsProgram(program.shaderProgramID()));
    EXPECT_TRUE(program.bind());
    GLint current = 0;
    glGetIntegerv(GL_CURRENT_PROGRAM, &current);
    EXPECT_EQ(static_cast<GLuint>(current), program.shaderProgramID());
    EXPECT_TRUE(program.unbind());
    glGetIntegerv(GL_CURRENT_PROGRAM, &current);
    EXPECT_EQ(current, 0);
}

TEST_F(ShaderProgramGL, LinksThroughTheParallelRoad)
{
    ShaderProgram program(nullptr);
    addStages(program);
    ASSERT_TRUE(program.linkPre());
    const CallLog calls;
    EXPECT_TRUE(program.linkPreWait());
    EXPECT_EQ(calls.list().isEmpty(), isFloor());
    EXPECT_TRUE(program.linkPost());
}

TEST_F(ShaderProgramGL, DestructorDeletesProgramAndStages)
{
    GLuint program = 0;
    QList<GLuint> shaders;
    {
        ShaderProgram object(nullptr);
        addStages(object);
        ASSERT_TRUE(object.link());
        program = object.shaderProgramID();
        for (const Shader* const shader : Access::shaders(object))
            shaders.append(shader->shaderID());
    }
    EXPECT_FALSE(glIsProgram(program));
    ASSERT_EQ(shaders.size(), 2);
    for (const GLuint shader : shaders)
        EXPECT_FALSE(glIsShader(shader));
}

TEST_F(ShaderProgramGL, StageThatDoesNotCompileFailsTheLinkAndLeavesTheProgramsLog)
{
    ShaderProgram program(nullptr);
    program.addShader(GL_VERTEX_SHADER, vertexSource());
    program.addShader(GL_FRAGMENT_SHADER, QStringLiteral("#version 150\nvoid main() { undeclared(); }\n"));
    const LogCapture quiet;
    EXPECT_FALSE(program.link());
    EXPECT_EQ(program.shaderProgramID(), 0u);
    EXPECT_TRUE(program.log().isEmpty());
    EXPECT_TRUE(Access::shaders(program).value(GL_FRAGMENT_SHADER)->log().contains(QLatin1String("undeclared")));
}

TEST_F(ShaderProgramGL, LinkFailureIsReportedWithTheSourceThatTheDriverHolds)
{
    const QString missing = QStringLiteral("#version 150\nvec4 missing();\nvoid main() { gl_Position = missing(); }");
    ShaderProgram program(nullptr);
    program.addShader(GL_VERTEX_SHADER, missing);
    ASSERT_TRUE(program.linkPre());
    const GLuint name = program.shaderProgramID();
    const GLuint shader = Access::shaders(program).value(GL_VERTEX_SHADER)->shaderID();
    const LogCapture log;
    EXPECT_FALSE(program.linkPost());
    EXPECT_TRUE(program.log().contains(QLatin1String("missing"))) << program.log().toStdString();
    const QStringList expected =
        QStringList({"Failed to link GL shader", " =======Log========="}) + program.log().split(u'\n') +
        QStringList({QStringLiteral("Program %1").arg(name), QStringLiteral("Shader 0x8b31 %1").arg(shader)}) +
        listing(QStringList({"#version 150", "", "vec4 missing();", "void main() { gl_Position = missing(); }"})) +
        QStringList({QString()});
    EXPECT_EQ(log.texts(QtWarningMsg), expected);
    EXPECT_FALSE(program.isLinked());
    EXPECT_FALSE(glIsProgram(name));
}

TEST_F(ShaderProgramGL, FragmentOutputsGetTheirColours)
{
    ShaderProgram program(nullptr);
    program.setFragDataLocations({QStringLiteral("o_First"), QStringLiteral("o_Second")});
    program.addShader(GL_VERTEX_SHADER, vertexSource());
    program.addShader(GL_FRAGMENT_SHADER,
                      QStringLiteral("#version 150\nout vec4 o_Second;\nout vec4 o_First;\n"
                                     "void main() { o_Second = vec4(1.0); o_First = vec4(0.0); }\n"));
    ASSERT_TRUE(program.link());
    EXPECT_EQ(glGetFragDataLocation(program.shaderProgramID(), "o_First"), 0);
    EXPECT_EQ(glGetFragDataLocation(program.shaderProgramID(), "o_Second"), 1);
}

TEST_F(ShaderProgramGL, DualSourceOutputsTakeColourZeroWhereTheDriverHasThem)
{
    ShaderProgram program(nullptr);
    program.setFragDataLocations({QStringLiteral("o_Color")});
    program.setFragDataIndexs({{QStringLiteral("o_Color"), QStringLiteral("o_Factor")}});
    program.addShader(GL_VERTEX_SHADER, vertexSource());
    program.addShader(GL_FRAGMENT_SHADER,
                      QStringLiteral("#version 150\nout vec4 o_Color;\nout vec4 o_Factor;\n"
                                     "void main() { o_Color = vec4(1.0); o_Factor = vec4(0.0); }\n"));
    const LogCapture log;
    const CallLog calls;
    ASSERT_TRUE(program.link());
    if (isFloor())
    {
        EXPECT_EQ(calls.count(QStringLiteral("glBindFragDataLocation")), 1);
        EXPECT_EQ(log.messages(QtDebugMsg).size(), 2);
        EXPECT_EQ(log.messages().value(0), QStringLiteral("Failed to obtain 'glBindFragDataLocationIndexed'"));
        EXPECT_TRUE(log.messages().value(1).startsWith(QLatin1String("Trying to setup glBindFragDataLocationIndexed")));
        return;
    }
    EXPECT_EQ(calls.count(QStringLiteral("glBindFragDataLocation")), 0);
    EXPECT_TRUE(log.lines().isEmpty());
    // Both on colour 0: the second only fits there with an index of its own.
    EXPECT_EQ(glGetFragDataLocation(program.shaderProgramID(), "o_Color"), 0);
    EXPECT_EQ(glGetFragDataLocation(program.shaderProgramID(), "o_Factor"), 0);
}

TEST_F(ShaderProgramGL, TransformFeedbackVaryingsReachTheProgram)
{
    for (const GLenum mode : {GL_INTERLEAVED_ATTRIBS, GL_SEPARATE_ATTRIBS})
    {
        ShaderProgram program(nullptr);
        program.setTransformFeedbackVaryings({QStringLiteral("vo_Color"), QStringLiteral("gl_Position")}, mode);
        addStages(program);
        ASSERT_TRUE(program.link());
        GLint value = 0;
        glGetProgramiv(program.shaderProgramID(), GL_TRANSFORM_FEEDBACK_VARYINGS, &value);
        EXPECT_EQ(value, 2);
        glGetProgramiv(program.shaderProgramID(), GL_TRANSFORM_FEEDBACK_BUFFER_MODE, &value);
        EXPECT_EQ(static_cast<GLenum>(value), mode);
        GLchar name[64] = {};
        GLsizei size = 0;
        GLenum type = 0;
        glGetTransformFeedbackVarying(program.shaderProgramID(), 0, sizeof(name), nullptr, &size, &type, name);
        EXPECT_STREQ(name, "vo_Color");
        EXPECT_EQ(type, GLenum(GL_FLOAT_VEC3));
    }
}

TEST_F(ShaderProgramGL, OptionalFunctionsFollowTheProfile)
{
    const LogCapture log;
    const ShaderProgram program(nullptr);
    EXPECT_TRUE(log.lines().isEmpty()) << log.texts().join(u'\n').toStdString();
    const ShaderProgramEntryPoints& gl = shaderProgramEntryPoints();
    EXPECT_EQ(program.isProgramBinariesSupported(), !isFloor());
    EXPECT_EQ(gl.getProgramInterfaceiv != nullptr, !isFloor());
    EXPECT_EQ(gl.getProgramResourceName != nullptr, !isFloor());
    EXPECT_EQ(gl.getProgramResourceIndex != nullptr, !isFloor());
    EXPECT_EQ(gl.shaderStorageBlockBinding != nullptr, !isFloor());
}

TEST_F(ShaderProgramGL, BinaryGoesOutAndComesBackIn)
{
    ShaderProgram program(nullptr);
    addStages(program);
    ASSERT_TRUE(program.link());
    QByteArray data;
    unsigned int format = 0;
    if (isFloor())
    {
        EXPECT_FALSE(program.getProgramBinary(data, format));
        EXPECT_FALSE(program.loadProgramFromRawData(data, format));
        return;
    }
    ASSERT_TRUE(program.getProgramBinary(data, format));
    EXPECT_GT(data.size(), 0);
    ShaderProgram loaded(nullptr);
    EXPECT_TRUE(loaded.loadProgramFromRawData(data, format));
    EXPECT_TRUE(loaded.isLinked());
    EXPECT_GE(loaded.getVertexAttributeLocation(QStringLiteral("va_Vertex")), 0);
    EXPECT_TRUE(loaded.bind());
    EXPECT_TRUE(loaded.unbind());
}

TEST_F(ShaderProgramGL, DamagedBinaryIsRejectedInSilence)
{
    if (isFloor())
    {
        const ShaderProgram program(nullptr);
        EXPECT_FALSE(program.isProgramBinariesSupported());
        return;
    }
    ShaderProgram program(nullptr);
    addStages(program);
    ASSERT_TRUE(program.link());
    QByteArray data;
    unsigned int format = 0;
    ASSERT_TRUE(program.getProgramBinary(data, format));
    data[0] = static_cast<char>(~data[0]);
    ShaderProgram loaded(nullptr);
    const LogCapture log;
    EXPECT_FALSE(loaded.loadProgramFromRawData(data, format));
    EXPECT_FALSE(loaded.isLinked());
    EXPECT_TRUE(log.lines().isEmpty());
}

TEST_F(ShaderProgramGL, CurrentProgramIsPerContextOnOneThread)
{
    HeadlessContext second(&context());
    ASSERT_TRUE(second.isValid());
    ShaderProgram first(nullptr);
    ShaderProgram other(nullptr);
    addStages(first);
    addStages(other);
    ASSERT_TRUE(first.link());
    ASSERT_TRUE(other.link());
    ASSERT_TRUE(first.bind());
    ASSERT_TRUE(second.makeCurrent());
    EXPECT_EQ(ShaderProgram::currentShaderProgram(), nullptr);
    EXPECT_TRUE(other.bind());
    EXPECT_EQ(ShaderProgram::currentShaderProgram(), &other);
    ASSERT_TRUE(context().makeCurrent());
    EXPECT_EQ(ShaderProgram::currentShaderProgram(), &first);
    EXPECT_TRUE(first.unbind());
    EXPECT_EQ(ShaderProgram::currentShaderProgram(), nullptr);
    ASSERT_TRUE(second.makeCurrent());
    EXPECT_EQ(ShaderProgram::currentShaderProgram(), &other);
    EXPECT_TRUE(other.unbind());
    ASSERT_TRUE(context().makeCurrent());
}

TEST_F(ShaderProgramGL, CurrentProgramIsPerContextOnTwoThreads)
{
    HeadlessContext second(&context());
    ASSERT_TRUE(second.isValid());
    ShaderProgram first(nullptr);
    addStages(first);
    ASSERT_TRUE(first.link());
    ASSERT_TRUE(first.bind());

    bool held = true;
    std::thread worker(
        [&second, &held]
        {
            held = second.makeCurrent();
            ShaderProgram program(nullptr);
            addStages(program);
            held = held && program.link();
            for (int i = 0; i < 200 && held; ++i)
                held = program.bind() && ShaderProgram::currentShaderProgram() == &program && program.unbind() &&
                       ShaderProgram::currentShaderProgram() == nullptr;
            held = held && program.bind();
            HeadlessContext::releaseCurrent();
        });
    bool ours = true;
    for (int i = 0; i < 200 && ours; ++i)
        ours = first.bind() && ShaderProgram::currentShaderProgram() == &first;
    worker.join();
    EXPECT_TRUE(held);
    EXPECT_TRUE(ours);
    // The worker's program was destroyed while bound there: nothing is left of it.
    ASSERT_TRUE(second.makeCurrent());
    EXPECT_EQ(ShaderProgram::currentShaderProgram(), nullptr);
    ASSERT_TRUE(context().makeCurrent());
    EXPECT_TRUE(first.unbind());
}
