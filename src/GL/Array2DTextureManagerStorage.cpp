// SPDX-License-Identifier: MIT
// The array textures of the slots, and what fills them.
#include "Array2DSlots.h"
#include "Array2DTextureManager.h"
#include "AutoBinder.h"
#include "BindlessTextureFunctions.h"
#include "CubemapFaces.h"
#include "Diagnostics.h"
#include "GLFunctions.h"
#include "GLUtilities.h"
#include "Texture.h"
#include "TextureUnits.h"

#include <QMessageLogger>

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

namespace Harrow::Vrk
{
namespace
{

/// A source that was never told its highest level has OpenGL's 1000: only its base level is good for certain.
constexpr int kMaxLevels = 21;

struct Size
{
    int width;
    int height;

    bool isEmpty() const
    {
        return width == 0 || height == 0;
    }
    Size halved() const
    {
        return {width / 2, height / 2};
    }
};

/// Size of a level, or {0, 0} where the texture finds no unit.
Size levelSize(Texture& texture, int level)
{
    const AutoBinder binder(&texture);
    if (!hasUnit(texture))
        return {0, 0};
    return {texture.width(level), texture.height(level)};
}

/// OpenGL takes any bias, an integer not.
GLint truncated(float bias)
{
    constexpr float kEnd = 2147483648.0f;
    if (std::isnan(bias))
        return 0;
    if (bias >= kEnd)
        return std::numeric_limits<GLint>::max();
    return bias < -kEnd ? std::numeric_limits<GLint>::min() : static_cast<GLint>(bias);
}

/// Two framebuffers, one to read from and one to write to, and what was bound before.
class LayerBlitter
{
public:
    LayerBlitter()
    {
        glGetIntegerv(GL_DRAW_FRAMEBUFFER_BINDING, &_outer);
        glGenFramebuffers(1, &_source);
        glGenFramebuffers(1, &_target);
    }

    ~LayerBlitter()
    {
        glBindFramebuffer(GL_READ_FRAMEBUFFER, 0);
        glBindFramebuffer(GL_DRAW_FRAMEBUFFER, 0);
        glBindFramebuffer(GL_FRAMEBUFFER, static_cast<GLuint>(_outer));
        glDeleteFramebuffers(1, &_source);
        glDeleteFramebuffers(1, &_target);
    }

    LayerBlitter(const LayerBlitter&) = delete;
    LayerBlitter& operator=(const LayerBlitter&) = delete;

    void readFromTexture(const Texture& texture, int level, int layer) const
    {
        glBindFramebuffer(GL_FRAMEBUFFER, _source);
        const GLuint name = texture.textureID();
        if (texture.target() == GL_TEXTURE_CUBE_MAP)
            glFramebufferTexture2D(GL_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, cubemapFaceTarget(layer), name, level);
        else if (texture.target() == GL_TEXTURE_2D_ARRAY)
            glFramebufferTextureLayer(GL_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, name, level, layer);
        else
            glFramebufferTexture(GL_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, name, level);
    }

    void readFromSlot(const Texture& slot, int level, int layer) const
    {
        attachLayer(_source, slot, level, layer);
    }

    void writeToSlot(const Texture& slot, int level, int layer) const
    {
        attachLayer(_target, slot, level, layer);
        glBindFramebuffer(GL_FRAMEBUFFER, 0);
    }

    void blit(Size from, Size to) const
    {
        glBindFramebuffer(GL_READ_FRAMEBUFFER, _source);
        glReadBuffer(GL_COLOR_ATTACHMENT0);
        glBindFramebuffer(GL_DRAW_FRAMEBUFFER, _target);
        glDrawBuffer(GL_COLOR_ATTACHMENT0);
        glBlitFramebuffer(0, 0, from.width, from.height, 0, 0, to.width, to.height, GL_COLOR_BUFFER_BIT, GL_LINEAR);
    }

private:
    static void attachLayer(GLuint framebuffer, const Texture& slot, int level, int layer)
    {
        glBindFramebuffer(GL_FRAMEBUFFER, framebuffer);
        glFramebufferTextureLayer(GL_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, slot.textureID(), level, layer);
    }

