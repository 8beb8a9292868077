// SPDX-License-Identifier: MIT
//
// Texture files on the real driver: what claims a file, what becomes of files that are none, and files that nobody here
// has written.
#include "TextureIO.h"

#include "AutoBinder.h"
#include "GLFunctions.h"
#include "Texture.h"
#include "TextureIOTestTools.h"
#include "support/CallLog.h"
#include "support/GLTest.h"
#include "support/LogCapture.h"

#include <QColor>
#include <QImage>
#include <QTemporaryDir>

#include <memory>
#include <vector>

#if !defined(_WIN32)
#include <sys/stat.h>
#endif

namespace Harrow::Vrk::Test
{
namespace
{

using Bytes = std::vector<unsigned char>;

/// The base level as RGBA, bottom row first.
Bytes bytesOf(Texture& texture)
{
    const AutoBinder binder(&texture);
    Bytes bytes(size_t(texture.width(0)) * size_t(texture.height(0)) * 4);
    glGetTexImage(GL_TEXTURE_2D, 0, GL_RGBA, GL_UNSIGNED_BYTE, bytes.data());
    return bytes;
}

/// A format of this test: "DOTS", width, height, and four bytes for each texel, bottom row first.
const QByteArray kDots = QByteArray("DOTS\x02\x01", 6) + QByteArray("\x01\x02\x03\x04\x05\x06\x07\x08", 8);
const Bytes kDotsTexels = {1, 2, 3, 4, 5, 6, 7, 8};

Texture* loadDots(Memory& memory, const TextureFileInfo&)
{
    const auto* const bytes = static_cast<const unsigned char*>(memory.get(0, memory.size()));
    if (!bytes)
        return nullptr;
    auto* const texture = new Texture(nullptr);
    texture->create2D(GL_TEXTURE_2D, GL_RGBA8, bytes[4], bytes[5]);
    const AutoBinder binder(texture);
    glTexSubImage2D(GL_TEXTURE_2D, 0, 0, 0, bytes[4], bytes[5], GL_RGBA, GL_UNSIGNED_BYTE, bytes + 6);
    return texture;
}

class TextureIOFilesGL : public GLTest
{
protected:
    void SetUp() override
    {
        GLTest::SetUp();
        EXPECT_EQ(Texture::NumAlive(), 0);
    }

    void TearDown() override
    {
        EXPECT_EQ(Texture::NumAlive(), 0);
        EXPECT_EQ(trace.loadersAlive, 0);
        GLTest::TearDown();
    }

    void addDots(LoaderPlan plan = {true, loadDots}, const char* suffix = "dots")
    {
        RegisterTextureRecogniser(new PlannedRecogniser(trace, QStringLiteral("dots"), "DOTS", std::move(plan)),
                                  QString::fromLatin1(suffix));
    }

    QString file(const char* name, const QByteArray& contents)
    {
        return writeFile(folder.filePath(QString::fromLatin1(name)), contents);
    }

    /// An image that Qt reads, in the file format that its name tells.
    QString imageFile(const char* name)
    {
        QImage image(40, 30, QImage::Format_RGB32);
        for (int y = 0; y < image.height(); ++y)
            for (int x = 0; x < image.width(); ++x)
                image.setPixelColor(x, y, QColor(x * 6, y * 8, (x * y) % 256));
        const QString path = folder.filePath(QString::fromLatin1(name));
        EXPECT_TRUE(image.save(path));
        return path;
    }

    static std::unique_ptr<Texture> load(const QString& path)
    {
        return std::unique_ptr<Texture>(LoadTextureFromFile(path, TextureFileInfo()));
    }

