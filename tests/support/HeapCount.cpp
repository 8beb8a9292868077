// SPDX-License-Identifier: MIT
#include "support/HeapCount.h"

#include <cstdlib>
#include <new>

#if defined(__GLIBC__)
#include <malloc.h>
#if __GLIBC_PREREQ(2, 33)
#define VRK_TEST_HAS_MALLINFO2
#endif
#endif

namespace
{

thread_local long long allocations = 0;

} // namespace

#if defined(__SANITIZE_ADDRESS__)

// The sanitizer's own functions stay in their place, so that it goes on to compare what is allocated and freed how. Not
// every compiler comes with the header that declares these.
extern "C" std::size_t __sanitizer_get_current_allocated_bytes();
extern "C" int __sanitizer_install_malloc_and_free_hooks(void (*allocated)(const volatile void*, std::size_t),
                                                         void (*released)(const volatile void*));

[[maybe_unused]] static const int installed = __sanitizer_install_malloc_and_free_hooks(
    [](const volatile void*, std::size_t) { ++allocations; }, [](const volatile void*) {});

#elif defined(__GLIBC__)

extern "C"
{
    void* __libc_malloc(std::size_t bytes);
    void* __libc_calloc(std::size_t count, std::size_t bytes);
    void* __libc_realloc(void* memory, std::size_t bytes);

    void* malloc(std::size_t bytes)
    {
        ++allocations;
        return __libc_malloc(bytes);
    }
    void* calloc(std::size_t count, std::size_t bytes)
    {
        ++allocations;
        return __libc_calloc(count, bytes);
    }
    void* realloc(void* memory, std::size_t bytes)
    {
        ++allocations;
        return __libc_realloc(memory, bytes);
    }
}

#else

void* operator new(std::size_t bytes)
{
    ++allocations;
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

namespace Harrow::Vrk::Test
{

HeapCount::HeapCount() : _start(allocations) {}

long long HeapCount::soFar() const
{
    return allocations - _start;
}

std::optional<std::size_t> bytesInUse()
{
#if defined(__SANITIZE_ADDRESS__)
    return __sanitizer_get_current_allocated_bytes();
#elif defined(VRK_TEST_HAS_MALLINFO2)
    const struct mallinfo2 heap = mallinfo2();
    return heap.uordblks + heap.hblkhd; // large pieces are mapped one by one
#else
    return {};
#endif
}

} // namespace Harrow::Vrk::Test
