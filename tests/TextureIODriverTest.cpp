// SPDX-License-Identifier: MIT
//
// Textures from images on the real driver: what is in the texture, texel by texel.
#include "TextureIO.h"

#include "AutoBinder.h"
#include "GLFunctions.h"
#include "GLUtilities.h"
#include "OpenGLDeviceContext.h"
#include "Texture.h"
#include "TextureIOTestTools.h"
#include "support/CallLog.h"
#include "support/GLTest.h"

#include <QColor>
#include <QFloat16>
#include <QImage>
#include <QScopeGuard>
#include <QTemporaryDir>

#include <algorithm>
#include <memory>
#include <vector>

namespace Harrow::Vrk::Test
{
namespace
{

struct Texel
{
    int r, g, b, a;
    bool operator==(const Texel& other) const
    {
        return r == other.r && g == other.g && b == other.b && a == other.a;
    }
};

void PrintTo(const Texel& texel, std::ostream* out)
{
    *out << '(' << texel.r << ' ' << texel.g << ' ' << texel.b << ' ' << texel.a << ')';
}

int parameterOf(GLenum name)
{
    GLint value = -1;
    glGetTexParameteriv(GL_TEXTURE_2D, name, &value);
    return value;
}

/// A level of a texture, bottom row first.
std::vector<Texel> texelsOf(Texture& texture, int level = 0)
{
    const AutoBinder binder(&texture);
    std::vector<unsigned char> bytes(size_t(texture.width(level)) * size_t(texture.height(level)) * 4);
    glGetTexImage(GL_TEXTURE_2D, level, GL_RGBA, GL_UNSIGNED_BYTE, bytes.data());
    std::vector<Texel> texels;
    for (size_t i = 0; i < bytes.size(); i += 4)
        texels.push_back({bytes[i], bytes[i + 1], bytes[i + 2], bytes[i + 3]});
    return texels;
}

/// A picture in which each pixel differs from its neighbours: red tells the column, green the row from the top.
QColor colorAt(int x, int y)
{
    return QColor(10 + 30 * x, 20 + 40 * y, (x * 37 + y * 91) % 256);
}

/// The same picture in any format, its colours set one by one.
QImage picture(int width, int height, QImage::Format format)
{
    QImage image(width, height, format);
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x)
            image.setPixelColor(x, y, colorAt(x, y));
    return image;
}

/// What a texture of such a picture holds: the row from the top that is `height` - 1 comes first.
std::vector<Texel> pictureTexels(int width, int height, int alpha = 255)
{
    std::vector<Texel> texels;
    for (int row = 0; row < height; ++row)
    {
        for (int x = 0; x < width; ++x)
        {
            const QColor color = colorAt(x, height - 1 - row);
            texels.push_back({color.red(), color.green(), color.blue(), alpha});
        }
    }
    return texels;
}

class TextureIOGL : public GLTest
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
        GLTest::TearDown();
    }

    /// Saves the image under that name, whose suffix tells the file format, and loads it.
    std::unique_ptr<Texture> throughFile(const QImage& image, const char* name, const TextureFileInfo& info = {})
    {
        const QString path = folder.filePath(QString::fromLatin1(name));
        EXPECT_TRUE(image.save(path)) << name;
        std::unique_ptr<Texture> texture(LoadTextureFromFile(path, info));
        EXPECT_TRUE(texture) << name;
        return texture;
    }

    const EmptyRegistry registry;
    QTemporaryDir folder;
};

} // namespace

TEST_F(TextureIOGL, OddWidthsAreUploadedRowByRowBottomRowFirst)
{
    for (const int width : {1, 3, 5, 7})
    {
        for (const char* const name : {"odd.png", "odd.bmp"})
        {
            const auto texture = throughFile(picture(width, 4, QImage::Format_RGB888), name);
            ASSERT_TRUE(texture);
            EXPECT_EQ(texelsOf(*texture), pictureTexels(width, 4)) << name << ' ' << width;
        }
    }
}

