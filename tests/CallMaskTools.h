// SPDX-License-Identifier: MIT
#pragma once

/// \file
/// Recorded calls without the addresses in them, which are not the same twice: each shows as "@".

#include "GLFunctions.h"
#include "support/CallLog.h"

#include <QRegularExpression>
#include <QString>
#include <QStringList>

#include <initializer_list>

namespace Harrow::Vrk::Test
{

inline QStringList masked(QStringList calls)
{
    static const QRegularExpression address(QStringLiteral("@[0-9a-f]+"));
    return calls.replaceInStrings(address, QStringLiteral("@"));
}

inline QStringList masked(const CallLog& calls)
{
    return masked(calls.list());
}

/// A call that ends with an address.
inline QString pointerCall(const char* function, std::initializer_list<GLint> numbers)
{
    QStringList texts;
    for (const GLint number : numbers)
        texts.append(CallLog::call("", number).mid(1).chopped(1));
    texts.append(QStringLiteral("@"));
    return QString::fromLatin1(function) + QLatin1Char('(') + texts.join(QStringLiteral(", ")) + QLatin1Char(')');
}

} // namespace Harrow::Vrk::Test
