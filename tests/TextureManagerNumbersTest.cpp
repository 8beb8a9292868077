// SPDX-License-Identifier: MIT
//
// TextureManager: the numbers of tokens, how they are issued, given back and issued again.
#include "TextureManagerTestTools.h"

#include <algorithm>
#include <numeric>
#include <random>
#include <vector>

namespace Harrow::Vrk::Test
{
namespace
{

constexpr int kMany = 100'000;

const QString kNoneReserved = QStringLiteral("0 < this->_maxToken.token");
const QString kTooHigh = QStringLiteral("token.token < this->_maxToken.token");

/// The lists as they are told, searched one by one.
struct NaiveNumbers
{
    quint64 maxToken = 0;
    QList<TextureToken> freeTokens;

    TextureToken reserve()
    {
        return freeTokens.isEmpty() ? TextureToken(maxToken++) : freeTokens.takeFirst();
    }

    void remove(TextureToken token)
    {
        TextureToken::insert(freeTokens, token);
        while (maxToken > 0 && freeTokens.contains(TextureToken(maxToken - 1)))
        {
            freeTokens.removeOne(TextureToken(maxToken - 1));
            --maxToken;
        }
    }
};

class TextureManagerNumbersTest : public ManagerFixture
{
protected:
    void reserve(int count)
    {
        for (int i = 0; i < count; ++i)
            manager->reserveToken();
    }

    void remove(std::initializer_list<quint64> numbers)
    {
        for (const quint64 number : numbers)
            manager->deleteToken(TextureToken(number));
    }

    QList<TextureToken> freeTokens() const
    {
        return Tables::freeTokens(*manager);
    }

    /// Issues a token for each texture; the tokens count from 0.
    void issueAll(const std::vector<Texture*>& textures)
    {
        for (std::size_t i = 0; i < textures.size(); ++i)
            ASSERT_EQ(manager->tokenForTexture(textures[i]), TextureToken(i));
        ASSERT_EQ(manager->maxToken(), TextureToken(textures.size()));
    }

