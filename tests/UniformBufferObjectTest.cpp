// SPDX-License-Identifier: MIT
#include "UniformBufferObject.h"

#include "AutoBinder.h"
#include "BufferObject.h"
#include "OpenGLDeviceContext.h"
#include "ShaderProgram.h"
#include "UBOContextData.h"
#include "support/CallLog.h"
#include "support/FakeDriver.h"
#include "support/GLTest.h"
#include "support/LogCapture.h"
#include "support/ObjectAccess.h"
#include "support/TransformFeedback.h"

#include <QScopeGuard>

#include <atomic>
#include <cstring>
#include <thread>

namespace Harrow::Vrk::Test
{
namespace
{

using Access = UniformBufferObjectTestAccess;

const QString kBlock = QStringLiteral("u_Block");
const QString kNoBinding = QStringLiteral("There is no available uniformBlockBindings");

/// A buffer with `bytes` bytes in it, or nothing.
QSharedPointer<BufferObject> newBlockBuffer(int bytes = 16, GLenum target = GL_UNIFORM_BUFFER)
{
    auto buffer = OpenGLDeviceContext::current()->newBuffer();
    buffer->setTarget(target);
    if (bytes > 0)
    {
        const AutoBinder binder(buffer.data());
        buffer->uploadArbitraryData(QByteArray(bytes, 0).constData(), bytes, GL_STATIC_DRAW, 1);
    }
    return buffer;
}

QSharedPointer<UniformBufferObject> newBlock(QSharedPointer<BufferObject> buffer, const QString& name = kBlock)
{
    return OpenGLDeviceContext::current()->newUniformBuffer(name, std::move(buffer));
}

// ---- the pool, without OpenGL --------------------------------------------------------------------------------------

TEST(UBOContextDataTest, AllPointsAreFreeAtFirst)
{
    const UBOContextData pool(GL_UNIFORM_BUFFER, 3);
    EXPECT_EQ(pool._target, GLenum(GL_UNIFORM_BUFFER));
    EXPECT_EQ(pool._maxBindings, 3);
    EXPECT_EQ(pool._freeBindings, (QMap<int, int>{{0, 0}, {1, 1}, {2, 2}}));
    EXPECT_EQ(pool._bindingBuffers, QList<GLuint>({0, 0, 0}));
    EXPECT_EQ(pool._batchFirst, -1);
    EXPECT_EQ(pool._batchLast, -1);
    EXPECT_FALSE(pool.isBatching());
    EXPECT_EQ(pool.bindingOf(1), -1);
}

TEST(UBOContextDataTest, ADriverWithoutPointsGivesAnEmptyPool)
{
    for (const int count : {0, -1})
    {
        const UBOContextData pool(GL_SHADER_STORAGE_BUFFER, count);
        EXPECT_EQ(pool._maxBindings, 0);
        EXPECT_EQ(pool.chooseBinding(0), -1);
        EXPECT_TRUE(pool._bindingBuffers.isEmpty());
    }
}

TEST(UBOContextDataTest, APreferredFreePointIsChosenAndElseTheLowest)
{
    UBOContextData pool(GL_UNIFORM_BUFFER, 4);
    EXPECT_EQ(pool.chooseBinding(2), 2);
    EXPECT_EQ(pool.chooseBinding(-1), 0);
    EXPECT_EQ(pool.chooseBinding(4), 0);
    pool.take(7, 0);
    EXPECT_EQ(pool.chooseBinding(0), 1);
    pool.take(8, 2);
    EXPECT_EQ(pool.chooseBinding(2), 1);
}

TEST(UBOContextDataTest, TakeAndReleaseAreEachOthersOpposite)
{
    UBOContextData pool(GL_UNIFORM_BUFFER, 4);
    pool.take(7, 2);
    EXPECT_EQ(pool.bindingOf(7), 2);
    EXPECT_EQ(pool._boundUniformBufferObjectCounts.value(7), 1);
    EXPECT_EQ(pool._bindingBuffers, QList<GLuint>({0, 0, 7, 0}));
    EXPECT_FALSE(pool._freeBindings.contains(2));
    pool.release(7);
    EXPECT_EQ(pool.bindingOf(7), -1);
    EXPECT_TRUE(pool._boundUniformBufferObjectCounts.isEmpty());
    EXPECT_EQ(pool._bindingBuffers, QList<GLuint>({0, 0, 0, 0}));
    EXPECT_EQ(pool._freeBindings.value(2, -1), 2);
}

TEST(UBOContextDataTest, ABatchSpansTheLowestAndTheHighestPoint)
{
    UBOContextData pool(GL_UNIFORM_BUFFER, 10);
    pool.startBatch();
    EXPECT_TRUE(pool.isBatching());
    EXPECT_EQ(pool._batchFirst, 10);
    EXPECT_EQ(pool._batchLast, -1);
    pool.extendBatch(7);
    pool.extendBatch(3);
    pool.extendBatch(5);
    EXPECT_EQ(pool._batchFirst, 3);
    EXPECT_EQ(pool._batchLast, 7);
    pool.endBatch();
    EXPECT_FALSE(pool.isBatching());
}

// ---- on the fake driver --------------------------------------------------------------------------------------------

class UniformBufferObjectTest : public FakeDriverTest
{
protected:
    void SetUp() override
    {
        FakeDriverTest::SetUp();
        Access::forgetContexts();
    }

