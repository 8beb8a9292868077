// SPDX-License-Identifier: MIT
#include "VertexArrayObject.h"

#include "BufferObject.h"
#include "OpenGLDeviceContext.h"
#include "ShaderProgram.h"
#include "support/CallLog.h"
#include "support/FakeDriver.h"
#include "support/GLTest.h"
#include "support/LogCapture.h"
#include "support/ObjectAccess.h"
#include "support/TestAccess.h"
#include "support/TransformFeedback.h"

#include <array>
#include <climits>
#include <cstring>

namespace Harrow::Vrk::Test
{
namespace
{

using Access = VertexArrayObjectTestAccess;

const QString kName = QStringLiteral("va_Vertex");

QSharedPointer<BufferObject> newArrayBuffer()
{
    auto buffer = OpenGLDeviceContext::current()->newBuffer();
    buffer->setTarget(GL_ARRAY_BUFFER);
    return buffer;
}

// ---- on the fake driver --------------------------------------------------------------------------------------------

class VertexArrayObjectTest : public FakeDriverTest
{
protected:
    void SetUp() override
    {
        FakeDriverTest::SetUp();
        vao = Access::make();
    }

    QString assertion(const char* condition, const char* message) const
    {
        return assertionLine(QString::fromLatin1(condition), QString::fromLatin1(message));
    }

    /// A program on this driver with the given attributes, at locations 0, 1, …
    QSharedPointer<ShaderProgram> linkedProgram(const QList<QByteArray>& names)
    {
        static QList<QByteArray> attributes;
        attributes = names;
        driver.replace(
            "glGetProgramiv",
            +[](GLuint, GLenum parameter, GLint* value)
            { *value = parameter == GL_ACTIVE_ATTRIBUTES ? GLint(attributes.size()) : parameter == GL_LINK_STATUS; });
        driver.replace(
            "glGetActiveAttrib",
            +[](GLuint, GLuint index, GLsizei, GLsizei* length, GLint* size, GLenum* type, GLchar* name)
            {
                const QByteArray& text = attributes.at(index);
                std::memcpy(name, text.constData(), text.size() + 1);
                if (length)
                    *length = GLsizei(text.size());
                *size = 1;
                *type = GL_FLOAT_VEC3;
            });
        driver.replace(
            "glGetAttribLocation", +[](GLuint, const GLchar* name) { return GLint(attributes.indexOf(name)); });
        driver.load();
        auto program = QSharedPointer<ShaderProgram>::create();
        EXPECT_TRUE(program->link());
        EXPECT_EQ(program->getVertexAttributeNameLocationMap().size(), names.size());
        return program;
    }

