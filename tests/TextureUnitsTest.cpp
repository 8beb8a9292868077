// SPDX-License-Identifier: MIT
//
// The books of texture image units: the pool of one context, the records of all contexts, and what textures do with
// them.
#include "TextureUnits.h"

#include "TextureTestTools.h"
#include "support/RecordingPlatform.h"

#include <QBasicMutex>
#include <QMessageLogger>

#include <atomic>
#include <chrono>
#include <climits>
#include <functional>
#include <future>
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
    {
        const TextureUnits pool = poolOf(units);
        EXPECT_TRUE(pool.freeTextureUnits.isEmpty()) << units;
        EXPECT_EQ(pool.maxTextureImageUnits, 0) << units;
    }
}

TEST(TextureUnitsTest, ADriverThatClaimsMoreThan1024UnitsHas1024)
{
    for (const int units : {1024, 1025, INT_MAX})
    {
        TextureUnits pool = poolOf(units);
        EXPECT_EQ(pool.maxTextureImageUnits, 1024) << units;
        EXPECT_EQ(pool.freeTextureUnits.size(), 1024) << units;
        EXPECT_EQ(pool.take(7), 1023u) << units;
    }
    EXPECT_EQ(poolOf(1023).freeTextureUnits.size(), 1023);
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

// ---- whoever handles a message -------------------------------------------------------------------------------------

/// Runs a function within Qt's message handler, once.
class WhileHandling
{
public:
    explicit WhileHandling(std::function<void()> work) : _former(qInstallMessageHandler(&handle))
    {
        pending() = std::move(work);
    }
    ~WhileHandling()
    {
        qInstallMessageHandler(_former);
        pending() = nullptr;
    }
    WhileHandling(const WhileHandling&) = delete;
    WhileHandling& operator=(const WhileHandling&) = delete;

private:
    static std::function<void()>& pending()
    {
        static std::function<void()> work;
        return work;
    }
    static void handle(QtMsgType, const QMessageLogContext&, const QString&)
    {
        if (const auto work = std::exchange(pending(), nullptr))
            work();
    }

    QtMessageHandler _former;
};

/// Whether a texture can be bound from here without waiting for ever.
bool isGuardFree()
{
    QBasicMutex& mutex = TextureTestAccess::recordsMutex();
    if (!mutex.tryLock())
        return false;
    mutex.unlock();
    return true;
}

class TextureContexts : public TextureFixture
{
};

TEST_F(TextureContexts, WhoeverHandlesAMessageOfTheDriverMayBindTextures)
{
    static bool said;
    said = false;
    driver.replace(
        "glGetIntegerv",
        +[](GLenum name, GLint* value)
        {
            if (name == GL_MAX_TEXTURE_IMAGE_UNITS && !std::exchange(said, true))
                QMessageLogger().warning("the driver has something to say");
            *value = kUnits;
        });
    driver.load();
    const auto texture = newTexture();
    const auto other = newTexture();
    int handled = 0;
    {
        const WhileHandling handling(
            [&]
            {
                ++handled;
                ASSERT_TRUE(isGuardFree());
                EXPECT_TRUE(other->bind());
            });
        EXPECT_TRUE(texture->bind());
    }
    EXPECT_EQ(handled, 1);
    EXPECT_EQ(other->unit(), 3) << "both went into one record";
    EXPECT_EQ(texture->unit(), 2);
}

TEST_F(TextureContexts, WhoeverHandlesTheMessageOfAMissingQueryMayBindTextures)
{
    ::_ptrc_glGetIntegerv = nullptr;
    const auto texture = newTexture();
    int handled = 0;
    bool bound = true;
    {
        const WhileHandling handling(
            [&]
            {
                ++handled;
                ASSERT_TRUE(isGuardFree());
                bound = texture->bind(); // Qt prints what is said meanwhile
            });
        EXPECT_EQ(TextureUnits::ofCurrentContext().maxTextureImageUnits, 0);
    }
    EXPECT_EQ(handled, 1);
    EXPECT_FALSE(bound);
    const LogCapture log;
    EXPECT_FALSE(texture->bind());
    EXPECT_EQ(log.messages(), QStringList(QStringLiteral("There is no available texture units")));
}

TEST_F(TextureContexts, WhetherAUnitIsFreeIsSaidWhileTheGuardIsHeld)
{
    makeRecord();
    QBasicMutex& guard = TextureTestAccess::recordsMutex();
    guard.lock();
    std::future<bool> answer = std::async(std::launch::async, [] { return Texture::isTextureUnitFree(0); });
    const std::future_status status = answer.wait_for(std::chrono::seconds(20));
    guard.unlock();
    EXPECT_EQ(status, std::future_status::ready) << "it waits for the guard";
    EXPECT_TRUE(answer.get());
}

// ---- textures and contexts -----------------------------------------------------------------------------------------

TEST_F(TextureContexts, AQuestionInAFreshContextOpensItsBooksWithOneQuery)
{
    const auto texture = newTexture();
    const std::pair<const char*, std::function<void()>> questions[] = {
        {"isBound", [&] { EXPECT_FALSE(texture->isBound()); }},
        {"unbind", [&] { EXPECT_FALSE(texture->unbind()); }},
        {"unit", [&] { EXPECT_EQ(texture->unit(), -1); }},
        {"width", [&] { EXPECT_EQ(texture->width(0), -1); }},
    };
    std::array<char, std::size(questions)> places = {};
    for (std::size_t i = 0; i < places.size(); ++i)
    {
        const auto& [name, ask] = questions[i];
        driver.setContext(&places[i]);
        const LogCapture log;
        CallLog calls;
        ask();
        ASSERT_EQ(calls.list().size(), 1) << name;
        EXPECT_TRUE(calls.list().first().startsWith(QStringLiteral("glGetIntegerv(0x8872, "))) << name;
        calls.clear();
        ask();
        EXPECT_EQ(calls.list(), QStringList()) << name;
    }
}

TEST_F(TextureContexts, ARecordOutlivesItsContextAndServesTheNextOneAtItsPlace)
{
    const auto texture = newTexture();
    texture->bind();
    driver.setContext(nullptr);
    driver.setInteger(GL_MAX_TEXTURE_IMAGE_UNITS, 8);
    driver.setContext(&driver);
    const CallLog calls;
    EXPECT_TRUE(texture->isBound());
    EXPECT_EQ(texture->unit(), 3);
    EXPECT_FALSE(Texture::isTextureUnitFree(7));
    EXPECT_EQ(calls.list(), QStringList()) << "the limit is not asked for again";
}

TEST_F(TextureContexts, FreeUnitsAreThoseOfARecordThatExists)
{
    const auto texture = newTexture();
    const CallLog calls;
    EXPECT_FALSE(Texture::isTextureUnitFree(0)) << "no record yet";
    EXPECT_EQ(TextureUnits::findOfCurrentContext(), nullptr) << "and none is made";
    EXPECT_EQ(calls.list(), QStringList());
    texture->bind();
    EXPECT_TRUE(Texture::isTextureUnitFree(0));
    EXPECT_TRUE(Texture::isTextureUnitFree(2));
    EXPECT_FALSE(Texture::isTextureUnitFree(3));
    EXPECT_FALSE(Texture::isTextureUnitFree(4)) << "there is no such unit";
    texture->unbind();
    EXPECT_TRUE(Texture::isTextureUnitFree(3));
}

TEST_F(TextureContexts, NoUnitIsFreeInAnEmptyRecord)
{
    driver.setInteger(GL_MAX_TEXTURE_IMAGE_UNITS, 0);
    makeRecord();
    EXPECT_FALSE(Texture::isTextureUnitFree(0));
}

TEST_F(TextureContexts, MaxTextureUnitsMakesTheRecord)
{
    const Texture texture(nullptr);
    EXPECT_EQ(Access::maxTextureUnits(texture), kUnits);
    EXPECT_NE(TextureUnits::findOfCurrentContext(), nullptr);
}

TEST_F(TextureContexts, ContextsHaveUnitsAndCountsOfTheirOwn)
{
    const auto first = newTexture();
    const auto second = newTexture();
    int other = 0;
    first->bind();
    second->bind();

    driver.setContext(&other);
    driver.setInteger(GL_MAX_TEXTURE_IMAGE_UNITS, 2);
    EXPECT_FALSE(Texture::isTextureUnitFree(0)) << "this context has no record yet";
    EXPECT_FALSE(second->isBound());
    {
        const LogCapture log;
        EXPECT_FALSE(second->unbind());
    }
    const CallLog calls;
    EXPECT_TRUE(second->bind());
    EXPECT_EQ(calls.list(), QStringList({activate(1), bindName(2)}));
    EXPECT_EQ(second->unit(), 1);
    EXPECT_TRUE(second->unbind());
    EXPECT_FALSE(second->isBound());

    driver.setContext(&driver);
    EXPECT_TRUE(second->isBound());
    EXPECT_EQ(second->unit(), 2);
    EXPECT_EQ(first->unit(), 3);
}

} // namespace
} // namespace Harrow::Vrk::Test
