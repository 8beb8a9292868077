// SPDX-License-Identifier: MIT

/// \file
/// What becomes of the records of tokens: issue, revocation, `dirty` and `clear`.

#include "Array2DPlacingTestTools.h"

namespace Harrow::Vrk::Test
{
namespace
{

// ---- tokens --------------------------------------------------------------------------------------------------------

TEST_F(Array2DPlacing, IssuedTokenGetsARecordAndWaits)
{
    makeManager();
    Books::setSlotMapDirty(*array2D, false);
    array2D->textureTokenIssued(TextureToken(4));
    EXPECT_EQ(Books::records(*array2D).size(), 5);
    for (quint64 token = 0; token < 5; ++token)
        expectFresh(token);
    EXPECT_EQ(Books::layerCounts(*array2D), QList<int>({1, 1, 1, 1, 1}));
    EXPECT_EQ(pending(), tokens({0, 4}));
    EXPECT_TRUE(isDirty());
}

TEST_F(Array2DPlacing, IssueOfAReusedTokenLeavesTheTableAsItWas)
{
    makeManager();
    Texture* const cube = newTextureOf(sized(64, 64), GL_TEXTURE_CUBE_MAP);
    bound(cube);
    array2D->deleteTexture(cube);
    forgetPending();
    EXPECT_EQ(array2D->tokenForTexture(newTextureOf(sized(64, 64))), TextureToken(1));
    EXPECT_FALSE(isDirty());
    EXPECT_EQ(Books::records(*array2D).size(), 2);
    EXPECT_EQ(Books::layerCounts(*array2D), QList<int>({1, 6})); // until it is placed
    EXPECT_EQ(pending(), tokens({1}));
    Books::setSlotMapDirty(*array2D, true);
    array2D->textureTokenIssued(TextureToken(1));
    EXPECT_TRUE(isDirty());
    EXPECT_EQ(pending(), tokens({1}));
}

TEST_F(Array2DPlacing, TokenTooLargeForATableIsReported)
{
    makeManager();
    array2D->textureTokenIssued(TextureToken(1u << 24));
    array2D->textureTokenIssued(INVALID_TOKEN);
    EXPECT_EQ(Books::records(*array2D).size(), 1);
    EXPECT_EQ(pending(), tokens({0}));
    const QString condition = QStringLiteral("token.token < kMaxTokens");
    EXPECT_EQ(
        log.messages(),
        QStringList({assertionLine(condition, QStringLiteral("Token 16777216 is too large for a table")),
                     assertionLine(condition, QStringLiteral("Token 18446744073709551615 is too large for a table"))}));
}

TEST_F(Array2DPlacing, LargestTokenHasARecord)
{
    makeManager();
    array2D->textureTokenIssued(TextureToken((1u << 24) - 1));
    EXPECT_EQ(Books::records(*array2D).size(), 1 << 24);
    EXPECT_EQ(log.messages(), QStringList());
}

TEST_F(Array2DPlacing, RevokedTokenGivesItsLayersBack)
{
    makeManager();
    Texture* const first = newTextureOf(sized(64, 64), GL_TEXTURE_CUBE_MAP);
    const quint64 token = bound(first);
    const quint64 second = bound(sized(64, 64));
    forgetPending();
    array2D->textureTokenRevoked(TextureToken(token));
    expectFresh(token);
    EXPECT_EQ(slot(0).freeLayers, QList<int>({0, 1, 2, 3, 4, 5}));
    EXPECT_TRUE(isDirty());
    EXPECT_EQ(Books::layerCounts(*array2D)[qsizetype(token)], 6);
    array2D->textureTokenRevoked(TextureToken(second));
    EXPECT_FALSE(slot(0).isUsed());
}

TEST_F(Array2DPlacing, RevokedTokenWithoutAPlaceChangesNothing)
{
    makeManager();
    Books::setSlotMapDirty(*array2D, false);
    array2D->textureTokenRevoked(TextureToken(0));
    array2D->textureTokenRevoked(TextureToken(1));
    array2D->textureTokenRevoked(TextureToken(1u << 30), true);
    array2D->textureTokenRevoked(INVALID_TOKEN);
    EXPECT_FALSE(isDirty());
    EXPECT_EQ(pending(), tokens({0}));
    EXPECT_EQ(log.texts(), QStringList());
}

TEST_F(Array2DPlacing, RevocationCanLeaveTheLayersTaken)
{
    makeManager();
    const quint64 token = bound(sized(64, 64));
    Books::setSlotMapDirty(*array2D, false);
    array2D->textureTokenRevoked(TextureToken(token), true);
    expectFresh(token);
    EXPECT_EQ(slot(0).usedLayers, 1);
    EXPECT_TRUE(slot(0).freeLayers.isEmpty());
    EXPECT_TRUE(isDirty());
}

TEST_F(Array2DPlacing, DeletedTokenKeepsItsPlaceAmongThoseThatWait)
{
    makeManager();
    Texture* const texture = newTextureOf(sized(64, 64));
    bound(texture);
    array2D->deleteTexture(texture);
    EXPECT_EQ(pending(), tokens({0, 1}));
}

class Array2DRevokedSet : public Array2DPlacing
{
protected:
    void SetUp() override
    {
        Array2DPlacing::SetUp();
        makeManager();
        left = newTextureOf(sized(64, 64));
        right = newTextureOf(sized(64, 64));
        array2D->tokenForTexture(left);   // 1
        array2D->tokenForTexture(right);  // 2
        set = array2D->createUDIMToken(); // 3
        array2D->addUDIMPatch(set, QPoint(0, 0), left);
        array2D->addUDIMPatch(set, QPoint(2, 0), right);
        array2D->bind(QList<TextureToken>{set}); // 4, 5, 6
        forgetPending();
    }

