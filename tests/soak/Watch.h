// SPDX-License-Identifier: MIT
// What must not happen: an OpenGL error, or a warning, assertion or critical line in the log. Whatever happens is kept
// with the action and the frame in which it did.
#pragma once

#include <QString>
#include <QStringList>
#include <QtGlobal>

namespace vrksoak
{

/// One for the process. While it lives Qt's messages go to it; those of the debug level are dropped.
class Watch
{
public:
    Watch();
    ~Watch();
    Watch(const Watch&) = delete;
    Watch& operator=(const Watch&) = delete;

    /// What is going on from now on, for the faults to come. `what` outlives the watch.
    void now(int episode, int frame, const char* what);

    /// A warning that holds `text` is counted and no fault.
    void allow(const QString& text);

    /// Asks OpenGL for errors.
    void lookForErrors();

    void fault(const QString& text);

    long long faultCount() const
    {
        return _faultCount;
    }
    long long allowedCount() const
    {
        return _allowedCount;
    }

private:
    static void handle(QtMsgType type, const QMessageLogContext& context, const QString& text);
    bool isAllowed(const QString& text) const;

    static Watch* _instance;
    QtMessageHandler _previous;
    QStringList _allowed;
    long long _faultCount = 0;
    long long _allowedCount = 0;
    int _episode = 0;
    int _frame = 0;
    const char* _what = "start";
};

} // namespace vrksoak
