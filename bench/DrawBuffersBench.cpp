// SPDX-License-Identifier: MIT
// DrawBuffers beside the same OpenGL calls written bare: 10,000 draws with the draw identifier as uniform, as one
// object drawn again and again, as a list of sub-draws, and with a change of geometry before each draw.
#include "GLBench.h"

#include "BufferObject.h"
#include "DrawBuffers.h"
#include "OpenGLDeviceContext.h"
#include "ShaderProgram.h"
#include "VertexArrayObject.h"

#include <array>
#include <memory>

using namespace Harrow::Vrk;

namespace
{

constexpr int kDraws = 10'000;
constexpr int kGeometries = 100;
constexpr int kIndices = 36;

/// What all benchmarks draw with: a program in use, and geometries of 36 indices each.
struct Scene
{
    Scene()
    {
        program.addShader(GL_VERTEX_SHADER,
                          QStringLiteral("#version 150\n"
                                         "uniform uint u_DrawID; in vec3 va_Vertex;\n"
                                         "void main() { gl_Position = vec4(va_Vertex, u_DrawID); }\n"));
        program.addShader(GL_FRAGMENT_SHADER,
                          QStringLiteral("#version 150\nout vec4 o_Color; void main() { o_Color = vec4(1.0); }\n"));
        ready = program.link() && program.bind();
        location = program.getUniformLocationNameID();
        for (auto& geometry : geometries)
            ready = ready && make(geometry);
        QList<DrawElementsIndirectCommand> commands(kDraws, {kIndices, 1, 0, 0, 0});
        geometries[0]->setDrawElementsIndirectCommands(commands.constData(), kDraws);
        withCommands = std::move(geometries[0]);
        ready = ready && make(geometries[0]) && geometries[0]->bind();
        ready = ready && geometries[0]->VAO()->enableShaderProgramArrays(&program);
    }

    bool make(std::unique_ptr<DrawBuffers>& geometry)
    {
        const auto context = OpenGLDeviceContext::current();
        const auto vertices = context->newBuffer();
        vertices->setTarget(GL_ARRAY_BUFFER);
        const auto indices = context->newBuffer();
        indices->setTarget(GL_ELEMENT_ARRAY_BUFFER);
        const GLushort numbers[kIndices] = {};
        bool good =
            indices->bind() && indices->uploadGLushortData(numbers, kIndices, GL_STATIC_DRAW) && indices->unbind();
        geometry = std::make_unique<DrawBuffers>(nullptr);
        geometry->setVAO(context->newVAO());
        geometry->setPrimitiveType(GL_TRIANGLES);
        geometry->setIndexedDraw(indices, kIndices, GL_UNSIGNED_SHORT);
        good =
            good && geometry->VAO()->upload(QStringLiteral("va_Vertex"), vertices, QList<float>(24), 3, GL_STATIC_DRAW);
        return good && geometry->bind() && geometry->VAO()->enableShaderProgramArrays(&program) && geometry->unbind();
    }

    ShaderProgram program;
    int location = -1;
    std::array<std::unique_ptr<DrawBuffers>, kGeometries> geometries;
    std::unique_ptr<DrawBuffers> withCommands;
    bool ready = false;
};

Scene* scene = nullptr;

void drawOne(benchmark::State& state)
{
    DrawBuffers& geometry = *scene->geometries[0];
    for (auto _ : state)
    {
        for (int i = 0; i < kDraws; ++i)
        {
            geometry.setDrawIDBase(i);
            geometry.draw(&scene->program);
        }
    }
    state.SetItemsProcessed(state.iterations() * kDraws);
}

void bareOne(benchmark::State& state)
{
    for (auto _ : state)
    {
        for (int i = 0; i < kDraws; ++i)
        {
            ::_ptrc_glUniform1ui(scene->location, GLuint(i));
            ::_ptrc_glDrawElements(GL_TRIANGLES, kIndices, GL_UNSIGNED_SHORT, nullptr);
        }
    }
    state.SetItemsProcessed(state.iterations() * kDraws);
}

void drawCommands(benchmark::State& state)
{
    DrawBuffers& geometry = *scene->withCommands;
    geometry.rebind(scene->geometries[0].get());
    for (auto _ : state)
        geometry.draw(&scene->program);
    scene->geometries[0]->rebind(&geometry);
    state.SetItemsProcessed(state.iterations() * kDraws);
}

void bareCommands(benchmark::State& state)
{
    for (auto _ : state)
    {
        for (int i = 0; i < kDraws; ++i)
        {
            ::_ptrc_glUniform1ui(scene->location, GLuint(i));
            ::_ptrc_glDrawElementsBaseVertex(GL_TRIANGLES, kIndices, GL_UNSIGNED_SHORT, nullptr, 0);
        }
    }
    state.SetItemsProcessed(state.iterations() * kDraws);
}

void drawGeometries(benchmark::State& state)
{
    DrawBuffers* bound = scene->geometries[0].get();
    for (auto _ : state)
    {
        for (int i = 0; i < kDraws; ++i)
        {
            DrawBuffers* const next = scene->geometries[i % kGeometries].get();
            next->rebind(bound);
            next->setDrawIDBase(i);
            next->draw(&scene->program);
            bound = next;
        }
    }
    scene->geometries[0]->rebind(bound);
    state.SetItemsProcessed(state.iterations() * kDraws);
}

void bareGeometries(benchmark::State& state)
{
    GLuint arrays[kGeometries];
    GLuint buffers[kGeometries];
    for (int i = 0; i < kGeometries; ++i)
    {
        arrays[i] = scene->geometries[i]->VAO()->getVAO();
        buffers[i] = scene->geometries[i]->indexBO()->getBO();
    }
    for (auto _ : state)
    {
        for (int i = 0; i < kDraws; ++i)
        {
            ::_ptrc_glBindVertexArray(arrays[i % kGeometries]);
            ::_ptrc_glBindBuffer(GL_ELEMENT_ARRAY_BUFFER, buffers[i % kGeometries]);
            ::_ptrc_glUniform1ui(scene->location, GLuint(i));
            ::_ptrc_glDrawElements(GL_TRIANGLES, kIndices, GL_UNSIGNED_SHORT, nullptr);
        }
    }
    ::_ptrc_glBindVertexArray(arrays[0]);
    ::_ptrc_glBindBuffer(GL_ELEMENT_ARRAY_BUFFER, buffers[0]);
    state.SetItemsProcessed(state.iterations() * kDraws);
}

BENCHMARK(drawOne)->Apply(Bench::repeat);
BENCHMARK(bareOne)->Apply(Bench::repeat);
BENCHMARK(drawCommands)->Apply(Bench::repeat);
BENCHMARK(bareCommands)->Apply(Bench::repeat);
BENCHMARK(drawGeometries)->Apply(Bench::repeat);
BENCHMARK(bareGeometries)->Apply(Bench::repeat);

} // namespace

int main(int argc, char** argv)
{
    Bench::NoOperationContext context;
    if (!Bench::start(argc, argv, context))
        return 1;
    Scene drawn;
    scene = &drawn;
    if (!drawn.ready)
        return 1;
    Bench::BestTimes times;
    benchmark::RunSpecifiedBenchmarks(&times);
    times.printRatio("draw, one object", "drawOne", "bareOne", kDraws);
    times.printRatio("draw, 10,000 sub-draws", "drawCommands", "bareCommands", kDraws);
    times.printRatio("rebind and draw, 100 objects in turn", "drawGeometries", "bareGeometries", kDraws);
    drawn.geometries[0]->unbind();
    return 0;
}
