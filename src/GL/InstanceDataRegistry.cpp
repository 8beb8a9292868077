// SPDX-License-Identifier: MIT
#include "InstanceDataRegistry.h"

#include "Diagnostics.h"
#include "InstanceDataPlan.h"

#include <QSet>

namespace Harrow::Vrk
{

InstanceDataRegistry::InstanceDataRegistry() = default;
InstanceDataRegistry::InstanceDataRegistry(const InstanceDataRegistry& other) = default;
InstanceDataRegistry& InstanceDataRegistry::operator=(const InstanceDataRegistry& other) = default;

InstanceDataRegistry::~InstanceDataRegistry()
{
    clear();
}

InstanceDataRegistry& InstanceDataRegistry::Instance()
{
    static InstanceDataRegistry instance;
    return instance;
}

void InstanceDataRegistry::registerPlan(InstanceDataPlan* plan)
{
    VRK_ASSERT_RETURN(nullptr != plan, , "InstanceDataPlan is NULL on registerPlan");
    plan->finalise();
    _plans.insert(plan->name(), plan);
}

InstanceDataPlan* InstanceDataRegistry::getPlan(const QString& name)
{
    if (const auto plan = _plans.constFind(name); plan != _plans.constEnd())
        return *plan;
    VRK_LOG_WARNING("InstanceDataRegistry::getPlan() : Specified instanceData plan does not exist : %s",
                    qPrintable(name));
    return _plans[name]; // a null entry stays behind, and keeps the next look-up silent
}

void InstanceDataRegistry::clear()
{
    // A plan that was given another name since may be held under both.
    const QSet<InstanceDataPlan*> plans(_plans.cbegin(), _plans.cend());
    _plans.clear();
    qDeleteAll(plans);
}

} // namespace Harrow::Vrk
