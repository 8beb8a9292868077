// SPDX-License-Identifier: MIT
#pragma once

/// \file
/// The texts that tell why a shader or program could not be built, and their way to the log. Plain functions of their
/// arguments, free of OpenGL calls. Not installed.

#include "Export.h"

#include <QString>

namespace Harrow::Vrk
{

/// Every line of `text` as "%1 : %2\n": its number from 1, right-aligned in four columns, and the line. A line end at
/// the end of the text begins one more, empty line.
VRKGL_EXPORT QString numberedLines(const QString& text);

/// The report of a stage that doesn't compile: its type by name, its numbered source and the driver's text.
VRKGL_EXPORT QString compileFailureReport(unsigned int shaderType, const QString& source, const QString& log);

VRKGL_EXPORT QString linkFailureReport(const QString& log);
VRKGL_EXPORT QString validateFailureReport(const QString& log);

/// The name of a shader type for a file name: "VS", "FS", "GS", "TES", "TCS", or empty for any other.
VRKGL_EXPORT QString shaderTypeAbbreviation(unsigned int shaderType);

/// Splits at "\n" and gives each piece, the empty ones too, to the Qt message log as a warning. Not subject to the
/// logging switch.
VRKGL_EXPORT void warnLineByLine(const QString& report);

} // namespace Harrow::Vrk
