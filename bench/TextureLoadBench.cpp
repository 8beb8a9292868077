// SPDX-License-Identifier: MIT
// LoadTextureFromFile of a PNG of 4096 by 4096 pixels beside what cannot be saved: the decoding by QImage and one bare
// upload. What the library adds is the look at the file, the turn of its rows, and on a real driver the mipmaps, which
// also stand beside the bare calls. GALLIUM_NOOP=0 measures with the real driver.
#include "GLBench.h"

#include "GLFunctions.h"
#include "Texture.h"
#include "TextureFileInfo.h"
#include "TextureIO.h"

#include <QImage>
#include <QString>
#include <QTemporaryDir>

#include <cmath>
#include <memory>
#include <random>

using namespace Harrow::Vrk;

namespace
{

constexpr int kSide = 4096;

QString path;

/// Smooth shades with the grain of a sensor, so that it packs about as well as a photograph does.
bool writePicture()
{
    std::minstd_rand random(7);
    QImage image(kSide, kSide, QImage::Format_RGB32);
    for (int y = 0; y < kSide; ++y)
    {
        auto* const row = reinterpret_cast<QRgb*>(image.scanLine(y));
        for (int x = 0; x < kSide; ++x)
        {
            const double wave = 100.0 + 60.0 * std::sin(x * 0.004) + 60.0 * std::cos(y * 0.003);
            const auto grain = [&random] { return int(random() % 12); };
            const int shade = int(wave);
            row[x] = qRgb(shade + grain(), shade * 3 / 4 + y / 64 + grain(), 200 - shade / 2 + grain());
        }
    }
    return image.save(path);
}

void bareUpload(bool withMipmaps)
{
    QImage image;
    if (!image.load(path))
        return;
    GLuint name = 0;
    glGenTextures(1, &name);
    glBindTexture(GL_TEXTURE_2D, name);
    if (withMipmaps)
    {
        glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_LINEAR_MIPMAP_LINEAR);
        glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAX_LEVEL, 4);
    }
    glTexImage2D(GL_TEXTURE_2D, 0, GL_RGBA, image.width(), image.height(), 0, GL_BGRA, GL_UNSIGNED_BYTE,
                 image.constBits());
    if (withMipmaps)
        glGenerateMipmap(GL_TEXTURE_2D);
    glFinish();
    glDeleteTextures(1, &name);
}

void loadTexture(benchmark::State& state)
{
    const TextureFileInfo info;
    for (auto _ : state)
    {
        const std::unique_ptr<Texture> texture(LoadTextureFromFile(path, info));
        glFinish();
        if (!texture)
            state.SkipWithError("the texture does not load");
    }
}

void bareLoad(benchmark::State& state)
{
    for (auto _ : state)
        bareUpload(false);
}

void bareLoadWithMipmaps(benchmark::State& state)
{
    for (auto _ : state)
        bareUpload(true);
}

/// With the time of the driver's threads.
void repeatWhole(benchmark::internal::Benchmark* benchmark)
{
    Bench::repeat(benchmark);
    benchmark->Unit(benchmark::kMillisecond)->Repetitions(8)->MeasureProcessCPUTime();
}

BENCHMARK(loadTexture)->Apply(repeatWhole);
BENCHMARK(bareLoad)->Apply(repeatWhole);
BENCHMARK(bareLoadWithMipmaps)->Apply(repeatWhole);

} // namespace

int main(int argc, char** argv)
{
    qputenv("VRK_ENABLE_LOGGING", "0");
    Bench::NoOperationContext context;
    if (!Bench::start(argc, argv, context))
        return 1;
    const QTemporaryDir folder;
    path = folder.filePath(QStringLiteral("picture.png"));
    if (!writePicture())
        return 1;
    Bench::BestTimes times;
    benchmark::RunSpecifiedBenchmarks(&times);
    constexpr int kPixels = kSide * kSide;
    times.printRatio("a pixel, beside decoding and upload", "loadTexture", "bareLoad", kPixels);
    times.printRatio("the same, with mipmaps on both sides", "loadTexture", "bareLoadWithMipmaps", kPixels);
    return 0;
}
