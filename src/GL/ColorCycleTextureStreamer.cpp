// SPDX-License-Identifier: MIT
#include "ColorCycleTextureStreamer.h"

#include "Diagnostics.h"
#include "GLFunctions.h"
#include "StreamerTools.h"

namespace Harrow::Vrk
{

ColorCycleTextureStreamer::ColorCycleTextureStreamer(const QColor* colors, int colorCount, int width, int height,
                                                     int frameCount, QObject* parent)
    : TextureStreamer(parent), _framesPerStep(frameCount), _frameCounter(firstFrameCount(frameCount))
{
    VRK_ASSERT(colors != NULL, "NULL colors");
    VRK_ASSERT(colorCount > 0, "Invalid color count");
    VRK_ASSERT(width > 0, "Invalid width");
    VRK_ASSERT(height > 0, "Invalid height");
    VRK_ASSERT(frameCount > 0, "Invalid frame count");
    create2D(GL_TEXTURE_2D, GL_RGBA, width, height);
    setStreamerSampling(*this, GL_NEAREST, GL_NEAREST_MIPMAP_NEAREST, 1000);
    if (!colors || colorCount < 1)
        return;
    _colors.reserve(colorCount);
    for (int i = 0; i < colorCount; ++i)
        _colors.append(colors[i]);
}

ColorCycleTextureStreamer::~ColorCycleTextureStreamer() = default;

ColorCycleTextureStreamer* ColorCycleTextureStreamer::make(const QColor* colors, int colorCount, int width, int height,
                                                           int frameCount, QObject* parent)
{
    if (!isAtLeastOne(colorCount, "Invalid argument colorCount") || !isAtLeastOne(width, "Invalid argument width") ||
        !isAtLeastOne(height, "Invalid argument height") || !isAtLeastOne(frameCount, "Invalid argument frameCount"))
        return nullptr;
    VRK_ASSERT_RETURN(colors != NULL, nullptr, "NULL colors");
    return new ColorCycleTextureStreamer(colors, colorCount, width, height, frameCount, parent);
}

void ColorCycleTextureStreamer::nextFrame()
{
    VRK_ASSERT(!_colors.isEmpty(), "There are no colors");
    if (_colors.isEmpty() || !countFrame(_frameCounter, _framesPerStep))
        return;
    _needsUpdate = true;
    _current = static_cast<qint32>((_current + 1) % _colors.size());
}

bool ColorCycleTextureStreamer::updateTexture()
{
    if (!_needsUpdate)
        return false;
    VRK_ASSERT_RETURN(!_colors.isEmpty(), false, "There are no colors");
    const QColor color = _colors[_current];
    const StreamerState state;
    if (!bind())
        return false;
    _needsUpdate = false;
    // A clear has no use for the size; both queries belong to the calls that are interface.
    width(0);
    height(0);
    unbind();

    GLuint framebuffer = 0;
    glGenFramebuffers(1, &framebuffer);
    glActiveTexture(GL_TEXTURE0);
    glBindFramebuffer(GL_DRAW_FRAMEBUFFER, framebuffer);
    glFramebufferTexture2D(GL_DRAW_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, GL_TEXTURE_2D, textureID(), 0);
    glDrawBuffer(GL_COLOR_ATTACHMENT0);
    glClearColor(color.redF(), color.greenF(), color.blueF(), color.alphaF());
    glClear(GL_COLOR_BUFFER_BIT);
    glDeleteFramebuffers(1, &framebuffer);
    makeStreamerMipmaps(*this);
    state.restore();
    return true;
}

} // namespace Harrow::Vrk
