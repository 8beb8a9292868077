// SPDX-License-Identifier: MIT
//
// SMAA on a driver: each pass against a copy of the algorithm in double precision, on edges at all angles; and what it
// leaves alone.

#include "SMAAStages.h"

#include "GLUtilities.h"

#include <QVector4D>

#include <gtest/gtest.h>

#include <algorithm>
#include <iterator>

namespace Harrow::Vrk::Test
{
namespace
{

constexpr int kSize = 64; // a power of two, so that places between pixels are exact

class SMAAGL : public GLSLPassTest
{
protected:
    void SetUp() override
    {
        GLSLPassTest::SetUp();
        ASSERT_TRUE(SMAATables::generated().isComplete());
        // As floats, so that the filter between their texels has no steps of its own.
        _area = texture(SMAATables::generated().areaPicture());
        _search = texture(SMAATables::generated().searchPicture());
    }

    static std::unique_ptr<ShaderProgram> linkedStages(const Stages& stages)
    {
        return linked(stages.vertex, {stages.fragment});
    }

    FloatPicture pass(ShaderProgram& program, int width, int height, const Inputs& inputs, GLenum format = GL_RGBA32F)
    {
        program.bind();
        program.setUniform(QStringLiteral("u_Metrics"),
                           QVector4D(1.0f / float(width), 1.0f / float(height), float(width), float(height)));
        return draw(program, width, height, inputs, format);
    }

    FloatPicture weights(ShaderProgram& program, const FloatPicture& edges, const QVector4D& subsample = {})
    {
        program.bind();
        program.setUniform(QStringLiteral("u_Subsample"), subsample);
        return pass(program, edges.width, edges.height,
                    {{"u_Edges", texture(edges)}, {"u_Area", _area}, {"u_Search", _search}});
    }