TEST_F(TextureIOGL, TheFirstTexelIsTheLowerLeftPixel)
{
    QImage image(2, 2, QImage::Format_RGB32);
    image.setPixelColor(0, 0, Qt::red);   // upper left
    image.setPixelColor(1, 0, Qt::green); // upper right
    image.setPixelColor(0, 1, Qt::blue);  // lower left
    image.setPixelColor(1, 1, Qt::white);
    const auto texture = throughFile(image, "corners.png");
    ASSERT_TRUE(texture);
    EXPECT_EQ(texelsOf(*texture),
              (std::vector<Texel>{{0, 0, 255, 255}, {255, 255, 255, 255}, {255, 0, 0, 255}, {0, 255, 0, 255}}));
}

TEST_F(TextureIOGL, AnImageInMemoryIsNotMirrored)
{
    const std::unique_ptr<Texture> texture(QImageToTexture(picture(3, 2, QImage::Format_ARGB32), false, {}));
    ASSERT_TRUE(texture);
    std::vector<Texel> expected = pictureTexels(3, 2);
    std::rotate(expected.begin(), expected.begin() + 3, expected.end());
    EXPECT_EQ(texelsOf(*texture), expected);
}

TEST_F(TextureIOGL, FormatsOfOtherDepthsBecome32Bit)
{
    for (const QImage::Format format : {QImage::Format_RGB888, QImage::Format_RGBX64, QImage::Format_RGB32})
    {
        const auto texture = throughFile(picture(5, 3, format), "formats.png");
        ASSERT_TRUE(texture);
        EXPECT_EQ(texelsOf(*texture), pictureTexels(5, 3)) << int(format);
    }
}

TEST_F(TextureIOGL, ImagesOf64BitsKeepTheirAlpha)
{
    QImage image(1, 2, QImage::Format_RGBA64);
    image.setPixelColor(0, 0, QColor(10, 20, 30, 40));
    image.setPixelColor(0, 1, QColor(50, 60, 70, 0));
    const auto texture = throughFile(image, "deep.png");
    ASSERT_TRUE(texture);
    EXPECT_EQ(texelsOf(*texture), (std::vector<Texel>{{50, 60, 70, 0}, {10, 20, 30, 40}}));
}

TEST_F(TextureIOGL, AlphaIsNotMultipliedIn)
{
    QImage image(2, 1, QImage::Format_ARGB32);
    image.setPixel(0, 0, qRgba(200, 100, 50, 1));
    image.setPixel(1, 0, qRgba(200, 100, 50, 0));
    const auto texture = throughFile(image, "alpha.png");
    ASSERT_TRUE(texture);
    EXPECT_EQ(texelsOf(*texture), (std::vector<Texel>{{200, 100, 50, 1}, {200, 100, 50, 0}}));
}

TEST_F(TextureIOGL, A8BitPaletteBecomes32Bit)
{
    QImage image(3, 2, QImage::Format_Indexed8);
    image.setColorTable({qRgb(1, 2, 3), qRgb(40, 50, 60), qRgba(70, 80, 90, 100)});
    for (int y = 0; y < 2; ++y)
        for (int x = 0; x < 3; ++x)
            image.setPixel(x, y, uint(x + y) % 3);
    const auto texture = throughFile(image, "palette.png");
    ASSERT_TRUE(texture);
    const Texel zero{1, 2, 3, 255};
    const Texel one{40, 50, 60, 255};
    const Texel two{70, 80, 90, 100};
    EXPECT_EQ(texelsOf(*texture), (std::vector<Texel>{one, two, zero, zero, one, two}));
}

