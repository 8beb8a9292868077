// SPDX-License-Identifier: MIT
#include "SamplerTextureManager.h"

#include "Diagnostics.h"
#include "GLFunctions.h"
#include "GLSLMacroProcessor.h"
#include "SamplerSlots.h"
#include "Texture.h"

namespace Harrow::Vrk
{
namespace
{

/// One number for each token: its slot.
constexpr SamplerSlots::MapFormat kMapFormat = {GL_R32I, GL_RED_INTEGER, GL_INT};

} // namespace

SamplerTextureManager::SamplerTextureManager() : _slots(std::make_unique<SamplerSlots>(kMapFormat))
{
    TextureManager::tokenForColor(Qt::white);
}

SamplerTextureManager::~SamplerTextureManager() = default;

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
    _slots->setMapDirty();
}

void SamplerTextureManager::clear()
{
    _slots->clear();
    _tokenToSlot.clear();
    tokenForColor(Qt::white);
    TextureManager::clear();
}

void SamplerTextureManager::textureTokenIssued(const TextureToken& /*token*/)
{
    _slots->discardMap(); // its width is the number of tokens
    _tokenToSlot.resize(static_cast<qsizetype>(maxToken().token));
}

// ---- textures of a draw --------------------------------------------------------------------------------------------

void SamplerTextureManager::bind(const QList<TextureToken>& tokens)
{
    const TextureUnits* units = nullptr;
    for (const TextureToken& token : tokens)
        if (Texture* const texture = textureForToken(token))
            setTokenSlot(texture, _slots->bind(*texture, units));
}

/// The slot goes to the texture's own token, which may not be the one that was asked for.
void SamplerTextureManager::setTokenSlot(const Texture* texture, int slot)
{
    const auto own = textureTokenMap().constFind(const_cast<Texture*>(texture));
    if (own == textureTokenMap().constEnd())
        return;
    VRK_ASSERT_RETURN(own->token < static_cast<quint64>(this->_tokenToSlot.size()), ,
                      "Token %llu has no entry in the slot map", own->token);
    const auto index = static_cast<qsizetype>(own->token);
    if (_tokenToSlot[index] == slot)
        return;
    _tokenToSlot[index] = slot;
    _slots->setMapDirty();
}

void SamplerTextureManager::unbind(const QList<TextureToken>& tokens)
{
    const TextureUnits* units = nullptr;
    for (const TextureToken& token : tokens)
        if (Texture* const texture = textureForToken(token))
            _slots->unbind(token, *texture, units);
}

// ---- the program ---------------------------------------------------------------------------------------------------

void SamplerTextureManager::bind(ShaderProgram* program)
{
    const auto width = static_cast<qsizetype>(maxToken().token);
    if (_tokenToSlot.size() < width)
        _tokenToSlot.resize(width); // tokens that were reserved without being issued
    _slots->bind(program, getMaxSlots(), {static_cast<int>(width), _tokenToSlot.constData()});
}

void SamplerTextureManager::unbind(ShaderProgram* /*program*/)
{
    _slots->unbind();
}

} // namespace Harrow::Vrk
