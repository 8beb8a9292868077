// SPDX-License-Identifier: MIT
//
// Array2DTextureManager on the fake driver: sets of UDIM patches in the table of tokens.
#include "Array2DBindingTestTools.h"

namespace Harrow::Vrk::Test::Array2DDraws
{

namespace
{

/// Patches at (0, 0), (2, 0) and (0, 1): textures with the tokens 1, 2, 3; the set is token 4.
class Array2DUDIMTest : public Array2DBindingTest
{
protected:
    void SetUp() override
    {
        Array2DBindingTest::SetUp();
        makeManager();
        for (const QPoint& place : {QPoint(0, 0), QPoint(2, 0), QPoint(0, 1)})
        {
            patches.append(newTextureOf(sized(16, 16)));
            patchTokens.append(array2D->tokenForTexture(patches.last()));
            places.append(place);
        }
        set = array2D->createUDIMToken();
        ASSERT_EQ(set, TextureToken(4));
    }

    void addPatches()
    {
        for (int i = 0; i < 3; ++i)
            array2D->addUDIMPatch(set, places[i], patches[i]);
    }

    QList<Texture*> patches;
    QList<TextureToken> patchTokens;
    QList<QPoint> places;
    TextureToken set;
};

} // namespace

TEST_F(Array2DUDIMTest, ASetIsPlacedAsABlockOfTokens)
{
    addPatches();
    announce({set});
    EXPECT_EQ(record(set), (Record{5, 0, 0, 0, 3, 3, 0, 0}));
    EXPECT_EQ(Tables::maxToken(*array2D), TextureToken(9));
    ASSERT_EQ(Books::records(*array2D).size(), 9);
    EXPECT_EQ(Books::layerCounts(*array2D).size(), 9);
    for (const TextureToken& patch : patchTokens)
        EXPECT_EQ(record(patch)[0], 0) << "the patches are placed too";
    EXPECT_EQ(record(TextureToken(5)), record(patchTokens[0]));
    EXPECT_EQ(record(TextureToken(6)), kFreshRecord);
    EXPECT_EQ(record(TextureToken(7)), record(patchTokens[1]));
    EXPECT_EQ(record(TextureToken(8)), record(patchTokens[2]));
    EXPECT_EQ(Books::patchSources(*array2D), (QHash<TextureToken, TextureToken>{{TextureToken(5), patchTokens[0]},
                                                                                {TextureToken(7), patchTokens[1]},
                                                                                {TextureToken(8), patchTokens[2]}}));
    EXPECT_TRUE(Tables::freeTokens(*array2D).isEmpty());
    EXPECT_TRUE(Books::slotMapDirty(*array2D));
}

TEST_F(Array2DUDIMTest, TheTokensOfABlockAreIssuedInOrder)
{
    class Recorder : public OpenArray2DManager
    {
    public:
        void textureTokenIssued(const TextureToken& token) override
        {
            issued.append(token);
            OpenArray2DManager::textureTokenIssued(token);
        }
        QList<TextureToken> issued;
    };
    Recorder recorder;
    Texture* const patch = newTextureOf(sized(16, 16));
    recorder.tokenForTexture(patch);
    const TextureToken udim = recorder.createUDIMToken();
    recorder.addUDIMPatch(udim, {1, 1}, patch);
    recorder.issued.clear();
    recorder.bind(QList<TextureToken>({udim}));
    EXPECT_EQ(recorder.issued, tokens({3, 4, 5, 6}));
}

TEST_F(Array2DUDIMTest, ABlockIsTakenFromAboveAndNotFromTheFreeTokens)
{
    const TextureToken gone = tokenOf(2, 2);
    const TextureToken last = tokenOf(2, 2);
    array2D->deleteTexture(gone);
    ASSERT_EQ(Tables::freeTokens(*array2D), QList<TextureToken>({gone}));
    addPatches();
    announce({set});
    EXPECT_EQ(record(set)[0], qint32(last.token) + 1);
    EXPECT_EQ(Tables::freeTokens(*array2D), QList<TextureToken>({gone}));
}

TEST_F(Array2DUDIMTest, APlacedSetIsNotPlacedAgain)
{
    addPatches();
    announce({set});
    const CallLog calls;
    announce({set, set});
    EXPECT_EQ(Tables::maxToken(*array2D), TextureToken(9));
    EXPECT_EQ(calls.list(), QStringList());
}

TEST_F(Array2DUDIMTest, TexturesWithoutATokenAreNoPatches)
{
    addPatches();
    array2D->addUDIMPatch(set, {1, 0}, newTextureOf(sized(16, 16)));
    array2D->addUDIMPatch(set, {1, 1}, nullptr);
    announce({set});
    EXPECT_EQ(record(set), (Record{5, 0, 0, 0, 3, 4, 0, 0})) << "they count for the size of the grid";
    EXPECT_EQ(record(TextureToken(6)), kFreshRecord);
    EXPECT_EQ(record(TextureToken(9)), kFreshRecord);
    EXPECT_EQ(Books::patchSources(*array2D).size(), 3);
    EXPECT_EQ(Tables::maxToken(*array2D), TextureToken(10)) << "and no token was issued for them";
}

TEST_F(Array2DUDIMTest, PatchesThatComeAfterTheFirstBindAreNotSeen)
{
    addPatches();
    announce({set});
    Texture* const late = newTextureOf(sized(16, 16));
    array2D->tokenForTexture(late);
    array2D->addUDIMPatch(set, {1, 0}, late);
    announce({set});
    EXPECT_EQ(record(TextureToken(6)), kFreshRecord);
    EXPECT_EQ(record(set), (Record{5, 0, 0, 0, 3, 3, 0, 0}));
}

TEST_F(Array2DUDIMTest, APatchTokenBeyondTheTableIsReported)
{
    addPatches();
    Texture* const strange = newTextureOf(sized(16, 16));
    array2D->setTextureOfToken(TextureToken(5000), strange);
    array2D->addUDIMPatch(set, {1, 0}, strange);
    const LogCapture log;
    announce({set});
    EXPECT_EQ(log.messages(),
              QStringList({assertionLine(
                  "INVALID_TOKEN == patchToken || patchToken.token < quint64(_textureTokenToSlotLayerData.size())",
                  "Token 5000 is not in array 9.")}));
    EXPECT_EQ(record(TextureToken(6)), kFreshRecord);
    EXPECT_EQ(Books::patchSources(*array2D).size(), 3);
    array2D->deleteTexture(strange);
}

TEST_F(Array2DUDIMTest, APatchThatIsPlacedAlreadyKeepsItsPlace)
{
    addPatches();
    announce({patchTokens[1]});
    const Record place = record(patchTokens[1]);
    announce({set});
    EXPECT_EQ(record(patchTokens[1]), place);
    EXPECT_EQ(record(TextureToken(7)), place);
    EXPECT_EQ(slot(0).usedLayers, 3) << "patch tokens take no layers of their own";
}

TEST_F(Array2DUDIMTest, ASetWithoutPatchesIsPlacedByTheBindThatFindsSome)
{
    announce({set});
    EXPECT_EQ(record(set), kFreshRecord);
    EXPECT_EQ(Tables::maxToken(*array2D), TextureToken(5));
    addPatches();
    announce({set});
    EXPECT_EQ(record(set), (Record{5, 0, 0, 0, 3, 3, 0, 0}));
}

TEST_F(Array2DUDIMTest, PatchesLeftOfTheGridAreReportedAndNothingIsPlaced)
{
    addPatches();
    for (const QPoint& outside : {QPoint(-1, 0), QPoint(0, -1), QPoint(-1, -1)})
    {
        array2D->addUDIMPatch(set, outside, patches[0]);
        const LogCapture log;
        announce({set});
        EXPECT_EQ(log.messages(), QStringList({assertionLine("isInside && last < kMaxTokens",
                                                             "UDIM token 4 has patches that no table has room for")}));
        EXPECT_EQ(record(set), kFreshRecord);
        EXPECT_EQ(Tables::maxToken(*array2D), TextureToken(5));
        array2D->removeUDIMPatch(set, patches[0]);
        array2D->removeUDIMPatch(set, patches[0]);
        array2D->addUDIMPatch(set, {0, 0}, patches[0]);
    }
}

TEST_F(Array2DUDIMTest, ASetBeyondAnyTableIsReportedAndNothingIsPlaced)
{
    addPatches();
    for (const QPoint& outside : {QPoint(0x7FFFFFFF, 0x7FFFFFFF), QPoint(0, 0x7FFFFFFF), QPoint(0x7FFFFFFF, 0)})
    {
        array2D->addUDIMPatch(set, outside, nullptr);
        const LogCapture log;
        announce({set});
        EXPECT_EQ(log.messages(QtCriticalMsg).size(), 1);
        EXPECT_EQ(record(set), kFreshRecord);
        EXPECT_EQ(Tables::maxToken(*array2D), TextureToken(5));
        array2D->removeUDIMPatch(set, nullptr);
    }
}

TEST_F(Array2DUDIMTest, ASetBehindTheLastTokenOfAnyTableIsReportedAndNothingIsPlaced)
{
    addPatches();
    array2D->reserveTokenBlock(1 << 24);
    const TextureToken above = Tables::maxToken(*array2D);
    const LogCapture log;
    announce({set});
    EXPECT_EQ(log.messages(QtCriticalMsg).size(), 1);
    EXPECT_EQ(record(set), kFreshRecord);
    EXPECT_EQ(Tables::maxToken(*array2D), above);
    EXPECT_TRUE(Books::patchSources(*array2D).isEmpty());
}

TEST_F(Array2DUDIMTest, TheEndOfASetEndsItsBlockAndLeavesThePatches)
{
    addPatches();
    announce({set});
    const Record place = record(patchTokens[1]);
    const int usedLayers = slot(0).usedLayers;
    ASSERT_TRUE(array2D->deleteUDIM(set));
    EXPECT_EQ(Tables::maxToken(*array2D), TextureToken(4)) << "the set and its block were the highest";
    EXPECT_TRUE(Tables::freeTokens(*array2D).isEmpty());
    EXPECT_TRUE(Books::patchSources(*array2D).isEmpty());
    for (quint64 token = 4; token < 9; ++token)
        EXPECT_EQ(record(TextureToken(token)), kFreshRecord);
    EXPECT_EQ(record(patchTokens[1]), place);
    EXPECT_EQ(slot(0).usedLayers, usedLayers);
    EXPECT_TRUE(slot(0).freeLayers.isEmpty());
}

TEST_F(Array2DUDIMTest, TheTokensOfABlockAreReused)
{
    addPatches();
    announce({set});
    const TextureToken last = tokenOf(2, 2);
    ASSERT_EQ(last, TextureToken(9));
    ASSERT_TRUE(array2D->deleteUDIM(set));
    EXPECT_EQ(Tables::freeTokens(*array2D), tokens({5, 6, 7, 8, 4})) << "the set after its block";
    const TextureToken reused = tokenOf(16, 16);
    EXPECT_EQ(reused, TextureToken(5));
    announce({reused});
    EXPECT_EQ(record(reused), (Record{0, 3, 0, 0, 0, 0, 0, 0})) << "with a layer of its own";
    array2D->deleteTexture(reused);
    EXPECT_EQ(slot(0).usedLayers, 3);
}

TEST_F(Array2DUDIMTest, AnUnplacedSetEndsWithoutABlock)
{
    addPatches();
    ASSERT_TRUE(array2D->deleteUDIM(set));
    EXPECT_EQ(Tables::maxToken(*array2D), TextureToken(4));
}

TEST_F(Array2DUDIMTest, TheTableOfASetIsUploaded)
{
    makeProgram({kSampleName, kSlotsName});
    addPatches();
    announce({set});
    array2D->bind(program.get());
    EXPECT_EQ(uploadedTable, wordsOf(9));
    EXPECT_EQ(uploadedTable.mid(4 * 8, 8), QList<int>({5, 0, 0, 0, 3, 3, 0, 0}));
    array2D->unbind(program.get());
    ASSERT_TRUE(array2D->deleteUDIM(set));
    array2D->bind(program.get());
    EXPECT_EQ(uploadedTable, wordsOf(9)) << "the table does not shrink";
    EXPECT_EQ(uploadedTable[4 * 8], -1);
    array2D->unbind(program.get());
}

TEST_F(Array2DUDIMTest, PatchTokensAreCopiedFromTheTexturesOfTheirSources)
{
    makeProgram({kSampleName, kSlotsName});
    addPatches();
    announce({set});
    array2D->bind(program.get());
    EXPECT_EQ(Books::pendingTokens(*array2D), QList<TextureToken>()) << "each found its source";
    array2D->unbind(program.get());
}

TEST_F(Array2DBindingTest, PatchRecordsGetTheHandleOfTheirSlot)
{
    makeBindless();
    Texture* const patch = newTextureOf(sized(16, 16));
    array2D->tokenForTexture(patch);
    const TextureToken udim = array2D->createUDIMToken();
    array2D->addUDIMPatch(udim, {0, 0}, patch);
    announce({udim});
    array2D->bind(program.get());
    EXPECT_EQ(record(TextureToken(3)), (Record{0, 0, 0x40, 1, 0, 0, 0, 0}));
    EXPECT_EQ(uploadedTable, wordsOf(4));
    array2D->unbind(program.get());
}

} // namespace Harrow::Vrk::Test::Array2DDraws
