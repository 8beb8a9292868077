// SPDX-License-Identifier: MIT
#include "BuiltInScene.h"

#include "BuiltInPictures.h"
#include "Shapes.h"

#include <cmath>

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

constexpr float kDegree = 3.14159265f / 180.0f;

class SceneBuilder
{
public:
    std::size_t material(const char* name, const QVector3D& baseColor, float roughness, float metallic = 0.0f)
    {
        _model.materials.push_back({QString::fromLatin1(name), baseColor, roughness, metallic});
        return _model.materials.size() - 1;
    }

    /// A material with a picture, tinted by `baseColor`.
    std::size_t pictured(const char* name, const QImage& pixels, const QVector3D& baseColor, float roughness)
    {
        Image image;
        image.path = QString::fromLatin1(name);
        image.pixels = pixels;
        return shows(std::move(image), material(name, baseColor, roughness));
    }

    /// Gives a material a surface as high as `heights` is light.
    void raise(std::size_t material, const char* name, const QImage& heights, float depth)
    {
        Image image;
        image.path = QString::fromLatin1(name);
        image.pixels = makeRelief(heights, depth);
        _model.materials[material].normalImage = MaterialImage{add(std::move(image))};
    }

    /// One of as many pictures as `pixels` makes, each of which stands on one square of the texture coordinates.
    std::size_t tiled(const char* name, int tiles, QImage (*pixels)(int), float roughness)
    {
        Image image;
        image.path = QString::fromLatin1(name);
        image.kind = ImageKind::Tiles;
        for (int tile = 0; tile < tiles; ++tile)
            image.parts.push_back({QStringLiteral("%1 %2").arg(image.path).arg(tile), pixels(tile), {tile, 0}});
        return shows(std::move(image), material(name, {1.0f, 1.0f, 1.0f}, roughness));
    }

    /// What changes from frame to frame.
    std::size_t screen(const char* name, StreamerKind kind)
    {
        Image image;
        image.path = QString::fromLatin1(name);
        image.streamer = kind;
        const std::size_t result = material(name, {0.0f, 0.0f, 0.0f}, 0.3f);
        _model.materials[result].emission = {0.9f, 0.9f, 0.9f};
        _model.materials[result].emissionImage = MaterialImage{add(std::move(image)), Wrap::Clamp, Wrap::Clamp};
        return result;
    }

    std::size_t mesh(const char* name, Mesh mesh, std::size_t material)
    {
        mesh.name = QString::fromLatin1(name);
        mesh.material = material;
        _model.meshes.push_back(std::move(mesh));
        return _model.meshes.size() - 1;
    }

    /// `material` in place of the mesh's own.
    void place(std::size_t mesh, const QMatrix4x4& worldFromModel, std::optional<std::size_t> material = {})
    {
        _model.instances.push_back({mesh, worldFromModel, -1, material});
    }

    /// Turned around +y, then moved.
    void place(std::size_t mesh, const QVector3D& position, float degrees = 0.0f, const QVector3D& scale = {1, 1, 1},
               std::optional<std::size_t> material = {})
    {
        QMatrix4x4 matrix;
        matrix.translate(position);
        matrix.rotate(degrees, 0.0f, 1.0f, 0.0f);
        matrix.scale(scale);
        place(mesh, matrix, material);
    }

    Model finish()
    {
        _model.name = QStringLiteral("built-in scene");
        _model.measure();
        return std::move(_model);
    }

private:
    std::size_t add(Image image)
    {
        _model.images.push_back(std::move(image));
        return _model.images.size() - 1;
    }

    std::size_t shows(Image image, std::size_t material)
    {
        _model.materials[material].baseColorImage = add(std::move(image));
        return material;
    }

    Model _model;
};

QVector3D onCircle(float radius, float degrees, float height)
{
    const float angle = degrees * kDegree;
    return {radius * std::cos(angle), height, -radius * std::sin(angle)};
}

