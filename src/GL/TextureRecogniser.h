// SPDX-License-Identifier: MIT
#pragma once

/// \file
/// Knows one format of texture files by its first bytes. An application adds formats of its own by
/// `RegisterTextureRecogniser`.

#include "Export.h"

class QString;

namespace Harrow::Vrk
{

class Memory;
class TextureLoader;

/// One serves all files, and keeps nothing of them.
class VRKGL_EXPORT TextureRecogniser
{
public:
    TextureRecogniser() = default;
    virtual ~TextureRecogniser();
    TextureRecogniser(const TextureRecogniser&) = delete;
    TextureRecogniser& operator=(const TextureRecogniser&) = delete;

    /// A new loader, which belongs to the caller, if the bytes are of this format, else null. The memory is looked at
    /// by `get` and `release` alone; the loader takes it over, and without one it stays the caller's. `name` is for
    /// messages: the path of a file, or what the caller of `LoadTextureFromMemory` has said.
    virtual TextureLoader* recognise(Memory* memory, const QString& name) const = 0;
};

} // namespace Harrow::Vrk
