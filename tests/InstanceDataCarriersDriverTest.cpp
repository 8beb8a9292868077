// SPDX-License-Identifier: MIT
//
// The five carriers on a driver: what a vertex shader reads through the generated accessors, against the bytes that the
// collection holds.
#include "InstanceDataPlanTestTools.h"

#include "BufferObject.h"
#include "InstanceDataCollection.h"
#include "OpenGLDeviceContext.h"
#include "ShaderProgram.h"
#include "UniformBufferObject.h"
#include "support/CallLog.h"
#include "support/GLTest.h"
#include "support/TransformFeedback.h"

#include <algorithm>
#include <cstring>
#include <memory>

namespace Harrow::Vrk::Test
{
namespace
{

/// How a member of a type leaves a vertex shader, in words of 4 bytes.
struct Reading
{
    Plan::DataType type;
    const char* name;
    const char* result;
    int words;
    bool isFloat;
};

// Some types twice, so that members share vectors.
const Reading kReadings[] = {
    {Plan::eTexture, "token", "uvec2", 2, false}, {Plan::eTexture, "tokenB", "uvec2", 2, false},
    {Plan::eInt, "int1", "int", 1, false},        {Plan::eInt, "int1B", "int", 1, false},
    {Plan::eIVec2, "int2", "ivec2", 2, false},    {Plan::eIVec3, "int3", "ivec3", 3, false},
    {Plan::eIVec4, "int4", "ivec4", 4, false},    {Plan::eUInt, "uint1", "uint", 1, false},
    {Plan::eUVec2, "uint2", "uvec2", 2, false},   {Plan::eUVec3, "uint3", "uvec3", 3, false},
    {Plan::eUVec4, "uint4", "uvec4", 4, false},   {Plan::eFloat, "float1", "float", 1, true},
    {Plan::eFloat, "float1B", "float", 1, true},  {Plan::eFloat, "float1C", "float", 1, true},
    {Plan::eVec2, "float2", "vec2", 2, true},     {Plan::eVec2, "float2B", "vec2", 2, true},
    {Plan::eVec3, "float3", "vec3", 3, true},     {Plan::eVec4, "float4", "vec4", 4, true},
    {Plan::eMat4, "matrix", "mat4", 16, true},    {Plan::eMat4, "matrixB", "mat4", 16, true},
};

PlanMembers allMembers()
{
    PlanMembers members;
    for (const Reading& reading : kReadings)
        members.append({reading.type, reading.name});
    return members;
}

/// A word that no other place has.
quint32 word(int record, int place, bool isFloat)
{
    if (!isFloat)
        return (0x9E3779B9u * quint32(record * 64 + place + 1)) | (place % 2 ? 0x80000000u : 0u);
    const float value = (place % 2 ? -1.0f : 1.0f) * (float(record * 64 + place) + 0.3f);
    quint32 bits = 0;
    std::memcpy(&bits, &value, sizeof bits);
    return bits;
}

struct CarrierCase
{
    Plan::MechanismType mechanism;
    bool useVec4Storage;
};

class InstanceDataCarriersGL : public GLTest
{
protected:
    void SetUp() override
    {
        GLTest::SetUp();
        glGenVertexArrays(1, &_vertexArray);
        glBindVertexArray(_vertexArray);
    }

    void TearDown() override
    {
        glUseProgram(0);
        program.reset();
        collection.reset();
        clearPlans();
        glBindVertexArray(0);
        glDeleteVertexArrays(1, &_vertexArray);
        GLTest::TearDown();
    }

    /// Those that the driver has.
    static QList<CarrierCase> carriers()
    {
        QList<CarrierCase> cases;
        for (const Plan::MechanismType mechanism : supportedCarriers())
            cases.append({{mechanism, false}, {mechanism, true}});
        return cases;
    }

    void use(const PlanMembers& members, const CarrierCase& carrier, size_t arraySize)
    {
        program.reset();
        collection.reset();
        clearPlans();
        Plan* const made = newPlan("Record", members, carrier.mechanism, carrier.useVec4Storage);
        made->setArraySize(arraySize);
        plan = registered(made);
    }

