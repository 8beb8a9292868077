// SPDX-License-Identifier: MIT
//
// TextureManager on the real driver: tokens of colours and files turned into textures and read back, and nothing left.
#include "TextureManager.h"

#include "AutoBinder.h"
#include "TextureManagerTestTools.h"
#include "support/GLTest.h"

#include <array>
#include <vector>

namespace Harrow::Vrk::Test
{
namespace
{

using Pixel = std::array<unsigned char, 4>;

class TextureManagerGL : public GLTest
{
protected:
    using Tables = TextureManagerTestAccess;

    void SetUp() override
    {
        GLTest::SetUp();
        before = Texture::NumAlive();
        manager = std::make_unique<RecordingManager>();
    }

    void TearDown() override
    {
        manager.reset();
        EXPECT_EQ(Texture::NumAlive(), before);
        EXPECT_TRUE(TextureUnits::ofCurrentContext().textureToUnitMaps.isEmpty());
        glDisable(GL_DEPTH_TEST); // as a changed colour range leaves it on
        GLTest::TearDown();
    }

    /// The texels of a level, bottom row first.
    static std::vector<Pixel> texels(Texture* texture, int level = 0)
    {
        const AutoBinder binder(texture);
        const auto count = std::size_t(texture->width(level)) * std::size_t(texture->height(level));
        std::vector<Pixel> result(count);
        glGetTexImage(texture->target(), level, GL_RGBA, GL_UNSIGNED_BYTE, result.data());
        return result;
    }

    QString save(const char* name, const QImage& image)
    {
        const QString path = directory.filePath(QString::fromUtf8(name));
        EXPECT_TRUE(image.save(path, "PNG"));
        return path;
    }

    /// Two by two: red, green above blue, translucent white.
    static QImage fourColours()
    {
        QImage image(2, 2, QImage::Format_ARGB32);
        image.setPixel(0, 0, qRgba(255, 0, 0, 255));
        image.setPixel(1, 0, qRgba(0, 255, 0, 255));
        image.setPixel(0, 1, qRgba(0, 0, 255, 255));
        image.setPixel(1, 1, qRgba(255, 255, 255, 128));
        return image;
    }

