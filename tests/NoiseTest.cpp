// SPDX-License-Identifier: MIT
//
// The simplex noise of the embedded GLSL files against the same formula in double precision and whole numbers.

#include "GLSLPassTestTools.h"

#include <QDir>
#include <QDirIterator>
#include <QFile>

#include <gtest/gtest.h>

#include <cmath>
#include <random>

namespace Harrow::Vrk::Test
{
namespace
{

/// Corner by corner, with a permutation of whole numbers.
double noise(double x, double y)
{
    const double skew = (std::sqrt(3.0) - 1) / 2;
    const double unskew = (3 - std::sqrt(3.0)) / 6;
    const double i = std::floor(x + (x + y) * skew);
    const double j = std::floor(y + (x + y) * skew);
    const double x0 = x - i + (i + j) * unskew;
    const double y0 = y - j + (i + j) * unskew;
    const int corners[3][2] = {{0, 0}, {x0 > y0, x0 <= y0}, {1, 1}};

    const auto wrapped = [](double n) { return int(n - std::floor(n / 289) * 289); };
    const auto permuted = [](long n) { return ((34 * n + 1) * n) % 289; };
    double sum = 0;
    for (const auto& corner : corners)
    {
        const double dx = x0 - corner[0] + (corner[0] + corner[1]) * unskew;
        const double dy = y0 - corner[1] + (corner[0] + corner[1]) * unskew;
        const long number = permuted(permuted(wrapped(j) + corner[1]) + wrapped(i) + corner[0]);
        // A point of 41 on a line from -1 to 1, folded so that it goes around the square |gx| + |gy| = 1/2.
        const double along = 2.0 * double(number % 41) / 41 - 1;
        const double gy = std::abs(along) - 0.5;
        const double gx = along - std::floor(along + 0.5);
        const double scale = 1.79284291400159 - 0.85373472095314 * (gx * gx + gy * gy);
        const double radius = 0.5 - dx * dx - dy * dy;
        if (radius > 0)
            sum += radius * radius * radius * radius * scale * (gx * dx + gy * dy);
    }
    return 130 * sum;
}

constexpr int kSide = 100; // 10,000 points in a picture

class NoiseGL : public GLSLPassTest
{
protected:
    void SetUp() override
    {
        GLSLPassTest::SetUp();
        _program = linked(
            coveringVertexStage(),
            {QStringLiteral("#version 150\n#include \"noise2D.glslh\"\nuniform sampler2D u_Points;\nout vec4 o;\n"
                            "void main()\n{\n"
                            "    vec2 point = texelFetch(u_Points, ivec2(gl_FragCoord.xy), 0).rg;\n"
                            "    o = vec4(snoise(point));\n}\n"),
             embedded(QStringLiteral("src/noise2D.glslc"))});
        ASSERT_TRUE(_program);
    }

    void TearDown() override
    {
        _program.reset();
        GLSLPassTest::TearDown();
    }

    static FloatPicture points(unsigned seed, double reach)
    {
        FloatPicture result(kSide, kSide);
        std::mt19937 random(seed);
        std::uniform_real_distribution<double> coordinate(-reach, reach);
        for (int y = 0; y < kSide; ++y)
            for (int x = 0; x < kSide; ++x)
            {
                const double px = coordinate(random);
                const double py = coordinate(random);
                result.set(x, y, {px, py, 0, 0});
            }
        return result;
    }

    FloatPicture noiseAt(const FloatPicture& places)
    {
        return draw(*_program, places.width, places.height, {{"u_Points", texture(places)}});
    }

