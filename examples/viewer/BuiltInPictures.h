// SPDX-License-Identifier: MIT
// The pictures on the surfaces of the built-in scene, computed. All but the frieze repeat without a seam.
#pragma once

#include <QImage>

namespace vrkview
{

/// Four slabs with joints, each of its own shade; grey, to be tinted.
QImage makeSlabs();

/// Veins that wander through a light stone; grey, to be tinted.
QImage makeVeins();

/// Chips of stone in many colours, set in cement.
QImage makeTerrazzo();

/// Boards with the grain of wood.
QImage makeWood();

/// Diagonal stripes of two colours.
QImage makeStripes();

/// The normals of a surface as high as `heights` is light: red to the right, green upwards, blue outwards. `depth` is
/// the slope from black to white within two texels.
QImage makeRelief(const QImage& heights, float depth);

/// How many pictures the frieze has.
constexpr int kFriezePictures = 10;

/// One of them: an ornament that goes on from the left edge to the right one, four times as wide as it is high.
QImage makeFrieze(int number);

} // namespace vrkview
