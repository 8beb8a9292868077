// SPDX-License-Identifier: MIT
//
// TextureManager on the fake driver: how a token ends, what stays behind by intent, and the end of all of them.
#include "TextureManagerTestTools.h"

#include <QPointer>

namespace Harrow::Vrk::Test
{
namespace
{

const QColor kTranslucentRed(255, 0, 0, 128);

class TextureManagerDeletionTest : public ManagerFixture
{
protected:
    TextureToken imageToken(const QString& path)
    {
        return manager->tokenForImage(path, TextureFileInfo());
    }

    static QString destroyedLine(int token)
    {
        return assertionLine(QStringLiteral("!texture.isDestroyed()"),
                             QStringLiteral("Texture of token %1 was destroyed without deleteTexture()").arg(token));
    }
};

} // namespace

// ---- the end of a token --------------------------------------------------------------------------------------------

TEST_F(TextureManagerDeletionTest, DeletingTheInvalidTokenDoesNothing)
{
    const LogCapture log;
    manager->deleteTexture(INVALID_TOKEN);
    manager->deleteTexture(static_cast<Texture*>(nullptr));
    EXPECT_EQ(manager->takeCalls(), QStringList());
    EXPECT_EQ(log.texts(), QStringList());
    EXPECT_TRUE(Tables::freeTokens(*manager).isEmpty());
}

TEST_F(TextureManagerDeletionTest, DeletingATextureWithoutATokenDoesNothing)
{
    auto texture = newTexture();
    const QPointer<Texture> watch(texture.get());
    manager->deleteTexture(texture.get());
    EXPECT_FALSE(watch.isNull());
    EXPECT_EQ(manager->takeCalls(), QStringList());
}

TEST_F(TextureManagerDeletionTest, AnUnknownTokenIsRevokedReportedAndFree)
{
    const LogCapture log;
    manager->deleteTexture(TextureToken(3));
    EXPECT_EQ(manager->takeCalls(), QStringList({"revoked 3"}));
    EXPECT_EQ(log.texts(QtCriticalMsg).size(), 2);
    EXPECT_EQ(Tables::freeTokens(*manager), tokens({3}));
    EXPECT_EQ(manager->tokenForColor(Qt::red), TextureToken(3));
}

TEST_F(TextureManagerDeletionTest, AManagedTextureIsDeletedWithItsToken)
{
    const QPointer<Texture> texture(newTexture().release());
    const TextureToken token = manager->tokenForTexture(texture);
    manager->takeCalls();
    manager->deleteTexture(token);
    EXPECT_TRUE(texture.isNull());
    EXPECT_EQ(manager->takeCalls(), QStringList({"revoked 0"}));
    EXPECT_EQ(manager->maxToken(), TextureToken(0));
    EXPECT_EQ(manager->textureForToken(token), nullptr);
    EXPECT_EQ(manager->textureTokenMap().size(), 1);
}

TEST_F(TextureManagerDeletionTest, AManagedTextureIsDeletedByItself)
{
    const QPointer<Texture> texture(newTexture().release());
    manager->tokenForTexture(texture);
    manager->deleteTexture(texture.data());
    EXPECT_TRUE(texture.isNull());
    EXPECT_EQ(manager->takeCalls(), QStringList({"issued 0", "revoked 0"}));
}

TEST_F(TextureManagerDeletionTest, AWrappedTextureStaysWithItsOwner)
{
    const auto textures = wrapped(1);
    const QPointer<Texture> watch(textures[0]);
    manager->tokenForTexture(watch);
    manager->deleteTexture(watch.data());
    EXPECT_FALSE(watch.isNull());
    EXPECT_EQ(manager->findToken(watch), INVALID_TOKEN);
    EXPECT_EQ(manager->maxToken(), TextureToken(0));
}

TEST_F(TextureManagerDeletionTest, ATokenIsRevokedBeforeItsTextureGoes)
{
    const QPointer<Texture> texture(newTexture().release());
    const TextureToken token = manager->tokenForTexture(texture);
    bool seen = false;
    manager->onRevoked = [&](TextureToken revoked)
    { seen = texture && manager->textureForToken(revoked) == texture && manager->maxToken() == TextureToken(1); };
    manager->deleteTexture(token);
    EXPECT_TRUE(seen);
}

TEST_F(TextureManagerDeletionTest, ATokenMayBeGivenAsTheEntryOfATable)
{
    const auto textures = wrapped(2);
    manager->tokenForTexture(textures[0]);
    manager->tokenForTexture(textures[1]);
    manager->deleteTexture(*manager->textureTokenMap().constFind(textures[0]));
    EXPECT_EQ(Tables::freeTokens(*manager), tokens({0}));
    EXPECT_EQ(manager->findToken(textures[1]), TextureToken(1));
}

TEST_F(TextureManagerDeletionTest, AFileThatWasNeverWantedStaysInTheTables)
{
    const QString path = pngFile(QStringLiteral("red.png"));
    const TextureToken token = imageToken(path);
    manager->takeCalls();
    manager->deleteTexture(token);
    EXPECT_EQ(manager->takeCalls(), QStringList({"revoked 0"}));
    EXPECT_EQ(manager->maxToken(), TextureToken(0));
    EXPECT_EQ(manager->textureFiles(), QStringList({path}));
    EXPECT_EQ(imageToken(path), token) << "without being issued again";
    EXPECT_EQ(manager->takeCalls(), QStringList());
    EXPECT_EQ(manager->tokenForColor(Qt::red), token) << "issued to something else";
}

TEST_F(TextureManagerDeletionTest, AColourThatWasNeverWantedStaysInTheTables)
{
    const TextureToken token = manager->tokenForColor(Qt::red);
    manager->deleteTexture(token);
    EXPECT_EQ(manager->maxToken(), TextureToken(0));
    EXPECT_EQ(manager->tokenForColor(Qt::red), token);
    EXPECT_EQ(Tables::tokenToColor(*manager).value(token), QColor(Qt::red));
    const auto textures = wrapped(1);
    EXPECT_EQ(manager->tokenForTexture(textures[0]), token);
    EXPECT_EQ(manager->textureForColor(Qt::red), textures[0]);
}

TEST_F(TextureManagerDeletionTest, AFileThatWasWantedLeavesTheTables)
{
    const QString path = pngFile(QStringLiteral("red.png"));
    const TextureToken token = imageToken(path);
    const QPointer<Texture> texture(manager->textureForToken(token));
    manager->deleteTexture(token);
    EXPECT_TRUE(texture.isNull());
    EXPECT_EQ(manager->textureFiles(), QStringList());
    EXPECT_TRUE(Tables::pathToToken(*manager).isEmpty());
    EXPECT_TRUE(Tables::tokenToPath(*manager).isEmpty());
    EXPECT_TRUE(Tables::tokenToFileInfo(*manager).contains(token)) << "how to load it stays";
    manager->takeCalls();
    EXPECT_EQ(imageToken(path), token);
    EXPECT_EQ(manager->takeCalls(), QStringList({"issued 0"}));
}

TEST_F(TextureManagerDeletionTest, AnOpaqueColourThatWasWantedLeavesTheTables)
{
    const QPointer<Texture> texture(manager->textureForColor(Qt::red));
    manager->deleteTexture(texture.data());
    EXPECT_TRUE(texture.isNull());
    EXPECT_TRUE(Tables::colorToToken(*manager).isEmpty());
    EXPECT_TRUE(Tables::tokenToColor(*manager).isEmpty());
}

TEST_F(TextureManagerDeletionTest, ATranslucentColourKeepsItsKeyAndTakesTheOpaqueOnes)
{
    const TextureToken opaque = manager->tokenForColor(Qt::red);
    const TextureToken translucent = manager->tokenForColor(kTranslucentRed);
    manager->textureForToken(translucent);
    manager->deleteTexture(translucent);
    EXPECT_EQ(manager->maxToken(), TextureToken(1));
    EXPECT_EQ(Tables::colorToToken(*manager).keys(), QList<QRgb>{kTranslucentRed.rgba()});
    EXPECT_EQ(Tables::tokenToColor(*manager).keys(), QList<TextureToken>{opaque});
    EXPECT_EQ(manager->tokenForColor(kTranslucentRed), translucent) << "under a token that is free";
    EXPECT_EQ(manager->textureForToken(translucent), nullptr);
}

TEST_F(TextureManagerDeletionTest, DeletingWhatIsNoColourForgetsOpaqueBlack)
{
    const auto textures = wrapped(1);
    const TextureToken black = manager->tokenForColor(Qt::black);
    const TextureToken translucentBlack = manager->tokenForColor(QColor(0, 0, 0, 1));
    const TextureToken red = manager->tokenForColor(Qt::red);
    manager->tokenForTexture(textures[0]);
    manager->deleteTexture(textures[0]);
    EXPECT_FALSE(Tables::colorToToken(*manager).contains(QColor(Qt::black).rgba()));
    EXPECT_EQ(manager->tokenForColor(Qt::black), TextureToken(3)) << "issued anew";
    EXPECT_EQ(Tables::tokenToColor(*manager).value(black), QColor(Qt::black)) << "the old token still is black";
    EXPECT_EQ(manager->tokenForColor(QColor(0, 0, 0, 1)), translucentBlack);
    EXPECT_EQ(manager->tokenForColor(Qt::red), red);
}

TEST_F(TextureManagerDeletionTest, DeletingAFileThatWasWantedForgetsOpaqueBlackToo)
{
    manager->tokenForColor(Qt::black);
    manager->deleteTexture(manager->textureForImage(pngFile(QStringLiteral("red.png")), TextureFileInfo()));
    EXPECT_TRUE(Tables::colorToToken(*manager).isEmpty());
}

// ---- textures destroyed without a word -----------------------------------------------------------------------------

TEST_F(TextureManagerDeletionTest, ATextureThatWasDestroyedIsReportedAndNotGiven)
{
    const auto textures = wrapped(1);
    const TextureToken token = manager->tokenForTexture(textures[0]);
    delete textures[0];
    const LogCapture log;
    EXPECT_EQ(manager->textureForToken(token), nullptr);
    EXPECT_EQ(log.messages(QtCriticalMsg), QStringList({destroyedLine(0)}));
}

TEST_F(TextureManagerDeletionTest, TheTokenOfADestroyedTextureEndsAsAnyOther)
{
    const auto textures = wrapped(2);
    const TextureToken token = manager->tokenForTexture(textures[0]);
    manager->tokenForTexture(textures[1]);
    delete textures[0];
    delete textures[1];
    const LogCapture log;
    manager->deleteTexture(token);
    manager->deleteTexture(textures[1]); // by its address
    EXPECT_EQ(log.texts(), QStringList());
    EXPECT_EQ(manager->takeCalls(), QStringList({"issued 0", "issued 1", "revoked 0", "revoked 1"}));
    EXPECT_EQ(manager->maxToken(), TextureToken(0));
    EXPECT_EQ(manager->textureTokenMap().size(), 1);
}

TEST_F(TextureManagerDeletionTest, ClearReportsADestroyedTextureAndPassesOverIt)
{
    const auto textures = wrapped(1);
    manager->tokenForTexture(textures[0]);
    delete textures[0];
    const LogCapture log;
    manager->clear();
    EXPECT_EQ(log.messages(QtCriticalMsg), QStringList({destroyedLine(0)}));
    EXPECT_EQ(manager->textureTokenMap().size(), 1);
}

TEST_F(TextureManagerDeletionTest, ATextureAtTheAddressOfADestroyedOneHasATokenOfItsOwn)
{
    alignas(Texture) unsigned char place[sizeof(Texture)];
    auto* texture = new (place) Texture(7u, nullptr);
    const auto others = wrapped(1);
    manager->tokenForTexture(texture);
    manager->tokenForTexture(others[0]);
    texture->~Texture();
    texture = new (place) Texture(8u, nullptr);
    manager->takeCalls();
    const LogCapture log;
    const TextureToken token = manager->tokenForTexture(texture);
    EXPECT_EQ(log.messages(QtCriticalMsg), QStringList({destroyedLine(0)}));
    EXPECT_EQ(manager->takeCalls(), QStringList({"revoked 0", "issued 0"}));
    EXPECT_EQ(manager->textureForToken(token), texture);
    EXPECT_EQ(manager->findToken(texture), token);
    manager->deleteTexture(texture);
    texture->~Texture();
}

TEST_F(TextureManagerDeletionTest, AManagedTextureMayTellOfItsEndWhileItEnds)
{
    auto* const texture = new Texture(nullptr);
    manager->tokenForTexture(texture);
    QObject::connect(texture, &QObject::destroyed, [this, texture] { manager->deleteTexture(texture); });
    delete texture;
    EXPECT_EQ(manager->takeCalls(), QStringList({"issued 0", "revoked 0"}));
    EXPECT_EQ(manager->maxToken(), TextureToken(0));
}

// ---- clear and the end of the manager ------------------------------------------------------------------------------

TEST_F(TextureManagerDeletionTest, ClearDeletesAllTexturesAndForgetsAllTokens)
{
    const QPointer<Texture> managed(newTexture().release());
    const QPointer<Texture> ofCaller(new Texture(1000u, nullptr));
    manager->tokenForTexture(managed);
    manager->tokenForTexture(ofCaller);
    const QPointer<Texture> color(manager->textureForColor(Qt::red));
    const QPointer<Texture> file(manager->textureForImage(pngFile(QStringLiteral("red.png")), TextureFileInfo()));
    manager->tokenForColor(Qt::blue);
    manager->reserveToken();
    manager->deleteTexture(TextureToken(4));
    manager->takeCalls();

    manager->clear();
    EXPECT_TRUE(managed.isNull());
    EXPECT_TRUE(ofCaller.isNull()) << "wrapped, and deleted all the same";
    EXPECT_TRUE(color.isNull());
    EXPECT_TRUE(file.isNull());
    EXPECT_EQ(manager->maxToken(), TextureToken(0));
    EXPECT_TRUE(Tables::freeTokens(*manager).isEmpty());
    EXPECT_TRUE(Tables::colorToToken(*manager).isEmpty());
    EXPECT_TRUE(Tables::tokenToColor(*manager).isEmpty());
    EXPECT_TRUE(Tables::pathToToken(*manager).isEmpty());
    EXPECT_TRUE(Tables::tokenToPath(*manager).isEmpty());
    EXPECT_EQ(manager->textureTokenMap(), (QHash<Texture*, TextureToken>{{nullptr, INVALID_TOKEN}}));
    EXPECT_TRUE(Tables::tokenToTexture(*manager).isEmpty());
    EXPECT_EQ(manager->takeCalls(), QStringList()) << "nothing is revoked";
}

TEST_F(TextureManagerDeletionTest, AfterClearTheNextTokenIsZero)
{
    manager->tokenForColor(Qt::red);
    manager->tokenForColor(Qt::blue);
    manager->clear();
    EXPECT_EQ(manager->tokenForColor(Qt::blue), TextureToken(0));
    EXPECT_EQ(manager->findToken(nullptr), INVALID_TOKEN);
    EXPECT_EQ(manager->tokenForTexture(nullptr), INVALID_TOKEN);
    EXPECT_EQ(manager->textureForToken(INVALID_TOKEN), nullptr);
}

TEST_F(TextureManagerDeletionTest, ClearLeavesInfosPatchesStreamersRootAndSlots)
{
    const auto textures = wrapped(1);
    manager->udims = true;
    manager->setTextureRoot(QStringLiteral("some/where"));
    manager->setMaxSlots(3);
    imageToken(pngFile(QStringLiteral("red.png")));
    const TextureToken udim = manager->createUDIMToken();
    manager->addUDIMPatch(udim, QPoint(1, 2), textures[0]);
    auto* const streamer = new TestStreamer(false);
    manager->tokenForTexture(streamer);

    manager->clear();
    EXPECT_EQ(Tables::tokenToFileInfo(*manager).keys(), tokens({0}));
    EXPECT_EQ(Tables::udims(*manager).value(udim), (QHash<QPoint, Texture*>{{QPoint(1, 2), textures[0]}}));
    EXPECT_EQ(manager->getTextureStreamers(), QList<TextureStreamer*>{streamer});
    EXPECT_EQ(manager->getTextureRoot(), QStringLiteral("some/where"));
    EXPECT_EQ(manager->getMaxSlots(), 3);
}

TEST_F(TextureManagerDeletionTest, ClearDeletesTheFreeTexturesOfThePoolAlone)
{
    const QPointer<Texture> used(manager->tempTexture(TextureFormat::RGBA, 4, 4, 1, 1));
    const QPointer<Texture> free(manager->tempTexture(TextureFormat::RGBA, 4, 4, 1, 1));
    manager->releaseTempTextureRef(free, 1);
    manager->clear();
    EXPECT_FALSE(used.isNull());
    EXPECT_TRUE(free.isNull());
}

TEST_F(TextureManagerDeletionTest, ClearLetsATextureTakeAnotherWithIt)
{
    Texture* const parent = new Texture(nullptr);
    QList<QPointer<Texture>> all = {parent};
    for (int i = 0; i < 8; ++i)
        all.append(new Texture(parent));
    for (const auto& texture : all)
        manager->tokenForTexture(texture);
    manager->clear();
    EXPECT_EQ(all.count(QPointer<Texture>()), all.size());
}

TEST_F(TextureManagerDeletionTest, ClearLetsATextureTellTheManagerOfItsEnd)
{
    for (int i = 0; i < 8; ++i)
    {
        Texture* const texture = new Texture(nullptr);
        manager->tokenForTexture(texture);
        QObject::connect(texture, &QObject::destroyed, [this, texture] { manager->deleteTexture(texture); });
    }
    manager->takeCalls();
    manager->clear();
    EXPECT_EQ(manager->takeCalls(), QStringList()) << "it has no token any more";
    EXPECT_TRUE(Tables::freeTokens(*manager).isEmpty());
}

TEST_F(TextureManagerDeletionTest, TheEndOfAManagerDeletesTexturesAndPool)
{
    const int before = Texture::NumAlive();
    manager->textureForColor(Qt::red);
    manager->tokenForTexture(new Texture(1000u, nullptr));
    manager->tempTexture(TextureFormat::RGBA, 4, 4, 1, 1);
    manager->releaseTempTextureRef(manager->tempTexture(TextureFormat::RGBA, 8, 8, 1, 1), 1);
    EXPECT_EQ(Texture::NumAlive(), before + 4);
    manager.reset();
    EXPECT_EQ(Texture::NumAlive(), before);
}

} // namespace Harrow::Vrk::Test