TEST_F(TextureIOGL, GreyOf8And16BitsAndMonochrome)
{
    QImage grey(3, 2, QImage::Format_Grayscale8);
    for (int i = 0; i < 6; ++i)
        grey.scanLine(i / 3)[i % 3] = static_cast<uchar>(i * 50 + 5);
    const auto eight = throughFile(grey, "grey.png");
    ASSERT_TRUE(eight);
    EXPECT_EQ(texelsOf(*eight), (std::vector<Texel>{{155, 155, 155, 255},
                                                    {205, 205, 205, 255},
                                                    {255, 255, 255, 255},
                                                    {5, 5, 5, 255},
                                                    {55, 55, 55, 255},
                                                    {105, 105, 105, 255}}));

    QImage deep(1, 2, QImage::Format_Grayscale16);
    *reinterpret_cast<quint16*>(deep.scanLine(0)) = 257 * 77;
    *reinterpret_cast<quint16*>(deep.scanLine(1)) = 65535;
    const auto sixteen = throughFile(deep, "grey16.png");
    ASSERT_TRUE(sixteen);
    EXPECT_EQ(texelsOf(*sixteen), (std::vector<Texel>{{255, 255, 255, 255}, {77, 77, 77, 255}}));

    QImage mono(9, 2, QImage::Format_Mono); // rows of more than a byte
    mono.setColorTable({qRgb(0, 0, 0), qRgb(255, 255, 255)});
    mono.fill(0);
    mono.setPixel(0, 0, 1);
    mono.setPixel(8, 1, 1);
    for (const char* const name : {"mono.png", "mono.bmp"})
    {
        const auto one = throughFile(mono, name);
        ASSERT_TRUE(one);
        std::vector<Texel> expected(18, Texel{0, 0, 0, 255});
        expected[8] = expected[9] = {255, 255, 255, 255};
        EXPECT_EQ(texelsOf(*one), expected) << name;
    }
}

TEST_F(TextureIOGL, AJpegIsWhatQtDecodes)
{
    QImage image(33, 17, QImage::Format_RGB888);
    for (int y = 0; y < image.height(); ++y)
        for (int x = 0; x < image.width(); ++x)
            image.setPixelColor(x, y, QColor(x * 7, y * 15, 255 - x * 7));
    for (const bool isGrey : {false, true})
    {
        const char* const name = isGrey ? "grey.jpg" : "color.jpg";
        const auto texture = throughFile(isGrey ? image.convertToFormat(QImage::Format_Grayscale8) : image, name);
        ASSERT_TRUE(texture);
        const QImage decoded(folder.filePath(QString::fromLatin1(name)));
        std::vector<Texel> expected;
        for (int y = decoded.height() - 1; y >= 0; --y)
        {
            for (int x = 0; x < decoded.width(); ++x)
            {
                const QRgb color = decoded.pixel(x, y);
                expected.push_back({qRed(color), qGreen(color), qBlue(color), 255});
            }
        }
        EXPECT_EQ(expected.size(), 33u * 17u);
        EXPECT_EQ(texelsOf(*texture), expected) << name;
    }
}

TEST_F(TextureIOGL, SrgbTexelsAreStoredAsTheyAreInAnSrgbFormat)
{
    TextureFileInfo info;
    info.srgb = true;
    const auto texture = throughFile(picture(3, 3, QImage::Format_RGB888), "srgb.png", info);
    ASSERT_TRUE(texture);
    EXPECT_EQ(texelsOf(*texture), pictureTexels(3, 3));
    const AutoBinder binder(texture.get());
    EXPECT_EQ(texture->internalFormat(0), GL_SRGB8_ALPHA8);
}

TEST_F(TextureIOGL, FiltersWrapModesAndLevels)
{
    const auto texture = throughFile(picture(3, 2, QImage::Format_RGB888), "plain.png");
    ASSERT_TRUE(texture);
    EXPECT_EQ(texture->target(), GLenum(GL_TEXTURE_2D));
    const AutoBinder binder(texture.get());
    EXPECT_EQ(parameterOf(GL_TEXTURE_MIN_FILTER), GL_LINEAR_MIPMAP_LINEAR);
    EXPECT_EQ(parameterOf(GL_TEXTURE_MAG_FILTER), GL_LINEAR);
    EXPECT_EQ(parameterOf(GL_TEXTURE_WRAP_S), GL_CLAMP_TO_EDGE);
    EXPECT_EQ(parameterOf(GL_TEXTURE_WRAP_T), GL_CLAMP_TO_EDGE);
    EXPECT_EQ(parameterOf(GL_TEXTURE_BASE_LEVEL), 0);
    EXPECT_EQ(parameterOf(GL_TEXTURE_MAX_LEVEL), 4);
    EXPECT_EQ(texture->width(0), 3);
    EXPECT_EQ(texture->height(0), 2);
}

