// SPDX-License-Identifier: MIT
// UniformBufferObject on the real driver: what the blocks read.
#include "UniformBufferObjectTestTools.h"

#include "support/GLTest.h"
#include "support/TransformFeedback.h"

#include <QScopeGuard>
#include <atomic>
#include <thread>

namespace Harrow::Vrk::Test
{
namespace
{

using Access = UniformBufferObjectTestAccess;

class UniformBufferObjectGL : public GLTest
{
protected:
    void SetUp() override
    {
        GLTest::SetUp();
        Access::forgetContexts();
    }

    static QSharedPointer<UniformBufferObject> filledBlock(const QString& name, const QList<float>& values,
                                                           GLenum target = GL_UNIFORM_BUFFER)
    {
        auto buffer = OpenGLDeviceContext::current()->newBuffer();
        buffer->setTarget(target);
        const AutoBinder binder(buffer.data());
        EXPECT_TRUE(buffer->upload(values, GL_STATIC_DRAW));
        return newBlock(buffer, name);
    }

    /// A program whose one vertex gives out what it reads.
    static QSharedPointer<ShaderProgram> readingProgram(const char* declarations, const char* expression)
    {
        auto program = QSharedPointer<ShaderProgram>::create();
        program->addShader(GL_VERTEX_SHADER, QString::fromLatin1(declarations) +
                                                 QStringLiteral("out vec4 vo_Value;\n"
                                                                "void main() { vo_Value = ") +
                                                 QString::fromLatin1(expression) +
                                                 QStringLiteral("; gl_Position = vec4(0.0); }\n"));
        program->setTransformFeedbackVaryings({QStringLiteral("vo_Value")}, GL_INTERLEAVED_ATTRIBS);
        EXPECT_TRUE(program->link());
        return program;
    }

    /// What the bound program reads.
    static QList<float> read()
    {
        const auto vao = OpenGLDeviceContext::current()->newVAO();
        const AutoBinder binder(vao.data());
        TransformFeedback feedback(GL_POINTS);
        glDrawArrays(GL_POINTS, 0, 1);
        return feedback.end<float>(4);
    }

