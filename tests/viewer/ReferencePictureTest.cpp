// SPDX-License-Identifier: MIT
// The viewer's pictures beside the same pictures computed by a ray caster. Files keep what was measured.
#include "ReferencePicture.h"
#include "ModelFiles.h"
#include "ViewerRun.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

using namespace reference;

namespace
{

constexpr double kAzimuth = 33.0;
constexpr double kElevation = 24.0;
const QSize kSize(240, 160);

// Steps of 255. The driver's own powers and its choice of samples cost a step or so; along edges, where its samples
// stand at other places than ours, a part of the contrast.
constexpr double kLargestInside = 2.5;
constexpr double kMeanInside = 0.6;
constexpr double kLargest = 25.0;
constexpr double kMean = 0.7;

// Eight corners of the cube from -1 to 1, as triangles without area: not to be seen, but framed.
TriangleSoup invisibleCorners()
{
    TriangleSoup soup;
    for (int corner = 0; corner < 8; ++corner)
    {
        const QVector3D position(corner & 1 ? 1.0f : -1.0f, corner & 2 ? 1.0f : -1.0f, corner & 4 ? 1.0f : -1.0f);
        const auto index = std::uint32_t(soup.positions.size());
        soup.positions.push_back(position);
        soup.normals.emplace_back(0.0f, 1.0f, 0.0f);
        soup.indices.insert(soup.indices.end(), {index, index, index});
    }
    return soup;
}

Camera cubeCamera()
{
    const auto support = [](const Vec& d) { return std::abs(d.x) + std::abs(d.y) + std::abs(d.z); };
    return frame(kAzimuth, kElevation, double(kSize.width()) / kSize.height(), support, Vec());
}

std::optional<Hit> cube(const Vec& origin, const Vec& direction)
{
    double enter = 0.0;
    double leave = std::numeric_limits<double>::infinity();
    Vec normal;
    const std::pair<double, double> axes[] = {
        {origin.x, direction.x}, {origin.y, direction.y}, {origin.z, direction.z}};
    for (int axis = 0; axis < 3; ++axis)
    {
        const auto [at, along] = axes[axis];
        const double first = ((along > 0.0 ? -1.0 : 1.0) - at) / along;
        const double second = ((along > 0.0 ? 1.0 : -1.0) - at) / along;
        if (first > enter)
        {
            enter = first;
            const double side = along > 0.0 ? -1.0 : 1.0;
            normal = {axis == 0 ? side : 0.0, axis == 1 ? side : 0.0, axis == 2 ? side : 0.0};
        }
        leave = std::min(leave, second);
    }
    if (enter >= leave)
        return std::nullopt;
    return Hit{enter, normal};
}

std::optional<Hit> sphere(const Vec& origin, const Vec& direction)
{
    const double b = dot(origin, direction);
    const double discriminant = b * b - dot(origin, origin) + 1.0;
    if (discriminant <= 0.0)
        return std::nullopt;
    const double distance = -b - std::sqrt(discriminant);
    return Hit{distance, origin + distance * direction};
}

void expectSamePicture(const QString& modelPath, const Shape& shape, const Surface& surface, const char* name)
{
    const QImage picture =
        drawWithViewer({modelPath, "--size", QString("%1x%2").arg(kSize.width()).arg(kSize.height()), "--azimuth",
                        QString::number(kAzimuth), "--elevation", QString::number(kElevation)});
    ASSERT_EQ(picture.size(), kSize);
    const Comparison comparison = compare(picture, draw(kSize, 8, cubeCamera(), shape, surface));

    std::printf("%s: inside %d pixels, largest %.2f, mean %.3f; all, largest %.2f, mean %.3f (steps of 255)\n", name,
                comparison.inside, comparison.largestInside, comparison.meanInside, comparison.largest,
                comparison.mean);
    testing::Test::RecordProperty("largestInside", std::to_string(comparison.largestInside));
    testing::Test::RecordProperty("meanInside", std::to_string(comparison.meanInside));
    EXPECT_GT(comparison.inside, kSize.width() * kSize.height() * 4 / 5);
    EXPECT_LE(comparison.largestInside, kLargestInside);
    EXPECT_LE(comparison.meanInside, kMeanInside);
    EXPECT_LE(comparison.largest, kLargest);
    EXPECT_LE(comparison.mean, kMean);
}

} // namespace

TEST(ReferencePictureTest, CubeFromAnObjFile)
{
    const ModelFolder folder;
    folder.write("cube.mtl", "newmtl paint\nKd 0.9 0.5 0.2\n");
    const QString path =
        folder.write("cube.obj", objFile(boxSoup({-1, -1, -1}, {1, 1, 1}), "mtllib cube.mtl\nusemtl paint\n"));
    const Surface surface = {{std::pow(0.9, 2.2), std::pow(0.5, 2.2), std::pow(0.2, 2.2)}, 0.6, 0.0};
    expectSamePicture(path, cube, surface, "cube");
}

TEST(ReferencePictureTest, RoughSphereFromAGltfFile)
{
    const ModelFolder folder;
    TriangleSoup soup = sphereSoup({0, 0, 0}, 1.0f, 180);
    append(soup, invisibleCorners());
    const QString path = folder.write("sphere.gltf", gltfFile(soup, {QMatrix4x4()}, {0.1f, 0.4f, 0.7f}, 1.0f));
    expectSamePicture(path, sphere, {{0.1, 0.4, 0.7}, 1.0, 0.0}, "rough sphere");
}

TEST(ReferencePictureTest, SmoothSphereWithAHighlight)
{
    const ModelFolder folder;
    TriangleSoup soup = sphereSoup({0, 0, 0}, 1.0f, 180);
    append(soup, invisibleCorners());
    const QString path = folder.write("sphere.gltf", gltfFile(soup, {QMatrix4x4()}, {0.6f, 0.1f, 0.1f}, 0.4f));
    expectSamePicture(path, sphere, {{0.6, 0.1, 0.1}, 0.4, 0.0}, "smooth sphere");
}

TEST(ReferencePictureTest, TheNodesMatrixPlacesTheSphere)
{
    // A small sphere far away, brought back to radius 1 around the origin by an uneven matrix that also mirrors: its
    // normals come out right only by the inverse transpose.
    const ModelFolder folder;
    QMatrix4x4 matrix;
    matrix.scale(-4.0f, 2.0f, 0.5f);
    matrix.translate(-10.0f, 3.0f, 1.0f);
    TriangleSoup soup = sphereSoup({0, 0, 0}, 1.0f, 180);
    append(soup, invisibleCorners());
    const TriangleSoup moved = transformed(soup, matrix.inverted());
    const QString path = folder.write("sphere.gltf", gltfFile(moved, {matrix}, {0.6f, 0.1f, 0.1f}, 0.5f));
    expectSamePicture(path, sphere, {{0.6, 0.1, 0.1}, 0.5, 0.0}, "placed sphere");
}
