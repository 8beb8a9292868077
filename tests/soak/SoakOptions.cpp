// SPDX-License-Identifier: MIT
#include "SoakOptions.h"

#include "Choices.h"
#include "CommandLine.h"

#include <QCommandLineParser>

#include <limits>

namespace vrksoak
{

using vrkview::words;

namespace
{

constexpr int kMost = std::numeric_limits<int>::max();

void addOptions(QCommandLineParser& parser)
{
    parser.addOptions({
        {"seconds", "No episode begins after this many seconds, if there are enough to judge.", "N", "60"},
        {"seed", "What chance goes by.", "S", "1"},
        {"manager", QStringLiteral("%1; by chance unless named.").arg(words(vrkview::kManagers)), "KIND"},
        {"frames", "Frames from one checkpoint to the next.", "N", "100"},
        {"first-episode", "The episode to begin with.", "N", "0"},
        {"report", "Checkpoints from one line to the next.", "N", "1"},
        {"no-memory", "Do not judge memory, as under a sanitizer."},
        {"bare", "The driver alone, by bare OpenGL, to compare with."},
        {"plant", QStringLiteral("A leak or fault to be found: %1.").arg(words(kPlants)), "KIND"},
    });
}

} // namespace

std::optional<SoakOptions> parseSoakOptions(const QStringList& arguments, QString& error)
{
    QCommandLineParser parser;
    addOptions(parser);
    if (!parser.parse(arguments))
    {
        error = parser.errorText();
        return std::nullopt;
    }
    SoakOptions options;
    options.judgesMemory = !parser.isSet("no-memory");
    options.bare = parser.isSet("bare");
    vrkview::ValueReader reader(parser);
    reader.read("seconds", 1, kMost, options.seconds);
    reader.read("seed", 0, kMost, options.seed);
    reader.read("manager", vrkview::kManagers, options.manager);
    reader.read("frames", 1, kMost, options.frames);
    reader.read("first-episode", 0, kMost, options.firstEpisode);
    reader.read("report", 1, kMost, options.reportEvery);
    reader.read("plant", kPlants, options.plant);
    if (!parser.positionalArguments().isEmpty())
        reader.reject(QStringLiteral("'%1' is no option").arg(parser.positionalArguments().first()));
    if (options.bare && options.plant != Plant::None)
        reader.reject(QStringLiteral("--bare leaves nothing to plant in"));
    error = reader.error();
    return error.isEmpty() ? std::optional(options) : std::nullopt;
}

QString soakUsage()
{
    QCommandLineParser parser;
    addOptions(parser);
    return parser.helpText();
}

} // namespace vrksoak
