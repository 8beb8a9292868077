// SPDX-License-Identifier: MIT
//
// Array2DTextureManager with bindless handles on a driver that has them: what it gives is what it gives with samplers.
// Skips elsewhere.
#include "Array2DGLSLTestTools.h"

#include "BindlessTextureFunctions.h"

namespace Harrow::Vrk::Test
{
namespace
{

constexpr const char* kCalls[] = {
    "managedTexture(vo_Token, vo_Place.xy)",
    "managedTextureLod(vo_Token, vo_Place.xy, 0.0)",
    "managedTextureLod(vo_Token, vo_Place.xy, 1.0)",
    "vec4(managedTextureSize(vo_Token), 3.0, 5.0)",
    "managedTexelFetch(vo_Token, ivec2(floor(4.0 * vo_Place.xy)), 0)",
    "managedTextureCube(vo_Token, vo_Place.zwx)",
    "managedTextureCubeLod(vo_Token, vo_Place.zwx, 0.0)",
    "vec4(managedTextureCubeSize(vo_Token), 3.0, 5.0)",
    "vec4(managedTextureUDIMIndex(vo_Place.xy), 0.0, 0.0)",
    "textureGetDebug(vo_Place.xy)",
};

/// Textures 1 and 3 in slot 0, 2 in slot 1, a cube map in slot 2, a set with the patches 5 and 6 in slot 3.
class Array2DBindlessGL : public Array2DGLSLFixture
{
protected:
    void SetUp() override
    {
        Array2DGLSLFixture::SetUp();
        // Mesa's software driver lacks it. The calls are stated on the fake driver, the GLSL is compiled by the
        // validator; what is left for a real one are the pictures, and tools/gpu-check.sh fails where nothing could be
        // drawn.
        if (!Array2DTextureManager::isBindlessSupported())
            GTEST_SKIP() << "the driver has no bindless textures: no GL_ARB_bindless_texture";
    }

    void start(bool bindless)
    {
        restart();
        manager->setMaxSlots(4);
        manager->setBindMode(bindless ? Array2DTextureManager::BindBindless : Array2DTextureManager::BindSamplers);
    }

    void place()
    {
        list = {tokenOf(texture(1, 8, 4, GL_TEXTURE_2D, 1, 2)), tokenOf(texture(2, 16, 16)),
                tokenOf(texture(3, 8, 4, GL_TEXTURE_2D, 1, 2)), tokenOf(texture(4, 32, 32, GL_TEXTURE_CUBE_MAP))};
        Texture* const left = texture(5, 4, 4);
        Texture* const above = texture(6, 4, 4);
        tokenOf(left);
        tokenOf(above);
        const TextureToken set = manager->createUDIMToken();
        manager->addUDIMPatch(set, {0, 0}, left);
        manager->addUDIMPatch(set, {1, 1}, above);
        list.append(set);
        announce(list);
        list.append(TextureToken(0)); // has no place
    }

    /// A grid of places for each token, some of them outside.
    std::vector<Lookup> grid() const
    {
        std::vector<Lookup> lookups;
        for (const TextureToken& token : list)
            for (int y = -1; y < 10; ++y)
                for (int x = -1; x < 10; ++x)
                    lookups.push_back({token,
                                       {(float(x) + 0.37f) / 4.0f, (float(y) + 0.41f) / 4.0f, float(x - 4) + 0.1f,
                                        float(y - 4) + 0.2f}});
        return lookups;
    }

    Array2DVariant withStores(bool uniforms, bool texture) const
    {
        return {uniforms, texture, false, false, 4};
    }

