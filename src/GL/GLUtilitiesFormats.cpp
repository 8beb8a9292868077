// SPDX-License-Identifier: MIT
// What raw OpenGL internal formats are made of.
#include "GLUtilities.h"

#include "GLFunctions.h"

#include <QMessageLogger>

#include <algorithm>
#include <iterator>

namespace
{

constexpr int kNone = 0;

struct InternalFormatRow
{
    GLenum internalFormat;
    int bytes;
    GLenum format;
    GLenum type;
};

// The gaps are interface, and so are the two index types in the place of formats, the transfer type of
// GL_R11F_G11F_B10F, and that compressed formats pass for plain ones of 8 bits.
constexpr InternalFormatRow kInternalFormats[] = {
    {GL_UNSIGNED_SHORT, 2, kNone, kNone},
    {GL_UNSIGNED_INT, 4, kNone, kNone},
    {GL_RED, 1, GL_RED, GL_UNSIGNED_BYTE},
    {GL_RGB, 3, GL_RGB, GL_UNSIGNED_BYTE},
    {GL_RGBA, 4, GL_RGBA, GL_UNSIGNED_BYTE},
    {GL_RGB8, 3, GL_RGB, GL_UNSIGNED_BYTE},
    {GL_RGB16, kNone, GL_RGB, GL_UNSIGNED_SHORT},
    {GL_RGBA8, 4, GL_RGBA, GL_UNSIGNED_BYTE},
    {GL_RGB10_A2, 4, GL_RGBA, GL_UNSIGNED_INT_2_10_10_10_REV},
    {GL_RGBA16, kNone, GL_RGBA, GL_UNSIGNED_SHORT},
    {GL_DEPTH_COMPONENT16, kNone, GL_DEPTH_COMPONENT, GL_UNSIGNED_SHORT},
    {GL_DEPTH_COMPONENT24, kNone, GL_DEPTH_COMPONENT, kNone},
    {GL_DEPTH_COMPONENT32, kNone, GL_DEPTH_COMPONENT, kNone},
    {GL_RG, 2, GL_RG, GL_UNSIGNED_BYTE},
    {GL_R8, 1, GL_RED, GL_UNSIGNED_BYTE},
    {GL_R16, kNone, GL_RED, GL_UNSIGNED_SHORT},
    {GL_RG8, 2, GL_RG, GL_UNSIGNED_BYTE},
    {GL_RG16, kNone, GL_RG, GL_UNSIGNED_SHORT},
    {GL_R16F, 2, GL_RED, GL_HALF_FLOAT},
    {GL_R32F, 4, GL_RED, GL_FLOAT},
    {GL_RG16F, 4, GL_RG, GL_HALF_FLOAT},
    {GL_RG32F, 8, GL_RG, GL_FLOAT},
    {GL_R16I, kNone, GL_RED_INTEGER, GL_SHORT},
    {GL_R16UI, kNone, GL_RED_INTEGER, kNone},
    {GL_R32I, 4, GL_RED_INTEGER, GL_INT},
    {GL_R32UI, 4, GL_RED_INTEGER, GL_UNSIGNED_INT},
    {GL_RG16I, kNone, GL_RG_INTEGER, kNone},
    {GL_RG16UI, kNone, GL_RG_INTEGER, kNone},
    {GL_RG32I, 8, GL_RG_INTEGER, GL_INT},
    {GL_RG32UI, 8, GL_RG_INTEGER, GL_UNSIGNED_INT},
    {GL_DEPTH_STENCIL, kNone, GL_DEPTH_STENCIL, kNone},
    {GL_RGBA32F, 16, GL_RGBA, GL_FLOAT},
    {GL_RGB32F, 12, GL_RGB, GL_FLOAT},
    {GL_RGBA16F, 8, GL_RGBA, GL_HALF_FLOAT},
    {GL_RGB16F, 6, GL_RGB, GL_HALF_FLOAT},
    {GL_DEPTH24_STENCIL8, kNone, GL_DEPTH_STENCIL, kNone},
    {GL_R11F_G11F_B10F, 4, GL_RGB, GL_HALF_FLOAT},
    {GL_SRGB, 3, GL_RGB, GL_UNSIGNED_BYTE},
    {GL_SRGB8, 3, GL_RGB, GL_UNSIGNED_BYTE},
    {GL_SRGB_ALPHA, 4, GL_RGBA, GL_UNSIGNED_BYTE},
    {GL_SRGB8_ALPHA8, 4, GL_RGBA, GL_UNSIGNED_BYTE},
    {GL_DEPTH_COMPONENT32F, kNone, GL_DEPTH_COMPONENT, GL_FLOAT},
    {GL_DEPTH32F_STENCIL8, kNone, GL_DEPTH_STENCIL, kNone},
    {GL_RGBA32UI, 16, GL_RGBA_INTEGER, GL_UNSIGNED_INT},
    {GL_RGB32UI, 12, GL_RGB_INTEGER, GL_UNSIGNED_INT},
    {GL_RGBA16UI, kNone, GL_RGBA_INTEGER, kNone},
    {GL_RGB16UI, kNone, GL_RGB_INTEGER, kNone},
    {GL_RGBA32I, 16, GL_RGBA_INTEGER, GL_INT},
    {GL_RGB32I, 12, GL_RGB_INTEGER, GL_INT},
    {GL_RGBA16I, kNone, GL_RGBA_INTEGER, kNone},
    {GL_RGB16I, kNone, GL_RGB_INTEGER, kNone},
    {GL_COMPRESSED_R11_EAC, 1, GL_RED, GL_UNSIGNED_BYTE},
    {GL_COMPRESSED_SIGNED_R11_EAC, 1, GL_RED, GL_UNSIGNED_BYTE},
    {GL_COMPRESSED_RG11_EAC, 2, GL_RG, GL_UNSIGNED_BYTE},
    {GL_COMPRESSED_SIGNED_RG11_EAC, 2, GL_RG, GL_UNSIGNED_BYTE},
    {GL_COMPRESSED_RGBA8_ETC2_EAC, 4, GL_RGBA, GL_UNSIGNED_BYTE},
    {GL_COMPRESSED_SRGB8_ALPHA8_ETC2_EAC, 4, GL_RGBA, GL_UNSIGNED_BYTE},
};
static_assert(std::size(kInternalFormats) == 57);

/// One cell of a format's row, or `kNone` after a message in the name of the function that asks.
template <typename Cell> Cell cellOf(GLenum internalFormat, Cell InternalFormatRow::*cell, const char* function)
{
    const auto* const row = std::find_if(std::begin(kInternalFormats), std::end(kInternalFormats),
                                         [internalFormat](const InternalFormatRow& candidate)
                                         { return candidate.internalFormat == internalFormat; });
    if (row != std::end(kInternalFormats) && row->*cell != kNone)
        return row->*cell;
    QMessageLogger().critical("%s() does not implement yet : 0x%04X", function, internalFormat);
    return kNone;
}

} // namespace

int bytesFromInternalFormat(unsigned internalFormat)
{
    return cellOf(internalFormat, &InternalFormatRow::bytes, __func__);
}

unsigned formatFromInternalFormat(unsigned internalFormat)
{
    return cellOf(internalFormat, &InternalFormatRow::format, __func__);
}

unsigned typeFromInternalFormat(unsigned internalFormat)
{
    return cellOf(internalFormat, &InternalFormatRow::type, __func__);
}
