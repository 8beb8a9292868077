// SPDX-License-Identifier: MIT
#include "Bindable.h"

namespace Harrow::Vrk
{

Bindable::~Bindable() = default;

} // namespace Harrow::Vrk