    QSharedPointer<VertexArrayObject> vao;
};

TEST_F(VertexArrayObjectTest, ConstructorAsksForTheNumberOfAttributesAndMakesNoName)
{
    driver.setInteger(GL_MAX_VERTEX_ATTRIBS, 21);
    CallLog calls;
    const auto made = Access::make();
    ASSERT_EQ(calls.list().size(), 1);
    EXPECT_TRUE(calls.list().first().startsWith(QStringLiteral("glGetIntegerv(0x8869, ")));
    EXPECT_EQ(made->getVAO(), 0u);
    EXPECT_EQ(Access::attributeNames(*made), QList<QString>(21));
}

TEST_F(VertexArrayObjectTest, ContextTrackerIsNull)
{
    EXPECT_EQ(vao->getContextTracker(), nullptr);
}

TEST_F(VertexArrayObjectTest, NumAliveCountsLivingObjects)
{
    const int before = VertexArrayObject::NumAlive();
    auto second = Access::make();
    EXPECT_EQ(VertexArrayObject::NumAlive(), before + 1);
    second.clear();
    EXPECT_EQ(VertexArrayObject::NumAlive(), before);
}

TEST_F(VertexArrayObjectTest, FirstBindMakesTheNameAndLaterOnesDoNot)
{
    CallLog calls;
    EXPECT_TRUE(vao->bind());
    EXPECT_EQ(vao->getVAO(), 1u);
    EXPECT_TRUE(vao->isBound());
    EXPECT_TRUE(vao->unbind());
    EXPECT_FALSE(vao->isBound());
    EXPECT_TRUE(vao->bind());
    EXPECT_TRUE(vao->unbind());
    EXPECT_EQ(calls.count("glGenVertexArrays"), 1);
    EXPECT_EQ(calls.named({"glBindVertexArray"}),
              QStringList({CallLog::call("glBindVertexArray", 1), CallLog::call("glBindVertexArray", 0),
                           CallLog::call("glBindVertexArray", 1), CallLog::call("glBindVertexArray", 0)}));
    EXPECT_EQ(calls.list().size(), 5);
}

TEST_F(VertexArrayObjectTest, DestructorDeletesTheName)
{
    vao->bind();
    vao->unbind();
    LogCapture log;
    CallLog calls;
    vao.clear();
    EXPECT_EQ(calls.list().size(), 1);
    EXPECT_EQ(calls.count("glDeleteVertexArrays"), 1);
    EXPECT_EQ(log.texts(), QStringList());
}

TEST_F(VertexArrayObjectTest, DestructorOfAnObjectThatWasNeverBoundCallsNothing)
{
    LogCapture log;
    CallLog calls;
    vao.clear();
    EXPECT_EQ(calls.list(), QStringList());
    EXPECT_EQ(log.texts(), QStringList());
}

TEST_F(VertexArrayObjectTest, DestructorOfABoundObjectReportsThriceAndLeavesTheNameAlive)
{
    const int before = VertexArrayObject::NumAlive();
    vao->bind();
    LogCapture log;
    CallLog calls;
    vao.clear();
    EXPECT_EQ(calls.list(), QStringList());
    EXPECT_EQ(VertexArrayObject::NumAlive(), before - 1);
    EXPECT_EQ(
        log.messages(QtCriticalMsg),
        QStringList(
            {assertion("false == this->_vaoBound", "Vertex Array Object is already bound on destroy"),
             assertion("false == this->_vaoBound", "Vertex Array Object is bound during class destructor"),
             assertion("0u == this->_vao", "Vertex Array Object needs to be destroied before class destructor")}));
}

TEST_F(VertexArrayObjectTest, DestroyOfABoundObjectFails)
{
    vao->bind();
    LogCapture log;
    CallLog calls;
    EXPECT_FALSE(Access::destroy(*vao));
    EXPECT_EQ(vao->getVAO(), 1u);
    EXPECT_EQ(log.messages(),
              QStringList(assertion("false == this->_vaoBound", "Vertex Array Object is already bound on destroy")));
    vao->unbind();
    EXPECT_TRUE(Access::destroy(*vao));
    EXPECT_EQ(vao->getVAO(), 0u);
}

TEST_F(VertexArrayObjectTest, CreateWithANameFails)
{
    EXPECT_TRUE(Access::create(*vao));
    LogCapture log;
    EXPECT_FALSE(Access::create(*vao));
    EXPECT_EQ(log.messages(), QStringList(assertion("0u == this->_vao", "Vertex Array Object is not NULL on create")));
}

TEST_F(VertexArrayObjectTest, CreateWhileBoundFails)
{
    vao->bind();
    Access::setName(*vao, 0);
    LogCapture log;
    EXPECT_FALSE(Access::create(*vao));
    EXPECT_EQ(log.messages(),
              QStringList(assertion("false == this->_vaoBound", "Vertex Array Object is already bound on create")));
    Access::setName(*vao, 1);
    vao->unbind();
}

TEST_F(VertexArrayObjectTest, BindWithoutANameFromTheDriverFails)
{
    driver.replace(
        "glGenVertexArrays", +[](GLsizei, GLuint*) {});
    driver.load();
    LogCapture log;
    CallLog calls;
    EXPECT_FALSE(vao->bind());
    EXPECT_EQ(calls.count("glBindVertexArray"), 0);
    EXPECT_EQ(log.messages(), QStringList(assertion("0u != this->_vao", "Vertex Array Object is NULL on bind")));
}

TEST_F(VertexArrayObjectTest, SecondBindFailsAndCallsNothing)
{
    vao->bind();
    LogCapture log;
    CallLog calls;
    EXPECT_FALSE(vao->bind());
    EXPECT_EQ(calls.list(), QStringList());
    EXPECT_EQ(log.messages(),
              QStringList(assertion("false == this->_vaoBound", "Vertex Array Object is already bound on bind")));
    vao->unbind();
}

TEST_F(VertexArrayObjectTest, UnbindOfANamelessObjectFails)
{
    LogCapture log;
    CallLog calls;
    EXPECT_FALSE(vao->unbind());
    EXPECT_EQ(calls.list(), QStringList());
    EXPECT_EQ(log.messages(), QStringList(assertion("0u != this->_vao", "Vertex Array Object is NULL on unbind")));
}

TEST_F(VertexArrayObjectTest, UnbindOfAnUnboundObjectFails)
{
    vao->bind();
    vao->unbind();
    LogCapture log;
    CallLog calls;
    EXPECT_FALSE(vao->unbind());
    EXPECT_EQ(calls.list(), QStringList());
    EXPECT_EQ(log.messages(),
              QStringList(assertion("true == this->_vaoBound", "Vertex Array Object is not bound on unbind")));
}

TEST_F(VertexArrayObjectTest, IsBoundOfANeverBoundObjectReports)
{
    LogCapture log;
    EXPECT_FALSE(vao->isBound());
    EXPECT_EQ(log.messages(QtCriticalMsg),
              QStringList(assertion("0u != this->_vao", "Vertex Array Object is NULL on isBound")));
}

TEST_F(VertexArrayObjectTest, RebindOfItselfIsTrueAndUnchanged)
{
    LogCapture log;
    CallLog calls;
    bool changed = true;
    EXPECT_TRUE(vao->rebind(vao.data(), changed));
    EXPECT_FALSE(changed);
    EXPECT_EQ(calls.list(), QStringList());
    EXPECT_EQ(log.texts(), QStringList());
}

TEST_F(VertexArrayObjectTest, RebindOfNullBindsAndIsChanged)
{
    bool changed = false;
    EXPECT_TRUE(vao->rebind(nullptr, changed));
    EXPECT_TRUE(changed);
    EXPECT_TRUE(vao->isBound());
    changed = false;
    LogCapture log;
    EXPECT_FALSE(vao->rebind(nullptr, changed));
    EXPECT_TRUE(changed);
    EXPECT_EQ(log.messages(),
              QStringList(assertion("false == this->_vaoBound", "Vertex Array Object is already bound on bind")));
    vao->unbind();
}

TEST_F(VertexArrayObjectTest, RebindHandsTheBindingOverWithOneCall)
{
    const auto other = Access::make();
    other->bind();
    CallLog calls;
    bool changed = false;
    EXPECT_TRUE(vao->rebind(other.data(), changed));
    EXPECT_TRUE(changed);
    EXPECT_TRUE(vao->isBound());
    EXPECT_FALSE(other->isBound());
    EXPECT_EQ(calls.count("glGenVertexArrays"), 1);
    EXPECT_EQ(calls.named({"glBindVertexArray"}), QStringList(CallLog::call("glBindVertexArray", 2)));
    EXPECT_EQ(calls.list().size(), 2);
    vao->unbind();
}

TEST_F(VertexArrayObjectTest, RebindBetweenTwoObjectsOfOneNameMovesTheFlagWithoutACall)
{
    const auto other = Access::make();
    other->bind();
    Access::setName(*vao, other->getVAO());
    CallLog calls;
    bool changed = true;
    EXPECT_TRUE(vao->rebind(other.data(), changed));
    EXPECT_FALSE(changed);
    EXPECT_EQ(calls.list(), QStringList());
    EXPECT_TRUE(vao->isBound());
    EXPECT_FALSE(other->isBound());
    vao->unbind();
    Access::setName(*vao, 0);
}

TEST_F(VertexArrayObjectTest, RebindFailsWithTheWordsOfEachPrecondition)
{
    const auto other = Access::make();
    bool changed = true;
    LogCapture log;

    EXPECT_FALSE(vao->rebind(other.data(), changed));
    EXPECT_FALSE(changed);
    EXPECT_EQ(log.messages(),
              QStringList(assertion("0u != vertexArrayObjectBound->_vao", "Vertex Array Object is NULL on rebind")));
    EXPECT_EQ(vao->getVAO(), 1u) << "the name is made before the other one is looked at";

    log.clear();
    other->bind();
    other->unbind();
    EXPECT_FALSE(vao->rebind(other.data(), changed));
    EXPECT_EQ(log.messages(), QStringList(assertion("true == vertexArrayObjectBound->_vaoBound",
                                                    "Vertex Array Object is not already bound on rebind")));

    log.clear();
    vao->bind();
    EXPECT_FALSE(vao->rebind(other.data(), changed));
    EXPECT_EQ(log.messages(),
              QStringList(assertion("false == this->_vaoBound", "Vertex Array Object is already bound on rebind")));
    vao->unbind();
}

TEST_F(VertexArrayObjectTest, RebindWithoutANameFromTheDriverFails)
{
    const auto other = Access::make();
    other->bind();
    driver.replace(
        "glGenVertexArrays", +[](GLsizei, GLuint*) {});
    driver.load();
    bool changed = true;
    LogCapture log;
    EXPECT_FALSE(vao->rebind(other.data(), changed));
    EXPECT_EQ(log.messages(), QStringList(assertion("0u != this->_vao", "Vertex Array Object is NULL on rebind")));
    EXPECT_TRUE(other->isBound());
    other->unbind();
}

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
    vao->registerBO(kName, buffer, 3, GL_DOUBLE);
    EXPECT_EQ(log.messages(QtCriticalMsg),
              QStringList(assertion("true == isTypeSupported(type)", "Unsupported type 0x140A")));
    EXPECT_EQ(vao->bo(kName), buffer);

