// SPDX-License-Identifier: MIT
#include "ShaderFile.h"

#include "Shader.h"
#include "ShaderProgram.h"
#include "ShaderTestTools.h"
#include "support/LogCapture.h"
#include "support/TestAccess.h"

#include <VrkCore/ResourcesPath.h>

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>

#ifdef Q_OS_UNIX
#include <sys/stat.h>
#endif

using namespace Harrow::Vrk;
using namespace Harrow::Vrk::Test;

namespace
{

using Access = ShaderProgramTestAccess;

class ShaderProgramFile : public ScriptedDriverTest
{
};

} // namespace

// ---- stages from files ---------------------------------------------------------------------------------------------

TEST(ShaderFile, DirectoriesAreTheCurrentOneTheInstalledAndTheEmbedded)
{
    EXPECT_EQ(shaderFileDirectories(), QStringList({QStringLiteral("."), resourcesPath() + QStringLiteral("/GLSL/src"),
                                                    QStringLiteral(":/GLSL/src")}));
}

TEST(ShaderFile, FirstDirectoryThatExistsAndInWhichTheFileOpensCounts)
{
    const QTemporaryDir base;
    const QDir dir(base.path());
    for (const char* const name : {"one", "two", "three"})
        ASSERT_TRUE(dir.mkdir(QString::fromLatin1(name)));
    ASSERT_TRUE(dir.mkdir(QStringLiteral("one/stage.vert"))); // a directory in place of the file
    for (const char* const name : {"two", "three"})
    {
        QFile file(dir.filePath(QString::fromLatin1(name) + QStringLiteral("/stage.vert")));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(name);
        file.write(" \xC3\xA9");
    }
    const QStringList directories = {dir.filePath(QStringLiteral("missing")), dir.filePath(QStringLiteral("one")),
                                     dir.filePath(QStringLiteral("two")), dir.filePath(QStringLiteral("three"))};
    EXPECT_EQ(readShaderFile(directories, QStringLiteral("stage.vert")), QString::fromUtf8("two \xC3\xA9"));
    EXPECT_EQ(readShaderFile({directories[0]}, dir.filePath(QStringLiteral("three/stage.vert"))), std::nullopt);
    EXPECT_EQ(readShaderFile({directories[1]}, dir.filePath(QStringLiteral("three/stage.vert"))),
              QString::fromUtf8("three \xC3\xA9"));
    EXPECT_EQ(readShaderFile(directories, QStringLiteral("other.vert")), std::nullopt);
}

TEST(ShaderFile, DirectoryAmongTheEmbeddedFilesDoesNotOpen)
{
    ASSERT_TRUE(QFileInfo(QStringLiteral(":/GLSL/src")).isDir());
    EXPECT_EQ(readShaderFile({QStringLiteral(":/GLSL")}, QStringLiteral("src")), std::nullopt);
    EXPECT_EQ(readShaderFile(shaderFileDirectories(), QString()), std::nullopt);
}

#ifdef Q_OS_UNIX
TEST(ShaderFile, PipesAndDevicesDoNotCount)
{
    const QTemporaryDir directory;
    const QString pipe = directory.filePath(QStringLiteral("pipe.vert"));
    ASSERT_EQ(mkfifo(pipe.toLocal8Bit().constData(), 0600), 0);
    EXPECT_EQ(readShaderFile({directory.path()}, QStringLiteral("pipe.vert")), std::nullopt); // nobody writes to it
    ASSERT_TRUE(QFile::link(QStringLiteral("/dev/zero"), directory.filePath(QStringLiteral("endless.vert"))));
    EXPECT_EQ(readShaderFile({directory.path()}, QStringLiteral("endless.vert")), std::nullopt);
    EXPECT_EQ(readShaderFile({QStringLiteral("/dev")}, QStringLiteral("zero")), std::nullopt);
}

TEST(ShaderFile, LinkToAFileCounts)
{
    const QTemporaryDir directory;
    QFile file(directory.filePath(QStringLiteral("real.vert")));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write("text");
    file.close();
    ASSERT_TRUE(file.link(directory.filePath(QStringLiteral("link.vert"))));
    EXPECT_EQ(readShaderFile({directory.path()}, QStringLiteral("link.vert")), QStringLiteral("text"));
}
#endif

TEST_F(ShaderProgramFile, AddShaderFromFileTakesAbsolutePathsAndExpandsTheText)
{
    const QTemporaryDir directory;
    const QString path = directory.filePath(text("stage.vert"));
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write("#macro X \xC3\xA9");
    file.close();
    ShaderProgram program(nullptr);
    const LogCapture log;
    program.addShaderFromFile(GL_VERTEX_SHADER, path);
    ASSERT_EQ(Access::shaders(program).size(), 1);
    EXPECT_EQ(Access::shaders(program).value(GL_VERTEX_SHADER)->sourceCode(), text("\xC3\xA9\n"));
    EXPECT_TRUE(log.lines().isEmpty());
}

TEST_F(ShaderProgramFile, AddShaderFromFileFindsTheCurrentDirectoryBeforeTheEmbeddedFiles)
{
    const QTemporaryDir directory;
    const QString name = QDir(text(":/GLSL/src")).entryList(QDir::Files).value(0);
    ASSERT_FALSE(name.isEmpty());
    ShaderProgram program(nullptr);
    program.addShaderFromFile(GL_VERTEX_SHADER, name);
    ASSERT_EQ(Access::shaders(program).size(), 1);

    QFile file(directory.filePath(name));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write("mine");
    file.close();
    const QString before = QDir::currentPath();
    ASSERT_TRUE(QDir::setCurrent(directory.path()));
    program.addShaderFromFile(GL_FRAGMENT_SHADER, name);
    ASSERT_TRUE(QDir::setCurrent(before));
    ASSERT_EQ(Access::shaders(program).size(), 2);
    EXPECT_EQ(Access::shaders(program).value(GL_FRAGMENT_SHADER)->sourceCode(), text("mine"));
}

TEST_F(ShaderProgramFile, MissingFileIsWarnedOfAndAddsNoStage)
{
    ShaderProgram program(nullptr);
    program.addShader(GL_FRAGMENT_SHADER, text("a"));
    ASSERT_TRUE(program.compile());
    const LogCapture log;
    program.addShaderFromFile(GL_VERTEX_SHADER, text("no/such \xC3\xA9 %s.vert"));
    EXPECT_EQ(log.texts(QtWarningMsg),
              QStringList({text("Couldn't find shader source file 'no/such \xC3\xA9 %s.vert'")}));
    EXPECT_EQ(log.lines().size(), 1);
    EXPECT_EQ(Access::shaders(program).size(), 1);
    EXPECT_TRUE(Access::isPreprocessed(program));
}

TEST_F(ShaderProgramFile, DirectoryInPlaceOfAFileIsWarnedOf)
{
    const QTemporaryDir directory;
    ShaderProgram program(nullptr);
    const LogCapture log;
    program.addShaderFromFile(GL_VERTEX_SHADER, directory.path());
    EXPECT_EQ(log.texts(QtWarningMsg),
              QStringList({QStringLiteral("Couldn't find shader source file '%1'").arg(directory.path())}));
    EXPECT_TRUE(Access::shaders(program).isEmpty());
}
