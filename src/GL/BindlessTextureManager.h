// SPDX-License-Identifier: MIT
#pragma once

/// \file
/// The texture manager for drivers with bindless textures: a token is the texture's handle itself, so a draw reaches as
/// many textures as it likes, cube maps among them. What may still change is sampled through slots.

#include "TextureManager.h"

#include <array>

namespace Harrow::Vrk
{

class BindlessHandles;
class SamplerSlots;

/// The high word of a token tells its kind.
///
/// A **bindless token** is the 64-bit handle of a texture that is read-only when it gets its token: every colour, every
/// file, and what the caller has `setReadOnly`. From then on OpenGL lets nobody change the texture. Files and colours
/// are loaded and made when their token is asked for, not when they are first wanted. `managedTexture` takes 2D
/// textures and `managedTextureCube` cube maps; nothing checks that the token is of the right one.
///
/// A **bound token** has a high word of all ones, and an ordinary token as its low word. All other textures get one,
/// such as streamers, and keep it when they become read-only later. A draw has only as many of them as there are slots
/// (`setMaxSlots`), and only `GL_TEXTURE_2D`; OpenGL's largest texture size limits their number, as in
/// `SamplerTextureManager`.
///
/// A texture is resident, so that it can be sampled, from the first `bind(tokens)` that names its token to the first
/// `unbind(tokens)` that does, in the context of that moment. Nothing is counted: where draws nest, announce to the
/// inner one only what the outer one has not.
///
/// The context must be current whenever this manager is used, its constructor and destructor included. A driver that
/// gives a texture no handle, which is reported, leaves the texture without a token: the caller gets `INVALID_TOKEN`,
/// or for a file that of white.
class VRKGL_EXPORT BindlessTextureManager : public TextureManager
{
public:
    /// Whether the current context has `GL_ARB_bindless_texture` or `GL_NV_bindless_texture`. The first is used where
    /// there are both.
    static bool isSupported();

    /// Makes opaque white and its token. Where it is not supported this is reported, and no texture gets a handle.
    BindlessTextureManager();
    ~BindlessTextureManager() override;

    using TextureManager::bind;
    using TextureManager::deleteTexture;
    using TextureManager::unbind;

    /// Null for a token that stands for no texture. Nothing is loaded here.
    Texture* textureForToken(const TextureToken& token) override;
    /// Says "Detected TextureStreamer" (debug, guarded) of a streamer that gets a token.
    TextureToken tokenForTexture(Texture* texture) override;
    /// Loads the file unless it has a token. One that does not load has the token of white, and is tried again the next
    /// time.
    TextureToken tokenForImage(const QString& path, const TextureFileInfo& info) override;
    /// Makes the colour unless it has a token.
    TextureToken tokenForColor(const QColor& color) override;
    /// The handle of a translucent colour stays the colour's token after its texture is gone, and stands for nothing
    /// then; do not sample it. What `bind(tokens)` has made resident ends before its texture is deleted.
    void deleteTexture(const TextureToken& token) override;

    /// For the bound tokens: uploads their slots if they have changed, and sets the uniforms of `program`, or of the
    /// program in use if null, which must be in use either way. More textures than slots: the warning "Requesting %d
    /// texture slots but only %d available. Rendering will be incorrect!".
    void bind(ShaderProgram* program) override;
    /// Makes the textures of bindless tokens resident, and binds those of bound tokens and gives each a slot. A token
    /// without a texture is passed over.
    void bind(const QList<TextureToken>& tokens) override;
    /// Undoes `bind(program)`. Reported where there was none.
    void unbind(ShaderProgram* program) override;
    /// Ends residency of bindless tokens, however often they were bound. Undoes one bind of bound tokens; one that has
    /// none is reported.
    void unbind(const QList<TextureToken>& tokens) override;

    /// Also defines `TEXTURE_MANAGER_BINDLESS`, `TEXTURE_MANAGER_SLOT_COUNT`, and `TEXTURE_MANAGER_BINDLESS_ARB` or
    /// `TEXTURE_MANAGER_BINDLESS_NV`: a program is built for the slots that there are at this moment.
    void setup(GLSLMacroProcessor* processor) override;
    QString getShaderFile() override;
    void clear() override;

protected:
    /// Whether the high word is that of a handle; if not, the token is a bound one.
    bool isBindlessToken(const TextureToken& token) const;
    void textureTokenIssued(const TextureToken& token) override;

private:
    friend struct BindlessTextureManagerTestAccess;

    /// The slot, and three words that are 0.
    using SlotRecord = std::array<quint32, 4>;

    TextureToken handleToken(const Texture& texture) const;
    TextureToken adoptReadOnly(Texture* texture);
    TextureToken tokenToIssue(const Texture& texture);
    void growSlotRecords();
    void setTokenSlot(const Texture* texture, int slot);

    std::unique_ptr<BindlessHandles> _handles;
    std::unique_ptr<SamplerSlots> _slots;
    QList<SlotRecord> _tokenSlotRecords;
};

} // namespace Harrow::Vrk
