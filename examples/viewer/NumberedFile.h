// SPDX-License-Identifier: MIT
// Pictures under the next free number, so that none is ever lost to another one.
#pragma once

#include <QImage>
#include <QString>

namespace vrkview
{

/// Writes `image` into `folder` as vrkview-001.png, or under the first number behind it that no file has, and puts the
/// file's absolute path into `path`. On false `error` says why in one line, and nothing was made.
bool writeNumberedPicture(const QImage& image, const QString& folder, QString& path, QString& error);

} // namespace vrkview
