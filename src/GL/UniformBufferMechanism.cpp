// SPDX-License-Identifier: MIT
#include "UniformBufferMechanism.h"

#include "AutoBinder.h"
#include "BufferObject.h"
#include "InstanceDataCollection.h"
#include "UniformBufferObject.h"

#include <QStringList>

#include <optional>

namespace Harrow::Vrk
{
namespace
{

/// Where the vector that holds this byte begins.
constexpr size_t vectorStart(size_t offset)
{
    return offset & ~size_t(15);
}

} // namespace

UniformBufferMechanism::UniformBufferMechanism(const QString& planName)
    : UniformBufferMechanism(planName, GL_UNIFORM_BUFFER)
{
}

UniformBufferMechanism::UniformBufferMechanism(const QString& planName, GLenum target)
    : ParameterMechanism(planName), _bufferTarget(target)
{
}

bool UniformBufferMechanism::bind(ShaderProgram* program, TextureManager* textureManager,
                                  InstanceDataCollection* collection)
{
    const QSharedPointer<UniformBufferObject> block = collection->getUniformBufferObject(_bufferTarget);
    if (!block || !block->bufferObject())
        return false;
    const Carried records = carried(collection);
    if (records.dirty)
    {
        uploadDataToBuffer(block->bufferObject(), records.data, collection);
        records.dirty = false;
    }
    bindTokens(textureManager, collection);
    block->bind(program);
    return true;
}

bool UniformBufferMechanism::unbind(ShaderProgram* program, TextureManager* textureManager,
                                    InstanceDataCollection* collection)
{
    if (const QSharedPointer<UniformBufferObject> block = collection->getUniformBufferObject(_bufferTarget))
        block->unbind(program);
    unbindTokens(textureManager, collection);
    return true;
}

void UniformBufferMechanism::uploadDataToBuffer(QSharedPointer<BufferObject> buffer, const QByteArray& data,
                                                InstanceDataCollection* collection)
{
    std::optional<AutoBinder> binder;
    if (buffer->isBindNeededForUpload())
        binder.emplace(buffer.get());
    buffer->uploadArbitraryData(data.constData(), static_cast<int>(data.size()),
                                static_cast<GLenum>(carried(collection).usage), 1);
}

QString UniformBufferMechanism::glslUniformDeclaration(const QList<InstanceDataPlan::DataType>& sortedTypes,
                                                       const QHash<InstanceDataPlan::DataType, QList<QString>>& members,
                                                       bool useVec4Storage, size_t arraySize)
{
    static const QString line = QStringLiteral("  %1 %2;");
    static const QString numberedLine = QStringLiteral("  %1 %2%3;");
    QStringList lines;
    size_t offset = 0;
    for (const InstanceDataPlan::DataType type : sortedTypes)
    {
        const QList<QString> names = members.value(type);
        if (useVec4Storage && this->useVec4Storage(type))
        {
            const size_t end = offset + dataSize(type) * static_cast<size_t>(names.size());
            for (; offset < end; offset += _dataSizeVec4)
                lines += numberedLine.arg(QString::fromLatin1(glslVec4StorageType(type)), QStringLiteral("_data"),
                                          QString::number(vectorStart(offset)));
            continue;
        }
        for (const QString& name : names)
        {
            lines += line.arg(QString::fromLatin1(glslPaddedType(type)), name);
            offset += dataSize(type);
        }
    }
    offset = (offset + 3) & ~size_t(3); // booleans may leave it where no step of 4 ends
    for (; offset % _dataSizeVec4 != 0; offset += 4)
        lines += numberedLine.arg(QStringLiteral("float"), QStringLiteral("_dummy"), QString::number(offset));
    if (lines.isEmpty())
        return QString();
    return glslLayoutDefinition().arg(_planName, lines.join(QLatin1Char('\n')), QString::number(arraySize));
}

QString UniformBufferMechanism::glslFunctionDefinition(InstanceDataPlan::DataType type, const QString& member,
                                                       bool useVec4Storage, size_t offset, size_t /*totalDataSize*/)
{
    const QString head = glslIndexedHead(type, member);
    if (useVec4Storage && this->useVec4Storage(type))
        return QStringLiteral("%1 { return %2(%3s[ Index]._data%4%5); } %6")
            .arg(head, QString::fromLatin1(glslType(type)), _planName, QString::number(vectorStart(offset)),
                 glslAccessorString((offset >> 2) & 3, numberComponents(type)), glslOffsetComment(type, offset));
    return QStringLiteral("%1 { return %2s[ Index].%3%4; }")
        .arg(head, _planName, member, numberComponents(type) == 3 ? QStringLiteral(".rgb") : QString());
}

QString UniformBufferMechanism::glslLayoutDefinition() const
{
    return QStringLiteral("struct %1\n{\n%2\n};\n\nlayout (std140) uniform u_%1Uniform{\n  %1 %1s[%3];\n};");
}

StorageBufferMechanism::StorageBufferMechanism(const QString& planName)
    : UniformBufferMechanism(planName, GL_SHADER_STORAGE_BUFFER)
{
}

QString StorageBufferMechanism::glslLayoutDefinition() const
{
    return QStringLiteral("struct %1\n{\n%2\n};\n\nlayout (std140) buffer u_%1Uniform{\n  %1 %1s[/*%3*/];\n};");
}

} // namespace Harrow::Vrk
