// SPDX-License-Identifier: MIT
//
// How the driver's limits bring down the number of records that a plan declares, carrier by carrier.
#include "InstanceDataPlanTestTools.h"

#include "GLRuntimeTestAccess.h"
#include "support/CallLog.h"

#include <limits>

namespace Harrow::Vrk::Test
{
namespace
{

constexpr int kHuge = std::numeric_limits<int>::max();
constexpr GLint64 kHuge64 = std::numeric_limits<GLint64>::max();

GLint64 storageBytes = 0;
bool writesStorageBytes = true;

/// What a plan has after it was registered, and what was said meanwhile.
struct Limited
{
    size_t arraySize;
    size_t arraySizeMax;
    QStringList said;
};

class InstanceDataPlanLimitsTest : public WithPlans<FakeDriverTest>
{
protected:
    void SetUp() override
    {
        storageBytes = 1 << 27;
        writesStorageBytes = true;
        driver.replace(
            "glGetInteger64v",
            +[](GLenum parameter, GLint64* value)
            {
                EXPECT_EQ(parameter, GLenum(GL_MAX_SHADER_STORAGE_BLOCK_SIZE));
                if (writesStorageBytes)
                    *value = storageBytes;
            });
        WithPlans::SetUp();
    }

    /// Of a plan "P".
    static Limited limited(Plan::MechanismType mechanism, const PlanMembers& members, size_t arraySize = 150)
    {
        Plan* const plan = newPlan("P", members, mechanism);
        plan->setArraySize(arraySize);
        const LogCapture log;
        registered(plan);
        const Limited result = {plan->arraySize(), plan->arraySizeMax(), log.messages()};
        const QString define = QStringLiteral("\n#define P_ARRAY_SIZE %1\n").arg(result.arraySize);
        EXPECT_TRUE(plan->glslh().contains(define)) << plan->glslh().toStdString();
        clearPlans();
        return result;
    }

