// SPDX-License-Identifier: MIT
#pragma once

/// \file
/// What this build of the library is. All values are fixed when it is built.

#include "Export.h"

#include <QString>

namespace Harrow::Vrk
{

/// Needs no context.
class VRKGL_EXPORT GLVersions
{
public:
    /// The library's version, "1.0.0".
    static QString getVersion();
    /// The 40-digit hexadecimal hash of the source revision; zeros when it was built outside a checkout.
    static QString getGitHash();
    /// A build-time string, "1".
    static QString getMd5Sum();
};

} // namespace Harrow::Vrk
