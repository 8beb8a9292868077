// SPDX-License-Identifier: MIT
//
// InstanceDataCollection: the buffer, the tokens, and binding.
#include "InstanceDataTestTools.h"

#include "BufferObject.h"
#include "CallMaskTools.h"
#include "DrawBuffers.h"
#include "OpenGLDeviceContext.h"
#include "ShaderProgram.h"
#include "UniformBufferObject.h"

#include <cstdio>
#include <cstring>
#include <memory>

namespace Harrow::Vrk::Test
{
namespace
{

class InstanceDataCollectionBufferTest : public RecordsFixture
{
protected:
    void SetUp() override
    {
        RecordsFixture::SetUp();
        UniformBufferObjectTestAccess::uniformRecord(); // so that the query of the limit is not among the calls
        collection = std::make_unique<InstanceDataCollection>(plan, size_t(2));
    }

    void TearDown() override
    {
        program.reset();
        collection.reset();
        RecordsFixture::TearDown();
    }

    void setToken(int index, quint64 number, const char* member = "token")
    {
        collection->set(index, member, &number, sizeof number);
    }

    QList<TextureToken> bound()
    {
        collection->bindTextureTokens(manager.get());
        return manager->boundTokens;
    }

    /// A program that is in use and has the plan's block.
    void useProgram()
    {
        driver.replace(
            "glGetProgramiv", +[](GLuint, GLenum parameter, GLint* value)
                              { *value = parameter == GL_ACTIVE_UNIFORM_BLOCKS || parameter == GL_LINK_STATUS; });
        driver.replace(
            "glGetActiveUniformBlockName",
            +[](GLuint, GLuint, GLsizei, GLsizei* length, GLchar* name)
            {
                std::strcpy(name, "u_ObjectUniform");
                if (length)
                    *length = GLsizei(std::strlen(name));
            });
        driver.load();
        program = std::make_unique<ShaderProgram>();
        ASSERT_TRUE(program->link());
        ASSERT_TRUE(program->bind());
    }

    QString blockBinding(int binding = 0)
    {
        return CallLog::call("glUniformBlockBinding", program->shaderProgramID(), 0, binding);
    }

    static QString bindBuffer(GLenum target, GLuint name)
    {
        return CallLog::call("glBindBuffer", target, name);
    }

    static QString upload(GLenum target, int bytes, GLenum usage)
    {
        return CallLog::call("glBufferData", target, bytes).chopped(1) + QStringLiteral(", @, ") +
               CallLog::call("", usage).mid(1);
    }

    static constexpr const char* kGenerate = "glGenBuffers(1, @)";

