// SPDX-License-Identifier: MIT
#include "GLLoader.h"

#include "GLFunctions.h"
#include "GLRuntimeTestAccess.h"
#include "GLUtilities.h"
#include "support/CallLog.h"
#include "support/FakeDriver.h"
#include "support/GLTest.h"
#include "support/LogCapture.h"

#include <set>
#include <string>

using namespace Harrow::Vrk;
using namespace Harrow::Vrk::Test;

namespace
{

void* code(std::intptr_t value)
{
    return reinterpret_cast<void*>(value);
}

std::set<std::string> coreNames()
{
    std::set<std::string> names;
    for (int i = 0; i < GLRuntimeTestAccess::coreEntryCount(); ++i)
        names.insert(GLRuntimeTestAccess::coreEntryName(i));
    return names;
}

class GLLoader : public FakeDriverTest
{
};

class GLLoaderGL : public GLTest
{
};

} // namespace

// ---- the table -----------------------------------------------------------------------------------------------------

TEST(GLFunctionTable, Holds325PointersOf316CoreAndNineExtensionFunctions)
{
    EXPECT_EQ(GLRuntimeTestAccess::coreEntryCount(), 316);
    EXPECT_EQ(coreNames().size(), 316u) << "each name once";
    EXPECT_EQ(GLRuntimeTestAccess::extensionEntryCount(), 9);
    std::set<std::string> extension;
    for (int i = 0; i < 9; ++i)
        extension.insert(GLRuntimeTestAccess::extensionEntryName(i));
    EXPECT_EQ(extension,
              (std::set<std::string>{"glDrawArraysIndirect", "glDrawElementsIndirect", "glMultiDrawArraysIndirect",
                                     "glMultiDrawElementsIndirect", "glPatchParameteri", "glPatchParameterfv",
                                     "glGetActiveAtomicCounterBufferiv", "glBindImageTexture", "glMemoryBarrier"}));
}

TEST(GLFunctionTable, LoadsBlendFuncFirstAndWaitSyncLast)
{
    EXPECT_STREQ(GLRuntimeTestAccess::coreEntryName(0), "glBlendFunc");
    EXPECT_STREQ(GLRuntimeTestAccess::coreEntryName(315), "glWaitSync");
}

TEST(GLFunctionTable, HoldsNothingOfVersion33)
{
    const auto names = coreNames();
    for (const char* const name : {"glVertexAttribDivisor",
                                   "glGenSamplers",
                                   "glDeleteSamplers",
                                   "glBindSampler",
                                   "glIsSampler",
                                   "glSamplerParameteri",
                                   "glSamplerParameterf",
                                   "glSamplerParameteriv",
                                   "glSamplerParameterfv",
                                   "glSamplerParameterIiv",
                                   "glSamplerParameterIuiv",
                                   "glGetSamplerParameteriv",
                                   "glGetSamplerParameterfv",
                                   "glGetSamplerParameterIiv",
                                   "glGetSamplerParameterIuiv",
                                   "glQueryCounter",
                                   "glGetQueryObjecti64v",
                                   "glGetQueryObjectui64v",
                                   "glBindFragDataLocationIndexed",
                                   "glGetFragDataIndex",
                                   "glVertexAttribP1ui",
                                   "glVertexAttribP4uiv"})
        EXPECT_EQ(names.count(name), 0u) << name;
}

TEST(GLFunctionTable, HoldsNothingOfTheFixedFunctionSet)
{
    const auto names = coreNames();
    for (const char* const name : {"glBegin", "glEnd", "glVertex3f", "glMatrixMode", "glLoadMatrixf", "glLightfv",
                                   "glTexEnvi", "glClientActiveTexture", "glPushAttrib", "glNewList", "glAlphaFunc"})
        EXPECT_EQ(names.count(name), 0u) << name;
}

