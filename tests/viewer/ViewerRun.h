// SPDX-License-Identifier: MIT
// Runs vrkview, or a program beside it, as a child process and holds what it said.
#pragma once

#include <QByteArray>
#include <QImage>
#include <QList>
#include <QString>
#include <QStringList>

#include <utility>

struct ViewerRun
{
    bool ended = false; ///< by itself, neither killed nor crashed
    int exitCode = -1;
    QByteArray output;
    QByteArray errors;
};

/// Environment variables for the child on top of ours; a null value takes the variable away.
using Environment = QList<std::pair<QString, QString>>;

/// `launcher`, if given, is a command (and its arguments) that gets vrkview's command line appended.
ViewerRun runViewer(const QStringList& arguments, const Environment& environment = {},
                    const QStringList& launcher = {});

/// The same of another program, by its path.
ViewerRun runProgram(const QString& program, const QStringList& arguments, const Environment& environment = {});

/// Runs vrkview with `--output` into a temporary file and returns the picture; fails the test, and returns a null
/// image, where the run or its output is not as it should be.
QImage drawWithViewer(const QStringList& arguments, const Environment& environment = {});

/// Largest and mean difference of two pictures, over all channels, in steps of 255.
struct Difference
{
    int largest = 255;
    double mean = 255.0;
};
Difference difference(const QImage& a, const QImage& b);
