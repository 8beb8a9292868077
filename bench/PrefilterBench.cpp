// SPDX-License-Identifier: MIT
// Prefiltered environment maps with 64 samples a texel: a latitude-longitude map of 512 by 256 and a cube of 128, all
// levels, beside the same integral on all cores of the processor; and the latitude-longitude map in tiles of 64 beside
// tiles of 1024. Measured on the real driver, whatever GALLIUM_NOOP says, and in time on the clock: drivers work in
// threads of their own, or on a GPU.
#include "GLBench.h"

#include "AutoBinder.h"
#include "EnvironmentPictureTools.h"
#include "GLFunctions.h"
#include "PrefilteredEnvMap.h"
#include "Texture.h"

#include <array>
#include <atomic>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <functional>
#include <memory>
#include <thread>

using namespace Harrow::Vrk;
namespace Env = Harrow::Vrk::Test::Environment;

namespace
{

constexpr int kWidth = 512;
constexpr int kHeight = 256;
constexpr int kCubeSize = 128;
constexpr unsigned kSamples = 64;
constexpr float kPi = 3.14159265f;

// ---- the peer: single precision, the samples of a level made once --------------------------------------------------

struct Color
{
    float r = 0.0f;
    float g = 0.0f;
    float b = 0.0f;
};

struct Direction
{
    float x = 0.0f;
    float y = 0.0f;
    float z = 0.0f;
};

struct Picture
{
    int width = 0;
    int height = 0;
    std::vector<Color> texels;
};

using Pictures = std::vector<Picture>; // a mip chain

Color mixed(const Color& a, const Color& b, float t)
{
    return {a.r + (b.r - a.r) * t, a.g + (b.g - a.g) * t, a.b + (b.b - a.b) * t};
}

Color sampled(const Picture& picture, float u, float v, bool wraps)
{
    const float x = u * float(picture.width) - 0.5f;
    const float y = v * float(picture.height) - 0.5f;
    const int x0 = int(std::floor(x));
    const int y0 = int(std::floor(y));
    const auto column = [&](int i)
    {
        if (wraps)
            return i < 0 ? i + picture.width : i >= picture.width ? i - picture.width : i;
        return std::clamp(i, 0, picture.width - 1);
    };
    const auto row = [&](int i) { return std::clamp(i, 0, picture.height - 1) * picture.width; };
    const int left = column(x0);
    const int right = column(x0 + 1);
    const Color* const south = &picture.texels[size_t(row(y0))];
    const Color* const north = &picture.texels[size_t(row(y0 + 1))];
    const float s = x - float(x0);
    return mixed(mixed(south[left], south[right], s), mixed(north[left], north[right], s), y - float(y0));
}

const Picture& levelOf(const Pictures& levels, float lod)
{
    const float last = float(levels.size() - 1);
    return levels[size_t(std::clamp(std::ceil(lod - 0.5f), 0.0f, last))];
}

struct LatLongSource
{
    Pictures levels;

    Color operator()(const Direction& d, float lod) const
    {
        const float u = std::atan2(d.z, d.x) * (0.5f / kPi) + 0.5f;
        const float v = std::asin(std::clamp(d.y, -1.0f, 1.0f)) * (1.0f / kPi) + 0.5f;
        return sampled(levelOf(levels, lod), u, v, true);
    }
    int width() const
    {
        return levels[0].width;
    }
    int height() const
    {
        return levels[0].height;
    }
};

struct CubeSource
{
    std::array<Pictures, 6> faces;