TEST(GLFunctionTable, HoldsFunctionsOfEachVersionUpTo32)
{
    const auto names = coreNames();
    for (const char* const name :
         {"glClear", "glDrawElements", "glTexImage3D", "glActiveTexture", "glBlendFuncSeparate", "glBindBuffer",
          "glCreateShader", "glUniformMatrix4x2fv", "glBindVertexArray", "glDrawArraysInstanced",
          "glFramebufferTexture", "glTexImage2DMultisample", "glGetStringi", "glDrawElementsBaseVertex",
          "glProvokingVertex"})
        EXPECT_EQ(names.count(name), 1u) << name;
}

TEST(GLRequirements, NameTheVersionThatIntroducesAnEntryPoint)
{
    const struct
    {
        const char* name;
        int version;
    } rows[] = {
        {"glClear", 10},
        {"glBindTexture", 11},
        {"glTexImage3D", 12},
        {"glActiveTexture", 13},
        {"glBindBuffer", 15},
        {"glCreateShader", 20},
        {"glGetStringi", 30},
        {"glWaitSync", 32},
        {"glGenSamplers", 33},
        {"glPatchParameteri", 40},
        {"glProgramBinary", 41},
        {"glDispatchCompute", 43},
        {"glBufferStorage", 44},
        {"glNamedBufferData", 45},
        {"glBindBuffersBase", 44},
        {"glGetTextureHandleARB", 0},
        {"glGetTextureHandleNV", 0},
        {"glDebugMessageControlARB", 0},
        {"glFooBar", -1},
    };
    for (const auto& row : rows)
        EXPECT_EQ(GLRuntimeTestAccess::requiredVersion(row.name), row.version) << row.name;
}

// ---- ogl_LoadFunctions ----

TEST_F(GLLoader, FillsEveryPointerAndReturnsOne)
{
    EXPECT_EQ(ogl_LoadFunctions(), 1);
    EXPECT_NE(_ptrc_glBlendFunc, nullptr);
    EXPECT_NE(_ptrc_glWaitSync, nullptr);
    EXPECT_EQ(_ptrc_glMemoryBarrier, nullptr) << "an extension that the context does not list";
}

TEST_F(GLLoader, ReturnsOnePlusTheNumberOfMissingCoreFunctions)
{
    driver.refuse("glWaitSync");
    EXPECT_EQ(ogl_LoadFunctions(), 2);
    EXPECT_EQ(_ptrc_glWaitSync, nullptr);
    EXPECT_NE(_ptrc_glBlendFunc, nullptr);
    for (const char* const name : {"glBlendFunc", "glClear", "glTexImage2D", "glUniform1i"})
        driver.refuse(name);
    const LogCapture log;
    EXPECT_EQ(ogl_LoadFunctions(), 6);
    EXPECT_TRUE(log.lines().isEmpty()) << "missing functions are no message";
}

TEST_F(GLLoader, LooksUpTheTwoQueriesFirstThenTheCoreInOrder)
{
    driver.procLookups.clear();
    ogl_LoadFunctions();
    ASSERT_EQ(driver.procLookups.size(), 2 + 316);
    EXPECT_EQ(driver.procLookups[0], "glGetIntegerv");
    EXPECT_EQ(driver.procLookups[1], "glGetStringi");
    EXPECT_EQ(driver.procLookups[2], "glBlendFunc");
    EXPECT_EQ(driver.procLookups.last(), "glWaitSync");
    EXPECT_TRUE(driver.moduleLookups.isEmpty());
}

