// SPDX-License-Identifier: MIT
#include "TextImage.h"

#include <QFont>
#include <QFontMetrics>
#include <QPainter>
#include <QRawFont>

#include <algorithm>
#include <cmath>

namespace vrkview
{

namespace
{

constexpr double kLetterPixels = 14.0; // device independent
constexpr double kLeastLetterPixels = 7.0;
constexpr double kPadding = 0.8; // in letters
constexpr double kGap = 1.4;
constexpr double kShrink = 0.92;

constexpr QRgb kGround = qRgba(12, 14, 18, 205);
constexpr QRgb kLeftColor = qRgba(255, 214, 138, 255);
constexpr QRgb kRightColor = qRgba(232, 236, 242, 255);

bool isHeading(const TextRow& row)
{
    return row.right.isEmpty();
}

/// Where there are no fonts Qt draws boxes, which map no characters to glyphs.
bool hasLetters(const QFont& font)
{
    return !QRawFont::fromFont(font).fontTable("cmap").isEmpty();
}

/// Where everything goes, in pixels.
struct Layout
{
    QFont font;
    int padding = 0;
    int rowHeight = 0;
    int rightColumn = 0;
    QSize size;
};

Layout layOut(const TextRows& rows, double letterPixels)
{
    Layout layout;
    layout.font.setPixelSize(std::max(1, int(std::lround(letterPixels))));
    const QFontMetrics metrics(layout.font);
    int left = 0;
    int right = 0;
    int whole = 0;
    for (const TextRow& row : rows)
    {
        int& widest = isHeading(row) ? whole : left;
        widest = std::max(widest, metrics.horizontalAdvance(row.left));
        right = std::max(right, metrics.horizontalAdvance(row.right));
    }
    layout.padding = int(kPadding * letterPixels);
    layout.rowHeight = metrics.height();
    layout.rightColumn = left + int(kGap * letterPixels);
    layout.size = QSize(std::max(whole, right > 0 ? layout.rightColumn + right : left) + 2 * layout.padding,
                        int(rows.size()) * layout.rowHeight + 2 * layout.padding);
    return layout;
}

bool fits(const QSize& size, const QSize& room)
{
    return size.width() <= room.width() && size.height() <= room.height();
}

} // namespace

QImage drawText(const TextRows& rows, const QSize& room, double devicePixelRatio)
{
    if (rows.isEmpty() || room.isEmpty() || !hasLetters(QFont()))
        return {};
    double letterPixels = kLetterPixels * devicePixelRatio;
    Layout layout = layOut(rows, letterPixels);
    while (!fits(layout.size, room) && letterPixels * kShrink >= kLeastLetterPixels * devicePixelRatio)
    {
        letterPixels *= kShrink;
        layout = layOut(rows, letterPixels);
    }

    QImage image(layout.size.boundedTo(room), QImage::Format_RGBA8888_Premultiplied);
    if (image.isNull())
        return {};
    image.fill(QColor::fromRgba(kGround));
    QPainter painter(&image);
    painter.setFont(layout.font);
    const int ascent = QFontMetrics(layout.font).ascent();
    int baseline = layout.padding + ascent;
    for (const TextRow& row : rows)
    {
        painter.setPen(QColor::fromRgba(isHeading(row) ? kRightColor : kLeftColor));
        painter.drawText(layout.padding, baseline, row.left);
        painter.setPen(QColor::fromRgba(kRightColor));
        painter.drawText(layout.padding + layout.rightColumn, baseline, row.right);
        baseline += layout.rowHeight;
    }
    return image;
}

} // namespace vrkview
