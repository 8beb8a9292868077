// SPDX-License-Identifier: MIT
//
// The GLSL that a plan writes, character by character: header and unit under each carrier.
#include "InstanceDataPlanTestTools.h"

namespace Harrow::Vrk::Test
{
namespace
{

class InstanceDataPlanTextTest : public WithPlans<FakeDriverTest>
{
};

QString text(const char* characters)
{
    return QString::fromUtf8(characters);
}

const char* const kFooHeader = R"(#ifndef VRK_INSTANCEDATAPLAN_Foo_GLSLH
#define VRK_INSTANCEDATAPLAN_Foo_GLSLH
#include "TextureManager.glslh"
mat4 getModelMatrix(uint Index);
mat4 getModelMatrix(void);
vec3 getColor(uint Index);
vec3 getColor(void);
VrkTextureToken getTex(uint Index);
VrkTextureToken getTex(void);
float getAlpha(uint Index);
float getAlpha(void);
#define FOO_ARRAY_SIZE 150
#endif // VRK_INSTANCEDATAPLAN_Foo_GLSLH
)";

const char* const kUniformBlockUnit = R"(#version 150

#include "TextureManager.glslh"
#include "VrkUtilities.glslh"

struct Foo
{
  mat4 modelMatrix;
  vec4 color;
  VrkTextureToken tex;
  float alpha;
  float _dummy92;
};

layout (std140) uniform u_FooUniform{
  Foo Foos[150];
};

mat4 getModelMatrix(uint Index) { return Foos[ Index].modelMatrix; }
mat4 getModelMatrix(void)       { return getModelMatrix( uint(getDrawID())); }

vec3 getColor(uint Index) { return Foos[ Index].color.rgb; }
vec3 getColor(void)       { return getColor( uint(getDrawID())); }

VrkTextureToken getTex(uint Index) { return Foos[ Index].tex; }
VrkTextureToken getTex(void)       { return getTex( uint(getDrawID())); }

float getAlpha(uint Index) { return Foos[ Index].alpha; }
float getAlpha(void)       { return getAlpha( uint(getDrawID())); }

)";

const char* const kUniformBlockVec4Unit = R"(#version 150

#include "TextureManager.glslh"
#include "VrkUtilities.glslh"

struct Foo
{
  mat4 modelMatrix;
  vec4 _data64;
  uvec4 _data80;
  vec4 _data96;
};

layout (std140) uniform u_FooUniform{
  Foo Foos[150];
};

mat4 getModelMatrix(uint Index) { return Foos[ Index].modelMatrix; }
mat4 getModelMatrix(void)       { return getModelMatrix( uint(getDrawID())); }

vec3 getColor(uint Index) { return vec3(Foos[ Index]._data64.xyz); }  // off 16 64 (4:0)
vec3 getColor(void)       { return getColor( uint(getDrawID())); }

VrkTextureToken getTex(uint Index) { return VrkTextureToken(Foos[ Index]._data80.xy); }  // off 8 80 (5:0)
VrkTextureToken getTex(void)       { return getTex( uint(getDrawID())); }

float getAlpha(uint Index) { return float(Foos[ Index]._data96.x); }  // off 4 96 (6:0)
float getAlpha(void)       { return getAlpha( uint(getDrawID())); }

)";

const char* const kUniformUnit = R"(#version 150

#include "TextureManager.glslh"
#include "VrkUtilities.glslh"

uniform mat4 u_modelMatrix[150];
uniform vec4 u_color[150];
uniform VrkTextureToken u_tex[150];
uniform float u_alpha[150];

mat4 getModelMatrix(uint Index) { return u_modelMatrix[Index]; }
mat4 getModelMatrix(void)       { return getModelMatrix( uint(getDrawID())); }

vec3 getColor(uint Index) { return u_color[Index].rgb; }
vec3 getColor(void)       { return getColor( uint(getDrawID())); }

