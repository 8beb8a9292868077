// SPDX-License-Identifier: MIT
#pragma once

/// \file
/// The entry points of `ShaderProgram` outside the function table, and the two that are only used where the driver has
/// them; null where it lacks them. One that is asked for and missing is named in the debug log (guarded): the driver
/// promised it with an extension or version. Not installed; tests reset it.

#include "Export.h"
#include "GLOptionalFunctions.h"

namespace Harrow::Vrk
{

struct ShaderProgramEntryPoints
{
    PFN_glGetProgramBinary getProgramBinary = nullptr;
    PFN_glProgramBinary programBinary = nullptr;
    PFN_glProgramParameteri programParameteri = nullptr;

    PFN_glGetProgramInterfaceiv getProgramInterfaceiv = nullptr;
    PFN_glGetProgramResourceName getProgramResourceName = nullptr;
    PFN_glGetProgramResourceIndex getProgramResourceIndex = nullptr;
    PFN_glShaderStorageBlockBinding shaderStorageBlockBinding = nullptr;

    // Asked for by the first link that needs them.
    PFN_glBindFragDataLocationIndexed bindFragDataLocationIndexed = nullptr;
    decltype(::_ptrc_glTransformFeedbackVaryings) transformFeedbackVaryings = nullptr;

    /// Looks up the first seven as far as they are missing and the current context offers what brings them.
    void load();
};

VRKGL_EXPORT ShaderProgramEntryPoints& shaderProgramEntryPoints();

} // namespace Harrow::Vrk
