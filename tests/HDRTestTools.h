// SPDX-License-Identifier: MIT
#pragma once

/// \file
/// What the suites of Radiance and ASTC files share: memory that keeps account of itself, Radiance pictures written
/// byte by byte, and colours as the C library computes them.

#include <VrkCore/Memory.h>

#include <QByteArray>
#include <QList>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <functional>
#include <initializer_list>
#include <memory>
#include <utility>
#include <vector>

namespace Harrow::Vrk::Test
{

/// Bytes of exactly their size, so that a sanitizer sees each one that is read beyond them.
class ExactBytes
{
public:
    explicit ExactBytes(const QByteArray& bytes) : _size(size_t(bytes.size())), _bytes(new unsigned char[_size])
    {
        std::copy(bytes.begin(), bytes.end(), _bytes.get());
    }
    unsigned char* begin() const
    {
        return _bytes.get();
    }
    unsigned char* end() const
    {
        return begin() + _size;
    }

private:
    size_t _size;
    std::unique_ptr<unsigned char[]> _bytes;
};

/// What a memory was asked for. Outlives it.
struct MemoryUse
{
    QList<std::pair<quint64, quint64>> gets;
    QList<void*> given;
    QList<void*> released;
    std::function<void()> whenReleased = [] {};
    int alive = 0;
};

class TracedMemory final : public Memory
{
public:
    /// Gives nothing behind `readable` bytes, whatever its size.
    TracedMemory(MemoryUse& trace, const QByteArray& bytes, quint64 claimedSize, quint64 readable)
        : _trace(trace), _bytes(bytes), _size(claimedSize), _readable(readable)
    {
        ++_trace.alive;
    }
    TracedMemory(MemoryUse& trace, const QByteArray& bytes)
        : TracedMemory(trace, bytes, quint64(bytes.size()), quint64(bytes.size()))
    {
    }
    ~TracedMemory() override
    {
        --_trace.alive;
    }
    quint64 size() const override
    {
        return _size;
    }
    void* get(quint64 offset, quint64 length) override
    {
        _trace.gets.append({offset, length});
        void* const pointer = isWithin(offset, length, _readable) ? _bytes.begin() + offset : nullptr;
        _trace.given.append(pointer);
        return pointer;
    }
    void release(void* pointer) override
    {
        _trace.released.append(pointer);
        _trace.whenReleased();
    }

private:
    MemoryUse& _trace;
    ExactBytes _bytes;
    quint64 _size;
    quint64 _readable;
};

inline QByteArray bytesOf(std::initializer_list<int> values)
{
    QByteArray bytes;
    for (const int value : values)
        bytes.append(static_cast<char>(value));
    return bytes;
}

inline const QByteArray kFormatLine = "FORMAT=32-bit_rle_rgbe\n";

/// A picture with these header lines, each with its "\n", and this resolution line, without.
inline QByteArray hdrFile(const QByteArray& resolution, const QByteArray& pixels, const QByteArray& lines = kFormatLine)
{
    return "#?RADIANCE\n" + lines + '\n' + resolution + '\n' + pixels;
}

using Rgbe = std::array<int, 4>;
using Rgbes = std::vector<Rgbe>;
using Floats = std::vector<float>;

/// The row coded plain.
inline QByteArray plainRow(const Rgbes& row)
{
    QByteArray bytes;
    for (const Rgbe& pixel : row)
        for (const int value : pixel)
            bytes.append(static_cast<char>(value));
    return bytes;
}

/// The four bytes that a row begins with which is coded channel by channel.
inline QByteArray runsRowStart(int width)
{
    return bytesOf({2, 2, width / 256, width % 256});
}

/// The row coded channel by channel, in literal bytes, up to `most` at once.
inline QByteArray literalRow(const Rgbes& row, int most = 128)
{
    QByteArray bytes = runsRowStart(int(row.size()));
    for (size_t channel = 0; channel < 4; ++channel)
    {
        for (size_t x = 0; x < row.size(); ++x)
        {
            if (x % size_t(most) == 0)
                bytes.append(static_cast<char>(std::min(row.size() - x, size_t(most))));
            bytes.append(static_cast<char>(row[x][channel]));
        }
    }
    return bytes;
}

inline QByteArray oldMarker(int count)
{
    return bytesOf({1, 1, 1, count});
}

/// The definition, with the C library's `ldexp`.
inline void appendColor(Floats& floats, const Rgbe& pixel)
{
    for (size_t channel = 0; channel < 3; ++channel)
        floats.push_back(pixel[3] == 0 ? 0.0f : float(pixel[channel] * std::ldexp(1.0, pixel[3] - 136)));
}

inline Floats colorsOf(const Rgbes& pixels)
{
    Floats floats;
    for (const Rgbe& pixel : pixels)
        appendColor(floats, pixel);
    return floats;
}

} // namespace Harrow::Vrk::Test
