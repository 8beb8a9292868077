// SPDX-License-Identifier: MIT
#include "Switches.h"

#include "Choices.h"

#include <algorithm>

namespace vrkview
{

namespace
{

constexpr float kStopsPerStep = 0.5f;

constexpr char kWantsShadows[] = " (seen with shadows, L)";
constexpr char kWantsEnvironment[] = " (seen with an environment, E)";

QString onOrOff(bool on)
{
    return on ? QStringLiteral("on") : QStringLiteral("off");
}

/// What a switch does; its text without the name of what is switched.
struct Step
{
    RenderSettings& settings;
    int step;
    const QString& environmentPath;
    bool& refused;

    bool hasEnvironment() const
    {
        return !settings.environment.path.isEmpty();
    }

    QString refuse(const QString& why)
    {
        refused = true;
        return why;
    }

    template <typename Value, std::size_t count> QString go(const Choice<Value> (&choices)[count], Value& value)
    {
        value = following(choices, value, step);
        return wordOf(choices, value);
    }
};

QString switchManager(Step& step)
{
    QString word = step.go(kManagers, step.settings.manager);
    if (step.settings.debugView == DebugView::Slots && !usesArrays(step.settings.manager))
        step.settings.debugView = DebugView::None; // there are none to be seen
    return word;
}

QString switchRecordCarrier(Step& step)
{
    return step.go(kRecordCarriers, step.settings.recordCarrier);
}

QString switchDrawIdCarrier(Step& step)
{
    return step.go(kDrawIdCarriers, step.settings.drawIdCarrier);
}

QString switchSpecular(Step& step)
{
    const QString word = step.go(kSpecularModels, step.settings.environment.specular);
    return step.hasEnvironment() ? word : word + QLatin1String(kWantsEnvironment);
}

QString switchDiffuse(Step& step)
{
    const QString word = step.go(kDiffuseModels, step.settings.environment.diffuse);
    return step.hasEnvironment() ? word : word + QLatin1String(kWantsEnvironment);
}

QString switchAntiAliasing(Step& step)
{
    return step.go(kAntiAliasingKinds, step.settings.antiAliasing);
}

QString switchDebugView(Step& step)
{
    QString word = step.go(kDebugViews, step.settings.debugView);
    if (step.settings.debugView == DebugView::Slots && !usesArrays(step.settings.manager))
        return step.refuse(QStringLiteral("slots are those of array2d (M)"));
    if (step.settings.debugView == DebugView::Shadows && !step.settings.shadows)
        return step.refuse(QStringLiteral("there are no shadows to be seen (L)"));
    return word;
}

QString switchShadows(Step& step)
{
    bool& shadows = step.settings.shadows;
    shadows = !shadows;
    if (!shadows && step.settings.debugView == DebugView::Shadows)
        step.settings.debugView = DebugView::None;
    return onOrOff(shadows);
}

QString switchShadowMaps(Step& step)
{
    const QString word = step.go(kShadowMapKinds, step.settings.shadowMaps);
    return step.settings.shadows ? word : word + QLatin1String(kWantsShadows);
}

QString switchEnvironment(Step& step)
{
    step.settings.environment.path = step.hasEnvironment() ? QString() : step.environmentPath;
    return onOrOff(step.hasEnvironment());
}

QString expose(Step& step, float stops)
{
    if (!step.hasEnvironment())
        return step.refuse(QStringLiteral("there is no environment to brighten (E)"));
    std::optional<float>& exposure = step.settings.environment.exposure;
    exposure = std::clamp(exposure.value_or(0.0f) + stops, -kMostStops, kMostStops);
    return QStringLiteral("%1 stops").arg(double(*exposure), 0, 'f', 1);
}

QString brighten(Step& step)
{
    return expose(step, kStopsPerStep);
}

QString darken(Step& step)
{
    return expose(step, -kStopsPerStep);
}

QString switchGizmos(Step& step)
{
    step.settings.gizmos = !step.settings.gizmos;
    return onOrOff(step.settings.gizmos);
}

struct SwitchRow
{
    Action action;
    const char* name;
    QString (*go)(Step&);
};

constexpr SwitchRow kSwitches[] = {
    {Action::Manager, "texture manager", switchManager},
    {Action::RecordCarrier, "record carrier", switchRecordCarrier},
    {Action::DrawIdCarrier, "draw-id carrier", switchDrawIdCarrier},
    {Action::Specular, "specular model", switchSpecular},
    {Action::Diffuse, "diffuse model", switchDiffuse},
    {Action::AntiAliasing, "anti-aliasing", switchAntiAliasing},
    {Action::DebugView, "debug view", switchDebugView},
    {Action::Shadows, "shadows", switchShadows},
    {Action::ShadowMaps, "shadow maps", switchShadowMaps},
    {Action::Environment, "environment", switchEnvironment},
    {Action::Brighter, "exposure", brighten},
    {Action::Darker, "exposure", darken},
    {Action::Gizmos, "gizmos", switchGizmos},
};

const SwitchRow* rowOf(Action action)
{
    const SwitchRow* const found = std::find_if(std::begin(kSwitches), std::end(kSwitches),
                                                [action](const SwitchRow& row) { return row.action == action; });
    return found != std::end(kSwitches) ? found : nullptr;
}

} // namespace

bool isSwitch(Action action)
{
    return rowOf(action) != nullptr;
}

Switched switched(RenderSettings settings, Action action, int step, const QString& environmentPath)
{
    Switched result{std::move(settings), {}, false};
    const SwitchRow* const row = rowOf(action);
    if (!row)
        return result;
    Step next{result.settings, step, environmentPath, result.refused};
    const QString text = row->go(next);
    result.text = QStringLiteral("%1: %2").arg(QLatin1String(row->name), text);
    return result;
}

} // namespace vrkview
