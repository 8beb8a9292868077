// SPDX-License-Identifier: MIT
//
// The Mandelbrot set's streamer that computes by shader, on the fake driver: its calls, its messages, and what it does
// without what it needs; and both streamers with a manager of handles.
#include "MandelbrotGPUTextureStreamer.h"

#include "BindlessTextureManagerTestTools.h"
#include "MandelbrotTestTools.h"
#include "ShaderProgram.h"

#include <QPointer>

#include <type_traits>

namespace Harrow::Vrk::Test
{
namespace
{

class MandelbrotGPUTest : public MandelbrotFixture
{
protected:
    static QStringList updating(GLuint program, GLuint name, int width, int height, std::array<float, 4> region)
    {
        return withUnitKept(
            QStringList{CallLog::call("glUseProgram", program)} + bound(name) + sizeQueries() +
            QStringList{CallLog::call("glUniform1ui", 1, width), CallLog::call("glUniform1ui", 2, height),
                        CallLog::call("glUniform4f", 3, region[0], region[1], region[2], region[3]),
                        CallLog::call("glUniform1i", 4, 0),
                        CallLog::call("glBindImageTexture", 0, name, 0, GL_FALSE, 0, GL_WRITE_ONLY, GL_RGBA8),
                        CallLog::call("glDispatchCompute", (width + 31) / 32, (height + 31) / 32, 1),
                        CallLog::call("glGetError"), CallLog::call("glMemoryBarrier", GL_TEXTURE_FETCH_BARRIER_BIT),
                        CallLog::call("glBindImageTexture", 0, 0, 0, GL_FALSE, 0, GL_WRITE_ONLY, GL_RGBA8),
                        CallLog::call("glFlush")} +
            unbound() + QStringList{CallLog::call("glUseProgram", 0)});
    }

    /// Without the locations, which are asked for once.
    static QStringList withoutLocations(const QStringList& calls)
    {
        QStringList result;
        for (const QString& call : anonymous(calls))
            if (!call.startsWith(QStringLiteral("glGetUniformLocation")))
                result.append(call);
        return result;
    }

