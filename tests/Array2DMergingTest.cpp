// SPDX-License-Identifier: MIT

/// \file
/// How Array2DTextureManager frees a slot: sorting, filtering, searching, and moving of layers.

#include "Array2DPlacingTestTools.h"

namespace Harrow::Vrk::Test
{
namespace
{

// ---- merging -------------------------------------------------------------------------------------------------------

TEST_F(Array2DPlacing, LayersOfALargerSlotMoveIntoTheSmallest)
{
    makeManager(2);
    const quint64 small = bound(sized(256, 256));
    const quint64 large = bound(sized(512, 512));
    forgetPending();
    const quint64 other = bound(sized(64, 64, GL_R8));
    EXPECT_EQ(place(small), Place(0, 0));
    EXPECT_EQ(place(large), Place(0, 1));
    EXPECT_EQ(place(other), Place(1, 0));
    EXPECT_TRUE(slot(0).format == formatOf(256, 256));
    EXPECT_TRUE(slot(1).format == formatOf(64, 64, GL_R8));
    EXPECT_EQ(slot(0).usedLayers, 2);
    EXPECT_EQ(slot(1).usedLayers, 1);
    EXPECT_EQ(slot(1).allocatedLayers, 0);
    EXPECT_EQ(pending(), tokens({other, large})); // issued, then moved
    EXPECT_TRUE(isDirty());
    EXPECT_EQ(log.messages(),
              QStringList(line("Textures were resized to fit into texture slots (512x512) -> (256x256)")));
}

TEST_F(Array2DPlacing, LayersOfTheSmallestSlotMoveIntoALarger)
{
    makeManager(2);
    array2D->setSlotReallocationMethod(TextureManager::eReallocateLarger);
    const quint64 small = bound(sized(256, 256));
    const quint64 large = bound(sized(512, 512));
    forgetPending();
    const quint64 other = bound(sized(64, 64, GL_R8));
    EXPECT_EQ(place(small), Place(1, 1));
    EXPECT_EQ(place(large), Place(1, 0));
    EXPECT_EQ(place(other), Place(0, 0));
    EXPECT_EQ(pending(), tokens({other, small}));
    EXPECT_EQ(log.messages(),
              QStringList(line("Textures were resized to fit into texture slots (256x256) -> (512x512)")));
}

TEST_F(Array2DPlacing, SmallerCandidatesComeFirst)
{
    makeManager(3);
    const quint64 largest = bound(sized(1024, 1024));
    const quint64 smallest = bound(sized(256, 256));
    const quint64 middle = bound(sized(512, 512));
    const quint64 other = bound(sized(64, 64, GL_R8, GL_CLAMP_TO_EDGE));
    EXPECT_EQ(place(largest), Place(0, 0));
    EXPECT_EQ(place(smallest), Place(1, 0));
    EXPECT_EQ(place(middle), Place(1, 1));
    EXPECT_EQ(place(other), Place(2, 0));
}

TEST_F(Array2DPlacing, FullTargetIsQuietAndTheNextCandidateFollows)
{
    makeManager(3);
    array2D->setSlotReallocationMethod(TextureManager::eReallocateLarger);
    const quint64 largest = bound(sized(1024, 1024));
    const quint64 smallest = bound(sized(256, 256));
    const quint64 middle = bound(sized(512, 512));
    fill(2);
    const quint64 other = bound(sized(64, 64, GL_R8));
    EXPECT_EQ(place(smallest), Place(0, 1));
    EXPECT_EQ(place(largest), Place(0, 0));
    EXPECT_EQ(place(middle), Place(2, 0));
    EXPECT_EQ(place(other), Place(1, 0));
    EXPECT_EQ(log.messages(),
              QStringList(line("Textures were resized to fit into texture slots (256x256) -> (1024x1024)")));
}

TEST_F(Array2DPlacing, SecondSmallestSlotIsTriedWhenTheSmallestHasNoPartner)
{
    makeManager(3);
    const quint64 alone = bound(sized(32, 32, GL_R8));
    const quint64 large = bound(sized(512, 512));
    const quint64 middle = bound(sized(256, 256));
    const quint64 other = bound(sized(64, 64, GL_RG8));
    EXPECT_EQ(place(alone), Place(0, 0));
    EXPECT_EQ(place(middle), Place(2, 0));
    EXPECT_EQ(place(large), Place(2, 1));
    EXPECT_EQ(place(other), Place(1, 0));
}

TEST_F(Array2DPlacing, SlotsWithoutPartnersAreLeftAlone)
{
    makeManager(3);
    const quint64 a = bound(sized(256, 256, GL_R8));
    const quint64 b = bound(sized(256, 256, GL_RG8));
    const quint64 c = bound(sized(256, 256, GL_RGB8));
    const quint64 other = bound(sized(64, 64));
    EXPECT_EQ(place(a), Place(0, 0));
    EXPECT_EQ(place(b), Place(1, 0));
    EXPECT_EQ(place(c), Place(2, 0));
    expectFresh(other);
    EXPECT_EQ(log.messages(),
              QStringList(line("Failed to find slot or layer (  64x64  ) 0x8058 C:0x2901 0x2901 F:0x2601 0x2601  1.0  "
                               "0.0\n")));
}

TEST_F(Array2DPlacing, SlotThatWasFreedForNothingKeepsTheNewFormat)
{
    makeManager(2);
    const quint64 small = bound(sized(256, 256));
    const quint64 large = bound(sized(512, 512));
    const quint64 other = bound(sized(16384, 16384, GL_RG32F));
    EXPECT_EQ(place(small), Place(0, 0));
    EXPECT_EQ(place(large), Place(0, 1));
    expectFresh(other);
    EXPECT_TRUE(slot(1).format == formatOf(16384, 16384, GL_RG32F));
    EXPECT_EQ(slot(1).usedLayers, 0);
    EXPECT_EQ(slot(1).maxLayers, 1);
    EXPECT_EQ(
        log.messages(),
        QStringList({line("Textures were resized to fit into texture slots (512x512) -> (256x256)"),
                     line("Failed to find slot or layer (16384x16384) 0x8230 C:0x2901 0x2901 F:0x2601 0x2601  1.0 "
                          " 0.0\n")}));
}

TEST_F(Array2DPlacing, WarningOfAMergeShowsTheSizeThatTheSlotHad)
{
    makeManager(2);
    bound(sized(256, 256));
    Texture* const large = newTextureOf(sized(512, 300));
    bound(large);
    // The last token of the slot moves, so that it is unused before it is told.
    bound(sized(64, 64, GL_R8));
    EXPECT_EQ(log.messages(),
              QStringList(line("Textures were resized to fit into texture slots (512x300) -> (256x256)")));
}

TEST_F(Array2DPlacing, TokenInTheMergedSlotHasItsHandle)
{
    makeManager(2);
    bound(sized(256, 256));
    bound(sized(512, 512));
    slot(1).handle = 0x700000006u;
    const quint64 other = bound(sized(64, 64, GL_R8));
    EXPECT_EQ(record(other).handle[0], 6u);
    EXPECT_EQ(record(other).handle[1], 7u);
}

// ---- moving layers -------------------------------------------------------------------------------------------------

TEST_F(Array2DPlacing, UnusedSlotHasNothingToMove)
{
    makeSlots(2);
    find(formatOf(64, 64));
    Books::setSlotMapDirty(*array2D, false);
    EXPECT_FALSE(array2D->moveSlotLayers(1, 0));
    EXPECT_FALSE(isDirty());
    EXPECT_EQ(log.texts(), QStringList());
}

TEST_F(Array2DPlacing, SlotWithoutTokensMoves)
{
    makeSlots(2);
    find(formatOf(64, 64));
    find(formatOf(32, 32));
    Books::setSlotMapDirty(*array2D, false);
    EXPECT_TRUE(array2D->moveSlotLayers(1, 0));
    EXPECT_TRUE(isDirty());
    EXPECT_TRUE(slot(1).isUsed());
    EXPECT_EQ(slot(0).usedLayers, 1);
}

TEST_F(Array2DPlacing, TokensMoveInTheirOrderWithAllTheirLayers)
{
    makeManager(2);
    const quint64 first = bound(sized(64, 64));
    const quint64 cube = bound(sized(64, 64), GL_TEXTURE_CUBE_MAP);
    const quint64 last = bound(sized(64, 64));
    const quint64 there = bound(sized(32, 32));
    slot(1).handle = 0x300000004u;
    forgetPending();
    EXPECT_TRUE(array2D->moveSlotLayers(0, 1));
    EXPECT_EQ(place(there), Place(1, 0));
    EXPECT_EQ(place(first), Place(1, 1));
    EXPECT_EQ(place(cube), Place(1, 2));
    EXPECT_EQ(place(last), Place(1, 8));
    EXPECT_EQ(slot(1).usedLayers, 9);
    EXPECT_FALSE(slot(0).isUsed());
    EXPECT_EQ(slot(0).usedLayers, 0);
    EXPECT_TRUE(slot(0).freeLayers.isEmpty());
    EXPECT_EQ(pending(), tokens({first, cube, last}));
    EXPECT_TRUE(isDirty());
}

TEST_F(Array2DPlacing, MovedRecordHasTheHandleOfTheTarget)
{
    makeManager(2);
    const quint64 token = bound(sized(64, 64));
    bound(sized(32, 32));
    slot(1).handle = 0x300000004u;
    EXPECT_TRUE(array2D->moveSlotLayers(0, 1));
    EXPECT_EQ(record(token).handle[0], 4u);
    EXPECT_EQ(record(token).handle[1], 3u);
}

TEST_F(Array2DPlacing, WhatHasMovedBeforeAFailureStaysMoved)
{
    makeManager(2);
    const quint64 first = bound(sized(64, 64));
    const quint64 second = bound(sized(64, 64));
    const quint64 third = bound(sized(64, 64));
    bound(sized(32, 32));
    slot(1).maxLayers = 3; // room for one more
    forgetPending();
    EXPECT_FALSE(array2D->moveSlotLayers(0, 1));
    EXPECT_EQ(place(first), Place(1, 1));
    EXPECT_EQ(place(second), Place(0, 1));
    EXPECT_EQ(place(third), Place(0, 2));
    EXPECT_EQ(slot(0).freeLayers, QList<int>({0}));
    EXPECT_EQ(slot(0).usedLayers, 3);
    EXPECT_EQ(pending(), tokens({first}));
    EXPECT_FALSE(isDirty());
    EXPECT_EQ(log.texts(), QStringList());
}

TEST_F(Array2DPlacing, SetWhoseFirstPatchTokenEqualsASlotMovesLikeATexture)
{
    makeManager(8);
    Texture* const patch = newTextureOf(sized(64, 64));
    const quint64 texture = array2D->tokenForTexture(patch).token; // 1
    const TextureToken set = array2D->createUDIMToken();           // 2
    array2D->addUDIMPatch(set, QPoint(0, 0), patch);
    array2D->bind(QList<TextureToken>{set});
    ASSERT_EQ(record(set.token).slot, 3); // the patch token
    EXPECT_EQ(record(set.token).udimWidth, 1);
    EXPECT_EQ(place(texture), Place(0, 0));
    EXPECT_EQ(place(3), Place(0, 0));
    for (const int wrap : {1, 2, 3}) // slots 1, 2, 3
        bound(sized(32, 32, GL_RGBA8, wrap));
    forgetPending();
    ASSERT_EQ(slot(3).usedLayers, 1);
    EXPECT_TRUE(array2D->moveSlotLayers(3, 1));
    EXPECT_EQ(place(set.token), Place(1, 1));
    EXPECT_EQ(record(set.token).udimWidth, 0);
    EXPECT_EQ(record(set.token).udimMaxPatch, 0);
    EXPECT_EQ(pending(), tokens({set.token, 6}));
}

TEST_F(Array2DPlacing, CopiesOfPatchRecordsMoveToLayersOfTheirOwn)
{
    makeManager(2);
    Texture* const patch = newTextureOf(sized(64, 64));
    const quint64 texture = array2D->tokenForTexture(patch).token;
    const TextureToken set = array2D->createUDIMToken();
    array2D->addUDIMPatch(set, QPoint(0, 0), patch);
    array2D->bind(QList<TextureToken>{set});
    ASSERT_EQ(place(3), place(texture));
    bound(sized(32, 32));
    bound(sized(64, 64));
    EXPECT_TRUE(array2D->moveSlotLayers(0, 1));
    EXPECT_EQ(place(texture), Place(1, 1));
    EXPECT_EQ(place(3), Place(1, 2));
    // Layer 0 was given back twice.
    EXPECT_EQ(slot(0).freeLayers, QList<int>({0}));
    EXPECT_FALSE(slot(0).isUsed());
}

TEST_F(Array2DPlacing, SlotsThatThereAreNotDoNotMove)
{
    makeSlots(2);
    find(formatOf(64, 64));
    for (const auto& [from, to] : {Place(0, 2), Place(2, 0), Place(-1, 0), Place(0, -1)})
    {
        log.clear();
        EXPECT_FALSE(array2D->moveSlotLayers(from, to));
        EXPECT_EQ(log.messages(), QStringList(assertionLine(
                                      QStringLiteral("hasSlot(from) && hasSlot(to)"),
                                      QString::asprintf("Slot %d or %d is not among the 2 that there are", from, to))));
    }
}

// ---- sorting, filtering, searching ---------------------------------------------------------------------------------

class Array2DSearching : public Array2DPlacing
{
protected:
    void SetUp() override
    {
        Array2DPlacing::SetUp();
        makeSlots(6);
        find(formatOf(64, 64));                          // 0
        find(formatOf(256, 64));                         // 1
        find(formatOf(128, 128));                        // 2, as large as 1
        find(formatOf(512, 512, GL_R8));                 // 3
        find(formatOf(128, 64, GL_RGBA16F, GL_REPEAT));  // 4, similar to the first three
        slot(5).format.wrapS = slot(5).format.wrapT = 0; // unused
        log.clear();
    }

