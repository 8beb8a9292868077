// SPDX-License-Identifier: MIT
#include "EnvmapOptions.h"

#include <CommandLine.h>

#include <QCommandLineParser>

namespace envmap
{

using namespace Harrow::Vrk;
using vrkview::Choice;
using vrkview::ValueReader;
using vrkview::words;

namespace
{

constexpr int kLargestFace = 4096;
constexpr int kLargestSide = 16384;
constexpr int kMostSamples = 1 << 20;
constexpr int kMostLayers = 64;
constexpr float kMostStops = 24.0f;

constexpr Choice<Layout> kLayouts[] = {
    {"lat-long", Layout::LatLong},
    {"cross", Layout::Cross},
    {"linear", Layout::Linear},
    {"sphere", Layout::Sphere},
};

constexpr Choice<ShadingModel> kModels[] = {
    {"blinn-phong", SHADING_TRADITIONAL},       {"ashikhmin-shirley", SHADING_ENERY_CONSERVING},
    {"ggx", SHADING_PHYSICALLY_BASED},          {"lambert", SHADING_LAMBERTIAN_DIFFUSE},
    {"oren-nayar", SHADING_OREN_NAYAR_DIFFUSE},
};

constexpr Choice<FileFormat> kFormats[] = {
    {"hdr", FileFormat::Hdr},
    {"png", FileFormat::Png},
};

void describe(QCommandLineParser& parser)
{
    const QString orWord = QStringLiteral(" or ");
    parser.setApplicationDescription(QStringLiteral(
        "Makes the maps that image-based lighting wants of a picture of an environment: a cube map, its levels\n"
        "filtered for rougher and rougher surfaces, and the table of the surfaces' response. Prints the paths of the\n"
        "files: a cube map is written as a row of its faces (+x -x +y -y +z -z), a level a file."));
    parser.addPositionalArgument(QStringLiteral("image"),
                                 QStringLiteral("The picture: Radiance HDR, KTX, ASTC, or what Qt reads."),
                                 QStringLiteral("[image]"));
    parser.addOptions({
        {{QStringLiteral("o"), QStringLiteral("output")},
         QStringLiteral("The folder for the files, made if it is not there; the current one if not given."),
         QStringLiteral("folder")},
        {QStringLiteral("layout"),
         QStringLiteral("How the environment lies in the picture: %1; by the ratio of its sides if not given.")
             .arg(words(kLayouts, orWord)),
         QStringLiteral("layout")},
        {QStringLiteral("model"),
         QStringLiteral("The shading model: %1; ggx if not given.").arg(words(kModels, orWord)),
         QStringLiteral("model")},
        {QStringLiteral("size"), QStringLiteral("Side of a face of the filtered cube map, 128 if not given."),
         QStringLiteral("texels")},
        {QStringLiteral("samples"), QStringLiteral("Directions that are taken for each texel, 256 if not given."),
         QStringLiteral("count")},
        {QStringLiteral("lat-long"),
         QStringLiteral("Filter into a map of this size by longitude and latitude, in place of a cube map."),
         QStringLiteral("WxH")},
        {QStringLiteral("every-texel"),
         QStringLiteral("With --lat-long and a diffuse model: sum up all texels of the picture in place of samples. "
                        "Takes long.")},
        {QStringLiteral("blur"), QStringLiteral("Also blur the cube map in that many steps."), QStringLiteral("count")},
        {QStringLiteral("ndotl"),
         QStringLiteral("Also filter the cube map by rising powers of the cosine, in that many steps."),
         QStringLiteral("count")},
        {QStringLiteral("format"),
         QStringLiteral("Of the maps: %1; hdr if not given. A png holds light up to 1, as sRGB.")
             .arg(words(kFormats, orWord)),
         QStringLiteral("format")},
        {QStringLiteral("exposure"), QStringLiteral("Brighten pngs and the sheet by so many stops."),
         QStringLiteral("stops")},
        {QStringLiteral("brdf"),
         QStringLiteral("Also write the table of the model's response as a png of 16 bits a channel: N.V from left to "
                        "right, roughness from the lower edge up and in blue.")},
        {QStringLiteral("compare"),
         QStringLiteral("Tell how far each level is from a reference that the CPU integrates in double precision.")},
        {QStringLiteral("sheet"), QStringLiteral("Also draw all of it on one sheet, a PNG."), QStringLiteral("file")},
        {{QStringLiteral("h"), QStringLiteral("help")}, QStringLiteral("Show this and end.")},
        {{QStringLiteral("v"), QStringLiteral("version")}, QStringLiteral("Show the version and end.")},
    });
}

// Why the options do not go together, or an empty string.
QString contradiction(const Options& options, const ValueReader& reader)
{
    const bool isDiffuse = options.model >= SHADING_DIFFUSE_START_INDEX;
    if (options.everyTexel && (options.latLong.isEmpty() || !isDiffuse))
        return QStringLiteral("--every-texel wants --lat-long and a diffuse model");
    if (options.everyTexel && reader.isSet("samples"))
        return QStringLiteral("--every-texel takes no --samples");
    if (!options.latLong.isEmpty() && reader.isSet("size"))
        return QStringLiteral("--lat-long and --size exclude each other");
    if (!options.imagePath.isEmpty())
        return {};
    if (!options.table)
        return QStringLiteral("name a picture of an environment, or ask for --brdf. See --help.");
    for (const char* name : {"layout", "lat-long", "blur", "ndotl", "compare", "sheet"})
        if (reader.isSet(name))
            return QStringLiteral("--%1 wants a picture of an environment").arg(QLatin1String(name));
    return {};
}

ParsedOptions failure(const QString& text)
{
    return {ParsedOptions::Outcome::Error, {}, text};
}

} // namespace

QString layoutName(Layout layout)
{
    for (const Choice<Layout>& choice : kLayouts)
        if (choice.value == layout)
            return QLatin1String(choice.word);
    return {};
}

ParsedOptions parseOptions(const QStringList& arguments, const QString& version)
{
    QCommandLineParser parser;
    describe(parser);
    if (!parser.parse(arguments))
        return failure(parser.errorText().simplified() + QStringLiteral(" See --help."));
    if (parser.isSet(QStringLiteral("help")))
        return {ParsedOptions::Outcome::ShowText, {}, parser.helpText()};
    if (parser.isSet(QStringLiteral("version")))
        return {ParsedOptions::Outcome::ShowText, {}, QStringLiteral("vrk-envmap %1\n").arg(version)};
    if (parser.positionalArguments().size() > 1)
        return failure(QStringLiteral("name one picture only. See --help."));

    ParsedOptions parsed;
    Options& options = parsed.options;
    ValueReader reader(parser);
    if (!parser.positionalArguments().isEmpty())
        options.imagePath = parser.positionalArguments().constFirst();
    reader.read("output", "a folder", options.outputFolder);
    reader.read("layout", kLayouts, options.layout);
    reader.read("model", kModels, options.model);
    if (reader.isSet("model"))
        options.modelName = reader.text("model");
    reader.read("size", 1, kLargestFace, options.size);
    reader.read("samples", 1, kMostSamples, options.samples);
    reader.read("lat-long", kLargestSide, "512x256", options.latLong);
    options.everyTexel = reader.isSet("every-texel");
    reader.read("blur", 1, kMostLayers, options.blurLayers);
    reader.read("ndotl", 1, kMostLayers, options.ndotlLayers);
    reader.read("format", kFormats, options.format);
    reader.read("exposure", -kMostStops, kMostStops, options.exposure);
    options.table = reader.isSet("brdf");
    options.compare = reader.isSet("compare");
    reader.read("sheet", "a file name", options.sheetPath);
    if (!reader.error().isEmpty())
        return failure(reader.error());
    const QString fault = contradiction(options, reader);
    return fault.isEmpty() ? parsed : failure(fault);
}

} // namespace envmap
