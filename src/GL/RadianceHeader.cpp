// SPDX-License-Identifier: MIT
#include "RadianceHeader.h"

#include <QByteArray>

#include <algorithm>
#include <clocale>
#include <cstdio>
#include <iterator>
#include <limits>

namespace Harrow::Vrk
{
namespace
{

constexpr std::string_view kFormatKey = "FORMAT=";
constexpr std::string_view kExposureKey = "EXPOSURE=";

constexpr struct
{
    std::string_view name;
    qint32 format;
} kFormats[] = {
    {"32-bit_rle_rgbe\n", 1},
    {"32-bit_rle_xyze\n", 2},
};

/// Splits the first line, its "\n" included, off the text. False when no "\n" is left.
bool takeLine(std::string_view& text, std::string_view& line)
{
    const size_t newline = text.find('\n');
    if (newline == std::string_view::npos)
        return false;
    line = text.substr(0, newline + 1);
    text.remove_prefix(newline + 1);
    return true;
}

/// What the scan functions can be given: they look for a NUL, which a mapped file need not have. Of a line without end
/// its beginning is enough.
QByteArray scannable(std::string_view line)
{
    constexpr size_t kLongest = 1024;
    return QByteArray(line.data(), static_cast<qsizetype>(std::min(line.size(), kLongest)));
}

bool readFormat(std::string_view value, RadianceHeader& header)
{
    const auto* const row = std::find_if(std::begin(kFormats), std::end(kFormats),
                                         [value](const auto& candidate) { return candidate.name == value; });
    const bool isKnown = row != std::end(kFormats);
    header.format = isKnown ? row->format : 0;
    return isKnown;
}

bool readExposure(std::string_view value, RadianceHeader& header)
{
    // The file has a point whatever the user's country writes.
    const QByteArray text = scannable(value).replace(".", std::localeconv()->decimal_point);
    float exposure = 0.0f;
    if (std::sscanf(text.constData(), "%f", &exposure) != 1)
        return false;
    header.exposure *= exposure;
    return true;
}

bool readLine(std::string_view line, RadianceHeader& header)
{
    if (line.starts_with(kFormatKey))
        return readFormat(line.substr(kFormatKey.size()), header);
    if (line.starts_with(kExposureKey))
        return readExposure(line.substr(kExposureKey.size()), header);
    return line.front() != '\0';
}

/// Whether the lines up to the empty one are there and accepted, each of them. `text` then begins behind that one.
bool readLines(std::string_view& text, RadianceHeader& header)
{
    bool isAccepted = true;
    std::string_view line;
    while (takeLine(text, line))
    {
        if (line == "\n")
            return isAccepted;
        isAccepted = readLine(line, header) && isAccepted;
    }
    return false;
}

/// A size as the pattern "%u" would give it, a minus sign included. False for one beyond 32 bits, of which that pattern
/// makes no promise.
bool toSize(long long number, quint32& size)
{
    constexpr long long kLargest = std::numeric_limits<quint32>::max();
    size = static_cast<quint32>(number);
    return number >= -kLargest && number <= kLargest;
}

bool isSign(char sign)
{
    return sign == '+' || sign == '-';
}

bool isAxis(char axis)
{
    return axis == 'X' || axis == 'Y';
}

bool readResolution(std::string_view& text, RadianceHeader& header)
{
    std::string_view line;
    if (!takeLine(text, line))
        return false;
    long long height = 0;
    long long width = 0;
    return std::sscanf(scannable(line).constData(), "%c%c %lld %c%c %lld", &header.ySign, &header.yAxis, &height,
                       &header.xSign, &header.xAxis, &width) == 6 &&
           toSize(height, header.height) && toSize(width, header.width) && isSign(header.ySign) &&
           isSign(header.xSign) && isAxis(header.yAxis) && isAxis(header.xAxis) && header.yAxis != header.xAxis;
}

} // namespace

RadianceHeader readRadianceHeader(const unsigned char* begin, const unsigned char* end)
{
    RadianceHeader header;
    std::string_view text(reinterpret_cast<const char*>(begin), static_cast<size_t>(end - begin));
    if (text.size() <= kRadianceMagic.size() || !text.starts_with(kRadianceMagic))
        return header;
    text.remove_prefix(kRadianceMagic.size());
    const bool areLinesAccepted = readLines(text, header);
    header.valid = readResolution(text, header) && areLinesAccepted;
    if (header.valid)
        header.pixels = reinterpret_cast<const unsigned char*>(text.data());
    return header;
}

} // namespace Harrow::Vrk
