// SPDX-License-Identifier: MIT
// Records of drawn instances: written by name, by offset and through a pointer beside a loop of memcpy; 100,000 of them
// uploaded beside a memcpy and one call; and their tokens collected by the thousand, each time against a hundredth and
// a tenth of the number.
#include "GLBench.h"

#include "BufferObject.h"
#include "GLFunctions.h"
#include "InstanceData.h"
#include "InstanceDataCollection.h"
#include "InstanceDataPlan.h"
#include "InstanceDataRegistry.h"
#include "TextureManager.h"
#include "UniformBufferObject.h"

#include <QMatrix4x4>

#include <array>
#include <cstring>
#include <memory>
#include <vector>

namespace Harrow::Vrk
{

struct InstanceDataCollectionTestAccess
{
    static char* writableRecord(InstanceDataCollection& collection, int index)
    {
        return collection.writableRecord(index);
    }
    static void forgetTokens(InstanceDataCollection& collection)
    {
        collection._tokens.clear();
    }
};

} // namespace Harrow::Vrk

using namespace Harrow::Vrk;

namespace
{

using Access = InstanceDataCollectionTestAccess;

constexpr int kWritten = 1'000;
constexpr int kFew = 1'000;
constexpr int kMore = 10'000;
constexpr int kMany = 100'000;

/// As the scene model names them.
const std::array<QString, 4> kMatrices = {QStringLiteral("ModelMatrix"), QStringLiteral("InverseModelMatrix"),
                                          QStringLiteral("ModelNormalMatrix"), QStringLiteral("PreviousModelMatrix")};
constexpr size_t kMatrixBytes = 16 * sizeof(float);

/// Is asked to bind, and does nothing.
class IdleManager : public TextureManager
{
public:
    using TextureManager::bind;
    using TextureManager::unbind;
    ~IdleManager() override = default;
    void bind(ShaderProgram*) override {}
    void bind(const QList<TextureToken>& tokens) override
    {
        benchmark::DoNotOptimize(tokens.size());
    }
    void unbind(ShaderProgram*) override {}
    void unbind(const QList<TextureToken>&) override {}
    QString getShaderFile() override
    {
        return {};
    }
};

struct Scene
{
    Scene()
    {
        plan = new InstanceDataPlan(QStringLiteral("Object"));
        for (const QString& name : kMatrices)
            plan->addMember(InstanceDataPlan::eMat4, name);
        plan->addMember(InstanceDataPlan::eTexture, QStringLiteral("ColorMap"));
        plan->addMember(InstanceDataPlan::eFloat, QStringLiteral("Roughness"));
        plan->setArraySize(kMany);
        plan->setMechanism(InstanceDataPlan::eStorageBufferMechanism);
        InstanceDataRegistry::Instance().registerPlan(plan);
        for (size_t i = 0; i < kMatrices.size(); ++i)
            offsets[i] = plan->offset(kMatrices[i]);
    }

