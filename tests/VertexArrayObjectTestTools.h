// SPDX-License-Identifier: MIT
#pragma once

/// \file
/// What the suites of VertexArrayObject share: the fixture on the fake driver, and a program whose attributes the test
/// names.

#include "BufferObject.h"
#include "OpenGLDeviceContext.h"
#include "ShaderProgram.h"
#include "VertexArrayObject.h"
#include "support/CallLog.h"
#include "support/FakeDriver.h"
#include "support/LogCapture.h"
#include "support/ObjectAccess.h"

#include <cstring>

namespace Harrow::Vrk::Test
{

inline const QString kAttribute = QStringLiteral("va_Vertex");

inline QSharedPointer<BufferObject> newArrayBuffer()
{
    auto buffer = OpenGLDeviceContext::current()->newBuffer();
    buffer->setTarget(GL_ARRAY_BUFFER);
    return buffer;
}

class VertexArrayObjectTest : public FakeDriverTest
{
protected:
    void SetUp() override
    {
        FakeDriverTest::SetUp();
        vao = VertexArrayObjectTestAccess::make();
    }

    QString assertion(const char* condition, const char* message) const
    {
        return assertionLine(QString::fromLatin1(condition), QString::fromLatin1(message));
    }

    /// A program on this driver with the given attributes, at locations 0, 1, …
    QSharedPointer<ShaderProgram> linkedProgram(const QList<QByteArray>& names)
    {
        static QList<QByteArray> attributes;
        attributes = names;
        driver.replace(
            "glGetProgramiv",
            +[](GLuint, GLenum parameter, GLint* value)
            { *value = parameter == GL_ACTIVE_ATTRIBUTES ? GLint(attributes.size()) : parameter == GL_LINK_STATUS; });
        driver.replace(
            "glGetActiveAttrib",
            +[](GLuint, GLuint index, GLsizei, GLsizei* length, GLint* size, GLenum* type, GLchar* name)
            {
                const QByteArray& text = attributes.at(index);
                std::memcpy(name, text.constData(), text.size() + 1);
                if (length)
                    *length = GLsizei(text.size());
                *size = 1;
                *type = GL_FLOAT_VEC3;
            });
        driver.replace(
            "glGetAttribLocation", +[](GLuint, const GLchar* name) { return GLint(attributes.indexOf(name)); });
        driver.load();
        auto program = QSharedPointer<ShaderProgram>::create();
        EXPECT_TRUE(program->link());
        EXPECT_EQ(program->getVertexAttributeNameLocationMap().size(), names.size());
        return program;
    }

    QSharedPointer<VertexArrayObject> vao;
};

} // namespace Harrow::Vrk::Test
