// SPDX-License-Identifier: MIT
//
// Radiance pictures that nobody here has written, beside two decoders of other making: a plain one in this file, and
// stb_image. And pictures on the real driver: what is in the texture.
#include "HDRRecogniser.h"

#include "AutoBinder.h"
#include "GLFunctions.h"
#include "HDRTestTools.h"
#include "OpenGLDeviceContext.h"
#include "RadianceHeader.h"
#include "RadianceRows.h"
#include "Texture.h"
#include "TextureIOTestTools.h"
#include "support/GLTest.h"
#include "support/LogCapture.h"

#define STB_IMAGE_IMPLEMENTATION
#define STB_IMAGE_STATIC
#define STBI_ONLY_HDR
#if defined(__GNUC__)
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wunused-function"
#endif
#include <stb/stb_image.h>
#if defined(__GNUC__)
#pragma GCC diagnostic pop
#endif

#include <QTemporaryDir>

#include <cmath>
#include <cstdlib>
#include <limits>
#include <memory>
#include <string>
#include <vector>

namespace Harrow::Vrk::Test
{
namespace
{

// ---- the files and what comes of them ------------------------------------------------------------------------------

enum class Outcome
{
    eLoads,
    /// Loads, but stb_image wants a format line.
    eLoadsHereAlone,
    /// Its rows begin with a pixel, so they are read as plain ones, for which there are far too few bytes.
    eFails
};

constexpr struct FileRow
{
    const char* name;
    int width, height;
    float exposure;
    qint32 format;
    Outcome outcome;
} kFiles[] = {
    {"exposure_v_gradient_128.hdr", 128, 128, 0.1624838f, 0, Outcome::eLoadsHereAlone},
    {"flat_256x8.hdr", 256, 8, 1.0f, 1, Outcome::eLoads},
    {"latlong_dresden_square_1k.hdr", 1024, 512, 1.0f, 1, Outcome::eLoads},
    {"old_rle_551x276.hdr", 551, 276, 1.0f, 1, Outcome::eFails},
    {"small_256_new_rle.hdr", 256, 256, 1.0f, 1, Outcome::eLoads},
};

QString pathOf(const FileRow& row)
{
    return realFilesFolder("hdr") + QLatin1Char('/') + QString::fromLatin1(row.name);
}

// ---- decoders ------------------------------------------------------------------------------------------------------

/// The rows of a picture that is right, first row first: plain ones, and those coded channel by channel.
Floats decodePlainly(const QByteArray& file, int width, int height)
{
    qsizetype at = file.indexOf('\n', file.indexOf("\n\n") + 2) + 1;
    const auto next = [&] { return at < file.size() ? int(static_cast<unsigned char>(file[at++])) : -1; };
    Floats floats;
    for (int y = 0; y < height; ++y)
    {
        Rgbes row(static_cast<size_t>(width));
        const bool isPlain = file.mid(at, 4) != runsRowStart(width);
        at += isPlain ? 0 : 4;
        for (size_t i = 0; isPlain && i < row.size() * 4; ++i)
            row[i / 4][i % 4] = next();
        for (size_t channel = 0; !isPlain && channel < 4; ++channel)
        {
            for (size_t x = 0; x < row.size();)
            {
                const int code = next();
                const int value = code > 128 ? next() : -1;
                for (int i = code > 128 ? code - 128 : code; i > 0; --i)
                    row.at(x++)[channel] = code > 128 ? value : next();
            }
        }
        for (const Rgbe& pixel : row)
            appendColor(floats, pixel);
    }
    EXPECT_EQ(at, file.size()) << "these pictures end with their last row";
    return floats;
}

/// Empty for what it does not take.
Floats decodeByStb(const QByteArray& file, int width, int height)
{
    int fileWidth = 0;
    int fileHeight = 0;
    int channels = 0;
    const std::unique_ptr<float, void (*)(void*)> decoded(
        stbi_loadf_from_memory(reinterpret_cast<const stbi_uc*>(file.constData()), int(file.size()), &fileWidth,
                               &fileHeight, &channels, 3),
        &std::free);
    if (!decoded)
        return {};
    EXPECT_EQ(fileWidth, width);
    EXPECT_EQ(fileHeight, height);
    return Floats(decoded.get(), decoded.get() + width * height * 3);
}

/// By the library's rows, first row first. Empty when they cannot be read.
Floats decode(const QByteArray& file)
{
    const ExactBytes bytes(file);
    const RadianceHeader header = readRadianceHeader(bytes.begin(), bytes.end());
    if (!header.valid)
        return {};
    Floats floats(size_t(header.width) * header.height * 3);
    std::vector<unsigned char> rgbe(size_t(header.width) * 4);
    RadianceRowReader rows(header.pixels, bytes.end(), header.width);
    for (size_t y = 0; y < header.height; ++y)
    {
        if (rows.read(floats.data() + y * header.width * 3, rgbe.data()) != RadianceRow::eRead)
            return {};
    }
    EXPECT_EQ(rows.next(), bytes.end());
    return floats;
}

// ---- textures ------------------------------------------------------------------------------------------------------

/// What a half float makes of a value that is not below 0, from rounding it down to rounding it up.
testing::AssertionResult isHalfOf(float expected, float actual)
{
    constexpr float kLargest = 65504.0f;
    const float step = std::max(std::ldexp(1.0f, -24), std::min(expected, kLargest) * std::ldexp(1.0f, -10));
    if (expected > kLargest ? actual >= kLargest - 32.0f : std::abs(actual - expected) <= step)
        return testing::AssertionSuccess();
    return testing::AssertionFailure() << actual << " for " << expected;
}

/// RGB of a level, bottom row first.
Floats floatsOf(Texture& texture, int level = 0)
{
    const AutoBinder binder(&texture);
    Floats floats(size_t(texture.width(level)) * size_t(texture.height(level)) * 3);
    glGetTexImage(GL_TEXTURE_2D, level, GL_RGB, GL_FLOAT, floats.data());
    return floats;
}

/// Whether the texture holds the picture, whose first row is the top one.
testing::AssertionResult holds(Texture& texture, const Floats& picture, int width, int height)
{
    const Floats floats = floatsOf(texture);
    if (floats.size() != picture.size())
        return testing::AssertionFailure() << floats.size() << " floats and not " << picture.size();
    const size_t rowFloats = size_t(width) * 3;
    for (size_t y = 0; y < size_t(height); ++y)
    {
        for (size_t i = 0; i < rowFloats; ++i)
        {
            const auto equal = isHalfOf(picture[(size_t(height) - 1 - y) * rowFloats + i], floats[y * rowFloats + i]);
            if (!equal)
                return testing::AssertionFailure()
                       << "row " << y << " from below, float " << i << ": " << equal.message();
        }
    }
    return testing::AssertionSuccess();
}

class HDRFilesGL : public GLTest
{
protected:
    void SetUp() override
    {
        GLTest::SetUp();
        EXPECT_EQ(Texture::NumAlive(), 0);
        RegisterTextureRecogniser(new HDRRecogniser, QStringLiteral("hdr"));
    }

