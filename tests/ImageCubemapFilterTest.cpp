// SPDX-License-Identifier: MIT
//
// The filters of cube maps on the real driver, against their formulas in double precision: every texel of every cube,
// for cube maps and arrays; and what becomes of a filter whose shader does not compile.
#include "ZelImageCubemapUtils.h"

#include "GLSLMacroProcessor.h"
#include "ImageCubemapTestTools.h"
#include "ZelRenderCubemap.h"
#include "support/CallLog.h"

#include <QString>
#include <QStringList>

namespace Harrow::Vrk::Test
{

using namespace Cubemap;

namespace
{

QString line(const char* text)
{
    return QString::fromLatin1(text);
}

/// What a filter reads: the texels of a level, by face, row and column.
struct Source
{
    int size;
    FaceColor color;
};

Vector sum(const Vector& a, const Vector& b, double weight)
{
    return {a[0] + b[0] * weight, a[1] + b[1] * weight, a[2] + b[2] * weight};
}

Vector divided(const Vector& v, double divisor)
{
    return {v[0] / divisor, v[1] / divisor, v[2] / divisor};
}

/// Weighted mean over all texels of the source before the direction.
Vector cosineMean(const Source& source, const Vector& direction, double exponent)
{
    Vector colors = {0, 0, 0};
    double weights = 0.0;
    for (int face = 0; face < 6; ++face)
        for (int y = 0; y < source.size; ++y)
            for (int x = 0; x < source.size; ++x)
            {
                const double cosine = dot(normalized(direction), normalized(texelPlace(face, x, y, source.size)));
                if (cosine <= 0.0)
                    continue;
                const double weight = std::pow(cosine, exponent);
                colors = sum(colors, source.color(face, x, y), weight);
                weights += weight;
            }
    return divided(colors, weights);
}

/// Plain mean of the center and all texels of the source in the cone. False when one of these lies so near its rim that
/// it may count or not.
bool coneMean(const Source& source, const Vector& direction, const Vector& center, double blur, Vector& mean)
{
    const double rim = 1.0 + (0.707 - 1.0) * blur;
    Vector colors = center;
    double count = 1.0;
    bool isSure = true;
    for (int face = 0; face < 6; ++face)
        for (int y = 0; y < source.size; ++y)
            for (int x = 0; x < source.size; ++x)
            {
                const double cosine = dot(normalized(direction), normalized(texelPlace(face, x, y, source.size)));
                const Vector color = source.color(face, x, y);
                if (std::abs(cosine - rim) < 1e-5 && distance(color, center) > 0.0)
                    isSure = false;
                if (cosine < rim)
                    continue;
                colors = sum(colors, color, 1.0);
                count += 1.0;
            }
    mean = divided(colors, count);
    return isSure;
}

/// The place of a cube among `cubes`.
double placeOf(int cube, int cubes)
{
    return cubes > 1 ? double(cube) / (cubes - 1) : 0.0;
}

bool areNear(const Vector& actual, const Vector& expected)
{
    for (std::size_t i = 0; i < 3; ++i)
        if (!(std::abs(actual[i] - expected[i]) <= 1e-4 * std::abs(expected[i]) + 1e-5))
            return false;
    return true;
}

testing::AssertionResult differs(const Vector& actual, const Vector& expected)
{
    return testing::AssertionFailure() << actual[0] << ", " << actual[1] << ", " << actual[2] << " and not "
                                       << expected[0] << ", " << expected[1] << ", " << expected[2];
}

/// The blur as it is meant to be: with the name of the number under which its shader reads it.
class BlurThatCompiles final : public ZelRenderCubemap_Blur
{
public:
    using ZelRenderCubemap_Blur::ZelRenderCubemap_Blur;

    bool createProgram() override
    {
        ZelRenderCubemap_Blur::createProgram(); // for the size of the batch
        GLSLMacroProcessor processor;
        processor.addDefine(line("ZEL_CUBERENDER_BLUR_BATCH_SIZE"), QString::number(_batchSize));
        _program = std::make_unique<ShaderProgram>(nullptr);
        _program->setMacroProcessor(&processor);
        _program->addShaderFromFile(GL_VERTEX_SHADER, line("CubeRender.vert"));
        _program->addShaderFromFile(GL_FRAGMENT_SHADER, line("CubeRender_Blur.frag"));
        EXPECT_TRUE(_program->link());
        _program->setMacroProcessor(nullptr);
        return true;
    }
};

} // namespace

class ImageCubemapFilterGL : public ImageCubemapFixture
{
protected:
    static std::unique_ptr<Texture> cosine(Texture& source, GLenum target, int size, int layers, float power = 1.0f)
    {
        return std::unique_ptr<Texture>(
            ZelImageCubemapUtils::createGLCubemapNDotLFromGLCubemap(&source, target, size, layers, power));
    }

