// SPDX-License-Identifier: MIT
// The same driver without the library: what is left of its memory when bare OpenGL has come and gone. Beside it a run's
// own trend is to be read.
#pragma once

#include <QString>

#include <functional>

namespace Harrow::Vrk::Test
{
class HeadlessContext;
}

namespace vrksoak
{

class Random;

/// For `frames` frames makes, uses and deletes textures, buffers, framebuffers, programs and contexts that share.
QString playBare(Random& random, Harrow::Vrk::Test::HeadlessContext& context, int frames,
                 const std::function<void(int frame)>& afterFrame);

/// Draws one and the same thing, after which the driver has nothing bound that was there before: it keeps what is bound
/// though it is deleted.
void settleDriver();

} // namespace vrksoak
