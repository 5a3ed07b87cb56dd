#include "dsp/products.h"

#include "dsp/vector_checks.h"

namespace {

using namespace test_kit;

// That rows are added in order, for any number of frames, the layers that are made of them show.
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

TEST(TableTanh, HasTheSameBitsOnEveryTargetUpToItsEnds) {
    samples table(201, 1.0F);
    for (size_t i = 0; i < 200; ++i)
        table[i] = static_cast<float>(std::tanh(0.04 * static_cast<double>(i)));
    const float below_8 = std::nextafter(8.0F, 0.0F);
    const samples ends = {8.0F, -8.0F, below_8, -below_8, 0.02F, -0.02F, 7.98F};
    expect_same_bits_on_every_target([&] {
        samples x = planar(planar(ends, vector_checks::turning_points()), noise(500, 6, 9.0F));
        const samples before = x;
        qnl_table_tanh(table.data(), x.data(), static_cast<int>(x.size()));
        for (size_t i = 0; i < x.size(); ++i)
            EXPECT_NEAR(x[i], std::isnan(before[i]) ? 1.0F : std::tanh(before[i]), 3e-6F) << before[i];
        return x;
    });
}

} // namespace
