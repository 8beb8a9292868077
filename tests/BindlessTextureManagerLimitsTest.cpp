// SPDX-License-Identifier: MIT
//
// BindlessTextureManager on the fake driver: drivers that break their word, and callers that break theirs.
#include "BindlessTextureManager.h"

#include "BindlessTextureManagerTestTools.h"

namespace Harrow::Vrk::Test
{

class BindlessTextureManagerLimitsTest : public BindlessFixture
{
protected:
    void SetUp() override
    {
        BindlessFixture::SetUp();
        make();
    }

    static QString noToken(unsigned name, quint64 handle)
    {
        return assertionLine(
            QStringLiteral("0u != handle.token && isBindlessToken(handle)"),
            QStringLiteral("Texture %1 has the handle %2, which is no bindless token").arg(name).arg(handle));
    }

    static QString missing(const char* name)
    {
        return QStringLiteral("OpenGL function '%1' is not available").arg(QLatin1String(name));
    }

    /// A manager for a driver that names the extension and lacks one of its entry points.
    void makeWithout(const char* name)
    {
        bindless.reset();
        driver.refuse(name);
        const LogCapture log;
        make();
    }
};

// ---- no handle -----------------------------------------------------------------------------------------------------

TEST_F(BindlessTextureManagerLimitsTest, ATextureWithoutAUsableHandleHasNoToken)
{
    for (const quint64 handle : {quint64(0), quint64(0xFFFFFFFF00000005u), ~quint64(0)})
    {
        auto* const texture = readOnly(1)[0];
        forcedHandle = handle;
        {
            const LogCapture log;
            EXPECT_EQ(bindless->tokenForTexture(texture), INVALID_TOKEN);
            EXPECT_EQ(log.messages(QtCriticalMsg), QStringList({noToken(texture->textureID(), handle)}));
            EXPECT_EQ(log.texts().size(), 1);
        }
        EXPECT_EQ(bindless->findToken(texture), INVALID_TOKEN);
        EXPECT_FALSE(Tables::textureToToken(*bindless).contains(texture));
        EXPECT_TRUE(bindless->issued.isEmpty());
        forcedHandle.reset();
        EXPECT_EQ(bindless->tokenForTexture(texture), bindlessToken(texture->textureID())) << "asked for anew";
        bindless->issued.clear();
    }
    EXPECT_EQ(Tables::maxToken(*bindless), TextureToken(0));
}

TEST_F(BindlessTextureManagerLimitsTest, AColourWithoutAHandleLeavesNothingBehind)
{
    const int before = Texture::NumAlive();
    forcedHandle = 0;
    const LogCapture log;
    EXPECT_EQ(bindless->tokenForColor(Qt::red), INVALID_TOKEN);
    EXPECT_EQ(log.messages(), QStringList({noToken(2, 0)}));
    EXPECT_EQ(bindless->textureForColor(Qt::red), nullptr);
    EXPECT_EQ(Texture::NumAlive(), before);
    EXPECT_FALSE(Tables::colorToToken(*bindless).contains(qRgb(255, 0, 0)));
    forcedHandle.reset();
    EXPECT_EQ(bindless->tokenForColor(Qt::red), bindlessToken(4));
}

TEST_F(BindlessTextureManagerLimitsTest, AFileWithoutAHandleHasTheTokenOfWhite)
{
    const int before = Texture::NumAlive();
    const QString path = pngFile(QStringLiteral("a.png"));
    forcedHandle = 0;
    const LogCapture log;
    EXPECT_EQ(bindless->tokenForImage(path, {}), bindlessToken(1));
    EXPECT_EQ(log.messages(QtCriticalMsg), QStringList({noToken(2, 0)}));
    EXPECT_EQ(Texture::NumAlive(), before);
    EXPECT_TRUE(Tables::pathToToken(*bindless).isEmpty());
}

TEST_F(BindlessTextureManagerLimitsTest, AColourForWhichNoUnitIsFreeHasNoToken)
{
    const auto textures = wrapped(kManyUnits);
    for (Texture* const texture : textures)
        texture->bind();
    const LogCapture log;
    EXPECT_EQ(bindless->tokenForColor(Qt::red), INVALID_TOKEN);
    EXPECT_EQ(log.messages(), QStringList({"There is no available texture units"}));
    for (Texture* const texture : textures)
        texture->unbind();
    EXPECT_NE(bindless->tokenForColor(Qt::red), INVALID_TOKEN);
}

// ---- missing entry points ------------------------------------------------------------------------------------------

TEST_F(BindlessTextureManagerLimitsTest, WithoutEitherExtensionNoTextureHasAToken)
{
    bindless.reset();
    offer({});
    const int before = Texture::NumAlive();
    const LogCapture log;
    make();
    EXPECT_EQ(log.messages(QtCriticalMsg),
              QStringList({assertionLine(QStringLiteral("false"),
                                         QStringLiteral("No known bindless texture support detected. You should not be "
                                                        "using this TextureManager")),
                           missing("glGetTextureHandleARB"), noToken(2, 0)}));
    EXPECT_EQ(log.texts().size(), 3);
    EXPECT_EQ(bindless->tokenForColor(Qt::white), INVALID_TOKEN);
    EXPECT_EQ(bindless->tokenForImage(pngFile(QStringLiteral("a.png")), {}), INVALID_TOKEN);
    EXPECT_EQ(bindless->tokenForTexture(readOnly(1)[0]), INVALID_TOKEN);
    EXPECT_EQ(Texture::NumAlive(), before + 1) << "the caller's";
    EXPECT_EQ(bindless->tokenForTexture(wrapped(1)[0]), boundToken(0)) << "what may change is drawn all the same";
}

TEST_F(BindlessTextureManagerLimitsTest, WithoutTheFunctionThatGivesHandlesThereAreNone)
{
    bindless.reset();
    driver.refuse("glGetTextureHandleARB");
    const LogCapture log;
    make();
    EXPECT_EQ(log.messages(QtCriticalMsg), QStringList({missing("glGetTextureHandleARB"), noToken(2, 0)}));
    EXPECT_EQ(log.messages(QtDebugMsg), QStringList({"Failed to obtain 'glGetTextureHandleARB'"}));
    EXPECT_EQ(bindless->tokenForColor(Qt::white), INVALID_TOKEN);
}

TEST_F(BindlessTextureManagerLimitsTest, WithoutTheFunctionThatMakesResidentNothingIsResident)
{
    makeWithout("glMakeTextureHandleResidentARB");
    const TextureToken token = bindless->tokenForTexture(readOnly(1)[0]);
    const CallLog calls;
    const LogCapture log;
    bindless->bind(QList{token});
    EXPECT_EQ(log.messages(), QStringList({missing("glMakeTextureHandleResidentARB")}));
    bindless->unbind({token});
    EXPECT_EQ(log.texts().size(), 1);
    EXPECT_EQ(calls.list(), QStringList(2, askingResidency(handleOf(1000))));
}

TEST_F(BindlessTextureManagerLimitsTest, WithoutTheFunctionThatEndsResidencyItStays)
{
    makeWithout("glMakeTextureHandleNonResidentARB");
    const TextureToken red = bindless->tokenForColor(Qt::red);
    bindless->bind(QList{red});
    {
        const LogCapture log;
        bindless->unbind({red});
        EXPECT_EQ(log.messages(), QStringList({missing("glMakeTextureHandleNonResidentARB")}));
    }
    const LogCapture log;
    bindless->deleteTexture(red);
    EXPECT_EQ(log.messages(), QStringList({missing("glMakeTextureHandleNonResidentARB")}));
    EXPECT_EQ(bindless->textureForToken(red), nullptr) << "deleted all the same";
}

TEST_F(BindlessTextureManagerLimitsTest, WithoutTheFunctionThatTellsResidencyTheOwnBooksDo)
{
    makeWithout("glIsTextureHandleResidentARB");
    const TextureToken token = bindless->tokenForTexture(readOnly(1)[0]);
    const CallLog calls;
    const LogCapture log;
    bindless->bind(QList{token});
    bindless->bind(QList{token});
    bindless->unbind({token});
    bindless->unbind({token});
    EXPECT_EQ(log.messages(), QStringList(4, missing("glIsTextureHandleResidentARB")));
    EXPECT_EQ(calls.list(), becomingResident(token.token).mid(1) + QStringList({ending(token.token)}));
}

TEST_F(BindlessTextureManagerLimitsTest, MissingFunctionsOfNVAreReportedByTheirNames)
{
    offer({"GL_NV_bindless_texture"});
    makeWithout("glIsTextureHandleResidentNV");
    const LogCapture log;
    bindless->bind(QList{bindless->tokenForTexture(readOnly(1)[0])});
    EXPECT_EQ(log.messages(), QStringList({missing("glIsTextureHandleResidentNV")}));
}

TEST_F(BindlessTextureManagerLimitsTest, TheUniformFunctionIsNotMissed)
{
    bindless.reset();
    driver.refuse("glUniformHandleui64vARB");
    const LogCapture log;
    make();
    EXPECT_EQ(log.messages(), QStringList({"Failed to obtain 'glUniformHandleui64vARB'"}));
    drawAndRelease({bindless->tokenForColor(Qt::white)});
    EXPECT_EQ(log.texts().size(), 1);
}

// ---- slots ---------------------------------------------------------------------------------------------------------

TEST_F(BindlessTextureManagerLimitsTest, ABoundTokenBeyondTheRecordsIsReportedAndHasNoSlot)
{
    {
        const LogCapture log;
        bindless->deleteTexture(boundToken(500)); // unknown, and issued next
    }
    auto* const texture = wrapped(1)[0];
    ASSERT_EQ(bindless->tokenForTexture(texture), boundToken(500));
    EXPECT_TRUE(Books::tokenSlotRecords(*bindless).isEmpty());
    const LogCapture log;
    bindless->bind(QList{boundToken(500)});
    EXPECT_EQ(log.messages(), failure("index < static_cast<quint64>(this->_tokenSlotRecords.size())",
                                      "Token 18446744069414584820 has no entry in the slot map"));
    EXPECT_TRUE(texture->isBound());
    bindless->bind(program.get());
    EXPECT_TRUE(uploadedRecords.isEmpty());
    bindless->unbind(program.get());
    bindless->unbind({boundToken(500)});
    EXPECT_TRUE(allUnitsFree());
}

TEST_F(BindlessTextureManagerLimitsTest, TokensThatWereReservedWithoutBeingIssuedHaveFreshRecords)
{
    withBoundTokens(1);
    bindless->reserveTokenBlock(2);
    drawAndRelease({boundToken(0)});
    EXPECT_EQ(uploadedRecords, SlotRecords({inSlot(0), kFresh, kFresh}));
}

TEST_F(BindlessTextureManagerLimitsTest, ATextureThatBecameReadOnlyStillTakesASlot)
{
    withBoundTokens(1)[0]->setReadOnly();
    const CallLog calls;
    bindless->bind(QList{boundToken(0)});
    EXPECT_EQ(calls.list(), bound(7, 1000));
    bindless->unbind({boundToken(0)});
}

TEST_F(BindlessTextureManagerLimitsTest, ATextureWithoutASlotIsReportedOnUnbindAndUnbound)
{
    const auto textures = withBoundTokens(1);
    textures[0]->bind();
    const LogCapture log;
    bindless->unbind({boundToken(0)});
    EXPECT_EQ(log.messages(), failure("slot >= 0", "Texture of token 18446744069414584320 has no slot on unbind"));
    EXPECT_FALSE(textures[0]->isBound());
}

TEST_F(BindlessTextureManagerLimitsTest, UnbindOfAProgramBeforeAnyBindIsReported)
{
    const LogCapture log;
    bindless->unbind(program.get());
    EXPECT_EQ(log.messages(),
              failure("nullptr != this->_slotMapTexture", "Texture manager is not bound to a program on unbind"));
}

TEST_F(BindlessTextureManagerLimitsTest, MoreBoundTokensThanTheSlotMapTakesAreWarnedOf)
{
    withBoundTokens(1);
    bindless->reserveTokenBlock(1024);
    const LogCapture log;
    drawAndRelease({});
    EXPECT_EQ(log.messages(QtWarningMsg),
              QStringList({"1025 texture tokens but only 1024 fit into the slot map. Rendering will be incorrect!"}));
}

// ---- textures that are gone ----------------------------------------------------------------------------------------

TEST_F(BindlessTextureManagerLimitsTest, ADestroyedTextureIsReportedAndPassedOver)
{
    auto* const texture = new Texture(1u, nullptr);
    texture->setReadOnly();
    forcedHandle = 5;
    const TextureToken token = bindless->tokenForTexture(texture);
    forcedHandle.reset();
    delete texture;
    const CallLog calls;
    const LogCapture log;
    bindless->bind(QList{token});
    bindless->unbind({token});
    EXPECT_EQ(calls.list(), QStringList());
    EXPECT_EQ(log.messages(),
              failure("!texture.isDestroyed()", "Texture of token 5 was destroyed without deleteTexture()") +
                  failure("!texture.isDestroyed()", "Texture of token 5 was destroyed without deleteTexture()"));
    bindless->deleteTexture(token);
}

TEST_F(BindlessTextureManagerLimitsTest, AHandleThatComesAgainBelongsToItsNewTexture)
{
    alignas(Texture) unsigned char place[sizeof(Texture)];
    auto* const first = new (place) Texture(2000u, nullptr);
    first->setReadOnly();
    forcedHandle = 5;
    ASSERT_EQ(bindless->tokenForTexture(first), TextureToken(5));
    first->~Texture();
    auto* const second = readOnly(1)[0];
    {
        const LogCapture log;
        EXPECT_EQ(bindless->tokenForTexture(second), TextureToken(5));
        EXPECT_EQ(log.messages(),
                  failure("!texture.isDestroyed()", "Texture of token 5 was destroyed without deleteTexture()"));
    }
    EXPECT_EQ(bindless->textureForToken(TextureToken(5)), second);
    forcedHandle = 6;
    auto* const third = new (place) Texture(2001u, nullptr); // where the first one was
    third->setReadOnly();
    EXPECT_EQ(bindless->tokenForTexture(third), TextureToken(6));
    EXPECT_EQ(bindless->textureForToken(TextureToken(5)), second);
    bindless->deleteTexture(third);
    third->~Texture();
}

} // namespace Harrow::Vrk::Test
