// SPDX-License-Identifier: MIT
#include "Shapes.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <map>
#include <tuple>
#include <utility>

using namespace vrkview;

namespace
{

using Point = std::tuple<int, int, int>;

// Vertices at one place count as one, whatever their normals.
Point rounded(const QVector3D& position)
{
    const auto step = [](float value) { return int(std::lround(double(value) * 1.0e5)); };
    return {step(position.x()), step(position.y()), step(position.z())};
}

void expectSoundVertices(const Mesh& mesh)
{
    ASSERT_FALSE(mesh.positions.empty());
    ASSERT_EQ(mesh.normals.size(), mesh.positions.size());
    ASSERT_EQ(mesh.texCoords.size(), mesh.positions.size());
    ASSERT_EQ(mesh.indices.size() % 3, 0u);
    for (const std::uint32_t index : mesh.indices)
        ASSERT_LT(index, mesh.positions.size());
    for (const QVector3D& normal : mesh.normals)
        EXPECT_NEAR(normal.length(), 1.0f, 1.0e-4f);
}

// Each edge is walked once in each direction: no hole, no flap, one side throughout.
void expectClosed(const Mesh& mesh)
{
    std::map<std::pair<Point, Point>, int> walks;
    for (std::size_t i = 0; i < mesh.indices.size(); i += 3)
    {
        std::array<Point, 3> corners;
        for (std::size_t corner = 0; corner < 3; ++corner)
            corners[corner] = rounded(mesh.positions[mesh.indices[i + corner]]);
        for (std::size_t corner = 0; corner < 3; ++corner)
            ++walks[{corners[corner], corners[(corner + 1) % 3]}];
    }
    int unmatched = 0;
    for (const auto& [edge, count] : walks)
    {
        const auto back = walks.find({edge.second, edge.first});
        if (back == walks.end() || back->second != count)
            ++unmatched;
    }
    EXPECT_EQ(unmatched, 0);
}

// By the divergence theorem: positive where triangles wind outwards.
double volume(const Mesh& mesh)
{
    double sum = 0.0;
    for (std::size_t i = 0; i < mesh.indices.size(); i += 3)
    {
        const QVector3D& a = mesh.positions[mesh.indices[i]];
        const QVector3D& b = mesh.positions[mesh.indices[i + 1]];
        const QVector3D& c = mesh.positions[mesh.indices[i + 2]];
        sum += double(QVector3D::dotProduct(a, QVector3D::crossProduct(b, c))) / 6.0;
    }
    return sum;
}

void expectNormalsOnTheOutside(const Mesh& mesh)
{
    int wrong = 0;
    for (std::size_t i = 0; i < mesh.indices.size(); i += 3)
    {
        const QVector3D& a = mesh.positions[mesh.indices[i]];
        const QVector3D& b = mesh.positions[mesh.indices[i + 1]];
        const QVector3D& c = mesh.positions[mesh.indices[i + 2]];
        const QVector3D plane = QVector3D::crossProduct(b - a, c - a);
        for (std::size_t corner = i; corner < i + 3; ++corner)
            if (QVector3D::dotProduct(plane, mesh.normals[mesh.indices[corner]]) <= 0.0f)
                ++wrong;
    }
    EXPECT_EQ(wrong, 0);
}

constexpr double kPi = 3.14159265358979323846;

} // namespace

TEST(ShapesTest, SphereIsClosedWithTheVolumeOfASphere)
{
    const Mesh mesh = makeSphere(64);
    expectSoundVertices(mesh);
    expectClosed(mesh);
    expectNormalsOnTheOutside(mesh);
    EXPECT_NEAR(volume(mesh), 4.0 / 3.0 * kPi, 0.01);
    for (std::size_t i = 0; i < mesh.positions.size(); ++i)
        EXPECT_NEAR((mesh.positions[i] - mesh.normals[i]).length(), 0.0f, 1.0e-5f);
}

TEST(ShapesTest, TorusIsClosedWithTheVolumeOfATorus)
{
    const Mesh mesh = makeTorus(2.0f, 0.5f, 64);
    expectSoundVertices(mesh);
    expectClosed(mesh);
    expectNormalsOnTheOutside(mesh);
    EXPECT_NEAR(volume(mesh), 2.0 * kPi * kPi * 2.0 * 0.25, 0.05);
}

TEST(ShapesTest, RoundedBoxIsClosedAndKeepsItsSize)
{
    const Mesh mesh = makeRoundedBox({1.0f, 0.5f, 2.0f}, 0.2f, 12);
    expectSoundVertices(mesh);
    expectClosed(mesh);
    expectNormalsOnTheOutside(mesh);

    // A box grown by a sphere: core, slabs on its faces, quarter cylinders on its edges, eighths of a sphere.
    const double x = 1.6, y = 0.6, z = 3.6, r = 0.2;
    const double expected =
        x * y * z + 2.0 * r * (x * y + y * z + z * x) + kPi * r * r * (x + y + z) + 4.0 / 3.0 * kPi * r * r * r;
    EXPECT_NEAR(volume(mesh), expected, 0.01);

    Bounds bounds;
    for (const QVector3D& position : mesh.positions)
        bounds.add(position);
    EXPECT_NEAR((bounds.maximum - QVector3D(1.0f, 0.5f, 2.0f)).length(), 0.0f, 1.0e-5f);
    EXPECT_NEAR((bounds.minimum + QVector3D(1.0f, 0.5f, 2.0f)).length(), 0.0f, 1.0e-5f);
}

