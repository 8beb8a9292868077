// SPDX-License-Identifier: MIT
// Shows in a picture which pixel is meant.
#pragma once

#include <QImage>
#include <QPoint>

namespace deeppick
{

/// Draws a cross whose arms point at the pixel and leave it free, white with a black rim so that it shows on any
/// colour. What falls outside of the picture is left out.
void markPixel(QImage& picture, const QPoint& pixel);

} // namespace deeppick
