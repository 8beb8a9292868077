// SPDX-License-Identifier: MIT
//
// Prefiltered environment maps and the BRDF table on the fake driver: levels, programs, messages and guards.
#include "PrefilteredEnvMap.h"

#include "PrefilteredEnvMapTestTools.h"

namespace Harrow::Vrk::Test
{

class PrefilteredEnvMapTest : public PrefilteredEnvMapFixture
{
};

// ---- levels --------------------------------------------------------------------------------------------------------

TEST(PrefilteredEnvMapLevels, MaxLODLevelIsTheChainUntilTheShorterSideIsOne)
{
    const struct
    {
        int width, height, levels;
    } rows[] = {{1, 64, 1},    {8, 8, 4},
                {64, 2, 2},    {2, 64, 2},
                {1, 1, 1},     {2, 2, 2},
                {3, 3, 2},     {4, 4, 3},
                {5, 7, 3},     {7, 5, 3},
                {512, 256, 9}, {256, 512, 9},
                {128, 128, 8}, {1024, 1, 1},
                {100, 100, 7}, {16384, 16384, 15},
                {3, 8, 2},     {0, 8, 1},
                {-4, 8, 1},    {8, 0, 1},
                {8, -3, 1},    {std::numeric_limits<int>::max(), std::numeric_limits<int>::max(), 31}};
    for (const auto& row : rows)
        EXPECT_EQ(MaxLODLevel(row.width, row.height), row.levels) << row.width << ", " << row.height;
}

TEST(PrefilteredEnvMapLevels, ModelsHaveTheNumbersThatTheShadersKnow)
{
    EXPECT_EQ(int(SHADING_TRADITIONAL), 0);
    EXPECT_EQ(int(SHADING_ENERY_CONSERVING), 1);
    EXPECT_EQ(int(SHADING_PHYSICALLY_BASED), 2);
    EXPECT_EQ(int(SHADING_LAMBERTIAN_DIFFUSE), 3);
    EXPECT_EQ(int(SHADING_OREN_NAYAR_DIFFUSE), 4);
    EXPECT_EQ(int(SHADING_DIFFUSE_START_INDEX), 3);
}

// ---- programs ------------------------------------------------------------------------------------------------------

TEST_F(PrefilteredEnvMapTest, EachFunctionBuildsItsOwnProgramFromFourStages)
{
    const auto cube = newTexture(GL_TEXTURE_CUBE_MAP);
    const auto latLong = newTexture();
    const char* const ownParts[][2] = {{"vo_Vertex = va_Vertex * u_Transform", "samplerCube u_SamplerEnvMap"},
                                       {"vo_TexCoord = va_TexCoord", "sampler2D u_SamplerEnvMap"},
                                       {"vo_TexCoord = va_TexCoord", "uint u_NumLODLevels"}};
    int which = 0;
    for (const Maker& maker : makers(cube.get(), latLong.get()))
    {
        script.sources.clear();
        script.types.clear();
        const CallLog calls;
        const auto result = maker.make(SHADING_PHYSICALLY_BASED);
        ASSERT_TRUE(result);
        QStringList stages = calls.named({line("glCreateShader")});
        stages.sort();
        EXPECT_EQ(stages, QStringList({CallLog::call("glCreateShader", GL_FRAGMENT_SHADER),
                                       CallLog::call("glCreateShader", GL_FRAGMENT_SHADER),
                                       CallLog::call("glCreateShader", GL_FRAGMENT_SHADER),
                                       CallLog::call("glCreateShader", GL_VERTEX_SHADER)}));
        EXPECT_EQ(calls.count(line("glLinkProgram")), 1);
        EXPECT_EQ(calls.named({line("glBindFragDataLocation")}).size(), 1);
        EXPECT_TRUE(calls.named({line("glBindFragDataLocation")}).first().endsWith(line("0, \"out_FragColor\")")));
        QList<GLuint> fragments = script.types.keys(GL_FRAGMENT_SHADER);
        std::sort(fragments.begin(), fragments.end());
        ASSERT_EQ(fragments.size(), 3);
        const char* const parts[] = {ownParts[which][0], ownParts[which][1], "SmithGTR(float", "float snoise(vec2"};
        for (const char* const part : parts)
        {
            const QByteArray stage = stageWith(part);
            EXPECT_TRUE(stage.contains("#define VRK_BRDF 2\n")) << part;
            EXPECT_FALSE(stage.contains("#define SOLID_SAMPLING")) << part;
        }
        // A program makes the stages of a kind last in, first out.
        for (qsizetype i = 0; i < 3; ++i)
            EXPECT_EQ(script.sources[fragments[i]], stageWith(parts[1 + i])) << parts[1 + i];
        ++which;
    }
}

TEST_F(PrefilteredEnvMapTest, TheModelsNumberIsDefined)
{
    const auto cube = newTexture(GL_TEXTURE_CUBE_MAP);
    const auto latLong = newTexture();
    for (int model = 0; model < 5; ++model)
        for (const Maker& maker : makers(cube.get(), latLong.get()))
        {
            script.sources.clear();
            ASSERT_TRUE(maker.make(ShadingModel(model)));
            for (const QByteArray& source : script.sources)
                EXPECT_TRUE(source.contains("#define VRK_BRDF " + QByteArray::number(model) + '\n'));
        }
}

TEST_F(PrefilteredEnvMapTest, AProgramThatDoesNotCompileIsNamedAndLeavesNothingBehind)
{
    const auto cube = newTexture(GL_TEXTURE_CUBE_MAP);
    const auto latLong = newTexture();
    for (const char* const broken : {"snoise(vec2", "SmithGTR(float", "gl_Position", "out vec4 out_FragColor"})
    {
        script.brokenMark = broken;
        for (const Maker& maker : makers(cube.get(), latLong.get()))
        {
            const LogCapture log;
            const CallLog calls;
            EXPECT_FALSE(maker.make(SHADING_TRADITIONAL));
            EXPECT_EQ(log.texts(QtWarningMsg).last(), line(maker.program) + line(" shader program failed to compile"));
            EXPECT_EQ(log.texts(QtWarningMsg).filter(line("shader program failed")).size(), 1);
            EXPECT_EQ(namesLeft(calls), 0);
            EXPECT_EQ(calls.count(line("glUseProgram")), 0);
            EXPECT_EQ(calls.count(line("glGenFramebuffers")), 0);
            EXPECT_EQ(Texture::NumAlive(), 2);
        }
    }
}

TEST_F(PrefilteredEnvMapTest, AProgramThatDoesNotLinkIsNamedAndLeavesNothingBehind)
{
    const auto cube = newTexture(GL_TEXTURE_CUBE_MAP);
    const auto latLong = newTexture();
    script.linkStatus = 0;
    for (const Maker& maker : makers(cube.get(), latLong.get()))
    {
        const LogCapture log;
        const CallLog calls;
        EXPECT_FALSE(maker.make(SHADING_OREN_NAYAR_DIFFUSE));
        EXPECT_EQ(log.texts(QtWarningMsg).last(), line(maker.program) + line(" shader program failed to link"));
        EXPECT_EQ(log.texts(QtWarningMsg).filter(line("shader program failed")).size(), 1);
        EXPECT_EQ(namesLeft(calls), 0);
        EXPECT_EQ(calls.count(line("glUseProgram")), 0);
        EXPECT_EQ(Texture::NumAlive(), 2);
        EXPECT_EQ(ShaderProgram::currentShaderProgram(), nullptr);
    }
}

TEST_F(PrefilteredEnvMapTest, AFailureAfterScalingDeletesTheCopyAndBringsTheFramebuffersBack)
{
    const auto source = newTexture();
    SetPrefilteredSourceWidthMax(8);
    script.linkStatus = 0;
    const LogCapture log;
    const CallLog calls;
    EXPECT_FALSE(filteredLatLong(source.get(), 8, 4, SHADING_TRADITIONAL));
    EXPECT_EQ(calls.count(line("glBlitFramebuffer")), 1);
    EXPECT_EQ(namesLeft(calls), 0);
    EXPECT_EQ(calls.named({line("glBindFramebuffer")}).mid(2), framebuffersRestored());
    EXPECT_EQ(calls.named({line("glBindTexture")}).last(), bindName(0));
}

// ---- long loops ----------------------------------------------------------------------------------------------------

namespace
{

/// The driver says that it is llvmpipe, or another one.
void useRenderer(FakeDriver& driver, bool isLlvmpipe)
{
    static bool answersLlvmpipe = false;
    answersLlvmpipe = isLlvmpipe;
    driver.replace(
        "glGetString",
        +[](GLenum name)
        {
            const char* const text = name != GL_RENDERER ? FakeDriver::current().versionText().constData()
                                     : answersLlvmpipe   ? "llvmpipe (LLVM 15.0.6, 256 bits)"
                                                         : "Some GPU/PCIe/SSE2";
            return reinterpret_cast<const GLubyte*>(text);
        });
    ASSERT_EQ(driver.load(), 1);
}

} // namespace

TEST_F(PrefilteredEnvMapTest, SamplesBeyondTheTurnsOfTheDriversLoopsAreSeveralToATurn)
{
    const auto cube = newTexture(GL_TEXTURE_CUBE_MAP);
    const auto latLong = newTexture();
    const struct
    {
        unsigned samples;
        int ofATurn;
    } rows[] = {{1, 1},      {65534, 1},  {65535, 1},      {65536, 2},       {131070, 2},
                {131071, 3}, {524288, 9}, {8388608u, 129}, {33554432u, 513}, {65535u * 1024, 1024}};
    for (const bool isLlvmpipe : {true, false})
    {
        useRenderer(driver, isLlvmpipe);
        for (const auto& row : rows)
            for (const bool isCube : {true, false})
            {
                script.sources.clear();
                const CallLog calls;
                const std::unique_ptr<Texture> map(
                    isCube ? CreatePrefilteredCubeEnvMap(cube.get(), 2, row.samples, SHADING_PHYSICALLY_BASED, RGBA16F)
                           : CreatePrefilteredLatLongEnvMap(latLong.get(), 2, 2, row.samples, SHADING_PHYSICALLY_BASED,
                                                            RGBA16F));
                ASSERT_TRUE(map);
                EXPECT_EQ(calls.named({line("glUniform1ui")}), QStringList(uniform1ui(6, row.samples)));
                EXPECT_EQ(stageWith("u_SamplerEnvMap").count("TAKE_SAMPLE\n"), isLlvmpipe ? row.ofATurn : 1)
                    << row.samples;
            }
    }
}

TEST_F(PrefilteredEnvMapTest, TheDriverIsAskedWhichOneItIsForManySamplesAlone)
{
    const auto latLong = newTexture();
    const QString query = CallLog::call("glGetString", GL_RENDERER);
    {
        const CallLog calls;
        EXPECT_TRUE(filteredLatLong(latLong.get(), 8, 4, SHADING_LAMBERTIAN_DIFFUSE));
        EXPECT_TRUE(table());
        EXPECT_FALSE(calls.list().contains(query));
    }
    ProcessedTextureScript::current().width = 256;
    ProcessedTextureScript::current().height = 256;
    const CallLog calls;
    EXPECT_TRUE(filteredLatLong(latLong.get(), 8, 4, SHADING_LAMBERTIAN_DIFFUSE));
    EXPECT_EQ(calls.list().count(query), 1);
}

TEST_F(PrefilteredEnvMapTest, MoreSamplesThanTheDriversLoopsCanTakeAreRefusedAndNotLeftOut)
{
    const auto cube = newTexture(GL_TEXTURE_CUBE_MAP);
    const auto latLong = newTexture();
    ProcessedTextureScript::current().width = 16384;
    ProcessedTextureScript::current().height = 8192;
    for (const bool isLlvmpipe : {true, false})
    {
        useRenderer(driver, isLlvmpipe);
        const LogCapture log;
        const CallLog calls;
        const std::unique_ptr<Texture> maps[] = {filteredLatLong(latLong.get(), 8, 4, SHADING_OREN_NAYAR_DIFFUSE),
                                                 std::unique_ptr<Texture>(CreatePrefilteredCubeEnvMap(
                                                     cube.get(), 4, 65535u * 1024 + 1, SHADING_TRADITIONAL, RGBA16F))};
        EXPECT_EQ(bool(maps[0]), !isLlvmpipe);
        EXPECT_EQ(bool(maps[1]), !isLlvmpipe);
        QStringList words;
        if (isLlvmpipe)
        {
            words << line("prefilteredEnvMap can take 67107840 samples on this driver, not 134217728")
                  << line("prefilteredEnvMap can take 67107840 samples on this driver, not 67107841");
            EXPECT_EQ(namesLeft(calls), 0);
        }
        EXPECT_EQ(log.texts(), words);
    }
}

// ---- what is guarded -----------------------------------------------------------------------------------------------

TEST_F(PrefilteredEnvMapTest, ANullSourceIsReportedAndCallsNothing)
{
    const CallLog calls;
    {
        const LogCapture log;
        EXPECT_FALSE(filteredCube(nullptr, 4, SHADING_TRADITIONAL));
        EXPECT_EQ(log.messages(), failure("nullptr != source", "Texture is NULL on CreatePrefilteredCubeEnvMap"));
    }
    const LogCapture log;
    EXPECT_FALSE(filteredLatLong(nullptr, 4, 4, SHADING_TRADITIONAL));
    EXPECT_EQ(log.messages(), failure("nullptr != source", "Texture is NULL on CreatePrefilteredLatLongEnvMap"));
    EXPECT_EQ(calls.list(), QStringList());
}

TEST_F(PrefilteredEnvMapTest, ALatLongSourceWithoutTexelsIsReported)
{
    const auto source = newTexture();
    for (const auto& [width, height] : {std::pair(0, 8), {16, 0}})
    {
        ProcessedTextureScript::current().width = width;
        ProcessedTextureScript::current().height = height;
        const LogCapture log;
        const CallLog calls;
        EXPECT_FALSE(filteredLatLong(source.get(), 8, 4, SHADING_LAMBERTIAN_DIFFUSE));
        EXPECT_EQ(log.messages(), failure("form.width > 0 && form.height > 0",
                                          "Source has no texels on CreatePrefilteredLatLongEnvMap"));
        EXPECT_EQ(shown(calls.list()), shown(queries(true) + formRead()));
    }
}

TEST_F(PrefilteredEnvMapTest, SettingsBelowOneAreReportedAndChangeNothing)
{
    SetPrefilteredSourceWidthMax(8);
    SetPrefilteredSourceHeightMax(4);
    SetPrefilteredTilseSizeMax(4);
    const struct
    {
        void (*set)(int);
        const char* condition;
        const char* words;
    } rows[] = {{&SetPrefilteredSourceWidthMax, "width > 0", "Source width limit %1 is not positive"},
                {&SetPrefilteredSourceHeightMax, "height > 0", "Source height limit %1 is not positive"},
                {&SetPrefilteredTilseSizeMax, "size > 0", "Tile size %1 is not positive"}};
    for (const auto& row : rows)
        for (const int value : {0, -1, std::numeric_limits<int>::min()})
        {
            const LogCapture log;
            row.set(value);
            EXPECT_EQ(log.messages(), QStringList(assertionLine(line(row.condition), line(row.words).arg(value))));
        }
    const auto source = newTexture();
    const CallLog calls;
    EXPECT_TRUE(filteredLatLong(source.get(), 8, 4, SHADING_LAMBERTIAN_DIFFUSE));
    EXPECT_EQ(calls.named({line("glUniform1ui")}), QStringList(uniform1ui(6, 8 * 4)));
    EXPECT_EQ(calls.count(line("glDrawArrays")), 4);
}

TEST_F(PrefilteredEnvMapTest, WithoutAFreeUnitNothingIsDrawnAndNoTextureIsTouched)
{
    const auto cube = newTexture(GL_TEXTURE_CUBE_MAP);
    const auto latLong = newTexture();
    for (const bool sourcesBound : {false, true})
    {
        if (sourcesBound)
        {
            ASSERT_TRUE(cube->bind());
            ASSERT_TRUE(latLong->bind());
        }
        const auto holders = takeUnits(sourcesBound ? kUnits - 2 : kUnits);
        for (const Maker& maker : makers(cube.get(), latLong.get()))
        {
            const LogCapture log;
            const CallLog calls;
            EXPECT_FALSE(maker.make(SHADING_TRADITIONAL));
            EXPECT_EQ(log.messages(), QStringList(line("There is no available texture units")));
            EXPECT_EQ(calls.named({line("glTexImage2D"), line("glTexParameteri"), line("glGenerateMipmap"),
                                   line("glDrawArrays"), line("glDisable"), line("glClearColor")}),
                      QStringList());
            EXPECT_EQ(namesLeft(calls), 0);
            EXPECT_EQ(ShaderProgram::currentShaderProgram(), nullptr);
        }
        for (const auto& holder : holders)
            holder->unbind();
    }
    cube->unbind();
    latLong->unbind();
}

TEST_F(PrefilteredEnvMapTest, ACubeMapWithOneFreeUnitIsNotFinishedWithTheParametersOfItsSource)
{
    const auto cube = newTexture(GL_TEXTURE_CUBE_MAP);
    const auto holders = takeUnits(kUnits - 1);
    const LogCapture log;
    const CallLog calls;
    EXPECT_FALSE(filteredCube(cube.get(), 4, SHADING_TRADITIONAL));
    EXPECT_EQ(log.messages(), QStringList(line("There is no available texture units")));
    EXPECT_EQ(calls.named({line("glTexParameteri")}), filters(GL_TEXTURE_CUBE_MAP, GL_NEAREST, GL_NEAREST))
        << "of the result, when it was made";
    EXPECT_TRUE(calls.list().last().startsWith(line("glDeleteTextures(1, ")));
    EXPECT_EQ(namesLeft(calls), 0);
    EXPECT_FALSE(cube->isBound());
    for (const auto& holder : holders)
        holder->unbind();
}

TEST_F(PrefilteredEnvMapTest, WithoutAQuadNothingIsDrawn)
{
    const auto cube = newTexture(GL_TEXTURE_CUBE_MAP);
    const auto latLong = newTexture();
    const auto expectNothing = [&](const QStringList& words)
    {
        for (const Maker& maker : makers(cube.get(), latLong.get()))
        {
            const LogCapture log;
            const CallLog calls;
            EXPECT_FALSE(maker.make(SHADING_TRADITIONAL));
            EXPECT_EQ(log.messages(QtCriticalMsg), words);
            EXPECT_EQ(calls.named({line("glDisable"), line("glClear"), line("glDrawArrays"), line("glUniform1i")}),
                      QStringList());
            EXPECT_EQ(namesLeft(calls), 0);
            EXPECT_EQ(calls.named({line("glUseProgram")}).last(), CallLog::call("glUseProgram", 0));
        }
    };
    useFactory<WithoutVertexArrays>();
    expectNothing(failure("!vao.isNull()", "Vertex Array Object is NULL on newFullscreenQuad") +
                  failure("!quad.isNull()", "Fullscreen quad is NULL on prefilter"));
    useFactory<WithBareQuads>();
    expectNothing(failure("!quad->VAO().isNull()", "Vertex Array Object is NULL on prefilter"));
}

} // namespace Harrow::Vrk::Test
