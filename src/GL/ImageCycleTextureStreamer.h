// SPDX-License-Identifier: MIT
#pragma once

/// \file
/// A texture that steps through a list of images of one size, as a slide show does.

#include "TextureStreamer.h"

#include <QList>
#include <QString>

namespace Harrow::Vrk
{

/// The application calls `nextFrame` once a frame; every 30th call, beginning with the first, goes one image further,
/// and behind the last one comes the first again. The next `updateTexture` copies it into the texture.
class VRKGL_EXPORT ImageCycleTextureStreamer : public TextureStreamer
{
    Q_OBJECT

public:
    /// A texture with size and internal format of the first of `textures`, trilinear, clamped to the edge; undefined
    /// until the first update. Takes the `textureCount` textures over; all are 2D textures of that size and format.
    /// `frameCount` is checked and has no further effect: there are 30 frames to a step. Reports null and counts below
    /// 1, and goes on. Nulls among the textures are reported and keep their places; an update that comes to one is
    /// reported and does nothing. Size and format are those of the first that is not null. Without textures the
    /// streamer has no storage and does nothing. Use `make`.
    ImageCycleTextureStreamer(Texture* const* textures, int textureCount, int frameCount, QObject* parent);
    /// Deletes the textures.
    ~ImageCycleTextureStreamer() override;

    /// The same from files, as `LoadTextureFromFile` reads them, and checked. Null, with nothing left behind, and these
    /// warnings, whatever the logging switch says: "Invalid argument textureCount" or "Invalid argument frameCount" for
    /// one below 1; "Cannot load texture " and the path for the first file that does not load; "Invalid texture " and
    /// the path, then "All textures must have the same width, height and format", for each one that differs from the
    /// first in the size or internal format of its base level. Null paths are reported. The streamer belongs to the
    /// caller or to `parent`.
    static ImageCycleTextureStreamer* make(const QString* paths, int textureCount, int frameCount, QObject* parent);

    /// One frame has gone by. Makes no OpenGL call.
    void nextFrame();

    /// Copies the current image into the texture and makes its mipmaps. True after construction and after each step;
    /// otherwise, when no texture unit is free, and for a null image, false. Obeys the scissor. Leaves the active unit
    /// as it was, what was the framebuffer for drawing as that for reading too, and unit 0 without a 2D texture.
    bool updateTexture() override;

private:
    friend struct CycleStreamersTestAccess;

    QList<Texture*> _textures;
    qint32 _framesPerStep;
    qint32 _frameCounter;
    qint32 _current = 0;
    bool _needsUpdate = true;
};

} // namespace Harrow::Vrk
