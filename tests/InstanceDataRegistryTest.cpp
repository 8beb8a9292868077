// SPDX-License-Identifier: MIT
//
// InstanceDataRegistry: plans by name.
#include "InstanceDataTestTools.h"

#include <new>
#include <type_traits>

namespace Harrow::Vrk::Test
{
namespace
{

static_assert(!std::is_default_constructible_v<InstanceDataRegistry>);
static_assert(!std::is_destructible_v<InstanceDataRegistry>);
static_assert(std::is_copy_assignable_v<InstanceDataRegistry>);

class InstanceDataRegistryTest : public RecordsFixture
{
protected:
    /// A plan with a member whose name nobody else holds: the name is shared for as long as the plan lives.
    struct Watched
    {
        explicit Watched(const QString& planName) : plan(new InstanceDataPlan(planName))
        {
            plan->addMember(InstanceDataPlan::eFloat, member);
        }
        bool isAlive() const
        {
            return !member.isDetached();
        }
        QString member = QString(20, u'm');
        InstanceDataPlan* plan;
    };

    InstanceDataRegistry& registry = InstanceDataRegistry::Instance();
};

} // namespace

TEST_F(InstanceDataRegistryTest, ThereIsOne)
{
    EXPECT_EQ(&InstanceDataRegistry::Instance(), &registry);
}

TEST_F(InstanceDataRegistryTest, ARegisteredPlanIsFoundByItsNameAndFinal)
{
    auto* const other = newPlan(QStringLiteral("Other"));
    EXPECT_TRUE(other->glslh().isEmpty());
    registry.registerPlan(other);
    const LogCapture log;
    EXPECT_EQ(registry.getPlan(QStringLiteral("Other")), other);
    EXPECT_EQ(registry.getPlan(kPlanName), plan);
    EXPECT_EQ(other->arraySize(), 4u);
    EXPECT_FALSE(other->glslh().isEmpty());
    EXPECT_FALSE(other->glslc().isEmpty());
    EXPECT_EQ(log.texts(), QStringList());
}

TEST_F(InstanceDataRegistryTest, RegisteringAsksTheDriverForItsLimits)
{
    driver.setInteger(GL_MAX_UNIFORM_BLOCK_SIZE, 3 * kRecordBytes + 50);
    auto* const other = newPlan(QStringLiteral("Other"));
    const LogCapture log;
    registry.registerPlan(other);
    EXPECT_EQ(log.messages(QtDebugMsg), QStringList({"ubo: size    3 max    3 plan 'Other'"}));
    EXPECT_EQ(other->arraySize(), 3u);
}

TEST_F(InstanceDataRegistryTest, AnUnknownNameIsNullTwiceAndWarnsTheFirstTimeAlone)
{
    LogCapture log;
    EXPECT_EQ(registry.getPlan(QStringLiteral("Lost")), nullptr);
    ASSERT_EQ(log.messages(), QStringList({unknownPlan("Lost")}));
    EXPECT_EQ(log.lines()[0].type, QtWarningMsg);
    EXPECT_TRUE(log.texts()[0].startsWith("[InstanceDataRegistry.cpp:"));
    log.clear();
    EXPECT_EQ(registry.getPlan(QStringLiteral("Lost")), nullptr);
    EXPECT_EQ(log.texts(), QStringList());
    EXPECT_EQ(registry.getPlan(QStringLiteral("object")), nullptr) << "letter by letter";
    EXPECT_EQ(registry.getPlan(QString()), nullptr);
    EXPECT_EQ(log.messages(QtWarningMsg), QStringList({unknownPlan("object"), unknownPlan("")}));
}

TEST_F(InstanceDataRegistryTest, WithLoggingOffAnUnknownNameIsNullInSilence)
{
    if (!isLoggingSwitchedOff())
    {
        EXPECT_TRUE(passesWithLoggingOff("InstanceDataRegistryTest.WithLoggingOffAnUnknownNameIsNullInSilence"));
        return;
    }
    const LogCapture log;
    EXPECT_EQ(registry.getPlan(QStringLiteral("Lost")), nullptr);
    EXPECT_EQ(registry.getPlan(QStringLiteral("Lost")), nullptr);
    EXPECT_EQ(log.texts(), QStringList());
}

TEST_F(InstanceDataRegistryTest, APlanThatComesAfterAFailedLookUpIsFound)
{
    EXPECT_EQ(registry.getPlan(QStringLiteral("Late")), nullptr);
    auto* const late = registerPlan(newPlan(QStringLiteral("Late")));
    EXPECT_EQ(registry.getPlan(QStringLiteral("Late")), late);
}

TEST_F(InstanceDataRegistryTest, ASecondPlanOfANameTakesItAndTheFirstStaysAllocated)
{
    const Watched first(QStringLiteral("Twice"));
    const Watched second(QStringLiteral("Twice"));
    const LogCapture log;
    registry.registerPlan(first.plan);
    registry.registerPlan(second.plan);
    EXPECT_EQ(registry.getPlan(QStringLiteral("Twice")), second.plan);
    EXPECT_TRUE(first.isAlive());
    EXPECT_EQ(first.plan->totalDataSize(), 16u);
    registry.clear();
    EXPECT_TRUE(first.isAlive());
    EXPECT_FALSE(second.isAlive());
    EXPECT_EQ(log.texts(QtWarningMsg) + log.texts(QtCriticalMsg), QStringList());
    delete first.plan; // nobody else will
    EXPECT_FALSE(first.isAlive());
}

TEST_F(InstanceDataRegistryTest, ClearDeletesThePlansAndForgetsTheNames)
{
    const Watched one(QStringLiteral("One"));
    const Watched two(QStringLiteral("Two"));
    registry.registerPlan(one.plan);
    registry.registerPlan(two.plan);
    EXPECT_EQ(registry.getPlan(QStringLiteral("Lost")), nullptr);
    EXPECT_TRUE(one.isAlive());
    EXPECT_TRUE(two.isAlive());
    registry.clear(); // over the null entry too
    EXPECT_FALSE(one.isAlive());
    EXPECT_FALSE(two.isAlive());
    const LogCapture log;
    EXPECT_EQ(registry.getPlan(QStringLiteral("One")), nullptr);
    EXPECT_EQ(registry.getPlan(QStringLiteral("Lost")), nullptr);
    EXPECT_EQ(log.messages(), QStringList({unknownPlan("One"), unknownPlan("Lost")}));
    registry.clear();
    registry.clear();
}

TEST_F(InstanceDataRegistryTest, ACopyAndAnAssignmentShareThePlans)
{
    // No registry is ever destroyed from outside.
    alignas(InstanceDataRegistry) static std::byte place[sizeof(InstanceDataRegistry)];
    auto* const copy = new (place) InstanceDataRegistry(registry);
    EXPECT_EQ(copy->getPlan(kPlanName), plan);
    LogCapture log;
    EXPECT_EQ(copy->getPlan(QStringLiteral("Lost")), nullptr);
    EXPECT_EQ(registry.getPlan(QStringLiteral("Lost")), nullptr);
    EXPECT_EQ(log.messages(), QStringList({unknownPlan("Lost"), unknownPlan("Lost")})) << "each has a table";
    auto* const other = registerPlan(newPlan(QStringLiteral("Other")));
    EXPECT_EQ(copy->getPlan(QStringLiteral("Other")), nullptr);
    *copy = registry;
    EXPECT_EQ(copy->getPlan(QStringLiteral("Other")), other);
    registry.clear();
    *copy = registry;
    log.clear();
    EXPECT_EQ(copy->getPlan(kPlanName), nullptr);
    EXPECT_EQ(log.messages(), QStringList({unknownPlan("Object")}));
}

// ---- guards --------------------------------------------------------------------------------------------------------

TEST_F(InstanceDataRegistryTest, ANullPlanIsReportedAndNotRegistered)
{
    const LogCapture log;
    registry.registerPlan(nullptr);
    EXPECT_EQ(log.messages(QtCriticalMsg),
              QStringList({assertionLine("nullptr != plan", "InstanceDataPlan is NULL on registerPlan")}));
    EXPECT_EQ(registry.getPlan(kPlanName), plan);
}

TEST_F(InstanceDataRegistryTest, APlanThatIsRegisteredTwiceIsReportedByThePlanAndKept)
{
    const QString text = plan->glslh();
    const LogCapture log;
    registry.registerPlan(plan);
    EXPECT_EQ(log.texts(QtCriticalMsg).size(), 1);
    EXPECT_EQ(registry.getPlan(kPlanName), plan);
    EXPECT_EQ(plan->glslh(), text);
}

TEST_F(InstanceDataRegistryTest, APlanThatIsHeldUnderTwoNamesIsDeletedOnce)
{
    const Watched watched(QStringLiteral("One"));
    registry.registerPlan(watched.plan);
    InstanceDataPlan renamed(QStringLiteral("Two"));
    renamed.addMember(InstanceDataPlan::eFloat, watched.member);
    *watched.plan = renamed;
    registry.registerPlan(watched.plan);
    EXPECT_EQ(registry.getPlan(QStringLiteral("One")), watched.plan);
    EXPECT_EQ(registry.getPlan(QStringLiteral("Two")), watched.plan);
    registry.clear();
    renamed = InstanceDataPlan(QString());
    EXPECT_FALSE(watched.isAlive());
}

} // namespace Harrow::Vrk::Test
