// SPDX-License-Identifier: MIT
//
// KTX files on the real driver: files that nobody here has written, each with what must come of it, compared texel by
// texel with a plain reading of the file.
#include "KTXFilesTestTools.h"

#include "EtcDecoder.h"

#include <QDir>
#include <QtEndian>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <memory>
#include <vector>

namespace Harrow::Vrk::Test
{
namespace
{

// ---- a plain reading of a file -------------------------------------------------------------------------------------

/// By the published layout, of files that keep to it and are little-endian.
std::vector<PlainLevel> levelsOf(const QByteArray& file)
{
    const auto wordAt = [&file](qsizetype offset)
    { return int(qFromLittleEndian<quint32>(file.constData() + offset)); };
    int width = wordAt(36);
    int height = std::max(wordAt(40), 1);
    int depth = std::max(wordAt(44), 1);
    const int faces = wordAt(52);
    const int count = std::max(wordAt(56), 1);
    qsizetype cursor = 64 + wordAt(60);
    std::vector<PlainLevel> levels;
    for (int i = 0; i < count; ++i)
    {
        const int bytes = wordAt(cursor);
        cursor += 4;
        PlainLevel level{width, height, depth, {}};
        for (int face = 0; face < faces; ++face)
        {
            const QByteArray data = file.mid(cursor, bytes);
            EXPECT_EQ(data.size(), bytes);
            level.faces.emplace_back(data.begin(), data.end());
            cursor += (bytes + 3) / 4 * 4;
        }
        levels.push_back(level);
        width = std::max(width / 2, 1);
        height = std::max(height / 2, 1);
        depth = std::max(depth / 2, 1);
    }
    return levels;
}

// ---- what must come of each file -----------------------------------------------------------------------------------

enum class Outcome
{
    eTexels,    ///< loads; the texels are the file's, byte for byte
    eEtc2,      ///< loads; the texels are those of the decoder
    eEtc2Alpha, ///< the same, with alpha
    eBlocks,    ///< loads; the driver holds the file's blocks
    eArray,     ///< refused as an array
    eFails,     ///< OpenGL or the file's length refuses it
    eNoShape,   ///< the same, after reports of a texture without a target
};

struct Row
{
    const char* file;
    Outcome outcome;
    GLenum target;
    GLint internalFormat;
    int width, height, depth;
    int levels;
    int faces;
    GLenum format; ///< of the texels
    GLenum type;
    int texelBytes;
};

constexpr GLenum k2D = 0x0DE1;
constexpr GLenum k3D = 0x806F;
constexpr GLenum kCube = 0x8513;
constexpr GLenum kByte = 0x1401;
constexpr GLenum kHalf = 0x140B;
constexpr GLenum kRed = 0x1903;
constexpr GLenum kRGB = 0x1907;
constexpr GLenum kRGBA = 0x1908;

constexpr Row kRows[] = {
    {"array2_r8_64_mips7.ktx", Outcome::eArray, 0, 0, 64, 64, 0, 7, 1, 0, 0, 0},
    {"astc5x5_66.ktx", Outcome::eBlocks, k2D, 0x93D2, 66, 66, 0, 1, 1, 0, 0, 0},
    {"bc3_128_mips8.ktx", Outcome::eBlocks, k2D, 0x83F3, 128, 128, 0, 8, 1, 0, 0, 0},
    {"bigendian_rg8_64_mips7.ktx", Outcome::eNoShape, 0, 0, 0, 0, 0, 7, 1, 0, 0, 0},
    {"bigendian_rgb5a1_64_mips7.ktx", Outcome::eNoShape, 0, 0, 0, 0, 0, 7, 1, 0, 0, 0},
    {"cube_etc2_512.ktx", Outcome::eEtc2, kCube, 0x9274, 512, 512, 0, 1, 6, 0, 0, 0},
    {"cube_rgb8_64_mips7.ktx", Outcome::eTexels, kCube, 0x8051, 64, 64, 0, 7, 6, kRGB, kByte, 3},
    {"etc1_128.ktx", Outcome::eFails, k2D, 0x8D64, 128, 128, 0, 1, 1, 0, 0, 0},
    {"etc2_rgb8_128.ktx", Outcome::eEtc2, k2D, 0x9274, 128, 128, 0, 1, 1, 0, 0, 0},
    {"etc2_rgba8_128.ktx", Outcome::eEtc2Alpha, k2D, 0x9278, 128, 128, 0, 1, 1, 0, 0, 0},
    {"etc2_srgb8_256_mips9.ktx", Outcome::eEtc2, k2D, 0x9275, 256, 256, 0, 9, 1, 0, 0, 0},
    {"invalid_imagesize_past_end.ktx", Outcome::eFails, k2D, 0x8058, 16, 16, 0, 1, 1, kRGBA, kByte, 4},
    {"invalid_kvd_overflow.ktx", Outcome::eTexels, k2D, 0x8229, 16, 16, 0, 1, 1, kRed, kByte, 1},
    {"luminance_unsized_200x100.ktx", Outcome::eFails, k2D, 0x1909, 200, 100, 0, 1, 1, 0x1909, kByte, 1},
    {"metadata_two_keys.ktx", Outcome::eTexels, k2D, 0x8229, 64, 64, 0, 1, 1, kRed, kByte, 1},
    {"r8_256_gltype0_wild.ktx", Outcome::eFails, k2D, 0x8229, 256, 256, 0, 1, 1, 0, 0, 0},
    {"r8_43x71_mips7.ktx", Outcome::eTexels, k2D, 0x8229, 43, 71, 0, 7, 1, kRed, kByte, 1},
    {"r8_64_mips3of7.ktx", Outcome::eTexels, k2D, 0x8229, 64, 64, 0, 3, 1, kRed, kByte, 1},
    {"rgb8_128_mips0_generate.ktx", Outcome::eTexels, k2D, 0x8051, 128, 128, 0, 0, 1, kRGB, kByte, 3},
    {"rgb8_128_orient_down.ktx", Outcome::eTexels, k2D, 0x8051, 128, 128, 0, 1, 1, kRGB, kByte, 3},
    {"rgb8_128_orient_up.ktx", Outcome::eTexels, k2D, 0x8051, 128, 128, 0, 1, 1, kRGB, kByte, 3},
    {"rgb8_4x3_orient_down.ktx", Outcome::eTexels, k2D, 0x8C41, 4, 3, 0, 1, 1, kRGB, kByte, 3},
    {"rgb8_64_mips7.ktx", Outcome::eTexels, k2D, 0x8051, 64, 64, 0, 7, 1, kRGB, kByte, 3},
    {"rgba16f_16_depth1.ktx", Outcome::eTexels, k3D, 0x881A, 16, 16, 1, 1, 1, kRGBA, kHalf, 8},
    {"rgba8_128.ktx", Outcome::eTexels, k2D, 0x8058, 128, 128, 0, 1, 1, kRGBA, kByte, 4},
    {"rgba8_256_mips9.ktx", Outcome::eTexels, k2D, 0x8058, 256, 256, 0, 9, 1, kRGBA, kByte, 4},
    {"rgba8_40x30_mips6.ktx", Outcome::eTexels, k2D, 0x8058, 40, 30, 0, 6, 1, kRGBA, kByte, 4},
    {"tex3d_r8_13x23x7_mips5.ktx", Outcome::eTexels, k3D, 0x8229, 13, 23, 7, 5, 1, kRed, kByte, 1},
};

bool isLoaded(Outcome outcome)
{
    return outcome <= Outcome::eBlocks;
}

const QString kGenerating =
    QStringLiteral("Generating Mipmaps. For increased loading performance, include these in the .ktx file.");
const QString kNoTarget =
    assertionLine(QStringLiteral("0u != this->_target"), QStringLiteral("Texture Target is not set on %1"));

QStringList linesFor(const Row& row, const QString& path)
{
    const QStringList failed(QStringLiteral("%1 %2 failed to load.")
                                 .arg(row.type == 0 && row.outcome != Outcome::eNoShape
                                          ? QStringLiteral("Compressed texture")
                                          : QStringLiteral("Texture"),
                                      path));
    switch (row.outcome)
    {
    case Outcome::eArray:
        return {QStringLiteral("Array textures not supported yet, sorry!")};
    case Outcome::eFails:
        return failed;
    case Outcome::eNoShape:
        return QStringList({kNoTarget.arg(QStringLiteral("bind")), kNoTarget.arg(QStringLiteral("unbind"))}) + failed;
    default:
        return row.levels == 0 ? QStringList(kGenerating) : QStringList();
    }
}

GLenum faceTarget(const Row& row, size_t face)
{
    return row.target == kCube ? GL_TEXTURE_CUBE_MAP_POSITIVE_X + GLenum(face) : row.target;
}

/// A level's rows without the padding that the file has behind each.
Bytes withoutPadding(const Bytes& bytes, const PlainLevel& level, int texelBytes)
{
    const int row = level.width * texelBytes;
    Bytes tight;
    for (int i = 0; i < level.height * level.depth; ++i)
    {
        const auto start = bytes.begin() + qsizetype(i) * ((row + 3) / 4 * 4);
        tight.insert(tight.end(), start, start + row);
    }
    return tight;
}

void expectDecoded(const Row& row, size_t face, int number, const PlainLevel& level)
{
    const bool hasAlpha = row.outcome == Outcome::eEtc2Alpha;
    const Bytes& blocks = level.faces[face];
    ASSERT_EQ(blocks.size(), Etc::imageBytes(level.width, level.height, hasAlpha));
    const Etc::Image image = Etc::decode(blocks.data(), level.width, level.height, hasAlpha);
    const Bytes texels = texelsOf(faceTarget(row, face), number, level, GL_RGBA, GL_UNSIGNED_BYTE, 4);
    int worst = 0;
    for (size_t i = 0; i < texels.size(); ++i)
        worst = std::max(worst, std::abs(texels[i] - image.texels[i / 4][i % 4]));
    EXPECT_LE(worst, 1) << row.file << ", level " << number << ", face " << face;
}

void expectBlocks(const Row& row, size_t face, int number, const PlainLevel& level)
{
    const GLenum target = faceTarget(row, face);
    EXPECT_EQ(levelParameter(target, number, GL_TEXTURE_COMPRESSED), 1) << row.file;
    const GLint size = levelParameter(target, number, GL_TEXTURE_COMPRESSED_IMAGE_SIZE);
    ASSERT_EQ(size, GLint(level.faces[face].size())) << row.file << ", level " << number;
    Bytes blocks(static_cast<size_t>(size));
    glGetCompressedTexImage(target, number, blocks.data());
    EXPECT_EQ(blocks, level.faces[face]) << row.file << ", level " << number << ", face " << face;
}

void expectLevel(const Row& row, int number, const PlainLevel& level)
{
    for (size_t face = 0; face < level.faces.size(); ++face)
    {
        const GLenum target = faceTarget(row, face);
        EXPECT_EQ(levelParameter(target, number, GL_TEXTURE_WIDTH), level.width) << row.file << ' ' << number;
        EXPECT_EQ(levelParameter(target, number, GL_TEXTURE_HEIGHT), level.height) << row.file << ' ' << number;
        EXPECT_EQ(levelParameter(target, number, GL_TEXTURE_DEPTH), level.depth) << row.file << ' ' << number;
        EXPECT_EQ(levelParameter(target, number, GL_TEXTURE_INTERNAL_FORMAT), row.internalFormat) << row.file;
        if (row.outcome != Outcome::eTexels)
            expectBlocks(row, face, number, level);
        if (row.outcome == Outcome::eEtc2 || row.outcome == Outcome::eEtc2Alpha)
            expectDecoded(row, face, number, level);
        if (row.outcome == Outcome::eTexels)
        {
            EXPECT_EQ(texelsOf(target, number, level, row.format, row.type, row.texelBytes),
                      withoutPadding(level.faces[face], level, row.texelBytes))
                << row.file << ", level " << number << ", face " << face;
        }
    }
}

void expectTexture(const Row& row, Texture& texture, const QByteArray& file)
{
    EXPECT_EQ(texture.target(), row.target) << row.file;
    const std::vector<PlainLevel> levels = levelsOf(file);
    ASSERT_EQ(int(levels.size()), std::max(row.levels, 1)) << row.file;
    EXPECT_EQ(int(levels[0].faces.size()), row.faces) << row.file;
    EXPECT_EQ(levels[0].width, row.width);
    EXPECT_EQ(levels[0].height, row.height);
    EXPECT_EQ(levels[0].depth, std::max(row.depth, 1));
    const AutoBinder binder(&texture);
    for (size_t i = 0; i < levels.size(); ++i)
        expectLevel(row, int(i), levels[i]);
    GLint maxLevel = -1;
    glGetTexParameteriv(row.target, GL_TEXTURE_MAX_LEVEL, &maxLevel);
    EXPECT_EQ(maxLevel, row.levels == 0 ? 1000 : row.levels - 1) << row.file;
    if (row.levels > 0)
    {
        EXPECT_EQ(levelParameter(faceTarget(row, 0), row.levels, GL_TEXTURE_WIDTH), 0) << "there is no further level";
    }
}

class KTXFilesGL : public KTXDriverFixture
{
protected:
    static QString real(const char* name)
    {
        return realFilesFolder("ktx") + QLatin1Char('/') + QLatin1String(name);
    }
};

} // namespace

// ---- real files ----------------------------------------------------------------------------------------------------

TEST_F(KTXFilesGL, EachRealFileHasItsRow)
{
    VRK_NEEDS_REAL_FILES("ktx");
    QStringList rows;
    for (const Row& row : kRows)
        rows.append(QString::fromLatin1(row.file));
    EXPECT_EQ(QDir(realFilesFolder("ktx")).entryList(QDir::Files, QDir::Name), rows);
}

TEST_F(KTXFilesGL, RealFilesAreLoadedTexelByTexelOrRefused)
{
    VRK_NEEDS_REAL_FILES("ktx");
    for (const Row& row : kRows)
    {
        const QString path = real(row.file);
        const LogCapture log;
        const auto texture = load(path);
        EXPECT_EQ(texture != nullptr, isLoaded(row.outcome)) << row.file;
        QStringList lines = log.messages(QtWarningMsg);
        if (row.outcome == Outcome::eNoShape)
            lines = log.messages(QtCriticalMsg) + lines;
        EXPECT_EQ(lines, linesFor(row, path)) << row.file;
        EXPECT_EQ(glGetError(), GLenum(GL_NO_ERROR)) << row.file;
        EXPECT_EQ(Texture::NumAlive(), texture ? 1 : 0) << row.file;
#if defined(__linux__)
        EXPECT_EQ(openUsesOf(path), 0) << row.file;
#endif
        if (texture)
            expectTexture(row, *texture, readFile(path));
    }
}

TEST_F(KTXFilesGL, TheHeadersOfRealFilesAreAnswered)
{
    VRK_NEEDS_REAL_FILES("ktx");
    for (const Row& row : kRows)
    {
        const std::unique_ptr<TextureLoader> loader(IdentifyTextureFromFile(real(row.file)));
        ASSERT_TRUE(loader) << row.file;
        EXPECT_TRUE(loader->valid()) << row.file;
        EXPECT_EQ(int(loader->width()), row.width) << row.file;
        EXPECT_EQ(int(loader->height()), row.height) << row.file;
        EXPECT_EQ(int(loader->depth()), row.depth) << row.file;
        EXPECT_EQ(int(loader->mipmapLevels()), row.levels) << row.file;
        EXPECT_EQ(int(loader->cubeFaces()), row.faces) << row.file;
        EXPECT_EQ(loader->arraySize(), row.outcome == Outcome::eArray ? 2u : 0u) << row.file;
        EXPECT_EQ(loader->is3DTexture(), row.depth > 0) << row.file;
    }
}

TEST_F(KTXFilesGL, TheMetadataOfRealFiles)
{
    VRK_NEEDS_REAL_FILES("ktx");
    const struct
    {
        const char* file;
        QStringList keys;
    } rows[] = {
        {"rgba8_128.ktx", {}},
        // Each has one entry, whose padding with the first bytes of the pixels' size is another.
        {"rgb8_4x3_orient_down.ktx", texts({"KTXorientation", ""})},
        {"rgba8_256_mips9.ktx", texts({"KTXOrientation", ""})},
        {"rgba16f_16_depth1.ktx", texts({"Dimensions", ""})},
        // Behind the first entry's padding the walk is out of step.
        {"metadata_two_keys.ktx", texts({"utf8Nul", ""})},
        {"bc3_128_mips8.ktx", texts({"KramVulkanFormat", ""})},
        {"invalid_kvd_overflow.ktx", texts({"KTXorientati"})},
    };
    for (const auto& row : rows)
    {
        const std::unique_ptr<TextureLoader> loader(IdentifyTextureFromFile(real(row.file)));
        ASSERT_TRUE(loader);
        QStringList keys;
        for (unsigned i = 0; i < loader->numMetadataEntries(); ++i)
        {
            keys.append(loader->key(i));
            EXPECT_EQ(loader->value(i), QString()) << row.file;
        }
        EXPECT_EQ(keys, row.keys) << row.file;
    }
}

TEST_F(KTXFilesGL, ThePictureThatIsStoredTopRowFirstIsTurnedUpsideDown)
{
    VRK_NEEDS_REAL_FILES("ktx");
    // The same picture in both files.
    const PlainLevel up = levelsOf(readFile(real("rgb8_128_orient_up.ktx"))).at(0);
    const auto texture = load(real("rgb8_128_orient_down.ktx"), TextureFileInfo());
    ASSERT_TRUE(texture);
    const AutoBinder binder(texture.get());
    EXPECT_EQ(texelsOf(GL_TEXTURE_2D, 0, up, GL_RGB, GL_UNSIGNED_BYTE, 3), up.faces[0]);
}

TEST_F(KTXFilesGL, ACompressedFileThatIsTurnedIsPlainAfterwards)
{
    VRK_NEEDS_REAL_FILES("ktx");
    const PlainLevel level = levelsOf(readFile(real("etc2_rgba8_128.ktx"))).at(0);
    Etc::Image image = Etc::decode(level.faces[0].data(), 128, 128, true);
    const auto texture = load(real("etc2_rgba8_128.ktx"), TextureFileInfo());
    ASSERT_TRUE(texture);
    const AutoBinder binder(texture.get());
    EXPECT_EQ(levelParameter(GL_TEXTURE_2D, 0, GL_TEXTURE_COMPRESSED), 0);
    const Bytes texels = texelsOf(GL_TEXTURE_2D, 0, level, GL_RGBA, GL_UNSIGNED_BYTE, 4);
    int worst = 0;
    for (size_t i = 0; i < texels.size(); ++i)
    {
        const size_t row = 127 - i / 4 / 128;
        worst = std::max(worst, std::abs(texels[i] - image.texels[row * 128 + i / 4 % 128][i % 4]));
    }
    EXPECT_LE(worst, 1);
}

TEST_F(KTXFilesGL, AFileOfNoLevelsHasItsChainGenerated)
{
    VRK_NEEDS_REAL_FILES("ktx");
    const PlainLevel base = levelsOf(readFile(real("rgb8_128_mips0_generate.ktx"))).at(0);
    const auto texture = load(real("rgb8_128_mips0_generate.ktx"));
    ASSERT_TRUE(texture);
    const AutoBinder binder(texture.get());
    for (int level = 0; level < 8; ++level)
        EXPECT_EQ(levelParameter(GL_TEXTURE_2D, level, GL_TEXTURE_WIDTH), 128 >> level);
    EXPECT_EQ(levelParameter(GL_TEXTURE_2D, 8, GL_TEXTURE_WIDTH), 0);
    const Bytes half = texelsOf(GL_TEXTURE_2D, 1, {64, 64, 1, {}}, GL_RGB, GL_UNSIGNED_BYTE, 3);
    for (int i = 0; i < 64 * 64 * 3; ++i)
    {
        const int x = i / 3 % 64;
        const int y = i / 3 / 64;
        int sum = 0;
        for (const int corner : {0, 1, 128, 129})
            sum += base.faces[0][size_t((y * 256 + x * 2 + corner) * 3 + i % 3)];
        ASSERT_NEAR(half[size_t(i)], sum / 4.0, 1.0) << i;
    }
    for (const GLenum filter : {GL_TEXTURE_MIN_FILTER, GL_TEXTURE_MAG_FILTER})
    {
        GLint value = 0;
        glGetTexParameteriv(GL_TEXTURE_2D, filter, &value);
        EXPECT_EQ(value, GL_LINEAR);
    }
}

TEST_F(KTXFilesGL, SrgbGivesEtc2ItsTwin)
{
    VRK_NEEDS_REAL_FILES("ktx");
    TextureFileInfo info = preprocessed();
    info.srgb = true;
    for (const auto& [file, format] : {std::pair{"etc2_rgb8_128.ktx", 0x9275},
                                       {"etc2_rgba8_128.ktx", 0x9279},
                                       {"etc2_srgb8_256_mips9.ktx", 0x9275},
                                       {"rgba8_128.ktx", 0x8058}})
    {
        const auto texture = load(real(file), info);
        ASSERT_TRUE(texture) << file;
        const AutoBinder binder(texture.get());
        EXPECT_EQ(texture->internalFormat(0), format) << file;
    }
}

TEST_F(KTXFilesGL, EveryCutOfARealFileIsRefusedOrLoadsAndLeavesNothing)
{
    VRK_NEEDS_REAL_FILES("ktx");
    for (const char* const name : {"rgb8_4x3_orient_down.ktx", "invalid_kvd_overflow.ktx"})
    {
        const QByteArray whole = readFile(real(name));
        for (int count = 0; count <= whole.size(); ++count)
        {
            const QByteArray cut = whole.left(count);
            KTXReader reader(new EdgeMemory(cut), QStringLiteral("cut.ktx"));
            const std::unique_ptr<Texture> texture(reader.valid() ? reader.load(preprocessed()) : nullptr);
            EXPECT_EQ(texture != nullptr, count == whole.size()) << name << ' ' << count;
        }
    }
}

} // namespace Harrow::Vrk::Test
