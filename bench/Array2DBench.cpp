// SPDX-License-Identifier: MIT
// Thousands of textures in array slots: places given by the hundred, thousand and ten thousand; tokens that have their
// places bound again, beside one read of a flat array each; one more token among ten thousand; tokens given back in any
// order; and what the GPU keeps beside the sources.
#include "GLBench.h"

#include "Array2DTextureManager.h"
#include "AutoBinder.h"
#include "GLFunctions.h"
#include "GLSLMacroProcessor.h"
#include "ShaderProgram.h"
#include "Texture.h"

#include <QHash>

#include <algorithm>
#include <memory>
#include <random>
#include <vector>

using namespace Harrow::Vrk;

namespace
{

constexpr int kFew = 100;
constexpr int kMore = 1'000;
constexpr int kMany = 10'000;
constexpr int kSide = 8;
constexpr qint64 kTexelBytes = 4;
constexpr int kSlots = 8;

std::unique_ptr<Texture> newSource()
{
    auto texture = std::make_unique<Texture>(nullptr);
    texture->create2D(GL_TEXTURE_2D, GL_RGBA8, kSide, kSide);
    const AutoBinder binder(texture.get());
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAX_LEVEL, 0);
    return texture;
}

/// All of one format; they stay for the whole run.
const std::vector<std::unique_ptr<Texture>>& sources()
{
    static auto* const all = []
    {
        auto* const made = new std::vector<std::unique_ptr<Texture>>;
        for (int i = 0; i <= kMany; ++i)
            made->push_back(newSource());
        return made;
    }();
    return *all;
}

/// Wrappers of the first sources, which a manager leaves alone when their tokens end, and a program that samples.
struct Textures
{
    explicit Textures(int count)
    {
        for (int i = 0; i < count; ++i)
        {
            wrappers.push_back(std::make_unique<Texture>(sources()[std::size_t(i)]->textureID(), nullptr));
            wrappers.back()->setTarget(GL_TEXTURE_2D);
        }
    }

    QList<TextureToken> tokens(TextureManager& manager) const
    {
        QList<TextureToken> issued;
        for (const auto& wrapper : wrappers)
            issued.append(manager.tokenForTexture(wrapper.get()));
        return issued;
    }

    void endIn(TextureManager& manager) const
    {
        for (const auto& wrapper : wrappers)
            manager.deleteTexture(wrapper.get());
    }

    std::vector<std::unique_ptr<Texture>> wrappers;
};

std::unique_ptr<Array2DTextureManager> newManager()
{
    auto manager = std::make_unique<Array2DTextureManager>();
    manager->setMaxSlots(kSlots);
    return manager;
}

/// Samples one token, so that it has all of the manager's uniforms.
struct Sampling
{
    explicit Sampling(Array2DTextureManager& manager)
    {
        manager.setup(&processor);
        program.setMacroProcessor(&processor);
        program.addShader(GL_VERTEX_SHADER, QStringLiteral("#version 150\nvoid main() { gl_Position = vec4(0); }\n"));
        program.addShader(GL_FRAGMENT_SHADER,
                          QStringLiteral("#version 150\n#include \"TextureManager.glslh\"\nuniform uvec2 u_Token;\n"
                                         "out vec4 o_Color;\n"
                                         "void main() { o_Color = managedTexture(u_Token, vec2(0.5)); }\n"));
        program.addShaderFromFile(GL_FRAGMENT_SHADER, manager.getShaderFile());
        isReady = program.link() && program.bind();
    }

    GLSLMacroProcessor processor;
    ShaderProgram program{nullptr};
    bool isReady = false;
};

/// Each time in a new manager.
template <int Count> void place(benchmark::State& state)
{
    const Textures textures(Count);
    for (auto _ : state)
    {
        state.PauseTiming();
        auto manager = newManager();
        const QList<TextureToken> tokens = textures.tokens(*manager);
        manager->bind(QList<TextureToken>{tokens.first()}); // the slots are made once
        state.ResumeTiming();
        manager->bind(tokens);
        state.PauseTiming();
        textures.endIn(*manager);
        manager.reset();
        state.ResumeTiming();
    }
}

