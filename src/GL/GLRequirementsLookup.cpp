// SPDX-License-Identifier: MIT
#include "GLRequirements.h"

#include <algorithm>

namespace Harrow::Vrk
{

const GLRequirementRow* findGLRequirement(std::string_view name)
{
    const auto rows = glRequirementRows();
    const auto found =
        std::lower_bound(rows.begin(), rows.end(), name,
                         [](const GLRequirementRow& row, std::string_view key) { return row.name < key; });
    return found != rows.end() && found->name == name ? &*found : nullptr;
}

} // namespace Harrow::Vrk
