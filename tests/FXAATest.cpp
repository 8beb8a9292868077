// SPDX-License-Identifier: MIT
//
// FXAA on a driver against a copy of the algorithm in double precision: all presets, on edges at all angles; and what
// it leaves alone.

#include "GLSLPassTestTools.h"

#include <QVector2D>
#include <QVector3D>

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <vector>

namespace Harrow::Vrk::Test
{
namespace
{

const QString kHeader = QStringLiteral("include/FXAA.glslh");
const QString kUnit = QStringLiteral("src/FXAA.glslc");
constexpr int kSize = 64; // a power of two, so that places between pixels are exact

struct Preset
{
    int number;
    std::vector<double> steps; // pixels
};

const Preset kPresets[] = {
    {10, {1.5, 3, 12}},
    {11, {1, 1.5, 3, 12}},
    {12, {1, 1.5, 2, 4, 12}},
    {13, {1, 1.5, 2, 2, 4, 12}},
    {14, {1, 1.5, 2, 2, 2, 4, 12}},
    {15, {1, 1.5, 2, 2, 2, 2, 4, 12}},
    {20, {1.5, 2, 8}},
    {21, {1, 1.5, 2, 8}},
    {22, {1, 1.5, 2, 2, 8}},
    {23, {1, 1.5, 2, 2, 2, 8}},
    {24, {1, 1.5, 2, 2, 2, 3, 8}},
    {25, {1, 1.5, 2, 2, 2, 2, 4, 8}},
    {26, {1, 1.5, 2, 2, 2, 2, 2, 4, 8}},
    {27, {1, 1.5, 2, 2, 2, 2, 2, 2, 4, 8}},
    {28, {1, 1.5, 2, 2, 2, 2, 2, 2, 2, 4, 8}},
    {29, {1, 1.5, 2, 2, 2, 2, 2, 2, 2, 2, 4, 8}},
    {39, {1, 1, 1, 1, 1, 1.5, 2, 2, 2, 2, 4, 8}},
};

struct Settings
{
    double subpix = 0.75;
    double edgeThreshold = 0.166;
    double edgeThresholdMin = 0.0833;
};

// ---- the copy ------------------------------------------------------------------------------------------------------

/// The algorithm on a picture whose luma is one of its channels. Places are in pixels.
class PlainFXAA
{
public:
    PlainFXAA(const FloatPicture& picture, const Preset& preset, const Settings& settings, bool isLumaAlpha = false,
              bool isAlphaKept = false)
        : _picture(picture), _preset(preset), _settings(settings), _isLumaAlpha(isLumaAlpha), _isAlphaKept(isAlphaKept)
    {
    }

    FloatPicture result() const
    {
        FloatPicture out(_picture.width, _picture.height);
        for (int y = 0; y < out.height; ++y)
            for (int x = 0; x < out.width; ++x)
                out.set(x, y, isFlat(x, y) ? _picture.pixel(x, y) : smoothed(x, y));
        return out;
    }

    bool isFlat(int x, int y) const
    {
        const auto [least, most] =
            std::minmax({luma(x, y), luma(x - 1, y), luma(x + 1, y), luma(x, y - 1), luma(x, y + 1)});
        return most - least < std::max(_settings.edgeThresholdMin, most * _settings.edgeThreshold);
    }

private:
    double lumaOf(const Color& color) const
    {
        return _isLumaAlpha ? color.a : color.g;
    }
    double luma(int x, int y) const
    {
        return lumaOf(_picture.pixel(x, y));
    }

