// SPDX-License-Identifier: MIT
#include "DrawBuffersTestTools.h"

#include "UniformBufferObject.h"

#include <cstring>

namespace Harrow::Vrk::Test
{
namespace
{

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
    EXPECT_EQ(withoutPlaces(calls.list()), QStringList(indicesQuery()));
    EXPECT_EQ(log.messages(), QStringList(noIndices()));
    object.setIndexedDraw(newIndexBuffer(), 12, GL_UNSIGNED_SHORT); // but not bound
    const QList<int> outside = {7};
    calls.clear();
    log.clear();
    EXPECT_FALSE(object.draw(nullptr, &outside));
    EXPECT_EQ(withoutPlaces(calls.list()), QStringList(indicesQuery()));
    EXPECT_EQ(log.messages(), QStringList(noIndices())) << "the subset is looked at after the buffer";
    EXPECT_EQ(takeTotals(), Totals({0, 0, 0}));
}

TEST_F(DrawBuffersTest, CommandsAreDrawnFromTheApplicationsOwnElementBuffer)
{
    driver.setInteger(GL_ELEMENT_ARRAY_BUFFER_BINDING, 77);
    const auto program = linkedProgram();
    object.setIndexedDraw({}, 0, GL_UNSIGNED_SHORT);
    object.setDrawElementsIndirectCommands(kCommands, 1);
    object.bind();
    LogCapture log;
    CallLog calls;
    EXPECT_TRUE(object.draw(program.data()));
    EXPECT_EQ(withoutPlaces(calls.list()),
              QStringList({indicesQuery(),
                           CallLog::call("glDrawElementsBaseVertex", GL_TRIANGLES, 3, GL_UNSIGNED_SHORT, nullptr, 0)}));
    EXPECT_EQ(log.texts(), QStringList());
    EXPECT_EQ(takeTotals(), Totals({1, 1, 3}));
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

} // namespace
} // namespace Harrow::Vrk::Test
