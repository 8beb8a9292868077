// SPDX-License-Identifier: MIT
#include "UBOContextData.h"

#include "FreeNumbersTestTools.h"

#include <gtest/gtest.h>

namespace Harrow::Vrk::Test
{
namespace
{

TEST(UBOContextDataTest, AllPointsAreFreeAtFirst)
{
    const UBOContextData pool(GL_UNIFORM_BUFFER, 3);
    EXPECT_EQ(pool._target, GLenum(GL_UNIFORM_BUFFER));
    EXPECT_EQ(pool._maxBindings, 3);
    EXPECT_EQ(numbersIn(pool._freeBindings), QList<int>({0, 1, 2}));
    EXPECT_EQ(pool._bindingBuffers, QList<GLuint>({0, 0, 0}));
    EXPECT_EQ(pool._batchFirst, -1);
    EXPECT_EQ(pool._batchLast, -1);
    EXPECT_FALSE(pool.isBatching());
    EXPECT_EQ(pool.bindingOf(1), -1);
}

TEST(UBOContextDataTest, ADriverWithoutPointsGivesAnEmptyPool)
{
    for (const int count : {0, -1})
    {
        const UBOContextData pool(GL_SHADER_STORAGE_BUFFER, count);
        EXPECT_EQ(pool._maxBindings, 0);
        EXPECT_EQ(pool.chooseBinding(0), -1);
        EXPECT_TRUE(pool._bindingBuffers.isEmpty());
    }
}

TEST(UBOContextDataTest, APreferredFreePointIsChosenAndElseTheLowest)
{
    UBOContextData pool(GL_UNIFORM_BUFFER, 4);
    EXPECT_EQ(pool.chooseBinding(2), 2);
    EXPECT_EQ(pool.chooseBinding(-1), 0);
    EXPECT_EQ(pool.chooseBinding(4), 0);
    pool.take(7, 0);
    EXPECT_EQ(pool.chooseBinding(0), 1);
    pool.take(8, 2);
    EXPECT_EQ(pool.chooseBinding(2), 1);
}

TEST(UBOContextDataTest, TakeAndReleaseAreEachOthersOpposite)
{
    UBOContextData pool(GL_UNIFORM_BUFFER, 4);
    pool.take(7, 2);
    EXPECT_EQ(pool.bindingOf(7), 2);
    EXPECT_EQ(pool._boundUniformBufferObjectCounts.value(7), 1);
    EXPECT_EQ(pool._bindingBuffers, QList<GLuint>({0, 0, 7, 0}));
    EXPECT_FALSE(pool._freeBindings.contains(2));
    pool.release(7);
    EXPECT_EQ(pool.bindingOf(7), -1);
    EXPECT_TRUE(pool._boundUniformBufferObjectCounts.isEmpty());
    EXPECT_EQ(pool._bindingBuffers, QList<GLuint>({0, 0, 0, 0}));
    EXPECT_EQ(numbersIn(pool._freeBindings), QList<int>({0, 1, 2, 3}));
}

TEST(UBOContextDataTest, ABatchSpansTheLowestAndTheHighestPoint)
{
    UBOContextData pool(GL_UNIFORM_BUFFER, 10);
    pool.startBatch();
    EXPECT_TRUE(pool.isBatching());
    EXPECT_EQ(pool._batchFirst, 10);
    EXPECT_EQ(pool._batchLast, -1);
    pool.extendBatch(7);
    pool.extendBatch(3);
    pool.extendBatch(5);
    EXPECT_EQ(pool._batchFirst, 3);
    EXPECT_EQ(pool._batchLast, 7);
    pool.endBatch();
    EXPECT_FALSE(pool.isBatching());
}

} // namespace
} // namespace Harrow::Vrk::Test
