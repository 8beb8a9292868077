// SPDX-License-Identifier: MIT
#pragma once

/// \file
/// Environment lighting on the CPU, in double precision: the points, the shading models and the two integrals, written
/// down from their formulas and apart from the shaders.

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>

namespace Harrow::Vrk::Test::Environment
{

inline constexpr double kPi = 3.14159265358979323846;

enum Model : int
{
    eBlinnPhong,
    eAshikhminShirley,
    eGGX,
    eLambert,
    eOrenNayar
};
inline constexpr Model kModels[] = {eBlinnPhong, eAshikhminShirley, eGGX, eLambert, eOrenNayar};
inline constexpr const char* kModelNames[] = {"BlinnPhong", "AshikhminShirley", "GGX", "Lambert", "OrenNayar"};

inline bool isDiffuse(Model model)
{
    return model == eLambert || model == eOrenNayar;
}

// ---- vectors -------------------------------------------------------------------------------------------------------

struct Vec
{
    double x = 0.0;
    double y = 0.0;
    double z = 0.0;
};

inline Vec operator+(const Vec& a, const Vec& b)
{
    return {a.x + b.x, a.y + b.y, a.z + b.z};
}
inline Vec operator-(const Vec& a, const Vec& b)
{
    return {a.x - b.x, a.y - b.y, a.z - b.z};
}
inline Vec operator*(const Vec& a, double factor)
{
    return {a.x * factor, a.y * factor, a.z * factor};
}
inline double dot(const Vec& a, const Vec& b)
{
    return a.x * b.x + a.y * b.y + a.z * b.z;
}
inline Vec cross(const Vec& a, const Vec& b)
{
    return {a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x};
}
inline double length(const Vec& a)
{
    return std::sqrt(dot(a, a));
}
inline Vec normalize(const Vec& a)
{
    return a * (1.0 / length(a));
}
/// `V` mirrored at `H`.
inline Vec mirror(const Vec& V, const Vec& H)
{
    return H * (2.0 * dot(V, H)) - V;
}

// ---- points and frames ---------------------------------------------------------------------------------------------

struct Point
{
    double x = 0.0;
    double y = 0.0;
};

/// The binary digits of `i`, mirrored at the point.
inline double radicalInverse(std::uint32_t i)
{
    double result = 0.0;
    for (double digit = 0.5; i != 0; i /= 2, digit /= 2)
        result += (i % 2) * digit;
    return result;
}

inline Point hammersley(std::uint32_t i, std::uint32_t n)
{
    return {double(i) / double(n), radicalInverse(i)};
}

struct Frame
{
    Vec tangent;
    Vec bitangent;
    Vec normal;

