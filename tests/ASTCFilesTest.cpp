// SPDX-License-Identifier: MIT
//
// ASTC files on the real driver, beside the reference decoder astcenc: files that nobody here has written, and pictures
// that astcenc itself encodes in each block size and both colour spaces.
#include "ASTCRecogniser.h"

#include "ASTCTestTools.h"
#include "AutoBinder.h"
#include "GLFunctions.h"
#include "GLUtilities.h"
#include "OpenGLDeviceContext.h"
#include "Texture.h"
#include "TextureIOTestTools.h"
#include "support/GLTest.h"
#include "support/LogCapture.h"

#include <QImage>
#include <QProcess>
#include <QStandardPaths>
#include <QTemporaryDir>

#include <algorithm>
#include <cmath>
#include <memory>
#include <string>
#include <vector>

namespace Harrow::Vrk::Test
{
namespace
{

using Bytes = std::vector<unsigned char>;

// ---- the files and what comes of them ------------------------------------------------------------------------------

constexpr struct FileRow
{
    const char* name;
    int width, height;
    unsigned format;
} kFiles[] = {
    {"cloud_gloss_5x4.astc", 1024, 512, 0x93B1}, {"earth_color_12x12.astc", 1024, 512, 0x93BD},
    {"earth_color_4x4.astc", 1024, 512, 0x93B0}, {"earth_color_6x6.astc", 1024, 512, 0x93B4},
    {"earth_color_8x8.astc", 1024, 512, 0x93B7}, {"npot_63x27_12x10.astc", 63, 27, 0x93BC},
};
/// Accepted with its blocks of three sides, which no format of OpenGL has.
constexpr char kVolume[] = "volume_3x3x3.astc";
/// No one's.
constexpr char kInvalid[] = "invalid_magic.astc";

QString pathOf(const char* name)
{
    return realFilesFolder("astc") + QLatin1Char('/') + QString::fromLatin1(name);
}

// A driver need not have the extension, and the library asks for none: there is nothing to compare then. Mesa's
// software driver, on which these tests run for every change, has it.
#define VRK_NEEDS_ASTC()                                                                                               \
    if (!hasGLExtension("GL_KHR_texture_compression_astc_ldr"))                                                        \
    GTEST_SKIP() << "The driver has no ASTC (GL_KHR_texture_compression_astc_ldr)"

// ---- the reference -------------------------------------------------------------------------------------------------

/// The program, which has a name for each instruction set where it does not come from a distribution.
QString encoder()
{
    for (const char* const name :
         {"astcenc", "astcenc-native", "astcenc-avx2", "astcenc-sse4.1", "astcenc-sse2", "astcenc-neon"})
    {
        const QString path = QStandardPaths::findExecutable(QString::fromLatin1(name));
        if (!path.isEmpty())
            return path;
    }
    return {};
}

testing::AssertionResult runEncoder(const QStringList& arguments)
{
    const QString program = encoder();
    if (program.isEmpty())
        return testing::AssertionFailure() << "The program astcenc is not installed";
    QProcess process;
    process.setProcessChannelMode(QProcess::MergedChannels);
    process.start(program, arguments);
    if (process.waitForFinished(60000) && process.exitStatus() == QProcess::NormalExit && process.exitCode() == 0)
        return testing::AssertionSuccess();
    return testing::AssertionFailure() << program.toStdString() << ' ' << arguments.join(QLatin1Char(' ')).toStdString()
                                       << ": " << process.readAll().toStdString();
}

class ASTCFilesGL : public GLTest
{
protected:
    void SetUp() override
    {
        GLTest::SetUp();
        EXPECT_EQ(Texture::NumAlive(), 0);
        RegisterTextureRecogniser(new ASTCRecogniser, QStringLiteral("astc"));
    }

    void TearDown() override
    {
        OpenGLDeviceContext::resetContext();
        EXPECT_EQ(Texture::NumAlive(), 0);
        GLTest::TearDown();
    }

    /// A file as astcenc decodes it, RGBA, in the order of its rows.
    Bytes decodedByReference(const QString& path, bool srgb)
    {
        const QString png = folder.filePath(QStringLiteral("decoded.png"));
        QFile::remove(png);
        EXPECT_TRUE(
            runEncoder({srgb ? QStringLiteral("-ds") : QStringLiteral("-dl"), path, png, QStringLiteral("-silent")}));
        const QImage image = QImage(png).convertToFormat(QImage::Format_RGBA8888);
        Bytes bytes;
        for (int y = 0; y < image.height(); ++y)
            bytes.insert(bytes.end(), image.constScanLine(y), image.constScanLine(y) + image.width() * 4);
        return bytes;
    }

