// SPDX-License-Identifier: MIT
// What a key makes of the settings while the window runs. Plain values; what the driver says to them is another matter.
#pragma once

#include "Keys.h"
#include "RenderSettings.h"

#include <QString>

namespace vrkview
{

/// The sky that lies inside of the program.
inline constexpr char kBuiltInSky[] = ":/vrkview/sky.hdr";

struct Switched
{
    RenderSettings settings; ///< also where they are refused, so that the next step can go on behind them
    QString text;            ///< what was chosen, or why it can't be, in one line
    bool refused = false;
};

/// Whether the action changes settings.
bool isSwitch(Action action);

/// `settings` after an action for which `isSwitch` holds. `step` is 1, or -1 for the other way; `environmentPath` what
/// is around when an environment is switched on.
Switched switched(RenderSettings settings, Action action, int step, const QString& environmentPath);

} // namespace vrkview
