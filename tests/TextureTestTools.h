// SPDX-License-Identifier: MIT
#pragma once

/// \file
/// What the suites of textures on the fake driver share: a driver with four texture image units, and small helpers
/// around call lists.

#include "Texture.h"

#include "GLFunctions.h"
#include "support/CallLog.h"
#include "support/FakeDriver.h"
#include "support/LogCapture.h"
#include "support/TestAccess.h"

#include <QString>
#include <QStringList>

#include <array>
#include <memory>

namespace Harrow::Vrk::Test
{

using Recorded = std::array<int, 4>;

inline constexpr Recorded kNothing = {0, 0, 0, 0};
inline constexpr int kUnits = 4;

inline QString readOnlyLine()
{
    return assertionLine(QStringLiteral("false == _readonly"),
                         QStringLiteral("Not allowed to change a readonly texture"));
}

inline QStringList failure(const char* condition, const char* message)
{
    return {assertionLine(QString::fromLatin1(condition), QString::fromLatin1(message))};
}

inline QString activate(int unit)
{
    return CallLog::call("glActiveTexture", GL_TEXTURE0 + unit);
}

inline QString bindName(GLuint name, GLenum target = GL_TEXTURE_2D)
{
    return CallLog::call("glBindTexture", target, name);
}

inline QString parameter(GLenum target, GLenum name, GLint value)
{
    return CallLog::call("glTexParameteri", target, name, value);
}

class TextureFixture : public FakeDriverTest
{
protected:
    using Access = TextureTestAccess;

    void SetUp() override
    {
        driver.setInteger(GL_MAX_TEXTURE_IMAGE_UNITS, kUnits);
        FakeDriverTest::SetUp();
    }

    static std::unique_ptr<Texture> newTexture(GLenum target = GL_TEXTURE_2D)
    {
        auto texture = std::make_unique<Texture>(nullptr);
        texture->setTarget(target);
        return texture;
    }

    /// So that the query of the limit is not among the calls of a test.
    static void makeRecord()
    {
        TextureUnits::ofCurrentContext();
    }
};

} // namespace Harrow::Vrk::Test
