// SPDX-License-Identifier: MIT
//
// The drawables of the scene: adding, replacing, copies and what owns what. Flags and sorting are in
// GPUModelFlagsTest.cpp; names, properties, estimates and bad handles in GPUModelNamesTest.cpp.
#include "GPUModelTestTools.h"

#include <QPointer>
#include <QScopedPointer>

#include <gtest/gtest.h>

#include <cstddef>
#include <type_traits>

namespace Harrow::Vrk::Test
{
namespace
{

// Records that applications fill word by word.
static_assert(sizeof(GPUModel::BoundingBox) == 6 * 4);
static_assert(sizeof(GPUModel::InstanceRef) == 2 * 4 && offsetof(GPUModel::InstanceRef, instance) == 4);
static_assert(sizeof(GPUModel::Camera) == 12 * 4);
static_assert(offsetof(GPUModel::Camera, horizontalAperture) == 1 * 4);
static_assert(offsetof(GPUModel::Camera, verticalAperture) == 2 * 4);
static_assert(offsetof(GPUModel::Camera, horizontalOffset) == 3 * 4);
static_assert(offsetof(GPUModel::Camera, verticalOffset) == 4 * 4);
static_assert(offsetof(GPUModel::Camera, focalLength) == 5 * 4);
static_assert(offsetof(GPUModel::Camera, projectionDistance) == 6 * 4);
static_assert(offsetof(GPUModel::Camera, projection) == 9 * 4);
static_assert(offsetof(GPUModel::Camera, farClip) == 10 * 4);
static_assert(offsetof(GPUModel::Camera, nearClip) == 11 * 4);
static_assert(offsetof(Light, bits) >= 15 * 4 && sizeof(Light::bits) == 8 && sizeof(Light::payload) == 15 * 4);
static_assert(std::is_copy_constructible_v<GPUModel> && std::is_copy_assignable_v<GPUModel>);
static_assert(!std::is_polymorphic_v<GPUModel>);
static_assert(GPUModel::kInvalidTransformRef == -1 && GPUModel::kInvalidBoundingBoxRef == -1 &&
              GPUModel::kInvalidCameraIndex == -1);

constexpr quint64 kAll = ~quint64(0);

class GPUModelTest : public GPUModelFixture
{
};

// -- adding --

TEST_F(GPUModelTest, ANewModelIsEmptyWithFeatureFlags15)
{
    EXPECT_EQ(model.numDrawables(), 0);
    EXPECT_TRUE(model.isDrawablesEmpty());
    EXPECT_EQ(model.getFeatureFlags(), 15u);
    EXPECT_FALSE(Access::isUnsorted(model));
    EXPECT_FALSE(Access::isAnyDirty(model));
    EXPECT_FALSE(model.containsReflectedTransparency());
    EXPECT_EQ(model.maxUVSets(), 0u);
    EXPECT_EQ(model.maxTangentSets(), 0u);
    EXPECT_EQ(model.getTotalVerts(), 0);
    EXPECT_EQ(model.memoryEstimateGPU(), 0u);
    EXPECT_EQ(model.memoryEstimateCPU(), sizeof(GPUModel));
}

TEST_F(GPUModelTest, AddKeepsWhatItIsGivenAndNothingForEachCommandYet)
{
    auto* const buffers = newDrawList(3);
    auto* const material = newRecords(1);
    auto* const object = newRecords(3);
    add(1);
    EXPECT_EQ(model.add(buffers, 7, material, object, 42), 1);
    EXPECT_EQ(model.numDrawables(), 2);
    EXPECT_FALSE(model.isDrawablesEmpty());
    EXPECT_EQ(model.drawBuffers(1), buffers);
    EXPECT_EQ(model.materialData(1), material);
    EXPECT_EQ(model.objectData(1), object);
    EXPECT_EQ(std::as_const(model).drawBuffers(1), buffers);
    EXPECT_EQ(std::as_const(model).materialData(1), material);
    EXPECT_EQ(std::as_const(model).objectData(1), object);
    EXPECT_EQ(model.getFlags(1), 42u);
    EXPECT_EQ(at(1).handle, 1);
    EXPECT_EQ(at(1).transformRefs, QList<int>({-1, -1, -1}));
    EXPECT_EQ(at(1).boundingBoxRefs, QList<int>({-1, -1, -1}));
    EXPECT_EQ(at(1).culled, QList<bool>({false, false, false}));
    EXPECT_EQ(at(1).culledCount, 0);
    EXPECT_EQ(Access::drawableIndex(model), QList<int>({0, 1}));
    EXPECT_EQ(Pass::materialDrawables(model), (QHash<int, QList<int>>{{0, {0}}, {7, {1}}}));
}

TEST_F(GPUModelTest, PositionsAreFiledUnderTheirMaterialKeyInTheOrderOfAdding)
{
    for (const int key : {5, -3, 5, 0, 5})
        model.add(newDrawList(1), key, nullptr, nullptr, 0);
    EXPECT_EQ(Pass::materialDrawables(model), (QHash<int, QList<int>>{{5, {0, 2, 4}}, {-3, {1}}, {0, {3}}}));
}

TEST_F(GPUModelTest, AddWithFlagsNotBelowTheLastOnesLeavesTheListOrdered)
{
    addAll({0, 3, 3, 9});
    EXPECT_FALSE(Access::isUnsorted(model));
    add(1, 8);
    EXPECT_TRUE(Access::isUnsorted(model));
    add(1, 100);
    EXPECT_TRUE(Access::isUnsorted(model)) << "stays until the model is cleared";
}

TEST_F(GPUModelTest, AddComparesWithTheDrawableThatIsNowLast)
{
    addAll({9, 1});
    model.sortDrawablesByFlags();
    model.setFlags(1, 2, kAll); // what has handle 1 stands first
    model.sortDrawablesByFlags();
    ASSERT_EQ(flags(), QList<quint64>({2, 9}));
    model.clear();
    addAll({5, kAll}); // compared as numbers without sign
    EXPECT_FALSE(Access::isUnsorted(model));
    add(1, kAll - 1);
    EXPECT_TRUE(Access::isUnsorted(model));
}

TEST_F(GPUModelTest, AddMayBeGivenFlagsThatLieInTheListItself)
{
    add(1, 77);
    for (int i = 0; i < 100; ++i)
        model.add(newDrawList(1), 0, nullptr, nullptr, at(0).flags);
    EXPECT_EQ(flags(), QList<quint64>(101, 77));
}

TEST_F(GPUModelTest, AddMakesTheSceneBoundsStale)
{
    model.sceneBounds();
    ASSERT_FALSE(Pass::isSceneBoundsDirty(model));
    add(1);
    EXPECT_TRUE(Pass::isSceneBoundsDirty(model));
}

TEST_F(GPUModelTest, ASimpleDrawableHasNothingForItsCommandsAndKeyZero)
{
    add(1, 9);
    model.sceneBounds();
    auto* const buffers = newDrawList(3);
    auto* const material = newRecords(1);
    auto* const object = newRecords(3);
    EXPECT_EQ(model.addSimple(buffers, 7, material, object, 4), 1);
    EXPECT_EQ(at(1).drawBuffers, buffers);
    EXPECT_EQ(at(1).materialData, material);
    EXPECT_EQ(at(1).objectData, object);
    EXPECT_EQ(at(1).flags, 4u);
    EXPECT_EQ(at(1).handle, 1);
    EXPECT_TRUE(at(1).transformRefs.isEmpty());
    EXPECT_TRUE(at(1).boundingBoxRefs.isEmpty());
    EXPECT_TRUE(at(1).culled.isEmpty());
    EXPECT_EQ(at(1).culledCount, 0);
    EXPECT_EQ(Pass::materialDrawables(model), (QHash<int, QList<int>>{{0, {0, 1}}}));
    EXPECT_FALSE(Access::isUnsorted(model)) << "although 4 is below 9";
    EXPECT_FALSE(Pass::isSceneBoundsDirty(model));
}

// -- replacing --

TEST_F(GPUModelTest, SetReplacesContentsAndTheFlagsWithinTheMask)
{
    add(1);
    add(2, 0xF0);
    auto* const buffers = newDrawList(2);
    auto* const material = newRecords(1);
    model.sceneBounds();
    model.set(1, buffers, material, nullptr, 0x3C, 0x0F);
    EXPECT_EQ(model.drawBuffers(1), buffers);
    EXPECT_EQ(model.materialData(1), material);
    EXPECT_EQ(model.objectData(1), nullptr);
    EXPECT_EQ(model.getFlags(1), 0xFCu);
    EXPECT_EQ(at(1).handle, 1);
    EXPECT_TRUE(Access::isUnsorted(model));
    EXPECT_TRUE(Pass::isSceneBoundsDirty(model));
}

TEST_F(GPUModelTest, SetWithTheSameFlagsLeavesTheOrderAsItWas)
{
    add(2, 0xF0);
    model.sceneBounds();
    model.set(0, newDrawList(2), nullptr, nullptr, 0xFF, 0xF0);
    EXPECT_EQ(model.getFlags(0), 0xF0u);
    EXPECT_FALSE(Access::isUnsorted(model));
    EXPECT_TRUE(Pass::isSceneBoundsDirty(model));
}

TEST_F(GPUModelTest, SetGivesNewCommandsNothingAndKeepsWhatTheOthersHave)
{
    const int transform = model.addTransform(-1, identity);
    add(2);
    model.useTransform(0, 1, transform);
    model.useBoundingBox(0, 0, 5);
    Pass::writableDrawableAt(model, 0).culled[1] = true;
    Pass::writableDrawableAt(model, 0).culledCount = 1;
    model.set(0, newDrawList(4), nullptr, nullptr, 0, 0);
    EXPECT_EQ(at(0).transformRefs, QList<int>({-1, transform, -1, -1}));
    EXPECT_EQ(at(0).boundingBoxRefs, QList<int>({5, -1, -1, -1}));
    EXPECT_EQ(at(0).culled, QList<bool>({false, true, false, false}));
    EXPECT_EQ(at(0).culledCount, 1);
}

TEST_F(GPUModelTest, SetCountsTheCulledCommandsAgainWhenTheirNumberShrinks)
{
    add(4);
    GPUModel::Drawable& drawable = Pass::writableDrawableAt(model, 0);
    drawable.culled = {true, false, true, true};
    drawable.culledCount = 3;
    model.set(0, newDrawList(2), nullptr, nullptr, 0, 0);
    EXPECT_EQ(at(0).culled, QList<bool>({true, false}));
    EXPECT_EQ(at(0).culledCount, 1);
    EXPECT_EQ(at(0).transformRefs.size(), 2);
    EXPECT_EQ(at(0).boundingBoxRefs.size(), 2);
}

TEST_F(GPUModelTest, SetDeletesTheOldContentsOfAnOwner)
{
    QPointer<DrawBuffers> buffers = newDrawList(1);
    QPointer<InstanceDataCollection> material = newRecords(1);
    QPointer<InstanceDataCollection> object = newRecords(1);
    model.add(buffers, 0, material, object, 0);
    model.set(0, newDrawList(1), nullptr, nullptr, 0, 0);
    EXPECT_TRUE(buffers.isNull());
    EXPECT_TRUE(material.isNull());
    EXPECT_TRUE(object.isNull());
}

TEST_F(GPUModelTest, SetWithoutOwnershipDeletesNothingAndMayInstallTheSameAgain)
{
    auto* const buffers = newDrawList(1);
    QPointer<InstanceDataCollection> object = newRecords(1);
    model.add(buffers, 0, nullptr, object, 0);
    model.setDeleteOnClear(false);
    model.set(0, buffers, nullptr, nullptr, 0, 0);
    EXPECT_EQ(model.drawBuffers(0), buffers);
    ASSERT_FALSE(object.isNull());
    delete object;
    model.setDeleteOnClear(true);
}

TEST_F(GPUModelTest, AnOwnerThatIsGivenWhatItWouldDeleteReportsAndChangesNothing)
{
    auto* const buffers = newDrawList(1);
    auto* const object = newRecords(1);
    model.add(buffers, 0, nullptr, object, 6);
    const QScopedPointer<DrawBuffers> others(newDrawList(2));
    const QString message =
        assertion("!sharesContents(*drawable, {buffers, material, object})",
                  QStringLiteral("Drawable 0 would delete what it is given: turn setDeleteOnClear off before"));
    LogCapture log;
    model.set(0, buffers, nullptr, nullptr, 1, kAll);
    model.set(0, others.get(), object, nullptr, 1, kAll);
    EXPECT_EQ(log.messages(), QStringList({message, message}));
    EXPECT_EQ(model.drawBuffers(0), buffers);
    EXPECT_EQ(model.objectData(0), object);
    EXPECT_EQ(model.getFlags(0), 6u);
}

// -- copies and the end --

TEST_F(GPUModelTest, CopiesShareListsUntilOneIsWrittenTo)
{
    addAll({1, 2});
    model.addTransform(-1, identity);
    GPUModel copy(model);
    copy.setDeleteOnClear(false);
    ASSERT_TRUE(Access::drawables(copy).isSharedWith(Access::drawables(model)));
    EXPECT_NE(std::as_const(copy).drawBuffers(0), nullptr);
    std::as_const(copy).materialData(0);
    std::as_const(copy).objectData(0);
    copy.getFlags(0);
    copy.localTransform(0);
    EXPECT_TRUE(Access::drawables(copy).isSharedWith(Access::drawables(model))) << "queries of a const model";
    copy.setFlags(0, 9, kAll);
    EXPECT_FALSE(Access::drawables(copy).isSharedWith(Access::drawables(model)));
    copy.setLocalTransform(0, translation(1, 0, 0), false);
    EXPECT_EQ(model.getFlags(0), 1u);
    EXPECT_EQ(copy.getFlags(0), 9u);
    EXPECT_EQ(model.localTransform(0), identity);
    EXPECT_EQ(copy.drawBuffers(1), model.drawBuffers(1)) << "the same draw lists";
}

TEST_F(GPUModelTest, QueriesOfAModelThatIsNotConstDetachIt)
{
    add(1);
    GPUModel copy;
    for (const auto query : {+[](GPUModel& m) { return static_cast<void*>(m.drawBuffers(0)); },
                             +[](GPUModel& m) { return static_cast<void*>(m.materialData(0)); },
                             +[](GPUModel& m) { return static_cast<void*>(m.objectData(0)); }})
    {
        copy = model;
        copy.setDeleteOnClear(false);
        ASSERT_TRUE(Access::drawables(copy).isSharedWith(Access::drawables(model)));
        query(copy);
        EXPECT_FALSE(Access::drawables(copy).isSharedWith(Access::drawables(model)));
    }
}

TEST_F(GPUModelTest, TheOwnerDeletesAtItsEndAndOthersDoNot)
{
    QPointer<DrawBuffers> buffers = newDrawList(1);
    QPointer<InstanceDataCollection> material = newRecords(1);
    QPointer<InstanceDataCollection> object = newRecords(1);
    {
        GPUModel owner;
        owner.add(buffers, 0, material, object, 0);
        {
            GPUModel copy = owner;
            copy.setDeleteOnClear(false);
            copy.clear();
            EXPECT_EQ(copy.numDrawables(), 0);
        }
        {
            GPUModel assigned;
            assigned = owner;
            assigned.setDeleteOnClear(false);
        }
        EXPECT_FALSE(buffers.isNull());
        EXPECT_FALSE(material.isNull());
        EXPECT_FALSE(object.isNull());
    }
    EXPECT_TRUE(buffers.isNull());
    EXPECT_TRUE(material.isNull());
    EXPECT_TRUE(object.isNull());
}

TEST_F(GPUModelTest, AnOwnerDeletesWhatItNamesTwiceOnceAndReports)
{
    QPointer<DrawBuffers> buffers = newDrawList(1);
    QPointer<InstanceDataCollection> records = newRecords(1);
    model.add(buffers, 0, records, records, 0);
    model.add(buffers, 0, nullptr, nullptr, 0);
    LogCapture log;
    model.clear();
    EXPECT_EQ(log.messages(),
              QStringList({assertion("0 == twice", QStringLiteral("2 draw lists and records are named more than once "
                                                                  "by a model that owns them"))}));
    EXPECT_TRUE(buffers.isNull());
    EXPECT_TRUE(records.isNull());
}

TEST_F(GPUModelTest, ClearLeavesCamerasLightsBoxesPendingMatricesAndSettings)
{
    model.setFeatureFlags(5);
    model.addCamera({}, QStringLiteral("camera"));
    model.addLight({}, QStringLiteral("light"));
    const GPUModel::BoundingBox box = {1, 2, 3, 4, 5, 6};
    model.loadBoundingBoxes(&box, 1);
    const int transform = model.addTransform(-1, identity);
    model.setTransformName(transform, QStringLiteral("node"));
    model.setVisibility(transform, 3);
    model.setContainsReflectedTransparency(true);
    addAll({2, 1});
    model.useTransform(1, 0, transform);
    model.addMaterialName(0, 0, QStringLiteral("steel"));
    model.addObjectName(0, 0, QStringLiteral("bolt"));
    model.updateTransforms();
    model.setLocalTransform(transform, scaling(2, 2, 2), true);
    model.sceneBounds();

    model.clear();
    EXPECT_EQ(model.numDrawables(), 0);
    EXPECT_TRUE(Access::drawableIndex(model).isEmpty());
    EXPECT_TRUE(Pass::materialDrawables(model).isEmpty());
    EXPECT_EQ(model.materialNames(), QStringList());
    EXPECT_EQ(model.objectNames(), QStringList());
    EXPECT_EQ(Access::transformCount(model), 0);
    EXPECT_FALSE(model.isValidTransform(0));
    EXPECT_EQ(model.transformNames(), QStringList());
    EXPECT_EQ(model.findTransform(QStringLiteral("node")), -1);
    EXPECT_FALSE(Access::isUnsorted(model));
    EXPECT_FALSE(Access::isAnyDirty(model));
    EXPECT_TRUE(Pass::isSceneBoundsDirty(model));

    EXPECT_EQ(model.getCameraCount(), 1);
    EXPECT_EQ(model.getCameraNames(), QStringList({QStringLiteral("camera")}));
    EXPECT_EQ(model.lightCount(), 1);
    EXPECT_TRUE(model.isValidBoundingBox(0));
    EXPECT_EQ(model.getFeatureFlags(), 5u);
    EXPECT_TRUE(model.containsReflectedTransparency());
    EXPECT_EQ(Access::pending(model), Refs({{1, 0}}));

    // Handles begin anew, and what was hidden before hides nothing now.
    EXPECT_EQ(add(1), 0);
    const int root = model.addTransform(-1, identity);
    EXPECT_TRUE(model.isVisible(model.addTransform(root, identity)));
}

} // namespace
} // namespace Harrow::Vrk::Test
