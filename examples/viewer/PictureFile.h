// SPDX-License-Identifier: MIT
// Writes the picture so that the file is whole or was not touched, and tells beforehand whether it can be written: a
// long drawing should not end in a wrong path.
#pragma once

#include <QImage>
#include <QString>

namespace vrkview
{

/// Why no picture can be written to `path`, in one line, or an empty string. Leaves nothing behind.
QString pictureFault(const QString& path);

/// Writes `image` to `path` as PNG, replacing a file that is there. On false `error` says why in one line, and what was
/// there is as it was.
bool writePicture(const QImage& image, const QString& path, QString& error);

} // namespace vrkview