VrkTextureToken getTex(uint Index) { return u_tex[Index]; }
VrkTextureToken getTex(void)       { return getTex( uint(getDrawID())); }

float getAlpha(uint Index) { return u_alpha[Index]; }
float getAlpha(void)       { return getAlpha( uint(getDrawID())); }

)";

// The lines stand as they are, however long.
// clang-format off
const char* const kBufferTextureUnit = R"(#version 150

#include "TextureManager.glslh"
#include "VrkUtilities.glslh"

uniform samplerBuffer u_fFooSampler;
uniform isamplerBuffer u_iFooSampler;


mat4 getModelMatrix(uint Index) { return mat4(texelFetch( u_fFooSampler, int( (Index * uint(6)) + uint(0) )).xyzw,
texelFetch( u_fFooSampler, int( (Index * uint(6)) + uint(1) )).xyzw,
texelFetch( u_fFooSampler, int( (Index * uint(6)) + uint(2) )).xyzw,
texelFetch( u_fFooSampler, int( (Index * uint(6)) + uint(3) )).xyzw); } // off 64 0 (0:0)
mat4 getModelMatrix(void)       { return getModelMatrix( uint(getDrawID())); }

vec3 getColor(uint Index) { return vec3(texelFetch( u_fFooSampler, int( (Index * uint(6)) + uint(4) )).rgb); } // off 16 64 (4:0)
vec3 getColor(void)       { return getColor( uint(getDrawID())); }

VrkTextureToken getTex(uint Index) { return VrkTextureToken(texelFetch( u_iFooSampler, int( (Index * uint(6)) + uint(5) )).xy); } // off 8 80 (5:0)
VrkTextureToken getTex(void)       { return getTex( uint(getDrawID())); }

float getAlpha(uint Index) { return float(texelFetch( u_fFooSampler, int( (Index * uint(6)) + uint(5) )).z); } // off 4 88 (5:2)
float getAlpha(void)       { return getAlpha( uint(getDrawID())); }

)";

const char* const kTextureUnit = R"(#version 150

#include "TextureManager.glslh"
#include "VrkUtilities.glslh"

uniform sampler2D u_fFooSampler;
uniform isampler2D u_iFooSampler;


mat4 getModelMatrix(uint Index) { return mat4(texelFetch( u_fFooSampler, ivec2( (Index * uint(6)) + uint(0), 0), 0).xyzw,
texelFetch( u_fFooSampler, ivec2( (Index * uint(6)) + uint(1), 0), 0).xyzw,
texelFetch( u_fFooSampler, ivec2( (Index * uint(6)) + uint(2), 0), 0).xyzw,
texelFetch( u_fFooSampler, ivec2( (Index * uint(6)) + uint(3), 0), 0).xyzw); } // off 64 0 (0:0)
mat4 getModelMatrix(void)       { return getModelMatrix( uint(getDrawID())); }

vec3 getColor(uint Index) { return vec3(texelFetch( u_fFooSampler, ivec2( (Index * uint(6)) + uint(4), 0), 0).rgb); } // off 16 64 (4:0)
vec3 getColor(void)       { return getColor( uint(getDrawID())); }

VrkTextureToken getTex(uint Index) { return VrkTextureToken(texelFetch( u_iFooSampler, ivec2( (Index * uint(6)) + uint(5), 0), 0).xy); } // off 8 80 (5:0)
VrkTextureToken getTex(void)       { return getTex( uint(getDrawID())); }

float getAlpha(uint Index) { return float(texelFetch( u_fFooSampler, ivec2( (Index * uint(6)) + uint(5), 0), 0).z); } // off 4 88 (5:2)
float getAlpha(void)       { return getAlpha( uint(getDrawID())); }

)";
// clang-format on

/// A unit under the uniform block as it is under the storage block.
QString asStorage(const char* unit, const char* versionLines)
{
    return text(unit)
        .replace(text("#version 150\n"), text(versionLines))
        .replace(text("layout (std140) uniform u_FooUniform{\n  Foo Foos[150];\n"),
                 text("layout (std140) buffer u_FooUniform{\n  Foo Foos[/*150*/];\n"));
}

