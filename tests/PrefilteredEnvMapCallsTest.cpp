// SPDX-License-Identifier: MIT
//
// Prefiltered environment maps and the BRDF table on the fake driver: every call, and what the settings change.
#include "PrefilteredEnvMap.h"

#include "EnvironmentPictureTools.h"
#include "PrefilteredEnvMapTestTools.h"

namespace Harrow::Vrk::Test
{

class PrefilteredEnvMapCallsTest : public PrefilteredEnvMapFixture
{
};

// ---- cube maps -----------------------------------------------------------------------------------------------------

TEST_F(PrefilteredEnvMapCallsTest, ACubeMapMakesItsCallsInOrder)
{
    const auto source = newTexture(GL_TEXTURE_CUBE_MAP);
    const LogCapture log;
    const CallLog calls;
    const auto result = filteredCube(source.get(), 4, SHADING_PHYSICALLY_BASED);

    // 1, 2
    QStringList expected = queries(false) << CallLog::call("glUseProgram", 1);
    // 3: the texture
    expected << writes("glGenTextures", 1) << activate(3) << bindName(2, GL_TEXTURE_CUBE_MAP);
    expected += filters(GL_TEXTURE_CUBE_MAP, GL_NEAREST, GL_NEAREST);
    for (GLenum face = 0; face < 6; ++face)
        expected << storage(kFirstFace + face, 4, 4);
    expected << CallLog::call("glGenerateMipmap", GL_TEXTURE_CUBE_MAP) << activate(3)
             << bindName(0, GL_TEXTURE_CUBE_MAP);
    // 4: framebuffer, quad and source
    expected += beginning(1);
    expected << activate(3) << bindName(1, GL_TEXTURE_CUBE_MAP);
    // 5: uniforms
    expected += filterUniforms(3, 64, 3);
    expected << uniformQuery(1, "u_Roughness") << uniformQuery(1, "u_Transform");
    // 6: state
    expected << CallLog::call("glDisable", GL_BLEND) << CallLog::call("glDisable", GL_DEPTH_TEST)
             << CallLog::call("glDepthMask", GL_FALSE) << CallLog::call("glClearColor", 1, 1, 0, 1);
    // 7: faces of levels
    for (int level = 0; level < 3; ++level)
    {
        expected << CallLog::call("glViewport", 0, 0, 4 >> level, 4 >> level);
        for (GLenum face = 0; face < 6; ++face)
        {
            expected << CallLog::call("glFramebufferTexture2D", GL_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, kFirstFace + face,
                                      2, level)
                     << CallLog::call("glClear", GL_COLOR_BUFFER_BIT) << writes("glUniformMatrix3fv", 9, 1, GL_FALSE)
                     << uniform1f(8, level / 2.0);
            expected += drawn();
            expected << CallLog::call("glFramebufferTexture2D", GL_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, GL_TEXTURE_2D, 0,
                                      0);
        }
    }
    // 8: the result. The source holds unit 3.
    expected += depthOn();
    expected += finished(GL_TEXTURE_CUBE_MAP, GL_CLAMP_TO_EDGE, 3).replaceInStrings(activate(3), activate(2));
    // 9: letting go
    expected << activate(2) << bindName(0, GL_TEXTURE_CUBE_MAP) << activate(3) << bindName(0, GL_TEXTURE_CUBE_MAP)
             << vertexArray(0) << framebuffer(GL_FRAMEBUFFER, 0) << CallLog::call("glUseProgram", 0);
    expected += deleted();
    expected << viewportRestored();

    EXPECT_EQ(shown(withoutBuilding(calls.list())), shown(expected));
    EXPECT_EQ(log.texts(), QStringList());
    ASSERT_TRUE(result);
    EXPECT_TRUE(result->isReadOnly());
    EXPECT_EQ(result->target(), GLenum(GL_TEXTURE_CUBE_MAP));
    EXPECT_FALSE(result->isBound());
    EXPECT_FALSE(source->isBound());
    EXPECT_EQ(ShaderProgram::currentShaderProgram(), nullptr);
}

TEST_F(PrefilteredEnvMapCallsTest, TheFacesMatricesTurnTheQuadIntoDirections)
{
    const auto source = newTexture(GL_TEXTURE_CUBE_MAP);
    ASSERT_TRUE(filteredCube(source.get(), 1, SHADING_TRADITIONAL));
    ASSERT_EQ(transforms().size(), 6u);
    // As GLSL multiplies a row vector by a matrix whose columns lie one behind the other.
    for (std::size_t face = 0; face < 6; ++face)
        for (const double s : {0.1, 0.5, 0.8})
            for (const double t : {0.2, 0.5, 0.7})
            {
                const auto& m = transforms()[face];
                const double quad[] = {2 * s - 1, 2 * t - 1, -1};
                double direction[3] = {};
                for (std::size_t column = 0; column < 3; ++column)
                    for (std::size_t row = 0; row < 3; ++row)
                        direction[column] += quad[row] * double(m[column * 3 + row]);
                const auto place = Environment::placeOf({direction[0], direction[1], direction[2]});
                EXPECT_EQ(place.face, int(face));
                EXPECT_NEAR(place.s, s, 1e-6) << "face " << face;
                EXPECT_NEAR(place.t, t, 1e-6) << "face " << face;
            }
}

TEST_F(PrefilteredEnvMapCallsTest, UniformsThatTheCubesProgramLacksAreNotSet)
{
    for (const char* const name : {"u_Transform", "u_Roughness", "u_RoughnessScale", "u_NumSamples"})
        driver.setUniformLocation(name, -1);
    const auto source = newTexture(GL_TEXTURE_CUBE_MAP);
    const CallLog calls;
    EXPECT_TRUE(filteredCube(source.get(), 2, SHADING_TRADITIONAL));
    EXPECT_EQ(calls.named({line("glUniform1f"), line("glUniformMatrix3fv"), line("glUniform1ui")}), QStringList());
    EXPECT_EQ(calls.count(line("glDrawArrays")), 12);
}

TEST_F(PrefilteredEnvMapCallsTest, ACubeMapOfOneTexelHasTheRoughnessZeroByZero)
{
    const auto source = newTexture(GL_TEXTURE_CUBE_MAP);
    const CallLog calls;
    EXPECT_TRUE(filteredCube(source.get(), 1, SHADING_TRADITIONAL));
    const QStringList settings = calls.named({line("glUniform1f")});
    ASSERT_EQ(settings.size(), 1 + 6);
    EXPECT_EQ(settings.first(), uniform1f(7, 1));
    for (const QString& setting : settings.mid(1))
        EXPECT_TRUE(setting.contains(line("nan"))) << setting.toStdString();
}

TEST_F(PrefilteredEnvMapCallsTest, CubeMapsNeverTakeEachTexel)
{
    const auto source = newTexture(GL_TEXTURE_CUBE_MAP);
    for (const ShadingModel model : {SHADING_LAMBERTIAN_DIFFUSE, SHADING_OREN_NAYAR_DIFFUSE})
    {
        script.sources.clear();
        const CallLog calls;
        EXPECT_TRUE(filteredCube(source.get(), 2, model));
        EXPECT_EQ(calls.named({line("glUniform1ui")}), QStringList(uniform1ui(6, 64)));
        for (const QByteArray& text : script.sources)
            EXPECT_FALSE(text.contains("#define SOLID_SAMPLING"));
    }
}

// ---- latitude-longitude maps ---------------------------------------------------------------------------------------

namespace
{

/// Step 4: a copy of 8 by 4 texels as texture 2.
QStringList copied(int width, int height)
{
    const auto attached = [](GLenum target, GLuint texture)
    { return CallLog::call("glFramebufferTexture2D", target, GL_COLOR_ATTACHMENT0, GL_TEXTURE_2D, texture, 0); };
    QStringList calls = {writes("glGenTextures", 1), bindName(2),
                         CallLog::call("glTexImage2D", GL_TEXTURE_2D, 0, GL_RGB16F, width, height, 0, GL_RGB,
                                       GL_UNSIGNED_BYTE, nullptr)};
    calls += filters(GL_TEXTURE_2D, GL_LINEAR, GL_LINEAR);
    calls << parameter(GL_TEXTURE_2D, GL_TEXTURE_WRAP_S, GL_CLAMP_TO_EDGE)
          << parameter(GL_TEXTURE_2D, GL_TEXTURE_WRAP_T, GL_CLAMP_TO_EDGE) << writes("glGenFramebuffers", 1)
          << writes("glGenFramebuffers", 1) << framebuffer(GL_READ_FRAMEBUFFER, 1)
          << framebuffer(GL_DRAW_FRAMEBUFFER, 2) << attached(GL_READ_FRAMEBUFFER, 1) << attached(GL_DRAW_FRAMEBUFFER, 2)
          << CallLog::call("glBlitFramebuffer", 0, 0, 16, 8, 0, 0, width, height, GL_COLOR_BUFFER_BIT, GL_LINEAR)
          << attached(GL_READ_FRAMEBUFFER, 0) << attached(GL_DRAW_FRAMEBUFFER, 0) << writes("glDeleteFramebuffers", 1)
          << writes("glDeleteFramebuffers", 1);
    return calls;
}

/// Steps 9 to 15 into a map of 8 by 4 texels, in tiles of 3 by 3.
QStringList filtered(GLuint resultName, GLuint framebufferName, unsigned samples)
{
    QStringList calls = {writes("glGenTextures", 1), activate(3), bindName(resultName)};
    calls += filters(GL_TEXTURE_2D, GL_NEAREST, GL_NEAREST);
    calls << storage(GL_TEXTURE_2D, 8, 4) << CallLog::call("glGenerateMipmap", GL_TEXTURE_2D) << activate(3)
          << bindName(0);
    calls += beginning(framebufferName);
    calls += filterUniforms(0, samples, 3);
    calls << uniformQuery(1, "u_Roughness") << CallLog::call("glDisable", GL_BLEND)
          << CallLog::call("glDisable", GL_DEPTH_TEST) << CallLog::call("glEnable", GL_SCISSOR_TEST)
          << CallLog::call("glDepthMask", GL_FALSE) << CallLog::call("glClearColor", 1, 1, 0, 1);
    const std::vector<std::array<int, 4>> tiles[] = {
        {{0, 0, 3, 3}, {0, 3, 3, 1}, {3, 0, 3, 3}, {3, 3, 3, 1}, {6, 0, 2, 3}, {6, 3, 2, 1}},
        {{0, 0, 3, 2}, {3, 0, 1, 2}},
        {{0, 0, 2, 1}},
    };
    for (int level = 0; level < 3; ++level)
    {
        calls << CallLog::call("glViewport", 0, 0, 8 >> level, 4 >> level)
              << CallLog::call("glFramebufferTexture2D", GL_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, GL_TEXTURE_2D,
                               resultName, level)
              << CallLog::call("glClear", GL_COLOR_BUFFER_BIT) << uniform1f(8, level / 2.0);
        for (const auto& tile : tiles[level])
        {
            calls << CallLog::call("glScissor", tile[0], tile[1], tile[2], tile[3]);
            calls += drawn();
        }
        calls << CallLog::call("glFramebufferTexture", GL_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, 0, level);
    }
    calls += depthOn();
    calls << CallLog::call("glDisable", GL_SCISSOR_TEST);
    calls += finished(GL_TEXTURE_2D, GL_REPEAT, 3).replaceInStrings(bindName(2), bindName(resultName));
    calls << activate(3) << bindName(0) << vertexArray(0) << framebuffer(GL_FRAMEBUFFER, 0)
          << CallLog::call("glUseProgram", 0) << activate(0) << bindName(0);
    calls += deleted();
    calls << viewportRestored();
    calls += framebuffersRestored();
    return calls;
}

} // namespace

TEST_F(PrefilteredEnvMapCallsTest, ALatLongMapMakesItsCallsInOrder)
{
    SetPrefilteredTilseSizeMax(3);
    const auto source = newTexture();
    const LogCapture log;
    const CallLog calls;
    const auto result = filteredLatLong(source.get(), 8, 4, SHADING_PHYSICALLY_BASED);
    QStringList expected = queries(true) + formRead();
    expected << activate(0) << bindName(1) << CallLog::call("glUseProgram", 1);
    expected += filtered(2, 1, 64);
    EXPECT_EQ(shown(withoutBuilding(calls.list())), shown(expected));
    EXPECT_EQ(log.texts(), QStringList());
    ASSERT_TRUE(result);
    EXPECT_TRUE(result->isReadOnly());
    EXPECT_EQ(result->target(), GLenum(GL_TEXTURE_2D));
    EXPECT_FALSE(result->isBound());
    EXPECT_FALSE(source->isBound());
    EXPECT_EQ(ShaderProgram::currentShaderProgram(), nullptr);
}

TEST_F(PrefilteredEnvMapCallsTest, ALatLongSourceBeyondTheLimitsIsCopiedFirst)
{
    SetPrefilteredTilseSizeMax(3);
    SetPrefilteredSourceWidthMax(8);
    SetPrefilteredSourceHeightMax(4);
    const auto source = newTexture();
    const CallLog calls;
    EXPECT_TRUE(filteredLatLong(source.get(), 8, 4, SHADING_LAMBERTIAN_DIFFUSE));
    QStringList expected = queries(true) + formRead();
    expected << activate(0);
    expected += copied(8, 4);
    expected << bindName(2) << CallLog::call("glUseProgram", 1);
    expected += filtered(3, 3, 8 * 4);
    expected << writes("glDeleteTextures", 1); // the copy
    // The result goes with its pointer.
    EXPECT_EQ(shown(withoutBuilding(calls.list())), shown(expected << writes("glDeleteTextures", 1)));
}

TEST_F(PrefilteredEnvMapCallsTest, EitherLimitIsEnoughForACopy)
{
    const auto source = newTexture();
    const struct
    {
        int width, height, copyWidth, copyHeight;
    } rows[] = {{15, 100, 15, 8}, {100, 7, 16, 7}, {1, 1, 1, 1}};
    for (const auto& row : rows)
    {
        SetPrefilteredSourceWidthMax(row.width);
        SetPrefilteredSourceHeightMax(row.height);
        const CallLog calls;
        EXPECT_TRUE(filteredLatLong(source.get(), 8, 4, SHADING_TRADITIONAL));
        EXPECT_EQ(calls.named({line("glBlitFramebuffer")}),
                  QStringList(CallLog::call("glBlitFramebuffer", 0, 0, 16, 8, 0, 0, row.copyWidth, row.copyHeight,
                                            GL_COLOR_BUFFER_BIT, GL_LINEAR)));
    }
    SetPrefilteredSourceWidthMax(16);
    SetPrefilteredSourceHeightMax(8);
    const CallLog calls;
    EXPECT_TRUE(filteredLatLong(source.get(), 8, 4, SHADING_TRADITIONAL));
    EXPECT_EQ(calls.count(line("glBlitFramebuffer")), 0);
    EXPECT_EQ(calls.count(line("glDeleteTextures")), 1) << "the result alone";
}

TEST_F(PrefilteredEnvMapCallsTest, DiffuseModelsTakeEachTexelUnlessImportanceSamplingIsOn)
{
    const auto source = newTexture();
    for (int model = 0; model < 5; ++model)
        for (const bool importance : {false, true})
        {
            SetDiffuseImportanceSampling(importance);
            script.sources.clear();
            const CallLog calls;
            EXPECT_TRUE(filteredLatLong(source.get(), 8, 4, ShadingModel(model)));
            const bool takesTexels = model >= 3 && !importance;
            EXPECT_EQ(calls.named({line("glUniform1ui")}), QStringList(uniform1ui(6, takesTexels ? 16 * 8 : 64)))
                << model;
            for (const QByteArray& text : script.sources)
                EXPECT_EQ(text.contains("#define SOLID_SAMPLING 1\n"), takesTexels) << model;
        }
}

TEST_F(PrefilteredEnvMapCallsTest, ATileAboveTheTargetIsASingleDrawForEachLevel)
{
    const auto source = newTexture();
    const struct
    {
        int tile, draws;
    } rows[] = {{1024, 3}, {8, 3}, {std::numeric_limits<int>::max(), 3}, {7, 4}, {4, 4}, {2, 8 + 2 + 1}, {1, 42}};
    for (const auto& row : rows)
    {
        SetPrefilteredTilseSizeMax(row.tile);
        const CallLog calls;
        EXPECT_TRUE(filteredLatLong(source.get(), 8, 4, SHADING_TRADITIONAL));
        EXPECT_EQ(calls.count(line("glDrawArrays")), row.draws) << row.tile;
        EXPECT_EQ(calls.count(line("glFlush")), row.draws) << row.tile;
        EXPECT_EQ(calls.count(line("glScissor")), row.draws) << row.tile;
    }
}

TEST_F(PrefilteredEnvMapCallsTest, TheTileSizeIsAThousandAndTwentyFourAtFirst)
{
    const auto source = newTexture();
    const CallLog calls;
    EXPECT_TRUE(filteredLatLong(source.get(), 1025, 1, SHADING_TRADITIONAL));
    EXPECT_EQ(calls.named({line("glScissor")}),
              QStringList({CallLog::call("glScissor", 0, 0, 1024, 1), CallLog::call("glScissor", 1024, 0, 1, 1)}));
}

TEST_F(PrefilteredEnvMapCallsTest, ALatLongMapWithoutTexelsDrawsNothingAndEnds)
{
    const auto source = newTexture();
    for (const auto& [width, height] : {std::pair(0, 0), {-8, 4}, {8, 0}, {8, -4}})
    {
        const CallLog calls;
        EXPECT_TRUE(filteredLatLong(source.get(), width, height, SHADING_TRADITIONAL));
        EXPECT_EQ(calls.count(line("glDrawArrays")), 0);
    }
}

TEST_F(PrefilteredEnvMapCallsTest, AResultThatTakesTheLastUnitGivesItBackToTheSource)
{
    const auto source = newTexture();
    const auto holders = takeUnits(kUnits - 1);
    const CallLog calls;
    EXPECT_TRUE(filteredLatLong(source.get(), 2, 1, SHADING_TRADITIONAL));
    const QStringList list = calls.list();
    const qsizetype draw = list.indexOf(CallLog::call("glDrawArrays", GL_TRIANGLES, 0, 6));
    const QStringList binds = list.mid(0, draw).filter(QRegularExpression(line("^glBindTexture|^glActiveTexture")));
    ASSERT_GE(binds.size(), 2);
    EXPECT_EQ(binds.mid(binds.size() - 2), QStringList({bindName(0), bindName(source->textureID())}));
    for (const auto& holder : holders)
        holder->unbind();
}

// ---- the table -----------------------------------------------------------------------------------------------------

TEST_F(PrefilteredEnvMapCallsTest, TheTableMakesItsCallsInOrder)
{
    const LogCapture log;
    const CallLog calls;
    const auto result = table();
    QStringList expected = queries(true) << CallLog::call("glUseProgram", 1);
    expected << writes("glGenTextures", 1) << activate(3) << bindName(1);
    expected += filters(GL_TEXTURE_2D, GL_LINEAR, GL_LINEAR);
    expected << parameter(GL_TEXTURE_2D, GL_TEXTURE_MAX_LEVEL, 0) << storage(GL_TEXTURE_2D, 32, 16) << activate(3)
             << bindName(0);
    expected += beginning(1);
    expected << uniformQuery(1, "u_NumSamples") << uniform1i(6, 1024) << uniformQuery(1, "u_NumLODLevels")
             << uniform1ui(10, 5) << CallLog::call("glDisable", GL_BLEND) << CallLog::call("glDisable", GL_DEPTH_TEST)
             << CallLog::call("glDepthMask", GL_FALSE) << CallLog::call("glViewport", 0, 0, 32, 16)
             << CallLog::call("glFramebufferTexture2D", GL_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, GL_TEXTURE_2D, 1, 0);
    expected += drawn();
    expected << CallLog::call("glFramebufferTexture", GL_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, 0, 0);
    expected += depthOn();
    expected << activate(3) << bindName(1) << parameter(GL_TEXTURE_2D, GL_TEXTURE_WRAP_S, GL_CLAMP_TO_EDGE)
             << parameter(GL_TEXTURE_2D, GL_TEXTURE_WRAP_T, GL_CLAMP_TO_EDGE) << activate(3) << bindName(0)
             << vertexArray(0) << framebuffer(GL_FRAMEBUFFER, 0) << CallLog::call("glUseProgram", 0);
    expected += deleted();
    expected << viewportRestored();
    expected += framebuffersRestored();
    EXPECT_EQ(shown(withoutBuilding(calls.list())), shown(expected));
    EXPECT_EQ(log.texts(), QStringList());
    ASSERT_TRUE(result);
    EXPECT_TRUE(result->isReadOnly());
    EXPECT_FALSE(result->isBound());
}

} // namespace Harrow::Vrk::Test
