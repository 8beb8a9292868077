// SPDX-License-Identifier: MIT
#include "Options.h"

#include "Crowd.h"
#include "TextureWall.h"

#include <QCommandLineParser>
#include <QRegularExpression>

#include <cmath>
#include <iterator>

namespace vrkview
{

namespace
{

constexpr int kLargestSide = 1 << 20; // beyond any driver; keeps products of sides in range
constexpr int kMostSamples = 64;
constexpr int kMostFrames = 1000000;
constexpr int kMostLevel = 30;
constexpr float kMostStops = 24.0f;

template <typename Value> struct Choice
{
    const char* word;
    Value value;
};

constexpr Choice<DrawIdCarrier> kDrawIdCarriers[] = {
    {"auto", DrawIdCarrier::Automatic},
    {"uniform", DrawIdCarrier::Uniform},
    {"base-instance", DrawIdCarrier::BaseInstance},
};

constexpr Choice<RecordCarrier> kRecordCarriers[] = {
    {"ubo", RecordCarrier::UniformBuffer},
    {"uniform", RecordCarrier::Uniform},
    {"buffer-texture", RecordCarrier::BufferTexture},
    {"texture", RecordCarrier::Texture},
    {"ssbo", RecordCarrier::StorageBuffer},
};

constexpr Choice<ManagerKind> kManagers[] = {
    {"sampler", ManagerKind::Sampler},
    {"array2d", ManagerKind::Array2D},
    {"array2d-bindless", ManagerKind::Array2DBindless},
    {"bindless", ManagerKind::Bindless},
};

constexpr Choice<DebugView> kDebugViews[] = {
    {"none", DebugView::None},
    {"slots", DebugView::Slots},
    {"shadows", DebugView::Shadows},
};

constexpr Choice<ShadowMapKind> kShadowMapKinds[] = {
    {"plain", ShadowMapKind::Plain},
    {"variance", ShadowMapKind::Variance},
};

constexpr Choice<LightSet> kLightSets[] = {
    {"all", LightSet::All},
    {"sun", LightSet::Sun},
    {"spot", LightSet::Spot},
    {"point", LightSet::Point},
};

constexpr Choice<AntiAliasingKind> kAntiAliasingKinds[] = {
    {"none", AntiAliasingKind::None},
    {"fxaa", AntiAliasingKind::FXAA},
    {"smaa", AntiAliasingKind::SMAA},
};

constexpr Choice<SpecularModel> kSpecularModels[] = {
    {"blinn-phong", SpecularModel::BlinnPhong},
    {"ashikhmin-shirley", SpecularModel::AshikhminShirley},
    {"ggx", SpecularModel::GGX},
};

constexpr Choice<DiffuseModel> kDiffuseModels[] = {
    {"lambert", DiffuseModel::Lambert},
    {"oren-nayar", DiffuseModel::OrenNayar},
};

constexpr Choice<UpAxis> kUpAxes[] = {
    {"y", UpAxis::Y},
    {"z", UpAxis::Z},
};

template <typename Value, std::size_t count>
QString words(const Choice<Value> (&choices)[count], const QString& separator)
{
    QStringList list;
    for (const Choice<Value>& choice : choices)
        list.append(QLatin1String(choice.word));
    return list.join(separator);
}

// Reads values out of a parser; the first value that is wrong leaves its message in `error`.
class ValueReader
{
public:
    explicit ValueReader(const QCommandLineParser& parser) : _parser(parser) {}

    void read(const char* name, float lowest, float highest, std::optional<float>& value)
    {
        bool isNumber = false;
        const QString text = given(name);
        if (text.isNull())
            return;
        const float number = text.toFloat(&isNumber);
        if (!isNumber || !std::isfinite(number) || number < lowest || number > highest)
            reject(name, text, QStringLiteral("a number from %1 to %2").arg(lowest).arg(highest));
        else
            value = number;
    }

    void read(const char* name, int lowest, int highest, int& value)
    {
        bool isNumber = false;
        const QString text = given(name);
        if (text.isNull())
            return;
        const int number = text.toInt(&isNumber);
        if (!isNumber || number < lowest || number > highest)
            reject(name, text, QStringLiteral("a whole number from %1 to %2").arg(lowest).arg(highest));
        else
            value = number;
    }

