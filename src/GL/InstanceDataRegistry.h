// SPDX-License-Identifier: MIT
#pragma once

/// \file
/// All plans by name: where `#instancedata` finds what it brings into a shader, and where records and collections find
/// their plan. Registering is also the step that makes a plan final.

#include "Export.h"

#include <QHash>
#include <QString>

namespace Harrow::Vrk
{

class InstanceDataPlan;

/// Owns the plans. For the thread with the OpenGL context; look-ups may add an entry, so they are not to run on several
/// threads at once either.
class VRKGL_EXPORT InstanceDataRegistry
{
public:
    /// The one object, made at the first call.
    static InstanceDataRegistry& Instance();

    /// A copy shares the plans.
    InstanceDataRegistry(const InstanceDataRegistry& other);
    InstanceDataRegistry& operator=(const InstanceDataRegistry& other);

    /// Finalises the plan, which asks the driver for its limits, and keeps it under its name. Before any shader that
    /// names it is made. A plan that had the name before stays alive for those who hold it, and is never deleted.
    void registerPlan(InstanceDataPlan* plan);

    /// Null, with the warning "InstanceDataRegistry::getPlan() : Specified instanceData plan does not exist : %s"
    /// (guarded) at the first time, for an unknown name.
    InstanceDataPlan* getPlan(const QString& name);

    /// Deletes all plans. Records and collections must be gone.
    void clear();

private:
    InstanceDataRegistry();
    ~InstanceDataRegistry();

    QHash<QString, InstanceDataPlan*> _plans;
};

} // namespace Harrow::Vrk
