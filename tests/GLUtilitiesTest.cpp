// SPDX-License-Identifier: MIT
#include "GLUtilities.h"

#include "GLFunctions.h"
#include "GLOptionalFunctions.h"
#include "GLRuntimeTestAccess.h"
#include "GLVersions.h"
#include "support/CallLog.h"
#include "support/FakeDriver.h"
#include "support/GLTest.h"
#include "support/HeapCount.h"
#include "support/LogCapture.h"
#include "support/Picture.h"

#include <QRegularExpression>

#include <thread>
#include <vector>

using namespace Harrow::Vrk;
using namespace Harrow::Vrk::Test;

namespace
{

class GLUtilities : public FakeDriverTest
{
};

class GLUtilitiesGL : public GLTest
{
};

/// Sets an environment variable for the length of a test.
class EnvironmentValue
{
public:
    EnvironmentValue(const char* name, const char* value) : _name(name)
    {
        qputenv(name, value);
    }
    ~EnvironmentValue()
    {
        qunsetenv(_name);
    }

private:
    const char* _name;
};

} // namespace

// ---- getGLProcAddress ----------------------------------------------------------------------------------------------

TEST_F(GLUtilities, MissOfAWantedFunctionIsLoggedAndOfAnOptionalOneSilent)
{
    driver.refuse("glBindBuffersBase");
    driver.offerInModule("glBindBuffersBase");
    const LogCapture log;
    EXPECT_EQ(getGLProcAddress("glBindBuffersBase", true), nullptr);
    EXPECT_TRUE(log.lines().isEmpty());
    EXPECT_EQ(getGLProcAddress("glBindBuffersBase", false), nullptr);
    EXPECT_EQ(log.messages(QtDebugMsg), QStringList({QStringLiteral("Failed to obtain 'glBindBuffersBase'")}));
    EXPECT_TRUE(driver.moduleLookups.isEmpty()) << "no fallback to the module";
}

TEST_F(GLUtilities, MissCodesOfADriverAreMisses)
{
    for (const std::intptr_t miss : {1, 2, 3, -1})
    {
        driver.refuse("glBindBuffersBase", reinterpret_cast<void*>(miss));
        driver.refuse("glDebugMessageControlARB", reinterpret_cast<void*>(miss));
        const LogCapture log;
        EXPECT_EQ(getGLProcAddress("glBindBuffersBase", false), nullptr) << miss;
        EXPECT_FALSE(initializeGLDebugging());
        EXPECT_EQ(log.messages(), QStringList({QStringLiteral("Failed to obtain 'glBindBuffersBase'"),
                                               QStringLiteral("Failed to obtain 'glDebugMessageControlARB'")}));
    }
}

TEST_F(GLUtilities, FoundFunctionIsReturnedSilently)
{
    const LogCapture log;
    EXPECT_NE(getGLProcAddress("glBindBuffersBase", false), nullptr);
    EXPECT_TRUE(log.lines().isEmpty());
}

TEST_F(GLUtilities, NullNamesAreReported)
{
    const LogCapture log;
    EXPECT_EQ(getGLProcAddress(nullptr, true), nullptr);
    EXPECT_FALSE(hasGLExtension(nullptr));
    EXPECT_EQ(log.messages(), QStringList({assertionLine(QStringLiteral("nullptr != name"),
                                                         QStringLiteral("No name is given to getGLProcAddress()")),
                                           assertionLine(QStringLiteral("nullptr != name"),
                                                         QStringLiteral("No name is given to hasGLExtension()"))}));
}

// ---- hasGLExtension ------------------------------------------------------------------------------------------------

