// SPDX-License-Identifier: MIT
//
// The GLSL functions of importance sampling: their texts through the reference compiler, and their values on the real
// driver against those of the CPU.
#include "EmbeddedGLSLTestTools.h"
#include "EnvironmentDriverTestTools.h"
#include "GLSLMacroProcessor.h"
#include "ShaderProgram.h"

#include <QString>
#include <QStringList>

#include <functional>

namespace Harrow::Vrk::Test
{

using namespace Environment;

namespace
{

QString expandedUnit(const QString& text, const QStringList& defines)
{
    GLSLMacroProcessor processor;
    for (const QString& define : defines)
        processor.addDefine(define.section(u' ', 0, 0), define.section(u' ', 1));
    return GLSLMacroProcessor::process(text, &processor);
}

QString expandedFile(const char* name, const QStringList& defines)
{
    return expandedUnit(embedded(QStringLiteral("src/") + QLatin1String(name)), defines);
}

QString brdf(int model)
{
    return QStringLiteral("VRK_BRDF %1").arg(model);
}

const QString kVert = QStringLiteral("vert");
const QString kFrag = QStringLiteral("frag");
const QStringList kLink = {QStringLiteral("-l")};

} // namespace

// ---- texts ---------------------------------------------------------------------------------------------------------

TEST(ImportanceSampleGLSL, AllProgramsLinkForEachModel)
{
    const struct
    {
        const char* vertex;
        const char* fragment;
        bool mayTakeTexels;
    } programs[] = {{"prefilteredEnvMapCubeVS.glslc", "prefilteredEnvMapCubeFS.glslc", false},
                    {"prefilteredEnvMapVS.glslc", "prefilteredEnvMapFS.glslc", true},
                    {"preintegratedBRDFTableVS.glslc", "preintegratedBRDFTableFS.glslc", false}};
    for (const auto& program : programs)
        for (const Model model : kModels)
            for (const bool takesTexels : {false, true})
            {
                if (takesTexels && (!program.mayTakeTexels || !isDiffuse(model)))
                    continue;
                QStringList defines = {brdf(model)};
                if (takesTexels)
                    defines += QStringLiteral("SOLID_SAMPLING 1");
                EXPECT_VALID(kLink, {kVert, expandedFile(program.vertex, defines)},
                             {kFrag, expandedFile("noise2D.glslc", defines)},
                             {kFrag, expandedFile("ImportanceSample.glslc", defines)},
                             {kFrag, expandedFile(program.fragment, defines)});
            }
}

TEST(ImportanceSampleGLSL, TheOtherMaskingCompiles)
{
    EXPECT_VALID({}, {kFrag, expandedFile("ImportanceSample.glslc", {brdf(2), QStringLiteral("TARN_GTR_CRUE 1")})});
}

TEST(ImportanceSampleGLSL, TheOtherNumberingCompiles)
{
    for (int model = 0; model < 3; ++model)
        EXPECT_VALID({},
                     {kFrag, expandedFile("ImportanceSample.glslc", {brdf(model), QStringLiteral("UNREAL_ONLY 1")})});
    EXPECT_FALSE(
        validate({}, {{kFrag, expandedFile("ImportanceSample.glslc", {brdf(3), QStringLiteral("UNREAL_ONLY 1")})}})
            .good());
}

TEST(ImportanceSampleGLSL, AModelThatThereIsNoneOfDoesNotCompile)
{
    for (const int model : {-1, 5, 7})
        EXPECT_FALSE(validate({}, {{kFrag, expandedFile("ImportanceSample.glslc", {brdf(model)})}}).good()) << model;
    const Verdict verdict = validate({}, {{kFrag, expandedFile("ImportanceSample.glslc", {})}});
    EXPECT_FALSE(verdict.good());
    EXPECT_TRUE(verdict.output.contains(QStringLiteral("Missing VRK_BRDF define"))) << verdict.output.toStdString();
}

TEST(ImportanceSampleGLSL, TheHeaderMayBeIncludedTwiceAndNumbersTheModels)
{
    const QString body = QStringLiteral("#version 150\n#include \"ImportanceSample.glslh\"\n"
                                        "#include \"ImportanceSample.glslh\"\n"
                                        "#if SHADING_TRADITIONAL != 0 || SHADING_ENERY_CONSERVING != 1 || "
                                        "SHADING_PHYSICALLY_BASED != 2 || SHADING_LAMBERTIAN_DIFFUSE != 3 || "
                                        "SHADING_OREN_NAYAR_DIFFUSE != 4 || SHADING_DIFFUSE_START_INDEX != 3\n"
                                        "#error The numbers differ.\n#endif\n"
                                        "void main() {}\n");
    EXPECT_VALID({}, {kFrag, expandedUnit(body, {})});
}

TEST(ImportanceSampleGLSL, TheShadersDoNotReadTheRoughnessScaleNorIncludeTheNoise)
{
    for (const char* const name : {"prefilteredEnvMapCubeFS.glslc", "prefilteredEnvMapFS.glslc"})
    {
        const QString text = embedded(QStringLiteral("src/") + QLatin1String(name));
        EXPECT_EQ(text.count(QStringLiteral("u_RoughnessScale")), 1) << name;
        EXPECT_TRUE(text.contains(QStringLiteral("uniform float u_RoughnessScale;"))) << name;
        EXPECT_TRUE(text.contains(QStringLiteral("\n//#include \"noise2D.glslh\"\n"))) << name;
    }
}

// ---- values --------------------------------------------------------------------------------------------------------

class ImportanceSampleGL : public EnvironmentDriverFixture
{
protected:
    static constexpr int kWidth = 64;
    static constexpr int kHeight = 32;