TEST_F(TextureIOGL, MipmapsAreMadeDownToLevelFour)
{
    QImage image(64, 32, QImage::Format_RGB32);
    for (int y = 0; y < 32; ++y)
        for (int x = 0; x < 64; ++x)
            image.setPixelColor(x, y, QColor(x < 32 ? 200 : 40, y < 16 ? 60 : 220, 100));
    const auto texture = throughFile(image, "levels.png");
    ASSERT_TRUE(texture);
    for (int level = 1; level <= 4; ++level)
    {
        const int width = 64 >> level;
        const int height = 32 >> level;
        {
            const AutoBinder binder(texture.get());
            ASSERT_EQ(texture->width(level), width);
            ASSERT_EQ(texture->height(level), height);
        }
        std::vector<Texel> expected;
        for (int row = 0; row < height; ++row)
            for (int x = 0; x < width; ++x)
                expected.push_back({x < width / 2 ? 200 : 40, row < height / 2 ? 220 : 60, 100, 255});
        EXPECT_EQ(texelsOf(*texture, level), expected) << level;
    }
    const AutoBinder binder(texture.get());
    EXPECT_EQ(texture->width(5), 0);
}

TEST_F(TextureIOGL, AnisotropyIsClampedToTheDriversMaximum)
{
    for (const int requested : {2, 100000})
    {
        TextureFileInfo info;
        info.anisotropy = requested;
        const CallLog calls;
        const auto texture = throughFile(picture(2, 2, QImage::Format_RGB888), "anisotropy.png", info);
        ASSERT_TRUE(texture);
        if (isFloor())
        {
            EXPECT_FALSE(hasGLExtension("GL_EXT_texture_filter_anisotropic"));
            EXPECT_EQ(calls.named({QStringLiteral("glTexParameteri")}).filter(QStringLiteral("0x84fe")), QStringList());
            continue;
        }
        GLint maximum = 0;
        glGetIntegerv(GL_MAX_TEXTURE_MAX_ANISOTROPY, &maximum);
        ASSERT_GT(maximum, 2);
        ASSERT_LT(maximum, 100000);
        const AutoBinder binder(texture.get());
        EXPECT_EQ(parameterOf(GL_TEXTURE_MAX_ANISOTROPY), requested == 2 ? 2 : maximum);
    }
}

TEST_F(TextureIOGL, HalfFloatsArriveAsTheyWerePacked)
{
    constexpr int kWidth = 3;
    constexpr int kHeight = 2;
    const float values[kHeight][kWidth][2] = {{{0.0f, 1.0f}, {-2.5f, 1000.0f}, {0.125f, -0.5f}},
                                              {{65504.0f, 3.0f}, {7.0f, 8.0f}, {-1.0f, 2048.0f}}};
    QImage image(kWidth, kHeight, QImage::Format_ARGB32);
    for (int y = 0; y < kHeight; ++y)
    {
        auto* const row = reinterpret_cast<qfloat16*>(image.scanLine(y));
        for (int x = 0; x < kWidth; ++x)
        {
            row[2 * x] = qfloat16(values[y][x][0]);
            row[2 * x + 1] = qfloat16(values[y][x][1]);
        }
    }
    const std::unique_ptr<Texture> texture(QImageToTexture(image, true, {}));
    ASSERT_TRUE(texture);
    const AutoBinder binder(texture.get());
    EXPECT_EQ(texture->internalFormat(0), GL_RG16F);
    float read[kHeight][kWidth][2] = {};
    glGetTexImage(GL_TEXTURE_2D, 0, GL_RG, GL_FLOAT, read);
    for (int y = 0; y < kHeight; ++y)
    {
        for (int x = 0; x < kWidth; ++x)
        {
            EXPECT_EQ(read[y][x][0], values[y][x][0]) << x << ' ' << y;
            EXPECT_EQ(read[y][x][1], values[y][x][1]) << x << ' ' << y;
        }
    }
}

