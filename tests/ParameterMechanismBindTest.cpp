// SPDX-License-Identifier: MIT
//
// Blocks at work on the fake driver: the exact OpenGL calls of bind and unbind; and what all carriers do alike.
#include "ParameterMechanismTestTools.h"

#include "OpenGLDeviceContext.h"

#include <cstdlib>
#include <ostream>

namespace Harrow::Vrk::Test
{
namespace
{

struct BlockCase
{
    Plan::MechanismType mechanism;
    GLenum target;
};
constexpr BlockCase kBlocks[] = {{Plan::eUniformBufferMechanism, GL_UNIFORM_BUFFER},
                                 {Plan::eStorageBufferMechanism, GL_SHADER_STORAGE_BUFFER}};

void PrintTo(const BlockCase& block, std::ostream* stream)
{
    *stream << (block.target == GL_UNIFORM_BUFFER ? "uniform block" : "storage block");
}

class BlockBindTest : public ParameterMechanismBindTest, public testing::WithParamInterface<BlockCase>
{
protected:
    void SetUp() override
    {
        ParameterMechanismBindTest::SetUp();
        use(GetParam().mechanism);
        // The record of binding points is made once for each context, and not by what is tested here.
        UniformBufferObjectTestAccess::uniformRecord();
        UniformBufferObjectTestAccess::storageRecord();
    }

