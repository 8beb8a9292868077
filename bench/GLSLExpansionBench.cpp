// SPDX-License-Identifier: MIT
//
// How fast GLSLMacroProcessor::process expands, on shader texts of 1 MB with 10,000 directives and of 10 MB with
// 100,000, beside the preprocessor of glslangValidator (-E) on the same texts. That runs as a child process, which
// writes to the null device; what it takes for a text of one line is subtracted. The last lines give the ratio of
// the speeds, and the time for ten times the text.

#include <VrkGL/GLSLMacroProcessor.h>

#include <QByteArray>
#include <QElapsedTimer>
#include <QFile>
#include <QProcess>
#include <QString>
#include <QTemporaryDir>

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdio>
#include <map>
#include <string>
#include <vector>

namespace
{

using Harrow::Vrk::GLSLMacroProcessor;

constexpr int kIncludeFiles = 16;
constexpr int kBytesPerDirective = 100;

const QTemporaryDir& folder()
{
    static const QTemporaryDir made;
    return made;
}

/// Writes a file into the folder and gives its path.
QString write(const QString& name, const QByteArray& contents)
{
    QFile file(folder().filePath(name));
    if (!file.open(QIODevice::WriteOnly) || file.write(contents) != contents.size())
        qFatal("cannot write %s", qPrintable(file.fileName()));
    return file.fileName();
}

/// GLSL with a directive every 100 bytes, in turn an #include, a #macro and a #define. The #macro, held and not held by
/// turns and now and then a #version, stands in an inactive branch: that makes no difference to process, and the peer,
/// which does not know it, skips it. So a fifth of the directives are to be included and a fifth to be replaced.
const QByteArray& shaderText(int directives)
{
    static std::map<int, QByteArray> texts;
    QByteArray& text = texts[directives];
    for (int i = 0; text.size() < directives * kBytesPerDirective; ++i)
    {
        const QByteArray number = QByteArray::number(i);
        if (i == 0)
            text += "#version 150\n#extension GL_GOOGLE_include_directive : enable";
        else if (i % 5 == 0)
            text += "#include \"part" + QByteArray::number(i % kIncludeFiles) + ".glslh\"";
        else if (i % 5 == 1)
            text += "#if 0"; // passes unchanged here, and costs the peer a branch to skip
        else if (i % 100 == 2)
            text += "#version 330";
        else if (i % 5 == 2)
            text += (i % 2 ? "#macro HELD float f" : "  #macro FREE float f") + number + " = 0.5;";
        else if (i % 5 == 3)
            text += "#endif";
        else
            text += "#define A" + number + " 1";
        text += "\nvec4 f" + number + "(vec4 v) { return v * 0.5; } //";
        while (text.size() < (i + 1) * kBytesPerDirective - 1)
            text += '-';
        text += '\n';
    }
    return text;
}

/// The count of the files' text in an output: every fifth directive but the first is an include.
bool isExpanded(const QByteArray& output, int64_t directives)
{
    return output.count("float included(float x);") == directives / 5 - 1;
}

void ours(benchmark::State& state)
{
    const QByteArray& text = shaderText(int(state.range(0)));
    const QString source = QString::fromUtf8(text);
    GLSLMacroProcessor processor;
    processor.addIncludePath(folder().path());
    processor.addMacro(QStringLiteral("HELD"), QStringLiteral("const float heldValue = 1.0;"));
    processor.addDefine(QStringLiteral("A_DEFINE"), QStringLiteral("1"));
    if (!isExpanded(GLSLMacroProcessor::process(source, &processor).toUtf8(), state.range(0)))
        state.SkipWithError("the includes are not expanded");
    for (auto _ : state)
        benchmark::DoNotOptimize(GLSLMacroProcessor::process(source, &processor));
    state.SetBytesProcessed(int64_t(state.iterations()) * text.size());
}

/// Seconds of one run of glslangValidator -E; its output goes to the null device unless it is asked for.
double peerSeconds(const QString& file, QByteArray* output = nullptr)
{
    QProcess process;
    if (nullptr == output)
        process.setStandardOutputFile(QProcess::nullDevice());
    QElapsedTimer timer;
    timer.start();
    process.start(QStringLiteral("glslangValidator"),
                  {QStringLiteral("-E"), QStringLiteral("-I") + folder().path(), file});
    if (!process.waitForFinished(-1) || process.exitCode() != 0)
        return -1.0;
    const double seconds = double(timer.nsecsElapsed()) * 1e-9;
    if (nullptr != output)
        *output = process.readAllStandardOutput();
    return seconds;
}

/// The least of ten starts, so that no more is subtracted than what every run takes.
double peerStartSeconds()
{
    const QString file = write(QStringLiteral("one_line.vert"), "#version 150\n");
    double least = 1e9;
    for (int i = 0; i < 10; ++i)
        least = std::min(least, peerSeconds(file));
    return least;
}

void glslangValidator(benchmark::State& state)
{
    static const double start = peerStartSeconds();
    const QByteArray& text = shaderText(int(state.range(0)));
    const QString file = write(QStringLiteral("text%1.vert").arg(state.range(0)), text);
    QByteArray output;
    if (start < 0.0 || peerSeconds(file, &output) < 0.0)
        state.SkipWithError("glslangValidator does not run, or does not take the text");
    else if (!isExpanded(output, state.range(0)))
        state.SkipWithError("the includes are not expanded");
    for (auto _ : state)
        state.SetIterationTime(std::max(peerSeconds(file) - start, 1e-9));
    state.SetBytesProcessed(int64_t(state.iterations()) * text.size());
    state.counters["start_ms"] = start * 1e3;
}

BENCHMARK(ours)->Arg(10'000)->Arg(100'000)->Unit(benchmark::kMillisecond);
BENCHMARK(glslangValidator)->Arg(10'000)->Arg(100'000)->Unit(benchmark::kMillisecond)->UseManualTime();

/// The usual report, and a memory of the speeds by function and size.
class Reporter : public benchmark::ConsoleReporter
{
public:
    void ReportRuns(const std::vector<Run>& runs) override
    {
        for (const Run& run : runs)
            if (!run.error_occurred && run.run_type == Run::RT_Iteration)
                bytesPerSecond[{run.run_name.function_name, run.run_name.args}] = run.counters.at("bytes_per_second");
        ConsoleReporter::ReportRuns(runs);
    }

