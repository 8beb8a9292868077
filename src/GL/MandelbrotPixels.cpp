// SPDX-License-Identifier: MIT
//
// The bits of the picture are interface, so each operation rounds by itself: no product and sum are contracted into
// one (the build says so to the compiler), and the order of operations is the same in all kernels. The logarithms are
// left to the C library, value by value.
#include "MandelbrotPixels.h"

#include <algorithm>
#include <cmath>
#include <cstring>

namespace Harrow::Vrk
{
namespace
{

constexpr int kMaxIterations = 127;
constexpr double kBailout = 65536.0;
constexpr quint32 kBlack = 0xFF000000u;

constexpr MandelbrotPalette makePalette()
{
    MandelbrotPalette palette = {};
    for (int i = 0; i < kMandelbrotColors; ++i)
    {
        const double t = i / 127.0; // beyond 1 from the middle of the table on
        palette[std::size_t(i)] = {static_cast<float>((1 - t) * 9.0 * t * t * t * 255.0),
                                   static_cast<float>((1 - t) * 15.0 * (1 - t) * t * t * 255.0),
                                   static_cast<float>((1 - t) * 8.5 * (1 - t) * (1 - t) * t * 255.0)};
    }
    return palette;
}

constexpr MandelbrotPalette kPalette = makePalette();

// ---- following the points ------------------------------------------------------------------------------------------

// As many points of a row are followed together.
constexpr int kBlock = 16;

/// What became of the points of a block.
struct Escapes
{
    // The step at which each escaped; 0 if it did not.
    alignas(32) qint64 steps[kBlock];
    // The square of its distance from 0 there.
    alignas(32) double squares[kBlock];
};

using Follow = void (*)(const double* x, double y, Escapes& escapes);

void followPlain(const double* x, double y, Escapes& escapes)
{
    for (int i = 0; i < kBlock; ++i)
    {
        double zr = x[i];
        double zi = y;
        escapes.steps[i] = 0;
        for (int n = 1; n <= kMaxIterations; ++n)
        {
            const double zr2 = zr * zr;
            const double zi2 = zi * zi;
            const double square = zi2 + zr2;
            if (square > kBailout)
            {
                escapes.steps[i] = n;
                escapes.squares[i] = square;
                break;
            }
            zi = zi * (zr + zr) + y;
            zr = zr2 - zi2 + x[i];
        }
    }
}

#if defined(__GNUC__)

struct NarrowVectors
{
    static constexpr int kLanes = 2;
    typedef double Doubles __attribute__((vector_size(16)));
    typedef qint64 Masks __attribute__((vector_size(16)));
};

struct WideVectors
{
    static constexpr int kLanes = 4;
    typedef double Doubles __attribute__((vector_size(32)));
    typedef qint64 Masks __attribute__((vector_size(32)));
};

template <typename Vectors> [[gnu::always_inline]] inline bool isAnySet(const typename Vectors::Masks& masks)
{
    qint64 any = 0;
    for (int lane = 0; lane < Vectors::kLanes; ++lane)
        any |= masks[lane];
    return any != 0;
}

/// Four vectors side by side, so that the processor always has a sum to work on while another one is on its way. A
/// point that has escaped goes on with the others, and what it comes to is not looked at. Whether any is left is asked
/// at every other step only.
template <typename Vectors>
[[gnu::always_inline]] inline void followVectors(const double* x, double y, Escapes& escapes)
{
    using Doubles = typename Vectors::Doubles;
    using Masks = typename Vectors::Masks;
    constexpr int kVectors = 4;

    for (int first = 0; first < kBlock; first += kVectors * Vectors::kLanes)
    {
        Doubles cr[kVectors], zr[kVectors], zi[kVectors], squares[kVectors] = {};
        Masks steps[kVectors] = {}, inside[kVectors]; // all bits of a lane set or none
        for (int v = 0; v < kVectors; ++v)
        {
            std::memcpy(&cr[v], x + first + v * Vectors::kLanes, sizeof(Doubles));
            zr[v] = cr[v];
            zi[v] = Doubles{} + y;
            inside[v] = ~Masks{};
        }
        for (int n = 1; n <= kMaxIterations; ++n)
        {
#pragma GCC unroll 4
            for (int v = 0; v < kVectors; ++v)
            {
                const Doubles zr2 = zr[v] * zr[v];
                const Doubles zi2 = zi[v] * zi[v];
                const Doubles square = zi2 + zr2;
                squares[v] = inside[v] ? square : squares[v];
                steps[v] -= inside[v];
                inside[v] &= ~Masks(square > kBailout);
                zi[v] = zi[v] * (zr[v] + zr[v]) + y;
                zr[v] = zr2 - zi2 + cr[v];
            }
            if (n % 2 == 0 && !isAnySet<Vectors>((inside[0] | inside[1]) | (inside[2] | inside[3])))
                break;
        }
        for (int v = 0; v < kVectors; ++v)
        {
            steps[v] &= ~inside[v];
            std::memcpy(escapes.steps + first + v * Vectors::kLanes, &steps[v], sizeof(Masks));
            std::memcpy(escapes.squares + first + v * Vectors::kLanes, &squares[v], sizeof(Doubles));
        }
    }
}

void followByVectors(const double* x, double y, Escapes& escapes)
{
    followVectors<NarrowVectors>(x, y, escapes);
}

#endif

#if defined(__GNUC__) && defined(__x86_64__)
#define VRK_HAS_WIDE_VECTORS

[[gnu::target("avx2")]] void followByWideVectors(const double* x, double y, Escapes& escapes)
{
    followVectors<WideVectors>(x, y, escapes);
}

#endif

/// Null where the compiler or the processor lacks it.
Follow follow(MandelbrotKernel kernel)
{
    switch (kernel)
    {
#if defined(VRK_HAS_WIDE_VECTORS)
    case MandelbrotKernel::eWideVectors:
        return __builtin_cpu_supports("avx2") ? followByWideVectors : nullptr;
#endif
#if defined(__GNUC__)
    case MandelbrotKernel::eVectors:
        return followByVectors;
#endif
    case MandelbrotKernel::ePlain:
        return followPlain;
    default:
        return nullptr;
    }
}

// ---- colours -------------------------------------------------------------------------------------------------------

/// Between the colours of two counts, by a count that lies between them.
quint32 mixColors(float count)
{
    // Far outside the rectangle's usual place a point escapes at once, and its count is below 0, where the palette has
    // no entry: it is black, as the first entry is. So is one whose square is beyond the numbers.
    if (!(count >= 0.0f))
        return kBlack;
    const int index = static_cast<int>(count);
    const float fraction = count - static_cast<float>(index);
    const auto& low = kPalette[std::size_t(index % kMandelbrotColors)];
    const auto& high = kPalette[std::size_t((index + 1) % kMandelbrotColors)];
    quint32 pixel = kBlack;
    for (std::size_t channel = 0; channel < 3; ++channel)
    {
        const float mixed = low[channel] * (1.0f - fraction) + high[channel] * fraction;
        pixel |= static_cast<quint32>(static_cast<int>(mixed)) << (8 * channel);
    }
    return pixel;
}

void colorBlock(const Escapes& escapes, int count, quint32* pixels)
{
    // Step by step for the whole block, so that the logarithms of many points are on their way at once.
    double logs[kBlock];
    for (int i = 0; i < count; ++i)
    {
        if (escapes.steps[i] != 0)
            logs[i] = std::log(escapes.squares[i]) * 0.5;
    }
    for (int i = 0; i < count; ++i)
    {
        if (escapes.steps[i] == 0)
        {
            pixels[i] = kBlack; // entries 127 and 128 with nothing of the second
            continue;
        }
        const double nu = std::log(logs[i] / std::log(2.0)) / std::log(2.0);
        pixels[i] = mixColors(static_cast<float>(static_cast<double>(escapes.steps[i]) - nu));
    }
}

/// From one sample to the next, so that both edges are sampled. A single one lies on the lower edge.
double stepOf(double min, double max, int samples)
{
    return samples > 1 ? (max - min) / (samples - 1) : 0.0;
}

} // namespace

const MandelbrotPalette& mandelbrotPalette()
{
    return kPalette;
}

bool isMandelbrotKernelSupported(MandelbrotKernel kernel)
{
    return follow(kernel) != nullptr;
}

MandelbrotKernel bestMandelbrotKernel()
{
    for (const MandelbrotKernel kernel : {MandelbrotKernel::eWideVectors, MandelbrotKernel::eVectors})
    {
        if (isMandelbrotKernelSupported(kernel))
            return kernel;
    }
    return MandelbrotKernel::ePlain;
}

void computeMandelbrotPixels(MandelbrotKernel kernel, const MandelbrotDomain& domain, int width, int height,
                             quint32* pixels)
{
    const Follow followBlock = follow(kernel);
    const double dx = stepOf(domain.minX, domain.maxX, width);
    const double dy = stepOf(domain.minY, domain.maxY, height);
    double y = domain.minY;
    for (int row = 0; row < height; ++row, y += dy)
    {
        double nextX = domain.minX;
        for (int column = 0; column < width; column += kBlock)
        {
            // Each is the one before plus the step, not a multiple of it: the roundings add up in that order.
            double x[kBlock];
            for (int i = 0; i < kBlock; ++i, nextX += dx)
                x[i] = nextX;
            Escapes escapes;
            followBlock(x, y, escapes);
            const int count = std::min(kBlock, width - column);
            colorBlock(escapes, count, pixels);
            pixels += count;
        }
    }
}

} // namespace Harrow::Vrk
