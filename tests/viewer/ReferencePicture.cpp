// SPDX-License-Identifier: MIT
#include "ReferencePicture.h"

#include <algorithm>
#include <cmath>
#include <vector>

namespace reference
{

namespace
{

constexpr double kPi = 3.14159265358979323846;

// The viewer's lens and margin.
constexpr double kFieldOfView = 30.0;
constexpr double kFill = 0.86;

// The viewer's light.
constexpr Vec kSky = {0.40, 0.45, 0.53};
constexpr Vec kGround = {0.18, 0.155, 0.13};
constexpr Vec kKey = {0.82, 0.77, 0.68};
constexpr Vec kRim = {0.10, 0.12, 0.15};

Vec multiply(const Vec& a, const Vec& b)
{
    return {a.x * b.x, a.y * b.y, a.z * b.z};
}

Vec mix(const Vec& a, const Vec& b, double t)
{
    return (1.0 - t) * a + t * b;
}

double displayedChannel(double light)
{
    const double knee = 0.6;
    const double bent = light < knee ? light : knee + (1.0 - knee) * (1.0 - std::exp((knee - light) / (1.0 - knee)));
    return 255.0 * std::pow(bent, 1.0 / 2.2);
}

Vec displayed(const Vec& light)
{
    return {displayedChannel(light.x), displayedChannel(light.y), displayedChannel(light.z)};
}

Vec skyAndGround(const Vec& direction)
{
    return mix(kGround, kSky, 0.5 + 0.5 * direction.y);
}

constexpr double kAmbientBesideLights = 0.45;

/// What arrives at a place from a light, and the unit vector to it.
struct Arrival
{
    Vec color;
    Vec toLight;
};

double smoothstep(double low, double high, double x)
{
    const double t = std::clamp((x - low) / (high - low), 0.0, 1.0);
    return t * t * (3.0 - 2.0 * t);
}

Arrival arrival(const Light& light, const Vec& place)
{
    if (light.kind == Light::Kind::Sun)
        return {light.color, -1.0 * light.along};
    const Vec way = light.place - place;
    const Vec toLight = unit(way);
    Vec color = std::min(light.reach * light.reach / dot(way, way), 16.0) * light.color;
    if (light.kind == Light::Kind::Spot)
    {
        const double edge = std::cos(light.cutoff);
        color = smoothstep(edge, edge + 0.2 * (1.0 - edge), -dot(toLight, light.along)) * color;
    }
    return {color, toLight};
}

bool isShadowed(const Light& light, const Vec& place, const Vec& normal, const Vec& toLight, const Shape& shape)
{
    if (!light.castsShadow)
        return false;
    const std::optional<Hit> hit = shape(place + 1.0e-6 * normal, toLight);
    return hit && (light.kind == Light::Kind::Sun || hit->distance < length(light.place - place));
}

/// The light that surfaces get from all sides and from lights.
struct Lit
{
    Vec diffuse;
    Vec specular;
};

void addLight(Lit& lit, double sharpness, const Vec& normal, const Vec& toEye, const Arrival& from)
{
    const double towards = std::max(0.0, dot(normal, from.toLight));
    const double highlight =
        std::pow(std::max(0.0, dot(normal, unit(from.toLight + toEye))), sharpness) * (sharpness / 8.0 + 1.0);
    lit.diffuse = lit.diffuse + towards * from.color;
    lit.specular = lit.specular + (towards * highlight) * from.color;
}

Vec shade(const Surface& surface, const Vec& place, const Vec& normal, const Vec& toEye, const Vec& toKey,
          const Shape& shape, const std::vector<Light>& lights)
{
    const double grazing = std::pow(1.0 - std::max(0.0, dot(normal, toEye)), 4.0);
    const double sharpness = 2.0 / std::pow(surface.roughness, 4.0);
    const Vec reflected = 2.0 * dot(normal, toEye) * normal - toEye;
    const double ambient = lights.empty() ? 1.0 : kAmbientBesideLights;
    Lit lit = {ambient * skyAndGround(normal), ambient * skyAndGround(reflected)};
    if (lights.empty())
        addLight(lit, sharpness, normal, toEye, {kKey, toKey});
    for (const Light& light : lights)
    {
        const Arrival from = arrival(light, place);
        if (dot(normal, from.toLight) > 0.0 && !isShadowed(light, place, normal, from.toLight, shape))
            addLight(lit, sharpness, normal, toEye, from);
    }

    const Vec straight = mix({0.04, 0.04, 0.04}, surface.color, surface.metallic);
    const double smooth = 1.0 - surface.roughness;
    const Vec edge = {std::max(smooth, straight.x), std::max(smooth, straight.y), std::max(smooth, straight.z)};
    const Vec mirrored = mix(straight, edge, grazing);
    return (1.0 - surface.metallic) * multiply(surface.color, lit.diffuse) + multiply(mirrored, lit.specular) +
           (ambient * grazing * (0.5 + 0.5 * normal.y)) * kRim;
}

} // namespace

Vec operator+(const Vec& a, const Vec& b)
{
    return {a.x + b.x, a.y + b.y, a.z + b.z};
}

Vec operator-(const Vec& a, const Vec& b)
{
    return {a.x - b.x, a.y - b.y, a.z - b.z};
}

Vec operator*(double factor, const Vec& a)
{
    return {factor * a.x, factor * a.y, factor * a.z};
}

double dot(const Vec& a, const Vec& b)
{
    return a.x * b.x + a.y * b.y + a.z * b.z;
}

Vec cross(const Vec& a, const Vec& b)
{
    return {a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x};
}

double length(const Vec& a)
{
    return std::sqrt(dot(a, a));
}

Vec unit(const Vec& a)
{
    return (1.0 / length(a)) * a;
}

Camera frame(double azimuth, double elevation, double aspect, const std::function<double(const Vec&)>& support,
             const Vec& center)
{
    const double a = azimuth * kPi / 180.0;
    const double e = elevation * kPi / 180.0;
    Camera camera;
    camera.back = {std::cos(e) * std::sin(a), std::sin(e), std::cos(e) * std::cos(a)};
    camera.right = unit(cross({0.0, 1.0, 0.0}, camera.back));
    camera.up = cross(camera.back, camera.right);
    const double shorter = std::tan(0.5 * kFieldOfView * kPi / 180.0);
    camera.tangentX = aspect > 1.0 ? shorter * aspect : shorter;
    camera.tangentY = aspect > 1.0 ? shorter : shorter / aspect;

    // Four planes through the eye, narrowed by the margin, touch the shape; the picture's narrower way decides how near
    // the eye can come, and in the other way it stands in the middle.
    const double x = kFill * camera.tangentX;
    const double y = kFill * camera.tangentY;
    const auto reach = [&](const Vec& direction) { return support(direction) - dot(direction, center); };
    const double right = reach(camera.right + x * camera.back);
    const double left = reach(x * camera.back - camera.right);
    const double top = reach(camera.up + y * camera.back);
    const double bottom = reach(y * camera.back - camera.up);
    const double distance = std::max((right + left) / (2.0 * x), (top + bottom) / (2.0 * y));
    camera.eye =
        center + distance * camera.back + (0.5 * (right - left)) * camera.right + (0.5 * (top - bottom)) * camera.up;
    return camera;
}

Vec backgroundValue(double u, double v)
{
    const Vec top = {0.030, 0.037, 0.048};
    const Vec bottom = {0.125, 0.135, 0.147};
    const double fromMiddle = (u - 0.5) * (u - 0.5) + (v - 0.5) * (v - 0.5);
    return displayed((1.0 - 0.35 * fromMiddle) * mix(bottom, top, v * v * (3.0 - 2.0 * v)));
}

std::vector<Pixel> draw(const QSize& size, int samplesPerSide, const Camera& camera, const Shape& shape,
                        const Surface& surface, const std::vector<Light>& lights)
{
    const Vec toKey = unit(-0.7 * camera.right + 0.7 * camera.up + 0.55 * camera.back);
    std::vector<Pixel> pixels;
    pixels.reserve(std::size_t(size.width()) * std::size_t(size.height()));
    for (int row = 0; row < size.height(); ++row)
    {
        for (int column = 0; column < size.width(); ++column)
        {
            Pixel pixel;
            Vec lowest = {255.0, 255.0, 255.0};
            Vec highest;
            for (int sample = 0; sample < samplesPerSide * samplesPerSide; ++sample)
            {
                const double u = (column + (sample % samplesPerSide + 0.5) / samplesPerSide) / size.width();
                const double v = 1.0 - (row + (sample / samplesPerSide + 0.5) / samplesPerSide) / size.height();
                const Vec direction = unit((2.0 * u - 1.0) * camera.tangentX * camera.right +
                                           (2.0 * v - 1.0) * camera.tangentY * camera.up - camera.back);
                const std::optional<Hit> hit = shape(camera.eye, direction);
                const Vec value = hit ? displayed(shade(surface, camera.eye + hit->distance * direction, hit->normal,
                                                        -1.0 * direction, toKey, shape, lights))
                                      : backgroundValue(u, v);
                pixel.hits += hit ? 1 : 0;
                pixel.value = pixel.value + value;
                lowest = {std::min(lowest.x, value.x), std::min(lowest.y, value.y), std::min(lowest.z, value.z)};
                highest = {std::max(highest.x, value.x), std::max(highest.y, value.y), std::max(highest.z, value.z)};
            }
            pixel.value = (1.0 / (samplesPerSide * samplesPerSide)) * pixel.value;
            const Vec spread = highest - lowest;
            pixel.spread = std::max({spread.x, spread.y, spread.z});
            pixels.push_back(pixel);
        }
    }
    return pixels;
}

Comparison compare(const QImage& picture, const std::vector<Pixel>& expected)
{
    constexpr double kWrong = 8.0;
    constexpr double kAlike = 4.0; // samples of a pixel that no edge crosses differ by less
    Comparison comparison;
    for (int y = 0; y < picture.height(); ++y)
    {
        for (int x = 0; x < picture.width(); ++x)
        {
            const Pixel& pixel = expected[std::size_t(y) * std::size_t(picture.width()) + std::size_t(x)];
            const QRgb rgb = picture.pixel(x, y);
            const double steps[] = {std::abs(qRed(rgb) - pixel.value.x), std::abs(qGreen(rgb) - pixel.value.y),
                                    std::abs(qBlue(rgb) - pixel.value.z)};
            const bool inside = pixel.spread < kAlike;
            comparison.inside += inside ? 1 : 0;
            comparison.wrongInside += inside && std::max({steps[0], steps[1], steps[2]}) > kWrong ? 1 : 0;
            for (const double step : steps)
            {
                comparison.largest = std::max(comparison.largest, step);
                comparison.mean += step;
                if (inside)
                {
                    comparison.largestInside = std::max(comparison.largestInside, step);
                    comparison.meanInside += step;
                }
            }
        }
    }
    comparison.mean /= 3.0 * picture.width() * picture.height();
    comparison.meanInside /= 3.0 * std::max(1, comparison.inside);
    return comparison;
}

} // namespace reference
