// SPDX-License-Identifier: MIT
#include "AllHeaders.inc"

#include <QOpenGLContext>
#include <QOpenGLExtraFunctions>
#include <QOpenGLFunctions>

namespace Harrow::Vrk
{

static void* useTable()
{
    glClear(GL_COLOR_BUFFER_BIT);
    return &_ptrc_glClear;
}

} // namespace Harrow::Vrk

void* clearPointerBeforeQtHeaders()
{
    if (QOpenGLContext* const context = QOpenGLContext::currentContext())
        context->extraFunctions()->glBindBuffer(GL_ARRAY_BUFFER, 0);
    return Harrow::Vrk::useTable();
}
