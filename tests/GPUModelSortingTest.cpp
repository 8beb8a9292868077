// SPDX-License-Identifier: MIT
//
// Commands sorted by distance: from which point, in which space, and what comes of those that have none.
#include "GPUModelDrawingTestTools.h"

#include <QVector3D>

#include <algorithm>
#include <cmath>
#include <limits>
#include <random>

namespace Harrow::Vrk::Test
{
namespace
{

using Box = GPUModel::BoundingBox;

class GPUModelSortingTest : public GPUModelDrawing
{
protected:
    /// One drawable with a command for each box, all under `shown`.
    int addBoxes(const QList<Box>& boxes)
    {
        const int handle = add(int(boxes.size()));
        model.loadBoundingBoxes(boxes.constData(), int(boxes.size()));
        for (int command = 0; command < boxes.size(); ++command)
            model.useBoundingBox(handle, command, command);
        return handle;
    }

    /// One unit wide, at `x`.
    static Box boxAt(float x)
    {
        return {x, -0.5f, -0.5f, x + 1, 0.5f, 0.5f};
    }

    /// The commands in the order in which they are drawn, those with the front turned around behind a -1.
    QList<int> drawn(const QMatrix4x4* matrix, quint64 value = kSortFlag,
                     GPUModel::WindingType winding = GPUModel::WindingUnchanged)
    {
        CallLog calls;
        EXPECT_TRUE(model.draw(program.get(), manager.get(), value, 0, winding, matrix, false));
        QList<int> commands;
        for (const QString& made : calls.named({"glUniform1ui", "glFrontFace"}))
        {
            if (made == call("glFrontFace", GL_CW))
                commands.append(-1);
            for (int command = 0; command < 1000; ++command)
                if (made == call("glUniform1ui", kDrawIDLocation, command))
                    commands.append(command);
        }
        return commands;
    }

