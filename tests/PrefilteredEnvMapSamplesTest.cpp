// SPDX-License-Identifier: MIT
//
// Prefiltered environment maps on the real driver where samples are many, more than the turns that a driver's loop has
// or than the digits of a sum hold; and those of a real environment.
#include "PrefilteredEnvMap.h"

#include "EnvironmentDriverTestTools.h"
#include "ShaderProgram.h"
#include "TextureFileInfo.h"
#include "TextureIO.h"
#include "TextureIOTestTools.h"

#include <QString>

#include <cstring>

namespace Harrow::Vrk::Test
{

using namespace Environment;

class PrefilteredEnvMapSamplesGL : public EnvironmentDriverFixture
{
protected:
    static void expectLatLong(Texture& map, Model model, const Levels& source, unsigned samples, double relative,
                              double absolute = 1e-5)
    {
        const Image base = readLevel(map, 0);
        for (int level = 0; level < MaxLODLevel(base.width, base.height); ++level)
            EXPECT_TRUE(areClose(readLevel(map, level),
                                 expectedLatLong(model, source, base.width, base.height, level, samples), relative,
                                 absolute))
                << kModelNames[model] << ", level " << level;
    }
};

// ---- long loops ----------------------------------------------------------------------------------------------------

namespace
{

/// What a shader counts in `loops`, which may use 0 as a number that no compiler knows: `zero`.
int counted(const char* loops)
{
    ShaderProgram program(nullptr);
    program.setFragDataLocations({QStringLiteral("result")});
    program.addShader(GL_VERTEX_SHADER, QStringLiteral("#version 150\nvoid main()\n{\n"
                                                       "    vec2 corner = vec2((gl_VertexID & 1) * 4 - 1, "
                                                       "(gl_VertexID & 2) * 2 - 1);\n"
                                                       "    gl_Position = vec4(corner, 0.0, 1.0);\n}\n"));
    program.addShader(GL_FRAGMENT_SHADER,
                      QStringLiteral("#version 150\nuniform uint zero;\nout vec4 result;\nvoid main()\n{\n"
                                     "    uint count = 0u;\n    %1\n    result = vec4(float(count));\n}\n")
                          .arg(QLatin1String(loops)));
    EXPECT_TRUE(program.link()) << program.log().toStdString();
    Texture target(GL_TEXTURE_2D, GL_RGBA32F, 1, 1, 1, nullptr);
    {
        const AutoBinder binder(&target);
        glTexImage2D(GL_TEXTURE_2D, 0, GL_RGBA32F, 1, 1, 0, GL_RGBA, GL_FLOAT, nullptr);
    }
    GLuint framebuffer = 0;
    GLuint vertexArray = 0;
    glGenFramebuffers(1, &framebuffer);
    glBindFramebuffer(GL_FRAMEBUFFER, framebuffer);
    glFramebufferTexture2D(GL_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, GL_TEXTURE_2D, target.textureID(), 0);
    glGenVertexArrays(1, &vertexArray);
    glBindVertexArray(vertexArray);
    glViewport(0, 0, 1, 1);
    program.bind();
    glDrawArrays(GL_TRIANGLES, 0, 3);
    program.unbind();
    float pixel[4] = {};
    glReadPixels(0, 0, 1, 1, GL_RGBA, GL_FLOAT, pixel);
    glBindVertexArray(0);
    glBindFramebuffer(GL_FRAMEBUFFER, 0);
    glDeleteVertexArrays(1, &vertexArray);
    glDeleteFramebuffers(1, &framebuffer);
    return static_cast<int>(pixel[0]);
}

} // namespace

TEST_F(PrefilteredEnvMapSamplesGL, TheSoftwareDriverEndsLoopsAfterSoManyTurnsInAll)
{
    // The fault that makes several samples go into a turn. When this fails, the driver has been mended and they need
    // not any more.
    const bool isLlvmpipe = std::strstr(reinterpret_cast<const char*>(glGetString(GL_RENDERER)), "llvmpipe") != nullptr;
    const char* const one = "for (uint i = 0u; i < 65535u + zero; ++i) count += (i ^ zero) == i ? 1u : 0u;";
    EXPECT_EQ(counted(one), 65535);
    const char* const more = "for (uint i = 0u; i < 70000u + zero; ++i) count += (i ^ zero) == i ? 1u : 0u;";
    EXPECT_EQ(counted(more), isLlvmpipe ? 65535 : 70000);
    const char* const nested = "for (uint i = 0u; i < 70u + zero; ++i)\n"
                               "        for (uint j = 0u; j < 1000u + zero; ++j) count += (j ^ zero) == j ? 1u : 0u;";
    const int ofNested = counted(nested);
    if (isLlvmpipe)
        EXPECT_LT(ofNested, 65535) << "the outer loop's turns count as well";
    else
        EXPECT_EQ(ofNested, 70000);
}

TEST_F(PrefilteredEnvMapSamplesGL, EachTexelIsTakenWhenThereAreMoreOfThemThanTurnsOfALoop)
{
    // A driver that ends the loop would show the southern half of the sky alone.
    const Levels source = mipChain(latLongImage(512, 256, &sky));
    const auto texture = latLongTexture(source);
    for (const Model model : {eLambert, eOrenNayar})
    {
        const auto map = prefilterLatLong(*texture, 4, 2, 1, model);
        ASSERT_TRUE(map);
        expectLatLong(*map, model, source, 0, 0.005);
    }
}

TEST_F(PrefilteredEnvMapSamplesGL, TheLastOf65536TexelsCounts)
{
    Image image(256, 256);
    image.at(255, 255) = {1e6, 2e6, 3e6};
    const auto texture = latLongTexture({image});
    const auto map = prefilterLatLong(*texture, 4, 4, 1, eLambert);
    ASSERT_TRUE(map);
    // It is less than half a degree from the pole.
    const Image base = readLevel(*map, 0);
    EXPECT_GT(base.at(0, 3).x, 10.0);
    expectLatLong(*map, eLambert, {image}, 0, 0.01);
}

TEST_F(PrefilteredEnvMapSamplesGL, EachDirectionIsTakenWhenThereAreMoreOfThemThanTurnsOfALoop)
{
    // Of 200,000 points a driver that ends the loop would leave out the last two thirds of each lobe.
    SetDiffuseImportanceSampling(true);
    constexpr unsigned kMany = 200'000;
    const Levels lat = {latLongImage(64, 32, &sky)};
    const auto texture = latLongTexture(lat);
    Cube cube = cubeOf(16, &sky);
    for (Levels& levels : cube)
        levels.resize(1);
    const auto cubeSource = cubeTexture(cube);
    for (const Model model : kModels)
    {
        const auto map = prefilterLatLong(*texture, 4, 2, kMany, model);
        ASSERT_TRUE(map);
        expectLatLong(*map, model, lat, kMany, 0.003);
        const auto cubeMap = prefilterCube(*cubeSource, 2, kMany, model);
        ASSERT_TRUE(cubeMap);
        expectCube(*cubeMap, model, cube, kMany, 0.005);
    }
}

TEST_F(PrefilteredEnvMapSamplesGL, ASunDoesNotSwallowWhatIsAddedAfterIt)
{
    // In the middle of the picture, and so bright that the digits of one sum would end above what each texel adds to it
    // that comes later. That is half of them, and none of it would be left.
    const auto shown = [](double background)
    {
        Image image = constantImage(256, 255, {background, background, background});
        image.at(64, 127) = {1e8, 1e8, 1e8};
        const auto texture = latLongTexture({image});
        const auto map = prefilterLatLong(*texture, 4, 4, 1, eLambert);
        return map ? readLevel(*map, 0).at(1, 1).x : 0.0;
    };
    const double sun = shown(0.0);
    EXPECT_GT(sun, 1000.0) << "it is above this horizon";
    EXPECT_NEAR(shown(0.4) - sun, 0.4, 0.02);
}

// ---- a real environment --------------------------------------------------------------------------------------------

namespace
{

constexpr char kSquare[] = "latlong_dresden_square_1k.hdr";

/// The picture's levels; empty, after a failure, when it cannot be read.
Levels realEnvironment()
{
    const QString path = realFilesFolder("hdr") + QLatin1Char('/') + QLatin1String(kSquare);
    const TexturePointer texture(LoadTextureFromFile(path, TextureFileInfo()));
    if (!texture)
        return {};
    return mipChain(readLevel(*texture, 0));
}

} // namespace

TEST_F(PrefilteredEnvMapSamplesGL, ARealEnvironmentAgreesWithTheIntegralOnTheCPU)
{
    VRK_NEEDS_REAL_FILES("hdr");
    SetDiffuseImportanceSampling(true);
    const Levels source = realEnvironment();
    ASSERT_FALSE(source.empty());
    ASSERT_EQ(source[0].width, 1024);
    ASSERT_EQ(source[0].height, 512);
    const auto texture = latLongTexture(source);
    const auto colorOf = [&](const Vec& d) { return sampleLatLong(source, d, 3.0); };
    const Cube cube = cubeOf(64, colorOf);
    const auto cubeSource = cubeTexture(cube);
    for (const Model model : kModels)
    {
        const auto map = prefilterLatLong(*texture, 32, 16, 64, model);
        ASSERT_TRUE(map);
        expectLatLong(*map, model, source, 64, 0.02);
        const auto cubeMap = prefilterCube(*cubeSource, 16, 64, model);
        ASSERT_TRUE(cubeMap);
        expectCube(*cubeMap, model, cube, 64, 0.05);
    }
}

TEST_F(PrefilteredEnvMapSamplesGL, EachTexelOfARealEnvironmentIsTakenOnce)
{
    // Half a million of them.
    VRK_NEEDS_REAL_FILES("hdr");
    const Levels source = realEnvironment();
    ASSERT_FALSE(source.empty());
    const auto texture = latLongTexture(source);
    const auto map = prefilterLatLong(*texture, 4, 2, 1, eLambert);
    ASSERT_TRUE(map);
    expectLatLong(*map, eLambert, source, 0, 0.003);
}

} // namespace Harrow::Vrk::Test
