// SPDX-License-Identifier: MIT
//
// The Mandelbrot set's arithmetic on the processor, bit by bit beside a plain copy of it: the palette, and the pixels
// by each kernel.
#include "MandelbrotPixels.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <limits>
#include <vector>

namespace Harrow::Vrk::Test
{
namespace
{

using Pixels = std::vector<quint32>;

constexpr MandelbrotKernel kKernels[] = {MandelbrotKernel::ePlain, MandelbrotKernel::eVectors,
                                         MandelbrotKernel::eWideVectors};
constexpr quint32 kBlack = 0xFF000000u;

// ---- a plain copy --------------------------------------------------------------------------------------------------

struct PlainPalette
{
    float entries[256][3];

    PlainPalette()
    {
        for (int i = 0; i < 256; ++i)
        {
            const double t = i / 127.0;
            entries[i][0] = float((1 - t) * 9.0 * t * t * t * 255.0);
            entries[i][1] = float((1 - t) * 15.0 * (1 - t) * t * t * 255.0);
            entries[i][2] = float((1 - t) * 8.5 * (1 - t) * (1 - t) * t * 255.0);
        }
    }
};

const PlainPalette kPlainPalette;

/// The pixel of the point x + iy. One whose palette entry would lie before the table is black. `stepOfEscape` becomes 0
/// for a point that does not escape.
quint32 plainPixel(double x, double y, int* stepOfEscape = nullptr)
{
    double zr = x;
    double zi = y;
    double m = 0.0;
    int n = 0;
    bool escaped = false;
    do
    {
        ++n;
        m = zi * zi + zr * zr;
        if (m > 65536.0)
        {
            escaped = true;
            break;
        }
        const double old = zi;
        zi = zi * (zr + zr) + y;
        zr = zr * zr - old * old + x;
    } while (n < 127);

    if (stepOfEscape)
        *stepOfEscape = escaped ? n : 0;
    float frac = 0.0f;
    int idx = 127;
    if (escaped)
    {
        const double logzn = std::log(m) * 0.5;
        const double nu = std::log(logzn / std::log(2.0)) / std::log(2.0);
        const float fiter = float(n - nu);
        const float whole = std::floor(fiter);
        if (!(whole >= 0.0f))
            return kBlack;
        frac = fiter - whole;
        idx = int(whole);
    }
    const int c0 = idx % 256;
    const int c1 = (idx + 1) % 256;
    quint32 pixel = kBlack;
    for (int channel = 0; channel < 3; ++channel)
    {
        const float value =
            kPlainPalette.entries[c0][channel] * (1.0f - frac) + kPlainPalette.entries[c1][channel] * frac;
        pixel |= quint32(int(value)) << (8 * channel);
    }
    return pixel;
}

Pixels plainPixels(const MandelbrotDomain& domain, int width, int height)
{
    const double dx = (domain.maxX - domain.minX) / (width - 1);
    const double dy = (domain.maxY - domain.minY) / (height - 1);
    Pixels pixels;
    double y = domain.minY;
    for (int row = 0; row < height; ++row)
    {
        double x = domain.minX;
        for (int column = 0; column < width; ++column)
        {
            pixels.push_back(plainPixel(x, y));
            x += dx;
        }
        y += dy;
    }
    return pixels;
}

// ---- ours ----------------------------------------------------------------------------------------------------------

/// With a guard at both ends, which must stay as it is.
Pixels pixelsBy(MandelbrotKernel kernel, const MandelbrotDomain& domain, int width, int height)
{
    constexpr quint32 guard = 0x12345678u;
    constexpr std::size_t room = 64;
    const std::size_t count = std::size_t(width) * std::size_t(height);
    Pixels pixels(count + 2 * room, guard);
    computeMandelbrotPixels(kernel, domain, width, height, pixels.data() + room);
    for (std::size_t i = 0; i < room; ++i)
    {
        EXPECT_EQ(pixels[i], guard);
        EXPECT_EQ(pixels[room + count + i], guard);
    }
    return {pixels.begin() + room, pixels.begin() + room + std::ptrdiff_t(count)};
}

/// The first pixel that differs.
testing::AssertionResult agree(const Pixels& actual, const Pixels& expected, int width)
{
    if (actual.size() != expected.size())
        return testing::AssertionFailure() << actual.size() << " pixels in place of " << expected.size();
    for (std::size_t i = 0; i < actual.size(); ++i)
        if (actual[i] != expected[i])
            return testing::AssertionFailure()
                   << std::hex << actual[i] << " in place of " << expected[i] << std::dec << " at ("
                   << i % std::size_t(width) << ", " << i / std::size_t(width) << ")";
    return testing::AssertionSuccess();
}

void expectSameBits(const MandelbrotDomain& domain, int width, int height)
{
    const Pixels expected = plainPixels(domain, width, height);
    for (const MandelbrotKernel kernel : kKernels)
    {
        if (!isMandelbrotKernelSupported(kernel))
            continue;
        EXPECT_TRUE(agree(pixelsBy(kernel, domain, width, height), expected, width)) << int(kernel);
    }
}

void expectBlack(const MandelbrotDomain& domain)
{
    for (const MandelbrotKernel kernel : kKernels)
    {
        if (!isMandelbrotKernelSupported(kernel))
            continue;
        EXPECT_EQ(pixelsBy(kernel, domain, 20, 2), Pixels(40, kBlack)) << int(kernel) << ' ' << domain.minX;
    }
}

constexpr MandelbrotDomain kFirst = {-2.5, -1.0, 1.0, 1.0};

} // namespace

// ---- the kernels ---------------------------------------------------------------------------------------------------

TEST(MandelbrotPixelsTest, ThePlainKernelIsThereAndTheBestOneIsSupported)
{
    EXPECT_TRUE(isMandelbrotKernelSupported(MandelbrotKernel::ePlain));
    EXPECT_TRUE(isMandelbrotKernelSupported(bestMandelbrotKernel()));
#if defined(__GNUC__)
    EXPECT_TRUE(isMandelbrotKernelSupported(MandelbrotKernel::eVectors));
    EXPECT_NE(bestMandelbrotKernel(), MandelbrotKernel::ePlain);
#endif
}

#if defined(__GNUC__) && defined(__x86_64__)

TEST(MandelbrotPixelsTest, WideVectorsAreTakenExactlyWhereTheProcessorHasThem)
{
    const bool has = __builtin_cpu_supports("avx2");
    EXPECT_EQ(isMandelbrotKernelSupported(MandelbrotKernel::eWideVectors), has);
    EXPECT_EQ(bestMandelbrotKernel() == MandelbrotKernel::eWideVectors, has);
}

#endif

// ---- the palette ---------------------------------------------------------------------------------------------------

TEST(MandelbrotPixelsTest, ThePaletteHasThePlainOnesBits)
{
    const MandelbrotPalette& palette = mandelbrotPalette();
    static_assert(sizeof(MandelbrotPalette) == sizeof(kPlainPalette.entries));
    EXPECT_EQ(std::memcmp(&palette, kPlainPalette.entries, sizeof palette), 0);
}

// Worked out by hand: t is 63/127 there.
TEST(MandelbrotPixelsTest, ThePaletteHasKnownEntries)
{
    const MandelbrotPalette& palette = mandelbrotPalette();
    for (const std::size_t black : {0u, 127u})
        for (const float channel : palette[black])
            EXPECT_EQ(channel, 0.0f) << black;
    EXPECT_NEAR(palette[63][0], 141.18, 0.01);
    EXPECT_NEAR(palette[63][1], 239.03, 0.01);
    EXPECT_NEAR(palette[63][2], 137.61, 0.01);
    EXPECT_LT(palette[200][0], 0.0f) << "beyond the middle t is above 1";
    for (std::size_t i = 0; i <= 127; ++i)
        for (const float channel : palette[i])
            EXPECT_TRUE(channel >= 0.0f && channel < 256.0f) << "what is read fits into a byte: " << i;
}

// ---- the pixels ----------------------------------------------------------------------------------------------------

TEST(MandelbrotPixelsTest, TheFirstRectangleHasThePlainOnesBits)
{
    expectSameBits(kFirst, 256, 128);
}

TEST(MandelbrotPixelsTest, DeepPlacesHaveThePlainOnesBits)
{
    expectSameBits({-0.8, 0.05, -0.7, 0.15}, 96, 96);
    expectSameBits({-0.743643, 0.131825, -0.743641, 0.131827}, 96, 64);
    expectSameBits({0.25, -0.01, 0.27, 0.01}, 64, 64);
}

TEST(MandelbrotPixelsTest, EachWidthHasThePlainOnesBits)
{
    for (int width = 2; width <= 50; ++width)
        expectSameBits(kFirst, width, 3);
}

TEST(MandelbrotPixelsTest, RectanglesTheWrongWayRoundHaveThePlainOnesBits)
{
    expectSameBits({1.0, 1.0, -2.5, -1.0}, 70, 40);
    expectSameBits({-0.5, -1.0, -0.5, 1.0}, 20, 20); // of no width
}

TEST(MandelbrotPixelsTest, TheFirstRowIsThatOfTheLowerEdgeAndRedIsTheLowestByte)
{
    // Not symmetric about the real axis.
    const Pixels pixels = pixelsBy(bestMandelbrotKernel(), {0.3, 0.1, 0.5, 0.9}, 2, 2);
    const quint32 lowerLeft = plainPixel(0.3, 0.1);
    EXPECT_EQ(pixels[0], lowerLeft);
    EXPECT_EQ(pixels[1], plainPixel(0.5, 0.1));
    EXPECT_EQ(pixels[2], plainPixel(0.3, 0.9));
    EXPECT_EQ(pixels[3], plainPixel(0.5, 0.9)) << "both edges are sampled";
    for (const quint32 pixel : pixels)
        EXPECT_EQ(pixel >> 24, 255u);
    // 2 + 0i goes by 2, 6, 38, 1446 and has escaped at the fourth step: 4 - log2(log2(1446)) is 0.6, between black and
    // the first entry.
    const double count = 4.0 - std::log2(std::log2(1446.0));
    const Pixels fourth = pixelsBy(bestMandelbrotKernel(), {2.0, 0.0, 2.0, 0.0}, 2, 2);
    for (int channel = 0; channel < 3; ++channel)
        EXPECT_EQ((fourth[0] >> (8 * channel)) & 0xFFu,
                  quint32(double(mandelbrotPalette()[1][std::size_t(channel)]) * count));
}

TEST(MandelbrotPixelsTest, APointInsideIsEntry127WithNothingOf128)
{
    const MandelbrotPalette& palette = mandelbrotPalette();
    quint32 expected = kBlack;
    for (std::size_t channel = 0; channel < 3; ++channel)
        expected |= quint32(int(palette[127][channel] * 1.0f + palette[128][channel] * 0.0f)) << (8 * channel);
    EXPECT_EQ(expected, kBlack);
    expectBlack({-0.1, -0.1, 0.1, 0.1});
}

TEST(MandelbrotPixelsTest, APointThatEscapesAtTheLastStepHasEscaped)
{
    // Just beyond the cusp at 0.25 points take the more steps the nearer to it they are.
    int last = 0;
    int none = 0;
    for (int i = 0; i < 4000; ++i)
    {
        const double x = 0.2506 + i * 1e-7;
        int step = 0;
        const quint32 expected = plainPixel(x, 0.0, &step);
        EXPECT_FALSE(step == 127 && expected == kBlack) << "it has a colour: " << x;
        last += step == 127 ? 1 : 0;
        none += step == 0 ? 1 : 0;
        for (const MandelbrotKernel kernel : kKernels)
        {
            if (isMandelbrotKernelSupported(kernel))
            {
                EXPECT_EQ(pixelsBy(kernel, {x, 0.0, x, 0.0}, 2, 1)[0], expected) << int(kernel) << ' ' << x;
            }
        }
    }
    EXPECT_GT(last, 0);
    EXPECT_GT(none, 0);
}

// ---- what lies outside the arithmetic ------------------------------------------------------------------------------

TEST(MandelbrotPixelsTest, OneColumnOrRowLiesOnTheLowerEdge)
{
    for (const MandelbrotKernel kernel : kKernels)
    {
        if (!isMandelbrotKernelSupported(kernel))
            continue;
        EXPECT_EQ(pixelsBy(kernel, kFirst, 1, 1), Pixels({plainPixel(-2.5, -1.0)}));
        EXPECT_EQ(pixelsBy(kernel, kFirst, 1, 3),
                  Pixels({plainPixel(-2.5, -1.0), plainPixel(-2.5, 0.0), plainPixel(-2.5, 1.0)}));
        EXPECT_EQ(pixelsBy(kernel, kFirst, 2, 1), Pixels({plainPixel(-2.5, -1.0), plainPixel(1.0, -1.0)}));
    }
}

TEST(MandelbrotPixelsTest, NothingIsWrittenWithoutPixels)
{
    for (const auto& [width, height] : {std::pair(0, 0), {0, 5}, {5, 0}})
        EXPECT_TRUE(pixelsBy(bestMandelbrotKernel(), kFirst, width, height).empty());
}

// Where the count is below 0 there is no palette entry to read.
TEST(MandelbrotPixelsTest, PointsFarOutsideAreBlack)
{
    for (const MandelbrotDomain& domain :
         {MandelbrotDomain{20.0, 20.0, 1000.0, 1000.0}, {-1e100, -1e100, -1e99, -1e99}, {1e160, 1e160, 1e161, 1e161}})
        expectBlack(domain);
    expectSameBits({-100.0, -100.0, 100.0, 100.0}, 101, 51);
    expectSameBits({-5.0, -5.0, 5.0, 5.0}, 64, 64);
}

TEST(MandelbrotPixelsTest, WhatIsNoNumberIsBlack)
{
    const double infinity = std::numeric_limits<double>::infinity();
    const double nan = std::numeric_limits<double>::quiet_NaN();
    for (const MandelbrotDomain& domain : {MandelbrotDomain{nan, nan, nan, nan},
                                           {-infinity, -1.0, infinity, 1.0},
                                           {0.0, nan, 1.0, 1.0},
                                           {infinity, infinity, infinity, infinity}})
        expectBlack(domain);
}

} // namespace Harrow::Vrk::Test
