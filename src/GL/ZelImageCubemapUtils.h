// SPDX-License-Identifier: MIT
#pragma once

/// \file
/// Environment images and cube maps: an image of one of several layouts into a cube map, a cube map filtered into a new
/// one or into an array of them, copied into a mip level of another, or unfolded into a row of its faces.

#include "Export.h"

#include <QList>
#include <QString>

// The window system's headers make a number of the word, which is an enumerator here.
#pragma push_macro("None")
#undef None

namespace Harrow::Vrk
{

class Texture;

/// How an environment lies in an image. The upper edge of the image is at texture coordinate v 0, its first row, but
/// for `Sphere`. Numbers are interface.
enum class ZelImageCubemapSourceType : int
{
    None,
    Cubemap,
    /// A mirror ball: x and y of the direction are the place, up at v 1. What lies before it and behind it is the same.
    Sphere,
    /// Twice as wide as high: +X at the left edge, +Z a quarter further, -Y at the lower edge. The texture's own wrap
    /// modes hold at the edges: u should repeat and v be clamped.
    LatLong,
    /// Six faces in a row, in OpenGL's order of faces, rows and columns.
    Linear,
    /// An unfolded cube, lying (4 by 3 cells) with -Z at the right, or upright (3 by 4) with -Z at the bottom.
    Cross
};

/// Which colours a source holds. Kept for the renderer of a conversion, and without effect.
enum class ZelImageCubemapColorSpace : int
{
    Linear,
    Gamma22,
    sRGB
};

/// All but the first four want a current context and loaded functions, and call OpenGL on the calling thread. A texture
/// that is returned belongs to the caller. Null textures are reported by an assertion, and the result is null or false.
/// A refusal is null or false as well, and leaves nothing behind; messages go to the debug log (guarded).
namespace ZelImageCubemapUtils
{

/// Whether a file of that name may hold a whole cube map, by its suffix alone: "dds" in any case of letters.
VRKGL_EXPORT bool canFileSupport3DCubemap(const QString& path);

/// The layouts to choose from, for a user: None, LatLong, Cross, Linear. `Sphere` is converted too, but not among them.
VRKGL_EXPORT QList<ZelImageCubemapSourceType> supportedTypes();

/// The name of a layout in the user's language; "Unknown" for a value outside the enumeration.
VRKGL_EXPORT QString typeAsString(ZelImageCubemapSourceType type);
/// The layout of that name, in the user's language and the same case of letters; None when there is none.
VRKGL_EXPORT ZelImageCubemapSourceType typeFromString(const QString& name);

/// \name New cube maps
/// `target` is `GL_TEXTURE_CUBE_MAP`, or `GL_TEXTURE_CUBE_MAP_ARRAY` where the context has those (OpenGL 4.0); null for
/// another one, after "[ !! ] Unhandled Texture Type 0x%X". The result has mipmaps, trilinear filtering and clamped
/// edges. The source is bound meanwhile, keeps the filters that it is read with, and must be complete with them.
///
/// The default framebuffer is bound afterwards and no program, blending is off, the clear colour is transparent black,
/// the viewport is one face, and `GL_TEXTURE_CUBE_MAP_SEAMLESS` is off after a filter. Scissor test, culling and colour
/// mask are not touched, and hold for the drawing as well. How long that took is logged as "rendercubemap() took %d
/// ms".
///
/// Null, besides, when no texture unit is free. Colours that the format cannot hold, or a format that cannot be drawn
/// into, are OpenGL's business.
///@{
/// From the base level of a 2D texture, read without interpolation, in its internal format; an array gets one cube. The
/// faces are a quarter of the source's width wide (a sixth for `Linear`; a quarter of the larger side for `Cross`), or
/// `maxSize` if that is positive and smaller. Null for `None` and `Cubemap` and for values outside the enumeration; and
/// for a `Cross` that is square or empty, after "[ !! ] Texture(%d,%d) not a 4:3 or 3:4 image. Cannot load cubemap.".
/// Other ratios are taken as they come, so a source too narrow gives faces of no size, which OpenGL refuses to draw
/// into.
VRKGL_EXPORT Texture* createGLCubemapFromTexture(Texture* source, ZelImageCubemapSourceType type, unsigned target,
                                                 ZelImageCubemapColorSpace colorSpace, int maxSize);

/// Meant to blur a cube map over growing cones. Its shader does not compile, by the names that it and the library use
/// for one number: the failure is reported as that of any shader, and the faces of the result, `GL_RGBA32F` and `size`
/// texels wide, are red, green, blue, yellow, cyan and magenta. An array gets `layers` cubes, at least 1. "[ !! ]
/// Unable to create cubemap blur from cubemap." when the result is null.
VRKGL_EXPORT Texture* createGLCubemapBlurFromGLCubemap(Texture* source, unsigned target, int size, int layers);

/// A cube map in `GL_RGBA32F`, `size` texels wide, whose texels are the weighted mean of the source over the hemisphere
/// about their direction, from at most 128 by 128 places on each side of the cube. The weight is a power of the cosine:
/// 1 for a plain cube map and the first cube of an array, 8192 for the last, and 2 to the power of 13 times the root of
/// order `power` of the place in between, from 0 to 1. Where all weights are nothing the source is taken in the
/// direction itself. An array gets `layers` cubes, at least 1. "[ !! ] Unable to create cubemap NDotL from cubemap."
/// when the result is null.
VRKGL_EXPORT Texture* createGLCubemapNDotLFromGLCubemap(Texture* source, unsigned target, int size, int layers,
                                                        float power);
///@}

/// One level of a cube map as a new 2D texture in its format, six faces in a row, the first row of the texture at the
/// lower edge: as for `Linear`, but upside down. The level is sampled with the source's own filters, so a level above 0
/// shows only where these use mipmaps. The texture filters linearly, with clamped edges, and its mipmaps are those from
/// before the drawing. Null when the source is no cube map or has no such level, when the format cannot be drawn into,
/// when the shader does not compile or link, or without a texture unit.
///
/// Leaves blending and depth test off, no depth writes, the clear colour opaque white, the default framebuffer bound
/// and no program. The viewport is restored.
VRKGL_EXPORT Texture* createGLCubemapStripFromTexture(Texture* source, int level);

/// Copies the base level of a cube map into level `level` of another one, which must have a level of that size and
/// internal format there. False when it does not, when one of the two is no cube map, when `level` is beyond the
/// destination's `GL_TEXTURE_MAX_LEVEL`, when the format cannot be drawn into, or without texture units. Leaves the
/// viewport at the size of the source's faces, once that is known, and the default framebuffer bound.
VRKGL_EXPORT bool copyCubeMapTextureAsLod(Texture* source, Texture* destination, int level);

} // namespace ZelImageCubemapUtils
} // namespace Harrow::Vrk

#pragma pop_macro("None")
