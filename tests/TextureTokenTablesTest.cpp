// SPDX-License-Identifier: MIT
//
// What lies below managers, asked for what these never ask: tokens that are not there, and a manager that does not want
// to hear of tokens.
#include "TextureTokenTables.h"
#include "TextureManagerTestTools.h"

namespace Harrow::Vrk::Test
{
namespace
{

TEST(FreeTextureTokens, ToRemoveOneThatIsNotThereChangesNothing)
{
    FreeTextureTokens free;
    free.remove(TextureToken(3));
    EXPECT_TRUE(free.isEmpty());
    for (const TextureToken& token : tokens({5, 2, 9}))
        free.append(token);
    free.remove(TextureToken(3));
    EXPECT_EQ(free.inOrder(), tokens({5, 2, 9}));
    free.remove(TextureToken(2));
    free.remove(TextureToken(2));
    EXPECT_EQ(free.inOrder(), tokens({5, 9}));
    EXPECT_EQ(free.takeFirst(), TextureToken(5));
    EXPECT_EQ(free.inOrder(), tokens({9}));
}

/// Leaves the news of tokens to the base, which does nothing with them.
class UninterestedManager final : public RecordingManager
{
public:
    void textureTokenIssued(const TextureToken& token) override
    {
        TextureManager::textureTokenIssued(token);
    }
    void textureTokenRevoked(const TextureToken& token) override
    {
        TextureManager::textureTokenRevoked(token);
    }
};

using UninterestedManagerTest = ManagerFixture;

TEST_F(UninterestedManagerTest, ItsTokensComeAndGoLikeThoseOfAnyOther)
{
    UninterestedManager uninterested;
    for (Texture* const texture : wrapped(2))
        uninterested.tokenForTexture(texture);
    EXPECT_EQ(uninterested.maxToken(), TextureToken(2));
    EXPECT_EQ(uninterested.takeCalls(), QStringList());
    uninterested.deleteToken(TextureToken(0));
    EXPECT_EQ(uninterested.tokenForColor(Qt::red), TextureToken(0)) << "the oldest free one";
    EXPECT_EQ(uninterested.takeCalls(), QStringList());
}

} // namespace
} // namespace Harrow::Vrk::Test
