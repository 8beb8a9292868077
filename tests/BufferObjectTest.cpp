// SPDX-License-Identifier: MIT
#include "BufferObject.h"

#include "support/CallLog.h"
#include "support/FakeDriver.h"
#include "support/LogCapture.h"
#include "support/ProcessEnding.h"
#include "support/TestAccess.h"

#include <array>
#include <memory>

using namespace Harrow::Vrk;
using namespace Harrow::Vrk::Test;

namespace
{

using Buffer = std::unique_ptr<BufferObject>;

Buffer newBuffer(GLenum target = GL_ARRAY_BUFFER)
{
    Buffer buffer(BufferObjectTestAccess::make());
    if (target)
        buffer->setTarget(target);
    return buffer;
}

Buffer wrapBuffer(GLuint name, GLenum target = GL_ARRAY_BUFFER)
{
    Buffer buffer(BufferObjectTestAccess::wrap(name));
    buffer->setTarget(target);
    return buffer;
}

QStringList failure(const char* condition, const QString& message)
{
    return {assertionLine(QString::fromLatin1(condition), message)};
}

constexpr std::array<float, 6> kSix = {1, 2, 3, 4, 5, 6};
constexpr GLenum kStatic = GL_STATIC_DRAW;

class BufferObjects : public FakeDriverTest
{
protected:
    /// A driver of the 3.2 core profile.
    void useFloor()
    {
        for (const char* const name :
             {"glBufferStorage", "glNamedBufferData", "glNamedBufferStorage", "glNamedBufferSubData"})
            driver.refuse(name);
    }
};

} // namespace

// ---- life
// --------------------------------------------------------------------------------------------------------------

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

// ---- bind and unbind
// -----------------------------------------------------------------------------------------------------

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

// ---- targets
// -------------------------------------------------------------------------------------------------------------

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

// ---- rebind
// --------------------------------------------------------------------------------------------------------------

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

// ---- upload
// --------------------------------------------------------------------------------------------------------------

TEST_F(BufferObjects, UploadOfAnUnboundBufferGoesByDirectAccess)
{
    const Buffer buffer = newBuffer();
    const GLuint indices[2] = {0, 1};
    const GLushort shorts[4] = {0, 1, 2, 3};
    CallLog calls;
    EXPECT_TRUE(buffer->upload(kSix.data(), 6, kStatic));
    EXPECT_EQ(buffer->valueCount(), 6);
    EXPECT_EQ(buffer->valueSize(), 4u);
    EXPECT_TRUE(buffer->uploadGLuintData(indices, 2, GL_DYNAMIC_DRAW));
    EXPECT_EQ(buffer->valueCount(), 2);
    EXPECT_EQ(buffer->valueSize(), 4u);
    EXPECT_TRUE(buffer->uploadGLushortData(shorts, 4, kStatic));
    EXPECT_EQ(buffer->valueCount(), 4);
    EXPECT_EQ(buffer->valueSize(), 2u);
    EXPECT_TRUE(buffer->uploadArbitraryData(kSix.data(), 2, kStatic, 12));
    EXPECT_EQ(buffer->valueCount(), 2);
    EXPECT_EQ(buffer->valueSize(), 12u);
    EXPECT_EQ(calls.list(), QStringList({CallLog::call("glNamedBufferData", 1, 24, kSix.data(), kStatic),
                                         CallLog::call("glNamedBufferData", 1, 8, indices, GL_DYNAMIC_DRAW),
                                         CallLog::call("glNamedBufferData", 1, 8, shorts, kStatic),
                                         CallLog::call("glNamedBufferData", 1, 24, kSix.data(), kStatic)}));
}

TEST_F(BufferObjects, UploadOfABoundBufferGoesByItsTarget)
{
    const Buffer buffer = newBuffer();
    ASSERT_TRUE(buffer->bind());
    const QList<float> values(kSix.begin(), kSix.end());
    const CallLog calls;
    EXPECT_TRUE(buffer->upload(values, kStatic));
    EXPECT_EQ(calls.list(),
              QStringList({CallLog::call("glBufferData", GL_ARRAY_BUFFER, 24, values.constData(), kStatic)}));
    buffer->unbind();
}

