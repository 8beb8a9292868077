// SPDX-License-Identifier: MIT
#include "BufferObjectTestTools.h"

#include <limits>

namespace Harrow::Vrk::Test
{
namespace
{

// -- upload --

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

// -- sub-upload --

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

// -- immutable storage --

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

// -- is a bind needed --

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

// -- map --

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

// -- estimates --

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

} // namespace
} // namespace Harrow::Vrk::Test
