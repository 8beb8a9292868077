// SPDX-License-Identifier: MIT
//
// Prefiltered environment maps on the real driver, against the integral on the CPU.
#include "PrefilteredEnvMap.h"

#include "EnvironmentDriverTestTools.h"

namespace Harrow::Vrk::Test
{

using namespace Environment;

namespace
{

constexpr unsigned kSamples = 64;
const Vec kColor = {0.25, 3.5, 0.75};

/// Dark but for one texel.
Image brightTexel(int width, int height, int x, int y)
{
    Image image(width, height);
    image.at(x, y) = {100.0, 50.0, 25.0};
    return image;
}

/// Each level one colour: the number of the level.
Levels numberedLevels(const Levels& levels)
{
    Levels numbered;
    for (const Image& level : levels)
    {
        const double number = double(numbered.size());
        numbered.push_back(constantImage(level.width, level.height, {number, number, number}));
    }
    return numbered;
}

Cube numberedCube(int size)
{
    Cube cube;
    cube.fill(numberedLevels(mipChain(Image(size, size))));
    return cube;
}

} // namespace

class PrefilteredEnvMapGL : public EnvironmentDriverFixture
{
protected:
    /// All levels; `samples` 0 stands for each texel of the source.
    static void expectLatLong(Texture& map, Model model, const Levels& source, unsigned samples, double tolerance,
                              Wrap wrap = Wrap::eRepeat)
    {
        const Image base = readLevel(map, 0);
        const int levels = MaxLODLevel(base.width, base.height);
        for (int level = 0; level < levels; ++level)
            EXPECT_TRUE(areClose(readLevel(map, level),
                                 expectedLatLong(model, source, base.width, base.height, level, samples, wrap),
                                 tolerance))
                << kModelNames[model] << ", level " << level;
    }
};

class PrefilteredEnvMapModelsGL : public PrefilteredEnvMapGL, public testing::WithParamInterface<Model>
{
};

INSTANTIATE_TEST_SUITE_P(Models, PrefilteredEnvMapModelsGL, testing::ValuesIn(kModels), &modelName);

// ---- constant environments -----------------------------------------------------------------------------------------

TEST_P(PrefilteredEnvMapModelsGL, AConstantLatLongEnvironmentStaysThatConstantAtEveryLevel)
{
    const auto source = latLongTexture(mipChain(constantImage(32, 16, kColor)));
    for (const bool importance : {false, true})
    {
        SetDiffuseImportanceSampling(importance);
        const auto map = prefilterLatLong(*source, 32, 16, kSamples, GetParam());
        ASSERT_TRUE(map);
        for (int level = 0; level < 5; ++level)
            EXPECT_TRUE(areClose(readLevel(*map, level), constantImage(32 >> level, 16 >> level, kColor), 0.0, 2e-5))
                << "level " << level;
    }
}

TEST_P(PrefilteredEnvMapModelsGL, AConstantCubeEnvironmentStaysThatConstantAtEveryLevel)
{
    const auto source = cubeTexture(cubeOf(16, [](const Vec&) { return kColor; }));
    const auto map = prefilterCube(*source, 16, kSamples, GetParam());
    ASSERT_TRUE(map);
    for (int level = 0; level < 5; ++level)
        for (int face = 0; face < 6; ++face)
            EXPECT_TRUE(
                areClose(readFace(*map, face, level), constantImage(16 >> level, 16 >> level, kColor), 0.0, 2e-5))
                << "level " << level << ", face " << face;
}

// ---- against the CPU -----------------------------------------------------------------------------------------------

TEST_P(PrefilteredEnvMapModelsGL, ASingleBrightTexelOfALatLongMapAgreesWithTheIntegralOnTheCPU)
{
    SetDiffuseImportanceSampling(true);
    const Levels source = {brightTexel(32, 16, 21, 9)};
    const auto texture = latLongTexture(source);
    const auto map = prefilterLatLong(*texture, 32, 16, kSamples, GetParam());
    ASSERT_TRUE(map);
    expectLatLong(*map, GetParam(), source, kSamples, 0.01);
}

TEST_P(PrefilteredEnvMapModelsGL, ASingleBrightTexelOfACubeMapAgreesWithTheIntegralOnTheCPU)
{
    Cube source = cubeOf(16, [](const Vec&) { return Vec(); });
    for (Levels& levels : source)
        levels.resize(1);
    source[2][0] = brightTexel(16, 16, 5, 9);
    const auto texture = cubeTexture(source);
    const auto map = prefilterCube(*texture, 16, kSamples, GetParam());
    ASSERT_TRUE(map);
    // On a face where no sample meets the texel there is nothing to be relative to.
    for (int level = 0; level < 5; ++level)
        for (int face = 0; face < 6; ++face)
        {
            const Image expected = expectedFace(GetParam(), source, 16, face, level, kSamples);
            EXPECT_TRUE(areClose(readFace(*map, face, level), expected, 0.01, 0.02))
                << "level " << level << ", face " << face;
        }
}

TEST_P(PrefilteredEnvMapModelsGL, ALatLongSkyAgreesWithTheIntegralOnTheCPU)
{
    SetDiffuseImportanceSampling(true);
    const Levels source = {latLongImage(64, 32, &sky)};
    const auto texture = latLongTexture(source);
    const auto map = prefilterLatLong(*texture, 32, 16, kSamples, GetParam());
    ASSERT_TRUE(map);
    expectLatLong(*map, GetParam(), source, kSamples, 0.003);
}

TEST_P(PrefilteredEnvMapModelsGL, ALatLongSkyWithMipmapsAgreesWithTheIntegralOnTheCPU)
{
    SetDiffuseImportanceSampling(true);
    const Levels source = mipChain(latLongImage(64, 32, &sky));
    const auto texture = latLongTexture(source);
    const auto map = prefilterLatLong(*texture, 32, 16, kSamples, GetParam());
    ASSERT_TRUE(map);
    expectLatLong(*map, GetParam(), source, kSamples, 0.01);
}

TEST_P(PrefilteredEnvMapModelsGL, ACubeSkyAgreesWithTheIntegralOnTheCPU)
{
    Cube source = cubeOf(32, &sky);
    for (Levels& levels : source)
        levels.resize(1);
    const auto texture = cubeTexture(source);
    const auto map = prefilterCube(*texture, 16, kSamples, GetParam());
    ASSERT_TRUE(map);
    expectCube(*map, GetParam(), source, kSamples, 0.005);
}

TEST_P(PrefilteredEnvMapModelsGL, ACubeSkyWithMipmapsAgreesWithTheIntegralOnTheCPU)
{
    const Cube source = cubeOf(32, &sky);
    const auto texture = cubeTexture(source);
    const auto map = prefilterCube(*texture, 16, kSamples, GetParam());
    ASSERT_TRUE(map);
    // A sample on an edge of the cube, or between two levels, may be rounded to the other side.
    expectCube(*map, GetParam(), source, kSamples, 0.05);
}

TEST_P(PrefilteredEnvMapModelsGL, SamplesComeFromTheLevelThatFitsTheirDensity)
{
    // The levels show their numbers, so a texel shows the mean level. One sample in 64 may round to the other side.
    SetDiffuseImportanceSampling(true);
    const Levels levels = numberedLevels(mipChain(Image(256, 128)));
    const auto source = latLongTexture(levels);
    const auto map = prefilterLatLong(*source, 32, 16, kSamples, GetParam());
    ASSERT_TRUE(map);
    for (int level = 0; level < 5; ++level)
        EXPECT_TRUE(areClose(readLevel(*map, level), expectedLatLong(GetParam(), levels, 32, 16, level, kSamples), 0.0,
                             2.0 / kSamples))
            << "level " << level;

    const Cube cube = numberedCube(128);
    const auto cubeSource = cubeTexture(cube);
    const auto cubeMap = prefilterCube(*cubeSource, 16, kSamples, GetParam());
    ASSERT_TRUE(cubeMap);
    for (int level = 0; level < 5; ++level)
        EXPECT_TRUE(areClose(readFace(*cubeMap, 4, level), expectedFace(GetParam(), cube, 16, 4, level, kSamples), 0.0,
                             2.0 / kSamples))
            << "level " << level;
}

// ---- diffuse models that take each texel ---------------------------------------------------------------------------

TEST_F(PrefilteredEnvMapGL, DiffuseModelsTakeEachTexelOnceAndAgreeWithTheSumOnTheCPU)
{
    for (const Model model : {eLambert, eOrenNayar})
    {
        const Levels source = mipChain(latLongImage(32, 16, &sky));
        const auto texture = latLongTexture(source);
        const auto map = prefilterLatLong(*texture, 16, 8, 3, model); // 3 samples would be far off
        ASSERT_TRUE(map);
        expectLatLong(*map, model, source, 0, 0.005);

        const Levels bright = {brightTexel(32, 16, 21, 9)};
        const auto brightTexture = latLongTexture(bright);
        const auto brightMap = prefilterLatLong(*brightTexture, 16, 8, 3, model);
        ASSERT_TRUE(brightMap);
        expectLatLong(*brightMap, model, bright, 0, 0.005);
    }
}

TEST_F(PrefilteredEnvMapGL, EachTexelOfALatLongMapCountsAlikeWhateverItsSolidAngle)
{
    // In an environment a + b * y, the mean over longitude and latitude with the cosine as weight is a + b * pi / 4 at
    // the pole, and for one that goes along x it is a + b * pi^2 / 16 at +x. By solid angle both would be 2 / 3.
    const double a = 2.0;
    const double b = 1.0;
    const Levels source = {latLongImage(128, 64,
                                        [=](const Vec& d) {
                                            return Vec{a + b * d.x, a + b * d.y, a + b * d.z};
                                        })};
    const auto texture = latLongTexture(source);
    // Fine enough for a texel within a degree of the pole, and one within three degrees of +x.
    const auto map = prefilterLatLong(*texture, 64, 64, 1, eLambert);
    ASSERT_TRUE(map);
    const Image base = readLevel(*map, 0);
    EXPECT_NEAR(base.at(32, 32).x, a + b * kPi * kPi / 16, 4e-3);
    EXPECT_NEAR(base.at(48, 32).z, a + b * kPi * kPi / 16, 4e-3);
    EXPECT_NEAR(base.at(17, 63).y, a + b * kPi / 4, 4e-3);
    EXPECT_NEAR(base.at(17, 0).y, a - b * kPi / 4, 4e-3);
    EXPECT_NEAR(base.at(32, 32).y, a, 0.05) << "half a texel above the equator";
}

TEST_F(PrefilteredEnvMapGL, DirectionsByImportanceWeightTheCosineTwice)
{
    // Density cos / pi and weight cos make a lobe cos^2, whose mean of a + b * (d . e) is a + 3 / 4 b * (N . e). The
    // irradiance over pi, a lobe cos, would have 2 / 3.
    SetDiffuseImportanceSampling(true);
    const double a = 2.0;
    const double b = 1.0;
    const auto colorOf = [=](const Vec& d) { return Vec{a + b * d.x, a + b * d.y, a + b * d.z}; };
    const auto lat = latLongTexture({latLongImage(256, 128, colorOf)});
    const auto lobe = [=](const Vec& N) { return Vec{a, a, a} + N * (b * 0.75); };
    const auto map = prefilterLatLong(*lat, 32, 16, 1024, eLambert);
    ASSERT_TRUE(map);
    for (int level = 0; level < 5; ++level)
        EXPECT_TRUE(areClose(readLevel(*map, level), latLongImage(32 >> level, 16 >> level, lobe), 0.0, 0.004));

    Cube faces = cubeOf(128, colorOf);
    for (Levels& levels : faces)
        levels.resize(1);
    const auto cube = cubeTexture(faces);
    const auto cubeMap = prefilterCube(*cube, 16, 1024, eOrenNayar);
    ASSERT_TRUE(cubeMap);
    for (int level = 0; level < 5; ++level)
        for (int face = 0; face < 6; ++face)
            EXPECT_TRUE(areClose(readFace(*cubeMap, face, level), faceImage(face, 16 >> level, lobe), 0.0, 0.006))
                << "level " << level << ", face " << face;
}

// ---- orientation ---------------------------------------------------------------------------------------------------

TEST_F(PrefilteredEnvMapGL, SixColoursInGiveSixDirectionsOut)
{
    const Vec colors[] = {{1, 0, 0}, {0, 1, 0}, {0, 0, 1}, {1, 1, 0}, {0, 1, 1}, {1, 0, 1}};
    Cube source;
    for (std::size_t face = 0; face < 6; ++face)
        source[face] = mipChain(constantImage(8, 8, colors[face]));
    const auto texture = cubeTexture(source);
    for (const Model model : kModels)
    {
        const auto map = prefilterCube(*texture, 8, 256, model);
        ASSERT_TRUE(map);
        for (int face = 0; face < 6; ++face)
        {
            // A mirror shows the face all over; the roughest level shows it in front.
            if (model == eGGX)
            {
                EXPECT_TRUE(areClose(readFace(*map, face, 0), constantImage(8, 8, colors[face]), 0.0, 1e-5));
            }
            const Vec last = readFace(*map, face, 3).at(0, 0);
            const Vec color = colors[face];
            EXPECT_GT(dot(last, color) / dot(color, color), 0.5) << kModelNames[model] << ", face " << face;
            const Vec opposite = colors[face ^ 1];
            EXPECT_LT(dot(last, opposite) / dot(opposite, opposite), dot(last, color) / dot(color, color));
        }
    }
}

TEST_F(PrefilteredEnvMapGL, TheMirrorLevelOfACubeMapCopiesItTexelByTexel)
{
    Cube source;
    for (std::size_t face = 0; face < 6; ++face)
        source[face] = {noiseImage(16, 16, unsigned(face) + 1)};
    const auto texture = cubeTexture(source);
    const auto map = prefilterCube(*texture, 16, 4, eGGX);
    ASSERT_TRUE(map);
    for (int face = 0; face < 6; ++face)
        EXPECT_TRUE(areClose(readFace(*map, face, 0), source[std::size_t(face)][0], 0.0, 1e-3)) << "face " << face;
}

TEST_F(PrefilteredEnvMapGL, TheMirrorLevelOfALatLongMapCopiesItTexelByTexel)
{
    const Levels source = {noiseImage(32, 16, 9)};
    const auto texture = latLongTexture(source);
    const auto map = prefilterLatLong(*texture, 32, 16, 4, eGGX);
    ASSERT_TRUE(map);
    EXPECT_TRUE(areClose(readLevel(*map, 0), source[0], 0.0, 0.02)) << "the driver's arc sine is coarse";
}

TEST_P(PrefilteredEnvMapModelsGL, FacesFollowOneAnotherWithoutASeam)
{
    // Of an environment that shows its directions, every level of every face shows those again, less saturated.
    const auto source = cubeTexture(cubeOf(64, [](const Vec& d) { return Vec{1, 1, 1} + d; }));
    const auto map = prefilterCube(*source, 16, 1024, GetParam());
    ASSERT_TRUE(map);
    for (int level = 0; level < 4; ++level)
    {
        // One saturation for all of the level.
        const Vec middle = readFace(*map, 0, level).at(8 >> level, 8 >> level) - Vec{1, 1, 1};
        const Vec N = directionOfFace(0, ((8 >> level) + 0.5) / (16 >> level), ((8 >> level) + 0.5) / (16 >> level));
        const double saturation = dot(middle, N);
        EXPECT_GT(saturation, 0.5);
        EXPECT_LE(saturation, 1.0 + 1e-3);
        for (int face = 0; face < 6; ++face)
            EXPECT_TRUE(areClose(readFace(*map, face, level),
                                 faceImage(face, 16 >> level,
                                           [=](const Vec& d) {
                                               return Vec{1, 1, 1} + d * saturation;
                                           }),
                                 0.0, 0.02))
                << "level " << level << ", face " << face;
    }
}

// ---- sizes ---------------------------------------------------------------------------------------------------------

TEST_P(PrefilteredEnvMapModelsGL, AMapOfOneTexelIsMadeWhateverItsRoughnessIs)
{
    // The only level has the roughness 0 / 0, which the diffuse models don't look at.
    SetDiffuseImportanceSampling(true);
    const auto source = latLongTexture(mipChain(constantImage(8, 4, kColor)));
    const auto map = prefilterLatLong(*source, 1, 1, kSamples, GetParam());
    ASSERT_TRUE(map);
    EXPECT_EQ(parameterOf(*map, GL_TEXTURE_MAX_LEVEL), 0);
    const auto cubeSource = cubeTexture(cubeOf(4, [](const Vec&) { return kColor; }));
    const auto cubeMap = prefilterCube(*cubeSource, 1, kSamples, GetParam());
    ASSERT_TRUE(cubeMap);
    EXPECT_EQ(parameterOf(*cubeMap, GL_TEXTURE_MAX_LEVEL), 0);
    if (!isDiffuse(GetParam()))
        return;
    EXPECT_TRUE(areClose(readLevel(*map, 0), constantImage(1, 1, kColor), 0.0, 2e-5));
    for (int face = 0; face < 6; ++face)
        EXPECT_TRUE(areClose(readFace(*cubeMap, face, 0), constantImage(1, 1, kColor), 0.0, 2e-5));
}

TEST_F(PrefilteredEnvMapGL, LatLongMapsOfAnySidesAgreeWithTheIntegralOnTheCPU)
{
    const Levels source = {latLongImage(48, 20, &sky)};
    const auto texture = latLongTexture(source);
    const struct
    {
        int width, height, levels;
    } rows[] = {{40, 12, 4}, {7, 5, 3}, {3, 8, 2}, {64, 2, 2}, {2, 64, 2}, {5, 1, 1}, {1, 9, 1}};
    for (const auto& row : rows)
    {
        const auto map = prefilterLatLong(*texture, row.width, row.height, 16, eGGX);
        ASSERT_TRUE(map);
        EXPECT_EQ(parameterOf(*map, GL_TEXTURE_MAX_LEVEL), row.levels - 1);
        if (row.levels > 1)
            expectLatLong(*map, eGGX, source, 16, 0.003);
    }
}

TEST_F(PrefilteredEnvMapGL, CubeMapsOfOddSidesAgreeWithTheIntegralOnTheCPU)
{
    Cube source = cubeOf(8, &sky);
    for (Levels& levels : source)
        levels.resize(1);
    const auto texture = cubeTexture(source);
    const auto map = prefilterCube(*texture, 11, 16, eBlinnPhong);
    ASSERT_TRUE(map);
    expectCube(*map, eBlinnPhong, source, 16, 0.01);
}

TEST_F(PrefilteredEnvMapGL, TheSizeOfTheTilesChangesNoPixel)
{
    const auto texture = latLongTexture({latLongImage(64, 32, &sky)});
    const auto whole = prefilterLatLong(*texture, 40, 24, 16, eGGX);
    ASSERT_TRUE(whole);
    for (const int tile : {1, 7, 16, 24, 40, 41, std::numeric_limits<int>::max()})
    {
        SetPrefilteredTilseSizeMax(tile);
        const auto tiled = prefilterLatLong(*texture, 40, 24, 16, eGGX);
        ASSERT_TRUE(tiled);
        for (int level = 0; level < 4; ++level)
            EXPECT_TRUE(areClose(readLevel(*tiled, level), readLevel(*whole, level), 0.0, 0.0))
                << "tile " << tile << ", level " << level;
    }
}

// ---- limits of the source ------------------------------------------------------------------------------------------

TEST_F(PrefilteredEnvMapGL, ASourceBeyondTheLimitsIsScaledLinearlyFirst)
{
    // At half the size linear scaling is the mean of four texels; the copy is clamped at its edges.
    const Image base = latLongImage(64, 32, &sky);
    const auto texture = latLongTexture(mipChain(base));
    SetPrefilteredSourceWidthMax(32);
    SetPrefilteredSourceHeightMax(16);
    const Levels copy = {halved(base)};
    for (const Model model : {eGGX, eLambert})
    {
        const CallLog calls;
        const auto map = prefilterLatLong(*texture, 16, 8, kSamples, model);
        EXPECT_EQ(calls.count(QStringLiteral("glBlitFramebuffer")), 1);
        EXPECT_EQ(calls.count(QStringLiteral("glDeleteTextures")), 1);
        ASSERT_TRUE(map);
        expectLatLong(*map, model, copy, model == eLambert ? 0 : kSamples, 0.005, Wrap::eClamp);
    }
}

TEST_F(PrefilteredEnvMapGL, OneLimitScalesOneSide)
{
    Image base(8, 8);
    for (int y = 0; y < 8; ++y)
        for (int x = 0; x < 8; ++x)
            base.at(x, y) = {double(x), double(y), 1.0};
    const auto texture = latLongTexture({base});
    SetPrefilteredSourceHeightMax(4);
    Image half(8, 4);
    for (int y = 0; y < 4; ++y)
        for (int x = 0; x < 8; ++x)
            half.at(x, y) = {double(x), 2.0 * y + 0.5, 1.0};
    const auto map = prefilterLatLong(*texture, 8, 4, 4, eGGX);
    ASSERT_TRUE(map);
    EXPECT_TRUE(areClose(readLevel(*map, 0), half, 0.0, 0.05));
}

TEST_F(PrefilteredEnvMapGL, ASourceWithinTheLimitsIsUsedAsItIs)
{
    const Levels source = {latLongImage(16, 8, &sky)};
    const auto texture = latLongTexture(source);
    SetPrefilteredSourceWidthMax(16);
    SetPrefilteredSourceHeightMax(8);
    const CallLog calls;
    const auto map = prefilterLatLong(*texture, 8, 4, 1, eLambert);
    EXPECT_EQ(calls.count(QStringLiteral("glBlitFramebuffer")), 0);
    EXPECT_EQ(calls.count(QStringLiteral("glDeleteTextures")), 0);
    ASSERT_TRUE(map);
    expectLatLong(*map, eLambert, source, 0, 0.005);
}

// ---- formats and parameters ----------------------------------------------------------------------------------------

TEST_F(PrefilteredEnvMapGL, TheResultHasTheFormatThatWasAskedFor)
{
    const struct
    {
        TextureFormat format;
        GLint internalFormat;
        double tolerance;
    } rows[] = {{RGBA, GL_RGBA, 1.0 / 255}, {RGBA16F, GL_RGBA16F, 1e-3}, {RGBA32F, GL_RGBA32F, 1e-5}};
    const Vec color = {0.25, 0.5, 1.0};
    const auto lat = latLongTexture({constantImage(8, 4, color)});
    const auto cube = cubeTexture(cubeOf(4, [=](const Vec&) { return color; }));
    for (const auto& row : rows)
    {
        const auto map = prefilterLatLong(*lat, 8, 4, 16, eGGX, row.format);
        const auto cubeMap = prefilterCube(*cube, 4, 16, eGGX, row.format);
        ASSERT_TRUE(map && cubeMap);
        for (Texture* const texture : {map.get(), cubeMap.get()})
        {
            const AutoBinder binder(texture);
            EXPECT_EQ(texture->internalFormat(0), row.internalFormat);
            EXPECT_EQ(texture->width(1), texture->width(0) / 2);
        }
        EXPECT_TRUE(areClose(readLevel(*map, 1), constantImage(4, 2, color), 0.0, row.tolerance));
        EXPECT_TRUE(areClose(readFace(*cubeMap, 5, 1), constantImage(2, 2, color), 0.0, row.tolerance));
    }
}

TEST_F(PrefilteredEnvMapGL, TheResultsAreReadOnlyAndSampledAcrossTheirLevels)
{
    const auto lat = latLongTexture({constantImage(8, 4, kColor)});
    const auto cube = cubeTexture(cubeOf(4, [](const Vec&) { return kColor; }));
    const auto map = prefilterLatLong(*lat, 16, 8, 4, eGGX);
    const auto cubeMap = prefilterCube(*cube, 8, 4, eGGX);
    ASSERT_TRUE(map && cubeMap);
    EXPECT_EQ(map->target(), GLenum(GL_TEXTURE_2D));
    EXPECT_EQ(cubeMap->target(), GLenum(GL_TEXTURE_CUBE_MAP));
    EXPECT_EQ(parameterOf(*map, GL_TEXTURE_WRAP_S), GL_REPEAT);
    EXPECT_EQ(parameterOf(*cubeMap, GL_TEXTURE_WRAP_S), GL_CLAMP_TO_EDGE);
    for (Texture* const texture : {map.get(), cubeMap.get()})
    {
        EXPECT_TRUE(texture->isReadOnly());
        EXPECT_TRUE(texture->isManaged());
        EXPECT_EQ(parameterOf(*texture, GL_TEXTURE_MIN_FILTER), GL_LINEAR_MIPMAP_LINEAR);
        EXPECT_EQ(parameterOf(*texture, GL_TEXTURE_MAG_FILTER), GL_LINEAR);
        EXPECT_EQ(parameterOf(*texture, GL_TEXTURE_WRAP_T), GL_CLAMP_TO_EDGE);
        EXPECT_EQ(parameterOf(*texture, GL_TEXTURE_MIN_LOD), 0);
        EXPECT_EQ(parameterOf(*texture, GL_TEXTURE_MAX_LOD), 3);
        EXPECT_EQ(parameterOf(*texture, GL_TEXTURE_MAX_LEVEL), 3);
    }
}

} // namespace Harrow::Vrk::Test
