// SPDX-License-Identifier: MIT
#include "ShaderProgram.h"

#include "ShaderTestTools.h"
#include "support/CallLog.h"
#include "support/LogCapture.h"
#include "support/TestAccess.h"

#include <algorithm>

using namespace Harrow::Vrk;
using namespace Harrow::Vrk::Test;

namespace
{

constexpr unsigned int kUnset = 0xFFFFFFFF;

/// Opens the protected side.
class ReflectedProgram : public ShaderProgram
{
public:
    using ShaderProgram::cacheUniformBlockIndices;
    using ShaderProgram::cacheUniformLocations;
    using ShaderProgram::cacheVertexAttributes;
    using ShaderProgram::summaryUniforms;
};

class ShaderProgramReflection : public ScriptedDriverTest
{
protected:
    /// Links `program` against what the script holds. No stage is needed for that.
    static void link(ShaderProgram& program)
    {
        ASSERT_TRUE(program.link());
    }
};

} // namespace

// ---- uniform locations ---------------------------------------------------------------------------------------------

TEST_F(ShaderProgramReflection, LocationIsAskedForOnceAlsoWhenTheProgramLacksTheName)
{
    driver.setUniformLocation("u_A", 7);
    ReflectedProgram program;
    link(program);
    const CallLog calls;
    for (int i = 0; i < 3; ++i)
    {
        EXPECT_EQ(program.getUniformLocation(text("u_A")), 7);
        EXPECT_EQ(program.getUniformLocation(text("u_None")), -1);
        EXPECT_TRUE(program.hasUniform(text("u_A")));
        EXPECT_FALSE(program.hasUniform(text("u_None")));
    }
    EXPECT_EQ(calls.list(), QStringList({CallLog::call("glGetUniformLocation", 1, "u_A"),
                                         CallLog::call("glGetUniformLocation", 1, "u_None")}));
}

TEST_F(ShaderProgramReflection, UniformNamesGoOverInTheLocalEncoding)
{
    const QString name = text("u_\xC3\xA9\xE2\x82\xAC");
    ASSERT_NE(name.toLocal8Bit(), name.toLatin1());
    driver.setUniformLocation(name.toLocal8Bit(), 6);
    driver.setUniformLocation(name.toLatin1(), 7);
    ReflectedProgram program;
    link(program);
    EXPECT_EQ(program.getUniformLocation(name), 6);
}

TEST_F(ShaderProgramReflection, LocationZeroIsAUniform)
{
    driver.setUniformLocation("u_A", 0);
    ReflectedProgram program;
    link(program);
    EXPECT_TRUE(program.hasUniform(text("u_A")));
}

TEST_F(ShaderProgramReflection, LocationsOutliveClearAndANewLink)
{
    driver.setUniformLocation("u_A", 7);
    ReflectedProgram program;
    link(program);
    ASSERT_EQ(program.getUniformLocation(text("u_A")), 7);
    driver.setUniformLocation("u_A", 8);
    driver.setUniformLocation("u_DrawID", 9);
    program.clear();
    link(program);
    EXPECT_EQ(program.getUniformLocation(text("u_A")), 7);
    EXPECT_EQ(program.getUniformLocationNameID(), -1); // cached by the first link
}

TEST_F(ShaderProgramReflection, DrawIdLocationNeedsNoLookUp)
{
    driver.setUniformLocation("u_DrawID", 3);
    ReflectedProgram program;
    EXPECT_EQ(program.getUniformLocationNameID(), -1);
    link(program);
    const CallLog calls;
    EXPECT_EQ(program.getUniformLocationNameID(), 3);
    EXPECT_TRUE(calls.list().isEmpty());
}

TEST_F(ShaderProgramReflection, CacheUniformLocationsTakesTheDrawIdOnly)
{
    driver.setUniformLocation("u_DrawID", 3);
    ReflectedProgram program;
    ASSERT_TRUE(program.linkPre());
    const CallLog calls;
    program.cacheUniformLocations();
    EXPECT_EQ(calls.list(), QStringList({CallLog::call("glGetUniformLocation", 1, "u_DrawID")}));
    EXPECT_EQ(program.getUniformLocationNameID(), 3);
}

