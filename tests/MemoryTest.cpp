// SPDX-License-Identifier: MIT
//
// Byte sources: what a range is, what stays writable, and what files can do to whoever maps them.

#include <VrkCore/MemoryMappedFile.h>
#include <VrkCore/RawMemory.h>

#include <QFile>
#include <QFileInfo>
#include <QResource>
#include <QScopeGuard>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <cstring>
#include <limits>
#include <memory>
#include <type_traits>

#if !defined(_WIN32)
#include <sys/stat.h>
#include <unistd.h>
#endif
#if defined(__linux__)
#include <sys/fsuid.h>
#endif

namespace Harrow::Vrk
{

struct MemoryMappedFileTestAccess
{
    /// As if the whole file could not be mapped.
    static void useRanges(MemoryMappedFile& memory)
    {
        memory._access = MemoryMappedFile::Access::eRanges;
    }
};

} // namespace Harrow::Vrk

namespace Harrow::Vrk::Test
{
namespace
{

constexpr quint64 kHuge = std::numeric_limits<quint64>::max();

QByteArray bytesAt(Memory& memory, quint64 offset, quint64 length)
{
    void* const pointer = memory.get(offset, length);
    if (!pointer)
        return QByteArrayLiteral("<null>");
    QByteArray bytes(static_cast<const char*>(pointer), qsizetype(length));
    memory.release(pointer);
    return bytes;
}

QByteArray fileBytes(const QString& path)
{
    QFile file(path);
    EXPECT_TRUE(file.open(QIODevice::ReadOnly)) << path.toStdString();
    return file.readAll();
}

/// What holds for ten bytes "0123456789", whatever they come from.
void expectTenDigits(Memory& memory)
{
    EXPECT_EQ(memory.size(), 10u);
    EXPECT_EQ(bytesAt(memory, 0, 10), "0123456789");
    EXPECT_EQ(bytesAt(memory, 3, 4), "3456");
    EXPECT_EQ(bytesAt(memory, 9, 1), "9");
    EXPECT_EQ(memory.get(0, 11), nullptr);
    EXPECT_EQ(memory.get(9, 2), nullptr);
    EXPECT_EQ(memory.get(10, 1), nullptr);
    EXPECT_EQ(memory.get(0, 0), nullptr);
    EXPECT_EQ(memory.get(10, 0), nullptr);
    EXPECT_EQ(memory.get(kHuge, 1), nullptr);
    EXPECT_EQ(memory.get(1, kHuge), nullptr) << "the sum overflows to 0";
    EXPECT_EQ(memory.get(kHuge, kHuge), nullptr);
    memory.release(nullptr);
}

class MemoryMappedFiles : public testing::Test
{
protected:
    QString path(const QString& name = QStringLiteral("file")) const
    {
        return _directory.filePath(name);
    }

