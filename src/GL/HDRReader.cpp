// SPDX-License-Identifier: MIT
#include "HDRReader.h"

#include "Diagnostics.h"
#include "GLFunctions.h"
#include "RadianceHeader.h"
#include "RadianceRows.h"
#include "Texture.h"
#include "TextureFileInfo.h"
#include "TextureProcessing.h"
#include "TextureUpload.h"

#include <QMessageLogger>

#include <VrkCore/Memory.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <new>

namespace Harrow::Vrk
{

struct HDRReader::Record
{
    std::unique_ptr<Memory> memory;
    QString name;
    const unsigned char* begin = nullptr;
    const unsigned char* end = nullptr;
    RadianceHeader header;
};

namespace
{

constexpr quint64 kPixelFloats = 3;
constexpr quint64 kPixelBytes = kPixelFloats * sizeof(float);

struct Free
{
    void operator()(void* memory) const
    {
        std::free(memory);
    }
};
using Floats = std::unique_ptr<float, Free>;

/// Linear, clamped to the edge. There are no mipmaps, and with linear filtering none are missed.
constexpr TextureParameter kParameters[] = {
    {GL_TEXTURE_MIN_FILTER, GL_LINEAR},    {GL_TEXTURE_MAG_FILTER, GL_LINEAR}, {GL_TEXTURE_WRAP_S, GL_CLAMP_TO_EDGE},
    {GL_TEXTURE_WRAP_T, GL_CLAMP_TO_EDGE}, {GL_TEXTURE_BASE_LEVEL, 0},         {GL_TEXTURE_MAX_LEVEL, 100},
};

/// Whether a picture of this size is worth memory. A small file may say that it is huge, so a large picture must have
/// bytes for all of its rows, and a size that the driver can have.
bool isSizeCredible(quint32 width, quint32 height, quint64 bytes)
{
    constexpr quint64 kLargeBytes = quint64(256) * 1024 * 1024;
    constexpr quint32 kLargeSide = 16384;
    const quint64 pixels = quint64(width) * height;
    if (pixels == 0 || pixels > PTRDIFF_MAX / kPixelBytes)
        return false;
    const quint32 side = std::max(width, height);
    if (pixels <= kLargeBytes / kPixelBytes && side <= kLargeSide)
        return true;
    if (bytes < RadianceRowReader::leastBytes(width) * height)
        return false;
    GLint largestSide = 0;
    glGetIntegerv(GL_MAX_TEXTURE_SIZE, &largestSide);
    return qint64(side) <= largestSide;
}

/// False when the picture ends here. A row of another width keeps what is in the image.
bool readRow(RadianceRowReader& rows, quint32 width, float* row, unsigned char* rgbe)
{
    const RadianceRow result = rows.read(row, rgbe);
    if (result == RadianceRow::eBadWidth)
        QMessageLogger().warning("HDR format error: bad scanline width");
    if (result == RadianceRow::eOverlongRun)
    {
        QMessageLogger().warning("Bad scanline: RLE run starting at %u ends at %u, but width is only %u",
                                 rows.runStart(), rows.runEnd(), width);
        std::abort(); // required, unlike everywhere else
    }
    return result != RadianceRow::eNoData;
}

/// The picture's colours, in the order of rows that OpenGL has them. Null when they cannot be had. Rows that say
/// nothing are black.
Floats decode(const RadianceHeader& header, const unsigned char* end)
{
    if (!header.valid || !isSizeCredible(header.width, header.height, quint64(end - header.pixels)))
        return nullptr;
    const size_t rowFloats = size_t(header.width) * kPixelFloats;
    Floats image(static_cast<float*>(std::calloc(header.height, rowFloats * sizeof(float))));
    const std::unique_ptr<unsigned char[]> rgbe(new (std::nothrow) unsigned char[size_t(header.width) * 4]);
    if (!image || !rgbe)
        return nullptr;
    RadianceRowReader rows(header.pixels, end, header.width);
    for (quint32 y = 0; y < header.height; ++y)
    {
        const quint32 imageRow = header.ySign == '-' ? header.height - 1 - y : y;
        if (!readRow(rows, header.width, image.get() + imageRow * rowFloats, rgbe.get()))
            return nullptr;
    }
    return image;
}

/// Whether OpenGL took the image. `texture` is bound.
bool specifyImage(const RadianceHeader& header, const float* image)
{
    setTextureParameters(GL_TEXTURE_2D, kParameters);
    glTexImage2D(GL_TEXTURE_2D, 0, GL_RGB16F, static_cast<GLsizei>(header.width), static_cast<GLsizei>(header.height),
                 0, GL_RGB, GL_FLOAT, image);
    return glGetError() == GL_NO_ERROR;
}

/// Makes `texture`, and puts the image into it. False with no texture, or with one that holds nothing.
bool loadImage(const RadianceHeader& header, const unsigned char* end, std::unique_ptr<Texture>& texture)
{
    const Floats image = decode(header, end);
    if (!image)
        return false;
    texture = std::make_unique<Texture>(GL_TEXTURE_2D, GL_RGB16F, static_cast<int>(header.width),
                                        static_cast<int>(header.height), 1, nullptr);
    if (!texture->bind())
        return false;
    const UnpackAlignment alignment(4);
    const bool isTaken = specifyImage(header, image.get());
    texture->unbind();
    return isTaken;
}

} // namespace

HDRReader::HDRReader(Memory* memory, const QString& name) : _record(std::make_unique<Record>())
{
    _record->memory.reset(memory);
    _record->name = name;
    VRK_ASSERT_RETURN(nullptr != memory, , "Memory is NULL on HDRReader");
    _record->begin = static_cast<const unsigned char*>(memory->get(0, memory->size()));
    if (!_record->begin)
        return;
    _record->end = _record->begin + memory->size();
    _record->header = readRadianceHeader(_record->begin, _record->end);
}

HDRReader::~HDRReader() = default;

bool HDRReader::valid() const
{
    return _record->header.valid;
}

quint32 HDRReader::width() const
{
    return _record->header.width;
}

quint32 HDRReader::height() const
{
    return _record->header.height;
}

Texture* HDRReader::load(const TextureFileInfo& info)
{
    std::unique_ptr<Texture> loaded;
    if (!loadImage(_record->header, _record->end, loaded))
    {
        QMessageLogger().warning("Texture %s failed to load.", qPrintable(_record->name));
        return nullptr;
    }
    Texture* texture = loaded.release();
    if (info.srgb)
        SrgbToLinear(texture); // may replace it, as may the next
    RemapColorRange(texture, info.lowValue, info.highValue);
    return texture;
}

} // namespace Harrow::Vrk
