// SPDX-License-Identifier: MIT
// Texts as a picture: two columns on a dark ground. Knows nothing of OpenGL.
#pragma once

#include <QImage>
#include <QList>
#include <QSize>
#include <QString>

namespace vrkview
{

/// What stands on one line. Without `right` it is a heading, or a remark, over both columns.
struct TextRow
{
    QString left;
    QString right;

    friend bool operator==(const TextRow& a, const TextRow& b)
    {
        return a.left == b.left && a.right == b.right;
    }
};

using TextRows = QList<TextRow>;

/// With colours multiplied by alpha, as `QImage::Format_RGBA8888_Premultiplied`. No larger than `room` in pixels:
/// letters shrink as far as they can be read, and what is still too large is cut off. Null without rows, without room,
/// and where there is no font. Wants a QGuiApplication.
QImage drawText(const TextRows& rows, const QSize& room, double devicePixelRatio);

} // namespace vrkview
