// SPDX-License-Identifier: MIT
#pragma once

/// \file
/// The bookkeeping of Array2DTextureManager once more, as plainly as it can be said: lists that are walked from front
/// to back, no index beside them, no OpenGL. The suite of random sequences holds the manager against it.

#include "Array2DPlainSlots.h"

#include <QColor>
#include <QString>
#include <QStringList>

#include <algorithm>
#include <cstdint>
#include <map>
#include <utility>
#include <vector>

namespace Harrow::Vrk::Test
{

/// Textures are numbers here: those of the test from 0 on, those of colours below 0, kNoTexture for null.
class PlainArray2DModel
{
public:
    static constexpr quint64 kInvalid = ~quint64(0);
    static constexpr int kNoTexture = 1 << 30;

    struct Patch
    {
        int x;
        int y;
        int texture;
    };

    /// What the driver grants.
    int maxSize = 32768;
    int maxArrayLayers = 64;
    /// As messages show the manager.
    const void* address = nullptr;
    /// Of the test's textures, by number; a colour's texture is a default one.
    std::vector<PlainTexture> textures;
    PlainTexture colorTexture;

    int maxSlots = 8;
    int method = 0;
    bool slotMapDirty = true;
    std::vector<quint64> pending;
    std::vector<PlainSlot> allSlots;
    std::vector<PlainRecord> records;
    std::vector<int> layerCounts;
    std::map<quint64, quint64> patchSources;
    std::map<quint64, std::vector<Patch>> udims;
    quint64 maxToken = 0;
    std::vector<quint64> freeTokens;
    QStringList messages;

    void construct()
    {
        tokenForColor(QColor(Qt::white));
        records.assign(1, PlainRecord());
        layerCounts.assign(1, 1);
    }

    // ---- tokens ----------------------------------------------------------------------------------------------------

    quint64 tokenForTexture(int texture)
    {
        const auto found = textureToToken.find(texture);
        if (found != textureToToken.end())
            return found->second;
        const quint64 token = reserveToken();
        tokenToTexture[token] = texture;
        textureToToken[texture] = token;
        issued(token);
        return token;
    }

    quint64 tokenForColor(const QColor& color)
    {
        const auto found = colorToToken.find(color.rgba());
        if (found != colorToToken.end())
            return found->second;
        const quint64 token = reserveToken();
        colorToToken[color.rgba()] = token;
        tokenToColor[token] = color;
        issued(token);
        return token;
    }

    quint64 findToken(int texture) const
    {
        const auto found = textureToToken.find(texture);
        return found == textureToToken.end() ? kInvalid : found->second;
    }

    int textureForToken(quint64 token)
    {
        const auto found = tokenToTexture.find(token);
        if (found != tokenToTexture.end())
            return found->second;
        if (tokenToColor.count(token) == 0)
            return kNoTexture;
        const int texture = --lastColorTexture;
        tokenToTexture[token] = texture;
        textureToToken[texture] = token;
        return texture;
    }

    void deleteTexture(quint64 token)
    {
        if (token == kInvalid)
            return;
        revoked(token, false);
        const auto found = tokenToTexture.find(token);
        if (found == tokenToTexture.end())
        {
            deleteToken(token);
            return;
        }
        textureToToken.erase(found->second);
        tokenToTexture.erase(found);
        QColor color;
        const auto colorFound = tokenToColor.find(token);
        if (colorFound != tokenToColor.end())
            color = colorFound->second;
        tokenToColor.erase(token);
        colorToToken.erase(color.rgb());
        deleteToken(token);
    }

    quint64 createUDIM()
    {
        const quint64 token = reserveToken();
        issued(token);
        udims[token] = {};
        return token;
    }

    void addPatch(quint64 token, const Patch& patch)
    {
        std::vector<Patch>& patches = udims[token];
        for (Patch& there : patches)
            if (there.x == patch.x && there.y == patch.y)
            {
                there.texture = patch.texture;
                return;
            }
        patches.push_back(patch);
    }

    void deleteUDIM(quint64 token)
    {
        udims.erase(token);
        revoked(token, false);
        deleteToken(token);
    }

    // ---- placing ---------------------------------------------------------------------------------------------------

    void setupSlots()
    {
        if (allSlots.empty())
            allSlots.resize(std::size_t(maxSlots));
    }

    /// `patchOrder` are the indices of the patches of a set in the order of the manager's table.
    template <typename PatchOrder> void bind(const std::vector<quint64>& tokens, PatchOrder patchOrder)
    {
        if (tokens.empty())
            return;
        setupSlots();
        for (const quint64 token : tokens)
            bindToken(token, patchOrder);
    }