TEST_F(GLLoader, ReadsTheExtensionListBeforeTheCoreIsLoaded)
{
    driver.setExtensions({"GL_A", "GL_ARB_draw_indirect"});
    const CallLog calls;
    driver.procLookups.clear();
    ogl_LoadFunctions();
    ASSERT_EQ(calls.list().size(), 3);
    EXPECT_TRUE(calls.list()[0].startsWith(QStringLiteral("glGetIntegerv(0x821d, "))) << qPrintable(calls.list()[0]);
    EXPECT_EQ(calls.list()[1], CallLog::call("glGetStringi", GL_EXTENSIONS, 0));
    EXPECT_EQ(calls.list()[2], CallLog::call("glGetStringi", GL_EXTENSIONS, 1));
    EXPECT_EQ(driver.procLookups.mid(0, 5), QList<QByteArray>({"glGetIntegerv", "glGetStringi", "glDrawArraysIndirect",
                                                               "glDrawElementsIndirect", "glBlendFunc"}));
}

TEST_F(GLLoader, EachOfTheFiveMissCodesIsSoughtInTheModule)
{
    for (const std::intptr_t miss : {0, 1, 2, 3, -1})
    {
        driver.refuse("glClear", code(miss));
        driver.moduleLookups.clear();
        EXPECT_EQ(ogl_LoadFunctions(), 2) << miss;
        EXPECT_EQ(_ptrc_glClear, nullptr) << miss;
        EXPECT_EQ(driver.moduleLookups, QList<QByteArray>({"glClear"})) << miss;
    }
    driver.offerInModule("glClear");
    EXPECT_EQ(ogl_LoadFunctions(), 1);
    EXPECT_NE(_ptrc_glClear, nullptr);
}

TEST_F(GLLoader, WithoutEitherQueryNothingIsLoadedAndTheResultIsZero)
{
    for (const char* const query : {"glGetIntegerv", "glGetStringi"})
    {
        GLRuntimeTestAccess::clearTable();
        driver.refuse(query);
        EXPECT_EQ(ogl_LoadFunctions(), 0) << query;
        EXPECT_EQ(_ptrc_glBlendFunc, nullptr) << query;
        EXPECT_EQ(_ptrc_glGetIntegerv, nullptr) << query << ": the table stays null";
        EXPECT_EQ(_ptrc_glGetStringi, nullptr) << query;
        driver.offer(query);
    }
}

TEST_F(GLLoader, QueriesCanComeFromTheModule)
{
    for (const char* const query : {"glGetIntegerv", "glGetStringi"})
    {
        driver.refuse(query, code(3));
        driver.offerInModule(query);
    }
    EXPECT_EQ(ogl_LoadFunctions(), 1);
}

TEST_F(GLLoader, ExtensionFlagsAreClearedAndCountFailuresPlusOne)
{
    driver.setExtensions({"GL_ARB_draw_indirect", "GL_ARB_multi_draw_indirect", "GL_ARB_tessellation_shader",
                          "GL_ARB_texture_cube_map_array", "GL_ARB_shader_atomic_counters",
                          "GL_ARB_shader_image_load_store"});
    driver.refuse("glDrawElementsIndirect");
    driver.refuse("glPatchParameteri");
    driver.refuse("glPatchParameterfv");
    EXPECT_EQ(ogl_LoadFunctions(), 1) << "failures inside extensions are not counted";
    const int expected[] = {2, 1, 3, 1, 1, 1};
    for (int row = 0; row < 6; ++row)
        EXPECT_EQ(GLRuntimeTestAccess::extensionFlag(row), expected[row]) << row;
    EXPECT_NE(_ptrc_glDrawArraysIndirect, nullptr);
    EXPECT_NE(_ptrc_glMemoryBarrier, nullptr);

    driver.setExtensions({});
    ogl_LoadFunctions();
    for (int row = 0; row < 6; ++row)
        EXPECT_EQ(GLRuntimeTestAccess::extensionFlag(row), 0) << row;
}

