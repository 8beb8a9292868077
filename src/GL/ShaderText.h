// SPDX-License-Identifier: MIT
#pragma once

/// \file
/// Texts that the driver holds about shaders and programs, read into strings without trusting the lengths it tells.
/// Not installed.

#include "GLFunctions.h"

#include <QString>

#include <limits>

namespace Harrow::Vrk
{

/// No text or binary of a driver comes near this many bytes: a length beyond it is a mistake and not believed.
constexpr GLint kLongestDriverAnswer = 64 * 1024 * 1024;

/// A byte count as OpenGL takes it; what doesn't fit is cut.
inline GLsizei toGLsizei(qsizetype size)
{
    return static_cast<GLsizei>(qMin<qsizetype>(size, std::numeric_limits<GLsizei>::max()));
}

/// The info log of a shader or program, and the source that the driver holds of a shader, of which at most
/// `kLongestDriverAnswer` bytes are read. A name that is none gives an empty text.
QString readShaderLog(GLuint shader);
QString readShaderSource(GLuint shader);
QString readProgramLog(GLuint program);

} // namespace Harrow::Vrk
