// SPDX-License-Identifier: MIT
//
// Array2DTextureManager on the fake driver: what a program is asked, what it is given, and what is taken back.
#include "Array2DBindingTestTools.h"

namespace Harrow::Vrk::Test::Array2DDraws
{

// ---- what is asked of a program ------------------------------------------------------------------------------------

TEST_F(Array2DBindingTest, AProgramIsAskedForTheTableAndTheSamplers)
{
    make();
    CallLog calls;
    array2D->bind(program.get());
    EXPECT_EQ(calls.named({"glGetUniformLocation"}),
              asking(program->shaderProgramID(), {kSampleName, kUniformsName, kSlotsName}));
    EXPECT_EQ(calls.list().first(), CallLog::call("glGetUniformLocation", program->shaderProgramID(), kSampleName));
    EXPECT_FALSE(calls.list().contains(pointerCall("glGetIntegerv", {GL_CURRENT_PROGRAM})));
    array2D->unbind(program.get());
}

TEST_F(Array2DBindingTest, AProgramIsAskedForTheTableAndTheHandlesInBindlessMode)
{
    makeBindless();
    CallLog calls;
    array2D->bind(program.get());
    EXPECT_EQ(calls.named({"glGetUniformLocation"}),
              asking(program->shaderProgramID(), {kSampleName, kUniformsName, kHandlesName}));
    array2D->unbind(program.get());
}

TEST_F(Array2DBindingTest, TheProgramInUseIsAskedInTheSameOrder)
{
    make();
    driver.setInteger(GL_CURRENT_PROGRAM, 77);
    CallLog calls;
    array2D->TextureManager::bind();
    EXPECT_EQ(masked(calls.list()).mid(0, 4), QStringList({pointerCall("glGetIntegerv", {GL_CURRENT_PROGRAM})}) +
                                                  asking(77, {kSampleName, kUniformsName, kSlotsName}));
    calls.clear();
    array2D->TextureManager::unbind();
    EXPECT_EQ(masked(calls.list()).mid(0, 4), QStringList({pointerCall("glGetIntegerv", {GL_CURRENT_PROGRAM})}) +
                                                  asking(77, {kSampleName, kUniformsName, kSlotsName}));
    EXPECT_TRUE(allUnitsFree());
}

TEST_F(Array2DBindingTest, TheProgramInUseIsAskedForTheHandlesInBindlessMode)
{
    makeBindless();
    driver.setInteger(GL_CURRENT_PROGRAM, 77);
    const CallLog calls;
    array2D->TextureManager::bind();
    array2D->TextureManager::unbind();
    const QStringList once = asking(77, {kSampleName, kUniformsName, kHandlesName});
    EXPECT_EQ(calls.named({"glGetUniformLocation"}), once + once);
}

TEST_F(Array2DBindingTest, UnbindDoesNotAskAProgramForTheUniformArray)
{
    make();
    array2D->bind(program.get());
    other = std::move(program);
    makeProgram({kSampleName, kUniformsName, kSlotsName});
    CallLog calls;
    array2D->unbind(program.get());
    EXPECT_EQ(calls.named({"glGetUniformLocation"}), asking(program->shaderProgramID(), {kSampleName, kSlotsName}));
}

TEST_F(Array2DBindingTest, ALaterDrawAsksNothingOfAProgram)
{
    make();
    array2D->bind(program.get());
    array2D->unbind(program.get());
    const CallLog calls;
    array2D->bind(program.get());
    array2D->unbind(program.get());
    EXPECT_EQ(calls.count("glGetUniformLocation"), 0);
}

TEST_F(Array2DBindingTest, AProgramWithoutTheUniformsIsLeftAlone)
{
    makeManager();
    makeProgram({});
    const LogCapture log;
    CallLog calls;
    array2D->bind(program.get());
    EXPECT_EQ(calls.list(), asking(program->shaderProgramID(), {kSampleName, kUniformsName, kSlotsName}));
    EXPECT_EQ(Books::bindCount(*array2D), 0);
    EXPECT_TRUE(Books::allSlots(*array2D).isEmpty()) << "no slot was made";
    EXPECT_EQ(Books::pendingTokens(*array2D), tokens({0})) << "nothing was copied";
    calls.clear();
    array2D->unbind(program.get());
    EXPECT_EQ(calls.list(), QStringList());
    EXPECT_EQ(log.texts(), QStringList());
}

TEST_F(Array2DBindingTest, AProgramWithTheHandlesAloneIsNoneOfTheSamplerMode)
{
    makeManager();
    makeProgram({kHandlesName});
    array2D->bind(program.get());
    EXPECT_EQ(Books::bindCount(*array2D), 0);
}

TEST_F(Array2DBindingTest, AProgramWithTheSamplersAloneIsNoneOfTheBindlessMode)
{
    makeBindless();
    makeProgram({kSlotsName});
    array2D->bind(program.get());
    EXPECT_EQ(Books::bindCount(*array2D), 0);
}

TEST_F(Array2DBindingTest, AnyOneOfTheUniformsIsEnough)
{
    makeManager();
    int count = 0;
    for (const char* const name : {kSampleName, kUniformsName, kSlotsName})
    {
        makeProgram({name});
        array2D->bind(program.get());
        EXPECT_EQ(Books::bindCount(*array2D), ++count) << name;
    }
    EXPECT_EQ(Books::allSlots(*array2D).size(), 8);
}

// ---- the calls of a draw -------------------------------------------------------------------------------------------

TEST_F(Array2DBindingTest, TheFirstDrawMakesTheTableAndBindsAllSlots)
{
    make();
    array2D->setMaxSlots(3);
    const TextureToken token = tokenOf(16, 16);
    announce({token}); // the slots are textures 1, 2, 3
    array2D->updateSlots();
    const LogCapture log;
    CallLog calls;
    array2D->bind(program.get());
    EXPECT_EQ(masked(calls.list()), asking(program->shaderProgramID(), {kSampleName, kUniformsName, kSlotsName}) +
                                        QStringList({pointerCall("glGenTextures", {1})}) + bound(15, 4, GL_TEXTURE_1D) +
                                        QStringList({parameter(GL_TEXTURE_1D, GL_TEXTURE_MIN_FILTER, GL_NEAREST),
                                                     parameter(GL_TEXTURE_1D, GL_TEXTURE_MAG_FILTER, GL_NEAREST)}) +
                                        bound(15, 0, GL_TEXTURE_1D) + bound(15, 4, GL_TEXTURE_1D) +
                                        QStringList({uploadingTable(4), settingSample(15)}) +
                                        bound(14, 1, GL_TEXTURE_2D_ARRAY) + bound(13, 2, GL_TEXTURE_2D_ARRAY) +
                                        bound(12, 3, GL_TEXTURE_2D_ARRAY) + QStringList({settingSlots(3)}));
    EXPECT_EQ(uploadedTable, QList<int>({-1, 0, 0, 0, 0, 0, 0, 0, /**/ 0, 0, 0, 0, 0, 0, 0, 0}));
    EXPECT_EQ(uploadedSlots, QList<int>({14, 13, 12}));
    EXPECT_EQ(Books::slotUnits(*array2D), QList<int>({14, 13, 12}));
    EXPECT_EQ(Books::slotMapTexture(*array2D)->target(), GLenum(GL_TEXTURE_1D));
    EXPECT_FALSE(Books::slotMapDirty(*array2D));
    EXPECT_EQ(Books::bindCount(*array2D), 1);
    calls.clear();
    array2D->unbind(program.get());
    EXPECT_EQ(calls.list(), bound(14, 0, GL_TEXTURE_2D_ARRAY) + bound(13, 0, GL_TEXTURE_2D_ARRAY) +
                                bound(12, 0, GL_TEXTURE_2D_ARRAY) + bound(15, 0, GL_TEXTURE_1D));
    EXPECT_EQ(Books::bindCount(*array2D), 0);
    EXPECT_TRUE(allUnitsFree());
    EXPECT_EQ(log.texts(), QStringList());
}

TEST_F(Array2DBindingTest, AWarmDrawBindsAndSetsAndNoMore)
{
    make();
    array2D->setMaxSlots(2);
    announce({tokenOf(16, 16)}); // the slots are textures 1 and 2
    array2D->bind(program.get());
    array2D->unbind(program.get());
    CallLog calls;
    announce({TextureToken(1)});
    array2D->bind(program.get());
    EXPECT_EQ(masked(calls.list()), bound(15, 3, GL_TEXTURE_1D) + QStringList({settingSample(15)}) +
                                        bound(14, 1, GL_TEXTURE_2D_ARRAY) + bound(13, 2, GL_TEXTURE_2D_ARRAY) +
                                        QStringList({settingSlots(2)}));
    array2D->unbind(program.get());
}

TEST_F(Array2DBindingTest, SlotsAreBoundInTheirOrderWhetherInUseOrNot)
{
    make();
    array2D->bind(program.get());
    EXPECT_EQ(uploadedSlots, QList<int>({14, 13, 12, 11, 10, 9, 8, 7}));
    for (int index = 0; index < 8; ++index)
        EXPECT_EQ(slot(index).texture->unit(), 14 - index);
    array2D->unbind(program.get());
    Texture* const elsewhere = newTextureOf(sized(1, 1));
    ASSERT_TRUE(slot(3).texture->bind()); // has unit 15 before the draw
    ASSERT_TRUE(elsewhere->bind());
    array2D->bind(program.get());
    EXPECT_EQ(uploadedSlots, QList<int>({12, 11, 10, 15, 9, 8, 7, 6})) << "the table has unit 13";
    array2D->unbind(program.get());
    elsewhere->unbind();
    slot(3).texture->unbind();
    EXPECT_TRUE(allUnitsFree());
}

TEST_F(Array2DBindingTest, DrawsWithinDrawsCountBinds)
{
    make();
    array2D->bind(program.get());
    array2D->bind(program.get());
    EXPECT_EQ(Books::bindCount(*array2D), 2);
    array2D->unbind(program.get());
    EXPECT_EQ(Books::bindCount(*array2D), 1);
    EXPECT_EQ(slot(0).texture->unit(), 14) << "still bound";
    array2D->unbind(program.get());
    EXPECT_EQ(Books::bindCount(*array2D), 0);
    EXPECT_TRUE(allUnitsFree());
}

TEST_F(Array2DBindingTest, AProgramWithoutSamplersBindsNoSlot)
{
    makeManager();
    makeProgram({kSampleName});
    CallLog calls;
    array2D->bind(program.get());
    EXPECT_EQ(toProgram(calls).mid(3), QStringList({uploadingTable(2), settingSample(15)}));
    EXPECT_EQ(TextureUnits::ofCurrentContext().textureToUnitMaps.size(), 1);
    calls.clear();
    array2D->unbind(program.get());
    EXPECT_EQ(calls.list(), bound(15, 0, GL_TEXTURE_1D));
}

TEST_F(Array2DBindingTest, AProgramOfSamplersAloneHasNoTable)
{
    makeManager();
    makeProgram({kSlotsName});
    const CallLog calls;
    array2D->bind(program.get());
    EXPECT_EQ(toProgram(calls).mid(3), QStringList({settingSlots(8)}));
    EXPECT_EQ(Books::slotMapTexture(*array2D), nullptr);
    array2D->unbind(program.get());
    EXPECT_TRUE(allUnitsFree());
}

// ---- the table as uniforms -----------------------------------------------------------------------------------------

TEST_F(Array2DBindingTest, TheUniformArrayTakesTwoVectorsForEachToken)
{
    makeManager();
    makeProgram({kUniformsName, kSlotsName});
    announce({tokenOf(16, 16), tokenOf(8, 8)});
    CallLog calls;
    array2D->bind(program.get());
    EXPECT_EQ(toProgram(calls).mid(3), QStringList({settingUniforms(6), settingSlots(8)}));
    EXPECT_EQ(uploadedUniforms, wordsOf(3));
    EXPECT_EQ(uploadedUniforms.mid(8), QList<int>({0, 0, 0, 0, 0, 0, 0, 0, /**/ 1, 0, 0, 0, 0, 0, 0, 0}));
}

TEST_F(Array2DBindingTest, TheUniformArrayTakes64TokensAndNoMore)
{
    makeManager();
    makeProgram({kUniformsName, kSlotsName});
    for (int count = 1; count < 63; ++count)
        array2D->tokenForColor(QColor(count, 0, 0));
    const struct
    {
        int tokens;
        int vectors;
    } rows[] = {{63, 126}, {64, 128}, {65, 128}, {66, 128}};
    for (const auto& row : rows)
    {
        ASSERT_EQ(Books::records(*array2D).size(), row.tokens);
        const CallLog calls;
        array2D->bind(program.get());
        EXPECT_EQ(masked(calls.named({"glUniform4iv"})), QStringList({settingUniforms(row.vectors)}));
        EXPECT_EQ(uploadedUniforms, wordsOf(row.vectors / 2));
        array2D->tokenForColor(QColor(0, row.tokens, 0));
    }
}

TEST_F(Array2DBindingTest, TheUniformArrayIsSetInEveryDrawAndLeavesTheTableDirty)
{
    makeManager();
    makeProgram({kUniformsName, kSlotsName});
    ASSERT_TRUE(Books::slotMapDirty(*array2D));
    for (int draw = 0; draw < 3; ++draw)
    {
        const CallLog calls;
        array2D->bind(program.get());
        EXPECT_EQ(calls.count("glUniform4iv"), 1);
        EXPECT_EQ(calls.count("glTexImage1D"), 0);
        EXPECT_TRUE(Books::slotMapDirty(*array2D));
    }
    const TextureToken late = tokenOf(16, 16);
    announce({late});
    array2D->bind(program.get());
    EXPECT_EQ(uploadedUniforms, wordsOf(2)) << "always the present table";
    EXPECT_EQ(uploadedUniforms[8], 0);
}

TEST_F(Array2DBindingTest, WithBothStoresTheUniformsComeFirst)
{
    makeManager();
    makeProgram({kSampleName, kUniformsName, kSlotsName});
    CallLog calls;
    array2D->bind(program.get());
    EXPECT_EQ(toProgram(calls).mid(3),
              QStringList({settingUniforms(2), uploadingTable(2), settingSample(15), settingSlots(8)}));
    array2D->unbind(program.get());
    calls.clear();
    array2D->bind(program.get());
    EXPECT_EQ(toProgram(calls), QStringList({settingUniforms(2), settingSample(15), settingSlots(8)})) << "clean";
    array2D->unbind(program.get());
}

// ---- the table as a texture ----------------------------------------------------------------------------------------

TEST_F(Array2DBindingTest, TheTableIsUploadedWhenItHasChanged)
{
    make();
    const auto draw = [this]
    {
        const CallLog calls;
        array2D->bind(program.get());
        array2D->unbind(program.get());
        return masked(calls.named({"glTexImage1D"}));
    };
    EXPECT_EQ(draw(), QStringList({uploadingTable(2)})) << "the first one";
    EXPECT_EQ(draw(), QStringList());
    const TextureToken token = tokenOf(16, 16);
    EXPECT_EQ(draw(), QStringList({uploadingTable(4)})) << "a token more";
    EXPECT_EQ(draw(), QStringList());
    announce({token});
    EXPECT_EQ(draw(), QStringList({uploadingTable(4)})) << "placed";
    EXPECT_EQ(uploadedTable, wordsOf(2));
    announce({token});
    EXPECT_EQ(draw(), QStringList()) << "placed already";
    array2D->deleteTexture(token);
    EXPECT_EQ(draw(), QStringList({uploadingTable(4)})) << "revoked";
    EXPECT_EQ(uploadedTable, wordsOf(2));
    EXPECT_EQ(uploadedTable[8], -1);
    EXPECT_EQ(Books::slotMapTexture(*array2D)->textureID(), 9u) << "one texture for all";
}

TEST_F(Array2DBindingTest, ATableBeyondTheLargestTextureIsCutAndTold)
{
    driver.setInteger(GL_MAX_TEXTURE_SIZE, 1024);
    make();
    array2D->textureTokenIssued(TextureToken(511));
    {
        const LogCapture log;
        const CallLog calls;
        array2D->bind(program.get());
        array2D->unbind(program.get());
        EXPECT_EQ(masked(calls.named({"glTexImage1D"})), QStringList({uploadingTable(1024)}));
        EXPECT_EQ(log.texts(), QStringList());
    }
    array2D->textureTokenIssued(TextureToken(599));
    const LogCapture log;
    const CallLog calls;
    array2D->bind(program.get());
    array2D->unbind(program.get());
    EXPECT_EQ(masked(calls.named({"glTexImage1D"})), QStringList({uploadingTable(1024)}));
    EXPECT_EQ(log.messages(QtWarningMsg), QStringList({"600 texture tokens but only 512 fit into the slot map. "
                                                       "Rendering will be incorrect!"}));
    array2D->bind(program.get());
    array2D->unbind(program.get());
    EXPECT_EQ(log.texts().size(), 1) << "told when uploaded";
}

TEST_F(Array2DBindingTest, WithoutAUnitTheTableIsNotUploaded)
{
    driver.setInteger(GL_MAX_TEXTURE_IMAGE_UNITS, 2);
    TextureTestAccess::forgetContexts();
    make();
    const auto others = wrapped(2);
    array2D->setMaxSlots(1);
    array2D->bind(program.get()); // makes all textures
    array2D->unbind(program.get());
    array2D->textureTokenIssued(TextureToken(1));
    for (Texture* const texture : others)
        ASSERT_TRUE(texture->bind());
    const LogCapture log;
    CallLog calls;
    array2D->bind(program.get());
    EXPECT_EQ(calls.count("glTexImage1D"), 0) << "it would go to somebody else's texture";
    EXPECT_TRUE(Books::slotMapDirty(*array2D));
    EXPECT_EQ(uploadedSlots, QList<int>({-1}));
    EXPECT_EQ(log.messages(QtWarningMsg),
              QStringList({"There is no available texture units", "There is no available texture units"}));
    for (Texture* const texture : others)
        texture->unbind();
    array2D->bind(program.get());
    EXPECT_EQ(masked(calls.named({"glTexImage1D"})), QStringList({uploadingTable(4)}));
}

// ---- unbind --------------------------------------------------------------------------------------------------------

TEST_F(Array2DBindingTest, UnbindWithoutABindAsksNothing)
{
    make();
    const LogCapture log;
    const CallLog calls;
    array2D->unbind(program.get());
    array2D->TextureManager::unbind();
    EXPECT_EQ(calls.list(), QStringList());
    EXPECT_EQ(log.texts(), QStringList());
    EXPECT_EQ(Books::bindCount(*array2D), 0);
}

TEST_F(Array2DBindingTest, UnbindOfAProgramWithoutTheUniformsLeavesTheCount)
{
    make();
    array2D->bind(program.get());
    const std::unique_ptr<ShaderProgram> served = std::move(program);
    makeProgram({});
    array2D->unbind(program.get());
    EXPECT_EQ(Books::bindCount(*array2D), 1);
    EXPECT_EQ(slot(0).texture->unit(), 14);
    array2D->unbind(served.get());
    EXPECT_EQ(Books::bindCount(*array2D), 0);
    EXPECT_TRUE(allUnitsFree());
}

TEST_F(Array2DBindingTest, UnbindOfAProgramOfTheUniformArrayAloneLeavesTheCount)
{
    makeManager();
    makeProgram({kUniformsName});
    array2D->bind(program.get());
    ASSERT_EQ(Books::bindCount(*array2D), 1);
    array2D->unbind(program.get());
    EXPECT_EQ(Books::bindCount(*array2D), 1) << "it is not asked for that array";
}

TEST_F(Array2DBindingTest, UnbindOfTheProgramInUseKnowsTheUniformArray)
{
    makeManager();
    makeProgram({kUniformsName});
    driver.setInteger(GL_CURRENT_PROGRAM, GLint(program->shaderProgramID()));
    array2D->TextureManager::bind();
    ASSERT_EQ(Books::bindCount(*array2D), 1);
    array2D->TextureManager::unbind();
    EXPECT_EQ(Books::bindCount(*array2D), 0);
}

TEST_F(Array2DBindingTest, UnbindFreesWhatTheProgramDeclares)
{
    make();
    array2D->bind(program.get());
    const std::unique_ptr<ShaderProgram> served = std::move(program);
    makeProgram({kSampleName});
    array2D->unbind(program.get());
    EXPECT_EQ(TextureUnits::ofCurrentContext().textureToUnitMaps.size(), 8) << "the slots, but not the table";
    array2D->bind(served.get());
    makeProgram({kSlotsName});
    array2D->unbind(program.get());
    EXPECT_EQ(TextureUnits::ofCurrentContext().textureToUnitMaps.size(), 9) << "the slots were bound twice";
    array2D->bind(served.get());
    array2D->unbind(served.get());
    array2D->bind(served.get());
    array2D->unbind(served.get());
    EXPECT_EQ(Books::bindCount(*array2D), 0);
}

TEST_F(Array2DBindingTest, UnbindOfATableThatWasNeverMadeDoesNothing)
{
    makeManager();
    makeProgram({kUniformsName});
    array2D->bind(program.get());
    makeProgram({kSampleName});
    const LogCapture log;
    array2D->unbind(program.get());
    EXPECT_EQ(Books::bindCount(*array2D), 0);
    EXPECT_EQ(log.texts(), QStringList());
}

// ---- handles -------------------------------------------------------------------------------------------------------

TEST_F(Array2DBindingTest, HandlesOfAllSlotsAreSetLowWordFirst)
{
    makeBindless();
    array2D->setMaxSlots(3);
    announce({tokenOf(16, 16), tokenOf(8, 8)});
    CallLog calls;
    array2D->bind(program.get());
    EXPECT_EQ(handleOfSlot(0), giveHandle(1));
    EXPECT_EQ(handleOfSlot(1), giveHandle(2));
    EXPECT_EQ(toProgram(calls).mid(3), QStringList({uploadingTable(6), settingSample(15), settingHandles(3)}));
    EXPECT_EQ(uploadedHandles, QList<GLuint>({0x40, 1, 0x40, 2, 0, 0})) << "none for the slot without a texture";
    EXPECT_EQ(Books::slotHandles(*array2D), QList<quint64>({giveHandle(1), giveHandle(2), 0}));
    EXPECT_EQ(record(TextureToken(1)), (Record{0, 0, 0x40, 1, 0, 0, 0, 0}));
    EXPECT_EQ(record(TextureToken(2)), (Record{1, 0, 0x40, 2, 0, 0, 0, 0}));
    EXPECT_EQ(uploadedTable, wordsOf(3)) << "with the handles";
    EXPECT_EQ(TextureUnits::ofCurrentContext().textureToUnitMaps.size(), 1) << "slots are not bound";
    calls.clear();
    array2D->unbind(program.get());
    EXPECT_EQ(calls.list(), bound(15, 0, GL_TEXTURE_1D));
}

TEST_F(Array2DBindingTest, HandlesBecomeResidentOnceAndStaySo)
{
    makeBindless();
    announce({tokenOf(16, 16)});
    const QStringList asked = {CallLog::call("glIsTextureHandleResidentARB", giveHandle(1))};
    const QStringList made = {CallLog::call("glMakeTextureHandleResidentARB", giveHandle(1))};
    const auto residency = [](const CallLog& calls)
    {
        return calls.named(
            {"glIsTextureHandleResidentARB", "glMakeTextureHandleResidentARB", "glMakeTextureHandleNonResidentARB"});
    };
    CallLog calls;
    array2D->updateSlots();
    calls.clear();
    array2D->bind(program.get());
    EXPECT_EQ(residency(calls), asked + made);
    EXPECT_EQ(slot(0).residentCount, 1);
    EXPECT_EQ(slot(1).residentCount, 0) << "has no handle";
    calls.clear();
    array2D->bind(program.get());
    EXPECT_EQ(residency(calls), asked);
    EXPECT_EQ(slot(0).residentCount, 2);
    calls.clear();
    array2D->unbind(program.get());
    EXPECT_EQ(slot(0).residentCount, 1);
    array2D->unbind(program.get());
    EXPECT_EQ(slot(0).residentCount, 0);
    EXPECT_EQ(residency(calls), QStringList());
    EXPECT_TRUE(residents.contains(giveHandle(1))) << "residency outlasts the draw";
    array2D->bind(program.get());
    EXPECT_EQ(residency(calls), asked);
    array2D->unbind(program.get());
    array2D.reset();
    EXPECT_EQ(residents, QSet<GLuint64>());
}

TEST_F(Array2DBindingTest, ASlotThatGrowsWithinADrawStartsToCountAnew)
{
    makeBindless();
    announce({tokenOf(16, 16)});
    array2D->bind(program.get());
    array2D->bind(program.get());
    ASSERT_EQ(slot(0).residentCount, 2);
    announce({tokenOf(16, 16)});
    array2D->bind(program.get());
    EXPECT_EQ(slot(0).residentCount, 1);
    EXPECT_NE(handleOfSlot(0), giveHandle(1));
    EXPECT_EQ(residents, QSet<GLuint64>({handleOfSlot(0)})) << "the old one is gone";
    EXPECT_EQ(record(TextureToken(1))[3], record(TextureToken(2))[3]);
    EXPECT_EQ(uploadedTable, wordsOf(3));
    array2D->unbind(program.get());
    array2D->unbind(program.get());
    EXPECT_EQ(slot(0).residentCount, 0) << "not below";
    array2D->unbind(program.get());
    EXPECT_EQ(slot(0).residentCount, 0);
    EXPECT_EQ(Books::bindCount(*array2D), 0);
}

TEST_F(Array2DBindingTest, TheSamplerModeCountsAndAsksForNoResidency)
{
    makeBindless();
    announce({tokenOf(16, 16)});
    array2D->bind(program.get());
    array2D->unbind(program.get());
    array2D->bind(program.get());
    array2D->setBindMode(Array2DTextureManager::BindSamplers);
    makeProgram({kSampleName, kSlotsName});
    const CallLog calls;
    array2D->bind(program.get());
    array2D->unbind(program.get());
    EXPECT_EQ(calls.named({"glIsTextureHandleResidentARB", "glMakeTextureHandleResidentARB"}), QStringList());
    EXPECT_EQ(slot(0).residentCount, 1);
}

TEST_F(Array2DBindingTest, BindlessModeWithoutTheFunctionsIsReportedAndHasNoHandles)
{
    makeManager(); // of a driver without the extension
    array2D->setBindMode(Array2DTextureManager::BindBindless);
    makeProgram({kSampleName, kHandlesName});
    array2D->setMaxSlots(2);
    announce({tokenOf(16, 16)});
    const LogCapture log;
    array2D->bind(program.get());
    EXPECT_EQ(uploadedHandles, QList<GLuint>({0, 0, 0, 0}));
    EXPECT_EQ(log.messages(), QStringList({assertionLine("nullptr != this->_bindless->getTextureHandle",
                                                         "Bindless textures are not supported")}));
    array2D->unbind(program.get());
}

TEST_F(Array2DBindingTest, BindlessModeIsSupportedWithTheExtensionAlone)
{
    EXPECT_FALSE(Array2DTextureManager::isBindlessSupported());
    driver.setExtensions({"GL_NV_bindless_texture"});
    GLRuntimeTestAccess::forgetExtensionsOf(driver.currentContext());
    EXPECT_FALSE(Array2DTextureManager::isBindlessSupported());
    driver.setExtensions({"GL_ARB_bindless_texture"});
    GLRuntimeTestAccess::forgetExtensionsOf(driver.currentContext());
    EXPECT_TRUE(Array2DTextureManager::isBindlessSupported());
}

} // namespace Harrow::Vrk::Test::Array2DDraws