struct Case
{
    Plan::MechanismType mechanism;
    bool useVec4Storage;
    QString unit;
};

const Case kCases[] = {
    {Plan::eUniformBufferMechanism, false, text(kUniformBlockUnit)},
    {Plan::eUniformBufferMechanism, true, text(kUniformBlockVec4Unit)},
    {Plan::eUniformMechanism, false, text(kUniformUnit)},
    {Plan::eUniformMechanism, true, text(kUniformUnit)},
    {Plan::eBufferTextureMechanism, false, text(kBufferTextureUnit)},
    {Plan::eBufferTextureMechanism, true, text(kBufferTextureUnit)},
    {Plan::eTextureMechanism, false, text(kTextureUnit)},
    {Plan::eTextureMechanism, true, text(kTextureUnit)},
    {Plan::eStorageBufferMechanism, false, asStorage(kUniformBlockUnit, "#version 430\n")},
    {Plan::eStorageBufferMechanism, true, asStorage(kUniformBlockVec4Unit, "#version 430\n")},
};

TEST_F(InstanceDataPlanTextTest, TheWorkedExampleUnderEveryCarrier)
{
    for (const Case& expected : kCases)
    {
        const LogCapture log;
        const Plan* const plan = registeredPlan("Foo", kFooMembers, expected.mechanism, expected.useVec4Storage);
        EXPECT_EQ(plan->glslh(), text(kFooHeader)) << kCarrierNames[expected.mechanism];
        EXPECT_EQ(plan->glslc(), expected.unit) << plan->glslc().toStdString();
        EXPECT_EQ(log.texts(QtCriticalMsg), QStringList());
        clearPlans();
    }
}

TEST_F(InstanceDataPlanTextTest, AStorageBlockIsDeclaredWithoutASize)
{
    const QString unit = registeredPlan("Foo", {{Plan::eVec4, "v"}}, Plan::eStorageBufferMechanism)->glslc();
    EXPECT_EQ(unit, text("#version 430\n\n#include \"VrkUtilities.glslh\"\n\n"
                         "struct Foo\n{\n  vec4 v;\n};\n\n"
                         "layout (std140) buffer u_FooUniform{\n  Foo Foos[/*150*/];\n};\n\n"
                         "vec4 getV(uint Index) { return Foos[ Index].v; }\n"
                         "vec4 getV(void)       { return getV( uint(getDrawID())); }\n\n"));
}

// ---- the version of a unit -----------------------------------------------------------------------------------------

TEST_F(InstanceDataPlanTextTest, AStorageUnitSaysFourThirtyFromOpenGLFourThreeOn)
{
    for (const auto& [major, minor] : {std::pair{4, 3}, std::pair{4, 6}, std::pair{5, 0}})
    {
        driver.setVersion(major, minor);
        EXPECT_EQ(registeredPlan("Foo", kFooMembers, Plan::eStorageBufferMechanism)->glslc(),
                  asStorage(kUniformBlockUnit, "#version 430\n"));
    }
}

TEST_F(InstanceDataPlanTextTest, AStorageUnitBelowFourThreeEnablesTheExtension)
{
    driver.setVersion(4, 2);
    driver.setExtensions({"GL_ARB_shader_storage_buffer_object"});
    EXPECT_EQ(registeredPlan("Foo", kFooMembers, Plan::eStorageBufferMechanism)->glslc(),
              asStorage(kUniformBlockUnit, "#version 150\n#extension GL_ARB_shader_storage_buffer_object: enable \n"));
}

TEST_F(InstanceDataPlanTextTest, AStorageUnitWithoutAnySupportSaysOneFifty)
{
    driver.setVersion(3, 2);
    EXPECT_EQ(registeredPlan("Foo", kFooMembers, Plan::eStorageBufferMechanism)->glslc(),
              asStorage(kUniformBlockUnit, "#version 150\n"));
}

