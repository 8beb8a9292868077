// SPDX-License-Identifier: MIT
#pragma once

/// \file
/// Captures the exact lines that Qt's message handler gets while it is alive, from all threads. Captures nest.

#include <QList>
#include <QMutex>
#include <QString>
#include <QStringList>
#include <QtGlobal>

namespace Harrow::Vrk::Test
{

class LogCapture
{
public:
    struct Line
    {
        QtMsgType type;
        QString text;
    };

    LogCapture();
    ~LogCapture();
    LogCapture(const LogCapture&) = delete;
    LogCapture& operator=(const LogCapture&) = delete;

    QList<Line> lines() const;
    QStringList texts() const;
    QStringList texts(QtMsgType type) const;

    /// The texts without their leading "[File.cpp:123] ", so that a test states words and not line numbers.
    QStringList messages() const;
    QStringList messages(QtMsgType type) const;

    void clear();

private:
    static void handle(QtMsgType type, const QMessageLogContext& context, const QString& text);

    mutable QMutex _mutex;
    QList<Line> _lines;
    LogCapture* _outer;
    QtMessageHandler _previous;
};

/// How an assertion's line reads behind its place.
inline QString assertionLine(const QString& condition, const QString& message)
{
    return QStringLiteral("[ !! ] Assertion '") + condition + QStringLiteral("' failed: ") + message;
}

} // namespace Harrow::Vrk::Test