    log.clear();
    vao->registerBO(QStringLiteral("va_Other"), buffer, 3, GL_SHORT, true, 12, 4);
    EXPECT_EQ(log.messages(QtCriticalMsg),
              QStringList(assertion("true == isTypeSupported(type)", "Unsupported type 0x1402")));
    EXPECT_EQ(vao->bo(QStringLiteral("va_Other")), buffer);
}

TEST_F(VertexArrayObjectTest, BufferOfAnUnknownNameIsNull)
{
    EXPECT_TRUE(vao->bo(kName).isNull());
}

TEST_F(VertexArrayObjectTest, UploadOfTypeRegistersWithoutAnyCall)
{
    const auto buffer = newArrayBuffer();
    CallLog calls;
    EXPECT_TRUE(vao->upload(kName, buffer, 2, GL_HALF_FLOAT));
    EXPECT_EQ(calls.list(), QStringList());
    EXPECT_EQ(vao->bo(kName), buffer);
}

TEST_F(VertexArrayObjectTest, UploadOfTypeWithoutABufferFails)
{
    LogCapture log;
    EXPECT_FALSE(vao->upload(kName, {}, 2, GL_FLOAT));
    EXPECT_EQ(log.messages(), QStringList(assertion("!bufferObj.isNull()", "Must Supply a valid BO pointer")));
}

TEST_F(VertexArrayObjectTest, UploadOfDataBindsUploadsUnbindsAndRegisters)
{
    const auto buffer = newArrayBuffer();
    constexpr float values[6] = {};
    CallLog calls;
    EXPECT_TRUE(vao->upload(kName, buffer, values, 6, 3, GL_STATIC_DRAW));
    EXPECT_EQ(calls.list(), QStringList({CallLog::call("glBindBuffer", GL_ARRAY_BUFFER, 1),
                                         CallLog::call("glBufferData", GL_ARRAY_BUFFER, 24, values, GL_STATIC_DRAW),
                                         CallLog::call("glBindBuffer", GL_ARRAY_BUFFER, 0)}));
    EXPECT_EQ(vao->bo(kName), buffer);
    vao->bind();
    calls.clear();
    EXPECT_TRUE(Access::enableArray(*vao, kName, 4));
    EXPECT_EQ(calls.named({"glVertexAttribPointer"}),
              QStringList(CallLog::call("glVertexAttribPointer", 4, 3, GL_FLOAT, 0, 0, nullptr)));
    vao->unbind();
}

TEST_F(VertexArrayObjectTest, UploadOfAListPassesItsDataAndSize)
{
    const auto buffer = newArrayBuffer();
    const QList<float> values = {1, 2, 3, 4};
    CallLog calls;
    EXPECT_TRUE(vao->upload(kName, buffer, values, 2, GL_DYNAMIC_DRAW));
    EXPECT_EQ(calls.named({"glBufferData"}),
              QStringList(CallLog::call("glBufferData", GL_ARRAY_BUFFER, 16, values.constData(), GL_DYNAMIC_DRAW)));
}

TEST_F(VertexArrayObjectTest, UploadOfDataWithoutABufferFails)
{
    constexpr float values[6] = {};
    LogCapture log;
    EXPECT_FALSE(vao->upload(kName, {}, values, 6, 3, GL_STATIC_DRAW));
    EXPECT_EQ(log.messages(), QStringList(assertion("NULL != bufferObj", "Must Supply a valid BO pointer")));
}

TEST_F(VertexArrayObjectTest, UploadOfNoWholeNumberOfVerticesFailsAndStoresNothing)
{
    const auto buffer = newArrayBuffer();
    constexpr float values[7] = {};
    LogCapture log;
    CallLog calls;
    EXPECT_FALSE(vao->upload(kName, buffer, values, 7, 3, GL_STATIC_DRAW));
    EXPECT_EQ(calls.list(), QStringList());
    EXPECT_TRUE(vao->bo(kName).isNull());
    EXPECT_EQ(log.messages(), QStringList(assertion("0 == (valueCount \\% valuesPerVertex)",
                                                    "Data size (7) must be a multi of the values per vertex (3)")));
}

TEST_F(VertexArrayObjectTest, UploadWithCountsThatHaveNoRemainderFails)
{
    const auto buffer = newArrayBuffer();
    constexpr float values[6] = {};
    LogCapture log;
    CallLog calls;
    EXPECT_FALSE(vao->upload(kName, buffer, values, 6, 0, GL_STATIC_DRAW));
    EXPECT_FALSE(vao->upload(kName, buffer, values, INT_MIN, -1, GL_STATIC_DRAW));
    EXPECT_EQ(calls.list(), QStringList());
    EXPECT_TRUE(vao->bo(kName).isNull());
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
    EXPECT_FALSE(vao->upload(kName, buffer, values, 6, 3, GL_STATIC_DRAW));
    EXPECT_EQ(calls.list(), QStringList());
    EXPECT_TRUE(vao->bo(kName).isNull());
    EXPECT_EQ(log.messages(QtCriticalMsg),
              QStringList({assertion("0u != this->_target", "Buffer Object's target is not set when bind() is called"),
                           QStringLiteral("[ !! ] Failed to bind BO")}));
}

TEST_F(VertexArrayObjectTest, UploadThatTheBufferDeniesIsRegisteredEvenSo)
{
    const auto buffer = newArrayBuffer();
    LogCapture log;
    EXPECT_TRUE(vao->upload(kName, buffer, QList<float>(), 3, GL_STATIC_DRAW));
    EXPECT_EQ(log.messages(),
              QStringList(assertion("0 != valueCount", "Buffer Object needs more and 0 values during upload")));
    EXPECT_EQ(vao->bo(kName), buffer);
}

TEST_F(VertexArrayObjectTest, SubUploadBindsWritesUnbindsAndDirtiesNothing)
{
    const auto buffer = newArrayBuffer();
    vao->upload(kName, buffer, QList<float>(12), 3, GL_STATIC_DRAW);
    vao->bind();
    Access::enableArray(*vao, kName, 0);
    constexpr float values[6] = {};
    CallLog calls;
    EXPECT_TRUE(vao->subUpload(kName, values, 6, 3, 6));
    EXPECT_EQ(calls.list(), QStringList({CallLog::call("glBindBuffer", GL_ARRAY_BUFFER, 1),
                                         CallLog::call("glBufferSubData", GL_ARRAY_BUFFER, 24, 24, values),
                                         CallLog::call("glBindBuffer", GL_ARRAY_BUFFER, 0)}));
    calls.clear();
    EXPECT_TRUE(Access::enableArray(*vao, kName, 0));
    EXPECT_EQ(calls.list(), QStringList());
    vao->unbind();
}

TEST_F(VertexArrayObjectTest, SubUploadOfAListPassesItsDataAndSize)
{
    const auto buffer = newArrayBuffer();
    vao->upload(kName, buffer, QList<float>(12), 3, GL_STATIC_DRAW);
    const QList<float> values = {1, 2, 3};
    CallLog calls;
    EXPECT_TRUE(vao->subUpload(kName, values, 3, 9));
    EXPECT_EQ(calls.named({"glBufferSubData"}),
              QStringList(CallLog::call("glBufferSubData", GL_ARRAY_BUFFER, 36, 12, values.constData())));
}

TEST_F(VertexArrayObjectTest, SubUploadFailsWithTheWordsOfEachPrecondition)
{
    constexpr float values[6] = {};
    LogCapture log;
    CallLog calls;
    EXPECT_FALSE(vao->subUpload(kName, values, 6, 3, 0));
    EXPECT_EQ(log.messages(), QStringList(assertion("_attributesData.contains(attrName)",
                                                    "Must Supply an existing BO attribute name")));

    vao->registerBO(kName, newArrayBuffer(), 3, GL_FLOAT);
    calls.clear();
    log.clear();
    EXPECT_FALSE(vao->subUpload(kName, values, 6, 2, 0));
    EXPECT_EQ(log.messages(), QStringList(assertion("_attributesData[attrName]._valuesPerVertex == valuesPerVertex",
                                                    "Values per vertex must match (Current 3 != New 2)")));

    log.clear();
    EXPECT_FALSE(vao->subUpload(kName, values, 5, 3, 0));
    EXPECT_EQ(log.messages(), QStringList(assertion("0 == (valueCount \\% valuesPerVertex)",
                                                    "Data size (5) must be a multi of the values per vertex (3)")));

    vao->registerBO(kName, newArrayBuffer(), 0, GL_FLOAT);
    calls.clear();
    log.clear();
    EXPECT_FALSE(vao->subUpload(kName, values, 6, 0, 0));
    EXPECT_EQ(log.messages(), QStringList(assertion("canDivide(valueCount, valuesPerVertex)",
                                                    "Data size (6) cannot be divided by the values per vertex (0)")));

    vao->registerBO(kName, {}, 3, GL_FLOAT);
    log.clear();
    EXPECT_FALSE(vao->subUpload(kName, values, 6, 3, 0));
    EXPECT_EQ(log.messages(),
              QStringList(assertion("!bufferObj.isNull()", "Buffer Object of the attribute is NULL on subUpload")));

    vao->registerBO(kName, OpenGLDeviceContext::current()->newBuffer(), 3, GL_FLOAT);
    calls.clear();
    log.clear();
    EXPECT_FALSE(vao->subUpload(kName, values, 6, 3, 0));
    EXPECT_EQ(log.messages().last(), QStringLiteral("[ !! ] Failed to bind BO"));
    EXPECT_EQ(calls.list(), QStringList());
}

TEST_F(VertexArrayObjectTest, MappingOutlivesTheBinding)
{
    static char memory[4];
    driver.replace(
        "glMapBuffer", +[](GLenum, GLenum) -> void* { return memory; });
    driver.load();
    vao->registerBO(kName, newArrayBuffer(), 3, GL_FLOAT);
    CallLog calls;
    EXPECT_EQ(vao->mapBO(kName), memory);
    vao->unmapBO(kName);
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
    EXPECT_EQ(vao->mapBO(kName), nullptr);
    vao->unmapBO(kName);
    EXPECT_EQ(log.texts(), QStringList());
    EXPECT_EQ(calls.list(), QStringList());
}

TEST_F(VertexArrayObjectTest, ANullBufferThatWasRegisteredIsReportedWhereItIsUsed)
{
    vao->registerBO(kName, {}, 3, GL_FLOAT);
    vao->bind();
    LogCapture log;
    CallLog calls;
    EXPECT_EQ(vao->mapBO(kName), nullptr);
    vao->unmapBO(kName);
    EXPECT_FALSE(Access::enableArray(*vao, kName, 0));
    EXPECT_TRUE(Access::attributeNames(*vao).at(0).isEmpty());
    EXPECT_EQ(calls.list(), QStringList());
    EXPECT_EQ(log.messages(),
              QStringList({assertion("!bufferObj.isNull()", "Buffer Object of the attribute is NULL on mapBO"),
                           assertion("!bufferObj.isNull()", "Buffer Object of the attribute is NULL on unmapBO"),
                           assertion("!data->bo.isNull()", "Buffer Object of the attribute is NULL on enable array")}));
    EXPECT_EQ(vao->memoryEstimateCPU(), sizeof(VertexArrayObject) + 64 + kName.size());
    EXPECT_EQ(vao->memoryEstimateGPU(), 0u);
    vao->unbind();
}

TEST_F(VertexArrayObjectTest, EnableArrayFailsWithTheWordsOfEachPrecondition)
{
    LogCapture log;
    CallLog calls;
    EXPECT_FALSE(Access::enableArray(*vao, kName, -1));
    EXPECT_EQ(log.messages(), QStringList(assertion("0 <= attributeIndex", "Attribute Index is NULL on enable array")));

    log.clear();
    EXPECT_FALSE(Access::enableArray(*vao, kName, 0));
    EXPECT_EQ(log.messages(),
              QStringList(assertion("0u != this->_vao", "Vertex Array Object is NULL on enable array")));

    vao->bind();
    vao->unbind();
    log.clear();
    calls.clear();
    EXPECT_FALSE(Access::enableArray(*vao, kName, 0));
    EXPECT_EQ(log.messages(),
              QStringList(assertion("true == this->_vaoBound", "Vertex Array Object is not bound on enable array")));
    EXPECT_EQ(calls.list(), QStringList());

    vao->bind();
    log.clear();
    calls.clear();
    EXPECT_FALSE(Access::enableArray(*vao, kName, 16));
    EXPECT_EQ(log.messages(), QStringList(assertion("attributeIndex < this->_attributeNames.size()",
                                                    "Attribute Index (16) is not below the number of vertex "
                                                    "attributes (16) on enable array")));
    EXPECT_EQ(calls.list(), QStringList());
    vao->unbind();
}

// What each type and normalisation comes to, with the numbers of OpenGL's enumeration.
struct PointerRow
{
    GLenum type;
    bool normalized;
    bool asInteger;
};

class VertexArrayObjectPointerTest : public VertexArrayObjectTest, public testing::WithParamInterface<PointerRow>
{
};

TEST_P(VertexArrayObjectPointerTest, GoesByItsPointerFunction)
{
    const PointerRow row = GetParam();
    vao->registerBO(kName, newArrayBuffer(), 3, row.type, row.normalized, 20, 8);
    vao->bind();
    CallLog calls;
    EXPECT_TRUE(Access::enableArray(*vao, kName, 5));
    const QString pointer = row.asInteger ? CallLog::call("glVertexAttribIPointer", 5, 3, row.type, 20, bufferOffset(8))
                                          : CallLog::call("glVertexAttribPointer", 5, 3, row.type, int(row.normalized),
                                                          20, bufferOffset(8));
    EXPECT_EQ(calls.list(), QStringList({CallLog::call("glEnableVertexAttribArray", 5),
                                         CallLog::call("glBindBuffer", GL_ARRAY_BUFFER, 1), pointer,
                                         CallLog::call("glBindBuffer", GL_ARRAY_BUFFER, 0)}));
    EXPECT_EQ(Access::attributeNames(*vao).at(5), kName);
    vao->unbind();
}

INSTANTIATE_TEST_SUITE_P(
    Types, VertexArrayObjectPointerTest,
    testing::Values(PointerRow{0x1400, false, true}, PointerRow{0x1400, true, false}, PointerRow{0x1401, false, true},
                    PointerRow{0x1401, true, false}, PointerRow{0x1402, false, true}, PointerRow{0x1402, true, false},
                    PointerRow{0x1403, false, true}, PointerRow{0x1403, true, false}, PointerRow{0x1404, false, true},
                    PointerRow{0x1404, true, false}, PointerRow{0x1405, false, true}, PointerRow{0x1405, true, false},
                    PointerRow{0x1406, false, false}, PointerRow{0x1406, true, false}, PointerRow{0x140A, false, false},
                    PointerRow{0x140B, false, false}, PointerRow{0x13FF, false, false}),
    [](const testing::TestParamInfo<PointerRow>& row)
    { return std::to_string(row.param.type) + (row.param.normalized ? "Normalized" : ""); });

TEST_F(VertexArrayObjectTest, EnableArrayOfWhatTheIndexHoldsCallsNothing)
{
    vao->registerBO(kName, newArrayBuffer(), 3, GL_FLOAT);
    vao->bind();
    Access::enableArray(*vao, kName, 5);
    CallLog calls;
    EXPECT_TRUE(Access::enableArray(*vao, kName, 5));
    EXPECT_EQ(calls.list(), QStringList());
    vao->unbind();
}

TEST_F(VertexArrayObjectTest, ANameWithoutARecordThatTheIndexHoldsStaysAsItIs)
{
    vao->bind();
    Access::attributeNames(*vao)[3] = kName;
    CallLog calls;
    EXPECT_TRUE(Access::enableArray(*vao, kName, 3));
    EXPECT_EQ(calls.list(), QStringList());
    EXPECT_EQ(Access::attributeNames(*vao).at(3), kName);
    vao->unbind();
}

TEST_F(VertexArrayObjectTest, RegisteringANameAgainDirtiesEveryIndexThatHoldsIt)
{
    vao->registerBO(kName, newArrayBuffer(), 3, GL_FLOAT);
    vao->registerBO(QStringLiteral("va_Other"), newArrayBuffer(), 3, GL_FLOAT);
    vao->bind();
    Access::enableArray(*vao, kName, 0);
    Access::enableArray(*vao, QStringLiteral("va_Other"), 1);
    Access::enableArray(*vao, kName, 2);
    CallLog calls;
    vao->registerBO(kName, vao->bo(kName), 2, GL_FLOAT);
    EXPECT_EQ(calls.list(), QStringList());
    EXPECT_EQ(Access::attributeNames(*vao).mid(0, 3), QList<QString>({QString(), "va_Other", QString()}));
    EXPECT_TRUE(Access::enableArray(*vao, kName, 2));
    EXPECT_EQ(calls.named({"glVertexAttribPointer"}),
              QStringList(CallLog::call("glVertexAttribPointer", 2, 2, GL_FLOAT, 0, 0, nullptr)));
    vao->unbind();
}

// The constant of an attribute without a record, by the size that the driver reports for its array.
class VertexArrayObjectConstantTest : public VertexArrayObjectTest, public testing::WithParamInterface<int>
{
};

TEST_P(VertexArrayObjectConstantTest, HasOneComponentMoreThanTheSize)
{
    static int size;
    size = GetParam();
    driver.replace(
        "glGetVertexAttribiv", +[](GLuint, GLenum, GLint* value) { *value = size; });
    driver.load();
    vao->bind();
    Access::attributeNames(*vao)[7] = QStringLiteral("va_Former");
    CallLog calls;
    EXPECT_TRUE(Access::enableArray(*vao, kName, 7));
    EXPECT_TRUE(Access::attributeNames(*vao).at(7).isEmpty());

    const QStringList constants[] = {
        {CallLog::call("glVertexAttrib1f", 7, 0.0f)},
        {CallLog::call("glVertexAttrib2f", 7, 0.0f, 0.0f)},
        {CallLog::call("glVertexAttrib3f", 7, 0.0f, 0.0f, 0.0f)},
        {CallLog::call("glVertexAttrib4f", 7, 0.0f, 0.0f, 0.0f, 0.0f)},
    };
    QStringList list = calls.list();
    ASSERT_GE(list.size(), 2);
    EXPECT_EQ(list.takeFirst(), CallLog::call("glDisableVertexAttribArray", 7));
    EXPECT_TRUE(list.takeFirst().startsWith(QStringLiteral("glGetVertexAttribiv(7, 0x8623, ")));
    EXPECT_EQ(list, size >= 0 && size < 4 ? constants[size] : QStringList());
    vao->unbind();
}

INSTANTIATE_TEST_SUITE_P(Sizes, VertexArrayObjectConstantTest, testing::Values(0, 1, 2, 3, 4, 5, -1, GL_BGRA),
                         [](const testing::TestParamInfo<int>& row) {
                             return "Index" + std::to_string(row.index) + "Size" + std::to_string(std::abs(row.param));
                         });

TEST_F(VertexArrayObjectTest, AnAttributeWithoutARecordIsEnabledByALaterRegistration)
{
    vao->bind();
    EXPECT_TRUE(Access::enableArray(*vao, kName, 2));
    vao->registerBO(kName, newArrayBuffer(), 3, GL_FLOAT);
    CallLog calls;
    EXPECT_TRUE(Access::enableArray(*vao, kName, 2));
    EXPECT_EQ(calls.named({"glEnableVertexAttribArray"}), QStringList(CallLog::call("glEnableVertexAttribArray", 2)));
    vao->unbind();
}

TEST_F(VertexArrayObjectTest, ABufferThatCannotBeBoundIsPointedAtAllTheSame)
{
    const auto buffer = newArrayBuffer();
    vao->registerBO(kName, buffer, 3, GL_FLOAT);
    buffer->bind();
    vao->bind();
    LogCapture log;
    CallLog calls;
    EXPECT_TRUE(Access::enableArray(*vao, kName, 0));
    EXPECT_EQ(log.messages().size(), 1);
    EXPECT_EQ(calls.list(), QStringList({CallLog::call("glEnableVertexAttribArray", 0),
                                         CallLog::call("glVertexAttribPointer", 0, 3, GL_FLOAT, 0, 0, nullptr),
                                         CallLog::call("glBindBuffer", GL_ARRAY_BUFFER, 0)}));
    vao->unbind();
}

TEST_F(VertexArrayObjectTest, EnableOfANullProgramIsTrueWithoutAnything)
{
    LogCapture log;
    CallLog calls;
    EXPECT_TRUE(vao->enableShaderProgramArrays(nullptr));
    EXPECT_EQ(log.texts(), QStringList());
    EXPECT_EQ(calls.list(), QStringList());
}

TEST_F(VertexArrayObjectTest, EnableOfAProgramSetsItsAttributesUpOnce)
{
    const auto program = linkedProgram({"va_Vertex"});
    vao->registerBO(kName, newArrayBuffer(), 3, GL_FLOAT);
    vao->bind();
    CallLog calls;
    EXPECT_TRUE(vao->enableShaderProgramArrays(program.data()));
    EXPECT_EQ(calls.list(), QStringList({CallLog::call("glEnableVertexAttribArray", 0),
                                         CallLog::call("glBindBuffer", GL_ARRAY_BUFFER, 1),
                                         CallLog::call("glVertexAttribPointer", 0, 3, GL_FLOAT, 0, 0, nullptr),
                                         CallLog::call("glBindBuffer", GL_ARRAY_BUFFER, 0)}));
    calls.clear();
    EXPECT_TRUE(vao->enableShaderProgramArrays(program.data()));
    EXPECT_EQ(calls.list(), QStringList());

    vao->registerBO(kName, vao->bo(kName), 3, GL_FLOAT);
    EXPECT_TRUE(vao->enableShaderProgramArrays(program.data()));
    EXPECT_EQ(calls.count("glVertexAttribPointer"), 1) << "registering again dirties the name";
    vao->unbind();
}

TEST_F(VertexArrayObjectTest, EnableOfAProgramStopsAtTheFirstFailure)
{
    const auto program = linkedProgram({"va_A", "va_B", "va_C"});
    LogCapture log;
    EXPECT_FALSE(vao->enableShaderProgramArrays(program.data()));
    EXPECT_EQ(log.messages().size(), 1);
}

TEST_F(VertexArrayObjectTest, MemoryEstimatesCountASharedBufferForEachAttribute)
{
    EXPECT_EQ(vao->memoryEstimateCPU(), sizeof(VertexArrayObject));
    EXPECT_EQ(vao->memoryEstimateGPU(), 0u);
    const auto buffer = newArrayBuffer();
    vao->upload(QStringLiteral("va_A"), buffer, QList<float>(6), 3, GL_STATIC_DRAW);
    vao->registerBO(QStringLiteral("va_Long"), buffer, 3, GL_FLOAT);
    EXPECT_EQ(vao->memoryEstimateCPU(), sizeof(VertexArrayObject) + 2 * 64 + 4 + 7 + 2 * sizeof(BufferObject));
    EXPECT_EQ(vao->memoryEstimateGPU(), 48u);
}

// ---- on the real driver --------------------------------------------------------------------------------------------

class VertexArrayObjectGL : public GLTest
{
protected:
    /// Draws `count` points of a bound vertex array and gives what reached the attributes "va_Float", of 4 components,
    /// or "va_Integer", of 2.
    template <typename Value>
    QList<Value> reachedShader(const char* declaration, const char* varying, int components, int count)
    {
        ShaderProgram program(nullptr);
        program.addShader(GL_VERTEX_SHADER, QString::fromLatin1("#version 150\n%1\nvoid main() { vo_Value = va_Value; "
                                                                "gl_Position = vec4(0.0); }\n")
                                                .arg(QString::fromLatin1(declaration)));
        program.setTransformFeedbackVaryings({QString::fromLatin1(varying)}, GL_INTERLEAVED_ATTRIBS);
        EXPECT_TRUE(program.link());
        EXPECT_TRUE(program.bind());
        EXPECT_TRUE(vao->bind());
        EXPECT_TRUE(vao->enableShaderProgramArrays(&program));
        TransformFeedback feedback(GL_POINTS);
        glDrawArrays(GL_POINTS, 0, count);
        const auto values = feedback.end<Value>(components);
        EXPECT_TRUE(vao->unbind());
        EXPECT_TRUE(program.unbind());
        return values;
    }

