// SPDX-License-Identifier: MIT
#pragma once

/// \file
/// What the suites of storage and copies of Array2DTextureManager share on the fake driver: the calls of each step, and
/// a fixture with slots.

#include "Array2DBindingTestTools.h"

namespace Harrow::Vrk::Test::Array2DDraws::Storage
{

inline constexpr int kTopUnit = 15;
inline constexpr GLenum kArray = GL_TEXTURE_2D_ARRAY;

/// A texture as the text of a copy wants it.
struct Source
{
    GLuint name;
    GLenum target;
    int width;
    int height;
    int maxLevel;
};

struct Place
{
    GLuint slotName;
    int width;
    int height;
    int layer;
    int layers = 1;
};

inline QStringList onTop(GLuint name, GLenum target)
{
    return {activate(kTopUnit), bindName(name, target)};
}

inline QStringList noneOnTop(GLenum target)
{
    return onTop(0, target);
}

inline QString attachment(const char* function, GLuint name, int level)
{
    return CallLog::call(function, GL_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, name, level);
}

inline QString layerAttachment(GLuint name, int level, int layer)
{
    return CallLog::call("glFramebufferTextureLayer", GL_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, name, level, layer);
}

inline QString framebuffer(GLuint name, GLenum target = GL_FRAMEBUFFER)
{
    return CallLog::call("glBindFramebuffer", target, name);
}

inline QString blit(int fromWidth, int fromHeight, int toWidth, int toHeight)
{
    return CallLog::call("glBlitFramebuffer", 0, 0, fromWidth, fromHeight, 0, 0, toWidth, toHeight, GL_COLOR_BUFFER_BIT,
                         GL_LINEAR);
}

inline QString image(int level, int internalFormat, int width, int height, int layers, GLenum format, GLenum type)
{
    return CallLog::call("glTexImage3D", kArray, level, internalFormat, width, height, layers, 0, format, type,
                         nullptr);
}

inline QString rgba8(int level, int width, int height, int layers)
{
    return image(level, GL_RGBA8, width, height, layers, GL_RGBA, GL_UNSIGNED_BYTE);
}

inline QStringList repeated(const QString& call, int count)
{
    QStringList calls;
    for (int i = 0; i < count; ++i)
        calls.append(call);
    return calls;
}

/// The sampler state of `FakeTexture`'s defaults, with this number of levels.
inline QStringList slotParameters(int levels)
{
    return {parameter(kArray, GL_TEXTURE_MAG_FILTER, GL_LINEAR), parameter(kArray, GL_TEXTURE_MIN_FILTER, GL_LINEAR),
            parameter(kArray, GL_TEXTURE_WRAP_S, GL_REPEAT),     parameter(kArray, GL_TEXTURE_WRAP_T, GL_REPEAT),
            parameter(kArray, GL_TEXTURE_LOD_BIAS, 0),           parameter(kArray, GL_TEXTURE_MIN_LOD, 0),
            parameter(kArray, GL_TEXTURE_MAX_LOD, levels - 1),   parameter(kArray, GL_TEXTURE_BASE_LEVEL, 0),
            parameter(kArray, GL_TEXTURE_MAX_LEVEL, levels - 1)};
}

inline QStringList placeholder(GLuint name)
{
    return QStringList(pointerCall("glGenTextures", {1})) + onTop(name, kArray) +
           QStringList(
               {CallLog::call("glTexImage3D", kArray, 0, GL_RGBA, 1, 1, 1, 0, GL_RGBA, GL_UNSIGNED_BYTE, nullptr),
                parameter(kArray, GL_TEXTURE_MIN_FILTER, GL_LINEAR),
                parameter(kArray, GL_TEXTURE_MAG_FILTER, GL_LINEAR),
                parameter(kArray, GL_TEXTURE_WRAP_S, GL_CLAMP_TO_EDGE),
                parameter(kArray, GL_TEXTURE_WRAP_T, GL_CLAMP_TO_EDGE),
                CallLog::call("glTexParameterf", kArray, GL_TEXTURE_LOD_BIAS, 0.0f),
                parameter(kArray, GL_TEXTURE_MIN_LOD, 0), parameter(kArray, GL_TEXTURE_MAX_LOD, 0),
                parameter(kArray, GL_TEXTURE_BASE_LEVEL, 0), parameter(kArray, GL_TEXTURE_MAX_LEVEL, 0)}) +
           noneOnTop(kArray);
}

inline QString levelQuery(const Source& source, int level, GLenum what)
{
    const GLenum target = source.target == GL_TEXTURE_CUBE_MAP ? GL_TEXTURE_CUBE_MAP_POSITIVE_X : source.target;
    return pointerCall("glGetTexLevelParameteriv", {GLint(target), level, GLint(what)});
}

inline QStringList askingSize(const Source& source, int level)
{
    return {levelQuery(source, level, GL_TEXTURE_WIDTH), levelQuery(source, level, GL_TEXTURE_HEIGHT)};
}

inline QStringList blitted(GLuint first, const QString& call)
{
    return {framebuffer(first, GL_READ_FRAMEBUFFER), CallLog::call("glReadBuffer", GL_COLOR_ATTACHMENT0),
            framebuffer(first + 1, GL_DRAW_FRAMEBUFFER), CallLog::call("glDrawBuffer", GL_COLOR_ATTACHMENT0), call};
}

inline QStringList toLayer(GLuint second, GLuint slotName, int level, int layer)
{
    return {framebuffer(second), layerAttachment(slotName, level, layer), framebuffer(0)};
}

/// What a copy begins with.
inline QStringList examined(const Source& source)
{
    return QStringList(CallLog::call("glFlush")) + onTop(source.name, source.target) + askingSize(source, 0) +
           QStringList(pointerCall("glGetTexParameteriv", {GLint(source.target), GL_TEXTURE_MAX_LEVEL})) +
           noneOnTop(source.target);
}

inline QString attached(const Source& source, int level, int layer)
{
    if (source.target == GL_TEXTURE_CUBE_MAP)
        return CallLog::call("glFramebufferTexture2D", GL_FRAMEBUFFER, GL_COLOR_ATTACHMENT0,
                             GL_TEXTURE_CUBE_MAP_POSITIVE_X + layer, source.name, level);
    if (source.target == GL_TEXTURE_2D_ARRAY)
        return layerAttachment(source.name, level, layer);
    return attachment("glFramebufferTexture", source.name, level);
}

/// The whole copy of a source whose levels are as many as its greatest one says, into framebuffers `first` and
/// `first` + 1.
inline QStringList copied(GLuint first, const Source& source, const Place& place, GLuint outer = 0)
{
    QStringList calls = examined(source);
    calls += pointerCall("glGetIntegerv", {GL_DRAW_FRAMEBUFFER_BINDING});
    calls += repeated(pointerCall("glGenFramebuffers", {1}), 2);
    for (int i = 0; i < place.layers; ++i)
        for (int level = 0, w = place.width, h = place.height; w > 0 && h > 0; ++level, w /= 2, h /= 2)
        {
            const int layer = place.layer + i;
            calls += framebuffer(first);
            if (level <= source.maxLevel)
            {
                calls += attached(source, level, i);
                calls += toLayer(first + 1, place.slotName, level, layer);
                calls += onTop(source.name, source.target) + askingSize(source, level) + noneOnTop(source.target);
                calls += blitted(first, blit(source.width >> level, source.height >> level, w, h));
            }
            else
            {
                calls += layerAttachment(place.slotName, level - 1, layer);
                calls += toLayer(first + 1, place.slotName, level, layer);
                calls += blitted(first, blit(place.width >> (level - 1), place.height >> (level - 1), w, h));
            }
        }
    calls +=
        QStringList({framebuffer(0, GL_READ_FRAMEBUFFER), framebuffer(0, GL_DRAW_FRAMEBUFFER), framebuffer(outer)});
    calls += repeated(pointerCall("glDeleteFramebuffers", {1}), 2);
    calls += CallLog::call("glFlush");
    return calls;
}

class Array2DStorageTest : public Array2DBindingTest
{
protected:
    /// Slot 0 has the texture 1, and so on.
    void makeSlots(int count)
    {
        makeManager(count);
        array2D->setupSlots();
    }

