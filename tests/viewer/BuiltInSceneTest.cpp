// SPDX-License-Identifier: MIT
#include "BuiltInScene.h"

#include <gtest/gtest.h>

#include <cmath>
#include <set>

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