    GLint _outer = 0;
    GLuint _source = 0;
    GLuint _target = 0;
};

} // namespace

// ---- making and ending slots ---------------------------------------------------------------------------------------

void Array2DTextureManager::setupSlots()
{
    if (!_slots.isEmpty())
        return;
    const int count = std::max(0, getMaxSlots());
    _slotUnits.resize(count);
    _slotHandles.resize(count);
    _tokensOfSlots->setSlotCount(count);
    for (int slot = 0; slot < count; ++slot)
    {
        _slots.append(new SlotData);
        _slots[slot]->texture = placeholderTexture();
        _slotHandles[slot] = 0;
    }
}

/// One texel: a sampler has a complete texture even when its slot was never used.
std::unique_ptr<Texture> Array2DTextureManager::placeholderTexture()
{
    auto texture = std::make_unique<Texture>(nullptr);
    texture->setTarget(GL_TEXTURE_2D_ARRAY);
    const AutoBinder binder(texture.get());
    if (!hasUnit(*texture))
        return texture;
    glTexImage3D(GL_TEXTURE_2D_ARRAY, 0, GL_RGBA, 1, 1, 1, 0, GL_RGBA, GL_UNSIGNED_BYTE, nullptr);
    glTexParameteri(GL_TEXTURE_2D_ARRAY, GL_TEXTURE_MIN_FILTER, GL_LINEAR);
    glTexParameteri(GL_TEXTURE_2D_ARRAY, GL_TEXTURE_MAG_FILTER, GL_LINEAR);
    glTexParameteri(GL_TEXTURE_2D_ARRAY, GL_TEXTURE_WRAP_S, GL_CLAMP_TO_EDGE);
    glTexParameteri(GL_TEXTURE_2D_ARRAY, GL_TEXTURE_WRAP_T, GL_CLAMP_TO_EDGE);
    glTexParameterf(GL_TEXTURE_2D_ARRAY, GL_TEXTURE_LOD_BIAS, 0.0f);
    glTexParameteri(GL_TEXTURE_2D_ARRAY, GL_TEXTURE_MIN_LOD, 0);
    glTexParameteri(GL_TEXTURE_2D_ARRAY, GL_TEXTURE_MAX_LOD, 0);
    glTexParameteri(GL_TEXTURE_2D_ARRAY, GL_TEXTURE_BASE_LEVEL, 0);
    glTexParameteri(GL_TEXTURE_2D_ARRAY, GL_TEXTURE_MAX_LEVEL, 0);
    return texture;
}

void Array2DTextureManager::deleteSlots()
{
    _slots += std::exchange(_retiredSlots, {});
    for (SlotData* const slot : std::as_const(_slots))
    {
        dropHandle(*slot);
        delete slot;
    }
    _slots.clear();
}

bool Array2DTextureManager::isResident(quint64 handle) const
{
    return handle != 0 && _bindless->isTextureHandleResident && _bindless->isTextureHandleResident(handle);
}

void Array2DTextureManager::dropHandle(SlotData& slot)
{
    if (isResident(slot.handle) && _bindless->makeTextureHandleNonResident)
        _bindless->makeTextureHandleNonResident(slot.handle);
    slot.handle = 0;
    slot.residentCount = 0;
}

// ---- storage -------------------------------------------------------------------------------------------------------

void Array2DTextureManager::updateSlots()
{
    setupSlots();
    for (int slot = 0, count = slotCount(); slot < count; ++slot)
        updateStorage(slot);
    _pendingTokens->removeDone([this](const TextureToken& token) { return blitTokenToTextureSlot(token); });
}

/// New storage where a slot has more layers in use than it has storage for: for exactly these, and what was in the old
/// one is copied again.
void Array2DTextureManager::updateStorage(int slot)
{
    SlotData& data = *_slots[slot];
    if (!data.isUsed() || (data.allocatedLayers != 0 && data.usedLayers <= data.allocatedLayers))
        return;
    if (data.allocatedLayers != 0)
        for (const qsizetype token : _tokensOfSlots->ofSlot(slot))
            _pendingTokens->insert(TextureToken(static_cast<quint64>(token)));
    if (data.handle != 0)
    {
        dropHandle(data);
        data.texture.reset(); // with a handle it is immutable; its name may come again
        data.texture = placeholderTexture();
        data.allocatedLayers = 0;
    }
    const int layers = data.usedLayers;
    {
        const AutoBinder binder(data.texture.get());
        if (!hasUnit(*data.texture))
        {
            tellHandle(slot); // the old one is no more
            return;           // until a unit is free
        }
        setSlotParameters(data.format, specifyLevels(data.format, layers));
        glFlush();
        if (_bindMode == BindBindless)
            takeHandle(slot);
    }
    data.allocatedLayers = layers;
}

/// Levels until the shorter side is gone; returns their number.
int Array2DTextureManager::specifyLevels(const SlotFormat& format, int layers) const
{
    const GLenum transferFormat = formatFromInternalFormat(static_cast<unsigned>(format.internalFormat));
    const GLenum type = typeFromInternalFormat(static_cast<unsigned>(format.internalFormat));
    int level = 0;
    for (Size size{format.width, format.height}; !size.isEmpty(); size = size.halved(), ++level)
        for (int layer = 0; layer < layers; ++layer) // the same call each time: the calls are interface
            glTexImage3D(GL_TEXTURE_2D_ARRAY, level, format.internalFormat, size.width, size.height, layers, 0,
                         transferFormat, type, nullptr);
    return level;
}

void Array2DTextureManager::setSlotParameters(const SlotFormat& format, int levels) const
{
    glTexParameteri(GL_TEXTURE_2D_ARRAY, GL_TEXTURE_MAG_FILTER, format.magFilter);
    glTexParameteri(GL_TEXTURE_2D_ARRAY, GL_TEXTURE_MIN_FILTER, format.minFilter);
    glTexParameteri(GL_TEXTURE_2D_ARRAY, GL_TEXTURE_WRAP_S, format.wrapS);
    glTexParameteri(GL_TEXTURE_2D_ARRAY, GL_TEXTURE_WRAP_T, format.wrapT);
    glTexParameteri(GL_TEXTURE_2D_ARRAY, GL_TEXTURE_LOD_BIAS, truncated(format.lodBias));
    glTexParameteri(GL_TEXTURE_2D_ARRAY, GL_TEXTURE_MIN_LOD, 0);
    glTexParameteri(GL_TEXTURE_2D_ARRAY, GL_TEXTURE_MAX_LOD, levels - 1);
    glTexParameteri(GL_TEXTURE_2D_ARRAY, GL_TEXTURE_BASE_LEVEL, 0);
    glTexParameteri(GL_TEXTURE_2D_ARRAY, GL_TEXTURE_MAX_LEVEL, levels - 1);
    if (_anisotropySupported)
        glTexParameterf(GL_TEXTURE_2D_ARRAY, GL_TEXTURE_MAX_ANISOTROPY, format.anisotropy);
}

void Array2DTextureManager::takeHandle(int slot)
{
    SlotData& data = *_slots[slot];
    VRK_ASSERT_RETURN(nullptr != this->_bindless->getTextureHandle, , "Bindless textures are not supported");
    data.handle = _bindless->getTextureHandle(data.texture->textureID());
    tellHandle(slot);
}

/// To the records of all tokens in the slot.
void Array2DTextureManager::tellHandle(int slot)
{
    for (const qsizetype token : _tokensOfSlots->ofSlot(slot))
        _textureTokenToSlotLayerData[token].setHandle(_slots[slot]->handle);
}

// ---- copies --------------------------------------------------------------------------------------------------------

bool Array2DTextureManager::blitTokenToTextureSlot(const TextureToken& token)
{
    if (!hasRecord(token))
        return true;
    const auto index = static_cast<qsizetype>(token.token);
    const SlotLayerData record = _textureTokenToSlotLayerData[index];
    if (record.slot == -1 || record.udimWidth > 0)
        return true;
    Texture* source = textureForToken(token);
    if (!source && _patchTokenToSourceToken.contains(token))
        source = textureForToken(_patchTokenToSourceToken.value(token));
    if (!source || record.slot >= _slots.size())
        return false;
    const SlotData& slot = *_slots[record.slot];
    if (slot.isUsed() && slot.usedLayers > slot.allocatedLayers)
        return false;        // no unit was free to make storage
    isResident(slot.handle); // asked as interface; nothing hangs on the answer
    glFlush();

    Size size{0, 0};
    GLint maxLevel = 0;
    {
        const AutoBinder binder(source);
        if (hasUnit(*source))
        {
            size = {source->width(0), source->height(0)};
            glGetTexParameteriv(source->target(), GL_TEXTURE_MAX_LEVEL, &maxLevel);
        }
    }
    if (size.isEmpty())
    {
        QMessageLogger().warning("%p Ignoring texture of size (%dx%d), not blitted into array2D. Token %3p [%3d]",
                                 static_cast<const void*>(this), size.width, size.height,
                                 reinterpret_cast<const void*>(static_cast<quintptr>(token.token)),
                                 static_cast<int>(source->textureID()));
        return false;
    }
    blit(*source, record, _tokenLayerCounts[index], maxLevel >= kMaxLevels ? 0 : maxLevel);
    glFlush();
    return true;
}

void Array2DTextureManager::blit(Texture& source, const SlotLayerData& record, int layers, int maxLevel)
{
    const SlotData& slot = *_slots[record.slot];
    const LayerBlitter blitter;
    for (int layer = 0; layer < layers; ++layer)
    {
        const int slotLayer = record.layer + layer;
        Size to{slot.format.width, slot.format.height};
        Size written = to;
        int level = 0;
        for (; level <= maxLevel && !to.isEmpty(); ++level, to = to.halved())
        {
            blitter.readFromTexture(source, level, layer);
            blitter.writeToSlot(*slot.texture, level, slotLayer);
            const Size from = levelSize(source, level);
            if (from.isEmpty())
                continue;
            blitter.blit(from, to);
            written = to;
        }
        // What the source lacks comes from the level above it.
        for (; !to.isEmpty(); ++level, to = to.halved())
        {
            blitter.readFromSlot(*slot.texture, level - 1, slotLayer);
            blitter.writeToSlot(*slot.texture, level, slotLayer);
            blitter.blit(written, to);
            written = to;
        }
    }
}

} // namespace Harrow::Vrk
