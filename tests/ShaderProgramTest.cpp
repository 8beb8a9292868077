// SPDX-License-Identifier: MIT
#include "ShaderProgram.h"

#include "GLRuntimeTestAccess.h"
#include "GLSLMacroProcessor.h"
#include "Shader.h"
#include "ShaderTestTools.h"
#include "support/CallLog.h"
#include "support/LogCapture.h"
#include "support/TestAccess.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

using namespace Harrow::Vrk;
using namespace Harrow::Vrk::Test;

namespace
{

using Access = ShaderProgramTestAccess;

class ShaderProgramBuild : public ScriptedDriverTest
{
};

} // namespace

// ---- construction and entry points ---------------------------------------------------------------------------------

TEST_F(ShaderProgramBuild, StartsWithoutAProgram)
{
    const ShaderProgram program(nullptr);
    EXPECT_EQ(ShaderProgram::kShaderProgramNotLinked, 0u);
    EXPECT_EQ(program.shaderProgramID(), 0u);
    EXPECT_FALSE(program.isLinked());
    EXPECT_TRUE(program.log().isEmpty());
    EXPECT_EQ(program.getUniformLocationNameID(), -1);
}

TEST_F(ShaderProgramBuild, BelongsToTheParentThatIsPassed)
{
    QObject parent;
    const auto* const program = new ShaderProgram(&parent);
    EXPECT_EQ(program->parent(), &parent);
}

TEST_F(ShaderProgramBuild, BindableIsTheSecondBase)
{
    ShaderProgram program(nullptr);
    EXPECT_EQ(static_cast<void*>(static_cast<QObject*>(&program)), static_cast<void*>(&program));
    EXPECT_GT(static_cast<void*>(static_cast<Bindable*>(&program)), static_cast<void*>(&program));
}

TEST_F(ShaderProgramBuild, BinaryFunctionsAreLookedUpOnceWithTheirExtension)
{
    driver.setExtensions({"GL_ARB_get_program_binary", "GL_OES_get_program_binary"});
    driver.setVersion(3, 2);
    driver.procLookups.clear();
    const LogCapture log;
    const ShaderProgram first(nullptr);
    EXPECT_TRUE(log.lines().isEmpty());
    EXPECT_EQ(driver.procLookups, QList<QByteArray>({"glGetProgramBinary", "glProgramBinary", "glProgramParameteri"}));
    EXPECT_TRUE(first.isProgramBinariesSupported());
    const ShaderProgram second(nullptr);
    EXPECT_EQ(driver.procLookups.size(), 3);
}

TEST_F(ShaderProgramBuild, BinaryFunctionsOfTheOtherExtensionLeaveBinariesUnsupported)
{
    driver.setExtensions({"GL_OES_get_program_binary"});
    driver.setVersion(3, 2);
    driver.procLookups.clear();
    const LogCapture log;
    const ShaderProgram program(nullptr);
    EXPECT_TRUE(log.lines().isEmpty());
    EXPECT_EQ(driver.procLookups, QList<QByteArray>({"glGetProgramBinaryOES", "glProgramBinaryOES"}));
    EXPECT_FALSE(program.isProgramBinariesSupported());
}

TEST_F(ShaderProgramBuild, NothingIsLookedUpWithoutAnExtensionOnTheFloor)
{
    driver.setVersion(3, 2);
    for (const char* const name :
         {"glGetProgramBinary", "glProgramBinary", "glProgramParameteri", "glGetProgramBinaryOES", "glProgramBinaryOES",
          "glGetProgramInterfaceiv", "glGetProgramResourceName", "glGetProgramResourceIndex",
          "glShaderStorageBlockBinding"})
        driver.refuse(name);
    driver.procLookups.clear();
    const LogCapture log;
    const ShaderProgram program(nullptr);
    EXPECT_TRUE(driver.procLookups.isEmpty());
    EXPECT_FALSE(program.isProgramBinariesSupported());
    EXPECT_TRUE(log.lines().isEmpty());
}

