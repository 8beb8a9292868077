// SPDX-License-Identifier: MIT
#include "PictureMark.h"

#include <QColor>
#include <QRect>

namespace deeppick
{

namespace
{

constexpr int kGap = 4; // pixels from the pixel to the arms
constexpr int kArm = 12;

void fill(QImage& picture, const QRect& area, Qt::GlobalColor color)
{
    const QRect inside = area & picture.rect();
    for (int y = inside.top(); y <= inside.bottom(); ++y)
        for (int x = inside.left(); x <= inside.right(); ++x)
            picture.setPixelColor(x, y, color);
}

} // namespace

void markPixel(QImage& picture, const QPoint& pixel)
{
    for (const auto& [rim, color] : {std::pair(1, Qt::black), std::pair(0, Qt::white)})
    {
        const QRect across(0, 0, kArm + 2 * rim, 1 + 2 * rim);
        for (const int first : {kGap, -kGap - kArm + 1})
        {
            fill(picture, across.translated(pixel + QPoint(first - rim, -rim)), color);
            fill(picture, across.transposed().translated(pixel + QPoint(-rim, first - rim)), color);
        }
    }
}

} // namespace deeppick
