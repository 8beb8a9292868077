// SPDX-License-Identifier: MIT
#pragma once

/// \file
/// A `Memory` over a buffer of the caller. The buffer stays the caller's: it must outlive this object, is never freed
/// by it, and sees everything that is written through it.

#include "Memory.h"

namespace Harrow::Vrk
{

/// Copies nothing.
class VRKCORE_EXPORT RawMemory : public Memory
{
public:
    /// `data` may be null; then there are no bytes, whatever `size` says.
    RawMemory(void* data, quint64 size);
    ~RawMemory() override;

    quint64 size() const override;
    /// A pointer into the caller's buffer.
    void* get(quint64 offset, quint64 length) override;
    /// Does nothing: pointers stay valid as long as the buffer.
    void release(void* pointer) override;

private:
    unsigned char* _data;
    quint64 _size;
};

} // namespace Harrow::Vrk
