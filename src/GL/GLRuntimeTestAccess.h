// SPDX-License-Identifier: MIT
#pragma once

/// \file
/// Lets tests see and reset the process-wide state of the runtime, which nothing in the library ever resets. Not
/// installed.

#include "Export.h"

namespace Harrow::Vrk
{

struct VRKGL_EXPORT GLRuntimeTestAccess
{
    static void resetVersionCache();
    static void resetInitialisedFlag();
    static void forgetExtensionsOf(void* context);
    /// The flag of a row of the extension table: 0, or 1 plus the number of its functions that are missing.
    static int extensionFlag(int row);
    /// Numbers of core and extension pointers, and their names in load order.
    static int coreEntryCount();
    static const char* coreEntryName(int index);
    static int extensionEntryCount();
    static const char* extensionEntryName(int index);
    /// Sets every pointer of the table to null.
    static void clearTable();
    /// First core version of an entry point as 10 * major + minor; 0 when only extensions bring it, -1 when unknown.
    static int requiredVersion(const char* name);
};

} // namespace Harrow::Vrk