TEST_F(InstanceDataPlanTextTest, OtherUnitsSayOneFiftyOnEveryDriver)
{
    driver.setVersion(4, 2);
    driver.setExtensions({"GL_ARB_shader_storage_buffer_object"});
    for (const Case& expected : kCases)
    {
        if (expected.mechanism == Plan::eStorageBufferMechanism)
            continue;
        EXPECT_EQ(registeredPlan("Foo", kFooMembers, expected.mechanism, expected.useVec4Storage)->glslc(),
                  expected.unit);
    }
}

// ---- names ---------------------------------------------------------------------------------------------------------

TEST_F(InstanceDataPlanTextTest, BlanksInANameAreUnderscoresInTheMacroAlone)
{
    const QString header = registeredPlan("My own Plan", {{Plan::eFloat, "x"}})->glslh();
    EXPECT_EQ(header, text("#ifndef VRK_INSTANCEDATAPLAN_My own Plan_GLSLH\n"
                           "#define VRK_INSTANCEDATAPLAN_My own Plan_GLSLH\n"
                           "float getX(uint Index);\nfloat getX(void);\n"
                           "#define MY_OWN_PLAN_ARRAY_SIZE 150\n"
                           "#endif // VRK_INSTANCEDATAPLAN_My own Plan_GLSLH\n"));
    EXPECT_TRUE(registeredPlan("My Plan", {})->glslh().contains(text("\n#define MY_PLAN_ARRAY_SIZE 150\n")));
}

TEST_F(InstanceDataPlanTextTest, AMemberHasTheFirstLetterOfItsGetterInUpperCase)
{
    const std::pair<const char*, const char*> cases[] = {{"x", "getX"},
                                                         {"worldMatrix", "getWorldMatrix"},
                                                         {"World", "getWorld"},
                                                         {"_low", "get_low"},
                                                         {"a1B", "getA1B"}};
    for (const auto& [member, getter] : cases)
    {
        const Plan* const plan = registeredPlan("P", {{Plan::eUInt, member}});
        EXPECT_TRUE(
            plan->glslh().contains(QStringLiteral("\nuint %1(uint Index);\nuint %1(void);\n").arg(text(getter))))
            << plan->glslh().toStdString();
        EXPECT_TRUE(plan->glslc().contains(QStringLiteral("\nuint %1(uint Index) { return Ps[ Index].%2; }\n"
                                                          "uint %1(void)       { return %1( uint(getDrawID())); }\n\n")
                                               .arg(text(getter), text(member))))
            << plan->glslc().toStdString();
        clearPlans();
    }
}

TEST_F(InstanceDataPlanTextTest, NumbersBehindAPercentSignAreNotFilledIn)
{
    const Plan* const plan = registeredPlan("%2", {{Plan::eVec3, "%3"}});
    EXPECT_TRUE(plan->glslc().contains(text("struct %2\n{\n  vec4 %3;\n};\n\n"
                                            "layout (std140) uniform u_%2Uniform{\n  %2 %2s[150];\n};\n")))
        << plan->glslc().toStdString();
    EXPECT_TRUE(plan->glslc().contains(text("\nvec3 get%3(uint Index) { return %2s[ Index].%3.rgb; }\n")));
}

// ---- texture tokens, empty plans, sizes ----------------------------------------------------------------------------

