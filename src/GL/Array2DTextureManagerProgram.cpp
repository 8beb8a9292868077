// SPDX-License-Identifier: MIT
// What a program that samples is given.
#include "Array2DSlots.h"
#include "Array2DTextureManager.h"
#include "AutoBinder.h"
#include "BindlessTextureFunctions.h"
#include "Diagnostics.h"
#include "GLFunctions.h"
#include "ShaderProgram.h"
#include "Texture.h"

#include <algorithm>

namespace Harrow::Vrk
{

struct Array2DTextureManager::Locations
{
    bool any() const
    {
        return slotMapTexture >= 0 || slotMapUniforms >= 0 || handles >= 0 || samplers >= 0;
    }

    GLint slotMapTexture = -1;
    GLint slotMapUniforms = -1;
    GLint handles = -1;
    GLint samplers = -1;
};

/// Of `program`, or of the program in use if null. `withUniforms` counts for the first case alone.
Array2DTextureManager::Locations Array2DTextureManager::uniformLocations(const ShaderProgram* program,
                                                                         bool withUniforms) const
{
    const bool bindless = _bindMode == BindBindless;
    Locations found;
    GLint& slots = bindless ? found.handles : found.samplers;
    if (program)
    {
        static const QString slotMapTexture = QStringLiteral("u_TextureTokenManagedTextureSlotMapSample");
        static const QString slotMapUniforms = QStringLiteral("u_TextureTokenManagedTextureSlotMapUniforms[0]");
        static const QString handles = QStringLiteral("u_ManagedTextureHandles[0]");
        static const QString samplers = QStringLiteral("u_ManagedTextureSlots[0]");
        found.slotMapTexture = program->getUniformLocation(slotMapTexture);
        if (withUniforms)
            found.slotMapUniforms = program->getUniformLocation(slotMapUniforms);
        slots = program->getUniformLocation(bindless ? handles : samplers);
        return found;
    }
    GLint current = 0;
    glGetIntegerv(GL_CURRENT_PROGRAM, &current);
    const auto name = static_cast<GLuint>(current);
    found.slotMapTexture = glGetUniformLocation(name, "u_TextureTokenManagedTextureSlotMapSample");
    found.slotMapUniforms = glGetUniformLocation(name, "u_TextureTokenManagedTextureSlotMapUniforms[0]");
    slots = glGetUniformLocation(name, bindless ? "u_ManagedTextureHandles[0]" : "u_ManagedTextureSlots[0]");
    return found;
}

void Array2DTextureManager::bind(ShaderProgram* program)
{
    const Locations locations = uniformLocations(program, true);
    if (!locations.any())
        return;
    ++_bindCount;
    updateSlots();
    if (_bindMode == BindBindless)
        makeHandlesResident();
    if (locations.slotMapUniforms >= 0)
    {
        const qsizetype vectors = _textureTokenToSlotLayerData.size() * kVectorsPerToken;
        glUniform4iv(locations.slotMapUniforms, static_cast<GLsizei>(std::min<qsizetype>(_maxSlotMapUniforms, vectors)),
                     slotMap());
    }
    if (locations.slotMapTexture >= 0)
        bindSlotMapTexture(locations.slotMapTexture);
    if (locations.handles >= 0)
        setHandles(locations.handles);
    if (locations.samplers >= 0)
        bindSlots(locations.samplers);
}

void Array2DTextureManager::unbind(ShaderProgram* program)
{
    if (_bindCount == 0)
        return;
    const Locations locations = uniformLocations(program, false);
    if (!locations.any())
        return;
    --_bindCount;
    const int count = slotCount();
    for (int slot = 0; _bindMode == BindBindless && slot < count; ++slot)
        if (_slots[slot]->residentCount != 0)
            --_slots[slot]->residentCount;
    for (int slot = 0; locations.samplers >= 0 && slot < count; ++slot)
        _slots[slot]->texture->unbind();
    if (locations.slotMapTexture >= 0 && _slotMapTexture)
        _slotMapTexture->unbind();
}

void Array2DTextureManager::makeHandlesResident()
{
    for (int slot = 0, count = slotCount(); slot < count; ++slot)
    {
        SlotData& data = *_slots[slot];
        if (!data.texture || data.handle == 0)
            continue;
        if (!isResident(data.handle) && _bindless->makeTextureHandleResident)
            _bindless->makeTextureHandleResident(data.handle);
        ++data.residentCount;
    }
}

const qint32* Array2DTextureManager::slotMap() const
{
    static_assert(sizeof(SlotLayerData) == sizeof(qint32) * 4 * kVectorsPerToken);
    return reinterpret_cast<const qint32*>(_textureTokenToSlotLayerData.constData());
}

void Array2DTextureManager::bindSlotMapTexture(int location)
{
    if (!_slotMapTexture)
    {
        _slotMapTexture = std::make_unique<Texture>(nullptr);
        _slotMapTexture->setTarget(GL_TEXTURE_1D);
        const AutoBinder binder(_slotMapTexture.get());
        glTexParameteri(GL_TEXTURE_1D, GL_TEXTURE_MIN_FILTER, GL_NEAREST);
        glTexParameteri(GL_TEXTURE_1D, GL_TEXTURE_MAG_FILTER, GL_NEAREST);
    }
    if (!_slotMapTexture->bind())
        return; // which says why
    if (_slotMapDirty)
    {
        glTexImage1D(GL_TEXTURE_1D, 0, GL_RGBA32I, slotMapWidth(), 0, GL_RGBA_INTEGER, GL_INT, slotMap());
        _slotMapDirty = false;
    }
    glUniform1i(location, _slotMapTexture->unit());
}

/// In texels; not more than a texture can have.
int Array2DTextureManager::slotMapWidth() const
{
    const qsizetype tokens = _textureTokenToSlotLayerData.size();
    const auto fitting = static_cast<qsizetype>(_maxTextureSize / kVectorsPerToken);
    if (tokens > fitting)
        VRK_LOG_WARNING("%d texture tokens but only %d fit into the slot map. Rendering will be incorrect!",
                        static_cast<int>(tokens), static_cast<int>(fitting));
    return static_cast<int>(std::min(tokens, fitting)) * kVectorsPerToken;
}

void Array2DTextureManager::setHandles(int location)
{
    for (int slot = 0, count = slotCount(); slot < count; ++slot)
        _slotHandles[slot] = _slots[slot]->handle;
    // A handle is one uvec2, the low word first, as this machine has it in memory too.
    glUniform2uiv(location, static_cast<GLsizei>(_slotHandles.size()),
                  reinterpret_cast<const GLuint*>(_slotHandles.constData()));
}

/// All of them, in use or not: each sampler of the array has to have something to sample.
void Array2DTextureManager::bindSlots(int location)
{
    for (int slot = 0, count = slotCount(); slot < count; ++slot)
    {
        _slots[slot]->texture->bind();
        _slotUnits[slot] = _slots[slot]->texture->unit();
    }
    glUniform1iv(location, static_cast<GLsizei>(_slotUnits.size()), _slotUnits.constData());
}

} // namespace Harrow::Vrk