    void makeBindlessSlots(int count)
    {
        offer({"GL_ARB_bindless_texture"});
        makeManager(count);
        array2D->setBindMode(Array2DTextureManager::BindBindless);
        array2D->setupSlots();
    }

    void offer(const QList<QByteArray>& extensions)
    {
        driver.setExtensions(extensions);
        GLRuntimeTestAccess::forgetExtensionsOf(driver.currentContext());
    }

    /// The token of a texture that has a place now.
    TextureToken place(const FakeTexture& description, GLenum target = GL_TEXTURE_2D)
    {
        last = newTextureOf(description, target);
        const TextureToken token = array2D->tokenForTexture(last);
        array2D->bind(QList<TextureToken>{token});
        return token;
    }

    TextureToken place(int width, int height, int maxLevel = 1000)
    {
        FakeTexture description = sized(width, height);
        description.maxLevel = maxLevel;
        return place(description);
    }

    QStringList updating()
    {
        const CallLog calls;
        array2D->updateSlots();
        return masked(calls.list());
    }

    /// The textures that were read from, in order: a slot's while its levels are built from it.
    static QList<int> sourcesOf(const QStringList& calls)
    {
        QList<int> names;
        const QString start = QStringLiteral("glFramebufferTexture(");
        for (const QString& call : calls)
            if (call.startsWith(start))
                names.append(call.section(QStringLiteral(", "), 2, 2).toInt(nullptr, 0));
        return names;
    }

    QList<TextureToken> pending() const
    {
        return Books::pendingTokens(*array2D);
    }

    static QStringList handleCall(const char* function, quint64 argument)
    {
        return {CallLog::call(function, argument)};
    }

    /// Takes all units but `left`.
    void occupyUnits(int left)
    {
        for (Texture* const texture : wrapped(kTopUnit + 1 - left))
        {
            ASSERT_TRUE(texture->bind());
            _occupants.append(texture);
        }
    }

    void freeUnits()
    {
        for (Texture* const texture : std::exchange(_occupants, {}))
            texture->unbind();
    }

    void TearDown() override
    {
        freeUnits();
        EXPECT_TRUE(allUnitsFree());
        Array2DBindingTest::TearDown();
    }

    Texture* last = nullptr;

private:
    QList<Texture*> _occupants;
};

} // namespace Harrow::Vrk::Test::Array2DDraws::Storage
