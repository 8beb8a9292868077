// SPDX-License-Identifier: MIT
//
// Prefiltered environment maps and the BRDF table on the real driver: which state they leave behind, and what is left
// when their programs do not build.
#include "PrefilteredEnvMap.h"

#include "EnvironmentDriverTestTools.h"
#include "GLStateTools.h"
#include "ShaderProgram.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <functional>
#include <map>

namespace Harrow::Vrk::Test
{

using namespace Environment;

namespace
{

double lastUnit()
{
    GLint units = 0;
    glGetIntegerv(GL_MAX_TEXTURE_IMAGE_UNITS, &units);
    return GL_TEXTURE0 + units - 1;
}

/// Whatever the functions set is otherwise. Taken back at the end.
class UnusualState
{
public:
    UnusualState()
    {
        glGenFramebuffers(2, _framebuffers);
        glGenTextures(1, &_texture);
        glBindFramebuffer(GL_DRAW_FRAMEBUFFER, _framebuffers[0]);
        glBindFramebuffer(GL_READ_FRAMEBUFFER, _framebuffers[1]);
        glActiveTexture(GL_TEXTURE5);
        glBindTexture(GL_TEXTURE_2D, _texture);
        glActiveTexture(GL_TEXTURE0);
        glBindTexture(GL_TEXTURE_2D, _texture);
        glActiveTexture(GL_TEXTURE5);
        glEnable(GL_BLEND);
        glBlendFunc(GL_ONE, GL_ONE);
        glDisable(GL_DEPTH_TEST);
        glDepthMask(GL_FALSE);
        glClearColor(0.1f, 0.2f, 0.3f, 0.4f);
        glViewport(3, 5, 7, 9);
        glScissor(0, 0, 50, 60);
    }
    ~UnusualState()
    {
        glActiveTexture(GL_TEXTURE0);
        glBindFramebuffer(GL_FRAMEBUFFER, 0);
        glDeleteFramebuffers(2, _framebuffers);
        glDeleteTextures(1, &_texture);
        glDisable(GL_BLEND);
        glBlendFunc(GL_ONE, GL_ZERO);
        glDisable(GL_SCISSOR_TEST);
        glDepthMask(GL_TRUE);
    }
    UnusualState(const UnusualState&) = delete;
    UnusualState& operator=(const UnusualState&) = delete;

private:
    GLuint _framebuffers[2] = {};
    GLuint _texture = 0;
};

/// What all three functions change of that.
State commonChanges()
{
    return {{"GL_BLEND", {0}}, {"GL_DEPTH_TEST", {1}}, {"GL_DEPTH_WRITEMASK", {1}}};
}

} // namespace

class PrefilteredEnvMapStateGL : public EnvironmentDriverFixture
{
protected:
    /// The maps that are filtered, and all three functions by name.
    struct Maker
    {
        const char* program;
        const char* fragmentFile;
        std::function<TexturePointer(ShadingModel)> make;
    };

    std::vector<Maker> makers()
    {
        return {{"prefilteredEnvMap", "prefilteredEnvMapCubeFS.glslc",
                 [this](ShadingModel model)
                 { return TexturePointer(CreatePrefilteredCubeEnvMap(_cube.get(), 8, 4, model, RGBA16F)); }},
                {"prefilteredEnvMap", "prefilteredEnvMapFS.glslc",
                 [this](ShadingModel model)
                 { return TexturePointer(CreatePrefilteredLatLongEnvMap(_latLong.get(), 8, 4, 4, model, RGBA16F)); }},
                {"preintegratedBRDFTable", "preintegratedBRDFTableFS.glslc", [](ShadingModel model) {
                     return TexturePointer(CreatePreintegratedBRDFTable(8, 8, 4, model, RGBA16F));
                 }}};
    }

