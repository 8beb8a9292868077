// SPDX-License-Identifier: MIT
//
// What needs neither files nor a driver: the record of how to load a file, the answers of a loader of one plain image,
// and the names of baked files.
#include "TextureFileInfo.h"

#include "TextureIO.h"
#include "TextureIOTestTools.h"
#include "TextureLoader.h"

#include <type_traits>

namespace Harrow::Vrk::Test
{

// ---- the record ----------------------------------------------------------------------------------------------------

TEST(TextureFileInfoTest, ADefaultRecordLeavesThePixelsAsTheyAre)
{
    const TextureFileInfo info;
    EXPECT_EQ(info.lowValue, 0.0f);
    EXPECT_EQ(info.highValue, 1.0f);
    EXPECT_TRUE(info.remapColorRange);
    EXPECT_FALSE(info.srgb);
    EXPECT_FALSE(info.preprocessed);
    EXPECT_EQ(info.anisotropy, 0);
    EXPECT_EQ(info.bakeDepth, 8);
}

TEST(TextureFileInfoTest, IsAPlainValueWithItsFieldsInOrder)
{
    static_assert(std::is_trivially_copyable_v<TextureFileInfo>);
    static_assert(std::is_standard_layout_v<TextureFileInfo>);
    static_assert(std::is_same_v<decltype(TextureFileInfo::anisotropy), qint32>);
    static_assert(std::is_same_v<decltype(TextureFileInfo::bakeDepth), qint32>);
    const TextureFileInfo info{0.25f, 0.75f, false, true, true, 4, 16};
    const TextureFileInfo copy = info;
    EXPECT_EQ(copy.lowValue, 0.25f);
    EXPECT_EQ(copy.highValue, 0.75f);
    EXPECT_FALSE(copy.remapColorRange);
    EXPECT_TRUE(copy.srgb);
    EXPECT_TRUE(copy.preprocessed);
    EXPECT_EQ(copy.anisotropy, 4);
    EXPECT_EQ(copy.bakeDepth, 16);
}

// ---- the loader of one plain image ---------------------------------------------------------------------------------

namespace
{

/// As short as a reader of one image can be: this compiles only while no other operation is left open.
class PlainLoader : public TextureLoader2DHelper
{
public:
    bool valid() const override
    {
        return true;
    }
    quint32 width() const override
    {
        return 3;
    }
    quint32 height() const override
    {
        return 5;
    }
    Texture* load(const TextureFileInfo&) override
    {
        return nullptr;
    }
};

class LoaderWithMetadata : public PlainLoader
{
public:
    const char* rawKey(unsigned index) const override
    {
        return index == 0 ? "Gr\xc3\xb6\xc3\x9f"
                            "e"
                          : nullptr;
    }
    const char* rawValue(unsigned index) const override
    {
        return index == 0 ? "\xe4\xb8\xad \xf0\x9f\x99\x82" : index == 1 ? "" : nullptr;
    }
};

} // namespace

TEST(TextureLoader2DHelperTest, AnswersAsOnePlainImageRowByRow)
{
    PlainLoader plain;
    const TextureLoader& loader = plain;
    const struct
    {
        const char* what;
        bool answer, expected;
    } flags[] = {
        {"isCompressed", loader.isCompressed(), false},
        {"isArrayTexture", loader.isArrayTexture(), false},
        {"isCubeMapTexture", loader.isCubeMapTexture(), false},
        {"is1DTexture", loader.is1DTexture(), false},
        {"is2DTexture", loader.is2DTexture(), true},
        {"is3DTexture", loader.is3DTexture(), false},
        {"hasMipMaps", loader.hasMipMaps(), false},
    };
    for (const auto& row : flags)
        EXPECT_EQ(row.answer, row.expected) << row.what;
    const struct
    {
        const char* what;
        quint32 answer, expected;
    } counts[] = {
        {"depth", loader.depth(), 0},
        {"arraySize", loader.arraySize(), 0},
        {"cubeFaces", loader.cubeFaces(), 1},
        {"mipmapLevels", loader.mipmapLevels(), 1},
        {"numMetadataEntries", loader.numMetadataEntries(), 0},
    };
    for (const auto& row : counts)
        EXPECT_EQ(row.answer, row.expected) << row.what;
    for (const unsigned index : {0u, 1u, 0xFFFFFFFFu})
    {
        EXPECT_EQ(loader.rawKey(index), nullptr);
        EXPECT_EQ(loader.rawValue(index), nullptr);
        EXPECT_EQ(loader.key(index), QString());
        EXPECT_EQ(loader.value(index), QString());
    }
}

TEST(TextureLoader2DHelperTest, KeyAndValueAreTheRawTextsAsUtf8)
{
    const LoaderWithMetadata loader;
    EXPECT_EQ(loader.key(0), QStringLiteral(u"Gr\u00f6\u00dfe"));
    EXPECT_EQ(loader.value(0), QStringLiteral(u"\u4e2d \U0001f642"));
    EXPECT_EQ(loader.key(1), QString());
    EXPECT_EQ(loader.value(1), QString());
}

// ---- names of baked files ------------------------------------------------------------------------------------------

TEST(BakedImageTest, TheKeyword)
{
    EXPECT_EQ(kBakedKeyword, QStringLiteral("[baked]"));
}

TEST(BakedImageTest, PathsOfBakedImages)
{
    const struct
    {
        const char* path;
        const char* suffix;
        int anisotropy;
        const char* expected;
    } rows[] = {
        {"a/b.png", ".ktx", 4, "a/b[baked][aniso4].ktx"},
        {"a/b.png", ".ktx", 16, "a/b[baked][aniso16].ktx"},
        {"a/b.png", ".ktx", 2147483647, "a/b[baked][aniso2147483647].ktx"},
        {"a/b.png", ".ktx", 1, "a/b[baked][aniso1].ktx"},
        {"a/b.png", ".ktx", 0, "a/b[baked].ktx"},
        {"a/b.png", ".ktx", -1, "a/b[baked].ktx"},
        {"a/b.png", "ktx", 0, "a/b[baked]ktx"},
        {"a/b.png", "", 2, "a/b[baked][aniso2]"},
        // only the last extension goes, and it is looked for from the end
        {"a/b.tar.gz", ".ktx", 0, "a/b.tar[baked].ktx"},
        {"png/png.png", ".ktx", 0, "png/png[baked].ktx"},
        {"a.png/b.png", ".ktx", 0, "a.png/b[baked].ktx"},
        {"pngpng.png.png", ".ktx", 0, "pngpng.png[baked].ktx"},
        {"a/b.PNG", ".ktx", 0, "a/b[baked].ktx"},
        {".png", ".ktx", 0, "[baked].ktx"},
        {"a/b.", ".ktx", 0, "a/b[baked].ktx"},
        // a baked path is baked again like any other
        {"a/b[baked].ktx", ".ktx", 2, "a/b[baked][baked][aniso2].ktx"},
        {"a/%1.png", ".%2", 3, "a/%1[baked][aniso3].%2"},
        // without an extension the last character counts as the dot
        {"a/b", ".ktx", 0, "a/[baked].ktx"},
        {"a.d/bc", ".ktx", 4, "a.d/b[baked][aniso4].ktx"},
        {"", ".ktx", 4, "[baked][aniso4].ktx"},
    };
    for (const auto& row : rows)
        EXPECT_EQ(GetBakedImagePath(text(row.path), text(row.suffix), row.anisotropy), text(row.expected)) << row.path;
}

TEST(BakedImageTest, TheMarkCountsAnywhereInAPathInLowerCaseOnly)
{
    for (const char* const path : {"a/b[baked].ktx", "a[baked]/b.ktx", "[baked]", "b[baked][aniso4].ktx", "[[baked]]"})
        EXPECT_TRUE(IsBakedImagePath(text(path))) << path;
    for (const char* const path :
         {"", "a/b.ktx", "a/b[BAKED].ktx", "a/b[Baked].ktx", "a/baked.ktx", "a/[baked", "baked]", "[ baked]"})
        EXPECT_FALSE(IsBakedImagePath(text(path))) << path;
}

TEST(BakedImageTest, LevelsOfAnisotropy)
{
    const struct
    {
        const char* path;
        int expected;
    } rows[] = {
        {"a/b[baked][aniso4].ktx", 4},
        {"[aniso16]", 16},
        {"[aniso2147483647]", 2147483647},
        {"[aniso-2]", -2},
        {"a[aniso2]/b[aniso8].ktx", 2},
        // no marker
        {"", -1},
        {"a/b[baked].ktx", -1},
        {"a/b[ANISO4].ktx", -1},
        {"a/b[Aniso4].ktx", -1},
        {"a/baniso4].ktx", -1},
        {"[anis", -1},
        // no number
        {"[aniso]", 0},
        {"[anisox]", 0},
        {"[aniso4x]", 0},
        {"[aniso4.0]", 0},
        {"[aniso0x10]", 0},
        {"[aniso2147483648]", 0},
        {"[aniso][aniso4]", 0},
        // a bracket before the marker is none behind it
        {"a]b[aniso4]", 4},
        // without a bracket the rest of the path counts
        {"a/b[aniso4", 4},
        {"a/b[aniso4.ktx", 0},
        {"a/b[aniso", 0},
    };
    for (const auto& row : rows)
        EXPECT_EQ(GetAnisoLevel(text(row.path)), row.expected) << row.path;
}

TEST(BakedImageTest, AFilesOwnLevelIsReadFromItsName)
{
    for (const int level : {1, 2, 4, 8, 16})
    {
        const QString path = GetBakedImagePath(text("a/b.png"), text(".ktx"), level);
        EXPECT_EQ(GetAnisoLevel(path), level);
        EXPECT_TRUE(IsBakedImagePath(path));
    }
    EXPECT_EQ(GetAnisoLevel(GetBakedImagePath(text("a/b.png"), text(".ktx"), 0)), -1);
}

} // namespace Harrow::Vrk::Test
