// SPDX-License-Identifier: MIT
#pragma once

/// \file
/// One OpenGL buffer: its target, its optional indexed binding range, whether it is bound, and what was uploaded last.
/// Uses direct state access where the driver has it, so that most uploads need no bind.

#include "Bindable.h"
#include "Export.h"
#include "GLFunctions.h"

#include <QList>
#include <QObject>

#include <cstddef>

namespace Harrow::Vrk
{

/// Either the owner of a buffer that it made, or a wrapper around a buffer that somebody else made and deletes. Made
/// only by `OpenGLDeviceContext::newBuffer`. Belongs to the thread of its context, which must be current for everything
/// but the queries. Starts unbound and without a target; it must not be destroyed while bound.
///
/// Every precondition is an assertion. Where a function has a result, a broken one is reported, no OpenGL call is made
/// and false or null comes back; `useStorageBuffer` and `unmap` report and go on. OpenGL's own errors (out of memory, a
/// negative count) are not looked at.
class VRKGL_EXPORT BufferObject : public QObject, public Bindable
{
public:
    /// Deletes the OpenGL buffer if this object made it; while bound it reports and leaves the buffer in place. A
    /// wrapper around somebody else's buffer does neither.
    ~BufferObject() override;

    /// Binds to the target: by `glBindBufferRange` after `setIndexedTarget`, else by `glBindBuffer`.
    bool bind() override;

    /// Unbinds. The indexed form always names index 0, whatever the buffer's index is: a buffer on another index stays
    /// attached to that index.
    bool unbind() override;

    /// Takes the binding over from `bufferObjectBound` without an unbind between. Null: a plain `bind`. This object
    /// itself: nothing happens, unless `force` asks for the bind to be issued again. Another one must be bound to
    /// this object's target in the same form, indexed or not. Where both wrap one OpenGL buffer, and without `force`,
    /// only the book-keeping moves.
    bool rebind(BufferObject* bufferObjectBound, bool force);

    /// Target of later binds, not indexed. Complains in the critical log about `GL_ATOMIC_COUNTER_BUFFER`, and works
    /// even so.
    void setTarget(GLenum target);

    /// Target of later binds with index, and offset and size in bytes. Complains in the critical log about any target
    /// but `GL_ATOMIC_COUNTER_BUFFER`, and works even so.
    void setIndexedTarget(GLenum target, GLuint index, GLintptr offset, GLsizeiptr size);

    /// Replaces the buffer's contents by `valueCount` values and records count and size. Goes by direct access when the
    /// driver has it and the object is unbound; otherwise the object must be bound. `data` may be null to reserve only.
    /// `usage` is OpenGL's hint, `GL_STATIC_DRAW` and its kin.
    bool upload(const float* data, int valueCount, GLenum usage);
    bool upload(const QList<float>& values, GLenum usage);
    bool uploadGLuintData(const GLuint* data, int valueCount, GLenum usage);
    bool uploadGLushortData(const GLushort* data, int valueCount, GLenum usage);

    /// The same with values of `valueSize` bytes. A buffer with immutable storage is written from its first byte
    /// instead, by direct access, and `usage` is ignored.
    bool uploadArbitraryData(const void* data, int valueCount, GLenum usage, std::size_t valueSize);

    /// Overwrites `valueCount` four-byte values from value `offset` on, within what was uploaded last. Must be bound.
    bool subUpload(const float* data, int valueCount, int offset);
    bool subUpload(const QList<float>& values, int offset);

    /// Gives the buffer immutable storage of `size` bytes without data; `flags` as for `glBufferStorage`. Does nothing
    /// where the driver cannot. Leaves the `GL_UNIFORM_BUFFER` binding point empty where the driver offers
    /// `glBufferStorage`. An object without a buffer is reported, and the calls are made even so. The count of values
    /// stays as it was.
    void useStorageBuffer(int size, int flags);

    /// Maps the bound buffer and gives the driver's pointer, valid until `unmap`.
    void* map(GLenum access);

    /// Ends the mapping. Reports broken preconditions and makes the OpenGL call all the same.
    void unmap();

    /// Whether the next upload needs the buffer bound; callers skip an `AutoBinder` when it does not. A first upload
    /// needs it even where direct access exists.
    bool isBindNeededForUpload() const;

    /// What the object holds, without a call of OpenGL: the name (0 for none), the target that was set, and of what was
    /// uploaded last the count of values and the bytes of each.
    GLuint getBO() const;
    GLenum target();
    int valueCount() const;
    std::size_t valueSize() const;

    /// Bytes of this record; bytes of what was uploaded last (0 without a buffer).
    std::size_t memoryEstimateCPU() const;
    std::size_t memoryEstimateGPU() const;

    /// Number of living objects, and of those among them that own their OpenGL buffer.
    static int NumAlive();
    static int NumAliveManaged();

private:
    friend class DrawBuffers;
    friend class OpenGLDeviceContext;
    friend class VertexArrayObject;
    friend struct BufferObjectTestAccess;

    /// Wraps `bufferId`, which somebody else owns.
    BufferObject(unsigned int bufferId, QObject* parent);
    /// Makes an OpenGL buffer of its own.
    explicit BufferObject(QObject* parent);

    bool create();
    bool destroy();
    /// Whether the books say so. An indexed binding is none of a plain target: OpenGL denies it there.
    bool isBoundTo(GLenum target) const
    {
        return _boBountTarget == target && !_useBindBufferRange;
    }
    bool uploadValues(const void* data, int valueCount, GLenum usage, std::size_t valueSize);
    bool uploadChecked(const void* data, int valueCount, GLenum usage, std::size_t valueSize);

    GLuint _bo = 0;
    GLenum _boBountTarget = 0; ///< The spelling is interface: it shows in the assertion texts.
    GLenum _target = 0;
    bool _useBindBufferRange = false;
    GLuint _bindIndex = 0;
    GLintptr _bindOffset = 0;
    GLsizeiptr _bindSize = 0;
    int _valueCount = 0;
    std::size_t _valueSize = 0;
    bool _managed = false;
    bool _immutableStorage = false;
};

} // namespace Harrow::Vrk
