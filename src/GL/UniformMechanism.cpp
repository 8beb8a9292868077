// SPDX-License-Identifier: MIT
#include "UniformMechanism.h"

#include "Diagnostics.h"
#include "GLFunctions.h"
#include "InstanceDataCollection.h"
#include "ShaderProgram.h"

#include <QStringList>

#include <algorithm>
#include <cstring>
#include <iterator>

namespace Harrow::Vrk
{
namespace
{

using DataType = InstanceDataPlan::DataType;

template <typename Value> const Value* as(const void* data)
{
    return static_cast<const Value*>(data);
}

using Send = void (*)(GLint location, GLsizei count, const void* data);

constexpr Send kSend1i = [](GLint location, GLsizei count, const void* data)
{ glUniform1iv(location, count, as<GLint>(data)); };
constexpr Send kSend2i = [](GLint location, GLsizei count, const void* data)
{ glUniform2iv(location, count, as<GLint>(data)); };
constexpr Send kSend4i = [](GLint location, GLsizei count, const void* data)
{ glUniform4iv(location, count, as<GLint>(data)); };
constexpr Send kSend1ui = [](GLint location, GLsizei count, const void* data)
{ glUniform1uiv(location, count, as<GLuint>(data)); };
constexpr Send kSend2ui = [](GLint location, GLsizei count, const void* data)
{ glUniform2uiv(location, count, as<GLuint>(data)); };
constexpr Send kSend4ui = [](GLint location, GLsizei count, const void* data)
{ glUniform4uiv(location, count, as<GLuint>(data)); };
constexpr Send kSend1f = [](GLint location, GLsizei count, const void* data)
{ glUniform1fv(location, count, as<GLfloat>(data)); };
constexpr Send kSend2f = [](GLint location, GLsizei count, const void* data)
{ glUniform2fv(location, count, as<GLfloat>(data)); };
constexpr Send kSend4f = [](GLint location, GLsizei count, const void* data)
{ glUniform4fv(location, count, as<GLfloat>(data)); };
constexpr Send kSendMatrix4 = [](GLint location, GLsizei count, const void* data)
{ glUniformMatrix4fv(location, count, GL_FALSE, as<GLfloat>(data)); };

struct SendRow
{
    DataType type;
    Send send;
    size_t bytesRead; ///< by OpenGL, for each record
};

// One row for each type, in the order of the enumeration. Booleans have a byte for each component and are read as if
// they had four: they arrive as nonsense, and are here since every type is.
constexpr SendRow kSends[] = {
    {DataType::eTexture, kSend2ui, 8}, {DataType::eBool, kSend1i, 4},   {DataType::eBVec2, kSend2i, 8},
    {DataType::eBVec3, kSend4i, 16},   {DataType::eBVec4, kSend4i, 16}, {DataType::eInt, kSend1i, 4},
    {DataType::eIVec2, kSend2i, 8},    {DataType::eIVec3, kSend4i, 16}, {DataType::eIVec4, kSend4i, 16},
    {DataType::eUInt, kSend1ui, 4},    {DataType::eUVec2, kSend2ui, 8}, {DataType::eUVec3, kSend4ui, 16},
    {DataType::eUVec4, kSend4ui, 16},  {DataType::eFloat, kSend1f, 4},  {DataType::eVec2, kSend2f, 8},
    {DataType::eVec3, kSend4f, 16},    {DataType::eVec4, kSend4f, 16},  {DataType::eMat4, kSendMatrix4, 64},
};
static_assert(std::size(kSends) == DataType::eMat4 + 1, "one row for each type");

} // namespace

UniformMechanism::UniformMechanism(const QString& planName) : ParameterMechanism(planName) {}

bool UniformMechanism::useVec4Storage(DataType /*type*/) const
{
    return false;
}

bool UniformMechanism::bind(ShaderProgram* program, TextureManager* textureManager, InstanceDataCollection* collection)
{
    if (program)
    {
        for (auto member = _memberTypes.cbegin(); member != _memberTypes.cend(); ++member)
        {
            const int location = program->getUniformLocation(member->uniformName);
            if (location >= 0)
                sendMember(location, member.key(), member->type, *collection);
        }
        carried(collection).dirty = false;
    }
    bindTokens(textureManager, collection);
    return true;
}

bool UniformMechanism::unbind(ShaderProgram* /*program*/, TextureManager* textureManager,
                              InstanceDataCollection* collection)
{
    unbindTokens(textureManager, collection);
    return true;
}

void UniformMechanism::sendMember(int location, const QString& name, DataType type,
                                  const InstanceDataCollection& collection)
{
    const InstanceDataPlan* const plan = collection.plan();
    VRK_ASSERT_RETURN(plan != NULL, , "collection has no plan on bind");
    const size_t step = dataSize(type);
    const auto offset = static_cast<size_t>(plan->offset(name));
    VRK_ASSERT_RETURN(offset + step <= plan->totalDataSize(), , "plan '%s' data '%s': a record has no such bytes",
                      qPrintable(plan->name()), qPrintable(name));
    const SendRow& row = kSends[type];
    const auto count = static_cast<size_t>(collection.size());
    // Never less than OpenGL reads; what no member fills is zero.
    const size_t readBytes = std::max(step, row.bytesRead) * count;
    const size_t packedBytes = step * count;
    _packed.resize(static_cast<qsizetype>(readBytes));
    std::fill(_packed.begin() + static_cast<qsizetype>(packedBytes), _packed.end(), '\0');
    const char* source = collection.dataArray().constData() + offset;
    for (size_t index = 0; index < count; ++index, source += plan->totalDataSize())
        std::memcpy(_packed.data() + index * step, source, step);
    row.send(location, static_cast<GLsizei>(count), _packed.constData());
}

QString UniformMechanism::glslUniformDeclaration(const QList<DataType>& sortedTypes,
                                                 const QHash<DataType, QList<QString>>& members,
                                                 bool /*useVec4Storage*/, size_t arraySize)
{
    QStringList lines;
    for (const DataType type : sortedTypes)
    {
        VRK_ASSERT_RETURN(type < std::size(kSends), {}, "Unknown type %u in plan '%s'", static_cast<unsigned>(type),
                          qPrintable(_planName));
        for (const QString& name : members.value(type))
        {
            lines += QStringLiteral("uniform %1 u_%2[%3];")
                         .arg(QString::fromLatin1(glslPaddedType(type)), name, QString::number(arraySize));
            _memberTypes.insert(name, {QStringLiteral("u_") + name, type});
        }
    }
    return lines.join(QLatin1Char('\n'));
}

QString UniformMechanism::glslFunctionDefinition(DataType type, const QString& member, bool /*useVec4Storage*/,
                                                 size_t /*offset*/, size_t /*totalDataSize*/)
{
    return QStringLiteral("%1 { return u_%2[Index]%3; }")
        .arg(glslIndexedHead(type, member), member, numberComponents(type) == 3 ? QStringLiteral(".rgb") : QString());
}

} // namespace Harrow::Vrk
