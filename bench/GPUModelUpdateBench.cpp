// SPDX-License-Identifier: MIT
// A scene's update: all, one in a hundred and none of its transforms changed, each with an object record that follows
// it, beside a bare loop of the same matrix operations over flat arrays that writes the same bytes; and a material's
// property over many records beside a bare loop of copies. At the end the heap allocations of a frame are counted.
#include "GLBench.h"

#include "DrawBuffers.h"
#include "GPUModel.h"
#include "InstanceDataCollection.h"
#include "InstanceDataPlan.h"
#include "InstanceDataRegistry.h"
#include "support/HeapCount.h"

#include <cstring>
#include <memory>
#include <random>
#include <vector>

using namespace Harrow::Vrk;

namespace
{

constexpr int kFew = 1'000;
constexpr int kMore = 10'000;
constexpr int kMany = 100'000;
constexpr int kFamily = 10; // a root and its children
constexpr int kCommands = 100;
constexpr int kAll = 1;
constexpr int kOneInAHundred = 100;
constexpr int kNone = 0;
constexpr size_t kRecordBytes = 256;

QMatrix4x4 anyMatrix(std::mt19937& random)
{
    std::uniform_real_distribution<float> number(0.5f, 2.0f);
    QMatrix4x4 matrix;
    matrix.translate(number(random), number(random), number(random));
    matrix.rotate(90.0f * number(random), number(random), number(random), number(random));
    matrix.scale(number(random), number(random), number(random));
    return matrix;
}

/// The hierarchy of both sides: two local matrices for each transform, taken in turn, and who changes.
struct Hierarchy
{
    Hierarchy(int transforms, int oneIn)
    {
        std::mt19937 random(1);
        for (int i = 0; i < transforms; ++i)
        {
            parents.push_back(i % kFamily == 0 ? -1 : i - i % kFamily);
            locals[0].push_back(anyMatrix(random));
            locals[1].push_back(anyMatrix(random));
            if (oneIn != kNone && i % oneIn == oneIn - 1)
                changed.push_back(i);
        }
    }

    std::vector<int> parents;
    std::vector<QMatrix4x4> locals[2];
    std::vector<int> changed;
};

InstanceDataPlan* objectPlan()
{
    static InstanceDataPlan* const plan = []
    {
        auto* const made = new InstanceDataPlan(QStringLiteral("BenchObject"));
        for (const QString& name : {kModelMatrix, kPreviousModelMatrix, kInverseModelMatrix, kModelNormalMatrix})
            made->addMember(InstanceDataPlan::eMat4, name);
        made->setMechanism(InstanceDataPlan::eTextureMechanism);
        made->setArraySize(kMany);
        InstanceDataRegistry::Instance().registerPlan(made);
        return made;
    }();
    return plan;
}

struct Scene
{
    explicit Scene(const Hierarchy& hierarchy)
    {
        const auto count = static_cast<int>(hierarchy.parents.size());
        for (int i = 0; i < count; ++i)
            model.addTransform(hierarchy.parents[size_t(i)], hierarchy.locals[0][size_t(i)]);
        const std::vector<DrawElementsIndirectCommand> commands(kCommands);
        for (int i = 0; i < count; i += kCommands)
        {
            auto* const buffers = new DrawBuffers(nullptr);
            buffers->setIndexedDraw({}, 3, GL_UNSIGNED_SHORT);
            buffers->setDrawElementsIndirectCommands(commands.data(), kCommands);
            const int handle =
                model.add(buffers, 0, nullptr, new InstanceDataCollection(objectPlan(), kCommands), quint64(i));
            for (int command = 0; command < kCommands; ++command)
                model.useTransform(handle, command, i + command);
        }
        model.updateTransforms();
        model.updatePreviousMatrices();
    }

    void change(const Hierarchy& hierarchy)
    {
        turn = 1 - turn;
        for (const int index : hierarchy.changed)
            model.setLocalTransform(index, hierarchy.locals[turn][size_t(index)], false);
    }