    void TearDown() override
    {
        Access::forgetContexts();
    }

    /// A program on this driver with the given uniform blocks, at indices 0, 1, …
    QSharedPointer<ShaderProgram> linkedProgram(const QList<QByteArray>& names)
    {
        static QList<QByteArray> blocks;
        blocks = names;
        driver.replace(
            "glGetProgramiv",
            +[](GLuint, GLenum parameter, GLint* value)
            { *value = parameter == GL_ACTIVE_UNIFORM_BLOCKS ? GLint(blocks.size()) : parameter == GL_LINK_STATUS; });
        driver.replace(
            "glGetActiveUniformBlockName",
            +[](GLuint, GLuint index, GLsizei, GLsizei* length, GLchar* name)
            {
                std::memcpy(name, blocks.at(index).constData(), blocks.at(index).size() + 1);
                if (length)
                    *length = GLsizei(blocks.at(index).size());
            });
        driver.load();
        auto program = QSharedPointer<ShaderProgram>::create();
        EXPECT_TRUE(program->link());
        EXPECT_EQ(program->getUniformBlockIndex(QString::fromLatin1(names.last())), names.size() - 1);
        return program;
    }
};

QString bindBase(int binding, GLuint buffer, GLenum target = GL_UNIFORM_BUFFER)
{
    return CallLog::call("glBindBufferBase", target, binding, buffer);
}

TEST_F(UniformBufferObjectTest, NumAliveCountsLivingObjects)
{
    const int before = UniformBufferObject::NumAlive();
    auto block = newBlock(newBlockBuffer());
    EXPECT_EQ(UniformBufferObject::NumAlive(), before + 1);
    block.clear();
    EXPECT_EQ(UniformBufferObject::NumAlive(), before);
}

TEST_F(UniformBufferObjectTest, MemoryEstimatesHoldNameAndBuffer)
{
    const auto buffer = newBlockBuffer(48);
    const auto block = newBlock(buffer);
    EXPECT_EQ(block->bufferObject(), buffer);
    EXPECT_EQ(block->memoryEstimateCPU(), sizeof(UniformBufferObject) + 7 + sizeof(BufferObject));
    EXPECT_EQ(block->memoryEstimateGPU(), 48u);

    const auto empty = newBlock({});
    EXPECT_EQ(empty->memoryEstimateCPU(), sizeof(UniformBufferObject) + 7);
    EXPECT_EQ(empty->memoryEstimateGPU(), 0u);
}

TEST_F(UniformBufferObjectTest, TheRecordIsMadeOnFirstDemandOnly)
{
    driver.setInteger(GL_MAX_UNIFORM_BUFFER_BINDINGS, 12);
    const auto block = newBlock(newBlockBuffer());
    driver.procLookups.clear();
    CallLog calls;
    EXPECT_TRUE(block->bind(nullptr));
    EXPECT_TRUE(block->unbind(nullptr));
    EXPECT_TRUE(block->bind(nullptr));
    ASSERT_EQ(calls.count("glGetIntegerv"), 1);
    EXPECT_TRUE(calls.list().first().startsWith(QStringLiteral("glGetIntegerv(0x8a2f, ")));
    EXPECT_EQ(driver.procLookups, QList<QByteArray>({"glBindBuffersBase"}));
    EXPECT_EQ(Access::maxUniformBlockBindings(), 12);
    EXPECT_NE(Access::uniformRecord()._bindBuffersBase, nullptr);
    EXPECT_EQ(Access::uniformRecord()._shaderStorageBlockBinding, nullptr);
}

TEST_F(UniformBufferObjectTest, TheStorageRecordHasItsOwnLimitAndEntryPoints)
{
    driver.setInteger(GL_MAX_SHADER_STORAGE_BUFFER_BINDINGS, 5);
    const auto block = newBlock(newBlockBuffer(16, GL_SHADER_STORAGE_BUFFER));
    driver.procLookups.clear();
    CallLog calls;
    EXPECT_TRUE(block->bind(nullptr));
    ASSERT_EQ(calls.list().size(), 2);
    EXPECT_TRUE(calls.list().first().startsWith(QStringLiteral("glGetIntegerv(0x90dd, ")));
    EXPECT_EQ(calls.list().last(), bindBase(0, 1, GL_SHADER_STORAGE_BUFFER));
    EXPECT_EQ(driver.procLookups, QList<QByteArray>({"glBindBuffersBase", "glShaderStorageBlockBinding"}));
    EXPECT_EQ(Access::storageRecord()._maxBindings, 5);
    EXPECT_NE(Access::storageRecord()._shaderStorageBlockBinding, nullptr);
    EXPECT_EQ(Access::uniformRecord()._freeBindings.size(), 90) << "the uniform pool is another one";
}

TEST_F(UniformBufferObjectTest, MissingEntryPointsAreLoggedOncePerContext)
{
    driver.refuse("glBindBuffersBase");
    driver.refuse("glShaderStorageBlockBinding");
    LogCapture log;
    UniformBufferObject::bindBatchStart();
    UniformBufferObject::bindBatchFlush();
    const QStringList lines = {QStringLiteral("Failed to obtain 'glBindBuffersBase'"),
                               QStringLiteral("Failed to obtain 'glBindBuffersBase'"),
                               QStringLiteral("Failed to obtain 'glShaderStorageBlockBinding'")};
    EXPECT_EQ(log.messages(QtDebugMsg), lines);
    log.clear();
    UniformBufferObject::bindBatchStart();
    EXPECT_EQ(log.texts(), QStringList());
    int other = 0;
    driver.setContext(&other);
    UniformBufferObject::bindBatchStart();
    EXPECT_EQ(log.messages(QtDebugMsg), lines);
}

TEST_F(UniformBufferObjectTest, BindWithoutAProgramInUseWarnsAndFails)
{
    const auto block = newBlock(newBlockBuffer());
    LogCapture log;
    CallLog calls;
    EXPECT_FALSE(block->bind());
    EXPECT_FALSE(block->unbind());
    EXPECT_EQ(calls.list(), QStringList());
    EXPECT_EQ(log.messages(QtWarningMsg),
              QStringList({QStringLiteral("No ShaderProgram is bound"), QStringLiteral("No ShaderProgram is bound")}));
    EXPECT_TRUE(log.texts().first().startsWith(QStringLiteral("[UniformBufferObject.cpp:")))
        << log.texts().first().toStdString();
}

TEST_F(UniformBufferObjectTest, BindWithoutArgumentsTakesTheProgramInUse)
{
    const auto program = linkedProgram({"u_Other", "u_Block"});
    ASSERT_TRUE(program->bind());
    const auto block = newBlock(newBlockBuffer());
    {
        CallLog calls;
        const AutoBinder binder(block.data());
        EXPECT_EQ(
            calls.named({"glBindBufferBase", "glUniformBlockBinding"}),
            QStringList({bindBase(0, 1), CallLog::call("glUniformBlockBinding", program->shaderProgramID(), 1, 0)}));
        EXPECT_EQ(block->uniformBlockBinding(), 0);
    }
    EXPECT_TRUE(Access::uniformRecord()._freeBindings.contains(0));
    program->unbind();
}

TEST_F(UniformBufferObjectTest, WithoutABufferEverythingFails)
{
    const auto block = newBlock({});
    LogCapture log;
    CallLog calls;
    EXPECT_FALSE(block->bind(nullptr));
    EXPECT_FALSE(block->unbind(nullptr));
    EXPECT_EQ(block->uniformBlockBinding(), 0);
    EXPECT_EQ(calls.list(), QStringList());
    const QString condition = QStringLiteral("!this->_bufferObject.isNull()");
    EXPECT_EQ(
        log.messages(QtCriticalMsg),
        QStringList({assertionLine(condition, QStringLiteral("m_bufferObject is NULL on bind()")),
                     assertionLine(condition, QStringLiteral("m_bufferObject is NULL on bind()")),
                     assertionLine(condition, QStringLiteral("m_bufferObject is NULL on uniformBlockBinding()"))}));
}

TEST_F(UniformBufferObjectTest, TwoBindsGiveOnePointAndNeedTwoUnbinds)
{
    const auto block = newBlock(newBlockBuffer());
    const auto second = newBlock(block->bufferObject(), QStringLiteral("u_Another"));
    EXPECT_TRUE(block->bind(nullptr));
    CallLog calls;
    EXPECT_TRUE(second->bind(nullptr)) << "another object on the same buffer";
    EXPECT_EQ(calls.list(), QStringList());
    EXPECT_EQ(block->uniformBlockBinding(), 0);
    EXPECT_EQ(second->uniformBlockBinding(), 0);
    EXPECT_TRUE(block->unbind(nullptr));
    EXPECT_EQ(calls.list(), QStringList());
    EXPECT_EQ(block->uniformBlockBinding(), 0);
    EXPECT_TRUE(block->unbind(nullptr));
    EXPECT_EQ(calls.list(), QStringList(bindBase(0, 0)));
    EXPECT_TRUE(Access::uniformRecord()._freeBindings.contains(0));
    EXPECT_EQ(Access::uniformRecord()._bindingBuffers.at(0), 0u);
}

TEST_F(UniformBufferObjectTest, TheLastFreePointIsTakenAndThenBindFails)
{
    driver.setInteger(GL_MAX_UNIFORM_BUFFER_BINDINGS, 2);
    const auto first = newBlock(newBlockBuffer());
    const auto second = newBlock(newBlockBuffer());
    const auto third = newBlock(newBlockBuffer());
    EXPECT_TRUE(first->bind(nullptr));
    LogCapture log;
    EXPECT_TRUE(second->bind(nullptr));
    EXPECT_EQ(second->uniformBlockBinding(), 1);
    EXPECT_EQ(log.texts(), QStringList());

    CallLog calls;
    EXPECT_FALSE(third->bind(nullptr));
    EXPECT_EQ(calls.list(), QStringList());
    EXPECT_EQ(log.messages(QtWarningMsg), QStringList(kNoBinding));
    EXPECT_TRUE(log.texts().first().startsWith(QStringLiteral("[UniformBufferObject.cpp:")));

    EXPECT_TRUE(first->bind(nullptr)) << "a buffer that has a point is not in need of a free one";
    EXPECT_TRUE(first->unbind(nullptr));
    EXPECT_TRUE(first->unbind(nullptr));
    EXPECT_TRUE(third->bind(nullptr));
    EXPECT_EQ(third->uniformBlockBinding(), 0);
}

TEST_F(UniformBufferObjectTest, AFreedPointIsTakenAgainByTheNextBindWithoutAPreference)
{
    QList<QSharedPointer<UniformBufferObject>> blocks;
    for (int i = 0; i < 4; ++i)
    {
        blocks.append(newBlock(newBlockBuffer()));
        EXPECT_TRUE(blocks.last()->bind(nullptr));
    }
    EXPECT_TRUE(blocks[2]->unbind(nullptr));
    EXPECT_TRUE(blocks[1]->unbind(nullptr));
    const auto next = newBlock(newBlockBuffer());
    EXPECT_TRUE(next->bind(nullptr));
    EXPECT_EQ(next->uniformBlockBinding(), 1);
    EXPECT_TRUE(blocks[1]->bind(nullptr));
    EXPECT_EQ(blocks[1]->uniformBlockBinding(), 2);
}

TEST_F(UniformBufferObjectTest, UnbindOfABufferThatWasNeverBoundIsTrueWithoutACall)
{
    const auto block = newBlock(newBlockBuffer());
    const auto other = newBlock(newBlockBuffer());
    EXPECT_TRUE(other->bind(nullptr)); // the record is there
    LogCapture log;
    CallLog calls;
    EXPECT_TRUE(block->unbind(nullptr));
    EXPECT_TRUE(block->unbind(nullptr));
    EXPECT_EQ(calls.list(), QStringList());
    EXPECT_EQ(log.texts(), QStringList());
}

TEST_F(UniformBufferObjectTest, APointWithoutACountIsReported)
{
    const auto block = newBlock(newBlockBuffer());
    EXPECT_TRUE(block->bind(nullptr));
    Access::uniformRecord()._boundUniformBufferObjectCounts.clear();
    const QString condition = QStringLiteral("uboContextData._boundUniformBufferObjectCounts.contains(bufferObjectID)");
    LogCapture log;
    CallLog calls;
    EXPECT_FALSE(block->unbind(nullptr));
    EXPECT_EQ(block->uniformBlockBinding(), -1);
    EXPECT_EQ(calls.list(), QStringList());
    EXPECT_EQ(log.messages(QtCriticalMsg),
              QStringList({assertionLine(condition, QStringLiteral("UniformBufferObject has not been bound on unbind")),
                           assertionLine(condition, QStringLiteral("UniformBufferObject has not been bound on "
                                                                   "uniformBlockBinding()"))}));
}

TEST_F(UniformBufferObjectTest, BlockBindingOfAnUnboundBufferIsMinusOne)
{
    const auto block = newBlock(newBlockBuffer());
    LogCapture log;
    EXPECT_EQ(block->uniformBlockBinding(), -1);
    EXPECT_EQ(
        log.messages(QtCriticalMsg),
        QStringList(assertionLine(
            QStringLiteral("uboContextData._uniformBufferObjectToUniformBlockBindingMaps.contains(bufferObjectID)"),
            QStringLiteral("UniformBufferObject has not been bound on uniformBlockBinding()"))));
}

TEST_F(UniformBufferObjectTest, AnEmptyBufferIsReportedAndBound)
{
    const auto block = newBlock(newBlockBuffer(0));
    LogCapture log;
    CallLog calls;
    EXPECT_TRUE(block->bind(nullptr));
    EXPECT_EQ(log.messages(QtCriticalMsg),
              QStringList(assertionLine(QStringLiteral("_bufferObject->valueCount() * _bufferObject->valueSize() != 0"),
                                        QStringLiteral("glBindBufferRange() cannot take 0 as a size (0,0)"))));
    EXPECT_EQ(calls.named({"glBindBufferBase"}), QStringList(bindBase(0, 1)));
}

TEST_F(UniformBufferObjectTest, ABufferOfAnotherTargetIsReportedAndServedByTheUniformPool)
{
    const auto block = newBlock(newBlockBuffer(16, GL_ARRAY_BUFFER));
    LogCapture log;
    CallLog calls;
    EXPECT_TRUE(block->bind(nullptr));
    EXPECT_EQ(log.messages(QtDebugMsg), QStringList(QStringLiteral("Unknown Uniforma b uffer type 0x8892")));
    EXPECT_EQ(calls.named({"glBindBufferBase"}), QStringList(bindBase(0, 1)));
    EXPECT_FALSE(Access::uniformRecord()._freeBindings.contains(0));
}

TEST_F(UniformBufferObjectTest, TheBlocksPresentBindingIsTakenWhenItIsFree)
{
    const auto program = linkedProgram({"u_Block"});
    program->setUniformBlockBinding(0, 5);
    const auto block = newBlock(newBlockBuffer());
    EXPECT_TRUE(block->bind(program.data()));
    EXPECT_EQ(block->uniformBlockBinding(), 5);
    EXPECT_TRUE(block->unbind(program.data()));

    CallLog calls;
    EXPECT_TRUE(block->bind(program.data()));
    EXPECT_EQ(calls.list(), QStringList(bindBase(5, 1))) << "the program's state needs no change";
}

TEST_F(UniformBufferObjectTest, TheLowestPointIsTakenWhenThePresentBindingIsNotFree)
{
    const auto program = linkedProgram({"u_Block"});
    program->setUniformBlockBinding(0, 0);
    const auto other = newBlock(newBlockBuffer());
    EXPECT_TRUE(other->bind(nullptr));
    const auto block = newBlock(newBlockBuffer());
    CallLog calls;
    EXPECT_TRUE(block->bind(program.data()));
    EXPECT_EQ(calls.list(),
              QStringList({bindBase(1, 2), CallLog::call("glUniformBlockBinding", program->shaderProgramID(), 0, 1)}));
}

TEST_F(UniformBufferObjectTest, ABindingBeyondThePoolOrNeverSetIsNoPreference)
{
    driver.setInteger(GL_MAX_UNIFORM_BUFFER_BINDINGS, 4);
    const auto program = linkedProgram({"u_Unset", "u_Beyond"});
    program->setUniformBlockBinding(1, 4);
    ASSERT_EQ(program->getUniformBlockBinding(0), 0xFFFFFFFFu);
    const auto unset = newBlock(newBlockBuffer(), QStringLiteral("u_Unset"));
    const auto beyond = newBlock(newBlockBuffer(), QStringLiteral("u_Beyond"));
    EXPECT_TRUE(unset->bind(program.data()));
    EXPECT_TRUE(beyond->bind(program.data()));
    EXPECT_EQ(unset->uniformBlockBinding(), 0);
    EXPECT_EQ(beyond->uniformBlockBinding(), 1);
    EXPECT_EQ(program->getUniformBlockBinding(0), 0u);
    EXPECT_EQ(program->getUniformBlockBinding(1), 1u);
}

TEST_F(UniformBufferObjectTest, AProgramWithoutTheBlockGetsTheBufferBoundAlone)
{
    const auto program = linkedProgram({"u_Other"});
    const auto block = newBlock(newBlockBuffer());
    CallLog calls;
    EXPECT_TRUE(block->bind(program.data()));
    EXPECT_EQ(calls.named({"glBindBufferBase", "glUniformBlockBinding"}), QStringList(bindBase(0, 1)));
}

TEST_F(UniformBufferObjectTest, ABoundBufferIsGivenToFurtherProgramsWithoutBindingIt)
{
    const auto first = linkedProgram({"u_Block"});
    const auto second = linkedProgram({"u_Other", "u_Block"});
    const auto block = newBlock(newBlockBuffer());
    EXPECT_TRUE(block->bind(first.data()));
    CallLog calls;
    EXPECT_TRUE(block->bind(second.data()));
    EXPECT_EQ(calls.list(), QStringList(CallLog::call("glUniformBlockBinding", second->shaderProgramID(), 1, 0)));
    calls.clear();
    EXPECT_TRUE(block->bind(second.data()));
    EXPECT_EQ(calls.list(), QStringList()) << "a repeated bind costs no OpenGL call";
}

TEST_F(UniformBufferObjectTest, AnObjectThatIsDestroyedBoundLeavesItsPointTaken)
{
    const auto buffer = newBlockBuffer();
    auto block = newBlock(buffer);
    EXPECT_TRUE(block->bind(nullptr));
    CallLog calls;
    block.clear();
    EXPECT_EQ(calls.list(), QStringList());
    EXPECT_FALSE(Access::uniformRecord()._freeBindings.contains(0));
    const auto heir = newBlock(buffer);
    EXPECT_EQ(heir->uniformBlockBinding(), 0);
    EXPECT_TRUE(heir->unbind(nullptr));
    EXPECT_TRUE(Access::uniformRecord()._freeBindings.contains(0));
}

TEST_F(UniformBufferObjectTest, TwoContextsHavePoolsOfTheirOwn)
{
    int other = 0;
    const auto block = newBlock(newBlockBuffer());
    const auto second = newBlock(newBlockBuffer());
    EXPECT_TRUE(block->bind(nullptr));
    EXPECT_TRUE(second->bind(nullptr));

    driver.setContext(&other);
    EXPECT_EQ(block->uniformBlockBinding(), -1);
    EXPECT_TRUE(second->bind(nullptr));
    EXPECT_EQ(second->uniformBlockBinding(), 0);
    CallLog calls;
    EXPECT_TRUE(block->unbind(nullptr)) << "it has no point here";
    EXPECT_EQ(calls.list(), QStringList());

    driver.setContext(&driver);
    EXPECT_EQ(block->uniformBlockBinding(), 0);
    EXPECT_EQ(second->uniformBlockBinding(), 1);
}

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

// ---- on the real driver --------------------------------------------------------------------------------------------

class UniformBufferObjectGL : public GLTest
{
protected:
    void SetUp() override
    {
        GLTest::SetUp();
        Access::forgetContexts();
    }

