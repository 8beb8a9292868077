// SPDX-License-Identifier: MIT
//
// BindlessTextureManager on the fake driver: which tokens there are, who gets which, and how they end.
#include "BindlessTextureManager.h"

#include "BindlessTextureManagerTestTools.h"
#include "GLSLMacroProcessor.h"
#include "TextureIO.h"

#include <QDir>
#include <QScopeGuard>

namespace Harrow::Vrk::Test
{

class BindlessTextureManagerTest : public BindlessFixture
{
protected:
    void SetUp() override
    {
        BindlessFixture::SetUp();
        make();
    }

    /// The defines that `setup` makes, of the manager for `extensions`.
    QString definesWith(const QList<QByteArray>& extensions)
    {
        bindless.reset();
        offer(extensions);
        make();
        bindless->setMaxSlots(13);
        GLSLMacroProcessor processor;
        bindless->setup(&processor);
        return GLSLMacroProcessor::process(QStringLiteral("#version 400"), &processor);
    }

    /// The bindless entry points that the making of a manager looks up.
    QList<QByteArray> lookupsWith(const QList<QByteArray>& extensions)
    {
        bindless.reset();
        offer(extensions);
        driver.procLookups.clear();
        make();
        QList<QByteArray> handleLookups;
        for (const QByteArray& name : std::as_const(driver.procLookups))
            if (name.contains("Handle"))
                handleLookups.append(name);
        return handleLookups;
    }

