#include "kit/allocation_counter.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <memory>
#include <new>
#include <stdexcept>
#include <string>
#include <thread>

namespace {

using test_kit::allocation_counter;

// Keeps the compiler from leaving out a pair of heap calls.
void* volatile escaped;

struct alignas(128) wide {
    float values[32];
};

TEST(allocation_counter, sees_every_kind_of_heap_call) {
    const allocation_counter heap;
    escaped = std::malloc(10);
    escaped = std::realloc(escaped, 2000);
    std::free(escaped);
    escaped = std::calloc(3, 5);
    std::free(escaped);
    escaped = std::aligned_alloc(64, 128);
    std::free(escaped);
    void* aligned = nullptr;
    ASSERT_EQ(posix_memalign(&aligned, 64, 100), 0);
    escaped = aligned;
    std::free(escaped);
    EXPECT_EQ(heap.allocations(), 5U);
    EXPECT_EQ(heap.releases(), 5U);
}

TEST(allocation_counter, sees_every_kind_of_new_and_delete) {
    const allocation_counter heap;
    escaped = new int(1);
    delete static_cast<int*>(escaped);
    escaped = new char[100];
    delete[] static_cast<char*>(escaped);
    escaped = new wide;
    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(escaped) % alignof(wide), 0U);
    delete static_cast<wide*>(escaped);
    escaped = new (std::nothrow) wide[3];
    delete[] static_cast<wide*>(escaped);
    EXPECT_EQ(heap.allocations(), 4U);
    EXPECT_EQ(heap.releases(), 4U);
}

TEST(allocation_counter, sees_the_standard_library_and_exceptions) {
    const allocation_counter heap;
    {
        const std::string text(1000, 'x');
        escaped = const_cast<char*>(text.data());
    }
    EXPECT_EQ(heap.allocations(), 1U);
    EXPECT_EQ(heap.releases(), 1U);
    try {
        throw 1;
    } catch (int) {
        EXPECT_EQ(heap.allocations(), 2U);
    }
}

TEST(allocation_counter, counts_nothing_for_null_and_nothing_of_other_threads) {
    void* block = nullptr;
    std::thread other;
    const allocation_counter outer;
    std::free(block);
    EXPECT_EQ(outer.releases(), 0U);
    other = std::thread([&block] { block = std::malloc(10); });
    other.join();
    const allocation_counter inner;
    std::free(block);
    EXPECT_EQ(inner.allocations(), 0U);
    EXPECT_EQ(inner.releases(), 1U);
    EXPECT_EQ(outer.allocations(), 1U) << "the record of the thread itself";
}

} // namespace
