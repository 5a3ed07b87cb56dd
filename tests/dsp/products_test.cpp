#include "dsp/products.h"

#include "kit/audio.h"

namespace {

using namespace test_kit;

/// The product as it is defined, one frame and one row after the other.
template <class Weight>
samples by_definition(const samples& in, int frames, int rows, const std::vector<Weight>& weights, int width,
                      samples sums) {
    for (int frame = 0; frame < frames; ++frame)
        for (int i = 0; i < rows; ++i)
            for (int j = 0; j < width && in[frame * rows + i] != 0.0F; ++j)
                sums[frame * width + j] += in[frame * rows + i] * static_cast<float>(weights[i * width + j]);
    return sums;
}

TEST(RowWalk, AddsRowAfterRowOnEveryTargetForAnyNumberOfFrames) {
    const auto expect_product = [](int rows, int width, int frames, const auto& weights) {
        samples in = noise(static_cast<size_t>(frames * rows), 2);
        in[0] = 0.0F; // in one frame only
        for (size_t i = 3; i < in.size(); i += static_cast<size_t>(rows))
            in[i] = 0.0F;
        const samples start = noise(static_cast<size_t>(frames * width), 3);
        const samples expected = by_definition(in, frames, rows, weights, width, start);
        on_every_target([&](const char* target) {
            samples out = start;
            const row_walk walk = {in.data(), rows, out.data(), width, frames, rows, width, width};
            expect_no_allocation([&] { qnl_walk_rows(walk, weights.data()); });
            EXPECT_TRUE(same_bits(expected, out)) << rows << ' ' << width << ' ' << frames << target;
        });
    };
    for (const int rows : {1, 7, 64, 65, 257})
        for (const int width : {1, 5, 66, 257, 512}) {
            const samples weights = noise(static_cast<size_t>(rows * width), 1);
            std::vector<std::int8_t> bytes(weights.size());
            std::transform(weights.begin(), weights.end(), bytes.begin(),
                           [](float weight) { return static_cast<std::int8_t>(weight * 127.0F); });
            for (const int frames : {1, 2, 3, 4, 5, 7}) {
                expect_product(rows, width, frames, weights);
                expect_product(rows, width, frames, bytes);
            }
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
        const double expected = std::inner_product(a.begin(), a.end(), b.begin(), 0.0);
        expect_same_bits_on_every_target([&] {
            const float product = qnl_inner_product(a.data(), b.data(), n);
            EXPECT_NEAR(product, expected, 1e-5) << n;
            return samples{product};
        });
    }
}

} // namespace
