// SPDX-License-Identifier: MIT
// Textures that change from frame to frame: what the screens of a model show.
#pragma once

#include "Model.h"

#include <functional>
#include <vector>

namespace Harrow::Vrk
{
class TextureStreamer;
} // namespace Harrow::Vrk

namespace vrkview
{

class Streamers
{
public:
    /// A new one, which belongs to whoever gives it a token. Null if the driver gives no texture.
    Harrow::Vrk::TextureStreamer* make(StreamerKind kind);

    /// Takes all of them a frame further. They show it after the manager's `updateTextureStreamers`.
    void advance();

    bool isEmpty() const
    {
        return _steps.empty();
    }

private:
    std::vector<std::function<void()>> _steps;
};

} // namespace vrkview
