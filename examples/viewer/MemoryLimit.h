// SPDX-License-Identifier: MIT
// Keeps a reader from asking for the whole machine's memory because a file says so: a few bytes of text can claim a
// billion vertices.
#pragma once

#include <QtGlobal>

namespace vrkview
{

/// While it lives, the process gets at most `bytes` of address space beyond what it has; asking for more fails as
/// `std::bad_alloc`. Only on Linux, and not under the address sanitizer, whose own memory would count; elsewhere it
/// does nothing.
class MemoryLimit
{
public:
    explicit MemoryLimit(quint64 bytes);
    ~MemoryLimit();
    MemoryLimit(const MemoryLimit&) = delete;
    MemoryLimit& operator=(const MemoryLimit&) = delete;

    /// Whether limits work in this build.
    static bool isSupported();

private:
    bool _set = false;
    quint64 _limitBefore = 0;
};

} // namespace vrkview
