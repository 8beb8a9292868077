// SPDX-License-Identifier: MIT
#pragma once

/// \file
/// Finds the directory of the resources that were installed together with the library: the GLSL tree whose
/// files stand before the embedded ones. The library file itself is the fixed point of the search, so an
/// installation can be moved as a whole.

#include "Export.h"

#include <QString>

namespace Harrow::Vrk
{

/// The directory of the installed resources, `<prefix>/share/vrkgl`, as an absolute path with forward slashes
/// and no slash at the end.
///
/// It is found from the file that the library VrkCore was loaded from: first by the way from the library's
/// directory to the resources that the build was configured for (which covers library directories with a
/// subdirectory per architecture), then as `../share/vrkgl`. Symbolic links to the library are followed first.
/// Neither the environment nor the current directory plays a part: where the library was loaded by a relative
/// name, that name is completed when it is loaded, and a later change of the directory changes nothing.
///
/// Empty when no such directory exists, as in a build tree, and when the system cannot tell the library's file.
/// Then only the embedded resources are there. Take care with what is put behind an empty path: "/GLSL/include"
/// is an absolute path at the root of the file system, which is searched like any other should it exist.
///
/// The answer is found at the first call and kept for the life of the process; a directory made later is not
/// seen. May be called on any thread. Logs nothing.
VRKCORE_EXPORT QString resourcesPath();

} // namespace Harrow::Vrk
