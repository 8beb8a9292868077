// SPDX-License-Identifier: MIT
//
// TextureManager: how paths of image files are found, and the tokens of files.
#include "TextureManagerTestTools.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QScopeGuard>

namespace Harrow::Vrk::Test
{
namespace
{

class TextureManagerPathsTest : public ManagerFixture
{
protected:
    void SetUp() override
    {
        ManagerFixture::SetUp();
        ASSERT_TRUE(directory.isValid());
        ASSERT_TRUE(QDir(directory.path()).mkpath(QStringLiteral("sub/deep")));
        manager->setTextureRoot(directory.path());
    }

    /// An empty file below the root; its full path.
    QString file(const QString& name)
    {
        QFile made(directory.filePath(name));
        EXPECT_TRUE(made.open(QIODevice::WriteOnly));
        return made.fileName();
    }

    QString resolve(const char* path)
    {
        return manager->resolveTexturePath(QString::fromUtf8(path));
    }

    TextureToken imageToken(const QString& path)
    {
        return manager->tokenForImage(path, TextureFileInfo());
    }

    static QString notFound(const QString& path)
    {
        return QStringLiteral("Failed to find file  \"%1\"").arg(path);
    }
};

} // namespace

// ---- resolveTexturePath --------------------------------------------------------------------------------------------

TEST_F(TextureManagerPathsTest, TheRootIsWhatWasSet)
{
    EXPECT_EQ(manager->getTextureRoot(), directory.path());
    manager->setTextureRoot(QStringLiteral("no/such/place"));
    EXPECT_EQ(manager->getTextureRoot(), QStringLiteral("no/such/place"));
}

TEST_F(TextureManagerPathsTest, APathThatExistsStaysAsItIs)
{
    const LogCapture log;
    const QString path = file(QStringLiteral("a.png"));
    EXPECT_EQ(manager->resolveTexturePath(path), path);
    const QString roundabout = directory.filePath(QStringLiteral("sub/../a.png"));
    EXPECT_EQ(manager->resolveTexturePath(roundabout), roundabout);
    EXPECT_EQ(log.texts(), QStringList());
}

TEST_F(TextureManagerPathsTest, APathThatExistsGoesBeforeTheOneBelowTheRoot)
{
    const QString old = QDir::currentPath();
    const auto back = qScopeGuard([old] { QDir::setCurrent(old); });
    file(QStringLiteral("a.png"));
    file(QStringLiteral("sub/a.png"));
    ASSERT_TRUE(QDir::setCurrent(directory.filePath(QStringLiteral("sub"))));
    EXPECT_EQ(resolve("a.png"), QStringLiteral("a.png"));
}

TEST_F(TextureManagerPathsTest, ARelativePathIsFoundBelowTheRoot)
{
    const LogCapture log;
    const QString path = file(QStringLiteral("sub/deep/a.png"));
    EXPECT_EQ(resolve("sub/deep/a.png"), path);
    EXPECT_EQ(log.texts(), QStringList());
}

TEST_F(TextureManagerPathsTest, TheWholePathBelowTheRootGoesBeforeTheBareName)
{
    file(QStringLiteral("a.png"));
    const QString deep = file(QStringLiteral("sub/a.png"));
    EXPECT_EQ(resolve("sub/a.png"), deep);
}

TEST_F(TextureManagerPathsTest, UnknownDirectoriesAreLeftOutWhenTheNameIsInTheRoot)
{
    const LogCapture log;
    const QString path = file(QStringLiteral("a.png"));
    EXPECT_EQ(resolve("no/such/place/a.png"), path);
    EXPECT_EQ(resolve("/no/such/place/a.png"), path);
    EXPECT_EQ(log.texts(), QStringList());
}

TEST_F(TextureManagerPathsTest, TheBareNameIsLookedForInTheRootAlone)
{
    file(QStringLiteral("sub/a.png"));
    const LogCapture log;
    EXPECT_EQ(resolve("other/a.png"), QStringLiteral("other/a.png"));
    EXPECT_EQ(log.texts(QtDebugMsg), QStringList({notFound(QStringLiteral("other/a.png"))}));
}

TEST_F(TextureManagerPathsTest, BackslashesSeparateWhereThereIsNoSlash)
{
    const QString path = file(QStringLiteral("a.png"));
    EXPECT_EQ(resolve("C:\\no\\such\\place\\a.png"), path);
}

TEST_F(TextureManagerPathsTest, BackslashesAreOrdinaryWhereThereIsASlash)
{
    file(QStringLiteral("a.png"));
    const QString odd = file(QStringLiteral("place\\a.png"));
    EXPECT_EQ(resolve("no/such/place\\a.png"), odd);
    ASSERT_TRUE(QFile::remove(odd));
    const LogCapture log;
    EXPECT_EQ(resolve("no/such/place\\a.png"), QStringLiteral("no/such/place\\a.png"));
    EXPECT_EQ(log.texts().size(), 1);
}

TEST_F(TextureManagerPathsTest, APathThatIsNotFoundIsNamedAndStays)
{
    const LogCapture log;
    EXPECT_EQ(resolve("a/b.png"), QStringLiteral("a/b.png"));
    EXPECT_EQ(resolve("b.png"), QStringLiteral("b.png"));
    EXPECT_EQ(log.texts(), QStringList({notFound(QStringLiteral("a/b.png")), notFound(QStringLiteral("b.png"))}));
    EXPECT_EQ(log.texts(QtDebugMsg), log.texts());
}

TEST_F(TextureManagerPathsTest, WithoutARootPathsCountFromTheCurrentDirectory)
{
    const QString old = QDir::currentPath();
    const auto back = qScopeGuard([old] { QDir::setCurrent(old); });
    ASSERT_TRUE(QDir::setCurrent(directory.path()));
    file(QStringLiteral("a.png"));
    manager->setTextureRoot(QString());
    EXPECT_EQ(resolve("a.png"), QStringLiteral("a.png"));
    EXPECT_EQ(QFileInfo(resolve("no/a.png")).canonicalFilePath(),
              QFileInfo(QStringLiteral("a.png")).canonicalFilePath());
    const LogCapture log;
    EXPECT_EQ(resolve("no/b.png"), QStringLiteral("no/b.png"));
    EXPECT_EQ(log.texts(), QStringList({notFound(QStringLiteral("no/b.png"))}));
}

TEST_F(TextureManagerPathsTest, ADirectoryExistsToo)
{
    EXPECT_EQ(resolve("sub"), directory.filePath(QStringLiteral("sub")));
}

// ---- tokens of files -----------------------------------------------------------------------------------------------

TEST_F(TextureManagerPathsTest, AFileHasOneTokenByWhateverPathItIsFound)
{
    const QString path = pngFile(QStringLiteral("a.png"));
    EXPECT_EQ(imageToken(path), TextureToken(0));
    EXPECT_EQ(imageToken(QStringLiteral("a.png")), TextureToken(0));
    EXPECT_EQ(imageToken(QStringLiteral("no/such/a.png")), TextureToken(0));
    EXPECT_EQ(manager->takeCalls(), QStringList({"issued 0"}));
    EXPECT_EQ(Tables::pathToToken(*manager), (QHash<QString, TextureToken>{{path, TextureToken(0)}}));
    EXPECT_EQ(Tables::tokenToPath(*manager), (QHash<TextureToken, QString>{{TextureToken(0), path}}));
}

TEST_F(TextureManagerPathsTest, PathsThatAreWrittenDifferentlyAreDifferentFiles)
{
    const QString path = pngFile(QStringLiteral("a.png"));
    EXPECT_EQ(imageToken(path), TextureToken(0));
    EXPECT_EQ(imageToken(directory.filePath(QStringLiteral("sub/../a.png"))), TextureToken(1));
}

TEST_F(TextureManagerPathsTest, AFileIsInTheTablesWhenItsTokenIsIssued)
{
    const QString path = pngFile(QStringLiteral("a.png"));
    bool seen = false;
    manager->onIssued = [&](TextureToken token)
    {
        seen = Tables::pathToToken(*manager).value(path) == token &&
               Tables::tokenToPath(*manager).value(token) == path && Tables::tokenToFileInfo(*manager).contains(token);
    };
    imageToken(path);
    EXPECT_TRUE(seen);
}

TEST_F(TextureManagerPathsTest, NothingIsLoadedForAToken)
{
    const QString path = corruptFile(QStringLiteral("corrupt.png"));
    const CallLog calls;
    const LogCapture log;
    EXPECT_EQ(imageToken(path), TextureToken(0));
    EXPECT_EQ(calls.list(), QStringList());
    EXPECT_EQ(log.texts(), QStringList());
}

TEST_F(TextureManagerPathsTest, TheInfoOfALaterRequestIsIgnored)
{
    const QString path = pngFile(QStringLiteral("a.png"));
    TextureFileInfo first;
    first.srgb = true;
    first.anisotropy = 4;
    EXPECT_EQ(manager->tokenForImage(path, first), TextureToken(0));
    EXPECT_EQ(manager->tokenForImage(path, TextureFileInfo()), TextureToken(0));
    const TextureFileInfo kept = Tables::tokenToFileInfo(*manager).value(TextureToken(0));
    EXPECT_TRUE(kept.srgb);
    EXPECT_EQ(kept.anisotropy, 4);
    EXPECT_EQ(Access::recorded(*manager->textureForToken(TextureToken(0)))[0], GL_SRGB8_ALPHA8);
}

TEST_F(TextureManagerPathsTest, AMissingFileIsWhiteEachTime)
{
    const QString missing = QStringLiteral("no/such.png");
    const LogCapture log;
    const TextureToken token = imageToken(missing);
    EXPECT_EQ(imageToken(missing), token);
    EXPECT_EQ(manager->tokenForColor(Qt::white), token);
    EXPECT_EQ(manager->takeCalls(), QStringList({"issued 0"}));
    EXPECT_EQ(log.messages(QtDebugMsg), QStringList({notFound(missing), notFound(missing)}));
    EXPECT_EQ(log.messages(QtWarningMsg), QStringList({"Cannot load no/such.png", "Cannot load no/such.png"}));
    EXPECT_EQ(manager->textureFiles(), QStringList());
    EXPECT_EQ(manager->textureForImage(missing, TextureFileInfo()), manager->textureForColor(Qt::white));
}

TEST_F(TextureManagerPathsTest, AFileThatComesLaterHasATokenThen)
{
    const LogCapture log;
    const TextureToken white = imageToken(QStringLiteral("late.png"));
    const QString path = pngFile(QStringLiteral("late.png"));
    const TextureToken token = imageToken(QStringLiteral("late.png"));
    EXPECT_NE(token, white);
    EXPECT_EQ(Tables::tokenToPath(*manager).value(token), path);
}

TEST_F(TextureManagerPathsTest, AnEmptyPathIsWhiteAndNotLookedFor)
{
    const LogCapture log;
    EXPECT_EQ(imageToken(QString()), manager->tokenForColor(Qt::white));
    EXPECT_EQ(log.messages(), QStringList({"Cannot load "}));
}

TEST_F(TextureManagerPathsTest, ADirectoryIsWhite)
{
    const LogCapture log;
    EXPECT_EQ(imageToken(QStringLiteral("sub")), manager->tokenForColor(Qt::white));
    EXPECT_EQ(log.messages(), QStringList({"Cannot load sub"}));
    EXPECT_TRUE(Tables::pathToToken(*manager).isEmpty());
}

TEST_F(TextureManagerPathsTest, TheListOfFilesAscends)
{
    QStringList paths;
    for (const char* name : {"b.png", "a.png", "C.png", "sub/a.png"})
    {
        paths.append(pngFile(QString::fromUtf8(name)));
        imageToken(paths.last());
    }
    const QString root = directory.path() + QLatin1Char('/');
    EXPECT_EQ(manager->textureFiles(),
              QStringList({root + QStringLiteral("C.png"), root + QStringLiteral("a.png"),
                           root + QStringLiteral("b.png"), root + QStringLiteral("sub/a.png")}));
    manager->textureForToken(TextureToken(1));
    manager->deleteTexture(TextureToken(1));
    EXPECT_EQ(manager->textureFiles().size(), 3);
    EXPECT_FALSE(manager->textureFiles().contains(paths[1]));
}

} // namespace Harrow::Vrk::Test
