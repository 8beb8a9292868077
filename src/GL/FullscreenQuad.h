// SPDX-License-Identifier: MIT
#pragma once

/// \file
/// The quad that operations on whole textures draw through. Not installed.

#include <QSharedPointer>

namespace Harrow::Vrk
{

class DrawBuffers;
class ShaderProgram;

/// A quad of the caller's own over the whole viewport, with the arrays that `program` reads enabled; nothing stays
/// bound. Null, after an assertion that names `operation`, at exit, and when the factory of a subclass gave none or one
/// without a vertex array.
QSharedPointer<DrawBuffers> newFullscreenQuadFor(const ShaderProgram& program, const char* operation);

} // namespace Harrow::Vrk
