// SPDX-License-Identifier: MIT
#pragma once

/// \file
/// What the suites of the pool of scratch textures share: a look into its books, and a fixture on the fake driver that
/// reaches it as its users do, through a texture manager.

#include "TexturePool.h"

#include "CallMaskTools.h"
#include "SamplerTextureManager.h"
#include "TextureTestTools.h"

#include <QSet>

#include <memory>
#include <vector>

namespace Harrow::Vrk
{

/// The pool itself is not exported, so nothing here calls a function of its own.
struct TexturePoolTestAccess
{
    static int refCount(const TexturePool& pool, Texture* texture)
    {
        return pool._refCounts.value(texture, 0);
    }
    static QSet<Texture*> inUse(const TexturePool& pool)
    {
        return QSet<Texture*>(pool._refCounts.keyBegin(), pool._refCounts.keyEnd());
    }
    static QSet<Texture*> known(const TexturePool& pool)
    {
        return QSet<Texture*>(pool._keys.keyBegin(), pool._keys.keyEnd());
    }
    static qsizetype freeLists(const TexturePool& pool)
    {
        return pool._freeTextures.size();
    }
};

struct TextureManagerTestAccess
{
    static const TexturePool& pool(const TextureManager& manager)
    {
        return *manager._texturePool;
    }
};

} // namespace Harrow::Vrk

namespace Harrow::Vrk::Test
{

inline constexpr int kMaxSamples = 8;

inline QList<GLuint> deletedNames;

inline QString askSamples()
{
    return QStringLiteral("glGetIntegerv(0x8d57, @)");
}

inline QString tooManySamples()
{
    return QStringLiteral("Warning: TexturePool::take() requested more than GL_MAX_SAMPLES samples.");
}

class TexturePoolTest : public TextureFixture
{
protected:
    void SetUp() override
    {
        deletedNames.clear();
        driver.replace(
            "glDeleteTextures",
            +[](GLsizei count, const GLuint* names) { deletedNames += QList(names, names + count); });
        driver.setInteger(GL_MAX_SAMPLES, kMaxSamples);
        TextureFixture::SetUp();
        makeRecord();
        _texturesBefore = Texture::NumAlive();
        manager = std::make_unique<SamplerTextureManager>();
    }

    void TearDown() override
    {
        manager.reset();
        EXPECT_EQ(Texture::NumAlive(), _texturesBefore);
    }

    Texture* take(TextureFormat format = RGBA, int width = 4, int height = 4, int depth = 1, int samples = 1)
    {
        return manager->tempTexture(format, width, height, depth, samples);
    }
    std::vector<Texture*> takeSome(int count)
    {
        std::vector<Texture*> textures;
        for (int i = 0; i < count; ++i)
            textures.push_back(take());
        return textures;
    }
    void release(Texture* texture, int count = 1)
    {
        manager->releaseTempTextureRef(texture, count);
    }
    int refCount(Texture* texture) const
    {
        return TexturePoolTestAccess::refCount(pool(), texture);
    }
    QSet<Texture*> inUse() const
    {
        return TexturePoolTestAccess::inUse(pool());
    }
    QSet<Texture*> known() const
    {
        return TexturePoolTestAccess::known(pool());
    }
    qsizetype freeLists() const
    {
        return TexturePoolTestAccess::freeLists(pool());
    }
    int texturesAlive() const
    {
        return Texture::NumAlive() - _texturesBefore;
    }

    QStringList summary() const
    {
        const LogCapture log;
        manager->printTempTextureSummary();
        EXPECT_EQ(log.messages(), log.messages(QtDebugMsg));
        return log.messages();
    }

    std::unique_ptr<SamplerTextureManager> manager;

private:
    const TexturePool& pool() const
    {
        return TextureManagerTestAccess::pool(*manager);
    }

    int _texturesBefore = 0;
};

} // namespace Harrow::Vrk::Test
