// SPDX-License-Identifier: MIT
//
// BindlessTextureManager on a driver that has bindless textures: what is drawn by token, read back. Skips elsewhere.
#include "BindlessTextureManager.h"

#include "AutoBinder.h"
#include "GLOptionalFunctions.h"
#include "GLSLMacroProcessor.h"
#include "GLUtilities.h"
#include "ShaderProgram.h"
#include "TextureManagerTestTools.h"
#include "support/GLTest.h"
#include "support/Picture.h"

#include <algorithm>
#include <cstdio>
#include <vector>

namespace Harrow::Vrk::Test
{
namespace
{

constexpr int kCell = 8;
constexpr int kColumns = 40;

// Quads in rows of 40, one for each instance, with a token of its own.
const char* const kVertexText = R"(#version 150
uniform usamplerBuffer u_Tokens;
uniform ivec2 u_Cells;
out vec2 vo_TexCoord;
flat out uvec2 vo_Token;
void main()
{
    vo_Token = texelFetch(u_Tokens, gl_InstanceID).xy;
    vo_TexCoord = vec2(gl_VertexID % 2, gl_VertexID / 2);
    vec2 cell = vec2(gl_InstanceID % u_Cells.x, gl_InstanceID / u_Cells.x);
    gl_Position = vec4(2.0 * (cell + vo_TexCoord) / vec2(u_Cells) - 1.0, 0.0, 1.0);
}
)";

/// What is shown of the token.
enum class Shown
{
    eTexture,
    eTextureLod,
    eSize,
    eCube,
    eCubeLod,
    eCubeSize,
    eValidity
};

constexpr const char* kExpressions[] = {
    "managedTexture(vo_Token, vo_TexCoord)",
    "managedTextureLod(vo_Token, vo_TexCoord, 1.0)",
    "vec4(managedTextureSize(vo_Token) / 255.0, 0.0, 1.0)",
    "managedTextureCube(vo_Token, u_Direction)",
    "managedTextureCubeLod(vo_Token, u_Direction, 0.0)",
    "vec4(managedTextureCubeSize(vo_Token) / 255.0, 0.0, 1.0)",
    "vrkIsValidToken(vo_Token) ? vec4(1.0) : vec4(0.0, 0.0, 0.0, 1.0)",
};

QString fragmentText(Shown shown)
{
    return QStringLiteral("#version 150\n#include \"TextureManager.glslh\"\n"
                          "uniform vec3 u_Direction;\n"
                          "in vec2 vo_TexCoord;\nflat in uvec2 vo_Token;\nout vec4 o_Color;\n"
                          "void main()\n{\n    o_Color = %1 + vec4(0.0 * u_Direction, 0.0);\n}\n")
        .arg(QLatin1String(kExpressions[int(shown)]));
}

const QColor kInvalidTexel(0, 255, 0);

/// The faces of a cube map in OpenGL's order, and the directions that look at them.
const QList<QColor> kFaces = {Qt::red, Qt::cyan, Qt::yellow, Qt::blue, Qt::magenta, Qt::white};
constexpr GLfloat kDirections[][3] = {{1, 0, 0}, {-1, 0, 0}, {0, 1, 0}, {0, -1, 0}, {0, 0, 1}, {0, 0, -1}};

/// One texel that the test repaints.
class Lamp : public TextureStreamer
{
public:
    Lamp() : TextureStreamer(nullptr)
    {
        create2D(GL_TEXTURE_2D, GL_RGBA8, 1, 1);
    }

    bool updateTexture() override
    {
        const AutoBinder binder(this);
        const unsigned char texel[] = {static_cast<unsigned char>(next.red()), static_cast<unsigned char>(next.green()),
                                       static_cast<unsigned char>(next.blue()), 255};
        glTexSubImage2D(GL_TEXTURE_2D, 0, 0, 0, 1, 1, GL_RGBA, GL_UNSIGNED_BYTE, texel);
        return true;
    }