    static std::unique_ptr<Texture> blurred(Texture& source, GLenum target, int size, int layers)
    {
        return std::unique_ptr<Texture>(
            ZelImageCubemapUtils::createGLCubemapBlurFromGLCubemap(&source, target, size, layers));
    }

    static std::unique_ptr<Texture> reallyBlurred(Texture& source, GLenum target, int size, int layers)
    {
        BlurThatCompiles renderer(&source);
        renderer.setArrayCubes(layers);
        return std::unique_ptr<Texture>(renderer.renderToNewTexture(target, GL_RGBA32F, size));
    }

    /// Whether the faces of one cube, as read back, are what the formula says.
    static testing::AssertionResult isCosineMean(const Floats& values, int cube, int size, const Source& source,
                                                 double exponent)
    {
        for (int face = 0; face < 6; ++face)
            for (int y = 0; y < size; ++y)
                for (int x = 0; x < size; ++x)
                {
                    const Vector actual = colorAt(values, at(x, (cube * 6 + face) * size + y, size));
                    const Vector expected = cosineMean(source, texelPlace(face, x, y, size), exponent);
                    if (!areNear(actual, expected))
                        return differs(actual, expected)
                               << ": cube " << cube << " face " << face << " at " << x << ", " << y;
                }
        return testing::AssertionSuccess();
    }

