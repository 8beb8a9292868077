// SPDX-License-Identifier: MIT
#include "DrawBuffersTestTools.h"

namespace Harrow::Vrk::Test
{
namespace
{

using Access = DrawBuffersTestAccess;

TEST_F(DrawBuffersTest, StartsEmpty)
{
    const DrawBuffers fresh(nullptr);
    EXPECT_TRUE(fresh.VAO().isNull());
    EXPECT_TRUE(fresh.indexBO().isNull());
    EXPECT_EQ(fresh.indexType(), 0u);
    EXPECT_EQ(fresh.numVerts(), 0u);
    EXPECT_EQ(fresh.numIndexes(), 0);
    EXPECT_EQ(fresh.numDrawCommands(), 0);
}

TEST_F(DrawBuffersTest, QueriesGiveWhatWasSet)
{
    bindIndexed();
    object.setVertexCount(7);
    object.setDrawElementsIndirectCommands(kCommands, 3);
    EXPECT_EQ(object.VAO(), vao);
    EXPECT_EQ(object.indexBO(), indices);
    EXPECT_EQ(object.indexType(), GLenum(GL_UNSIGNED_SHORT));
    EXPECT_EQ(object.numVerts(), 7u);
    EXPECT_EQ(object.numIndexes(), 12);
    EXPECT_EQ(object.numDrawCommands(), 3);
    unbind();
}

TEST_F(DrawBuffersTest, HasAMetaObjectOfItsOwn)
{
    EXPECT_STREQ(object.metaObject()->className(), "Harrow::Vrk::DrawBuffers");
    QObject parent;
    const auto* const child = new DrawBuffers(&parent);
    EXPECT_EQ(child->parent(), &parent);
}

TEST_F(DrawBuffersTest, NumAliveCountsLivingObjects)
{
    const int before = DrawBuffers::NumAlive();
    {
        const DrawBuffers another(nullptr);
        EXPECT_EQ(DrawBuffers::NumAlive(), before + 1);
    }
    EXPECT_EQ(DrawBuffers::NumAlive(), before);
}

TEST_F(DrawBuffersTest, QuadsAreReportedAndStored)
{
    LogCapture log;
    object.setPrimitiveType(GL_QUADS);
    EXPECT_EQ(log.messages(QtCriticalMsg),
              QStringList(assertion("GL_QUADS != primitiveType", "GL_QUADS is not allowed")));
    object.setVertexCount(4);
    object.bind();
    CallLog calls;
    EXPECT_TRUE(object.draw());
    EXPECT_EQ(calls.named({"glDrawArrays"}), QStringList(CallLog::call("glDrawArrays", 7, 0, 4)));
}

TEST_F(DrawBuffersTest, ASecondVertexArrayIsReportedAndReplacesTheFirst)
{
    const auto other = OpenGLDeviceContext::current()->newVAO();
    LogCapture log;
    object.setVAO(other);
    EXPECT_EQ(log.messages(QtCriticalMsg),
              QStringList(assertion("true == this->_vao.isNull()", "Vertex Array Object is already set")));
    EXPECT_EQ(object.VAO(), other);
}

TEST_F(DrawBuffersTest, ClearLetsGoOfBuffersAndKeepsTheCounts)
{
    bindIndexed();
    unbind();
    object.setVertexCount(7);
    object.setDrawElementsIndirectCommands(kCommands, 3);
    object.clear();
    EXPECT_TRUE(object.VAO().isNull());
    EXPECT_TRUE(object.indexBO().isNull());
    EXPECT_EQ(object.indexType(), GLenum(GL_UNSIGNED_SHORT));
    EXPECT_EQ(object.numIndexes(), 12);
    EXPECT_EQ(object.numVerts(), 7u);
    EXPECT_EQ(object.numDrawCommands(), 3);
    LogCapture log;
    object.setVAO(vao);
    EXPECT_EQ(log.texts(), QStringList());
}

// -- binding --

TEST_F(DrawBuffersTest, BindAndUnbindGoInOppositeOrders)
{
    CallLog calls;
    bindIndexed();
    EXPECT_EQ(calls.named({"glBindVertexArray", "glBindBuffer"}),
              QStringList(
                  {CallLog::call("glBindVertexArray", 1), CallLog::call("glBindBuffer", GL_ELEMENT_ARRAY_BUFFER, 1)}));
    calls.clear();
    unbind();
    EXPECT_EQ(calls.list(), QStringList({CallLog::call("glBindBuffer", GL_ELEMENT_ARRAY_BUFFER, 0),
                                         CallLog::call("glBindVertexArray", 0)}));
}

TEST_F(DrawBuffersTest, BindWithoutAVertexArrayFails)
{
    DrawBuffers empty(nullptr);
    LogCapture log;
    EXPECT_FALSE(empty.bind());
    EXPECT_EQ(log.messages(QtCriticalMsg),
              QStringList(assertion("!this->_vao.isNull()", "Vertex Array Object is NULL on bind")));
}

TEST_F(DrawBuffersTest, BindOfABoundVertexArrayFails)
{
    indices = newIndexBuffer();
    object.setIndexedDraw(indices, 12, GL_UNSIGNED_SHORT);
    vao->bind();
    LogCapture log;
    CallLog calls;
    EXPECT_FALSE(object.bind());
    EXPECT_EQ(calls.list(), QStringList());
    EXPECT_EQ(log.messages(),
              QStringList(assertion("false == this->_vaoBound", "Vertex Array Object is already bound on bind")));
}

TEST_F(DrawBuffersTest, BindUnbindsTheVertexArrayWhenTheIndexBufferFails)
{
    object.setIndexedDraw(OpenGLDeviceContext::current()->newBuffer(), 12, GL_UNSIGNED_SHORT); // has no target
    LogCapture log;
    CallLog calls;
    EXPECT_FALSE(object.bind());
    EXPECT_FALSE(vao->isBound());
    EXPECT_EQ(calls.named({"glBindVertexArray", "glBindBuffer"}),
              QStringList({CallLog::call("glBindVertexArray", 1), CallLog::call("glBindVertexArray", 0)}));
    EXPECT_EQ(log.messages(),
              QStringList(assertion("0u != this->_target", "Buffer Object's target is not set when bind() is called")));
}

TEST_F(DrawBuffersTest, UnbindIsTrueWhateverItsPartsSay)
{
    LogCapture log;
    EXPECT_TRUE(object.unbind());
    EXPECT_EQ(log.messages(), QStringList(assertion("0u != this->_vao", "Vertex Array Object is NULL on unbind")));
}

TEST_F(DrawBuffersTest, UnbindWithoutAVertexArrayFails)
{
    indices = newIndexBuffer();
    DrawBuffers empty(nullptr);
    empty.setIndexedDraw(indices, 12, GL_UNSIGNED_SHORT);
    indices->bind();
    LogCapture log;
    CallLog calls;
    EXPECT_FALSE(empty.unbind());
    EXPECT_EQ(calls.list(), QStringList());
    EXPECT_EQ(log.messages(QtCriticalMsg),
              QStringList(assertion("!this->_vao.isNull()", "Vertex Array Object is NULL on unbind")));
    indices->unbind();
}

TEST_F(DrawBuffersTest, RebindOfItselfIsTrueWithoutACall)
{
    bindIndexed();
    CallLog calls;
    EXPECT_TRUE(object.rebind(&object));
    EXPECT_EQ(calls.list(), QStringList());
    unbind();
}

TEST_F(DrawBuffersTest, RebindOfNullBinds)
{
    CallLog calls;
    EXPECT_TRUE(object.rebind(nullptr));
    EXPECT_TRUE(vao->isBound());
    EXPECT_EQ(calls.named({"glBindVertexArray"}), QStringList(CallLog::call("glBindVertexArray", 1)));
}

TEST_F(DrawBuffersTest, RebindWithoutAVertexArrayFails)
{
    DrawBuffers empty(nullptr);
    const QString line = assertion("!this->_vao.isNull()", "Vertex Array Object is NULL on rebind");
    LogCapture log;
    EXPECT_FALSE(empty.rebind(nullptr));
    EXPECT_FALSE(empty.rebind(&empty)) << "the assertion comes first";
    EXPECT_EQ(log.messages(), QStringList({line, line}));
    log.clear();
    EXPECT_FALSE(object.rebind(&empty));
    EXPECT_EQ(log.messages(),
              QStringList(assertion("!drawBuffersBound->_vao.isNull()", "Vertex Array Object is NULL on rebind")));
}

TEST_F(DrawBuffersTest, RebindFailsWithTheVertexArray)
{
    DrawBuffers other(nullptr);
    other.setVAO(OpenGLDeviceContext::current()->newVAO()); // not bound
    LogCapture log;
    EXPECT_FALSE(object.rebind(&other));
    EXPECT_EQ(log.messages(),
              QStringList(assertion("0u != vertexArrayObjectBound->_vao", "Vertex Array Object is NULL on rebind")));
}

class DrawBuffersRebindTest : public DrawBuffersTest
{
protected:
    void SetUp() override
    {
        DrawBuffersTest::SetUp();
        first = newIndexBuffer();
        second = newIndexBuffer();
        otherVao = OpenGLDeviceContext::current()->newVAO();
        other.setPrimitiveType(GL_TRIANGLES);
    }

