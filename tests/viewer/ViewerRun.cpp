// SPDX-License-Identifier: MIT
#include "ViewerRun.h"

#include <gtest/gtest.h>

#include <QProcess>
#include <QTemporaryDir>

#include <cstdlib>

namespace
{
constexpr int kPatienceMilliseconds = 240000; // sanitizer builds on a busy machine

ViewerRun runCommand(QStringList command, const Environment& environment)
{
    QProcessEnvironment childEnvironment = QProcessEnvironment::systemEnvironment();
    for (const auto& [name, value] : environment)
    {
        if (value.isNull())
            childEnvironment.remove(name);
        else
            childEnvironment.insert(name, value);
    }
    QProcess process;
    process.setProcessEnvironment(childEnvironment);
    process.setProgram(command.takeFirst());
    process.setArguments(command);
    process.start();

    ViewerRun run;
    run.ended = process.waitForFinished(kPatienceMilliseconds) && process.exitStatus() == QProcess::NormalExit;
    run.exitCode = process.exitCode();
    run.output = process.readAllStandardOutput();
    run.errors = process.readAllStandardError();
    if (process.state() != QProcess::NotRunning)
    {
        process.kill();
        process.waitForFinished();
    }
    return run;
}
} // namespace

ViewerRun runViewer(const QStringList& arguments, const Environment& environment, const QStringList& launcher)
{
    return runCommand(launcher + QStringList{QStringLiteral(VRKVIEW_PROGRAM)} + arguments, environment);
}

ViewerRun runProgram(const QString& program, const QStringList& arguments, const Environment& environment)
{
    return runCommand(QStringList{program} + arguments, environment);
}

QImage drawWithViewer(const QStringList& arguments, const Environment& environment)
{
    const QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("picture.png"));
    const ViewerRun run = runViewer(arguments + QStringList{QStringLiteral("--output"), path}, environment);
    EXPECT_TRUE(run.ended);
    EXPECT_EQ(run.exitCode, 0) << run.errors.constData();
    EXPECT_EQ(run.output, path.toUtf8() + "\n");
    const QImage picture(path);
    EXPECT_FALSE(picture.isNull());
    return picture.convertToFormat(QImage::Format_RGB32);
}

Difference difference(const QImage& a, const QImage& b)
{
    Difference result;
    if (a.isNull() || a.size() != b.size())
        return result;
    result.largest = 0;
    qint64 sum = 0;
    for (int y = 0; y < a.height(); ++y)
    {
        for (int x = 0; x < a.width(); ++x)
        {
            const QRgb p = a.pixel(x, y);
            const QRgb q = b.pixel(x, y);
            for (const int step :
                 {std::abs(qRed(p) - qRed(q)), std::abs(qGreen(p) - qGreen(q)), std::abs(qBlue(p) - qBlue(q))})
            {
                result.largest = qMax(result.largest, step);
                sum += step;
            }
        }
    }
    result.mean = double(sum) / (3.0 * a.width() * a.height());
    return result;
}
