// SPDX-License-Identifier: MIT
//
// Radiance pictures without a driver: what is claimed, and what the reader answers.
#include "HDRReader.h"

#include "HDRRecogniser.h"
#include "HDRTestTools.h"
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

const QByteArray kOnePixel = hdrFile("-Y 1 +X 1", plainRow({{200, 10, 20, 130}}));

} // namespace

// ---- the recogniser ------------------------------------------------------------------------------------------------

TEST(HDRRecogniserTest, ClaimsWhatBeginsWithTheMagicAndLetsGoOfTheBytes)
{
    MemoryUse trace;
    auto* const memory = new TracedMemory(trace, kOnePixel);
    const std::unique_ptr<TextureLoader> loader(HDRRecogniser().recognise(memory, QStringLiteral("name")));
    ASSERT_TRUE(loader);
    EXPECT_NE(dynamic_cast<HDRReader*>(loader.get()), nullptr);
    EXPECT_TRUE(loader->valid());
    ASSERT_GE(trace.gets.size(), 2);
    EXPECT_EQ(trace.gets[0], std::make_pair(quint64(0), quint64(11)));
    EXPECT_EQ(trace.gets[1], std::make_pair(quint64(0), memory->size()));
    ASSERT_FALSE(trace.released.isEmpty());
    EXPECT_EQ(trace.released[0], trace.given[0]);
}

TEST(HDRRecogniserTest, TheMagicAloneIsClaimedThoughNotValid)
{
    MemoryUse trace;
    const std::unique_ptr<TextureLoader> loader(
        HDRRecogniser().recognise(new TracedMemory(trace, "#?RADIANCE\n"), QString()));
    ASSERT_TRUE(loader);
    EXPECT_FALSE(loader->valid());
}

TEST(HDRRecogniserTest, LeavesWhatItDoesNotClaimToTheCaller)
{
    for (const QByteArray& bytes : {QByteArray("#?RADIANCE "), QByteArray("#?RGBE\nFORMAT=32-bit_rle_rgbe\n"),
                                    QByteArray("#?radiance\n"), QByteArray(11, '\0'), QByteArray(" #?RADIANCE\n")})
    {
        MemoryUse trace;
        {
            TracedMemory memory(trace, bytes);
            EXPECT_EQ(HDRRecogniser().recognise(&memory, QString()), nullptr) << bytes.toStdString();
            EXPECT_EQ(trace.alive, 1);
        }
        EXPECT_EQ(trace.released, trace.given);
    }
}

TEST(HDRRecogniserTest, FewerBytesThanTheMagicAreNotClaimed)
{
    for (const int size : {0, 1, 10})
    {
        MemoryUse trace;
        TracedMemory memory(trace, QByteArray("#?RADIANCE\n").left(size));
        EXPECT_EQ(HDRRecogniser().recognise(&memory, QString()), nullptr);
        EXPECT_EQ(trace.given, QList<void*>({nullptr}));
    }
}

TEST(HDRRecogniserTest, NullMemoryIsReported)
{
    const LogCapture log;
    EXPECT_EQ(HDRRecogniser().recognise(nullptr, QString()), nullptr);
    EXPECT_EQ(log.messages(QtCriticalMsg),
              QStringList(assertionLine(QStringLiteral("nullptr != memory"),
                                        QStringLiteral("Memory is NULL on HDRRecogniser::recognise"))));
}

// ---- the reader ----------------------------------------------------------------------------------------------------

TEST(HDRReaderTest, AnswersAsAPlain2DImage)
{
    MemoryUse trace;
    const HDRReader reader(new TracedMemory(trace, hdrFile("-Y 480 +X 640", {})), QString());
    EXPECT_TRUE(reader.valid());
    EXPECT_EQ(reader.width(), 640u);
    EXPECT_EQ(reader.height(), 480u);
    EXPECT_FALSE(reader.isCompressed());
    expectOnePlain2DImage(reader);
}

TEST(HDRReaderTest, DeletesItsMemory)
{
    MemoryUse trace;
    {
        const HDRReader valid(new TracedMemory(trace, kOnePixel), QString());
        const HDRReader invalid(new TracedMemory(trace, "nothing"), QString());
        EXPECT_EQ(trace.alive, 2);
        EXPECT_FALSE(invalid.valid());
    }
    EXPECT_EQ(trace.alive, 0);
}

TEST(HDRReaderTest, BytesThatCannotBeHadMakeItInvalid)
{
    MemoryUse trace;
    const QByteArray file = kOnePixel;
    const HDRReader reader(new TracedMemory(trace, file, quint64(file.size()), 11), QString());
    EXPECT_FALSE(reader.valid());
    const HDRReader empty(new TracedMemory(trace, {}), QString());
    EXPECT_FALSE(empty.valid());
}

TEST(HDRReaderTest, NullMemoryIsReportedAndInvalid)
{
    const LogCapture log;
    const HDRReader reader(nullptr, QString());
    EXPECT_FALSE(reader.valid());
    EXPECT_EQ(reader.width(), 0u);
    EXPECT_EQ(reader.height(), 0u);
    EXPECT_EQ(log.messages(QtCriticalMsg), QStringList(assertionLine(QStringLiteral("nullptr != memory"),
                                                                     QStringLiteral("Memory is NULL on HDRReader"))));
}

TEST(HDRReaderTest, ARefusedHeaderStillHasItsSizes)
{
    MemoryUse trace;
    for (const QByteArray& file : {hdrFile("-Y 480 +X 640", {}, "FORMAT=none\n"), hdrFile("-Y 480 +Y 640", {})})
    {
        const HDRReader reader(new TracedMemory(trace, file), QString());
        EXPECT_FALSE(reader.valid());
        EXPECT_EQ(reader.width(), 640u);
        EXPECT_EQ(reader.height(), 480u);
    }
}

TEST(HDRReaderTest, ConstructionSaysNothingOfABadHeader)
{
    MemoryUse trace;
    const LogCapture log;
    const HDRReader reader(new TracedMemory(trace, hdrFile("-Y 480 +Y 640", {})), QString());
    EXPECT_FALSE(reader.valid());
    EXPECT_EQ(log.texts(), QStringList());
}

} // namespace Harrow::Vrk::Test