    static Floats allFaces(Texture& cubemap)
    {
        Floats values;
        for (int face = 0; face < 6; ++face)
        {
            const Floats more = faceOfCubemap(cubemap, face);
            values.insert(values.end(), more.begin(), more.end());
        }
        return values;
    }
};

// ---- the cosine ----------------------------------------------------------------------------------------------------

TEST_F(ImageCubemapFilterGL, ACosineFilterIsTheWeightedMeanOfTheHemisphere)
{
    for (const int sourceSize : {1, 4, 5, 8})
    {
        const auto source = newCubemap(sourceSize, &noise);
        for (const int size : {1, 4, 7})
        {
            const auto result = cosine(*source, GL_TEXTURE_CUBE_MAP, size, 1);
            ASSERT_NE(result, nullptr);
            EXPECT_EQ(faceParameter(*result, 0, 0, GL_TEXTURE_INTERNAL_FORMAT), GL_RGBA32F);
            EXPECT_TRUE(isCosineMean(allFaces(*result), 0, size, {sourceSize, &noise}, 1.0))
                << sourceSize << " to " << size;
        }
    }
}

TEST_F(ImageCubemapFilterGL, AConstantEnvironmentStaysAsItIs)
{
    const Vector color = {0.5, 3.0, 700.0};
    const auto source = newCubemap(16, [&](int, int, int) { return color; });
    const auto result = cosine(*source, GL_TEXTURE_CUBE_MAP, 8, 1);
    ASSERT_NE(result, nullptr);
    for (int face = 0; face < 6; ++face)
        for (int level = 0; level < 4; ++level)
        {
            const Floats values = faceOfCubemap(*result, face, level);
            for (std::size_t i = 0; i < values.size(); i += 4)
                ASSERT_TRUE(areNear(colorAt(values, i), color)) << level;
        }
}

TEST_F(ImageCubemapFilterGL, ASingleBrightTexelLightsTheHemisphereBeforeItByTheCosine)
{
    // One texel of 1 among 0: the result over that of another texel is the ratio of their cosines and their weights.
    constexpr int size = 8;
    const FaceColor spot = [](int face, int x, int y) {
        return face == 4 && x == 2 && y == 5 ? Vector{1000, 500, 250} : Vector{0, 0, 0};
    };
    const auto source = newCubemap(size, spot);
    const auto result = cosine(*source, GL_TEXTURE_CUBE_MAP, size, 1);
    ASSERT_NE(result, nullptr);
    EXPECT_TRUE(isCosineMean(allFaces(*result), 0, size, {size, spot}, 1.0));
    const Vector light = texelPlace(4, 2, 5, size);
    for (int face = 0; face < 6; ++face)
    {
        const Floats values = faceOfCubemap(*result, face);
        for (int y = 0; y < size; ++y)
            for (int x = 0; x < size; ++x)
                ASSERT_EQ(values[at(x, y, size)] > 0.0f, dot(light, texelPlace(face, x, y, size)) > 0.0)
                    << face << " at " << x << ", " << y;
    }
}

TEST_F(ImageCubemapFilterGL, ThePlacesOfAllSixSidesCountInTheLargestGrid)
{
    // Drivers end loops that take too many turns.
    constexpr int size = 128;
    const FaceColor blocks = [](int face, int x, int y) { return noise(face, x / 16, y / 16); };
    const auto source = newCubemap(size, blocks);
    const auto result = cosine(*source, GL_TEXTURE_CUBE_MAP, 2, 1);
    ASSERT_NE(result, nullptr);
    EXPECT_TRUE(isCosineMean(allFaces(*result), 0, 2, {size, blocks}, 1.0));
    if (isFloor())
        return; // no arrays there
    const auto array = cosine(*source, GL_TEXTURE_CUBE_MAP_ARRAY, 1, 8, 4.0f);
    ASSERT_NE(array, nullptr);
    const Floats values = layersOf(*array, 1, 48);
    for (const int cube : {0, 1, 4, 7})
    {
        const double exponent = std::exp2(13.0 * std::pow(placeOf(cube, 8), 0.25));
        EXPECT_TRUE(isCosineMean(values, cube, 1, {size, blocks}, exponent)) << cube;
    }
}

TEST_F(ImageCubemapFilterGL, ASourceBeyond128TexelsIsReadFromTheLevelThatFitsTheGrid)
{
    // One texel of sixteen, which the middle of a step of four by four would miss.
    constexpr int size = 512;
    const FaceColor spots = [](int face, int x, int y) {
        return x % 4 == 0 && y % 4 == 0 ? noise(face, x / 64, y / 64) : Vector{0, 0, 0};
    };
    const FaceColor means = [](int face, int x, int y) { return divided(noise(face, x / 16, y / 16), 16.0); };
    const auto source = newCubemap(size, spots);
    const auto result = cosine(*source, GL_TEXTURE_CUBE_MAP, 1, 1);
    ASSERT_NE(result, nullptr);
    EXPECT_TRUE(isCosineMean(allFaces(*result), 0, 1, {size / 4, means}, 1.0));
}

TEST_F(ImageCubemapFilterGL, AnArrayGoesFromThePlainCosineToNearlyAMirror)
{
    constexpr int size = 4;
    const auto source = newCubemap(size, &noise);
    const struct
    {
        int cubes;
        int batch;
    } rows[] = {{1, 1}, {2, 2}, {3, 1}, {6, 2}, {8, 8}, {12, 4}};
    for (const auto& row : rows)
    {
        const LogCapture log;
        const CallLog calls;
        const auto result = cosine(*source, GL_TEXTURE_CUBE_MAP_ARRAY, size, row.cubes, 2.0f);
        if (isFloor())
        {
            EXPECT_EQ(result, nullptr) << "arrays came with OpenGL 4.0";
            EXPECT_EQ(log.messages(), QStringList({line("[ !! ] Unhandled Texture Type 0x9009"),
                                                   line("[ !! ] Unable to create cubemap NDotL from cubemap.")}));
            continue;
        }
        ASSERT_NE(result, nullptr) << row.cubes;
        EXPECT_EQ(calls.count(line("glDrawArrays")), 6 * row.cubes / row.batch) << row.cubes;
        EXPECT_EQ(calls.count(line("glFramebufferTextureLayer")), 6 * row.cubes) << row.cubes;
        const Floats values = layersOf(*result, size, 6 * row.cubes);
        for (int cube = 0; cube < row.cubes; ++cube)
        {
            const double exponent = std::exp2(13.0 * std::sqrt(placeOf(cube, row.cubes)));
            if (exponent > 700.0)
                continue; // single precision has no such weights: see below
            EXPECT_TRUE(isCosineMean(values, cube, size, {size, &noise}, exponent)) << cube << " of " << row.cubes;
        }
    }
}

TEST_F(ImageCubemapFilterGL, TheRootOfThePlaceIsThatOfThePower)
{
    if (isFloor())
        return; // no arrays there: asserted above
    constexpr int size = 4;
    const auto source = newCubemap(size, &noise);
    for (const float power : {1.0f, 0.5f, 0.25f})
    {
        const auto result = cosine(*source, GL_TEXTURE_CUBE_MAP_ARRAY, size, 3, power);
        ASSERT_NE(result, nullptr);
        const Floats values = layersOf(*result, size, 18);
        for (const int cube : {0, 1})
        {
            const double exponent = std::exp2(13.0 * std::pow(placeOf(cube, 3), 1.0 / power));
            EXPECT_TRUE(isCosineMean(values, cube, size, {size, &noise}, exponent)) << cube << " by " << power;
        }
    }
}

TEST_F(ImageCubemapFilterGL, AMirrorShowsTheTexelOfTheDirection)
{
    if (isFloor())
        return;
    constexpr int size = 16;
    const auto source = newCubemap(size, &noise);
    const auto result = cosine(*source, GL_TEXTURE_CUBE_MAP_ARRAY, size, 2, 1.0f);
    ASSERT_NE(result, nullptr);
    const Floats values = layersOf(*result, size, 12);
    for (int face = 0; face < 6; ++face)
        for (int y = 0; y < size; ++y)
            for (int x = 0; x < size; ++x)
                ASSERT_LT(distance(colorAt(values, at(x, (6 + face) * size + y, size)), noise(face, x, y)), 1e-3);
}

TEST_F(ImageCubemapFilterGL, WithoutAnyWeightThereIsAColorAllTheSame)
{
    if (isFloor())
        return;
    // Sizes that put no step near enough to a texel for the power of 8192.
    const auto source = newCubemap(2, [](int, int, int) { return Vector{0.5, 0.25, 4.0}; });
    const auto result = cosine(*source, GL_TEXTURE_CUBE_MAP_ARRAY, 5, 2);
    ASSERT_NE(result, nullptr);
    const Floats values = layersOf(*result, 5, 12);
    for (std::size_t i = 0; i < values.size(); i += 4)
        ASSERT_LT(distance(colorAt(values, i), {0.5, 0.25, 4.0}), 1e-2) << i / 4;
}

TEST_F(ImageCubemapFilterGL, APlainCubemapTakesNoNoticeOfTheNumberOfLayers)
{
    const auto source = newCubemap(4, &noise);
    const CallLog calls;
    const auto result = cosine(*source, GL_TEXTURE_CUBE_MAP, 4, 8);
    ASSERT_NE(result, nullptr);
    EXPECT_EQ(calls.count(line("glDrawArrays")), 6);
    EXPECT_TRUE(isCosineMean(allFaces(*result), 0, 4, {4, &noise}, 1.0));
}

TEST_F(ImageCubemapFilterGL, AFilterLeavesSeamlessFilteringOffAndTheSourceTrilinear)
{
    const auto source = newCubemap(4, &noise);
    glEnable(GL_TEXTURE_CUBE_MAP_SEAMLESS);
    ASSERT_NE(cosine(*source, GL_TEXTURE_CUBE_MAP, 4, 1), nullptr);
    EXPECT_FALSE(glIsEnabled(GL_TEXTURE_CUBE_MAP_SEAMLESS));
    const AutoBinder binder(source.get());
    GLint filter = 0;
    glGetTexParameteriv(GL_TEXTURE_CUBE_MAP, GL_TEXTURE_MIN_FILTER, &filter);
    EXPECT_EQ(filter, GL_LINEAR_MIPMAP_LINEAR);
    glGetTexParameteriv(GL_TEXTURE_CUBE_MAP, GL_TEXTURE_MAG_FILTER, &filter);
    EXPECT_EQ(filter, GL_LINEAR);
}

TEST_F(ImageCubemapFilterGL, AnotherTargetGivesNothingAndSaysSo)
{
    const auto source = newCubemap(4, &noise);
    const QString unhandled = line("[ !! ] Unhandled Texture Type 0xDE1");
    {
        const LogCapture log;
        EXPECT_EQ(cosine(*source, GL_TEXTURE_2D, 4, 1), nullptr);
        EXPECT_EQ(log.messages(QtDebugMsg),
                  QStringList({unhandled, unhandled, line("[ !! ] Unable to create cubemap NDotL from cubemap.")}));
    }
    const LogCapture log;
    EXPECT_EQ(blurred(*source, GL_TEXTURE_2D, 4, 1), nullptr);
    EXPECT_EQ(log.messages(QtDebugMsg),
              QStringList({unhandled, unhandled, line("[ !! ] Unable to create cubemap blur from cubemap.")}));
}

// ---- the blur, as it is --------------------------------------------------------------------------------------------

TEST_F(ImageCubemapFilterGL, ABlurDoesNotCompileAndGivesTheSixClearColors)
{
    const auto source = newCubemap(4, &noise);
    const LogCapture log;
    const auto result = blurred(*source, GL_TEXTURE_CUBE_MAP, 8, 1);
    ASSERT_NE(result, nullptr);
    for (int level = 0; level < 4; ++level)
        EXPECT_TRUE(facesAre(
            *result, 8 >> level, [](int face, int, int) { return kFaceColors[std::size_t(face)]; }, 0.0, level));
    EXPECT_EQ(faceParameter(*result, 0, 0, GL_TEXTURE_INTERNAL_FORMAT), GL_RGBA32F);
    EXPECT_TRUE(log.messages(QtWarningMsg).contains(line("Failed to compile GL shader")))
        << log.messages(QtWarningMsg).join(u'\n').toStdString();
    EXPECT_EQ(log.messages(QtDebugMsg).filter(line("Unable")), QStringList());
}

TEST_F(ImageCubemapFilterGL, ABlurredArrayHasTheSixClearColorsInEachCube)
{
    const auto source = newCubemap(4, &noise);
    for (const int cubes : {1, 3, 8, 12})
    {
        const LogCapture log;
        const auto result = blurred(*source, GL_TEXTURE_CUBE_MAP_ARRAY, 4, cubes);
        if (isFloor())
        {
            EXPECT_EQ(result, nullptr);
            EXPECT_EQ(log.messages(), QStringList({line("[ !! ] Unhandled Texture Type 0x9009"),
                                                   line("[ !! ] Unable to create cubemap blur from cubemap.")}));
            continue;
        }
        ASSERT_NE(result, nullptr);
        const Floats values = layersOf(*result, 4, 6 * cubes);
        for (std::size_t i = 0; i < values.size() / 4; ++i)
            ASSERT_EQ(colorAt(values, i * 4), kFaceColors[i / 16 % 6]) << cubes << " at " << i;
    }
}

// ---- the blur, as it is meant --------------------------------------------------------------------------------------

TEST_F(ImageCubemapFilterGL, TheBlurOfAPlainCubemapIsACopy)
{
    const auto source = newCubemap(8, &noise);
    const auto result = reallyBlurred(*source, GL_TEXTURE_CUBE_MAP, 8, 1);
    ASSERT_NE(result, nullptr);
    EXPECT_TRUE(facesAre(*result, 8, &noise, 1e-4));
}

TEST_F(ImageCubemapFilterGL, TheBlurOfAnArrayIsTheMeanOverGrowingCones)
{
    if (isFloor())
        return;
    constexpr int size = 8;
    const auto source = newCubemap(size, &noise);
    for (const int cubes : {2, 3, 6, 8, 12})
    {
        const auto result = reallyBlurred(*source, GL_TEXTURE_CUBE_MAP_ARRAY, size, cubes);
        ASSERT_NE(result, nullptr);
        const Floats values = layersOf(*result, size, 6 * cubes);
        int compared = 0;
        for (int cube = 0; cube < cubes; ++cube)
            for (int face = 0; face < 6; ++face)
                for (int y = 0; y < size; ++y)
                    for (int x = 0; x < size; ++x)
                    {
                        Vector expected = {};
                        if (!coneMean({size, &noise}, texelPlace(face, x, y, size), noise(face, x, y),
                                      placeOf(cube, cubes), expected))
                            continue;
                        ++compared;
                        const Vector actual = colorAt(values, at(x, (cube * 6 + face) * size + y, size));
                        ASSERT_TRUE(areNear(actual, expected) || differs(actual, expected))
                            << cube << " of " << cubes << " face " << face << " at " << x << ", " << y;
                    }
        EXPECT_GT(compared, cubes * 6 * size * size * 9 / 10) << "hardly any texel lies on a rim";
    }
}

} // namespace Harrow::Vrk::Test