    static constexpr char kTwoBlocks[] = "#version 150\n"
                                         "layout (std140) uniform u_First { vec4 u_A; };\n"
                                         "layout (std140) uniform u_Second { vec4 u_B; };\n";
};

TEST_F(UniformBufferObjectGL, EachBlockReadsTheBufferBoundToIt)
{
    const auto program = readingProgram(kTwoBlocks, "u_A + u_B * 10.0");
    const auto first = filledBlock(QStringLiteral("u_First"), {1, 2, 3, 4});
    const auto second = filledBlock(QStringLiteral("u_Second"), {5, 6, 7, 8});
    ASSERT_TRUE(program->bind());
    EXPECT_TRUE(first->bind());
    EXPECT_TRUE(second->bind());
    EXPECT_EQ(read(), QList<float>({51, 62, 73, 84}));

    const auto other = filledBlock(QStringLiteral("u_Second"), {9, 9, 9, 9});
    EXPECT_TRUE(other->bind()) << "a second buffer for the block takes it over, on a point of its own";
    EXPECT_EQ(read(), QList<float>({91, 92, 93, 94}));
    EXPECT_TRUE(second->bind()) << "and the first one gets it back without being bound again";
    EXPECT_EQ(read(), QList<float>({51, 62, 73, 84}));

    EXPECT_TRUE(second->unbind() && second->unbind() && other->unbind() && first->unbind());
    program->unbind();
}

TEST_F(UniformBufferObjectGL, ABatchBindsWhatWasCollected)
{
    const auto program = readingProgram(kTwoBlocks, "u_A + u_B * 10.0");
    const auto first = filledBlock(QStringLiteral("u_First"), {1, 2, 3, 4});
    const auto second = filledBlock(QStringLiteral("u_Second"), {5, 6, 7, 8});
    ASSERT_TRUE(program->bind());
    UniformBufferObject::bindBatchStart();
    EXPECT_EQ(glGetError(), GLenum(isFloor() ? GL_INVALID_ENUM : GL_NO_ERROR))
        << "a context without storage blocks was asked for their points";
    EXPECT_TRUE(first->bind());
    EXPECT_TRUE(second->bind());
    CallLog calls;
    UniformBufferObject::bindBatchFlush();
    EXPECT_EQ(calls.count("glBindBuffersBase"), isFloor() ? 0 : 1);
    EXPECT_EQ(calls.count("glBindBufferBase"), isFloor() ? 2 : 0);
    EXPECT_EQ(read(), QList<float>({51, 62, 73, 84}));
    EXPECT_TRUE(first->unbind() && second->unbind());
    program->unbind();
}

TEST_F(UniformBufferObjectGL, StorageBlocksReadTheirBufferWhereTheDriverHasThem)
{
    if (isFloor())
    {
        const auto block = filledBlock(QStringLiteral("u_Store"), {1, 2, 3, 4}, GL_ARRAY_BUFFER);
        block->bufferObject()->setTarget(GL_SHADER_STORAGE_BUFFER);
        LogCapture log;
        EXPECT_FALSE(block->bind(nullptr)) << "the pool is empty";
        EXPECT_EQ(log.messages(QtWarningMsg), QStringList(kNoBinding));
        EXPECT_EQ(glGetError(), GLenum(GL_INVALID_ENUM));
        return;
    }
    const auto program = readingProgram("#version 430\n"
                                        "layout (std430) readonly buffer u_Store { vec4 values[]; };\n"
                                        "layout (std430) readonly buffer u_Other { vec4 others[]; };\n",
                                        "values[1] + others[0]");
    const auto store = filledBlock(QStringLiteral("u_Store"), {1, 2, 3, 4, 5, 6, 7, 8}, GL_SHADER_STORAGE_BUFFER);
    const auto other = filledBlock(QStringLiteral("u_Other"), {10, 20, 30, 40}, GL_SHADER_STORAGE_BUFFER);
    ASSERT_TRUE(program->bind());
    EXPECT_TRUE(store->bind());
    EXPECT_TRUE(other->bind());
    EXPECT_NE(store->uniformBlockBinding(), other->uniformBlockBinding());
    EXPECT_EQ(read(), QList<float>({15, 26, 37, 48}));
    EXPECT_TRUE(store->unbind() && other->unbind());
    program->unbind();
}

TEST_F(UniformBufferObjectGL, EntryPointsAreThoseOfTheDriver)
{
    EXPECT_EQ(Access::uniformRecord()._bindBuffersBase == nullptr, isFloor());
    EXPECT_EQ(Access::storageRecord()._shaderStorageBlockBinding == nullptr, isFloor());
    EXPECT_EQ(glGetError(), GLenum(isFloor() ? GL_INVALID_ENUM : GL_NO_ERROR));
    GLint points = 0;
    glGetIntegerv(GL_MAX_UNIFORM_BUFFER_BINDINGS, &points);
    EXPECT_EQ(Access::maxUniformBlockBindings(), points);
}

TEST_F(UniformBufferObjectGL, TwoContextsMadeCurrentInTurnHavePoolsOfTheirOwn)
{
    const auto first = filledBlock(kBlockName, {1, 2, 3, 4});
    const auto second = filledBlock(kBlockName, {1, 2, 3, 4});
    EXPECT_TRUE(first->bind(nullptr));
    EXPECT_TRUE(second->bind(nullptr));
    const int secondPoint = second->uniformBlockBinding();
    {
        HeadlessContext other(&context());
        ASSERT_TRUE(other.isValid() && other.makeCurrent());
        EXPECT_EQ(second->uniformBlockBinding(), -1);
        EXPECT_TRUE(second->bind(nullptr));
        EXPECT_EQ(second->uniformBlockBinding(), 0);
        GLint bound = 0;
        glGetIntegeri_v(GL_UNIFORM_BUFFER_BINDING, 0, &bound);
        EXPECT_EQ(GLuint(bound), second->bufferObject()->getBO());
        EXPECT_TRUE(second->unbind(nullptr));
        EXPECT_EQ(glGetError(), GLenum(GL_NO_ERROR));
        ASSERT_TRUE(context().makeCurrent());
    }
    EXPECT_EQ(second->uniformBlockBinding(), secondPoint);
    EXPECT_TRUE(first->unbind(nullptr) && second->unbind(nullptr));
}

TEST_F(UniformBufferObjectGL, TwoThreadsWithTheirContextsDoNotDisturbEachOther)
{
    // All objects are made here; the threads bind and unbind them at the same time.
    constexpr int kThreads = 2;
    constexpr int kBlocks = 4;
    QList<QSharedPointer<UniformBufferObject>> blocks;
    for (int i = 0; i < kBlocks; ++i)
        blocks.append(filledBlock(kBlockName, {1, 2, 3, 4}));
    glFinish();
    HeadlessContext contexts[kThreads] = {HeadlessContext(&context()), HeadlessContext(&context())};
    std::atomic<int> waiting = kThreads;
    std::atomic<int> failures = 0;
    const auto work = [&](int number)
    {
        if (!contexts[number].makeCurrent())
            ++failures;
        const auto release = qScopeGuard([] { HeadlessContext::releaseCurrent(); });
        for (--waiting; waiting > 0;)
            std::this_thread::yield();
        for (int round = 0; round < 500; ++round)
        {
            for (int i = 0; i < kBlocks; ++i)
            {
                failures += !blocks[(i + number) % kBlocks]->bind(nullptr);
                failures += blocks[(i + number) % kBlocks]->uniformBlockBinding() != i;
            }
            for (int i = 0; i < kBlocks; ++i)
                failures += !blocks[i]->unbind(nullptr);
        }
        failures += glGetError() != GL_NO_ERROR;
    };
    std::thread first(work, 0);
    std::thread second(work, 1);
    first.join();
    second.join();
    EXPECT_EQ(failures, 0);
}

} // namespace
} // namespace Harrow::Vrk::Test
