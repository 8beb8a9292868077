// SPDX-License-Identifier: MIT
//
// Plain uniforms on the fake driver: the call for each type, with its count and data.
#include "InstanceDataPlanTestTools.h"

#include "InstanceDataCollection.h"
#include "ShaderProgram.h"
#include "support/CallLog.h"

#include <cstring>
#include <memory>

namespace Harrow::Vrk::Test
{
namespace
{

/// What a call was given: as many bytes as OpenGL reads.
struct Sent
{
    QByteArray function;
    GLint location;
    GLsizei count;
    QByteArray bytes;
};
QList<Sent> sent;

void keep(const char* function, GLint location, GLsizei count, const void* data, int bytesEach)
{
    sent.append({function, location, count, QByteArray(static_cast<const char*>(data), qsizetype(count) * bytesEach)});
}

class UniformCarrierTest : public WithPlans<FakeDriverTest>
{
protected:
    void SetUp() override
    {
        driver.replace(
            "glUniform1iv", +[](GLint l, GLsizei n, const GLint* d) { keep("glUniform1iv", l, n, d, 4); });
        driver.replace(
            "glUniform2iv", +[](GLint l, GLsizei n, const GLint* d) { keep("glUniform2iv", l, n, d, 8); });
        driver.replace(
            "glUniform3iv", +[](GLint l, GLsizei n, const GLint* d) { keep("glUniform3iv", l, n, d, 12); });
        driver.replace(
            "glUniform4iv", +[](GLint l, GLsizei n, const GLint* d) { keep("glUniform4iv", l, n, d, 16); });
        driver.replace(
            "glUniform1uiv", +[](GLint l, GLsizei n, const GLuint* d) { keep("glUniform1uiv", l, n, d, 4); });
        driver.replace(
            "glUniform2uiv", +[](GLint l, GLsizei n, const GLuint* d) { keep("glUniform2uiv", l, n, d, 8); });
        driver.replace(
            "glUniform4uiv", +[](GLint l, GLsizei n, const GLuint* d) { keep("glUniform4uiv", l, n, d, 16); });
        driver.replace(
            "glUniform1fv", +[](GLint l, GLsizei n, const GLfloat* d) { keep("glUniform1fv", l, n, d, 4); });
        driver.replace(
            "glUniform2fv", +[](GLint l, GLsizei n, const GLfloat* d) { keep("glUniform2fv", l, n, d, 8); });
        driver.replace(
            "glUniform4fv", +[](GLint l, GLsizei n, const GLfloat* d) { keep("glUniform4fv", l, n, d, 16); });
        driver.replace(
            "glUniformMatrix4fv", +[](GLint l, GLsizei n, GLboolean transpose, const GLfloat* d)
                                  { keep(transpose ? "transposed" : "glUniformMatrix4fv", l, n, d, 64); });
        WithPlans::SetUp();
        program = std::make_unique<ShaderProgram>();
        ASSERT_TRUE(program->link());
        sent.clear();
    }

    void TearDown() override
    {
        program.reset();
        WithPlans::TearDown();
    }

