// SPDX-License-Identifier: MIT
#include "GLUtilities.h"

#include "Diagnostics.h"
#include "GLContextTracker.h"
#include "GLEnumWords.h"
#include "GLFunctions.h"
#include "GLPlatform.h"
#include "GLRuntimeTestAccess.h"
#include "TextureFileFormats.h"

#include <QBasicMutex>
#include <QHash>
#include <QMessageLogger>
#include <QMutexLocker>
#include <QOpenGLContext>
#include <QSet>
#include <QString>

#include <algorithm>
#include <cstdlib>
#include <iterator>
#include <string_view>

using namespace Harrow::Vrk;

namespace
{

bool initialised = false;

QBasicMutex extensionMutex;

/// Extension names per context handle. Entries are never removed: a new context on an old handle inherits the set.
/// Contexts with the same names share one set: it takes some 20 KiB, and a program may make contexts again and again.
QHash<void*, QSet<QString>>& extensionCache()
{
    static QHash<void*, QSet<QString>> cache;
    return cache;
}

QSet<QString> readExtensions()
{
    QSet<QString> names;
    GLint count = 0;
    Harrow::Vrk::glGetIntegerv(GL_NUM_EXTENSIONS, &count);
    for (GLint i = 0; i < count; ++i)
        if (const GLubyte* const name = Harrow::Vrk::glGetStringi(GL_EXTENSIONS, static_cast<GLuint>(i)))
            names.insert(QString::fromLatin1(reinterpret_cast<const char*>(name)));
    return names;
}

constexpr GLEnumWord kErrorWords[] = {
    {GL_NO_ERROR, "no error"},           {GL_INVALID_ENUM, "invalid enum"},
    {GL_INVALID_VALUE, "invalid value"}, {GL_INVALID_OPERATION, "invalid operation"},
    {GL_OUT_OF_MEMORY, "out of memory"}, {GL_INVALID_FRAMEBUFFER_OPERATION, "invalid framebuffer operation"},
};

struct TypeRange
{
    GLenum first;
    GLenum last;
};

// The gap from 0x8DC6 to 0x8DC8 holds the unsigned vectors.
constexpr TypeRange kSamplerTypes[] = {
    {GL_SAMPLER_1D, GL_SAMPLER_2D_RECT_SHADOW},
    {GL_SAMPLER_1D_ARRAY, GL_SAMPLER_CUBE_SHADOW},
    {GL_INT_SAMPLER_1D, GL_UNSIGNED_INT_SAMPLER_BUFFER},
    {GL_SAMPLER_CUBE_MAP_ARRAY, GL_UNSIGNED_INT_SAMPLER_CUBE_MAP_ARRAY},
    {GL_SAMPLER_2D_MULTISAMPLE, GL_UNSIGNED_INT_SAMPLER_2D_MULTISAMPLE_ARRAY},
};
static_assert(GL_SAMPLER_1D == 0x8B5D && GL_SAMPLER_2D_RECT_SHADOW == 0x8B64);
static_assert(GL_SAMPLER_1D_ARRAY == 0x8DC0 && GL_SAMPLER_CUBE_SHADOW == 0x8DC5);
static_assert(GL_INT_SAMPLER_1D == 0x8DC9 && GL_UNSIGNED_INT_SAMPLER_BUFFER == 0x8DD8);
static_assert(GL_SAMPLER_CUBE_MAP_ARRAY == 0x900C && GL_UNSIGNED_INT_SAMPLER_CUBE_MAP_ARRAY == 0x900F);
static_assert(GL_SAMPLER_2D_MULTISAMPLE == 0x9108 && GL_UNSIGNED_INT_SAMPLER_2D_MULTISAMPLE_ARRAY == 0x910D);

struct Attachment
{
    unsigned type;
    int name;
};

Attachment drawAttachment(GLenum attachment)
{
    GLint type = 0;
    GLint name = 0;
    Harrow::Vrk::glGetFramebufferAttachmentParameteriv(GL_DRAW_FRAMEBUFFER, attachment,
                                                       GL_FRAMEBUFFER_ATTACHMENT_OBJECT_TYPE, &type);
    Harrow::Vrk::glGetFramebufferAttachmentParameteriv(GL_DRAW_FRAMEBUFFER, attachment,
                                                       GL_FRAMEBUFFER_ATTACHMENT_OBJECT_NAME, &name);
    return {static_cast<unsigned>(type), name};
}

} // namespace

bool initializeGLFunctions(void)
{
    if (initialised)
        return true;
    initialised = true;
    if (ogl_LoadFunctions() == 0)
    {
        // Nothing may be loaded, so the version text is asked for only where that is possible.
        const GLubyte* const version = _ptrc_glGetString ? _ptrc_glGetString(GL_VERSION) : nullptr;
        VRK_LOG_CRITICAL("Failed to initialize OpenGL '%s'", version ? reinterpret_cast<const char*>(version) : "");
        initialised = false;
    }
    // Also after a failure: files can be recognised without OpenGL.
    Harrow::Vrk::registerTextureFileFormats();
    return initialised;
}

