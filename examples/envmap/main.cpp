// SPDX-License-Identifier: MIT
// vrk-envmap: makes the maps of image-based lighting of a picture of an environment. Bad input gives one line on
// standard error and exit code 1; standard output gets the paths of the files and nothing else.
#include "EnvmapOptions.h"
#include "Work.h"

#include <Driver.h>
#include <HeadlessContext.h>
#include <PictureFile.h>
#include <Terminal.h>
#include <VrkGL/GLVersions.h>
#include <VrkGL/OpenGLDeviceContext.h>
#include <VrkGL/TextureIO.h>

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QImageReader>
#include <QLoggingCategory>

#include <cstdio>
#include <cstdlib>

namespace envmap
{

namespace
{

using vrkview::fail;
using vrkview::remark;

constexpr int kImageMegabytes = 1024; // of one decoded picture; Qt's own limit falls short of a large environment

// Why no files can be made in the folder, or an empty string. Leaves nothing behind: it is made with the first file.
QString folderFault(const QString& path)
{
    const QFileInfo info(path);
    if (info.exists() && !info.isDir())
        return QStringLiteral("it is not a folder");
    const bool isMade = !info.exists();
    if (isMade && !QFileInfo(info.absolutePath()).isDir())
        return QStringLiteral("there is no folder '%1'").arg(info.path());
    if (isMade && !QDir().mkdir(path))
        return QStringLiteral("the folder cannot be made");
    QString fault = vrkview::pictureFault(QDir(path).filePath(QStringLiteral("vrk-envmap-trial.png")));
    if (isMade)
        QDir().rmdir(path);
    return fault;
}

// Everything that belongs to the context lives inside this function, so that it goes before the context does.
bool work(const Options& options, QStringList& files, QStringList& remarks, QString& error)
{
    QString driver;
    if (!vrkview::startDriver(driver, error))
    {
        error = QStringLiteral("cannot work: %1").arg(error);
        return false;
    }
    bool isDone = false;
    {
        Work steps(options);
        isDone = steps.run(error);
        files = steps.files();
        remarks = steps.remarks();
    }
    Harrow::Vrk::OpenGLDeviceContext::resetContext();
    return isDone;
}

int run(const Options& options)
{
    if (!options.sheetPath.isEmpty())
    {
        const QString fault = vrkview::pictureFault(options.sheetPath);
        if (!fault.isEmpty())
            return fail(QStringLiteral("cannot write '%1': %2").arg(options.sheetPath, fault));
    }
    const QString fault = folderFault(options.outputFolder);
    if (!fault.isEmpty())
        return fail(QStringLiteral("cannot write to '%1': %2").arg(options.outputFolder, fault));

    QStringList files;
    QStringList remarks;
    {
        QString error;
        vrkview::HeadlessContext context;
        if (!context.create(error))
            return fail(QStringLiteral("cannot work: %1").arg(error));
        if (!work(options, files, remarks, error))
            return fail(error);
    }
    for (const QString& text : remarks)
        remark(text);
    for (const QString& file : files)
        std::printf("%s\n", qUtf8Printable(file));
    return EXIT_SUCCESS;
}

int runCommand(const QStringList& arguments)
{
    const ParsedOptions parsed = parseOptions(arguments, Harrow::Vrk::GLVersions::getVersion());
    if (parsed.outcome == ParsedOptions::Outcome::Error)
        return fail(parsed.text);
    if (parsed.outcome == ParsedOptions::Outcome::Run)
        return run(parsed.options);
    std::fputs(qUtf8Printable(parsed.text), stdout);
    return EXIT_SUCCESS;
}

} // namespace

} // namespace envmap

int main(int argc, char** argv)
{
    vrkview::setProgramName("vrk-envmap");
    // The library's log has warnings for everybody and details for developers, who set QT_LOGGING_RULES.
    QLoggingCategory::setFilterRules(QStringLiteral("default.debug=false"));
    QImageReader::setAllocationLimit(envmap::kImageMegabytes);
    const QCoreApplication application(argc, argv);
    const int exitCode = envmap::runCommand(QCoreApplication::arguments());
    Harrow::Vrk::DeleteAllRegisteredTextureRecognisers();
    return exitCode;
}