    Color smoothed(int x, int y) const
    {
        const double m = luma(x, y);
        double l[3][3];
        for (int j = 0; j < 3; ++j)
            for (int i = 0; i < 3; ++i)
                l[j][i] = luma(x + i - 1, y + j - 1);

        double rows = 0;
        double columns = 0;
        for (int i = 0; i < 3; ++i)
        {
            const double weight = i == 1 ? 2 : 1;
            rows += weight * std::abs(l[0][i] - 2 * l[1][i] + l[2][i]);
            columns += weight * std::abs(l[i][0] - 2 * l[i][1] + l[i][2]);
        }
        const bool isHorizontal = rows >= columns;

        const double first = isHorizontal ? l[0][1] : l[1][0];
        const double second = isHorizontal ? l[2][1] : l[1][2];
        const bool isFirst = std::abs(first - m) >= std::abs(second - m);
        const double side = isFirst ? -1 : 1;
        const double mean = 0.5 * (m + (isFirst ? first : second));
        const double enough = 0.25 * std::max(std::abs(first - m), std::abs(second - m));

        const double cx = x + 0.5;
        const double cy = y + 0.5;
        const auto between = [&](double way) // the luma on the edge, that many pixels along
        {
            const double px = isHorizontal ? cx + way : cx + 0.5 * side;
            const double py = isHorizontal ? cy + 0.5 * side : cy + way;
            return lumaOf(_picture.sample(px, py)) - mean;
        };

        // Both ends go on together, but each by itself.
        struct End
        {
            double way;
            double level = 0;
            bool isFound = false;
        } ends[2] = {{_preset.steps[0]}, {_preset.steps[0]}};
        for (std::size_t step = 1; step < _preset.steps.size(); ++step)
            for (int i = 0; i < 2; ++i)
            {
                if (ends[i].isFound)
                    continue;
                ends[i].level = between(i == 0 ? -ends[i].way : ends[i].way);
                ends[i].isFound = std::abs(ends[i].level) >= enough;
                if (!ends[i].isFound)
                    ends[i].way += _preset.steps[step];
            }
        const End& near = ends[0].way < ends[1].way ? ends[0] : ends[1];
        double shift = 0;
        if ((near.level < 0) != (m - mean < 0))
            shift = 0.5 - near.way / (ends[0].way + ends[1].way);

        // Low-pass of all nine.
        const double direct = l[0][1] + l[1][0] + l[1][2] + l[2][1];
        const double diagonal = l[0][0] + l[0][2] + l[2][0] + l[2][2];
        const auto [least, most] = std::minmax({m, l[0][1], l[1][0], l[1][2], l[2][1]});
        const double part = std::clamp(std::abs((2 * direct + diagonal) / 12 - m) / (most - least), 0.0, 1.0);
        const double soft = part * part * (3 - 2 * part);
        shift = std::max(shift, soft * soft * _settings.subpix);

        Color color = isHorizontal ? _picture.sample(cx, cy + side * shift) : _picture.sample(cx + side * shift, cy);
        if (!_isAlphaKept)
            color.a = m;
        return color;
    }

    const FloatPicture& _picture;
    const Preset& _preset;
    Settings _settings;
    bool _isLumaAlpha;
    bool _isAlphaKept;
};

// ---- the passes ----------------------------------------------------------------------------------------------------

/// The expanded text with other settings than those that are in the header.
QString changed(const QString& text, int preset, bool isGreen = true, bool isDiscarding = false,
                bool isGathering = true)
{
    QString result = GLSLMacroProcessor::process(text, nullptr);
    result.replace(QStringLiteral("#define FXAA_QUALITY__PRESET 10\n"),
                   QStringLiteral("#define FXAA_QUALITY__PRESET %1\n").arg(preset));
    if (!isGreen)
        result.replace(QStringLiteral("#define FXAA_GREEN_AS_LUMA 1\n"),
                       QStringLiteral("#define FXAA_GREEN_AS_LUMA 0\n"));
    QString more;
    if (isDiscarding)
        more += QStringLiteral("#define FXAA_DISCARD 1\n");
    if (!isGathering)
        more += QStringLiteral("#define FXAA_GATHER4_ALPHA 0\n");
    return result.insert(result.indexOf(QLatin1Char('\n')) + 1, more);
}

const QString kCaller = QStringLiteral(
    "#version 150\n#include \"FXAA.glslh\"\n"
    "in vec2 vo_TexCoord;\nuniform sampler2D u_Picture;\nuniform vec2 u_Pixel;\nuniform vec3 u_Settings;\nout vec4 o;\n"
    "void main()\n{\n"
    "    o = FxaaPixelShader(vo_TexCoord, vec4(0.0), u_Picture, u_Picture, u_Picture, u_Pixel, vec4(0.0), vec4(0.0),\n"
    "                        vec4(0.0), u_Settings.x, u_Settings.y, u_Settings.z, 0.0, 0.0, 0.0, vec4(0.0));\n}\n");

class FXAAGL : public GLSLPassTest
{
protected:
    static std::unique_ptr<ShaderProgram> fxaa(int preset = 10, bool isGreen = true, bool isDiscarding = false,
                                               bool isGathering = true)
    {
        return linked(coveringVertexStage(), {changed(kCaller, preset, isGreen, isDiscarding, isGathering),
                                              changed(embedded(kUnit), preset, isGreen, isDiscarding, isGathering)});
    }