void* getGLProcAddress(const char* name, bool optional)
{
    VRK_ASSERT_RETURN(nullptr != name, nullptr, "No name is given to getGLProcAddress()");
    void* const address = GLPlatform::active().procAddress(name);
    if (!GLPlatform::isMissing(address))
        return address;
    if (!optional)
        VRK_LOG_DEBUG("Failed to obtain '%s'", name);
    return nullptr;
}

bool hasGLExtension(const char* name)
{
    VRK_ASSERT_RETURN(nullptr != name, false, "No name is given to hasGLExtension()");
    void* const context = GLContextTracker::currentContext();
    const bool hidden = std::getenv("VRK_NO_GL_EXTENSIONS") != nullptr;

    QMutexLocker lock(&extensionMutex);
    auto& cache = extensionCache();
    if (!hidden && !cache.contains(context))
    {
        if (!_ptrc_glGetIntegerv || !_ptrc_glGetStringi)
            lock.unlock(); // a message handler may ask for an extension itself
        VRK_ASSERT_RETURN(_ptrc_glGetIntegerv && _ptrc_glGetStringi, false,
                          "OpenGL functions are not loaded on hasGLExtension()");
        QSet<QString> read = readExtensions();
        if (const auto known = std::find(cache.cbegin(), cache.cend(), read); known != cache.cend())
            read = *known;
        cache.insert(context, read);
    }
    const auto names = cache.constFind(context);
    if (names == cache.constEnd())
        return false;
    constexpr std::string_view prefix = "GL_";
    const QString text = QString::fromLatin1(name);
    const bool prefixed = std::string_view(name).substr(0, prefix.size()) == prefix;
    return names->contains(text) || names->contains(prefixed ? text.mid(prefix.size()) : QStringLiteral("GL_") + text);
}

bool openGlVersionSupported(int major, int minor)
{
    GLint contextMajor = 0;
    Harrow::Vrk::glGetIntegerv(GL_MAJOR_VERSION, &contextMajor);
    if (contextMajor != major)
        return contextMajor > major;
    GLint contextMinor = 0;
    Harrow::Vrk::glGetIntegerv(GL_MINOR_VERSION, &contextMinor);
    return contextMinor >= minor;
}

bool isSamplerType(unsigned int glType)
{
    return std::any_of(std::begin(kSamplerTypes), std::end(kSamplerTypes),
                       [glType](const TypeRange& range) { return glType >= range.first && glType <= range.last; });
}

void logGLFramebuffer(void)
{
    const GLubyte* const version = Harrow::Vrk::glGetString(GL_VERSION);
    GLint framebuffer = 0;
    Harrow::Vrk::glGetIntegerv(GL_DRAW_FRAMEBUFFER_BINDING, &framebuffer);
    QString text =
        QString::asprintf("logGLFramebuffer() [%p] '%s'", static_cast<void*>(QOpenGLContext::currentContext()),
                          version ? reinterpret_cast<const char*>(version) : "");
    text += QString::asprintf(" [fb] %3d", framebuffer);
    const Attachment color = drawAttachment(GL_COLOR_ATTACHMENT0);
    text += QString::asprintf(" [0] 0x%04X %3d", color.type, color.name);
    const Attachment depth = drawAttachment(GL_DEPTH_ATTACHMENT);
    text += QString::asprintf(" [d] 0x%04X %d", depth.type, depth.name);
    VRK_LOG_DEBUG("%s", text.toLocal8Bit().constData());
}

int vrkGetMemory(void)
{
    return 0;
}

namespace Harrow::Vrk
{

void checkGLError(const char* file, int line)
{
    hasGLError(file, line);
}

bool hasGLError(const char* file, int line)
{
    if (!_ptrc_glGetError)
        return false;
    constexpr int kMaxReports = 10;
    int reported = 0;
    for (GLenum error = glGetError(); error != GL_NO_ERROR && reported < kMaxReports; error = glGetError())
    {
        QMessageLogger().warning("[%s:%d] glError: 0x%X '%s' caught", file, line, error,
                                 wordFor(kErrorWords, error, "unknown error"));
        ++reported;
    }
    return reported > 0;
}

void GLRuntimeTestAccess::resetInitialisedFlag()
{
    initialised = false;
}

void GLRuntimeTestAccess::forgetExtensionsOf(void* context)
{
    const QMutexLocker lock(&extensionMutex);
    extensionCache().remove(context);
}

} // namespace Harrow::Vrk
