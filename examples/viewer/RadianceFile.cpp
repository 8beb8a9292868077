// SPDX-License-Identifier: MIT
#include "RadianceFile.h"

#include <QSaveFile>

#include <algorithm>
#include <array>
#include <cmath>

namespace vrkview
{

namespace
{

constexpr int kChannels = 4; // three mantissas and the exponent
constexpr int kNarrowestCoded = 8;
constexpr int kWidestCoded = 0x7fff; // the marker has 15 bits for it
constexpr int kShortestRun = 4;      // a shorter one costs more than it saves between literal bytes
constexpr int kLongestRun = 127;
constexpr int kMostLiterals = 128;
constexpr int kRunMark = 128;
constexpr int kExponentOffset = 136; // a mantissa m with the exponent byte e stands for m * 2^(e - 136)
constexpr int kLargestExponent = 255;
constexpr float kLargestMantissa = 255.0f;

using Rgbe = std::array<unsigned char, kChannels>;

float usable(float value)
{
    const float most = std::ldexp(kLargestMantissa, kLargestExponent - kExponentOffset);
    return value > 0.0f ? std::min(value, most) : 0.0f; // what is no number is not above 0
}

Rgbe rgbeOf(const float* rgb)
{
    const std::array<float, 3> color = {usable(rgb[0]), usable(rgb[1]), usable(rgb[2])};
    const float largest = *std::max_element(color.begin(), color.end());
    int exponent = 0;
    std::frexp(largest, &exponent); // largest is below 2^exponent, and not below half of it
    int byte = exponent + kExponentOffset - 8;
    if (std::round(std::ldexp(largest, kExponentOffset - byte)) > kLargestMantissa)
        ++byte; // rounding up to 256 is the next exponent
    if (largest == 0.0f || byte < 1)
        return {};
    Rgbe result = {};
    for (std::size_t i = 0; i < color.size(); ++i)
        result[i] = static_cast<unsigned char>(
            std::min(std::round(std::ldexp(color[i], kExponentOffset - byte)), kLargestMantissa));
    result[3] = static_cast<unsigned char>(std::min(byte, kLargestExponent));
    return result;
}

int runLength(const std::vector<unsigned char>& bytes, int from)
{
    const int end = std::min(int(bytes.size()), from + kLongestRun);
    int at = from + 1;
    while (at < end && bytes[std::size_t(at)] == bytes[std::size_t(from)])
        ++at;
    return at - from;
}

void appendChannel(QByteArray& file, const std::vector<unsigned char>& bytes)
{
    const int count = int(bytes.size());
    for (int at = 0; at < count;)
    {
        int run = runLength(bytes, at);
        if (run >= kShortestRun)
        {
            file.append(char(kRunMark + run));
            file.append(char(bytes[std::size_t(at)]));
            at += run;
            continue;
        }
        const int start = at;
        while (at < count && at - start < kMostLiterals && (run = runLength(bytes, at)) < kShortestRun)
            at = std::min(at + run, start + kMostLiterals);
        file.append(char(at - start));
        file.append(reinterpret_cast<const char*>(bytes.data()) + start, at - start);
    }
}

void appendCodedRow(QByteArray& file, const std::vector<Rgbe>& row)
{
    const int width = int(row.size());
    for (const int byte : {2, 2, width >> 8, width & 0xff})
        file.append(char(byte));
    std::vector<unsigned char> channel(row.size());
    for (std::size_t i = 0; i < kChannels; ++i)
    {
        std::transform(row.begin(), row.end(), channel.begin(), [i](const Rgbe& pixel) { return pixel[i]; });
        appendChannel(file, channel);
    }
}

// No pixel of ours can be taken for a marker: one of its mantissas is at least 128, or all are 0.
void appendPlainRow(QByteArray& file, const std::vector<Rgbe>& row)
{
    for (const Rgbe& pixel : row)
        file.append(reinterpret_cast<const char*>(pixel.data()), kChannels);
}

} // namespace

QByteArray radianceBytes(const LightImage& image)
{
    QByteArray file = QByteArrayLiteral("#?RADIANCE\nFORMAT=32-bit_rle_rgbe\n\n");
    file += "-Y " + QByteArray::number(image.height) + " +X " + QByteArray::number(image.width) + "\n";
    const bool isCoded = image.width >= kNarrowestCoded && image.width <= kWidestCoded;
    std::vector<Rgbe> row(std::size_t(std::max(image.width, 0)));
    for (int y = 0; y < image.height; ++y)
    {
        for (int x = 0; x < image.width; ++x)
            row[std::size_t(x)] = rgbeOf(image.at(x, y));
        if (isCoded)
            appendCodedRow(file, row);
        else
            appendPlainRow(file, row);
    }
    return file;
}

bool writeRadiance(const LightImage& image, const QString& path, QString& error)
{
    const QByteArray bytes = radianceBytes(image);
    QSaveFile file(path);
    if (file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size() && file.commit())
        return true;
    error = file.errorString();
    return false;
}

} // namespace vrkview
