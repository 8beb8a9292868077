// SPDX-License-Identifier: MIT
#include "TextureMechanism.h"

#include "AutoBinder.h"
#include "BufferObject.h"
#include "Diagnostics.h"
#include "InstanceDataCollection.h"
#include "ShaderProgram.h"
#include "Texture.h"
#include "TextureUnits.h"
#include "UniformBufferObject.h"

#include <QScopeGuard>
#include <QStringList>

namespace Harrow::Vrk
{
namespace
{

/// The two views of the same bytes.
constexpr TextureFormat kIntegerView = RGBA32I;
constexpr TextureFormat kFloatView = RGBA32F;

QSharedPointer<BufferObject> recordBuffer(InstanceDataCollection& collection, GLenum target)
{
    const QSharedPointer<UniformBufferObject> holder = collection.getUniformBufferObject(target);
    return holder ? holder->bufferObject() : QSharedPointer<BufferObject>();
}

QSharedPointer<Texture> newTexture()
{
    return QSharedPointer<Texture>(new Texture(nullptr));
}

/// Whether OpenGL takes texels from a buffer: without one it would read them from address 0. Asked of the driver only
/// where our own bind does not vouch for it.
bool isUnpackBufferBound()
{
    GLint name = 0;
    glGetIntegerv(GL_PIXEL_UNPACK_BUFFER_BINDING, &name);
    return name != 0;
}

void bindSampler(ShaderProgram& program, const QString& name, const QSharedPointer<Texture>& texture)
{
    const int location = program.getUniformLocation(name);
    if (location >= 0 && texture && texture->bind())
        program.setUniform(location, texture->unit());
}

void unbindSampler(const ShaderProgram& program, const QString& name, const QSharedPointer<Texture>& texture)
{
    if (texture && program.getUniformLocation(name) >= 0)
        texture->unbind();
}

} // namespace

TextureMechanism::TextureMechanism(const QString& planName) : TextureMechanism(planName, GL_PIXEL_UNPACK_BUFFER) {}

TextureMechanism::TextureMechanism(const QString& planName, GLenum target)
    : UniformBufferMechanism(planName, target),
      _samplerIName(QStringLiteral("u_i%1Sampler").arg(planName)),
      _samplerFName(QStringLiteral("u_f%1Sampler").arg(planName))
{
}

bool TextureMechanism::useVec4Storage(InstanceDataPlan::DataType /*type*/) const
{
    return false;
}

// ---- binding -------------------------------------------------------------------------------------------------------

bool TextureMechanism::bind(ShaderProgram* program, TextureManager* textureManager, InstanceDataCollection* collection)
{
    const QSharedPointer<BufferObject> staging = recordBuffer(*collection, _bufferTarget);
    if (!staging)
        return false;
    const Carried records = carried(collection);
    if (!records.integerTexture && !records.floatTexture)
    {
        records.integerTexture = newTexture();
        records.floatTexture = newTexture();
        records.dirty = true;
    }
    const int width = static_cast<int>(static_cast<size_t>(records.data.size()) / _dataSizeVec4);
    // What cannot be done now, for want of a texture unit, is left to the next bind.
    bool hasStorage = true;
    if (staging->valueCount() != records.data.size())
    {
        hasStorage = allocateImageTextureStorage(records.integerTexture, kIntegerView, width);
        hasStorage = allocateImageTextureStorage(records.floatTexture, kFloatView, width) && hasStorage;
        records.dirty = true;
    }
    if (records.dirty && hasStorage)
    {
        uploadDataToBuffer(staging, records.data, collection);
        bool isCopied = pboToTexture(records.integerTexture, kIntegerView, staging, width);
        isCopied = pboToTexture(records.floatTexture, kFloatView, staging, width) && isCopied;
        records.dirty = !isCopied && width > 0;
    }
    bindTokens(textureManager, collection);
    setUniformValues(program, collection);
    return true;
}

bool TextureMechanism::unbind(ShaderProgram* program, TextureManager* textureManager,
                              InstanceDataCollection* collection)
{
    if (program)
    {
        const Carried records = carried(collection);
        unbindSampler(*program, _samplerFName, records.floatTexture);
        unbindSampler(*program, _samplerIName, records.integerTexture);
    }
    unbindTokens(textureManager, collection);
    return true;
}

void TextureMechanism::setUniformValues(ShaderProgram* program, InstanceDataCollection* collection) const
{
    if (!program)
        return;
    const Carried records = carried(collection);
    bindSampler(*program, _samplerFName, records.floatTexture);
    bindSampler(*program, _samplerIName, records.integerTexture);
}

bool TextureMechanism::allocateImageTextureStorage(QSharedPointer<Texture> texture, TextureFormat format, int width)
{
    texture->setTarget(GL_TEXTURE_2D);
    const AutoBinder binder(texture);
    if (!hasUnit(*texture))
        return false;
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_NEAREST);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_NEAREST);
    glTexImage2D(GL_TEXTURE_2D, 0, SizedInternalFormat(format), width, 1, 0, ExternalFormat(format),
                 ExternalType(format), nullptr);
    return true;
}

