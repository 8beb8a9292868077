// SPDX-License-Identifier: MIT
#include "BuiltInPictures.h"

#include <QVector3D>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>

namespace vrkview
{

namespace
{

constexpr int kSide = 256;        // texels
constexpr int kFriezeHeight = 64; // texels
constexpr float kPi = 3.14159265f;

/// From 0 to 1, the same for the same cell and the same purpose.
float chance(int column, int row, int purpose = 0)
{
    auto bits = std::uint32_t(row * 7919 + column * 104729 + purpose * 15485863 + 1);
    bits = (bits ^ (bits >> 15)) * 2246822519u;
    bits = (bits ^ (bits >> 13)) * 3266489917u;
    return float((bits ^ (bits >> 16)) & 0xFFFFu) / 65535.0f;
}

float mixed(float a, float b, float share)
{
    return a + (b - a) * share;
}

/// From 0 to 1, smooth, and repeats after `period` cells.
float smoothNoise(float x, float y, int period)
{
    const auto at = [period](int column, int row) { return chance(column % period, row % period); };
    const int column = int(std::floor(x));
    const int row = int(std::floor(y));
    const float u = x - float(column);
    const float v = y - float(row);
    const float su = u * u * (3.0f - 2.0f * u);
    const float sv = v * v * (3.0f - 2.0f * v);
    return mixed(mixed(at(column, row), at(column + 1, row), su),
                 mixed(at(column, row + 1), at(column + 1, row + 1), su), sv);
}

/// Calls `color` for places from 0 to 1 each way, from the top left: several in each texel, of which it is the mean.
template <typename Color> QImage makePicture(int width, int height, const Color& color)
{
    constexpr int kSamples = 3; // each way
    QImage image(width, height, QImage::Format_RGB32);
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x)
        {
            QVector3D sum;
            for (int sample = 0; sample < kSamples * kSamples; ++sample)
            {
                const int column = sample % kSamples;
                const int row = sample / kSamples;
                const float dx = (float(column) + 0.5f) / kSamples;
                const float dy = (float(row) + 0.5f) / kSamples;
                sum += color((float(x) + dx) / float(width), (float(y) + dy) / float(height));
            }
            const QVector3D mean = sum / float(kSamples * kSamples);
            const auto byte = [](float value) { return int(std::lround(255.0f * std::clamp(value, 0.0f, 1.0f))); };
            image.setPixel(x, y, qRgb(byte(mean.x()), byte(mean.y()), byte(mean.z())));
        }
    return image;
}

/// A square one of grey.
template <typename Lightness> QImage makeGrey(const Lightness& lightness)
{
    return makePicture(kSide, kSide,
                       [&lightness](float u, float v)
                       {
                           const float grey = lightness(u, v);
                           return QVector3D(grey, grey, grey);
                       });
}

float fraction(float value)
{
    return value - std::floor(value);
}

// How far a place is from the middle of the nearest repeat, from 0 to 1/2.
float fromMiddle(float value)
{
    return std::fabs(fraction(value) - 0.5f);
}

/// The ornaments, whether ink is at a place: x from 0 to 4 along the frieze, y from 0 to 1 upwards.
bool ornament(int number, float x, float y)
{
    const float fromAxis = std::fabs(y - 0.5f);
    switch (number % 5)
    {
    case 0: // a meander: a line that turns into itself
    {
        const int column = int(fraction(x) * 6.0f);
        const int row = int(y * 6.0f);
        constexpr const char* kMeander[] = {"######", "#.....", "#.####", "#.#..#", "#.##.#", "#....#"};
        return kMeander[std::clamp(5 - row, 0, 5)][std::clamp(column, 0, 5)] == '#';
    }
    case 1: // waves
        return y < 0.5f + 0.34f * std::sin(2.0f * kPi * x) * std::cos(0.6f * kPi * fraction(x)) &&
               fromMiddle(x + 0.25f) + fromAxis > 0.22f;
    case 2: // lozenges, each in a larger one
    {
        const float reach = fromMiddle(x) + fromAxis;
        return reach < 0.22f || (reach > 0.32f && reach < 0.44f);
    }
    case 3: // rings
    {
        const float reach = std::hypot(fromMiddle(x), fromAxis);
        return reach < 0.12f || (reach > 0.24f && reach < 0.38f);
    }
    default: // a zigzag between two rows of dots
    {
        const float line = std::fabs(y - (0.28f + 0.88f * fromMiddle(x)));
        const float dot = std::hypot(fromMiddle(x), std::min(std::fabs(y - 0.16f), std::fabs(y - 1.2f)));
        return line < 0.11f || dot < 0.1f;
    }
    }
}

} // namespace

QImage makeSlabs()
{
    return makeGrey(
        [](float u, float v)
        {
            const float x = std::fmod(2.0f * u, 1.0f);
            const float y = std::fmod(2.0f * v, 1.0f);
            if (std::min(std::min(x, 1.0f - x), std::min(y, 1.0f - y)) < 0.012f)
                return 0.52f;
            const int slab = int(2.0f * u) + 2 * int(2.0f * v);
            const float grain =
                0.6f * smoothNoise(16.0f * u, 16.0f * v, 16) + 0.4f * smoothNoise(64.0f * u, 64.0f * v, 64);
            return 0.84f + 0.04f * float(slab % 3) + 0.10f * (grain - 0.5f);
        });
}

