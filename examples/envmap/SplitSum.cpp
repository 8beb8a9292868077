// SPDX-License-Identifier: MIT
#include "SplitSum.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <numbers>

namespace envmap
{

namespace
{

constexpr unsigned kSamples = 512;

/// The bits of the number mirrored at the point.
double radicalInverse(std::uint32_t number)
{
    double inverse = 0.0;
    for (double digit = 0.5; number != 0; number >>= 1, digit *= 0.5)
        inverse += (number & 1) != 0 ? digit : 0.0;
    return inverse;
}

/// Smith's shadowing by Schlick, with the k of image-based lighting.
double shadowing(double cosine, double k)
{
    return cosine / (cosine * (1.0 - k) + k);
}

struct ScaleAndBias
{
    double scale = 0.0;
    double bias = 0.0;
};

ScaleAndBias integrate(double roughness, double nDotV)
{
    const double alpha = roughness * roughness;
    const double k = 0.5 * alpha;
    const double viewX = std::sqrt(1.0 - nDotV * nDotV); // the view lies in the plane of x and z
    ScaleAndBias sum;
    for (unsigned i = 0; i < kSamples; ++i)
    {
        const double u = (i + 0.5) / kSamples;
        const double phi = 2.0 * std::numbers::pi * radicalInverse(i);
        const double cosine = std::sqrt((1.0 - u) / (1.0 + (alpha * alpha - 1.0) * u));
        const double halfX = std::cos(phi) * std::sqrt(std::max(0.0, 1.0 - cosine * cosine));
        const double vDotH = viewX * halfX + nDotV * cosine;
        const double nDotL = 2.0 * vDotH * cosine - nDotV;
        if (nDotL <= 0.0 || vDotH <= 0.0)
            continue;
        const double visible = shadowing(nDotV, k) * shadowing(nDotL, k) * vDotH / (cosine * nDotV);
        const double fresnel = std::pow(1.0 - vDotH, 5.0);
        sum.scale += (1.0 - fresnel) * visible / kSamples;
        sum.bias += fresnel * visible / kSamples;
    }
    return sum;
}

} // namespace

vrkview::LightImage publishedSplitSum(int side)
{
    vrkview::LightImage table(side, side);
    for (int y = 0; y < side; ++y)
    {
        const double roughness = 1.0 - (y + 0.5) / side;
        for (int x = 0; x < side; ++x)
        {
            const ScaleAndBias value = integrate(roughness, (x + 0.5) / side);
            float* const texel = table.at(x, y);
            texel[0] = float(value.scale);
            texel[1] = float(value.bias);
            texel[2] = float(roughness);
        }
    }
    return table;
}

} // namespace envmap
