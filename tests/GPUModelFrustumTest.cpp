// SPDX-License-Identifier: MIT
//
// What the frustum keeps and what it takes, on 100,000 boxes that were drawn by lot: beside an independent computation
// in double, and beside the stated steps written down plainly.
#include "GPUModelPassTestTools.h"

#include "FrustumTest.h"

#include <QQuaternion>
#include <QVector3D>
#include <QVector4D>

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <iterator>
#include <random>

namespace Harrow::Vrk::Test
{
namespace
{

using Box = GPUModel::BoundingBox;

/// The stated steps, one number after the other.
bool isOutsideByTheSteps(const QMatrix4x4& viewProjection, const QMatrix4x4& world, const Box& box)
{
    const QMatrix4x4 m = viewProjection * world;
    for (int plane = 0; plane < 6; ++plane)
    {
        const int row = plane / 2;
        float normal[4];
        for (int i = 0; i < 4; ++i)
            normal[i] = plane % 2 == 0 ? m(3, i) + m(row, i) : m(3, i) - m(row, i);
        const float x = normal[0] >= 0 ? box.maxX : box.minX;
        const float y = normal[1] >= 0 ? box.maxY : box.minY;
        const float z = normal[2] >= 0 ? box.maxZ : box.minZ;
        if (normal[0] * x + normal[1] * y + normal[2] * z + normal[3] <= 0)
            return true;
    }
    return false;
}

class Lot
{
public:
    float between(float low, float high)
    {
        return std::uniform_real_distribution<float>(low, high)(_engine);
    }
    int whole(int low, int high)
    {
        return std::uniform_int_distribution<int>(low, high)(_engine);
    }
    QVector3D point(float extent)
    {
        const float x = between(-extent, extent);
        const float y = between(-extent, extent);
        return {x, y, between(-extent, extent)};
    }

    QMatrix4x4 camera()
    {
        QMatrix4x4 matrix;
        if (whole(0, 3) == 0)
            matrix.ortho(-between(1, 8), between(1, 8), -between(1, 8), between(1, 8), between(0, 1), between(5, 40));
        else
            matrix.perspective(between(20, 110), between(0.4f, 2.5f), between(0.05f, 1.0f), between(5, 60));
        matrix.lookAt(point(8), point(8), point(1) + QVector3D(0, 3, 0));
        return matrix;
    }

    /// Of all kinds: turned, mirrored, stretched.
    QMatrix4x4 world()
    {
        QMatrix4x4 matrix;
        matrix.translate(point(15));
        matrix.rotate(between(0, 360), point(1) + QVector3D(0.01f, 0, 0));
        matrix.scale(between(-2, 2), between(0.1f, 3), between(0.1f, 3));
        return matrix;
    }

    Box box()
    {
        const QVector3D centre = point(4);
        const QVector3D half(between(0.01f, 2), between(0.01f, 2), between(0.01f, 2));
        const QVector3D least = centre - half;
        const QVector3D greatest = centre + half;
        return {least.x(), least.y(), least.z(), greatest.x(), greatest.y(), greatest.z()};
    }

    /// Small whole numbers, so that boxes touch planes exactly.
    QMatrix4x4 wholeMatrix()
    {
        QMatrix4x4 matrix;
        for (int row = 0; row < 4; ++row)
            for (int column = 0; column < 4; ++column)
                matrix(row, column) = float(whole(-2, 2));
        return matrix;
    }

