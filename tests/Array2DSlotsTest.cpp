// SPDX-License-Identifier: MIT

/// \file
/// The books that Array2DTextureManager keeps of slots, by themselves: their layers, what is similar, and scores.

#include "Array2DTestTools.h"

#include "support/LogCapture.h"

#include <limits>
#include <ostream>

namespace Harrow::Vrk::Test
{
namespace
{

using Slot = Array2DTextureManagerTestAccess::SlotData;
using Format = Array2DTextureManagerTestAccess::SlotFormat;
using Layers = QList<int>;

Format formatOf(int width, int height, int internalFormat = GL_RGBA8)
{
    Format format;
    format.width = width;
    format.height = height;
    format.internalFormat = internalFormat;
    return format;
}

struct ASlot : Slot
{
    ASlot(int used, int most, const Layers& unused = {})
    {
        format = formatOf(64, 32);
        allocatedLayers = 5;
        usedLayers = used;
        maxLayers = most;
        freeLayers = unused;
    }
};

// ---- allocate ------------------------------------------------------------------------------------------------------

TEST(Array2DSlots, NewSlotIsUnusedAndEmpty)
{
    const Slot slot;
    EXPECT_FALSE(slot.isUsed());
    EXPECT_EQ(slot.allocatedLayers, 0);
    EXPECT_EQ(slot.texture, nullptr);
    EXPECT_EQ(slot.handle, 0u);
    EXPECT_EQ(slot.residentCount, 0);
    EXPECT_EQ(slot.maxLayers, 0);
    EXPECT_EQ(slot.usedLayers, 0);
    EXPECT_TRUE(slot.freeLayers.isEmpty());
    EXPECT_EQ(slot.format.anisotropy, 1.0f);
    EXPECT_EQ(slot.format.lodBias, 0.0f);
    for (const int number : {slot.format.width, slot.format.height, slot.format.internalFormat, slot.format.wrapS,
                             slot.format.wrapT, slot.format.magFilter, slot.format.minFilter})
        EXPECT_EQ(number, 0);
}

TEST(Array2DSlots, LayersAreGivenFromTheBottom)
{
    ASlot slot(0, 64);
    EXPECT_EQ(slot.allocate(1), 0);
    EXPECT_EQ(slot.allocate(6), 1);
    EXPECT_EQ(slot.allocate(2), 7);
    EXPECT_EQ(slot.usedLayers, 9);
}

TEST(Array2DSlots, CountsBelowOneGetNoLayer)
{
    ASlot slot(3, 64, {0, 1});
    EXPECT_EQ(slot.allocate(0), -1);
    EXPECT_EQ(slot.allocate(-1), -1);
    EXPECT_EQ(slot.allocate(std::numeric_limits<int>::min()), -1);
    EXPECT_EQ(slot.usedLayers, 3);
    EXPECT_EQ(slot.freeLayers, Layers({0, 1}));
}

TEST(Array2DSlots, LastLayerIsNeverGiven)
{
    ASlot slot(0, 4);
    EXPECT_EQ(slot.allocate(4), -1);
    EXPECT_EQ(slot.usedLayers, 0);
    EXPECT_EQ(slot.allocate(3), 0);
    EXPECT_EQ(slot.allocate(1), -1);
    EXPECT_EQ(slot.usedLayers, 3);
}

TEST(Array2DSlots, SlotOfOneLayerHoldsNothing)
{
    ASlot slot(0, 1);
    EXPECT_EQ(slot.allocate(1), -1);
}

TEST(Array2DSlots, VeryLargeCountGetsNoLayer)
{
    ASlot slot(3, 64);
    EXPECT_EQ(slot.allocate(std::numeric_limits<int>::max()), -1);
    EXPECT_EQ(slot.usedLayers, 3);
}

TEST(Array2DSlots, SingleLayerIsTheFirstFreeOne)
{
    ASlot slot(20, 64, {2, 5, 9});
    EXPECT_EQ(slot.allocate(1), 2);
    EXPECT_EQ(slot.freeLayers, Layers({5, 9}));
    EXPECT_EQ(slot.allocate(1), 5);
    EXPECT_EQ(slot.allocate(1), 9);
    EXPECT_EQ(slot.allocate(1), 20);
    EXPECT_EQ(slot.usedLayers, 21);
}

TEST(Array2DSlots, FreeLayerIsGivenWhenTheSlotIsFull)
{
    ASlot slot(3, 4, {1});
    EXPECT_EQ(slot.allocate(1), 1);
    EXPECT_EQ(slot.allocate(1), -1);
}

struct FreeRun
{
    const char* what;
    Layers unused;
    int count;
    int first;
    Layers left;
};

void PrintTo(const FreeRun& run, std::ostream* stream)
{
    *stream << run.what;
}

class Array2DSlotRuns : public testing::TestWithParam<FreeRun>
{
};

/// A list that was emptied differs from one that never held anything, to a sanitizer that watches Qt compare them.
std::vector<int> numbers(const Layers& layers)
{
    return {layers.begin(), layers.end()};
}

/// Of 50 used layers; 50 says that the free ones do not serve.
TEST_P(Array2DSlotRuns, AreFoundByTheDistanceRule)
{
    const FreeRun& run = GetParam();
    ASlot slot(50, 64, run.unused);
    EXPECT_EQ(slot.allocate(run.count), run.first) << run.what;
    EXPECT_EQ(numbers(slot.freeLayers), numbers(run.left)) << run.what;
    EXPECT_EQ(slot.usedLayers, run.first == 50 ? 50 + run.count : 50) << run.what;
}

INSTANTIATE_TEST_SUITE_P(Rows, Array2DSlotRuns,
                         testing::Values(FreeRun{"two neighbours are no row of two", {1, 2}, 2, 50, {1, 2}}, //
                                         FreeRun{"two at a distance of two are", {1, 3}, 2, 1, {}},          //
                                         FreeRun{"from layer 0 as well", {0, 2}, 2, 0, {}},                  //
                                         FreeRun{"a distance of three is none", {1, 4}, 2, 50, {1, 4}},      //
                                         FreeRun{"the row starts anew", {0, 1, 3}, 2, 1, {0}},               //
                                         FreeRun{"what follows stays", {1, 3, 4, 9}, 2, 1, {4, 9}},          //
                                         FreeRun{"of three the second is skipped", {1, 3, 4}, 3, 1, {}},     //
                                         FreeRun{"of three in a row none", {1, 2, 3}, 3, 50, {1, 2, 3}},     //
                                         // 1; 2 starts anew; 3 is not 2 + 2 and starts anew; 5 is 3 + 2
                                         FreeRun{"a row after neighbours", {1, 2, 3, 5}, 2, 3, {1, 2}}, //
                                         FreeRun{"six with the second left out", {0, 2, 3, 4, 5, 6}, 6, 0, {}},
                                         FreeRun{"six in a row", {0, 1, 2, 3, 4, 5}, 6, 50, {0, 1, 2, 3, 4, 5}},
                                         FreeRun{"six among more", {0, 1, 3, 4, 5, 6, 7, 9}, 6, 1, {0, 9}},
                                         FreeRun{"too short", {1, 3, 4}, 4, 50, {1, 3, 4}}, //
                                         FreeRun{"the same one twice", {2, 2}, 2, 50, {2, 2}},
                                         FreeRun{"one of the same two", {2, 2}, 1, 2, {2}}, //
                                         FreeRun{"beyond the used ones", {70, 72}, 2, 70, {}}));

// ---- release -------------------------------------------------------------------------------------------------------

TEST(Array2DSlots, ReleasedLayersBelowTheTopWaitInOrder)
{
    ASlot slot(20, 64, {4, 9});
    slot.release(6, 2);
    EXPECT_EQ(slot.freeLayers, Layers({4, 6, 7, 9}));
    slot.release(0, 1);
    EXPECT_EQ(slot.freeLayers, Layers({0, 4, 6, 7, 9}));
    EXPECT_EQ(slot.usedLayers, 20);
}

TEST(Array2DSlots, ReleaseOfTheTopGoesDownThroughFreeLayers)
{
    ASlot slot(10, 64, {2, 6, 7, 8});
    slot.release(9, 1);
    EXPECT_EQ(slot.usedLayers, 6);
    EXPECT_EQ(slot.freeLayers, Layers({2}));
    EXPECT_TRUE(slot.isUsed());
}

TEST(Array2DSlots, ReleaseOfTheLastLayerMakesTheSlotUnused)
{
    ASlot slot(3, 64, {0, 1});
    slot.format.wrapS = GL_REPEAT;
    slot.format.wrapT = GL_CLAMP_TO_EDGE;
    slot.format.magFilter = GL_LINEAR;
    slot.format.minFilter = GL_NEAREST;
    slot.format.anisotropy = 4.0f;
    slot.format.lodBias = 0.5f;
    slot.handle = 7;
    slot.residentCount = 2;
    slot.release(2, 1);
    EXPECT_FALSE(slot.isUsed());
    EXPECT_EQ(slot.usedLayers, 0);
    EXPECT_TRUE(slot.freeLayers.isEmpty());
    EXPECT_EQ(slot.format.width, 0);
    EXPECT_EQ(slot.format.height, 0);
    EXPECT_EQ(slot.format.internalFormat, 0);
    // all else stays until it is made anew
    EXPECT_EQ(slot.format.wrapS, GL_REPEAT);
    EXPECT_EQ(slot.format.wrapT, GL_CLAMP_TO_EDGE);
    EXPECT_EQ(slot.format.magFilter, GL_LINEAR);
    EXPECT_EQ(slot.format.minFilter, GL_NEAREST);
    EXPECT_EQ(slot.format.anisotropy, 4.0f);
    EXPECT_EQ(slot.format.lodBias, 0.5f);
    EXPECT_EQ(slot.allocatedLayers, 5);
    EXPECT_EQ(slot.maxLayers, 64);
    EXPECT_EQ(slot.handle, 7u);
    EXPECT_EQ(slot.residentCount, 2);
}

TEST(Array2DSlots, LayerReleasedTwiceIsFreeTwice)
{
    ASlot slot(10, 64);
    slot.release(3, 1);
    slot.release(3, 1);
    EXPECT_EQ(slot.freeLayers, Layers({3, 3}));
    EXPECT_EQ(slot.allocate(1), 3);
    EXPECT_EQ(slot.allocate(1), 3);
}

TEST(Array2DSlots, TopReleasedTwiceStaysFreeAboveTheMark)
{
    ASlot slot(10, 64);
    slot.release(9, 1);
    slot.release(9, 1);
    EXPECT_EQ(slot.usedLayers, 9);
    EXPECT_EQ(slot.freeLayers, Layers({9}));
    // and hides what is free below it
    slot.release(8, 1);
    EXPECT_EQ(slot.usedLayers, 9);
    EXPECT_EQ(slot.freeLayers, Layers({8, 9}));
}

TEST(Array2DSlots, ReleaseIntoAnEmptySlotKeepsTheLayersFree)
{
    ASlot slot(0, 64);
    slot.release(0, 2);
    EXPECT_EQ(slot.usedLayers, 0);
    EXPECT_EQ(slot.freeLayers, Layers({0, 1}));
    EXPECT_FALSE(slot.isUsed());
}

TEST(Array2DSlots, ReleaseOfNoLayersOfAnEmptySlotMakesItUnused)
{
    ASlot slot(0, 64);
    slot.release(0, 0);
    EXPECT_FALSE(slot.isUsed());
    ASlot filled(2, 64);
    filled.release(1, 0);
    filled.release(1, -3);
    EXPECT_TRUE(filled.isUsed());
    EXPECT_EQ(filled.usedLayers, 2);
    EXPECT_TRUE(filled.freeLayers.isEmpty());
}

// ---- initialise ----------------------------------------------------------------------------------------------------

struct Budget
{
    int bytes;
    int width;
    int height;
    int arrayLayers;
    int maxLayers;
};

void PrintTo(const Budget& budget, std::ostream* stream)
{
    *stream << budget.width << " x " << budget.height << " x " << budget.arrayLayers << " of " << budget.bytes
            << " bytes";
}

class Array2DSlotBudgets : public testing::TestWithParam<Budget>
{
};

TEST_P(Array2DSlotBudgets, GiveTheNumberOfLayers)
{
    const Budget& budget = GetParam();
    ASlot slot(3, 7, {1});
    slot.initialise(formatOf(budget.width, budget.height), budget.bytes, budget.arrayLayers);
    EXPECT_EQ(slot.maxLayers, budget.maxLayers);
}

INSTANTIATE_TEST_SUITE_P(Rows, Array2DSlotBudgets,
                         testing::Values(Budget{4, 1, 1, 2048, 2048},      //
                                         Budget{4, 1, 1, 64, 64},          //
                                         Budget{4, 1, 1, 63, 64},          // never fewer than 64
                                         Budget{4, 1, 1, 0, 64},           //
                                         Budget{4, 1, 1, -5, 64},          //
                                         Budget{4, 1024, 1024, 2048, 512}, // but for the 2 GiB
                                         Budget{4, 1024, 1024, 512, 512},  //
                                         Budget{4, 1024, 1024, 511, 511},  //
                                         Budget{3, 8192, 8192, 2048, 10},  // 10 2/3
                                         Budget{4, 8192, 8192, 64, 8},     //
                                         Budget{4, 16384, 16384, 64, 2},   //
                                         Budget{8, 16384, 16384, 64, 1},   // exactly 2 GiB
                                         Budget{12, 16384, 16384, 64, 1},  // more than 2 GiB
                                         Budget{16, 32768, 32768, 64, 1}   // 2^34
                                         ));

TEST(Array2DSlots, InitialisedSlotHasTheFormatAndNoLayers)
{
    ASlot slot(3, 7, {1, 2});
    slot.handle = 9;
    slot.residentCount = 1;
    Format wanted = formatOf(128, 256, GL_RG8);
    wanted.wrapS = GL_REPEAT;
    wanted.lodBias = 2.0f;
    slot.initialise(wanted, 2, 64);
    EXPECT_TRUE(slot.format == wanted);
    EXPECT_EQ(slot.usedLayers, 0);
    EXPECT_EQ(slot.allocatedLayers, 0);
    EXPECT_EQ(slot.handle, 9u);
    EXPECT_EQ(slot.residentCount, 1);
}

TEST(Array2DSlots, InitialisationLeavesFreeLayersAlone)
{
    ASlot slot(3, 7, {1, 2});
    slot.initialise(formatOf(16384, 16384), 8, 64);
    EXPECT_EQ(slot.freeLayers, Layers({1, 2}));
    // so that a slot of one layer, which holds nothing, gives them
    EXPECT_EQ(slot.allocate(1), 1);
}

// ---- equality and similarity ---------------------------------------------------------------------------------------

struct Change
{
    const char* field;
    void (*apply)(Format&);
    bool isSimilar;
};

constexpr Change kChanges[] = {
    {"width", [](Format& format) { format.width = 1; }, true},
    {"height", [](Format& format) { format.height = 1; }, true},
    {"internalFormat, other channels", [](Format& format) { format.internalFormat = GL_RGB8; }, false},
    {"internalFormat, other size", [](Format& format) { format.internalFormat = GL_RGBA16F; }, true},
    {"internalFormat, other encoding", [](Format& format) { format.internalFormat = GL_SRGB8_ALPHA8; }, true},
    {"internalFormat, integers", [](Format& format) { format.internalFormat = GL_RGBA32UI; }, false},
    {"wrapS", [](Format& format) { format.wrapS = 1; }, false},
    {"wrapT", [](Format& format) { format.wrapT = 1; }, false},
    {"magFilter", [](Format& format) { format.magFilter = 1; }, false},
    {"minFilter", [](Format& format) { format.minFilter = 1; }, false},
    {"anisotropy", [](Format& format) { format.anisotropy = 2.0f; }, false},
    {"lodBias", [](Format& format) { format.lodBias = 0.25f; }, false},
};

TEST(Array2DSlots, FormatsAreEqualInAllNineFields)
{
    for (const Change& change : kChanges)
    {
        Format changed = formatOf(64, 32);
        EXPECT_TRUE(changed == formatOf(64, 32));
        change.apply(changed);
        EXPECT_FALSE(changed == formatOf(64, 32)) << change.field;
    }
}

TEST(Array2DSlots, SimilarityIsAllButSizeAndChannels)
{
    const LogCapture log;
    for (const Change& change : kChanges)
    {
        const ASlot slot(1, 64);
        Format changed = slot.format;
        change.apply(changed);
        EXPECT_EQ(slot.isSimilar(changed), change.isSimilar) << change.field;
    }
    EXPECT_EQ(log.texts(), QStringList());
}

TEST(Array2DSlots, UnknownFormatIsSimilarToItself)
{
    const LogCapture log;
    ASlot slot(1, 64);
    slot.format.internalFormat = 0x1234;
    EXPECT_TRUE(slot.isSimilar(formatOf(8, 8, 0x1234)));
    EXPECT_EQ(log.texts(), QStringList());
}

TEST(Array2DSlots, TwoUnknownFormatsAreSimilar)
{
    const LogCapture log;
    ASlot slot(1, 64);
    slot.format.internalFormat = 0x1234;
    EXPECT_TRUE(slot.isSimilar(formatOf(8, 8, 0x1235)));
    EXPECT_EQ(log.messages(QtCriticalMsg).size(), 2);
    EXPECT_TRUE(log.messages().contains(QStringLiteral("formatFromInternalFormat() does not implement yet : 0x1234")));
    EXPECT_TRUE(log.messages().contains(QStringLiteral("formatFromInternalFormat() does not implement yet : 0x1235")));
}

// ---- scores --------------------------------------------------------------------------------------------------------

struct Score
{
    int method;
    int slotWidth;
    int slotHeight;
    int width;
    int height;
    quint32 score;
};

void PrintTo(const Score& score, std::ostream* stream)
{
    *stream << "method " << score.method << " with " << score.slotWidth << " x " << score.slotHeight << " for "
            << score.width << " x " << score.height;
}

class Array2DSlotScores : public testing::TestWithParam<Score>
{
};

TEST_P(Array2DSlotScores, AreUnsignedNumbers)
{
    const Score& row = GetParam();
    EXPECT_EQ(slotReallocationScore(TextureManager::SlotReallocationMethod(row.method), row.slotWidth, row.slotHeight,
                                    row.width, row.height),
              row.score);
}

constexpr quint32 kInvalid = 4294967295u;

INSTANTIATE_TEST_SUITE_P(Smaller, Array2DSlotScores,
                         testing::Values(Score{0, 512, 512, 512, 512, 0},           //
                                         Score{0, 256, 256, 512, 512, 4294966784u}, // -512
                                         Score{0, 128, 128, 512, 512, 4294966528u}, // -768: smaller, so better
                                         Score{0, 1, 1, 512, 512, 4294966274u},     // -1022
                                         Score{0, 128, 512, 512, 512, 4294966912u}, // -384
                                         Score{0, 512, 128, 512, 512, 4294966912u}, //
                                         Score{0, 200, 200, 512, 512, kInvalid},    // 512 is no multiple of 200
                                         Score{0, 256, 200, 512, 512, kInvalid},    //
                                         Score{0, 1024, 1024, 512, 512, kInvalid},  //
                                         Score{0, 256, 1024, 512, 512, kInvalid},   //
                                         Score{0, 1024, 256, 512, 512, kInvalid},   //
                                         Score{0, 1, 4, 2, 4, kInvalid},            // -1 is no valid number
                                         Score{2, 256, 256, 512, 512, 4294966784u}, // any other method is this one
                                         Score{2, 1024, 1024, 512, 512, kInvalid}));

INSTANTIATE_TEST_SUITE_P(Larger, Array2DSlotScores,
                         testing::Values(Score{1, 512, 512, 512, 512, 0},         //
                                         Score{1, 1024, 1024, 512, 512, 1024},    //
                                         Score{1, 2048, 512, 512, 512, 1536},     //
                                         Score{1, 512, 1024, 512, 512, 512},      //
                                         Score{1, 768, 1024, 512, 512, kInvalid}, // 768 is no multiple of 512
                                         Score{1, 1024, 768, 512, 512, kInvalid}, //
                                         Score{1, 256, 256, 512, 512, kInvalid},  //
                                         Score{1, 1024, 256, 512, 512, kInvalid}, //
                                         Score{1, 256, 1024, 512, 512, kInvalid}, //
                                         Score{1, 32768, 32768, 1, 1, 65534}));

INSTANTIATE_TEST_SUITE_P(NoSizes, Array2DSlotScores,
                         testing::Values(Score{0, 0, 0, 512, 512, kInvalid}, Score{0, 256, 0, 512, 512, kInvalid},
                                         Score{1, 512, 512, 0, 512, kInvalid}, Score{1, 512, 512, 512, 0, kInvalid},
                                         Score{0, 512, 512, 0, 0, kInvalid}, Score{1, 0, 0, 512, 512, kInvalid}));

} // namespace
} // namespace Harrow::Vrk::Test