    void TearDown() override
    {
        OpenGLDeviceContext::resetContext();
        EXPECT_EQ(Texture::NumAlive(), 0);
        GLTest::TearDown();
    }

    static std::unique_ptr<Texture> loadBytes(QByteArray bytes, const TextureFileInfo& info = {})
    {
        return std::unique_ptr<Texture>(LoadTextureFromMemory(reinterpret_cast<unsigned char*>(bytes.data()),
                                                              size_t(bytes.size()), info, QStringLiteral("bytes")));
    }

    const EmptyRegistry registry;
    QTemporaryDir folder;
};

GLint parameterOf(const Texture& texture, GLenum name)
{
    GLint value = -1;
    glGetTexParameteriv(texture.target(), name, &value);
    return value;
}

} // namespace

// ---- without a driver ----------------------------------------------------------------------------------------------

TEST(HDRFilesTest, EveryFileIsStatedHere)
{
    VRK_NEEDS_REAL_FILES("hdr");
    QStringList names;
    for (const FileRow& row : kFiles)
        names.append(QString::fromLatin1(row.name));
    EXPECT_EQ(QDir(realFilesFolder("hdr")).entryList(QDir::Files, QDir::Name), names);
}

TEST(HDRFilesTest, RealHeaders)
{
    VRK_NEEDS_REAL_FILES("hdr");
    for (const FileRow& row : kFiles)
    {
        const ExactBytes bytes(readFile(pathOf(row)));
        const RadianceHeader header = readRadianceHeader(bytes.begin(), bytes.end());
        EXPECT_TRUE(header.valid) << row.name;
        EXPECT_EQ(header.width, quint32(row.width)) << row.name;
        EXPECT_EQ(header.height, quint32(row.height)) << row.name;
        EXPECT_EQ(header.format, row.format) << row.name;
        EXPECT_EQ(header.exposure, row.exposure) << row.name;
        EXPECT_EQ(header.ySign, '-') << row.name;
    }
}

TEST(HDRFilesTest, RealRowsAreTheBitsOfAPlainDecoderAndOfStb)
{
    VRK_NEEDS_REAL_FILES("hdr");
    for (const FileRow& row : kFiles)
    {
        const QByteArray file = readFile(pathOf(row));
        const Floats ours = decode(file);
        if (row.outcome == Outcome::eFails)
        {
            EXPECT_TRUE(ours.empty()) << row.name;
            continue;
        }
        ASSERT_EQ(ours.size(), size_t(row.width) * size_t(row.height) * 3) << row.name;
        EXPECT_TRUE(ours == decodePlainly(file, row.width, row.height)) << row.name;
        const Floats byStb = decodeByStb(file, row.width, row.height);
        EXPECT_EQ(byStb.empty(), row.outcome == Outcome::eLoadsHereAlone) << row.name;
        EXPECT_TRUE(byStb.empty() || ours == byStb) << row.name;
    }
}

TEST(HDRFilesTest, NoRealPictureIsReadThatIsCutShort)
{
    VRK_NEEDS_REAL_FILES("hdr");
    for (const FileRow& row : kFiles)
    {
        const QByteArray file = readFile(pathOf(row));
        for (qsizetype left = 0; left < file.size(); left += 1 + file.size() / 50)
            EXPECT_TRUE(decode(file.left(left)).empty()) << row.name << ' ' << left;
        EXPECT_TRUE(decode(file.chopped(1)).empty()) << row.name;
    }
}

// ---- on the driver -------------------------------------------------------------------------------------------------

TEST_F(HDRFilesGL, RealPicturesAreLoadedOrRefusedAsStated)
{
    VRK_NEEDS_REAL_FILES("hdr");
    for (const FileRow& row : kFiles)
    {
        const QString path = pathOf(row);
        const LogCapture log;
        const std::unique_ptr<Texture> texture(LoadTextureFromFile(path, {}));
        if (row.outcome == Outcome::eFails)
        {
            EXPECT_EQ(texture, nullptr) << row.name;
            EXPECT_EQ(log.messages(), QStringList(QStringLiteral("Texture %1 failed to load.").arg(path)));
            continue;
        }
        ASSERT_TRUE(texture) << row.name;
        EXPECT_EQ(log.messages(QtWarningMsg), QStringList()) << row.name;
        EXPECT_TRUE(holds(*texture, decodePlainly(readFile(path), row.width, row.height), row.width, row.height))
            << row.name;
    }
    EXPECT_EQ(Texture::NumAlive(), 0);
}

TEST_F(HDRFilesGL, FormatFiltersWrapModesAndLevels)
{
    const auto texture = loadBytes(hdrFile("-Y 1 +X 2", plainRow({{1, 2, 3, 128}, {4, 5, 6, 128}})));
    ASSERT_TRUE(texture);
    EXPECT_EQ(texture->target(), GLenum(GL_TEXTURE_2D));
    const AutoBinder binder(texture.get());
    EXPECT_EQ(texture->internalFormat(0), GL_RGB16F);
    EXPECT_EQ(texture->width(0), 2);
    EXPECT_EQ(texture->height(0), 1);
    EXPECT_EQ(texture->width(1), 0) << "there is one level";
    EXPECT_EQ(parameterOf(*texture, GL_TEXTURE_MIN_FILTER), GL_LINEAR);
    EXPECT_EQ(parameterOf(*texture, GL_TEXTURE_MAG_FILTER), GL_LINEAR);
    EXPECT_EQ(parameterOf(*texture, GL_TEXTURE_WRAP_S), GL_CLAMP_TO_EDGE);
    EXPECT_EQ(parameterOf(*texture, GL_TEXTURE_WRAP_T), GL_CLAMP_TO_EDGE);
    EXPECT_EQ(parameterOf(*texture, GL_TEXTURE_BASE_LEVEL), 0);
    EXPECT_EQ(parameterOf(*texture, GL_TEXTURE_MAX_LEVEL), 100);
}

TEST_F(HDRFilesGL, OddWidthsAndBothOrdersOfRows)
{
    for (const int width : {1, 3, 5, 7})
    {
        Rgbes rows[2];
        for (int x = 0; x < width; ++x)
        {
            rows[0].push_back({10 + x, 20, 30, 128});
            rows[1].push_back({40, 50 + x, 60, 130});
        }
        Rgbes topFirst = rows[0];
        topFirst.insert(topFirst.end(), rows[1].begin(), rows[1].end());
        Rgbes bottomFirst = rows[1];
        bottomFirst.insert(bottomFirst.end(), rows[0].begin(), rows[0].end());
        const QByteArray size = " 2 +X " + QByteArray::number(width);
        const auto down = loadBytes(hdrFile("-Y" + size, plainRow(topFirst)));
        const auto up = loadBytes(hdrFile("+Y" + size, plainRow(topFirst)));
        ASSERT_TRUE(down && up);
        EXPECT_TRUE(holds(*down, colorsOf(topFirst), width, 2));
        EXPECT_TRUE(holds(*up, colorsOf(bottomFirst), width, 2)) << "its first row is the bottom row";
    }
}

TEST_F(HDRFilesGL, TheOldestRowsOnTheDriver)
{
    const Rgbe grey = {128, 128, 128, 130};
    const auto texture = loadBytes(hdrFile("-Y 1 +X 300", oldMarker(44) + oldMarker(1) + plainRow({grey})));
    ASSERT_TRUE(texture);
    EXPECT_TRUE(holds(*texture, colorsOf(Rgbes(300, grey)), 300, 1));
}

TEST_F(HDRFilesGL, AnSrgbPictureIsMadeLinear)
{
    const Rgbes pixels = {{0, 64, 128, 128}, {200, 255, 32, 128}};
    TextureFileInfo info;
    info.srgb = true;
    const auto texture = loadBytes(hdrFile("-Y 1 +X 2", plainRow(pixels)), info);
    ASSERT_TRUE(texture);
    const Floats encoded = colorsOf(pixels);
    const Floats floats = floatsOf(*texture);
    ASSERT_EQ(floats.size(), encoded.size());
    for (size_t i = 0; i < floats.size(); ++i)
        EXPECT_NEAR(floats[i], std::pow((encoded[i] + 0.055) / 1.055, 2.4), 0.002) << i;
}

TEST_F(HDRFilesGL, AnotherRangeIsMappedBeyondOne)
{
    const Rgbes pixels = {{0, 64, 128, 128}, {200, 255, 32, 132}};
    TextureFileInfo info;
    info.lowValue = 0.5f;
    info.highValue = 2.5f;
    const auto texture = loadBytes(hdrFile("-Y 1 +X 2", plainRow(pixels)), info);
    ASSERT_TRUE(texture);
    const Floats source = colorsOf(pixels);
    const Floats floats = floatsOf(*texture);
    ASSERT_EQ(floats.size(), source.size());
    for (size_t i = 0; i < floats.size(); ++i)
        EXPECT_NEAR(floats[i], 0.5f + source[i] * 2.0f, 0.03f) << i;
    EXPECT_GT(floats[4], 30.0f);
}

TEST_F(HDRFilesGL, TheUnpackAlignmentIsKeptAlsoOnFailure)
{
    const QByteArray good = hdrFile("-Y 1 +X 1", plainRow({{1, 2, 3, 128}}));
    for (const int alignment : {1, 2, 8})
    {
        glPixelStorei(GL_UNPACK_ALIGNMENT, alignment);
        EXPECT_TRUE(loadBytes(good));
        EXPECT_FALSE(loadBytes(good.chopped(1)));
        glBindTexture(GL_TEXTURE_2D, 4711000); // an error of somebody else's
        EXPECT_FALSE(loadBytes(good)) << "it is blamed on the picture";
        EXPECT_EQ(glGetError(), GLenum(GL_NO_ERROR));
        GLint after = 0;
        glGetIntegerv(GL_UNPACK_ALIGNMENT, &after);
        EXPECT_EQ(after, alignment);
    }
    glPixelStorei(GL_UNPACK_ALIGNMENT, 4);
}

TEST_F(HDRFilesGL, ASizeBeyondTheDriversIsAFailure)
{
    GLint largest = 0;
    glGetIntegerv(GL_MAX_TEXTURE_SIZE, &largest);
    const int width = largest + 1;
    QByteArray row;
    for (int rest = width; rest != 0; rest /= 256)
        row += oldMarker(rest % 256);
    const LogCapture log;
    EXPECT_FALSE(loadBytes(hdrFile("-Y 1 +X " + QByteArray::number(width), row + plainRow({{1, 2, 3, 128}}))));
    EXPECT_EQ(log.messages(), QStringList(QStringLiteral("Texture bytes failed to load.")));
    EXPECT_EQ(glGetError(), GLenum(GL_NO_ERROR));
}

TEST_F(HDRFilesGL, APictureUnderAForeignNameIsFound)
{
    const QByteArray picture = hdrFile("-Y 1 +X 1", plainRow({{1, 2, 3, 136}}));
    for (const char* const name : {"x.ktx", "x.png", "x"})
    {
        const std::unique_ptr<Texture> texture(
            LoadTextureFromFile(writeFile(folder.filePath(QString::fromLatin1(name)), picture), {}));
        ASSERT_TRUE(texture) << name;
        EXPECT_EQ(floatsOf(*texture), (Floats{1.0f, 2.0f, 3.0f})) << name;
    }
}

TEST_F(HDRFilesGL, ABadHeaderIsReportedAndNotTriedByQt)
{
    const QString path = writeFile(folder.filePath(QStringLiteral("bad.hdr")), hdrFile("-Y 480 +Y 640", {}));
    const LogCapture log;
    EXPECT_EQ(LoadTextureFromFile(path, {}), nullptr);
    EXPECT_EQ(log.messages(), QStringList(QStringLiteral("Data appears invalid for texture file '%1'").arg(path)));
    EXPECT_FALSE(loadBytes(hdrFile("-Y 480 +Y 640", {})));
    EXPECT_EQ(log.messages().last(), QStringLiteral("Data appears invalid for texture data 'bytes'"));
}

#if defined(__linux__)
TEST_F(HDRFilesGL, NoFileStaysOpen)
{
    const QByteArray picture = hdrFile("-Y 1 +X 1", plainRow({{1, 2, 3, 136}}));
    for (const QByteArray& contents : {picture, picture.chopped(1), hdrFile("-Y 1 +Y 1", {})})
    {
        const QString path = writeFile(folder.filePath(QStringLiteral("open.hdr")), contents);
        const std::unique_ptr<Texture> texture(LoadTextureFromFile(path, {}));
        EXPECT_EQ(openUsesOf(path), 0);
    }
}
#endif

} // namespace Harrow::Vrk::Test
