// SPDX-License-Identifier: MIT
#pragma once

/// \file
/// A texture of one colour that steps through a list of colours: the simplest streamer, for blinking lights and for
/// trying out a texture manager.

#include "TextureStreamer.h"

#include <QColor>
#include <QList>

namespace Harrow::Vrk
{

/// The application calls `nextFrame` once a frame; every `frameCount`-th call, beginning with the first, goes one
/// colour further, and behind the last one comes the first again. The next `updateTexture` fills the texture with it.
class VRKGL_EXPORT ColorCycleTextureStreamer : public TextureStreamer
{
    Q_OBJECT

public:
    /// A texture of `width` by `height` texels in `GL_RGBA`, sampled at the nearest texel of the nearest mipmap,
    /// clamped to the edge; undefined until the first update. Copies `colorCount` colours. Reports counts and sizes
    /// below 1 and null, and goes on; without colours the streamer does nothing. Use `make`.
    ColorCycleTextureStreamer(const QColor* colors, int colorCount, int width, int height, int frameCount,
                              QObject* parent);
    ~ColorCycleTextureStreamer() override;

    /// The same, checked: warns "Invalid argument colorCount", "… width", "… height" or "… frameCount" about the first
    /// of them that is below 1, whatever the logging switch says, and returns null; null too, reported, for null
    /// colours. The streamer belongs to the caller or to `parent`.
    static ColorCycleTextureStreamer* make(const QColor* colors, int colorCount, int width, int height, int frameCount,
                                           QObject* parent);

    /// One frame has gone by. Makes no OpenGL call.
    void nextFrame();

    /// Clears the texture to the current colour and makes its mipmaps. True after construction and after each step;
    /// otherwise, and when no texture unit is free, false. Obeys the scissor and the colour mask, as every clear does.
    /// Leaves the active unit as it was, what was the framebuffer for drawing as that for reading too, and the colour
    /// as the clear colour.
    bool updateTexture() override;

private:
    friend struct CycleStreamersTestAccess;

    QList<QColor> _colors;
    qint32 _framesPerStep;
    qint32 _frameCounter;
    qint32 _current = 0;
    bool _needsUpdate = true;
};

} // namespace Harrow::Vrk
