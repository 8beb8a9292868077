// SPDX-License-Identifier: MIT
#include "UniformBufferObjectTestTools.h"

#include "ShaderTestTools.h"
#include "support/HeapCount.h"

#include <utility>

namespace Harrow::Vrk::Test
{
namespace
{

using Access = UniformBufferObjectTestAccess;

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

// Both come to the records again from inside the message that tells of a missing entry point.
int reentries = 0;
int otherContext = 0;

void bindWhileHandling(QtMsgType, const QMessageLogContext&, const QString&)
{
    ++reentries;
    EXPECT_EQ(Access::maxUniformBlockBindings(), 90);
}

void bindElsewhereWhileHandling(QtMsgType, const QMessageLogContext&, const QString&)
{
    ++reentries;
    FakeDriver& driver = FakeDriver::current();
    driver.setContext(&otherContext);
    EXPECT_EQ(Access::uniformRecord().bindingOf(1), -1);
    driver.setContext(&driver);
}

TEST_F(UniformBufferObjectTest, WhoeverHandlesTheMessageOfAMissMayUseTheRecord)
{
    driver.refuse("glBindBuffersBase");
    reentries = 0;
    const QtMessageHandler former = qInstallMessageHandler(bindWhileHandling);
    const int points = Access::maxUniformBlockBindings();
    qInstallMessageHandler(former);
    EXPECT_EQ(points, 90);
    EXPECT_EQ(reentries, 1) << "one miss, said once";
}

TEST_F(UniformBufferObjectTest, WhoeverHandlesTheMessageOfAMissMayUseAnotherContext)
{
    driver.refuse("glBindBuffersBase");
    const auto block = newBlock(newBlockBuffer());
    reentries = 0;
    const QtMessageHandler former = qInstallMessageHandler(bindElsewhereWhileHandling);
    EXPECT_TRUE(block->bind(nullptr));
    qInstallMessageHandler(former);
    EXPECT_EQ(reentries, 1) << "Qt does not hand a message to the handler that is at work";
    driver.setContext(&otherContext);
    EXPECT_EQ(Access::uniformRecord().bindingOf(1), -1) << "the pools are still apart";
    driver.setContext(&driver);
    EXPECT_EQ(block->uniformBlockBinding(), 0);
}

TEST_F(UniformBufferObjectTest, AWarmBindAndUnbindAllocatesNothing)
{
    const auto program = linkedProgram({"u_Block"});
    ASSERT_TRUE(program->bind());
    QList<QSharedPointer<UniformBufferObject>> blocks;
    for (int i = 0; i < 90; ++i)
        blocks.append(newBlock(newBlockBuffer()));
    const auto bindAll = [&]
    {
        bool bound = true;
        for (const auto& block : std::as_const(blocks))
            bound = block->bind() && block->bind(program.data()) && block->uniformBlockBinding() >= 0 && bound;
        for (const auto& block : std::as_const(blocks))
            bound = block->unbind() && block->unbind(program.data()) && bound;
        return bound;
    };
    ASSERT_TRUE(bindAll());
    const HeapCount count;
    EXPECT_TRUE(bindAll());
    EXPECT_EQ(count.soFar(), 0);
    EXPECT_EQ(Access::uniformRecord()._freeBindings.size(), 90);
    program->unbind();
}

TEST_F(UniformBufferObjectTest, AWarmBatchAllocatesNothing)
{
    const auto first = newBlock(newBlockBuffer());
    const auto second = newBlock(newBlockBuffer(16, GL_SHADER_STORAGE_BUFFER));
    const auto bindBoth = [&]
    {
        UniformBufferObject::bindBatchStart();
        const bool bound = first->bind(nullptr) && second->bind(nullptr);
        UniformBufferObject::bindBatchFlush();
        return first->unbind(nullptr) && second->unbind(nullptr) && bound;
    };
    ASSERT_TRUE(bindBoth());
    const HeapCount count;
    EXPECT_TRUE(bindBoth());
    EXPECT_EQ(count.soFar(), 0);
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

TEST_F(UniformBufferObjectTest, AnOwnerAndAWrapperOfOneNameShareItsPoint)
{
    const auto owner = newBlockBuffer(); // buffer 1
    const auto wrapper = OpenGLDeviceContext::current()->newBuffer(owner->getBO());
    wrapper->setTarget(GL_UNIFORM_BUFFER);
    const auto first = newBlock(owner);
    const auto second = newBlock(wrapper);
    LogCapture log;
    CallLog calls;
    EXPECT_TRUE(first->bind(nullptr));
    EXPECT_TRUE(second->bind(nullptr));
    EXPECT_EQ(first->uniformBlockBinding(), 0);
    EXPECT_EQ(second->uniformBlockBinding(), 0);
    EXPECT_TRUE(first->unbind(nullptr));
    EXPECT_EQ(calls.named({"glBindBufferBase"}), QStringList(bindBase(0, 1)));
    EXPECT_EQ(first->uniformBlockBinding(), 0) << "the wrapper still holds it";
    EXPECT_TRUE(second->unbind(nullptr));
    EXPECT_EQ(calls.named({"glBindBufferBase"}), QStringList({bindBase(0, 1), bindBase(0, 0)}));
    EXPECT_TRUE(Access::uniformRecord()._freeBindings.contains(0));
    EXPECT_EQ(log.texts(), QStringList());
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

TEST_F(UniformBufferObjectTest, AProgramWithoutTheBlockOnlyCountsForABufferThatHasAPoint)
{
    const auto program = linkedProgram({"u_Other"});
    const auto block = newBlock(newBlockBuffer());
    EXPECT_TRUE(block->bind(nullptr));
    LogCapture log;
    CallLog calls;
    EXPECT_TRUE(block->bind(program.data()));
    EXPECT_EQ(program->getUniformBlockBinding(0), 0xFFFFFFFFu) << "the program's own block is left alone";
    EXPECT_TRUE(block->unbind(program.data()));
    EXPECT_EQ(block->uniformBlockBinding(), 0);
    EXPECT_EQ(calls.list(), QStringList());
    EXPECT_TRUE(block->unbind(program.data()));
    EXPECT_EQ(calls.list(), QStringList(bindBase(0, 0)));
    EXPECT_EQ(log.texts(), QStringList());
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

// -- storage blocks --

class UniformBufferObjectStorageTest : public ScriptedDriverTest
{
protected:
    void SetUp() override
    {
        ScriptedDriverTest::SetUp();
        Access::forgetContexts();
        script.storageBlocks = {"u_Other", "u_Block"};
        program.reset(new ShaderProgram);
        EXPECT_TRUE(program->link());
        ASSERT_EQ(program->getStorageBlockIndex(kBlockName), 1);
    }

    void TearDown() override
    {
        program.reset();
        Access::forgetContexts();
    }

    QString storageBinding(int block, int binding) const
    {
        return CallLog::call("glShaderStorageBlockBinding", program->shaderProgramID(), block, binding);
    }

    static QString bindStorageBase(int binding, GLuint buffer)
    {
        return bindBase(binding, buffer, GL_SHADER_STORAGE_BUFFER);
    }

    QScopedPointer<ShaderProgram> program;
};

TEST_F(UniformBufferObjectStorageTest, TheProgramsStorageBlockIsPointedAtTheBuffer)
{
    const auto block = newBlock(newBlockBuffer(16, GL_SHADER_STORAGE_BUFFER));
    Access::storageRecord();
    CallLog calls;
    EXPECT_TRUE(block->bind(program.data()));
    EXPECT_EQ(calls.list(), QStringList({bindStorageBase(0, 1), storageBinding(1, 0)}));
    EXPECT_EQ(program->getStorageBlockBinding(1), 0u);
    calls.clear();
    EXPECT_TRUE(block->bind(program.data()));
    EXPECT_EQ(calls.list(), QStringList());
    EXPECT_TRUE(block->unbind(program.data()) && block->unbind(program.data()));
    EXPECT_EQ(calls.list(), QStringList(bindStorageBase(0, 0)));
    EXPECT_EQ(Access::uniformRecord()._freeBindings.size(), 90) << "the uniform pool took no part";
}

TEST_F(UniformBufferObjectStorageTest, TheBlocksPresentBindingIsTakenWhenItIsFree)
{
    program->setStorageBlockBinding(1, 5);
    const auto first = newBlock(newBlockBuffer(16, GL_SHADER_STORAGE_BUFFER));
    const auto second = newBlock(newBlockBuffer(16, GL_SHADER_STORAGE_BUFFER));
    Access::storageRecord();
    CallLog calls;
    EXPECT_TRUE(first->bind(program.data()));
    EXPECT_EQ(calls.list(), QStringList(bindStorageBase(5, 1))) << "the program's state needs no change";
    calls.clear();
    EXPECT_TRUE(second->bind(program.data()));
    EXPECT_EQ(calls.list(), QStringList({bindStorageBase(0, 2), storageBinding(1, 0)})) << "point 5 is taken";
    EXPECT_EQ(first->uniformBlockBinding(), 5);
}

TEST_F(UniformBufferObjectStorageTest, AUniformBlockOfThatNameIsAnotherOne)
{
    const auto block = newBlock(newBlockBuffer()); // for uniform blocks
    Access::uniformRecord();
    CallLog calls;
    EXPECT_TRUE(block->bind(program.data()));
    EXPECT_EQ(calls.list(), QStringList(bindBase(0, 1)));
}

} // namespace
} // namespace Harrow::Vrk::Test
