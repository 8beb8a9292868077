// SPDX-License-Identifier: MIT
//
// BindlessTextureManager on the fake driver: the exact OpenGL calls of a draw, residency, and the books of slots.
#include "BindlessTextureManager.h"

#include "BindlessTextureManagerTestTools.h"
#include "GLSLMacroProcessor.h"
#include "support/ProcessEnding.h"

#include <algorithm>

namespace Harrow::Vrk::Test
{

/// Once for each extension.
class BindlessTextureManagerDrawTest : public BindlessFixture, public testing::WithParamInterface<const char*>
{
protected:
    void SetUp() override
    {
        BindlessFixture::SetUp();
        suffix = GetParam();
        offer({"GL_" + suffix + "_bindless_texture"});
        make();
    }
};

INSTANTIATE_TEST_SUITE_P(Extensions, BindlessTextureManagerDrawTest, testing::Values("ARB", "NV"),
                         [](const auto& row) { return std::string(row.param); });

// ---- residency -----------------------------------------------------------------------------------------------------

TEST_P(BindlessTextureManagerDrawTest, BindMakesResidentWhatIsNot)
{
    const auto textures = readOnly(2);
    const QList<TextureToken> list = {bindless->tokenForTexture(textures[1]), bindless->tokenForTexture(textures[0])};
    CallLog calls;
    bindless->bind(list);
    EXPECT_EQ(calls.list(), becomingResident(handleOf(1001)) + becomingResident(handleOf(1000)));
    calls.clear();
    bindless->bind(list);
    EXPECT_EQ(calls.list(), QStringList({askingResidency(handleOf(1001)), askingResidency(handleOf(1000))}));
    calls.clear();
    bindless->unbind(list);
    EXPECT_EQ(calls.list(), becomingNonResident(handleOf(1001)) + becomingNonResident(handleOf(1000)));
    EXPECT_TRUE(slotUnits().isEmpty());
}

TEST_P(BindlessTextureManagerDrawTest, TheFirstUnbindEndsResidencyHoweverOftenItWasBound)
{
    const QList<TextureToken> list = {bindless->tokenForTexture(readOnly(1)[0])};
    bindless->bind(list);
    bindless->bind(list);
    CallLog calls;
    bindless->unbind(list);
    EXPECT_EQ(calls.list(), becomingNonResident(handleOf(1000)));
    EXPECT_TRUE(residentHandles.isEmpty());
    calls.clear();
    bindless->unbind(list);
    EXPECT_EQ(calls.list(), QStringList({askingResidency(handleOf(1000))}));
}

TEST_P(BindlessTextureManagerDrawTest, WhatSomebodyElseMadeResidentIsLeftSoAndEndedByUnbind)
{
    const QList<TextureToken> list = {bindless->tokenForTexture(readOnly(1)[0])};
    residentHandles.insert(handleOf(1000));
    CallLog calls;
    bindless->bind(list);
    EXPECT_EQ(calls.list(), QStringList({askingResidency(handleOf(1000))}));
    bindless->unbind(list);
    EXPECT_TRUE(residentHandles.isEmpty()) << "the driver's word counts";
}

TEST_P(BindlessTextureManagerDrawTest, TokensWithoutATextureArePassedOver)
{
    const QList<TextureToken> list = {INVALID_TOKEN, bindlessToken(500), boundToken(3), TextureToken(0)};
    const CallLog calls;
    const LogCapture log;
    bindless->bind(list);
    bindless->unbind(list);
    bindless->bind(QList<TextureToken>());
    bindless->unbind(QList<TextureToken>());
    EXPECT_EQ(calls.list(), QStringList());
    EXPECT_EQ(log.texts(), QStringList());
}

TEST_P(BindlessTextureManagerDrawTest, BothKindsAreBoundInTheOrderOfTheList)
{
    const auto never = readOnly(2);
    withBoundTokens(2); // of 1002 and 1003
    const QList<TextureToken> list = {bindless->tokenForTexture(never[1]), boundToken(1),
                                      bindless->tokenForTexture(never[0]), boundToken(0)};
    CallLog calls;
    bindless->bind(list);
    EXPECT_EQ(calls.list(),
              becomingResident(handleOf(1001)) + bound(7, 1003) + becomingResident(handleOf(1000)) + bound(6, 1002));
    calls.clear();
    bindless->unbind(list);
    EXPECT_EQ(calls.list(),
              becomingNonResident(handleOf(1001)) + bound(7, 0) + becomingNonResident(handleOf(1000)) + bound(6, 0));
    EXPECT_TRUE(allUnitsFree());
}

TEST_P(BindlessTextureManagerDrawTest, AThousandBindlessTokensNeedNoSlotAndNoWarning)
{
    QList<TextureToken> list;
    for (Texture* const texture : readOnly(1000))
        list.append(bindless->tokenForTexture(texture));
    const LogCapture log;
    bindless->bind(list);
    EXPECT_EQ(residentHandles.size(), 1000);
    bindless->bind(program.get());
    EXPECT_EQ(uploadedSlots, QList<int>());
    bindless->unbind(program.get());
    bindless->unbind(list);
    EXPECT_TRUE(residentHandles.isEmpty());
    EXPECT_EQ(log.texts(), QStringList());
}

// ---- a texture that ends while its handle is resident --------------------------------------------------------------

TEST_P(BindlessTextureManagerDrawTest, WhatIsDeletedWhileResidentIsMadeNonResidentBefore)
{
    const TextureToken red = bindless->tokenForColor(Qt::red);
    bindless->bind(QList{red});
    const CallLog calls;
    bindless->deleteTexture(red);
    EXPECT_EQ(masked(calls), QStringList({ending(red.token), pointerCall("glDeleteTextures", {1})}));
    EXPECT_TRUE(residentHandles.isEmpty());
    EXPECT_TRUE(Books::residencies(*bindless).isEmpty());
}

TEST_P(BindlessTextureManagerDrawTest, WhatIsNotResidentAnyMoreIsDeletedWithoutAWord)
{
    const TextureToken red = bindless->tokenForColor(Qt::red);
    bindless->bind(QList{red});
    bindless->unbind({red});
    const CallLog calls;
    bindless->deleteTexture(red);
    EXPECT_EQ(masked(calls), QStringList({pointerCall("glDeleteTextures", {1})}));
}

TEST_P(BindlessTextureManagerDrawTest, ATextureOfTheCallersStaysResident)
{
    auto* const texture = readOnly(1)[0];
    bindless->bind(QList{bindless->tokenForTexture(texture)});
    const CallLog calls;
    bindless->deleteTexture(texture);
    EXPECT_EQ(calls.list(), QStringList()) << "it is not deleted";
    EXPECT_TRUE(Books::residencies(*bindless).isEmpty());
}

TEST_P(BindlessTextureManagerDrawTest, ResidencyInAnotherContextIsLeftAlone)
{
    const TextureToken red = bindless->tokenForColor(Qt::red);
    bindless->bind(QList{red});
    int other = 0;
    driver.setContext(&other);
    {
        const CallLog calls;
        bindless->deleteTexture(red);
        EXPECT_EQ(masked(calls), QStringList({pointerCall("glDeleteTextures", {1})}));
    }
    driver.setContext(&driver);
}

TEST_P(BindlessTextureManagerDrawTest, ATextureThatItsOwnerHasDestroyedIsNotTouched)
{
    auto* const texture = new Texture(nullptr);
    texture->setReadOnly();
    const TextureToken token = bindless->tokenForTexture(texture);
    bindless->bind(QList{token});
    delete texture;
    const CallLog calls;
    bindless->deleteTexture(token);
    EXPECT_EQ(calls.list(), QStringList());
}

TEST_P(BindlessTextureManagerDrawTest, ClearEndsResidencyBeforeItDeletes)
{
    const QList<TextureToken> list = {bindless->tokenForColor(Qt::red), bindless->tokenForColor(Qt::green)};
    bindless->bind(list);
    const CallLog calls;
    bindless->clear();
    QStringList first = masked(calls).mid(0, 2);
    std::sort(first.begin(), first.end());
    EXPECT_EQ(first, QStringList({ending(list[0].token), ending(list[1].token)}));
    EXPECT_EQ(masked(calls).mid(2), QStringList(3, pointerCall("glDeleteTextures", {1})));
    EXPECT_TRUE(residentHandles.isEmpty());
}

TEST_P(BindlessTextureManagerDrawTest, TheEndEndsResidency)
{
    const TextureToken red = bindless->tokenForColor(Qt::red);
    bindless->bind(QList{red});
    const CallLog calls;
    bindless.reset();
    EXPECT_EQ(masked(calls), QStringList(ending(red.token)) + QStringList(2, pointerCall("glDeleteTextures", {1})));
    EXPECT_TRUE(residentHandles.isEmpty());
}

TEST_P(BindlessTextureManagerDrawTest, AtProcessExitNothingIsCalled)
{
    bindless->bind(QList{bindless->tokenForColor(Qt::red)});
    const CallLog calls;
    const ProcessEnding ending;
    bindless.reset();
    EXPECT_EQ(calls.list(), QStringList());
}

// ---- slots, for what may change ------------------------------------------------------------------------------------

TEST_P(BindlessTextureManagerDrawTest, TheFirstDrawMakesDefaultAndSlotMap)
{
    withBoundTokens(2);
    const LogCapture log;
    CallLog calls;
    bindless->bind(QList{boundToken(1)});
    EXPECT_EQ(masked(calls), bound(7, 1001));
    calls.clear();
    bindless->bind(program.get());
    EXPECT_EQ(masked(calls), makingDefault(6, 2) + makingMap(6, 3) + bound(6, 3) + QStringList({uploadingRecords(2)}) +
                                 asking(program->shaderProgramID()) + QStringList({settingMap(6), settingSlots(1)}));
    EXPECT_EQ(uploadedRecords, SlotRecords({kFresh, inSlot(0)}));
    EXPECT_EQ(uploadedSlots, QList<int>({7}));
    EXPECT_EQ(Access::recorded(*slotMapTexture()), (Recorded{GL_RGBA32UI, 2, 1, 0}));
    calls.clear();
    bindless->unbind(program.get());
    EXPECT_EQ(masked(calls), bound(6, 0));
    calls.clear();
    bindless->unbind({boundToken(1)});
    EXPECT_EQ(masked(calls), bound(7, 0));
    EXPECT_TRUE(allUnitsFree());
    EXPECT_EQ(log.texts(), QStringList());
}

TEST_P(BindlessTextureManagerDrawTest, TheSameDrawAgainUploadsNothing)
{
    withBoundTokens(2);
    const TextureToken white = bindless->tokenForColor(Qt::white);
    const QList<TextureToken> list = {boundToken(1), white, boundToken(0)};
    drawAndRelease(list);
    EXPECT_EQ(uploadedRecords, SlotRecords({inSlot(1), inSlot(0)}));
    CallLog calls;
    bindless->bind(list);
    bindless->bind(program.get());
    EXPECT_EQ(masked(calls), bound(7, 1001) + becomingResident(white.token) + bound(6, 1000) + bound(5, 3) +
                                 QStringList({settingMap(5), settingSlots(2)}));
    calls.clear();
    bindless->unbind(program.get());
    bindless->unbind(list);
    EXPECT_EQ(masked(calls), bound(5, 0) + bound(7, 0) + becomingNonResident(white.token) + bound(6, 0));
}

TEST_P(BindlessTextureManagerDrawTest, ATokenThatMovesHasTheRecordsUploaded)
{
    withBoundTokens(2);
    drawAndRelease({boundToken(0), boundToken(1)});
    EXPECT_EQ(uploadedRecords, SlotRecords({inSlot(0), inSlot(1)}));
    const CallLog calls;
    drawAndRelease({boundToken(1), boundToken(0)});
    EXPECT_EQ(calls.count("glTexImage2D"), 1);
    EXPECT_EQ(calls.count("glGenTextures"), 0);
    EXPECT_EQ(uploadedRecords, SlotRecords({inSlot(1), inSlot(0)}));
}

TEST_P(BindlessTextureManagerDrawTest, ANewBoundTokenRebuildsTheSlotMapAndABindlessOneDoesNot)
{
    withBoundTokens(1);
    drawAndRelease({boundToken(0)});
    Texture* const map = slotMapTexture();
    bindless->tokenForColor(Qt::red);
    bindless->tokenForTexture(readOnly(1)[0]);
    EXPECT_EQ(slotMapTexture(), map);
    CallLog calls;
    EXPECT_EQ(bindless->tokenForTexture(wrapped(1)[0]), boundToken(1));
    EXPECT_EQ(masked(calls), QStringList({pointerCall("glDeleteTextures", {1})}));
    EXPECT_EQ(slotMapTexture(), nullptr);
    EXPECT_EQ(Books::tokenSlotRecords(*bindless), SlotRecords({inSlot(0), kFresh}));
    calls.clear();
    drawAndRelease({boundToken(0)});
    EXPECT_EQ(calls.count("glGenTextures"), 1);
    EXPECT_EQ(uploadedRecords, SlotRecords({inSlot(0), kFresh}));
}

TEST_P(BindlessTextureManagerDrawTest, SetupHasTheRecordsUploadedAnew)
{
    withBoundTokens(1);
    drawAndRelease({});
    CallLog calls;
    bindless->setup(nullptr);
    drawAndRelease({});
    EXPECT_EQ(calls.count("glTexImage2D"), 0) << "not without a processor";
    GLSLMacroProcessor processor;
    bindless->setup(&processor);
    drawAndRelease({});
    drawAndRelease({});
    EXPECT_EQ(calls.count("glTexImage2D"), 1);
}

TEST_P(BindlessTextureManagerDrawTest, ADrawWithoutBoundTokensUploadsNoSlotButBindsTheDefault)
{
    const TextureToken white = bindless->tokenForColor(Qt::white);
    CallLog calls;
    bindless->bind(QList{white});
    EXPECT_EQ(masked(calls), becomingResident(white.token));
    calls.clear();
    bindless->bind(program.get());
    EXPECT_EQ(masked(calls), makingDefault(7, 2) + makingMap(7, 3) + bound(7, 3) +
                                 QStringList({uploadingRecords(0).replace(QLatin1Char('@'), QLatin1String("null"))}) +
                                 asking(program->shaderProgramID()) + QStringList({settingMap(7)}) + bound(6, 2) +
                                 QStringList({settingSlots(0)}));
    calls.clear();
    bindless->unbind(program.get());
    EXPECT_EQ(masked(calls), bound(6, 0) + bound(7, 0));
    bindless->unbind({white});
    EXPECT_TRUE(allUnitsFree());
}

TEST_P(BindlessTextureManagerDrawTest, WithoutAProgramTheOneInUseIsAsked)
{
    drawAndRelease({});
    driver.setInteger(GL_CURRENT_PROGRAM, 77);
    CallLog calls;
    bindless->TextureManager::bind();
    EXPECT_EQ(masked(calls), bound(7, 3) + QStringList({pointerCall("glGetIntegerv", {GL_CURRENT_PROGRAM})}) +
                                 asking(77) + QStringList({settingMap(7)}) + bound(6, 2) +
                                 QStringList({settingSlots(0)}));
    calls.clear();
    bindless->TextureManager::unbind();
    EXPECT_EQ(masked(calls), bound(6, 0) + bound(7, 0));
}

TEST_P(BindlessTextureManagerDrawTest, BindingABoundTokenTwiceSharesItsSlot)
{
    withBoundTokens(2);
    bindless->bind(QList{boundToken(0), boundToken(1), boundToken(0)});
    EXPECT_EQ(slotUnits(), QList<int>({7, 6}));
    EXPECT_EQ(slotRefCounts(), QList<int>({2, 1}));
    bindless->unbind({boundToken(1), boundToken(0)});
    EXPECT_EQ(slotRefCounts(), QList<int>({1, 0}));
    bindless->bind(program.get()); // the slot map takes unit 6, the default unit 5
    EXPECT_EQ(uploadedSlots, QList<int>({7, 5}));
    bindless->unbind(program.get());
    bindless->unbind({boundToken(0)});
    EXPECT_TRUE(allUnitsFree());
}

TEST_P(BindlessTextureManagerDrawTest, ReleasedSlotsAreTakenAgain)
{
    withBoundTokens(4);
    bindless->bind(QList{boundToken(0), boundToken(1), boundToken(2)});
    bindless->unbind({boundToken(1), boundToken(0)}); // units 6 and 7
    auto* const elsewhere = wrapped(1)[0];
    ASSERT_TRUE(elsewhere->bind()); // takes unit 7, which slot 0 had
    bindless->bind(QList{boundToken(3), boundToken(0)});
    EXPECT_EQ(slotUnits(), QList<int>({4, 6, 5}));
    EXPECT_EQ(Books::tokenSlotRecords(*bindless), SlotRecords({inSlot(0), inSlot(1), inSlot(2), inSlot(1)}));
    bindless->unbind({boundToken(2), boundToken(3), boundToken(0)});
    elsewhere->unbind();
    EXPECT_TRUE(allUnitsFree());
}

TEST_P(BindlessTextureManagerDrawTest, MoreBoundTokensThanSlotsAreWarnedOfAndCutOff)
{
    withBoundTokens(3);
    bindless->setMaxSlots(2);
    const QList<TextureToken> list = {boundToken(0), boundToken(1), boundToken(2), bindless->tokenForColor(Qt::white)};
    const LogCapture log;
    drawAndRelease(list);
    EXPECT_EQ(log.texts(QtWarningMsg),
              QStringList({"Requesting 3 texture slots but only 2 available. Rendering will be incorrect!"}));
    EXPECT_EQ(log.texts().size(), 1);
    EXPECT_EQ(uploadedSlots, QList<int>({7, 6}));
    EXPECT_EQ(uploadedRecords, SlotRecords({inSlot(0), inSlot(1), inSlot(2)}));
}

TEST_P(BindlessTextureManagerDrawTest, AReissuedTokenKeepsItsRecordUntilItIsBound)
{
    withBoundTokens(2);
    drawAndRelease({boundToken(0), boundToken(1)});
    bindless->deleteTexture(boundToken(0));
    EXPECT_EQ(bindless->tokenForTexture(wrapped(1)[0]), boundToken(0));
    EXPECT_EQ(Books::tokenSlotRecords(*bindless), SlotRecords({inSlot(0), inSlot(1)}));
    EXPECT_EQ(slotMapTexture(), nullptr);
}

TEST_P(BindlessTextureManagerDrawTest, TokensThatAreDeletedShortenTheNextUpload)
{
    withBoundTokens(3);
    drawAndRelease({boundToken(0), boundToken(1), boundToken(2)});
    bindless->deleteTexture(boundToken(2));
    drawAndRelease({boundToken(1), boundToken(0)});
    EXPECT_EQ(uploadedRecords, SlotRecords({inSlot(1), inSlot(0)})) << "the records are longer than the map now";
    EXPECT_EQ(Books::tokenSlotRecords(*bindless).size(), 3);
}

TEST_P(BindlessTextureManagerDrawTest, WarmDrawsMakeAndGrowNothing)
{
    withBoundTokens(3);
    QList<TextureToken> list = {boundToken(0), boundToken(1), boundToken(2)};
    for (Texture* const texture : readOnly(4))
        list.append(bindless->tokenForTexture(texture));
    drawAndRelease(list);
    const auto* const records = Books::recordsPlace(*bindless);
    const int* const units = slotUnits().constData();
    CallLog calls;
    for (int i = 0; i < 10; ++i)
        drawAndRelease(list);
    EXPECT_EQ(calls.list().size(), 10 * (3 * 4 + 4 * 4 + 2 * 2 + 2)) << "binds, residencies and two uniforms";
    EXPECT_EQ(calls.named({"glGenTextures", "glDeleteTextures", "glTexImage2D", "glGetUniformLocation"}),
              QStringList());
    EXPECT_EQ(Books::recordsPlace(*bindless), records);
    EXPECT_EQ(slotUnits().constData(), units);
}

} // namespace Harrow::Vrk::Test
