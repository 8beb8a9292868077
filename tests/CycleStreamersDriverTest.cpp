// SPDX-License-Identifier: MIT
//
// The streamers that cycle through colours and images, on the real driver: their texels, the state that they leave,
// images from files, and textures that managers sample.
#include "ColorCycleTextureStreamer.h"
#include "ImageCycleTextureStreamer.h"

#include "Array2DTextureManager.h"
#include "SamplerTextureManager.h"
#include "StreamerTestTools.h"

#include <QImage>
#include <QTemporaryDir>

#include <functional>

namespace Harrow::Vrk::Test
{
namespace
{

const QColor kRed(255, 0, 0);
const QColor kGreen(0, 255, 0, 51);
const QColor kBlue(0, 0, 255);

StreamerPixel pixel(const QColor& color)
{
    return {static_cast<unsigned char>(color.red()), static_cast<unsigned char>(color.green()),
            static_cast<unsigned char>(color.blue()), static_cast<unsigned char>(color.alpha())};
}

class CycleStreamersGL : public StreamerGLFixture
{
protected:
    QString save(const char* name, const QImage& image)
    {
        const QString path = directory.filePath(QLatin1String(name));
        EXPECT_TRUE(image.save(path, "PNG"));
        return path;
    }

    QString saveColor(const char* name, const QColor& color, int width = 4, int height = 4)
    {
        QImage image(width, height, QImage::Format_ARGB32);
        image.fill(color);
        return save(name, image);
    }

    static std::unique_ptr<ColorCycleTextureStreamer> colors(const QList<QColor>& list, int frameCount = 1)
    {
        return std::unique_ptr<ColorCycleTextureStreamer>(
            ColorCycleTextureStreamer::make(list.constData(), int(list.size()), 8, 4, frameCount, nullptr));
    }

    static std::unique_ptr<ImageCycleTextureStreamer> images(const QStringList& paths)
    {
        return std::unique_ptr<ImageCycleTextureStreamer>(
            ImageCycleTextureStreamer::make(paths.constData(), int(paths.size()), 1, nullptr));
    }

    static bool isAll(Texture& texture, int level, const QColor& color)
    {
        const auto texels = streamerTexels(texture, level);
        return !texels.empty() &&
               std::all_of(texels.begin(), texels.end(), [&](const auto& texel) { return texel == pixel(color); });
    }

    /// With a framebuffer for drawing, unit 3 active and something on unit 0, runs `update` and looks at these again.
    static void expectStateKept(const std::function<bool()>& update, bool emptiesUnit0)
    {
        GLuint framebuffer = 0;
        GLuint name = 0;
        glGenFramebuffers(1, &framebuffer);
        glGenTextures(1, &name);
        glBindFramebuffer(GL_DRAW_FRAMEBUFFER, framebuffer);
        glActiveTexture(GL_TEXTURE0);
        glBindTexture(GL_TEXTURE_2D, name);
        glActiveTexture(GL_TEXTURE3);
        EXPECT_TRUE(update());
        EXPECT_EQ(integerOf(GL_ACTIVE_TEXTURE), GL_TEXTURE3);
        EXPECT_EQ(integerOf(GL_DRAW_FRAMEBUFFER_BINDING), GLint(framebuffer));
        EXPECT_EQ(integerOf(GL_READ_FRAMEBUFFER_BINDING), GLint(framebuffer)) << "both ends get it back";
        glActiveTexture(GL_TEXTURE0);
        EXPECT_EQ(integerOf(GL_TEXTURE_BINDING_2D), emptiesUnit0 ? 0 : GLint(name));
        glBindTexture(GL_TEXTURE_2D, 0);
        glBindFramebuffer(GL_FRAMEBUFFER, 0);
        glDeleteTextures(1, &name);
        glDeleteFramebuffers(1, &framebuffer);
    }

