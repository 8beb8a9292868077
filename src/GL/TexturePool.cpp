// SPDX-License-Identifier: MIT
#include "TexturePool.h"

#include "Diagnostics.h"
#include "GLFunctions.h"
#include "Texture.h"
#include "TextureFormatNames.h"

#include <QHashFunctions>

#include <algorithm>
#include <functional>
#include <limits>
#include <memory>

namespace Harrow::Vrk
{
namespace
{

GLenum targetOf(const TexturePoolKey& key)
{
    if (key.samples > 1)
        return key.depth == 1 ? GL_TEXTURE_2D_MULTISAMPLE : GL_TEXTURE_2D_MULTISAMPLE_ARRAY;
    return key.depth == 1 ? GL_TEXTURE_2D : GL_TEXTURE_2D_ARRAY;
}

int clampedSamples(int samples)
{
    GLint maxSamples = 0;
    glGetIntegerv(GL_MAX_SAMPLES, &maxSamples);
    if (samples <= maxSamples)
        return samples;
    VRK_LOG_DEBUG("Warning: TexturePool::take() requested more than GL_MAX_SAMPLES samples.");
    return maxSamples;
}

/// A sum of two counts; where it is no int, as near to it as can be.
int toCount(qint64 sum)
{
    return static_cast<int>(std::min<qint64>(sum, std::numeric_limits<int>::max()));
}

const char* printedName(TextureFormat format)
{
    const char* const name = textureFormatName(format);
    return name ? name : "unknown";
}

} // namespace

size_t qHash(const TexturePoolKey& key, size_t seed)
{
    return qHashMulti(seed, static_cast<int>(key.format), key.width, key.height, key.depth, key.samples);
}

// ---- free textures of one description ------------------------------------------------------------------------------

void TexturePool::FreeTextures::append(Texture* texture)
{
    _appended.append(texture);
}

Texture* TexturePool::FreeTextures::takeHighest()
{
    for (Texture* const texture : std::as_const(_appended))
    {
        _sorted.push_back(texture);
        std::push_heap(_sorted.begin(), _sorted.end(), std::less<>());
    }
    _appended.clear();
    std::pop_heap(_sorted.begin(), _sorted.end(), std::less<>());
    Texture* const highest = _sorted.back();
    _sorted.pop_back();
    return highest;
}

bool TexturePool::FreeTextures::isEmpty() const
{
    return _sorted.empty() && _appended.isEmpty();
}

qsizetype TexturePool::FreeTextures::size() const
{
    return static_cast<qsizetype>(_sorted.size()) + _appended.size();
}

QList<Texture*> TexturePool::FreeTextures::inOrder() const
{
    QList<Texture*> textures(_sorted.begin(), _sorted.end());
    std::sort(textures.begin(), textures.end(), std::less<>());
    return textures + _appended;
}

// ---- the pool ------------------------------------------------------------------------------------------------------

TexturePool::~TexturePool()
{
    qDeleteAll(_keys.keyBegin(), _keys.keyEnd());
}

Texture* TexturePool::take(TextureFormat format, int width, int height, int depth, int samples)
{
    VRK_ASSERT(width > 0 && height > 0 && depth > 0, "TexturePool asked for texture of size (%dx%dx%d)", width, height,
               depth);
    VRK_ASSERT(samples > 0, "TexturePool requested samples can't be less than 1");
    const TexturePoolKey key = {format, width, height, depth, clampedSamples(samples)};

    Texture* texture = nullptr;
    if (const auto free = _freeTextures.find(key); free != _freeTextures.end())
    {
        texture = free->takeHighest();
        if (free->isEmpty())
            _freeTextures.erase(free);
    }
    else
    {
        texture = make(key);
        if (!texture)
            return nullptr;
        _keys.insert(texture, key);
    }
    _refCounts.insert(texture, 1);
    return texture;
}

void TexturePool::addRef(Texture* texture, int count)
{
    const auto references = _refCounts.find(texture);
    if (references == _refCounts.end() || count < 1)
        return;
    *references = toCount(qint64(*references) + count);
}

void TexturePool::release(Texture* texture, int count)
{
    const auto references = _refCounts.find(texture);
    if (references == _refCounts.end())
        return;
    const qint64 remaining = qint64(*references) - count;
    if (remaining < 1)
    {
        _freeTextures[_keys.value(texture)].append(texture);
        _refCounts.erase(references);
    }
    else
    {
        *references = toCount(remaining);
    }
}

void TexturePool::deleteUnused()
{
    for (const FreeTextures& free : std::as_const(_freeTextures))
    {
        for (Texture* const texture : free.inOrder())
        {
            _keys.remove(texture);
            delete texture;
        }
    }
    _freeTextures.clear();
}

void TexturePool::printSummary() const
{
    struct Counts
    {
        qsizetype free = 0;
        qsizetype active = 0;
    };
    QHash<TexturePoolKey, Counts> breakdown;
    qsizetype freeCount = 0;
    for (auto free = _freeTextures.cbegin(); free != _freeTextures.cend(); ++free)
    {
        breakdown[free.key()].free = free->size();
        freeCount += free->size();
    }
    for (auto used = _refCounts.cbegin(); used != _refCounts.cend(); ++used)
        ++breakdown[_keys.value(used.key())].active;

    VRK_LOG_DEBUG("%d managed textures:", static_cast<int>(_keys.size()));
    VRK_LOG_DEBUG("- %d active textures", static_cast<int>(_refCounts.size()));
    VRK_LOG_DEBUG("- %d free textures", static_cast<int>(freeCount));
    VRK_LOG_DEBUG("- breakdown by texture format, width and height:");
    for (auto counts = breakdown.cbegin(); counts != breakdown.cend(); ++counts)
    {
        const TexturePoolKey& key = counts.key();
        VRK_LOG_DEBUG("  - %s %dx%d: %d free, %d active", printedName(key.format), key.width, key.height,
                      static_cast<int>(counts->free), static_cast<int>(counts->active));
    }
}

void TexturePool::setFixedSampleLocations(bool fixed)
{
    _fixedSampleLocations = fixed;
}

Texture* TexturePool::make(const TexturePoolKey& key) const
{
    auto texture = std::make_unique<Texture>(nullptr);
    texture->setTarget(targetOf(key));
    // A single-sample array records depth 1 whatever it has: the recorded size is interface, the image is right.
    const int recordedDepth = key.samples > 1 ? key.depth : 1;
    texture->setSize(0, InternalFormat(key.format), key.width, key.height, recordedDepth);
    if (!texture->bind())
        return nullptr;
    specifyImage(*texture, key);
    texture->unbind();
    return texture.release();
}

void TexturePool::specifyImage(const Texture& texture, const TexturePoolKey& key) const
{
    const GLenum target = texture.target();
    const GLint internal = InternalFormat(key.format);
    if (key.samples > 1)
    {
        if (key.depth == 1)
            glTexImage2DMultisample(target, key.samples, internal, key.width, key.height, _fixedSampleLocations);
        else
            glTexImage3DMultisample(target, key.samples, internal, key.width, key.height, key.depth,
                                    _fixedSampleLocations);
        return;
    }
    glTexParameteri(target, GL_TEXTURE_MAG_FILTER, GL_NEAREST);
    glTexParameteri(target, GL_TEXTURE_MIN_FILTER, GL_NEAREST);
    const GLenum format = ExternalFormat(key.format);
    const GLenum type = ExternalType(key.format);
    if (key.depth == 1)
        glTexImage2D(target, 0, internal, key.width, key.height, 0, format, type, nullptr);
    else
        glTexImage3D(target, 0, internal, key.width, key.height, key.depth, 0, format, type, nullptr);
}

} // namespace Harrow::Vrk
