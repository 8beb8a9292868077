// SPDX-License-Identifier: MIT
#include "Shader.h"

#include "GLSLMacroProcessor.h"
#include "GLUtilities.h"
#include "ShaderReport.h"
#include "ShaderTestTools.h"
#include "support/CallLog.h"
#include "support/GLTest.h"
#include "support/LogCapture.h"
#include "support/ProcessEnding.h"

#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>

#include <limits>
#include <memory>

using namespace Harrow::Vrk;
using namespace Harrow::Vrk::Test;

namespace
{

class ShaderObject : public ScriptedDriverTest
{
};

class ShaderObjectGL : public GLTest
{
};

QString vertexSource()
{
    return QStringLiteral("#version 150\nin vec3 va_Vertex;\nvoid main() { gl_Position = vec4(va_Vertex, 1.0); }\n");
}

} // namespace

// ---- the texts, without any driver ---------------------------------------------------------------------------------

TEST(ShaderReport, LinesAreNumberedFromOneInFourColumnsWithBlanks)
{
    EXPECT_EQ(numberedLines(QStringLiteral("a\nb")), QStringLiteral("   1 : a\n   2 : b\n"));
    const QStringList lines = numberedLines(QString(QStringLiteral("x\n")).repeated(10000)).split(u'\n');
    EXPECT_EQ(lines[8], QStringLiteral("   9 : x"));
    EXPECT_EQ(lines[9], QStringLiteral("  10 : x"));
    EXPECT_EQ(lines[998], QStringLiteral(" 999 : x"));
    EXPECT_EQ(lines[9998], QStringLiteral("9999 : x"));
    EXPECT_EQ(lines[9999], QStringLiteral("10000 : x"));
}

TEST(ShaderReport, LineEndAtTheEndBeginsOneMoreEmptyLine)
{
    EXPECT_EQ(numberedLines(QStringLiteral("a\n")), QStringLiteral("   1 : a\n   2 : \n"));
    EXPECT_EQ(numberedLines(QString()), QStringLiteral("   1 : \n"));
}

TEST(ShaderReport, PlaceholdersInTheSourceAndInTheLogStayAsTheyAre)
{
    EXPECT_EQ(numberedLines(QStringLiteral("%1 %2 %s")), QStringLiteral("   1 : %1 %2 %s\n"));
    EXPECT_TRUE(
        compileFailureReport(GL_VERTEX_SHADER, QString(), QStringLiteral("%1%s")).endsWith(QLatin1String("%1%s")));
}

TEST(ShaderReport, CompileFailureNamesTypeSourceAndLog)
{
    EXPECT_EQ(compileFailureReport(GL_FRAGMENT_SHADER, QStringLiteral("one\ntwo"), QStringLiteral("bad\n")),
              QStringLiteral("Failed to compile GL shader\n"
                             " Shader Type = GL_FRAGMENT_SHADER\n"
                             " =======Source======\n"
                             "   1 : one\n"
                             "   2 : two\n"
                             " =======Log=========\n"
                             "bad\n"));
}

TEST(ShaderReport, EachShaderTypeHasItsNameAndItsAbbreviation)
{
    const struct
    {
        unsigned int type;
        const char* name;
        const char* abbreviation;
    } rows[] = {
        {0x8B31, "GL_VERTEX_SHADER", "VS"},
        {0x8B30, "GL_FRAGMENT_SHADER", "FS"},
        {0x8DD9, "GL_GEOMETRY_SHADER", "GS"},
        {0x8E87, "GL_TESS_EVALUATION_SHADER", "TES"},
        {0x8E88, "GL_TESS_CONTROL_SHADER", "TCS"},
        {0x91B9, "unknown", ""},
        {0, "unknown", ""},
    };
    for (const auto& row : rows)
    {
        const QStringList lines = compileFailureReport(row.type, QString(), QString()).split(u'\n');
        EXPECT_EQ(lines[1], QStringLiteral(" Shader Type = ") + QLatin1String(row.name));
        EXPECT_EQ(shaderTypeAbbreviation(row.type), QLatin1String(row.abbreviation));
    }
}

TEST(ShaderReport, LinkFailureText)
{
    EXPECT_EQ(linkFailureReport(QStringLiteral("why")),
              QStringLiteral("Failed to link GL shader\n =======Log=========\nwhy"));
}

TEST(ShaderReport, ValidateFailureTextHasNoLineEndBehindItsFirstWords)
{
    EXPECT_EQ(validateFailureReport(QStringLiteral("why")),
              QStringLiteral("Failed to validate GL shader========= Log =========\nwhy"));
}

