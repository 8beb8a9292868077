// SPDX-License-Identifier: MIT
#include "VertexArrayObjectTestTools.h"

namespace Harrow::Vrk::Test
{
namespace
{

using Access = VertexArrayObjectTestAccess;

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

TEST_F(VertexArrayObjectTest, RebindOfABoundObjectSaysSoBeforeTheOtherIsLookedAt)
{
    const auto nameless = Access::make();
    vao->bind();
    LogCapture log;
    CallLog calls;
    bool changed = true;
    EXPECT_FALSE(vao->rebind(nameless.data(), changed));
    EXPECT_FALSE(changed);
    EXPECT_EQ(log.messages(),
              QStringList(assertion("false == this->_vaoBound", "Vertex Array Object is already bound on rebind")));
    EXPECT_EQ(calls.list(), QStringList());
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

} // namespace
} // namespace Harrow::Vrk::Test
