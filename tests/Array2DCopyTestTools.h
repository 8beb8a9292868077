// SPDX-License-Identifier: MIT
#pragma once

/// \file
/// What the suites share that look at the texels in the slots of Array2DTextureManager on the real driver: pictures,
/// textures made of them, and what each level of a layer must be.

#include "Array2DTestTools.h"
#include "AutoBinder.h"
#include "support/GLTest.h"

#include <algorithm>
#include <cmath>
#include <random>

namespace Harrow::Vrk::Test
{

/// Four components for each texel, rows from the bottom up.
struct TexelImage
{
    int width = 0;
    int height = 0;
    std::vector<float> texels;

    float at(int x, int y, int component) const
    {
        return texels[(std::size_t(y) * std::size_t(width) + std::size_t(x)) * 4 + std::size_t(component)];
    }
};

inline constexpr float kStep = 1.0f / 255.0f;

/// Of bytes.
inline TexelImage noise(int width, int height, unsigned seed)
{
    std::mt19937 random(seed);
    TexelImage result{width, height, std::vector<float>(std::size_t(width) * std::size_t(height) * 4)};
    for (float& value : result.texels)
        value = float(random() % 256u) * kStep;
    return result;
}

inline std::vector<TexelImage> noiseChain(int width, int height, int levels, unsigned seed)
{
    std::vector<TexelImage> chain;
    for (int level = 0; level < levels; ++level)
        chain.push_back(
            noise(std::max(1, width >> level), std::max(1, height >> level), seed * 100u + unsigned(level)));
    return chain;
}

inline TexelImage plain(int width, int height, std::array<float, 4> color)
{
    TexelImage result{width, height, {}};
    for (int i = 0; i < width * height; ++i)
        result.texels.insert(result.texels.end(), color.begin(), color.end());
    return result;
}

/// Each texel of the mean of the four that it covers; for even sizes.
inline TexelImage boxFiltered(const TexelImage& image)
{
    TexelImage result{image.width / 2, image.height / 2, {}};
    for (int y = 0; y < result.height; ++y)
        for (int x = 0; x < result.width; ++x)
            for (int c = 0; c < 4; ++c)
                result.texels.push_back((image.at(2 * x, 2 * y, c) + image.at(2 * x + 1, 2 * y, c) +
                                         image.at(2 * x, 2 * y + 1, c) + image.at(2 * x + 1, 2 * y + 1, c)) /
                                        4);
    return result;
}

/// Between the four texels next to the place of each new one's middle.
inline TexelImage linearlyScaled(const TexelImage& image, int width, int height)
{
    TexelImage result{width, height, {}};
    const auto clampedTexel = [&image](int x, int y, int c)
    { return image.at(std::clamp(x, 0, image.width - 1), std::clamp(y, 0, image.height - 1), c); };
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x)
            for (int c = 0; c < 4; ++c)
            {
                const double u = (x + 0.5) * image.width / width - 0.5;
                const double v = (y + 0.5) * image.height / height - 0.5;
                const int left = int(std::floor(u));
                const int low = int(std::floor(v));
                const double a = u - left;
                const double b = v - low;
                result.texels.push_back(
                    float((1 - b) * ((1 - a) * clampedTexel(left, low, c) + a * clampedTexel(left + 1, low, c)) +
                          b * ((1 - a) * clampedTexel(left, low + 1, c) + a * clampedTexel(left + 1, low + 1, c))));
            }
    return result;
}

inline testing::AssertionResult areAlike(const TexelImage& found, const TexelImage& expected, float tolerance)
{
    if (found.width != expected.width || found.height != expected.height)
        return testing::AssertionFailure()
               << found.width << "x" << found.height << " for " << expected.width << "x" << expected.height;
    for (int y = 0; y < found.height; ++y)
        for (int x = 0; x < found.width; ++x)
            for (int c = 0; c < 4; ++c)
                if (!(std::abs(found.at(x, y, c) - expected.at(x, y, c)) <= tolerance + 1e-5f))
                    return testing::AssertionFailure()
                           << "texel (" << x << ", " << y << ") component " << c << ": " << found.at(x, y, c) << " for "
                           << expected.at(x, y, c) << " (in steps: " << found.at(x, y, c) / kStep << ", "
                           << expected.at(x, y, c) / kStep << ")";
    return testing::AssertionSuccess();
}