TEST_F(GLUtilities, ExtensionIsFoundWithAndWithoutItsPrefix)
{
    driver.setExtensions({"GL_ARB_bindless_texture", "WITHOUT_prefix"});
    EXPECT_TRUE(hasGLExtension("GL_ARB_bindless_texture"));
    EXPECT_TRUE(hasGLExtension("ARB_bindless_texture"));
    EXPECT_TRUE(hasGLExtension("WITHOUT_prefix"));
    EXPECT_TRUE(hasGLExtension("GL_WITHOUT_prefix"));
    EXPECT_FALSE(hasGLExtension("gl_ARB_bindless_texture")) << "the prefix is case-sensitive";
    EXPECT_FALSE(hasGLExtension("GL_ARB_bindless"));
    EXPECT_FALSE(hasGLExtension(""));
    EXPECT_FALSE(hasGLExtension("GL_"));
}

TEST_F(GLUtilities, ExtensionsAreReadOncePerContext)
{
    driver.setExtensions({"GL_ONE"});
    const CallLog calls;
    EXPECT_TRUE(hasGLExtension("GL_ONE"));
    EXPECT_EQ(calls.list().size(), 2);
    driver.setExtensions({"GL_TWO"});
    EXPECT_TRUE(hasGLExtension("GL_ONE"));
    EXPECT_FALSE(hasGLExtension("GL_TWO"));
    EXPECT_EQ(calls.list().size(), 2);

    int other = 0;
    driver.setContext(&other);
    EXPECT_TRUE(hasGLExtension("GL_TWO"));
    EXPECT_FALSE(hasGLExtension("GL_ONE"));
    EXPECT_EQ(calls.list().size(), 4);
    GLRuntimeTestAccess::forgetExtensionsOf(&other);
}

TEST_F(GLUtilities, ContextsWithTheSameExtensionsShareTheirNames)
{
    if (!bytesInUse())
        GTEST_SKIP() << "this C library does not tell what is in use";
    constexpr int kContexts = 1000;
    QList<QByteArray> names;
    for (int i = 0; i < 200; ++i)
        names.append("GL_NAME_" + QByteArray::number(i));
    driver.setExtensions(names);
    EXPECT_TRUE(hasGLExtension("GL_NAME_199"));
    std::vector<char> contexts(kContexts);
    const std::size_t before = *bytesInUse();
    for (char& context : contexts)
    {
        driver.setContext(&context);
        EXPECT_TRUE(hasGLExtension("GL_NAME_199"));
        EXPECT_FALSE(hasGLExtension("GL_NAME_200"));
    }
    EXPECT_LT(*bytesInUse(), before + kContexts * 512) << "the names alone are more than ten times that";

    // One that differs has its own, and changes no other's.
    names.append("GL_NAME_200");
    driver.setExtensions(names);
    char other = 0;
    driver.setContext(&other);
    EXPECT_TRUE(hasGLExtension("GL_NAME_200"));
    driver.setContext(contexts.data());
    EXPECT_FALSE(hasGLExtension("GL_NAME_200"));

    GLRuntimeTestAccess::forgetExtensionsOf(&other);
    for (char& context : contexts)
        GLRuntimeTestAccess::forgetExtensionsOf(&context);
}

TEST_F(GLUtilities, NullExtensionStringsAreSkipped)
{
    driver.setExtensions({"GL_ONE"});
    driver.setInteger(GL_NUM_EXTENSIONS, 3);
    EXPECT_TRUE(hasGLExtension("GL_ONE"));
    EXPECT_FALSE(hasGLExtension("GL_TWO"));
}

TEST_F(GLUtilities, WithExtensionsSwitchedOffAContextNotYetReadAnswersFalse)
{
    driver.setExtensions({"GL_ONE"});
    for (const char* const value : {"1", "0", ""})
    {
        const EnvironmentValue off("VRK_NO_GL_EXTENSIONS", value);
        const CallLog calls;
        EXPECT_FALSE(hasGLExtension("GL_ONE")) << value;
        EXPECT_TRUE(calls.list().isEmpty()) << "nothing is read";
    }
    EXPECT_TRUE(hasGLExtension("GL_ONE"));
}

TEST_F(GLUtilities, ContextReadBeforeExtensionsWereSwitchedOffGoesOnWithItsSet)
{
    driver.setExtensions({"GL_ONE"});
    EXPECT_TRUE(hasGLExtension("GL_ONE"));
    const EnvironmentValue off("VRK_NO_GL_EXTENSIONS", "1");
    EXPECT_TRUE(hasGLExtension("GL_ONE"));
    EXPECT_FALSE(hasGLExtension("GL_TWO"));
}

