// SPDX-License-Identifier: MIT
//
// SamplerTextureManager on the real driver: quads that are drawn by token, read back.
#include "SamplerTextureManager.h"

#include "AutoBinder.h"
#include "GLSLMacroProcessor.h"
#include "ShaderProgram.h"
#include "TextureManagerTestTools.h"
#include "support/GLTest.h"
#include "support/Picture.h"

#include <vector>

namespace Harrow::Vrk::Test
{
namespace
{

constexpr int kCell = 8;

const char* const kVertexText = R"(#version 150
uniform ivec2 u_Cell;
out vec2 vo_TexCoord;
void main()
{
    vo_TexCoord = vec2(gl_VertexID % 2, gl_VertexID / 2);
    vec2 corner = (vec2(u_Cell.x, 0.0) + vo_TexCoord) / vec2(u_Cell.y, 1.0);
    gl_Position = vec4(2.0 * corner - 1.0, 0.0, 1.0);
}
)";

const char* const kFragmentText = R"(#version 150
#include "TextureManager.glslh"
uniform uvec2 u_Token;
in vec2 vo_TexCoord;
out vec4 o_Color;
void main()
{
    o_Color = managedTexture(u_Token, vo_TexCoord);
}
)";

const QColor kInvalidTexel(0, 255, 0);

class SamplerTextureManagerGL : public GLTest
{
protected:
    void SetUp() override
    {
        GLTest::SetUp();
        before = Texture::NumAlive();
        glGenVertexArrays(1, &vertexArray);
        glBindVertexArray(vertexArray);
        glDisable(GL_DEPTH_TEST);
        manager = std::make_unique<SamplerTextureManager>();
    }

    void TearDown() override
    {
        program.reset();
        manager.reset();
        EXPECT_EQ(Texture::NumAlive(), before);
        EXPECT_TRUE(TextureUnits::ofCurrentContext().textureToUnitMaps.isEmpty());
        glBindVertexArray(0);
        glDeleteVertexArrays(1, &vertexArray);
        GLTest::TearDown();
    }

    /// For as many slots as the manager has now.
    void build()
    {
        GLSLMacroProcessor processor;
        manager->setup(&processor);
        program = std::make_unique<ShaderProgram>();
        program->setMacroProcessor(&processor);
        program->addShader(GL_VERTEX_SHADER, QString::fromLatin1(kVertexText));
        program->addShader(GL_FRAGMENT_SHADER, QString::fromLatin1(kFragmentText));
        program->addShaderFromFile(GL_FRAGMENT_SHADER, manager->getShaderFile());
        ASSERT_TRUE(program->link()) << program->log().toStdString();
    }

    /// A row of quads, one for each token, all bound at once.
    QImage draw(const QList<TextureToken>& list)
    {
        const int count = int(list.size());
        const OffscreenTarget target(count * kCell, kCell);
        glClearColor(0, 0, 0, 0);
        glClear(GL_COLOR_BUFFER_BIT);
        manager->bind(list);
        EXPECT_TRUE(program->bind());
        manager->bind(program.get());
        for (int i = 0; i < count; ++i)
        {
            glUniform2i(program->getUniformLocation("u_Cell"), i, count);
            glUniform2ui(program->getUniformLocation("u_Token"), GLuint(list[i].token), GLuint(list[i].token >> 32));
            glDrawArrays(GL_TRIANGLE_STRIP, 0, 4);
        }
        const QImage picture = target.read();
        manager->unbind(program.get());
        program->unbind();
        manager->unbind(list);
        return picture;
    }

    static QImage cells(const QList<QColor>& colors)
    {
        QImage picture(int(colors.size()) * kCell, kCell, QImage::Format_RGBA8888);
        for (int x = 0; x < picture.width(); ++x)
            for (int y = 0; y < kCell; ++y)
                picture.setPixelColor(x, y, colors[x / kCell]);
        return picture;
    }

    static QList<QColor> someColors(int count)
    {
        QList<QColor> colors;
        for (int i = 0; i < count; ++i)
            colors.append(QColor(250 - 10 * i, 20 * i, (i % 3) * 100, 255 - i));
        return colors;
    }

    QList<TextureToken> tokensOf(const QList<QColor>& colors)
    {
        QList<TextureToken> list;
        for (const QColor& color : colors)
            list.append(manager->tokenForColor(color));
        return list;
    }