// ---- attributes ----------------------------------------------------------------------------------------------------

TEST_F(ShaderProgramReflection, AttributesAreHeldByNameWithTheirLocation)
{
    script.attributes = {{"va_Vertex", 4}, {"va_Normal", 0}};
    ReflectedProgram program;
    link(program);
    EXPECT_EQ(program.getVertexAttributeLocation(text("va_Vertex")), 4);
    EXPECT_EQ(program.getVertexAttributeLocation(text("va_Normal")), 0);
    EXPECT_EQ(program.getVertexAttributeLocation(text("va_None")), -1);
    EXPECT_EQ(program.getVertexAttributeNameLocationMap(),
              (QHash<QString, int>{{text("va_Vertex"), 4}, {text("va_Normal"), 0}}));
    QStringList names = program.getVertexAttributeNames();
    names.sort();
    EXPECT_EQ(names, QStringList({"va_Normal", "va_Vertex"}));
}

TEST_F(ShaderProgramReflection, EachAttributeIsAskedForInA200ByteBuffer)
{
    script.attributes = {{"va_Vertex", 4}, {"gl_VertexID", -1}};
    ReflectedProgram program;
    link(program);
    EXPECT_EQ(script.longestNameAsked, 200);
    const CallLog calls;
    program.cacheVertexAttributes();
    EXPECT_EQ(functionNames(calls.list()), QStringList({"glGetProgramiv", "glGetActiveAttrib", "glGetAttribLocation",
                                                        "glGetActiveAttrib", "glGetAttribLocation"}));
    EXPECT_TRUE(calls.list()[0].startsWith(QLatin1String("glGetProgramiv(1, 0x8b89, ")));
    EXPECT_TRUE(calls.list()[1].startsWith(QLatin1String("glGetActiveAttrib(1, 0, 200, ")));
    EXPECT_EQ(calls.list()[2], CallLog::call("glGetAttribLocation", 1, "va_Vertex"));
}

TEST_F(ShaderProgramReflection, AttributeNamesBeyond199CharactersAreCut)
{
    script.attributes = {{"va_" + QByteArray(300, 'x'), 1}};
    ReflectedProgram program;
    link(program);
    EXPECT_EQ(program.getVertexAttributeNames(), QStringList({text("va_") + QString(196, QLatin1Char('x'))}));
}

TEST_F(ShaderProgramReflection, AttributeThatTheDriverDoesNotWriteHasNoName)
{
    driver.replace(
        "glGetActiveAttrib", +[](GLuint, GLuint, GLsizei, GLsizei*, GLint*, GLenum*, GLchar*) {});
    driver.replace(
        "glGetAttribLocation", +[](GLuint, const GLchar*) -> GLint { return 5; });
    ASSERT_EQ(driver.load(), 1);
    script.attributes = {{"va_Vertex", 4}};
    ReflectedProgram program;
    link(program);
    EXPECT_EQ(program.getVertexAttributeNames(), QStringList({QString()}));
}

TEST_F(ShaderProgramReflection, NameThatTheDriverDoesNotEndHasNothingOfTheOneBefore)
{
    driver.replace(
        "glGetActiveAttrib",
        +[](GLuint, GLuint index, GLsizei, GLsizei*, GLint*, GLenum*, GLchar* name)
        {
            const QByteArray& written = ShaderScript::current().attributes[index].name;
            std::copy(written.cbegin(), written.cend(), name);
        });
    ASSERT_EQ(driver.load(), 1);
    script.attributes = {{"va_Vertex", 4}, {"va_B", 5}};
    ReflectedProgram program;
    link(program);
    EXPECT_EQ(program.getVertexAttributeNameLocationMap(),
              (QHash<QString, int>{{text("va_Vertex"), 4}, {text("va_B"), 5}}));
}

TEST_F(ShaderProgramReflection, NamesComeBackInTheLocalEncoding)
{
    const QString name = text("v_\xC3\xA9\xE2\x82\xAC");
    script.attributes = {{name.toLocal8Bit(), 4}};
    script.uniformBlocks = {name.toLocal8Bit()};
    script.storageBlocks = {name.toLocal8Bit()};
    ReflectedProgram program;
    link(program);
    EXPECT_EQ(program.getVertexAttributeLocation(name), 4);
    EXPECT_EQ(program.getUniformBlockIndex(name), 0);
    EXPECT_EQ(program.getStorageBlockIndex(name), 0);
}

