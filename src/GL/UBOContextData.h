// SPDX-License-Identifier: MIT
#pragma once

/// \file
/// The pool of indexed binding points that one context has for one kind of block: who holds which point, how often, and
/// what a batch has touched. Book-keeping only, no OpenGL call is made here. Not installed.

#include "FreeNumbers.h"
#include "GLOptionalFunctions.h"

#include <QHash>
#include <QList>

#include <algorithm>

namespace Harrow::Vrk
{

struct UBOContextData
{
    UBOContextData(GLenum target, int maxBindings) : _target(target), _maxBindings(std::max(maxBindings, 0))
    {
        _freeBindings.insertBelow(_maxBindings);
        _bindingBuffers.resize(_maxBindings, 0u);
    }

    /// The binding point of a buffer, or -1.
    int bindingOf(GLuint buffer) const
    {
        return _uniformBufferObjectToUniformBlockBindingMaps.value(buffer, -1);
    }

    /// `preferred` if it is free, else the lowest free point, or -1 when all are taken. Takes nothing.
    int chooseBinding(int preferred) const
    {
        return _freeBindings.contains(static_cast<unsigned>(preferred)) ? preferred : _freeBindings.first();
    }

    /// Gives a free binding point to a buffer that has none; one bind is then in force.
    void take(GLuint buffer, int binding)
    {
        _freeBindings.remove(static_cast<unsigned>(binding));
        _uniformBufferObjectToUniformBlockBindingMaps.insert(buffer, binding);
        _boundUniformBufferObjectCounts.insert(buffer, 1);
        _bindingBuffers[binding] = buffer;
    }

    /// Takes the binding point from a buffer that has one, whatever its count.
    void release(GLuint buffer)
    {
        const int binding = _uniformBufferObjectToUniformBlockBindingMaps.take(buffer);
        _boundUniformBufferObjectCounts.remove(buffer);
        _freeBindings.insert(static_cast<unsigned>(binding));
        _bindingBuffers[binding] = 0;
    }

    bool isBatching() const
    {
        return _batchFirst != -1;
    }

    /// Opens a batch, or makes the one that is open forget its range.
    void startBatch()
    {
        _batchFirst = _maxBindings;
        _batchLast = -1;
    }

    void extendBatch(int binding)
    {
        _batchFirst = std::min(binding, _batchFirst);
        _batchLast = std::max(_batchLast, binding);
    }

    void endBatch()
    {
        _batchFirst = -1;
        _batchLast = -1;
    }

    GLenum _target;
    int _maxBindings;
    QHash<GLuint, int> _uniformBufferObjectToUniformBlockBindingMaps;
    QHash<GLuint, int> _boundUniformBufferObjectCounts;
    FreeNumbers _freeBindings;
    // Lowest and highest binding point of the batch. Both are -1 outside a batch; in one that has touched nothing yet
    // the range is empty.
    int _batchFirst = -1;
    int _batchLast = -1;
    // The buffer on each binding point, 0 on a free one.
    QList<GLuint> _bindingBuffers;
    // Null where the driver lacks it.
    PFN_glBindBuffersBase _bindBuffersBase = nullptr;
    // Fetched for storage blocks only.
    PFN_glShaderStorageBlockBinding _shaderStorageBlockBinding = nullptr;
};

} // namespace Harrow::Vrk
