// SPDX-License-Identifier: MIT
#pragma once

/// \file
/// A texture whose contents change over time and that brings itself up to date when its texture manager asks, which
/// happens when the application calls `TextureManager::updateTextureStreamers`, before it draws.

#include "Texture.h"

namespace Harrow::Vrk
{

/// `TextureManager::tokenForTexture` knows a streamer by its type and keeps it in its list; one without a token is
/// never asked. Who destroys a streamer that has a token tells the manager first, by `deleteTexture`.
class VRKGL_EXPORT TextureStreamer : public Texture
{
    Q_OBJECT

public:
    /// Wraps `textureID`, which somebody else owns.
    TextureStreamer(unsigned textureID, QObject* parent);
    /// Generates a name, and deletes it at the end.
    explicit TextureStreamer(QObject* parent);
    ~TextureStreamer() override;

    /// Brings the texture's contents up to date and returns whether they changed in this call. Runs on the thread of
    /// the current context, and leaves the OpenGL state that it touches as it found it, the active texture unit and
    /// the framebuffer's binding included. `bind` and `unbind` come in pairs: others may have the texture bound.
    virtual bool updateTexture() = 0;
};

} // namespace Harrow::Vrk
