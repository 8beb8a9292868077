// SPDX-License-Identifier: MIT
#include "FramebufferObject.h"

#include "Diagnostics.h"
#include "GLEnumWords.h"
#include "GLPlatform.h"
#include "Texture.h"
#include "TextureManager.h"

#include <algorithm>
#include <iterator>
#include <memory>

namespace Harrow::Vrk
{
namespace
{

int numAlive = 0;
int numFBOTextures = 0;
int numActiveFBOTextures = 0;

/// Cube map arrays are not among them: `attach` hands those to OpenGL as they are.
constexpr GLenum kLayeredTargets[] = {GL_TEXTURE_3D, GL_PROXY_TEXTURE_3D, GL_TEXTURE_2D_ARRAY,
                                      GL_PROXY_TEXTURE_2D_ARRAY};

/// Whose layers `attach3D` names by their number alone.
constexpr GLenum kArrayTargets[] = {GL_TEXTURE_2D_ARRAY, GL_PROXY_TEXTURE_2D_ARRAY, GL_TEXTURE_CUBE_MAP_ARRAY};

constexpr GLenum kDepthStencilPoints[] = {GL_DEPTH_ATTACHMENT, GL_STENCIL_ATTACHMENT, GL_DEPTH_STENCIL_ATTACHMENT};

constexpr GLEnumWord kIncompleteWords[] = {
    {GL_FRAMEBUFFER_INCOMPLETE_ATTACHMENT,
     "Not all framebuffer attachment points are framebuffer attachment complete."},
    {GL_FRAMEBUFFER_INCOMPLETE_MISSING_ATTACHMENT, "No images are attached to the framebuffer."},
    {GL_FRAMEBUFFER_UNSUPPORTED, "The combination of internal formats of the attached images violates an "
                                 "implementation-dependent set of restrictions."},
};

template <size_t Count> bool isAmong(const GLenum (&set)[Count], GLenum value)
{
    return std::find(std::begin(set), std::end(set), value) != std::end(set);
}

bool isThere(const Texture* texture)
{
    VRK_ASSERT_RETURN(nullptr != texture, false, "Texture is NULL on attach");
    return true;
}

/// The two sides of one question, each with its report. The condition prints as "false", which is interface.
bool isAttachable(GLenum target)
{
    if (isAmong(kLayeredTargets, target))
        VRK_ASSERT_RETURN(false, false,
                          "Texture Target 0x%X is not supported by FramebufferObject::attach() use "
                          "FramebufferObject::attach3D()",
                          target);
    return true;
}

bool isLayered(GLenum target)
{
    if (!isAmong(kLayeredTargets, target))
        VRK_ASSERT_RETURN(false, false,
                          "Texture Target 0x%X is not supported by FramebufferObject::attachLayer() use "
                          "FramebufferObject::attach()",
                          target);
    return true;
}

} // namespace

FramebufferObject::FramebufferObject(QObject* parent) : QObject(parent)
{
    create();
}

FramebufferObject::FramebufferObject(unsigned int fbo, QObject* parent) : QObject(parent), _fbo(fbo)
{
    ++numAlive;
}

FramebufferObject::~FramebufferObject()
{
    destroy();
}

bool FramebufferObject::create()
{
    VRK_ASSERT_RETURN(0u == this->_fbo, false, "Framebuffer Object is not NULL on create");
    VRK_ASSERT_RETURN(false == this->_fboBound, false, "Framebuffer Object is already bound on create");
    glGenFramebuffers(1, &_fbo);
    ++numAlive;
    return true;
}

bool FramebufferObject::destroy()
{
    VRK_ASSERT_RETURN(false == this->_fboBound, false, "Framebuffer Object is already bound on destroy");
    if (_fbo == 0)
        return true;
    if (!GLPlatform::isProcessEnding())
        glDeleteFramebuffers(1, &_fbo);
    --numAlive;
    return true;
}

bool FramebufferObject::bind()
{
    VRK_ASSERT_RETURN(0u != this->_fbo, false, "Framebuffer Object is NULL on bind");
    VRK_ASSERT_RETURN(false == this->_fboBound, false, "Framebuffer Object is already bound on bind");
    glBindFramebuffer(GL_FRAMEBUFFER, _fbo);
    _fboBound = true;
    return true;
}

bool FramebufferObject::unbind()
{
    VRK_ASSERT_RETURN(0u != this->_fbo, false, "Framebuffer Object is NULL on unbind");
    VRK_ASSERT_RETURN(true == this->_fboBound, false, "Framebuffer Object is not bound on unbind");
    _fboBound = false;
    glBindFramebuffer(GL_FRAMEBUFFER, 0);
    return true;
}

void FramebufferObject::setFBO(GLuint fbo)
{
    if (fbo == 0 && _fbo != 0)
        --numAlive;
    _fbo = fbo;
}

// ---- attaching -----------------------------------------------------------------------------------------------------

bool FramebufferObject::isReadyToAttach() const
{
    VRK_ASSERT_RETURN(0u != this->_fbo, false, "Framebuffer Object is NULL on attach");
    VRK_ASSERT_RETURN(true == this->_fboBound, false, "Framebuffer Object is not bound on attach");
    return true;
}

bool FramebufferObject::canAttachNew(const Texture* texture, GLenum attachmentPoint) const
{
    if (!isReadyToAttach())
        return false;
    VRK_ASSERT_RETURN(false == this->_attachments.contains(attachmentPoint), false,
                      "Framebuffer Object already has attachment at %d", attachmentPoint);
    return isThere(texture);
}

bool FramebufferObject::attach(Texture* texture, GLenum attachmentPoint, int level)
{
    if (!canAttachNew(texture, attachmentPoint))
        return false;
    if (!isAttachable(texture->target()))
        return false;
    glFramebufferTexture2D(GL_FRAMEBUFFER, attachmentPoint, texture->target(), texture->textureID(), level);
    return recordAttachment(texture, attachmentPoint, level);
}

bool FramebufferObject::attach3D(Texture* texture, GLenum attachmentPoint, int layer, int level)
{
    if (!canAttachNew(texture, attachmentPoint))
        return false;
    const GLenum target = texture->target();
    if (isAmong(kArrayTargets, target))
        glFramebufferTextureLayer(GL_FRAMEBUFFER, attachmentPoint, texture->textureID(), level, layer);
    else
        glFramebufferTexture3D(GL_FRAMEBUFFER, attachmentPoint, target, texture->textureID(), level, layer);
    return recordAttachment(texture, attachmentPoint, level);
}

bool FramebufferObject::attachLayers(Texture* texture, GLenum attachmentPoint, int level)
{
    if (!canAttachNew(texture, attachmentPoint))
        return false;
    if (!isLayered(texture->target()))
        return false;
    glFramebufferTexture(GL_FRAMEBUFFER, attachmentPoint, texture->textureID(), level);
    return recordAttachment(texture, attachmentPoint, level);
}

bool FramebufferObject::attachUpdate(Texture* texture, GLenum attachmentPoint, int level)
{
    if (!isReadyToAttach())
        return false;
    if (!hasAttachment(attachmentPoint))
        return attach(texture, attachmentPoint, level);
    if (!isThere(texture))
        return false;
    ++numFBOTextures;
    if (_attachments.value(attachmentPoint) == texture && _attachmentLevels.value(attachmentPoint) == level)
        return true;
    if (!isAttachable(texture->target()))
        return false;
    glFramebufferTexture(GL_FRAMEBUFFER, attachmentPoint, texture->textureID(), level);
    _attachments.insert(attachmentPoint, texture);
    _attachmentLevels.insert(attachmentPoint, level);
    return true;
}

bool FramebufferObject::recordAttachment(Texture* texture, GLenum attachmentPoint, int level)
{
    _attachments.insert(attachmentPoint, texture);
    _attachmentLevels.insert(attachmentPoint, level);
    if (!isAmong(kDepthStencilPoints, attachmentPoint))
        _drawBuffers.append(attachmentPoint);
    ++numFBOTextures;
    ++numActiveFBOTextures;
    return true;
}

void FramebufferObject::createTexture2D(GLenum attachmentPoint, GLenum target, GLenum internalFormat, int width,
                                        int height)
{
    auto texture = std::make_unique<Texture>(nullptr);
    texture->create2D(target, static_cast<int>(internalFormat), width, height);
    if (attach(texture.get(), attachmentPoint, 0))
        static_cast<void>(texture.release()); // whoever detaches it owns it
}

void FramebufferObject::createTexture3D(GLenum attachmentPoint, GLenum target, GLenum internalFormat, int width,
                                        int height, int depth)
{
    auto texture = std::make_unique<Texture>(nullptr);
    texture->create3D(target, static_cast<int>(internalFormat), width, height, depth);
    bool attached = false;
    for (int layer = 0; layer < depth; ++layer)
        if (attach3D(texture.get(), attachmentPoint + static_cast<GLenum>(layer), layer, 0))
            attached = true;
    if (attached)
        static_cast<void>(texture.release()); // whoever detaches it owns it
}

// ---- detaching -----------------------------------------------------------------------------------------------------

Texture* FramebufferObject::detach(GLenum attachmentPoint)
{
    VRK_ASSERT_RETURN(0u != this->_fbo, nullptr, "Framebuffer Object is NULL on detach");
    VRK_ASSERT_RETURN(true == this->_fboBound, nullptr, "Framebuffer Object is not bound on detach");
    VRK_ASSERT_RETURN(true == this->_attachments.contains(attachmentPoint), nullptr,
                      "Framebuffer Object has nothing attached to attachment at %d", attachmentPoint);
    VRK_ASSERT_RETURN(true == this->_attachmentLevels.contains(attachmentPoint), nullptr,
                      "Framebuffer Object has no level info for attachment at %d", attachmentPoint);
    glFramebufferTexture(GL_FRAMEBUFFER, attachmentPoint, 0, _attachmentLevels.take(attachmentPoint));
    _drawBuffers.removeOne(attachmentPoint); // depth and stencil points are never in it
    --numActiveFBOTextures;
    return _attachments.take(attachmentPoint);
}

void FramebufferObject::detachAll()
{
    for (const GLenum attachmentPoint : attachmentPoints())
        if (hasAttachment(attachmentPoint))
            detach(attachmentPoint);
}

Texture* FramebufferObject::detachAndRelease(GLenum attachmentPoint)
{
    if (!hasAttachment(attachmentPoint))
        return nullptr;
    Texture* const texture = detach(attachmentPoint);
    TextureManager::Instance().releaseTempTextureRef(texture, 1);
    return texture;
}

void FramebufferObject::detachAndReleaseAll()
{
    TextureManager& manager = TextureManager::Instance();
    for (const GLenum attachmentPoint : attachmentPoints())
        manager.releaseTempTextureRef(detach(attachmentPoint), 1);
}

// ---- drawing and queries -------------------------------------------------------------------------------------------

void FramebufferObject::setDrawBuffers()
{
    VRK_ASSERT(0u != this->_fbo, "Framebuffer Object is NULL on attach");
    VRK_ASSERT(true == this->_fboBound, "Framebuffer Object is not bound on attach");
    glDrawBuffers(static_cast<GLsizei>(_drawBuffers.size()), _drawBuffers.constData());
}

GLuint FramebufferObject::getFBO() const
{
    return _fbo;
}

Texture* FramebufferObject::attachment(GLenum attachmentPoint) const
{
    VRK_ASSERT_RETURN(this->_attachments.contains(attachmentPoint), nullptr,
                      "Framebuffer Object does not have an attachment at %d", attachmentPoint);
    return _attachments.value(attachmentPoint);
}

bool FramebufferObject::hasAttachment(GLenum attachmentPoint) const
{
    return _attachments.contains(attachmentPoint);
}

QList<GLenum> FramebufferObject::attachmentPoints() const
{
    QList<GLenum> points = _attachments.keys();
    std::sort(points.begin(), points.end());
    return points;
}

bool FramebufferObject::isComplete()
{
    const bool bindsItself = !_fboBound;
    if (bindsItself)
        bind();
    const GLenum status = glCheckFramebufferStatus(GL_FRAMEBUFFER);
    if (bindsItself)
        unbind();
    if (status == GL_FRAMEBUFFER_COMPLETE)
        return true;
    // Asked again for the words, and by then perhaps of the default framebuffer, which has none: the text is interface.
    const GLenum reason = glCheckFramebufferStatus(GL_FRAMEBUFFER);
    VRK_LOG_DEBUG("Framebuffer is incomplete: %s", wordFor(kIncompleteWords, reason, ""));
    return false;
}

// ---- counters ------------------------------------------------------------------------------------------------------

int FramebufferObject::NumAlive()
{
    return numAlive;
}

int FramebufferObject::NumFBOTextures()
{
    return numFBOTextures;
}

int FramebufferObject::NumActiveFBOTextures()
{
    return numActiveFBOTextures;
}

void FramebufferObject::ResetNumFBOTextures()
{
    numFBOTextures = 0;
}

} // namespace Harrow::Vrk
