// SPDX-License-Identifier: MIT

/// \file
/// Array2DTextureManager on long random sequences, held step by step against a second and plain bookkeeping.

#include "Array2DPlainModel.h"
#include "Array2DTestTools.h"

#include <QHash>
#include <QHashFunctions>
#include <QPointer>

#include <random>

namespace Harrow::Vrk::Test
{
namespace
{

/// What a sequence is made of.
struct Mix
{
    const char* name;
    unsigned seed;
    int steps;
    int slotCount;
    int arrayLayers;
    int textureCount;
    bool anisotropy;
    bool sets;         ///< Sets of UDIM patches.
    bool patchRemoval; ///< Tokens of patches are deleted behind their set.
    bool clears;
    bool shrinks;    ///< The number of slots goes down.
    bool manyStates; ///< Textures differ in their sampler state.
};

void PrintTo(const Mix& mix, std::ostream* stream)
{
    *stream << mix.name;
}

constexpr int kSizes[] = {4096, 4096, 8192, 8192, 8192, 6144, 12288, 16384, 16384, 32768, 40000, 512};

/// Knows all textures of colours that were made. A token that was deleted behind its owner can be issued to two, and
/// the base then forgets the texture of the first.
class WatchingManager : public OpenArray2DManager
{
public:
    explicit WatchingManager(QHash<Texture*, QPointer<Texture>>& seen) : colorTextures(seen) {}

    Texture* textureForToken(const TextureToken& token) override
    {
        Texture* const texture = OpenArray2DManager::textureForToken(token);
        if (texture && texture->isManaged())
            colorTextures[texture] = texture;
        return texture;
    }

    QHash<Texture*, QPointer<Texture>>& colorTextures;
};

class Array2DDifferential : public Array2DFixture, public testing::WithParamInterface<Mix>
{
protected:
    using Mismatch = std::optional<QString>;

    void SetUp() override
    {
        QHashSeed::setDeterministicGlobalSeed(); // a set places its patches in the order of their hash
        Array2DFixture::SetUp();
        if (GetParam().anisotropy)
            driver.setExtensions({"GL_EXT_texture_filter_anisotropic"});
        driver.setInteger(GL_MAX_ARRAY_TEXTURE_LAYERS, GetParam().arrayLayers);
        random.seed(GetParam().seed);
        textures = wrapped(GetParam().textureCount);
        for (std::size_t i = 0; i < textures.size(); ++i)
        {
            numbers.insert(textures[i], int(i));
            model.textures.emplace_back();
            describe(i);
        }
        model.colorTexture.format = plainFormat(FakeTexture());
        array2D = std::make_unique<WatchingManager>(colorTextures);
        array2D->setMaxSlots(GetParam().slotCount);
        model.address = array2D.get();
        model.maxSlots = GetParam().slotCount;
        model.maxArrayLayers = GetParam().arrayLayers;
        model.construct();
        for (int i = 0; i < 4; ++i)
            colors.append(QColor(10 * i, 20, 30));
    }

    void TearDown() override
    {
        array2D.reset();
        for (const QPointer<Texture>& texture : std::as_const(colorTextures))
            delete texture.data();
        Array2DFixture::TearDown();
        QHashSeed::resetRandomGlobalSeed();
    }

    int below(int limit)
    {
        return int(random() % unsigned(limit));
    }

    PlainFormat plainFormat(const FakeTexture& texture) const
    {
        PlainFormat format;
        format.width = texture.width;
        format.height = texture.height;
        format.internalFormat = texture.internalFormat;
        format.wrapS = texture.wrapS;
        format.wrapT = texture.wrapT;
        format.magFilter = texture.magFilter;
        format.minFilter = texture.minFilter;
        format.anisotropy = GetParam().anisotropy ? texture.anisotropy : 1.0f;
        format.lodBias = texture.lodBias;
        return format;
    }

    void giveState(FakeTexture& texture)
    {
        texture.wrapS = below(6) == 0 ? GL_CLAMP_TO_EDGE : GL_REPEAT;
        texture.wrapT = below(12) == 0 ? GL_CLAMP_TO_EDGE : GL_REPEAT;
        texture.magFilter = below(12) == 0 ? GL_NEAREST : GL_LINEAR;
        texture.minFilter = below(12) == 0 ? GL_NEAREST : GL_LINEAR;
        texture.anisotropy = below(8) == 0 ? 4.0f : 1.0f;
        texture.lodBias = below(12) == 0 ? 0.5f : 0.0f;
    }

