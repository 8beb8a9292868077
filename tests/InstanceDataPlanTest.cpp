// SPDX-License-Identifier: MIT
//
// Plans of instance data: their layout on the CPU, settings, queries, copies, and the comparison with a program.
#include "InstanceDataPlanTestTools.h"

#include "InstanceDataCollection.h"
#include "ShaderProgram.h"
#include "ShaderTestTools.h"
#include "support/CallLog.h"

#include <algorithm>
#include <memory>
#include <vector>

namespace Harrow::Vrk::Test
{
namespace
{

class InstanceDataPlanTest : public WithPlans<FakeDriverTest>
{
};

QString notFinalised(const char* setter)
{
    return assertionLine(QStringLiteral("false == _finalised"),
                         QStringLiteral("InstanceDataPlan::%1() can only be called before the plan has been finalised")
                             .arg(QLatin1String(setter)));
}

/// The sizes and offsets of a plan of the given members, in the order of `names`.
struct Layout
{
    QList<int> offsets;
    size_t totalDataSize;
};

Layout layoutOf(const PlanMembers& members, Plan::MechanismType mechanism = Plan::eUniformBufferMechanism,
                bool useVec4Storage = false)
{
    const Plan* const plan = registeredPlan("P", members, mechanism, useVec4Storage);
    Layout layout = {{}, plan->totalDataSize()};
    for (const PlanMember& member : members)
        layout.offsets.append(plan->offset(QString::fromLatin1(member.name)));
    return layout;
}

// ---- before the plan is registered ---------------------------------------------------------------------------------

TEST_F(InstanceDataPlanTest, ANewPlanHasItsNameAndNothingElse)
{
    LogCapture log;
    const CallLog calls;
    const Plan plan(QStringLiteral("My Plan"));
    EXPECT_EQ(plan.name(), QStringLiteral("My Plan"));
    EXPECT_EQ(plan.mechanism(), Plan::eUniformBufferMechanism);
    EXPECT_EQ(plan.samplerIName(), QStringLiteral("u_iMy PlanSampler"));
    EXPECT_EQ(plan.samplerFName(), QStringLiteral("u_fMy PlanSampler"));
    EXPECT_EQ(plan.totalDataSize(), 0u);
    EXPECT_EQ(plan.arraySizeMax(), 150u);
    EXPECT_TRUE(plan.memberNames().isEmpty());
    EXPECT_TRUE(plan.textureTokenOffsets().isEmpty());
    EXPECT_TRUE(plan.glslh().isEmpty());
    EXPECT_TRUE(plan.glslc().isEmpty());
    EXPECT_EQ(log.texts(), QStringList());
    EXPECT_EQ(plan.arraySize(), 150u);
    EXPECT_EQ(
        log.messages(),
        QStringList({assertionLine(QStringLiteral("true == _finalised"),
                                   QStringLiteral("InstanceDataPlan::arraySize() can only be called after the plan has "
                                                  "been finalised"))}));
    EXPECT_EQ(calls.list(), QStringList());
}

TEST_F(InstanceDataPlanTest, TheEnumeratorsHaveTheirNumbers)
{
    const Plan::DataType types[] = {Plan::eTexture, Plan::eBool,  Plan::eBVec2, Plan::eBVec3, Plan::eBVec4,
                                    Plan::eInt,     Plan::eIVec2, Plan::eIVec3, Plan::eIVec4, Plan::eUInt,
                                    Plan::eUVec2,   Plan::eUVec3, Plan::eUVec4, Plan::eFloat, Plan::eVec2,
                                    Plan::eVec3,    Plan::eVec4,  Plan::eMat4};
    for (unsigned number = 0; number < 18; ++number)
        EXPECT_EQ(static_cast<unsigned>(types[number]), number);
    EXPECT_EQ(sizeof(Plan::DataType), 4u);
    for (unsigned number = 0; number < 5; ++number)
        EXPECT_EQ(static_cast<unsigned>(kCarriers[number]), number) << kCarrierNames[number];
    EXPECT_EQ(sizeof(Plan::MechanismType), 4u);
}

TEST_F(InstanceDataPlanTest, MembersCountAtOnceButHaveNoPlaceBeforeRegistering)
{
    const std::unique_ptr<Plan> plan(newPlan("P", {{Plan::eFloat, "a"}, {Plan::eVec3, "b"}, {Plan::eBool, "c"}}));
    EXPECT_EQ(plan->totalDataSize(), 4u + 16u + 1u);
    EXPECT_TRUE(plan->contains(QStringLiteral("a")));
    EXPECT_EQ(plan->dataType(QStringLiteral("b")), Plan::eVec3);
    EXPECT_EQ(plan->dataSize(QStringLiteral("b")), 16u);
    EXPECT_EQ(plan->offset(QStringLiteral("a")), 0);
    EXPECT_TRUE(plan->memberNames().isEmpty());
    EXPECT_TRUE(plan->glslh().isEmpty());
    EXPECT_TRUE(plan->glslc().isEmpty());
}

TEST_F(InstanceDataPlanTest, AMemberOfNoTypeIsReportedAndNotAdded)
{
    Plan plan(QStringLiteral("P"));
    const LogCapture log;
    plan.addMember(static_cast<Plan::DataType>(18), QStringLiteral("odd"));
    EXPECT_EQ(log.messages(),
              QStringList({assertionLine(QStringLiteral("type <= eMat4"),
                                         QStringLiteral("Unknown type 18 of member 'odd' of plan 'P'"))}));
    EXPECT_FALSE(plan.contains(QStringLiteral("odd")));
    EXPECT_EQ(plan.totalDataSize(), 0u);
}

TEST_F(InstanceDataPlanTest, SettersAreSilentBeforeRegistering)
{
    const LogCapture log;
    Plan plan(QStringLiteral("P"));
    plan.setArraySize(7);
    plan.setMechanism(Plan::eTextureMechanism);
    plan.setUseVec4Storage(true);
    EXPECT_EQ(plan.mechanism(), Plan::eTextureMechanism);
    EXPECT_EQ(log.texts(), QStringList());
}

// ---- after ---------------------------------------------------------------------------------------------------------

TEST_F(InstanceDataPlanTest, SettersAreReportedAfterRegisteringAndStoreAllTheSame)
{
    Plan* const plan = registeredPlan("P", kFooMembers);
    const QString header = plan->glslh();
    const QString unit = plan->glslc();
    const LogCapture log;
    plan->setArraySize(3);
    plan->setMechanism(Plan::eTextureMechanism);
    plan->setUseVec4Storage(true);
    EXPECT_EQ(log.messages(QtCriticalMsg), QStringList({notFinalised("setArraySize"), notFinalised("setMechanism"),
                                                        notFinalised("setUseVec4Storage")}));
    EXPECT_EQ(plan->arraySize(), 3u);
    EXPECT_EQ(plan->mechanism(), Plan::eTextureMechanism);
    EXPECT_EQ(plan->glslh(), header);
    EXPECT_EQ(plan->glslc(), unit);
    EXPECT_EQ(log.messages().size(), 3);
}

TEST_F(InstanceDataPlanTest, ArraySizeIsSilentAfterRegistering)
{
    const Plan* const plan = registeredPlan("P", kFooMembers);
    const LogCapture log;
    EXPECT_EQ(plan->arraySize(), 150u);
    EXPECT_EQ(log.texts(), QStringList());
}

TEST_F(InstanceDataPlanTest, APlanThatIsRegisteredTwiceIsReportedAndStaysAsItIs)
{
    for (const Plan::MechanismType mechanism : kCarriers)
    {
        Plan* const plan = registeredPlan("P", kFooMembers, mechanism, true);
        const QString header = plan->glslh();
        const QString unit = plan->glslc();
        const size_t size = plan->totalDataSize();
        const LogCapture log;
        const CallLog calls;
        registered(plan);
        EXPECT_EQ(log.messages(), QStringList({assertionLine(QStringLiteral("false == _finalised"),
                                                             QStringLiteral("Plan 'P' has already been finalised"))}));
        EXPECT_EQ(calls.list(), QStringList());
        EXPECT_EQ(plan->glslh(), header);
        EXPECT_EQ(plan->glslc(), unit);
        EXPECT_EQ(plan->totalDataSize(), size);
        EXPECT_EQ(plan->textureTokenOffsets().size(), 1);
        clearPlans();
    }
}

// ---- layout --------------------------------------------------------------------------------------------------------

TEST_F(InstanceDataPlanTest, LargerTypesLieFirstAndAtEqualSizeTheHigherEnumerator)
{
    // Added in the order of the enumeration; one more boolean makes the record a multiple of 4.
    const PlanMembers members = {
        {Plan::eTexture, "token"}, {Plan::eBool, "bool1"},   {Plan::eBVec2, "bool2"}, {Plan::eBVec3, "bool3"},
        {Plan::eBVec4, "bool4"},   {Plan::eInt, "int1"},     {Plan::eIVec2, "int2"},  {Plan::eIVec3, "int3"},
        {Plan::eIVec4, "int4"},    {Plan::eUInt, "uint1"},   {Plan::eUVec2, "uint2"}, {Plan::eUVec3, "uint3"},
        {Plan::eUVec4, "uint4"},   {Plan::eFloat, "float1"}, {Plan::eVec2, "float2"}, {Plan::eVec3, "float3"},
        {Plan::eVec4, "float4"},   {Plan::eMat4, "matrix"},  {Plan::eBool, "boolB"}};
    const LogCapture log;
    const Layout layout = layoutOf(members);
    EXPECT_EQ(layout.offsets,
              (QList<int>{184, 214, 212, 208, 204, 200, 176, 144, 128, 196, 168, 112, 96, 192, 160, 80, 64, 0, 215}));
    EXPECT_EQ(layout.totalDataSize, 224u);
    EXPECT_EQ(log.texts(QtCriticalMsg), QStringList());
}

TEST_F(InstanceDataPlanTest, TheSameLayoutUnderEveryCarrier)
{
    for (const Plan::MechanismType mechanism : kCarriers)
    {
        const Layout layout = layoutOf(kFooMembers, mechanism);
        EXPECT_EQ(layout.offsets, (QList<int>{0, 64, 80, 88})) << kCarrierNames[mechanism];
        EXPECT_EQ(layout.totalDataSize, 96u) << kCarrierNames[mechanism];
    }
}

TEST_F(InstanceDataPlanTest, NamesOfOneTypeLieInTheOrderOfTheirAdding)
{
    const Layout layout = layoutOf({{Plan::eFloat, "z"}, {Plan::eFloat, "a"}, {Plan::eVec4, "q"}, {Plan::eFloat, "m"}});
    EXPECT_EQ(layout.offsets, (QList<int>{16, 20, 0, 24}));
    EXPECT_EQ(layout.totalDataSize, 32u);
}

TEST_F(InstanceDataPlanTest, AMatrixAVectorAndTwoFloatsTakeNinetySixBytes)
{
    const PlanMembers members = {{Plan::eVec3, "a"}, {Plan::eFloat, "b"}, {Plan::eMat4, "c"}, {Plan::eFloat, "d"}};
    for (const bool useVec4Storage : {false, true})
    {
        const Layout layout = layoutOf(members, Plan::eUniformBufferMechanism, useVec4Storage);
        EXPECT_EQ(layout.offsets, (QList<int>{64, 80, 0, 84})) << useVec4Storage;
        EXPECT_EQ(layout.totalDataSize, 96u) << useVec4Storage;
    }
}

TEST_F(InstanceDataPlanTest, Vec4StoragePadsEachGroupUnderTheBlocksAlone)
{
    const PlanMembers members = {{Plan::eFloat, "f"}, {Plan::eTexture, "t"}};
    for (const Plan::MechanismType mechanism : kCarriers)
    {
        const bool isBlock = mechanism == Plan::eUniformBufferMechanism || mechanism == Plan::eStorageBufferMechanism;
        const Layout layout = layoutOf(members, mechanism, true);
        EXPECT_EQ(layout.offsets, isBlock ? QList<int>({16, 0}) : QList<int>({8, 0})) << kCarrierNames[mechanism];
        EXPECT_EQ(layout.totalDataSize, isBlock ? 32u : 16u) << kCarrierNames[mechanism];
    }
}

TEST_F(InstanceDataPlanTest, Vec4StorageOfTheWorkedExampleTakesOneHundredAndTwelveBytes)
{
    const Layout layout = layoutOf(kFooMembers, Plan::eStorageBufferMechanism, true);
    EXPECT_EQ(layout.offsets, (QList<int>{0, 64, 80, 96}));
    EXPECT_EQ(layout.totalDataSize, 112u);
}

TEST_F(InstanceDataPlanTest, Vec4StorageDoesNotPadAFullGroup)
{
    const Layout layout = layoutOf({{Plan::eFloat, "a"},
                                    {Plan::eFloat, "b"},
                                    {Plan::eFloat, "c"},
                                    {Plan::eFloat, "d"},
                                    {Plan::eFloat, "e"},
                                    {Plan::eBool, "x"}},
                                   Plan::eUniformBufferMechanism, true);
    EXPECT_EQ(layout.offsets, (QList<int>{0, 4, 8, 12, 16, 32}));
    EXPECT_EQ(layout.totalDataSize, 48u);
}

TEST_F(InstanceDataPlanTest, TheRecordIsRoundedUpToWholeVectors)
{
    for (int floats = 1; floats <= 9; ++floats)
    {
        Plan* const plan = newPlan("P", {});
        for (int number = 0; number < floats; ++number)
            plan->addMember(Plan::eFloat, QStringLiteral("f%1").arg(number));
        registered(plan);
        EXPECT_EQ(plan->totalDataSize(), floats <= 4 ? 16u : floats <= 8 ? 32u : 48u) << floats;
        clearPlans();
    }
}

TEST_F(InstanceDataPlanTest, TokensAreListedByTheirOffsets)
{
    EXPECT_EQ(
        registeredPlan("P", {{Plan::eVec2, "v"}, {Plan::eTexture, "b"}, {Plan::eTexture, "a"}})->textureTokenOffsets(),
        (QList<int>{8, 16}));
    EXPECT_EQ(registeredPlan("Q", {{Plan::eTexture, "b"}, {Plan::eMat4, "m"}, {Plan::eTexture, "a"}},
                             Plan::eUniformBufferMechanism, true)
                  ->textureTokenOffsets(),
              (QList<int>{64, 72}));
}

TEST_F(InstanceDataPlanTest, ANameThatIsAddedTwiceStandsInTheRecordTwiceAndCountsAsTheLaterType)
{
    const Plan* const plan = registeredPlan("P", {{Plan::eFloat, "a"}, {Plan::eVec4, "a"}});
    EXPECT_EQ(plan->totalDataSize(), 32u);
    EXPECT_EQ(plan->dataType(QStringLiteral("a")), Plan::eVec4);
    EXPECT_EQ(plan->dataSize(QStringLiteral("a")), 16u);
    EXPECT_EQ(plan->memberNames(), QList<QString>{QStringLiteral("a")});
    EXPECT_EQ(plan->glslh().count(QStringLiteral("getA(uint Index);")), 2);
}

TEST_F(InstanceDataPlanTest, AnEmptyPlanIsRegisteredWithoutARecord)
{
    const LogCapture log;
    const Plan* const plan = registeredPlan("Empty", {});
    EXPECT_EQ(plan->totalDataSize(), 0u);
    EXPECT_EQ(plan->arraySize(), 150u);
    EXPECT_EQ(plan->arraySizeMax(), 150u);
    EXPECT_EQ(log.texts(), QStringList());
}

TEST_F(InstanceDataPlanTest, BooleansThatLeaveNoMultipleOfFourAreReportedAndRoundedUp)
{
    const std::pair<PlanMembers, size_t> cases[] = {
        {{{Plan::eBool, "a"}}, 1},
        {{{Plan::eBVec2, "a"}}, 2},
        {{{Plan::eBVec2, "a"}, {Plan::eBool, "b"}}, 3},
        {{{Plan::eBool, "a"}, {Plan::eVec4, "b"}}, 17},
    };
    for (const auto& [members, size] : cases)
    {
        for (const Plan::MechanismType mechanism : kCarriers)
        {
            const LogCapture log;
            const Layout layout = layoutOf(members, mechanism);
            EXPECT_EQ(log.messages(QtCriticalMsg),
                      QStringList({assertionLine(
                          QStringLiteral("0 == (_totalDataSize & 3)"),
                          QStringLiteral("Total data size (%1) for plan P is no multiple of 4").arg(size))}))
                << kCarrierNames[mechanism];
            EXPECT_EQ(layout.totalDataSize, (size + 15) / 16 * 16) << kCarrierNames[mechanism];
            clearPlans();
        }
    }
}

TEST_F(InstanceDataPlanTest, Vec4StorageUnderABlockLeavesNoOddBooleans)
{
    for (const Plan::MechanismType mechanism : {Plan::eUniformBufferMechanism, Plan::eStorageBufferMechanism})
    {
        const LogCapture log;
        EXPECT_EQ(layoutOf({{Plan::eBool, "a"}, {Plan::eBVec2, "b"}}, mechanism, true).offsets, (QList<int>{16, 0}));
        EXPECT_EQ(log.texts(QtCriticalMsg), QStringList());
    }
}

// ---- queries -------------------------------------------------------------------------------------------------------

TEST_F(InstanceDataPlanTest, MembersAreKnownByName)
{
    const Plan* const plan = registeredPlan("P", kFooMembers);
    QList<QString> names = plan->memberNames();
    std::sort(names.begin(), names.end());
    EXPECT_EQ(names, (QList<QString>{QStringLiteral("alpha"), QStringLiteral("color"), QStringLiteral("modelMatrix"),
                                     QStringLiteral("tex")}));
    EXPECT_TRUE(plan->contains(QStringLiteral("color")));
    EXPECT_FALSE(plan->contains(QStringLiteral("Color")));
    EXPECT_EQ(plan->dataType(QStringLiteral("modelMatrix")), Plan::eMat4);
    EXPECT_EQ(plan->dataSize(QStringLiteral("modelMatrix")), 64u);
    EXPECT_EQ(plan->dataSize(QStringLiteral("alpha")), 4u);
    EXPECT_EQ(plan->dataSize(Plan::eVec3), 16u);
}

TEST_F(InstanceDataPlanTest, AnUnknownNameHasOffsetZeroAndTheSizeOfAToken)
{
    const LogCapture log;
    const Plan* const plan = registeredPlan("P", kFooMembers);
    EXPECT_FALSE(plan->contains(QStringLiteral("nothing")));
    EXPECT_EQ(plan->offset(QStringLiteral("nothing")), 0);
    EXPECT_EQ(plan->dataSize(QStringLiteral("nothing")), 8u);
    EXPECT_EQ(plan->dataType(QStringLiteral("nothing")), Plan::eTexture);
    EXPECT_EQ(log.texts(QtCriticalMsg), QStringList());
}

TEST_F(InstanceDataPlanTest, StorageBlocksAreSupportedFromFourThreeOnOrByTheExtension)
{
    EXPECT_TRUE(Plan::supportsStorageMechanism());
    driver.setVersion(4, 3);
    EXPECT_TRUE(Plan::supportsStorageMechanism());
    driver.setVersion(4, 2);
    EXPECT_FALSE(Plan::supportsStorageMechanism());
    int other = 0;
    driver.setContext(&other);
    driver.setExtensions({"GL_ARB_shader_storage_buffer_object"});
    EXPECT_TRUE(Plan::supportsStorageMechanism());
}

// ---- the carrier ---------------------------------------------------------------------------------------------------

TEST_F(InstanceDataPlanTest, TheCarrierIsMadeAtTheFirstCallAndForItsType)
{
    Plan plan(QStringLiteral("P"));
    ParameterMechanism* const carrier = plan.parameterMechanism(Plan::eTextureMechanism);
    ASSERT_NE(carrier, nullptr);
    EXPECT_EQ(plan.parameterMechanism(Plan::eUniformBufferMechanism), carrier);
    EXPECT_EQ(plan.parameterMechanism(static_cast<Plan::MechanismType>(99)), carrier);
    EXPECT_FALSE(carrier->useVec4Storage(Plan::eFloat)) << "a texture carrier";
    EXPECT_EQ(plan.mechanism(), Plan::eUniformBufferMechanism);
}

TEST_F(InstanceDataPlanTest, ACarrierThatThereIsNotIsReportedAndThePlanStaysUnfinished)
{
    auto* const plan = newPlan("P", kFooMembers, static_cast<Plan::MechanismType>(5));
    LogCapture log;
    registered(plan);
    const QString reported = assertionLine(QStringLiteral("type < std::size(kMechanismFactories)"),
                                           QStringLiteral("Unknown mechanism 5 for plan 'P'"));
    EXPECT_EQ(log.messages(), QStringList({reported}));
    EXPECT_TRUE(plan->glslc().isEmpty());
    EXPECT_TRUE(plan->glslh().isEmpty());
    log.clear();
    InstanceDataCollection collection(plan, nullptr, 0);
    EXPECT_FALSE(plan->bind(nullptr, nullptr, &collection));
    EXPECT_FALSE(plan->unbind(nullptr, nullptr, &collection));
    EXPECT_EQ(log.messages().filter(reported).size(), 2);
}

TEST_F(InstanceDataPlanTest, ACollectionThatIsNullIsReported)
{
    Plan* const plan = registeredPlan("P", kFooMembers);
    const LogCapture log;
    EXPECT_FALSE(plan->bind(nullptr, nullptr, nullptr));
    EXPECT_FALSE(plan->unbind(nullptr, nullptr, nullptr));
    EXPECT_EQ(log.messages(), QStringList({assertionLine(QStringLiteral("nullptr != collection"),
                                                         QStringLiteral("InstanceDataCollection is NULL on bind")),
                                           assertionLine(QStringLiteral("nullptr != collection"),
                                                         QStringLiteral("InstanceDataCollection is NULL on unbind"))}));
}

// ---- copies --------------------------------------------------------------------------------------------------------

TEST_F(InstanceDataPlanTest, ACopyHasAllOfItsSourceAndSharesTheCarrier)
{
    Plan* const source = registeredPlan("P", kFooMembers, Plan::eTextureMechanism);
    Plan copy(*source);
    Plan assigned(QStringLiteral("Q"));
    assigned = *source;
    for (Plan* const other : {&copy, &assigned})
    {
        EXPECT_EQ(other->name(), QStringLiteral("P"));
        EXPECT_EQ(other->glslh(), source->glslh());
        EXPECT_EQ(other->glslc(), source->glslc());
        EXPECT_EQ(other->totalDataSize(), 96u);
        EXPECT_EQ(other->arraySize(), 150u);
        EXPECT_EQ(other->offset(QStringLiteral("alpha")), 88);
        EXPECT_EQ(other->mechanism(), Plan::eTextureMechanism);
        EXPECT_EQ(other->samplerFName(), QStringLiteral("u_fPSampler"));
        EXPECT_EQ(other->textureTokenOffsets(), QList<int>{80});
        EXPECT_EQ(other->parameterMechanism(Plan::eUniformBufferMechanism),
                  source->parameterMechanism(Plan::eUniformBufferMechanism));
    }
}

TEST_F(InstanceDataPlanTest, ACopyOutlivesItsSourceAndTheSourceItsCopy)
{
    for (const bool copyFirst : {false, true})
    {
        auto source = std::make_unique<Plan>(QStringLiteral("P"));
        source->addMember(Plan::eFloat, QStringLiteral("f"));
        source->parameterMechanism(Plan::eUniformBufferMechanism);
        auto copy = std::make_unique<Plan>(*source);
        (copyFirst ? copy : source).reset();
        Plan& left = copyFirst ? *source : *copy;
        const auto text =
            left.parameterMechanism(Plan::eUniformBufferMechanism)
                ->glslUniformDeclaration({Plan::eFloat}, {{Plan::eFloat, {QStringLiteral("f")}}}, false, 2);
        EXPECT_TRUE(text.startsWith(QStringLiteral("struct P\n{\n  float f;\n"))) << text.toStdString();
    }
}

// ---- the comparison with a program ---------------------------------------------------------------------------------

/// The blocks of a program, and what it was asked.
struct Block
{
    QByteArray name;
    GLint size;
    GLint uniforms;
};
QList<Block> blocks;
GLint askedOffsets = 0;

class InstanceDataPlanProgramTest : public InstanceDataPlanTest
{
protected:
    void SetUp() override
    {
        blocks.clear();
        askedOffsets = -1;
        driver.replace(
            "glGetProgramiv",
            +[](GLuint, GLenum parameter, GLint* value)
            { *value = parameter == GL_ACTIVE_UNIFORM_BLOCKS ? GLint(blocks.size()) : parameter == GL_LINK_STATUS; });
        driver.replace(
            "glGetActiveUniformBlockName", +[](GLuint, GLuint index, GLsizei size, GLsizei* length, GLchar* name)
                                           { writeText(blocks.at(index).name, size, length, name); });
        driver.replace(
            "glGetActiveUniformBlockiv",
            +[](GLuint, GLuint index, GLenum parameter, GLint* value)
            {
                if (parameter == GL_UNIFORM_BLOCK_DATA_SIZE)
                    *value = blocks.at(index).size;
                else if (parameter == GL_UNIFORM_BLOCK_ACTIVE_UNIFORMS)
                    *value = blocks.at(index).uniforms;
                else
                    for (GLint uniform = 0; uniform < blocks.at(index).uniforms; ++uniform)
                        value[uniform] = uniform + 100;
            });
        driver.replace(
            "glGetActiveUniformsiv",
            +[](GLuint, GLsizei count, const GLuint* indices, GLenum parameter, GLint* values)
            {
                EXPECT_EQ(parameter, GLenum(GL_UNIFORM_OFFSET));
                askedOffsets = count;
                for (GLsizei i = 0; i < count; ++i)
                {
                    EXPECT_EQ(indices[i], GLuint(i) + 100u);
                    values[i] = i;
                }
            });
        InstanceDataPlanTest::SetUp();
    }

