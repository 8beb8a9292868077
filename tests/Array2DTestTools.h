// SPDX-License-Identifier: MIT
#pragma once

/// \file
/// What the suites of Array2DTextureManager on the fake driver share: a view of its books, a driver whose textures have
/// the sizes and the sampler state that a test gives them, and textures of the test's own.

#include "Array2DSlots.h"
#include "Array2DTextureManager.h"

#include "TextureManagerTestTools.h"

#include <unordered_map>

namespace Harrow::Vrk
{

struct Array2DTextureManagerTestAccess
{
    using SlotFormat = Array2DTextureManager::SlotFormat;
    using SlotData = Array2DTextureManager::SlotData;
    using SlotLayerData = Array2DTextureManager::SlotLayerData;

    static const QList<SlotData*>& allSlots(const Array2DTextureManager& manager)
    {
        return manager._slots;
    }
    static const QList<SlotLayerData>& records(const Array2DTextureManager& manager)
    {
        return manager._textureTokenToSlotLayerData;
    }
    static const QList<int>& layerCounts(const Array2DTextureManager& manager)
    {
        return manager._tokenLayerCounts;
    }
    static const QList<TextureToken>& pendingTokens(const Array2DTextureManager& manager)
    {
        return manager._pendingTokens->inOrder();
    }
    static bool slotMapDirty(const Array2DTextureManager& manager)
    {
        return manager._slotMapDirty;
    }
    static void setSlotMapDirty(Array2DTextureManager& manager, bool dirty)
    {
        manager._slotMapDirty = dirty;
    }
    static const QList<SlotData*>& retiredSlots(const Array2DTextureManager& manager)
    {
        return manager._retiredSlots;
    }
    static const QHash<TextureToken, TextureToken>& patchSources(const Array2DTextureManager& manager)
    {
        return manager._patchTokenToSourceToken;
    }
    static void setPatchSource(Array2DTextureManager& manager, const TextureToken& patch, const TextureToken& source)
    {
        manager._patchTokenToSourceToken.insert(patch, source);
    }
    static void setRecord(Array2DTextureManager& manager, const TextureToken& token, const SlotLayerData& record)
    {
        manager.setRecord(static_cast<qsizetype>(token.token), record);
    }
    static TextureManager::SlotReallocationMethod reallocationMethod(const Array2DTextureManager& manager)
    {
        return manager._slotReallocationMethod;
    }
    /// Lower and upper clamp of the width, then of the height.
    static std::array<int, 4> slotLimits(const Array2DTextureManager& manager)
    {
        return {manager._minSlotWidth, manager._maxSlotWidth, manager._minSlotHeight, manager._maxSlotHeight};
    }
    static void setMinSlotSize(Array2DTextureManager& manager, int width, int height)
    {
        manager._minSlotWidth = width;
        manager._minSlotHeight = height;
    }
    static void setMaxSlotSize(Array2DTextureManager& manager, int width, int height)
    {
        manager._maxSlotWidth = width;
        manager._maxSlotHeight = height;
    }
    static void setSlotAlignment(Array2DTextureManager& manager, int x, int y)
    {
        manager._slotAlignmentX = x;
        manager._slotAlignmentY = y;
    }
    static int bindCount(const Array2DTextureManager& manager)
    {
        return manager._bindCount;
    }
    static Texture* slotMapTexture(const Array2DTextureManager& manager)
    {
        return manager._slotMapTexture.get();
    }
    static const QList<int>& slotUnits(const Array2DTextureManager& manager)
    {
        return manager._slotUnits;
    }
    static const QList<quint64>& slotHandles(const Array2DTextureManager& manager)
    {
        return manager._slotHandles;
    }
    static bool anisotropySupported(const Array2DTextureManager& manager)
    {
        return manager._anisotropySupported;
    }
    static float maxAnisotropy(const Array2DTextureManager& manager)
    {
        return manager._maxAnisotropy;
    }
};

} // namespace Harrow::Vrk

namespace Harrow::Vrk::Test
{

/// What the driver answers of a texture. Level n is 2^n times smaller, and nothing at sizes below 1.
struct FakeTexture
{
    int width = 1;
    int height = 1;
    int depth = 1;
    int internalFormat = GL_RGBA8;
    int wrapS = GL_REPEAT;
    int wrapT = GL_REPEAT;
    int magFilter = GL_LINEAR;
    int minFilter = GL_LINEAR;
    float anisotropy = 1.0f;
    float lodBias = 0.0f;
    int maxLevel = 1000;
};

/// By name; one that is not in it has the defaults.
inline std::unordered_map<GLuint, FakeTexture> fakeTextures;

/// Which texture each unit has of each target.
struct FakeBindings
{
    GLenum active = GL_TEXTURE0;
    std::unordered_map<quint64, GLuint> names;

