// SPDX-License-Identifier: MIT
#pragma once

/// \file
/// What the streamers of the library share: the sampling that their constructors set, the state that an update gives
/// back, and the count of frames of those that step through a list. Not installed.

#include "GLFunctions.h"

#include <QtGlobal>

namespace Harrow::Vrk
{

class Texture;

/// Whether an argument of a `make` will do; if not, warns whatever the logging switch says.
bool isAtLeastOne(int value, const char* warning);

/// Sampling of a 2D texture that never repeats. Binds for its own length only; without a free unit it sets nothing.
void setStreamerSampling(Texture& texture, GLint magFilter, GLint minFilter, GLint maxLevel);

/// Makes the mipmaps of a 2D texture. Without a free unit it does nothing: the call would meet whatever texture the
/// active one holds.
void makeStreamerMipmaps(Texture& texture);

/// Gives the active texture unit back at the end of its scope, which must lie in one context.
class ActiveUnitGuard
{
public:
    ActiveUnitGuard();
    ~ActiveUnitGuard();
    ActiveUnitGuard(const ActiveUnitGuard&) = delete;
    ActiveUnitGuard& operator=(const ActiveUnitGuard&) = delete;

private:
    GLint _activeTexture = GL_TEXTURE0;
};

/// The active texture unit and the draw framebuffer, as they were when it was made.
class StreamerState
{
public:
    StreamerState();

    /// Puts both back, the framebuffer for reading and drawing.
    void restore() const;

private:
    GLint _activeTexture = GL_TEXTURE0;
    GLint _drawFramebuffer = 0;
};

/// Raises `counter`; when that makes it `framesPerStep`, sets it to 0 and returns true. Counts around the end of the
/// numbers, which a `framesPerStep` below 1 leads to.
bool countFrame(qint32& counter, qint32 framesPerStep);

/// The counter with which the next frame is the one that steps.
qint32 firstFrameCount(qint32 framesPerStep);

} // namespace Harrow::Vrk
