// SPDX-License-Identifier: MIT
#include "ShaderProgram.h"

#include "Shader.h"
#include "ShaderTestTools.h"
#include "support/CallLog.h"
#include "support/LogCapture.h"
#include "support/ProcessEnding.h"
#include "support/TestAccess.h"

#include <QTime>

#include <memory>

using namespace Harrow::Vrk;
using namespace Harrow::Vrk::Test;

namespace
{

using Access = ShaderProgramTestAccess;

class ShaderProgramLink : public ScriptedDriverTest
{
};

/// Puts a clock in the place of the time of day. It goes on by `step` with each look.
class SteppedClock
{
public:
    SteppedClock(QTime start, int step)
    {
        now() = start;
        stepMilliseconds() = step;
        Access::setClock(+[]
                         {
                             const QTime result = now();
                             now() = now().addMSecs(stepMilliseconds()); // wraps at midnight
                             return result;
                         });
    }
    ~SteppedClock()
    {
        Access::setClock(&QTime::currentTime);
    }

private:
    static QTime& now()
    {
        static QTime time;
        return time;
    }
    static int& stepMilliseconds()
    {
        static int step = 0;
        return step;
    }
};

/// A driver that compiles in the background.
class ShaderProgramWait : public ScriptedDriverTest
{
protected:
    void SetUp() override
    {
        ScriptedDriverTest::SetUp();
        driver.setExtensions({"GL_ARB_parallel_shader_compile"});
    }

    static QString place(const ShaderProgram& program)
    {
        return QString::asprintf("%p", static_cast<const void*>(&program));
    }
};

/// Records which of the virtual steps were taken.
class SteppedProgram : public ShaderProgram
{
public:
    bool linkPre() override
    {
        steps.append(QStringLiteral("linkPre"));
        return preResult;
    }
    bool linkPreWait() override
    {
        steps.append(QStringLiteral("linkPreWait"));
        return true;
    }
    bool linkPost() override
    {
        steps.append(QStringLiteral("linkPost"));
        return true;
    }

    QStringList steps;
    bool preResult = true;
};

} // namespace

// ---- linkPreWait ---------------------------------------------------------------------------------------------------

TEST_F(ShaderProgramLink, LinkPreWaitIsTrueAtOnceWithoutTheExtension)
{
    ShaderProgram program(nullptr);
    ASSERT_TRUE(program.linkPre());
    script.completion = 0;
    const CallLog calls;
    EXPECT_TRUE(program.linkPreWait());
    EXPECT_TRUE(calls.list().isEmpty());
}

TEST_F(ShaderProgramWait, FinishedDriverIsAskedOnce)
{
    ShaderProgram program(nullptr);
    ASSERT_TRUE(program.linkPre());
    const CallLog calls;
    const LogCapture log;
    EXPECT_TRUE(program.linkPreWait());
    ASSERT_EQ(calls.list().size(), 1);
    EXPECT_TRUE(calls.list()[0].startsWith(QLatin1String("glGetProgramiv(1, 0x91b1, ")));
    EXPECT_TRUE(log.lines().isEmpty());
}

TEST_F(ShaderProgramWait, DriverThatWritesNothingCountsAsFinished)
{
    script.writesCompletion = false;
    ShaderProgram program(nullptr);
    ASSERT_TRUE(program.linkPre());
    const CallLog calls;
    EXPECT_TRUE(program.linkPreWait());
    EXPECT_EQ(calls.list().size(), 1);
}

TEST_F(ShaderProgramWait, WithoutAProgramItIsTrueAtOnce)
{
    script.completion = 0;
    ShaderProgram program(nullptr);
    const CallLog calls;
    const LogCapture log;
    EXPECT_TRUE(program.linkPreWait());
    ASSERT_EQ(calls.list().size(), 1);
    EXPECT_TRUE(calls.list()[0].startsWith(QLatin1String("glGetProgramiv(0, 0x91b1, ")));
    EXPECT_TRUE(log.lines().isEmpty());
}

TEST_F(ShaderProgramWait, WaitsUntilTheDriverIsDone)
{
    script.completion = 0;
    script.pollsUntilComplete = 7;
    ShaderProgram program(nullptr);
    ASSERT_TRUE(program.linkPre());
    const SteppedClock clock(QTime(12, 0), 100);
    const CallLog calls;
    const LogCapture log;
    EXPECT_TRUE(program.linkPreWait());
    EXPECT_EQ(calls.count(text("glGetProgramiv")), 8);
    EXPECT_TRUE(log.lines().isEmpty());
}