    GPUModel model;
    int turn = 0;
};

template <int Transforms, int OneIn> void update(benchmark::State& state)
{
    const Hierarchy hierarchy(Transforms, OneIn);
    Scene scene(hierarchy);
    for (auto _ : state)
    {
        state.PauseTiming();
        scene.change(hierarchy);
        state.ResumeTiming();
        benchmark::DoNotOptimize(scene.model.updateTransforms());
        state.PauseTiming();
        scene.model.updatePreviousMatrices();
        state.ResumeTiming();
    }
}

/// Without the pauses, which would be all that there is to measure.
template <int Transforms> void updateNone(benchmark::State& state)
{
    const Hierarchy hierarchy(Transforms, kNone);
    Scene scene(hierarchy);
    for (auto _ : state)
        benchmark::DoNotOptimize(scene.model.updateTransforms());
}

/// The arrays that the same work needs at least.
struct FlatArrays
{
    explicit FlatArrays(const Hierarchy& hierarchy)
        : locals(hierarchy.locals[0]),
          worlds(locals.size()),
          normals(locals.size()),
          records(locals.size() * kRecordBytes)
    {
        for (size_t i = 0; i < locals.size(); ++i)
            compute(hierarchy, int(i));
    }

    void compute(const Hierarchy& hierarchy, int index)
    {
        const auto i = size_t(index);
        const int parent = hierarchy.parents[i];
        QMatrix4x4& world = worlds[i];
        world = parent >= 0 ? worlds[size_t(parent)] * locals[i] : locals[i];
        normals[i] = world.normalMatrix();
        const QMatrix4x4 inverse = world.inverted();
        char* const record = records.data() + i * kRecordBytes;
        std::memcpy(record + 64, record, 64);
        std::memcpy(record, world.constData(), 64);
        std::memcpy(record + 128, inverse.constData(), 64);
        std::memcpy(record + 192, normals[i].constData(), 36);
    }

