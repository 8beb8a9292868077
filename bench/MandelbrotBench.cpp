// SPDX-License-Identifier: MIT
//
// A picture of 512 by 512 points of the Mandelbrot set on one thread, by each kernel that this processor has, beside a
// plain loop that follows one point after the other and colours it. Once for the rectangle that a streamer begins with,
// once for a place at the edge of the set that takes many steps, once from so far away that nearly nothing does. Before
// anything is timed, all must give the same bits.
#include "GLBench.h"

#include "MandelbrotPixels.h"

#include <cmath>
#include <cstdio>
#include <vector>

using namespace Harrow::Vrk;

namespace
{

constexpr int kSize = 512;
constexpr int kPixels = kSize * kSize;

struct Place
{
    const char* name;
    MandelbrotDomain domain;
};

constexpr Place kPlaces[] = {
    {"first rectangle", {-2.5, -1.0, 1.0, 1.0}},
    {"edge of the set", {-0.8, 0.0, -0.7, 0.1}},
    {"from far away", {-10.0, -10.0, 10.0, 10.0}},
};

std::vector<quint32> pixels(kPixels);

// ---- the floor -----------------------------------------------------------------------------------------------------

quint32 colorOf(bool escaped, double square, int steps)
{
    const MandelbrotPalette& palette = mandelbrotPalette();
    int index = 127;
    float fraction = 0.0f;
    if (escaped)
    {
        const double logarithm = std::log(square) * 0.5;
        const double nu = std::log(logarithm / std::log(2.0)) / std::log(2.0);
        const float count = static_cast<float>(steps - nu);
        const float whole = std::floor(count);
        if (whole < 0.0f)
            return 0xFF000000u;
        fraction = count - whole;
        index = static_cast<int>(whole);
    }
    quint32 pixel = 0xFF000000u;
    for (std::size_t channel = 0; channel < 3; ++channel)
    {
        const float low = palette[std::size_t(index % 256)][channel];
        const float high = palette[std::size_t((index + 1) % 256)][channel];
        pixel |= quint32(int(low * (1.0f - fraction) + high * fraction)) << (8 * channel);
    }
    return pixel;
}

void plainLoop(const MandelbrotDomain& domain, quint32* pixel)
{
    const double dx = (domain.maxX - domain.minX) / (kSize - 1);
    const double dy = (domain.maxY - domain.minY) / (kSize - 1);
    double y = domain.minY;
    for (int row = 0; row < kSize; ++row, y += dy)
    {
        double x = domain.minX;
        for (int column = 0; column < kSize; ++column, x += dx)
        {
            double zr = x;
            double zi = y;
            double square = 0.0;
            bool escaped = false;
            int n = 0;
            do
            {
                ++n;
                square = zi * zi + zr * zr;
                escaped = square > 65536.0;
                if (escaped)
                    break;
                const double before = zi;
                zi = zi * (zr + zr) + y;
                zr = zr * zr - before * before + x;
            } while (n < 127);
            *pixel++ = colorOf(escaped, square, n);
        }
    }
}

// ---- the sides -----------------------------------------------------------------------------------------------------

template <int Number> void plain(benchmark::State& state)
{
    for (auto _ : state)
    {
        plainLoop(kPlaces[Number].domain, pixels.data());
        benchmark::ClobberMemory();
    }
}

template <int Number, MandelbrotKernel Kernel> void kernel(benchmark::State& state)
{
    if (!isMandelbrotKernelSupported(Kernel))
    {
        state.SkipWithError("not on this processor");
        return;
    }
    for (auto _ : state)
    {
        computeMandelbrotPixels(Kernel, kPlaces[Number].domain, kSize, kSize, pixels.data());
        benchmark::ClobberMemory();
    }
}

const char* nameOf(MandelbrotKernel kernel)
{
    switch (kernel)
    {
    case MandelbrotKernel::ePlain:
        return "ours, plain";
    case MandelbrotKernel::eVectors:
        return "vectors of two";
    default:
        return "vectors of four";
    }
}

constexpr MandelbrotKernel kKernels[] = {MandelbrotKernel::ePlain, MandelbrotKernel::eVectors,
                                         MandelbrotKernel::eWideVectors};

bool agrees(const Place& place)
{
    std::vector<quint32> expected(kPixels);
    plainLoop(place.domain, expected.data());
    for (const MandelbrotKernel kernel : kKernels)
    {
        if (!isMandelbrotKernelSupported(kernel))
            continue;
        computeMandelbrotPixels(kernel, place.domain, kSize, kSize, pixels.data());
        if (pixels != expected)
        {
            std::fprintf(stderr, "%s: %s gives other bits than the plain loop\n", place.name, nameOf(kernel));
            return false;
        }
    }
    return true;
}

std::string title(const Place& place, const char* side)
{
    return std::string(place.name) + ", " + side;
}

template <int Number> void add()
{
    const auto addOne = [](const char* side, void (*function)(benchmark::State&))
    { benchmark::RegisterBenchmark(title(kPlaces[Number], side).c_str(), function)->Apply(Bench::repeat); };
    addOne("plain", &plain<Number>);
    addOne(nameOf(MandelbrotKernel::ePlain), &kernel<Number, MandelbrotKernel::ePlain>);
    addOne(nameOf(MandelbrotKernel::eVectors), &kernel<Number, MandelbrotKernel::eVectors>);
    addOne(nameOf(MandelbrotKernel::eWideVectors), &kernel<Number, MandelbrotKernel::eWideVectors>);
}

} // namespace

int main(int argc, char** argv)
{
    if (!Bench::readArguments(argc, argv))
        return 1;
    for (const Place& place : kPlaces)
    {
        if (!agrees(place))
            return 1;
    }
    add<0>();
    add<1>();
    add<2>();
    Bench::BestTimes times;
    benchmark::RunSpecifiedBenchmarks(&times);
    for (const Place& place : kPlaces)
    {
        for (const MandelbrotKernel kernel : kKernels)
            times.printRatio(title(place, nameOf(kernel)).c_str(), title(place, nameOf(kernel)), title(place, "plain"),
                             kPixels);
    }
    return 0;
}
