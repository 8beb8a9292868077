// SPDX-License-Identifier: MIT
// LoadTextureFromFile of a KTX file of 4096 by 4096 RGBA pixels with all of its 13 levels, beside the same OpenGL calls
// out of a mapping that is made for them; and recognising 10,000 small files beside opening and mapping them. The first
// is measured on the real driver, whatever GALLIUM_NOOP says: the no-operation driver does not copy.
#include "GLBench.h"

#include "GLFunctions.h"
#include "Texture.h"
#include "TextureFileInfo.h"
#include "TextureIO.h"
#include "TextureLoader.h"

#include <VrkCore/MemoryMappedFile.h>

#include <QByteArray>
#include <QFile>
#include <QList>
#include <QString>
#include <QTemporaryDir>

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <memory>
#include <random>

using namespace Harrow::Vrk;

namespace
{

constexpr quint32 kSide = 4096;
constexpr quint32 kLevels = 13;
constexpr int kSmallFiles = 10000;
constexpr quint32 kSmallSide = 16;

QString bigPath;
QList<QString> smallPaths;
QList<QByteArray> smallNames; // the same as the system has them

// ---- files ---------------------------------------------------------------------------------------------------------

QByteArray word(quint32 value)
{
    return QByteArray(reinterpret_cast<const char*>(&value), sizeof value);
}

/// A square RGBA texture.
QByteArray ktxFile(quint32 side, quint32 levels)
{
    QByteArray file("\xABKTX 11\xBB\r\n\x1A\n", 12);
    for (const quint32 field : {0x04030201u, quint32(GL_UNSIGNED_BYTE), 1u, quint32(GL_RGBA), quint32(GL_RGBA8),
                                quint32(GL_RGBA), side, side, 0u, 0u, 1u, levels, 0u})
        file += word(field);
    std::minstd_rand random(7);
    for (quint32 level = 0; level < levels; ++level, side = std::max(side / 2, 1u))
    {
        file += word(side * side * 4);
        for (quint32 pixel = 0; pixel < side * side; ++pixel)
            file += word(quint32(random()));
    }
    return file;
}

bool write(const QString& path, const QByteArray& contents)
{
    QFile file(path);
    return file.open(QIODevice::WriteOnly) && file.write(contents) == contents.size();
}

bool writeFiles(const QTemporaryDir& folder)
{
    bigPath = folder.filePath(QStringLiteral("big.ktx"));
    if (!write(bigPath, ktxFile(kSide, kLevels)))
        return false;
    const QByteArray contents = ktxFile(kSmallSide, 1);
    for (int i = 0; i < kSmallFiles; ++i)
    {
        smallPaths.append(folder.filePath(QStringLiteral("%1.ktx").arg(i)));
        smallNames.append(QFile::encodeName(smallPaths.last()));
        if (!write(smallPaths.last(), contents))
            return false;
    }
    return true;
}

// ---- the floors ----------------------------------------------------------------------------------------------------

/// A file as the library maps it: privately and for writing.
class Mapping
{
public:
    explicit Mapping(const char* name)
    {
        const int file = open(name, O_RDONLY | O_CLOEXEC);
        struct stat status = {};
        if (file < 0 || fstat(file, &status) != 0)
            return;
        _size = size_t(status.st_size);
        void* const mapped = mmap(nullptr, _size, PROT_READ | PROT_WRITE, MAP_PRIVATE, file, 0);
        if (mapped != MAP_FAILED)
            _start = static_cast<const unsigned char*>(mapped);
        close(file);
    }
    ~Mapping()
    {
        if (_start)
            munmap(const_cast<unsigned char*>(_start), _size);
    }
    Mapping(const Mapping&) = delete;
    Mapping& operator=(const Mapping&) = delete;

    const unsigned char* start() const
    {
        return _start;
    }

private:
    const unsigned char* _start = nullptr;
    size_t _size = 0;
};

/// The name of a texture that holds the big file.
GLuint uploadBare()
{
    const Mapping mapping(QFile::encodeName(bigPath).constData());
    if (!mapping.start())
        return 0;
    GLuint name = 0;
    glGenTextures(1, &name);
    glBindTexture(GL_TEXTURE_2D, name);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_BASE_LEVEL, 0);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAX_LEVEL, kLevels - 1);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_LINEAR_MIPMAP_LINEAR);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_LINEAR);
    glPixelStorei(GL_UNPACK_ALIGNMENT, 4);
    const unsigned char* cursor = mapping.start() + 64;
    for (quint32 level = 0; level < kLevels; ++level)
    {
        const auto side = GLsizei(kSide >> level);
        quint32 size = 0;
        std::memcpy(&size, cursor, sizeof size);
        cursor += sizeof size;
        glTexImage2D(GL_TEXTURE_2D, GLint(level), GL_RGBA8, side, side, 0, GL_RGBA, GL_UNSIGNED_BYTE, cursor);
        cursor += size;
    }
    glBindTexture(GL_TEXTURE_2D, 0);
    return name;
}

