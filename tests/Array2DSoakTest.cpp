// SPDX-License-Identifier: MIT
//
// Array2DTextureManager on the real driver, in a long run of random work: at its end each token has its own texels.
#include "Array2DCopyTestTools.h"

#include "support/LogCapture.h"

namespace Harrow::Vrk::Test
{
namespace
{

/// Textures of one layer come, change and go. Cube maps and arrays only come, in slots of their own sampler state: a
/// free run of layers is found by a rule that gives layers in use as well.
class Array2DSoakGL : public Array2DCopyFixture
{
protected:
    struct Living
    {
        Texture* texture;
        TextureToken token;
        std::vector<LayerLevels> layers;
    };

    void work(TextureManager::SlotReallocationMethod method, unsigned seed)
    {
        _random.seed(seed);
        makeManager(5);
        array2D->setSlotReallocationMethod(method);
        for (int step = 0; step < 1500; ++step)
            doSomething();
        ASSERT_EQ(glGetError(), GLenum(GL_NO_ERROR));
    }

    void doSomething()
    {
        const LogCapture log; // resized, and no room
        switch (below(12))
        {
        case 0:
        case 1:
        case 2:
            if (_living.size() < 60)
                addSingle();
            break;
        case 3:
            if (_several < 5)
                addSeveral();
            break;
        case 4:
        case 5:
            removeOne();
            break;
        case 6:
            changeOne();
            break;
        case 7:
        case 8:
            array2D->updateSlots();
            break;
        default:
            bindSome();
        }
    }

    void addSingle()
    {
        static constexpr std::pair<int, int> kSizes[] = {{1, 1}, {4, 4}, {8, 8}, {16, 16}, {16, 4}, {12, 12}};
        const auto [width, height] = kSizes[below(std::size(kSizes))];
        const LayerLevels content = noiseChain(width, height, 1, _random());
        Texture* const texture = newTexture(content, below(4) == 0 ? GL_RGBA16F : GL_RGBA8);
        _living.push_back({texture, array2D->tokenForTexture(texture), {content}});
    }

    void addSeveral()
    {
        ++_several;
        std::vector<LayerLevels> layers;
        const bool isCube = below(2) == 0;
        for (std::size_t i = 0, count = isCube ? 6 : 1 + below(4); i < count; ++i)
            layers.push_back(noiseChain(4, 4, 2, _random()));
        Texture* const texture = isCube ? newCubeMap(layers, GL_CLAMP_TO_EDGE) : newArray(layers, GL_CLAMP_TO_EDGE);
        _living.push_back({texture, array2D->tokenForTexture(texture), layers});
    }

    Living* anySingle()
    {
        std::vector<Living*> singles;
        for (Living& living : _living)
            if (living.texture->target() == GL_TEXTURE_2D)
                singles.push_back(&living);
        return singles.empty() ? nullptr : singles[below(singles.size())];
    }

    void removeOne()
    {
        Living* const gone = anySingle();
        if (!gone)
            return;
        array2D->deleteTexture(gone->token);
        _living.erase(_living.begin() + (gone - _living.data()));
    }

    void changeOne()
    {
        Living* const changed = anySingle();
        if (!changed)
            return;
        const TexelImage& old = changed->layers[0][0];
        const int size = below(2) == 0 ? old.width : 8;
        changed->layers = {noiseChain(size, size, 1, _random())};
        fill(*changed->texture, changed->layers[0]);
        array2D->dirty(changed->texture);
    }

    void bindSome()
    {
        QList<TextureToken> some;
        for (const Living& living : _living)
            if (below(3) == 0)
                some.append(living.token);
        array2D->bind(some);
    }

    /// All have a place, or are told to have none; those that have one have their texels.
    void expectAllCopied()
    {
        LogCapture log;
        for (const Living& living : _living)
            array2D->bind(QList<TextureToken>{living.token});
        const qsizetype refused = log.messages().filter(QStringLiteral("Failed to find slot or layer")).size();
        array2D->updateSlots();
        qsizetype without = 0;
        for (const Living& living : _living)
        {
            if (record(living.token).slot < 0)
            {
                ++without;
                continue;
            }
            for (std::size_t i = 0; i < living.layers.size(); ++i)
                expectCopied(living.token, living.layers[i], int(i), kScaled);
        }
        EXPECT_EQ(without, refused);
        EXPECT_LT(without, qsizetype(_living.size() / 2)) << "or little was tested";
        EXPECT_GT(_living.size(), 20u);
        EXPECT_TRUE(Books::pendingTokens(*array2D).isEmpty());
    }

private:
    std::size_t below(std::size_t end)
    {
        return _random() % end;
    }

    std::mt19937 _random;
    std::vector<Living> _living;
    int _several = 0;
};

} // namespace

TEST_F(Array2DSoakGL, EveryTokenHasItsTexelsAfterRandomWorkInSmallerSlots)
{
    work(TextureManager::eReallocateSmaller, 20'011);
    expectAllCopied();
}

TEST_F(Array2DSoakGL, EveryTokenHasItsTexelsAfterRandomWorkInLargerSlots)
{
    work(TextureManager::eReallocateLarger, 4'007);
    expectAllCopied();
}

} // namespace Harrow::Vrk::Test
