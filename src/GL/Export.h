// SPDX-License-Identifier: MIT
#pragma once

/// \file
/// Marks what the shared library exports. The library is built with hidden visibility; a class or function without
/// this mark is not part of the interface.

#if defined(_WIN32)
#if defined(VRKGL_BUILDING)
#define VRKGL_EXPORT __declspec(dllexport)
#else
#define VRKGL_EXPORT __declspec(dllimport)
#endif
#else
/// Stands before what the library exports.
#define VRKGL_EXPORT __attribute__((visibility("default")))
#endif
