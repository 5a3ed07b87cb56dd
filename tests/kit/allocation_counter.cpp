/// The linker sends malloc and its kin here (see the link options of the kit); operator new and delete are
/// replaced, so that the standard library's shared part comes here as well.
#include "kit/allocation_counter.h"

#include <cstdlib>
#include <new>

namespace {

thread_local std::size_t allocation_count = 0;
thread_local std::size_t release_count = 0;

void* counted(void* block) {
    allocation_count += block != nullptr ? 1 : 0;
    return block;
}

void count_release(const void* block) {
    release_count += block != nullptr ? 1 : 0;
}

} // namespace

extern "C" {

void* __real_malloc(std::size_t size);
void* __real_calloc(std::size_t count, std::size_t size);
void* __real_realloc(void* block, std::size_t size);
void* __real_aligned_alloc(std::size_t alignment, std::size_t size);
void __real_free(void* block);
void* __real___cxa_allocate_exception(std::size_t size);

void* __wrap_malloc(std::size_t size) {
    return counted(__real_malloc(size));
}

void* __wrap_calloc(std::size_t count, std::size_t size) {
    return counted(__real_calloc(count, size));
}

void* __wrap_realloc(void* block, std::size_t size) {
    count_release(block);
    return counted(__real_realloc(block, size));
}

void* __wrap_aligned_alloc(std::size_t alignment, std::size_t size) {
    return counted(__real_aligned_alloc(alignment, size));
}

void __wrap_free(void* block) {
    count_release(block);
    __real_free(block);
}

void* __wrap___cxa_allocate_exception(std::size_t size) {
    return counted(__real___cxa_allocate_exception(size));
}

} // extern "C"

namespace {

void* allocate(std::size_t size) noexcept {
    return __wrap_malloc(size > 0 ? size : 1);
}

void* allocate(std::size_t size, std::align_val_t alignment) noexcept {
    const auto step = static_cast<std::size_t>(alignment);
    return __wrap_aligned_alloc(step, (size + step - 1) / step * step);
}

void* or_throw(void* block) {
    if (block == nullptr)
        throw std::bad_alloc();
    return block;
}

} // namespace

void* operator new(std::size_t size) {
    return or_throw(allocate(size));
}
void* operator new(std::size_t size, const std::nothrow_t& /*tag*/) noexcept {
    return allocate(size);
}
void* operator new(std::size_t size, std::align_val_t alignment) {
    return or_throw(allocate(size, alignment));
}
void* operator new(std::size_t size, std::align_val_t alignment, const std::nothrow_t& /*tag*/) noexcept {
    return allocate(size, alignment);
}

void operator delete(void* block) noexcept {
    __wrap_free(block);
}
void operator delete(void* block, std::size_t /*size*/) noexcept {
    __wrap_free(block);
}
void operator delete(void* block, std::align_val_t /*alignment*/) noexcept {
    __wrap_free(block);
}
void operator delete(void* block, std::size_t /*size*/, std::align_val_t /*alignment*/) noexcept {
    __wrap_free(block);
}
void operator delete(void* block, const std::nothrow_t& /*tag*/) noexcept {
    __wrap_free(block);
}
void operator delete(void* block, std::align_val_t /*alignment*/, const std::nothrow_t& /*tag*/) noexcept {
    __wrap_free(block);
}

// The forms for arrays are the same functions, under their names in the object file.
#define SAME_AS(name) __attribute__((alias(#name)))
void* operator new[](std::size_t size) SAME_AS(_Znwm);
void* operator new[](std::size_t size, const std::nothrow_t&) noexcept SAME_AS(_ZnwmRKSt9nothrow_t);
void* operator new[](std::size_t size, std::align_val_t) SAME_AS(_ZnwmSt11align_val_t);
void* operator new[](std::size_t size, std::align_val_t, const std::nothrow_t&) noexcept
    SAME_AS(_ZnwmSt11align_val_tRKSt9nothrow_t);
void operator delete[](void* block) noexcept SAME_AS(_ZdlPv);
void operator delete[](void* block, std::size_t) noexcept SAME_AS(_ZdlPvm);
void operator delete[](void* block, std::align_val_t) noexcept SAME_AS(_ZdlPvSt11align_val_t);
void operator delete[](void* block, std::size_t, std::align_val_t) noexcept SAME_AS(_ZdlPvmSt11align_val_t);
void operator delete[](void* block, const std::nothrow_t&) noexcept SAME_AS(_ZdlPvRKSt9nothrow_t);
void operator delete[](void* block, std::align_val_t, const std::nothrow_t&) noexcept
    SAME_AS(_ZdlPvSt11align_val_tRKSt9nothrow_t);

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
