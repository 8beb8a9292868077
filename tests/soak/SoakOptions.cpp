// SPDX-License-Identifier: MIT
#include "SoakOptions.h"

#include <QCommandLineParser>

#include <iterator>

namespace vrksoak
{

using vrkview::ManagerKind;

namespace
{

struct NamedManager
{
    const char* name;
    ManagerKind kind;
};
constexpr NamedManager kManagers[] = {{"sampler", ManagerKind::Sampler},
                                      {"array2d", ManagerKind::Array2D},
                                      {"array2d-bindless", ManagerKind::Array2DBindless},
                                      {"bindless", ManagerKind::Bindless}};

void addOptions(QCommandLineParser& parser)
{
    parser.addOptions({
        {"seconds", "No episode begins after this many seconds, if there are enough to judge.", "N", "60"},
        {"seed", "What chance goes by.", "S", "1"},
        {"manager", "sampler, array2d, array2d-bindless or bindless; by chance unless named.", "KIND"},
        {"frames", "Frames from one checkpoint to the next.", "N", "100"},
        {"first-episode", "The episode to begin with.", "N", "0"},
        {"report", "Checkpoints from one line to the next.", "N", "1"},
        {"no-memory", "Do not judge memory, as under a sanitizer."},
        {"bare", "The driver alone, by bare OpenGL, to compare with."},
        {"plant", QStringLiteral("A leak or fault to be found: %1.").arg(plantNames().join(QStringLiteral(", "))),
         "KIND"},
    });
}

bool number(const QCommandLineParser& parser, const char* name, int least, int& value, QString& error)
{
    bool isNumber = false;
    value = parser.value(QLatin1String(name)).toInt(&isNumber);
    if (isNumber && value >= least)
        return true;
    error = QStringLiteral("--%1 wants a number of at least %2").arg(QLatin1String(name)).arg(least);
    return false;
}

bool readManager(const QCommandLineParser& parser, SoakOptions& options, QString& error)
{
    if (!parser.isSet("manager"))
        return true;
    for (const NamedManager& named : kManagers)
        if (parser.value("manager") == QLatin1String(named.name))
            options.manager = named.kind;
    if (!options.manager)
        error = QStringLiteral("there is no manager '%1'").arg(parser.value("manager"));
    return options.manager.has_value();
}

bool readPlant(const QCommandLineParser& parser, SoakOptions& options, QString& error)
{
    if (!parser.isSet("plant"))
        return true;
    const std::optional<Plant> plant = plantOf(parser.value("plant"));
    options.plant = plant.value_or(Plant::None);
    if (!plant)
        error = QStringLiteral("nothing to plant is called '%1'").arg(parser.value("plant"));
    return plant.has_value();
}

} // namespace

std::optional<SoakOptions> parseSoakOptions(const QStringList& arguments, QString& error)
{
    QCommandLineParser parser;
    addOptions(parser);
    if (!parser.parse(arguments) || !parser.positionalArguments().isEmpty())
    {
        error = parser.errorText().isEmpty() ? QStringLiteral("there is nothing to be named") : parser.errorText();
        return std::nullopt;
    }
    SoakOptions options;
    bool isSeed = false;
    options.seed = parser.value("seed").toULongLong(&isSeed);
    if (!isSeed)
        error = QStringLiteral("--seed wants a number");
    options.judgesMemory = !parser.isSet("no-memory");
    options.bare = parser.isSet("bare");
    if (!isSeed || !number(parser, "seconds", 1, options.seconds, error) ||
        !number(parser, "frames", 1, options.frames, error) ||
        !number(parser, "first-episode", 0, options.firstEpisode, error) ||
        !number(parser, "report", 1, options.reportEvery, error) || !readManager(parser, options, error) ||
        !readPlant(parser, options, error))
        return std::nullopt;
    return options;
}

QString soakUsage()
{
    QCommandLineParser parser;
    addOptions(parser);
    return parser.helpText();
}

} // namespace vrksoak
