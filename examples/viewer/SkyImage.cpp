// SPDX-License-Identifier: MIT
#include "SkyImage.h"

#include <QVector2D>

#include <algorithm>
#include <cmath>
#include <cstdint>

namespace vrkview
{

namespace
{

constexpr float kPi = 3.14159265358979f;

const QVector3D kZenith(0.050f, 0.135f, 0.400f);
const QVector3D kMiddle(0.190f, 0.400f, 0.800f);
const QVector3D kHorizon(0.920f, 0.960f, 1.000f);
const QVector3D kWarmHaze(1.150f, 1.000f, 0.780f);
const QVector3D kGlow(1.000f, 0.860f, 0.620f);
const QVector3D kCloudLight(1.420f, 1.370f, 1.270f);
const QVector3D kCloudShade(0.560f, 0.610f, 0.700f);
const QVector3D kGroundNear(0.205f, 0.180f, 0.155f);
const QVector3D kGroundFar(0.420f, 0.385f, 0.340f);

float mix(float a, float b, float t)
{
    return a + (b - a) * t;
}

QVector3D mix(const QVector3D& a, const QVector3D& b, float t)
{
    return a + (b - a) * t;
}

float smoothStep(float from, float to, float value)
{
    const float t = std::clamp((value - from) / (to - from), 0.0f, 1.0f);
    return t * t * (3.0f - 2.0f * t);
}

// ---- noise ---------------------------------------------------------------------------------------------------------

// A number from 0 to 1 for each point of the grid.
float gridValue(int x, int y)
{
    std::uint32_t h = std::uint32_t(x) * 0x9e3779b1u ^ std::uint32_t(y) * 0x85ebca77u;
    h = (h ^ (h >> 15)) * 0x2c1b3c6du;
    h = (h ^ (h >> 12)) * 0x297a2d39u;
    h ^= h >> 15;
    return float(h >> 8) / float(1u << 24);
}

float ease(float t)
{
    return t * t * t * (t * (t * 6.0f - 15.0f) + 10.0f);
}

float smoothNoise(const QVector2D& p)
{
    const float left = std::floor(p.x());
    const float bottom = std::floor(p.y());
    const int x = int(left);
    const int y = int(bottom);
    const float u = ease(p.x() - left);
    const float v = ease(p.y() - bottom);
    return mix(mix(gridValue(x, y), gridValue(x + 1, y), u), mix(gridValue(x, y + 1), gridValue(x + 1, y + 1), u), v);
}

// Octaves of noise, each turned so that their grids do not show; 0 to 1, around one half.
float layeredNoise(QVector2D p, int octaves)
{
    float sum = 0.0f;
    float weight = 0.5f;
    float total = 0.0f;
    for (int i = 0; i < octaves; ++i)
    {
        sum += weight * smoothNoise(p);
        total += weight;
        weight *= 0.5f;
        p = QVector2D(1.62f * p.x() - 1.18f * p.y() + 17.3f, 1.18f * p.x() + 1.62f * p.y() - 9.1f);
    }
    return sum / total;
}

// ---- clouds --------------------------------------------------------------------------------------------------------

// How thick the clouds are above a place of the plane they float in.
float cloudDensity(const QVector2D& place)
{
    const QVector2D drift(layeredNoise(place * 0.7f + QVector2D(31.0f, 5.0f), 3) - 0.5f,
                          layeredNoise(place * 0.7f + QVector2D(-7.0f, 23.0f), 3) - 0.5f);
    const float cover = layeredNoise(place * 0.45f + QVector2D(3.0f, 11.0f), 2);
    const float shape = layeredNoise(place * 1.7f + drift * 1.1f, 6);
    return std::max(0.0f, shape + 0.45f * (cover - 0.5f) - 0.46f) * 3.6f;
}

// Ice far above, drawn out by the wind; it is thin, and has no shade.
float veilDensity(const QVector2D& place)
{
    const QVector2D along(0.55f * place.x() + 0.25f * place.y(), 1.9f * place.y() - 0.9f * place.x());
    const float bend = layeredNoise(place * 0.5f, 3);
    const float veil = layeredNoise(along * 0.9f + QVector2D(5.0f, 2.5f * bend), 5);
    return std::max(0.0f, veil - 0.42f) * (0.4f + 0.9f * bend);
}

// The plane seems to bend down behind the haze, which keeps the clouds near the horizon from becoming lines.
QVector2D cloudPlace(const QVector3D& direction)
{
    return QVector2D(direction.x(), direction.z()) / (direction.y() + 0.16f) * 1.1f;
}

QVector3D withClouds(const QVector3D& sky, const QVector3D& direction, float towardsSun)
{
    const QVector2D place = cloudPlace(direction);
    const float visible = smoothStep(0.015f, 0.22f, direction.y());
    const float veil = 1.0f - std::exp(-2.4f * veilDensity(place * 0.6f + QVector2D(40.0f, -12.0f)));
    const QVector3D behind =
        mix(sky, kCloudLight * 0.85f, veil * visible * (1.0f - smoothStep(0.96f, 0.995f, towardsSun)));
    const float density = cloudDensity(place) * (1.0f - smoothStep(0.975f, 0.997f, towardsSun)); // the sun stays free
    if (density <= 0.0f)
        return behind;
    const QVector3D sun = skySunDirection();
    const QVector2D step = QVector2D(sun.x(), sun.z()).normalized() * 0.16f;
    const float inFront = cloudDensity(place + step) + 0.6f * cloudDensity(place + 2.2f * step);
    const float lit = std::exp(-1.5f * inFront) * mix(1.0f, 0.82f, std::min(density, 1.0f));
    const float rim = std::pow(std::max(towardsSun, 0.0f), 10.0f) * std::exp(-1.6f * density);
    const QVector3D color = mix(kCloudShade, kCloudLight, lit) + kGlow * (1.6f * rim);
    return mix(behind, color, (1.0f - std::exp(-2.6f * density)) * visible);
}

// ---- air and ground ------------------------------------------------------------------------------------------------

QVector3D glow(float towardsSun)
{
    const float degrees = std::acos(std::clamp(towardsSun, -1.0f, 1.0f)) * 180.0f / kPi;
    const float core = 36.0f * std::exp(-degrees * degrees / (1.7f * 1.7f));
    const float near = 2.6f * std::exp(-degrees / 4.0f);
    const float wide = 0.36f * std::exp(-degrees / 18.0f);
    return kGlow * (core + near + wide);
}

QVector3D air(const QVector3D& direction, float towardsSun)
{
    const float height = std::max(direction.y(), 0.0f);
    const QVector3D blue = mix(kMiddle, kZenith, smoothStep(0.0f, 1.0f, height));
    const float haze = std::exp(-6.6f * height);
    const float warmth = std::pow(0.5f + 0.5f * towardsSun, 3.0f);
    return mix(blue, mix(kHorizon, kWarmHaze, warmth), haze);
}

QVector3D ground(const QVector3D& direction)
{
    const float depth = std::max(-direction.y(), 0.0f);
    const QVector2D place = QVector2D(direction.x(), direction.z()) / (depth + 0.10f);
    const float patches = 0.90f + 0.20f * layeredNoise(place * 1.3f, 4);
    return mix(kGroundFar, kGroundNear, smoothStep(0.0f, 0.9f, depth)) * patches;
}

} // namespace

QVector3D skySunDirection()
{
    return QVector3D(-0.55f, 0.70f, 0.40f).normalized();
}

QVector3D skyLight(const QVector3D& direction)
{
    const float towardsSun = QVector3D::dotProduct(direction, skySunDirection());
    const QVector3D clear = air(direction, towardsSun);
    if (direction.y() > 0.0f)
        return withClouds(clear + glow(towardsSun), direction, towardsSun);
    return mix(clear, ground(direction), smoothStep(0.0f, 0.16f, -direction.y()));
}

LightImage makeSky(int width, int height)
{
    constexpr int kSteps = 2; // samples across a pixel
    LightImage image(width, height);
    for (int y = 0; y < height; ++y)
    {
        for (int x = 0; x < width; ++x)
        {
            QVector3D sum;
            for (int i = 0; i < kSteps * kSteps; ++i)
            {
                const int column = i % kSteps;
                const int row = i / kSteps;
                const float u = (float(x) + (float(column) + 0.5f) / kSteps) / float(width);
                const float v = 1.0f - (float(y) + (float(row) + 0.5f) / kSteps) / float(height);
                const float phi = (u - 0.5f) * 2.0f * kPi;
                const float theta = (v - 0.5f) * kPi;
                sum += skyLight({std::cos(phi) * std::cos(theta), std::sin(theta), std::sin(phi) * std::cos(theta)});
            }
            sum /= float(kSteps * kSteps);
            float* pixel = image.at(x, y);
            for (int channel = 0; channel < 3; ++channel)
                pixel[channel] = sum[channel];
        }
    }
    return image;
}

} // namespace vrkview
