// SPDX-License-Identifier: MIT
#pragma once

/// \file
/// Counts what the library allocates in a stretch of code. Replaces the allocation functions of the whole program,
/// those of C too, which Qt's containers use: to be included by one source file of a program.

#include <cstdlib>
#include <new>

#if defined(__GLIBC__) && !defined(__SANITIZE_ADDRESS__)
#define VRK_BENCH_COUNTS_MALLOC 1
#endif

namespace Harrow::Vrk::Bench
{

inline long long& allocations()
{
    static thread_local long long count = 0;
    return count;
}

/// Of this thread, since its construction.
class HeapCount
{
public:
    HeapCount() : _start(allocations()) {}

    long long soFar() const
    {
        return allocations() - _start;
    }

private:
    long long _start;
};

} // namespace Harrow::Vrk::Bench

#ifdef VRK_BENCH_COUNTS_MALLOC

extern "C"
{
    void* __libc_malloc(std::size_t bytes);
    void* __libc_calloc(std::size_t count, std::size_t bytes);
    void* __libc_realloc(void* memory, std::size_t bytes);

    void* malloc(std::size_t bytes)
    {
        ++Harrow::Vrk::Bench::allocations();
        return __libc_malloc(bytes);
    }
    void* calloc(std::size_t count, std::size_t bytes)
    {
        ++Harrow::Vrk::Bench::allocations();
        return __libc_calloc(count, bytes);
    }
    void* realloc(void* memory, std::size_t bytes)
    {
        ++Harrow::Vrk::Bench::allocations();
        return __libc_realloc(memory, bytes);
    }
}

#else

void* operator new(std::size_t bytes)
{
    ++Harrow::Vrk::Bench::allocations();
    if (void* const memory = std::malloc(bytes ? bytes : 1))
        return memory;
    throw std::bad_alloc();
}
void operator delete(void* memory) noexcept
{
    std::free(memory);
}
void operator delete(void* memory, std::size_t) noexcept
{
    std::free(memory);
}

#endif
