// SPDX-License-Identifier: MIT
// Where the texels of maps look, and what a map shows in a direction: plain geometry in double precision.
#pragma once

#include <RadianceFile.h>

#include <array>

namespace envmap
{

using Direction = std::array<double, 3>;
using Light = std::array<double, 3>;
using vrkview::LightImage;

inline double dot(const Direction& a, const Direction& b)
{
    return a[0] * b[0] + a[1] * b[1] + a[2] * b[2];
}

Direction normalized(const Direction& direction);

/// Through the place (s, t) of a face, each from -1 to 1, t growing from its first row to the last. Of length 1.
Direction faceDirection(int face, double s, double t);

/// For u and v from 0 to 1; v 1 is up, u 0.5 towards +x, u 0.75 towards +z.
Direction latLongDirection(double u, double v);

/// What six faces, or a picture by longitude and latitude (top row first), show by linear interpolation. Across the
/// edges of a cube it is that between texels of both faces.
Light cubeLight(const std::array<LightImage, 6>& faces, const Direction& direction);
Light latLongLight(const LightImage& picture, const Direction& direction);

/// The solid angle of a texel in steradians.
double faceTexelSolidAngle(int size, int x, int y);
double latLongTexelSolidAngle(int width, int height, int y);

} // namespace envmap
