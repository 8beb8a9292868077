// SPDX-License-Identifier: MIT
// vrk-sky: writes the sky of the examples as a Radiance picture.
#include "CommandLine.h"
#include "RadianceFile.h"
#include "SkyImage.h"
#include "Terminal.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QSize>

#include <cstdio>
#include <cstdlib>

namespace
{

using namespace vrkview;

constexpr int kLargestSide = 16384;

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
    QSize size(kSkyWidth, kSkyHeight);
    ValueReader reader(parser);
    reader.read("size", kLargestSide, "1024x512", size);
    if (!reader.error().isEmpty())
        return fail(reader.error());
    if (parser.positionalArguments().size() != 1)
        return fail(QStringLiteral("name one file to write. See --help."));

    const QString path = parser.positionalArguments().constFirst();
    QString error;
    if (!writeRadiance(makeSky(size.width(), size.height()), path, error))
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