TEST(ShaderReport, GoesOutAsOneWarningALineWithTheEmptyOnes)
{
    const LogCapture log;
    warnLineByLine(QStringLiteral("50% of %s\n\nlast\n"));
    EXPECT_EQ(log.texts(QtWarningMsg), QStringList({"50% of %s", "", "last", ""}));
    EXPECT_EQ(log.lines().size(), 4);
}

// ---- the stage on a scripted driver --------------------------------------------------------------------------------

TEST_F(ShaderObject, ExpandsItsSourceAtOnceWithTheGivenProcessor)
{
    GLSLMacroProcessor processor;
    processor.addMacro(QStringLiteral("X"), QStringLiteral("held"));
    const CallLog calls;
    const Shader shader(GL_VERTEX_SHADER, QStringLiteral("#macro X default"), &processor, nullptr);
    processor.addMacro(QStringLiteral("X"), QStringLiteral("too late"));
    EXPECT_EQ(shader.sourceCode(), QStringLiteral("held\n"));
    EXPECT_TRUE(calls.list().isEmpty());
}

TEST_F(ShaderObject, WithoutAProcessorMacrosTakeTheirDefault)
{
    const Shader shader(GL_VERTEX_SHADER, QStringLiteral("#macro X default"), nullptr);
    EXPECT_EQ(shader.sourceCode(), QStringLiteral("default\n"));
    const Shader withNull(GL_VERTEX_SHADER, QStringLiteral("#macro X default"), nullptr, nullptr);
    EXPECT_EQ(withNull.sourceCode(), QStringLiteral("default\n"));
}

TEST_F(ShaderObject, HasNoParentWhateverIsPassed)
{
    QObject parent;
    const Shader first(GL_VERTEX_SHADER, QString(), nullptr, &parent);
    const Shader second(GL_VERTEX_SHADER, QString(), &parent);
    EXPECT_EQ(first.parent(), nullptr);
    EXPECT_EQ(second.parent(), nullptr);
    EXPECT_TRUE(parent.children().isEmpty());
}

TEST_F(ShaderObject, StartsWithoutAnOpenGLShader)
{
    const Shader shader(GL_GEOMETRY_SHADER, QStringLiteral("text"), nullptr);
    EXPECT_EQ(shader.shaderType(), 0x8DD9);
    EXPECT_EQ(shader.shaderID(), 0u);
    EXPECT_FALSE(shader.isCompiled());
    EXPECT_TRUE(shader.log().isEmpty());
}

TEST_F(ShaderObject, CompileMakesTheseCallsAndAsksForTheStatusAtOnce)
{
    driver.setExtensions({"GL_ARB_parallel_shader_compile"});
    Shader shader(GL_FRAGMENT_SHADER, QStringLiteral("fine"), nullptr);
    const CallLog calls;
    const LogCapture log;
    EXPECT_TRUE(shader.compile());
    EXPECT_EQ(functionNames(calls.list()),
              QStringList({"glCreateShader", "glShaderSource", "glCompileShader", "glGetShaderiv"}));
    EXPECT_EQ(calls.list()[0], CallLog::call("glCreateShader", GL_FRAGMENT_SHADER));
    EXPECT_EQ(calls.list()[2], CallLog::call("glCompileShader", 1));
    EXPECT_TRUE(calls.list()[1].startsWith(QLatin1String("glShaderSource(1, 1, @")));
    EXPECT_TRUE(calls.list()[3].startsWith(QLatin1String("glGetShaderiv(1, 0x8b81, ")));
    EXPECT_TRUE(shader.isCompiled());
    EXPECT_EQ(shader.shaderID(), 1u);
    EXPECT_TRUE(log.lines().isEmpty());
}

TEST_F(ShaderObject, SourceGoesOverAsLatin1WithItsLength)
{
    Shader shader(GL_VERTEX_SHADER, QString::fromUtf8("// \xC3\xA9 \xE2\x82\xAC"), nullptr);
    ASSERT_TRUE(shader.compile());
    EXPECT_EQ(script.sources.value(1), QByteArray("// \xE9 ?"));
}

TEST_F(ShaderObject, CompileOfACompiledStageIsTrueAndMakesNoCall)
{
    Shader shader(GL_VERTEX_SHADER, QStringLiteral("fine"), nullptr);
    ASSERT_TRUE(shader.compile());
    const CallLog calls;
    EXPECT_TRUE(shader.compile());
    EXPECT_TRUE(calls.list().isEmpty());
}

