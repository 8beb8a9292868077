// SPDX-License-Identifier: MIT
//
// SamplerTextureManager on the fake driver: the exact OpenGL calls of a draw, and the books of slots.
#include "SamplerTextureManager.h"

#include "GLSLMacroProcessor.h"
#include "SamplerTextureManagerTestTools.h"

#include <QSet>

namespace Harrow::Vrk::Test
{

class SamplerTextureManagerTest : public SamplerFixture
{
};

// ---- before a draw -------------------------------------------------------------------------------------------------

TEST_F(SamplerTextureManagerTest, TokenZeroIsWhiteFromTheStart)
{
    const CallLog calls;
    const LogCapture log;
    SamplerTextureManager made;
    EXPECT_EQ(made.tokenForColor(Qt::white), TextureToken(0));
    EXPECT_EQ(Tables::maxToken(made), TextureToken(1));
    EXPECT_EQ(made.getMaxSlots(), 8);
    EXPECT_EQ(calls.list(), QStringList());
    EXPECT_EQ(log.texts(), QStringList());
}

TEST_F(SamplerTextureManagerTest, StartsWithRoomForThirtyTwoSlots)
{
    EXPECT_GE(Slots::slotUnits(*sampler).capacity(), 32);
    EXPECT_GE(Slots::slotRefCounts(*sampler).capacity(), 32);
    EXPECT_TRUE(Slots::slotUnits(*sampler).isEmpty());
    EXPECT_TRUE(Slots::slotRefCounts(*sampler).isEmpty());
}

TEST_F(SamplerTextureManagerTest, NamesItsFile)
{
    EXPECT_EQ(sampler->getShaderFile(), QStringLiteral("SamplerTextureManager.glslc"));
}

TEST_F(SamplerTextureManagerTest, SetupDefinesTheKindAndTheNumberOfSlots)
{
    GLSLMacroProcessor processor;
    sampler->setMaxSlots(13);
    sampler->setup(&processor);
    EXPECT_EQ(
        GLSLMacroProcessor::process(QStringLiteral("#version 150"), &processor),
        QStringLiteral("#version 150\n#define TEXTURE_MANAGER_SAMPLER 1\n#define TEXTURE_MANAGER_SLOT_COUNT 13\n"));
}

TEST_F(SamplerTextureManagerTest, SetupHasTheSlotMapUploadedAnew)
{
    drawAndRelease({});
    GLSLMacroProcessor processor;
    sampler->setup(nullptr);
    CallLog calls;
    drawAndRelease({});
    EXPECT_EQ(calls.count("glTexImage2D"), 0) << "not without a processor";
    sampler->setup(&processor);
    calls.clear();
    drawAndRelease({});
    EXPECT_EQ(calls.count("glTexImage2D"), 1);
    calls.clear();
    drawAndRelease({});
    EXPECT_EQ(calls.count("glTexImage2D"), 0);
}

// ---- the calls of a draw -------------------------------------------------------------------------------------------

TEST_F(SamplerTextureManagerTest, TheFirstDrawMakesDefaultAndSlotMap)
{
    withTokens(1);
    const LogCapture log;
    CallLog calls;
    sampler->bind(tokens({1}));
    EXPECT_EQ(masked(calls), bound(7, 1000));
    calls.clear();
    sampler->bind(program.get());
    EXPECT_EQ(masked(calls), makingDefault(6, 1) + makingMap(6, 2) + bound(6, 2) + QStringList({uploadingMap(2)}) +
                                 asking(program->shaderProgramID()) + QStringList({settingMap(6), settingSlots(1)}));
    EXPECT_EQ(uploadedMap, QList<int>({0, 0}));
    EXPECT_EQ(uploadedSlots, QList<int>({7}));
    calls.clear();
    sampler->unbind(program.get());
    EXPECT_EQ(masked(calls), bound(6, 0));
    calls.clear();
    sampler->unbind(tokens({1}));
    EXPECT_EQ(masked(calls), bound(7, 0));
    EXPECT_TRUE(allUnitsFree());
    EXPECT_EQ(log.texts(), QStringList());
}

TEST_F(SamplerTextureManagerTest, TheSameDrawAgainUploadsNoSlotMap)
{
    withTokens(2);
    drawAndRelease(tokens({2, 1}));
    EXPECT_EQ(uploadedMap, QList<int>({0, 1, 0}));
    CallLog calls;
    sampler->bind(tokens({2, 1}));
    sampler->bind(program.get());
    EXPECT_EQ(masked(calls),
              bound(7, 1001) + bound(6, 1000) + bound(5, 2) + QStringList({settingMap(5), settingSlots(2)}));
    EXPECT_EQ(uploadedSlots, QList<int>({7, 6}));
    calls.clear();
    sampler->unbind(program.get());
    sampler->unbind(tokens({2, 1}));
    EXPECT_EQ(masked(calls), bound(5, 0) + bound(7, 0) + bound(6, 0));
}

TEST_F(SamplerTextureManagerTest, ATokenThatMovesHasTheSlotMapUploaded)
{
    withTokens(2);
    drawAndRelease(tokens({1, 2}));
    EXPECT_EQ(uploadedMap, QList<int>({0, 0, 1}));
    CallLog calls;
    drawAndRelease(tokens({2, 1}));
    EXPECT_EQ(calls.named({"glTexImage2D", "glGenTextures"}).size(), 1);
    EXPECT_EQ(uploadedMap, QList<int>({0, 1, 0}));
}

TEST_F(SamplerTextureManagerTest, WithoutAProgramTheOneInUseIsAsked)
{
    drawAndRelease({});
    driver.setInteger(GL_CURRENT_PROGRAM, 77);
    for (int i = 0; i < 2; ++i)
    {
        CallLog calls;
        sampler->TextureManager::bind();
        EXPECT_EQ(masked(calls), bound(7, 2) + QStringList({pointerCall("glGetIntegerv", {GL_CURRENT_PROGRAM})}) +
                                     asking(77) + QStringList({settingMap(7)}) + bound(6, 1) +
                                     QStringList({settingSlots(0)}));
        calls.clear();
        sampler->unbind();
        EXPECT_EQ(masked(calls), bound(6, 0) + bound(7, 0));
    }
}

TEST_F(SamplerTextureManagerTest, ADrawWithoutTokensUploadsNoSlotButBindsTheDefault)
{
    CallLog calls;
    sampler->bind(QList<TextureToken>());
    EXPECT_EQ(calls.list(), QStringList());
    sampler->bind(program.get());
    EXPECT_EQ(masked(calls), makingDefault(7, 1) + makingMap(7, 2) + bound(7, 2) + QStringList({uploadingMap(1)}) +
                                 asking(program->shaderProgramID()) + QStringList({settingMap(7)}) + bound(6, 1) +
                                 QStringList({settingSlots(0)}));
    EXPECT_TRUE(Slots::slotUnits(*sampler).isEmpty());
    calls.clear();
    sampler->unbind(program.get());
    EXPECT_EQ(masked(calls), bound(6, 0) + bound(7, 0));
    EXPECT_TRUE(allUnitsFree());
}

TEST_F(SamplerTextureManagerTest, ANewTokenBetweenTwoDrawsRebuildsTheSlotMap)
{
    withTokens(1);
    drawAndRelease(tokens({1}));
    CallLog calls;
    EXPECT_EQ(sampler->tokenForColor(Qt::red), TextureToken(2));
    EXPECT_EQ(masked(calls), QStringList({pointerCall("glDeleteTextures", {1})}));
    EXPECT_EQ(Slots::slotMapTexture(*sampler), nullptr);
    sampler->bind(tokens({1}));
    calls.clear();
    sampler->bind(program.get());
    EXPECT_EQ(masked(calls), makingMap(6, 3) + bound(6, 3) + QStringList({uploadingMap(3), settingMap(6)}) +
                                 QStringList({settingSlots(1)}));
    EXPECT_EQ(uploadedMap, QList<int>({0, 0, 0}));
    EXPECT_EQ(Access::recorded(*Slots::slotMapTexture(*sampler)), (Recorded{GL_R32I, 3, 1, 0}));
    sampler->unbind(program.get());
    sampler->unbind(tokens({1}));
    EXPECT_TRUE(allUnitsFree());
}

TEST_F(SamplerTextureManagerTest, KnownTokensLeaveTheSlotMapAlone)
{
    const auto textures = withTokens(1);
    drawAndRelease(tokens({1}));
    const CallLog calls;
    sampler->tokenForTexture(textures[0]);
    sampler->tokenForColor(Qt::white);
    EXPECT_EQ(calls.list(), QStringList());
    EXPECT_NE(Slots::slotMapTexture(*sampler), nullptr);
}

TEST_F(SamplerTextureManagerTest, TokensThatAreDeletedShortenTheNextUpload)
{
    withTokens(3);
    drawAndRelease(tokens({1, 2, 3}));
    sampler->deleteTexture(TextureToken(3));
    drawAndRelease(tokens({2, 1}));
    EXPECT_EQ(uploadedMap, QList<int>({0, 1, 0}));
}

// ---- slots ---------------------------------------------------------------------------------------------------------

TEST_F(SamplerTextureManagerTest, ReleasedSlotsAreFilledWithTheDefaultsUnit)
{
    withTokens(3);
    sampler->bind(tokens({1, 2, 3}));
    sampler->unbind(tokens({1, 3}));
    EXPECT_EQ(Slots::slotUnits(*sampler), QList<int>({7, 6, 5})) << "units stay until then";
    EXPECT_EQ(Slots::slotRefCounts(*sampler), QList<int>({0, 1, 0}));
    sampler->bind(program.get()); // the slot map takes unit 7, the default 5
    EXPECT_EQ(uploadedSlots, QList<int>({5, 6, 5}));
    EXPECT_EQ(Slots::defaultTexture(*sampler)->unit(), 5);
    CallLog calls;
    sampler->unbind(program.get());
    EXPECT_EQ(masked(calls), bound(5, 0) + bound(7, 0));
    sampler->unbind(tokens({2}));
    EXPECT_TRUE(allUnitsFree());
}

TEST_F(SamplerTextureManagerTest, TheDefaultStaysUnboundWhereAllSlotsAreHeld)
{
    withTokens(2);
    sampler->bind(tokens({1, 2}));
    sampler->bind(program.get());
    EXPECT_FALSE(Slots::defaultTexture(*sampler)->isBound());
    sampler->unbind(program.get());
    sampler->unbind(tokens({1, 2}));
}

TEST_F(SamplerTextureManagerTest, TheFirstReleasedSlotIsTakenNext)
{
    withTokens(4);
    sampler->bind(tokens({1, 2, 3}));
    sampler->unbind(tokens({2, 1})); // units 6 and 7
    auto* const elsewhere = wrapped(1)[0];
    ASSERT_TRUE(elsewhere->bind()); // takes unit 7, which slot 0 had
    sampler->bind(tokens({4}));
    EXPECT_EQ(Slots::slotUnits(*sampler), QList<int>({7, 6, 5})) << "slot 1 had the unit that the texture has now";
    EXPECT_EQ(Slots::slotRefCounts(*sampler), QList<int>({0, 1, 1}));
    sampler->bind(tokens({1}));
    EXPECT_EQ(Slots::slotUnits(*sampler), QList<int>({4, 6, 5})) << "unit 4 was nobody's: the first slot";
    EXPECT_EQ(Slots::slotRefCounts(*sampler), QList<int>({1, 1, 1}));
    EXPECT_EQ(Slots::tokenToSlot(*sampler), QList<int>({0, 0, 1, 2, 1}));
    sampler->unbind(tokens({3, 4, 1}));
    elsewhere->unbind();
    EXPECT_TRUE(allUnitsFree());
}

TEST_F(SamplerTextureManagerTest, BindingATokenTwiceSharesItsSlot)
{
    withTokens(1);
    sampler->bind(tokens({1, 1}));
    sampler->bind(tokens({1}));
    EXPECT_EQ(Slots::slotUnits(*sampler), QList<int>({7}));
    EXPECT_EQ(Slots::slotRefCounts(*sampler), QList<int>({3}));
    sampler->unbind(tokens({1, 1}));
    EXPECT_EQ(Slots::slotRefCounts(*sampler), QList<int>({1}));
    EXPECT_FALSE(allUnitsFree());
    sampler->unbind(tokens({1}));
    EXPECT_EQ(Slots::slotRefCounts(*sampler), QList<int>({0}));
    EXPECT_TRUE(allUnitsFree());
}

TEST_F(SamplerTextureManagerTest, TwoTokensOfOneTextureShareASlot)
{
    const LogCapture log; // of the file that fails
    withTokens(1);
    const TextureToken corrupt = sampler->tokenForImage(corruptFile(QStringLiteral("corrupt.png")), {});
    ASSERT_EQ(corrupt, TextureToken(2));
    sampler->bind(tokens({1, 2, 0}));
    EXPECT_EQ(Slots::slotRefCounts(*sampler), QList<int>({1, 2}));
    EXPECT_EQ(Slots::tokenToSlot(*sampler), QList<int>({1, 0, 0})) << "the texture's own token has the slot";
    sampler->bind(program.get());
    EXPECT_EQ(uploadedMap, QList<int>({1, 0, 0}));
    EXPECT_EQ(uploadedSlots, QList<int>({7, 6}));
    sampler->unbind(program.get());
    sampler->unbind(tokens({1, 2, 0}));
    EXPECT_EQ(Slots::slotRefCounts(*sampler), QList<int>({0, 0}));
    EXPECT_TRUE(allUnitsFree());
}

TEST_F(SamplerTextureManagerTest, TokensWithoutATextureArePassedOver)
{
    withTokens(1);
    const CallLog calls;
    const LogCapture log;
    sampler->bind(tokens({~quint64(0), 99, 1}));
    sampler->unbind(tokens({~quint64(0), 99, 1}));
    EXPECT_EQ(calls.list(), bound(7, 1000) + bound(7, 0));
    EXPECT_EQ(log.texts(), QStringList());
}

TEST_F(SamplerTextureManagerTest, ASetOfTokensIsBoundToo)
{
    withTokens(2);
    TextureManager& base = *sampler;
    base.bind(QSet<TextureToken>{TextureToken(1), TextureToken(2)});
    EXPECT_EQ(Slots::slotRefCounts(*sampler), QList<int>({1, 1}));
    base.unbind(tokens({1, 2}));
}

TEST_F(SamplerTextureManagerTest, WarmDrawsMakeAndGrowNothing)
{
    withTokens(5);
    const auto list = tokens({1, 2, 3, 4, 5});
    drawAndRelease(list);
    drawAndRelease(list);
    const int* const places[] = {Slots::slotUnits(*sampler).constData(), Slots::slotRefCounts(*sampler).constData(),
                                 Slots::tokenToSlot(*sampler).constData()};
    CallLog calls;
    for (int i = 0; i < 10; ++i)
        drawAndRelease(list);
    EXPECT_EQ(calls.list().size(), 10 * (2 * 5 * 2 + 2 * 2 + 2)) << "binds, unbinds and two uniforms";
    EXPECT_EQ(calls.named({"glGenTextures", "glDeleteTextures", "glTexImage2D", "glGetUniformLocation"}),
              QStringList());
    EXPECT_EQ(Slots::slotUnits(*sampler).constData(), places[0]);
    EXPECT_EQ(Slots::slotRefCounts(*sampler).constData(), places[1]);
    EXPECT_EQ(Slots::tokenToSlot(*sampler).constData(), places[2]);
    EXPECT_EQ(Slots::slotUnits(*sampler).size(), 5);
}

} // namespace Harrow::Vrk::Test
