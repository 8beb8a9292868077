// SPDX-License-Identifier: MIT
#include "support/CallLog.h"

namespace Harrow::Vrk::Test
{
namespace
{

thread_local CallLog* innermost = nullptr;

} // namespace

CallLog::CallLog() : _outer(innermost)
{
    innermost = this;
}

CallLog::~CallLog()
{
    innermost = _outer;
}

QStringList CallLog::named(const QStringList& functions) const
{
    QStringList result;
    for (const QString& call : _calls)
        if (functions.contains(call.left(call.indexOf(QLatin1Char('(')))))
            result.append(call);
    return result;
}

int CallLog::count(const QString& function) const
{
    return static_cast<int>(named({function}).size());
}

void CallLog::clear()
{
    _calls.clear();
}

bool CallLog::isRecording()
{
    return innermost != nullptr;
}

void CallLog::record(const QString& call)
{
    if (innermost)
        innermost->_calls.append(call);
}

QString CallLog::renderAddress(quintptr address)
{
    return address ? QStringLiteral("@") + QString::number(address, 16) : QStringLiteral("null");
}

QString CallLog::renderInteger(qint64 value)
{
    // Small numbers are counts and names, large ones enumerants.
    return value >= 256 ? QStringLiteral("0x") + QString::number(value, 16) : QString::number(value);
}

} // namespace Harrow::Vrk::Test
