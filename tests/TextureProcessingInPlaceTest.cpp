// SPDX-License-Identifier: MIT
//
// Texture processing on the fake driver: the five operations that put a pass's result in the source's place.
#include "TextureProcessing.h"

#include "TextureProcessingTestTools.h"

#include <cmath>
#include <limits>

namespace Harrow::Vrk::Test
{
namespace
{

using Operation = bool (*)(Texture*& texture);

struct Named
{
    const char* name;
    Operation run;
    const char* statements;
    const char* uniforms;
};

/// The five operations with what is to reach the driver.
const std::vector<Named>& operations()
{
    static const std::vector<Named> all = {
        {"FlipY", [](Texture*& texture) { return FlipY(texture); },
         "    out_FragColor = texture(u_Src, vec2(vo_TexCoord.x, 1.0 - vo_TexCoord.y));\n", ""},
        {"SrgbToLinear", [](Texture*& texture) { return SrgbToLinear(texture); },
         "    vec4 color = texture(u_Src, vo_TexCoord);\n"
         "    vec4 res = pow((color + 0.055) / 1.055, vec4(2.4));\n"
         "    out_FragColor = res;\n",
         ""},
        {"LinearToSrgb", [](Texture*& texture) { return LinearToSrgb(texture); },
         "    vec4 color = texture(u_Src, vo_TexCoord);\n"
         "    vec4 res = vec4(vec3(1.055 * pow(color.rgb, vec3(1 / 2.4)) - 0.055), color.a);\n"
         "    out_FragColor = res;\n",
         ""},
        {"Premultiply", [](Texture*& texture) { return Premultiply(texture); },
         "    vec4 color = texture(u_Src, vo_TexCoord);\n"
         "    out_FragColor = vec4(color.rgb * color.a, color.a);\n",
         ""},
        {"RemapColorRange", [](Texture*& texture) { return RemapColorRange(texture, 0.25f, 0.75f); },
         "    vec4 color = texture(u_Src, vo_TexCoord);\n"
         "    color.rgb = color.rgb * (u_highValue - u_lowValue) + u_lowValue, vec3(0.0);\n"
         "    out_FragColor = color;\n",
         "uniform float u_lowValue;\n"
         "uniform float u_highValue;\n"},
    };
    return all;
}

} // namespace

/// For each of the five operations.
class TextureProcessingInPlaceTest : public TextureProcessingFixture, public testing::WithParamInterface<std::size_t>
{
protected:
    void SetUp() override
    {
        TextureProcessingFixture::SetUp();
        _texture = newTexture().release();
    }

    void TearDown() override
    {
        delete _texture;
        TextureProcessingFixture::TearDown();
    }

    /// False, and the texture is the same one, alone and unbound.
    void expectUnharmed()
    {
        Texture* const before = _texture;
        const CallLog calls;
        EXPECT_FALSE(operation().run(_texture));
        EXPECT_EQ(_texture, before);
        EXPECT_EQ(calls.count(line("glDeleteTextures")), calls.count(line("glGenTextures")));
        EXPECT_EQ(calls.count(line("glCreateShader")), calls.count(line("glDeleteShader")));
        EXPECT_EQ(calls.count(line("glCreateProgram")), calls.count(line("glDeleteProgram")));
        EXPECT_EQ(calls.count(line("glDrawArrays")), 0);
        EXPECT_EQ(Texture::NumAlive(), 1 + _others);
        EXPECT_FALSE(_texture->isBound());
    }

    static const Named& operation()
    {
        return operations()[GetParam()];
    }

