// SPDX-License-Identifier: MIT
// What the panels of the window say, as rows of text.
#pragma once

#include "FrameStats.h"
#include "RenderSettings.h"
#include "TextImage.h"

#include <QList>
#include <QString>

namespace vrkview
{

/// All keys and what they do.
TextRows helpRows();

/// What is beside the frames themselves.
struct Surroundings
{
    QString driver;
    QString camera; ///< name of the file's camera, or empty
    int glErrors = 0;
};

/// What the last of these frames cost and by which choices it was drawn.
TextRows statsRows(const QList<FrameStats>& frames, const RenderSettings& settings, const Surroundings& surroundings);

} // namespace vrkview
