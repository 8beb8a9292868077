// SPDX-License-Identifier: MIT
#include "RawMemory.h"

namespace Harrow::Vrk
{

RawMemory::RawMemory(void* data, quint64 size) : _data(static_cast<unsigned char*>(data)), _size(data ? size : 0) {}

RawMemory::~RawMemory() = default;

quint64 RawMemory::size() const
{
    return _size;
}

void* RawMemory::get(quint64 offset, quint64 length)
{
    return isWithin(offset, length, _size) ? _data + offset : nullptr;
}

void RawMemory::release(void*) {}

} // namespace Harrow::Vrk