    /// Gives a texture a new size, format and state.
    void describe(std::size_t i)
    {
        FakeTexture texture;
        texture.width = kSizes[below(std::size(kSizes))];
        texture.height = below(3) == 0 ? kSizes[below(std::size(kSizes))] : texture.width;
        if (below(40) == 0)
            (below(2) == 0 ? texture.width : texture.height) = 0;
        texture.internalFormat = below(2) == 0 ? GL_RGBA8 : kPlainTexels[below(std::size(kPlainTexels))].internalFormat;
        if (GetParam().manyStates)
            giveState(texture);
        texture.depth = below(20) == 0 ? 0 : 1 + below(7);
        texture.maxLevel = 0;
        constexpr GLenum kTargets[] = {GL_TEXTURE_2D, GL_TEXTURE_2D,       GL_TEXTURE_2D,
                                       GL_TEXTURE_2D, GL_TEXTURE_CUBE_MAP, GL_TEXTURE_2D_ARRAY};
        const GLenum target = kTargets[below(std::size(kTargets))];
        textures[i]->setTarget(target);
        fakeTextures[textures[i]->textureID()] = texture;
        model.textures[i] = {plainFormat(texture), target, texture.depth, textures[i]->textureID()};
    }

    std::size_t anyTexture()
    {
        return std::size_t(below(int(textures.size())));
    }

    // ---- steps -----------------------------------------------------------------------------------------------------

    void step()
    {
        const Mix& mix = GetParam();
        const int dice = below(100);
        if (dice < 20)
            issue();
        else if (dice < 50)
            bindSome();
        else if (dice < 63)
            deleteOne();
        else if (dice < 75)
            changeOne();
        else if (dice < 80)
            color();
        else if (dice < 84)
            update();
        else if (dice < 87)
            changeMethod();
        else if (dice < 97)
            mix.sets ? set() : bindSome();
        else if (dice < 98 && mix.patchRemoval)
            deletePatch();
        else if (dice < 99 && mix.shrinks && below(200) == 0)
            shrink();
        else if (mix.clears && below(40) == 0)
            clear();
        else
            bindSome();
    }

    void issue()
    {
        const std::size_t i = anyTexture();
        EXPECT_EQ(array2D->tokenForTexture(textures[i]).token, model.tokenForTexture(int(i)));
    }

    void bindSome()
    {
        QList<TextureToken> list;
        std::vector<quint64> numbersOfTokens;
        for (int left = below(4); left >= 0; --left)
        {
            quint64 token = model.findToken(int(anyTexture()));
            if (!setTokens.isEmpty() && below(4) == 0)
                token = setTokens[below(int(setTokens.size()))];
            else if (!colorTokens.isEmpty() && below(8) == 0)
                token = colorTokens[below(int(colorTokens.size()))];
            list.append(TextureToken(token));
            numbersOfTokens.push_back(token);
        }
        // The model takes the patches in the order in which the manager's table has them, which is nobody's promise.
        const auto order = [this](quint64 token, const std::vector<PlainArray2DModel::Patch>&)
        {
            std::vector<PlainArray2DModel::Patch> patches;
            const QHash<QPoint, Texture*> table = Tables::udims(*array2D).value(TextureToken(token));
            for (auto patch = table.cbegin(); patch != table.cend(); ++patch)
                patches.push_back({patch.key().x(), patch.key().y(), numbers.value(patch.value())});
            return patches;
        };
        model.bind(numbersOfTokens, order);
        array2D->bind(list);
    }

    void deleteOne()
    {
        const std::size_t i = anyTexture();
        model.deleteTexture(model.findToken(int(i)));
        array2D->deleteTexture(textures[i]);
    }

    void changeOne()
    {
        const std::size_t i = anyTexture();
        if (below(3) != 0)
            describe(i);
        if (below(4) == 0)
            return;
        model.dirty(int(i));
        array2D->dirty(textures[i]);
    }

