// SPDX-License-Identifier: MIT
#pragma once

/// \file
/// Connects a buffer to a named uniform or shader storage block of whatever program is in use. A context has few
/// indexed binding points; they are handed out on demand, and all users of one buffer share one of them.

#include "Bindable.h"
#include "Export.h"

#include <QHash>
#include <QObject>
#include <QSharedPointer>
#include <QString>

#include <cstddef>

namespace Harrow::Vrk
{

class BufferObject;
class ShaderProgram;
struct UBOContextData;

/// Made by `OpenGLDeviceContext::newUniformBuffer`. The buffer's target says which pool of binding points serves it:
/// `GL_UNIFORM_BUFFER` or `GL_SHADER_STORAGE_BUFFER`; any other is reported and served by the first.
///
/// The object itself holds no binding state. Who holds which point is kept for each context, under the buffer's name:
/// binds are counted, two objects on one buffer share its point, and the point is free again after as many unbinds. An
/// object that is destroyed while bound leaves its point taken. Operations run on the thread of the current context;
/// different contexts may be used on different threads. In a context without storage blocks the first use of a batch or
/// of a storage buffer leaves `GL_INVALID_ENUM` behind, from asking for the number of their binding points.
class VRKGL_EXPORT UniformBufferObject : public QObject, public Bindable
{
    Q_OBJECT

public:
    ~UniformBufferObject() override;

    /// `bind` with the program bound in this context. Without one: the warning "No ShaderProgram is bound" (guarded),
    /// and false.
    bool bind() override;

    /// Puts the buffer on a binding point, the block's present one if that is free, and points the block of `program`
    /// at it. `program` need not be the one in use; null, or one without the block, gets the buffer's point alone. For
    /// a buffer that has a point already no buffer is bound again. False for no buffer (assertion) or no free point
    /// ("There is no available uniformBlockBindings", warning, guarded). A buffer without contents is reported outside
    /// a batch, and bound.
    bool bind(ShaderProgram* program);

    /// `unbind` with the program bound in this context; false with the warning of `bind` if there is none.
    bool unbind() override;

    /// Counts a bind down, and with the last one frees the binding point, at once also in a batch. `program` is not
    /// used. True also when the buffer has no point here.
    bool unbind(ShaderProgram* program);

    /// The buffer's binding point in the current context. After an assertion: 0 without a buffer, -1 if it has none.
    int uniformBlockBinding() const;

    /// The buffer that is bound; null for none.
    QSharedPointer<BufferObject> bufferObject() const;

    /// Bytes of this object, its block name and the buffer's own record.
    size_t memoryEstimateCPU() const;
    /// Bytes that the buffer holds on the GPU.
    size_t memoryEstimateGPU() const;

    /// From here on binds in the current context only take their binding points, until `bindBatchFlush` binds all of
    /// them in one call for each kind of block (one call for each point where the driver lacks multi-bind). Batches do
    /// not nest: a second start forgets what the first has collected.
    static void bindBatchStart();
    static void bindBatchFlush();

    /// Number of living objects.
    static int NumAlive();

private:
    friend class OpenGLDeviceContext;
    friend struct UniformBufferObjectTestAccess;

    enum class BlockKind
    {
        eUniform,
        eStorage
    };

    using ContextRecords = QHash<void*, QSharedPointer<UBOContextData>>;

    /// What a thread has used last, so that its binds take no lock while it stays in one context.
    struct LastRecords
    {
        void* context;
        UBOContextData* records[2];
    };

    UniformBufferObject(const QString& blockName, QSharedPointer<BufferObject> buffer, QObject* parent);

    UBOContextData& bufferContextData() const;

    static int maxUniformBlockBindings();
    static ContextRecords& contextRecords(BlockKind kind);
    static LastRecords& lastRecords();
    static UBOContextData& contextData(BlockKind kind);
    static UBOContextData* findOrMakeRecord(BlockKind kind, void* context);
    static void flushBatch(UBOContextData& uboContextData);

    QSharedPointer<BufferObject> _bufferObject;
    QString _blockName;
};

} // namespace Harrow::Vrk