    /// All bytes of all records differ, those between members included.
    static QByteArray filled(const Plan& plan, int records)
    {
        const auto size = qsizetype(plan.totalDataSize());
        QByteArray bytes(records * size, '\x5A');
        for (int record = 0; record < records; ++record)
        {
            int place = 0;
            for (const Reading& reading : kReadings)
            {
                if (!plan.contains(QString::fromLatin1(reading.name)))
                    continue;
                char* const member = bytes.data() + record * size + plan.offset(QString::fromLatin1(reading.name));
                const size_t words = plan.dataSize(reading.type) / 4;
                for (size_t number = 0; number < words; ++number)
                {
                    const quint32 value = word(record, place++, reading.isFloat);
                    std::memcpy(member + number * 4, &value, sizeof value);
                }
            }
        }
        return bytes;
    }

    void collect(int records)
    {
        const QByteArray bytes = filled(*plan, records);
        collection = std::make_unique<InstanceDataCollection>(plan, bytes.constData(), size_t(bytes.size()));
    }

    /// A program whose result is a member, by index or of the current draw. `result` may convert.
    void link(const char* name, const char* type, const char* conversion = "")
    {
        QString getter = QString::fromLatin1(name);
        getter[0] = getter[0].toUpper();
        getter.prepend(QStringLiteral("get"));
        program = std::make_unique<ShaderProgram>();
        program->setTransformFeedbackVaryings({QStringLiteral("result")}, GL_INTERLEAVED_ATTRIBS);
        program->addShader(GL_VERTEX_SHADER,
                           QStringLiteral("#version 150\n#instancedata \"Record\"\n"
                                          "uniform uint u_Index;\nuniform bool u_Current;\nflat out %1 result;\n"
                                          "void main()\n{\n    if (u_Current)\n        result = %3(%2());\n    else\n"
                                          "        result = %3(%2(u_Index));\n    gl_Position = vec4(0.0);\n}\n")
                               .arg(QString::fromLatin1(type), getter, QString::fromLatin1(conversion)));
        program->addShader(GL_VERTEX_SHADER, plan->glslc());
        program->addShaderFromFile(GL_VERTEX_SHADER, QStringLiteral("VrkUtilities.glslc"));
        program->addShaderFromFile(GL_VERTEX_SHADER, QStringLiteral("VrkUtilities.vert"));
        program->addShader(GL_FRAGMENT_SHADER,
                           QStringLiteral("#version 150\nout vec4 o;\nvoid main()\n{\n    o = vec4(1.0);\n}\n"));
        ASSERT_TRUE(program->link()) << program->log().toStdString() << plan->glslc().toStdString();
        ASSERT_TRUE(program->bind());
    }

    /// The member of a record, while the collection is bound.
    QList<quint32> read(int record, bool current, int words)
    {
        glUniform1ui(program->getUniformLocation(QStringLiteral("u_Index")), current ? 0u : GLuint(record));
        glUniform1i(program->getUniformLocation(QStringLiteral("u_Current")), current);
        glUniform1ui(program->getUniformLocation(QStringLiteral("u_DrawID")), current ? GLuint(record) : 0u);
        TransformFeedback feedback(GL_POINTS);
        glDrawArrays(GL_POINTS, 0, 1);
        return feedback.end<quint32>(words);
    }

    /// What the CPU has there.
    QList<quint32> held(int record, const char* name, int words) const
    {
        QList<quint32> result(words);
        std::memcpy(result.data(),
                    collection->dataArray().constData() + record * qsizetype(plan->totalDataSize()) +
                        plan->offset(QString::fromLatin1(name)),
                    size_t(words) * 4);
        return result;
    }

