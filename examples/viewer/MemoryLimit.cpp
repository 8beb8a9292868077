// SPDX-License-Identifier: MIT
#include "MemoryLimit.h"

#if defined(__SANITIZE_ADDRESS__)
#define VRKVIEW_ADDRESS_SANITIZER 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define VRKVIEW_ADDRESS_SANITIZER 1
#endif
#endif

#if defined(Q_OS_LINUX) && !defined(VRKVIEW_ADDRESS_SANITIZER)
#define VRKVIEW_MEMORY_LIMIT 1
#include <sys/resource.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#endif

namespace vrkview
{

#ifdef VRKVIEW_MEMORY_LIMIT

namespace
{

// The address space that the process has now, in bytes; 0 if it can't be told.
quint64 usedAddressSpace()
{
    unsigned long long pages = 0;
    std::FILE* file = std::fopen("/proc/self/statm", "r");
    if (!file)
        return 0;
    if (std::fscanf(file, "%llu", &pages) != 1)
        pages = 0;
    std::fclose(file);
    return quint64(pages) * quint64(sysconf(_SC_PAGESIZE));
}

} // namespace

MemoryLimit::MemoryLimit(quint64 bytes)
{
    rlimit limit = {};
    const quint64 used = usedAddressSpace();
    if (used == 0 || getrlimit(RLIMIT_AS, &limit) != 0)
        return;
    _limitBefore = limit.rlim_cur;
    limit.rlim_cur = std::min<rlim_t>(limit.rlim_cur, used + bytes);
    _set = setrlimit(RLIMIT_AS, &limit) == 0;
}

MemoryLimit::~MemoryLimit()
{
    rlimit limit = {};
    if (!_set || getrlimit(RLIMIT_AS, &limit) != 0)
        return;
    limit.rlim_cur = _limitBefore;
    setrlimit(RLIMIT_AS, &limit);
}

bool MemoryLimit::isSupported()
{
    return true;
}

#else

MemoryLimit::MemoryLimit(quint64) {}

MemoryLimit::~MemoryLimit() = default;

bool MemoryLimit::isSupported()
{
    return false;
}

#endif

} // namespace vrkview
