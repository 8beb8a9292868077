// SPDX-License-Identifier: MIT
#pragma once

/// \file
/// The binding protocol. OpenGL's binding points are global, so a wrapper remembers whether it is bound: binding it
/// twice or unbinding it unbound is reported and changes nothing. Where a class counts binds instead, its header says
/// so.

#include "Export.h"

namespace Harrow::Vrk
{

/// What can be bound to the context that is current on the calling thread. A class that is a `QObject` too derives from
/// `QObject` first and from `Bindable` second.
class VRKGL_EXPORT Bindable
{
public:
    virtual ~Bindable();

    /// Makes the object current at its binding point. False, with OpenGL's state untouched, when that may not be.
    virtual bool bind() = 0;

    /// Releases the binding point. False, with OpenGL's state untouched, when the object is not bound.
    virtual bool unbind() = 0;
};

} // namespace Harrow::Vrk
