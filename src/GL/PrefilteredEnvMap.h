// SPDX-License-Identifier: MIT
#pragma once

/// \file
/// Image-based lighting, computed on the GPU: from an environment, a mip chain whose levels are that environment
/// filtered for one roughness each, and the table of a BRDF's response that goes with it.

#include "Export.h"
#include "TextureFormat.h"

namespace Harrow::Vrk
{

class Texture;

/// The BRDF. Its number goes into the shaders as VRK_BRDF; the names are those of "ImportanceSample.glslh", the
/// spelling included.
enum ShadingModel : int
{
    SHADING_TRADITIONAL,        ///< Blinn-Phong
    SHADING_ENERY_CONSERVING,   ///< Ashikhmin-Shirley
    SHADING_PHYSICALLY_BASED,   ///< generalised Trowbridge-Reitz normal distribution, Schlick's Fresnel term
    SHADING_LAMBERTIAN_DIFFUSE, ///< Lambert
    SHADING_OREN_NAYAR_DIFFUSE, ///< Oren-Nayar
    SHADING_DIFFUSE_START_INDEX = SHADING_LAMBERTIAN_DIFFUSE ///< this one and those behind it are diffuse
};

/// \name Making maps and tables
/// Each builds a program, renders, and returns a new read-only texture that belongs to the caller. They need a current
/// context, on the calling thread, which must be able to draw into `format`: where it is not, nothing is drawn, and
/// that is not reported.
///
/// **Levels.** Level l of `MaxLODLevel` levels is filtered for the roughness l / (levels - 1), so with the physically
/// based model the first is the environment as a mirror shows it. To the diffuse models all levels are alike, but for
/// the levels of `source` that they read. A map of a single level has the roughness 0 / 0: what the specular models
/// make of it is up to the driver; the diffuse ones ignore it. A texel is a mean over the samples, weighted by the
/// cosine between their directions and its own; nothing is to be divided by pi any more. Samples read from those levels
/// of `source` that fit their density, as far as its filters let them, so give it mipmaps.
///
/// **State.** Blending is off afterwards, depth test and depth writes are on, and no program is bound, whatever was
/// before; the two filters leave the clear colour (1, 1, 0, 1). The viewport is as before.
/// `CreatePrefilteredCubeEnvMap` leaves the default framebuffer bound, the other two what was bound.
/// `CreatePrefilteredLatLongEnvMap` leaves the scissor test off, unit 0 active and no two-dimensional texture on it,
/// and the scissor box changed. Culling, stencil test and colour mask are not touched, and hold for the drawing as
/// well; for the cube map and the table so does the scissor test.
///
/// **Failures** give null, and no object stays behind. A program that does not build warns "prefilteredEnvMap shader
/// program failed to compile" or "... to link", for the table "preintegratedBRDFTable shader program ...". When all
/// texture units are taken, the bind says so. The software driver llvmpipe ends loops early; there more than 65,535
/// samples take longer to compile, and more than 67,107,840 warn "prefilteredEnvMap can take 67107840 samples on this
/// driver, not %u". A null `source` is an assertion, and so is one without texels to `CreatePrefilteredLatLongEnvMap`.
///@{

/// From a cube map to one with faces of `size` by `size` texels. `samples` directions are taken for each texel.
VRKGL_EXPORT Texture* CreatePrefilteredCubeEnvMap(Texture* source, int size, unsigned samples, ShadingModel model,
                                                  TextureFormat format);

/// From a latitude-longitude map to another, of `width` by `height` texels: u is the angle around +y, from -x over -z,
/// +x and +z, and v rises from -y to +y. A source beyond the limits of `SetPrefilteredSourceWidthMax` and its kin is
/// scaled down first, into a copy without mipmaps.
///
/// The diffuse models take each texel of the source once, in place of `samples` directions, unless
/// `SetDiffuseImportanceSampling` says otherwise.
VRKGL_EXPORT Texture* CreatePrefilteredLatLongEnvMap(Texture* source, int width, int height, unsigned samples,
                                                     ShadingModel model, TextureFormat format);

/// The response for N.V from 0 to 1 along x and for roughness from 0 to 1 along y, at texel centres. In a white
/// environment a surface reflects red times its own reflectance (at normal incidence, or its albedo) plus green. Blue
/// is `lodLevels` times the roughness.
VRKGL_EXPORT Texture* CreatePreintegratedBRDFTable(int width, int height, unsigned lodLevels, ShadingModel model,
                                                   TextureFormat format);
///@}

/// Number of levels until the shorter side is 1: `MaxLODLevel(8, 8)` is 4, `MaxLODLevel(64, 2)` is 2. 1 for a width
/// below 2.
VRKGL_EXPORT int MaxLODLevel(int width, int height);

/// \name Settings of the process
/// Used by `CreatePrefilteredLatLongEnvMap` alone; not locked. A value below 1 is reported and changes nothing.
///@{

/// Texels that are used of a source at most. They bound the time of the diffuse models, which grows with the number
/// of texels. No limit at first.
VRKGL_EXPORT void SetPrefilteredSourceWidthMax(int width);
VRKGL_EXPORT void SetPrefilteredSourceHeightMax(int height);

/// Side of the squares in which a level is drawn, in pixels; each is one draw call and one `glFlush`, so that no call
/// keeps the GPU for long. 1024 at first. The spelling is interface.
VRKGL_EXPORT void SetPrefilteredTilseSizeMax(int size);

/// Whether the diffuse models take `samples` directions as the others do. Off at first.
VRKGL_EXPORT void SetDiffuseImportanceSampling(bool use);
///@}

} // namespace Harrow::Vrk