    GLuint& name(GLenum target)
    {
        const bool isFace = target >= GL_TEXTURE_CUBE_MAP_POSITIVE_X && target <= GL_TEXTURE_CUBE_MAP_NEGATIVE_Z;
        return names[(quint64(active) << 32) | quint64(isFace ? GLenum(GL_TEXTURE_CUBE_MAP) : target)];
    }
    FakeTexture texture(GLenum target)
    {
        const auto found = fakeTextures.find(name(target));
        return found == fakeTextures.end() ? FakeTexture() : found->second;
    }
};
inline FakeBindings fakeBindings;

inline void VRK_GLAPIENTRY fakeActiveTexture(GLenum unit)
{
    fakeBindings.active = unit;
}

inline void VRK_GLAPIENTRY fakeBindTexture(GLenum target, GLuint name)
{
    fakeBindings.name(target) = name;
}

inline void VRK_GLAPIENTRY fakeGetTexLevelParameteriv(GLenum target, GLint level, GLenum name, GLint* value)
{
    const FakeTexture texture = fakeBindings.texture(target);
    switch (name)
    {
    case GL_TEXTURE_WIDTH:
        *value = texture.width >> level;
        break;
    case GL_TEXTURE_HEIGHT:
        *value = texture.height >> level;
        break;
    case GL_TEXTURE_DEPTH:
        *value = texture.depth;
        break;
    case GL_TEXTURE_INTERNAL_FORMAT:
        *value = texture.internalFormat;
        break;
    default:
        *value = 0;
    }
}

inline void VRK_GLAPIENTRY fakeGetTexParameteriv(GLenum target, GLenum name, GLint* value)
{
    const FakeTexture texture = fakeBindings.texture(target);
    switch (name)
    {
    case GL_TEXTURE_WRAP_S:
        *value = texture.wrapS;
        break;
    case GL_TEXTURE_WRAP_T:
        *value = texture.wrapT;
        break;
    case GL_TEXTURE_MAG_FILTER:
        *value = texture.magFilter;
        break;
    case GL_TEXTURE_MIN_FILTER:
        *value = texture.minFilter;
        break;
    case GL_TEXTURE_MAX_LEVEL:
        *value = texture.maxLevel;
        break;
    default:
        *value = 0;
    }
}

inline void VRK_GLAPIENTRY fakeGetTexParameterfv(GLenum target, GLenum name, GLfloat* value)
{
    const FakeTexture texture = fakeBindings.texture(target);
    *value = name == GL_TEXTURE_LOD_BIAS ? texture.lodBias : texture.anisotropy;
}

/// With the operations that are for subclasses.
class OpenArray2DManager : public Array2DTextureManager
{
public:
    using Array2DTextureManager::alignedSlotFormat;
    using Array2DTextureManager::blitTokenToTextureSlot;
    using Array2DTextureManager::deleteSlots;
    using Array2DTextureManager::determineSlotLayerDataForTexture;
    using Array2DTextureManager::dumpSlots;
    using Array2DTextureManager::filterSlotsBySimilar;
    using Array2DTextureManager::findSlotLayer;
    using Array2DTextureManager::moveSlotLayers;
    using Array2DTextureManager::seachForSlotWithLargestXY;
    using Array2DTextureManager::searchForSimilarSlot;
    using Array2DTextureManager::setupSlots;
    using Array2DTextureManager::SlotData;
    using Array2DTextureManager::SlotFormat;
    using Array2DTextureManager::SlotLayerData;
    using Array2DTextureManager::sortSlotsByLargest;
    using Array2DTextureManager::textureTokenIssued;
    using Array2DTextureManager::textureTokenRevoked;
    using Array2DTextureManager::updateSlots;
    using TextureManager::deleteToken;
    using TextureManager::maxToken;
    using TextureManager::reserveToken;
    using TextureManager::reserveTokenBlock;
    using TextureManager::setTextureOfToken;
};

/// Slots of up to 32768 x 32768. The manager is made by `makeManager`, so that a test can change the driver before.
class Array2DFixture : public ManagerFixture
{
protected:
    using Books = Array2DTextureManagerTestAccess;

    void SetUp() override
    {
        ManagerFixture::SetUp();
        driver.setInteger(GL_MAX_TEXTURE_IMAGE_UNITS, 16);
        driver.setInteger(GL_MAX_TEXTURE_SIZE, 32768);
        driver.setInteger(GL_MAX_3D_TEXTURE_SIZE, 65536);
        driver.setInteger(GL_MAX_ARRAY_TEXTURE_LAYERS, 64);
        driver.replace("glActiveTexture", &fakeActiveTexture);
        driver.replace("glBindTexture", &fakeBindTexture);
        driver.replace("glGetTexLevelParameteriv", &fakeGetTexLevelParameteriv);
        driver.replace("glGetTexParameteriv", &fakeGetTexParameteriv);
        driver.replace("glGetTexParameterfv", &fakeGetTexParameterfv);
        ASSERT_EQ(driver.load(), 1);
        fakeTextures.clear();
        fakeBindings = {};
        makeRecord();
    }

    void TearDown() override
    {
        array2D.reset();
        ManagerFixture::TearDown();
    }

    void makeManager(int maxSlots = 8)
    {
        array2D.reset();
        array2D = std::make_unique<OpenArray2DManager>();
        array2D->setMaxSlots(maxSlots);
    }

    /// A texture of the test's own that the driver knows as `description`.
    Texture* newTextureOf(const FakeTexture& description, GLenum target = GL_TEXTURE_2D)
    {
        Texture* const texture = wrapped(1).front();
        texture->setTarget(target);
        fakeTextures[texture->textureID()] = description;
        return texture;
    }

    std::unique_ptr<OpenArray2DManager> array2D;
};

} // namespace Harrow::Vrk::Test