    QList<TextureToken> list;
};

} // namespace

TEST_F(Array2DBindlessGL, EveryFunctionGivesWhatItGivesWithSamplers)
{
    for (const auto& [uniforms, texture] : {std::pair(true, false), {false, true}, {true, true}})
        for (const char* const call : kCalls)
        {
            std::vector<Texel> results[2];
            for (const bool bindless : {false, true})
            {
                start(bindless);
                place();
                ASSERT_TRUE(build(withStores(uniforms, texture),
                                  QLatin1String(call) +
                                      QStringLiteral(" + 0.0 * managedTextureLod(vo_Token, vec2(0.0), 0.0)")));
                results[int(bindless)] = lookUp(grid());
            }
            ASSERT_EQ(results[0].size(), results[1].size());
            for (std::size_t i = 0; i < results[0].size(); ++i)
                ASSERT_TRUE(texelsAgree(results[1][i], results[0][i], 0.0f))
                    << call << " " << uniforms << texture << " " << i;
            EXPECT_NE(results[1].front(), results[1].back()) << call << ": something is seen";
        }
}

TEST_F(Array2DBindlessGL, TheTexelsAreThoseOfTheTextures)
{
    start(true);
    place();
    ASSERT_TRUE(build(withStores(false, true), QStringLiteral("managedTexture(vo_Token, vo_Place.xy)")));
    EXPECT_TRUE(texelsAgree(lookUpOne(list[0], {0.99f, 0.9f, 0, 0}), knownTexel(1, 0, 7, 3)));
    EXPECT_TRUE(texelsAgree(lookUpOne(list[1], {0.5f, 0.2f, 0, 0}), knownTexel(2, 0, 8, 3)));
    EXPECT_TRUE(texelsAgree(lookUpOne(list[2], {0.99f, 0.9f, 0, 0}), knownTexel(3, 0, 7, 3)));
    EXPECT_TRUE(texelsAgree(lookUpOne(list[4], {1.6f, 1.3f, 0, 0}), knownTexel(6, 0, 2, 1)));
    EXPECT_TRUE(texelsAgree(lookUpOne(list[4], {1.6f, 0.3f, 0, 0}), kEmptyPatch));
    EXPECT_TRUE(texelsAgree(lookUpOne(TextureToken(0)), kInvalidTexel));
}

TEST_F(Array2DBindlessGL, LevelsOfDetailAreAskedThroughTheHandle)
{
    start(true);
    place();
    ASSERT_TRUE(build(withStores(false, true),
                      QStringLiteral("vec4(managedTextureQueryLod(vo_Token, gl_FragCoord.xy * 0.25), 7.0, 7.0)")));
    const auto actual = lookUp({{list[1]}, {list[1]}, {TextureToken(0)}, {TextureToken(0)}});
    EXPECT_TRUE(texelsAgree(actual[2], {0, 0, 7, 7}));
    EXPECT_EQ(actual[0][2], 7.0f);
}

TEST_F(Array2DBindlessGL, ASlotThatGrowsBetweenDrawsIsSampledThroughItsNewHandle)
{
    start(true);
    place();
    ASSERT_TRUE(build(withStores(false, true), QStringLiteral("managedTextureLod(vo_Token, vo_Place.xy, 0.0)")));
    for (int number = 7; number < 15; ++number)
    {
        const TextureToken late = tokenOf(texture(number, 8, 4, GL_TEXTURE_2D, 1, 2));
        announce({late});
        EXPECT_TRUE(texelsAgree(lookUpOne(late, {0.99f, 0.9f, 0, 0}), knownTexel(number, 0, 7, 3)));
        EXPECT_TRUE(texelsAgree(lookUpOne(list[0], {0.99f, 0.9f, 0, 0}), knownTexel(1, 0, 7, 3))) << "copied again";
    }
}

TEST_F(Array2DBindlessGL, NothingIsReadBehindTheTable)
{
    for (const auto& [uniforms, texture] : {std::pair(true, false), {false, true}, {true, true}})
        for (const char* const call :
             {"managedTexture(vo_Token, vo_Place.xy)", "managedTextureCubeLod(vo_Token, vec3(0.1, 0.2, 1.0), 0.0)",
              "vrkIsValidToken(vo_Token) ? vec4(1.0) : VRK_INVALID_TEXEL"})
        {
            start(true);
            place();
            ASSERT_TRUE(build(withStores(uniforms, texture), QLatin1String(call)));
            for (const TextureToken& token : {TextureToken(900), TextureToken(0x7FFFFFF0), INVALID_TOKEN})
                EXPECT_TRUE(texelsAgree(lookUpOne(token), kInvalidTexel)) << call << " " << token.token;
        }
}

} // namespace Harrow::Vrk::Test
