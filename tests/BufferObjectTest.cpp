// SPDX-License-Identifier: MIT
#include "BufferObjectTestTools.h"

#include "support/ProcessEnding.h"

namespace Harrow::Vrk::Test
{
namespace
{

// -- life --

TEST_F(BufferObjects, OwnedBufferIsMadeAndDeletedAndCountsInBothCounters)
{
    const int alive = BufferObject::NumAlive();
    const int managed = BufferObject::NumAliveManaged();
    const CallLog calls;
    {
        const Buffer buffer(BufferObjectTestAccess::make());
        EXPECT_EQ(buffer->getBO(), 1u);
        EXPECT_EQ(BufferObject::NumAlive(), alive + 1);
        EXPECT_EQ(BufferObject::NumAliveManaged(), managed + 1);
        EXPECT_EQ(buffer->target(), 0u);
        EXPECT_EQ(buffer->valueCount(), 0);
        EXPECT_EQ(buffer->valueSize(), 0u);
    }
    EXPECT_EQ(BufferObject::NumAlive(), alive);
    EXPECT_EQ(BufferObject::NumAliveManaged(), managed);
    ASSERT_EQ(calls.list().size(), 2);
    EXPECT_TRUE(calls.list()[0].startsWith(QStringLiteral("glGenBuffers(1, @")));
    EXPECT_TRUE(calls.list()[1].startsWith(QStringLiteral("glDeleteBuffers(1, @")));
}

TEST_F(BufferObjects, WrappedBufferIsNotDeletedAndCountsOnlyAsAlive)
{
    const int alive = BufferObject::NumAlive();
    const int managed = BufferObject::NumAliveManaged();
    const CallLog calls;
    {
        const Buffer buffer(BufferObjectTestAccess::wrap(42));
        EXPECT_EQ(buffer->getBO(), 42u);
        EXPECT_EQ(BufferObject::NumAlive(), alive + 1);
        EXPECT_EQ(BufferObject::NumAliveManaged(), managed);
    }
    EXPECT_EQ(BufferObject::NumAlive(), alive);
    EXPECT_TRUE(calls.list().isEmpty());
}

TEST_F(BufferObjects, CreateOnABufferThatHasANameFails)
{
    const Buffer buffer = newBuffer();
    const LogCapture log;
    const CallLog calls;
    EXPECT_FALSE(BufferObjectTestAccess::create(*buffer));
    EXPECT_EQ(log.messages(), failure("0u == this->_bo", QStringLiteral("Buffer Object is not NULL on create")));
    EXPECT_TRUE(calls.list().isEmpty());
}

TEST_F(BufferObjects, CreateOnABoundBufferFails)
{
    const Buffer buffer = newBuffer();
    ASSERT_TRUE(buffer->bind());
    BufferObjectTestAccess::setName(*buffer, 0);
    const LogCapture log;
    const CallLog calls;
    EXPECT_FALSE(BufferObjectTestAccess::create(*buffer));
    EXPECT_EQ(log.messages(),
              failure("0u == this->_boBountTarget",
                      QStringLiteral("Buffer Object is already bound on create to target %1").arg(GL_ARRAY_BUFFER)));
    EXPECT_TRUE(calls.list().isEmpty());
    BufferObjectTestAccess::setName(*buffer, 1);
    buffer->unbind();
}

TEST_F(BufferObjects, NothingIsCalledWhileTheProcessEnds)
{
    Buffer buffer = newBuffer();
    const CallLog calls;
    {
        const ProcessEnding ending;
        buffer.reset();
    }
    EXPECT_TRUE(calls.list().isEmpty());
}

TEST_F(BufferObjects, DestroyWhileBoundReportsAndLeavesTheBufferAlive)
{
    const Buffer buffer = newBuffer();
    ASSERT_TRUE(buffer->bind());
    const LogCapture log;
    const CallLog calls;
    EXPECT_FALSE(BufferObjectTestAccess::destroy(*buffer));
    EXPECT_EQ(log.messages(),
              failure("0u == this->_boBountTarget",
                      QStringLiteral("Buffer Object is already bound on destroy to target %1").arg(GL_ARRAY_BUFFER)));
    EXPECT_TRUE(calls.list().isEmpty());
    EXPECT_EQ(buffer->getBO(), 1u);
    buffer->unbind();
}

TEST_F(BufferObjects, DestructionWhileBoundReportsAndLeavesTheBufferInPlace)
{
    Buffer buffer = newBuffer();
    ASSERT_TRUE(buffer->bind());
    const int alive = BufferObject::NumAlive();
    const LogCapture log;
    const CallLog calls;
    buffer.reset();
    EXPECT_EQ(log.messages(),
              failure("0u == this->_boBountTarget",
                      QStringLiteral("Buffer Object is already bound on destroy to target %1").arg(GL_ARRAY_BUFFER)));
    EXPECT_TRUE(calls.list().isEmpty());
    EXPECT_EQ(BufferObject::NumAlive(), alive - 1);

    Buffer wrapped = wrapBuffer(7);
    ASSERT_TRUE(wrapped->bind());
    wrapped.reset();
    EXPECT_EQ(log.messages().size(), 1) << "what is not owned is not asked about";
}

TEST_F(BufferObjects, DestroyTwiceDeletesOnce)
{
    const Buffer buffer = newBuffer();
    const CallLog calls;
    EXPECT_TRUE(BufferObjectTestAccess::destroy(*buffer));
    EXPECT_TRUE(BufferObjectTestAccess::destroy(*buffer));
    EXPECT_EQ(calls.count(QStringLiteral("glDeleteBuffers")), 1);
    EXPECT_EQ(buffer->getBO(), 0u);
}

TEST_F(BufferObjects, EntryPointsAreLookedUpOnceWhereTheDriverHasThem)
{
    driver.procLookups.clear();
    const Buffer first(BufferObjectTestAccess::make());
    EXPECT_EQ(driver.procLookups, QList<QByteArray>({"glBufferStorage", "glNamedBufferData", "glNamedBufferStorage",
                                                     "glNamedBufferSubData"}));
    driver.procLookups.clear();
    const Buffer second(BufferObjectTestAccess::wrap(3));
    EXPECT_TRUE(driver.procLookups.isEmpty());
}

TEST_F(BufferObjects, EntryPointsAreAskedForAgainByEachNewObjectWhereTheDriverLacksThem)
{
    useFloor();
    const LogCapture log;
    driver.procLookups.clear();
    const Buffer first(BufferObjectTestAccess::make());
    const Buffer second(BufferObjectTestAccess::wrap(3));
    EXPECT_EQ(driver.procLookups.size(), 8);
    EXPECT_TRUE(log.lines().isEmpty()) << "their absence is a normal case";
}

// -- bind and unbind --

TEST_F(BufferObjects, BindAndUnbindNameTheTarget)
{
    const Buffer buffer = newBuffer(GL_ELEMENT_ARRAY_BUFFER);
    const CallLog calls;
    EXPECT_TRUE(buffer->bind());
    EXPECT_TRUE(buffer->unbind());
    EXPECT_EQ(calls.list(), QStringList({CallLog::call("glBindBuffer", GL_ELEMENT_ARRAY_BUFFER, 1),
                                         CallLog::call("glBindBuffer", GL_ELEMENT_ARRAY_BUFFER, 0)}));
}

TEST_F(BufferObjects, UnbindOfIndexedBufferNamesIndexZero)
{
    const Buffer buffer = newBuffer(0);
    buffer->setIndexedTarget(GL_ATOMIC_COUNTER_BUFFER, 5, 64, 128);
    const CallLog calls;
    EXPECT_TRUE(buffer->bind());
    EXPECT_TRUE(buffer->unbind());
    EXPECT_EQ(calls.list(), QStringList({CallLog::call("glBindBufferRange", GL_ATOMIC_COUNTER_BUFFER, 5, 1, 64, 128),
                                         CallLog::call("glBindBufferRange", GL_ATOMIC_COUNTER_BUFFER, 0, 0, 0, 0)}));
}

TEST_F(BufferObjects, BindChecksNameThenBindingThenTarget)
{
    const Buffer null = wrapBuffer(0);
    const Buffer untargeted = newBuffer(0);
    const Buffer bound = newBuffer();
    ASSERT_TRUE(bound->bind());
    LogCapture log;
    const CallLog calls;
    EXPECT_FALSE(null->bind());
    EXPECT_EQ(log.messages(), failure("0u != this->_bo", QStringLiteral("Buffer Object is NULL on bind")));
    log.clear();
    bound->setTarget(0); // two faults at once: the binding is checked first
    EXPECT_FALSE(bound->bind());
    bound->setTarget(GL_ARRAY_BUFFER);
    EXPECT_EQ(log.messages(),
              failure("0u == this->_boBountTarget",
                      QStringLiteral("Buffer Object is already bound on bind to target %1").arg(GL_ARRAY_BUFFER)));
    log.clear();
    EXPECT_FALSE(untargeted->bind());
    EXPECT_EQ(log.messages(), failure("0u != this->_target",
                                      QStringLiteral("Buffer Object's target is not set when bind() is called")));
    EXPECT_TRUE(calls.list().isEmpty());
    bound->unbind();
}

TEST_F(BufferObjects, UnbindChecksNameThenBinding)
{
    const Buffer null = wrapBuffer(0);
    const Buffer buffer = newBuffer();
    LogCapture log;
    const CallLog calls;
    EXPECT_FALSE(null->unbind());
    EXPECT_EQ(log.messages(), failure("0u != this->_bo", QStringLiteral("Buffer Object is NULL on unbind")));
    log.clear();
    EXPECT_FALSE(buffer->unbind());
    EXPECT_EQ(log.messages(),
              failure("0u != this->_boBountTarget", QStringLiteral("Buffer Object is not bound on unbind")));
    EXPECT_TRUE(calls.list().isEmpty());
}

// -- targets --

TEST_F(BufferObjects, SetTargetOfAtomicCounterComplainsAndTakesEffect)
{
    const Buffer buffer = newBuffer(0);
    const LogCapture log;
    buffer->setTarget(GL_ATOMIC_COUNTER_BUFFER);
    EXPECT_EQ(log.messages(QtCriticalMsg),
              QStringList({QStringLiteral("Cannot use setTarget() for indexed buffer object such as GL_UNIFORM_BUFFER. "
                                          "Use setIndexedTarget() instead.")}));
    EXPECT_EQ(buffer->target(), GLenum(GL_ATOMIC_COUNTER_BUFFER));
}

TEST_F(BufferObjects, SetTargetOfUniformBufferIsSilent)
{
    const Buffer buffer = newBuffer(0);
    const LogCapture log;
    buffer->setTarget(GL_UNIFORM_BUFFER);
    EXPECT_TRUE(log.lines().isEmpty());
}

TEST_F(BufferObjects, SetIndexedTargetOfUniformBufferComplainsOnEachCallAndTakesEffect)
{
    const Buffer buffer = newBuffer(0);
    const LogCapture log;
    buffer->setIndexedTarget(GL_UNIFORM_BUFFER, 2, 256, 512);
    buffer->setIndexedTarget(GL_UNIFORM_BUFFER, 2, 256, 512);
    const QString complaint =
        QStringLiteral("Cannot use setIndexedTarget() for non-indexed buffer object such as GL_ARRAY_BUFFER. Use "
                       "setTarget() instead.");
    EXPECT_EQ(log.messages(QtCriticalMsg), QStringList({complaint, complaint}));
    const CallLog calls;
    EXPECT_TRUE(buffer->bind());
    EXPECT_EQ(calls.list(), QStringList({CallLog::call("glBindBufferRange", GL_UNIFORM_BUFFER, 2, 1, 256, 512)}));
    buffer->unbind();
}

TEST_F(BufferObjects, SetIndexedTargetOfAtomicCounterIsSilent)
{
    const Buffer buffer = newBuffer(0);
    const LogCapture log;
    buffer->setIndexedTarget(GL_ATOMIC_COUNTER_BUFFER, 0, 0, 4);
    EXPECT_TRUE(log.lines().isEmpty());
}

TEST_F(BufferObjects, SetTargetClearsTheRange)
{
    const Buffer buffer = newBuffer(0);
    buffer->setIndexedTarget(GL_ATOMIC_COUNTER_BUFFER, 5, 64, 128);
    buffer->setTarget(GL_ARRAY_BUFFER);
    const CallLog calls;
    EXPECT_TRUE(buffer->bind());
    EXPECT_EQ(calls.list(), QStringList({CallLog::call("glBindBuffer", GL_ARRAY_BUFFER, 1)}));
    buffer->unbind();
}

// -- rebind --

TEST_F(BufferObjects, RebindFromNullIsAPlainBind)
{
    const Buffer buffer = newBuffer();
    const CallLog calls;
    EXPECT_TRUE(buffer->rebind(nullptr, false));
    EXPECT_EQ(calls.list(), QStringList({CallLog::call("glBindBuffer", GL_ARRAY_BUFFER, 1)}));
    const LogCapture log;
    EXPECT_FALSE(buffer->rebind(nullptr, false)) << "with the result of bind()";
    buffer->unbind();
}

TEST_F(BufferObjects, RebindOntoItselfMakesNoCall)
{
    const Buffer buffer = newBuffer();
    ASSERT_TRUE(buffer->bind());
    const CallLog calls;
    EXPECT_TRUE(buffer->rebind(buffer.get(), false));
    EXPECT_TRUE(calls.list().isEmpty());
    EXPECT_TRUE(buffer->unbind());
}

TEST_F(BufferObjects, ForcedRebindOntoItselfIssuesTheBind)
{
    const Buffer buffer = newBuffer();
    ASSERT_TRUE(buffer->bind());
    const CallLog calls;
    EXPECT_TRUE(buffer->rebind(buffer.get(), true));
    EXPECT_EQ(calls.list(), QStringList({CallLog::call("glBindBuffer", GL_ARRAY_BUFFER, 1)}));
    EXPECT_TRUE(buffer->unbind());
}

TEST_F(BufferObjects, ForcedRebindOntoItselfSkipsTheAssertions)
{
    const Buffer buffer = newBuffer(); // never bound
    const LogCapture log;
    EXPECT_TRUE(buffer->rebind(buffer.get(), true));
    EXPECT_TRUE(log.lines().isEmpty());
    EXPECT_TRUE(buffer->unbind());
}

TEST_F(BufferObjects, RebindHandsTheBindingOver)
{
    const Buffer first = newBuffer();
    const Buffer second = newBuffer();
    ASSERT_TRUE(first->bind());
    const CallLog calls;
    EXPECT_TRUE(second->rebind(first.get(), false));
    EXPECT_EQ(calls.list(), QStringList({CallLog::call("glBindBuffer", GL_ARRAY_BUFFER, 2)}));
    const LogCapture log;
    EXPECT_FALSE(first->unbind());
    EXPECT_TRUE(second->unbind());
}

TEST_F(BufferObjects, RebindBetweenWrappersOfOneBufferMovesOnlyTheBookKeeping)
{
    const Buffer first = wrapBuffer(9);
    const Buffer second = wrapBuffer(9);
    ASSERT_TRUE(first->bind());
    CallLog calls;
    EXPECT_TRUE(second->rebind(first.get(), false));
    EXPECT_TRUE(calls.list().isEmpty());
    EXPECT_TRUE(first->rebind(second.get(), true));
    EXPECT_EQ(calls.list(), QStringList({CallLog::call("glBindBuffer", GL_ARRAY_BUFFER, 9)}));
    EXPECT_TRUE(first->unbind());
}

TEST_F(BufferObjects, RebindOfIndexedBuffersAlwaysIssuesTheRange)
{
    const Buffer first = wrapBuffer(9);
    const Buffer second = wrapBuffer(9);
    first->setIndexedTarget(GL_ATOMIC_COUNTER_BUFFER, 1, 0, 4);
    second->setIndexedTarget(GL_ATOMIC_COUNTER_BUFFER, 2, 4, 8);
    ASSERT_TRUE(first->bind());
    const CallLog calls;
    EXPECT_TRUE(second->rebind(first.get(), false));
    EXPECT_EQ(calls.list(), QStringList({CallLog::call("glBindBufferRange", GL_ATOMIC_COUNTER_BUFFER, 2, 9, 4, 8)}));
    second->unbind();
}

TEST_F(BufferObjects, RebindChecksInOrder)
{
    const Buffer null = wrapBuffer(0);
    const Buffer untargeted = newBuffer(0);
    const Buffer unbound = newBuffer();
    const Buffer bound = newBuffer();
    const Buffer alsoBound = newBuffer();
    const Buffer elsewhere = newBuffer(GL_ELEMENT_ARRAY_BUFFER);
    const Buffer indexed = newBuffer(0);
    {
        const LogCapture quiet;
        indexed->setIndexedTarget(GL_ARRAY_BUFFER, 0, 0, 4);
    }
    ASSERT_TRUE(bound->bind());
    ASSERT_TRUE(alsoBound->bind());
    LogCapture log;
    const CallLog calls;
    const auto expectFailure =
        [&log](const Buffer& buffer, const Buffer& other, const char* condition, const QString& message)
    {
        log.clear();
        EXPECT_FALSE(buffer->rebind(other.get(), false));
        EXPECT_EQ(log.messages(), failure(condition, message));
    };
    expectFailure(null, bound, "0u != this->_bo", QStringLiteral("Buffer Object is NULL on bind"));
    expectFailure(alsoBound, bound, "0u == this->_boBountTarget",
                  QStringLiteral("Buffer Object is already bound on bind to target 34962"));
    expectFailure(untargeted, bound, "0u != this->_target",
                  QStringLiteral("Buffer Object's target is not set when bind() is called"));
    expectFailure(elsewhere, unbound, "0u != bufferObjectBound->_boBountTarget",
                  QStringLiteral("Bound Buffer Object is not already bound to target 34963"));
    expectFailure(elsewhere, bound, "this->_target == bufferObjectBound->_boBountTarget",
                  QStringLiteral("Bound Buffer Object target 34962 is not the same target 34963"));
    expectFailure(indexed, bound, "this->_useBindBufferRange == bufferObjectBound->_useBindBufferRange",
                  QStringLiteral("Bound BO useRange does not match the rebind Buffer Object"));
    EXPECT_TRUE(calls.list().isEmpty());
    EXPECT_TRUE(bound->unbind());
    EXPECT_TRUE(alsoBound->unbind());
}

} // namespace
} // namespace Harrow::Vrk::Test
