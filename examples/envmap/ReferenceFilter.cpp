// SPDX-License-Identifier: MIT
#include "ReferenceFilter.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdint>
#include <thread>

namespace envmap
{

using namespace Harrow::Vrk;

namespace
{

constexpr double kPi = 3.14159265358979323846;
constexpr int kSamples = 16384;
constexpr int kLobeSteps = 4096;
// A lobe that covers more texels is a sum over them, the coarsest ones that are still so many in it.
constexpr double kFewestTexels = 1024.0;
// Of a narrower one the middle is sampled, as far out as so many texels; there the weight hardly changes within a
// texel, and the rest is a sum. Without that sum a lamp that only the rim of the lobe sees would be found by luck.
constexpr double kReachInTexels = 16.0;
constexpr std::size_t kMostTexels = std::size_t(6) * 256 * 256;

// ---- shading models ------------------------------------------------------------------------------------------------

bool isDiffuse(ShadingModel model)
{
    return model >= SHADING_DIFFUSE_START_INDEX;
}

bool isPower(ShadingModel model)
{
    return model == SHADING_TRADITIONAL || model == SHADING_ENERY_CONSERVING;
}

// What of the roughness the formulas want: the exponent of the cosine, or alpha squared.
double shapeOf(ShadingModel model, double roughness)
{
    return isPower(model) ? std::exp2(10.0 * (1.0 - std::sqrt(std::clamp(roughness, 0.0, 1.0))) + 4.0)
                          : std::pow(roughness, 4.0);
}

// The density of the directions of light for each steradian, by the cosine between them and the normal; the half
// vector stands half way between the two.
double density(ShadingModel model, double shape, double cosine)
{
    if (isDiffuse(model))
        return cosine / kPi;
    const double half = std::sqrt(0.5 * (1.0 + cosine));
    if (isPower(model))
        return (shape + 1.0) / (2.0 * kPi) * std::pow(half, shape - 1.0) / 4.0;
    const double bulge = half * half * (shape - 1.0) + 1.0;
    return shape / (kPi * bulge * bulge) / 4.0;
}

// The cosine between light and normal up to which the part `u` of the samples lies; what is below the horizon comes out
// negative.
double cosineOf(ShadingModel model, double shape, double u)
{
    if (isDiffuse(model))
        return std::sqrt(1.0 - u);
    double half = 0.0;
    if (isPower(model))
        half = std::pow(1.0 - u, 1.0 / (shape + 1.0));
    else
        half = std::sqrt((1.0 - u) / (1.0 + (shape - 1.0) * u));
    return 2.0 * half * half - 1.0;
}

// The other way around: the part of the samples within that cosine.
double partWithin(ShadingModel model, double shape, double cosine)
{
    if (isDiffuse(model))
        return 1.0 - cosine * cosine;
    const double squaredHalf = 0.5 * (1.0 + cosine);
    if (isPower(model))
        return 1.0 - std::pow(squaredHalf, 0.5 * (shape + 1.0));
    return (1.0 - squaredHalf) / (1.0 + (shape - 1.0) * squaredHalf);
}

double mirroredBits(std::uint32_t number)
{
    std::uint32_t mirrored = 0;
    for (int bit = 0; bit < 32; ++bit, number >>= 1)
        mirrored = (mirrored << 1) | (number & 1u);
    return mirrored / 4294967296.0;
}

// Two directions that stand upright on the normal and on each other.
void frame(const Direction& normal, Direction& first, Direction& second)
{
    const Direction other = std::abs(normal[0]) < 0.6 ? Direction{1, 0, 0} : Direction{0, 1, 0};
    first = normalized({normal[1] * other[2] - normal[2] * other[1], normal[2] * other[0] - normal[0] * other[2],
                        normal[0] * other[1] - normal[1] * other[0]});
    second = {normal[1] * first[2] - normal[2] * first[1], normal[2] * first[0] - normal[0] * first[2],
              normal[0] * first[1] - normal[1] * first[0]};
}

// ---- sums ----------------------------------------------------------------------------------------------------------

EnvironmentTexel texelOf(const Direction& direction, const float* rgb, double solidAngle)
{
    return {direction, {double(rgb[0]), double(rgb[1]), double(rgb[2])}, solidAngle};
}

bool canBeHalved(int side)
{
    return side >= 2 && side % 2 == 0;
}

// Each texel the mean of four, by their solid angles.
LightImage halved(const LightImage& image, const std::function<double(int, int)>& solidAngle)
{
    LightImage result(image.width / 2, image.height / 2);
    for (int y = 0; y < result.height; ++y)
    {
        for (int x = 0; x < result.width; ++x)
        {
            WeightedLight light;
            for (int i = 0; i < 4; ++i)
            {
                const float* const texel = image.at(2 * x + i % 2, 2 * y + i / 2);
                light.add({double(texel[0]), double(texel[1]), double(texel[2])},
                          solidAngle(2 * x + i % 2, 2 * y + i / 2));
            }
            const Light mean = light.mean();
            std::copy(mean.begin(), mean.end(), result.at(x, y));
        }
    }
    return result;
}

} // namespace

// ---- the environment -----------------------------------------------------------------------------------------------

ReferenceEnvironment::ReferenceEnvironment(CubeFaces faces) : _faces(std::move(faces))
{
    CubeFaces level = _faces;
    addTexels(level);
    while (canBeHalved(level[0].width))
    {
        const int size = level[0].width;
        for (LightImage& face : level)
            face = halved(face, [size](int x, int y) { return faceTexelSolidAngle(size, x, y); });
        addTexels(level);
    }
}

ReferenceEnvironment::ReferenceEnvironment(LightImage latLong) : _latLong(std::move(latLong))
{
    LightImage level = _latLong;
    addTexels(level);
    while (canBeHalved(level.width) && canBeHalved(level.height))
    {
        const int width = level.width;
        const int height = level.height;
        level = halved(level, [=](int, int y) { return latLongTexelSolidAngle(width, height, y); });
        addTexels(level);
    }
}

void ReferenceEnvironment::addTexels(const CubeFaces& faces)
{
    std::vector<EnvironmentTexel>& texels = _texels.emplace_back();
    const int size = faces[0].width;
    for (int face = 0; face < int(faces.size()); ++face)
        for (int y = 0; y < size; ++y)
            for (int x = 0; x < size; ++x)
                texels.push_back(
                    texelOf(faceDirection(face, 2.0 * (x + 0.5) / size - 1.0, 2.0 * (y + 0.5) / size - 1.0),
                            faces[std::size_t(face)].at(x, y), faceTexelSolidAngle(size, x, y)));
}

void ReferenceEnvironment::addTexels(const LightImage& latLong)
{
    std::vector<EnvironmentTexel>& texels = _texels.emplace_back();
    const int width = latLong.width;
    const int height = latLong.height;
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x)
            texels.push_back(texelOf(latLongDirection((x + 0.5) / width, 1.0 - (y + 0.5) / height), latLong.at(x, y),
                                     latLongTexelSolidAngle(width, height, y)));
}

