// SPDX-License-Identifier: MIT
#include "ShaderProgram.h"

#include "GLSLMacroProcessor.h"
#include "Shader.h"
#include "ShaderTestTools.h"
#include "support/CallLog.h"
#include "support/LogCapture.h"
#include "support/TestAccess.h"

#include <cstring>
#include <limits>

using namespace Harrow::Vrk;
using namespace Harrow::Vrk::Test;

namespace
{

class ShaderProgramHash : public ScriptedDriverTest
{
};

/// A driver with stored binaries.
class ShaderProgramBinaries : public ScriptedDriverTest
{
protected:
    void SetUp() override
    {
        ScriptedDriverTest::SetUp();
        driver.setExtensions({"GL_ARB_get_program_binary"});
    }
};

} // namespace

// ---- the hash ------------------------------------------------------------------------------------------------------

TEST_F(ShaderProgramHash, HashIsTheMd5OfTheSortedMd5sOfTheSources)
{
    ShaderProgram program(nullptr);
    program.addShader(GL_VERTEX_SHADER, text("alpha"));
    program.addShader(GL_FRAGMENT_SHADER, text("beta \xC3\xA9"));
    EXPECT_EQ(program.constructShaderHash(), text("4d7021f6d95adf7ddc86f7ab93faa734"));
}

TEST_F(ShaderProgramHash, HashDoesNotDependOnTheOrderOfTheStages)
{
    ShaderProgram first(nullptr);
    ShaderProgram second(nullptr);
    const QStringList sources = {text("a"), text("b"), text("c"), text("d")};
    for (qsizetype i = 0; i < sources.size(); ++i)
    {
        first.addShader(GL_VERTEX_SHADER, sources[i]);
        second.addShader(GL_VERTEX_SHADER, sources[sources.size() - 1 - i]);
    }
    EXPECT_EQ(first.constructShaderHash(), second.constructShaderHash());
}

TEST_F(ShaderProgramHash, HashCoversDefinesAndMacros)
{
    GLSLMacroProcessor processor;
    const auto hash = [&processor]
    {
        ShaderProgram program(nullptr);
        program.setMacroProcessor(&processor);
        program.addShader(GL_VERTEX_SHADER, text("#version 150\n#macro X default\n"));
        return program.constructShaderHash();
    };
    const QString plain = hash();
    processor.addDefine(text("SIZE"), text("4"));
    const QString withDefine = hash();
    processor.addMacro(text("X"), text("held"));
    const QString withMacro = hash();
    EXPECT_NE(plain, withDefine);
    EXPECT_NE(withDefine, withMacro);
}

TEST_F(ShaderProgramHash, HashAfterTheLinkIsThatOfEmptyStages)
{
    ShaderProgram program(nullptr);
    program.addShader(GL_VERTEX_SHADER, text("alpha"));
    program.addShader(GL_FRAGMENT_SHADER, text("beta"));
    ASSERT_TRUE(program.link());
    EXPECT_EQ(program.constructShaderHash(), text("020eb29b524d7ba672d9d48bc72db455"));
}

// ---- binaries ------------------------------------------------------------------------------------------------------

TEST_F(ShaderProgramBinaries, GetIsFalseWithoutABinaryAfterTheHint)
{
    ShaderProgram program(nullptr);
    ASSERT_TRUE(program.link());
    script.binaryLength = 0;
    QByteArray data("kept");
    unsigned int format = 7;
    const CallLog calls;
    EXPECT_FALSE(program.getProgramBinary(data, format));
    ASSERT_EQ(functionNames(calls.list()), QStringList({"glProgramParameteri", "glGetProgramiv"}));
    EXPECT_EQ(calls.list()[0], CallLog::call("glProgramParameteri", 1, 0x8257, 1));
    EXPECT_TRUE(calls.list()[1].startsWith(QLatin1String("glGetProgramiv(1, 0x8741, ")));
    EXPECT_EQ(data, QByteArray("kept"));
    EXPECT_EQ(format, 7u);
}

TEST_F(ShaderProgramBinaries, GetFillsDataAndFormat)
{
    driver.replace(
        "glGetProgramBinary",
        +[](GLuint, GLsizei size, GLsizei* length, GLenum* format, void* data)
        {
            std::memcpy(data, "binary", static_cast<std::size_t>(size));
            *length = size;
            *format = 0x9999;
        });
    ShaderProgram program(nullptr);
    ASSERT_TRUE(program.link());
    script.binaryLength = 6;
    QByteArray data;
    unsigned int format = 0;
    const CallLog calls;
    EXPECT_TRUE(program.getProgramBinary(data, format));
    EXPECT_EQ(functionNames(calls.list()),
              QStringList({"glProgramParameteri", "glGetProgramiv", "glGetProgramBinary"}));
    EXPECT_EQ(data, QByteArray("binary"));
    EXPECT_EQ(format, 0x9999u);
}

