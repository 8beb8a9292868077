// SPDX-License-Identifier: MIT
#include "ShaderProgram.h"

#include "GLFunctions.h"
#include "UniformTestValues.h"
#include "support/GLTest.h"
#include "support/LogCapture.h"

#include <QColor>
#include <QGenericMatrix>
#include <QMatrix4x4>
#include <QVariant>
#include <QVector2D>
#include <QVector3D>
#include <QVector4D>

#include <array>
#include <memory>

using namespace Harrow::Vrk;
using namespace Harrow::Vrk::Test;

namespace
{

/// A real program with a uniform of each kind, bound.
class ShaderProgramUniformGL : public GLTest
{
protected:
    void SetUp() override
    {
        GLTest::SetUp();
        program = std::make_unique<ShaderProgram>(nullptr);
        program->addShader(GL_VERTEX_SHADER, QString::fromLatin1(R"(#version 150
uniform int u_Int;
uniform bool u_Bool;
uniform uint u_UInt;
uniform float u_Float;
uniform vec2 u_Vec2;
uniform vec3 u_Vec3;
uniform vec4 u_Vec4;
uniform mat4 u_Mat4;
uniform mat3 u_Mat3;
uniform mat4x2 u_Mat4x2;
uniform mat2 u_Mat2;
uniform float u_Floats[4];
uniform vec3 u_Vec3s[6];
uniform ivec2 u_IVec2s[3];
uniform uvec4 u_UVec4s[2];
uniform sampler2D u_Sampler;
void main()
{
    vec4 sum = u_Vec4 + vec4(u_Vec3, 1.0) + vec4(u_Vec2, u_Float, float(u_Int) + float(u_UInt));
    sum += u_Mat4 * sum + vec4(u_Mat3 * sum.xyz, 1.0) + vec4(u_Mat4x2 * sum, u_Mat2 * sum.xy);
    if (u_Bool)
        sum += texture(u_Sampler, sum.xy);
    int i = gl_VertexID;
    sum += vec4(u_Floats[i % 4]) + vec4(u_Vec3s[i % 6], 1.0) + vec4(u_IVec2s[i % 3].xyxy) + vec4(u_UVec4s[i % 2]);
    gl_Position = sum;
}
)"));
        program->addShader(GL_FRAGMENT_SHADER,
                           QStringLiteral("#version 150\nout vec4 o_Color;\nvoid main() { o_Color = vec4(1.0); }\n"));
        ASSERT_TRUE(program->link()) << program->log().toStdString();
        ASSERT_TRUE(program->bind());
    }

    void TearDown() override
    {
        if (program)
            program->unbind();
        program.reset();
        GLTest::TearDown();
    }

    int location(const char* name) const
    {
        const int result = program->getUniformLocation(QString::fromLatin1(name));
        EXPECT_GE(result, 0) << name;
        return result;
    }

    QList<float> floats(const char* name, int count) const
    {
        std::array<GLfloat, 16> values = {};
        glGetUniformfv(program->shaderProgramID(), location(name), values.data());
        return QList<float>(values.begin(), values.begin() + count);
    }

    QList<int> ints(const char* name, int count) const
    {
        std::array<GLint, 4> values = {};
        glGetUniformiv(program->shaderProgramID(), location(name), values.data());
        return QList<int>(values.begin(), values.begin() + count);
    }

    QList<unsigned int> uints(const char* name, int count) const
    {
        std::array<GLuint, 4> values = {};
        glGetUniformuiv(program->shaderProgramID(), location(name), values.data());
        return QList<unsigned int>(values.begin(), values.begin() + count);
    }

    static QList<float> counting(int count)
    {
        QList<float> values;
        for (int i = 1; i <= count; ++i)
            values.append(static_cast<float>(i));
        return values;
    }

    std::unique_ptr<ShaderProgram> program;
};

} // namespace

TEST_F(ShaderProgramUniformGL, Bool)
{
    EXPECT_TRUE(program->setUniform("u_Bool", QVariant(true)));
    EXPECT_EQ(ints("u_Bool", 1), QList<int>({1}));
    EXPECT_TRUE(program->setUniform("u_Bool", QVariant(false)));
    EXPECT_EQ(ints("u_Bool", 1), QList<int>({0}));
}

TEST_F(ShaderProgramUniformGL, Int)
{
    EXPECT_TRUE(program->setUniform("u_Int", QVariant(-7)));
    EXPECT_EQ(ints("u_Int", 1), QList<int>({-7}));
    EXPECT_TRUE(program->setUniform(location("u_Int"), 8));
    EXPECT_EQ(ints("u_Int", 1), QList<int>({8}));
}

TEST_F(ShaderProgramUniformGL, Image)
{
    EXPECT_TRUE(program->setUniform("u_Sampler", QVariant(3)));
    EXPECT_EQ(ints("u_Sampler", 1), QList<int>({3}));
    EXPECT_TRUE(program->setUniform("u_Sampler", QVariant(someImage())));
    EXPECT_EQ(ints("u_Sampler", 1), QList<int>({0}));
}

TEST_F(ShaderProgramUniformGL, UInt)
{
    EXPECT_TRUE(program->setUniform("u_UInt", QVariant(4000000000u)));
    EXPECT_EQ(uints("u_UInt", 1), QList<unsigned int>({4000000000u}));
    EXPECT_TRUE(program->setUniform(location("u_UInt"), 9u));
    EXPECT_EQ(uints("u_UInt", 1), QList<unsigned int>({9u}));
}

TEST_F(ShaderProgramUniformGL, DoubleAndFloat)
{
    EXPECT_TRUE(program->setUniform("u_Float", QVariant(0.1)));
    EXPECT_EQ(floats("u_Float", 1), QList<float>({0.1f}));
    EXPECT_TRUE(program->setUniform("u_Float", QVariant(0.2f)));
    EXPECT_EQ(floats("u_Float", 1), QList<float>({0.2f}));
}

TEST_F(ShaderProgramUniformGL, Color)
{
    EXPECT_TRUE(program->setUniform("u_Vec4", QVariant(QColor(255, 0, 51, 102))));
    const QList<float> values = floats("u_Vec4", 4);
    const QList<float> expected = {1.0f, 0.0f, 0.2f, 0.4f};
    for (int i = 0; i < 4; ++i)
        EXPECT_NEAR(values[i], expected[i], 1e-6f); // QColor holds 16 bits a part
}

TEST_F(ShaderProgramUniformGL, Vectors)
{
    EXPECT_TRUE(program->setUniform("u_Vec2", QVariant(QVector2D(1, 2))));
    EXPECT_EQ(floats("u_Vec2", 2), QList<float>({1, 2}));
    EXPECT_TRUE(program->setUniform("u_Vec3", QVariant(QVector3D(1, 2, 3))));
    EXPECT_EQ(floats("u_Vec3", 3), QList<float>({1, 2, 3}));
    EXPECT_TRUE(program->setUniform("u_Vec4", QVariant(QVector4D(1, 2, 3, 4))));
    EXPECT_EQ(floats("u_Vec4", 4), QList<float>({1, 2, 3, 4}));
}

TEST_F(ShaderProgramUniformGL, Matrix4)
{
    EXPECT_TRUE(program->setUniform("u_Mat4", QVariant(countingMatrix4())));
    EXPECT_EQ(floats("u_Mat4", 16), counting(16));
    // Columns first: a translation stands at the end.
    QMatrix4x4 translation;
    translation.translate(7, 8, 9);
    EXPECT_TRUE(program->setUniform("u_Mat4", QVariant(translation)));
    EXPECT_EQ(floats("u_Mat4", 16).mid(12), QList<float>({7, 8, 9, 1}));
}

TEST_F(ShaderProgramUniformGL, Matrix3)
{
    EXPECT_TRUE(program->setUniform("u_Mat3", QVariant::fromValue(countingMatrix<QMatrix3x3>())));
    EXPECT_EQ(floats("u_Mat3", 9), counting(9));
}

TEST_F(ShaderProgramUniformGL, Matrix4x2)
{
    EXPECT_TRUE(program->setUniform("u_Mat4x2", QVariant::fromValue(countingMatrix<QMatrix4x2>())));
    EXPECT_EQ(floats("u_Mat4x2", 8), counting(8));
}

TEST_F(ShaderProgramUniformGL, Matrix2)
{
    EXPECT_TRUE(program->setUniform("u_Mat2", QVariant::fromValue(countingMatrix<QMatrix2x2>())));
    EXPECT_EQ(floats("u_Mat2", 4), counting(4));
}

TEST_F(ShaderProgramUniformGL, RangedFloatUnderItsAlias)
{
    EXPECT_TRUE(program->setUniform("u_Float", rangedFloat(2.5f)));
    EXPECT_EQ(floats("u_Float", 1), QList<float>({2.5f}));
}

TEST_F(ShaderProgramUniformGL, RangedDoubleUnderItsAlias)
{
    EXPECT_TRUE(program->setUniform("u_Float", rangedDouble(0.1)));
    EXPECT_EQ(floats("u_Float", 1), QList<float>({0.1f}));
}

TEST_F(ShaderProgramUniformGL, TextLeavesTheUniform)
{
    EXPECT_TRUE(program->setUniform("u_Float", QVariant(0.5f)));
    const LogCapture quiet;
    EXPECT_TRUE(program->setUniform("u_Float", QVariant(QStringLiteral("1"))));
    EXPECT_EQ(floats("u_Float", 1), QList<float>({0.5f}));
}

TEST_F(ShaderProgramUniformGL, ListsFillArrays)
{
    EXPECT_TRUE(program->setUniform("u_Floats", QList<float>({1, 2, 3, 4})));
    EXPECT_EQ(floats("u_Floats[3]", 1), QList<float>({4}));

    // Six elements stand for six vectors, of which the numbers fill two.
    EXPECT_TRUE(program->setUniform("u_Vec3s", QList<float>(18, 9.0f), 3));
    EXPECT_EQ(floats("u_Vec3s[5]", 3), QList<float>({9, 9, 9}));
    EXPECT_TRUE(program->setUniform("u_Vec3s", QList<float>({1, 2, 3, 4, 5, 6}), 3));
    EXPECT_EQ(floats("u_Vec3s[0]", 3), QList<float>({1, 2, 3}));
    EXPECT_EQ(floats("u_Vec3s[1]", 3), QList<float>({4, 5, 6}));
    EXPECT_EQ(floats("u_Vec3s[2]", 3), QList<float>({0, 0, 0}));
    EXPECT_EQ(floats("u_Vec3s[5]", 3), QList<float>({0, 0, 0}));

    EXPECT_TRUE(program->setUniform("u_IVec2s", QList<int>({-1, 2, -3, 4, -5, 6}), 2));
    EXPECT_EQ(ints("u_IVec2s[2]", 2), QList<int>({-5, 6}));
    EXPECT_TRUE(program->setUniform("u_UVec4s", QList<unsigned int>({1, 2, 3, 4, 5, 6, 7, 4000000000u}), 4));
    EXPECT_EQ(uints("u_UVec4s[1]", 4), QList<unsigned int>({5, 6, 7, 4000000000u}));
}
