// SPDX-License-Identifier: MIT
//
// What a pass binds and unbinds, and when it does not; the public forms of a pass; simple draws.
#include "GPUModelDrawingTestTools.h"

namespace Harrow::Vrk::Test
{
namespace
{

using Calls = QStringList;

class GPUModelDrawingBindingsTest : public GPUModelDrawing
{
protected:
    Calls pass()
    {
        return GPUModelDrawing::pass(GPUModel::WindingUnchanged);
    }

    Calls simple()
    {
        return callsOf([this] { lastResult = model.drawSimple(program.get(), manager.get(), kAll, kAll); });
    }

    static Calls bindsRecords(int token)
    {
        return {QStringLiteral("manager binds %1").arg(token)};
    }
    static Calls unbindsRecords(int token)
    {
        return {QStringLiteral("manager unbinds %1").arg(token)};
    }
    static Calls programAgain()
    {
        return programUnbound() + programBound();
    }

    /// Of a pass with material 1 and object 2.
    static Calls start()
    {
        return bindsRecords(1) + bindsRecords(2) + programBound();
    }
    static Calls end(int material = 1, int object = 2)
    {
        return programUnbound() + unbindsRecords(material) + unbindsRecords(object) + unbinding() + cullNone();
    }

    static Calls missingVertexArray()
    {
        return {assertionLine(QStringLiteral("!this->_vao.isNull()"),
                              QStringLiteral("Vertex Array Object is NULL on rebind"))};
    }
};

// -- what is shared --

TEST_F(GPUModelDrawingBindingsTest, OneDrawableBindsRecordsThenManagerThenListAndUnbindsThem)
{
    add(newList(2), 0, 0, newRecords(1), newRecords(2));
    EXPECT_EQ(pass(), start() + binding(0) + drawing(0, {0, 1}) + end());
}

TEST_F(GPUModelDrawingBindingsTest, DrawablesThatShareEverythingBindNothingAgain)
{
    DrawBuffers* const list = newList(2);
    InstanceDataCollection* const material = newRecords(1);
    InstanceDataCollection* const object = newRecords(2);
    for (int i = 0; i < 3; ++i)
        add(list, 0, 0, material, object);
    EXPECT_EQ(pass(), start() + binding(0) + drawing(0, {0, 1, 0, 1, 0, 1}) + end());
}

TEST_F(GPUModelDrawingBindingsTest, ListsOfOneVertexArrayAndIndexBufferBindNothingAgain)
{
    InstanceDataCollection* const material = newRecords(1);
    InstanceDataCollection* const object = newRecords(2);
    add(newList(1), 0, 0, material, object);
    add(newList(2, lists[0].get()), 0, 0, material, object);
    EXPECT_EQ(pass(), start() + binding(0) + drawing(0, {0}) + drawing(1, {0, 1}) + end());
}

TEST_F(GPUModelDrawingBindingsTest, ListsOfOneVertexArrayChangeTheIndexBufferAlone)
{
    add(newList(1));
    DrawBuffers* const other = newList(1, lists[0].get());
    const auto buffer = OpenGLDeviceContext::current()->newBuffer();
    buffer->setTarget(GL_ELEMENT_ARRAY_BUFFER);
    ASSERT_TRUE(buffer->bind() && buffer->unbind());
    other->setIndexedDraw(buffer, 1000, GL_UNSIGNED_SHORT);
    add(other);
    EXPECT_EQ(pass(), programBound() + binding(0) + drawing(0, {0}) + binding(1).mid(1) + drawing(1, {0}) +
                          programUnbound() + unbinding() + cullNone());
}

TEST_F(GPUModelDrawingBindingsTest, AnotherListIsBoundInThePlaceOfTheLast)
{
    InstanceDataCollection* const material = newRecords(1);
    InstanceDataCollection* const object = newRecords(2);
    add(newList(1), 0, 0, material, object);
    add(newList(1), 0, 0, material, object);
    EXPECT_EQ(pass(), start() + binding(0) + drawing(0, {0}) + binding(1) + drawing(1, {0}) + end());
}

TEST_F(GPUModelDrawingBindingsTest, AnotherMaterialIsBoundAndTheManagerAnew)
{
    InstanceDataCollection* const object = newRecords(2);
    add(newList(1), 0, 0, newRecords(1), object);
    add(lists[0].get(), 0, 0, newRecords(3), object);
    EXPECT_EQ(pass(), start() + binding(0) + drawing(0, {0}) + unbindsRecords(1) + bindsRecords(3) + programAgain() +
                          drawing(0, {0}) + end(3, 2));
}

TEST_F(GPUModelDrawingBindingsTest, AnotherObjectIsBoundAndTheManagerAnew)
{
    InstanceDataCollection* const material = newRecords(1);
    add(newList(1), 0, 0, material, newRecords(2));
    add(lists[0].get(), 0, 0, material, newRecords(4));
    EXPECT_EQ(pass(), start() + binding(0) + drawing(0, {0}) + unbindsRecords(2) + bindsRecords(4) + programAgain() +
                          drawing(0, {0}) + end(1, 4));
}

TEST_F(GPUModelDrawingBindingsTest, WhenAllIsAnotherMaterialComesFirstThenObjectManagerAndList)
{
    add(newList(1), 0, 0, newRecords(1), newRecords(2));
    add(newList(1), 0, 0, newRecords(3), newRecords(4));
    EXPECT_EQ(pass(), start() + binding(0) + drawing(0, {0}) + unbindsRecords(1) + bindsRecords(3) + unbindsRecords(2) +
                          bindsRecords(4) + programAgain() + binding(1) + drawing(1, {0}) + end(3, 4));
}

TEST_F(GPUModelDrawingBindingsTest, RecordsThatEndAreUnboundAndTheManagerStays)
{
    add(newList(1), 0, 0, newRecords(1), newRecords(2));
    add(lists[0].get());
    EXPECT_EQ(pass(), start() + binding(0) + drawing(0, {0}) + unbindsRecords(1) + unbindsRecords(2) + drawing(0, {0}) +
                          programUnbound() + unbinding() + cullNone());
}

TEST_F(GPUModelDrawingBindingsTest, RecordsThatBeginLaterBindTheManagerAnew)
{
    add(newList(1));
    add(lists[0].get(), 0, 0, newRecords(1), newRecords(2));
    EXPECT_EQ(pass(), programBound() + binding(0) + drawing(0, {0}) + bindsRecords(1) + bindsRecords(2) +
                          programAgain() + drawing(0, {0}) + end());
}

TEST_F(GPUModelDrawingBindingsTest, OneCollectionForMaterialAndObjectIsBoundForEach)
{
    InstanceDataCollection* const both = newRecords(5);
    add(newList(1), 0, 0, both, both);
    EXPECT_EQ(pass(), bindsRecords(5) + bindsRecords(5) + programBound() + binding(0) + drawing(0, {0}) + end(5, 5));
}

TEST_F(GPUModelDrawingBindingsTest, WithoutAManagerNothingIsSaidToOne)
{
    add(newList(1), 0, 0, newRecords(1), newRecords(2));
    TextureManager::setInstance(manager.get());
    EXPECT_EQ(callsOf([this] { model.draw(program.get(), nullptr, kAll, kAll); }),
              binding(0) + drawing(0, {0}) + unbinding() + cullNone());
}

TEST_F(GPUModelDrawingBindingsTest, EachPassBindsAnewWhatItNeeds)
{
    add(newList(1), 0, 0, newRecords(1), newRecords(2));
    const Calls first = pass();
    EXPECT_EQ(pass(), first);
    EXPECT_EQ(pass(), first);
}

TEST_F(GPUModelDrawingBindingsTest, ADrawableWhoseCommandsAreAllHiddenBindsNothing)
{
    const int hidden = model.addTransform(-1, QMatrix4x4());
    model.updateTransforms();
    const int handle = add(newList(1), 0, 0, newRecords(1), newRecords(2));
    model.useTransform(handle, 0, hidden);
    model.setVisibility(hidden, 2); // and was not culled
    EXPECT_EQ(pass(), cullNone());
    EXPECT_TRUE(lastResult);
}

TEST_F(GPUModelDrawingBindingsTest, ACulledDrawableBindsNothing)
{
    add(newList(1), kHiddenFlag, 0, newRecords(1), newRecords(2));
    model.visibilityCull();
    EXPECT_EQ(pass(), cullNone());
    EXPECT_TRUE(lastResult);
}

TEST_F(GPUModelDrawingBindingsTest, AttributesAreEnabledWhereTheVertexArrayChanges)
{
    driver.replace(
        "glGetProgramiv",
        +[](GLuint, GLenum what, GLint* value) { *value = what == GL_LINK_STATUS || what == GL_ACTIVE_ATTRIBUTES; });
    driver.replace(
        "glGetActiveAttrib",
        +[](GLuint, GLuint, GLsizei, GLsizei* length, GLint* size, GLenum* type, GLchar* name)
        {
            std::memcpy(name, "va_Vertex", 10);
            if (length)
                *length = 9;
            *size = 1;
            *type = GL_FLOAT_VEC3;
        });
    driver.replace(
        "glGetAttribLocation", +[](GLuint, const GLchar*) { return GLint(6); });
    ASSERT_EQ(driver.load(), 1);
    program = std::make_unique<ShaderProgram>();
    ASSERT_TRUE(program->link());
    const auto withVertices = [this](DrawBuffers* list)
    {
        const auto vertices = OpenGLDeviceContext::current()->newBuffer();
        vertices->setTarget(GL_ARRAY_BUFFER);
        EXPECT_TRUE(list->VAO()->upload(QStringLiteral("va_Vertex"), vertices, QList<float>(9), 3, GL_STATIC_DRAW));
        return list;
    };
    add(withVertices(newList(1)));
    add(newList(1, lists[0].get()));
    add(withVertices(newList(1)));
    CallLog calls;
    EXPECT_TRUE(model.draw(program.get(), manager.get(), kAll, kAll));
    const auto arrayOf = [this](int list)
    { return call("glBindVertexArray", lists[std::size_t(list)]->VAO()->getVAO()); };
    EXPECT_EQ(calls.named({"glBindVertexArray", "glEnableVertexAttribArray", "glUniform1ui"}),
              Calls({arrayOf(0), call("glEnableVertexAttribArray", 6), call("glUniform1ui", kDrawIDLocation, 0),
                     call("glUniform1ui", kDrawIDLocation, 100), arrayOf(2), call("glEnableVertexAttribArray", 6),
                     call("glUniform1ui", kDrawIDLocation, 200), call("glBindVertexArray", 0)}));
}

// -- what refuses --

TEST_F(GPUModelDrawingBindingsTest, AListThatCannotBeBoundIsPassedOverAsLongAsThereIsNone)
{
    InstanceDataCollection* const material = newRecords(1);
    InstanceDataCollection* const object = newRecords(2);
    add(newList(1), 0, 0, material, object);
    add(newList(1), 0, 0, material, object);
    lists[0]->clear();
    const LogCapture log;
    EXPECT_EQ(pass(), start() + binding(1) + drawing(1, {0}) + end());
    EXPECT_TRUE(lastResult);
    EXPECT_EQ(log.messages(), missingVertexArray());
    lists[1]->clear();
    EXPECT_EQ(pass(), start() + programUnbound() + unbindsRecords(1) + unbindsRecords(2) + cullNone());
    EXPECT_TRUE(lastResult);
}

TEST_F(GPUModelDrawingBindingsTest, AListThatCannotBeBoundLeavesTheOneBeforeInItsPlace)
{
    add(newList(3));
    add(newList(2));
    lists[1]->clear();
    const LogCapture log;
    EXPECT_EQ(pass(), programBound() + binding(0) + drawing(0, {0, 1, 2}) + drawing(0, {0, 1}) + programUnbound() +
                          unbinding() + cullNone());
    EXPECT_TRUE(lastResult);
    EXPECT_EQ(log.messages(), missingVertexArray());
}

TEST_F(GPUModelDrawingBindingsTest, CommandsThatTheListInPlaceHasNotAreReportedAndNotDrawn)
{
    add(newList(1));
    add(newList(2));
    lists[1]->clear();
    const LogCapture log;
    EXPECT_EQ(pass(), programBound() + binding(0) + drawing(0, {0}) + programUnbound() + unbinding() + cullNone());
    EXPECT_FALSE(lastResult);
    EXPECT_EQ(log.messages().size(), 2);
}

// -- simple draws --

TEST_F(GPUModelDrawingBindingsTest, ASimpleDrawIsTheSameWalkWithWholeListsAndLeavesFacesAlone)
{
    InstanceDataCollection* const material = newRecords(1);
    InstanceDataCollection* const object = newRecords(2);
    model.addSimple(newList(2), 5, material, object, 0);
    model.addSimple(newList(3), 6, material, object, kTwoSidedFlag | kHiddenFlag);
    model.addSimple(newList(1, lists[1].get()), 6, newRecords(3), object, 0);
    EXPECT_EQ(simple(), start() + binding(0) + drawing(0, {0, 1}) + binding(1) + drawing(1, {0, 1, 2}) +
                            unbindsRecords(1) + bindsRecords(3) + programAgain() + drawing(2, {0}) + programUnbound() +
                            unbindsRecords(3) + unbindsRecords(2) + unbinding());
    EXPECT_TRUE(lastResult);
}

TEST_F(GPUModelDrawingBindingsTest, ASimpleDrawTakesCulledMirroredAndLooseCommandsToo)
{
    const int handle = model.add(newList(3), 7, nullptr, nullptr, 0);
    model.useTransform(handle, 1, mirrored);
    model.visibilityCull();
    const LogCapture log;
    EXPECT_EQ(simple(), programBound() + binding(0) + drawing(0, {0, 1, 2}) + programUnbound() + unbinding());
    EXPECT_EQ(log.messages(), Calls());
}

TEST_F(GPUModelDrawingBindingsTest, ASimpleDrawLooksAtFlagsOnlyWithFeatureBit0)
{
    add(1, 1);
    add(1, 2);
    const auto drawn = [this](quint64 value, quint64 mask)
    {
        CallLog calls;
        model.drawSimple(program.get(), nullptr, value, mask);
        return calls.named({"glUniform1ui"}).size();
    };
    EXPECT_EQ(drawn(2, 3), 1);
    EXPECT_EQ(drawn(6, 3), 1) << "bits of the value outside the mask";
    EXPECT_EQ(drawn(3, 3), 0);
    model.setFeatureFlags(~quint64(1));
    EXPECT_EQ(drawn(2, 3), 2);
    EXPECT_EQ(drawn(3, 3), 2);
}

TEST_F(GPUModelDrawingBindingsTest, OneFailureMakesASimpleDrawFailAndTheOthersDraw)
{
    for (int i = 0; i < 3; ++i)
        add(1);
    lists[1]->setPrimitiveType(GLenum(-1));
    const LogCapture log;
    EXPECT_EQ(simple(), programBound() + binding(0) + drawing(0, {0}) + binding(1) + binding(2) + drawing(2, {0}) +
                            programUnbound() + unbinding());
    EXPECT_FALSE(lastResult);
    EXPECT_EQ(log.messages().size(), 1);
}

TEST_F(GPUModelDrawingBindingsTest, ASimpleDrawPassesOverWhatHasNothingToDraw)
{
    model.addSimple(newList(0), 0, newRecords(1), newRecords(2), 0);
    lists[0]->setIndexedDraw(lists[0]->indexBO(), 0, GL_UNSIGNED_SHORT);
    model.addSimple(nullptr, 0, newRecords(3), newRecords(4), 0);
    EXPECT_EQ(simple(), Calls());
    EXPECT_TRUE(lastResult);
}

TEST_F(GPUModelDrawingBindingsTest, ASimpleDrawOfAListWithoutCommandsDrawsItWhole)
{
    model.addSimple(newList(0), 0, nullptr, nullptr, 0);
    EXPECT_EQ(simple(), programBound() + binding(0) +
                            Calls({call("glUniform1ui", kDrawIDLocation, 0),
                                   call("glDrawElements", GL_TRIANGLES, 1000, GL_UNSIGNED_SHORT, nullptr)}) +
                            programUnbound() + unbinding());
}

TEST_F(GPUModelDrawingBindingsTest, ASimpleDrawOfAListThatCannotBeBoundIsNoFailure)
{
    add(1);
    add(2);
    lists[0]->clear();
    const LogCapture log;
    EXPECT_EQ(simple(), programBound() + binding(1) + drawing(1, {0, 1}) + programUnbound() + unbinding());
    EXPECT_TRUE(lastResult);
    EXPECT_EQ(log.messages(), missingVertexArray());
}

TEST_F(GPUModelDrawingBindingsTest, ASimpleDrawOfAnEmptyModelMakesNoCall)
{
    EXPECT_EQ(simple(), Calls());
    EXPECT_TRUE(lastResult);
}

} // namespace
} // namespace Harrow::Vrk::Test