TEST_F(GLUtilities, ExtensionQuestionBeforeLoadingIsReported)
{
    driver.setExtensions({"GL_ONE"});
    int other = 0;
    driver.setContext(&other);
    EXPECT_TRUE(hasGLExtension("GL_ONE"));
    driver.setContext(&driver);
    GLRuntimeTestAccess::clearTable();
    const LogCapture log;
    EXPECT_FALSE(hasGLExtension("GL_ONE"));
    EXPECT_EQ(log.messages(),
              QStringList({assertionLine(QStringLiteral("_ptrc_glGetIntegerv && _ptrc_glGetStringi"),
                                         QStringLiteral("OpenGL functions are not loaded on hasGLExtension()"))}));
    driver.setContext(&other);
    EXPECT_TRUE(hasGLExtension("GL_ONE")) << "a context that was read goes on with its set";
    GLRuntimeTestAccess::forgetExtensionsOf(&other);
}

// ---- openGlVersionSupported ----------------------------------------------------------------------------------------

TEST_F(GLUtilities, VersionIsAskedOnEveryCallAndTheMinorOnlyOnEqualMajors)
{
    driver.setVersion(4, 3);
    CallLog calls;
    EXPECT_TRUE(openGlVersionSupported(3, 9));
    EXPECT_EQ(calls.count(QStringLiteral("glGetIntegerv")), 1);
    EXPECT_FALSE(openGlVersionSupported(5, 0));
    EXPECT_EQ(calls.count(QStringLiteral("glGetIntegerv")), 2);
    EXPECT_TRUE(openGlVersionSupported(4, 3));
    EXPECT_EQ(calls.count(QStringLiteral("glGetIntegerv")), 4);
    EXPECT_TRUE(openGlVersionSupported(4, 0));
    EXPECT_FALSE(openGlVersionSupported(4, 4));
    driver.setVersion(3, 2);
    EXPECT_FALSE(openGlVersionSupported(4, 0));
}

// ---- isSamplerType -------------------------------------------------------------------------------------------------

TEST(SamplerTypes, AreExactlyTheFiveRanges)
{
    struct Range
    {
        unsigned first, last;
    };
    const Range ranges[] = {{0x8B5D, 0x8B64}, {0x8DC0, 0x8DC5}, {0x8DC9, 0x8DD8}, {0x900C, 0x900F}, {0x9108, 0x910D}};
    for (unsigned type = 0; type <= 0xFFFF; ++type)
    {
        bool expected = false;
        for (const Range& range : ranges)
            expected = expected || (type >= range.first && type <= range.last);
        ASSERT_EQ(isSamplerType(type), expected) << std::hex << type;
    }
    EXPECT_FALSE(isSamplerType(GL_UNSIGNED_INT_VEC2));
    EXPECT_FALSE(isSamplerType(GL_IMAGE_2D));
    EXPECT_FALSE(isSamplerType(0xFFFFFFFFu));
}

// ---- error reports -------------------------------------------------------------------------------------------------

TEST_F(GLUtilities, EachErrorIsWarnedOfWithItsWord)
{
    const struct
    {
        GLenum code;
        const char* text;
    } rows[] = {
        {0x0500, "0x500 'invalid enum'"},
        {0x0501, "0x501 'invalid value'"},
        {0x0502, "0x502 'invalid operation'"},
        {0x0505, "0x505 'out of memory'"},
        {0x0506, "0x506 'invalid framebuffer operation'"},
        {0x0503, "0x503 'unknown error'"},
        {0xBEEF, "0xBEEF 'unknown error'"},
    };
    for (const auto& row : rows)
    {
        driver.pushError(row.code);
        const LogCapture log;
        checkGLError("folder/File.cpp", 42);
        ASSERT_EQ(log.lines().size(), 1);
        EXPECT_EQ(log.lines()[0].type, QtWarningMsg);
        EXPECT_EQ(log.lines()[0].text,
                  QStringLiteral("[folder/File.cpp:42] glError: %1 caught").arg(QLatin1String(row.text)));
    }
}