    /// The value of a GLSL expression at each pixel. `x` and `y` are its numbers, `u` and `v` its place from 0 to 1.
    static Image evaluate(int model, const QString& expression, const QString& preparation = QString(),
                          const QStringList& defines = QStringList())
    {
        ShaderProgram program(nullptr);
        GLSLMacroProcessor processor;
        processor.addDefine(QStringLiteral("VRK_BRDF"), QString::number(model));
        for (const QString& define : defines)
            processor.addDefine(define, QStringLiteral("1"));
        program.setMacroProcessor(&processor);
        program.setFragDataLocations({QStringLiteral("result")});
        program.addShaderFromFile(GL_VERTEX_SHADER, QStringLiteral("passthroughVS.glslc"));
        program.addShaderFromFile(GL_FRAGMENT_SHADER, QStringLiteral("ImportanceSample.glslc"));
        program.addShader(GL_FRAGMENT_SHADER,
                          QStringLiteral("#version 150\n#include \"ImportanceSample.glslh\"\nout vec4 result;\n"
                                         "void main()\n{\n    uint x = uint(gl_FragCoord.x);\n"
                                         "    uint y = uint(gl_FragCoord.y);\n"
                                         "    float u = gl_FragCoord.x / %1.0;\n    float v = gl_FragCoord.y / %2.0;\n"
                                         "    %3\n    result = vec4(%4, 1.0);\n}\n")
                              .arg(kWidth)
                              .arg(kHeight)
                              .arg(preparation, expression));
        EXPECT_TRUE(program.link()) << program.log().toStdString();
        return draw(program);
    }

    static void expectValues(const Image& actual, double tolerance, const std::function<Vec(int, int)>& expected)
    {
        Image image(kWidth, kHeight);
        for (int y = 0; y < kHeight; ++y)
            for (int x = 0; x < kWidth; ++x)
                image.at(x, y) = expected(x, y);
        EXPECT_TRUE(areClose(actual, image, 0.0, tolerance));
    }

