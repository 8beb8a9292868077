// SPDX-License-Identifier: MIT
#include "support/LogCapture.h"

#include <QMutexLocker>
#include <QRegularExpression>

#include <atomic>

namespace Harrow::Vrk::Test
{
namespace
{

std::atomic<LogCapture*> innermost = nullptr;

QStringList withoutPlaces(QStringList texts)
{
    static const QRegularExpression place(QStringLiteral("^\\[[^\\[\\]]*:\\d+\\] "));
    for (QString& text : texts)
        text.remove(place);
    return texts;
}

} // namespace

LogCapture::LogCapture() : _outer(innermost), _previous(qInstallMessageHandler(&LogCapture::handle))
{
    innermost = this;
}

LogCapture::~LogCapture()
{
    innermost = _outer;
    qInstallMessageHandler(_previous);
}

void LogCapture::handle(QtMsgType type, const QMessageLogContext&, const QString& text)
{
    LogCapture* const capture = innermost;
    if (!capture)
        return;
    const QMutexLocker lock(&capture->_mutex);
    capture->_lines.append({type, text});
}

QList<LogCapture::Line> LogCapture::lines() const
{
    const QMutexLocker lock(&_mutex);
    return _lines;
}

QStringList LogCapture::texts() const
{
    QStringList result;
    for (const Line& line : lines())
        result.append(line.text);
    return result;
}

QStringList LogCapture::texts(QtMsgType type) const
{
    QStringList result;
    for (const Line& line : lines())
        if (line.type == type)
            result.append(line.text);
    return result;
}

QStringList LogCapture::messages() const
{
    return withoutPlaces(texts());
}

QStringList LogCapture::messages(QtMsgType type) const
{
    return withoutPlaces(texts(type));
}

void LogCapture::clear()
{
    const QMutexLocker lock(&_mutex);
    _lines.clear();
}

} // namespace Harrow::Vrk::Test