TEST_F(ShaderProgramReflection, AttributeWithoutALocationIsSkipped)
{
    script.attributes = {{"va_Vertex", -1}};
    ReflectedProgram program;
    const LogCapture log;
    link(program);
    EXPECT_TRUE(program.getVertexAttributeNames().isEmpty());
    EXPECT_TRUE(log.lines().isEmpty());
}

TEST_F(ShaderProgramReflection, ShortNamesAndOtherPrefixesAreUserAttributes)
{
    script.attributes = {{"a", 0}, {"gl", 1}, {"GL_x", 2}, {"glx", 3}, {"xgl_", 4}};
    ReflectedProgram program;
    const LogCapture log;
    link(program);
    QStringList names = program.getVertexAttributeNames();
    names.sort();
    EXPECT_EQ(names, QStringList({"GL_x", "a", "gl", "glx", "xgl_"}));
    EXPECT_TRUE(log.lines().isEmpty());
}

TEST_F(ShaderProgramReflection, VertexAndInstanceNumbersAreAbsentWithoutAReport)
{
    script.attributes = {{"gl_VertexID", -1}, {"gl_InstanceID", 0}, {"va_Vertex", 1}};
    ReflectedProgram program;
    const LogCapture log;
    link(program);
    EXPECT_EQ(program.getVertexAttributeNames(), QStringList({"va_Vertex"}));
    EXPECT_TRUE(log.lines().isEmpty());
}

TEST_F(ShaderProgramReflection, BaseInstanceIsToleratedBecauseFourteenCharactersAreCompared)
{
    // The fourteenth character of "gl_BaseInstance" is its "c".
    script.attributes = {{"gl_BaseInstanceARB", 0}, {"gl_BaseInstance", 0}, {"gl_BaseInstancX", 0}};
    ReflectedProgram program;
    const LogCapture log;
    link(program);
    EXPECT_TRUE(program.getVertexAttributeNames().isEmpty());
    EXPECT_TRUE(log.lines().isEmpty());
}

TEST_F(ShaderProgramReflection, AnyOtherBuiltInIsReportedAndNotStored)
{
    const QList<QByteArray> names = {"gl_BaseVertex", "gl_DrawID",       "gl_",          "gl_VertexIDx",
                                     "gl_InstanceI",  "gl_BaseInstanXe", "gl_BaseInstan"};
    for (const QByteArray& name : names)
    {
        script.attributes = {{name, 0}};
        ReflectedProgram program;
        const LogCapture log;
        link(program);
        EXPECT_TRUE(program.getVertexAttributeNames().isEmpty());
        EXPECT_EQ(
            log.messages(QtCriticalMsg),
            QStringList(
                {text("[ !! ] Shader Contains GL attribute '%1'. This is illigal").arg(QString::fromLatin1(name))}));
        EXPECT_EQ(log.lines().size(), 1);
    }
}

TEST_F(ShaderProgramReflection, AttributesAreReadAnewAndEmptiedWithoutAProgram)
{
    script.attributes = {{"va_Old", 0}};
    ReflectedProgram program;
    link(program);
    script.attributes = {{"va_New", 1}};
    program.cacheVertexAttributes();
    EXPECT_EQ(program.getVertexAttributeNames(), QStringList({"va_New"}));
    script.attributes = {};
    program.cacheVertexAttributes();
    EXPECT_TRUE(program.getVertexAttributeNames().isEmpty());

    script.attributes = {{"va_New", 1}};
    program.cacheVertexAttributes();
    program.clear();
    const CallLog calls;
    program.cacheVertexAttributes();
    EXPECT_TRUE(program.getVertexAttributeNames().isEmpty());
    EXPECT_TRUE(calls.list().isEmpty());
}

// ---- blocks --------------------------------------------------------------------------------------------------------

