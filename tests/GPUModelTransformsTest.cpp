// SPDX-License-Identifier: MIT
//
// The hierarchy of transforms as it is set and asked, without updates: those are in GPUModelUpdateTest.cpp.
#include "GPUModelTestTools.h"

#include <gtest/gtest.h>

#include <climits>
#include <limits>

namespace Harrow::Vrk::Test
{
namespace
{

class GPUModelTransformsTest : public GPUModelFixture
{
protected:
    /// Each below the one before it.
    void addChain(int count)
    {
        for (int i = 0; i < count; ++i)
            model.addTransform(i - 1, identity);
    }

    bool isDirty(int index) const
    {
        return Access::dirty(model).at(index);
    }

    bool keepsPositionOnly(int index) const
    {
        return Access::keepParentPositionOnly(model).at(index);
    }
};

// -- adding --

TEST_F(GPUModelTransformsTest, AddTransformAppendsToAllLists)
{
    EXPECT_EQ(Access::transformCount(model), 0);
    EXPECT_EQ(model.addTransform(-1, translation(1, 2, 3)), 0);
    EXPECT_EQ(model.addTransform(0, translation(4, 5, 6)), 1);
    EXPECT_EQ(Access::transformCount(model), 2);
    EXPECT_EQ(model.localTransform(1), translation(4, 5, 6));
    EXPECT_FALSE(keepsPositionOnly(1));
    EXPECT_EQ(model.worldTransform(1), identity) << "not computed yet";
    EXPECT_EQ(model.normalTransform(1), Normal());
    EXPECT_EQ(model.transformParent(0), -1);
    EXPECT_EQ(model.transformParent(1), 0);
    EXPECT_FALSE(Access::negative(model).at(1));
    EXPECT_TRUE(isDirty(1));
    EXPECT_EQ(Access::visibility(model).at(1), 1);
    EXPECT_EQ(Access::users(model).at(1), Refs());
    EXPECT_TRUE(Access::isAnyDirty(model));
}

TEST_F(GPUModelTransformsTest, ATransformIsValidFromZeroUpToTheirNumber)
{
    EXPECT_FALSE(model.isValidTransform(0));
    addChain(2);
    EXPECT_TRUE(model.isValidTransform(0));
    EXPECT_TRUE(model.isValidTransform(1));
    for (const int index : {-1, 2, INT_MAX, INT_MIN})
        EXPECT_FALSE(model.isValidTransform(index));
}

// -- setters --

TEST_F(GPUModelTransformsTest, AnotherLocalMatrixIsStoredAndMarked)
{
    addChain(2);
    model.updateTransforms();
    model.setLocalTransform(1, translation(1, 0, 0), true);
    EXPECT_EQ(model.localTransform(1), translation(1, 0, 0));
    EXPECT_TRUE(isDirty(1));
    EXPECT_FALSE(isDirty(0));
    EXPECT_TRUE(keepsPositionOnly(1));
    EXPECT_TRUE(Access::isAnyDirty(model));
    EXPECT_EQ(model.worldTransform(1), identity) << "only by an update";
    model.setLocalTransform(1, translation(2, 0, 0), false);
    EXPECT_FALSE(keepsPositionOnly(1));
}

TEST_F(GPUModelTransformsTest, AnEqualLocalMatrixLeavesTheTransformCleanAndItsFlagAsItWas)
{
    model.addTransform(-1, translation(1, 2, 3));
    model.updateTransforms();
    model.setLocalTransform(0, translation(1, 2, 3), true);
    EXPECT_FALSE(keepsPositionOnly(0));
    EXPECT_FALSE(isDirty(0));
    EXPECT_FALSE(Access::isAnyDirty(model));
    QMatrix4x4 negativeZero = translation(1, 2, 3);
    negativeZero(0, 1) = -0.0f; // equal as a number
    model.setLocalTransform(0, negativeZero, true);
    EXPECT_FALSE(Access::isAnyDirty(model));
    model.setLocalTransform(0, translation(1, 2, 4), true);
    model.updateTransforms();
    model.setLocalTransform(0, model.localTransform(0), false);
    EXPECT_TRUE(keepsPositionOnly(0));
}

TEST_F(GPUModelTransformsTest, ALocalMatrixThatIsNoNumberIsAlwaysAnother)
{
    model.addTransform(-1, identity);
    const QMatrix4x4 none = translation(std::numeric_limits<float>::quiet_NaN(), 0, 0);
    model.setLocalTransform(0, none, false);
    model.updateTransforms();
    model.setLocalTransform(0, none, true);
    EXPECT_TRUE(isDirty(0));
    EXPECT_TRUE(keepsPositionOnly(0));
}

TEST_F(GPUModelTransformsTest, TheWorldMatrixOfARootIsItsLocalOne)
{
    model.addTransform(-1, identity);
    model.setWorldTransform(0, translation(1, 2, 3));
    EXPECT_EQ(model.localTransform(0), translation(1, 2, 3));
    EXPECT_TRUE(isDirty(0));
    EXPECT_EQ(model.worldTransform(0), identity) << "only by an update";
}

TEST_F(GPUModelTransformsTest, AWorldMatrixIsTakenToTheParentAsThatWasLastUpdated)
{
    model.addTransform(-1, scaling(2, 2, 2));
    model.addTransform(0, identity);
    model.updateTransforms();
    model.setLocalTransform(0, translation(100, 0, 0), false); // not updated yet
    model.setWorldTransform(1, translation(8, 0, 0));
    QMatrix4x4 expected;
    expected.scale(0.5f);
    expected.translate(8, 0, 0);
    EXPECT_EQ(model.localTransform(1), expected);
    model.updateTransforms();
    EXPECT_EQ(model.worldTransform(1), translation(100, 0, 0) * expected);
}

TEST_F(GPUModelTransformsTest, AWorldMatrixBelowAParentWithoutAnInverseIsTheLocalOne)
{
    model.addTransform(-1, scaling(0, 1, 1));
    model.addTransform(0, identity);
    model.updateTransforms();
    model.setWorldTransform(1, translation(8, 0, 0));
    EXPECT_EQ(model.localTransform(1), translation(8, 0, 0));
}

TEST_F(GPUModelTransformsTest, AWorldMatrixEndsKeepingThePositionOnlyIfItChangesTheLocalOne)
{
    model.addTransform(-1, identity);
    model.setLocalTransform(0, translation(1, 0, 0), true);
    model.setWorldTransform(0, translation(1, 0, 0));
    EXPECT_TRUE(keepsPositionOnly(0));
    model.setWorldTransform(0, translation(2, 0, 0));
    EXPECT_FALSE(keepsPositionOnly(0));
}

TEST_F(GPUModelTransformsTest, ParentAndVisibilityMarkNothing)
{
    addChain(3);
    model.updateTransforms();
    model.setTransformParent(2, 0);
    model.setVisibility(2, 3);
    EXPECT_EQ(model.transformParent(2), 0);
    EXPECT_EQ(Access::visibility(model).at(2), 3);
    EXPECT_FALSE(Access::isAnyDirty(model));
    EXPECT_FALSE(isDirty(2));
    EXPECT_FALSE(model.updateTransforms());
}

// -- names --

TEST_F(GPUModelTransformsTest, TransformsAreFoundByName)
{
    addChain(3);
    EXPECT_EQ(model.findTransform(QStringLiteral("arm")), -1);
    EXPECT_EQ(model.transformNames(), QStringList());
    model.setTransformName(0, QStringLiteral("arm"));
    model.setTransformName(2, QStringLiteral("hand"));
    EXPECT_EQ(model.findTransform(QStringLiteral("arm")), 0);
    EXPECT_EQ(model.findTransform(QStringLiteral("hand")), 2);
    EXPECT_EQ(model.findTransform(QStringLiteral("Arm")), -1);
    model.setTransformName(1, QStringLiteral("arm"));
    EXPECT_EQ(model.findTransform(QStringLiteral("arm")), 1) << "the last one of a name";
    QStringList names = model.transformNames();
    names.sort();
    EXPECT_EQ(names, QStringList({QStringLiteral("arm"), QStringLiteral("hand")}));
}

// -- queries that look upwards --

TEST_F(GPUModelTransformsTest, ATransformIsDirtyIfItOrOneAboveItIs)
{
    addChain(3);
    const int other = model.addTransform(0, identity);
    model.updateTransforms();
    for (int index = 0; index < 4; ++index)
        EXPECT_FALSE(model.isTransformDirty(index));
    model.setLocalTransform(1, translation(1, 0, 0), false);
    EXPECT_FALSE(model.isTransformDirty(0));
    EXPECT_TRUE(model.isTransformDirty(1));
    EXPECT_TRUE(model.isTransformDirty(2));
    EXPECT_FALSE(isDirty(2)) << "its own mark";
    EXPECT_FALSE(model.isTransformDirty(other));
    EXPECT_FALSE(model.isTransformDirty(-1)) << "above a root";
}

TEST_F(GPUModelTransformsTest, ATransformIsItsOwnDescendant)
{
    addChain(3);
    const int other = model.addTransform(0, identity);
    EXPECT_TRUE(model.isDescendant(1, 1));
    EXPECT_TRUE(model.isDescendant(0, 2));
    EXPECT_TRUE(model.isDescendant(0, other));
    EXPECT_FALSE(model.isDescendant(1, other));
    EXPECT_FALSE(model.isDescendant(2, 0));
}

TEST_F(GPUModelTransformsTest, NoTransformHasNoAncestor)
{
    addChain(2);
    LogCapture log;
    for (const int ancestor : {-1, 0, 1})
        EXPECT_FALSE(model.isDescendant(ancestor, -1));
    EXPECT_FALSE(model.isDescendant(-1, 1));
    EXPECT_EQ(log.messages(), QStringList());
}

TEST_F(GPUModelTransformsTest, State2HidesATransformButNotWhatIsBelow)
{
    addChain(3);
    model.setVisibility(0, 2);
    EXPECT_FALSE(model.isVisible(0));
    EXPECT_TRUE(model.isVisible(1));
    EXPECT_TRUE(model.isVisible(2));
    EXPECT_FALSE(model.isParentHidden(0));
}

TEST_F(GPUModelTransformsTest, State3HidesAllBelow)
{
    addChain(5);
    model.setVisibility(1, 3);
    EXPECT_TRUE(model.isVisible(0));
    EXPECT_FALSE(model.isVisible(1));
    EXPECT_FALSE(model.isVisible(2)) << "by its parent";
    EXPECT_FALSE(model.isVisible(3)) << "by its grandparent";
    EXPECT_FALSE(model.isVisible(4));
    EXPECT_FALSE(model.isParentHidden(0));
    EXPECT_TRUE(model.isParentHidden(1)) << "the walk begins at the transform itself";
    EXPECT_TRUE(model.isParentHidden(4));
    EXPECT_FALSE(model.isParentHidden(-1));
    model.setVisibility(1, 3);
    model.setVisibility(1, 1);
    EXPECT_TRUE(model.isVisible(4));
    model.setVisibility(3, 3);
    model.setVisibility(3, 2);
    EXPECT_TRUE(model.isVisible(4));
}

TEST_F(GPUModelTransformsTest, OtherStatesCountAsVisible)
{
    addChain(2);
    for (const int state : {0, 1, 4, -1, -3, 100, INT_MAX})
    {
        model.setVisibility(0, state);
        EXPECT_TRUE(model.isVisible(0)) << state;
        EXPECT_TRUE(model.isVisible(1)) << state;
        EXPECT_FALSE(model.isParentHidden(1)) << state;
    }
}

TEST_F(GPUModelTransformsTest, AllStatesOfAChainOfFourAgreeWithTheRule)
{
    addChain(4);
    for (int combination = 0; combination < 81; ++combination)
    {
        const int states[] = {1 + combination % 3, 1 + combination / 3 % 3, 1 + combination / 9 % 3,
                              1 + combination / 27};
        for (int index = 0; index < 4; ++index)
            model.setVisibility(index, states[index]);
        for (int index = 0; index < 4; ++index)
        {
            bool isVisible = states[index] == 1;
            for (int above = 0; above < index; ++above)
                isVisible = isVisible && states[above] != 3;
            EXPECT_EQ(model.isVisible(index), isVisible) << "combination " << combination << " index " << index;
        }
    }
}

TEST_F(GPUModelTransformsTest, WhatHidesIsCountedInCopiesToo)
{
    addChain(2);
    model.setVisibility(0, 3);
    GPUModel copy = model;
    copy.setVisibility(0, 1);
    EXPECT_TRUE(copy.isVisible(1));
    EXPECT_FALSE(model.isVisible(1));
}

// -- following --

TEST_F(GPUModelTransformsTest, ACommandFollowsATransform)
{
    addChain(2);
    add(1);
    const int handle = add(3);
    model.useTransform(handle, 2, 1);
    EXPECT_EQ(Pass::drawableAt(model, handle).transformRefs, QList<int>({-1, -1, 1}));
    EXPECT_EQ(Access::users(model), QList<Refs>({{}, {{handle, 2}}}));
}

TEST_F(GPUModelTransformsTest, ACommandThatFollowedAnotherTransformIsStillKeptThere)
{
    addChain(2);
    const int handle = add(1);
    model.useTransform(handle, 0, 0);
    model.useTransform(handle, 0, 1);
    EXPECT_EQ(Pass::drawableAt(model, handle).transformRefs, QList<int>({1}));
    EXPECT_EQ(Access::users(model), QList<Refs>({{{handle, 0}}, {{handle, 0}}}));
    model.updateTransforms();
    EXPECT_EQ(Access::pending(model), Refs({{handle, 0}, {handle, 0}}));
}

// -- indices that there are not --

TEST_F(GPUModelTransformsTest, ABadIndexIsReportedAndNothingIsReadOrWritten)
{
    addChain(2);
    model.updateTransforms();
    for (const int index : {2, -1, INT_MAX, INT_MIN})
    {
        LogCapture log;
        model.setLocalTransform(index, translation(1, 0, 0), true);
        model.setWorldTransform(index, translation(1, 0, 0));
        model.setTransformParent(index, 0);
        model.setVisibility(index, 3);
        EXPECT_EQ(model.transformParent(index), -1);
        EXPECT_FALSE(model.isVisible(index));
        EXPECT_EQ(model.localTransform(index), identity);
        EXPECT_EQ(model.worldTransform(index), identity);
        EXPECT_EQ(model.normalTransform(index), Normal());
        EXPECT_EQ(log.messages(), QStringList(9, noTransform(index)));
        log.clear();
        EXPECT_FALSE(model.isParentHidden(index));
        EXPECT_FALSE(model.isTransformDirty(index));
        EXPECT_FALSE(model.isDescendant(0, index));
        EXPECT_EQ(log.messages(), QStringList(index < 0 ? 0 : 3, noTransform(index))) << "none is above a root";
    }
    EXPECT_EQ(Access::transformCount(model), 2);
    EXPECT_FALSE(Access::isAnyDirty(model));
    EXPECT_TRUE(model.isVisible(1));
}

TEST_F(GPUModelTransformsTest, AParentThatThereIsNotIsReportedWhereItIsAsked)
{
    model.addTransform(5, identity);
    model.addTransform(-1, identity);
    LogCapture log;
    model.updateTransforms();
    EXPECT_EQ(log.messages(), QStringList({noTransform(5, "_model.isValidTransform(parent)")}));
    log.clear();
    model.setVisibility(1, 3); // else nobody looks upwards
    EXPECT_EQ(model.transformParent(0), 5);
    EXPECT_EQ(log.messages(), QStringList());
    EXPECT_TRUE(model.isVisible(0));
    EXPECT_FALSE(model.isParentHidden(0));
    EXPECT_FALSE(model.isTransformDirty(0));
    EXPECT_FALSE(model.isDescendant(1, 0));
    EXPECT_EQ(log.messages(), QStringList(4, noTransform(5)));
    log.clear();
    model.setWorldTransform(0, translation(1, 0, 0));
    EXPECT_EQ(log.messages(), QStringList({noTransform(5, "this->isValidTransform(parent)")}));
    EXPECT_EQ(model.localTransform(0), identity);
    EXPECT_FALSE(Access::isAnyDirty(model));
}

TEST_F(GPUModelTransformsTest, AnyNegativeParentIsNone)
{
    model.addTransform(-7, translation(1, 2, 3));
    LogCapture log;
    EXPECT_TRUE(model.updateTransforms());
    EXPECT_EQ(model.worldTransform(0), translation(1, 2, 3));
    EXPECT_TRUE(model.isVisible(0));
    model.setWorldTransform(0, translation(4, 5, 6));
    EXPECT_EQ(model.localTransform(0), translation(4, 5, 6));
    EXPECT_EQ(log.messages(), QStringList());
}

TEST_F(GPUModelTransformsTest, FollowingABadTransformOrByABadCommandIsReportedAndKeptNowhere)
{
    addChain(1);
    const int handle = add(2);
    const int simple = model.addSimple(newDrawList(2), 0, nullptr, nullptr, 0);
    LogCapture log;
    for (const int transform : {1, -1})
        model.useTransform(handle, 0, transform);
    for (const int command : {2, -1})
        model.useTransform(handle, command, 0);
    model.useTransform(simple, 0, 0);
    const auto noCommand = [](int command, int of)
    {
        return assertion("command >= 0 && command < drawable->transformRefs.size()",
                         QStringLiteral("There is no command %1 in drawable %2").arg(command).arg(of));
    };
    EXPECT_EQ(log.messages(), QStringList({noTransform(1, "this->isValidTransform(transform)"),
                                           noTransform(-1, "this->isValidTransform(transform)"), noCommand(2, handle),
                                           noCommand(-1, handle), noCommand(0, simple)}));
    EXPECT_EQ(Access::users(model), QList<Refs>({{}}));
    EXPECT_EQ(Pass::drawableAt(model, handle).transformRefs, QList<int>({-1, -1}));
}

TEST_F(GPUModelTransformsTest, ParentsInACircleEndTheQueriesWithAReport)
{
    model.addTransform(1, identity);
    model.addTransform(2, identity);
    model.addTransform(0, identity);
    model.addTransform(2, identity); // below the circle
    const int own = model.addTransform(4, identity);
    ASSERT_EQ(own, 4);
    {
        LogCapture log;
        model.updateTransforms();
    }
    model.setVisibility(model.addTransform(-1, identity), 3);
    LogCapture log;
    for (const int index : {0, 1, 2, 3, own})
    {
        log.clear();
        EXPECT_FALSE(model.isTransformDirty(index));
        EXPECT_FALSE(model.isParentHidden(index));
        EXPECT_FALSE(model.isDescendant(5, index));
        EXPECT_TRUE(model.isVisible(index));
        ASSERT_EQ(log.messages().size(), 4);
        for (const QString& message : log.messages())
            EXPECT_TRUE(
                message.startsWith(QStringLiteral("[ !! ] Assertion 'index != remembered' failed: Transform ")) &&
                message.endsWith(QStringLiteral(" is above itself")));
    }
    // What is found before the circle closes is found all the same.
    log.clear();
    model.setVisibility(1, 3);
    EXPECT_TRUE(model.isDescendant(0, 3));
    EXPECT_TRUE(model.isParentHidden(3));
    EXPECT_FALSE(model.isVisible(0));
    EXPECT_EQ(log.messages(), QStringList());
}

} // namespace
} // namespace Harrow::Vrk::Test