    static std::array<float, 4> region(const MandelbrotTextureStreamer& streamer, int width, int height)
    {
        const auto [minX, minY, maxX, maxY] = Inside::domain(streamer);
        return {float(minX), float((maxX - minX) / width), float(minY), float((maxY - minY) / height)};
    }
};

} // namespace

static_assert(std::is_base_of_v<MandelbrotTextureStreamer, MandelbrotGPUTextureStreamer>);

// ---- construction --------------------------------------------------------------------------------------------------

TEST_F(MandelbrotGPUTest, TheMetaObjectNamesItInFull)
{
    EXPECT_STREQ(MandelbrotGPUTextureStreamer::staticMetaObject.className(),
                 "Harrow::Vrk::MandelbrotGPUTextureStreamer");
}

TEST_F(MandelbrotGPUTest, ItTakesAParent)
{
    QObject parent;
    const QPointer<QObject> streamer = MandelbrotGPUTextureStreamer::make(4, 4, &parent);
    EXPECT_EQ(parent.children(), QObjectList{streamer});
}

TEST_F(MandelbrotGPUTest, BrokenSizesOfTheConstructorAreReported)
{
    const LogCapture log;
    const MandelbrotGPUTextureStreamer streamer(-1, 0, nullptr);
    EXPECT_EQ(log.messages(), invalidSizes());
}

TEST_F(MandelbrotGPUTest, MakeChecksItsSizesTheWidthFirst)
{
    expectMakeChecksItsSizes<MandelbrotGPUTextureStreamer>();
}

TEST_F(MandelbrotGPUTest, TheWarningsOfMakeDoNotHangOnTheLoggingSwitch)
{
    EXPECT_TRUE(passesWithLoggingOff("MandelbrotGPUTest.MakeChecksItsSizesTheWidthFirst"));
}

TEST_F(MandelbrotGPUTest, ConstructionBuildsTheProgramAfterTheTexture)
{
    const LogCapture log;
    const CallLog calls;
    const auto streamer = make<MandelbrotGPUTextureStreamer>();
    const QStringList list = anonymous(calls.list());
    const QStringList texture = QStringList{writing("glGenTextures", 1)} +
                                making(1, GL_RGBA8, kWidth, kHeight, GL_LINEAR, GL_LINEAR_MIPMAP_LINEAR, 0);
    EXPECT_EQ(list.first(texture.size()), texture);
    EXPECT_EQ(calls.named({QStringLiteral("glCreateShader")}),
              QStringList({CallLog::call("glCreateShader", GL_COMPUTE_SHADER)}));
    EXPECT_EQ(calls.count(QStringLiteral("glCompileShader")), 1);
    EXPECT_EQ(calls.count(QStringLiteral("glLinkProgram")), 1);
    EXPECT_TRUE(driver.procLookups.contains("glDispatchCompute"));
    EXPECT_TRUE(Inside::program(*streamer)->isLinked());
    EXPECT_EQ(log.texts(), QStringList());
}

TEST_F(MandelbrotGPUTest, TheProgramEndsWithIt)
{
    auto streamer = make<MandelbrotGPUTextureStreamer>();
    const QPointer<ShaderProgram> program = Inside::program(*streamer);
    const CallLog calls;
    streamer.reset();
    EXPECT_TRUE(program.isNull());
    EXPECT_EQ(calls.count(QStringLiteral("glDeleteProgram")), 1);
    EXPECT_EQ(calls.count(QStringLiteral("glDeleteTextures")), 1);
}

// ---- updates -------------------------------------------------------------------------------------------------------

TEST_F(MandelbrotGPUTest, AnUpdateDispatchesAndLeavesNothingBound)
{
    const auto streamer = make<MandelbrotGPUTextureStreamer>();
    const LogCapture log;
    CallLog calls;
    EXPECT_TRUE(streamer->updateTexture());
    EXPECT_EQ(withoutLocations(calls.list()), updating(1, 1, kWidth, kHeight, region(*streamer, kWidth, kHeight)));
    streamer->zoomDomain(0.3f);
    calls.clear();
    EXPECT_TRUE(streamer->updateTexture());
    EXPECT_EQ(anonymous(calls.list()), updating(1, 1, kWidth, kHeight, region(*streamer, kWidth, kHeight)))
        << "the locations are known";
    EXPECT_EQ(log.texts(), QStringList());
}

TEST_F(MandelbrotGPUTest, TheStepDividesByTheSizeItself)
{
    const auto streamer = make<MandelbrotGPUTextureStreamer>();
    const CallLog calls;
    EXPECT_TRUE(streamer->updateTexture());
    EXPECT_EQ(calls.named({QStringLiteral("glUniform4f")}),
              QStringList({CallLog::call("glUniform4f", 3, -2.5f, 3.5f / 40.0f, -1.0f, 0.1f)}));
}

TEST_F(MandelbrotGPUTest, GroupsOf32CoverTheTexture)
{
    const auto streamer = make<MandelbrotGPUTextureStreamer>();
    for (const auto& [size, groups] : {std::pair(1, 1), {31, 1}, {32, 1}, {33, 2}, {64, 2}, {65, 3}, {512, 16}})
    {
        BaseLevelScript::current() = {size, 32, GL_RGBA8};
        streamer->panDomain(0.0, 0.0);
        const CallLog calls;
        EXPECT_TRUE(streamer->updateTexture());
        EXPECT_EQ(calls.named({QStringLiteral("glDispatchCompute")}),
                  QStringList({CallLog::call("glDispatchCompute", groups, 1, 1)}));
    }
}

TEST_F(MandelbrotGPUTest, ASecondUpdateHasNothingToDo)
{
    const auto streamer = make<MandelbrotGPUTextureStreamer>();
    EXPECT_TRUE(streamer->updateTexture());
    {
        const CallLog calls;
        EXPECT_FALSE(streamer->updateTexture());
        EXPECT_EQ(calls.list(), QStringList());
    }
    streamer->panDomain(0.0, 0.0);
    EXPECT_TRUE(streamer->updateTexture());
}

TEST_F(MandelbrotGPUTest, ErrorsOfOpenGLAreWarnedOfAndTheUpdateGoesOn)
{
    const auto streamer = make<MandelbrotGPUTextureStreamer>();
    driver.pushError(GL_INVALID_OPERATION);
    const LogCapture log;
    EXPECT_TRUE(streamer->updateTexture());
    ASSERT_EQ(log.lines().size(), 1);
    EXPECT_EQ(log.lines()[0].type, QtWarningMsg);
    EXPECT_TRUE(log.lines()[0].text.endsWith(QStringLiteral("] glError: 0x502 'invalid operation' caught")));
    EXPECT_FALSE(streamer->updateTexture());
}

TEST_F(MandelbrotGPUTest, AProgramThatDoesNotCompileLeavesItInactiveForGood)
{
    driver.replace(
        "glGetShaderiv", +[](GLuint, GLenum, GLint* value) { *value = 0; });
    ASSERT_NE(driver.load(), 0);
    std::unique_ptr<MandelbrotGPUTextureStreamer> streamer;
    {
        const LogCapture log;
        streamer = make<MandelbrotGPUTextureStreamer>();
        EXPECT_FALSE(log.messages(QtWarningMsg).isEmpty());
    }
    const LogCapture log;
    const CallLog calls;
    for (int i = 0; i < 3; ++i)
    {
        EXPECT_FALSE(streamer->updateTexture());
        streamer->zoomDomain(0.5f);
    }
    EXPECT_EQ(calls.list(), QStringList());
    EXPECT_EQ(log.texts(), QStringList());
}

TEST_F(MandelbrotGPUTest, AProgramThatDoesNotLinkLeavesItInactiveForGood)
{
    driver.replace(
        "glGetProgramiv", +[](GLuint, GLenum, GLint* value) { *value = 0; });
    ASSERT_NE(driver.load(), 0);
    std::unique_ptr<MandelbrotGPUTextureStreamer> streamer;
    {
        const LogCapture quiet;
        streamer = make<MandelbrotGPUTextureStreamer>();
    }
    const CallLog calls;
    EXPECT_FALSE(streamer->updateTexture());
    EXPECT_EQ(calls.list(), QStringList());
}

TEST_F(MandelbrotGPUTest, AMissingDispatchIsNamedAndReported)
{
    driver.refuse("glDispatchCompute");
    std::unique_ptr<MandelbrotGPUTextureStreamer> streamer;
    {
        const LogCapture log;
        streamer = make<MandelbrotGPUTextureStreamer>();
        EXPECT_EQ(log.messages(QtDebugMsg), QStringList({QStringLiteral("Failed to obtain 'glDispatchCompute'")}));
    }
    const LogCapture log;
    const CallLog calls;
    EXPECT_FALSE(streamer->updateTexture());
    EXPECT_EQ(log.messages(),
              QStringList({assertionLine(QStringLiteral("nullptr != dispatchCompute"),
                                         QStringLiteral("OpenGL function 'glDispatchCompute' is not available"))}));
    EXPECT_EQ(calls.list(), QStringList());
}

TEST_F(MandelbrotGPUTest, ATextureWithoutTexelsIsReportedAndLeft)
{
    const auto streamer = make<MandelbrotGPUTextureStreamer>();
    for (const auto& [width, height] : {std::pair(0, 0), {0, 4}, {4, 0}, {-1, -1}})
    {
        BaseLevelScript::current() = {width, height, GL_RGBA8};
        const LogCapture log;
        const CallLog calls;
        EXPECT_FALSE(streamer->updateTexture());
        EXPECT_EQ(
            log.messages(),
            QStringList({assertionLine(QStringLiteral("hasTexels"),
                                       QStringLiteral("The texture has no texels: %1 x %2").arg(width).arg(height))}));
        EXPECT_EQ(calls.count(QStringLiteral("glDispatchCompute")), 0);
        EXPECT_FALSE(streamer->isBound());
    }
    BaseLevelScript::current() = {kWidth, kHeight, GL_RGBA8};
    EXPECT_TRUE(streamer->updateTexture());
}

TEST_F(MandelbrotGPUTest, WithoutAFreeUnitTheUpdateWaits)
{
    const auto streamer = make<MandelbrotGPUTextureStreamer>();
    {
        const NoFreeUnit none;
        const LogCapture log;
        const CallLog calls;
        EXPECT_FALSE(streamer->updateTexture());
        EXPECT_EQ(log.messages(), QStringList({kNoUnit}));
        EXPECT_EQ(anonymous(calls.list()),
                  withUnitKept({CallLog::call("glUseProgram", 1), CallLog::call("glUseProgram", 0)}));
    }
    EXPECT_TRUE(streamer->updateTexture());
}

// ---- with a manager of handles -------------------------------------------------------------------------------------

namespace
{

template <typename Streamer> void expectUpdatesOf(TextureManager& manager)
{
    auto* const streamer = Streamer::make(16, 16, nullptr);
    BaseLevelScript::current() = {16, 16, GL_RGBA8};
    const LogCapture log;
    EXPECT_EQ(manager.tokenForTexture(streamer).token >> 32, 0xFFFFFFFFu) << "bound, since its texels change";
    EXPECT_EQ(log.messages(), QStringList({"Detected TextureStreamer"}));
    EXPECT_TRUE(manager.updateTextureStreamers());
    EXPECT_FALSE(manager.updateTextureStreamers());
    streamer->zoomDomain(0.9f);
    EXPECT_TRUE(manager.updateTextureStreamers());
    manager.deleteTexture(streamer);
    EXPECT_FALSE(manager.updateTextureStreamers());
}

class MandelbrotBindlessTest : public BindlessFixture
{
protected:
    void SetUp() override
    {
        driver.replace(
            "glGetTexLevelParameteriv", +[](GLenum, GLint, GLenum name, GLint* value)
                                        { *value = name == GL_TEXTURE_INTERNAL_FORMAT ? GL_RGBA8 : 16; });
        BindlessFixture::SetUp();
        make();
    }
};

} // namespace

TEST_F(MandelbrotBindlessTest, TheProcessorsStreamerGetsABoundTokenAndItsUpdates)
{
    expectUpdatesOf<MandelbrotCPUTextureStreamer>(*bindless);
}

TEST_F(MandelbrotBindlessTest, TheComputeShadersStreamerGetsABoundTokenAndItsUpdates)
{
    expectUpdatesOf<MandelbrotGPUTextureStreamer>(*bindless);
}

} // namespace Harrow::Vrk::Test
