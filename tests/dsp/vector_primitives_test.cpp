#include "dsp/vector_primitives.h"

#include "dsp/vector_checks.h"

namespace {

using namespace vector_checks;
using testing::ElementsAre;

TEST(VectorAllocation, IsAlignedAndOwnersHoldZeros) {
    for (const int n : {1, 2, 7, 15, 16, 17, 480, 1025}) {
        const auto floats = qnl_make_buffer_32f(n);
        const auto shorts = qnl_make_buffer_16s(n);
        const auto values = qnl_make_buffer_32fc(n);
        for (const void* storage :
             {static_cast<void*>(&floats[0]), static_cast<void*>(&shorts[0]), static_cast<void*>(&values[0])})
            EXPECT_EQ(reinterpret_cast<std::uintptr_t>(storage) % 64, 0U);
        EXPECT_EQ(floats[n - 1] + values[n - 1].im + static_cast<float>(shorts[n - 1]), 0.0F);
    }
    qnl_free(nullptr);
}

TEST(VectorAllocation, RequestsForNothingOrTooMuchGiveNull) {
    for (const int n : {0, -1, INT_MIN, INT_MAX, 1 << 30}) {
        EXPECT_EQ(qnl_malloc_32f(n), nullptr);
        EXPECT_EQ(qnl_malloc_16s(n), nullptr);
        EXPECT_EQ(qnl_malloc_32fc(n), nullptr);
    }
    EXPECT_EQ(qnl_malloc_32f(1 << 29), nullptr); // one byte past the limit
    EXPECT_EQ(qnl_malloc_32fc(1 << 28), nullptr);
    EXPECT_EQ(qnl_make_buffer_32f(0), nullptr);
    EXPECT_THROW(qnl_make_buffer_32fc(INT_MAX), std::bad_alloc);
}

TEST(VectorPrimitives, DivisionByAZeroConstantLeavesTheDestination) {
    const float a = 1.0F;
    float d = 7.0F;
    qnl_divideC(&a, &d, 0.0F, 1);
    qnl_divideC_I(&d, -0.0F, 1);
    EXPECT_EQ(d, 7.0F);
    const complex32f z = {1.0F, 2.0F};
    complex32f w = {7.0F, 8.0F};
    qnl_divideC(&z, &w, {0.0F, -0.0F}, 1);
    qnl_divideC_I(&w, {0.0F, 0.0F}, 1);
    EXPECT_THAT(w, testing::FieldsAre(7, 8));
    qnl_divideC(&z, &w, {0.0F, 1.0F}, 1); // half a zero is a number
    EXPECT_THAT(w, testing::FieldsAre(2, -1));
}

TEST(VectorPrimitives, MovesOverlapEitherWay) {
    std::vector<float> x = {0, 1, 2, 3, 4, 5, 6, 7, 8, 9};
    qnl_move(x.data(), x.data() + 3, 7);
    EXPECT_EQ(x, (std::vector<float>{0, 1, 2, 0, 1, 2, 3, 4, 5, 6}));
    qnl_move(x.data() + 3, x.data(), 7);
    EXPECT_EQ(x, (std::vector<float>{0, 1, 2, 3, 4, 5, 6, 4, 5, 6}));
}

TEST(VectorPrimitives, ShiftMovesDownAndClearsTheEnd) {
    const std::vector<float> start = {1, 2, 3, 4, 5};
    const auto shifted = [&](int shift) {
        std::vector<float> x = start;
        qnl_shift_and_clear(x.data(), shift, 4);
        return x;
    };
    EXPECT_EQ(shifted(1), (std::vector<float>{2, 3, 4, 0, 5}));
    for (const int all : {4, 5, INT_MAX})
        EXPECT_EQ(shifted(all), (std::vector<float>{0, 0, 0, 0, 5}));
    for (const int none : {0, -1, INT_MIN})
        EXPECT_EQ(shifted(none), start);
    complex32f z[] = {{1, 2}, {3, 4}, {5, 6}};
    qnl_shift_and_clear(z, 2, 3);
    EXPECT_THAT(z, ElementsAre(testing::FieldsAre(5, 6), testing::FieldsAre(0, 0), testing::FieldsAre(0, 0)));
}

// On the scalar target, whose bits the others repeat.
TEST(VectorPrimitives, ReductionsFindMeanAndExtremesAndPassOverNaN) {
    std::vector<float> a(1000);
    std::iota(a.begin(), a.end(), -300.0F);
    EXPECT_EQ(qnl_mean(a.data(), 1000), 199.5F); // whole numbers: no order rounds
    for (int n = 1; n < longest_count; ++n) {
        a[n] = not_a_number;
        EXPECT_EQ(qnl_max(a.data(), n + 2), a[n + 1]);
        EXPECT_EQ(qnl_min(a.data() + n, n), n == 1 ? infinity : a[n + 1]);
        EXPECT_TRUE(std::isnan(qnl_mean(a.data(), n + 1)));
        a[n] = static_cast<float>(n - 300);
    }
    EXPECT_EQ(qnl_max(&not_a_number, 1), -infinity);
    EXPECT_EQ(qnl_mean(nullptr, 3) + qnl_max(a.data(), 0) + qnl_min(a.data(), -1), 0.0F);
}

TEST(VectorDecibels, OfAFullScaleBinAreZeroAndScalarsComeBack) {
    std::vector<complex32f> bins(960, {960.0F, 0.0F});
    bins[1] = {0.0F, 96.0F};
    std::vector<float> d(960);
    qnl_power_spectrum_dB(bins.data(), d.data(), 960);
    EXPECT_NEAR(d[0], 0.0F, 1.0e-5F);
    EXPECT_NEAR(d[1], -20.0F, 1.0e-5F);
    EXPECT_FLOAT_EQ(lin2dB(10.0F), 20.0F);
    EXPECT_FLOAT_EQ(dB2lin(20.0F), 10.0F);
}

TEST(HannWindow, IsSymmetricWithZeroEndsAndSparesShortBlocks) {
    for (const int n : {1, 2, 3, 4, 5, 256, 257, 1024}) {
        std::vector<float> x(static_cast<std::size_t>(n), 1.0F);
        qnl_hann_window_I(x.data(), n);
        EXPECT_EQ(x.front(), n < 3 ? 1.0F : 0.0F);
        EXPECT_TRUE(std::equal(x.begin(), x.end(), x.rbegin())) << n;
        for (int k = 0; k < n && n >= 3; ++k)
            EXPECT_NEAR(x[k], 0.5 - 0.5 * std::cos(2.0 * M_PI * k / (n - 1)), 6.0e-8);
    }
}

TEST(VectorScalars, LargerAndSmallerGiveTheSecondForNaN) {
    EXPECT_EQ(max_float(1.0F, 2.0F) - min_float(1.0F, 2.0F), 1.0F);
    EXPECT_EQ(max_float(not_a_number, 2.0F) + min_float(not_a_number, 2.0F), 4.0F);
    EXPECT_TRUE(std::isnan(max_float(1.0F, not_a_number)) && std::isnan(min_float(1.0F, not_a_number)));
}

TEST(VectorScalars, PowersOfTwoAreToldAndFound) {
    for (const int n : {1, 2, 512, 1 << 30, INT_MIN})
        EXPECT_EQ(check_power_of_2(n), 1) << n;
    for (const int n : {0, 3, 480, -1, INT_MAX})
        EXPECT_EQ(check_power_of_2(n), 0) << n;
    for (int n = 2; n <= 1 << 16; n *= 2)
        EXPECT_EQ(next_power_of_2(n) + next_power_of_2(n / 2 + 1), 2 * n);
    for (const int none : {0, -1, INT_MIN})
        EXPECT_EQ(next_power_of_2(none), 0);
    EXPECT_EQ(next_power_of_2((1 << 30) + 1), INT_MAX);
}

TEST(VectorScalars, SamplingRatesMustGiveWholeBlocks) {
    EXPECT_EQ(check_valid_sampling_rate(44100, 48000, 480), 1);
    EXPECT_EQ(check_valid_sampling_rate(44100, 48000, 512), 0);
    EXPECT_EQ(check_valid_sampling_rate(INT_MAX, 48000, 1024), 0); // wraps to -1024
    EXPECT_EQ(check_valid_sampling_rate(1 << 30, 48000, 4), 1);    // wraps to 0
    EXPECT_EQ(check_valid_sampling_rate(INT_MIN, -1, 1), 1);
    EXPECT_EQ(check_valid_sampling_rate(16000, 0, 480), 0);
}

TEST(VectorTargets, ScalarComesFirstAndStartPicksTheLastAgainAndAgain) {
    EXPECT_STREQ(vector_target_name(0), "scalar");
    for (int start = 0; start < 2; ++start) {
        qnl_start_vector_layer();
        EXPECT_EQ(active_vector_target(), vector_target_count() - 1);
    }
    select_vector_target(0);
    EXPECT_EQ(active_vector_target(), 0);
}

} // namespace
