// SPDX-License-Identifier: MIT
#pragma once

/// \file
/// How the faces of a cube map lie in space, in an unfolded cross and in a row: the matrices that the shaders of the
/// cube map conversion get. Plain values, no OpenGL. Texture coordinate v is 0 at the first row of a picture, which is
/// its upper edge. Not installed.

#include "Export.h"

#include <QGenericMatrix>

namespace Harrow::Vrk
{

/// From the vector (1, s, t) of a face's pixel, s and t from -1 to 1 in the order of the face's texels, to the
/// direction that the pixel stands for.
VRKGL_EXPORT QMatrix3x3 cubemapFaceNormalMatrix(int face);

/// From a face's directions (x, y, z, 1), the largest of them 1 or -1, to the texture coordinates of the face in a
/// cross of 4 by 3 cells or, upright, of 3 by 4.
VRKGL_EXPORT QMatrix4x2 cubemapCrossMatrix(int face, bool portrait);

/// The same for six faces in one row.
VRKGL_EXPORT QMatrix4x2 cubemapLinearMatrix(int face);

/// From the vector (x, y, -1) of a pixel in a strip's cell, x to the right and y up, to the direction that it shows.
VRKGL_EXPORT QMatrix3x3 cubemapStripMatrix(int face);

} // namespace Harrow::Vrk
