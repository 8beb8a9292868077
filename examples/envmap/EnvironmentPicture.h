// SPDX-License-Identifier: MIT
// A picture of an environment: read from a file as linear light, brought into a texture the way its layout wants it,
// and the way back from textures into pictures.
#pragma once

#include "EnvmapOptions.h"

#include <RadianceFile.h>

#include <array>
#include <memory>
#include <optional>

namespace Harrow::Vrk
{
class Texture;
}

namespace envmap
{

using vrkview::LightImage;
using TexturePointer = std::unique_ptr<Harrow::Vrk::Texture>;

/// The six faces of a level of a cube map, in OpenGL's order, each with its first row first.
using CubeFaces = std::array<LightImage, 6>;

/// The layout that goes with the ratio of the sides (2:1, 4:3, 3:4, 6:1, 1:1, within a hundredth), or nothing.
std::optional<Layout> guessLayout(int width, int height);

/// Reads a picture. Colours of 8 bits a channel are taken as sRGB; what is negative or no number becomes 0, and what is
/// infinite the largest half float. With a context current. On false `error` says in one line why it cannot be used.
bool readPicture(const QString& path, LightImage& picture, QString& error);

/// The cube map of a picture, in single precision, with mipmaps. The middle column of a lat-long picture is +x. On null
/// `error` says in one line why there is none. With a context current, as all of the following.
TexturePointer makeCubeMap(const LightImage& picture, Layout layout, QString& error);

/// A picture by longitude and latitude as the filter of such maps wants it, with mipmaps. Null when the driver has no
/// room for it.
TexturePointer makeLatLongTexture(const LightImage& picture);

/// A cube map as a picture by longitude and latitude, by linear interpolation.
LightImage latLongOf(const CubeFaces& cube, int width, int height);

/// A level of a 2D texture whose lower edge is that of the picture.
LightImage readLevel(Harrow::Vrk::Texture& texture, int level);

/// The base level of a cube map.
CubeFaces readFaces(Harrow::Vrk::Texture& cube);

/// The cubes of a cube-map array, each as a row of its faces.
std::vector<LightImage> readCubes(Harrow::Vrk::Texture& cubes);

/// A level of a cube map as a row of its faces; empty on failure.
LightImage readStrip(Harrow::Vrk::Texture& cube, int level);

} // namespace envmap
