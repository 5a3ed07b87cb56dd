#include "dsp/products.h"

#include "kit/allocation_counter.h"
#include "kit/compare.h"
#include "kit/signals.h"
#include "vector_checks.h"

#include <cmath>
#include <cstdint>
#include <limits>

namespace {

using namespace test_kit;
using vector_checks::on_every_target;
using samples = std::vector<float>;

/// The product as it is defined, one frame and one row after the other.
template <class Weight>
samples by_definition(const samples& in, int frames, int rows, const std::vector<Weight>& weights, int width,
                      samples sums) {
    for (int frame = 0; frame < frames; ++frame)
        for (int i = 0; i < rows; ++i) {
            const float x = in[static_cast<size_t>(frame * rows + i)];
            if (x != 0.0F || std::isnan(x))
                for (int j = 0; j < width; ++j)
                    sums[static_cast<size_t>(frame * width + j)] +=
                        x * static_cast<float>(weights[static_cast<size_t>(i * width + j)]);
        }
    return sums;
}

TEST(RowWalk, AddsRowAfterRowOnEveryTargetForAnyNumberOfFrames) {
    for (const int rows : {1, 7, 64, 65, 257})
        for (const int width : {1, 5, 66, 257, 512})
            for (const int frames : {1, 2, 3, 4, 5, 7}) {
                const auto size = static_cast<size_t>(rows * width);
                const samples weights = noise(size, 1);
                std::vector<std::int8_t> bytes;
                for (const float weight : weights)
                    bytes.push_back(static_cast<std::int8_t>(weight * 127.0F));
                samples in = noise(static_cast<size_t>(frames * rows), 2);
                in[0] = 0.0F; // in one frame only
                for (size_t i = 3; i < in.size(); i += static_cast<size_t>(rows))
                    in[i] = 0.0F;
                const samples start = noise(static_cast<size_t>(frames * width), 3);
                const samples expected = by_definition(in, frames, rows, weights, width, start);
                const samples expected_of_bytes = by_definition(in, frames, rows, bytes, width, start);
                on_every_target([&](const char*) {
                    samples out = start;
                    samples out_of_bytes = start;
                    const allocation_counter heap;
                    qnl_walk_rows({in.data(), rows, out.data(), width, frames, rows, width, width},
                                  weights.data());
                    qnl_walk_rows({in.data(), rows, out_of_bytes.data(), width, frames, rows, width, width},
                                  bytes.data());
                    EXPECT_EQ(heap.allocations(), 0U);
                    EXPECT_TRUE(test_kit::same_bits(expected, out)) << rows << ' ' << width << ' ' << frames;
                    EXPECT_TRUE(test_kit::same_bits(expected_of_bytes, out_of_bytes))
                        << rows << ' ' << width << ' ' << frames;
                });
            }
}

TEST(RowWalk, LeavesRowsOfZerosOutAndTakesNaN) {
    const float nan = std::numeric_limits<float>::quiet_NaN();
    const samples weights = {nan, nan, 1.0F, 2.0F};
    const samples zero_first = {0.0F, 3.0F, -0.0F, 4.0F};
    on_every_target([&](const char*) {
        samples out(4, -0.0F);
        qnl_walk_rows({zero_first.data(), 2, out.data(), 2, 2, 2, 2, 2}, weights.data());
        EXPECT_EQ(out, (samples{3.0F, 6.0F, 4.0F, 8.0F}));
        const samples bad = {nan, 0.0F};
        qnl_walk_rows({bad.data(), 2, out.data(), 2, 1, 2, 2, 2}, samples(4, 1.0F).data());
        EXPECT_TRUE(std::isnan(out[0]) && std::isnan(out[1]));
        EXPECT_EQ(out[2], 4.0F);
    });
}

TEST(InnerProduct, HasOneOrderOnEveryTarget) {
    for (const int n : {0, 1, 31, 32, 33, 63, 64, 480, 481}) {
        const samples a = noise(static_cast<size_t>(n), 4);
        const samples b = noise(static_cast<size_t>(n), 5);
        double expected = 0.0;
        for (size_t i = 0; i < a.size(); ++i)
            expected += static_cast<double>(a[i]) * b[i];
        samples results;
        on_every_target([&](const char*) { results.push_back(qnl_inner_product(a.data(), b.data(), n)); });
        EXPECT_NEAR(results.front(), expected, 1e-5);
        EXPECT_TRUE(test_kit::same_bits(samples(results.size(), results.front()), results)) << n;
    }
}

} // namespace