    std::unique_ptr<InstanceDataCollection> collection;
    std::unique_ptr<ShaderProgram> program;
};

} // namespace

// ---- the buffer ----------------------------------------------------------------------------------------------------

TEST_F(InstanceDataCollectionBufferTest, TheBufferIsMadeAtTheFirstCallAndKept)
{
    collection->clearDirtyStatus();
    EXPECT_TRUE(Books::uniformBufferObject(*collection).isNull());
    const CallLog calls;
    const auto block = collection->getUniformBufferObject();
    ASSERT_FALSE(block.isNull());
    EXPECT_EQ(masked(calls), QStringList({kGenerate})) << "and nothing is uploaded";
    EXPECT_EQ(block->bufferObject()->target(), GLenum(GL_UNIFORM_BUFFER));
    EXPECT_EQ(block->bufferObject()->valueCount(), 0);
    EXPECT_TRUE(Books::isDirty(*collection)) << "there is nothing in it";
    collection->clearDirtyStatus();
    EXPECT_EQ(collection->getUniformBufferObject(), block);
    EXPECT_EQ(Books::uniformBufferObject(*collection), block);
    EXPECT_FALSE(Books::isDirty(*collection));
    EXPECT_EQ(calls.list().size(), 1);
}

TEST_F(InstanceDataCollectionBufferTest, TheTargetOfTheFirstCallStays)
{
    const auto block = collection->getUniformBufferObject(GL_SHADER_STORAGE_BUFFER);
    EXPECT_EQ(block->bufferObject()->target(), GLenum(GL_SHADER_STORAGE_BUFFER));
    EXPECT_EQ(collection->getUniformBufferObject(), block);
    EXPECT_EQ(collection->getUniformBufferObject(GL_TEXTURE_BUFFER), block);
    EXPECT_EQ(block->bufferObject()->target(), GLenum(GL_SHADER_STORAGE_BUFFER));
}

TEST_F(InstanceDataCollectionBufferTest, ABufferOfImmutableStorageHasTheBytesOfAllRecords)
{
    collection->useStorageBuffer(GL_DYNAMIC_STORAGE_BIT | GL_MAP_WRITE_BIT);
    CallLog calls;
    collection->getUniformBufferObject(GL_TEXTURE_BUFFER);
    EXPECT_EQ(masked(calls), QStringList({kGenerate, bindBuffer(GL_UNIFORM_BUFFER, 1),
                                          CallLog::call("glBufferStorage", GL_UNIFORM_BUFFER, 2 * kRecordBytes, nullptr,
                                                        GL_DYNAMIC_STORAGE_BIT | GL_MAP_WRITE_BIT),
                                          bindBuffer(GL_UNIFORM_BUFFER, 0)}));
    calls.clear();
    collection->getUniformBufferObject(GL_TEXTURE_BUFFER);
    EXPECT_EQ(calls.list(), QStringList());
}

TEST_F(InstanceDataCollectionBufferTest, StorageFlagsThatComeAfterTheBufferHaveNoEffect)
{
    collection->useStorageBuffer(GL_DYNAMIC_STORAGE_BIT);
    collection->useStorageBuffer(0);
    const CallLog calls;
    collection->getUniformBufferObject();
    collection->useStorageBuffer(GL_DYNAMIC_STORAGE_BIT);
    collection->getUniformBufferObject();
    EXPECT_EQ(masked(calls), QStringList({kGenerate}));
}

TEST_F(InstanceDataCollectionBufferTest, TheBufferEndsWithTheCollection)
{
    const int before = BufferObject::NumAlive();
    collection->getUniformBufferObject();
    EXPECT_EQ(BufferObject::NumAlive(), before + 1);
    const CallLog calls;
    collection.reset();
    EXPECT_EQ(BufferObject::NumAlive(), before);
    EXPECT_EQ(calls.count("glDeleteBuffers"), 1);
}

TEST_F(InstanceDataCollectionBufferTest, TheEstimatesCountBytesTokensAndBuffer)
{
    setToken(0, 1);
    setToken(1, 2);
    EXPECT_EQ(collection->memoryEstimateCPU(), 192u + 144u);
    EXPECT_EQ(collection->memoryEstimateGPU(), 0u);
    bound();
    EXPECT_EQ(collection->memoryEstimateCPU(), 192u + 144u + 2 * 4u);
    const auto block = collection->getUniformBufferObject();
    EXPECT_GT(block->memoryEstimateCPU(), 0u);
    EXPECT_EQ(collection->memoryEstimateCPU(), 192u + 144u + 2 * 4u + block->memoryEstimateCPU());
    EXPECT_EQ(collection->memoryEstimateGPU(), 0u);
    collection->bind(nullptr, nullptr);
    EXPECT_EQ(collection->memoryEstimateGPU(), 192u);
}

// ---- binding -------------------------------------------------------------------------------------------------------

TEST_F(InstanceDataCollectionBufferTest, ABindUploadsTheWholeArrayAndLeavesItClean)
{
    CallLog calls;
    const LogCapture log;
    EXPECT_TRUE(collection->bind(nullptr, manager.get()));
    EXPECT_EQ(masked(calls), QStringList({kGenerate, bindBuffer(GL_UNIFORM_BUFFER, 1),
                                          upload(GL_UNIFORM_BUFFER, 2 * kRecordBytes, GL_STATIC_DRAW),
                                          bindBuffer(GL_UNIFORM_BUFFER, 0),
                                          CallLog::call("glBindBufferBase", GL_UNIFORM_BUFFER, 0, 1)}));
    EXPECT_FALSE(Books::isDirty(*collection));
    EXPECT_EQ(manager->takeCalls(), QStringList({"bind(tokens)"}));
    calls.clear();
    EXPECT_TRUE(collection->unbind(nullptr, manager.get()));
    EXPECT_EQ(calls.list(), QStringList({CallLog::call("glBindBufferBase", GL_UNIFORM_BUFFER, 0, 0)}));
    EXPECT_EQ(manager->takeCalls(), QStringList({"unbind(tokens)"}));
    calls.clear();
    EXPECT_TRUE(collection->bind(nullptr, nullptr));
    EXPECT_EQ(calls.list(), QStringList({CallLog::call("glBindBufferBase", GL_UNIFORM_BUFFER, 0, 1)}));
    EXPECT_EQ(manager->takeCalls(), QStringList());
    EXPECT_EQ(log.texts(), QStringList());
    collection->unbind(nullptr, nullptr);
}

TEST_F(InstanceDataCollectionBufferTest, ManyWritesBetweenTwoBindsAreOneUpload)
{
    collection->bind(nullptr, nullptr);
    collection->unbind(nullptr, nullptr);
    const CallLog calls;
    for (int i = 0; i < 100; ++i)
    {
        setToken(i % 2, quint64(i));
        collection->copyInstanceMember(i % 2, "color", "matrix");
    }
    collection->update(zeros(3 * kRecordBytes).constData(), 3 * kRecordBytes);
    EXPECT_EQ(calls.list(), QStringList());
    collection->bind(nullptr, nullptr);
    collection->unbind(nullptr, nullptr);
    collection->bind(nullptr, nullptr);
    EXPECT_EQ(calls.count("glNamedBufferData"), 1);
    EXPECT_EQ(calls.count("glBufferData"), 0);
    EXPECT_TRUE(calls.list()[0].startsWith(CallLog::call("glNamedBufferData", 1, 3 * kRecordBytes).chopped(1)));
    collection->unbind(nullptr, nullptr);
}

TEST_F(InstanceDataCollectionBufferTest, WhatIsTakenAsUploadedIsNotUploaded)
{
    collection->bind(nullptr, nullptr);
    setToken(0, 1);
    collection->clearDirtyStatus();
    const CallLog calls;
    collection->bind(nullptr, nullptr);
    EXPECT_EQ(calls.list(), QStringList());
    collection->unbind(nullptr, nullptr);
    collection->unbind(nullptr, nullptr);
}

TEST_F(InstanceDataCollectionBufferTest, TheUsageIsThatOfEachUpload)
{
    collection->setBOUsageFlags(GL_STREAM_DRAW);
    CallLog calls;
    collection->bind(nullptr, nullptr);
    EXPECT_EQ(masked(calls).at(2), upload(GL_UNIFORM_BUFFER, 2 * kRecordBytes, GL_STREAM_DRAW));
    collection->setBOUsageFlags(GL_DYNAMIC_DRAW);
    setToken(0, 1);
    calls.clear();
    collection->bind(nullptr, nullptr);
    EXPECT_TRUE(calls.list().last().endsWith(CallLog::call("", GL_DYNAMIC_DRAW).mid(1))) << qPrintable(calls.list()[0]);
    collection->unbind(nullptr, nullptr);
    collection->unbind(nullptr, nullptr);
}

TEST_F(InstanceDataCollectionBufferTest, TheFormsOfBindTakeTheCurrentProgramAndTheManagerInUse)
{
    useProgram();
    RecordingManager other;
    Bindable& bindable = *collection;
    const CallLog calls;
    EXPECT_TRUE(bindable.bind());
    EXPECT_EQ(calls.named({"glUniformBlockBinding"}), QStringList({blockBinding()})) << "the block has the plan's name";
    EXPECT_EQ(manager->takeCalls(), QStringList({"bind(tokens)"}));
    EXPECT_TRUE(bindable.unbind());
    EXPECT_EQ(manager->takeCalls(), QStringList({"unbind(tokens)"}));
    EXPECT_EQ(calls.count("glBindBufferBase"), 2);

    EXPECT_TRUE(collection->bind(&other));
    EXPECT_EQ(other.takeCalls(), QStringList({"bind(tokens)"}));
    EXPECT_TRUE(collection->unbind(&other));
    EXPECT_EQ(other.takeCalls(), QStringList({"unbind(tokens)"}));
    EXPECT_EQ(calls.count("glBindBufferBase"), 4);
    EXPECT_EQ(manager->takeCalls(), QStringList());
    program->unbind();
}

TEST_F(InstanceDataCollectionBufferTest, TheProgramThatIsNamedNeedNotBeTheCurrentOne)
{
    useProgram();
    program->unbind();
    CallLog calls;
    EXPECT_TRUE(collection->bind(program.get(), manager.get()));
    EXPECT_EQ(calls.named({"glUniformBlockBinding"}), QStringList({blockBinding()}));
    EXPECT_TRUE(collection->unbind(program.get(), manager.get()));
    manager->takeCalls();
    calls.clear();
    EXPECT_TRUE(collection->bind()) << "without a program the buffer gets its point alone";
    EXPECT_EQ(calls.list(), QStringList({CallLog::call("glBindBufferBase", GL_UNIFORM_BUFFER, 0, 1)}));
    EXPECT_TRUE(collection->unbind());
    EXPECT_EQ(manager->takeCalls(), QStringList({"bind(tokens)", "unbind(tokens)"}));
}

TEST_F(InstanceDataCollectionBufferTest, TheCarrierIsThatOfThePlan)
{
    auto* const storage = registerPlan(newPlan(QStringLiteral("Stored"), InstanceDataPlan::eStorageBufferMechanism));
    InstanceDataCollection stored(storage, size_t(1));
    EXPECT_TRUE(stored.bind(nullptr, nullptr));
    EXPECT_EQ(stored.getUniformBufferObject()->bufferObject()->target(), GLenum(GL_SHADER_STORAGE_BUFFER));
    EXPECT_TRUE(stored.unbind(nullptr, nullptr));
    driver.setInteger(GL_MAX_VERTEX_UNIFORM_COMPONENTS, 1024);
    driver.setInteger(GL_MAX_FRAGMENT_UNIFORM_COMPONENTS, 1024);
    auto* const plain = registerPlan(newPlan(QStringLiteral("Plain"), InstanceDataPlan::eUniformMechanism));
    InstanceDataCollection sent(plain, size_t(1));
    EXPECT_TRUE(sent.bind(nullptr, manager.get()));
    EXPECT_TRUE(Books::uniformBufferObject(sent).isNull());
}

// ---- tokens --------------------------------------------------------------------------------------------------------

TEST_F(InstanceDataCollectionBufferTest, WithoutAManagerNoTokenIsCollected)
{
    setToken(0, 5);
    collection->bindTextureTokens(nullptr);
    EXPECT_TRUE(Books::tokens(*collection).isEmpty());
    EXPECT_EQ(manager->takeCalls(), QStringList());
}

TEST_F(InstanceDataCollectionBufferTest, RecordsWithTheSameTokenGiveOneEntry)
{
    collection = std::make_unique<InstanceDataCollection>(plan, size_t(4));
    const quint64 numbers[] = {9, 2, 9, 2};
    for (int i = 0; i < 4; ++i)
        setToken(i, numbers[i]);
    EXPECT_EQ(bound(), tokens({9, 2}));
    EXPECT_EQ(Books::tokens(*collection), tokens({9, 2}));
}

TEST_F(InstanceDataCollectionBufferTest, TokensComeMemberByMemberAndWithinOneRecordByRecord)
{
    auto* const two = new InstanceDataPlan(QStringLiteral("Two"));
    two->addMember(InstanceDataPlan::eTexture, QStringLiteral("front"));
    two->addMember(InstanceDataPlan::eTexture, QStringLiteral("back"));
    registerPlan(two);
    collection = std::make_unique<InstanceDataCollection>(two, size_t(3));
    const quint64 numbers[] = {30, 10, 20};
    for (int i = 0; i < 3; ++i)
    {
        setToken(i, numbers[i], "front");
        setToken(i, numbers[i] % 20 + 1, "back");
    }
    EXPECT_EQ(bound(), tokens({30, 10, 20, 11, 1}));
}

TEST_F(InstanceDataCollectionBufferTest, TokensOfRecordsThatAreNotSetAreZero)
{
    setToken(1, 3);
    EXPECT_EQ(bound(), tokens({0, 3}));
}

TEST_F(InstanceDataCollectionBufferTest, TokensHaveAllTheirBits)
{
    setToken(0, 0x0000000100000002ull);
    setToken(1, 0x0000000200000002ull);
    EXPECT_EQ(bound(), tokens({0x0000000100000002ull, 0x0000000200000002ull}));
    setToken(0, ~quint64(0));
    collection->update(QByteArray(collection->dataArray()).constData(), 2 * kRecordBytes);
    EXPECT_EQ(bound(), QList<TextureToken>({INVALID_TOKEN, TextureToken(0x0000000200000002ull)}));
}

TEST_F(InstanceDataCollectionBufferTest, TokensThatChangeAreNotSeenUntilAnUpdate)
{
    setToken(0, 5);
    setToken(1, 6);
    EXPECT_EQ(bound(), tokens({5, 6}));
    setToken(0, 7);
    EXPECT_EQ(bound(), tokens({5, 6})) << "the former one stays bound";
    EXPECT_TRUE(collection->bind(nullptr, manager.get()));
    EXPECT_EQ(manager->boundTokens, tokens({5, 6}));
    const QByteArray bytes = collection->dataArray();
    collection->update(bytes.constData(), size_t(bytes.size()));
    EXPECT_EQ(bound(), tokens({7, 6}));
    collection->unbind(nullptr, nullptr);
}

TEST_F(InstanceDataCollectionBufferTest, TheTokensOfRecordsAreReadFromTheirBytesAlone)
{
    InstanceData record(kPlanName);
    record.setTextureToken(kTokenOffset, TextureToken(4));
    record.setTextureToken(kTokenOffset, TextureToken(8));
    ASSERT_EQ(record.getTextureTokens(), tokens({4, 8}));
    collection->update({record});
    EXPECT_EQ(bound(), tokens({8}));
    record.clearTextures();
    collection->update({record});
    EXPECT_EQ(bound(), tokens({8}));
}

TEST_F(InstanceDataCollectionBufferTest, EmptyDataGivesAnEmptyListAndTheManagerIsStillCalled)
{
    collection->update(QList<InstanceData>());
    manager->boundTokens = tokens({1});
    EXPECT_EQ(bound(), QList<TextureToken>());
    EXPECT_EQ(bound(), QList<TextureToken>());
    EXPECT_EQ(manager->takeCalls(), QStringList({"bind(tokens)", "bind(tokens)"}));
}

TEST_F(InstanceDataCollectionBufferTest, APlanWithoutTokensGivesAnEmptyListAndTheManagerIsStillCalled)
{
    auto* const plain = new InstanceDataPlan(QStringLiteral("Plain"));
    plain->addMember(InstanceDataPlan::eVec4, QStringLiteral("color"));
    registerPlan(plain);
    collection = std::make_unique<InstanceDataCollection>(plain, size_t(3));
    EXPECT_EQ(bound(), QList<TextureToken>());
    EXPECT_EQ(manager->takeCalls(), QStringList({"bind(tokens)"}));
}

TEST_F(InstanceDataCollectionBufferTest, ATokenThatTheBytesEndWithinIsReportedAndNotRead)
{
    QByteArray bytes = ramp(2 * kRecordBytes, 0);
    const auto token = [&bytes](int record)
    { return TextureToken(qFromUnaligned<quint64>(bytes.constData() + record * kRecordBytes + kTokenOffset)); };
    const QList<TextureToken> first = {token(0)};
    for (const int end : {kRecordBytes + kTokenOffset, kRecordBytes + 1, kRecordBytes})
    {
        const LogCapture log;
        collection->update(bytes.constData(), size_t(end));
        EXPECT_EQ(bound(), first) << end;
        EXPECT_EQ(log.texts(), QStringList()) << "the part has no token";
    }
    for (const int end : {kRecordBytes + kTokenOffset + 1, kRecordBytes + kTokenOffset + 7})
    {
        // Of exactly this size, for those who watch the memory.
        const QByteArray part(bytes.constData(), end);
        const LogCapture log;
        collection->update(part.constData(), size_t(end));
        EXPECT_EQ(bound(), first) << end;
        EXPECT_EQ(log.messages(QtCriticalMsg),
                  QStringList({assertionLine(
                      "isWhole", QStringLiteral("plan 'Object': %1 bytes end within a token at 176").arg(end))}));
    }
    const LogCapture log;
    collection->update(bytes.constData(), kRecordBytes + kTokenOffset + 8);
    EXPECT_EQ(bound(), first + QList<TextureToken>({token(1)})) << "the token is there";
    EXPECT_EQ(log.texts(), QStringList());
}

TEST_F(InstanceDataCollectionBufferTest, BehindATokenThatIsCutOffTheOtherMembersAreRead)
{
    auto* const two = new InstanceDataPlan(QStringLiteral("Two"));
    two->addMember(InstanceDataPlan::eTexture, QStringLiteral("front"));
    two->addMember(InstanceDataPlan::eTexture, QStringLiteral("back"));
    registerPlan(two);
    ASSERT_EQ(two->textureTokenOffsets(), QList<int>({0, 8}));
    const quint64 numbers[] = {1, 2, 3, 4, 5};
    collection = std::make_unique<InstanceDataCollection>(two, reinterpret_cast<const char*>(numbers), size_t(36));
    const LogCapture log;
    EXPECT_EQ(bound(), tokens({1, 3, 2, 4}));
    EXPECT_EQ(log.messages(), QStringList({assertionLine("isWhole", "plan 'Two': 36 bytes end within a token at 32")}));
}

TEST_F(InstanceDataCollectionBufferTest, AHundredThousandTokensAreCollectedInOrderEachOnce)
{
    auto* const small = new InstanceDataPlan(QStringLiteral("Small"));
    small->addMember(InstanceDataPlan::eTexture, QStringLiteral("token"));
    small->addMember(InstanceDataPlan::eTexture, QStringLiteral("again"));
    small->setArraySize(200'000);
    registerPlan(small);
    constexpr int kCount = 100'000;
    collection = std::make_unique<InstanceDataCollection>(small, size_t(kCount));
    QList<TextureToken> expected;
    for (int i = 0; i < kCount; ++i)
    {
        // Far apart and close together, and not in the order of their numbers.
        const quint64 number = i % 2 ? quint64(i) : quint64(i) * 0x9E3779B97F4A7C15ull;
        setToken(i, number, "token");
        setToken(kCount - 1 - i, number, "again");
        expected.append(TextureToken(number));
    }
    EXPECT_TRUE(bound() == expected);
}

// ---- without a device context --------------------------------------------------------------------------------------

TEST_F(InstanceDataCollectionBufferTest, WithoutADeviceContextThereIsNoBufferAndBindIsFalse)
{
    constexpr char kVariable[] = "VRK_TEST_BIND_AT_EXIT";
    if (qEnvironmentVariableIsSet(kVariable))
    {
        // The context's quad ends when the process has let the context go.
        auto* const last = new InstanceDataCollection(newPlan(QStringLiteral("Last")), size_t(1));
        QObject::connect(OpenGLDeviceContext::current()->fullscreenQuad().data(), &QObject::destroyed,
                         [last]
                         {
                             const bool none = OpenGLDeviceContext::current().isNull() &&
                                               last->getUniformBufferObject().isNull() && !last->bind(nullptr, nullptr);
                             std::puts(none ? "No buffer, and bind is false" : "There is a buffer");
                             std::fflush(stdout);
                             delete last->plan();
                             delete last;
                         });
        return;
    }
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QString::fromLatin1(kVariable), QStringLiteral("1"));
    for (const char* const name :
         {"GTEST_OUTPUT", "GTEST_SHARD_INDEX", "GTEST_TOTAL_SHARDS", "GTEST_SHARD_STATUS_FILE"})
        environment.remove(QString::fromLatin1(name));
    QProcess process;
    process.setProcessEnvironment(environment);
    process.start(QCoreApplication::applicationFilePath(),
                  {QStringLiteral("--gtest_filter=InstanceDataCollectionBufferTest."
                                  "WithoutADeviceContextThereIsNoBufferAndBindIsFalse")});
    ASSERT_TRUE(process.waitForFinished(60000));
    const QByteArray output = process.readAllStandardOutput();
    EXPECT_TRUE(output.endsWith("No buffer, and bind is false\n")) << output.toStdString();
    EXPECT_EQ(process.exitCode(), 0);
}

} // namespace Harrow::Vrk::Test