TEST_F(ShaderObject, FailureDeletesTheShaderAndKeepsTheLog)
{
    Shader shader(GL_VERTEX_SHADER, QStringLiteral("broken"), nullptr);
    const CallLog calls;
    const LogCapture log;
    EXPECT_FALSE(shader.compile());
    EXPECT_EQ(functionNames(calls.list()),
              QStringList({"glCreateShader", "glShaderSource", "glCompileShader", "glGetShaderiv", "glGetShaderiv",
                           "glGetShaderInfoLog", "glDeleteShader"}));
    EXPECT_TRUE(calls.list()[4].startsWith(QLatin1String("glGetShaderiv(1, 0x8b84, ")));
    EXPECT_EQ(calls.list()[6], CallLog::call("glDeleteShader", 1));
    EXPECT_EQ(shader.shaderID(), 0u);
    EXPECT_FALSE(shader.isCompiled());
    EXPECT_EQ(shader.log(), QStringLiteral("0:1: it is broken\n"));
}

TEST_F(ShaderObject, FailureReportsEachLineAsAWarning)
{
    Shader shader(GL_VERTEX_SHADER, QStringLiteral("#macro X broken\nvoid main() {}\n"), nullptr);
    const LogCapture log;
    EXPECT_FALSE(shader.compile());
    EXPECT_EQ(log.texts(QtWarningMsg),
              QStringList({"Failed to compile GL shader", " Shader Type = GL_VERTEX_SHADER",
                           " =======Source======", "   1 : broken", "   2 : ", "   3 : void main() {}",
                           "   4 : ", " =======Log=========", "0:1: it is broken", ""}));
    EXPECT_EQ(log.lines().size(), 10);
}

TEST_F(ShaderObject, LogOfAFailureStaysAfterALaterSuccess)
{
    Shader shader(GL_VERTEX_SHADER, QStringLiteral("broken"), nullptr);
    {
        const LogCapture quiet;
        ASSERT_FALSE(shader.compile());
    }
    script.brokenMark = "nothing";
    EXPECT_TRUE(shader.compile());
    EXPECT_EQ(shader.log(), QStringLiteral("0:1: it is broken\n"));
}

TEST_F(ShaderObject, LogLengthsThatTheDriverInventsStayInsideTheBuffer)
{
    // Length -5, and a claim to have written more than there was room for.
    driver.replace(
        "glGetShaderiv",
        +[](GLuint, GLenum parameter, GLint* value) { *value = parameter == GL_INFO_LOG_LENGTH ? -5 : 0; });
    driver.replace(
        "glGetShaderInfoLog",
        +[](GLuint, GLsizei size, GLsizei* length, GLchar*)
        {
            EXPECT_EQ(size, 0);
            *length = 1000;
        });
    ASSERT_EQ(driver.load(), 1);
    Shader shader(GL_VERTEX_SHADER, QStringLiteral("text"), nullptr);
    const LogCapture quiet;
    EXPECT_FALSE(shader.compile());
    EXPECT_TRUE(shader.log().isEmpty());
}

TEST_F(ShaderObject, LargestLogLengthIsNotBelievedAndWhatWasWrittenIsRead)
{
    driver.replace(
        "glGetShaderiv", +[](GLuint, GLenum parameter, GLint* value)
                         { *value = parameter == GL_INFO_LOG_LENGTH ? std::numeric_limits<GLint>::max() : 0; });
    driver.replace(
        "glGetShaderInfoLog",
        +[](GLuint, GLsizei size, GLsizei* length, GLchar* out)
        {
            EXPECT_EQ(size, 64 * 1024 * 1024);
            writeText("short", size, length, out);
        });
    ASSERT_EQ(driver.load(), 1);
    Shader shader(GL_VERTEX_SHADER, QStringLiteral("text"), nullptr);
    const LogCapture quiet;
    EXPECT_FALSE(shader.compile());
    EXPECT_EQ(shader.log(), QStringLiteral("short"));
}

TEST_F(ShaderObject, ClearSourceEmptiesTheTextAndGivesItsMemoryBack)
{
    Shader shader(GL_VERTEX_SHADER, QString(1000, QLatin1Char('x')), nullptr);
    ASSERT_TRUE(shader.compile());
    shader.clearSource();
    EXPECT_TRUE(shader.sourceCode().isEmpty());
    EXPECT_LT(shader.sourceCode().capacity(), 1000);
    EXPECT_TRUE(shader.isCompiled());
}

TEST_F(ShaderObject, DumpWritesTheExpandedSource)
{
    const QTemporaryDir directory;
    const QString path = directory.filePath(QStringLiteral("stage.txt"));
    const Shader shader(GL_VERTEX_SHADER, QString::fromUtf8("#macro X \xC3\xA9\n"), nullptr);
    shader.dumpSourceCode(path);
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::ReadOnly | QIODevice::Text));
    EXPECT_EQ(file.readAll(), QByteArray("\xC3\xA9\n\n"));
}

