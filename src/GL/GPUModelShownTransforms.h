// SPDX-License-Identifier: MIT
#pragma once

/// \file
/// The question that culling and drawing put for each command: is its transform there, and is it shown? Not installed.

#include "GPUModel.h"

namespace Harrow::Vrk
{

/// Of the model as it is while this lives. As long as no transform hides all below it, nobody looks upwards.
class GPUModel::ShownTransforms
{
public:
    explicit ShownTransforms(const GPUModel& model)
        : _model(model),
          _states(model._transformVisibility.constData()),
          _count(model._transformVisibility.size()),
          _mayHideBelow(model._hiddenTrees != 0)
    {
    }

    bool contains(int transform) const
    {
        return 0 <= transform && transform < _count;
    }

    /// Of a transform that there is.
    bool isShown(int transform) const
    {
        const int state = _states[transform];
        return state != kHidden && state != kHiddenWithDescendants && (!_mayHideBelow || _model.isShown(transform));
    }

private:
    const GPUModel& _model;
    const int* _states;
    qsizetype _count;
    bool _mayHideBelow;
};

} // namespace Harrow::Vrk
