// SPDX-License-Identifier: MIT
//
// FramebufferObject on the real driver: what is drawn and cleared ends in the attached level and layer and nowhere
// else, and OpenGL agrees on what is complete.
#include "FramebufferObject.h"

#include "AutoBinder.h"
#include "GLFunctions.h"
#include "GLUtilities.h"
#include "Texture.h"
#include "support/GLTest.h"
#include "support/LogCapture.h"

#include <QStringList>

#include <array>
#include <initializer_list>
#include <memory>
#include <utility>
#include <vector>

namespace Harrow::Vrk::Test
{
namespace
{

using Color = std::array<unsigned char, 4>;
using TexturePtr = std::unique_ptr<Texture>;

constexpr Color kBlack = {0, 0, 0, 0};
constexpr Color kRed = {255, 0, 0, 255};
constexpr Color kGreen = {0, 255, 0, 255};
constexpr Color kBlue = {0, 0, 255, 255};
constexpr int kSize = 4;

/// Every texel of a level, all layers in order.
std::vector<Color> texels(Texture& texture, int level, int width, int height, int depth = 1)
{
    std::vector<Color> result(size_t(width) * size_t(height) * size_t(depth));
    const AutoBinder binder(&texture);
    glGetTexImage(texture.target(), level, GL_RGBA, GL_UNSIGNED_BYTE, result.data());
    return result;
}

std::vector<Color> filled(size_t count, Color color)
{
    return std::vector<Color>(count, color);
}

/// One colour for each layer of `kSize` by `kSize`.
std::vector<Color> layers(std::initializer_list<Color> colors)
{
    std::vector<Color> result;
    for (const Color& color : colors)
        result.insert(result.end(), kSize * kSize, color);
    return result;
}

TexturePtr flatTexture(int internalFormat = GL_RGBA8)
{
    auto texture = std::make_unique<Texture>(nullptr);
    texture->create2D(GL_TEXTURE_2D, internalFormat, kSize, kSize);
    return texture;
}

/// Black, with `depth` layers.
TexturePtr layeredTexture(GLenum target, int depth)
{
    auto texture = std::make_unique<Texture>(nullptr);
    texture->setTarget(target);
    const AutoBinder binder(texture.get());
    const std::vector<Color> black = filled(size_t(kSize * kSize * depth), kBlack);
    glTexParameteri(target, GL_TEXTURE_MIN_FILTER, GL_NEAREST);
    glTexImage3D(target, 0, GL_RGBA8, kSize, kSize, depth, 0, GL_RGBA, GL_UNSIGNED_BYTE, black.data());
    return texture;
}

void clearTo(Color color, GLint drawBuffer = 0)
{
    const float values[] = {color[0] / 255.0f, color[1] / 255.0f, color[2] / 255.0f, color[3] / 255.0f};
    glClearBufferfv(GL_COLOR, drawBuffer, values);
}

GLuint integerOf(GLenum name)
{
    GLint value = -1;
    glGetIntegerv(name, &value);
    return GLuint(value);
}

/// A program from its stages and a vertex array without attributes, in use while alive.
class Program
{
public:
    explicit Program(std::initializer_list<std::pair<GLenum, const char*>> stages)
    {
        _program = glCreateProgram();
        for (const auto& [type, source] : stages)
        {
            const GLuint shader = glCreateShader(type);
            glShaderSource(shader, 1, &source, nullptr);
            glCompileShader(shader);
            glAttachShader(_program, shader);
            glDeleteShader(shader);
        }
        glBindFragDataLocation(_program, 0, "first");
        glBindFragDataLocation(_program, 1, "second");
        glLinkProgram(_program);
        GLint linked = 0;
        glGetProgramiv(_program, GL_LINK_STATUS, &linked);
        EXPECT_EQ(linked, GL_TRUE);
        glGenVertexArrays(1, &_vertexArray);
        glBindVertexArray(_vertexArray);
        glUseProgram(_program);
        glViewport(0, 0, kSize, kSize);
    }
    ~Program()
    {
        glUseProgram(0);
        glBindVertexArray(0);
        glDeleteVertexArrays(1, &_vertexArray);
        glDeleteProgram(_program);
    }
    Program(const Program&) = delete;
    Program& operator=(const Program&) = delete;

