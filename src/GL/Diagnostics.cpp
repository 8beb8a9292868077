// SPDX-License-Identifier: MIT
#include "Diagnostics.h"

#include <QMessageLogger>
#include <QProcessEnvironment>
#include <QString>
#include <QVariant>

#include <cstdarg>
#include <cstring>

namespace
{

const char* withoutFolders(const char* file)
{
    const char* const slash = std::strrchr(file, '/');
    return slash ? slash + 1 : file;
}

using Write = void (QMessageLogger::*)(const char*, ...) const;

/// One line "[file:line] message" at the level of `write`. The logger gets no place of its own: file and line are part
/// of the text.
void writeLine(Write write, const char* file, int line, const QString& message)
{
    const QMessageLogger logger(nullptr, 0, nullptr);
    (logger.*write)("[%s:%d] %s", withoutFolders(file), line, message.toLocal8Bit().constData());
}

void formatLine(Write write, const char* file, int line, const char* format, va_list arguments)
{
    writeLine(write, file, line, QString::vasprintf(format, arguments));
}

} // namespace

bool isLoggingEnabled()
{
    static const bool enabled = QVariant(QProcessEnvironment::systemEnvironment().value(
                                             QStringLiteral("VRK_ENABLE_LOGGING"), QString::number(1)))
                                    .toBool();
    return enabled;
}

namespace Harrow::Vrk::Detail
{

void logDebug(const char* file, int line, const char* format, ...)
{
    va_list arguments;
    va_start(arguments, format);
    formatLine(&QMessageLogger::debug, file, line, format, arguments);
    va_end(arguments);
}

void logWarning(const char* file, int line, const char* format, ...)
{
    va_list arguments;
    va_start(arguments, format);
    formatLine(&QMessageLogger::warning, file, line, format, arguments);
    va_end(arguments);
}

void logCritical(const char* file, int line, const char* format, ...)
{
    va_list arguments;
    va_start(arguments, format);
    formatLine(&QMessageLogger::critical, file, line, format, arguments);
    va_end(arguments);
}

void assertionFailed(const char* file, int line, const char* condition, const char* format, ...)
{
    const QString conditionText = QString::fromUtf8(condition).replace(QLatin1Char('%'), QStringLiteral("\\%"));
    va_list arguments;
    va_start(arguments, format);
    const QString message = QString::vasprintf(format, arguments);
    va_end(arguments);
    // Built by concatenation: neither text may be read as a format again.
    writeLine(&QMessageLogger::critical, file, line,
              QStringLiteral("[ !! ] Assertion '") + conditionText + QStringLiteral("' failed: ") + message);
}

} // namespace Harrow::Vrk::Detail
