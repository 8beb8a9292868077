// SPDX-License-Identifier: MIT
#include "ShaderProgram.h"

#include "GLUtilities.h"
#include "support/GLTest.h"
#include "support/LogCapture.h"
#include "support/TestAccess.h"

using namespace Harrow::Vrk;
using namespace Harrow::Vrk::Test;

namespace
{

/// Opens the protected side.
class ReflectedProgram : public ShaderProgram
{
public:
    using ShaderProgram::summaryUniforms;
};

class ShaderProgramReflectionGL : public GLTest
{
protected:
    static void build(ShaderProgram& program, const QString& vertex, const QString& fragment)
    {
        program.addShader(GL_VERTEX_SHADER, vertex);
        program.addShader(GL_FRAGMENT_SHADER, fragment);
        ASSERT_TRUE(program.link()) << program.log().toStdString();
    }

    static QString plainFragment()
    {
        return QStringLiteral("#version 150\nout vec4 o_Color;\nvoid main() { o_Color = vec4(1.0); }\n");
    }
};

} // namespace

TEST_F(ShaderProgramReflectionGL, AttributesOfARealProgram)
{
    ShaderProgram program(nullptr);
    build(program,
          QStringLiteral("#version 150\nin vec3 va_Vertex;\nin vec2 va_TexCoord;\nin float va_Unused;\n"
                         "void main() { gl_Position = vec4(va_Vertex, va_TexCoord.x); }\n"),
          plainFragment());
    QStringList names = program.getVertexAttributeNames();
    names.sort();
    EXPECT_EQ(names, QStringList({"va_TexCoord", "va_Vertex"}));
    for (const QString& name : names)
        EXPECT_EQ(program.getVertexAttributeLocation(name),
                  glGetAttribLocation(program.shaderProgramID(), name.toLatin1().constData()));
}

TEST_F(ShaderProgramReflectionGL, VertexAndInstanceNumbersAreAbsentWithoutAReport)
{
    ShaderProgram program(nullptr);
    const LogCapture log;
    build(program,
          QStringLiteral("#version 150\nin vec3 va_Vertex;\n"
                         "void main() { gl_Position = vec4(va_Vertex, float(gl_VertexID + gl_InstanceID)); }\n"),
          plainFragment());
    EXPECT_EQ(program.getVertexAttributeNames(), QStringList({"va_Vertex"}));
    EXPECT_TRUE(log.lines().isEmpty()) << log.texts().join(u'\n').toStdString();
}

TEST_F(ShaderProgramReflectionGL, BaseInstanceIsToleratedWhereTheDriverHasIt)
{
    const bool offered = hasGLExtension("GL_ARB_shader_draw_parameters");
    EXPECT_EQ(offered, !isFloor());
    if (!offered)
        return;
    ShaderProgram program(nullptr);
    const LogCapture log;
    build(program,
          QStringLiteral("#version 150\n#extension GL_ARB_shader_draw_parameters : require\nin vec3 va_Vertex;\n"
                         "void main() { gl_Position = vec4(va_Vertex, float(gl_BaseInstanceARB)); }\n"),
          plainFragment());
    EXPECT_EQ(program.getVertexAttributeNames(), QStringList({"va_Vertex"}));
    EXPECT_TRUE(log.lines().isEmpty()) << log.texts().join(u'\n').toStdString();
}

TEST_F(ShaderProgramReflectionGL, UniformsOfARealProgram)
{
    ShaderProgram program(nullptr);
    build(program,
          QStringLiteral("#version 150\nuniform uint u_DrawID;\nuniform vec4 u_Offset;\n"
                         "void main() { gl_Position = u_Offset * float(u_DrawID); }\n"),
          plainFragment());
    EXPECT_GE(program.getUniformLocationNameID(), 0);
    EXPECT_EQ(program.getUniformLocationNameID(), glGetUniformLocation(program.shaderProgramID(), "u_DrawID"));
    EXPECT_EQ(program.getUniformLocation(QStringLiteral("u_Offset")),
              glGetUniformLocation(program.shaderProgramID(), "u_Offset"));
    EXPECT_EQ(program.getUniformLocation(QStringLiteral("u_None")), -1);
}

