// SPDX-License-Identifier: MIT
//
// The shader files of the cube map conversion: that they compile and link with one another, the conversions of colour
// spaces against their formulas, and the switch by which the layouts would use them.
#include "EmbeddedGLSLTestTools.h"
#include "GLSLMacroProcessor.h"
#include "ImageCubemapTestTools.h"
#include "ZelRenderCubemap.h"

namespace Harrow::Vrk::Test
{

using namespace Cubemap;

namespace
{

const QString kFrag = QStringLiteral("frag");
const QString kVert = QStringLiteral("vert");
constexpr const char* kSwitch = "ZEL_CUBERENDER_CONVERT_COLORSPACE";

/// A channel through each of the conversions.
struct Space
{
    const char* function;
    double (*convert)(double);
};

constexpr Space kSpaces[] = {
    {"zelConvert_Linear_To_Linear", [](double c) { return c; }},
    {"zelConvert_Linear_To_Gamma22", [](double c) { return std::pow(c, 1.0 / 2.2); }},
    {"zelConvert_Gamma22_To_Linear", [](double c) { return std::pow(c, 2.2); }},
    {"zelConvert_Linear_To_sRGB",
     [](double c) { return c > 0.0031308 ? 1.055 * std::pow(c, 1.0 / 2.4) - 0.055 : c * 12.92; }},
    {"zelConvert_sRGB_To_Linear",
     [](double c) { return c > 0.04045 ? std::pow((c + 0.055) / 1.055, 2.4) : c / 12.92; }},
};

QString file(const char* name)
{
    return QStringLiteral("src/") + QLatin1String(name);
}

QString expanded(const char* name, const QList<std::pair<const char*, QString>>& defines = {})
{
    GLSLMacroProcessor processor;
    for (const auto& [define, value] : defines)
        processor.addDefine(QLatin1String(define), value);
    return GLSLMacroProcessor::process(embedded(file(name)), &processor);
}

constexpr const char* kLayoutStages[] = {"CubeRender_Cross.frag", "CubeRender_LatLongSphere.frag",
                                         "CubeRender_Linear.frag", "CubeRender_Sphere.frag"};

/// A row whose colours go through a conversion, as the switch has it; or, without one, the directions as colours.
class RowRenderer final : public ZelRenderCubemap_Linear
{
public:
    RowRenderer(Texture* source, const char* function) : ZelRenderCubemap_Linear(source, 0), _function(function) {}

