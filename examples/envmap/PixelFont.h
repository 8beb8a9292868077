// SPDX-License-Identifier: MIT
// Letters for the labels of pictures, five pixels by seven: the same on every machine, with or without fonts.
#pragma once

#include <QColor>
#include <QPainter>
#include <QPoint>
#include <QString>

namespace envmap
{

/// Draws `text` in capitals with its upper left corner at `corner`, each pixel of the font `scale` pixels wide. What
/// the font does not have is drawn as a box.
void drawLabel(QPainter& painter, const QPoint& corner, const QString& text, int scale, const QColor& color);

/// What that is wide.
int labelWidth(const QString& text, int scale);

inline constexpr int kLabelHeight = 7; ///< times the scale

} // namespace envmap
