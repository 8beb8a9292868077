// SPDX-License-Identifier: MIT
#include "Chances.h"

#include "Choices.h"
#include "Random.h"

#include "DrawBuffers.h"
#include "InstanceDataPlan.h"

#include <iterator>

namespace vrksoak
{

using namespace Harrow::Vrk;
using vrkview::ManagerKind;
using vrkview::RecordCarrier;

ManagerKind chooseManager(Random& random, std::optional<ManagerKind> named)
{
    return named.value_or(random.oneIn(2) ? ManagerKind::Array2D : ManagerKind::Sampler);
}

RecordCarrier chooseCarrier(Random& random)
{
    constexpr int kCount = int(std::size(vrkview::kRecordCarriers));
    static_assert(vrkview::kRecordCarriers[kCount - 1].value == RecordCarrier::StorageBuffer,
                  "the last may be missing");
    return vrkview::kRecordCarriers[random.below(InstanceDataPlan::supportsStorageMechanism() ? kCount : kCount - 1)]
        .value;
}

bool chooseBaseInstance(Random& random)
{
    return DrawBuffers::isBaseInstanceDrawingSupported() && random.oneIn(3);
}

int chooseCrowd(Random& random)
{
    return 24 + random.below(60);
}

} // namespace vrksoak
