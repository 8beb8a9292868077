// SPDX-License-Identifier: MIT
#include "ImageCycleTextureStreamer.h"

#include "AutoBinder.h"
#include "Diagnostics.h"
#include "GLFunctions.h"
#include "StreamerTools.h"
#include "TextureFileInfo.h"
#include "TextureIO.h"

#include <QMessageLogger>

#include <memory>
#include <utility>
#include <vector>

namespace Harrow::Vrk
{
namespace
{

// Whatever count is asked for: applications rely on a slide standing for half a second.
constexpr qint32 kFramesPerStep = 30;

struct BaseLevel
{
    int width;
    int height;
    int internalFormat;

    bool operator==(const BaseLevel&) const = default;
};

BaseLevel baseLevel(Texture& texture)
{
    const AutoBinder binder(&texture);
    const int height = texture.height(0);
    const int width = texture.width(0);
    return {width, height, texture.internalFormat(0)};
}

/// Empty when one does not load, or differs from the first.
std::vector<std::unique_ptr<Texture>> loadAlike(const QString* paths, int count)
{
    std::vector<std::unique_ptr<Texture>> textures;
    BaseLevel first = {};
    bool alike = true;
    for (int i = 0; i < count; ++i)
    {
        std::unique_ptr<Texture> texture(LoadTextureFromFile(paths[i], TextureFileInfo()));
        if (!texture)
        {
            QMessageLogger().warning("Cannot load texture %s", qUtf8Printable(paths[i]));
            return {};
        }
        const BaseLevel level = baseLevel(*texture);
        if (i == 0)
            first = level;
        if (level != first)
        {
            QMessageLogger().warning("Invalid texture %s", qUtf8Printable(paths[i]));
            QMessageLogger().warning("All textures must have the same width, height and format");
            alike = false; // the rest is looked at too, so that all are named
        }
        textures.push_back(std::move(texture));
    }
    if (!alike)
        textures.clear();
    return textures;
}

} // namespace

ImageCycleTextureStreamer::ImageCycleTextureStreamer(Texture* const* textures, int textureCount, int frameCount,
                                                     QObject* parent)
    : TextureStreamer(parent), _framesPerStep(kFramesPerStep), _frameCounter(firstFrameCount(kFramesPerStep))
{
    VRK_ASSERT(textures != NULL, "NULL textures");
    VRK_ASSERT(textureCount > 0, "Invalid texture count");
    VRK_ASSERT(frameCount > 0, "Invalid frame count");
    if (!textures || textureCount < 1)
        return;
    // A null keeps its place, so that those behind it are shown at the frames that are theirs.
    _textures.reserve(textureCount);
    Texture* first = nullptr;
    for (int i = 0; i < textureCount; ++i)
    {
        VRK_ASSERT(textures[i] != NULL, "NULL texture");
        _textures.append(textures[i]);
        if (!first)
            first = textures[i];
    }
    if (!first)
        return;
    const BaseLevel level = baseLevel(*first);
    create2D(GL_TEXTURE_2D, level.internalFormat, level.width, level.height);
    setStreamerSampling(*this, GL_LINEAR, GL_LINEAR_MIPMAP_LINEAR, 1000);
}

ImageCycleTextureStreamer::~ImageCycleTextureStreamer()
{
    qDeleteAll(_textures);
}

ImageCycleTextureStreamer* ImageCycleTextureStreamer::make(const QString* paths, int textureCount, int frameCount,
                                                           QObject* parent)
{
    if (!isAtLeastOne(textureCount, "Invalid argument textureCount") ||
        !isAtLeastOne(frameCount, "Invalid argument frameCount"))
        return nullptr;
    VRK_ASSERT_RETURN(paths != NULL, nullptr, "NULL paths");
    std::vector<std::unique_ptr<Texture>> loaded = loadAlike(paths, textureCount);
    if (loaded.empty())
        return nullptr;
    QList<Texture*> textures;
    for (std::unique_ptr<Texture>& texture : loaded)
        textures.append(texture.release());
    return new ImageCycleTextureStreamer(textures.constData(), textureCount, frameCount, parent);
}

void ImageCycleTextureStreamer::nextFrame()
{
    VRK_ASSERT(!_textures.isEmpty(), "There are no textures");
    if (_textures.isEmpty() || !countFrame(_frameCounter, _framesPerStep))
        return;
    _needsUpdate = true;
    _current = static_cast<qint32>((_current + 1) % _textures.size());
}

bool ImageCycleTextureStreamer::updateTexture()
{
    if (!_needsUpdate)
        return false;
    VRK_ASSERT_RETURN(!_textures.isEmpty(), false, "There are no textures");
    VRK_ASSERT_RETURN(_textures[_current] != NULL, false, "NULL texture");
    const StreamerState state;
    if (!bind())
        return false;
    _needsUpdate = false;
    const GLint w = width(0);
    const GLint h = height(0);
    unbind();

    GLuint framebuffer = 0;
    glGenFramebuffers(1, &framebuffer);
    glBindFramebuffer(GL_READ_FRAMEBUFFER, framebuffer);
    glBindFramebuffer(GL_DRAW_FRAMEBUFFER, framebuffer);
    glActiveTexture(GL_TEXTURE0);
    glBindTexture(GL_TEXTURE_2D, 0);
    const GLuint source = _textures[_current]->textureID();
    glFramebufferTexture2D(GL_READ_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, GL_TEXTURE_2D, source, 0);
    glReadBuffer(GL_COLOR_ATTACHMENT0);
    glFramebufferTexture2D(GL_DRAW_FRAMEBUFFER, GL_COLOR_ATTACHMENT1, GL_TEXTURE_2D, textureID(), 0);
    glDrawBuffer(GL_COLOR_ATTACHMENT1);
    glBlitFramebuffer(0, 0, w, h, 0, 0, w, h, GL_COLOR_BUFFER_BIT, GL_NEAREST);
    if (framebuffer != 0)
        glDeleteFramebuffers(1, &framebuffer);
    makeStreamerMipmaps(*this);
    state.restore();
    return true;
}

} // namespace Harrow::Vrk