    QSharedPointer<BufferObject> first;  // buffer 1
    QSharedPointer<BufferObject> second; // buffer 2
    QSharedPointer<VertexArrayObject> otherVao;
    DrawBuffers other{nullptr};
};

TEST_F(DrawBuffersRebindTest, OneVertexArrayWithTwoIndexBuffersBindsTheNewOne)
{
    object.setIndexedDraw(first, 3, GL_UNSIGNED_INT);
    other.setVAO(vao);
    other.setIndexedDraw(second, 3, GL_UNSIGNED_INT);
    ASSERT_TRUE(object.bind());
    CallLog calls;
    EXPECT_TRUE(other.rebind(&object));
    EXPECT_EQ(calls.list(), QStringList(CallLog::call("glBindBuffer", GL_ELEMENT_ARRAY_BUFFER, 2)));
    other.unbind();
}

TEST_F(DrawBuffersRebindTest, OneVertexArrayWithOneIndexBufferCallsNothing)
{
    object.setIndexedDraw(first, 3, GL_UNSIGNED_INT);
    other.setVAO(vao);
    other.setIndexedDraw(first, 6, GL_UNSIGNED_INT);
    ASSERT_TRUE(object.bind());
    CallLog calls;
    EXPECT_TRUE(other.rebind(&object));
    EXPECT_EQ(calls.list(), QStringList());
    other.unbind();
}

TEST_F(DrawBuffersRebindTest, AnotherVertexArrayGetsTheSameIndexBufferAnew)
{
    object.setIndexedDraw(first, 3, GL_UNSIGNED_INT);
    other.setVAO(otherVao);
    other.setIndexedDraw(first, 3, GL_UNSIGNED_INT);
    ASSERT_TRUE(object.bind());
    CallLog calls;
    EXPECT_TRUE(other.rebind(&object));
    EXPECT_EQ(calls.named({"glBindVertexArray", "glBindBuffer"}),
              QStringList(
                  {CallLog::call("glBindVertexArray", 2), CallLog::call("glBindBuffer", GL_ELEMENT_ARRAY_BUFFER, 1)}));
    other.unbind();
}

TEST_F(DrawBuffersRebindTest, AnIndexBufferIsBoundAfterAnObjectWithoutOne)
{
    other.setVAO(otherVao);
    other.setIndexedDraw(second, 3, GL_UNSIGNED_INT);
    ASSERT_TRUE(object.bind());
    CallLog calls;
    EXPECT_TRUE(other.rebind(&object));
    EXPECT_EQ(calls.named({"glBindVertexArray", "glBindBuffer"}),
              QStringList(
                  {CallLog::call("glBindVertexArray", 2), CallLog::call("glBindBuffer", GL_ELEMENT_ARRAY_BUFFER, 2)}));
    other.unbind();
}

TEST_F(DrawBuffersRebindTest, TheOtherIndexBufferIsUnboundWhereThisHasNone)
{
    object.setIndexedDraw(first, 3, GL_UNSIGNED_INT);
    other.setVAO(otherVao);
    ASSERT_TRUE(object.bind());
    CallLog calls;
    EXPECT_TRUE(other.rebind(&object));
    EXPECT_EQ(calls.named({"glBindVertexArray", "glBindBuffer"}),
              QStringList(
                  {CallLog::call("glBindVertexArray", 2), CallLog::call("glBindBuffer", GL_ELEMENT_ARRAY_BUFFER, 0)}));
    other.unbind();
}

TEST_F(DrawBuffersRebindTest, NeitherHasAnIndexBuffer)
{
    other.setVAO(otherVao);
    ASSERT_TRUE(object.bind());
    CallLog calls;
    EXPECT_TRUE(other.rebind(&object));
    EXPECT_EQ(calls.named({"glBindVertexArray", "glBindBuffer"}), QStringList(CallLog::call("glBindVertexArray", 2)));
    other.unbind();
}

TEST_F(DrawBuffersRebindTest, AFailingIndexBufferUnbindsTheVertexArray)
{
    object.setIndexedDraw(first, 3, GL_UNSIGNED_INT);
    other.setVAO(otherVao);
    other.setIndexedDraw(second, 3, GL_UNSIGNED_INT);
    ASSERT_TRUE(object.bind());
    first->unbind(); // behind the object's back
    LogCapture log;
    CallLog calls;
    EXPECT_FALSE(other.rebind(&object));
    EXPECT_FALSE(otherVao->isBound());
    EXPECT_EQ(calls.list().last(), CallLog::call("glBindVertexArray", 0));
    EXPECT_EQ(log.messages(), QStringList(assertion("0u != bufferObjectBound->_boBountTarget",
                                                    "Bound Buffer Object is not already bound to target 34963")));

    DrawBuffers plain(nullptr);
    plain.setVAO(otherVao);
    vao->bind();
    log.clear();
    EXPECT_FALSE(plain.rebind(&object)) << "the other's index buffer is not bound, so unbinding it fails";
    EXPECT_FALSE(otherVao->isBound());
    EXPECT_EQ(log.messages(),
              QStringList(assertion("0u != this->_boBountTarget", "Buffer Object is not bound on unbind")));
}

TEST_F(DrawBuffersTest, WillDrawAsksForWhatTheModeNeeds)
{
    const QList<int> none;
    const QList<int> one = {0};
    EXPECT_FALSE(object.willDraw(nullptr, nullptr));
    object.setVertexCount(3);
    EXPECT_TRUE(object.willDraw(nullptr, nullptr));
    EXPECT_TRUE(object.willDraw(nullptr, &none)) << "a subset counts with commands only";
    object.setIndexedDraw(newIndexBuffer(), 0, GL_UNSIGNED_INT);
    EXPECT_FALSE(object.willDraw(nullptr, nullptr));
    object.setIndexedDraw(newIndexBuffer(), 3, GL_UNSIGNED_INT);
    EXPECT_TRUE(object.willDraw(nullptr, nullptr));
    object.setInstanceCount(0);
    EXPECT_TRUE(object.willDraw(nullptr, nullptr)) << "instances are not asked for";

    Access::useMultiDrawIndirect(object, true);
    EXPECT_FALSE(object.willDraw(nullptr, nullptr));
    object.setDrawElementsIndirectCommands(kCommands, 3);
    EXPECT_TRUE(object.willDraw(nullptr, nullptr));
    EXPECT_FALSE(object.willDraw(nullptr, &none));
    EXPECT_TRUE(object.willDraw(nullptr, &one));
    Access::useMultiDrawIndirect(object, true);
    EXPECT_TRUE(object.willDraw(nullptr, &none));
}

TEST_F(DrawBuffersTest, MemoryEstimatesSumListsAndBuffers)
{
    DrawBuffers plain(nullptr);
    EXPECT_EQ(plain.memoryEstimateCPU(), sizeof(DrawBuffers));
    EXPECT_EQ(plain.memoryEstimateGPU(), 0u);

    const auto vertices = OpenGLDeviceContext::current()->newBuffer();
    vertices->setTarget(GL_ARRAY_BUFFER);
    ASSERT_TRUE(vao->upload(QStringLiteral("va_A"), vertices, QList<float>(6), 3, GL_STATIC_DRAW)); // 24 bytes
    bindIndexed();
    const GLushort numbers[12] = {};
    ASSERT_TRUE(indices->uploadGLushortData(numbers, 12, GL_STATIC_DRAW)); // 24 bytes
    object.setDrawElementsIndirectCommands(kCommands, 3);
    const auto commandBuffer = OpenGLDeviceContext::current()->newBuffer();
    Access::setCommandBuffer(object, commandBuffer);
    EXPECT_EQ(object.memoryEstimateCPU(),
              sizeof(DrawBuffers) + 3 * (20 + 8 + 4) + vao->memoryEstimateCPU() + 2 * sizeof(BufferObject));
    EXPECT_EQ(object.memoryEstimateGPU(), 48u);
    unbind();
}

} // namespace
} // namespace Harrow::Vrk::Test
