// SPDX-License-Identifier: MIT
// The spaces in which the library's shadow lights stand.
#pragma once

#include <QMatrix4x4>
#include <QVector3D>

namespace vrkview
{

// Each matrix leads from a light's own space to the world. `along` is of length one, in world space.

/// A sun shines along the z of its space.
QMatrix4x4 spaceOfSun(const QVector3D& place, const QVector3D& along);

/// A spot shines along -z, and its shadows end `farthest` world units away: the library's projection of a spot ends at
/// a fixed depth of the light's space, so that the scale of the space says how far that is.
QMatrix4x4 spaceOfSpot(const QVector3D& place, const QVector3D& along, float farthest);

/// A point shines to all sides. Its space is the world's, moved to its place.
QMatrix4x4 spaceOfPoint(const QVector3D& place);

} // namespace vrkview
