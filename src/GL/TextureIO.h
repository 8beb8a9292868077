// SPDX-License-Identifier: MIT
#pragma once

/// \file
/// Textures from image files and from memory. Recognisers, in the order of their registration, decide by content who
/// reads a file; what none of them claims is left to Qt's image plugins.

#include "Export.h"

#include <QString>

#include <cstddef>

QT_FORWARD_DECLARE_CLASS(QColor)
QT_FORWARD_DECLARE_CLASS(QImage)

namespace Harrow::Vrk
{

class Texture;
class TextureLoader;
class TextureRecogniser;
struct TextureFileInfo;

/// \name Recognisers
/// The registry takes no lock: it is filled at the start and read afterwards.
///@{
/// Puts `recogniser` behind those registered before, unless it is among them, and takes it over. A `suffix` that is not
/// empty, in any case of letters and without its dot, lets it be asked first for such files, in place of whoever had
/// the suffix before. One recogniser may have several suffixes. Null is reported and not registered.
VRKGL_EXPORT void RegisterTextureRecogniser(TextureRecogniser* recogniser, const QString& suffix);
/// Deletes all recognisers, for the end of the application. The suffixes keep their entries, so that a suffix is to be
/// registered anew before the next file is loaded; one that is not is reported, and gives no precedence.
VRKGL_EXPORT void DeleteAllRegisteredTextureRecognisers();
///@}

/// \name Loaders
/// The loader of the first recogniser that claims the bytes, or null. It belongs to the caller, and the mapping of the
/// file to it. For a file the recogniser of its suffix is asked first; a wrong suffix does no harm.
///@{
VRKGL_EXPORT TextureLoader* IdentifyTextureFromFile(const QString& path);
/// `data` stays the caller's, must outlive the loader, and may be written to by it.
VRKGL_EXPORT TextureLoader* IdentifyTextureFromMemory(unsigned char* data, size_t size, const QString& name);
///@}

/// \name Textures
/// Each makes a texture that belongs to the caller, or gives null. They need a current context and loaded functions.
/// Qt limits the size of a decoded image (`QImageReader::allocationLimit`).
///@{
/// Warns "File %s not found" and, for what Qt cannot decode either, "Failed to load %s"; says in the debug log
/// "Data appears invalid for texture file '%s'" when the loader refuses the data, and how long a texture has taken (all
/// guarded).
VRKGL_EXPORT Texture* LoadTextureFromFile(const QString& path, const TextureFileInfo& info);
/// What no recogniser claims gives null: Qt's image plugins are not asked. `name` is for the log ("Unable to recognise
/// the file format for texture data '%s'", "Data appears invalid for texture data '%s'"); an empty one shows as
/// "<unnamed>". `data` may be written to.
VRKGL_EXPORT Texture* LoadTextureFromMemory(unsigned char* data, size_t size, const TextureFileInfo& info,
                                            const QString& name);
/// By Qt's image plugins alone; the picture's bottom row comes first, as OpenGL has it. Warns "Failed to load %s"
/// (guarded), also of pipes and devices, which don't count as files.
VRKGL_EXPORT Texture* LoadTextureFromQImageFile(const QString& path, const TextureFileInfo& info);
/// A 2D texture with mipmaps, of which the levels 0 to 4 are used, trilinear, clamped to the edge, with the image's
/// first row as the bottom row. The image has 32 bits per pixel, any other is reported and gives null; its bytes count
/// as those of `QImage::Format_ARGB32` or, with `asRG16F`, as two half floats packed by the caller. Null too when no
/// texture unit is free. Leaves the unpack alignment as it was, and OpenGL's state as `RemapColorRange` does when
/// `info` asks for another colour range.
VRKGL_EXPORT Texture* QImageToTexture(const QImage& image, bool asRG16F, const TextureFileInfo& info);
/// One texel of `color`, made as by `QImageToTexture`.
VRKGL_EXPORT Texture* MakeColorTexture(const QColor& color);
///@}

/// \name Names of baked files
/// What an application has prepared from an image stands beside it under a name that says so: "a/b.png" baked to ".ktx"
/// for 4-fold anisotropy is "a/b[baked][aniso4].ktx".
///@{
/// Marks a baked file: "[baked]".
extern VRKGL_EXPORT const QString kBakedKeyword;
/// The name for `path`, which has an extension, baked to a file type: `suffix` has its own dot. `anisotropy` is named
/// when it is above 0.
VRKGL_EXPORT QString GetBakedImagePath(const QString& path, const QString& suffix, int anisotropy);
/// Whether the mark is anywhere in the path, in lower case.
VRKGL_EXPORT bool IsBakedImagePath(const QString& path);
/// The anisotropy that a path names; -1 if it names none, 0 if what it names is no number.
VRKGL_EXPORT int GetAnisoLevel(const QString& path);
///@}

} // namespace Harrow::Vrk