    using Indices = QList<int>;
    std::pair<bool, int> searched(const SlotFormat& format, SlotData* exclude = nullptr)
    {
        SlotData* found = nullptr;
        int index = -7;
        const bool result = array2D->searchForSimilarSlot(format, found, index, exclude);
        EXPECT_EQ(found, result ? &slot(index) : nullptr);
        return {result, index};
    }
};

TEST_F(Array2DSearching, LargestSlotsComeFirstAndEqualOnesKeepTheirOrder)
{
    EXPECT_EQ(array2D->sortSlotsByLargest({0, 1, 2, 3, 4, 5}), Indices({3, 1, 2, 4, 0, 5}));
    EXPECT_EQ(array2D->sortSlotsByLargest({5, 4, 3, 2, 1, 0}), Indices({3, 2, 1, 4, 0, 5}));
    EXPECT_EQ(array2D->sortSlotsByLargest({0, 0, 5, 2}), Indices({2, 0, 0, 5}));
}

TEST_F(Array2DSearching, ShortListsAreSorted)
{
    EXPECT_EQ(array2D->sortSlotsByLargest({}), Indices());
    EXPECT_EQ(array2D->sortSlotsByLargest({4}), Indices({4}));
}

TEST_F(Array2DSearching, LargestSlotsHaveMoreThanTwoToTheThirty)
{
    slot(0).format.width = slot(0).format.height = 32768;
    EXPECT_EQ(array2D->sortSlotsByLargest({1, 0}), Indices({0, 1}));
}

TEST_F(Array2DSearching, SimilarSlotsKeepTheirOrder)
{
    EXPECT_EQ(array2D->filterSlotsBySimilar(formatOf(9, 9), {4, 3, 2, 1, 0}), Indices({4, 2, 1, 0}));
    EXPECT_EQ(array2D->filterSlotsBySimilar(formatOf(9, 9, GL_R32F), {0, 1, 2, 3, 4}), Indices({3}));
    EXPECT_EQ(array2D->filterSlotsBySimilar(formatOf(9, 9, GL_RGBA8, GL_CLAMP_TO_EDGE), {0, 1, 2, 3, 4}), Indices());
}

TEST_F(Array2DSearching, ListedSlotsThatThereAreNotAreReported)
{
    const QString message = assertionLine(QStringLiteral("haveSlots(list)"),
                                          QStringLiteral("Not all of the listed slots are among the 6 that there are"));
    EXPECT_EQ(array2D->filterSlotsBySimilar(formatOf(9, 9), {0, 6}), Indices());
    EXPECT_EQ(array2D->sortSlotsByLargest({0, -1, 3}), Indices({0, -1, 3}));
    EXPECT_EQ(log.messages(), QStringList({message, message}));
}

TEST_F(Array2DSearching, SimilarSlotIsTheBestByScore)
{
    EXPECT_EQ(searched(formatOf(256, 256)), std::pair(true, 0)); // the smallest
    EXPECT_EQ(searched(formatOf(128, 128)), std::pair(true, 2)); // an exact one
    EXPECT_EQ(searched(formatOf(100, 100)), std::pair(false, -7));
    EXPECT_EQ(searched(formatOf(256, 256, GL_RG8)), std::pair(false, -7));
    array2D->setSlotReallocationMethod(TextureManager::eReallocateLarger);
    EXPECT_EQ(searched(formatOf(32, 32)), std::pair(true, 0));
    EXPECT_EQ(searched(formatOf(128, 32)), std::pair(true, 4));
    EXPECT_EQ(searched(formatOf(512, 512)), std::pair(false, -7));
}

TEST_F(Array2DSearching, ExcludedSlotIsPassedOver)
{
    EXPECT_EQ(searched(formatOf(256, 256), &slot(0)), std::pair(true, 4));
    EXPECT_EQ(searched(formatOf(64, 64), &slot(0)), std::pair(false, -7));
}

TEST_F(Array2DSearching, SearchedSizeIsNotAligned)
{
    driver.setInteger(GL_MAX_TEXTURE_SIZE, 128);
    makeSlots(1);
    find(formatOf(128, 128));
    EXPECT_EQ(searched(formatOf(1000, 1000)), std::pair(false, -7)); // 1000 is no multiple of 128
    EXPECT_EQ(searched(formatOf(1024, 1024)), std::pair(true, 0));
    EXPECT_EQ(searched(formatOf(0, 0)), std::pair(false, -7));
}

TEST_F(Array2DSearching, LargestSlotIsTheLaterOneOfATie)
{
    SlotData* found = nullptr;
    int index = -7;
    EXPECT_TRUE(array2D->seachForSlotWithLargestXY(found, index));
    EXPECT_EQ(index, 3);
    EXPECT_EQ(found, &slot(3));
    slot(3).format.internalFormat = 0;
    EXPECT_TRUE(array2D->seachForSlotWithLargestXY(found, index));
    EXPECT_EQ(index, 2);
    EXPECT_EQ(found, &slot(2));
}

TEST_F(Array2DSearching, NoUsedSlotIsTheLargest)
{
    makeSlots(3);
    SlotData* found = nullptr;
    int index = -7;
    EXPECT_FALSE(array2D->seachForSlotWithLargestXY(found, index));
    EXPECT_EQ(found, nullptr);
    EXPECT_EQ(index, -7);
}

TEST_F(Array2DSearching, WithoutSlotsThereIsNothingToFind)
{
    makeManager();
    SlotData* found = nullptr;
    int index = -7;
    EXPECT_FALSE(array2D->seachForSlotWithLargestXY(found, index));
    EXPECT_FALSE(array2D->searchForSimilarSlot(formatOf(64, 64), found, index, nullptr));
    EXPECT_FALSE(array2D->moveSlotLayers(0, 0));
    EXPECT_EQ(find(formatOf(64, 64)), kNowhere);
}

} // namespace
} // namespace Harrow::Vrk::Test