    QColor next = Qt::black;
};

class BindlessTextureManagerGL : public GLTest
{
protected:
    void SetUp() override
    {
        GLTest::SetUp();
        // Mesa's software driver has neither. The calls are stated on the fake driver, the GLSL is compiled by the
        // validator; what is left for a real one are the pictures, and tools/gpu-check.sh fails where nothing could be
        // drawn.
        if (!BindlessTextureManager::isSupported())
            GTEST_SKIP() << "the driver has no bindless textures: neither GL_ARB_bindless_texture nor "
                            "GL_NV_bindless_texture";
        before = Texture::NumAlive();
        glGenVertexArrays(1, &vertexArray);
        glBindVertexArray(vertexArray);
        glDisable(GL_DEPTH_TEST);
        manager = std::make_unique<BindlessTextureManager>();
    }

    void TearDown() override
    {
        if (manager)
        {
            program.reset();
            manager.reset();
            EXPECT_EQ(Texture::NumAlive(), before);
            EXPECT_TRUE(TextureUnits::ofCurrentContext().textureToUnitMaps.isEmpty());
            glBindVertexArray(0);
            glDeleteVertexArrays(1, &vertexArray);
        }
        GLTest::TearDown();
    }

    /// For as many slots as the manager has now.
    void build(Shown shown = Shown::eTexture, bool debug = false)
    {
        GLSLMacroProcessor processor;
        manager->setup(&processor);
        if (debug)
            processor.addDefine(QStringLiteral("DEBUG"), QStringLiteral("1"));
        program = std::make_unique<ShaderProgram>();
        program->setMacroProcessor(&processor);
        program->addShader(GL_VERTEX_SHADER, QString::fromLatin1(kVertexText));
        program->addShader(GL_FRAGMENT_SHADER, fragmentText(shown));
        program->addShaderFromFile(GL_FRAGMENT_SHADER, manager->getShaderFile());
        ASSERT_TRUE(program->link()) << program->log().toStdString();
        program->setMacroProcessor(nullptr);
    }

    /// A quad for each token in one draw call.
    QImage draw(const QList<TextureToken>& list, const GLfloat* direction = kDirections[0])
    {
        const QSize cells = sizeInCells(list.size());
        const OffscreenTarget target(cells.width() * kCell, cells.height() * kCell);
        glClearColor(0, 0, 0, 0);
        glClear(GL_COLOR_BUFFER_BIT);
        manager->bind(list);
        EXPECT_TRUE(program->bind());
        manager->bind(program.get());
        const TokenBuffer tokenBuffer(list, program->getUniformLocation("u_Tokens"));
        glUniform2i(program->getUniformLocation("u_Cells"), cells.width(), cells.height());
        glUniform3fv(program->getUniformLocation("u_Direction"), 1, direction);
        glDrawArraysInstanced(GL_TRIANGLE_STRIP, 0, 4, GLsizei(list.size()));
        const QImage picture = target.read();
        manager->unbind(program.get());
        program->unbind();
        manager->unbind(list);
        return picture;
    }

    static QSize sizeInCells(qsizetype count)
    {
        return {int(std::min<qsizetype>(count, kColumns)), int((count + kColumns - 1) / kColumns)};
    }

    static QImage cells(const QList<QColor>& colors)
    {
        const QSize size = sizeInCells(colors.size());
        QImage picture(size * kCell, QImage::Format_RGBA8888);
        picture.fill(Qt::transparent);
        for (int i = 0; i < colors.size(); ++i)
        {
            const int row = size.height() - 1 - i / kColumns; // the first row is at the bottom
            for (int x = 0; x < kCell; ++x)
                for (int y = 0; y < kCell; ++y)
                    picture.setPixelColor((i % kColumns) * kCell + x, row * kCell + y, colors[i]);
        }
        return picture;
    }

