// SPDX-License-Identifier: MIT
#include "support/TestAccess.h"

#include "support/GLTest.h"

namespace Harrow::Vrk::Test
{

void resetCachedEntryPoints()
{
    BufferObjectTestAccess::resetEntryPoints();
    ShaderProgramTestAccess::resetEntryPoints();
    TextureTestAccess::forgetContexts();
}

} // namespace Harrow::Vrk::Test
