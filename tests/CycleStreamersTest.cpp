// SPDX-License-Identifier: MIT
//
// The streamer that cycles through colours, on the fake driver: its calls, the frames at which it steps, its messages,
// and what it does without what it needs.
#include "ColorCycleTextureStreamer.h"

#include "BindlessTextureManagerTestTools.h"
#include "CycleStreamersTestTools.h"

#include <QPointer>

#include <limits>
#include <type_traits>

namespace Harrow::Vrk::Test
{
namespace
{

const QColor kColors[] = {QColor(255, 0, 0), QColor(0, 128, 0, 64), QColor(1, 2, 3)};
constexpr int kColorCount = 3;

class ColorCycleTest : public StreamerFixture
{
protected:
    static std::unique_ptr<ColorCycleTextureStreamer> make(int colorCount = kColorCount, int frameCount = 3)
    {
        return std::unique_ptr<ColorCycleTextureStreamer>(
            ColorCycleTextureStreamer::make(kColors, colorCount, 64, 32, frameCount, nullptr));
    }

    static QString clearing(const QColor& color)
    {
        return CallLog::call("glClearColor", color.redF(), color.greenF(), color.blueF(), color.alphaF());
    }

    /// The calls of an update of texture `name` by framebuffer `framebuffer`.
    static QStringList updating(GLuint name, GLuint framebuffer, const QColor& color)
    {
        return saving() + bound(name) + sizeQueries() + unbound() +
               QStringList{writing("glGenFramebuffers", 1),
                           activate(0),
                           CallLog::call("glBindFramebuffer", GL_DRAW_FRAMEBUFFER, framebuffer),
                           CallLog::call("glFramebufferTexture2D", GL_DRAW_FRAMEBUFFER, GL_COLOR_ATTACHMENT0,
                                         GL_TEXTURE_2D, name, 0),
                           CallLog::call("glDrawBuffer", GL_COLOR_ATTACHMENT0),
                           clearing(color),
                           CallLog::call("glClear", GL_COLOR_BUFFER_BIT),
                           writing("glDeleteFramebuffers", 1)} +
               ending(name);
    }