    Box wholeBox()
    {
        const auto x = float(whole(-3, 3));
        const auto y = float(whole(-3, 3));
        const auto z = float(whole(-3, 3));
        return {x, y, z, x + float(whole(0, 2)), y + float(whole(0, 2)), z + float(whole(0, 2))};
    }

private:
    std::mt19937 _engine{20240607};
};

using Point = std::array<double, 3>;

/// In clip space, in double.
std::array<double, 4> clip(const QMatrix4x4& viewProjection, const QMatrix4x4& world, const Point& point)
{
    const auto apply = [](const QMatrix4x4& matrix, const std::array<double, 4>& v)
    {
        std::array<double, 4> result = {};
        for (int row = 0; row < 4; ++row)
            for (int column = 0; column < 4; ++column)
                result[std::size_t(row)] += double(matrix(row, column)) * v[std::size_t(column)];
        return result;
    };
    return apply(viewProjection, apply(world, {point[0], point[1], point[2], 1.0}));
}

/// How far inside each of the six planes, as far as floats can tell.
std::array<double, 6> depths(const std::array<double, 4>& p)
{
    return {p[3] + p[0], p[3] - p[0], p[3] + p[1], p[3] - p[1], p[3] + p[2], p[3] - p[2]};
}

constexpr double kRounding = 1e-3;

std::array<Point, 8> corners(const Box& box)
{
    std::array<Point, 8> result;
    for (std::size_t i = 0; i < 8; ++i)
        result[i] = {i & 1 ? box.maxX : box.minX, i & 2 ? box.maxY : box.minY, i & 4 ? box.maxZ : box.minZ};
    return result;
}

Point within(Lot& lot, const Box& box)
{
    return {lot.between(box.minX, box.maxX), lot.between(box.minY, box.maxY), lot.between(box.minZ, box.maxZ)};
}

bool isInside(const std::array<double, 4>& point)
{
    const auto inside = depths(point);
    return std::all_of(inside.begin(), inside.end(), [](double depth) { return depth > kRounding; });
}

/// Whether a corner, or any of many points within, is inside.
bool isPartlyInside(Lot& lot, const QMatrix4x4& viewProjection, const QMatrix4x4& world, const Box& box)
{
    for (const Point& corner : corners(box))
        if (isInside(clip(viewProjection, world, corner)))
            return true;
    for (int i = 0; i < 16; ++i)
        if (isInside(clip(viewProjection, world, within(lot, box))))
            return true;
    return false;
}

/// Whether one plane has all corners on its outer side.
bool isBehindOnePlane(const QMatrix4x4& viewProjection, const QMatrix4x4& world, const Box& box)
{
    std::array<bool, 6> behind;
    behind.fill(true);
    for (const Point& corner : corners(box))
    {
        const auto inside = depths(clip(viewProjection, world, corner));
        for (std::size_t plane = 0; plane < 6; ++plane)
            behind[plane] = behind[plane] && inside[plane] <= kRounding;
    }
    return std::any_of(behind.begin(), behind.end(), [](bool is) { return is; });
}

} // namespace

TEST(GPUModelFrustumTest, NoBoxWithAPointInsideIsCulledAndEachCulledOneIsBehindAPlane)
{
    constexpr int kCameras = 100;
    constexpr int kBoxes = 1000;
    Lot lot;
    GPUModel model;
    const int handle = model.add(newDrawList(kBoxes), 0, nullptr, nullptr, 0);
    for (int i = 0; i < kBoxes; ++i)
    {
        model.useTransform(handle, i, model.addTransform(-1, QMatrix4x4()));
        model.useBoundingBox(handle, i, i);
    }
    int visible = 0;
    int culled = 0;
    for (int c = 0; c < kCameras; ++c)
    {
        QList<Box> boxes;
        for (int i = 0; i < kBoxes; ++i)
        {
            boxes.append(lot.box());
            model.setLocalTransform(i, lot.world(), false);
        }
        model.loadBoundingBoxes(boxes.constData(), kBoxes);
        model.updateTransforms();
        model.resetCulling();
        const QMatrix4x4 camera = lot.camera();
        const int count = model.frustumCull(camera);
        const GPUModel::Drawable& drawable = GPUModelTestAccess::drawableAt(model, 0);
        ASSERT_EQ(drawable.culled.count(true), count);
        culled += count;
        for (int i = 0; i < kBoxes; ++i)
        {
            const bool isInView = isPartlyInside(lot, camera, model.worldTransform(i), boxes.at(i));
            visible += isInView ? 1 : 0;
            ASSERT_FALSE(isInView && drawable.culled.at(i)) << "camera " << c << ", box " << i;
            const bool mayBeCulled = isBehindOnePlane(camera, model.worldTransform(i), boxes.at(i));
            ASSERT_EQ(drawable.culled.at(i), isOutsideByTheSteps(camera, model.worldTransform(i), boxes.at(i)));
            ASSERT_TRUE(mayBeCulled || !drawable.culled.at(i)) << "camera " << c << ", box " << i;
        }
    }
    // The lot is a fair one.
    EXPECT_GT(visible, 10'000);
    EXPECT_GT(culled, 30'000);
}

TEST(GPUModelFrustumTest, AnswersAreThoseOfThePlainSteps)
{
    Lot lot;
    int outside = 0;
    for (int c = 0; c < 1000; ++c)
    {
        const QMatrix4x4 camera = lot.camera();
        const FrustumTest frustum(camera);
        for (int i = 0; i < 100; ++i)
        {
            const QMatrix4x4 world = lot.world();
            const Box box = lot.box();
            const bool expected = isOutsideByTheSteps(camera, world, box);
            ASSERT_EQ(frustum.isOutside(world.constData(), &box.minX), expected) << c << ", " << i;
            outside += expected ? 1 : 0;
        }
    }
    EXPECT_GT(outside, 30'000);
    EXPECT_LT(outside, 90'000);
}

TEST(GPUModelFrustumTest, AnswersAreThoseOfThePlainStepsWhereBoxesTouchPlanes)
{
    Lot lot;
    int touching = 0;
    int inside = 0;
    for (int i = 0; i < 100'000; ++i)
    {
        const QMatrix4x4 camera = lot.wholeMatrix();
        const QMatrix4x4 world = i % 2 == 0 ? QMatrix4x4() : lot.wholeMatrix();
        const Box box = lot.wholeBox();
        const bool expected = isOutsideByTheSteps(camera, world, box);
        ASSERT_EQ(FrustumTest(camera).isOutside(world.constData(), &box.minX), expected) << i;
        inside += expected ? 0 : 1;
        // One more on each side makes a box that touches from outside come in.
        const Box grown = {box.minX - 0.001f, box.minY - 0.001f, box.minZ - 0.001f,
                           box.maxX + 0.001f, box.maxY + 0.001f, box.maxZ + 0.001f};
        touching += expected && !isOutsideByTheSteps(camera, world, grown) ? 1 : 0;
    }
    EXPECT_GT(touching, 1000);
    EXPECT_GT(inside, 1000);
}

TEST(GPUModelFrustumTest, AnswersAreThoseOfThePlainStepsForUnusualNumbers)
{
    const float unusual[] = {0.0f,   -0.0f, 1e-45f, -1e-45f,  3e38f,     -3e38f,
                             1e-20f, 1e20f, -1e20f, INFINITY, -INFINITY, NAN};
    Lot lot;
    const auto any = [&lot, &unusual]
    { return lot.whole(0, 9) > 0 ? lot.between(-2, 2) : unusual[lot.whole(0, int(std::size(unusual)) - 1)]; };
    int outside = 0;
    for (int i = 0; i < 100'000; ++i)
    {
        // Written by element, so that Qt takes no short cut for a special kind of matrix, which leaves out products
        // with 0.
        QMatrix4x4 camera;
        QMatrix4x4 world;
        for (int row = 0; row < 4; ++row)
            for (int column = 0; column < 4; ++column)
            {
                camera(row, column) = any();
                world(row, column) = any();
            }
        const Box box = {any(), any(), any(), any(), any(), any()};
        const bool expected = isOutsideByTheSteps(camera, world, box);
        ASSERT_EQ(FrustumTest(camera).isOutside(world.constData(), &box.minX), expected) << i;
        outside += expected ? 1 : 0;
    }
    EXPECT_GT(outside, 1000);
    EXPECT_LT(outside, 99'000);
}

} // namespace Harrow::Vrk::Test