    static QSharedPointer<UniformBufferObject> filledBlock(const QString& name, const QList<float>& values,
                                                           GLenum target = GL_UNIFORM_BUFFER)
    {
        auto buffer = OpenGLDeviceContext::current()->newBuffer();
        buffer->setTarget(target);
        const AutoBinder binder(buffer.data());
        EXPECT_TRUE(buffer->upload(values, GL_STATIC_DRAW));
        return newBlock(buffer, name);
    }

    /// A program whose one vertex gives out what it reads.
    static QSharedPointer<ShaderProgram> readingProgram(const char* declarations, const char* expression)
    {
        auto program = QSharedPointer<ShaderProgram>::create();
        program->addShader(GL_VERTEX_SHADER, QString::fromLatin1(declarations) +
                                                 QStringLiteral("out vec4 vo_Value;\n"
                                                                "void main() { vo_Value = ") +
                                                 QString::fromLatin1(expression) +
                                                 QStringLiteral("; gl_Position = vec4(0.0); }\n"));
        program->setTransformFeedbackVaryings({QStringLiteral("vo_Value")}, GL_INTERLEAVED_ATTRIBS);
        EXPECT_TRUE(program->link());
        return program;
    }

    /// What the bound program reads.
    static QList<float> read()
    {
        const auto vao = OpenGLDeviceContext::current()->newVAO();
        const AutoBinder binder(vao.data());
        TransformFeedback feedback(GL_POINTS);
        glDrawArrays(GL_POINTS, 0, 1);
        return feedback.end<float>(4);
    }

