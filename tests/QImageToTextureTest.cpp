// SPDX-License-Identifier: MIT
//
// Textures from images on the fake driver: the exact calls, and the bytes that they are given.
#include "TextureIO.h"

#include "GLUtilities.h"
#include "OpenGLDeviceContext.h"
#include "TextureCallTools.h"
#include "TextureFileInfo.h"
#include "TextureTestTools.h"

#include <QColor>
#include <QImage>
#include <QScopeGuard>

#include <utility>
#include <vector>

namespace Harrow::Vrk::Test
{

namespace
{

QImage image32(int width, int height)
{
    QImage image(width, height, QImage::Format_ARGB32);
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x)
            image.setPixel(x, y, qRgba(10 + x, 20 + y, 30, 40));
    return image;
}

QStringList beginning()
{
    return {kGen, activate(3), bindName(1), query(GL_UNPACK_ALIGNMENT), alignment(1)};
}

QStringList filtersAndLevels()
{
    return {parameter(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, 0x2703), // GL_LINEAR_MIPMAP_LINEAR
            parameter(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, 0x2601), // GL_LINEAR
            parameter(GL_TEXTURE_2D, GL_TEXTURE_WRAP_S, 0x812F),     // GL_CLAMP_TO_EDGE
            parameter(GL_TEXTURE_2D, GL_TEXTURE_WRAP_T, 0x812F),     parameter(GL_TEXTURE_2D, GL_TEXTURE_BASE_LEVEL, 0),
            parameter(GL_TEXTURE_2D, GL_TEXTURE_MAX_LEVEL, 4)};
}

QStringList ending(int formerAlignment)
{
    return {CallLog::call("glGenerateMipmap", GL_TEXTURE_2D), activate(3), bindName(0), alignment(formerAlignment)};
}

QString plainImage(const QImage& image, GLenum internalFormat = GL_RGBA)
{
    return CallLog::call("glTexImage2D", GL_TEXTURE_2D, 0, internalFormat, image.width(), image.height(), 0, GL_BGRA,
                         GL_UNSIGNED_BYTE, static_cast<const void*>(image.constBits()));
}

class QImageToTextureTest : public TextureFixture
{
protected:
    void SetUp() override
    {
        driver.setInteger(GL_UNPACK_ALIGNMENT, 8);
        TextureFixture::SetUp();
        aliveBefore = Texture::NumAlive();
        makeRecord();
    }

    void TearDown() override
    {
        texture.reset();
        EXPECT_EQ(Texture::NumAlive(), aliveBefore);
    }

    void offerAnisotropy(int maximum)
    {
        driver.setExtensions({"GL_EXT_texture_filter_anisotropic"});
        driver.setInteger(GL_MAX_TEXTURE_MAX_ANISOTROPY, maximum);
    }

    /// So that the list of extensions is not asked for among the calls of a test.
    static void readExtensions()
    {
        hasGLExtension("GL_EXT_texture_filter_anisotropic");
    }

    /// The calls that make a texture of `image`.
    QStringList callsFor(const QImage& image, const TextureFileInfo& info, bool asRG16F = false)
    {
        readExtensions();
        const CallLog calls;
        texture.reset(QImageToTexture(image, asRG16F, info));
        return withoutAddresses(calls.list());
    }

    std::unique_ptr<Texture> texture;
    int aliveBefore = 0;
};

/// The pixels that `glTexImage2D` is given, four bytes each.
struct Upload
{
    int width = -1, height = -1;
    std::vector<unsigned char> bytes;
};
Upload lastUpload;

void keepUpload(FakeDriver& driver)
{
    lastUpload = {};
    driver.replace(
        "glTexImage2D",
        +[](GLenum, GLint, GLint, GLsizei width, GLsizei height, GLint, GLenum, GLenum, const void* pixels)
        {
            const auto* const bytes = static_cast<const unsigned char*>(pixels);
            lastUpload = {width, height, {bytes, bytes + width * height * 4}};
        });
    driver.load();
}

} // namespace

