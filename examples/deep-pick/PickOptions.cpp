// SPDX-License-Identifier: MIT
#include "PickOptions.h"

#include <Choices.h>
#include <CommandLine.h>

#include <QCommandLineParser>
#include <QRect>
#include <QRegularExpression>

namespace deeppick
{

using vrkview::ValueReader;

namespace
{

constexpr int kLargestSide = 1 << 15;
constexpr int kMostRoom = 1 << 26;
constexpr float kMostDegrees = 3600.0f;

void describe(QCommandLineParser& parser)
{
    parser.setApplicationDescription(QStringLiteral(
        "Prints every surface under a pixel of a 3D model's picture, front to back, one line each: the object's name,\n"
        "its instance and triangle, then position and normal in world space, texture coordinate, and depth. All\n"
        "surfaces count, also those that face away, are transparent or lie behind others."));
    parser.addPositionalArgument(QStringLiteral("model"),
                                 QStringLiteral("The model's file; without it the built-in scene."),
                                 QStringLiteral("[model]"));
    parser.addOptions({
        {QStringLiteral("pick"), QStringLiteral("The pixel, counted from 0 at the picture's top left."),
         QStringLiteral("x,y")},
        {QStringLiteral("size"), QStringLiteral("The picture's size, 960x640 if not given."), QStringLiteral("WxH")},
        {QStringLiteral("azimuth"), QStringLiteral("Where the eye stands around the model; 0 is in front, on +z."),
         QStringLiteral("degrees")},
        {QStringLiteral("elevation"), QStringLiteral("How far the eye stands above the model, -90 to 90."),
         QStringLiteral("degrees")},
        {QStringLiteral("up"),
         QStringLiteral("The model's upward axis: %1.").arg(vrkview::words(vrkview::kUpAxes, QStringLiteral(" or "))),
         QStringLiteral("axis")},
        {QStringLiteral("check"),
         QStringLiteral("Cast a ray through the pixel on the CPU in double precision too, print what it meets and how "
                        "far that is off, and fail where it is off by more than the rasteriser's grid and the rounding "
                        "of single precision can make.")},
        {{QStringLiteral("o"), QStringLiteral("output")},
         QStringLiteral("A PNG to draw: colours tell how many surfaces lie under each pixel, a mark the one picked."),
         QStringLiteral("file")},
        {QStringLiteral("room"),
         QStringLiteral("Fragments that the buffer has room for at first, 1 to %1. It grows to what is there.")
             .arg(kMostRoom),
         QStringLiteral("count")},
        {{QStringLiteral("h"), QStringLiteral("help")}, QStringLiteral("Show this and end.")},
    });
}

// Digits and a comma; nothing else passes, such as a sign or a blank.
void readPixel(ValueReader& reader, QPoint& value)
{
    static const QRegularExpression pattern(QStringLiteral("^([0-9]{1,7}),([0-9]{1,7})$"));
    const QRegularExpressionMatch match = pattern.match(reader.text("pick"));
    if (!reader.isSet("pick"))
        reader.reject(QStringLiteral("--pick is missing: it names the pixel"));
    else if (!match.hasMatch())
        reader.reject("pick", QStringLiteral("the X,Y of a pixel, such as 480,320"));
    else
        value = {match.captured(1).toInt(), match.captured(2).toInt()};
}

} // namespace

ParsedPickOptions parsePickOptions(const QStringList& arguments)
{
    QCommandLineParser parser;
    describe(parser);
    if (!parser.parse(arguments))
        return {
            ParsedPickOptions::Outcome::Error, {}, parser.errorText().simplified() + QStringLiteral(" See --help.")};
    if (parser.isSet(QStringLiteral("help")))
        return {ParsedPickOptions::Outcome::ShowText, {}, parser.helpText()};

    ParsedPickOptions parsed;
    PickOptions& options = parsed.options;
    ValueReader reader(parser);
    reader.read("size", kLargestSide, "960x640", options.size);
    readPixel(reader, options.pixel);
    reader.read("azimuth", -kMostDegrees, kMostDegrees, options.azimuth);
    reader.read("elevation", -90.0f, 90.0f, options.elevation);
    reader.read("up", vrkview::kUpAxes, options.upAxis);
    reader.read("output", "a file name", options.outputPath);
    reader.read("room", 1, kMostRoom, options.room);
    options.check = parser.isSet(QStringLiteral("check"));

    if (parser.values(QStringLiteral("pick")).size() > 1)
        reader.reject(QStringLiteral("--pick is given more than once"));
    if (!QRect(QPoint(), options.size).contains(options.pixel))
        reader.reject(QStringLiteral("the pixel %1,%2 is outside of the picture, which has %3x%4 pixels")
                          .arg(options.pixel.x())
                          .arg(options.pixel.y())
                          .arg(options.size.width())
                          .arg(options.size.height()));
    const QStringList paths = parser.positionalArguments();
    if (paths.size() > 1)
        reader.reject(QStringLiteral("more than one model is named: '%1' and '%2'").arg(paths[0], paths[1]));
    if (!paths.isEmpty() && paths[0].isEmpty())
        reader.reject(QStringLiteral("the model's file name is empty"));
    if (!paths.isEmpty())
        options.modelPath = paths[0];
    if (!reader.error().isEmpty())
        return {ParsedPickOptions::Outcome::Error, {}, reader.error()};
    return parsed;
}

} // namespace deeppick
