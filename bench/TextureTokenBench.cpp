// SPDX-License-Identifier: MIT
// Texture tokens: issued, found and given back by the thousand, each time against a hundredth and a tenth of the
// number; scratch textures out of a full pool against an almost empty one; and the textures of a draw bound by token
// beside the same OpenGL calls written bare.
#include "GLBench.h"

#include "GLFunctions.h"
#include "SamplerTextureManager.h"
#include "Texture.h"

#include <algorithm>
#include <memory>
#include <random>
#include <vector>

using namespace Harrow::Vrk;

namespace
{

constexpr int kFew = 1'000;
constexpr int kMore = 10'000;
constexpr int kMany = 100'000;
constexpr int kPooledFew = 10;
constexpr int kPooledMany = 10'000;
constexpr int kTakes = 1'000;
constexpr int kBound = 32;

/// Wrapped textures, which a manager leaves alone when their tokens end.
const std::vector<Texture*>& textures()
{
    static const std::vector<Texture*> all = []
    {
        std::vector<Texture*> made;
        for (int i = 0; i < kMany; ++i)
        {
            made.push_back(new Texture(1000u + unsigned(i), nullptr));
            made.back()->setTarget(GL_TEXTURE_2D);
        }
        return made;
    }();
    return all;
}

std::vector<Texture*> firstTextures(int count, bool shuffled)
{
    std::vector<Texture*> some(textures().begin(), textures().begin() + count);
    if (shuffled)
        std::shuffle(some.begin(), some.end(), std::mt19937(1));
    return some;
}

void issueAll(TextureManager& manager, const std::vector<Texture*>& some)
{
    for (Texture* const texture : some)
        benchmark::DoNotOptimize(manager.tokenForTexture(texture));
}

void deleteAll(TextureManager& manager, const std::vector<Texture*>& some)
{
    for (Texture* const texture : some)
        manager.deleteTexture(texture);
}

/// Each time in a new manager, so that the growth of its tables is counted.
template <int Count> void issue(benchmark::State& state)
{
    const auto some = firstTextures(Count, false);
    for (auto _ : state)
    {
        state.PauseTiming();
        auto manager = std::make_unique<SamplerTextureManager>();
        state.ResumeTiming();
        issueAll(*manager, some);
        state.PauseTiming();
        deleteAll(*manager, some);
        manager.reset();
        state.ResumeTiming();
    }
}

template <int Count, bool Shuffled> void end(benchmark::State& state)
{
    const auto some = firstTextures(Count, false);
    const auto order = firstTextures(Count, Shuffled);
    SamplerTextureManager manager;
    for (auto _ : state)
    {
        state.PauseTiming();
        issueAll(manager, some);
        state.ResumeTiming();
        deleteAll(manager, order);
    }
}

template <int Count> void find(benchmark::State& state)
{
    const auto some = firstTextures(Count, false);
    SamplerTextureManager manager;
    issueAll(manager, some);
    for (auto _ : state)
        issueAll(manager, some);
    deleteAll(manager, some);
}

/// What no table of textures is spared: one look-up by address, and one entry taken out.
QHash<Texture*, TextureToken> bareTable(const std::vector<Texture*>& some)
{
    QHash<Texture*, TextureToken> table;
    for (Texture* const texture : some)
        table.insert(texture, TextureToken(quint64(table.size())));
    return table;
}

template <int Count> void findBare(benchmark::State& state)
{
    const auto some = firstTextures(Count, false);
    const auto table = bareTable(some);
    for (auto _ : state)
        for (Texture* const texture : some)
            benchmark::DoNotOptimize(table.value(texture));
}

template <int Count> void endShuffledBare(benchmark::State& state)
{
    const auto some = firstTextures(Count, false);
    const auto order = firstTextures(Count, true);
    for (auto _ : state)
    {
        state.PauseTiming();
        auto table = bareTable(some);
        state.ResumeTiming();
        for (Texture* const texture : order)
            table.remove(texture);
    }
}

/// `Count` free textures, of one description or of as many.
template <int Count, bool One> void take(benchmark::State& state)
{
    SamplerTextureManager manager;
    const auto width = [](int i) { return One ? 4 : 1 + i % 100; };
    const auto height = [](int i) { return One ? 4 : 1 + i / 100; };
    std::vector<Texture*> pooled;
    for (int i = 0; i < Count; ++i)
        pooled.push_back(manager.tempTexture(TextureFormat::RGBA, width(i), height(i), 1, 1));
    for (Texture* const texture : pooled)
        manager.releaseTempTextureRef(texture, 1);
    int next = 0;
    for (auto _ : state)
    {
        for (int i = 0; i < kTakes; ++i)
        {
            next = (next + 7) % Count;
            Texture* const texture = manager.tempTexture(TextureFormat::RGBA, width(next), height(next), 1, 1);
            manager.releaseTempTextureRef(texture, 1);
        }
    }
}

/// Real textures: the driver looks at what is bound.
std::vector<std::unique_ptr<Texture>> realTextures()
{
    std::vector<std::unique_ptr<Texture>> made;
    for (int i = 0; i < kBound; ++i)
    {
        made.push_back(std::make_unique<Texture>(nullptr));
        made.back()->create2D(GL_TEXTURE_2D, GL_RGBA8, 4, 4);
    }
    return made;
}

void bindTokens(benchmark::State& state)
{
    const auto made = realTextures();
    SamplerTextureManager manager;
    manager.setMaxSlots(kBound);
    QList<TextureToken> tokens;
    std::vector<std::unique_ptr<Texture>> wrappers;
    for (const auto& texture : made)
    {
        wrappers.push_back(std::make_unique<Texture>(texture->textureID(), nullptr));
        wrappers.back()->setTarget(GL_TEXTURE_2D);
        tokens.append(manager.tokenForTexture(wrappers.back().get()));
    }
    for (auto _ : state)
    {
        manager.bind(tokens);
        manager.unbind(tokens);
    }
    for (const auto& wrapper : wrappers)
        manager.deleteTexture(wrapper.get());
}

void bindTextures(benchmark::State& state)
{
    const auto made = realTextures();
    for (auto _ : state)
    {
        for (const auto& texture : made)
            texture->bind();
        for (const auto& texture : made)
            texture->unbind();
    }
}

void bindBare(benchmark::State& state)
{
    const auto made = realTextures();
    for (auto _ : state)
    {
        for (unsigned unit = 0; unit < kBound; ++unit)
        {
            ::_ptrc_glActiveTexture(GL_TEXTURE0 + unit);
            ::_ptrc_glBindTexture(GL_TEXTURE_2D, made[unit]->textureID());
        }
        for (unsigned unit = 0; unit < kBound; ++unit)
        {
            ::_ptrc_glActiveTexture(GL_TEXTURE0 + unit);
            ::_ptrc_glBindTexture(GL_TEXTURE_2D, 0);
        }
    }
}

BENCHMARK(issue<kFew>)->Name("issueFew")->Apply(Bench::repeat);
BENCHMARK(issue<kMore>)->Name("issueMore")->Apply(Bench::repeat);
BENCHMARK(issue<kMany>)->Name("issueMany")->Apply(Bench::repeat);
BENCHMARK(find<kFew>)->Name("findFew")->Apply(Bench::repeat);
BENCHMARK(find<kMore>)->Name("findMore")->Apply(Bench::repeat);
BENCHMARK(find<kMany>)->Name("findMany")->Apply(Bench::repeat);
BENCHMARK((end<kFew, false>))->Name("endFew")->Apply(Bench::repeat);
BENCHMARK((end<kMore, false>))->Name("endMore")->Apply(Bench::repeat);
BENCHMARK((end<kMany, false>))->Name("endMany")->Apply(Bench::repeat);
BENCHMARK((end<kFew, true>))->Name("endFewShuffled")->Apply(Bench::repeat);
BENCHMARK((end<kMore, true>))->Name("endMoreShuffled")->Apply(Bench::repeat);
BENCHMARK((end<kMany, true>))->Name("endManyShuffled")->Apply(Bench::repeat);
BENCHMARK(findBare<kMany>)->Name("findBareMany")->Apply(Bench::repeat);
BENCHMARK(endShuffledBare<kMany>)->Name("endBareManyShuffled")->Apply(Bench::repeat);
BENCHMARK((take<kPooledFew, true>))->Name("takeOfFewAlike")->Apply(Bench::repeat);
BENCHMARK((take<kPooledMany, true>))->Name("takeOfManyAlike")->Apply(Bench::repeat);
BENCHMARK((take<kPooledFew, false>))->Name("takeOfFewDifferent")->Apply(Bench::repeat);
BENCHMARK((take<kPooledMany, false>))->Name("takeOfManyDifferent")->Apply(Bench::repeat);
BENCHMARK(bindTokens)->Apply(Bench::repeat);
BENCHMARK(bindTextures)->Apply(Bench::repeat);
BENCHMARK(bindBare)->Apply(Bench::repeat);

} // namespace

