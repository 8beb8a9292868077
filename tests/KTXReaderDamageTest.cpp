// SPDX-License-Identifier: MIT
//
// KTX files on the fake driver: files that end too early or say what is not true. Nothing behind their end is read.
#include "KTXReaderDriverTestTools.h"

#include <atomic>
#include <random>

namespace Harrow::Vrk::Test
{

// ---- files that end too early --------------------------------------------------------------------------------------

TEST_F(KTXReaderLoadTest, ALevelThatIsCutOffIsAFailedLoad)
{
    KTXFile file;
    file.levels = 2;
    file.level(pattern(32)).level(pattern(8));
    const QByteArray whole = file.body;
    for (int count = 1; count < whole.size(); ++count)
    {
        file.body = whole.left(count);
        expectTooShort(file);
    }
    file.body = whole;
    callsFor(file);
    EXPECT_TRUE(texture);
}

TEST_F(KTXReaderLoadTest, ACompressedLevelThatIsCutOffIsAFailedLoad)
{
    KTXFile file;
    file.levels = 2;
    file.compressed(kEtc2).level(pattern(8)).level(pattern(8));
    const QByteArray whole = file.body;
    for (int count = 1; count < whole.size(); ++count)
    {
        file.body = whole.left(count);
        expectTooShort(file);
    }
    file.body = whole;
    callsFor(file);
    EXPECT_TRUE(texture);
}

TEST_F(KTXReaderLoadTest, ThePaddingOfTheLastLevelMayBeMissing)
{
    KTXFile file;
    file.compressed(kEtc2).level(pattern(9));
    file.body.chop(3);
    callsFor(file);
    EXPECT_TRUE(texture);
    file.body.chop(1);
    expectTooShort(file);
}

TEST_F(KTXReaderLoadTest, ThePaddingOfTheLastFaceMayBeMissing)
{
    KTXFile file;
    file.faces = 6;
    file.compressed(kEtc2).size(4, 4).cubeLevel(6);
    file.body.chop(2);
    callsFor(file);
    EXPECT_TRUE(texture);
    file.body.chop(1);
    expectTooShort(file);
}

TEST_F(KTXReaderLoadTest, ThePaddingOfTheLastRowMayBeMissing)
{
    KTXFile file;
    file.glFormat = GL_RGB;
    file.size(3, 2).level(pattern(21));
    file.body.chop(3); // to 21 bytes
    callsFor(file);
    EXPECT_TRUE(texture);
    file.body.chop(1);
    expectTooShort(file);
}

TEST_F(KTXReaderLoadTest, ACubeMapThatLacksPartOfAFaceIsAFailedLoad)
{
    KTXFile file;
    file.faces = 6;
    file.size(2, 2).cubeLevel(16);
    const QByteArray whole = file.body;
    for (const int missing : {1, 16, 17, 95})
    {
        file.body = whole.left(whole.size() - missing);
        expectTooShort(file);
    }
}

TEST_F(KTXReaderLoadTest, AnImageSizeBeyondTheFileIsAFailedLoad)
{
    for (const quint32 size : {9u, 0x7FFFFFFFu, 0x80000000u, 0xFFFFFFFCu, 0xFFFFFFFFu})
    {
        KTXFile file;
        file.compressed(kEtc2);
        file.body = word(size) + pattern(8);
        expectTooShort(file);
        file.faces = 6;
        file.body = word(size) + pattern(48);
        expectTooShort(file);
        KTXFile plain;
        plain.levels = 2; // behind the first there is no second
        plain.body = word(std::max(size, 33u)) + pattern(32);
        expectTooShort(plain);
    }
}

TEST_F(KTXReaderLoadTest, AnImageSizeThatIsTooSmallLeadsOpenGLBehindTheEndAndIsAFailedLoad)
{
    for (const quint32 size : {0u, 1u, 28u, 31u})
    {
        KTXFile file;
        file.body = word(size) + pattern(31);
        expectTooShort(file);
    }
}

TEST_F(KTXReaderLoadTest, OnlyAdvancingTakesThePlainImageSizeIntoAccount)
{
    // As long as the texels are there, it is not compared with anything.
    for (const quint32 size : {0u, 28u, 36u, 0xFFFFFFFFu})
    {
        KTXFile file;
        file.body = word(size) + pattern(32);
        const QStringList calls = callsFor(file);
        EXPECT_TRUE(texture) << size;
        EXPECT_TRUE(
            calls.contains(CallLog::call("glTexImage2D", GL_TEXTURE_2D, 0, 0x8058, 4, 2, 0, 0x1908, 0x1401, at(68))));
    }
    KTXFile file;
    file.levels = 2;
    file.body = word(5) + pattern(8) + word(8) + pattern(40);
    EXPECT_TRUE(callsFor(file).contains(
        CallLog::call("glTexImage2D", GL_TEXTURE_2D, 1, 0x8058, 2, 1, 0, 0x1908, 0x1401, at(68 + 8 + 4))));
}

TEST_F(KTXReaderLoadTest, SizesWhoseProductOverflowsAreAFailedLoad)
{
    for (const quint32 size : {0x10000u, 0x40000000u, 0x80000000u, 0xFFFFFFFFu})
    {
        KTXFile file;
        file.size(size, size, size).level(pattern(64));
        expectTooShort(file);
        file.depth = 0;
        expectTooShort(file);
        file.faces = 6;
        expectTooShort(file);
        file.size(size, 0, 0);
        file.faces = 1;
        expectTooShort(file);
    }
}

TEST_F(KTXReaderLoadTest, AFormatThatNobodyKnowsIsLeftToOpenGLIfTheFileCouldHoldIt)
{
    KTXFile file;
    file.glFormat = 0x1234;
    file.glType = 0x5678;
    file.level(pattern(8 * 32));
    EXPECT_TRUE(callsFor(file).contains(
        CallLog::call("glTexImage2D", GL_TEXTURE_2D, 0, 0x8058, 4, 2, 0, 0x1234, 0x5678, at(68))));
    file.body.chop(1);
    expectTooShort(file);
}

TEST_F(KTXReaderLoadTest, MoreLevelsThanAnySizeHasAreAFailedLoad)
{
    for (const quint32 levels : {33u, 1000u, 0x7FFFFFFFu, 0x80000000u, 0xFFFFFFFFu})
    {
        KTXFile file;
        file.levels = levels;
        file.compressed(kEtc2);
        file.body = QByteArray(8192, '\0'); // sizes of 0, one behind the other
        expectTooShort(file);
        file.size(0, 0);
        expectTooShort(file);
    }
    KTXFile file;
    file.levels = 32;
    file.compressed(kEtc2);
    file.body = QByteArray(32 * 4, '\0');
    EXPECT_EQ(callsFor(file).filter(QStringLiteral("glCompressedTexImage2D")).size(), 32);
}

TEST_F(KTXReaderLoadTest, AReaderWithoutAHeaderLoadsNothing)
{
    EXPECT_EQ(callsFor(kKTXMagic), QStringList());
    expectFailure(text("Compressed texture a.ktx failed to load."), 0); // there is no type
    const KTXReader empty(nullptr, QStringLiteral("b.ktx"));
    log.clear();
    EXPECT_EQ(empty.width(), 0u);
    EXPECT_EQ(const_cast<KTXReader&>(empty).load(preprocessed()), nullptr);
    EXPECT_EQ(log.messages(), texts({"Compressed texture b.ktx failed to load."}));
}

TEST_F(KTXReaderLoadTest, AnInvalidReaderWhoseMetadataIsBeyondTheEndLoadsNothing)
{
    for (const qint64 count : {100ll, 0xFFFFFFC0ll, 0xFFFFFFFFll})
    {
        KTXFile file;
        file.metadataBytes = count;
        EXPECT_EQ(callsFor(file.level(pattern(32))), QStringList());
        EXPECT_FALSE(texture);
        EXPECT_EQ(log.texts(), QStringList());
        EXPECT_EQ(trace.held, 1);
    }
}

namespace
{

/// Reads what OpenGL would read. The sum keeps the reads from being left out.
std::atomic<unsigned> bytesSeen;

void readAll(const void* pixels, quint64 count)
{
    unsigned sum = 0;
    for (quint64 i = 0; i < count; ++i)
        sum += static_cast<const unsigned char*>(pixels)[i];
    bytesSeen += sum + 1;
}

void readImage(GLsizei width, GLsizei height, GLsizei depth, GLenum format, GLenum type, const void* pixels)
{
    const quint64 channels = format == GL_RED ? 1 : format == GL_RGB ? 3 : format == GL_RGBA ? 4 : 0;
    const quint64 texel = type == GL_UNSIGNED_BYTE ? channels
                          : type == GL_HALF_FLOAT  ? channels * 2
                          : type == GL_FLOAT       ? channels * 4
                                                   : 0;
    if (texel == 0 || width <= 0 || height <= 0 || depth <= 0)
        return; // refused
    const auto* row = static_cast<const unsigned char*>(pixels);
    const quint64 rowBytes = quint64(width) * texel;
    for (qint64 i = 0; i < qint64(height) * depth; ++i, row += (rowBytes + 3) / 4 * 4)
        readAll(row, rowBytes);
}

void replaceUploads(FakeDriver& driver)
{
    driver.replace(
        "glTexImage1D", +[](GLenum, GLint, GLint, GLsizei width, GLint, GLenum format, GLenum type, const void* pixels)
                        { readImage(width, 1, 1, format, type, pixels); });
    driver.replace(
        "glTexImage2D", +[](GLenum, GLint, GLint, GLsizei width, GLsizei height, GLint, GLenum format, GLenum type,
                            const void* pixels) { readImage(width, height, 1, format, type, pixels); });
    driver.replace(
        "glTexImage3D",
        +[](GLenum, GLint, GLint, GLsizei width, GLsizei height, GLsizei depth, GLint, GLenum format, GLenum type,
            const void* pixels) { readImage(width, height, depth, format, type, pixels); });
    driver.replace(
        "glCompressedTexImage1D", +[](GLenum, GLint, GLenum, GLsizei, GLint, GLsizei size, const void* pixels)
                                  { readAll(pixels, quint64(std::max(size, 0))); });
    driver.replace(
        "glCompressedTexImage2D", +[](GLenum, GLint, GLenum, GLsizei, GLsizei, GLint, GLsizei size, const void* pixels)
                                  { readAll(pixels, quint64(std::max(size, 0))); });
    driver.replace(
        "glCompressedTexImage3D", +[](GLenum, GLint, GLenum, GLsizei, GLsizei, GLsizei, GLint, GLsizei size,
                                      const void* pixels) { readAll(pixels, quint64(std::max(size, 0))); });
    driver.load();
}

} // namespace

TEST_F(KTXReaderLoadTest, WhateverAFileSaysItsPixelsAreReadWithinItsBytes)
{
    replaceUploads(driver);
    bytesSeen = 0;
    std::mt19937 random(21);
    const auto number = [&random](quint32 limit) { return quint32(random() % limit); };
    const auto one = [&number](std::initializer_list<quint32> values)
    { return values.begin()[number(quint32(values.size()))]; };
    int loaded = 0;
    constexpr int kFiles = 20000;
    for (int i = 0; i < kFiles; ++i)
    {
        KTXFile file;
        file.glType = one({0, GL_UNSIGNED_BYTE, GL_HALF_FLOAT, GL_FLOAT, 0x1234});
        file.glFormat = one({GL_RED, GL_RGB, GL_RGBA, 0x1234});
        file.glTypeSize = one({1, 2, 4});
        const auto side = [&] { return one({0, 1, 2, 3, 5, number(16), 0x7FFFFFFF, 0xFFFFFFFF}); };
        file.size(number(12) == 0 ? side() : 1 + number(6), number(3) == 0 ? side() : number(5),
                  number(2) == 0 ? 0 : side());
        file.faces = one({1, 1, 6});
        file.levels = one({0, 1, 1, 2, 3, 7, 0xFFFFFFFF});
        file.endianness = one({kNative, kNative, kNative, 0x05030201});
        if (number(3) == 0)
            file.metadata = QByteArray(int(number(3)) * 4 + 3, '\x01');
        for (int level = 0; level < 4; ++level)
            file.body += word(number(8) == 0 ? one({0xFFFFFFFF, 0x80000000, number(400)}) : number(40)) +
                         pattern(int(number(200)));
        const QByteArray bytes = file.bytes(number(4) == 0);
        reader = newReader(bytes.left(number(4) == 0 ? bytes.size() : 64 + int(number(quint32(bytes.size()) - 63))),
                           &trace, name);
        texture.reset(reader->load(preprocessed()));
        loaded += texture != nullptr;
    }
    EXPECT_GT(loaded, kFiles / 20) << "the files are not all refused";
    EXPECT_GT(bytesSeen, 0u);
}

} // namespace Harrow::Vrk::Test
