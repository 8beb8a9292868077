// SPDX-License-Identifier: MIT
//
// One pass as a list of calls: faces, mirrored commands, stencil, primitive restart, and what takes part. What is bound
// is in GPUModelDrawingBindingsTest.cpp.
#include "GPUModelDrawingTestTools.h"

#include <limits>

namespace Harrow::Vrk::Test
{
namespace
{

using Calls = QStringList;

class GPUModelDrawingTest : public GPUModelDrawing
{
protected:
    static void setStencilTest(FakeDriver& driver, bool isOn)
    {
        static bool answer;
        answer = isOn;
        driver.replace(
            "glIsEnabled", +[](GLenum what) { return GLboolean(what == GL_STENCIL_TEST && answer); });
        ASSERT_EQ(driver.load(), 1);
    }

    /// Of a model with one drawable of one list of its own.
    Calls whole(const Calls& before, const QList<int>& commands)
    {
        return before + programBound() + binding(0) + drawing(0, commands);
    }
    static Calls end()
    {
        return programUnbound() + unbinding() + cullNone();
    }
};

// -- faces --

TEST_F(GPUModelDrawingTest, AnUnchangedWindingMakesNoCallButFaceCullingIsOffAtTheEnd)
{
    add(2);
    EXPECT_EQ(pass(GPUModel::WindingUnchanged), whole({}, {0, 1}) + end());
    EXPECT_TRUE(lastResult);
}

TEST_F(GPUModelDrawingTest, EachWindingMakesItsCalls)
{
    add(1);
    EXPECT_EQ(pass(GPUModel::WindingNone), whole(cullNone(), {0}) + end());
    EXPECT_EQ(pass(GPUModel::WindingCCW), whole(cullBehind(GL_CCW), {0}) + end());
}

TEST_F(GPUModelDrawingTest, AClockwisePassDrawsMirroredCommandsFirst)
{
    const int handle = add(1);
    model.useTransform(handle, 0, mirrored);
    EXPECT_EQ(pass(GPUModel::WindingCW), whole(cullBehind(GL_CW), {0}) + end());
}

TEST_F(GPUModelDrawingTest, AWindingIsSetOnceForDrawablesInARow)
{
    for (int i = 0; i < 3; ++i)
        add(1);
    const Calls calls = pass(GPUModel::WindingCCW);
    EXPECT_EQ(calls.count(call("glEnable", GL_CULL_FACE)), 1);
    EXPECT_EQ(calls.count(call("glFrontFace", GL_CCW)), 1);
    EXPECT_EQ(calls.count(call("glDisable", GL_CULL_FACE)), 1);
}

TEST_F(GPUModelDrawingTest, ATwoSidedDrawableIsDrawnWithCullingOffAndIsNotSplit)
{
    add(1);
    const int twoSided = add(3, kTwoSidedFlag);
    model.useTransform(twoSided, 1, mirrored);
    add(1);
    EXPECT_EQ(pass(GPUModel::WindingCCW), whole(cullBehind(GL_CCW), {0}) + cullNone() + binding(1) +
                                              drawing(1, {0, 1, 2}) + cullBehind(GL_CCW) + binding(2) +
                                              drawing(2, {0}) + end());
}

TEST_F(GPUModelDrawingTest, ATwoSidedDrawableTurnsCullingOffInAnUnchangedPass)
{
    add(1, kTwoSidedFlag);
    add(1);
    EXPECT_EQ(pass(GPUModel::WindingUnchanged),
              whole(cullNone(), {0}) + binding(1) + drawing(1, {0}) + end()); // 0 after it makes no call
    EXPECT_EQ(pass(GPUModel::WindingNone), whole(cullNone(), {0}) + binding(1) + drawing(1, {0}) + end());
}

TEST_F(GPUModelDrawingTest, ACulledDrawableIsSkippedAndTheLastWindingStays)
{
    add(1);
    add(2, kTwoSidedFlag | kHiddenFlag);
    add(1);
    model.visibilityCull();
    EXPECT_EQ(pass(GPUModel::WindingCCW), whole(cullBehind(GL_CCW), {0}) + binding(2) + drawing(2, {0}) + end());
}

TEST_F(GPUModelDrawingTest, AnEmptyModelOnlyTurnsFaceCullingOff)
{
    model.clear();
    EXPECT_EQ(pass(GPUModel::WindingCCW), cullNone());
    EXPECT_TRUE(lastResult);
}

// -- mirrored commands --

TEST_F(GPUModelDrawingTest, MirroredCommandsAreDrawnAfterTheOthersWithTheFrontTurnedAround)
{
    const int handle = add(5);
    model.useTransform(handle, 0, mirrored);
    model.useTransform(handle, 3, mirrored);
    EXPECT_EQ(pass(GPUModel::WindingCCW),
              whole(cullBehind(GL_CCW), {1, 2, 4}) + frontIs(GL_CW) + drawing(0, {0, 3}) + frontIs(GL_CCW) + end());
}

TEST_F(GPUModelDrawingTest, InAClockwisePassTheRolesSwap)
{
    const int handle = add(5);
    model.useTransform(handle, 0, mirrored);
    model.useTransform(handle, 3, mirrored);
    EXPECT_EQ(pass(GPUModel::WindingCW),
              whole(cullBehind(GL_CW), {0, 3}) + frontIs(GL_CCW) + drawing(0, {1, 2, 4}) + frontIs(GL_CW) + end());
}

TEST_F(GPUModelDrawingTest, WithoutFaceCullingMirroredCommandsStayInTheirPlace)
{
    const int handle = add(3);
    model.useTransform(handle, 1, mirrored);
    EXPECT_EQ(pass(GPUModel::WindingUnchanged), whole({}, {0, 1, 2}) + end());
    EXPECT_EQ(pass(GPUModel::WindingNone), whole(cullNone(), {0, 1, 2}) + end());
}

TEST_F(GPUModelDrawingTest, ADrawableOfMirroredCommandsAloneIsDrawnTurnedAround)
{
    const int handle = add(2);
    for (const int command : {0, 1})
        model.useTransform(handle, command, mirrored);
    // The first list is empty: nothing is bound for it.
    EXPECT_EQ(pass(GPUModel::WindingCCW), cullBehind(GL_CCW) + frontIs(GL_CW) + programBound() + binding(0) +
                                              drawing(0, {0, 1}) + frontIs(GL_CCW) + end());
}

TEST_F(GPUModelDrawingTest, AfterAFailureMirroredCommandsAreNotDrawn)
{
    const int handle = add(2);
    model.useTransform(handle, 1, mirrored);
    lists[0]->setPrimitiveType(GLenum(-1));
    const LogCapture log;
    EXPECT_EQ(pass(GPUModel::WindingCCW), whole(cullBehind(GL_CCW), {}) + end());
    EXPECT_FALSE(lastResult);
    EXPECT_EQ(log.messages().size(), 1);
}

TEST_F(GPUModelDrawingTest, TheResultOfMirroredCommandsIsNotUsed)
{
    const int handle = add(2);
    model.useTransform(handle, 1, mirrored);
    // The draw of the first command takes the primitive type away.
    static DrawBuffers* list;
    list = lists[0].get();
    driver.replace(
        "glDrawElementsBaseVertex",
        +[](GLenum, GLsizei, GLenum, const void*, GLint) { list->setPrimitiveType(GLenum(-1)); });
    ASSERT_EQ(driver.load(), 1);
    const LogCapture log;
    EXPECT_EQ(pass(GPUModel::WindingCCW), whole(cullBehind(GL_CCW), {0}) + frontIs(GL_CW) + frontIs(GL_CCW) + end());
    EXPECT_TRUE(lastResult);
    EXPECT_EQ(log.messages().size(), 1);
}

// -- commands --

TEST_F(GPUModelDrawingTest, CulledAndHiddenCommandsAreLeftOut)
{
    const int handle = add(6);
    const int hidden = model.addTransform(-1, QMatrix4x4());
    const int tree = model.addTransform(-1, QMatrix4x4());
    const int below = model.addTransform(tree, QMatrix4x4());
    const int lowest = model.addTransform(below, QMatrix4x4());
    model.useTransform(handle, 1, hidden);
    model.useTransform(handle, 2, tree);
    model.useTransform(handle, 3, below);
    model.useTransform(handle, 4, lowest);
    model.updateTransforms();
    EXPECT_EQ(pass(GPUModel::WindingUnchanged), whole({}, {0, 1, 2, 3, 4, 5}) + end());
    model.setVisibility(hidden, 2);
    EXPECT_EQ(pass(GPUModel::WindingUnchanged), whole({}, {0, 2, 3, 4, 5}) + end());
    model.setVisibility(tree, 3); // without any culling
    EXPECT_EQ(pass(GPUModel::WindingUnchanged), whole({}, {0, 5}) + end());
    model.setVisibility(tree, 2);
    EXPECT_EQ(pass(GPUModel::WindingUnchanged), whole({}, {0, 3, 4, 5}) + end());
    Access::writableDrawableAt(model, 0).culled[5] = true;
    Access::writableDrawableAt(model, 0).culledCount = 1;
    EXPECT_EQ(pass(GPUModel::WindingUnchanged), whole({}, {0, 3, 4}) + end());
}

TEST_F(GPUModelDrawingTest, ACommandWithoutATransformIsReportedAndLeftOut)
{
    model.add(newList(3), 0, nullptr, nullptr, 0);
    model.useTransform(0, 1, shown);
    const LogCapture log;
    EXPECT_EQ(pass(GPUModel::WindingUnchanged), whole({}, {1}) + end());
    const auto line = [](int command)
    {
        return assertionLine(QStringLiteral("this->isValidTransform(transform)"),
                             QStringLiteral("Command %1 of drawable 0 has no transform").arg(command));
    };
    EXPECT_EQ(log.messages(), Calls({line(0), line(2)}));
    EXPECT_TRUE(lastResult);
    model.visibilityCull(); // as a frame does it: then there is nothing to report
    pass(GPUModel::WindingUnchanged);
    EXPECT_EQ(log.messages().size(), 2);
}

TEST_F(GPUModelDrawingTest, ADrawListWithoutCommandsIsPassedOver)
{
    add(0);
    lists[0]->setVertexCount(3);
    EXPECT_EQ(pass(GPUModel::WindingCCW), cullNone());
    EXPECT_TRUE(lastResult);
}

TEST_F(GPUModelDrawingTest, ASimpleDrawableIsNotDrawnByAPass)
{
    model.addSimple(newList(2), 0, nullptr, nullptr, 0);
    model.addSimple(nullptr, 0, nullptr, nullptr, 0);
    EXPECT_EQ(pass(GPUModel::WindingUnchanged), cullNone());
    EXPECT_TRUE(lastResult);
}

// -- stencil --

TEST_F(GPUModelDrawingTest, AStencilTestThatWasOffIsOffAgain)
{
    add(1);
    EXPECT_EQ(pass(GPUModel::WindingUnchanged, true), whole(stencilSetUp() + stencilWrites(1), {0}) + programUnbound() +
                                                          stencilOff() + unbinding() + cullNone());
}

TEST_F(GPUModelDrawingTest, AStencilTestThatWasOnStaysOn)
{
    setStencilTest(driver, true);
    add(1);
    EXPECT_EQ(pass(GPUModel::WindingUnchanged, true), whole(stencilSetUp() + stencilWrites(1), {0}) + end());
}

TEST_F(GPUModelDrawingTest, EachKeySetsItsStencilValueOnceAndOnlyIfItIsDrawn)
{
    add(1, 1, 41);
    add(1, 1, 41);
    add(1, 1, 7);
    add(1, 2, 9);
    add(1, 1 | kHiddenFlag, 11);
    add(1, 1, -1);
    model.visibilityCull();
    CallLog calls;
    EXPECT_TRUE(model.draw(program.get(), manager.get(), 1, 1, GPUModel::WindingCCW, true));
    Calls expected;
    for (const int key : Access::materialDrawables(model).keys())
    {
        if (key == 9 || key == 11)
            continue;
        expected += stencilWrites(key + 1);
        expected += Calls(call("glBindVertexArray"));
        if (key == 41)
            expected += Calls(call("glBindVertexArray"));
    }
    Calls seen;
    for (const QString& made : calls.named({"glStencilFunc", "glBindVertexArray"}))
        if (made != call("glBindVertexArray", 0))
            seen += made.startsWith(QStringLiteral("glBind")) ? call("glBindVertexArray") : made;
    EXPECT_EQ(seen, expected);
}

TEST_F(GPUModelDrawingTest, TheStencilValueOfTheGreatestKeyWrapsAround)
{
    add(1, 0, std::numeric_limits<int>::max());
    EXPECT_TRUE(
        pass(GPUModel::WindingUnchanged, true).contains(stencilWrites(std::numeric_limits<int>::min()).first()));
}

TEST_F(GPUModelDrawingTest, TheWindingIsSetBeforeTheStencilValue)
{
    add(1);
    EXPECT_EQ(pass(GPUModel::WindingCCW, true), whole(stencilSetUp() + cullBehind(GL_CCW) + stencilWrites(1), {0}) +
                                                    programUnbound() + stencilOff() + unbinding() + cullNone());
}

// -- primitive restart --

TEST_F(GPUModelDrawingTest, PrimitiveRestartIsSetUpAtTheFirstPassOfTheProcessBehindTheStencil)
{
    Access::setPrimitiveRestartDone(false, false);
    const Calls setUp = {call("glEnable", GL_PRIMITIVE_RESTART), call("glPrimitiveRestartIndex", 0xFFFFFFFFu)};
    EXPECT_EQ(pass(GPUModel::WindingUnchanged, true), stencilSetUp() + setUp + stencilOff() + cullNone());
    EXPECT_EQ(pass(GPUModel::WindingUnchanged), cullNone());
    GPUModel other;
    EXPECT_EQ(callsOf([&] { other.draw(program.get(), nullptr, kAll, kAll); }), cullNone());
    EXPECT_TRUE(Access::isPrimitiveRestartDone(false));
}

TEST_F(GPUModelDrawingTest, PrimitiveRestartIsSetUpOnceMoreForSimpleDraws)
{
    Access::setPrimitiveRestartDone(true, false);
    EXPECT_EQ(pass(GPUModel::WindingUnchanged), cullNone());
    const Calls setUp = {call("glEnable", GL_PRIMITIVE_RESTART), call("glPrimitiveRestartIndex", 0xFFFFFFFFu)};
    const auto simple = [this] { model.drawSimple(program.get(), nullptr, kAll, kAll); };
    EXPECT_EQ(callsOf(simple), setUp);
    EXPECT_EQ(callsOf(simple), Calls());
}

// -- what takes part --

TEST_F(GPUModelDrawingTest, DrawablesTakePartByTheirFlagsUnderTheMask)
{
    const quint64 flags[] = {0, 1, 2, 3, 5, 1 | kTwoSidedFlag};
    for (const quint64 word : flags)
        add(1, word);
    struct Row
    {
        quint64 value;
        quint64 mask;
        QList<int> drawn;
    };
    const Row rows[] = {
        {0, 0, {0, 1, 2, 3, 4, 5}},
        {1, 1, {1, 3, 4, 5}},
        {1, 3, {1, 4, 5}},
        {0, 3, {0}},
        {6, 2, {2, 3}},
        {8, 8, {}},
        {~quint64(0), 0, {0, 1, 2, 3, 4, 5}},
    };
    for (const Row& row : rows)
    {
        CallLog calls;
        EXPECT_TRUE(model.draw(program.get(), manager.get(), row.value, row.mask));
        Calls expected;
        for (const int list : row.drawn)
            expected += call("glUniform1ui", kDrawIDLocation, 100 * list);
        EXPECT_EQ(calls.named({"glUniform1ui"}), expected) << row.value << " under " << row.mask;
    }
}

TEST_F(GPUModelDrawingTest, TheLastDrawableThatIsDrawnDecidesTheResult)
{
    add(1);
    add(1);
    const LogCapture log;
    lists[0]->setPrimitiveType(GLenum(-1));
    pass(GPUModel::WindingUnchanged);
    EXPECT_TRUE(lastResult);
    lists[0]->setPrimitiveType(GL_TRIANGLES);
    lists[1]->setPrimitiveType(GLenum(-1));
    const Calls calls = pass(GPUModel::WindingUnchanged);
    EXPECT_FALSE(lastResult);
    EXPECT_EQ(calls, whole({}, {0}) + binding(1) + end());
    add(1, kHiddenFlag); // what is skipped decides nothing
    model.visibilityCull();
    pass(GPUModel::WindingUnchanged);
    EXPECT_FALSE(lastResult);
    const int handle = add(1); // what has nothing to draw does
    model.useTransform(handle, 0, mirrored);
    model.setVisibility(mirrored, 2);
    pass(GPUModel::WindingUnchanged);
    EXPECT_TRUE(lastResult);
}

TEST_F(GPUModelDrawingTest, DrawablesUnderAKeyAreDrawnInTheOrderOfTheirPositions)
{
    add(1, 9);
    add(1, 5);
    add(1, 7);
    model.sortDrawablesByFlags(); // lists 1, 2, 0
    CallLog calls;
    model.draw(program.get(), manager.get(), kAll, kAll);
    EXPECT_EQ(calls.named({"glUniform1ui"}),
              Calls({call("glUniform1ui", kDrawIDLocation, 100), call("glUniform1ui", kDrawIDLocation, 200),
                     call("glUniform1ui", kDrawIDLocation, 0)}));
}

} // namespace
} // namespace Harrow::Vrk::Test