    void SetUp() override
    {
        EnvironmentDriverFixture::SetUp();
        _cube = cubeTexture(cubeOf(4, &sky));
        _latLong = latLongTexture({latLongImage(16, 8, &sky)});
    }
    void TearDown() override
    {
        _cube.reset();
        _latLong.reset();
        EnvironmentDriverFixture::TearDown();
    }

    /// Each function fails, names its program in `words`, and leaves nothing behind.
    void expectFailure(const Maker& maker, ShadingModel model, const char* words)
    {
        SCOPED_TRACE(maker.fragmentFile);
        const State before = currentState();
        const Alive alive;
        const LogCapture log;
        const CallLog calls;
        EXPECT_FALSE(maker.make(model));
        ASSERT_FALSE(log.texts(QtWarningMsg).isEmpty());
        EXPECT_EQ(log.texts(QtWarningMsg).last(),
                  QLatin1String(maker.program) + QStringLiteral(" shader program failed to ") + QLatin1String(words));
        EXPECT_EQ(namesLeft(calls), 0);
        EXPECT_TRUE(alive == Alive());
        EXPECT_EQ(ShaderProgram::currentShaderProgram(), nullptr);
        State changes = changesSince(before);
        changes.erase("GL_ACTIVE_TEXTURE");
        EXPECT_EQ(changes, State());
        EXPECT_EQ(glGetError(), GLenum(GL_NO_ERROR));
    }