    void color()
    {
        const QColor wanted = colors[below(int(colors.size()))];
        if (below(3) == 0 && !colorTokens.isEmpty())
        {
            const quint64 token = colorTokens.takeAt(below(int(colorTokens.size())));
            model.deleteTexture(token);
            array2D->deleteTexture(TextureToken(token));
            return;
        }
        const quint64 token = model.tokenForColor(wanted);
        EXPECT_EQ(array2D->tokenForColor(wanted).token, token);
        if (!colorTokens.contains(token))
            colorTokens.append(token);
    }

    void update()
    {
        model.updateSlots();
        array2D->updateSlots();
    }

    void changeMethod()
    {
        model.method = below(2);
        array2D->setSlotReallocationMethod(TextureManager::SlotReallocationMethod(model.method));
    }

    void set()
    {
        const int dice = below(4);
        if (dice == 0 && setTokens.size() < 4)
        {
            const quint64 token = model.createUDIM();
            EXPECT_EQ(array2D->createUDIMToken().token, token);
            for (int patches = 1 + below(4); patches > 0; --patches)
                addPatch(token);
            setTokens.append(token);
        }
        else if (dice == 1 && !setTokens.isEmpty())
            addPatch(setTokens[below(int(setTokens.size()))]);
        else if (dice == 2 && !setTokens.isEmpty())
        {
            const quint64 token = setTokens.takeAt(below(int(setTokens.size())));
            model.deleteUDIM(token);
            EXPECT_TRUE(array2D->deleteUDIM(TextureToken(token)));
        }
        else
            bindSome();
    }

    void addPatch(quint64 token)
    {
        const std::size_t i = anyTexture();
        const QPoint index(below(3), below(3));
        model.addPatch(token, {index.x(), index.y(), int(i)});
        array2D->addUDIMPatch(TextureToken(token), index, textures[i]);
    }

    void deletePatch()
    {
        if (model.patchSources.empty())
            return;
        auto patch = model.patchSources.begin();
        std::advance(patch, below(int(model.patchSources.size())));
        const quint64 token = patch->first;
        model.deleteTexture(token);
        array2D->deleteTexture(TextureToken(token));
    }

    void shrink()
    {
        if (model.maxSlots <= 1 || model.allSlots.empty())
            return;
        --model.maxSlots;
        array2D->setMaxSlots(model.maxSlots);
    }

    void clear()
    {
        model.clear();
        array2D->clear();
    }

    // ---- comparison ------------------------------------------------------------------------------------------------

    static bool sameSlot(const OpenArray2DManager::SlotData& slot, const PlainSlot& plain)
    {
        const auto& format = slot.format;
        const PlainFormat copy{format.width,     format.height,    format.internalFormat, format.wrapS,  format.wrapT,
                               format.magFilter, format.minFilter, format.anisotropy,     format.lodBias};
        return samePlainFormat(copy, plain.format) && slot.allocatedLayers == plain.allocatedLayers &&
               slot.maxLayers == plain.maxLayers && slot.usedLayers == plain.usedLayers && slot.handle == 0 &&
               std::equal(slot.freeLayers.begin(), slot.freeLayers.end(), plain.freeLayers.begin(),
                          plain.freeLayers.end());
    }

    static bool sameRecord(const OpenArray2DManager::SlotLayerData& record, const PlainRecord& plain)
    {
        return record.slot == plain.slot && record.layer == plain.layer && record.handle[0] == 0 &&
               record.handle[1] == 0 && record.udimWidth == plain.udimWidth &&
               record.udimMaxPatch == plain.udimMaxPatch && record.unused[0] == 0 && record.unused[1] == 0;
    }

