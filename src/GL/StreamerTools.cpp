// SPDX-License-Identifier: MIT
#include "StreamerTools.h"

#include "Texture.h"
#include "TextureUpload.h"

#include <QMessageLogger>

namespace Harrow::Vrk
{

bool isAtLeastOne(int value, const char* warning)
{
    if (value < 1)
        QMessageLogger().warning("%s", warning);
    return value >= 1;
}

void setStreamerSampling(Texture& texture, GLint magFilter, GLint minFilter, GLint maxLevel)
{
    if (!texture.bind())
        return;
    const TextureParameter parameters[] = {
        {GL_TEXTURE_MAG_FILTER, magFilter},
        {GL_TEXTURE_MIN_FILTER, minFilter},
        {GL_TEXTURE_WRAP_S, GL_CLAMP_TO_EDGE},
        {GL_TEXTURE_WRAP_T, GL_CLAMP_TO_EDGE},
        {GL_TEXTURE_BASE_LEVEL, 0},
        {GL_TEXTURE_MAX_LEVEL, maxLevel},
    };
    setTextureParameters(GL_TEXTURE_2D, parameters);
    glTexParameterf(GL_TEXTURE_2D, GL_TEXTURE_LOD_BIAS, 0.0f);
    texture.unbind();
}

void makeStreamerMipmaps(Texture& texture)
{
    if (!texture.bind())
        return;
    glGenerateMipmap(GL_TEXTURE_2D);
    texture.unbind();
}

ActiveUnitGuard::ActiveUnitGuard()
{
    glGetIntegerv(GL_ACTIVE_TEXTURE, &_activeTexture);
}

ActiveUnitGuard::~ActiveUnitGuard()
{
    glActiveTexture(static_cast<GLenum>(_activeTexture));
}

StreamerState::StreamerState()
{
    glGetIntegerv(GL_ACTIVE_TEXTURE, &_activeTexture);
    glGetIntegerv(GL_DRAW_FRAMEBUFFER_BINDING, &_drawFramebuffer);
}

void StreamerState::restore() const
{
    glBindFramebuffer(GL_FRAMEBUFFER, static_cast<GLuint>(_drawFramebuffer));
    glActiveTexture(static_cast<GLenum>(_activeTexture));
}

bool countFrame(qint32& counter, qint32 framesPerStep)
{
    counter = static_cast<qint32>(static_cast<quint32>(counter) + 1u);
    if (counter != framesPerStep)
        return false;
    counter = 0;
    return true;
}

qint32 firstFrameCount(qint32 framesPerStep)
{
    return static_cast<qint32>(static_cast<quint32>(framesPerStep) - 1u);
}

} // namespace Harrow::Vrk