    Color operator()(const Direction& d, float lod) const
    {
        const Env::CubePlace place = Env::placeOf({d.x, d.y, d.z});
        return sampled(levelOf(faces[size_t(place.face)], lod), float(place.s), float(place.t), false);
    }
    int width() const
    {
        return faces[0][0].width;
    }
    int height() const
    {
        return faces[0][0].height;
    }
};

/// A direction around +z that all texels of a level share.
struct Sample
{
    Direction L;
    float level; // but for the texel's part
};

std::vector<Sample> samplesOf(double roughness)
{
    std::vector<Sample> samples;
    for (unsigned i = 0; i < kSamples; ++i)
    {
        const Env::Vec H = Env::sampleModel(Env::eGGX, Env::hammersley(i, kSamples), roughness);
        const Env::Vec L = Env::mirror({0, 0, 1}, H);
        if (L.z <= 0.0)
            continue;
        const double density = roughness == 0.0 ? 1.0 : Env::distributionGGX(H.z, roughness * roughness) / 4.0;
        samples.push_back(
            {{float(L.x), float(L.y), float(L.z)}, float(0.5 * std::log2(1.0 / (kSamples * std::max(density, 1e-6))))});
    }
    return samples;
}

template <typename Source>
Color filtered(const Source& source, const std::vector<Sample>& samples, const Direction& N, float texelLevel,
               bool isMirror)
{
    const Env::Frame frame({N.x, N.y, N.z});
    const auto single = [](const Env::Vec& v) { return Direction{float(v.x), float(v.y), float(v.z)}; };
    const Direction T = single(frame.tangent);
    const Direction B = single(frame.bitangent);
    Color sum;
    float weight = 0.0f;
    for (const Sample& sample : samples)
    {
        const Direction& l = sample.L;
        const Direction L = {T.x * l.x + B.x * l.y + N.x * l.z, T.y * l.x + B.y * l.y + N.y * l.z,
                             T.z * l.x + B.z * l.y + N.z * l.z};
        const Color color = source(L, isMirror ? 0.0f : sample.level - texelLevel);
        sum = {sum.r + color.r * l.z, sum.g + color.g * l.z, sum.b + color.b * l.z};
        weight += l.z;
    }
    return {sum.r / weight, sum.g / weight, sum.b / weight};
}

/// One row of one level, of one face for a cube.
struct RowJob
{
    Picture* picture;
    const std::vector<Sample>* samples;
    int row;
    int face; // -1: a latitude-longitude map
    bool isMirror;
};

Direction directionAt(const RowJob& job, int x)
{
    const double s = (x + 0.5) / job.picture->width;
    const double t = (job.row + 0.5) / job.picture->height;
    const Env::Vec d = job.face < 0 ? Env::latLongDirection(s, t) : Env::directionOfFace(job.face, s, t);
    return {float(d.x), float(d.y), float(d.z)};
}

template <typename Source> void run(const Source& source, const RowJob& job)
{
    const double angle = Env::Texels{source.width(), source.height(), job.row}.solidAngle();
    const auto texelLevel = float(0.5 * std::log2(angle));
    Color* const row = &job.picture->texels[size_t(job.row) * size_t(job.picture->width)];
    for (int x = 0; x < job.picture->width; ++x)
        row[x] = filtered(source, *job.samples, directionAt(job, x), texelLevel, job.isMirror);
}

/// All levels; `faces` chains of them for a cube, one for a latitude-longitude map.
template <typename Source>
std::vector<Pictures> filteredOnAllCores(const Source& source, int width, int height, int faces)
{
    const int levels = MaxLODLevel(width, height);
    std::vector<std::vector<Sample>> samples;
    for (int level = 0; level < levels; ++level)
        samples.push_back(samplesOf(double(level) / (levels - 1)));
    std::vector<Pictures> result(static_cast<size_t>(faces), Pictures(static_cast<size_t>(levels)));
    std::vector<RowJob> jobs;
    for (int level = 0; level < levels; ++level)
        for (int face = 0; face < faces; ++face)
        {
            Picture& picture = result[size_t(face)][size_t(level)];
            picture = {width >> level, height >> level, {}};
            picture.texels.resize(size_t(picture.width) * size_t(picture.height));
            for (int row = 0; row < picture.height; ++row)
                jobs.push_back({&picture, &samples[size_t(level)], row, faces == 1 ? -1 : face, level == 0});
        }
    std::atomic<size_t> next = 0;
    const auto work = [&]
    {
        for (size_t job = next++; job < jobs.size(); job = next++)
            run(source, jobs[job]);
    };
    std::vector<std::thread> threads;
    for (unsigned i = 1; i < std::max(std::thread::hardware_concurrency(), 1u); ++i)
        threads.emplace_back(work);
    work();
    for (std::thread& thread : threads)
        thread.join();
    return result;
}

// ---- sources -------------------------------------------------------------------------------------------------------

Pictures pictures(const Env::Levels& levels)
{
    Pictures result;
    for (const Env::Image& image : levels)
    {
        Picture& picture = result.emplace_back();
        picture = {image.width, image.height, {}};
        for (const Env::Vec& texel : image.texels)
            picture.texels.push_back({float(texel.x), float(texel.y), float(texel.z)});
    }
    return result;
}

void upload(GLenum target, const Pictures& levels)
{
    for (size_t level = 0; level < levels.size(); ++level)
        glTexImage2D(target, GLint(level), GL_RGB16F, levels[level].width, levels[level].height, 0, GL_RGB, GL_FLOAT,
                     levels[level].texels.data());
}

std::unique_ptr<Texture> newTexture(GLenum target, const std::function<void()>& uploadAll)
{
    auto texture = std::make_unique<Texture>(nullptr);
    texture->setTarget(target);
    const AutoBinder binder(texture.get());
    glPixelStorei(GL_UNPACK_ALIGNMENT, 4);
    glTexParameteri(target, GL_TEXTURE_MIN_FILTER, GL_LINEAR_MIPMAP_NEAREST);
    glTexParameteri(target, GL_TEXTURE_MAG_FILTER, GL_LINEAR);
    glTexParameteri(target, GL_TEXTURE_WRAP_S, target == GL_TEXTURE_2D ? GL_REPEAT : GL_CLAMP_TO_EDGE);
    glTexParameteri(target, GL_TEXTURE_WRAP_T, GL_CLAMP_TO_EDGE);
    uploadAll();
    return texture;
}

LatLongSource latLongSource;
CubeSource cubeSource;
std::unique_ptr<Texture> latLongTexture;
std::unique_ptr<Texture> cubeTexture;

void makeSources()
{
    latLongSource.levels = pictures(Env::mipChain(Env::latLongImage(kWidth, kHeight, &Env::sky)));
    const Env::Cube cube = Env::cubeOf(kCubeSize, &Env::sky);
    for (size_t face = 0; face < 6; ++face)
        cubeSource.faces[face] = pictures(cube[face]);
    latLongTexture = newTexture(GL_TEXTURE_2D, [] { upload(GL_TEXTURE_2D, latLongSource.levels); });
    cubeTexture = newTexture(GL_TEXTURE_CUBE_MAP,
                             []
                             {
                                 for (GLenum face = 0; face < 6; ++face)
                                     upload(GL_TEXTURE_CUBE_MAP_POSITIVE_X + face, cubeSource.faces[face]);
                             });
}

// ---- what is measured ----------------------------------------------------------------------------------------------

std::unique_ptr<Texture> latLongMap()
{
    return std::unique_ptr<Texture>(CreatePrefilteredLatLongEnvMap(latLongTexture.get(), kWidth, kHeight, kSamples,
                                                                   SHADING_PHYSICALLY_BASED, RGBA16F));
}

std::unique_ptr<Texture> cubeMap()
{
    return std::unique_ptr<Texture>(
        CreatePrefilteredCubeEnvMap(cubeTexture.get(), kCubeSize, kSamples, SHADING_PHYSICALLY_BASED, RGBA16F));
}

void measureLatLong(benchmark::State& state, int tile)
{
    SetPrefilteredTilseSizeMax(tile);
    for (auto _ : state)
    {
        const auto map = latLongMap();
        glFinish();
        if (!map)
            state.SkipWithError("the map cannot be made");
    }
}

void latLong(benchmark::State& state)
{
    measureLatLong(state, 1024);
}

void latLongInTiles(benchmark::State& state)
{
    measureLatLong(state, 64);
}

void latLongOnCores(benchmark::State& state)
{
    for (auto _ : state)
        benchmark::DoNotOptimize(filteredOnAllCores(latLongSource, kWidth, kHeight, 1));
}

void cube(benchmark::State& state)
{
    for (auto _ : state)
    {
        const auto map = cubeMap();
        glFinish();
        if (!map)
            state.SkipWithError("the map cannot be made");
    }
}

void cubeOnCores(benchmark::State& state)
{
    for (auto _ : state)
        benchmark::DoNotOptimize(filteredOnAllCores(cubeSource, kCubeSize, kCubeSize, 6));
}

/// What a call costs whatever its size: the program, and one texel.
void smallest(benchmark::State& state)
{
    for (auto _ : state)
    {
        const std::unique_ptr<Texture> map(
            CreatePrefilteredLatLongEnvMap(latLongTexture.get(), 1, 1, 1, SHADING_PHYSICALLY_BASED, RGBA16F));
        glFinish();
    }
}

/// By the clock, few times: a map takes a second on a processor.
void repeatOnTheClock(benchmark::internal::Benchmark* benchmark)
{
    Bench::repeat(benchmark);
    benchmark->Unit(benchmark::kMillisecond)->UseRealTime()->Repetitions(5);
}

BENCHMARK(latLong)->Apply(repeatOnTheClock);
BENCHMARK(latLongInTiles)->Apply(repeatOnTheClock);
BENCHMARK(latLongOnCores)->Apply(repeatOnTheClock);
BENCHMARK(cube)->Apply(repeatOnTheClock);
BENCHMARK(cubeOnCores)->Apply(repeatOnTheClock);
BENCHMARK(smallest)->Apply(repeatOnTheClock);

/// As BestTimes, by the clock.
class BestClockTimes : public benchmark::ConsoleReporter
{
public:
    void ReportRuns(const std::vector<Run>& runs) override
    {
        for (const Run& run : runs)
            if (!run.error_occurred && run.aggregate_name == Bench::kBest)
                _seconds[run.run_name.function_name] = run.real_accumulated_time / double(run.iterations);
        ConsoleReporter::ReportRuns(runs);
    }