TEST_F(InstanceDataPlanTextTest, OnlyAPlanWithTokensIncludesTheTextureManager)
{
    const QString include = text("#include \"TextureManager.glslh\"\n");
    for (const Plan::MechanismType mechanism : kCarriers)
    {
        const Plan* const without = registeredPlan("P", {{Plan::eUVec2, "u"}}, mechanism);
        EXPECT_FALSE(without->glslh().contains(include)) << kCarrierNames[mechanism];
        EXPECT_FALSE(without->glslc().contains(include)) << kCarrierNames[mechanism];
        EXPECT_TRUE(without->glslc().contains(text("\n\n#include \"VrkUtilities.glslh\"\n\n")));
        const Plan* const with = registeredPlan("Q", {{Plan::eUVec2, "u"}, {Plan::eTexture, "t"}}, mechanism);
        EXPECT_EQ(with->glslh().count(include), 1) << kCarrierNames[mechanism];
        EXPECT_EQ(with->glslc().count(include), 1) << kCarrierNames[mechanism];
    }
}

TEST_F(InstanceDataPlanTextTest, AnEmptyPlanHasNoDeclarationUnderTheBlocksAndPlainUniforms)
{
    const std::pair<Plan::MechanismType, const char*> cases[] = {
        {Plan::eUniformBufferMechanism, "#version 150\n\n#include \"VrkUtilities.glslh\"\n\n\n\n"},
        {Plan::eUniformMechanism, "#version 150\n\n#include \"VrkUtilities.glslh\"\n\n\n\n"},
        {Plan::eStorageBufferMechanism, "#version 430\n\n#include \"VrkUtilities.glslh\"\n\n\n\n"},
        {Plan::eTextureMechanism,
         "#version 150\n\n#include \"VrkUtilities.glslh\"\n\nuniform sampler2D u_fNoneSampler;\n"
         "uniform isampler2D u_iNoneSampler;\n\n\n"},
        {Plan::eBufferTextureMechanism, "#version 150\n\n#include \"VrkUtilities.glslh\"\n\n"
                                        "uniform samplerBuffer u_fNoneSampler;\n"
                                        "uniform isamplerBuffer u_iNoneSampler;\n\n\n"}};
    for (const auto& [mechanism, unit] : cases)
    {
        const LogCapture expected; // a buffer texture has something to say
        const Plan* const plan = registeredPlan("None", {}, mechanism);
        EXPECT_EQ(plan->glslc(), text(unit)) << kCarrierNames[mechanism];
        EXPECT_EQ(plan->glslh(), QStringLiteral("#ifndef VRK_INSTANCEDATAPLAN_None_GLSLH\n"
                                                "#define VRK_INSTANCEDATAPLAN_None_GLSLH\n"
                                                "#define NONE_ARRAY_SIZE %1\n"
                                                "#endif // VRK_INSTANCEDATAPLAN_None_GLSLH\n")
                                     .arg(mechanism == Plan::eUniformMechanism ? 1 : 150));
    }
}

TEST_F(InstanceDataPlanTextTest, TheSizeThatWasSetIsDeclaredAndDefined)
{
    const std::pair<Plan::MechanismType, const char*> cases[] = {
        {Plan::eUniformBufferMechanism, "  Foo Foos[7];\n"},
        {Plan::eStorageBufferMechanism, "  Foo Foos[/*7*/];\n"},
        {Plan::eUniformMechanism, "uniform mat4 u_modelMatrix[7];\n"}};
    for (const auto& [mechanism, line] : cases)
    {
        Plan* const plan = newPlan("Foo", kFooMembers, mechanism);
        plan->setArraySize(7);
        registered(plan);
        EXPECT_TRUE(plan->glslc().contains(text(line))) << plan->glslc().toStdString();
        EXPECT_TRUE(plan->glslh().contains(text("\n#define FOO_ARRAY_SIZE 7\n")));
        clearPlans();
    }
}

TEST_F(InstanceDataPlanTextTest, TheCarrierThatIsHeldWritesTheText)
{
    Plan* const plan = newPlan("Foo", {{Plan::eFloat, "f"}});
    plan->parameterMechanism(Plan::eUniformMechanism);
    registered(plan);
    EXPECT_TRUE(plan->glslc().contains(text("\nuniform float u_f[150];\n"))) << plan->glslc().toStdString();
}

} // namespace
} // namespace Harrow::Vrk::Test
