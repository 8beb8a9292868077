// SPDX-License-Identifier: MIT
//
// The records of texture image units that contexts have: made on demand, kept apart, and remembered by threads.
#include "TextureUnits.h"

#include "FreeNumbersTestTools.h"
#include "TextureTestTools.h"
#include "ThreadTestTools.h"

#include <QBasicMutex>

#include <array>
#include <atomic>
#include <chrono>
#include <future>
#include <thread>
#include <vector>

namespace Harrow::Vrk::Test
{
namespace
{

class TextureUnitRecords : public FakeDriverTest
{
protected:
    void SetUp() override
    {
        driver.setInteger(GL_MAX_TEXTURE_IMAGE_UNITS, 4);
        FakeDriverTest::SetUp();
    }
};

TEST_F(TextureUnitRecords, AreMadeOnFirstDemandByOneQuery)
{
    EXPECT_EQ(TextureUnits::findOfCurrentContext(), nullptr);
    const CallLog calls;
    TextureUnits& record = TextureUnits::ofCurrentContext();
    EXPECT_EQ(&TextureUnits::ofCurrentContext(), &record);
    EXPECT_EQ(TextureUnits::findOfCurrentContext(), &record);
    EXPECT_EQ(record.maxTextureImageUnits, 4);
    EXPECT_EQ(numbersIn(record.freeTextureUnits), QList<int>({0, 1, 2, 3}));
    ASSERT_EQ(calls.list().size(), 1);
    EXPECT_TRUE(calls.list().first().startsWith(QStringLiteral("glGetIntegerv(0x8872, "))) << "the limit of units";
}

TEST_F(TextureUnitRecords, ToFindOneMakesNoneAndCallsNothing)
{
    const CallLog calls;
    EXPECT_EQ(TextureUnits::findOfCurrentContext(), nullptr);
    EXPECT_EQ(TextureUnits::findOfCurrentContext(), nullptr);
    EXPECT_EQ(calls.list(), QStringList());
}

TEST_F(TextureUnitRecords, EachContextHasItsOwnAndNoneCountsAsOne)
{
    int places[2] = {};
    TextureUnits& first = TextureUnits::ofCurrentContext();
    first.take(7);
    driver.setContext(&places[0]);
    driver.setInteger(GL_MAX_TEXTURE_IMAGE_UNITS, 2);
    EXPECT_EQ(TextureUnits::findOfCurrentContext(), nullptr);
    TextureUnits& second = TextureUnits::ofCurrentContext();
    EXPECT_NE(&second, &first);
    EXPECT_EQ(second.maxTextureImageUnits, 2);
    EXPECT_EQ(second.unitOf(7), -1);
    driver.setContext(nullptr);
    driver.setInteger(GL_MAX_TEXTURE_IMAGE_UNITS, 0);
    TextureUnits& none = TextureUnits::ofCurrentContext();
    EXPECT_EQ(none.maxTextureImageUnits, 0);
    EXPECT_EQ(TextureUnits::findOfCurrentContext(), &none);
    driver.setContext(&driver);
    EXPECT_EQ(&TextureUnits::ofCurrentContext(), &first);
    EXPECT_EQ(first.unitOf(7), 3);
    driver.setContext(&places[0]);
    EXPECT_EQ(TextureUnits::findOfCurrentContext(), &second);
}

TEST_F(TextureUnitRecords, StayWhereTheyAreWhileOthersAreMade)
{
    std::vector<char> places(1000);
    std::vector<TextureUnits*> records;
    for (char& place : places)
    {
        driver.setContext(&place);
        records.push_back(&TextureUnits::ofCurrentContext());
        records.back()->take(unsigned(records.size()));
    }
    for (std::size_t i = 0; i < places.size(); ++i)
    {
        driver.setContext(&places[i]);
        ASSERT_EQ(&TextureUnits::ofCurrentContext(), records[i]);
        ASSERT_EQ(TextureUnits::findOfCurrentContext(), records[i]);
        ASSERT_EQ(records[i]->unitOf(unsigned(i + 1)), 3);
    }
}

TEST_F(TextureUnitRecords, ThreadsMakeAndUseTheirOwnAtTheSameTime)
{
    const ContextPerThread platform(driver);
    constexpr int kThreads = 4;
    constexpr int kContexts = 200;
    std::vector<char> places(kThreads * kContexts);
    std::atomic<int> wrong = 0;
    std::vector<std::thread> threads;
    for (int thread = 0; thread < kThreads; ++thread)
        threads.emplace_back(
            [&, thread]
            {
                for (int i = 0; i < kContexts; ++i)
                {
                    ContextPerThread::context = &places[std::size_t(thread * kContexts + i)];
                    wrong += TextureUnits::findOfCurrentContext() != nullptr;
                    TextureUnits& record = TextureUnits::ofCurrentContext();
                    wrong += record.take(7) != 3u;
                    record.release(7);
                    wrong += TextureUnits::findOfCurrentContext() != &record;
                    wrong += record.freeTextureUnits.size() != 4;
                }
            });
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(wrong, 0);
}

TEST_F(TextureUnitRecords, ThreadsWithoutAContextShareOneRecord)
{
    const ContextPerThread platform(driver);
    constexpr int kThreads = 4;
    for (int round = 0; round < 100; ++round)
    {
        TextureTestAccess::forgetContexts();
        std::array<const TextureUnits*, kThreads> seen = {};
        std::atomic<int> waiting = kThreads;
        std::vector<std::thread> threads;
        for (const TextureUnits*& record : seen)
            threads.emplace_back(
                [&]
                {
                    --waiting;
                    while (waiting > 0)
                        std::this_thread::yield();
                    record = &TextureUnits::ofCurrentContext();
                });
        for (std::thread& thread : threads)
            thread.join();
        for (const TextureUnits* const record : seen)
            ASSERT_EQ(record, seen[0]);
        ASSERT_EQ(seen[0]->freeTextureUnits.size(), 4);
    }
}

// ---- what a thread remembers ---------------------------------------------------------------------------------------

TEST_F(TextureUnitRecords, AThreadThatStaysInOneContextTakesNoLock)
{
    TextureUnits& record = TextureUnits::ofCurrentContext();
    std::promise<void> held;
    std::promise<void> warm;
    std::future<bool> answer = std::async(std::launch::async,
                                          [&]
                                          {
                                              TextureUnits::ofCurrentContext();
                                              warm.set_value();
                                              held.get_future().wait();
                                              return &TextureUnits::ofCurrentContext() == &record;
                                          });
    warm.get_future().wait();
    QBasicMutex& guard = TextureTestAccess::recordsMutex();
    guard.lock();
    held.set_value();
    const std::future_status status = answer.wait_for(std::chrono::seconds(20));
    guard.unlock();
    EXPECT_EQ(status, std::future_status::ready) << "it waits for the guard";
    EXPECT_TRUE(answer.get());
}

TEST_F(TextureUnitRecords, AForgottenRecordIsForgottenByEveryThread)
{
    std::promise<void> warm;
    std::promise<void> forgotten;
    std::future<int> units = std::async(std::launch::async,
                                        [&]
                                        {
                                            TextureUnits::ofCurrentContext().take(7);
                                            warm.set_value();
                                            forgotten.get_future().wait();
                                            if (TextureUnits::findOfCurrentContext())
                                                return -1;
                                            return TextureUnits::ofCurrentContext().freeTextureUnits.size();
                                        });
    warm.get_future().wait();
    TextureTestAccess::forgetContexts();
    driver.setInteger(GL_MAX_TEXTURE_IMAGE_UNITS, 6);
    forgotten.set_value();
    EXPECT_EQ(units.get(), 6);
    EXPECT_EQ(TextureUnits::ofCurrentContext().maxTextureImageUnits, 6);
}

TEST_F(TextureUnitRecords, TheRecordOfOneContextDoesNotServeAnotherInTurn)
{
    int place = 0;
    TextureUnits& first = TextureUnits::ofCurrentContext();
    driver.setContext(&place);
    TextureUnits& second = TextureUnits::ofCurrentContext();
    ASSERT_NE(&first, &second);
    for (int round = 0; round < 3; ++round)
    {
        driver.setContext(&driver);
        EXPECT_EQ(&TextureUnits::ofCurrentContext(), &first);
        EXPECT_EQ(TextureUnits::findOfCurrentContext(), &first);
        driver.setContext(&place);
        EXPECT_EQ(TextureUnits::findOfCurrentContext(), &second);
        EXPECT_EQ(&TextureUnits::ofCurrentContext(), &second);
    }
}

} // namespace
} // namespace Harrow::Vrk::Test
