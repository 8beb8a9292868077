// SPDX-License-Identifier: MIT
#include "GLContextTracker.h"

#include "GLPlatform.h"

#include <QOpenGLContext>

namespace Harrow::Vrk
{

GLContextTracker::GLContextTracker(QObject* parent) : QObject(parent) {}

void* GLContextTracker::currentContext()
{
    return getCurrentContext();
}

void GLContextTracker::trackCurrentContext()
{
    _trackedContext = currentContext();
}

void* GLContextTracker::trackedContext() const
{
    return _trackedContext;
}

bool GLContextTracker::check() const
{
    return _trackedContext == currentContext();
}

void* GLContextTracker::getCurrentContext()
{
    if (QOpenGLContext* const context = QOpenGLContext::currentContext())
        return context;
    return GLPlatform::active().currentContext();
}

} // namespace Harrow::Vrk
