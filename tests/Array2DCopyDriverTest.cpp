// SPDX-License-Identifier: MIT
//
// Array2DTextureManager on the fake driver: the calls that copy texels into slots, and what waits instead.
#include "Array2DStorageTestTools.h"

namespace Harrow::Vrk::Test::Array2DDraws::Storage
{

namespace
{
class Array2DCopyTest : public Array2DStorageTest
{
};
} // namespace

// ---- copies --------------------------------------------------------------------------------------------------------

TEST_F(Array2DCopyTest, LevelsThatTheSourceHasComeFromItAndTheOthersFromTheSlot)
{
    makeSlots(1);
    place(8, 8, 2);
    const QStringList calls = updating();
    EXPECT_EQ(calls.mid(calls.size() - copied(1, {1000, GL_TEXTURE_2D, 8, 8, 2}, {1, 8, 8, 0}).size()),
              copied(1, {1000, GL_TEXTURE_2D, 8, 8, 2}, {1, 8, 8, 0}));
    EXPECT_EQ(calls.filter(QStringLiteral("glBlitFramebuffer")),
              QStringList({blit(8, 8, 8, 8), blit(4, 4, 4, 4), blit(2, 2, 2, 2), blit(2, 2, 1, 1)}));
}

TEST_F(Array2DCopyTest, ACubeMapIsCopiedFaceByFaceInTheOrderOfTheFaces)
{
    makeSlots(1);
    place(1, 1); // so that the faces do not start at layer 0
    array2D->updateSlots();
    FakeTexture description;
    description.maxLevel = 0;
    const TextureToken token = place(description, GL_TEXTURE_CUBE_MAP);
    ASSERT_EQ(record(token), (Record{0, 1, 0, 0, 0, 0, 0, 0}));
    EXPECT_EQ(updating(), onTop(1, kArray) + repeated(rgba8(0, 1, 1, 7), 7) + slotParameters(1) +
                              QStringList(CallLog::call("glFlush")) + noneOnTop(kArray) +
                              copied(3, {1001, GL_TEXTURE_CUBE_MAP, 1, 1, 0}, {1, 1, 1, 1, 6}) +
                              copied(5, {1000, GL_TEXTURE_2D, 1, 1, 0}, {1, 1, 1, 0}));
}

TEST_F(Array2DCopyTest, A2DArrayIsCopiedLayerByLayer)
{
    makeSlots(1);
    FakeTexture description = sized(4, 2);
    description.depth = 3;
    description.maxLevel = 0;
    place(description, GL_TEXTURE_2D_ARRAY);
    const QStringList expected = copied(1, {1000, GL_TEXTURE_2D_ARRAY, 4, 2, 0}, {1, 4, 2, 0, 3});
    const QStringList calls = updating();
    EXPECT_EQ(calls.mid(calls.size() - expected.size()), expected);
}

TEST_F(Array2DCopyTest, ALevelBeyondTheSourceIsAttachedButNotCopied)
{
    makeSlots(1);
    array2D->setSlotReallocationMethod(TextureManager::eReallocateLarger);
    place(16, 16, 0);
    array2D->updateSlots();
    const LogCapture log; // enlarged
    place(2, 2, 3);       // the last two of these it has not
    const QStringList calls = updating();
    EXPECT_EQ(calls.filter(QStringLiteral("glFramebufferTexture(")),
              QStringList({attachment("glFramebufferTexture", 1001, 0), attachment("glFramebufferTexture", 1001, 1),
                           attachment("glFramebufferTexture", 1001, 2), attachment("glFramebufferTexture", 1001, 3),
                           attachment("glFramebufferTexture", 1000, 0)}));
    // The size that was written last is that of level 1, and stays so.
    EXPECT_EQ(calls.filter(QStringLiteral("glBlitFramebuffer")).mid(0, 3),
              QStringList({blit(2, 2, 16, 16), blit(1, 1, 8, 8), blit(8, 8, 1, 1)}));
}

TEST_F(Array2DCopyTest, AGreatestLevelOfTwentyCountsAndOneOfTwentyOneIsNone)
{
    for (const int maxLevel : {20, 21, 1000})
    {
        makeSlots(1);
        place(4, 4, maxLevel);
        const QString fromSource = QStringLiteral("glFramebufferTexture(");
        EXPECT_EQ(updating().filter(fromSource).size(), maxLevel == 20 ? 3 : 1) << maxLevel;
    }
}

TEST_F(Array2DCopyTest, ASourceIsScaledFromItsOwnSizeToThatOfTheSlot)
{
    makeSlots(1);
    Books::setMaxSlotSize(*array2D, 4, 2);
    place(16, 16, 2);
    EXPECT_EQ(updating().filter(QStringLiteral("glBlitFramebuffer")),
              QStringList({blit(16, 16, 4, 2), blit(8, 8, 2, 1)}));
}

TEST_F(Array2DCopyTest, TheOuterFramebufferIsBoundAgain)
{
    makeSlots(1);
    place(1, 1);
    driver.setInteger(GL_DRAW_FRAMEBUFFER_BINDING, 77);
    const QStringList expected = copied(1, {1000, GL_TEXTURE_2D, 1, 1, 0}, {1, 1, 1, 0}, 77);
    const QStringList calls = updating();
    EXPECT_EQ(calls.mid(calls.size() - expected.size()), expected);
}

TEST_F(Array2DCopyTest, TheDeletedFramebuffersAreTheGeneratedOnes)
{
    static QList<GLuint> deleted;
    deleted.clear();
    driver.replace(
        "glDeleteFramebuffers",
        +[](GLsizei count, const GLuint* names) { deleted += QList<GLuint>(names, names + count); });
    ASSERT_EQ(driver.load(), 1);
    makeSlots(1);
    place(1, 1);
    place(1, 1);
    array2D->updateSlots();
    EXPECT_EQ(deleted, QList<GLuint>({1, 2, 3, 4}));
}

TEST_F(Array2DCopyTest, NothingIsCopiedForATokenWithoutAPlaceAndForASetOfPatches)
{
    makeSlots(1);
    const TextureToken unplaced = array2D->tokenForTexture(newTextureOf({}));
    const TextureToken set = array2D->reserveToken();
    array2D->textureTokenIssued(set);
    Books::SlotLayerData patches;
    patches.slot = 0;
    patches.udimWidth = 1;
    Books::setRecord(*array2D, set, patches);
    const CallLog calls;
    EXPECT_TRUE(array2D->blitTokenToTextureSlot(unplaced));
    EXPECT_TRUE(array2D->blitTokenToTextureSlot(set));
    EXPECT_TRUE(array2D->blitTokenToTextureSlot(TextureToken(0)));
    EXPECT_EQ(calls.list(), QStringList());
}

TEST_F(Array2DCopyTest, ASourceOfNoSizeIsReportedAndWaits)
{
    makeSlots(1);
    const TextureToken token = place(4, 4, 0);
    fakeTextures[1000].height = 0;
    LogCapture log;
    EXPECT_EQ(updating().filter(QStringLiteral("Framebuffer")), QStringList());
    const QString line =
        QStringLiteral("%1 Ignoring texture of size (4x0), not blitted into array2D. Token 0x%2 [1000]")
            .arg(QString::asprintf("%p", static_cast<void*>(array2D.get())))
            .arg(token.token, 0, 16);
    EXPECT_EQ(log.messages(QtWarningMsg), QStringList(line));
    EXPECT_EQ(log.messages(), QStringList(line));
    EXPECT_EQ(pending(), QList<TextureToken>{token});
    log.clear();
    EXPECT_EQ(updating(), examined({1000, GL_TEXTURE_2D, 4, 0, 0})) << "tried again";
    EXPECT_EQ(log.messages(), QStringList(line));
    fakeTextures[1000].width = 0;
    fakeTextures[1000].height = 4;
    log.clear();
    array2D->updateSlots();
    EXPECT_EQ(log.messages(), QStringList(QString(line).replace("4x0", "0x4")));
    fakeTextures[1000].width = 4;
    EXPECT_EQ(updating(), copied(1, {1000, GL_TEXTURE_2D, 4, 4, 0}, {1, 4, 4, 0}));
    EXPECT_TRUE(pending().isEmpty());
}

TEST_F(Array2DCopyTest, ASourceThatCannotBeHadWaitsAndIsTriedEachTime)
{
    makeSlots(1);
    // What names a place but nothing to copy, as the patch of a set does whose texture has gone.
    const TextureToken patch = array2D->reserveToken();
    array2D->textureTokenIssued(patch);
    place(1, 1);
    const TextureToken owner = array2D->tokenForTexture(last);
    Books::SlotLayerData shared;
    shared.slot = 0;
    Books::setRecord(*array2D, patch, shared);
    array2D->updateSlots();
    EXPECT_EQ(pending(), QList<TextureToken>{patch});
    EXPECT_EQ(updating(), QStringList());
    EXPECT_EQ(pending(), QList<TextureToken>{patch});
    Books::setPatchSource(*array2D, patch, TextureToken(4711));
    EXPECT_EQ(updating(), QStringList()) << "neither has that a texture";
    EXPECT_EQ(pending(), QList<TextureToken>{patch});
    Books::setPatchSource(*array2D, patch, owner);
    EXPECT_EQ(updating(), copied(3, {1000, GL_TEXTURE_2D, 1, 1, 0}, {1, 1, 1, 0}));
    EXPECT_TRUE(pending().isEmpty());
}

TEST_F(Array2DCopyTest, ATokenWithATextureOfItsOwnDoesNotAskForThatOfAPatch)
{
    makeSlots(1);
    const TextureToken own = place(1, 1);
    const TextureToken another = place(1, 1);
    Books::setPatchSource(*array2D, own, another);
    EXPECT_EQ(sourcesOf(updating()), QList<int>({1000, 1001}));
}

TEST_F(Array2DCopyTest, WhatWaitsDoesNotKeepOthersFromBeingCopied)
{
    makeSlots(1);
    const TextureToken first = place(2, 2, 0);
    place(2, 2, 0);
    const TextureToken third = place(2, 2, 0);
    place(2, 2, 0);
    fakeTextures[1000].width = 0;
    fakeTextures[1002].width = 0;
    const LogCapture log;
    EXPECT_EQ(sourcesOf(updating()), QList<int>({1001, 1003}));
    EXPECT_EQ(pending(), QList<TextureToken>({first, third})) << "in the same order";
    EXPECT_EQ(log.messages().size(), 2);
}

TEST_F(Array2DCopyTest, AColourIsMadeIntoATextureByItsCopyAtTheLatest)
{
    makeSlots(1);
    const TextureToken red = array2D->tokenForColor(Qt::red);
    Books::SlotLayerData shared;
    place(1, 1);
    shared.slot = 0;
    Books::setRecord(*array2D, red, shared);
    array2D->updateSlots();
    EXPECT_TRUE(pending().isEmpty());
    EXPECT_NE(array2D->textureForToken(red), nullptr);
    EXPECT_TRUE(Tables::tokenToTexture(*array2D).contains(red));
}

// ---- what is safe ---------------------------------------------------------------------------------------------------

TEST_F(Array2DCopyTest, SlotsMadeWithoutAFreeUnitAreLeftWithoutImageAndTheActiveUnitAlone)
{
    makeManager(2);
    occupyUnits(0);
    const CallLog calls;
    const LogCapture log;
    array2D->setupSlots();
    EXPECT_EQ(masked(calls.list()), repeated(pointerCall("glGenTextures", {1}), 2));
    EXPECT_EQ(log.messages(), repeated(QStringLiteral("There is no available texture units"), 2));
    EXPECT_EQ(Books::allSlots(*array2D).size(), 2);
}

TEST_F(Array2DCopyTest, StorageAndCopiesWaitForAFreeUnit)
{
    makeSlots(1);
    const TextureToken token = place(1, 1);
    occupyUnits(0);
    {
        const LogCapture log;
        EXPECT_EQ(updating(), QStringList());
        EXPECT_EQ(log.messages(), QStringList("There is no available texture units")) << "asked once";
    }
    EXPECT_EQ(slot(0).allocatedLayers, 0);
    EXPECT_EQ(pending(), QList<TextureToken>{token});
    freeUnits();
    EXPECT_EQ(updating(), onTop(1, kArray) + QStringList(rgba8(0, 1, 1, 1)) + slotParameters(1) +
                              QStringList(CallLog::call("glFlush")) + noneOnTop(kArray) +
                              copied(1, {1000, GL_TEXTURE_2D, 1, 1, 0}, {1, 1, 1, 0}));
    EXPECT_TRUE(pending().isEmpty());
}

TEST_F(Array2DCopyTest, ASlotThatLostItsHandleAndFindsNoUnitLeavesNoHandleInTheRecords)
{
    makeBindlessSlots(1);
    const TextureToken first = place(1, 1);
    array2D->updateSlots();
    ASSERT_EQ(slot(0).handle, giveHandle(1));
    const TextureToken second = place(1, 1);
    occupyUnits(0);
    {
        const LogCapture log;
        array2D->updateSlots();
    }
    EXPECT_EQ(slot(0).handle, 0u);
    EXPECT_EQ(slot(0).allocatedLayers, 0);
    EXPECT_EQ(record(first), (Record{0, 0, 0, 0, 0, 0, 0, 0}));
    EXPECT_EQ(record(second), (Record{0, 1, 0, 0, 0, 0, 0, 0}));
    freeUnits();
    array2D->updateSlots();
    EXPECT_EQ(record(first), (Record{0, 0, 0x40, 2, 0, 0, 0, 0}));
    EXPECT_TRUE(pending().isEmpty());
}

TEST_F(Array2DCopyTest, ACopyWaitsForTheStorageOfItsSlot)
{
    makeSlots(1);
    const TextureToken token = place(1, 1);
    const CallLog calls;
    EXPECT_FALSE(array2D->blitTokenToTextureSlot(token));
    EXPECT_EQ(calls.list(), QStringList());
    array2D->updateSlots();
    EXPECT_TRUE(array2D->blitTokenToTextureSlot(token)) << "as often as it is wanted";
}

TEST_F(Array2DCopyTest, ASourceThatIsBoundIsNotCopiedIntoASlotThatGotNoStorage)
{
    makeSlots(1);
    const TextureToken token = place(1, 1);
    Texture* const source = last;
    ASSERT_TRUE(source->bind());
    occupyUnits(1); // which the source has
    {
        const LogCapture log;
        EXPECT_EQ(updating().filter(QStringLiteral("Framebuffer")), QStringList());
    }
    EXPECT_EQ(pending(), QList<TextureToken>{token}) << "or the layer would never get its texels";
    freeUnits();
    EXPECT_EQ(updating().filter(QStringLiteral("glBlitFramebuffer")), QStringList(blit(1, 1, 1, 1)));
    EXPECT_TRUE(pending().isEmpty());
    source->unbind();
}

TEST_F(Array2DCopyTest, ASourceWithoutAFreeUnitHasNoSizeAndWaits)
{
    make();
    const TextureToken token = place(1, 1, 0);
    array2D->updateSlots();
    array2D->dirty(last);
    array2D->bind(QList<TextureToken>{token});
    slot(0).allocatedLayers = 1; // storage is there
    occupyUnits(0);
    LogCapture log;
    EXPECT_EQ(updating().filter(QStringLiteral("Framebuffer")), QStringList());
    EXPECT_EQ(pending(), QList<TextureToken>{token});
    EXPECT_TRUE(log.messages().last().contains(QStringLiteral("Ignoring texture of size (0x0)")));
}

TEST_F(Array2DCopyTest, ATokenBeyondTheTableIsForgotten)
{
    makeSlots(1);
    const CallLog calls;
    EXPECT_TRUE(array2D->blitTokenToTextureSlot(TextureToken(1000)));
    EXPECT_TRUE(array2D->blitTokenToTextureSlot(INVALID_TOKEN));
    EXPECT_EQ(calls.list(), QStringList());
    // `clear` empties the table behind a token that it has issued.
    array2D->tokenForTexture(newTextureOf({}));
    array2D->textureForColor(Qt::white);
    array2D->deleteTexture(TextureToken(0));
    array2D->clear();
    EXPECT_EQ(Books::records(*array2D).size(), 1);
    array2D->updateSlots();
    EXPECT_TRUE(pending().isEmpty());
}

TEST_F(Array2DCopyTest, ATokenOfASlotThatIsNoMoreWaits)
{
    makeSlots(2);
    place(2, 2);
    const TextureToken token = place(1, 1);
    ASSERT_EQ(record(token)[0], 1);
    array2D->deleteSlots();
    array2D->setMaxSlots(1);
    array2D->updateSlots();
    EXPECT_EQ(pending(), QList<TextureToken>{token});
    EXPECT_FALSE(array2D->blitTokenToTextureSlot(token));
}

} // namespace Harrow::Vrk::Test::Array2DDraws::Storage
