// SPDX-License-Identifier: MIT
//
// Who claims a file as KTX.
#include "KTXRecogniser.h"

#include "KTXTestTools.h"
#include "TextureIO.h"
#include "TextureIOTestTools.h"
#include "support/LogCapture.h"

#include <QTemporaryDir>

namespace Harrow::Vrk::Test
{

TEST(KTXRecogniserTest, AFileIsClaimedByItsFirstTwelveBytes)
{
    MemoryTrace trace;
    auto* const memory = new EdgeMemory(KTXFile().level(pattern(32)).bytes(), &trace);
    const std::unique_ptr<TextureLoader> loader(KTXRecogniser().recognise(memory, QStringLiteral("a.ktx")));
    ASSERT_TRUE(loader);
    EXPECT_NE(dynamic_cast<KTXReader*>(loader.get()), nullptr);
    EXPECT_TRUE(loader->valid());
    EXPECT_EQ(trace.calls, texts({"get(0, 12)", "release(0)", "get(0, 64)"}));
}

TEST(KTXRecogniserTest, TheLoaderTakesTheMemoryOver)
{
    MemoryTrace trace;
    std::unique_ptr<TextureLoader> loader(
        KTXRecogniser().recognise(new EdgeMemory(KTXFile().bytes(), &trace), QString()));
    EXPECT_EQ(trace.alive, 1);
    loader.reset();
    EXPECT_EQ(trace.alive, 0);
}

TEST(KTXRecogniserTest, AnyOtherByteOfTheIdentifierIsNotClaimed)
{
    for (int i = 0; i < 12; ++i)
    {
        KTXFile file;
        file.identifier[i] = char(file.identifier[i] ^ 1);
        MemoryTrace trace;
        EdgeMemory memory(file.bytes(), &trace);
        EXPECT_EQ(KTXRecogniser().recognise(&memory, QString()), nullptr) << i;
        EXPECT_EQ(trace.calls, texts({"get(0, 12)", "release(0)"})) << i;
        EXPECT_EQ(trace.held, 0);
        EXPECT_EQ(trace.alive, 1) << "it stays the caller's";
    }
}

TEST(KTXRecogniserTest, Version2IsNotClaimed)
{
    KTXFile file;
    file.identifier = QByteArray("\xABKTX 20\xBB\r\n\x1A\n", 12);
    EdgeMemory memory(file.bytes());
    EXPECT_EQ(KTXRecogniser().recognise(&memory, QString()), nullptr);
}

TEST(KTXRecogniserTest, LessThanTwelveBytesAreNotClaimed)
{
    for (const int count : {0, 1, 11})
    {
        MemoryTrace trace;
        EdgeMemory memory(kKTXMagic.left(count), &trace);
        EXPECT_EQ(KTXRecogniser().recognise(&memory, QString()), nullptr) << count;
        EXPECT_EQ(trace.calls, texts({"get(0, 12)"})) << count;
    }
}

TEST(KTXRecogniserTest, TheIdentifierAloneIsClaimedAndInvalid)
{
    const std::unique_ptr<TextureLoader> loader(KTXRecogniser().recognise(new EdgeMemory(kKTXMagic), QString()));
    ASSERT_TRUE(loader);
    EXPECT_FALSE(loader->valid());
}

TEST(KTXRecogniserTest, NullMemoryIsReported)
{
    const LogCapture log;
    EXPECT_EQ(KTXRecogniser().recognise(nullptr, QString()), nullptr);
    EXPECT_EQ(log.messages(), QStringList(assertionLine(QStringLiteral("nullptr != memory"),
                                                        QStringLiteral("Memory is NULL on KTXRecogniser::recognise"))));
}

TEST(KTXRecogniserTest, AFileWithoutTheSuffixIsFoundByItsContent)
{
    const EmptyRegistry registry;
    RegisterTextureRecogniser(new KTXRecogniser, QStringLiteral("ktx"));
    const QTemporaryDir folder;
    const QString path = writeFile(folder.filePath(QStringLiteral("a.png")), KTXFile().bytes());
    const std::unique_ptr<TextureLoader> loader(IdentifyTextureFromFile(path));
    EXPECT_NE(dynamic_cast<KTXReader*>(loader.get()), nullptr);
}

} // namespace Harrow::Vrk::Test