TEST_F(GLUtilities, AtMostTenErrorsAreReportedPerCall)
{
    for (int i = 0; i < 13; ++i)
        driver.pushError(GL_INVALID_ENUM);
    LogCapture log;
    const CallLog calls;
    checkGLError("F.cpp", 1);
    EXPECT_EQ(log.lines().size(), 10);
    EXPECT_EQ(calls.count(QStringLiteral("glGetError")), 11) << "the eleventh code is read and goes unreported";
    log.clear();
    EXPECT_TRUE(hasGLError("F.cpp", 1));
    EXPECT_EQ(log.lines().size(), 2);
    for (int i = 0; i < 12; ++i)
        driver.pushError(GL_INVALID_ENUM);
    log.clear();
    EXPECT_TRUE(hasGLError("F.cpp", 1));
    EXPECT_EQ(log.lines().size(), 10);
}

TEST_F(GLUtilities, HasGLErrorTellsWhetherThereWasOne)
{
    const LogCapture log;
    EXPECT_FALSE(hasGLError("F.cpp", 1));
    driver.pushError(GL_INVALID_VALUE);
    driver.pushError(GL_INVALID_ENUM);
    EXPECT_TRUE(hasGLError("F.cpp", 1));
    EXPECT_EQ(log.lines().size(), 2);
    EXPECT_FALSE(hasGLError("F.cpp", 1));
}

TEST_F(GLUtilities, WithoutLoadedFunctionsThereIsNoError)
{
    GLRuntimeTestAccess::clearTable();
    driver.pushError(GL_INVALID_VALUE);
    const LogCapture log;
    checkGLError("F.cpp", 1);
    EXPECT_FALSE(hasGLError("F.cpp", 1));
    EXPECT_TRUE(log.lines().isEmpty());
}

// ---- debug reports -------------------------------------------------------------------------------------------------

namespace
{

GLDEBUGPROCARB installedCallback = nullptr;

void VRK_GLAPIENTRY keepCallback(GLDEBUGPROCARB callback, const void*)
{
    installedCallback = callback;
}

} // namespace

TEST_F(GLUtilities, DebuggingWithoutTheExtensionChangesNothing)
{
    for (const char* const name : {"glDebugMessageControlARB", "glDebugMessageCallbackARB"})
    {
        driver.refuse(name);
        const LogCapture log;
        const CallLog calls;
        EXPECT_FALSE(initializeGLDebugging());
        EXPECT_EQ(log.messages(QtDebugMsg),
                  QStringList({QStringLiteral("Failed to obtain '%1'").arg(QLatin1String(name))}));
        EXPECT_TRUE(calls.list().isEmpty());
        driver.offer(name);
    }
}

TEST_F(GLUtilities, DebuggingMakesFourFilterCallsInstallsTheCallbackAndIsSynchronous)
{
    driver.replace("glDebugMessageCallbackARB", &keepCallback);
    installedCallback = nullptr;
    CallLog calls;
    EXPECT_TRUE(initializeGLDebugging());
    ASSERT_NE(installedCallback, nullptr);
    ASSERT_EQ(calls.list().size(), 6);
    const auto control = [](auto... arguments) { return CallLog::call("glDebugMessageControlARB", arguments...); };
    EXPECT_EQ(calls.list()[0], control(GL_DONT_CARE, GL_DONT_CARE, GL_DONT_CARE, 0, nullptr, 1));
    EXPECT_EQ(calls.list()[1], control(GL_DONT_CARE, 0x8269, 0x826B, 0, nullptr, 0)) << "push group, notification";
    EXPECT_EQ(calls.list()[2], control(GL_DONT_CARE, 0x826A, 0x826B, 0, nullptr, 0)) << "pop group, notification";
    EXPECT_TRUE(calls.list()[3].startsWith(QStringLiteral("glDebugMessageControlARB(0x8246, 0x8251, 0x1100, 1, @")));
    EXPECT_TRUE(calls.list()[3].endsWith(QStringLiteral(", 0)")));
    EXPECT_EQ(calls.list()[4], CallLog::call("glDebugMessageCallbackARB", installedCallback, nullptr));
    EXPECT_EQ(calls.list()[5], CallLog::call("glEnable", 0x8242));
}