    void dirty(int texture)
    {
        const quint64 token = tokenForTexture(texture);
        if (token >= records.size() || records[token].slot == -1)
            return;
        if (records[token].slot >= int(allSlots.size()))
            return;
        PlainSlot& slot = allSlots[std::size_t(records[token].slot)];
        if (!slot.isUsed())
            return;
        slot.release(records[token].layer, layerCounts[token]);
        records[token] = PlainRecord();
    }

    void clear()
    {
        pending.clear();
        records.clear();
        layerCounts.clear();
        allSlots.clear();
        tokenForColor(QColor(Qt::white));
        records.assign(1, PlainRecord());
        layerCounts.assign(1, 1);
    }

    void updateSlots()
    {
        setupSlots();
        for (int s = 0; s < walkedSlots(); ++s)
        {
            PlainSlot& slot = allSlots[std::size_t(s)];
            if (!slot.isUsed())
                continue;
            if (slot.allocatedLayers != 0 && slot.usedLayers <= slot.allocatedLayers)
                continue;
            if (slot.allocatedLayers != 0)
                for (std::size_t token = 0; token < records.size(); ++token)
                    if (records[token].slot == s)
                        addPending(token);
            slot.allocatedLayers = slot.usedLayers;
        }
        for (std::size_t at = 0; at < pending.size();)
        {
            if (copied(pending[at]))
                pending.erase(pending.begin() + std::ptrdiff_t(at));
            else
                ++at;
        }
    }

    bool moveSlotLayers(int from, int to)
    {
        PlainSlot& source = allSlots[std::size_t(from)];
        PlainSlot& target = allSlots[std::size_t(to)];
        if (!source.isUsed())
            return false;
        for (std::size_t token = 0; token < records.size(); ++token)
        {
            if (records[token].slot != from)
                continue;
            const int count = layerCounts[token];
            const int layer = target.allocate(count);
            if (layer == -1)
                return false;
            source.release(records[token].layer, count);
            records[token] = PlainRecord();
            records[token].slot = to;
            records[token].layer = layer;
            addPending(token);
        }
        slotMapDirty = true;
        return true;
    }

    PlainRecord findSlotLayer(const PlainFormat& format, int layers)
    {
        if (format.width == 0 || format.height == 0)
            return PlainRecord();
        PlainFormat aligned = format;
        aligned.width = std::max(1, std::min(format.width, maxSize));
        aligned.height = std::max(1, std::min(format.height, maxSize));

        for (int s = 0; s < walkedSlots(); ++s)
        {
            PlainSlot& slot = allSlots[std::size_t(s)];
            if (slot.isUsed() && samePlainFormat(slot.format, aligned))
                if (const int layer = slot.allocate(layers); layer != -1)
                    return place(s, layer);
        }

        for (int s = 0; s < walkedSlots(); ++s)
        {
            PlainSlot& slot = allSlots[std::size_t(s)];
            if (slot.isUsed())
                continue;
            slot.initialise(aligned, maxArrayLayers);
            if (const int layer = slot.allocate(layers); layer != -1)
                return place(s, layer);
        }

        if (const int s = bestSimilar(aligned); s != -1)
            if (const int layer = allSlots[std::size_t(s)].allocate(layers); layer != -1)
            {
                warnResized(format.width, format.height, allSlots[std::size_t(s)].format);
                return place(s, layer);
            }

        return merge(format, aligned, layers);
    }

    int bestSimilar(const PlainFormat& wanted)
    {
        quint32 best = 0xFFFFFFFFu;
        int bestSlot = -1;
        for (int s = 0; s < walkedSlots(); ++s)
        {
            const PlainSlot& slot = allSlots[std::size_t(s)];
            if (!slot.isUsed() || !isSimilar(slot.format, wanted))
                continue;
            const quint32 score =
                plainScore(method, slot.format.width, slot.format.height, wanted.width, wanted.height);
            if (score < best)
            {
                best = score;
                bestSlot = s;
            }
        }
        return bestSlot;
    }

private:
    quint64 reserveToken()
    {
        if (!freeTokens.empty())
        {
            const quint64 token = freeTokens.front();
            freeTokens.erase(freeTokens.begin());
            return token;
        }
        return maxToken++;
    }

    static const void* pointer(quint64 number)
    {
        return reinterpret_cast<const void*>(quintptr(number));
    }

