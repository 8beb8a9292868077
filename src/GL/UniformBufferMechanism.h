// SPDX-License-Identifier: MIT
#pragma once

/// \file
/// Records in a block: an array of structs, whose members are the plan's or, with vec4 storage, vectors that hold them.
/// Not installed.

#include "GLFunctions.h"
#include "ParameterMechanism.h"

namespace Harrow::Vrk
{

/// A uniform block.
class UniformBufferMechanism : public ParameterMechanism
{
public:
    explicit UniformBufferMechanism(const QString& planName);

    bool bind(ShaderProgram* program, TextureManager* textureManager, InstanceDataCollection* collection) override;
    bool unbind(ShaderProgram* program, TextureManager* textureManager, InstanceDataCollection* collection) override;
    QString glslFunctionDefinition(InstanceDataPlan::DataType type, const QString& member, bool useVec4Storage,
                                   size_t offset, size_t totalDataSize) override;
    QString glslUniformDeclaration(const QList<InstanceDataPlan::DataType>& sortedTypes,
                                   const QHash<InstanceDataPlan::DataType, QList<QString>>& members,
                                   bool useVec4Storage, size_t arraySize) override;

protected:
    UniformBufferMechanism(const QString& planName, GLenum target);

    /// The block's declaration, for the plan's name, the lines of the struct and the number of records.
    virtual QString glslLayoutDefinition() const;

    /// Replaces the buffer's contents, counted in bytes.
    static void uploadDataToBuffer(QSharedPointer<BufferObject> buffer, const QByteArray& data,
                                   InstanceDataCollection* collection);

    GLenum _bufferTarget;
};

/// A storage block, whose array has no size of its own.
class StorageBufferMechanism : public UniformBufferMechanism
{
public:
    explicit StorageBufferMechanism(const QString& planName);

protected:
    QString glslLayoutDefinition() const override;
};

} // namespace Harrow::Vrk