/// A layer's levels, base first.
using LayerLevels = std::vector<TexelImage>;

class Array2DCopyFixture : public GLTest
{
protected:
    using Books = Array2DTextureManagerTestAccess;

    /// The rounding of two weights of eight bits.
    static constexpr float kScaled = 2 * kStep;

    void SetUp() override
    {
        GLTest::SetUp();
        if (HasFatalFailure())
            return;
        _before = Texture::NumAlive();
        TextureManager::setInstance(nullptr);
    }

    void TearDown() override
    {
        array2D.reset();
        TextureManager::setInstance(nullptr);
        if (!HasFatalFailure())
        {
            EXPECT_EQ(Texture::NumAlive(), _before);
            EXPECT_TRUE(TextureUnits::ofCurrentContext().textureToUnitMaps.isEmpty());
        }
        GLTest::TearDown();
    }

    void makeManager(int maxSlots = 8)
    {
        array2D = std::make_unique<OpenArray2DManager>();
        array2D->setMaxSlots(maxSlots);
    }

    static void setSampling(GLenum target, int levels, GLenum wrap = GL_REPEAT)
    {
        glTexParameteri(target, GL_TEXTURE_MIN_FILTER, GL_LINEAR);
        glTexParameteri(target, GL_TEXTURE_MAG_FILTER, GL_LINEAR);
        glTexParameteri(target, GL_TEXTURE_WRAP_S, GLint(wrap));
        glTexParameteri(target, GL_TEXTURE_WRAP_T, GLint(wrap));
        glTexParameteri(target, GL_TEXTURE_MAX_LEVEL, levels - 1);
    }

    /// The manager deletes it with its token.
    static Texture* newTexture(const LayerLevels& levels, GLint internalFormat = GL_RGBA8, GLenum wrap = GL_REPEAT)
    {
        auto* const texture = new Texture(nullptr);
        texture->setTarget(GL_TEXTURE_2D);
        fill(*texture, levels, internalFormat);
        const AutoBinder binder(texture);
        setSampling(GL_TEXTURE_2D, int(levels.size()), wrap);
        return texture;
    }

    static void fill(Texture& texture, const LayerLevels& levels, GLint internalFormat = GL_RGBA8)
    {
        const AutoBinder binder(&texture);
        for (std::size_t level = 0; level < levels.size(); ++level)
            glTexImage2D(GL_TEXTURE_2D, GLint(level), internalFormat, levels[level].width, levels[level].height, 0,
                         GL_RGBA, GL_FLOAT, levels[level].texels.data());
    }

    /// Faces in the order of OpenGL.
    static Texture* newCubeMap(const std::vector<LayerLevels>& faces, GLenum wrap = GL_REPEAT)
    {
        auto* const texture = new Texture(nullptr);
        texture->setTarget(GL_TEXTURE_CUBE_MAP);
        const AutoBinder binder(texture);
        for (std::size_t face = 0; face < faces.size(); ++face)
            for (std::size_t level = 0; level < faces[face].size(); ++level)
                glTexImage2D(GL_TEXTURE_CUBE_MAP_POSITIVE_X + GLenum(face), GLint(level), GL_RGBA8,
                             faces[face][level].width, faces[face][level].height, 0, GL_RGBA, GL_FLOAT,
                             faces[face][level].texels.data());
        setSampling(GL_TEXTURE_CUBE_MAP, int(faces[0].size()), wrap);
        return texture;
    }