    InstanceDataPlan* plan;
    std::array<int, 4> offsets = {};
    QMatrix4x4 matrix;
};

Scene* scene = nullptr;

// ---- writing -------------------------------------------------------------------------------------------------------

// Four matrices into each record, and the plain loop that does the same.

void setByName(benchmark::State& state)
{
    InstanceDataCollection records(scene->plan, size_t(kWritten));
    const float* const matrix = scene->matrix.constData();
    for (auto _ : state)
    {
        for (int i = 0; i < kWritten; ++i)
            for (const QString& name : kMatrices)
                records.set(i, name, matrix, kMatrixBytes);
        benchmark::ClobberMemory();
    }
}

void writeRecords(benchmark::State& state)
{
    InstanceDataCollection records(scene->plan, size_t(kWritten));
    const float* const matrix = scene->matrix.constData();
    for (auto _ : state)
    {
        for (int i = 0; i < kWritten; ++i)
        {
            char* const record = Access::writableRecord(records, i);
            for (const int offset : scene->offsets)
                std::memcpy(record + offset, matrix, kMatrixBytes);
        }
        benchmark::ClobberMemory();
    }
}

void copyBytes(benchmark::State& state)
{
    const size_t step = scene->plan->totalDataSize();
    std::vector<char> bytes(step * kWritten);
    const float* const matrix = scene->matrix.constData();
    for (auto _ : state)
    {
        for (int i = 0; i < kWritten; ++i)
        {
            char* const record = bytes.data() + step * size_t(i);
            for (const int offset : scene->offsets)
                std::memcpy(record + offset, matrix, kMatrixBytes);
        }
        benchmark::ClobberMemory();
    }
}

void copyMember(benchmark::State& state)
{
    InstanceDataCollection records(scene->plan, size_t(kWritten));
    for (auto _ : state)
    {
        for (int i = 0; i < kWritten; ++i)
            records.copyInstanceMember(i, kMatrices[0], kMatrices[3]);
        benchmark::ClobberMemory();
    }
}

void copyMemberBytes(benchmark::State& state)
{
    const size_t step = scene->plan->totalDataSize();
    std::vector<char> bytes(step * kWritten);
    for (auto _ : state)
    {
        for (int i = 0; i < kWritten; ++i)
        {
            char* const record = bytes.data() + step * size_t(i);
            std::memmove(record + scene->offsets[3], record + scene->offsets[0], kMatrixBytes);
        }
        benchmark::ClobberMemory();
    }
}

std::vector<InstanceData> separateRecords()
{
    return std::vector<InstanceData>(kWritten, InstanceData(QStringLiteral("Object")));
}

void recordByName(benchmark::State& state)
{
    auto records = separateRecords();
    const float* const matrix = scene->matrix.constData();
    for (auto _ : state)
    {
        for (InstanceData& record : records)
            for (const QString& name : kMatrices)
                record.set(name, matrix, kMatrixBytes);
        benchmark::ClobberMemory();
    }
}

void recordByOffset(benchmark::State& state)
{
    auto records = separateRecords();
    const float* const matrix = scene->matrix.constData();
    for (auto _ : state)
    {
        for (InstanceData& record : records)
            for (const int offset : scene->offsets)
                record.set(offset, matrix, kMatrixBytes);
        benchmark::ClobberMemory();
    }
}

void recordBytes(benchmark::State& state)
{
    std::vector<std::vector<char>> records(kWritten, std::vector<char>(scene->plan->totalDataSize()));
    const float* const matrix = scene->matrix.constData();
    for (auto _ : state)
    {
        for (std::vector<char>& record : records)
            for (const int offset : scene->offsets)
                std::memcpy(record.data() + offset, matrix, kMatrixBytes);
        benchmark::ClobberMemory();
    }
}

// ---- the upload ----------------------------------------------------------------------------------------------------

void uploadRecords(benchmark::State& state)
{
    InstanceDataCollection records(scene->plan, size_t(kMany));
    records.bind(nullptr, nullptr);
    for (auto _ : state)
    {
        records.set(0, kMatrices[0], scene->matrix.constData(), kMatrixBytes);
        records.bind(nullptr, nullptr);
        records.unbind(nullptr, nullptr);
    }
    records.unbind(nullptr, nullptr);
}

void uploadBytes(benchmark::State& state)
{
    const QByteArray bytes(qsizetype(scene->plan->totalDataSize()) * kMany, '\0');
    QByteArray staged(bytes.size(), '\0');
    GLuint buffer = 0;
    ::_ptrc_glGenBuffers(1, &buffer);
    ::_ptrc_glBindBuffer(GL_SHADER_STORAGE_BUFFER, buffer);
    ::_ptrc_glBufferData(GL_SHADER_STORAGE_BUFFER, bytes.size(), bytes.constData(), GL_STATIC_DRAW);
    for (auto _ : state)
    {
        std::memcpy(staged.data(), bytes.constData(), size_t(bytes.size()));
        ::_ptrc_glBufferSubData(GL_SHADER_STORAGE_BUFFER, 0, staged.size(), staged.constData());
    }
    ::_ptrc_glBindBuffer(GL_SHADER_STORAGE_BUFFER, 0);
    ::_ptrc_glDeleteBuffers(1, &buffer);
}

void bindClean(benchmark::State& state)
{
    InstanceDataCollection records(scene->plan, size_t(kMany));
    records.bind(nullptr, nullptr);
    for (auto _ : state)
    {
        records.bind(nullptr, nullptr);
        records.unbind(nullptr, nullptr);
    }
    records.unbind(nullptr, nullptr);
}

void bindBlock(benchmark::State& state)
{
    InstanceDataCollection records(scene->plan, size_t(kMany));
    records.bind(nullptr, nullptr);
    const auto block = records.getUniformBufferObject();
    for (auto _ : state)
    {
        block->bind(nullptr);
        block->unbind(nullptr);
    }
    records.unbind(nullptr, nullptr);
}

// ---- tokens --------------------------------------------------------------------------------------------------------

/// Distinct ones, in an order of no meaning.
template <int Count> std::unique_ptr<InstanceDataCollection> recordsWithTokens(quint64 first = 0)
{
    auto records = std::make_unique<InstanceDataCollection>(scene->plan, size_t(Count));
    for (int i = 0; i < Count; ++i)
    {
        const quint64 token = first + (quint64(i) * 7919u) % Count;
        records->set(i, QStringLiteral("ColorMap"), &token, sizeof token);
    }
    return records;
}

/// All beyond what counts as dense.
template <int Count> void collectFarTokens(benchmark::State& state)
{
    IdleManager manager;
    const auto records = recordsWithTokens<Count>(quint64(1) << 40);
    for (auto _ : state)
    {
        Access::forgetTokens(*records);
        records->bindTextureTokens(&manager);
    }
}

template <int Count> void collectTokens(benchmark::State& state)
{
    IdleManager manager;
    const auto records = recordsWithTokens<Count>();
    for (auto _ : state)
    {
        Access::forgetTokens(*records);
        records->bindTextureTokens(&manager);
    }
}

/// The reading alone, each token taken.
template <int Count> void readTokens(benchmark::State& state)
{
    const auto records = recordsWithTokens<Count>();
    const char* const bytes = records->dataArray().constData();
    const size_t step = scene->plan->totalDataSize();
    for (auto _ : state)
    {
        QList<TextureToken> tokens;
        for (size_t position = size_t(scene->plan->offset(QStringLiteral("ColorMap"))); position < step * Count;
             position += step)
        {
            TextureToken token;
            std::memcpy(&token.token, bytes + position, sizeof token.token);
            tokens.append(token);
        }
        benchmark::DoNotOptimize(tokens.constData());
    }
}

BENCHMARK(setByName)->Apply(Bench::repeat);
BENCHMARK(writeRecords)->Apply(Bench::repeat);
BENCHMARK(copyBytes)->Apply(Bench::repeat);
BENCHMARK(copyMember)->Apply(Bench::repeat);
BENCHMARK(copyMemberBytes)->Apply(Bench::repeat);
BENCHMARK(recordByName)->Apply(Bench::repeat);
BENCHMARK(recordByOffset)->Apply(Bench::repeat);
BENCHMARK(recordBytes)->Apply(Bench::repeat);
BENCHMARK(uploadRecords)->Apply(Bench::repeat);
BENCHMARK(uploadBytes)->Apply(Bench::repeat);
BENCHMARK(bindClean)->Apply(Bench::repeat);
BENCHMARK(bindBlock)->Apply(Bench::repeat);
BENCHMARK_TEMPLATE(collectTokens, kFew)->Apply(Bench::repeat);
BENCHMARK_TEMPLATE(collectTokens, kMore)->Apply(Bench::repeat);
BENCHMARK_TEMPLATE(collectTokens, kMany)->Apply(Bench::repeat);
BENCHMARK_TEMPLATE(collectFarTokens, kFew)->Apply(Bench::repeat);
BENCHMARK_TEMPLATE(collectFarTokens, kMany)->Apply(Bench::repeat);
BENCHMARK_TEMPLATE(readTokens, kFew)->Apply(Bench::repeat);
BENCHMARK_TEMPLATE(readTokens, kMany)->Apply(Bench::repeat);

} // namespace

