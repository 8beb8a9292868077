// SPDX-License-Identifier: MIT
//
// ASTC files on the fake driver: the exact calls of a load, the formats by their numbers, and what cannot be loaded.
#include "ASTCReader.h"

#include "ASTCTestTools.h"
#include "OpenGLDeviceContext.h"
#include "TextureCallTools.h"
#include "TextureFileInfo.h"
#include "TextureReaderTestTools.h"
#include "TextureTestTools.h"

#include <QScopeGuard>

#include <memory>
#include <vector>

namespace Harrow::Vrk::Test
{
namespace
{

/// The calls that bring these blocks to the driver.
QStringList uploadCalls(unsigned format, int width, int height, qsizetype dataSize, const void* data)
{
    return {kGen,
            activate(3),
            bindName(1),
            CallLog::call("glCompressedTexImage2D", GL_TEXTURE_2D, 0, format, width, height, 0, dataSize, data),
            parameter(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, 0x2600), // GL_NEAREST
            parameter(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, 0x2600),
            activate(3),
            bindName(0)};
}

class ASTCReaderDriverTest : public TextureReaderFixture
{
protected:
    /// The calls of one load. Whatever it gives is kept in `texture`, what it asked of the memory in `trace`.
    QStringList callsOf(TracedMemory* memory, const TextureFileInfo& info = {})
    {
        texture.reset();
        ASTCReader reader(memory, QStringLiteral("a/sky.astc"));
        trace.gets.clear();
        trace.given.clear();
        trace.released.clear();
        const CallLog calls;
        texture.reset(reader.load(info));
        return withoutAddresses(calls.list());
    }

    QStringList callsOf(const AstcHeader& header, int blocks, const TextureFileInfo& info = {})
    {
        return callsOf(new TracedMemory(trace, astcFile(header, blocks)), info);
    }

    /// The format that a block size is uploaded with, by an image of a single block.
    unsigned formatOf(int blockWidth, int blockHeight, bool srgb, int blockDepth = 1)
    {
        static GLenum format;
        format = 0xFFFFFFFF;
        driver.replace(
            "glCompressedTexImage2D", +[](GLenum, GLint, GLenum internalFormat, GLsizei, GLsizei, GLint, GLsizei,
                                          const void*) { format = internalFormat; });
        driver.load();
        TextureFileInfo info;
        info.srgb = srgb;
        texture.reset();
        ASTCReader reader(new TracedMemory(trace, astcFile({blockWidth, blockHeight, blockDepth, 1, 1, 1}, 1)), {});
        texture.reset(reader.load(info));
        EXPECT_TRUE(texture);
        return format;
    }

