// SPDX-License-Identifier: MIT
// The first step with a new context, the same for window and picture: load the library's function table.
#pragma once

#include <QString>

namespace vrkview
{

/// With a context current: loads the functions and puts the driver's name and version into `driver`. On false `error`
/// says in one line why this context can't be used.
bool startDriver(QString& driver, QString& error);

} // namespace vrkview