    void expectEmpty() const
    {
        EXPECT_EQ(manager->maxToken(), TextureToken(0));
        EXPECT_TRUE(freeTokens().isEmpty());
        EXPECT_EQ(manager->textureTokenMap().size(), 1) << "only nothing's own entry";
        EXPECT_TRUE(Tables::tokenToTexture(*manager).isEmpty());
    }
};

} // namespace

// ---- issuing and giving back ---------------------------------------------------------------------------------------

TEST_F(TextureManagerNumbersTest, TokensCountFromZero)
{
    EXPECT_EQ(manager->maxToken(), TextureToken(0));
    for (quint64 i = 0; i < 5; ++i)
        EXPECT_EQ(manager->reserveToken(), TextureToken(i));
    EXPECT_EQ(manager->maxToken(), TextureToken(5));
}

TEST_F(TextureManagerNumbersTest, OneThenTwoOfThreeDeletedFallOffTheTop)
{
    reserve(3);
    remove({1});
    EXPECT_EQ(manager->maxToken(), TextureToken(3));
    EXPECT_EQ(freeTokens(), tokens({1}));
    remove({2});
    EXPECT_EQ(manager->maxToken(), TextureToken(1));
    EXPECT_EQ(freeTokens(), tokens({}));
}

TEST_F(TextureManagerNumbersTest, ZeroAndOneOfThreeDeletedAreIssuedAgainInThatOrder)
{
    reserve(3);
    remove({0, 1});
    EXPECT_EQ(manager->reserveToken(), TextureToken(0));
    EXPECT_EQ(manager->reserveToken(), TextureToken(1));
    EXPECT_EQ(manager->reserveToken(), TextureToken(3));
    EXPECT_EQ(manager->maxToken(), TextureToken(4));
}

TEST_F(TextureManagerNumbersTest, TheOldestFreeTokenIsIssuedFirst)
{
    reserve(6);
    remove({3, 0, 2});
    EXPECT_EQ(freeTokens(), tokens({3, 0, 2}));
    EXPECT_EQ(manager->reserveToken(), TextureToken(3));
    remove({3});
    EXPECT_EQ(freeTokens(), tokens({0, 2, 3}));
    EXPECT_EQ(manager->reserveToken(), TextureToken(0));
    EXPECT_EQ(manager->maxToken(), TextureToken(6));
}

TEST_F(TextureManagerNumbersTest, ATokenThatIsFreeAlreadyKeepsItsPlace)
{
    reserve(4);
    remove({0, 1, 0});
    EXPECT_EQ(freeTokens(), tokens({0, 1}));
}

TEST_F(TextureManagerNumbersTest, AllFallOffWhenTheTopIsTheLastToGo)
{
    reserve(5);
    remove({2, 0, 3, 1});
    EXPECT_EQ(manager->maxToken(), TextureToken(5));
    remove({4});
    EXPECT_EQ(manager->maxToken(), TextureToken(0));
    EXPECT_EQ(freeTokens(), tokens({}));
    EXPECT_EQ(manager->reserveToken(), TextureToken(0));
}

TEST_F(TextureManagerNumbersTest, TheOrderOfTheOthersStaysWhenTheTopFallsOff)
{
    reserve(6);
    remove({4, 2, 0, 5});
    EXPECT_EQ(manager->maxToken(), TextureToken(4));
    EXPECT_EQ(freeTokens(), tokens({2, 0}));
}

// ---- blocks --------------------------------------------------------------------------------------------------------

TEST_F(TextureManagerNumbersTest, ABlockIsTakenAboveAllOthers)
{
    reserve(3);
    remove({0});
    EXPECT_EQ(manager->reserveTokenBlock(4), TextureToken(3));
    EXPECT_EQ(manager->maxToken(), TextureToken(7));
    EXPECT_EQ(freeTokens(), tokens({0}));
    EXPECT_EQ(manager->reserveToken(), TextureToken(0));
    EXPECT_EQ(manager->reserveToken(), TextureToken(7));
}

TEST_F(TextureManagerNumbersTest, ABlockOfNoneIsEmpty)
{
    reserve(2);
    const LogCapture log;
    EXPECT_EQ(manager->reserveTokenBlock(0), TextureToken(2));
    EXPECT_EQ(manager->maxToken(), TextureToken(2));
    EXPECT_EQ(log.texts(), QStringList());
}

TEST_F(TextureManagerNumbersTest, ABlockOfLessThanNoneIsReportedAndReservesNone)
{
    reserve(2);
    const LogCapture log;
    EXPECT_EQ(manager->reserveTokenBlock(-1), TextureToken(2));
    EXPECT_EQ(manager->maxToken(), TextureToken(2));
    EXPECT_EQ(log.messages(QtCriticalMsg), failure("count >= 0", "Reserve a block of -1 tokens"));
}

TEST_F(TextureManagerNumbersTest, TokensOfABlockAreGivenBackOneByOne)
{
    manager->reserveTokenBlock(3);
    remove({1, 2});
    EXPECT_EQ(manager->maxToken(), TextureToken(1));
    EXPECT_EQ(manager->takeCalls(), QStringList()) << "neither issued nor revoked by the base";
}

// ---- bad tokens ----------------------------------------------------------------------------------------------------

TEST_F(TextureManagerNumbersTest, DeletingWithNoneReservedIsReportedTwiceAndGoesOn)
{
    const LogCapture log;
    remove({5});
    EXPECT_EQ(log.messages(QtCriticalMsg),
              QStringList({assertionLine(kNoneReserved, QStringLiteral("Delete token 0x5 but none 0 reserved!")),
                           assertionLine(kTooHigh, QStringLiteral("Delete token 0x5 but only 0x0 reserved!"))}));
    EXPECT_EQ(freeTokens(), tokens({5}));
    EXPECT_EQ(manager->reserveToken(), TextureToken(5));
    EXPECT_EQ(manager->reserveToken(), TextureToken(0));
}

TEST_F(TextureManagerNumbersTest, DeletingATokenAboveAllIsReportedAndItIsFree)
{
    reserve(18);
    const LogCapture log;
    remove({18, 300});
    EXPECT_EQ(log.messages(QtCriticalMsg),
              QStringList({assertionLine(kTooHigh, QStringLiteral("Delete token 0x12 but only 0x12 reserved!")),
                           assertionLine(kTooHigh, QStringLiteral("Delete token 0x12c but only 0x12 reserved!"))}));
    EXPECT_EQ(freeTokens(), tokens({18, 300}));
    EXPECT_EQ(manager->maxToken(), TextureToken(18));
    remove({17});
    EXPECT_EQ(manager->maxToken(), TextureToken(17)) << "18 is no longer one below the highest";
    EXPECT_EQ(freeTokens(), tokens({18, 300}));
}

TEST_F(TextureManagerNumbersTest, AStrayFreeTokenFallsOffOnceItIsTheTop)
{
    reserve(1);
    {
        const LogCapture log;
        remove({2});
        EXPECT_EQ(log.texts().size(), 1);
    }
    manager->reserveTokenBlock(2);
    EXPECT_EQ(manager->maxToken(), TextureToken(3));
    remove({1});
    EXPECT_EQ(manager->maxToken(), TextureToken(1));
    EXPECT_EQ(freeTokens(), tokens({}));
}

TEST_F(TextureManagerNumbersTest, DeletingTheInvalidTokenDoesNotWrapTheRangeAround)
{
    const LogCapture log;
    manager->deleteToken(INVALID_TOKEN);
    EXPECT_EQ(log.messages(QtCriticalMsg),
              QStringList(
                  {assertionLine(kNoneReserved, QStringLiteral("Delete token 0xffffffffffffffff but none 0 reserved!")),
                   assertionLine(kTooHigh, QStringLiteral("Delete token 0xffffffffffffffff but only 0x0 reserved!"))}));
    EXPECT_EQ(manager->maxToken(), TextureToken(0));
}

// ---- beside a model, and many --------------------------------------------------------------------------------------

TEST_F(TextureManagerNumbersTest, AgreesWithTheListsAsTheyAreTold)
{
    const LogCapture log; // of the bad tokens
    NaiveNumbers model;
    std::mt19937 random(20240611);
    QList<TextureToken> used;
    for (int step = 0; step < 6'000; ++step)
    {
        const unsigned kind = random() % 100;
        if (kind < 45 || used.isEmpty())
        {
            const TextureToken token = manager->reserveToken();
            ASSERT_EQ(token, model.reserve()) << "step " << step;
            used.append(token);
        }
        else if (kind < 95)
        {
            const TextureToken token = used.takeAt(random() % used.size());
            manager->deleteToken(token);
            model.remove(token);
        }
        else if (kind < 98)
        {
            const TextureToken token(random() % (model.maxToken + 2)); // in use, free or unknown
            used.removeAll(token);
            manager->deleteToken(token);
            model.remove(token);
        }
        else
        {
            const TextureToken first = manager->reserveTokenBlock(3);
            ASSERT_EQ(first, TextureToken(model.maxToken));
            model.maxToken += 3;
            for (quint64 i = 0; i < 3; ++i)
                used.append(TextureToken(first.token + i));
        }
        ASSERT_EQ(manager->maxToken().token, model.maxToken) << "step " << step;
        ASSERT_EQ(freeTokens(), model.freeTokens) << "step " << step;
    }
}

TEST_F(TextureManagerNumbersTest, ManyTokensAreFoundAndDeletedFromTheBottom)
{
    const auto textures = wrapped(kMany);
    issueAll(textures);
    for (std::size_t i = 0; i < textures.size(); ++i)
    {
        ASSERT_EQ(manager->findToken(textures[i]), TextureToken(i));
        ASSERT_EQ(manager->textureForToken(TextureToken(i)), textures[i]);
        ASSERT_EQ(manager->tokenForTexture(textures[i]), TextureToken(i));
    }
    for (std::size_t i = 0; i + 1 < textures.size(); ++i)
    {
        manager->deleteTexture(TextureToken(i));
        ASSERT_EQ(manager->maxToken(), TextureToken(kMany));
    }
    EXPECT_EQ(freeTokens().size(), kMany - 1);
    manager->deleteTexture(TextureToken(kMany - 1));
    expectEmpty();
}

TEST_F(TextureManagerNumbersTest, ManyTokensAreDeletedFromTheTop)
{
    const auto textures = wrapped(kMany);
    issueAll(textures);
    for (quint64 i = kMany; i-- > 0;)
    {
        manager->deleteTexture(textures[i]);
        ASSERT_EQ(manager->maxToken(), TextureToken(i));
    }
    expectEmpty();
}

TEST_F(TextureManagerNumbersTest, ManyTokensAreDeletedInNoOrder)
{
    const auto textures = wrapped(kMany);
    issueAll(textures);
    std::vector<quint64> order(kMany);
    std::iota(order.begin(), order.end(), 0);
    std::shuffle(order.begin(), order.end(), std::mt19937(7));
    for (const quint64 i : order)
    {
        manager->deleteTexture(TextureToken(i));
        ASSERT_EQ(manager->findToken(textures[i]), INVALID_TOKEN);
        ASSERT_EQ(manager->textureForToken(TextureToken(i)), nullptr);
    }
    expectEmpty();
}

TEST_F(TextureManagerNumbersTest, OfManyTokensEverySecondOneIsIssuedAgainInOrder)
{
    const auto textures = wrapped(kMany);
    issueAll(textures);
    for (quint64 i = 0; i < kMany; i += 2)
        manager->deleteTexture(TextureToken(i));
    EXPECT_EQ(freeTokens().size(), kMany / 2);
    EXPECT_EQ(manager->maxToken(), TextureToken(kMany));
    for (quint64 i = 0; i < kMany; i += 2)
        ASSERT_EQ(manager->tokenForTexture(textures[kMany - 2 - i]), TextureToken(i));
    EXPECT_EQ(freeTokens(), tokens({}));
    for (quint64 i = 0; i < kMany; i += 2)
        ASSERT_EQ(manager->textureForToken(TextureToken(i)), textures[kMany - 2 - i]);
    EXPECT_EQ(manager->maxToken(), TextureToken(kMany));
}

} // namespace Harrow::Vrk::Test
