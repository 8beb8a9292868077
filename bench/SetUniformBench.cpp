// SPDX-License-Identifier: MIT
// Uniforms set by name, one look-up in a hash each, beside the same values set by the bare OpenGL call at a known
// location. A frame sets the uniforms of a program of ordinary size: 24 floats, vectors, matrices and lists each.
#include "GLBench.h"

#include "GLFunctions.h"
#include "ShaderProgram.h"

#include <QList>
#include <QMatrix4x4>
#include <QString>
#include <QVariant>
#include <QVector4D>

using namespace Harrow::Vrk;

namespace
{

constexpr int kUniforms = 24;

struct Scene
{
    Scene()
    {
        QString declarations = QStringLiteral("#version 150\n");
        QString sum = QStringLiteral("vec4 sum = vec4(0.0);\n");
        for (int i = 0; i < kUniforms; ++i)
        {
            const QString number = QString::number(i);
            declarations +=
                QStringLiteral("uniform float u_Float%1;\nuniform vec4 u_Vector%1;\nuniform mat4 u_Matrix%1;\n"
                               "uniform vec3 u_List%1[2];\n")
                    .arg(number);
            sum +=
                QStringLiteral("sum += u_Float%1 * (u_Matrix%1 * u_Vector%1) + vec4(u_List%1[gl_VertexID % 2], 1.0);\n")
                    .arg(number);
            floats.append(QStringLiteral("u_Float%1").arg(number));
            vectors.append(QStringLiteral("u_Vector%1").arg(number));
            matrices.append(QStringLiteral("u_Matrix%1").arg(number));
            lists.append(QStringLiteral("u_List%1").arg(number));
        }
        program.addShader(GL_VERTEX_SHADER, declarations + QStringLiteral("void main()\n{\n") + sum +
                                                QStringLiteral("gl_Position = sum;\n}\n"));
        program.addShader(GL_FRAGMENT_SHADER,
                          QStringLiteral("#version 150\nout vec4 o_Color; void main() { o_Color = vec4(1.0); }\n"));
        ready = program.link() && program.bind();
        for (int i = 0; i < kUniforms; ++i)
            for (const QString& name : {floats[i], vectors[i], matrices[i], lists[i]})
                ready = ready && program.hasUniform(name);
    }

    QList<int> locations(const QList<QString>& names) const
    {
        QList<int> result;
        for (const QString& name : names)
            result.append(program.getUniformLocation(name));
        return result;
    }

    ShaderProgram program;
    QList<QString> floats;
    QList<QString> vectors;
    QList<QString> matrices;
    QList<QString> lists;
    QList<float> list = {1, 2, 3, 4, 5, 6};
    bool ready = false;
};

Scene* scene = nullptr;

/// A value that differs each time, so that no driver may skip the call.
float nextValue()
{
    static float value = 0.0f;
    return value += 1.0f;
}

void floatsByName(benchmark::State& state)
{
    for (auto _ : state)
        for (const QString& name : scene->floats)
            scene->program.setUniform(name, QVariant(nextValue()));
}

void floatsBare(benchmark::State& state)
{
    const QList<int> locations = scene->locations(scene->floats);
    for (auto _ : state)
        for (const int location : locations)
            glUniform1f(location, nextValue());
}

void vectorsByName(benchmark::State& state)
{
    for (auto _ : state)
        for (const QString& name : scene->vectors)
            scene->program.setUniform(name, QVariant(QVector4D(nextValue(), 2, 3, 4)));
}

void vectorsBare(benchmark::State& state)
{
    const QList<int> locations = scene->locations(scene->vectors);
    for (auto _ : state)
        for (const int location : locations)
            glUniform4f(location, nextValue(), 2, 3, 4);
}

void matricesByName(benchmark::State& state)
{
    QMatrix4x4 matrix;
    for (auto _ : state)
        for (const QString& name : scene->matrices)
        {
            matrix(0, 0) = nextValue();
            scene->program.setUniform(name, QVariant(matrix));
        }
}

void matricesBare(benchmark::State& state)
{
    const QList<int> locations = scene->locations(scene->matrices);
    QMatrix4x4 matrix;
    for (auto _ : state)
        for (const int location : locations)
        {
            matrix(0, 0) = nextValue();
            glUniformMatrix4fv(location, 1, GL_FALSE, matrix.constData());
        }
}

void listsByName(benchmark::State& state)
{
    for (auto _ : state)
        for (const QString& name : scene->lists)
        {
            scene->list[0] = nextValue();
            scene->program.setUniform(name, scene->list, 3);
        }
}

void listsBare(benchmark::State& state)
{
    const QList<int> locations = scene->locations(scene->lists);
    for (auto _ : state)
        for (const int location : locations)
        {
            scene->list[0] = nextValue();
            glUniform3fv(location, 2, scene->list.constData());
        }
}

BENCHMARK(floatsByName)->Apply(Bench::repeat);
BENCHMARK(floatsBare)->Apply(Bench::repeat);
BENCHMARK(vectorsByName)->Apply(Bench::repeat);
BENCHMARK(vectorsBare)->Apply(Bench::repeat);
BENCHMARK(matricesByName)->Apply(Bench::repeat);
BENCHMARK(matricesBare)->Apply(Bench::repeat);
BENCHMARK(listsByName)->Apply(Bench::repeat);
BENCHMARK(listsBare)->Apply(Bench::repeat);

} // namespace

int main(int argc, char** argv)
{
    Bench::NoOperationContext context;
    if (!Bench::start(argc, argv, context))
        return 1;
    Scene made;
    if (!made.ready)
    {
        std::fprintf(stderr, "the program does not link\n");
        return 1;
    }
    scene = &made;
    Bench::BestTimes times;
    benchmark::RunSpecifiedBenchmarks(&times);
    times.printRatio("a float by name beside glUniform1f", "floatsByName", "floatsBare", kUniforms);
    times.printRatio("a vector by name beside glUniform4f", "vectorsByName", "vectorsBare", kUniforms);
    times.printRatio("a matrix by name beside glUniformMatrix4fv", "matricesByName", "matricesBare", kUniforms);
    times.printRatio("a list by name beside glUniform3fv", "listsByName", "listsBare", kUniforms);
    return 0;
}