namespace
{

GLuint filteredId = 0;

void VRK_GLAPIENTRY keepFilteredId(GLenum, GLenum, GLenum, GLsizei count, const GLuint* ids, GLboolean)
{
    if (count == 1)
        filteredId = ids[0];
}

} // namespace

TEST_F(GLUtilities, DebuggingFiltersTheBufferPlacementMessage)
{
    driver.replace("glDebugMessageControlARB", &keepFilteredId);
    filteredId = 0;
    EXPECT_TRUE(initializeGLDebugging());
    EXPECT_EQ(filteredId, 131185u);
}

TEST_F(GLUtilities, DebugReportsAreLoggedWithTheirWords)
{
    driver.replace("glDebugMessageCallbackARB", &keepCallback);
    ASSERT_TRUE(initializeGLDebugging());
    const struct
    {
        GLenum source, type, severity;
        const char* text;
    } rows[] = {
        {0x8246, 0x824C, 0x9146, "source=api, type=error, severity=high"},
        {0x8247, 0x824D, 0x9147, "source=window system, type=deprecated behaviour, severity=medium"},
        {0x8248, 0x824E, 0x9148, "source=shader compiler, type=undefined behaviour, severity=low"},
        {0x8249, 0x824F, 0x826B, "source=thirdparty, type=portability, severity=notification"},
        {0x824A, 0x8250, 0x9146, "source=application, type=performance, severity=high"},
        {0x824B, 0x8251, 0x9146, "source=other, type=other, severity=high"},
        {0x824B, 0x8268, 0x9146, "source=other, type=marker, severity=high"},
        {0x824B, 0x8269, 0x9146, "source=other, type=push group, severity=high"},
        {0x824B, 0x826A, 0x9146, "source=other, type=pop group, severity=high"},
        {0, 0, 0, "source=<unknown>, type=<unknown>, severity=<unknown>"},
    };
    for (const auto& row : rows)
    {
        const LogCapture log;
        installedCallback(row.source, row.type, 0x20071, row.severity, 5, "words", nullptr);
        EXPECT_EQ(log.messages(QtDebugMsg),
                  QStringList({QStringLiteral("OpenGL message [id=0x20071, %1]: words").arg(QLatin1String(row.text))}));
    }
}

TEST_F(GLUtilitiesGL, DebuggingIsThereExactlyWhereTheDriverHasIt)
{
    const LogCapture log;
    const QStringList missing = {QStringLiteral("Failed to obtain 'glDebugMessageControlARB'")};
    EXPECT_EQ(initializeGLDebugging(), !isFloor());
    EXPECT_EQ(log.messages(), isFloor() ? missing : QStringList());
}

// ---- the rest ------------------------------------------------------------------------------------------------------

TEST_F(GLUtilitiesGL, FramebufferLineHasItsFourPieces)
{
    const OffscreenTarget target(4, 4);
    const LogCapture log;
    logGLFramebuffer();
    ASSERT_EQ(log.messages(QtDebugMsg).size(), 1);
    const QString line = log.messages(QtDebugMsg)[0];
    GLint name = 0;
    glGetIntegerv(GL_DRAW_FRAMEBUFFER_BINDING, &name);
    GLint colour = 0;
    glGetFramebufferAttachmentParameteriv(GL_DRAW_FRAMEBUFFER, GL_COLOR_ATTACHMENT0,
                                          GL_FRAMEBUFFER_ATTACHMENT_OBJECT_NAME, &colour);
    GLint depth = 0;
    glGetFramebufferAttachmentParameteriv(GL_DRAW_FRAMEBUFFER, GL_DEPTH_ATTACHMENT,
                                          GL_FRAMEBUFFER_ATTACHMENT_OBJECT_NAME, &depth);
    const QString version = QString::fromLatin1(reinterpret_cast<const char*>(glGetString(GL_VERSION)));
    EXPECT_EQ(line,
              QString::asprintf("logGLFramebuffer() [%p] '%s'", static_cast<void*>(nullptr), qPrintable(version)) +
                  QString::asprintf(" [fb] %3d [0] 0x8D41 %3d [d] 0x8D41 %d", name, colour, depth));
}

