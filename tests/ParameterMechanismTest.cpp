// SPDX-License-Identifier: MIT
//
// What a carrier is asked without OpenGL: the table of types, the order of members, swizzles, and the texts of members
// of every type.
#include "InstanceDataPlanTestTools.h"

#include <algorithm>
#include <cstdint>
#include <limits>
#include <memory>

namespace Harrow::Vrk::Test
{
namespace
{

using Carrier = ParameterMechanism;

QString text(const char* characters)
{
    return QString::fromUtf8(characters);
}

/// A plan "P" with the carrier of the given type.
class Carriers
{
public:
    explicit Carriers(Plan::MechanismType type) : _carrier(_plan.parameterMechanism(type)) {}

    Carrier* operator->() const
    {
        return _carrier;
    }

private:
    Plan _plan{QStringLiteral("P")};
    Carrier* _carrier;
};

// ---- the table of types --------------------------------------------------------------------------------------------

struct TypeRow
{
    Plan::DataType type;
    size_t dataSize;
    size_t numberComponents;
    bool isIntegerType;
    const char* glslType;
    const char* glslPaddedType;
    const char* glslVec4StorageType;
    bool useVec4Storage;
};

const TypeRow kTypes[] = {
    {Plan::eTexture, 8, 2, true, "VrkTextureToken", "VrkTextureToken", "uvec4", true},
    {Plan::eBool, 1, 1, true, "bool", "bool", "bvec4", true},
    {Plan::eBVec2, 2, 2, true, "bvec2", "bvec2", "bvec4", true},
    {Plan::eBVec3, 4, 3, true, "bvec3", "bvec4", "bvec4", true},
    {Plan::eBVec4, 4, 4, true, "bvec4", "bvec4", "bvec4", true},
    {Plan::eInt, 4, 1, true, "int", "int", "ivec4", true},
    {Plan::eIVec2, 8, 2, true, "ivec2", "ivec2", "ivec4", true},
    {Plan::eIVec3, 16, 3, true, "ivec3", "ivec4", "ivec4", true},
    {Plan::eIVec4, 16, 4, true, "ivec4", "ivec4", "ivec4", true},
    {Plan::eUInt, 4, 1, true, "uint", "uint", "uvec4", true},
    {Plan::eUVec2, 8, 2, true, "uvec2", "uvec2", "uvec4", true},
    {Plan::eUVec3, 16, 3, true, "uvec3", "uvec4", "uvec4", true},
    {Plan::eUVec4, 16, 4, true, "uvec4", "uvec4", "uvec4", true},
    {Plan::eFloat, 4, 1, false, "float", "float", "vec4", true},
    {Plan::eVec2, 8, 2, false, "vec2", "vec2", "vec4", true},
    {Plan::eVec3, 16, 3, false, "vec3", "vec4", "vec4", true},
    {Plan::eVec4, 16, 4, false, "vec4", "vec4", "vec4", true},
    {Plan::eMat4, 64, 16, false, "mat4", "mat4", "mat4", false},
};

TEST(ParameterMechanismTest, EachTypeHasItsProperties)
{
    const Carriers block(Plan::eUniformBufferMechanism);
    const Carriers storage(Plan::eStorageBufferMechanism);
    ASSERT_EQ(std::size(kTypes), 18u);
    for (const TypeRow& row : kTypes)
    {
        EXPECT_EQ(Carrier::dataSize(row.type), row.dataSize) << row.type;
        EXPECT_EQ(Carrier::numberComponents(row.type), row.numberComponents) << row.type;
        EXPECT_EQ(Carrier::isIntegerType(row.type), row.isIntegerType) << row.type;
        EXPECT_STREQ(Carrier::glslType(row.type), row.glslType) << row.type;
        EXPECT_STREQ(Carrier::glslPaddedType(row.type), row.glslPaddedType) << row.type;
        EXPECT_STREQ(Carrier::glslVec4StorageType(row.type), row.glslVec4StorageType) << row.type;
        EXPECT_EQ(block->useVec4Storage(row.type), row.useVec4Storage) << row.type;
        EXPECT_EQ(storage->useVec4Storage(row.type), row.useVec4Storage) << row.type;
    }
    EXPECT_EQ(Carrier::_dataSizeVec4, 16u);
}

TEST(ParameterMechanismTest, TexturesAndPlainUniformsUseVec4StorageForNoType)
{
    for (const Plan::MechanismType mechanism :
         {Plan::eUniformMechanism, Plan::eBufferTextureMechanism, Plan::eTextureMechanism})
    {
        const Carriers carrier(mechanism);
        for (const TypeRow& row : kTypes)
            EXPECT_FALSE(carrier->useVec4Storage(row.type)) << kCarrierNames[mechanism] << row.type;
    }
}

TEST(ParameterMechanismTest, AValueOutsideTheEnumerationHasNoProperties)
{
    const Carriers block(Plan::eUniformBufferMechanism);
    for (const unsigned value : {18u, 19u, 0x80000000u, 0xFFFFFFFFu})
    {
        const auto type = static_cast<Plan::DataType>(value);
        EXPECT_EQ(Carrier::dataSize(type), 0u);
        EXPECT_EQ(Carrier::numberComponents(type), 0u);
        EXPECT_FALSE(Carrier::isIntegerType(type));
        EXPECT_STREQ(Carrier::glslType(type), "");
        EXPECT_STREQ(Carrier::glslPaddedType(type), "");
        EXPECT_STREQ(Carrier::glslVec4StorageType(type), "");
        EXPECT_FALSE(block->useVec4Storage(type));
    }
}

TEST(ParameterMechanismTest, TypesAreOrderedBySizeAndThenByTheirNumber)
{
    const QList<Plan::DataType> expected = {Plan::eMat4,    Plan::eVec4,  Plan::eVec3, Plan::eUVec4, Plan::eUVec3,
                                            Plan::eIVec4,   Plan::eIVec3, Plan::eVec2, Plan::eUVec2, Plan::eIVec2,
                                            Plan::eTexture, Plan::eFloat, Plan::eUInt, Plan::eInt,   Plan::eBVec4,
                                            Plan::eBVec3,   Plan::eBVec2, Plan::eBool};
    for (qsizetype a = 0; a < expected.size(); ++a)
        for (qsizetype b = 0; b < expected.size(); ++b)
            EXPECT_EQ(Carrier::compareByDataType(expected[a], expected[b]), a < b) << a << " " << b;
}

// ---- swizzles ------------------------------------------------------------------------------------------------------

QString outOfRange(int component, int count)
{
    return assertionLine(
        text("(component + numComponents) <= 4"),
        QStringLiteral("ERROR: Accessor asking for out of range combination. %1+%2").arg(component).arg(count));
}

TEST(ParameterMechanismTest, ARunOfComponentsHasItsSwizzle)
{
    const char* const expected[4][4] = {{".x", ".xy", ".xyz", ".xyzw"},
                                        {".y", ".yz", ".yzw", nullptr},
                                        {".z", ".zw", nullptr, nullptr},
                                        {".w", nullptr, nullptr, nullptr}};
    for (size_t component = 0; component < 4; ++component)
    {
        for (size_t count = 1; count <= 4; ++count)
        {
            const LogCapture log;
            const char* const swizzle = expected[component][count - 1];
            EXPECT_EQ(Carrier::glslAccessorString(component, count), swizzle ? text(swizzle) : QString());
            EXPECT_EQ(log.messages(), swizzle ? QStringList() : QStringList({outOfRange(int(component), int(count))}))
                << component << " " << count;
        }
    }
}

TEST(ParameterMechanismTest, NoComponentsHaveNoSwizzle)
{
    LogCapture log;
    for (size_t component = 0; component <= 4; ++component)
        EXPECT_EQ(Carrier::glslAccessorString(component, 0), QString());
    EXPECT_EQ(log.messages(), QStringList());
    EXPECT_EQ(Carrier::glslAccessorString(5, 0), QString());
    EXPECT_EQ(log.messages(), QStringList({outOfRange(5, 0)}));
}

TEST(ParameterMechanismTest, MoreThanFourComponentsAreReported)
{
    const LogCapture log;
    EXPECT_EQ(Carrier::glslAccessorString(0, 16), QString());
    EXPECT_EQ(Carrier::glslAccessorString(4, 1), QString());
    EXPECT_EQ(log.messages(), QStringList({outOfRange(0, 16), outOfRange(4, 1)}));
}

TEST(ParameterMechanismTest, ComponentsWhoseSumWrapsAroundHaveNoSwizzle)
{
    const LogCapture log; // the sum fits, so there is nothing to report
    EXPECT_EQ(Carrier::glslAccessorString(SIZE_MAX, 1), QString());
    EXPECT_EQ(Carrier::glslAccessorString(SIZE_MAX - 1, 4), QString());
    EXPECT_EQ(Carrier::glslAccessorString(3, SIZE_MAX), QString());
    EXPECT_EQ(Carrier::glslAccessorString(1, SIZE_MAX), QString());
    EXPECT_EQ(log.messages(), QStringList());
}

// ---- accessors -----------------------------------------------------------------------------------------------------

/// The accessor of a member "m" at offset 32 of a record of 96 bytes.
struct AccessorRow
{
    Plan::DataType type;
    const char* block;
    const char* vec4Block;
    const char* uniform;
    const char* bufferTexture;
    const char* texture;
};

// The lines stand as they are, however long.
// clang-format off
const AccessorRow kAccessors[] = {
    {Plan::eTexture,
     "VrkTextureToken getM(uint Index) { return Ps[ Index].m; }",
     "VrkTextureToken getM(uint Index) { return VrkTextureToken(Ps[ Index]._data32.xy); }  // off 8 32 (2:0)",
     "VrkTextureToken getM(uint Index) { return u_m[Index]; }",
     "VrkTextureToken getM(uint Index) { return VrkTextureToken(texelFetch( u_iPSampler, int( (Index * uint(6)) + uint(2) )).xy); } // off 8 32 (2:0)",
     "VrkTextureToken getM(uint Index) { return VrkTextureToken(texelFetch( u_iPSampler, ivec2( (Index * uint(6)) + uint(2), 0), 0).xy); } // off 8 32 (2:0)"},
    {Plan::eBool,
     "bool getM(uint Index) { return Ps[ Index].m; }",
     "bool getM(uint Index) { return bool(Ps[ Index]._data32.x); }  // off 1 32 (2:0)",
     "bool getM(uint Index) { return u_m[Index]; }",
     "bool getM(uint Index) { return bool(texelFetch( u_iPSampler, int( (Index * uint(6)) + uint(2) )).x); } // off 1 32 (2:0)",
     "bool getM(uint Index) { return bool(texelFetch( u_iPSampler, ivec2( (Index * uint(6)) + uint(2), 0), 0).x); } // off 1 32 (2:0)"},
    {Plan::eBVec2,
     "bvec2 getM(uint Index) { return Ps[ Index].m; }",
     "bvec2 getM(uint Index) { return bvec2(Ps[ Index]._data32.xy); }  // off 2 32 (2:0)",
     "bvec2 getM(uint Index) { return u_m[Index]; }",
     "bvec2 getM(uint Index) { return bvec2(texelFetch( u_iPSampler, int( (Index * uint(6)) + uint(2) )).xy); } // off 2 32 (2:0)",
     "bvec2 getM(uint Index) { return bvec2(texelFetch( u_iPSampler, ivec2( (Index * uint(6)) + uint(2), 0), 0).xy); } // off 2 32 (2:0)"},
    {Plan::eBVec3,
     "bvec3 getM(uint Index) { return Ps[ Index].m.rgb; }",
     "bvec3 getM(uint Index) { return bvec3(Ps[ Index]._data32.xyz); }  // off 4 32 (2:0)",
     "bvec3 getM(uint Index) { return u_m[Index].rgb; }",
     "bvec3 getM(uint Index) { return bvec3(texelFetch( u_iPSampler, int( (Index * uint(6)) + uint(2) )).rgb); } // off 4 32 (2:0)",
     "bvec3 getM(uint Index) { return bvec3(texelFetch( u_iPSampler, ivec2( (Index * uint(6)) + uint(2), 0), 0).rgb); } // off 4 32 (2:0)"},
    {Plan::eBVec4,
     "bvec4 getM(uint Index) { return Ps[ Index].m; }",
     "bvec4 getM(uint Index) { return bvec4(Ps[ Index]._data32.xyzw); }  // off 4 32 (2:0)",
     "bvec4 getM(uint Index) { return u_m[Index]; }",
     "bvec4 getM(uint Index) { return bvec4(texelFetch( u_iPSampler, int( (Index * uint(6)) + uint(2) )).xyzw); } // off 4 32 (2:0)",
     "bvec4 getM(uint Index) { return bvec4(texelFetch( u_iPSampler, ivec2( (Index * uint(6)) + uint(2), 0), 0).xyzw); } // off 4 32 (2:0)"},
    {Plan::eInt,
     "int getM(uint Index) { return Ps[ Index].m; }",
     "int getM(uint Index) { return int(Ps[ Index]._data32.x); }  // off 4 32 (2:0)",
     "int getM(uint Index) { return u_m[Index]; }",
     "int getM(uint Index) { return int(texelFetch( u_iPSampler, int( (Index * uint(6)) + uint(2) )).x); } // off 4 32 (2:0)",
     "int getM(uint Index) { return int(texelFetch( u_iPSampler, ivec2( (Index * uint(6)) + uint(2), 0), 0).x); } // off 4 32 (2:0)"},
    {Plan::eIVec2,
     "ivec2 getM(uint Index) { return Ps[ Index].m; }",
     "ivec2 getM(uint Index) { return ivec2(Ps[ Index]._data32.xy); }  // off 8 32 (2:0)",
     "ivec2 getM(uint Index) { return u_m[Index]; }",
     "ivec2 getM(uint Index) { return ivec2(texelFetch( u_iPSampler, int( (Index * uint(6)) + uint(2) )).xy); } // off 8 32 (2:0)",
     "ivec2 getM(uint Index) { return ivec2(texelFetch( u_iPSampler, ivec2( (Index * uint(6)) + uint(2), 0), 0).xy); } // off 8 32 (2:0)"},
    {Plan::eIVec3,
     "ivec3 getM(uint Index) { return Ps[ Index].m.rgb; }",
     "ivec3 getM(uint Index) { return ivec3(Ps[ Index]._data32.xyz); }  // off 16 32 (2:0)",
     "ivec3 getM(uint Index) { return u_m[Index].rgb; }",
     "ivec3 getM(uint Index) { return ivec3(texelFetch( u_iPSampler, int( (Index * uint(6)) + uint(2) )).rgb); } // off 16 32 (2:0)",
     "ivec3 getM(uint Index) { return ivec3(texelFetch( u_iPSampler, ivec2( (Index * uint(6)) + uint(2), 0), 0).rgb); } // off 16 32 (2:0)"},
    {Plan::eIVec4,
     "ivec4 getM(uint Index) { return Ps[ Index].m; }",
     "ivec4 getM(uint Index) { return ivec4(Ps[ Index]._data32.xyzw); }  // off 16 32 (2:0)",
     "ivec4 getM(uint Index) { return u_m[Index]; }",
     "ivec4 getM(uint Index) { return ivec4(texelFetch( u_iPSampler, int( (Index * uint(6)) + uint(2) )).xyzw); } // off 16 32 (2:0)",
     "ivec4 getM(uint Index) { return ivec4(texelFetch( u_iPSampler, ivec2( (Index * uint(6)) + uint(2), 0), 0).xyzw); } // off 16 32 (2:0)"},
    {Plan::eUInt,
     "uint getM(uint Index) { return Ps[ Index].m; }",
     "uint getM(uint Index) { return uint(Ps[ Index]._data32.x); }  // off 4 32 (2:0)",
     "uint getM(uint Index) { return u_m[Index]; }",
     "uint getM(uint Index) { return uint(texelFetch( u_iPSampler, int( (Index * uint(6)) + uint(2) )).x); } // off 4 32 (2:0)",
     "uint getM(uint Index) { return uint(texelFetch( u_iPSampler, ivec2( (Index * uint(6)) + uint(2), 0), 0).x); } // off 4 32 (2:0)"},
    {Plan::eUVec2,
     "uvec2 getM(uint Index) { return Ps[ Index].m; }",
     "uvec2 getM(uint Index) { return uvec2(Ps[ Index]._data32.xy); }  // off 8 32 (2:0)",
     "uvec2 getM(uint Index) { return u_m[Index]; }",
     "uvec2 getM(uint Index) { return uvec2(texelFetch( u_iPSampler, int( (Index * uint(6)) + uint(2) )).xy); } // off 8 32 (2:0)",
     "uvec2 getM(uint Index) { return uvec2(texelFetch( u_iPSampler, ivec2( (Index * uint(6)) + uint(2), 0), 0).xy); } // off 8 32 (2:0)"},
    {Plan::eUVec3,
     "uvec3 getM(uint Index) { return Ps[ Index].m.rgb; }",
     "uvec3 getM(uint Index) { return uvec3(Ps[ Index]._data32.xyz); }  // off 16 32 (2:0)",
     "uvec3 getM(uint Index) { return u_m[Index].rgb; }",
     "uvec3 getM(uint Index) { return uvec3(texelFetch( u_iPSampler, int( (Index * uint(6)) + uint(2) )).rgb); } // off 16 32 (2:0)",
     "uvec3 getM(uint Index) { return uvec3(texelFetch( u_iPSampler, ivec2( (Index * uint(6)) + uint(2), 0), 0).rgb); } // off 16 32 (2:0)"},
    {Plan::eUVec4,
     "uvec4 getM(uint Index) { return Ps[ Index].m; }",
     "uvec4 getM(uint Index) { return uvec4(Ps[ Index]._data32.xyzw); }  // off 16 32 (2:0)",
     "uvec4 getM(uint Index) { return u_m[Index]; }",
     "uvec4 getM(uint Index) { return uvec4(texelFetch( u_iPSampler, int( (Index * uint(6)) + uint(2) )).xyzw); } // off 16 32 (2:0)",
     "uvec4 getM(uint Index) { return uvec4(texelFetch( u_iPSampler, ivec2( (Index * uint(6)) + uint(2), 0), 0).xyzw); } // off 16 32 (2:0)"},
    {Plan::eFloat,
     "float getM(uint Index) { return Ps[ Index].m; }",
     "float getM(uint Index) { return float(Ps[ Index]._data32.x); }  // off 4 32 (2:0)",
     "float getM(uint Index) { return u_m[Index]; }",
     "float getM(uint Index) { return float(texelFetch( u_fPSampler, int( (Index * uint(6)) + uint(2) )).x); } // off 4 32 (2:0)",
     "float getM(uint Index) { return float(texelFetch( u_fPSampler, ivec2( (Index * uint(6)) + uint(2), 0), 0).x); } // off 4 32 (2:0)"},
    {Plan::eVec2,
     "vec2 getM(uint Index) { return Ps[ Index].m; }",
     "vec2 getM(uint Index) { return vec2(Ps[ Index]._data32.xy); }  // off 8 32 (2:0)",
     "vec2 getM(uint Index) { return u_m[Index]; }",
     "vec2 getM(uint Index) { return vec2(texelFetch( u_fPSampler, int( (Index * uint(6)) + uint(2) )).xy); } // off 8 32 (2:0)",
     "vec2 getM(uint Index) { return vec2(texelFetch( u_fPSampler, ivec2( (Index * uint(6)) + uint(2), 0), 0).xy); } // off 8 32 (2:0)"},
    {Plan::eVec3,
     "vec3 getM(uint Index) { return Ps[ Index].m.rgb; }",
     "vec3 getM(uint Index) { return vec3(Ps[ Index]._data32.xyz); }  // off 16 32 (2:0)",
     "vec3 getM(uint Index) { return u_m[Index].rgb; }",
     "vec3 getM(uint Index) { return vec3(texelFetch( u_fPSampler, int( (Index * uint(6)) + uint(2) )).rgb); } // off 16 32 (2:0)",
     "vec3 getM(uint Index) { return vec3(texelFetch( u_fPSampler, ivec2( (Index * uint(6)) + uint(2), 0), 0).rgb); } // off 16 32 (2:0)"},
    {Plan::eVec4,
     "vec4 getM(uint Index) { return Ps[ Index].m; }",
     "vec4 getM(uint Index) { return vec4(Ps[ Index]._data32.xyzw); }  // off 16 32 (2:0)",
     "vec4 getM(uint Index) { return u_m[Index]; }",
     "vec4 getM(uint Index) { return vec4(texelFetch( u_fPSampler, int( (Index * uint(6)) + uint(2) )).xyzw); } // off 16 32 (2:0)",
     "vec4 getM(uint Index) { return vec4(texelFetch( u_fPSampler, ivec2( (Index * uint(6)) + uint(2), 0), 0).xyzw); } // off 16 32 (2:0)"},
    {Plan::eMat4,
     "mat4 getM(uint Index) { return Ps[ Index].m; }",
     "mat4 getM(uint Index) { return Ps[ Index].m; }",
     "mat4 getM(uint Index) { return u_m[Index]; }",
     "mat4 getM(uint Index) { return mat4(texelFetch( u_fPSampler, int( (Index * uint(6)) + uint(2) )).xyzw,\n"
     "texelFetch( u_fPSampler, int( (Index * uint(6)) + uint(3) )).xyzw,\n"
     "texelFetch( u_fPSampler, int( (Index * uint(6)) + uint(4) )).xyzw,\n"
     "texelFetch( u_fPSampler, int( (Index * uint(6)) + uint(5) )).xyzw); } // off 64 32 (2:0)",
     "mat4 getM(uint Index) { return mat4(texelFetch( u_fPSampler, ivec2( (Index * uint(6)) + uint(2), 0), 0).xyzw,\n"
     "texelFetch( u_fPSampler, ivec2( (Index * uint(6)) + uint(3), 0), 0).xyzw,\n"
     "texelFetch( u_fPSampler, ivec2( (Index * uint(6)) + uint(4), 0), 0).xyzw,\n"
     "texelFetch( u_fPSampler, ivec2( (Index * uint(6)) + uint(5), 0), 0).xyzw); } // off 64 32 (2:0)"},
};
// clang-format on

TEST(ParameterMechanismTest, EachTypeHasItsAccessorUnderEachCarrier)
{
    ASSERT_EQ(std::size(kAccessors), 18u);
    const QString m = text("m");
    const Carriers block(Plan::eUniformBufferMechanism);
    const Carriers storage(Plan::eStorageBufferMechanism);
    const Carriers uniform(Plan::eUniformMechanism);
    const Carriers bufferTexture(Plan::eBufferTextureMechanism);
    const Carriers texture(Plan::eTextureMechanism);
    const LogCapture log;
    for (unsigned number = 0; number < 18; ++number)
    {
        const AccessorRow& row = kAccessors[number];
        ASSERT_EQ(static_cast<unsigned>(row.type), number);
        EXPECT_EQ(block->glslFunctionDefinition(row.type, m, false, 32, 96), text(row.block));
        EXPECT_EQ(storage->glslFunctionDefinition(row.type, m, false, 32, 96), text(row.block));
        EXPECT_EQ(block->glslFunctionDefinition(row.type, m, true, 32, 96), text(row.vec4Block));
        EXPECT_EQ(storage->glslFunctionDefinition(row.type, m, true, 32, 96), text(row.vec4Block));
        for (const bool vec4 : {false, true})
        {
            EXPECT_EQ(uniform->glslFunctionDefinition(row.type, m, vec4, 32, 96), text(row.uniform));
            EXPECT_EQ(bufferTexture->glslFunctionDefinition(row.type, m, vec4, 32, 96), text(row.bufferTexture));
            EXPECT_EQ(texture->glslFunctionDefinition(row.type, m, vec4, 32, 96), text(row.texture));
        }
    }
    EXPECT_EQ(log.messages(), QStringList());
}

TEST(ParameterMechanismTest, AFloatAtTwentyReadsTheSecondComponentOfItsVector)
{
    const Carriers block(Plan::eUniformBufferMechanism);
    EXPECT_EQ(block->glslFunctionDefinition(Plan::eFloat, text("f"), true, 20, 48),
              text("float getF(uint Index) { return float(Ps[ Index]._data16.y); }  // off 4 20 (1:1)"));
}

TEST(ParameterMechanismTest, EachPlaceInAVectorHasItsSwizzle)
{
    const Carriers block(Plan::eUniformBufferMechanism);
    const char* const one[] = {"_data16.x", "_data16.y", "_data16.z", "_data16.w"};
    for (size_t component = 0; component < 4; ++component)
        EXPECT_TRUE(block->glslFunctionDefinition(Plan::eInt, text("i"), true, 16 + 4 * component, 48)
                        .contains(text(one[component])));
    EXPECT_TRUE(block->glslFunctionDefinition(Plan::eVec2, text("v"), true, 24, 48).contains(text("_data16.zw);")));
}

TEST(ParameterMechanismTest, AVectorOfThreeAtSixteenReadsTheSecondTexel)
{
    const Carriers texture(Plan::eTextureMechanism);
    EXPECT_EQ(
        texture->glslFunctionDefinition(Plan::eVec3, text("v"), false, 16, 32),
        text("vec3 getV(uint Index) { return vec3(texelFetch( u_fPSampler, ivec2( (Index * uint(2)) + uint(1), 0), "
             "0).rgb); } // off 16 16 (1:0)"));
}

TEST(ParameterMechanismTest, ATokenAtEightReadsTheUpperHalfOfTheFirstTexelThroughTheIntegerSampler)
{
    const Carriers texture(Plan::eTextureMechanism);
    EXPECT_EQ(texture->glslFunctionDefinition(Plan::eTexture, text("t"), false, 8, 16),
              text("VrkTextureToken getT(uint Index) { return VrkTextureToken(texelFetch( u_iPSampler, ivec2( (Index * "
                   "uint(1)) + uint(0), 0), 0).zw); } // off 8 8 (0:2)"));
    const Carriers bufferTexture(Plan::eBufferTextureMechanism);
    EXPECT_EQ(bufferTexture->glslFunctionDefinition(Plan::eTexture, text("t"), false, 8, 16),
              text("VrkTextureToken getT(uint Index) { return VrkTextureToken(texelFetch( u_iPSampler, int( (Index * "
                   "uint(1)) + uint(0) )).zw); } // off 8 8 (0:2)"));
}

TEST(ParameterMechanismTest, AMemberThatCrossesATexelIsReported)
{
    // Four booleans take four bytes but are read as four components.
    const Carriers texture(Plan::eTextureMechanism);
    const LogCapture log;
    EXPECT_EQ(texture->glslFunctionDefinition(Plan::eBVec4, text("b"), false, 4, 16),
              text("bvec4 getB(uint Index) { return bvec4(texelFetch( u_iPSampler, ivec2( (Index * uint(1)) + uint(0), "
                   "0), 0)); } // off 4 4 (0:1)"));
    EXPECT_EQ(log.messages(), QStringList({outOfRange(1, 4)}));
}

// ---- declarations --------------------------------------------------------------------------------------------------

/// One member of each type, "m0" to "m17" by the type's number, in the order in which they lie.
QList<Plan::DataType> allTypes()
{
    QList<Plan::DataType> types;
    for (const TypeRow& row : kTypes)
        types.append(row.type);
    std::sort(types.begin(), types.end(), Carrier::compareByDataType);
    return types;
}

QHash<Plan::DataType, QList<QString>> allMembers()
{
    QHash<Plan::DataType, QList<QString>> members;
    for (const TypeRow& row : kTypes)
        members[row.type].append(QStringLiteral("m%1").arg(row.type));
    return members;
}

TEST(ParameterMechanismTest, ABlockDeclaresEachTypePaddedToWholeVectors)
{
    const char* const lines = "struct P\n{\n  mat4 m17;\n  vec4 m16;\n  vec4 m15;\n  uvec4 m12;\n  uvec4 m11;\n"
                              "  ivec4 m8;\n  ivec4 m7;\n  vec2 m14;\n  uvec2 m10;\n  ivec2 m6;\n"
                              "  VrkTextureToken m0;\n  float m13;\n  uint m9;\n  int m5;\n  bvec4 m4;\n  bvec4 m3;\n"
                              "  bvec2 m2;\n  bool m1;\n  float _dummy216;\n  float _dummy220;\n};\n\n";
    const Carriers block(Plan::eUniformBufferMechanism);
    EXPECT_EQ(block->glslUniformDeclaration(allTypes(), allMembers(), false, 9),
              text(lines) + text("layout (std140) uniform u_PUniform{\n  P Ps[9];\n};"));
    const Carriers storage(Plan::eStorageBufferMechanism);
    EXPECT_EQ(storage->glslUniformDeclaration(allTypes(), allMembers(), false, 9),
              text(lines) + text("layout (std140) buffer u_PUniform{\n  P Ps[/*9*/];\n};"));
}

TEST(ParameterMechanismTest, ABlockWithVec4StorageDeclaresVectorsOfEachType)
{
    const char* const lines =
        "struct P\n{\n  mat4 m17;\n  vec4 _data64;\n  vec4 _data80;\n  uvec4 _data96;\n  uvec4 _data112;\n"
        "  ivec4 _data128;\n  ivec4 _data144;\n  vec4 _data160;\n  uvec4 _data176;\n  ivec4 _data192;\n"
        "  uvec4 _data208;\n  vec4 _data224;\n  uvec4 _data240;\n  ivec4 _data256;\n  bvec4 _data272;\n"
        "  bvec4 _data288;\n  bvec4 _data304;\n  bvec4 _data320;\n};\n\n";
    const Carriers block(Plan::eUniformBufferMechanism);
    EXPECT_EQ(block->glslUniformDeclaration(allTypes(), allMembers(), true, 9),
              text(lines) + text("layout (std140) uniform u_PUniform{\n  P Ps[9];\n};"));
    const Carriers storage(Plan::eStorageBufferMechanism);
    EXPECT_EQ(storage->glslUniformDeclaration(allTypes(), allMembers(), true, 9),
              text(lines) + text("layout (std140) buffer u_PUniform{\n  P Ps[/*9*/];\n};"));
}

TEST(ParameterMechanismTest, AGroupOfManyMembersTakesAsManyVectorsAsItNeeds)
{
    const Carriers block(Plan::eUniformBufferMechanism);
    QList<QString> floats;
    const int vectors[] = {0, 1, 1, 1, 1, 2, 2, 2, 2, 3};
    for (int count = 1; count <= 9; ++count)
    {
        floats.append(QStringLiteral("f%1").arg(count));
        const QString declared = block->glslUniformDeclaration({Plan::eFloat}, {{Plan::eFloat, floats}}, true, 1);
        EXPECT_EQ(declared.count(text("  vec4 _data")), vectors[count]) << declared.toStdString();
        EXPECT_FALSE(declared.contains(text("_dummy")));
    }
}

TEST(ParameterMechanismTest, MembersOfOneTypeAreDeclaredInTheirOrder)
{
    const QHash<Plan::DataType, QList<QString>> members = {{Plan::eFloat, {text("z"), text("a"), text("m")}}};
    const Carriers block(Plan::eUniformBufferMechanism);
    EXPECT_EQ(block->glslUniformDeclaration({Plan::eFloat}, members, false, 2),
              text("struct P\n{\n  float z;\n  float a;\n  float m;\n  float _dummy12;\n};\n\n"
                   "layout (std140) uniform u_PUniform{\n  P Ps[2];\n};"));
    const Carriers uniform(Plan::eUniformMechanism);
    EXPECT_EQ(uniform->glslUniformDeclaration({Plan::eFloat}, members, false, 2),
              text("uniform float u_z[2];\nuniform float u_a[2];\nuniform float u_m[2];"));
}

TEST(ParameterMechanismTest, PlainUniformsDeclareAnArrayForEachMember)
{
    const Carriers uniform(Plan::eUniformMechanism);
    const QString expected =
        text("uniform mat4 u_m17[9];\nuniform vec4 u_m16[9];\nuniform vec4 u_m15[9];\nuniform uvec4 u_m12[9];\n"
             "uniform uvec4 u_m11[9];\nuniform ivec4 u_m8[9];\nuniform ivec4 u_m7[9];\nuniform vec2 u_m14[9];\n"
             "uniform uvec2 u_m10[9];\nuniform ivec2 u_m6[9];\nuniform VrkTextureToken u_m0[9];\n"
             "uniform float u_m13[9];\nuniform uint u_m9[9];\nuniform int u_m5[9];\nuniform bvec4 u_m4[9];\n"
             "uniform bvec4 u_m3[9];\nuniform bvec2 u_m2[9];\nuniform bool u_m1[9];");
    EXPECT_EQ(uniform->glslUniformDeclaration(allTypes(), allMembers(), false, 9), expected);
    EXPECT_EQ(uniform->glslUniformDeclaration(allTypes(), allMembers(), true, 9), expected);
}

TEST(ParameterMechanismTest, TexturesDeclareTheirTwoSamplersWhateverTheMembers)
{
    const Carriers texture(Plan::eTextureMechanism);
    const Carriers bufferTexture(Plan::eBufferTextureMechanism);
    const QString samplers = text("uniform sampler2D u_fPSampler;\nuniform isampler2D u_iPSampler;\n");
    const QString buffers = text("uniform samplerBuffer u_fPSampler;\nuniform isamplerBuffer u_iPSampler;\n");
    for (const bool vec4 : {false, true})
    {
        EXPECT_EQ(texture->glslUniformDeclaration({}, {}, vec4, 9), samplers);
        EXPECT_EQ(texture->glslUniformDeclaration(allTypes(), allMembers(), vec4, 9), samplers);
        EXPECT_EQ(bufferTexture->glslUniformDeclaration({}, {}, vec4, 9), buffers);
        EXPECT_EQ(bufferTexture->glslUniformDeclaration(allTypes(), allMembers(), vec4, 9), buffers);
    }
}

TEST(ParameterMechanismTest, ABlockWithoutMembersHasNoDeclaration)
{
    for (const Plan::MechanismType mechanism : {Plan::eUniformBufferMechanism, Plan::eStorageBufferMechanism})
        for (const bool vec4 : {false, true})
            EXPECT_EQ(Carriers(mechanism)->glslUniformDeclaration({}, {}, vec4, 9), QString());
}

TEST(ParameterMechanismTest, BooleansAreFollowedByWholeNumbersUpToTheVectorsEnd)
{
    const Carriers block(Plan::eUniformBufferMechanism);
    EXPECT_EQ(block->glslUniformDeclaration({Plan::eBool}, {{Plan::eBool, {text("b")}}}, false, 2),
              text("struct P\n{\n  bool b;\n  float _dummy4;\n  float _dummy8;\n  float _dummy12;\n};\n\n"
                   "layout (std140) uniform u_PUniform{\n  P Ps[2];\n};"));
    EXPECT_EQ(block->glslUniformDeclaration({Plan::eBVec2}, {{Plan::eBVec2, {text("a"), text("b")}}}, false, 2),
              text("struct P\n{\n  bvec2 a;\n  bvec2 b;\n  float _dummy4;\n  float _dummy8;\n  float _dummy12;\n};\n\n"
                   "layout (std140) uniform u_PUniform{\n  P Ps[2];\n};"));
}

TEST(ParameterMechanismTest, PlainUniformsOfAnUnknownTypeAreReportedAndNotDeclared)
{
    const auto odd = static_cast<Plan::DataType>(18);
    const Carriers uniform(Plan::eUniformMechanism);
    const LogCapture log;
    EXPECT_EQ(uniform->glslUniformDeclaration({odd}, {{odd, {text("m")}}}, false, 2), QString());
    EXPECT_EQ(log.messages(),
              QStringList({assertionLine(text("type < std::size(kSends)"), text("Unknown type 18 in plan 'P'"))}));
}

} // namespace
} // namespace Harrow::Vrk::Test
