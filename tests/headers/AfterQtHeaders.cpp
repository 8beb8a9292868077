// SPDX-License-Identifier: MIT
// Qt's headers and the system's together.
#include <GL/gl.h>
#include <GL/glext.h>
#include <QOpenGLContext>
#include <QOpenGLExtraFunctions>
#include <QOpenGLFunctions>

#include "AllHeaders.inc"

namespace Harrow::Vrk
{

static void* useTable()
{
    glClear(GL_COLOR_BUFFER_BIT);
    return &_ptrc_glClear;
}

} // namespace Harrow::Vrk

void* clearPointerAfterQtHeaders()
{
    // Qt's members of the same names stay usable.
    if (QOpenGLContext* const context = QOpenGLContext::currentContext())
        context->functions()->glClear(GL_COLOR_BUFFER_BIT);
    return Harrow::Vrk::useTable();
}
