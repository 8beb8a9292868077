// SPDX-License-Identifier: MIT
#pragma once

/// \file
/// The records of a plan as the GPU sees them, one behind the other: what a draw binds. Knows whether they have changed
/// since the GPU got them.

#include "Bindable.h"
#include "Export.h"
#include "TextureToken.h"

#include <QByteArray>
#include <QList>
#include <QObject>
#include <QSharedPointer>
#include <QString>

#include <cstddef>

namespace Harrow::Vrk
{

class InstanceData;
class InstanceDataPlan;
class ShaderProgram;
class Texture;
class TextureManager;
class UniformBufferObject;

/// Owns its bytes, its buffer and its textures. The plan is borrowed from the registry and must outlive it. Writing
/// only marks the collection as changed; the next `bind` uploads all records at once. Belongs to the context in which
/// its buffer is made; the bytes may be filled on any thread while no bind runs.
///
/// More records than the plan declares are reported and kept. A write or read outside the bytes is reported and not
/// done.
class VRKGL_EXPORT InstanceDataCollection : public QObject, public Bindable
{
    Q_OBJECT

public:
    /// Without records. An unknown plan is reported by the registry, and the collection is of no use then.
    explicit InstanceDataCollection(const QString& planName);
    InstanceDataCollection(const QString& planName, const QList<InstanceData>& instanceDataDataList);
    /// Copies `numBytes` bytes of records.
    InstanceDataCollection(InstanceDataPlan* plan, const char* bytes, size_t numBytes);
    /// `numItems` zeroed records.
    InstanceDataCollection(InstanceDataPlan* plan, size_t numItems);
    ~InstanceDataCollection() override;

    /// \name Binding
    /// Bring the records to `program`, which is bound, or to the program that is current, and make the textures of
    /// their tokens reachable through `textureManager`, or `TextureManager::Instance()`. Null for either leaves that
    /// part out. False when no buffer can be had. The same program, manager and records are given to `unbind`.
    ///@{
    /// Where no manager is named it is `TextureManager::Instance()`; where no program is, the one bound in this
    /// context.
    bool bind() override;
    bool bind(TextureManager* textureManager);
    bool bind(ShaderProgram* program, TextureManager* textureManager);
    bool unbind() override;
    bool unbind(TextureManager* textureManager);
    bool unbind(ShaderProgram* program, TextureManager* textureManager);
    ///@}

    /// Collects the tokens in the records, each once and in their order, if that was not done since the last `update`,
    /// and binds them with the manager. A token that is changed by `set` afterwards is not seen until an `update`.
    void bindTextureTokens(TextureManager* textureManager);

    /// Replaces all records.
    void update(const QList<InstanceData>& instanceDataDataList);
    void update(const char* bytes, size_t numBytes);

    /// Copies `size` bytes to a member of record `index`. The start of the record for an unknown name.
    void set(int index, const QString& name, const void* data, size_t size);
    /// Copies a member of record `index` to `out`, as many bytes as it has.
    void get(int index, const QString& name, void* out) const;
    /// Copies the member `from` onto `to` within one record, as many bytes as `from` has. They may overlap.
    void copyInstanceMember(int index, const QString& from, const QString& to);

    /// Takes the records as uploaded, for a caller that wrote to the buffer itself.
    void clearDirtyStatus();

    /// OpenGL's usage hint for uploads, `GL_STATIC_DRAW` at the start; and flags other than 0 for a buffer of immutable
    /// storage. Before the first bind.
    void setBOUsageFlags(int usage);
    void useStorageBuffer(int flags);

    /// The buffer, made at the first call and with the target of that call (`GL_UNIFORM_BUFFER` for the first form).
    /// Null when there is no `OpenGLDeviceContext`.
    QSharedPointer<UniformBufferObject> getUniformBufferObject();
    QSharedPointer<UniformBufferObject> getUniformBufferObject(unsigned int target);

    /// Number of whole records.
    int size() const;
    InstanceDataPlan* plan() const;
    const QByteArray& dataArray() const;

    /// Bytes: the records, the object itself, the tokens, and those of the uniform buffer object.
    size_t memoryEstimateCPU() const;
    /// Bytes of the buffer; textures are not counted.
    size_t memoryEstimateGPU() const;

private:
    friend class GPUModel;
    friend class ParameterMechanism;
    friend struct InstanceDataCollectionTestAccess;

    /// The bytes of one record, for whoever knows their offsets and writes within them; marks the collection as
    /// changed. Null for a record that there is not.
    char* writableRecord(int index)
    {
        const auto bytes = static_cast<qsizetype>(recordSize());
        const qsizetype start = index * bytes;
        if (index < 0 || bytes == 0 || start > _data.size() - bytes)
            return nullptr;
        _dirty = true;
        return _data.data() + start;
    }

    size_t recordSize() const;
    void collectTokens();
    bool isHeld(qsizetype position, size_t size) const;
    bool isHeld(qsizetype position, size_t size, int index, const QString& name) const;
    qsizetype position(int index, const QString& name) const;

    bool _dirty = true;
    InstanceDataPlan* _plan = nullptr;
    QByteArray _data;
    QList<TextureToken> _tokens;
    QSharedPointer<UniformBufferObject> _uniformBufferObject;
    QSharedPointer<Texture> _integerTexture;
    QSharedPointer<Texture> _floatTexture;
    int _usage;
    int _storageFlags = 0;
};

} // namespace Harrow::Vrk