TEST_F(BufferObjects, WithoutDirectAccessAnUploadNeedsTheBind)
{
    useFloor();
    const Buffer buffer = newBuffer();
    const LogCapture log;
    const CallLog calls;
    EXPECT_FALSE(buffer->upload(kSix.data(), 6, kStatic));
    EXPECT_FALSE(buffer->uploadArbitraryData(kSix.data(), 1, kStatic, 24));
    EXPECT_EQ(log.messages(),
              failure("0u != this->_boBountTarget", QStringLiteral("Buffer Object is not bound on upload")) +
                  failure("0u != this->_boBountTarget", QStringLiteral("Buffer Object is not bound on upload")));
    EXPECT_TRUE(calls.list().isEmpty());
    EXPECT_EQ(buffer->valueCount(), 0);
    ASSERT_TRUE(buffer->bind());
    EXPECT_TRUE(buffer->upload(kSix.data(), 6, kStatic));
    buffer->unbind();
}

TEST_F(BufferObjects, UploadWithCountZeroReturnsFalseAndLeavesTheOldSize)
{
    const Buffer buffer = newBuffer();
    ASSERT_TRUE(buffer->upload(kSix.data(), 6, kStatic));
    const QStringList expected =
        failure("0 != valueCount", QStringLiteral("Buffer Object needs more and 0 values during upload"));
    LogCapture log;
    const CallLog calls;
    EXPECT_FALSE(buffer->upload(kSix.data(), 0, kStatic));
    EXPECT_FALSE(buffer->upload(QList<float>(), kStatic));
    EXPECT_FALSE(buffer->uploadGLuintData(nullptr, 0, kStatic));
    EXPECT_FALSE(buffer->uploadGLushortData(nullptr, 0, kStatic));
    EXPECT_FALSE(buffer->uploadArbitraryData(kSix.data(), 0, kStatic, 4));
    EXPECT_EQ(log.messages(), expected + expected + expected + expected + expected);
    log.clear();
    EXPECT_FALSE(buffer->uploadArbitraryData(kSix.data(), 6, kStatic, 0));
    EXPECT_EQ(log.messages(),
              failure("0 != valueSize", QStringLiteral("Buffer Object needs more and 0 value size during upload")));
    EXPECT_TRUE(calls.list().isEmpty());
    EXPECT_EQ(buffer->valueCount(), 6);
    EXPECT_EQ(buffer->valueSize(), 4u);
}

TEST_F(BufferObjects, UploadIntoANullBufferFails)
{
    const Buffer null = wrapBuffer(0);
    const QStringList expected = failure("0u != this->_bo", QStringLiteral("Buffer Object is NULL on upload"));
    const GLuint indices[1] = {0};
    const GLushort shorts[1] = {0};
    const LogCapture log;
    const CallLog calls;
    EXPECT_FALSE(null->upload(kSix.data(), 0, kStatic)) << "the name is checked before the count";
    EXPECT_FALSE(null->uploadGLuintData(indices, 1, kStatic));
    EXPECT_FALSE(null->uploadGLushortData(shorts, 1, kStatic));
    EXPECT_FALSE(null->uploadArbitraryData(kSix.data(), 6, kStatic, 0));
    EXPECT_EQ(log.messages(), expected + expected + expected + expected);
    EXPECT_TRUE(calls.list().isEmpty());
}

TEST_F(BufferObjects, UploadBeyondTheAddressableIsReportedAndLeavesTheOldSize)
{
    const Buffer buffer = newBuffer();
    ASSERT_TRUE(buffer->upload(kSix.data(), 6, kStatic));
    const LogCapture log;
    const CallLog calls;
    EXPECT_FALSE(buffer->uploadArbitraryData(kSix.data(), 2, kStatic, ~std::size_t(0) / 2));
    EXPECT_EQ(log.messages(),
              failure("isCountable(valueCount, valueSize)",
                      QStringLiteral("Buffer Object cannot hold 2 values of 9223372036854775807 bytes")));
    EXPECT_TRUE(calls.list().isEmpty());
    EXPECT_EQ(buffer->valueCount(), 6);
}

TEST_F(BufferObjects, SizesAreComputedIn64Bits)
{
    const Buffer buffer = newBuffer();
    const CallLog calls;
    EXPECT_TRUE(buffer->uploadArbitraryData(nullptr, 1 << 20, kStatic, 1 << 16));
    EXPECT_EQ(calls.list(), QStringList({CallLog::call("glNamedBufferData", 1, qint64(1) << 36, nullptr, kStatic)}));
    EXPECT_EQ(buffer->memoryEstimateGPU(), std::size_t(1) << 36);
}

