// SPDX-License-Identifier: MIT
//
// Hierarchies of all shapes: random ones beside a plain model that computes by recursion, deep ones, and those whose
// parents make no sense.
#include "GPUModelTestTools.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <memory>
#include <numeric>
#include <random>
#include <vector>

namespace Harrow::Vrk::Test
{
namespace
{

struct PlainDrawable
{
    std::unique_ptr<InstanceDataCollection> records;
};

struct PlainNode
{
    int parent;
    QMatrix4x4 local;
    QMatrix4x4 world = {};
    Normal normal = {};
    bool keep = false;
    double handedness = 1.0; // below 0 for a mirrored one; about 0 for a flat one, which is neither
    bool dirty = true;
    int visibility = 1;
    QList<GPUModel::InstanceRef> users = {};
};

/// The same hierarchy as nodes that are computed by recursion, with the collection's own operations.
struct PlainModel
{
    std::vector<PlainNode> nodes;
    std::vector<PlainDrawable> drawables; // in the order in which they stand
    QList<GPUModel::InstanceRef> pending;
    bool anyDirty = false;

    PlainNode& at(int index)
    {
        return nodes[size_t(index)];
    }

    void setLocal(int index, const QMatrix4x4& local, bool keep)
    {
        if (at(index).local == local)
            return;
        at(index).local = local;
        at(index).keep = keep;
        at(index).dirty = anyDirty = true;
    }

    bool isDirty(int index)
    {
        return index >= 0 && (at(index).dirty || isDirty(at(index).parent));
    }

    bool isHidden(int index)
    {
        return index >= 0 && (at(index).visibility == 3 || isHidden(at(index).parent));
    }

    bool isVisible(int index)
    {
        return at(index).visibility != 2 && !isHidden(index);
    }

    bool isBelow(int ancestor, int index)
    {
        return index >= 0 && (index == ancestor || isBelow(ancestor, at(index).parent));
    }

    bool updateAll()
    {
        if (!anyDirty)
            return false;
        for (int i = 0; i < int(nodes.size()); ++i)
            if (at(i).parent >= 0 && isDirty(at(i).parent))
                at(i).dirty = true;
        for (int i = 0; i < int(nodes.size()); ++i)
            update(i);
        anyDirty = false;
        return true;
    }

    QMatrix4x4 update(int index)
    {
        if (index < 0)
            return {};
        PlainNode& node = at(index);
        if (!node.dirty)
            return node.world;
        const QMatrix4x4 parent = update(node.parent);
        node.world = node.keep ? withoutRotation(node, parent) : parent * node.local;
        node.normal = node.world.normalMatrix();
        node.handedness = handednessOf(node.world);
        node.dirty = false;
        for (const GPUModel::InstanceRef& ref : std::as_const(node.users))
            write(ref, node);
        return node.world;
    }

    static QMatrix4x4 withoutRotation(PlainNode& node, const QMatrix4x4& parent)
    {
        QMatrix4x4 moved;
        moved.translate((parent * node.local).column(3).toVector3D());
        float sx = parent.column(0).toVector3D().length();
        const float sy = parent.column(1).toVector3D().length();
        const float sz = parent.column(2).toVector3D().length();
        if (isNegative(parent.column(0).toVector3D(), parent.column(1).toVector3D(), parent.column(2).toVector3D()))
            sx = -sx;
        node.local.setColumn(3, {0, 0, 0, 1});
        node.local.scale(sx, sy, sz);
        return moved * node.local;
    }

    static bool isNegative(const QVector3D& a, const QVector3D& b, const QVector3D& c)
    {
        return QVector3D::dotProduct(c, QVector3D::crossProduct(a, b)) < 0.0f;
    }