    Texture* left = nullptr;
    Texture* right = nullptr;
    TextureToken set;
};

TEST_F(Array2DRevokedSet, EndsTheTokensOfItsPatchesAndLeavesTheirLayers)
{
    ASSERT_EQ(record(3).slot, 4);
    ASSERT_EQ(record(3).udimWidth, 3);
    ASSERT_EQ(record(3).udimMaxPatch, 2);
    ASSERT_EQ(place(4), place(1));
    ASSERT_EQ(place(6), place(2));
    expectFresh(5);
    EXPECT_TRUE(array2D->deleteUDIM(set));
    for (quint64 token = 3; token < 7; ++token)
        expectFresh(token);
    EXPECT_EQ(slot(0).usedLayers, 2);
    EXPECT_TRUE(slot(0).freeLayers.isEmpty());
    EXPECT_TRUE(Books::patchSources(*array2D).isEmpty());
    EXPECT_EQ(array2D->maxToken(), TextureToken(3));
    EXPECT_TRUE(Tables::freeTokens(*array2D).isEmpty());
    EXPECT_TRUE(isDirty());
    EXPECT_EQ(log.texts(), QStringList());
}

TEST_F(Array2DRevokedSet, KeepsThePatchSourcesThroughAClear)
{
    array2D->clear();
    EXPECT_EQ(Books::patchSources(*array2D).value(TextureToken(4)), TextureToken(1));
    EXPECT_EQ(Books::patchSources(*array2D).value(TextureToken(6)), TextureToken(2));
}

TEST_F(Array2DRevokedSet, LosesThePatchSourceOfAnEndedPatchToken)
{
    EXPECT_EQ(Books::patchSources(*array2D).value(TextureToken(4)), TextureToken(1));
    EXPECT_EQ(Books::patchSources(*array2D).value(TextureToken(6)), TextureToken(2));
    array2D->textureTokenRevoked(TextureToken(6), true);
    EXPECT_FALSE(Books::patchSources(*array2D).contains(TextureToken(6)));
    EXPECT_TRUE(Books::patchSources(*array2D).contains(TextureToken(4)));
}

TEST_F(Array2DRevokedSet, PatchTokenThatIsDeletedGivesBackTheLayerOfItsTexture)
{
    const Place shared = place(2);
    array2D->deleteTexture(TextureToken(6));
    EXPECT_EQ(slot(0).usedLayers - slot(0).freeLayers.size(), 1);
    EXPECT_NE(slot(0).freeLayers, QList<int>({1 - shared.second}));
    EXPECT_EQ(place(2), shared); // which can be another's now
}

TEST_F(Array2DRevokedSet, SetThatHasComeAmongItsOwnPatchesEnds)
{
    array2D->deleteTexture(TextureToken(5)); // a place without a patch
    const TextureToken inner = array2D->createUDIMToken();
    ASSERT_EQ(inner, TextureToken(5));
    EXPECT_TRUE(array2D->deleteUDIM(set)); // takes 5 with it, which is in use
    ASSERT_EQ(array2D->maxToken(), TextureToken(3));
    array2D->addUDIMPatch(inner, QPoint(0, 0), left);
    array2D->addUDIMPatch(inner, QPoint(3, 0), right);
    array2D->bind(QList<TextureToken>{inner});
    ASSERT_EQ(record(5).slot, 3); // 3, 4, 5 and 6 are its patches
    ASSERT_EQ(record(5).udimMaxPatch, 3);
    EXPECT_TRUE(array2D->deleteUDIM(inner));
    for (quint64 token = 3; token < 7; ++token)
        expectFresh(token);
    EXPECT_EQ(slot(0).usedLayers, 2);
}

TEST_F(Array2DPlacing, SetOfManyPatchesEnds)
{
    makeManager();
    Texture* const patch = newTextureOf(sized(64, 64));
    array2D->tokenForTexture(patch);
    const TextureToken set = array2D->createUDIMToken();
    array2D->addUDIMPatch(set, QPoint(9, 99), patch);
    array2D->bind(QList<TextureToken>{set});
    EXPECT_EQ(array2D->maxToken(), TextureToken(1003));
    EXPECT_EQ(place(1002), Place(0, 0));
    EXPECT_TRUE(array2D->deleteUDIM(set));
    EXPECT_EQ(array2D->maxToken(), TextureToken(2));
}

// ---- dirty ---------------------------------------------------------------------------------------------------------

TEST_F(Array2DPlacing, DirtyTextureLosesItsPlaceAndGetsOneForWhatItIsThen)
{
    makeManager();
    Texture* const texture = newTextureOf(sized(64, 64));
    const quint64 token = bound(texture);
    bound(sized(64, 64));
    forgetPending();
    fakeTextures[texture->textureID()] = sized(32, 32);
    array2D->dirty(texture);
    expectFresh(token);
    EXPECT_EQ(slot(0).freeLayers, QList<int>({0}));
    EXPECT_FALSE(isDirty());
    EXPECT_TRUE(pending().isEmpty());
    array2D->bind(tokens({token}));
    EXPECT_EQ(place(token), Place(1, 0));
    EXPECT_EQ(pending(), tokens({token}));
    EXPECT_TRUE(isDirty());
}

TEST_F(Array2DPlacing, DirtyCubeMapGivesBackItsSixLayers)
{
    makeManager();
    Texture* const cube = newTextureOf(sized(64, 64), GL_TEXTURE_CUBE_MAP);
    bound(cube);
    bound(sized(64, 64));
    cube->setTarget(GL_TEXTURE_2D); // what it is now does not count
    array2D->dirty(cube);
    EXPECT_EQ(slot(0).freeLayers, QList<int>({0, 1, 2, 3, 4, 5}));
}

TEST_F(Array2DPlacing, DirtyIssuesATokenWhereThereIsNone)
{
    makeManager();
    Texture* const texture = newTextureOf(sized(64, 64));
    array2D->dirty(texture);
    EXPECT_EQ(array2D->findToken(texture), TextureToken(1));
    EXPECT_EQ(pending(), tokens({0, 1}));
    expectFresh(1);
}

TEST_F(Array2DPlacing, DirtyOfNothingIsNothing)
{
    makeManager();
    array2D->dirty(nullptr);
    EXPECT_EQ(array2D->maxToken(), TextureToken(1));
    EXPECT_EQ(log.texts(), QStringList());
}

TEST_F(Array2DPlacing, DirtyTextureOfAnUnusedSlotKeepsItsRecord)
{
    makeManager();
    Texture* const texture = newTextureOf(sized(64, 64));
    const quint64 token = bound(texture);
    slot(0).release(0, 1);
    array2D->dirty(texture);
    EXPECT_EQ(place(token), Place(0, 0));
}

TEST_F(Array2DPlacing, DirtyTextureWhoseRecordNamesNoSlotKeepsIt)
{
    makeManager(2);
    Texture* const patch = newTextureOf(sized(64, 64));
    array2D->tokenForTexture(patch);
    Texture* const texture = newTextureOf(sized(64, 64));
    array2D->tokenForTexture(texture); // 2
    Record set;
    set.slot = 200;
    set.udimWidth = 1;
    Books::setRecord(*array2D, TextureToken(2), set);
    array2D->setupSlots();
    array2D->dirty(texture);
    EXPECT_EQ(record(2).slot, 200);
    set.udimWidth = 0;
    Books::setRecord(*array2D, TextureToken(2), set);
    array2D->textureTokenRevoked(TextureToken(2));
    expectFresh(2);
}

// ---- clear ---------------------------------------------------------------------------------------------------------

TEST_F(Array2DPlacing, ClearForgetsPlacesAndKeepsTokens)
{
    makeManager(3);
    Texture* const texture = newTextureOf(sized(64, 64));
    bound(texture);
    bound(sized(64, 64));
    const TextureToken red = array2D->tokenForColor(Qt::red);
    Books::setSlotMapDirty(*array2D, false);
    array2D->clear();
    EXPECT_TRUE(Books::allSlots(*array2D).isEmpty());
    EXPECT_EQ(Books::records(*array2D).size(), 1);
    expectFresh(0);
    EXPECT_EQ(Books::layerCounts(*array2D), QList<int>({1}));
    EXPECT_TRUE(pending().isEmpty());
    EXPECT_TRUE(Books::slotUnits(*array2D).isEmpty());
    EXPECT_TRUE(Books::slotHandles(*array2D).isEmpty());
    EXPECT_FALSE(isDirty());
    // the base's maps
    EXPECT_EQ(array2D->maxToken(), TextureToken(4));
    EXPECT_EQ(array2D->findToken(texture), TextureToken(1));
    EXPECT_EQ(array2D->tokenForColor(Qt::red), red);
    EXPECT_EQ(array2D->tokenForColor(Qt::white), TextureToken(0));
    EXPECT_EQ(log.texts(), QStringList());
}

TEST_F(Array2DPlacing, LaterTokensGrowTheTableAgain)
{
    makeManager(3);
    bound(sized(64, 64));
    bound(sized(64, 64));
    array2D->clear();
    const quint64 third = bound(sized(64, 64));
    EXPECT_EQ(third, 3u);
    EXPECT_EQ(Books::records(*array2D).size(), 4);
    EXPECT_EQ(place(third), Place(0, 0));
    EXPECT_EQ(Books::allSlots(*array2D).size(), 3);
    EXPECT_EQ(pending(), tokens({third}));
    // and the old ones are there again
    array2D->bind(tokens({1, 2}));
    EXPECT_EQ(place(1), Place(0, 1));
    EXPECT_EQ(place(2), Place(0, 2));
}

TEST_F(Array2DPlacing, WhiteThatWasDeletedWaitsAfterAClear)
{
    makeManager(3);
    bound(sized(64, 64));
    array2D->bind(tokens({0})); // so that it is realised, and can be forgotten
    array2D->deleteTexture(TextureToken(0));
    array2D->tokenForTexture(newTextureOf(sized(64, 64))); // takes token 0
    array2D->clear();
    EXPECT_EQ(array2D->tokenForColor(Qt::white), TextureToken(2));
    EXPECT_EQ(pending(), tokens({2}));
    EXPECT_EQ(Books::records(*array2D).size(), 1);
    EXPECT_TRUE(isDirty());
    // Without a record it has nothing to copy.
    array2D->updateSlots();
    EXPECT_TRUE(pending().isEmpty());
}

TEST_F(Array2DPlacing, TokensFromBeforeAClearAreReportedAndChangeNothing)
{
    makeManager(3);
    Texture* const texture = newTextureOf(sized(64, 64));
    const quint64 token = bound(texture);
    array2D->clear();
    array2D->bind(tokens({token}));
    EXPECT_EQ(log.messages(),
              QStringList(assertionLine(QStringLiteral("token.token < quint64(_textureTokenToSlotLayerData.size())"),
                                        QStringLiteral("Token 1 is not in array 1."))));
    log.clear();
    array2D->dirty(texture);
    array2D->deleteTexture(texture);
    EXPECT_EQ(log.texts(), QStringList());
    EXPECT_EQ(Books::records(*array2D).size(), 1);
}

TEST_F(Array2DPlacing, SlotsOfBeforeAClearLiveAsLongAsTheManager)
{
    makeManager(3);
    bound(sized(64, 64));
    const QList<SlotData*> old = Books::allSlots(*array2D);
    CallLog calls;
    array2D->clear();
    EXPECT_EQ(calls.count(QStringLiteral("glDeleteTextures")), 0);
    EXPECT_EQ(Books::retiredSlots(*array2D), old);
    array2D->setupSlots();
    EXPECT_EQ(calls.count(QStringLiteral("glDeleteTextures")), 0);
    calls.clear();
    array2D.reset();
    EXPECT_EQ(calls.count(QStringLiteral("glDeleteTextures")), 6); // both sets of three
}

TEST_F(Array2DPlacing, ClearWithoutSlotsIsQuiet)
{
    makeManager();
    array2D->clear();
    array2D->clear();
    EXPECT_EQ(Books::records(*array2D).size(), 1);
    EXPECT_EQ(log.texts(), QStringList());
}

} // namespace
} // namespace Harrow::Vrk::Test