TEST_F(GLLoader, EachExtensionLoadsExactlyItsFunctions)
{
    const struct
    {
        const char* extension;
        QList<QByteArray> functions;
    } rows[] = {
        {"GL_ARB_draw_indirect", {"glDrawArraysIndirect", "glDrawElementsIndirect"}},
        {"GL_ARB_multi_draw_indirect", {"glMultiDrawArraysIndirect", "glMultiDrawElementsIndirect"}},
        {"GL_ARB_tessellation_shader", {"glPatchParameteri", "glPatchParameterfv"}},
        {"GL_ARB_texture_cube_map_array", {}},
        {"GL_ARB_shader_atomic_counters", {"glGetActiveAtomicCounterBufferiv"}},
        {"GL_ARB_shader_image_load_store", {"glBindImageTexture", "glMemoryBarrier"}},
    };
    for (int i = 0; i < 6; ++i)
    {
        driver.setExtensions({rows[i].extension});
        driver.procLookups.clear();
        EXPECT_EQ(ogl_LoadFunctions(), 1);
        EXPECT_EQ(driver.procLookups.mid(2, driver.procLookups.size() - 318), rows[i].functions) << rows[i].extension;
        for (int row = 0; row < 6; ++row)
            EXPECT_EQ(GLRuntimeTestAccess::extensionFlag(row), row == i ? 1 : 0) << rows[i].extension;
    }
}

TEST_F(GLLoader, FlagsAreClearedEvenWhenNothingCanBeLoaded)
{
    driver.setExtensions({"GL_ARB_draw_indirect"});
    ogl_LoadFunctions();
    ASSERT_EQ(GLRuntimeTestAccess::extensionFlag(0), 1);
    driver.refuse("glGetStringi");
    EXPECT_EQ(ogl_LoadFunctions(), 0);
    EXPECT_EQ(GLRuntimeTestAccess::extensionFlag(0), 0);
}

TEST_F(GLLoader, NullExtensionNamesAreSkipped)
{
    driver.setExtensions({"GL_ARB_draw_indirect"});
    driver.setInteger(GL_NUM_EXTENSIONS, 5);
    EXPECT_EQ(ogl_LoadFunctions(), 1);
    EXPECT_EQ(GLRuntimeTestAccess::extensionFlag(0), 1);
}

TEST_F(GLLoader, ExtensionNamesAreComparedByteByByte)
{
    driver.setExtensions({"gl_arb_draw_indirect", "GL_ARB_draw_indirect2", "ARB_draw_indirect", "GL_ARB_draw_indirec"});
    ogl_LoadFunctions();
    EXPECT_EQ(GLRuntimeTestAccess::extensionFlag(0), 0);
    EXPECT_EQ(_ptrc_glDrawArraysIndirect, nullptr);
}

TEST_F(GLLoader, ContextWithoutExtensionsAsksForNoName)
{
    driver.setExtensions({});
    const CallLog calls;
    ogl_LoadFunctions();
    EXPECT_EQ(calls.count(QStringLiteral("glGetStringi")), 0);
}

TEST_F(GLLoader, CallThroughAMissingFunctionReportsAndDoesNothing)
{
    driver.refuse("glIsBuffer");
    ogl_LoadFunctions();
    const LogCapture log;
    EXPECT_EQ(glIsBuffer(1), GLboolean(GL_FALSE));
    EXPECT_EQ(log.messages(QtCriticalMsg),
              QStringList({QStringLiteral("OpenGL function 'glIsBuffer' is not available")}));
}

// ---- versions ------------------------------------------------------------------------------------------------------

TEST_F(GLLoader, VersionIsReadOnceAndNeverRefreshed)
{
    driver.setVersion(4, 6);
    GLRuntimeTestAccess::resetVersionCache();
    const CallLog calls;
    EXPECT_EQ(ogl_GetMajorVersion(), 4);
    EXPECT_EQ(ogl_GetMinorVersion(), 6);
    EXPECT_EQ(calls.count(QStringLiteral("glGetIntegerv")), 2);
    driver.setVersion(3, 2);
    EXPECT_EQ(ogl_GetMajorVersion(), 4);
    EXPECT_EQ(ogl_GetMinorVersion(), 6);
    EXPECT_EQ(calls.count(QStringLiteral("glGetIntegerv")), 2);
}

