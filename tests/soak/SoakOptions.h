// SPDX-License-Identifier: MIT
// The command line of vrk_soak.
#pragma once

#include "Plants.h"
#include "RenderSettings.h"

#include <QString>
#include <QStringList>

#include <optional>

namespace vrksoak
{

struct SoakOptions
{
    int seconds = 60;
    int seed = 1;
    std::optional<vrkview::ManagerKind> manager; ///< drawn by chance unless named
    int frames = 100;                            ///< between two checkpoints
    int firstEpisode = 0;                        ///< to come to a fault again without what was before it
    int reportEvery = 1;                         ///< checkpoints from line to line
    bool judgesMemory = true;                    ///< not where a sanitizer keeps what is freed
    bool bare = false;                           ///< the driver alone, without the library
    Plant plant = Plant::None;
};

/// Empty, with `error` in one line, for arguments that mean nothing. `arguments` begins with the program's name.
std::optional<SoakOptions> parseSoakOptions(const QStringList& arguments, QString& error);

QString soakUsage();

} // namespace vrksoak