// ---- sub-upload
// ----------------------------------------------------------------------------------------------------------

TEST_F(BufferObjects, SubUploadAtExactlyTheEndPassesAndOneMoreFails)
{
    const Buffer buffer = newBuffer();
    ASSERT_TRUE(buffer->upload(kSix.data(), 6, kStatic));
    ASSERT_TRUE(buffer->bind());
    const LogCapture log;
    const CallLog calls;
    EXPECT_TRUE(buffer->subUpload(kSix.data(), 2, 4));
    EXPECT_FALSE(buffer->subUpload(kSix.data(), 2, 5));
    EXPECT_FALSE(buffer->subUpload(kSix.data(), 3, 4));
    EXPECT_EQ(calls.list(), QStringList({CallLog::call("glBufferSubData", GL_ARRAY_BUFFER, 16, 8, kSix.data())}));
    EXPECT_EQ(log.messages().size(), 2);
    EXPECT_TRUE(log.messages()[0].endsWith(QStringLiteral("failed: Buffer Object is not large enough to hold data")));
    buffer->unbind();
}

TEST_F(BufferObjects, SubUploadWhoseEndOverflowsFails)
{
    const Buffer buffer = newBuffer();
    ASSERT_TRUE(buffer->upload(kSix.data(), 6, kStatic));
    ASSERT_TRUE(buffer->bind());
    const LogCapture log;
    const CallLog calls;
    EXPECT_FALSE(buffer->subUpload(kSix.data(), std::numeric_limits<int>::max(), 6));
    EXPECT_TRUE(calls.list().isEmpty());
    buffer->unbind();
}

TEST_F(BufferObjects, SubUploadTakesFourBytesAValueWhateverWasUploaded)
{
    const Buffer buffer = newBuffer();
    ASSERT_TRUE(buffer->uploadArbitraryData(kSix.data(), 3, kStatic, 12));
    ASSERT_TRUE(buffer->bind());
    const QList<float> values = {1.0f, 2.0f};
    const CallLog calls;
    EXPECT_TRUE(buffer->subUpload(values, 1));
    EXPECT_EQ(calls.list(), QStringList({CallLog::call("glBufferSubData", GL_ARRAY_BUFFER, 4, 8, values.constData())}));
    buffer->unbind();
}

TEST_F(BufferObjects, SubUploadChecksNameThenBindingThenCount)
{
    const Buffer null = wrapBuffer(0);
    const Buffer buffer = newBuffer();
    ASSERT_TRUE(buffer->upload(kSix.data(), 6, kStatic));
    LogCapture log;
    const CallLog calls;
    EXPECT_FALSE(null->subUpload(kSix.data(), 0, 0));
    EXPECT_EQ(log.messages(), failure("0u != this->_bo", QStringLiteral("Buffer Object is NULL on upload")));
    log.clear();
    EXPECT_FALSE(buffer->subUpload(kSix.data(), 0, 0)) << "no direct-access path";
    EXPECT_EQ(log.messages(),
              failure("0u != this->_boBountTarget", QStringLiteral("Buffer Object is not bound on upload")));
    log.clear();
    ASSERT_TRUE(buffer->bind());
    const CallLog afterBind;
    EXPECT_FALSE(buffer->subUpload(kSix.data(), 0, 0));
    EXPECT_EQ(log.messages(),
              failure("0 != valueCount", QStringLiteral("Buffer Object needs more and 0 values during upload")));
    log.clear();
    EXPECT_FALSE(buffer->subUpload(nullptr, 2, 0));
    EXPECT_EQ(log.messages(), failure("nullptr != data", QStringLiteral("Buffer Object needs data on sub upload")));
    EXPECT_TRUE(afterBind.list().isEmpty());
    buffer->unbind();
}

// ---- immutable storage
// -----------------------------------------------------------------------------------------------

TEST_F(BufferObjects, StorageGoesThroughTheUniformBufferBindingWhereBothFormsExist)
{
    const Buffer buffer = newBuffer();
    const CallLog calls;
    buffer->useStorageBuffer(1024, GL_DYNAMIC_STORAGE_BIT);
    EXPECT_EQ(calls.list(),
              QStringList({CallLog::call("glBindBuffer", GL_UNIFORM_BUFFER, 1),
                           CallLog::call("glBufferStorage", GL_UNIFORM_BUFFER, 1024, nullptr, GL_DYNAMIC_STORAGE_BIT),
                           CallLog::call("glBindBuffer", GL_UNIFORM_BUFFER, 0)}));
    EXPECT_EQ(buffer->valueCount(), 0) << "only uploads keep the books";
    EXPECT_FALSE(buffer->isBindNeededForUpload());
}