TEST_F(ShaderProgramBinaries, GetHoldsNoMoreThanTheDriverWrote)
{
    driver.replace(
        "glGetProgramBinary",
        +[](GLuint, GLsizei, GLsizei* length, GLenum* format, void* data)
        {
            std::memcpy(data, "bin", 3);
            *length = 3;
            *format = 1;
        });
    ShaderProgram program(nullptr);
    ASSERT_TRUE(program.link());
    script.binaryLength = 100;
    QByteArray data;
    unsigned int format = 0;
    EXPECT_TRUE(program.getProgramBinary(data, format));
    EXPECT_EQ(data, QByteArray("bin"));
}

TEST_F(ShaderProgramBinaries, GetIsFalseWhenTheDriverWroteNothing)
{
    driver.replace(
        "glGetProgramBinary", +[](GLuint, GLsizei, GLsizei* length, GLenum*, void*) { *length = 0; });
    ShaderProgram program(nullptr);
    ASSERT_TRUE(program.link());
    script.binaryLength = 100;
    QByteArray data("kept");
    unsigned int format = 7;
    EXPECT_FALSE(program.getProgramBinary(data, format));
    EXPECT_EQ(data, QByteArray("kept"));
    EXPECT_EQ(format, 7u);
}

TEST_F(ShaderProgramBinaries, GetIsFalseWhenTheDriverFailsAndTouchesNothing)
{
    driver.replace(
        "glGetProgramBinary", +[](GLuint, GLsizei, GLsizei*, GLenum*, void*) {});
    ShaderProgram program(nullptr);
    ASSERT_TRUE(program.link());
    script.binaryLength = 100;
    QByteArray data("kept");
    unsigned int format = 7;
    EXPECT_FALSE(program.getProgramBinary(data, format));
    EXPECT_EQ(data, QByteArray("kept"));
    EXPECT_EQ(format, 7u);
}

TEST_F(ShaderProgramBinaries, GetHoldsZerosWhereTheDriverCountsButDoesNotWrite)
{
    driver.replace(
        "glGetProgramBinary", +[](GLuint, GLsizei, GLsizei* length, GLenum*, void*) { *length = 5000; });
    ShaderProgram program(nullptr);
    ASSERT_TRUE(program.link());
    script.binaryLength = 4096;
    QByteArray data;
    unsigned int format = 7;
    EXPECT_TRUE(program.getProgramBinary(data, format));
    EXPECT_EQ(data, QByteArray(4096, '\0'));
    EXPECT_EQ(format, 0u);
}

TEST_F(ShaderProgramBinaries, GetDoesNotBelieveALengthBeyond64Mebibytes)
{
    ShaderProgram program(nullptr);
    ASSERT_TRUE(program.link());
    for (const GLint length : {64 * 1024 * 1024 + 1, std::numeric_limits<GLint>::max()})
    {
        script.binaryLength = length;
        QByteArray data("kept");
        unsigned int format = 7;
        const CallLog calls;
        EXPECT_FALSE(program.getProgramBinary(data, format));
        EXPECT_EQ(functionNames(calls.list()), QStringList({"glProgramParameteri", "glGetProgramiv"}));
        EXPECT_EQ(data, QByteArray("kept"));
        EXPECT_EQ(format, 7u);
    }
}

TEST_F(ShaderProgramBinaries, GetWithoutAProgramIsFalseAndChangesNothing)
{
    const ShaderProgram program(nullptr);
    script.binaryLength = 6;
    QByteArray data("kept");
    unsigned int format = 7;
    const CallLog calls;
    EXPECT_FALSE(program.getProgramBinary(data, format));
    ASSERT_EQ(functionNames(calls.list()), QStringList({"glProgramParameteri", "glGetProgramiv"}));
    EXPECT_EQ(calls.list()[0], CallLog::call("glProgramParameteri", 0, 0x8257, 1));
    EXPECT_EQ(data, QByteArray("kept"));
    EXPECT_EQ(format, 7u);
}

TEST_F(ShaderProgramBinaries, LoadTakesTheDataInAndReadsTheProgram)
{
    script.attributes = {{"va_Vertex", 2}};
    driver.setUniformLocation("u_DrawID", 4);
    ShaderProgram program(nullptr);
    const CallLog calls;
    const QByteArray data("binary");
    EXPECT_TRUE(program.loadProgramFromRawData(data, 0x9999));
    EXPECT_EQ(
        functionNames(calls.list()),
        QStringList({"glCreateProgram", "glProgramBinary", "glGetProgramiv", "glGetProgramiv", "glGetActiveAttrib",
                     "glGetAttribLocation", "glGetUniformLocation", "glGetProgramiv", "glGetProgramInterfaceiv"}));
    EXPECT_EQ(calls.list()[1],
              CallLog::call("glProgramBinary", 1, 0x9999, static_cast<const void*>(data.constData()), 6));
    EXPECT_TRUE(calls.list()[2].startsWith(QLatin1String("glGetProgramiv(1, 0x8b82, ")));
    EXPECT_TRUE(program.isLinked());
    EXPECT_EQ(program.getUniformLocationNameID(), 4);
    EXPECT_EQ(program.getVertexAttributeLocation(text("va_Vertex")), 2);
}

