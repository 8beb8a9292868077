// SPDX-License-Identifier: MIT
#pragma once

/// \file
/// The parts of the plain bookkeeping in Array2DPlainModel.h: the layers of one slot, and what makes two formats alike.

#include "GLFunctions.h"

#include <QtGlobal>

#include <algorithm>
#include <cstddef>
#include <vector>

namespace Harrow::Vrk::Test
{

struct PlainFormat
{
    int width = 0;
    int height = 0;
    int internalFormat = 0;
    int wrapS = 0;
    int wrapT = 0;
    int magFilter = 0;
    int minFilter = 0;
    float anisotropy = 1.0f;
    float lodBias = 0.0f;
};

inline bool samePlainState(const PlainFormat& a, const PlainFormat& b)
{
    return a.wrapS == b.wrapS && a.wrapT == b.wrapT && a.magFilter == b.magFilter && a.minFilter == b.minFilter &&
           a.anisotropy == b.anisotropy && a.lodBias == b.lodBias;
}

inline bool samePlainFormat(const PlainFormat& a, const PlainFormat& b)
{
    return a.width == b.width && a.height == b.height && a.internalFormat == b.internalFormat && samePlainState(a, b);
}

/// Numbers of the internal formats that the sequences use; texels of 0 bytes are unknown.
struct PlainTexel
{
    int internalFormat;
    int bytes;
    unsigned channels;
};
inline constexpr PlainTexel kPlainTexels[] = {
    {GL_R8, 1, GL_RED},       {GL_R32F, 4, GL_RED},   {GL_RG8, 2, GL_RG},
    {GL_RGB8, 3, GL_RGB},     {GL_RGBA8, 4, GL_RGBA}, {GL_SRGB8_ALPHA8, 4, GL_RGBA},
    {GL_RGBA16F, 8, GL_RGBA}, {GL_RGB16F, 6, GL_RGB}, {GL_RGBA32F, 16, GL_RGBA},
};

inline int plainBytes(int internalFormat)
{
    for (const PlainTexel& texel : kPlainTexels)
        if (texel.internalFormat == internalFormat)
            return texel.bytes;
    return 0;
}

/// How well a slot of (sw, sh) suits a wanted (w, h).
inline quint32 plainScore(int method, int sw, int sh, int w, int h)
{
    bool fits;
    if (method == 1)
        fits = sw >= w && sh >= h && sw % w == 0 && sh % h == 0;
    else
        fits = sw <= w && sh <= h && w % sw == 0 && h % sh == 0;
    if (!fits)
        return 0xFFFFFFFFu;
    return static_cast<quint32>((qint64(sw) - w) + (qint64(sh) - h));
}

struct PlainSlot
{
    int allocatedLayers = 0;
    PlainFormat format;
    int maxLayers = 0;
    int usedLayers = 0;
    std::vector<int> freeLayers;

    bool isUsed() const
    {
        return format.internalFormat != 0;
    }

    void initialise(const PlainFormat& aligned, int maxArrayLayers)
    {
        allocatedLayers = 0;
        usedLayers = 0;
        format = aligned;
        maxLayers = std::max(64, maxArrayLayers);
        const quint64 n = quint64(0x80000000u) / (quint64(plainBytes(aligned.internalFormat)) * quint64(aligned.width) *
                                                  quint64(aligned.height));
        if (n < quint64(maxLayers))
            maxLayers = int(n);
        if (maxLayers < 1)
            maxLayers = 1;
    }

    int allocate(int count)
    {
        if (count < 1)
            return -1;
        bool hasFirst = false;
        int first = 0;
        int run = 0;
        std::size_t begin = 0;
        for (std::size_t at = 0; at < freeLayers.size(); ++at)
        {
            const int v = freeLayers[at];
            run += 1;
            if (!hasFirst)
            {
                hasFirst = true;
                begin = at;
                first = v;
            }
            else if (first + run != v)
            {
                begin = at;
                first = v;
                run = 1;
            }
            if (run == count)
            {
                for (int removed = 0; removed < count; ++removed)
                    freeLayers.erase(freeLayers.begin() + std::ptrdiff_t(begin));
                return first;
            }
        }
        if (usedLayers + count < maxLayers)
        {
            usedLayers += count;
            return usedLayers - count;
        }
        return -1;
    }

    void release(int layer, int count)
    {
        for (int i = 0; i < count; ++i)
            freeLayers.push_back(layer + i);
        std::sort(freeLayers.begin(), freeLayers.end());
        while (!freeLayers.empty() && usedLayers > 0 && freeLayers.back() == usedLayers - 1)
        {
            freeLayers.pop_back();
            --usedLayers;
        }
        if (usedLayers == 0)
        {
            format.width = 0;
            format.height = 0;
            format.internalFormat = 0;
        }
    }
};

struct PlainRecord
{
    int slot = -1;
    int layer = 0;
    int udimWidth = 0;
    int udimMaxPatch = 0;
};

/// A texture as the manager finds it when it looks at it.
struct PlainTexture
{
    PlainFormat format;
    unsigned target = GL_TEXTURE_2D;
    int depth = 1;
    unsigned name = 0;
};

} // namespace Harrow::Vrk::Test
