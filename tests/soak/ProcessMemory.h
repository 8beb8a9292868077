// SPDX-License-Identifier: MIT
// What the process holds: pages that are resident, and bytes of the heap in use.
#pragma once

namespace vrksoak
{

struct ProcessMemory
{
    /// Gives back to the system what the heap does not use, and measures.
    static ProcessMemory now();

    double residentKiB = 0.0; ///< of the process, the driver's pages included
    double heapKiB = 0.0;     ///< allocated and not freed, whoever did it; free blocks between are not counted
};

} // namespace vrksoak
