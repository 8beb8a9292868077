// SPDX-License-Identifier: MIT
#pragma once

/// \file
/// What the suites of UniformBufferObject share: the fixture on the fake driver, buffers and blocks, and a program
/// whose blocks the test names.

#include "AutoBinder.h"
#include "BufferObject.h"
#include "OpenGLDeviceContext.h"
#include "ShaderProgram.h"
#include "UBOContextData.h"
#include "UniformBufferObject.h"
#include "support/CallLog.h"
#include "support/FakeDriver.h"
#include "support/LogCapture.h"
#include "support/ObjectAccess.h"

#include <cstring>

namespace Harrow::Vrk::Test
{

inline const QString kBlockName = QStringLiteral("u_Block");
inline const QString kNoBinding = QStringLiteral("There is no available uniformBlockBindings");

/// A buffer with `bytes` bytes in it, or nothing.
inline QSharedPointer<BufferObject> newBlockBuffer(int bytes = 16, GLenum target = GL_UNIFORM_BUFFER)
{
    auto buffer = OpenGLDeviceContext::current()->newBuffer();
    buffer->setTarget(target);
    if (bytes > 0)
    {
        const AutoBinder binder(buffer.data());
        buffer->uploadArbitraryData(QByteArray(bytes, 0).constData(), bytes, GL_STATIC_DRAW, 1);
    }
    return buffer;
}

inline QSharedPointer<UniformBufferObject> newBlock(QSharedPointer<BufferObject> buffer,
                                                    const QString& name = kBlockName)
{
    return OpenGLDeviceContext::current()->newUniformBuffer(name, std::move(buffer));
}

class UniformBufferObjectTest : public FakeDriverTest
{
protected:
    void SetUp() override
    {
        FakeDriverTest::SetUp();
        UniformBufferObjectTestAccess::forgetContexts();
    }

    void TearDown() override
    {
        UniformBufferObjectTestAccess::forgetContexts();
    }

    /// A program on this driver with the given uniform blocks, at indices 0, 1, …
    QSharedPointer<ShaderProgram> linkedProgram(const QList<QByteArray>& names)
    {
        static QList<QByteArray> blocks;
        blocks = names;
        driver.replace(
            "glGetProgramiv",
            +[](GLuint, GLenum parameter, GLint* value)
            { *value = parameter == GL_ACTIVE_UNIFORM_BLOCKS ? GLint(blocks.size()) : parameter == GL_LINK_STATUS; });
        driver.replace(
            "glGetActiveUniformBlockName",
            +[](GLuint, GLuint index, GLsizei, GLsizei* length, GLchar* name)
            {
                std::memcpy(name, blocks.at(index).constData(), blocks.at(index).size() + 1);
                if (length)
                    *length = GLsizei(blocks.at(index).size());
            });
        driver.load();
        auto program = QSharedPointer<ShaderProgram>::create();
        EXPECT_TRUE(program->link());
        EXPECT_EQ(program->getUniformBlockIndex(QString::fromLatin1(names.last())), names.size() - 1);
        return program;
    }
};

inline QString bindBase(int binding, GLuint buffer, GLenum target = GL_UNIFORM_BUFFER)
{
    return CallLog::call("glBindBufferBase", target, binding, buffer);
}

} // namespace Harrow::Vrk::Test
