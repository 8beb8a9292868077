// SPDX-License-Identifier: MIT
//
// Which commands are marked as culled, and what is asked of the marks. What a frustum keeps and what it takes is put
// to the test on many boxes in GPUModelFrustumTest.cpp.
#include "GPUModelPassTestTools.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <iterator>
#include <limits>
#include <utility>

namespace Harrow::Vrk::Test
{
namespace
{

constexpr quint64 kCullingBit = 1 << 1;

class GPUModelCullingTest : public testing::Test
{
protected:
    using Access = GPUModelTestAccess;
    using Marks = QList<bool>;

    int add(int commands, quint64 flags = 0)
    {
        return model.add(newDrawList(commands), 0, nullptr, nullptr, flags);
    }

    /// A drawable of one command that follows `transform`.
    int follow(int transform)
    {
        const int handle = add(1);
        model.useTransform(handle, 0, transform);
        return handle;
    }

    /// The same with a box.
    int follow(int transform, int box)
    {
        const int handle = follow(transform);
        model.useBoundingBox(handle, 0, box);
        return handle;
    }

    Marks marks(int position) const
    {
        return Access::drawableAt(model, position).culled;
    }

    int count(int position) const
    {
        return Access::drawableAt(model, position).culledCount;
    }

    bool isCulled(int position) const
    {
        EXPECT_EQ(count(position), int(marks(position).count(true)));
        return marks(position).at(0);
    }

    void loadBox(float minX, float minY, float minZ, float maxX, float maxY, float maxZ)
    {
        const GPUModel::BoundingBox box = {minX, minY, minZ, maxX, maxY, maxZ};
        model.loadBoundingBoxes(&box, 1);
    }

    bool takeSceneBoundsDirty()
    {
        return std::exchange(Access::isSceneBoundsDirty(model), false);
    }

