// SPDX-License-Identifier: MIT
// What a frame cost, for --stats and for the window.
#pragma once

#include <QList>
#include <QStringList>

#include <QtGlobal>

#include <utility>

namespace vrkview
{

struct FrameStats
{
    int commands = 0;
    int culled = 0;
    quint64 drawCalls = 0;
    quint64 batches = 0;
    quint64 indices = 0;
    quint64 bytesCPU = 0; ///< estimates of the scene
    quint64 bytesGPU = 0;

    int shadowLayers = 0; ///< in use; 0 without shadows
    int shadowLayersDrawn = 0;

    /// Milliseconds that the processor spent.
    double animate = 0.0;
    double update = 0.0;
    double cull = 0.0;
    double sort = 0.0;
    double draw = 0.0;
    double finish = 0.0;
    double shadows = 0.0;

    /// Milliseconds since the frame before, where a window draws one after the other; 0 otherwise.
    double sinceLast = 0.0;
};

/// The phases of a frame by name with their median times in milliseconds, in the order in which they come. Of no frames
/// there are none.
QList<std::pair<QString, double>> phaseTimes(const QList<FrameStats>& frames);

/// The mean time from one frame to the next in milliseconds; 0 where no frame followed another at once.
double meanFrameTime(const QList<FrameStats>& frames);

/// The counts of the last of these frames and the median times of all, line by line.
QStringList report(const QList<FrameStats>& frames);

} // namespace vrkview
