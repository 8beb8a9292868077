// SPDX-License-Identifier: MIT
#pragma once

/// \file
/// What the suites of placing share: formats, textures of a size, and short ways to the books of the manager.

#include "Array2DTestTools.h"

#include "support/CallLog.h"
#include "support/LogCapture.h"

namespace Harrow::Vrk::Test
{

using SlotFormat = Array2DTextureManagerTestAccess::SlotFormat;
using SlotData = Array2DTextureManagerTestAccess::SlotData;
using Record = Array2DTextureManagerTestAccess::SlotLayerData;

/// With the sampler state that a `FakeTexture` has, too.
inline SlotFormat formatOf(int width, int height, int internalFormat = GL_RGBA8, int wrap = GL_REPEAT)
{
    SlotFormat format;
    format.width = width;
    format.height = height;
    format.internalFormat = internalFormat;
    format.wrapS = wrap;
    format.wrapT = wrap;
    format.magFilter = GL_LINEAR;
    format.minFilter = GL_LINEAR;
    return format;
}

inline FakeTexture sized(int width, int height, int internalFormat = GL_RGBA8, int wrap = GL_REPEAT)
{
    FakeTexture texture;
    texture.width = width;
    texture.height = height;
    texture.internalFormat = internalFormat;
    texture.wrapS = wrap;
    texture.wrapT = wrap;
    return texture;
}

using Place = std::pair<int, int>;
inline constexpr Place kNowhere = {-1, 0};

class Array2DPlacing : public Array2DFixture
{
protected:
    void makeSlots(int count)
    {
        makeManager(count);
        array2D->setupSlots();
    }

    QString line(const char* text) const
    {
        return QString::asprintf("%p ", static_cast<const void*>(array2D.get())) + QLatin1String(text);
    }

    Place find(const SlotFormat& format, int layers = 1)
    {
        const Record record = array2D->findSlotLayer(format, layers);
        return {record.slot, record.layer};
    }

    /// Issues a token for the texture and binds it.
    quint64 bound(Texture* texture)
    {
        const TextureToken token = array2D->tokenForTexture(texture);
        array2D->bind(QList<TextureToken>{token});
        return token.token;
    }
    quint64 bound(const FakeTexture& description, GLenum target = GL_TEXTURE_2D)
    {
        return bound(newTextureOf(description, target));
    }

    const Record& record(quint64 token) const
    {
        return Books::records(*array2D)[qsizetype(token)];
    }
    Place place(quint64 token) const
    {
        return {record(token).slot, record(token).layer};
    }
    SlotData& slot(int index) const
    {
        return *Books::allSlots(*array2D)[index];
    }
    QList<TextureToken> pending() const
    {
        return Books::pendingTokens(*array2D);
    }
    bool isDirty() const
    {
        return Books::slotMapDirty(*array2D);
    }
    void forgetPending()
    {
        array2D->updateSlots();
        Books::setSlotMapDirty(*array2D, false);
    }
    /// No layer more is in the slot.
    void fill(int index)
    {
        slot(index).maxLayers = slot(index).usedLayers + 1;
    }

    void expectFresh(quint64 token) const
    {
        const Record& found = record(token);
        EXPECT_EQ(found.slot, -1);
        for (const qint64 word :
             {qint64(found.layer), qint64(found.handle[0]), qint64(found.handle[1]), qint64(found.udimWidth),
              qint64(found.udimMaxPatch), qint64(found.unused[0]), qint64(found.unused[1])})
            EXPECT_EQ(word, 0);
    }

    LogCapture log;
};

} // namespace Harrow::Vrk::Test
