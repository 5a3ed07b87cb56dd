#pragma once

#include <functional>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "dsp/vector_checks.h"

namespace vector_checks {

/// Operands are handed around as floats, complex ones two floats per element. `x` is the destination, which
/// holds values before the call that operations in place read.
using operation_body = std::function<void(const float* a, const float* b, float* x, int n)>;

struct operation {
    std::string name;
    int a_width; ///< floats per element, 0 when the operand is not used
    int b_width;
    int x_width;
    operation_body run;
    operation_body expect;
};

template <class Element>
const Element* as(const float* a) {
    return reinterpret_cast<const Element*>(a);
}

template <class Element>
Element* as(float* x) {
    return reinterpret_cast<Element*>(x);
}

enum class destination { apart, first_source, second_source };

/// One operation at one count and alignment. The first block is `a`, the second `b`, the third what the
/// destination held before.
inline void check(const operation& op, destination where, int n, int offset, const char* target) {
    const auto seed = static_cast<unsigned>(3 * (16 * n + offset)); // other values for every case
    const std::vector<float> a = test_values(op.a_width * n, seed);
    const std::vector<float> b = test_values(op.b_width * n, seed + 1);
    std::vector<float> x = test_values(op.x_width * n, seed + 2);
    if (where != destination::apart)
        x = where == destination::first_source ? a : b;
    source_block<float> a_block(a.data(), op.a_width * n, offset);
    source_block<float> b_block(b.data(), op.b_width * n, (5 * offset) % 16);
    guarded_block<float> result(x.data(), op.x_width * n, (11 * offset) % 16);

    const float* const a_used = where == destination::first_source ? result.data() : a_block.data();
    const float* const b_used = where == destination::second_source ? result.data() : b_block.data();
    op.run(a_used, b_used, result.data(), n);
    op.expect(a.data(), b.data(), x.data(), n);

    const int index = first_difference(x.data(), result.data(), op.x_width * n);
    ASSERT_EQ(index, -1) << op.name << " on " << target << ", n " << n << ", offset " << offset << ": "
                         << result.data()[index] << " instead of " << x[static_cast<std::size_t>(index)];
    ASSERT_TRUE(result.walls_stand()) << op.name << " on " << target << ", n " << n << ", offset " << offset;
}

inline void sweep(const std::vector<operation>& operations, destination where) {
    on_every_target([&](const char* target) {
        for (const operation& op : operations) {
            const bool first_shared = op.a_width == op.x_width;
            const bool second_shared = op.b_width == op.x_width;
            if ((where == destination::first_source && !first_shared) ||
                (where == destination::second_source && !second_shared))
                continue;
            for (int n = 0; n <= longest_count; ++n)
                for (int offset = 0; offset < 16; ++offset) {
                    check(op, where, n, offset, target);
                    if (testing::Test::HasFatalFailure())
                        return;
                }
        }
    });
}

} // namespace vector_checks
