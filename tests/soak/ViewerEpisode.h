// SPDX-License-Identifier: MIT
// The viewer's own renderer for some frames, by settings drawn by chance.
#pragma once

#include <QString>

#include <functional>
#include <optional>

namespace vrkview
{
enum class ManagerKind;
}

namespace vrksoak
{

class Random;

/// Makes a target and a renderer, draws `frames` frames with `afterFrame` behind each, and destroys both. The manager
/// is drawn by chance unless one is named. Returns what it drew, in a few words; `error` says what could not be made.
QString playViewer(Random& random, std::optional<vrkview::ManagerKind> manager, int frames,
                   const std::function<void(int frame)>& afterFrame, QString& error);

} // namespace vrksoak
