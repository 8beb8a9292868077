// SPDX-License-Identifier: MIT
#include "RadianceDecoder.h"

#include <gtest/gtest.h>

#include <QFile>
#include <QRegularExpression>

#include <cmath>

namespace
{

class Bytes
{
public:
    explicit Bytes(const QByteArray& bytes, qsizetype at) : _bytes(bytes), _at(at) {}
    int peek(qsizetype ahead) const
    {
        return _at + ahead < _bytes.size() ? static_cast<unsigned char>(_bytes[_at + ahead]) : -1;
    }
    int next()
    {
        const int byte = peek(0);
        ++_at;
        return byte;
    }
    bool isAtEnd() const
    {
        return _at == _bytes.size();
    }

private:
    const QByteArray& _bytes;
    qsizetype _at;
};

bool readChannel(Bytes& bytes, int width, std::vector<unsigned char>& channel)
{
    channel.clear();
    while (int(channel.size()) < width)
    {
        const int code = bytes.next();
        if (code <= 0)
            return false;
        const bool isRun = code > 128;
        const int count = isRun ? code - 128 : code;
        const int value = isRun ? bytes.next() : 0;
        for (int i = 0; i < count; ++i)
            channel.push_back(static_cast<unsigned char>(isRun ? value : bytes.next()));
    }
    return int(channel.size()) == width;
}

bool readRow(Bytes& bytes, int width, RadiancePicture& picture)
{
    const std::size_t first = picture.pixels.size();
    picture.pixels.resize(first + std::size_t(width));
    const bool isCoded = width >= 8 && width < 32768 && bytes.peek(0) == 2 && bytes.peek(1) == 2 && bytes.peek(2) < 128;
    if (!isCoded)
    {
        for (int x = 0; x < width; ++x)
            for (unsigned char& byte : picture.pixels[first + std::size_t(x)])
                byte = static_cast<unsigned char>(bytes.next());
        return true;
    }
    if (bytes.peek(2) * 256 + bytes.peek(3) != width)
        return false;
    for (int i = 0; i < 4; ++i)
        bytes.next();
    ++picture.codedRows;
    std::vector<unsigned char> channel;
    for (std::size_t i = 0; i < 4; ++i)
    {
        if (!readChannel(bytes, width, channel))
            return false;
        for (int x = 0; x < width; ++x)
            picture.pixels[first + std::size_t(x)][i] = channel[std::size_t(x)];
    }
    return true;
}

} // namespace

std::array<double, 3> RadiancePicture::color(int x, int y) const
{
    const Pixel& pixel = at(x, y);
    const double factor = pixel[3] == 0 ? 0.0 : std::ldexp(1.0, pixel[3] - 136);
    return {pixel[0] * factor, pixel[1] * factor, pixel[2] * factor};
}

RadiancePicture decodeRadiance(const QByteArray& file)
{
    static const QRegularExpression header(
        QStringLiteral("^#\\?RADIANCE\\n(?:[^\\n]+\\n)*FORMAT=32-bit_rle_rgbe\\n(?:[^\\n]+\\n)*\\n-Y ([0-9]+) \\+X "
                       "([0-9]+)\\n"));
    const QRegularExpressionMatch match = header.match(QString::fromLatin1(file));
    RadiancePicture picture;
    const int width = match.captured(2).toInt();
    picture.height = match.captured(1).toInt();
    Bytes bytes(file, match.capturedEnd());
    if (!match.hasMatch())
        return {};
    for (int y = 0; y < picture.height; ++y)
        if (!readRow(bytes, width, picture))
            return {};
    picture.width = bytes.isAtEnd() ? width : 0;
    return picture;
}

RadiancePicture readRadiance(const QString& path)
{
    QFile file(path);
    EXPECT_TRUE(file.open(QIODevice::ReadOnly)) << path.toStdString();
    const RadiancePicture picture = decodeRadiance(file.readAll());
    EXPECT_GT(picture.width, 0) << path.toStdString();
    return picture;
}
