// SPDX-License-Identifier: MIT
#include "SceneLights.h"

#include <cmath>
#include <numbers>

namespace vrkview
{

namespace
{

// Places around the middle of the bounds, in their radius. The default eye stands in front, to the right.
const QVector3D kSunAlong(0.55f, -0.70f, -0.40f);
const QVector3D kSpotPlace(0.95f, 1.00f, 0.75f);
const QVector3D kPointPlace(-0.12f, 0.12f, 0.36f);
constexpr float kSpotCutoff = 0.42f;

const QVector3D kSunColor(0.84f, 0.75f, 0.62f);
const QVector3D kSpotColor(0.20f, 0.25f, 0.34f);
const QVector3D kPointColor(0.42f, 0.22f, 0.09f);

// Of a ring.
constexpr float kRingRadius = 1.05f;
constexpr float kRingHeight = 0.85f;
constexpr float kRingCutoff = 0.55f;

/// A spot at a place that looks at the middle of the bounds.
SceneLight spotAt(const QVector3D& place, const Bounds& bounds, float cutoff, const QVector3D& color)
{
    SceneLight light;
    light.kind = SceneLight::Kind::Spot;
    light.place = bounds.center() + bounds.radius() * place;
    light.along = (bounds.center() - light.place).normalized();
    light.reach = (bounds.center() - light.place).length();
    light.color = color;
    light.cutoff = cutoff;
    return light;
}

SceneLight makeSun(const Bounds& bounds, int cascades)
{
    SceneLight light;
    light.place = bounds.center();
    light.along = kSunAlong.normalized();
    light.color = kSunColor;
    light.cascades = cascades;
    return light;
}

SceneLight makeSpot(const Bounds& bounds)
{
    return spotAt(kSpotPlace, bounds, kSpotCutoff, kSpotColor);
}

SceneLight makePoint(const Bounds& bounds)
{
    SceneLight light;
    light.kind = SceneLight::Kind::Point;
    light.place = bounds.center() + bounds.radius() * kPointPlace;
    light.color = kPointColor;
    light.reach = 0.35f * bounds.radius();
    return light;
}

/// Together about as bright as the other lights are, in the colours of a wheel.
std::vector<SceneLight> makeRing(const Bounds& bounds, int count)
{
    std::vector<SceneLight> lights;
    for (int i = 0; i < count; ++i)
    {
        const float angle = 2.0f * std::numbers::pi_v<float> * float(i) / float(count);
        const auto wheel = [angle](float turn)
        { return 0.6f + 0.4f * std::cos(angle - 2.0f * std::numbers::pi_v<float> * turn); };
        const QVector3D color(wheel(0.0f), wheel(1.0f / 3.0f), wheel(2.0f / 3.0f));
        const QVector3D place(kRingRadius * std::cos(angle), kRingHeight, -kRingRadius * std::sin(angle));
        lights.push_back(spotAt(place, bounds, kRingCutoff, color * (2.4f / float(count))));
    }
    return lights;
}

} // namespace

std::vector<SceneLight> makeLights(const LightSettings& settings, const Bounds& bounds)
{
    switch (settings.set)
    {
    case LightSet::Sun:
        return {makeSun(bounds, settings.cascades)};
    case LightSet::Spot:
        return {makeSpot(bounds)};
    case LightSet::Point:
        return {makePoint(bounds)};
    case LightSet::Ring:
        return makeRing(bounds, settings.ringCount);
    case LightSet::All:
        break;
    }
    return {makeSun(bounds, settings.cascades), makeSpot(bounds), makePoint(bounds)};
}

} // namespace vrkview
