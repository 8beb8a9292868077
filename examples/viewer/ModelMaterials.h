// SPDX-License-Identifier: MIT
// Materials of the importer as those of a Model: factors, pictures, and how the pictures lie on the meshes.
#pragma once

#include "Model.h"
#include "ModelImages.h"

#include <QMatrix3x3>

#include <vector>

struct aiMaterial;

namespace vrkview
{

/// How texture coordinates come from those of a mesh's file.
struct TexCoordSource
{
    unsigned int set = 0; ///< of the importer's sets
    QMatrix3x3 fromFile;  ///< (x, y, 1) of the file to those that pictures are looked up at; y upwards in both

    bool operator==(const TexCoordSource& other) const = default;
};

/// A material with the texture coordinates that its meshes must have: none, one, or two, in the order of
/// `Mesh::texCoords` and `Mesh::moreTexCoords`.
struct ReadMaterial
{
    Material material;
    std::vector<TexCoordSource> texCoords;
    int misplaced = 0; ///< pictures that want a third kind of coordinates, and lie as the first one does
};

/// The pictures go into `images`.
ReadMaterial readMaterial(const aiMaterial& source, ImageTable& images);

} // namespace vrkview