bool TextureMechanism::pboToTexture(QSharedPointer<Texture> texture, TextureFormat format,
                                    QSharedPointer<BufferObject> buffer, int width)
{
    const AutoBinder textureBinder(texture);
    if (!hasUnit(*texture))
        return false;
    const bool bound = buffer->bind();
    const bool isSource = (bound && buffer->target() == GL_PIXEL_UNPACK_BUFFER) || isUnpackBufferBound();
    const auto unbindBuffer = qScopeGuard(
        [&]
        {
            if (bound)
                buffer->unbind();
        });
    VRK_ASSERT_RETURN(true == isSource, false, "Buffer Object is no pixel unpack buffer on copy to a texture");
    glTexSubImage2D(GL_TEXTURE_2D, 0, 0, 0, width, 1, ExternalFormat(format), ExternalType(format), nullptr);
    return true;
}

// ---- texts ---------------------------------------------------------------------------------------------------------

QString TextureMechanism::declaration(const char* floatSampler, const char* integerSampler) const
{
    return QStringLiteral("uniform %1 %2;\nuniform %3 %4;\n")
        .arg(QString::fromLatin1(floatSampler), _samplerFName, QString::fromLatin1(integerSampler), _samplerIName);
}

QString TextureMechanism::accessor(const QString& fetch, InstanceDataPlan::DataType type, const QString& member,
                                   size_t offset, size_t totalDataSize) const
{
    const size_t texel = offset >> 4;
    const QString perRecord = QString::number(totalDataSize >> 4);
    const auto fetched = [&](const QString& sampler, size_t number)
    { return fetch.arg(sampler, perRecord, QString::number(number)); };

    QStringList parts;
    if (type == InstanceDataPlan::eMat4)
    {
        for (size_t column = 0; column < 4; ++column)
            parts += fetched(_samplerFName, texel + column) + QStringLiteral(".xyzw");
    }
    else
    {
        const size_t components = numberComponents(type);
        const QString swizzle =
            components == 3 ? QStringLiteral(".rgb") : glslAccessorString((offset >> 2) & 3, components);
        parts += fetched(isIntegerType(type) ? _samplerIName : _samplerFName, texel) + swizzle;
    }
    return QStringLiteral("%1 { return %2(%3); }%4")
        .arg(glslIndexedHead(type, member), QString::fromLatin1(glslType(type)), parts.join(QStringLiteral(",\n")),
             glslOffsetComment(type, offset));
}

QString TextureMechanism::glslUniformDeclaration(const QList<InstanceDataPlan::DataType>& /*sortedTypes*/,
                                                 const QHash<InstanceDataPlan::DataType, QList<QString>>& /*members*/,
                                                 bool /*useVec4Storage*/, size_t /*arraySize*/)
{
    return declaration("sampler2D", "isampler2D");
}

QString TextureMechanism::glslFunctionDefinition(InstanceDataPlan::DataType type, const QString& member,
                                                 bool /*useVec4Storage*/, size_t offset, size_t totalDataSize)
{
    return accessor(QStringLiteral("texelFetch( %1, ivec2( (Index * uint(%2)) + uint(%3), 0), 0)"), type, member,
                    offset, totalDataSize);
}

// ---- buffer textures -----------------------------------------------------------------------------------------------

BufferTextureMechanism::BufferTextureMechanism(const QString& planName) : TextureMechanism(planName, GL_TEXTURE_BUFFER)
{
}

bool BufferTextureMechanism::useVec4Storage(InstanceDataPlan::DataType /*type*/) const
{
    return false;
}

bool BufferTextureMechanism::bind(ShaderProgram* program, TextureManager* textureManager,
                                  InstanceDataCollection* collection)
{
    const QSharedPointer<BufferObject> buffer = recordBuffer(*collection, _bufferTarget);
    if (!buffer)
        return false;
    const Carried records = carried(collection);
    if (!records.integerTexture && !records.floatTexture)
    {
        records.integerTexture = initBufferTextureStorage(kIntegerView, buffer);
        records.floatTexture = initBufferTextureStorage(kFloatView, buffer);
        // One alone would never be joined by the other.
        if (!records.integerTexture || !records.floatTexture)
        {
            records.integerTexture.reset();
            records.floatTexture.reset();
        }
        records.dirty = true;
    }
    if (records.dirty)
    {
        uploadDataToBuffer(buffer, records.data, collection);
        records.dirty = false;
    }
    bindTokens(textureManager, collection);
    setUniformValues(program, collection);
    return true;
}

QSharedPointer<Texture> BufferTextureMechanism::initBufferTextureStorage(TextureFormat format,
                                                                         QSharedPointer<BufferObject> buffer)
{
    QSharedPointer<Texture> texture = newTexture();
    texture->setTarget(GL_TEXTURE_BUFFER);
    const AutoBinder textureBinder(texture);
    const AutoBinder bufferBinder(buffer);
    if (!hasUnit(*texture))
        return {};
    glTexBuffer(GL_TEXTURE_BUFFER, SizedInternalFormat(format), buffer->getBO());
    return texture;
}

QString
BufferTextureMechanism::glslUniformDeclaration(const QList<InstanceDataPlan::DataType>& /*sortedTypes*/,
                                               const QHash<InstanceDataPlan::DataType, QList<QString>>& /*members*/,
                                               bool /*useVec4Storage*/, size_t /*arraySize*/)
{
    return declaration("samplerBuffer", "isamplerBuffer");
}

QString BufferTextureMechanism::glslFunctionDefinition(InstanceDataPlan::DataType type, const QString& member,
                                                       bool /*useVec4Storage*/, size_t offset, size_t totalDataSize)
{
    return accessor(QStringLiteral("texelFetch( %1, int( (Index * uint(%2)) + uint(%3) ))"), type, member, offset,
                    totalDataSize);
}

} // namespace Harrow::Vrk
