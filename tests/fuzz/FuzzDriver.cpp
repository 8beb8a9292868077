// SPDX-License-Identifier: MIT
#include "FuzzDriver.h"

#include "Texture.h"
#include "support/GLTest.h"

#include <sanitizer/asan_interface.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <iterator>

namespace Harrow::Vrk::Test
{
namespace
{

constexpr GLint kFormerAlignment = 8;
constexpr GLint kUnits = 16;

bool isRefusing = false;
volatile unsigned char sink = 0;

// ---- what an upload reads: an account of its own, not the library's ------------------------------------------------

constexpr GLenum kOneChannel[] = {
    GL_RED,         GL_GREEN,         GL_BLUE,         GL_ALPHA,           GL_LUMINANCE,
    GL_RED_INTEGER, GL_GREEN_INTEGER, GL_BLUE_INTEGER, GL_DEPTH_COMPONENT, GL_STENCIL_INDEX};
constexpr GLenum kTwoChannels[] = {GL_RG, GL_RG_INTEGER, GL_LUMINANCE_ALPHA, GL_DEPTH_STENCIL};
constexpr GLenum kThreeChannels[] = {GL_RGB, GL_BGR, GL_RGB_INTEGER, GL_BGR_INTEGER};
constexpr GLenum kFourChannels[] = {GL_RGBA, GL_BGRA, GL_RGBA_INTEGER, GL_BGRA_INTEGER};

constexpr GLenum kBytes[] = {GL_UNSIGNED_BYTE, GL_BYTE};
constexpr GLenum kShorts[] = {GL_UNSIGNED_SHORT, GL_SHORT, GL_HALF_FLOAT};
constexpr GLenum kWords[] = {GL_UNSIGNED_INT, GL_INT, GL_FLOAT};
constexpr GLenum kPackedBytes[] = {GL_UNSIGNED_BYTE_3_3_2, GL_UNSIGNED_BYTE_2_3_3_REV};
constexpr GLenum kPackedShorts[] = {GL_UNSIGNED_SHORT_5_6_5,   GL_UNSIGNED_SHORT_5_6_5_REV,
                                    GL_UNSIGNED_SHORT_4_4_4_4, GL_UNSIGNED_SHORT_4_4_4_4_REV,
                                    GL_UNSIGNED_SHORT_5_5_5_1, GL_UNSIGNED_SHORT_1_5_5_5_REV};
constexpr GLenum kPackedWords[] = {GL_UNSIGNED_INT_8_8_8_8,    GL_UNSIGNED_INT_8_8_8_8_REV,
                                   GL_UNSIGNED_INT_10_10_10_2, GL_UNSIGNED_INT_2_10_10_10_REV,
                                   GL_UNSIGNED_INT_24_8,       GL_UNSIGNED_INT_10F_11F_11F_REV,
                                   GL_UNSIGNED_INT_5_9_9_9_REV};

template <std::size_t Count> bool isAmong(GLenum value, const GLenum (&values)[Count])
{
    return std::find(std::begin(values), std::end(values), value) != std::end(values);
}

/// 0 for a format that is none.
std::uint64_t channels(GLenum format)
{
    return isAmong(format, kOneChannel)      ? 1
           : isAmong(format, kTwoChannels)   ? 2
           : isAmong(format, kThreeChannels) ? 3
           : isAmong(format, kFourChannels)  ? 4
                                             : 0;
}

/// 0 for a format or type that is none: then a driver refuses without reading. A format that does not go with a packed
/// type is refused too, but drivers may look at that last.
std::uint64_t texelBytes(GLenum format, GLenum type)
{
    const std::uint64_t count = channels(format);
    const std::uint64_t ofChannel = isAmong(type, kBytes)    ? 1
                                    : isAmong(type, kShorts) ? 2
                                    : isAmong(type, kWords)  ? 4
                                                             : 0;
    if (ofChannel != 0 || count == 0)
        return count * ofChannel;
    return isAmong(type, kPackedBytes)                 ? 1
           : isAmong(type, kPackedShorts)              ? 2
           : isAmong(type, kPackedWords)               ? 4
           : type == GL_FLOAT_32_UNSIGNED_INT_24_8_REV ? 8
                                                       : 0;
}

FakeDriver& driver()
{
    return FakeDriver::current();
}

/// The sanitizer's own look at the whole range costs an eighth of reading it. What it finds is read, to be reported.
void read(const void* pixels, std::uint64_t count)
{
    if (count == 0)
        return;
    if (!pixels)
        FuzzDriver::fail("an upload of bytes from a null pointer");
    const auto* const bytes = static_cast<const volatile unsigned char*>(pixels);
    if (const void* const bad = __asan_region_is_poisoned(const_cast<void*>(pixels), count))
        sink = *static_cast<const volatile unsigned char*>(bad);
    sink = bytes[0];
    sink = bytes[count - 1];
}

bool isRefused(bool sizesAreFit)
{
    if (!sizesAreFit)
        driver().pushError(GL_INVALID_VALUE);
    else if (isRefusing)
        driver().pushError(GL_OUT_OF_MEMORY);
    return !sizesAreFit;
}

/// With plain texels. Null pixels make storage alone.
void upload(GLsizei width, GLsizei height, GLsizei depth, GLenum format, GLenum type, const void* pixels)
{
    if (isRefused(width >= 0 && height >= 0 && depth >= 0) || !pixels)
        return;
    const std::uint64_t rowBytes = std::uint64_t(width) * texelBytes(format, type);
    const auto alignment = std::uint64_t(driver().integer(GL_UNPACK_ALIGNMENT));
    const std::uint64_t stride = (rowBytes + alignment - 1) / alignment * alignment;
    const std::uint64_t rows = std::uint64_t(height) * std::uint64_t(depth);
    if (rowBytes == 0)
        return driver().pushError(GL_INVALID_ENUM);
    // A count beyond 64 bits is as far behind the end as one of half as much.
    if (rows > 0)
        read(pixels, rows - 1 > UINT64_MAX / 2 / stride ? UINT64_MAX / 2 : (rows - 1) * stride + rowBytes);
}

void uploadCompressed(GLsizei width, GLsizei height, GLsizei depth, GLsizei imageSize, const void* data)
{
    if (!isRefused(width >= 0 && height >= 0 && depth >= 0 && imageSize >= 0))
        read(data, std::uint64_t(imageSize));
}

// ---- the functions -------------------------------------------------------------------------------------------------

void VRK_GLAPIENTRY texImage1D(GLenum, GLint, GLint, GLsizei width, GLint, GLenum format, GLenum type,
                               const void* pixels)
{
    upload(width, 1, 1, format, type, pixels);
}

void VRK_GLAPIENTRY texImage2D(GLenum, GLint, GLint, GLsizei width, GLsizei height, GLint, GLenum format, GLenum type,
                               const void* pixels)
{
    upload(width, height, 1, format, type, pixels);
}

void VRK_GLAPIENTRY texImage3D(GLenum, GLint, GLint, GLsizei width, GLsizei height, GLsizei depth, GLint, GLenum format,
                               GLenum type, const void* pixels)
{
    upload(width, height, depth, format, type, pixels);
}

void VRK_GLAPIENTRY compressedTexImage1D(GLenum, GLint, GLenum, GLsizei width, GLint, GLsizei imageSize,
                                         const void* data)
{
    uploadCompressed(width, 1, 1, imageSize, data);
}

void VRK_GLAPIENTRY compressedTexImage2D(GLenum, GLint, GLenum, GLsizei width, GLsizei height, GLint, GLsizei imageSize,
                                         const void* data)
{
    uploadCompressed(width, height, 1, imageSize, data);
}

void VRK_GLAPIENTRY compressedTexImage3D(GLenum, GLint, GLenum, GLsizei width, GLsizei height, GLsizei depth, GLint,
                                         GLsizei imageSize, const void* data)
{
    uploadCompressed(width, height, depth, imageSize, data);
}

void VRK_GLAPIENTRY pixelStorei(GLenum name, GLint value)
{
    driver().setInteger(name, value);
}

/// Formatted messages go nowhere.
void ignore(QtMsgType, const QMessageLogContext&, const QString&) {}

} // namespace

FuzzDriver::FuzzDriver()
{
    _driver.replace("glTexImage1D", &texImage1D);
    _driver.replace("glTexImage2D", &texImage2D);
    _driver.replace("glTexImage3D", &texImage3D);
    _driver.replace("glCompressedTexImage1D", &compressedTexImage1D);
    _driver.replace("glCompressedTexImage2D", &compressedTexImage2D);
    _driver.replace("glCompressedTexImage3D", &compressedTexImage3D);
    _driver.replace("glPixelStorei", &pixelStorei);
    _driver.setExtensions({"GL_EXT_texture_filter_anisotropic"});
    _driver.setInteger(GL_MAX_TEXTURE_MAX_ANISOTROPY, 16);
    _driver.setInteger(GL_MAX_TEXTURE_SIZE, 16384);
    _driver.setInteger(GL_MAX_TEXTURE_IMAGE_UNITS, kUnits);
    _driver.setInteger(GL_UNPACK_ALIGNMENT, kFormerAlignment);
    resetCachedEntryPoints();
    if (_driver.load() != 1)
        fail("the function table is not loaded");
    // The books of the units are opened by the first bind.
    Texture first(GL_TEXTURE_2D, GL_RGBA8, 1, 1, 1, nullptr);
    if (!first.bind() || !first.unbind())
        fail("no texture can be bound");
}

FuzzDriver& FuzzDriver::instance()
{
    // Never destroyed: the fuzzer ends the process.
    static auto* const made = []
    {
        qInstallMessageHandler(ignore);
        return new FuzzDriver;
    }();
    return *made;
}

void FuzzDriver::refuseUploads(bool refused)
{
    while (_driver.popError() != GL_NO_ERROR)
    {
    }
    isRefusing = refused;
}

void FuzzDriver::expectNothingLeft() const
{
    if (Texture::NumAlive() != 0)
        fail("a texture is left");
    if (_driver.integer(GL_UNPACK_ALIGNMENT) != kFormerAlignment)
        fail("the unpack alignment is another one");
    for (GLint unit = 0; unit < kUnits; ++unit)
        if (!Texture::isTextureUnitFree(static_cast<unsigned>(unit)))
            fail("a texture unit is taken");
}

void FuzzDriver::fail(const char* message)
{
    std::fprintf(stderr, "Fuzz target: %s\n", message);
    std::abort();
}

} // namespace Harrow::Vrk::Test