TEST_F(GLLoader, IsVersionGEQComparesFromTheArgumentToTheContext)
{
    driver.setVersion(4, 6);
    GLRuntimeTestAccess::resetVersionCache();
    EXPECT_EQ(ogl_IsVersionGEQ(9, 9), 1);
    EXPECT_EQ(ogl_IsVersionGEQ(5, 0), 1);
    EXPECT_EQ(ogl_IsVersionGEQ(4, 7), 1);
    EXPECT_EQ(ogl_IsVersionGEQ(4, 6), 1);
    EXPECT_EQ(ogl_IsVersionGEQ(4, 5), 0);
    EXPECT_EQ(ogl_IsVersionGEQ(3, 9), 0);
    EXPECT_EQ(ogl_IsVersionGEQ(2, 0), 0);
}

// ---- initializeGLFunctions -----------------------------------------------------------------------------------------

TEST_F(GLLoader, InitialisationIsRepeatedAtNoCostAfterSuccess)
{
    GLRuntimeTestAccess::resetInitialisedFlag();
    EXPECT_TRUE(initializeGLFunctions());
    driver.procLookups.clear();
    EXPECT_TRUE(initializeGLFunctions());
    EXPECT_TRUE(driver.procLookups.isEmpty());
}

TEST_F(GLLoader, FailedInitialisationSaysSoAndRunsTheLoaderAgainWhenRepeated)
{
    GLRuntimeTestAccess::resetInitialisedFlag();
    GLRuntimeTestAccess::clearTable();
    driver.refuse("glGetStringi");
    const LogCapture log;
    EXPECT_FALSE(initializeGLFunctions());
    EXPECT_EQ(log.messages(QtCriticalMsg), QStringList({QStringLiteral("Failed to initialize OpenGL ''")}));
    driver.procLookups.clear();
    EXPECT_FALSE(initializeGLFunctions());
    EXPECT_FALSE(driver.procLookups.isEmpty());
    driver.offer("glGetStringi");
    EXPECT_TRUE(initializeGLFunctions());
}

TEST_F(GLLoader, FailureWithADriverThatGivesNoVersionTextNamesNone)
{
    GLRuntimeTestAccess::resetInitialisedFlag();
    driver.replace(
        "glGetString", +[](GLenum) -> const GLubyte* { return nullptr; });
    driver.load();
    driver.refuse("glGetStringi");
    const LogCapture log;
    EXPECT_FALSE(initializeGLFunctions());
    EXPECT_EQ(log.messages(), QStringList({QStringLiteral("Failed to initialize OpenGL ''")}));
}

TEST_F(GLLoader, FailureNamesTheDriversVersionWhereItCanBeHad)
{
    GLRuntimeTestAccess::resetInitialisedFlag(); // the table, and so glGetString, is still loaded
    driver.refuse("glGetStringi");
    const LogCapture log;
    EXPECT_FALSE(initializeGLFunctions());
    EXPECT_EQ(log.messages(), QStringList({QStringLiteral("Failed to initialize OpenGL '4.5 Fake'")}));
}

// ---- the real driver -----------------------------------------------------------------------------------------------

TEST_F(GLLoaderGL, EveryCoreFunctionIsThere)
{
    EXPECT_EQ(ogl_LoadFunctions(), 1);
}

TEST_F(GLLoaderGL, WithoutAContextNothingCanBeLoaded)
{
    HeadlessContext::releaseCurrent();
    EXPECT_EQ(ogl_LoadFunctions(), 0);
    EXPECT_EQ(getGLProcAddress("glClear", true), nullptr);
    ASSERT_TRUE(context().makeCurrent());
    EXPECT_EQ(ogl_LoadFunctions(), 1);
}

