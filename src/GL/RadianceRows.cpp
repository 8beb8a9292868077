// SPDX-License-Identifier: MIT
#include "RadianceRows.h"

#include <algorithm>
#include <array>
#include <cstring>

namespace Harrow::Vrk
{
namespace
{

constexpr size_t kPixelBytes = 4;
constexpr size_t kPixelFloats = 3;

/// 128 that the exponent is stored with, and 8 bits that the colour's bytes have in front of the binary point.
constexpr int kExponentBias = 136;

constexpr std::array<float, 256> makeFactors()
{
    double factor = 1.0;
    for (int exponent = 1; exponent < kExponentBias; ++exponent)
        factor *= 0.5; // 2^(1 - 136), exact down to here in a float too
    std::array<float, 256> factors = {};
    for (size_t exponent = 1; exponent < factors.size(); ++exponent, factor *= 2.0)
        factors[exponent] = static_cast<float>(factor);
    return factors;
}

/// Products with a byte are exact, so that it makes no difference that these are floats and no doubles.
constexpr std::array<float, 256> kFactors = makeFactors();
static_assert(kFactors[0] == 0.0f && kFactors[kExponentBias] == 1.0f && kFactors[kExponentBias + 1] == 2.0f);

void convert(unsigned char red, unsigned char green, unsigned char blue, unsigned char exponent, float* color)
{
    const float factor = kFactors[exponent];
    color[0] = static_cast<float>(red) * factor;
    color[1] = static_cast<float>(green) * factor;
    color[2] = static_cast<float>(blue) * factor;
}

void convertPixel(const unsigned char* rgbe, float* color)
{
    convert(rgbe[0], rgbe[1], rgbe[2], rgbe[3], color);
}

bool isOldMarker(const unsigned char* bytes)
{
    return bytes[0] == 1 && bytes[1] == 1 && bytes[2] == 1;
}

} // namespace

RadianceRowReader::RadianceRowReader(const unsigned char* begin, const unsigned char* end, quint32 width)
    : _next(begin), _end(end), _width(width)
{
}

quint64 RadianceRowReader::bytesLeft() const
{
    return static_cast<quint64>(_end - _next);
}

RadianceRow RadianceRowReader::read(float* row, unsigned char* rgbe)
{
    // No kind of row is shorter than a pixel.
    if (bytesLeft() < kPixelBytes)
        return RadianceRow::eNoData;
    if (isOldMarker(_next))
        return readOldRuns(row);
    if (_next[0] == 2 && _next[1] == 2)
        return readRuns(row, rgbe);
    return readFlat(row);
}

RadianceRow RadianceRowReader::readFlat(float* row)
{
    if (bytesLeft() / kPixelBytes < _width)
        return RadianceRow::eNoData;
    for (quint32 x = 0; x < _width; ++x, _next += kPixelBytes, row += kPixelFloats)
        convertPixel(_next, row);
    return RadianceRow::eRead;
}

RadianceRow RadianceRowReader::readRuns(float* row, unsigned char* rgbe)
{
    if (quint32(_next[2]) * 256 + _next[3] != _width)
        return RadianceRow::eBadWidth;
    _next += kPixelBytes;
    for (size_t channel = 0; channel < kPixelBytes; ++channel)
    {
        const RadianceRow result = readChannel(rgbe + channel * _width);
        if (result != RadianceRow::eRead)
            return result;
    }
    const unsigned char* const green = rgbe + _width;
    const unsigned char* const blue = green + _width;
    const unsigned char* const exponent = blue + _width;
    for (quint32 x = 0; x < _width; ++x, row += kPixelFloats)
        convert(rgbe[x], green[x], blue[x], exponent[x], row);
    return RadianceRow::eRead;
}

/// A byte above 128 tells of a run of the next byte, any other of so many literal bytes.
RadianceRow RadianceRowReader::readChannel(unsigned char* channel)
{
    constexpr quint32 kRun = 128;
    quint32 x = 0;
    while (x < _width)
    {
        if (_next == _end)
            return RadianceRow::eNoData;
        const quint32 code = *_next++;
        const bool isRun = code > kRun;
        const quint32 count = isRun ? code - kRun : code;
        if (isRun && count > _width - x)
        {
            _runStart = x;
            _runEnd = x + count;
            return RadianceRow::eOverlongRun;
        }
        if (count > _width - x || bytesLeft() < (isRun ? 1 : count))
            return RadianceRow::eNoData;
        if (isRun)
            std::memset(channel + x, *_next++, count);
        else
        {
            std::memcpy(channel + x, _next, count);
            _next += count;
        }
        x += count;
    }
    return RadianceRow::eRead;
}

/// Pixels, each behind any number of markers 1 1 1 n. The markers' numbers, lowest byte first, tell how often the pixel
/// behind them is stored; without a marker it is once.
RadianceRow RadianceRowReader::readOldRuns(float* row)
{
    quint32 x = 0;
    while (x < _width)
    {
        quint64 count = 0;
        quint64 shift = 0;
        for (; bytesLeft() >= kPixelBytes && isOldMarker(_next); _next += kPixelBytes, shift += 8)
        {
            if (shift < 32)
                count |= quint64(_next[3]) << shift;
            else if (_next[3] != 0)
                return RadianceRow::eNoData; // beyond every width
        }
        if (shift == 0)
            count = 1;
        if (bytesLeft() < kPixelBytes || count > _width - x)
            return RadianceRow::eNoData;
        float color[kPixelFloats];
        convertPixel(_next, color);
        _next += kPixelBytes;
        x += static_cast<quint32>(count);
        for (; count > 0; --count, row += kPixelFloats)
            std::copy_n(color, kPixelFloats, row);
    }
    return RadianceRow::eRead;
}

// A single pixel is shortest as it is, and any more of them as an old run of one colour: markers for the bytes of the
// width, and the colour.
quint64 RadianceRowReader::leastBytes(quint32 width)
{
    quint64 run = kPixelBytes;
    for (quint32 rest = width; rest != 0; rest >>= 8)
        run += kPixelBytes;
    return std::min(quint64(width) * kPixelBytes, run);
}

float radianceFactor(unsigned char exponent)
{
    return kFactors[exponent];
}

} // namespace Harrow::Vrk