TEST_F(ShaderProgramReflection, BlocksAreReadInThisOrderOfCalls)
{
    script.uniformBlocks = {"u_A", "u_B"};
    script.storageBlocks = {"u_S"};
    ReflectedProgram program;
    ASSERT_TRUE(program.linkPre());
    const CallLog calls;
    program.cacheUniformBlockIndices();
    EXPECT_EQ(functionNames(calls.list()),
              QStringList({"glGetProgramiv", "glGetActiveUniformBlockName", "glGetActiveUniformBlockName",
                           "glGetProgramInterfaceiv", "glGetProgramResourceName"}));
    EXPECT_TRUE(calls.list()[0].startsWith(QLatin1String("glGetProgramiv(1, 0x8a36, ")));
    EXPECT_TRUE(calls.list()[2].startsWith(QLatin1String("glGetActiveUniformBlockName(1, 1, 0x400, ")));
    EXPECT_TRUE(calls.list()[3].startsWith(QLatin1String("glGetProgramInterfaceiv(1, 0x92e6, 0x92f5, ")));
    EXPECT_TRUE(calls.list()[4].startsWith(QLatin1String("glGetProgramResourceName(1, 0x92e6, 0, 0x400, ")));
}

TEST_F(ShaderProgramReflection, BlockIndicesAreFoundByNameWithoutACall)
{
    script.uniformBlocks = {"u_A", "u_B"};
    script.storageBlocks = {"u_S", "u_T"};
    ReflectedProgram program;
    link(program);
    const CallLog calls;
    EXPECT_EQ(program.getUniformBlockIndex(text("u_A")), 0);
    EXPECT_EQ(program.getUniformBlockIndex(text("u_B")), 1);
    EXPECT_EQ(program.getUniformBlockIndex(text("u_S")), -1);
    EXPECT_EQ(program.getStorageBlockIndex(text("u_S")), 0);
    EXPECT_EQ(program.getStorageBlockIndex(text("u_T")), 1);
    EXPECT_EQ(program.getStorageBlockIndex(text("u_A")), -1);
    EXPECT_TRUE(calls.list().isEmpty());
}

TEST_F(ShaderProgramReflection, BlockNamesBeyond1023CharactersAreCut)
{
    script.uniformBlocks = {QByteArray(3000, 'u')};
    script.storageBlocks = {QByteArray(3000, 's')};
    ReflectedProgram program;
    link(program);
    EXPECT_EQ(program.getUniformBlockIndex(QString(1023, QLatin1Char('u'))), 0);
    EXPECT_EQ(program.getStorageBlockIndex(QString(1023, QLatin1Char('s'))), 0);
}

TEST_F(ShaderProgramReflection, StorageBlocksAreNotReadWhereOneOfThreeFunctionsIsMissing)
{
    script.storageBlocks = {"u_S"};
    for (const char* const missing :
         {"glGetProgramInterfaceiv", "glGetProgramResourceName", "glGetProgramResourceIndex"})
    {
        ShaderProgramTestAccess::resetEntryPoints();
        driver.refuse(missing);
        ReflectedProgram program;
        const CallLog calls;
        link(program);
        EXPECT_EQ(program.getStorageBlockIndex(text("u_S")), -1) << missing;
        EXPECT_EQ(calls.count(text("glGetProgramInterfaceiv")), 0) << missing;
        driver.offer(missing);
    }
}

TEST_F(ShaderProgramReflection, BlocksAreEmptiedWithoutAProgram)
{
    script.uniformBlocks = {"u_A"};
    script.storageBlocks = {"u_S"};
    ReflectedProgram program;
    link(program);
    program.clear();
    EXPECT_EQ(program.getUniformBlockIndex(text("u_A")), 0); // the caches outlive clear
    const CallLog calls;
    program.cacheUniformBlockIndices();
    EXPECT_EQ(program.getUniformBlockIndex(text("u_A")), -1);
    EXPECT_EQ(program.getStorageBlockIndex(text("u_S")), -1);
    EXPECT_TRUE(calls.list().isEmpty());
}

