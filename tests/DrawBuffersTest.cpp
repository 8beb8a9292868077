// SPDX-License-Identifier: MIT
#include "DrawBuffers.h"

#include "AutoBinder.h"
#include "BufferObject.h"
#include "GLSLMacroProcessor.h"
#include "OpenGLDeviceContext.h"
#include "ShaderProgram.h"
#include "UniformBufferObject.h"
#include "VertexArrayObject.h"
#include "support/CallLog.h"
#include "support/FakeDriver.h"
#include "support/GLTest.h"
#include "support/LogCapture.h"
#include "support/ObjectAccess.h"
#include "support/Picture.h"
#include "support/TransformFeedback.h"

#include <cstring>

namespace Harrow::Vrk::Test
{
namespace
{

using Access = DrawBuffersTestAccess;

QSharedPointer<BufferObject> newIndexBuffer()
{
    auto buffer = OpenGLDeviceContext::current()->newBuffer();
    buffer->setTarget(GL_ELEMENT_ARRAY_BUFFER);
    return buffer;
}

QString assertion(const char* condition, const char* message)
{
    return assertionLine(QString::fromLatin1(condition), QString::fromLatin1(message));
}

struct Totals
{
    quint64 calls;
    quint64 batches;
    quint64 indices;

    bool operator==(const Totals& other) const
    {
        return calls == other.calls && batches == other.batches && indices == other.indices;
    }
};

std::ostream& operator<<(std::ostream& stream, const Totals& totals)
{
    return stream << totals.calls << " calls, " << totals.batches << " batches, " << totals.indices << " indices";
}

Totals takeTotals()
{
    return {DrawBuffers::getAndResetTotalDrawCalls(), DrawBuffers::getAndResetTotalDrawBatches(),
            DrawBuffers::getAndResetTotalDrawIndices()};
}

constexpr DrawElementsIndirectCommand kCommands[] = {
    // count, instances, first index, base vertex, base instance
    {3, 1, 0, 0, 0},
    {6, 5, 3, 10, 7},
    {9, 1, 9, 0xFFFFFFFF, 0},
};

// ---- on the fake driver --------------------------------------------------------------------------------------------

class DrawBuffersTest : public FakeDriverTest
{
protected:
    void SetUp() override
    {
        FakeDriverTest::SetUp();
        Access::resetEntryPoints();
        Access::resetMode();
        vao = OpenGLDeviceContext::current()->newVAO();
        object.setVAO(vao);
        object.setPrimitiveType(GL_TRIANGLES);
    }

    void TearDown() override
    {
        if (vao->getVAO() != 0 && vao->isBound())
            vao->unbind();
        Access::resetEntryPoints();
        Access::resetMode();
    }

    /// 12 indices of two bytes, with the object bound.
    void bindIndexed(int indexCount = 12, GLenum indexType = GL_UNSIGNED_SHORT)
    {
        indices = newIndexBuffer();
        object.setIndexedDraw(indices, indexCount, indexType);
        ASSERT_TRUE(object.bind());
    }

    /// The index buffer must not be bound when it goes.
    void unbind()
    {
        EXPECT_TRUE(object.unbind());
    }

    QSharedPointer<ShaderProgram> linkedProgram()
    {
        auto program = QSharedPointer<ShaderProgram>::create();
        EXPECT_TRUE(program->link());
        return program;
    }

    QSharedPointer<VertexArrayObject> vao;
    QSharedPointer<BufferObject> indices;
    DrawBuffers object{nullptr};
};

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
    EXPECT_EQ(log.messages().size(), 1);
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
    EXPECT_EQ(log.messages().size(), 1);
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
    EXPECT_EQ(log.messages().size(), 1);
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

