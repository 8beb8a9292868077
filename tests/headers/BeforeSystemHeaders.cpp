// SPDX-License-Identifier: MIT
#include "AllHeaders.inc"

#define GL_GLEXT_PROTOTYPES
#include <GL/gl.h>
#include <GL/glext.h>

namespace Harrow::Vrk
{

static void* useTable()
{
    glClear(GL_COLOR_BUFFER_BIT);
    GLsync sync = nullptr;
    glDeleteSync(sync);
    return &_ptrc_glClear;
}

} // namespace Harrow::Vrk

void* clearPointerBeforeSystemHeaders()
{
    static_assert(sizeof(decltype(&::glClear)) == sizeof(void*));
    return Harrow::Vrk::useTable();
}
