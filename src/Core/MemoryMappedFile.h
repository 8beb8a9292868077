// SPDX-License-Identifier: MIT
#pragma once

/// \file
/// A `Memory` over a file, by mapping: only the pages that are touched are read. The mapping is private, so its bytes
/// can be written to, also those of a file that is read-only, and nothing that is written reaches the file.

#include "Memory.h"

#include <QByteArray>
#include <QFile>

namespace Harrow::Vrk
{

/// Keeps the file open while it lives, and all pointers that it gave end with it. Files of Qt's resource system are
/// read into memory at the first `get` instead of being mapped.
///
/// A file that another process makes shorter takes pages away from under a mapping, and an access to such a page ends
/// the process (SIGBUS on Unix). Each `get` therefore asks for the present length, and gives null for a range beyond
/// it. What remains is a file that is made shorter while a pointer from `get` is in use, and a disk that fails: nothing
/// but a copy helps against these. Writers that replace a file (write another and rename it) do no harm.
class VRKCORE_EXPORT MemoryMappedFile : public Memory
{
public:
    /// Opens the file at `path`. One that is missing, empty, unreadable, or no file (a directory, a pipe) has size 0,
    /// and `get` gives null.
    explicit MemoryMappedFile(const QString& path);
    ~MemoryMappedFile() override;

    /// The length of the file when it was opened.
    quint64 size() const override;

    /// All pointers go into one mapping of the whole file, so what was written through one is seen through the others.
    /// Where there is no address space for that (a file of gigabytes in a 32-bit process, or one beyond the system's
    /// memory where the system counts private mappings) each call maps its own range, and null also means that this
    /// failed.
    void* get(quint64 offset, quint64 length) override;

    /// Unmaps what a `get` has mapped for itself; the mapping of the whole file stays.
    void release(void* pointer) override;

private:
    friend struct MemoryMappedFileTestAccess;

    /// How `get` reaches the bytes; decided by the first one.
    enum class Access
    {
        eUndecided,
        eWhole,
        eRanges,
        eNone
    };

    void decideAccess(quint64 presentSize);
    unsigned char* map(quint64 offset, quint64 length);

    QFile _file;
    quint64 _size = 0;
    Access _access = Access::eUndecided;
    unsigned char* _whole = nullptr;
    QByteArray _contents;
};

} // namespace Harrow::Vrk
