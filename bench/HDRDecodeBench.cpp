// SPDX-License-Identifier: MIT
//
// How fast a Radiance picture is decoded to floats, beside stb_image's stbi_loadf_from_memory of the same bytes: a
// picture of 2048 by 1024 pixels, run-length coded channel by channel, as all programs write them today. Both sides
// allocate what they decode into. Before anything is timed, both must give the same bits.
#include "GLBench.h"

#include "RadianceHeader.h"
#include "RadianceRows.h"

#define STB_IMAGE_IMPLEMENTATION
#define STB_IMAGE_STATIC
#define STBI_ONLY_HDR
#if defined(__GNUC__)
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wunused-function"
#endif
#include <stb/stb_image.h>
#if defined(__GNUC__)
#pragma GCC diagnostic pop
#endif

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <map>
#include <memory>
#include <random>
#include <string>
#include <vector>

using namespace Harrow::Vrk;

namespace
{

constexpr int kWidth = 2048;
constexpr int kHeight = 1024;
constexpr int kPixels = kWidth * kHeight;

std::vector<unsigned char> file;

struct Free
{
    void operator()(void* memory) const
    {
        std::free(memory);
    }
};
using Floats = std::unique_ptr<float, Free>;

/// One channel of a row as other programs code it: four and more equal bytes as a run, all else as literal bytes.
void encode(const std::vector<unsigned char>& channel)
{
    const auto runLength = [&channel](size_t x)
    {
        size_t length = 1;
        while (length < 127 && x + length < channel.size() && channel[x + length] == channel[x])
            ++length;
        return length;
    };
    for (size_t x = 0; x < channel.size();)
    {
        const size_t run = runLength(x);
        if (run >= 4)
        {
            file.push_back(static_cast<unsigned char>(128 + run));
            file.push_back(channel[x]);
            x += run;
            continue;
        }
        const size_t start = x;
        while (x < channel.size() && x - start < 128 && runLength(x) < 4)
            ++x;
        file.push_back(static_cast<unsigned char>(x - start));
        file.insert(file.end(), channel.begin() + std::ptrdiff_t(start), channel.begin() + std::ptrdiff_t(x));
    }
}

/// Smooth light with the grain of a sensor, from the dark to the sun, so that exponents come in runs and colours do
/// not.
void makeFile()
{
    const std::string header = "#?RADIANCE\nFORMAT=32-bit_rle_rgbe\n\n-Y 1024 +X 2048\n";
    file.assign(header.begin(), header.end());
    std::minstd_rand random(7);
    std::vector<unsigned char> channels[4];
    for (int y = 0; y < kHeight; ++y)
    {
        for (auto& channel : channels)
            channel.clear();
        for (int x = 0; x < kWidth; ++x)
        {
            const double wave = 6.0 * std::sin(x * 0.003) + 5.0 * std::cos(y * 0.004);
            const double light = std::exp2(wave) * (1.0 + double(random() % 1000) * 0.0001);
            int exponent = 0;
            const double red = std::frexp(light, &exponent) * 256.0;
            channels[0].push_back(static_cast<unsigned char>(red));
            channels[1].push_back(static_cast<unsigned char>(red * 0.8));
            channels[2].push_back(static_cast<unsigned char>(red * 0.6));
            channels[3].push_back(static_cast<unsigned char>(exponent + 128));
        }
        file.insert(file.end(), {2, 2, kWidth / 256, kWidth % 256});
        for (const auto& channel : channels)
            encode(channel);
    }
}

bool readRows(const RadianceHeader& header, float* image, unsigned char* rgbe)
{
    RadianceRowReader rows(header.pixels, file.data() + file.size(), header.width);
    for (quint32 y = 0; y < header.height; ++y)
    {
        if (rows.read(image + size_t(y) * header.width * 3, rgbe) != RadianceRow::eRead)
            return false;
    }
    return true;
}

/// As the reader of textures does it, first row first. Null when it does not decode.
Floats decode()
{
    const RadianceHeader header = readRadianceHeader(file.data(), file.data() + file.size());
    if (!header.valid || header.width != kWidth || header.height != kHeight)
        return nullptr;
    Floats image(static_cast<float*>(std::calloc(header.height, size_t(header.width) * 3 * sizeof(float))));
    const auto rgbe = std::make_unique<unsigned char[]>(size_t(header.width) * 4);
    return image && readRows(header, image.get(), rgbe.get()) ? std::move(image) : nullptr;
}

Floats decodeByStb()
{
    int width = 0;
    int height = 0;
    int channels = 0;
    return Floats(stbi_loadf_from_memory(file.data(), int(file.size()), &width, &height, &channels, 3));
}

void hdrDecode(benchmark::State& state)
{
    for (auto _ : state)
        benchmark::DoNotOptimize(decode());
}

void stbDecode(benchmark::State& state)
{
    for (auto _ : state)
        benchmark::DoNotOptimize(decodeByStb());
}

/// The rows alone, into memory that is there already.
void hdrRows(benchmark::State& state)
{
    const RadianceHeader header = readRadianceHeader(file.data(), file.data() + file.size());
    std::vector<float> image(size_t(kPixels) * 3);
    std::vector<unsigned char> rgbe(size_t(kWidth) * 4);
    for (auto _ : state)
        benchmark::DoNotOptimize(readRows(header, image.data(), rgbe.data()));
}

/// Remembers the best times once more, for the speeds.
class Speeds final : public Bench::BestTimes
{
public:
    void ReportRuns(const std::vector<Run>& runs) override
    {
        for (const Run& run : runs)
        {
            if (!run.error_occurred && run.aggregate_name == Bench::kBest)
                _seconds[run.run_name.function_name] = run.cpu_accumulated_time / double(run.iterations);
        }
        BestTimes::ReportRuns(runs);
    }

    void print(const char* who, const std::string& function) const
    {
        const auto found = _seconds.find(function);
        if (found != _seconds.end())
            std::printf("%-28s %6.0f MB of the file a second, %4.0f million pixels\n", who,
                        double(file.size()) / found->second / 1e6, kPixels / found->second / 1e6);
    }

private:
    std::map<std::string, double> _seconds;
};

BENCHMARK(hdrDecode)->Apply(Bench::repeat);
BENCHMARK(stbDecode)->Apply(Bench::repeat);
BENCHMARK(hdrRows)->Apply(Bench::repeat);

} // namespace

int main(int argc, char** argv)
{
    if (!Bench::readArguments(argc, argv))
        return 1;
    makeFile();
    const Floats ours = decode();
    const Floats theirs = decodeByStb();
    if (!ours || !theirs || std::memcmp(ours.get(), theirs.get(), size_t(kPixels) * 3 * sizeof(float)) != 0)
    {
        std::fprintf(stderr, "the two decoders differ\n");
        return 1;
    }
    std::printf("%zu bytes for %d pixels\n", file.size(), kPixels);
    Speeds times;
    benchmark::RunSpecifiedBenchmarks(&times);
    times.printRatio("a pixel, beside stbi_loadf_from_memory", "hdrDecode", "stbDecode", kPixels);
    times.printRatio("the rows alone, memory at hand", "hdrRows", "stbDecode", kPixels);
    times.print("ours", "hdrDecode");
    times.print("stbi_loadf_from_memory", "stbDecode");
    return 0;
}
