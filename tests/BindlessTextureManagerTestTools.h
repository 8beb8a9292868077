// SPDX-License-Identifier: MIT
#pragma once

/// \file
/// What the suites of BindlessTextureManager on the fake driver share: a driver with handles and residency, a view of
/// the manager's books, and its call lists.

#include "BindlessTextureManager.h"

#include "BindlessHandles.h"
#include "GLRuntimeTestAccess.h"
#include "SamplerSlotsTestTools.h"

#include <QSet>

#include <optional>

namespace Harrow::Vrk
{

struct BindlessHandlesTestAccess
{
    static QList<quint64> residencies(const BindlessHandles& handles)
    {
        return handles._residencies.keys();
    }
};

struct BindlessTextureManagerTestAccess
{
    static QList<std::array<quint32, 4>> tokenSlotRecords(const BindlessTextureManager& manager)
    {
        return manager._tokenSlotRecords;
    }
    static const std::array<quint32, 4>* recordsPlace(const BindlessTextureManager& manager)
    {
        return manager._tokenSlotRecords.constData();
    }
    static const SamplerSlots& samplerSlots(const BindlessTextureManager& manager)
    {
        return *manager._slots;
    }
    static QList<quint64> residencies(const BindlessTextureManager& manager)
    {
        return BindlessHandlesTestAccess::residencies(*manager._handles);
    }
};

} // namespace Harrow::Vrk

namespace Harrow::Vrk::Test
{

/// What the fake driver gives the texture of a name.
inline quint64 handleOf(GLuint name)
{
    return (quint64(name) << 32) | 0x40u;
}

/// The driver's own books.
inline QSet<GLuint64> residentHandles;
/// In place of all handles, while it has a value.
inline std::optional<quint64> forcedHandle;

inline GLuint64 VRK_GLAPIENTRY fakeGetTextureHandle(GLuint name)
{
    return forcedHandle.value_or(handleOf(name));
}
inline void VRK_GLAPIENTRY fakeMakeResident(GLuint64 handle)
{
    EXPECT_FALSE(residentHandles.contains(handle)) << "an error of OpenGL";
    residentHandles.insert(handle);
}
inline void VRK_GLAPIENTRY fakeMakeNonResident(GLuint64 handle)
{
    EXPECT_TRUE(residentHandles.remove(handle)) << "an error of OpenGL";
}
inline GLboolean VRK_GLAPIENTRY fakeIsResident(GLuint64 handle)
{
    return residentHandles.contains(handle) ? GL_TRUE : GL_FALSE;
}

/// The bound token whose low word is `issued`.
inline TextureToken boundToken(quint32 issued)
{
    return TextureToken(0xFFFFFFFF00000000u | issued);
}

inline TextureToken bindlessToken(GLuint name)
{
    return TextureToken(handleOf(name));
}

inline constexpr std::array<quint32, 4> kFresh = {0xFFFFFFFFu, 0, 0, 0};

inline std::array<quint32, 4> inSlot(quint32 slot)
{
    return {slot, 0, 0, 0};
}

/// Opens what is protected, and writes down the words about tokens.
class OpenBindlessManager : public BindlessTextureManager
{
public:
    using BindlessTextureManager::isBindlessToken;
    using TextureManager::deleteToken;
    using TextureManager::reserveTokenBlock;

    void textureTokenIssued(const TextureToken& token) override
    {
        issued.append(token);
        BindlessTextureManager::textureTokenIssued(token);
    }
    void textureTokenRevoked(const TextureToken& token) override
    {
        revoked.append(token);
        BindlessTextureManager::textureTokenRevoked(token);
    }

    QList<TextureToken> issued;
    QList<TextureToken> revoked;
};

class BindlessFixture : public SlotsFixture
{
protected:
    using Books = BindlessTextureManagerTestAccess;
    using Slots = SamplerSlotsTestAccess;

    void SetUp() override
    {
        SlotsFixture::SetUp();
        residentHandles.clear();
        forcedHandle.reset();
        for (const char* const extension : {"ARB", "NV"})
        {
            driver.replace(QByteArray("glGetTextureHandle") + extension, &fakeGetTextureHandle);
            driver.replace(QByteArray("glMakeTextureHandleResident") + extension, &fakeMakeResident);
            driver.replace(QByteArray("glMakeTextureHandleNonResident") + extension, &fakeMakeNonResident);
            driver.replace(QByteArray("glIsTextureHandleResident") + extension, &fakeIsResident);
        }
        offer({"GL_ARB_bindless_texture"});
    }

    void TearDown() override
    {
        bindless.reset();
        SlotsFixture::TearDown();
    }

    void offer(const QList<QByteArray>& extensions)
    {
        driver.setExtensions(extensions);
        GLRuntimeTestAccess::forgetExtensionsOf(driver.currentContext());
    }

    /// White has the name 1.
    void make()
    {
        bindless = std::make_unique<OpenBindlessManager>();
    }

    /// Textures of the test's own that will not change.
    std::vector<Texture*> readOnly(int count)
    {
        const auto textures = wrapped(count);
        for (Texture* const texture : textures)
            texture->setReadOnly();
        return textures;
    }

    /// Textures 1000, 1001, … with the bound tokens 0, 1, …
    std::vector<Texture*> withBoundTokens(int count)
    {
        const auto textures = wrapped(count);
        for (int i = 0; i < count; ++i)
            EXPECT_EQ(bindless->tokenForTexture(textures[std::size_t(i)]), boundToken(quint32(i)));
        return textures;
    }

    void drawAndRelease(const QList<TextureToken>& list)
    {
        bindless->bind(list);
        bindless->bind(program.get());
        bindless->unbind(program.get());
        bindless->unbind(list);
    }

    /// The extension whose entry points are called.
    QByteArray suffix = "ARB";

    QString handleCall(const char* function, quint64 argument) const
    {
        return CallLog::call((QByteArray(function) + suffix).constData(), argument);
    }
    QString gettingHandle(GLuint name) const
    {
        return handleCall("glGetTextureHandle", name);
    }
    QStringList becomingResident(quint64 handle) const
    {
        return {askingResidency(handle), handleCall("glMakeTextureHandleResident", handle)};
    }
    QStringList becomingNonResident(quint64 handle) const
    {
        return {askingResidency(handle), ending(handle)};
    }
    QString askingResidency(quint64 handle) const
    {
        return handleCall("glIsTextureHandleResident", handle);
    }
    QString ending(quint64 handle) const
    {
        return handleCall("glMakeTextureHandleNonResident", handle);
    }

    static QString uploadingRecords(int width)
    {
        return pointerCall("glTexImage2D",
                           {GL_TEXTURE_2D, 0, GL_RGBA32UI, width, 1, 0, GL_RGBA_INTEGER, GL_UNSIGNED_INT});
    }

    const QList<int>& slotUnits() const
    {
        return Slots::slotUnits(Books::samplerSlots(*bindless));
    }
    const QList<int>& slotRefCounts() const
    {
        return Slots::slotRefCounts(Books::samplerSlots(*bindless));
    }
    Texture* slotMapTexture() const
    {
        return Slots::slotMapTexture(Books::samplerSlots(*bindless));
    }

    std::unique_ptr<OpenBindlessManager> bindless;
};

} // namespace Harrow::Vrk::Test