TEST_F(ShaderObject, DumpToAPlaceThatDoesNotOpenDoesNothing)
{
    const QTemporaryDir directory;
    const Shader shader(GL_VERTEX_SHADER, QStringLiteral("text"), nullptr);
    const LogCapture log;
    shader.dumpSourceCode(directory.filePath(QStringLiteral("no/such/place.txt")));
    shader.dumpSourceCode(directory.path());
    EXPECT_TRUE(log.lines().isEmpty());
    EXPECT_FALSE(QFileInfo::exists(directory.filePath(QStringLiteral("no"))));
}

TEST_F(ShaderObject, DestructorDeletesACompiledShaderOnly)
{
    const CallLog calls;
    {
        const Shader never(GL_VERTEX_SHADER, QStringLiteral("fine"), nullptr);
    }
    EXPECT_TRUE(calls.list().isEmpty());
    {
        Shader shader(GL_VERTEX_SHADER, QStringLiteral("fine"), nullptr);
        ASSERT_TRUE(shader.compile());
    }
    EXPECT_EQ(calls.named({"glDeleteShader"}), QStringList({CallLog::call("glDeleteShader", 1)}));
}

TEST_F(ShaderObject, DestructorLeavesOpenGLAloneWhileTheProcessEnds)
{
    auto shader = std::make_unique<Shader>(GL_VERTEX_SHADER, QStringLiteral("fine"), nullptr);
    ASSERT_TRUE(shader->compile());
    const ProcessEnding ending;
    const CallLog calls;
    shader.reset();
    EXPECT_TRUE(calls.list().isEmpty());
}

// ---- the stage on a real driver ------------------------------------------------------------------------------------

TEST_F(ShaderObjectGL, GoodSourceCompiles)
{
    Shader shader(GL_VERTEX_SHADER, vertexSource(), nullptr);
    const LogCapture log;
    EXPECT_TRUE(shader.compile());
    EXPECT_TRUE(log.lines().isEmpty()) << log.texts().join(u'\n').toStdString();
    EXPECT_NE(shader.shaderID(), 0u);
    EXPECT_TRUE(glIsShader(shader.shaderID()));
}

TEST_F(ShaderObjectGL, DestructorDeletesTheShader)
{
    GLuint name = 0;
    {
        Shader shader(GL_VERTEX_SHADER, vertexSource(), nullptr);
        ASSERT_TRUE(shader.compile());
        name = shader.shaderID();
    }
    EXPECT_FALSE(glIsShader(name));
}

TEST_F(ShaderObjectGL, BrokenSourceIsReportedByTheNumbersOfTheExpandedText)
{
    // The define and the line end of the #version line push the mistake from line 4 of the source to line 6.
    GLSLMacroProcessor processor;
    processor.addDefine(QStringLiteral("SIZE"), QStringLiteral("4"));
    Shader shader(GL_FRAGMENT_SHADER,
                  QStringLiteral("#version 150\nout vec4 o_Color;\nvoid main()\n{ o_Color = undeclared; }"), &processor,
                  nullptr);
    const LogCapture log;
    EXPECT_FALSE(shader.compile());

    EXPECT_TRUE(shader.log().contains(QLatin1String("undeclared"))) << shader.log().toStdString();
    EXPECT_TRUE(shader.log().contains(QLatin1String("0:6("))) << shader.log().toStdString();
    const QStringList expected =
        QStringList({"Failed to compile GL shader", " Shader Type = GL_FRAGMENT_SHADER", " =======Source======"}) +
        listing(
            {"#version 150", "#define SIZE 4", "", "out vec4 o_Color;", "void main()", "{ o_Color = undeclared; }"}) +
        QStringList({" =======Log========="}) + shader.log().split(u'\n');
    EXPECT_EQ(log.texts(QtWarningMsg), expected);
    EXPECT_EQ(log.lines().size(), expected.size());
    EXPECT_EQ(shader.shaderID(), 0u);
}

TEST_F(ShaderObjectGL, UnknownShaderTypeFailsWithAReport)
{
    Shader shader(0x1234, vertexSource(), nullptr);
    const LogCapture log;
    EXPECT_FALSE(shader.compile());
    EXPECT_EQ(log.texts().value(1), QStringLiteral(" Shader Type = unknown"));
    while (glGetError() != GL_NO_ERROR)
    {
    }
}

TEST_F(ShaderObjectGL, CharactersOutsideAsciiInACommentDoNotDisturb)
{
    Shader shader(GL_VERTEX_SHADER, vertexSource() + QString::fromUtf8("// caf\xC3\xA9\n"), nullptr);
    EXPECT_TRUE(shader.compile());
}