    static QList<QByteArray> entryPoints(const QByteArray& suffix)
    {
        return {"glGetTextureHandle" + suffix, "glMakeTextureHandleResident" + suffix,
                "glMakeTextureHandleNonResident" + suffix, "glUniformHandleui64v" + suffix,
                "glIsTextureHandleResident" + suffix};
    }
};

// ---- the extensions ------------------------------------------------------------------------------------------------

TEST_F(BindlessTextureManagerTest, EitherExtensionSupportsIt)
{
    EXPECT_TRUE(BindlessTextureManager::isSupported());
    offer({"GL_NV_bindless_texture"});
    EXPECT_TRUE(BindlessTextureManager::isSupported());
    offer({"GL_ARB_bindless_texture", "GL_NV_bindless_texture"});
    EXPECT_TRUE(BindlessTextureManager::isSupported());
    offer({"GL_NV_bindless_multi_draw_indirect", "GL_ARB_texture_rg"});
    EXPECT_FALSE(BindlessTextureManager::isSupported());
}

TEST_F(BindlessTextureManagerTest, TheEntryPointsOfOneExtensionAreLookedUpAndARBGoesFirst)
{
    EXPECT_EQ(lookupsWith({"GL_ARB_bindless_texture"}), entryPoints("ARB"));
    EXPECT_EQ(lookupsWith({"GL_NV_bindless_texture"}), entryPoints("NV"));
    EXPECT_EQ(lookupsWith({"GL_NV_bindless_texture", "GL_ARB_bindless_texture"}), entryPoints("ARB"));
}

TEST_F(BindlessTextureManagerTest, SetupDefinesTheKindTheSlotsAndTheExtension)
{
    const auto with = [](const char* extension)
    {
        return QStringLiteral("#version 400\n#define TEXTURE_MANAGER_BINDLESS 1\n"
                              "#define TEXTURE_MANAGER_BINDLESS_%1 1\n#define TEXTURE_MANAGER_SLOT_COUNT 13\n")
            .arg(QLatin1String(extension));
    };
    EXPECT_EQ(definesWith({"GL_ARB_bindless_texture"}), with("ARB"));
    EXPECT_EQ(definesWith({"GL_NV_bindless_texture"}), with("NV"));
    EXPECT_EQ(definesWith({"GL_ARB_bindless_texture", "GL_NV_bindless_texture"}), with("ARB"));
}

TEST_F(BindlessTextureManagerTest, NamesItsFileAndHasNoUDIMs)
{
    EXPECT_EQ(bindless->getShaderFile(), QStringLiteral("BindlessTextureManager.glslc"));
    EXPECT_FALSE(bindless->supportsUDIMs());
    EXPECT_EQ(bindless->createUDIMToken(), INVALID_TOKEN);
}

TEST_F(BindlessTextureManagerTest, TheInstanceIsBindlessWhereThatIsSupported)
{
    for (const char* const extension : {"GL_ARB_bindless_texture", "GL_NV_bindless_texture"})
    {
        offer({extension});
        const LogCapture log;
        auto* const instance = dynamic_cast<BindlessTextureManager*>(&TextureManager::Instance());
        const auto cleanup = qScopeGuard([instance] { delete instance; });
        ASSERT_NE(instance, nullptr);
        EXPECT_EQ(instance->getMaxSlots(), 8);
        EXPECT_EQ(log.texts(), QStringList({"BindlessTextureManager"}));
        EXPECT_EQ(log.texts(QtDebugMsg), QStringList({"BindlessTextureManager"}));
        EXPECT_EQ(&TextureManager::Instance(), instance) << "made once";
    }
}

// ---- the start -----------------------------------------------------------------------------------------------------

TEST_F(BindlessTextureManagerTest, WhiteIsMadeAtTheStart)
{
    bindless.reset();
    CallLog colorCalls;
    delete MakeColorTexture(Qt::white);
    const QStringList making = masked(colorCalls).mid(0, colorCalls.list().size() - 1); // without its deletion
    const CallLog calls;
    const LogCapture log;
    make();
    EXPECT_EQ(masked(calls).size(), making.size() + 1);
    EXPECT_EQ(calls.list().last(), gettingHandle(3));
    EXPECT_EQ(bindless->tokenForColor(Qt::white), bindlessToken(3));
    EXPECT_EQ(bindless->getMaxSlots(), 8);
    EXPECT_EQ(Tables::maxToken(*bindless), TextureToken(0)) << "issued by the driver";
    EXPECT_TRUE(bindless->textureForColor(Qt::white)->isReadOnly());
    EXPECT_TRUE(Books::tokenSlotRecords(*bindless).isEmpty());
    EXPECT_EQ(slotMapTexture(), nullptr);
    EXPECT_EQ(log.texts(), QStringList());
}

TEST_F(BindlessTextureManagerTest, StartsWithRoomForThirtyTwoSlots)
{
    EXPECT_GE(slotUnits().capacity(), 32);
    EXPECT_GE(slotRefCounts().capacity(), 32);
    EXPECT_TRUE(slotUnits().isEmpty());
}

// ---- the two kinds of token ----------------------------------------------------------------------------------------

TEST_F(BindlessTextureManagerTest, TheHighWordTellsTheKind)
{
    for (const quint64 value : {quint64(0), quint64(1), quint64(0xFFFFFFFFu), quint64(0x100000000u),
                                quint64(0xFFFFFFFE00000000u), quint64(0xFFFFFFFEFFFFFFFFu)})
        EXPECT_TRUE(bindless->isBindlessToken(TextureToken(value))) << value;
    for (const quint64 value :
         {quint64(0xFFFFFFFF00000000u), quint64(0xFFFFFFFF00000001u), quint64(0xFFFFFFFFFFFFFFFFu)})
        EXPECT_FALSE(bindless->isBindlessToken(TextureToken(value))) << value;
}

TEST_F(BindlessTextureManagerTest, AReadOnlyTexturesTokenIsItsHandle)
{
    const auto textures = readOnly(2);
    const CallLog calls;
    for (const GLuint name : {1000u, 1001u})
        EXPECT_EQ(bindless->tokenForTexture(textures[name - 1000]), bindlessToken(name));
    EXPECT_EQ(calls.list(), QStringList({gettingHandle(1000), gettingHandle(1001)}));
    EXPECT_EQ(bindless->tokenForTexture(textures[0]), bindlessToken(1000)) << "mapped";
    EXPECT_EQ(calls.list().size(), 2);
    EXPECT_EQ(bindless->textureForToken(bindlessToken(1001)), textures[1]);
    EXPECT_EQ(bindless->findToken(textures[1]), bindlessToken(1001));
    EXPECT_EQ(Tables::maxToken(*bindless), TextureToken(0));
    EXPECT_EQ(bindless->issued, QList<TextureToken>({bindlessToken(1000), bindlessToken(1001)}));
    EXPECT_TRUE(Books::tokenSlotRecords(*bindless).isEmpty());
}

TEST_F(BindlessTextureManagerTest, ATextureThatMayChangeHasABoundToken)
{
    const CallLog calls;
    const auto textures = withBoundTokens(3);
    EXPECT_EQ(calls.list(), QStringList());
    EXPECT_EQ(Tables::maxToken(*bindless), TextureToken(3));
    EXPECT_EQ(bindless->textureForToken(boundToken(1)), textures[1]);
    EXPECT_EQ(bindless->issued, QList<TextureToken>({boundToken(0), boundToken(1), boundToken(2)}));
    EXPECT_EQ(Books::tokenSlotRecords(*bindless), SlotRecords({kFresh, kFresh, kFresh}));
}

TEST_F(BindlessTextureManagerTest, ABoundTokenStaysWhenItsTextureBecomesReadOnly)
{
    const auto textures = withBoundTokens(1);
    textures[0]->setReadOnly();
    const CallLog calls;
    EXPECT_EQ(bindless->tokenForTexture(textures[0]), boundToken(0));
    EXPECT_EQ(calls.list(), QStringList());
    const auto later = wrapped(1);
    later[0]->setReadOnly();
    EXPECT_EQ(bindless->tokenForTexture(later[0]), bindlessToken(1001));
}

TEST_F(BindlessTextureManagerTest, NullHasTheInvalidToken)
{
    const CallLog calls;
    const LogCapture log;
    EXPECT_EQ(bindless->tokenForTexture(nullptr), INVALID_TOKEN);
    EXPECT_EQ(bindless->textureForToken(INVALID_TOKEN), nullptr);
    EXPECT_EQ(calls.list(), QStringList());
    EXPECT_EQ(log.texts(), QStringList());
    EXPECT_TRUE(bindless->issued.isEmpty());
}

TEST_F(BindlessTextureManagerTest, AStreamerHasABoundTokenAndIsDetected)
{
    TestStreamer streamer(77u, true);
    const LogCapture log;
    EXPECT_EQ(bindless->tokenForTexture(&streamer), boundToken(0));
    EXPECT_EQ(log.messages(), QStringList({"Detected TextureStreamer"}));
    EXPECT_EQ(log.texts(QtDebugMsg).size(), 1);
    EXPECT_EQ(bindless->tokenForTexture(&streamer), boundToken(0));
    EXPECT_EQ(log.texts().size(), 1) << "once";
    EXPECT_EQ(bindless->getTextureStreamers(), QList<TextureStreamer*>({&streamer}));
    EXPECT_TRUE(bindless->updateTextureStreamers());
    EXPECT_EQ(streamer.updates, 1);
    bindless->deleteTexture(&streamer);
    EXPECT_TRUE(bindless->getTextureStreamers().isEmpty());
}

TEST_F(BindlessTextureManagerTest, AReadOnlyStreamerIsListedTooUnderItsHandle)
{
    TestStreamer streamer(77u, true);
    streamer.setReadOnly();
    const LogCapture log;
    EXPECT_EQ(bindless->tokenForTexture(&streamer), bindlessToken(77));
    EXPECT_EQ(log.messages(), QStringList({"Detected TextureStreamer"}));
    EXPECT_EQ(bindless->getTextureStreamers(), QList<TextureStreamer*>({&streamer}));
    bindless->deleteTexture(&streamer);
}

// ---- colours -------------------------------------------------------------------------------------------------------

TEST_F(BindlessTextureManagerTest, AColourIsMadeAtOnceAndOnlyOnce)
{
    CallLog calls;
    const TextureToken red = bindless->tokenForColor(Qt::red);
    EXPECT_EQ(red, bindlessToken(2));
    EXPECT_EQ(calls.count("glGenTextures"), 1);
    EXPECT_EQ(calls.list().last(), gettingHandle(2));
    calls.clear();
    EXPECT_EQ(bindless->tokenForColor(QColor::fromHsv(0, 255, 255)), red);
    EXPECT_EQ(bindless->textureForColor(Qt::red), bindless->textureForToken(red));
    EXPECT_EQ(calls.list(), QStringList());
    Texture* const texture = bindless->textureForToken(red);
    ASSERT_NE(texture, nullptr);
    EXPECT_TRUE(texture->isReadOnly());
    EXPECT_EQ(bindless->findToken(texture), red);
    EXPECT_EQ(Tables::tokenToColor(*bindless).value(red), QColor(Qt::red));
    EXPECT_EQ(Tables::colorToToken(*bindless).value(qRgb(255, 0, 0)), red);
    EXPECT_EQ(bindless->issued, QList<TextureToken>({red}));
}

// ---- files ---------------------------------------------------------------------------------------------------------

TEST_F(BindlessTextureManagerTest, AFileIsLoadedByTheFirstCallAndFoundByTheSecond)
{
    const QString path = pngFile(QStringLiteral("a.png"));
    TextureFileInfo info;
    info.anisotropy = 4;
    CallLog calls;
    const TextureToken token = bindless->tokenForImage(path, info);
    EXPECT_EQ(token, bindlessToken(2));
    EXPECT_EQ(calls.count("glGenTextures"), 1);
    EXPECT_EQ(calls.list().last(), gettingHandle(2));
    calls.clear();
    EXPECT_EQ(bindless->tokenForImage(path, TextureFileInfo()), token);
    EXPECT_EQ(bindless->textureForImage(path, TextureFileInfo()), bindless->textureForToken(token));
    EXPECT_EQ(calls.list(), QStringList());
    EXPECT_TRUE(bindless->textureForToken(token)->isReadOnly());
    EXPECT_EQ(bindless->findToken(bindless->textureForToken(token)), token);
    EXPECT_EQ(Tables::tokenToPath(*bindless).value(token), path);
    EXPECT_EQ(Tables::tokenToFileInfo(*bindless).value(token).anisotropy, 4) << "the first request's";
    EXPECT_EQ(bindless->textureFiles(), QStringList({path}));
    EXPECT_EQ(bindless->issued, QList<TextureToken>({token}));
}

TEST_F(BindlessTextureManagerTest, AFileBelowTheRootIsFoundUnderEitherPath)
{
    const QString path = pngFile(QStringLiteral("a.png"));
    bindless->setTextureRoot(directory.path());
    const TextureToken token = bindless->tokenForImage(QStringLiteral("no/such/place/a.png"), {});
    EXPECT_EQ(Tables::pathToToken(*bindless).value(QDir(directory.path()).absoluteFilePath(QStringLiteral("a.png"))),
              token);
    EXPECT_EQ(Tables::pathToToken(*bindless).size(), 1);
    const CallLog calls;
    EXPECT_EQ(bindless->tokenForImage(QStringLiteral("a.png"), {}), token);
    EXPECT_EQ(bindless->tokenForImage(QStringLiteral("no/such/place/a.png"), {}), token);
    EXPECT_EQ(bindless->tokenForImage(path, {}), token);
    EXPECT_EQ(calls.list(), QStringList());
}

TEST_F(BindlessTextureManagerTest, APathThatIsKnownAsGivenIsNotResolved)
{
    const QString path = pngFile(QStringLiteral("a.png"));
    const TextureToken token = bindless->tokenForImage(path, {});
    ASSERT_TRUE(QFile::remove(path));
    const LogCapture log;
    EXPECT_EQ(bindless->tokenForImage(path, {}), token);
    EXPECT_EQ(log.texts(), QStringList()) << "nothing was looked for";
}

TEST_F(BindlessTextureManagerTest, AFileThatDoesNotLoadHasTheTokenOfWhiteAndIsTriedAgain)
{
    const TextureToken white = bindless->tokenForColor(Qt::white);
    const QString corrupt = corruptFile(QStringLiteral("b.png"));
    for (int i = 0; i < 2; ++i)
    {
        const LogCapture log;
        EXPECT_EQ(bindless->tokenForImage(corrupt, {}), white);
        EXPECT_EQ(log.messages(QtWarningMsg).last(), QStringLiteral("Failed to load ") + corrupt);
    }
    EXPECT_TRUE(Tables::pathToToken(*bindless).isEmpty());
    EXPECT_TRUE(bindless->textureFiles().isEmpty());
    EXPECT_TRUE(bindless->issued.isEmpty());
    pngFile(QStringLiteral("b.png"));
    EXPECT_EQ(bindless->tokenForImage(corrupt, {}), bindlessToken(2));
}

TEST_F(BindlessTextureManagerTest, AMissingFileHasTheTokenOfWhite)
{
    const TextureToken white = bindless->tokenForColor(Qt::white);
    const LogCapture log;
    EXPECT_EQ(bindless->tokenForImage(QStringLiteral("missing.png"), {}), white);
    EXPECT_EQ(log.messages(QtWarningMsg), QStringList({"File missing.png not found"}));
    EXPECT_TRUE(Tables::pathToToken(*bindless).isEmpty());
    EXPECT_EQ(bindless->tokenForImage(QString(), {}), white);
}

TEST_F(BindlessTextureManagerTest, TextureForTokenMakesNothing)
{
    const CallLog calls;
    const LogCapture log;
    for (const TextureToken& token : {TextureToken(0), bindlessToken(500), boundToken(0), INVALID_TOKEN})
        EXPECT_EQ(bindless->textureForToken(token), nullptr);
    EXPECT_EQ(calls.list(), QStringList());
    EXPECT_EQ(log.texts(), QStringList());
}

// ---- deletion ------------------------------------------------------------------------------------------------------

TEST_F(BindlessTextureManagerTest, ADeletedBoundTokenGivesItsLowWordBack)
{
    const auto textures = withBoundTokens(3);
    const LogCapture log;
    bindless->deleteTexture(boundToken(1));
    EXPECT_EQ(Tables::freeTokens(*bindless), tokens({1}));
    EXPECT_EQ(bindless->textureForToken(boundToken(1)), nullptr);
    EXPECT_EQ(bindless->findToken(textures[1]), INVALID_TOKEN);
    EXPECT_EQ(bindless->revoked, QList<TextureToken>({boundToken(1)}));
    EXPECT_EQ(bindless->tokenForTexture(wrapped(1)[0]), boundToken(1));
    bindless->deleteTexture(textures[2]);
    EXPECT_EQ(Tables::maxToken(*bindless), TextureToken(2));
    EXPECT_EQ(log.texts(), QStringList());
}

TEST_F(BindlessTextureManagerTest, ADeletedBindlessTokenFreesNone)
{
    withBoundTokens(1);
    const TextureToken red = bindless->tokenForColor(Qt::red);
    const CallLog calls;
    const LogCapture log;
    bindless->deleteTexture(red);
    EXPECT_EQ(masked(calls), QStringList({pointerCall("glDeleteTextures", {1})})) << "and no word about its handle";
    EXPECT_EQ(Tables::freeTokens(*bindless), tokens({}));
    EXPECT_EQ(Tables::maxToken(*bindless), TextureToken(1));
    EXPECT_EQ(bindless->revoked, QList<TextureToken>({red}));
    EXPECT_EQ(bindless->textureForToken(red), nullptr);
    EXPECT_EQ(log.texts(), QStringList());
    EXPECT_EQ(bindless->tokenForColor(Qt::red), bindlessToken(3)) << "made anew";
}

TEST_F(BindlessTextureManagerTest, TheInvalidTokenIsNotRevoked)
{
    const LogCapture log;
    bindless->deleteTexture(INVALID_TOKEN);
    bindless->deleteTexture(nullptr);
    bindless->deleteTexture(wrapped(1)[0]);
    EXPECT_TRUE(bindless->revoked.isEmpty());
    EXPECT_EQ(log.texts(), QStringList());
}

TEST_F(BindlessTextureManagerTest, AnUnknownBindlessTokenIsRevokedAndNoMore)
{
    withBoundTokens(1);
    const LogCapture log;
    bindless->deleteTexture(bindlessToken(400));
    bindless->deleteTexture(TextureToken(0)); // low words are no tokens here
    EXPECT_EQ(bindless->revoked, QList<TextureToken>({bindlessToken(400), TextureToken(0)}));
    EXPECT_EQ(Tables::freeTokens(*bindless), tokens({}));
    EXPECT_EQ(Tables::maxToken(*bindless), TextureToken(1));
    EXPECT_EQ(log.texts(), QStringList());
}

TEST_F(BindlessTextureManagerTest, AnUnknownBoundTokenGoesToTheFreeOnesAndIsReported)
{
    withBoundTokens(1);
    const LogCapture log;
    bindless->deleteTexture(boundToken(5));
    EXPECT_EQ(log.messages(),
              failure("token.token < this->_maxToken.token", "Delete token 0x5 but only 0x1 reserved!"));
    EXPECT_EQ(Tables::freeTokens(*bindless), tokens({5}));
}

TEST_F(BindlessTextureManagerTest, DeletingATextureOfTheCallersLeavesItAlone)
{
    const auto textures = readOnly(1);
    const QPointer<Texture> living(textures[0]);
    bindless->tokenForTexture(textures[0]);
    const CallLog calls;
    bindless->deleteTexture(textures[0]);
    EXPECT_FALSE(living.isNull());
    EXPECT_EQ(calls.list(), QStringList());
    EXPECT_EQ(bindless->tokenForTexture(textures[0]), bindlessToken(1000)) << "its handle, once more";
}

TEST_F(BindlessTextureManagerTest, ADeletedFileIsForgotten)
{
    const QString path = pngFile(QStringLiteral("a.png"));
    bindless->deleteTexture(bindless->tokenForImage(path, {}));
    EXPECT_TRUE(Tables::pathToToken(*bindless).isEmpty());
    EXPECT_TRUE(bindless->textureFiles().isEmpty());
    EXPECT_EQ(bindless->tokenForImage(path, {}), bindlessToken(3));
}

TEST_F(BindlessTextureManagerTest, ATranslucentColoursTokenOutlivesItsTexture)
{
    const QColor glass(10, 20, 30, 40);
    const TextureToken token = bindless->tokenForColor(glass);
    bindless->deleteTexture(token);
    const CallLog calls;
    EXPECT_EQ(bindless->tokenForColor(glass), token) << "the key is made by rgba and removed by rgb";
    EXPECT_EQ(bindless->textureForToken(token), nullptr);
    bindless->bind(QList{token});
    EXPECT_EQ(calls.list(), QStringList());
}

TEST_F(BindlessTextureManagerTest, DeletingWhatIsNoColourForgetsBlack)
{
    const TextureToken black = bindless->tokenForColor(Qt::black);
    withBoundTokens(1);
    bindless->deleteTexture(boundToken(0));
    EXPECT_NE(bindless->tokenForColor(Qt::black), black);
    EXPECT_NE(bindless->textureForToken(black), nullptr);
}

// ---- clear and the end ---------------------------------------------------------------------------------------------

TEST_F(BindlessTextureManagerTest, ClearDeletesAllTexturesAndForgetsAllTokens)
{
    const int before = Texture::NumAlive();
    bindless->tokenForColor(Qt::red);
    bindless->tokenForImage(pngFile(QStringLiteral("a.png")), {});
    const QPointer<Texture> ofCaller(withBoundTokens(2)[1]);
    const CallLog calls;
    bindless->clear();
    EXPECT_EQ(calls.count("glDeleteTextures"), 3) << "white, red and the file's";
    EXPECT_EQ(calls.count("glGetTextureHandleARB"), 0) << "white was there";
    EXPECT_TRUE(ofCaller.isNull());
    EXPECT_EQ(Texture::NumAlive(), before - 1);
    EXPECT_TRUE(Books::tokenSlotRecords(*bindless).isEmpty());
    EXPECT_EQ(Tables::maxToken(*bindless), TextureToken(0));
    EXPECT_TRUE(Tables::colorToToken(*bindless).isEmpty());
    EXPECT_EQ(bindless->tokenForColor(Qt::white), bindlessToken(4)) << "made when it is asked for";
    EXPECT_EQ(bindless->tokenForTexture(wrapped(1)[0]), boundToken(0));
}

TEST_F(BindlessTextureManagerTest, ClearWithoutWhiteMakesItFirst)
{
    bindless->deleteTexture(bindless->tokenForColor(Qt::white));
    const CallLog calls;
    bindless->clear();
    EXPECT_EQ(masked(calls).mid(masked(calls).size() - 2),
              QStringList({gettingHandle(2), pointerCall("glDeleteTextures", {1})}));
    EXPECT_TRUE(Tables::colorToToken(*bindless).isEmpty());
}

TEST_F(BindlessTextureManagerTest, TheEndDeletesAllTextures)
{
    bindless.reset();
    const int before = Texture::NumAlive();
    make();
    bindless->tokenForColor(Qt::red);
    auto* const texture = wrapped(1)[0];
    drawAndRelease({bindless->tokenForTexture(texture), bindless->tokenForColor(Qt::red)});
    EXPECT_EQ(Texture::NumAlive(), before + 5) << "two colours, the caller's, default and slot map";
    bindless.reset();
    EXPECT_EQ(Texture::NumAlive(), before);
}

} // namespace Harrow::Vrk::Test