    void read(const char* name, QSize& value)
    {
        const QString text = given(name);
        if (text.isNull())
            return;
        static const QRegularExpression pattern(QStringLiteral("^([0-9]{1,7})x([0-9]{1,7})$"));
        const QRegularExpressionMatch match = pattern.match(text);
        const QSize size(match.captured(1).toInt(), match.captured(2).toInt());
        if (size.isEmpty() || size.width() > kLargestSide || size.height() > kLargestSide)
            reject(name, text, QStringLiteral("WIDTHxHEIGHT in pixels, such as 1280x720"));
        else
            value = size;
    }

    template <typename Value, std::size_t count>
    void read(const char* name, const Choice<Value> (&choices)[count], Value& value)
    {
        const QString text = given(name);
        if (text.isNull())
            return;
        for (const Choice<Value>& choice : choices)
        {
            if (text == QLatin1String(choice.word))
            {
                value = choice.value;
                return;
            }
        }
        reject(name, text, QStringLiteral("one of ") + words(choices, QStringLiteral(", ")));
    }

    void readText(const char* name, const char* wanted, QString& value)
    {
        const QString text = given(name);
        if (text.isNull())
            return;
        if (text.isEmpty())
            reject(name, text, QString::fromLatin1(wanted));
        else
            value = text;
    }

    void readLevel(const char* name, std::optional<int>& value)
    {
        const QString text = given(name);
        bool isNumber = false;
        const int number = text.toInt(&isNumber);
        if (text == QLatin1String("all"))
            value.reset();
        else if (isNumber && number >= 0 && number <= kMostLevel)
            value = number;
        else if (!text.isNull())
            reject(name, text, QStringLiteral("a whole number from 0 to %1, or all").arg(kMostLevel));
    }

    void readLights(const char* name, LightSettings& value)
    {
        const QString text = given(name);
        bool isNumber = false;
        const int number = text.toInt(&isNumber);
        if (isNumber && number >= 1 && number <= kMostLights)
        {
            value.set = LightSet::Ring;
            value.ringCount = number;
            return;
        }
        for (const Choice<LightSet>& choice : kLightSets)
        {
            if (text == QLatin1String(choice.word))
            {
                value.set = choice.value;
                return;
            }
        }
        if (!text.isNull())
            reject(name, text,
                   QStringLiteral("one of %1, or a whole number from 1 to %2")
                       .arg(words(kLightSets, QStringLiteral(", ")))
                       .arg(kMostLights));
    }

    const QString& error() const
    {
        return _error;
    }

private:
    // Null if the option is absent; an empty value given on the command line is empty but not null.
    QString given(const char* name) const
    {
        const QString option = QLatin1String(name);
        if (!_parser.isSet(option))
            return {};
        const QString value = _parser.value(option);
        return value.isNull() ? QStringLiteral("") : value;
    }

    void reject(const char* name, const QString& text, const QString& wanted)
    {
        if (_error.isEmpty())
            _error = QStringLiteral("--%1 '%2' is not %3").arg(QLatin1String(name), text, wanted);
    }

