// SPDX-License-Identifier: MIT
#pragma once

/// \file
/// Which desktop version and which extensions introduce each OpenGL entry point, as the Khronos registry gives it. Not
/// installed. Vendor-neutral loaders hand out a stub for any name that begins with "gl"; this tells whether it is true.

#include <span>
#include <string_view>

namespace Harrow::Vrk
{

struct GLRequirementRow
{
    const char* name;
    /// 10 * major + minor of the first desktop version with this entry point, 0 when none has it.
    unsigned short version;
    unsigned short firstExtension; ///< Index into `glRequirementExtensionRuns`.
    unsigned short extensionCount;
};

/// All rows, sorted by name.
std::span<const GLRequirementRow> glRequirementRows();
/// Names of all extensions that bring entry points, sorted.
std::span<const char* const> glRequirementExtensionNames();
/// Runs of indices into the names.
std::span<const unsigned short> glRequirementExtensionRuns();

/// The row of an entry point, or null when the registry does not know it.
const GLRequirementRow* findGLRequirement(std::string_view name);

} // namespace Harrow::Vrk