    explicit Frame(const Vec& N) : normal(N)
    {
        const Vec up = std::abs(N.y) < 0.999 ? Vec{0, 1, 0} : Vec{0, 0, -1};
        tangent = normalize(cross(up, N));
        bitangent = cross(N, tangent);
    }
    Vec toWorld(const Vec& local) const
    {
        return tangent * local.x + bitangent * local.y + normal * local.z;
    }
};

/// Shirley and Chiu's map from the square to the disk, by its four triangles.
inline Point concentricDisk(const Point& Xi)
{
    const double a = 2.0 * Xi.x - 1.0;
    const double b = 2.0 * Xi.y - 1.0;
    double radius = 0.0;
    double angle = 0.0;
    if (a == 0.0 && b == 0.0)
        return {};
    if (a > -b)
    {
        radius = std::max(a, b);
        angle = a > b ? kPi / 4 * (b / a) : kPi / 4 * (2 - a / b);
    }
    else
    {
        radius = -std::min(a, b);
        angle = a < b ? kPi / 4 * (4 + b / a) : kPi / 4 * (6 - a / b);
    }
    return {radius * std::cos(angle), radius * std::sin(angle)};
}

inline Vec cosineHemisphere(const Point& Xi)
{
    const Point disk = concentricDisk(Xi);
    // The rim of the disk is the horizon, which rounding must not lift.
    const double height = 1.0 - disk.x * disk.x - disk.y * disk.y;
    return {disk.x, disk.y, height > 1e-12 ? std::sqrt(height) : 0.0};
}

// ---- shading models ------------------------------------------------------------------------------------------------

inline double phongExponent(double roughness)
{
    return std::exp2((1.0 - std::sqrt(std::clamp(roughness, 0.0, 1.0))) * 10.0 + 4.0);
}

/// H for the specular models, L for the diffuse ones, around +z.
inline Vec sampleModel(Model model, const Point& Xi, double roughness)
{
    if (isDiffuse(model))
        return cosineHemisphere(Xi);
    double cosTheta = 0.0;
    if (model == eGGX)
    {
        const double alpha = roughness * roughness;
        cosTheta = std::sqrt((1.0 - Xi.x) / (1.0 + (alpha * alpha - 1.0) * Xi.x));
    }
    else
    {
        cosTheta = std::pow(1.0 - Xi.x, 1.0 / (phongExponent(roughness) + 1.0));
    }
    const double sinTheta = std::sqrt(std::max(0.0, 1.0 - cosTheta * cosTheta));
    const double phi = 2.0 * kPi * (Xi.y - 0.5);
    return {sinTheta * std::cos(phi), sinTheta * std::sin(phi), cosTheta};
}

/// The cosines at a surface point.
struct Cosines
{
    double NdotL, NdotV, NdotH, VdotH;