    GLuint _area = 0;
    GLuint _search = 0;
};

constexpr Color kLight = {0.75, 0.875, 0.25, 0.5};
constexpr Color kDark = {0.25, 0.125, 0.5, 1.0};

/// The passes of one form of the header.
struct Chain
{
    std::unique_ptr<ShaderProgram> edges, weights, blend;
};

} // namespace

TEST_F(SMAAGL, AllPresetsAgreeWithTheCopyOnEdgesAtAllAngles)
{
    for (const SMAASettings& settings : kSMAAPresets)
    {
        const Form form = {3, QLatin1String(settings.preset)};
        const Chain chain = {linkedStages(edgeStages(form, SMAAEdges::Luma)), linkedStages(weightStages(form)),
                             linkedStages(blendStages(form))};
        ASSERT_TRUE(chain.edges && chain.weights && chain.blend);
        const PlainSMAA copy(settings);
        int touched = 0;
        const auto compare = [&](const FloatPicture& picture, const std::string& what)
        {
            const GLuint color = texture(picture);
            const FloatPicture edges = pass(*chain.edges, kSize, kSize, {{"u_Color", color}});
            EXPECT_PICTURES_NEAR(edges, copy.edges(picture, SMAAEdges::Luma), 0.0,
                                 settings.preset << ", edges of " << what);
            const FloatPicture blending = weights(*chain.weights, edges);
            EXPECT_PICTURES_NEAR(blending, copy.weights(edges), 2e-5, settings.preset << ", weights of " << what);
            const FloatPicture result =
                pass(*chain.blend, kSize, kSize, {{"u_Color", color}, {"u_Weights", texture(blending)}});
            EXPECT_PICTURES_NEAR(result, PlainSMAA::blended(picture, blending), 2e-5,
                                 settings.preset << ", result of " << what);
            touched += difference(result, picture).greatest > 0.1;
        };
        for (int degrees = 0; degrees < 360; degrees += 5)
            compare(edgeAt(degrees, kSize, kLight, kDark), std::to_string(degrees) + " degrees");
        for (int degrees = 0; degrees < 180; degrees += 9)
            compare(lineAt(degrees, 1.0 + degrees % 4, kSize, kDark, kLight), "line of " + std::to_string(degrees));
        for (const unsigned seed : {1u, 2u, 3u, 4u, 5u})
            compare(patches(seed, kSize, kLight, kDark), "patches " + std::to_string(seed));
        // Upright edges have no steps to smooth.
        EXPECT_GE(touched, 72 + 20 + 5 - 8) << settings.preset;
    }
}

// Those of the presets are not all: the longest and the shortest searches, and corners of all kinds.
TEST_F(SMAAGL, SettingsOfTheIncluderCount)
{
    for (const SMAASettings& settings :
         {SMAASettings{"", 0.25, 1, 1, 0.0}, SMAASettings{"", 0.05, 3, 3, 100.0}, SMAASettings{"", 0.2, 112, 20, 60.0}})
    {
        const QString define = QStringLiteral("SMAA_THRESHOLD %1\n#define SMAA_MAX_SEARCH_STEPS %2\n"
                                              "#define SMAA_MAX_SEARCH_STEPS_DIAG %3\n#define SMAA_CORNER_ROUNDING %4")
                                   .arg(settings.threshold)
                                   .arg(settings.steps)
                                   .arg(settings.diagonalSteps)
                                   .arg(*settings.cornerRounding);
        const auto edgePass = linkedStages(edgeStages({3, define}, SMAAEdges::Color));
        const auto weightPass = linkedStages(weightStages({3, define}));
        ASSERT_TRUE(edgePass && weightPass);
        const PlainSMAA copy(settings);
        for (const unsigned seed : {61u, 62u, 63u})
        {
            const FloatPicture picture =
                seed == 63 ? edgeAt(42, kSize, kLight, kDark) : patches(seed, kSize, kLight, kDark);
            const FloatPicture edges = pass(*edgePass, kSize, kSize, {{"u_Color", texture(picture)}});
            EXPECT_PICTURES_NEAR(edges, copy.edges(picture, SMAAEdges::Color), 0.0, seed);
            EXPECT_PICTURES_NEAR(weights(*weightPass, edges), copy.weights(edges), 2e-5, settings.steps << " " << seed);
        }
    }
}

// Columns of grey 0, 1/4, 3/4, 3/4, 1: contrasts of 1/4, 1/2, 0 and 1/4.
TEST_F(SMAAGL, ContrastsThatJustReachTheirLimitsAreEdges)
{
    constexpr double kGreys[] = {0, 0, 0.25, 0.75, 0.75, 1, 1, 1};
    FloatPicture picture(8, 8);
    for (int y = 0; y < 8; ++y)
        for (int x = 0; x < 8; ++x)
            picture.set(x, y, {kGreys[x], kGreys[x], kGreys[x], 1});
    const struct
    {
        const char* settings;
        bool isSmallEdge, isGreatEdge, isLastEdge; // left of columns 2, 3 and 5
    } rows[] = {{"SMAA_THRESHOLD 0.25", true, true, true},
                {"SMAA_THRESHOLD 0.251", false, true, false},
                {"SMAA_THRESHOLD 0.5", false, true, false},
                {"SMAA_THRESHOLD 0.501", false, false, false},
                // The great edge is beside the small one, and two pixels away from the last one.
                {"SMAA_LOCAL_CONTRAST_ADAPTATION_FACTOR 2.0", true, true, true},
                {"SMAA_LOCAL_CONTRAST_ADAPTATION_FACTOR 1.99", false, true, true}};
    for (const auto& row : rows)
    {
        const auto program = linkedStages(edgeStages({3, QLatin1String(row.settings)}, SMAAEdges::Color));
        ASSERT_TRUE(program);
        const FloatPicture found = pass(*program, 8, 8, {{"u_Color", texture(picture)}});
        for (int y = 0; y < 8; ++y)
            for (int x = 0; x < 8; ++x)
            {
                const bool isEdge =
                    (x == 2 && row.isSmallEdge) || (x == 3 && row.isGreatEdge) || (x == 5 && row.isLastEdge);
                EXPECT_EQ(found.pixel(x, y).r, isEdge) << row.settings << ": " << x << ", " << y;
                EXPECT_EQ(found.pixel(x, y).g, 0) << row.settings << ": " << x << ", " << y;
            }
    }
}

TEST_F(SMAAGL, TheFormForNewerDriversGivesTheSame)
{
    if (!openGlVersionSupported(4, 0))
    {
        EXPECT_TRUE(isFloor());
        return;
    }
    const SMAASettings& settings = kSMAAPresets[3];
    const PlainSMAA copy(settings);
    const Form form = {4, QLatin1String(settings.preset)};
    const auto edgePass = linkedStages(edgeStages(form, SMAAEdges::Luma));
    const auto weightPass = linkedStages(weightStages(form));
    ASSERT_TRUE(edgePass && weightPass);
    for (const unsigned seed : {11u, 12u, 13u})
    {
        const FloatPicture picture = patches(seed, kSize, kLight, kDark);
        const FloatPicture edges = pass(*edgePass, kSize, kSize, {{"u_Color", texture(picture)}});
        EXPECT_PICTURES_NEAR(edges, copy.edges(picture, SMAAEdges::Luma), 0.0, seed);
        EXPECT_PICTURES_NEAR(weights(*weightPass, edges), copy.weights(edges), 2e-5, seed);
    }
}

// Edges as no picture has them, so that all that may lie around an end comes up.
TEST_F(SMAAGL, AnyEdgesAtAllGiveTheWeightsOfTheCopy)
{
    for (const SMAASettings& settings : kSMAAPresets)
    {
        const auto program = linkedStages(weightStages({3, QLatin1String(settings.preset)}));
        ASSERT_TRUE(program);
        const PlainSMAA copy(settings);
        for (const int percent : {30, 50, 70, 85, 95})
        {
            std::mt19937 random{unsigned(percent)};
            FloatPicture edges(kSize, kSize);
            for (int y = 0; y < kSize; ++y)
                for (int x = 0; x < kSize; ++x)
                {
                    // Half of the pictures have few edges that cross.
                    const bool left = int(random() % 100) < (percent % 2 ? 100 - percent : percent);
                    const bool top = int(random() % 100) < percent;
                    edges.set(x, y, {double(left), double(top), 0, 0});
                }
            EXPECT_PICTURES_NEAR(weights(*program, edges), copy.weights(edges), 2e-5,
                                 settings.preset << ", " << percent << " percent");
        }
    }
}

// Noise, where contrasts meet the threshold and each other in all ways.
TEST_F(SMAAGL, EachKindOfEdgeDetectionAgreesWithTheCopyOnManyColors)
{
    const double ranges[] = {0.12, 0.25, 0.5};
    for (const Form& form : allForms())
    {
        if (form.reprojection || (form.glsl == 4 && !openGlVersionSupported(4, 0)))
            continue;
        const SMAASettings& settings =
            *std::find_if(std::begin(kSMAAPresets), std::end(kSMAAPresets),
                          [&](const SMAASettings& s) { return form.preset == QLatin1String(s.preset); });
        for (const SMAAEdges kind : {SMAAEdges::Luma, SMAAEdges::Color, SMAAEdges::Depth})
        {
            const auto program = linkedStages(edgeStages(form, kind));
            ASSERT_TRUE(program);
            double count = 0;
            for (const double range : ranges)
            {
                std::mt19937 random(unsigned(17 + int(kind)));
                std::uniform_real_distribution<double> value(0, kind == SMAAEdges::Depth ? 0.1 * range : range);
                FloatPicture picture(kSize, kSize);
                FloatPicture other(kSize, kSize);
                for (int y = 0; y < kSize; ++y)
                    for (int x = 0; x < kSize; ++x)
                    {
                        const double r = value(random), g = value(random), b = value(random);
                        picture.set(x, y, {r, g, b, 1});
                        other.set(x, y, {0.02 * ((x / 3 + y / 5) % 2), 0, 0, 0});
                    }
                const bool isPredicated = form.predication && kind != SMAAEdges::Depth;
                Inputs inputs = {{"u_Color", texture(picture)}};
                if (isPredicated)
                    inputs.push_back({"u_Other", texture(other)});
                const FloatPicture expected = PlainSMAA(settings).edges(picture, kind, isPredicated ? &other : nullptr);
                EXPECT_PICTURES_NEAR(pass(*program, kSize, kSize, inputs), expected, 0.0,
                                     functionOf(kind) << ", " << settings.preset << ", " << form.glsl << ", " << range);
                for (const float v : expected.values)
                    count += v;
            }
            EXPECT_GT(count, 500);
            EXPECT_LT(count, 23000);
        }
    }
}

TEST_F(SMAAGL, ShiftedPicturesHaveTheirOwnPartOfTheAreas)
{
    const SMAASettings& settings = kSMAAPresets[2];
    const auto program = linkedStages(weightStages({3, QLatin1String(settings.preset)}));
    ASSERT_TRUE(program);
    const PlainSMAA copy(settings);
    const FloatPicture edges = copy.edges(patches(21, kSize, kLight, kDark), SMAAEdges::Luma);
    const FloatPicture plain = weights(*program, edges);
    for (const QVector4D& indices :
         {QVector4D(1, 1, 1, 0), QVector4D(2, 2, 2, 0), QVector4D(5, 3, 1, 3), QVector4D(4, 6, 2, 4)})
    {
        const FloatPicture found = weights(*program, edges, indices);
        EXPECT_PICTURES_NEAR(found, copy.weights(edges, {indices.x(), indices.y(), indices.z(), indices.w()}), 2e-5,
                             indices.x() << ", " << indices.y());
        EXPECT_GT(difference(found, plain).greatest, 0.05);
    }
}

TEST_F(SMAAGL, ReprojectionCarriesTheSpeedInAlpha)
{
    const Form form = {3, QStringLiteral("SMAA_PRESET_HIGH"), false, true};
    const auto program = linkedStages(blendStages(form));
    ASSERT_TRUE(program);
    const PlainSMAA copy(kSMAAPresets[2]);
    const FloatPicture picture = patches(31, kSize, kLight, kDark);
    const FloatPicture blending = copy.weights(copy.edges(picture, SMAAEdges::Luma));
    FloatPicture velocities(kSize, kSize);
    for (int y = 0; y < kSize; ++y)
        for (int x = 0; x < kSize; ++x)
            velocities.set(x, y, {0.002 * (x % 7), -0.001 * (y % 11), 0, 0});
    const FloatPicture found =
        pass(*program, kSize, kSize,
             {{"u_Color", texture(picture)}, {"u_Weights", texture(blending)}, {"u_Velocity", texture(velocities)}});
    EXPECT_PICTURES_NEAR(found, PlainSMAA::blended(picture, blending, &velocities), 2e-5, "blended");
}

TEST_F(SMAAGL, TheResolveIsTheMeanOfTwoFrames)
{
    const auto program = linkedStages(resolveStages({}));
    ASSERT_TRUE(program);
    const FloatPicture current = patches(41, kSize, kLight, kDark);
    const FloatPicture previous = patches(42, kSize, kLight, kDark);
    FloatPicture expected(kSize, kSize);
    for (int y = 0; y < kSize; ++y)
        for (int x = 0; x < kSize; ++x)
            expected.set(x, y, 0.5 * current.pixel(x, y) + 0.5 * previous.pixel(x, y));
    const FloatPicture found =
        draw(*program, kSize, kSize, {{"u_Current", texture(current)}, {"u_Previous", texture(previous)}});
    EXPECT_PICTURES_NEAR(found, expected, 1e-6, "resolved");
}

TEST_F(SMAAGL, TheResolveWithReprojectionReadsWhereThePixelCameFrom)
{
    const auto program = linkedStages(resolveStages({3, QStringLiteral("SMAA_PRESET_HIGH"), false, true}));
    ASSERT_TRUE(program);
    FloatPicture current = patches(51, kSize, kLight, kDark);
    FloatPicture previous = patches(52, kSize, kLight, kDark);
    FloatPicture velocities(kSize, kSize);
    FloatPicture expected(kSize, kSize);
    for (int y = 0; y < kSize; ++y)
        for (int x = 0; x < kSize; ++x)
        {
            current.at(x, y)[3] = 0.3f + 0.002f * float(x % 5);
            previous.at(x, y)[3] = 0.3f + 0.002f * float(y % 13);
        }
    int kept = 0, mixed = 0;
    for (int y = 0; y < kSize; ++y)
        for (int x = 0; x < kSize; ++x)
        {
            const int dx = x % 4 - 1, dy = y % 3 - 1; // pixels
            velocities.set(x, y, {double(dx) / kSize, double(dy) / kSize, 0, 0});
            const Color now = current.pixel(x, y);
            const Color before = previous.pixel(x - dx, y - dy);
            const double differing = std::abs(now.a * now.a - before.a * before.a) / 5;
            const double weight = 0.5 * std::clamp(1 - 30 * std::sqrt(differing), 0.0, 1.0);
            expected.set(x, y, (1 - weight) * now + weight * before);
            kept += weight < 0.01;
            mixed += weight > 0.1;
        }
    EXPECT_GT(kept, 100);
    EXPECT_GT(mixed, 100);
    const FloatPicture found =
        draw(*program, kSize, kSize,
             {{"u_Current", texture(current)}, {"u_Previous", texture(previous)}, {"u_Velocity", texture(velocities)}});
    // The root makes much of the last digits of alpha where they are nearly equal.
    EXPECT_PICTURES_NEAR(found, expected, 5e-3, "resolved");
}

// Through bytes, as an application has its targets, and in sizes whose places between pixels are not exact.
TEST_F(SMAAGL, ConstantAreasStayUntouchedToTheBit)
{
    const GLuint area = texture(SMAATables::generated().areaPicture(), GL_RG8);
    const GLuint search = texture(SMAATables::generated().searchPicture(), GL_R8);
    std::mt19937 random(6);
    const auto byte = [&random] { return double(random() % 256) / 255; };
    for (const SMAASettings& settings : kSMAAPresets)
    {
        const Form form = {3, QLatin1String(settings.preset)};
        const Chain chain = {linkedStages(edgeStages(form, SMAAEdges::Color)), linkedStages(weightStages(form)),
                             linkedStages(blendStages(form))};
        ASSERT_TRUE(chain.edges && chain.weights && chain.blend);
        for (int i = 0; i < 8; ++i)
        {
            const Color inside = {byte(), byte(), byte(), byte()};
            const Color outside = {byte(), byte(), byte(), byte()};
            const int size = i % 2 ? kSize : 51 + 3 * i;
            const FloatPicture picture =
                i < 2 ? edgeAt(0, size, inside, inside) : patches(unsigned(i), size, inside, outside);
            const GLuint color = texture(picture, GL_RGBA8);
            const FloatPicture edges = pass(*chain.edges, size, size, {{"u_Color", color}}, GL_RG8);
            const FloatPicture blending =
                pass(*chain.weights, size, size,
                     {{"u_Edges", texture(edges, GL_RG8)}, {"u_Area", area}, {"u_Search", search}}, GL_RGBA8);
            const FloatPicture found = pass(*chain.blend, size, size,
                                            {{"u_Color", color}, {"u_Weights", texture(blending, GL_RGBA8)}}, GL_RGBA8);
            EXPECT_GT(countConstantAndUntouched(found, picture, 255), 100) << settings.preset << " " << i;
        }
    }
}

// Through bytes the passes give the same as through floats, but for the steps of the bytes.
TEST_F(SMAAGL, BytesAreEnoughForAllTargets)
{
    const GLuint area = texture(SMAATables::generated().areaPicture(), GL_RG8);
    const GLuint search = texture(SMAATables::generated().searchPicture(), GL_R8);
    const SMAASettings& settings = kSMAAPresets[3];
    const Form form = {3, QLatin1String(settings.preset)};
    const auto edgePass = linkedStages(edgeStages(form, SMAAEdges::Luma));
    const auto weightPass = linkedStages(weightStages(form));
    ASSERT_TRUE(edgePass && weightPass);
    const PlainSMAA copy(settings);
    for (int degrees = 2; degrees < 180; degrees += 11)
    {
        const FloatPicture picture = edgeAt(degrees, kSize, kLight, kDark);
        const FloatPicture edges = pass(*edgePass, kSize, kSize, {{"u_Color", texture(picture, GL_RGBA8)}}, GL_RG8);
        FloatPicture expected = copy.edges(picture, SMAAEdges::Luma);
        for (int i = 3; i < kSize * kSize * 4; i += 4) // what a target of two channels reads back as
            expected.values[std::size_t(i)] = 1;
        EXPECT_PICTURES_NEAR(edges, expected, 0.0, degrees);
        const FloatPicture blending =
            pass(*weightPass, kSize, kSize,
                 {{"u_Edges", texture(edges, GL_RG8)}, {"u_Area", area}, {"u_Search", search}}, GL_RGBA8);
        EXPECT_PICTURES_NEAR(blending, copy.weights(edges), 2.5 / 255, degrees);
    }
}

TEST_F(SMAAGL, TwoSamplesAreSplitIntoTwoPictures)
{
    const auto program = linkedStages(separateStages({}));
    ASSERT_TRUE(program);
    constexpr int kSide = 8;
    GLuint color = 0;
    GLuint framebuffer = 0;
    glGenTextures(1, &color);
    glBindTexture(GL_TEXTURE_2D_MULTISAMPLE, color);
    glTexImage2DMultisample(GL_TEXTURE_2D_MULTISAMPLE, 2, GL_RGBA8, kSide, kSide, GL_TRUE);
    glGenFramebuffers(1, &framebuffer);
    glBindFramebuffer(GL_FRAMEBUFFER, framebuffer);
    glFramebufferTexture2D(GL_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, GL_TEXTURE_2D_MULTISAMPLE, color, 0);
    ASSERT_EQ(glCheckFramebufferStatus(GL_FRAMEBUFFER), GLenum(GL_FRAMEBUFFER_COMPLETE));
    glEnable(GL_SAMPLE_MASK);
    const float colors[2][4] = {{1, 0, 0, 1}, {0, 1, 0, 0}};
    for (int i = 0; i < 2; ++i)
    {
        glSampleMaski(0, 1u << i);
        const auto fill =
            linked(coveringVertexStage(), {QStringLiteral("#version 150\nout vec4 o;\nvoid main()\n{\n    o = "
                                                          "vec4(%1, %2, %3, %4);\n}\n")
                                               .arg(double(colors[i][0]))
                                               .arg(double(colors[i][1]))
                                               .arg(double(colors[i][2]))
                                               .arg(double(colors[i][3]))});
        ASSERT_TRUE(fill);
        fill->bind();
        glViewport(0, 0, kSide, kSide);
        glDrawArrays(GL_TRIANGLES, 0, 3);
        fill->unbind();
    }
    glDisable(GL_SAMPLE_MASK);
    glSampleMaski(0, ~0u);
    glDeleteFramebuffers(1, &framebuffer);

    const std::vector<FloatPicture> found = drawAll(*program, kSide, kSide, {}, 2);
    for (int i = 0; i < 2; ++i)
        for (int p = 0; p < kSide * kSide * 4; ++p)
            ASSERT_EQ(found[std::size_t(i)].values[std::size_t(p)], colors[i][p % 4]) << i << " " << p;
    glBindTexture(GL_TEXTURE_2D_MULTISAMPLE, 0);
    glDeleteTextures(1, &color);
}

} // namespace Harrow::Vrk::Test
