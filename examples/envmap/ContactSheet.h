// SPDX-License-Identifier: MIT
// Pictures of light side by side on one sheet, each with a line of text above it; and what light looks like on a
// screen.
#pragma once

#include <RadianceFile.h>

#include <QImage>
#include <QSize>
#include <QString>

#include <vector>

namespace envmap
{

using vrkview::LightImage;

/// Light up to 1 as sRGB; what is brighter becomes 1.
QImage clippedImage(const LightImage& light, float exposure);

/// The same with the bright end bent, so that a sky keeps its colours beside the sun.
QImage softImage(const LightImage& light, float exposure);

/// Numbers from 0 to 1 as 16 bits a channel, not sRGB.
QImage numbersImage(const LightImage& numbers);

/// Rows of pictures, from the left and from the top. All scaled to the place that they are given: smoothly when that is
/// smaller, else so that texels stay squares.
class ContactSheet
{
public:
    explicit ContactSheet(const QString& title);

    /// Beside the one before, or in a new row where that leaves no place.
    void add(const QImage& picture, const QString& label, const QSize& size);

    QImage draw() const;

    static constexpr int kWidth = 1200;
    static constexpr int kMargin = 24;
    static constexpr int kGap = 16;
    static constexpr int kInnerWidth = kWidth - 2 * kMargin;

private:
    struct Cell
    {
        QImage picture;
        QString label;
        QRect place;
    };

    QString _title;
    std::vector<Cell> _cells;
    int _top;
    int _left = kMargin;
    int _bottom;
};

} // namespace envmap
