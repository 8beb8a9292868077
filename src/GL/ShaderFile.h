// SPDX-License-Identifier: MIT
#pragma once

/// \file
/// Finding and reading the source file of a stage. Free of OpenGL. Not installed.

#include "Export.h"

#include <QString>
#include <QStringList>

#include <optional>

namespace Harrow::Vrk
{

/// Where source files are looked for, in this order: the current directory, the installed resources, the embedded ones.
VRKGL_EXPORT QStringList shaderFileDirectories();

/// The UTF-8 text of the file `path` in the first of the directories that exists and in which it opens; nothing when it
/// opens in none. An absolute path counts for itself. Directories, pipes and devices don't count.
VRKGL_EXPORT std::optional<QString> readShaderFile(const QStringList& directories, const QString& path);

} // namespace Harrow::Vrk