TEST_F(ShaderProgramWait, TimesOutAfterFiveSecondsAndIsTrueEvenSo)
{
    script.completion = 0x40;
    ShaderProgram program(nullptr);
    ASSERT_TRUE(program.linkPre());
    const SteppedClock clock(QTime(12, 0), 100);
    const CallLog calls;
    const LogCapture log;
    EXPECT_TRUE(program.linkPreWait());
    // Passes at 100, 200 … 5000 ms; the one at 5100 ms leaves. One read before the loop.
    EXPECT_EQ(calls.count(text("glGetProgramiv")), 51);
    // More than 1000 ms since the last report: at 1100, 2200, 3300 and 4400 ms.
    const QString sleep = place(program) + text(" Sleep 0x40");
    EXPECT_EQ(log.messages(), QStringList({sleep, sleep, sleep, sleep, place(program) + text(" TIMEOUT 0x40")}));
    EXPECT_EQ(log.messages(QtDebugMsg).size(), 5);
    EXPECT_TRUE(program.isLinked());
}

TEST_F(ShaderProgramWait, StatusIsReportedInTwoHexadecimalDigits)
{
    script.completion = 0;
    ShaderProgram program(nullptr);
    ASSERT_TRUE(program.linkPre());
    const SteppedClock clock(QTime(12, 0), 2600);
    const LogCapture log;
    EXPECT_TRUE(program.linkPreWait());
    EXPECT_EQ(log.messages(),
              QStringList({place(program) + text(" Sleep 0x00"), place(program) + text(" TIMEOUT 0x00")}));
}

TEST_F(ShaderProgramWait, MidnightDoesNotMakeTheWaitLonger)
{
    script.completion = 0;
    script.pollsUntilComplete = 1000; // so that a wait without end fails and doesn't hang
    ShaderProgram program(nullptr);
    ASSERT_TRUE(program.linkPre());
    const SteppedClock clock(QTime(23, 59, 58), 100);
    const CallLog calls;
    const LogCapture log;
    EXPECT_TRUE(program.linkPreWait());
    EXPECT_EQ(calls.count(text("glGetProgramiv")), 51);
    EXPECT_EQ(log.messages().size(), 5);
    EXPECT_EQ(log.messages().last(), place(program) + text(" TIMEOUT 0x00"));
}

// ---- linkPost, link, validate --------------------------------------------------------------------------------------

TEST_F(ShaderProgramLink, LinkPostReadsAttributesThenTheDrawIdThenBlocksAndDropsTheSources)
{
    script.attributes = {{"va_Vertex", 2}};
    script.uniformBlocks = {"u_Block"};
    driver.setUniformLocation("u_DrawID", 3);
    ShaderProgram program(nullptr);
    program.addShader(GL_VERTEX_SHADER, text("a"));
    ASSERT_TRUE(program.linkPre());
    const CallLog calls;
    const LogCapture log;
    EXPECT_TRUE(program.linkPost());
    EXPECT_EQ(functionNames(calls.list()), QStringList({"glGetProgramiv", "glGetProgramiv", "glGetActiveAttrib",
                                                        "glGetAttribLocation", "glGetUniformLocation", "glGetProgramiv",
                                                        "glGetActiveUniformBlockName", "glGetProgramInterfaceiv"}));
    EXPECT_TRUE(calls.list()[0].startsWith(QLatin1String("glGetProgramiv(1, 0x8b82, ")));
    EXPECT_EQ(calls.list()[4], CallLog::call("glGetUniformLocation", 1, "u_DrawID"));
    EXPECT_EQ(program.getUniformLocationNameID(), 3);
    EXPECT_EQ(program.getVertexAttributeLocation(text("va_Vertex")), 2);
    EXPECT_EQ(program.getUniformBlockIndex(text("u_Block")), 0);
    EXPECT_TRUE(Access::shaders(program).value(GL_VERTEX_SHADER)->sourceCode().isEmpty());
    EXPECT_TRUE(log.lines().isEmpty());
}