TEST_F(ShaderProgramReflection, BindingIsUnsetUntilItIsSetAndRepeatedSettingCostsNoCall)
{
    script.uniformBlocks = {"u_A", "u_B"};
    ReflectedProgram program;
    link(program);
    const CallLog calls;
    EXPECT_EQ(program.getUniformBlockBinding(1), kUnset);
    program.setUniformBlockBinding(1, 0);
    program.setUniformBlockBinding(1, 0);
    EXPECT_EQ(program.getUniformBlockBinding(1), 0u);
    EXPECT_EQ(program.getUniformBlockBinding(0), kUnset);
    program.setUniformBlockBinding(1, 5);
    program.setUniformBlockBinding(1, 5);
    EXPECT_EQ(program.getUniformBlockBinding(1), 5u);
    EXPECT_EQ(calls.list(), QStringList({CallLog::call("glUniformBlockBinding", 1, 1, 0),
                                         CallLog::call("glUniformBlockBinding", 1, 1, 5)}));
}

TEST_F(ShaderProgramReflection, StorageBindingIsUnsetUntilItIsSetAndRepeatedSettingCostsNoCall)
{
    script.storageBlocks = {"u_S"};
    ReflectedProgram program;
    link(program);
    const CallLog calls;
    EXPECT_EQ(program.getStorageBlockBinding(0), kUnset);
    program.setStorageBlockBinding(0, 3);
    program.setStorageBlockBinding(0, 3);
    EXPECT_EQ(program.getStorageBlockBinding(0), 3u);
    EXPECT_EQ(calls.list(), QStringList({CallLog::call("glShaderStorageBlockBinding", 1, 0, 3)}));
}

TEST_F(ShaderProgramReflection, NewLinkForgetsTheBindings)
{
    script.uniformBlocks = {"u_A"};
    script.storageBlocks = {"u_S"};
    ReflectedProgram program;
    link(program);
    program.setUniformBlockBinding(0, 1);
    program.setStorageBlockBinding(0, 2);
    program.clear();
    link(program);
    EXPECT_EQ(program.getUniformBlockBinding(0), kUnset);
    EXPECT_EQ(program.getStorageBlockBinding(0), kUnset);
}

TEST_F(ShaderProgramReflection, NewLinkForgetsBlocksThatAreGone)
{
    script.uniformBlocks = {"u_A", "u_B"};
    script.storageBlocks = {"u_S", "u_T"};
    ReflectedProgram program;
    link(program);
    script.uniformBlocks = {"u_B"};
    script.storageBlocks = {};
    program.clear();
    link(program);
    EXPECT_EQ(program.getUniformBlockIndex(text("u_A")), -1);
    EXPECT_EQ(program.getUniformBlockIndex(text("u_B")), 0);
    EXPECT_EQ(program.getStorageBlockIndex(text("u_S")), -1);
    const LogCapture log;
    EXPECT_EQ(program.getUniformBlockBinding(1), kUnset);
    EXPECT_EQ(program.getStorageBlockBinding(0), kUnset);
    EXPECT_EQ(log.lines().size(), 2);
}

TEST_F(ShaderProgramReflection, MissingBlockIndexIsReportedAndChangesNothing)
{
    ReflectedProgram program;
    link(program);
    const CallLog calls;
    const LogCapture log;
    program.setUniformBlockBinding(4, 1);
    program.setStorageBlockBinding(5, 1);
    EXPECT_EQ(program.getUniformBlockBinding(6), kUnset);
    EXPECT_EQ(program.getStorageBlockBinding(7), kUnset);
    EXPECT_TRUE(calls.list().isEmpty());
    const QString uniforms = text("itFind != this->_uniformBlockBindingIndices.end()");
    const QString storages = text("itFind != this->_storageBlockBindingIndices.end()");
    EXPECT_EQ(
        log.messages(QtCriticalMsg),
        QStringList({assertionLine(uniforms, text("Trying to set uniformBlockIndex 4 on shader 1. Does not exist.")),
                     assertionLine(storages, text("Trying to set storageBlockIndex 5 on shader 1. Does not exist.")),
                     assertionLine(uniforms, text("Trying to get uniformBlockIndex 6 on shader 1. Does not exist.")),
                     assertionLine(storages, text("Trying to get storageBlockIndex 7 on shader 1. Does not exist."))}));
    EXPECT_EQ(log.lines().size(), 4);
    // Nothing was made up on the way.
    program.setUniformBlockBinding(4, 1);
    EXPECT_EQ(log.lines().size(), 5);
}

