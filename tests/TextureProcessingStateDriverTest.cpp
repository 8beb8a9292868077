// SPDX-License-Identifier: MIT
//
// Texture processing on the real driver: which state the operations leave behind.
#include "TextureProcessing.h"

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

using Values = std::vector<double>;
using State = std::map<std::string, Values>;

struct Query
{
    const char* name;
    GLenum parameter;
    std::size_t values;
};

constexpr Query kQueries[] = {{"GL_ACTIVE_TEXTURE", GL_ACTIVE_TEXTURE, 1},
                              {"GL_ARRAY_BUFFER_BINDING", GL_ARRAY_BUFFER_BINDING, 1},
                              {"GL_BLEND_COLOR", GL_BLEND_COLOR, 4},
                              {"GL_BLEND_DST_ALPHA", GL_BLEND_DST_ALPHA, 1},
                              {"GL_BLEND_DST_RGB", GL_BLEND_DST_RGB, 1},
                              {"GL_BLEND_EQUATION_ALPHA", GL_BLEND_EQUATION_ALPHA, 1},
                              {"GL_BLEND_EQUATION_RGB", GL_BLEND_EQUATION_RGB, 1},
                              {"GL_BLEND_SRC_ALPHA", GL_BLEND_SRC_ALPHA, 1},
                              {"GL_BLEND_SRC_RGB", GL_BLEND_SRC_RGB, 1},
                              {"GL_CLAMP_READ_COLOR", GL_CLAMP_READ_COLOR, 1},
                              {"GL_COLOR_CLEAR_VALUE", GL_COLOR_CLEAR_VALUE, 4},
                              {"GL_COLOR_WRITEMASK", GL_COLOR_WRITEMASK, 4},
                              {"GL_CULL_FACE_MODE", GL_CULL_FACE_MODE, 1},
                              {"GL_CURRENT_PROGRAM", GL_CURRENT_PROGRAM, 1},
                              {"GL_DEPTH_CLEAR_VALUE", GL_DEPTH_CLEAR_VALUE, 1},
                              {"GL_DEPTH_FUNC", GL_DEPTH_FUNC, 1},
                              {"GL_DEPTH_RANGE", GL_DEPTH_RANGE, 2},
                              {"GL_DEPTH_WRITEMASK", GL_DEPTH_WRITEMASK, 1},
                              {"GL_DRAW_FRAMEBUFFER_BINDING", GL_DRAW_FRAMEBUFFER_BINDING, 1},
                              {"GL_FRONT_FACE", GL_FRONT_FACE, 1},
                              {"GL_LINE_WIDTH", GL_LINE_WIDTH, 1},
                              {"GL_LOGIC_OP_MODE", GL_LOGIC_OP_MODE, 1},
                              {"GL_PACK_ALIGNMENT", GL_PACK_ALIGNMENT, 1},
                              {"GL_PACK_ROW_LENGTH", GL_PACK_ROW_LENGTH, 1},
                              {"GL_PIXEL_PACK_BUFFER_BINDING", GL_PIXEL_PACK_BUFFER_BINDING, 1},
                              {"GL_PIXEL_UNPACK_BUFFER_BINDING", GL_PIXEL_UNPACK_BUFFER_BINDING, 1},
                              {"GL_POINT_SIZE", GL_POINT_SIZE, 1},
                              {"GL_POLYGON_OFFSET_FACTOR", GL_POLYGON_OFFSET_FACTOR, 1},
                              {"GL_POLYGON_OFFSET_UNITS", GL_POLYGON_OFFSET_UNITS, 1},
                              {"GL_PRIMITIVE_RESTART_INDEX", GL_PRIMITIVE_RESTART_INDEX, 1},
                              {"GL_PROVOKING_VERTEX", GL_PROVOKING_VERTEX, 1},
                              {"GL_READ_FRAMEBUFFER_BINDING", GL_READ_FRAMEBUFFER_BINDING, 1},
                              {"GL_RENDERBUFFER_BINDING", GL_RENDERBUFFER_BINDING, 1},
                              {"GL_SAMPLE_COVERAGE_VALUE", GL_SAMPLE_COVERAGE_VALUE, 1},
                              {"GL_SCISSOR_BOX", GL_SCISSOR_BOX, 4},
                              {"GL_STENCIL_CLEAR_VALUE", GL_STENCIL_CLEAR_VALUE, 1},
                              {"GL_STENCIL_FUNC", GL_STENCIL_FUNC, 1},
                              {"GL_STENCIL_REF", GL_STENCIL_REF, 1},
                              {"GL_STENCIL_WRITEMASK", GL_STENCIL_WRITEMASK, 1},
                              {"GL_TRANSFORM_FEEDBACK_BUFFER_BINDING", GL_TRANSFORM_FEEDBACK_BUFFER_BINDING, 1},
                              {"GL_UNIFORM_BUFFER_BINDING", GL_UNIFORM_BUFFER_BINDING, 1},
                              {"GL_UNPACK_ALIGNMENT", GL_UNPACK_ALIGNMENT, 1},
                              {"GL_UNPACK_ROW_LENGTH", GL_UNPACK_ROW_LENGTH, 1},
                              {"GL_UNPACK_SKIP_PIXELS", GL_UNPACK_SKIP_PIXELS, 1},
                              {"GL_UNPACK_SKIP_ROWS", GL_UNPACK_SKIP_ROWS, 1},
                              {"GL_VERTEX_ARRAY_BINDING", GL_VERTEX_ARRAY_BINDING, 1},
                              {"GL_VIEWPORT", GL_VIEWPORT, 4}};