    void drawWholeTarget() const
    {
        glDrawArrays(GL_TRIANGLES, 0, 3);
    }

private:
    GLuint _program = 0;
    GLuint _vertexArray = 0;
};

constexpr const char* kWholeTarget = "#version 150\n"
                                     "void main()\n"
                                     "{\n"
                                     "    vec2 corner = vec2(gl_VertexID % 2, gl_VertexID / 2) * 4.0 - 1.0;\n"
                                     "    gl_Position = vec4(corner, 0.0, 1.0);\n"
                                     "}\n";

class FramebufferObjectGL : public GLTest
{
protected:
    void SetUp() override
    {
        GLTest::SetUp();
        _framebuffersBefore = FramebufferObject::NumAlive();
        _attachmentsBefore = FramebufferObject::NumActiveFBOTextures();
        _texturesBefore = Texture::NumAlive();
    }

    void TearDown() override
    {
        EXPECT_EQ(FramebufferObject::NumAlive(), _framebuffersBefore);
        EXPECT_EQ(FramebufferObject::NumActiveFBOTextures(), _attachmentsBefore);
        EXPECT_EQ(Texture::NumAlive(), _texturesBefore);
        EXPECT_EQ(integerOf(GL_FRAMEBUFFER_BINDING), 0u);
        GLTest::TearDown();
    }

private:
    int _framebuffersBefore = 0;
    int _attachmentsBefore = 0;
    int _texturesBefore = 0;
};

} // namespace

// ---- the name ------------------------------------------------------------------------------------------------------

TEST_F(FramebufferObjectGL, ADestroyedNameIsGoneAndAReleasedOneIsNot)
{
    GLuint released = 0;
    GLuint owned = 0;
    {
        FramebufferObject first(nullptr);
        FramebufferObject second(nullptr);
        for (FramebufferObject* const framebuffer : {&first, &second})
        {
            EXPECT_TRUE(framebuffer->bind());
            EXPECT_EQ(integerOf(GL_FRAMEBUFFER_BINDING), framebuffer->getFBO());
            EXPECT_TRUE(framebuffer->unbind());
        }
        owned = first.getFBO();
        released = second.getFBO();
        second.setFBO(0);
    }
    EXPECT_FALSE(glIsFramebuffer(owned));
    EXPECT_TRUE(glIsFramebuffer(released));
    {
        const FramebufferObject wrapper(released, nullptr);
    }
    EXPECT_FALSE(glIsFramebuffer(released));
}

TEST_F(FramebufferObjectGL, UnbindBringsTheDefaultFramebufferBack)
{
    FramebufferObject outer(nullptr);
    FramebufferObject inner(nullptr);
    outer.bind();
    inner.bind();
    EXPECT_EQ(integerOf(GL_DRAW_FRAMEBUFFER_BINDING), inner.getFBO());
    EXPECT_EQ(integerOf(GL_READ_FRAMEBUFFER_BINDING), inner.getFBO());
    inner.unbind();
    EXPECT_EQ(integerOf(GL_FRAMEBUFFER_BINDING), 0u);
    outer.unbind();
}

// ---- levels and layers ---------------------------------------------------------------------------------------------

TEST_F(FramebufferObjectGL, OnlyTheAttachedLevelIsDrawnTo)
{
    const TexturePtr texture = flatTexture();
    {
        const AutoBinder binder(texture.get());
        const std::vector<Color> black = filled(kSize * kSize, kBlack);
        for (int level = 0; level < 3; ++level)
            glTexImage2D(GL_TEXTURE_2D, level, GL_RGBA8, kSize >> level, kSize >> level, 0, GL_RGBA, GL_UNSIGNED_BYTE,
                         black.data());
    }
    FramebufferObject framebuffer(nullptr);
    const AutoBinder binder(&framebuffer);
    ASSERT_TRUE(framebuffer.attach(texture.get(), GL_COLOR_ATTACHMENT0, 1));
    EXPECT_TRUE(framebuffer.isComplete());
    clearTo(kRed);
    framebuffer.detachAll();
    EXPECT_EQ(texels(*texture, 0, 4, 4), filled(16, kBlack));
    EXPECT_EQ(texels(*texture, 1, 2, 2), filled(4, kRed));
    EXPECT_EQ(texels(*texture, 2, 1, 1), filled(1, kBlack));
}

TEST_F(FramebufferObjectGL, OnlyTheAttachedLayerIsDrawnTo)
{
    for (const GLenum target : {GL_TEXTURE_2D_ARRAY, GL_TEXTURE_3D})
    {
        const TexturePtr texture = layeredTexture(GLenum(target), 4);
        FramebufferObject framebuffer(nullptr);
        const AutoBinder binder(&framebuffer);
        ASSERT_TRUE(framebuffer.attach3D(texture.get(), GL_COLOR_ATTACHMENT0, 2, 0));
        EXPECT_TRUE(framebuffer.isComplete());
        clearTo(kGreen);
        framebuffer.detachAll();
        EXPECT_EQ(texels(*texture, 0, kSize, kSize, 4), layers({kBlack, kBlack, kGreen, kBlack}));
    }
}

TEST_F(FramebufferObjectGL, OnlyTheAttachedFaceOfACubeMapArrayIsDrawnTo)
{
    if (isFloor())
    {
        ASSERT_FALSE(hasGLExtension("GL_ARB_texture_cube_map_array")) << "there are none to draw to";
        return;
    }
    const TexturePtr texture = layeredTexture(GL_TEXTURE_CUBE_MAP_ARRAY, 12);
    FramebufferObject framebuffer(nullptr);
    const AutoBinder binder(&framebuffer);
    ASSERT_TRUE(framebuffer.attach3D(texture.get(), GL_COLOR_ATTACHMENT0, 7, 0));
    EXPECT_TRUE(framebuffer.isComplete());
    clearTo(kBlue);
    framebuffer.detachAll();
    EXPECT_EQ(texels(*texture, 0, kSize, kSize, 12),
              layers({kBlack, kBlack, kBlack, kBlack, kBlack, kBlack, kBlack, kBlue, kBlack, kBlack, kBlack, kBlack}));
}

TEST_F(FramebufferObjectGL, AttachLayersClearsAndDrawsToAllLayers)
{
    const Program program(
        {{GL_VERTEX_SHADER, kWholeTarget},
         {GL_GEOMETRY_SHADER, "#version 150\n"
                              "layout(triangles) in;\n"
                              "layout(triangle_strip, max_vertices = 6) out;\n"
                              "flat out vec4 color;\n"
                              "void main()\n"
                              "{\n"
                              "    for (int layer = 0; layer < 2; ++layer)\n"
                              "    {\n"
                              "        for (int i = 0; i < 3; ++i)\n"
                              "        {\n"
                              "            gl_Layer = layer;\n"
                              "            color = layer == 0 ? vec4(0, 1, 0, 1) : vec4(0, 0, 1, 1);\n"
                              "            gl_Position = gl_in[i].gl_Position;\n"
                              "            EmitVertex();\n"
                              "        }\n"
                              "        EndPrimitive();\n"
                              "    }\n"
                              "}\n"},
         {GL_FRAGMENT_SHADER, "#version 150\n"
                              "flat in vec4 color;\n"
                              "out vec4 first;\n"
                              "void main() { first = color; }\n"}});
    for (const GLenum target : {GL_TEXTURE_2D_ARRAY, GL_TEXTURE_3D})
    {
        const TexturePtr texture = layeredTexture(GLenum(target), 3);
        FramebufferObject framebuffer(nullptr);
        const AutoBinder binder(&framebuffer);
        ASSERT_TRUE(framebuffer.attachLayers(texture.get(), GL_COLOR_ATTACHMENT0, 0));
        framebuffer.setDrawBuffers();
        EXPECT_TRUE(framebuffer.isComplete());
        clearTo(kRed);
        EXPECT_EQ(texels(*texture, 0, kSize, kSize, 3), layers({kRed, kRed, kRed}));
        program.drawWholeTarget();
        EXPECT_EQ(texels(*texture, 0, kSize, kSize, 3), layers({kGreen, kBlue, kRed}));
        framebuffer.detachAll();
    }
}

TEST_F(FramebufferObjectGL, AttachUpdateDrawsIntoOneTextureAfterTheOther)
{
    const TexturePtr textures[] = {flatTexture(), flatTexture(), flatTexture()};
    const Color colors[] = {kRed, kGreen, kBlue};
    FramebufferObject framebuffer(nullptr);
    const AutoBinder binder(&framebuffer);
    for (int i = 0; i < 3; ++i)
    {
        ASSERT_TRUE(framebuffer.attachUpdate(textures[i].get(), GL_COLOR_ATTACHMENT0, 0));
        EXPECT_TRUE(framebuffer.isComplete());
        clearTo(colors[i]);
    }
    framebuffer.detachAll();
    for (int i = 0; i < 3; ++i)
        EXPECT_EQ(texels(*textures[i], 0, kSize, kSize), filled(16, colors[i]));
}

// ---- draw buffers --------------------------------------------------------------------------------------------------

TEST_F(FramebufferObjectGL, OutputsFollowTheDrawBuffersThatADetachLeaves)
{
    const TexturePtr textures[] = {flatTexture(), flatTexture(), flatTexture()};
    FramebufferObject framebuffer(nullptr);
    const AutoBinder binder(&framebuffer);
    for (GLenum i = 0; i < 3; ++i)
        ASSERT_TRUE(framebuffer.attach(textures[i].get(), GL_COLOR_ATTACHMENT0 + i, 0));
    framebuffer.setDrawBuffers();
    for (GLint i = 0; i < 3; ++i)
        clearTo(kRed, i);
    EXPECT_EQ(framebuffer.detach(GL_COLOR_ATTACHMENT1), textures[1].get());
    framebuffer.setDrawBuffers();
    EXPECT_EQ(integerOf(GL_DRAW_BUFFER0), GLuint(GL_COLOR_ATTACHMENT0));
    EXPECT_EQ(integerOf(GL_DRAW_BUFFER1), GLuint(GL_COLOR_ATTACHMENT2));
    EXPECT_EQ(integerOf(GL_DRAW_BUFFER2), GLuint(GL_NONE));
    EXPECT_TRUE(framebuffer.isComplete());
    const Program program(
        {{GL_VERTEX_SHADER, kWholeTarget},
         {GL_FRAGMENT_SHADER, "#version 150\n"
                              "out vec4 first;\n"
                              "out vec4 second;\n"
                              "void main() { first = vec4(0, 1, 0, 1); second = vec4(0, 0, 1, 1); }\n"}});
    program.drawWholeTarget();
    framebuffer.detachAll();
    EXPECT_EQ(texels(*textures[0], 0, kSize, kSize), filled(16, kGreen));
    EXPECT_EQ(texels(*textures[1], 0, kSize, kSize), filled(16, kRed)) << "detached";
    EXPECT_EQ(texels(*textures[2], 0, kSize, kSize), filled(16, kBlue));
}

TEST_F(FramebufferObjectGL, DepthAloneIsCompleteAndDrawsToNoColour)
{
    const TexturePtr texture = flatTexture(GL_DEPTH_COMPONENT32F);
    FramebufferObject framebuffer(nullptr);
    const AutoBinder binder(&framebuffer);
    ASSERT_TRUE(framebuffer.attach(texture.get(), GL_DEPTH_ATTACHMENT, 0));
    framebuffer.setDrawBuffers();
    EXPECT_EQ(integerOf(GL_DRAW_BUFFER0), GLuint(GL_NONE));
    EXPECT_TRUE(framebuffer.isComplete());
    const float depth = 0.25f;
    glClearBufferfv(GL_DEPTH, 0, &depth);
    std::array<float, kSize* kSize> values = {};
    glReadPixels(0, 0, kSize, kSize, GL_DEPTH_COMPONENT, GL_FLOAT, values.data());
    for (const float value : values)
        EXPECT_EQ(value, depth);
    framebuffer.detachAll();
}

TEST_F(FramebufferObjectGL, DepthAndStencilOfOneTextureAreClearedTogether)
{
    const TexturePtr color = flatTexture();
    const auto depthStencil = std::make_unique<Texture>(nullptr);
    depthStencil->setTarget(GL_TEXTURE_2D);
    {
        const AutoBinder binder(depthStencil.get());
        glTexImage2D(GL_TEXTURE_2D, 0, GL_DEPTH24_STENCIL8, kSize, kSize, 0, GL_DEPTH_STENCIL, GL_UNSIGNED_INT_24_8,
                     nullptr);
    }
    FramebufferObject framebuffer(nullptr);
    const AutoBinder binder(&framebuffer);
    ASSERT_TRUE(framebuffer.attach(color.get(), GL_COLOR_ATTACHMENT0, 0));
    ASSERT_TRUE(framebuffer.attach(depthStencil.get(), GL_DEPTH_STENCIL_ATTACHMENT, 0));
    framebuffer.setDrawBuffers();
    EXPECT_TRUE(framebuffer.isComplete());
    glClearBufferfi(GL_DEPTH_STENCIL, 0, 1.0f, 0x5A);
    std::array<unsigned char, kSize* kSize> stencil = {};
    glReadPixels(0, 0, kSize, kSize, GL_STENCIL_INDEX, GL_UNSIGNED_BYTE, stencil.data());
    for (const unsigned char value : stencil)
        EXPECT_EQ(int(value), 0x5A);
    framebuffer.detachAll();
}

// ---- textures of its own -------------------------------------------------------------------------------------------

TEST_F(FramebufferObjectGL, CreateTexture2DGivesATargetToDrawTo)
{
    FramebufferObject framebuffer(nullptr);
    const AutoBinder binder(&framebuffer);
    framebuffer.createTexture2D(GL_COLOR_ATTACHMENT0, GL_TEXTURE_2D, GL_RGBA8, kSize, kSize);
    EXPECT_TRUE(framebuffer.isComplete());
    clearTo(kBlue);
    const TexturePtr texture(framebuffer.detach(GL_COLOR_ATTACHMENT0));
    ASSERT_TRUE(texture);
    EXPECT_EQ(texels(*texture, 0, kSize, kSize), filled(16, kBlue));
}

TEST_F(FramebufferObjectGL, CreateTexture3DGivesEachLayerAPoint)
{
    for (const GLenum target : {GL_TEXTURE_2D_ARRAY, GL_TEXTURE_3D})
    {
        FramebufferObject framebuffer(nullptr);
        const AutoBinder binder(&framebuffer);
        framebuffer.createTexture3D(GL_COLOR_ATTACHMENT0, GLenum(target), GL_RGBA8, kSize, kSize, 3);
        framebuffer.setDrawBuffers();
        EXPECT_TRUE(framebuffer.isComplete());
        clearTo(kRed, 0);
        clearTo(kGreen, 1);
        clearTo(kBlue, 2);
        const TexturePtr texture(framebuffer.attachment(GL_COLOR_ATTACHMENT0));
        ASSERT_TRUE(texture);
        framebuffer.detachAll();
        EXPECT_EQ(texels(*texture, 0, kSize, kSize, 3), layers({kRed, kGreen, kBlue}));
    }
}

// ---- completeness --------------------------------------------------------------------------------------------------

TEST_F(FramebufferObjectGL, AnEmptyOneSaysWhyOnlyWhileBound)
{
    FramebufferObject framebuffer(nullptr);
    LogCapture log;
    EXPECT_FALSE(framebuffer.isComplete());
    EXPECT_EQ(log.messages(QtDebugMsg), QStringList("Framebuffer is incomplete: "));
    EXPECT_EQ(integerOf(GL_FRAMEBUFFER_BINDING), 0u);
    const AutoBinder binder(&framebuffer);
    log.clear();
    EXPECT_FALSE(framebuffer.isComplete());
    EXPECT_EQ(log.messages(QtDebugMsg),
              QStringList("Framebuffer is incomplete: No images are attached to the framebuffer."));
}

TEST_F(FramebufferObjectGL, ATextureWithoutStorageIsAnIncompleteAttachment)
{
    Texture texture(nullptr);
    texture.setTarget(GL_TEXTURE_2D);
    texture.bind();
    texture.unbind();
    FramebufferObject framebuffer(nullptr);
    const AutoBinder binder(&framebuffer);
    ASSERT_TRUE(framebuffer.attach(&texture, GL_COLOR_ATTACHMENT0, 0));
    const LogCapture log;
    EXPECT_FALSE(framebuffer.isComplete());
    EXPECT_EQ(log.messages(QtDebugMsg),
              QStringList("Framebuffer is incomplete: "
                          "Not all framebuffer attachment points are framebuffer attachment complete."));
    framebuffer.detachAll();
}

TEST_F(FramebufferObjectGL, DetachingTheLastOneLeavesAnEmptyFramebuffer)
{
    const TexturePtr texture = flatTexture();
    FramebufferObject framebuffer(nullptr);
    const AutoBinder binder(&framebuffer);
    framebuffer.attach(texture.get(), GL_COLOR_ATTACHMENT0, 0);
    EXPECT_TRUE(framebuffer.isComplete());
    framebuffer.detachAll();
    GLint kind = -1;
    glGetFramebufferAttachmentParameteriv(GL_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, GL_FRAMEBUFFER_ATTACHMENT_OBJECT_TYPE,
                                          &kind);
    EXPECT_EQ(kind, GL_NONE);
    const LogCapture log;
    EXPECT_FALSE(framebuffer.isComplete());
    EXPECT_EQ(log.messages(), QStringList("Framebuffer is incomplete: No images are attached to the framebuffer."));
}

} // namespace Harrow::Vrk::Test
