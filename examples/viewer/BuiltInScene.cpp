// SPDX-License-Identifier: MIT
#include "BuiltInScene.h"

#include "Shapes.h"

#include <algorithm>
#include <cmath>
#include <cstdint>

namespace vrkview
{

namespace
{

constexpr float kFloorHeight = 0.36f;
constexpr float kColonnadeRadius = 3.9f;
constexpr float kColumnHeight = 3.3f;

// The colonnade opens towards the default eye; angles grow from +x towards -z.
constexpr int kColumnCount = 11;
constexpr float kOpenToDegrees = -55.0f; // where the eye stands, seen from above
constexpr float kSweepDegrees = 240.0f;
constexpr float kStartDegrees = kOpenToDegrees + 0.5f * (360.0f - kSweepDegrees);

// Of pictures on surfaces, to a unit of length.
constexpr float kRepeats = 0.5f;

class SceneBuilder
{
public:
    std::size_t material(const char* name, const QVector3D& baseColor, float roughness, float metallic = 0.0f)
    {
        _model.materials.push_back({QString::fromLatin1(name), baseColor, roughness, metallic});
        return _model.materials.size() - 1;
    }

    /// A material with a picture that repeats, tinted by `baseColor`.
    std::size_t pictured(const char* name, const QImage& pixels, const QVector3D& baseColor, float roughness)
    {
        _model.images.push_back({QString::fromLatin1(name), pixels, ImageKind::Flat, {}});
        const std::size_t result = material(name, baseColor, roughness);
        _model.materials[result].baseColorImage = _model.images.size() - 1;
        return result;
    }

    std::size_t mesh(const char* name, Mesh mesh, std::size_t material)
    {
        if (_model.materials[material].baseColorImage)
            projectTexCoords(mesh, kRepeats);
        mesh.name = QString::fromLatin1(name);
        mesh.material = material;
        _model.meshes.push_back(std::move(mesh));
        return _model.meshes.size() - 1;
    }

    void place(std::size_t mesh, const QMatrix4x4& worldFromModel)
    {
        _model.instances.push_back({mesh, worldFromModel});
    }

    /// Turned around +y, then moved.
    void place(std::size_t mesh, const QVector3D& position, float degrees = 0.0f, const QVector3D& scale = {1, 1, 1})
    {
        QMatrix4x4 matrix;
        matrix.translate(position);
        matrix.rotate(degrees, 0.0f, 1.0f, 0.0f);
        matrix.scale(scale);
        place(mesh, matrix);
    }

