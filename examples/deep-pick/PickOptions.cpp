// SPDX-License-Identifier: MIT
#include "PickOptions.h"

#include <QCommandLineParser>
#include <QRegularExpression>

#include <cmath>

namespace deeppick
{

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
        {QStringLiteral("up"), QStringLiteral("The model's upward axis: y or z."), QStringLiteral("axis")},
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

/// Two whole numbers with `separator` between them. Nothing else passes, such as a sign or a blank.
bool readPair(const QString& text, QChar separator, int& first, int& second)
{
    static const QRegularExpression pattern(QStringLiteral("^([0-9]{1,7})([x,])([0-9]{1,7})$"));
    const QRegularExpressionMatch match = pattern.match(text);
    if (!match.hasMatch() || match.captured(2) != separator)
        return false;
    first = match.captured(1).toInt();
    second = match.captured(3).toInt();
    return true;
}

// Reads values out of a parser; the first value that is wrong leaves its message in `error`.
class ValueReader
{
public:
    explicit ValueReader(const QCommandLineParser& parser) : _parser(parser) {}

    void read(const char* name, float lowest, float highest, float& value)
    {
        bool isNumber = false;
        const float number = text(name).toFloat(&isNumber);
        if (isGiven(name) && (!isNumber || !std::isfinite(number) || number < lowest || number > highest))
            reject(name, QStringLiteral("a number from %1 to %2").arg(lowest).arg(highest));
        else if (isGiven(name))
            value = number;
    }

    void read(const char* name, int lowest, int highest, int& value)
    {
        bool isNumber = false;
        const int number = text(name).toInt(&isNumber);
        if (isGiven(name) && (!isNumber || number < lowest || number > highest))
            reject(name, QStringLiteral("a whole number from %1 to %2").arg(lowest).arg(highest));
        else if (isGiven(name))
            value = number;
    }

    void read(const char* name, QSize& value)
    {
        int width = 0;
        int height = 0;
        if (isGiven(name) && (!readPair(text(name), QLatin1Char('x'), width, height) || width == 0 || height == 0 ||
                              width > kLargestSide || height > kLargestSide))
            reject(name, QStringLiteral("WIDTHxHEIGHT in pixels, such as 960x640"));
        else if (isGiven(name))
            value = {width, height};
    }

    void read(const char* name, QPoint& value)
    {
        int x = 0;
        int y = 0;
        if (!isGiven(name))
            reject(QStringLiteral("--%1 is missing: it names the pixel").arg(QLatin1String(name)));
        else if (!readPair(text(name), QLatin1Char(','), x, y))
            reject(name, QStringLiteral("the X,Y of a pixel, such as 480,320"));
        else
            value = {x, y};
    }

    void read(const char* name, vrkview::UpAxis& value)
    {
        if (!isGiven(name))
            return;
        if (text(name) != QLatin1String("y") && text(name) != QLatin1String("z"))
            reject(name, QStringLiteral("y or z"));
        else
            value = text(name) == QLatin1String("z") ? vrkview::UpAxis::Z : vrkview::UpAxis::Y;
    }

    void read(const char* name, QString& value)
    {
        value = text(name);
        if (isGiven(name) && value.isEmpty())
            reject(name, QStringLiteral("a file name"));
    }

    void reject(const QString& error)
    {
        if (_error.isEmpty())
            _error = error;
    }

    const QString& error() const
    {
        return _error;
    }

private:
    bool isGiven(const char* name) const
    {
        return _parser.isSet(QLatin1String(name));
    }

    QString text(const char* name) const
    {
        return _parser.value(QLatin1String(name));
    }

    void reject(const char* name, const QString& wanted)
    {
        reject(QStringLiteral("--%1 '%2' is not %3").arg(QLatin1String(name), text(name), wanted));
    }

    const QCommandLineParser& _parser;
    QString _error;
};

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
    reader.read("size", options.size);
    reader.read("pick", options.pixel);
    reader.read("azimuth", -kMostDegrees, kMostDegrees, options.azimuth);
    reader.read("elevation", -90.0f, 90.0f, options.elevation);
    reader.read("up", options.upAxis);
    reader.read("output", options.outputPath);
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
