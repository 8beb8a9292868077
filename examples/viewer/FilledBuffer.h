// SPDX-License-Identifier: MIT
// Vertices and indices on the GPU.
#pragma once

#include <VrkGL/AutoBinder.h>
#include <VrkGL/BufferObject.h>
#include <VrkGL/GLFunctions.h>
#include <VrkGL/OpenGLDeviceContext.h>

#include <QSharedPointer>

#include <vector>

namespace vrkview
{

/// A buffer that holds `values`, which never change, and that binds to `target` from now on. Wants its context current.
template <typename Value>
QSharedPointer<Harrow::Vrk::BufferObject> newFilledBuffer(GLenum target, const std::vector<Value>& values)
{
    QSharedPointer<Harrow::Vrk::BufferObject> buffer = Harrow::Vrk::OpenGLDeviceContext::current()->newBuffer();
    // Filled through a target of its own: an element buffer bound here would belong to whatever vertex array is bound.
    buffer->setTarget(GL_COPY_WRITE_BUFFER);
    {
        const Harrow::Vrk::AutoBinder bound(buffer);
        buffer->uploadArbitraryData(values.data(), int(values.size()), GL_STATIC_DRAW, sizeof(Value));
    }
    buffer->setTarget(target);
    return buffer;
}

} // namespace vrkview
