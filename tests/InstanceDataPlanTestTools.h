// SPDX-License-Identifier: MIT
#pragma once

/// \file
/// What the suites of instance data plans and their carriers share: plans from lists of members, registered as an
/// application does it, and a fixture that leaves no plan behind.

#include "InstanceDataPlan.h"

#include "GLFunctions.h"
#include "InstanceDataRegistry.h"
#include "ParameterMechanism.h"
#include "support/FakeDriver.h"
#include "support/LogCapture.h"

#include <QHash>
#include <QList>
#include <QString>
#include <QStringList>

namespace Harrow::Vrk::Test
{

using Plan = InstanceDataPlan;

struct PlanMember
{
    Plan::DataType type;
    const char* name;
};
using PlanMembers = QList<PlanMember>;

inline constexpr Plan::MechanismType kCarriers[] = {Plan::eUniformBufferMechanism, Plan::eUniformMechanism,
                                                    Plan::eBufferTextureMechanism, Plan::eTextureMechanism,
                                                    Plan::eStorageBufferMechanism};
inline constexpr const char* kCarrierNames[] = {"uniform block", "plain uniforms", "buffer texture", "texture",
                                                "storage block"};

/// Those that the driver has.
inline QList<Plan::MechanismType> supportedCarriers()
{
    QList<Plan::MechanismType> carriers;
    for (const Plan::MechanismType carrier : kCarriers)
        if (carrier != Plan::eStorageBufferMechanism || Plan::supportsStorageMechanism())
            carriers.append(carrier);
    return carriers;
}

inline const PlanMembers kFooMembers = {
    {Plan::eMat4, "modelMatrix"}, {Plan::eVec3, "color"}, {Plan::eTexture, "tex"}, {Plan::eFloat, "alpha"}};

/// Not registered: the caller's.
inline Plan* newPlan(const char* name, const PlanMembers& members,
                     Plan::MechanismType mechanism = Plan::eUniformBufferMechanism, bool useVec4Storage = false)
{
    auto* const plan = new Plan(QString::fromUtf8(name));
    for (const PlanMember& member : members)
        plan->addMember(member.type, QString::fromUtf8(member.name));
    plan->setMechanism(mechanism);
    plan->setUseVec4Storage(useVec4Storage);
    return plan;
}

/// The plans that are registered, and those whose name another one has taken, which the registry lets go.
inline QHash<QString, Plan*> registeredPlans;
inline QList<Plan*> formerPlans;

/// The registry's, to the next `clearPlans`.
inline Plan* registered(Plan* plan)
{
    if (Plan* const former = registeredPlans.value(plan->name()); former && former != plan)
        formerPlans.append(former);
    registeredPlans.insert(plan->name(), plan);
    InstanceDataRegistry::Instance().registerPlan(plan);
    return plan;
}

inline Plan* registeredPlan(const char* name, const PlanMembers& members,
                            Plan::MechanismType mechanism = Plan::eUniformBufferMechanism, bool useVec4Storage = false)
{
    return registered(newPlan(name, members, mechanism, useVec4Storage));
}

/// Deletes all of them.
inline void clearPlans()
{
    InstanceDataRegistry::Instance().clear();
    registeredPlans.clear();
    qDeleteAll(formerPlans);
    formerPlans.clear();
}

/// A driver whose limits let every carrier have the default number of small records.
template <typename Base> class WithPlans : public Base
{
protected:
    void SetUp() override
    {
        this->driver.setInteger(GL_MAX_TEXTURE_BUFFER_SIZE, 65536);
        this->driver.setInteger(GL_MAX_UNIFORM_BLOCK_SIZE, 65536);
        this->driver.setInteger(GL_MAX_FRAGMENT_UNIFORM_COMPONENTS, 65536);
        this->driver.setInteger(GL_MAX_VERTEX_UNIFORM_COMPONENTS, 65536);
        this->driver.setInteger(GL_MAX_TEXTURE_SIZE, 16384);
        Base::SetUp();
    }

    void TearDown() override
    {
        clearPlans();
        Base::TearDown();
    }
};

} // namespace Harrow::Vrk::Test
