// SPDX-License-Identifier: MIT
//
// The books of texture image units: the pool of one context, and what textures do with it in one context and in
// several. The records of contexts are in TextureUnitRecordsTest.cpp.
#include "TextureUnits.h"

#include "FreeNumbersTestTools.h"
#include "TextureTestTools.h"
#include "support/HeapCount.h"

#include <QBasicMutex>
#include <QMessageLogger>

#include <chrono>
#include <climits>
#include <functional>
#include <future>
#include <vector>

namespace Harrow::Vrk::Test
{
namespace
{

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
    EXPECT_EQ(numbersIn(pool.freeTextureUnits), QList<int>({0, 1, 2}));
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
    EXPECT_EQ(numbersIn(pool.freeTextureUnits), QList<int>({1, 3}));
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
    EXPECT_EQ(numbersIn(pool.freeTextureUnits), QList<int>({0, 1}));
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

TEST_F(TextureContexts, AWarmBindAndUnbindAllocatesNothing)
{
    std::vector<std::unique_ptr<Texture>> textures;
    for (int i = 0; i < kUnits; ++i)
        textures.push_back(newTexture());
    const auto bindAll = [&]
    {
        bool bound = true;
        for (const auto& texture : textures)
            bound = texture->bind() && texture->bind() && bound;
        for (const auto& texture : textures)
            bound = texture->unit() >= 0 && texture->unbind() && texture->unbind() && bound;
        return bound;
    };
    ASSERT_TRUE(bindAll());
    const HeapCount count;
    EXPECT_TRUE(bindAll());
    EXPECT_EQ(count.soFar(), 0);
}

TEST_F(TextureContexts, AWarmBindAndUnbindOfAllUnitsAllocatesNothing)
{
    constexpr int kMany = 1024;
    driver.setInteger(GL_MAX_TEXTURE_IMAGE_UNITS, kMany);
    TextureUnits& units = TextureUnits::ofCurrentContext();
    const auto takeAll = [&]
    {
        for (unsigned name = 1; name <= kMany; ++name)
            units.take(name);
        for (unsigned name = 1; name <= kMany; ++name)
            units.release(name);
    };
    takeAll();
    const HeapCount count;
    takeAll();
    EXPECT_EQ(count.soFar(), 0);
    EXPECT_EQ(units.freeTextureUnits.size(), kMany);
}

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
