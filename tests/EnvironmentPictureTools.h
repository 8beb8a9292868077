// SPDX-License-Identifier: MIT
#pragma once

/// \file
/// Pictures of environments on the CPU, in double precision: mip chains, latitude-longitude maps and cubes, sampled as
/// OpenGL samples them, and what they show.

#include "EnvironmentTestTools.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <random>
#include <utility>
#include <vector>

namespace Harrow::Vrk::Test::Environment
{

// ---- pictures ------------------------------------------------------------------------------------------------------

struct Image
{
    int width = 0;
    int height = 0;
    std::vector<Vec> texels; // row 0 first, which is v = 0

    Image() = default;
    Image(int w, int h) : width(w), height(h), texels(std::size_t(w) * std::size_t(h)) {}

    Vec& at(int x, int y)
    {
        return texels[std::size_t(y) * std::size_t(width) + std::size_t(x)];
    }
    const Vec& at(int x, int y) const
    {
        return texels[std::size_t(y) * std::size_t(width) + std::size_t(x)];
    }
};

/// Half as large, each texel the mean of four (or two, where a side is 1). For even sides.
inline Image halved(const Image& image)
{
    Image half(std::max(image.width / 2, 1), std::max(image.height / 2, 1));
    const int stepX = image.width / half.width;
    const int stepY = image.height / half.height;
    for (int y = 0; y < half.height; ++y)
        for (int x = 0; x < half.width; ++x)
        {
            Vec sum;
            for (int j = 0; j < stepY; ++j)
                for (int i = 0; i < stepX; ++i)
                    sum = sum + image.at(x * stepX + i, y * stepY + j);
            half.at(x, y) = sum * (1.0 / (stepX * stepY));
        }
    return half;
}

using Levels = std::vector<Image>;

/// For sides that are powers of 2.
inline Levels mipChain(Image base)
{
    Levels levels = {std::move(base)};
    while (levels.back().width > 1 || levels.back().height > 1)
        levels.push_back(halved(levels.back()));
    return levels;
}

enum class Wrap
{
    eRepeat,
    eClamp
};

/// Linear filtering; clamped in v.
inline Vec sampleLinear(const Image& image, double u, double v, Wrap wrapU)
{
    const double x = u * image.width - 0.5;
    const double y = v * image.height - 0.5;
    const double x0 = std::floor(x);
    const double y0 = std::floor(y);
    const auto column = [&](double at)
    {
        const int i = int(at);
        return wrapU == Wrap::eRepeat ? (i % image.width + image.width) % image.width
                                      : std::clamp(i, 0, image.width - 1);
    };
    const auto row = [&](double at) { return std::clamp(int(at), 0, image.height - 1); };
    const auto between = [](const Vec& a, const Vec& b, double t) { return a * (1.0 - t) + b * t; };
    const Vec south = between(image.at(column(x0), row(y0)), image.at(column(x0 + 1), row(y0)), x - x0);
    const Vec north = between(image.at(column(x0), row(y0 + 1)), image.at(column(x0 + 1), row(y0 + 1)), x - x0);
    return between(south, north, y - y0);
}

/// The level that GL_LINEAR_MIPMAP_NEAREST takes.
inline std::size_t nearestLevel(double level, std::size_t count)
{
    if (!(level > 0.5))
        return 0;
    return std::min(std::size_t(std::ceil(level + 0.5)) - 1, count - 1);
}

inline Vec sampleLatLong(const Levels& levels, const Vec& direction, double level, Wrap wrap = Wrap::eRepeat)
{
    const double u = std::atan2(direction.z, direction.x) / (2.0 * kPi) + 0.5;
    const double v = std::asin(std::clamp(direction.y, -1.0, 1.0)) / kPi + 0.5;
    return sampleLinear(levels[nearestLevel(level, levels.size())], u, v, wrap);
}

/// A cube map: six mip chains in OpenGL's order of faces.
using Cube = std::array<Levels, 6>;

/// Where a direction meets the cube: face, and place in it from 0 to 1.
struct CubePlace
{
    int face;
    double s;
    double t;
};

inline CubePlace placeOf(const Vec& d)
{
    const double ax = std::abs(d.x);
    const double ay = std::abs(d.y);
    const double az = std::abs(d.z);
    const auto place = [](int face, double sc, double tc, double ma) {
        return CubePlace{face, (sc / ma + 1.0) / 2.0, (tc / ma + 1.0) / 2.0};
    };
    if (ax >= ay && ax >= az)
        return d.x >= 0 ? place(0, -d.z, -d.y, ax) : place(1, d.z, -d.y, ax);
    if (ay >= az)
        return d.y >= 0 ? place(2, d.x, d.z, ay) : place(3, d.x, -d.z, ay);
    return d.z >= 0 ? place(4, d.x, -d.y, az) : place(5, -d.x, -d.y, az);
}

/// The inverse: s and t from 0 to 1.
inline Vec directionOfFace(int face, double s, double t)
{
    const double a = 2.0 * s - 1.0;
    const double b = 2.0 * t - 1.0;
    const Vec directions[] = {{1, -b, -a}, {-1, -b, a}, {a, 1, b}, {a, -1, -b}, {a, -b, 1}, {-a, -b, -1}};
    return normalize(directions[face]);
}

/// Each face for itself, clamped at its edges.
inline Vec sampleCube(const Cube& cube, const Vec& direction, double level)
{
    const CubePlace place = placeOf(direction);
    const Levels& levels = cube[std::size_t(place.face)];
    return sampleLinear(levels[nearestLevel(level, levels.size())], place.s, place.t, Wrap::eClamp);
}

// ---- environments --------------------------------------------------------------------------------------------------

/// A sky with a sun, a bright horizon and dark ground of another colour, between 0.02 and about 60.
inline Vec sky(const Vec& d)
{
    const Vec sun = normalize({0.6, 0.5, -0.4});
    const double glow = std::exp(40.0 * (dot(d, sun) - 1.0));
    const double horizon = std::exp(-12.0 * d.y * d.y);
    const double above = 1.0 / (1.0 + std::exp(-20.0 * d.y));
    const Vec base = Vec{0.05, 0.04, 0.02} * (1.0 - above) + Vec{0.2, 0.4, 0.9} * above;
    return base + Vec{0.8, 0.7, 0.6} * horizon + Vec{60, 50, 35} * glow + Vec{0, 0.1, 0.2} * (d.x + 1.0);
}

template <typename Function> Image latLongImage(int width, int height, const Function& colorOf)
{
    Image image(width, height);
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x)
            image.at(x, y) = colorOf(directionOfTexel(x, y, width, height));
    return image;
}

template <typename Function> Image faceImage(int face, int size, const Function& colorOf)
{
    Image image(size, size);
    for (int y = 0; y < size; ++y)
        for (int x = 0; x < size; ++x)
            image.at(x, y) = colorOf(directionOfFace(face, (x + 0.5) / size, (y + 0.5) / size));
    return image;
}

template <typename Function> Cube cubeOf(int size, const Function& colorOf)
{
    Cube cube;
    for (int face = 0; face < 6; ++face)
        cube[std::size_t(face)] = mipChain(faceImage(face, size, colorOf));
    return cube;
}

/// Texels without any order, from 0 to 1.
inline Image noiseImage(int width, int height, unsigned seed)
{
    std::minstd_rand random(seed);
    Image image(width, height);
    for (Vec& texel : image.texels)
    {
        const auto next = [&random] { return double(random() % 1000) / 1000.0; };
        texel.x = next();
        texel.y = next();
        texel.z = next();
    }
    return image;
}

} // namespace Harrow::Vrk::Test::Environment