    static constexpr char kTwoBlocks[] = "#version 150\n"
                                         "layout (std140) uniform u_First { vec4 u_A; };\n"
                                         "layout (std140) uniform u_Second { vec4 u_B; };\n";
};

TEST_F(UniformBufferObjectGL, EachBlockReadsTheBufferBoundToIt)
{
    const auto program = readingProgram(kTwoBlocks, "u_A + u_B * 10.0");
    const auto first = filledBlock(QStringLiteral("u_First"), {1, 2, 3, 4});
    const auto second = filledBlock(QStringLiteral("u_Second"), {5, 6, 7, 8});
    ASSERT_TRUE(program->bind());
    EXPECT_TRUE(first->bind());
    EXPECT_TRUE(second->bind());
    EXPECT_EQ(read(), QList<float>({51, 62, 73, 84}));

    const auto other = filledBlock(QStringLiteral("u_Second"), {9, 9, 9, 9});
    EXPECT_TRUE(other->bind()) << "a second buffer for the block takes it over, on a point of its own";
    EXPECT_EQ(read(), QList<float>({91, 92, 93, 94}));
    EXPECT_TRUE(second->bind()) << "and the first one gets it back without being bound again";
    EXPECT_EQ(read(), QList<float>({51, 62, 73, 84}));

    EXPECT_TRUE(second->unbind() && second->unbind() && other->unbind() && first->unbind());
    program->unbind();
}

TEST_F(UniformBufferObjectGL, ABatchBindsWhatWasCollected)
{
    const auto program = readingProgram(kTwoBlocks, "u_A + u_B * 10.0");
    const auto first = filledBlock(QStringLiteral("u_First"), {1, 2, 3, 4});
    const auto second = filledBlock(QStringLiteral("u_Second"), {5, 6, 7, 8});
    ASSERT_TRUE(program->bind());
    UniformBufferObject::bindBatchStart();
    EXPECT_EQ(glGetError(), GLenum(isFloor() ? GL_INVALID_ENUM : GL_NO_ERROR))
        << "a context without storage blocks was asked for their points";
    EXPECT_TRUE(first->bind());
    EXPECT_TRUE(second->bind());
    CallLog calls;
    UniformBufferObject::bindBatchFlush();
    EXPECT_EQ(calls.count("glBindBuffersBase"), isFloor() ? 0 : 1);
    EXPECT_EQ(calls.count("glBindBufferBase"), isFloor() ? 2 : 0);
    EXPECT_EQ(read(), QList<float>({51, 62, 73, 84}));
    EXPECT_TRUE(first->unbind() && second->unbind());
    program->unbind();
}

TEST_F(UniformBufferObjectGL, StorageBlocksReadTheirBufferWhereTheDriverHasThem)
{
    if (isFloor())
    {
        const auto block = filledBlock(QStringLiteral("u_Store"), {1, 2, 3, 4}, GL_ARRAY_BUFFER);
        block->bufferObject()->setTarget(GL_SHADER_STORAGE_BUFFER);
        LogCapture log;
        EXPECT_FALSE(block->bind(nullptr)) << "the pool is empty";
        EXPECT_EQ(log.messages(QtWarningMsg), QStringList(kNoBinding));
        EXPECT_EQ(glGetError(), GLenum(GL_INVALID_ENUM));
        return;
    }
    const auto program = readingProgram("#version 430\n"
                                        "layout (std430) readonly buffer u_Store { vec4 values[]; };\n"
                                        "layout (std430) readonly buffer u_Other { vec4 others[]; };\n",
                                        "values[1] + others[0]");
    const auto store = filledBlock(QStringLiteral("u_Store"), {1, 2, 3, 4, 5, 6, 7, 8}, GL_SHADER_STORAGE_BUFFER);
    const auto other = filledBlock(QStringLiteral("u_Other"), {10, 20, 30, 40}, GL_SHADER_STORAGE_BUFFER);
    ASSERT_TRUE(program->bind());
    EXPECT_TRUE(store->bind());
    EXPECT_TRUE(other->bind());
    EXPECT_NE(store->uniformBlockBinding(), other->uniformBlockBinding());
    EXPECT_EQ(read(), QList<float>({15, 26, 37, 48}));
    EXPECT_TRUE(store->unbind() && other->unbind());
    program->unbind();
}

TEST_F(UniformBufferObjectGL, EntryPointsAreThoseOfTheDriver)
{
    EXPECT_EQ(Access::uniformRecord()._bindBuffersBase == nullptr, isFloor());
    EXPECT_EQ(Access::storageRecord()._shaderStorageBlockBinding == nullptr, isFloor());
    EXPECT_EQ(glGetError(), GLenum(isFloor() ? GL_INVALID_ENUM : GL_NO_ERROR));
    GLint points = 0;
    glGetIntegerv(GL_MAX_UNIFORM_BUFFER_BINDINGS, &points);
    EXPECT_EQ(Access::maxUniformBlockBindings(), points);
}

TEST_F(UniformBufferObjectGL, TwoContextsMadeCurrentInTurnHavePoolsOfTheirOwn)
{
    const auto first = filledBlock(kBlock, {1, 2, 3, 4});
    const auto second = filledBlock(kBlock, {1, 2, 3, 4});
    EXPECT_TRUE(first->bind(nullptr));
    EXPECT_TRUE(second->bind(nullptr));
    const int secondPoint = second->uniformBlockBinding();
    {
        HeadlessContext other(&context());
        ASSERT_TRUE(other.isValid() && other.makeCurrent());
        EXPECT_EQ(second->uniformBlockBinding(), -1);
        EXPECT_TRUE(second->bind(nullptr));
        EXPECT_EQ(second->uniformBlockBinding(), 0);
        GLint bound = 0;
        glGetIntegeri_v(GL_UNIFORM_BUFFER_BINDING, 0, &bound);
        EXPECT_EQ(GLuint(bound), second->bufferObject()->getBO());
        EXPECT_TRUE(second->unbind(nullptr));
        EXPECT_EQ(glGetError(), GLenum(GL_NO_ERROR));
        ASSERT_TRUE(context().makeCurrent());
    }
    EXPECT_EQ(second->uniformBlockBinding(), secondPoint);
    EXPECT_TRUE(first->unbind(nullptr) && second->unbind(nullptr));
}

TEST_F(UniformBufferObjectGL, TwoThreadsWithTheirContextsDoNotDisturbEachOther)
{
    // All objects are made here; the threads bind and unbind them at the same time.
    constexpr int kThreads = 2;
    constexpr int kBlocks = 4;
    QList<QSharedPointer<UniformBufferObject>> blocks;
    for (int i = 0; i < kBlocks; ++i)
        blocks.append(filledBlock(kBlock, {1, 2, 3, 4}));
    glFinish();
    HeadlessContext contexts[kThreads] = {HeadlessContext(&context()), HeadlessContext(&context())};
    std::atomic<int> waiting = kThreads;
    std::atomic<int> failures = 0;
    const auto work = [&](int number)
    {
        if (!contexts[number].makeCurrent())
            ++failures;
        const auto release = qScopeGuard([] { HeadlessContext::releaseCurrent(); });
        for (--waiting; waiting > 0;)
            std::this_thread::yield();
        for (int round = 0; round < 500; ++round)
        {
            for (int i = 0; i < kBlocks; ++i)
            {
                failures += !blocks[(i + number) % kBlocks]->bind(nullptr);
                failures += blocks[(i + number) % kBlocks]->uniformBlockBinding() != i;
            }
            for (int i = 0; i < kBlocks; ++i)
                failures += !blocks[i]->unbind(nullptr);
        }
        failures += glGetError() != GL_NO_ERROR;
    };
    std::thread first(work, 0);
    std::thread second(work, 1);
    first.join();
    second.join();
    EXPECT_EQ(failures, 0);
}

} // namespace
} // namespace Harrow::Vrk::Test