    QString encoded(const QString& png, const AstcFormat& format, bool srgb)
    {
        const QString path = folder.filePath(QStringLiteral("%1x%2.astc").arg(format.width).arg(format.height));
        EXPECT_TRUE(runEncoder({srgb ? QStringLiteral("-cs") : QStringLiteral("-cl"), png, path,
                                QStringLiteral("%1x%2").arg(format.width).arg(format.height), QStringLiteral("-fast"),
                                QStringLiteral("-silent")}));
        return path;
    }

    /// A picture whose sides are no multiples of any block's, with an alpha of its own.
    QString picture()
    {
        QImage image(67, 43, QImage::Format_RGBA8888);
        for (int y = 0; y < image.height(); ++y)
            for (int x = 0; x < image.width(); ++x)
                image.setPixelColor(
                    x, y, QColor(x * 255 / 66, y * 255 / 42, (x / 9 + y / 7) % 2 * 200 + 20, 255 - (x + y) * 2));
        const QString path = folder.filePath(QStringLiteral("picture.png"));
        EXPECT_TRUE(image.save(path));
        return path;
    }

    static std::unique_ptr<Texture> load(const QString& path, bool srgb = false)
    {
        TextureFileInfo info;
        info.srgb = srgb;
        return std::unique_ptr<Texture>(LoadTextureFromFile(path, info));
    }

