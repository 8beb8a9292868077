// SPDX-License-Identifier: MIT
#pragma once

/// \file
/// What the suites of the readers of single 2D images share.

#include "HDRTestTools.h"
#include "TextureLoader.h"
#include "TextureTestTools.h"

#include <gtest/gtest.h>

#include <memory>

namespace Harrow::Vrk::Test
{

/// All answers of a loader of one level of one 2D image, but for its size and whether it is compressed.
inline void expectOnePlain2DImage(const TextureLoader& loader)
{
    EXPECT_FALSE(loader.isArrayTexture());
    EXPECT_FALSE(loader.isCubeMapTexture());
    EXPECT_FALSE(loader.is1DTexture());
    EXPECT_TRUE(loader.is2DTexture());
    EXPECT_FALSE(loader.is3DTexture());
    EXPECT_FALSE(loader.hasMipMaps());
    EXPECT_EQ(loader.depth(), 0u);
    EXPECT_EQ(loader.arraySize(), 0u);
    EXPECT_EQ(loader.cubeFaces(), 1u);
    EXPECT_EQ(loader.mipmapLevels(), 1u);
    EXPECT_EQ(loader.numMetadataEntries(), 0u);
    EXPECT_EQ(loader.rawKey(0), nullptr);
    EXPECT_EQ(loader.rawValue(0), nullptr);
    EXPECT_EQ(loader.key(0), QString());
    EXPECT_EQ(loader.value(0), QString());
}

/// A load on the fake driver leaves nothing behind but the texture that it gives.
class TextureReaderFixture : public TextureFixture
{
protected:
    void SetUp() override
    {
        TextureFixture::SetUp();
        aliveBefore = Texture::NumAlive();
        makeRecord();
    }

    void TearDown() override
    {
        texture.reset();
        EXPECT_EQ(Texture::NumAlive(), aliveBefore);
        for (unsigned unit = 0; unit < kUnits; ++unit)
            EXPECT_TRUE(Texture::isTextureUnitFree(unit));
        EXPECT_EQ(trace.alive, 0);
    }

    MemoryUse trace;
    std::unique_ptr<Texture> texture;
    int aliveBefore = 0;
};

} // namespace Harrow::Vrk::Test
