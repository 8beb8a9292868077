// SPDX-License-Identifier: MIT
// What the viewer says to a person: one line on standard error for a failure, a progress line on a terminal, and
// messages of Qt and of the driver kept back where they would only repeat that failure.
#pragma once

#include <QElapsedTimer>
#include <QString>
#include <QStringList>

#include <QtGlobal>

namespace vrkview
{

/// What the lines of this program begin with, in place of "vrkview". `name` must last as long as the program.
void setProgramName(const char* name);

/// Writes "vrkview: " and `text` as exactly one line to standard error; line breaks and other control characters in
/// `text` become blanks. Returns 1, the exit code of every failure.
int fail(const QString& text);

/// The same for a remark that is no failure.
void remark(const QString& text);

/// The same for what stays true as a scene is built anew: each text is told once in the program's life. On the thread
/// that runs `main`.
void remarkOnce(const QString& text);

/// A line on standard error that is written over as work goes on. Shows nothing unless standard error is a terminal
/// and the work has already taken a moment; clears its line at the end.
class ProgressLine
{
public:
    ProgressLine();
    ~ProgressLine();
    ProgressLine(const ProgressLine&) = delete;
    ProgressLine& operator=(const ProgressLine&) = delete;

    /// `fraction` is the part done, 0 to 1; below 0 it is unknown.
    void show(const QString& work, float fraction);

private:
    QElapsedTimer _sinceStart;
    bool _shown = false;
    int _percent = -1;
};

/// A broken picture can make the library's reader of Radiance files end the process by `abort`, and that is how it is
/// meant to be. While this lives, the process then ends with one line and the exit code of a failure. One at a time.
class AbortScope
{
public:
    AbortScope();
    ~AbortScope();
    AbortScope(const AbortScope&) = delete;
    AbortScope& operator=(const AbortScope&) = delete;

private:
    void (*_before)(int);
};

/// Keeps Qt's messages of its lifetime off standard error and holds them, so that a step that fails is told in one
/// line. While `fatalText` was given, a fatal message of Qt (which would abort the process) ends it through `fail`
/// with that text instead. One at a time, on the thread that runs `main`.
class QuietScope
{
public:
    explicit QuietScope(const QString& fatalText = QString());
    ~QuietScope();
    QuietScope(const QuietScope&) = delete;
    QuietScope& operator=(const QuietScope&) = delete;

    /// What was kept back, in order.
    const QStringList& messages() const;

private:
    QtMessageHandler _before;
};

} // namespace vrkview
