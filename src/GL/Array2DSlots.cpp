// SPDX-License-Identifier: MIT
#include "Array2DSlots.h"

#include "GLUtilities.h"

#include <algorithm>

namespace Harrow::Vrk
{
namespace
{

/// Bytes of base level that a slot may take.
constexpr quint64 kSlotBudget = 0x80000000u;

/// What a slot may have in any case.
constexpr int kLeastMaxLayers = 64;

bool fits(int size, int multiple)
{
    return size >= multiple && multiple > 0 && size % multiple == 0;
}

} // namespace

quint32 slotReallocationScore(TextureManager::SlotReallocationMethod method, int slotWidth, int slotHeight, int width,
                              int height)
{
    const bool enlarges = method == TextureManager::eReallocateLarger;
    const bool suits = enlarges ? fits(slotWidth, width) && fits(slotHeight, height)
                                : fits(width, slotWidth) && fits(height, slotHeight);
    if (!suits)
        return kInvalidSlotScore;
    // Below 0 where the slot is smaller, and then a large number: after an exact match the smallest slot is the best.
    return static_cast<quint32>(slotWidth - width) + static_cast<quint32>(slotHeight - height);
}

bool Array2DTextureManager::SlotFormat::operator==(const SlotFormat& other) const
{
    return width == other.width && height == other.height && internalFormat == other.internalFormat &&
           wrapS == other.wrapS && wrapT == other.wrapT && magFilter == other.magFilter &&
           minFilter == other.minFilter && anisotropy == other.anisotropy && lodBias == other.lodBias;
}

void Array2DTextureManager::SlotLayerData::setHandle(quint64 value)
{
    handle[0] = static_cast<quint32>(value);
    handle[1] = static_cast<quint32>(value >> 32);
}

// ---- layers of a slot ----------------------------------------------------------------------------------------------

bool Array2DTextureManager::SlotData::isSimilar(const SlotFormat& other) const
{
    const auto channels = [](qint32 internalFormat)
    { return formatFromInternalFormat(static_cast<unsigned>(internalFormat)); };
    return format.wrapS == other.wrapS && format.wrapT == other.wrapT && format.magFilter == other.magFilter &&
           format.minFilter == other.minFilter && format.anisotropy == other.anisotropy &&
           format.lodBias == other.lodBias &&
           (format.internalFormat == other.internalFormat ||
            channels(format.internalFormat) == channels(other.internalFormat));
}

int Array2DTextureManager::SlotData::allocate(int count)
{
    if (count < 1)
        return -1;
    if (const int layer = allocateFree(count); layer >= 0)
        return layer;
    if (qint64(usedLayers) + count >= maxLayers)
        return -1;
    const int layer = usedLayers;
    usedLayers += count;
    return layer;
}

int Array2DTextureManager::SlotData::allocateFree(int count)
{
    int first = -1;
    int run = 0;
    qsizetype start = 0;
    for (qsizetype i = 0; i < freeLayers.size(); ++i)
    {
        const int layer = freeLayers[i];
        ++run;
        // On purpose with the length that counts the layer in.
        if (first < 0 || first + run != layer)
        {
            run = 1;
            first = layer;
            start = i;
        }
        if (run == count)
        {
            freeLayers.remove(start, count);
            return first;
        }
    }
    return -1;
}

void Array2DTextureManager::SlotData::release(int layer, int count)
{
    for (int i = 0; i < count; ++i)
        freeLayers.insert(std::upper_bound(freeLayers.cbegin(), freeLayers.cend(), layer + i), layer + i);
    while (!freeLayers.isEmpty() && usedLayers > 0 && freeLayers.last() == usedLayers - 1)
    {
        freeLayers.removeLast();
        --usedLayers;
    }
    if (usedLayers != 0)
        return;
    format.width = 0;
    format.height = 0;
    format.internalFormat = 0;
}

void Array2DTextureManager::SlotData::initialise(const SlotFormat& aligned, int bytesPerTexel,
                                                 int maxArrayTextureLayers)
{
    allocatedLayers = 0;
    usedLayers = 0;
    format = aligned;
    const quint64 inBudget = kSlotBudget / (static_cast<quint64>(bytesPerTexel) * static_cast<quint64>(area()));
    const auto most = static_cast<quint64>(std::max(kLeastMaxLayers, maxArrayTextureLayers));
    maxLayers = static_cast<qint32>(std::max<quint64>(1, std::min(inBudget, most)));
}

// ---- tokens that wait ----------------------------------------------------------------------------------------------

void OrderedTokens::insert(const TextureToken& token)
{
    if (token.token >= _isMember.size())
        _isMember.resize(token.token + 1);
    if (_isMember[token.token])
        return;
    _isMember[token.token] = true;
    _tokens.append(token);
}

bool OrderedTokens::contains(const TextureToken& token) const
{
    return token.token < _isMember.size() && _isMember[token.token];
}

void OrderedTokens::clear()
{
    _tokens.clear();
    _isMember.clear();
}

// ---- tokens of slots -----------------------------------------------------------------------------------------------

void TokensOfSlots::setSlotCount(qsizetype slots)
{
    _tokens.assign(static_cast<std::size_t>(slots), {});
    for (std::size_t token = 0; token < _entries.size(); ++token)
        append(static_cast<qsizetype>(token));
}

void TokensOfSlots::clear()
{
    _tokens.clear();
    _entries.clear();
}

void TokensOfSlots::append(qsizetype token)
{
    Entry& entry = _entries[static_cast<std::size_t>(token)];
    if (!hasList(entry.slot))
        return;
    std::vector<qsizetype>& list = _tokens[static_cast<std::size_t>(entry.slot)];
    entry.place = list.size();
    list.push_back(token);
}

void TokensOfSlots::move(qsizetype token, int toSlot)
{
    const auto index = static_cast<std::size_t>(token);
    if (index >= _entries.size())
        _entries.resize(index + 1);
    Entry& entry = _entries[index];
    if (entry.slot == toSlot)
        return;
    if (hasList(entry.slot))
    {
        std::vector<qsizetype>& list = _tokens[static_cast<std::size_t>(entry.slot)];
        list[entry.place] = list.back();
        _entries[static_cast<std::size_t>(list.back())].place = entry.place;
        list.pop_back();
    }
    entry.slot = toSlot;
    append(token);
}

std::vector<qsizetype> TokensOfSlots::ofSlot(int slot) const
{
    if (!hasList(slot))
        return {};
    std::vector<qsizetype> tokens = _tokens[static_cast<std::size_t>(slot)];
    std::sort(tokens.begin(), tokens.end());
    return tokens;
}

} // namespace Harrow::Vrk
