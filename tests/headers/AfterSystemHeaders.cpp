// SPDX-License-Identifier: MIT
#define GL_GLEXT_PROTOTYPES
#include <GL/gl.h>
#include <GL/glext.h>

#include "AllHeaders.inc"

namespace Harrow::Vrk
{

static void* useTable()
{
    glClear(GL_COLOR_BUFFER_BIT);
    glDeleteSync(nullptr);
    GLsync sync = nullptr;
    glWaitSync(sync, 0, GL_TIMEOUT_IGNORED); // not ambiguous with the system's prototype
    return &_ptrc_glClear;
}

} // namespace Harrow::Vrk

void* clearPointerAfterSystemHeaders()
{
    // The system's own declaration is untouched.
    static_assert(sizeof(decltype(&::glClear)) == sizeof(void*));
    return Harrow::Vrk::useTable();
}