TextureFileInfo preprocessed()
{
    TextureFileInfo info;
    info.preprocessed = true;
    return info;
}

// ---- what is measured ----------------------------------------------------------------------------------------------

void ktxLoad(benchmark::State& state)
{
    const TextureFileInfo info = preprocessed();
    for (auto _ : state)
    {
        const std::unique_ptr<Texture> texture(LoadTextureFromFile(bigPath, info));
        glFinish();
        if (!texture)
            state.SkipWithError("the texture does not load");
    }
}

void bareUpload(benchmark::State& state)
{
    for (auto _ : state)
    {
        const GLuint name = uploadBare();
        glFinish();
        glDeleteTextures(1, &name);
    }
}

void recognise(benchmark::State& state)
{
    for (auto _ : state)
    {
        for (const QString& path : smallPaths)
        {
            const std::unique_ptr<TextureLoader> loader(IdentifyTextureFromFile(path));
            if (!loader || !loader->valid())
                state.SkipWithError("a file is not recognised");
        }
    }
}

/// What the library opens files with, up to the first bytes.
void openMemory(benchmark::State& state)
{
    for (auto _ : state)
    {
        for (const QString& path : smallPaths)
        {
            MemoryMappedFile memory(path);
            const void* const start = memory.get(0, 64);
            if (!start || std::memcmp(start, "\xABKTX", 4) != 0)
                state.SkipWithError("a file cannot be read");
        }
    }
}

void openAndMap(benchmark::State& state)
{
    for (auto _ : state)
    {
        for (const QByteArray& name : smallNames)
            benchmark::DoNotOptimize(Mapping(name.constData()).start());
    }
}

/// With the time of the driver's threads, and of the system.
void repeatWhole(benchmark::internal::Benchmark* benchmark)
{
    Bench::repeat(benchmark);
    benchmark->Unit(benchmark::kMillisecond)->MeasureProcessCPUTime();
}

BENCHMARK(ktxLoad)->Apply(repeatWhole);
BENCHMARK(bareUpload)->Apply(repeatWhole);
BENCHMARK(recognise)->Apply(repeatWhole);
BENCHMARK(openMemory)->Apply(repeatWhole);
BENCHMARK(openAndMap)->Apply(repeatWhole);

/// Whether both sides put the same texels into a level.
bool areLevelsEqual(Texture& ours, GLuint theirs, quint32 level)
{
    const size_t bytes = size_t(kSide >> level) * (kSide >> level) * 4;
    const auto mine = std::make_unique<unsigned char[]>(bytes);
    const auto bare = std::make_unique<unsigned char[]>(bytes);
    ours.bind();
    glGetTexImage(GL_TEXTURE_2D, GLint(level), GL_RGBA, GL_UNSIGNED_BYTE, mine.get());
    ours.unbind();
    glBindTexture(GL_TEXTURE_2D, theirs);
    glGetTexImage(GL_TEXTURE_2D, GLint(level), GL_RGBA, GL_UNSIGNED_BYTE, bare.get());
    glBindTexture(GL_TEXTURE_2D, 0);
    return std::memcmp(mine.get(), bare.get(), bytes) == 0;
}

bool areSidesEqual()
{
    const std::unique_ptr<Texture> ours(LoadTextureFromFile(bigPath, preprocessed()));
    const GLuint theirs = uploadBare();
    bool isEqual = ours && theirs != 0;
    for (quint32 level = 0; isEqual && level < kLevels; ++level)
        isEqual = areLevelsEqual(*ours, theirs, level);
    glDeleteTextures(1, &theirs);
    return isEqual && glGetError() == GL_NO_ERROR;
}

} // namespace

int main(int argc, char** argv)
{
    qputenv("VRK_ENABLE_LOGGING", "0");
    qputenv("GALLIUM_NOOP", "0");
    Bench::NoOperationContext context;
    if (!Bench::start(argc, argv, context))
        return 1;
    const QTemporaryDir folder;
    if (!writeFiles(folder))
        return 1;
    if (!areSidesEqual())
    {
        std::fprintf(stderr, "the two textures differ\n");
        return 1;
    }
    Bench::BestTimes times;
    benchmark::RunSpecifiedBenchmarks(&times);
    times.printRatio("a pixel of the base level, beside bare calls", "ktxLoad", "bareUpload", int(kSide * kSide));
    times.printRatio("a file, beside open, fstat, mmap, close", "recognise", "openAndMap", kSmallFiles);
    times.printRatio("the same, beside MemoryMappedFile alone", "recognise", "openMemory", kSmallFiles);
    return 0;
}