    Cosines(const Vec& N, const Vec& V, const Vec& L, const Vec& H)
        : NdotL(dot(N, L)), NdotV(dot(N, V)), NdotH(dot(N, H)), VdotH(dot(V, H))
    {
    }
};

/// Normal distribution of the microfacets, for each steradian; the samples of H have it, times `NdotH` for GGX.
inline double distributionGGX(double NdotH, double alpha)
{
    const double d = NdotH * NdotH * (alpha * alpha - 1.0) + 1.0;
    return alpha * alpha / (kPi * d * d);
}

/// Never 0, so that it cancels in the quotient of BRDF and density.
inline double phongPower(double NdotH, double roughness)
{
    return std::max(std::pow(NdotH, phongExponent(roughness)), 1e-200);
}

/// Density of L for each steradian.
inline double densityOf(Model model, const Cosines& c, double roughness)
{
    if (isDiffuse(model))
        return std::max(c.NdotL, 0.0) / kPi;
    const double ofH = model == eGGX ? distributionGGX(c.NdotH, roughness * roughness) * c.NdotH
                                     : (phongExponent(roughness) + 1.0) / (2.0 * kPi) * phongPower(c.NdotH, roughness);
    return ofH / (4.0 * c.VdotH);
}

inline double smithSchlick(double cosTheta, double k)
{
    return cosTheta / (cosTheta * (1.0 - k) + k);
}

inline double smithGTR(double cosTheta, double alpha)
{
    return 2.0 * cosTheta / (cosTheta + std::sqrt(alpha * alpha + (1.0 - alpha * alpha) * cosTheta * cosTheta));
}

/// Which masking GGX has.
enum class Masking
{
    eSchlick,
    eGTR
};

/// BRDF * N.L without the Fresnel term.
inline double specularOf(Model model, const Cosines& c, double roughness, Masking masking)
{
    const double n = phongExponent(roughness);
    if (model == eBlinnPhong) // normalised distribution, implicit masking
        return (n + 2.0) / (2.0 * kPi) * phongPower(c.NdotH, roughness) / 4.0 * c.NdotL;
    if (model == eAshikhminShirley)
        return (n + 1.0) / (8.0 * kPi) * phongPower(c.NdotH, roughness) / (c.VdotH * std::max(c.NdotL, c.NdotV)) *
               c.NdotL;
    const double alpha = roughness * roughness;
    const double wide = std::clamp(alpha, 0.04, 1.0);
    const double G = masking == Masking::eGTR ? smithGTR(c.NdotL, wide) * smithGTR(c.NdotV, wide)
                                              : smithSchlick(c.NdotL, alpha / 2) * smithSchlick(c.NdotV, alpha / 2);
    return distributionGGX(c.NdotH, alpha) * G / (4.0 * c.NdotV);
}

/// BRDF * pi of albedo 1, with the swap that sets both angles to the larger one.
inline double orenNayarOf(const Vec& N, const Vec& V, const Vec& L, double roughness)
{
    const double s = roughness * roughness;
    const double thetaV = std::acos(std::clamp(dot(N, V), 0.0, 1.0));
    const double thetaL = std::acos(std::clamp(dot(N, L), 0.0, 1.0));
    const double alpha = thetaV < thetaL ? thetaL : thetaV;
    const double beta = thetaL; // the smaller one only where L has it
    const Vec flatV = V - N * dot(N, V);
    const Vec flatL = L - N * dot(N, L);
    const double lengths = length(flatV) * length(flatL);
    const double cosPhi = lengths > 0.0 ? dot(flatV, flatL) / lengths : 0.0;
    return 1.0 - 0.5 * s / (s + 0.33) +
           0.45 * s / (s + 0.09) * std::max(0.0, cosPhi) * std::sin(alpha) * std::tan(beta);
}

inline double schlick(double VdotH)
{
    return std::pow(1.0 - VdotH, 5.0);
}

/// What one sample adds: x goes with the surface's own reflectance, y stands for itself.
inline Point evaluateModel(Model model, const Vec& N, const Vec& V, const Vec& L, const Vec& H, double roughness,
                           Masking masking = Masking::eSchlick)
{
    if (model == eLambert)
        return {1.0, 0.0};
    if (model == eOrenNayar)
        return {orenNayarOf(N, V, L, roughness), 0.0};
    const Cosines c(N, V, L, H);
    // Without the distribution, which would be 0 / 0 for a mirror: set it and the density to 1 alike.
    double weight = 0.0;
    if (model == eGGX && roughness == 0.0)
        weight = c.VdotH / (c.NdotH * c.NdotV) *
                 (masking == Masking::eGTR ? smithGTR(c.NdotL, 0.04) * smithGTR(c.NdotV, 0.04) : 1.0);
    else
        weight = specularOf(model, c, roughness, masking) / densityOf(model, c, roughness);
    const double F = schlick(c.VdotH);
    return {(1.0 - F) * weight, F * weight};
}

// ---- the table of the response -------------------------------------------------------------------------------------

inline Point integrateModel(Model model, double roughness, double NdotV, std::uint32_t samples,
                            Masking masking = Masking::eSchlick)
{
    const Vec N = {0, 0, 1};
    const Vec V = {std::sqrt(1.0 - NdotV * NdotV), 0, NdotV};
    Point sum;
    for (std::uint32_t i = 0; i < samples; ++i)
    {
        const Vec direction = sampleModel(model, hammersley(i, samples), roughness);
        const Vec L = isDiffuse(model) ? direction : mirror(V, direction);
        const Vec H = isDiffuse(model) ? normalize(L + V) : direction;
        if (L.z <= 0.0)
            continue;
        const Point value = evaluateModel(model, N, V, L, H, roughness, masking);
        sum = {sum.x + value.x, sum.y + value.y};
    }
    return {sum.x / samples, sum.y / samples};
}

/// The same response without any importance sampling: the BRDF summed over directions of L. Not for small roughness,
/// whose peak falls between the directions.
inline Point integrateByDirections(double roughness, double NdotV, int steps)
{
    const Vec N = {0, 0, 1};
    const Vec V = {std::sqrt(1.0 - NdotV * NdotV), 0, NdotV};
    Point sum;
    for (int i = 0; i < steps; ++i)
    {
        const double cosTheta = (i + 0.5) / steps; // even in solid angle
        const double sinTheta = std::sqrt(1.0 - cosTheta * cosTheta);
        for (int j = 0; j < 2 * steps; ++j)
        {
            const double phi = kPi * (j + 0.5) / (2 * steps); // the other half is its mirror image
            const Vec L = {sinTheta * std::cos(phi), sinTheta * std::sin(phi), cosTheta};
            const Vec H = normalize(L + V);
            const Cosines c(N, V, L, H);
            const double value = specularOf(eGGX, c, roughness, Masking::eSchlick);
            const double F = schlick(c.VdotH);
            sum.x += (1.0 - F) * value;
            sum.y += F * value;
        }
    }
    const double solidAngle = 2.0 * kPi / (2.0 * steps * steps);
    return {sum.x * solidAngle, sum.y * solidAngle};
}

// ---- filtering -----------------------------------------------------------------------------------------------------

/// The map that is filtered: its size, as the formula of the level wants it, and its row that is being drawn.
struct Texels
{
    int width;
    int height;
    int row;