    TexturePointer _cube;
    TexturePointer _latLong;
};

// ---- state ---------------------------------------------------------------------------------------------------------

TEST_F(PrefilteredEnvMapStateGL, ACubeMapLeavesTheToldState)
{
    const UnusualState unusual;
    const State before = currentState();
    ASSERT_TRUE(makers()[0].make(SHADING_PHYSICALLY_BASED));
    State expected = commonChanges();
    expected["GL_COLOR_CLEAR_VALUE"] = {1, 1, 0, 1};
    expected["GL_DRAW_FRAMEBUFFER_BINDING"] = {0};
    expected["GL_READ_FRAMEBUFFER_BINDING"] = {0};
    expected["GL_ACTIVE_TEXTURE"] = {lastUnit()};
    EXPECT_EQ(changesSince(before), expected);
}

TEST_F(PrefilteredEnvMapStateGL, ALatLongMapLeavesTheToldState)
{
    for (const int limit : {16, 8})
    {
        SetPrefilteredSourceWidthMax(limit);
        const UnusualState unusual;
        const State before = currentState();
        glEnable(GL_SCISSOR_TEST);
        ASSERT_TRUE(makers()[1].make(SHADING_LAMBERTIAN_DIFFUSE));
        State expected = commonChanges();
        expected["GL_COLOR_CLEAR_VALUE"] = {1, 1, 0, 1};
        expected["GL_ACTIVE_TEXTURE"] = {GL_TEXTURE0};
        expected["GL_TEXTURE_BINDING_2D 0"] = {0};
        expected["GL_SCISSOR_BOX"] = {0, 0, 2, 1}; // the last tile
        EXPECT_EQ(changesSince(before), expected);
    }
}

TEST_F(PrefilteredEnvMapStateGL, TheTableLeavesTheToldState)
{
    const UnusualState unusual;
    const State before = currentState();
    ASSERT_TRUE(makers()[2].make(SHADING_TRADITIONAL));
    State expected = commonChanges();
    expected["GL_ACTIVE_TEXTURE"] = {lastUnit()};
    EXPECT_EQ(changesSince(before), expected);
}

TEST_F(PrefilteredEnvMapStateGL, ASourceThatIsBoundStaysBound)
{
    ASSERT_TRUE(_cube->bind());
    ASSERT_TRUE(_latLong->bind());
    const int cubeUnit = _cube->unit();
    const int latLongUnit = _latLong->unit();
    for (const Maker& maker : makers())
        ASSERT_TRUE(maker.make(SHADING_PHYSICALLY_BASED));
    EXPECT_EQ(_cube->unit(), cubeUnit);
    EXPECT_EQ(_latLong->unit(), latLongUnit);
    EXPECT_TRUE(_cube->unbind());
    EXPECT_TRUE(_latLong->unbind());
    EXPECT_FALSE(_cube->isBound());
    EXPECT_FALSE(_latLong->isBound());
}

TEST_F(PrefilteredEnvMapStateGL, TheSourcesKeepTheirParametersAndTexels)
{
    const Image before = readLevel(*_latLong, 0);
    const GLint filter = parameterOf(*_latLong, GL_TEXTURE_MIN_FILTER);
    for (const int limit : {16, 5})
    {
        SetPrefilteredSourceWidthMax(limit);
        ASSERT_TRUE(makers()[1].make(SHADING_OREN_NAYAR_DIFFUSE));
        EXPECT_TRUE(areClose(readLevel(*_latLong, 0), before, 0.0, 0.0));
        EXPECT_EQ(parameterOf(*_latLong, GL_TEXTURE_MIN_FILTER), filter);
        EXPECT_EQ(parameterOf(*_latLong, GL_TEXTURE_WRAP_S), GL_REPEAT);
        EXPECT_FALSE(_latLong->isReadOnly());
    }
}

TEST_F(PrefilteredEnvMapStateGL, AFormatThatCannotBeDrawnToGivesATextureAllTheSame)
{
    // The driver says so of each draw; the library asks nothing.
    const TexturePointer map(
        CreatePrefilteredLatLongEnvMap(_latLong.get(), 4, 2, 4, SHADING_PHYSICALLY_BASED, DEPTH32F));
    EXPECT_TRUE(map);
    EXPECT_NE(glGetError(), GLenum(GL_NO_ERROR));
    while (glGetError() != GL_NO_ERROR)
    {
    }
}

// ---- failures ------------------------------------------------------------------------------------------------------

TEST_F(PrefilteredEnvMapStateGL, AModelThatThereIsNoneOfDoesNotCompileAndLeavesNothingBehind)
{
    for (const Maker& maker : makers())
        for (const int model : {5, 7, -1})
            expectFailure(maker, static_cast<ShadingModel>(model), "compile");
    SetPrefilteredSourceWidthMax(8);
    expectFailure(makers()[1], static_cast<ShadingModel>(5), "compile");
}

TEST_F(PrefilteredEnvMapStateGL, AProgramThatDoesNotLinkLeavesNothingBehind)
{
    // A file in the current directory takes the place of the embedded one.
    const QTemporaryDir folder;
    const QString before = QDir::currentPath();
    for (const Maker& maker : makers())
    {
        QFile file(folder.filePath(QLatin1String(maker.fragmentFile)));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write("#version 150\nvec4 notThere();\nout vec4 out_FragColor;\n"
                   "void main() { out_FragColor = notThere(); }\n");
    }
    ASSERT_TRUE(QDir::setCurrent(folder.path()));
    for (const Maker& maker : makers())
        expectFailure(maker, SHADING_PHYSICALLY_BASED, "link");
    SetPrefilteredSourceHeightMax(3);
    expectFailure(makers()[1], SHADING_LAMBERTIAN_DIFFUSE, "link");
    ASSERT_TRUE(QDir::setCurrent(before));
}

TEST_F(PrefilteredEnvMapStateGL, EachResultIsTheOnlyObjectThatIsLeft)
{
    for (const Maker& maker : makers())
    {
        const Alive before;
        const CallLog calls;
        TexturePointer result = maker.make(SHADING_ENERY_CONSERVING);
        ASSERT_TRUE(result);
        EXPECT_EQ(namesLeft(calls), 1);
        Alive with = before;
        ++with.textures;
        EXPECT_TRUE(with == Alive());
        result.reset();
        EXPECT_EQ(namesLeft(calls), 0);
    }
}

} // namespace Harrow::Vrk::Test