    /// A texture of one texel, made by hand.
    static Texture* texel(unsigned char r, unsigned char g, unsigned char b)
    {
        auto* const texture = new Texture(nullptr);
        texture->create2D(GL_TEXTURE_2D, GL_RGBA8, 1, 1);
        const AutoBinder binder(texture);
        const unsigned char texels[] = {r, g, b, 255};
        glTexSubImage2D(GL_TEXTURE_2D, 0, 0, 0, 1, 1, GL_RGBA, GL_UNSIGNED_BYTE, texels);
        return texture;
    }

    int before = 0;
    GLuint vertexArray = 0;
    QTemporaryDir directory;
    std::unique_ptr<SamplerTextureManager> manager;
    std::unique_ptr<ShaderProgram> program;
};

} // namespace

TEST_F(SamplerTextureManagerGL, ColourImageAndTextureAreDrawnAtOnce)
{
    build();
    QImage image(4, 4, QImage::Format_ARGB32);
    image.fill(Qt::blue);
    const QString path = directory.filePath(QStringLiteral("blue.png"));
    ASSERT_TRUE(image.save(path));
    const QList<TextureToken> list = {manager->tokenForColor(Qt::red), manager->tokenForImage(path, TextureFileInfo()),
                                      manager->tokenForTexture(texel(9, 8, 7)), manager->tokenForColor(Qt::white),
                                      manager->tokenForColor(QColor(1, 2, 3, 4))};
    const QImage expected = cells({Qt::red, Qt::blue, QColor(9, 8, 7), Qt::white, QColor(1, 2, 3, 4)});
    EXPECT_TRUE(picturesAgree(draw(list), expected, 0, 0));
    EXPECT_TRUE(picturesAgree(draw(list), expected, 0, 0)) << "warm";
}

TEST_F(SamplerTextureManagerGL, AnImageStandsUpright)
{
    build();
    QImage image(kCell, kCell, QImage::Format_RGBA8888);
    for (int x = 0; x < kCell; ++x)
        for (int y = 0; y < kCell; ++y)
            image.setPixelColor(x, y, QColor(30 * x, 30 * y, 0));
    const QString path = directory.filePath(QStringLiteral("ramp.png"));
    ASSERT_TRUE(image.save(path));
    EXPECT_TRUE(picturesAgree(draw({manager->tokenForImage(path, TextureFileInfo())}), image, 1, 0.5));
}

TEST_F(SamplerTextureManagerGL, EightSlotsShowEightTextures)
{
    build();
    ASSERT_EQ(manager->getMaxSlots(), 8);
    const auto colors = someColors(8);
    const LogCapture log;
    EXPECT_TRUE(picturesAgree(draw(tokensOf(colors)), cells(colors), 0, 0));
    EXPECT_EQ(log.texts(), QStringList());
}

TEST_F(SamplerTextureManagerGL, TwelveSlotsShowTwelveTextures)
{
    manager->setMaxSlots(12); // the least driver has 16 samplers for a stage, and the slot map takes one
    build();
    const auto colors = someColors(12);
    EXPECT_TRUE(picturesAgree(draw(tokensOf(colors)), cells(colors), 0, 0));
}

TEST_F(SamplerTextureManagerGL, TexturesBeyondTheSlotsAreInvalidAndTheOthersRight)
{
    manager->setMaxSlots(3);
    build();
    const auto colors = someColors(5);
    const LogCapture log;
    const QImage picture = draw(tokensOf(colors));
    EXPECT_EQ(log.texts(QtWarningMsg),
              QStringList({"Requesting 5 texture slots but only 3 available. Rendering will be incorrect!"}));
    EXPECT_TRUE(picturesAgree(picture, cells({colors[0], colors[1], colors[2], kInvalidTexel, kInvalidTexel}), 0, 0));
}

TEST_F(SamplerTextureManagerGL, MoreTexturesThanSlotsAreShownInSeveralDraws)
{
    manager->setMaxSlots(2);
    build();
    const auto colors = someColors(6);
    const auto list = tokensOf(colors);
    const LogCapture log;
    for (const int first : {0, 2, 4, 1, 3, 0})
        EXPECT_TRUE(picturesAgree(draw(list.mid(first, 2)), cells(colors.mid(first, 2)), 0, 0)) << first;
    EXPECT_EQ(log.texts(), QStringList());
}