TEST_F(ShaderProgramLink, LinkFailureReportsTheLogAndWhatTheDriverHolds)
{
    script.linkStatus = 0;
    ShaderProgram program(nullptr);
    program.addShader(GL_VERTEX_SHADER, text("one\ntwo"));
    ASSERT_TRUE(program.linkPre());
    program.clearSource();
    const CallLog calls;
    const LogCapture log;
    EXPECT_FALSE(program.linkPost());
    EXPECT_EQ(log.texts(QtWarningMsg),
              QStringList({"Failed to link GL shader", " =======Log=========", "nothing fits", "", "Program 1",
                           "Shader 0x8b31 1", "   1 : one", "   2 : two", ""}));
    EXPECT_EQ(log.lines().size(), 9);
    EXPECT_EQ(functionNames(calls.list()),
              QStringList({"glGetProgramiv", "glGetProgramiv", "glGetProgramInfoLog", "glGetShaderiv", "glGetShaderiv",
                           "glGetShaderSource", "glDeleteProgram"}));
    EXPECT_EQ(calls.list().last(), CallLog::call("glDeleteProgram", 1));
    EXPECT_EQ(program.log(), text("nothing fits\n"));
    EXPECT_EQ(program.shaderProgramID(), 0u);
}

TEST_F(ShaderProgramLink, LinkFailureListsEachStage)
{
    script.linkStatus = 0;
    script.programLog = "why";
    ShaderProgram program(nullptr);
    program.addShader(GL_VERTEX_SHADER, text("one\ntwo"));
    program.addShader(GL_FRAGMENT_SHADER, text("three"));
    const auto stages = Access::shaders(program).values();
    ASSERT_TRUE(program.linkPre());
    const LogCapture log;
    EXPECT_FALSE(program.linkPost());
    QStringList expected = {"Failed to link GL shader", " =======Log=========", "why", "Program 1"};
    for (const Shader* const shader : stages)
    {
        const bool vertex = shader->shaderType() == GL_VERTEX_SHADER;
        expected += (vertex ? text("Shader 0x8b31 ") : text("Shader 0x8b30 ")) + QString::number(shader->shaderID());
        expected += vertex ? QStringList({"   1 : one", "   2 : two"}) : QStringList({"   1 : three"});
    }
    expected += QString();
    EXPECT_EQ(log.texts(QtWarningMsg), expected);
    EXPECT_EQ(log.lines().size(), expected.size());
    EXPECT_EQ(stages[0]->shaderID() + stages[1]->shaderID(), 3u);
}

TEST_F(ShaderProgramLink, FailedLinkKeepsTheSourcesOfTheStages)
{
    script.linkStatus = 0;
    ShaderProgram program(nullptr);
    program.addShader(GL_VERTEX_SHADER, text("a"));
    program.addShader(GL_FRAGMENT_SHADER, text("b"));
    const LogCapture quiet;
    ASSERT_FALSE(program.link());
    EXPECT_EQ(Access::shaders(program).value(GL_VERTEX_SHADER)->sourceCode(), text("a"));
    EXPECT_EQ(Access::shaders(program).value(GL_FRAGMENT_SHADER)->sourceCode(), text("b"));
}

TEST_F(ShaderProgramLink, LinkPostWithoutAProgramFailsLikeALinkWithAnEmptyLog)
{
    ShaderProgram program(nullptr);
    const CallLog calls;
    const LogCapture log;
    EXPECT_FALSE(program.linkPost());
    EXPECT_EQ(functionNames(calls.list()),
              QStringList({"glGetProgramiv", "glGetProgramiv", "glGetProgramInfoLog", "glDeleteProgram"}));
    EXPECT_EQ(calls.list().last(), CallLog::call("glDeleteProgram", 0)); // which OpenGL passes over
    EXPECT_EQ(log.texts(QtWarningMsg),
              QStringList({"Failed to link GL shader", " =======Log=========", "", "Program 0", ""}));
    EXPECT_TRUE(program.log().isEmpty());
    EXPECT_FALSE(program.isLinked());
}

TEST_F(ShaderProgramLink, LinkIsLinkPreAndLinkPostThroughTheVirtualSlots)
{
    SteppedProgram program;
    EXPECT_TRUE(program.link());
    EXPECT_EQ(program.steps, QStringList({"linkPre", "linkPost"}));
    program.steps.clear();
    program.preResult = false;
    EXPECT_FALSE(program.link());
    EXPECT_EQ(program.steps, QStringList({"linkPre"}));
}

TEST_F(ShaderProgramLink, FailedProgramCanBeClearedAndBuiltAgain)
{
    ShaderProgram program(nullptr);
    program.addShader(GL_VERTEX_SHADER, text("broken"));
    {
        const LogCapture quiet;
        ASSERT_FALSE(program.link());
    }
    program.clear();
    program.addShader(GL_VERTEX_SHADER, text("fine"));
    EXPECT_TRUE(program.link());
    EXPECT_TRUE(program.isLinked());
}