    static QList<QColor> someColors(int count)
    {
        QList<QColor> colors;
        for (int i = 0; i < count; ++i)
            colors.append(QColor(i % 256, (i * 7 + 40) % 256, (i / 4) % 256));
        return colors;
    }

    QList<TextureToken> tokensOf(const QList<QColor>& colors)
    {
        QList<TextureToken> list;
        for (const QColor& color : colors)
            list.append(manager->tokenForColor(color));
        return list;
    }

    /// Four texels wide and two high, of one colour. The manager ends it.
    static Texture* plain(const QColor& color)
    {
        auto* const texture = new Texture(nullptr);
        texture->create2D(GL_TEXTURE_2D, GL_RGBA8, 4, 2);
        const AutoBinder binder(texture);
        const QImage image = filled(QSize(4, 2), color);
        glTexSubImage2D(GL_TEXTURE_2D, 0, 0, 0, 4, 2, GL_RGBA, GL_UNSIGNED_BYTE, image.constBits());
        return texture;
    }

    static Texture* cubeMap(int side)
    {
        auto* const texture = new Texture(nullptr);
        texture->setTarget(GL_TEXTURE_CUBE_MAP);
        const AutoBinder binder(texture);
        glTexParameteri(GL_TEXTURE_CUBE_MAP, GL_TEXTURE_MIN_FILTER, GL_NEAREST);
        glTexParameteri(GL_TEXTURE_CUBE_MAP, GL_TEXTURE_MAG_FILTER, GL_NEAREST);
        glTexParameteri(GL_TEXTURE_CUBE_MAP, GL_TEXTURE_MAX_LEVEL, 0);
        for (int face = 0; face < 6; ++face)
            glTexImage2D(GL_TEXTURE_CUBE_MAP_POSITIVE_X + GLenum(face), 0, GL_RGBA8, side, side, 0, GL_RGBA,
                         GL_UNSIGNED_BYTE, filled(QSize(side, side), kFaces[face]).constBits());
        return texture;
    }

    static QImage filled(QSize size, const QColor& color)
    {
        QImage image(size, QImage::Format_RGBA8888);
        image.fill(color);
        return image;
    }

    /// What the driver itself says.
    static bool isResident(const TextureToken& token)
    {
        const char* const name =
            hasGLExtension("GL_ARB_bindless_texture") ? "glIsTextureHandleResidentARB" : "glIsTextureHandleResidentNV";
        const auto ask = reinterpret_cast<PFN_glIsTextureHandleResidentARB>(getGLProcAddress(name, false));
        return ask(token.token) == GL_TRUE;
    }

    int before = 0;
    QTemporaryDir directory;
    std::unique_ptr<BindlessTextureManager> manager;
    std::unique_ptr<ShaderProgram> program;

private:
    /// The tokens as the shader reads them, low word first, on a unit that no texture of the library has.
    class TokenBuffer
    {
    public:
        TokenBuffer(const QList<TextureToken>& list, GLint location)
        {
            glGenBuffers(1, &_buffer);
            glBindBuffer(GL_TEXTURE_BUFFER, _buffer);
            glBufferData(GL_TEXTURE_BUFFER, GLsizeiptr(list.size()) * GLsizeiptr(sizeof(TextureToken)),
                         list.constData(), GL_STATIC_DRAW);
            _texture.setTarget(GL_TEXTURE_BUFFER);
            _texture.bind();
            glTexBuffer(GL_TEXTURE_BUFFER, GL_RG32UI, _buffer);
            glUniform1i(location, _texture.unit());
        }
        ~TokenBuffer()
        {
            _texture.unbind();
            glBindBuffer(GL_TEXTURE_BUFFER, 0);
            glDeleteBuffers(1, &_buffer);
        }
        TokenBuffer(const TokenBuffer&) = delete;
        TokenBuffer& operator=(const TokenBuffer&) = delete;

    private:
        GLuint _buffer = 0;
        Texture _texture{nullptr};
    };

