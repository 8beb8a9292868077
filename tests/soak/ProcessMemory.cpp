// SPDX-License-Identifier: MIT
#include "ProcessMemory.h"

#include <malloc.h>
#include <unistd.h>

#include <cstdio>

namespace vrksoak
{

namespace
{

constexpr double kKiB = 1024.0;

double residentPagesKiB()
{
    long long pages = 0;
    long long resident = 0;
    if (std::FILE* const file = std::fopen("/proc/self/statm", "r"))
    {
        if (std::fscanf(file, "%lld %lld", &pages, &resident) != 2)
            resident = 0;
        std::fclose(file);
    }
    return double(resident) * double(sysconf(_SC_PAGESIZE)) / kKiB;
}

} // namespace

ProcessMemory ProcessMemory::now()
{
    malloc_trim(0);
    const struct mallinfo2 heap = mallinfo2();
    return {residentPagesKiB(), double(heap.uordblks + heap.hblkhd) / kKiB};
}

} // namespace vrksoak