    /// 0 when that one did not run.
    double speed(const std::string& function, const std::string& size) const
    {
        const auto found = bytesPerSecond.find({function, size});
        return found == bytesPerSecond.end() ? 0.0 : found->second;
    }

    std::map<std::pair<std::string, std::string>, double> bytesPerSecond;
};

} // namespace

int main(int argc, char** argv)
{
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv))
        return 1;
    for (int i = 0; i < kIncludeFiles; ++i)
        write(QStringLiteral("part%1.glslh").arg(i), "float included(float x);\n");
    Reporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);

    const std::string peer = "glslangValidator";
    for (const char* size : {"10000", "100000"})
    {
        const double mine = reporter.speed("ours", size);
        const double theirs = reporter.speed(peer, size);
        if (mine > 0.0 && theirs > 0.0)
            std::printf("%6s directives: process %.1f MB/s, glslangValidator -E %.1f MB/s, ratio %.1f : 1\n", size,
                        mine / 1e6, theirs / 1e6, mine / theirs);
    }
    for (const std::string& who : {std::string("ours"), peer})
        if (reporter.speed(who, "100000") > 0.0 && reporter.speed(who, "10000") > 0.0)
            std::printf("%s: ten times the text takes %.1f times as long\n", who.c_str(),
                        10.0 * reporter.speed(who, "10000") / reporter.speed(who, "100000"));
    return 0;
}
