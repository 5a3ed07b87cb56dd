#include "kit/allocation_counter.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <new>
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
    escaped = new char[100];
    delete[] static_cast<char*>(escaped);
    escaped = new (std::nothrow) wide[3];
    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(escaped) % alignof(wide), 0U);
    delete[] static_cast<wide*>(escaped);
    { escaped = const_cast<char*>(std::string(1000, 'x').data()); }
    EXPECT_EQ(heap.allocations(), 7U);
    EXPECT_EQ(heap.releases(), 7U);
    try {
        throw 1;
    } catch (int) {
        EXPECT_EQ(heap.allocations(), 8U) << "an exception";
    }
}

TEST(allocation_counter, counts_nothing_for_null_and_nothing_of_other_threads) {
    void* block = nullptr;
    std::thread other([&block] { escaped = block = std::malloc(10); });
    other.join();
    const allocation_counter heap;
    std::free(nullptr);
    EXPECT_EQ(heap.releases(), 0U);
    std::thread([&block] { std::free(block); }).join();
    EXPECT_EQ(heap.allocations(), 1U) << "the record of the thread itself";
    EXPECT_EQ(heap.releases(), 0U);
}

} // namespace
