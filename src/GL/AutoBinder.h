// SPDX-License-Identifier: MIT
#pragma once

/// \file
/// Binds an object for the length of a scope. Belongs to one scope of one thread.

#include "Export.h"

#include <QSharedPointer>

namespace Harrow::Vrk
{

class Bindable;

/// Unbinds at the end of its scope what it has bound at the beginning.
class VRKGL_EXPORT AutoBinder
{
public:
    /// Binds `object`, which is not owned and must outlive the guard. Null is reported as "AutoBinder tried to bind
    /// NULL object" (debug, guarded), and the guard does nothing.
    explicit AutoBinder(Bindable* object);

    /// The same; no reference is kept, so the caller keeps the object alive.
    explicit AutoBinder(QSharedPointer<Bindable> object);

    /// Unbinds only what the guard has bound: after a failed bind the outer binding stays in force.
    ~AutoBinder();

    AutoBinder(const AutoBinder&) = delete;
    AutoBinder& operator=(const AutoBinder&) = delete;

private:
    Bindable* _object;
    bool _bound;
};

} // namespace Harrow::Vrk