    FloatPicture pass(ShaderProgram& program, const FloatPicture& picture, const Settings& settings = {},
                      GLenum format = GL_RGBA32F)
    {
        program.bind();
        program.setUniform(QStringLiteral("u_Pixel"),
                           QVector2D(1.0f / float(picture.width), 1.0f / float(picture.height)));
        program.setUniform(
            QStringLiteral("u_Settings"),
            QVector3D(float(settings.subpix), float(settings.edgeThreshold), float(settings.edgeThresholdMin)));
        return draw(program, picture.width, picture.height, {{"u_Picture", texture(picture, format)}}, format);
    }
};

// Sums of these lumas are exact, and so are the equalities in the algorithm, on both sides.
constexpr Color kLight = {0.75, 0.875, 0.25, 0.5};
constexpr Color kDark = {0.25, 0.125, 0.5, 1.0};

} // namespace

// ---- by the validator ----------------------------------------------------------------------------------------------

TEST(FXAA, TheFirstLinesOfTheHeaderAreTheConfiguration)
{
    QStringList directives;
    for (const QString& line : embedded(kHeader).split(QLatin1Char('\n')))
        if (line.startsWith(QLatin1Char('#')))
            directives.append(line);
    EXPECT_EQ(
        directives.mid(2, 6),
        QStringList({QStringLiteral("#define FXAA_PC 1"), QStringLiteral("#define FXAA_GLSL_130 1"),
                     QStringLiteral("#define FXAA_GREEN_AS_LUMA 1"), QStringLiteral("#define FXAA_QUALITY__PRESET 10"),
                     QStringLiteral("#define FXAA_EARLY_EXIT 1"),
                     QStringLiteral("#extension GL_ARB_gpu_shader5 : enable")}));
}

TEST(FXAA, AllPresetsCompileAndLinkWithTheirCallers)
{
    for (const Preset& preset : kPresets)
        for (const int form : {0, 1, 2, 3})
        {
            const bool isGreen = form != 1;
            const bool isDiscarding = form == 2;
            const bool isGathering = form != 3;
            SCOPED_TRACE(preset.number * 10 + form);
            EXPECT_VALID(
                {QStringLiteral("-l")},
                {QStringLiteral("frag"), changed(embedded(kUnit), preset.number, isGreen, isDiscarding, isGathering)},
                {QStringLiteral("frag"), changed(kCaller, preset.number, isGreen, isDiscarding, isGathering)});
        }
}

TEST(FXAA, OtherPresetsAreRefused)
{
    for (const int preset : {0, 9, 16, 19, 30, 38, 40})
    {
        const Verdict verdict = validate({}, {{QStringLiteral("frag"), changed(embedded(kUnit), preset)}});
        EXPECT_TRUE(verdict.ran);
        EXPECT_FALSE(verdict.good()) << preset;
    }
}

// ---- by a driver ---------------------------------------------------------------------------------------------------

TEST_F(FXAAGL, PresetTenAgreesWithTheCopyOnEdgesAtAllAngles)
{
    const auto program = fxaa();
    ASSERT_TRUE(program);
    int touched = 0;
    for (int degrees = 0; degrees < 360; degrees += 3)
    {
        const FloatPicture picture = edgeAt(degrees, kSize, kLight, kDark);
        const FloatPicture expected = PlainFXAA(picture, kPresets[0], {}).result();
        EXPECT_PICTURES_NEAR(pass(*program, picture), expected, 2e-6, degrees << " degrees");
        touched += difference(picture, expected).greatest > 0.1;
    }
    EXPECT_EQ(touched, 120);
}

TEST_F(FXAAGL, AllPresetsAgreeWithTheCopy)
{
    for (const Preset& preset : kPresets)
    {
        const auto program = fxaa(preset.number);
        ASSERT_TRUE(program);
        for (const int degrees : {4, 17, 45, 73, 88, 133, 170})
        {
            const FloatPicture edge = edgeAt(degrees, kSize, kLight, kDark);
            EXPECT_PICTURES_NEAR(pass(*program, edge), PlainFXAA(edge, preset, {}).result(), 2e-6,
                                 "preset " << preset.number << ", " << degrees << " degrees");
            const FloatPicture line = lineAt(degrees, 1.5, kSize, kDark, kLight);
            EXPECT_PICTURES_NEAR(pass(*program, line), PlainFXAA(line, preset, {}).result(), 2e-6,
                                 "preset " << preset.number << ", line of " << degrees << " degrees");
        }
        const FloatPicture mixed = patches(unsigned(preset.number), kSize, kLight, kDark);
        EXPECT_PICTURES_NEAR(pass(*program, mixed), PlainFXAA(mixed, preset, {}).result(), 2e-6,
                             "preset " << preset.number << ", patches");
    }
}

// Lumas in steps of a power of two, in which all sums are exact.
TEST_F(FXAAGL, ManyColorsAgreeWithTheCopy)
{
    for (const int preset : {0, 8, 16})
    {
        const auto program = fxaa(kPresets[preset].number);
        ASSERT_TRUE(program);
        for (const unsigned colors : {3u, 5u, 33u})
        {
            std::mt19937 random(colors);
            FloatPicture picture(kSize, kSize);
            for (int y = 0; y < kSize; ++y)
                for (int x = 0; x < kSize; ++x)
                {
                    const double luma = double(random() % colors) / 64 + 0.5 * ((x / 5 + y / 3) % 2);
                    picture.set(x, y, {0.25, luma, 1 - luma, 0.5});
                }
            EXPECT_PICTURES_NEAR(pass(*program, picture), PlainFXAA(picture, kPresets[preset], {}).result(), 2e-6,
                                 kPresets[preset].number << ", " << colors << " colors");
        }
    }
}

TEST_F(FXAAGL, TheSettingsCount)
{
    const auto program = fxaa();
    ASSERT_TRUE(program);
    const Settings all[] = {{0, 0.166, 0.0833}, {1, 0.063, 0.0312}, {0.25, 0.333, 0.0625}, {0.75, 0.9, 0.0312}};
    for (const Settings& settings : all)
    {
        const FloatPicture picture = patches(7, kSize, kLight, kDark);
        EXPECT_PICTURES_NEAR(pass(*program, picture, settings), PlainFXAA(picture, kPresets[0], settings).result(),
                             2e-6,
                             settings.subpix << ", " << settings.edgeThreshold << ", " << settings.edgeThresholdMin);
    }
}

// The lumas differ by 0.75, the greater one is 0.875.
TEST_F(FXAAGL, AContrastOfJustTheThresholdCounts)
{
    const auto program = fxaa();
    ASSERT_TRUE(program);
    const FloatPicture picture = edgeAt(20, kSize, kLight, kDark);
    const Settings settings = {0.75, 0.5, 0.75};
    const FloatPicture found = pass(*program, picture, settings);
    EXPECT_PICTURES_NEAR(found, PlainFXAA(picture, kPresets[0], settings).result(), 2e-6, "at the threshold");
    EXPECT_GT(difference(found, picture).greatest, 0.1);
    EXPECT_EQ(difference(pass(*program, picture, {0.75, 0.5, 0.751}), picture).greatest, 0);
    EXPECT_EQ(difference(pass(*program, picture, {0.75, 0.86, 0.0}), picture).greatest, 0);
}

TEST_F(FXAAGL, AlphaStandsForTheBrightnessWhereGreenDoesNot)
{
    const auto program = fxaa(10, false);
    ASSERT_TRUE(program);
    for (const int degrees : {20, 65, 140})
    {
        const FloatPicture picture = edgeAt(degrees, kSize, kLight, kDark);
        EXPECT_PICTURES_NEAR(pass(*program, picture), PlainFXAA(picture, kPresets[0], {}, true).result(), 2e-6,
                             degrees << " degrees");
    }
}

TEST_F(FXAAGL, FetchingPixelByPixelGivesTheSame)
{
    const auto gathering = fxaa();
    const auto fetching = fxaa(10, true, false, false);
    ASSERT_TRUE(gathering && fetching);
    for (const unsigned seed : {1u, 2u, 3u})
    {
        const FloatPicture picture = patches(seed, kSize, kLight, kDark);
        EXPECT_EQ(difference(pass(*gathering, picture), pass(*fetching, picture)).greatest, 0) << seed;
    }
}

TEST_F(FXAAGL, WithDiscardPixelsWithoutContrastAreNotWrittenAndAlphaIsThePictures)
{
    const auto program = fxaa(10, true, true);
    ASSERT_TRUE(program);
    const FloatPicture picture = edgeAt(30, kSize, kLight, kDark);
    const PlainFXAA copy(picture, kPresets[0], {}, false, true);
    const FloatPicture smooth = copy.result();
    const FloatPicture found = pass(*program, picture);
    int discarded = 0;
    for (int y = 0; y < kSize; ++y)
        for (int x = 0; x < kSize; ++x)
        {
            const bool isFlat = copy.isFlat(x, y);
            discarded += isFlat;
            for (int i = 0; i < 4; ++i)
                ASSERT_NEAR(found.at(x, y)[i], isFlat ? 0.0f : smooth.at(x, y)[i], 2e-6) << x << ", " << y;
        }
    EXPECT_GT(discarded, kSize * kSize / 2);
    EXPECT_LT(discarded, kSize * kSize);
}

// Also in sizes whose places between pixels are not exact, in bytes and in floats, and without a least threshold.
TEST_F(FXAAGL, ConstantAreasStayUntouchedToTheBit)
{
    const auto program = fxaa();
    ASSERT_TRUE(program);
    std::mt19937 random(5);
    const auto byte = [&random] { return double(random() % 256) / 255; };
    for (int i = 0; i < 24; ++i)
    {
        const Color inside = {byte(), byte(), byte(), byte()};
        const Color outside = {byte(), byte(), byte(), byte()};
        const int size = i % 2 ? kSize : 51 + i;
        const Settings settings = {1, i % 3 ? 0.063 : 0, i % 3 ? 0.0312 : 0};
        const GLenum format = i % 4 < 2 ? GL_RGBA8 : GL_RGBA32F;
        const FloatPicture picture =
            i < 4 ? edgeAt(0, size, inside, inside) : patches(unsigned(i), size, inside, outside);
        const FloatPicture found = pass(*program, picture, settings, format);
        const double steps = format == GL_RGBA8 ? 255 : 0;
        EXPECT_GT(countConstantAndUntouched(found, picture, steps), 100) << i;
    }
}

} // namespace Harrow::Vrk::Test
