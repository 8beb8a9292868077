// SPDX-License-Identifier: MIT
#pragma once

/// \file
/// What the suites of the streamers that cycle through colours and images share: a view of their counters, and the
/// frames at which they step.

#include "ColorCycleTextureStreamer.h"
#include "ImageCycleTextureStreamer.h"

#include "StreamerTestTools.h"

#include <array>
#include <initializer_list>
#include <utility>

namespace Harrow::Vrk
{

struct CycleStreamersTestAccess
{
    template <typename Streamer> static std::array<int, 3> counters(const Streamer& streamer)
    {
        return {streamer._framesPerStep, streamer._frameCounter, streamer._current};
    }
    static const QList<QColor>& colors(const ColorCycleTextureStreamer& streamer)
    {
        return streamer._colors;
    }
    static const QList<Texture*>& textures(const ImageCycleTextureStreamer& streamer)
    {
        return streamer._textures;
    }
};

} // namespace Harrow::Vrk

namespace Harrow::Vrk::Test
{

using Inside = CycleStreamersTestAccess;
using Counters = std::array<int, 3>;

/// The numbers of the calls of `nextFrame`, from 1, that make an update necessary.
template <typename Streamer> QList<int> steps(Streamer& streamer, int calls)
{
    QList<int> result;
    for (int i = 1; i <= calls; ++i)
    {
        streamer.nextFrame();
        if (streamer.updateTexture())
            result.append(i);
    }
    return result;
}

inline QStringList reported(std::initializer_list<std::pair<const char*, const char*>> assertions)
{
    QStringList lines;
    for (const auto& [condition, message] : assertions)
        lines.append(assertionLine(QLatin1String(condition), QLatin1String(message)));
    return lines;
}

inline const QString kNoUnit = QStringLiteral("There is no available texture units");

} // namespace Harrow::Vrk::Test
