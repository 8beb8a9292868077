// SPDX-License-Identifier: MIT
#pragma once

/// \file
/// The rows that the loader walks to fill the function table. Not installed.

#include <span>

namespace Harrow::Vrk
{

struct GLTableEntry
{
    const char* name;
    void* slot; ///< The `_ptrc_` pointer.
    void (*store)(void* slot, void* address);
};

/// One row of the extension table: which run of `glExtensionEntries` belongs to an extension. A run of length 0 means
/// that the extension has no functions and so no loader routine.
struct GLTableExtension
{
    const char* name;
    int first;
    int count;
};

/// The 3.2 core profile, in load order.
std::span<const GLTableEntry> glCoreEntries();
std::span<const GLTableEntry> glExtensionEntries();
std::span<const GLTableExtension> glTableExtensions();

} // namespace Harrow::Vrk
