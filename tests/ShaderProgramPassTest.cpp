// SPDX-License-Identifier: MIT
// What a program passes on to OpenGL before its link: the names of fragment outputs and feedback varyings.
#include "ShaderProgram.h"

#include "ShaderTestTools.h"
#include "support/CallLog.h"
#include "support/LogCapture.h"

using namespace Harrow::Vrk;
using namespace Harrow::Vrk::Test;

namespace
{

class ShaderProgramPass : public ScriptedDriverTest
{
};

} // namespace

// ---- fragment outputs ----------------------------------------------------------------------------------------------

TEST_F(ShaderProgramPass, FragDataLocationsAreBoundByColourNumber)
{
    ShaderProgram program(nullptr);
    program.setFragDataLocations({text("first"), text("second")});
    driver.procLookups.clear();
    const CallLog calls;
    ASSERT_TRUE(program.linkPre());
    EXPECT_EQ(
        calls.list(),
        QStringList({CallLog::call("glCreateProgram"), CallLog::call("glBindFragDataLocation", 1, 0, "first"),
                     CallLog::call("glBindFragDataLocation", 1, 1, "second"), CallLog::call("glLinkProgram", 1)}));
    EXPECT_TRUE(driver.procLookups.isEmpty());
}

TEST_F(ShaderProgramPass, FragDataIndexesTakeThePlaceOfTheFirstLocation)
{
    ShaderProgram program(nullptr);
    program.setFragDataLocations({text("first"), text("second")});
    program.setFragDataIndexs({{text("source0"), text("source1")}});
    const CallLog calls;
    ASSERT_TRUE(program.linkPre());
    EXPECT_EQ(calls.list(),
              QStringList(
                  {CallLog::call("glCreateProgram"), CallLog::call("glBindFragDataLocationIndexed", 1, 0, 0, "source0"),
                   CallLog::call("glBindFragDataLocationIndexed", 1, 0, 1, "source1"),
                   CallLog::call("glBindFragDataLocation", 1, 1, "second"), CallLog::call("glLinkProgram", 1)}));
}

TEST_F(ShaderProgramPass, FragDataIndexesBehindTheFirstListAreNotRead)
{
    ShaderProgram program(nullptr);
    program.setFragDataLocations({text("first"), text("second")});
    program.setFragDataIndexs({{text("source0")}, {text("never")}});
    const CallLog calls;
    ASSERT_TRUE(program.linkPre());
    EXPECT_EQ(calls.named({text("glBindFragDataLocationIndexed"), text("glBindFragDataLocation")}),
              QStringList({CallLog::call("glBindFragDataLocationIndexed", 1, 0, 0, "source0"),
                           CallLog::call("glBindFragDataLocation", 1, 1, "second")}));
}

TEST_F(ShaderProgramPass, EmptyFirstListOfFragDataIndexesBindsNothingForColourZero)
{
    ShaderProgram program(nullptr);
    program.setFragDataLocations({text("first")});
    program.setFragDataIndexs({{}});
    const CallLog calls;
    ASSERT_TRUE(program.linkPre());
    EXPECT_EQ(calls.list(), QStringList({CallLog::call("glCreateProgram"), CallLog::call("glLinkProgram", 1)}));
}

TEST_F(ShaderProgramPass, FragDataIndexesWithoutLocationsBindNothing)
{
    ShaderProgram program(nullptr);
    program.setFragDataIndexs({{text("source0")}});
    const CallLog calls;
    ASSERT_TRUE(program.linkPre());
    EXPECT_EQ(calls.list(), QStringList({CallLog::call("glCreateProgram"), CallLog::call("glLinkProgram", 1)}));
}

TEST_F(ShaderProgramPass, WithoutDualSourceTheLocationsAreBoundAndTheDebugTextIsGiven)
{
    driver.refuse("glBindFragDataLocationIndexed");
    ShaderProgram program(nullptr);
    program.setFragDataLocations({text("first"), text("second")});
    program.setFragDataIndexs({{text("source0"), text("source1")}});
    const CallLog calls;
    const LogCapture log;
    ASSERT_TRUE(program.linkPre());
    EXPECT_EQ(calls.named({text("glBindFragDataLocationIndexed"), text("glBindFragDataLocation")}),
              QStringList({CallLog::call("glBindFragDataLocation", 1, 0, "first"),
                           CallLog::call("glBindFragDataLocation", 1, 1, "second")}));
    EXPECT_EQ(log.messages(QtDebugMsg),
              QStringList({text("Failed to obtain 'glBindFragDataLocationIndexed'"),
                           text("Trying to setup glBindFragDataLocationIndexed( 1, 0, , ). Func pointer is NULL, "
                                "falling back to glBindFragDataLocation()\n")}));
    EXPECT_EQ(log.lines().size(), 2);
}