    bool createProgram() override
    {
        GLSLMacroProcessor processor;
        if (_function)
            processor.addDefine(QLatin1String(kSwitch), QLatin1String(_function));
        _program = std::make_unique<ShaderProgram>(nullptr);
        _program->setMacroProcessor(&processor);
        _program->addShaderFromFile(GL_VERTEX_SHADER, QStringLiteral("CubeRender.vert"));
        _program->addShaderFromFile(GL_FRAGMENT_SHADER,
                                    QLatin1String(_function ? "CubeRender_Linear.frag" : "CubeRender_Color.frag"));
        _program->addShaderFromFile(GL_FRAGMENT_SHADER, QStringLiteral("Func_ColorSpace.glslc"));
        EXPECT_TRUE(_program->link());
        _program->setMacroProcessor(nullptr);
        return true;
    }

private:
    const char* _function;
};

/// About the thresholds, below and above 1.
constexpr double kChannels[] = {0.0, 0.001, 0.0031, 0.00314, 0.02, 0.0404, 0.0405, 0.2, 0.5, 0.735, 1.0, 3.5};

Vector spread(int index)
{
    constexpr int count = int(std::size(kChannels));
    return {kChannels[index % count], kChannels[(index + 5) % count], kChannels[(index + 9) % count]};
}

Vector convertedBy(const Space& space, const Vector& color)
{
    return {space.convert(color[0]), space.convert(color[1]), space.convert(color[2])};
}

} // namespace

// ---- by the validator ----------------------------------------------------------------------------------------------

TEST(ImageCubemapGLSL, EachLayoutLinksWithItsStages)
{
    for (const char* const stage : kLayoutStages)
    {
        const Verdict verdict = validate({QStringLiteral("-l")}, {{kVert, expanded("CubeRender.vert")},
                                                                  {kFrag, expanded(stage)},
                                                                  {kFrag, expanded("Func_ColorSpace.glslc")}});
        EXPECT_TRUE(verdict.good()) << stage << verdict.output.toStdString();
    }
}

TEST(ImageCubemapGLSL, EachLayoutLinksWithEachConversion)
{
    for (const char* const stage : kLayoutStages)
        for (const Space& space : kSpaces)
        {
            const QString text = expanded(stage, {{kSwitch, QLatin1String(space.function)}});
            EXPECT_TRUE(text.contains(QLatin1String("color = ") + QLatin1String(kSwitch)));
            const Verdict verdict = validate(
                {QStringLiteral("-l")},
                {{kVert, expanded("CubeRender.vert")}, {kFrag, text}, {kFrag, expanded("Func_ColorSpace.glslc")}});
            EXPECT_TRUE(verdict.good()) << stage << space.function << verdict.output.toStdString();
        }
}

TEST(ImageCubemapGLSL, TheFiltersWantTheNumberOfTheBatchUnderTheirOwnNames)
{
    const struct
    {
        const char* stage;
        const char* own;
        const char* other;
    } rows[] = {{"CubeRender_Blur.frag", "ZEL_CUBERENDER_BLUR_BATCH_SIZE", "ZEL_CUBERENDER_NDOT_BATCH_SIZE"},
                {"CubeRender_NDotL.frag", "ZEL_CUBERENDER_NDOT_BATCH_SIZE", "ZEL_CUBERENDER_BLUR_BATCH_SIZE"}};
    for (const auto& row : rows)
    {
        for (const int batch : {1, 2, 4, 8})
        {
            const QString text = expanded(row.stage, {{row.own, QString::number(batch)}});
            const Verdict verdict =
                validate({QStringLiteral("-l")}, {{kVert, expanded("CubeRender.vert")}, {kFrag, text}});
            EXPECT_TRUE(verdict.good()) << row.stage << verdict.output.toStdString();
        }
        const Verdict verdict = validate({}, {{kFrag, expanded(row.stage, {{row.other, QStringLiteral("4")}})}});
        EXPECT_TRUE(verdict.ran);
        EXPECT_FALSE(verdict.good()) << row.stage;
    }
}

TEST(ImageCubemapGLSL, TheStagesOfAStripAndTheColorsOfDirectionsLink)
{
    EXPECT_VALID({QStringLiteral("-l")}, {kVert, expanded("CubeRender_ToLinearVS.glslc")},
                 {kFrag, expanded("CubeRender_ToLinearFS.glslc")});
    EXPECT_VALID({QStringLiteral("-l")}, {kVert, expanded("CubeRender.vert")},
                 {kFrag, expanded("CubeRender_Color.frag")});
}

TEST(ImageCubemapGLSL, TheStagesHaveTheUniformsThatTheirUsersSet)
{
    const struct
    {
        const char* file;
        QStringList declarations;
    } rows[] = {
        {"CubeRender.vert",
         {QStringLiteral("uniform mat4 u_ZelModelViewProjectionMatrix;"),
          QStringLiteral("uniform mat3 u_ZelNormalMatrix;")}},
        {"CubeRender_Cross.frag", {QStringLiteral("uniform mat4x2 u_ZelNormalToUvMatrix;")}},
        {"CubeRender_Linear.frag", {QStringLiteral("uniform mat4x2 u_ZelNormalToUvMatrix;")}},
        {"CubeRender_Sphere.frag", {QStringLiteral("uniform sampler2D s_texture;")}},
        {"CubeRender_NDotL.frag", {QStringLiteral("uniform samplerCube s_texture;")}},
        {"CubeRender_Blur.frag", {QStringLiteral("uniform samplerCube s_texture;")}},
        {"CubeRender_ToLinearVS.glslc", {QStringLiteral("uniform mat3 u_Transform;")}},
        {"CubeRender_ToLinearFS.glslc", {QStringLiteral("uniform samplerCube u_Texture;")}},
    };
    for (const auto& row : rows)
        for (const QString& declaration : row.declarations)
            EXPECT_TRUE(embedded(file(row.file)).contains(declaration)) << row.file << declaration.toStdString();
}

// ---- by a driver ---------------------------------------------------------------------------------------------------

class ImageCubemapGLSLGL : public ImageCubemapFixture
{
};

TEST_F(ImageCubemapGLSLGL, ConversionsOfColorSpacesLeaveAlphaAlone)
{
    constexpr int count = int(std::size(kChannels));
    const auto source = newPicture(count, 1, [](int x, int) { return spread(x); });
    for (const Space& space : kSpaces)
    {
        ShaderProgram program(nullptr);
        program.setFragDataLocations({QStringLiteral("out_FragColor")});
        program.addShaderFromFile(GL_VERTEX_SHADER, QStringLiteral("passthroughVS.glslc"));
        program.addShader(GL_FRAGMENT_SHADER,
                          QStringLiteral("#version 150\nvec4 %1(vec4 color);\nuniform sampler2D u_Src;\n"
                                         "in vec2 vo_TexCoord;\nout vec4 out_FragColor;\n"
                                         "void main() { out_FragColor = %1(texture(u_Src, vo_TexCoord)); }\n")
                              .arg(QLatin1String(space.function)));
        program.addShaderFromFile(GL_FRAGMENT_SHADER, QStringLiteral("Func_ColorSpace.glslc"));
        ASSERT_TRUE(program.link());
        const auto destination = newPicture(count, 1, [](int, int) { return Vector{}; });
        ProcessTexture(&program, {}, source.get(), destination.get());
        const Floats values = Processing::floatsOf(*destination);
        for (int x = 0; x < count; ++x)
        {
            EXPECT_LT(distance(colorAt(values, at(x, 0, count)), convertedBy(space, spread(x))), 2e-4)
                << space.function << " of " << x;
            EXPECT_EQ(values[at(x, 0, count) + 3], 0.25f) << space.function;
        }
    }
}

TEST_F(ImageCubemapGLSLGL, TheSwitchLetsALayoutConvertItsColors)
{
    constexpr int size = 2;
    const auto source = newPicture(6 * size, size, [](int x, int y) { return spread(x + 12 * y); });
    for (const Space& space : kSpaces)
    {
        RowRenderer renderer(source.get(), space.function);
        const std::unique_ptr<Texture> result(renderer.renderToNewTexture(GL_TEXTURE_CUBE_MAP, GL_RGBA32F, size));
        ASSERT_NE(result, nullptr);
        EXPECT_TRUE(facesAre(
            *result, size, [&](int face, int x, int y) { return convertedBy(space, spread(face * size + x + 12 * y)); },
            2e-4))
            << space.function;
    }
}

TEST_F(ImageCubemapGLSLGL, TheColorsOfDirectionsRunFromNoneToFull)
{
    constexpr int size = 5;
    const auto source = newPicture(6, 1, [](int, int) { return Vector{}; });
    RowRenderer renderer(source.get(), nullptr);
    const std::unique_ptr<Texture> result(renderer.renderToNewTexture(GL_TEXTURE_CUBE_MAP, GL_RGBA32F, size));
    ASSERT_NE(result, nullptr);
    EXPECT_TRUE(facesAre(
        *result, size, [](int face, int x, int y) { return shown(normalized(texelPlace(face, x, y, size))); }, 1e-5));
}

} // namespace Harrow::Vrk::Test
