// SPDX-License-Identifier: MIT
#pragma once

/// \file
/// What the suites of KTX files share: a builder that composes such files, right or wrong, byte for byte, and memory
/// that ends where the file ends, at a page that cannot be read.

#include "KTXReader.h"

#include "GLFunctions.h"
#include "TextureFileInfo.h"
#include "support/CallLog.h"

#include <VrkCore/Memory.h>

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <gtest/gtest.h>

#include <array>
#include <cstring>
#include <memory>
#include <utility>
#include <vector>

#if !defined(_WIN32)
#include <sys/mman.h>
#include <unistd.h>
#endif

namespace Harrow::Vrk::Test
{

inline constexpr quint32 kNative = 0x04030201;
inline constexpr quint32 kForeign = 0x01020304;

inline const QByteArray kKTXMagic = QByteArray("\xABKTX 11\xBB\r\n\x1A\n", 12);

/// The four bytes of a number, lowest first, or highest first.
inline QByteArray word(quint32 value, bool highestFirst = false)
{
    QByteArray bytes;
    for (int i = 0; i < 4; ++i)
        bytes.append(char(value >> (8 * (highestFirst ? 3 - i : i)) & 0xFF));
    return bytes;
}

inline TextureFileInfo preprocessed()
{
    TextureFileInfo info;
    info.preprocessed = true;
    return info;
}

inline QByteArray pattern(int count, int seed = 1)
{
    QByteArray bytes;
    for (int i = 0; i < count; ++i)
        bytes.append(char((i * 31 + seed * 17) & 0xFF));
    return bytes;
}

/// A plain 4 by 2 RGBA texture with one level and no metadata, until told otherwise. Tests run on little-endian
/// machines.
struct KTXFile
{
    QByteArray identifier = kKTXMagic;
    quint32 endianness = kNative;
    quint32 glType = 0x1401; // GL_UNSIGNED_BYTE
    quint32 glTypeSize = 1;
    quint32 glFormat = 0x1908;         // GL_RGBA
    quint32 glInternalFormat = 0x8058; // GL_RGBA8
    quint32 glBaseInternalFormat = 0x1908;
    quint32 width = 4;
    quint32 height = 2;
    quint32 depth = 0;
    quint32 arrayElements = 0;
    quint32 faces = 1;
    quint32 levels = 1;
    QByteArray metadata;
    /// What the header says of the metadata; the true count if below 0.
    qint64 metadataBytes = -1;
    QByteArray body;

    /// One entry, padded to a multiple of four as the published layout has it.
    KTXFile& entry(const QByteArray& keyAndValue)
    {
        metadata += word(quint32(keyAndValue.size())) + keyAndValue;
        return pad(metadata);
    }

    KTXFile& level(const QByteArray& pixels)
    {
        body += word(quint32(pixels.size())) + pixels;
        return pad(body);
    }

    /// Six faces, each padded.
    KTXFile& cubeLevel(int faceBytes)
    {
        body += word(quint32(faceBytes));
        for (int face = 0; face < 6; ++face)
        {
            body += pattern(faceBytes, face);
            pad(body);
        }
        return *this;
    }

    KTXFile& compressed(quint32 internalFormat)
    {
        glType = glFormat = 0;
        glTypeSize = 1;
        glInternalFormat = internalFormat;
        return *this;
    }

    KTXFile& size(quint32 newWidth, quint32 newHeight, quint32 newDepth = 0)
    {
        width = newWidth;
        height = newHeight;
        depth = newDepth;
        return *this;
    }

    std::array<quint32, 13> fields() const
    {
        return {endianness,
                glType,
                glTypeSize,
                glFormat,
                glInternalFormat,
                glBaseInternalFormat,
                width,
                height,
                depth,
                arrayElements,
                faces,
                levels,
                metadataBytes < 0 ? quint32(metadata.size()) : quint32(metadataBytes)};
    }