    const QCommandLineParser& _parser;
    QString _error;
};

void describe(QCommandLineParser& parser)
{
    parser.setApplicationDescription(QStringLiteral(
        "Draws a 3D model (glTF, OBJ, PLY, STL and whatever else Assimp reads) into a picture or a window.\n"
        "Prints the path of the picture. In the window: drag orbits, wheel zooms, right or middle drag pans,\n"
        "R resets the view, Escape closes."));
    parser.addPositionalArgument(QStringLiteral("model"),
                                 QStringLiteral("The model's file; without it the built-in scene."),
                                 QStringLiteral("[model]"));

    QCommandLineOption frames(QStringLiteral("frames"), QString(), QStringLiteral("count"));
    frames.setFlags(QCommandLineOption::HiddenFromHelp);
    parser.addOptions({
        {{QStringLiteral("o"), QStringLiteral("output")},
         QStringLiteral("The picture, a PNG; vrkview.png beside the program if not given."),
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
         QStringLiteral("Brighten the environment, or what a texture holds as light, by so many stops, %1 to %2.")
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
         QStringLiteral("What smooths the edges of the finished picture, by default with one sample per pixel: %1.")
             .arg(words(kAntiAliasingKinds, QStringLiteral(", "))),
         QStringLiteral("how")},
        {QStringLiteral("draw-id"),
         QStringLiteral("How a draw's number reaches the shader: %1.")
             .arg(words(kDrawIdCarriers, QStringLiteral(", "))),
         QStringLiteral("how")},
        {QStringLiteral("carrier"),
         QStringLiteral("How the records of objects and materials reach the shader: %1.")
             .arg(words(kRecordCarriers, QStringLiteral(", "))),
         QStringLiteral("how")},
        {QStringLiteral("manager"),
         QStringLiteral("How textures reach the shader: %1.").arg(words(kManagers, QStringLiteral(", "))),
         QStringLiteral("how")},
        {QStringLiteral("env"),
         QStringLiteral("Light the scene by a picture of what is around it, by latitude and longitude."),
         QStringLiteral("file")},
        {QStringLiteral("no-env"), QStringLiteral("Draw the built-in scene without its sky.")},
        {QStringLiteral("specular"),
         QStringLiteral("How surfaces mirror what is around: %1.").arg(words(kSpecularModels, QStringLiteral(", "))),
         QStringLiteral("model")},
        {QStringLiteral("diffuse"),
         QStringLiteral("How they scatter it: %1.").arg(words(kDiffuseModels, QStringLiteral(" or "))),
         QStringLiteral("model")},
        {QStringLiteral("shadows"),
         QStringLiteral("Light the scene with lights that cast shadows, as the built-in scene is.")},
        {QStringLiteral("no-shadows"), QStringLiteral("Light the scene with one light beside the camera.")},
        {QStringLiteral("lights"),
         QStringLiteral("Which lights cast shadows: %1, or that many spots around, 1 to %2.")
             .arg(words(kLightSets, QStringLiteral(", ")))
             .arg(kMostLights),
         QStringLiteral("which")},
        {QStringLiteral("csm"),
         QStringLiteral("Shadow maps that the sun has for near and far, 1 to %1; 4 if not given.").arg(kMostCascades),
         QStringLiteral("count")},
        {QStringLiteral("shadow-maps"),
         QStringLiteral("What shadow maps hold: %1.").arg(words(kShadowMapKinds, QStringLiteral(" or "))),
         QStringLiteral("kind")},
        {QStringLiteral("debug"),
         QStringLiteral("What to draw in place of the scene: %1.").arg(words(kDebugViews, QStringLiteral(", "))),
         QStringLiteral("what")},
        {QStringLiteral("gizmos"), QStringLiteral("Draw a grid, the axes and where the lights stand.")},
        {QStringLiteral("stats"), QStringLiteral("Tell what a frame costs: counts, memory, time for each phase.")},
        frames,
        {{QStringLiteral("h"), QStringLiteral("help")}, QStringLiteral("Show this and end.")},
        {{QStringLiteral("v"), QStringLiteral("version")}, QStringLiteral("Show the version and end.")},
    });
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
    Options& options = parsed.options;
    ValueReader reader(parser);
    reader.readText("output", "a file name", options.outputPath);
    reader.read("size", options.size);
    reader.read("azimuth", -3600.0f, 3600.0f, options.azimuth);
    reader.read("elevation", -90.0f, 90.0f, options.elevation);
    reader.read("samples", 1, kMostSamples, options.samples);
    reader.read("aa", kAntiAliasingKinds, options.settings.antiAliasing);
    reader.read("up", kUpAxes, options.upAxis);
    reader.read("draw-id", kDrawIdCarriers, options.settings.drawIdCarrier);
    reader.read("carrier", kRecordCarriers, options.settings.recordCarrier);
    reader.readText("texture", "a file name", options.texturePath);
    reader.readLevel("level", options.textureLevel);
    reader.read("exposure", -kMostStops, kMostStops, options.exposure);
    reader.read("manager", kManagers, options.settings.manager);
    reader.read("debug", kDebugViews, options.settings.debugView);
    EnvironmentSettings& environment = options.settings.environment;
    reader.readText("env", "a file name", environment.path);
    reader.read("specular", kSpecularModels, environment.specular);
    reader.read("diffuse", kDiffuseModels, environment.diffuse);
    reader.read("csm", 1, kMostCascades, options.settings.lights.cascades);
    reader.read("shadow-maps", kShadowMapKinds, options.settings.shadowMaps);
    reader.readLights("lights", options.settings.lights);
    reader.read("textures", 1, kLargestWall, options.textures);
    reader.read("crowd", 1, kLargestCrowd, options.crowd);
    reader.readText("camera", "a name", options.camera);
    reader.read("frames", 0, kMostFrames, options.frames);
    if (!reader.error().isEmpty())
        return failure(reader.error());

    const bool wantsShadows = parser.isSet(QStringLiteral("shadows")) || parser.isSet(QStringLiteral("csm")) ||
                              parser.isSet(QStringLiteral("shadow-maps")) || parser.isSet(QStringLiteral("lights")) ||
                              options.settings.debugView == DebugView::Shadows;
    if (wantsShadows && parser.isSet(QStringLiteral("no-shadows")))
        return failure(QStringLiteral("--no-shadows and options of shadows exclude each other"));
    if (wantsShadows || parser.isSet(QStringLiteral("no-shadows")))
        options.shadows = wantsShadows;

    if (options.settings.antiAliasing != AntiAliasingKind::None && options.samples == 0)
        options.samples = 1;
    options.window = parser.isSet(QStringLiteral("window"));
    options.builtIn = parser.isSet(QStringLiteral("builtin"));
    options.noEnvironment = parser.isSet(QStringLiteral("no-env"));
    options.stats = parser.isSet(QStringLiteral("stats"));
    options.settings.gizmos = parser.isSet(QStringLiteral("gizmos"));
    options.streamers = parser.isSet(QStringLiteral("streamers"));

    const QStringList paths = parser.positionalArguments();
    if (paths.size() > 1)
        return failure(QStringLiteral("more than one model is named: '%1' and '%2'").arg(paths[0], paths[1]));
    if (!paths.isEmpty() && options.builtIn)
        return failure(QStringLiteral("--builtin and the model '%1' exclude each other").arg(paths[0]));
    if (options.streamers && (options.builtIn || options.crowd > 0 || options.textures > 0 || !paths.isEmpty()))
        return failure(QStringLiteral("--streamers and another scene exclude each other"));
    if (options.crowd > 0 && (options.builtIn || !paths.isEmpty()))
        return failure(QStringLiteral("--crowd and another scene exclude each other"));
    if (!options.texturePath.isEmpty() && (options.textures > 0 || options.crowd > 0 || options.builtIn ||
                                           options.streamers || options.window || !paths.isEmpty()))
        return failure(QStringLiteral("--texture excludes a scene and --window"));
    if (options.texturePath.isEmpty() && parser.isSet(QStringLiteral("level")))
        return failure(QStringLiteral("--level wants --texture"));
    if (!options.texturePath.isEmpty() && !environment.path.isEmpty())
        return failure(QStringLiteral("--texture and --env exclude each other"));
    if (options.noEnvironment && !environment.path.isEmpty())
        return failure(QStringLiteral("--env and --no-env exclude each other"));
    if (options.exposure && !paths.isEmpty() && environment.path.isEmpty())
        return failure(QStringLiteral("--exposure wants --env or --texture"));
    environment.exposure = options.exposure;
    if (options.textures > 0 && (options.crowd > 0 || options.builtIn || !paths.isEmpty()))
        return failure(QStringLiteral("--textures and another scene exclude each other"));
    if (options.textures > 0 && !parser.isSet(QStringLiteral("manager")))
        options.settings.manager = ManagerKind::Array2D;
    const bool hasArrays =
        options.settings.manager == ManagerKind::Array2D || options.settings.manager == ManagerKind::Array2DBindless;
    if (options.textures > 0 && !hasArrays)
        return failure(QStringLiteral("--textures wants --manager array2d or array2d-bindless"));
    if (options.settings.debugView == DebugView::Slots && !hasArrays)
        return failure(QStringLiteral("--debug slots wants --manager array2d or array2d-bindless"));
    if (!options.camera.isEmpty() && paths.isEmpty())
        return failure(QStringLiteral("--camera needs a model that has cameras"));
    if (options.frames > 0 && !options.window)
        return failure(QStringLiteral("--frames needs --window"));
    if (!paths.isEmpty())
    {
        options.modelPath = paths[0];
        if (options.modelPath.isEmpty())
            return failure(QStringLiteral("the model's file name is empty"));
    }
    return parsed;
}

} // namespace vrkview
