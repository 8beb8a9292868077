// SPDX-License-Identifier: MIT
#include "PickScene.h"

#include <OrbitCamera.h>

#include <algorithm>
#include <cmath>
#include <limits>

namespace deeppick
{

using vrkview::Instance;
using vrkview::Mesh;
using vrkview::Model;

namespace
{

constexpr int kSizeExponent = 8; // of a mesh's largest coordinate and of the scene's radius

/// The power of two that brings `size` to about two to the `kSizeExponent`.
float unitFor(float size)
{
    return size > 0.0f && std::isfinite(size) ? std::ldexp(1.0f, kSizeExponent - std::clamp(std::ilogb(size), -60, 60))
                                              : 1.0f;
}

float largestCoordinate(const Mesh& mesh)
{
    float largest = 0.0f;
    for (const QVector3D& position : mesh.positions)
        for (int axis = 0; axis < 3; ++axis)
            largest = std::max(largest, std::abs(position[axis]));
    return largest;
}

QMatrix4x4 scaling(float factor)
{
    QMatrix4x4 matrix;
    matrix.scale(factor);
    return matrix;
}

QString nameOf(const Model& model, const Instance& instance)
{
    const Mesh& mesh = model.meshes[instance.mesh];
    if (!mesh.name.isEmpty())
        return mesh.name;
    if (instance.node >= 0 && !model.nodes[std::size_t(instance.node)].name.isEmpty())
        return model.nodes[std::size_t(instance.node)].name;
    return QStringLiteral("mesh %1").arg(instance.mesh);
}

/// A mesh once it is in the lists.
struct PlacedMesh
{
    PickDraw draw;
    float unit = 0.0f; ///< 0 as long as it is not
    std::uint32_t instances = 0;
};

PlacedMesh place(const Mesh& mesh, PickScene& scene)
{
    PlacedMesh placed;
    placed.unit = unitFor(largestCoordinate(mesh));
    placed.draw.firstIndex = std::uint32_t(scene.indices.size());
    placed.draw.indexCount = std::uint32_t(mesh.indices.size());
    placed.draw.baseVertex = std::uint32_t(scene.positions.size());
    placed.draw.vertexCount = std::uint32_t(mesh.positions.size());
    for (std::size_t i = 0; i < mesh.positions.size(); ++i)
    {
        scene.positions.emplace_back(placed.unit * mesh.positions[i], 1.0f);
        scene.normals.emplace_back(i < mesh.normals.size() ? mesh.normals[i] : QVector3D(), 0.0f);
        scene.texCoords.push_back(i < mesh.texCoords.size() ? mesh.texCoords[i] : QVector2D());
    }
    scene.indices.insert(scene.indices.end(), mesh.indices.begin(), mesh.indices.end());
    return placed;
}

/// What is wrong with the model for this, or nothing.
QString faultOf(const Model& model)
{
    std::size_t draws = 0;
    std::size_t vertices = 0;
    std::size_t indices = 0;
    for (const Instance& instance : model.instances)
        draws += model.meshes[instance.mesh].indices.empty() ? 0 : 1;
    for (const Mesh& mesh : model.meshes)
    {
        vertices += mesh.positions.size();
        indices += mesh.indices.size();
    }
    constexpr auto kMost = std::size_t(std::numeric_limits<std::int32_t>::max());
    if (draws > kMostDraws)
        return QStringLiteral("it has %1 instances of meshes; at most %2 can be told apart").arg(draws).arg(kMostDraws);
    if (vertices > kMost || indices > kMost)
        return QStringLiteral("it has more vertices or indices than can be counted");
    return {};
}

} // namespace

std::size_t PickScene::triangleCount() const
{
    std::size_t count = 0;
    for (const PickDraw& draw : draws)
        count += draw.indexCount / 3;
    return count;
}

std::optional<PickScene> makePickScene(const Model& model, QString& error)
{
    error = faultOf(model);
    if (!error.isEmpty())
        return {};
    PickScene scene;
    const float sceneUnit = unitFor(model.bounds.radius());
    scene.worldFromScene = 1.0f / sceneUnit;
    scene.radius = sceneUnit * model.bounds.radius();
    std::vector<PlacedMesh> meshes(model.meshes.size());
    for (const Instance& instance : model.instances)
    {
        const Mesh& mesh = model.meshes[instance.mesh];
        PlacedMesh& placed = meshes[instance.mesh];
        if (mesh.indices.empty())
            continue;
        if (placed.unit == 0.0f)
            placed = place(mesh, scene);
        PickDraw draw = placed.draw;
        draw.object = std::uint32_t(scene.objectNames.size());
        draw.instance = placed.instances++;
        draw.sceneFromMesh = scaling(sceneUnit) * instance.worldFromModel * scaling(1.0f / placed.unit);
        scene.objectNames.push_back(nameOf(model, instance));
        scene.draws.push_back(draw);
    }
    return scene;
}

PickView makePickView(const Model& model, const PickScene& scene, float azimuth, float elevation, const QSize& size)
{
    const float factor = 1.0f / scene.worldFromScene;
    Model outline; // measures only, to frame by
    outline.bounds = {factor * model.bounds.minimum, factor * model.bounds.maximum};
    for (const QVector3D& extreme : model.extremes)
        outline.extremes.push_back(factor * extreme);

    const float aspect = float(size.width()) / float(size.height());
    vrkview::OrbitCamera camera;
    camera.setAngles(azimuth, elevation);
    camera.frame(outline, aspect);
    return {camera.viewFromWorld(), camera.clipFromView(aspect), size};
}

} // namespace deeppick
