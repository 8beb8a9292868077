// SPDX-License-Identifier: MIT
// Which slot and layer a texture gets.
#include "Array2DSlots.h"
#include "Array2DTextureManager.h"
#include "AutoBinder.h"
#include "CubemapFaces.h"
#include "Diagnostics.h"
#include "GLFunctions.h"
#include "GLUtilities.h"
#include "Texture.h"

#include <QMessageLogger>

#include <algorithm>

namespace Harrow::Vrk
{
namespace
{

int roundedUp(int size, int alignment)
{
    return alignment > 1 ? (size + alignment - 1) / alignment * alignment : size;
}

GLint parameter(GLenum target, GLenum name)
{
    GLint value = 0;
    glGetTexParameteriv(target, name, &value);
    return value;
}

} // namespace

int Array2DTextureManager::slotCount() const
{
    VRK_ASSERT(this->_slots.isEmpty() || this->getMaxSlots() <= this->_slots.size(),
               "%d slots asked for, but %d were made with the first bind", getMaxSlots(),
               static_cast<int>(_slots.size()));
    return std::min(getMaxSlots(), static_cast<int>(_slots.size()));
}

bool Array2DTextureManager::hasSlot(int slot) const
{
    return slot >= 0 && slot < _slots.size();
}

bool Array2DTextureManager::haveSlots(const QList<int>& list) const
{
    return std::all_of(list.cbegin(), list.cend(), [this](int slot) { return hasSlot(slot); });
}

int Array2DTextureManager::maxArrayTextureLayers()
{
    if (_maxArrayTextureLayers < 0)
    {
        _maxArrayTextureLayers = 0;
        glGetIntegerv(GL_MAX_ARRAY_TEXTURE_LAYERS, &_maxArrayTextureLayers);
    }
    return _maxArrayTextureLayers;
}

// ---- what a texture wants ------------------------------------------------------------------------------------------

namespace
{

/// A pointer, as the printed condition says.
void checkTargetOf(const Texture* texture, const TextureToken& token)
{
    VRK_ASSERT((GL_TEXTURE_2D == texture->target()) || (GL_TEXTURE_CUBE_MAP == texture->target()) ||
                   (GL_TEXTURE_2D_ARRAY == texture->target()),
               "Texture %llu is for target 0x%X. Only 0x%X, 0x%X or 0x%X are allowed", token.token, texture->target(),
               GL_TEXTURE_2D, GL_TEXTURE_2D_ARRAY, GL_TEXTURE_CUBE_MAP);
}

} // namespace

void Array2DTextureManager::checkTarget(const Texture& texture, const TextureToken& token) const
{
    checkTargetOf(&texture, token);
}

void Array2DTextureManager::determineSlotLayerDataForTexture(Texture* texture, TextureToken token,
                                                             SlotLayerData& record)
{
    VRK_ASSERT_RETURN(nullptr != texture, , "Token %llu has no texture", token.token);
    VRK_ASSERT_RETURN(token.token < quint64(_textureTokenToSlotLayerData.size()), , "Token %llu is not in array %d.",
                      token.token, static_cast<int>(_textureTokenToSlotLayerData.size()));
    checkTarget(*texture, token);
    const GLenum target = texture->target();
    SlotFormat format;
    int layers = 1;
    {
        const AutoBinder binder(texture);
        format.width = texture->width(0);
        format.height = texture->height(0);
        format.internalFormat = texture->internalFormat(0);
        const int depth = texture->depth(0);
        format.wrapS = parameter(target, GL_TEXTURE_WRAP_S);
        format.wrapT = parameter(target, GL_TEXTURE_WRAP_T);
        format.magFilter = parameter(target, GL_TEXTURE_MAG_FILTER);
        format.minFilter = parameter(target, GL_TEXTURE_MIN_FILTER);
        glGetTexParameterfv(target, GL_TEXTURE_LOD_BIAS, &format.lodBias);
        if (_anisotropySupported)
            glGetTexParameterfv(target, GL_TEXTURE_MAX_ANISOTROPY, &format.anisotropy);
        if (target == GL_TEXTURE_CUBE_MAP)
            layers = kCubemapFaces;
        else if (target == GL_TEXTURE_2D_ARRAY)
            layers = depth;
    }
    record = findSlotLayer(format, layers);
    _tokenLayerCounts[static_cast<qsizetype>(token.token)] = layers;
    _pendingTokens->insert(token);
    _slotMapDirty = true;
}

Array2DTextureManager::SlotFormat Array2DTextureManager::alignedSlotFormat(const SlotFormat& format) const
{
    SlotFormat aligned = format;
    aligned.width = roundedUp(std::max(_minSlotWidth, std::min(format.width, _maxSlotWidth)), _slotAlignmentX);
    aligned.height = roundedUp(std::max(_minSlotHeight, std::min(format.height, _maxSlotHeight)), _slotAlignmentY);
    return aligned;
}

// ---- the search ----------------------------------------------------------------------------------------------------

Array2DTextureManager::SlotLayerData Array2DTextureManager::findSlotLayer(const SlotFormat& format, int layers)
{
    if (format.width <= 0 || format.height <= 0)
        return {};
    const SlotFormat aligned = alignedSlotFormat(format);
    SlotLayerData found = findInExactSlots(aligned, layers);
    if (found.slot < 0)
        found = findInUnusedSlots(aligned, layers);
    if (found.slot < 0)
        found = findInSimilarSlots(format, aligned, layers);
    if (found.slot < 0)
        found = findInMergedSlots(aligned, layers);
    if (found.slot < 0)
        warnNoSlot(format);
    return found;
}

Array2DTextureManager::SlotLayerData Array2DTextureManager::allocateIn(int slot, int layers)
{
    SlotData& data = *_slots[slot];
    const int layer = data.allocate(layers);
    if (layer < 0)
        return {};
    SlotLayerData place;
    place.slot = slot;
    place.layer = layer;
    place.setHandle(data.handle);
    return place;
}

Array2DTextureManager::SlotLayerData Array2DTextureManager::findInExactSlots(const SlotFormat& aligned, int layers)
{
    for (int slot = 0, count = slotCount(); slot < count; ++slot)
    {
        if (!_slots[slot]->isUsed() || !(_slots[slot]->format == aligned))
            continue;
        if (const SlotLayerData found = allocateIn(slot, layers); found.slot >= 0)
            return found;
    }
    return {};
}

/// A slot in which the layers do not fit keeps the format that it was given.
Array2DTextureManager::SlotLayerData Array2DTextureManager::findInUnusedSlots(const SlotFormat& aligned, int layers)
{
    int bytes = 0;
    for (int slot = 0, count = slotCount(); slot < count; ++slot)
    {
        if (_slots[slot]->isUsed())
            continue;
        if (bytes == 0)
            bytes = bytesFromInternalFormat(static_cast<unsigned>(aligned.internalFormat));
        if (bytes <= 0)
            return {}; // no slot can be made for it
        _slots[slot]->initialise(aligned, bytes, maxArrayTextureLayers());
        if (const SlotLayerData found = allocateIn(slot, layers); found.slot >= 0)
            return found;
    }
    return {};
}

Array2DTextureManager::SlotLayerData Array2DTextureManager::findInSimilarSlots(const SlotFormat& format,
                                                                               const SlotFormat& aligned, int layers)
{
    SlotData* best = nullptr;
    int slot = -1;
    if (!searchForSimilarSlot(aligned, best, slot, nullptr))
        return {};
    const SlotFormat into = best->format;
    const SlotLayerData found = allocateIn(slot, layers);
    if (found.slot >= 0)
        warnResized(format.width, format.height, into);
    return found;
}

/// Frees a slot by moving its layers into another, and takes it.
Array2DTextureManager::SlotLayerData Array2DTextureManager::findInMergedSlots(const SlotFormat& aligned, int layers)
{
    int bytes = 0;
    QList<int> largest;
    for (int slot = 0, count = slotCount(); slot < count; ++slot)
        largest.append(slot);
    largest = sortSlotsByLargest(largest);
    while (largest.size() > 1)
    {
        const int smallest = largest.takeLast();
        const QList<int> similar = filterSlotsBySimilar(_slots[smallest]->format, largest);
        for (auto candidate = similar.crbegin(); candidate != similar.crend(); ++candidate)
        {
            const bool enlarges = _slotReallocationMethod == eReallocateLarger;
            const int source = enlarges ? smallest : *candidate;
            const int target = enlarges ? *candidate : smallest;
            const SlotFormat freed = _slots[source]->format;
            if (!_slots[source]->isUsed())
                continue;
            if (bytes == 0)
                bytes = bytesFromInternalFormat(static_cast<unsigned>(aligned.internalFormat));
            if (bytes <= 0)
                return {}; // the freed slot could not be made for it
            if (!moveSlotLayers(source, target))
                continue;
            warnResized(freed.width, freed.height, _slots[target]->format);
            _slots[source]->initialise(aligned, bytes, maxArrayTextureLayers());
            if (const SlotLayerData found = allocateIn(source, layers); found.slot >= 0)
                return found;
        }
    }
    return {};
}

bool Array2DTextureManager::moveSlotLayers(int from, int to)
{
    VRK_ASSERT_RETURN(hasSlot(from) && hasSlot(to), false, "Slot %d or %d is not among the %d that there are", from, to,
                      static_cast<int>(_slots.size()));
    SlotData& source = *_slots[from];
    SlotData& target = *_slots[to];
    if (!source.isUsed())
        return false;
    for (const qsizetype token : _tokensOfSlots->ofSlot(from))
    {
        const SlotLayerData old = _textureTokenToSlotLayerData[token];
        const int count = _tokenLayerCounts[token];
        const int layer = target.allocate(count);
        if (layer == -1)
            return false;
        source.release(old.layer, count);
        SlotLayerData moved;
        moved.slot = to;
        moved.layer = layer;
        moved.setHandle(target.handle);
        setRecord(token, moved);
        _pendingTokens->insert(TextureToken(static_cast<quint64>(token)));
    }
    _slotMapDirty = true;
    return true;
}

// ---- comparing slots -----------------------------------------------------------------------------------------------

bool Array2DTextureManager::searchForSimilarSlot(const SlotFormat& format, SlotData*& slot, int& index,
                                                 SlotData* exclude)
{
    quint32 best = kInvalidSlotScore;
    for (int i = 0, count = slotCount(); i < count; ++i)
    {
        SlotData* const candidate = _slots[i];
        if (candidate == exclude || !candidate->isUsed() || !candidate->isSimilar(format))
            continue;
        const quint32 score = slotReallocationScore(_slotReallocationMethod, candidate->format.width,
                                                    candidate->format.height, format.width, format.height);
        if (score >= best)
            continue;
        best = score;
        slot = candidate;
        index = i;
    }
    return best != kInvalidSlotScore;
}

bool Array2DTextureManager::seachForSlotWithLargestXY(SlotData*& slot, int& index)
{
    qint64 largest = 0;
    bool isFound = false;
    for (int i = 0, count = slotCount(); i < count; ++i)
    {
        if (!_slots[i]->isUsed() || (isFound && _slots[i]->area() < largest))
            continue;
        isFound = true;
        largest = _slots[i]->area();
        slot = _slots[i];
        index = i;
    }
    return isFound;
}

QList<int> Array2DTextureManager::filterSlotsBySimilar(const SlotFormat& format, const QList<int>& list) const
{
    VRK_ASSERT_RETURN(haveSlots(list), {}, "Not all of the listed slots are among the %d that there are",
                      static_cast<int>(_slots.size()));
    QList<int> similar;
    std::copy_if(list.cbegin(), list.cend(), std::back_inserter(similar),
                 [&](int slot) { return _slots[slot]->isSimilar(format); });
    return similar;
}

QList<int> Array2DTextureManager::sortSlotsByLargest(const QList<int>& list) const
{
    VRK_ASSERT_RETURN(haveSlots(list), list, "Not all of the listed slots are among the %d that there are",
                      static_cast<int>(_slots.size()));
    QList<int> largest = list;
    std::stable_sort(largest.begin(), largest.end(),
                     [this](int a, int b) { return _slots[a]->area() > _slots[b]->area(); });
    return largest;
}

// ---- what is told --------------------------------------------------------------------------------------------------

void Array2DTextureManager::warnResized(int width, int height, const SlotFormat& into) const
{
    QMessageLogger().warning("%p Textures were resized to fit into texture slots (%dx%d) -> (%dx%d)",
                             static_cast<const void*>(this), width, height, into.width, into.height);
}

void Array2DTextureManager::warnNoSlot(const SlotFormat& format) const
{
    QMessageLogger().warning(
        "%p Failed to find slot or layer (%4dx%-4d) 0x%04X C:0x%04X 0x%04X F:0x%04X 0x%04X %4.1f %4.1f\n",
        static_cast<const void*>(this), format.width, format.height, static_cast<unsigned>(format.internalFormat),
        static_cast<unsigned>(format.wrapS), static_cast<unsigned>(format.wrapT),
        static_cast<unsigned>(format.magFilter), static_cast<unsigned>(format.minFilter),
        static_cast<double>(format.anisotropy), static_cast<double>(format.lodBias));
}

void Array2DTextureManager::dumpSlots()
{
    QString text = QString::asprintf("%p \n", static_cast<const void*>(this));
    for (int i = 0, count = slotCount(); i < count; ++i)
    {
        const SlotData& slot = *_slots[i];
        const SlotFormat& format = slot.format;
        text += QString::asprintf(" %2d", i);
        if (!slot.isUsed())
        {
            text += QStringLiteral(" {UNUSED}\n");
            continue;
        }
        text += QString::asprintf(" {(%4dx%4d) 0x%04X C:0x%04X 0x%04X F:0x%04X 0x%04X ,%2d:%2d<%2d} [", format.width,
                                  format.height, static_cast<unsigned>(format.internalFormat),
                                  static_cast<unsigned>(format.wrapS), static_cast<unsigned>(format.wrapT),
                                  static_cast<unsigned>(format.magFilter), static_cast<unsigned>(format.minFilter),
                                  slot.usedLayers, slot.allocatedLayers, slot.maxLayers);
        for (const qsizetype token : _tokensOfSlots->ofSlot(i))
            text += QString::asprintf("{%u:0x%X},", static_cast<unsigned>(_textureTokenToSlotLayerData[token].layer),
                                      static_cast<unsigned>(token));
        text += QStringLiteral("]\n");
    }
    QMessageLogger().debug("%s", qUtf8Printable(text));
}

} // namespace Harrow::Vrk
