// SPDX-License-Identifier: MIT
//
// The streamer that cycles through images, on the fake driver: its calls, the frames at which it steps, its messages,
// and what it does without what it needs.
#include "ImageCycleTextureStreamer.h"

#include "CycleStreamersTestTools.h"

#include <QPointer>

#include <type_traits>

namespace Harrow::Vrk::Test
{
namespace
{

class ImageCycleTest : public StreamerFixture
{
protected:
    /// Wraps the names 100, 101, …; they belong to whoever takes them.
    static std::vector<Texture*> images(int count)
    {
        std::vector<Texture*> textures;
        for (int i = 0; i < count; ++i)
        {
            textures.push_back(new Texture(100u + unsigned(i), nullptr));
            textures.back()->setTarget(GL_TEXTURE_2D);
        }
        return textures;
    }

    static std::unique_ptr<ImageCycleTextureStreamer> newStreamer(int count = 3, int frameCount = 1)
    {
        return std::make_unique<ImageCycleTextureStreamer>(images(count).data(), count, frameCount, nullptr);
    }

    static QStringList updating(GLuint name, GLuint framebuffer, GLuint image, int width = 64, int height = 32)
    {
        return saving() + bound(name) + sizeQueries() + unbound() +
               QStringList{writing("glGenFramebuffers", 1),
                           CallLog::call("glBindFramebuffer", GL_READ_FRAMEBUFFER, framebuffer),
                           CallLog::call("glBindFramebuffer", GL_DRAW_FRAMEBUFFER, framebuffer),
                           activate(0),
                           bindName(0),
                           CallLog::call("glFramebufferTexture2D", GL_READ_FRAMEBUFFER, GL_COLOR_ATTACHMENT0,
                                         GL_TEXTURE_2D, image, 0),
                           CallLog::call("glReadBuffer", GL_COLOR_ATTACHMENT0),
                           CallLog::call("glFramebufferTexture2D", GL_DRAW_FRAMEBUFFER, GL_COLOR_ATTACHMENT1,
                                         GL_TEXTURE_2D, name, 0),
                           CallLog::call("glDrawBuffer", GL_COLOR_ATTACHMENT1),
                           CallLog::call("glBlitFramebuffer", 0, 0, width, height, 0, 0, width, height,
                                         GL_COLOR_BUFFER_BIT, GL_NEAREST)} +
               (framebuffer ? QStringList{writing("glDeleteFramebuffers", 1)} : QStringList()) + ending(name);
    }

