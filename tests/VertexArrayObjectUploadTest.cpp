// SPDX-License-Identifier: MIT
#include "VertexArrayObjectTestTools.h"

#include <climits>

namespace Harrow::Vrk::Test
{
namespace
{

using Access = VertexArrayObjectTestAccess;

TEST_F(VertexArrayObjectTest, SupportedTypes)
{
    struct Row
    {
        GLenum type;
        bool supported;
    };
    constexpr Row rows[] = {
        {0x1400, false}, {0x1401, true},  {0x1402, false}, {0x1403, true},  {0x1404, true}, {0x1405, true},
        {0x1406, true},  {0x140A, false}, {0x140B, true},  {0x8D9F, false}, {0, false},
    };
    for (const Row& row : rows)
        EXPECT_EQ(VertexArrayObject::isTypeSupported(row.type), row.supported) << std::hex << row.type;
}

TEST_F(VertexArrayObjectTest, RegisterOfAnUnsupportedTypeReportsAndStores)
{
    const auto buffer = newArrayBuffer();
    LogCapture log;
    vao->registerBO(kAttribute, buffer, 3, GL_DOUBLE);
    EXPECT_EQ(log.messages(QtCriticalMsg),
              QStringList(assertion("true == isTypeSupported(type)", "Unsupported type 0x140A")));
    EXPECT_EQ(vao->bo(kAttribute), buffer);

    log.clear();
    vao->registerBO(QStringLiteral("va_Other"), buffer, 3, GL_SHORT, true, 12, 4);
    EXPECT_EQ(log.messages(QtCriticalMsg),
              QStringList(assertion("true == isTypeSupported(type)", "Unsupported type 0x1402")));
    EXPECT_EQ(vao->bo(QStringLiteral("va_Other")), buffer);
}

TEST_F(VertexArrayObjectTest, BufferOfAnUnknownNameIsNull)
{
    EXPECT_TRUE(vao->bo(kAttribute).isNull());
}

TEST_F(VertexArrayObjectTest, UploadOfTypeRegistersWithoutAnyCall)
{
    const auto buffer = newArrayBuffer();
    CallLog calls;
    EXPECT_TRUE(vao->upload(kAttribute, buffer, 2, GL_HALF_FLOAT));
    EXPECT_EQ(calls.list(), QStringList());
    EXPECT_EQ(vao->bo(kAttribute), buffer);
}

TEST_F(VertexArrayObjectTest, UploadOfTypeWithoutABufferFails)
{
    LogCapture log;
    EXPECT_FALSE(vao->upload(kAttribute, {}, 2, GL_FLOAT));
    EXPECT_EQ(log.messages(), QStringList(assertion("!bufferObj.isNull()", "Must Supply a valid BO pointer")));
}

TEST_F(VertexArrayObjectTest, UploadOfDataBindsUploadsUnbindsAndRegisters)
{
    const auto buffer = newArrayBuffer();
    constexpr float values[6] = {};
    CallLog calls;
    EXPECT_TRUE(vao->upload(kAttribute, buffer, values, 6, 3, GL_STATIC_DRAW));
    EXPECT_EQ(calls.list(), QStringList({CallLog::call("glBindBuffer", GL_ARRAY_BUFFER, 1),
                                         CallLog::call("glBufferData", GL_ARRAY_BUFFER, 24, values, GL_STATIC_DRAW),
                                         CallLog::call("glBindBuffer", GL_ARRAY_BUFFER, 0)}));
    EXPECT_EQ(vao->bo(kAttribute), buffer);
    vao->bind();
    calls.clear();
    EXPECT_TRUE(Access::enableArray(*vao, kAttribute, 4));
    EXPECT_EQ(calls.named({"glVertexAttribPointer"}),
              QStringList(CallLog::call("glVertexAttribPointer", 4, 3, GL_FLOAT, 0, 0, nullptr)));
    vao->unbind();
}

TEST_F(VertexArrayObjectTest, UploadOfAListPassesItsDataAndSize)
{
    const auto buffer = newArrayBuffer();
    const QList<float> values = {1, 2, 3, 4};
    CallLog calls;
    EXPECT_TRUE(vao->upload(kAttribute, buffer, values, 2, GL_DYNAMIC_DRAW));
    EXPECT_EQ(calls.named({"glBufferData"}),
              QStringList(CallLog::call("glBufferData", GL_ARRAY_BUFFER, 16, values.constData(), GL_DYNAMIC_DRAW)));
}

TEST_F(VertexArrayObjectTest, UploadOfDataWithoutABufferFails)
{
    constexpr float values[6] = {};
    LogCapture log;
    EXPECT_FALSE(vao->upload(kAttribute, {}, values, 6, 3, GL_STATIC_DRAW));
    EXPECT_EQ(log.messages(), QStringList(assertion("NULL != bufferObj", "Must Supply a valid BO pointer")));
}

TEST_F(VertexArrayObjectTest, UploadOfNoWholeNumberOfVerticesFailsAndStoresNothing)
{
    const auto buffer = newArrayBuffer();
    constexpr float values[7] = {};
    LogCapture log;
    CallLog calls;
    EXPECT_FALSE(vao->upload(kAttribute, buffer, values, 7, 3, GL_STATIC_DRAW));
    EXPECT_EQ(calls.list(), QStringList());
    EXPECT_TRUE(vao->bo(kAttribute).isNull());
    EXPECT_EQ(log.messages(), QStringList(assertion("0 == (valueCount \\% valuesPerVertex)",
                                                    "Data size (7) must be a multi of the values per vertex (3)")));
}

TEST_F(VertexArrayObjectTest, UploadWithCountsThatHaveNoRemainderFails)
{
    const auto buffer = newArrayBuffer();
    constexpr float values[6] = {};
    LogCapture log;
    CallLog calls;
    EXPECT_FALSE(vao->upload(kAttribute, buffer, values, 6, 0, GL_STATIC_DRAW));
    EXPECT_FALSE(vao->upload(kAttribute, buffer, values, INT_MIN, -1, GL_STATIC_DRAW));
    EXPECT_EQ(calls.list(), QStringList());
    EXPECT_TRUE(vao->bo(kAttribute).isNull());
    EXPECT_EQ(log.messages(),
              QStringList({assertion("canDivide(valueCount, valuesPerVertex)",
                                     "Data size (6) cannot be divided by the values per vertex (0)"),
                           assertion("canDivide(valueCount, valuesPerVertex)",
                                     "Data size (-2147483648) cannot be divided by the values per vertex (-1)")}));
}

TEST_F(VertexArrayObjectTest, UploadIntoABufferThatCannotBeBoundFailsWithBothLines)
{
    const auto buffer = OpenGLDeviceContext::current()->newBuffer(); // without a target
    constexpr float values[6] = {};
    LogCapture log;
    CallLog calls;
    EXPECT_FALSE(vao->upload(kAttribute, buffer, values, 6, 3, GL_STATIC_DRAW));
    EXPECT_EQ(calls.list(), QStringList());
    EXPECT_TRUE(vao->bo(kAttribute).isNull());
    EXPECT_EQ(log.messages(QtCriticalMsg),
              QStringList({assertion("0u != this->_target", "Buffer Object's target is not set when bind() is called"),
                           QStringLiteral("[ !! ] Failed to bind BO")}));
}

TEST_F(VertexArrayObjectTest, UploadThatTheBufferDeniesIsRegisteredEvenSo)
{
    const auto buffer = newArrayBuffer();
    LogCapture log;
    EXPECT_TRUE(vao->upload(kAttribute, buffer, QList<float>(), 3, GL_STATIC_DRAW));
    EXPECT_EQ(log.messages(),
              QStringList(assertion("0 != valueCount", "Buffer Object needs more and 0 values during upload")));
    EXPECT_EQ(vao->bo(kAttribute), buffer);
}

TEST_F(VertexArrayObjectTest, SubUploadBindsWritesUnbindsAndDirtiesNothing)
{
    const auto buffer = newArrayBuffer();
    vao->upload(kAttribute, buffer, QList<float>(12), 3, GL_STATIC_DRAW);
    vao->bind();
    Access::enableArray(*vao, kAttribute, 0);
    constexpr float values[6] = {};
    CallLog calls;
    EXPECT_TRUE(vao->subUpload(kAttribute, values, 6, 3, 6));
    EXPECT_EQ(calls.list(), QStringList({CallLog::call("glBindBuffer", GL_ARRAY_BUFFER, 1),
                                         CallLog::call("glBufferSubData", GL_ARRAY_BUFFER, 24, 24, values),
                                         CallLog::call("glBindBuffer", GL_ARRAY_BUFFER, 0)}));
    calls.clear();
    EXPECT_TRUE(Access::enableArray(*vao, kAttribute, 0));
    EXPECT_EQ(calls.list(), QStringList());
    vao->unbind();
}

TEST_F(VertexArrayObjectTest, SubUploadOfAListPassesItsDataAndSize)
{
    const auto buffer = newArrayBuffer();
    vao->upload(kAttribute, buffer, QList<float>(12), 3, GL_STATIC_DRAW);
    const QList<float> values = {1, 2, 3};
    CallLog calls;
    EXPECT_TRUE(vao->subUpload(kAttribute, values, 3, 9));
    EXPECT_EQ(calls.named({"glBufferSubData"}),
              QStringList(CallLog::call("glBufferSubData", GL_ARRAY_BUFFER, 36, 12, values.constData())));
}

TEST_F(VertexArrayObjectTest, SubUploadFailsWithTheWordsOfEachPrecondition)
{
    constexpr float values[6] = {};
    LogCapture log;
    CallLog calls;
    EXPECT_FALSE(vao->subUpload(kAttribute, values, 6, 3, 0));
    EXPECT_EQ(log.messages(), QStringList(assertion("_attributesData.contains(attrName)",
                                                    "Must Supply an existing BO attribute name")));

    vao->registerBO(kAttribute, newArrayBuffer(), 3, GL_FLOAT);
    calls.clear();
    log.clear();
    EXPECT_FALSE(vao->subUpload(kAttribute, values, 6, 2, 0));
    EXPECT_EQ(log.messages(), QStringList(assertion("_attributesData[attrName]._valuesPerVertex == valuesPerVertex",
                                                    "Values per vertex must match (Current 3 != New 2)")));

    log.clear();
    EXPECT_FALSE(vao->subUpload(kAttribute, values, 5, 3, 0));
    EXPECT_EQ(log.messages(), QStringList(assertion("0 == (valueCount \\% valuesPerVertex)",
                                                    "Data size (5) must be a multi of the values per vertex (3)")));

    vao->registerBO(kAttribute, newArrayBuffer(), 0, GL_FLOAT);
    calls.clear();
    log.clear();
    EXPECT_FALSE(vao->subUpload(kAttribute, values, 6, 0, 0));
    EXPECT_EQ(log.messages(), QStringList(assertion("canDivide(valueCount, valuesPerVertex)",
                                                    "Data size (6) cannot be divided by the values per vertex (0)")));

    vao->registerBO(kAttribute, {}, 3, GL_FLOAT);
    log.clear();
    EXPECT_FALSE(vao->subUpload(kAttribute, values, 6, 3, 0));
    EXPECT_EQ(log.messages(),
              QStringList(assertion("!bufferObj.isNull()", "Buffer Object of the attribute is NULL on subUpload")));

    vao->registerBO(kAttribute, OpenGLDeviceContext::current()->newBuffer(), 3, GL_FLOAT);
    calls.clear();
    log.clear();
    EXPECT_FALSE(vao->subUpload(kAttribute, values, 6, 3, 0));
    EXPECT_EQ(log.messages().last(), QStringLiteral("[ !! ] Failed to bind BO"));
    EXPECT_EQ(calls.list(), QStringList());
}

TEST_F(VertexArrayObjectTest, SubUploadThatTheBufferDeniesIsTrueAndLeavesItUnbound)
{
    const auto buffer = newArrayBuffer();
    vao->upload(kAttribute, buffer, QList<float>(6), 3, GL_STATIC_DRAW);
    constexpr float values[3] = {};
    LogCapture log;
    CallLog calls;
    EXPECT_TRUE(vao->subUpload(kAttribute, values, 3, 3, 6)) << "one vertex too far";
    EXPECT_EQ(log.messages(), QStringList(assertion("static_cast<qint64>(offset) + valueCount <= this->_valueCount",
                                                    "Buffer Object is not large enough to hold data")));
    EXPECT_EQ(calls.list(), QStringList({CallLog::call("glBindBuffer", GL_ARRAY_BUFFER, 1),
                                         CallLog::call("glBindBuffer", GL_ARRAY_BUFFER, 0)}));
    EXPECT_TRUE(buffer->bind()) << "it is free to be bound";
    EXPECT_TRUE(buffer->unbind());
}

TEST_F(VertexArrayObjectTest, MapOfABufferThatCannotBeBoundIsNullInTheBuffersWords)
{
    vao->registerBO(kAttribute, OpenGLDeviceContext::current()->newBuffer(), 3, GL_FLOAT); // without a target
    const QString bind = assertion("0u != this->_target", "Buffer Object's target is not set when bind() is called");
    const QString unbind = assertion("0u != this->_boBountTarget", "Buffer Object is not bound on unbind");
    LogCapture log;
    CallLog calls;
    EXPECT_EQ(vao->mapBO(kAttribute), nullptr);
    EXPECT_EQ(calls.list(), QStringList());
    EXPECT_EQ(
        log.messages(),
        QStringList({bind, assertion("0u != this->_boBountTarget", "Buffer Object is not bound on map"), unbind}));
    log.clear();
    vao->unmapBO(kAttribute);
    EXPECT_EQ(calls.list(), QStringList(CallLog::call("glUnmapBuffer", 0))) << "OpenGL is told, as ever";
    EXPECT_EQ(log.messages(), QStringList({bind, unbind}));
}

TEST_F(VertexArrayObjectTest, MappingOutlivesTheBinding)
{
    static char memory[4];
    driver.replace(
        "glMapBuffer", +[](GLenum, GLenum) -> void* { return memory; });
    driver.load();
    vao->registerBO(kAttribute, newArrayBuffer(), 3, GL_FLOAT);
    CallLog calls;
    EXPECT_EQ(vao->mapBO(kAttribute), memory);
    vao->unmapBO(kAttribute);
    EXPECT_EQ(calls.list(), QStringList({CallLog::call("glBindBuffer", GL_ARRAY_BUFFER, 1),
                                         CallLog::call("glMapBuffer", GL_ARRAY_BUFFER, GL_WRITE_ONLY),
                                         CallLog::call("glBindBuffer", GL_ARRAY_BUFFER, 0),
                                         CallLog::call("glBindBuffer", GL_ARRAY_BUFFER, 1),
                                         CallLog::call("glUnmapBuffer", GL_ARRAY_BUFFER),
                                         CallLog::call("glBindBuffer", GL_ARRAY_BUFFER, 0)}));
}

TEST_F(VertexArrayObjectTest, MapOfAnUnknownNameIsSilentlyNull)
{
    LogCapture log;
    CallLog calls;
    EXPECT_EQ(vao->mapBO(kAttribute), nullptr);
    vao->unmapBO(kAttribute);
    EXPECT_EQ(log.texts(), QStringList());
    EXPECT_EQ(calls.list(), QStringList());
}

} // namespace
} // namespace Harrow::Vrk::Test
