// SPDX-License-Identifier: MIT
#pragma once

/// \file
/// The library's one definition of what the current context is, and a small tracker with which an application can tell
/// later whether that context is current again. All per-context caches of the library are keyed by `currentContext`.

#include "Export.h"

#include <QObject>

namespace Harrow::Vrk
{

/// Remembers one context, and keeps nothing of it alive.
class VRKGL_EXPORT GLContextTracker : public QObject
{
public:
    /// Nothing is remembered yet.
    explicit GLContextTracker(QObject* parent = nullptr);

    /// Identity of the context that is current on this thread, or null: Qt's current context, and where Qt has none the
    /// platform's. Only to be compared; it keeps nothing alive.
    static void* currentContext();

    /// Remembers the current context.
    void trackCurrentContext();

    /// The remembered context; null before the first `trackCurrentContext`.
    void* trackedContext() const;

    /// Whether the remembered context is the current one. None remembered and none current compare equal.
    bool check() const;

private:
    static void* getCurrentContext();

    void* _trackedContext = nullptr;
};

} // namespace Harrow::Vrk