    GLenum target = GetParam().target;
};
INSTANTIATE_TEST_SUITE_P(Blocks, BlockBindTest, testing::ValuesIn(kBlocks));

// ---- blocks --------------------------------------------------------------------------------------------------------

TEST_P(BlockBindTest, TheFirstBindMakesAndFillsTheBufferAndGivesItABindingPoint)
{
    const CallLog calls;
    EXPECT_TRUE(bind());
    EXPECT_EQ(listed(calls), QStringList({QStringLiteral("glGenBuffers")}) + uploaded(target) +
                                 QStringList({CallLog::call("glBindBufferBase", target, 0, 1)}));
    EXPECT_EQ(collection->getUniformBufferObject()->bufferObject()->valueCount(), 3 * 96) << "single bytes";
    EXPECT_EQ(collection->getUniformBufferObject()->bufferObject()->valueSize(), 1u);
}

TEST_P(BlockBindTest, ACleanBindOnlyGivesABindingPoint)
{
    bind();
    CallLog calls;
    EXPECT_TRUE(unbind());
    EXPECT_EQ(calls.list(), QStringList({CallLog::call("glBindBufferBase", target, 0, 0)}));
    calls.clear();
    EXPECT_TRUE(bind());
    EXPECT_EQ(calls.list(), QStringList({CallLog::call("glBindBufferBase", target, 0, 1)}));
    calls.clear();
    EXPECT_TRUE(bind());
    EXPECT_EQ(calls.list(), QStringList()) << "it has its point";
}

TEST_P(BlockBindTest, ADirtyBindUploadsOnceMoreByNameWithTheCollectionsUsage)
{
    collection->setBOUsageFlags(GL_DYNAMIC_DRAW);
    bind();
    const float one = 1.0f;
    collection->set(2, QStringLiteral("alpha"), &one, sizeof one);
    collection->set(1, QStringLiteral("alpha"), &one, sizeof one);
    CallLog calls;
    EXPECT_TRUE(bind());
    EXPECT_EQ(calls.list(), QStringList({uploadedByName(GL_DYNAMIC_DRAW)}));
    calls.clear();
    EXPECT_TRUE(bind());
    EXPECT_EQ(calls.list(), QStringList());
}

TEST_P(BlockBindTest, WithoutNamedBuffersEachUploadGoesThroughTheBinding)
{
    driver.refuse("glNamedBufferData");
    resetCachedEntryPoints();
    makeRecord();
    bind();
    const float one = 1.0f;
    collection->set(0, QStringLiteral("alpha"), &one, sizeof one);
    const CallLog calls;
    EXPECT_TRUE(bind());
    EXPECT_EQ(calls.list(), uploaded(target));
}

TEST_P(BlockBindTest, AProgramWithoutTheBlockIsLeftAlone)
{
    const auto program = linked();
    bind();
    const CallLog calls;
    EXPECT_TRUE(bind(program.get()));
    EXPECT_TRUE(unbind(program.get()));
    EXPECT_EQ(calls.list(), QStringList());
}

TEST_F(ParameterMechanismBindTest, AProgramWithTheBlockIsPointedAtTheBuffer)
{
    hasBlock = true;
    use(Plan::eUniformBufferMechanism);
    const auto program = linked();
    bind();
    CallLog calls;
    EXPECT_TRUE(bind(program.get()));
    EXPECT_EQ(calls.list(), QStringList({CallLog::call("glUniformBlockBinding", program->shaderProgramID(), 0, 0)}));
    calls.clear();
    EXPECT_TRUE(bind(program.get()));
    EXPECT_EQ(calls.list(), QStringList());
}

// ---- the token step ------------------------------------------------------------------------------------------------

TEST_F(ParameterMechanismBindTest, TokensAreBoundByTheManagerUnderEveryCarrier)
{
    for (const Plan::MechanismType mechanism : kCarriers)
    {
        use(mechanism);
        const quint64 numbers[] = {7, 9, 7};
        for (int index = 0; index < 3; ++index)
            collection->set(index, QStringLiteral("tex"), &numbers[index], sizeof numbers[index]);
        EXPECT_TRUE(bind(nullptr, manager.get()));
        EXPECT_EQ(manager->takeCalls(), QStringList({QStringLiteral("bind(tokens)")})) << kCarrierNames[mechanism];
        EXPECT_EQ(manager->boundTokens, tokens({7, 9}));
        EXPECT_TRUE(unbind(nullptr, manager.get()));
        EXPECT_EQ(manager->takeCalls(), QStringList({QStringLiteral("unbind(tokens)")}));
        EXPECT_TRUE(bind());
        EXPECT_TRUE(unbind());
        EXPECT_EQ(manager->takeCalls(), QStringList());
    }
}

TEST_F(ParameterMechanismBindTest, TokensAreCollectedOnlyWhenThereAreNone)
{
    for (const Plan::MechanismType mechanism : kCarriers)
    {
        use(mechanism);
        EXPECT_TRUE(bind(nullptr, manager.get()));
        const quint64 later = 5;
        collection->set(0, QStringLiteral("tex"), &later, sizeof later);
        EXPECT_TRUE(bind(nullptr, manager.get()));
        EXPECT_EQ(manager->boundTokens, tokens({0})) << kCarrierNames[mechanism];
        EXPECT_EQ(manager->takeCalls().size(), 2);
    }
}

// ---- without a buffer ----------------------------------------------------------------------------------------------

TEST_F(ParameterMechanismBindTest, WithoutABufferBindIsFalseAndNothingIsDone)
{
    const LogCapture log;
    InstanceDataCollection planless(nullptr, nullptr, 0); // has no plan, so it gets no buffer
    for (const Plan::MechanismType mechanism : kCarriers)
    {
        use(mechanism);
        const CallLog calls;
        EXPECT_EQ(plan->bind(nullptr, manager.get(), &planless), mechanism == Plan::eUniformMechanism)
            << kCarrierNames[mechanism];
        EXPECT_TRUE(plan->unbind(nullptr, nullptr, &planless));
        EXPECT_EQ(calls.list(), QStringList());
        if (mechanism != Plan::eUniformMechanism)
        {
            EXPECT_EQ(manager->takeCalls(), QStringList());
        }
    }
}

InstanceDataCollection* lateCollections[5] = {};

/// Told while the library releases its instance, so that there is none any more.
void bindLate()
{
    for (InstanceDataCollection* const collection : lateCollections)
    {
        const bool expected = collection->plan()->mechanism() == Plan::eUniformMechanism;
        if (OpenGLDeviceContext::current() || collection->bind(nullptr, nullptr) != expected)
            std::_Exit(6);
    }
    std::fputs("no buffer at the end\n", stderr);
}

[[noreturn]] void endWithCollections()
{
    for (const Plan::MechanismType mechanism : kCarriers)
        lateCollections[mechanism] =
            new InstanceDataCollection(new Plan(*registeredPlan(kCarrierNames[mechanism], kFooMembers, mechanism)), 2);
    QObject::connect(OpenGLDeviceContext::current()->fullscreenQuad().data(), &QObject::destroyed, bindLate);
    std::exit(0);
}

TEST_F(ParameterMechanismBindTest, AfterTheDeviceContextIsGoneThereIsNoBuffer)
{
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_EXIT(endWithCollections(), testing::ExitedWithCode(0), "no buffer at the end");
}

} // namespace
} // namespace Harrow::Vrk::Test
