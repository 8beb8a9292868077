// SPDX-License-Identifier: MIT
#pragma once

/// \file
/// What the suites share that state all calls of a load: calls that write to an address of their own, without it, and
/// the calls about names and the unpack alignment.

#include "GLFunctions.h"
#include "support/CallLog.h"

#include <QString>
#include <QStringList>

namespace Harrow::Vrk::Test
{

/// With "..." for what stands behind the first argument where a call writes there, or reads names from there.
inline QStringList withoutAddresses(const QStringList& calls)
{
    QStringList result;
    for (const QString& call : calls)
    {
        const bool hasAddress = call.startsWith(QStringLiteral("glGetIntegerv(")) ||
                                call.startsWith(QStringLiteral("glGenTextures(")) ||
                                call.startsWith(QStringLiteral("glDeleteTextures("));
        result.append(hasAddress ? call.left(call.indexOf(QLatin1Char(','))) + QStringLiteral(", ...)") : call);
    }
    return result;
}

/// A call whose last argument is not stated.
inline QString opened(QString call)
{
    call.chop(1);
    return call + QStringLiteral(", ...)");
}

inline QString query(GLenum name)
{
    return opened(CallLog::call("glGetIntegerv", name));
}

inline QString alignment(int bytes)
{
    return CallLog::call("glPixelStorei", GL_UNPACK_ALIGNMENT, bytes);
}

inline const QString kGen = QStringLiteral("glGenTextures(1, ...)");
inline const QString kDelete = QStringLiteral("glDeleteTextures(1, ...)");

} // namespace Harrow::Vrk::Test