    Mismatch mismatch(LogCapture& log) const
    {
        const auto& slotList = Books::allSlots(*array2D);
        if (slotList.size() != qsizetype(model.allSlots.size()))
            return QStringLiteral("number of slots");
        for (qsizetype i = 0; i < slotList.size(); ++i)
            if (!sameSlot(*slotList[i], model.allSlots[std::size_t(i)]))
                return QStringLiteral("slot %1").arg(i);
        const auto& records = Books::records(*array2D);
        if (records.size() != qsizetype(model.records.size()))
            return QStringLiteral("number of records");
        for (qsizetype i = 0; i < records.size(); ++i)
            if (!sameRecord(records[i], model.records[std::size_t(i)]))
                return QStringLiteral("record %1").arg(i);
        const QList<int>& counts = Books::layerCounts(*array2D);
        if (!std::equal(counts.begin(), counts.end(), model.layerCounts.begin(), model.layerCounts.end()))
            return QStringLiteral("layer counts");
        const QList<TextureToken>& pending = Books::pendingTokens(*array2D);
        if (!std::equal(pending.begin(), pending.end(), model.pending.begin(), model.pending.end(),
                        [](const TextureToken& a, quint64 b) { return a.token == b; }))
            return QStringLiteral("pending tokens");
        if (Books::slotMapDirty(*array2D) != model.slotMapDirty)
            return QStringLiteral("whether the slot map is dirty");
        const auto& sources = Books::patchSources(*array2D);
        if (sources.size() != qsizetype(model.patchSources.size()))
            return QStringLiteral("number of patch sources");
        for (const auto& [patch, source] : model.patchSources)
            if (sources.value(TextureToken(patch)) != TextureToken(source))
                return QStringLiteral("source of patch %1").arg(patch);
        if (array2D->maxToken().token != model.maxToken)
            return QStringLiteral("highest token");
        if (log.messages() != model.messages)
            return QStringLiteral("messages: ") + log.messages().join(QStringLiteral(" | ")) +
                   QStringLiteral(" instead of: ") + model.messages.join(QStringLiteral(" | "));
        return std::nullopt;
    }

    /// What the sequence has really met; a mix that never merges proves nothing about merging.
    void count()
    {
        for (const QString& message : std::as_const(model.messages))
        {
            resized += message.contains(QStringLiteral("resized"));
            failed += message.contains(QStringLiteral("Failed"));
        }
    }

    std::mt19937 random;
    QHash<Texture*, QPointer<Texture>> colorTextures;
    std::vector<Texture*> textures;
    QHash<Texture*, int> numbers;
    PlainArray2DModel model;
    QList<QColor> colors;
    QList<quint64> colorTokens;
    QList<quint64> setTokens;
    int resized = 0;
    int failed = 0;
};

TEST_P(Array2DDifferential, BooksAgreeWithThePlainOnesAfterEveryStep)
{
    LogCapture log;
    for (int i = 0; i < GetParam().steps; ++i)
    {
        model.messages.clear();
        log.clear();
        // As the draw does that uploads it.
        if (i % 7 == 0)
        {
            model.slotMapDirty = false;
            Books::setSlotMapDirty(*array2D, false);
        }
        step();
        const Mismatch found = mismatch(log);
        ASSERT_FALSE(found.has_value()) << "step " << i << ": " << found->toStdString();
        count();
    }
    EXPECT_GT(resized, GetParam().steps / 100);
    EXPECT_GT(failed, GetParam().steps / 100);
}

// clang-format off
INSTANTIATE_TEST_SUITE_P(Mixes, Array2DDifferential, testing::Values(
    //  name                   seed  steps  slots layers textures aniso  sets   patches clears shrinks states
    Mix{"OneSlot",                1, 20000,     1,    64,    12, false, false,   false, false, false, false},
    Mix{"TwoSlots",               2, 30000,     2,    64,    20, false, false,   false, false, false, false},
    Mix{"ThreeSlots",             3, 30000,     3,    16,    25,  true, false,   false, false, false,  true},
    Mix{"FourSlots",              4, 30000,     4,   128,    40, false, false,   false, false, false,  true},
    Mix{"Sets",                   5, 30000,     3,    64,    20, false,  true,   false, false, false, false},
    Mix{"SetsWithDeletedPatches", 6, 20000,     4,    64,    20,  true,  true,    true, false, false, false},
    Mix{"Clears",                 7, 20000,     3,    64,    20, false, false,   false,  true, false,  true},
    Mix{"SetsAndClears",          8, 30000,     4,    64,    20, false,  true,   false,  true, false, false},
    Mix{"FewerSlots",             9, 20000,     4,    64,    20,  true,  true,   false,  true,  true, false},
    Mix{"SetsAmongSlots",        10, 30000,    12,    64,     4, false,  true,   false, false, false, false}),
    [](const auto& mix) { return mix.param.name; });
// clang-format on

} // namespace
} // namespace Harrow::Vrk::Test