    static double handednessOf(const QMatrix4x4& world)
    {
        double unit[3][3];
        for (int row = 0; row < 3; ++row)
        {
            const double x = double(world(row, 0)), y = double(world(row, 1)), z = double(world(row, 2));
            const double length = std::hypot(x, y, z);
            const double factor = length <= 1e-5 ? 0.0 : 1.0 / length;
            unit[row][0] = x * factor;
            unit[row][1] = y * factor;
            unit[row][2] = z * factor;
        }
        const auto& [a, b, c] = unit;
        return a[0] * (b[1] * c[2] - b[2] * c[1]) - a[1] * (b[0] * c[2] - b[2] * c[0]) +
               a[2] * (b[0] * c[1] - b[1] * c[0]);
    }

    void write(const GPUModel::InstanceRef& ref, const PlainNode& node)
    {
        const QMatrix4x4 inverse = node.world.inverted();
        if (auto* const records = drawables[size_t(ref.drawable)].records.get())
        {
            records->copyInstanceMember(ref.instance, kModelMatrix, kPreviousModelMatrix);
            records->set(ref.instance, kModelMatrix, node.world.constData(), 64);
            records->set(ref.instance, kInverseModelMatrix, inverse.constData(), 64);
            if (records->plan()->contains(kModelNormalMatrix))
                records->set(ref.instance, kModelNormalMatrix, node.normal.constData(), 36);
        }
        pending.append(ref);
    }

    void updatePrevious()
    {
        for (const GPUModel::InstanceRef& ref : std::as_const(pending))
            if (auto* const records = drawables[size_t(ref.drawable)].records.get())
                records->copyInstanceMember(ref.instance, kModelMatrix, kPreviousModelMatrix);
        pending.clear();
    }
};

class GPUModelHierarchyTest : public GPUModelFixture
{
protected:
    static constexpr int kCommands = 4;

    float number(float from, float to)
    {
        return std::uniform_real_distribution<float>(from, to)(random);
    }

    int below(int count)
    {
        return std::uniform_int_distribution<int>(0, count - 1)(random);
    }

    QMatrix4x4 anyMatrix()
    {
        QMatrix4x4 matrix;
        switch (below(9))
        {
        case 0:
            break;
        case 1:
            matrix.translate(number(-9, 9), number(-9, 9), number(-9, 9));
            break;
        case 2:
            matrix.scale(number(0.1f, 3), number(0.1f, 3), number(-3, 3));
            break;
        case 3:
            matrix.rotate(number(-180, 180), 0, 0, 1);
            break;
        case 4:
            matrix.rotate(number(-180, 180), number(-1, 1), number(-1, 1), 1);
            break;
        case 5:
            matrix.scale(1, 0, 1); // no inverse
            break;
        case 6:
            matrix.rotate(float(below(4)) * 90.0f, 1, 0, 0);
            matrix.translate(float(below(5)), 0, 1);
            break;
        default:
            for (int i = 0; i < 16; ++i)
                matrix.data()[i] = i % 4 == 3 ? (i == 15 ? 1.0f : 0.0f) : number(-2, 2);
            if (below(4) == 0)
                matrix(3, 2) = number(-1, 1);
        }
        return matrix;
    }

    /// A parent that leads to a root: one of lower rank, wherever it stands.
    int parentFor(int index)
    {
        const int other = below(int(rank.size()));
        return rank[size_t(other)] < rank[size_t(index)] ? other : -1;
    }

    void build(int transforms, int count)
    {
        rank.resize(size_t(transforms));
        std::iota(rank.begin(), rank.end(), 0);
        if (below(3) > 0)
            std::shuffle(rank.begin(), rank.end(), random);
        for (int i = 0; i < transforms; ++i)
        {
            const int parent = parentFor(i);
            const QMatrix4x4 local = anyMatrix();
            ASSERT_EQ(model.addTransform(parent, local), i);
            plain.nodes.push_back({parent, local});
        }
        plain.anyDirty = transforms > 0;
        for (int i = 0; i < count; ++i)
        {
            InstanceDataPlan* const plans[] = {plan, withoutNormals, nullptr};
            InstanceDataPlan* const of = plans[below(3)];
            model.add(newDrawList(kCommands), 0, nullptr, of ? new InstanceDataCollection(of, kCommands) : nullptr,
                      quint64(below(5)));
            plain.drawables.push_back({of ? std::make_unique<InstanceDataCollection>(of, size_t(kCommands)) : nullptr});
            order.push_back(i);
        }
    }