    GLuint vertexArray = 0;
};

} // namespace

// ---- for the person who checks a driver ----------------------------------------------------------------------------

using GpuGL = GLTest;

TEST_F(GpuGL, TheDriverNamesItself)
{
    for (const auto& [name, parameter] : {std::pair("GL_VENDOR", GL_VENDOR), std::pair("GL_RENDERER", GL_RENDERER),
                                          std::pair("GL_VERSION", GL_VERSION)})
    {
        const auto* const text = reinterpret_cast<const char*>(glGetString(GLenum(parameter)));
        ASSERT_NE(text, nullptr);
        std::printf("%s: %s\n", name, text);
    }
    for (const char* const extension : {"GL_ARB_bindless_texture", "GL_NV_bindless_texture"})
        std::printf("%s: %s\n", extension, hasGLExtension(extension) ? "yes" : "no");
}

// ---- pictures ------------------------------------------------------------------------------------------------------

TEST_F(BindlessTextureManagerGL, TheInstanceIsBindless)
{
    TextureManager::setInstance(nullptr);
    const LogCapture log;
    const std::unique_ptr<BindlessTextureManager> instance(
        dynamic_cast<BindlessTextureManager*>(&TextureManager::Instance()));
    EXPECT_NE(instance, nullptr);
    EXPECT_EQ(log.texts(), QStringList({"BindlessTextureManager"}));
}

TEST_F(BindlessTextureManagerGL, ColoursAreDrawnByTheirHandles)
{
    build();
    const QList<QColor> colors = {Qt::red, Qt::white, QColor(1, 2, 3, 4), Qt::blue, Qt::black};
    const auto list = tokensOf(colors);
    for (const TextureToken& token : list)
        EXPECT_NE(token.token >> 32, 0xFFFFFFFFu);
    EXPECT_TRUE(picturesAgree(draw(list), cells(colors), 0, 0));
    EXPECT_TRUE(picturesAgree(draw(list), cells(colors), 0, 0)) << "warm";
}

TEST_F(BindlessTextureManagerGL, AnImageFileStandsUpright)
{
    build();
    QImage image(kCell, kCell, QImage::Format_RGBA8888);
    for (int x = 0; x < kCell; ++x)
        for (int y = 0; y < kCell; ++y)
            image.setPixelColor(x, y, QColor(30 * x, 30 * y, 0));
    const QString path = directory.filePath(QStringLiteral("ramp.png"));
    ASSERT_TRUE(image.save(path));
    const TextureToken token = manager->tokenForImage(path, TextureFileInfo());
    EXPECT_TRUE(picturesAgree(draw({token}), image, 1, 0.5));
    EXPECT_EQ(manager->tokenForImage(path, TextureFileInfo()), token);
}

TEST_F(BindlessTextureManagerGL, ACubeMapShowsTheFaceOfEachDirection)
{
    Texture* const cube = cubeMap(16);
    cube->setReadOnly();
    const TextureToken token = manager->tokenForTexture(cube);
    for (const Shown shown : {Shown::eCube, Shown::eCubeLod})
    {
        build(shown);
        for (int face = 0; face < 6; ++face)
            EXPECT_TRUE(picturesAgree(draw({token}, kDirections[face]), cells({kFaces[face]}), 0, 0)) << face;
    }
}

TEST_F(BindlessTextureManagerGL, ACubeMapThatMayChangeIsNotReached)
{
    const TextureToken token = manager->tokenForTexture(cubeMap(16));
    build(Shown::eCube);
    EXPECT_TRUE(picturesAgree(draw({token}), cells({kInvalidTexel}), 0, 0));
}

