// SPDX-License-Identifier: MIT
#include "ScreenWall.h"

#include "Shapes.h"

namespace vrkview
{

namespace
{

constexpr int kColumns = 4;
constexpr int kRows = 2;
constexpr float kSpacing = 1.14f;
constexpr StreamerKind kKinds[] = {StreamerKind::Colors, StreamerKind::Images, StreamerKind::MandelbrotCPU,
                                   StreamerKind::MandelbrotGPU};
constexpr const char* kNames[] = {"colours", "images", "fractal by the processor", "fractal by the GPU"};

Mesh makeScreen()
{
    Mesh mesh;
    mesh.name = QStringLiteral("screen");
    mesh.positions = {{-0.5f, -0.5f, 0.0f}, {0.5f, -0.5f, 0.0f}, {0.5f, 0.5f, 0.0f}, {-0.5f, 0.5f, 0.0f}};
    mesh.normals.assign(4, QVector3D(0.0f, 0.0f, 1.0f));
    mesh.texCoords = {{0.0f, 0.0f}, {1.0f, 0.0f}, {1.0f, 1.0f}, {0.0f, 1.0f}};
    mesh.indices = {0, 1, 2, 0, 2, 3};
    return mesh;
}

Material screenMaterial(std::size_t image)
{
    Material material;
    material.name = QStringLiteral("screen");
    material.baseColor = {1.0f, 1.0f, 1.0f};
    material.roughness = 1.0f;
    material.baseColorImage = image;
    material.wrapS = Wrap::Clamp;
    material.wrapT = Wrap::Clamp;
    return material;
}

QMatrix4x4 placeOf(int column, int row, float z)
{
    QMatrix4x4 matrix;
    matrix.translate((float(column) - 0.5f * float(kColumns - 1)) * kSpacing,
                     (0.5f * float(kRows - 1) - float(row)) * kSpacing, z);
    return matrix;
}

} // namespace

Model makeScreenWall()
{
    Model model;
    model.name = QStringLiteral("wall of screens");
    model.materials.push_back({QStringLiteral("frame"), {0.10f, 0.11f, 0.13f}, 0.35f});
    Mesh frame = makeRoundedBox({0.54f, 0.54f, 0.05f}, 0.03f, 4);
    frame.name = QStringLiteral("frame");
    model.meshes = {makeScreen(), frame};
    for (int row = 0; row < kRows; ++row)
    {
        for (int column = 0; column < kColumns; ++column)
        {
            // The second row runs the other way, so that the same kinds do not stand one below the other.
            const int kind = row == 0 ? column : kColumns - 1 - column;
            Image image;
            image.path = QLatin1String(kNames[kind]);
            image.streamer = kKinds[kind];
            model.images.push_back(image);
            model.materials.push_back(screenMaterial(model.images.size() - 1));
            model.instances.push_back({0, placeOf(column, row, 0.051f), -1, model.materials.size() - 1});
            model.instances.push_back({1, placeOf(column, row, 0.0f)});
        }
    }
    model.measure();
    return model;
}

} // namespace vrkview