TEST_F(ShaderProgramBuild, StorageBlockFunctionsComeWithVersion43OrWithTheExtension)
{
    const QList<QByteArray> expected = {"glGetProgramInterfaceiv", "glGetProgramResourceName",
                                        "glGetProgramResourceIndex", "glShaderStorageBlockBinding"};
    driver.setVersion(4, 2);
    driver.procLookups.clear();
    {
        const ShaderProgram program(nullptr);
    }
    EXPECT_TRUE(driver.procLookups.isEmpty());

    driver.setVersion(4, 3);
    {
        const LogCapture log;
        const ShaderProgram program(nullptr);
        const ShaderProgram another(nullptr);
        EXPECT_TRUE(log.lines().isEmpty());
    }
    EXPECT_EQ(driver.procLookups, expected);

    Access::resetEntryPoints();
    driver.procLookups.clear();
    driver.setVersion(3, 2);
    int context = 0;
    driver.setContext(&context); // its extensions are not read yet
    driver.setExtensions({"GL_ARB_shader_storage_buffer_object"});
    {
        const ShaderProgram program(nullptr);
    }
    EXPECT_EQ(driver.procLookups, expected);
    GLRuntimeTestAccess::forgetExtensionsOf(&context);
}

TEST_F(ShaderProgramBuild, MissingBinaryFunctionIsNamedOnceAndMeansUnsupported)
{
    for (const char* const missing : {"glGetProgramBinary", "glProgramBinary", "glProgramParameteri"})
    {
        Access::resetEntryPoints();
        driver.setExtensions({"GL_ARB_get_program_binary"});
        driver.refuse(missing);
        const LogCapture log;
        ShaderProgram program(nullptr);
        EXPECT_FALSE(program.isProgramBinariesSupported()) << missing;
        EXPECT_EQ(log.messages(QtDebugMsg), QStringList({text("Failed to obtain '%1'").arg(text(missing))}));
        QByteArray data("kept");
        unsigned int format = 7;
        const CallLog calls;
        EXPECT_FALSE(program.getProgramBinary(data, format));
        EXPECT_FALSE(program.loadProgramFromRawData(data, format));
        EXPECT_EQ(data, QByteArray("kept"));
        EXPECT_EQ(format, 7u);
        EXPECT_TRUE(calls.list().isEmpty());
        EXPECT_EQ(log.lines().size(), 1);
        driver.offer(missing);
    }
}

TEST_F(ShaderProgramBuild, MissingBinaryFunctionOfTheOtherExtensionIsNamed)
{
    driver.setExtensions({"GL_OES_get_program_binary"});
    driver.setVersion(3, 2);
    driver.refuse("glGetProgramBinaryOES");
    driver.refuse("glProgramBinaryOES");
    const LogCapture log;
    const ShaderProgram program(nullptr);
    EXPECT_EQ(log.messages(QtDebugMsg),
              QStringList({"Failed to obtain 'glGetProgramBinaryOES'", "Failed to obtain 'glProgramBinaryOES'"}));
    EXPECT_EQ(log.lines().size(), 2);
}

TEST_F(ShaderProgramBuild, MissingStorageBlockFunctionIsNamed)
{
    for (const char* const missing : {"glGetProgramInterfaceiv", "glGetProgramResourceName",
                                      "glGetProgramResourceIndex", "glShaderStorageBlockBinding"})
    {
        Access::resetEntryPoints();
        driver.refuse(missing);
        const LogCapture log;
        const ShaderProgram program(nullptr);
        EXPECT_EQ(log.messages(QtDebugMsg), QStringList({text("Failed to obtain '%1'").arg(text(missing))}));
        EXPECT_EQ(log.lines().size(), 1);
        driver.offer(missing);
    }
}

