// SPDX-License-Identifier: MIT
#include "ParameterMechanism.h"

#include "Diagnostics.h"
#include "InstanceDataCollection.h"
#include "TextureManager.h"

#include <iterator>

namespace Harrow::Vrk
{
namespace
{

using DataType = InstanceDataPlan::DataType;

struct DataTypeRow
{
    DataType type;
    size_t dataSize;
    size_t numberComponents;
    bool isIntegerType;
    const char* glslType;
    const char* glslPaddedType;
    const char* glslVec4StorageType;
    bool useVec4Storage;
};

// One row for each type, in the order of the enumeration.
constexpr DataTypeRow kDataTypes[] = {
    {DataType::eTexture, 8, 2, true, "VrkTextureToken", "VrkTextureToken", "uvec4", true},
    {DataType::eBool, 1, 1, true, "bool", "bool", "bvec4", true},
    {DataType::eBVec2, 2, 2, true, "bvec2", "bvec2", "bvec4", true},
    {DataType::eBVec3, 4, 3, true, "bvec3", "bvec4", "bvec4", true},
    {DataType::eBVec4, 4, 4, true, "bvec4", "bvec4", "bvec4", true},
    {DataType::eInt, 4, 1, true, "int", "int", "ivec4", true},
    {DataType::eIVec2, 8, 2, true, "ivec2", "ivec2", "ivec4", true},
    {DataType::eIVec3, 16, 3, true, "ivec3", "ivec4", "ivec4", true},
    {DataType::eIVec4, 16, 4, true, "ivec4", "ivec4", "ivec4", true},
    {DataType::eUInt, 4, 1, true, "uint", "uint", "uvec4", true},
    {DataType::eUVec2, 8, 2, true, "uvec2", "uvec2", "uvec4", true},
    {DataType::eUVec3, 16, 3, true, "uvec3", "uvec4", "uvec4", true},
    {DataType::eUVec4, 16, 4, true, "uvec4", "uvec4", "uvec4", true},
    {DataType::eFloat, 4, 1, false, "float", "float", "vec4", true},
    {DataType::eVec2, 8, 2, false, "vec2", "vec2", "vec4", true},
    {DataType::eVec3, 16, 3, false, "vec3", "vec4", "vec4", true},
    {DataType::eVec4, 16, 4, false, "vec4", "vec4", "vec4", true},
    {DataType::eMat4, 64, 16, false, "mat4", "mat4", "mat4", false},
};
static_assert(std::size(kDataTypes) == DataType::eMat4 + 1, "one row for each type");

constexpr DataTypeRow kNoType = {DataType::eTexture, 0, 0, false, "", "", "", false};

const DataTypeRow& rowOf(DataType type)
{
    return type < std::size(kDataTypes) ? kDataTypes[type] : kNoType;
}

/// By first component and count.
constexpr const char* kAccessors[4][4] = {
    {".x", ".xy", ".xyz", ".xyzw"}, {".y", ".yz", ".yzw", ""}, {".z", ".zw", "", ""}, {".w", "", "", ""}};

} // namespace

const size_t ParameterMechanism::_dataSizeVec4 = 16;

ParameterMechanism::ParameterMechanism(const QString& planName) : _planName(planName) {}

ParameterMechanism::~ParameterMechanism() = default;

bool ParameterMechanism::useVec4Storage(DataType type) const
{
    return rowOf(type).useVec4Storage;
}

// ---- the properties of the types -----------------------------------------------------------------------------------

size_t ParameterMechanism::dataSize(DataType type)
{
    return rowOf(type).dataSize;
}

size_t ParameterMechanism::numberComponents(DataType type)
{
    return rowOf(type).numberComponents;
}

const char* ParameterMechanism::glslType(DataType type)
{
    return rowOf(type).glslType;
}

const char* ParameterMechanism::glslPaddedType(DataType type)
{
    return rowOf(type).glslPaddedType;
}

const char* ParameterMechanism::glslVec4StorageType(DataType type)
{
    return rowOf(type).glslVec4StorageType;
}

bool ParameterMechanism::isIntegerType(DataType type)
{
    return rowOf(type).isIntegerType;
}

bool ParameterMechanism::compareByDataType(const DataType& a, const DataType& b)
{
    const size_t sizeA = dataSize(a);
    const size_t sizeB = dataSize(b);
    return sizeA != sizeB ? sizeA > sizeB : a > b;
}

// ---- texts ---------------------------------------------------------------------------------------------------------

QString ParameterMechanism::glslAccessorString(size_t component, size_t numComponents)
{
    VRK_ASSERT_RETURN((component + numComponents) <= 4, QString(),
                      "ERROR: Accessor asking for out of range combination. %d+%d", static_cast<int>(component),
                      static_cast<int>(numComponents));
    // The sum of two huge numbers is a small one.
    if (component > 3 || numComponents < 1 || numComponents > 4)
        return QString();
    return QString::fromLatin1(kAccessors[component][numComponents - 1]);
}

QString ParameterMechanism::glslGetter(const QString& member)
{
    return QStringLiteral("get%1%2").arg(member.left(1).toUpper(), member.mid(1));
}

QString ParameterMechanism::glslFunctionHead(DataType type, const QString& member, const QString& arguments)
{
    return QStringLiteral("%1 %2(%3)").arg(QString::fromLatin1(glslType(type)), glslGetter(member), arguments);
}

QString ParameterMechanism::glslIndexedHead(DataType type, const QString& member)
{
    return glslFunctionHead(type, member, QStringLiteral("uint Index"));
}

QString ParameterMechanism::glslOffsetComment(DataType type, size_t offset)
{
    return QStringLiteral(" // off %1 %2 (%3:%4)")
        .arg(dataSize(type))
        .arg(offset)
        .arg(offset >> 4)
        .arg((offset >> 2) & 3);
}

// ---- what a carrier keeps in a collection --------------------------------------------------------------------------

ParameterMechanism::Carried ParameterMechanism::carried(InstanceDataCollection* collection)
{
    return {collection->_data, collection->_dirty, collection->_integerTexture, collection->_floatTexture,
            collection->_usage};
}

void ParameterMechanism::bindTokens(TextureManager* textureManager, InstanceDataCollection* collection)
{
    collection->bindTextureTokens(textureManager);
}

void ParameterMechanism::unbindTokens(TextureManager* textureManager, InstanceDataCollection* collection)
{
    if (textureManager)
        textureManager->unbind(collection->_tokens);
}

} // namespace Harrow::Vrk