    int before = 0;
    QTemporaryDir directory;
    std::unique_ptr<RecordingManager> manager;
};

} // namespace

TEST_F(TextureManagerGL, ColoursAreOneTexelOfTheColour)
{
    const LogCapture log;
    Texture* const opaque = manager->textureForColor(QColor(10, 20, 30));
    Texture* const translucent = manager->textureForColor(QColor(200, 100, 50, 25));
    EXPECT_EQ(texels(opaque), (std::vector<Pixel>{{10, 20, 30, 255}}));
    EXPECT_EQ(texels(translucent), (std::vector<Pixel>{{200, 100, 50, 25}}));
    EXPECT_TRUE(opaque->isReadOnly());
    EXPECT_EQ(log.texts(), QStringList());
}

TEST_F(TextureManagerGL, AnImageIsReadBackWithItsBottomRowFirst)
{
    const TextureToken token = manager->tokenForImage(save("four.png", fourColours()), TextureFileInfo());
    EXPECT_EQ(Texture::NumAlive(), before);
    Texture* const texture = manager->textureForToken(token);
    ASSERT_NE(texture, nullptr);
    EXPECT_EQ(texels(texture),
              (std::vector<Pixel>{{0, 0, 255, 255}, {255, 255, 255, 128}, {255, 0, 0, 255}, {0, 255, 0, 255}}));
    EXPECT_EQ(texels(texture, 1).size(), 1u) << "with mipmaps";
    EXPECT_TRUE(texture->isReadOnly());
    EXPECT_EQ(Texture::NumAlive(), before + 1);
}

TEST_F(TextureManagerGL, AnImageIsFoundBelowTheRoot)
{
    save("four.png", fourColours());
    manager->setTextureRoot(directory.path());
    Texture* const texture = manager->textureForImage(QStringLiteral("elsewhere/four.png"), TextureFileInfo());
    EXPECT_EQ(texels(texture).size(), 4u);
}

TEST_F(TextureManagerGL, TheColourRangeOfAFileIsBroughtToWhatItsInfoSays)
{
    TextureFileInfo info;
    info.lowValue = 0.5f;
    info.highValue = 0.5f;
    QImage image(1, 1, QImage::Format_ARGB32);
    image.fill(Qt::white);
    Texture* const texture = manager->textureForImage(save("white.png", image), info);
    ASSERT_NE(texture, nullptr);
    const Pixel pixel = texels(texture).at(0);
    for (int channel = 0; channel < 3; ++channel)
        EXPECT_NEAR(pixel[std::size_t(channel)], 127.5, 1.0);
    EXPECT_EQ(manager->findToken(texture), TextureToken(0)) << "the texture that has taken the place of the first";
    EXPECT_EQ(Texture::NumAlive(), before + 1);
}

TEST_F(TextureManagerGL, ACorruptFileIsWhiteUntilItIsMended)
{
    const QString path = directory.filePath(QStringLiteral("broken.png"));
    {
        QFile file(path);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write("\x89PNG\r\n\x1a\n and no more than that");
    }
    const TextureToken token = manager->tokenForImage(path, TextureFileInfo());
    {
        const LogCapture log;
        Texture* const white = manager->textureForToken(token);
        EXPECT_EQ(texels(white), (std::vector<Pixel>{{255, 255, 255, 255}}));
        EXPECT_EQ(white, manager->textureForColor(Qt::white));
        EXPECT_EQ(log.messages(QtWarningMsg), QStringList({QStringLiteral("Failed to load ") + path}));
    }
    save("broken.png", fourColours());
    EXPECT_EQ(texels(manager->textureForToken(token)).size(), 4u);
}

TEST_F(TextureManagerGL, AMissingFileIsWhite)
{
    const LogCapture log;
    Texture* const texture = manager->textureForImage(QStringLiteral("no/such.png"), TextureFileInfo());
    EXPECT_EQ(texels(texture), (std::vector<Pixel>{{255, 255, 255, 255}}));
}

TEST_F(TextureManagerGL, DeletedTokensTakeTheirTexturesWithThem)
{
    const TextureToken color = manager->tokenForColor(Qt::red);
    const TextureToken image = manager->tokenForImage(save("four.png", fourColours()), TextureFileInfo());
    const unsigned names[] = {manager->textureForToken(color)->textureID(),
                              manager->textureForToken(image)->textureID()};
    for (const unsigned name : names)
        EXPECT_TRUE(glIsTexture(name));
    manager->deleteTexture(color);
    manager->deleteTexture(image);
    for (const unsigned name : names)
        EXPECT_FALSE(glIsTexture(name));
    EXPECT_EQ(Texture::NumAlive(), before);
    EXPECT_EQ(manager->maxToken(), TextureToken(0));
}

TEST_F(TextureManagerGL, ClearLeavesNoTextureAlive)
{
    manager->textureForColor(Qt::red);
    manager->textureForImage(save("four.png", fourColours()), TextureFileInfo());
    manager->tokenForTexture(new Texture(nullptr));
    manager->releaseTempTextureRef(manager->tempTexture(TextureFormat::RGBA, 4, 4, 1, 1), 1);
    EXPECT_EQ(Texture::NumAlive(), before + 4);
    manager->clear();
    EXPECT_EQ(Texture::NumAlive(), before);
    EXPECT_EQ(texels(manager->textureForColor(Qt::red)), (std::vector<Pixel>{{255, 0, 0, 255}})) << "and starts anew";
}

TEST_F(TextureManagerGL, TheEndLeavesNoTextureAlive)
{
    manager->textureForColor(Qt::red);
    manager->tempTexture(TextureFormat::RGBA, 4, 4, 1, 1);
    manager->tokenForTexture(new Texture(nullptr));
    manager.reset();
    EXPECT_EQ(Texture::NumAlive(), before);
}

} // namespace Harrow::Vrk::Test