TEST_F(BufferObjects, StorageGoesByNameWhereOnlyThatExists)
{
    driver.refuse("glBufferStorage");
    const Buffer buffer = newBuffer();
    const CallLog calls;
    buffer->useStorageBuffer(1024, 3);
    EXPECT_EQ(calls.list(), QStringList({CallLog::call("glNamedBufferStorage", 1, 1024, nullptr, 3)}));
    EXPECT_FALSE(buffer->isBindNeededForUpload());
}

TEST_F(BufferObjects, StorageIsLeftAloneWithoutTheFunctionsThatItNeeds)
{
    driver.refuse("glNamedBufferSubData");
    const Buffer noUpload = newBuffer();
    CallLog calls;
    noUpload->useStorageBuffer(1024, 0);
    EXPECT_TRUE(calls.list().isEmpty());
    EXPECT_TRUE(noUpload->isBindNeededForUpload());

    BufferObjectTestAccess::resetEntryPoints();
    driver.offer("glNamedBufferSubData");
    driver.refuse("glBufferStorage");
    driver.refuse("glNamedBufferStorage");
    const Buffer noStorage = newBuffer();
    calls.clear();
    noStorage->useStorageBuffer(1024, 0);
    EXPECT_TRUE(calls.list().isEmpty());
}

TEST_F(BufferObjects, StorageOfANullBufferIsReportedAndGoesOn)
{
    const Buffer null = wrapBuffer(0);
    const LogCapture log;
    const CallLog calls;
    null->useStorageBuffer(16, 0);
    EXPECT_EQ(log.messages(),
              failure("0u != this->_bo", QStringLiteral("Buffer Object is NULL during StorageBuffer setup")));
    EXPECT_EQ(calls.count(QStringLiteral("glBufferStorage")), 1);
    EXPECT_FALSE(null->isBindNeededForUpload());
}

TEST_F(BufferObjects, PlainUploadsIntoStorageGoTheOrdinaryRoad)
{
    const Buffer buffer = newBuffer();
    buffer->useStorageBuffer(1024, GL_DYNAMIC_STORAGE_BIT);
    const CallLog calls;
    EXPECT_TRUE(buffer->upload(kSix.data(), 6, kStatic));
    EXPECT_EQ(calls.list(), QStringList({CallLog::call("glNamedBufferData", 1, 24, kSix.data(), kStatic)}));
}

TEST_F(BufferObjects, StorageIsWrittenFromItsStartEvenWhileBound)
{
    const Buffer buffer = newBuffer();
    buffer->useStorageBuffer(1024, GL_DYNAMIC_STORAGE_BIT);
    ASSERT_TRUE(buffer->bind());
    const CallLog calls;
    EXPECT_TRUE(buffer->uploadArbitraryData(kSix.data(), 2, kStatic, 12));
    EXPECT_EQ(calls.list(), QStringList({CallLog::call("glNamedBufferSubData", 1, 0, 24, kSix.data())}));
    EXPECT_EQ(buffer->valueCount(), 2);
    EXPECT_EQ(buffer->valueSize(), 12u);
    const LogCapture log;
    EXPECT_FALSE(buffer->uploadArbitraryData(nullptr, 2, kStatic, 12));
    EXPECT_EQ(log.messages(),
              failure("nullptr != data", QStringLiteral("Buffer Object needs data on upload into its storage")));
    buffer->unbind();
}

// ---- is a bind needed
// --------------------------------------------------------------------------------------------------

TEST_F(BufferObjects, FirstUploadNeedsABindAndLaterOnesDoNot)
{
    const Buffer buffer = newBuffer();
    EXPECT_TRUE(buffer->isBindNeededForUpload());
    ASSERT_TRUE(buffer->upload(kSix.data(), 6, kStatic));
    EXPECT_FALSE(buffer->isBindNeededForUpload());
    buffer->setIndexedTarget(GL_ATOMIC_COUNTER_BUFFER, 0, 0, 4);
    EXPECT_TRUE(buffer->isBindNeededForUpload());
}

