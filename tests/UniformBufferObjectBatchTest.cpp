// SPDX-License-Identifier: MIT
#include "UniformBufferObjectTestTools.h"

namespace Harrow::Vrk::Test
{
namespace
{

using Access = UniformBufferObjectTestAccess;

// What the driver got from one glBindBuffersBase.
struct MultiBind
{
    GLenum target;
    GLuint first;
    QList<GLuint> buffers;
};
QList<MultiBind> multiBinds;

class UniformBufferObjectBatchTest : public UniformBufferObjectTest
{
protected:
    void SetUp() override
    {
        UniformBufferObjectTest::SetUp();
        multiBinds.clear();
        driver.replace(
            "glBindBuffersBase",
            +[](GLenum target, GLuint first, GLsizei count, const GLuint* buffers) {
                multiBinds.append({target, first, QList<GLuint>(buffers, buffers + count)});
            });
        for (int i = 0; i < 10; ++i)
            blocks.append(newBlock(newBlockBuffer()));
    }

    void TearDown() override
    {
        blocks.clear();
        UniformBufferObjectTest::TearDown();
    }

    QList<QSharedPointer<UniformBufferObject>> blocks; // on buffers 1, 2, …
};

TEST_F(UniformBufferObjectBatchTest, PointsThreeAndSevenGoInOneCallWithWhatLiesBetween)
{
    const auto program = linkedProgram({"u_Block"});
    for (int i = 0; i < 8; ++i)
        EXPECT_TRUE(blocks[i]->bind(nullptr)); // buffer i + 1 on point i
    for (const int i : {3, 4, 6, 7})
        EXPECT_TRUE(blocks[i]->unbind(nullptr)); // leaves 5, with buffer 6

    UniformBufferObject::bindBatchStart();
    CallLog calls;
    program->setUniformBlockBinding(0, 3);
    EXPECT_TRUE(blocks[8]->bind(program.data()));
    program->setUniformBlockBinding(0, 7);
    EXPECT_TRUE(blocks[9]->bind(program.data()));
    EXPECT_EQ(calls.named({"glBindBufferBase", "glBindBuffersBase"}), QStringList());
    UniformBufferObject::bindBatchFlush();
    ASSERT_EQ(multiBinds.size(), 1);
    EXPECT_EQ(multiBinds[0].target, GLenum(GL_UNIFORM_BUFFER));
    EXPECT_EQ(multiBinds[0].first, 3u);
    EXPECT_EQ(multiBinds[0].buffers, QList<GLuint>({9, 0, 6, 0, 10}));
    EXPECT_EQ(calls.count("glBindBufferBase"), 0);
}

TEST_F(UniformBufferObjectBatchTest, WithoutMultiBindEachPointOfTheRangeIsBound)
{
    driver.refuse("glBindBuffersBase");
    for (int i = 0; i < 3; ++i)
        EXPECT_TRUE(blocks[i]->bind(nullptr));
    EXPECT_TRUE(blocks[0]->unbind(nullptr));
    EXPECT_TRUE(blocks[1]->unbind(nullptr));
    UniformBufferObject::bindBatchStart();
    EXPECT_TRUE(blocks[4]->bind(nullptr)); // point 0
    EXPECT_TRUE(blocks[5]->bind(nullptr)); // point 1
    EXPECT_TRUE(blocks[6]->bind(nullptr)); // point 3
    EXPECT_TRUE(blocks[4]->unbind(nullptr));
    CallLog calls;
    UniformBufferObject::bindBatchFlush();
    EXPECT_EQ(calls.list(), QStringList({bindBase(0, 0), bindBase(1, 6), bindBase(2, 3), bindBase(3, 7)}));
}

TEST_F(UniformBufferObjectBatchTest, StartAndFlushServeUniformThenStorageBlocks)
{
    const auto storage = newBlock(newBlockBuffer(16, GL_SHADER_STORAGE_BUFFER));
    CallLog calls;
    UniformBufferObject::bindBatchStart();
    ASSERT_EQ(calls.list().size(), 2) << "both records are made";
    EXPECT_TRUE(calls.list().at(0).startsWith(QStringLiteral("glGetIntegerv(0x8a2f, ")));
    EXPECT_TRUE(calls.list().at(1).startsWith(QStringLiteral("glGetIntegerv(0x90dd, ")));
    EXPECT_TRUE(storage->bind(nullptr));
    EXPECT_TRUE(blocks[0]->bind(nullptr));
    UniformBufferObject::bindBatchFlush();
    ASSERT_EQ(multiBinds.size(), 2);
    EXPECT_EQ(multiBinds[0].target, GLenum(GL_UNIFORM_BUFFER));
    EXPECT_EQ(multiBinds[0].buffers, QList<GLuint>({1}));
    EXPECT_EQ(multiBinds[1].target, GLenum(GL_SHADER_STORAGE_BUFFER));
    EXPECT_EQ(multiBinds[1].buffers, QList<GLuint>({11}));
}

TEST_F(UniformBufferObjectBatchTest, AnEmptyBatchCallsNothingAndEnds)
{
    UniformBufferObject::bindBatchStart();
    CallLog calls;
    UniformBufferObject::bindBatchFlush();
    EXPECT_EQ(calls.list(), QStringList());
    EXPECT_EQ(Access::uniformRecord()._batchFirst, -1);
    EXPECT_TRUE(blocks[0]->bind(nullptr));
    EXPECT_EQ(calls.list(), QStringList(bindBase(0, 1)));
}

TEST_F(UniformBufferObjectBatchTest, AFlushWithoutAStartCallsNothing)
{
    EXPECT_TRUE(blocks[0]->bind(nullptr));
    CallLog calls;
    UniformBufferObject::bindBatchFlush();
    EXPECT_EQ(calls.named({"glBindBufferBase", "glBindBuffersBase"}), QStringList());
}

TEST_F(UniformBufferObjectBatchTest, ASecondStartForgetsTheRange)
{
    UniformBufferObject::bindBatchStart();
    EXPECT_TRUE(blocks[0]->bind(nullptr));
    UniformBufferObject::bindBatchStart();
    EXPECT_TRUE(blocks[1]->bind(nullptr));
    UniformBufferObject::bindBatchFlush();
    ASSERT_EQ(multiBinds.size(), 1);
    EXPECT_EQ(multiBinds[0].first, 1u);
    EXPECT_EQ(multiBinds[0].buffers, QList<GLuint>({2}));
}

TEST_F(UniformBufferObjectBatchTest, UnbindInABatchIsMadeAtOnce)
{
    UniformBufferObject::bindBatchStart();
    EXPECT_TRUE(blocks[0]->bind(nullptr));
    CallLog calls;
    EXPECT_TRUE(blocks[0]->unbind(nullptr));
    EXPECT_EQ(calls.list(), QStringList(bindBase(0, 0)));
    UniformBufferObject::bindBatchFlush();
    ASSERT_EQ(multiBinds.size(), 1);
    EXPECT_EQ(multiBinds[0].buffers, QList<GLuint>({0})) << "the point is still in the range, and cleared";
}

TEST_F(UniformBufferObjectBatchTest, ABoundBufferTakesNoPartInABatch)
{
    EXPECT_TRUE(blocks[0]->bind(nullptr));
    UniformBufferObject::bindBatchStart();
    EXPECT_TRUE(blocks[0]->bind(nullptr));
    UniformBufferObject::bindBatchFlush();
    EXPECT_TRUE(multiBinds.isEmpty());
}

TEST_F(UniformBufferObjectBatchTest, AnEmptyBufferIsNotReportedInABatch)
{
    const auto empty = newBlock(newBlockBuffer(0));
    UniformBufferObject::bindBatchStart();
    LogCapture log;
    EXPECT_TRUE(empty->bind(nullptr));
    UniformBufferObject::bindBatchFlush();
    EXPECT_EQ(log.texts(), QStringList());
}

} // namespace
} // namespace Harrow::Vrk::Test
