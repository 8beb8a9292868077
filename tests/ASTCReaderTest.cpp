// SPDX-License-Identifier: MIT
//
// ASTC files without a driver: what is claimed, and which sizes of files fit which headers.
#include "ASTCReader.h"

#include "ASTCRecogniser.h"
#include "ASTCTestTools.h"
#include "TextureReaderTestTools.h"
#include "support/LogCapture.h"

#include <QString>
#include <QStringList>

#include <gtest/gtest.h>

#include <memory>

namespace Harrow::Vrk::Test
{
namespace
{

bool isValid(const QByteArray& file)
{
    MemoryUse trace;
    return ASTCReader(new TracedMemory(trace, file), QString()).valid();
}

/// Whether a header takes exactly this number of blocks, and neither one less nor one more, nor a byte.
void expectBlocks(const AstcHeader& header, int blocks)
{
    const QByteArray file = astcFile(header, blocks);
    EXPECT_TRUE(isValid(file)) << blocks;
    EXPECT_FALSE(isValid(file + '\0'));
    EXPECT_FALSE(isValid(file.chopped(1)));
    EXPECT_FALSE(isValid(astcFile(header, blocks + 1)));
    if (blocks > 0)
    {
        EXPECT_FALSE(isValid(astcFile(header, blocks - 1)));
    }
}

} // namespace

// ---- the recogniser ------------------------------------------------------------------------------------------------

TEST(ASTCRecogniserTest, ClaimsWhatBeginsWithTheMagicAndLetsGoOfTheBytes)
{
    MemoryUse trace;
    const std::unique_ptr<TextureLoader> loader(
        ASTCRecogniser().recognise(new TracedMemory(trace, astcFile({4, 4, 1, 4, 4, 1}, 1)), QStringLiteral("name")));
    ASSERT_TRUE(loader);
    EXPECT_NE(dynamic_cast<ASTCReader*>(loader.get()), nullptr);
    EXPECT_TRUE(loader->valid());
    ASSERT_EQ(trace.gets.size(), 2);
    EXPECT_EQ(trace.gets[0], std::make_pair(quint64(0), quint64(4)));
    EXPECT_EQ(trace.gets[1], std::make_pair(quint64(0), quint64(16)));
    EXPECT_EQ(trace.released, QList<void*>({trace.given[0]}));
}

TEST(ASTCRecogniserTest, TheMagicIsLittleEndian)
{
    MemoryUse trace;
    TracedMemory foreign(trace, bytesOf({0x5C, 0xA1, 0xAB, 0x13}) + QByteArray(28, '\0'));
    EXPECT_EQ(ASTCRecogniser().recognise(&foreign, QString()), nullptr);
    const std::unique_ptr<TextureLoader> loader(
        ASTCRecogniser().recognise(new TracedMemory(trace, bytesOf({0x13, 0xAB, 0xA1, 0x5C})), QString()));
    ASSERT_TRUE(loader) << "four bytes are enough to be claimed";
    EXPECT_FALSE(loader->valid());
}

TEST(ASTCRecogniserTest, LeavesWhatItDoesNotClaimToTheCaller)
{
    const QByteArray good = astcFile({4, 4, 1, 4, 4, 1}, 1);
    for (int byte = 0; byte < 4; ++byte)
    {
        QByteArray bytes = good;
        bytes[byte] = static_cast<char>(bytes[byte] + 1);
        MemoryUse trace;
        TracedMemory memory(trace, bytes);
        EXPECT_EQ(ASTCRecogniser().recognise(&memory, QString()), nullptr) << byte;
        EXPECT_EQ(trace.alive, 1);
        EXPECT_EQ(trace.released, trace.given);
    }
}

TEST(ASTCRecogniserTest, FewerThanFourBytesAreNotClaimed)
{
    for (const int size : {0, 1, 3})
    {
        MemoryUse trace;
        TracedMemory memory(trace, astcFile({4, 4, 1, 4, 4, 1}, 1).left(size));
        EXPECT_EQ(ASTCRecogniser().recognise(&memory, QString()), nullptr);
        EXPECT_EQ(trace.given, QList<void*>({nullptr}));
    }
}

TEST(ASTCRecogniserTest, NullMemoryIsReported)
{
    const LogCapture log;
    EXPECT_EQ(ASTCRecogniser().recognise(nullptr, QString()), nullptr);
    EXPECT_EQ(log.messages(QtCriticalMsg),
              QStringList(assertionLine(QStringLiteral("nullptr != memory"),
                                        QStringLiteral("Memory is NULL on ASTCRecogniser::recognise"))));
}

// ---- the reader ----------------------------------------------------------------------------------------------------

TEST(ASTCReaderTest, AnswersAsACompressed2DImage)
{
    MemoryUse trace;
    const ASTCReader reader(new TracedMemory(trace, astcFile({8, 8, 1, 0x0102, 3, 1}, 33)), QString());
    EXPECT_TRUE(reader.valid());
    EXPECT_TRUE(reader.isCompressed());
    EXPECT_EQ(reader.width(), 258u);
    EXPECT_EQ(reader.height(), 3u);
    expectOnePlain2DImage(reader);
}

TEST(ASTCReaderTest, SizesHave24BitsLowestByteFirst)
{
    MemoryUse trace;
    const ASTCReader reader(new TracedMemory(trace, astcFile({4, 4, 1, 0x010203, 0xFFEEDD, 1}, 0)), QString());
    EXPECT_EQ(reader.width(), 0x010203u);
    EXPECT_EQ(reader.height(), 0xFFEEDDu);
}

TEST(ASTCReaderTest, DeletesItsMemory)
{
    MemoryUse trace;
    {
        const ASTCReader valid(new TracedMemory(trace, astcFile({4, 4, 1, 4, 4, 1}, 1)), QString());
        const ASTCReader invalid(new TracedMemory(trace, "nothing"), QString());
        EXPECT_EQ(trace.alive, 2);
        EXPECT_FALSE(invalid.valid());
    }
    EXPECT_EQ(trace.alive, 0);
}

TEST(ASTCReaderTest, NullMemoryIsReportedAndInvalid)
{
    const LogCapture log;
    const ASTCReader reader(nullptr, QString());
    EXPECT_FALSE(reader.valid());
    EXPECT_TRUE(reader.isCompressed());
    EXPECT_EQ(reader.width(), 0u);
    EXPECT_EQ(reader.height(), 0u);
    EXPECT_EQ(log.messages(QtCriticalMsg), QStringList(assertionLine(QStringLiteral("nullptr != memory"),
                                                                     QStringLiteral("Memory is NULL on ASTCReader"))));
}

TEST(ASTCReaderTest, AHeaderThatIsCutShortIsInvalid)
{
    const QByteArray file = astcFile({4, 4, 1, 0, 0, 0}, 0);
    for (qsizetype length = 0; length < 16; ++length)
        EXPECT_FALSE(isValid(file.left(length))) << length;
    EXPECT_TRUE(isValid(file));
}

TEST(ASTCReaderTest, AnotherMagicIsInvalidAndStopsThere)
{
    QByteArray file = astcFile({0, 0, 0, 4, 4, 1}, 1);
    file[0] = 0x14;
    const LogCapture log;
    EXPECT_FALSE(isValid(file));
    EXPECT_EQ(log.texts(), QStringList());
}

// ---- the size of the file ------------------------------------------------------------------------------------------

TEST(ASTCReaderTest, ThirteenByThirteenTexelsInBlocksOfTwelveNeedFourBlocks)
{
    EXPECT_EQ(astcFile({12, 12, 1, 13, 13, 1}, 4).size(), 80);
    expectBlocks({12, 12, 1, 13, 13, 1}, 4);
}

TEST(ASTCReaderTest, BlocksAreRoundedUpInEachDirection)
{
    expectBlocks({12, 12, 1, 12, 12, 1}, 1);
    expectBlocks({12, 12, 1, 1, 1, 1}, 1);
    expectBlocks({5, 4, 1, 11, 9, 1}, 9);
    expectBlocks({12, 10, 1, 63, 27, 1}, 18);
    expectBlocks({3, 3, 3, 27, 27, 3}, 81);
    expectBlocks({4, 4, 2, 4, 4, 5}, 3);
}

TEST(ASTCReaderTest, ATrailingByteIsInvalid)
{
    EXPECT_FALSE(isValid(astcFile({4, 4, 1, 4, 4, 1}, 1) + '\0'));
}

TEST(ASTCReaderTest, AnyBlockSizeIsValidThatFitsTheFile)
{
    for (int width = 1; width <= 255; width += 2)
        EXPECT_TRUE(isValid(astcFile({width, 256 - width, 1, 255, 255, 1},
                                     ((255 + width - 1) / width) * ((255 + 255 - width) / (256 - width)))))
            << width;
}

TEST(ASTCReaderTest, BlocksWithoutASideAreInvalid)
{
    EXPECT_FALSE(isValid(astcFile({0, 4, 1, 4, 4, 1}, 1)));
    EXPECT_FALSE(isValid(astcFile({4, 0, 1, 4, 4, 1}, 1)));
    EXPECT_FALSE(isValid(astcFile({4, 4, 0, 4, 4, 1}, 1)));
    EXPECT_FALSE(isValid(astcFile({4, 4, 0, 4, 4, 0}, 0)));
    EXPECT_FALSE(isValid(astcFile({0, 0, 0, 0, 0, 0}, 0)));
}

TEST(ASTCReaderTest, AnImageWithoutASideHasNoBlocks)
{
    expectBlocks({4, 4, 1, 0, 4, 1}, 0);
    expectBlocks({4, 4, 1, 4, 0, 1}, 0);
    expectBlocks({4, 4, 1, 4, 4, 0}, 0);
}

TEST(ASTCReaderTest, CountsBeyond64BitsDoNotWrapAround)
{
    // 2^60 blocks, and 2^66: in 64 bits the bytes come to those of a header alone.
    for (const int side : {1 << 20, 1 << 22})
        for (const int blocks : {0, 1, 2})
            EXPECT_FALSE(isValid(astcFile({1, 1, 1, side, side, side}, blocks))) << side;
    EXPECT_FALSE(isValid(astcFile({1, 1, 1, 0xFFFFFF, 0xFFFFFF, 0xFFFFFF}, 1)));
}

} // namespace Harrow::Vrk::Test
