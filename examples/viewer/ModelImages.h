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

    std::vector<Image> take();

private:
    Image find(const aiString& name) const;
    QString pathBesideModel(const QString& name) const;
    Image tilesBesideModel(const QString& name) const;

    const aiScene& _scene;
    QDir _folder;
    QHash<QString, std::size_t> _known; // by path
    std::vector<Image> _images;
};

} // namespace vrkview