TEST_F(ShaderProgramBuild, NothingIsSaidWhereTheDriverHasAllThatItPromises)
{
    driver.setExtensions({"GL_ARB_get_program_binary", "GL_ARB_shader_storage_buffer_object"});
    const LogCapture log;
    const ShaderProgram program(nullptr);
    EXPECT_TRUE(program.isProgramBinariesSupported());
    EXPECT_NE(shaderProgramEntryPoints().shaderStorageBlockBinding, nullptr);
    EXPECT_TRUE(log.lines().isEmpty());
}

// ---- stages --------------------------------------------------------------------------------------------------------

TEST_F(ShaderProgramBuild, AddShaderKeepsSeveralOfOneType)
{
    ShaderProgram program(nullptr);
    program.addShader(GL_VERTEX_SHADER, text("a"), QString());
    program.addShader(GL_VERTEX_SHADER, text("b"), QString());
    program.addShader(GL_FRAGMENT_SHADER, text("c"), QString());
    EXPECT_EQ(Access::shaders(program).count(GL_VERTEX_SHADER), 2);
    EXPECT_EQ(Access::shaders(program).size(), 3);
    for (const Shader* const shader : Access::shaders(program))
        EXPECT_EQ(shader->parent(), nullptr);
}

TEST_F(ShaderProgramBuild, MacroProcessorAppliesToStagesAddedAfterwards)
{
    GLSLMacroProcessor processor;
    processor.addMacro(text("X"), text("held"));
    ShaderProgram program(nullptr);
    EXPECT_EQ(program.getMacroProcessor(), nullptr);
    program.addShader(GL_VERTEX_SHADER, text("#macro X default"), QString());
    program.setMacroProcessor(&processor);
    EXPECT_EQ(program.getMacroProcessor(), &processor);
    program.addShader(GL_FRAGMENT_SHADER, text("#macro X default"), QString());
    program.setMacroProcessor(nullptr);
    program.addShader(GL_GEOMETRY_SHADER, text("#macro X default"), QString());
    EXPECT_EQ(Access::shaders(program).value(GL_VERTEX_SHADER)->sourceCode(), text("default\n"));
    EXPECT_EQ(Access::shaders(program).value(GL_FRAGMENT_SHADER)->sourceCode(), text("held\n"));
    EXPECT_EQ(Access::shaders(program).value(GL_GEOMETRY_SHADER)->sourceCode(), text("default\n"));
}

TEST_F(ShaderProgramBuild, AddShaderWritesTheExpandedTextToTheDumpPath)
{
    const QTemporaryDir directory;
    const QString path = directory.filePath(text("stage.txt"));
    ShaderProgram program(nullptr);
    program.addShader(GL_VERTEX_SHADER, text("#macro X default"), path);
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::ReadOnly | QIODevice::Text));
    EXPECT_EQ(file.readAll(), QByteArray("default\n"));
}

TEST_F(ShaderProgramBuild, AddShaderWithANullOrEmptyDumpPathWritesNothing)
{
    ShaderProgram program(nullptr);
    const LogCapture log;
    program.addShader(GL_VERTEX_SHADER, text("a"), QString());
    program.addShader(GL_VERTEX_SHADER, text("b"), text(""));
    program.addShader(GL_VERTEX_SHADER, text("c"));
    EXPECT_TRUE(log.lines().isEmpty());
    EXPECT_EQ(Access::shaders(program).size(), 3);
}

TEST_F(ShaderProgramBuild, PreprocessedIsSetByCompileAndHashAndResetByAddAndClear)
{
    ShaderProgram program(nullptr);
    EXPECT_FALSE(Access::isPreprocessed(program));
    EXPECT_TRUE(program.compile());
    EXPECT_TRUE(Access::isPreprocessed(program));
    program.addShader(GL_VERTEX_SHADER, text("a"));
    EXPECT_FALSE(Access::isPreprocessed(program));
    program.constructShaderHash();
    EXPECT_TRUE(Access::isPreprocessed(program));
    program.clear();
    EXPECT_FALSE(Access::isPreprocessed(program));
}