TEST_F(GLUtilities, FramebufferLineAsksTypeBeforeNameAndColourBeforeDepth)
{
    const CallLog calls;
    logGLFramebuffer();
    QStringList asked;
    for (const QString& call : calls.list())
        asked.append(call.left(call.lastIndexOf(u',') < 0 ? call.size() : call.lastIndexOf(u',')));
    EXPECT_EQ(asked, QStringList({QStringLiteral("glGetString(0x1f02)"), QStringLiteral("glGetIntegerv(0x8ca6"),
                                  QStringLiteral("glGetFramebufferAttachmentParameteriv(0x8ca9, 0x8ce0, 0x8cd0"),
                                  QStringLiteral("glGetFramebufferAttachmentParameteriv(0x8ca9, 0x8ce0, 0x8cd1"),
                                  QStringLiteral("glGetFramebufferAttachmentParameteriv(0x8ca9, 0x8d00, 0x8cd0"),
                                  QStringLiteral("glGetFramebufferAttachmentParameteriv(0x8ca9, 0x8d00, 0x8cd1")}));
}

TEST_F(GLUtilities, IndexTypesHaveTheirSizesAndOthersReport)
{
    EXPECT_EQ(bytesFromInternalFormat(GL_UNSIGNED_SHORT), 2);
    EXPECT_EQ(bytesFromInternalFormat(GL_UNSIGNED_INT), 4);
    const LogCapture log;
    EXPECT_EQ(bytesFromInternalFormat(0), 0);
    EXPECT_EQ(log.texts(QtCriticalMsg),
              QStringList({QStringLiteral("bytesFromInternalFormat() does not implement yet : 0x0000")}));
}

TEST(GLRuntime, PlaceholderGivesZero)
{
    EXPECT_EQ(vrkGetMemory(), 0);
}

TEST(GLRuntime, BuildTellsVersionAndRevision)
{
    EXPECT_EQ(GLVersions::getVersion(), QStringLiteral("1.0.0"));
    EXPECT_TRUE(QRegularExpression(QStringLiteral("^[0-9a-f]{40}$")).match(GLVersions::getGitHash()).hasMatch());
    EXPECT_EQ(GLVersions::getMd5Sum(), QStringLiteral("1"));
}

TEST_F(GLUtilitiesGL, ExtensionAnswersAgreeWithTheDriver)
{
    EXPECT_EQ(hasGLExtension("GL_ARB_buffer_storage"), !isFloor());
    EXPECT_EQ(hasGLExtension("ARB_shader_storage_buffer_object"), !isFloor());
    EXPECT_FALSE(hasGLExtension("GL_ARB_no_such_thing"));
}

TEST_F(GLUtilitiesGL, ExtensionCacheIsPerContextOnTwoThreads)
{
    HeadlessContext second;
    ASSERT_TRUE(second.isValid());
    bool answer = isFloor();
    std::thread worker(
        [&second, &answer]
        {
            ASSERT_TRUE(second.makeCurrent());
            for (int i = 0; i < 1000; ++i)
                answer = hasGLExtension("GL_ARB_buffer_storage");
            HeadlessContext::releaseCurrent();
        });
    for (int i = 0; i < 1000; ++i)
        EXPECT_EQ(hasGLExtension("GL_ARB_buffer_storage"), !isFloor());
    worker.join();
    EXPECT_EQ(answer, !isFloor());
}