int main(int argc, char** argv)
{
    Bench::NoOperationContext context;
    if (!Bench::start(argc, argv, context))
        return 1;
    Scene made;
    scene = &made;
    if (made.plan->arraySize() < size_t(kMany))
    {
        std::fprintf(stderr, "%d records do not fit into a block of this driver\n", kMany);
        return 1;
    }
    Bench::BestTimes times;
    benchmark::RunSpecifiedBenchmarks(&times);
    const int matrices = 4 * kWritten;
    times.printRatio("collection, a matrix by name : memcpy", "setByName", "copyBytes", matrices);
    times.printRatio("collection, a matrix by pointer : memcpy", "writeRecords", "copyBytes", matrices);
    times.printRatio("collection, a member copied by name : memmove", "copyMember", "copyMemberBytes", kWritten);
    times.printRatio("record, a matrix by name : memcpy", "recordByName", "recordBytes", matrices);
    times.printRatio("record, a matrix by offset : memcpy", "recordByOffset", "recordBytes", matrices);
    times.printRatio("upload, each of 100,000 : memcpy and one call", "uploadRecords", "uploadBytes", kMany);
    times.printRatio("bind and unbind, clean : the block alone", "bindClean", "bindBlock", 1);
    times.printRatio("tokens, 10,000 : 1,000", "collectTokens<kMore>", kMore, "collectTokens<kFew>", kFew);
    times.printRatio("tokens, 100,000 : 1,000", "collectTokens<kMany>", kMany, "collectTokens<kFew>", kFew);
    times.printRatio("tokens, far ones, 100,000 : 1,000", "collectFarTokens<kMany>", kMany, "collectFarTokens<kFew>",
                     kFew);
    times.printRatio("tokens, 1,000 : reading alone", "collectTokens<kFew>", "readTokens<kFew>", kFew);
    times.printRatio("tokens, 100,000 : reading alone", "collectTokens<kMany>", "readTokens<kMany>", kMany);
    InstanceDataRegistry::Instance().clear();
    return 0;
}