    QList<float> reachedFloats(int count)
    {
        return reachedShader<float>("in vec4 va_Value; out vec4 vo_Value;", "vo_Value", 4, count);
    }

    QList<GLint> reachedIntegers(int count)
    {
        return reachedShader<GLint>("in ivec2 va_Value; flat out ivec2 vo_Value;", "vo_Value", 2, count);
    }

    template <typename Value, size_t Count> QSharedPointer<BufferObject> filled(const std::array<Value, Count>& values)
    {
        auto buffer = newArrayBuffer();
        EXPECT_TRUE(buffer->bind());
        EXPECT_TRUE(buffer->uploadArbitraryData(values.data(), int(Count), GL_STATIC_DRAW, sizeof(Value)));
        EXPECT_TRUE(buffer->unbind());
        return buffer;
    }

    const QString name = QStringLiteral("va_Value");
    QSharedPointer<VertexArrayObject> vao;

    void SetUp() override
    {
        GLTest::SetUp();
        vao = OpenGLDeviceContext::current()->newVAO();
    }

    void TearDown() override
    {
        vao.clear();
        GLTest::TearDown();
    }
};

TEST_F(VertexArrayObjectGL, FirstBindMakesAVertexArrayThatDestructionDeletes)
{
    EXPECT_TRUE(vao->bind());
    const GLuint made = vao->getVAO();
    EXPECT_TRUE(glIsVertexArray(made));
    EXPECT_TRUE(vao->unbind());
    vao.clear();
    EXPECT_FALSE(glIsVertexArray(made));
}

TEST_F(VertexArrayObjectGL, FloatsReachTheShader)
{
    EXPECT_TRUE(vao->upload(name, newArrayBuffer(), {1, 2, 3, 4, 5, 6}, 3, GL_STATIC_DRAW));
    EXPECT_EQ(reachedFloats(2), QList<float>({1, 2, 3, 1, 4, 5, 6, 1}));
    EXPECT_TRUE(vao->subUpload(name, {7, 8, 9}, 3, 3));
    EXPECT_EQ(reachedFloats(2), QList<float>({1, 2, 3, 1, 7, 8, 9, 1}));
}

TEST_F(VertexArrayObjectGL, HalfFloatsReachTheShaderAsFloats)
{
    EXPECT_TRUE(vao->upload(name, filled(std::array<GLushort, 2>{0x3C00, 0xC100}), 2, GL_HALF_FLOAT));
    EXPECT_EQ(reachedFloats(1), QList<float>({1.0f, -2.5f, 0, 1}));
}

TEST_F(VertexArrayObjectGL, NormalizedBytesReachTheShaderAsFractions)
{
    vao->registerBO(name, filled(std::array<GLubyte, 4>{0, 255, 51, 255}), 4, GL_UNSIGNED_BYTE, true, 0, 0);
    const QList<float> values = reachedFloats(1);
    ASSERT_EQ(values.size(), 4);
    EXPECT_FLOAT_EQ(values[0], 0.0f);
    EXPECT_FLOAT_EQ(values[1], 1.0f);
    EXPECT_FLOAT_EQ(values[2], 0.2f);
    EXPECT_FLOAT_EQ(values[3], 1.0f);
}

TEST_F(VertexArrayObjectGL, IntegersReachTheShaderAsIntegers)
{
    vao->registerBO(name, filled(std::array<GLint, 4>{INT_MIN, 7, -8, INT_MAX}), 2, GL_INT);
    EXPECT_EQ(reachedIntegers(2), QList<GLint>({INT_MIN, 7, -8, INT_MAX}));
}

TEST_F(VertexArrayObjectGL, StrideAndOffsetPickOutOfInterleavedData)
{
    const auto buffer = filled(std::array<float, 8>{1, 2, 3, 4, 5, 6, 7, 8});
    vao->registerBO(name, buffer, 2, GL_FLOAT, false, 16, 8);
    EXPECT_EQ(reachedFloats(2), QList<float>({3, 4, 0, 1, 7, 8, 0, 1}));
}

TEST_F(VertexArrayObjectGL, MappedMemoryIsWhatTheShaderReads)
{
    EXPECT_TRUE(vao->upload(name, newArrayBuffer(), QList<float>(4), 4, GL_STATIC_DRAW));
    auto* const memory = static_cast<float*>(vao->mapBO(name));
    ASSERT_NE(memory, nullptr);
    for (int i = 0; i < 4; ++i)
        memory[i] = float(i) * 1.5f;
    vao->unmapBO(name);
    EXPECT_EQ(reachedFloats(1), QList<float>({0, 1.5f, 3, 4.5f}));
}

TEST_F(VertexArrayObjectGL, AnAttributeWithoutARecordIsAConstantUntilOneIsRegistered)
{
    // A vertex array that has not seen the attribute reports four components, for which no constant is set, so what the
    // shader reads is the context's present value.
    glVertexAttrib4f(0, 9, 9, 9, 9);
    EXPECT_EQ(reachedFloats(1), QList<float>({9, 9, 9, 9}));
    // Once it has seen three components, the constant has four.
    EXPECT_TRUE(vao->upload(name, newArrayBuffer(), {1, 2, 3}, 3, GL_STATIC_DRAW));
    EXPECT_EQ(reachedFloats(1), QList<float>({1, 2, 3, 1}));

    ShaderProgram other(nullptr);
    other.addShader(GL_VERTEX_SHADER,
                    QStringLiteral("#version 150\nin vec4 va_Unknown; void main() { gl_Position = va_Unknown; }\n"));
    other.setTransformFeedbackVaryings({QStringLiteral("gl_Position")}, GL_INTERLEAVED_ATTRIBS);
    ASSERT_TRUE(other.link());
    ASSERT_EQ(other.getVertexAttributeLocation(QStringLiteral("va_Unknown")), 0);
    ASSERT_TRUE(other.bind() && vao->bind());
    EXPECT_TRUE(vao->enableShaderProgramArrays(&other));
    TransformFeedback feedback(GL_POINTS);
    glDrawArrays(GL_POINTS, 0, 1);
    EXPECT_EQ(feedback.end<float>(4), QList<float>({0, 0, 0, 0}));
    vao->unbind();
    other.unbind();
    glVertexAttrib4f(0, 0, 0, 0, 1);
}

TEST_F(VertexArrayObjectGL, OneVertexArrayServesTwoProgramsInTurn)
{
    EXPECT_TRUE(vao->upload(name, newArrayBuffer(), {1, 2, 3, 4}, 4, GL_STATIC_DRAW));
    EXPECT_EQ(reachedFloats(1), QList<float>({1, 2, 3, 4}));
    vao->registerBO(name, filled(std::array<GLint, 2>{5, 6}), 2, GL_INT);
    EXPECT_EQ(reachedIntegers(1), QList<GLint>({5, 6}));
}

TEST_F(VertexArrayObjectGL, TheNumberOfAttributesIsTheDrivers)
{
    GLint count = 0;
    glGetIntegerv(GL_MAX_VERTEX_ATTRIBS, &count);
    EXPECT_EQ(Access::attributeNames(*vao).size(), count);
}

} // namespace
} // namespace Harrow::Vrk::Test
