// SPDX-License-Identifier: MIT
//
// Updates of the hierarchy: world matrices, what follows from them, and how they reach the object records. Hierarchies
// of all shapes are put to the test in GPUModelHierarchyTest.cpp.
#include "GPUModelTestTools.h"

#include <QPair>

#include <gtest/gtest.h>

#include <cstring>

namespace Harrow::Vrk::Test
{
namespace
{

QMatrix4x4 quarterTurn()
{
    QMatrix4x4 matrix;
    matrix.rotate(90.0f, 0.0f, 0.0f, 1.0f);
    return matrix;
}

class GPUModelUpdateTest : public GPUModelFixture
{
protected:
    Normal recordedNormal(int handle, int instance = 0) const
    {
        Normal normal;
        const QByteArray& bytes = std::as_const(model).objectData(handle)->dataArray();
        std::memcpy(normal.data(),
                    bytes.constData() + instance * qsizetype(plan->totalDataSize()) + plan->offset(kModelNormalMatrix),
                    36);
        return normal;
    }

    /// What an update does to one record, by the collection's own operations.
    static void writeExpected(InstanceDataCollection& records, int instance, const QMatrix4x4& world)
    {
        const QMatrix4x4 inverse = world.inverted();
        const Normal normal = world.normalMatrix();
        records.copyInstanceMember(instance, kModelMatrix, kPreviousModelMatrix);
        records.set(instance, kModelMatrix, world.constData(), 64);
        records.set(instance, kInverseModelMatrix, inverse.constData(), 64);
        if (records.plan() && records.plan()->contains(kModelNormalMatrix))
            records.set(instance, kModelNormalMatrix, normal.constData(), 36);
    }
};

// -- when --

TEST_F(GPUModelUpdateTest, NothingDirtyGivesFalseAndLeavesThePendingMatricesAlone)
{
    EXPECT_FALSE(model.updateTransforms());
    follow(model.addTransform(-1, identity));
    EXPECT_TRUE(model.updateTransforms());
    ASSERT_EQ(Access::pending(model), Refs({{0, 0}}));
    EXPECT_FALSE(model.updateTransforms());
    EXPECT_EQ(Access::pending(model), Refs({{0, 0}}));
}

TEST_F(GPUModelUpdateTest, AnEmptyModelWithTheMarkSetGivesTrueAndClearsIt)
{
    Access::isAnyDirty(model) = true;
    EXPECT_TRUE(model.updateTransforms());
    EXPECT_FALSE(Access::isAnyDirty(model));
    EXPECT_FALSE(model.updateTransforms());
}

TEST_F(GPUModelUpdateTest, OnlyWhatIsDirtyIsComputed)
{
    model.addTransform(-1, translation(1, 0, 0));
    model.addTransform(-1, translation(2, 0, 0));
    follow(0);
    follow(1);
    model.updateTransforms();
    model.updatePreviousMatrices();
    model.setLocalTransform(1, translation(3, 0, 0), false);
    EXPECT_TRUE(model.updateTransforms());
    EXPECT_EQ(Access::pending(model), Refs({{1, 0}}));
    EXPECT_EQ(Access::dirty(model), QList<bool>({false, false}));
}

TEST_F(GPUModelUpdateTest, AChildOfADirtyParentIsComputedAndItsInstancesRolled)
{
    model.addTransform(-1, translation(1, 0, 0));
    model.addTransform(0, translation(0, 1, 0));
    const int handle = follow(1);
    model.updateTransforms();
    model.updatePreviousMatrices();
    model.setLocalTransform(0, translation(5, 0, 0), false);
    ASSERT_FALSE(Access::dirty(model).at(1));
    EXPECT_TRUE(model.updateTransforms());
    EXPECT_EQ(model.worldTransform(1), translation(5, 1, 0));
    EXPECT_EQ(record(handle, kModelMatrix), translation(5, 1, 0));
    EXPECT_EQ(record(handle, kPreviousModelMatrix), translation(1, 1, 0));
    EXPECT_EQ(Access::pending(model), Refs({{handle, 0}}));
}

TEST_F(GPUModelUpdateTest, AChangedParentTakesEffectWhenTheChildIsComputedNext)
{
    model.addTransform(-1, translation(1, 0, 0));
    model.addTransform(-1, translation(0, 1, 0));
    model.addTransform(0, translation(0, 0, 1));
    model.updateTransforms();
    model.setTransformParent(2, 1);
    EXPECT_FALSE(model.updateTransforms());
    EXPECT_EQ(model.worldTransform(2), translation(1, 0, 1));
    model.setLocalTransform(0, translation(2, 0, 0), false); // no longer above it
    model.updateTransforms();
    EXPECT_EQ(model.worldTransform(2), translation(1, 0, 1));
    model.setLocalTransform(1, translation(0, 2, 0), false);
    model.updateTransforms();
    EXPECT_EQ(model.worldTransform(2), translation(0, 2, 1));
}

// -- matrices --

TEST_F(GPUModelUpdateTest, AWorldMatrixIsTheParentsTimesTheLocalOne)
{
    model.addTransform(-1, translation(10, 0, 0));
    model.addTransform(0, quarterTurn());
    model.addTransform(1, translation(1, 0, 0) * scaling(2, 1, 1));
    model.updateTransforms();
    // The x axis has become y, doubled; the origin lies one along y beside 10.
    const QMatrix4x4 expected(0, -1, 0, 10, //
                              2, 0, 0, 1,   //
                              0, 0, 1, 0,   //
                              0, 0, 0, 1);
    EXPECT_EQ(model.worldTransform(2), expected);
}

TEST_F(GPUModelUpdateTest, NormalMatricesAreTheInverseTransposed)
{
    const int handle = follow(model.addTransform(-1, translation(7, 8, 9) * quarterTurn() * scaling(2, 4, 8)));
    model.updateTransforms();
    // Columns: where the normals of x, y and z go.
    const float expected[] = {0, 0.5f, 0, -0.25f, 0, 0, 0, 0, 0.125f};
    const Normal normal = model.normalTransform(0);
    for (int i = 0; i < 9; ++i)
        EXPECT_FLOAT_EQ(normal.constData()[i], expected[i]) << i;
    EXPECT_TRUE(isSame(recordedNormal(handle), normal));
    EXPECT_TRUE(isSame(normal, model.worldTransform(0).normalMatrix()));
}

TEST_F(GPUModelUpdateTest, AMatrixThatTurnsHandednessAroundIsNegative)
{
    QMatrix4x4 swapped(0, 1, 0, 0, 1, 0, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1);
    const QPair<QMatrix4x4, bool> cases[] = {{identity, false},
                                             {scaling(-1, 1, 1), true},
                                             {scaling(1, -2, 1), true},
                                             {scaling(-1, -1, 1), false},
                                             {scaling(-1, -1, -1), true},
                                             {swapped, true},
                                             {quarterTurn(), false},
                                             {scaling(1e-3f, 1e-3f, -1e-3f), true}, // the determinant alone is tiny
                                             {scaling(1e12f, 1e12f, -1e12f), true},
                                             {scaling(0, 1, -1), false},
                                             {scaling(1e-6f, 1, -1), false}}; // a row that counts as zero
    for (const auto& [local, isNegative] : cases)
    {
        const int transform = model.addTransform(-1, local);
        model.updateTransforms();
        EXPECT_EQ(Access::negative(model).at(transform), isNegative) << transform;
    }
}

TEST_F(GPUModelUpdateTest, HandednessFollowsTheWorldMatrixOfEachUpdate)
{
    model.addTransform(-1, scaling(-1, 1, 1));
    model.addTransform(0, identity);
    model.addTransform(1, scaling(1, 1, -1));
    model.updateTransforms();
    EXPECT_EQ(Access::negative(model), QList<bool>({true, true, false}));
    model.setLocalTransform(0, identity, false);
    model.updateTransforms();
    EXPECT_EQ(Access::negative(model), QList<bool>({false, false, true}));
}

// -- position and size of the parents alone --

TEST_F(GPUModelUpdateTest, KeepingThePositionOnlyTakesThePositionAndTheSizeOfTheParents)
{
    model.addTransform(-1, translation(10, 20, 30) * quarterTurn() * scaling(2, 3, 4));
    model.addTransform(0, identity);
    model.setLocalTransform(1, translation(1, 1, 1), true);
    model.updateTransforms();
    // (1, 1, 1) is scaled to (2, 3, 4), turned to (-3, 2, 4).
    EXPECT_EQ(model.worldTransform(1), translation(7, 22, 34) * scaling(2, 3, 4));
    EXPECT_EQ(model.localTransform(1), scaling(2, 3, 4)) << "it has lost its position and taken on the size";
    EXPECT_TRUE(Access::keepParentPositionOnly(model).at(1));
}

TEST_F(GPUModelUpdateTest, TheSizeOfTheParentsAddsUpWithEachUpdate)
{
    model.addTransform(-1, scaling(2, 3, 4));
    model.addTransform(0, identity);
    model.setLocalTransform(1, translation(1, 1, 1), true);
    model.updateTransforms();
    EXPECT_EQ(model.worldTransform(1), translation(2, 3, 4) * scaling(2, 3, 4));
    model.setLocalTransform(0, translation(5, 6, 7) * scaling(2, 3, 4), false);
    model.updateTransforms();
    EXPECT_EQ(model.localTransform(1), scaling(4, 9, 16));
    EXPECT_EQ(model.worldTransform(1), translation(5, 6, 7) * scaling(4, 9, 16));
    model.setLocalTransform(0, scaling(10, 10, 10), false);
    model.updateTransforms();
    EXPECT_EQ(model.localTransform(1), scaling(40, 90, 160));
    EXPECT_EQ(model.worldTransform(1), scaling(40, 90, 160));
}

TEST_F(GPUModelUpdateTest, TheOwnRotationStaysAndIsScaledFromWithin)
{
    model.addTransform(-1, scaling(2, 3, 4));
    model.addTransform(0, identity);
    model.setLocalTransform(1, quarterTurn(), true);
    model.updateTransforms();
    EXPECT_EQ(model.worldTransform(1), quarterTurn() * scaling(2, 3, 4));
    EXPECT_EQ(model.localTransform(1), quarterTurn() * scaling(2, 3, 4));
}

TEST_F(GPUModelUpdateTest, AMirroredParentMirrorsX)
{
    for (const auto& [parent, expected] : {QPair<QMatrix4x4, QMatrix4x4>(scaling(-2, 3, 4), scaling(-2, 3, 4)),
                                           {scaling(2, -3, 4), scaling(-2, 3, 4)},
                                           {scaling(-2, -3, 4), scaling(2, 3, 4)},
                                           {scaling(-2, -3, -4), scaling(-2, 3, 4)}})
    {
        model.clear();
        model.addTransform(-1, parent);
        model.addTransform(0, translation(1, 0, 0));
        model.setLocalTransform(1, identity, true);
        model.updateTransforms();
        EXPECT_EQ(model.worldTransform(1), expected);
        EXPECT_EQ(Access::negative(model).at(1), expected(0, 0) < 0.0f);
    }
}

TEST_F(GPUModelUpdateTest, ARootThatKeepsThePositionOnlyLosesItFromItsLocalMatrix)
{
    model.addTransform(-1, identity);
    model.setLocalTransform(0, translation(1, 2, 3) * quarterTurn(), true);
    model.updateTransforms();
    EXPECT_EQ(model.worldTransform(0), translation(1, 2, 3) * quarterTurn());
    EXPECT_EQ(model.localTransform(0), quarterTurn());
}

TEST_F(GPUModelUpdateTest, TheLastRowOfAKeptLocalMatrixStays)
{
    const QMatrix4x4 projective(1, 0, 0, 5, 0, 1, 0, 6, 0, 0, 1, 7, 0, 0, -1, 9);
    model.addTransform(-1, identity);
    model.setLocalTransform(0, projective, true);
    model.updateTransforms();
    const QMatrix4x4 kept(1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, -1, 1);
    EXPECT_EQ(model.localTransform(0), kept);
    EXPECT_EQ(model.worldTransform(0), translation(5, 6, 7) * kept);
}

// -- records --

TEST_F(GPUModelUpdateTest, AnUpdateWritesFourMatricesAndRollsThePreviousOne)
{
    const int transform = model.addTransform(-1, translation(1, 0, 0));
    const int handle = add(3);
    model.useTransform(handle, 1, transform);
    model.objectData(handle)->clearDirtyStatus();
    model.updateTransforms();
    const QMatrix4x4 zero(0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0);
    EXPECT_EQ(record(handle, kModelMatrix, 1), translation(1, 0, 0));
    EXPECT_EQ(record(handle, kInverseModelMatrix, 1), translation(-1, 0, 0));
    EXPECT_TRUE(isSame(recordedNormal(handle, 1), Normal()));
    EXPECT_EQ(record(handle, kPreviousModelMatrix, 1), zero) << "what the record had before";
    for (const int other : {0, 2})
        for (const QString& member : {kModelMatrix, kInverseModelMatrix, kPreviousModelMatrix, kModelNormalMatrix})
            EXPECT_EQ(record(handle, member, other), zero) << other;
    EXPECT_EQ(number(model.objectData(handle), 1), 0.0f) << "the record ends where it ends";

    model.setLocalTransform(transform, scaling(2, 2, 2), false);
    model.updateTransforms();
    EXPECT_EQ(record(handle, kModelMatrix, 1), scaling(2, 2, 2));
    EXPECT_EQ(record(handle, kPreviousModelMatrix, 1), translation(1, 0, 0));
    EXPECT_EQ(record(handle, kInverseModelMatrix, 1), scaling(0.5f, 0.5f, 0.5f));
}

TEST_F(GPUModelUpdateTest, PreviousMatricesBecomeThePresentOnesOfWhatHasMoved)
{
    const int moved = model.addTransform(-1, translation(1, 0, 0));
    const int other = model.addTransform(-1, translation(2, 0, 0));
    const int handle = follow(moved);
    const int still = follow(other);
    model.updateTransforms();
    EXPECT_EQ(Access::pending(model), Refs({{handle, 0}, {still, 0}}));
    model.updatePreviousMatrices();
    EXPECT_EQ(Access::pending(model), Refs());
    EXPECT_EQ(record(handle, kPreviousModelMatrix), translation(1, 0, 0));
    EXPECT_EQ(record(still, kPreviousModelMatrix), translation(2, 0, 0));
    EXPECT_EQ(record(handle, kModelMatrix), translation(1, 0, 0));

    model.setLocalTransform(moved, translation(3, 0, 0), false);
    model.updateTransforms();
    EXPECT_EQ(record(handle, kPreviousModelMatrix), translation(1, 0, 0));
    model.setLocalTransform(moved, translation(4, 0, 0), false);
    model.updateTransforms();
    EXPECT_EQ(Access::pending(model), Refs({{handle, 0}, {handle, 0}})) << "one for each time";
    model.objectData(still)->set(0, kModelMatrix, identity.constData(), 64);
    model.updatePreviousMatrices();
    EXPECT_EQ(record(handle, kPreviousModelMatrix), translation(4, 0, 0));
    EXPECT_EQ(record(still, kPreviousModelMatrix), translation(2, 0, 0)) << "it has not moved";
}

TEST_F(GPUModelUpdateTest, PreviousMatricesGoByPositionAfterSorting)
{
    const int transform = model.addTransform(-1, translation(1, 0, 0));
    add(1, 2);
    add(1, 1);
    model.useTransform(0, 0, transform);
    model.updateTransforms();
    model.sortDrawablesByFlags();
    model.objectData(1)->set(0, kModelMatrix, scaling(3, 3, 3).constData(), 64);
    model.updatePreviousMatrices();
    EXPECT_EQ(record(1, kPreviousModelMatrix), scaling(3, 3, 3)) << "what stands at position 0 now";
    EXPECT_NE(record(0, kPreviousModelMatrix), translation(1, 0, 0));
}

TEST_F(GPUModelUpdateTest, DrawablesWithoutObjectRecordsArePassedOverButPending)
{
    const int transform = model.addTransform(-1, translation(1, 0, 0));
    model.add(newDrawList(1), 0, newRecords(1), nullptr, 0);
    model.useTransform(0, 0, transform);
    const int handle = follow(transform);
    LogCapture log;
    EXPECT_TRUE(model.updateTransforms());
    EXPECT_EQ(record(handle, kModelMatrix), translation(1, 0, 0));
    EXPECT_EQ(Access::pending(model), Refs({{0, 0}, {handle, 0}}));
    model.updatePreviousMatrices();
    EXPECT_EQ(record(handle, kPreviousModelMatrix), translation(1, 0, 0));
    EXPECT_EQ(log.messages(), QStringList());
}

TEST_F(GPUModelUpdateTest, PendingMatricesOfDrawablesThatAreGoneAreReportedAndForgotten)
{
    const int transform = model.addTransform(-1, identity);
    follow(transform);
    follow(transform);
    model.updateTransforms();
    model.clear();
    const int handle = add(1);
    model.objectData(handle)->set(0, kModelMatrix, scaling(3, 3, 3).constData(), 64);
    LogCapture log;
    model.updatePreviousMatrices();
    EXPECT_EQ(log.messages(), QStringList({assertion("0 == gone", QStringLiteral("1 matrices belonged to drawables "
                                                                                 "that are gone"))}));
    EXPECT_EQ(record(handle, kPreviousModelMatrix), scaling(3, 3, 3)) << "it stands at the position of one of them";
    log.clear();
    model.updatePreviousMatrices();
    EXPECT_EQ(log.messages(), QStringList());
}

TEST_F(GPUModelUpdateTest, APlanWithoutNormalMatricesGetsTheOthers)
{
    InstanceDataPlan* const three = newObjectPlan(
        QStringLiteral("Three"), {kModelMatrix, kPreviousModelMatrix, kInverseModelMatrix}, QStringLiteral("alpha"));
    auto* const records = new InstanceDataCollection(three, 1);
    const float alpha = 5.0f;
    records->set(0, QStringLiteral("alpha"), &alpha, sizeof alpha);
    model.addTransform(-1, scaling(4, 4, 4));
    model.add(newDrawList(1), 0, nullptr, records, 0);
    model.useTransform(0, 0, 0);
    model.updateTransforms();
    EXPECT_EQ(matrix(records, 0, kModelMatrix), scaling(4, 4, 4));
    EXPECT_EQ(matrix(records, 0, kInverseModelMatrix), scaling(0.25f, 0.25f, 0.25f));
    EXPECT_EQ(number(records, 0), 5.0f);
}

TEST_F(GPUModelUpdateTest, AMemberThatThePlanLacksIsAtTheStartOfTheRecord)
{
    // The last one written there stays: the inverse.
    InstanceDataPlan* const lacking = newObjectPlan(QStringLiteral("Lacking"), {QStringLiteral("other")});
    auto* const records = new InstanceDataCollection(lacking, 1);
    model.addTransform(-1, translation(1, 0, 0));
    model.add(newDrawList(1), 0, nullptr, records, 0);
    model.useTransform(0, 0, 0);
    model.updateTransforms();
    EXPECT_EQ(matrix(records, 0, QStringLiteral("other")), translation(-1, 0, 0));
}

/// For plans that have the four members or lack some, in several orders, and for records that are too short for them:
/// the same bytes, and the same reports, as of the collection's operations one after the other.
TEST_F(GPUModelUpdateTest, RecordsOfAllPlansAreWrittenAsByTheCollectionsOwnOperations)
{
    const QStringList all = {kModelMatrix, kPreviousModelMatrix, kInverseModelMatrix, kModelNormalMatrix};
    QList<InstanceDataPlan*> plans;
    for (int present = 0; present < 16; ++present)
        for (const bool reversed : {false, true})
        {
            QStringList members = {QStringLiteral("other")};
            for (int i = 0; i < 4; ++i)
                if (present & (1 << i))
                    reversed ? members.prepend(all[i]) : members.append(all[i]);
            plans.append(newObjectPlan(QStringLiteral("Plan%1").arg(plans.size()), members));
        }
    for (const QString& member : all) // of four bytes: what is written goes beyond it
        plans.append(newObjectPlan(QStringLiteral("Short") + member, {}, member));
    plans.append(nullptr);

    const auto fill = [](InstanceDataPlan* each)
    {
        QByteArray bytes(each ? qsizetype(3 * each->totalDataSize() + 20) : 0, Qt::Uninitialized);
        for (qsizetype i = 0; i < bytes.size(); ++i)
            bytes[i] = char(i * 7);
        return bytes;
    };
    QList<InstanceDataCollection*> expected;
    QStringList messages;
    LogCapture log;
    for (InstanceDataPlan* const each : std::as_const(plans))
    {
        const QByteArray bytes = fill(each);
        const auto make = [&] { return new InstanceDataCollection(each, bytes.constData(), size_t(bytes.size())); };
        expected.append(make());
        model.add(newDrawList(5), 0, nullptr, make(), 0);
    }
    model.addTransform(-1, translation(1, 2, 3) * scaling(2, 3, 4));
    model.addTransform(0, quarterTurn());
    for (const int instance : {1, 0, 2, 3, 4}) // 3 begins within the bytes and ends beyond them
        for (int handle = 0; handle < plans.size(); ++handle)
            model.useTransform(handle, instance, handle % 2);
    for (int turn = 0; turn < 2; ++turn)
    {
        log.clear();
        model.setLocalTransform(0, translation(float(turn), 5, 6) * scaling(2, 3, 4), false);
        model.updateTransforms();
        const QStringList ofUpdate = log.messages();
        model.updatePreviousMatrices();
        const QStringList ofPrevious = log.messages().mid(ofUpdate.size());

        log.clear();
        for (const int transform : {0, 1})
            for (const int instance : {1, 0, 2, 3, 4})
                for (int handle = transform; handle < plans.size(); handle += 2)
                    writeExpected(*expected[handle], instance, model.worldTransform(transform));
        EXPECT_EQ(ofUpdate, log.messages());
        log.clear();
        for (const int transform : {0, 1})
            for (const int instance : {1, 0, 2, 3, 4})
                for (int handle = transform; handle < plans.size(); handle += 2)
                    expected[handle]->copyInstanceMember(instance, kModelMatrix, kPreviousModelMatrix);
        EXPECT_EQ(ofPrevious, log.messages());
        for (int handle = 0; handle < plans.size(); ++handle)
            EXPECT_EQ(std::as_const(model).objectData(handle)->dataArray(), expected[handle]->dataArray()) << handle;
    }
    EXPECT_FALSE(log.messages().isEmpty()) << "records that are too short are a part of this";
    qDeleteAll(expected);
}

} // namespace
} // namespace Harrow::Vrk::Test
