// SPDX-License-Identifier: MIT
//
// The cube map conversion on the fake driver: the calls of a conversion, of a filter, of a strip and of a copy, one by
// one; the batches of an array; and what the programs are made of.
#include "ZelImageCubemapUtils.h"

#include "GLSLMacroProcessor.h"
#include "ImageCubemapCallTools.h"

#include <QFile>

#include <algorithm>
#include <utility>

namespace Harrow::Vrk::Test
{

class ImageCubemapCallsTest : public ImageCubemapCallFixture
{
protected:
    /// The renderer's quad: vertex array and two buffers.
    static QStringList makingTheQuad()
    {
        return {writes("glGetIntegerv", GL_MAX_VERTEX_ATTRIBS),
                writes("glGenBuffers", 1),
                arrayBuffer(1),
                arrayData(8 * 4),
                arrayBuffer(0),
                writes("glGenBuffers", 1),
                arrayBuffer(2),
                arrayData(12 * 4),
                arrayBuffer(0)};
    }

    static QStringList filtersAndEdges(GLenum target)
    {
        return {parameter(target, GL_TEXTURE_WRAP_S, GL_CLAMP_TO_EDGE),
                parameter(target, GL_TEXTURE_WRAP_T, GL_CLAMP_TO_EDGE),
                parameter(target, GL_TEXTURE_WRAP_R, GL_CLAMP_TO_EDGE),
                parameter(target, GL_TEXTURE_MAG_FILTER, GL_LINEAR),
                parameter(target, GL_TEXTURE_MIN_FILTER, GL_LINEAR_MIPMAP_LINEAR)};
    }

    static QStringList clearing(int face)
    {
        constexpr int colors[6][3] = {{1, 0, 0}, {0, 1, 0}, {0, 0, 1}, {1, 1, 0}, {0, 1, 1}, {1, 0, 1}};
        return {CallLog::call("glClearColor", colors[face][0], colors[face][1], colors[face][2], 1),
                CallLog::call("glClear", GL_COLOR_BUFFER_BIT), CallLog::call("glClearColor", 0, 0, 0, 0)};
    }

    static QStringList drawing()
    {
        return {vertexArray(1),
                writes("glGetIntegerv", GL_CURRENT_PROGRAM),
                CallLog::call("glDrawArrays", GL_TRIANGLE_STRIP, 0, 4),
                vertexArray(0),
                CallLog::call("glFlush"),
                CallLog::call("glFinish")};
    }

    /// From the vertex array to the identity, with texture 3 as the one that is never attached.
    static QStringList beginning(GLenum internalFormat, GLenum format, GLenum type, int size)
    {
        return {writes("glGenVertexArrays", 1),
                vertexArray(1),
                CallLog::call("glEnableVertexAttribArray", 0),
                arrayBuffer(1),
                CallLog::call("glVertexAttribPointer", 0, 2, GL_FLOAT, 0, 0, nullptr),
                arrayBuffer(0),
                vertexArray(0),
                writes("glGenFramebuffers", 1),
                CallLog::call("glBindFramebuffer", GL_FRAMEBUFFER, 1),
                writes("glGenTextures", 1),
                activate(1),
                bindName(3),
                activate(1),
                parameter(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_NEAREST),
                parameter(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_NEAREST),
                CallLog::call("glTexImage2D", GL_TEXTURE_2D, 0, internalFormat, size, size, 0, format, type, nullptr),
                activate(1),
                activate(1),
                bindName(0),
                CallLog::call("glDisable", GL_BLEND),
                CallLog::call("glUseProgram", 1),
                writes("glUniformMatrix4fv", 20, 1, 0)};
    }

    static QStringList ending(GLenum target)
    {
        return {CallLog::call("glFlush"),
                CallLog::call("glUseProgram", 0),
                CallLog::call("glBindFramebuffer", GL_FRAMEBUFFER, 0),
                writes("glDeleteFramebuffers", 1),
                writes("glDeleteTextures", 1),
                activate(2),
                CallLog::call("glGenerateMipmap", target),
                activate(2),
                activate(2),
                bindName(0, target)};
    }

