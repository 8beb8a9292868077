// SPDX-License-Identifier: MIT
//
// Ten million vertices of three floats written one by one with VertexArrayBuilder, beside thirty million bare appends
// to a QList<float>; room is made beforehand on both sides. Then the same without room made, and with a colour padded
// from three values to four.
#include "GLBench.h"

#include "VertexArrayBuilder.h"

#include <QList>

#include <cstdio>

using namespace Harrow::Vrk;

namespace
{

constexpr int kVertices = 10000000;

QList<float> builtVertices(unsigned room)
{
    VertexArrayBuilder builder;
    builder.setVertexSpec(3, room);
    for (int i = 0; i < kVertices; ++i)
    {
        const float value = static_cast<float>(i);
        builder.glVertex3f(value, value + 0.25f, value + 0.5f);
    }
    return builder.getVertexData();
}

QList<float> appendedVertices(bool hasRoom)
{
    QList<float> list;
    if (hasRoom)
        list.reserve(qsizetype(kVertices) * 3);
    for (int i = 0; i < kVertices; ++i)
    {
        const float value = static_cast<float>(i);
        list.append(value);
        list.append(value + 0.25f);
        list.append(value + 0.5f);
    }
    return list;
}

QList<float> builtColors()
{
    VertexArrayBuilder builder;
    builder.setColorSpec(4, kVertices);
    for (int i = 0; i < kVertices; ++i)
        builder.glColor3f(0.25f, 0.5f, static_cast<float>(i));
    return builder.getColorData();
}

QList<float> appendedColors()
{
    QList<float> list;
    list.reserve(qsizetype(kVertices) * 4);
    for (int i = 0; i < kVertices; ++i)
    {
        list.append(0.25f);
        list.append(0.5f);
        list.append(static_cast<float>(i));
        list.append(0.0f);
    }
    return list;
}

void builder(benchmark::State& state)
{
    for (auto _ : state)
        benchmark::DoNotOptimize(builtVertices(kVertices));
}

void bareAppends(benchmark::State& state)
{
    for (auto _ : state)
        benchmark::DoNotOptimize(appendedVertices(true));
}

void builderWithoutRoom(benchmark::State& state)
{
    for (auto _ : state)
        benchmark::DoNotOptimize(builtVertices(0));
}

void bareAppendsWithoutRoom(benchmark::State& state)
{
    for (auto _ : state)
        benchmark::DoNotOptimize(appendedVertices(false));
}

void builderPadding(benchmark::State& state)
{
    for (auto _ : state)
        benchmark::DoNotOptimize(builtColors());
}

void bareAppendsPadding(benchmark::State& state)
{
    for (auto _ : state)
        benchmark::DoNotOptimize(appendedColors());
}

BENCHMARK(builder)->Apply(Bench::repeat);
BENCHMARK(bareAppends)->Apply(Bench::repeat);
BENCHMARK(builderWithoutRoom)->Apply(Bench::repeat);
BENCHMARK(bareAppendsWithoutRoom)->Apply(Bench::repeat);
BENCHMARK(builderPadding)->Apply(Bench::repeat);
BENCHMARK(bareAppendsPadding)->Apply(Bench::repeat);

} // namespace

int main(int argc, char** argv)
{
    if (!Bench::readArguments(argc, argv))
        return 1;
    if (builtVertices(kVertices) != appendedVertices(true) || builtColors() != appendedColors())
    {
        std::fprintf(stderr, "the lists differ\n");
        return 1;
    }
    Bench::BestTimes times;
    benchmark::RunSpecifiedBenchmarks(&times);
    times.printRatio("a vertex, room made : bare appends", "builder", "bareAppends", kVertices);
    times.printRatio("without room made", "builderWithoutRoom", "bareAppendsWithoutRoom", kVertices);
    times.printRatio("a colour of three padded to four", "builderPadding", "bareAppendsPadding", kVertices);
    return 0;
}
