/// The heap calls of the whole process come through here: the C library's are preempted by the functions below,
/// and a sanitizer, which has a heap of its own, tells of its calls.
#include "kit/allocation_counter.h"

#include <cstdlib>

namespace {

thread_local std::size_t allocation_count = 0;
thread_local std::size_t release_count = 0;

} // namespace

#if defined(QUENLIS_SANITIZED)

extern "C" int __sanitizer_install_malloc_and_free_hooks(void (*taken)(const volatile void*, std::size_t),
                                                         void (*released)(const volatile void*));

[[maybe_unused]] static const int hooks_installed = __sanitizer_install_malloc_and_free_hooks(
    [](const volatile void* /*block*/, std::size_t /*size*/) { ++allocation_count; },
    [](const volatile void* block) { release_count += block != nullptr ? 1 : 0; });

#else

extern "C" {

void* __libc_malloc(std::size_t size);
void* __libc_calloc(std::size_t count, std::size_t size);
void* __libc_realloc(void* block, std::size_t size);
void* __libc_memalign(std::size_t alignment, std::size_t size);
void __libc_free(void* block);

void* malloc(std::size_t size) {
    ++allocation_count;
    return __libc_malloc(size);
}

void* calloc(std::size_t count, std::size_t size) {
    ++allocation_count;
    return __libc_calloc(count, size);
}

void* realloc(void* block, std::size_t size) {
    ++allocation_count;
    release_count += block != nullptr ? 1 : 0;
    return __libc_realloc(block, size);
}

void* aligned_alloc(std::size_t alignment, std::size_t size) {
    ++allocation_count;
    return __libc_memalign(alignment, size);
}

void free(void* block) {
    release_count += block != nullptr ? 1 : 0;
    __libc_free(block);
}

} // extern "C"

#endif

namespace test_kit {

allocation_counter::allocation_counter()
    : allocations_before_(allocation_count), releases_before_(release_count) {}

std::size_t allocation_counter::allocations() const {
    return allocation_count - allocations_before_;
}

std::size_t allocation_counter::releases() const {
    return release_count - releases_before_;
}

} // namespace test_kit