TEST_F(ShaderProgramReflectionGL, UniformBlockBindingsReachTheDriver)
{
    ShaderProgram program(nullptr);
    build(program,
          QStringLiteral("#version 150\nlayout(std140) uniform u_First { vec4 a; };\n"
                         "layout(std140) uniform u_Second { vec4 b; };\nvoid main() { gl_Position = a + b; }\n"),
          plainFragment());
    const int first = program.getUniformBlockIndex(QStringLiteral("u_First"));
    const int second = program.getUniformBlockIndex(QStringLiteral("u_Second"));
    EXPECT_EQ(static_cast<GLuint>(first), glGetUniformBlockIndex(program.shaderProgramID(), "u_First"));
    EXPECT_EQ(static_cast<GLuint>(second), glGetUniformBlockIndex(program.shaderProgramID(), "u_Second"));
    ASSERT_GE(second, 0);
    program.setUniformBlockBinding(static_cast<unsigned int>(second), 6);
    GLint binding = -1;
    glGetActiveUniformBlockiv(program.shaderProgramID(), static_cast<GLuint>(second), GL_UNIFORM_BLOCK_BINDING,
                              &binding);
    EXPECT_EQ(binding, 6);
}

TEST_F(ShaderProgramReflectionGL, StorageBlockBindingsReachTheDriverWhereItHasThem)
{
    if (isFloor())
    {
        ShaderProgram program(nullptr);
        build(program, QStringLiteral("#version 150\nvoid main() { gl_Position = vec4(0.0); }\n"), plainFragment());
        EXPECT_EQ(program.getStorageBlockIndex(QStringLiteral("u_Data")), -1);
        EXPECT_EQ(shaderProgramEntryPoints().shaderStorageBlockBinding, nullptr);
        return;
    }
    // A fragment shader: drivers may have no storage blocks in the vertex stage.
    ShaderProgram program(nullptr);
    build(program, QStringLiteral("#version 430\nvoid main() { gl_Position = vec4(0.0); }\n"),
          QStringLiteral("#version 430\nlayout(std430) buffer u_Data { vec4 data[]; };\nout vec4 o_Color;\n"
                         "void main() { o_Color = data[1]; }\n"));
    const int index = program.getStorageBlockIndex(QStringLiteral("u_Data"));
    ASSERT_EQ(index, 0);
    EXPECT_EQ(shaderProgramEntryPoints().getProgramResourceIndex(program.shaderProgramID(), GL_SHADER_STORAGE_BLOCK,
                                                                 "u_Data"),
              0u);
    program.setStorageBlockBinding(0, 3);
    using GetResource = void (*)(GLuint, GLenum, GLuint, GLsizei, const GLenum*, GLsizei, GLsizei*, GLint*);
    const auto getResource = reinterpret_cast<GetResource>(getGLProcAddress("glGetProgramResourceiv", false));
    ASSERT_NE(getResource, nullptr);
    const GLenum property = 0x9302; // GL_BUFFER_BINDING
    GLint binding = -1;
    getResource(program.shaderProgramID(), GL_SHADER_STORAGE_BLOCK, 0, 1, &property, 1, nullptr, &binding);
    EXPECT_EQ(binding, 3);
}

TEST_F(ShaderProgramReflectionGL, SummaryOfARealProgram)
{
    ReflectedProgram program;
    build(program, QStringLiteral("#version 150\nvoid main() { gl_Position = vec4(0.0); }\n"),
          QStringLiteral("#version 150\nuniform sampler2D u_A;\nuniform sampler2D u_B[3];\nuniform vec2 u_At;\n"
                         "out vec4 o_Color;\nvoid main()\n"
                         "{ o_Color = texture(u_A, u_At) + texture(u_B[0], u_At) + texture(u_B[2], u_At); }\n"));
    const LogCapture log;
    program.summaryUniforms();
    const QString place = QString::asprintf("%p", static_cast<const void*>(&program));
    EXPECT_EQ(log.messages(QtDebugMsg),
              QStringList({place + QStringLiteral(" Type 0x8B50 : 1"), place + QStringLiteral(" Type 0x8B5E : 4"),
                           place + QStringLiteral(" Texture Samplers 4")}));
}