    /// Loading gives null with these lines and no call of OpenGL, and leaves nothing open.
    static void expectFailure(const QString& path, QtMsgType type, const QString& message)
    {
        const CallLog calls;
        const LogCapture log;
        EXPECT_EQ(load(path), nullptr) << path.toStdString();
        EXPECT_EQ(log.messages(type), QStringList(message));
        EXPECT_EQ(log.texts().size(), 1);
        EXPECT_EQ(calls.list(), QStringList());
        EXPECT_EQ(Texture::NumAlive(), 0);
#if defined(__linux__)
        if (QFileInfo::exists(path))
        {
            EXPECT_EQ(openUsesOf(path), 0);
        }
#endif
    }

    static void expectQtFailure(const QString& path)
    {
        expectFailure(path, QtWarningMsg, QStringLiteral("Failed to load ") + path);
    }

    Trace trace;
    const EmptyRegistry registry;
    QTemporaryDir folder;
};

} // namespace

// ---- what claims a file --------------------------------------------------------------------------------------------

TEST_F(TextureIOFilesGL, AFileOfAnotherFormatIsFoundByItsContent)
{
    RegisterTextureRecogniser(new PlannedRecogniser(trace, QStringLiteral("ktx"), "\xabKTX 11"), QStringLiteral("ktx"));
    addDots();
    const auto texture = load(file("x.ktx", kDots));
    ASSERT_TRUE(texture);
    EXPECT_EQ(trace.asked, QStringList({QStringLiteral("ktx"), QStringLiteral("ktx"), QStringLiteral("dots")}));
    EXPECT_EQ(bytesOf(*texture), kDotsTexels);
}

TEST_F(TextureIOFilesGL, AnImageUnderAForeignNameIsFoundByQt)
{
    addDots();
    const QString png = imageFile("image.png");
    const QString renamed = file("image.dots", readFile(png));
    const auto named = load(png);
    const auto found = load(renamed);
    ASSERT_TRUE(named);
    ASSERT_TRUE(found);
    EXPECT_EQ(bytesOf(*named).size(), 40u * 30u * 4u);
    EXPECT_EQ(bytesOf(*found), bytesOf(*named));
}

TEST_F(TextureIOFilesGL, ARecogniserComesBeforeQt)
{
    const QString path = imageFile("claimed.png");
    RegisterTextureRecogniser(
        new PlannedRecogniser(trace, QStringLiteral("png"), "\x89PNG",
                              {true, [](Memory&, const TextureFileInfo&) { return SolidColorTexture(1, 0, 0, 1); }}),
        QString());
    const auto texture = load(path);
    ASSERT_TRUE(texture);
    EXPECT_EQ(bytesOf(*texture), (Bytes{255, 0, 0, 255}));
}

TEST_F(TextureIOFilesGL, TheSameBytesFromMemory)
{
    addDots();
    QByteArray bytes = kDots;
    const std::unique_ptr<Texture> texture(LoadTextureFromMemory(reinterpret_cast<unsigned char*>(bytes.data()),
                                                                 size_t(bytes.size()), {}, QStringLiteral("dots")));
    ASSERT_TRUE(texture);
    EXPECT_EQ(bytesOf(*texture), kDotsTexels);
}

TEST_F(TextureIOFilesGL, WhatNobodyClaimsLoadsByQtFromAFileAndNotFromMemory)
{
    addDots();
    for (const char* const name : {"image.png", "image.bmp", "image.jpg"})
    {
        const QString path = imageFile(name);
        const auto texture = load(path);
        ASSERT_TRUE(texture) << name;
        {
            const AutoBinder binder(texture.get());
            EXPECT_EQ(texture->width(0), 40);
            EXPECT_EQ(texture->height(0), 30);
        }
#if defined(__linux__)
        EXPECT_EQ(openUsesOf(path), 0);
#endif
        QByteArray bytes = readFile(path);
        const CallLog calls;
        const LogCapture log;
        EXPECT_EQ(LoadTextureFromMemory(reinterpret_cast<unsigned char*>(bytes.data()), size_t(bytes.size()), {},
                                        QString::fromLatin1(name)),
                  nullptr);
        EXPECT_EQ(log.messages(QtDebugMsg),
                  QStringList(QStringLiteral("Unable to recognise the file format for texture data '%1'")
                                  .arg(QString::fromLatin1(name))));
        EXPECT_EQ(log.texts().size(), 1);
        EXPECT_EQ(calls.list(), QStringList());
    }
}

TEST_F(TextureIOFilesGL, QtAloneReadsWithoutAskingAnybody)
{
    addDots();
    const LogCapture log;
    EXPECT_EQ(LoadTextureFromQImageFile(file("x.dots", kDots), {}), nullptr);
    EXPECT_EQ(log.messages(QtWarningMsg),
              QStringList(QStringLiteral("Failed to load ") + folder.filePath(QStringLiteral("x.dots"))));
    const std::unique_ptr<Texture> texture(LoadTextureFromQImageFile(imageFile("image.png"), {}));
    EXPECT_TRUE(texture);
    EXPECT_EQ(log.texts().size(), 1) << "nothing is said of the time";
    EXPECT_EQ(trace.asked, QStringList());
}

// ---- files that are none -------------------------------------------------------------------------------------------

TEST_F(TextureIOFilesGL, AMissingFile)
{
    addDots();
    const QString path = folder.filePath(QStringLiteral("missing.png"));
    expectFailure(path, QtWarningMsg, QStringLiteral("File ") + path + QStringLiteral(" not found"));
    const LogCapture log;
    EXPECT_EQ(LoadTextureFromQImageFile(path, {}), nullptr);
    EXPECT_EQ(log.messages(QtWarningMsg), QStringList(QStringLiteral("Failed to load ") + path));
    EXPECT_EQ(trace.asked, QStringList());
}

TEST_F(TextureIOFilesGL, ADirectory)
{
    const QString path = folder.filePath(QStringLiteral("directory.png"));
    ASSERT_TRUE(QDir().mkdir(path));
    expectFailure(path, QtWarningMsg, QStringLiteral("File ") + path + QStringLiteral(" not found"));
    const LogCapture log;
    EXPECT_EQ(LoadTextureFromQImageFile(path, {}), nullptr);
    EXPECT_EQ(log.messages(QtWarningMsg), QStringList(QStringLiteral("Failed to load ") + path));
}

#if !defined(_WIN32)
TEST_F(TextureIOFilesGL, APipeIsNotWaitedFor)
{
    addDots();
    const QString path = folder.filePath(QStringLiteral("pipe.png"));
    ASSERT_EQ(mkfifo(QFile::encodeName(path).constData(), 0600), 0);
    expectFailure(path, QtWarningMsg, QStringLiteral("File ") + path + QStringLiteral(" not found"));
    const LogCapture log;
    EXPECT_EQ(LoadTextureFromQImageFile(path, {}), nullptr);
    EXPECT_EQ(log.messages(QtWarningMsg), QStringList(QStringLiteral("Failed to load ") + path));
}
#endif

TEST_F(TextureIOFilesGL, AnEmptyFile)
{
    addDots();
    expectQtFailure(file("empty.png", {}));
    expectQtFailure(file("empty.dots", {}));
}

TEST_F(TextureIOFilesGL, TextUnderTheNameOfAnImage)
{
    addDots();
    for (const char* const name : {"text.png", "text.jpg", "text.bmp", "text"})
        expectQtFailure(file(name, "This is no picture, whatever its name says.\n"));
}

TEST_F(TextureIOFilesGL, AnImageThatIsCutShort)
{
    addDots();
    const QByteArray whole = readFile(imageFile("whole.png"));
    ASSERT_GT(whole.size(), 100);
    for (const qsizetype length : {qsizetype(4), qsizetype(8), qsizetype(20), qsizetype(33), whole.size() / 2})
    {
        const QString path = file("cut.png", whole.left(length));
        const CallLog calls;
        const LogCapture log;
        EXPECT_EQ(load(path), nullptr) << length;
        // Qt may add what its decoder has to say.
        EXPECT_EQ(log.messages(QtWarningMsg).count(QStringLiteral("Failed to load ") + path), 1) << length;
        EXPECT_EQ(calls.list(), QStringList());
#if defined(__linux__)
        EXPECT_EQ(openUsesOf(path), 0);
#endif
    }
}

TEST_F(TextureIOFilesGL, ALoaderThatIsInvalid)
{
    addDots({false, loadDots});
    const QString path = file("x.dots", kDots);
    expectFailure(path, QtDebugMsg, QStringLiteral("Data appears invalid for texture file '%1'").arg(path));
    EXPECT_EQ(trace.loaderCalls, QStringList(QStringLiteral("valid")));
}

TEST_F(TextureIOFilesGL, AnInvalidFileIsNotTriedByQt)
{
    RegisterTextureRecogniser(new PlannedRecogniser(trace, QStringLiteral("png"), "\x89PNG", {false, loadDots}),
                              QString());
    const QString path = imageFile("image.png");
    expectFailure(path, QtDebugMsg, QStringLiteral("Data appears invalid for texture file '%1'").arg(path));
}

TEST_F(TextureIOFilesGL, ALoaderThatFails)
{
    addDots({});
    const QString path = file("x.dots", kDots);
    const CallLog calls;
    const LogCapture log;
    EXPECT_EQ(load(path), nullptr);
    EXPECT_EQ(log.texts(), QStringList()) << "the loader itself says why";
    EXPECT_EQ(calls.list(), QStringList());
    EXPECT_EQ(trace.loaderCalls, QStringList({QStringLiteral("valid"), QStringLiteral("load")}));
#if defined(__linux__)
    EXPECT_EQ(openUsesOf(path), 0);
#endif
}

#if defined(__linux__)
TEST_F(TextureIOFilesGL, TheFileIsOpenWhileItLoadsAndClosedAfterwards)
{
    const QString path = folder.filePath(QStringLiteral("x.dots"));
    int during = 0;
    addDots({true, [&](Memory& memory, const TextureFileInfo& info)
             {
                 during = openUsesOf(path);
                 return loadDots(memory, info);
             }});
    file("x.dots", kDots);
    const auto texture = load(path);
    ASSERT_TRUE(texture);
    EXPECT_GT(during, 0);
    EXPECT_EQ(openUsesOf(path), 0);
}
#endif

// ---- files from elsewhere ------------------------------------------------------------------------------------------

TEST_F(TextureIOFilesGL, RealImagesAreWhatQtDecodesRowByRow)
{
    VRK_NEEDS_REAL_FILES("img");
    const QFileInfoList files = QDir(realFilesFolder("img")).entryInfoList(QDir::Files, QDir::Name);
    for (const QFileInfo& info : files)
    {
        const std::string name = info.fileName().toStdString();
        const QImage decoded = QImage(info.filePath()).convertToFormat(QImage::Format_ARGB32);
        ASSERT_FALSE(decoded.isNull()) << name;
        const LogCapture log;
        const auto texture = load(info.filePath());
        ASSERT_TRUE(texture) << name;
        EXPECT_EQ(log.messages(QtWarningMsg), QStringList()) << name;
        const Bytes bytes = bytesOf(*texture);
        ASSERT_EQ(bytes.size(), size_t(decoded.width()) * size_t(decoded.height()) * 4) << name;
        const size_t rowBytes = size_t(decoded.width()) * 4;
        for (int y = 0; y < decoded.height(); ++y)
        {
            Bytes expected;
            for (int x = 0; x < decoded.width(); ++x)
            {
                const QRgb color = decoded.pixel(x, y);
                for (const int channel : {qRed(color), qGreen(color), qBlue(color), qAlpha(color)})
                    expected.push_back(static_cast<unsigned char>(channel));
            }
            const auto row = bytes.begin() + qsizetype(rowBytes) * (decoded.height() - 1 - y);
            ASSERT_EQ(Bytes(row, row + qsizetype(rowBytes)), expected) << name << ", row " << y << " from the top";
        }
    }
}

} // namespace Harrow::Vrk::Test
