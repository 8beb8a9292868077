// SPDX-License-Identifier: MIT
// Node matrices of glTF 1.0 files. Assimp 5.2 multiplies translation and rotation of such nodes in the wrong order,
// which puts turned parts in wrong places; here they are put together as the format says. Not needed for glTF 2.
#pragma once

#include <QHash>
#include <QMatrix4x4>
#include <QString>

namespace vrkview
{

/// The matrices to their parent of all nodes that give translation, rotation or scale, by the node's identifier, which
/// Assimp uses as the node's name. Empty for any other file than glTF 1.0 in JSON.
QHash<QString, QMatrix4x4> gltf1NodeMatrices(const QString& path);

} // namespace vrkview
