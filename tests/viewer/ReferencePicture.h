// SPDX-License-Identifier: MIT
// The viewer's picture computed a second time: a ray caster in double precision with the camera, the light and the
// background written down anew from their definition. It shares no code with the viewer.
#pragma once

#include <QImage>
#include <QSize>

#include <functional>
#include <optional>
#include <vector>

namespace reference
{

struct Vec
{
    double x = 0.0;
    double y = 0.0;
    double z = 0.0;
};

Vec operator+(const Vec& a, const Vec& b);
Vec operator-(const Vec& a, const Vec& b);
Vec operator*(double factor, const Vec& a);
double dot(const Vec& a, const Vec& b);
Vec cross(const Vec& a, const Vec& b);
double length(const Vec& a);
Vec unit(const Vec& a);

struct Camera
{
    Vec eye;
    Vec right;
    Vec up;
    Vec back;
    double tangentX = 1.0; ///< of half the field of view
    double tangentY = 1.0;
};

/// The camera at these angles, in degrees, that shows everything between `minimum` and `maximum` with the viewer's
/// margin. `support` gives the largest value of dot(direction, point) over the shape.
Camera frame(double azimuth, double elevation, double aspect, const std::function<double(const Vec&)>& support,
             const Vec& center);

struct Surface
{
    Vec color; ///< linear
    double roughness = 0.6;
    double metallic = 0.0;
};

struct Hit
{
    double distance = 0.0;
    Vec normal;
};

/// The first place where the ray from `origin` along the unit vector `direction` meets the shape.
using Shape = std::function<std::optional<Hit>(const Vec& origin, const Vec& direction)>;

/// Pixel values 0 to 255 as the viewer shows a place of the background; `u` and `v` run from the lower left corner
/// to 1.
Vec backgroundValue(double u, double v);

struct Pixel
{
    Vec value;         ///< 0 to 255
    int hits = 0;      ///< of the samples
    double spread = 0; ///< largest difference of two samples, in steps of 255
};

/// A light of the scene; with any of them the one beside the camera is out.
struct Light
{
    enum class Kind
    {
        Sun,
        Spot,
        Point
    };

    Kind kind = Kind::Sun;
    Vec place;
    Vec along;           ///< unit vector, the way it shines
    Vec color;           ///< at `reach`; of a sun, anywhere
    double cutoff = 0.0; ///< half the angle of the cone, in radians
    double reach = 1.0;
    bool castsShadow = true;
};

/// A picture of `size` by `samplesPerSide` squared samples a pixel, row by row from the top.
std::vector<Pixel> draw(const QSize& size, int samplesPerSide, const Camera& camera, const Shape& shape,
                        const Surface& surface, const std::vector<Light>& lights = {});

/// Of a picture and what it should be: over pixels whose samples are alike, and over all.
struct Comparison
{
    double largestInside = 0.0;
    double meanInside = 0.0;
    double largest = 0.0;
    double mean = 0.0;
    int inside = 0;
    int wrongInside = 0; ///< by more than a shadow's edge costs where it is soft
};
Comparison compare(const QImage& picture, const std::vector<Pixel>& expected);

} // namespace reference
