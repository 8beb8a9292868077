// SPDX-License-Identifier: MIT
#pragma once

/// \file
/// The faces of a cube map, numbered in OpenGL's order: +X, -X, +Y, -Y, +Z, -Z. Not installed.

#include "GLFunctions.h"

namespace Harrow::Vrk
{

inline constexpr int kCubemapFaces = 6;

constexpr GLenum cubemapFaceTarget(int face)
{
    return GL_TEXTURE_CUBE_MAP_POSITIVE_X + static_cast<GLenum>(face);
}

} // namespace Harrow::Vrk
