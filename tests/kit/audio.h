/// All that a test of samples needs: signals, comparisons, every instruction set, and runs in blocks that watch
/// the heap.
#pragma once

#include "kit/allocation_counter.h"
#include "kit/compare.h"
#include "kit/signals.h"
#include "kit/targets.h"

#include <algorithm>
#include <climits>
#include <cmath>
#include <cstdint>
#include <gmock/gmock.h>
#include <limits>
#include <numeric>
#include <vector>

namespace test_kit {

/// Two channels of one length.
struct stereo {
    samples left, right;
};

/// Fails the test when `call` takes from the heap.
template <class Call>
void expect_no_allocation(Call call) {
    const allocation_counter heap;
    call();
    EXPECT_EQ(heap.allocations(), 0U);
}

/// Runs each whole block of `x` through `process`, which works in place and must not allocate.
template <class Process>
samples in_blocks(samples x, std::size_t block, Process process) {
    for (std::size_t start = 0; start + block <= x.size(); start += block)
        expect_no_allocation([&] { process(&x[start]); });
    return x;
}

/// The same for planar blocks of two channels, of `block` frames each.
template <class Process>
stereo in_planar_blocks(stereo x, std::size_t block, Process process) {
    for (std::size_t start = 0; start + block <= x.left.size(); start += block) {
        samples both = planar(part(x.left, start, start + block), part(x.right, start, start + block));
        expect_no_allocation([&] { process(both.data()); });
        std::copy_n(both.begin(), block, &x.left[start]);
        std::copy_n(both.begin() + block, block, &x.right[start]);
    }
    return x;
}

} // namespace test_kit
