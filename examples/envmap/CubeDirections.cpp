// SPDX-License-Identifier: MIT
#include "CubeDirections.h"

#include <algorithm>
#include <cmath>

namespace envmap
{

namespace
{

constexpr double kPi = 3.14159265358979323846;

// By OpenGL's table of faces: the axis, and what s and t count along.
struct FaceRow
{
    Direction axis;
    Direction s;
    Direction t;
};

constexpr FaceRow kFaces[6] = {
    {{1, 0, 0}, {0, 0, -1}, {0, -1, 0}},  // +x
    {{-1, 0, 0}, {0, 0, 1}, {0, -1, 0}},  // -x
    {{0, 1, 0}, {1, 0, 0}, {0, 0, 1}},    // +y
    {{0, -1, 0}, {1, 0, 0}, {0, 0, -1}},  // -y
    {{0, 0, 1}, {1, 0, 0}, {0, -1, 0}},   // +z
    {{0, 0, -1}, {-1, 0, 0}, {0, -1, 0}}, // -z
};

int faceOf(const Direction& direction)
{
    int axis = 0;
    for (int i = 1; i < 3; ++i)
        if (std::abs(direction[std::size_t(i)]) > std::abs(direction[std::size_t(axis)]))
            axis = i;
    return 2 * axis + (direction[std::size_t(axis)] < 0.0 ? 1 : 0);
}

struct Place
{
    int face;
    double s;
    double t;
};

Place placeOf(const Direction& direction)
{
    const int face = faceOf(direction);
    const FaceRow& row = kFaces[face];
    const double depth = dot(direction, row.axis);
    return {face, dot(direction, row.s) / depth, dot(direction, row.t) / depth};
}

int texelAt(double place, int size)
{
    return std::clamp(int(std::floor((place + 1.0) * 0.5 * size)), 0, size - 1);
}

// Also of texels one beyond an edge, which are those of the neighbour.
const float* faceTexel(const std::array<LightImage, 6>& faces, int face, int x, int y)
{
    const int size = faces[0].width;
    if (x >= 0 && y >= 0 && x < size && y < size)
        return faces[std::size_t(face)].at(x, y);
    const Place place = placeOf(faceDirection(face, 2.0 * (x + 0.5) / size - 1.0, 2.0 * (y + 0.5) / size - 1.0));
    return faces[std::size_t(place.face)].at(texelAt(place.s, size), texelAt(place.t, size));
}

template <typename At> Light interpolated(double x, double y, const At& at)
{
    const double left = std::floor(x);
    const double top = std::floor(y);
    const double u = x - left;
    const double v = y - top;
    Light light = {};
    for (int i = 0; i < 4; ++i)
    {
        const float* const texel = at(int(left) + i % 2, int(top) + i / 2);
        const double weight = (i % 2 ? u : 1.0 - u) * (i / 2 ? v : 1.0 - v);
        for (std::size_t channel = 0; channel < 3; ++channel)
            light[channel] += weight * double(texel[channel]);
    }
    return light;
}

} // namespace

Direction normalized(const Direction& direction)
{
    const double length = std::sqrt(dot(direction, direction));
    return {direction[0] / length, direction[1] / length, direction[2] / length};
}

Direction faceDirection(int face, double s, double t)
{
    const FaceRow& row = kFaces[face];
    Direction direction = {};
    for (std::size_t i = 0; i < 3; ++i)
        direction[i] = row.axis[i] + s * row.s[i] + t * row.t[i];
    return normalized(direction);
}

Direction latLongDirection(double u, double v)
{
    const double phi = (u - 0.5) * 2.0 * kPi;
    const double theta = (v - 0.5) * kPi;
    return {std::cos(phi) * std::cos(theta), std::sin(theta), std::sin(phi) * std::cos(theta)};
}

Light cubeLight(const std::array<LightImage, 6>& faces, const Direction& direction)
{
    const Place place = placeOf(direction);
    const double half = 0.5 * faces[0].width;
    return interpolated((place.s + 1.0) * half - 0.5, (place.t + 1.0) * half - 0.5,
                        [&](int x, int y) { return faceTexel(faces, place.face, x, y); });
}

Light latLongLight(const LightImage& picture, const Direction& direction)
{
    const double u = std::atan2(direction[2], direction[0]) / (2.0 * kPi) + 0.5;
    const double v = std::asin(std::clamp(direction[1], -1.0, 1.0)) / kPi + 0.5;
    return interpolated(
        u * picture.width - 0.5, (1.0 - v) * picture.height - 0.5,
        [&](int x, int y)
        { return picture.at((x + picture.width) % picture.width, std::clamp(y, 0, picture.height - 1)); });
}

double faceTexelSolidAngle(int size, int x, int y)
{
    // Of the rectangle from the middle of the face to a corner.
    const auto corner = [size](int column, int row)
    {
        const double s = 2.0 * column / size - 1.0;
        const double t = 2.0 * row / size - 1.0;
        return std::atan2(s * t, std::sqrt(s * s + t * t + 1.0));
    };
    return corner(x + 1, y + 1) - corner(x, y + 1) - corner(x + 1, y) + corner(x, y);
}

double latLongTexelSolidAngle(int width, int height, int y)
{
    return 2.0 * kPi / width * (std::cos(kPi * y / height) - std::cos(kPi * (y + 1) / height));
}

} // namespace envmap
