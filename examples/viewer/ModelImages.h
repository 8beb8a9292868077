// SPDX-License-Identifier: MIT
// The pictures that a model's materials name: found beside the model, or taken out of the model's own file.
#pragma once

#include "Model.h"

#include <QDir>
#include <QHash>
#include <QString>

struct aiScene;
struct aiString;

namespace vrkview
{

/// Collects each picture once. Files are found here and read later; what came inside the model's file is decoded now.
class ImageTable
{
public:
    /// Both are the ones that the materials come from.
    ImageTable(const aiScene& scene, const QString& modelPath);

    /// The number of the picture that a material names.
    std::size_t indexOf(const aiString& name);

    /// The number of a picture with the roughness in green and the metal in blue, each from the red of a picture of its
    /// own. What is null is 1 everywhere; what can't be read is rough and no metal.
    std::size_t indexOfSurface(const aiString* roughness, const aiString* metal);

    /// Whether a picture looks as one of normals does, on the whole blue, and not as one of heights.
    bool holdsNormals(const aiString& name) const;

    std::vector<Image> take();

private:
    std::size_t add(Image image);
    Image find(const aiString& name) const;
    QImage pixelsOf(const aiString* name) const;
    QString pathBesideModel(const QString& name) const;
    Image tilesBesideModel(const QString& name) const;

    const aiScene& _scene;
    QDir _folder;
    QHash<QString, std::size_t> _known; // by path
    std::vector<Image> _images;
};

} // namespace vrkview
