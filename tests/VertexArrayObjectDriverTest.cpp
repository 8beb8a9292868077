// SPDX-License-Identifier: MIT
// VertexArrayObject on the real driver: what reaches the shader.
#include "VertexArrayObjectTestTools.h"

#include "support/GLTest.h"
#include "support/TransformFeedback.h"

#include <algorithm>
#include <array>
#include <climits>

namespace Harrow::Vrk::Test
{
namespace
{

using Access = VertexArrayObjectTestAccess;

class VertexArrayObjectGL : public GLTest
{
protected:
    /// Draws `count` points of a bound vertex array and gives what reached the attributes "va_Float", of 4 components,
    /// or "va_Integer", of 2.
    template <typename Value>
    QList<Value> reachedShader(const char* declaration, const char* varying, int components, int count)
    {
        ShaderProgram program(nullptr);
        program.addShader(GL_VERTEX_SHADER, QString::fromLatin1("#version 150\n%1\nvoid main() { vo_Value = va_Value; "
                                                                "gl_Position = vec4(0.0); }\n")
                                                .arg(QString::fromLatin1(declaration)));
        program.setTransformFeedbackVaryings({QString::fromLatin1(varying)}, GL_INTERLEAVED_ATTRIBS);
        EXPECT_TRUE(program.link());
        EXPECT_TRUE(program.bind());
        EXPECT_TRUE(vao->bind());
        EXPECT_TRUE(vao->enableShaderProgramArrays(&program));
        TransformFeedback feedback(GL_POINTS);
        glDrawArrays(GL_POINTS, 0, count);
        const auto values = feedback.end<Value>(components);
        EXPECT_TRUE(vao->unbind());
        EXPECT_TRUE(program.unbind());
        return values;
    }

    QList<float> reachedFloats(int count)
    {
        return reachedShader<float>("in vec4 va_Value; out vec4 vo_Value;", "vo_Value", 4, count);
    }

    QList<GLint> reachedIntegers(int count)
    {
        return reachedShader<GLint>("in ivec2 va_Value; flat out ivec2 vo_Value;", "vo_Value", 2, count);
    }

    template <typename Value, size_t Count> QSharedPointer<BufferObject> filled(const std::array<Value, Count>& values)
    {
        auto buffer = newArrayBuffer();
        EXPECT_TRUE(buffer->bind());
        EXPECT_TRUE(buffer->uploadArbitraryData(values.data(), int(Count), GL_STATIC_DRAW, sizeof(Value)));
        EXPECT_TRUE(buffer->unbind());
        return buffer;
    }

    const QString name = QStringLiteral("va_Value");
    QSharedPointer<VertexArrayObject> vao;

    void SetUp() override
    {
        GLTest::SetUp();
        vao = OpenGLDeviceContext::current()->newVAO();
    }

