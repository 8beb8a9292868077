// SPDX-License-Identifier: MIT
// vrk-deep-pick: prints every surface under a pixel of a model's picture, front to back, from a deep G-buffer. Standard
// output gets the surfaces and nothing else; bad input gives one line on standard error and exit code 1.
#include "Comparison.h"
#include "DeepBuffer.h"
#include "PickOptions.h"
#include "PickScene.h"
#include "PictureMark.h"
#include "RayCast.h"

#include <BuiltInScene.h>
#include <Driver.h>
#include <HeadlessContext.h>
#include <ModelReader.h>
#include <PictureFile.h>
#include <Terminal.h>

#include <VrkGL/OpenGLDeviceContext.h>

#include <QCoreApplication>
#include <QFileInfo>
#include <QLoggingCategory>

#include <cstdio>
#include <cstdlib>

namespace deeppick
{

using vrkview::fail;
using vrkview::remark;

namespace
{

/// What comes out of a picture before its context goes.
struct Picked
{
    std::vector<Fragment> fragments;
    QImage picture;
    QString driver;
    std::size_t fragmentCount = 0;
    std::uint32_t deepest = 0;
    int drawings = 0;
    int subpixelBits = 0;
};

bool loadModel(const PickOptions& options, vrkview::Model& model, QString& error)
{
    if (options.modelPath.isEmpty())
    {
        model = vrkview::makeBuiltInScene();
        return true;
    }
    vrkview::ReadResult result = vrkview::readModel(options.modelPath, options.upAxis);
    if (!result.model)
    {
        error = QStringLiteral("cannot read the model '%1': %2").arg(options.modelPath, result.error);
        return false;
    }
    model = std::move(*result.model);
    return true;
}

// Everything that belongs to the context lives inside this function, so that it goes before the context does.
bool pickInContext(const PickOptions& options, const PickScene& scene, const PickView& view, Picked& picked,
                   QString& error)
{
    if (!vrkview::startDriver(picked.driver, error))
        return false;
    error = DeepBuffer::driverFault();
    DeepBuffer buffer;
    if (!error.isEmpty() || !buffer.create(scene, view, error) || !buffer.fill(std::size_t(options.room), error))
        return false;
    buffer.sort();
    picked.fragments = buffer.query(options.pixel);
    picked.fragmentCount = buffer.fragmentCount();
    picked.deepest = buffer.deepest();
    picked.drawings = buffer.drawings();
    picked.subpixelBits = DeepBuffer::subpixelBits();
    if (!options.outputPath.isEmpty())
        picked.picture = buffer.picture();
    return true;
}

bool pick(const PickOptions& options, const PickScene& scene, const PickView& view, Picked& picked, QString& error)
{
    vrkview::HeadlessContext context;
    if (!context.create(error))
        return false;
    const bool done = pickInContext(options, scene, view, picked, error);
    Harrow::Vrk::OpenGLDeviceContext::resetContext();
    return done;
}

void printLine(const QString& line)
{
    std::printf("%s\n", qUtf8Printable(line));
}

void printFragments(const PickOptions& options, const PickScene& scene, const std::vector<Fragment>& fragments)
{
    for (std::size_t i = 0; i < fragments.size(); ++i)
        printLine(describe(fragments[i], i + 1, scene));
    if (fragments.empty())
        remark(QStringLiteral("there is nothing under the pixel %1,%2").arg(options.pixel.x()).arg(options.pixel.y()));
}

void summarise(const vrkview::Model& model, const PickScene& scene, const Picked& picked)
{
    remark(QStringLiteral("%1: %2 objects of %3 triangles, %4 fragments, at most %5 under a pixel, drawn %6 by %7")
               .arg(model.name)
               .arg(scene.draws.size())
               .arg(scene.triangleCount())
               .arg(picked.fragmentCount)
               .arg(picked.deepest)
               .arg(picked.drawings == 1 ? QStringLiteral("once")
                                         : QStringLiteral("%1 times, with more room,").arg(picked.drawings),
                    picked.driver));
}

/// Prints what the ray meets beside the fragments. Empty if both agree, else what they don't agree in.
QString check(const PickOptions& options, const PickScene& scene, const PickView& view, const Picked& picked)
{
    const RayCast rayCast(scene, view, picked.subpixelBits);
    const std::vector<ComparedSurface> surfaces =
        compare(picked.fragments, rayCast.cast(options.pixel), rayCast.reach());
    QString fault;
    for (std::size_t i = 0; i < surfaces.size(); ++i)
    {
        printLine(describe(surfaces[i], i + 1, scene));
        if (fault.isEmpty() && !surfaces[i].fault.isEmpty())
            fault = QStringLiteral("the ray and the buffer differ in surface %1: %2").arg(i + 1).arg(surfaces[i].fault);
    }
    if (fault.isEmpty())
        remark(QStringLiteral("the ray agrees within 1/%1 of a pixel and %2 of the distances: %3")
                   .arg(int(1.0 / rayCast.reach()))
                   .arg(RayCast::kRounding)
                   .arg(summary(surfaces)));
    return fault;
}

bool writeMarked(const PickOptions& options, QImage picture, QString& error)
{
    if (picture.isNull())
        error = QStringLiteral("there is no memory for the picture");
    markPixel(picture, options.pixel);
    if (!picture.isNull() && vrkview::writePicture(picture, options.outputPath, error))
        return true;
    error = QStringLiteral("cannot write '%1': %2").arg(options.outputPath, error);
    return false;
}

int run(const PickOptions& options)
{
    QString error = options.outputPath.isEmpty() ? QString() : vrkview::pictureFault(options.outputPath);
    if (!error.isEmpty())
        return fail(QStringLiteral("cannot write '%1': %2").arg(options.outputPath, error));
    vrkview::Model model;
    if (!loadModel(options, model, error))
        return fail(error);
    const std::optional<PickScene> scene = makePickScene(model, error);
    if (!scene)
        return fail(QStringLiteral("cannot pick in %1: %2").arg(model.name, error));
    const PickView view = makePickView(model, *scene, options.azimuth, options.elevation, options.size);
    Picked picked;
    if (!pick(options, *scene, view, picked, error))
        return fail(QStringLiteral("cannot draw: %1").arg(error));

    summarise(model, *scene, picked);
    printFragments(options, *scene, picked.fragments);
    const QString fault = options.check ? check(options, *scene, view, picked) : QString();
    if (!options.outputPath.isEmpty() && !writeMarked(options, picked.picture, error))
        return fail(error);
    return fault.isEmpty() ? EXIT_SUCCESS : fail(fault);
}

} // namespace

} // namespace deeppick

int main(int argc, char** argv)
{
    const QCoreApplication application(argc, argv);
    vrkview::setProgramName("vrk-deep-pick");
    // The library's log has warnings for everybody and details for developers, who set QT_LOGGING_RULES.
    QLoggingCategory::setFilterRules(QStringLiteral("default.debug=false"));
    const deeppick::ParsedPickOptions parsed = deeppick::parsePickOptions(QCoreApplication::arguments());
    switch (parsed.outcome)
    {
    case deeppick::ParsedPickOptions::Outcome::Error:
        return vrkview::fail(parsed.text);
    case deeppick::ParsedPickOptions::Outcome::ShowText:
        std::fputs(qUtf8Printable(parsed.text), stdout);
        return EXIT_SUCCESS;
    case deeppick::ParsedPickOptions::Outcome::Run:
        break;
    }
    return deeppick::run(parsed.options);
}