TEST_F(TextureIOGL, AnotherColorRangeIsRemappedAndTheAlignmentIsKept)
{
    glPixelStorei(GL_UNPACK_ALIGNMENT, 2);
    const auto restore = qScopeGuard([] { glPixelStorei(GL_UNPACK_ALIGNMENT, 4); });
    TextureFileInfo info;
    info.lowValue = 0.2f;
    info.highValue = 0.6f;
    QImage image(2, 1, QImage::Format_ARGB32);
    image.setPixel(0, 0, qRgba(0, 255, 51, 153));
    image.setPixel(1, 0, qRgba(102, 204, 0, 0));
    const auto texture = throughFile(image, "range.png", info);
    ASSERT_TRUE(texture);
    GLint alignment = 0;
    glGetIntegerv(GL_UNPACK_ALIGNMENT, &alignment);
    EXPECT_EQ(alignment, 2);
    EXPECT_EQ(Texture::NumAlive(), 1);
    // 51 + colour * 0.4
    const std::vector<Texel> expected = {{51, 153, 71, 153}, {92, 133, 51, 0}};
    const std::vector<Texel> actual = texelsOf(*texture);
    ASSERT_EQ(actual.size(), 2u);
    for (size_t i = 0; i < 2; ++i)
    {
        EXPECT_NEAR(actual[i].r, expected[i].r, 1) << i;
        EXPECT_NEAR(actual[i].g, expected[i].g, 1) << i;
        EXPECT_NEAR(actual[i].b, expected[i].b, 1) << i;
        EXPECT_EQ(actual[i].a, expected[i].a) << i;
    }
    OpenGLDeviceContext::resetContext();
}

TEST_F(TextureIOGL, TheRangeIsKeptWhenRemappingIsOff)
{
    TextureFileInfo info;
    info.lowValue = 0.2f;
    info.highValue = 0.6f;
    info.remapColorRange = false;
    const auto texture = throughFile(picture(3, 2, QImage::Format_RGB888), "range.png", info);
    ASSERT_TRUE(texture);
    EXPECT_EQ(texelsOf(*texture), pictureTexels(3, 2));
}

TEST_F(TextureIOGL, GapsBetweenRowsAndNullImages)
{
    const QImage whole = picture(7, 4, QImage::Format_ARGB32);
    const QImage part(whole.constScanLine(0), 3, 4, whole.bytesPerLine(), QImage::Format_ARGB32);
    const std::unique_ptr<Texture> texture(QImageToTexture(part, false, {}));
    ASSERT_TRUE(texture);
    const std::vector<Texel> texels = texelsOf(*texture);
    ASSERT_EQ(texels.size(), 12u);
    for (int y = 0; y < 4; ++y)
    {
        for (int x = 0; x < 3; ++x)
        {
            const QColor color = colorAt(x, y);
            EXPECT_EQ(texels[size_t(y * 3 + x)], (Texel{color.red(), color.green(), color.blue(), 255}));
        }
    }

    const std::unique_ptr<Texture> none(QImageToTexture(QImage(), false, {}));
    ASSERT_TRUE(none);
    const AutoBinder binder(none.get());
    EXPECT_EQ(none->width(0), 0);
}

TEST_F(TextureIOGL, ColorTextures)
{
    const struct
    {
        QColor color;
        Texel expected;
    } rows[] = {{QColor(1, 2, 3), {1, 2, 3, 255}},
                {QColor(250, 128, 7, 99), {250, 128, 7, 99}},
                {QColor(255, 255, 255, 0), {255, 255, 255, 0}},
                {QColor(Qt::black), {0, 0, 0, 255}}};
    for (const auto& row : rows)
    {
        const std::unique_ptr<Texture> texture(MakeColorTexture(row.color));
        ASSERT_TRUE(texture);
        EXPECT_EQ(texelsOf(*texture), std::vector<Texel>{row.expected});
    }
}

} // namespace Harrow::Vrk::Test