    QString write(const QByteArray& bytes, const QString& name = QStringLiteral("file")) const
    {
        QFile file(path(name));
        EXPECT_TRUE(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
        EXPECT_EQ(file.write(bytes), bytes.size());
        return path(name);
    }

    QString writeDigits() const
    {
        return write("0123456789");
    }

    static void expectNothing(const QString& where)
    {
        MemoryMappedFile memory(where);
        EXPECT_EQ(memory.size(), 0u);
        EXPECT_EQ(memory.get(0, 0), nullptr);
        EXPECT_EQ(memory.get(0, 1), nullptr);
    }

    QTemporaryDir _directory;
};

} // namespace

// ---- the interface -------------------------------------------------------------------------------------------------

#if defined(__GNUC__) && !defined(_WIN32)

/// Where a virtual operation stands in its class's table. In the C++ ABI of these compilers a pointer to a virtual
/// member holds the offset, on most processors with the lowest bit set.
template <typename Function> std::size_t slotOf(Function function)
{
    std::array<std::uintptr_t, 2> words = {};
    static_assert(sizeof(function) == sizeof(words));
    std::memcpy(words.data(), &function, sizeof(words));
    return (words[0] & ~std::uintptr_t(1)) / sizeof(void*);
}

TEST(MemoryInterface, SlotsAreDestructorSizeGetRelease)
{
    // The destructor takes two slots: with and without the freeing of the object.
    EXPECT_EQ(slotOf(&Memory::size), 2u);
    EXPECT_EQ(slotOf(&Memory::get), 3u);
    EXPECT_EQ(slotOf(&Memory::release), 4u);
    static_assert(std::has_virtual_destructor_v<Memory>);
}

#endif

// ---- a caller's buffer ---------------------------------------------------------------------------------------------

TEST(RawMemoryTest, GivesRangesWithinTheBufferAndNullBeyondIt)
{
    std::array<char, 10> buffer;
    std::memcpy(buffer.data(), "0123456789", 10);
    RawMemory memory(buffer.data(), buffer.size());
    expectTenDigits(memory);
    EXPECT_EQ(memory.get(4, 2), buffer.data() + 4) << "no copy";
}

TEST(RawMemoryTest, TheBufferStaysTheCallersAndSeesWhatIsWritten)
{
    const auto buffer = std::make_unique<unsigned char[]>(4);
    {
        RawMemory memory(buffer.get(), 4);
        auto* const pointer = static_cast<unsigned char*>(memory.get(1, 2));
        ASSERT_NE(pointer, nullptr);
        pointer[0] = 7;
        memory.release(pointer);
    }
    EXPECT_EQ(buffer[1], 7);
}

TEST(RawMemoryTest, NullHoldsNoBytesWhateverItsSize)
{
    RawMemory memory(nullptr, 100);
    EXPECT_EQ(memory.size(), 0u);
    EXPECT_EQ(memory.get(0, 1), nullptr);
}

TEST(RawMemoryTest, SizesBeyondFourGibibytesAreCounted)
{
    char byte = 0; // never reached: only the bounds are asked
    constexpr quint64 size = quint64(6) << 30;
    RawMemory memory(&byte, size);
    EXPECT_EQ(memory.size(), size);
    EXPECT_EQ(memory.get(size, 1), nullptr);
    EXPECT_EQ(memory.get(size - 8, 9), nullptr);
    EXPECT_EQ(memory.get(0, size + 1), nullptr);
    EXPECT_EQ(memory.get(0, size), &byte);
}

TEST(RawMemoryTest, IsDestroyedThroughItsBase)
{
    char byte = 1;
    const std::unique_ptr<Memory> memory = std::make_unique<RawMemory>(&byte, 1);
    EXPECT_EQ(memory->size(), 1u);
    EXPECT_EQ(memory->get(0, 1), &byte);
}

// ---- a file --------------------------------------------------------------------------------------------------------

TEST_F(MemoryMappedFiles, GiveRangesWithinTheFileAndNullBeyondIt)
{
    MemoryMappedFile memory(writeDigits());
    expectTenDigits(memory);
}

TEST_F(MemoryMappedFiles, WrittenBytesNeverReachTheFile)
{
    const QString where = writeDigits();
    {
        MemoryMappedFile memory(where);
        auto* const pointer = static_cast<char*>(memory.get(0, 10));
        ASSERT_NE(pointer, nullptr);
        std::memcpy(pointer, "XXXXXXXXXX", 10);
        memory.release(pointer);
        EXPECT_EQ(fileBytes(where), "0123456789");
        MemoryMappedFile other(where);
        EXPECT_EQ(bytesAt(other, 0, 10), "0123456789") << "nor another mapping";
    }
    EXPECT_EQ(fileBytes(where), "0123456789");
}

TEST_F(MemoryMappedFiles, WrittenBytesAreSeenThroughLaterPointers)
{
    MemoryMappedFile memory(writeDigits());
    auto* const pointer = static_cast<char*>(memory.get(2, 2));
    ASSERT_NE(pointer, nullptr);
    pointer[0] = 'a';
    memory.release(pointer);
    EXPECT_EQ(bytesAt(memory, 0, 5), "01a34");
}

TEST_F(MemoryMappedFiles, PointersStayValidAfterAnotherIsReleased)
{
    MemoryMappedFile memory(writeDigits());
    void* const first = memory.get(0, 10);
    void* const second = memory.get(0, 4);
    ASSERT_NE(first, nullptr);
    memory.release(second);
    EXPECT_EQ(std::memcmp(first, "0123456789", 10), 0);
}

TEST_F(MemoryMappedFiles, AReadOnlyFileIsWritableInMemory)
{
    const QString where = writeDigits();
    ASSERT_TRUE(QFile::setPermissions(where, QFileDevice::ReadOwner));
    MemoryMappedFile memory(where);
    auto* const pointer = static_cast<char*>(memory.get(0, 10));
    ASSERT_NE(pointer, nullptr);
    pointer[0] = 'X';
    EXPECT_EQ(bytesAt(memory, 0, 3), "X12");
    EXPECT_EQ(fileBytes(where), "0123456789");
}

TEST_F(MemoryMappedFiles, PathsAreUnicode)
{
    MemoryMappedFile memory(write("bytes", QString::fromUtf8("t\xC3\xABxture \xE6\xA8\xA1\xE6\xA7\x98")));
    EXPECT_EQ(bytesAt(memory, 0, 5), "bytes");
}

TEST_F(MemoryMappedFiles, WhatIsNoFileHasNoBytes)
{
    expectNothing(write({}, QStringLiteral("empty")));
    expectNothing(path(QStringLiteral("missing")));
    expectNothing(_directory.path());
    expectNothing(QString());
    expectNothing(QStringLiteral(":/missing"));
}

TEST_F(MemoryMappedFiles, AFileBeyondFourGibibytesIsReachedInAllItsLength)
{
    constexpr quint64 size = (quint64(5) << 30) + 123;
    const QString where = path(QStringLiteral("sparse"));
    {
        QFile file(where);
        ASSERT_TRUE(file.open(QIODevice::ReadWrite));
        ASSERT_TRUE(file.resize(qint64(size))) << "the disk takes no sparse file of 5 GiB";
        ASSERT_TRUE(file.seek(qint64(size) - 4));
        ASSERT_EQ(file.write("last"), 4);
        ASSERT_TRUE(file.seek(qint64(size - (quint64(4) << 30)) - 4));
        ASSERT_EQ(file.write("trap"), 4) << "where an offset of 32 bits would look";
    }
    MemoryMappedFile memory(where);
    EXPECT_EQ(memory.size(), size);
    EXPECT_EQ(bytesAt(memory, size - 4, 4), "last");
    EXPECT_EQ(bytesAt(memory, 0, 4), QByteArray(4, 0));
    EXPECT_EQ(memory.get(size - 4, 5), nullptr);
    EXPECT_EQ(memory.get(0, size + 1), nullptr);
    EXPECT_EQ(bytesAt(memory, size - 8, 8), QByteArray(4, 0) + "last");
}

// ---- a file that changes -------------------------------------------------------------------------------------------

TEST_F(MemoryMappedFiles, AFileThatShrinksKeepsItsSizeAndLosesItsEnd)
{
    const QString where = write(QByteArray(100000, 'x'));
    MemoryMappedFile memory(where);
    ASSERT_EQ(bytesAt(memory, 99999, 1), "x");
    ASSERT_TRUE(QFile::resize(where, 5000));
    EXPECT_EQ(memory.size(), 100000u);
    EXPECT_EQ(memory.get(99999, 1), nullptr);
    EXPECT_EQ(memory.get(0, 100000), nullptr);
    EXPECT_EQ(memory.get(4999, 2), nullptr);
    EXPECT_EQ(bytesAt(memory, 0, 5000), QByteArray(5000, 'x'));
}

TEST_F(MemoryMappedFiles, AFileThatShrinksBeforeItIsMappedGivesWhatIsLeft)
{
    const QString where = write(QByteArray(100000, 'x'));
    MemoryMappedFile memory(where);
    ASSERT_TRUE(QFile::resize(where, 5000));
    EXPECT_EQ(memory.get(0, 100000), nullptr);
    EXPECT_EQ(bytesAt(memory, 4100, 900), QByteArray(900, 'x'));
    ASSERT_TRUE(QFile::resize(where, 0));
    EXPECT_EQ(memory.get(0, 1), nullptr);
}

TEST_F(MemoryMappedFiles, AFileThatGrowsKeepsItsSize)
{
    const QString where = writeDigits();
    MemoryMappedFile memory(where);
    QFile file(where);
    ASSERT_TRUE(file.open(QIODevice::Append));
    file.write("more");
    file.close();
    expectTenDigits(memory);
}

TEST_F(MemoryMappedFiles, AFileThatIsRemovedOrReplacedKeepsItsBytes)
{
    const QString where = writeDigits();
    MemoryMappedFile mapped(where);
    ASSERT_EQ(bytesAt(mapped, 0, 1), "0");
    MemoryMappedFile opened(where);
    ASSERT_TRUE(QFile::remove(where));
    write("other");
    expectTenDigits(mapped);
    expectTenDigits(opened);
}

// ---- a file of Qt's resources --------------------------------------------------------------------------------------

TEST_F(MemoryMappedFiles, AResourceIsWritableInMemoryAndStaysAsItIs)
{
    int uncompressed = 0;
    for (const char* const name : {"VrkUtilities.glslc", "VrkUtilities.vert", "VrkUtilities.frag"})
    {
        const QString where = QStringLiteral(":/GLSL/src/") + QString::fromLatin1(name);
        const QByteArray before = fileBytes(where);
        ASSERT_GT(before.size(), 16);
        uncompressed += QResource(where).compressionAlgorithm() == QResource::NoCompression;
        {
            MemoryMappedFile memory(where);
            EXPECT_EQ(memory.size(), quint64(before.size()));
            EXPECT_EQ(bytesAt(memory, 0, memory.size()), before);
            void* const pointer = memory.get(0, 8);
            ASSERT_NE(pointer, nullptr);
            std::memset(pointer, 0, 8);
            EXPECT_EQ(bytesAt(memory, 0, 10), QByteArray(8, 0) + before.mid(8, 2));
            EXPECT_EQ(memory.get(0, memory.size() + 1), nullptr);
        }
        EXPECT_EQ(fileBytes(where), before);
    }
    EXPECT_GT(uncompressed, 0) << "only these lie in read-only memory";
}

// ---- without address space for the whole file ----------------------------------------------------------------------

TEST_F(MemoryMappedFiles, WithoutRoomForTheWholeFileEachRangeIsMappedForItself)
{
    MemoryMappedFile memory(write(QByteArray(9000, 'x') + "0123456789"));
    MemoryMappedFileTestAccess::useRanges(memory);
    EXPECT_EQ(bytesAt(memory, 9000, 10), "0123456789");
    EXPECT_EQ(bytesAt(memory, 8990, 15), QByteArray(10, 'x') + "01234");
    EXPECT_EQ(memory.get(9009, 2), nullptr);

    auto* const first = static_cast<char*>(memory.get(9000, 10));
    auto* const second = static_cast<char*>(memory.get(9000, 10));
    ASSERT_TRUE(first && second);
    first[0] = 'a';
    EXPECT_EQ(first[0], 'a');
    EXPECT_EQ(second[0], '0');
    memory.release(first);
    EXPECT_EQ(second[9], '9') << "the other one stays";
    memory.release(second);
    memory.release(nullptr);
}

#if defined(__linux__)

TEST_F(MemoryMappedFiles, ReleasedRangesAreUnmapped)
{
    const QString where = writeDigits();
    const auto mappings = [&where] { return fileBytes(QStringLiteral("/proc/self/maps")).count(where.toLocal8Bit()); };
    {
        MemoryMappedFile memory(where);
        MemoryMappedFileTestAccess::useRanges(memory);
        void* const first = memory.get(0, 10);
        memory.get(5, 5);
        EXPECT_EQ(mappings(), 2);
        memory.release(first);
        EXPECT_EQ(mappings(), 1);
    }
    EXPECT_EQ(mappings(), 0) << "and the rest with the object";
}

TEST_F(MemoryMappedFiles, TheMappingEndsWithTheObject)
{
    const QString where = writeDigits();
    const auto mappings = [&where] { return fileBytes(QStringLiteral("/proc/self/maps")).count(where.toLocal8Bit()); };
    {
        MemoryMappedFile memory(where);
        EXPECT_EQ(mappings(), 0) << "nothing is mapped before it is asked for";
        memory.release(memory.get(0, 10));
        memory.get(5, 5);
        EXPECT_EQ(mappings(), 1);
    }
    EXPECT_EQ(mappings(), 0);
}

#endif

#if !defined(_WIN32)

/// Reads files as somebody without privileges, for the length of a scope and on this thread, where the system has a
/// way to do so: root may read everything.
class WithoutPrivileges
{
public:
    WithoutPrivileges()
    {
#if defined(__linux__)
        if (geteuid() == 0)
            setfsuid(kNobody);
#endif
    }
    ~WithoutPrivileges()
    {
#if defined(__linux__)
        if (geteuid() == 0)
            setfsuid(0);
#endif
    }
    WithoutPrivileges(const WithoutPrivileges&) = delete;
    WithoutPrivileges& operator=(const WithoutPrivileges&) = delete;

private:
    static constexpr unsigned kNobody = 65534;
};

class UnreadableFiles : public MemoryMappedFiles
{
protected:
    static bool canRead(const QString& where)
    {
        return QFile(where).open(QIODevice::ReadOnly);
    }

