// SPDX-License-Identifier: MIT
#pragma once

/// \file
/// What the suites of environment lighting on the real driver share: textures from pictures of the CPU and back,
/// comparisons, and a fixture that sees to it that nothing stays behind.

#include "PrefilteredEnvMap.h"

#include "AutoBinder.h"
#include "EnvironmentPictureTools.h"
#include "GLFunctions.h"
#include "GLNameTools.h"
#include "LeftoversTestTools.h"
#include "Texture.h"
#include "support/CallLog.h"
#include "support/LogCapture.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <memory>
#include <string>
#include <vector>

namespace Harrow::Vrk::Test::Environment
{

using TexturePointer = std::unique_ptr<Texture>;

inline ShadingModel modelOf(Model model)
{
    return static_cast<ShadingModel>(model);
}

inline std::string modelName(const testing::TestParamInfo<Model>& tested)
{
    return kModelNames[tested.param];
}

// ---- textures ------------------------------------------------------------------------------------------------------

inline void uploadLevels(GLenum target, const Levels& levels)
{
    for (std::size_t level = 0; level < levels.size(); ++level)
    {
        const Image& image = levels[level];
        std::vector<float> values;
        for (const Vec& texel : image.texels)
            for (const double value : {texel.x, texel.y, texel.z, 1.0})
                values.push_back(static_cast<float>(value));
        glTexImage2D(target, static_cast<GLint>(level), GL_RGBA32F, image.width, image.height, 0, GL_RGBA, GL_FLOAT,
                     values.data());
    }
}

inline void setSampling(GLenum target, std::size_t levels, Wrap wrapU)
{
    glTexParameteri(target, GL_TEXTURE_MAX_LEVEL, static_cast<GLint>(levels) - 1);
    glTexParameteri(target, GL_TEXTURE_MIN_FILTER, levels > 1 ? GL_LINEAR_MIPMAP_NEAREST : GL_LINEAR);
    glTexParameteri(target, GL_TEXTURE_MAG_FILTER, GL_LINEAR);
    glTexParameteri(target, GL_TEXTURE_WRAP_S, wrapU == Wrap::eRepeat ? GL_REPEAT : GL_CLAMP_TO_EDGE);
    glTexParameteri(target, GL_TEXTURE_WRAP_T, GL_CLAMP_TO_EDGE);
}

/// Filtered as `sampleLatLong` does.
inline TexturePointer latLongTexture(const Levels& levels, Wrap wrap = Wrap::eRepeat)
{
    auto texture = std::make_unique<Texture>(nullptr);
    texture->setTarget(GL_TEXTURE_2D);
    const AutoBinder binder(texture.get());
    setSampling(GL_TEXTURE_2D, levels.size(), wrap);
    uploadLevels(GL_TEXTURE_2D, levels);
    return texture;
}

/// Filtered as `sampleCube` does.
inline TexturePointer cubeTexture(const Cube& cube)
{
    auto texture = std::make_unique<Texture>(nullptr);
    texture->setTarget(GL_TEXTURE_CUBE_MAP);
    const AutoBinder binder(texture.get());
    setSampling(GL_TEXTURE_CUBE_MAP, cube[0].size(), Wrap::eClamp);
    for (GLenum face = 0; face < 6; ++face)
        uploadLevels(GL_TEXTURE_CUBE_MAP_POSITIVE_X + face, cube[face]);
    return texture;
}

inline Image readLevel(Texture& texture, int level, GLenum image = GL_TEXTURE_2D)
{
    const AutoBinder binder(&texture);
    Image result(texture.width(level), texture.height(level));
    std::vector<float> values(result.texels.size() * 4);
    glGetTexImage(image, level, GL_RGBA, GL_FLOAT, values.data());
    for (std::size_t i = 0; i < result.texels.size(); ++i)
    {
        result.texels[i] = {values[4 * i], values[4 * i + 1], values[4 * i + 2]};
        EXPECT_EQ(values[4 * i + 3], 1.0f) << "alpha of texel " << i;
    }
    return result;
}

inline Image readFace(Texture& texture, int face, int level)
{
    return readLevel(texture, level, GL_TEXTURE_CUBE_MAP_POSITIVE_X + static_cast<GLenum>(face));
}

inline GLint parameterOf(Texture& texture, GLenum name)
{
    const AutoBinder binder(&texture);
    GLint value = -7;
    glGetTexParameteriv(texture.target(), name, &value);
    return value;
}

// ---- comparisons ---------------------------------------------------------------------------------------------------

inline double largestOf(const Vec& a)
{
    return std::max({std::abs(a.x), std::abs(a.y), std::abs(a.z)});
}

/// Whether no channel of a texel is further away than `relative` times the brightest channel expected, or than
/// `absolute`.
inline testing::AssertionResult areClose(const Image& actual, const Image& expected, double relative,
                                         double absolute = 1e-5)
{
    if (actual.width != expected.width || actual.height != expected.height)
        return testing::AssertionFailure() << actual.width << " by " << actual.height << " texels";
    double brightest = 0.0;
    for (const Vec& texel : expected.texels)
        brightest = std::max(brightest, largestOf(texel));
    const double tolerance = std::max(relative * brightest, absolute);
    double worst = -1.0;
    int worstX = 0;
    int worstY = 0;
    for (int y = 0; y < actual.height; ++y)
        for (int x = 0; x < actual.width; ++x)
        {
            double difference = largestOf(actual.at(x, y) - expected.at(x, y));
            if (!std::isfinite(difference))
                difference = std::numeric_limits<double>::infinity();
            if (difference > worst)
            {
                worst = difference;
                worstX = x;
                worstY = y;
            }
        }
    if (worst <= tolerance)
        return testing::AssertionSuccess() << "worst " << worst << " of " << brightest;
    const Vec got = actual.at(worstX, worstY);
    const Vec wanted = expected.at(worstX, worstY);
    return testing::AssertionFailure() << "texel " << worstX << ", " << worstY << " is (" << got.x << ", " << got.y
                                       << ", " << got.z << ") and not (" << wanted.x << ", " << wanted.y << ", "
                                       << wanted.z << "); allowed are " << tolerance;
}

inline Image constantImage(int width, int height, const Vec& color)
{
    Image image(width, height);
    std::fill(image.texels.begin(), image.texels.end(), color);
    return image;
}

// ---- what a map must be --------------------------------------------------------------------------------------------

inline double roughnessOf(int level, int levels)
{
    return double(level) / (levels - 1);
}

/// A level of a prefiltered latitude-longitude map, on the CPU. `samples` 0 stands for each texel of the source.
inline Image expectedLatLong(Model model, const Levels& source, int width, int height, int level, unsigned samples,
                             Wrap wrap = Wrap::eRepeat)
{
    const double roughness = roughnessOf(level, MaxLODLevel(width, height));
    const auto environment = [&](const Vec& L, double lod) { return sampleLatLong(source, L, lod, wrap); };
    Image image(width >> level, height >> level);
    for (int y = 0; y < image.height; ++y)
        for (int x = 0; x < image.width; ++x)
        {
            const Vec N = directionOfTexel(x, y, image.width, image.height);
            const Texels texels = {source[0].width, source[0].height, y};
            image.at(x, y) = samples == 0 ? prefilterByTexels(roughness, N, texels, environment)
                                          : prefilter(model, roughness, N, samples, texels, environment);
        }
    return image;
}

/// A face of a level of a prefiltered cube map.
inline Image expectedFace(Model model, const Cube& source, int size, int face, int level, unsigned samples)
{
    const double roughness = roughnessOf(level, MaxLODLevel(size, size));
    const int sourceSize = source[0][0].width;
    const auto environment = [&](const Vec& L, double lod) { return sampleCube(source, L, lod); };
    Image image(size >> level, size >> level);
    for (int y = 0; y < image.height; ++y)
        for (int x = 0; x < image.width; ++x)
        {
            const Vec N = directionOfFace(face, (x + 0.5) / image.width, (y + 0.5) / image.height);
            image.at(x, y) = prefilter(model, roughness, N, samples, {sourceSize, sourceSize, y}, environment);
        }
    return image;
}

// ---- fixture -------------------------------------------------------------------------------------------------------

inline void resetSettings()
{
    SetPrefilteredSourceWidthMax(std::numeric_limits<int>::max());
    SetPrefilteredSourceHeightMax(std::numeric_limits<int>::max());
    SetPrefilteredTilseSizeMax(1024);
    SetDiffuseImportanceSampling(false);
}

class EnvironmentDriverFixture : public LeftoversFixture
{
protected:
    void TearDown() override
    {
        resetSettings();
        glBindFramebuffer(GL_FRAMEBUFFER, 0);
        LeftoversFixture::TearDown();
    }

    static TexturePointer prefilterCube(Texture& source, int size, unsigned samples, Model model,
                                        TextureFormat format = RGBA32F)
    {
        return TexturePointer(CreatePrefilteredCubeEnvMap(&source, size, samples, modelOf(model), format));
    }

    static TexturePointer prefilterLatLong(Texture& source, int width, int height, unsigned samples, Model model,
                                           TextureFormat format = RGBA32F)
    {
        return TexturePointer(CreatePrefilteredLatLongEnvMap(&source, width, height, samples, modelOf(model), format));
    }

    /// All faces of all levels.
    static void expectCube(Texture& map, Model model, const Cube& source, unsigned samples, double tolerance)
    {
        const int size = readFace(map, 0, 0).width;
        for (int level = 0; level < MaxLODLevel(size, size); ++level)
            for (int face = 0; face < 6; ++face)
                EXPECT_TRUE(areClose(readFace(map, face, level),
                                     expectedFace(model, source, size, face, level, samples), tolerance))
                    << kModelNames[model] << ", level " << level << ", face " << face;
    }
};

} // namespace Harrow::Vrk::Test::Environment
