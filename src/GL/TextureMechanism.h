// SPDX-License-Identifier: MIT
#pragma once

/// \file
/// Records as texels of 16 bytes, seen through an integer and a float sampler: the same bits, which no sampler
/// converts. Not installed.

#include "TextureFormat.h"
#include "UniformBufferMechanism.h"

namespace Harrow::Vrk
{

/// Two 2D textures one row high, filled from a staging buffer by the GPU.
class TextureMechanism : public UniformBufferMechanism
{
public:
    explicit TextureMechanism(const QString& planName);

    bool bind(ShaderProgram* program, TextureManager* textureManager, InstanceDataCollection* collection) override;
    bool unbind(ShaderProgram* program, TextureManager* textureManager, InstanceDataCollection* collection) override;
    QString glslFunctionDefinition(InstanceDataPlan::DataType type, const QString& member, bool useVec4Storage,
                                   size_t offset, size_t totalDataSize) override;
    QString glslUniformDeclaration(const QList<InstanceDataPlan::DataType>& sortedTypes,
                                   const QHash<InstanceDataPlan::DataType, QList<QString>>& members,
                                   bool useVec4Storage, size_t arraySize) override;
    bool useVec4Storage(InstanceDataPlan::DataType type) const override;

protected:
    TextureMechanism(const QString& planName, GLenum target);

    /// Binds the two textures for the samplers that the program has.
    void setUniformValues(ShaderProgram* program, InstanceDataCollection* collection) const;

    /// The two samplers, declared with these words.
    QString declaration(const char* floatSampler, const char* integerSampler) const;
    /// An accessor whose fetches are written as `fetch`: %1 the sampler, %2 texels per record, %3 the texel's number.
    QString accessor(const QString& fetch, InstanceDataPlan::DataType type, const QString& member, size_t offset,
                     size_t totalDataSize) const;

    QString _samplerIName;
    QString _samplerFName;

private:
    // Both are false, and no texture is changed, when the texture has no unit to be bound to, or OpenGL no buffer to
    // take the texels from.
    static bool allocateImageTextureStorage(QSharedPointer<Texture> texture, TextureFormat format, int width);
    static bool pboToTexture(QSharedPointer<Texture> texture, TextureFormat format, QSharedPointer<BufferObject> buffer,
                             int width);
};

/// Two buffer textures over one buffer: nothing is copied.
class BufferTextureMechanism : public TextureMechanism
{
public:
    explicit BufferTextureMechanism(const QString& planName);

    bool bind(ShaderProgram* program, TextureManager* textureManager, InstanceDataCollection* collection) override;
    QString glslFunctionDefinition(InstanceDataPlan::DataType type, const QString& member, bool useVec4Storage,
                                   size_t offset, size_t totalDataSize) override;
    QString glslUniformDeclaration(const QList<InstanceDataPlan::DataType>& sortedTypes,
                                   const QHash<InstanceDataPlan::DataType, QList<QString>>& members,
                                   bool useVec4Storage, size_t arraySize) override;
    bool useVec4Storage(InstanceDataPlan::DataType type) const override;

private:
    /// Null when the texture has no unit to be bound to.
    static QSharedPointer<Texture> initBufferTextureStorage(TextureFormat format, QSharedPointer<BufferObject> buffer);
};

} // namespace Harrow::Vrk