TEST_F(GLLoaderGL, NameThatNobodyIntroducesIsMissingBehindTheStubs)
{
    EXPECT_EQ(getGLProcAddress("glFooBar", true), nullptr);
    EXPECT_EQ(getGLProcAddress("glBegin2", true), nullptr);
    EXPECT_EQ(getGLProcAddress("", true), nullptr);
    EXPECT_NE(getGLProcAddress("glClear", true), nullptr);
}

TEST_F(GLLoaderGL, OptionalEntryPointsAreNullOnTheFloorAndThereOtherwise)
{
    for (const char* const name :
         {"glBindBuffersBase", "glBindFragDataLocationIndexed", "glBufferStorage", "glDispatchCompute",
          "glDrawArraysInstancedBaseInstance", "glDrawElementsInstancedBaseVertexBaseInstance", "glGetProgramBinary",
          "glGetProgramInterfaceiv", "glGetProgramResourceIndex", "glGetProgramResourceName", "glNamedBufferData",
          "glNamedBufferStorage", "glNamedBufferSubData", "glProgramBinary", "glProgramParameteri",
          "glShaderStorageBlockBinding", "glDebugMessageControlARB", "glDebugMessageCallbackARB"})
        EXPECT_EQ(getGLProcAddress(name, true) == nullptr, isFloor()) << name;
    // Entry points of OpenGL ES, which no desktop driver offers.
    EXPECT_EQ(getGLProcAddress("glGetProgramBinaryOES", true), nullptr);
    EXPECT_EQ(getGLProcAddress("glProgramBinaryOES", true), nullptr);
    // A core function that is also looked up by name is there in both.
    EXPECT_NE(getGLProcAddress("glTransformFeedbackVaryings", true), nullptr);
}

TEST_F(GLLoaderGL, ProfileIsTheOneThatItClaimsToBe)
{
    GLRuntimeTestAccess::resetVersionCache();
    EXPECT_EQ(openGlVersionSupported(3, 2), true);
    EXPECT_EQ(openGlVersionSupported(4, 3), !isFloor());
    if (isFloor())
    {
        EXPECT_EQ(ogl_GetMajorVersion(), 3);
        EXPECT_EQ(ogl_GetMinorVersion(), 2);
    }
}

TEST_F(GLLoaderGL, ContextOfAnotherApiOffersNothing)
{
    // An OpenGL ES context is no desktop context, whatever its look-up says; afterwards the first is asked anew.
    HeadlessContext embedded(nullptr, HeadlessContext::Api::OpenGLES);
    ASSERT_TRUE(embedded.isValid());
    ASSERT_TRUE(embedded.makeCurrent());
    EXPECT_EQ(getGLProcAddress("glClear", true), nullptr);
    EXPECT_EQ(ogl_LoadFunctions(), 0);
    ASSERT_TRUE(context().makeCurrent());
    EXPECT_NE(getGLProcAddress("glClear", true), nullptr);
    EXPECT_EQ(getGLProcAddress("glNamedBufferData", true) == nullptr, isFloor());
}

TEST_F(GLLoaderGL, ExtensionFunctionsFollowTheDriversList)
{
    ASSERT_EQ(ogl_LoadFunctions(), 1);
    for (int row = 0; row < 6; ++row)
        EXPECT_EQ(GLRuntimeTestAccess::extensionFlag(row), isFloor() ? 0 : 1) << row;
    EXPECT_EQ(_ptrc_glDrawArraysIndirect == nullptr, isFloor());
    EXPECT_EQ(_ptrc_glMultiDrawElementsIndirect == nullptr, isFloor());
    EXPECT_EQ(_ptrc_glPatchParameteri == nullptr, isFloor());
    EXPECT_EQ(_ptrc_glGetActiveAtomicCounterBufferiv == nullptr, isFloor());
    EXPECT_EQ(_ptrc_glBindImageTexture == nullptr, isFloor());
    EXPECT_EQ(_ptrc_glMemoryBarrier == nullptr, isFloor());
}
