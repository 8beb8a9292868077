// SPDX-License-Identifier: MIT
// Materials of glTF 2 files that shine by more than their colour says, KHR_materials_emissive_strength. Assimp 5.2 does
// not read the number, so it is put into the colour before Assimp sees the file.
#pragma once

#include <QByteArray>
#include <QString>

namespace vrkview
{

/// Whether the name is that of a glTF file, in JSON or binary.
bool isGltf(const QString& path);

/// The file's contents with each strength multiplied into its emissive factor. Empty where there is none, so for other
/// files too, and for those that are no proper glTF, of which Assimp says what is wrong.
QByteArray withStrongEmission(const QString& path);

} // namespace vrkview
