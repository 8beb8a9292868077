// SPDX-License-Identifier: MIT
#pragma once

/// \file
/// VRKCORE_EXPORT marks what the library VrkCore offers. The library is built with hidden visibility, so a
/// class or function without the mark stays inside. VRKCORE_BUILDING is defined by VrkCore's own build
/// alone; consumers define nothing.

#if defined(_WIN32)
#if defined(VRKCORE_BUILDING)
#define VRKCORE_EXPORT __declspec(dllexport)
#else
#define VRKCORE_EXPORT __declspec(dllimport)
#endif
#else
/// Stands before what the library exports.
#define VRKCORE_EXPORT __attribute__((visibility("default")))
#endif
