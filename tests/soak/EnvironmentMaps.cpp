// SPDX-License-Identifier: MIT
#include "EnvironmentMaps.h"

#include "Random.h"

#include "AutoBinder.h"
#include "GLFunctions.h"
#include "PrefilteredEnvMap.h"
#include "Texture.h"
#include "TextureProcessing.h"
#include "ZelImageCubemapUtils.h"

#include <vector>

namespace vrksoak
{

using namespace Harrow::Vrk;

namespace
{

constexpr int kWidth = 32;
constexpr int kHeight = 16;

/// Blobs of light, with mipmaps.
std::unique_ptr<Texture> newSky(Random& random)
{
    std::vector<float> texels;
    for (int i = 0; i < kWidth * kHeight; ++i)
    {
        const float light = random.oneIn(40) ? 8.0f : 0.5f * random.unit();
        texels.insert(texels.end(), {light, 0.9f * light, 0.8f * light, 1.0f});
    }
    auto texture = std::make_unique<Texture>(GL_TEXTURE_2D, GL_RGBA16F, kWidth, kHeight, 1, nullptr);
    const AutoBinder bound(texture.get());
    glTexImage2D(GL_TEXTURE_2D, 0, GL_RGBA16F, kWidth, kHeight, 0, GL_RGBA, GL_FLOAT, texels.data());
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_T, GL_CLAMP_TO_EDGE);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_LINEAR_MIPMAP_LINEAR);
    glGenerateMipmap(GL_TEXTURE_2D);
    return texture;
}

/// What the filters change and a stage counts on.
void restoreState()
{
    glDisable(GL_DEPTH_TEST);
    glDisable(GL_BLEND);
    glDepthMask(GL_TRUE);
}

} // namespace

std::unique_ptr<Texture> makeEnvironment(Random& random, QString& error)
{
    const std::unique_ptr<Texture> sky = newSky(random);
    const auto model = ShadingModel(random.below(5));
    std::unique_ptr<Texture> map(CreatePrefilteredLatLongEnvMap(sky.get(), kWidth, kHeight, 8, model, RGBA16F));
    const std::unique_ptr<Texture> table(CreatePreintegratedBRDFTable(
        16, 16, 4, model < SHADING_DIFFUSE_START_INDEX ? model : SHADING_TRADITIONAL, RGBA16F));
    restoreState();
    if (!map || !table)
        error = QStringLiteral("the environment cannot be filtered");
    return map;
}

void filterCubeMap(Random& random, QString& error)
{
    const std::unique_ptr<Texture> sky = newSky(random);
    const std::unique_ptr<Texture> cube(ZelImageCubemapUtils::createGLCubemapFromTexture(
        sky.get(), ZelImageCubemapSourceType::LatLong, GL_TEXTURE_CUBE_MAP, ZelImageCubemapColorSpace::Linear, 8));
    std::unique_ptr<Texture> filtered;
    if (cube)
        filtered.reset(CreatePrefilteredCubeEnvMap(cube.get(), 8, 8, ShadingModel(random.below(5)), RGBA16F));
    std::unique_ptr<Texture> strip;
    if (filtered)
        strip.reset(ZelImageCubemapUtils::createGLCubemapStripFromTexture(filtered.get(), 0));
    restoreState();
    if (!strip)
        error = QStringLiteral("the cube map cannot be made or filtered");
}

} // namespace vrksoak
