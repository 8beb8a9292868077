// SPDX-License-Identifier: MIT
#include "AutoEnabler.h"

namespace Harrow::Vrk
{
namespace
{

void restore(GLenum capability, bool wasEnabled)
{
    if (wasEnabled)
        glEnable(capability);
    else
        glDisable(capability);
}

} // namespace

AutoEnabler::AutoEnabler(GLenum capability) : _wasEnabled(glIsEnabled(capability) != GL_FALSE), _capability(capability)
{
    glEnable(_capability);
}

AutoEnabler::~AutoEnabler()
{
    restore(_capability, _wasEnabled);
}

AutoDisabler::AutoDisabler(GLenum capability)
    : _wasEnabled(glIsEnabled(capability) != GL_FALSE), _capability(capability)
{
    glDisable(_capability);
}

AutoDisabler::~AutoDisabler()
{
    restore(_capability, _wasEnabled);
}

} // namespace Harrow::Vrk