    void TearDown() override
    {
        vao.clear();
        GLTest::TearDown();
    }
};

TEST_F(VertexArrayObjectGL, FirstBindMakesAVertexArrayThatDestructionDeletes)
{
    EXPECT_TRUE(vao->bind());
    const GLuint made = vao->getVAO();
    EXPECT_TRUE(glIsVertexArray(made));
    EXPECT_TRUE(vao->unbind());
    vao.clear();
    EXPECT_FALSE(glIsVertexArray(made));
}

TEST_F(VertexArrayObjectGL, FloatsReachTheShader)
{
    EXPECT_TRUE(vao->upload(name, newArrayBuffer(), {1, 2, 3, 4, 5, 6}, 3, GL_STATIC_DRAW));
    EXPECT_EQ(reachedFloats(2), QList<float>({1, 2, 3, 1, 4, 5, 6, 1}));
    EXPECT_TRUE(vao->subUpload(name, {7, 8, 9}, 3, 3));
    EXPECT_EQ(reachedFloats(2), QList<float>({1, 2, 3, 1, 7, 8, 9, 1}));
}

TEST_F(VertexArrayObjectGL, HalfFloatsReachTheShaderAsFloats)
{
    EXPECT_TRUE(vao->upload(name, filled(std::array<GLushort, 2>{0x3C00, 0xC100}), 2, GL_HALF_FLOAT));
    EXPECT_EQ(reachedFloats(1), QList<float>({1.0f, -2.5f, 0, 1}));
}

TEST_F(VertexArrayObjectGL, NormalizedBytesReachTheShaderAsFractions)
{
    vao->registerBO(name, filled(std::array<GLubyte, 4>{0, 255, 51, 255}), 4, GL_UNSIGNED_BYTE, true, 0, 0);
    const QList<float> values = reachedFloats(1);
    ASSERT_EQ(values.size(), 4);
    EXPECT_FLOAT_EQ(values[0], 0.0f);
    EXPECT_FLOAT_EQ(values[1], 1.0f);
    EXPECT_FLOAT_EQ(values[2], 0.2f);
    EXPECT_FLOAT_EQ(values[3], 1.0f);
}

TEST_F(VertexArrayObjectGL, IntegersReachTheShaderAsIntegers)
{
    vao->registerBO(name, filled(std::array<GLint, 4>{INT_MIN, 7, -8, INT_MAX}), 2, GL_INT);
    EXPECT_EQ(reachedIntegers(2), QList<GLint>({INT_MIN, 7, -8, INT_MAX}));
}

TEST_F(VertexArrayObjectGL, StrideAndOffsetPickOutOfInterleavedData)
{
    const auto buffer = filled(std::array<float, 8>{1, 2, 3, 4, 5, 6, 7, 8});
    vao->registerBO(name, buffer, 2, GL_FLOAT, false, 16, 8);
    EXPECT_EQ(reachedFloats(2), QList<float>({3, 4, 0, 1, 7, 8, 0, 1}));
}

TEST_F(VertexArrayObjectGL, MappedMemoryIsWhatTheShaderReads)
{
    EXPECT_TRUE(vao->upload(name, newArrayBuffer(), QList<float>(4), 4, GL_STATIC_DRAW));
    auto* const memory = static_cast<float*>(vao->mapBO(name));
    ASSERT_NE(memory, nullptr);
    for (int i = 0; i < 4; ++i)
        memory[i] = float(i) * 1.5f;
    vao->unmapBO(name);
    EXPECT_EQ(reachedFloats(1), QList<float>({0, 1.5f, 3, 4.5f}));
}

TEST_F(VertexArrayObjectGL, AnAttributeWithoutARecordIsAConstantUntilOneIsRegistered)
{
    // A vertex array that has not seen the attribute reports four components, for which no constant is set, so what the
    // shader reads is the context's present value.
    glVertexAttrib4f(0, 9, 9, 9, 9);
    EXPECT_EQ(reachedFloats(1), QList<float>({9, 9, 9, 9}));
    // Once it has seen three components, the constant has four.
    EXPECT_TRUE(vao->upload(name, newArrayBuffer(), {1, 2, 3}, 3, GL_STATIC_DRAW));
    EXPECT_EQ(reachedFloats(1), QList<float>({1, 2, 3, 1}));

    ShaderProgram other(nullptr);
    other.addShader(GL_VERTEX_SHADER,
                    QStringLiteral("#version 150\nin vec4 va_Unknown; void main() { gl_Position = va_Unknown; }\n"));
    other.setTransformFeedbackVaryings({QStringLiteral("gl_Position")}, GL_INTERLEAVED_ATTRIBS);
    ASSERT_TRUE(other.link());
    ASSERT_EQ(other.getVertexAttributeLocation(QStringLiteral("va_Unknown")), 0);
    ASSERT_TRUE(other.bind() && vao->bind());
    EXPECT_TRUE(vao->enableShaderProgramArrays(&other));
    TransformFeedback feedback(GL_POINTS);
    glDrawArrays(GL_POINTS, 0, 1);
    EXPECT_EQ(feedback.end<float>(4), QList<float>({0, 0, 0, 0}));
    vao->unbind();
    other.unbind();
    glVertexAttrib4f(0, 0, 0, 0, 1);
}

TEST_F(VertexArrayObjectGL, ABufferThatIsNoVertexBufferIsReportedAndTheNextDrawReadsAConstant)
{
    ShaderProgram program(nullptr);
    program.addShader(GL_VERTEX_SHADER,
                      QStringLiteral("#version 150\nin vec4 va_Value; void main() { gl_Position = va_Value; }\n"));
    program.setTransformFeedbackVaryings({QStringLiteral("gl_Position")}, GL_INTERLEAVED_ATTRIBS);
    ASSERT_TRUE(program.link() && program.bind());
    const QString unfed =
        assertionLine(QStringLiteral("hasVertexBufferBound(*data.bo)"),
                      QStringLiteral("No vertex buffer is bound for attribute index 0 on enable array"));
    for (const GLenum target : {GL_ELEMENT_ARRAY_BUFFER, GL_UNIFORM_BUFFER, GL_NONE})
        for (const GLuint offset : {0u, 16u})
        {
            const auto buffer = filled(std::array<float, 8>{1, 2, 3, 4, 5, 6, 7, 8});
            buffer->setTarget(target);
            vao->registerBO(name, buffer, 4, GL_FLOAT, false, 0, offset);
            ASSERT_TRUE(vao->bind());
            LogCapture log;
            EXPECT_FALSE(vao->enableShaderProgramArrays(&program));
            EXPECT_EQ(log.messages().last(), unfed);
            GLint enabled = 1;
            glGetVertexAttribiv(0, GL_VERTEX_ATTRIB_ARRAY_ENABLED, &enabled);
            EXPECT_EQ(enabled, 0);
            TransformFeedback feedback(GL_POINTS);
            glDrawArrays(GL_POINTS, 0, 1);
            EXPECT_EQ(feedback.end<float>(4), QList<float>({0, 0, 0, 1})) << target;
            EXPECT_TRUE(vao->unbind());
        }
    program.unbind();
}

TEST_F(VertexArrayObjectGL, TheNameIsMadeInTheContextOfTheFirstBind)
{
    EXPECT_TRUE(vao->upload(name, newArrayBuffer(), {1, 2, 3, 4}, 4, GL_STATIC_DRAW)); // here
    glFinish();
    constexpr GLsizei kOthers = 100; // names that this context has not given out
    GLuint others[kOthers] = {};
    GLuint made = 0;
    HeadlessContext second(&context());
    ASSERT_TRUE(second.isValid() && second.makeCurrent());
    glGenVertexArrays(kOthers, others);
    EXPECT_EQ(vao->getVAO(), 0u);
    EXPECT_EQ(reachedFloats(1), QList<float>({1, 2, 3, 4}));
    made = vao->getVAO();
    EXPECT_EQ(std::count(others, others + kOthers, made), 0);
    EXPECT_TRUE(glIsVertexArray(made));
    ASSERT_TRUE(context().makeCurrent());
    EXPECT_FALSE(glIsVertexArray(made)) << "vertex arrays are not shared";
    ASSERT_TRUE(second.makeCurrent());
    vao.clear();
    EXPECT_FALSE(glIsVertexArray(made));
    glDeleteVertexArrays(kOthers, others);
    EXPECT_EQ(glGetError(), GLenum(GL_NO_ERROR));
    ASSERT_TRUE(context().makeCurrent());
}

TEST_F(VertexArrayObjectGL, OneVertexArrayServesTwoProgramsInTurn)
{
    EXPECT_TRUE(vao->upload(name, newArrayBuffer(), {1, 2, 3, 4}, 4, GL_STATIC_DRAW));
    EXPECT_EQ(reachedFloats(1), QList<float>({1, 2, 3, 4}));
    vao->registerBO(name, filled(std::array<GLint, 2>{5, 6}), 2, GL_INT);
    EXPECT_EQ(reachedIntegers(1), QList<GLint>({5, 6}));
}

TEST_F(VertexArrayObjectGL, TheNumberOfAttributesIsTheDrivers)
{
    GLint count = 0;
    glGetIntegerv(GL_MAX_VERTEX_ATTRIBS, &count);
    EXPECT_EQ(Access::attributeNames(*vao).size(), count);
}

} // namespace
} // namespace Harrow::Vrk::Test