QImage makeVeins()
{
    return makeGrey(
        [](float u, float v)
        {
            const float bend = 3.0f * smoothNoise(4.0f * u, 4.0f * v, 4) + 1.2f * smoothNoise(16.0f * u, 16.0f * v, 16);
            const float vein = std::fabs(std::sin(2.0f * kPi * (2.0f * u + v) + bend));
            return 0.97f - 0.16f * std::pow(1.0f - vein, 6.0f) - 0.04f * smoothNoise(8.0f * u, 8.0f * v, 8);
        });
}

QImage makeTerrazzo()
{
    constexpr int kCells = 14; // each with one chip
    const QVector3D chips[] = {{0.86f, 0.83f, 0.77f}, {0.62f, 0.35f, 0.27f}, {0.30f, 0.36f, 0.40f},
                               {0.78f, 0.63f, 0.42f}, {0.52f, 0.58f, 0.53f}, {0.24f, 0.22f, 0.24f}};
    return makePicture(kSide, kSide,
                       [&chips](float u, float v)
                       {
                           // The two nearest middles: between them runs the cement.
                           float nearest = std::numeric_limits<float>::max();
                           float second = nearest;
                           int kind = 0;
                           const int column = int(u * kCells);
                           const int row = int(v * kCells);
                           for (int cell = 0; cell < 9; ++cell)
                           {
                               const int x = column + cell % 3 - 1;
                               const int y = row + cell / 3 - 1;
                               const int wrappedX = (x + kCells) % kCells;
                               const int wrappedY = (y + kCells) % kCells;
                               const float distance = std::hypot(u * kCells - float(x) - chance(wrappedX, wrappedY, 1),
                                                                 v * kCells - float(y) - chance(wrappedX, wrappedY, 2));
                               second = std::min(second, std::max(distance, nearest));
                               if (distance < nearest)
                               {
                                   nearest = distance;
                                   kind = int(chance(wrappedX, wrappedY, 3) * 5.999f);
                               }
                           }
                           return second - nearest < 0.16f ? QVector3D(0.80f, 0.79f, 0.77f) : chips[kind];
                       });
}

QImage makeWood()
{
    constexpr int kBoards = 4;
    return makePicture(kSide, kSide,
                       [](float u, float v)
                       {
                           const int board = int(v * kBoards);
                           const float across = fraction(v * kBoards);
                           const float along = u + chance(board, 5);
                           const float bend = 0.35f * smoothNoise(4.0f * along, 16.0f * v, 4);
                           const float ring = fraction(5.0f * (across + bend) + 3.0f * chance(board, 6));
                           const float fibre = smoothNoise(16.0f * along, 128.0f * v, 16);
                           const float shade = 0.72f + 0.16f * ring + 0.08f * fibre - 0.10f * chance(board, 7);
                           const bool isJoint = across < 0.03f;
                           return (isJoint ? 0.35f : shade) * QVector3D(0.86f, 0.60f, 0.38f);
                       });
}

QImage makeStripes()
{
    return makePicture(kSide, kSide,
                       [](float u, float v) {
                           return fraction(4.0f * (u + v)) < 0.5f ? QVector3D(0.91f, 0.72f, 0.18f)
                                                                  : QVector3D(0.93f, 0.90f, 0.82f);
                       });
}

QImage makeRelief(const QImage& heights, float depth)
{
    const int width = heights.width();
    const int height = heights.height();
    const auto at = [&](int x, int y)
    { return float(qGray(heights.pixel((x + width) % width, (y + height) % height))) / 255.0f; };
    QImage image(width, height, QImage::Format_RGB32);
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x)
        {
            const float right = depth * (at(x + 1, y) - at(x - 1, y));
            const float upwards = depth * (at(x, y - 1) - at(x, y + 1));
            const QVector3D normal = QVector3D(-right, -upwards, 1.0f).normalized();
            const auto byte = [](float value) { return int(std::lround(127.5f + 127.5f * value)); };
            image.setPixel(x, y, qRgb(byte(normal.x()), byte(normal.y()), byte(normal.z())));
        }
    return image;
}

QImage makeFrieze(int number)
{
    const QVector3D grounds[] = {{0.20f, 0.35f, 0.44f},
                                 {0.62f, 0.28f, 0.20f},
                                 {0.27f, 0.41f, 0.31f},
                                 {0.70f, 0.55f, 0.26f},
                                 {0.36f, 0.27f, 0.40f}};
    const QVector3D ground = grounds[(2 * number + number / 5) % 5];
    const QVector3D ink(0.94f, 0.90f, 0.80f);
    return makePicture(4 * kFriezeHeight, kFriezeHeight,
                       [&](float u, float v)
                       {
                           constexpr float kBorder = 0.14f;
                           const float y = 1.0f - v;
                           const bool isLine = std::min(y, v) > 0.04f && std::min(y, v) < 0.09f;
                           const float inside = (y - kBorder) / (1.0f - 2.0f * kBorder);
                           const bool isInk = inside > 0.0f && inside < 1.0f && ornament(number, 4.0f * u, inside);
                           return isLine || isInk ? ink : ground;
                       });
}

} // namespace vrkview
