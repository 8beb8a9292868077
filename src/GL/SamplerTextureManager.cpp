// SPDX-License-Identifier: MIT
#include "SamplerTextureManager.h"

#include "AutoBinder.h"
#include "Diagnostics.h"
#include "GLFunctions.h"
#include "GLSLMacroProcessor.h"
#include "ShaderProgram.h"
#include "Texture.h"
#include "TextureUnits.h"

#include <algorithm>

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

/// `Texture::unit` with the context asked for only once: `units` is null for the first texture of a list.
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

SamplerTextureManager::SamplerTextureManager()
{
    reserveSlots();
    TextureManager::tokenForColor(Qt::white);
}

SamplerTextureManager::~SamplerTextureManager() = default;

void SamplerTextureManager::reserveSlots()
{
    _slotUnits.reserve(kReservedSlots);
    _slotRefCounts.reserve(kReservedSlots);
}

QString SamplerTextureManager::getShaderFile()
{
    return QStringLiteral("SamplerTextureManager.glslc");
}

void SamplerTextureManager::setup(GLSLMacroProcessor* processor)
{
    TextureManager::setup(processor);
    if (!processor)
        return;
    processor->addDefine(QStringLiteral("TEXTURE_MANAGER_SAMPLER"), QStringLiteral("1"));
    processor->addDefine(QStringLiteral("TEXTURE_MANAGER_SLOT_COUNT"), QString::number(getMaxSlots()));
    _slotMapDirty = true;
}

void SamplerTextureManager::clear()
{
    _slotUnits.clear();
    _slotRefCounts.clear();
    _tokenToSlot.clear();
    reserveSlots();
    tokenForColor(Qt::white);
    TextureManager::clear();
}

void SamplerTextureManager::textureTokenIssued(const TextureToken& /*token*/)
{
    _slotMapTexture.reset(); // its width is the number of tokens
    _tokenToSlot.resize(static_cast<qsizetype>(maxToken().token));
    _slotMapDirty = true;
}

// ---- textures of a draw --------------------------------------------------------------------------------------------

void SamplerTextureManager::bind(const QList<TextureToken>& tokens)
{
    const TextureUnits* units = nullptr;
    for (const TextureToken& token : tokens)
    {
        Texture* const texture = textureForToken(token);
        if (!texture)
            continue;
        texture->bind();
        setTokenSlot(texture, takeSlot(unitOf(*texture, units)));
    }
}

/// The slot that has the unit, or the first one that is not in use, or a new one.
int SamplerTextureManager::takeSlot(int unit)
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

/// The slot goes to the texture's own token, which may not be the one that was asked for.
void SamplerTextureManager::setTokenSlot(const Texture* texture, int slot)
{
    const auto own = textureTokenMap().constFind(const_cast<Texture*>(texture));
    if (own == textureTokenMap().constEnd())
        return;
    VRK_ASSERT_RETURN(own->token < static_cast<quint64>(this->_tokenToSlot.size()), ,
                      "Token %llu has no entry in the slot map", static_cast<unsigned long long>(own->token));
    const auto index = static_cast<qsizetype>(own->token);
    if (_tokenToSlot[index] == slot)
        return;
    _tokenToSlot[index] = slot;
    _slotMapDirty = true;
}

void SamplerTextureManager::unbind(const QList<TextureToken>& tokens)
{
    const TextureUnits* units = nullptr;
    for (const TextureToken& token : tokens)
    {
        Texture* const texture = textureForToken(token);
        if (!texture)
            continue;
        const qsizetype slot = _slotUnits.indexOf(unitOf(*texture, units));
        VRK_ASSERT(slot >= 0, "Texture of token %llu has no slot on unbind",
                   static_cast<unsigned long long>(token.token));
        if (slot >= 0)
            --_slotRefCounts[slot];
        texture->unbind();
    }
}

// ---- the program ---------------------------------------------------------------------------------------------------

void SamplerTextureManager::bind(ShaderProgram* program)
{
    if (!_defaultTexture)
        makeDefaultTexture();
    if (!_slotMapTexture)
        makeSlotMapTexture();
    _slotMapTexture->bind();
    if (_slotMapDirty)
        uploadSlotMap();

    const UniformLocations locations = uniformLocations(program);
    glUniform1i(locations.slotMap, _slotMapTexture->unit());
    const int count = uploadableSlots();
    fillUnusedSlots();
    glUniform1iv(locations.slots, count, _slotUnits.constData());
}

void SamplerTextureManager::unbind(ShaderProgram* /*program*/)
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
void SamplerTextureManager::makeDefaultTexture()
{
    _defaultTexture = std::make_unique<Texture>(nullptr);
    _defaultTexture->setTarget(GL_TEXTURE_2D);
    const AutoBinder binder(_defaultTexture.get());
    setNearestFilters();
}

void SamplerTextureManager::makeSlotMapTexture()
{
    const auto width = static_cast<int>(maxToken().token);
    checkSlotMapWidth(width);
    _slotMapTexture = std::make_unique<Texture>(GL_TEXTURE_2D, GL_R32I, width, 1, 0, nullptr);
    const AutoBinder binder(_slotMapTexture.get());
    setNearestFilters();
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_S, GL_CLAMP_TO_EDGE);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_T, GL_CLAMP_TO_EDGE);
}

void SamplerTextureManager::uploadSlotMap()
{
    const auto width = static_cast<qsizetype>(maxToken().token);
    if (_tokenToSlot.size() < width)
        _tokenToSlot.resize(width); // tokens that were reserved without being issued
    glTexImage2D(GL_TEXTURE_2D, 0, GL_R32I, static_cast<GLsizei>(width), 1, 0, GL_RED_INTEGER, GL_INT,
                 _tokenToSlot.constData());
    _slotMapDirty = false;
}

int SamplerTextureManager::uploadableSlots() const
{
    const auto used = static_cast<int>(_slotUnits.size());
    if (used <= getMaxSlots())
        return used;
    VRK_LOG_WARNING("Requesting %d texture slots but only %d available. Rendering will be incorrect!", used,
                    getMaxSlots());
    return getMaxSlots();
}

/// Gives every slot that no texture holds something that can be sampled. Where there is no slot at all the default
/// texture is bound all the same; its unit need not be listed, since no slot is uploaded then.
void SamplerTextureManager::fillUnusedSlots()
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

void SamplerTextureManager::bindDefaultTexture()
{
    _boundDefaultTexture = _defaultTexture.get();
    _boundDefaultTexture->bind();
}

} // namespace Harrow::Vrk