constexpr Query kCapabilities[] = {{"GL_BLEND", GL_BLEND, 0},
                                   {"GL_CLIP_DISTANCE0", GL_CLIP_DISTANCE0, 0},
                                   {"GL_COLOR_LOGIC_OP", GL_COLOR_LOGIC_OP, 0},
                                   {"GL_CULL_FACE", GL_CULL_FACE, 0},
                                   {"GL_DEPTH_CLAMP", GL_DEPTH_CLAMP, 0},
                                   {"GL_DEPTH_TEST", GL_DEPTH_TEST, 0},
                                   {"GL_DITHER", GL_DITHER, 0},
                                   {"GL_FRAMEBUFFER_SRGB", GL_FRAMEBUFFER_SRGB, 0},
                                   {"GL_LINE_SMOOTH", GL_LINE_SMOOTH, 0},
                                   {"GL_MULTISAMPLE", GL_MULTISAMPLE, 0},
                                   {"GL_POLYGON_OFFSET_FILL", GL_POLYGON_OFFSET_FILL, 0},
                                   {"GL_POLYGON_SMOOTH", GL_POLYGON_SMOOTH, 0},
                                   {"GL_PRIMITIVE_RESTART", GL_PRIMITIVE_RESTART, 0},
                                   {"GL_PROGRAM_POINT_SIZE", GL_PROGRAM_POINT_SIZE, 0},
                                   {"GL_RASTERIZER_DISCARD", GL_RASTERIZER_DISCARD, 0},
                                   {"GL_SAMPLE_ALPHA_TO_COVERAGE", GL_SAMPLE_ALPHA_TO_COVERAGE, 0},
                                   {"GL_SAMPLE_COVERAGE", GL_SAMPLE_COVERAGE, 0},
                                   {"GL_SCISSOR_TEST", GL_SCISSOR_TEST, 0},
                                   {"GL_STENCIL_TEST", GL_STENCIL_TEST, 0},
                                   {"GL_TEXTURE_CUBE_MAP_SEAMLESS", GL_TEXTURE_CUBE_MAP_SEAMLESS, 0}};

constexpr Query kUnitQueries[] = {{"GL_TEXTURE_BINDING_2D", GL_TEXTURE_BINDING_2D, 1},
                                  {"GL_TEXTURE_BINDING_3D", GL_TEXTURE_BINDING_3D, 1},
                                  {"GL_TEXTURE_BINDING_2D_ARRAY", GL_TEXTURE_BINDING_2D_ARRAY, 1},
                                  {"GL_TEXTURE_BINDING_CUBE_MAP", GL_TEXTURE_BINDING_CUBE_MAP, 1}};

int unitCount()
{
    GLint count = 0;
    glGetIntegerv(GL_MAX_TEXTURE_IMAGE_UNITS, &count);
    return count;
}

Values valuesOf(const Query& query)
{
    std::array<double, 16> values = {};
    glGetDoublev(query.parameter, values.data());
    return Values(values.begin(), values.begin() + std::ptrdiff_t(query.values));
}

State currentState()
{
    State state;
    for (const Query& query : kQueries)
        state[query.name] = valuesOf(query);
    for (const Query& query : kCapabilities)
        state[query.name] = {double(glIsEnabled(query.parameter))};
    const auto active = static_cast<GLenum>(state["GL_ACTIVE_TEXTURE"][0]);
    for (int unit = 0; unit < unitCount(); ++unit)
    {
        glActiveTexture(GL_TEXTURE0 + GLenum(unit));
        for (const Query& query : kUnitQueries)
            state[std::string(query.name) + ' ' + std::to_string(unit)] = valuesOf(query);
    }
    glActiveTexture(active);
    EXPECT_EQ(glGetError(), GLenum(GL_NO_ERROR));
    return state;
}

/// What is not as it was before, with its value now.
State changesSince(const State& before)
{
    State changes;
    for (const auto& [name, values] : currentState())
        if (values != before.at(name))
            changes[name] = values;
    return changes;
}

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
