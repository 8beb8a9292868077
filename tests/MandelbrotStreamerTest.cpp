// SPDX-License-Identifier: MIT
//
// The Mandelbrot set's streamer that computes on the processor, on the fake driver: the rectangle, which both streamers
// share, its calls, its messages, and what it does without what it needs.
#include "MandelbrotCPUTextureStreamer.h"

#include "MandelbrotPixels.h"
#include "MandelbrotTestTools.h"

#include <QPointer>

#include <limits>
#include <type_traits>

namespace Harrow::Vrk::Test
{
namespace
{

class MandelbrotCPUTest : public MandelbrotFixture
{
};

} // namespace

static_assert(std::is_abstract_v<MandelbrotTextureStreamer>);
static_assert(std::is_base_of_v<TextureStreamer, MandelbrotTextureStreamer>);
static_assert(std::is_base_of_v<MandelbrotTextureStreamer, MandelbrotCPUTextureStreamer>);

// ---- what both share -----------------------------------------------------------------------------------------------

TEST_F(MandelbrotCPUTest, TheMetaObjectsNameTheClassesInFull)
{
    EXPECT_STREQ(MandelbrotTextureStreamer::staticMetaObject.className(), "Harrow::Vrk::MandelbrotTextureStreamer");
    EXPECT_STREQ(MandelbrotCPUTextureStreamer::staticMetaObject.className(),
                 "Harrow::Vrk::MandelbrotCPUTextureStreamer");
    EXPECT_EQ(MandelbrotTextureStreamer::staticMetaObject.superClass(), &TextureStreamer::staticMetaObject);
}

TEST_F(MandelbrotCPUTest, ConstructionMakesStorageAndSampling)
{
    const LogCapture log;
    const CallLog calls;
    const MandelbrotCPUTextureStreamer streamer(kWidth, kHeight, nullptr);
    EXPECT_EQ(anonymous(calls.list()), QStringList{writing("glGenTextures", 1)} +
                                           making(1, GL_RGBA8, kWidth, kHeight, GL_LINEAR, GL_LINEAR_MIPMAP_LINEAR, 0));
    EXPECT_EQ(log.texts(), QStringList());
    EXPECT_EQ(Inside::domain(streamer), (Domain{-2.5, -1.0, 1.0, 1.0}));
    EXPECT_TRUE(Inside::dirty(streamer));
}

TEST_F(MandelbrotCPUTest, ItTakesAParent)
{
    QObject parent;
    const QPointer<QObject> streamer = MandelbrotCPUTextureStreamer::make(4, 4, &parent);
    EXPECT_EQ(parent.children(), QObjectList{streamer});
}

TEST_F(MandelbrotCPUTest, BrokenSizesOfTheConstructorAreReported)
{
    {
        const LogCapture log;
        const MandelbrotCPUTextureStreamer streamer(0, -1, nullptr);
        EXPECT_EQ(log.messages(), invalidSizes());
    }
    const LogCapture log;
    const MandelbrotCPUTextureStreamer streamer(4, 0, nullptr);
    EXPECT_EQ(log.messages(), invalidSizes().last(1));
}

TEST_F(MandelbrotCPUTest, MakeChecksItsSizesTheWidthFirst)
{
    expectMakeChecksItsSizes<MandelbrotCPUTextureStreamer>();
}

TEST_F(MandelbrotCPUTest, TheWarningsOfMakeDoNotHangOnTheLoggingSwitch)
{
    EXPECT_TRUE(passesWithLoggingOff("MandelbrotCPUTest.MakeChecksItsSizesTheWidthFirst"));
}

// ---- the rectangle -------------------------------------------------------------------------------------------------

TEST_F(MandelbrotCPUTest, PanMovesBothEdges)
{
    const auto streamer = make<MandelbrotCPUTextureStreamer>();
    streamer->panDomain(0.5, -0.25);
    EXPECT_EQ(Inside::domain(*streamer), (Domain{-2.0, -1.25, 1.5, 0.75}));
}

TEST_F(MandelbrotCPUTest, TheCentreMovesAndTheExtentStays)
{
    const auto streamer = make<MandelbrotCPUTextureStreamer>();
    streamer->setDomainCenter(4.0, -3.0);
    EXPECT_EQ(Inside::domain(*streamer), (Domain{2.25, -4.0, 5.75, -2.0}));
}

TEST_F(MandelbrotCPUTest, ExtentsAreSetInTheirOrder)
{
    const auto streamer = make<MandelbrotCPUTextureStreamer>();
    streamer->setDomainExtents(1.0, 2.0, 3.0, 4.0);
    EXPECT_EQ(Inside::domain(*streamer), (Domain{1.0, 2.0, 3.0, 4.0}));
}

TEST_F(MandelbrotCPUTest, AZoomByHalfHalvesBothExtentsAboutTheCentre)
{
    const auto streamer = make<MandelbrotCPUTextureStreamer>();
    const LogCapture log;
    streamer->zoomDomain(0.5f);
    EXPECT_EQ(Inside::domain(*streamer), (Domain{-1.625, -0.5, 0.125, 0.5}));
    EXPECT_EQ(log.texts(), QStringList());
}

TEST_F(MandelbrotCPUTest, TheFactorIsWidened)
{
    const auto streamer = make<MandelbrotCPUTextureStreamer>();
    streamer->setDomainExtents(-1.0, -2.0, 1.0, 2.0);
    streamer->zoomDomain(0.1f);
    EXPECT_EQ(Inside::domain(*streamer),
              (Domain{-double(0.1f), -2.0 * double(0.1f), double(0.1f), 2.0 * double(0.1f)}));
}

TEST_F(MandelbrotCPUTest, AFactorThatIsNotAboveZeroIsReportedAndUsed)
{
    const QStringList line = {assertionLine(QStringLiteral("factor > 0"), QStringLiteral("Invalid factor"))};
    {
        const auto streamer = make<MandelbrotCPUTextureStreamer>();
        const LogCapture log;
        streamer->zoomDomain(-1.0f);
        EXPECT_EQ(log.messages(QtCriticalMsg), line);
        EXPECT_EQ(Inside::domain(*streamer), (Domain{1.0, 1.0, -2.5, -1.0})) << "turned over";
    }
    {
        const auto streamer = make<MandelbrotCPUTextureStreamer>();
        const LogCapture log;
        streamer->zoomDomain(0.0f);
        EXPECT_EQ(log.messages(), line);
        EXPECT_EQ(Inside::domain(*streamer), (Domain{-0.75, 0.0, -0.75, 0.0}));
    }
    const auto streamer = make<MandelbrotCPUTextureStreamer>();
    const LogCapture log;
    streamer->zoomDomain(std::numeric_limits<float>::quiet_NaN());
    EXPECT_EQ(log.messages(), line);
}

TEST_F(MandelbrotCPUTest, EachChangeAsksForAnUpdateAndCallsNothing)
{
    const auto streamer = make<MandelbrotCPUTextureStreamer>();
    const CallLog calls;
    const auto expectDirtyAgain = [&](const char* what)
    {
        EXPECT_TRUE(Inside::dirty(*streamer)) << what;
        Inside::clean(*streamer);
    };
    Inside::clean(*streamer);
    streamer->panDomain(0.0, 0.0);
    expectDirtyAgain("panDomain");
    streamer->setDomainCenter(-0.75, 0.0);
    expectDirtyAgain("setDomainCenter");
    streamer->setDomainExtents(-2.5, -1.0, 1.0, 1.0);
    expectDirtyAgain("setDomainExtents");
    streamer->zoomDomain(1.0f);
    expectDirtyAgain("zoomDomain");
    EXPECT_EQ(Inside::domain(*streamer), (Domain{-2.5, -1.0, 1.0, 1.0}));
    EXPECT_EQ(calls.list(), QStringList());
}

// ---- on the processor ----------------------------------------------------------------------------------------------

TEST_F(MandelbrotCPUTest, AnUpdateUploadsThePicture)
{
    const auto streamer = make<MandelbrotCPUTextureStreamer>();
    const LogCapture log;
    const CallLog calls;
    EXPECT_TRUE(streamer->updateTexture());
    const QString upload =
        writing("glTexSubImage2D", GL_TEXTURE_2D, 0, 0, 0, kWidth, kHeight, GL_RGBA, GL_UNSIGNED_BYTE);
    EXPECT_EQ(anonymous(calls.list()), withUnitKept(bound(1) + sizeQueries() + QStringList(upload) + unbound()));
    std::vector<quint32> expected(kWidth * kHeight);
    computeMandelbrotPixels(MandelbrotKernel::ePlain, {-2.5, -1.0, 1.0, 1.0}, kWidth, kHeight, expected.data());
    EXPECT_EQ(uploaded, expected);
    EXPECT_EQ(log.texts(), QStringList());
}

TEST_F(MandelbrotCPUTest, ASecondUpdateHasNothingToDo)
{
    const auto streamer = make<MandelbrotCPUTextureStreamer>();
    EXPECT_TRUE(streamer->updateTexture());
    {
        const CallLog calls;
        EXPECT_FALSE(streamer->updateTexture());
        EXPECT_EQ(calls.list(), QStringList());
    }
    streamer->panDomain(0.0, 0.0);
    EXPECT_TRUE(streamer->updateTexture());
    EXPECT_FALSE(streamer->updateTexture());
}

TEST_F(MandelbrotCPUTest, TheRectangleOfTheMomentIsComputed)
{
    const auto streamer = make<MandelbrotCPUTextureStreamer>();
    streamer->setDomainExtents(0.2, 0.4, 0.5, 0.7);
    EXPECT_TRUE(streamer->updateTexture());
    std::vector<quint32> expected(kWidth * kHeight);
    computeMandelbrotPixels(MandelbrotKernel::ePlain, {0.2, 0.4, 0.5, 0.7}, kWidth, kHeight, expected.data());
    EXPECT_EQ(uploaded, expected);
}

TEST_F(MandelbrotCPUTest, ASmallerTextureThanItWasMadeForIsFilled)
{
    const auto streamer = make<MandelbrotCPUTextureStreamer>();
    BaseLevelScript::current() = {10, 5, GL_RGBA8};
    EXPECT_TRUE(streamer->updateTexture());
    std::vector<quint32> expected(50);
    computeMandelbrotPixels(MandelbrotKernel::ePlain, {-2.5, -1.0, 1.0, 1.0}, 10, 5, expected.data());
    EXPECT_EQ(uploaded, expected);
}

TEST_F(MandelbrotCPUTest, ALargerTextureThanItWasMadeForIsReportedAndLeft)
{
    const auto streamer = make<MandelbrotCPUTextureStreamer>();
    for (const auto& [width, height] : {std::pair(kWidth + 1, kHeight), {1 << 20, 1 << 20}, {-1, -1}})
    {
        BaseLevelScript::current() = {width, height, GL_RGBA8};
        const LogCapture log;
        const CallLog calls;
        EXPECT_FALSE(streamer->updateTexture());
        EXPECT_EQ(log.messages(),
                  QStringList({assertionLine(
                      QStringLiteral("fits"),
                      QStringLiteral("There are no pixels for a texture of %1 x %2 texels").arg(width).arg(height))}));
        EXPECT_EQ(anonymous(calls.list()), withUnitKept(bound(1) + sizeQueries() + unbound()));
    }
    BaseLevelScript::current() = {kWidth, kHeight, GL_RGBA8};
    EXPECT_TRUE(streamer->updateTexture()) << "still to be done";
}

TEST_F(MandelbrotCPUTest, SizesBelowOneHaveNoPixels)
{
    std::unique_ptr<MandelbrotCPUTextureStreamer> streamer;
    {
        const LogCapture quiet;
        streamer = std::make_unique<MandelbrotCPUTextureStreamer>(-4, -4, nullptr);
    }
    const LogCapture log;
    BaseLevelScript::current() = {4, 4, GL_RGBA8};
    EXPECT_FALSE(streamer->updateTexture());
    EXPECT_EQ(log.messages().size(), 1);
    EXPECT_TRUE(uploaded.empty());
}

#if !defined(__SANITIZE_ADDRESS__) // whose allocator ends the process in place of saying no

TEST_F(MandelbrotCPUTest, MorePixelsThanThereIsMemoryForAreReported)
{
    // Refused by the system, and too many to ask for.
    for (const int size : {1 << 24, std::numeric_limits<int>::max()})
    {
        const LogCapture log;
        const auto streamer = make<MandelbrotCPUTextureStreamer>(size, size);
        EXPECT_EQ(log.messages(),
                  QStringList({assertionLine(QStringLiteral("this->_pixels != nullptr"),
                                             QStringLiteral("There is no memory for %1 x %1 pixels").arg(size))}));
        EXPECT_FALSE(streamer->updateTexture());
    }
}

#endif

TEST_F(MandelbrotCPUTest, WithoutAFreeUnitTheUpdateWaits)
{
    const auto streamer = make<MandelbrotCPUTextureStreamer>();
    {
        const NoFreeUnit none;
        const LogCapture log;
        const CallLog calls;
        EXPECT_FALSE(streamer->updateTexture());
        EXPECT_EQ(log.messages(), QStringList({kNoUnit}));
        EXPECT_EQ(anonymous(calls.list()), withUnitKept({}));
    }
    EXPECT_TRUE(streamer->updateTexture());
}

} // namespace Harrow::Vrk::Test