    /// The index of the image of an update, or -1 if there was none.
    static int shownImage(ImageCycleTextureStreamer& streamer)
    {
        const CallLog calls;
        if (!streamer.updateTexture())
        {
            EXPECT_EQ(calls.list(), QStringList());
            return -1;
        }
        const QString attached = calls.named({QStringLiteral("glFramebufferTexture2D")}).value(0);
        return attached.section(QStringLiteral(", "), 3, 3).toInt() - 100;
    }
};

} // namespace

static_assert(std::is_base_of_v<TextureStreamer, ImageCycleTextureStreamer>);

// ---- construction ------------------------------------------------------------------------------------------

TEST_F(ImageCycleTest, TheMetaObjectNamesItInFull)
{
    EXPECT_STREQ(ImageCycleTextureStreamer::staticMetaObject.className(), "Harrow::Vrk::ImageCycleTextureStreamer");
    EXPECT_EQ(ImageCycleTextureStreamer::staticMetaObject.superClass(), &TextureStreamer::staticMetaObject);
}

TEST_F(ImageCycleTest, ItTakesAParent)
{
    QObject parent;
    const QPointer<QObject> streamer = new ImageCycleTextureStreamer(images(1).data(), 1, 1, &parent);
    EXPECT_EQ(parent.children(), QObjectList{streamer});
}

TEST_F(ImageCycleTest, ConstructionTakesSizeAndFormatOfTheFirst)
{
    BaseLevelScript::current() = {20, 10, GL_RGBA16F};
    const std::vector<Texture*> textures = images(3);
    const LogCapture log;
    const CallLog calls;
    const ImageCycleTextureStreamer streamer(textures.data(), 3, 7, nullptr);
    QStringList made = making(1, GL_RGBA16F, 20, 10, GL_LINEAR, GL_LINEAR_MIPMAP_LINEAR, 1000);
    made.replaceInStrings(QStringLiteral(", 0x1401, null"), QStringLiteral(", 0x140b, null")); // half floats
    const QStringList queries = {asked(GL_TEXTURE_HEIGHT), asked(GL_TEXTURE_WIDTH), asked(GL_TEXTURE_INTERNAL_FORMAT)};
    EXPECT_EQ(anonymous(calls.list()),
              QStringList(writing("glGenTextures", 1)) + bound(100) + queries + unbound() + made);
    EXPECT_EQ(log.texts(), QStringList());
    EXPECT_EQ(Inside::textures(streamer), QList<Texture*>(textures.begin(), textures.end()));
}

TEST_F(ImageCycleTest, ThirtyFramesAreAStepWhateverIsAskedFor)
{
    for (const int frameCount : {1, 3, 30, 1000})
        EXPECT_EQ(Inside::counters(*newStreamer(2, frameCount)), (Counters{30, 29, 0}));
}

TEST_F(ImageCycleTest, TheTexturesEndWithIt)
{
    const int atStart = Texture::NumAlive();
    auto streamer = newStreamer(3);
    const QPointer<Texture> last = Inside::textures(*streamer).last();
    EXPECT_EQ(Texture::NumAlive(), atStart + 4);
    streamer.reset();
    EXPECT_TRUE(last.isNull());
    EXPECT_EQ(Texture::NumAlive(), atStart);
}

TEST_F(ImageCycleTest, BrokenArgumentsOfTheConstructorAreAllReported)
{
    const LogCapture log;
    const CallLog calls;
    const ImageCycleTextureStreamer streamer(nullptr, 0, 0, nullptr);
    EXPECT_EQ(log.messages(QtCriticalMsg), reported({{"textures != NULL", "NULL textures"},
                                                     {"textureCount > 0", "Invalid texture count"},
                                                     {"frameCount > 0", "Invalid frame count"}}));
    EXPECT_EQ(log.texts().size(), 3);
    EXPECT_EQ(anonymous(calls.list()), QStringList({writing("glGenTextures", 1)})) << "no storage";
}

TEST_F(ImageCycleTest, AFrameCountBelowOneIsReportedAndHasNoFurtherEffect)
{
    const LogCapture log;
    const auto streamer = newStreamer(1, 0);
    EXPECT_EQ(log.messages(), reported({{"frameCount > 0", "Invalid frame count"}}));
    EXPECT_EQ(Inside::counters(*streamer), (Counters{30, 29, 0}));
    EXPECT_TRUE(streamer->updateTexture());
}

TEST_F(ImageCycleTest, NullsAmongTheTexturesAreReportedAndKeepTheirPlaces)
{
    const std::vector<Texture*> two = images(2);
    Texture* const textures[] = {nullptr, two[0], nullptr, two[1]};
    const LogCapture log;
    ImageCycleTextureStreamer streamer(textures, 4, 1, nullptr);
    EXPECT_EQ(log.messages(),
              reported({{"textures[i] != NULL", "NULL texture"}, {"textures[i] != NULL", "NULL texture"}}));
    EXPECT_EQ(Inside::textures(streamer), QList<Texture*>(textures, textures + 4));
    const QStringList line = reported({{"_textures[_current] != NULL", "NULL texture"}});
    for (int place = 0; place < 8; ++place)
    {
        const LogCapture updates;
        const int image = shownImage(streamer);
        EXPECT_EQ(image, place % 2 ? (place % 4) / 2 : -1) << place;
        EXPECT_EQ(updates.messages(), image < 0 ? line : QStringList()) << place;
        for (int frame = 0; frame < 30; ++frame)
            streamer.nextFrame();
    }
}

TEST_F(ImageCycleTest, SizeAndFormatAreThoseOfTheFirstThatIsNotNull)
{
    Texture* const textures[] = {nullptr, images(1)[0]};
    const LogCapture log;
    const CallLog calls;
    const ImageCycleTextureStreamer streamer(textures, 2, 1, nullptr);
    EXPECT_EQ(anonymous(calls.list()).mid(1, 2), bound(100));
    EXPECT_EQ(calls.count(QStringLiteral("glTexImage2D")), 1);
}

TEST_F(ImageCycleTest, NothingButNullsGivesNoStorage)
{
    Texture* const textures[] = {nullptr, nullptr};
    const LogCapture log;
    const CallLog calls;
    ImageCycleTextureStreamer streamer(textures, 2, 1, nullptr);
    EXPECT_EQ(anonymous(calls.list()), QStringList({writing("glGenTextures", 1)}));
    EXPECT_EQ(shownImage(streamer), -1);
}

TEST_F(ImageCycleTest, MakeNamesTheFirstBadArgument)
{
    const QString path = QStringLiteral("no such file");
    const struct
    {
        int textureCount, frameCount;
        const char* name;
    } rows[] = {{0, 0, "textureCount"}, {-1, 1, "textureCount"}, {1, 0, "frameCount"}, {1, -7, "frameCount"}};
    for (const auto& row : rows)
    {
        const LogCapture log;
        const CallLog calls;
        EXPECT_EQ(ImageCycleTextureStreamer::make(&path, row.textureCount, row.frameCount, nullptr), nullptr);
        ASSERT_EQ(log.lines().size(), 1);
        EXPECT_EQ(log.lines()[0].type, QtWarningMsg);
        EXPECT_EQ(log.lines()[0].text, QStringLiteral("Invalid argument ") + QLatin1String(row.name));
        EXPECT_EQ(calls.list(), QStringList());
    }
}

TEST_F(ImageCycleTest, TheWarningsOfMakeDoNotHangOnTheLoggingSwitch)
{
    EXPECT_TRUE(passesWithLoggingOff("ImageCycleTest.MakeNamesTheFirstBadArgument"));
}

TEST_F(ImageCycleTest, MakeOfNullPathsIsReportedAndNull)
{
    const LogCapture log;
    EXPECT_EQ(ImageCycleTextureStreamer::make(nullptr, 2, 1, nullptr), nullptr);
    EXPECT_EQ(log.messages(), reported({{"paths != NULL", "NULL paths"}}));
}

// ---- updates -----------------------------------------------------------------------------------------------

TEST_F(ImageCycleTest, AnUpdateBlitsTheImageAndGivesTheStateBack)
{
    const auto streamer = newStreamer();
    const LogCapture log;
    CallLog calls;
    EXPECT_TRUE(streamer->updateTexture());
    EXPECT_EQ(anonymous(calls.list()), updating(1, 1, 100));
    streamer->nextFrame();
    calls.clear();
    EXPECT_TRUE(streamer->updateTexture());
    EXPECT_EQ(anonymous(calls.list()), updating(1, 2, 101));
    EXPECT_EQ(log.texts(), QStringList());
}

TEST_F(ImageCycleTest, TheWholeOfWhatOpenGLSaysIsCopied)
{
    const auto streamer = newStreamer();
    BaseLevelScript::current() = {7, 5, GL_RGBA8};
    const CallLog calls;
    EXPECT_TRUE(streamer->updateTexture());
    EXPECT_EQ(anonymous(calls.list()), updating(1, 1, 100, 7, 5));
}

TEST_F(ImageCycleTest, AFramebufferWithoutANameIsNotDeleted)
{
    driver.replace(
        "glGenFramebuffers", +[](GLsizei, GLuint* names) { *names = 0; });
    ASSERT_NE(driver.load(), 0);
    const auto streamer = newStreamer();
    const CallLog calls;
    EXPECT_TRUE(streamer->updateTexture());
    EXPECT_EQ(anonymous(calls.list()), updating(1, 0, 100));
}

TEST_F(ImageCycleTest, ItStepsOnCalls1And31And61WhateverFrameCountIsAskedFor)
{
    for (const int frameCount : {1, 3, 1000})
    {
        const auto streamer = newStreamer(3, frameCount);
        EXPECT_TRUE(streamer->updateTexture());
        EXPECT_EQ(steps(*streamer, 90), QList<int>({1, 31, 61})) << frameCount;
    }
}

TEST_F(ImageCycleTest, ThePositionGoesRoundTheList)
{
    const auto streamer = newStreamer(2);
    QList<int> shown = {shownImage(*streamer)};
    for (int frame = 0; frame < 91; ++frame)
    {
        streamer->nextFrame();
        if (const int image = shownImage(*streamer); image >= 0)
            shown.append(image);
    }
    EXPECT_EQ(shown, QList<int>({0, 1, 0, 1, 0})) << "calls 1, 31, 61 and 91";
}

TEST_F(ImageCycleTest, ASingleImageStepsToItself)
{
    const auto streamer = newStreamer(1);
    EXPECT_EQ(shownImage(*streamer), 0);
    EXPECT_EQ(shownImage(*streamer), -1);
    streamer->nextFrame();
    EXPECT_EQ(shownImage(*streamer), 0);
    EXPECT_EQ(shownImage(*streamer), -1);
}

TEST_F(ImageCycleTest, NextFrameCallsNothing)
{
    const auto streamer = newStreamer();
    const CallLog calls;
    for (int i = 0; i < 40; ++i)
        streamer->nextFrame();
    EXPECT_EQ(calls.list(), QStringList());
}

TEST_F(ImageCycleTest, WithoutAFreeUnitTheUpdateWaits)
{
    const auto streamer = newStreamer();
    {
        const NoFreeUnit none;
        const LogCapture log;
        const CallLog calls;
        EXPECT_FALSE(streamer->updateTexture());
        EXPECT_EQ(log.messages(), QStringList({kNoUnit}));
        EXPECT_EQ(anonymous(calls.list()), saving());
    }
    EXPECT_EQ(shownImage(*streamer), 0);
}

TEST_F(ImageCycleTest, WithoutTexturesItReportsAndDoesNothing)
{
    std::unique_ptr<ImageCycleTextureStreamer> streamer;
    {
        const LogCapture quiet;
        streamer = std::make_unique<ImageCycleTextureStreamer>(nullptr, 3, 1, nullptr);
    }
    const QStringList line = reported({{"!_textures.isEmpty()", "There are no textures"}});
    const CallLog calls;
    {
        const LogCapture log;
        streamer->nextFrame();
        EXPECT_EQ(log.messages(), line);
        EXPECT_EQ(Inside::counters(*streamer), (Counters{30, 29, 0}));
    }
    const LogCapture log;
    EXPECT_FALSE(streamer->updateTexture());
    EXPECT_EQ(log.messages(), line);
    EXPECT_EQ(calls.list(), QStringList());
}

TEST_F(ImageCycleTest, ConstructionWithoutAFreeUnitReportsAndGoesOn)
{
    const NoFreeUnit none;
    const LogCapture log;
    const auto streamer = newStreamer(1);
    EXPECT_FALSE(streamer->updateTexture());
    EXPECT_EQ(log.messages(QtWarningMsg), QStringList(4, kNoUnit)) << "the image, storage, sampling, the update";
}

} // namespace Harrow::Vrk::Test
