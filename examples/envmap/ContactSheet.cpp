// SPDX-License-Identifier: MIT
#include "ContactSheet.h"

#include "PixelFont.h"

#include <QPainter>
#include <QRgba64>

#include <algorithm>
#include <cmath>

namespace envmap
{

namespace
{

constexpr QRgb kPaper = 0xff1d1f22;
constexpr QRgb kInk = 0xffd9dcdf;
constexpr int kTitleScale = 3;
constexpr int kLabelScale = 2;
constexpr int kLabelSpace = kLabelHeight * kLabelScale + 8;
constexpr float kBend = 0.7f;

float srgb(float linear)
{
    const float light = std::clamp(linear, 0.0f, 1.0f);
    return light <= 0.0031308f ? 12.92f * light : 1.055f * std::pow(light, 1.0f / 2.4f) - 0.055f;
}

float bent(float light)
{
    return light < kBend ? light : 1.0f - (1.0f - kBend) * std::exp(-(light - kBend) / (3.0f * (1.0f - kBend)));
}

template <typename Shown> QImage imageOf(const LightImage& light, float exposure, const Shown& shown)
{
    const float factor = std::exp2(exposure);
    QImage image(light.width, light.height, QImage::Format_RGB32);
    for (int y = 0; y < light.height; ++y)
    {
        for (int x = 0; x < light.width; ++x)
        {
            int bytes[3] = {};
            for (int i = 0; i < 3; ++i)
                bytes[i] = int(std::lround(255.0f * srgb(shown(factor * light.at(x, y)[i]))));
            image.setPixel(x, y, qRgb(bytes[0], bytes[1], bytes[2]));
        }
    }
    return image;
}

} // namespace

QImage clippedImage(const LightImage& light, float exposure)
{
    return imageOf(light, exposure, [](float value) { return value; });
}

QImage softImage(const LightImage& light, float exposure)
{
    return imageOf(light, exposure, bent);
}

QImage numbersImage(const LightImage& numbers)
{
    QImage image(numbers.width, numbers.height, QImage::Format_RGBX64);
    for (int y = 0; y < numbers.height; ++y)
    {
        auto* const row = reinterpret_cast<QRgba64*>(image.scanLine(y));
        for (int x = 0; x < numbers.width; ++x)
        {
            const float* const rgb = numbers.at(x, y);
            const auto bits = [](float value)
            { return quint16(std::lround(65535.0f * std::clamp(value, 0.0f, 1.0f))); };
            row[x] = qRgba64(bits(rgb[0]), bits(rgb[1]), bits(rgb[2]), 0xffff);
        }
    }
    return image;
}

ContactSheet::ContactSheet(const QString& title)
    : _title(title), _top(kMargin + kLabelHeight * kTitleScale + kGap), _bottom(_top)
{
}

void ContactSheet::add(const QImage& picture, const QString& label, const QSize& size)
{
    const int width = std::max(size.width(), std::min(labelWidth(label, kLabelScale), kInnerWidth));
    if (_left > kMargin && _left + width > kWidth - kMargin)
    {
        _left = kMargin;
        _top = _bottom + kGap;
    }
    const QRect place(QPoint(_left, _top + kLabelSpace), size);
    _cells.push_back({picture, label, place});
    _left += width + kGap;
    _bottom = std::max(_bottom, place.bottom() + 1);
}

QImage ContactSheet::draw() const
{
    QImage sheet(kWidth, _bottom + kMargin, QImage::Format_RGB32);
    sheet.fill(kPaper);
    QPainter painter(&sheet);
    drawLabel(painter, QPoint(kMargin, kMargin), _title, kTitleScale, QColor(kInk));
    for (const Cell& cell : _cells)
    {
        drawLabel(painter, QPoint(cell.place.left(), cell.place.top() - kLabelSpace), cell.label, kLabelScale,
                  QColor(kInk));
        const bool isReduced = cell.picture.width() > cell.place.width();
        painter.drawImage(cell.place.topLeft(),
                          cell.picture.scaled(cell.place.size(), Qt::IgnoreAspectRatio,
                                              isReduced ? Qt::SmoothTransformation : Qt::FastTransformation));
    }
    return sheet;
}

} // namespace envmap