    /// What is said of a program with these blocks.
    QStringList said(const Plan& plan, const QList<Block>& itsBlocks)
    {
        blocks = itsBlocks;
        ShaderProgram program;
        EXPECT_TRUE(program.link());
        const LogCapture log;
        plan.assertShaderProgram(&program);
        return log.messages();
    }
};

QString disagreement(const char* arguments)
{
    return assertionLine(QStringLiteral("int(_arraySize * _totalDataSize) == blockSize"),
                         QStringLiteral("CPP (%1 disagree on the size of the instance data buffer. Check alignment "
                                        "code")
                             .arg(QLatin1String(arguments)));
}

TEST_F(InstanceDataPlanProgramTest, ABlockOfTheRightSizeIsAgreed)
{
    const Plan* const plan = registeredPlan("Foo", kFooMembers);
    EXPECT_EQ(said(*plan, {{"u_FooUniform", 14400, 8}}), QStringList());
}

TEST_F(InstanceDataPlanProgramTest, ABlockOfAnotherSizeIsReported)
{
    const Plan* const plan = registeredPlan("Foo", kFooMembers);
    EXPECT_EQ(said(*plan, {{"u_Other", 1, 1}, {"u_FooUniform", 14416, 5}}),
              QStringList({disagreement("150 * 96 = 14400) and GLSL (14416) for plan Foo")}));
}

TEST_F(InstanceDataPlanProgramTest, OnlyTheExactNameIsThePlansBlock)
{
    const Plan* const plan = registeredPlan("Foo", kFooMembers);
    EXPECT_EQ(said(*plan, {{"u_FooUniforms", 1, 1}, {"u_Foo", 1, 1}, {"u_fooUniform", 1, 1}, {"Foo", 1, 1}}),
              QStringList());
    EXPECT_EQ(askedOffsets, -1);
    EXPECT_EQ(said(*plan, {}), QStringList());
}

TEST_F(InstanceDataPlanProgramTest, OffsetsAreFetchedForNoMoreThanTwiceTheMembers)
{
    const Plan* const plan = registeredPlan("Foo", kFooMembers);
    for (const GLint uniforms : {1, 3, 8, 9, 600})
    {
        EXPECT_EQ(said(*plan, {{"u_FooUniform", 14400, uniforms}}), QStringList());
        EXPECT_EQ(askedOffsets, std::min(uniforms, 8));
    }
}

TEST_F(InstanceDataPlanProgramTest, ABlockWithoutUniformsIsComparedAllTheSame)
{
    const Plan* const plan = registeredPlan("Foo", kFooMembers);
    for (const GLint uniforms : {0, -5})
    {
        EXPECT_EQ(said(*plan, {{"u_FooUniform", 7, uniforms}}),
                  QStringList({disagreement("150 * 96 = 14400) and GLSL (7) for plan Foo")}));
        EXPECT_EQ(askedOffsets, -1);
    }
}

TEST_F(InstanceDataPlanProgramTest, AProgramThatIsNullIsReported)
{
    const Plan* const plan = registeredPlan("Foo", kFooMembers);
    const LogCapture log;
    plan->assertShaderProgram(nullptr);
    EXPECT_EQ(log.messages(),
              QStringList({assertionLine(QStringLiteral("nullptr != program"),
                                         QStringLiteral("Shader Program is NULL on assertShaderProgram"))}));
}

} // namespace
} // namespace Harrow::Vrk::Test
