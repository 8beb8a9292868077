// SPDX-License-Identifier: MIT
#include "BuiltInScene.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <set>
#include <vector>

using namespace vrkview;

namespace
{

const Model& scene()
{
    static const Model model = makeBuiltInScene();
    return model;
}

} // namespace

TEST(BuiltInSceneTest, IsDrawableAndMoreThanAFewTriangles)
{
    EXPECT_TRUE(scene().fault().isEmpty()) << scene().fault().toStdString();
    EXPECT_GT(scene().triangleCount(), 10000u);
    EXPECT_GT(scene().meshes.size(), 5u);
    EXPECT_FALSE(scene().name.isEmpty());
}

TEST(BuiltInSceneTest, IndicesNormalsAndReferencesAreInRange)
{
    for (const Mesh& mesh : scene().meshes)
    {
        ASSERT_EQ(mesh.normals.size(), mesh.positions.size()) << mesh.name.toStdString();
        ASSERT_LT(mesh.material, scene().materials.size()) << mesh.name.toStdString();
        for (const std::uint32_t index : mesh.indices)
            ASSERT_LT(index, mesh.positions.size()) << mesh.name.toStdString();
        for (const QVector3D& normal : mesh.normals)
            ASSERT_NEAR(normal.length(), 1.0f, 1.0e-4f) << mesh.name.toStdString();
    }
    for (const Instance& instance : scene().instances)
        ASSERT_LT(instance.mesh, scene().meshes.size());
}

TEST(BuiltInSceneTest, BoundsHoldEveryVertex)
{
    const Bounds& bounds = scene().bounds;
    ASSERT_FALSE(bounds.isEmpty());
    for (const Instance& instance : scene().instances)
    {
        for (const QVector3D& position : scene().meshes[instance.mesh].positions)
        {
            const QVector3D point = instance.worldFromModel.map(position);
            for (int axis = 0; axis < 3; ++axis)
            {
                ASSERT_GE(point[axis], bounds.minimum[axis]);
                ASSERT_LE(point[axis], bounds.maximum[axis]);
            }
        }
    }
}

TEST(BuiltInSceneTest, StandsOnTheGround)
{
    EXPECT_NEAR(scene().bounds.minimum.y(), 0.0f, 1.0e-5f);
}

TEST(BuiltInSceneTest, HoldsSharedMeshesAndMirroredInstances)
{
    std::set<std::size_t> used;
    int mirrored = 0;
    for (const Instance& instance : scene().instances)
    {
        used.insert(instance.mesh);
        mirrored += instance.worldFromModel.determinant() < 0.0 ? 1 : 0;
    }
    EXPECT_LT(used.size(), scene().instances.size());
    EXPECT_EQ(used.size(), scene().meshes.size()) << "each mesh is placed somewhere";
    EXPECT_GE(mirrored, 1);
}

TEST(BuiltInSceneTest, ColorsReflectNoMoreLightThanTheyGet)
{
    for (const Material& material : scene().materials)
    {
        for (int channel = 0; channel < 3; ++channel)
        {
            EXPECT_GE(material.baseColor[channel], 0.0f) << material.name.toStdString();
            EXPECT_LE(material.baseColor[channel], 1.0f) << material.name.toStdString();
        }
    }
}

namespace
{

/// Of all edges of triangles: how far their ends lie apart in the picture, for each unit of length.
std::vector<float> stretches(const Mesh& mesh)
{
    std::vector<float> all;
    for (std::size_t i = 0; i < mesh.indices.size(); i += 3)
    {
        const std::uint32_t* const corners = &mesh.indices[i];
        const QVector3D& first = mesh.positions[corners[0]];
        const QVector3D doubleArea =
            QVector3D::crossProduct(mesh.positions[corners[1]] - first, mesh.positions[corners[2]] - first);
        if (doubleArea.length() < 1.0e-6f)
            continue; // of a strip between two edges at one place, which nobody sees
        for (std::size_t corner = 0; corner < 3; ++corner)
        {
            const std::uint32_t from = corners[corner];
            const std::uint32_t to = corners[(corner + 1) % 3];
            all.push_back((mesh.texCoords[to] - mesh.texCoords[from]).length() /
                          (mesh.positions[to] - mesh.positions[from]).length());
        }
    }
    std::sort(all.begin(), all.end());
    return all;
}

} // namespace

// Where a texture coordinate jumps from one vertex to the next, the whole picture shows between them as a stripe.
TEST(BuiltInSceneTest, PicturesRunOverSurfacesWithoutAJump)
{
    for (const Mesh& mesh : scene().meshes)
    {
        if (!scene().materials[mesh.material].baseColorImage)
            continue;
        const std::vector<float> all = stretches(mesh);
        ASSERT_FALSE(all.empty());
        EXPECT_LT(all.back(), 8.0f * all[all.size() / 2]) << mesh.name.toStdString();
    }
}

TEST(BuiltInSceneTest, HasTilesScreensMetalsAndPlastics)
{
    std::set<StreamerKind> streamers;
    std::size_t tiles = 0;
    for (const Image& image : scene().images)
    {
        if (image.streamer)
            streamers.insert(*image.streamer);
        if (image.kind == ImageKind::Tiles)
            tiles += image.parts.size();
    }
    EXPECT_EQ(streamers.size(), 4u);
    EXPECT_EQ(tiles, 10u);
    const auto isMetal = [](const Material& material) { return material.metallic == 1.0f; };
    const std::vector<Material>& materials = scene().materials;
    EXPECT_GE(std::count_if(materials.begin(), materials.end(), isMetal), 4);
    EXPECT_GE(std::count_if(materials.begin(), materials.end(), std::not_fn(isMetal)), 8);
}

// Texture coordinates of the frieze say which of its pictures is seen: each of them is, once around.
TEST(BuiltInSceneTest, EachTileIsSeenSomewhere)
{
    const auto isFrieze = [](const Mesh& mesh) { return mesh.name == QLatin1String("frieze"); };
    const auto frieze = std::find_if(scene().meshes.begin(), scene().meshes.end(), isFrieze);
    ASSERT_NE(frieze, scene().meshes.end());
    std::set<int> tiles;
    for (std::size_t i = 0; i < frieze->indices.size(); i += 3)
    {
        QVector2D middle;
        for (std::size_t corner = 0; corner < 3; ++corner)
            middle += frieze->texCoords[frieze->indices[i + corner]] / 3.0f;
        EXPECT_GT(middle.y(), 0.0f);
        EXPECT_LT(middle.y(), 1.0f);
        tiles.insert(int(std::floor(middle.x())));
    }
    EXPECT_EQ(tiles, (std::set<int>{0, 1, 2, 3, 4, 5, 6, 7, 8, 9}));
}