    std::vector<QMatrix4x4> locals;
    std::vector<QMatrix4x4> worlds;
    std::vector<QGenericMatrix<3, 3, float>> normals;
    std::vector<char> records;
};

/// Who changes is known, with all below it.
template <int Transforms, int OneIn> void updateBare(benchmark::State& state)
{
    const Hierarchy hierarchy(Transforms, OneIn);
    FlatArrays arrays(hierarchy);
    int turn = 0;
    for (auto _ : state)
    {
        state.PauseTiming();
        turn = 1 - turn;
        for (const int index : hierarchy.changed)
            arrays.locals[size_t(index)] = hierarchy.locals[turn][size_t(index)];
        state.ResumeTiming();
        for (const int index : hierarchy.changed)
            arrays.compute(hierarchy, index);
        benchmark::ClobberMemory();
        state.PauseTiming(); // as the other side
        state.ResumeTiming();
    }
}

template <int Transforms> void updatePrevious(benchmark::State& state)
{
    const Hierarchy hierarchy(Transforms, kAll);
    Scene scene(hierarchy);
    for (auto _ : state)
    {
        state.PauseTiming();
        scene.change(hierarchy);
        scene.model.updateTransforms();
        state.ResumeTiming();
        scene.model.updatePreviousMatrices();
    }
}

template <int Transforms> void updatePreviousBare(benchmark::State& state)
{
    const Hierarchy hierarchy(Transforms, kAll);
    FlatArrays arrays(hierarchy);
    for (auto _ : state)
    {
        state.PauseTiming();
        for (const int index : hierarchy.changed)
            arrays.compute(hierarchy, index);
        state.ResumeTiming();
        for (size_t i = 0; i < Transforms; ++i)
            std::memcpy(arrays.records.data() + i * kRecordBytes + 64, arrays.records.data() + i * kRecordBytes, 64);
        benchmark::ClobberMemory();
    }
}

// ---- properties ----------------------------------------------------------------------------------------------------

const QString kMaterial = QStringLiteral("steel");
const QString kProperty = kInverseModelMatrix;
constexpr size_t kPropertyBytes = 16;

template <int Instances> void setProperty(benchmark::State& state)
{
    const Hierarchy hierarchy(Instances, kNone);
    Scene scene(hierarchy);
    for (int i = 0; i < Instances; ++i)
        scene.model.addObjectName(i / kCommands, i % kCommands, kMaterial);
    const float value[4] = {1, 2, 3, 4};
    for (auto _ : state)
        scene.model.setObjectProperty(kMaterial, kProperty, value, kPropertyBytes);
}

/// The members' place known, and where each record begins.
template <int Instances> void setPropertyBare(benchmark::State& state)
{
    std::vector<std::vector<char>> collections(Instances / kCommands, std::vector<char>(kCommands * kRecordBytes));
    std::vector<GPUModel::InstanceRef> refs;
    for (int i = 0; i < Instances; ++i)
        refs.push_back({i / kCommands, i % kCommands});
    const float value[4] = {1, 2, 3, 4};
    for (auto _ : state)
    {
        for (const GPUModel::InstanceRef& ref : refs)
            std::memcpy(collections[size_t(ref.drawable)].data() + size_t(ref.instance) * kRecordBytes + 128, value,
                        kPropertyBytes);
        benchmark::ClobberMemory();
    }
}

#define VRK_UPDATES(transforms, name)                                                                                  \
    BENCHMARK((update<transforms, kAll>))->Name("updateAll" name)->Apply(Bench::repeat);                               \
    BENCHMARK((updateBare<transforms, kAll>))->Name("updateAllBare" name)->Apply(Bench::repeat);                       \
    BENCHMARK((update<transforms, kOneInAHundred>))->Name("updateSome" name)->Apply(Bench::repeat);                    \
    BENCHMARK((updateBare<transforms, kOneInAHundred>))->Name("updateSomeBare" name)->Apply(Bench::repeat);            \
    BENCHMARK((updateNone<transforms>))->Name("updateNone" name)->Apply(Bench::repeat);                                \
    BENCHMARK((updatePrevious<transforms>))->Name("updatePrevious" name)->Apply(Bench::repeat);                        \
    BENCHMARK((updatePreviousBare<transforms>))->Name("updatePreviousBare" name)->Apply(Bench::repeat);                \
    BENCHMARK((setProperty<transforms>))->Name("setProperty" name)->Apply(Bench::repeat);                              \
    BENCHMARK((setPropertyBare<transforms>))->Name("setPropertyBare" name)->Apply(Bench::repeat)

VRK_UPDATES(kFew, "Few");
VRK_UPDATES(kMore, "More");
VRK_UPDATES(kMany, "Many");

/// In ten frames, after two that bring the lists to their size.
void printAllocations(const char* what, int oneIn)
{
    const Hierarchy hierarchy(kMore, oneIn);
    Scene scene(hierarchy);
    scene.model.addObjectName(0, 0, kMaterial);
    const float value[4] = {1, 2, 3, 4};
    const auto frame = [&]
    {
        scene.change(hierarchy);
        scene.model.setObjectProperty(kMaterial, kProperty, value, kPropertyBytes);
        scene.model.updateTransforms();
        scene.model.updatePreviousMatrices();
    };
    frame();
    frame();
    const Test::HeapCount count;
    for (int i = 0; i < 10; ++i)
        frame();
    std::printf("heap allocations in 10 warm frames, %s of %d transforms changed: %lld\n", what, kMore, count.soFar());
}

struct Size
{
    const char* name;
    const char* count;
    int transforms;
};

constexpr Size kSizes[] = {{"Few", "1,000", kFew}, {"More", "10,000", kMore}, {"Many", "100,000", kMany}};

void printRatios(const Bench::BestTimes& times)
{
    struct Row
    {
        const char* what;
        const char* ours;
        const char* floor;
        int oneIn;
    };
    constexpr Row kRows[] = {{"all of %s transforms changed", "updateAll", "updateAllBare", kAll},
                             {"one in a hundred of %s changed", "updateSome", "updateSomeBare", kOneInAHundred},
                             {"previous matrices of %s", "updatePrevious", "updatePreviousBare", kAll},
                             {"a property of %s instances", "setProperty", "setPropertyBare", kAll}};
    for (const Row& row : kRows)
        for (const Size& size : kSizes)
        {
            char what[64];
            std::snprintf(what, sizeof what, row.what, size.count);
            times.printRatio(what, std::string(row.ours) + size.name, std::string(row.floor) + size.name,
                             size.transforms / row.oneIn);
        }
}

} // namespace

int main(int argc, char** argv)
{
    Bench::NoOperationContext context;
    if (!Bench::start(argc, argv, context))
        return 1;
    objectPlan();
    Bench::BestTimes times;
    benchmark::RunSpecifiedBenchmarks(&times);
    printRatios(times);
    printAllocations("all", kAll);
    printAllocations("one in a hundred", kOneInAHundred);
    printAllocations("none", kNone);
    return 0;
}
