// SPDX-License-Identifier: MIT
#include "TextureFuzz.h"

#include "RadianceHeader.h"
#include "RadianceRows.h"
#include "TextureLoader.h"

#include <cstring>

namespace Harrow::Vrk::Test
{
namespace
{

volatile std::uint64_t sink = 0;

void take(const QString& text)
{
    sink = sink + static_cast<std::uint64_t>(text.size());
}

void take(const char* text)
{
    sink = sink + (text ? std::strlen(text) : 0);
}

/// Beyond a side of 16384 the driver of the targets has no textures, and the reader allocates nothing.
constexpr std::uint64_t kManyPixels = 1 << 16;
constexpr std::uint32_t kLargestSide = 16384;

bool hasOverlongRun(const RadianceHeader& header, const unsigned char* end)
{
    const std::unique_ptr<float[]> row(new float[std::size_t(header.width) * 3]);
    const std::unique_ptr<unsigned char[]> rgbe(new unsigned char[std::size_t(header.width) * 4]);
    RadianceRowReader rows(header.pixels, end, header.width);
    RadianceRow result = RadianceRow::eRead;
    for (std::uint32_t y = 0; y < header.height && result != RadianceRow::eNoData; ++y)
    {
        const unsigned char* const before = rows.next();
        result = rows.read(row.get(), rgbe.get());
        if (result == RadianceRow::eOverlongRun)
            return true;
        if (result == RadianceRow::eBadWidth && rows.next() == before)
            return false; // as all rows from here on
    }
    return false;
}

} // namespace

void askAll(const TextureLoader& loader)
{
    for (const bool answer : {loader.valid(), loader.isCompressed(), loader.isArrayTexture(), loader.isCubeMapTexture(),
                              loader.is1DTexture(), loader.is2DTexture(), loader.is3DTexture(), loader.hasMipMaps()})
        sink = sink + answer;
    for (const std::uint32_t answer : {loader.width(), loader.height(), loader.depth(), loader.arraySize(),
                                       loader.cubeFaces(), loader.mipmapLevels()})
        sink = sink + answer;
    const std::uint32_t count = loader.numMetadataEntries();
    for (std::uint32_t i = 0; i <= count; ++i)
    {
        take(loader.key(i));
        take(loader.value(i));
        take(loader.rawKey(i));
        take(loader.rawValue(i));
    }
}

bool isLoadable(const FuzzInput& input)
{
    const RadianceHeader header = readRadianceHeader(input.begin(), input.end());
    const std::uint64_t pixels = std::uint64_t(header.width) * header.height;
    if (!header.valid || pixels == 0 || header.width > kLargestSide || header.height > kLargestSide)
        return true;
    return pixels <= kManyPixels && !hasOverlongRun(header, input.end());
}

} // namespace Harrow::Vrk::Test