/// What a draw costs once all is in place.
template <int Count> void warm(benchmark::State& state)
{
    const Textures textures(Count);
    const auto manager = newManager();
    const QList<TextureToken> tokens = textures.tokens(*manager);
    Sampling sampling(*manager);
    if (!sampling.isReady)
        return state.SkipWithError("no program");
    manager->bind(tokens);
    manager->bind(&sampling.program);
    manager->unbind(&sampling.program);
    for (auto _ : state)
    {
        manager->bind(tokens);
        manager->bind(&sampling.program);
        manager->unbind(&sampling.program);
        manager->unbind(tokens);
    }
    textures.endIn(*manager);
}

template <int Count> void warmTokens(benchmark::State& state)
{
    const Textures textures(Count);
    const auto manager = newManager();
    const QList<TextureToken> tokens = textures.tokens(*manager);
    manager->bind(tokens);
    for (auto _ : state)
        manager->bind(tokens);
    textures.endIn(*manager);
}

template <int Count> void readFlat(benchmark::State& state)
{
    struct Record
    {
        int words[8];
    };
    std::vector<Record> records(Count + 1);
    QList<TextureToken> tokens;
    for (int i = 0; i < Count; ++i)
        tokens.append(TextureToken(quint64(i)));
    for (auto _ : state)
    {
        int missing = 0;
        for (const TextureToken& token : tokens)
        {
            missing += records[token.token].words[0] == -1 ? 1 : 0;
            benchmark::DoNotOptimize(missing);
        }
    }
}

/// One comes and goes among `Count`; its layer is there already.
template <int Count> void oneMore(benchmark::State& state)
{
    const Textures textures(Count);
    const auto manager = newManager();
    QList<TextureToken> tokens = textures.tokens(*manager);
    Sampling sampling(*manager);
    if (!sampling.isReady)
        return state.SkipWithError("no program");
    manager->bind(tokens);
    manager->bind(&sampling.program);
    manager->unbind(&sampling.program);
    Texture* const last = textures.wrappers.back().get();
    for (auto _ : state)
    {
        manager->deleteTexture(last);
        manager->bind(QList<TextureToken>{manager->tokenForTexture(last)});
        manager->bind(&sampling.program);
        manager->unbind(&sampling.program);
    }
    textures.endIn(*manager);
}

template <int Count> void endShuffled(benchmark::State& state)
{
    const Textures textures(Count);
    std::vector<Texture*> order;
    for (const auto& wrapper : textures.wrappers)
        order.push_back(wrapper.get());
    std::shuffle(order.begin(), order.end(), std::mt19937(1));
    const auto manager = newManager();
    for (auto _ : state)
    {
        state.PauseTiming();
        manager->bind(textures.tokens(*manager));
        state.ResumeTiming();
        for (Texture* const texture : order)
            manager->deleteTexture(texture);
    }
}