    static double uOf(int x)
    {
        return (x + 0.5) / kWidth;
    }
    static double vOf(int y)
    {
        return (y + 0.5) / kHeight;
    }

private:
    static Image draw(ShaderProgram& program)
    {
        Texture target(GL_TEXTURE_2D, GL_RGBA32F, kWidth, kHeight, 1, nullptr);
        target.bind();
        glTexImage2D(GL_TEXTURE_2D, 0, GL_RGBA32F, kWidth, kHeight, 0, GL_RGBA, GL_FLOAT, nullptr);
        target.unbind();
        GLuint framebuffer = 0;
        GLuint vertexArray = 0;
        GLuint buffer = 0;
        glGenFramebuffers(1, &framebuffer);
        glBindFramebuffer(GL_FRAMEBUFFER, framebuffer);
        glFramebufferTexture2D(GL_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, GL_TEXTURE_2D, target.textureID(), 0);
        glGenVertexArrays(1, &vertexArray);
        glBindVertexArray(vertexArray);
        glGenBuffers(1, &buffer);
        glBindBuffer(GL_ARRAY_BUFFER, buffer);
        const float corners[] = {-1, -1, 0, 3, -1, 0, -1, 3, 0};
        glBufferData(GL_ARRAY_BUFFER, sizeof corners, corners, GL_STATIC_DRAW);
        const auto location = static_cast<GLuint>(program.getVertexAttributeLocation(QStringLiteral("va_Vertex")));
        glEnableVertexAttribArray(location);
        glVertexAttribPointer(location, 3, GL_FLOAT, GL_FALSE, 0, nullptr);
        glViewport(0, 0, kWidth, kHeight);
        glDisable(GL_BLEND);
        program.bind();
        glDrawArrays(GL_TRIANGLES, 0, 3);
        program.unbind();
        glBindFramebuffer(GL_FRAMEBUFFER, 0);
        glBindBuffer(GL_ARRAY_BUFFER, 0);
        glBindVertexArray(0);
        glDeleteBuffers(1, &buffer);
        glDeleteVertexArrays(1, &vertexArray);
        glDeleteFramebuffers(1, &framebuffer);
        return readLevel(target, 0);
    }
};

namespace
{

const char* const kFunctions[] = {"BlinnPhong", "AshikminShirley", "GGX", "Lambert", "OrenNayar"};

QString named(const char* pattern, int model)
{
    return QString::fromLatin1(pattern).arg(QLatin1String(kFunctions[model]));
}

/// A view in the plane y = 0 whose cosine is v, a light that turns around with u, in steps of its own.
const char* const kDirections = "float cosV = v; float cosL = fract(u * 7.0) * 0.9 + 0.05; float turn = u * 6.0;\n"
                                "vec3 N = vec3(0.0, 0.0, 1.0);\n"
                                "vec3 V = vec3(sqrt(1.0 - cosV * cosV), 0.0, cosV);\n"
                                "vec3 L = vec3(sqrt(1.0 - cosL * cosL) * vec2(cos(turn), sin(turn)), cosL);\n"
                                "vec3 H = normalize(L + V);";

struct Directions
{
    Vec N = {0, 0, 1};
    Vec V;
    Vec L;
    Vec H;

