// SPDX-License-Identifier: MIT
// A model as the deep buffer wants it: all meshes in one list of vertices and one of indices, and a draw for each
// instance. Plain data, the same for the shaders and for the ray on the CPU.
#pragma once

#include <Model.h>

#include <QMatrix4x4>
#include <QSize>
#include <QString>
#include <QVector2D>
#include <QVector4D>

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

namespace deeppick
{

/// What the block of commands that the shaders look a draw up in holds.
constexpr std::size_t kMostDraws = 100;

/// A mesh standing somewhere.
struct PickDraw
{
    std::uint32_t object = 0;   ///< index of the object's name
    std::uint32_t instance = 0; ///< counts the instances of one mesh, from 0
    std::uint32_t firstIndex = 0;
    std::uint32_t indexCount = 0;
    std::uint32_t baseVertex = 0;
    std::uint32_t vertexCount = 0;
    QMatrix4x4 sceneFromMesh;
};

/// Numbers are brought near to 1 by powers of two, which rounds nothing: shaders multiply four lengths with each other,
/// which in the units of a model, from microns to light years, would leave what single precision holds. So a mesh's
/// vertices are in a unit of its own, and the scene in another one.
struct PickScene
{
    std::vector<QVector4D> positions;  ///< w is 1
    std::vector<QVector4D> normals;    ///< w is 0
    std::vector<QVector2D> texCoords;  ///< zeros for a mesh that has none
    std::vector<std::int32_t> indices; ///< three a triangle, counted from the draw's first vertex
    std::vector<PickDraw> draws;
    std::vector<QString> objectNames;
    float worldFromScene = 1.0f; ///< a factor
    float radius = 1.0f;         ///< of the whole, in the scene's unit

    std::size_t triangleCount() const;
};

/// Where the eye is, in the scene's unit.
struct PickView
{
    QMatrix4x4 viewFromScene;
    QMatrix4x4 clipFromView;
    QSize size; ///< of the picture, in pixels
};

/// Nothing, and `error` in one line, for a model of more than `kMostDraws` instances.
std::optional<PickScene> makePickScene(const vrkview::Model& model, QString& error);

/// The view that vrkview has at these angles.
PickView makePickView(const vrkview::Model& model, const PickScene& scene, float azimuth, float elevation,
                      const QSize& size);

} // namespace deeppick
