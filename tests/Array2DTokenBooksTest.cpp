// SPDX-License-Identifier: MIT

/// \file
/// The books that Array2DTextureManager keeps of tokens, by themselves: those that wait, and those of each slot.

#include "Array2DTestTools.h"

namespace Harrow::Vrk::Test
{
namespace
{

// ---- tokens that wait ----------------------------------------------------------------------------------------------

TEST(Array2DOrderedTokens, KeepTheOrderOfTheirComingOnceEach)
{
    OrderedTokens waiting;
    for (const quint64 number : {7u, 3u, 7u, 0u, 3u})
        waiting.insert(TextureToken(number));
    EXPECT_EQ(waiting.inOrder(), tokens({7, 3, 0}));
    EXPECT_TRUE(waiting.contains(TextureToken(0)));
    EXPECT_FALSE(waiting.contains(TextureToken(1)));
    EXPECT_FALSE(waiting.contains(TextureToken(1000)));
    EXPECT_FALSE(waiting.contains(INVALID_TOKEN));
}

TEST(Array2DOrderedTokens, DoneOnesGoAndTheOthersKeepTheirOrder)
{
    OrderedTokens waiting;
    for (const quint64 number : {5u, 4u, 3u, 2u, 1u})
        waiting.insert(TextureToken(number));
    QList<TextureToken> asked;
    waiting.removeDone(
        [&asked](const TextureToken& token)
        {
            asked.append(token);
            return token.token % 2 == 0;
        });
    EXPECT_EQ(asked, tokens({5, 4, 3, 2, 1}));
    EXPECT_EQ(waiting.inOrder(), tokens({5, 3, 1}));
    waiting.insert(TextureToken(4));
    waiting.insert(TextureToken(5));
    EXPECT_EQ(waiting.inOrder(), tokens({5, 3, 1, 4}));
}

TEST(Array2DOrderedTokens, ThoseThatComeMeanwhileAreAskedToo)
{
    OrderedTokens waiting;
    waiting.insert(TextureToken(1));
    waiting.insert(TextureToken(2));
    QList<TextureToken> asked;
    waiting.removeDone(
        [&](const TextureToken& token)
        {
            asked.append(token);
            if (token.token == 2)
            {
                waiting.insert(TextureToken(1)); // is done already: comes again, once
                waiting.insert(TextureToken(2)); // has not gone yet
                waiting.insert(TextureToken(9));
            }
            return asked.size() < 3;
        });
    EXPECT_EQ(asked, tokens({1, 2, 1, 9}));
    EXPECT_EQ(waiting.inOrder(), tokens({1, 9}));
}

TEST(Array2DOrderedTokens, MayBeEmptiedMeanwhile)
{
    OrderedTokens waiting;
    for (const quint64 number : {1u, 2u, 3u})
        waiting.insert(TextureToken(number));
    int asked = 0;
    waiting.removeDone(
        [&](const TextureToken&)
        {
            ++asked;
            waiting.clear();
            return false;
        });
    EXPECT_EQ(asked, 1);
    EXPECT_TRUE(waiting.inOrder().isEmpty());
    EXPECT_FALSE(waiting.contains(TextureToken(1)));
}

// ---- tokens of slots -----------------------------------------------------------------------------------------------

using Numbers = std::vector<qsizetype>;

TEST(Array2DTokensOfSlots, AreListedAscending)
{
    TokensOfSlots lists;
    lists.setSlotCount(2);
    for (const int token : {8, 1, 5})
        lists.move(token, 1);
    EXPECT_EQ(lists.ofSlot(1), Numbers({1, 5, 8}));
    EXPECT_EQ(lists.ofSlot(0), Numbers());
}

TEST(Array2DTokensOfSlots, MoveFromListToList)
{
    TokensOfSlots lists;
    lists.setSlotCount(3);
    for (int token = 0; token < 6; ++token)
        lists.move(token, token % 2);
    lists.move(2, 1);
    lists.move(5, -1);
    lists.move(0, 0);
    lists.move(5, 2);
    EXPECT_EQ(lists.ofSlot(0), Numbers({0, 4}));
    EXPECT_EQ(lists.ofSlot(1), Numbers({1, 2, 3}));
    EXPECT_EQ(lists.ofSlot(2), Numbers({5}));
}

TEST(Array2DTokensOfSlots, SlotsThatThereAreNotHaveNoList)
{
    TokensOfSlots lists;
    lists.setSlotCount(2);
    lists.move(3, 7);
    lists.move(4, -1);
    EXPECT_EQ(lists.ofSlot(7), Numbers());
    EXPECT_EQ(lists.ofSlot(-1), Numbers());
    lists.move(3, 1);
    EXPECT_EQ(lists.ofSlot(1), Numbers({3}));
}

TEST(Array2DTokensOfSlots, SlotsThatComeLaterListWhatNamesThem)
{
    TokensOfSlots lists;
    lists.move(3, 1);
    lists.move(2, 1);
    lists.setSlotCount(2);
    EXPECT_EQ(lists.ofSlot(1), Numbers({2, 3}));
    lists.move(3, -1);
    EXPECT_EQ(lists.ofSlot(1), Numbers({2}));
    lists.setSlotCount(0);
    EXPECT_EQ(lists.ofSlot(1), Numbers());
    lists.setSlotCount(4);
    lists.move(2, 3);
    EXPECT_EQ(lists.ofSlot(1), Numbers());
    EXPECT_EQ(lists.ofSlot(3), Numbers({2}));
}

TEST(Array2DTokensOfSlots, ClearForgetsTokensAndSlots)
{
    TokensOfSlots lists;
    lists.setSlotCount(2);
    lists.move(3, 1);
    lists.clear();
    EXPECT_EQ(lists.ofSlot(1), Numbers());
    lists.setSlotCount(2);
    EXPECT_EQ(lists.ofSlot(1), Numbers());
}

} // namespace
} // namespace Harrow::Vrk::Test