    /// From the point `p`: the negated position of the matrix's inverse.
    QList<int> drawnFrom(const QVector3D& p, GPUModel::WindingType winding = GPUModel::WindingUnchanged)
    {
        const QMatrix4x4 matrix = translation(p.x(), p.y(), p.z());
        return drawn(&matrix, kSortFlag, winding);
    }
};

TEST_F(GPUModelSortingTest, TheNearestIsDrawnFirst)
{
    addBoxes({boxAt(6), boxAt(2), boxAt(9), boxAt(4)});
    EXPECT_EQ(drawnFrom({0, 0, 0}), QList<int>({1, 3, 0, 2}));
    EXPECT_EQ(drawnFrom({20, 0, 0}), QList<int>({2, 0, 3, 1}));
    EXPECT_EQ(drawnFrom({7.2f, 0, 0}), QList<int>({0, 2, 3, 1}));
    EXPECT_EQ(drawnFrom({0, 0, 0}), QList<int>({1, 3, 0, 2}));
}

TEST_F(GPUModelSortingTest, ThePointIsTheNegatedPositionOfTheInverse)
{
    addBoxes({boxAt(6), boxAt(-6)});
    QMatrix4x4 matrix;
    matrix.rotate(180, 0, 1, 0);
    matrix.translate(5, 0, 0); // the inverse's position is (-5, 0, 0)
    EXPECT_EQ(drawn(&matrix), QList<int>({0, 1}));
    matrix.translate(-10, 0, 0);
    EXPECT_EQ(drawn(&matrix), QList<int>({1, 0}));
}

TEST_F(GPUModelSortingTest, WithoutAMatrixNothingIsSorted)
{
    addBoxes({boxAt(6), boxAt(2), boxAt(4)});
    EXPECT_EQ(drawn(nullptr), QList<int>({0, 1, 2}));
}

TEST_F(GPUModelSortingTest, WithoutTheBitOfTheValueNothingIsSorted)
{
    addBoxes({boxAt(6), boxAt(2), boxAt(4)});
    model.addFlags(0, kSortFlag); // says nothing here
    const QMatrix4x4 matrix;
    EXPECT_EQ(drawn(&matrix, 0), QList<int>({0, 1, 2}));
    EXPECT_EQ(drawn(&matrix, ~kSortFlag), QList<int>({0, 1, 2}));
    EXPECT_EQ(drawn(&matrix, kSortFlag), QList<int>({1, 2, 0}));
}

TEST_F(GPUModelSortingTest, APointInsideABoxHasDistanceZero)
{
    // The middle of the large box is far away, that of the small one near.
    addBoxes({boxAt(3), {-1, -1, -1, 100, 100, 100}, boxAt(1.5f)});
    EXPECT_EQ(drawnFrom({0, 0, 0}), QList<int>({1, 2, 0}));
    EXPECT_EQ(drawnFrom({3.5f, 20, 0}), QList<int>({1, 0, 2}));
}

TEST_F(GPUModelSortingTest, DistancesAreThoseOfTheNearestPointOfABox)
{
    addBoxes({{3, 3, 3, 4, 4, 4}, {5, -1, -1, 6, 1, 1}}); // a corner sqrt(27) away, and a face 5 away
    EXPECT_EQ(drawnFrom({0, 0, 0}), QList<int>({1, 0}));
    addBoxes({{2, 2, 2, 4, 4, 4}, {5, -1, -1, 6, 1, 1}});
    EXPECT_EQ(drawnFrom({0, 0, 0}).mid(0, 2), QList<int>({0, 1}));
}

TEST_F(GPUModelSortingTest, ABoxIsWhereItsTransformPutsIt)
{
    const int handle = addBoxes({boxAt(0), boxAt(0), boxAt(0)});
    model.useTransform(handle, 0, model.addTransform(-1, translation(30, 0, 0)));
    model.useTransform(handle, 1, model.addTransform(-1, translation(10, 0, 0)));
    model.useTransform(handle, 2, model.addTransform(-1, translation(20, 0, 0)));
    model.updateTransforms();
    EXPECT_EQ(drawnFrom({0, 0, 0}), QList<int>({1, 2, 0}));
    EXPECT_EQ(drawnFrom({40, 0, 0}), QList<int>({0, 2, 1}));
}

TEST_F(GPUModelSortingTest, CommandsAreSortedByWhereTheirTransformsAreNow)
{
    const int handle = addBoxes({boxAt(0), boxAt(0), boxAt(0)});
    const int parent = model.addTransform(-1, QMatrix4x4());
    const int child = model.addTransform(parent, translation(10, 0, 0));
    const int other = model.addTransform(-1, translation(20, 0, 0));
    model.useTransform(handle, 1, child);
    model.useTransform(handle, 2, other);
    model.updateTransforms();
    EXPECT_EQ(drawnFrom({0, 0, 0}), QList<int>({0, 1, 2}));
    model.setLocalTransform(parent, translation(20, 0, 0), false);
    EXPECT_EQ(drawnFrom({0, 0, 0}), QList<int>({0, 1, 2})) << "as they were last updated";
    const GPUModel copy = model;
    model.updateTransforms();
    EXPECT_EQ(drawnFrom({0, 0, 0}), QList<int>({0, 2, 1}));
    model = copy;
    EXPECT_EQ(drawnFrom({0, 0, 0}), QList<int>({0, 1, 2}));
    model.clear(); // and whatever was known of transforms of these numbers
    shown = model.addTransform(-1, translation(50, 0, 0));
    const int near = model.addTransform(-1, translation(1, 0, 0));
    model.updateTransforms();
    const int again = addBoxes({boxAt(0), boxAt(0)});
    model.useTransform(again, 1, near);
    lists.back()->setDrawIDBase(0);
    EXPECT_EQ(drawnFrom({0, 0, 0}), QList<int>({1, 0}));
}

TEST_F(GPUModelSortingTest, DistancesCountInTheSpaceOfTheBox)
{
    // In the world the first box begins at 20 and the second at 10; in its own space the first is 2 away.
    const int handle = addBoxes({boxAt(2), boxAt(10)});
    model.useTransform(handle, 0, model.addTransform(-1, scaling(10, 10, 10)));
    model.updateTransforms();
    EXPECT_EQ(drawnFrom({0, 0, 0}), QList<int>({0, 1}));
}

TEST_F(GPUModelSortingTest, ACommandWithoutABoxComesLastAsCommandZero)
{
    const int handle = addBoxes({boxAt(6), boxAt(2), boxAt(4), boxAt(1)});
    model.useBoundingBox(handle, 3, -1);
    EXPECT_EQ(drawnFrom({0, 0, 0}), QList<int>({1, 2, 0, 0}));
    model.useBoundingBox(handle, 1, -1);
    EXPECT_EQ(drawnFrom({0, 0, 0}), QList<int>({2, 0, 0, 0}));
    model.useBoundingBox(handle, 0, -1); // even if that is itself without one
    EXPECT_EQ(drawnFrom({0, 0, 0}), QList<int>({2, 0, 0, 0}));
}

TEST_F(GPUModelSortingTest, ABoxThatThereIsNotIsAsGoodAsNone)
{
    const int handle = addBoxes({boxAt(6), boxAt(2), boxAt(4)});
    model.useBoundingBox(handle, 1, 3);
    EXPECT_EQ(drawnFrom({0, 0, 0}), QList<int>({2, 0, 0}));
    model.useBoundingBox(handle, 1, -5);
    EXPECT_EQ(drawnFrom({0, 0, 0}), QList<int>({2, 0, 0}));
}

TEST_F(GPUModelSortingTest, MirroredCommandsAreSortedAmongThemselves)
{
    const int handle = addBoxes({boxAt(6), boxAt(5), boxAt(2), boxAt(3), boxAt(4)});
    for (const int command : {1, 3, 4})
        model.useTransform(handle, command, mirrored);
    EXPECT_EQ(drawnFrom({0, 0, 0}, GPUModel::WindingCCW), QList<int>({2, 0, -1, 3, 4, 1}));
    EXPECT_EQ(drawnFrom({0, 0, 0}, GPUModel::WindingNone), QList<int>({2, 3, 4, 1, 0}));
}

TEST_F(GPUModelSortingTest, EachDrawableIsSortedOnItsOwn)
{
    addBoxes({boxAt(6), boxAt(2)});
    const int other = add(2);
    model.useBoundingBox(other, 0, 0);
    model.useBoundingBox(other, 1, 1);
    EXPECT_EQ(drawnFrom({0, 0, 0}), QList<int>({1, 0, 101, 100}));
}

TEST_F(GPUModelSortingTest, WhatIsNoNumberComesLastUnderItsOwnNumber)
{
    const float nan = std::numeric_limits<float>::quiet_NaN();
    QList<Box> boxes;
    for (int i = 0; i < 90; ++i)
        boxes.append(boxAt(float(90 - i)));
    const int handle = addBoxes(boxes);
    QMatrix4x4 broken;
    broken.fill(nan);
    const int nowhere = model.addTransform(-1, broken);
    model.updateTransforms();
    for (int command = 0; command < 90; command += 2)
        model.useTransform(handle, command, nowhere);
    QList<int> commands = drawnFrom({0, 0, 0});
    ASSERT_EQ(commands.size(), 90);
    for (int i = 0; i < 45; ++i)
        EXPECT_EQ(commands[i], 89 - 2 * i);
    std::sort(commands.begin(), commands.end());
    for (int i = 0; i < 90; ++i)
        EXPECT_EQ(commands[i], i);
}

TEST_F(GPUModelSortingTest, ATransformThatHasNoInverseCountsAsNone)
{
    const int handle = addBoxes({boxAt(6), boxAt(2), boxAt(4)});
    model.useTransform(handle, 1, model.addTransform(-1, translation(100, 100, 100) * scaling(0, 1, 1)));
    model.updateTransforms();
    EXPECT_EQ(drawnFrom({0, 0, 0}), QList<int>({1, 2, 0}));
}

TEST_F(GPUModelSortingTest, ManyCommandsComeInOrderOfTheirDistance)
{
    constexpr int kCount = 500;
    std::mt19937 engine(11);
    const auto number = [&engine](float low, float high)
    { return std::uniform_real_distribution<float>(low, high)(engine); };
    QList<Box> boxes;
    for (int i = 0; i < kCount; ++i)
    {
        const float x = number(-50, 50);
        const float y = number(-50, 50);
        const float z = number(-50, 50);
        boxes.append({x, y, z, x + number(0, 5), y + number(0, 5), z + number(0, 5)});
    }
    const int handle = addBoxes(boxes);
    QList<QMatrix4x4> worlds;
    for (int i = 0; i < kCount; ++i)
    {
        QMatrix4x4 world;
        world.translate(number(-20, 20), number(-20, 20), number(-20, 20));
        world.rotate(number(0, 360), number(0.1f, 1), number(-1, 1), number(-1, 1));
        world.scale(number(0.5f, 2), number(0.5f, 2), number(0.5f, 2));
        worlds.append(world);
        model.useTransform(handle, i, model.addTransform(-1, world));
    }
    model.updateTransforms();
    QMatrix4x4 matrix;
    matrix.rotate(33, 1, 2, 3);
    matrix.translate(4, 5, 6);
    const QVector3D point(4, 5, 6); // (R T)^-1 = T^-1 R^-1 has the position -(4, 5, 6)

    const auto distance = [&](int command)
    {
        const QVector3D p = worlds[command].inverted().map(point);
        const Box& box = boxes[command];
        double sum = 0;
        for (int axis = 0; axis < 3; ++axis)
        {
            const double beyond =
                std::max({double((&box.minX)[axis]) - p[axis], double(p[axis]) - (&box.maxX)[axis], 0.0});
            sum += beyond * beyond;
        }
        return std::sqrt(sum);
    };
    QList<int> commands = drawn(&matrix);
    ASSERT_EQ(commands.size(), kCount);
    for (int i = 1; i < kCount; ++i)
        EXPECT_LE(distance(commands[i - 1]), distance(commands[i]) + 1e-3) << i;
    std::sort(commands.begin(), commands.end());
    EXPECT_EQ(std::unique(commands.begin(), commands.end()), commands.end());
}

} // namespace
} // namespace Harrow::Vrk::Test