    void deleteToken(quint64 token)
    {
        if (maxToken == 0)
            messages.append(QStringLiteral("[ !! ] Assertion '0 < this->_maxToken.token' failed: ") +
                            QString::asprintf("Delete token %3p but none %llu reserved!", pointer(token),
                                              static_cast<unsigned long long>(maxToken)));
        if (token >= maxToken)
            messages.append(
                QStringLiteral("[ !! ] Assertion 'token.token < this->_maxToken.token' failed: ") +
                QString::asprintf("Delete token %3p but only %3p reserved!", pointer(token), pointer(maxToken)));
        if (std::find(freeTokens.begin(), freeTokens.end(), token) == freeTokens.end())
            freeTokens.push_back(token);
        while (true)
        {
            const auto top = std::find(freeTokens.begin(), freeTokens.end(), maxToken - 1);
            if (top == freeTokens.end())
                return;
            freeTokens.erase(top);
            --maxToken;
        }
    }

    void addPending(quint64 token)
    {
        if (std::find(pending.begin(), pending.end(), token) == pending.end())
            pending.push_back(token);
    }

    void issued(quint64 token)
    {
        addPending(token);
        if (token < records.size())
            return;
        records.resize(token + 1);
        layerCounts.resize(token + 1, 1);
        slotMapDirty = true;
    }

    void revoked(quint64 token, bool skipLayerRelease)
    {
        if (token >= records.size())
            return;
        patchSources.erase(token);
        if (records[token].udimWidth != 0)
        {
            const int last = records[token].udimMaxPatch;
            const quint64 base = quint64(records[token].slot);
            // Already now, so that a set whose own token has come among its patches ends.
            records[token] = PlainRecord();
            slotMapDirty = true;
            for (int k = 0; k <= last; ++k)
            {
                revoked(base + quint64(k), true);
                deleteToken(base + quint64(k));
            }
        }
        PlainRecord& record = records[token];
        if (record.slot == -1)
            return;
        if (!skipLayerRelease && record.udimWidth <= 0)
            allSlots[std::size_t(record.slot)].release(record.layer, layerCounts[token]);
        record = PlainRecord();
        slotMapDirty = true;
    }

    void notInArray(const char* condition, quint64 token)
    {
        messages.append(QStringLiteral("[ !! ] Assertion '%1' failed: Token %2 is not in array %3.")
                            .arg(QLatin1String(condition))
                            .arg(token)
                            .arg(records.size()));
    }

    template <typename PatchOrder> void bindToken(quint64 token, PatchOrder patchOrder)
    {
        if (token == kInvalid)
            return;
        if (token >= records.size())
        {
            notInArray("token.token < quint64(_textureTokenToSlotLayerData.size())", token);
            return;
        }
        if (records[token].slot != -1)
            return;
        const int texture = textureForToken(token);
        if (texture != kNoTexture)
        {
            determine(texture, token);
            return;
        }
        if (udims.count(token) != 0)
            bindUDIM(token, patchOrder);
    }

    template <typename PatchOrder> void bindUDIM(quint64 token, PatchOrder patchOrder)
    {
        const std::vector<Patch> patches = patchOrder(token, udims[token]);
        int width = 0;
        for (const Patch& patch : patches)
            width = std::max(width, 1 + patch.x);
        int maxOffset = 0;
        for (const Patch& patch : patches)
            maxOffset = std::max(maxOffset, patch.y * width + patch.x);
        const quint64 base = maxToken;
        maxToken += quint64(maxOffset) + 1;
        for (int i = 0; i <= maxOffset; ++i)
            issued(base + quint64(i));
        if (records[token].slot == -1)
        {
            records[token].slot = int(base);
            records[token].udimWidth = width;
            records[token].udimMaxPatch = maxOffset;
        }
        for (const Patch& patch : patches)
        {
            const quint64 patchToken = findToken(patch.texture);
            if (patchToken == kInvalid)
                continue;
            const quint64 target = base + quint64(patch.y * width + patch.x);
            if (patchToken >= records.size())
            {
                notInArray("INVALID_TOKEN == patchToken || "
                           "patchToken.token < quint64(_textureTokenToSlotLayerData.size())",
                           patchToken);
                continue;
            }
            bindToken(patchToken, patchOrder);
            records[target] = records[patchToken];
            patchSources[target] = patchToken;
        }
    }

    void determine(int number, quint64 token)
    {
        const PlainTexture& texture = number < 0 ? colorTexture : textures[std::size_t(number)];
        int count = 1;
        if (texture.target == GL_TEXTURE_CUBE_MAP)
            count = 6;
        if (texture.target == GL_TEXTURE_2D_ARRAY)
            count = texture.depth;
        records[token] = findSlotLayer(texture.format, count);
        layerCounts[token] = count;
        addPending(token);
        slotMapDirty = true;
    }

