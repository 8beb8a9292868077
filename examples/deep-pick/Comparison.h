// SPDX-License-Identifier: MIT
// What the deep buffer says beside what the ray says, and all of it in words.
#pragma once

#include "Fragment.h"
#include "PickScene.h"
#include "RayCast.h"

#include <QString>

#include <cstddef>
#include <optional>
#include <vector>

namespace deeppick
{

/// A triangle under the pixel, by whom it was found.
struct ComparedSurface
{
    std::optional<Fragment> fragment;
    std::optional<RayHit> hit;
    RayHit::Amounts difference; ///< where both are
    QString fault;              ///< in what they don't agree, or empty
};

/// The fragments in their order, each with the hit of its triangle, then the hits that have no fragment. A triangle
/// within `reach` of whose edge the pixel's middle is may be met by the one and missed by the other.
std::vector<ComparedSurface> compare(const std::vector<Fragment>& fragments, const std::vector<RayHit>& hits,
                                     double reach);

/// Names, numbers and places of a fragment as one line; `index` counts from 1, front to back.
QString describe(const Fragment& fragment, std::size_t index, const PickScene& scene);

/// What the ray says of it, how far off the fragment is and how far it may be, as one line.
QString describe(const ComparedSurface& surface, std::size_t index, const PickScene& scene);

/// The largest differences, as one line without an end.
QString summary(const std::vector<ComparedSurface>& surfaces);

} // namespace deeppick
