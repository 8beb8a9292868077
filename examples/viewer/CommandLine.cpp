// SPDX-License-Identifier: MIT
#include "CommandLine.h"

#include <QCommandLineParser>
#include <QRegularExpression>

#include <cmath>

namespace vrkview
{

bool ValueReader::isSet(const char* name) const
{
    return _parser.isSet(QLatin1String(name));
}

QString ValueReader::text(const char* name) const
{
    return _parser.value(QLatin1String(name));
}

void ValueReader::read(const char* name, int lowest, int highest, int& value)
{
    if (!isSet(name))
        return;
    bool isNumber = false;
    const int number = text(name).toInt(&isNumber);
    if (!isNumber || number < lowest || number > highest)
        reject(name, QStringLiteral("a whole number from %1 to %2").arg(lowest).arg(highest));
    else
        value = number;
}

void ValueReader::read(const char* name, float lowest, float highest, float& value)
{
    std::optional<float> number;
    read(name, lowest, highest, number);
    value = number.value_or(value);
}

void ValueReader::read(const char* name, float lowest, float highest, std::optional<float>& value)
{
    if (!isSet(name))
        return;
    bool isNumber = false;
    const float number = text(name).toFloat(&isNumber);
    if (!isNumber || !std::isfinite(number) || number < lowest || number > highest)
        reject(name, QStringLiteral("a number from %1 to %2").arg(lowest).arg(highest));
    else
        value = number;
}

void ValueReader::read(const char* name, int largestSide, const char* example, QSize& value)
{
    if (!isSet(name))
        return;
    static const QRegularExpression pattern(QStringLiteral("^([0-9]{1,7})x([0-9]{1,7})$"));
    const QRegularExpressionMatch match = pattern.match(text(name));
    const QSize size(match.captured(1).toInt(), match.captured(2).toInt());
    if (size.isEmpty() || size.width() > largestSide || size.height() > largestSide)
        reject(name, QStringLiteral("WIDTHxHEIGHT in pixels, such as %1").arg(QLatin1String(example)));
    else
        value = size;
}

void ValueReader::read(const char* name, const char* wanted, QString& value)
{
    if (!isSet(name))
        return;
    if (text(name).isEmpty())
        reject(name, QString::fromLatin1(wanted));
    else
        value = text(name);
}

void ValueReader::reject(const char* name, const QString& wanted)
{
    reject(QStringLiteral("--%1 '%2' is not %3").arg(QLatin1String(name), text(name), wanted));
}

void ValueReader::reject(const QString& error)
{
    if (_error.isEmpty())
        _error = error;
}

} // namespace vrkview