TEST_F(ShaderProgramPass, OutputNamesGoOverAsLatin1)
{
    static QByteArray given;
    driver.replace(
        "glBindFragDataLocation", +[](GLuint, GLuint, const GLchar* name) { given = name; });
    ASSERT_EQ(driver.load(), 1);
    ShaderProgram program(nullptr);
    program.setFragDataLocations({text("\xC3\xA9")});
    ASSERT_TRUE(program.linkPre());
    EXPECT_EQ(given, QByteArray("\xE9"));
}

TEST_F(ShaderProgramPass, SettersHaveNoEffectOnAProgramAlreadyCreated)
{
    ShaderProgram program(nullptr);
    ASSERT_TRUE(program.linkPre());
    const CallLog calls;
    program.setFragDataLocations({text("late")});
    program.setFragDataIndexs({{text("late")}});
    program.setTransformFeedbackVaryings({text("late")}, GL_INTERLEAVED_ATTRIBS);
    ASSERT_TRUE(program.linkPre());
    EXPECT_TRUE(calls.list().isEmpty());
}

// ---- transform feedback --------------------------------------------------------------------------------------------

TEST_F(ShaderProgramPass, VaryingsArePassedWithTheirBufferModeBeforeTheLink)
{
    for (const GLenum mode : {0x8C8Cu, 0x8C8Du}) // interleaved, separate
    {
        script.varyings.clear();
        ShaderProgram program(nullptr);
        program.setTransformFeedbackVaryings({text("vo_A"), text("vo_B")}, mode);
        const CallLog calls;
        ASSERT_TRUE(program.linkPre());
        EXPECT_EQ(functionNames(calls.list()),
                  QStringList({"glCreateProgram", "glTransformFeedbackVaryings", "glLinkProgram"}));
        const QString call = calls.list()[1];
        EXPECT_TRUE(
            call.startsWith(QStringLiteral("glTransformFeedbackVaryings(%1, 2, ").arg(program.shaderProgramID())));
        EXPECT_TRUE(call.endsWith(QStringLiteral(", 0x%1)").arg(mode, 0, 16)));
        EXPECT_EQ(script.varyings, QList<QByteArray>({"vo_A", "vo_B"}));
    }
}

TEST_F(ShaderProgramPass, VaryingsAreNotPassedWhereTheDriverLacksTheFunction)
{
    driver.refuse("glTransformFeedbackVaryings");
    ShaderProgram program(nullptr);
    program.setTransformFeedbackVaryings({text("vo_A")}, GL_SEPARATE_ATTRIBS);
    const CallLog calls;
    const LogCapture log;
    EXPECT_TRUE(program.linkPre());
    EXPECT_EQ(functionNames(calls.list()), QStringList({"glCreateProgram", "glLinkProgram"}));
    EXPECT_EQ(log.messages(QtDebugMsg), QStringList({"Failed to obtain 'glTransformFeedbackVaryings'"}));
    EXPECT_EQ(log.lines().size(), 1);
}

TEST_F(ShaderProgramPass, VaryingNamesGoOverInTheLocalEncoding)
{
    const QString name = text("vo_\xC3\xA9\xE2\x82\xAC");
    ASSERT_NE(name.toLocal8Bit(), name.toLatin1());
    ShaderProgram program(nullptr);
    program.setTransformFeedbackVaryings({name, text("vo_B")}, GL_SEPARATE_ATTRIBS);
    ASSERT_TRUE(program.linkPre());
    EXPECT_EQ(script.varyings, QList<QByteArray>({name.toLocal8Bit(), "vo_B"}));
}

TEST_F(ShaderProgramPass, NothingIsSaidWhereTheDriverHasTheFunctions)
{
    ShaderProgram program(nullptr);
    program.setFragDataLocations({text("first")});
    program.setFragDataIndexs({{text("source0"), text("source1")}});
    program.setTransformFeedbackVaryings({text("vo_A")}, GL_SEPARATE_ATTRIBS);
    driver.procLookups.clear();
    const LogCapture log;
    ASSERT_TRUE(program.linkPre());
    EXPECT_EQ(driver.procLookups, QList<QByteArray>({"glBindFragDataLocationIndexed", "glTransformFeedbackVaryings"}));
    EXPECT_TRUE(log.lines().isEmpty());
}

TEST_F(ShaderProgramPass, NothingIsLookedUpOrSaidWhereNeitherIsAskedFor)
{
    driver.refuse("glBindFragDataLocationIndexed");
    driver.refuse("glTransformFeedbackVaryings");
    ShaderProgram program(nullptr);
    program.setFragDataLocations({text("first")});
    driver.procLookups.clear();
    const LogCapture log;
    ASSERT_TRUE(program.linkPre());
    EXPECT_TRUE(driver.procLookups.isEmpty());
    EXPECT_TRUE(log.lines().isEmpty());
}
