// SPDX-License-Identifier: MIT
#pragma once

/// \file
/// What the suites of SamplerTextureManager on the fake driver share: a view of its books and its steps of a draw.

#include "SamplerTextureManager.h"

#include "SamplerSlotsTestTools.h"

namespace Harrow::Vrk
{

struct SamplerTextureManagerTestAccess
{
    static const QList<int>& tokenToSlot(const SamplerTextureManager& manager)
    {
        return manager._tokenToSlot;
    }
    static const QList<int>& slotUnits(const SamplerTextureManager& manager)
    {
        return SamplerSlotsTestAccess::slotUnits(*manager._slots);
    }
    static const QList<int>& slotRefCounts(const SamplerTextureManager& manager)
    {
        return SamplerSlotsTestAccess::slotRefCounts(*manager._slots);
    }
    static Texture* slotMapTexture(const SamplerTextureManager& manager)
    {
        return SamplerSlotsTestAccess::slotMapTexture(*manager._slots);
    }
    static Texture* defaultTexture(const SamplerTextureManager& manager)
    {
        return SamplerSlotsTestAccess::defaultTexture(*manager._slots);
    }
};

} // namespace Harrow::Vrk

namespace Harrow::Vrk::Test
{

class ReservingManager : public SamplerTextureManager
{
public:
    using SamplerTextureManager::reserveTokenBlock;
};

class SamplerFixture : public SlotsFixture
{
protected:
    using Slots = SamplerTextureManagerTestAccess;

    void SetUp() override
    {
        SlotsFixture::SetUp();
        sampler = std::make_unique<ReservingManager>();
    }

    void TearDown() override
    {
        sampler.reset();
        SlotsFixture::TearDown();
    }

    /// Textures 1000, 1001, … with the tokens 1, 2, …; token 0 is white.
    std::vector<Texture*> withTokens(int count)
    {
        const auto textures = wrapped(count);
        for (int i = 0; i < count; ++i)
            EXPECT_EQ(sampler->tokenForTexture(textures[std::size_t(i)]), TextureToken(quint64(i) + 1));
        return textures;
    }

    void drawAndRelease(const QList<TextureToken>& list)
    {
        sampler->bind(list);
        sampler->bind(program.get());
        sampler->unbind(program.get());
        sampler->unbind(list);
    }

    static QString uploadingMap(int width)
    {
        return pointerCall("glTexImage2D", {GL_TEXTURE_2D, 0, GL_R32I, width, 1, 0, GL_RED_INTEGER, GL_INT});
    }

    std::unique_ptr<ReservingManager> sampler;
};

} // namespace Harrow::Vrk::Test
