// SPDX-License-Identifier: MIT

/// \file
/// Which slot and layer Array2DTextureManager gives a format, and what it tells.

#include "Array2DPlacingTestTools.h"

#include <ostream>

namespace Harrow::Vrk::Test
{
namespace
{

// ---- construction --------------------------------------------------------------------------------------------------

TEST_F(Array2DPlacing, TokenZeroIsWhiteAndHasTheOnlyRecord)
{
    makeManager();
    EXPECT_EQ(array2D->maxToken(), TextureToken(1));
    EXPECT_EQ(Tables::tokenToColor(*array2D).value(TextureToken(0)), QColor(Qt::white));
    EXPECT_EQ(array2D->tokenForColor(Qt::white), TextureToken(0));
    EXPECT_EQ(Books::records(*array2D).size(), 1);
    expectFresh(0);
    EXPECT_EQ(Books::layerCounts(*array2D), QList<int>({1}));
    EXPECT_EQ(pending(), tokens({0}));
    EXPECT_TRUE(isDirty());
    EXPECT_TRUE(Books::allSlots(*array2D).isEmpty());
    EXPECT_EQ(Books::reallocationMethod(*array2D), TextureManager::eReallocateSmaller);
    EXPECT_TRUE(array2D->supportsUDIMs());
}

TEST_F(Array2DPlacing, RecordOfATokenIsEightWords)
{
    EXPECT_EQ(sizeof(Record), 32u);
    const Record fresh;
    const auto* const words = reinterpret_cast<const qint32*>(&fresh);
    EXPECT_EQ(words[0], -1);
    for (int i = 1; i < 8; ++i)
        EXPECT_EQ(words[i], 0);
    Record filled;
    filled.slot = 1;
    filled.layer = 2;
    filled.setHandle(0x1122334455667788u);
    filled.udimWidth = 5;
    filled.udimMaxPatch = 6;
    const auto* const filledWords = reinterpret_cast<const quint32*>(&filled);
    const QList<quint32> expected = {1, 2, 0x55667788u, 0x11223344u, 5, 6, 0, 0};
    EXPECT_EQ(QList<quint32>(filledWords, filledWords + 8), expected);
}

struct Limits
{
    int size;
    int size3D;
    int slotSize;
};

void PrintTo(const Limits& limits, std::ostream* stream)
{
    *stream << limits.size << " and " << limits.size3D;
}

class Array2DSlotLimits : public Array2DPlacing, public testing::WithParamInterface<Limits>
{
};

TEST_P(Array2DSlotLimits, ComeOfTheDriver)
{
    driver.setInteger(GL_MAX_TEXTURE_SIZE, GetParam().size);
    driver.setInteger(GL_MAX_3D_TEXTURE_SIZE, GetParam().size3D);
    makeManager();
    const int most = GetParam().slotSize;
    EXPECT_EQ(Books::slotLimits(*array2D), (std::array<int, 4>{1, most, 1, most}));
}

INSTANTIATE_TEST_SUITE_P(Rows, Array2DSlotLimits,
                         testing::Values(Limits{16384, 2048, 1024},    //
                                         Limits{1024, 2048, 1024},     //
                                         Limits{1023, 2048, 1023},     //
                                         Limits{16384, 32768, 16384},  //
                                         Limits{65536, 65536, 32768},  //
                                         Limits{65536, 131072, 32768}, //
                                         Limits{16384, 4095, 2047}));

TEST_F(Array2DPlacing, LimitsAreAskedOnceAndInOrder)
{
    const CallLog calls;
    makeManager();
    QStringList asked;
    for (const QString& call : calls.named({QStringLiteral("glGetIntegerv"), QStringLiteral("glGetFloatv")}))
        asked.append(call.section(QLatin1Char(','), 0, 0));
    asked.removeAll(CallLog::call("glGetIntegerv", GL_NUM_EXTENSIONS).chopped(1));
    EXPECT_EQ(asked, QStringList({CallLog::call("glGetIntegerv", GL_MAX_TEXTURE_SIZE).chopped(1),
                                  CallLog::call("glGetIntegerv", GL_MAX_3D_TEXTURE_SIZE).chopped(1)}));
}

class Array2DAnisotropy : public Array2DPlacing, public testing::WithParamInterface<const char*>
{
protected:
    void SetUp() override
    {
        Array2DPlacing::SetUp();
        driver.replace(
            "glGetFloatv",
            +[](GLenum name, GLfloat* value) { *value = name == GL_MAX_TEXTURE_MAX_ANISOTROPY ? 16.0f : 0.0f; });
        ASSERT_EQ(driver.load(), 1);
    }
};

TEST_P(Array2DAnisotropy, IsSupportedInBothSpellings)
{
    driver.setExtensions({GetParam()});
    makeManager();
    EXPECT_TRUE(Books::anisotropySupported(*array2D));
    EXPECT_EQ(Books::maxAnisotropy(*array2D), 16.0f);
}

INSTANTIATE_TEST_SUITE_P(Spellings, Array2DAnisotropy,
                         testing::Values("GL_ARB_texture_filter_anisotropic", "GL_EXT_texture_filter_anisotropic"));

TEST_F(Array2DAnisotropy, IsOffWithoutTheExtension)
{
    makeManager();
    EXPECT_FALSE(Books::anisotropySupported(*array2D));
    EXPECT_EQ(Books::maxAnisotropy(*array2D), 1.0f);
}

// ---- aligned formats -----------------------------------------------------------------------------------------------

TEST_F(Array2DPlacing, SizesOfSlotsAreClamped)
{
    driver.setInteger(GL_MAX_TEXTURE_SIZE, 1024);
    makeManager();
    Books::setMinSlotSize(*array2D, 16, 8);
    const auto aligned = [this](int width, int height)
    {
        const SlotFormat format = array2D->alignedSlotFormat(formatOf(width, height));
        return std::pair(format.width, format.height);
    };
    EXPECT_EQ(aligned(100, 50), std::pair(100, 50));
    EXPECT_EQ(aligned(4096, 50), std::pair(1024, 50));
    EXPECT_EQ(aligned(100, 1025), std::pair(100, 1024));
    EXPECT_EQ(aligned(1, 1), std::pair(16, 8));
    EXPECT_EQ(aligned(16, 8), std::pair(16, 8));
}

TEST_F(Array2DPlacing, SizesOfSlotsAreRoundedUpAfterTheClamp)
{
    driver.setInteger(GL_MAX_TEXTURE_SIZE, 1000);
    makeManager();
    Books::setSlotAlignment(*array2D, 64, 48);
    const auto aligned = [this](int width, int height)
    {
        const SlotFormat format = array2D->alignedSlotFormat(formatOf(width, height));
        return std::pair(format.width, format.height);
    };
    EXPECT_EQ(aligned(64, 48), std::pair(64, 48));
    EXPECT_EQ(aligned(65, 49), std::pair(128, 96));
    EXPECT_EQ(aligned(1, 1), std::pair(64, 48));
    EXPECT_EQ(aligned(5000, 5000), std::pair(1024, 1008)); // beyond the maximum of 1000
}

TEST_F(Array2DPlacing, AlignmentChangesTheSizeAlone)
{
    makeManager();
    SlotFormat format = formatOf(40000, 40000, GL_RGB8, GL_CLAMP_TO_EDGE);
    format.magFilter = GL_NEAREST;
    format.anisotropy = 3.0f;
    format.lodBias = 0.5f;
    SlotFormat expected = format;
    expected.width = 32768;
    expected.height = 32768;
    EXPECT_TRUE(array2D->alignedSlotFormat(format) == expected);
}

// ---- exact and unused slots ----------------------------------------------------------------------------------------

TEST_F(Array2DPlacing, FormatWithoutASizeHasNoPlaceAndNoWarning)
{
    makeSlots(2);
    EXPECT_EQ(find(formatOf(0, 0)), kNowhere);
    EXPECT_EQ(find(formatOf(0, 64)), kNowhere);
    EXPECT_EQ(find(formatOf(64, 0)), kNowhere);
    EXPECT_EQ(log.texts(), QStringList());
    EXPECT_FALSE(slot(0).isUsed());
}

TEST_F(Array2DPlacing, FormatOfANegativeSizeHasNoPlace)
{
    makeSlots(2);
    EXPECT_EQ(find(formatOf(-1, 64)), kNowhere);
    EXPECT_EQ(find(formatOf(64, -1)), kNowhere);
    EXPECT_EQ(find(formatOf(std::numeric_limits<int>::min(), std::numeric_limits<int>::min())), kNowhere);
    EXPECT_FALSE(slot(0).isUsed());
}

TEST_F(Array2DPlacing, TexturesOfOneFormatShareASlot)
{
    makeManager();
    const quint64 first = bound(sized(64, 64));
    const quint64 second = bound(sized(64, 64));
    EXPECT_EQ(place(first), Place(0, 0));
    EXPECT_EQ(place(second), Place(0, 1));
    EXPECT_EQ(slot(0).usedLayers, 2);
    EXPECT_EQ(slot(0).maxLayers, 64);
    EXPECT_EQ(slot(0).allocatedLayers, 0);
    EXPECT_TRUE(slot(0).format == formatOf(64, 64));
    EXPECT_FALSE(slot(1).isUsed());
    EXPECT_EQ(log.texts(), QStringList());
}

TEST_F(Array2DPlacing, EachFieldOfTheFormatAsksForASlotOfItsOwn)
{
    makeSlots(10);
    EXPECT_EQ(find(formatOf(64, 64)), Place(0, 0));
    SlotFormat others[9];
    for (SlotFormat& format : others)
        format = formatOf(64, 64);
    others[0].width = 32;
    others[1].height = 32;
    others[2].internalFormat = GL_RGBA16F;
    others[3].wrapS = GL_CLAMP_TO_EDGE;
    others[4].wrapT = GL_CLAMP_TO_EDGE;
    others[5].magFilter = GL_NEAREST;
    others[6].minFilter = GL_NEAREST;
    others[7].anisotropy = 2.0f;
    others[8].lodBias = 0.5f;
    for (int i = 0; i < 9; ++i)
        EXPECT_EQ(find(others[i]), Place(i + 1, 0));
    for (int i = 0; i < 9; ++i)
        EXPECT_EQ(find(others[i]), Place(i + 1, 1));
}

TEST_F(Array2DPlacing, ExactSlotThatIsFullDoesNotStopThePass)
{
    makeSlots(3);
    EXPECT_EQ(find(formatOf(64, 64), 63), Place(0, 0));
    EXPECT_EQ(find(formatOf(64, 64)), Place(1, 0)); // an unused one
    EXPECT_EQ(find(formatOf(64, 64)), Place(1, 1)); // the exact one behind the full one
    EXPECT_EQ(find(formatOf(64, 64), 62), Place(2, 0));
    slot(0).release(5, 1);
    EXPECT_EQ(find(formatOf(64, 64)), Place(0, 5)); // again the first one
    EXPECT_EQ(log.texts(), QStringList());
}

TEST_F(Array2DPlacing, LastLayerOfASlotIsNeverUsed)
{
    makeSlots(1);
    EXPECT_EQ(find(formatOf(64, 64), 62), Place(0, 0));
    EXPECT_EQ(find(formatOf(64, 64), 2), kNowhere);
    EXPECT_EQ(find(formatOf(64, 64), 1), Place(0, 62));
    EXPECT_EQ(find(formatOf(64, 64), 1), kNowhere);
    EXPECT_EQ(slot(0).maxLayers, 64);
}

TEST_F(Array2DPlacing, SlotsHaveAsManyLayersAsTheDriverGrants)
{
    driver.setInteger(GL_MAX_ARRAY_TEXTURE_LAYERS, 2048);
    makeSlots(2);
    EXPECT_EQ(find(formatOf(64, 64), 2047), Place(0, 0));
    EXPECT_EQ(slot(0).maxLayers, 2048);
    EXPECT_EQ(find(formatOf(2048, 1024)), Place(1, 0));
    EXPECT_EQ(slot(1).maxLayers, 256); // 2 GiB
}

TEST_F(Array2DPlacing, PlaceHasTheHandleOfItsSlot)
{
    makeSlots(2);
    slot(0).handle = 0x100000002u;
    const Record fresh = array2D->findSlotLayer(formatOf(64, 64), 1);
    EXPECT_EQ(fresh.handle[0], 2u);
    EXPECT_EQ(fresh.handle[1], 1u);
    EXPECT_EQ(fresh.udimWidth, 0);
    EXPECT_EQ(fresh.udimMaxPatch, 0);
    const Record exact = array2D->findSlotLayer(formatOf(64, 64), 1);
    EXPECT_EQ(exact.handle[0], 2u);
    EXPECT_EQ(exact.handle[1], 1u);
}

TEST_F(Array2DPlacing, TextureLargerThanAnySlotGetsTheLargestSlot)
{
    driver.setInteger(GL_MAX_TEXTURE_SIZE, 1024);
    makeManager();
    const quint64 token = bound(sized(4096, 512));
    EXPECT_EQ(place(token), Place(0, 0));
    EXPECT_TRUE(slot(0).format == formatOf(1024, 512));
    EXPECT_EQ(log.texts(), QStringList());
}

TEST_F(Array2DPlacing, TriedSlotsKeepTheFormatThatTheyWereGiven)
{
    makeSlots(3);
    EXPECT_EQ(find(formatOf(64, 64)), Place(0, 0));
    const SlotFormat huge = formatOf(16384, 16384, GL_RGBA16F, GL_CLAMP_TO_EDGE);
    EXPECT_EQ(find(huge), kNowhere);
    for (int i = 1; i < 3; ++i)
    {
        EXPECT_TRUE(slot(i).format == huge);
        EXPECT_EQ(slot(i).maxLayers, 1);
        EXPECT_EQ(slot(i).usedLayers, 0);
    }
    // They merge with each other, and again nothing fits.
    EXPECT_EQ(log.messages(),
              QStringList({line("Textures were resized to fit into texture slots (16384x16384) -> (16384x16384)"),
                           line("Failed to find slot or layer (16384x16384) 0x881A C:0x812F 0x812F F:0x2601 0x2601  "
                                "1.0  0.0\n")}));
    // None is unused any more: the next format has to free one of them.
    log.clear();
    EXPECT_EQ(find(formatOf(64, 32, GL_R8)), Place(1, 0));
    EXPECT_EQ(log.messages(),
              QStringList(line("Textures were resized to fit into texture slots (16384x16384) -> (16384x16384)")));
}

TEST_F(Array2DPlacing, FormatOfTwoGiBInALayerNeverHoldsATexture)
{
    makeSlots(1);
    EXPECT_EQ(find(formatOf(16384, 16384, GL_RGBA16F)), kNowhere);
    EXPECT_EQ(slot(0).maxLayers, 1);
    EXPECT_EQ(log.messages(QtWarningMsg),
              QStringList(line("Failed to find slot or layer (16384x16384) 0x881A C:0x2901 0x2901 F:0x2601 0x2601  1.0 "
                               " 0.0\n")));
}

TEST_F(Array2DPlacing, LayersLeftFreeServeAFormatThatHoldsNothing)
{
    makeSlots(1);
    EXPECT_EQ(find(formatOf(64, 64), 3), Place(0, 0));
    slot(0).release(2, 1);
    slot(0).release(2, 1); // once more: it waits above the mark
    slot(0).release(0, 2);
    EXPECT_TRUE(slot(0).isUsed());
    slot(0).format.internalFormat = 0;
    EXPECT_EQ(find(formatOf(16384, 16384, GL_RGBA16F)), Place(0, 0));
}

TEST_F(Array2DPlacing, FailureShowsTheRequestBeforeAlignment)
{
    driver.setInteger(GL_MAX_TEXTURE_SIZE, 1024);
    makeSlots(1);
    find(formatOf(64, 64));
    SlotFormat format = formatOf(2000, 3, GL_R8, GL_CLAMP_TO_EDGE);
    format.wrapT = GL_REPEAT;
    format.minFilter = GL_NEAREST;
    format.anisotropy = 16.0f;
    format.lodBias = -0.5f;
    EXPECT_EQ(find(format), kNowhere);
    EXPECT_EQ(log.lines().size(), 1);
    EXPECT_EQ(log.messages(QtWarningMsg),
              QStringList(line("Failed to find slot or layer (2000x3   ) 0x8229 C:0x812F 0x2901 F:0x2601 0x2600 16.0 "
                               "-0.5\n")));
}

TEST_F(Array2DPlacing, WithoutSlotsNothingHasAPlace)
{
    makeSlots(0);
    EXPECT_EQ(find(formatOf(64, 64)), kNowhere);
    EXPECT_EQ(log.messages(),
              QStringList(line("Failed to find slot or layer (  64x64  ) 0x8058 C:0x2901 0x2901 F:0x2601 0x2601  1.0  "
                               "0.0\n")));
}

TEST_F(Array2DPlacing, TokenThatFoundNoPlaceIsTriedAgain)
{
    makeManager(1);
    Texture* const first = newTextureOf(sized(64, 64));
    bound(first);
    const quint64 second = bound(sized(64, 64, GL_R8));
    expectFresh(second);
    EXPECT_EQ(log.messages(QtWarningMsg).size(), 1);
    array2D->bind(tokens({second}));
    EXPECT_EQ(log.messages(QtWarningMsg).size(), 2);
    array2D->deleteTexture(first);
    array2D->bind(tokens({second}));
    EXPECT_EQ(place(second), Place(0, 0));
    EXPECT_EQ(log.messages(QtWarningMsg).size(), 2);
}

// ---- slots of another size -----------------------------------------------------------------------------------------

TEST_F(Array2DPlacing, SmallerSlotIsOneThatDividesTheTexture)
{
    makeSlots(2);
    find(formatOf(200, 200));
    find(formatOf(256, 256));
    log.clear();
    EXPECT_EQ(find(formatOf(512, 512)), Place(1, 1));
    EXPECT_EQ(log.messages(QtWarningMsg),
              QStringList(line("Textures were resized to fit into texture slots (512x512) -> (256x256)")));
    EXPECT_EQ(log.lines().size(), 1);
}

TEST_F(Array2DPlacing, SmallestOfTheSmallerSlotsWins)
{
    makeSlots(3);
    find(formatOf(256, 256));
    find(formatOf(128, 128));
    find(formatOf(256, 128));
    EXPECT_EQ(find(formatOf(512, 512)), Place(1, 1));
}

TEST_F(Array2DPlacing, NearestOfTheLargerSlotsWins)
{
    makeSlots(4);
    array2D->setSlotReallocationMethod(TextureManager::eReallocateLarger);
    find(formatOf(256, 256));
    find(formatOf(4096, 4096));
    find(formatOf(1024, 1024));
    find(formatOf(768, 768));
    log.clear();
    EXPECT_EQ(find(formatOf(512, 512)), Place(2, 1));
    EXPECT_EQ(log.messages(),
              QStringList(line("Textures were resized to fit into texture slots (512x512) -> (1024x1024)")));
}

TEST_F(Array2DPlacing, FirstOfEqualSlotsWins)
{
    makeSlots(3);
    find(formatOf(64, 64, GL_R8));
    find(formatOf(64, 128));
    find(formatOf(128, 64));
    EXPECT_EQ(find(formatOf(128, 128)), Place(1, 1));
}

TEST_F(Array2DPlacing, SlotOneTexelSmallerIsNeverTheBest)
{
    makeSlots(1);
    find(formatOf(1, 4));
    EXPECT_EQ(find(formatOf(2, 4)), kNowhere);
    EXPECT_EQ(find(formatOf(2, 8)), Place(0, 1));
}

TEST_F(Array2DPlacing, SlotsOfOtherSamplerStateAreNotUsed)
{
    makeSlots(2);
    find(formatOf(256, 256, GL_RGBA8, GL_CLAMP_TO_EDGE));
    find(formatOf(256, 256, GL_RGB8));
    EXPECT_EQ(find(formatOf(512, 512)), kNowhere);
}

TEST_F(Array2DPlacing, SlotsOfTheSameChannelsAreUsed)
{
    makeSlots(1);
    find(formatOf(256, 256, GL_RGBA8));
    EXPECT_EQ(find(formatOf(512, 512, GL_RGBA16F)), Place(0, 1));
    EXPECT_EQ(find(formatOf(256, 256, GL_SRGB8_ALPHA8)), Place(0, 2)); // of one size: scaled by nothing, and told
    EXPECT_EQ(log.messages().last(), line("Textures were resized to fit into texture slots (256x256) -> (256x256)"));
    EXPECT_EQ(slot(0).format.internalFormat, GL_RGBA8);
}

TEST_F(Array2DPlacing, SizeThatIsSearchedForIsTheAlignedOneAndSizeThatIsToldIsNot)
{
    driver.setInteger(GL_MAX_TEXTURE_SIZE, 1024);
    makeSlots(1);
    find(formatOf(512, 512));
    EXPECT_EQ(find(formatOf(1500, 1100)), Place(0, 1)); // wants 1024 x 1024
    EXPECT_EQ(log.messages(),
              QStringList(line("Textures were resized to fit into texture slots (1500x1100) -> (512x512)")));
}

TEST_F(Array2DPlacing, BestSlotAloneIsTried)
{
    makeSlots(2);
    find(formatOf(256, 256));
    find(formatOf(128, 128));
    fill(1);
    // Slot 0 would have room. No slot has tokens, so the larger one moves into the smaller one and is free.
    EXPECT_EQ(find(formatOf(512, 512)), Place(0, 0));
    EXPECT_EQ(log.messages(),
              QStringList(line("Textures were resized to fit into texture slots (256x256) -> (128x128)")));
    EXPECT_TRUE(slot(0).format == formatOf(512, 512));
}

// ---- settings ------------------------------------------------------------------------------------------------------

TEST_F(Array2DPlacing, OtherReallocationMethodsAreIgnored)
{
    makeManager();
    array2D->setSlotReallocationMethod(TextureManager::eReallocateLarger);
    EXPECT_EQ(log.texts(), QStringList());
    array2D->setSlotReallocationMethod(TextureManager::SlotReallocationMethod(2));
    array2D->setSlotReallocationMethod(TextureManager::SlotReallocationMethod(3));
    EXPECT_EQ(Books::reallocationMethod(*array2D), TextureManager::eReallocateLarger);
    EXPECT_EQ(log.messages(QtWarningMsg),
              QStringList({QStringLiteral("Unsupported slot reallocation method request 2 ignored!"),
                           QStringLiteral("Unsupported slot reallocation method request 3 ignored!")}));
    array2D->setSlotReallocationMethod(TextureManager::eReallocateSmaller);
    EXPECT_EQ(Books::reallocationMethod(*array2D), TextureManager::eReallocateSmaller);
}

TEST_F(Array2DPlacing, MoreSlotsAfterTheFirstBindAreReportedAndNotUsed)
{
    makeManager(1);
    bound(sized(64, 64));
    array2D->setMaxSlots(2);
    const quint64 token = bound(sized(64, 64, GL_R8));
    expectFresh(token);
    EXPECT_EQ(Books::allSlots(*array2D).size(), 1);
    const QStringList reported = log.messages(QtCriticalMsg);
    EXPECT_FALSE(reported.isEmpty());
    for (const QString& message : reported)
        EXPECT_EQ(message,
                  assertionLine(QStringLiteral("this->_slots.isEmpty() || this->getMaxSlots() <= this->_slots.size()"),
                                QStringLiteral("2 slots asked for, but 1 were made with the first bind")));
    EXPECT_EQ(log.messages(QtWarningMsg).size(), 1);
}

TEST_F(Array2DPlacing, FewerSlotsAfterTheFirstBindAreThoseOfTheFront)
{
    makeManager(2);
    bound(sized(64, 64));
    array2D->setMaxSlots(1);
    const quint64 token = bound(sized(64, 64, GL_R8));
    expectFresh(token);
    EXPECT_FALSE(slot(1).isUsed());
    array2D->setMaxSlots(2);
    array2D->bind(tokens({token}));
    EXPECT_EQ(place(token), Place(1, 0));
}

TEST_F(Array2DPlacing, NegativeNumberOfSlotsIsNone)
{
    makeManager(-3);
    const quint64 token = bound(sized(64, 64));
    expectFresh(token);
    EXPECT_TRUE(Books::allSlots(*array2D).isEmpty());
}

/// The first patch token may equal a slot that comes later.
TEST_F(Array2DPlacing, SlotsThatComeAfterASetKnowIt)
{
    makeManager(0);
    Texture* const patch = newTextureOf(sized(64, 64));
    array2D->tokenForTexture(patch);
    const TextureToken set = array2D->createUDIMToken();
    array2D->addUDIMPatch(set, QPoint(0, 0), patch);
    array2D->bind(QList<TextureToken>{set});
    ASSERT_EQ(record(set.token).slot, 3);
    array2D->setMaxSlots(5);
    for (const int wrap : {0, 1, 2, 3})
        bound(sized(32, 32, GL_RGBA8, wrap));
    EXPECT_TRUE(array2D->moveSlotLayers(3, 0));
    EXPECT_EQ(place(set.token), Place(0, 1));
    array2D->deleteUDIM(set);
    expectFresh(set.token);
}

TEST_F(Array2DPlacing, SlotsAreMadeOnce)
{
    makeManager(3);
    array2D->setupSlots();
    const QList<SlotData*> first = Books::allSlots(*array2D);
    EXPECT_EQ(first.size(), 3);
    EXPECT_EQ(Books::slotUnits(*array2D).size(), 3);
    EXPECT_EQ(Books::slotHandles(*array2D), QList<quint64>({0, 0, 0}));
    for (const SlotData* const made : first)
    {
        EXPECT_FALSE(made->isUsed());
        EXPECT_NE(made->texture, nullptr);
    }
    array2D->setMaxSlots(2);
    array2D->setupSlots();
    EXPECT_EQ(Books::allSlots(*array2D), first);
}

// ---- dump ----------------------------------------------------------------------------------------------------------

TEST_F(Array2DPlacing, DumpShowsEverySlotWithItsTokens)
{
    makeManager(3);
    bound(sized(64, 32));
    array2D->updateSlots();
    bound(sized(64, 32), GL_TEXTURE_CUBE_MAP);
    for (int i = 0; i < 9; ++i)
        array2D->tokenForTexture(newTextureOf(sized(8, 8)));
    const quint64 other = bound(sized(1024, 16384, GL_R32F, GL_CLAMP_TO_EDGE));
    ASSERT_EQ(other, 12u);
    bound(sized(64, 32));
    log.clear();
    array2D->dumpSlots();
    ASSERT_EQ(log.lines().size(), 1);
    EXPECT_EQ(log.lines().first().type, QtDebugMsg);
    EXPECT_EQ(log.lines().first().text,
              line("\n"
                   "  0 {(  64x  32) 0x8058 C:0x2901 0x2901 F:0x2601 0x2601 , 8: 1<64} [{0:0x1},{1:0x2},{7:0xD},]\n"
                   "  1 {(1024x16384) 0x822E C:0x812F 0x812F F:0x2601 0x2601 , 1: 0<32} [{0:0xC},]\n"
                   "  2 {UNUSED}\n"));
}

TEST_F(Array2DPlacing, DumpWithoutSlotsIsTheManagerAlone)
{
    makeManager();
    array2D->dumpSlots();
    EXPECT_EQ(log.texts(QtDebugMsg), QStringList(line("\n")));
}

} // namespace
} // namespace Harrow::Vrk::Test
