// SPDX-License-Identifier: MIT
//
// TextureManager on the fake driver: what a token stands for, and what the base does for every manager.
#include "TextureManager.h"

#include "GLSLMacroProcessor.h"
#include "SamplerTextureManager.h"
#include "TextureManagerTestTools.h"

#include <QFile>
#include <QPointer>
#include <QScopeGuard>
#include <QSet>

#include <type_traits>

namespace Harrow::Vrk::Test
{
namespace
{

class TextureManagerTest : public ManagerFixture
{
protected:
    QString defines(GLSLMacroProcessor& processor)
    {
        return GLSLMacroProcessor::process(QStringLiteral("#version 150"), &processor);
    }

    TextureToken imageToken(const QString& path)
    {
        return manager->tokenForImage(path, TextureFileInfo());
    }

    /// All units are taken, so that no texture can be made.
    std::vector<Texture*> takeAllUnits()
    {
        auto textures = wrapped(kUnits);
        for (Texture* const texture : textures)
            EXPECT_TRUE(texture->bind());
        return textures;
    }
};

} // namespace

static_assert(int(TextureManager::eReallocateSmaller) == 0 && int(TextureManager::eReallocateLarger) == 1);
static_assert(!std::is_destructible_v<TextureManager>, "not through the base");
static_assert(!std::is_copy_constructible_v<RecordingManager>);

// ---- from construction on ------------------------------------------------------------------------------------------

TEST_F(TextureManagerTest, NothingStandsForNothing)
{
    EXPECT_EQ(manager->findToken(nullptr), INVALID_TOKEN);
    EXPECT_EQ(manager->tokenForTexture(nullptr), INVALID_TOKEN);
    EXPECT_EQ(manager->textureForToken(INVALID_TOKEN), nullptr);
    EXPECT_EQ(manager->textureTokenMap().value(nullptr, TextureToken(1)), INVALID_TOKEN);
    EXPECT_TRUE(manager->textureTokenMap().contains(nullptr));
    EXPECT_EQ(manager->maxToken(), TextureToken(0));
    EXPECT_EQ(manager->takeCalls(), QStringList());
}

TEST_F(TextureManagerTest, StartsWithEightSlotsAndNothingElse)
{
    EXPECT_EQ(manager->getMaxSlots(), 8);
    EXPECT_EQ(manager->getTextureRoot(), QString());
    EXPECT_EQ(manager->textureFiles(), QStringList());
    EXPECT_TRUE(manager->getTextureStreamers().isEmpty());
    EXPECT_FALSE(manager->TextureManager::supportsUDIMs());
}

TEST_F(TextureManagerTest, MakingOneCallsNothing)
{
    const CallLog calls;
    const RecordingManager other;
    EXPECT_EQ(calls.list(), QStringList());
}

// ---- tokens of textures --------------------------------------------------------------------------------------------

TEST_F(TextureManagerTest, ATextureHasOneToken)
{
    const auto textures = wrapped(2);
    EXPECT_EQ(manager->tokenForTexture(textures[0]), TextureToken(0));
    EXPECT_EQ(manager->tokenForTexture(textures[1]), TextureToken(1));
    EXPECT_EQ(manager->tokenForTexture(textures[0]), TextureToken(0));
    EXPECT_EQ(manager->takeCalls(), QStringList({"issued 0", "issued 1"}));
    EXPECT_EQ(manager->textureForToken(TextureToken(1)), textures[1]);
    EXPECT_EQ(manager->findToken(textures[1]), TextureToken(1));
}

TEST_F(TextureManagerTest, FindTokenIssuesNone)
{
    const auto textures = wrapped(1);
    EXPECT_EQ(manager->findToken(textures[0]), INVALID_TOKEN);
    EXPECT_EQ(manager->maxToken(), TextureToken(0));
    EXPECT_EQ(manager->takeCalls(), QStringList());
}

TEST_F(TextureManagerTest, ATextureIsInTheTablesWhenItsTokenIsIssued)
{
    auto* const streamer = new TestStreamer;
    bool seen = false;
    manager->onIssued = [&](TextureToken token)
    {
        seen = manager->textureForToken(token) == streamer && manager->findToken(streamer) == token &&
               manager->getTextureStreamers() == QList<TextureStreamer*>{streamer};
    };
    manager->tokenForTexture(streamer);
    EXPECT_TRUE(seen);
}

TEST_F(TextureManagerTest, ATextureOfTheCallerStaysAsItIs)
{
    const auto textures = wrapped(1);
    const CallLog calls;
    manager->textureForToken(manager->tokenForTexture(textures[0]));
    EXPECT_FALSE(textures[0]->isReadOnly());
    EXPECT_EQ(calls.list(), QStringList());
}

// ---- tokens of colours ---------------------------------------------------------------------------------------------

TEST_F(TextureManagerTest, AColourHasOneTokenWhateverItsModel)
{
    const QColor rgb(0, 0, 255);
    const QColor hsv = QColor::fromHsv(240, 255, 255);
    ASSERT_NE(rgb, hsv);
    ASSERT_EQ(rgb.rgba(), hsv.rgba());
    EXPECT_EQ(manager->tokenForColor(rgb), TextureToken(0));
    EXPECT_EQ(manager->tokenForColor(hsv), TextureToken(0));
    EXPECT_EQ(Tables::tokenToColor(*manager).value(TextureToken(0)), rgb);
    EXPECT_EQ(manager->takeCalls(), QStringList({"issued 0"}));
}

TEST_F(TextureManagerTest, ColoursOfDifferentAlphaHaveDifferentTokens)
{
    EXPECT_EQ(manager->tokenForColor(Qt::red), TextureToken(0));
    EXPECT_EQ(manager->tokenForColor(QColor(255, 0, 0, 128)), TextureToken(1));
}

TEST_F(TextureManagerTest, AColourIsInTheTablesWhenItsTokenIsIssued)
{
    bool seen = false;
    manager->onIssued = [&](TextureToken token)
    {
        seen = Tables::colorToToken(*manager).value(QColor(Qt::red).rgba(), INVALID_TOKEN) == token &&
               Tables::tokenToColor(*manager).value(token) == QColor(Qt::red);
    };
    manager->tokenForColor(Qt::red);
    EXPECT_TRUE(seen);
}

// ---- from token to texture -----------------------------------------------------------------------------------------

TEST_F(TextureManagerTest, AColourBecomesAReadOnlyTextureWhenItIsWanted)
{
    const int before = Texture::NumAlive();
    const TextureToken token = manager->tokenForColor(Qt::red);
    EXPECT_EQ(Texture::NumAlive(), before);
    Texture* const texture = manager->textureForToken(token);
    ASSERT_NE(texture, nullptr);
    EXPECT_EQ(Texture::NumAlive(), before + 1);
    EXPECT_TRUE(texture->isReadOnly());
    EXPECT_TRUE(texture->isManaged());
    EXPECT_EQ(Access::recorded(*texture), (Recorded{GL_RGBA, 1, 1, 1}));
    EXPECT_EQ(manager->textureForToken(token), texture) << "made once";
    EXPECT_EQ(manager->findToken(texture), token);
    EXPECT_EQ(manager->tokenForTexture(texture), token);
    EXPECT_EQ(Texture::NumAlive(), before + 1);
}

TEST_F(TextureManagerTest, TextureForColorIsTheTextureOfTheColoursToken)
{
    Texture* const texture = manager->textureForColor(Qt::red);
    ASSERT_NE(texture, nullptr);
    EXPECT_EQ(manager->findToken(texture), TextureToken(0));
    EXPECT_EQ(manager->textureForColor(Qt::red), texture);
    EXPECT_EQ(manager->textureForToken(manager->tokenForColor(Qt::red)), texture);
    EXPECT_EQ(manager->takeCalls(), QStringList({"issued 0"}));
}

TEST_F(TextureManagerTest, AFileBecomesAReadOnlyTextureWhenItIsWanted)
{
    const int before = Texture::NumAlive();
    const TextureToken token = imageToken(pngFile(QStringLiteral("red.png")));
    EXPECT_EQ(Texture::NumAlive(), before) << "nothing is loaded yet";
    Texture* const texture = manager->textureForToken(token);
    ASSERT_NE(texture, nullptr);
    EXPECT_TRUE(texture->isReadOnly());
    EXPECT_EQ(Access::recorded(*texture), (Recorded{GL_RGBA, 2, 2, 1}));
    EXPECT_EQ(manager->textureForToken(token), texture) << "loaded once";
    EXPECT_EQ(manager->findToken(texture), token);
}

TEST_F(TextureManagerTest, AFileIsLoadedAsItsInfoSays)
{
    TextureFileInfo info;
    info.srgb = true;
    Texture* const texture = manager->textureForImage(pngFile(QStringLiteral("red.png")), info);
    ASSERT_NE(texture, nullptr);
    EXPECT_EQ(Access::recorded(*texture), (Recorded{GL_SRGB8_ALPHA8, 2, 2, 1}));
    EXPECT_EQ(manager->findToken(texture), TextureToken(0));
}

TEST_F(TextureManagerTest, ATokenOfNothingHasNoTexture)
{
    const LogCapture log;
    EXPECT_EQ(manager->textureForToken(TextureToken(3)), nullptr);
    EXPECT_EQ(manager->textureForToken(manager->reserveToken()), nullptr);
    EXPECT_EQ(log.texts(), QStringList());
}

TEST_F(TextureManagerTest, ACorruptFileGivesWhiteAndIsTriedAgainEachTime)
{
    const QString path = corruptFile(QStringLiteral("corrupt.png"));
    const TextureToken token = imageToken(path);
    for (int i = 0; i < 2; ++i)
    {
        const LogCapture log;
        Texture* const texture = manager->textureForToken(token);
        EXPECT_EQ(log.messages(QtWarningMsg), QStringList({QStringLiteral("Failed to load ") + path}));
        ASSERT_NE(texture, nullptr);
        EXPECT_EQ(manager->findToken(texture), manager->tokenForColor(Qt::white));
        EXPECT_FALSE(Tables::tokenToTexture(*manager).contains(token));
    }
    pngFile(QStringLiteral("corrupt.png"));
    Texture* const texture = manager->textureForToken(token);
    EXPECT_EQ(manager->findToken(texture), token) << "mended";
}

TEST_F(TextureManagerTest, AFileThatGoesAndComesAgainIsFoundThen)
{
    const QString path = pngFile(QStringLiteral("red.png"));
    const TextureToken token = imageToken(path);
    ASSERT_TRUE(QFile::rename(path, path + QStringLiteral(".away")));
    {
        const LogCapture log;
        EXPECT_EQ(manager->textureForToken(token), manager->textureForColor(Qt::white));
        EXPECT_EQ(log.messages(), QStringList({QStringLiteral("File %1 not found").arg(path)}));
    }
    ASSERT_TRUE(QFile::rename(path + QStringLiteral(".away"), path));
    EXPECT_EQ(manager->findToken(manager->textureForToken(token)), token);
}

TEST_F(TextureManagerTest, AColourWithoutAFreeUnitHasNoTextureAndIsTriedAgain)
{
    const TextureToken token = manager->tokenForColor(Qt::red);
    const auto bound = takeAllUnits();
    {
        const LogCapture log;
        EXPECT_EQ(manager->textureForToken(token), nullptr);
        EXPECT_EQ(log.messages(), QStringList({"There is no available texture units"}));
    }
    EXPECT_FALSE(Tables::tokenToTexture(*manager).contains(token));
    for (Texture* const texture : bound)
        texture->unbind();
    EXPECT_NE(manager->textureForToken(token), nullptr);
}

TEST_F(TextureManagerTest, ACorruptFileUnderTheTokenThatWhiteHasLeftIsReported)
{
    const TextureToken white = manager->tokenForColor(Qt::white);
    manager->deleteTexture(white); // never realised: the colour keeps the number
    const TextureToken token = imageToken(corruptFile(QStringLiteral("corrupt.png")));
    ASSERT_EQ(token, white);
    const LogCapture log;
    EXPECT_EQ(manager->textureForToken(token), nullptr);
    EXPECT_EQ(log.messages(QtCriticalMsg), failure("token != _colorToToken.value(qRgb(255, 255, 255))",
                                                   "Token 0 of white stands for a file that cannot be loaded"));
    EXPECT_EQ(manager->textureForColor(Qt::white), nullptr);
}

// ---- the manager in use --------------------------------------------------------------------------------------------

TEST_F(TextureManagerTest, TheInstanceIsASamplerManagerOfEightSlotsUnlessSet)
{
    const LogCapture log;
    TextureManager& instance = TextureManager::Instance();
    auto* const made = dynamic_cast<SamplerTextureManager*>(&instance);
    const auto cleanup = qScopeGuard([made] { delete made; });
    EXPECT_NE(made, nullptr);
    EXPECT_EQ(instance.getMaxSlots(), 8);
    EXPECT_EQ(log.texts(), QStringList({"SamplerTextureManager"}));
    EXPECT_EQ(log.texts(QtDebugMsg), QStringList({"SamplerTextureManager"}));
    EXPECT_EQ(&TextureManager::Instance(), &instance) << "made once";
    EXPECT_EQ(log.texts().size(), 1);
}

TEST_F(TextureManagerTest, SetInstancePutsAManagerInItsPlaceAndDeletesNone)
{
    const LogCapture log;
    EXPECT_TRUE(TextureManager::setInstance(manager.get()));
    EXPECT_EQ(&TextureManager::Instance(), manager.get());
    RecordingManager other;
    EXPECT_TRUE(TextureManager::setInstance(&other));
    EXPECT_EQ(&TextureManager::Instance(), &other);
    EXPECT_EQ(manager->tokenForColor(Qt::red), TextureToken(0)) << "still alive";
    EXPECT_TRUE(TextureManager::setInstance(nullptr));
    EXPECT_EQ(log.texts(), QStringList());
}

TEST_F(TextureManagerTest, AManagerThatIsDestroyedIsNotInUseAnyMore)
{
    TextureManager::setInstance(manager.get());
    {
        const RecordingManager other;
    }
    EXPECT_EQ(&TextureManager::Instance(), manager.get());
    manager.reset();
    const LogCapture log;
    auto* const made = dynamic_cast<SamplerTextureManager*>(&TextureManager::Instance());
    EXPECT_EQ(log.texts(), QStringList({"SamplerTextureManager"}));
    delete made;
}

// ---- what a kind of manager makes its own --------------------------------------------------------------------------

TEST_F(TextureManagerTest, BindAndUnbindWithoutAProgramPassNull)
{
    manager->bind();
    manager->unbind();
    EXPECT_EQ(manager->takeCalls(), QStringList({"bind(null)", "unbind(null)"}));
}

TEST_F(TextureManagerTest, ASetOfTokensIsBoundAsAList)
{
    const QSet<TextureToken> set = {TextureToken(5), TextureToken(2), TextureToken(9)};
    manager->bind(set);
    EXPECT_EQ(manager->takeCalls(), QStringList({"bind(tokens)"}));
    std::sort(manager->boundTokens.begin(), manager->boundTokens.end(),
              [](TextureToken a, TextureToken b) { return a.token < b.token; });
    EXPECT_EQ(manager->boundTokens, tokens({2, 5, 9}));
}

TEST_F(TextureManagerTest, DirtyAndTheMethodOfReallocationDoNothing)
{
    const auto textures = wrapped(1);
    const CallLog calls;
    const LogCapture log;
    manager->dirty(textures[0]);
    manager->dirty(nullptr);
    manager->setSlotReallocationMethod(TextureManager::eReallocateLarger);
    EXPECT_EQ(calls.list(), QStringList());
    EXPECT_EQ(log.texts(), QStringList());
    EXPECT_EQ(manager->takeCalls(), QStringList());
}

TEST_F(TextureManagerTest, SetMaxSlotsStoresAnyNumber)
{
    for (const int count : {1, 32, 0, -1})
    {
        manager->setMaxSlots(count);
        EXPECT_EQ(manager->getMaxSlots(), count);
    }
}

TEST_F(TextureManagerTest, SetupDefinesUDIMsWhereThereAreAny)
{
    GLSLMacroProcessor processor;
    manager->setup(&processor);
    EXPECT_EQ(defines(processor), QStringLiteral("#version 150\n"));
    manager->udims = true;
    manager->setup(&processor);
    EXPECT_EQ(defines(processor), QStringLiteral("#version 150\n#define TEXTURE_MANAGER_SUPPORTS_UDIMS 1\n"));
    manager->setup(nullptr);
}

// ---- sets of UDIM patches ------------------------------------------------------------------------------------------

TEST_F(TextureManagerTest, WithoutUDIMsNoTokenIsIssuedForThem)
{
    EXPECT_EQ(manager->createUDIMToken(), INVALID_TOKEN);
    EXPECT_EQ(manager->maxToken(), TextureToken(0));
    EXPECT_EQ(manager->takeCalls(), QStringList());
    EXPECT_TRUE(Tables::udims(*manager).isEmpty());
}

TEST_F(TextureManagerTest, AUDIMTokenIsIssuedAndThenHasAnEmptySet)
{
    manager->udims = true;
    bool early = true;
    manager->onIssued = [&](TextureToken token) { early = Tables::udims(*manager).contains(token); };
    EXPECT_EQ(manager->createUDIMToken(), TextureToken(0));
    EXPECT_FALSE(early);
    EXPECT_EQ(manager->takeCalls(), QStringList({"issued 0"}));
    EXPECT_EQ(Tables::udims(*manager), (QHash<TextureToken, QHash<QPoint, Texture*>>{{TextureToken(0), {}}}));
    EXPECT_EQ(manager->textureForToken(TextureToken(0)), nullptr);
}

TEST_F(TextureManagerTest, PatchesAreKeptByIndexAndReplaced)
{
    const auto textures = wrapped(3);
    manager->udims = true;
    const TextureToken token = manager->createUDIMToken();
    manager->addUDIMPatch(token, QPoint(0, 0), textures[0]);
    manager->addUDIMPatch(token, QPoint(1, 0), textures[1]);
    manager->addUDIMPatch(token, QPoint(0, 0), textures[2]);
    EXPECT_EQ(Tables::udims(*manager).value(token),
              (QHash<QPoint, Texture*>{{QPoint(0, 0), textures[2]}, {QPoint(1, 0), textures[1]}}));
}

TEST_F(TextureManagerTest, APatchIsTakenFromOneOfItsPlaces)
{
    const auto textures = wrapped(2);
    manager->udims = true;
    const TextureToken token = manager->createUDIMToken();
    manager->addUDIMPatch(token, QPoint(0, 0), textures[0]);
    manager->addUDIMPatch(token, QPoint(1, 0), textures[0]);
    manager->removeUDIMPatch(token, textures[1]);
    EXPECT_EQ(Tables::udims(*manager).value(token).size(), 2);
    manager->removeUDIMPatch(token, textures[0]);
    EXPECT_EQ(Tables::udims(*manager).value(token).size(), 1);
    manager->removeUDIMPatch(token, textures[0]);
    EXPECT_TRUE(Tables::udims(*manager).value(token).isEmpty());
    EXPECT_TRUE(Tables::udims(*manager).contains(token));
}

TEST_F(TextureManagerTest, ATokenThatIsNoSetGetsNoPatch)
{
    const auto textures = wrapped(1);
    manager->udims = true;
    const LogCapture log;
    manager->addUDIMPatch(TextureToken(26), QPoint(0, 0), textures[0]);
    EXPECT_EQ(log.messages(QtCriticalMsg),
              failure("this->_udimTokenToIndexAndToken.end() != udimIt", "Token 0x1a is no UDIM token"));
    manager->removeUDIMPatch(TextureToken(26), textures[0]);
    EXPECT_TRUE(Tables::udims(*manager).isEmpty());
    EXPECT_EQ(log.texts().size(), 1);
}

TEST_F(TextureManagerTest, DeletingASetRevokesItsTokenAndLeavesThePatches)
{
    const QPointer<Texture> patch(newTexture().release());
    const auto cleanup = qScopeGuard([patch] { delete patch; });
    manager->udims = true;
    const TextureToken token = manager->createUDIMToken();
    manager->addUDIMPatch(token, QPoint(0, 0), patch);
    manager->addUDIMPatch(token, QPoint(5, 0), patch);
    manager->takeCalls();
    bool gone = false;
    manager->onRevoked = [&](TextureToken revoked) { gone = !Tables::udims(*manager).contains(revoked); };
    EXPECT_TRUE(manager->deleteUDIM(token));
    EXPECT_TRUE(gone) << "erased before it is revoked";
    EXPECT_EQ(manager->takeCalls(), QStringList({"revoked 0"}));
    EXPECT_EQ(manager->maxToken(), TextureToken(0));
    EXPECT_FALSE(patch.isNull());
}

TEST_F(TextureManagerTest, DeletingAnUnknownSetIsReportedAndFalse)
{
    const LogCapture log;
    EXPECT_FALSE(manager->deleteUDIM(TextureToken(26)));
    EXPECT_EQ(log.messages(QtCriticalMsg),
              failure("this->_udimTokenToIndexAndToken.end() != udimIt", "Token 0x1a already empty"));
    EXPECT_EQ(manager->takeCalls(), QStringList());
    EXPECT_TRUE(Tables::freeTokens(*manager).isEmpty());
}

// ---- scratch textures ----------------------------------------------------------------------------------------------

TEST_F(TextureManagerTest, ScratchTexturesComeFromThePoolAndGoBack)
{
    Texture* const texture = manager->tempTexture(TextureFormat::RGBA, 4, 8, 1, 1);
    ASSERT_NE(texture, nullptr);
    EXPECT_EQ(Access::recorded(*texture), (Recorded{GL_RGBA, 4, 8, 1}));
    EXPECT_EQ(manager->findToken(texture), INVALID_TOKEN);
    manager->addTempTextureRef(texture, 2);
    manager->releaseTempTextureRef(texture, 1);
    manager->releaseTempTextureRef(texture, 1);
    Texture* const other = manager->tempTexture(TextureFormat::RGBA, 4, 8, 1, 1);
    EXPECT_NE(other, texture) << "still in use";
    manager->releaseTempTextureRef(texture, 1);
    EXPECT_EQ(manager->tempTexture(TextureFormat::RGBA, 4, 8, 1, 1), texture);
}

TEST_F(TextureManagerTest, UnusedScratchTexturesAreDeletedOnDemand)
{
    const QPointer<Texture> used(manager->tempTexture(TextureFormat::RGBA, 4, 4, 1, 1));
    const QPointer<Texture> free(manager->tempTexture(TextureFormat::RGBA, 4, 4, 1, 1));
    manager->releaseTempTextureRef(free, 1);
    manager->deleteUnusedTempTextures();
    EXPECT_FALSE(used.isNull());
    EXPECT_TRUE(free.isNull());
}

TEST_F(TextureManagerTest, TheSummaryIsThatOfThePool)
{
    manager->tempTexture(TextureFormat::RGBA, 4, 4, 1, 1);
    const LogCapture log;
    manager->printTempTextureSummary();
    EXPECT_EQ(log.messages(QtDebugMsg).mid(0, 3),
              QStringList({"1 managed textures:", "- 1 active textures", "- 0 free textures"}));
}

TEST_F(TextureManagerTest, FixedSampleLocationsArePassedOn)
{
    for (const bool fixed : {true, false})
    {
        manager->setTempTextureFixedSampleLocations(fixed);
        const CallLog calls;
        manager->tempTexture(TextureFormat::RGBA, 4, 4, 1, 4);
        EXPECT_EQ(calls.named({"glTexImage2DMultisample"}),
                  QStringList({CallLog::call("glTexImage2DMultisample", GL_TEXTURE_2D_MULTISAMPLE, 4, GL_RGBA, 4, 4,
                                             int(fixed))}));
    }
}

} // namespace Harrow::Vrk::Test