    void edit()
    {
        const int index = below(int(plain.nodes.size()));
        const QMatrix4x4 matrix = anyMatrix();
        const bool keep = below(4) == 0;
        const int drawable = below(int(order.size()));
        switch (below(9))
        {
        case 0:
        case 1:
        case 2:
            model.setLocalTransform(index, matrix, keep);
            plain.setLocal(index, matrix, keep);
            break;
        case 3:
        {
            const int parent = plain.at(index).parent;
            model.setWorldTransform(index, matrix);
            plain.setLocal(index, parent < 0 ? matrix : plain.at(parent).world.inverted() * matrix, false);
            break;
        }
        case 4:
            plain.at(index).parent = parentFor(index);
            model.setTransformParent(index, plain.at(index).parent);
            break;
        case 5:
            plain.at(index).visibility = below(5);
            model.setVisibility(index, plain.at(index).visibility);
            break;
        case 6:
            model.useTransform(drawable, below(1) + int(matrix(0, 0) > 0), index);
            plain.at(index).users.append({drawable, int(matrix(0, 0) > 0)});
            break;
        case 7:
            if (below(10) == 0)
                sort();
            break;
        default:
            model.setLocalTransform(index, plain.at(index).local, keep); // nothing
        }
    }

    /// Moves what stands at the positions, in both.
    void sort()
    {
        const int handle = below(int(order.size()));
        model.setFlags(handle, quint64(below(5)), ~quint64(0));
        std::vector<quint64> flags;
        for (const int each : order)
            flags.push_back(model.getFlags(each));
        std::vector<size_t> moved(order.size());
        std::iota(moved.begin(), moved.end(), size_t(0));
        std::stable_sort(moved.begin(), moved.end(), [&](size_t a, size_t b) { return flags[a] < flags[b]; });
        if (!Access::isUnsorted(model))
            return;
        std::vector<PlainDrawable> drawables;
        std::vector<int> handles;
        for (const size_t from : moved)
        {
            drawables.push_back(std::move(plain.drawables[from]));
            handles.push_back(order[from]);
        }
        plain.drawables = std::move(drawables);
        order = handles;
        model.sortDrawablesByFlags();
    }

    static QByteArray bytesOf(const InstanceDataCollection* records)
    {
        return records ? records->dataArray() : QByteArray();
    }

    void compare()
    {
        for (int i = 0; i < int(plain.nodes.size()); ++i)
        {
            PlainNode& node = plain.at(i);
            ASSERT_TRUE(isSame(model.localTransform(i), node.local)) << i;
            ASSERT_TRUE(isSame(model.worldTransform(i), node.world)) << i;
            ASSERT_TRUE(isSame(model.normalTransform(i), node.normal)) << i;
            if (std::abs(node.handedness) > 1e-5)
            {
                ASSERT_EQ(Access::negative(model).at(i), node.handedness < 0.0) << i;
            }
            ASSERT_EQ(Access::dirty(model).at(i), node.dirty) << i;
            ASSERT_EQ(Access::keepParentPositionOnly(model).at(i), node.keep) << i;
            ASSERT_EQ(Access::users(model).at(i), node.users) << i;
            ASSERT_EQ(model.isTransformDirty(i), plain.isDirty(i)) << i;
            ASSERT_EQ(model.isParentHidden(i), plain.isHidden(i)) << i;
            ASSERT_EQ(model.isVisible(i), plain.isVisible(i)) << i;
            const int other = below(int(plain.nodes.size()));
            ASSERT_EQ(model.isDescendant(other, i), plain.isBelow(other, i)) << other << " " << i;
        }
        ASSERT_EQ(Access::isAnyDirty(model), plain.anyDirty);
        ASSERT_EQ(Access::pending(model), plain.pending);
        for (int position = 0; position < int(order.size()); ++position)
        {
            const GPUModel::Drawable& drawable = Pass::drawableAt(model, position);
            ASSERT_EQ(drawable.handle, order[size_t(position)]);
            ASSERT_EQ(bytesOf(drawable.objectData), bytesOf(plain.drawables[size_t(position)].records.get()))
                << position;
        }
    }