// Foot on the origin: plinth and ring, a shaft that narrows upwards, and a capital.
Mesh makeColumn()
{
    Profile profile = sharpProfile({{0.0f, 0.0f}, {0.36f, 0.0f}, {0.36f, 0.12f}, {0.29f, 0.12f}});
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

// Inside the architrave, one square of texture coordinates to a picture.
Mesh makeFriezeBand()
{
    constexpr float kRadius = kColonnadeRadius - 0.31f;
    Mesh mesh = revolve(sharpProfile({{kRadius, 0.37f}, {kRadius, 0.05f}}), 120, kStartDegrees, kSweepDegrees);
    for (QVector2D& texCoord : mesh.texCoords)
    {
        const float along = texCoord.x() / (kSweepDegrees * kDegree * kRadius);
        texCoord = {float(kFriezePictures) * (1.0f - along), 1.0f - texCoord.y() / 0.32f};
    }
    return mesh;
}

// A square of side 1 that looks along +z.
Mesh makePane()
{
    Mesh mesh;
    mesh.positions = {{-0.5f, -0.5f, 0.0f}, {0.5f, -0.5f, 0.0f}, {0.5f, 0.5f, 0.0f}, {-0.5f, 0.5f, 0.0f}};
    mesh.normals.assign(4, QVector3D(0.0f, 0.0f, 1.0f));
    mesh.texCoords = {{0.0f, 0.0f}, {1.0f, 0.0f}, {1.0f, 1.0f}, {0.0f, 1.0f}};
    mesh.indices = {0, 1, 2, 0, 2, 3};
    return mesh;
}

Mesh repeating(Mesh mesh, float repeats = kRepeats)
{
    repeatTexCoords(mesh, repeats);
    return mesh;
}

struct Stones
{
    std::size_t slabs;
    std::size_t marble;
    std::size_t terrazzo;
};

// The floor, the columns, and what lies on them.
void addColonnade(SceneBuilder& scene, const Stones& stones)
{
    const std::size_t column = scene.mesh("column", repeating(makeColumn()), stones.marble);
    const std::size_t frieze = scene.tiled("frieze", kFriezePictures, makeFrieze, 0.6f);
    const QVector3D top(0.0f, kFloorHeight + kColumnHeight, 0.0f);
    scene.place(scene.mesh("floor", repeating(makeFloor()), stones.slabs), QVector3D());
    scene.place(scene.mesh("architrave", repeating(makeBeam(0.30f, 0.42f, 5.5f)), stones.marble), top);
    scene.place(scene.mesh("frieze", makeFriezeBand(), frieze), top);
    scene.place(scene.mesh("cornice", repeating(makeBeam(0.46f, 0.16f, 7.5f)), stones.marble),
                top + QVector3D(0.0f, 0.42f, 0.0f));
    for (int i = 0; i < kColumnCount; ++i)
    {
        const float degrees = kStartDegrees + kSweepDegrees * float(i) / float(kColumnCount - 1);
        scene.place(column, onCircle(kColonnadeRadius, degrees, kFloorHeight), degrees);
    }
}

// The knot stands upright on the middle pedestal; beside the opening stand a smaller one and its mirror image.
void addKnots(SceneBuilder& scene, const Stones& stones)
{
    const std::size_t copper = scene.material("copper", {0.95f, 0.44f, 0.23f}, 0.28f, 1.0f);
    const std::size_t gold = scene.material("gold", {1.0f, 0.66f, 0.22f}, 0.2f, 1.0f);
    const std::size_t steel = scene.material("steel", {0.66f, 0.67f, 0.69f}, 0.16f, 1.0f);
    const std::size_t pedestal = scene.mesh("pedestal", repeating(makePedestal(), 1.0f), stones.terrazzo);
    const std::size_t knot = scene.mesh("knot", makeTrefoilKnot(0.3f, 0.15f, 240, 32), copper);
    const auto placeKnot = [&](const QVector3D& foot, float size, float mirror, std::size_t metal)
    {
        QMatrix4x4 matrix;
        matrix.translate(foot + QVector3D(0.0f, 1.02f * size, 0.0f));
        matrix.rotate(90.0f + kOpenToDegrees, 0.0f, 1.0f, 0.0f);
        matrix.rotate(90.0f, 1.0f, 0.0f, 0.0f); // stands it up, its axis towards the opening
        matrix.scale(mirror * size, size, size);
        scene.place(knot, matrix, metal);
    };
    scene.place(pedestal, QVector3D(0.0f, kFloorHeight, 0.0f), 0.0f, {1.25f, 1.0f, 1.25f});
    placeKnot({0.0f, kFloorHeight + 1.06f, 0.0f}, 1.25f, 1.0f, copper);
    for (const float side : {1.0f, -1.0f})
    {
        const QVector3D foot = onCircle(2.7f, kOpenToDegrees + side * 62.0f, kFloorHeight);
        scene.place(pedestal, foot, 0.0f, {0.8f, 0.6f, 0.8f});
        placeKnot(foot + QVector3D(0.0f, 0.636f, 0.0f), 0.55f, side, side > 0.0f ? steel : gold);
    }
}

// What lies about: plastics of all kinds, and boxes of wood.
void addToys(SceneBuilder& scene)
{
    const std::size_t teal = scene.material("teal", {0.03f, 0.32f, 0.34f}, 0.3f);
    const std::size_t coral = scene.material("coral", {0.75f, 0.14f, 0.09f}, 0.3f);
    const std::size_t slate = scene.material("slate", {0.10f, 0.14f, 0.24f}, 0.12f);
    const std::size_t stripes = scene.pictured("stripes", makeStripes(), {1.0f, 1.0f, 1.0f}, 0.4f);
    const std::size_t wood = scene.pictured("wood", makeWood(), {1.0f, 1.0f, 1.0f}, 0.55f);
    const std::size_t ball = scene.mesh("sphere", makeSphere(40), teal);
    const std::size_t ring = scene.mesh("ring", repeating(makeTorus(0.62f, 0.2f, 40), 1.0f), stripes);
    const std::size_t box = scene.mesh("box", makeRoundedBox({0.5f, 0.5f, 0.5f}, 0.06f, 8), wood);
    const auto placeBall = [&](float radius, float from, float degrees, float lift, std::size_t material)
    {
        scene.place(ball, onCircle(from, kOpenToDegrees + degrees, kFloorHeight + radius + lift), 0.0f,
                    {radius, radius, radius}, material);
    };
    scene.place(ring, onCircle(1.9f, kOpenToDegrees - 14.0f, kFloorHeight + 0.2f));
    placeBall(0.36f, 1.9f, -14.0f, 0.0f, coral);
    placeBall(0.42f, 2.5f, 22.0f, 0.0f, teal);
    placeBall(0.22f, 3.2f, 34.0f, 0.0f, coral);
    placeBall(0.26f, 3.4f, -36.0f, 0.0f, slate);
    scene.place(box, onCircle(2.2f, kOpenToDegrees + 180.0f - 40.0f, kFloorHeight + 0.5f), 25.0f);
    scene.place(box, onCircle(2.2f, kOpenToDegrees + 180.0f + 40.0f, kFloorHeight + 0.5f), 50.0f);
    scene.place(box, onCircle(2.2f, kOpenToDegrees + 180.0f + 40.0f, kFloorHeight + 1.3f), 15.0f, {0.6f, 0.6f, 0.6f});
}

// Metal and plastic by turns along the edge of the floor, from smooth to rough.
void addSamples(SceneBuilder& scene)
{
    constexpr int kSamples = 7;
    constexpr float kRadius = 0.13f;
    const std::size_t bead = scene.mesh("bead", makeSphere(24), 0);
    for (int i = 0; i < kSamples; ++i)
    {
        const float roughness = 0.06f + 0.12f * float(i);
        const bool isMetal = i % 2 == 0;
        const QVector3D color = isMetal ? QVector3D(0.95f, 0.93f, 0.88f) : QVector3D(0.10f, 0.20f, 0.62f);
        const std::size_t material =
            scene.material(isMetal ? "silver" : "blue", color, roughness, isMetal ? 1.0f : 0.0f);
        const float degrees = kOpenToDegrees + 7.0f * (float(i) - 0.5f * float(kSamples - 1));
        scene.place(bead, onCircle(4.2f, degrees, kFloorHeight + kRadius), 0.0f, {kRadius, kRadius, kRadius}, material);
    }
}

// Between the columns behind, turned to the middle.
void addScreens(SceneBuilder& scene)
{
    constexpr float kSide = 1.0f;
    constexpr float kMiddle = 1.75f; // height above the floor
    struct Screen
    {
        const char* name;
        StreamerKind kind;
        float degrees; // from the place opposite the opening
    };
    constexpr Screen kScreens[] = {{"colours", StreamerKind::Colors, -60.0f},
                                   {"fractal by the processor", StreamerKind::MandelbrotCPU, -36.0f},
                                   {"fractal by the GPU", StreamerKind::MandelbrotGPU, 36.0f},
                                   {"dials", StreamerKind::Images, 60.0f}};
    const std::size_t black = scene.material("frame", {0.02f, 0.02f, 0.025f}, 0.25f);
    const std::size_t frame = scene.mesh("frame", makeRoundedBox({0.54f, 0.54f, 0.04f}, 0.03f, 4), black);
    const std::size_t pane = scene.mesh("pane", makePane(), black);
    for (const Screen& screen : kScreens)
    {
        const float degrees = kOpenToDegrees + 180.0f + screen.degrees;
        QMatrix4x4 matrix;
        matrix.translate(onCircle(kColonnadeRadius - 0.1f, degrees, kFloorHeight + kMiddle));
        matrix.rotate(degrees - 90.0f, 0.0f, 1.0f, 0.0f); // +z towards the axis
        matrix.scale(kSide);
        scene.place(frame, matrix);
        matrix.translate(0.0f, 0.0f, 0.041f);
        scene.place(pane, matrix, scene.screen(screen.name, screen.kind));
    }
}

} // namespace

Model makeBuiltInScene()
{
    SceneBuilder scene;
    const QImage slabs = makeSlabs();
    const Stones stones = {scene.pictured("stone", slabs, {0.78f, 0.70f, 0.60f}, 0.9f),
                           scene.pictured("marble", makeVeins(), {0.84f, 0.82f, 0.78f}, 0.45f),
                           scene.pictured("terrazzo", makeTerrazzo(), {0.95f, 0.95f, 0.95f}, 0.3f)};
    scene.raise(stones.slabs, "joints", slabs, 3.0f);
    addColonnade(scene, stones);
    addKnots(scene, stones);
    addToys(scene);
    addSamples(scene);
    addScreens(scene);
    return scene.finish();
}

} // namespace vrkview
