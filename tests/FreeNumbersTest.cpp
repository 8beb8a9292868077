// SPDX-License-Identifier: MIT
#include "FreeNumbers.h"

#include "FreeNumbersTestTools.h"
#include "support/HeapCount.h"

#include <gtest/gtest.h>

#include <climits>
#include <random>
#include <set>

namespace Harrow::Vrk::Test
{
namespace
{

FreeNumbers allBelow(int count)
{
    FreeNumbers numbers;
    numbers.insertBelow(count);
    return numbers;
}

TEST(FreeNumbersTest, AreNoneAtFirst)
{
    const FreeNumbers numbers;
    EXPECT_TRUE(numbers.isEmpty());
    EXPECT_EQ(numbers.size(), 0);
    EXPECT_EQ(numbers.first(), -1);
    EXPECT_EQ(numbers.last(), -1);
    EXPECT_FALSE(numbers.contains(0));
}

TEST(FreeNumbersTest, AreAllBelowACount)
{
    for (const int count : {1, 63, 64, 65, 128, 1024})
    {
        const FreeNumbers numbers = allBelow(count);
        EXPECT_EQ(numbers.size(), count);
        EXPECT_EQ(numbers.first(), 0) << count;
        EXPECT_EQ(numbers.last(), count - 1);
        EXPECT_EQ(numbersIn(numbers).size(), count);
        EXPECT_FALSE(numbers.contains(unsigned(count)));
    }
}

TEST(FreeNumbersTest, ACountBelowOneAddsNone)
{
    for (const int count : {0, -1, INT_MIN})
        EXPECT_TRUE(allBelow(count).isEmpty()) << count;
}

TEST(FreeNumbersTest, ACountAddsToWhatIsThere)
{
    FreeNumbers numbers;
    numbers.insert(70);
    numbers.insert(1);
    numbers.insertBelow(3);
    EXPECT_EQ(numbersIn(numbers), QList<int>({0, 1, 2, 70}));
    EXPECT_EQ(numbers.size(), 4);
}

TEST(FreeNumbersTest, ANumberIsThereOnce)
{
    FreeNumbers numbers;
    numbers.insert(5);
    numbers.insert(5);
    EXPECT_EQ(numbers.size(), 1);
    numbers.remove(5);
    EXPECT_TRUE(numbers.isEmpty());
    numbers.remove(5);
    EXPECT_EQ(numbers.size(), 0);
}

TEST(FreeNumbersTest, NoNumberBeyondTheGreatestIsContainedOrRemoved)
{
    FreeNumbers numbers = allBelow(64);
    for (const unsigned number : {64u, 1000u, unsigned(INT_MAX), unsigned(-1), UINT_MAX - 63})
    {
        EXPECT_FALSE(numbers.contains(number)) << number;
        numbers.remove(number);
    }
    EXPECT_EQ(numbers.size(), 64);
}

TEST(FreeNumbersTest, AgreeWithAnOrderedSet)
{
    std::mt19937 engine(3);
    FreeNumbers numbers = allBelow(200);
    std::set<int> expected;
    for (int number = 0; number < 200; ++number)
        expected.insert(expected.end(), number);
    for (int step = 0; step < 20'000; ++step)
    {
        // Long runs of one kind, so that the set becomes both full and empty.
        const bool inserts = step / 1000 % 2 == 1;
        const unsigned number = unsigned(engine() % 200);
        if (inserts)
        {
            numbers.insert(number);
            expected.insert(int(number));
        }
        else
        {
            numbers.remove(number);
            expected.erase(int(number));
        }
        ASSERT_EQ(numbers.size(), int(expected.size()));
        ASSERT_EQ(numbers.isEmpty(), expected.empty());
        ASSERT_EQ(numbers.contains(number), inserts);
        ASSERT_EQ(numbers.first(), expected.empty() ? -1 : *expected.begin());
        ASSERT_EQ(numbers.last(), expected.empty() ? -1 : *expected.rbegin());
    }
    EXPECT_EQ(numbersIn(numbers), QList<int>(expected.begin(), expected.end()));
}

TEST(FreeNumbersTest, TakingAndGivingBackAllocatesNothing)
{
    FreeNumbers numbers = allBelow(90);
    const HeapCount count;
    for (unsigned number = 0; number < 90; ++number)
        numbers.remove(number);
    for (unsigned number = 0; number < 90; ++number)
        numbers.insert(number);
    EXPECT_EQ(count.soFar(), 0);
    EXPECT_EQ(numbers.size(), 90);
}

} // namespace
} // namespace Harrow::Vrk::Test
