#include "support/allocations.h"

namespace {
thread_local std::size_t allocations = 0;
}

std::size_t testsupport::allocationCount()
{
    return allocations;
}

#ifdef __SANITIZE_ADDRESS__

// Part of the sanitizer's interface, for which GCC installs no header.
extern "C" int __sanitizer_install_malloc_and_free_hooks(void (*allocated)(const volatile void*, std::size_t),
                                                         void (*freed)(const volatile void*));

namespace {
// The sanitizer has functions of its own in the place of the C library's, and tells of them.
[[maybe_unused]] const int installed = __sanitizer_install_malloc_and_free_hooks(
    [](const volatile void*, std::size_t) { ++allocations; }, [](const volatile void*) {});
} // namespace

#else

// Everything ends in these: operator new and Qt's containers as well.
extern "C" {

void* __libc_malloc(std::size_t size);
void* __libc_calloc(std::size_t count, std::size_t size);
void* __libc_realloc(void* block, std::size_t size);

void* malloc(std::size_t size)
{
    ++allocations;
    return __libc_malloc(size);
}

void* calloc(std::size_t count, std::size_t size)
{
    ++allocations;
    return __libc_calloc(count, size);
}

void* realloc(void* block, std::size_t size)
{
    ++allocations;
    return __libc_realloc(block, size);
}
}

#endif
