// SPDX-License-Identifier: MIT
#pragma once

/// \file
/// What the benchmarks of OpenGL calls share: a context on Mesa's no-operation driver, so that the processor's share
/// alone is measured, and a report that keeps each benchmark's best time for the ratios at the end.

#include "GLFunctions.h"
#include "GLUtilities.h"
#include "support/HeadlessContext.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace Harrow::Vrk::Bench
{

/// Made first of all: the driver reads its environment once.
class NoOperationContext
{
public:
    /// Makes it, current and with the functions loaded.
    bool create()
    {
        setenv("GALLIUM_NOOP", "1", 0);
        _context = std::make_unique<Test::HeadlessContext>();
        return _context->makeCurrent() && initializeGLFunctions();
    }

private:
    std::unique_ptr<Test::HeadlessContext> _context;
};

constexpr char kBest[] = "best";

/// The usual report, and a memory of the best repetition of each benchmark.
class BestTimes : public benchmark::ConsoleReporter
{
public:
    void ReportRuns(const std::vector<Run>& runs) override
    {
        for (const Run& run : runs)
        {
            if (!run.error_occurred && run.aggregate_name == kBest)
                _seconds[run.run_name.function_name] = run.cpu_accumulated_time / double(run.iterations);
        }
        ConsoleReporter::ReportRuns(runs);
    }

    /// One line with both times, `count` operations each, and how many times the second one the first takes.
    void printRatio(const char* what, const std::string& ours, const std::string& floor, int count) const
    {
        printRatio(what, ours, count, floor, count);
    }

    /// The same where the two do different numbers of operations: the ratio is that of one operation.
    void printRatio(const char* what, const std::string& ours, int ourCount, const std::string& floor,
                    int floorCount) const
    {
        const auto mine = _seconds.find(ours);
        const auto theirs = _seconds.find(floor);
        if (mine == _seconds.end() || theirs == _seconds.end())
            return;
        const double one = mine->second / ourCount;
        const double other = theirs->second / floorCount;
        std::printf("%-46s %7.1f ns beside %7.1f ns: ratio %.2f\n", what, one * 1e9, other * 1e9, one / other);
    }

private:
    std::map<std::string, double> _seconds;
};

/// Each side of a ratio runs many short times, in turn with the other, and its best one counts: what else runs on the
/// machine comes and goes.
inline void repeat(benchmark::internal::Benchmark* benchmark)
{
    benchmark->Unit(benchmark::kMicrosecond)
        ->MinTime(0.05)
        ->Repetitions(20)
        ->DisplayAggregatesOnly()
        ->ComputeStatistics(kBest, [](const std::vector<double>& times)
                            { return *std::min_element(times.begin(), times.end()); });
}

inline bool readArguments(int argc, char** argv)
{
    std::vector<char*> arguments(argv, argv + argc);
    static char interleaved[] = "--benchmark_enable_random_interleaving=true";
    arguments.insert(arguments.begin() + 1, interleaved);
    int count = int(arguments.size());
    benchmark::Initialize(&count, arguments.data());
    return !benchmark::ReportUnrecognizedArguments(count, arguments.data());
}

/// Reads the arguments, makes the context and tells the driver's name. False, after a line that says why, where the
/// program has to end.
inline bool start(int argc, char** argv, NoOperationContext& context)
{
    if (!readArguments(argc, argv))
        return false;
    if (!context.create())
    {
        std::fprintf(stderr, "no OpenGL context\n");
        return false;
    }
    std::printf("driver: %s\n", reinterpret_cast<const char*>(glGetString(GL_RENDERER)));
    return true;
}

} // namespace Harrow::Vrk::Bench