TEST_F(ShaderProgramReflection, StorageBindingWithoutItsFunctionIsReportedAndChangesNothing)
{
    driver.refuse("glShaderStorageBlockBinding");
    script.storageBlocks = {"u_S"};
    ReflectedProgram program;
    link(program);
    ASSERT_EQ(program.getStorageBlockIndex(text("u_S")), 0);
    const LogCapture log;
    program.setStorageBlockBinding(0, 1);
    EXPECT_EQ(program.getStorageBlockBinding(0), kUnset);
    EXPECT_EQ(log.messages(QtCriticalMsg),
              QStringList({"OpenGL function 'glShaderStorageBlockBinding' is not available"}));
}

TEST_F(ShaderProgramReflection, TypeFormsTakeStorageBlocksForThatTypeAndUniformBlocksForAnyOther)
{
    script.uniformBlocks = {"u_A", "u_Both"};
    script.storageBlocks = {"u_Both"};
    ReflectedProgram program;
    link(program);
    EXPECT_EQ(program.getTypeBlockIndex(GL_SHADER_STORAGE_BUFFER, text("u_Both")), 0);
    EXPECT_EQ(program.getTypeBlockIndex(GL_SHADER_STORAGE_BUFFER, text("u_A")), -1);
    program.setTypeBlockBinding(GL_SHADER_STORAGE_BUFFER, 0, 9);
    EXPECT_EQ(program.getStorageBlockBinding(0), 9u);
    EXPECT_EQ(program.getTypeBlockBinding(GL_SHADER_STORAGE_BUFFER, 0), 9u);

    unsigned int binding = 10;
    for (const GLenum type : {GL_UNIFORM_BUFFER, GL_ARRAY_BUFFER, 0, 0x7FFFFFFF})
    {
        const CallLog calls;
        EXPECT_EQ(program.getTypeBlockIndex(type, text("u_Both")), 1);
        program.setTypeBlockBinding(type, 1, ++binding);
        EXPECT_EQ(program.getTypeBlockBinding(type, 1), binding);
        EXPECT_EQ(calls.list(), QStringList({CallLog::call("glUniformBlockBinding", 1, 1, binding)}));
    }
    EXPECT_EQ(program.getStorageBlockBinding(0), 9u);
}

// ---- the summary ---------------------------------------------------------------------------------------------------

TEST_F(ShaderProgramReflection, SummaryTalliesArraySizesByTypeAndSumsTheSamplers)
{
    script.uniforms = {{"u_A", 0, 1, GL_FLOAT},         {"u_B[0]", 0, 7, GL_FLOAT},     {"u_C", 0, 1, GL_SAMPLER_2D},
                       {"u_D[0]", 0, 4, GL_SAMPLER_2D}, {"u_E", 0, 2, GL_SAMPLER_CUBE}, {"u_F", 0, 1, 0x904D}};
    ReflectedProgram program;
    link(program);
    script.longestNameAsked = 0;
    const LogCapture log;
    program.summaryUniforms();
    const QString place = QString::asprintf("%p", static_cast<const void*>(&program));
    EXPECT_EQ(log.messages(QtDebugMsg), QStringList({place + text(" Type 0x1406 : 8"), place + text(" Type 0x8B5E : 5"),
                                                     place + text(" Type 0x8B60 : 2"), place + text(" Type 0x904D : 1"),
                                                     place + text(" Texture Samplers 7")}));
    EXPECT_EQ(log.lines().size(), 5);
    EXPECT_EQ(script.longestNameAsked, 1024);
}

TEST_F(ShaderProgramReflection, SummaryOfNoUniformsCountsNoSamplers)
{
    ReflectedProgram program;
    link(program);
    const LogCapture log;
    program.summaryUniforms();
    EXPECT_EQ(log.messages(),
              QStringList({QString::asprintf("%p", static_cast<const void*>(&program)) + text(" Texture Samplers 0")}));
}