    Directions(double u, double v)
    {
        const double cosL = (u * 7.0 - std::floor(u * 7.0)) * 0.9 + 0.05;
        const double sinL = std::sqrt(1.0 - cosL * cosL);
        V = {std::sqrt(1.0 - v * v), 0, v};
        L = {sinL * std::cos(u * 6.0), sinL * std::sin(u * 6.0), cosL};
        H = normalize(L + V);
    }
};

} // namespace

TEST_F(ImportanceSampleGL, HammersleyPointsAreFractionAndMirroredBits)
{
    expectValues(evaluate(0, QStringLiteral("hammersley(y * 64u + x, 2048u), radicalInverse_VdC(x)")), 1e-7,
                 [](int x, int y)
                 {
                     const Point Xi = hammersley(unsigned(y * 64 + x), 2048);
                     return Vec{Xi.x, Xi.y, radicalInverse(unsigned(x))};
                 });
    // Bits beyond those of a float.
    expectValues(evaluate(0, QStringLiteral("vec3(radicalInverse_VdC((y * 64u + x) * 2097143u))")), 1e-7,
                 [](int x, int y)
                 {
                     const double inverse = radicalInverse(unsigned(y * 64 + x) * 2097143u);
                     return Vec{inverse, inverse, inverse};
                 });
}

TEST_F(ImportanceSampleGL, TangentToWorldIsTheToldFrame)
{
    // Over the whole sphere, poles included, where the other helper vector takes over.
    const QString direction = QStringLiteral("float t = (v - 0.5) * 3.1415; float p = u * 6.2831853;\n"
                                             "    vec3 N = vec3(cos(p) * cos(t), sin(t), sin(p) * cos(t));\n"
                                             "    if (x == 0u) N = vec3(0.0, 1.0, 0.0);\n"
                                             "    if (x == 1u) N = vec3(0.0, -1.0, 0.0);");
    const auto normalOf = [](int x, int y)
    {
        if (x < 2)
            return Vec{0, x == 0 ? 1.0 : -1.0, 0};
        const double t = (vOf(y) - 0.5) * 3.1415;
        const double p = uOf(x) * 6.2831853;
        return Vec{std::cos(p) * std::cos(t), std::sin(t), std::sin(p) * std::cos(t)};
    };
    expectValues(evaluate(0, QStringLiteral("tangentToWorld(N) * vec3(1.0, 0.0, 0.0)"), direction), 1e-4,
                 [&](int x, int y) { return Frame(normalOf(x, y)).tangent; });
    expectValues(evaluate(0, QStringLiteral("tangentToWorld(N) * vec3(0.0, 1.0, 0.0)"), direction), 1e-4,
                 [&](int x, int y) { return Frame(normalOf(x, y)).bitangent; });
    expectValues(evaluate(0, QStringLiteral("tangentToWorld(N) * vec3(0.0, 0.0, 1.0)"), direction), 1e-4,
                 [&](int x, int y) { return normalOf(x, y); });
}

TEST_F(ImportanceSampleGL, TheDiskAndTheHemisphereAreFilledEvenly)
{
    expectValues(evaluate(0, QStringLiteral("vec3(concentricSampleDisk(vec2(u, v)), 0.0)")), 1e-5,
                 [](int x, int y)
                 {
                     const Point disk = concentricDisk({uOf(x), vOf(y)});
                     return Vec{disk.x, disk.y, 0.0};
                 });
    expectValues(evaluate(0, QStringLiteral("cosineSampleHemisphere(vec2(u, v))")), 1e-5,
                 [](int x, int y) {
                     return cosineHemisphere({uOf(x), vOf(y)});
                 });
    // The middle, and the rim, which lies exactly in the horizon.
    const Image middle = evaluate(0, QStringLiteral("cosineSampleHemisphere(vec2(0.5))"));
    EXPECT_TRUE(areClose(middle, constantImage(kWidth, kHeight, {0, 0, 1}), 0.0, 0.0));
    for (const Vec& rim : evaluate(0, QStringLiteral("cosineSampleHemisphere(vec2(0.0, v))")).texels)
    {
        EXPECT_EQ(rim.z, 0.0);
        EXPECT_NEAR(length(rim), 1.0, 1e-5);
    }
}

TEST_F(ImportanceSampleGL, TexelAndSampleSolidAnglesGiveTheLevel)
{
    expectValues(evaluate(0, QStringLiteral("vec3(solidAngleTexel(vec2(64.0, 32.0), gl_FragCoord.y))")), 1e-6,
                 [](int, int y)
                 {
                     const double angle = Texels{64, 32, y}.solidAngle();
                     return Vec{angle, angle, angle};
                 });
    expectValues(evaluate(0, QStringLiteral("vec3(solidAngleTexel(vec2(1e6, 1e6), gl_FragCoord.y))")), 1e-12,
                 [](int, int) {
                     return Vec{1e-6, 1e-6, 1e-6};
                 });
    expectValues(evaluate(0, QStringLiteral("vec3(sampleLod(x == 0u ? 0.0 : u, v * v * v, y + 1u, 0.001))")), 1e-3,
                 [](int x, int y)
                 {
                     if (x == 0)
                         return Vec();
                     const double density = std::max(std::pow(vOf(y), 3.0), 1e-6);
                     const double level = 0.5 * std::log2(1.0 / ((y + 1) * density) / 0.001);
                     return Vec{level, level, level};
                 });
}

TEST_F(ImportanceSampleGL, EachModelSamplesAsTold)
{
    for (const Model model : kModels)
        for (const double roughness : {0.0, 0.1, 0.5, 1.0})
        {
            SCOPED_TRACE(std::string(kModelNames[model]) + " " + std::to_string(roughness));
            const auto expected = [&](int x, int y) { return sampleModel(model, {uOf(x), vOf(y)}, roughness); };
            const QString arguments = QStringLiteral("(vec2(u, v), %1)").arg(roughness, 0, 'f', 6);
            // The power loses digits near 1, which the sine of a small angle shows.
            expectValues(evaluate(0, named("importanceSample%1", model) + arguments), 1e-3, expected);
            expectValues(evaluate(model, QStringLiteral("importanceSampleBRDF") + arguments), 1e-3, expected);
        }
}

TEST_F(ImportanceSampleGL, EachModelsDensityIsTheTold)
{
    for (const Model model : kModels)
        for (const double roughness : {0.3, 0.6, 1.0})
        {
            SCOPED_TRACE(std::string(kModelNames[model]) + " " + std::to_string(roughness));
            const auto expected = [&](int x, int y)
            {
                const Directions d(uOf(x), vOf(y));
                const double density = densityOf(model, Cosines(d.N, d.V, d.L, d.H), roughness);
                return Vec{density, density, density};
            };
            const QString arguments = QStringLiteral("(N, V, L, H, %1))").arg(roughness, 0, 'f', 6);
            const QString directions = QLatin1String(kDirections);
            expectValues(evaluate(0, named("vec3(pdf%1", model) + arguments, directions), 2e-3, expected);
            expectValues(evaluate(model, QStringLiteral("vec3(pdfBRDF") + arguments, directions), 2e-3, expected);
        }
}

TEST(ImportanceSample, TheDensitiesOfTheCPUAreThoseOfItsSamples)
{
    // Holds the reference to account: 1 / density of the samples of L above the horizon is the hemisphere's solid
    // angle.
    for (const Model model : kModels)
    {
        const Vec N = {0, 0, 1};
        const double roughness = 0.8;
        double sum = 0.0;
        constexpr unsigned kCount = 1u << 18;
        for (unsigned i = 0; i < kCount; ++i)
        {
            const Vec direction = sampleModel(model, hammersley(i, kCount), roughness);
            const Vec L = isDiffuse(model) ? direction : mirror(N, direction);
            if (L.z > 0.05) // where the diffuse densities are not yet close to 0
                sum += 1.0 / densityOf(model, Cosines(N, N, L, normalize(L + N)), roughness) / kCount;
        }
        EXPECT_NEAR(sum, 2.0 * kPi * 0.95, 0.03) << kModelNames[model];
    }
}

TEST_F(ImportanceSampleGL, EachModelEvaluatesAsOnTheCPU)
{
    for (const Model model : kModels)
        for (const double roughness : {0.3, 0.6, 1.0})
        {
            SCOPED_TRACE(std::string(kModelNames[model]) + " " + std::to_string(roughness));
            const auto expected = [&](int x, int y)
            {
                const Directions d(uOf(x), vOf(y));
                const Point value = evaluateModel(model, d.N, d.V, d.L, d.H, roughness);
                return Vec{value.x, value.y, 0.0};
            };
            const QString arguments = QStringLiteral("(N, V, L, H, %1), 0.0").arg(roughness, 0, 'f', 6);
            const QString directions = QLatin1String(kDirections);
            expectValues(evaluate(0, named("evaluate%1", model) + arguments, directions), 2e-3, expected);
            expectValues(evaluate(model, QStringLiteral("evaluateBRDF") + arguments, directions), 2e-3, expected);
        }
}

TEST_F(ImportanceSampleGL, TheOtherMaskingOfGGXIsSmithsForTheDistribution)
{
    // 0.1 squared is below the least width of 0.04.
    for (const double roughness : {0.1, 0.5, 1.0})
    {
        const QString call = QStringLiteral("evaluateGGX(N, V, L, H, %1), 0.0").arg(roughness, 0, 'f', 6);
        const Image other = evaluate(2, call, QLatin1String(kDirections), {QStringLiteral("TARN_GTR_CRUE")});
        expectValues(other, 2e-3,
                     [&](int x, int y)
                     {
                         const Directions d(uOf(x), vOf(y));
                         const Cosines c(d.N, d.V, d.L, d.H);
                         const double alpha = std::clamp(roughness * roughness, 0.04, 1.0);
                         const double weight =
                             smithGTR(c.NdotL, alpha) * smithGTR(c.NdotV, alpha) * c.VdotH / (c.NdotH * c.NdotV);
                         const double F = schlick(c.VdotH);
                         return Vec{(1.0 - F) * weight, F * weight, 0.0};
                     });
        // At the roughness 1 the two are one formula.
        const bool isSame = bool(areClose(other, evaluate(2, call, QLatin1String(kDirections)), 0.0, 2e-3));
        EXPECT_EQ(isSame, roughness == 1.0);
    }
}

TEST_F(ImportanceSampleGL, OrenNayarSetsBothAnglesToThatOfALowerLight)
{
    // Light and view in one plane and on one side. A low light under a high view: sin * tan of the light's angle. The
    // other way round the angles are as published.
    const auto lobe = [this](double cosV, double cosL)
    {
        const QString directions = QStringLiteral("vec3 N = vec3(0.0, 0.0, 1.0);\n"
                                                  "vec3 V = vec3(sqrt(1.0 - %1 * %1), 0.0, %1);\n"
                                                  "vec3 L = vec3(sqrt(1.0 - %2 * %2), 0.0, %2);\n"
                                                  "vec3 H = normalize(L + V);")
                                       .arg(cosV, 0, 'f', 4)
                                       .arg(cosL, 0, 'f', 4);
        const Image image = evaluate(4, QStringLiteral("evaluateOrenNayar(N, V, L, H, 1.0), 0.0"), directions);
        const double A = 1.0 - 0.5 / 1.33;
        const double B = 0.45 / 1.09;
        return (image.at(0, 0).x - A) / B;
    };
    EXPECT_NEAR(lobe(0.8, 0.6), 0.8 * (0.8 / 0.6), 1e-4);
    EXPECT_NEAR(lobe(0.6, 0.8), 0.8 * (0.6 / 0.8), 1e-4);
    EXPECT_NEAR(lobe(1.0, 0.6), 0.0, 1e-4) << "from straight above there is no side";
}

} // namespace Harrow::Vrk::Test