    Texture* _texture = nullptr;
    int _others = 0;
};

TEST_P(TextureProcessingInPlaceTest, TheShaderIsExactlyThis)
{
    EXPECT_TRUE(operation().run(_texture));
    // The expander's empty line stands where defines would.
    const std::string expected = std::string("#version 150\n\n"
                                             "uniform sampler2D u_Src;\n") +
                                 operation().uniforms +
                                 "in vec2 vo_TexCoord;\n"
                                 "out vec4 out_FragColor;\n"
                                 "void main()\n"
                                 "{\n" +
                                 operation().statements + "}\n";
    EXPECT_EQ(script.sources.size(), 2);
    EXPECT_EQ(script.sources.value(script.types.key(GL_FRAGMENT_SHADER)).toStdString(), expected);
}

TEST_P(TextureProcessingInPlaceTest, TheCallsAreOfShaderCopyPassAndDeletionInThisOrder)
{
    script.attributes = {{"va_Vertex", 0, 1, GL_FLOAT_VEC3}};
    const Texture* const before = _texture;
    const LogCapture log;
    const CallLog calls;
    EXPECT_TRUE(operation().run(_texture));
    EXPECT_EQ(log.texts(), QStringList());
    EXPECT_NE(_texture, before);
    EXPECT_EQ(Texture::NumAlive(), 1);
    EXPECT_EQ(_texture->textureID(), 2u);
    EXPECT_EQ(_texture->parent(), nullptr);
    EXPECT_FALSE(_texture->isBound());
    EXPECT_EQ(TextureTestAccess::recorded(*_texture), (Recorded{GL_RGBA8, 64, 32, 1}));

    // From the first bind on: what comes before is the making of the program.
    const QString firstBind = activate(3);
    const QStringList all = calls.list();
    const qsizetype start = all.indexOf(firstBind);
    ASSERT_GT(start, 0);
    EXPECT_TRUE(QStringList(all.first(start)).filter(line("glLinkProgram")).size() == 1);
    QStringList uniforms;
    if (*operation().uniforms)
        uniforms = {uniformQuery(1, "u_lowValue"), CallLog::call("glUniform1f", 6, 0.25),
                    uniformQuery(1, "u_highValue"), CallLog::call("glUniform1f", 7, 0.75)};
    QStringList others = uniforms;
    if (others.size() == 4) // two entries of a hash: either may come first
        others = {uniforms[2], uniforms[3], uniforms[0], uniforms[1]};
    const QStringList copyCalls = copying(0, GL_RGBA8, 64, 32, GL_RGBA, GL_UNSIGNED_BYTE, true);
    const QStringList ending = {
        CallLog::call("glDeleteProgram", 1),
        CallLog::call("glDeleteShader", 0),
        CallLog::call("glDeleteShader", 0),
        writes("glDeleteTextures", 1),
    };
    const QString actual = QString::fromStdString(shown(all.sliced(start)))
                               .replace(QRegularExpression(line("glDeleteShader\\(\\d\\)")), line("glDeleteShader(0)"));
    const QString first = QString::fromStdString(shown(copyCalls + pass(uniforms) + ending));
    const QString second = QString::fromStdString(shown(copyCalls + pass(others) + ending));
    EXPECT_EQ(actual.toStdString(), (actual == second ? second : first).toStdString());
}

TEST_P(TextureProcessingInPlaceTest, EachCallCompilesAnew)
{
    const CallLog calls;
    EXPECT_TRUE(operation().run(_texture));
    EXPECT_TRUE(operation().run(_texture));
    EXPECT_EQ(calls.count(line("glCompileShader")), 4);
    EXPECT_EQ(calls.count(line("glLinkProgram")), 2);
    EXPECT_EQ(calls.count(line("glDeleteProgram")), 2);
    EXPECT_EQ(calls.count(line("glDeleteShader")), 4);
}

TEST_P(TextureProcessingInPlaceTest, ACompressedTextureIsReplacedByAnUncompressedOne)
{
    ProcessedTextureScript::current().compressed = GL_TRUE;
    ProcessedTextureScript::current().internalFormat = GL_COMPRESSED_RGBA;
    EXPECT_TRUE(operation().run(_texture));
    EXPECT_EQ(TextureTestAccess::recorded(*_texture), (Recorded{GL_RGBA, 64, 32, 1}));
}

TEST_P(TextureProcessingInPlaceTest, AShaderThatDoesNotCompileLeavesTheTexture)
{
    script.brokenMark = "u_Src";
    const LogCapture log;
    expectUnharmed();
    EXPECT_EQ(ownWarnings(log), QStringList(line("shader program failed to compile:\n0:1: it is broken\n")));
}

TEST_P(TextureProcessingInPlaceTest, AShaderThatDoesNotLinkLeavesTheTexture)
{
    script.linkStatus = 0;
    const LogCapture log;
    expectUnharmed();
    EXPECT_EQ(ownWarnings(log), QStringList(line("shader program failed to link:\nnothing fits\n")));
}

TEST_P(TextureProcessingInPlaceTest, WithoutAFreeUnitTheTextureStays)
{
    const auto holders = takeUnits(kUnits);
    _others = kUnits;
    const LogCapture log;
    expectUnharmed();
    EXPECT_EQ(log.messages(), QStringList(line("There is no available texture units")));
    for (const auto& holder : holders)
        holder->unbind();
}

TEST_P(TextureProcessingInPlaceTest, WithoutAQuadTheTextureStays)
{
    useFactory<WithoutVertexArrays>();
    const LogCapture log;
    expectUnharmed();
    EXPECT_EQ(log.messages(QtCriticalMsg).last(),
              failure("!quad.isNull()", "Fullscreen quad is NULL on ProcessTexture").first());
}

TEST_P(TextureProcessingInPlaceTest, WithABareQuadTheTextureStays)
{
    useFactory<WithBareQuads>();
    const LogCapture log;
    expectUnharmed();
    EXPECT_EQ(log.messages(QtCriticalMsg),
              failure("!quad->VAO().isNull()", "Vertex Array Object is NULL on ProcessTexture"));
}

TEST_P(TextureProcessingInPlaceTest, ATextureWithoutATargetStays)
{
    _texture->setTarget(0);
    Texture* const before = _texture;
    const LogCapture log;
    EXPECT_FALSE(operation().run(_texture));
    EXPECT_EQ(_texture, before);
    EXPECT_EQ(Texture::NumAlive(), 1);
    EXPECT_EQ(log.messages(QtCriticalMsg), failure("0u != this->_target", "Texture Target is not set on bind"));
}

TEST_P(TextureProcessingInPlaceTest, AWrappedTextureIsForgottenAndNotDeleted)
{
    delete _texture;
    _texture = new Texture(40u, nullptr);
    _texture->setTarget(GL_TEXTURE_2D);
    const CallLog calls;
    EXPECT_TRUE(operation().run(_texture));
    EXPECT_EQ(calls.count(line("glDeleteTextures")), 0) << "the name is somebody else's";
    EXPECT_TRUE(_texture->isManaged());
}

TEST_P(TextureProcessingInPlaceTest, NullIsFalse)
{
    Texture* none = nullptr;
    const LogCapture log;
    const CallLog calls;
    EXPECT_FALSE(operation().run(none));
    EXPECT_EQ(none, nullptr);
    EXPECT_EQ(calls.list(), QStringList());
    const bool flips = GetParam() == 0;
    EXPECT_EQ(log.messages(), flips ? failure("nullptr != texture", "Texture is NULL on FlipY") : QStringList());
}

INSTANTIATE_TEST_SUITE_P(Operations, TextureProcessingInPlaceTest, testing::Range<std::size_t>(0, 5),
                         [](const auto& tested) { return std::string(operations()[tested.param].name); });

class RemapColorRangeTest : public TextureProcessingFixture
{
};

TEST_F(RemapColorRangeTest, RemapColorRangeToTheSameRangeIsFalseAndLeavesTheTexture)
{
    const auto texture = newTexture();
    Texture* pointer = texture.get();
    const LogCapture log;
    const CallLog calls;
    EXPECT_FALSE(RemapColorRange(pointer, 0.0f, 1.0f));
    EXPECT_FALSE(RemapColorRange(pointer, -0.0f, 1.0f));
    EXPECT_EQ(pointer, texture.get());
    EXPECT_EQ(calls.list(), QStringList());
    EXPECT_EQ(log.texts(), QStringList());
}

TEST_F(RemapColorRangeTest, RemapColorRangeTakesEveryOtherRange)
{
    const float notANumber = std::numeric_limits<float>::quiet_NaN();
    const float ranges[][2] = {{0.0f, std::nextafter(1.0f, 2.0f)},
                               {std::nextafter(0.0f, 1.0f), 1.0f},
                               {1.0f, 0.0f},
                               {0.0f, 0.0f},
                               {1.0f, 1.0f},
                               {-3.0f, 7.5f},
                               {notANumber, 1.0f},
                               {0.0f, notANumber}};
    for (const auto& [low, high] : ranges)
    {
        Texture* texture = newTexture().release();
        const CallLog calls;
        EXPECT_TRUE(RemapColorRange(texture, low, high));
        QStringList expected = {CallLog::call("glUniform1f", 6, low), CallLog::call("glUniform1f", 7, high)};
        QStringList settings = calls.named({line("glUniform1f")});
        settings.sort();
        EXPECT_EQ(settings, expected);
        delete texture;
    }
}

} // namespace Harrow::Vrk::Test
