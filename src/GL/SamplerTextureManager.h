// SPDX-License-Identifier: MIT
#pragma once

/// \file
/// The texture manager for every driver: each texture in use takes a texture unit of its own and is sampled as it is.
/// Nothing is copied, but one draw can have only as many textures as there are slots.

#include "TextureManager.h"

namespace Harrow::Vrk
{

class SamplerSlots;

/// A slot is one entry of a uniform array of `sampler2D`; a texture of one row tells the slot of each token. The GLSL
/// knows 16 slots, and a driver has its own limit of samplers for a stage, of which the row takes one. Only
/// `GL_TEXTURE_2D` textures can be sampled, in the fragment stage or any other that `getShaderFile` is added for.
///
/// OpenGL's largest texture size limits the number of tokens: beyond it there is the warning "%d texture tokens but
/// only %d fit into the slot map. Rendering will be incorrect!" (guarded) whenever the row is made. Token 0 is opaque
/// white from the start.
class VRKGL_EXPORT SamplerTextureManager : public TextureManager
{
public:
    /// Makes no OpenGL call.
    SamplerTextureManager();
    /// The context must be current.
    ~SamplerTextureManager() override;

    /// The other forms, which those below would hide.
    using TextureManager::bind;
    using TextureManager::unbind;

    /// Uploads the slots of the tokens if they have changed, and sets the uniforms of `program`, or of the program in
    /// use if null, which must be in use either way. More textures than slots: the warning "Requesting %d texture slots
    /// but only %d available. Rendering will be incorrect!".
    void bind(ShaderProgram* program) override;
    /// Binds the texture of each token, and gives it a slot that no bind in force holds. A token without a texture is
    /// passed over; a texture for which no unit is free takes a slot and samples nothing.
    void bind(const QList<TextureToken>& tokens) override;
    /// Undoes `bind(program)`. Reported where there was none.
    void unbind(ShaderProgram* program) override;
    /// Undoes `bind(tokens)`. A texture that was not bound by it is reported.
    void unbind(const QList<TextureToken>& tokens) override;

    /// Also defines `TEXTURE_MANAGER_SAMPLER` and `TEXTURE_MANAGER_SLOT_COUNT`: a program is built for the slots that
    /// there are at this moment.
    void setup(GLSLMacroProcessor* processor) override;
    QString getShaderFile() override;
    void clear() override;

protected:
    void textureTokenIssued(const TextureToken& token) override;

private:
    friend struct SamplerTextureManagerTestAccess;

    void setTokenSlot(const Texture* texture, int slot);

    std::unique_ptr<SamplerSlots> _slots;
    QList<int> _tokenToSlot;
};

} // namespace Harrow::Vrk
