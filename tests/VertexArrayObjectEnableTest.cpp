// SPDX-License-Identifier: MIT
#include "VertexArrayObjectTestTools.h"

#include <ostream>

namespace Harrow::Vrk::Test
{
namespace
{

using Access = VertexArrayObjectTestAccess;

TEST_F(VertexArrayObjectTest, ANullBufferThatWasRegisteredIsReportedWhereItIsUsed)
{
    vao->registerBO(kAttribute, {}, 3, GL_FLOAT);
    vao->bind();
    LogCapture log;
    CallLog calls;
    EXPECT_EQ(vao->mapBO(kAttribute), nullptr);
    vao->unmapBO(kAttribute);
    EXPECT_FALSE(Access::enableArray(*vao, kAttribute, 0));
    EXPECT_TRUE(Access::attributeNames(*vao).at(0).isEmpty());
    EXPECT_EQ(calls.list(), QStringList());
    EXPECT_EQ(log.messages(),
              QStringList({assertion("!bufferObj.isNull()", "Buffer Object of the attribute is NULL on mapBO"),
                           assertion("!bufferObj.isNull()", "Buffer Object of the attribute is NULL on unmapBO"),
                           assertion("!data->bo.isNull()", "Buffer Object of the attribute is NULL on enable array")}));
    EXPECT_EQ(vao->memoryEstimateCPU(), sizeof(VertexArrayObject) + 64 + kAttribute.size());
    EXPECT_EQ(vao->memoryEstimateGPU(), 0u);
    vao->unbind();
}

TEST_F(VertexArrayObjectTest, EnableArrayFailsWithTheWordsOfEachPrecondition)
{
    LogCapture log;
    CallLog calls;
    EXPECT_FALSE(Access::enableArray(*vao, kAttribute, -1));
    EXPECT_EQ(log.messages(), QStringList(assertion("0 <= attributeIndex", "Attribute Index is NULL on enable array")));

    log.clear();
    EXPECT_FALSE(Access::enableArray(*vao, kAttribute, 0));
    EXPECT_EQ(log.messages(),
              QStringList(assertion("0u != this->_vao", "Vertex Array Object is NULL on enable array")));

    vao->bind();
    vao->unbind();
    log.clear();
    calls.clear();
    EXPECT_FALSE(Access::enableArray(*vao, kAttribute, 0));
    EXPECT_EQ(log.messages(),
              QStringList(assertion("true == this->_vaoBound", "Vertex Array Object is not bound on enable array")));
    EXPECT_EQ(calls.list(), QStringList());

    vao->bind();
    log.clear();
    calls.clear();
    EXPECT_FALSE(Access::enableArray(*vao, kAttribute, 16));
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

void PrintTo(const PointerRow& row, std::ostream* stream)
{
    *stream << std::hex << std::showbase << row.type << std::dec << (row.normalized ? " normalized" : "");
}

class VertexArrayObjectPointerTest : public VertexArrayObjectTest, public testing::WithParamInterface<PointerRow>
{
};

TEST_P(VertexArrayObjectPointerTest, GoesByItsPointerFunction)
{
    const PointerRow row = GetParam();
    vao->registerBO(kAttribute, newArrayBuffer(), 3, row.type, row.normalized, 20, 8);
    vao->bind();
    CallLog calls;
    EXPECT_TRUE(Access::enableArray(*vao, kAttribute, 5));
    const QString pointer = row.asInteger ? CallLog::call("glVertexAttribIPointer", 5, 3, row.type, 20, bufferOffset(8))
                                          : CallLog::call("glVertexAttribPointer", 5, 3, row.type, int(row.normalized),
                                                          20, bufferOffset(8));
    EXPECT_EQ(calls.list(), QStringList({CallLog::call("glEnableVertexAttribArray", 5),
                                         CallLog::call("glBindBuffer", GL_ARRAY_BUFFER, 1), pointer,
                                         CallLog::call("glBindBuffer", GL_ARRAY_BUFFER, 0)}));
    EXPECT_EQ(Access::attributeNames(*vao).at(5), kAttribute);
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
    vao->registerBO(kAttribute, newArrayBuffer(), 3, GL_FLOAT);
    vao->bind();
    Access::enableArray(*vao, kAttribute, 5);
    CallLog calls;
    EXPECT_TRUE(Access::enableArray(*vao, kAttribute, 5));
    EXPECT_EQ(calls.list(), QStringList());
    vao->unbind();
}

TEST_F(VertexArrayObjectTest, ANameWithoutARecordThatTheIndexHoldsStaysAsItIs)
{
    vao->bind();
    Access::attributeNames(*vao)[3] = kAttribute;
    CallLog calls;
    EXPECT_TRUE(Access::enableArray(*vao, kAttribute, 3));
    EXPECT_EQ(calls.list(), QStringList());
    EXPECT_EQ(Access::attributeNames(*vao).at(3), kAttribute);
    vao->unbind();
}

TEST_F(VertexArrayObjectTest, RegisteringANameAgainDirtiesEveryIndexThatHoldsIt)
{
    vao->registerBO(kAttribute, newArrayBuffer(), 3, GL_FLOAT);
    vao->registerBO(QStringLiteral("va_Other"), newArrayBuffer(), 3, GL_FLOAT);
    vao->bind();
    Access::enableArray(*vao, kAttribute, 0);
    Access::enableArray(*vao, QStringLiteral("va_Other"), 1);
    Access::enableArray(*vao, kAttribute, 2);
    CallLog calls;
    vao->registerBO(kAttribute, vao->bo(kAttribute), 2, GL_FLOAT);
    EXPECT_EQ(calls.list(), QStringList());
    EXPECT_EQ(Access::attributeNames(*vao).mid(0, 3), QList<QString>({QString(), "va_Other", QString()}));
    EXPECT_TRUE(Access::enableArray(*vao, kAttribute, 2));
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
    EXPECT_TRUE(Access::enableArray(*vao, kAttribute, 7));
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
    EXPECT_TRUE(Access::enableArray(*vao, kAttribute, 2));
    vao->registerBO(kAttribute, newArrayBuffer(), 3, GL_FLOAT);
    CallLog calls;
    EXPECT_TRUE(Access::enableArray(*vao, kAttribute, 2));
    EXPECT_EQ(calls.named({"glEnableVertexAttribArray"}), QStringList(CallLog::call("glEnableVertexAttribArray", 2)));
    vao->unbind();
}

TEST_F(VertexArrayObjectTest, ABufferThatCannotBeBoundIsPointedAtAllTheSame)
{
    const auto buffer = newArrayBuffer();
    vao->registerBO(kAttribute, buffer, 3, GL_FLOAT);
    buffer->bind();
    vao->bind();
    LogCapture log;
    CallLog calls;
    EXPECT_TRUE(Access::enableArray(*vao, kAttribute, 0));
    EXPECT_EQ(log.messages(), QStringList(assertion("0u == this->_boBountTarget",
                                                    "Buffer Object is already bound on bind to target 34962")));
    EXPECT_EQ(calls.list(), QStringList({CallLog::call("glEnableVertexAttribArray", 0),
                                         CallLog::call("glVertexAttribPointer", 0, 3, GL_FLOAT, 0, 0, nullptr),
                                         CallLog::call("glBindBuffer", GL_ARRAY_BUFFER, 0)}));
    vao->unbind();
}

// An attribute whose buffer leaves no vertex buffer bound, on index 2, which another attribute held before.
class VertexArrayObjectUnfedTest : public VertexArrayObjectTest
{
protected:
    void SetUp() override
    {
        VertexArrayObjectTest::SetUp();
        buffer = OpenGLDeviceContext::current()->newBuffer(); // buffer 1
        vao->registerBO(kFormer, newArrayBuffer(), 3, GL_FLOAT);
        vao->registerBO(kAttribute, buffer, 3, GL_FLOAT, false, 0, 16);
        vao->bind();
        Access::enableArray(*vao, kFormer, 2);
    }

    void TearDown() override
    {
        vao->unbind();
    }

    /// Calls, with questions shown without where the answer was to be put.
    static QStringList withoutPlaces(QStringList calls)
    {
        for (QString& call : calls)
            if (call.startsWith(QStringLiteral("glGetIntegerv(")))
                call = call.left(call.indexOf(QLatin1Char(','))) + QLatin1Char(')');
        return calls;
    }

    void expectForgotten()
    {
        EXPECT_TRUE(Access::attributeNames(*vao).at(2).isEmpty());
        CallLog calls;
        EXPECT_TRUE(Access::enableArray(*vao, kFormer, 2));
        EXPECT_EQ(calls.count("glEnableVertexAttribArray"), 1) << "what the index held before is set up anew";
    }

    const QString kFormer = QStringLiteral("va_Former");
    const QString query = CallLog::call("glGetIntegerv", GL_ARRAY_BUFFER_BINDING);
    const QString unfed =
        assertion("hasVertexBufferBound(*data.bo)", "No vertex buffer is bound for attribute index 2 on enable array");
    QSharedPointer<BufferObject> buffer;
};

TEST_F(VertexArrayObjectUnfedTest, ABufferOfAnotherTargetIsReportedAndTheArrayDisabled)
{
    buffer->setTarget(GL_UNIFORM_BUFFER);
    LogCapture log;
    CallLog calls;
    EXPECT_FALSE(Access::enableArray(*vao, kAttribute, 2));
    EXPECT_EQ(withoutPlaces(calls.list()), QStringList({CallLog::call("glEnableVertexAttribArray", 2),
                                                        CallLog::call("glBindBuffer", GL_UNIFORM_BUFFER, 1), query,
                                                        CallLog::call("glDisableVertexAttribArray", 2),
                                                        CallLog::call("glBindBuffer", GL_UNIFORM_BUFFER, 0), query}));
    EXPECT_EQ(log.messages(QtCriticalMsg), QStringList(unfed));
    expectForgotten();
}

TEST_F(VertexArrayObjectUnfedTest, ABufferWithoutATargetIsReportedAndTheArrayDisabled)
{
    LogCapture log;
    CallLog calls;
    EXPECT_FALSE(Access::enableArray(*vao, kAttribute, 2));
    EXPECT_EQ(withoutPlaces(calls.list()), QStringList({CallLog::call("glEnableVertexAttribArray", 2), query,
                                                        CallLog::call("glDisableVertexAttribArray", 2), query}));
    EXPECT_EQ(log.messages(QtCriticalMsg),
              QStringList({assertion("0u != this->_target", "Buffer Object's target is not set when bind() is called"),
                           assertion("0u != this->_boBountTarget", "Buffer Object is not bound on unbind"), unfed}));
    expectForgotten();
}

TEST_F(VertexArrayObjectUnfedTest, AnIndexBufferIsReportedWithoutBeingBound)
{
    // Bound, it would take the place of the indices that this vertex array holds.
    buffer->setTarget(GL_ELEMENT_ARRAY_BUFFER);
    LogCapture log;
    CallLog calls;
    EXPECT_FALSE(Access::enableArray(*vao, kAttribute, 2));
    EXPECT_EQ(withoutPlaces(calls.list()), QStringList({CallLog::call("glEnableVertexAttribArray", 2), query, query,
                                                        CallLog::call("glDisableVertexAttribArray", 2), query}));
    EXPECT_EQ(log.messages(), QStringList(unfed));
    expectForgotten();
}

TEST_F(VertexArrayObjectUnfedTest, AnIndexedTargetDoesNotCountAsBound)
{
    {
        const LogCapture complaint;
        buffer->setIndexedTarget(GL_ARRAY_BUFFER, 0, 0, 16);
    }
    LogCapture log;
    CallLog calls;
    EXPECT_FALSE(Access::enableArray(*vao, kAttribute, 2));
    EXPECT_EQ(calls.count("glVertexAttribPointer"), 0);
    EXPECT_EQ(log.messages(), QStringList(unfed));
}

TEST_F(VertexArrayObjectUnfedTest, TheApplicationsOwnVertexBufferIsPointedAt)
{
    driver.setInteger(GL_ARRAY_BUFFER_BINDING, 77);
    for (const GLenum target : {GL_UNIFORM_BUFFER, GL_ELEMENT_ARRAY_BUFFER})
    {
        buffer->setTarget(target);
        vao->registerBO(kAttribute, buffer, 3, GL_FLOAT, false, 0, 16);
        LogCapture log;
        CallLog calls;
        EXPECT_TRUE(Access::enableArray(*vao, kAttribute, 2));
        QStringList list = withoutPlaces(calls.list());
        list.removeAll(query);
        EXPECT_EQ(list,
                  QStringList({CallLog::call("glEnableVertexAttribArray", 2), CallLog::call("glBindBuffer", target, 1),
                               CallLog::call("glVertexAttribPointer", 2, 3, GL_FLOAT, 0, 0, bufferOffset(16)),
                               CallLog::call("glBindBuffer", target, 0)}));
        EXPECT_EQ(log.texts(), QStringList());
        EXPECT_EQ(Access::attributeNames(*vao).at(2), kAttribute);
    }
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
    vao->registerBO(kAttribute, newArrayBuffer(), 3, GL_FLOAT);
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

    vao->registerBO(kAttribute, vao->bo(kAttribute), 3, GL_FLOAT);
    EXPECT_TRUE(vao->enableShaderProgramArrays(program.data()));
    EXPECT_EQ(calls.count("glVertexAttribPointer"), 1) << "registering again dirties the name";
    vao->unbind();
}

TEST_F(VertexArrayObjectTest, EnableOfAProgramStopsAtTheFirstFailure)
{
    const auto program = linkedProgram({"va_A", "va_B", "va_C"});
    LogCapture log;
    EXPECT_FALSE(vao->enableShaderProgramArrays(program.data()));
    EXPECT_EQ(log.messages(),
              QStringList(assertion("0u != this->_vao", "Vertex Array Object is NULL on enable array")));
}

} // namespace
} // namespace Harrow::Vrk::Test
