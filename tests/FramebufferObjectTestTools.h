// SPDX-License-Identifier: MIT
#pragma once

/// \file
/// What the suites of FramebufferObject on the fake driver share: a driver that remembers draw buffers and deleted
/// names and answers for the status as told, the words of the reports, and textures of any name and target.

#include "FramebufferObject.h"

#include "TextureManager.h"
#include "TextureTestTools.h"

namespace Harrow::Vrk
{

struct FramebufferObjectTestAccess
{
    static bool create(FramebufferObject& object)
    {
        return object.create();
    }
    static bool destroy(FramebufferObject& object)
    {
        return object.destroy();
    }
    static bool isBound(const FramebufferObject& object)
    {
        return object._fboBound;
    }
    static QList<GLenum>& drawBuffers(FramebufferObject& object)
    {
        return object._drawBuffers;
    }
    static QHash<GLenum, int>& levels(FramebufferObject& object)
    {
        return object._attachmentLevels;
    }
};

} // namespace Harrow::Vrk

namespace Harrow::Vrk::Test
{

inline constexpr GLenum kColor0 = GL_COLOR_ATTACHMENT0;
inline constexpr GLenum kColor1 = GL_COLOR_ATTACHMENT1;
inline constexpr GLenum kColor2 = GL_COLOR_ATTACHMENT2;
inline constexpr GLenum kLayered[] = {GL_TEXTURE_3D, GL_PROXY_TEXTURE_3D, GL_TEXTURE_2D_ARRAY,
                                      GL_PROXY_TEXTURE_2D_ARRAY};
inline constexpr GLenum kFlat[] = {GL_TEXTURE_1D,
                                   GL_TEXTURE_2D,
                                   GL_TEXTURE_RECTANGLE,
                                   GL_TEXTURE_CUBE_MAP,
                                   GL_TEXTURE_CUBE_MAP_NEGATIVE_Z,
                                   GL_TEXTURE_CUBE_MAP_ARRAY,
                                   GL_TEXTURE_2D_MULTISAMPLE,
                                   GL_TEXTURE_2D_MULTISAMPLE_ARRAY};

// What the fake driver was told, and what it is to answer.
inline QList<GLuint> deleted;
inline QList<GLenum> drawn;
inline QList<GLenum> statuses;

using TexturePtr = std::unique_ptr<Texture>;

inline TexturePtr textureNamed(unsigned name, GLenum target = GL_TEXTURE_2D)
{
    auto texture = std::make_unique<Texture>(name, nullptr);
    texture->setTarget(target);
    return texture;
}

inline QStringList failed(const char* condition, const QString& message)
{
    return {assertionLine(QString::fromLatin1(condition), message)};
}

inline QStringList nullName(const char* operation)
{
    return failed("0u != this->_fbo", QStringLiteral("Framebuffer Object is NULL on %1").arg(QLatin1String(operation)));
}

inline QStringList notBound(const char* operation)
{
    return failed("true == this->_fboBound",
                  QStringLiteral("Framebuffer Object is not bound on %1").arg(QLatin1String(operation)));
}

inline QStringList taken(GLenum point)
{
    return failed("false == this->_attachments.contains(attachmentPoint)",
                  QStringLiteral("Framebuffer Object already has attachment at %1").arg(point));
}

inline QStringList nullTexture()
{
    return failed("nullptr != texture", QStringLiteral("Texture is NULL on attach"));
}

inline QStringList wrongForAttach(const char* target)
{
    return failed("false", QStringLiteral("Texture Target %1 is not supported by FramebufferObject::attach() use "
                                          "FramebufferObject::attach3D()")
                               .arg(QLatin1String(target)));
}

inline QStringList wrongForAttachLayers(GLenum target)
{
    return failed("false", QStringLiteral("Texture Target 0x%1 is not supported by FramebufferObject::attachLayer() "
                                          "use FramebufferObject::attach()")
                               .arg(QString::number(target, 16).toUpper()));
}

inline QString bindTo(GLuint name)
{
    return CallLog::call("glBindFramebuffer", GL_FRAMEBUFFER, name);
}

inline QString flatCall(GLenum point, GLenum target, GLuint name, int level)
{
    return CallLog::call("glFramebufferTexture2D", GL_FRAMEBUFFER, point, target, name, level);
}

inline QString wholeCall(GLenum point, GLuint name, int level)
{
    return CallLog::call("glFramebufferTexture", GL_FRAMEBUFFER, point, name, level);
}

inline QString layerCall(GLenum point, GLuint name, int level, int layer)
{
    return CallLog::call("glFramebufferTextureLayer", GL_FRAMEBUFFER, point, name, level, layer);
}

inline QString statusCall()
{
    return CallLog::call("glCheckFramebufferStatus", GL_FRAMEBUFFER);
}

/// Bound from the start, and until its end unless the test unbinds it.
class BoundFramebuffer : public FramebufferObject
{
public:
    BoundFramebuffer() : FramebufferObject(nullptr)
    {
        FramebufferObject::bind();
    }
    ~BoundFramebuffer() override
    {
        if (FramebufferObjectTestAccess::isBound(*this))
            FramebufferObject::unbind();
    }
};

/// The four ways to attach, as one.
struct Operation
{
    const char* name;
    GLenum target;
    bool (*attach)(FramebufferObject&, Texture*, GLenum point);
};
inline constexpr Operation kOperations[] = {
    {"attach", GL_TEXTURE_2D, [](FramebufferObject& f, Texture* t, GLenum point) { return f.attach(t, point, 0); }},
    {"attach3D", GL_TEXTURE_3D,
     [](FramebufferObject& f, Texture* t, GLenum point) { return f.attach3D(t, point, 0, 0); }},
    {"attachLayers", GL_TEXTURE_3D,
     [](FramebufferObject& f, Texture* t, GLenum point) { return f.attachLayers(t, point, 0); }},
    {"attachUpdate", GL_TEXTURE_2D,
     [](FramebufferObject& f, Texture* t, GLenum point) { return f.attachUpdate(t, point, 0); }},
};

class FramebufferObjects : public TextureFixture
{
protected:
    using Access = FramebufferObjectTestAccess;

    void SetUp() override
    {
        deleted.clear();
        drawn.clear();
        statuses.clear();
        driver.replace(
            "glDeleteFramebuffers",
            +[](GLsizei count, const GLuint* names) { deleted += QList(names, names + count); });
        driver.replace(
            "glDrawBuffers", +[](GLsizei count, const GLenum* points) { drawn = QList(points, points + count); });
        driver.replace(
            "glCheckFramebufferStatus",
            +[](GLenum) { return statuses.isEmpty() ? GLenum(GL_FRAMEBUFFER_COMPLETE) : statuses.takeFirst(); });
        driver.setInteger(GL_MAX_SAMPLES, 8);
        TextureFixture::SetUp();
        makeRecord();
        _aliveBefore = FramebufferObject::NumAlive();
        _activeBefore = FramebufferObject::NumActiveFBOTextures();
        FramebufferObject::ResetNumFBOTextures();
        TextureManager::setInstance(nullptr);
    }

    void TearDown() override
    {
        TextureManager::setInstance(nullptr);
    }

    // The counters, from the start of the test.
    int alive() const
    {
        return FramebufferObject::NumAlive() - _aliveBefore;
    }
    int active() const
    {
        return FramebufferObject::NumActiveFBOTextures() - _activeBefore;
    }
    static int total()
    {
        return FramebufferObject::NumFBOTextures();
    }

private:
    int _aliveBefore = 0;
    int _activeBefore = 0;
};

} // namespace Harrow::Vrk::Test