TEST_F(SamplerTextureManagerGL, TokensThatComeAndGoBetweenDrawsAreShown)
{
    build();
    const auto colors = someColors(3);
    const auto first = tokensOf(colors);
    EXPECT_TRUE(picturesAgree(draw(first), cells(colors), 0, 0));
    const TextureToken late = manager->tokenForColor(Qt::magenta);
    EXPECT_TRUE(picturesAgree(draw({late, first[2]}), cells({Qt::magenta, colors[2]}), 0, 0));
    manager->deleteTexture(first[0]);
    const TextureToken reused = manager->tokenForColor(Qt::cyan);
    EXPECT_EQ(reused, first[0]);
    EXPECT_TRUE(picturesAgree(draw({first[1], reused, late}), cells({colors[1], Qt::cyan, Qt::magenta}), 0, 0));
}

TEST_F(SamplerTextureManagerGL, TheSlotsOfReleasedTexturesAreReused)
{
    build();
    const auto colors = someColors(12);
    const auto list = tokensOf(colors);
    manager->bind(list.mid(0, 4));
    manager->unbind(list.mid(1, 2)); // slots 0 and 3 stay held
    EXPECT_TRUE(picturesAgree(draw(list.mid(4, 6)), cells(colors.mid(4, 6)), 0, 0));
    manager->unbind({list[0], list[3]});
}

TEST_F(SamplerTextureManagerGL, ATokenOfTheTopIsShownAmongManyTokens)
{
    build();
    QList<TextureToken> many;
    for (unsigned i = 0; i < 3000; ++i)
        many.append(manager->tokenForColor(QColor::fromRgba(0xFF000000u | (i * 5000u))));
    EXPECT_TRUE(picturesAgree(
        draw({many[2999], many[17]}),
        cells({QColor::fromRgba(0xFF000000u | (2999u * 5000u)), QColor::fromRgba(0xFF000000u | (17u * 5000u))}), 0, 0));
}

TEST_F(SamplerTextureManagerGL, TheProgramInUseServesWhereNoneIsNamed)
{
    build();
    const OffscreenTarget target(kCell, kCell);
    const QList<TextureToken> list = {manager->tokenForColor(Qt::red)};
    manager->bind(list);
    ASSERT_TRUE(program->bind());
    static_cast<TextureManager&>(*manager).bind();
    glUniform2i(program->getUniformLocation("u_Cell"), 0, 1);
    glUniform2ui(program->getUniformLocation("u_Token"), GLuint(list[0].token), 0);
    glDrawArrays(GL_TRIANGLE_STRIP, 0, 4);
    EXPECT_TRUE(picturesAgree(target.read(), cells({Qt::red}), 0, 0));
    static_cast<TextureManager&>(*manager).unbind();
    program->unbind();
    manager->unbind(list);
}

TEST_F(SamplerTextureManagerGL, AFileThatDoesNotLoadUsesTheSlotOfWhite)
{
    build();
    const QString path = directory.filePath(QStringLiteral("broken.png"));
    {
        QFile file(path);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write("no picture");
    }
    const LogCapture log;
    const TextureToken broken = manager->tokenForImage(path, TextureFileInfo());
    EXPECT_TRUE(picturesAgree(draw({broken}), cells({Qt::white}), 0, 0)) << "white has slot 0, as unset tokens have";
}

TEST_F(SamplerTextureManagerGL, ADrawWithoutTokensLeavesNoErrorAndNoUnit)
{
    build();
    const OffscreenTarget target(kCell, kCell);
    manager->bind(QList<TextureToken>());
    ASSERT_TRUE(program->bind());
    manager->bind(program.get());
    EXPECT_EQ(TextureUnits::ofCurrentContext().textureToUnitMaps.size(), 2);
    manager->unbind(program.get());
    program->unbind();
    EXPECT_EQ(glGetError(), GLenum(GL_NO_ERROR));
}

TEST_F(SamplerTextureManagerGL, AfterClearAllStartsAnew)
{
    build();
    const auto colors = someColors(3);
    EXPECT_TRUE(picturesAgree(draw(tokensOf(colors)), cells(colors), 0, 0));
    manager->clear();
    const auto others = someColors(6).mid(3);
    const auto list = tokensOf(others);
    EXPECT_EQ(list[0], TextureToken(0));
    EXPECT_TRUE(picturesAgree(draw(list), cells(others), 0, 0));
}

} // namespace Harrow::Vrk::Test
