// SPDX-License-Identifier: MIT
// vrkview: draws a model into a picture, or shows it in a window. Bad input gives one line on standard error and exit
// code 1; standard output gets the picture's path and nothing else.
#include "BuiltInScene.h"
#include "Crowd.h"
#include "Driver.h"
#include "Farbfeld.h"
#include "HeadlessContext.h"
#include "ModelReader.h"
#include "Options.h"
#include "OrbitCamera.h"
#include "PictureFile.h"
#include "RenderTarget.h"
#include "SceneRenderer.h"
#include "ScreenWall.h"
#include "Switches.h"
#include "Terminal.h"
#include "TextureSheet.h"
#include "TextureWall.h"
#include "Window.h"

#include <VrkGL/GLVersions.h>
#include <VrkGL/OpenGLDeviceContext.h>
#include <VrkGL/TextureIO.h>

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QGuiApplication>
#include <QImageReader>
#include <QKeySequence>
#include <QLoggingCategory>

#include <cstdio>
#include <cstdlib>
#include <memory>
#include <utility>

namespace vrkview
{

namespace
{

// Samples per pixel where the command line names none. A picture has time, a window has frames.
constexpr int kPictureSamples = 16;
constexpr int kWindowSamples = 4;

// What one decoded picture of a model may take; Qt's own limit falls short of 8192 by 8192 pixels.
constexpr int kImageMegabytes = 1024;

// Frames that are drawn for --stats: the first warms up and is not counted.
constexpr int kFramesOfStats = 20;
constexpr double kSecondsPerFrame = 1.0 / 60.0;

struct Angles
{
    float azimuth = 35.0f;
    float elevation = 22.0f;
};

// Where the built-in scene shows itself best.
constexpr Angles kBuiltInView = {35.0f, 14.0f};

// Completes `options`: without a model's path afterwards, the built-in scene is meant.
void chooseModel(Options& options)
{
    Angles view;
    if (options.textures > 0 || options.streamers)
        view = {0.0f, 0.0f}; // the wall faces this way
    if (options.builtIn || options.crowd > 0 || options.textures > 0 || options.streamers)
        options.modelPath.clear();
    const bool isBuiltIn =
        options.modelPath.isEmpty() && options.crowd == 0 && options.textures == 0 && !options.streamers;
    options.settings.shadows = options.shadows.value_or(isBuiltIn);
    if (isBuiltIn && options.settings.environment.path.isEmpty() && !options.noEnvironment)
        options.settings.environment.path = QLatin1String(kBuiltInSky);
    if (isBuiltIn)
        view = kBuiltInView;
    options.azimuth = options.azimuth.value_or(view.azimuth);
    options.elevation = options.elevation.value_or(view.elevation);
}

bool loadModel(const Options& options, Model& model, QString& error)
{
    if (options.crowd > 0)
    {
        model = makeCrowd(options.crowd);
        return true;
    }
    if (options.textures > 0)
    {
        model = makeTextureWall(options.textures);
        return true;
    }
    if (options.streamers)
    {
        model = makeScreenWall();
        return true;
    }
    if (options.modelPath.isEmpty())
    {
        model = makeBuiltInScene();
        return true;
    }
    ReadResult result = readModel(options.modelPath, options.upAxis);
    if (!result.model)
    {
        error = QStringLiteral("cannot draw the model '%1': %2").arg(options.modelPath, result.error);
        return false;
    }
    if (!result.note.isEmpty())
        remark(QStringLiteral("%1: %2").arg(result.model->name, result.note));
    model = std::move(*result.model);
    return true;
}

QString picturePath(const Options& options)
{
    if (!options.outputPath.isEmpty())
        return QFileInfo(options.outputPath).absoluteFilePath();
    return options.window ? QString() : QDir::current().absoluteFilePath(QStringLiteral("vrkview.png"));
}

OrbitCamera cameraOf(const Options& options)
{
    OrbitCamera camera;
    camera.setAngles(*options.azimuth, *options.elevation);
    return camera;
}

QString summaryOf(const Model& model)
{
    return QStringLiteral("%1: %2 meshes, %3 triangles")
        .arg(model.name)
        .arg(model.meshes.size())
        .arg(model.triangleCount());
}

bool savePicture(const QImage& image, const QString& path, QString& error)
{
    if (image.isNull())
        error = QStringLiteral("there is no memory for the picture");
    else if (writePicture(image, path, error))
    {
        std::printf("%s\n", qUtf8Printable(path));
        return true;
    }
    error = QStringLiteral("cannot write '%1': %2").arg(path, error);
    return false;
}

bool chooseView(const Options& options, const Model& model, const SceneRenderer& renderer, View& view, QString& error)
{
    const float aspect = float(options.size.width()) / float(options.size.height());
    if (options.camera.isEmpty())
    {
        OrbitCamera camera = cameraOf(options);
        camera.frame(model, aspect);
        view = renderer.viewOf(camera, aspect);
        return true;
    }
    const std::optional<View> found = renderer.fileCamera(options.camera, aspect);
    if (!found)
        error = QStringLiteral("the model has no camera '%1'").arg(options.camera);
    else
        view = *found;
    return found.has_value();
}

// One frame, or for --stats as many as make a measure. The picture is that of time 0.
QList<FrameStats> drawFrames(SceneRenderer& renderer, const View& view, bool measures)
{
    QList<FrameStats> stats;
    for (int frame = measures ? kFramesOfStats : 0; frame >= 0; --frame)
    {
        renderer.animate(frame * kSecondsPerFrame);
        renderer.draw(view);
        if (!measures || frame < kFramesOfStats)
            stats.append(renderer.stats());
    }
    return stats;
}

void tellStats(const Options& options, const QList<FrameStats>& frames)
{
    if (options.stats)
        for (const QString& line : report(frames))
            remark(line);
}

// Everything that belongs to the context lives inside this function, so that it goes before the context does.
bool drawPicture(const Options& options, const Model& model, QImage& picture, QString& driver, QString& error)
{
    RenderTarget target;
    SceneRenderer renderer;
    View view;
    const int samples = options.samples > 0 ? options.samples : kPictureSamples;
    if (!startDriver(driver, error) || !target.create(options.size, samples, options.settings.antiAliasing, error) ||
        !renderer.create(model, options.settings, error) || !chooseView(options, model, renderer, view, error))
        return false;

    if (!renderer.whiteTiles().isEmpty())
        remark(renderer.whiteTiles());
    target.bind();
    tellStats(options, drawFrames(renderer, view, options.stats));
    target.resolve();
    picture = target.read();
    Harrow::Vrk::OpenGLDeviceContext::resetContext();
    return true;
}

bool drawSheet(const Options& options, QImage& picture, QString& description, QString& error)
{
    RenderTarget target;
    TextureSheet sheet;
    QString driver;
    if (!startDriver(driver, error) || !target.create(options.size, 1, options.settings.antiAliasing, error) ||
        !sheet.create({options.texturePath, options.textureLevel, options.exposure}, error))
        return false;
    target.bind();
    sheet.draw();
    target.resolve();
    picture = target.read();
    description = sheet.description();
    Harrow::Vrk::OpenGLDeviceContext::resetContext();
    return true;
}

int runTexture(const Options& options, const QString& path)
{
    HeadlessContext context;
    QImage picture;
    QString description;
    QString error;
    if (!context.create(error) || !drawSheet(options, picture, description, error))
        return fail(QStringLiteral("cannot draw: %1").arg(error));
    remark(QStringLiteral("%1: %2").arg(QFileInfo(options.texturePath).fileName(), description));
    return savePicture(picture, path, error) ? EXIT_SUCCESS : fail(error);
}

int runHeadless(const Options& options, const Model& model, const QString& path)
{
    HeadlessContext context;
    QImage picture;
    QString driver;
    QString error;
    if (!context.create(error) || !drawPicture(options, model, picture, driver, error))
        return fail(QStringLiteral("cannot draw: %1").arg(error));
    remark(QStringLiteral("%1, drawn by %2").arg(summaryOf(model), driver));
    return savePicture(picture, path, error) ? EXIT_SUCCESS : fail(error);
}

// Why there can be no window, or empty where only trying tells.
QString displayFault()
{
#if defined(Q_OS_UNIX) && !defined(Q_OS_DARWIN)
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM") && qEnvironmentVariableIsEmpty("DISPLAY") &&
        qEnvironmentVariableIsEmpty("WAYLAND_DISPLAY"))
        return QStringLiteral("cannot open a window: neither DISPLAY nor WAYLAND_DISPLAY is set");
#endif
    return {};
}

// What to say where trying showed that there can be no window.
QString platformFault()
{
    for (const char* name : {"QT_QPA_PLATFORM", "DISPLAY", "WAYLAND_DISPLAY"})
        if (!qEnvironmentVariableIsEmpty(name))
            return QStringLiteral("cannot open a window: %1 is '%2', which does not answer")
                .arg(QLatin1String(name), qEnvironmentVariable(name));
    return QStringLiteral("cannot open a window on this system");
}

// "S, Shift+P" as keys.
bool readKeys(const QString& text, QList<QKeyCombination>& keys)
{
    for (const QString& name : text.split(QLatin1Char(','), Qt::SkipEmptyParts))
    {
        const QKeySequence sequence(name.trimmed());
        if (sequence.isEmpty() || sequence[0].key() == Qt::Key_unknown)
            return false;
        keys.append(sequence[0]);
    }
    return true;
}

int runWindow(const Options& options, Model model, const QString& path, char* programName)
{
    QString error = displayFault();
    if (!error.isEmpty())
        return fail(error);

    // Qt ends the process where a display is named but does not answer; the scope ends it with our one line.
    char* arguments[] = {programName, nullptr};
    int argumentCount = 1;
    auto quiet = std::make_unique<QuietScope>(platformFault());
    QGuiApplication application(argumentCount, arguments);
    quiet.reset();

    QList<QKeyCombination> presses;
    if (!readKeys(options.press, presses))
        return fail(QStringLiteral("--press '%1' is no list of keys").arg(options.press));
    Window window;
    window.setTitle(QStringLiteral("%1 - vrkview (H: keys)").arg(model.name));
    window.resize(options.size);
    window.setFrameLimit(options.frames);
    window.setPresses(presses);
    const QString summary = summaryOf(model);
    const int samples = options.samples > 0 ? options.samples : kWindowSamples;
    if (!window.create(std::move(model), cameraOf(options), samples, options.settings, options.camera, error))
        return fail(QStringLiteral("cannot draw: %1").arg(error));
    remark(QStringLiteral("%1, drawn by %2").arg(summary, window.driver()));
    window.show();
    QGuiApplication::exec();
    tellStats(options, window.stats());
    if (!window.error().isEmpty())
        return fail(QStringLiteral("cannot draw: %1").arg(window.error()));
    if (!path.isEmpty() && window.lastFrame().isNull())
        return fail(QStringLiteral("cannot write '%1': the window was closed before it had drawn a frame").arg(path));
    return path.isEmpty() || savePicture(window.lastFrame(), path, error) ? EXIT_SUCCESS : fail(error);
}

int run(int argc, char** argv)
{
    ParsedOptions parsed;
    QString path;
    {
        // Lent for its reading of the command line; a window wants an application of another kind.
        const QCoreApplication application(argc, argv);
        parsed = parseOptions(QCoreApplication::arguments(), Harrow::Vrk::GLVersions::getVersion());
        path = picturePath(parsed.options);
    }
    if (parsed.outcome == ParsedOptions::Outcome::Error)
        return fail(parsed.text);
    if (parsed.outcome == ParsedOptions::Outcome::ShowText)
    {
        std::fputs(qUtf8Printable(parsed.text), stdout);
        return EXIT_SUCCESS;
    }

    if (!path.isEmpty())
    {
        const QString fault = pictureFault(path);
        if (!fault.isEmpty())
            return fail(QStringLiteral("cannot write '%1': %2").arg(path, fault));
    }
    if (!parsed.options.texturePath.isEmpty())
        return runTexture(parsed.options, path);
    chooseModel(parsed.options);
    Model model;
    QString error;
    if (!loadModel(parsed.options, model, error))
        return fail(error);
    return parsed.options.window ? runWindow(parsed.options, std::move(model), path, argv[0])
                                 : runHeadless(parsed.options, model, path);
}

} // namespace

} // namespace vrkview

int main(int argc, char** argv)
{
    // The library's log has warnings for everybody and details for developers, who set QT_LOGGING_RULES.
    QLoggingCategory::setFilterRules(QStringLiteral("default.debug=false"));
    QImageReader::setAllocationLimit(vrkview::kImageMegabytes);
    Harrow::Vrk::RegisterTextureRecogniser(new vrkview::FarbfeldRecogniser, QStringLiteral("ff"));
    const int exitCode = vrkview::run(argc, argv);
    Harrow::Vrk::DeleteAllRegisteredTextureRecognisers();
    return exitCode;
}
