// SPDX-License-Identifier: MIT
#pragma once

/// \file
/// Changing a texture on the GPU: one full-screen pass of a fragment shader from a source texture into a new one that
/// takes its place; and the plain copy without a shader.

#include "Export.h"
#include "GLFunctions.h"
#include "TextureFormat.h"

#include <QHash>

QT_FORWARD_DECLARE_CLASS(QString)
QT_FORWARD_DECLARE_CLASS(QVariant)

/// All need a current context and loaded functions, and call OpenGL on the calling thread. Textures are single-sample
/// `GL_TEXTURE_2D`. Null textures and programs are reported, and nothing is done.
namespace Harrow::Vrk
{

class ShaderProgram;
class Texture;

/// Copies `width` by `height` texels from the lower left corner of one texture's base level to that of another, with
/// nearest filtering. `format` tells whether they hold depth, depth with stencil, or colour. Leaves the default
/// framebuffer bound.
VRKGL_EXPORT void BlitTexture(const Texture* source, const Texture* destination, TextureFormat format, int width,
                              int height);

/// \name Shaders for `ProcessTexture`
/// A program of "passthroughVS.glslc" and a fragment stage, which has
///
///     in vec2 vo_TexCoord;
///     uniform sampler2D u_Src;
///     out vec4 out_FragColor;
///
/// It belongs to the caller. Null when it does not compile or link.
///@{
/// `path` is looked for as by `ShaderProgram::addShaderFromFile`. Beyond what the program itself reports of a failed
/// build, says nothing. A file that is not found is reported by the program too; the vertex stage then stays alone, and
/// drivers link that.
VRKGL_EXPORT ShaderProgram* MakeTextureShaderFromFile(const QString& path);
/// Beyond what the program itself reports, warns "shader program failed to compile:\n%s" or "shader program failed to
/// link:\n%s" with its log, whatever the logging switch says.
VRKGL_EXPORT ShaderProgram* MakeTextureShaderFromString(const QString& fragmentSource);
///@}

/// Draws the base level of `source` through `program` into that of `destination`, and makes the mipmaps of that. The
/// pass covers the size of `source`, whatever that of `destination`. `uniforms` are set by name; `u_Src` is always the
/// source. Draws nothing, after a report, when the program or `source` cannot be bound or no quad can be had.
///
/// Culling, scissor test and colour mask are not touched, and hold for the pass as well.
/// Leaves blending off, depth test and depth writes on, the clear colour opaque black, the viewport at the size of
/// `source`, no program, and the default framebuffer bound.
VRKGL_EXPORT void ProcessTexture(ShaderProgram* program, const QHash<QString, QVariant>& uniforms, Texture* source,
                                 Texture* destination);

/// An empty texture with the size of level `level` of `source`, its filters, wrap modes and range of levels, and with
/// storage for that level alone. `internalFormat` 0 stands for the source's, or for `GL_RGBA` if that is compressed.
/// Belongs to the caller. Null when no texture unit is free.
VRKGL_EXPORT Texture* WritableCopyOfTexture(Texture* source, GLenum internalFormat, int level);

/// \name In place
/// Each puts a new texture with mipmaps, as far as its range of levels goes, in the place of `texture`, deletes the old
/// one, and returns true. False, with the texture unharmed, for null and when the pass cannot be made. They leave
/// OpenGL's state as `ProcessTexture` does.
///@{
VRKGL_EXPORT bool FlipY(Texture*& texture);
/// Colour to the power 1 / 2.4 and alpha as it is. Neither this nor the next has a linear segment near black.
VRKGL_EXPORT bool LinearToSrgb(Texture*& texture);
/// Colour and alpha to the power 2.4.
VRKGL_EXPORT bool SrgbToLinear(Texture*& texture);
/// Colour times alpha.
VRKGL_EXPORT bool Premultiply(Texture*& texture);
/// Colour from the range 0 to 1 to the range `low` to `high`; nothing is clamped but by the texture's format. False,
/// and nothing is done, for 0 and 1.
VRKGL_EXPORT bool RemapColorRange(Texture*& texture, float low, float high);
///@}

} // namespace Harrow::Vrk
