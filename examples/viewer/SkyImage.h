// SPDX-License-Identifier: MIT
// A sky to light scenes with: late morning, blue above a bright haze, soft clouds, a warm glow around the sun, and
// warm grey ground below the horizon. Computed, so that the sources need no photograph.
#pragma once

#include "RadianceFile.h"

#include <QVector3D>

namespace vrkview
{

inline constexpr int kSkyWidth = 512;
inline constexpr int kSkyHeight = 256;

/// Towards the middle of the glow, of length 1. The sun itself is missing: whoever wants its light and its shadows has
/// a light of that direction.
QVector3D skySunDirection();

/// The light from a direction of length 1; +y is up. No channel reaches 60.
QVector3D skyLight(const QVector3D& direction);

/// The whole sky by longitude and latitude: the top row is up, the middle column towards +x, a quarter further to the
/// right +z.
LightImage makeSky(int width, int height);

} // namespace vrkview
