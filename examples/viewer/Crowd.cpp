// SPDX-License-Identifier: MIT
#include "Crowd.h"

#include "Shapes.h"

#include <cmath>

namespace vrkview
{

namespace
{

constexpr float kSpacing = 2.6f;
constexpr float kCircle = 0.45f;

struct Kind
{
    const char* name;
    Mesh mesh;
    QVector3D baseColor;
    float roughness;
    float metallic;
};

std::vector<Kind> kinds()
{
    std::vector<Kind> result;
    result.push_back({"sphere", makeSphere(12), {0.75f, 0.28f, 0.16f}, 0.45f, 0.0f});
    result.push_back({"box", makeRoundedBox({0.7f, 0.7f, 0.7f}, 0.15f, 2), {0.15f, 0.42f, 0.62f}, 0.6f, 0.0f});
    result.push_back({"ring", makeTorus(0.7f, 0.25f, 14), {0.83f, 0.66f, 0.30f}, 0.3f, 1.0f});
    result.push_back({"cone",
                      revolve(sharpProfile({{0.0f, -0.8f}, {0.8f, -0.8f}, {0.0f, 0.9f}}), 16),
                      {0.35f, 0.60f, 0.25f},
                      0.8f,
                      0.0f});
    return result;
}

/// Between 0 and 1, without a pattern to the eye.
float scattered(int index, unsigned salt)
{
    unsigned bits = unsigned(index) * 2654435761u + salt * 40503u;
    bits = (bits ^ (bits >> 15)) * 2246822519u;
    bits = (bits ^ (bits >> 13)) * 3266489917u;
    return float((bits ^ (bits >> 16)) & 0xFFFFFFu) / float(0x1000000);
}

} // namespace

Model makeCrowd(int count)
{
    Model model;
    model.name = QStringLiteral("crowd of %1").arg(count);
    for (Kind& kind : kinds())
    {
        kind.mesh.name = QLatin1String(kind.name);
        kind.mesh.material = model.materials.size();
        model.meshes.push_back(std::move(kind.mesh));
        Material material;
        material.name = QLatin1String(kind.name);
        material.baseColor = kind.baseColor;
        material.roughness = kind.roughness;
        material.metallic = kind.metallic;
        material.twoSided = false;
        model.materials.push_back(material);
    }
    const int side = int(std::ceil(std::sqrt(double(count))));
    for (int i = 0; i < count; ++i)
    {
        const int column = i % side;
        const int row = i / side;
        const float x = (float(column) - 0.5f * float(side - 1)) * kSpacing;
        const float z = (float(row) - 0.5f * float(side - 1)) * kSpacing;
        Motion motion;
        motion.node = i;
        motion.center = {x, 0.0f, z};
        motion.radius = kCircle * (0.3f + 0.7f * scattered(i, 1));
        motion.turnsPerSecond = 0.1f + 0.3f * scattered(i, 2);
        motion.phase = scattered(i, 3);
        QMatrix4x4 matrix;
        matrix.translate(motion.center);
        model.nodes.push_back({QString(), -1, matrix});
        model.motions.push_back(motion);
        model.instances.push_back({std::size_t(scattered(i, 4) * float(model.meshes.size())), matrix, i});
    }
    model.measure();
    return model;
}

} // namespace vrkview
