// SPDX-License-Identifier: MIT
#pragma once

/// \file
/// Takes down what a vertex shader computes, vertex by vertex, on a real driver: exact values instead of colours.

#include "GLFunctions.h"
#include "support/Picture.h"

#include <QList>

namespace Harrow::Vrk::Test
{

/// From construction to `end` no pixel is drawn, and the program's feedback varyings of all draws are collected. The
/// program is in use before, and all draws are of one kind of primitive.
class TransformFeedback
{
public:
    explicit TransformFeedback(GLenum primitive, GLsizeiptr bytes = 4096)
    {
        glGenBuffers(1, &_buffer);
        glBindBuffer(GL_TRANSFORM_FEEDBACK_BUFFER, _buffer);
        glBufferData(GL_TRANSFORM_FEEDBACK_BUFFER, bytes, nullptr, GL_STATIC_READ);
        glBindBufferBase(GL_TRANSFORM_FEEDBACK_BUFFER, 0, _buffer);
        glGenQueries(1, &_query);
        glEnable(GL_RASTERIZER_DISCARD);
        glBeginQuery(GL_TRANSFORM_FEEDBACK_PRIMITIVES_WRITTEN, _query);
        glBeginTransformFeedback(primitive);
    }

    ~TransformFeedback()
    {
        glBindBufferBase(GL_TRANSFORM_FEEDBACK_BUFFER, 0, 0);
        glDeleteBuffers(1, &_buffer);
        glDeleteQueries(1, &_query);
    }

    TransformFeedback(const TransformFeedback&) = delete;
    TransformFeedback& operator=(const TransformFeedback&) = delete;

    /// All values of the primitives that were drawn, `valuesPerPrimitive` each.
    template <typename Value> QList<Value> end(int valuesPerPrimitive)
    {
        glEndTransformFeedback();
        glEndQuery(GL_TRANSFORM_FEEDBACK_PRIMITIVES_WRITTEN);
        glDisable(GL_RASTERIZER_DISCARD);
        GLuint primitives = 0;
        glGetQueryObjectuiv(_query, GL_QUERY_RESULT, &primitives);
        QList<Value> values(static_cast<qsizetype>(primitives) * valuesPerPrimitive);
        glGetBufferSubData(GL_TRANSFORM_FEEDBACK_BUFFER, 0, values.size() * GLsizeiptr(sizeof(Value)), values.data());
        return values;
    }

private:
    // Nothing is drawn to it, but without a complete framebuffer nothing is drawn at all.
    OffscreenTarget _target{1, 1};
    GLuint _buffer = 0;
    GLuint _query = 0;
};

} // namespace Harrow::Vrk::Test
