// SPDX-License-Identifier: MIT
#include "DrawBuffersTestTools.h"

#include "GLSLMacroProcessor.h"

namespace Harrow::Vrk::Test
{
namespace
{

using Access = DrawBuffersTestAccess;

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
    EXPECT_EQ(calls.list(), QStringList());
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

TEST_F(DrawBuffersTest, TheFirstOfTwoFaultsIsTheOneThatIsReported)
{
    const auto report = [](DrawBuffers& drawn)
    {
        LogCapture log;
        EXPECT_FALSE(drawn.draw());
        EXPECT_FALSE(drawn.drawInstanced(1));
        return log.messages();
    };
    const auto twice = [](const char* condition, const char* message) {
        return QStringList({assertion(condition, message), assertion(condition, message)});
    };
    vao->bind();
    vao->unbind();
    DrawBuffers plain(nullptr);
    plain.setVAO(vao);
    EXPECT_EQ(report(plain), twice("true == this->_vao->isBound()", "Vertex Array Object is not bound on draw"))
        << "it has no primitive type either";
    vao->bind();
    EXPECT_EQ(report(plain), twice("GLenum(-1) != this->_primitiveType", "Primitive type is not setup on draw"))
        << "it has no vertices either";
    object.setIndexedDraw(newIndexBuffer(), 0, 0);
    EXPECT_EQ(report(object), twice("0 != this->_indexType", "Index type is not setup on draw"))
        << "it has no indices either";
    object.setIndexedDraw(object.indexBO(), 0, GL_UNSIGNED_INT);
    EXPECT_EQ(report(object), twice("0 != this->_indexCount", "Index count is not setup on draw"))
        << "nor is the index buffer bound";
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
        EXPECT_EQ(calls.list(), QStringList());
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

// -- the buffer that holds the indices --

TEST_F(DrawBuffersTest, WithoutABoundIndexBufferNothingIsDrawnInAnyMode)
{
    DrawBuffers::isBaseInstanceDrawingSupported(); // fetches the functions
    object.setIndexedDraw(newIndexBuffer(), 12, GL_UNSIGNED_SHORT);
    object.setVertexCount(6); // does not help
    vao->bind();              // and not the object
    for (const bool baseInstance : {false, true})
    {
        DrawBuffers::useBaseInstanceDrawing(baseInstance);
        LogCapture log;
        CallLog calls;
        EXPECT_FALSE(object.draw());
        EXPECT_FALSE(object.drawInstanced(2));
        EXPECT_EQ(log.messages(QtCriticalMsg), QStringList({noIndices(), noIndices()}));
        EXPECT_EQ(withoutPlaces(calls.list()), QStringList({indicesQuery(), indicesQuery()}));
        EXPECT_EQ(takeTotals(), Totals({0, 0, 0}));
    }
}

TEST_F(DrawBuffersTest, AnIndexBufferThatWasSetAfterTheBindIsNotBound)
{
    object.setVertexCount(6);
    ASSERT_TRUE(object.bind());
    object.setIndexedDraw(newIndexBuffer(), 12, GL_UNSIGNED_SHORT);
    LogCapture log;
    EXPECT_FALSE(object.draw());
    EXPECT_EQ(log.messages(), QStringList(noIndices()));
}

TEST_F(DrawBuffersTest, AnIndexBufferThatIsBoundElsewhereIsAskedFor)
{
    indices = newIndexBuffer();
    object.setIndexedDraw(indices, 12, GL_UNSIGNED_SHORT);
    indices->setTarget(GL_ARRAY_BUFFER);
    ASSERT_TRUE(object.bind());
    LogCapture log;
    CallLog calls;
    EXPECT_FALSE(object.draw());
    EXPECT_EQ(log.messages(), QStringList(noIndices()));
    unbind();

    indices->setIndexedTarget(GL_ELEMENT_ARRAY_BUFFER, 0, 0, 24); // OpenGL denies such a binding
    ASSERT_TRUE(object.bind());
    log.clear();
    calls.clear();
    EXPECT_FALSE(object.draw());
    EXPECT_EQ(log.messages(), QStringList(noIndices()));
    EXPECT_EQ(withoutPlaces(calls.list()), QStringList(indicesQuery()));
    unbind();
}

TEST_F(DrawBuffersTest, TheApplicationsOwnElementBufferServesInEveryMode)
{
    driver.setInteger(GL_ELEMENT_ARRAY_BUFFER_BINDING, 77);
    DrawBuffers::isBaseInstanceDrawingSupported();
    const auto program = linkedProgram();
    object.setIndexedDraw(newIndexBuffer(), 12, GL_UNSIGNED_SHORT);
    vao->bind();
    LogCapture log;
    CallLog calls;
    EXPECT_TRUE(object.draw(program.data()));
    EXPECT_TRUE(object.drawInstanced(2));
    DrawBuffers::useBaseInstanceDrawing(true);
    EXPECT_TRUE(object.draw(program.data()));
    EXPECT_EQ(log.texts(), QStringList());
    EXPECT_EQ(
        withoutPlaces(calls.list()),
        QStringList({indicesQuery(), CallLog::call("glDrawElements", GL_TRIANGLES, 12, GL_UNSIGNED_SHORT, nullptr),
                     indicesQuery(),
                     CallLog::call("glDrawElementsInstanced", GL_TRIANGLES, 12, GL_UNSIGNED_SHORT, nullptr, 2),
                     indicesQuery(),
                     CallLog::call("glDrawElementsInstancedBaseVertexBaseInstance", GL_TRIANGLES, 12, GL_UNSIGNED_SHORT,
                                   nullptr, 1, 0, 0)}));
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

TEST_F(DrawBuffersBaseInstanceTest, AnInstanceCountOfZeroIsPassedOnWithIndicesToo)
{
    bindIndexed();
    object.setInstanceCount(0);
    CallLog calls;
    EXPECT_TRUE(object.draw());
    EXPECT_EQ(calls.list(), QStringList(CallLog::call("glDrawElementsInstancedBaseVertexBaseInstance", GL_TRIANGLES, 12,
                                                      GL_UNSIGNED_SHORT, nullptr, 0, 0, 0)));
    EXPECT_EQ(takeTotals(), Totals({1, 1, 12}));
    unbind();
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
    EXPECT_EQ(calls.list(), QStringList());
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

} // namespace
} // namespace Harrow::Vrk::Test