    DrawBuffers plain(nullptr);
    plain.setVAO(otherVao);
    vao->bind();
    EXPECT_FALSE(plain.rebind(&object)) << "the other's index buffer is not bound, so unbinding it fails";
    EXPECT_FALSE(otherVao->isBound());
}

// -- what a draw needs --

TEST_F(DrawBuffersTest, DrawWithoutAVertexArrayFails)
{
    DrawBuffers empty(nullptr);
    const QString line = assertion("false == this->_vao.isNull()", "Vertex Array Object is NULL on draw");
    LogCapture log;
    EXPECT_FALSE(empty.draw());
    EXPECT_FALSE(empty.draw(nullptr));
    EXPECT_FALSE(empty.draw(nullptr, nullptr));
    EXPECT_FALSE(empty.drawInstanced(1));
    EXPECT_EQ(log.messages(), QStringList({line, line, line, line}));
}

TEST_F(DrawBuffersTest, DrawWithoutABoundVertexArrayFails)
{
    object.setVertexCount(3);
    const QString line = assertion("true == this->_vao->isBound()", "Vertex Array Object is not bound on draw");
    LogCapture log;
    CallLog calls;
    EXPECT_FALSE(object.draw());
    EXPECT_EQ(log.messages(),
              QStringList({assertion("0u != this->_vao", "Vertex Array Object is NULL on isBound"), line}));
    object.bind();
    object.unbind();
    log.clear();
    calls.clear();
    EXPECT_FALSE(object.draw());
    EXPECT_FALSE(object.drawInstanced(1));
    EXPECT_EQ(log.messages(), QStringList({line, line}));
    EXPECT_EQ(calls.list(), QStringList());
}

TEST_F(DrawBuffersTest, DrawWithoutAPrimitiveTypeFails)
{
    DrawBuffers plain(nullptr);
    plain.setVAO(vao);
    plain.setVertexCount(3);
    plain.bind();
    LogCapture log;
    CallLog calls;
    EXPECT_FALSE(plain.draw());
    EXPECT_FALSE(plain.drawInstanced(1));
    const QString line = assertion("GLenum(-1) != this->_primitiveType", "Primitive type is not setup on draw");
    EXPECT_EQ(log.messages(), QStringList({line, line}));
    EXPECT_EQ(calls.list(), QStringList());
}

TEST_F(DrawBuffersTest, DrawWithoutCountsFailsInEveryModeBeforeAnyCall)
{
    const QString vertices = assertion("0 != this->_vertexCount", "Index count is not setup on draw");
    const QString type = assertion("0 != this->_indexType", "Index type is not setup on draw");
    const QString count = assertion("0 != this->_indexCount", "Index count is not setup on draw");
    DrawBuffers::isBaseInstanceDrawingSupported(); // fetches the functions
    for (const bool baseInstance : {false, true})
    {
        DrawBuffers::useBaseInstanceDrawing(baseInstance);
        object.bind();
        LogCapture log;
        CallLog calls;
        EXPECT_FALSE(object.draw());
        EXPECT_FALSE(object.drawInstanced(2));
        EXPECT_EQ(log.messages(), QStringList({vertices, vertices}));
        object.setIndexedDraw(newIndexBuffer(), 3, 0);
        calls.clear();
        log.clear();
        EXPECT_FALSE(object.draw());
        EXPECT_FALSE(object.drawInstanced(2));
        EXPECT_EQ(log.messages(), QStringList({type, type}));
        object.setIndexedDraw(object.indexBO(), 0, GL_UNSIGNED_INT);
        log.clear();
        EXPECT_FALSE(object.draw());
        EXPECT_FALSE(object.drawInstanced(2));
        EXPECT_EQ(log.messages(), QStringList({count, count}));
        EXPECT_EQ(calls.list(), QStringList());
        EXPECT_EQ(takeTotals(), Totals({0, 0, 0}));
        object.setIndexedDraw({}, 0, 0);
        object.unbind();
    }
}

// -- by uniform --

TEST_F(DrawBuffersTest, WithoutAProgramTheDriverIsAskedForTheUniformOnce)
{
    driver.setInteger(GL_CURRENT_PROGRAM, 42);
    driver.setUniformLocation("u_DrawID", 3);
    object.setVertexCount(6);
    object.setInstanceCount(2);
    object.setDrawIDBase(100);
    object.bind();
    CallLog calls;
    EXPECT_TRUE(object.draw());
    QStringList list = calls.list();
    ASSERT_FALSE(list.isEmpty());
    EXPECT_TRUE(list.takeFirst().startsWith(QStringLiteral("glGetIntegerv(0x8b8d, ")));
    EXPECT_EQ(list,
              QStringList({CallLog::call("glGetUniformLocation", 42, "u_DrawID"), CallLog::call("glUniform1ui", 3, 100),
                           CallLog::call("glDrawArrays", GL_TRIANGLES, 0, 6), CallLog::call("glUniform1ui", 3, 101),
                           CallLog::call("glDrawArrays", GL_TRIANGLES, 0, 6)}));
    EXPECT_EQ(takeTotals(), Totals({2, 2, 0}));
}

TEST_F(DrawBuffersTest, WithAProgramTheDriverIsNotAsked)
{
    driver.setUniformLocation("u_DrawID", 5);
    const auto program = linkedProgram();
    ASSERT_EQ(program->getUniformLocationNameID(), 5);
    object.setVertexCount(6);
    object.bind();
    CallLog calls;
    EXPECT_TRUE(object.draw(program.data()));
    EXPECT_EQ(calls.list(),
              QStringList({CallLog::call("glUniform1ui", 5, 0), CallLog::call("glDrawArrays", GL_TRIANGLES, 0, 6)}));
}

TEST_F(DrawBuffersTest, AProgramWithoutTheUniformIsDrawnWithAllTheSame)
{
    const auto program = linkedProgram();
    ASSERT_EQ(program->getUniformLocationNameID(), -1);
    object.setVertexCount(6);
    object.bind();
    CallLog calls;
    EXPECT_TRUE(object.draw(program.data()));
    EXPECT_EQ(calls.list(), QStringList(CallLog::call("glDrawArrays", GL_TRIANGLES, 0, 6)));
    calls.clear();
    EXPECT_TRUE(object.draw());
    EXPECT_EQ(calls.count("glUniform1ui"), 0);
    EXPECT_EQ(calls.count("glDrawArrays"), 1);
}

TEST_F(DrawBuffersTest, IndexedInstancesAreRepeatedCalls)
{
    driver.setUniformLocation("u_DrawID", 0);
    const auto program = linkedProgram();
    bindIndexed();
    object.setInstanceCount(3);
    object.setDrawIDBase(7);
    object.setIndexBufferOffset(16);
    CallLog calls;
    EXPECT_TRUE(object.draw(program.data()));
    QStringList expected;
    for (int i = 0; i < 3; ++i)
        expected << CallLog::call("glUniform1ui", 0, 7 + i)
                 << CallLog::call("glDrawElements", GL_TRIANGLES, 12, GL_UNSIGNED_SHORT, bufferOffset(16));
    EXPECT_EQ(calls.list(), expected);
    EXPECT_EQ(takeTotals(), Totals({3, 3, 36}));
    unbind();
}

TEST_F(DrawBuffersTest, ABaseVertexGoesByTheBaseVertexForm)
{
    const auto program = linkedProgram();
    bindIndexed();
    object.setBaseVertex(-4);
    CallLog calls;
    EXPECT_TRUE(object.draw(program.data()));
    EXPECT_EQ(calls.list(),
              QStringList(CallLog::call("glDrawElementsBaseVertex", GL_TRIANGLES, 12, GL_UNSIGNED_SHORT, nullptr, -4)));
    object.setBaseVertex(0);
    calls.clear();
    EXPECT_TRUE(object.draw(program.data()));
    EXPECT_EQ(calls.list(), QStringList(CallLog::call("glDrawElements", GL_TRIANGLES, 12, GL_UNSIGNED_SHORT, nullptr)));
    unbind();
}

TEST_F(DrawBuffersTest, ABaseVertexPlaysNoPartWithoutIndices)
{
    object.setVertexCount(6);
    object.setBaseVertex(9);
    object.bind();
    CallLog calls;
    EXPECT_TRUE(object.draw(linkedProgram().data()));
    EXPECT_EQ(calls.named({"glDrawArrays"}), QStringList(CallLog::call("glDrawArrays", GL_TRIANGLES, 0, 6)));
}

TEST_F(DrawBuffersTest, AnInstanceCountBelowOneDrawsNothingAndIsTrue)
{
    object.setVertexCount(6);
    object.bind();
    for (const int count : {0, -3})
    {
        object.setInstanceCount(count);
        CallLog calls;
        EXPECT_TRUE(object.draw());
        EXPECT_EQ(calls.named({"glUniform1ui", "glDrawArrays"}), QStringList());
        EXPECT_EQ(takeTotals(), Totals({0, 0, 0}));
    }
}

TEST_F(DrawBuffersTest, ADrawIdentifierWrapsAsTheShaderSeesIt)
{
    driver.setUniformLocation("u_DrawID", 0);
    const auto program = linkedProgram();
    object.setVertexCount(6);
    object.setInstanceCount(2);
    object.setDrawIDBase(0x7FFFFFFF);
    object.bind();
    CallLog calls;
    EXPECT_TRUE(object.draw(program.data()));
    EXPECT_EQ(calls.named({"glUniform1ui"}), QStringList({CallLog::call("glUniform1ui", 0, 0x7FFFFFFFu),
                                                          CallLog::call("glUniform1ui", 0, 0x80000000u)}));
}

// -- sub-draws --

TEST_F(DrawBuffersTest, CommandsAreDrawnInOrderByTheBaseVertexForm)
{
    driver.setUniformLocation("u_DrawID", 2);
    const auto program = linkedProgram();
    bindIndexed();
    object.setDrawElementsIndirectCommands(kCommands, 3);
    object.setDrawIDBase(50);
    object.setInstanceCount(4);       // plays no part here,
    object.setIndexBufferOffset(999); // nor does this,
    object.setBaseVertex(77);         // nor this
    CallLog calls;
    EXPECT_TRUE(object.draw(program.data()));
    const auto draw = [](int count, size_t offset, int baseVertex)
    {
        return CallLog::call("glDrawElementsBaseVertex", GL_TRIANGLES, count, GL_UNSIGNED_SHORT, bufferOffset(offset),
                             baseVertex);
    };
    EXPECT_EQ(calls.list(),
              QStringList({CallLog::call("glUniform1ui", 2, 50), draw(3, 0, 0), CallLog::call("glUniform1ui", 2, 51),
                           draw(6, 6, 10), CallLog::call("glUniform1ui", 2, 52), draw(9, 18, -1)}));
    EXPECT_EQ(takeTotals(), Totals({3, 3, 18}));
    unbind();
}

TEST_F(DrawBuffersTest, OffsetsCountFourBytesForEachIndexOfThatSize)
{
    bindIndexed(12, GL_UNSIGNED_INT);
    object.setDrawElementsIndirectCommands(kCommands, 3);
    CallLog calls;
    EXPECT_TRUE(object.draw(linkedProgram().data()));
    EXPECT_EQ(calls.named({"glDrawElementsBaseVertex"}).last(),
              CallLog::call("glDrawElementsBaseVertex", GL_TRIANGLES, 9, GL_UNSIGNED_INT, bufferOffset(36), -1));
    unbind();
}

TEST_F(DrawBuffersTest, ASubsetIsDrawnInItsOwnOrderAndTheWholeListIsCounted)
{
    driver.setUniformLocation("u_DrawID", 2);
    const auto program = linkedProgram();
    bindIndexed();
    QList<DrawElementsIndirectCommand> commands;
    for (quint32 i = 0; i < 10; ++i)
        commands.append({3 * (i + 1), 1, 10 * i, 0, 0});
    object.setDrawElementsIndirectCommands(commands.constData(), 10);
    const QList<int> subset = {9, 0, 4};
    CallLog calls;
    EXPECT_TRUE(object.draw(program.data(), &subset));
    EXPECT_EQ(calls.named({"glUniform1ui"}),
              QStringList({CallLog::call("glUniform1ui", 2, 9), CallLog::call("glUniform1ui", 2, 0),
                           CallLog::call("glUniform1ui", 2, 4)}));
    EXPECT_EQ(calls.named({"glDrawElementsBaseVertex"}).first(),
              CallLog::call("glDrawElementsBaseVertex", GL_TRIANGLES, 30, GL_UNSIGNED_SHORT, bufferOffset(180), 0));
    EXPECT_EQ(takeTotals(), Totals({10, 10, 30 + 3 + 15}));

    const QList<int> none;
    calls.clear();
    EXPECT_TRUE(object.draw(program.data(), &none));
    EXPECT_EQ(calls.list(), QStringList());
    EXPECT_EQ(takeTotals(), Totals({10, 10, 0}));
    unbind();
}

TEST_F(DrawBuffersTest, ASubsetOutsideTheListFailsBeforeAnythingIsDrawn)
{
    bindIndexed();
    object.setDrawElementsIndirectCommands(kCommands, 3);
    const char* const condition = "0 <= command && command < this->_commandsCount";
    LogCapture log;
    CallLog calls;
    const QList<int> above = {0, 3};
    EXPECT_FALSE(object.draw(nullptr, &above));
    const QList<int> below = {0, -1};
    EXPECT_FALSE(object.draw(nullptr, &below));
    EXPECT_EQ(calls.list(), QStringList());
    EXPECT_EQ(
        log.messages(),
        QStringList({assertion(condition, "Command (3) is not one of the 3 DrawElementsIndirectCommands on draw"),
                     assertion(condition, "Command (-1) is not one of the 3 DrawElementsIndirectCommands on draw")}));
    EXPECT_EQ(takeTotals(), Totals({0, 0, 0}));
    unbind();
}

TEST_F(DrawBuffersTest, CommandsWithoutAnIndexBufferFail)
{
    object.setIndexedDraw({}, 12, GL_UNSIGNED_SHORT);
    object.setDrawElementsIndirectCommands(kCommands, 3);
    object.bind();
    LogCapture log;
    CallLog calls;
    EXPECT_FALSE(object.draw());
    EXPECT_EQ(calls.list(), QStringList());
    EXPECT_EQ(log.messages(),
              QStringList(assertion("false == this->_boIndex.isNull()", "Index buffer object is not set on draw")));
}

TEST_F(DrawBuffersTest, CommandsBeforeTheIndexTypeAreReportedAndAllBeginAtZero)
{
    LogCapture log;
    object.setDrawElementsIndirectCommands(kCommands, 3);
    EXPECT_EQ(log.messages(QtCriticalMsg),
              QStringList(QStringLiteral("bytesFromInternalFormat() does not implement yet : 0x0000")));
    EXPECT_EQ(object.numDrawCommands(), 3);
    bindIndexed();
    CallLog calls;
    EXPECT_TRUE(object.draw(linkedProgram().data()));
    EXPECT_EQ(calls.named({"glDrawElementsBaseVertex"}).last(),
              CallLog::call("glDrawElementsBaseVertex", GL_TRIANGLES, 9, GL_UNSIGNED_SHORT, nullptr, -1));
    unbind();
}

TEST_F(DrawBuffersTest, BrokenCommandListsAreReportedAndChangeNothing)
{
    bindIndexed();
    object.setDrawElementsIndirectCommands(kCommands, 3);
    LogCapture log;
    object.setDrawElementsIndirectCommands(kCommands, -1);
    object.setDrawElementsIndirectCommands(nullptr, 2);
    EXPECT_EQ(object.numDrawCommands(), 3);
    EXPECT_EQ(log.messages(QtCriticalMsg),
              QStringList({assertion("0 <= count", "DrawElementsIndirectCommands count (-1) is negative"),
                           assertion("0 == count || nullptr != commands", "DrawElementsIndirectCommands are NULL")}));
    object.setDrawElementsIndirectCommands(nullptr, 0);
    EXPECT_EQ(object.numDrawCommands(), 0);
    CallLog calls;
    EXPECT_TRUE(object.draw(linkedProgram().data()));
    EXPECT_EQ(calls.count("glDrawElements"), 1) << "without sub-draws the whole is drawn";
    unbind();
}

// -- by base instance --

class DrawBuffersBaseInstanceTest : public DrawBuffersTest
{
protected:
    void SetUp() override
    {
        DrawBuffersTest::SetUp();
        driver.setExtensions({"GL_ARB_shader_draw_parameters"});
        ASSERT_TRUE(DrawBuffers::isBaseInstanceDrawingSupported());
        DrawBuffers::useBaseInstanceDrawing(true);
    }
};

TEST_F(DrawBuffersBaseInstanceTest, IndexedInstancesAreOneCall)
{
    bindIndexed();
    object.setInstanceCount(5);
    object.setDrawIDBase(7);
    object.setBaseVertex(2);
    object.setIndexBufferOffset(8);
    CallLog calls;
    EXPECT_TRUE(object.draw());
    EXPECT_EQ(calls.list(), QStringList(CallLog::call("glDrawElementsInstancedBaseVertexBaseInstance", GL_TRIANGLES, 12,
                                                      GL_UNSIGNED_SHORT, bufferOffset(8), 5, 2, 7)));
    EXPECT_EQ(takeTotals(), Totals({1, 1, 12}));
    unbind();
}

TEST_F(DrawBuffersBaseInstanceTest, WithoutIndicesTheBaseVertexIsTheFirst)
{
    object.setVertexCount(6);
    object.setInstanceCount(5);
    object.setDrawIDBase(7);
    object.setBaseVertex(2);
    object.bind();
    CallLog calls;
    EXPECT_TRUE(object.draw(linkedProgram().data()));
    EXPECT_EQ(calls.named({"glDrawArraysInstancedBaseInstance"}),
              QStringList(CallLog::call("glDrawArraysInstancedBaseInstance", GL_TRIANGLES, 2, 6, 5, 7)));
    EXPECT_EQ(calls.count("glUniform1ui"), 0);
    EXPECT_EQ(takeTotals(), Totals({1, 1, 0}));
}

TEST_F(DrawBuffersBaseInstanceTest, AnInstanceCountOfZeroIsPassedOn)
{
    object.setVertexCount(6);
    object.setInstanceCount(0);
    object.bind();
    CallLog calls;
    EXPECT_TRUE(object.draw());
    EXPECT_EQ(calls.list(), QStringList(CallLog::call("glDrawArraysInstancedBaseInstance", GL_TRIANGLES, 0, 6, 0, 0)));
    EXPECT_EQ(takeTotals(), Totals({1, 1, 0}));
}

TEST_F(DrawBuffersBaseInstanceTest, CommandsAreNotDrawn)
{
    bindIndexed();
    object.setDrawElementsIndirectCommands(kCommands, 3);
    LogCapture log;
    CallLog calls;
    EXPECT_FALSE(object.draw());
    EXPECT_EQ(calls.list(), QStringList());
    EXPECT_EQ(log.messages(QtDebugMsg), QStringList(QStringLiteral("##### COMMAND COUNT")));
    EXPECT_EQ(takeTotals(), Totals({0, 0, 0}));
    unbind();
}

TEST_F(DrawBuffersBaseInstanceTest, WithoutTheFunctionsDrawFails)
{
    Access::resetEntryPoints(); // the mode is chosen, but nobody has asked whether the driver can
    object.setVertexCount(6);
    object.bind();
    LogCapture log;
    CallLog calls;
    EXPECT_FALSE(object.draw());
    object.unbind();
    bindIndexed();
    calls.clear();
    EXPECT_FALSE(object.draw());
    EXPECT_EQ(calls.list(), QStringList());
    EXPECT_EQ(log.messages(),
              QStringList({assertion("nullptr != _drawArraysInstancedBaseInstance",
                                     "glDrawArraysInstancedBaseInstance is NULL on draw"),
                           assertion("nullptr != _drawElementsInstancedBaseVertexBaseInstance",
                                     "glDrawElementsInstancedBaseVertexBaseInstance is NULL on draw")}));
    EXPECT_EQ(takeTotals(), Totals({0, 0, 0}));
    unbind();
}

TEST_F(DrawBuffersTest, BaseInstanceDrawingNeedsBothFunctionsAndTheExtension)
{
    driver.setExtensions({"GL_ARB_shader_draw_parameters"});
    driver.refuse("glDrawArraysInstancedBaseInstance");
    LogCapture log;
    EXPECT_FALSE(DrawBuffers::isBaseInstanceDrawingSupported());
    driver.offer("glDrawArraysInstancedBaseInstance");
    driver.refuse("glDrawElementsInstancedBaseVertexBaseInstance");
    Access::resetEntryPoints();
    EXPECT_FALSE(DrawBuffers::isBaseInstanceDrawingSupported());
    driver.offer("glDrawElementsInstancedBaseVertexBaseInstance");
    EXPECT_TRUE(DrawBuffers::isBaseInstanceDrawingSupported());
    EXPECT_EQ(log.texts(), QStringList()) << "a missing function is an answer, not a message";
}

TEST_F(DrawBuffersTest, BaseInstanceDrawingIsNotSupportedWithoutTheExtension)
{
    EXPECT_FALSE(DrawBuffers::isBaseInstanceDrawingSupported());
}

TEST_F(DrawBuffersTest, FunctionsAreLookedUpWhileTheyAreMissing)
{
    driver.refuse("glDrawArraysInstancedBaseInstance");
    driver.procLookups.clear();
    DrawBuffers::isBaseInstanceDrawingSupported();
    DrawBuffers::isBaseInstanceDrawingSupported();
    EXPECT_EQ(driver.procLookups,
              QList<QByteArray>({"glDrawArraysInstancedBaseInstance", "glDrawElementsInstancedBaseVertexBaseInstance",
                                 "glDrawArraysInstancedBaseInstance"}));
}

TEST_F(DrawBuffersTest, SetupDefinesTheModeForShaders)
{
    const QString source = QStringLiteral("#version 150\n");
    const QString defined = QStringLiteral("#define DRAW_BUFFER_USE_BASE_INSTANCE 1\n");
    GLSLMacroProcessor processor;
    DrawBuffers::setup(nullptr);
    DrawBuffers::setup(&processor);
    EXPECT_FALSE(GLSLMacroProcessor::process(source, &processor).contains(defined));
    DrawBuffers::useBaseInstanceDrawing(true);
    DrawBuffers::setup(nullptr);
    DrawBuffers::setup(&processor);
    EXPECT_TRUE(GLSLMacroProcessor::process(source, &processor).contains(defined));
}

// -- the other ways to draw --

TEST_F(DrawBuffersTest, DrawInstancedIgnoresOffsetsAndCountsNothing)
{
    object.setVertexCount(6);
    object.setBaseVertex(3);
    object.setDrawIDBase(5);
    object.bind();
    CallLog calls;
    EXPECT_TRUE(object.drawInstanced(4));
    EXPECT_EQ(calls.list(), QStringList(CallLog::call("glDrawArraysInstanced", GL_TRIANGLES, 0, 6, 4)));
    object.unbind();

    bindIndexed();
    object.setIndexBufferOffset(8);
    calls.clear();
    EXPECT_TRUE(object.drawInstanced(4));
    EXPECT_EQ(calls.list(),
              QStringList(CallLog::call("glDrawElementsInstanced", GL_TRIANGLES, 12, GL_UNSIGNED_SHORT, nullptr, 4)));
    EXPECT_EQ(takeTotals(), Totals({0, 0, 0}));
    unbind();
}

TEST_F(DrawBuffersTest, MultiDrawIsOneCallForAllCommands)
{
    driver.setExtensions({"GL_ARB_multi_draw_indirect"});
    driver.load();
    bindIndexed();
    object.setDrawElementsIndirectCommands(kCommands, 3);
    Access::useMultiDrawIndirect(object, true);
    const auto commandBuffer = OpenGLDeviceContext::current()->newBuffer(); // buffer 2
    commandBuffer->setTarget(GL_DRAW_INDIRECT_BUFFER);
    Access::setCommandBuffer(object, commandBuffer);
    CallLog calls;
    EXPECT_TRUE(object.draw());
    EXPECT_EQ(calls.list(), QStringList({CallLog::call("glBindBuffer", GL_DRAW_INDIRECT_BUFFER, 2),
                                         CallLog::call("glMultiDrawElementsIndirect", GL_TRIANGLES, GL_UNSIGNED_SHORT,
                                                       nullptr, 3, 20),
                                         CallLog::call("glBindBuffer", GL_DRAW_INDIRECT_BUFFER, 0)}));
    EXPECT_EQ(takeTotals(), Totals({1, 3, 18}));
    object.setDrawElementsIndirectCommands(kCommands, 3);
    calls.clear();
    EXPECT_TRUE(object.draw(linkedProgram().data()));
    EXPECT_EQ(calls.count("glMultiDrawElementsIndirect"), 0) << "a new list ends the mode";
    unbind();
}

TEST_F(DrawBuffersTest, MultiDrawFailsWithTheWordsOfEachPrecondition)
{
    Access::useMultiDrawIndirect(object, true);
    object.bind();
    LogCapture log;
    CallLog calls;
    const auto expectFailure = [&](const char* condition, const char* message)
    {
        log.clear();
        EXPECT_FALSE(object.draw());
        EXPECT_EQ(log.messages(), QStringList(assertion(condition, message)));
        EXPECT_EQ(calls.named({"glBindBuffer", "glMultiDrawElementsIndirect"}), QStringList());
        EXPECT_EQ(takeTotals(), Totals({0, 0, 0}));
    };
    expectFailure("0 != this->_commandsCount", "DrawElementsIndirectCommandsCount is not set on draw");
    object.setDrawElementsIndirectCommands(kCommands, 3);
    Access::useMultiDrawIndirect(object, true);
    expectFailure("0 != this->_indexType", "Index type is not setup on draw");
    object.setIndexedDraw({}, 12, GL_UNSIGNED_SHORT);
    expectFailure("false == this->_boIndex.isNull()", "Index buffer object is not set on draw");
    object.setIndexedDraw(newIndexBuffer(), 12, GL_UNSIGNED_SHORT);
    expectFailure("false == this->_boCommands.isNull()", "Indirect buffer object is not set on draw");
    const auto commandBuffer = OpenGLDeviceContext::current()->newBuffer();
    commandBuffer->setTarget(GL_DRAW_INDIRECT_BUFFER);
    Access::setCommandBuffer(object, commandBuffer);
    expectFailure("nullptr != ::_ptrc_glMultiDrawElementsIndirect", "glMultiDrawElementsIndirect is NULL on draw");
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

TEST_F(DrawBuffersTest, TotalsAreReadOnceAndThenZero)
{
    object.setVertexCount(6);
    bindIndexed();
    EXPECT_TRUE(object.draw(linkedProgram().data()));
    EXPECT_EQ(DrawBuffers::getAndResetTotalDrawCalls(), 1u);
    EXPECT_EQ(DrawBuffers::getAndResetTotalDrawCalls(), 0u);
    EXPECT_EQ(DrawBuffers::getAndResetTotalDrawBatches(), 1u);
    EXPECT_EQ(DrawBuffers::getAndResetTotalDrawBatches(), 0u);
    EXPECT_EQ(DrawBuffers::getAndResetTotalDrawIndices(), 12u);
    EXPECT_EQ(DrawBuffers::getAndResetTotalDrawIndices(), 0u);
    unbind();
}

// -- the commands as a uniform block --

QByteArray uploadedBytes;

class DrawBuffersUniformTest : public DrawBuffersTest
{
protected:
    void SetUp() override
    {
        DrawBuffersTest::SetUp();
        uploadedBytes.clear();
        driver.replace(
            "glBufferData", +[](GLenum, GLsizeiptr size, const void* data, GLenum)
                            { uploadedBytes = QByteArray(static_cast<const char*>(data), qsizetype(size)); });
        driver.load();
        object.setIndexedDraw(newIndexBuffer(), 12, GL_UNSIGNED_SHORT); // buffer 1
    }
};

TEST_F(DrawBuffersUniformTest, RecordsAreFiveWordsAndTwelveBytesOfFill)
{
    object.setDrawElementsIndirectCommands(kCommands, 3);
    CallLog calls;
    const auto block = object.getDrawElementsIndirectCommandsUniformBufferObject();
    ASSERT_FALSE(block.isNull());
    EXPECT_EQ(calls.named({"glBindBuffer"}), QStringList({CallLog::call("glBindBuffer", GL_UNIFORM_BUFFER, 2),
                                                          CallLog::call("glBindBuffer", GL_UNIFORM_BUFFER, 0)}));
    EXPECT_EQ(calls.named({"glBufferData"}).size(), 1);
    EXPECT_TRUE(calls.named({"glBufferData"}).first().endsWith(CallLog::call("", GL_STATIC_DRAW).mid(1)));
    ASSERT_EQ(uploadedBytes.size(), 96);
    quint32 words[24];
    std::memcpy(words, uploadedBytes.constData(), 96);
    const QList<quint32> expected = {3, 1, 0, 0,          0, 0, 0, 0, //
                                     6, 5, 3, 10,         7, 0, 0, 0, //
                                     9, 1, 9, 0xFFFFFFFF, 0, 0, 0, 0};
    EXPECT_EQ(QList<quint32>(words, words + 24), expected);
    EXPECT_EQ(block->bufferObject()->target(), GLenum(GL_UNIFORM_BUFFER));
    EXPECT_EQ(block->bufferObject()->valueCount(), 3);
    EXPECT_EQ(block->bufferObject()->valueSize(), 32u);
    EXPECT_EQ(block->memoryEstimateCPU(),
              sizeof(UniformBufferObject) + sizeof(BufferObject) + strlen("u_DrawElementsIndirectCommandsUniform"));
}

TEST_F(DrawBuffersUniformTest, TheBlockIsMadeOnceAndKeepsItsCommands)
{
    object.setDrawElementsIndirectCommands(kCommands, 3);
    const auto block = object.getDrawElementsIndirectCommandsUniformBufferObject();
    object.setDrawElementsIndirectCommands(kCommands, 1);
    CallLog calls;
    EXPECT_EQ(object.getDrawElementsIndirectCommandsUniformBufferObject(), block);
    EXPECT_EQ(calls.list(), QStringList());
    EXPECT_EQ(block->bufferObject()->valueCount(), 3);
}

TEST_F(DrawBuffersUniformTest, WithoutCommandsTheBufferStaysEmptyAndIsReported)
{
    LogCapture log;
    const auto block = object.getDrawElementsIndirectCommandsUniformBufferObject();
    ASSERT_FALSE(block.isNull());
    EXPECT_EQ(block->bufferObject()->valueCount(), 0);
    EXPECT_EQ(log.messages(),
              QStringList(assertion("0 != valueCount", "Buffer Object needs more and 0 values during upload")));
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

// ---- on the real driver --------------------------------------------------------------------------------------------

class DrawBuffersGL : public GLTest
{
protected:
    void SetUp() override
    {
        GLTest::SetUp();
        Access::resetEntryPoints();
        Access::resetMode();
        UniformBufferObjectTestAccess::forgetContexts();
        object.reset(new DrawBuffers(nullptr));
        object->setVAO(OpenGLDeviceContext::current()->newVAO());
        object->setPrimitiveType(GL_POINTS);
    }

    void TearDown() override
    {
        object.reset();
        Access::resetMode();
        GLTest::TearDown();
    }

    /// Vertices with the values 0, 1, 2, …
    void setVertices(int count)
    {
        QList<float> values;
        for (int i = 0; i < count; ++i)
            values.append(float(i));
        auto buffer = OpenGLDeviceContext::current()->newBuffer();
        buffer->setTarget(GL_ARRAY_BUFFER);
        ASSERT_TRUE(object->VAO()->upload(QStringLiteral("va_Value"), buffer, values, 1, GL_STATIC_DRAW));
        object->setVertexCount(GLuint(count));
    }

    void setIndices(const QList<GLushort>& values)
    {
        const auto buffer = newIndexBuffer();
        ASSERT_TRUE(buffer->bind());
        ASSERT_TRUE(buffer->uploadGLushortData(values.constData(), int(values.size()), GL_STATIC_DRAW));
        ASSERT_TRUE(buffer->unbind());
        object->setIndexedDraw(buffer, int(values.size()), GL_UNSIGNED_SHORT);
    }

    /// A program that puts out each vertex's value and what getDrawID() says, in the mode that is chosen.
    static QSharedPointer<ShaderProgram> drawIDProgram()
    {
        auto program = QSharedPointer<ShaderProgram>::create();
        GLSLMacroProcessor processor;
        DrawBuffers::setup(&processor);
        program->setMacroProcessor(&processor);
        program->addShaderFromFile(GL_VERTEX_SHADER, QStringLiteral("VrkUtilities.glslc"));
        program->addShaderFromFile(GL_VERTEX_SHADER, QStringLiteral("VrkUtilities.vert"));
        program->addShader(GL_VERTEX_SHADER, QStringLiteral("#version 150\n"
                                                            "#include \"VrkUtilities.glslh\"\n"
                                                            "in float va_Value;\n"
                                                            "out vec2 vo_Value;\n"
                                                            "void main() {\n"
                                                            "    vo_Value = vec2(va_Value, float(getDrawID()));\n"
                                                            "    gl_Position = vec4(0.0);\n"
                                                            "}\n"));
        program->setTransformFeedbackVaryings({QStringLiteral("vo_Value")}, GL_INTERLEAVED_ATTRIBS);
        EXPECT_TRUE(program->link());
        program->setMacroProcessor(nullptr);
        return program;
    }

    /// The pairs of value and draw identifier that reach the shader during `draw`.
    template <typename Draw> QList<QPair<int, int>> drawn(Draw draw)
    {
        const auto program = drawIDProgram();
        EXPECT_TRUE(program->bind());
        EXPECT_TRUE(object->bind());
        EXPECT_TRUE(object->VAO()->enableShaderProgramArrays(program.data()));
        TransformFeedback feedback(GL_POINTS);
        EXPECT_TRUE(draw(program.data()));
        const QList<float> values = feedback.end<float>(2);
        EXPECT_TRUE(object->unbind());
        EXPECT_TRUE(program->unbind());
        QList<QPair<int, int>> pairs;
        for (qsizetype i = 0; i < values.size(); i += 2)
            pairs.append({int(values[i]), int(values[i + 1])});
        return pairs;
    }

    QList<QPair<int, int>> drawn()
    {
        return drawn([this](ShaderProgram* program) { return object->draw(program); });
    }

    /// Both modes where the driver has them, else the one.
    static QList<bool> modes()
    {
        const bool supported = DrawBuffers::isBaseInstanceDrawingSupported();
        EXPECT_EQ(supported, !isFloor());
        return supported ? QList<bool>{false, true} : QList<bool>{false};
    }

    using Pairs = QList<QPair<int, int>>;

    QScopedPointer<DrawBuffers> object;
};

TEST_F(DrawBuffersGL, InstancesShowTheirIdentifiersInBothModes)
{
    setVertices(2);
    object->setInstanceCount(3);
    object->setDrawIDBase(40);
    for (const bool baseInstance : modes())
    {
        DrawBuffers::useBaseInstanceDrawing(baseInstance);
        EXPECT_EQ(drawn(), Pairs({{0, 40}, {1, 40}, {0, 41}, {1, 41}, {0, 42}, {1, 42}})) << baseInstance;
        EXPECT_EQ(takeTotals(), baseInstance ? Totals({1, 1, 0}) : Totals({3, 3, 0}));
    }
}

TEST_F(DrawBuffersGL, IndexedInstancesShowTheirIdentifiersInBothModes)
{
    setVertices(8);
    setIndices({9, 9, 2, 0, 1});
    object->setIndexedDraw(object->indexBO(), 3, GL_UNSIGNED_SHORT);
    object->setIndexBufferOffset(4);
    object->setBaseVertex(5);
    object->setInstanceCount(2);
    object->setDrawIDBase(7);
    for (const bool baseInstance : modes())
    {
        DrawBuffers::useBaseInstanceDrawing(baseInstance);
        EXPECT_EQ(drawn(), Pairs({{7, 7}, {5, 7}, {6, 7}, {7, 8}, {5, 8}, {6, 8}})) << baseInstance;
        EXPECT_EQ(takeTotals(), baseInstance ? Totals({1, 1, 3}) : Totals({2, 2, 6}));
    }
}

TEST_F(DrawBuffersGL, TheBaseVertexIsTheFirstOneByBaseInstanceAlone)
{
    setVertices(4);
    object->setVertexCount(2);
    object->setBaseVertex(2);
    for (const bool baseInstance : modes())
    {
        DrawBuffers::useBaseInstanceDrawing(baseInstance);
        EXPECT_EQ(drawn(), baseInstance ? Pairs({{2, 0}, {3, 0}}) : Pairs({{0, 0}, {1, 0}}));
    }
}

TEST_F(DrawBuffersGL, WithoutAProgramTheOneInUseIsServed)
{
    setVertices(1);
    object->setDrawIDBase(9);
    EXPECT_EQ(drawn([this](ShaderProgram*) { return object->draw(); }), Pairs({{0, 9}}));
}

TEST_F(DrawBuffersGL, SubDrawsShowTheirNumbers)
{
    setVertices(10);
    setIndices({0, 1, 2, 3, 4, 5});
    const DrawElementsIndirectCommand commands[] = {{2, 1, 0, 0, 0}, {1, 1, 5, 4, 0}, {2, 1, 2, 0xFFFFFFFF, 0}};
    object->setDrawElementsIndirectCommands(commands, 3);
    object->setDrawIDBase(20);
    EXPECT_EQ(drawn(), Pairs({{0, 20}, {1, 20}, {9, 21}, {1, 22}, {2, 22}}));
    const QList<int> subset = {2, 0};
    EXPECT_EQ(drawn([&](ShaderProgram* program) { return object->draw(program, &subset); }),
              Pairs({{1, 22}, {2, 22}, {0, 20}, {1, 20}}));
}

TEST_F(DrawBuffersGL, DrawInstancedLeavesTheIdentifierAlone)
{
    setVertices(2);
    object->setDrawIDBase(20);
    EXPECT_EQ(drawn([this](ShaderProgram*) { return object->drawInstanced(2); }),
              Pairs({{0, 0}, {1, 0}, {0, 0}, {1, 0}}));
    setIndices({1});
    EXPECT_EQ(drawn([this](ShaderProgram*) { return object->drawInstanced(2); }), Pairs({{1, 0}, {1, 0}}));
}

TEST_F(DrawBuffersGL, MultiDrawReadsTheCommandBuffer)
{
    setVertices(10);
    setIndices({0, 1, 2, 3, 4, 5});
    const DrawElementsIndirectCommand commands[] = {{2, 1, 0, 0, 0}, {1, 1, 5, 4, 0}};
    object->setDrawElementsIndirectCommands(commands, 2);
    Access::useMultiDrawIndirect(*object, true);
    const auto commandBuffer = OpenGLDeviceContext::current()->newBuffer();
    commandBuffer->setTarget(isFloor() ? GL_ARRAY_BUFFER : GL_DRAW_INDIRECT_BUFFER);
    {
        const AutoBinder binder(commandBuffer.data());
        ASSERT_TRUE(commandBuffer->uploadArbitraryData(commands, 2, GL_STATIC_DRAW, sizeof(commands[0])));
    }
    Access::setCommandBuffer(*object, commandBuffer);
    if (isFloor())
    {
        LogCapture log;
        EXPECT_EQ(drawn([this](ShaderProgram* program) { return !object->draw(program); }), Pairs());
        EXPECT_EQ(log.messages(QtCriticalMsg), QStringList(assertion("nullptr != ::_ptrc_glMultiDrawElementsIndirect",
                                                                     "glMultiDrawElementsIndirect is NULL on draw")));
        return;
    }
    EXPECT_EQ(drawn(), Pairs({{0, 0}, {1, 0}, {9, 0}}));
    EXPECT_EQ(takeTotals(), Totals({1, 2, 3}));
}

TEST_F(DrawBuffersGL, RebindSwitchesGeometryWithItsIndices)
{
    setVertices(4);
    setIndices({3, 2});
    DrawBuffers other(nullptr);
    other.setPrimitiveType(GL_POINTS);
    other.setVAO(OpenGLDeviceContext::current()->newVAO());
    ASSERT_TRUE(
        other.VAO()->upload(QStringLiteral("va_Value"), object->VAO()->bo(QStringLiteral("va_Value")), 1, GL_FLOAT));
    other.setIndexedDraw(object->indexBO(), 2, GL_UNSIGNED_SHORT); // in another vertex array
    EXPECT_EQ(drawn(
                  [&](ShaderProgram* program)
                  {
                      bool good = object->draw(program) && other.rebind(object.data()) &&
                                  other.VAO()->enableShaderProgramArrays(program);
                      other.setDrawIDBase(1);
                      good = good && other.draw(program) && object->rebind(&other);
                      object->setDrawIDBase(2);
                      return good && object->draw(program);
                  }),
              Pairs({{3, 0}, {2, 0}, {3, 1}, {2, 1}, {3, 2}, {2, 2}}));
}

TEST_F(DrawBuffersGL, TheShaderReadsTheCommandsOfItsDraw)
{
    QList<DrawElementsIndirectCommand> commands;
    for (quint32 i = 0; i < 100; ++i) // what the block holds
        commands.append({1, i, 2 * i, 3 * i, 4 * i});
    setVertices(1);
    setIndices({0});
    object->setDrawElementsIndirectCommands(commands.constData(), 100);
    const auto block = object->getDrawElementsIndirectCommandsUniformBufferObject();
    object->setDrawElementsIndirectCommands(nullptr, 0);

    ShaderProgram program;
    program.addShader(GL_VERTEX_SHADER,
                      QStringLiteral("#version 150\n"
                                     "#include \"DrawElementsIndirectCommand.glslh\"\n"
                                     "out vec4 vo_Value;\n"
                                     "void main() {\n"
                                     "    DrawElementsIndirectCommand c = u_DrawElementsIndirectCommands[u_DrawID];\n"
                                     "    vo_Value = vec4(c.count + c.instanceCount, c.firstIndex, c.baseVertex,\n"
                                     "                    c.baseInstance);\n"
                                     "    gl_Position = vec4(0.0);\n"
                                     "}\n"));
    program.setTransformFeedbackVaryings({QStringLiteral("vo_Value")}, GL_INTERLEAVED_ATTRIBS);
    ASSERT_TRUE(program.link() && program.bind());
    EXPECT_TRUE(block->bind());
    ASSERT_TRUE(object->bind());
    TransformFeedback feedback(GL_POINTS);
    for (const int id : {0, 1, 99})
    {
        object->setDrawIDBase(id);
        EXPECT_TRUE(object->draw(&program));
    }
    EXPECT_EQ(feedback.end<float>(4), QList<float>({1, 0, 0, 0, 2, 2, 3, 4, 100, 198, 297, 396}));
    object->unbind();
    EXPECT_TRUE(block->unbind());
    program.unbind();
}

TEST_F(DrawBuffersGL, TrianglesArePutWhereTheirIdentifierSays)
{
    // Four instances, each a square of 2 x 2 pixels, in a picture of 8 x 2: the identifier gives place and colour.
    object->setPrimitiveType(GL_TRIANGLES);
    const auto buffer = OpenGLDeviceContext::current()->newBuffer();
    buffer->setTarget(GL_ARRAY_BUFFER);
    ASSERT_TRUE(
        object->VAO()->upload(QStringLiteral("va_Vertex"), buffer, {0, 0, 1, 0, 1, 1, 0, 1}, 2, GL_STATIC_DRAW));
    setIndices({0, 1, 2, 0, 2, 3});
    object->setInstanceCount(4);
    for (const bool baseInstance : modes())
    {
        DrawBuffers::useBaseInstanceDrawing(baseInstance);
        ShaderProgram program;
        GLSLMacroProcessor processor;
        DrawBuffers::setup(&processor);
        program.setMacroProcessor(&processor);
        program.addShaderFromFile(GL_VERTEX_SHADER, QStringLiteral("VrkUtilities.glslc"));
        program.addShaderFromFile(GL_VERTEX_SHADER, QStringLiteral("VrkUtilities.vert"));
        program.addShader(GL_VERTEX_SHADER,
                          QStringLiteral("#version 150\n"
                                         "#include \"VrkUtilities.glslh\"\n"
                                         "in vec2 va_Vertex;\n"
                                         "flat out float vo_Shade;\n"
                                         "void main() {\n"
                                         "    float id = float(getDrawID());\n"
                                         "    vo_Shade = (id + 1.0) / 4.0;\n"
                                         "    gl_Position = vec4((va_Vertex.x + id) / 2.0 - 1.0,\n"
                                         "                       va_Vertex.y * 2.0 - 1.0, 0.0, 1.0);\n"
                                         "}\n"));
        program.addShader(GL_FRAGMENT_SHADER, QStringLiteral("#version 150\n"
                                                             "flat in float vo_Shade;\n"
                                                             "out vec4 o_Color;\n"
                                                             "void main() { o_Color = vec4(vo_Shade); }\n"));
        ASSERT_TRUE(program.link() && program.bind());
        const OffscreenTarget target(8, 2);
        glClearColor(0, 0, 0, 0);
        glClear(GL_COLOR_BUFFER_BIT);
        ASSERT_TRUE(object->bind());
        EXPECT_TRUE(object->VAO()->enableShaderProgramArrays(&program));
        EXPECT_TRUE(object->draw(&program));
        object->unbind();
        program.unbind();
        QImage expected(8, 2, QImage::Format_RGBA8888);
        const int shades[] = {64, 128, 191, 255}; // quarters of 255, rounded
        for (int x = 0; x < 8; ++x)
            for (int y = 0; y < 2; ++y)
            {
                const int shade = shades[x / 2];
                expected.setPixel(x, y, qRgba(shade, shade, shade, shade));
            }
        EXPECT_TRUE(picturesAgree(target.read(), expected, 1, 0.5)) << baseInstance;
    }
}

} // namespace
} // namespace Harrow::Vrk::Test