    void expectFailure(TracedMemory* memory, const QStringList& expectedCalls = {})
    {
        const LogCapture log;
        EXPECT_EQ(callsOf(memory), expectedCalls);
        EXPECT_EQ(texture, nullptr);
        EXPECT_EQ(log.messages(QtWarningMsg), QStringList(QStringLiteral("Texture a/sky.astc failed to load.")));
        EXPECT_EQ(log.texts().size(), 1);
        EXPECT_EQ(Texture::NumAlive(), aliveBefore);
    }
};

} // namespace

// ---- the calls -----------------------------------------------------------------------------------------------------

TEST_F(ASTCReaderDriverTest, TheCallsOfALoad)
{
    const LogCapture log;
    const QStringList calls = callsOf({12, 12, 1, 13, 14, 1}, 4);
    ASSERT_EQ(trace.gets, (QList<std::pair<quint64, quint64>>{{16, 64}}));
    EXPECT_EQ(calls, uploadCalls(0x93BD, 13, 14, 64, trace.given[0]));
    ASSERT_TRUE(texture);
    EXPECT_EQ(log.texts(), QStringList());
    EXPECT_EQ(texture->textureID(), 1u);
    EXPECT_EQ(texture->target(), GLenum(GL_TEXTURE_2D));
    EXPECT_EQ(Access::recorded(*texture), kNothing);
    EXPECT_EQ(texture->parent(), nullptr);
    EXPECT_TRUE(texture->isManaged());
    EXPECT_FALSE(texture->isBound());
}

TEST_F(ASTCReaderDriverTest, TheDataIsReleasedBehindTheUnbind)
{
    bool wasFree = false;
    trace.whenReleased = [&] { wasFree = Texture::isTextureUnitFree(3); };
    callsOf({4, 4, 1, 4, 4, 1}, 1);
    EXPECT_EQ(trace.released, trace.given);
    EXPECT_EQ(trace.released.size(), 1);
    EXPECT_TRUE(wasFree);
}

TEST_F(ASTCReaderDriverTest, OpenGLIsNotAskedHowItWent)
{
    driver.pushError(GL_INVALID_ENUM);
    const LogCapture log;
    callsOf({4, 4, 1, 4, 4, 1}, 1);
    EXPECT_TRUE(texture);
    EXPECT_EQ(log.texts(), QStringList());
    EXPECT_EQ(glGetError(), GLenum(GL_INVALID_ENUM)) << "it is the caller's";
}

TEST_F(ASTCReaderDriverTest, ARangeOtherThanTheDefaultIsMappedAfterTheUpload)
{
    const auto forget = qScopeGuard([] { OpenGLDeviceContext::resetContext(); });
    OpenGLDeviceContext::resetContext();
    TextureFileInfo info;
    info.highValue = 0.5f;
    info.remapColorRange = false; // asked of plain images alone
    const QStringList calls = callsOf({4, 4, 1, 4, 4, 1}, 1, info);
    ASSERT_TRUE(texture);
    ASSERT_EQ(trace.given.size(), 1);
    const QStringList upload = uploadCalls(0x93B0, 4, 4, 16, trace.given[0]);
    EXPECT_EQ(calls.mid(0, upload.size()), upload);
    EXPECT_EQ(calls.filter(kGen).size(), 2) << "the result is not the texture that was uploaded";
    EXPECT_EQ(calls.filter(kDelete).size(), 1);
    EXPECT_EQ(calls.filter(QStringLiteral("glLinkProgram")).size(), 1);
}

// ---- formats -------------------------------------------------------------------------------------------------------

TEST_F(ASTCReaderDriverTest, EveryBlockSizeHasItsFormat)
{
    for (const AstcFormat& format : kAstcFormats)
        EXPECT_EQ(formatOf(format.width, format.height, false), format.linear) << format.width << 'x' << format.height;
}

TEST_F(ASTCReaderDriverTest, SrgbFormatsAre32Above)
{
    for (const AstcFormat& format : kAstcFormats)
        EXPECT_EQ(formatOf(format.width, format.height, true), format.linear + 0x20)
            << format.width << 'x' << format.height;
}

TEST_F(ASTCReaderDriverTest, FiveByFourHasAFormatAndFourByFiveHasNone)
{
    EXPECT_EQ(formatOf(5, 4, false), 0x93B1u);
    EXPECT_EQ(formatOf(4, 5, false), 0u);
    EXPECT_EQ(formatOf(4, 5, true), 0u);
}

TEST_F(ASTCReaderDriverTest, AllOtherPairsHaveNone)
{
    for (int width = 1; width <= 13; ++width)
        for (int height = 1; height <= 13; ++height)
            EXPECT_EQ(formatOf(width, height, false), astcFormatOf(width, height)) << width << 'x' << height;
    EXPECT_EQ(formatOf(255, 255, true), 0u);
}

TEST_F(ASTCReaderDriverTest, TheDepthOfABlockIsNotLookedAt)
{
    EXPECT_EQ(formatOf(4, 4, false, 4), 0x93B0u);
    EXPECT_EQ(formatOf(3, 3, false, 3), 0u);
}

TEST_F(ASTCReaderDriverTest, AVolumeIsUploadedAsAPictureWithAllItsBlocks)
{
    const QStringList calls = callsOf({4, 4, 4, 8, 4, 8}, 4);
    ASSERT_EQ(trace.given.size(), 1);
    EXPECT_EQ(calls, uploadCalls(0x93B0, 8, 4, 64, trace.given[0]));
    EXPECT_TRUE(texture);
}

TEST_F(ASTCReaderDriverTest, AnImageWithoutTexelsIsLeftToTheDriver)
{
    EXPECT_EQ(callsOf({4, 4, 1, 0, 4, 1}, 0), uploadCalls(0x93B0, 0, 4, 0, nullptr));
    EXPECT_TRUE(texture);
}

// ---- what cannot be loaded -----------------------------------------------------------------------------------------

TEST_F(ASTCReaderDriverTest, AReaderThatIsNotValidAndLoadedAllTheSameIsLeftToTheDriver)
{
    // A block too many, a block side of 0, another magic.
    QByteArray foreign = astcFile({4, 4, 1, 4, 4, 1}, 1);
    foreign[0] = 0;
    const struct
    {
        QByteArray file;
        unsigned format;
        int bytes;
    } rows[] = {{astcFile({4, 4, 1, 4, 4, 1}, 2), 0x93B0, 32},
                {astcFile({4, 4, 0, 4, 4, 1}, 1), 0x93B0, 16},
                {astcFile({0, 4, 1, 4, 4, 1}, 1), 0, 16},
                {foreign, 0x93B0, 16}};
    const LogCapture log;
    GLuint name = 0;
    for (const auto& row : rows)
    {
        QStringList calls = callsOf(new TracedMemory(trace, row.file));
        ASSERT_EQ(trace.given.size(), 1);
        QStringList expected = uploadCalls(row.format, 4, 4, row.bytes, trace.given[0]);
        expected[2] = bindName(++name);
        EXPECT_EQ(calls, expected);
        EXPECT_TRUE(texture);
    }
    EXPECT_EQ(log.texts(), QStringList());
}

TEST_F(ASTCReaderDriverTest, AReaderWithoutAHeader)
{
    expectFailure(new TracedMemory(trace, astcFile({4, 4, 1, 4, 4, 1}, 1).left(15)));
    expectFailure(new TracedMemory(trace, {}));
    const LogCapture log;
    ASTCReader reader(nullptr, QStringLiteral("none"));
    EXPECT_EQ(reader.load({}), nullptr);
    EXPECT_EQ(log.messages(QtWarningMsg), QStringList(QStringLiteral("Texture none failed to load.")));
}

TEST_F(ASTCReaderDriverTest, BlocksThatCannotBeHad)
{
    const QByteArray file = astcFile({4, 4, 1, 4, 4, 1}, 1);
    expectFailure(new TracedMemory(trace, file, quint64(file.size()), 16));
}

TEST_F(ASTCReaderDriverTest, MoreBytesThanOpenGLCanBeTold)
{
    // 2^28 blocks: 4 GiB.
    const quint64 claimed = ((quint64(1) << 28) + 1) * 16;
    const QByteArray header = astcFile({4, 4, 1, 65536, 65536, 1}, 0);
    expectFailure(new TracedMemory(trace, header, claimed, claimed));
    EXPECT_EQ(trace.gets.size(), 0) << "they are not even asked for";
}

TEST_F(ASTCReaderDriverTest, WithoutAFreeUnitThereIsNoTexture)
{
    std::vector<std::unique_ptr<Texture>> bound;
    for (int i = 0; i < kUnits; ++i)
    {
        bound.push_back(newTexture());
        ASSERT_TRUE(bound.back()->bind());
    }
    const LogCapture log;
    EXPECT_EQ(callsOf({4, 4, 1, 4, 4, 1}, 1), QStringList({kGen, kDelete}));
    EXPECT_EQ(texture, nullptr);
    EXPECT_EQ(trace.released, trace.given) << "the data is let go all the same";
    EXPECT_EQ(log.messages(), QStringList({QStringLiteral("There is no available texture units"),
                                           QStringLiteral("Texture a/sky.astc failed to load.")}));
    for (const auto& other : bound)
        EXPECT_TRUE(other->unbind());
}

// ---- the switch ----------------------------------------------------------------------------------------------------

TEST_F(ASTCReaderDriverTest, TheWarningDoesNotHangOnTheSwitch)
{
    const LogCapture log;
    callsOf(new TracedMemory(trace, {}));
    EXPECT_FALSE(texture);
    const QStringList all = {QStringLiteral("Texture a/sky.astc failed to load.")};
    EXPECT_EQ(log.texts(QtWarningMsg), all);
}

TEST_F(ASTCReaderDriverTest, TheWarningIsSaidWithLoggingOffToo)
{
    EXPECT_TRUE(passesWithLoggingOff("ASTCReaderDriverTest.TheWarningDoesNotHangOnTheSwitch"));
}

} // namespace Harrow::Vrk::Test