    void printRatio(const char* what, const std::string& ours, const std::string& other, double samples) const
    {
        const auto mine = _seconds.find(ours);
        const auto theirs = _seconds.find(other);
        if (mine == _seconds.end() || theirs == _seconds.end())
            return;
        std::printf("%-46s %8.2f ms (%6.1f million samples a second) beside %8.2f ms: ratio %.2f\n", what,
                    mine->second * 1e3, samples / mine->second * 1e-6, theirs->second * 1e3,
                    mine->second / theirs->second);
    }

private:
    std::map<std::string, double> _seconds;
};

double samplesOfMap(int width, int height, int faces)
{
    double texels = 0.0;
    for (int level = 0; level < MaxLODLevel(width, height); ++level)
        texels += double(width >> level) * double(height >> level);
    return texels * faces * kSamples;
}

/// Whether a level is the same on both sides, but for half floats, and samples on an edge of the cube or between
/// levels.
bool isEqual(Texture& map, GLenum target, int level, const Picture& expected)
{
    const AutoBinder binder(&map);
    std::vector<Color> texels(expected.texels.size());
    glPixelStorei(GL_PACK_ALIGNMENT, 4);
    glGetTexImage(target, level, GL_RGB, GL_FLOAT, texels.data());
    double difference = 0.0;
    double sum = 0.0;
    for (size_t i = 0; i < texels.size(); ++i)
    {
        difference += std::abs(double(texels[i].g) - double(expected.texels[i].g));
        sum += double(expected.texels[i].g);
    }
    return sum > 0.0 && difference <= 0.02 * sum;
}

bool areSidesEqual()
{
    const auto map = latLongMap();
    const auto faces = cubeMap();
    if (!map || !faces)
        return false;
    const auto expected = filteredOnAllCores(latLongSource, kWidth, kHeight, 1);
    const auto expectedFaces = filteredOnAllCores(cubeSource, kCubeSize, kCubeSize, 6);
    for (int level = 0; level < 6; ++level)
    {
        if (!isEqual(*map, GL_TEXTURE_2D, level, expected[0][size_t(level)]))
            return false;
        for (GLenum face = 0; face < 6; ++face)
            if (!isEqual(*faces, GL_TEXTURE_CUBE_MAP_POSITIVE_X + face, level, expectedFaces[face][size_t(level)]))
                return false;
    }
    return glGetError() == GL_NO_ERROR;
}

} // namespace

int main(int argc, char** argv)
{
    qputenv("VRK_ENABLE_LOGGING", "0");
    qputenv("GALLIUM_NOOP", "0");
    Bench::NoOperationContext context;
    if (!Bench::start(argc, argv, context))
        return 1;
    makeSources();
    if (!areSidesEqual())
    {
        std::fprintf(stderr, "the two sides differ\n");
        return 1;
    }
    std::printf("%u threads beside it\n", std::max(std::thread::hardware_concurrency(), 1u));
    BestClockTimes times;
    benchmark::RunSpecifiedBenchmarks(&times);
    const double latLongSamples = samplesOfMap(kWidth, kHeight, 1);
    times.printRatio("512 by 256, beside the cores", "latLong", "latLongOnCores", latLongSamples);
    times.printRatio("a cube of 128, beside the cores", "cube", "cubeOnCores", samplesOfMap(kCubeSize, kCubeSize, 6));
    times.printRatio("512 by 256 in tiles of 64, beside tiles of 1024", "latLongInTiles", "latLong", latLongSamples);
    latLongTexture.reset();
    cubeTexture.reset();
    return 0;
}
