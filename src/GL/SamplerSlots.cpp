// SPDX-License-Identifier: MIT
#include "SamplerSlots.h"

#include "AutoBinder.h"
#include "Diagnostics.h"
#include "GLFunctions.h"
#include "ShaderProgram.h"
#include "Texture.h"
#include "TextureUnits.h"

#include <QMessageLogger>

namespace Harrow::Vrk
{
namespace
{

constexpr qsizetype kReservedSlots = 32;

struct UniformLocations
{
    GLint slotMap;
    GLint slots;
};

/// Of `program`, or of the program in use if null.
UniformLocations uniformLocations(const ShaderProgram* program)
{
    if (program)
    {
        static const QString slotMap = QStringLiteral("u_TextureTokenManagedTextureSlotMap");
        static const QString slots = QStringLiteral("u_ManagedTextureSlots[0]");
        return {program->getUniformLocation(slotMap), program->getUniformLocation(slots)};
    }
    GLint current = 0;
    glGetIntegerv(GL_CURRENT_PROGRAM, &current);
    const auto name = static_cast<GLuint>(current);
    return {glGetUniformLocation(name, "u_TextureTokenManagedTextureSlotMap"),
            glGetUniformLocation(name, "u_ManagedTextureSlots[0]")};
}

/// `Texture::unit` with the context asked for only once.
int unitOf(const Texture& texture, const TextureUnits*& units)
{
    if (!units)
        units = &TextureUnits::ofCurrentContext();
    const int unit = texture.target() != 0 ? units->unitOf(texture.textureID()) : -1;
    return unit >= 0 ? unit : texture.unit(); // which says what is wrong
}

/// The least that OpenGL grants, so that the driver is asked only by who has more tokens.
constexpr int kLeastMaxTextureSize = 1024;

void checkSlotMapWidth(int width)
{
    if (width <= kLeastMaxTextureSize)
        return;
    GLint maxWidth = 0;
    glGetIntegerv(GL_MAX_TEXTURE_SIZE, &maxWidth);
    if (width > maxWidth)
        VRK_LOG_WARNING("%d texture tokens but only %d fit into the slot map. Rendering will be incorrect!", width,
                        maxWidth);
}

void setNearestFilters()
{
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_NEAREST);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_NEAREST);
}

} // namespace

SamplerSlots::SamplerSlots(const MapFormat& mapFormat) : _mapFormat(mapFormat)
{
    reserve();
}

SamplerSlots::~SamplerSlots() = default;

void SamplerSlots::reserve()
{
    _slotUnits.reserve(kReservedSlots);
    _slotRefCounts.reserve(kReservedSlots);
}

void SamplerSlots::clear()
{
    _slotUnits.clear();
    _slotRefCounts.clear();
    reserve();
}

void SamplerSlots::discardMap()
{
    _slotMapTexture.reset();
    _slotMapDirty = true;
}

void SamplerSlots::setMapDirty()
{
    _slotMapDirty = true;
}

// ---- textures of a draw --------------------------------------------------------------------------------------------

int SamplerSlots::bind(Texture& texture, const TextureUnits*& units)
{
    texture.bind();
    return takeSlot(unitOf(texture, units));
}

/// The slot that has the unit, or the first one that is not in use, or a new one.
int SamplerSlots::takeSlot(int unit)
{
    qsizetype slot = _slotUnits.indexOf(unit);
    if (slot >= 0)
    {
        ++_slotRefCounts[slot];
        return static_cast<int>(slot);
    }
    slot = _slotRefCounts.indexOf(0);
    if (slot >= 0)
    {
        _slotUnits[slot] = unit;
        _slotRefCounts[slot] = 1;
        return static_cast<int>(slot);
    }
    _slotUnits.append(unit);
    _slotRefCounts.append(1);
    return static_cast<int>(_slotUnits.size() - 1);
}

void SamplerSlots::unbind(const TextureToken& token, Texture& texture, const TextureUnits*& units)
{
    const qsizetype slot = _slotUnits.indexOf(unitOf(texture, units));
    VRK_ASSERT(slot >= 0, "Texture of token %llu has no slot on unbind", token.token);
    if (slot >= 0)
        --_slotRefCounts[slot];
    texture.unbind();
}

// ---- the program ---------------------------------------------------------------------------------------------------

void SamplerSlots::bind(const ShaderProgram* program, int maxSlots, const MapTexels& texels)
{
    if (!_defaultTexture)
        makeDefaultTexture();
    if (!_slotMapTexture)
        makeMapTexture(texels.width);
    _slotMapTexture->bind();
    if (_slotMapDirty)
        uploadMap(texels);

    const UniformLocations locations = uniformLocations(program);
    glUniform1i(locations.slotMap, _slotMapTexture->unit());
    const int count = uploadableSlots(maxSlots);
    fillUnused();
    glUniform1iv(locations.slots, count, _slotUnits.constData());
}

void SamplerSlots::unbind()
{
    if (_boundDefaultTexture)
    {
        _boundDefaultTexture->unbind();
        _boundDefaultTexture = nullptr;
    }
    VRK_ASSERT_RETURN(nullptr != this->_slotMapTexture, , "Texture manager is not bound to a program on unbind");
    _slotMapTexture->unbind();
}

/// Without an image: what samples it reads as black.
void SamplerSlots::makeDefaultTexture()
{
    _defaultTexture = std::make_unique<Texture>(nullptr);
    _defaultTexture->setTarget(GL_TEXTURE_2D);
    const AutoBinder binder(_defaultTexture.get());
    setNearestFilters();
}

void SamplerSlots::makeMapTexture(int width)
{
    checkSlotMapWidth(width);
    _slotMapTexture = std::make_unique<Texture>(GL_TEXTURE_2D, _mapFormat.internalFormat, width, 1, 0, nullptr);
    const AutoBinder binder(_slotMapTexture.get());
    setNearestFilters();
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_S, GL_CLAMP_TO_EDGE);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_T, GL_CLAMP_TO_EDGE);
}

void SamplerSlots::uploadMap(const MapTexels& texels)
{
    glTexImage2D(GL_TEXTURE_2D, 0, _mapFormat.internalFormat, texels.width, 1, 0, _mapFormat.format, _mapFormat.type,
                 texels.data);
    _slotMapDirty = false;
}

int SamplerSlots::uploadableSlots(int maxSlots) const
{
    const auto used = static_cast<int>(_slotUnits.size());
    if (used <= maxSlots)
        return used;
    QMessageLogger().warning("Requesting %d texture slots but only %d available. Rendering will be incorrect!", used,
                             maxSlots);
    return maxSlots;
}

/// Gives every slot that no texture holds something that can be sampled. Where there is no slot at all the default
/// texture is bound all the same; its unit need not be listed, since no slot is uploaded then.
void SamplerSlots::fillUnused()
{
    if (_slotUnits.isEmpty())
        bindDefaultTexture();
    for (qsizetype slot = 0; slot < _slotUnits.size(); ++slot)
    {
        if (_slotRefCounts[slot] >= 1)
            continue;
        if (!_boundDefaultTexture)
            bindDefaultTexture();
        _slotUnits[slot] = _defaultTexture->unit();
    }
}

void SamplerSlots::bindDefaultTexture()
{
    _boundDefaultTexture = _defaultTexture.get();
    _boundDefaultTexture->bind();
}

} // namespace Harrow::Vrk
