// SPDX-License-Identifier: MIT
#include "Terminal.h"

#include <QSet>

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#ifdef Q_OS_WIN
#include <io.h>
#else
#include <unistd.h>
#endif

namespace vrkview
{

namespace
{

constexpr qint64 kQuietMilliseconds = 500;

const char* programName = "vrkview";
QStringList keptMessages;
QString fatalReplacement;

void keepMessage(QtMsgType type, const QMessageLogContext&, const QString& text)
{
    if (type == QtFatalMsg && !fatalReplacement.isEmpty())
        std::_Exit(fail(fatalReplacement));
    keptMessages.append(text);
}

/// In a signal's handler nothing may be formatted or allocated.
void tellAbort(int)
{
    constexpr char kText[] = ": the picture is broken: a run of equal bytes goes beyond its row\n";
#ifdef Q_OS_WIN
    _write(_fileno(stderr), programName, unsigned(std::strlen(programName)));
    _write(_fileno(stderr), kText, sizeof(kText) - 1);
#else
    [[maybe_unused]] const ssize_t written[] = {write(STDERR_FILENO, programName, std::strlen(programName)),
                                                write(STDERR_FILENO, kText, sizeof(kText) - 1)};
#endif
    std::_Exit(EXIT_FAILURE);
}

bool errorsGoToTerminal()
{
#ifdef Q_OS_WIN
    return _isatty(_fileno(stderr)) != 0;
#else
    return isatty(STDERR_FILENO) != 0;
#endif
}

QByteArray asOneLine(QString text)
{
    for (QChar& character : text)
        if (character.category() == QChar::Other_Control || character == QChar::LineSeparator ||
            character == QChar::ParagraphSeparator)
            character = QLatin1Char(' ');
    return text.trimmed().toLocal8Bit();
}

} // namespace

void setProgramName(const char* name)
{
    programName = name;
}

int fail(const QString& text)
{
    remark(text);
    return EXIT_FAILURE;
}

void remark(const QString& text)
{
    std::fprintf(stderr, "%s: %s\n", programName, asOneLine(text).constData());
    std::fflush(stderr);
}

void remarkOnce(const QString& text)
{
    static QSet<QString> told;
    if (told.contains(text))
        return;
    told.insert(text);
    remark(text);
}

ProgressLine::ProgressLine()
{
    _sinceStart.start();
}

ProgressLine::~ProgressLine()
{
    if (_shown)
        std::fputs("\r\033[K", stderr);
}

void ProgressLine::show(const QString& work, float fraction)
{
    const int percent = fraction >= 0.0f ? int(100.0f * qMin(fraction, 1.0f)) : -1;
    if (_sinceStart.elapsed() < kQuietMilliseconds || (_shown && percent == _percent) || !errorsGoToTerminal())
        return;
    _shown = true;
    _percent = percent;
    if (percent < 0)
        std::fprintf(stderr, "\r\033[K%s ...", qPrintable(work));
    else
        std::fprintf(stderr, "\r\033[K%s %d %%", qPrintable(work), percent);
    std::fflush(stderr);
}

AbortScope::AbortScope() : _before(std::signal(SIGABRT, tellAbort)) {}

AbortScope::~AbortScope()
{
    std::signal(SIGABRT, _before);
}

QuietScope::QuietScope(const QString& fatalText)
{
    keptMessages.clear();
    fatalReplacement = fatalText;
    _before = qInstallMessageHandler(keepMessage);
}

QuietScope::~QuietScope()
{
    qInstallMessageHandler(_before);
    fatalReplacement.clear();
}

const QStringList& QuietScope::messages() const
{
    return keptMessages;
}

} // namespace vrkview
