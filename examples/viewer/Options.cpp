// SPDX-License-Identifier: MIT
#include "Options.h"

#include "Choices.h"
#include "CommandLine.h"
#include "Crowd.h"
#include "TextureWall.h"

#include <QCommandLineParser>

namespace vrkview
{

namespace
{

constexpr int kLargestSide = 1 << 20; // beyond any driver; keeps products of sides in range
constexpr int kMostSamples = 64;
constexpr int kMostFrames = 1000000;
constexpr int kMostLevel = 30;

constexpr Choice<LightSet> kLightSets[] = {
    {"all", LightSet::All},
    {"sun", LightSet::Sun},
    {"spot", LightSet::Spot},
    {"point", LightSet::Point},
};

void readLevel(ValueReader& reader, std::optional<int>& value)
{
    if (!reader.isSet("level"))
        return;
    const QString text = reader.text("level");
    bool isNumber = false;
    const int number = text.toInt(&isNumber);
    if (text == QLatin1String("all"))
        value.reset();
    else if (isNumber && number >= 0 && number <= kMostLevel)
        value = number;
    else
        reader.reject("level", QStringLiteral("a whole number from 0 to %1, or all").arg(kMostLevel));
}

void readLights(ValueReader& reader, LightSettings& value)
{
    if (!reader.isSet("lights"))
        return;
    bool isNumber = false;
    const int number = reader.text("lights").toInt(&isNumber);
    if (isNumber && number >= 1 && number <= kMostLights)
    {
        value.set = LightSet::Ring;
        value.ringCount = number;
    }
    else if (const std::optional<LightSet> set = chosen(kLightSets, reader.text("lights")))
        value.set = *set;
    else
        reader.reject(
            "lights",
            QStringLiteral("one of %1, or a whole number from 1 to %2").arg(words(kLightSets)).arg(kMostLights));
}

void describe(QCommandLineParser& parser)
{
    parser.setApplicationDescription(QStringLiteral(
        "Draws a 3D model (glTF, OBJ, PLY, STL and whatever else Assimp reads) into a picture or a window.\n"
        "Prints the path of the picture. In the window: drag orbits, wheel zooms, right or middle drag pans,\n"
        "H lists the keys, Escape closes."));
    parser.addPositionalArgument(QStringLiteral("model"),
                                 QStringLiteral("The model's file; without it the built-in scene."),
                                 QStringLiteral("[model]"));

    QCommandLineOption frames(QStringLiteral("frames"), QString(), QStringLiteral("count"));
    frames.setFlags(QCommandLineOption::HiddenFromHelp);
    QCommandLineOption press(QStringLiteral("press"), QString(), QStringLiteral("keys"));
    press.setFlags(QCommandLineOption::HiddenFromHelp);
    parser.addOptions({
        {{QStringLiteral("o"), QStringLiteral("output")},
         QStringLiteral("The picture, a PNG; vrkview.png in the current folder if not given."),
         QStringLiteral("file")},
        {QStringLiteral("size"), QStringLiteral("The picture's or the window's size, 1280x720 if not given."),
         QStringLiteral("WxH")},
        {QStringLiteral("window"), QStringLiteral("Open a window instead of drawing a picture.")},
        {QStringLiteral("builtin"), QStringLiteral("Draw the built-in scene.")},
        {QStringLiteral("crowd"),
         QStringLiteral("Draw a crowd of that many moving objects, 1 to %1.").arg(kLargestCrowd),
         QStringLiteral("count")},
        {QStringLiteral("textures"),
         QStringLiteral("Draw a wall of that many different textures, 1 to %1, by default with --manager array2d.")
             .arg(kLargestWall),
         QStringLiteral("count")},
        {QStringLiteral("streamers"), QStringLiteral("Draw a wall of screens whose textures change in each frame.")},
        {QStringLiteral("texture"),
         QStringLiteral("Show a texture file (KTX, Radiance HDR, ASTC, or what Qt reads), a cube map as a cross."),
         QStringLiteral("file")},
        {QStringLiteral("level"), QStringLiteral("The level of the texture to show, 0 if not given, or all."),
         QStringLiteral("number")},
        {QStringLiteral("exposure"),
         QStringLiteral("Brighten the environment, also one that the window's key E switches on, or what a texture "
                        "holds as light, by so many stops, %1 to %2.")
             .arg(-kMostStops)
             .arg(kMostStops),
         QStringLiteral("stops")},
        {QStringLiteral("camera"), QStringLiteral("Look through a camera of the model's file, by name or number."),
         QStringLiteral("name")},
        {QStringLiteral("azimuth"), QStringLiteral("Where the eye stands around the model; 0 is in front, on +z."),
         QStringLiteral("degrees")},
        {QStringLiteral("elevation"), QStringLiteral("How far the eye stands above the model, -90 to 90."),
         QStringLiteral("degrees")},
        {QStringLiteral("up"),
         QStringLiteral("The model's upward axis: %1.").arg(words(kUpAxes, QStringLiteral(" or "))),
         QStringLiteral("axis")},
        {QStringLiteral("samples"),
         QStringLiteral("Samples per pixel against jagged edges, 1 to %1.").arg(kMostSamples), QStringLiteral("count")},
        {QStringLiteral("aa"),
         QStringLiteral(
             "What smooths the edges of the finished picture, by default with one sample per pixel: %1; smaa for "
             "the built-in scene.")
             .arg(words(kAntiAliasingKinds)),
         QStringLiteral("how")},
        {QStringLiteral("draw-id"),
         QStringLiteral("How a draw's number reaches the shader: %1.").arg(words(kDrawIdCarriers)),
         QStringLiteral("how")},
        {QStringLiteral("carrier"),
         QStringLiteral("How the records of objects and materials reach the shader: %1.").arg(words(kRecordCarriers)),
         QStringLiteral("how")},
        {QStringLiteral("manager"),
         QStringLiteral("How textures reach the shader: %1; array2d for the built-in scene.").arg(words(kManagers)),
         QStringLiteral("how")},
        {QStringLiteral("env"),
         QStringLiteral("Light the scene by a picture of what is around it, by latitude and longitude."),
         QStringLiteral("file")},
        {QStringLiteral("no-env"), QStringLiteral("Draw the built-in scene without its sky.")},
        {QStringLiteral("specular"),
         QStringLiteral("How surfaces mirror what is around: %1.").arg(words(kSpecularModels)),
         QStringLiteral("model")},
        {QStringLiteral("diffuse"),
         QStringLiteral("How they scatter it: %1.").arg(words(kDiffuseModels, QStringLiteral(" or "))),
         QStringLiteral("model")},
        {QStringLiteral("shadows"),
         QStringLiteral("Light the scene with lights that cast shadows: the model's file's, or where it has none the "
                        "viewer's own.")},
        {QStringLiteral("no-shadows"), QStringLiteral("Light the scene with one light beside the camera.")},
        {QStringLiteral("lights"),
         QStringLiteral("Which lights cast shadows: %1, or that many spots around, 1 to %2.")
             .arg(words(kLightSets))
             .arg(kMostLights),
         QStringLiteral("which")},
        {QStringLiteral("csm"),
         QStringLiteral("Shadow maps that the sun has for near and far, 1 to %1; 4 if not given.").arg(kMostCascades),
         QStringLiteral("count")},
        {QStringLiteral("shadow-maps"),
         QStringLiteral("What shadow maps hold: %1.").arg(words(kShadowMapKinds, QStringLiteral(" or "))),
         QStringLiteral("kind")},
        {QStringLiteral("debug"), QStringLiteral("What to draw in place of the scene: %1.").arg(words(kDebugViews)),
         QStringLiteral("what")},
        {QStringLiteral("gizmos"), QStringLiteral("Draw a grid, the axes and where the lights stand.")},
        {QStringLiteral("stats"), QStringLiteral("Tell what a frame costs: counts, memory, time for each phase.")},
        frames,
        press,
        {{QStringLiteral("h"), QStringLiteral("help")}, QStringLiteral("Show this and end.")},
        {{QStringLiteral("v"), QStringLiteral("version")}, QStringLiteral("Show the version and end.")},
    });
}

void readValues(ValueReader& reader, Options& options)
{
    RenderSettings& settings = options.settings;
    reader.read("output", "a file name", options.outputPath);
    reader.read("size", kLargestSide, "1280x720", options.size);
    reader.read("azimuth", -3600.0f, 3600.0f, options.azimuth);
    reader.read("elevation", -90.0f, 90.0f, options.elevation);
    reader.read("samples", 1, kMostSamples, options.samples);
    reader.read("aa", kAntiAliasingKinds, settings.antiAliasing);
    reader.read("up", kUpAxes, options.upAxis);
    reader.read("draw-id", kDrawIdCarriers, settings.drawIdCarrier);
    reader.read("carrier", kRecordCarriers, settings.recordCarrier);
    reader.read("texture", "a file name", options.texturePath);
    readLevel(reader, options.textureLevel);
    reader.read("exposure", -kMostStops, kMostStops, options.exposure);
    reader.read("manager", kManagers, settings.manager);
    reader.read("debug", kDebugViews, settings.debugView);
    reader.read("env", "a file name", settings.environment.path);
    reader.read("specular", kSpecularModels, settings.environment.specular);
    reader.read("diffuse", kDiffuseModels, settings.environment.diffuse);
    reader.read("csm", 1, kMostCascades, settings.lights.cascades);
    reader.read("shadow-maps", kShadowMapKinds, settings.shadowMaps);
    readLights(reader, settings.lights);
    reader.read("textures", 1, kLargestWall, options.textures);
    reader.read("crowd", 1, kLargestCrowd, options.crowd);
    reader.read("camera", "a name", options.camera);
    reader.read("frames", 0, kMostFrames, options.frames);
    reader.read("press", "a list of keys", options.press);

    options.window = reader.isSet("window");
    options.builtIn = reader.isSet("builtin");
    options.noEnvironment = reader.isSet("no-env");
    options.stats = reader.isSet("stats");
    options.streamers = reader.isSet("streamers");
    settings.gizmos = reader.isSet("gizmos");
}

bool wantsShadows(const Options& options, const ValueReader& reader)
{
    return reader.isSet("shadows") || reader.isSet("csm") || reader.isSet("shadow-maps") || reader.isSet("lights") ||
           options.settings.debugView == DebugView::Shadows;
}

bool isBuiltIn(const Options& options, bool hasModel)
{
    return !hasModel && options.crowd == 0 && options.textures == 0 && !options.streamers &&
           options.texturePath.isEmpty();
}

// What the built-in scene has where nobody asks for something else: its frieze wants a manager with tiles.
void chooseForBuiltIn(const ValueReader& reader, RenderSettings& settings)
{
    if (!reader.isSet("manager"))
        settings.manager = ManagerKind::Array2D;
    if (!reader.isSet("aa"))
        settings.antiAliasing = AntiAliasingKind::SMAA;
}

// What the options that are given say of others that are not.
void readConsequences(const ValueReader& reader, bool hasModel, Options& options)
{
    if (wantsShadows(options, reader) || reader.isSet("no-shadows"))
        options.shadows = wantsShadows(options, reader);
    if (options.settings.antiAliasing != AntiAliasingKind::None && options.samples == 0)
        options.samples = 1;
    if (options.textures > 0 && !reader.isSet("manager"))
        options.settings.manager = ManagerKind::Array2D;
    options.settings.environment.exposure = options.exposure;
    if (isBuiltIn(options, hasModel))
        chooseForBuiltIn(reader, options.settings);
}

// Why what is said of an environment does not go together, or an empty string. In a window there can always be one: a
// key switches it on.
QString environmentFault(const Options& options, const ValueReader& reader, bool hasModel)
{
    const bool isTexture = !options.texturePath.isEmpty();
    const bool isNamed = !options.settings.environment.path.isEmpty();
    const bool canHave = isNamed || options.window || (isBuiltIn(options, hasModel) && !options.noEnvironment);
    if (isTexture && isNamed)
        return QStringLiteral("--texture and --env exclude each other");
    if (options.noEnvironment && isNamed)
        return QStringLiteral("--env and --no-env exclude each other");
    if (options.exposure && !canHave && !isTexture)
        return QStringLiteral("--exposure wants --env, --window or --texture");
    for (const char* const name : {"specular", "diffuse"})
    {
        if (!reader.isSet(name))
            continue;
        if (isTexture)
            return QStringLiteral("--texture and --%1 exclude each other").arg(QLatin1String(name));
        if (!canHave)
            return QStringLiteral("--%1 wants --env or --window").arg(QLatin1String(name));
    }
    return {};
}

// Why the options do not go together with each other and with the models that are named, or an empty string.
QString contradiction(const Options& options, const ValueReader& reader, const QStringList& models)
{
    const ManagerKind manager = options.settings.manager;
    const bool hasArrays = manager == ManagerKind::Array2D || manager == ManagerKind::Array2DBindless;
    const bool hasModel = !models.isEmpty();
    const bool isWall = options.textures > 0;
    const bool isCrowd = options.crowd > 0;
    const bool isTexture = !options.texturePath.isEmpty();

    if (wantsShadows(options, reader) && reader.isSet("no-shadows"))
        return QStringLiteral("--no-shadows and options of shadows exclude each other");
    if (models.size() > 1)
        return QStringLiteral("more than one model is named: '%1' and '%2'").arg(models[0], models[1]);
    if (hasModel && options.builtIn)
        return QStringLiteral("--builtin and the model '%1' exclude each other").arg(models[0]);
    if (options.streamers && (options.builtIn || isCrowd || isWall || hasModel))
        return QStringLiteral("--streamers and another scene exclude each other");
    if (isCrowd && (options.builtIn || hasModel))
        return QStringLiteral("--crowd and another scene exclude each other");
    if (isTexture && (isWall || isCrowd || options.builtIn || options.streamers || options.window || hasModel))
        return QStringLiteral("--texture excludes a scene and --window");
    if (!isTexture && reader.isSet("level"))
        return QStringLiteral("--level wants --texture");
    if (QString fault = environmentFault(options, reader, hasModel); !fault.isEmpty())
        return fault;
    if (isWall && (isCrowd || options.builtIn || hasModel))
        return QStringLiteral("--textures and another scene exclude each other");
    if (isWall && !hasArrays)
        return QStringLiteral("--textures wants --manager array2d or array2d-bindless");
    if (options.settings.debugView == DebugView::Slots && !hasArrays)
        return QStringLiteral("--debug slots wants --manager array2d or array2d-bindless");
    if (!options.camera.isEmpty() && !hasModel)
        return QStringLiteral("--camera needs a model that has cameras");
    if (options.frames > 0 && !options.window)
        return QStringLiteral("--frames needs --window");
    if (!options.press.isEmpty() && !options.window)
        return QStringLiteral("--press needs --window");
    if (hasModel && models[0].isEmpty())
        return QStringLiteral("the model's file name is empty");
    return {};
}

ParsedOptions failure(const QString& text)
{
    return {ParsedOptions::Outcome::Error, {}, text};
}

} // namespace

ParsedOptions parseOptions(const QStringList& arguments, const QString& version)
{
    QCommandLineParser parser;
    describe(parser);
    if (!parser.parse(arguments))
        return failure(parser.errorText().simplified() + QStringLiteral(" See --help."));
    if (parser.isSet(QStringLiteral("help")))
        return {ParsedOptions::Outcome::ShowText, {}, parser.helpText()};
    if (parser.isSet(QStringLiteral("version")))
        return {ParsedOptions::Outcome::ShowText, {}, QStringLiteral("vrkview %1\n").arg(version)};

    ParsedOptions parsed;
    ValueReader reader(parser);
    readValues(reader, parsed.options);
    if (!reader.error().isEmpty())
        return failure(reader.error());

    const QStringList models = parser.positionalArguments();
    readConsequences(reader, !models.isEmpty(), parsed.options);
    const QString fault = contradiction(parsed.options, reader, models);
    if (!fault.isEmpty())
        return failure(fault);
    parsed.options.modelPath = models.value(0);
    return parsed;
}

} // namespace vrkview