    double solidAngle() const
    {
        const double south = (double(row) / (height + 1) - 0.5) * kPi;
        const double north = (double(row + 1) / (height + 1) - 0.5) * kPi;
        return std::max(2.0 * kPi / width * (std::sin(north) - std::sin(south)), 1e-6);
    }
};

inline double levelOf(double roughness, double density, double samples, const Texels& texels)
{
    if (roughness == 0.0)
        return 0.0;
    return 0.5 * std::log2(1.0 / (samples * std::max(density, 1e-6)) / texels.solidAngle());
}

/// The mean of `environment(direction, level)`.
template <typename Environment>
Vec prefilter(Model model, double roughness, const Vec& N, std::uint32_t samples, const Texels& texels,
              const Environment& environment)
{
    const Frame frame(N);
    Vec sum;
    double weight = 0.0;
    for (std::uint32_t i = 0; i < samples; ++i)
    {
        const Vec direction = frame.toWorld(sampleModel(model, hammersley(i, samples), roughness));
        const Vec L = isDiffuse(model) ? direction : mirror(N, direction);
        const Vec H = isDiffuse(model) ? normalize(L + N) : direction;
        const double NdotL = dot(N, L);
        if (NdotL <= 0.0)
            continue;
        const double density =
            model == eGGX && roughness == 0.0 ? 1.0 : densityOf(model, Cosines(N, N, L, H), roughness);
        sum = sum + environment(L, levelOf(roughness, density, samples, texels)) * NdotL;
        weight += NdotL;
    }
    return sum * (1.0 / weight);
}

inline Vec latLongDirection(double u, double v)
{
    const double phi = (u - 0.5) * 2.0 * kPi;
    const double theta = (v - 0.5) * kPi;
    return {std::cos(phi) * std::cos(theta), std::sin(theta), std::sin(phi) * std::cos(theta)};
}

inline Vec directionOfTexel(int x, int y, int width, int height)
{
    return latLongDirection((x + 0.5) / width, (y + 0.5) / height);
}

/// The same with each texel of the source in the place of the samples, whatever solid angle it has.
template <typename Environment>
Vec prefilterByTexels(double roughness, const Vec& N, const Texels& texels, const Environment& environment)
{
    Vec sum;
    double weight = 0.0;
    for (int y = 0; y < texels.height; ++y)
        for (int x = 0; x < texels.width; ++x)
        {
            const Vec L = directionOfTexel(x, y, texels.width, texels.height);
            const double NdotL = dot(N, L);
            if (NdotL <= 0.0)
                continue;
            const double level = levelOf(roughness, NdotL / kPi, double(texels.width) * texels.height, texels);
            sum = sum + environment(L, level) * NdotL;
            weight += NdotL;
        }
    return sum * (1.0 / weight);
}

} // namespace Harrow::Vrk::Test::Environment
