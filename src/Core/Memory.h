// SPDX-License-Identifier: MIT
#pragma once

/// \file
/// A run of bytes that somebody reads piece by piece, wherever the bytes lie: in a file or in a buffer. The readers of
/// texture files see their data through it.

#include "Export.h"

#include <QtGlobal>

namespace Harrow::Vrk
{

/// The order of the virtual operations is interface. An object serves one thread at a time and logs nothing.
class VRKCORE_EXPORT Memory
{
public:
    Memory() = default;
    virtual ~Memory() = default;
    Memory(const Memory&) = delete;
    Memory& operator=(const Memory&) = delete;

    /// Number of bytes. Does not change while the object lives.
    virtual quint64 size() const = 0;

    /// Pointer to the `length` bytes at `offset`, valid until it is released or the object dies, or null when they
    /// cannot be had: not all of them within `size`, or `length` 0. The bytes may be written to, and keep what was
    /// written while the pointer is valid; whether the source changes with them is told by each class.
    virtual void* get(quint64 offset, quint64 length) = 0;

    /// Ends the use of a pointer that `get` gave. Null is allowed. A pointer need not be released before the object
    /// dies.
    virtual void release(void* pointer) = 0;

protected:
    /// Whether the range lies within `size` bytes and holds at least one. No sum can overflow here.
    static constexpr bool isWithin(quint64 offset, quint64 length, quint64 size)
    {
        return length > 0 && length <= size && offset <= size - length;
    }
};

} // namespace Harrow::Vrk