    static Texture* newArray(const std::vector<LayerLevels>& layers, GLenum wrap = GL_REPEAT)
    {
        auto* const texture = new Texture(nullptr);
        texture->setTarget(GL_TEXTURE_2D_ARRAY);
        const AutoBinder binder(texture);
        for (std::size_t level = 0; level < layers[0].size(); ++level)
        {
            std::vector<float> texels;
            for (const LayerLevels& layer : layers)
                texels.insert(texels.end(), layer[level].texels.begin(), layer[level].texels.end());
            glTexImage3D(GL_TEXTURE_2D_ARRAY, GLint(level), GL_RGBA8, layers[0][level].width, layers[0][level].height,
                         GLsizei(layers.size()), 0, GL_RGBA, GL_FLOAT, texels.data());
        }
        setSampling(GL_TEXTURE_2D_ARRAY, int(layers[0].size()), wrap);
        return texture;
    }

    /// A token, and a place for it.
    TextureToken place(Texture* texture)
    {
        const TextureToken token = array2D->tokenForTexture(texture);
        array2D->bind(QList<TextureToken>{token});
        return token;
    }

    const OpenArray2DManager::SlotLayerData& record(const TextureToken& token) const
    {
        return Books::records(*array2D)[static_cast<qsizetype>(token.token)];
    }

    OpenArray2DManager::SlotData& slotOf(const TextureToken& token) const
    {
        return *Books::allSlots(*array2D)[record(token).slot];
    }

    /// What a slot has in a layer.
    static TexelImage texelsOf(Texture& slotTexture, int level, int layer)
    {
        const AutoBinder binder(&slotTexture);
        TexelImage result{slotTexture.width(level), slotTexture.height(level), {}};
        const int layers = slotTexture.depth(level);
        const std::size_t size = std::size_t(result.width) * std::size_t(result.height) * 4;
        std::vector<float> texels(size * std::size_t(layers));
        glGetTexImage(GL_TEXTURE_2D_ARRAY, level, GL_RGBA, GL_FLOAT, texels.data());
        if (layer < layers)
            result.texels.assign(texels.begin() + std::ptrdiff_t(size) * layer,
                                 texels.begin() + std::ptrdiff_t(size) * (layer + 1));
        else
            ADD_FAILURE() << "layer " << layer << " of " << layers;
        return result;
    }

    static int levelsOf(int width, int height)
    {
        int levels = 0;
        for (; width > 0 && height > 0; width /= 2, height /= 2)
            ++levels;
        return levels;
    }

    /// Each level that the source has is that one, scaled to the size of the slot's. Each other one is the half of the
    /// level before it.
    void expectCopied(const TextureToken& token, const LayerLevels& source, int layerOfToken = 0, float tolerance = 0)
    {
        ASSERT_GE(record(token).slot, 0);
        const auto& slot = slotOf(token);
        const int layer = record(token).layer + layerOfToken;
        TexelImage before;
        int width = slot.format.width;
        int height = slot.format.height;
        for (int level = 0; width > 0 && height > 0; ++level, width /= 2, height /= 2)
        {
            SCOPED_TRACE("token " + std::to_string(token.token) + " level " + std::to_string(level) + " layer " +
                         std::to_string(layer));
            const TexelImage found = texelsOf(*slot.texture, level, layer);
            if (level < int(source.size()))
                EXPECT_TRUE(areAlike(found, linearlyScaled(source[std::size_t(level)], width, height), tolerance));
            else if (before.width % 2 == 0 && before.height % 2 == 0)
                EXPECT_TRUE(areAlike(found, boxFiltered(before), kStep));
            else
                EXPECT_TRUE(areAlike(found, linearlyScaled(before, width, height), kScaled));
            before = found;
        }
        EXPECT_EQ(slotLevels(slot), levelsOf(slot.format.width, slot.format.height));
    }

    /// As a sampler sees it.
    static int slotLevels(const OpenArray2DManager::SlotData& slot)
    {
        const AutoBinder binder(slot.texture.get());
        GLint maxLevel = -1;
        glGetTexParameteriv(GL_TEXTURE_2D_ARRAY, GL_TEXTURE_MAX_LEVEL, &maxLevel);
        return maxLevel + 1;
    }

    std::unique_ptr<OpenArray2DManager> array2D;

private:
    int _before = 0;
};

} // namespace Harrow::Vrk::Test