TEST_F(ShaderProgramBuild, DumpShaderSourcesNamesTypesAndNumbersFromZero)
{
    const QTemporaryDir directory;
    ShaderProgram program(nullptr);
    for (const GLenum type : {GL_VERTEX_SHADER, GL_FRAGMENT_SHADER, GL_FRAGMENT_SHADER, GL_GEOMETRY_SHADER,
                              GL_TESS_EVALUATION_SHADER, GL_TESS_CONTROL_SHADER, GL_COMPUTE_SHADER})
        program.addShader(static_cast<int>(type), QString::number(type));
    program.dumpShaderSources(directory.filePath(text("%1-%2.txt")));
    QStringList expected = {text("VS-0.txt"),  text("FS-0.txt"),  text("FS-1.txt"), text("GS-0.txt"),
                            text("TES-0.txt"), text("TCS-0.txt"), text("-0.txt")};
    expected.sort();
    EXPECT_EQ(QDir(directory.path()).entryList(QDir::Files, QDir::Name), expected);
    QFile file(directory.filePath(text("GS-0.txt")));
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    EXPECT_EQ(file.readAll(), QByteArray::number(GL_GEOMETRY_SHADER));
}

TEST_F(ShaderProgramBuild, DumpPatternMayHaveOnePlaceholderAloneOrNone)
{
    const QTemporaryDir directory;
    ShaderProgram program(nullptr);
    program.addShader(GL_VERTEX_SHADER, text("vertex"));
    program.addShader(GL_FRAGMENT_SHADER, text("fragment"));
    const LogCapture log;
    program.dumpShaderSources(directory.filePath(text("type-%1.txt")));
    program.dumpShaderSources(directory.filePath(text("number-%2.txt")));
    program.dumpShaderSources(directory.filePath(text("plain.txt")));
    program.dumpShaderSources(directory.filePath(text("%2-%1-%2.txt")));
    EXPECT_EQ(QDir(directory.path()).entryList(QDir::Files, QDir::Name),
              QStringList({"0-FS-0.txt", "0-VS-0.txt", "number-0.txt", "plain.txt", "type-FS.txt", "type-VS.txt"}));
    EXPECT_TRUE(log.lines().isEmpty()) << log.texts().join(u'\n').toStdString();
    QFile file(directory.filePath(text("type-FS.txt")));
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    EXPECT_EQ(file.readAll(), QByteArray("fragment"));
}

TEST_F(ShaderProgramBuild, DumpNumbersFollowTheOrderOfTheHash)
{
    const QTemporaryDir directory;
    ShaderProgram program(nullptr);
    program.addShader(GL_VERTEX_SHADER, text("a"));
    program.addShader(GL_VERTEX_SHADER, text("b"));
    program.dumpShaderSources(directory.filePath(text("%2")));
    const auto stages = Access::shaders(program).values();
    for (int i = 0; i < 2; ++i)
    {
        QFile file(directory.filePath(QString::number(i)));
        ASSERT_TRUE(file.open(QIODevice::ReadOnly));
        EXPECT_EQ(QString::fromUtf8(file.readAll()), stages[i]->sourceCode());
    }
}

// ---- compile -------------------------------------------------------------------------------------------------------

TEST_F(ShaderProgramBuild, CompileCompilesAllStages)
{
    ShaderProgram program(nullptr);
    program.addShader(GL_VERTEX_SHADER, text("a"));
    program.addShader(GL_FRAGMENT_SHADER, text("b"));
    const CallLog calls;
    EXPECT_TRUE(program.compile());
    EXPECT_EQ(calls.count(text("glCompileShader")), 2);
    for (const Shader* const shader : Access::shaders(program))
        EXPECT_TRUE(shader->isCompiled());
    EXPECT_FALSE(program.isLinked());
}