    /// So that the other user reaches what is in the directory.
    void SetUp() override
    {
        ASSERT_EQ(chmod(QFile::encodeName(_directory.path()).constData(), 0711), 0);
    }
};

TEST_F(UnreadableFiles, HaveNoBytes)
{
    const QString where = writeDigits();
    const QByteArray name = QFile::encodeName(where);
    ASSERT_EQ(chmod(name.constData(), 0444), 0);
    {
        const WithoutPrivileges scope;
        // Where TMPDIR is a folder of root's own, what follows would fail for that reason and show nothing.
        if (!canRead(where))
            GTEST_SKIP() << "the temporary folder is closed to other users, so root cannot be kept from one file alone";
        MemoryMappedFile memory(where);
        EXPECT_EQ(memory.size(), 10u) << "the user may read other files there";
    }
    ASSERT_EQ(chmod(name.constData(), 0), 0);
    const WithoutPrivileges scope;
    // Some sandboxes map every user to one who may read all; there is no unreadable file to be had.
    if (canRead(where))
        GTEST_SKIP() << "this system lets root read everything";
    ASSERT_TRUE(QFileInfo(where).isFile()) << "it is seen, and its length known";
    ASSERT_EQ(QFileInfo(where).size(), 10);
    expectNothing(where);
}

TEST_F(UnreadableFiles, OfAClosedFolderHaveNoBytes)
{
    const QString where = writeDigits();
    const QByteArray folder = QFile::encodeName(_directory.path());
    ASSERT_EQ(chmod(folder.constData(), 0), 0);
    const auto open = qScopeGuard([&] { EXPECT_EQ(chmod(folder.constData(), 0700), 0); });
    const WithoutPrivileges scope;
    // Some sandboxes map every user to one who may read all; there is no unreadable file to be had.
    if (canRead(where))
        GTEST_SKIP() << "this system lets root read everything";
    expectNothing(where);
}

TEST_F(MemoryMappedFiles, APipeIsNotWaitedFor)
{
    const QString where = path(QStringLiteral("pipe"));
    ASSERT_EQ(mkfifo(QFile::encodeName(where).constData(), 0600), 0);
    expectNothing(where);
}

#endif

} // namespace Harrow::Vrk::Test
