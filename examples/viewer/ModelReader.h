// SPDX-License-Identifier: MIT
// Reads a model file of any kind that Assimp knows into plain data: triangles only, normals made where the file has
// none, the node tree flattened into instances with world matrices. Needs no OpenGL.
#pragma once

#include "Model.h"

#include <QString>

#include <optional>

namespace vrkview
{

/// Which axis of the file points up. Assimp leaves the axes of scans and CAD parts as they are.
enum class UpAxis
{
    Y,
    Z
};

struct ReadResult
{
    std::optional<Model> model;
    QString error; ///< one line saying why there is no model
    QString note;  ///< one line on what a drawn model lacks, or empty
};

/// The model in the file at `path`, ready to be drawn: it has triangles and finite bounds. Loads that last show how
/// far they are on standard error when that is a terminal.
ReadResult readModel(const QString& path, UpAxis upAxis = UpAxis::Y);

} // namespace vrkview