TEST_F(BindlessTextureManagerGL, BothKindsOfTokenAreDrawnAtOnce)
{
    build();
    Texture* const never = plain(QColor(9, 8, 7));
    never->setReadOnly();
    const QList<TextureToken> list = {manager->tokenForTexture(plain(QColor(5, 6, 7))), manager->tokenForColor(Qt::red),
                                      manager->tokenForTexture(never),
                                      manager->tokenForTexture(plain(QColor(50, 60, 70)))};
    EXPECT_EQ(list[0], TextureToken(0xFFFFFFFF00000000u));
    EXPECT_EQ(list[3], TextureToken(0xFFFFFFFF00000001u));
    EXPECT_TRUE(
        picturesAgree(draw(list), cells({QColor(5, 6, 7), Qt::red, QColor(9, 8, 7), QColor(50, 60, 70)}), 0, 0));
}

TEST_F(BindlessTextureManagerGL, AStreamerShowsWhatItHasJustDrawn)
{
    build();
    auto* const lamp = new Lamp; // the manager ends it
    const QList<TextureToken> list = {manager->tokenForColor(Qt::white), manager->tokenForTexture(lamp),
                                      manager->tokenForColor(Qt::blue)};
    for (const QColor& color : {QColor(200, 100, 50), QColor(1, 2, 3)})
    {
        lamp->next = color;
        EXPECT_TRUE(manager->updateTextureStreamers());
        EXPECT_TRUE(picturesAgree(draw(list), cells({Qt::white, color, Qt::blue}), 0, 0));
    }
    manager->deleteTexture(lamp);
}

TEST_F(BindlessTextureManagerGL, AThousandTexturesAreShownInOneDraw)
{
    build();
    const auto colors = someColors(1000);
    const LogCapture log;
    EXPECT_TRUE(picturesAgree(draw(tokensOf(colors)), cells(colors), 0, 0));
    EXPECT_EQ(log.texts(), QStringList());
    EXPECT_GE(Texture::NumAlive() - before, 1000);
}

TEST_F(BindlessTextureManagerGL, MoreBoundTokensThanSlotsAreInvalidAndTheOthersRight)
{
    manager->setMaxSlots(2);
    build();
    QList<TextureToken> list;
    for (const QColor color : {Qt::red, Qt::blue, Qt::cyan})
        list.append(manager->tokenForTexture(plain(color)));
    list.append(manager->tokenForColor(Qt::yellow));
    const LogCapture log;
    const QImage picture = draw(list);
    EXPECT_EQ(log.messages(QtWarningMsg),
              QStringList({"Requesting 3 texture slots but only 2 available. Rendering will be incorrect!"}));
    EXPECT_TRUE(picturesAgree(picture, cells({Qt::red, Qt::blue, kInvalidTexel, Qt::yellow}), 0, 0));
}

TEST_F(BindlessTextureManagerGL, LevelsAreThoseOfTheTexture)
{
    build(Shown::eTextureLod);
    QImage image(4, 4, QImage::Format_RGBA8888);
    image.fill(QColor(100, 0, 40));
    for (int y = 0; y < 4; ++y)
        for (int x = 0; x < 4; x += 2)
            image.setPixelColor(x, y, QColor(0, 200, 80));
    const QString path = directory.filePath(QStringLiteral("stripes.png"));
    ASSERT_TRUE(image.save(path));
    EXPECT_TRUE(picturesAgree(draw({manager->tokenForImage(path, TextureFileInfo()), manager->tokenForColor(Qt::red)}),
                              cells({QColor(50, 100, 60), Qt::red}), 1, 1))
        << "each texel of level 1 is the mean of its stripes";
}

TEST_F(BindlessTextureManagerGL, SizesAreThoseOfTheTexture)
{
    Texture* const never = plain(QColor(9, 8, 7));
    never->setReadOnly();
    build(Shown::eSize);
    EXPECT_TRUE(picturesAgree(draw({manager->tokenForTexture(never), manager->tokenForTexture(plain(Qt::red))}),
                              cells({QColor(4, 2, 0), QColor(4, 2, 0)}), 0, 0));
}