    Model finish()
    {
        _model.name = QStringLiteral("built-in scene");
        _model.measure();
        return std::move(_model);
    }

private:
    Model _model;
};

QVector3D onCircle(float radius, float degrees, float height)
{
    const float angle = degrees * 3.14159265f / 180.0f;
    return {radius * std::cos(angle), height, -radius * std::sin(angle)};
}

// Foot on the origin: plinth and ring, a shaft that narrows upwards, and a capital.
Mesh makeColumn()
{
    Profile profile = sharpProfile({{0.0f, 0.0f}, {0.36f, 0.0f}, {0.36f, 0.12f}, {0.30f, 0.12f}});
    for (int i = 0; i <= 8; ++i) // the ring swells out and back
    {
        const float angle = 3.14159265f * (float(i) / 8.0f - 0.5f);
        profile.push_back(
            {0.29f + 0.05f * std::cos(angle), 0.18f + 0.06f * std::sin(angle), std::cos(angle), std::sin(angle)});
    }
    const float shaftFoot = 0.24f;
    const float shaftHead = kColumnHeight - 0.34f;
    for (int i = 0; i <= 16; ++i)
    {
        const float t = float(i) / 16.0f;
        profile.push_back({0.25f - 0.045f * t * t, shaftFoot + t * (shaftHead - shaftFoot), 1.0f, 0.03f * t});
    }
    for (int i = 0; i <= 8; ++i) // the capital spreads under its slab
    {
        const float angle = 1.5707963f * float(i) / 8.0f;
        profile.push_back({0.205f + 0.135f * (1.0f - std::cos(angle)), shaftHead + 0.20f * std::sin(angle),
                           std::cos(angle), -std::sin(angle)});
    }
    const Profile slab = sharpProfile(
        {{0.34f, shaftHead + 0.2f}, {0.38f, shaftHead + 0.2f}, {0.38f, kColumnHeight}, {0.0f, kColumnHeight}});
    profile.insert(profile.end(), slab.begin(), slab.end());
    return revolve(profile, 48);
}

// Three steps up to the floor.
Mesh makeFloor()
{
    return revolve(sharpProfile({{0.0f, 0.0f},
                                 {5.2f, 0.0f},
                                 {5.2f, 0.12f},
                                 {4.9f, 0.12f},
                                 {4.9f, 0.24f},
                                 {4.6f, 0.24f},
                                 {4.6f, kFloorHeight},
                                 {0.0f, kFloorHeight}}),
                   144);
}

constexpr int kPictureSide = 256; // texels

/// From 0 to 1, the same for the same place; smooth, and repeats after `period` cells.
float smoothNoise(float x, float y, int period)
{
    const auto at = [period](int column, int row)
    {
        auto bits = std::uint32_t((row % period) * 7919 + (column % period) * 104729 + 1);
        bits = (bits ^ (bits >> 15)) * 2246822519u;
        bits = (bits ^ (bits >> 13)) * 3266489917u;
        return float((bits ^ (bits >> 16)) & 0xFFFFu) / 65535.0f;
    };
    const int column = int(std::floor(x));
    const int row = int(std::floor(y));
    const float u = x - float(column);
    const float v = y - float(row);
    const float su = u * u * (3.0f - 2.0f * u);
    const float sv = v * v * (3.0f - 2.0f * v);
    const float low = at(column, row) * (1.0f - su) + at(column + 1, row) * su;
    const float high = at(column, row + 1) * (1.0f - su) + at(column + 1, row + 1) * su;
    return low * (1.0f - sv) + high * sv;
}

/// Calls `lightness` for each texel's place, from 0 to 1 each way.
template <typename Lightness> QImage makePicture(const Lightness& lightness)
{
    QImage image(kPictureSide, kPictureSide, QImage::Format_RGB32);
    for (int y = 0; y < kPictureSide; ++y)
        for (int x = 0; x < kPictureSide; ++x)
        {
            const float value = lightness((float(x) + 0.5f) / kPictureSide, (float(y) + 0.5f) / kPictureSide);
            const int grey = int(255.0f * std::fmin(std::fmax(value, 0.0f), 1.0f));
            image.setPixel(x, y, qRgb(grey, grey, grey));
        }
    return image;
}

// Four slabs with joints, each of its own shade.
QImage makeSlabs()
{
    return makePicture(
        [](float u, float v)
        {
            const float x = std::fmod(2.0f * u, 1.0f);
            const float y = std::fmod(2.0f * v, 1.0f);
            if (std::fmin(std::fmin(x, 1.0f - x), std::fmin(y, 1.0f - y)) < 0.012f)
                return 0.52f;
            const int slab = int(2.0f * u) + 2 * int(2.0f * v);
            const float grain =
                0.6f * smoothNoise(16.0f * u, 16.0f * v, 16) + 0.4f * smoothNoise(64.0f * u, 64.0f * v, 64);
            return 0.84f + 0.04f * float(slab % 3) + 0.10f * (grain - 0.5f);
        });
}

// Veins that wander through a light stone.
QImage makeVeins()
{
    return makePicture(
        [](float u, float v)
        {
            const float bend = 3.0f * smoothNoise(4.0f * u, 4.0f * v, 4) + 1.2f * smoothNoise(16.0f * u, 16.0f * v, 16);
            const float vein = std::fabs(std::sin(6.2831853f * (2.0f * u + v) + bend));
            return 0.97f - 0.16f * std::pow(1.0f - vein, 6.0f) - 0.04f * smoothNoise(8.0f * u, 8.0f * v, 8);
        });
}

// A beam along the colonnade, its foot at height 0; the ends are closed.
Mesh makeBeam(float halfWidth, float height, float overhangDegrees)
{
    const float inner = kColonnadeRadius - halfWidth;
    const float outer = kColonnadeRadius + halfWidth;
    return revolve(sharpProfile({{inner, 0.0f}, {outer, 0.0f}, {outer, height}, {inner, height}, {inner, 0.0f}}), 120,
                   kStartDegrees - overhangDegrees, kSweepDegrees + 2.0f * overhangDegrees, true);
}

Mesh makePedestal()
{
    return revolve(sharpProfile({{0.0f, 0.0f},
                                 {0.62f, 0.0f},
                                 {0.62f, 0.14f},
                                 {0.50f, 0.20f},
                                 {0.46f, 0.86f},
                                 {0.60f, 0.96f},
                                 {0.60f, 1.06f},
                                 {0.0f, 1.06f}}),
                   72);
}

} // namespace

Model makeBuiltInScene()
{
    SceneBuilder scene;
    const std::size_t stone = scene.pictured("stone", makeSlabs(), {0.78f, 0.70f, 0.60f}, 0.9f);
    const std::size_t marble = scene.pictured("marble", makeVeins(), {0.84f, 0.82f, 0.78f}, 0.45f);
    const std::size_t copper = scene.material("copper", {0.95f, 0.44f, 0.23f}, 0.32f, 1.0f);
    const std::size_t teal = scene.material("teal", {0.03f, 0.32f, 0.34f}, 0.3f);
    const std::size_t coral = scene.material("coral", {0.75f, 0.14f, 0.09f}, 0.3f);
    const std::size_t ochre = scene.material("ochre", {0.75f, 0.42f, 0.06f}, 0.45f);
    const std::size_t slate = scene.material("slate", {0.10f, 0.14f, 0.24f}, 0.5f);

    const std::size_t column = scene.mesh("column", makeColumn(), marble);
    const std::size_t pedestal = scene.mesh("pedestal", makePedestal(), marble);
    const std::size_t knot = scene.mesh("knot", makeTrefoilKnot(0.3f, 0.15f, 240, 32), copper);
    const std::size_t tealBall = scene.mesh("teal sphere", makeSphere(40), teal);
    const std::size_t coralBall = scene.mesh("coral sphere", makeSphere(40), coral);
    const std::size_t ring = scene.mesh("ring", makeTorus(0.62f, 0.2f, 40), ochre);
    const std::size_t box = scene.mesh("box", makeRoundedBox({0.5f, 0.5f, 0.5f}, 0.12f, 8), slate);

    scene.place(scene.mesh("floor", makeFloor(), stone), QVector3D());
    scene.place(scene.mesh("architrave", makeBeam(0.30f, 0.42f, 5.5f), marble),
                QVector3D(0.0f, kFloorHeight + kColumnHeight, 0.0f));
    scene.place(scene.mesh("cornice", makeBeam(0.46f, 0.16f, 7.5f), marble),
                QVector3D(0.0f, kFloorHeight + kColumnHeight + 0.42f, 0.0f));
    for (int i = 0; i < kColumnCount; ++i)
    {
        const float degrees = kStartDegrees + kSweepDegrees * float(i) / float(kColumnCount - 1);
        scene.place(column, onCircle(kColonnadeRadius, degrees, kFloorHeight), degrees);
    }

    // The knot stands upright on the middle pedestal; beside the opening stand a smaller one and its mirror image.
    scene.place(pedestal, QVector3D(0.0f, kFloorHeight, 0.0f), 0.0f, {1.25f, 1.0f, 1.25f});
    const auto placeKnot = [&](const QVector3D& foot, float size, float mirror)
    {
        QMatrix4x4 matrix;
        matrix.translate(foot + QVector3D(0.0f, 1.02f * size, 0.0f));
        matrix.rotate(90.0f + kOpenToDegrees, 0.0f, 1.0f, 0.0f);
        matrix.rotate(90.0f, 1.0f, 0.0f, 0.0f); // stands it up, its axis towards the opening
        matrix.scale(mirror * size, size, size);
        scene.place(knot, matrix);
    };
    placeKnot({0.0f, kFloorHeight + 1.06f, 0.0f}, 1.25f, 1.0f);
    for (const float side : {1.0f, -1.0f})
    {
        const QVector3D foot = onCircle(2.7f, kOpenToDegrees + side * 62.0f, kFloorHeight);
        scene.place(pedestal, foot, 0.0f, {0.8f, 0.6f, 0.8f});
        placeKnot(foot + QVector3D(0.0f, 0.636f, 0.0f), 0.55f, side);
    }

    scene.place(ring, onCircle(1.9f, kOpenToDegrees - 14.0f, kFloorHeight + 0.2f));
    scene.place(coralBall, onCircle(1.9f, kOpenToDegrees - 14.0f, kFloorHeight + 0.36f), 0.0f, {0.36f, 0.36f, 0.36f});
    scene.place(tealBall, onCircle(2.5f, kOpenToDegrees + 22.0f, kFloorHeight + 0.42f), 0.0f, {0.42f, 0.42f, 0.42f});
    scene.place(coralBall, onCircle(3.2f, kOpenToDegrees + 34.0f, kFloorHeight + 0.22f), 0.0f, {0.22f, 0.22f, 0.22f});
    scene.place(tealBall, onCircle(3.4f, kOpenToDegrees - 36.0f, kFloorHeight + 0.26f), 0.0f, {0.26f, 0.26f, 0.26f});
    scene.place(box, onCircle(2.2f, kOpenToDegrees + 180.0f - 40.0f, kFloorHeight + 0.5f), 25.0f);
    scene.place(box, onCircle(2.2f, kOpenToDegrees + 180.0f + 40.0f, kFloorHeight + 0.5f), 50.0f);
    scene.place(box, onCircle(2.2f, kOpenToDegrees + 180.0f + 40.0f, kFloorHeight + 1.3f), 15.0f, {0.6f, 0.6f, 0.6f});
    return scene.finish();
}

} // namespace vrkview