    void SetUp() override
    {
        GPUModelFixture::SetUp();
        withoutNormals =
            newObjectPlan(QStringLiteral("WithoutNormals"), {kInverseModelMatrix, kModelMatrix, kPreviousModelMatrix});
    }

    void TearDown() override
    {
        plain = {};
        GPUModelFixture::TearDown();
    }

    std::mt19937 random{11};
    InstanceDataPlan* withoutNormals = nullptr;
    PlainModel plain;
    std::vector<int> rank;
    std::vector<int> order; // handles by position
};

TEST_F(GPUModelHierarchyTest, RandomHierarchiesUnderRandomEditsAgreeWithAPlainModel)
{
    for (int scene = 0; scene < 40; ++scene)
    {
        SCOPED_TRACE(scene);
        model.clear();
        plain = {};
        order.clear();
        build(1 + below(60), 1 + below(8));
        for (int frame = 0; frame < 12; ++frame)
        {
            SCOPED_TRACE(frame);
            for (int edits = below(15); edits > 0; --edits)
                edit();
            compare();
            ASSERT_EQ(model.updateTransforms(), plain.updateAll());
            compare();
            if (below(3) > 0)
            {
                model.updatePreviousMatrices();
                plain.updatePrevious();
                compare();
            }
            if (HasFatalFailure())
                return;
        }
        model.updatePreviousMatrices(); // before the next scene, whose drawables these are not
    }
}

// -- deep ones --

TEST_F(GPUModelHierarchyTest, ADeepChainIsUpdatedWithParentsBeforeTheirChildren)
{
    constexpr int kCount = 100'000;
    for (int i = 0; i < kCount; ++i)
        model.addTransform(i - 1, translation(1, 0, 0));
    const int handle = follow(kCount - 1);
    EXPECT_TRUE(model.updateTransforms());
    for (int i = 0; i < kCount; ++i)
        ASSERT_EQ(model.worldTransform(i)(0, 3), float(i + 1));
    EXPECT_EQ(record(handle, kModelMatrix)(0, 3), float(kCount));
    model.setLocalTransform(0, translation(2, 0, 0), false);
    EXPECT_TRUE(model.isTransformDirty(kCount - 1));
    EXPECT_TRUE(model.updateTransforms());
    EXPECT_EQ(record(handle, kModelMatrix)(0, 3), float(kCount + 1));
    EXPECT_EQ(record(handle, kPreviousModelMatrix)(0, 3), float(kCount));
}

TEST_F(GPUModelHierarchyTest, ADeepChainIsUpdatedWithParentsBehindTheirChildren)
{
    constexpr int kCount = 100'000;
    for (int i = 0; i < kCount; ++i)
        model.addTransform(i + 1 < kCount ? i + 1 : -1, translation(1, 0, 0));
    const int handle = follow(0);
    EXPECT_TRUE(model.updateTransforms());
    for (int i = 0; i < kCount; ++i)
        ASSERT_EQ(model.worldTransform(i)(0, 3), float(kCount - i));
    model.setLocalTransform(kCount - 1, translation(2, 0, 0), false);
    EXPECT_TRUE(model.isTransformDirty(0));
    EXPECT_TRUE(model.isDescendant(kCount - 1, 0));
    EXPECT_TRUE(model.updateTransforms());
    EXPECT_EQ(record(handle, kModelMatrix)(0, 3), float(kCount + 1));
    model.setVisibility(kCount - 1, 3);
    EXPECT_FALSE(model.isVisible(0));
}

// -- parents that make no sense --

QString aboveItself(int index)
{
    return assertion("!chain.contains(parent)", QStringLiteral("Transform %1 is above itself").arg(index));
}

TEST_F(GPUModelHierarchyTest, ParentsInACircleAreReportedAndOneOfThemCountsAsARoot)
{
    model.addTransform(1, translation(1, 0, 0));
    model.addTransform(2, translation(0, 1, 0));
    model.addTransform(0, translation(0, 0, 1));
    model.addTransform(2, translation(5, 0, 0)); // below the circle
    model.addTransform(-1, translation(7, 0, 0));
    const int handle = follow(0);
    LogCapture log;
    EXPECT_TRUE(model.updateTransforms());
    EXPECT_EQ(log.messages(), QStringList({aboveItself(0)}));
    EXPECT_EQ(model.worldTransform(2), translation(0, 0, 1));
    EXPECT_EQ(model.worldTransform(1), translation(0, 1, 1));
    EXPECT_EQ(model.worldTransform(0), translation(1, 1, 1));
    EXPECT_EQ(model.worldTransform(3), translation(5, 0, 1));
    EXPECT_EQ(model.worldTransform(4), translation(7, 0, 0));
    EXPECT_EQ(record(handle, kModelMatrix), translation(1, 1, 1));
    EXPECT_EQ(Access::pending(model), Refs({{handle, 0}})) << "each is computed once";
    EXPECT_EQ(Access::dirty(model), QList<bool>(5, false));
    log.clear();
    model.setLocalTransform(4, identity, false);
    EXPECT_TRUE(model.updateTransforms());
    EXPECT_EQ(log.messages(), QStringList()) << "nothing of the circle is dirty";
    model.setLocalTransform(1, identity, false);
    EXPECT_TRUE(model.updateTransforms());
    EXPECT_EQ(log.messages(), QStringList({aboveItself(0)}));
    EXPECT_EQ(model.worldTransform(3), translation(5, 0, 1));
}

TEST_F(GPUModelHierarchyTest, ATransformThatIsItsOwnParentIsReportedAndCountsAsARoot)
{
    model.addTransform(0, translation(1, 0, 0));
    model.addTransform(0, translation(0, 1, 0));
    LogCapture log;
    EXPECT_TRUE(model.updateTransforms());
    EXPECT_EQ(log.messages(), QStringList({aboveItself(0)}));
    EXPECT_EQ(model.worldTransform(0), translation(1, 0, 0));
    EXPECT_EQ(model.worldTransform(1), translation(1, 1, 0));
}

TEST_F(GPUModelHierarchyTest, AParentThatThereIsNotIsReportedAndCountsAsNone)
{
    model.addTransform(9, translation(1, 0, 0));
    model.addTransform(0, translation(0, 1, 0));
    LogCapture log;
    EXPECT_TRUE(model.updateTransforms());
    EXPECT_EQ(log.messages(), QStringList({noTransform(9, "_model.isValidTransform(parent)")}));
    EXPECT_EQ(model.worldTransform(0), translation(1, 0, 0));
    EXPECT_EQ(model.worldTransform(1), translation(1, 1, 0));
    EXPECT_EQ(Access::dirty(model), QList<bool>(2, false));
}

TEST_F(GPUModelHierarchyTest, ACircleOfManyTransformsEnds)
{
    constexpr int kCount = 100'000;
    for (int i = 0; i < kCount; ++i)
        model.addTransform((i + 1) % kCount, translation(1, 0, 0));
    LogCapture log;
    EXPECT_TRUE(model.updateTransforms());
    EXPECT_EQ(log.messages(), QStringList({aboveItself(0)}));
    EXPECT_EQ(model.worldTransform(kCount - 1)(0, 3), 1.0f);
    EXPECT_EQ(model.worldTransform(0)(0, 3), float(kCount));
    EXPECT_FALSE(model.isTransformDirty(0));
    EXPECT_EQ(log.messages().size(), 2);
}

} // namespace
} // namespace Harrow::Vrk::Test
