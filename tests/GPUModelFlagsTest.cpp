// SPDX-License-Identifier: MIT
//
// The flags of drawables, and the order that they bring about.
#include "GPUModelTestTools.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <random>
#include <utility>
#include <vector>

namespace Harrow::Vrk::Test
{
namespace
{

constexpr quint64 kAll = ~quint64(0);

class GPUModelFlagsTest : public GPUModelFixture
{
protected:
    /// Of what stands at each position.
    QList<int> handles()
    {
        QList<int> all;
        for (const GPUModel::Drawable& drawable : std::as_const(Access::drawables(model)))
            all.append(drawable.handle);
        return all;
    }
};

// -- flags --

TEST_F(GPUModelFlagsTest, FlagsOfOneDrawableChange)
{
    addAll({0, 0xF0, 0});
    model.addFlags(1, 0x11);
    EXPECT_EQ(flags(), QList<quint64>({0, 0xF1, 0}));
    model.removeFlags(1, 0x81);
    EXPECT_EQ(flags(), QList<quint64>({0, 0x70, 0}));
    model.setFlags(1, 0xFFF, 0x10F);
    EXPECT_EQ(flags(), QList<quint64>({0, 0x17F, 0}));
    model.setFlags(1, 0, kAll);
    EXPECT_EQ(flags(), QList<quint64>({0, 0, 0}));
    EXPECT_TRUE(Access::isUnsorted(model));
}

TEST_F(GPUModelFlagsTest, FlagsOfARangeOfHandlesChange)
{
    addAll({1, 1, 1, 1, 1});
    model.addFlags(1, 3, 2);
    EXPECT_EQ(flags(), QList<quint64>({1, 3, 3, 1, 1}));
    model.removeFlags(2, 5, 1);
    EXPECT_EQ(flags(), QList<quint64>({1, 3, 2, 0, 0}));
    model.setFlags(0, 5, 0xFF, 0x18);
    EXPECT_EQ(flags(), QList<quint64>({0x19, 0x1B, 0x1A, 0x18, 0x18}));
}

TEST_F(GPUModelFlagsTest, ARangeThatEndsWhereItBeginsOrBeforeChangesNothing)
{
    addAll({1, 1, 1});
    LogCapture log;
    for (const auto& [first, last] : {std::pair(1, 1), {2, 1}, {5, 5}, {0, -7}, {INT_MAX, INT_MIN}})
    {
        model.addFlags(first, last, 6);
        model.removeFlags(first, last, 1);
        model.setFlags(first, last, 6, kAll);
    }
    EXPECT_EQ(flags(), QList<quint64>({1, 1, 1}));
    EXPECT_FALSE(Access::isUnsorted(model));
    EXPECT_EQ(log.messages(), QStringList());
}

TEST_F(GPUModelFlagsTest, FlagsThatAreThereAlreadyLeaveTheOrderAsItWas)
{
    addAll({6, 6, 7});
    model.addFlags(0, 3, 6);
    model.addFlags(1, 2);
    model.removeFlags(0, 3, 8);
    model.removeFlags(2, 16);
    model.setFlags(0, 3, 0xF6, 0x0E);
    model.setFlags(2, 7, kAll);
    EXPECT_FALSE(Access::isUnsorted(model));
    model.addFlags(0, 3, 1); // new to two of them
    EXPECT_TRUE(Access::isUnsorted(model));
}

TEST_F(GPUModelFlagsTest, RangesOfFlagsGoByHandleAfterSorting)
{
    addAll({30, 20, 10});
    model.sortDrawablesByFlags();
    ASSERT_EQ(handles(), QList<int>({2, 1, 0}));
    model.addFlags(0, 2, 1);
    EXPECT_EQ(flags(), QList<quint64>({10, 21, 31}));
    EXPECT_EQ(model.getFlags(0), 31u);
    EXPECT_EQ(model.getFlags(2), 10u);
}

TEST_F(GPUModelFlagsTest, FeatureFlagsAreReplacedAndAskedForAllOfThem)
{
    EXPECT_TRUE(model.hasFeatureFlags(15));
    EXPECT_TRUE(model.hasFeatureFlags(2));
    EXPECT_TRUE(model.hasFeatureFlags(0));
    EXPECT_FALSE(model.hasFeatureFlags(16));
    EXPECT_FALSE(model.hasFeatureFlags(17)) << "one of two";
    model.setFeatureFlags(quint64(1) << 63 | 16);
    EXPECT_EQ(model.getFeatureFlags(), quint64(1) << 63 | 16);
    EXPECT_TRUE(model.hasFeatureFlags(quint64(1) << 63));
    EXPECT_FALSE(model.hasFeatureFlags(1));
}

TEST_F(GPUModelFlagsTest, TheLargestNumbersOfSetsStandInThreeBitsEach)
{
    add(1, ~(quint64(0x3F) << 52)); // all but those bits
    EXPECT_EQ(model.maxTangentSets(), 0u);
    EXPECT_EQ(model.maxUVSets(), 0u);
    add(1, quint64(5) << 52 | quint64(1) << 55);
    add(1, quint64(2) << 52 | quint64(6) << 55);
    EXPECT_EQ(model.maxTangentSets(), 5u);
    EXPECT_EQ(model.maxUVSets(), 6u);
    add(1, kAll);
    EXPECT_EQ(model.maxTangentSets(), 7u);
    EXPECT_EQ(model.maxUVSets(), 7u);
}

// -- sorting --

TEST_F(GPUModelFlagsTest, OneDrawableIsLessThanAnotherByItsFlagsWithoutSign)
{
    GPUModel::Drawable a, b;
    a.flags = 1;
    b.flags = kAll;
    EXPECT_TRUE(GPUModel::flagsLessThan(a, b));
    EXPECT_FALSE(GPUModel::flagsLessThan(b, a));
    EXPECT_FALSE(GPUModel::flagsLessThan(a, a));
}

TEST_F(GPUModelFlagsTest, SortingIsStableAndHandlesStay)
{
    addAll({5, 3, 5, 1, 3});
    const DrawBuffers* const third = model.drawBuffers(2);
    model.sortDrawablesByFlags();
    EXPECT_EQ(flags(), QList<quint64>({1, 3, 3, 5, 5}));
    EXPECT_EQ(handles(), QList<int>({3, 1, 4, 0, 2}));
    EXPECT_EQ(Access::drawableIndex(model), QList<int>({3, 1, 4, 0, 2}));
    EXPECT_EQ(model.drawBuffers(2), third);
    EXPECT_EQ(model.getFlags(3), 1u);
}

TEST_F(GPUModelFlagsTest, SortingLeavesTheMarkThatThereIsWorkUntilClear)
{
    addAll({2, 1});
    model.sortDrawablesByFlags();
    EXPECT_TRUE(Access::isUnsorted(model));
    model.sortDrawablesByFlags();
    EXPECT_TRUE(Access::isUnsorted(model));
    EXPECT_EQ(handles(), QList<int>({1, 0}));
    model.clear();
    EXPECT_FALSE(Access::isUnsorted(model));
}

TEST_F(GPUModelFlagsTest, NothingIsSortedWithoutTheMark)
{
    add(1, 9);
    model.addSimple(newDrawList(1), 0, nullptr, nullptr, 1); // which does not set it
    model.sortDrawablesByFlags();
    EXPECT_EQ(flags(), QList<quint64>({9, 1}));
}

TEST_F(GPUModelFlagsTest, SortingLeavesThePositionsOfMaterialsAndOfTransformUsersAsTheyWere)
{
    const int transform = model.addTransform(-1, translation(1, 2, 3));
    model.add(newDrawList(1), 10, nullptr, newRecords(1), 2);
    model.add(newDrawList(1), 11, nullptr, newRecords(1), 1);
    model.useTransform(0, 0, transform);
    const auto materials = Pass::materialDrawables(model);
    ASSERT_TRUE(model.updateTransforms());
    model.sortDrawablesByFlags();
    ASSERT_EQ(handles(), QList<int>({1, 0}));
    EXPECT_EQ(Pass::materialDrawables(model), materials);
    EXPECT_EQ(Access::users(model).at(transform), Refs({{0, 0}}));
    EXPECT_EQ(Access::pending(model), Refs({{0, 0}}));
    // So the matrices go on to what stands at position 0 now, and only there.
    model.setLocalTransform(transform, translation(4, 5, 6), false);
    ASSERT_TRUE(model.updateTransforms());
    EXPECT_EQ(record(1, kModelMatrix), translation(4, 5, 6));
    EXPECT_EQ(record(0, kModelMatrix), translation(1, 2, 3));
    // The reference of the command went with its drawable.
    EXPECT_EQ(at(1).transformRefs, QList<int>({transform}));
    EXPECT_EQ(at(0).transformRefs, QList<int>({-1}));
}

TEST_F(GPUModelFlagsTest, RandomChangesOfFlagsAgreeWithAPlainList)
{
    struct Plain
    {
        int handle;
        quint64 flags;
    };
    std::mt19937 random(7);
    std::vector<Plain> plain;
    bool unsorted = false;
    const auto byHandle = [&plain](int handle) -> Plain&
    { return *std::find_if(plain.begin(), plain.end(), [handle](const Plain& p) { return p.handle == handle; }); };
    for (int step = 0; step < 3'000; ++step)
    {
        const quint64 bits = quint64(random() % 8) << (random() % 2 ? 61 : 0);
        const quint64 mask = quint64(random() % 8) << (random() % 2 ? 61 : 0);
        const int count = int(plain.size());
        const int first = count ? int(random() % unsigned(count)) : 0;
        const int last = count ? first + int(random() % unsigned(count - first + 1)) : 0;
        const auto change = [&](quint64 value, quint64 within)
        {
            for (int handle = first; handle < last; ++handle)
            {
                Plain& p = byHandle(handle);
                const quint64 now = (p.flags & ~within) | (value & within);
                unsorted = unsorted || now != p.flags;
                p.flags = now;
            }
        };
        switch (random() % 8)
        {
        case 0:
            unsorted = unsorted || (!plain.empty() && bits < plain.back().flags);
            plain.push_back({count, bits});
            ASSERT_EQ(model.add(newDrawList(1), 0, nullptr, nullptr, bits), count);
            break;
        case 1:
            model.addFlags(first, last, bits);
            change(bits, bits);
            break;
        case 2:
            model.removeFlags(first, last, bits);
            change(0, bits);
            break;
        case 3:
            model.setFlags(first, last, bits, mask);
            change(bits, mask);
            break;
        case 4:
            model.sortDrawablesByFlags();
            if (unsorted)
                std::stable_sort(plain.begin(), plain.end(),
                                 [](const Plain& a, const Plain& b) { return a.flags < b.flags; });
            break;
        case 5:
            if (random() % 20 == 0)
            {
                model.clear();
                plain.clear();
                unsorted = false;
            }
            break;
        default:
            break;
        }
        ASSERT_EQ(Access::isUnsorted(model), unsorted);
        ASSERT_EQ(model.numDrawables(), int(plain.size()));
        for (int position = 0; position < int(plain.size()); ++position)
        {
            ASSERT_EQ(at(position).handle, plain[size_t(position)].handle);
            ASSERT_EQ(at(position).flags, plain[size_t(position)].flags);
            ASSERT_EQ(model.getFlags(plain[size_t(position)].handle), plain[size_t(position)].flags);
        }
    }
}

} // namespace
} // namespace Harrow::Vrk::Test
