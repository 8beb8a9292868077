// SPDX-License-Identifier: MIT
#include "TextureFormat.h"

#include "GLFunctions.h"
#include "TextureFormatNames.h"

#include <iterator>

namespace Harrow::Vrk
{
namespace
{

struct FormatRow
{
    TextureFormat format;
    GLenum internal;
    GLenum sized;
    GLenum external;
    GLenum type;
};

constexpr FormatRow kFormats[] = {
    {R, GL_RED, GL_R8, GL_RED, GL_UNSIGNED_BYTE},
    {RG, GL_RG, GL_RG8, GL_RG, GL_UNSIGNED_BYTE},
    {RGB, GL_RGB, GL_RGB8, GL_RGB, GL_UNSIGNED_BYTE},
    {RGBA, GL_RGBA, GL_RGBA8, GL_RGBA, GL_UNSIGNED_BYTE},
    {SRGB8A8, GL_SRGB8_ALPHA8, GL_SRGB8_ALPHA8, GL_RGBA, GL_UNSIGNED_BYTE},
    {R16F, GL_R16F, GL_R16F, GL_RED, GL_HALF_FLOAT},
    {RG16F, GL_RG16F, GL_RG16F, GL_RG, GL_HALF_FLOAT},
    {RGB16F, GL_RGB16F, GL_RGB16F, GL_RGB, GL_HALF_FLOAT},
    {RGBA16F, GL_RGBA16F, GL_RGBA16F, GL_RGBA, GL_HALF_FLOAT},
    {R32F, GL_R32F, GL_R32F, GL_RED, GL_FLOAT},
    {RG32F, GL_RG32F, GL_RG32F, GL_RG, GL_FLOAT},
    {RGB32F, GL_RGB32F, GL_RGB32F, GL_RGB, GL_FLOAT},
    {RGBA32F, GL_RGBA32F, GL_RGBA32F, GL_RGBA, GL_FLOAT},
    {R16I, GL_R16I, GL_R16I, GL_RED_INTEGER, GL_SHORT},
    {RG16I, GL_RG16I, GL_RG16I, GL_RG_INTEGER, GL_SHORT},
    {RGB16I, GL_RGB16I, GL_RGB16I, GL_RGB_INTEGER, GL_SHORT},
    {RGBA16I, GL_RGBA16I, GL_RGBA16I, GL_RGBA_INTEGER, GL_SHORT},
    {R11FG11FB10F, GL_R11F_G11F_B10F, GL_R11F_G11F_B10F, GL_RGB, GL_UNSIGNED_INT_10F_11F_11F_REV},
    {RGBA1010102, GL_RGB10_A2, GL_RGB10_A2, GL_RGBA, GL_UNSIGNED_INT_2_10_10_10_REV},
    {R32I, GL_R32I, GL_R32I, GL_RED_INTEGER, GL_INT},
    {RG32I, GL_RG32I, GL_RG32I, GL_RG_INTEGER, GL_INT},
    {RGB32I, GL_RGB32I, GL_RGB32I, GL_RGB_INTEGER, GL_INT},
    {RGBA32I, GL_RGBA32I, GL_RGBA32I, GL_RGBA_INTEGER, GL_INT},
    {DEPTH32F, GL_DEPTH_COMPONENT32F, GL_DEPTH_COMPONENT32F, GL_DEPTH_COMPONENT, GL_FLOAT},
    {DEPTH24_STENCIL8, GL_DEPTH24_STENCIL8, GL_DEPTH24_STENCIL8, GL_DEPTH_STENCIL, GL_UNSIGNED_INT_24_8},
    // The type is interface; the float packed type in its place would change what the pool's users see.
    {DEPTH32F_STENCIL8, GL_DEPTH32F_STENCIL8, GL_DEPTH32F_STENCIL8, GL_DEPTH_STENCIL, GL_UNSIGNED_INT_24_8},
};
static_assert(std::size(kFormats) == 26, "one row for each TextureFormat");

constexpr bool rowsStandAtTheirValues()
{
    for (std::size_t i = 0; i < std::size(kFormats); ++i)
        if (static_cast<std::size_t>(kFormats[i].format) != i)
            return false;
    return true;
}
static_assert(rowsStandAtTheirValues(), "the table is indexed by value");

constexpr FormatRow kOutside = {TextureFormat(-1), GL_RGBA, GL_RGBA8, GL_RGBA, GL_FLOAT};

const FormatRow& rowOf(TextureFormat format)
{
    const auto index = static_cast<unsigned>(format);
    return index < std::size(kFormats) ? kFormats[index] : kOutside;
}

// Without the two packed formats, on purpose: see textureFormatName.
constexpr const char* kNames[] = {
    "R",
    "RG",
    "RGB",
    "RGBA",
    "SRGB8A8",
    "R16F",
    "RG16F",
    "RGB16F",
    "RGBA16F",
    "R32F",
    "RG32F",
    "RGB32F",
    "RGBA32F",
    "R16I",
    "RG16I",
    "RGB16I",
    "RGBA16I",
    "R32I",
    "RG32I",
    "RGB32I",
    "RGBA32I",
    "DEPTH32F",
    "DEPTH24_STENCIL8",
    "DEPTH32F_STENCIL8",
};
static_assert(std::size(kNames) == 24);

} // namespace

int InternalFormat(TextureFormat format)
{
    return static_cast<int>(rowOf(format).internal);
}

int SizedInternalFormat(TextureFormat format)
{
    return static_cast<int>(rowOf(format).sized);
}

int ExternalFormat(TextureFormat format)
{
    return static_cast<int>(rowOf(format).external);
}

int ExternalType(TextureFormat format)
{
    return static_cast<int>(rowOf(format).type);
}

const char* textureFormatName(TextureFormat format)
{
    const auto index = static_cast<unsigned>(format);
    return index < std::size(kNames) ? kNames[index] : nullptr;
}

} // namespace Harrow::Vrk
