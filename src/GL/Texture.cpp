// SPDX-License-Identifier: MIT
#include "Texture.h"

#include "Diagnostics.h"
#include "GLFunctions.h"
#include "GLPlatform.h"
#include "TextureLevels.h"
#include "TextureUnits.h"

namespace Harrow::Vrk
{
namespace
{

int numAlive = 0;

} // namespace

Texture::Texture(QObject* parent) : QObject(parent), _managed(true)
{
    create();
    ++numAlive;
}

Texture::Texture(unsigned target, int internalFormat, int width, int height, int depth, QObject* parent)
    : QObject(parent),
      _target(target),
      _width(width),
      _height(height),
      _depth(depth),
      _internalFormat(internalFormat),
      _maxLevel(lastMipLevel(width, height)),
      _managed(true)
{
    create();
    ++numAlive;
}

Texture::Texture(unsigned textureID, QObject* parent) : QObject(parent), _textureID(textureID)
{
    VRK_ASSERT(textureID != 0, "Texture ID was zero, can't wrap a non-existent texture");
    ++numAlive;
}

Texture::~Texture()
{
    destroy();
    --numAlive;
}

bool Texture::create()
{
    VRK_ASSERT_RETURN(0u == this->_textureID, false, "Texture is not NULL on create");
    VRK_ASSERT_RETURN(false == _readonly, false, "Not allowed to change a readonly texture");
    glGenTextures(1, &_textureID);
    return true;
}

bool Texture::destroy()
{
    VRK_ASSERT_RETURN(0u != this->_textureID, false, "Texture is NULL on destroy");
    if (_managed && !GLPlatform::isProcessEnding())
        glDeleteTextures(1, &_textureID);
    return true;
}

bool Texture::bind()
{
    VRK_ASSERT_RETURN(0u != this->_textureID, false, "Texture is NULL on bind");
    VRK_ASSERT_RETURN(0u != this->_target, false, "Texture Target is not set on bind");
    TextureUnits& contextInfo = TextureUnits::ofCurrentContext();
    if (const int unit = contextInfo.unitOf(_textureID); unit >= 0)
    {
        // Still bound there; only the active unit may be another.
        glActiveTexture(GL_TEXTURE0 + unit);
        ++contextInfo.boundTextureCounts[_textureID];
        return true;
    }
    if (contextInfo.freeTextureUnits.isEmpty())
    {
        VRK_LOG_WARNING("There is no available texture units");
        return false;
    }
    glActiveTexture(GL_TEXTURE0 + contextInfo.take(_textureID));
    glBindTexture(_target, _textureID);
    return true;
}

bool Texture::unbind()
{
    VRK_ASSERT_RETURN(0u != this->_textureID, false, "Texutre is NULL on unbind");
    VRK_ASSERT_RETURN(0u != this->_target, false, "Texture Target is not set on unbind");
    TextureUnits& contextInfo = TextureUnits::ofCurrentContext();
    VRK_ASSERT_RETURN(contextInfo.textureToUnitMaps.contains(this->_textureID), false,
                      "Texture has not been bound on unbind");
    VRK_ASSERT_RETURN(contextInfo.boundTextureCounts.contains(this->_textureID), false,
                      "Texture has not been bound on unbind");
    glActiveTexture(GL_TEXTURE0 + contextInfo.unitOf(_textureID));
    if (--contextInfo.boundTextureCounts[_textureID] != 0)
        return true;
    glBindTexture(_target, 0);
    contextInfo.release(_textureID);
    return true;
}

void Texture::setTarget(unsigned target)
{
    VRK_ASSERT(false == _readonly, "Not allowed to change a readonly texture");
    _target = target;
}

void Texture::setReadOnly()
{
    _readonly = true;
}

unsigned Texture::target() const
{
    return _target;
}

unsigned Texture::textureID() const
{
    return _textureID;
}

bool Texture::isReadOnly() const
{
    return _readonly;
}

bool Texture::isManaged() const
{
    return _managed;
}

bool Texture::isBound() const
{
    VRK_ASSERT_RETURN(0u != this->_textureID, false, "Texutre is NULL on unbind");
    VRK_ASSERT_RETURN(0u != this->_target, false, "Texture Target is not set on unbind");
    return TextureUnits::ofCurrentContext().boundTextureCounts.value(_textureID) != 0;
}

int Texture::unit() const
{
    VRK_ASSERT_RETURN(0u != this->_textureID, -1, "Texutre is NULL on unit()");
    VRK_ASSERT_RETURN(0u != this->_target, -1, "Texture Target is not set on unit()");
    const TextureUnits& contextInfo = TextureUnits::ofCurrentContext();
    VRK_ASSERT_RETURN(contextInfo.textureToUnitMaps.contains(this->_textureID), -1,
                      "Texture has not been bound on unit()");
    VRK_ASSERT_RETURN(contextInfo.boundTextureCounts.contains(this->_textureID), -1,
                      "Texture has not been bound on unit()");
    return contextInfo.unitOf(_textureID);
}

int Texture::width(int level) const
{
    return getTexLevelParameteriv(level, GL_TEXTURE_WIDTH);
}

int Texture::height(int level) const
{
    return getTexLevelParameteriv(level, GL_TEXTURE_HEIGHT);
}

int Texture::depth(int level) const
{
    return getTexLevelParameteriv(level, GL_TEXTURE_DEPTH);
}

int Texture::internalFormat(int level) const
{
    return getTexLevelParameteriv(level, GL_TEXTURE_INTERNAL_FORMAT);
}

// The words serve all four queries.
int Texture::getTexLevelParameteriv(int level, unsigned pname) const
{
    VRK_ASSERT_RETURN(0u != this->_textureID, -1, "Texutre is NULL on internalFormat()");
    VRK_ASSERT_RETURN(0u != this->_target, -1, "Texture target is not set on internalFormat()");
    VRK_ASSERT_RETURN(this->isBound(), -1, "Texture target is not bound");
    // A cube map has levels on its faces only.
    const GLenum target = _target == GL_TEXTURE_CUBE_MAP ? GL_TEXTURE_CUBE_MAP_POSITIVE_X : _target;
    GLint value = -1;
    glGetTexLevelParameteriv(target, level, pname, &value);
    return value;
}

int Texture::maxTextureUnits() const
{
    return TextureUnits::ofCurrentContext().maxTextureImageUnits;
}

int Texture::dimensionLevelSize(int dimension, int level)
{
    return mipLevelSize(dimension, level, _maxLevel);
}

bool Texture::isTextureUnitFree(unsigned unit)
{
    const TextureUnits* const contextInfo = TextureUnits::findOfCurrentContext();
    return contextInfo && contextInfo->freeTextureUnits.contains(unit);
}

int Texture::NumAlive()
{
    return numAlive;
}

} // namespace Harrow::Vrk