    void compare(const FloatPicture& places, double tolerance)
    {
        const FloatPicture found = noiseAt(places);
        double least = 1;
        double most = -1;
        for (int y = 0; y < places.height; ++y)
            for (int x = 0; x < places.width; ++x)
            {
                const double wanted = noise(double(places.at(x, y)[0]), double(places.at(x, y)[1]));
                ASSERT_NEAR(found.at(x, y)[0], wanted, tolerance) << places.at(x, y)[0] << ", " << places.at(x, y)[1];
                least = std::min(least, wanted);
                most = std::max(most, wanted);
            }
        EXPECT_GT(most, 0.85);
        EXPECT_LT(least, -0.85);
        EXPECT_LE(most, 1.0);
        EXPECT_GE(least, -1.0);
    }

private:
    std::unique_ptr<ShaderProgram> _program;
};

} // namespace

TEST(Noise, TheHeaderHasOneFunctionAndAGuard)
{
    const QString header = embedded(QStringLiteral("include/noise2D.glslh"));
    EXPECT_TRUE(header.contains(QStringLiteral("#ifndef VRK_NOISE2D_GLSLH\n#define VRK_NOISE2D_GLSLH\n")));
    EXPECT_TRUE(header.contains(QStringLiteral("\nfloat snoise(vec2 v);\n")));
    const QString unit = embedded(QStringLiteral("src/noise2D.glslc"));
    for (const char* const stage : {"vert", "geom", "frag"})
        EXPECT_VALID({}, {QLatin1String(stage), GLSLMacroProcessor::process(unit, nullptr)});
}

// It is there for applications: the library's own shaders have the include switched off.
TEST(Noise, NoOtherFileCallsIt)
{
    int switchedOff = 0;
    for (QDirIterator it(QStringLiteral(":/GLSL"), QDir::Files, QDirIterator::Subdirectories); it.hasNext();)
    {
        QFile file(it.next());
        if (file.fileName().contains(QStringLiteral("noise2D")))
            continue;
        ASSERT_TRUE(file.open(QIODevice::ReadOnly));
        const QString text = GLSLMacroProcessor::process(QString::fromUtf8(file.readAll()), nullptr);
        EXPECT_FALSE(text.contains(QStringLiteral("snoise"))) << file.fileName().toStdString();
        switchedOff += int(text.count(QStringLiteral("\n//#include \"noise2D.glslh\"\n")));
    }
    EXPECT_EQ(switchedOff, 3);
}

// The copy itself: the lattice's corners are 0, and the pattern comes again after 289 squares of it.
TEST(Noise, TheCopyHasTheLatticeOfTheFormula)
{
    const double unskew = (3 - std::sqrt(3.0)) / 6;
    for (int i = -4; i < 5; ++i)
        for (int j = -4; j < 5; ++j)
            EXPECT_NEAR(noise(i - (i + j) * unskew, j - (i + j) * unskew), 0, 1e-9);
    for (int i = 0; i < 50; ++i)
    {
        const double x = 0.37 * i;
        const double y = 5.1 - 0.21 * i;
        EXPECT_NEAR(noise(x, y), noise(x + 289 - 289 * unskew, y - 289 * unskew), 1e-9);
    }
}

TEST_F(NoiseGL, TenThousandPointsAgreeWithTheFormula)
{
    compare(points(1, 4.0), 1e-5);
}

// Single precision loses what the numbers before the point take: the slope is up to about 8 per unit.
TEST_F(NoiseGL, FarPointsAgreeAsFarAsTheirPrecisionGoes)
{
    compare(points(2, 50.0), 1e-4);
    compare(points(3, 900.0), 2e-3);
}

// Where the permutation wraps around, exact multiples of the period among its numbers.
TEST_F(NoiseGL, EverySquareOfTheLatticeHasItsGradients)
{
    constexpr int kPeriod = 289;
    const double unskew = (3 - std::sqrt(3.0)) / 6;
    FloatPicture places(kPeriod, kPeriod);
    for (int j = 0; j < kPeriod; ++j)
        for (int i = 0; i < kPeriod; ++i)
            places.set(i, j, {i - (i + j) * unskew + 0.19, j - (i + j) * unskew + 0.23, 0, 0});
    const FloatPicture found = noiseAt(places);
    int apart = 0;
    for (int j = 0; j < kPeriod; ++j)
        for (int i = 0; i < kPeriod; ++i)
            apart += std::abs(found.at(i, j)[0] - noise(double(places.at(i, j)[0]), double(places.at(i, j)[1]))) > 5e-4;
    EXPECT_EQ(apart, 0);
}

} // namespace Harrow::Vrk::Test