TEST_F(BufferObjects, WithoutDirectAccessEveryUploadNeedsABind)
{
    useFloor();
    const Buffer buffer = newBuffer();
    ASSERT_TRUE(buffer->bind());
    ASSERT_TRUE(buffer->upload(kSix.data(), 6, kStatic));
    buffer->unbind();
    EXPECT_TRUE(buffer->isBindNeededForUpload());
}

// ---- map
// -----------------------------------------------------------------------------------------------------------------

TEST_F(BufferObjects, MapGivesTheDriversPointer)
{
    static char memory = 0;
    driver.replace(
        "glMapBuffer", +[](GLenum, GLenum) -> void* { return &memory; });
    driver.load();
    const Buffer buffer = newBuffer();
    ASSERT_TRUE(buffer->bind());
    const CallLog calls;
    EXPECT_EQ(buffer->map(GL_WRITE_ONLY), &memory);
    buffer->unmap();
    EXPECT_EQ(calls.list(), QStringList({CallLog::call("glMapBuffer", GL_ARRAY_BUFFER, GL_WRITE_ONLY),
                                         CallLog::call("glUnmapBuffer", GL_ARRAY_BUFFER)}));
    buffer->unbind();
}

TEST_F(BufferObjects, MapChecksNameThenBinding)
{
    const Buffer null = wrapBuffer(0);
    const Buffer buffer = newBuffer();
    const LogCapture log;
    const CallLog calls;
    EXPECT_EQ(null->map(GL_WRITE_ONLY), nullptr);
    EXPECT_EQ(buffer->map(GL_WRITE_ONLY), nullptr);
    EXPECT_EQ(log.messages(),
              failure("0u != this->_bo", QStringLiteral("Buffer Object is NULL on map")) +
                  failure("0u != this->_boBountTarget", QStringLiteral("Buffer Object is not bound on map")));
    EXPECT_TRUE(calls.list().isEmpty());
}

TEST_F(BufferObjects, MapOfABoundBufferWhoseTargetWasTakenAwayFails)
{
    const Buffer buffer = newBuffer();
    ASSERT_TRUE(buffer->bind());
    buffer->setTarget(0);
    const LogCapture log;
    const CallLog calls;
    EXPECT_EQ(buffer->map(GL_WRITE_ONLY), nullptr);
    EXPECT_TRUE(calls.list().isEmpty());
    EXPECT_EQ(log.messages(),
              failure("0u != this->_target", QStringLiteral("Buffer Object's Target is not set when map() is called")));
    buffer->setTarget(GL_ARRAY_BUFFER);
    buffer->unbind();
}

TEST_F(BufferObjects, UnmapReportsAllThreeInTheWordsOfMapAndCallsAllTheSame)
{
    const Buffer null(BufferObjectTestAccess::wrap(0));
    const LogCapture log;
    const CallLog calls;
    null->unmap();
    EXPECT_EQ(
        log.messages(),
        failure("0u != this->_bo", QStringLiteral("Buffer Object is NULL on map")) +
            failure("0u != this->_boBountTarget", QStringLiteral("Buffer Object is not bound on unmap")) +
            failure("0u != this->_target", QStringLiteral("Buffer Object's target is not set when unmap() is called")));
    EXPECT_EQ(calls.list(), QStringList({CallLog::call("glUnmapBuffer", 0)}));
}

// ---- estimates
// -----------------------------------------------------------------------------------------------------------

TEST_F(BufferObjects, EstimateOfTheGpuIsCountTimesSizeAlsoForAWrappedBuffer)
{
    const Buffer null = wrapBuffer(0);
    EXPECT_EQ(null->memoryEstimateGPU(), 0u);
    const Buffer buffer = wrapBuffer(8);
    EXPECT_EQ(buffer->memoryEstimateGPU(), 0u);
    ASSERT_TRUE(buffer->uploadArbitraryData(kSix.data(), 2, kStatic, 12));
    EXPECT_EQ(buffer->memoryEstimateGPU(), 24u);
    BufferObjectTestAccess::setName(*buffer, 0);
    EXPECT_EQ(buffer->memoryEstimateGPU(), 0u);
    BufferObjectTestAccess::setName(*buffer, 8);
    ASSERT_TRUE(buffer->uploadArbitraryData(kSix.data(), -1, kStatic, 12));
    EXPECT_EQ(buffer->memoryEstimateGPU(), ~std::size_t(0) - 11) << "the count is sign-extended";
    EXPECT_EQ(buffer->memoryEstimateCPU(), sizeof(BufferObject));
}
