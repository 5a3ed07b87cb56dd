/// Counts what the code under test takes from the heap.
#pragma once

#include <cstddef>

namespace test_kit {

/// Counts the heap calls of the calling thread from its construction on. Counters may nest.
///
/// Seen are malloc, calloc, realloc, aligned_alloc, free and whatever is made of them, such as operator new,
/// strings and thrown exceptions, in the test program and in shared libraries.
///
///     test_kit::allocation_counter heap;
///     qnl_output_audio_float(handle, 1, 1, block);
///     EXPECT_EQ(heap.allocations(), 0U);
class allocation_counter {
public:
    allocation_counter();

    /// Blocks taken since construction. A realloc counts as one, and as a release of what it was given.
    std::size_t allocations() const;
    /// Blocks given back since construction; null is none.
    std::size_t releases() const;

private:
    std::size_t allocations_before_;
    std::size_t releases_before_;
};

} // namespace test_kit
