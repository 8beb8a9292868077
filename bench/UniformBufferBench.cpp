// SPDX-License-Identifier: MIT
// The repeated bind of a uniform buffer that has its binding point, which is look-ups and no OpenGL call, beside a bare
// look-up in a hash of the same size, and beside the call that it saves.
#include "GLBench.h"

#include "BufferObject.h"
#include "GLPlatform.h"
#include "OpenGLDeviceContext.h"
#include "ShaderProgram.h"
#include "UniformBufferObject.h"

#include <QHash>

using namespace Harrow::Vrk;

namespace
{

constexpr int kBlocks = 32;

struct Scene
{
    Scene()
    {
        program.addShader(GL_VERTEX_SHADER, QStringLiteral("#version 150\n"
                                                           "layout (std140) uniform u_Block { vec4 u_Value; };\n"
                                                           "void main() { gl_Position = u_Value; }\n"));
        program.addShader(GL_FRAGMENT_SHADER,
                          QStringLiteral("#version 150\nout vec4 o_Color; void main() { o_Color = vec4(1.0); }\n"));
        ready = program.link() && program.bind();
        const auto context = OpenGLDeviceContext::current();
        for (int i = 0; i < kBlocks; ++i)
        {
            const auto buffer = context->newBuffer();
            buffer->setTarget(GL_UNIFORM_BUFFER);
            ready = ready && buffer->bind() && buffer->upload(QList<float>(4), GL_STATIC_DRAW) && buffer->unbind();
            blocks.append(context->newUniformBuffer(QStringLiteral("u_Block"), buffer));
            ready = ready && blocks.last()->bind(&program);
            points.insert(buffer->getBO(), blocks.last()->uniformBlockBinding());
        }
    }

    ShaderProgram program;
    QList<QSharedPointer<UniformBufferObject>> blocks;
    QHash<GLuint, int> points;
    bool ready = false;
};

Scene* scene = nullptr;

/// Knows the one context. The driver's own answer is measured with the rest otherwise, and EGL's neutral library asks
/// the kernel for the process's number each time.
class OneContext : public GLPlatform
{
public:
    void* procAddress(const char* name) override
    {
        return native().procAddress(name);
    }
    void* moduleSymbol(const char* name) override
    {
        return native().moduleSymbol(name);
    }
    void* currentContext() override
    {
        return _context;
    }

private:
    void* _context = native().currentContext();
};

// Without a program: the buffer's own book-keeping alone.
void pairs(benchmark::State& state)
{
    for (auto _ : state)
    {
        for (const auto& block : scene->blocks)
        {
            block->bind(nullptr);
            block->unbind(nullptr);
        }
    }
    state.SetItemsProcessed(state.iterations() * kBlocks);
}

void bindAndUnbind(benchmark::State& state)
{
    pairs(state);
}

void bindAndUnbindInOneContext(benchmark::State& state)
{
    OneContext platform;
    GLPlatform::install(&platform);
    pairs(state);
    GLPlatform::install(nullptr);
}

void currentContext(benchmark::State& state)
{
    for (auto _ : state)
        for (int i = 0; i < kBlocks; ++i)
        {
            benchmark::DoNotOptimize(GLPlatform::native().currentContext());
            benchmark::DoNotOptimize(GLPlatform::native().currentContext());
        }
    state.SetItemsProcessed(state.iterations() * kBlocks);
}

// All buffers share one block, so that each bind points the block anew.
void bindProgramAndUnbind(benchmark::State& state)
{
    OneContext platform;
    GLPlatform::install(&platform);
    for (auto _ : state)
    {
        for (const auto& block : scene->blocks)
        {
            block->bind(&scene->program);
            block->unbind(&scene->program);
        }
    }
    GLPlatform::install(nullptr);
    state.SetItemsProcessed(state.iterations() * kBlocks);
}

void bareLookups(benchmark::State& state)
{
    QList<GLuint> names;
    for (const auto& block : scene->blocks)
        names.append(block->bufferObject()->getBO());
    for (auto _ : state)
    {
        for (const GLuint name : names)
        {
            benchmark::DoNotOptimize(scene->points.value(name, -1));
            benchmark::DoNotOptimize(scene->points.value(name, -1));
        }
    }
    state.SetItemsProcessed(state.iterations() * kBlocks);
}

void bareCalls(benchmark::State& state)
{
    QList<GLuint> names;
    for (const auto& block : scene->blocks)
        names.append(block->bufferObject()->getBO());
    for (auto _ : state)
    {
        for (int i = 0; i < kBlocks; ++i)
        {
            ::_ptrc_glBindBufferBase(GL_UNIFORM_BUFFER, GLuint(i), names[(i + 1) % kBlocks]);
            ::_ptrc_glBindBufferBase(GL_UNIFORM_BUFFER, GLuint(i), names[i]);
        }
    }
    state.SetItemsProcessed(state.iterations() * kBlocks);
}

void bareCallsWithBlock(benchmark::State& state)
{
    const GLuint program = scene->program.shaderProgramID();
    QList<GLuint> names;
    for (const auto& block : scene->blocks)
        names.append(block->bufferObject()->getBO());
    for (auto _ : state)
    {
        for (int i = 0; i < kBlocks; ++i)
        {
            ::_ptrc_glBindBufferBase(GL_UNIFORM_BUFFER, GLuint(i), names[i]);
            ::_ptrc_glUniformBlockBinding(program, 0, GLuint(i));
        }
    }
    state.SetItemsProcessed(state.iterations() * kBlocks);
}

BENCHMARK(bindAndUnbind)->Apply(Bench::repeat);
BENCHMARK(bindAndUnbindInOneContext)->Apply(Bench::repeat);
BENCHMARK(currentContext)->Apply(Bench::repeat);
BENCHMARK(bareLookups)->Apply(Bench::repeat);
BENCHMARK(bareCalls)->Apply(Bench::repeat);
BENCHMARK(bindProgramAndUnbind)->Apply(Bench::repeat);
BENCHMARK(bareCallsWithBlock)->Apply(Bench::repeat);

} // namespace

int main(int argc, char** argv)
{
    Bench::NoOperationContext context;
    if (!Bench::start(argc, argv, context))
        return 1;
    Scene made;
    scene = &made;
    if (!made.ready)
        return 1;
    Bench::BestTimes times;
    benchmark::RunSpecifiedBenchmarks(&times);
    times.printRatio("bind and unbind : asking EGL twice", "bindAndUnbind", "currentContext", kBlocks);
    times.printRatio("without asking EGL : two hash look-ups", "bindAndUnbindInOneContext", "bareLookups", kBlocks);
    times.printRatio("without asking EGL : two glBindBufferBase", "bindAndUnbindInOneContext", "bareCalls", kBlocks);
    times.printRatio("block switched : base and block binding", "bindProgramAndUnbind", "bareCallsWithBlock", kBlocks);
    for (const auto& block : made.blocks)
        block->unbind(nullptr);
    return 0;
}