Light ReferenceEnvironment::light(const Direction& direction) const
{
    return _latLong.isEmpty() ? cubeLight(_faces, direction) : latLongLight(_latLong, direction);
}

// ---- the filter ----------------------------------------------------------------------------------------------------

ReferenceFilter::ReferenceFilter(const ReferenceEnvironment& environment, const ReferenceSettings& settings)
    : _environment(environment), _settings(settings), _shape(shapeOf(settings.model, settings.roughness))
{
    if (settings.countsTexels)
    {
        _texels = &environment.texels().front();
        return;
    }
    const double covered = lobe() / (4.0 * kPi); // part of all directions
    for (const std::vector<EnvironmentTexel>& texels : environment.texels())
        if (covered * double(texels.size()) >= kFewestTexels)
            _texels = &texels;
    if (!_texels)
        makeSamples();
}

void ReferenceFilter::makeSamples()
{
    _texels = &_environment.texels().front();
    for (const std::vector<EnvironmentTexel>& texels : _environment.texels())
        if (_texels->size() > kMostTexels)
            _texels = &texels;
    const double texelSide = std::sqrt(4.0 * kPi / double(_texels->size()));
    _reach = std::cos(std::min(kReachInTexels * texelSide, 0.5 * kPi));
    const double part = partWithin(_settings.model, _shape, _reach);
    for (int i = 0; i < kSamples; ++i)
    {
        const double cosine = cosineOf(_settings.model, _shape, part * (i + 0.5) / kSamples);
        const double sine = std::sqrt(std::max(0.0, 1.0 - cosine * cosine));
        const double phi = 2.0 * kPi * mirroredBits(std::uint32_t(i));
        _samples.push_back({{sine * std::cos(phi), sine * std::sin(phi), cosine}, cosine * part / kSamples});
    }
}

double ReferenceFilter::weight(double cosine) const
{
    return _settings.countsTexels ? cosine : cosine * density(_settings.model, _shape, cosine);
}