    /// The index of the colour of an update, or -1 if there was none.
    static int shownColor(ColorCycleTextureStreamer& streamer)
    {
        const CallLog calls;
        const bool updated = streamer.updateTexture();
        for (int i = 0; updated && i < kColorCount; ++i)
            if (calls.list().contains(clearing(kColors[i])))
                return i;
        EXPECT_EQ(calls.list(), QStringList());
        return -1;
    }
};

} // namespace

static_assert(std::is_base_of_v<TextureStreamer, ColorCycleTextureStreamer>);

// ---- construction -----------------------------------------------------------------------------------------

TEST_F(ColorCycleTest, TheMetaObjectNamesItInFull)
{
    EXPECT_STREQ(ColorCycleTextureStreamer::staticMetaObject.className(), "Harrow::Vrk::ColorCycleTextureStreamer");
    EXPECT_EQ(ColorCycleTextureStreamer::staticMetaObject.superClass(), &TextureStreamer::staticMetaObject);
}

TEST_F(ColorCycleTest, ConstructionMakesStorageAndSampling)
{
    const LogCapture log;
    const CallLog calls;
    const ColorCycleTextureStreamer streamer(kColors, kColorCount, 64, 32, 3, nullptr);
    EXPECT_EQ(anonymous(calls.list()), QStringList{writing("glGenTextures", 1)} +
                                           making(1, GL_RGBA, 64, 32, GL_NEAREST, GL_NEAREST_MIPMAP_NEAREST, 1000));
    EXPECT_EQ(log.texts(), QStringList());
    EXPECT_EQ(Inside::colors(streamer), QList<QColor>(kColors, kColors + kColorCount));
    EXPECT_EQ(Inside::counters(streamer), (Counters{3, 2, 0}));
    EXPECT_TRUE(streamer.isManaged());
    EXPECT_FALSE(streamer.isBound());
}

TEST_F(ColorCycleTest, ItTakesAParent)
{
    QObject parent;
    const QPointer<QObject> streamer = ColorCycleTextureStreamer::make(kColors, kColorCount, 1, 1, 1, &parent);
    EXPECT_EQ(parent.children(), QObjectList{streamer});
}

TEST_F(ColorCycleTest, BrokenArgumentsOfTheConstructorAreAllReported)
{
    const LogCapture log;
    ColorCycleTextureStreamer streamer(nullptr, 0, 0, -1, 0, nullptr);
    EXPECT_EQ(log.messages(QtCriticalMsg), reported({{"colors != NULL", "NULL colors"},
                                                     {"colorCount > 0", "Invalid color count"},
                                                     {"width > 0", "Invalid width"},
                                                     {"height > 0", "Invalid height"},
                                                     {"frameCount > 0", "Invalid frame count"}}));
    EXPECT_EQ(log.texts().size(), 5);
    EXPECT_TRUE(Inside::colors(streamer).isEmpty());
}

TEST_F(ColorCycleTest, EachBrokenArgumentIsReportedAlone)
{
    const struct
    {
        const QColor* colors;
        int colorCount, width, height, frameCount;
        const char* condition;
        const char* message;
    } rows[] = {{nullptr, 3, 1, 1, 1, "colors != NULL", "NULL colors"},
                {kColors, -1, 1, 1, 1, "colorCount > 0", "Invalid color count"},
                {kColors, 3, 0, 1, 1, "width > 0", "Invalid width"},
                {kColors, 3, 1, 0, 1, "height > 0", "Invalid height"},
                {kColors, 3, 1, 1, 0, "frameCount > 0", "Invalid frame count"}};
    for (const auto& row : rows)
    {
        const LogCapture log;
        const ColorCycleTextureStreamer streamer(row.colors, row.colorCount, row.width, row.height, row.frameCount,
                                                 nullptr);
        EXPECT_EQ(log.messages(), reported({{row.condition, row.message}}));
    }
}

TEST_F(ColorCycleTest, MakeNamesTheFirstBadArgument)
{
    const struct
    {
        int colorCount, width, height, frameCount;
        const char* name;
    } rows[] = {{0, 0, 0, 0, "colorCount"},
                {1, 0, 0, 0, "width"},
                {1, 1, 0, 0, "height"},
                {1, 1, 1, 0, "frameCount"},
                {-5, 1, 1, 1, "colorCount"}};
    for (const auto& row : rows)
    {
        const LogCapture log;
        const CallLog calls;
        EXPECT_EQ(
            ColorCycleTextureStreamer::make(kColors, row.colorCount, row.width, row.height, row.frameCount, nullptr),
            nullptr);
        ASSERT_EQ(log.lines().size(), 1);
        EXPECT_EQ(log.lines()[0].type, QtWarningMsg);
        EXPECT_EQ(log.lines()[0].text, QStringLiteral("Invalid argument ") + QLatin1String(row.name));
        EXPECT_EQ(calls.list(), QStringList());
    }
}

TEST_F(ColorCycleTest, TheWarningsOfMakeDoNotHangOnTheLoggingSwitch)
{
    EXPECT_TRUE(passesWithLoggingOff("ColorCycleTest.MakeNamesTheFirstBadArgument"));
}

TEST_F(ColorCycleTest, MakeOfNullColoursIsReportedAndNull)
{
    const LogCapture log;
    EXPECT_EQ(ColorCycleTextureStreamer::make(nullptr, 3, 4, 4, 1, nullptr), nullptr);
    EXPECT_EQ(log.messages(), reported({{"colors != NULL", "NULL colors"}}));
}

TEST_F(ColorCycleTest, MakeOfTheSmallestArgumentsMakes)
{
    const LogCapture log;
    EXPECT_NE(std::unique_ptr<Texture>(ColorCycleTextureStreamer::make(kColors, 1, 1, 1, 1, nullptr)), nullptr);
    EXPECT_EQ(log.texts(), QStringList());
}

// ---- updates ----------------------------------------------------------------------------------------------

TEST_F(ColorCycleTest, AnUpdateClearsToTheColourAndGivesTheStateBack)
{
    const auto streamer = make();
    const LogCapture log;
    CallLog calls;
    EXPECT_TRUE(streamer->updateTexture());
    EXPECT_EQ(anonymous(calls.list()), updating(1, 1, kColors[0]));
    streamer->nextFrame();
    calls.clear();
    EXPECT_TRUE(streamer->updateTexture());
    EXPECT_EQ(anonymous(calls.list()), updating(1, 2, kColors[1]));
    EXPECT_FALSE(streamer->isBound());
    EXPECT_EQ(log.texts(), QStringList());
}

TEST_F(ColorCycleTest, ASecondUpdateHasNothingToDo)
{
    const auto streamer = make();
    EXPECT_EQ(shownColor(*streamer), 0);
    EXPECT_EQ(shownColor(*streamer), -1);
    streamer->nextFrame();
    EXPECT_EQ(shownColor(*streamer), 1);
    EXPECT_EQ(shownColor(*streamer), -1);
}

TEST_F(ColorCycleTest, NextFrameCallsNothing)
{
    const auto streamer = make();
    const CallLog calls;
    for (int i = 0; i < 10; ++i)
        streamer->nextFrame();
    EXPECT_EQ(calls.list(), QStringList());
}

TEST_F(ColorCycleTest, WithThreeFramesItStepsOnTheFirstTheFourthAndTheSeventhCall)
{
    const auto streamer = make(kColorCount, 3);
    EXPECT_TRUE(streamer->updateTexture());
    EXPECT_EQ(steps(*streamer, 9), QList<int>({1, 4, 7}));
}

TEST_F(ColorCycleTest, WithOneFrameItStepsOnEachCall)
{
    const auto streamer = make(kColorCount, 1);
    EXPECT_TRUE(streamer->updateTexture());
    EXPECT_EQ(steps(*streamer, 4), QList<int>({1, 2, 3, 4}));
}

TEST_F(ColorCycleTest, ThePositionGoesRoundTheList)
{
    const auto streamer = make(kColorCount, 2);
    QList<int> shown;
    for (int frame = 0; frame < 9; ++frame)
    {
        shown.append(shownColor(*streamer));
        streamer->nextFrame();
    }
    EXPECT_EQ(shown, QList<int>({0, 1, -1, 2, -1, 0, -1, 1, -1}));
}

TEST_F(ColorCycleTest, StepsWithoutAnUpdateBetweenThemAreNotMadeUpFor)
{
    const auto streamer = make(kColorCount, 1);
    streamer->nextFrame();
    streamer->nextFrame();
    EXPECT_EQ(shownColor(*streamer), 2);
    EXPECT_EQ(shownColor(*streamer), -1);
}

TEST_F(ColorCycleTest, ASingleColourStepsToItself)
{
    const auto streamer = make(1, 1);
    EXPECT_EQ(shownColor(*streamer), 0);
    streamer->nextFrame();
    EXPECT_EQ(shownColor(*streamer), 0);
    EXPECT_EQ(shownColor(*streamer), -1);
}

TEST_F(ColorCycleTest, ATextureThatIsBoundStaysBound)
{
    const auto streamer = make();
    const AutoBinder binder(streamer.get());
    EXPECT_TRUE(streamer->updateTexture());
    EXPECT_TRUE(streamer->isBound());
    EXPECT_EQ(streamer->unit(), kUnits - 1);
}

// ---- without what it needs --------------------------------------------------------------------------------

TEST_F(ColorCycleTest, WithoutAFreeUnitTheUpdateWaits)
{
    const auto streamer = make();
    {
        const NoFreeUnit none;
        const LogCapture log;
        const CallLog calls;
        EXPECT_FALSE(streamer->updateTexture());
        EXPECT_EQ(log.messages(), QStringList({kNoUnit}));
        EXPECT_EQ(anonymous(calls.list()), saving());
    }
    EXPECT_EQ(shownColor(*streamer), 0);
}

TEST_F(ColorCycleTest, WithoutColoursItReportsAndDoesNothing)
{
    std::unique_ptr<ColorCycleTextureStreamer> streamer;
    {
        const LogCapture quiet;
        streamer = std::make_unique<ColorCycleTextureStreamer>(nullptr, 3, 4, 4, 2, nullptr);
    }
    const QStringList line = reported({{"!_colors.isEmpty()", "There are no colors"}});
    const CallLog calls;
    for (int i = 0; i < 3; ++i)
    {
        const LogCapture log;
        streamer->nextFrame();
        EXPECT_EQ(log.messages(), line);
        EXPECT_EQ(Inside::counters(*streamer), (Counters{2, 1, 0}));
    }
    const LogCapture log;
    EXPECT_FALSE(streamer->updateTexture());
    EXPECT_EQ(log.messages(), line);
    EXPECT_EQ(calls.list(), QStringList());
}

// The counter runs away from such a number of frames and meets it only after four thousand million calls.
TEST_F(ColorCycleTest, AFrameCountBelowOneStepsOnceAtTheFirstCall)
{
    for (const int frameCount : {0, -5, std::numeric_limits<int>::min()})
    {
        std::unique_ptr<ColorCycleTextureStreamer> streamer;
        {
            const LogCapture quiet;
            streamer = std::make_unique<ColorCycleTextureStreamer>(kColors, 3, 4, 4, frameCount, nullptr);
        }
        EXPECT_TRUE(streamer->updateTexture());
        EXPECT_EQ(steps(*streamer, 100), QList<int>({1})) << frameCount;
    }
}

// ---- with a manager of handles -------------------------------------------------------------------------------------

namespace
{

class CycleStreamersBindlessTest : public BindlessFixture
{
};

} // namespace

TEST_F(CycleStreamersBindlessTest, ACycleStreamerGetsABoundTokenAndItsUpdates)
{
    make();
    auto* const streamer = ColorCycleTextureStreamer::make(kColors, kColorCount, 4, 4, 2, nullptr);
    const LogCapture log;
    const TextureToken token = bindless->tokenForTexture(streamer);
    EXPECT_EQ(token, boundToken(0)) << "no handle, since its texels change";
    EXPECT_EQ(log.messages(), QStringList({"Detected TextureStreamer"}));
    EXPECT_TRUE(residentHandles.isEmpty());
    EXPECT_TRUE(bindless->updateTextureStreamers());
    EXPECT_FALSE(bindless->updateTextureStreamers());
    streamer->nextFrame();
    EXPECT_TRUE(bindless->updateTextureStreamers());
    drawAndRelease({token});
    bindless->deleteTexture(streamer);
    EXPECT_FALSE(bindless->updateTextureStreamers());
}

} // namespace Harrow::Vrk::Test