TEST_F(QImageToTextureTest, APlainImage)
{
    const QImage image = image32(5, 3);
    const LogCapture log;
    EXPECT_EQ(callsFor(image, {}), beginning() + filtersAndLevels() + QStringList(plainImage(image)) + ending(8));
    ASSERT_TRUE(texture);
    EXPECT_EQ(texture->textureID(), 1u);
    EXPECT_EQ(texture->target(), GLenum(GL_TEXTURE_2D));
    EXPECT_EQ(Access::recorded(*texture), (Recorded{GL_RGBA, 5, 3, 1}));
    EXPECT_EQ(texture->parent(), nullptr);
    EXPECT_TRUE(texture->isManaged());
    EXPECT_FALSE(texture->isReadOnly());
    EXPECT_FALSE(texture->isBound());
    EXPECT_EQ(log.texts(), QStringList());
}

TEST_F(QImageToTextureTest, AnSrgbImageDiffersByItsInternalFormat)
{
    const QImage image = image32(5, 3);
    TextureFileInfo info;
    info.srgb = true;
    EXPECT_EQ(callsFor(image, info),
              beginning() + filtersAndLevels() + QStringList(plainImage(image, GL_SRGB8_ALPHA8)) + ending(8));
    EXPECT_EQ(Access::recorded(*texture), (Recorded{GL_SRGB8_ALPHA8, 5, 3, 1}));
}

TEST_F(QImageToTextureTest, HalfFloatsPackedByTheCaller)
{
    const QImage image = image32(5, 3);
    TextureFileInfo info;
    info.srgb = true; // without effect here
    const LogCapture log;
    EXPECT_EQ(callsFor(image, info, true),
              beginning() + filtersAndLevels() +
                  QStringList(CallLog::call("glTexImage2D", GL_TEXTURE_2D, 0, GL_RG16F, 5, 3, 0, GL_RG, GL_HALF_FLOAT,
                                            static_cast<const void*>(image.constBits()))) +
                  ending(8));
    EXPECT_EQ(Access::recorded(*texture), (Recorded{GL_RG16F, 5, 3, 1}));
    EXPECT_EQ(log.messages(QtDebugMsg), QStringList(QStringLiteral("Loading image as GL_RG16F...")));
    EXPECT_EQ(log.texts().size(), 1);
}

TEST_F(QImageToTextureTest, TheUnpackAlignmentIsWhatItWasBefore)
{
    for (const int before : {1, 2, 4, 8})
    {
        driver.setInteger(GL_UNPACK_ALIGNMENT, before);
        const QStringList calls = callsFor(image32(1, 1), {});
        EXPECT_EQ(calls.filter(QStringLiteral("glPixelStorei")), QStringList({alignment(1), alignment(before)}));
        EXPECT_EQ(calls.last(), alignment(before));
        texture.reset();
    }
}

TEST_F(QImageToTextureTest, AnisotropyIsTheSmallerOfRequestAndMaximum)
{
    offerAnisotropy(16);
    const struct
    {
        int requested, set;
    } rows[] = {{1, 1}, {4, 4}, {15, 15}, {16, 16}, {17, 16}, {2147483647, 16}};
    GLuint name = 0;
    for (const auto& row : rows)
    {
        TextureFileInfo info;
        info.anisotropy = row.requested;
        const QImage image = image32(2, 2);
        QStringList expected = beginning();
        expected[2] = bindName(++name);
        EXPECT_EQ(callsFor(image, info),
                  expected + filtersAndLevels() +
                      QStringList({query(GL_MAX_TEXTURE_MAX_ANISOTROPY),
                                   parameter(GL_TEXTURE_2D, GL_TEXTURE_MAX_ANISOTROPY, row.set), plainImage(image)}) +
                      ending(8));
        texture.reset();
    }
}

TEST_F(QImageToTextureTest, NoAnisotropyIsAskedForByNoneOrLess)
{
    offerAnisotropy(16);
    for (const int requested : {0, -1, -2147483647 - 1})
    {
        TextureFileInfo info;
        info.anisotropy = requested;
        const QStringList calls = callsFor(image32(2, 2), info);
        EXPECT_FALSE(calls.contains(query(GL_MAX_TEXTURE_MAX_ANISOTROPY)));
        EXPECT_EQ(calls.filter(QStringLiteral("glTexParameteri")).size(), 6);
        texture.reset();
    }
}

