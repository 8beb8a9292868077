// SPDX-License-Identifier: MIT
// The state of a driver that a function could have changed, taken before and compared after.
#pragma once

#include "GLFunctions.h"

#include <gtest/gtest.h>

#include <array>
#include <cstddef>
#include <map>
#include <string>
#include <vector>

namespace Harrow::Vrk::Test
{

using Values = std::vector<double>;
/// Numbers by the names of what they are the state of; of texture units with the unit behind the name.
using State = std::map<std::string, Values>;

/// A state by its name, with so many numbers.
struct Query
{
    const char* name;
    GLenum parameter;
    std::size_t values;
};

inline constexpr Query kQueries[] = {{"GL_ACTIVE_TEXTURE", GL_ACTIVE_TEXTURE, 1},
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

inline constexpr Query kCapabilities[] = {{"GL_BLEND", GL_BLEND, 0},
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

inline constexpr Query kUnitQueries[] = {{"GL_TEXTURE_BINDING_2D", GL_TEXTURE_BINDING_2D, 1},
                                         {"GL_TEXTURE_BINDING_3D", GL_TEXTURE_BINDING_3D, 1},
                                         {"GL_TEXTURE_BINDING_2D_ARRAY", GL_TEXTURE_BINDING_2D_ARRAY, 1},
                                         {"GL_TEXTURE_BINDING_CUBE_MAP", GL_TEXTURE_BINDING_CUBE_MAP, 1}};

inline int unitCount()
{
    GLint count = 0;
    glGetIntegerv(GL_MAX_TEXTURE_IMAGE_UNITS, &count);
    return count;
}

inline Values valuesOf(const Query& query)
{
    std::array<double, 16> values = {};
    glGetDoublev(query.parameter, values.data());
    return Values(values.begin(), values.begin() + std::ptrdiff_t(query.values));
}

inline State currentState()
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
inline State changesSince(const State& before)
{
    State changes;
    for (const auto& [name, values] : currentState())
        if (values != before.at(name))
            changes[name] = values;
    return changes;
}

} // namespace Harrow::Vrk::Test
