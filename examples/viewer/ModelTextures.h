// SPDX-License-Identifier: MIT
// A model's pictures as tokens of a texture manager.
#pragma once

#include "Model.h"

#include <VrkGL/TextureToken.h>

#include <vector>

namespace Harrow::Vrk
{
class TextureManager;
}

namespace vrkview
{

/// Loads all pictures at once, so that the first frame does not wait; shows how far it is on a terminal. A picture that
/// is not there or cannot be read comes out white, and the log says which. The textures belong to the manager.
class ModelTextures
{
public:
    ModelTextures(Harrow::Vrk::TextureManager& manager, const Model& model);

    /// The token of the picture that colours a mesh, or that of white.
    Harrow::Vrk::TextureToken tokenOf(const Mesh& mesh) const;

private:
    const Model& _model;
    Harrow::Vrk::TextureToken _white;
    std::vector<Harrow::Vrk::TextureToken> _ofImage;
};

} // namespace vrkview
