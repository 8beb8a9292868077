// SPDX-License-Identifier: MIT
#include "StatsText.h"

#include "Choices.h"
#include "Keys.h"

namespace vrkview
{

namespace
{

constexpr double kKibibyte = 1024.0;
constexpr double kSecond = 1000.0; // in milliseconds

QString milliseconds(double time)
{
    return QStringLiteral("%1 ms").arg(time, 0, 'f', 2);
}

QString kibibytes(quint64 bytes)
{
    return QStringLiteral("%1 KiB").arg(double(bytes) / kKibibyte, 0, 'f', 0);
}

TextRow costRow(const QList<FrameStats>& frames)
{
    const double time = meanFrameTime(frames);
    return {QStringLiteral("frame"),
            time > 0.0 ? QStringLiteral("%1, %2 fps").arg(milliseconds(time)).arg(kSecond / time, 0, 'f', 1)
                       : QStringLiteral("-")};
}

void addCounts(TextRows& rows, const FrameStats& frame)
{
    rows.append(
        {{QStringLiteral("draw calls"), QStringLiteral("%1 in %2 batches").arg(frame.drawCalls).arg(frame.batches)},
         {QStringLiteral("commands"), QStringLiteral("%1, %2 culled").arg(frame.commands).arg(frame.culled)},
         {QStringLiteral("indices"), QString::number(frame.indices)},
         {QStringLiteral("memory"),
          QStringLiteral("CPU %1, GPU %2").arg(kibibytes(frame.bytesCPU), kibibytes(frame.bytesGPU))}});
}

QString shadowText(const RenderSettings& settings, const FrameStats& frame)
{
    if (!settings.shadows)
        return QStringLiteral("off");
    return QStringLiteral("%1, %2 of %3 layers drawn")
        .arg(wordOf(kShadowMapKinds, settings.shadowMaps))
        .arg(frame.shadowLayersDrawn)
        .arg(frame.shadowLayers);
}

QString environmentText(const EnvironmentSettings& environment)
{
    if (environment.path.isEmpty())
        return QStringLiteral("off");
    return QStringLiteral("%1, %2, %3 stops")
        .arg(wordOf(kSpecularModels, environment.specular), wordOf(kDiffuseModels, environment.diffuse))
        .arg(double(environment.exposure.value_or(0.0f)), 0, 'f', 1);
}

void addChoices(TextRows& rows, const RenderSettings& settings, const FrameStats& frame)
{
    rows.append({{QStringLiteral("manager"), wordOf(kManagers, settings.manager)},
                 {QStringLiteral("carrier"), wordOf(kRecordCarriers, settings.recordCarrier)},
                 {QStringLiteral("draw id"), wordOf(kDrawIdCarriers, settings.drawIdCarrier)},
                 {QStringLiteral("environment"), environmentText(settings.environment)},
                 {QStringLiteral("shadows"), shadowText(settings, frame)},
                 {QStringLiteral("anti-aliasing"), wordOf(kAntiAliasingKinds, settings.antiAliasing)},
                 {QStringLiteral("debug view"), wordOf(kDebugViews, settings.debugView)}});
}

} // namespace

TextRows helpRows()
{
    TextRows rows;
    for (const MouseRow& row : kMouse)
        rows.append({QString::fromLatin1(row.names), QString::fromLatin1(row.text)});
    for (const KeyRow& row : kKeys)
        rows.append({QString::fromLatin1(row.names), QString::fromLatin1(row.text)});
    rows.append({QString::fromLatin1(kShiftHint), {}});
    return rows;
}

TextRows statsRows(const QList<FrameStats>& frames, const RenderSettings& settings, const Surroundings& surroundings)
{
    // In one row the driver would make the panel very wide.
    TextRows rows;
    const qsizetype comma = surroundings.driver.indexOf(QStringLiteral(", OpenGL "));
    rows.append({surroundings.driver.left(comma), {}});
    if (comma >= 0)
        rows.append({surroundings.driver.mid(comma + 2), {}});
    if (frames.isEmpty())
        return rows;
    rows.append(costRow(frames));
    for (const auto& [name, time] : phaseTimes(frames))
        rows.append({name, milliseconds(time)});
    const FrameStats& last = frames.constLast();
    if (settings.shadows)
        rows.append({QStringLiteral("shadow maps"), milliseconds(last.shadows)});
    addCounts(rows, last);
    addChoices(rows, settings, last);
    if (!surroundings.camera.isEmpty())
        rows.append({QStringLiteral("camera"), surroundings.camera});
    if (surroundings.glErrors > 0)
        rows.append({QStringLiteral("OpenGL errors"), QString::number(surroundings.glErrors)});
    return rows;
}

} // namespace vrkview