    const EmptyRegistry registry;
    QTemporaryDir folder;
};

/// The base level as RGBA, in the order of its rows.
Bytes texelsOf(Texture& texture)
{
    const AutoBinder binder(&texture);
    Bytes bytes(size_t(texture.width(0)) * size_t(texture.height(0)) * 4);
    glGetTexImage(GL_TEXTURE_2D, 0, GL_RGBA, GL_UNSIGNED_BYTE, bytes.data());
    return bytes;
}

testing::AssertionResult areWithinOneStep(const Bytes& actual, const Bytes& expected)
{
    if (expected.empty() || actual.size() != expected.size())
        return testing::AssertionFailure() << actual.size() << " bytes beside " << expected.size();
    int largest = 0;
    size_t where = 0;
    for (size_t i = 0; i < actual.size(); ++i)
    {
        const int difference = std::abs(int(actual[i]) - int(expected[i]));
        if (difference > largest)
        {
            largest = difference;
            where = i;
        }
    }
    if (largest <= 1)
        return testing::AssertionSuccess();
    return testing::AssertionFailure() << int(actual[where]) << " and not " << int(expected[where]) << " at byte "
                                       << where;
}

/// Size, format and colours of a texture beside what the reference makes of the file.
void expectTexture(Texture& texture, const Bytes& expected, int width, int height, unsigned format)
{
    {
        const AutoBinder binder(&texture);
        EXPECT_EQ(texture.width(0), width);
        EXPECT_EQ(texture.height(0), height);
        EXPECT_EQ(unsigned(texture.internalFormat(0)), format);
        EXPECT_EQ(texture.width(1), 0) << "there is one level";
    }
    EXPECT_TRUE(areWithinOneStep(texelsOf(texture), expected));
}

} // namespace

// ---- files from elsewhere ------------------------------------------------------------------------------------------

TEST(ASTCFilesTest, EveryFileIsStatedHere)
{
    VRK_NEEDS_REAL_FILES("astc");
    QStringList names = {QString::fromLatin1(kVolume), QString::fromLatin1(kInvalid)};
    for (const FileRow& row : kFiles)
        names.append(QString::fromLatin1(row.name));
    names.sort();
    EXPECT_EQ(QDir(realFilesFolder("astc")).entryList(QDir::Files, QDir::Name), names);
}

TEST_F(ASTCFilesGL, RealFilesAreWhatTheReferenceDecodes)
{
    VRK_NEEDS_REAL_FILES("astc");
    VRK_NEEDS_ASTC();
    for (const FileRow& row : kFiles)
    {
        SCOPED_TRACE(row.name);
        const LogCapture log;
        const auto texture = load(pathOf(row.name));
        ASSERT_TRUE(texture);
        EXPECT_EQ(log.messages(QtWarningMsg), QStringList());
        expectTexture(*texture, decodedByReference(pathOf(row.name), false), row.width, row.height, row.format);
    }
}

TEST_F(ASTCFilesGL, RealFilesAsSrgbAreWhatTheReferenceDecodes)
{
    VRK_NEEDS_REAL_FILES("astc");
    VRK_NEEDS_ASTC();
    for (const char* const name : {"earth_color_8x8.astc", "npot_63x27_12x10.astc"})
    {
        SCOPED_TRACE(name);
        const FileRow& row =
            *std::find_if(std::begin(kFiles), std::end(kFiles),
                          [name](const FileRow& candidate) { return std::string(candidate.name) == name; });
        const auto texture = load(pathOf(name), true);
        ASSERT_TRUE(texture);
        expectTexture(*texture, decodedByReference(pathOf(name), true), row.width, row.height, row.format + 0x20);
    }
}

TEST_F(ASTCFilesGL, AVolumeWithBlocksThatOpenGLLacksLeavesAnErrorAndNoImage)
{
    VRK_NEEDS_REAL_FILES("astc");
    const LogCapture log;
    const auto texture = load(pathOf(kVolume));
    EXPECT_EQ(glGetError(), GLenum(GL_INVALID_ENUM));
    ASSERT_TRUE(texture) << "the reader does not ask how it went";
    EXPECT_EQ(log.messages(QtWarningMsg), QStringList());
    const AutoBinder binder(texture.get());
    EXPECT_EQ(texture->width(0), 0);
}

TEST_F(ASTCFilesGL, AFileOfAnotherMagicIsNobodys)
{
    VRK_NEEDS_REAL_FILES("astc");
    const LogCapture log;
    EXPECT_EQ(load(pathOf(kInvalid)), nullptr);
    EXPECT_EQ(log.messages(), QStringList(QStringLiteral("Failed to load ") + pathOf(kInvalid)));
}

// ---- pictures that the reference encodes ---------------------------------------------------------------------------

TEST_F(ASTCFilesGL, EveryBlockSizeIsWhatTheReferenceDecodes)
{
    VRK_NEEDS_ASTC();
    const QString png = picture();
    for (const AstcFormat& format : kAstcFormats)
    {
        SCOPED_TRACE(std::to_string(format.width) + "x" + std::to_string(format.height));
        const QString path = encoded(png, format, false);
        const auto texture = load(path);
        ASSERT_TRUE(texture);
        expectTexture(*texture, decodedByReference(path, false), 67, 43, format.linear);
    }
}

TEST_F(ASTCFilesGL, EveryBlockSizeAsSrgbIsWhatTheReferenceDecodes)
{
    VRK_NEEDS_ASTC();
    const QString png = picture();
    for (const AstcFormat& format : kAstcFormats)
    {
        SCOPED_TRACE(std::to_string(format.width) + "x" + std::to_string(format.height));
        const QString path = encoded(png, format, true);
        const auto texture = load(path, true);
        ASSERT_TRUE(texture);
        expectTexture(*texture, decodedByReference(path, true), 67, 43, format.linear + 0x20);
    }
}

TEST_F(ASTCFilesGL, TheFirstRowOfTheFileIsTheBottomRow)
{
    VRK_NEEDS_ASTC();
    QImage image(16, 16, QImage::Format_RGBA8888);
    image.fill(Qt::blue);
    for (int x = 0; x < 16; ++x)
        for (int y = 0; y < 8; ++y)
            image.setPixelColor(x, y, Qt::red);
    const QString png = folder.filePath(QStringLiteral("halves.png"));
    ASSERT_TRUE(image.save(png));
    const auto texture = load(encoded(png, {4, 4, 0x93B0}, false));
    ASSERT_TRUE(texture);
    const Bytes texels = texelsOf(*texture);
    ASSERT_EQ(texels.size(), 16u * 16u * 4u);
    EXPECT_EQ(Bytes(texels.begin(), texels.begin() + 4), (Bytes{255, 0, 0, 255}));
    EXPECT_EQ(Bytes(texels.end() - 4, texels.end()), (Bytes{0, 0, 255, 255}));
}

TEST_F(ASTCFilesGL, FiltersAreNearest)
{
    VRK_NEEDS_ASTC();
    QByteArray file = astcFile({4, 4, 1, 4, 4, 1}, 1);
    const std::unique_ptr<Texture> texture(LoadTextureFromMemory(reinterpret_cast<unsigned char*>(file.data()),
                                                                 size_t(file.size()), {}, QStringLiteral("bytes")));
    ASSERT_TRUE(texture);
    const AutoBinder binder(texture.get());
    for (const GLenum name : {GL_TEXTURE_MAG_FILTER, GL_TEXTURE_MIN_FILTER})
    {
        GLint value = -1;
        glGetTexParameteriv(GL_TEXTURE_2D, name, &value);
        EXPECT_EQ(value, GL_NEAREST);
    }
}

TEST_F(ASTCFilesGL, AnotherRangeIsSampledAndMapped)
{
    VRK_NEEDS_ASTC();
    const QString png = picture();
    for (const bool srgb : {false, true})
    {
        const QString path = encoded(png, {6, 6, 0x93B4}, srgb);
        TextureFileInfo info;
        info.srgb = srgb;
        info.lowValue = 0.25f;
        info.highValue = 0.75f;
        const std::unique_ptr<Texture> texture(LoadTextureFromFile(path, info));
        ASSERT_TRUE(texture);
        const Bytes texels = texelsOf(*texture);
        const Bytes reference = decodedByReference(path, srgb);
        ASSERT_EQ(texels.size(), reference.size());
        int largest = 0;
        for (size_t i = 0; i < texels.size(); ++i)
        {
            double value = reference[i] / 255.0;
            if (i % 4 != 3)
            {
                if (srgb)
                    value = value <= 0.04045 ? value / 12.92 : std::pow((value + 0.055) / 1.055, 2.4);
                value = 0.25 + value * 0.5;
            }
            largest = std::max(largest, int(std::lround(std::abs(texels[i] - value * 255.0))));
        }
        EXPECT_LE(largest, 1) << srgb;
    }
}

// ---- what the driver refuses ---------------------------------------------------------------------------------------

TEST_F(ASTCFilesGL, BlockSizesWithoutAFormatLeaveAnErrorAndNoImage)
{
    for (const AstcHeader& header : {AstcHeader{4, 5, 1, 4, 5, 1}, AstcHeader{3, 3, 3, 3, 3, 3}})
    {
        QByteArray file = astcFile(header, 1);
        const std::unique_ptr<Texture> texture(LoadTextureFromMemory(reinterpret_cast<unsigned char*>(file.data()),
                                                                     size_t(file.size()), {}, QStringLiteral("bytes")));
        EXPECT_EQ(glGetError(), GLenum(GL_INVALID_ENUM));
        ASSERT_TRUE(texture);
        const AutoBinder binder(texture.get());
        EXPECT_EQ(texture->width(0), 0);
    }
}

TEST_F(ASTCFilesGL, BlocksThatDoNotFitTheImageAreRefusedByTheDriver)
{
    VRK_NEEDS_ASTC();
    // A volume of four layers, and one without any: both with another number of blocks than the picture has.
    const struct
    {
        AstcHeader header;
        int blocks;
    } rows[] = {{{4, 4, 1, 4, 4, 4}, 4}, {{4, 4, 1, 400, 400, 0}, 0}};
    for (const auto& row : rows)
    {
        QByteArray file = astcFile(row.header, row.blocks);
        const std::unique_ptr<Texture> texture(LoadTextureFromMemory(reinterpret_cast<unsigned char*>(file.data()),
                                                                     size_t(file.size()), {}, QStringLiteral("bytes")));
        EXPECT_EQ(glGetError(), GLenum(GL_INVALID_VALUE));
        EXPECT_TRUE(texture);
    }
}

TEST_F(ASTCFilesGL, AFileOfTheWrongSizeIsReportedAndNotTriedByQt)
{
    const QString path =
        writeFile(folder.filePath(QStringLiteral("long.astc")), astcFile({4, 4, 1, 4, 4, 1}, 1) + '\0');
    const LogCapture log;
    EXPECT_EQ(load(path), nullptr);
    EXPECT_EQ(log.messages(), QStringList(QStringLiteral("Data appears invalid for texture file '%1'").arg(path)));
}

#if defined(__linux__)
TEST_F(ASTCFilesGL, NoFileStaysOpen)
{
    VRK_NEEDS_ASTC();
    const QByteArray good = astcFile({4, 4, 1, 4, 4, 1}, 1);
    for (const QByteArray& contents : {good, good.chopped(1)})
    {
        const QString path = writeFile(folder.filePath(QStringLiteral("open.astc")), contents);
        const auto texture = load(path);
        EXPECT_EQ(openUsesOf(path), 0);
    }
}
#endif

} // namespace Harrow::Vrk::Test