TEST(ShapesTest, RoundedBoxWithTooLargeARadiusBecomesARoundBody)
{
    const Mesh mesh = makeRoundedBox({1.0f, 1.0f, 1.0f}, 9.0f, 24);
    expectSoundVertices(mesh);
    EXPECT_NEAR(volume(mesh), 4.0 / 3.0 * kPi, 0.02);
}

TEST(ShapesTest, KnotIsClosedWithTheVolumeOfItsTube)
{
    const float radius = 0.3f;
    const Mesh mesh = makeTrefoilKnot(1.0f, radius, 400, 48);
    expectSoundVertices(mesh);
    expectClosed(mesh);
    expectNormalsOnTheOutside(mesh);

    // The length of the curve ((2 + cos 3t) cos 2t, sin 3t, -(2 + cos 3t) sin 2t).
    double length = 0.0;
    const int steps = 100000;
    for (int i = 0; i < steps; ++i)
    {
        const double t = 2.0 * kPi * i / steps;
        const double ring = 2.0 + std::cos(3.0 * t);
        const double outward = -3.0 * std::sin(3.0 * t);
        const double up = 3.0 * std::cos(3.0 * t);
        length += std::sqrt(outward * outward + up * up + 4.0 * ring * ring) * 2.0 * kPi / steps;
    }
    EXPECT_NEAR(volume(mesh), kPi * double(radius) * double(radius) * length, 0.05);
}

TEST(ShapesTest, CappedSweepIsClosed)
{
    const Profile square = sharpProfile({{1.0f, 0.0f}, {2.0f, 0.0f}, {2.0f, 1.0f}, {1.0f, 1.0f}, {1.0f, 0.0f}});
    const Mesh mesh = revolve(square, 90, 30.0f, 120.0f, true);
    expectSoundVertices(mesh);
    expectClosed(mesh);
    expectNormalsOnTheOutside(mesh);
    EXPECT_NEAR(volume(mesh), kPi * (4.0 - 1.0) / 3.0, 0.01);
}

TEST(ShapesTest, SharpProfileTurnsItsNormalsOutwards)
{
    const Profile profile = sharpProfile({{0.0f, 0.0f}, {1.0f, 0.0f}, {1.0f, 2.0f}, {0.0f, 2.0f}});
    ASSERT_EQ(profile.size(), 6u);
    EXPECT_FLOAT_EQ(profile[0].normalUp, -1.0f); // the bottom
    EXPECT_FLOAT_EQ(profile[2].normalOut, 1.0f); // the side
    EXPECT_FLOAT_EQ(profile[4].normalUp, 1.0f);  // the top
    const Mesh mesh = revolve(profile, 128);
    expectClosed(mesh);
    EXPECT_NEAR(volume(mesh), 2.0 * kPi, 0.01);
}

// ---- texture coordinates --------------------------------------------------------------------------------------------

TEST(ShapesTest, PicturesLieOnACylinderAsOnPaper)
{
    const Mesh mesh = revolve(sharpProfile({{2.0f, 1.0f}, {2.0f, 4.0f}}), 8);
    const float around = 2.0f * 3.14159265f * 2.0f;
    for (std::size_t i = 0; i < mesh.positions.size(); ++i)
    {
        EXPECT_NEAR(mesh.texCoords[i].x(), around * float(i % 9) / 8.0f, 1.0e-4f);
        EXPECT_NEAR(mesh.texCoords[i].y(), mesh.positions[i].y() - 1.0f, 1.0e-5f);
    }
}

TEST(ShapesTest, PicturesLieOnLevelFacesAsSeenFromAbove)
{
    const Mesh mesh = revolve(sharpProfile({{0.0f, 0.0f}, {3.0f, 0.0f}, {3.0f, 1.0f}, {0.0f, 1.0f}}), 16);
    int level = 0;
    for (std::size_t i = 0; i < mesh.positions.size(); ++i)
    {
        if (std::abs(mesh.normals[i].y()) < 0.5f)
            continue;
        ++level;
        EXPECT_FLOAT_EQ(mesh.texCoords[i].x(), mesh.positions[i].x());
        EXPECT_FLOAT_EQ(mesh.texCoords[i].y(), -mesh.positions[i].z());
    }
    EXPECT_EQ(level, 4 * 17);
}

// A rounded edge passes through the direction of level faces, but is none.
TEST(ShapesTest, PicturesGoOnOverRoundEdges)
{
    const Mesh mesh = revolve({{2.0f, 0.0f, 1.0f, 0.0f}, {1.5f, 0.5f, 0.0f, 1.0f}, {1.0f, 0.0f, -1.0f, 0.0f}}, 8);
    for (std::size_t i = 9; i < 18; ++i)
        EXPECT_NEAR(mesh.texCoords[i].y(), std::hypot(0.5f, 0.5f), 1.0e-5f);
}

TEST(ShapesTest, RepeatsAroundAreWhole)
{
    Mesh mesh = revolve(sharpProfile({{1.0f, 0.0f}, {1.0f, 3.0f}}), 8);
    repeatTexCoords(mesh, 0.5f);
    EXPECT_FLOAT_EQ(mesh.texCoords[8].x(), 3.0f) << "of 2 pi units, each of which has half a picture";
    EXPECT_FLOAT_EQ(mesh.texCoords.back().y(), 1.5f);
    Mesh small = revolve(sharpProfile({{0.1f, 0.0f}, {0.1f, 3.0f}}), 8);
    repeatTexCoords(small, 0.5f);
    EXPECT_FLOAT_EQ(small.texCoords[8].x(), 1.0f) << "not none at all";
}