    GPUModel model;
    const QMatrix4x4 identity;
};

// -- resetting --

TEST_F(GPUModelCullingTest, ResettingClearsEveryMarkAndAsksForNewBounds)
{
    add(3);
    add(0);
    add(2, kHiddenFlag);
    ASSERT_EQ(model.visibilityCull(), 5);
    takeSceneBoundsDirty();
    model.resetCulling();
    EXPECT_EQ(marks(0), Marks({false, false, false}));
    EXPECT_EQ(marks(2), Marks({false, false}));
    EXPECT_EQ(count(0) + count(1) + count(2), 0);
    EXPECT_TRUE(takeSceneBoundsDirty());
}

TEST_F(GPUModelCullingTest, ResettingChangesNothingWithoutFeatureBit1)
{
    add(3);
    model.setFeatureFlags(~kCullingBit);
    ASSERT_EQ(model.visibilityCull(), 3);
    takeSceneBoundsDirty();
    model.resetCulling();
    EXPECT_EQ(marks(0), Marks({true, true, true}));
    EXPECT_EQ(count(0), 3);
    EXPECT_FALSE(takeSceneBoundsDirty());
    model.setFeatureFlags(kCullingBit);
    model.resetCulling();
    EXPECT_EQ(marks(0), Marks({false, false, false}));
}

// -- visibility --

TEST_F(GPUModelCullingTest, AnEmptyModelHasNothingToCullAndAsksForNewBounds)
{
    takeSceneBoundsDirty();
    EXPECT_EQ(model.visibilityCull(), 0);
    EXPECT_TRUE(takeSceneBoundsDirty());
    EXPECT_EQ(model.frustumCull(identity), 0);
    EXPECT_TRUE(takeSceneBoundsDirty());
}

TEST_F(GPUModelCullingTest, AHiddenDrawableIsCulledWholeAndOnlyNewMarksCount)
{
    const int transform = model.addTransform(-1, identity);
    const int handle = add(3);
    model.useTransform(handle, 1, transform);
    model.updateTransforms();
    ASSERT_EQ(model.visibilityCull(), 2); // those without a transform
    model.addFlags(handle, kHiddenFlag);
    takeSceneBoundsDirty();
    EXPECT_EQ(model.visibilityCull(), 1);
    EXPECT_EQ(marks(0), Marks({true, true, true}));
    EXPECT_EQ(count(0), 3);
    EXPECT_TRUE(takeSceneBoundsDirty());
    EXPECT_EQ(model.visibilityCull(), 0);
}

TEST_F(GPUModelCullingTest, ACommandWithoutATransformIsCulled)
{
    const int transform = model.addTransform(-1, identity);
    const int handle = add(4);
    model.useTransform(handle, 2, transform);
    QList<int>& refs = Access::writableDrawableAt(model, 0).transformRefs;
    refs[1] = 1; // one too far
    refs[3] = -7;
    model.updateTransforms();
    EXPECT_EQ(model.visibilityCull(), 3);
    EXPECT_EQ(marks(0), Marks({true, true, false, true}));
    EXPECT_EQ(count(0), 3);
}

TEST_F(GPUModelCullingTest, StatesTwoAndThreeHideAndAllOthersShow)
{
    for (const int state : {1, 2, 3, 0, 4, -1, 256})
    {
        const int transform = model.addTransform(-1, identity);
        model.setVisibility(transform, state);
        follow(transform);
    }
    model.updateTransforms();
    EXPECT_EQ(model.visibilityCull(), 2);
    for (int position = 0; position < 7; ++position)
        EXPECT_EQ(isCulled(position), position == 1 || position == 2) << position;
}

TEST_F(GPUModelCullingTest, StateTwoHidesOneTransformAndStateThreeItsWholeTree)
{
    const int top = model.addTransform(-1, identity);
    const int middle = model.addTransform(top, identity);
    const int below = model.addTransform(middle, identity);
    const int lowest = model.addTransform(below, identity);
    for (const int transform : {top, middle, below, lowest})
        follow(transform);
    model.updateTransforms();
    const auto culled = [this]
    {
        model.resetCulling();
        model.visibilityCull();
        return Marks({isCulled(0), isCulled(1), isCulled(2), isCulled(3)});
    };
    EXPECT_EQ(culled(), Marks({false, false, false, false}));
    model.setVisibility(top, 2);
    EXPECT_EQ(culled(), Marks({true, false, false, false}));
    model.setVisibility(middle, 2);
    EXPECT_EQ(culled(), Marks({true, true, false, false}));
    model.setVisibility(top, 3);
    model.setVisibility(middle, 1);
    EXPECT_EQ(culled(), Marks({true, true, true, true}));
    model.setVisibility(top, 1);
    model.setVisibility(below, 3);
    EXPECT_EQ(culled(), Marks({false, false, true, true}));
    model.setTransformParent(lowest, -1);
    EXPECT_EQ(culled(), Marks({false, false, true, false}));
}

TEST_F(GPUModelCullingTest, WhatWaitsForAnUpdateStaysVisibleUnlessItIsHidden)
{
    const int parent = model.addTransform(-1, identity);
    const int child = model.addTransform(parent, identity);
    const int other = model.addTransform(-1, identity);
    const int hidden = model.addTransform(parent, identity);
    model.updateTransforms();
    for (const int transform : {parent, child, other, hidden})
    {
        Access::setWorld(model, transform, scaling(0, 0, 0));
        follow(transform);
    }
    model.setVisibility(hidden, 2);
    model.setLocalTransform(parent, translation(1, 2, 3), false); // the child waits with it
    EXPECT_EQ(model.visibilityCull(), 2);
    EXPECT_FALSE(isCulled(0));
    EXPECT_FALSE(isCulled(1));
    EXPECT_TRUE(isCulled(2));
    EXPECT_TRUE(isCulled(3));
    EXPECT_TRUE(model.isTransformDirty(child)); // nothing is updated by it
    EXPECT_EQ(model.worldTransform(parent), scaling(0, 0, 0));
}

TEST_F(GPUModelCullingTest, ATransformScaledToNothingIsCulled)
{
    struct Row
    {
        QMatrix4x4 world;
        bool isCulled;
    };
    constexpr float kLess = 0.9999e-3f;
    constexpr float kMore = 1.0001e-3f;
    QMatrix4x4 fourth = scaling(0, 0, 0);
    fourth.setRow(3, QVector4D(5, 6, 7, 8));
    QMatrix4x4 sum; // small on its own in each component, not as a row
    sum.setRow(0, QVector4D(0.6e-3f, 0.6e-3f, 0.6e-3f, 0.0f));
    sum.setRow(1, QVector4D());
    sum.setRow(2, QVector4D());
    const Row rows[] = {
        {scaling(0, 0, 0), true},
        {scaling(kLess, -kLess, kLess), true},
        {scaling(kMore, 0, 0), false},
        {scaling(0, -kMore, 0), false},
        {scaling(0, 0, kMore), false},
        {fourth, true},
        {sum, false},
        {translation(0.1f, 0, 0) * scaling(0, 0, 0), false}, // the translation counts
        {translation(0, 0.1f, 0) * scaling(0, 0, 0), false},
        {translation(0, 0, 0.1f) * scaling(0, 0, 0), false},
        {translation(kLess, kLess, kLess) * scaling(0, 0, 0), true},
    };
    for (const Row& row : rows)
        follow(model.addTransform(-1, row.world));
    model.updateTransforms();
    EXPECT_EQ(model.visibilityCull(),
              int(std::count_if(std::begin(rows), std::end(rows), [](const Row& row) { return row.isCulled; })));
    for (int position = 0; position < int(std::size(rows)); ++position)
        EXPECT_EQ(isCulled(position), rows[position].isCulled) << position;
}

TEST_F(GPUModelCullingTest, TheBoundOfNothingIsASquaredLengthOfAMillionth)
{
    const float bound = 1.0e-6f;
    float length = std::sqrt(bound);
    while (length * length >= bound)
        length = std::nextafter(length, 0.0f);
    follow(model.addTransform(-1, scaling(length, length, length)));
    follow(model.addTransform(-1, scaling(0, std::nextafter(length, 1.0f), 0)));
    model.updateTransforms();
    EXPECT_EQ(model.visibilityCull(), 1);
    EXPECT_TRUE(isCulled(0));
    EXPECT_FALSE(isCulled(1));
}

// -- the frustum, of the identity: from -1 to 1 on each axis --

TEST_F(GPUModelCullingTest, ACommandWithoutABoxIsLeftAloneByTheFrustum)
{
    loadBox(5, 5, 5, 6, 6, 6);
    const int transform = model.addTransform(-1, identity);
    const int handle = add(4);
    for (const int command : {0, 1, 3})
        model.useTransform(handle, command, transform);
    model.useBoundingBox(handle, 0, -1);
    model.useBoundingBox(handle, 1, 1); // one too far
    model.useBoundingBox(handle, 3, -9);
    model.updateTransforms();
    EXPECT_EQ(model.frustumCull(identity), 0); // 2 has neither
    EXPECT_EQ(count(0), 0);
    model.useBoundingBox(handle, 1, 0);
    EXPECT_EQ(model.frustumCull(identity), 1);
    EXPECT_EQ(marks(0), Marks({false, true, false, false}));
}

TEST_F(GPUModelCullingTest, ACommandWithABoxAndNoTransformIsCulledByTheFrustum)
{
    loadBox(0, 0, 0, 0.5f, 0.5f, 0.5f);
    const int handle = add(2);
    model.addTransform(-1, identity);
    model.useBoundingBox(handle, 0, 0);
    model.useBoundingBox(handle, 1, 0);
    Access::writableDrawableAt(model, 0).transformRefs[1] = 1; // one too far
    takeSceneBoundsDirty();
    EXPECT_EQ(model.frustumCull(identity), 2);
    EXPECT_EQ(marks(0), Marks({true, true}));
    EXPECT_TRUE(takeSceneBoundsDirty());
}

TEST_F(GPUModelCullingTest, WhatWaitsForAnUpdateIsLeftAloneByTheFrustum)
{
    loadBox(5, 5, 5, 6, 6, 6);
    const int parent = model.addTransform(-1, identity);
    const int child = model.addTransform(parent, identity);
    const int other = model.addTransform(-1, identity);
    for (const int transform : {parent, child, other})
        follow(transform, 0);
    EXPECT_EQ(model.frustumCull(identity), 0); // none was ever updated
    model.updateTransforms();
    model.setLocalTransform(parent, translation(1, 1, 1), false);
    EXPECT_EQ(model.frustumCull(identity), 1);
    EXPECT_FALSE(isCulled(0));
    EXPECT_FALSE(isCulled(1));
    EXPECT_TRUE(isCulled(2));
    EXPECT_TRUE(model.isTransformDirty(child));
    model.updateTransforms();
    EXPECT_EQ(model.frustumCull(identity), 2);
}

TEST_F(GPUModelCullingTest, ABoxThatOnlyTouchesAPlaneIsCulledAndOneJustInsideStays)
{
    const int transform = model.addTransform(-1, identity);
    model.updateTransforms();
    follow(transform, 0);
    const float inside = std::nextafter(1.0f, 0.0f);
    for (int axis = 0; axis < 3; ++axis)
    {
        for (const bool positive : {false, true})
        {
            for (const float nearest : {1.5f, 1.0f, inside})
            {
                float box[6] = {-0.5f, -0.5f, -0.5f, 0.5f, 0.5f, 0.5f};
                box[axis] = positive ? nearest : -2.0f;
                box[axis + 3] = positive ? 2.0f : -nearest;
                loadBox(box[0], box[1], box[2], box[3], box[4], box[5]);
                model.resetCulling();
                EXPECT_EQ(model.frustumCull(identity), nearest < 1.0f ? 0 : 1)
                    << "axis " << axis << (positive ? " +" : " -") << nearest;
            }
        }
    }
}

TEST_F(GPUModelCullingTest, ABoxIsTestedInItsOwnSpace)
{
    loadBox(9, -0.5f, -0.5f, 10, 0.5f, 0.5f);
    follow(model.addTransform(-1, identity), 0);
    follow(model.addTransform(-1, translation(-9.5f, 0, 0)), 0);
    follow(model.addTransform(-1, scaling(0.1f, 1, 1)), 0);
    follow(model.addTransform(-1, scaling(-0.1f, 1, 1)), 0);
    follow(model.addTransform(model.addTransform(-1, translation(0, 3, 0)), translation(-9.5f, 0, 0)), 0);
    model.updateTransforms();
    EXPECT_EQ(model.frustumCull(identity), 2);
    for (int position = 0; position < 5; ++position)
        EXPECT_EQ(isCulled(position), position == 0 || position == 4) << position;
    model.resetCulling();
    EXPECT_EQ(model.frustumCull(translation(0, -3, 0)), 4); // and so is the view
    EXPECT_FALSE(isCulled(4));
}

TEST_F(GPUModelCullingTest, ABoxAroundTheFrustumStaysAndSoDoesOneBesideItsEdge)
{
    const int transform = model.addTransform(-1, identity);
    model.updateTransforms();
    follow(transform, 0);
    loadBox(-50, -50, -50, 50, 50, 50);
    EXPECT_EQ(model.frustumCull(identity), 0);
    // Outside, but wholly outside none of the planes: kept, which is safe.
    QMatrix4x4 turned;
    turned.rotate(45, 0, 0, 1);
    loadBox(1.3f, -1.3f, -0.5f, 1.6f, 1.3f, 0.5f);
    EXPECT_EQ(model.frustumCull(turned), 0);
}

TEST_F(GPUModelCullingTest, ABoxThatIsNoNumberStays)
{
    const float nan = std::numeric_limits<float>::quiet_NaN();
    const int transform = model.addTransform(-1, identity);
    model.updateTransforms();
    follow(transform, 0);
    loadBox(nan, nan, nan, nan, nan, nan);
    EXPECT_EQ(model.frustumCull(identity), 0);
}

// -- together --

TEST_F(GPUModelCullingTest, CullingAddsUpAndNoMarkCountsTwice)
{
    const GPUModel::BoundingBox boxes[] = {{-0.5f, -0.5f, -0.5f, 0.5f, 0.5f, 0.5f}, {5, 5, 5, 6, 6, 6}};
    model.loadBoundingBoxes(boxes, 2);
    const int shown = model.addTransform(-1, identity);
    const int hidden = model.addTransform(-1, identity);
    model.setVisibility(hidden, 2);
    const int handle = add(4);
    for (int command = 0; command < 4; ++command)
    {
        model.useTransform(handle, command, command & 1 ? hidden : shown);
        model.useBoundingBox(handle, command, command & 2 ? 1 : 0);
    }
    model.updateTransforms();
    EXPECT_EQ(model.visibilityCull(), 2);
    EXPECT_EQ(marks(0), Marks({false, true, false, true}));
    EXPECT_EQ(model.frustumCull(identity), 1);
    EXPECT_EQ(marks(0), Marks({false, true, true, true}));
    EXPECT_EQ(count(0), 3);

    model.resetCulling();
    EXPECT_EQ(model.frustumCull(identity), 2);
    EXPECT_EQ(marks(0), Marks({false, false, true, true}));
    EXPECT_EQ(model.visibilityCull(), 1);
    EXPECT_EQ(marks(0), Marks({false, true, true, true}));

    EXPECT_EQ(model.frustumCull(translation(9, 9, 9)), 1); // another view takes the last
    EXPECT_EQ(count(0), 4);
    EXPECT_EQ(model.frustumCull(identity) + model.visibilityCull(), 0);
}

TEST_F(GPUModelCullingTest, EachDrawableHasMarksOfItsOwn)
{
    loadBox(-0.5f, -0.5f, -0.5f, 0.5f, 0.5f, 0.5f);
    const int near = model.addTransform(-1, identity);
    const int far = model.addTransform(-1, translation(9, 0, 0));
    for (int drawable = 0; drawable < 3; ++drawable)
    {
        const int handle = add(2);
        for (int command = 0; command < 2; ++command)
        {
            model.useTransform(handle, command, drawable + command == 2 ? far : near);
            model.useBoundingBox(handle, command, 0);
        }
    }
    model.updateTransforms();
    EXPECT_EQ(model.frustumCull(identity), 2);
    EXPECT_EQ(marks(0), Marks({false, false}));
    EXPECT_EQ(marks(1), Marks({false, true}));
    EXPECT_EQ(marks(2), Marks({true, false}));
}

TEST_F(GPUModelCullingTest, SimpleDrawablesHaveNothingToCull)
{
    model.addSimple(newDrawList(3), 5, nullptr, nullptr, 0);
    model.addSimple(newDrawList(3), 5, nullptr, nullptr, kHiddenFlag);
    model.addSimple(nullptr, 5, nullptr, nullptr, 0);
    loadBox(5, 5, 5, 6, 6, 6);
    EXPECT_EQ(model.visibilityCull(), 0);
    EXPECT_EQ(model.frustumCull(identity), 0);
    model.resetCulling();
    EXPECT_EQ(count(0) + count(1) + count(2), 0);
}

TEST_F(GPUModelCullingTest, ADrawListThatChangedItsCommandsIsCulledAsFarAsItIsKnown)
{
    const int handle = add(4);
    DrawBuffers* const buffers = model.drawBuffers(handle);
    const int transform = model.addTransform(-1, identity);
    model.updateTransforms();
    loadBox(5, 5, 5, 6, 6, 6); // out of view
    for (const int command : {0, 1})
    {
        model.useTransform(handle, command, transform);
        model.useBoundingBox(handle, command, 0);
    }
    ASSERT_EQ(model.visibilityCull(), 2);
    setCommands(*buffers, 2); // shorter, behind the model's back
    model.setVisibility(transform, 2);
    EXPECT_EQ(model.frustumCull(identity), 0); // as many marks as commands
    EXPECT_EQ(model.visibilityCull(), 2);
    EXPECT_EQ(marks(0), Marks({true, true, true, true}));
    setCommands(*buffers, 9);
    model.resetCulling();
    EXPECT_EQ(model.visibilityCull(), 4);
    EXPECT_EQ(model.frustumCull(identity), 0);
}

TEST_F(GPUModelCullingTest, ADrawableWithoutADrawListHasNothingToCull)
{
    model.add(nullptr, 0, nullptr, nullptr, 0);
    EXPECT_EQ(model.visibilityCull(), 0);
    EXPECT_EQ(model.frustumCull(identity), 0);
}

// -- what is asked --

TEST_F(GPUModelCullingTest, IsDrawAnyFindsAnyOfTheBits)
{
    EXPECT_FALSE(model.isDrawAny(~quint64(0)));
    add(1, 6);
    add(1, kHiddenFlag);
    EXPECT_TRUE(model.isDrawAny(2));
    EXPECT_TRUE(model.isDrawAny(4 | 8));
    EXPECT_TRUE(model.isDrawAny(kHiddenFlag));
    EXPECT_FALSE(model.isDrawAny(1 | 8));
    EXPECT_FALSE(model.isDrawAny(0));
}

TEST_F(GPUModelCullingTest, IsDrawEmptyLooksForASelectedDrawable)
{
    EXPECT_TRUE(model.isDrawEmpty(0, 0)) << "no drawable";
    add(1, 6);
    EXPECT_FALSE(model.isDrawEmpty(6, 6));
    EXPECT_FALSE(model.isDrawEmpty(2, 2));
    EXPECT_FALSE(model.isDrawEmpty(2 | 8, 2)) << "bits of the value outside the mask";
    EXPECT_TRUE(model.isDrawEmpty(2, 6));
    EXPECT_TRUE(model.isDrawEmpty(7, 7));
    EXPECT_FALSE(model.isDrawEmpty(0, 0));
}

TEST_F(GPUModelCullingTest, IsDrawEmptyCountsCulledDrawablesOnlyWithFeatureBit1)
{
    add(2, 1);
    add(1, 2);
    const int transform = model.addTransform(-1, identity);
    model.updateTransforms();
    model.useTransform(1, 0, transform);
    ASSERT_EQ(model.visibilityCull(), 2); // all of the first
    EXPECT_TRUE(model.isDrawEmpty(1, 1));
    EXPECT_FALSE(model.isDrawEmpty(2, 2));
    EXPECT_FALSE(model.isDrawEmpty(0, 0));
    model.setFeatureFlags(~kCullingBit);
    EXPECT_FALSE(model.isDrawEmpty(1, 1));
}

TEST_F(GPUModelCullingTest, ADrawableWithoutCommandsIsEmptyOnlyWithFeatureBit1)
{
    add(0, 1);
    model.add(nullptr, 0, nullptr, nullptr, 1);
    EXPECT_TRUE(model.isDrawEmpty(1, 1));
    model.setFeatureFlags(0);
    EXPECT_FALSE(model.isDrawEmpty(1, 1));
}

} // namespace
} // namespace Harrow::Vrk::Test
