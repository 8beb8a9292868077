// SPDX-License-Identifier: MIT
#pragma once

/// \file
/// What the suites of BufferObject share: the fixture on the fake driver, and buffers that end with their scope.

#include "BufferObject.h"

#include "support/CallLog.h"
#include "support/FakeDriver.h"
#include "support/LogCapture.h"
#include "support/TestAccess.h"

#include <array>
#include <memory>

namespace Harrow::Vrk::Test
{

using Buffer = std::unique_ptr<BufferObject>;

inline Buffer newBuffer(GLenum target = GL_ARRAY_BUFFER)
{
    Buffer buffer(BufferObjectTestAccess::make());
    if (target)
        buffer->setTarget(target);
    return buffer;
}

inline Buffer wrapBuffer(GLuint name, GLenum target = GL_ARRAY_BUFFER)
{
    Buffer buffer(BufferObjectTestAccess::wrap(name));
    buffer->setTarget(target);
    return buffer;
}

inline QStringList failure(const char* condition, const QString& message)
{
    return {assertionLine(QString::fromLatin1(condition), message)};
}

inline constexpr std::array<float, 6> kSix = {1, 2, 3, 4, 5, 6};
inline constexpr GLenum kStatic = GL_STATIC_DRAW;

class BufferObjects : public FakeDriverTest
{
protected:
    /// A driver of the 3.2 core profile.
    void useFloor()
    {
        for (const char* const name :
             {"glBufferStorage", "glNamedBufferData", "glNamedBufferStorage", "glNamedBufferSubData"})
            driver.refuse(name);
    }
};

} // namespace Harrow::Vrk::Test