TEST_F(QImageToTextureTest, WithoutTheExtensionThereIsNoAnisotropy)
{
    driver.setInteger(GL_MAX_TEXTURE_MAX_ANISOTROPY, 16);
    TextureFileInfo info;
    info.anisotropy = 4;
    const QImage image = image32(2, 2);
    EXPECT_EQ(callsFor(image, info), beginning() + filtersAndLevels() + QStringList(plainImage(image)) + ending(8));
}

TEST_F(QImageToTextureTest, TheBytesAreTheImagesFirstRowFirst)
{
    keepUpload(driver);
    callsFor(image32(3, 2), {});
    EXPECT_EQ(lastUpload.width, 3);
    EXPECT_EQ(lastUpload.height, 2);
    // blue, green, red, alpha
    EXPECT_EQ(lastUpload.bytes, (std::vector<unsigned char>{30, 20, 10, 40, 30, 20, 11, 40, 30, 20, 12, 40,    // y = 0
                                                            30, 21, 10, 40, 30, 21, 11, 40, 30, 21, 12, 40})); // y = 1
}

TEST_F(QImageToTextureTest, OtherOrdersOfTheSameDepthAreNotRearranged)
{
    keepUpload(driver);
    QImage image(1, 1, QImage::Format_RGBA8888);
    image.setPixelColor(0, 0, QColor(1, 2, 3, 4));
    callsFor(image, {});
    EXPECT_EQ(lastUpload.bytes, (std::vector<unsigned char>{1, 2, 3, 4}));
}

TEST_F(QImageToTextureTest, AGapBetweenTheRowsOfForeignMemoryIsLeftOut)
{
    keepUpload(driver);
    constexpr int kBytesPerLine = 20; // of which two pixels take eight
    unsigned char foreign[3 * kBytesPerLine];
    for (int i = 0; i < int(sizeof(foreign)); ++i)
        foreign[i] = static_cast<unsigned char>(i);
    const QImage image(foreign, 2, 3, kBytesPerLine, QImage::Format_ARGB32);
    const QStringList calls = callsFor(image, {});
    EXPECT_EQ(lastUpload.width, 2);
    EXPECT_EQ(lastUpload.height, 3);
    EXPECT_EQ(lastUpload.bytes, (std::vector<unsigned char>{0,  1,  2,  3,  4,  5,  6,  7,  20, 21, 22, 23,
                                                            24, 25, 26, 27, 40, 41, 42, 43, 44, 45, 46, 47}));
    EXPECT_EQ(calls.size(), 5 + 6 + 1 + 4) << "no call more than for other images";
    EXPECT_EQ(Access::recorded(*texture), (Recorded{GL_RGBA, 2, 3, 1}));
}

TEST_F(QImageToTextureTest, ForeignMemoryWithoutGapsIsNotCopied)
{
    unsigned char foreign[24] = {};
    const QImage image(foreign, 2, 3, 8, QImage::Format_ARGB32);
    const QStringList calls = callsFor(image, {});
    EXPECT_TRUE(calls.contains(CallLog::call("glTexImage2D", GL_TEXTURE_2D, 0, GL_RGBA, 2, 3, 0, GL_BGRA,
                                             GL_UNSIGNED_BYTE, static_cast<const void*>(foreign))));
}

TEST_F(QImageToTextureTest, AnImageOfAnotherDepthIsReportedAndRefused)
{
    const struct
    {
        QImage::Format format;
        int depth;
    } rows[] = {{QImage::Format_Mono, 1},
                {QImage::Format_Indexed8, 8},
                {QImage::Format_RGB16, 16},
                {QImage::Format_RGB888, 24},
                {QImage::Format_RGBA64, 64}};
    for (const auto& row : rows)
    {
        for (const bool asRG16F : {false, true})
        {
            const LogCapture log;
            EXPECT_EQ(callsFor(QImage(4, 4, row.format), {}, asRG16F), QStringList());
            EXPECT_EQ(texture, nullptr);
            EXPECT_EQ(log.messages(QtCriticalMsg),
                      QStringList(assertionLine(QStringLiteral("32 == image.depth() || image.isNull()"),
                                                QStringLiteral("Image has %1 bits per pixel, not 32").arg(row.depth))));
        }
    }
}

