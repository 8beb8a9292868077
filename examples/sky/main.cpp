// SPDX-License-Identifier: MIT
// vrk-sky: writes the sky of the examples as a Radiance picture.
#include "RadianceFile.h"
#include "SkyImage.h"
#include "Terminal.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QRegularExpression>

#include <cstdio>
#include <cstdlib>

namespace
{

using namespace vrkview;

constexpr int kLargestSide = 16384;

bool readSize(const QString& text, int& width, int& height)
{
    static const QRegularExpression pattern(QStringLiteral("^([0-9]{1,5})x([0-9]{1,5})$"));
    const QRegularExpressionMatch match = pattern.match(text);
    width = match.captured(1).toInt();
    height = match.captured(2).toInt();
    return width >= 1 && height >= 1 && width <= kLargestSide && height <= kLargestSide;
}

int run(const QStringList& arguments)
{
    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral(
        "Writes a late morning's sky as a Radiance picture by longitude and latitude, without the sun's disk."));
    parser.addPositionalArgument(QStringLiteral("file"), QStringLiteral("The picture, a .hdr."));
    parser.addOptions({
        {QStringLiteral("size"), QStringLiteral("Its size, %1x%2 if not given.").arg(kSkyWidth).arg(kSkyHeight),
         QStringLiteral("WxH")},
        {{QStringLiteral("h"), QStringLiteral("help")}, QStringLiteral("Show this and end.")},
    });
    if (!parser.parse(arguments))
        return fail(parser.errorText().simplified() + QStringLiteral(" See --help."));
    if (parser.isSet(QStringLiteral("help")))
    {
        std::fputs(qUtf8Printable(parser.helpText()), stdout);
        return EXIT_SUCCESS;
    }
    int width = kSkyWidth;
    int height = kSkyHeight;
    const QString size = parser.value(QStringLiteral("size"));
    if (parser.isSet(QStringLiteral("size")) && !readSize(size, width, height))
        return fail(QStringLiteral("--size '%1' is not WIDTHxHEIGHT in pixels, such as 1024x512").arg(size));
    if (parser.positionalArguments().size() != 1)
        return fail(QStringLiteral("name one file to write. See --help."));

    const QString path = parser.positionalArguments().constFirst();
    QString error;
    if (!writeRadiance(makeSky(width, height), path, error))
        return fail(QStringLiteral("cannot write '%1': %2").arg(path, error));
    std::printf("%s\n", qUtf8Printable(path));
    return EXIT_SUCCESS;
}

} // namespace

int main(int argc, char** argv)
{
    const QCoreApplication application(argc, argv);
    setProgramName("vrk-sky");
    return run(QCoreApplication::arguments());
}
