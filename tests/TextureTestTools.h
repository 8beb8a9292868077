// SPDX-License-Identifier: MIT
#pragma once

/// \file
/// What the suites of textures share: a fake driver with four texture image units, small helpers around call lists, and
/// runs with the logging switch off.

#include "Texture.h"

#include "GLFunctions.h"
#include "support/CallLog.h"
#include "support/FakeDriver.h"
#include "support/LogCapture.h"
#include "support/TestAccess.h"

#include <QCoreApplication>
#include <QProcess>
#include <QProcessEnvironment>
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

/// Whether this process was started with the switch off. Not asked of the library, which is under test.
inline bool isLoggingSwitchedOff()
{
    return qEnvironmentVariable("VRK_ENABLE_LOGGING") == QStringLiteral("0");
}

/// Runs one test of this program in a process of its own with the switch off, since a process reads it only once.
inline testing::AssertionResult passesWithLoggingOff(const char* test)
{
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("VRK_ENABLE_LOGGING"), QStringLiteral("0"));
    for (const char* const name :
         {"GTEST_OUTPUT", "GTEST_SHARD_INDEX", "GTEST_TOTAL_SHARDS", "GTEST_SHARD_STATUS_FILE"})
        environment.remove(QString::fromLatin1(name));
    QProcess process;
    process.setProcessEnvironment(environment);
    process.setProcessChannelMode(QProcess::MergedChannels);
    process.start(QCoreApplication::applicationFilePath(), {QStringLiteral("--gtest_filter=") + QLatin1String(test)});
    const bool ended = process.waitForFinished(60000);
    const QByteArray output = process.readAll();
    if (ended && process.exitStatus() == QProcess::NormalExit && process.exitCode() == 0 &&
        output.contains("[  PASSED  ] 1 test."))
        return testing::AssertionSuccess();
    return testing::AssertionFailure() << test << ": " << output.toStdString();
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