TEST_F(QImageToTextureTest, ANullImageIsATextureOfNoSize)
{
    const LogCapture log;
    EXPECT_EQ(callsFor(QImage(), {}), beginning() + filtersAndLevels() + QStringList(plainImage(QImage())) + ending(8));
    ASSERT_TRUE(texture);
    EXPECT_EQ(Access::recorded(*texture), (Recorded{GL_RGBA, 0, 0, 1}));
    EXPECT_EQ(log.texts(), QStringList());
}

TEST_F(QImageToTextureTest, WithoutAFreeUnitThereIsNoTexture)
{
    std::vector<std::unique_ptr<Texture>> bound;
    for (int i = 0; i < kUnits; ++i)
    {
        bound.push_back(newTexture());
        ASSERT_TRUE(bound.back()->bind());
    }
    const LogCapture log;
    EXPECT_EQ(callsFor(image32(2, 2), {}), QStringList({kGen, kDelete}));
    EXPECT_EQ(texture, nullptr);
    EXPECT_EQ(log.messages(), QStringList(QStringLiteral("There is no available texture units")));
    for (const auto& other : bound)
        EXPECT_TRUE(other->unbind());
}

TEST_F(QImageToTextureTest, ADefaultRangeRemapsNothing)
{
    TextureFileInfo info;
    info.remapColorRange = true;
    const QStringList asked = callsFor(image32(2, 2), info);
    info.remapColorRange = false;
    info.lowValue = 0.25f;
    const QStringList notAsked = callsFor(image32(2, 2), info);
    for (const QStringList& calls : {asked, notAsked})
    {
        EXPECT_TRUE(calls.filter(QStringLiteral("Program")).isEmpty());
        EXPECT_TRUE(calls.filter(QStringLiteral("Framebuffer")).isEmpty());
    }
    EXPECT_EQ(asked.size(), 5 + 6 + 1 + 4);
}

TEST_F(QImageToTextureTest, AnotherRangeReplacesTheTextureBeforeTheAlignmentComesBack)
{
    const auto forget = qScopeGuard([] { OpenGLDeviceContext::resetContext(); });
    OpenGLDeviceContext::resetContext();
    for (const auto& [low, high] : {std::pair(0.25f, 1.0f), std::pair(0.0f, 0.5f)})
    {
        TextureFileInfo info;
        info.lowValue = low;
        info.highValue = high;
        texture.reset();
        readExtensions();
        const CallLog calls;
        texture.reset(QImageToTexture(image32(2, 2), false, info));
        ASSERT_TRUE(texture);
        const QStringList list = withoutAddresses(calls.list());
        EXPECT_EQ(list.mid(0, 3), QStringList({kGen, activate(3), bindName(texture->textureID() - 1)}));
        EXPECT_EQ(list.filter(kGen).size(), 2) << "the result is not the texture that was uploaded";
        EXPECT_EQ(list.filter(kDelete).size(), 1);
        EXPECT_GT(calls.count(QStringLiteral("glLinkProgram")), 0);
        EXPECT_EQ(calls.named({QStringLiteral("glPixelStorei")}), QStringList({alignment(1), alignment(8)}));
        EXPECT_EQ(list.last(), alignment(8));
        EXPECT_EQ(Texture::NumAlive(), aliveBefore + 1);
    }
}

TEST_F(QImageToTextureTest, MakeColorTextureIsAnImageOfOneTexel)
{
    keepUpload(driver);
    readExtensions();
    const CallLog calls;
    const LogCapture log;
    const std::unique_ptr<Texture> color(MakeColorTexture(QColor(1, 2, 3, 4)));
    ASSERT_TRUE(color);
    QStringList list = withoutAddresses(calls.list());
    ASSERT_EQ(list.size(), 5 + 6 + 1 + 4);
    EXPECT_TRUE(list.takeAt(11).startsWith(QStringLiteral("glTexImage2D(0xde1, 0, 0x1908, 1, 1, 0, 0x80e1, 0x1401, ")));
    EXPECT_EQ(list, beginning() + filtersAndLevels() + ending(8));
    EXPECT_EQ(lastUpload.bytes, (std::vector<unsigned char>{3, 2, 1, 4}));
    EXPECT_EQ(Access::recorded(*color), (Recorded{GL_RGBA, 1, 1, 1}));
    EXPECT_EQ(log.texts(), QStringList());
}

} // namespace Harrow::Vrk::Test