// The solid angle that an even weight would need to spread as far: (integral of w)^2 / integral of w^2.
double ReferenceFilter::lobe() const
{
    double first = 0.0;
    double second = 0.0;
    for (int i = 0; i < kLobeSteps; ++i)
    {
        const double cosine = cosineOf(_settings.model, _shape, (i + 0.5) / kLobeSteps);
        if (cosine <= 0.0)
            continue;
        first += cosine / kLobeSteps;
        second += cosine * weight(cosine) / kLobeSteps;
    }
    return std::isfinite(second) && second > 0.0 ? first * first / second : 0.0;
}

Light ReferenceFilter::filtered(const Direction& normal) const
{
    WeightedLight light;
    addSamples(normal, light);
    addTexels(normal, light);
    return light.mean();
}

void ReferenceFilter::addSamples(const Direction& normal, WeightedLight& light) const
{
    Direction first;
    Direction second;
    frame(normal, first, second);
    for (const Sample& sample : _samples)
    {
        Direction direction;
        for (std::size_t i = 0; i < 3; ++i)
            direction[i] =
                sample.direction[0] * first[i] + sample.direction[1] * second[i] + sample.direction[2] * normal[i];
        light.add(_environment.light(direction), sample.weight);
    }
}

// Those that no sample stands for.
void ReferenceFilter::addTexels(const Direction& normal, WeightedLight& light) const
{
    for (const EnvironmentTexel& texel : *_texels)
    {
        const double cosine = dot(normal, texel.direction);
        if (cosine > 0.0 && cosine < _reach)
            light.add(texel.light, weight(cosine) * (_settings.countsTexels ? 1.0 : texel.solidAngle));
    }
}

QString ReferenceFilter::method() const
{
    const QString sum = QStringLiteral("a sum over %1 texels").arg(_texels->size());
    return _samples.empty() ? sum : QStringLiteral("%1 directions and %2").arg(kSamples).arg(sum);
}

// ---- comparing -----------------------------------------------------------------------------------------------------

namespace
{

std::vector<FilteredTexel> spreadTexels(const LightImage& map, int most,
                                        const std::function<Direction(int, int)>& direction)
{
    const std::int64_t all = std::int64_t(map.width) * map.height;
    const std::int64_t count = std::min<std::int64_t>(all, most);
    std::vector<FilteredTexel> texels;
    for (std::int64_t i = 0; i < count; ++i)
    {
        // From the middle of each of `count` equal parts.
        const std::int64_t index = (2 * i + 1) * all / (2 * count);
        const int x = int(index % map.width);
        const int y = int(index / map.width);
        const float* const rgb = map.at(x, y);
        texels.push_back({direction(x, y), {double(rgb[0]), double(rgb[1]), double(rgb[2])}});
    }
    return texels;
}

} // namespace

std::vector<FilteredTexel> texelsOfStrip(const LightImage& strip, int most)
{
    const int size = strip.height;
    return spreadTexels(
        strip, most,
        [size](int x, int y)
        { return faceDirection(x / size, 2.0 * (x % size + 0.5) / size - 1.0, 2.0 * (y + 0.5) / size - 1.0); });
}

std::vector<FilteredTexel> texelsOfLatLong(const LightImage& map, int most)
{
    return spreadTexels(map, most,
                        [&map](int x, int y)
                        { return latLongDirection((x + 0.5) / map.width, 1.0 - (y + 0.5) / map.height); });
}

Deviation deviation(const ReferenceFilter& filter, const std::vector<FilteredTexel>& texels,
                    const std::function<void(float)>& progress)
{
    constexpr std::chrono::milliseconds kPause(20);
    std::vector<Light> references(texels.size());
    std::atomic<std::size_t> next = 0;
    std::atomic<std::size_t> done = 0;
    const auto work = [&]
    {
        for (std::size_t i = next++; i < texels.size(); i = next++, ++done)
            references[i] = filter.filtered(texels[i].normal);
    };
    std::vector<std::jthread> workers;
    for (unsigned i = 0; i < std::max(1u, std::thread::hardware_concurrency()); ++i)
        workers.emplace_back(work);
    while (done < texels.size())
    {
        progress(float(done) / float(texels.size()));
        std::this_thread::sleep_for(kPause);
    }
    workers.clear();

    Deviation result;
    for (std::size_t i = 0; i < texels.size(); ++i)
    {
        for (std::size_t channel = 0; channel < 3; ++channel)
        {
            const double difference = std::abs(texels[i].light[channel] - references[i][channel]);
            result.mean += difference;
            result.largest = std::max(result.largest, difference);
            result.reference += references[i][channel];
        }
    }
    const double count = 3.0 * double(std::max<std::size_t>(texels.size(), 1));
    result.mean /= count;
    result.reference /= count;
    return result;
}

} // namespace envmap