    void expectHeld(const Reading& reading, QList<int> records, const CarrierCase& carrier)
    {
        ASSERT_TRUE(collection->bind(program.get(), nullptr));
        for (const int record : records)
            for (const bool current : {false, true})
                EXPECT_EQ(read(record, current, reading.words), held(record, reading.name, reading.words))
                    << kCarrierNames[carrier.mechanism] << " vec4 " << carrier.useVec4Storage << " member "
                    << reading.name << " record " << record << (current ? " of the current draw" : " by index");
        EXPECT_TRUE(collection->unbind(program.get(), nullptr));
    }

    Plan* plan = nullptr;
    std::unique_ptr<InstanceDataCollection> collection;
    std::unique_ptr<ShaderProgram> program;

private:
    GLuint _vertexArray = 0;
};

constexpr int kRecords = 11;

TEST_F(InstanceDataCarriersGL, StorageBlocksAreThereInTheFullProfileAlone)
{
    EXPECT_EQ(Plan::supportsStorageMechanism(), !isFloor());
    EXPECT_EQ(carriers().size(), isFloor() ? 8 : 10);
}

TEST_F(InstanceDataCarriersGL, EveryMemberOfEveryRecordIsReadAsItWasWritten)
{
    for (const CarrierCase& carrier : carriers())
    {
        LogCapture log;
        use(allMembers(), carrier, kRecords);
        ASSERT_EQ(plan->arraySize(), size_t(kRecords)) << kCarrierNames[carrier.mechanism];
        collect(kRecords);
        for (const Reading& reading : kReadings)
        {
            link(reading.name, reading.result);
            if (HasFatalFailure())
                return;
            expectHeld(reading, {0, kRecords / 2, kRecords - 1}, carrier);
        }
        EXPECT_EQ(log.texts(QtCriticalMsg), QStringList()) << kCarrierNames[carrier.mechanism];
        EXPECT_EQ(log.texts(QtWarningMsg), QStringList()) << kCarrierNames[carrier.mechanism];
    }
}

TEST_F(InstanceDataCarriersGL, EachTypeAloneIsReadAsItWasWritten)
{
    for (const CarrierCase& carrier : carriers())
    {
        for (const Reading& reading : kReadings)
        {
            use({{reading.type, reading.name}}, carrier, 3);
            collect(3);
            link(reading.name, reading.result);
            if (HasFatalFailure())
                return;
            expectHeld(reading, {0, 1, 2}, carrier);
        }
    }
}

TEST_F(InstanceDataCarriersGL, ChangesAndGrowthAreSeenAtTheNextBind)
{
    const Reading& reading = kReadings[11];
    for (const CarrierCase& carrier : carriers())
    {
        use(allMembers(), carrier, kRecords);
        collect(2);
        link(reading.name, reading.result);
        if (HasFatalFailure())
            return;
        expectHeld(reading, {0, 1}, carrier);
        const float other = 1234.5f;
        collection->set(1, QString::fromLatin1(reading.name), &other, sizeof other);
        expectHeld(reading, {0, 1}, carrier);
        const QByteArray grown = filled(*plan, kRecords);
        collection->update(grown.constData(), size_t(grown.size()));
        expectHeld(reading, {0, 1, kRecords - 1}, carrier);
        const QByteArray shrunk = filled(*plan, 1);
        collection->update(shrunk.constData(), size_t(shrunk.size()));
        expectHeld(reading, {0}, carrier);
    }
}

TEST_F(InstanceDataCarriersGL, TwoCollectionsOfOnePlanAreReadInTurn)
{
    const Reading& reading = kReadings[16];
    for (const CarrierCase& carrier : carriers())
    {
        use(allMembers(), carrier, kRecords);
        collect(3);
        const QByteArray bytes = filled(*plan, kRecords).mid(qsizetype(plan->totalDataSize()) * 4);
        auto second = std::make_unique<InstanceDataCollection>(plan, bytes.constData(), size_t(bytes.size()));
        link(reading.name, reading.result);
        if (HasFatalFailure())
            return;
        for (int turn = 0; turn < 3; ++turn)
        {
            expectHeld(reading, {0, 2}, carrier);
            collection.swap(second);
        }
    }
}

TEST_F(InstanceDataCarriersGL, TheProgramsBlockIsPointedAtTheBuffersBindingPoint)
{
    const QStringList pointing = {QStringLiteral("glUniformBlockBinding"),
                                  QStringLiteral("glShaderStorageBlockBinding"), QStringLiteral("glBindBufferBase")};
    for (const CarrierCase& carrier : carriers())
    {
        use({{Plan::eVec4, "float4"}}, carrier, 3);
        collect(3);
        link("float4", "vec4");
        if (HasFatalFailure())
            return;
        CallLog calls;
        ASSERT_TRUE(collection->bind(program.get(), nullptr));
        const bool isStorage = carrier.mechanism == Plan::eStorageBufferMechanism;
        if (isStorage || carrier.mechanism == Plan::eUniformBufferMechanism)
        {
            const auto block = collection->getUniformBufferObject();
            const int point = block->uniformBlockBinding();
            EXPECT_EQ(
                calls.named(pointing),
                QStringList({CallLog::call("glBindBufferBase", isStorage ? GL_SHADER_STORAGE_BUFFER : GL_UNIFORM_BUFFER,
                                           point, block->bufferObject()->getBO()),
                             CallLog::call(isStorage ? "glShaderStorageBlockBinding" : "glUniformBlockBinding",
                                           program->shaderProgramID(), 0, point)}));
        }
        else
        {
            EXPECT_EQ(calls.named(pointing), QStringList()) << kCarrierNames[carrier.mechanism];
        }
        EXPECT_TRUE(collection->unbind(program.get(), nullptr));
    }
}

TEST_F(InstanceDataCarriersGL, AFragmentStageReadsRecordsThroughAUnitOfItsOwn)
{
    for (const CarrierCase& carrier : carriers())
    {
        use({{Plan::eVec4, "color"}}, carrier, 2);
        program = std::make_unique<ShaderProgram>();
        program->addShader(GL_VERTEX_SHADER, QStringLiteral("#version 150\nvoid main()\n{\n    gl_Position = vec4(0.0, "
                                                            "0.0, 0.0, 1.0);\n}\n"));
        program->addShader(GL_FRAGMENT_SHADER,
                           QStringLiteral("#version 150\n#instancedata \"Record\"\nout vec4 o;\nvoid main()\n{\n"
                                          "    o = getColor() + getColor(0u);\n}\n"));
        program->addShader(GL_FRAGMENT_SHADER, plan->glslc());
        program->addShaderFromFile(GL_FRAGMENT_SHADER, QStringLiteral("VrkUtilities.glslc"));
        program->addShaderFromFile(GL_FRAGMENT_SHADER, QStringLiteral("VrkUtilities.frag"));
        ASSERT_TRUE(program->link()) << program->log().toStdString();
        ASSERT_TRUE(program->bind());
        const float colors[] = {0.25f, 0.0f, 0.0f, 0.5f, 0.0f, 0.5f, 0.75f, 0.5f};
        collection =
            std::make_unique<InstanceDataCollection>(plan, reinterpret_cast<const char*>(colors), sizeof colors);
        ASSERT_TRUE(collection->bind(program.get(), nullptr));
        glUniform1ui(program->getUniformLocation(QStringLiteral("u_DrawID")), 1);
        const OffscreenTarget target(1, 1);
        glDrawArrays(GL_POINTS, 0, 1);
        GLubyte pixel[4] = {};
        glReadPixels(0, 0, 1, 1, GL_RGBA, GL_UNSIGNED_BYTE, pixel);
        const int expected[] = {64, 128, 191, 255};
        for (int channel = 0; channel < 4; ++channel)
            EXPECT_NEAR(pixel[channel], expected[channel], 1) << kCarrierNames[carrier.mechanism] << channel;
        EXPECT_TRUE(collection->unbind(program.get(), nullptr));
    }
}

// ---- booleans ------------------------------------------------------------------------------------------------------

TEST_F(InstanceDataCarriersGL, OneBooleanAtTheEndOfARecordIsReadButNotThroughPlainUniforms)
{
    for (const CarrierCase& carrier : carriers())
    {
        if (carrier.mechanism == Plan::eUniformMechanism)
            continue;   // takes four bytes of each record where there is one
        LogCapture odd; // the size is no multiple of 4 without vec4 storage
        use({{Plan::eVec4, "before"}, {Plan::eBool, "on"}}, carrier, 4);
        collection = std::make_unique<InstanceDataCollection>(plan, size_t(4));
        for (const int record : {1, 2})
        {
            const bool on = true;
            collection->set(record, QStringLiteral("on"), &on, 1);
        }
        link("on", "uint", "uint");
        if (HasFatalFailure())
            return;
        ASSERT_TRUE(collection->bind(program.get(), nullptr));
        for (int record = 0; record < 4; ++record)
            for (const bool current : {false, true})
                EXPECT_EQ(read(record, current, 1), QList<quint32>{record == 1 || record == 2 ? 1u : 0u})
                    << kCarrierNames[carrier.mechanism] << carrier.useVec4Storage << record;
        EXPECT_TRUE(collection->unbind(program.get(), nullptr));
    }
}

TEST_F(InstanceDataCarriersGL, UnitsWithBooleansCompile)
{
    for (const CarrierCase& carrier : carriers())
    {
        const LogCapture log;
        use({{Plan::eVec4, "before"},
             {Plan::eBVec4, "bool4"},
             {Plan::eBVec4, "bool4B"},
             {Plan::eBVec3, "bool3"},
             {Plan::eBVec2, "bool2"},
             {Plan::eBool, "bool1"},
             {Plan::eBool, "bool1B"}},
            carrier, 4);
        // Texels: the second four at 20 and the two at 28 would run beyond theirs. Vectors: the second four at 20.
        const bool isTexture =
            carrier.mechanism == Plan::eTextureMechanism || carrier.mechanism == Plan::eBufferTextureMechanism;
        const bool isVector = carrier.useVec4Storage && carrier.mechanism != Plan::eUniformMechanism;
        EXPECT_EQ(log.messages(QtCriticalMsg).filter(QStringLiteral("out of range combination")).size(), isTexture  ? 2
                                                                                                         : isVector ? 1
                                                                                                                    : 0)
            << kCarrierNames[carrier.mechanism];
        EXPECT_EQ(log.messages(QtCriticalMsg).size(), isTexture ? 2 : isVector ? 1 : 0);
        link("before", "vec4");
        if (HasFatalFailure())
            return;
    }
}

// ---- the comparison with a program ---------------------------------------------------------------------------------

TEST_F(InstanceDataCarriersGL, PlansWithoutBooleansAgreeWithTheDriversLayout)
{
    for (const CarrierCase& carrier : carriers())
    {
        for (const Reading& reading : kReadings)
        {
            use({{reading.type, reading.name}}, carrier, 5);
            link(reading.name, reading.result);
            if (HasFatalFailure())
                return;
            const LogCapture log;
            plan->assertShaderProgram(program.get());
            EXPECT_EQ(log.messages(), QStringList()) << kCarrierNames[carrier.mechanism] << reading.name;
        }
        use(allMembers(), carrier, 5);
        link("matrixB", "mat4");
        if (HasFatalFailure())
            return;
        const LogCapture log;
        plan->assertShaderProgram(program.get());
        EXPECT_EQ(log.messages(), QStringList()) << kCarrierNames[carrier.mechanism];
    }
}

TEST_F(InstanceDataCarriersGL, BooleansWithoutVec4StorageDisagreeWithTheDriversLayout)
{
    const PlanMembers members = {
        {Plan::eVec4, "before"}, {Plan::eBool, "a"}, {Plan::eBool, "b"}, {Plan::eBool, "c"}, {Plan::eBool, "d"}};
    // 16 + 4 bytes and 12 of padding on the CPU; under std140 16 + 16 and, behind offset 20, three numbers: 44, in
    // whole vectors 48.
    use(members, {Plan::eUniformBufferMechanism, false}, 5);
    link("before", "vec4");
    if (HasFatalFailure())
        return;
    LogCapture log;
    plan->assertShaderProgram(program.get());
    EXPECT_EQ(log.messages(),
              QStringList({assertionLine(
                  QStringLiteral("int(_arraySize * _totalDataSize) == blockSize"),
                  QStringLiteral("CPP (5 * 32 = 160) and GLSL (240) for plan Record disagree on the size of the "
                                 "instance data buffer. Check alignment code"))}));
    log.clear();
    use(members, {Plan::eUniformBufferMechanism, true}, 5);
    link("before", "vec4");
    log.clear();
    plan->assertShaderProgram(program.get());
    EXPECT_EQ(log.messages(), QStringList());
}

// ---- as many records as there can be -------------------------------------------------------------------------------

TEST_F(InstanceDataCarriersGL, AMillionRecordsGiveTextsThatLinkAndTheLastRecordIsReached)
{
    const Reading& reading = kReadings[12];
    for (const CarrierCase& carrier : carriers())
    {
        use(allMembers(), carrier, 1000000);
        const size_t arraySize = plan->arraySize();
        EXPECT_TRUE(plan->glslh().contains(QStringLiteral("\n#define RECORD_ARRAY_SIZE %1\n").arg(arraySize)));
        GLint limit = 0;
        switch (carrier.mechanism)
        {
        case Plan::eUniformBufferMechanism:
            glGetIntegerv(GL_MAX_UNIFORM_BLOCK_SIZE, &limit);
            EXPECT_EQ(arraySize, size_t(limit) / plan->totalDataSize());
            break;
        case Plan::eTextureMechanism:
            EXPECT_EQ(arraySize, 1000000u);
            break;
        default:
            EXPECT_LE(arraySize, 1000000u);
        }
        ASSERT_GE(arraySize, 1u);
        link(reading.name, reading.result);
        if (HasFatalFailure())
            return;
        // A texture has one row: what it holds is less than what is declared.
        const int records = int(std::min<size_t>(arraySize, 40));
        collect(records);
        expectHeld(reading, {0, records - 1}, carrier);
        if (carrier.mechanism == Plan::eUniformBufferMechanism)
        {
            collect(int(arraySize));
            expectHeld(reading, {0, int(arraySize) - 1}, carrier);
        }
    }
}

TEST_F(InstanceDataCarriersGL, AnEmptyPlanGivesAUnitThatLinks)
{
    for (const CarrierCase& carrier : carriers())
    {
        const LogCapture log; // a buffer texture has something to say
        use({}, carrier, 3);
        program = std::make_unique<ShaderProgram>();
        program->addShader(GL_VERTEX_SHADER,
                           QStringLiteral("#version 150\n#instancedata \"Record\"\nvoid main()\n{\n    gl_Position = "
                                          "vec4(float(RECORD_ARRAY_SIZE));\n}\n"));
        program->addShader(GL_VERTEX_SHADER, plan->glslc());
        program->addShader(GL_FRAGMENT_SHADER,
                           QStringLiteral("#version 150\nout vec4 o;\nvoid main()\n{\n    o = vec4(1.0);\n}\n"));
        EXPECT_TRUE(program->link()) << kCarrierNames[carrier.mechanism] << program->log().toStdString();
    }
}

TEST_F(InstanceDataCarriersGL, ACollectionWithoutRecordsIsBoundWithoutAnOpenGLError)
{
    for (const CarrierCase& carrier : carriers())
    {
        use(allMembers(), carrier, 3);
        collection = std::make_unique<InstanceDataCollection>(plan, size_t(0));
        link("int1", "int");
        if (HasFatalFailure())
            return;
        const LogCapture reported;
        EXPECT_TRUE(collection->bind(program.get(), nullptr));
        EXPECT_TRUE(collection->unbind(program.get(), nullptr));
        EXPECT_EQ(glGetError(), GLenum(GL_NO_ERROR)) << kCarrierNames[carrier.mechanism];
    }
}

} // namespace
} // namespace Harrow::Vrk::Test