    int walkedSlots() const
    {
        return std::min(maxSlots, int(allSlots.size()));
    }

    static PlainRecord place(int slot, int layer)
    {
        PlainRecord record;
        record.slot = slot;
        record.layer = layer;
        return record;
    }

    unsigned channelsOf(int internalFormat)
    {
        for (const PlainTexel& texel : kPlainTexels)
            if (texel.internalFormat == internalFormat)
                return texel.channels;
        messages.append(
            QString::asprintf("formatFromInternalFormat() does not implement yet : 0x%04X", unsigned(internalFormat)));
        return 0;
    }

    bool isSimilar(const PlainFormat& slot, const PlainFormat& format)
    {
        return samePlainState(slot, format) && (slot.internalFormat == format.internalFormat ||
                                                channelsOf(slot.internalFormat) == channelsOf(format.internalFormat));
    }

    void warnResized(int width, int height, const PlainFormat& into)
    {
        messages.append(QString::asprintf("%p Textures were resized to fit into texture slots (%dx%d) -> (%dx%d)",
                                          address, width, height, into.width, into.height));
    }

    PlainRecord merge(const PlainFormat& format, const PlainFormat& aligned, int layers)
    {
        std::vector<int> list;
        for (int s = 0; s < walkedSlots(); ++s)
            list.push_back(s);
        const auto area = [this](int s)
        { return qint64(allSlots[std::size_t(s)].format.width) * allSlots[std::size_t(s)].format.height; };
        for (bool swapped = true; swapped;)
        {
            swapped = false;
            for (std::size_t at = 0; at + 1 < list.size(); ++at)
                if (area(list[at]) < area(list[at + 1]))
                {
                    std::swap(list[at], list[at + 1]);
                    swapped = true;
                }
        }
        while (!list.empty())
        {
            const int i = list.back();
            list.pop_back();
            if (list.empty())
                break;
            std::vector<int> similar;
            const PlainFormat formatOfI = allSlots[std::size_t(i)].format;
            for (const int s : list)
                if (isSimilar(allSlots[std::size_t(s)].format, formatOfI))
                    similar.push_back(s);
            for (std::size_t back = similar.size(); back > 0; --back)
            {
                const int c = similar[back - 1];
                const int source = method == 1 ? i : c;
                const int target = method == 1 ? c : i;
                const PlainFormat old = allSlots[std::size_t(source)].format;
                if (!moveSlotLayers(source, target))
                    continue;
                warnResized(old.width, old.height, allSlots[std::size_t(target)].format);
                allSlots[std::size_t(source)].initialise(aligned, maxArrayLayers);
                if (const int layer = allSlots[std::size_t(source)].allocate(layers); layer != -1)
                    return place(source, layer);
            }
        }
        messages.append(QString::asprintf(
            "%p Failed to find slot or layer (%4dx%-4d) 0x%04X C:0x%04X 0x%04X F:0x%04X 0x%04X %4.1f %4.1f\n", address,
            format.width, format.height, unsigned(format.internalFormat), unsigned(format.wrapS),
            unsigned(format.wrapT), unsigned(format.magFilter), unsigned(format.minFilter), double(format.anisotropy),
            double(format.lodBias)));
        return PlainRecord();
    }

    /// True when nothing is left to copy.
    bool copied(quint64 token)
    {
        if (token >= records.size())
            return true;
        const PlainRecord record = records[token];
        if (record.slot == -1 || record.udimWidth > 0)
            return true;
        int texture = textureForToken(token);
        if (texture == kNoTexture)
        {
            const auto found = patchSources.find(token);
            if (found != patchSources.end())
                texture = textureForToken(found->second);
        }
        if (texture == kNoTexture)
            return false;
        const PlainTexture& source = texture < 0 ? colorTexture : textures[std::size_t(texture)];
        if (source.format.width != 0 && source.format.height != 0)
            return true;
        messages.append(
            QString::asprintf("%p Ignoring texture of size (%dx%d), not blitted into array2D. Token %3p [%3d]", address,
                              source.format.width, source.format.height, pointer(token), int(source.name)));
        return false;
    }

    std::map<int, quint64> textureToToken;
    std::map<quint64, int> tokenToTexture;
    std::map<unsigned, quint64> colorToToken;
    std::map<quint64, QColor> tokenToColor;
    int lastColorTexture = 0;
};

} // namespace Harrow::Vrk::Test
