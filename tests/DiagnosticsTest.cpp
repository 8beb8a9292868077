// SPDX-License-Identifier: MIT
#include "Diagnostics.h"

#include "support/LogCapture.h"

#include <gtest/gtest.h>

using namespace Harrow::Vrk::Test;

namespace
{

bool returnsFalseUnless(bool condition)
{
    VRK_ASSERT_RETURN(condition, false, "the value was %d", 7);
    return true;
}

int* returnsNullUnless(int* pointer)
{
    VRK_ASSERT_RETURN(nullptr != pointer, nullptr, "no pointer");
    return pointer;
}

} // namespace

TEST(Diagnostics, AssertionPrintsItsExactLineAndGoesOn)
{
    const LogCapture log;
    bool wentOn = false;
    const int line = __LINE__ + 1;
    VRK_ASSERT(1 + 1 == 3, "sum is %d", 2);
    wentOn = true;
    EXPECT_TRUE(wentOn);
    ASSERT_EQ(log.lines().size(), 1);
    EXPECT_EQ(log.lines()[0].type, QtCriticalMsg);
    EXPECT_EQ(log.lines()[0].text,
              QStringLiteral("[DiagnosticsTest.cpp:%1] [ !! ] Assertion '1 + 1 == 3' failed: sum is 2").arg(line));
}

TEST(Diagnostics, AssertionThatHoldsIsSilent)
{
    const LogCapture log;
    VRK_ASSERT(true, "never %d", 1);
    EXPECT_TRUE(returnsFalseUnless(true));
    EXPECT_TRUE(log.lines().isEmpty());
}

TEST(Diagnostics, ReturningFormReturnsItsResult)
{
    const LogCapture log;
    EXPECT_FALSE(returnsFalseUnless(false));
    EXPECT_EQ(returnsNullUnless(nullptr), nullptr);
    EXPECT_EQ(log.messages(),
              QStringList({assertionLine(QStringLiteral("condition"), QStringLiteral("the value was 7")),
                           assertionLine(QStringLiteral("nullptr != pointer"), QStringLiteral("no pointer"))}));
}

TEST(Diagnostics, PercentSignOfTheConditionIsEscapedByABackslash)
{
    const LogCapture log;
    const int count = 7;
    VRK_ASSERT(0 == (count % 2), "%d is odd", count);
    EXPECT_EQ(log.messages(),
              QStringList({assertionLine(QStringLiteral("0 == (count \\% 2)"), QStringLiteral("7 is odd"))}));
}

TEST(Diagnostics, ConditionIsPrintedAsWrittenAndNotMacroExpanded)
{
    const LogCapture log;
    const void* const object = nullptr;
    VRK_ASSERT(NULL != object, "none");
    EXPECT_EQ(log.messages(), QStringList({assertionLine(QStringLiteral("NULL != object"), QStringLiteral("none"))}));
}

TEST(Diagnostics, MessageTextIsNeverReadAsAFormatAgain)
{
    const LogCapture log;
    VRK_ASSERT(false, "%s", "100%s %n");
    VRK_LOG_DEBUG("%s", "%d%s%n");
    EXPECT_EQ(log.messages(), QStringList({assertionLine(QStringLiteral("false"), QStringLiteral("100%s %n")),
                                           QStringLiteral("%d%s%n")}));
}

TEST(Diagnostics, LogLinesCarryFileLineAndText)
{
    const LogCapture log;
    const int line = __LINE__ + 1;
    VRK_LOG_DEBUG("debug %s", "text");
    VRK_LOG_WARNING("warning %d", 3);
    VRK_LOG_CRITICAL("critical");
    ASSERT_EQ(log.lines().size(), 3);
    EXPECT_EQ(log.lines()[0].type, QtDebugMsg);
    EXPECT_EQ(log.lines()[0].text, QStringLiteral("[DiagnosticsTest.cpp:%1] debug text").arg(line));
    EXPECT_EQ(log.lines()[1].type, QtWarningMsg);
    EXPECT_EQ(log.lines()[1].text, QStringLiteral("[DiagnosticsTest.cpp:%1] warning 3").arg(line + 1));
    EXPECT_EQ(log.lines()[2].type, QtCriticalMsg);
    EXPECT_EQ(log.lines()[2].text, QStringLiteral("[DiagnosticsTest.cpp:%1] critical").arg(line + 2));
}

TEST(Diagnostics, SourceFileIsShortenedAtItsLastSlash)
{
    const LogCapture log;
    Harrow::Vrk::Detail::logDebug("/a/b/Unit.cpp", 5, "x");
    Harrow::Vrk::Detail::logDebug("Unit.cpp", 6, "x");
    Harrow::Vrk::Detail::logDebug("folder\\Unit.cpp", 7, "x");
    EXPECT_EQ(log.texts(), QStringList({QStringLiteral("[Unit.cpp:5] x"), QStringLiteral("[Unit.cpp:6] x"),
                                        QStringLiteral("[folder\\Unit.cpp:7] x")}));
}

TEST(Diagnostics, LongAndNonAsciiMessagesComeThroughWhole)
{
    const LogCapture log;
    const QByteArray longText(100000, 'x');
    VRK_LOG_DEBUG("%s", longText.constData());
    VRK_LOG_DEBUG("%s", "grün");
    ASSERT_EQ(log.lines().size(), 2);
    EXPECT_EQ(log.messages()[0].size(), longText.size());
    EXPECT_EQ(log.messages()[1], QStringLiteral("grün"));
}