    static QStringList forgettingTheQuad()
    {
        return {writes("glDeleteVertexArrays", 1), writes("glDeleteBuffers", 1), writes("glDeleteBuffers", 1),
                CallLog::call("glFlush")};
    }
};

TEST_F(ImageCubemapCallsTest, AConversionMakesItsCallsInOrder)
{
    const auto source = newTexture();
    const CallLog calls;
    const auto result = converted(*source, Type::Linear);
    ASSERT_NE(result, nullptr);

    QStringList expected = {activate(3), bindName(1),
                            writes("glGetTexLevelParameteriv", GL_TEXTURE_2D, 0, GL_TEXTURE_WIDTH),
                            writes("glGetTexLevelParameteriv", GL_TEXTURE_2D, 0, GL_TEXTURE_HEIGHT)};
    expected += makingTheQuad();
    expected += {writes("glGetTexLevelParameteriv", GL_TEXTURE_2D, 0, GL_TEXTURE_INTERNAL_FORMAT),
                 writes("glGenTextures", 1), activate(2), bindName(2, GL_TEXTURE_CUBE_MAP)};
    for (int face = 0; face < 6; ++face)
        expected += CallLog::call("glTexImage2D", GL_TEXTURE_CUBE_MAP_POSITIVE_X + face, 0, GL_RGBA8, 2, 2, 0, GL_RGBA,
                                  GL_UNSIGNED_BYTE, nullptr);
    expected += filtersAndEdges(GL_TEXTURE_CUBE_MAP);
    expected += beginning(GL_RGBA8, GL_RGBA, GL_UNSIGNED_BYTE, 2);
    for (int face = 0; face < 6; ++face)
    {
        expected += {CallLog::call("glFramebufferTexture2D", GL_FRAMEBUFFER, GL_COLOR_ATTACHMENT0,
                                   GL_TEXTURE_CUBE_MAP_POSITIVE_X + face, 2, 0),
                     CallLog::call("glViewport", 0, 0, 2, 2), writes("glDrawBuffers", 1)};
        expected += clearing(face);
        expected += {writes("glUniformMatrix4x2fv", 22, 1, 0),
                     activate(3), // bound all the time
                     parameter(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_NEAREST),
                     parameter(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_NEAREST),
                     CallLog::call("glUniform1i", 23, 3),
                     writes("glUniformMatrix3fv", 21, 1, 0)};
        expected += drawing();
        expected += activate(3);
    }
    expected += ending(GL_TEXTURE_CUBE_MAP);
    expected += forgettingTheQuad();
    expected += {activate(3), bindName(0)};
    EXPECT_EQ(shown(withoutBuilding(calls.list())), shown(expected));
    EXPECT_FALSE(source->isBound());
    EXPECT_FALSE(result->isBound());
}

TEST_F(ImageCubemapCallsTest, AFilterOfAnArrayMakesItsCallsInOrder)
{
    const auto source = newTexture(GL_TEXTURE_CUBE_MAP);
    const CallLog calls;
    const auto result = cosine(*source, GL_TEXTURE_CUBE_MAP_ARRAY, 2, 2.0f);
    ASSERT_NE(result, nullptr);

    constexpr GLenum array = GL_TEXTURE_CUBE_MAP_ARRAY;
    QStringList expected = makingTheQuad();
    expected += {activate(3),
                 bindName(1, GL_TEXTURE_CUBE_MAP),
                 writes("glGenTextures", 1),
                 activate(2),
                 bindName(2, array),
                 CallLog::call("glTexImage3D", array, 0, GL_RGBA32F, 4, 4, 12, 0, GL_RGBA, GL_FLOAT, nullptr)};
    expected += filtersAndEdges(array);
    expected += writes("glGetTexLevelParameteriv", array, 0, GL_TEXTURE_DEPTH);
    expected += beginning(GL_RGBA32F, GL_RGBA, GL_FLOAT, 4);
    for (int face = 0; face < 6; ++face)
    {
        expected +=
            {CallLog::call("glFramebufferTextureLayer", GL_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, 2, 0, face),
             CallLog::call("glFramebufferTextureLayer", GL_FRAMEBUFFER, GL_COLOR_ATTACHMENT0 + 1, 2, 0, face + 6),
             CallLog::call("glViewport", 0, 0, 4, 4), writes("glDrawBuffers", 2)};
        expected += clearing(face);
        expected += {CallLog::call("glUniform1f", 30, 0.0),
                     CallLog::call("glUniform1f", 31, 1.0),
                     CallLog::call("glEnable", GL_TEXTURE_CUBE_MAP_SEAMLESS),
                     activate(3),
                     parameter(GL_TEXTURE_CUBE_MAP, GL_TEXTURE_MIN_FILTER, GL_LINEAR_MIPMAP_LINEAR),
                     parameter(GL_TEXTURE_CUBE_MAP, GL_TEXTURE_MAG_FILTER, GL_LINEAR),
                     CallLog::call("glUniform1i", 23, 3),
                     writes("glUniformMatrix3fv", 21, 1, 0)};
        expected += drawing();
        expected += {CallLog::call("glDisable", GL_TEXTURE_CUBE_MAP_SEAMLESS), activate(3)};
    }
    expected += ending(array);
    expected += {activate(3), bindName(0, GL_TEXTURE_CUBE_MAP)};
    expected += forgettingTheQuad();
    EXPECT_EQ(shown(withoutBuilding(calls.list())), shown(expected));
}

TEST_F(ImageCubemapCallsTest, AnArrayIsDrawnInBatchesThatLeaveNoCubeOver)
{
    const struct
    {
        int cubes;
        int batch;
    } rows[] = {{1, 1}, {2, 2}, {3, 1}, {4, 4}, {5, 1}, {6, 2}, {7, 1}, {8, 8}, {12, 4}, {16, 8}, {24, 8}};
    const auto source = newTexture(GL_TEXTURE_CUBE_MAP);
    for (const auto& row : rows)
    {
        cubemap.drawBuffers.clear();
        script.sources.clear();
        const CallLog calls;
        const auto result = cosine(*source, GL_TEXTURE_CUBE_MAP_ARRAY, row.cubes);
        ASSERT_NE(result, nullptr);
        EXPECT_EQ(cubemap.depth, 6 * row.cubes);
        const QByteArray define =
            "#version 150\n#define ZEL_CUBERENDER_NDOT_BATCH_SIZE " + QByteArray::number(row.batch) + "\n";
        for (const QByteArray& text : std::as_const(script.sources))
            EXPECT_TRUE(text.startsWith(define)) << text.left(80).toStdString();
        EXPECT_EQ(script.sources.size(), 2) << "stages";

        std::vector<GLenum> attachments;
        for (int slot = 0; slot < row.batch; ++slot)
            attachments.push_back(GLenum(GL_COLOR_ATTACHMENT0 + slot));
        EXPECT_EQ(cubemap.drawBuffers, std::vector(std::size_t(6 * row.cubes / row.batch), attachments)) << row.cubes;
        QStringList layers;
        for (int first = 0; first < row.cubes; first += row.batch)
            for (int face = 0; face < 6; ++face)
                for (int slot = 0; slot < row.batch; ++slot)
                    layers.append(CallLog::call("glFramebufferTextureLayer", GL_FRAMEBUFFER,
                                                GL_COLOR_ATTACHMENT0 + slot, result->textureID(), 0,
                                                face + (first + slot) * 6));
        EXPECT_EQ(calls.named({line("glFramebufferTextureLayer")}), layers) << row.cubes;
    }
}

TEST_F(ImageCubemapCallsTest, ThePlaceOfACubeIsItsNumberOverTheLastOne)
{
    const auto source = newTexture(GL_TEXTURE_CUBE_MAP);
    const auto values = [&](int cubes, float power)
    {
        const CallLog calls;
        EXPECT_NE(cosine(*source, GL_TEXTURE_CUBE_MAP_ARRAY, cubes, power), nullptr);
        return calls.named({line("glUniform1f")});
    };
    const auto sixTimes = [](const QStringList& batch)
    {
        QStringList all;
        for (int face = 0; face < 6; ++face)
            all += batch;
        return all;
    };
    const auto set = [](int slot, float value) { return CallLog::call("glUniform1f", 30 + slot, value); };
    EXPECT_EQ(values(1, 2.0f), sixTimes({set(0, 0.0f)})) << "one cube is not blurred";
    EXPECT_EQ(values(3, 1.0f), sixTimes({set(0, 0.0f)}) + sixTimes({set(0, 0.5f)}) + sixTimes({set(0, 1.0f)}));
    EXPECT_EQ(values(3, 0.5f), sixTimes({set(0, 0.0f)}) + sixTimes({set(0, 0.25f)}) + sixTimes({set(0, 1.0f)}));
    EXPECT_EQ(values(2, 3.0f), sixTimes({set(0, 0.0f), set(1, 1.0f)}));
}

TEST_F(ImageCubemapCallsTest, ABlurTakesThePlacesOfTheCubesAsTheyAre)
{
    const auto source = newTexture(GL_TEXTURE_CUBE_MAP);
    const auto values = [&](GLenum target, int cubes)
    {
        const CallLog calls;
        EXPECT_NE(blurred(*source, target, cubes), nullptr);
        return calls.named({line("glUniform1f")});
    };
    QStringList thirds, fifths;
    for (int face = 0; face < 6; ++face)
        for (int slot = 0; slot < 4; ++slot)
            thirds.append(CallLog::call("glUniform1f", 30 + slot, float(slot) / 3.0f));
    for (int first = 0; first < 6; first += 2)
        for (int face = 0; face < 6; ++face)
            for (int slot = 0; slot < 2; ++slot)
                fifths.append(CallLog::call("glUniform1f", 30 + slot, float(first + slot) / 5.0f));
    EXPECT_EQ(values(GL_TEXTURE_CUBE_MAP_ARRAY, 4), thirds);
    EXPECT_EQ(values(GL_TEXTURE_CUBE_MAP_ARRAY, 6), fifths);
    EXPECT_EQ(values(GL_TEXTURE_CUBE_MAP, 4), QStringList(6, CallLog::call("glUniform1f", 30, 0.0)));
}

TEST_F(ImageCubemapCallsTest, APlainCubemapIsOneCubeWhateverTheNumberOfLayers)
{
    const auto source = newTexture(GL_TEXTURE_CUBE_MAP);
    const CallLog calls;
    ASSERT_NE(cosine(*source, GL_TEXTURE_CUBE_MAP, 8), nullptr);
    EXPECT_EQ(calls.count(line("glDrawArrays")), 6);
    EXPECT_EQ(cubemap.drawBuffers, std::vector(6, std::vector<GLenum>{GL_COLOR_ATTACHMENT0}));
    EXPECT_EQ(calls.named({line("glUniform1f")}), QStringList(6, CallLog::call("glUniform1f", 30, 0.0)));
}

TEST_F(ImageCubemapCallsTest, TheBlurDefinesTheNumberUnderTheOtherFiltersName)
{
    const auto source = newTexture(GL_TEXTURE_CUBE_MAP);
    ASSERT_NE(blurred(*source, GL_TEXTURE_CUBE_MAP_ARRAY, 4), nullptr);
    ASSERT_EQ(script.sources.size(), 2);
    for (const QByteArray& text : std::as_const(script.sources))
    {
        EXPECT_TRUE(text.contains("#define ZEL_CUBERENDER_NDOT_BATCH_SIZE 4\n"));
        EXPECT_FALSE(text.contains("#define ZEL_CUBERENDER_BLUR_BATCH_SIZE"));
    }
}

TEST_F(ImageCubemapCallsTest, ABlurThatDoesNotCompileIsClearedAndNotDrawn)
{
    script.brokenMark = "ZEL_CUBERENDER_BLUR_BATCH_SIZE";
    const auto source = newTexture(GL_TEXTURE_CUBE_MAP);
    for (const GLenum target : {GL_TEXTURE_CUBE_MAP, GL_TEXTURE_CUBE_MAP_ARRAY})
    {
        const LogCapture log;
        const CallLog calls;
        ASSERT_NE(blurred(*source, target, 2), nullptr) << "the outcome of the build is not looked at";
        EXPECT_EQ(calls.count(line("glClear")), 6);
        EXPECT_EQ(calls.count(line("glDrawArrays")), 0);
        EXPECT_EQ(calls.count(line("glUniform1f")) + calls.count(line("glUniformMatrix3fv")), 0);
        EXPECT_EQ(calls.count(line("glGetUniformLocation")), 0) << "there is no program to ask";
        EXPECT_EQ(calls.count(line("glTexParameteri")), 12 + 5 + 2) << "the source has its filters all the same";
        EXPECT_EQ(log.messages(QtDebugMsg).filter(line("Unable")), QStringList());
        EXPECT_TRUE(log.messages(QtWarningMsg).contains(line("Shader program is not linked")));
    }
}

TEST_F(ImageCubemapCallsTest, TheStagesOfEachLayoutComeFromItsFiles)
{
    const auto source = newTexture();
    const struct
    {
        Type type;
        const char* fragment;
    } rows[] = {{Type::Sphere, "CubeRender_Sphere.frag"},
                {Type::LatLong, "CubeRender_LatLongSphere.frag"},
                {Type::Linear, "CubeRender_Linear.frag"},
                {Type::Cross, "CubeRender_Cross.frag"}};
    for (const auto& row : rows)
    {
        script.sources.clear();
        script.types.clear();
        ASSERT_NE(converted(*source, row.type), nullptr);
        QStringList stages, expected;
        for (auto stage = script.sources.cbegin(); stage != script.sources.cend(); ++stage)
            stages.append(line("%1: ").arg(script.types.value(stage.key())) + QString::fromUtf8(stage.value()));
        for (const auto& [type, file] : {std::pair<GLenum, const char*>{GL_VERTEX_SHADER, "CubeRender.vert"},
                                         {GL_FRAGMENT_SHADER, row.fragment},
                                         {GL_FRAGMENT_SHADER, "Func_ColorSpace.glslc"}})
        {
            QFile text(line(":/GLSL/src/") + line(file));
            ASSERT_TRUE(text.open(QIODevice::ReadOnly));
            expected.append(line("%1: ").arg(type) +
                            GLSLMacroProcessor::process(QString::fromUtf8(text.readAll()), nullptr));
        }
        std::sort(stages.begin(), stages.end());
        std::sort(expected.begin(), expected.end());
        EXPECT_EQ(stages, expected) << row.fragment;
    }
}

// ---- a strip -------------------------------------------------------------------------------------------------------

TEST_F(ImageCubemapCallsTest, AStripMakesItsCallsInOrder)
{
    script.attributes = {{"va_Vertex", 0, 1, GL_FLOAT_VEC3}};
    cubemap.width = 8;
    cubemap.height = 8;
    const auto source = newTexture(GL_TEXTURE_CUBE_MAP);
    const CallLog calls;
    ASSERT_NE(strip(*source, 1), nullptr);

    constexpr GLenum face0 = GL_TEXTURE_CUBE_MAP_POSITIVE_X;
    QStringList expected = {
        activate(3),
        bindName(1, GL_TEXTURE_CUBE_MAP),
        writes("glGetTexParameteriv", GL_TEXTURE_CUBE_MAP, GL_TEXTURE_MAX_LEVEL),
        writes("glGetTexLevelParameteriv", face0, 1, GL_TEXTURE_WIDTH),
        writes("glGetTexLevelParameteriv", face0, 1, GL_TEXTURE_HEIGHT),
        writes("glGetTexLevelParameteriv", face0, 1, GL_TEXTURE_INTERNAL_FORMAT),
        writes("glGetIntegerv", GL_VIEWPORT),
        writes("glGenTextures", 1),
        activate(2),
        bindName(2),
        parameter(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_LINEAR),
        parameter(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_LINEAR),
        parameter(GL_TEXTURE_2D, GL_TEXTURE_WRAP_S, GL_CLAMP_TO_EDGE),
        parameter(GL_TEXTURE_2D, GL_TEXTURE_WRAP_T, GL_CLAMP_TO_EDGE),
        CallLog::call("glTexImage2D", GL_TEXTURE_2D, 0, GL_RGBA8, 24, 4, 0, GL_RGBA, GL_UNSIGNED_BYTE, nullptr),
        CallLog::call("glGenerateMipmap", GL_TEXTURE_2D),
        activate(2),
        bindName(0),
        writes("glGenFramebuffers", 1)};
    expected += makingAFullscreenQuad();
    expected += {CallLog::call("glUseProgram", 1),     activate(3),
                 CallLog::call("glUniform1i", 24, 3),  CallLog::call("glBindFramebuffer", GL_FRAMEBUFFER, 1),
                 CallLog::call("glDisable", GL_BLEND), CallLog::call("glDisable", GL_DEPTH_TEST),
                 CallLog::call("glDepthMask", 0),      CallLog::call("glClearColor", 1, 1, 1, 1)};
    for (int face = 0; face < 6; ++face)
        expected += {CallLog::call("glViewport", face * 4, 0, 4, 4),
                     CallLog::call("glFramebufferTexture2D", GL_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, GL_TEXTURE_2D, 2, 0),
                     CallLog::call("glCheckFramebufferStatus", GL_FRAMEBUFFER),
                     writes("glUniformMatrix3fv", 25, 1, 0),
                     vertexArray(1),
                     writes("glGetIntegerv", GL_CURRENT_PROGRAM),
                     CallLog::call("glDrawArrays", GL_TRIANGLES, 0, 6),
                     vertexArray(0),
                     CallLog::call("glFlush"),
                     CallLog::call("glFramebufferTexture", GL_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, 0, 0)};
    expected += {CallLog::call("glBindFramebuffer", GL_FRAMEBUFFER, 0),
                 activate(3),
                 CallLog::call("glUseProgram", 0),
                 writes("glDeleteVertexArrays", 1),
                 writes("glDeleteBuffers", 1),
                 writes("glDeleteBuffers", 1),
                 writes("glDeleteFramebuffers", 1),
                 CallLog::call("glViewport", 0, 0, 0, 0),
                 activate(3),
                 bindName(0, GL_TEXTURE_CUBE_MAP)};
    EXPECT_EQ(shown(withoutBuilding(calls.list()).filter(QRegularExpression(line("^(?!glDeleteTextures)")))),
              shown(expected));
}

TEST_F(ImageCubemapCallsTest, AStripNamesTheOutputOfItsProgram)
{
    const auto source = newTexture(GL_TEXTURE_CUBE_MAP);
    const CallLog calls;
    ASSERT_NE(strip(*source), nullptr);
    EXPECT_EQ(calls.named({line("glBindFragDataLocation")}),
              QStringList(CallLog::call("glBindFragDataLocation", 1, 0, "out_FragColor")));
}

TEST_F(ImageCubemapCallsTest, AStripWithoutTheTransformIsDrawnWithoutIt)
{
    driver.setUniformLocation("u_Transform", -1);
    const auto source = newTexture(GL_TEXTURE_CUBE_MAP);
    const CallLog calls;
    ASSERT_NE(strip(*source), nullptr);
    EXPECT_EQ(calls.count(line("glUniformMatrix3fv")), 0);
    EXPECT_EQ(calls.count(line("glDrawArrays")), 6);
}

TEST_F(ImageCubemapCallsTest, AStripThatCannotBeDrawnIntoStopsAtTheFirstFace)
{
    cubemap.framebufferStatus = GL_FRAMEBUFFER_UNSUPPORTED;
    const auto source = newTexture(GL_TEXTURE_CUBE_MAP);
    const LogCapture log;
    const CallLog calls;
    EXPECT_EQ(strip(*source), nullptr);
    EXPECT_EQ(calls.count(line("glCheckFramebufferStatus")), 1);
    EXPECT_EQ(calls.count(line("glDrawArrays")), 0);
    EXPECT_EQ(
        shown(calls.named({line("glBindFramebuffer"), line("glDeleteTextures"), line("glUseProgram"),
                           line("glDeleteProgram"), line("glDeleteFramebuffers"), line("glViewport")})),
        shown({CallLog::call("glUseProgram", 1), CallLog::call("glBindFramebuffer", GL_FRAMEBUFFER, 1),
               CallLog::call("glViewport", 0, 0, 12, 2), CallLog::call("glBindFramebuffer", GL_FRAMEBUFFER, 0),
               writes("glDeleteTextures", 1), CallLog::call("glUseProgram", 0), CallLog::call("glDeleteProgram", 1),
               writes("glDeleteFramebuffers", 1), CallLog::call("glViewport", 0, 0, 0, 0)}))
        << "the strip goes at once, and the viewport comes back";
    EXPECT_EQ(log.texts(), QStringList());
}

TEST_F(ImageCubemapCallsTest, AStripLetsItsProgramAndThenItsFramebufferGo)
{
    const auto source = newTexture(GL_TEXTURE_CUBE_MAP);
    const CallLog calls;
    const auto result = strip(*source);
    ASSERT_NE(result, nullptr);
    EXPECT_EQ(shown(calls.named({line("glDeleteTextures"), line("glUseProgram"), line("glDeleteProgram"),
                                 line("glDeleteFramebuffers")})),
              shown({CallLog::call("glUseProgram", 1), CallLog::call("glUseProgram", 0),
                     CallLog::call("glDeleteProgram", 1), writes("glDeleteFramebuffers", 1)}));
}

// ---- a copy --------------------------------------------------------------------------------------------------------

TEST_F(ImageCubemapCallsTest, ACopyMakesItsCallsInOrder)
{
    cubemap.width = 4;
    cubemap.height = 4;
    const auto source = newTexture(GL_TEXTURE_CUBE_MAP);
    const auto destination = newTexture(GL_TEXTURE_CUBE_MAP);
    const CallLog calls;
    EXPECT_TRUE(ZelImageCubemapUtils::copyCubeMapTextureAsLod(source.get(), destination.get(), 0));

    constexpr GLenum cube = GL_TEXTURE_CUBE_MAP;
    constexpr GLenum face0 = GL_TEXTURE_CUBE_MAP_POSITIVE_X;
    const auto queries = [&]() -> QStringList
    {
        return {writes("glGetTexLevelParameteriv", face0, 0, GL_TEXTURE_WIDTH),
                writes("glGetTexLevelParameteriv", face0, 0, GL_TEXTURE_HEIGHT),
                writes("glGetTexLevelParameteriv", face0, 0, GL_TEXTURE_INTERNAL_FORMAT)};
    };
    QStringList expected = QStringList{activate(3), bindName(1, cube)} + queries();
    expected += {activate(3), bindName(0, cube), CallLog::call("glViewport", 0, 0, 4, 4),
                 activate(3), bindName(2, cube), writes("glGetTexParameteriv", cube, GL_TEXTURE_MAX_LEVEL)};
    expected += queries();
    expected += {activate(3),
                 bindName(0, cube),
                 writes("glGenFramebuffers", 1),
                 writes("glGenFramebuffers", 1),
                 CallLog::call("glBindFramebuffer", GL_READ_FRAMEBUFFER, 1),
                 CallLog::call("glBindFramebuffer", GL_DRAW_FRAMEBUFFER, 2)};
    for (int face = 0; face < 6; ++face)
        expected +=
            {CallLog::call("glFramebufferTexture2D", GL_READ_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, face0 + face, 1, 0),
             CallLog::call("glFramebufferTexture2D", GL_DRAW_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, face0 + face, 2, 0),
             CallLog::call("glCheckFramebufferStatus", GL_DRAW_FRAMEBUFFER),
             CallLog::call("glBlitFramebuffer", 0, 0, 4, 4, 0, 0, 4, 4, GL_COLOR_BUFFER_BIT, GL_LINEAR)};
    expected += {CallLog::call("glBindFramebuffer", GL_READ_FRAMEBUFFER, 0),
                 CallLog::call("glBindFramebuffer", GL_DRAW_FRAMEBUFFER, 0), writes("glDeleteFramebuffers", 1),
                 writes("glDeleteFramebuffers", 1)};
    EXPECT_EQ(shown(calls.list()), shown(expected));
}

TEST_F(ImageCubemapCallsTest, ACopyThatCannotBeDrawnIntoStopsAtTheFirstFace)
{
    cubemap.framebufferStatus = GL_FRAMEBUFFER_UNSUPPORTED;
    const auto source = newTexture(GL_TEXTURE_CUBE_MAP);
    const auto destination = newTexture(GL_TEXTURE_CUBE_MAP);
    const CallLog calls;
    EXPECT_FALSE(ZelImageCubemapUtils::copyCubeMapTextureAsLod(source.get(), destination.get(), 0));
    EXPECT_EQ(calls.count(line("glCheckFramebufferStatus")), 1);
    EXPECT_EQ(calls.count(line("glBlitFramebuffer")), 0);
    EXPECT_EQ(calls.named({line("glBindFramebuffer")}),
              QStringList({CallLog::call("glBindFramebuffer", GL_READ_FRAMEBUFFER, 1),
                           CallLog::call("glBindFramebuffer", GL_DRAW_FRAMEBUFFER, 2),
                           CallLog::call("glBindFramebuffer", GL_READ_FRAMEBUFFER, 0),
                           CallLog::call("glBindFramebuffer", GL_DRAW_FRAMEBUFFER, 0)}));
}

TEST_F(ImageCubemapCallsTest, ACopyOfWhatIsNoCubemapCallsNothing)
{
    const auto source = newTexture(GL_TEXTURE_2D);
    const auto destination = newTexture(GL_TEXTURE_CUBE_MAP);
    const CallLog calls;
    EXPECT_FALSE(ZelImageCubemapUtils::copyCubeMapTextureAsLod(source.get(), destination.get(), 0));
    EXPECT_EQ(calls.list(), QStringList()) << "the viewport too stays as it is";
}

TEST_F(ImageCubemapCallsTest, ACopyTakesTheLevelsThatTheDestinationAllows)
{
    const struct
    {
        GLint maxLevel;
        int level;
        bool is;
    } rows[] = {{0, 0, true},  {0, 1, false},  {1, 1, true},   {1, 0, true},   {1, 2, false},      {2, 2, true},
                {-1, 0, true}, {-1, 40, true}, {2, -1, false}, {0, -1, false}, {1000, 1000, true}, {1000, 1001, false}};
    cubemap.levelsShrink = false; // so that any level has the size of the source
    const auto source = newTexture(GL_TEXTURE_CUBE_MAP);
    const auto destination = newTexture(GL_TEXTURE_CUBE_MAP);
    for (const auto& row : rows)
    {
        cubemap.maxLevel = row.maxLevel;
        EXPECT_EQ(ZelImageCubemapUtils::copyCubeMapTextureAsLod(source.get(), destination.get(), row.level), row.is)
            << row.level << " of " << row.maxLevel;
    }
}

} // namespace Harrow::Vrk::Test