TEST_F(BindlessTextureManagerGL, SizesOfCubeMapsAreThoseOfTheirFaces)
{
    Texture* const never = cubeMap(16);
    never->setReadOnly();
    build(Shown::eCubeSize);
    EXPECT_TRUE(picturesAgree(draw({manager->tokenForTexture(never), manager->tokenForTexture(cubeMap(8))}),
                              cells({QColor(16, 16, 0), QColor(0, 0, 0)}), 0, 0))
        << "one that may change is not reached";
}

TEST_F(BindlessTextureManagerGL, ATextureKeepsItsBoundTokenWhenItBecomesReadOnly)
{
    build();
    Texture* const texture = plain(Qt::magenta);
    const TextureToken token = manager->tokenForTexture(texture);
    texture->setReadOnly();
    EXPECT_EQ(manager->tokenForTexture(texture), token);
    EXPECT_TRUE(picturesAgree(draw({token}), cells({Qt::magenta}), 0, 0));
}

TEST_F(BindlessTextureManagerGL, InvalidTokensAreGreenUnderDebug)
{
    manager->tokenForTexture(plain(Qt::red));
    const QList<TextureToken> list = {TextureToken(0), INVALID_TOKEN, TextureToken(0xFFFFFFFF00000007u),
                                      manager->tokenForColor(Qt::red)};
    for (const Shown shown : {Shown::eTexture, Shown::eTextureLod})
    {
        build(shown, true);
        EXPECT_TRUE(picturesAgree(draw(list), cells({kInvalidTexel, kInvalidTexel, kInvalidTexel, Qt::red}), 0, 0));
    }
    build(Shown::eValidity);
    EXPECT_TRUE(picturesAgree(draw(list), cells({Qt::black, Qt::black, Qt::black, Qt::white}), 0, 0));
}

TEST_F(BindlessTextureManagerGL, ResidencyLastsFromTheFirstBindToTheFirstUnbind)
{
    const QList<TextureToken> list = tokensOf({Qt::red, Qt::blue});
    EXPECT_FALSE(isResident(list[0]));
    manager->bind(list);
    manager->bind(list);
    EXPECT_TRUE(isResident(list[0]) && isResident(list[1]));
    manager->unbind(list);
    EXPECT_FALSE(isResident(list[0]) || isResident(list[1]));
    manager->unbind(list);
    EXPECT_EQ(glGetError(), GLenum(GL_NO_ERROR));
}

TEST_F(BindlessTextureManagerGL, TexturesMayBeDeletedWhileTheyAreResident)
{
    build();
    auto list = tokensOf(someColors(20));
    manager->bind(list);
    for (int i = 0; i < 10; ++i)
        manager->deleteTexture(list.takeFirst());
    glFinish();
    EXPECT_EQ(glGetError(), GLenum(GL_NO_ERROR));
    EXPECT_TRUE(picturesAgree(draw(list), cells(someColors(20).mid(10)), 0, 0)) << "ends the residency of the others";
    manager->bind(list);
    manager->clear();
    EXPECT_EQ(glGetError(), GLenum(GL_NO_ERROR));
    EXPECT_TRUE(picturesAgree(draw(tokensOf(someColors(30))), cells(someColors(30)), 0, 0)) << "all anew";
}

TEST_F(BindlessTextureManagerGL, TokensThatComeAndGoBetweenDrawsAreShown)
{
    build();
    for (int round = 0; round < 5; ++round)
    {
        const QList<QColor> colors = {QColor(10 * round, 0, 0), QColor(0, 10 * round, 5), QColor(1, 2, 30 * round)};
        const QList<TextureToken> list = {manager->tokenForColor(colors[0]), manager->tokenForTexture(plain(colors[1])),
                                          manager->tokenForColor(colors[2])};
        EXPECT_TRUE(picturesAgree(draw(list), cells(colors), 0, 0)) << round;
        for (const TextureToken& token : list)
            manager->deleteTexture(token);
    }
}

} // namespace Harrow::Vrk::Test
