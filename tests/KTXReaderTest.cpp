// SPDX-License-Identifier: MIT
//
// KTX files without OpenGL: what their header and metadata say, and that nothing is read behind their end.
#include "KTXReader.h"

#include "KTXTestTools.h"
#include "TextureIOTestTools.h"
#include "support/LogCapture.h"

#include <VrkCore/MemoryMappedFile.h>

#include <QTemporaryDir>

#include <random>

namespace Harrow::Vrk::Test
{
namespace
{

/// A list of keys, or of values, as text.
QStringList keysOf(const KTXReader& reader)
{
    QStringList keys;
    for (unsigned i = 0; i < reader.numMetadataEntries(); ++i)
        keys.append(reader.key(i));
    return keys;
}

QStringList valuesOf(const KTXReader& reader)
{
    QStringList values;
    for (unsigned i = 0; i < reader.numMetadataEntries(); ++i)
        values.append(reader.value(i));
    return values;
}

KTXFile withEntry(const QByteArray& keyAndValue)
{
    KTXFile file;
    file.entry(keyAndValue).level(pattern(32));
    return file;
}

} // namespace

// ---- the answers ---------------------------------------------------------------------------------------------------

TEST(KTXReaderTest, TheHeaderIsReadByThePublishedLayout)
{
    KTXFile file;
    file.size(0x11223344, 0x55667788, 0x99AABBCC);
    file.arrayElements = 0xDDEEFF01;
    file.faces = 0x02030405;
    file.levels = 0x06070809;
    const QByteArray bytes = file.bytes();
    ASSERT_EQ(bytes.size(), 64);
    const auto reader = newReader(bytes);
    EXPECT_TRUE(reader->valid());
    EXPECT_EQ(reader->width(), 0x11223344u);
    EXPECT_EQ(reader->height(), 0x55667788u);
    EXPECT_EQ(reader->depth(), 0x99AABBCCu);
    EXPECT_EQ(reader->arraySize(), 0xDDEEFF01u);
    EXPECT_EQ(reader->cubeFaces(), 0x02030405u);
    EXPECT_EQ(reader->mipmapLevels(), 0x06070809u);
    EXPECT_EQ(reader->numMetadataEntries(), 0u);
}

TEST(KTXReaderTest, AnyAddressWillDo)
{
    for (int shift = 0; shift < 4; ++shift)
    {
        // The end is at a page's end, so the start is where the count of bytes puts it.
        const auto reader = newReader(KTXFile().bytes() + QByteArray(shift, 'x'));
        EXPECT_EQ(reader->width(), 4u) << shift;
    }
}

TEST(KTXReaderTest, CompressedIsWhatHasNoType)
{
    KTXFile file;
    for (const quint32 type : {0u, 1u, 0x1401u})
    {
        file.glType = type;
        EXPECT_EQ(newReader(file)->isCompressed(), type == 0) << type;
    }
    file.glType = 0x1401;
    file.glFormat = 0;
    EXPECT_FALSE(newReader(file)->isCompressed());
}

TEST(KTXReaderTest, AnArrayIsWhatHasElements)
{
    KTXFile file;
    for (const quint32 count : {0u, 1u, 2u, 0x80000000u})
    {
        file.arrayElements = count;
        EXPECT_EQ(newReader(file)->isArrayTexture(), count > 0) << count;
    }
}

TEST(KTXReaderTest, ACubeMapIsWhatHasSixFaces)
{
    KTXFile file;
    for (const quint32 faces : {0u, 1u, 5u, 6u, 7u, 12u})
    {
        file.faces = faces;
        EXPECT_EQ(newReader(file)->isCubeMapTexture(), faces == 6) << faces;
    }
}

TEST(KTXReaderTest, TheDimensionsFollowFromTheSizesThatAreNot0)
{
    const struct
    {
        quint32 width, height, depth;
        bool is1D, is2D, is3D;
    } rows[] = {
        {0, 0, 0, false, false, false}, {7, 0, 0, true, false, false},  {7, 5, 0, false, true, false},
        {7, 5, 3, false, false, true},  {0, 5, 0, false, false, false}, {0, 0, 3, false, false, false},
        {0, 5, 3, false, false, false}, {7, 0, 3, false, false, false}, {16, 16, 1, false, false, true},
    };
    for (const auto& row : rows)
    {
        for (const quint32 faces : {1u, 6u})
        {
            KTXFile file;
            file.size(row.width, row.height, row.depth);
            file.faces = faces;
            const auto reader = newReader(file);
            const auto what = testing::PrintToString(std::array{row.width, row.height, row.depth, faces});
            EXPECT_EQ(reader->is1DTexture(), row.is1D) << what;
            EXPECT_EQ(reader->is2DTexture(), row.is2D) << what;
            EXPECT_EQ(reader->is3DTexture(), row.is3D) << what;
        }
    }
}

TEST(KTXReaderTest, OnlyOneLevelIsNoMipmaps)
{
    KTXFile file;
    for (const quint32 levels : {0u, 1u, 2u, 9u})
    {
        file.levels = levels;
        EXPECT_EQ(newReader(file)->hasMipMaps(), levels != 1) << levels;
    }
}

TEST(KTXReaderTest, TheReaderIsNoPlain2DImage)
{
    EXPECT_FALSE((std::is_base_of_v<TextureLoader2DHelper, KTXReader>));
    EXPECT_TRUE((std::is_base_of_v<TextureLoader, KTXReader>));
}

TEST(KTXReaderTest, TheReaderOwnsItsMemory)
{
    MemoryTrace trace;
    newReader(KTXFile(), &trace).reset();
    EXPECT_EQ(trace.alive, 0);
}

// ---- valid ---------------------------------------------------------------------------------------------------------

TEST(KTXReaderTest, AWrongIdentifierIsInvalidAndNothingElseIsLookedAt)
{
    KTXFile file = withEntry("k\0v");
    file.identifier[5] = '2';
    MemoryTrace trace;
    const auto reader = newReader(file, &trace);
    EXPECT_FALSE(reader->valid());
    EXPECT_EQ(trace.calls, texts({"get(0, 64)"}));
}

TEST(KTXReaderTest, AWrongIdentifierInForeignOrderIsNotSwapped)
{
    KTXFile file;
    file.identifier[5] = '2';
    const auto reader = newReader(file.bytes(true));
    EXPECT_FALSE(reader->valid());
    EXPECT_EQ(reader->width(), 0x04000000u);
}

TEST(KTXReaderTest, WithoutMetadataAFileIsValidWithoutAnyWalk)
{
    MemoryTrace trace;
    const auto reader = newReader(KTXFile().level(pattern(32)), &trace);
    EXPECT_TRUE(reader->valid());
    EXPECT_EQ(reader->numMetadataEntries(), 0u);
    EXPECT_EQ(trace.calls, texts({"get(0, 64)"}));
}

TEST(KTXReaderTest, MetadataIsTakenFromBehindTheHeader)
{
    MemoryTrace trace;
    const auto reader = newReader(withEntry(QByteArray("ab\0cde\0", 7)), &trace); // 11 of 12 bytes
    EXPECT_TRUE(reader->valid());
    EXPECT_EQ(trace.calls.mid(0, 2), texts({"get(0, 64)", "get(64, 12)"}));
    EXPECT_EQ(reader->rawKey(0), reinterpret_cast<const char*>(trace.start) + 68);
}

TEST(KTXReaderTest, MetadataThatIsWalkedExactlyToItsEndIsInvalid)
{
    for (const int entries : {1, 2, 3})
    {
        KTXFile file;
        for (int i = 0; i < entries; ++i)
            file.entry(QByteArray("key\0val\0", 8));
        file.level(pattern(32));
        const auto reader = newReader(file);
        EXPECT_FALSE(reader->valid()) << entries;
        EXPECT_EQ(reader->numMetadataEntries(), quint32(entries));
    }
}

TEST(KTXReaderTest, MetadataThatIsWalkedBeyondItsEndIsValid)
{
    // Behind the first entry's three bytes of padding and the low byte of the next size stand 0x0D000000 bytes.
    KTXFile file;
    file.entry(QByteArray("k1\0v1\0..", 5)).entry(QByteArray("key2\0value2\0.", 13)).level(pattern(32));
    const auto reader = newReader(file);
    EXPECT_TRUE(reader->valid());
    EXPECT_EQ(reader->numMetadataEntries(), 2u);
}

TEST(KTXReaderTest, PaddingIsNotSteppedOver)
{
    // Two bytes of padding, and the low half of the next entry's size: 0x000A0000, which ends the walk.
    KTXFile file;
    file.entry(QByteArray("ab\0xy\0", 6)).entry(QByteArray("cd\0efghij\0", 10)).level(pattern(32));
    MemoryTrace trace;
    const auto reader = newReader(file, &trace);
    EXPECT_TRUE(reader->valid());
    ASSERT_EQ(reader->numMetadataEntries(), 2u);
    EXPECT_EQ(reader->rawKey(0), reinterpret_cast<const char*>(trace.start) + 68);
    EXPECT_EQ(reader->rawKey(1), reinterpret_cast<const char*>(trace.start) + 64 + 10 + 4);
    EXPECT_EQ(keysOf(*reader), texts({"ab", ""}));
}

TEST(KTXReaderTest, TheLastEntrysPaddingBeginsOneMoreEntryBehindTheMetadata)
{
    for (int padding = 1; padding < 4; ++padding)
    {
        KTXFile file;
        file.entry(QByteArray("key\0valu", 8 - padding));
        file.body = QByteArray("abcd\0efgh", 9);
        MemoryTrace trace;
        const auto reader = newReader(file, &trace);
        EXPECT_TRUE(reader->valid()) << padding;
        ASSERT_EQ(reader->numMetadataEntries(), 2u) << padding;
        // The size word has the padding and the first bytes of the body.
        const char* const body = reinterpret_cast<const char*>(trace.start) + 64 + 12;
        EXPECT_EQ(reader->rawKey(1), body + 4 - padding);
        EXPECT_EQ(keysOf(*reader), QStringList({text("key"), text("abcd").mid(4 - padding)})) << padding;
        EXPECT_EQ(reader->rawValue(1), body + 4) << "the zero byte";
    }
}

TEST(KTXReaderTest, TheLastEntrysPaddingIsNoEntryWhereTheFileEndsBeforeItsSize)
{
    for (int padding = 1; padding < 4; ++padding)
    {
        for (int behind = 0; behind < 4 - padding; ++behind)
        {
            KTXFile file;
            file.entry(QByteArray("key\0valu", 8 - padding));
            file.body = QByteArray("abc").left(behind);
            const auto reader = newReader(file);
            EXPECT_TRUE(reader->valid());
            EXPECT_EQ(keysOf(*reader), texts({"key"})) << padding << ' ' << behind;
        }
    }
}

TEST(KTXReaderTest, MemoryThatGivesEachPieceByItselfIsNotReadBehindThePiece)
{
    const QByteArray last = withEntry(QByteArray("key\0val", 7)).bytes();
    KTXFile file;
    file.metadata = word(23) + "abcd";
    file.body = "efgh";
    int alive = 0;
    {
        const KTXReader padded(new PiecewiseMemory(last, alive), QString());
        EXPECT_TRUE(padded.valid());
        EXPECT_EQ(keysOf(padded), texts({"key"}));
        const KTXReader cut(new PiecewiseMemory(file.bytes(), alive), QString());
        EXPECT_EQ(keysOf(cut), texts({"abcd"}));
        EXPECT_EQ(cut.rawKey(0), nullptr);
        EXPECT_EQ(alive, 4) << "headers and metadata; what was not used is given back";
    }
    EXPECT_EQ(alive, 0);
}

TEST(KTXReaderTest, EntriesOfNoSizeAreEntries)
{
    KTXFile file;
    file.metadata = word(0) + word(0) + word(4) + QByteArray("\0\0\0", 3);
    file.level(pattern(32));
    const auto reader = newReader(file);
    EXPECT_TRUE(reader->valid());
    EXPECT_EQ(reader->numMetadataEntries(), 3u);
}

// ---- keys and values -----------------------------------------------------------------------------------------------

TEST(KTXReaderTest, AWellFormedEntryReadsAsItsKeyAndAnEmptyValue)
{
    const auto reader = newReader(withEntry(QByteArray("KTXorientation\0S=r,T=d\0", 23)));
    ASSERT_EQ(reader->numMetadataEntries(), 2u) << "the second begins in its padding";
    EXPECT_STREQ(reader->rawKey(0), "KTXorientation");
    EXPECT_EQ(reader->rawValue(0), reader->rawKey(0) + 14) << "the key's terminating zero byte";
    EXPECT_EQ(reader->key(0), text("KTXorientation"));
    EXPECT_EQ(reader->value(0), QString());
    EXPECT_STREQ(reader->rawValue(0) + 1, "S=r,T=d");
}

TEST(KTXReaderTest, KeysAreUTF8)
{
    const auto reader = newReader(withEntry(QByteArray("\xC3\xA9t\xC3\xA9\0", 6)));
    EXPECT_EQ(reader->key(0), QString::fromUtf8("\xC3\xA9t\xC3\xA9"));
}

TEST(KTXReaderTest, AnEntryWithoutAZeroByteHasItsLastByteAsValue)
{
    const auto reader = newReader(withEntry("abcde")); // the padding ends it
    EXPECT_EQ(reader->rawValue(0), reader->rawKey(0) + 4);
    EXPECT_EQ(reader->value(0), text("e"));
}

TEST(KTXReaderTest, AnEntryOfNoSizeHasItsStartAsValue)
{
    KTXFile file;
    file.metadata = word(0) + word(5) + QByteArray("ab\0c\0", 5);
    file.metadata.append("\0\0\0", 3);
    const auto reader = newReader(file);
    ASSERT_EQ(reader->numMetadataEntries(), 2u);
    EXPECT_EQ(reader->rawValue(0), reader->rawKey(0));
    EXPECT_EQ(reader->value(0), text("\x05"));
    EXPECT_EQ(valuesOf(*reader).at(1), QString());
}

TEST(KTXReaderTest, BehindTheLastEntryThereIsNothing)
{
    const auto reader = newReader(withEntry(QByteArray("key\0val", 7)));
    for (const unsigned index : {2u, 3u, 0xFFFFFFFFu})
    {
        EXPECT_EQ(reader->rawKey(index), nullptr);
        EXPECT_EQ(reader->rawValue(index), nullptr);
        EXPECT_EQ(reader->key(index), QString());
        EXPECT_EQ(reader->value(index), QString());
    }
}

// ---- byte order ----------------------------------------------------------------------------------------------------

TEST(KTXReaderTest, AForeignHeaderIsSwappedInPlaceFieldByField)
{
    KTXFile file;
    file.glType = 0x01020304;
    file.glTypeSize = 2;
    file.glFormat = 3;
    file.glInternalFormat = 4;
    file.glBaseInternalFormat = 5;
    file.size(6, 0x0F07, 8);
    file.arrayElements = 9;
    file.faces = 6;
    file.levels = 11;
    file.metadataBytes = 0;
    MemoryTrace trace;
    const auto reader = newReader(file.bytes(true), &trace);
    EXPECT_TRUE(reader->valid());
    EXPECT_EQ(QByteArray(reinterpret_cast<const char*>(trace.start), 64), file.bytes()) << "all 13 fields, in memory";
    EXPECT_EQ(reader->width(), 6u);
    EXPECT_EQ(reader->height(), 0x0F07u);
    EXPECT_TRUE(reader->is3DTexture());
    EXPECT_EQ(reader->arraySize(), 9u);
    EXPECT_EQ(reader->mipmapLevels(), 11u);
}

TEST(KTXReaderTest, AForeignHeaderLosesTheHighBitsOfItsBytes)
{
    KTXFile file;
    file.size(64, 0x1234, 0); // 0x40 and 0x12 0x34
    file.levels = 17;
    const auto reader = newReader(file.bytes(true));
    EXPECT_TRUE(reader->valid());
    EXPECT_EQ(reader->width(), 0u);
    EXPECT_EQ(reader->height(), 0x0204u);
    EXPECT_EQ(reader->mipmapLevels(), 1u);
}

TEST(KTXReaderTest, OnlyTheTwoOrdersAreRead)
{
    // Read as stored, and the first two once more as a file of the other order would store them.
    for (const quint32 marker : {0u, 1u, 0x04030200u, 0x03040102u, 0x02010403u, 0xFFFFFFFFu, 0x01020305u})
    {
        KTXFile file;
        file.endianness = marker;
        EXPECT_FALSE(newReader(file)->valid()) << std::hex << marker;
    }
    KTXFile native;
    EXPECT_TRUE(newReader(native)->valid());
    native.endianness = kForeign;
    EXPECT_TRUE(newReader(native)->valid());
}

TEST(KTXReaderTest, AMarkerThatOnlySwapsToTheRightOneIsRead)
{
    KTXFile file;
    file.endianness = 0xF1F2F3F4; // its high bits are lost
    EXPECT_TRUE(newReader(file)->valid());
}

TEST(KTXReaderTest, TheSizesOfForeignMetadataStayAsTheyAre)
{
    KTXFile file;
    file.metadata = word(8, true) + QByteArray("key\0v..", 8); // 0x08000000 for this machine
    const auto reader = newReader(file.bytes(true));
    EXPECT_TRUE(reader->valid()) << "the walk goes beyond the end";
    EXPECT_EQ(reader->numMetadataEntries(), 1u);
    EXPECT_EQ(reader->key(0), text("key"));

    file.metadata = word(8) + QByteArray("key\0v..", 8);
    EXPECT_FALSE(newReader(file.bytes(true))->valid()) << "the walk ends exactly";
}

TEST(KTXReaderTest, AForeignFileThatIsReadOnlyIsSwappedInItsMappingAlone)
{
    const QTemporaryDir folder;
    KTXFile contents;
    contents.size(3, 2);
    const QByteArray bytes = contents.bytes(true);
    const QString path = writeFile(folder.filePath(QStringLiteral("a.ktx")), bytes);
    ASSERT_TRUE(QFile::setPermissions(path, QFileDevice::ReadOwner));
    {
        const KTXReader reader(new MemoryMappedFile(path), path);
        EXPECT_TRUE(reader.valid());
        EXPECT_EQ(reader.width(), 3u);
    }
    EXPECT_EQ(readFile(path), bytes);
}

// ---- hostile files -------------------------------------------------------------------------------------------------

TEST(KTXReaderTest, AFileShorterThanItsHeaderIsInvalid)
{
    const QByteArray whole = KTXFile().bytes();
    for (int count = 0; count < 64; ++count)
    {
        const auto reader = newReader(whole.left(count));
        EXPECT_FALSE(reader->valid()) << count;
        EXPECT_EQ(reader->width(), 0u);
        EXPECT_EQ(reader->numMetadataEntries(), 0u);
        EXPECT_FALSE(reader->is1DTexture() || reader->is2DTexture() || reader->is3DTexture());
    }
    EXPECT_TRUE(newReader(whole)->valid());
}

TEST(KTXReaderTest, NullMemoryIsReportedAndInvalid)
{
    const LogCapture log;
    const KTXReader reader(nullptr, QStringLiteral("a.ktx"));
    EXPECT_FALSE(reader.valid());
    EXPECT_EQ(log.messages(), QStringList(assertionLine(QStringLiteral("nullptr != memory"),
                                                        QStringLiteral("Memory is NULL on KTXReader"))));
}

TEST(KTXReaderTest, MetadataBeyondTheEndIsInvalid)
{
    KTXFile file = withEntry(QByteArray("key\0val", 7)); // 12 bytes, then a level of 36
    for (const qint64 count : {49ll, 0x7FFFFFFFll, 0x80000000ll, 0xFFFFFFBFll, 0xFFFFFFC0ll, 0xFFFFFFFFll})
    {
        file.metadataBytes = count;
        const auto reader = newReader(file);
        EXPECT_FALSE(reader->valid()) << count;
        EXPECT_EQ(reader->numMetadataEntries(), 0u) << count;
    }
    file.metadataBytes = 48; // to the end of the file
    EXPECT_TRUE(newReader(file)->valid());
}

TEST(KTXReaderTest, ASizeWordThatLiesNotWhollyInTheMetadataIsNotRead)
{
    for (int rest = 1; rest < 4; ++rest)
    {
        KTXFile file;
        file.metadata = word(4) + QByteArray("key\0", 4) + QByteArray(rest, '\xFF');
        const auto reader = newReader(file); // the file ends with the metadata
        EXPECT_TRUE(reader->valid()) << rest;
        EXPECT_EQ(keysOf(*reader), texts({"key"})) << rest;

        file.metadata = QByteArray(rest, '\xFF');
        const auto onlyRest = newReader(file);
        EXPECT_TRUE(onlyRest->valid()) << rest;
        EXPECT_EQ(onlyRest->numMetadataEntries(), 0u) << rest;
    }
}

TEST(KTXReaderTest, TheLargestSizesDoNotWrapAround)
{
    for (const quint32 size : {0xFFFFFFFFu, 0xFFFFFFFCu, 0xFFFFFFF8u, 0x80000000u, 9u})
    {
        KTXFile file;
        file.metadata = word(size) + QByteArray("key\0val\0", 8);
        const auto reader = newReader(file);
        EXPECT_TRUE(reader->valid()) << size;
        EXPECT_EQ(keysOf(*reader), texts({"key"})) << size;
        EXPECT_EQ(valuesOf(*reader), texts({""})) << size;
    }
}

TEST(KTXReaderTest, AKeyThatIsLongerThanTheMetadataGoesOnBehindThem)
{
    KTXFile file;
    file.metadata = word(23) + "abcd";
    file.body = QByteArray("efgh\0", 5);
    MemoryTrace trace;
    const auto reader = newReader(file, &trace);
    EXPECT_TRUE(reader->valid());
    EXPECT_EQ(keysOf(*reader), texts({"abcdefgh"}));
    EXPECT_STREQ(reader->rawKey(0), "abcdefgh");
    EXPECT_EQ(reader->rawValue(0), reader->rawKey(0) + 8);
    EXPECT_EQ(valuesOf(*reader), texts({""}));
}

TEST(KTXReaderTest, AKeyThatNothingEndsIsCutAtTheEndOfTheFile)
{
    for (const quint32 size : {4u, 23u, 0xFFFFFFFFu})
    {
        KTXFile file;
        file.metadata = word(size) + "abcd";
        const auto reader = newReader(file); // the file ends here too
        ASSERT_EQ(reader->numMetadataEntries(), 1u);
        EXPECT_EQ(reader->key(0), text("abcd")) << size;
        EXPECT_EQ(reader->value(0), text("d")) << size;
        EXPECT_EQ(reader->rawKey(0), nullptr) << "its reader would go on behind the file";
        EXPECT_EQ(reader->rawValue(0), nullptr);
    }
}

TEST(KTXReaderTest, AnEntryBehindTheLastByteHasNoKey)
{
    KTXFile file;
    file.metadata = word(77);
    const auto reader = newReader(file);
    ASSERT_EQ(reader->numMetadataEntries(), 1u);
    EXPECT_EQ(reader->key(0), QString());
    EXPECT_EQ(reader->value(0), QString());
    EXPECT_EQ(reader->rawKey(0), nullptr);
    EXPECT_EQ(reader->rawValue(0), nullptr);
}

TEST(KTXReaderTest, WhateverAFileSaysItsHeaderAndMetadataAreReadWithinItsBytes)
{
    std::mt19937 random(20);
    const auto number = [&random](quint32 limit) { return quint32(random() % limit); };
    for (int i = 0; i < 20000; ++i)
    {
        KTXFile file;
        file.metadata = QByteArray(int(number(40)), '\0');
        for (char& byte : file.metadata)
            byte = char(number(4) != 0 ? number(9) : number(256));
        if (number(4) == 0)
            file.metadataBytes = qint64(number(64));
        file.body = pattern(int(number(24)));
        const auto reader = newReader(file.bytes(number(4) == 0).left(int(56 + number(72))));
        for (unsigned entry = 0; entry <= reader->numMetadataEntries(); ++entry)
        {
            const char* const rawKey = reader->rawKey(entry);
            const char* const rawValue = reader->rawValue(entry);
            EXPECT_EQ(rawKey ? QString::fromUtf8(rawKey) : reader->key(entry), reader->key(entry));
            EXPECT_EQ(rawValue ? QString::fromUtf8(rawValue) : reader->value(entry), reader->value(entry));
        }
    }
}

} // namespace Harrow::Vrk::Test
