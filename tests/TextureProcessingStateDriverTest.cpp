// SPDX-License-Identifier: MIT
//
// Texture processing on the real driver: which state the operations leave behind.
#include "TextureProcessing.h"

#include "GLStateTools.h"
#include "TextureProcessingDriverTestTools.h"

#include <QString>
#include <QVariant>

#include <map>
#include <string>

namespace Harrow::Vrk::Test
{

using namespace Processing;

namespace
{

/// A state in which whatever the operations set was otherwise, and much else is not as at the start. Taken back at the
/// end.
class UnusualState
{
public:
    UnusualState()
    {
        glGenFramebuffers(1, &_framebuffer);
        glGenVertexArrays(1, &_vertexArray);
        glGenBuffers(1, &_buffer);
        glGenTextures(1, &_texture);
        _program.reset(MakeTextureShaderFromString(
            QStringLiteral("#version 150\nout vec4 out_FragColor;\nvoid main() { out_FragColor = vec4(0.5); }\n")));
        glBindFramebuffer(GL_FRAMEBUFFER, _framebuffer);
        glBindVertexArray(_vertexArray);
        glBindBuffer(GL_ARRAY_BUFFER, _buffer);
        glBindBuffer(GL_UNIFORM_BUFFER, _buffer);
        for (const GLenum unit : {GL_TEXTURE0, GL_TEXTURE5})
        {
            glActiveTexture(unit);
            glBindTexture(GL_TEXTURE_2D, _texture);
        }
        glUseProgram(_program->shaderProgramID());
        for (const GLenum capability : kEnabled)
            glEnable(capability);
        glDisable(GL_DEPTH_TEST);
        glDepthMask(GL_FALSE);
        glDepthFunc(GL_GREATER);
        glBlendFunc(GL_ONE, GL_ONE);
        glClearColor(0.1f, 0.2f, 0.3f, 0.4f);
        glClearDepth(0.5);
        glViewport(3, 5, 7, 9);
        glScissor(0, 0, kSize, kSize);
        glPixelStorei(GL_UNPACK_ALIGNMENT, 2);
        glPixelStorei(GL_PACK_ALIGNMENT, 8);
    }

    ~UnusualState()
    {
        glBindFramebuffer(GL_FRAMEBUFFER, 0);
        glBindVertexArray(0);
        glBindBuffer(GL_ARRAY_BUFFER, 0);
        glBindBuffer(GL_UNIFORM_BUFFER, 0);
        glUseProgram(0);
        glDeleteFramebuffers(1, &_framebuffer);
        glDeleteVertexArrays(1, &_vertexArray);
        glDeleteBuffers(1, &_buffer);
        glDeleteTextures(1, &_texture);
        for (const GLenum capability : kEnabled)
            glDisable(capability);
        glDisable(GL_DEPTH_TEST);
        glDepthMask(GL_TRUE);
        glDepthFunc(GL_LESS);
        glBlendFunc(GL_ONE, GL_ZERO);
        glClearColor(0.0f, 0.0f, 0.0f, 0.0f);
        glClearDepth(1.0);
        glPixelStorei(GL_UNPACK_ALIGNMENT, 4);
        glPixelStorei(GL_PACK_ALIGNMENT, 4);
    }

    UnusualState(const UnusualState&) = delete;
    UnusualState& operator=(const UnusualState&) = delete;

private:
    static constexpr GLenum kEnabled[] = {GL_BLEND, GL_CULL_FACE, GL_SCISSOR_TEST, GL_TEXTURE_CUBE_MAP_SEAMLESS,
                                          GL_PROGRAM_POINT_SIZE};

    GLuint _framebuffer = 0;
    GLuint _vertexArray = 0;
    GLuint _buffer = 0;
    GLuint _texture = 0;
    std::unique_ptr<ShaderProgram> _program;
};

State leftByAPass()
{
    return {
        {"GL_BLEND", {0}},
        {"GL_DEPTH_TEST", {1}},
        {"GL_DEPTH_WRITEMASK", {1}},
        {"GL_COLOR_CLEAR_VALUE", {0, 0, 0, 1}},
        {"GL_VIEWPORT", {0, 0, kSize, kSize}},
        // What is bound in the course of it is bound no more, on the unit that it was bound to.
        {"GL_CURRENT_PROGRAM", {0}},
        {"GL_DRAW_FRAMEBUFFER_BINDING", {0}},
        {"GL_READ_FRAMEBUFFER_BINDING", {0}},
        {"GL_VERTEX_ARRAY_BINDING", {0}},
        {"GL_ARRAY_BUFFER_BINDING", {0}},
        {"GL_ACTIVE_TEXTURE", {double(GL_TEXTURE0 + unitCount() - 1)}},
    };
}

} // namespace

class TextureProcessingStateGL : public TextureProcessingDriverFixture
{
};

TEST_F(TextureProcessingStateGL, ProcessTextureLeavesExactlyThisStateBehind)
{
    const Bytes source = picture();
    const auto from = newByteTexture(source);
    const auto to = newByteTexture({});
    const auto program = newShader("texture(u_Src, vo_TexCoord)");
    {
        const UnusualState unusual;
        const State before = currentState();
        ProcessTexture(program.get(), {}, from.get(), to.get());
        EXPECT_EQ(changesSince(before), leftByAPass());
    }
    EXPECT_EQ(bytesOf(*to), source) << "blending and culling don't spoil the pass";
}

TEST_F(TextureProcessingStateGL, EachOperationInPlaceLeavesTheSameState)
{
    for (const Operation& operation : operations())
    {
        Texture* texture = newByteTexture(picture()).release();
        {
            const UnusualState unusual;
            const State before = currentState();
            EXPECT_TRUE(operation.run(texture));
            EXPECT_EQ(changesSince(before), leftByAPass()) << operation.name;
        }
        delete texture;
    }
}

TEST_F(TextureProcessingStateGL, AWritableCopyChangesTheActiveUnitAlone)
{
    const auto source = newByteTexture(picture());
    const UnusualState unusual;
    const State before = currentState();
    const std::unique_ptr<Texture> copy(WritableCopyOfTexture(source.get(), 0, 0));
    EXPECT_EQ(changesSince(before), (State{{"GL_ACTIVE_TEXTURE", {double(GL_TEXTURE0 + unitCount() - 1)}}}));
}

TEST_F(TextureProcessingStateGL, BlitTextureLeavesTheDefaultFramebufferBoundAndChangesNothingElse)
{
    const auto from = newByteTexture(picture());
    const auto to = newByteTexture({});
    const UnusualState unusual;
    const State before = currentState();
    BlitTexture(from.get(), to.get(), RGBA, kSize, kSize);
    EXPECT_EQ(changesSince(before),
              (State{{"GL_DRAW_FRAMEBUFFER_BINDING", {0}}, {"GL_READ_FRAMEBUFFER_BINDING", {0}}}));
}

} // namespace Harrow::Vrk::Test