TEST_F(ShaderProgramBinaries, RejectedDataIsDroppedWithoutAMessage)
{
    script.linkStatus = 0;
    ShaderProgram program(nullptr);
    const CallLog calls;
    const LogCapture log;
    EXPECT_FALSE(program.loadProgramFromRawData(QByteArray("stale"), 1));
    EXPECT_EQ(calls.list().last(), CallLog::call("glDeleteProgram", 1));
    EXPECT_EQ(program.shaderProgramID(), 0u);
    EXPECT_TRUE(program.log().isEmpty());
    EXPECT_TRUE(log.lines().isEmpty());
}

TEST_F(ShaderProgramBinaries, LoadReadsBlocksAnewAndForgetsTheirBindings)
{
    script.attributes = {{"va_Old", 2}};
    script.uniformBlocks = {"u_A", "u_B"};
    script.storageBlocks = {"u_S"};
    driver.setUniformLocation("u_DrawID", 4);
    ShaderProgram program(nullptr);
    ASSERT_TRUE(program.loadProgramFromRawData(QByteArray("first"), 1));
    program.setUniformBlockBinding(0, 5);
    program.setUniformBlockBinding(1, 6);
    program.setStorageBlockBinding(0, 7);

    script.attributes = {{"va_New", 3}};
    script.uniformBlocks = {"u_B"};
    script.storageBlocks = {"u_T", "u_S"};
    program.clear();
    ASSERT_TRUE(program.loadProgramFromRawData(QByteArray("second"), 1));
    EXPECT_EQ(program.getVertexAttributeNames(), QStringList({"va_New"}));
    EXPECT_EQ(program.getUniformBlockIndex(text("u_A")), -1);
    EXPECT_EQ(program.getUniformBlockIndex(text("u_B")), 0);
    EXPECT_EQ(program.getStorageBlockIndex(text("u_S")), 1);
    EXPECT_EQ(program.getUniformBlockBinding(0), 0xFFFFFFFFu);
    EXPECT_EQ(program.getStorageBlockBinding(0), 0xFFFFFFFFu);
    EXPECT_EQ(program.getStorageBlockBinding(1), 0xFFFFFFFFu);
}

TEST_F(ShaderProgramBinaries, LoadOntoAProgramLetsTheOldOneGoUndeletedAndKeepsTheStages)
{
    ShaderProgram program(nullptr);
    program.addShader(GL_VERTEX_SHADER, text("a"));
    ASSERT_TRUE(program.linkPre());
    ASSERT_EQ(program.shaderProgramID(), 1u);
    const CallLog calls;
    EXPECT_TRUE(program.loadProgramFromRawData(QByteArray("binary"), 1));
    EXPECT_EQ(program.shaderProgramID(), 2u);
    EXPECT_EQ(calls.count(text("glDeleteProgram")), 0);
    EXPECT_EQ(calls.count(text("glDeleteShader")), 0);
    const auto& stages = ShaderProgramTestAccess::shaders(program);
    ASSERT_EQ(stages.size(), 1);
    EXPECT_EQ(stages.value(GL_VERTEX_SHADER)->sourceCode(), text("a"));
    EXPECT_TRUE(stages.value(GL_VERTEX_SHADER)->isCompiled());
}

TEST_F(ShaderProgramBinaries, RejectedDataLeavesWhatWasReadBefore)
{
    script.attributes = {{"va_Vertex", 2}};
    script.uniformBlocks = {"u_A"};
    script.storageBlocks = {"u_S"};
    driver.setUniformLocation("u_DrawID", 4);
    ShaderProgram program(nullptr);
    ASSERT_TRUE(program.link());
    program.setUniformBlockBinding(0, 5);
    program.setStorageBlockBinding(0, 7);
    script.linkStatus = 0;
    script.attributes = {};
    script.uniformBlocks = {};
    script.storageBlocks = {};
    const CallLog calls;
    EXPECT_FALSE(program.loadProgramFromRawData(QByteArray("stale"), 1));
    // The one that was rejected goes, the one before is let go as it is.
    EXPECT_EQ(calls.named({text("glDeleteProgram")}), QStringList({CallLog::call("glDeleteProgram", 2)}));
    EXPECT_EQ(program.shaderProgramID(), 0u);
    EXPECT_EQ(program.getVertexAttributeLocation(text("va_Vertex")), 2);
    EXPECT_EQ(program.getUniformLocationNameID(), 4);
    EXPECT_EQ(program.getUniformBlockBinding(0), 5u);
    EXPECT_EQ(program.getStorageBlockBinding(0), 7u);
}