    std::unique_ptr<ShaderProgram> program;
};

/// Bytes that differ from place to place.
QByteArray numbered(size_t count)
{
    QByteArray bytes;
    for (size_t place = 0; place < count; ++place)
        bytes.append(char(place * 7 + 1));
    return bytes;
}

struct TypeCase
{
    Plan::DataType type;
    const char* function;
    int bytesOfMember;
    int bytesRead;
};

const TypeCase kTypes[] = {
    {Plan::eTexture, "glUniform2uiv", 8, 8}, {Plan::eBool, "glUniform1iv", 1, 4},
    {Plan::eBVec2, "glUniform2iv", 2, 8},    {Plan::eBVec3, "glUniform4iv", 4, 16},
    {Plan::eBVec4, "glUniform4iv", 4, 16},   {Plan::eInt, "glUniform1iv", 4, 4},
    {Plan::eIVec2, "glUniform2iv", 8, 8},    {Plan::eIVec3, "glUniform4iv", 16, 16},
    {Plan::eIVec4, "glUniform4iv", 16, 16},  {Plan::eUInt, "glUniform1uiv", 4, 4},
    {Plan::eUVec2, "glUniform2uiv", 8, 8},   {Plan::eUVec3, "glUniform4uiv", 16, 16},
    {Plan::eUVec4, "glUniform4uiv", 16, 16}, {Plan::eFloat, "glUniform1fv", 4, 4},
    {Plan::eVec2, "glUniform2fv", 8, 8},     {Plan::eVec3, "glUniform4fv", 16, 16},
    {Plan::eVec4, "glUniform4fv", 16, 16},   {Plan::eMat4, "glUniformMatrix4fv", 64, 64},
};

TEST_F(UniformCarrierTest, EachTypeIsSentByItsCallWithTheMembersOfAllRecords)
{
    driver.setUniformLocation("u_member", 5);
    ASSERT_EQ(std::size(kTypes), 18u);
    for (const TypeCase& row : kTypes)
    {
        // A matrix before it and vectors behind it, so that the member is not the whole record.
        const LogCapture booleans; // some sizes are no multiple of 4
        Plan* const plan = registeredPlan(
            "P", {{Plan::eMat4, "before"}, {row.type, "member"}, {Plan::eFloat, "x"}, {Plan::eVec4, "y"}},
            Plan::eUniformMechanism);
        const size_t record = plan->totalDataSize();
        const QByteArray bytes = numbered(record * 3);
        InstanceDataCollection collection(plan, bytes.constData(), size_t(bytes.size()));
        QByteArray expected;
        for (size_t index = 0; index < 3; ++index)
            expected +=
                bytes.mid(qsizetype(index * record) + plan->offset(QStringLiteral("member")), row.bytesOfMember);
        expected.append(QByteArray(3 * (row.bytesRead - row.bytesOfMember), '\0'));

        EXPECT_TRUE(plan->bind(program.get(), nullptr, &collection));
        ASSERT_EQ(sent.size(), 1) << row.type;
        EXPECT_EQ(sent[0].function, row.function) << row.type;
        EXPECT_EQ(sent[0].location, 5);
        EXPECT_EQ(sent[0].count, 3);
        EXPECT_EQ(sent[0].bytes, expected) << row.type;
        sent.clear();
        clearPlans();
    }
}

TEST_F(UniformCarrierTest, BooleansAreNeverReadBeyondWhatIsThere)
{
    // The sanitizers look on while as much is copied as OpenGL reads, for an odd number of records.
    driver.setUniformLocation("u_member", 1);
    for (const Plan::DataType type : {Plan::eBool, Plan::eBVec2, Plan::eBVec3, Plan::eBVec4})
    {
        const LogCapture odd;
        Plan* const plan = registeredPlan("P", {{type, "member"}}, Plan::eUniformMechanism);
        InstanceDataCollection collection(plan, size_t(37));
        EXPECT_TRUE(plan->bind(program.get(), nullptr, &collection));
        ASSERT_EQ(sent.size(), 1);
        EXPECT_EQ(sent[0].bytes, QByteArray(sent[0].bytes.size(), '\0'));
        sent.clear();
        clearPlans();
    }
}

TEST_F(UniformCarrierTest, MembersAreSentInTheOrderOfTheirNamesAndAskedForOnce)
{
    driver.setUniformLocation("u_alpha", 1);
    driver.setUniformLocation("u_color", 2);
    driver.setUniformLocation("u_tex", 4);
    Plan* const plan = registeredPlan("Foo", kFooMembers, Plan::eUniformMechanism);
    InstanceDataCollection collection(plan, size_t(2));
    CallLog calls;
    EXPECT_TRUE(plan->bind(program.get(), nullptr, &collection));
    const GLuint name = program->shaderProgramID();
    EXPECT_EQ(calls.named({QStringLiteral("glGetUniformLocation")}),
              QStringList({CallLog::call("glGetUniformLocation", name, "u_alpha"),
                           CallLog::call("glGetUniformLocation", name, "u_color"),
                           CallLog::call("glGetUniformLocation", name, "u_modelMatrix"),
                           CallLog::call("glGetUniformLocation", name, "u_tex")}));
    QList<QByteArray> functions;
    for (const Sent& call : std::as_const(sent))
        functions.append(call.function);
    EXPECT_EQ(functions, (QList<QByteArray>{"glUniform1fv", "glUniform4fv", "glUniform2uiv"}))
        << "the matrix, which the program lacks, is passed over";
    calls.clear();
    EXPECT_TRUE(plan->bind(program.get(), nullptr, &collection));
    EXPECT_EQ(calls.count(QStringLiteral("glGetUniformLocation")), 0);
    EXPECT_EQ(calls.list().size(), 3) << "uniforms go out at every bind, and nothing else";
    EXPECT_EQ(sent.size(), 6);
}

TEST_F(UniformCarrierTest, UnbindAndABindWithoutAProgramMakeNoCall)
{
    driver.setUniformLocation("u_alpha", 1);
    Plan* const plan = registeredPlan("Foo", kFooMembers, Plan::eUniformMechanism);
    InstanceDataCollection collection(plan, size_t(2));
    const CallLog calls;
    EXPECT_TRUE(plan->bind(nullptr, nullptr, &collection));
    EXPECT_TRUE(plan->unbind(nullptr, nullptr, &collection));
    EXPECT_TRUE(plan->unbind(program.get(), nullptr, &collection));
    EXPECT_EQ(calls.list(), QStringList());
}

TEST_F(UniformCarrierTest, ACollectionWithoutRecordsIsSentAsNone)
{
    driver.setUniformLocation("u_alpha", 1);
    Plan* const plan = registeredPlan("Foo", kFooMembers, Plan::eUniformMechanism);
    InstanceDataCollection collection(plan, size_t(0));
    EXPECT_TRUE(plan->bind(program.get(), nullptr, &collection));
    ASSERT_EQ(sent.size(), 1);
    EXPECT_EQ(sent[0].count, 0);
}

TEST_F(UniformCarrierTest, BytesBehindTheLastWholeRecordAreNotSent)
{
    driver.setUniformLocation("u_alpha", 1);
    Plan* const plan = registeredPlan("Foo", kFooMembers, Plan::eUniformMechanism);
    const QByteArray bytes = numbered(96 + 95);
    InstanceDataCollection collection(plan, bytes.constData(), size_t(bytes.size()));
    EXPECT_TRUE(plan->bind(program.get(), nullptr, &collection));
    ASSERT_EQ(sent.size(), 1);
    EXPECT_EQ(sent[0].count, 1);
    EXPECT_EQ(sent[0].bytes, bytes.mid(88, 4));
}

TEST_F(UniformCarrierTest, ANameOfTwoTypesIsReadWithinTheRecord)
{
    driver.setUniformLocation("u_a", 1);
    Plan* const plan = registeredPlan("P", {{Plan::eFloat, "a"}, {Plan::eMat4, "a"}}, Plan::eUniformMechanism);
    const QByteArray bytes = numbered(plan->totalDataSize() * 2);
    InstanceDataCollection collection(plan, bytes.constData(), size_t(bytes.size()));
    EXPECT_TRUE(plan->bind(program.get(), nullptr, &collection));
    ASSERT_EQ(sent.size(), 1);
    EXPECT_EQ(sent[0].function, "glUniform1fv") << "the smaller, which lies last";
    EXPECT_EQ(sent[0].bytes, bytes.mid(64, 4) + bytes.mid(80 + 64, 4));
}

TEST_F(UniformCarrierTest, RecordsOfAnotherPlanAreNotReadBeyondTheirEnd)
{
    driver.setUniformLocation("u_modelMatrix", 1);
    driver.setUniformLocation("u_alpha", 2);
    Plan* const plan = registeredPlan("Foo", kFooMembers, Plan::eUniformMechanism);
    Plan* const small = registeredPlan("Small", {{Plan::eVec4, "v"}}, Plan::eUniformMechanism);
    InstanceDataCollection collection(small, size_t(2));
    const LogCapture log;
    EXPECT_TRUE(plan->bind(program.get(), nullptr, &collection));
    EXPECT_EQ(
        log.messages(),
        QStringList({assertionLine(QStringLiteral("offset + step <= plan->totalDataSize()"),
                                   QStringLiteral("plan 'Small' data 'modelMatrix': a record has no such bytes"))}));
    ASSERT_EQ(sent.size(), 1) << "what is unknown lies at the start of a record";
    EXPECT_EQ(sent[0].function, "glUniform1fv");
}

TEST_F(UniformCarrierTest, ACollectionWithoutAPlanIsReported)
{
    driver.setUniformLocation("u_alpha", 2);
    Plan* const plan = registeredPlan("Foo", kFooMembers, Plan::eUniformMechanism);
    const LogCapture log;
    InstanceDataCollection planless(nullptr, nullptr, 0);
    EXPECT_TRUE(plan->bind(program.get(), nullptr, &planless));
    EXPECT_EQ(log.messages().last(),
              assertionLine(QStringLiteral("plan != NULL"), QStringLiteral("collection has no plan on bind")));
    EXPECT_TRUE(sent.isEmpty());
}

TEST_F(UniformCarrierTest, ABindWithAProgramLeavesTheCollectionClean)
{
    // Seen by a plan of the same layout with another carrier, which uploads only what is dirty.
    Plan* const plan = registeredPlan("Foo", kFooMembers, Plan::eUniformMechanism);
    Plan* const block = registeredPlan("Block", kFooMembers, Plan::eUniformBufferMechanism);
    InstanceDataCollection collection(plan, size_t(2));
    EXPECT_TRUE(block->bind(nullptr, nullptr, &collection));
    const CallLog calls;
    collection.copyInstanceMember(0, QStringLiteral("alpha"), QStringLiteral("tex"));
    EXPECT_TRUE(plan->bind(program.get(), nullptr, &collection));
    EXPECT_TRUE(block->bind(nullptr, nullptr, &collection));
    EXPECT_EQ(calls.count(QStringLiteral("glNamedBufferData")), 0);
    collection.copyInstanceMember(0, QStringLiteral("alpha"), QStringLiteral("tex"));
    EXPECT_TRUE(plan->bind(nullptr, nullptr, &collection));
    EXPECT_TRUE(block->bind(nullptr, nullptr, &collection));
    EXPECT_EQ(calls.count(QStringLiteral("glNamedBufferData")), 1) << "without a program it stays dirty";
}

} // namespace
} // namespace Harrow::Vrk::Test
