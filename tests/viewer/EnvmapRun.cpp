// SPDX-License-Identifier: MIT
#include "EnvmapRun.h"

#include <gtest/gtest.h>

#include <QDir>
#include <QRegularExpression>

#include <algorithm>
#include <cmath>

namespace
{

constexpr double kPi = 3.14159265358979323846;

std::array<unsigned char, 4> rgbe(const Color& color)
{
    const double largest = *std::max_element(color.begin(), color.end());
    if (largest <= 0.0)
        return {};
    const int exponent = int(std::floor(std::log2(largest))) + 1;
    std::array<unsigned char, 4> result = {};
    for (std::size_t i = 0; i < 3; ++i)
        result[i] = static_cast<unsigned char>(std::min(255.0, std::round(color[i] * std::ldexp(256.0, -exponent))));
    result[3] = static_cast<unsigned char>(exponent + 128);
    return result;
}

} // namespace

Vector faceDirection(int face, double s, double t)
{
    const Vector directions[] = {{1, -t, -s}, {-1, -t, s}, {s, 1, t}, {s, -1, -t}, {s, -t, 1}, {-s, -t, -1}};
    const Vector& d = directions[face];
    const double length = std::hypot(d[0], d[1], d[2]);
    return {d[0] / length, d[1] / length, d[2] / length};
}

Vector stripDirection(int height, int x, int y)
{
    return faceDirection(x / height, 2.0 * (x % height + 0.5) / height - 1.0, 2.0 * (y + 0.5) / height - 1.0);
}

Vector latLongDirection(int width, int height, int x, int y)
{
    const double longitude = (2.0 * (x + 0.5) / width - 1.0) * kPi;
    const double latitude = (0.5 - (y + 0.5) / height) * kPi;
    return {std::cos(longitude) * std::cos(latitude), std::sin(latitude), std::sin(longitude) * std::cos(latitude)};
}

QByteArray plainRadiance(int width, int height, const std::function<Color(int, int)>& color)
{
    QByteArray file = "#?RADIANCE\nFORMAT=32-bit_rle_rgbe\n\n-Y " + QByteArray::number(height) + " +X " +
                      QByteArray::number(width) + "\n";
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x)
            for (const unsigned char byte : rgbe(color(x, y)))
                file.append(char(byte));
    return file;
}

QByteArray latLongFile(int width, const Environment3D& environment)
{
    const int height = width / 2;
    return plainRadiance(width, height,
                         [&](int x, int y) { return environment(latLongDirection(width, height, x, y)); });
}

QByteArray stripFile(int face, const Environment3D& environment)
{
    return plainRadiance(6 * face, face, [&](int x, int y) { return environment(stripDirection(face, x, y)); });
}

Color waves(const Vector& direction)
{
    return {0.5 + 0.3 * std::sin(2.0 * direction[0] + direction[1]), 0.5 + 0.3 * direction[1],
            0.5 + 0.3 * std::cos(1.5 * direction[2] - direction[0])};
}

EnvmapRun::EnvmapRun(const ModelFolder& folder, const QStringList& arguments, const Environment& environment)
    : _folder(folder.path("out")),
      _run(runProgram(QStringLiteral(VRKENVMAP_PROGRAM), arguments + QStringList{"--output", _folder}, environment))
{
    EXPECT_TRUE(_run.ended);
    EXPECT_EQ(_run.exitCode, 0) << _run.errors.constData();
    QStringList told = QString::fromUtf8(_run.output).split('\n', Qt::SkipEmptyParts);
    for (QString& path : told)
        path = QFileInfo(path).fileName();
    told.sort();
    QStringList there = files();
    there.sort();
    EXPECT_EQ(told, there);
    for (const QByteArray& line : _run.errors.split('\n'))
        EXPECT_TRUE(line.isEmpty() || line.startsWith("vrk-envmap: ")) << line.constData();
}

QStringList EnvmapRun::files() const
{
    return QDir(_folder).entryList(QDir::AllEntries | QDir::NoDotAndDotDot | QDir::Hidden);
}

RadiancePicture EnvmapRun::hdr(const QString& name) const
{
    return readRadiance(QDir(_folder).filePath(name));
}

QImage EnvmapRun::png(const QString& name) const
{
    const QImage image(QDir(_folder).filePath(name));
    EXPECT_FALSE(image.isNull()) << name.toStdString();
    return image;
}

std::vector<double> EnvmapRun::levelNumbers(const QString& word) const
{
    std::vector<double> numbers;
    const QRegularExpression pattern(QStringLiteral("level [0-9]+,.*%1 ([-+.0-9e]+)").arg(word));
    for (const QByteArray& line : _run.errors.split('\n'))
        if (const QRegularExpressionMatch match = pattern.match(QString::fromUtf8(line)); match.hasMatch())
            numbers.push_back(match.captured(1).toDouble());
    return numbers;
}

void expectEnvmapRefused(const ModelFolder& folder, const QStringList& arguments, const QString& words,
                         const Environment& environment)
{
    const QStringList before = folder.entries();
    const ViewerRun run = runProgram(QStringLiteral(VRKENVMAP_PROGRAM), arguments, environment);
    const std::string command = arguments.join(QLatin1Char(' ')).toStdString();
    EXPECT_TRUE(run.ended) << command;
    EXPECT_EQ(run.exitCode, 1) << command;
    EXPECT_EQ(run.output, QByteArray()) << command;
    EXPECT_EQ(run.errors.count('\n'), 1) << command << " said: " << run.errors.constData();
    EXPECT_TRUE(run.errors.startsWith("vrk-envmap: ") && run.errors.endsWith('\n')) << run.errors.constData();
    EXPECT_TRUE(QString::fromUtf8(run.errors).contains(words)) << command << " said: " << run.errors.constData();
    EXPECT_EQ(folder.entries(), before) << command;
}

void expectStrip(const RadiancePicture& strip, const Environment3D& environment, double tolerance)
{
    ASSERT_EQ(strip.width, 6 * strip.height);
    for (int y = 0; y < strip.height; ++y)
    {
        for (int x = 0; x < strip.width; ++x)
        {
            const Color wanted = environment(stripDirection(strip.height, x, y));
            for (std::size_t i = 0; i < 3; ++i)
                ASSERT_NEAR(strip.color(x, y)[i], wanted[i], tolerance)
                    << "face " << x / strip.height << ", texel " << x % strip.height << ' ' << y;
        }
    }
}