    /// With `highestFirst` the header's words alone are written that way round.
    QByteArray bytes(bool highestFirst = false) const
    {
        QByteArray all = identifier;
        for (const quint32 field : fields())
            all += word(field, highestFirst);
        return all + metadata + body;
    }

private:
    KTXFile& pad(QByteArray& bytes)
    {
        while (bytes.size() % 4 != 0)
            bytes.append('\0');
        return *this;
    }
};

/// What a reader did with its memory, and whether it still has it.
struct MemoryTrace
{
    QStringList calls;
    int alive = 0;
    int held = 0; ///< pointers not released
    const unsigned char* start = nullptr;
};

/// Its last byte is followed by a page that cannot be read, and by nothing else.
class EdgeMemory final : public Memory
{
public:
    explicit EdgeMemory(const QByteArray& bytes, MemoryTrace* trace = nullptr)
        : _size(size_t(bytes.size())), _trace(trace)
    {
#if !defined(_WIN32)
        const auto page = size_t(sysconf(_SC_PAGESIZE));
        const size_t pages = (_size + page - 1) / page;
        _mapped = (pages + 1) * page;
        _mapping = static_cast<unsigned char*>(
            mmap(nullptr, _mapped, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0));
        EXPECT_NE(static_cast<void*>(_mapping), MAP_FAILED);
        EXPECT_EQ(mprotect(_mapping + pages * page, page, PROT_NONE), 0);
        _start = _mapping + pages * page - _size;
#else
        _heap = std::make_unique<unsigned char[]>(_size + 1);
        _start = _heap.get();
#endif
        std::memcpy(_start, bytes.constData(), _size);
        if (_trace)
        {
            ++_trace->alive;
            _trace->start = _start;
        }
    }

    ~EdgeMemory() override
    {
        if (_trace)
            --_trace->alive;
#if !defined(_WIN32)
        munmap(_mapping, _mapped);
#endif
    }

    quint64 size() const override
    {
        return _size;
    }

    void* get(quint64 offset, quint64 length) override
    {
        note(QStringLiteral("get(%1, %2)").arg(offset).arg(length));
        if (!isWithin(offset, length, _size))
            return nullptr;
        if (_trace)
            ++_trace->held;
        return _start + offset;
    }

    void release(void* pointer) override
    {
        note(QStringLiteral("release(%1)").arg(pointer ? static_cast<unsigned char*>(pointer) - _start : -1));
        if (_trace && pointer)
            --_trace->held;
    }

private:
    void note(const QString& call)
    {
        if (_trace)
            _trace->calls.append(call);
    }

    size_t _size;
    MemoryTrace* _trace;
    unsigned char* _start = nullptr;
#if !defined(_WIN32)
    unsigned char* _mapping = nullptr;
    size_t _mapped = 0;
#else
    std::unique_ptr<unsigned char[]> _heap;
#endif
};

/// Memory that has no two bytes side by side that were not asked for at once. Counts its pieces.
class PiecewiseMemory final : public Memory
{
public:
    PiecewiseMemory(const QByteArray& bytes, int& alive) : _bytes(bytes), _alive(alive) {}
    ~PiecewiseMemory() override
    {
        _alive -= int(_pieces.size());
    }
    quint64 size() const override
    {
        return quint64(_bytes.size());
    }
    void* get(quint64 offset, quint64 length) override
    {
        if (!isWithin(offset, length, size()))
            return nullptr;
        _pieces.push_back(std::make_unique<EdgeMemory>(_bytes.mid(qsizetype(offset), qsizetype(length))));
        ++_alive;
        return _pieces.back()->get(0, length);
    }
    void release(void* pointer) override
    {
        _alive -= int(
            std::erase_if(_pieces, [pointer](const auto& piece) { return piece->get(0, piece->size()) == pointer; }));
    }

private:
    QByteArray _bytes;
    int& _alive;
    std::vector<std::unique_ptr<EdgeMemory>> _pieces;
};

inline std::unique_ptr<KTXReader> newReader(const QByteArray& bytes, MemoryTrace* trace = nullptr,
                                            const QString& name = QStringLiteral("a.ktx"))
{
    return std::make_unique<KTXReader>(new EdgeMemory(bytes, trace), name);
}

inline std::unique_ptr<KTXReader> newReader(const KTXFile& file, MemoryTrace* trace = nullptr,
                                            const QString& name = QStringLiteral("a.ktx"))
{
    return newReader(file.bytes(), trace, name);
}

} // namespace Harrow::Vrk::Test
