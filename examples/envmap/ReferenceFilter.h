// SPDX-License-Identifier: MIT
// The integral of the filter of environments, done on the CPU in double precision, and how far a filtered map is from
// it. It shares no code with the shaders: it sums up the picture's own texels, by solid angle, and where the lobe is
// narrow it takes many directions in the middle of it. It reads no mipmaps.
#pragma once

#include "CubeDirections.h"
#include "EnvironmentPicture.h"

#include <VrkGL/PrefilteredEnvMap.h>

#include <atomic>
#include <functional>
#include <vector>

namespace envmap
{

/// A texel of an environment, for sums over all of them.
struct EnvironmentTexel
{
    Direction direction;
    Light light;
    double solidAngle;
};

/// An environment as the sum over its texels sees it, in falling fineness, and as a place in it is looked up.
class ReferenceEnvironment
{
public:
    explicit ReferenceEnvironment(CubeFaces faces);
    explicit ReferenceEnvironment(LightImage latLong);

    Light light(const Direction& direction) const;

    /// The finest first; each further one has a quarter of the texels, as long as the sides are even.
    const std::vector<std::vector<EnvironmentTexel>>& texels() const
    {
        return _texels;
    }

private:
    void addTexels(const CubeFaces& faces);
    void addTexels(const LightImage& latLong);

    CubeFaces _faces;
    LightImage _latLong;
    std::vector<std::vector<EnvironmentTexel>> _texels;
};

/// A weighted mean in the making.
struct WeightedLight
{
    Light sum = {};
    double weight = 0.0;

    void add(const Light& light, double factor)
    {
        for (std::size_t i = 0; i < 3; ++i)
            sum[i] += light[i] * factor;
        weight += factor;
    }

    Light mean() const
    {
        return {sum[0] / weight, sum[1] / weight, sum[2] / weight};
    }
};

/// The filter of one level.
struct ReferenceSettings
{
    Harrow::Vrk::ShadingModel model = Harrow::Vrk::SHADING_PHYSICALLY_BASED;
    double roughness = 0.0;
    /// Each texel counts alike, and not by its solid angle: how diffuse maps by longitude and latitude are filtered
    /// that take every texel.
    bool countsTexels = false;
};

/// With the surface's normal and the eye in one direction: the mean of the light over the half space above it, weighted
/// by the density of the shading model's samples and by the cosine.
class ReferenceFilter
{
public:
    ReferenceFilter(const ReferenceEnvironment& environment, const ReferenceSettings& settings);

    Light filtered(const Direction& normal) const;

    /// "16384 directions and a sum over 393216 texels", or the sum alone.
    QString method() const;

private:
    struct Sample
    {
        Direction direction; ///< around +z
        double weight;
    };

    double weight(double cosine) const;
    double lobe() const;
    void makeSamples();
    void addSamples(const Direction& normal, WeightedLight& light) const;
    void addTexels(const Direction& normal, WeightedLight& light) const;

    const ReferenceEnvironment& _environment;
    ReferenceSettings _settings;
    double _shape;
    std::vector<Sample> _samples;
    double _reach = 2.0; ///< cosine up to which samples stand for the texels; beyond 1: nowhere
    const std::vector<EnvironmentTexel>* _texels = nullptr;
};

/// A texel of a map that is to be checked.
struct FilteredTexel
{
    Direction normal;
    Light light;
};

/// At most `most` texels of a level, evenly spread. A strip is a row of the faces of a cube map.
std::vector<FilteredTexel> texelsOfStrip(const LightImage& strip, int most);
std::vector<FilteredTexel> texelsOfLatLong(const LightImage& map, int most);

struct Deviation
{
    double mean = 0.0; ///< of the differences, over all channels
    double largest = 0.0;
    double reference = 0.0; ///< the mean of what was to be
};

/// On all cores. `progress` is told the part done, 0 to 1, on the calling thread.
Deviation deviation(const ReferenceFilter& filter, const std::vector<FilteredTexel>& texels,
                    const std::function<void(float)>& progress);

} // namespace envmap
