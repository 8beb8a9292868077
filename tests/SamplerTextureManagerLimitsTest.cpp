// SPDX-License-Identifier: MIT
//
// SamplerTextureManager on the fake driver: more textures, tokens and units than there are, clear, and broken orders.
#include "SamplerTextureManager.h"

#include "GLSLMacroProcessor.h"
#include "SamplerTextureManagerTestTools.h"

namespace Harrow::Vrk::Test
{

class SamplerTextureManagerLimitsTest : public SamplerFixture
{
};

// ---- too many ------------------------------------------------------------------------------------------------------

TEST_F(SamplerTextureManagerLimitsTest, MoreTexturesThanSlotsAreWarnedOfAndCutOff)
{
    withTokens(3);
    sampler->setMaxSlots(2);
    sampler->bind(tokens({1, 2, 3}));
    {
        const LogCapture log;
        sampler->bind(program.get());
        EXPECT_EQ(log.messages(QtWarningMsg),
                  QStringList({"Requesting 3 texture slots but only 2 available. Rendering will be incorrect!"}));
        EXPECT_EQ(log.texts().size(), 1);
    }
    EXPECT_EQ(uploadedSlots, QList<int>({7, 6}));
    EXPECT_EQ(Slots::slotUnits(*sampler), QList<int>({7, 6, 5}));
    EXPECT_EQ(uploadedMap, QList<int>({0, 0, 1, 2}));
    sampler->unbind(program.get());
    sampler->unbind(tokens({1, 2, 3}));
}

TEST_F(SamplerTextureManagerLimitsTest, AsManyTexturesAsSlotsAreNotWarnedOf)
{
    withTokens(2);
    sampler->setMaxSlots(2);
    const LogCapture log;
    drawAndRelease(tokens({1, 2}));
    EXPECT_EQ(log.texts(), QStringList());
    EXPECT_EQ(uploadedSlots, QList<int>({7, 6}));
}

TEST_F(SamplerTextureManagerLimitsTest, ANegativeNumberOfSlotsIsAskedOfOpenGL)
{
    sampler->setMaxSlots(-1);
    const LogCapture log;
    CallLog calls;
    drawAndRelease({});
    EXPECT_EQ(log.messages(QtWarningMsg),
              QStringList({"Requesting 0 texture slots but only -1 available. Rendering will be incorrect!"}));
    EXPECT_TRUE(masked(calls).contains(settingSlots(-1)));
}

TEST_F(SamplerTextureManagerLimitsTest, ATextureWithoutAFreeUnitTakesASlotOfUnitMinusOne)
{
    withTokens(10);
    sampler->bind(tokens({1, 2, 3, 4, 5, 6, 7, 8}));
    const QString noUnit = QStringLiteral("There is no available texture units");
    const auto notBound = [](const char* condition, const char* where)
    {
        return assertionLine(QString::fromLatin1(condition),
                             QStringLiteral("Texture has not been bound on ") + QString::fromLatin1(where));
    };
    const char* const known = "contextInfo.textureToUnitMaps.contains(this->_textureID)";
    {
        const LogCapture log;
        sampler->bind(tokens({9, 10}));
        EXPECT_EQ(log.messages(), QStringList({noUnit, notBound(known, "unit()"), noUnit, notBound(known, "unit()")}));
    }
    EXPECT_EQ(Slots::slotUnits(*sampler), QList<int>({7, 6, 5, 4, 3, 2, 1, 0, -1}));
    EXPECT_EQ(Slots::slotRefCounts(*sampler).last(), 2) << "one unit like any other";
    EXPECT_EQ(Slots::tokenToSlot(*sampler).mid(8), QList<int>({7, 8, 8}));
    {
        const LogCapture log;
        sampler->unbind(tokens({9, 10}));
        EXPECT_EQ(log.messages(), QStringList({notBound(known, "unit()"), notBound(known, "unbind"),
                                               notBound(known, "unit()"), notBound(known, "unbind")}));
    }
    EXPECT_EQ(Slots::slotRefCounts(*sampler).last(), 0);
    sampler->unbind(tokens({1, 2, 3, 4, 5, 6, 7, 8}));
    EXPECT_TRUE(allUnitsFree());
}

TEST_F(SamplerTextureManagerLimitsTest, AsManyTokensAsEveryDriverTakesAskForNoLimit)
{
    for (unsigned i = 1; i < 1024; ++i)
        sampler->tokenForColor(QColor::fromRgba(0xFF000000u | i));
    ASSERT_EQ(Tables::maxToken(*sampler), TextureToken(1024));
    CallLog calls;
    const LogCapture log;
    drawAndRelease({});
    EXPECT_EQ(calls.count("glGetIntegerv"), 0);
    EXPECT_EQ(log.texts(), QStringList());
}

TEST_F(SamplerTextureManagerLimitsTest, MoreTokensThanTheSlotMapTakesAreWarnedOf)
{
    for (unsigned i = 1; i < 1025; ++i)
        sampler->tokenForColor(QColor::fromRgba(0xFF000000u | i));
    {
        CallLog calls;
        const LogCapture log;
        drawAndRelease({});
        EXPECT_EQ(
            log.messages(QtWarningMsg),
            QStringList({"1025 texture tokens but only 1024 fit into the slot map. Rendering will be incorrect!"}));
        EXPECT_EQ(log.texts().size(), 1);
        EXPECT_TRUE(masked(calls).contains(uploadingMap(1025)));
        calls.clear();
        drawAndRelease({});
        EXPECT_EQ(log.texts().size(), 1) << "once for a slot map";
        EXPECT_EQ(calls.count("glGetIntegerv"), 0);
    }
    driver.setInteger(GL_MAX_TEXTURE_SIZE, 2048);
    sampler->tokenForColor(Qt::red);
    const LogCapture log;
    drawAndRelease({});
    EXPECT_EQ(log.texts(), QStringList());
}

// ---- clear and the end ---------------------------------------------------------------------------------------------

TEST_F(SamplerTextureManagerLimitsTest, ClearForgetsSlotsAndLeavesDefaultAndSlotMap)
{
    withTokens(2);
    drawAndRelease(tokens({1, 2}));
    Texture* const map = Slots::slotMapTexture(*sampler);
    Texture* const filler = Slots::defaultTexture(*sampler);
    const CallLog calls;
    sampler->clear();
    EXPECT_EQ(calls.list(), QStringList()) << "the textures are wrapped";
    EXPECT_TRUE(Slots::slotUnits(*sampler).isEmpty());
    EXPECT_TRUE(Slots::slotRefCounts(*sampler).isEmpty());
    EXPECT_TRUE(Slots::tokenToSlot(*sampler).isEmpty());
    EXPECT_GE(Slots::slotUnits(*sampler).capacity(), 32);
    EXPECT_GE(Slots::slotRefCounts(*sampler).capacity(), 32);
    EXPECT_EQ(Slots::slotMapTexture(*sampler), map);
    EXPECT_EQ(Slots::defaultTexture(*sampler), filler);
    EXPECT_EQ(Tables::maxToken(*sampler), TextureToken(0));
}

TEST_F(SamplerTextureManagerLimitsTest, AfterClearTheNextTokenIsZeroAndNoLongerWhite)
{
    withTokens(2);
    drawAndRelease(tokens({1, 2}));
    sampler->clear();
    EXPECT_EQ(sampler->tokenForColor(Qt::red), TextureToken(0));
    EXPECT_EQ(sampler->tokenForColor(Qt::white), TextureToken(1));
    drawAndRelease(tokens({1, 0}));
    EXPECT_EQ(uploadedMap, QList<int>({1, 0}));
    EXPECT_EQ(uploadedSlots, QList<int>({7, 6}));
}

TEST_F(SamplerTextureManagerLimitsTest, ClearWithoutWhiteIssuesItFirst)
{
    drawAndRelease({});
    sampler->textureForToken(TextureToken(0));
    sampler->deleteTexture(TextureToken(0));
    ASSERT_EQ(Tables::maxToken(*sampler), TextureToken(0));
    sampler->clear();
    EXPECT_EQ(Slots::slotMapTexture(*sampler), nullptr) << "as with every token that is issued";
    EXPECT_EQ(Slots::tokenToSlot(*sampler), QList<int>({0}));
    EXPECT_EQ(Tables::maxToken(*sampler), TextureToken(0));
    EXPECT_TRUE(Tables::colorToToken(*sampler).isEmpty());
}

TEST_F(SamplerTextureManagerLimitsTest, ADrawAfterClearWithoutAnyTokenUploadsNoTexel)
{
    drawAndRelease({});
    sampler->clear();
    GLSLMacroProcessor processor;
    sampler->setup(&processor);
    const CallLog calls;
    drawAndRelease({});
    EXPECT_EQ(calls.count("glTexImage2D"), 1);
    EXPECT_EQ(uploadedMap, QList<int>());
    EXPECT_TRUE(allUnitsFree());
}

TEST_F(SamplerTextureManagerLimitsTest, TheEndDeletesDefaultSlotMapAndTextures)
{
    const int before = Texture::NumAlive();
    sampler->bind(tokens({0}));
    sampler->bind(program.get());
    sampler->unbind(program.get());
    sampler->unbind(tokens({0}));
    EXPECT_EQ(Texture::NumAlive(), before + 3);
    sampler.reset();
    EXPECT_EQ(Texture::NumAlive(), before);
}

// ---- broken orders -------------------------------------------------------------------------------------------------

TEST_F(SamplerTextureManagerLimitsTest, UnbindOfAProgramBeforeAnyBindIsReported)
{
    const CallLog calls;
    const LogCapture log;
    sampler->unbind(program.get());
    EXPECT_EQ(log.messages(),
              failure("nullptr != this->_slotMapTexture", "Texture manager is not bound to a program on unbind"));
    EXPECT_EQ(calls.list(), QStringList());
}

TEST_F(SamplerTextureManagerLimitsTest, UnbindAfterATokenWasIssuedMeanwhileStillReleasesTheDefault)
{
    sampler->bind(program.get());
    sampler->tokenForColor(Qt::red);
    const CallLog calls;
    const LogCapture log;
    sampler->unbind(program.get());
    EXPECT_EQ(log.messages(),
              failure("nullptr != this->_slotMapTexture", "Texture manager is not bound to a program on unbind"));
    EXPECT_EQ(calls.list(), bound(6, 0));
}

TEST_F(SamplerTextureManagerLimitsTest, ATokenBeyondTheSlotMapIsReportedAndHasNoSlot)
{
    for (const quint64 stray : {quint64(500), quint64(0x8000000000000005)})
    {
        {
            const LogCapture log;
            sampler->deleteTexture(TextureToken(stray)); // unknown, and issued next
        }
        auto* const texture = wrapped(1)[0];
        ASSERT_EQ(sampler->tokenForTexture(texture), TextureToken(stray));
        const LogCapture log;
        sampler->bind(tokens({stray}));
        EXPECT_EQ(log.messages(),
                  failure("own->token < static_cast<quint64>(this->_tokenToSlot.size())",
                          qPrintable(QStringLiteral("Token %1 has no entry in the slot map").arg(stray))));
        EXPECT_TRUE(texture->isBound());
        EXPECT_EQ(Slots::tokenToSlot(*sampler), QList<int>({0}));
        sampler->bind(program.get());
        EXPECT_EQ(uploadedMap, QList<int>({0}));
        sampler->unbind(program.get());
        sampler->unbind(tokens({stray}));
    }
}

TEST_F(SamplerTextureManagerLimitsTest, ATextureWithoutASlotIsReportedOnUnbindAndUnbound)
{
    const auto textures = withTokens(1);
    textures[0]->bind();
    const LogCapture log;
    sampler->unbind(tokens({1}));
    EXPECT_EQ(log.messages(), failure("slot >= 0", "Texture of token 1 has no slot on unbind"));
    EXPECT_FALSE(textures[0]->isBound());
}

TEST_F(SamplerTextureManagerLimitsTest, TokensThatWereReservedWithoutBeingIssuedHaveEntriesOfZero)
{
    withTokens(1);
    sampler->reserveTokenBlock(3);
    sampler->bind(tokens({1}));
    sampler->bind(program.get());
    EXPECT_EQ(uploadedMap, QList<int>({0, 0, 0, 0, 0}));
    sampler->unbind(program.get());
    sampler->unbind(tokens({1}));
}

} // namespace Harrow::Vrk::Test
