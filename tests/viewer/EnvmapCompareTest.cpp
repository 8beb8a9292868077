// SPDX-License-Identifier: MIT
// What vrk-envmap --compare tells: next to nothing where light is even or smooth, and true numbers where it is not.
#include "EnvmapRun.h"

#include <gtest/gtest.h>

#include <cmath>

namespace
{

constexpr const char* kModels[] = {"blinn-phong", "ashikhmin-shirley", "ggx", "lambert", "oren-nayar"};

double largest(const std::vector<double>& numbers)
{
    double most = 0.0;
    for (const double number : numbers)
        most = std::max(most, number);
    return most;
}

QStringList compared(const QString& file, const QString& model, const QStringList& more)
{
    return QStringList{"--compare", "--model", model, file} + more;
}

} // namespace

TEST(EnvmapCompareTest, EvenLightStaysThatAtEveryLevel)
{
    const ModelFolder folder;
    const auto even = [](const Vector&) { return Color{0.75, 0.5, 3.0}; };
    const QString file = folder.write("a.hdr", stripFile(16, even));
    for (const char* model : kModels)
    {
        const ModelFolder other;
        const EnvmapRun run(other, compared(file, model, {"--size", "16", "--samples", "64"}));
        EXPECT_EQ(run.levelNumbers("mean error").size(), 5u) << model;
        // Sums of 64 numbers in single precision.
        EXPECT_LT(largest(run.levelNumbers("largest")), 1e-5) << model << '\n' << run.run().errors.constData();
        for (int level = 0; level < 5; ++level)
            expectStrip(run.hdr(QStringLiteral("a-%1-%2.hdr").arg(model).arg(level)), even, 3.0 / 256.0);
    }
}

TEST(EnvmapCompareTest, EvenLightStaysThatByLongitudeAndLatitude)
{
    const ModelFolder folder;
    const QString file = folder.write("a.hdr", latLongFile(32, [](const Vector&) { return Color{0.75, 0.5, 3.0}; }));
    for (const QStringList& how : {QStringList{"--samples", "64"}, QStringList{"--every-texel"}})
    {
        const ModelFolder other;
        const EnvmapRun run(other, compared(file, "lambert", QStringList{"--lat-long", "16x8"} + how));
        EXPECT_EQ(run.levelNumbers("mean error").size(), 4u);
        EXPECT_LT(largest(run.levelNumbers("largest")), 1e-5) << run.run().errors.constData();
    }
}

TEST(EnvmapCompareTest, SmoothLightIsFilteredAsTheReferenceDoes)
{
    // With 4096 directions for each texel hardly any of them reads a mipmap.
    const ModelFolder folder;
    const QString file = folder.write("a.hdr", stripFile(32, waves));
    for (const char* model : kModels)
    {
        const ModelFolder other;
        const EnvmapRun run(other, compared(file, model, {"--size", "8", "--samples", "4096"}));
        EXPECT_EQ(run.levelNumbers("mean error").size(), 4u) << model;
        EXPECT_LT(largest(run.levelNumbers("mean error")), 0.002) << model << '\n' << run.run().errors.constData();
        EXPECT_LT(largest(run.levelNumbers("largest")), 0.01) << model << '\n' << run.run().errors.constData();
    }
}

TEST(EnvmapCompareTest, SmoothLightByLongitudeAndLatitudeToo)
{
    const ModelFolder folder;
    const QString file = folder.write("a.hdr", latLongFile(64, waves));
    for (const char* model : {"blinn-phong", "ggx", "lambert"})
    {
        const ModelFolder other;
        const EnvmapRun run(other, compared(file, model, {"--lat-long", "16x8", "--samples", "4096"}));
        EXPECT_LT(largest(run.levelNumbers("mean error")), 0.002) << model << '\n' << run.run().errors.constData();
        EXPECT_LT(largest(run.levelNumbers("largest")), 0.01) << model << '\n' << run.run().errors.constData();
    }
}

TEST(EnvmapCompareTest, LambertHasTheAnswerOfALinearLight)
{
    // For light of 0.5 + 0.4 y the mean weighted by the squared cosine is 0.5 + 0.4 * 3/4 n.y: the integral of cos^3
    // over the half space is pi/2, that of cos^2 is 2 pi/3.
    const ModelFolder folder;
    const auto linear = [](const Vector& d) { return Color{0.5 + 0.4 * d[1], 0.5 + 0.4 * d[0], 0.5}; };
    const QString file = folder.write("a.hdr", stripFile(64, linear));
    const EnvmapRun run(folder, compared(file, "lambert", {"--size", "4", "--samples", "4096"}));
    const auto answer = [](const Vector& d) { return Color{0.5 + 0.3 * d[1], 0.5 + 0.3 * d[0], 0.5}; };
    expectStrip(run.hdr("a-lambert-0.hdr"), answer, 0.005);
    EXPECT_LT(largest(run.levelNumbers("largest")), 0.003) << run.run().errors.constData();
}

TEST(EnvmapCompareTest, FewSamplesOfASpotShowAsAnError)
{
    // The numbers are no formality: 4 directions cannot find a small bright spot.
    const ModelFolder folder;
    const auto spot = [](const Vector& d) { return d[1] > 0.98 ? Color{50, 50, 50} : Color{0.1, 0.1, 0.1}; };
    const QString file = folder.write("a.hdr", stripFile(32, spot));
    const EnvmapRun run(folder, compared(file, "ggx", {"--size", "8", "--samples", "4"}));
    EXPECT_GT(largest(run.levelNumbers("mean error")), 0.05) << run.run().errors.constData();
}