TEST_F(ShaderProgramBuild, CompileTakesTheLogOfTheFirstStageThatFails)
{
    ShaderProgram program(nullptr);
    program.addShader(GL_VERTEX_SHADER, text("broken"));
    const LogCapture quiet;
    EXPECT_FALSE(program.compile());
    EXPECT_EQ(program.log(), text("0:1: it is broken\n"));
}

TEST_F(ShaderProgramBuild, CompileTakesTheLogOfThatStageAmongSeveral)
{
    script.shaderLogs = {{"broken a", "log a"}, {"broken b", "log b"}, {"fine", "log of none"}};
    ShaderProgram program(nullptr);
    program.addShader(GL_VERTEX_SHADER, text("broken a"));
    program.addShader(GL_VERTEX_SHADER, text("fine"));
    program.addShader(GL_VERTEX_SHADER, text("broken b"));
    QStringList order;
    for (const Shader* const shader : Access::shaders(program))
        order.append(shader->sourceCode());
    const bool aIsFirst = order.indexOf(text("broken a")) < order.indexOf(text("broken b"));
    const LogCapture quiet;
    EXPECT_FALSE(program.compile());
    EXPECT_EQ(program.log(), aIsFirst ? text("log a") : text("log b"));
}

TEST_F(ShaderProgramBuild, CompileStopsAtTheFirstFailure)
{
    ShaderProgram program(nullptr);
    program.addShader(GL_VERTEX_SHADER, text("broken"));
    program.addShader(GL_FRAGMENT_SHADER, text("broken"));
    const LogCapture quiet;
    const CallLog calls;
    EXPECT_FALSE(program.compile());
    EXPECT_EQ(calls.count(text("glCompileShader")), 1);
}

TEST_F(ShaderProgramBuild, CompileDropsTheProgramsNameWithoutDeletingIt)
{
    ShaderProgram program(nullptr);
    program.addShader(GL_VERTEX_SHADER, text("a"));
    ASSERT_TRUE(program.link());
    const CallLog calls;
    EXPECT_TRUE(program.compile());
    EXPECT_EQ(program.shaderProgramID(), 0u);
    EXPECT_EQ(calls.count(text("glDeleteProgram")), 0);
}

// ---- linkPre -------------------------------------------------------------------------------------------------------

TEST_F(ShaderProgramBuild, LinkPreCompilesAttachesAndStartsTheLink)
{
    ShaderProgram program(nullptr);
    program.addShader(GL_VERTEX_SHADER, text("a"));
    const CallLog calls;
    EXPECT_TRUE(program.linkPre());
    EXPECT_EQ(functionNames(calls.list()),
              QStringList({"glCreateProgram", "glCreateShader", "glShaderSource", "glCompileShader", "glGetShaderiv",
                           "glAttachShader", "glLinkProgram"}));
    EXPECT_EQ(calls.list()[5], CallLog::call("glAttachShader", 1, 1));
    EXPECT_EQ(calls.list()[6], CallLog::call("glLinkProgram", 1));
    EXPECT_EQ(program.shaderProgramID(), 1u);
    EXPECT_TRUE(program.isLinked());
}

TEST_F(ShaderProgramBuild, LinkPreCompilesAndAttachesStageByStage)
{
    ShaderProgram program(nullptr);
    program.addShader(GL_VERTEX_SHADER, text("a"));
    program.addShader(GL_FRAGMENT_SHADER, text("b"));
    const auto stages = Access::shaders(program).values();
    const CallLog calls;
    EXPECT_TRUE(program.linkPre());
    EXPECT_EQ(functionNames(calls.list()),
              QStringList({"glCreateProgram", "glCreateShader", "glShaderSource", "glCompileShader", "glGetShaderiv",
                           "glAttachShader", "glCreateShader", "glShaderSource", "glCompileShader", "glGetShaderiv",
                           "glAttachShader", "glLinkProgram"}));
    EXPECT_EQ(
        calls.named({text("glCreateShader"), text("glAttachShader"), text("glLinkProgram")}),
        QStringList({CallLog::call("glCreateShader", stages[0]->shaderType()), CallLog::call("glAttachShader", 1, 1),
                     CallLog::call("glCreateShader", stages[1]->shaderType()), CallLog::call("glAttachShader", 1, 2),
                     CallLog::call("glLinkProgram", 1)}));
    EXPECT_EQ(stages[0]->shaderID(), 1u);
    EXPECT_EQ(stages[1]->shaderID(), 2u);
}

