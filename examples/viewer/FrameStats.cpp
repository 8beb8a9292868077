// SPDX-License-Identifier: MIT
#include "FrameStats.h"

#include <algorithm>
#include <vector>

namespace vrkview
{

namespace
{

constexpr double kKibibyte = 1024.0;

struct Phase
{
    const char* name;
    double FrameStats::*time;
};

constexpr Phase kPhases[] = {{"animate", &FrameStats::animate}, {"update", &FrameStats::update},
                             {"cull", &FrameStats::cull},       {"sort", &FrameStats::sort},
                             {"draw", &FrameStats::draw},       {"finish", &FrameStats::finish}};

double median(const QList<FrameStats>& frames, double FrameStats::*time)
{
    std::vector<double> times;
    for (const FrameStats& frame : frames)
        times.push_back(frame.*time);
    std::nth_element(times.begin(), times.begin() + long(times.size() / 2), times.end());
    return times[times.size() / 2];
}

} // namespace

QList<std::pair<QString, double>> phaseTimes(const QList<FrameStats>& frames)
{
    QList<std::pair<QString, double>> times;
    if (!frames.isEmpty())
        for (const Phase& phase : kPhases)
            times.emplaceBack(QLatin1String(phase.name), median(frames, phase.time));
    return times;
}

double meanFrameTime(const QList<FrameStats>& frames)
{
    double sum = 0.0;
    int count = 0;
    for (const FrameStats& frame : frames)
    {
        sum += frame.sinceLast;
        count += frame.sinceLast > 0.0 ? 1 : 0;
    }
    return count > 0 ? sum / count : 0.0;
}

QStringList report(const QList<FrameStats>& frames)
{
    if (frames.isEmpty())
        return {};
    const FrameStats& last = frames.constLast();
    QStringList times;
    for (const auto& [name, time] : phaseTimes(frames))
        times += QStringLiteral("%1 %2 ms").arg(name).arg(time, 0, 'f', 3);
    QStringList lines = {QStringLiteral("commands %1, culled %2, draw calls %3, batches %4, indices %5")
                             .arg(last.commands)
                             .arg(last.culled)
                             .arg(last.drawCalls)
                             .arg(last.batches)
                             .arg(last.indices),
                         QStringLiteral("memory: CPU %1 KiB, GPU %2 KiB")
                             .arg(double(last.bytesCPU) / kKibibyte, 0, 'f', 1)
                             .arg(double(last.bytesGPU) / kKibibyte, 0, 'f', 1),
                         QStringLiteral("time (median of %1): ").arg(frames.size()) + times.join(QStringLiteral(", "))};
    if (last.shadowLayers > 0)
        lines += QStringLiteral("shadow maps: %1 layers, %2 drawn; %3 ms (median)")
                     .arg(last.shadowLayers)
                     .arg(last.shadowLayersDrawn)
                     .arg(median(frames, &FrameStats::shadows), 0, 'f', 3);
    return lines;
}

} // namespace vrkview