TEST_F(ShaderProgramLink, ValidateOfNoProgramIsFalseAndSilent)
{
    ShaderProgram program(nullptr);
    const CallLog calls;
    const LogCapture log;
    EXPECT_FALSE(program.validate());
    EXPECT_TRUE(calls.list().isEmpty());
    EXPECT_TRUE(log.lines().isEmpty());
}

TEST_F(ShaderProgramLink, ValidateReadsTheLinkStatusAndNothingElse)
{
    ShaderProgram program(nullptr);
    ASSERT_TRUE(program.linkPre());
    const CallLog calls;
    EXPECT_TRUE(program.validate());
    ASSERT_EQ(calls.list().size(), 1);
    EXPECT_TRUE(calls.list()[0].startsWith(QLatin1String("glGetProgramiv(1, 0x8b82, ")));
}

TEST_F(ShaderProgramLink, ValidateFailureIsReportedAndLeavesTheProgram)
{
    ShaderProgram program(nullptr);
    ASSERT_TRUE(program.linkPre());
    script.linkStatus = 0;
    const CallLog calls;
    const LogCapture log;
    EXPECT_FALSE(program.validate());
    EXPECT_EQ(functionNames(calls.list()), QStringList({"glGetProgramiv", "glGetProgramiv", "glGetProgramInfoLog"}));
    EXPECT_EQ(log.texts(QtWarningMsg),
              QStringList({"Failed to validate GL shader========= Log =========", "nothing fits", ""}));
    EXPECT_EQ(log.lines().size(), 3);
    EXPECT_EQ(program.log(), text("nothing fits\n"));
    EXPECT_EQ(program.shaderProgramID(), 1u);
}

// ---- clear ---------------------------------------------------------------------------------------------------------

TEST_F(ShaderProgramLink, ClearDeletesProgramAndStagesAndKeepsTheCaches)
{
    driver.setUniformLocation("u_A", 5);
    script.attributes = {{"va_Vertex", 2}};
    script.uniformBlocks = {"u_Block"};
    ShaderProgram program(nullptr);
    program.addShader(GL_VERTEX_SHADER, text("a"));
    ASSERT_TRUE(program.link());
    EXPECT_EQ(program.getUniformLocation(text("u_A")), 5);
    const CallLog calls;
    program.clear();
    EXPECT_EQ(calls.list(), QStringList({CallLog::call("glDeleteProgram", 1), CallLog::call("glDeleteShader", 1)}));
    EXPECT_FALSE(program.isLinked());
    EXPECT_TRUE(Access::shaders(program).isEmpty());
    EXPECT_EQ(program.getUniformLocation(text("u_A")), 5);
    EXPECT_EQ(program.getVertexAttributeLocation(text("va_Vertex")), 2);
    EXPECT_EQ(program.getUniformBlockIndex(text("u_Block")), 0);
}

TEST_F(ShaderProgramLink, ClearOfAnEmptyProgramMakesNoCall)
{
    ShaderProgram program(nullptr);
    const CallLog calls;
    program.clear();
    EXPECT_TRUE(calls.list().isEmpty());
}

TEST_F(ShaderProgramLink, DestructorClears)
{
    auto program = std::make_unique<ShaderProgram>(nullptr);
    program->addShader(GL_VERTEX_SHADER, text("a"));
    ASSERT_TRUE(program->link());
    const CallLog calls;
    program.reset();
    EXPECT_EQ(calls.list(), QStringList({CallLog::call("glDeleteProgram", 1), CallLog::call("glDeleteShader", 1)}));
}

TEST_F(ShaderProgramLink, DestructorLeavesOpenGLAloneWhileTheProcessEnds)
{
    auto program = std::make_unique<ShaderProgram>(nullptr);
    program->addShader(GL_VERTEX_SHADER, text("a"));
    ASSERT_TRUE(program->link());
    ASSERT_TRUE(program->bind());
    const ProcessEnding ending;
    const CallLog calls;
    program.reset();
    EXPECT_TRUE(calls.list().isEmpty());
    EXPECT_EQ(ShaderProgram::currentShaderProgram(), nullptr);
}

TEST_F(ShaderProgramLink, ClearSourceEmptiesAllStages)
{
    ShaderProgram program(nullptr);
    program.addShader(GL_VERTEX_SHADER, text("a"));
    program.addShader(GL_FRAGMENT_SHADER, text("b"));
    program.clearSource();
    for (const Shader* const shader : Access::shaders(program))
        EXPECT_TRUE(shader->sourceCode().isEmpty());
    EXPECT_EQ(Access::shaders(program).size(), 2);
}
