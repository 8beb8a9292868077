// SPDX-License-Identifier: MIT
#include "TextureToken.h"

#include <QHash>
#include <QSet>

#include <gtest/gtest.h>

#include <type_traits>

namespace Harrow::Vrk::Test
{
namespace
{

QList<TextureToken> list(std::initializer_list<quint64> numbers)
{
    QList<TextureToken> result;
    for (const quint64 number : numbers)
        result.append(TextureToken(number));
    return result;
}

quint32 folded(quint64 value)
{
    const quint64 hash = ::qHash(value, 0);
    return quint32(hash / 0x100000000ull) ^ quint32(hash % 0x100000000ull);
}

} // namespace

static_assert(sizeof(TextureToken) == 8);
static_assert(std::is_trivially_copyable_v<TextureToken>);
static_assert(std::is_standard_layout_v<TextureToken>);
static_assert(std::is_same_v<decltype(TextureToken::token), quint64>);
static_assert(std::is_same_v<decltype(qHash(TextureToken())), unsigned int>);

TEST(TextureTokenTest, TheDefaultIsInvalidAndAllOnes)
{
    EXPECT_EQ(TextureToken().token, 0xFFFFFFFFFFFFFFFFull);
    EXPECT_EQ(INVALID_TOKEN.token, 0xFFFFFFFFFFFFFFFFull);
    EXPECT_TRUE(TextureToken() == INVALID_TOKEN);
}

TEST(TextureTokenTest, HoldsTheNumberThatItIsGiven)
{
    EXPECT_EQ(TextureToken(0).token, 0ull);
    EXPECT_EQ(TextureToken(0x123456789ABCDEF0ull).token, 0x123456789ABCDEF0ull);
    TextureToken copy = TextureToken(7);
    EXPECT_EQ(copy.token, 7ull);
    copy = TextureToken(8);
    EXPECT_EQ(copy.token, 8ull);
}

TEST(TextureTokenTest, ComparesTheWholeNumber)
{
    EXPECT_TRUE(TextureToken(5) == TextureToken(5));
    EXPECT_FALSE(TextureToken(5) != TextureToken(5));
    EXPECT_FALSE(TextureToken(5) == TextureToken(0x100000005ull));
    EXPECT_TRUE(TextureToken(5) != TextureToken(0x100000005ull));
}

TEST(TextureTokenTest, HashIsTheIntegerHashFolded)
{
    for (const quint64 value :
         {quint64(0), quint64(1), quint64(2), quint64(255), quint64(1) << 32, ~quint64(0), quint64(0xDEADBEEF12345678)})
        EXPECT_EQ(qHash(TextureToken(value)), folded(value)) << value;
}

TEST(TextureTokenTest, HashesOfDenseTokensSpread)
{
    QSet<unsigned int> hashes;
    for (quint64 i = 0; i < 100'000; ++i)
        hashes.insert(qHash(TextureToken(i)));
    EXPECT_GT(hashes.size(), 99'900);
}

TEST(TextureTokenTest, IsAKeyOfHashes)
{
    QHash<TextureToken, int> table;
    table[TextureToken(3)] = 1;
    table[TextureToken(3)] = 2;
    table[INVALID_TOKEN] = 3;
    EXPECT_EQ(table.size(), 2);
    EXPECT_EQ(table.value(TextureToken(3)), 2);
    EXPECT_EQ(table.value(TextureToken()), 3);
}

TEST(TextureTokenTest, ElementsThatAListMakesItselfAreInvalid)
{
    QList<TextureToken> grown;
    grown.resize(3);
    EXPECT_EQ(grown, QList<TextureToken>(3, INVALID_TOKEN));
}

TEST(TextureTokenTest, FindGivesTheFirstEqualElement)
{
    QList<TextureToken> some = list({4, 5, 6, 5});
    EXPECT_EQ(TextureToken::find(some, TextureToken(5)) - some.begin(), 1);
    EXPECT_EQ(TextureToken::find(some, TextureToken(4)) - some.begin(), 0);
    EXPECT_EQ(TextureToken::find(some, TextureToken(7)), some.end());
    QList<TextureToken> none;
    EXPECT_EQ(TextureToken::find(none, TextureToken(5)), none.end());
}

TEST(TextureTokenTest, FindLetsTheElementBeChanged)
{
    QList<TextureToken> some = list({4, 5});
    *TextureToken::find(some, TextureToken(5)) = TextureToken(9);
    EXPECT_EQ(some, list({4, 9}));
}

TEST(TextureTokenTest, InsertAppendsWhatIsNew)
{
    QList<TextureToken> some;
    auto added = TextureToken::insert(some, TextureToken(9));
    EXPECT_EQ(added - some.begin(), 0);
    added = TextureToken::insert(some, TextureToken(3));
    EXPECT_EQ(added - some.begin(), 1);
    EXPECT_EQ(some, list({9, 3}));
}

TEST(TextureTokenTest, InsertGivesWhatIsThereAndKeepsItsPlace)
{
    QList<TextureToken> some = list({9, 3, 5});
    EXPECT_EQ(TextureToken::insert(some, TextureToken(3)) - some.begin(), 1);
    EXPECT_EQ(some, list({9, 3, 5}));
}

TEST(TextureTokenTest, InsertLeavesACopyOfTheListAlone)
{
    QList<TextureToken> some = list({1});
    const QList<TextureToken> copy = some;
    TextureToken::insert(some, TextureToken(2));
    EXPECT_EQ(copy, list({1}));
}

TEST(TextureTokenTest, UniteInsertsInOrderAndReturnsTheList)
{
    QList<TextureToken> some = list({1, 2});
    QList<TextureToken>& result = TextureToken::unite(some, list({3, 2, 4, 3}));
    EXPECT_EQ(&result, &some);
    EXPECT_EQ(some, list({1, 2, 3, 4}));
}

TEST(TextureTokenTest, UniteWithItselfChangesNothing)
{
    QList<TextureToken> some = list({1, 2});
    EXPECT_EQ(TextureToken::unite(some, some), list({1, 2}));
}

TEST(TextureTokenTest, UniteKeepsWhatWasThereTwice)
{
    QList<TextureToken> some = list({1, 1});
    EXPECT_EQ(TextureToken::unite(some, list({1, 2})), list({1, 1, 2}));
}

} // namespace Harrow::Vrk::Test
