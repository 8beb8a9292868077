// SPDX-License-Identifier: MIT
//
// The books of texture image units: the pool of one context, and the records of all contexts.
#include "TextureUnits.h"

#include "support/CallLog.h"
#include "support/FakeDriver.h"
#include "support/LogCapture.h"
#include "support/RecordingPlatform.h"

#include <atomic>
#include <climits>
#include <thread>
#include <vector>

namespace Harrow::Vrk::Test
{
namespace
{

using Units = QMap<unsigned, unsigned>;

TextureUnits poolOf(int units)
{
    TextureUnits pool;
    pool.initilizeFreeTextureUnits(units, nullptr);
    return pool;
}

// ---- the pool, without OpenGL --------------------------------------------------------------------------------------

TEST(TextureUnitsTest, ANewRecordIsEmpty)
{
    const TextureUnits pool;
    EXPECT_EQ(pool.maxTextureImageUnits, 0);
    EXPECT_TRUE(pool.freeTextureUnits.isEmpty());
    EXPECT_TRUE(pool.textureToUnitMaps.isEmpty());
    EXPECT_TRUE(pool.boundTextureCounts.isEmpty());
}

TEST(TextureUnitsTest, AllUnitsAreFreeAtFirst)
{
    const TextureUnits pool = poolOf(3);
    EXPECT_EQ(pool.maxTextureImageUnits, 3);
    EXPECT_EQ(pool.freeTextureUnits, (Units{{0, 0}, {1, 1}, {2, 2}}));
    EXPECT_EQ(pool.unitOf(1), -1);
}

TEST(TextureUnitsTest, ADriverWithoutUnitsGivesAnEmptyPool)
{
    for (const int units : {0, -1, INT_MIN})
        EXPECT_TRUE(poolOf(units).freeTextureUnits.isEmpty()) << units;
}

TEST(TextureUnitsTest, InitialisingAgainIsReportedAndDoneAllTheSame)
{
    TextureUnits pool = poolOf(2);
    int place = 0;
    const LogCapture log;
    pool.initilizeFreeTextureUnits(3, &place);
    const QString message = QString::asprintf("VrkTexture::initilizeFreeTextureUnits() : m_MaxTextureImageUnits is set "
                                              "for exisitng GL context, %p",
                                              static_cast<void*>(&place));
    EXPECT_EQ(log.messages(QtCriticalMsg),
              QStringList(assertionLine(QStringLiteral("0 == contextInfo.maxTextureImageUnits"), message)));
    EXPECT_EQ(pool.maxTextureImageUnits, 3);
    EXPECT_EQ(pool.freeTextureUnits.size(), 3);
}

TEST(TextureUnitsTest, UnitsAreHandedOutFromTheTopDownward)
{
    TextureUnits pool = poolOf(3);
    EXPECT_EQ(pool.take(70), 2u);
    EXPECT_EQ(pool.take(71), 1u);
    EXPECT_EQ(pool.take(72), 0u);
    EXPECT_TRUE(pool.freeTextureUnits.isEmpty());
    EXPECT_EQ(pool.unitOf(70), 2);
    EXPECT_EQ(pool.unitOf(71), 1);
    EXPECT_EQ(pool.unitOf(72), 0);
    EXPECT_EQ(pool.boundTextureCounts, (QHash<unsigned, int>{{70, 1}, {71, 1}, {72, 1}}));
}

TEST(TextureUnitsTest, TheHighestFreeUnitIsTakenAndNotTheLastFreed)
{
    TextureUnits pool = poolOf(4);
    for (const unsigned texture : {70u, 71u, 72u, 73u})
        pool.take(texture);
    pool.release(70);
    pool.release(72);
    EXPECT_EQ(pool.freeTextureUnits, (Units{{1, 1}, {3, 3}}));
    EXPECT_EQ(pool.take(74), 3u);
    EXPECT_EQ(pool.take(75), 1u);
}

TEST(TextureUnitsTest, TakeAndReleaseAreEachOthersOpposite)
{
    TextureUnits pool = poolOf(2);
    pool.take(7);
    pool.boundTextureCounts[7] = 5;
    pool.release(7);
    EXPECT_EQ(pool.unitOf(7), -1);
    EXPECT_TRUE(pool.textureToUnitMaps.isEmpty());
    EXPECT_TRUE(pool.boundTextureCounts.isEmpty());
    EXPECT_EQ(pool.freeTextureUnits, (Units{{0, 0}, {1, 1}}));
}

// ---- the records of contexts ---------------------------------------------------------------------------------------

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
    EXPECT_EQ(record.freeTextureUnits, (Units{{0, 0}, {1, 1}, {2, 2}, {3, 3}}));
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

/// The fake driver with a context of its own on each thread.
class ContextPerThread final : public GLPlatform
{
public:
    explicit ContextPerThread(GLPlatform& driver) : _driver(driver)
    {
        RecordingPlatform::instance().setInner(this);
    }
    ~ContextPerThread() override
    {
        RecordingPlatform::instance().setInner(&_driver);
    }
    void* procAddress(const char* name) override
    {
        return _driver.procAddress(name);
    }
    void* moduleSymbol(const char* name) override
    {
        return _driver.moduleSymbol(name);
    }
    void* currentContext() override
    {
        return context;
    }

    static thread_local void* context;

private:
    GLPlatform& _driver;
};

thread_local void* ContextPerThread::context = nullptr;

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

} // namespace
} // namespace Harrow::Vrk::Test
