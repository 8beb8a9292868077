// SPDX-License-Identifier: MIT
//
// The table of a BRDF's response on the real driver, against integrals on the CPU.
#include "PrefilteredEnvMap.h"

#include "EnvironmentDriverTestTools.h"

namespace Harrow::Vrk::Test
{

using namespace Environment;

class PreintegratedBRDFGL : public EnvironmentDriverFixture, public testing::WithParamInterface<Model>
{
protected:
    static TexturePointer newTable(int width, int height, Model model, unsigned lodLevels = 5,
                                   TextureFormat format = RGBA32F)
    {
        return TexturePointer(CreatePreintegratedBRDFTable(width, height, lodLevels, modelOf(model), format));
    }
};

class PreintegratedBRDFTableGL : public PreintegratedBRDFGL
{
};

INSTANTIATE_TEST_SUITE_P(Models, PreintegratedBRDFGL, testing::ValuesIn(kModels), &modelName);

namespace
{

constexpr int kSide = 64;

double atCentre(int texel, int side)
{
    return (texel + 0.5) / side;
}

} // namespace

TEST_P(PreintegratedBRDFGL, RedAndGreenAgreeWithTheIntegralOnTheCPUEverywhere)
{
    const auto table = newTable(kSide, kSide, GetParam());
    ASSERT_TRUE(table);
    const Image texels = readLevel(*table, 0);
    double worst = 0.0;
    for (int y = 0; y < kSide; ++y)
        for (int x = 0; x < kSide; ++x)
        {
            const Point expected = integrateModel(GetParam(), atCentre(y, kSide), atCentre(x, kSide), 1024);
            const Vec actual = texels.at(x, y);
            const double difference = std::max(std::abs(actual.x - expected.x), std::abs(actual.y - expected.y));
            ASSERT_LE(difference, 0.002) << "texel " << x << ", " << y << ": " << actual.x << ", " << actual.y
                                         << " and not " << expected.x << ", " << expected.y;
            worst = std::max(worst, difference);
        }
    RecordProperty("worst", std::to_string(worst));
}

TEST_P(PreintegratedBRDFGL, BlueIsTheLevelThatGoesWithTheRoughness)
{
    for (const unsigned lodLevels : {0u, 1u, 9u})
    {
        const auto table = newTable(4, 8, GetParam(), lodLevels);
        ASSERT_TRUE(table);
        const Image texels = readLevel(*table, 0);
        for (int y = 0; y < 8; ++y)
            for (int x = 0; x < 4; ++x)
                EXPECT_NEAR(texels.at(x, y).z, lodLevels * atCentre(y, 8), 1e-5);
    }
}

TEST_P(PreintegratedBRDFGL, TheSidesOfTheTableMayDiffer)
{
    const auto table = newTable(24, 3, GetParam());
    ASSERT_TRUE(table);
    const Image texels = readLevel(*table, 0);
    ASSERT_EQ(texels.width, 24);
    ASSERT_EQ(texels.height, 3);
    for (int y = 0; y < 3; ++y)
        for (int x = 0; x < 24; ++x)
        {
            const Point expected = integrateModel(GetParam(), atCentre(y, 3), atCentre(x, 24), 1024);
            EXPECT_NEAR(texels.at(x, y).x, expected.x, 0.002);
            EXPECT_NEAR(texels.at(x, y).y, expected.y, 0.002);
        }
}

TEST_P(PreintegratedBRDFGL, ATableOfOneTexelHoldsTheMiddle)
{
    const auto table = newTable(1, 1, GetParam());
    ASSERT_TRUE(table);
    const Point expected = integrateModel(GetParam(), 0.5, 0.5, 1024);
    const Vec actual = readLevel(*table, 0).at(0, 0);
    EXPECT_NEAR(actual.x, expected.x, 0.002);
    EXPECT_NEAR(actual.y, expected.y, 0.002);
    EXPECT_NEAR(actual.z, 2.5, 1e-5);
}

TEST_P(PreintegratedBRDFGL, NoMoreIsReflectedThanThereIs)
{
    // But for Oren-Nayar, whose two equal angles make a little too much of a low light.
    const double limit = GetParam() == eOrenNayar ? 1.02 : 1.001;
    const auto table = newTable(kSide, kSide, GetParam());
    ASSERT_TRUE(table);
    for (const Vec& texel : readLevel(*table, 0).texels)
    {
        EXPECT_GE(texel.x, 0.0);
        EXPECT_GE(texel.y, 0.0);
        EXPECT_LE(texel.x + texel.y, limit);
    }
}

TEST_F(PreintegratedBRDFTableGL, OrenNayarAnglesAreBothTheLargerOneWhereTheLightIsLower)
{
    // An exchange of the angles would give 1 here within a few hundredths; both being the larger one gives more.
    const auto table = newTable(kSide, kSide, eOrenNayar);
    ASSERT_TRUE(table);
    const double roughness = atCentre(kSide - 1, kSide);
    const double NdotV = atCentre(48, kSide);
    const double s = roughness * roughness;
    const Vec N = {0, 0, 1};
    const Vec V = {std::sqrt(1.0 - NdotV * NdotV), 0, NdotV};
    double exchanged = 0.0;
    for (unsigned i = 0; i < 1024; ++i)
    {
        const Vec L = cosineHemisphere(hammersley(i, 1024));
        if (L.z <= 0.0)
            continue;
        const double larger = std::acos(std::min(NdotV, L.z));
        const double smaller = std::acos(std::max(NdotV, L.z));
        const Vec flatV = V - N * NdotV;
        const Vec flatL = L - N * L.z;
        const double cosPhi = dot(flatV, flatL) / (length(flatV) * length(flatL));
        exchanged += (1.0 - 0.5 * s / (s + 0.33) +
                      0.45 * s / (s + 0.09) * std::max(0.0, cosPhi) * std::sin(larger) * std::tan(smaller)) /
                     1024;
    }
    const double actual = readLevel(*table, 0).at(48, kSide - 1).x;
    EXPECT_NEAR(actual, integrateModel(eOrenNayar, roughness, NdotV, 1024).x, 0.002);
    EXPECT_GT(actual, exchanged + 0.02);
}

TEST_F(PreintegratedBRDFTableGL, GGXLiesBesideThePublishedSplitSum)
{
    // The published integral, summed over half a million directions each without importance sampling. What is left is
    // the error of 1024 samples, which is largest where a smooth surface is seen at a low angle.
    const auto table = newTable(kSide, kSide, eGGX);
    ASSERT_TRUE(table);
    const Image texels = readLevel(*table, 0);
    for (const int y : {20, 32, 48, 63})
        for (const int x : {1, 4, 8, 16, 32, 48, 63})
        {
            const Point published = integrateByDirections(atCentre(y, kSide), atCentre(x, kSide), 500);
            const double tolerance = x < 8 ? 0.02 : 0.005;
            EXPECT_NEAR(texels.at(x, y).x, published.x, tolerance) << x << ", " << y;
            EXPECT_NEAR(texels.at(x, y).y, published.y, tolerance / 4) << x << ", " << y;
        }
}

TEST_F(PreintegratedBRDFTableGL, ASmoothGGXSurfaceIsAFresnelMirror)
{
    // At the limit of no roughness red is 1 - (1 - N.V)^5 and green the rest.
    const auto table = newTable(kSide, 1024, eGGX);
    ASSERT_TRUE(table);
    const Image texels = readLevel(*table, 0);
    for (int x = 4; x < kSide; ++x)
    {
        const double F = std::pow(1.0 - atCentre(x, kSide), 5.0);
        EXPECT_NEAR(texels.at(x, 0).x, 1.0 - F, 1e-3);
        EXPECT_NEAR(texels.at(x, 0).y, F, 1e-3);
    }
}

TEST_F(PreintegratedBRDFTableGL, LambertReflectsTheAlbedoAlone)
{
    const auto table = newTable(16, 16, eLambert);
    ASSERT_TRUE(table);
    for (const Vec& texel : readLevel(*table, 0).texels)
    {
        EXPECT_NEAR(texel.x, 1.0, 1.5 / 1024) << "the first sample lies in the horizon";
        EXPECT_EQ(texel.y, 0.0);
    }
}

TEST_F(PreintegratedBRDFTableGL, TheResultIsReadOnlyClampedAndHasOneLevel)
{
    for (const TextureFormat format : {RGBA16F, RGBA32F})
    {
        const auto table = newTable(32, 16, eGGX, 5, format);
        ASSERT_TRUE(table);
        EXPECT_EQ(table->target(), GLenum(GL_TEXTURE_2D));
        EXPECT_TRUE(table->isReadOnly());
        EXPECT_EQ(parameterOf(*table, GL_TEXTURE_MIN_FILTER), GL_LINEAR);
        EXPECT_EQ(parameterOf(*table, GL_TEXTURE_MAG_FILTER), GL_LINEAR);
        EXPECT_EQ(parameterOf(*table, GL_TEXTURE_WRAP_S), GL_CLAMP_TO_EDGE);
        EXPECT_EQ(parameterOf(*table, GL_TEXTURE_WRAP_T), GL_CLAMP_TO_EDGE);
        EXPECT_EQ(parameterOf(*table, GL_TEXTURE_MAX_LEVEL), 0);
        const AutoBinder binder(table.get());
        EXPECT_EQ(table->internalFormat(0), InternalFormat(format));
        EXPECT_EQ(table->width(0), 32);
        EXPECT_EQ(table->height(0), 16);
    }
}

} // namespace Harrow::Vrk::Test
