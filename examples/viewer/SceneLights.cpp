// SPDX-License-Identifier: MIT
#include "SceneLights.h"

#include "Terminal.h"

#include <algorithm>
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

// Of the library's shadow maps, all lights together.
constexpr int kMostLayers = 32;

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

// What lights of a file do together in the middle.
constexpr float kFileLight = 1.2f;
// A light inside of the model counts as if it stood so far from the middle, in the radius of the bounds.
constexpr float kNearest = 0.25f;
// A shadow map has no room for wider cones.
constexpr float kWidestCutoff = 1.4f;

QMatrix4x4 modelFromNode(const Model& model, int node)
{
    QMatrix4x4 matrix;
    for (; node >= 0; node = model.nodes[std::size_t(node)].parent)
        matrix = model.nodes[std::size_t(node)].parentFromNode * matrix;
    return matrix;
}

bool isUsable(const SceneLight& light)
{
    const float sum = QVector3D::dotProduct(light.color, {1, 1, 1}) + QVector3D::dotProduct(light.place, {1, 1, 1});
    const bool hasWay = light.kind == SceneLight::Kind::Point || !light.along.isNull();
    return std::isfinite(sum) && hasWay && light.wholeCone >= light.fullCone && light.fullCone >= 0.0f;
}

float luminance(const QVector3D& color)
{
    return QVector3D::dotProduct(color, {0.2126f, 0.7152f, 0.0722f});
}

SceneLight fromFile(const FileLight& source, const QMatrix4x4& sceneFromNode, const Bounds& bounds)
{
    constexpr SceneLight::Kind kKinds[] = {SceneLight::Kind::Sun, SceneLight::Kind::Point, SceneLight::Kind::Spot};
    SceneLight light;
    light.ofFile = true;
    light.kind = kKinds[int(source.kind)];
    light.along = sceneFromNode.mapVector({0, 0, -1}).normalized();
    light.place = light.kind == SceneLight::Kind::Sun ? bounds.center() : sceneFromNode.map(QVector3D());
    light.color = source.color;
    light.fullCone = source.innerCone;
    light.wholeCone = source.outerCone;
    light.cutoff = std::min(light.wholeCone, kWidestCutoff);
    if (light.kind != SceneLight::Kind::Sun)
        light.reach = std::max((light.place - bounds.center()).length(), kNearest * bounds.radius());
    return light;
}

/// Layers of shadow maps that a light takes at most.
int layersOf(const SceneLight& light)
{
    constexpr int kSidesOfACube = 6;
    if (light.kind == SceneLight::Kind::Point)
        return kSidesOfACube;
    return light.kind == SceneLight::Kind::Sun ? std::max(light.cascades, 1) : 1;
}

} // namespace

std::vector<SceneLight> fileLights(const Model& model, const QMatrix4x4& sceneFromModel, const Bounds& bounds)
{
    std::vector<SceneLight> lights;
    const float unit = sceneFromModel.mapVector({1, 0, 0}).length(); // of the model, in those of the scene
    float sum = 0.0f;
    for (const FileLight& source : model.lights)
    {
        if (source.kind == FileLight::Kind::Other || int(lights.size()) == kMostLights)
            continue;
        SceneLight light = fromFile(source, sceneFromModel * modelFromNode(model, source.node), bounds);
        if (light.kind != SceneLight::Kind::Sun)
            light.color *= unit * unit / (light.reach * light.reach);
        if (!isUsable(light))
            continue;
        sum += luminance(light.color);
        lights.push_back(light);
    }
    if (sum > 0.0f)
        for (SceneLight& light : lights)
            light.color *= kFileLight / sum;
    return lights;
}

std::vector<SceneLight> makeLights(const LightSettings& settings, const Bounds& bounds,
                                   const std::vector<SceneLight>& ofFile)
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
    if (!ofFile.empty())
    {
        std::vector<SceneLight> lights;
        int layers = 0;
        for (SceneLight light : ofFile)
        {
            if (light.kind == SceneLight::Kind::Sun)
                light.cascades = settings.cascades;
            layers += layersOf(light);
            if (layers <= kMostLayers)
                lights.push_back(light);
        }
        if (lights.size() < ofFile.size())
            remarkOnce(QStringLiteral("%1 of the file's lights are left out: shadow maps have %2 layers")
                           .arg(ofFile.size() - lights.size())
                           .arg(kMostLayers));
        return lights;
    }
    return {makeSun(bounds, settings.cascades), makeSpot(bounds), makePoint(bounds)};
}

} // namespace vrkview