    QTemporaryDir directory;
};

QStringList invalid(const QString& path)
{
    return {QStringLiteral("Invalid texture ") + path,
            QStringLiteral("All textures must have the same width, height and format")};
}

} // namespace

// ---- texels --------------------------------------------------------------------------------------------------------

TEST_F(CycleStreamersGL, AFreshColourStreamerFillsInTheFirstColourOnAllLevels)
{
    const auto streamer = colors({kRed, kGreen});
    EXPECT_TRUE(streamer->updateTexture());
    for (int level = 0; level < 4; ++level)
        EXPECT_TRUE(isAll(*streamer, level, kRed)) << level;
    EXPECT_FALSE(streamer->updateTexture());
}

TEST_F(CycleStreamersGL, ColoursFollowOneAnotherAndBeginAgain)
{
    const QList<QColor> list = {kRed, kGreen, kBlue};
    const auto streamer = colors(list, 2);
    EXPECT_TRUE(streamer->updateTexture());
    for (int step = 1; step <= 4; ++step)
    {
        streamer->nextFrame();
        EXPECT_TRUE(streamer->updateTexture());
        EXPECT_TRUE(isAll(*streamer, 0, list[step % 3])) << step;
        EXPECT_TRUE(isAll(*streamer, 3, list[step % 3])) << step;
        streamer->nextFrame();
        EXPECT_FALSE(streamer->updateTexture());
    }
}

TEST_F(CycleStreamersGL, ASingleColourIsDrawnAnew)
{
    const auto streamer = colors({kGreen});
    EXPECT_TRUE(streamer->updateTexture());
    {
        const AutoBinder binder(streamer.get());
        const std::vector<StreamerPixel> other(32, pixel(kBlue));
        glTexSubImage2D(GL_TEXTURE_2D, 0, 0, 0, 8, 4, GL_RGBA, GL_UNSIGNED_BYTE, other.data());
    }
    EXPECT_TRUE(isAll(*streamer, 0, kBlue));
    streamer->nextFrame();
    EXPECT_TRUE(streamer->updateTexture());
    EXPECT_TRUE(isAll(*streamer, 0, kGreen));
}

TEST_F(CycleStreamersGL, ImagesAreCopiedTexelByTexelWithTheirMipmaps)
{
    QImage first(4, 2, QImage::Format_ARGB32);
    for (int y = 0; y < 2; ++y)
        for (int x = 0; x < 4; ++x)
            first.setPixel(x, y, qRgba(40 * x, 100 * y, 7 * (x + y), 255 - x));
    const QStringList paths = {save("first.png", first), saveColor("second.png", kBlue, 4, 2)};
    const LogCapture log;
    const auto streamer = images(paths);
    ASSERT_NE(streamer, nullptr);
    EXPECT_EQ(log.messages(QtWarningMsg) + log.messages(QtCriticalMsg), QStringList());
    EXPECT_TRUE(streamer->updateTexture());
    std::vector<StreamerPixel> expected;
    for (const int y : {1, 0}) // the bottom row first
        for (int x = 0; x < 4; ++x)
            expected.push_back(pixel(first.pixelColor(x, y)));
    EXPECT_EQ(streamerTexels(*streamer), expected);
    streamer->nextFrame();
    EXPECT_TRUE(streamer->updateTexture());
    for (int level = 0; level < 3; ++level)
        EXPECT_TRUE(isAll(*streamer, level, kBlue)) << level;
    EXPECT_FALSE(streamer->updateTexture());
}

TEST_F(CycleStreamersGL, ImagesStepOnCalls1And31And61)
{
    const QList<QColor> list = {kRed, kGreen, kBlue};
    const QStringList paths = {saveColor("a.png", kRed), saveColor("b.png", kGreen), saveColor("c.png", kBlue)};
    const auto streamer = images(paths);
    ASSERT_NE(streamer, nullptr);
    EXPECT_TRUE(streamer->updateTexture());
    int position = 0;
    for (int call = 1; call <= 62; ++call)
    {
        streamer->nextFrame();
        const bool steps = call == 1 || call == 31 || call == 61;
        EXPECT_EQ(streamer->updateTexture(), steps) << call;
        position += steps ? 1 : 0;
        EXPECT_TRUE(isAll(*streamer, 0, list[position % 3])) << call;
    }
    EXPECT_EQ(position, 3);
}

// ---- state ---------------------------------------------------------------------------------------------------------

TEST_F(CycleStreamersGL, ColoursLeaveFramebufferAndUnitsAsTheyWere)
{
    const auto streamer = colors({kRed});
    expectStateKept([&] { return streamer->updateTexture(); }, false);
    EXPECT_TRUE(isAll(*streamer, 0, kRed));
}

TEST_F(CycleStreamersGL, ImagesLeaveFramebufferAndActiveUnitAsTheyWere)
{
    const auto streamer = images({saveColor("a.png", kRed)});
    ASSERT_NE(streamer, nullptr);
    expectStateKept([&] { return streamer->updateTexture(); }, true);
    EXPECT_TRUE(isAll(*streamer, 0, kRed));
}

TEST_F(CycleStreamersGL, NoFramebufferIsLeftBehind)
{
    const auto colorStreamer = colors({kRed});
    const auto imageStreamer = images({saveColor("a.png", kRed)});
    const CallLog calls;
    EXPECT_TRUE(colorStreamer->updateTexture());
    EXPECT_TRUE(imageStreamer->updateTexture());
    EXPECT_EQ(calls.count(QStringLiteral("glGenFramebuffers")), 2);
    EXPECT_EQ(calls.count(QStringLiteral("glDeleteFramebuffers")), 2);
}

// ---- files that will not do ----------------------------------------------------------------------------------------

TEST_F(CycleStreamersGL, AFileThatDoesNotLoadEndsTheLoadingAndLeavesNothing)
{
    const QString missing = directory.filePath(QStringLiteral("missing.png"));
    const QStringList paths = {saveColor("a.png", kRed), missing, saveColor("odd.png", kRed, 8, 8)};
    const LogCapture log;
    const CallLog calls;
    EXPECT_EQ(images(paths), nullptr);
    EXPECT_EQ(log.texts(QtWarningMsg).last(), QStringLiteral("Cannot load texture ") + missing);
    EXPECT_EQ(log.messages(QtWarningMsg).filter(QStringLiteral("Invalid texture")), QStringList()) << "it has stopped";
    EXPECT_EQ(Texture::NumAlive(), before);
    EXPECT_GT(calls.count(QStringLiteral("glGenTextures")), 0);
    EXPECT_EQ(calls.count(QStringLiteral("glGenTextures")), calls.count(QStringLiteral("glDeleteTextures")));
}

TEST_F(CycleStreamersGL, EachImageThatDiffersFromTheFirstIsNamedAndNothingLeft)
{
    const QStringList paths = {saveColor("a.png", kRed, 4, 4), saveColor("wide.png", kRed, 8, 4),
                               saveColor("b.png", kBlue, 4, 4), saveColor("high.png", kRed, 4, 8)};
    const LogCapture log;
    const CallLog calls;
    EXPECT_EQ(images(paths), nullptr);
    EXPECT_EQ(log.texts(QtWarningMsg), invalid(paths[1]) + invalid(paths[3]));
    EXPECT_EQ(Texture::NumAlive(), before);
    EXPECT_EQ(calls.count(QStringLiteral("glGenTextures")), 4);
    EXPECT_EQ(calls.count(QStringLiteral("glDeleteTextures")), 4);
}

TEST_F(CycleStreamersGL, AnotherInternalFormatDiffersToo)
{
    // A Radiance picture of 8 by 1 pixels: floats, where the other one has bytes.
    const QString radiance = directory.filePath(QStringLiteral("a.hdr"));
    {
        QFile file(radiance);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write("#?RADIANCE\nFORMAT=32-bit_rle_rgbe\n\n-Y 1 +X 4\n");
        file.write(QByteArray(16, char(128)));
    }
    const QStringList paths = {saveColor("a.png", kRed, 4, 1), radiance};
    const LogCapture log;
    EXPECT_EQ(images(paths), nullptr);
    EXPECT_EQ(log.texts(QtWarningMsg), invalid(radiance));
    EXPECT_EQ(Texture::NumAlive(), before);
}

TEST_F(CycleStreamersGL, TheWarningsOfMakeDoNotHangOnTheLoggingSwitch)
{
    EXPECT_TRUE(passesWithLoggingOff("CycleStreamersGL.AFailureBehindADifferenceLeavesNothingEither"));
}

TEST_F(CycleStreamersGL, AFailureBehindADifferenceLeavesNothingEither)
{
    const QString missing = directory.filePath(QStringLiteral("missing.png"));
    const QStringList paths = {saveColor("a.png", kRed), saveColor("odd.png", kRed, 2, 2), missing};
    const LogCapture log;
    EXPECT_EQ(images(paths), nullptr);
    const QStringList warnings = log.texts(QtWarningMsg);
    EXPECT_EQ(warnings.first(2), invalid(paths[1]));
    EXPECT_EQ(warnings.last(), QStringLiteral("Cannot load texture ") + missing);
    EXPECT_EQ(Texture::NumAlive(), before);
}

// ---- with the managers ---------------------------------------------------------------------------------------------

namespace
{

QImage filled(const QColor& color)
{
    QImage image(8, 4, QImage::Format_RGBA8888);
    image.fill(color);
    return image;
}

} // namespace

class CycleStreamersInManagersGL : public CycleStreamersGL
{
protected:
    /// Samples each step of both streamers, colours and images, through the manager.
    template <typename Manager> void run()
    {
        const auto manager = std::make_unique<Manager>();
        auto* const color = colors({kRed, kBlue}).release();
        auto* const image = images({saveColor("a.png", kBlue, 8, 4), saveColor("b.png", kGreen, 8, 4)}).release();
        ASSERT_NE(image, nullptr);
        const TextureToken colorToken = manager->tokenForTexture(color);
        const TextureToken imageToken = manager->tokenForTexture(image);
        EXPECT_EQ(manager->getTextureStreamers(), (QList<TextureStreamer*>{color, image}));

        EXPECT_TRUE(manager->updateTextureStreamers());
        EXPECT_TRUE(picturesAgree(sampled(*manager, colorToken, 8, 4), filled(kRed), 0, 0.0));
        EXPECT_TRUE(picturesAgree(sampled(*manager, imageToken, 8, 4), filled(kBlue), 0, 0.0));
        EXPECT_FALSE(manager->updateTextureStreamers());
        color->nextFrame();
        EXPECT_TRUE(manager->updateTextureStreamers());
        EXPECT_TRUE(picturesAgree(sampled(*manager, colorToken, 8, 4), filled(kBlue), 0, 0.0));
        EXPECT_TRUE(picturesAgree(sampled(*manager, imageToken, 8, 4), filled(kBlue), 0, 0.0));
        image->nextFrame();
        EXPECT_TRUE(manager->updateTextureStreamers());
        EXPECT_TRUE(picturesAgree(sampled(*manager, imageToken, 8, 4), filled(kGreen), 0, 0.0));

        manager->deleteTexture(color);
        manager->deleteTexture(image);
        EXPECT_FALSE(manager->updateTextureStreamers());
    }
};

TEST_F(CycleStreamersInManagersGL, TheSamplerManagerShowsEachStep)
{
    run<SamplerTextureManager>();
}

TEST_F(CycleStreamersInManagersGL, TheArrayManagerCopiesEachStep)
{
    run<Array2DTextureManager>();
}

} // namespace Harrow::Vrk::Test