    /// A query that leaves the value alone, for the table as a whole.
    void letQueriesWriteNothing()
    {
        driver.replace(
            "glGetIntegerv", +[](GLenum, GLint*) {});
        driver.load();
    }
};

const PlanMembers kOneVector = {{Plan::eVec4, "v"}};

// ---- uniform block -------------------------------------------------------------------------------------------------

TEST_F(InstanceDataPlanLimitsTest, AUniformBlockHoldsAsManyRecordsAsItsBytes)
{
    driver.setInteger(GL_MAX_UNIFORM_BLOCK_SIZE, 16384);
    const Limited foo = limited(Plan::eUniformBufferMechanism, kFooMembers);
    EXPECT_EQ(foo.arraySize, 150u);
    EXPECT_EQ(foo.arraySizeMax, 170u) << "16384 / 96, rounded down";
    EXPECT_EQ(foo.said, QStringList({QStringLiteral("ubo: size  150 max  170 plan 'P'")}));
    driver.setInteger(GL_MAX_UNIFORM_BLOCK_SIZE, 1000);
    const Limited few = limited(Plan::eUniformBufferMechanism, kFooMembers);
    EXPECT_EQ(few.arraySize, 10u);
    EXPECT_EQ(few.arraySizeMax, 10u);
    EXPECT_EQ(few.said, QStringList({QStringLiteral("ubo: size   10 max   10 plan 'P'")}));
}

TEST_F(InstanceDataPlanLimitsTest, AUniformBlockTooSmallForOneRecordHoldsNone)
{
    driver.setInteger(GL_MAX_UNIFORM_BLOCK_SIZE, 1);
    const Limited none = limited(Plan::eUniformBufferMechanism, kFooMembers);
    EXPECT_EQ(none.arraySize, 0u);
    EXPECT_EQ(none.arraySizeMax, 0u);
    EXPECT_EQ(none.said, QStringList({QStringLiteral("ubo: size    0 max    0 plan 'P'")}));
}

TEST_F(InstanceDataPlanLimitsTest, AUniformBlockOfNoBytesChangesNothing)
{
    for (const int bytes : {0, -1, -kHuge - 1})
    {
        driver.setInteger(GL_MAX_UNIFORM_BLOCK_SIZE, bytes);
        const Limited same = limited(Plan::eUniformBufferMechanism, kFooMembers, 151);
        EXPECT_EQ(same.arraySize, 151u);
        EXPECT_EQ(same.arraySizeMax, 150u);
        EXPECT_EQ(same.said, QStringList());
    }
}

TEST_F(InstanceDataPlanLimitsTest, AUniformBlockOfTheLargestSize)
{
    driver.setInteger(GL_MAX_UNIFORM_BLOCK_SIZE, kHuge);
    const Limited many = limited(Plan::eUniformBufferMechanism, kOneVector, 1000000);
    EXPECT_EQ(many.arraySize, 1000000u);
    EXPECT_EQ(many.arraySizeMax, 134217727u);
    EXPECT_EQ(many.said, QStringList({QStringLiteral("ubo: size 1000000 max 134217727 plan 'P'")}));
}

TEST_F(InstanceDataPlanLimitsTest, AMillionRecordsEndAtTheUniformBlocksMaximum)
{
    const Limited all = limited(Plan::eUniformBufferMechanism, kFooMembers, 1000000);
    EXPECT_EQ(all.arraySize, 682u) << "65536 / 96";
    EXPECT_EQ(all.arraySizeMax, 682u);
    EXPECT_EQ(all.said, QStringList({QStringLiteral("ubo: size  682 max  682 plan 'P'")}));
    Plan* const plan = newPlan("P", kFooMembers);
    plan->setArraySize(1000000);
    registered(plan);
    EXPECT_TRUE(plan->glslc().contains(
        QStringLiteral("\n  Foo Foos[682];\n").replace(QStringLiteral("Foo"), QStringLiteral("P"))));
}

// ---- plain uniforms ------------------------------------------------------------------------------------------------

TEST_F(InstanceDataPlanLimitsTest, PlainUniformsTakeTheSmallerOfBothStages)
{
    // 16 + 4 + 2 + 1 components, each counted as four.
    driver.setInteger(GL_MAX_FRAGMENT_UNIFORM_COMPONENTS, 4096);
    driver.setInteger(GL_MAX_VERTEX_UNIFORM_COMPONENTS, 8192);
    const Limited fragment = limited(Plan::eUniformMechanism, kFooMembers);
    EXPECT_EQ(fragment.arraySize, 44u);
    EXPECT_EQ(fragment.arraySizeMax, 44u);
    EXPECT_EQ(fragment.said, QStringList({QStringLiteral("uni: size   44 max   44 plan 'P'")}));
    driver.setInteger(GL_MAX_VERTEX_UNIFORM_COMPONENTS, 1024);
    const Limited vertex = limited(Plan::eUniformMechanism, kFooMembers, 7);
    EXPECT_EQ(vertex.arraySize, 7u);
    EXPECT_EQ(vertex.arraySizeMax, 11u);
    EXPECT_EQ(vertex.said, QStringList({QStringLiteral("uni: size    7 max   11 plan 'P'")}));
}

TEST_F(InstanceDataPlanLimitsTest, ThreeComponentsCountAsFour)
{
    driver.setInteger(GL_MAX_FRAGMENT_UNIFORM_COMPONENTS, 1600);
    for (const Plan::DataType type : {Plan::eBVec3, Plan::eIVec3, Plan::eUVec3, Plan::eVec3, Plan::eVec4})
        EXPECT_EQ(limited(Plan::eUniformMechanism, {{type, "m"}}).arraySizeMax, 100u) << type;
    for (const Plan::DataType type : {Plan::eTexture, Plan::eIVec2, Plan::eVec2})
        EXPECT_EQ(limited(Plan::eUniformMechanism, {{type, "m"}}).arraySizeMax, 200u) << type;
    EXPECT_EQ(limited(Plan::eUniformMechanism, {{Plan::eMat4, "m"}}).arraySizeMax, 25u);
    EXPECT_EQ(limited(Plan::eUniformMechanism, {{Plan::eInt, "a"}, {Plan::eInt, "b"}, {Plan::eInt, "c"}}).arraySizeMax,
              133u);
}

TEST_F(InstanceDataPlanLimitsTest, PlainUniformsOfAnEmptyPlanHoldOneRecord)
{
    const Limited one = limited(Plan::eUniformMechanism, {});
    EXPECT_EQ(one.arraySize, 1u);
    EXPECT_EQ(one.arraySizeMax, 1u);
    EXPECT_EQ(one.said, QStringList({QStringLiteral("uni: size    1 max    1 plan 'P'")}));
}

TEST_F(InstanceDataPlanLimitsTest, PlainUniformsOfAStageWithoutAnyHoldNone)
{
    for (const int components : {0, 1, -1, -kHuge - 1})
    {
        driver.setInteger(GL_MAX_VERTEX_UNIFORM_COMPONENTS, components);
        const Limited none = limited(Plan::eUniformMechanism, kFooMembers);
        EXPECT_EQ(none.arraySize, 0u) << components;
        EXPECT_EQ(none.arraySizeMax, 0u) << components;
        EXPECT_EQ(none.said, QStringList({QStringLiteral("uni: size    0 max    0 plan 'P'")}));
    }
}

TEST_F(InstanceDataPlanLimitsTest, AMillionRecordsEndAtThePlainUniformsMaximum)
{
    const Limited all = limited(Plan::eUniformMechanism, kFooMembers, 1000000);
    EXPECT_EQ(all.arraySize, 712u) << "65536 / (23 * 4)";
    EXPECT_EQ(all.arraySizeMax, 712u);
}

// ---- buffer texture ------------------------------------------------------------------------------------------------

TEST_F(InstanceDataPlanLimitsTest, ABufferTextureHoldsItsTexelsInRecords)
{
    driver.setInteger(GL_MAX_TEXTURE_BUFFER_SIZE, 1000);
    const Limited foo = limited(Plan::eBufferTextureMechanism, kFooMembers);
    EXPECT_EQ(foo.arraySize, 150u);
    EXPECT_EQ(foo.arraySizeMax, 166u) << "six texels each";
    EXPECT_EQ(foo.said, QStringList({QStringLiteral("bxt: size  150 max  166 plan 'P'")}));
    driver.setInteger(GL_MAX_TEXTURE_BUFFER_SIZE, 5);
    const Limited none = limited(Plan::eBufferTextureMechanism, kFooMembers);
    EXPECT_EQ(none.arraySize, 0u);
    EXPECT_EQ(none.said, QStringList({QStringLiteral("bxt: size    0 max    0 plan 'P'")}));
}

TEST_F(InstanceDataPlanLimitsTest, ABufferTextureOfNoTexelsHoldsNone)
{
    for (const int texels : {0, -1, -kHuge - 1})
    {
        driver.setInteger(GL_MAX_TEXTURE_BUFFER_SIZE, texels);
        const Limited none = limited(Plan::eBufferTextureMechanism, kOneVector);
        EXPECT_EQ(none.arraySize, 0u) << texels;
        EXPECT_EQ(none.arraySizeMax, 0u) << texels;
    }
}

TEST_F(InstanceDataPlanLimitsTest, ABufferTextureOfTheLargestSize)
{
    driver.setInteger(GL_MAX_TEXTURE_BUFFER_SIZE, kHuge);
    const Limited many = limited(Plan::eBufferTextureMechanism, kOneVector, 1000000);
    EXPECT_EQ(many.arraySize, 1000000u);
    EXPECT_EQ(many.arraySizeMax, size_t(kHuge));
    EXPECT_EQ(many.said, QStringList({QStringLiteral("bxt: size 1000000 max 2147483647 plan 'P'")}));
}

TEST_F(InstanceDataPlanLimitsTest, AMillionRecordsEndAtTheBufferTexturesMaximum)
{
    const Limited all = limited(Plan::eBufferTextureMechanism, kFooMembers, 1000000);
    EXPECT_EQ(all.arraySize, 10922u) << "65536 / 6";
    EXPECT_EQ(all.arraySizeMax, 10922u);
}

TEST_F(InstanceDataPlanLimitsTest, AnEmptyPlanUnderABufferTextureIsReportedAndKeepsItsLimits)
{
    const Limited same = limited(Plan::eBufferTextureMechanism, {}, 77);
    EXPECT_EQ(same.arraySize, 77u);
    EXPECT_EQ(same.arraySizeMax, 150u);
    EXPECT_EQ(same.said,
              QStringList({assertionLine(QStringLiteral("_totalDataSize > 0"), QStringLiteral("Plan 'P' is empty"))}));
}

// ---- texture -------------------------------------------------------------------------------------------------------

TEST_F(InstanceDataPlanLimitsTest, ATextureKeepsTheNumberOfRecordsWhateverItsSize)
{
    for (const int size : {96, 97, 16384, kHuge})
    {
        driver.setInteger(GL_MAX_TEXTURE_SIZE, size);
        const Limited same = limited(Plan::eTextureMechanism, kFooMembers, 1000000);
        EXPECT_EQ(same.arraySize, 1000000u) << size;
        EXPECT_EQ(same.arraySizeMax, 150u) << size;
        EXPECT_EQ(same.said, QStringList({QStringLiteral("txt: size   96 max %1 plan 'P'").arg(size, 4)}));
    }
}

TEST_F(InstanceDataPlanLimitsTest, ARecordLargerThanATextureIsReported)
{
    for (const int size : {95, 1, 0, -1})
    {
        driver.setInteger(GL_MAX_TEXTURE_SIZE, size);
        const Limited same = limited(Plan::eTextureMechanism, kFooMembers);
        EXPECT_EQ(same.arraySize, 150u) << size;
        EXPECT_EQ(same.arraySizeMax, 150u) << size;
        EXPECT_EQ(
            same.said,
            QStringList(
                {assertionLine(
                     QStringLiteral("static_cast<int>(_totalDataSize) <= maxTextureSize"),
                     QStringLiteral("Total data size (96) for plan P exceeds GL_MAX_TEXTURE_SIZE (%1)").arg(size)),
                 QStringLiteral("txt: size   96 max %1 plan 'P'").arg(size, 4)}));
    }
}

TEST_F(InstanceDataPlanLimitsTest, AnEmptyPlanUnderATextureKeepsItsLimits)
{
    const Limited same = limited(Plan::eTextureMechanism, {});
    EXPECT_EQ(same.arraySize, 150u);
    EXPECT_EQ(same.said, QStringList({QStringLiteral("txt: size    0 max 16384 plan 'P'")}));
}

// ---- storage block -------------------------------------------------------------------------------------------------

TEST_F(InstanceDataPlanLimitsTest, AStorageBlockHoldsAsManyRecordsAsItsBytes)
{
    storageBytes = 9600;
    const Limited few = limited(Plan::eStorageBufferMechanism, kFooMembers);
    EXPECT_EQ(few.arraySize, 100u);
    EXPECT_EQ(few.arraySizeMax, 100u);
    EXPECT_EQ(few.said, QStringList({QStringLiteral("ssb: size  100 max  100 plan 'P'")}));
    storageBytes = 1;
    EXPECT_EQ(limited(Plan::eStorageBufferMechanism, kFooMembers).arraySize, 0u);
}

TEST_F(InstanceDataPlanLimitsTest, AStorageBlockBeyondThirtyTwoBits)
{
    storageBytes = GLint64(96) << 32;
    const Limited many = limited(Plan::eStorageBufferMechanism, kFooMembers, 1000000);
    EXPECT_EQ(many.arraySize, 1000000u);
    EXPECT_EQ(many.arraySizeMax, size_t(1) << 32);
    storageBytes = kHuge64;
    EXPECT_EQ(limited(Plan::eStorageBufferMechanism, kOneVector).arraySizeMax, size_t(kHuge64) / 16);
}

TEST_F(InstanceDataPlanLimitsTest, AStorageBlockOfNoBytesChangesNothing)
{
    for (const GLint64 bytes : {GLint64(0), GLint64(-1), -kHuge64 - 1})
    {
        storageBytes = bytes;
        const Limited same = limited(Plan::eStorageBufferMechanism, kFooMembers, 151);
        EXPECT_EQ(same.arraySize, 151u);
        EXPECT_EQ(same.arraySizeMax, 150u);
        EXPECT_EQ(same.said, QStringList());
    }
}

TEST_F(InstanceDataPlanLimitsTest, AMillionRecordsFitIntoAStorageBlock)
{
    const Limited all = limited(Plan::eStorageBufferMechanism, kFooMembers, 1000000);
    EXPECT_EQ(all.arraySize, 1000000u);
    EXPECT_EQ(all.arraySizeMax, 1398101u) << "2^27 / 96";
    EXPECT_EQ(all.said, QStringList({QStringLiteral("ssb: size 1000000 max 1398101 plan 'P'")}));
}

TEST_F(InstanceDataPlanLimitsTest, WithoutTheFunctionAStorageBlockWarnsAndKeepsItsLimits)
{
    driver.refuse("glGetInteger64v");
    driver.load();
    Plan* const plan = newPlan("P", kFooMembers, Plan::eStorageBufferMechanism);
    plan->setArraySize(151);
    const LogCapture log;
    registered(plan);
    EXPECT_EQ(log.messages(QtWarningMsg),
              QStringList({QStringLiteral("OpenGL has not been initialised. No way it obtain correct maximum "
                                          "InstanceData table size for 'P'")}));
    EXPECT_EQ(log.texts().size(), 1);
    EXPECT_EQ(plan->arraySize(), 151u);
    EXPECT_EQ(plan->arraySizeMax(), 150u);
}

TEST_F(InstanceDataPlanLimitsTest, AnEmptyPlanUnderABlockKeepsItsLimits)
{
    for (const Plan::MechanismType mechanism : {Plan::eUniformBufferMechanism, Plan::eStorageBufferMechanism})
    {
        const Limited same = limited(mechanism, {});
        EXPECT_EQ(same.arraySize, 150u);
        EXPECT_EQ(same.arraySizeMax, 150u);
        EXPECT_EQ(same.said, QStringList());
    }
}

// ---- queries -------------------------------------------------------------------------------------------------------

TEST_F(InstanceDataPlanLimitsTest, EachCarrierAsksForItsOwnLimit)
{
    const std::pair<Plan::MechanismType, QStringList> cases[] = {
        {Plan::eUniformBufferMechanism, {QString::number(GL_MAX_UNIFORM_BLOCK_SIZE)}},
        {Plan::eUniformMechanism,
         {QString::number(GL_MAX_FRAGMENT_UNIFORM_COMPONENTS), QString::number(GL_MAX_VERTEX_UNIFORM_COMPONENTS)}},
        {Plan::eBufferTextureMechanism, {QString::number(GL_MAX_TEXTURE_BUFFER_SIZE)}},
        {Plan::eTextureMechanism, {QString::number(GL_MAX_TEXTURE_SIZE)}}};
    static QStringList asked;
    driver.replace(
        "glGetIntegerv",
        +[](GLenum parameter, GLint* value)
        {
            asked.append(QString::number(parameter));
            *value = 1000000;
        });
    driver.load();
    for (const auto& [mechanism, parameters] : cases)
    {
        asked.clear();
        registeredPlan("P", kFooMembers, mechanism);
        EXPECT_EQ(asked, parameters) << kCarrierNames[mechanism];
    }
}

TEST_F(InstanceDataPlanLimitsTest, QueriesThatWriteNothingLeaveTheFallbacks)
{
    letQueriesWriteNothing();
    writesStorageBytes = false;
    EXPECT_EQ(limited(Plan::eBufferTextureMechanism, kOneVector, 5000).arraySize, 2048u);
    EXPECT_EQ(limited(Plan::eUniformMechanism, kOneVector, 5000).arraySize, 56u) << "896 / 16";
    const Limited texture = limited(Plan::eTextureMechanism, kOneVector, 5000);
    EXPECT_EQ(texture.arraySize, 5000u);
    EXPECT_EQ(texture.said, QStringList({QStringLiteral("txt: size   16 max 1024 plan 'P'")}));
    for (const Plan::MechanismType mechanism : {Plan::eUniformBufferMechanism, Plan::eStorageBufferMechanism})
    {
        const Limited block = limited(mechanism, kOneVector, 5000);
        EXPECT_EQ(block.arraySize, 5000u);
        EXPECT_EQ(block.arraySizeMax, 150u);
        EXPECT_EQ(block.said, QStringList());
    }
}

TEST_F(InstanceDataPlanLimitsTest, TheVertexStagesFallbackIsTheLarger)
{
    driver.replace(
        "glGetIntegerv",
        +[](GLenum parameter, GLint* value)
        {
            if (parameter == GL_MAX_FRAGMENT_UNIFORM_COMPONENTS)
                *value = 4096;
        });
    driver.load();
    EXPECT_EQ(limited(Plan::eUniformMechanism, kOneVector).arraySizeMax, 64u) << "1024 / 16";
}

TEST_F(InstanceDataPlanLimitsTest, BeforeFunctionsAreLoadedTheFallbacksCount)
{
    GLRuntimeTestAccess::clearTable();
    EXPECT_EQ(limited(Plan::eBufferTextureMechanism, kOneVector, 5000).arraySize, 2048u);
    EXPECT_EQ(limited(Plan::eUniformMechanism, kOneVector, 5000).arraySize, 56u);
    const Limited texture = limited(Plan::eTextureMechanism, kOneVector);
    EXPECT_EQ(texture.said, QStringList({QStringLiteral("txt: size   16 max 1024 plan 'P'")}));
    const Limited block = limited(Plan::eUniformBufferMechanism, kOneVector, 5000);
    EXPECT_EQ(block.arraySize, 5000u);
    EXPECT_EQ(block.said, QStringList());
}

TEST_F(InstanceDataPlanLimitsTest, TheLimitIsThatOfThePaddedRecord)
{
    driver.setInteger(GL_MAX_UNIFORM_BLOCK_SIZE, 320);
    const PlanMembers members = {{Plan::eFloat, "f"}, {Plan::eTexture, "t"}};
    EXPECT_EQ(registeredPlan("P", members)->arraySizeMax(), 20u);
    EXPECT_EQ(registeredPlan("P", members, Plan::eUniformBufferMechanism, true)->arraySizeMax(), 10u);
}

TEST_F(InstanceDataPlanLimitsTest, TheNumberOfRecordsNeverRises)
{
    for (const Plan::MechanismType mechanism : kCarriers)
        EXPECT_EQ(limited(mechanism, kOneVector, 3).arraySize, 3u) << kCarrierNames[mechanism];
}

} // namespace
} // namespace Harrow::Vrk::Test