/// Bytes that the slots' storage takes for `count` sources, all their levels.
void printMemory(int count)
{
    const Textures textures(count);
    const auto manager = newManager();
    Sampling sampling(*manager);
    manager->bind(textures.tokens(*manager));
    manager->bind(&sampling.program);
    qint64 stored = 0;
    for (int unit = 0; unit < 32; ++unit)
    {
        glActiveTexture(GL_TEXTURE0 + GLenum(unit));
        GLint size[3] = {};
        GLint levels = 0;
        glGetTexParameteriv(GL_TEXTURE_2D_ARRAY, GL_TEXTURE_MAX_LEVEL, &levels);
        for (int level = 0; level <= std::min(levels, 20); ++level)
        {
            glGetTexLevelParameteriv(GL_TEXTURE_2D_ARRAY, level, GL_TEXTURE_WIDTH, &size[0]);
            glGetTexLevelParameteriv(GL_TEXTURE_2D_ARRAY, level, GL_TEXTURE_HEIGHT, &size[1]);
            glGetTexLevelParameteriv(GL_TEXTURE_2D_ARRAY, level, GL_TEXTURE_DEPTH, &size[2]);
            stored += qint64(size[0]) * size[1] * size[2] * kTexelBytes;
        }
    }
    manager->unbind(&sampling.program);
    textures.endIn(*manager);
    const qint64 given = qint64(count) * kSide * kSide * kTexelBytes;
    std::printf("%-46s %7lld KB beside %7lld KB of sources of one level: ratio %.2f\n", "storage of the slots",
                static_cast<long long>(stored / 1024), static_cast<long long>(given / 1024),
                double(stored) / double(given));
}

BENCHMARK(place<kFew>)->Name("placeFew")->Apply(Bench::repeat);
BENCHMARK(place<kMore>)->Name("placeMore")->Apply(Bench::repeat);
BENCHMARK(place<kMany>)->Name("placeMany")->Apply(Bench::repeat);
BENCHMARK(warm<kFew>)->Name("warmFew")->Apply(Bench::repeat);
BENCHMARK(warm<kMore>)->Name("warmMore")->Apply(Bench::repeat);
BENCHMARK(warm<kMany>)->Name("warmMany")->Apply(Bench::repeat);
BENCHMARK(warmTokens<kMany>)->Name("warmTokensMany")->Apply(Bench::repeat);
BENCHMARK(readFlat<kMany>)->Name("readFlatMany")->Apply(Bench::repeat);
BENCHMARK(oneMore<kFew>)->Name("oneMoreFew")->Apply(Bench::repeat);
BENCHMARK(oneMore<kMore>)->Name("oneMoreMore")->Apply(Bench::repeat);
BENCHMARK(oneMore<kMany>)->Name("oneMoreMany")->Apply(Bench::repeat);
BENCHMARK(endShuffled<kFew>)->Name("endShuffledFew")->Apply(Bench::repeat);
BENCHMARK(endShuffled<kMore>)->Name("endShuffledMore")->Apply(Bench::repeat);
BENCHMARK(endShuffled<kMany>)->Name("endShuffledMany")->Apply(Bench::repeat);

} // namespace

int main(int argc, char** argv)
{
    qputenv("VRK_ENABLE_LOGGING", "0"); // 10,000 tokens are more than some drivers have room for in the table's texture
    Bench::NoOperationContext context;
    if (!Bench::start(argc, argv, context))
        return 1;
    Bench::BestTimes times;
    benchmark::RunSpecifiedBenchmarks(&times);
    times.printRatio("place, one of 1,000 beside one of 100", "placeMore", kMore, "placeFew", kFew);
    times.printRatio("place, one of 10,000 beside one of 100", "placeMany", kMany, "placeFew", kFew);
    times.printRatio("bound again, one of 1,000 beside one of 100", "warmMore", kMore, "warmFew", kFew);
    times.printRatio("bound again, one of 10,000 beside one of 100", "warmMany", kMany, "warmFew", kFew);
    times.printRatio("a placed token beside one read", "warmTokensMany", "readFlatMany", kMany);
    times.printRatio("one new among 1,000 beside one among 100", "oneMoreMore", 1, "oneMoreFew", 1);
    times.printRatio("one new among 10,000 beside one among 100", "oneMoreMany", 1, "oneMoreFew", 1);
    times.printRatio("delete shuffled, 1,000 beside 100", "endShuffledMore", kMore, "endShuffledFew", kFew);
    times.printRatio("delete shuffled, 10,000 beside 100", "endShuffledMany", kMany, "endShuffledFew", kFew);
    printMemory(kMore);
    return 0;
}