TEST_F(ShaderProgramBuild, LinkPreDeletesTheProgramWhenALaterStageDoesNotCompile)
{
    ShaderProgram program(nullptr);
    program.addShader(GL_VERTEX_SHADER, text("first text"));
    program.addShader(GL_FRAGMENT_SHADER, text("second text"));
    const auto stages = Access::shaders(program).values();
    script.brokenMark = stages[1]->sourceCode().toLatin1();
    const LogCapture quiet;
    const CallLog calls;
    EXPECT_FALSE(program.linkPre());
    EXPECT_EQ(functionNames(calls.list()),
              QStringList({"glCreateProgram", "glCreateShader", "glShaderSource", "glCompileShader", "glGetShaderiv",
                           "glAttachShader", "glCreateShader", "glShaderSource", "glCompileShader", "glGetShaderiv",
                           "glGetShaderiv", "glGetShaderInfoLog", "glDeleteShader", "glDeleteProgram"}));
    EXPECT_EQ(calls.named({text("glAttachShader"), text("glDeleteShader"), text("glDeleteProgram")}),
              QStringList({CallLog::call("glAttachShader", 1, 1), CallLog::call("glDeleteShader", 2),
                           CallLog::call("glDeleteProgram", 1)}));
    EXPECT_EQ(program.shaderProgramID(), 0u);
    EXPECT_TRUE(stages[0]->isCompiled());
    EXPECT_FALSE(stages[1]->isCompiled());
}

TEST_F(ShaderProgramBuild, LinkPreLeavesCompiledStagesAsTheyAre)
{
    ShaderProgram program(nullptr);
    program.addShader(GL_VERTEX_SHADER, text("a"));
    ASSERT_TRUE(program.compile());
    const CallLog calls;
    EXPECT_TRUE(program.linkPre());
    EXPECT_EQ(calls.list(), QStringList({CallLog::call("glCreateProgram"), CallLog::call("glAttachShader", 1, 1),
                                         CallLog::call("glLinkProgram", 1)}));
}

TEST_F(ShaderProgramBuild, SecondLinkPreIsTrueAndCreatesNothing)
{
    ShaderProgram program(nullptr);
    program.addShader(GL_VERTEX_SHADER, text("a"));
    ASSERT_TRUE(program.linkPre());
    const CallLog calls;
    EXPECT_TRUE(program.linkPre());
    EXPECT_TRUE(calls.list().isEmpty());
    EXPECT_EQ(program.shaderProgramID(), 1u);
}

TEST_F(ShaderProgramBuild, LinkWithAStageThatDoesNotCompileLeavesTheProgramsLog)
{
    ShaderProgram program(nullptr);
    const LogCapture quiet;
    script.linkStatus = 0;
    ASSERT_FALSE(program.link());
    script.linkStatus = 1;
    ASSERT_EQ(program.log(), text("nothing fits\n"));
    program.addShader(GL_VERTEX_SHADER, text("broken"));
    const CallLog calls;
    EXPECT_FALSE(program.link());
    EXPECT_EQ(program.shaderProgramID(), 0u);
    EXPECT_EQ(program.log(), text("nothing fits\n"));
    EXPECT_EQ(Access::shaders(program).value(GL_VERTEX_SHADER)->log(), text("0:1: it is broken\n"));
    EXPECT_EQ(calls.list().last(), CallLog::call("glDeleteProgram", 2));
    EXPECT_EQ(calls.count(text("glAttachShader")), 0);
    EXPECT_EQ(calls.count(text("glLinkProgram")), 0);
}
