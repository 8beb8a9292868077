// SPDX-License-Identifier: MIT
#pragma once

/// \file
/// The factory of the most common GPU objects, and the holder of the one shared fullscreen quad. The library itself
/// asks it for buffers, vertex arrays and uniform buffers; a subclass can put objects of its own making in their place.

#include "Export.h"

#include <QSharedPointer>

class QString;

namespace Harrow::Vrk
{

class BufferObject;
class DrawBuffers;
class UniformBufferObject;
class VertexArrayObject;

/// Every object made here is held by the returned pointer alone and has no parent. Making one needs a current context
/// and loaded functions. A copy shares the quad. For the thread that renders; nothing is locked.
class VRKGL_EXPORT OpenGLDeviceContext
{
public:
    OpenGLDeviceContext();
    /// Share the quad.
    OpenGLDeviceContext(const OpenGLDeviceContext& other);
    OpenGLDeviceContext& operator=(const OpenGLDeviceContext& other);
    virtual ~OpenGLDeviceContext();

    /// A wrapper around a buffer that exists already, and that somebody else deletes.
    virtual QSharedPointer<BufferObject> newBuffer(unsigned int bufferId);

    /// A new buffer.
    virtual QSharedPointer<BufferObject> newBuffer();

    /// The shared quad, made by `newFullscreenQuad` at the first call. It belongs to the context in which it is first
    /// bound.
    virtual QSharedPointer<DrawBuffers> fullscreenQuad();

    /// A quad that covers the viewport: two triangles with attributes "va_Vertex" (3 floats, from -1 to 1, z = -1) and
    /// "va_TexCoord" (2 floats, (0, 0) at the bottom left), counter-clockwise. Null, after an assertion, when a factory
    /// of a subclass gave null.
    virtual QSharedPointer<DrawBuffers> newFullscreenQuad();

    /// Without attributes. The quad is made of one too.
    virtual QSharedPointer<VertexArrayObject> newVAO();

    /// Connects `buffer`, whose target says of which kind it is, to the block `blockName`.
    virtual QSharedPointer<UniformBufferObject> newUniformBuffer(const QString& blockName,
                                                                 QSharedPointer<BufferObject> buffer);

    /// The process's instance: made when the library is loaded, null after it was released at exit.
    static QSharedPointer<OpenGLDeviceContext> current();

    /// Puts a new instance without a quad in its place, so that the quad of a context that goes away is let go. Who
    /// holds the former instance keeps it and its quad.
    static void resetContext();

private:
    QSharedPointer<DrawBuffers> _fullscreenQuad;
};

} // namespace Harrow::Vrk