int main(int argc, char** argv)
{
    Bench::NoOperationContext context;
    if (!Bench::start(argc, argv, context))
        return 1;
    Bench::BestTimes times;
    benchmark::RunSpecifiedBenchmarks(&times);
    times.printRatio("issue, one of 10,000 beside one of 1,000", "issueMore", kMore, "issueFew", kFew);
    times.printRatio("issue, one of 100,000 beside one of 1,000", "issueMany", kMany, "issueFew", kFew);
    times.printRatio("find, one of 10,000 beside one of 1,000", "findMore", kMore, "findFew", kFew);
    times.printRatio("find, one of 100,000 beside one of 1,000", "findMany", kMany, "findFew", kFew);
    times.printRatio("find, one of 100,000 beside a bare look-up", "findMany", "findBareMany", kMany);
    times.printRatio("delete in order, 10,000 beside 1,000", "endMore", kMore, "endFew", kFew);
    times.printRatio("delete in order, 100,000 beside 1,000", "endMany", kMany, "endFew", kFew);
    times.printRatio("delete shuffled, 10,000 beside 1,000", "endMoreShuffled", kMore, "endFewShuffled", kFew);
    times.printRatio("delete shuffled, 100,000 beside 1,000", "endManyShuffled", kMany, "endFewShuffled", kFew);
    times.printRatio("delete shuffled, 100,000 beside a bare removal", "endManyShuffled", "endBareManyShuffled", kMany);
    times.printRatio("take one of 10,000 alike beside one of 10", "takeOfManyAlike", "takeOfFewAlike", kTakes);
    times.printRatio("take, 10,000 descriptions beside 10", "takeOfManyDifferent", "takeOfFewDifferent", kTakes);
    times.printRatio("a token bound and unbound beside bare OpenGL", "bindTokens", "bindBare", kBound);
    times.printRatio("a texture bound and unbound beside bare OpenGL", "bindTextures", "bindBare", kBound);
    return 0;
}
