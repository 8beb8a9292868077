// SPDX-License-Identifier: MIT
#pragma once

/// \file
/// Turns an OpenGL capability on or off for the length of a scope, in the context current on the calling thread. At the
/// end of the scope the state from before is set again, also when nothing changed. `capability` is what `glEnable`
/// takes; one that OpenGL refuses leaves its error behind. Guards on one capability end in the reverse order of their
/// making.

#include "Export.h"
#include "GLFunctions.h"

namespace Harrow::Vrk
{

/// Turns the capability on, and back at the end.
class VRKGL_EXPORT AutoEnabler
{
public:
    /// Asks OpenGL for the state first.
    explicit AutoEnabler(GLenum capability);
    ~AutoEnabler();

    AutoEnabler(const AutoEnabler&) = delete;
    AutoEnabler& operator=(const AutoEnabler&) = delete;

private:
    bool _wasEnabled;
    GLenum _capability;
};

/// Turns the capability off, and back at the end.
class VRKGL_EXPORT AutoDisabler
{
public:
    /// Asks OpenGL for the state first.
    explicit AutoDisabler(GLenum capability);
    ~AutoDisabler();

    AutoDisabler(const AutoDisabler&) = delete;
    AutoDisabler& operator=(const AutoDisabler&) = delete;

private:
    bool _wasEnabled;
    GLenum _capability;
};

} // namespace Harrow::Vrk
